#include "manager/AgentRegistry.h"

#include "common/ProductName.h"
#include "config/RegistryRead.h"

namespace tarnix {

WString AgentKeyPath() {
  return WString(WSTR("Software\\Corvane, Inc.\\")) + GetProductName() + WSTR("\\Desktop Agent");
}

HRESULT ReadAgentValue(const WCHAR* name, WString* value) {
  return ReadMachineString(AgentKeyPath().c_str(), name, value);
}

HRESULT ReadHostDesktopValue(const WCHAR* name, WString* value) {
  return ReadMachineString(kHostDesktopKeyPath, name, value);
}

}  // namespace tarnix
