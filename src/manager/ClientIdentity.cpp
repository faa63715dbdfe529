#include "manager/ClientIdentity.h"

#include "common/Bstr.h"
#include "common/FormatText.h"
#include "common/SystemService.h"
#include "manager/ManagerMessages.h"
#include "platform/ComPtr.h"
#include "platform/ScopedBstr.h"
#include "platform/ScopedVariant.h"

#include <tuple>

namespace tarnix {
namespace {

// The component's own version, sent to the message server; not read from anywhere.
constexpr const WCHAR* kVersion[] = {WSTR("6"), WSTR("6"), WSTR("0"), WSTR("10866517")};

using Reader = HRESULT (STDMETHODCALLTYPE ISystemInfo::*)(BSTR*);

[[nodiscard]] HRESULT ReadIdentifier(ISystemInfo* systemInfo, Reader read, const HostLog& log,
                                     const WCHAR* failure, WString* text) {
  ScopedBstr value;
  const HRESULT hr = (systemInfo->*read)(value.Receive());
  if (SUCCEEDED(hr)) {
    *text = value.Text();
  } else {
    log.ErrorWithCode(failure, hr);
  }
  return hr;
}

// A marshalling registration the host lost makes the read fail with E_UNEXPECTED; it
// works once the registration is back.
[[nodiscard]] HRESULT ReadComponentsIdentities(ISystemInfo* systemInfo,
                                               ComPtr<IHostNamedValues>* identities) {
  HRESULT hr = systemInfo->get_componentsIdentities(identities->Receive());
  if (hr == E_UNEXPECTED && SUCCEEDED(EnsureProxyStubRegistration(IID_IHostNamedValues))) {
    hr = systemInfo->get_componentsIdentities(identities->Receive());
  }
  return hr;
}

// An item the host cannot give, or cannot give as text, leaves the text as it was.
void ReadTextItem(IHostNamedValues* values, const WCHAR* name, WString* text) {
  const ScopedBstr itemName = NewBstr(name, std::char_traits<WCHAR>::length(name));
  ScopedVariant value;
  if (FAILED(values->get_Item(itemName.Get(), value.Receive()))) return;
  if (FAILED(value.ChangeType(VT_BSTR))) return;
  *text = BstrText(value.Get().bstrVal);
}

}  // namespace

HRESULT GatherIdentity(ISystemInfo* systemInfo, const HostLog& log, const WCHAR* secondValue,
                       ClientIdentity* identity) {
  if (!systemInfo) return E_POINTER;
  HRESULT hr = systemInfo->Refresh();
  if (FAILED(hr)) log.ErrorWithCode(messages::kDumpDataRefreshFailed, hr);

  WString machineId, virtualMachineId, uniqueId;
  hr = ReadIdentifier(systemInfo, &ISystemInfo::get_machineId, log,
                      WSTR("Failed to get machine id"), &machineId);
  if (FAILED(hr)) return hr;
  hr = ReadIdentifier(systemInfo, &ISystemInfo::get_virtualMachineId, log,
                      WSTR("Failed to get virtual machine id"), &virtualMachineId);
  if (FAILED(hr)) return hr;
  // Read so that a host which cannot answer it is caught here; the value is not sent.
  hr = ReadIdentifier(systemInfo, &ISystemInfo::get_uniqueId, log,
                      WSTR("Failed to get machine unique id"), &uniqueId);
  if (FAILED(hr)) return hr;

  identity->machineIdentity = machineId;
  identity->secondValue = secondValue ? secondValue : WSTR("");
  identity->virtualMachineId = virtualMachineId;

  ComPtr<IHostNamedValues> identities;
  identity->componentsResult = ReadComponentsIdentities(systemInfo, &identities);
  if (FAILED(identity->componentsResult)) {
    log.ErrorWithCode(WSTR("Failed to get_componentsIdentities"), identity->componentsResult);
  } else if (identities) {
    ReadTextItem(identities.Get(), WSTR("Verdant"), &identity->machineIdentity);
  }
  return S_OK;
}

WString MakeClientDescription(ISystemInfo* systemInfo, const ClientIdentity& identity) {
  // A host that cannot name the machine still gets its start-up message through.
  ScopedBstr name;
  if (systemInfo) systemInfo->get_machineName(name.Receive());
  return FormatText(WSTR("<client><type>DesktopAgent</type><name>%s</name><id>%s</id>"
                         "<version>%s.%s.%s.%s</version><uniqueid>%s</uniqueid></client>"),
                    name.Text(), identity.machineIdentity, kVersion[0], kVersion[1], kVersion[2],
                    kVersion[3], identity.virtualMachineId);
}

}  // namespace tarnix
