#include "convert/Converters.h"

#include "platform/ScopedBstr.h"
#include "platform/ScopedVariant.h"

namespace tarnix::convert {

std::shared_ptr<CJavaObject> GetExtendedData(Conversion& c, IHostNamedValues* attributes) {
  if (!attributes) return nullptr;
  const CJavaClass* mapClass = c.Class(DataClass::HashMap);
  if (!mapClass) return nullptr;
  std::shared_ptr<CJavaObject> map =
      c.Construct(*mapClass, "ctor()", WSTR("Failed to create a new Java hash map object.  %s"));
  if (!map) return nullptr;
  ComPtr<IHostEnumerator> items;
  if (FAILED(attributes->get_Enumerator(items.Receive()))) return nullptr;
  ScopedBstr name;
  ScopedVariant value;
  while (items && items->Next(name.Receive(), value.Receive()) == S_OK) {
    // A "put" that threw leaves its exception to the caller, whose send-failure line
    // reports it; no further Java call may be made while it is pending, so the remaining
    // attributes are only walked.
    if (c.ExceptionPending()) continue;
    std::shared_ptr<CJavaString> key = c.String(View(name.Get()));
    const bool isText = SUCCEEDED(value.ChangeType(VT_BSTR));
    std::shared_ptr<CJavaString> text = c.String(isText ? View(value.Get().bstrVal) : WStringView());
    if (key && text) map->CallVoidMethod("put", *key, *text);
  }
  return map;
}

HRESULT PutExtendedMetrics(Conversion& c, const CJavaObject& javaSample, IHostSample* sample,
                           IHostEnumerator* metrics) {
  if (!metrics) return E_POINTER;
  HRESULT last = S_OK;
  ScopedBstr name;
  ScopedVariant value;
  while ((last = metrics->Next(name.Receive(), value.Receive())) == S_OK) {
    if (FAILED(value.ChangeType(VT_UNKNOWN))) continue;
    // An object without the instance enumerator is a metric without instances.
    ComPtr<IHostEnumerator> instances;
    if (IUnknown* object = value.Get().punkVal) {
      object->QueryInterface(IID_IHostEnumerator, instances.ReceiveVoid());
    }
    std::shared_ptr<CJavaObject> metric =
        GetMetricWithInstances(c, View(name.Get()), instances.Get());
    instances.Reset();
    if (!metric) continue;
    if (std::optional<WString> failure = c.Call(javaSample, "putMetric", *metric)) {
      const WString label = c.TimeLabelOf(sample);
      c.Log().Error(WSTR("Failed to add metric '%s' to sample '%s'.  %s"), name.Text(), label,
                    *failure);
    }
  }
  return last;
}

std::shared_ptr<CJavaObject> GetExtendedSample(Conversion& c, IHostSample* sample,
                                               IHostEnumerator* metrics) {
  const CJavaClass* sampleClass = c.Class(DataClass::Sample);
  if (!sampleClass || !sample) return nullptr;
  DATE time = 0;
  const HRESULT hr = sample->get_time(&time);
  if (FAILED(hr)) {
    c.Log().ErrorWithCode(WSTR("Failed to get time from sample"), hr);
    return nullptr;
  }
  std::shared_ptr<CJavaObject> javaSample =
      c.Construct(*sampleClass, "ctor(time)", WSTR("Failed to create a new Java sample object.  %s"),
                  ToJavaMillis(time));
  if (!javaSample) return nullptr;
  // The sample goes with the metrics that did go in.
  if (FAILED(PutExtendedMetrics(c, *javaSample, sample, metrics))) {
    c.Log().Error(WSTR("Failed to get extended metrics."));
  }
  return javaSample;
}

}  // namespace tarnix::convert
