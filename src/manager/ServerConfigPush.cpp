// Keeping the Java client pointed at the message server the host's calls name.
#include "manager/CommManagerImpl.h"

#include "convert/ClassTable.h"
#include "jni/JavaObject.h"
#include "jni/JavaString.h"
#include "jni/JavaVM.h"
#include "jni/LocalFrame.h"
#include "manager/AgentRegistry.h"
#include "manager/JavaStartup.h"
#include "manager/ManagerMessages.h"
#include "manager/ResultCodes.h"

#include <algorithm>

using Client = tarnix::methods::DesktopMessageClient;

using tarnix::CallbackKey;

namespace {

// ASCII letters only, as the C runtime folds case outside any locale: a URL's host name
// is the part that may differ in case, and it is ASCII.
WCHAR FoldCase(WCHAR c) { return c >= 'A' && c <= 'Z' ? static_cast<WCHAR>(c - 'A' + 'a') : c; }

bool EqualsIgnoringCase(const WString& a, const WString& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](WCHAR x, WCHAR y) { return FoldCase(x) == FoldCase(y); });
}

}  // namespace

LONG CRMICommManagerImpl::SetCurrentServerConfig(const WCHAR* serverUrl, const WCHAR* secondValue,
                                                 const WCHAR* certificate) {
  const HRESULT started = EnsureStarted();
  if (FAILED(started)) return started;
  if (IsCurrentConfig(serverUrl, secondValue, certificate)) return S_FALSE;
  const HRESULT hr = PushServerConfig(CallbackKey::From(serverUrl, secondValue, certificate));
  if (FAILED(hr)) return hr;
  // Remembered only once everything went through, so a failed push is tried again.
  std::lock_guard<std::recursive_mutex> lock(lock_);
  currentConfig_ = CallbackKey::From(serverUrl, secondValue, certificate);
  return S_OK;
}

bool CRMICommManagerImpl::IsCurrentConfig(const WCHAR* serverUrl, const WCHAR* secondValue,
                                          const WCHAR* certificate) {
  std::lock_guard<std::recursive_mutex> lock(lock_);
  return EqualsIgnoringCase(CallbackKey::CopyOrEmpty(serverUrl), currentConfig_.serverUrl) &&
         CallbackKey::CopyOrEmpty(secondValue) == currentConfig_.secondValue &&
         CallbackKey::CopyOrEmpty(certificate) == currentConfig_.certificate;
}

HRESULT CRMICommManagerImpl::PushServerConfig(const CallbackKey& config) {
  const std::shared_ptr<CJavaVM> machine = GetJavaVM();
  const std::shared_ptr<CJavaObject> client = GetMessageClient();
  if (!machine || !client) return tarnix::kJavaNotRunning;
  WString configDirectory;
  const HRESULT read = tarnix::ReadAgentValue(WSTR("ConfigDirectory"), &configDirectory);
  if (FAILED(read)) return read;

  const CJavaVM::ThreadDetachGuard detach = machine->AttachForScope();
  const tarnix::LocalFrame frame(machine->GetEnv());
  const auto url = machine->NewString(config.serverUrl);
  if (!url) {
    log_.Error(tarnix::messages::kJavaStringFailed, config.serverUrl,
               machine->TakeException().value_or(WString()));
    return E_FAIL;
  }
  client->CallVoidMethod(Client::setProviderUrl, url);
  if (const std::optional<WString> failure = machine->TakeException()) {
    log_.Error(WSTR("Failed to set the message server URL in the Java client.  %s"), *failure);
    return E_FAIL;
  }
  log_.Info(WSTR("Updated the message server URL in the Java client to %s."), config.serverUrl);

  const auto directory = machine->NewString(configDirectory);
  if (!directory) {
    log_.Error(tarnix::messages::kJavaStringFailed, configDirectory,
               machine->TakeException().value_or(WString()));
    return E_FAIL;
  }
  // The certificate's own text stays out of this line.
  const auto certificate = machine->NewString(config.certificate);
  if (!certificate) {
    log_.Error(WSTR("Failed to create a new Java string for the certificate.  %s"),
               machine->TakeException().value_or(WString()));
    return E_FAIL;
  }
  client->CallVoidMethod(Client::initialize, directory, certificate);
  if (const std::optional<WString> failure = machine->TakeException()) {
    log_.Error(WSTR("Failed to initialize RMI in the Java client.  %s"), *failure);
    return E_FAIL;
  }
  return S_OK;
}
