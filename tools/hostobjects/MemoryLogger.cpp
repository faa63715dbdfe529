#include "hostobjects/MemoryLogger.h"

#include "platform/WideText.h"

namespace tarnix::host {

const char* OperationName(LogOperation operation) {
  switch (operation) {
    case LogOperation::Error: return "LogError";
    case LogOperation::Warning: return "LogWarning";
    case LogOperation::Info: return "LogInfo";
    case LogOperation::Level: return "LogLevel";
  }
  return "?";
}

HRESULT MemoryLogger::Record(LogLine line, bool) {
  std::lock_guard<std::mutex> hold(lock_);
  if (lines_.size() == kLinesKept) lines_.pop_front();
  lines_.push_back(std::move(line));
  return S_OK;
}

std::vector<LogLine> MemoryLogger::Lines() const {
  std::lock_guard<std::mutex> hold(lock_);
  return {lines_.begin(), lines_.end()};
}

std::vector<WString> MemoryLogger::Messages(LogOperation operation) const {
  std::vector<WString> out;
  for (const LogLine& line : Lines()) {
    if (line.operation == operation) out.push_back(line.message);
  }
  return out;
}

std::vector<WString> MemoryLogger::Messages() const {
  std::vector<WString> out;
  for (const LogLine& line : Lines()) out.push_back(line.message);
  return out;
}

size_t MemoryLogger::Count() const {
  std::lock_guard<std::mutex> hold(lock_);
  return lines_.size();
}

bool MemoryLogger::Contains(const WString& part) const {
  for (const LogLine& line : Lines()) {
    if (line.message.find(part) != WString::npos) return true;
  }
  return false;
}

std::string MemoryLogger::Dump() const {
  std::string out;
  for (const LogLine& line : Lines()) {
    out += OperationName(line.operation);
    if (line.operation == LogOperation::Level) out += "(" + std::to_string(line.level) + ")";
    out += " [" + WideToUtf8(line.component) + "] " + WideToUtf8(line.message) + "\n";
  }
  return out;
}

void MemoryLogger::Clear() {
  std::lock_guard<std::mutex> hold(lock_);
  lines_.clear();
}

}  // namespace tarnix::host
