// Text in the thread's ANSI code page, as the Java machine's options and class names
// are handed around.
#pragma once

#include "platform/Win32.h"

#include <string>

namespace tarnix {

std::string ToThreadAnsi(const WString& text);
WString FromThreadAnsi(const std::string& text);

}  // namespace tarnix
