#pragma once

#include "platform/Win32.h"

namespace tarnix {

// The product the host serves, as named by "--product" on the command line of the process
// that loaded the component. Read afresh on every call; never fails.
WString GetProductName();

// The name used when the command line names none that can be read.
inline constexpr const WCHAR* kDefaultProductName = WSTR("Lumetra Operations for Published Apps");

}  // namespace tarnix
