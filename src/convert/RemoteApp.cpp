#include "convert/Converters.h"

#include "common/Bstr.h"
#include "platform/ScopedBstr.h"

namespace tarnix::convert {

LocalObject GetRemoteApp(Conversion& c, WStringView id) {
  const CJavaClass* appClass = c.Class(DataClass::RemoteApp);
  if (!appClass) return std::nullopt;
  // No line of its own for the id's string; its exception is not left behind either.
  LocalString javaId = c.Vm().NewLocalString(id);
  if (!javaId) {
    c.TakeException();
    return std::nullopt;
  }
  return c.Construct(*appClass, methods::BaseRemoteApp::ctorId,
                     WSTR("Failed to create a new Java remote app object.  %s"), *javaId);
}

void PutRemoteApps(Conversion& c, const CJavaObject& target, IHostSample* instance) {
  if (!instance) return;
  ComPtr<IHostSampleEnumerator> apps;
  HRESULT hr;
  {
    static const WCHAR kCollection[] = WSTR("remoteApps");
    ScopedBstr name = NewBstr(kCollection, sizeof(kCollection) / sizeof(WCHAR) - 1);
    hr = instance->get_collection(name.Get(), apps.Receive());
  }
  if (FAILED(hr)) {
    // The host's readers know this failure by the sample's line.
    c.Log().ErrorWithCode(WSTR("Failed to get instances from sample"), hr);
    return;
  }
  ScopedBstr id;
  ComPtr<IHostSample> app;
  while (apps && apps->Next(id.Receive(), app.Receive()) == S_OK) {
    LocalObject javaApp = GetRemoteApp(c, View(id.Get()));
    if (!javaApp) continue;
    // An application that delivered no metrics is not worth a message to the server.
    if (!PutMetrics(c, *javaApp, app.Get())) continue;
    c.Log().Trace(WSTR("Adding remote app to sample: '%s'"), id.Text());
    if (std::optional<WString> failure =
            c.Call(target, methods::BaseUserSession::putRemoteApp, *javaApp)) {
      const WString label = c.TimeLabelOf(instance);
      c.Log().Error(WSTR("Failed to add app '%s' to sample '%s'.  %s"), id.Text(), label, *failure);
    }
  }
}

}  // namespace tarnix::convert
