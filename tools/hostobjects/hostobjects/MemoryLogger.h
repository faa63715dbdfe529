// A host logger that keeps the lines it is given, most recent last.
#pragma once

#include "common/HostLog.h"
#include "hostobjects/HostObject.h"

#include <deque>
#include <mutex>
#include <string>
#include <vector>

namespace tarnix::host {

struct LogLine {
  LogOperation operation;
  WString component;
  LONG level;  // 0 except for LogLevel
  WString message;
};

const char* OperationName(LogOperation operation);

class MemoryLogger : public HostObject<IHostLogger> {
 public:
  explicit MemoryLogger(std::string name = "MemoryLogger") : HostObject(std::move(name)) {}

  std::vector<LogLine> Lines() const;
  // The messages of one operation, in order.
  std::vector<WString> Messages(LogOperation operation) const;
  // The messages of every operation, in order.
  std::vector<WString> Messages() const;
  size_t Count() const;
  bool Contains(const WString& part) const;
  // Every line, readable.
  std::string Dump() const;
  void Clear();

  HRESULT STDMETHODCALLTYPE Reserved3() override { return Unused(3); }
  HRESULT STDMETHODCALLTYPE Reserved4() override { return Unused(4); }
  HRESULT STDMETHODCALLTYPE Reserved5() override { return Unused(5); }
  HRESULT STDMETHODCALLTYPE Reserved6() override { return Unused(6); }
  HRESULT STDMETHODCALLTYPE Reserved7() override { return Unused(7); }
  HRESULT STDMETHODCALLTYPE Reserved8() override { return Unused(8); }
  HRESULT STDMETHODCALLTYPE LogError(BSTR component, BSTR message) override {
    return Record({LogOperation::Error, Text(component), 0, Text(message)}, !component || !message);
  }
  HRESULT STDMETHODCALLTYPE LogWarning(BSTR component, BSTR message) override {
    return Record({LogOperation::Warning, Text(component), 0, Text(message)},
                  !component || !message);
  }
  HRESULT STDMETHODCALLTYPE LogInfo(BSTR component, BSTR message) override {
    return Record({LogOperation::Info, Text(component), 0, Text(message)}, !component || !message);
  }
  HRESULT STDMETHODCALLTYPE LogLevel(BSTR component, LONG level, BSTR message) override {
    return Record({LogOperation::Level, Text(component), level, Text(message)},
                  !component || !message);
  }

  // Lines kept at most; the oldest go first.
  static constexpr size_t kLinesKept = 100000;

 protected:
  // Keeps the line (`textMissing`: the component or the message was null); what the
  // logging call answers.
  virtual HRESULT Record(LogLine line, bool textMissing);

 private:
  static WString Text(BSTR text) { return text ? WString(text, SysStringLen(text)) : WString(); }

  mutable std::mutex lock_;
  std::deque<LogLine> lines_;
};

}  // namespace tarnix::host
