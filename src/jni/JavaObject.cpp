#include "jni/JavaObject.h"

#include "jni/ExceptionText.h"
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
    ForgetIfDetached();
    machine_ = other.machine_;
    class_ = other.class_;
    global_ = std::move(other.global_);
    local_ = std::move(other.local_);
    object_ = std::exchange(other.object_, nullptr);
  }
  return *this;
}

void CJavaObject::ForgetIfDetached() {
  if (!local_) return;
  // The environment answers for the thread: one the machine still knows for this thread
  // is the one the reference was made in. A detach has already dropped the thread's
  // frame and the reference with it.
  JNIEnv* env = local_.Env();
  jobject ref = local_.Release();
  if (machine_->GetEnv() == env) env->DeleteLocalRef(ref);
}

std::shared_ptr<CJavaObject> CJavaObject::MakeGlobal() const {
  JNIEnv* env = machine_->GetEnv();
  if (!env || !object_) return {};
  // A converter may hand back an object together with an exception meant for its caller;
  // it is set aside while the reference is made, and stays pending.
  tarnix::LocalRef<jthrowable> pending(env, env->ExceptionOccurred());
  if (pending) env->ExceptionClear();
  tarnix::GlobalRef<jobject> pinned(machine_, env->NewGlobalRef(object_));
  if (pending) env->Throw(pending.Get());
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
