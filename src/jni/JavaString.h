// A Java string made from wide text, or answered by a Java method. It holds a local
// reference, so it is released on the thread that made it; once that thread has been
// detached the reference is already gone and the release does nothing.
#pragma once

#include "jni/LocalRef.h"

#include "platform/Win32.h"

#include <jni.h>

#include <utility>

class CJavaThreads;

class CJavaString {
 public:
  CJavaString(CJavaThreads* machine, tarnix::LocalRef<jstring> string)
      : machine_(machine), string_(std::move(string)) {}
  virtual ~CJavaString() { string_.ForgetIfDetached(machine_); }
  CJavaString(const CJavaString&) = delete;
  CJavaString& operator=(const CJavaString&) = delete;
  // Movable, so that the strings of one call can live on the stack.
  CJavaString(CJavaString&& other) noexcept = default;
  CJavaString& operator=(CJavaString&& other) noexcept;

  // The characters up to the first zero character. False for a null string or when
  // the JVM cannot lend the characters.
  [[nodiscard]] bool GetText(WString& out) const;

  // May be null (a Java method answered null).
  jstring Get() const { return string_.Get(); }

 private:
  CJavaThreads* machine_;
  tarnix::LocalRef<jstring> string_;
};
