// Writing to the host's log. Without a logger a message is neither built nor written: the
// formatting runs only once a logger is at hand, and the caller's flow never changes.
#pragma once

#include "common/ErrorText.h"
#include "common/FormatText.h"
#include "platform/ComPtr.h"
#include "platform/Win32.h"
#include "tarnix/HostInterfaces.h"

namespace tarnix {

enum class LogOperation { Error, Warning, Info, Level };

// The level the component passes for its detailed tracing.
inline constexpr LONG kTraceLevel = 8;

class HostLog {
 public:
  // No logger: every message is dropped.
  HostLog() = default;
  explicit HostLog(ComPtr<IHostLogger> logger) : logger_(std::move(logger)) {}
  // Takes a reference of its own.
  explicit HostLog(IHostLogger* logger) : logger_(logger) {}

  // For the static configuration operations, which hold a logger only for one call: the
  // logger is asked from the host the first time there is something to log, and a message
  // for which none can be had is dropped. Release it (let it go) when the call returns.
  static HostLog AcquiredOnFirstUse();

  // Whether a logger is at hand (for a lazy log, asks the host for one if it has none).
  bool HasLogger() const { return Acquire() != nullptr; }
  IHostLogger* Get() const { return logger_.Get(); }

  // Each writer returns whether the message was written, i.e. whether a logger was at hand.
  template <class... Args>
  bool Error(const WCHAR* format, const Args&... args) const {
    return Emit(LogOperation::Error, format, args...);
  }
  template <class... Args>
  bool Warning(const WCHAR* format, const Args&... args) const {
    return Emit(LogOperation::Warning, format, args...);
  }
  template <class... Args>
  bool Info(const WCHAR* format, const Args&... args) const {
    return Emit(LogOperation::Info, format, args...);
  }
  // Through the logger's levelled operation, at kTraceLevel.
  template <class... Args>
  bool Trace(const WCHAR* format, const Args&... args) const {
    return Emit(LogOperation::Level, format, args...);
  }

  // A failure line: the prefix (formatted with `prefixArgs` when there are any, else taken
  // as it stands) followed by the result-code suffix of `hr`.
  template <class... Args>
  bool ErrorWithCode(const WCHAR* prefix, HRESULT hr, const Args&... prefixArgs) const {
    return EmitWithCode(LogOperation::Error, SuffixStyle::Spaced, prefix, hr, prefixArgs...);
  }
  template <class... Args>
  bool WarningWithCode(const WCHAR* prefix, HRESULT hr, const Args&... prefixArgs) const {
    return EmitWithCode(LogOperation::Warning, SuffixStyle::Spaced, prefix, hr, prefixArgs...);
  }
  // As ErrorWithCode, with the suffix run on to the prefix without blanks.
  template <class... Args>
  bool ErrorWithJoinedCode(const WCHAR* prefix, HRESULT hr, const Args&... prefixArgs) const {
    return EmitWithCode(LogOperation::Error, SuffixStyle::Joined, prefix, hr, prefixArgs...);
  }

  // Writes a finished message. Allocation failures of the call's strings throw
  // HResultError(E_OUTOFMEMORY); the logger's own answer is ignored.
  static void Write(IHostLogger* logger, LogOperation operation, const WString& message);

 private:
  IHostLogger* Acquire() const;

  template <class... Args>
  bool Emit(LogOperation operation, const WCHAR* format, const Args&... args) const {
    IHostLogger* logger = Acquire();
    if (!logger) return false;
    Write(logger, operation, FormatText(format, args...));
    return true;
  }

  template <class... Args>
  bool EmitWithCode(LogOperation operation, SuffixStyle style, const WCHAR* prefix, HRESULT hr,
                    const Args&... prefixArgs) const {
    IHostLogger* logger = Acquire();
    if (!logger) return false;
    WString message;
    if constexpr (sizeof...(Args) == 0) {
      message = prefix ? prefix : WSTR("");
    } else {
      message = FormatText(prefix, prefixArgs...);
    }
    message += ResultCodeSuffix(hr, style);
    Write(logger, operation, message);
    return true;
  }

  mutable ComPtr<IHostLogger> logger_;
  bool acquireOnFirstUse_ = false;
};

}  // namespace tarnix
