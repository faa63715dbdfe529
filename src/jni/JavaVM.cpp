#include "jni/JavaVM.h"

#include "jni/ExceptionText.h"
#include "jni/JavaString.h"

#include "platform/JavaRuntime.h"

#include <cassert>
#include <climits>
#include <functional>
#include <tuple>

namespace {

std::atomic<std::uint64_t> g_lastThreadsVersion{0};

std::uint64_t NewThreadsVersion() { return g_lastThreadsVersion.fetch_add(1) + 1; }

}  // namespace

CJavaVM::CJavaVM(const WString& runtimeDirectory)
    : dllDirectory_(runtimeDirectory + tarnix::platform::kRuntimeDllDirectory),
      runtimeLibraryPath_(runtimeDirectory + tarnix::platform::kRuntimeLibrary),
      threadsVersion_(NewThreadsVersion()) {}

CJavaVM::~CJavaVM() {
  ForgetClassesAndThreads();
  if (vm_) {
    vm_->DestroyJavaVM();
    vm_ = nullptr;
  }
  library_.Free();
}

void CJavaVM::ForgetClassesAndThreads() {
  // Classes delete their global references while the machine still exists and the
  // threads are still known; their destructors must not run under the class lock.
  decltype(classes_) classes;
  {
    std::lock_guard<std::mutex> lock(classLock_);
    classes.swap(classes_);
  }
  classes.clear();
  std::lock_guard<std::mutex> lock(environmentLock_);
  threads_.clear();
  // Every thread's remembered environment is now stale.
  threadsVersion_ = NewThreadsVersion();
}

void CJavaVM::Unload() {
  ForgetClassesAndThreads();
  // The JVM goes on running on its own threads; unmapping its code under them would
  // bring the host down.
  if (vm_) std::ignore = library_.Pin();
  vm_ = nullptr;
  creatingThread_ = 0;
  library_.Free();
}

LONG CJavaVM::Create(std::vector<std::string> options) {
  if (vm_) return 0;
  const HRESULT loaded = library_.Load(runtimeLibraryPath_, dllDirectory_);
  if (FAILED(loaded)) return loaded;
  const tarnix::CreateJavaVMFunction createJavaVM = library_.GetCreateJavaVM();
  if (!createJavaVM) {
    const DWORD error = GetLastError();
    return error ? HRESULT_FROM_WIN32(error) : E_FAIL;
  }
  if (options.size() > static_cast<size_t>(INT_MAX)) return JNI_EINVAL;

  std::vector<JavaVMOption> jvmOptions(options.size());  // zero-filled: no extraInfo
  for (size_t i = 0; i < options.size(); ++i) jvmOptions[i].optionString = options[i].data();
  JavaVMInitArgs args{};
  args.version = JNI_VERSION_1_6;
  args.nOptions = static_cast<jint>(jvmOptions.size());
  args.options = jvmOptions.empty() ? nullptr : jvmOptions.data();
  args.ignoreUnrecognized = JNI_FALSE;

  JavaVM* vm = nullptr;
  JNIEnv* env = nullptr;
  const jint result = createJavaVM(&vm, reinterpret_cast<void**>(&env), &args);
  if (result != JNI_OK) return result;
  if (!vm || !env) return JNI_ERR;
  vm_ = vm;
  creatingThread_ = GetCurrentThreadId();
  Register(env);
  return 0;
}

JNIEnv* CJavaVM::LookUpEnv() {
  const DWORD thread = GetCurrentThreadId();
  std::lock_guard<std::mutex> lock(environmentLock_);
  const auto found = threads_.find(thread);
  JNIEnv* env = found == threads_.end() ? nullptr : found->second;
  RememberEnv(env);
  return env;
}

// Called with the environment lock held, so the version cannot move underneath.
void CJavaVM::RememberEnv(JNIEnv* env) const {
  tarnix::detail::t_rememberedEnv =
      tarnix::detail::RememberedEnv{threadsVersion_.load(std::memory_order_relaxed), env};
}

bool CJavaVM::IsRegistered() { return GetEnv() != nullptr; }

void CJavaVM::Register(JNIEnv* env) {
  const DWORD thread = GetCurrentThreadId();
  std::lock_guard<std::mutex> lock(environmentLock_);
  threads_[thread] = env;
  RememberEnv(env);
}

LONG CJavaVM::AttachCurrentThread() {
  if (IsRegistered()) return 0;
  if (!vm_) return JNI_ERR;
  JNIEnv* env = nullptr;
  const jint result = vm_->AttachCurrentThread(reinterpret_cast<void**>(&env), nullptr);
  if (result != JNI_OK) return result;
  Register(env);
  return 0;
}

LONG CJavaVM::DetachCurrentThread() {
  const DWORD thread = GetCurrentThreadId();
  // The creating thread carries the machine; detaching it would leave DestroyJavaVM
  // without the thread that made it.
  if (thread == creatingThread_) return 0;
  if (!vm_) return JNI_ERR;
  // An exception nobody read would go to the thread's uncaught-exception handler on the
  // way out and be printed into the host's output.
  if (JNIEnv* env = GetEnv(); env && env->ExceptionCheck()) env->ExceptionClear();
  const jint result = vm_->DetachCurrentThread();
  if (result != JNI_OK) return result;
  std::lock_guard<std::mutex> lock(environmentLock_);
  threads_.erase(thread);
  RememberEnv(nullptr);
  return 0;
}

CJavaVM::ThreadDetachGuard CJavaVM::MakeDetachGuard() {
  const DWORD thread = GetCurrentThreadId();
  return ThreadDetachGuard(this, [thread](CJavaVM* machine) {
    // Only the attached thread can detach itself; a guard released elsewhere would
    // detach the wrong thread.
    assert(thread == GetCurrentThreadId() && "thread guard released on another thread");
    if (thread == GetCurrentThreadId()) std::ignore = machine->DetachCurrentThread();
  });
}

CJavaVM::ThreadDetachGuard CJavaVM::AttachForScope(LONG* result) {
  LONG attached = 0;
  ThreadDetachGuard guard;
  if (!IsRegistered()) {
    attached = AttachCurrentThread();
    if (attached == 0) guard = MakeDetachGuard();
  }
  if (result) *result = attached;
  return guard;
}

std::shared_ptr<CJavaClass> CJavaVM::LoadClass(const std::string& name, const MethodEntry* table,
                                               ULONGLONG count) {
  // A class that fails to resolve is destroyed after the lock is left, so that its
  // global reference goes without the class lock held.
  std::shared_ptr<CJavaClass> candidate;
  std::lock_guard<std::mutex> lock(classLock_);
  const auto found = classes_.find(name);
  if (found != classes_.end()) return found->second;
  candidate = std::make_shared<CJavaClass>(this, name);
  if (!candidate->Initialize(table, count)) return {};
  classes_[name] = candidate;
  return candidate;
}

std::shared_ptr<CJavaClass> CJavaVM::GetClass(std::string_view name) {
  std::lock_guard<std::mutex> lock(classLock_);
  const auto found = classes_.find(name);
  return found == classes_.end() ? nullptr : found->second;
}

std::shared_ptr<CJavaString> CJavaVM::NewString(std::basic_string_view<WCHAR> text) {
  std::optional<CJavaString> string = NewLocalString(text);
  if (!string) return {};
  return std::make_shared<CJavaString>(std::move(*string));
}

std::optional<CJavaString> CJavaVM::RefuseLongText(JNIEnv* env) {
  tarnix::RaiseIllegalArgument(env, "text too long for a Java string");
  return {};
}

std::shared_ptr<CJavaString> CJavaVM::NewString(const WCHAR* text) {
  return NewString(text ? std::basic_string_view<WCHAR>(text) : std::basic_string_view<WCHAR>());
}

void CJavaVM::DeleteGlobalRef(jobject ref) {
  if (!ref || !vm_) return;
  if (JNIEnv* env = GetEnv()) {
    env->DeleteGlobalRef(ref);
    return;
  }
  // A thread this machine does not know: use its environment if something else
  // attached it, or attach it just long enough to let go of the reference.
  JNIEnv* env = nullptr;
  if (vm_->GetEnv(reinterpret_cast<void**>(&env), JNI_VERSION_1_6) == JNI_OK) {
    env->DeleteGlobalRef(ref);
    return;
  }
  if (vm_->AttachCurrentThreadAsDaemon(reinterpret_cast<void**>(&env), nullptr) == JNI_OK) {
    env->DeleteGlobalRef(ref);
    vm_->DetachCurrentThread();
  }
}

namespace tarnix {
void DeleteGlobalReference(CJavaVM* machine, jobject ref) {
  if (machine) machine->DeleteGlobalRef(ref);
}
JNIEnv* AttachedEnv(CJavaVM* machine) { return machine->GetEnv(); }
}  // namespace tarnix
