// Where a Java runtime keeps its machine library, and how Java spells paths, per
// platform. Every platform difference of the Java bridge lives here.
#pragma once

#include "platform/Win32.h"

namespace tarnix::platform {

#ifdef _WIN32
// Under the runtime's home: the folder of the runtime's own DLLs (the machine library's
// dependencies) and the machine library.
inline constexpr const WCHAR* kRuntimeDllDirectory = WSTR("bin");
inline constexpr const WCHAR* kRuntimeLibrary = WSTR("bin\\server\\jvm.dll");
inline constexpr char kClassPathSeparator = ';';
inline constexpr WCHAR kPathSeparator = WSTR('\\');
#else
inline constexpr const WCHAR* kRuntimeDllDirectory = WSTR("lib");
inline constexpr const WCHAR* kRuntimeLibrary = WSTR("lib/server/libjvm.so");
// A ';' here makes the JVM start with a class path that silently finds nothing.
inline constexpr char kClassPathSeparator = ':';
inline constexpr WCHAR kPathSeparator = WSTR('/');
#endif

}  // namespace tarnix::platform
