#include "convert/Converters.h"

#include "jni/LocalRef.h"
#include "platform/ScopedBstr.h"
#include "platform/ScopedVariant.h"

namespace tarnix::convert {
namespace {

// The first Java exception of a run of calls, cleared as it comes so the run goes on, and
// raised again when the run is over. Later exceptions are cleared and dropped.
class FirstException {
 public:
  explicit FirstException(JNIEnv* env) : env_(env) {}
  void Hold() {
    if (!env_ || !env_->ExceptionCheck()) return;
    LocalRef<jthrowable> thrown(env_, env_->ExceptionOccurred());
    env_->ExceptionClear();
    if (!first_) first_ = std::move(thrown);
  }
  void Raise() const {
    if (first_) env_->Throw(first_.Get());
  }

 private:
  JNIEnv* env_;
  LocalRef<jthrowable> first_;
};

}  // namespace

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
  FirstException failedPut(c.Vm().GetEnv());
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
  const CJavaClass* sampleClass = c.Class(DataClass::Sample);
  if (!sampleClass || !sample) return std::nullopt;
  DATE time = 0;
  const HRESULT hr = sample->get_time(&time);
  if (FAILED(hr)) {
    c.Log().ErrorWithCode(WSTR("Failed to get time from sample"), hr);
    return std::nullopt;
  }
  LocalObject javaSample =
      c.Construct(*sampleClass, methods::BaseSample::ctorTime,
                  WSTR("Failed to create a new Java sample object.  %s"), ToJavaMillis(time));
  if (!javaSample) return std::nullopt;
  // The sample goes with the metrics that did go in.
  if (FAILED(PutExtendedMetrics(c, *javaSample, sample, metrics))) {
    c.Log().Error(WSTR("Failed to get extended metrics."));
  }
  return javaSample;
}

}  // namespace tarnix::convert
