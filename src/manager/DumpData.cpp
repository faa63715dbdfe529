// The road of every piece of host data: configuration, identity, the Java message of its
// type, and what becomes of the answer.
#include "manager/CommManagerImpl.h"

#include "jni/JavaString.h"
#include "jni/JavaVM.h"
#include "jni/LocalFrame.h"
#include "manager/AnswerDelivery.h"
#include "manager/DataTypes.h"
#include "manager/Dispatch.h"
#include "manager/ManagerMessages.h"
#include "manager/RemoteFailure.h"
#include "manager/ResultCodes.h"
#include "platform/ScopedBstr.h"

using tarnix::DispatchCall;
using tarnix::DispatchOutcome;

namespace {

WString UserNameOf(IHostUserSession* session) {
  tarnix::ScopedBstr user;
  if (FAILED(session->get_user(user.Receive()))) return WString();
  return user.Text();
}

// The send failed in Java: the host hears which data did not get through, and whether
// the connection to the message server was the reason.
[[nodiscard]] HRESULT ReportSendFailure(const DispatchCall& call, const WString& failure) {
  const WString typeName = tarnix::Enum2String(call.dataType);
  if (call.session) {
    call.log.Error(WSTR("Failed to send user event %s for user %s to the message server.  %s"),
                   typeName, UserNameOf(call.session), failure);
  } else {
    call.log.Error(WSTR("Failed to send data with type %s to the message server.  %s"), typeName,
                   failure);
  }
  return IsRemoteFailureText(failure) ? tarnix::kNetworkNotAvailable : E_FAIL;
}

}  // namespace

LONG CRMICommManagerImpl::DumpData(const WCHAR* serverUrl, const WCHAR* secondValue,
                                   const WCHAR* certificate, ULONGLONG number,
                                   unsigned char dataType, IUnknown* data) {
  std::lock_guard<std::recursive_mutex> lock(lock_);
  HRESULT hr = SetCurrentServerConfig(serverUrl, secondValue, certificate);
  if (FAILED(hr)) {
    log_.ErrorWithCode(tarnix::messages::kDumpDataConfigFailed, hr);
    return hr;
  }
  tarnix::ClientIdentity identity;
  hr = tarnix::GatherIdentity(systemInfo_.Get(), log_, secondValue, &identity);
  if (FAILED(hr)) return hr;
  // Held under the lock since the configuration went through, so Java is still up.
  if (!javaVM_ || !messageClient_) return tarnix::kJavaNotRunning;

  const CJavaVM::ThreadDetachGuard detach = javaVM_->AttachForScope();
  const tarnix::LocalFrame frame(javaVM_->GetEnv());
  tarnix::ComPtr<IHostUserSession> session;
  if (data) data->QueryInterface(IID_IHostUserSession, session.ReceiveVoid());
  const DispatchCall call{javaVM_, *messageClient_, log_, systemInfo_.Get(), identity,
                          number,  dataType,        data, session.Get()};
  DispatchOutcome outcome;
  const tarnix::DataTypeRow* handling = tarnix::FindDataType(dataType);
  if (handling && handling->send) outcome = handling->send(call);

  // Whatever went wrong in Java, its exception is not left pending on the host's thread.
  if (const std::optional<WString> failure = javaVM_->TakeException()) {
    return ReportSendFailure(call, *failure);
  }
  if (outcome.failure) return ReportSendFailure(call, *outcome.failure);
  if (FAILED(outcome.result)) return outcome.result;
  WString answer;
  if (!outcome.answer || !outcome.answer->GetText(answer)) return identity.componentsResult;
  return tarnix::DeliverAnswer(*this, log_, serverUrl, secondValue, certificate, dataType, answer,
                               identity.componentsResult);
}
