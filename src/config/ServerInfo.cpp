// Where the message server is: the legacy registry value, the key named by the XML
// configuration, or the policy key of the product, tried in that order.
#include "common/Bstr.h"
#include "common/HResultError.h"
#include "common/HostLog.h"
#include "common/ProductName.h"
#include "common/SystemService.h"
#include "config/RegistryRead.h"
#include "config/ServerConfig.h"
#include "platform/ScopedBstr.h"
#include "platform/ScopedSafeArray.h"

#include <optional>
#include <tuple>

namespace tarnix {
namespace {

constexpr const WCHAR* kLegacyKey = WSTR("Software\\Corvane, Inc.\\Corvane Palisade\\Node Manager");
constexpr const WCHAR* kLegacyValue = WSTR("Zelmar Server URL");
constexpr const WCHAR* kUrlValue = WSTR("MessageServerURL");
constexpr const WCHAR* kCertificateValue = WSTR("AdapterCertificate");

constexpr const WCHAR* kLoadServerConfigFailed = WSTR(
    "Failed to load server config in function long __cdecl CRMIConfigLoader::GetServerInfo"
    "(struct tagVARIANT,wchar_t **,wchar_t **,wchar_t **)");
constexpr const WCHAR* kLoadPolicyConfigFailed = WSTR(
    "Failed to load legancy server config in function long __cdecl "
    "CRMIConfigLoader::GetServerInfo(struct tagVARIANT,wchar_t **,wchar_t **,wchar_t **)");
constexpr const WCHAR* kLegacyValueFailed = WSTR(
    "Failed to get the message server configuration in function long __cdecl "
    "CRMIConfigLoader::loadLegancyServerInfo(wchar_t **,wchar_t **,wchar_t **)");
constexpr const WCHAR* kLegacySystemServiceFailed = WSTR(
    "Failed to get system service in function long __cdecl "
    "CRMIConfigLoader::loadLegancyServerInfo(wchar_t **,wchar_t **,wchar_t **)");
constexpr const WCHAR* kUsingServer = WSTR("Using message server '%s'.");
constexpr const WCHAR* kReadKeyFailed = WSTR(
    "Failed to read Policy key's attributes in function long __cdecl "
    "CRMIConfigLoader::loadCommonServerInfo(wchar_t *,wchar_t **,wchar_t **,wchar_t **)");
constexpr const WCHAR* kUrlMissing = WSTR(
    "Failed to read Adapter URL in function long __cdecl "
    "CRMIConfigLoader::loadCommonServerInfo(wchar_t *,wchar_t **,wchar_t **,wchar_t **)");
constexpr const WCHAR* kCertificateMissing = WSTR(
    "Failed to read Adapter Certificate in function long __cdecl "
    "CRMIConfigLoader::loadCommonServerInfo(wchar_t *,wchar_t **,wchar_t **,wchar_t **)");
constexpr const WCHAR* kCommonSystemServiceFailed = WSTR(
    "Failed to get system service in function long __cdecl "
    "CRMIConfigLoader::loadCommonServerInfo(wchar_t *,wchar_t **,wchar_t **,wchar_t **)");

// An empty value names no server: it counts as a value that is not there.
const HRESULT kEmptyValue = HRESULT_FROM_WIN32(ERROR_INVALID_DATA);

[[nodiscard]] HRESULT ReadServerString(const WCHAR* subkey, const WCHAR* name, WString* value) {
  const HRESULT hr = ReadMachineString(subkey, name, value);
  return SUCCEEDED(hr) && value->empty() ? kEmptyValue : hr;
}

[[nodiscard]] HRESULT GetUniqueId(ISystemInfo* info, WCHAR** serviceValue) {
  return serviceValue ? info->get_uniqueId(serviceValue) : S_OK;
}

[[nodiscard]] HRESULT ObtainSystemInfo(ComPtr<ISystemInfo>* info) {
  const HRESULT hr = GetSystemInfo(info);
  return SUCCEEDED(hr) && !*info ? E_NOINTERFACE : hr;
}

// A value of the key as text: strings as they are, a multi-string joined with nothing
// between its strings, a number in decimal.
[[nodiscard]] std::optional<WString> ValueText(const RegistryValues& values, const WCHAR* name) {
  const auto found = values.find(name);
  if (found == values.end()) return std::nullopt;
  const VARIANT& value = found->second.Get();
  if (value.vt == (VT_ARRAY | VT_BSTR)) {
    ScopedSafeArrayAccess<BSTR> strings(value.parray);
    if (!strings.Valid()) return std::nullopt;
    WString text;
    for (BSTR piece : strings) text += BstrText(piece);
    return text;
  }
  ScopedVariant converted;
  if (FAILED(VariantChangeType(converted.Receive(), found->second.AsInput(), 0, VT_BSTR))) {
    return std::nullopt;
  }
  return BstrText(converted.Get().bstrVal);
}

// The caller's three outputs during GetServerInfo. Each source writes into slots of its
// own; what a later source writes replaces, and frees, what an earlier one left, and the
// caller receives the last values when the lookup ends.
class ServerInfoOutputs {
 public:
  ServerInfoOutputs(WCHAR** url, WCHAR** serviceValue, WCHAR** certificate)
      : targets_{url, serviceValue, certificate} {}
  ServerInfoOutputs(const ServerInfoOutputs&) = delete;
  ServerInfoOutputs& operator=(const ServerInfoOutputs&) = delete;
  ~ServerInfoOutputs() {
    for (int i = 0; i < 3; ++i) {
      if (targets_[i] && kept_[i].Get()) *targets_[i] = kept_[i].Release();
    }
  }

  template <class Source>
  [[nodiscard]] LONG Run(Source source) {
    BSTR slots[3] = {nullptr, nullptr, nullptr};
    struct Collect {
      ServerInfoOutputs* outputs;
      BSTR* slots;
      ~Collect() {
        for (int i = 0; i < 3; ++i) {
          if (slots[i]) outputs->kept_[i].Reset(slots[i]);
        }
      }
    } collect{this, slots};
    return source(Slot(0, slots), Slot(1, slots), Slot(2, slots));
  }

 private:
  WCHAR** Slot(int i, BSTR* slots) const { return targets_[i] ? &slots[i] : nullptr; }

  WCHAR** const targets_[3];
  ScopedBstr kept_[3];
};

// The legacy value, or failing that the policy key's URL read the same way; `source`
// (when given) tells which.
[[nodiscard]] HRESULT ReadLegacyValue(WString* value, ServerInfoSource* source) {
  HRESULT hr = ReadServerString(kLegacyKey, kLegacyValue, value);
  if (source) *source = ServerInfoSource::LegacyValue;
  if (SUCCEEDED(hr)) return hr;
  if (source) *source = ServerInfoSource::PolicyUrlAsLegacyValue;
  return ReadServerString(PolicyKeyPath().c_str(), kUrlValue, value);
}

}  // namespace

std::vector<WString> SplitLegacyValue(const WString& value) {
  std::vector<WString> pieces;
  size_t start = 0;
  for (;;) {
    const size_t bar = value.find(WCHAR('|'), start);
    pieces.push_back(value.substr(start, bar == WString::npos ? WString::npos : bar - start));
    if (bar == WString::npos) return pieces;
    start = bar + 1;
  }
}

WString PolicyKeyPath() {
  return WSTR("Software\\Policies\\Corvane, Inc.\\") + GetProductName() + WSTR("\\Desktop Agent");
}

LONG LoadLegacyServerInfo(WCHAR** url, WCHAR** serviceValue, WCHAR** certificate) {
  const HostLog log = HostLog::AcquiredOnFirstUse();
  WString value;
  HRESULT hr = ReadLegacyValue(&value, nullptr);
  if (FAILED(hr)) {
    log.ErrorWithCode(kLegacyValueFailed, hr);
    return hr;
  }

  const std::vector<WString> pieces = SplitLegacyValue(value);
  if (url) *url = NewBstr(pieces.front()).Release();
  if (pieces.size() >= 2 && certificate) *certificate = NewBstr(pieces.back()).Release();
  if (serviceValue) {
    if (pieces.size() >= 3) {
      *serviceValue = NewBstr(pieces[1]).Release();
    } else {
      ComPtr<ISystemInfo> info;
      hr = ObtainSystemInfo(&info);
      if (FAILED(hr)) {
        log.ErrorWithCode(kLegacySystemServiceFailed, hr);
        return hr;
      }
      hr = info->get_uniqueId(serviceValue);
      if (FAILED(hr)) return hr;
    }
  }
  // The host has always been told success when there was no log to write this line to.
  if (!log.Info(kUsingServer, pieces.front())) return S_OK;
  return hr;
}

LONG LoadKeyServerInfo(WCHAR* keyPath, WCHAR** url, WCHAR** serviceValue, WCHAR** certificate) {
  const HostLog log = HostLog::AcquiredOnFirstUse();
  const RegistryPath path = ParseRegistryPath(keyPath);
  RegistryValues values;
  HRESULT hr = keyPath ? ReadKeyValues(path.root, path.subkey.c_str(), &values) : E_INVALIDARG;
  if (FAILED(hr)) {
    log.ErrorWithCode(kReadKeyFailed, hr);
    return hr;
  }
  const std::optional<WString> urlText = ValueText(values, kUrlValue);
  if (!urlText) {
    log.Error(kUrlMissing);
    return E_FAIL;
  }
  const std::optional<WString> certificateText = ValueText(values, kCertificateValue);
  if (!certificateText) {
    log.Error(kCertificateMissing);
    return E_FAIL;
  }
  if (url) *url = NewBstr(*urlText).Release();
  if (certificate) *certificate = NewBstr(*certificateText).Release();

  ComPtr<ISystemInfo> info;
  hr = ObtainSystemInfo(&info);
  if (FAILED(hr)) {
    log.ErrorWithCode(kCommonSystemServiceFailed, hr);
    return hr;
  }
  return GetUniqueId(info.Get(), serviceValue);
}

namespace {

// The sources after the legacy value, in their order.
[[nodiscard]] LONG LookUpConfiguredKeys(VARIANT config, ServerInfoOutputs& outputs,
                                        ServerInfoSource* source) {
  const HostLog log = HostLog::AcquiredOnFirstUse();
  ScopedBstr path;
  if (SUCCEEDED(FindServerConfigRegistry(config, path.Receive()))) {
    const LONG named = outputs.Run(
        [&](WCHAR** u, WCHAR** s, WCHAR** c) { return LoadKeyServerInfo(path.Get(), u, s, c); });
    *source = ServerInfoSource::XmlNamedKey;
    if (SUCCEEDED(named)) return named;
    log.ErrorWithCode(kLoadServerConfigFailed, named);
  }
  WString policyKey = PolicyKeyPath();
  const LONG hr = outputs.Run(
      [&](WCHAR** u, WCHAR** s, WCHAR** c) { return LoadKeyServerInfo(&policyKey[0], u, s, c); });
  *source = ServerInfoSource::PolicyKey;
  if (FAILED(hr)) log.ErrorWithCode(kLoadPolicyConfigFailed, hr);
  return hr;
}

}  // namespace

LONG LookUpServerInfo(VARIANT config, WCHAR** url, WCHAR** serviceValue, WCHAR** certificate,
                      ServerInfoSource* source) {
  ServerInfoSource answered = ServerInfoSource::LegacyValue;
  ServerInfoOutputs outputs(url, serviceValue, certificate);
  LONG hr = outputs.Run(LoadLegacyServerInfo);
  if (FAILED(hr)) {
    hr = LookUpConfiguredKeys(config, outputs, &answered);
  } else if (source) {
    WString value;
    std::ignore = ReadLegacyValue(&value, &answered);
  }
  if (source) *source = SUCCEEDED(hr) ? answered : ServerInfoSource::None;
  return hr;
}

}  // namespace tarnix
