#include "manager/AnswerDelivery.h"

#include "common/Bstr.h"
#include "common/SystemService.h"
#include "manager/CommManagerImpl.h"
#include "manager/DataTypes.h"
#include "platform/ScopedVariant.h"
#include "platform/UniqueAny.h"

namespace tarnix {
namespace {

const WCHAR* OrNull(const WCHAR* text) { return text ? text : WSTR("null"); }

// A start-up answer that no callback took still has to reach the host: the engine is
// told to fetch its policy itself.
void RequestPolicyUpdate(const HostLog& log, HRESULT callbackResult) {
  const UniqueHandle event(OpenEventW(EVENT_MODIFY_STATE, FALSE, kPolicyUpdateEventName));
  if (!event) {
    // The callback's code, not the system's: the line is about the answer that got lost.
    log.ErrorWithCode(WSTR("Failed to open event for policy update"), callbackResult);
    return;
  }
  log.Info(WSTR("Force to update policy..."));
  SetEvent(event.Get());
}

[[nodiscard]] HRESULT CallCallbacks(CRMICommManagerImpl& manager, const HostLog& log,
                                    const WCHAR* serverUrl, const WCHAR* secondValue,
                                    const WCHAR* certificate, unsigned char dataType,
                                    const WString& text) {
  const HRESULT hr =
      manager.CallCallback(serverUrl, secondValue, certificate, dataType, text.c_str());
  if (FAILED(hr)) {
    const WCHAR* format = dataType == eStartup
                              ? WSTR("Failed to CallCallback for eStartup:(%s, %s, %s)")
                              : WSTR("Failed to CallCallback for eUserSessionLogon:(%s, %s, %s)");
    log.Error(format, OrNull(serverUrl), OrNull(secondValue), OrNull(certificate));
    if (dataType == eStartup) RequestPolicyUpdate(log, hr);
  }
  return hr;
}

[[nodiscard]] HRESULT ExecuteAction(const HostLog& log, const WString& text) {
  ComPtr<IHostActionExecutor> executor;
  HRESULT hr = GetActionExecutor(&executor);
  if (SUCCEEDED(hr) && !executor) hr = E_NOINTERFACE;
  if (FAILED(hr)) {
    log.ErrorWithJoinedCode(WSTR("Failed to get action executor"), hr);
    return hr;
  }
  const ScopedVariant action = TextVariant(text);
  hr = executor->ExecuteAction(0, action.Get(), nullptr);
  if (FAILED(hr)) log.ErrorWithJoinedCode(WSTR("Failed to execute action"), hr);
  return hr;
}

}  // namespace

HRESULT DeliverAnswer(CRMICommManagerImpl& manager, const HostLog& log, const WCHAR* serverUrl,
                      const WCHAR* secondValue, const WCHAR* certificate, unsigned char dataType,
                      const WString& text, HRESULT unhandledResult) {
  const DataTypeRow* handling = FindDataType(dataType);
  switch (handling ? handling->answer : AnswerRoute::Dropped) {
    case AnswerRoute::Callbacks:
      return CallCallbacks(manager, log, serverUrl, secondValue, certificate, dataType, text);
    case AnswerRoute::ActionExecutor: return ExecuteAction(log, text);
    case AnswerRoute::Dropped: break;
  }
  return unhandledResult;
}

}  // namespace tarnix
