#include "convert/Converters.h"

#include "jni/HeldException.h"
#include "platform/ScopedBstr.h"
#include "platform/ScopedVariant.h"

namespace tarnix::convert {

LocalObject GetExtendedData(Conversion& c, IHostNamedValues* attributes) {
  if (!attributes) return std::nullopt;
  const CJavaClass* mapClass = c.Class(DataClass::HashMap);
  if (!mapClass) return std::nullopt;
  LocalObject map = c.Construct(*mapClass, methods::HashMap::ctor,
                                WSTR("Failed to create a new Java hash map object.  %s"));
  if (!map) return std::nullopt;
  ComPtr<IHostEnumerator> items;
  if (FAILED(attributes->get_Enumerator(items.Receive()))) return std::nullopt;
  // A "put" that threw is not the end of the map: its exception is held aside while the
  // later attributes go in, and left pending at the end for the caller's send-failure line.
  HeldException failedPut(c.Vm().GetEnv());
  ScopedBstr name;
  ScopedVariant value;
  while (items && items->Next(name.Receive(), value.Receive()) == S_OK) {
    LocalString key = c.String(View(name.Get()));
    const bool isText = SUCCEEDED(value.ChangeType(VT_BSTR));
    LocalString text = c.String(isText ? View(value.Get().bstrVal) : WStringView());
    if (key && text) map->CallVoidMethod(methods::HashMap::put, *key, *text);
    failedPut.Hold();
  }
  failedPut.Raise();
  return map;
}

HRESULT PutExtendedMetrics(Conversion& c, const CJavaObject& javaSample, IHostSample* sample,
                           IHostEnumerator* metrics) {
  if (!metrics) return E_POINTER;
  HRESULT last;
  ScopedBstr name;
  ScopedVariant value;
  while ((last = metrics->Next(name.Receive(), value.Receive())) == S_OK) {
    if (FAILED(value.ChangeType(VT_UNKNOWN))) continue;
    // An object without the instance enumerator is a metric without instances.
    ComPtr<IHostEnumerator> instances;
    if (IUnknown* object = value.Get().punkVal) {
      object->QueryInterface(IID_IHostEnumerator, instances.ReceiveVoid());
    }
    LocalObject metric = GetMetricWithInstances(c, View(name.Get()), instances.Get());
    instances.Reset();
    if (!metric) continue;
    if (std::optional<WString> failure =
            c.Call(javaSample, methods::BaseSample::putMetric, *metric)) {
      const WString label = c.TimeLabelOf(sample);
      c.Log().Error(WSTR("Failed to add metric '%s' to sample '%s'.  %s"), name.Text(), label,
                    *failure);
    }
  }
  return last;
}

LocalObject GetExtendedSample(Conversion& c, IHostSample* sample, IHostEnumerator* metrics) {
  DATE time = 0;
  LocalObject javaSample = NewJavaSample(c, sample, &time);
  if (!javaSample) return std::nullopt;
  // The sample goes with the metrics that did go in.
  if (FAILED(PutExtendedMetrics(c, *javaSample, sample, metrics))) {
    c.Log().Error(WSTR("Failed to get extended metrics."));
  }
  return javaSample;
}

}  // namespace tarnix::convert
