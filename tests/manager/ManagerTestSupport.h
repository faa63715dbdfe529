// Small helpers the manager's suites share: text in both widths and a log to the recording
// logger.
#pragma once

#include "common/HostLog.h"
#include "fixtures/RecordingLogger.h"
#include "platform/WideText.h"

#include <string>

namespace tarnix::testing {

// A data type with no message of its own: the call runs up to the Java client and stops.
inline constexpr unsigned char kTypeWithoutMessage = 11;

inline WString W(const std::string& text) { return Utf8ToWide(text); }
inline std::string U(const WString& text) { return WideToUtf8(text); }

// A log that writes to the recording logger.
inline HostLog LogTo(RecordingLogger& logger) {
  return HostLog(ComPtr<IHostLogger>(static_cast<IHostLogger*>(&logger)));
}

}  // namespace tarnix::testing
