#include "manager/Dispatch.h"

#include "convert/DesktopConnection.h"
#include "jni/JavaObject.h"
#include "jni/JavaString.h"
#include "jni/JavaVM.h"

namespace tarnix {

DispatchOutcome SendStartup(const DispatchCall& call) {
  const WString description = MakeClientDescription(call.systemInfo, call.identity);
  const std::shared_ptr<CJavaString> text = call.machine->NewString(description);
  // The failed string's exception stays pending: the send failure reports it.
  if (!text) return {E_FAIL, nullptr};
  const DesktopIdentity identity{call.identity.machineIdentity, call.identity.second,
                                 call.identity.virtualMachineId};
  const std::shared_ptr<CJavaObject> connection =
      GetDesktopConnection(call.log.Get(), call.machine, identity, call.systemInfo);
  if (!connection) return {E_FAIL, nullptr};
  return {S_OK, call.client.CallStringMethod("onStartup", text, connection)};
}

}  // namespace tarnix
