#include "jni/JavaThreads.h"

#include "jni/GlobalRef.h"

namespace {

std::atomic<std::uint64_t> g_lastThreadsVersion{0};

std::uint64_t NewThreadsVersion() { return g_lastThreadsVersion.fetch_add(1) + 1; }

}  // namespace

CJavaThreads::CJavaThreads() : threadsVersion_(NewThreadsVersion()) {}

void CJavaThreads::ForgetThreads() {
  std::lock_guard<std::mutex> lock(environmentLock_);
  threads_.clear();
  threadsVersion_ = NewThreadsVersion();
}

JNIEnv* CJavaThreads::LookUpEnv() {
  const DWORD thread = GetCurrentThreadId();
  std::lock_guard<std::mutex> lock(environmentLock_);
  const auto found = threads_.find(thread);
  JNIEnv* env = found == threads_.end() ? nullptr : found->second;
  RememberEnv(env);
  return env;
}

// Called with the environment lock held, so the version cannot move underneath.
void CJavaThreads::RememberEnv(JNIEnv* env) const {
  tarnix::detail::t_rememberedEnv =
      tarnix::detail::RememberedEnv{threadsVersion_.load(std::memory_order_relaxed), env};
}

void CJavaThreads::Register(JNIEnv* env) {
  const DWORD thread = GetCurrentThreadId();
  std::lock_guard<std::mutex> lock(environmentLock_);
  threads_[thread] = env;
  RememberEnv(env);
}

LONG CJavaThreads::AttachCurrentThread() {
  if (IsRegistered()) return 0;
  if (!vm_) return JNI_ERR;
  JNIEnv* env = nullptr;
  const jint result = vm_->AttachCurrentThread(reinterpret_cast<void**>(&env), nullptr);
  if (result != JNI_OK) return result;
  Register(env);
  return 0;
}

LONG CJavaThreads::DetachCurrentThread() {
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

void CJavaThreads::DeleteGlobalRef(jobject ref) {
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
void DeleteGlobalReference(CJavaThreads* machine, jobject ref) {
  if (machine) machine->DeleteGlobalRef(ref);
}
JNIEnv* AttachedEnv(CJavaThreads* machine) { return machine->GetEnv(); }
}  // namespace tarnix
