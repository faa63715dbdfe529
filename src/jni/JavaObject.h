// A Java object, with calls of its class's methods by alias. Objects that outlive a call
// (the message client) are pinned by a global reference and may be released on any
// thread; the objects of one call hold a local reference of the calling thread and are
// released on it. It does not keep its class or machine alive: the machine's class cache
// outlives it.
#pragma once

#include "jni/GlobalRef.h"
#include "jni/JavaArgument.h"
#include "jni/JavaString.h"
#include "jni/LocalRef.h"

#include <jni.h>

#include <memory>
#include <string_view>

class CJavaVM;
class CJavaClass;

class CJavaObject {
 public:
  CJavaObject(CJavaVM* machine, const CJavaClass* javaClass, tarnix::GlobalRef<jobject> object);
  CJavaObject(CJavaVM* machine, const CJavaClass* javaClass, tarnix::LocalRef<jobject> object);
  virtual ~CJavaObject();
  CJavaObject(const CJavaObject&) = delete;
  CJavaObject& operator=(const CJavaObject&) = delete;
  // Movable, so that the objects of one call can live on the stack.
  CJavaObject(CJavaObject&& other) noexcept;
  CJavaObject& operator=(CJavaObject&& other) noexcept;

  // Calls that cannot be made (an alias missing from the table, arguments that do not
  // fit the descriptor, an unattached thread) raise a Java IllegalArgumentException
  // instead, so the caller's usual exception check reports them. A method that throws
  // leaves its exception pending.
  template <class... Args>
  void CallVoidMethod(std::string_view alias, const Args&... args) const {
    CallVoidMethodWith(alias, tarnix::MakeJavaArguments(args...));
  }
  // Never empty: a method that answered null, threw or could not be called gives a
  // CJavaString whose GetText fails.
  template <class... Args>
  std::shared_ptr<CJavaString> CallStringMethod(std::string_view alias,
                                                const Args&... args) const {
    return CallStringMethodWith(alias, tarnix::MakeJavaArguments(args...));
  }
  // Any object result, as a local reference of the calling thread.
  template <class... Args>
  tarnix::LocalRef<jobject> CallObjectMethod(std::string_view alias, const Args&... args) const {
    return CallObjectMethodWith(alias, tarnix::MakeJavaArguments(args...));
  }

  void CallVoidMethodWith(std::string_view alias, tarnix::JavaArguments arguments) const;
  std::shared_ptr<CJavaString> CallStringMethodWith(std::string_view alias,
                                                    tarnix::JavaArguments arguments) const;
  tarnix::LocalRef<jobject> CallObjectMethodWith(std::string_view alias,
                                                 tarnix::JavaArguments arguments) const;

  jobject Get() const { return object_; }
  const CJavaClass* GetClass() const { return class_; }
  bool IsGlobal() const { return static_cast<bool>(global_); }

  // The same Java object pinned by a global reference, for a caller that keeps it beyond
  // the call or hands it to another thread. Empty when the JVM cannot make the reference.
  std::shared_ptr<CJavaObject> MakeGlobal() const;

 private:
  JNIEnv* Owner() const { return local_ ? local_.Env() : nullptr; }
  void ForgetIfDetached();

  CJavaVM* machine_;
  const CJavaClass* class_;
  tarnix::GlobalRef<jobject> global_;
  tarnix::LocalRef<jobject> local_;
  jobject object_;
};
