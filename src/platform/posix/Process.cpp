#include "platform/Win32.h"

#include <unistd.h>

#include <chrono>
#include <thread>

void Sleep(DWORD dwMilliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(dwMilliseconds));
}

DWORD GetCurrentProcessId() { return static_cast<DWORD>(getpid()); }

ULONGLONG GetTickCount64() {
  const auto since = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<ULONGLONG>(
      std::chrono::duration_cast<std::chrono::milliseconds>(since).count());
}

DWORD GetTickCount() { return static_cast<DWORD>(GetTickCount64()); }
