// The one header through which the component sees the operating system. On Windows it
// is the system's own API; elsewhere the POSIX layer supplies the same names with the
// same meaning, for exactly the subset this component uses.
#pragma once

#ifdef _WIN32
#  ifndef NOMINMAX
#    define NOMINMAX
#  endif
#  include <windows.h>
#  include <objbase.h>
#  include <oleauto.h>
#  include <shlwapi.h>
// Wide literals: wchar_t is UTF-16 on Windows.
#  define WSTR(text) L##text
#else
#  include "platform/posix/Types.h"
#  if __has_include("platform/posix/Com.h")
#    include "platform/posix/Com.h"
#  endif
#  if __has_include("platform/posix/OleAuto.h")
#    include "platform/posix/OleAuto.h"
#  endif
#  if __has_include("platform/posix/Registry.h")
#    include "platform/posix/Registry.h"
#  endif
#  if __has_include("platform/posix/Kernel.h")
#    include "platform/posix/Kernel.h"
#  endif
#  if __has_include("platform/posix/Module.h")
#    include "platform/posix/Module.h"
#  endif
// Wide literals: UTF-16 code units, as on Windows (never a 32-bit wchar_t).
#  define WSTR(text) u##text
#endif

#include <string>

// Wide text as the component keeps it: UTF-16 on every platform.
using WString = std::basic_string<WCHAR>;
