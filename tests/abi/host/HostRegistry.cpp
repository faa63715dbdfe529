#include "HostRegistry.h"

#include "HostRuntime.h"

namespace host {

bool SetValue(const WCHAR* key, const WCHAR* name, DWORD type, const WCHAR* text, DWORD bytes) {
  HKEY handle = nullptr;
  if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, key, 0, nullptr, 0, KEY_WRITE, nullptr, &handle,
                      nullptr) != ERROR_SUCCESS) {
    return false;
  }
  const LONG written =
      RegSetValueExW(handle, name, 0, type, reinterpret_cast<const BYTE*>(text), bytes);
  RegCloseKey(handle);
  return written == ERROR_SUCCESS;
}

bool SetString(const WCHAR* key, const WCHAR* name, const WCHAR* text) {
  return SetValue(key, name, REG_SZ, text, (Length(text) + 1) * sizeof(WCHAR));
}

void DeleteKey(const WCHAR* key) { RegDeleteTreeW(HKEY_LOCAL_MACHINE, key); }

void DeleteValue(const WCHAR* key, const WCHAR* name) {
  HKEY handle = nullptr;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, key, 0, KEY_SET_VALUE, &handle) != ERROR_SUCCESS) return;
  RegDeleteValueW(handle, name);
  RegCloseKey(handle);
}

}  // namespace host
