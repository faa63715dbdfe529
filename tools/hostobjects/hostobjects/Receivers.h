// The host's receivers of the message server's answers: a registered callback and the
// action executor. Both keep what they receive, most recent last.
#pragma once

#include "hostobjects/HostObject.h"

#include <deque>
#include <mutex>
#include <vector>

namespace tarnix::host {

// What a receiver keeps: a host that runs for months must not grow with every answer.
inline constexpr size_t kAnswersKept = 100000;

struct DumpedAnswer {
  LONG dataType;
  bool textIsNull;
  WString text;
};

class DataDumpInbox : public HostObject<IDataDumpCallback> {
 public:
  DataDumpInbox() : HostObject("DataDumpInbox") {}

  std::vector<DumpedAnswer> Answers() const;

  HRESULT STDMETHODCALLTYPE OnDataDumped(LONG dataType, BSTR text) override;

 private:
  mutable std::mutex lock_;
  std::deque<DumpedAnswer> answers_;
};

struct ExecutedAction {
  LONG flags;
  VARTYPE type;  // of the action VARIANT
  WString text;  // its text when it is a VT_BSTR
  bool resultSlotGiven;
};

class ActionInbox : public HostObject<IHostActionExecutor> {
 public:
  ActionInbox() : HostObject("ActionInbox") {}

  std::vector<ExecutedAction> Actions() const;

  HRESULT STDMETHODCALLTYPE Reserved3() override { return Unused(3); }
  HRESULT STDMETHODCALLTYPE Reserved4() override { return Unused(4); }
  HRESULT STDMETHODCALLTYPE Reserved5() override { return Unused(5); }
  HRESULT STDMETHODCALLTYPE Reserved6() override { return Unused(6); }
  HRESULT STDMETHODCALLTYPE ExecuteAction(LONG flags, VARIANT action, VARIANT* result) override;

 private:
  mutable std::mutex lock_;
  std::deque<ExecutedAction> actions_;
};

}  // namespace tarnix::host
