// The host's system information: the machine's names and ids, its memory, its network
// adapters and the host's component identities.
#pragma once

#include "hostobjects/HostObject.h"

#include <functional>
#include <map>
#include <mutex>

namespace tarnix::host {

class SystemInformation : public HostObject<ISystemInfo> {
 public:
  SystemInformation() : HostObject("SystemInformation") {}

  void SetMachineName(const WString& value) { SetText(kMachineName, value); }
  void SetFQDN(const WString& value) { SetText(kFQDN, value); }
  void SetVirtualMachineId(const WString& value) { SetText(kVirtualMachineId, value); }
  void SetMachineId(const WString& value) { SetText(kMachineId, value); }
  void SetUniqueId(const WString& value) { SetText(kUniqueId, value); }
  void SetTotalMemory(LONG value);
  // What get_isDesktop answers (VARIANT_TRUE unless set).
  void SetDesktopFlag(VARIANT_BOOL value);
  // The collection get_componentsIdentities hands out (null: answers a null pointer).
  void SetComponentsIdentities(ComPtr<IHostNamedValues> identities);
  // Makes the array get_networkInterfaces hands out, anew for each call (the receiver owns
  // it). Without one the call answers a null array.
  void SetNetworkInterfaces(std::function<SAFEARRAY*()> make);

  HRESULT STDMETHODCALLTYPE Refresh() override { return Enter("ISystemInfo::Refresh"); }
  HRESULT STDMETHODCALLTYPE get_networkInterfaces(SAFEARRAY** interfaces) override;
  HRESULT STDMETHODCALLTYPE get_machineName(BSTR* name) override;
  HRESULT STDMETHODCALLTYPE Reserved6() override { return Unused(6); }
  HRESULT STDMETHODCALLTYPE get_isDesktop(VARIANT_BOOL* desktop) override;
  HRESULT STDMETHODCALLTYPE get_FQDN(BSTR* name) override;
  HRESULT STDMETHODCALLTYPE get_totalMemory(LONG* memory) override;
  HRESULT STDMETHODCALLTYPE get_virtualMachineId(BSTR* id) override;
  HRESULT STDMETHODCALLTYPE get_machineId(BSTR* id) override;
  HRESULT STDMETHODCALLTYPE get_uniqueId(BSTR* id) override;
  HRESULT STDMETHODCALLTYPE get_componentsIdentities(IHostNamedValues** identities) override;

  // The calls that answer texts.
  static constexpr const char* kMachineName = "ISystemInfo::get_machineName";
  static constexpr const char* kFQDN = "ISystemInfo::get_FQDN";
  static constexpr const char* kVirtualMachineId = "ISystemInfo::get_virtualMachineId";
  static constexpr const char* kMachineId = "ISystemInfo::get_machineId";
  static constexpr const char* kUniqueId = "ISystemInfo::get_uniqueId";

 protected:
  virtual void SetText(const char* call, const WString& value);

 private:
  HRESULT AnswerText(const char* call, BSTR* out);

  mutable std::mutex lock_;
  std::map<std::string, WString> texts_;
  LONG totalMemory_ = 0;
  VARIANT_BOOL desktop_ = VARIANT_TRUE;
  ComPtr<IHostNamedValues> identities_;
  std::function<SAFEARRAY*()> makeInterfaces_;
};

}  // namespace tarnix::host
