// A Java object pinned by a global reference, with calls of its class's methods by alias.
// It does not keep its class or machine alive: the machine's class cache outlives it.
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
  virtual ~CJavaObject();
  CJavaObject(const CJavaObject&) = delete;
  CJavaObject& operator=(const CJavaObject&) = delete;

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

  jobject Get() const { return object_.Get(); }
  const CJavaClass* GetClass() const { return class_; }

 private:
  CJavaVM* machine_;
  const CJavaClass* class_;
  tarnix::GlobalRef<jobject> object_;
};
