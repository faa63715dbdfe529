// The text of the pending Java exception, and the bridge's own refusals raised as Java
// exceptions. Both work on one thread's environment.
#pragma once

#include "platform/Win32.h"

#include <jni.h>

#include <optional>
#include <string>

namespace tarnix {

// The one way the component takes a pending Java exception: it is cleared (JNI allows
// no other call while one is pending) and its text comes back, its toString() followed
// by "\r\n\t" and each stack frame. Nothing when none is pending. Inline: it is asked
// after every call into Java, and the plain check spares a reference when all is well.
// The text alone, for TakeException; empty when nothing is pending.
[[nodiscard]] WString TakePendingExceptionText(JNIEnv* env);
inline std::optional<WString> TakeException(JNIEnv* env) {
  if (!env || !env->ExceptionCheck()) return std::nullopt;
  return TakePendingExceptionText(env);
}

// Raises a java.lang.IllegalArgumentException on the calling thread, unless an
// exception is already pending (that one is the more telling).
void RaiseIllegalArgument(JNIEnv* env, const std::string& message);

}  // namespace tarnix
