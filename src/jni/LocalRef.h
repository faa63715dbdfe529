// A JNI local reference as a value: it is deleted when its owner goes, and only on the
// thread that received it, because local references belong to one thread's frame.
#pragma once

#include "platform/Win32.h"

#include <jni.h>

#include <cassert>
#include <utility>

class CJavaThreads;

namespace tarnix {

// The calling thread's environment on the machine, null when it has not attached it;
// defined with CJavaThreads.
JNIEnv* AttachedEnv(CJavaThreads* machine);

namespace detail {
// Every local reference records its thread, and a conversion makes thousands. Where the
// system's answer is a call into the POSIX layer's library, it is asked once per thread
// (its ids are never reused); Windows answers from the thread's own block anyway.
inline DWORD CurrentThread() {
#ifdef _WIN32
  return GetCurrentThreadId();
#else
  static thread_local DWORD id = 0;
  if (id == 0) id = GetCurrentThreadId();
  return id;
#endif
}
}  // namespace detail

template <class T>
class LocalRef {
 public:
  LocalRef() = default;
  // Adopts a local reference that env just returned (a null one is fine).
  LocalRef(JNIEnv* env, T ref) : env_(env), ref_(ref), owner_(detail::CurrentThread()) {}
  LocalRef(LocalRef&& other) noexcept
      : env_(other.env_), ref_(std::exchange(other.ref_, nullptr)), owner_(other.owner_) {}
  LocalRef& operator=(LocalRef&& other) noexcept {
    if (this != &other) {
      Reset();
      env_ = other.env_;
      owner_ = other.owner_;
      ref_ = std::exchange(other.ref_, nullptr);
    }
    return *this;
  }
  LocalRef(const LocalRef&) = delete;
  LocalRef& operator=(const LocalRef&) = delete;
  ~LocalRef() { Reset(); }

  T Get() const { return ref_; }
  JNIEnv* Env() const { return env_; }
  explicit operator bool() const { return ref_ != nullptr; }

  // Gives the reference up without deleting it (it is handed to Java as a result, or the
  // thread's frame has already been dropped by a detach).
  T Release() { return std::exchange(ref_, nullptr); }

  // For an owner that may outlive its thread's attachment to the machine: the reference
  // is deleted while that thread is still attached, and only forgotten after a detach,
  // which has already dropped the thread's frame and the reference with it. The
  // environment answers for the thread: one the machine still knows for the calling
  // thread is the one the reference was made in.
  void ForgetIfDetached(CJavaThreads* machine) {
    if (!ref_) return;
    T ref = Release();
    if (AttachedEnv(machine) == env_) env_->DeleteLocalRef(ref);
  }

  void Reset() {
    T ref = std::exchange(ref_, nullptr);
    if (!ref) return;
    // Deleting through another thread's environment corrupts that thread's frame; a
    // reference that has wandered off its thread is left for its frame to drop.
    const DWORD current = detail::CurrentThread();
    assert(owner_ == current && "local reference released on a foreign thread");
    if (owner_ == current) env_->DeleteLocalRef(ref);
  }

 private:
  JNIEnv* env_ = nullptr;
  T ref_ = nullptr;
  DWORD owner_ = 0;
};

// The short-lived temporaries of one operation: array elements, classes of objects,
// results that are only looked at.
using ScopedLocalRef = LocalRef<jobject>;

template <class T>
LocalRef<T> AdoptLocal(JNIEnv* env, T ref) {
  return LocalRef<T>(env, ref);
}

}  // namespace tarnix
