#include "config/RegistryRead.h"

#include "common/Bstr.h"
#include "platform/RegKey.h"

#include <cstring>
#include <vector>

namespace tarnix {
namespace {

struct RootName {
  const WCHAR* name;
  HKEY root;
};

// Tried in this order; the first whose name begins the path wins.
const RootName kRootNames[] = {
    {WSTR("HKEY_CLASSES_ROOT"), HKEY_CLASSES_ROOT},
    {WSTR("HKEY_CURRENT_USER"), HKEY_CURRENT_USER},
    {WSTR("HKEY_LOCAL_MACHINE"), HKEY_LOCAL_MACHINE},
    {WSTR("HKEY_USERS"), HKEY_USERS},
    {WSTR("HKEY_PERFORMANCE_DATA"), HKEY_PERFORMANCE_DATA},
    {WSTR("HKEY_PERFORMANCE_TEXT"), HKEY_PERFORMANCE_TEXT},
    {WSTR("HKEY_PERFORMANCE_NLSTEXT"), HKEY_PERFORMANCE_NLSTEXT},
};

// Names of up to 260 characters and their terminating zero.
constexpr DWORD kValueNameBuffer = 261;

const HRESULT kInvalidData = HRESULT_FROM_WIN32(ERROR_INVALID_DATA);

HRESULT FromRegistry(LONG status) { return HRESULT_FROM_WIN32(static_cast<uint32_t>(status)); }

bool EndsInZero(const std::vector<BYTE>& data) {
  return data.size() >= sizeof(WCHAR) && data[data.size() - 1] == 0 && data[data.size() - 2] == 0;
}

// The value as the map keeps it; false for a type the map leaves out.
[[nodiscard]] bool ToVariant(DWORD type, const std::vector<BYTE>& data, ScopedVariant* value) {
  switch (type) {
    case REG_SZ:
    case REG_EXPAND_SZ: *value = TextVariant(RegKey::FirstString(data)); return true;
    case REG_DWORD: {
      if (data.size() != sizeof(DWORD)) return false;
      VARIANT number;
      VariantInit(&number);
      number.vt = VT_UI4;
      std::memcpy(&number.ulVal, data.data(), sizeof(DWORD));
      value->Reset(number);
      return true;
    }
    case REG_MULTI_SZ: *value = TextArrayVariant(RegKey::MultiStrings(data)); return true;
    default: return false;
  }
}

}  // namespace

RegistryPath ParseRegistryPath(const WCHAR* path) {
  const WString text = path ? path : WSTR("");
  for (const RootName& candidate : kRootNames) {
    const WString name = candidate.name;
    if (text.compare(0, name.size(), name) == 0) return {candidate.root, text.substr(name.size())};
  }
  return {HKEY_LOCAL_MACHINE, text};
}

HRESULT ReadMachineString(const WCHAR* subkey, const WCHAR* valueName, WString* text) {
  RegKey key;
  LONG status = key.Open(HKEY_LOCAL_MACHINE, subkey, kConfigKeyAccess);
  if (status != ERROR_SUCCESS) return FromRegistry(status);
  std::vector<BYTE> data;
  DWORD type = REG_NONE;
  status = key.ReadRaw(valueName, &data, &type);
  if (status != ERROR_SUCCESS) return FromRegistry(status);
  if (type != REG_SZ && type != REG_EXPAND_SZ) return kInvalidData;
  if (data.size() % sizeof(WCHAR) != 0 || !EndsInZero(data)) return kInvalidData;
  *text = RegKey::FirstString(data);
  return S_OK;
}

HRESULT ReadKeyValues(HKEY root, const WCHAR* subkey, RegistryValues* values) {
  RegKey key;
  const LONG status = key.Open(root, subkey, kConfigKeyAccess);
  if (status != ERROR_SUCCESS) return FromRegistry(status);
  for (DWORD index = 0;; ++index) {
    WCHAR name[kValueNameBuffer];
    DWORD nameLength = kValueNameBuffer;
    DWORD type = REG_NONE;
    const LONG found =
        RegEnumValueW(key.Handle(), index, name, &nameLength, nullptr, &type, nullptr, nullptr);
    // A longer name cannot be one the configuration looks for; the rest still counts.
    if (found == ERROR_MORE_DATA) continue;
    if (found != ERROR_SUCCESS) break;
    std::vector<BYTE> data;
    // A value removed or retyped since it was listed is passed over.
    if (key.ReadRaw(name, &data, &type) != ERROR_SUCCESS) continue;
    ScopedVariant value;
    if (ToVariant(type, data, &value)) (*values)[WString(name, nameLength)] = std::move(value);
  }
  return S_OK;
}

}  // namespace tarnix
