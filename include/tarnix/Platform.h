// The operating-system types the public headers are written in: COM, OLE Automation and
// the Win32 base types. On Windows these are the system's own headers. On Linux they are
// the declarations of libtarnix-platform.so, the layer that stands in for ole32, oleaut32
// and the registry there: a host links it (the tarnix::rmi target brings it) and shares it
// with the component, as both share ole32 on Windows.
//
// WSTR("text") makes a wide literal of the platform's wide text: wchar_t on Windows,
// char16_t (UTF-16, never a 32-bit wchar_t) on Linux.
#pragma once

#ifdef _WIN32
#  ifndef NOMINMAX
#    define NOMINMAX
#  endif
#  include <windows.h>
#  include <objbase.h>
#  include <oleauto.h>
#  define WSTR(text) L##text
#else
#  include "tarnix/posix/Types.h"
#  include "tarnix/posix/Com.h"
#  include "tarnix/posix/OleAuto.h"
#  include "tarnix/posix/Registry.h"
#  include "tarnix/posix/Kernel.h"
#  include "tarnix/posix/Module.h"
#  define WSTR(text) u##text
#endif
