#include "common/HostLog.h"

#include "common/Bstr.h"
#include "common/ComponentName.h"
#include "common/SystemService.h"

namespace tarnix {

HostLog HostLog::AcquiredOnFirstUse() {
  HostLog log;
  log.acquireOnFirstUse_ = true;
  return log;
}

IHostLogger* HostLog::Acquire() const {
  if (!logger_ && acquireOnFirstUse_) {
    ComPtr<IHostLogger> logger;
    if (SUCCEEDED(GetHostLogger(&logger))) logger_ = std::move(logger);
  }
  return logger_.Get();
}

void HostLog::Write(IHostLogger* logger, LogOperation operation, const WString& message) {
  ScopedBstr text = NewBstr(message);
  // A fresh copy of the name for every call; no string is shared between calls.
  ScopedBstr component = NewBstr(kComponentName);
  switch (operation) {
    case LogOperation::Error: logger->LogError(component.Get(), text.Get()); break;
    case LogOperation::Warning: logger->LogWarning(component.Get(), text.Get()); break;
    case LogOperation::Info: logger->LogInfo(component.Get(), text.Get()); break;
    case LogOperation::Level: logger->LogLevel(component.Get(), kTraceLevel, text.Get());
  }
}

}  // namespace tarnix
