// A Java object, with calls of its class's methods through handles of its method table.
// Objects that outlive a call (the message client) are pinned by a global reference and
// may be released on any thread; the objects of one call hold a local reference of the calling thread and are
// released on it. It does not keep its class or machine alive: the machine's class cache
// outlives it.
#pragma once

#include "jni/GlobalRef.h"
#include "jni/JavaArgument.h"
#include "jni/JavaMethod.h"
#include "jni/JavaString.h"
#include "jni/LocalRef.h"

#include <jni.h>

#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>

class CJavaVM;
class CJavaClass;

class CJavaObject {
 public:
  CJavaObject(CJavaVM* machine, const CJavaClass* javaClass, tarnix::GlobalRef<jobject> object);
  CJavaObject(CJavaVM* machine, const CJavaClass* javaClass, tarnix::LocalRef<jobject> object);
  // Inline with the move: a conversion moves and ends a thousand objects, most of them
  // already moved from.
  virtual ~CJavaObject() {
    if (local_) ForgetIfDetached();
  }
  CJavaObject(const CJavaObject&) = delete;
  CJavaObject& operator=(const CJavaObject&) = delete;
  // Movable, so that the objects of one call can live on the stack.
  CJavaObject(CJavaObject&& other) noexcept
      : machine_(other.machine_),
        class_(other.class_),
        global_(std::move(other.global_)),
        local_(std::move(other.local_)),
        object_(std::exchange(other.object_, nullptr)) {}
  CJavaObject& operator=(CJavaObject&& other) noexcept;

  // Calls that cannot be made (a handle of another class's table, a local object used on
  // another thread, an unattached thread) raise a Java IllegalArgumentException instead,
  // so the caller's usual exception check reports them; a call made while an exception
  // is pending does nothing and leaves it so. A method that throws leaves its exception
  // pending. An object result nobody asked for is deleted at once: on a thread that
  // stays attached it would otherwise stay in the frame for good.
  template <class R, class... P, class... Args>
  void CallVoidMethod(tarnix::Method<R(P...)> method, const Args&... args) const {
    static_assert(sizeof...(Args) == sizeof...(P), "the method takes other arguments");
    const tarnix::JValues<sizeof...(P)> values{{tarnix::ToJValue<P>(args)...}};
    jmethodID id = nullptr;
    JNIEnv* env = Enter(method.Table(), method.Row(), id);
    if (!env) return;
    if constexpr (std::is_pointer_v<R>) {
      if (jobject answer = env->CallObjectMethodA(object_, id, values.Get())) {
        env->DeleteLocalRef(answer);
      }
    } else {
      Invoke<R>(env, id, values.Get());
    }
  }
  // Never empty: a method that answered null, threw or could not be called gives a
  // CJavaString whose GetText fails.
  template <class R, class... P, class... Args>
  std::shared_ptr<CJavaString> CallStringMethod(tarnix::Method<R(P...)> method,
                                                const Args&... args) const {
    static_assert(std::is_same_v<R, jstring>, "the method does not answer a string");
    return std::make_shared<CJavaString>(machine_, CallObjectMethod(method, args...));
  }
  // Any object result, as a local reference of the calling thread.
  template <class R, class... P, class... Args>
  tarnix::LocalRef<R> CallObjectMethod(tarnix::Method<R(P...)> method,
                                       const Args&... args) const {
    static_assert(std::is_pointer_v<R>, "the method does not answer an object");
    static_assert(sizeof...(Args) == sizeof...(P), "the method takes other arguments");
    const tarnix::JValues<sizeof...(P)> values{{tarnix::ToJValue<P>(args)...}};
    jmethodID id = nullptr;
    JNIEnv* env = Enter(method.Table(), method.Row(), id);
    if (!env) return {};
    return tarnix::LocalRef<R>(
        env, static_cast<R>(env->CallObjectMethodA(object_, id, values.Get())));
  }

  jobject Get() const { return object_; }
  const CJavaClass* GetClass() const { return class_; }
  bool IsGlobal() const { return static_cast<bool>(global_); }

  // The same Java object pinned by a global reference, for a caller that keeps it beyond
  // the call or hands it to another thread. Empty when the JVM cannot make the reference.
  std::shared_ptr<CJavaObject> MakeGlobal() const;

 private:
  // The calling thread's environment and the row's id when the call may be made; null
  // otherwise, with the reason raised unless an exception was already pending.
  JNIEnv* Enter(const MethodEntry* table, size_t row, jmethodID& id) const;
  template <class R>
  void Invoke(JNIEnv* env, jmethodID id, const jvalue* values) const {
    if constexpr (std::is_void_v<R>) env->CallVoidMethodA(object_, id, values);
    else if constexpr (std::is_same_v<R, jboolean>) env->CallBooleanMethodA(object_, id, values);
    else if constexpr (std::is_same_v<R, jbyte>) env->CallByteMethodA(object_, id, values);
    else if constexpr (std::is_same_v<R, jchar>) env->CallCharMethodA(object_, id, values);
    else if constexpr (std::is_same_v<R, jshort>) env->CallShortMethodA(object_, id, values);
    else if constexpr (std::is_same_v<R, jint>) env->CallIntMethodA(object_, id, values);
    else if constexpr (std::is_same_v<R, jlong>) env->CallLongMethodA(object_, id, values);
    else if constexpr (std::is_same_v<R, jfloat>) env->CallFloatMethodA(object_, id, values);
    else env->CallDoubleMethodA(object_, id, values);
  }
  JNIEnv* Owner() const { return local_ ? local_.Env() : nullptr; }
  void ForgetIfDetached();

  CJavaVM* machine_;
  const CJavaClass* class_;
  tarnix::GlobalRef<jobject> global_;
  tarnix::LocalRef<jobject> local_;
  jobject object_;
};
