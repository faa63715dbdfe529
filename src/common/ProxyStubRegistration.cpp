#include "common/SystemService.h"

#include "platform/RegKey.h"

#include <memory>

namespace tarnix {
namespace {

// Read and write access: the value is looked at and, when missing, written.
constexpr REGSAM kKeyAccess = 0x2001F;

struct CoTaskMemDeleter {
  void operator()(void* memory) const { CoTaskMemFree(memory); }
};

// The braced text of a GUID; empty when it cannot be made.
WString GuidText(REFIID iid) {
  LPOLESTR raw = nullptr;
  if (FAILED(StringFromCLSID(iid, &raw))) return WString();
  std::unique_ptr<OLECHAR, CoTaskMemDeleter> text(raw);
  return WString(text.get());
}

// Writes the automation marshaller as the default value of `key` when the key has no
// default value; an existing value is left alone, whatever it names.
[[nodiscard]] HRESULT RegisterMarshallerIfMissing(RegKey& key) {
  DWORD size = 0;
  const LONG query = RegQueryValueExW(key.Handle(), nullptr, nullptr, nullptr, nullptr, &size);
  if (query != ERROR_FILE_NOT_FOUND && query != ERROR_NOT_FOUND) return S_OK;
  const WString marshaller(kAutomationMarshallerClassText);
  const DWORD bytes = static_cast<DWORD>(marshaller.size() * sizeof(WCHAR) + sizeof(WCHAR));
  const LONG written = key.WriteValue(nullptr, marshaller.c_str(), bytes, REG_SZ);
  return HRESULT_FROM_WIN32(static_cast<DWORD>(written));  // S_OK for ERROR_SUCCESS
}

}  // namespace

HRESULT EnsureProxyStubRegistration(REFIID iid) {
  const WString iidText = GuidText(iid);
  // Without the text there is nothing to repair; the caller's retry decides.
  if (iidText.empty()) return S_OK;
  for (const WCHAR* name : {WSTR("ProxyStubClsid"), WSTR("ProxyStubClsid32")}) {
    const WString path = WString(WSTR("Interface\\")) + iidText + WSTR("\\") + name;
    RegKey key;
    if (key.Open(HKEY_CLASSES_ROOT, path.c_str(), kKeyAccess) != ERROR_SUCCESS &&
        key.Create(HKEY_CLASSES_ROOT, path.c_str(), kKeyAccess) != ERROR_SUCCESS) {
      // The registry answers with its own code and may leave no last error; a zero last
      // error then counts as success, and the caller's retry decides.
      return HRESULT_FROM_WIN32(GetLastError());
    }
    const HRESULT hr = RegisterMarshallerIfMissing(key);
    if (FAILED(hr)) return hr;
  }
  return S_OK;
}

}  // namespace tarnix
