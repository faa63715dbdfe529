#include "manager/CommManagerImpl.h"

#include "common/Bstr.h"
#include "convert/ClassTable.h"
#include "jni/JavaObject.h"
#include "jni/JavaVM.h"
#include "jni/LocalFrame.h"
#include "manager/ManagerMessages.h"

#if defined(__SANITIZE_ADDRESS__) && !defined(_MSC_VER)
#  include <sanitizer/lsan_interface.h>
#endif

using Client = tarnix::methods::DesktopMessageClient;

using tarnix::CallbackKey;

namespace {

// On Windows the main thread's thread-local objects are destroyed after the process has
// begun to end, when Java's own threads have been stopped mid-way: a call into Java then
// may never return.
std::atomic<bool> g_processEnding{false};

// Memory the component keeps on purpose until the process ends, with nothing pointing at
// it; a sanitizer build's leak checker is told so.
template <class T>
void KeepUntilExit(T* object) {
#if defined(__SANITIZE_ADDRESS__) && !defined(_MSC_VER)
  __lsan_ignore_object(object);
#else
  static_cast<void>(object);
#endif
}

// Tears the manager down when the thread that started Java ends: that thread created the
// Java machine, and its end is the component's end as far as Java is concerned.
class CRMICommManagerImplCleaner {
 public:
  using Operation = LONG (CRMICommManagerImpl::*)();

  CRMICommManagerImplCleaner(CRMICommManagerImpl* manager, std::weak_ptr<int> alive,
                             Operation teardown)
      : manager_(manager), alive_(std::move(alive)), teardown_(teardown) {}
  ~CRMICommManagerImplCleaner() {
    if (!alive_.expired() && !g_processEnding.load()) (manager_->*teardown_)();
  }
  CRMICommManagerImplCleaner(const CRMICommManagerImplCleaner&) = delete;
  CRMICommManagerImplCleaner& operator=(const CRMICommManagerImplCleaner&) = delete;

 private:
  CRMICommManagerImpl* manager_;
  std::weak_ptr<int> alive_;
  Operation teardown_;
};

thread_local std::shared_ptr<CRMICommManagerImplCleaner> t_cleaner;

}  // namespace

CRMICommManagerImpl::CRMICommManagerImpl() = default;

void CRMICommManagerImpl::ProcessEnding() { g_processEnding.store(true); }

CRMICommManagerImpl::~CRMICommManagerImpl() {
  alive_.reset();
  if (javaVM_ && javaVM_->GetJavaVM()) AbandonJava();
}

void CRMICommManagerImpl::AbandonJava() {
  // The manager is destroyed at library unload, while Java still runs because the thread
  // that started it has not ended. Destroying the machine then would wait for that thread
  // forever, and releasing Java references would attach an unloading thread to Java. The
  // process is on its way out: the Java side is handed to it, untouched.
  struct JavaSide {
    std::shared_ptr<CJavaVM> machine;
    std::shared_ptr<CJavaObject> client;
    std::shared_ptr<CJavaObject> loggerFactory;
  };
  KeepUntilExit(
      new JavaSide{std::move(javaVM_), std::move(messageClient_), std::move(loggerFactory_)});
}

std::shared_ptr<CJavaVM> CRMICommManagerImpl::GetJavaVM() const {
  std::lock_guard<std::recursive_mutex> lock(lock_);
  return javaVM_;
}

std::shared_ptr<CJavaObject> CRMICommManagerImpl::GetMessageClient() const {
  std::lock_guard<std::recursive_mutex> lock(lock_);
  return messageClient_;
}

LONG CRMICommManagerImpl::Register(const WCHAR* serverUrl, const WCHAR* secondValue,
                                   const WCHAR* certificate, IDataDumpCallback* callback) {
  std::lock_guard<std::recursive_mutex> lock(lock_);
  if (!callback) return E_POINTER;
  callbacks_.Add(CallbackKey::From(serverUrl, secondValue, certificate), callback);
  return S_OK;
}

LONG CRMICommManagerImpl::Unregister(const WCHAR* serverUrl, const WCHAR* secondValue,
                                     const WCHAR* certificate, IDataDumpCallback* callback) {
  std::lock_guard<std::recursive_mutex> lock(lock_);
  callbacks_.Remove(CallbackKey::From(serverUrl, secondValue, certificate), callback);
  return S_OK;
}

LONG CRMICommManagerImpl::CallCallback(const WCHAR* serverUrl, const WCHAR* secondValue,
                                       const WCHAR* certificate, unsigned char dataType,
                                       const WCHAR* text) {
  std::lock_guard<std::recursive_mutex> lock(lock_);
  // A copy: a callback may unregister itself (the lock admits the same thread again).
  tarnix::CallbackRegistry::Callbacks callbacks;
  if (!callbacks_.Find(CallbackKey::From(serverUrl, secondValue, certificate), &callbacks))
    return E_FAIL;
  for (const auto& callback : callbacks) {
    const tarnix::ScopedBstr answer =
        text ? tarnix::NewBstr(text, std::char_traits<WCHAR>::length(text)) : tarnix::ScopedBstr();
    callback->OnDataDumped(dataType, answer.Get());
  }
  return S_OK;
}

HRESULT CRMICommManagerImpl::EnsureStarted() {
  for (;;) {
    switch (state_.load()) {
      case eStateInitialized: return S_OK;
      case eStateInitFailed: log_.Error(tarnix::messages::kRefusedAfterFailure); return E_FAIL;
      case eStateUninitialized: log_.Error(tarnix::messages::kRefusedAfterTeardown); return E_FAIL;
      default: {
        std::lock_guard<std::recursive_mutex> lock(lock_);
        // The host called back from inside start-up (its logger, say). A second start-up
        // here would replace the machine the first is building; the call is refused as
        // a failed start is, and the caller's line reports it. Start-up goes on unharmed.
        if (startUpRunning_) return E_FAIL;
        // Another thread may have started (or failed to) while this one waited.
        if (state_.load() == eStateNotInitialized) return StartUp();
      }
    }
  }
}

HRESULT CRMICommManagerImpl::StartUp() {
  const HRESULT hr = Initialize();
  if (FAILED(hr)) {
    state_.exchange(eStateInitFailed);
    log_.ErrorWithCode(tarnix::messages::kStartUpFailed, hr);
    return hr;
  }
  uint16_t expected = eStateNotInitialized;
  state_.compare_exchange_strong(expected, eStateInitialized);
  ArmCleaner();
  return S_OK;
}

void CRMICommManagerImpl::ArmCleaner() {
  if (t_cleaner) return;
  t_cleaner =
      std::make_shared<CRMICommManagerImplCleaner>(this, alive_, &CRMICommManagerImpl::Teardown);
}

LONG CRMICommManagerImpl::Teardown() {
  std::lock_guard<std::recursive_mutex> lock(lock_);
  if (messageClient_ && javaVM_) {
    const tarnix::LocalFrame frame(javaVM_->GetEnv());
    messageClient_->CallVoidMethod(Client::dispose);
    // Nobody is told about a failed dispose, but its exception must not stay pending.
    javaVM_->TakeException();
  }
  loggerFactory_.reset();
  messageClient_.reset();
  if (javaVM_) {
    javaVM_->Unload();
    javaVM_.reset();
  }
  state_.exchange(eStateUninitialized);
  return S_OK;
}
