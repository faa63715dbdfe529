// The threads of the one Java virtual machine: the JNI environment of every thread the
// machine has attached, and the attaching and detaching. CJavaVM creates the machine on
// top of this; the strings, objects, classes and references it makes see only this part,
// so that they never depend on the machine that makes them.
#pragma once

#include "platform/Win32.h"

#include <jni.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>

namespace tarnix::detail {
// The calling thread's last answer from a machine's thread map, good while that machine's
// thread map is still the one `version` names.
struct RememberedEnv {
  std::uint64_t version = 0;
  JNIEnv* env = nullptr;
};
inline thread_local RememberedEnv t_rememberedEnv;
}  // namespace tarnix::detail

class CJavaThreads {
 public:
  CJavaThreads(const CJavaThreads&) = delete;
  CJavaThreads& operator=(const CJavaThreads&) = delete;

  // The calling thread's environment as registered here; null for a thread this machine
  // has not attached (even if something else attached it). Every bridge call asks, so the
  // answer is remembered per thread and the thread map is consulted only on a miss.
  JNIEnv* GetEnv() {
    // Only the thread itself changes its own entry (attach, detach); other threads can
    // only empty the whole map, which changes the version.
    const tarnix::detail::RememberedEnv& remembered = tarnix::detail::t_rememberedEnv;
    if (remembered.version == threadsVersion_.load(std::memory_order_acquire)) {
      return remembered.env;
    }
    return LookUpEnv();
  }
  // 0 or the machine's JNI code. A thread already registered is not attached again.
  [[nodiscard]] LONG AttachCurrentThread();
  // 0 or the machine's JNI code. The creating thread is never detached. Attachments do
  // not nest: the first detach of a thread detaches it.
  [[nodiscard]] LONG DetachCurrentThread();

  // Deletes a global reference from whatever thread releases it.
  void DeleteGlobalRef(jobject ref);

  JavaVM* GetJavaVM() const { return vm_; }
  DWORD GetCreatingThread() const { return creatingThread_; }

 protected:
  CJavaThreads();
  ~CJavaThreads() = default;

  bool IsRegistered() { return GetEnv() != nullptr; }
  // Registers the calling thread's environment.
  void Register(JNIEnv* env);
  // Every thread's remembered environment is stale afterwards.
  void ForgetThreads();

  JavaVM* vm_ = nullptr;
  DWORD creatingThread_ = 0;

 private:
  JNIEnv* LookUpEnv();
  void RememberEnv(JNIEnv* env) const;

  std::mutex environmentLock_;
  std::map<DWORD, JNIEnv*> threads_;
  // Names the thread map's current contents; a thread's remembered environment counts
  // only while it was remembered under this value. Unique across machines, so a machine
  // made where an old one lived never inherits its answers.
  std::atomic<std::uint64_t> threadsVersion_;
};
