#include "hostobjects/SystemInformation.h"

namespace tarnix::host {

void SystemInformation::SetText(const char* call, const WString& value) {
  std::lock_guard<std::mutex> hold(lock_);
  texts_[call] = value;
}

void SystemInformation::SetTotalMemory(LONG value) {
  std::lock_guard<std::mutex> hold(lock_);
  totalMemory_ = value;
}

void SystemInformation::SetDesktopFlag(VARIANT_BOOL value) {
  std::lock_guard<std::mutex> hold(lock_);
  desktop_ = value;
}

void SystemInformation::SetComponentsIdentities(ComPtr<IHostNamedValues> identities) {
  std::lock_guard<std::mutex> hold(lock_);
  identities_ = std::move(identities);
}

void SystemInformation::SetNetworkInterfaces(std::function<SAFEARRAY*()> make) {
  std::lock_guard<std::mutex> hold(lock_);
  makeInterfaces_ = std::move(make);
}

HRESULT SystemInformation::AnswerText(const char* call, BSTR* out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  const HRESULT result = Enter(call);
  if (FAILED(result)) return result;
  std::lock_guard<std::mutex> hold(lock_);
  const WString& text = texts_[call];
  *out = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
  return *out ? result : E_OUTOFMEMORY;
}

HRESULT SystemInformation::get_networkInterfaces(SAFEARRAY** interfaces) {
  if (!interfaces) return E_POINTER;
  *interfaces = nullptr;
  if (const HRESULT result = Enter("ISystemInfo::get_networkInterfaces"); FAILED(result))
    return result;
  std::function<SAFEARRAY*()> make;
  {
    std::lock_guard<std::mutex> hold(lock_);
    make = makeInterfaces_;
  }
  if (make) *interfaces = make();
  return S_OK;
}

HRESULT SystemInformation::get_machineName(BSTR* name) { return AnswerText(kMachineName, name); }
HRESULT SystemInformation::get_FQDN(BSTR* name) { return AnswerText(kFQDN, name); }
HRESULT SystemInformation::get_virtualMachineId(BSTR* id) {
  return AnswerText(kVirtualMachineId, id);
}
HRESULT SystemInformation::get_machineId(BSTR* id) { return AnswerText(kMachineId, id); }
HRESULT SystemInformation::get_uniqueId(BSTR* id) { return AnswerText(kUniqueId, id); }

HRESULT SystemInformation::get_isDesktop(VARIANT_BOOL* desktop) {
  if (!desktop) return E_POINTER;
  const HRESULT result = Enter("ISystemInfo::get_isDesktop");
  std::lock_guard<std::mutex> hold(lock_);
  if (SUCCEEDED(result)) *desktop = desktop_;
  return result;
}

HRESULT SystemInformation::get_totalMemory(LONG* memory) {
  if (!memory) return E_POINTER;
  const HRESULT result = Enter("ISystemInfo::get_totalMemory");
  std::lock_guard<std::mutex> hold(lock_);
  *memory = SUCCEEDED(result) ? totalMemory_ : 0;
  return result;
}

HRESULT SystemInformation::get_componentsIdentities(IHostNamedValues** identities) {
  if (!identities) return E_POINTER;
  *identities = nullptr;
  const HRESULT result = Enter("ISystemInfo::get_componentsIdentities");
  if (FAILED(result)) return result;
  std::lock_guard<std::mutex> hold(lock_);
  *identities = identities_.Get();
  if (*identities) (*identities)->AddRef();
  return result;
}

}  // namespace tarnix::host
