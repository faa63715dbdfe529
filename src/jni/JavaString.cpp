#include "jni/JavaString.h"

#include "jni/JavaThreads.h"
#include "jni/StringChars.h"

#include <algorithm>

CJavaString& CJavaString::operator=(CJavaString&& other) noexcept {
  if (this != &other) {
    string_.ForgetIfDetached(machine_);
    machine_ = other.machine_;
    string_ = std::move(other.string_);
  }
  return *this;
}

bool CJavaString::GetText(WString& out) const {
  if (!string_) return false;
  JNIEnv* env = machine_->GetEnv();
  if (env != string_.Env() || env->ExceptionCheck()) return false;
  const jsize length = env->GetStringLength(string_.Get());
  const tarnix::StringChars chars(env, string_.Get());
  if (!chars.Get()) return false;
  const jchar* end = std::find(chars.Get(), chars.Get() + length, jchar{0});
  out.assign(reinterpret_cast<const WCHAR*>(chars.Get()), static_cast<size_t>(end - chars.Get()));
  return true;
}
