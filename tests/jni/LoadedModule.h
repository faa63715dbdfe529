// Whether a library is mapped into the process, without taking a reference to it.
#pragma once

#include "platform/Win32.h"

namespace tarnix::testing {

inline bool IsModuleLoaded(const WString& path) {
  HMODULE module = nullptr;
  return GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT, path.c_str(), &module) &&
         module != nullptr;
}

inline WString DllDirectory() {
  WCHAR buffer[MAX_PATH + 1] = {};
  const DWORD length = GetDllDirectoryW(MAX_PATH + 1, buffer);
  return WString(buffer, length);
}

}  // namespace tarnix::testing
