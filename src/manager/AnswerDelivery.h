// What becomes of the message server's answer to a call: the host's callbacks, its action
// executor or nobody receive it, as the route of its type says (manager/DataTypes.h).
#pragma once

#include "common/HostLog.h"
#include "platform/Win32.h"

class CRMICommManagerImpl;

namespace tarnix {

// The name of the event that makes the host's engine fetch its policy again.
inline constexpr const WCHAR* kPolicyUpdateEventName = WSTR("BrixAgent_Engine_ForcePolicyUpdate");

// Answers the result of whoever took the answer, or `unhandledResult` when nobody does.
[[nodiscard]] HRESULT DeliverAnswer(CRMICommManagerImpl& manager, const HostLog& log,
                                    const WCHAR* serverUrl, const WCHAR* secondValue,
                                    const WCHAR* certificate, unsigned char dataType,
                                    const WString& text, HRESULT unhandledResult);

}  // namespace tarnix
