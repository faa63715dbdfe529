// Small helpers the manager's suites share: text in both widths and questions about the
// lines a recording logger received.
#pragma once

#include "common/HostLog.h"
#include "fixtures/RecordingLogger.h"
#include "platform/WideText.h"

#include <string>
#include <vector>

namespace tarnix::testing {

// A data type with no message of its own: the call runs up to the Java client and stops.
inline constexpr unsigned char kTypeWithoutMessage = 11;

inline WString W(const std::string& text) { return Utf8ToWide(text); }
inline std::string U(const WString& text) { return WideToUtf8(text); }

// A log that writes to the recording logger.
inline HostLog LogTo(RecordingLogger& logger) {
  return HostLog(ComPtr<IHostLogger>(static_cast<IHostLogger*>(&logger)));
}

// The logger's lines of one operation, as UTF-8.
inline std::vector<std::string> Lines(const RecordingLogger& logger, LogOperation operation) {
  std::vector<std::string> lines;
  for (const WString& message : logger.Messages(operation)) lines.push_back(U(message));
  return lines;
}

// How many lines of any operation start with `prefix`.
inline size_t CountStartingWith(const RecordingLogger& logger, const std::string& prefix) {
  size_t count = 0;
  for (const WString& message : logger.Messages()) {
    if (U(message).rfind(prefix, 0) == 0) ++count;
  }
  return count;
}

}  // namespace tarnix::testing
