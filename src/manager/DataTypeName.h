#pragma once

#include "platform/Win32.h"
#include "tarnix/DataType.h"

namespace tarnix {

// The name of a DataType for messages: the enumerator's own spelling, or "0x" and the
// value in lower-case hexadecimal for a value without one ("0xb", "0xff").
WString Enum2String(unsigned char value);

}  // namespace tarnix
