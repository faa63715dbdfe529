// The text that turns a failing result code into words at the end of a log line.
#pragma once

#include "platform/Win32.h"

namespace tarnix {

enum class SuffixStyle {
  // "  Error code 0x%08lx -- %s" / "  Error code 0x%08lx.": every ordinary failure line.
  Spaced,
  // The same without the two leading blanks, so the prefix and "Error" touch. Kept for the
  // few lines the host has always received that way.
  Joined,
};

// The system's own text for `hr`, exactly as the system gives it (line end included);
// empty when the system has none.
WString SystemMessageText(HRESULT hr);

// The suffix for `hr`: with the system's text when it has one, else ending in a full stop.
// The hexadecimal digits are eight, lower case.
WString ResultCodeSuffix(HRESULT hr, SuffixStyle style = SuffixStyle::Spaced);

}  // namespace tarnix
