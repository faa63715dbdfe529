// Telling a failure of the remote connection from any other Java failure, by the text
// CJavaVM::GetExceptionText made of it.
#pragma once

#include "platform/Win32.h"

// True when the text names the RMI URL context, a java.rmi exception or a certificate
// problem (case matters: these are Java class names).
bool IsRemoteFailureText(const WString& text);
