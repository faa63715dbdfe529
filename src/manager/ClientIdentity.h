// Who is sending: the identifiers every message of the Java client carries, and the
// description the client announces itself with when the agent starts.
#pragma once

#include "common/HostLog.h"
#include "platform/Win32.h"
#include "tarnix/HostInterfaces.h"

namespace tarnix {

struct ClientIdentity {
  // The component identity "Verdant" when the host reports one as text, else the
  // machine id.
  WString machineIdentity;
  // The second string of the call.
  WString secondValue;
  WString virtualMachineId;
  // What reading the component identities answered. The call goes on after a failure,
  // but the code becomes the call's result when nothing else decides it.
  HRESULT componentsResult = S_OK;
};

// Reads the machine's identifiers afresh. A failure to read the machine id, the virtual
// machine id or the unique id ends the call with that code; the refresh and the
// component identities only log theirs.
[[nodiscard]] HRESULT GatherIdentity(ISystemInfo* systemInfo, const HostLog& log,
                                     const WCHAR* secondValue, ClientIdentity* identity);

// The XML fragment the Java client sends with its start-up message.
WString MakeClientDescription(ISystemInfo* systemInfo, const ClientIdentity& identity);

}  // namespace tarnix
