#include "manager/AnswerDelivery.h"

#include "common/Bstr.h"
#include "common/SystemService.h"
#include "manager/CommManagerImpl.h"
#include "manager/DataTypes.h"
#include "platform/ScopedVariant.h"

namespace tarnix {
namespace {

// Owns one handle of a kernel object.
class EventHandle {
 public:
  explicit EventHandle(HANDLE handle) : handle_(handle) {}
  ~EventHandle() {
    if (handle_) CloseHandle(handle_);
  }
  EventHandle(const EventHandle&) = delete;
  EventHandle& operator=(const EventHandle&) = delete;

  HANDLE Get() const { return handle_; }
  explicit operator bool() const { return handle_ != nullptr; }

 private:
  HANDLE handle_;
};

const WCHAR* OrNull(const WCHAR* text) { return text ? text : WSTR("null"); }

// A start-up answer that no callback took still has to reach the host: the engine is
// told to fetch its policy itself.
void RequestPolicyUpdate(const HostLog& log, HRESULT callbackResult) {
  const EventHandle event(OpenEventW(EVENT_MODIFY_STATE, FALSE, kPolicyUpdateEventName));
  if (!event) {
    // The callback's code, not the system's: the line is about the answer that got lost.
    log.ErrorWithCode(WSTR("Failed to open event for policy update"), callbackResult);
    return;
  }
  log.Info(WSTR("Force to update policy..."));
  SetEvent(event.Get());
}

HRESULT CallCallbacks(CRMICommManagerImpl& manager, const HostLog& log, const WCHAR* first,
                      const WCHAR* second, const WCHAR* third, unsigned char dataType,
                      const WString& text) {
  const HRESULT hr = manager.CallCallback(first, second, third, dataType, text.c_str());
  if (FAILED(hr)) {
    const WCHAR* format = dataType == eStartup
                              ? WSTR("Failed to CallCallback for eStartup:(%s, %s, %s)")
                              : WSTR("Failed to CallCallback for eUserSessionLogon:(%s, %s, %s)");
    log.Error(format, OrNull(first), OrNull(second), OrNull(third));
    if (dataType == eStartup) RequestPolicyUpdate(log, hr);
  }
  return hr;
}

VARIANT TextVariant(const WString& text) {
  VARIANT value;
  VariantInit(&value);
  value.vt = VT_BSTR;
  value.bstrVal = NewBstr(text).Release();
  return value;
}

HRESULT ExecuteAction(const HostLog& log, const WString& text) {
  ComPtr<IHostActionExecutor> executor;
  HRESULT hr = GetActionExecutor(&executor);
  if (SUCCEEDED(hr) && !executor) hr = E_NOINTERFACE;
  if (FAILED(hr)) {
    log.ErrorWithJoinedCode(WSTR("Failed to get action executor"), hr);
    return hr;
  }
  ScopedVariant action;
  action.Reset(TextVariant(text));
  hr = executor->ExecuteAction(0, action.Get(), nullptr);
  if (FAILED(hr)) log.ErrorWithJoinedCode(WSTR("Failed to execute action"), hr);
  return hr;
}

}  // namespace

HRESULT DeliverAnswer(CRMICommManagerImpl& manager, const HostLog& log, const WCHAR* first,
                      const WCHAR* second, const WCHAR* third, unsigned char dataType,
                      const WString& text, HRESULT unhandledResult) {
  const DataTypeRow* handling = FindDataType(dataType);
  switch (handling ? handling->answer : AnswerRoute::Dropped) {
    case AnswerRoute::Callbacks:
      return CallCallbacks(manager, log, first, second, third, dataType, text);
    case AnswerRoute::ActionExecutor: return ExecuteAction(log, text);
    case AnswerRoute::Dropped: break;
  }
  return unhandledResult;
}

}  // namespace tarnix
