#include "manager/Dispatch.h"

#include "manager/DispatchConversions.h"
#include "convert/ClassTable.h"
#include "jni/JavaObject.h"
#include "jni/JavaString.h"
#include "jni/JavaVM.h"

using Client = tarnix::methods::DesktopMessageClient;

namespace tarnix {

DispatchOutcome SendStartup(const DispatchCall& call) {
  const WString description = MakeClientDescription(call.systemInfo, call.identity);
  const std::shared_ptr<CJavaString> text = RequiredString(*call.machine, description);
  if (!text) return {E_FAIL, nullptr};
  const Converted connection = ConvertConnection(call);
  if (!connection) return connection.Failure();
  return DispatchOutcome::Sent(
      call.client.CallStringMethod(Client::onStartup, text, *connection.object));
}

}  // namespace tarnix
