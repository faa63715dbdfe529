// The host's own registry writes: the settings a host agent's installer would leave.
#pragma once

#include <windows.h>

namespace host {

// REG_SZ or REG_MULTI_SZ text: `bytes` counts every terminator the value carries.
bool SetValue(const WCHAR* key, const WCHAR* name, DWORD type, const WCHAR* text, DWORD bytes);
bool SetString(const WCHAR* key, const WCHAR* name, const WCHAR* text);
// Removes a key of HKEY_LOCAL_MACHINE with everything under it; a missing key is fine.
void DeleteKey(const WCHAR* key);
void DeleteValue(const WCHAR* key, const WCHAR* name);

}  // namespace host
