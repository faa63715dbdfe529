// The user-session events: each carries the connection, the session and the call's
// number; logon and refresh describe the desktop as well.
#include "manager/Dispatch.h"

#include "convert/JNIConvertor.h"
#include "convert/ClassTable.h"
#include "jni/JavaVM.h"
#include "manager/DispatchConversions.h"

using Client = tarnix::methods::DesktopMessageClient;

namespace tarnix {
namespace {

// The events that carry the connection and the session.
struct SessionOnly {
  Converted connection, session;
  DispatchOutcome failure;

  explicit SessionOnly(const DispatchCall& call) {
    if (!call.session) {
      failure = {E_FAIL, nullptr};
      return;
    }
    if (!(connection = ConvertConnection(call))) {
      failure = connection.Failure();
      return;
    }
    if (!(session = ConvertSession(call))) failure = session.Failure();
  }
  bool Ready() const { return session.object != nullptr; }
};

// Logon and refresh describe the desktop as well, converted after the session.
struct SessionWithDesktop : SessionOnly {
  Converted desktop;

  explicit SessionWithDesktop(const DispatchCall& call) : SessionOnly(call) {
    if (SessionOnly::Ready() && !(desktop = ConvertDesktop(call))) failure = desktop.Failure();
  }
  bool Ready() const { return desktop.object != nullptr; }
};

[[nodiscard]] DispatchOutcome SendSessionEvent(
    const DispatchCall& call, tarnix::Method<void(jobject, jlong, jobject)> method) {
  const SessionOnly parts(call);
  if (!parts.Ready()) return parts.failure;
  call.client.CallVoidMethod(method, *parts.connection.object, JavaNumber(call),
                             *parts.session.object);
  return {};
}

// A logoff carries the session's last metrics, and its remote applications once there
// were metrics to go with them. Neither can fail the call.
void PutLastSample(const DispatchCall& call, const CJavaObject& javaSession) {
  ComPtr<IHostSample> sample;
  if (!call.data || FAILED(call.data->QueryInterface(IID_IHostSample, sample.ReceiveVoid())) ||
      !sample) {
    call.log.Warning(WSTR("Failed to retrieve the sample at log off."));
    return;
  }
  const CJNIConvertor convertor(call.log.Get());
  if (convertor.PutMetrics(call.machine, javaSession, sample.Get())) {
    convertor.PutRemoteApps(call.machine, javaSession, sample.Get());
  }
}

}  // namespace

DispatchOutcome SendLogon(const DispatchCall& call) {
  const SessionWithDesktop parts(call);
  if (!parts.Ready()) return parts.failure;
  return DispatchOutcome::Sent(
      call.client.CallStringMethod(Client::onUserLogon, *parts.connection.object,
                                   *parts.desktop.object, JavaNumber(call), *parts.session.object));
}

DispatchOutcome SendRefresh(const DispatchCall& call) {
  const SessionWithDesktop parts(call);
  if (!parts.Ready()) return parts.failure;
  call.client.CallVoidMethod(Client::refreshSession, *parts.connection.object, JavaNumber(call),
                             *parts.desktop.object, *parts.session.object);
  return {};
}

DispatchOutcome SendReconnect(const DispatchCall& call) {
  return SendSessionEvent(call, Client::onUserReconnect);
}

DispatchOutcome SendDisconnect(const DispatchCall& call) {
  return SendSessionEvent(call, Client::onUserDisconnect);
}

DispatchOutcome SendLogoff(const DispatchCall& call) {
  const SessionOnly parts(call);
  if (!parts.Ready()) return parts.failure;
  PutLastSample(call, *parts.session.object);
  call.client.CallVoidMethod(Client::onUserLogoff, *parts.connection.object, JavaNumber(call),
                             *parts.session.object);
  return {};
}

// A session's start and end are converted, so that a broken session is noticed, but the
// message server has no message for them.
DispatchOutcome ConvertSessionOnly(const DispatchCall& call) {
  const SessionOnly parts(call);
  return parts.Ready() ? DispatchOutcome{} : parts.failure;
}

}  // namespace tarnix
