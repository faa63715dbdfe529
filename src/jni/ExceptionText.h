// The text of the pending Java exception, and the bridge's own refusals raised as Java
// exceptions. Both work on one thread's environment.
#pragma once

#include "platform/Win32.h"

#include <jni.h>

#include <string>

namespace tarnix {

// False when no exception is pending (out untouched). Otherwise clears the exception
// and replaces out with its toString() text followed by "\r\n\t" and each stack frame.
bool TakeExceptionText(JNIEnv* env, WString& out);

// Raises a java.lang.IllegalArgumentException on the calling thread, unless an
// exception is already pending (that one is the more telling).
void RaiseIllegalArgument(JNIEnv* env, const std::string& message);

}  // namespace tarnix
