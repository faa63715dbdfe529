// The Java start-up: the host's logger and system information, the machine, the Java
// logger, the class table and the one message client every later call goes through.
#include "manager/CommManagerImpl.h"

#include "common/SystemService.h"
#include "convert/ClassTable.h"
#include "jni/JavaObject.h"
#include "jni/JavaVM.h"
#include "jni/LocalFrame.h"
#include "manager/AgentRegistry.h"
#include "manager/JavaStartup.h"
#include "manager/ManagerMessages.h"

#include <cstring>
#include <iterator>
#include <tuple>

using Client = tarnix::methods::DesktopMessageClient;

using tarnix::classes::kClassTable;

namespace {

// Marks the start-up as running for as long as it runs, also when it ends by an exception.
class StartUpMark {
 public:
  explicit StartUpMark(bool* running) : running_(running) { *running_ = true; }
  ~StartUpMark() { *running_ = false; }
  StartUpMark(const StartUpMark&) = delete;
  StartUpMark& operator=(const StartUpMark&) = delete;

 private:
  bool* running_;
};

}  // namespace

HRESULT CRMICommManagerImpl::Initialize() {
  std::lock_guard<std::recursive_mutex> lock(lock_);
  // The host's logger and system service run inside start-up on this thread and may call
  // back in; such a call is refused while the mark stands (see EnsureStarted).
  const StartUpMark mark(&startUpRunning_);
  const HRESULT hr = ObtainHostInterfaces();
  if (FAILED(hr)) return hr;
  // One attempt per manager: a machine made by an earlier, failed attempt stays as it is,
  // and a running machine is never replaced (destroying it would pull Java out from under
  // everything made on it). Calls from inside start-up are refused by the mark, so nothing
  // can make a machine between here and StartJava.
  if (javaVM_) return S_OK;
  return StartJava();
}

HRESULT CRMICommManagerImpl::ObtainHostInterfaces() {
  if (!log_.Get()) {
    tarnix::ComPtr<IHostLogger> logger;
    const HRESULT hr = tarnix::GetHostLogger(&logger);
    if (FAILED(hr)) return hr;
    log_ = tarnix::HostLog(std::move(logger));
  }
  if (!systemInfo_) {
    const HRESULT hr = tarnix::GetSystemInfo(&systemInfo_);
    if (FAILED(hr)) {
      log_.ErrorWithCode(
          WSTR("Failed to get system info in long __cdecl CRMICommManagerImpl::Initialize(void)"),
          hr);
      return hr;
    }
  }
  return S_OK;
}

HRESULT CRMICommManagerImpl::StartJava() {
  WString runtime;
  // Both log their own failures; Java then fails to start and says so.
  std::ignore = tarnix::GetJrePath(log_, &runtime);
  std::string classPath;
  std::ignore = tarnix::GetClassPath(log_, &classPath);
  javaVM_ = std::make_shared<CJavaVM>(runtime);
  if (tarnix::CreateJavaMachine(*javaVM_, log_, classPath) != 0) return E_FAIL;
  // The start-up's own references go with it; what it keeps is held globally.
  const tarnix::LocalFrame frame(javaVM_->GetEnv());
  const HRESULT hr = StartLoggerFactory();
  return FAILED(hr) ? hr : StartMessageClient();
}

HRESULT CRMICommManagerImpl::StartLoggerFactory() {
  const tarnix::classes::ClassTableRow& row = kClassTable[0];
  std::shared_ptr<CJavaClass> factoryClass;
  if (!tarnix::LoadJavaClass(*javaVM_, log_, row.name, row.methods, row.count, &factoryClass)) {
    return E_FAIL;
  }
  WString folder;
  const HRESULT read = tarnix::ReadAgentValue(WSTR("LogDirectory"), &folder);
  if (FAILED(read)) {
    // The Java client logs to its default place then; that is no reason not to start.
    log_.Warning(WSTR("Failed to retrieve the log foler path.    Error code 0x%08lx."), read);
    log_.Info(WSTR("SUCCESSFULLY initialized the Message Logger."));
    return S_OK;
  }
  const auto folderText = javaVM_->NewString(folder);
  if (!folderText) {
    log_.Error(tarnix::messages::kJavaStringFailed, folder,
               javaVM_->TakeException().value_or(WString()));
    return E_FAIL;
  }
  loggerFactory_ =
      factoryClass->NewObject(tarnix::methods::InstanceLoggerFactory::ctorFolder, folderText);
  if (!loggerFactory_) {
    log_.Error(WSTR("Failed to Initialize the Message Server Logger.  %s"),
               javaVM_->TakeException().value_or(WString()));
    return E_FAIL;
  }
  log_.Info(WSTR("SUCCESSFULLY initialized the Message Logger."));
  return S_OK;
}

HRESULT CRMICommManagerImpl::StartMessageClient() {
  std::shared_ptr<CJavaClass> clientClass;
  for (size_t i = 1; i < std::size(kClassTable); ++i) {
    const tarnix::classes::ClassTableRow& row = kClassTable[i];
    const bool isClient = std::strcmp(row.name, tarnix::classes::kDesktopMessageClient) == 0;
    if (!tarnix::LoadJavaClass(*javaVM_, log_, row.name, row.methods, row.count,
                               isClient ? &clientClass : nullptr)) {
      return E_FAIL;
    }
  }
  messageClient_ = clientClass->NewObject(Client::ctor);
  if (!messageClient_) {
    log_.Error(WSTR("Failed to create a new message client.  %s"),
               javaVM_->TakeException().value_or(WString()));
    return E_FAIL;
  }
  log_.Info(WSTR("Initialized communication manager."));
  return S_OK;
}
