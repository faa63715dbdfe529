#include "config/RegistryRead.h"

#include "common/Bstr.h"
#include "common/HResultError.h"
#include "platform/RegKey.h"
#include "platform/ScopedSafeArray.h"

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

// The data as UTF-16 with one zero character more than it holds, so that data stored
// without a terminator (or with an odd last byte) still ends in one.
WString PaddedText(const std::vector<BYTE>& data) {
  WString text(data.size() / sizeof(WCHAR) + 1, WCHAR());
  if (!data.empty()) std::memcpy(&text[0], data.data(), data.size() - data.size() % sizeof(WCHAR));
  return text;
}

bool EndsInZero(const std::vector<BYTE>& data) {
  return data.size() >= sizeof(WCHAR) && data[data.size() - 1] == 0 && data[data.size() - 2] == 0;
}

WString FirstString(const std::vector<BYTE>& data) {
  WString text = PaddedText(data);
  text.resize(text.find(WCHAR()));
  return text;
}

// The strings of a REG_MULTI_SZ, up to the first empty one or the end of the data.
std::vector<WString> MultiStrings(const std::vector<BYTE>& data) {
  const WString all = PaddedText(data);
  std::vector<WString> strings;
  size_t start = 0;
  while (start < all.size() && all[start] != WCHAR()) {
    const size_t end = all.find(WCHAR(), start);
    strings.push_back(all.substr(start, end - start));
    start = end + 1;
  }
  return strings;
}

VARIANT BstrVariant(const WString& text) {
  VARIANT value;
  VariantInit(&value);
  value.vt = VT_BSTR;
  value.bstrVal = NewBstr(text).Release();
  return value;
}

VARIANT BstrArrayVariant(const std::vector<WString>& strings) {
  ScopedSafeArray array(SafeArrayCreateVector(VT_BSTR, 0, static_cast<ULONG>(strings.size())));
  if (!array) throw HResultError(E_OUTOFMEMORY);
  if (!strings.empty()) {
    ScopedSafeArrayAccess<BSTR> elements(array.Get());
    ThrowIfFailed(elements.result());
    for (size_t i = 0; i < strings.size(); ++i) elements[i] = NewBstr(strings[i]).Release();
  }
  VARIANT value;
  VariantInit(&value);
  value.vt = VT_ARRAY | VT_BSTR;
  value.parray = array.Release();
  return value;
}

// The value as the map keeps it; false for a type the map leaves out.
bool ToVariant(DWORD type, const std::vector<BYTE>& data, ScopedVariant* value) {
  switch (type) {
    case REG_SZ:
    case REG_EXPAND_SZ: value->Reset(BstrVariant(FirstString(data))); return true;
    case REG_DWORD: {
      if (data.size() != sizeof(DWORD)) return false;
      VARIANT number;
      VariantInit(&number);
      number.vt = VT_UI4;
      std::memcpy(&number.ulVal, data.data(), sizeof(DWORD));
      value->Reset(number);
      return true;
    }
    case REG_MULTI_SZ: value->Reset(BstrArrayVariant(MultiStrings(data))); return true;
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
  *text = FirstString(data);
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
