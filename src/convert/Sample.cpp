#include "convert/Converters.h"

#include "platform/ScopedBstr.h"

#include <optional>

namespace tarnix::convert {
namespace {

// What every instance of one sample shares.
struct SampleInProgress {
  Conversion& c;
  const CJavaObject& javaSample;
  IHostSessionSource* sessions;
  DATE time;
  std::optional<WString> label;  // made on the first failure that shows it

  const WString& Label() {
    if (!label) label = DateLabel(time);
    return *label;
  }
};

// An instance whose session the host no longer knows, or whose session cannot be
// converted, is left out without a line of its own: sessions end while a sample is taken.
void AddInstance(SampleInProgress& s, BSTR key, IHostSample* instance) {
  // The key is the session id as text; a key that is no number asks for session 0.
  const LONG id = key ? StrToIntW(key) : 0;
  ComPtr<IHostUserSession> hostSession;
  if (!s.sessions || FAILED(s.sessions->GetSession(id, hostSession.Receive()))) return;
  LocalObject javaSession = GetUserSession(s.c, std::move(hostSession));
  if (!javaSession) return;
  PutMetrics(s.c, *javaSession, instance);
  if (instance) PutRemoteApps(s.c, *javaSession, instance);
  const WString keyText(View(key));
  s.c.Log().Trace(WSTR("Adding session to sample: '%s'"), keyText);
  if (std::optional<WString> failure =
          s.c.Call(s.javaSample, methods::BaseSample::putSession, *javaSession)) {
    if (s.c.Log().HasLogger()) {
      s.c.Log().Error(WSTR("Failed to add session '%s' to sample '%s'.  %s"), keyText, s.Label(),
                      *failure);
    }
  }
}

}  // namespace

LocalObject NewJavaSample(Conversion& c, IHostSample* sample, DATE* time) {
  const CJavaClass* sampleClass = c.Class(DataClass::Sample);
  if (!sampleClass || !sample) return std::nullopt;
  const HRESULT hr = sample->get_time(time);
  if (FAILED(hr)) {
    c.Log().ErrorWithCode(WSTR("Failed to get time from sample"), hr);
    return std::nullopt;
  }
  return c.Construct(*sampleClass, methods::BaseSample::ctorTime,
                     WSTR("Failed to create a new Java sample object.  %s"), ToJavaMillis(*time));
}

LocalObject GetSample(Conversion& c, IHostSample* sample, IHostSessionSource* sessions) {
  DATE time = 0;
  LocalObject javaSample = NewJavaSample(c, sample, &time);
  if (!javaSample) return std::nullopt;
  PutMetrics(c, *javaSample, sample);

  ComPtr<IHostSampleEnumerator> instances;
  const HRESULT hr = sample->get_instances(instances.Receive());
  if (FAILED(hr)) {
    // A sample without its sessions would tell the server they all ended.
    c.Log().ErrorWithCode(WSTR("Failed to get instances from sample"), hr);
    return std::nullopt;
  }
  SampleInProgress progress{c, *javaSample, sessions, time, std::nullopt};
  ScopedBstr key;
  ComPtr<IHostSample> instance;
  // A failing Next ends the walk like its end: the sample goes as far as it was filled.
  while (instances && instances->Next(key.Receive(), instance.Receive()) == S_OK) {
    AddInstance(progress, key.Get(), instance.Get());
  }
  return javaSample;
}

}  // namespace tarnix::convert
