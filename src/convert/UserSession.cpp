#include "convert/Converters.h"

#include "platform/ScopedBstr.h"
#include "platform/ScopedVariant.h"

namespace tarnix::convert {
namespace {

using TextRead = HRESULT (STDMETHODCALLTYPE IHostUserSession::*)(BSTR*);

// One identity text of the session as a Java string; empty when the host cannot give it
// (no line: the host's failures here are routine) or the string cannot be made.
LocalString ReadText(Conversion& c, IHostUserSession& session, TextRead read) {
  ScopedBstr text;
  if (FAILED((session.*read)(text.Receive()))) return std::nullopt;
  return c.String(View(text.Get()));
}

WString UserLabel(IHostUserSession& session) {
  ScopedBstr label;
  if (FAILED(session.get_userLabel(label.Receive()))) return WSTR("NULL");
  return label.Text();
}

void PutProperty(Conversion& c, const CJavaObject& javaSession, IHostUserSession& session,
                 BSTR name, ScopedVariant& value) {
  LocalString javaName = c.String(View(name));
  // Every property goes as text; one the host cannot turn into text goes as "".
  const bool isText = SUCCEEDED(value.ChangeType(VT_BSTR));
  LocalString javaValue = c.String(isText ? View(value.Get().bstrVal) : WStringView());
  if (!javaName || !javaValue) return;
  if (std::optional<WString> failure =
          c.Call(javaSession, methods::BaseUserSession::putProperty, *javaName, *javaValue)) {
    const WString label = UserLabel(session);
    c.Log().Error(WSTR("Failed to set user property %s for user %s.  %s"), WString(View(name)),
                  label, *failure);
  }
}

// Property failures never fail the session: it goes with the properties that went in.
void PutProperties(Conversion& c, const CJavaObject& javaSession, IHostUserSession& session) {
  ComPtr<IHostPropertyBox> box;
  HRESULT hr = session.get_propertyBox(box.Receive());
  if (FAILED(hr)) {
    // The host's readers match these two lines with "box" and "Error" run together.
    c.Log().ErrorWithJoinedCode(WSTR("Failed to get property box"), hr);
    return;
  }
  if (!box) return;
  ComPtr<IHostEnumerator> properties;
  hr = box->get_enumerator(properties.Receive());
  if (FAILED(hr)) {
    c.Log().ErrorWithJoinedCode(WSTR("Failed to get enumerator from property box"), hr);
    return;
  }
  ScopedBstr name;
  ScopedVariant value;
  while (properties && properties->Next(name.Receive(), value.Receive()) == S_OK) {
    PutProperty(c, javaSession, session, name.Get(), value);
  }
}

}  // namespace

LocalObject GetUserSession(Conversion& c, ComPtr<IHostUserSession> session) {
  const CJavaClass* sessionClass = c.Class(DataClass::UserSession);
  if (!sessionClass || !session) return std::nullopt;
  IHostUserSession& host = *session.Get();
  LONG id = 0;
  if (FAILED(host.get_id(&id))) return std::nullopt;
  LocalString sid = ReadText(c, host, &IHostUserSession::get_sid);
  if (!sid) return std::nullopt;
  LocalString user = ReadText(c, host, &IHostUserSession::get_user);
  if (!user) return std::nullopt;
  LocalString domain = ReadText(c, host, &IHostUserSession::get_domain);
  if (!domain) return std::nullopt;
  VARIANT_BOOL connected = VARIANT_FALSE;
  if (FAILED(host.get_connected(&connected))) return std::nullopt;

  // Only the host's 1 means connected; its VARIANT_TRUE (-1) has always been sent as not
  // connected, and the server's session states are built on that.
  LocalObject javaSession =
      c.Construct(*sessionClass, methods::BaseUserSession::ctorIdSidUserDomainConnected,
                  WSTR("Failed to create a new Java user session object.  %s"),
                  static_cast<jint>(id), *sid, *user, *domain, connected == 1);
  if (!javaSession) return std::nullopt;
  PutProperties(c, *javaSession, host);
  return javaSession;
}

}  // namespace tarnix::convert
