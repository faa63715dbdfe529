// Telling a failure of the remote connection from any other Java failure, by the text
// CJavaVM::TakeException made of it; and raising the bridge's own refusals.
#pragma once

#include "platform/Win32.h"

#include <jni.h>

#include <string>

// True when the text names the RMI URL context, a java.rmi exception or a certificate
// problem (case matters: these are Java class names).
bool IsRemoteFailureText(const WString& text);

namespace tarnix {

// Raises a java.lang.IllegalArgumentException on the calling thread, unless an
// exception is already pending (that one is the more telling).
void RaiseIllegalArgument(JNIEnv* env, const std::string& message);

}  // namespace tarnix
