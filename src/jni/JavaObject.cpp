#include "jni/JavaObject.h"

#include "jni/ExceptionText.h"
#include "jni/HeldException.h"
#include "jni/JavaString.h"
#include "jni/JavaThreads.h"

namespace {

// The bridge's refusals build their message only once a call is refused.
void RefuseForeignThread(JNIEnv* env, const tarnix::ResolvedMethods& javaClass,
                         const MethodEntry& entry) {
  tarnix::RaiseIllegalArgument(env, "a local reference of another thread: " + javaClass.GetName() +
                                        " \"" + entry.alias + "\" needs a global object");
}

void RefuseForeignTable(JNIEnv* env, const tarnix::ResolvedMethods& javaClass,
                        const MethodEntry& entry) {
  tarnix::RaiseIllegalArgument(env, std::string("no method \"") + entry.alias +
                                        "\" in the method table of " + javaClass.GetName());
}

}  // namespace

CJavaObject& CJavaObject::operator=(CJavaObject&& other) noexcept {
  if (this != &other) {
    local_.ForgetIfDetached(machine_);
    machine_ = other.machine_;
    class_ = other.class_;
    global_ = std::move(other.global_);
    local_ = std::move(other.local_);
    object_ = std::exchange(other.object_, nullptr);
  }
  return *this;
}

std::shared_ptr<CJavaObject> CJavaObject::MakeGlobal() const {
  JNIEnv* env = machine_->GetEnv();
  if (!env || !object_) return {};
  // A converter may hand back an object together with an exception meant for its caller;
  // it is set aside while the reference is made, and stays pending.
  tarnix::HeldException pending(env);
  pending.Hold();
  tarnix::GlobalRef<jobject> pinned(machine_, env->NewGlobalRef(object_));
  pending.Raise();
  if (!pinned) return {};
  return std::make_shared<CJavaObject>(machine_, class_, std::move(pinned));
}

JNIEnv* CJavaObject::Enter(const MethodEntry* table, size_t row, jmethodID& id) const {
  JNIEnv* env = machine_->GetEnv();
  if (!env || env->ExceptionCheck()) return nullptr;
  // JNI cannot tell a reference of another thread's frame, nor a method id of another
  // class: both would reach into memory that is not theirs.
  if (local_ && local_.Env() != env) {
    RefuseForeignThread(env, *class_, table[row]);
    return nullptr;
  }
  if (class_->Table() != table) {
    RefuseForeignTable(env, *class_, table[row]);
    return nullptr;
  }
  id = class_->MethodId(row);
  return env;
}
