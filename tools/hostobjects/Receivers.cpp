#include "hostobjects/Receivers.h"

namespace tarnix::host {
namespace {

template <class Entry>
void Keep(std::deque<Entry>& kept, Entry entry) {
  if (kept.size() == kAnswersKept) kept.pop_front();
  kept.push_back(std::move(entry));
}

}  // namespace

std::vector<DumpedAnswer> DataDumpInbox::Answers() const {
  std::lock_guard<std::mutex> hold(lock_);
  return {answers_.begin(), answers_.end()};
}

HRESULT DataDumpInbox::OnDataDumped(LONG dataType, BSTR text) {
  if (const HRESULT planned = Enter("IDataDumpCallback::OnDataDumped"); FAILED(planned))
    return planned;
  std::lock_guard<std::mutex> hold(lock_);
  Keep(answers_, DumpedAnswer{dataType, text == nullptr,
                              text ? WString(text, SysStringLen(text)) : WString()});
  return S_OK;
}

std::vector<ExecutedAction> ActionInbox::Actions() const {
  std::lock_guard<std::mutex> hold(lock_);
  return {actions_.begin(), actions_.end()};
}

HRESULT ActionInbox::ExecuteAction(LONG flags, VARIANT action, VARIANT* result) {
  if (const HRESULT planned = Enter("IHostActionExecutor::ExecuteAction"); FAILED(planned))
    return planned;
  ExecutedAction record{flags, action.vt, WString(), result != nullptr};
  if (action.vt == VT_BSTR && action.bstrVal)
    record.text.assign(action.bstrVal, SysStringLen(action.bstrVal));
  std::lock_guard<std::mutex> hold(lock_);
  Keep(actions_, std::move(record));
  return S_OK;
}

}  // namespace tarnix::host
