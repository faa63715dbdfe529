// Text as the tool prints it: UTF-8, from the component's wide text.
#pragma once

#include "platform/WideText.h"
#include "platform/Win32.h"

#include <string>

namespace tarnix::check {

inline std::string ToUtf8(const WString& text) { return WideToUtf8(text); }

// A result code as "0x%08lx".
std::string CodeText(LONG code);

// The first line of a Java exception text (its toString()); "no Java exception" for none.
std::string FirstLine(const WString& exceptionText);

// "present, N characters, SHA-256 prefix xxxxxxxx" (the first eight hex digits of the
// hash of the text's UTF-8 bytes), or "absent": a secret is never shown in clear.
std::string DescribeSecret(const WString& secret);

}  // namespace tarnix::check
