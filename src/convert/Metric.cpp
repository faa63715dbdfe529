#include "convert/Converters.h"

#include "platform/ScopedBstr.h"
#include "platform/ScopedVariant.h"

namespace tarnix::convert {
namespace {

// Samples, sessions and remote applications each have a putMetric of their own. Any
// other target gets the sample's, which the bridge refuses with an exception the caller
// logs, as it would a method missing from the target's table.
Method<void(jobject)> PutMetricOf(const CJavaObject& target) {
  const MethodEntry* table = target.GetClass()->Table();
  if (table == methods::BaseUserSession::putMetric.Table()) {
    return methods::BaseUserSession::putMetric;
  }
  if (table == methods::BaseRemoteApp::putMetric.Table()) return methods::BaseRemoteApp::putMetric;
  return methods::BaseSample::putMetric;
}

LocalObject NewMetric(Conversion& c, WStringView name) {
  const CJavaClass* metricClass = c.Class(DataClass::Metric);
  if (!metricClass) return std::nullopt;
  LocalString javaName = c.String(name);
  if (!javaName) return std::nullopt;
  return c.Construct(*metricClass, methods::BaseMetric::ctorName,
                     WSTR("Failed to create a new Java metric object.  %s"), *javaName);
}

// False for a type the data model does not take. The narrow integer and boolean types
// are refused although their neighbours are taken: the message server has never been sent
// them, and its readers do not expect them.
[[nodiscard]] bool PutValue(Conversion& c, const CJavaObject& metric, const VARIANT& value) {
  switch (value.vt) {
    case VT_I2:
      metric.CallVoidMethod(methods::BaseMetric::putLongValue, static_cast<jlong>(value.iVal));
      return true;
    case VT_I4:
      metric.CallVoidMethod(methods::BaseMetric::putLongValue, static_cast<jlong>(value.lVal));
      return true;
    case VT_UI2:
      metric.CallVoidMethod(methods::BaseMetric::putLongValue, static_cast<jlong>(value.uiVal));
      return true;
    case VT_UI4:
      metric.CallVoidMethod(methods::BaseMetric::putLongValue, static_cast<jlong>(value.ulVal));
      return true;
    case VT_I8:
      metric.CallVoidMethod(methods::BaseMetric::putLongValue, static_cast<jlong>(value.llVal));
      return true;
    // Bit for bit: counters above 2^63 - 1 arrive negative, as the server expects.
    case VT_UI8:
      metric.CallVoidMethod(methods::BaseMetric::putLongValue, static_cast<jlong>(value.ullVal));
      return true;
    case VT_R4:
      metric.CallVoidMethod(methods::BaseMetric::putDoubleValue,
                            static_cast<jdouble>(value.fltVal));
      return true;
    case VT_R8:
      metric.CallVoidMethod(methods::BaseMetric::putDoubleValue,
                            static_cast<jdouble>(value.dblVal));
      return true;
    case VT_BSTR:
      // A text that cannot be made has been logged; the metric goes without a value.
      if (LocalString text = c.String(View(value.bstrVal))) {
        metric.CallVoidMethod(methods::BaseMetric::putStringValue, *text);
      }
      return true;
    default: return false;
  }
}

}  // namespace

LocalObject GetMetric(Conversion& c, WStringView name, const VARIANT& value) {
  LocalObject metric = NewMetric(c, name);
  if (!metric) return std::nullopt;
  if (!PutValue(c, *metric, value)) {
    c.Log().Error(WSTR("Invalid type for metric '%s'."), WString(name));
    return std::nullopt;
  }
  if (std::optional<WString> failure = c.TakeException()) {
    c.Log().Error(WSTR("Failed to set the value for metric '%s'.  %s"), WString(name), *failure);
    return std::nullopt;
  }
  return metric;
}

bool PutMetrics(Conversion& c, const CJavaObject& target, IHostSample* source) {
  if (!source) return false;
  ComPtr<IHostEnumerator> metrics;
  const HRESULT hr = source->get_metrics(kHostMetricsFlag, metrics.Receive());
  if (FAILED(hr)) {
    // The flag answers whether the line was written: a caller that drops a remote
    // application without metrics keeps one whose metrics it could not even read.
    return c.Log().ErrorWithCode(WSTR("Failed to get metrics from sample"), hr);
  }
  bool delivered = false;
  ScopedBstr name;
  ScopedVariant value;
  while (metrics && metrics->Next(name.Receive(), value.Receive()) == S_OK) {
    delivered = true;
    LocalObject metric = GetMetric(c, View(name.Get()), value.Get());
    if (!metric) continue;
    if (std::optional<WString> failure = c.Call(target, PutMetricOf(target), *metric)) {
      const WString label = c.TimeLabelOf(source);
      c.Log().Error(WSTR("Failed to add metric '%s' to sample '%s'.  %s"), name.Text(), label,
                    *failure);
    }
  }
  return delivered;
}

LocalObject GetMetricWithInstances(Conversion& c, WStringView name, IHostEnumerator* instances) {
  LocalObject metric = NewMetric(c, name);
  if (!metric) return std::nullopt;
  ScopedBstr instanceName;
  ScopedVariant value;
  while (instances && instances->Next(instanceName.Receive(), value.Receive()) == S_OK) {
    LocalObject instance = GetMetric(c, View(instanceName.Get()), value.Get());
    if (!instance) continue;
    if (std::optional<WString> failure =
            c.Call(*metric, methods::BaseMetric::addInstance, *instance)) {
      c.Log().Error(WSTR("Failed to add instance '%s' to metric '%s'.  %s"), instanceName.Text(),
                    WString(name), *failure);
    }
  }
  return metric;
}

}  // namespace tarnix::convert
