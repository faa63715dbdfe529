#include "manager/DispatchConversions.h"

#include "convert/DesktopConnection.h"
#include "convert/JNIConvertor.h"
#include "jni/JavaVM.h"

namespace tarnix {
namespace {

Converted ObjectOrFailure(std::shared_ptr<CJavaObject> object) {
  Converted converted{std::move(object), S_OK};
  if (!converted) converted.result = E_FAIL;
  return converted;
}

}  // namespace

Converted ConvertConnection(const DispatchCall& call) {
  const DesktopIdentity identity{call.identity.machineIdentity, call.identity.secondValue,
                                 call.identity.virtualMachineId};
  return ObjectOrFailure(
      GetDesktopConnection(call.log.Get(), call.machine, identity, call.systemInfo));
}

Converted ConvertSession(const DispatchCall& call) {
  const CJNIConvertor convertor(call.log.Get());
  return ObjectOrFailure(
      convertor.GetUserSession(call.machine, ComPtr<IHostUserSession>(call.session)));
}

Converted ConvertDesktop(const DispatchCall& call) {
  const CJNIConvertor convertor(call.log.Get());
  HRESULT listFailure = S_OK;
  std::shared_ptr<CJavaObject> desktop =
      convertor.GetDesktop(call.machine, call.systemInfo, &listFailure);
  // An adapter list the host could not give ends the call with the host's reason.
  if (FAILED(listFailure)) return {nullptr, listFailure};
  return ObjectOrFailure(std::move(desktop));
}

std::shared_ptr<CJavaString> RequiredString(CJavaVM& machine, const WString& text) {
  std::shared_ptr<CJavaString> string = machine.NewString(text);
  if (string) return string;
  // Left pending, the exception would be reported as a failed send, perhaps even as a
  // network failure the host would retry.
  machine.TakeException();
  return nullptr;
}

}  // namespace tarnix
