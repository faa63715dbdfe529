// The characters of a Java string, lent by the JVM until the owner goes.
#pragma once

#include <jni.h>

namespace tarnix {

// UTF-16 code units (GetStringChars).
class StringChars {
 public:
  StringChars(JNIEnv* env, jstring string)
      : env_(env), string_(string), chars_(env->GetStringChars(string, nullptr)) {}
  ~StringChars() {
    if (chars_) env_->ReleaseStringChars(string_, chars_);
  }
  StringChars(const StringChars&) = delete;
  StringChars& operator=(const StringChars&) = delete;

  const jchar* Get() const { return chars_; }

 private:
  JNIEnv* env_;
  jstring string_;
  const jchar* chars_;
};

// Modified UTF-8, zero-terminated (GetStringUTFChars).
class StringUtfChars {
 public:
  StringUtfChars(JNIEnv* env, jstring string)
      : env_(env), string_(string), chars_(env->GetStringUTFChars(string, nullptr)) {}
  ~StringUtfChars() {
    if (chars_) env_->ReleaseStringUTFChars(string_, chars_);
  }
  StringUtfChars(const StringUtfChars&) = delete;
  StringUtfChars& operator=(const StringUtfChars&) = delete;

  const char* Get() const { return chars_; }

 private:
  JNIEnv* env_;
  jstring string_;
  const char* chars_;
};

}  // namespace tarnix
