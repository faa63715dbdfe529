// The legacy server value "url|serviceValue|...|certificate": split into its pieces, and
// read by the legacy loader from the registry. No host runs here, so a value of fewer than
// three pieces, which needs the host's unique id, fails after url and certificate are set.
#include "FuzzSupport.h"

#include "config/ServerConfig.h"
#include "platform/RegKey.h"
#include "platform/ScopedBstr.h"

#include <algorithm>

namespace {

constexpr const WCHAR* kLegacyKey = WSTR("Software\\Corvane, Inc.\\Corvane Palisade\\Node Manager");
constexpr const WCHAR* kLegacyValue = WSTR("Zelmar Server URL");

// One piece more than there are bars, none holding a bar, and joined they give the value
// back.
void CheckSplit(const WString& value, const std::vector<WString>& pieces) {
  FUZZ_CHECK(pieces.size() ==
             static_cast<size_t>(std::count(value.begin(), value.end(), WCHAR('|'))) + 1);
  WString joined;
  for (size_t k = 0; k < pieces.size(); ++k) {
    FUZZ_CHECK(pieces[k].find(WCHAR('|')) == WString::npos);
    if (k) joined.push_back('|');
    joined += pieces[k];
  }
  FUZZ_CHECK(joined == value);
}

void StoreLegacyValue(const WString& value) {
  tarnix::RegKey key;
  FUZZ_CHECK(key.Create(HKEY_LOCAL_MACHINE, kLegacyKey, KEY_ALL_ACCESS) == ERROR_SUCCESS);
  FUZZ_CHECK(RegSetValueExW(key.Handle(), kLegacyValue, 0, REG_SZ,
                            reinterpret_cast<const BYTE*>(value.c_str()),
                            static_cast<DWORD>((value.size() + 1) * sizeof(WCHAR))) ==
             ERROR_SUCCESS);
}

bool Holds(const tarnix::ScopedBstr& bstr, const WString& text) {
  return bstr.Get() && WString(bstr.Get(), SysStringLen(bstr.Get())) == text;
}

void CheckLoaded(const WString& value) {
  tarnix::ScopedBstr url, serviceValue, certificate;
  const LONG hr =
      tarnix::LoadLegacyServerInfo(url.Receive(), serviceValue.Receive(), certificate.Receive());
  // The value as the registry gives it back: up to its first zero.
  const WString stored(value.c_str());
  if (stored.empty()) {
    FUZZ_CHECK(FAILED(hr));
    FUZZ_CHECK(!url.Get() && !serviceValue.Get() && !certificate.Get());
    return;
  }
  const std::vector<WString> pieces = tarnix::SplitLegacyValue(stored);
  FUZZ_CHECK(Holds(url, pieces.front()));
  FUZZ_CHECK(pieces.size() < 2 ? !certificate.Get() : Holds(certificate, pieces.back()));
  if (pieces.size() >= 3) {
    FUZZ_CHECK(hr == S_OK);
    FUZZ_CHECK(Holds(serviceValue, pieces[1]));
  } else {
    FUZZ_CHECK(FAILED(hr));
    FUZZ_CHECK(!serviceValue.Get());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const WString value = tarnix::fuzz::WideFromBytes(data, size);
  CheckSplit(value, tarnix::SplitLegacyValue(value));
  StoreLegacyValue(value);
  CheckLoaded(value);
  return 0;
}
