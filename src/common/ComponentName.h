#pragma once

#include "platform/Win32.h"

namespace tarnix {

// The name every log line carries, so the host can tell this component's lines apart.
inline constexpr const WCHAR* kComponentName = WSTR("tarnix-rmi");

}  // namespace tarnix
