// The .reg hive file: any bytes load without harm, what the registry then holds saves as
// text that loads back to the very same registry, and every key reads through the
// configuration's registry reads.
#include "FuzzSupport.h"

#include "config/RegistryRead.h"
#include "platform/RegKey.h"

namespace {

// Enough to reach what small inputs can build, without letting one input walk for long.
constexpr int kMaxDepth = 8;
constexpr int kMaxKeys = 256;

void ReadEveryValue(HKEY root, const WString& path) {
  tarnix::RegistryValues values;
  FUZZ_CHECK(SUCCEEDED(tarnix::ReadKeyValues(root, path.c_str(), &values)));
  for (const auto& [name, value] : values) {
    const VARTYPE vt = value.type();
    FUZZ_CHECK(vt == VT_BSTR || vt == VT_UI4 || vt == (VT_ARRAY | VT_BSTR));
    if (root == HKEY_LOCAL_MACHINE) {
      WString text;
      const HRESULT hr = tarnix::ReadMachineString(path.c_str(), name.c_str(), &text);
      FUZZ_CHECK(SUCCEEDED(hr) || hr == HRESULT_FROM_WIN32(ERROR_INVALID_DATA) ||
                 hr == HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    }
  }
}

void Walk(HKEY root, const WString& path, int depth, int* budget) {
  if (depth > kMaxDepth || --*budget < 0) return;
  ReadEveryValue(root, path);
  tarnix::RegKey key;
  if (key.Open(root, path.c_str(), KEY_READ) != ERROR_SUCCESS) return;
  for (DWORD index = 0;; ++index) {
    WCHAR name[256];
    DWORD length = 256;
    const LONG found =
        RegEnumKeyExW(key.Handle(), index, name, &length, nullptr, nullptr, nullptr, nullptr);
    if (found == ERROR_MORE_DATA) continue;
    if (found != ERROR_SUCCESS) break;
    Walk(root, path.empty() ? WString(name, length) : path + WSTR("\\") + WString(name, length),
         depth + 1, budget);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tarnix::fuzz::LoadHive(std::string(reinterpret_cast<const char*>(data), size));
  const std::string saved = tarnix::posix::RegistryText();
  FUZZ_CHECK(tarnix::fuzz::LoadHive(saved) == 0);
  FUZZ_CHECK(tarnix::posix::RegistryText() == saved);

  int budget = kMaxKeys;
  for (HKEY root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER, HKEY_USERS})
    Walk(root, WString(), 0, &budget);
  return 0;
}
