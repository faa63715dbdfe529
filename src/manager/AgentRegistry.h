// Where the agent keeps its settings. Every read opens the key, reads one string and
// closes the key again, so a value the agent's installer changes is seen at once.
#pragma once

#include "platform/Win32.h"

namespace tarnix {

// "Software\Corvane, Inc.\<product>\Desktop Agent" under HKEY_LOCAL_MACHINE; the
// product comes from the host's command line.
WString AgentKeyPath();
inline constexpr const WCHAR* kHostDesktopKeyPath =
    WSTR("Software\\Corvane, Inc.\\Corvane Palisade");

// REG_SZ or REG_EXPAND_SZ (not expanded); any other type is 0x8007000D.
[[nodiscard]] HRESULT ReadAgentValue(const WCHAR* name, WString* value);
[[nodiscard]] HRESULT ReadHostDesktopValue(const WCHAR* name, WString* value);

}  // namespace tarnix
