// The registry reads behind the server configuration: a path split into its root and
// subkey, one string value of HKEY_LOCAL_MACHINE, and every value of a key at once.
#pragma once

#include "platform/ScopedVariant.h"
#include "platform/Win32.h"

#include <map>

namespace tarnix {

// Read access as the configuration reads every key: KEY_READ.
inline constexpr REGSAM kConfigKeyAccess = 0x20019;

struct RegistryPath {
  HKEY root;
  // The rest of the path after the root name, as it stands (a leading backslash stays).
  WString subkey;
};

// A path that starts with one of the predefined root names is opened under that root;
// any other path, null included, is a subkey of HKEY_LOCAL_MACHINE as a whole.
RegistryPath ParseRegistryPath(const WCHAR* path);

// A REG_SZ or REG_EXPAND_SZ value of HKEY_LOCAL_MACHINE\subkey, up to its first zero and
// not expanded. Any other type, an odd byte count and data that does not end in a zero
// give 0x8007000D; registry errors come back as result codes.
[[nodiscard]] HRESULT ReadMachineString(const WCHAR* subkey, const WCHAR* valueName, WString* text);

// Names compared exactly, character by character.
using RegistryValues = std::map<WString, ScopedVariant>;

// Every value of root\subkey with a name of up to 260 characters, in the order the
// registry gives them: strings as VT_BSTR, four-byte REG_DWORD as VT_UI4, REG_MULTI_SZ as
// an array of VT_BSTR. Values of any other type are left out. Only the open can fail: a
// key whose enumeration fails at once reads as a key without values.
[[nodiscard]] HRESULT ReadKeyValues(HKEY root, const WCHAR* subkey, RegistryValues* values);

}  // namespace tarnix
