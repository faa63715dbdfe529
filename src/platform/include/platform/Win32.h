// The one header through which the component sees the operating system. On Windows it
// is the system's own API; elsewhere the POSIX layer supplies the same names with the
// same meaning, for exactly the subset this component uses.
#pragma once

#include "tarnix/Platform.h"

#ifdef _WIN32
#  include <shlwapi.h>
#endif

#include <string>

// Wide text as the component keeps it: UTF-16 on every platform.
using WString = std::basic_string<WCHAR>;

namespace tarnix::platform {

// The calling thread's last error as a result; E_FAIL when the failed call left none.
inline HRESULT LastErrorResult() {
  const DWORD error = GetLastError();
  return error ? HRESULT_FROM_WIN32(error) : E_FAIL;
}

}  // namespace tarnix::platform
