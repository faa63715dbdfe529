// A Java object, with calls of its class's methods through handles of its method table.
// Objects that outlive a call (the message client) are pinned by a global reference and
// may be released on any thread; the objects of one call hold a local reference of the
// calling thread and are released on it. It does not keep its class or machine alive: the
// machine's class cache outlives it.
#pragma once

#include "jni/GlobalRef.h"
#include "jni/JavaArgument.h"
#include "jni/JavaMethod.h"
#include "jni/JavaString.h"
#include "jni/LocalRef.h"
#include "jni/ResolvedMethods.h"

#include <jni.h>

#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>

class CJavaThreads;

class CJavaObject {
 public:
  // Inline, as the move and the end: a conversion makes, moves and ends a thousand
  // objects, most of them already moved from when they end.
  CJavaObject(CJavaThreads* machine, const tarnix::ResolvedMethods* javaClass,
              tarnix::GlobalRef<jobject> object)
      : machine_(machine), class_(javaClass), global_(std::move(object)), object_(global_.Get()) {}
  CJavaObject(CJavaThreads* machine, const tarnix::ResolvedMethods* javaClass,
              tarnix::LocalRef<jobject> object)
      : machine_(machine), class_(javaClass), local_(std::move(object)), object_(local_.Get()) {}
  virtual ~CJavaObject() { local_.ForgetIfDetached(machine_); }
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
    jmethodID id = nullptr;
    JNIEnv* env = Enter(method.Table(), method.Row(), id);
    if (!env) return;
    if constexpr (std::is_pointer_v<R>) {
      tarnix::ScopedLocalRef(env, env->CallObjectMethod(object_, id, tarnix::ToJni<P>(args)...));
    } else {
      Invoke<R>(env, id, tarnix::ToJni<P>(args)...);
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
  tarnix::LocalRef<R> CallObjectMethod(tarnix::Method<R(P...)> method, const Args&... args) const {
    static_assert(std::is_pointer_v<R>, "the method does not answer an object");
    static_assert(sizeof...(Args) == sizeof...(P), "the method takes other arguments");
    jmethodID id = nullptr;
    JNIEnv* env = Enter(method.Table(), method.Row(), id);
    if (!env) return {};
    return tarnix::LocalRef<R>(
        env, static_cast<R>(env->CallObjectMethod(object_, id, tarnix::ToJni<P>(args)...)));
  }

  jobject Get() const { return object_; }
  const tarnix::ResolvedMethods* GetClass() const { return class_; }
  bool IsGlobal() const { return static_cast<bool>(global_); }

  // The same Java object pinned by a global reference, for a caller that keeps it beyond
  // the call or hands it to another thread. Empty when the JVM cannot make the reference.
  std::shared_ptr<CJavaObject> MakeGlobal() const;

 private:
  // The calling thread's environment and the row's id when the call may be made; null
  // otherwise, with the reason raised unless an exception was already pending.
  JNIEnv* Enter(const MethodEntry* table, size_t row, jmethodID& id) const;
  // Through JNI's variadic calls, as hand-written JNI makes them: the values are already
  // each exactly its parameter's type.
  template <class R, class... Values>
  void Invoke(JNIEnv* env, jmethodID id, Values... values) const {
    if constexpr (std::is_void_v<R>)
      env->CallVoidMethod(object_, id, values...);
    else if constexpr (std::is_same_v<R, jboolean>)
      env->CallBooleanMethod(object_, id, values...);
    else if constexpr (std::is_same_v<R, jbyte>)
      env->CallByteMethod(object_, id, values...);
    else if constexpr (std::is_same_v<R, jchar>)
      env->CallCharMethod(object_, id, values...);
    else if constexpr (std::is_same_v<R, jshort>)
      env->CallShortMethod(object_, id, values...);
    else if constexpr (std::is_same_v<R, jint>)
      env->CallIntMethod(object_, id, values...);
    else if constexpr (std::is_same_v<R, jlong>)
      env->CallLongMethod(object_, id, values...);
    else if constexpr (std::is_same_v<R, jfloat>)
      env->CallFloatMethod(object_, id, values...);
    else
      env->CallDoubleMethod(object_, id, values...);
  }
  CJavaThreads* machine_;
  const tarnix::ResolvedMethods* class_;
  tarnix::GlobalRef<jobject> global_;
  tarnix::LocalRef<jobject> local_;
  jobject object_;
};
