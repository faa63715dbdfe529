// The registry functions over the in-memory hive, with the Windows answers: names ignore
// case, a short buffer gives ERROR_MORE_DATA with the size needed, values are raw bytes.
#include "RegistryHive.h"

#include "Internal.h"
#include "platform/WideText.h"

#include <cstdlib>
#include <cstring>

using tarnix::posix::RegHive;
using tarnix::posix::RegNode;
using tarnix::posix::RegValue;

namespace {

constexpr size_t kMaxKeyNameLength = 255;
constexpr size_t kMaxValueNameLength = 16383;

WString NameOf(LPCWSTR name) { return name ? WString(name) : WString(); }

bool Allowed(const RegHive::Open& key, REGSAM right) { return (key.access & right) == right; }

// The open key behind a handle, provided the handle was opened with `right`.
LONG ResolveFor(RegHive& hive, HKEY handle, REGSAM right, RegHive::Open* key) {
  const LONG result = hive.Resolve(handle, key);
  if (result != ERROR_SUCCESS) return result;
  return Allowed(*key, right) ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

// Copies bytes into a caller's buffer the way RegQueryValueEx does: with no buffer only
// the size is reported; with a short one, ERROR_MORE_DATA and the size.
LONG CopyData(const std::vector<BYTE>& data, LPBYTE buffer, LPDWORD size) {
  if (!size) return buffer ? ERROR_INVALID_PARAMETER : ERROR_SUCCESS;
  const DWORD needed = static_cast<DWORD>(data.size());
  if (!buffer) {
    *size = needed;
    return ERROR_SUCCESS;
  }
  const DWORD available = *size;
  *size = needed;
  if (available < needed) return ERROR_MORE_DATA;
  if (needed) std::memcpy(buffer, data.data(), needed);
  return ERROR_SUCCESS;
}

// Copies a name with its terminator; the count given back leaves the terminator out.
LONG CopyName(const WString& name, LPWSTR buffer, LPDWORD count) {
  if (!buffer || !count) return ERROR_INVALID_PARAMETER;
  if (*count <= name.size()) return ERROR_MORE_DATA;
  std::memcpy(buffer, name.c_str(), (name.size() + 1) * sizeof(WCHAR));
  *count = static_cast<DWORD>(name.size());
  return ERROR_SUCCESS;
}

}  // namespace

LSTATUS RegOpenKeyExW(HKEY hKey, LPCWSTR lpSubKey, DWORD ulOptions, REGSAM samDesired,
                      PHKEY phkResult) {
  if (!phkResult) return ERROR_INVALID_PARAMETER;
  *phkResult = nullptr;
  // A subkey is relative to its parent: Windows refuses one that starts at a backslash
  // with ERROR_BAD_PATHNAME.
  if (lpSubKey && *lpSubKey == u'\\') return ERROR_BAD_PATHNAME;
  RegHive& hive = RegHive::Instance();
  auto lock = hive.Lock();
  RegHive::Open parent;
  LONG result = hive.Resolve(hKey, &parent);
  if (result != ERROR_SUCCESS) return result;
  std::shared_ptr<RegNode> node = parent.node;
  for (const WString& part : RegHive::SplitPath(lpSubKey)) {
    node = node->FindSubkey(part);
    if (!node) return ERROR_FILE_NOT_FOUND;
  }
  *phkResult = hive.AddHandle(node, samDesired);
  return ERROR_SUCCESS;
}

LSTATUS RegCreateKeyExW(HKEY hKey, LPCWSTR lpSubKey, DWORD Reserved, LPWSTR lpClass,
                        DWORD dwOptions, REGSAM samDesired,
                        const LPSECURITY_ATTRIBUTES lpSecurityAttributes, PHKEY phkResult,
                        LPDWORD lpdwDisposition) {
  if (!phkResult || !lpSubKey) return ERROR_INVALID_PARAMETER;
  *phkResult = nullptr;
  const bool isVolatile = (dwOptions & REG_OPTION_VOLATILE) != 0;
  RegHive& hive = RegHive::Instance();
  auto lock = hive.Lock();
  RegHive::Open parent;
  LONG result = hive.Resolve(hKey, &parent);
  if (result != ERROR_SUCCESS) return result;
  const std::vector<WString> parts = RegHive::SplitPath(lpSubKey);
  for (const WString& part : parts) {
    if (part.size() > kMaxKeyNameLength) return ERROR_INVALID_PARAMETER;
  }
  std::shared_ptr<RegNode> node = parent.node;
  bool created = false, savedPartCreated = false;
  for (const WString& part : parts) {
    std::shared_ptr<RegNode> child = node->FindSubkey(part);
    if (!child) {
      if (node->isVolatile && !isVolatile) return ERROR_CHILD_MUST_BE_VOLATILE;
      child = node->AddSubkey(part, isVolatile);
      created = true;
      savedPartCreated = savedPartCreated || !isVolatile;
    }
    node = child;
  }
  if (savedPartCreated) hive.Changed();
  if (lpdwDisposition) *lpdwDisposition = created ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
  *phkResult = hive.AddHandle(node, samDesired);
  return ERROR_SUCCESS;
}

LSTATUS RegCloseKey(HKEY hKey) {
  RegHive& hive = RegHive::Instance();
  auto lock = hive.Lock();
  if (hive.Root(hKey)) return ERROR_SUCCESS;
  return hive.CloseHandle(hKey) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

LSTATUS RegQueryValueExW(HKEY hKey, LPCWSTR lpValueName, LPDWORD lpReserved, LPDWORD lpType,
                         LPBYTE lpData, LPDWORD lpcbData) {
  if (lpData && !lpcbData) return ERROR_INVALID_PARAMETER;
  RegHive& hive = RegHive::Instance();
  auto lock = hive.Lock();
  RegHive::Open key;
  LONG result = ResolveFor(hive, hKey, KEY_QUERY_VALUE, &key);
  if (result != ERROR_SUCCESS) return result;
  const RegValue* value = key.node->FindValue(NameOf(lpValueName));
  if (!value) return ERROR_FILE_NOT_FOUND;
  if (lpType) *lpType = value->type;
  return CopyData(value->data, lpData, lpcbData);
}

LSTATUS RegSetValueExW(HKEY hKey, LPCWSTR lpValueName, DWORD Reserved, DWORD dwType,
                       const BYTE* lpData, DWORD cbData) {
  if (!lpData && cbData) return ERROR_NOACCESS;
  const WString name = NameOf(lpValueName);
  if (name.size() > kMaxValueNameLength) return ERROR_INVALID_PARAMETER;
  RegHive& hive = RegHive::Instance();
  auto lock = hive.Lock();
  RegHive::Open key;
  LONG result = ResolveFor(hive, hKey, KEY_SET_VALUE, &key);
  if (result != ERROR_SUCCESS) return result;
  key.node->SetValue(name, dwType, lpData, cbData);
  if (!key.node->isVolatile) hive.Changed();
  return ERROR_SUCCESS;
}

LSTATUS RegEnumValueW(HKEY hKey, DWORD dwIndex, LPWSTR lpValueName, LPDWORD lpcchValueName,
                      LPDWORD lpReserved, LPDWORD lpType, LPBYTE lpData, LPDWORD lpcbData) {
  if (!lpValueName || !lpcchValueName || (lpData && !lpcbData)) return ERROR_INVALID_PARAMETER;
  RegHive& hive = RegHive::Instance();
  auto lock = hive.Lock();
  RegHive::Open key;
  LONG result = ResolveFor(hive, hKey, KEY_QUERY_VALUE, &key);
  if (result != ERROR_SUCCESS) return result;
  if (dwIndex >= key.node->values.size()) return ERROR_NO_MORE_ITEMS;
  const RegValue& value = key.node->values[dwIndex];
  result = CopyName(value.name, lpValueName, lpcchValueName);
  if (result != ERROR_SUCCESS) return result;
  if (lpType) *lpType = value.type;
  return CopyData(value.data, lpData, lpcbData);
}

LSTATUS RegEnumKeyExW(HKEY hKey, DWORD dwIndex, LPWSTR lpName, LPDWORD lpcchName,
                      LPDWORD lpReserved, LPWSTR lpClass, LPDWORD lpcchClass,
                      PFILETIME lpftLastWriteTime) {
  RegHive& hive = RegHive::Instance();
  auto lock = hive.Lock();
  RegHive::Open key;
  LONG result = ResolveFor(hive, hKey, KEY_ENUMERATE_SUB_KEYS, &key);
  if (result != ERROR_SUCCESS) return result;
  if (dwIndex >= key.node->subkeys.size()) return ERROR_NO_MORE_ITEMS;
  result = CopyName(key.node->subkeys[dwIndex]->name, lpName, lpcchName);
  if (result != ERROR_SUCCESS) return result;
  if (lpClass && lpcchClass && *lpcchClass > 0) {
    lpClass[0] = 0;
    *lpcchClass = 0;
  }
  // Write times are not kept.
  if (lpftLastWriteTime) *lpftLastWriteTime = FILETIME{0, 0};
  return ERROR_SUCCESS;
}

LSTATUS RegDeleteValueW(HKEY hKey, LPCWSTR lpValueName) {
  RegHive& hive = RegHive::Instance();
  auto lock = hive.Lock();
  RegHive::Open key;
  LONG result = ResolveFor(hive, hKey, KEY_SET_VALUE, &key);
  if (result != ERROR_SUCCESS) return result;
  if (!key.node->DeleteValue(NameOf(lpValueName))) return ERROR_FILE_NOT_FOUND;
  if (!key.node->isVolatile) hive.Changed();
  return ERROR_SUCCESS;
}

LSTATUS RegDeleteKeyW(HKEY hKey, LPCWSTR lpSubKey) {
  if (!lpSubKey) return ERROR_INVALID_PARAMETER;
  RegHive& hive = RegHive::Instance();
  auto lock = hive.Lock();
  RegHive::Open key;
  LONG result = hive.Resolve(hKey, &key);
  if (result != ERROR_SUCCESS) return result;
  const std::vector<WString> parts = RegHive::SplitPath(lpSubKey);
  if (parts.empty()) return ERROR_ACCESS_DENIED;
  std::shared_ptr<RegNode> parent, node = key.node;
  for (const WString& part : parts) {
    parent = node;
    node = node->FindSubkey(part);
    if (!node) return ERROR_FILE_NOT_FOUND;
  }
  if (!node->subkeys.empty()) return ERROR_ACCESS_DENIED;
  parent->RemoveSubkey(node.get());
  if (!node->isVolatile) hive.Changed();
  return ERROR_SUCCESS;
}

namespace {

bool TypeAllowed(DWORD type, DWORD size, DWORD flags) {
  switch (type) {
    case REG_NONE: return flags & RRF_RT_REG_NONE;
    case REG_SZ: return flags & RRF_RT_REG_SZ;
    case REG_EXPAND_SZ:
      return flags & ((flags & RRF_NOEXPAND) ? RRF_RT_REG_EXPAND_SZ : RRF_RT_REG_SZ);
    case REG_MULTI_SZ: return flags & RRF_RT_REG_MULTI_SZ;
    case REG_DWORD: return flags & RRF_RT_REG_DWORD;
    case REG_QWORD: return flags & RRF_RT_REG_QWORD;
    case REG_BINARY:
      // RRF_RT_DWORD and RRF_RT_QWORD also take binary data of the matching size.
      return (flags & RRF_RT_REG_BINARY) && ((flags & RRF_RT_ANY) != RRF_RT_DWORD || size == 4) &&
             ((flags & RRF_RT_ANY) != RRF_RT_QWORD || size == 8);
    default: return (flags & RRF_RT_ANY) == RRF_RT_ANY;
  }
}

// %NAME% replaced by the environment's value; unknown names stay as they are.
WString ExpandEnvironment(const WString& text) {
  WString out;
  size_t k = 0;
  while (k < text.size()) {
    const size_t close = text[k] == u'%' ? text.find(u'%', k + 1) : WString::npos;
    if (close == WString::npos) {
      out.push_back(text[k++]);
      continue;
    }
    const std::string name = tarnix::WideToUtf8(text.substr(k + 1, close - k - 1));
    const char* value = name.empty() ? nullptr : std::getenv(name.c_str());
    out += value ? tarnix::Utf8ToWide(value) : text.substr(k, close - k + 1);
    k = close + 1;
  }
  return out;
}

}  // namespace

LSTATUS RegGetValueW(HKEY hkey, LPCWSTR lpSubKey, LPCWSTR lpValue, DWORD dwFlags, LPDWORD pdwType,
                     PVOID pvData, LPDWORD pcbData) {
  if ((pvData && !pcbData) || ((dwFlags & RRF_RT_REG_EXPAND_SZ) && !(dwFlags & RRF_NOEXPAND) &&
                               (dwFlags & RRF_RT_ANY) != RRF_RT_ANY))
    return ERROR_INVALID_PARAMETER;
  const DWORD capacity = pcbData ? *pcbData : 0;
  HKEY key = hkey;
  if (lpSubKey && *lpSubKey) {
    LONG opened = RegOpenKeyExW(hkey, lpSubKey, 0, KEY_QUERY_VALUE, &key);
    if (opened != ERROR_SUCCESS) return opened;
  }
  DWORD type = REG_NONE, size = 0;
  std::vector<BYTE> data;
  LONG result = RegQueryValueExW(key, lpValue, nullptr, &type, nullptr, &size);
  if (result == ERROR_SUCCESS) {
    data.resize(size);
    result = RegQueryValueExW(key, lpValue, nullptr, &type, data.data(), &size);
    data.resize(size);
  }
  if (key != hkey) RegCloseKey(key);
  if (result == ERROR_SUCCESS && !TypeAllowed(type, size, dwFlags)) result = ERROR_UNSUPPORTED_TYPE;
  if (result == ERROR_SUCCESS &&
      (type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ)) {
    WString text(data.size() / sizeof(WCHAR), WCHAR());
    if (!text.empty()) std::memcpy(&text[0], data.data(), text.size() * sizeof(WCHAR));
    if (type == REG_EXPAND_SZ && !(dwFlags & RRF_NOEXPAND)) {
      text = ExpandEnvironment(text.substr(0, text.find(WCHAR())));
      type = REG_SZ;
    }
    // Strings always come back terminated (a multi-string twice).
    if (text.empty() || text.back() != 0) text.push_back(0);
    if (type == REG_MULTI_SZ && (text.size() < 2 || text[text.size() - 2] != 0)) text.push_back(0);
    const BYTE* bytes = reinterpret_cast<const BYTE*>(text.data());
    data.assign(bytes, bytes + text.size() * sizeof(WCHAR));
  }
  if (pdwType) *pdwType = result == ERROR_SUCCESS ? type : REG_NONE;
  if (result == ERROR_SUCCESS) result = CopyData(data, static_cast<LPBYTE>(pvData), pcbData);
  if (result != ERROR_SUCCESS && result != ERROR_MORE_DATA && pcbData && !pvData) *pcbData = 0;
  if (result != ERROR_SUCCESS && (dwFlags & RRF_ZEROONFAILURE) && pvData && pcbData)
    std::memset(pvData, 0, capacity);
  return result;
}
