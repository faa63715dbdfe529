#include "platform/Win32.h"

#include <atomic>

namespace {
thread_local DWORD t_lastError = 0;
std::atomic<DWORD> g_nextThreadId{1};
thread_local DWORD t_threadId = 0;
}  // namespace

DWORD GetLastError() { return t_lastError; }

void SetLastError(DWORD error) { t_lastError = error; }

// Ids are handed out once per thread and never reused, so a map keyed by them can never
// confuse a new thread with one that has ended.
DWORD GetCurrentThreadId() {
  if (t_threadId == 0) t_threadId = g_nextThreadId.fetch_add(1);
  return t_threadId;
}
