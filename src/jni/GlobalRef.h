// A JNI global reference as a value. Global references may be released on any thread;
// the machine finds (or briefly makes) an environment for the releasing thread.
#pragma once

#include <jni.h>

#include <utility>

class CJavaThreads;

namespace tarnix {

// Deletes a global reference through the machine; defined with CJavaThreads.
void DeleteGlobalReference(CJavaThreads* machine, jobject ref);

template <class T>
class GlobalRef {
 public:
  GlobalRef() = default;
  // Adopts a global reference made with NewGlobalRef on the machine's JVM.
  GlobalRef(CJavaThreads* machine, T ref) : machine_(machine), ref_(ref) {}
  GlobalRef(GlobalRef&& other) noexcept
      : machine_(other.machine_), ref_(std::exchange(other.ref_, nullptr)) {}
  GlobalRef& operator=(GlobalRef&& other) noexcept {
    if (this != &other) {
      Reset();
      machine_ = other.machine_;
      ref_ = std::exchange(other.ref_, nullptr);
    }
    return *this;
  }
  GlobalRef(const GlobalRef&) = delete;
  GlobalRef& operator=(const GlobalRef&) = delete;
  ~GlobalRef() { Reset(); }

  T Get() const { return ref_; }
  explicit operator bool() const { return ref_ != nullptr; }

  void Reset() {
    if (T ref = std::exchange(ref_, nullptr)) DeleteGlobalReference(machine_, ref);
  }

 private:
  CJavaThreads* machine_ = nullptr;
  T ref_ = nullptr;
};

// Pins a local reference as a global one; the local one is deleted either way. An empty
// result means the JVM could not make the global reference.
template <class T>
GlobalRef<T> MakeGlobal(CJavaThreads* machine, JNIEnv* env, T local) {
  if (!local) return {};
  T global = static_cast<T>(env->NewGlobalRef(local));
  env->DeleteLocalRef(local);
  return GlobalRef<T>(machine, global);
}

}  // namespace tarnix
