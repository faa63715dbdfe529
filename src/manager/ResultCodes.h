#pragma once

#include "platform/Win32.h"

namespace tarnix {

// The configuration push found no Java side to push into (OLE_E_NOTRUNNING).
inline const HRESULT kJavaNotRunning = static_cast<HRESULT>(0x80040007);
// A send that failed on the way to the message server: the network is not available
// (Win32 error 5035), which the host treats as "try again later".
inline const HRESULT kNetworkNotAvailable = static_cast<HRESULT>(0x800713AB);

}  // namespace tarnix
