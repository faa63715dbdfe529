// Telling a failure of the connection to the message server from any other Java failure,
// by the text CJavaVM::TakeException made of it: the host hears "network not available"
// for the first and a plain failure for the rest.
#pragma once

#include "platform/Win32.h"

// True when the text names the RMI URL context, a java.rmi exception or a certificate
// problem (case matters: these are Java class names).
bool IsRemoteFailureText(const WString& text);
