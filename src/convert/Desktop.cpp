#include "convert/Converters.h"

#include "platform/ScopedBstr.h"
#include "platform/ScopedSafeArray.h"

#include <optional>

namespace tarnix::convert {
namespace {

constexpr const WCHAR kNetworkInterfacesFailure[] =
    WSTR("Failed to get_networkInterfaces in function class std::shared_ptr<class CJavaObject> ")
        WSTR("__cdecl CJNIConvertor::GetDesktop(class std::shared_ptr<class CJavaVM>,struct ")
            WSTR("ISystemInfo *)");

// The host's adapter list: a VT_RECORD array held locked while its records are read.
class AdapterList {
 public:
  // A list the host cannot give is logged, and the desktop goes on without one until
  // Records() ends it further down.
  [[nodiscard]] HRESULT Read(Conversion& c, ISystemInfo* system) {
    ScopedSafeArray received;
    const HRESULT hr = system->get_networkInterfaces(received.Receive());
    if (SUCCEEDED(hr)) return Adopt(received.Release());
    c.Log().ErrorWithCode(kNetworkInterfacesFailure, hr);
    return S_OK;
  }

  // Fails, with what the caller must hand on, for an array that is not an adapter list.
  [[nodiscard]] HRESULT Adopt(SAFEARRAY* array) {
    array_.Reset(array);
    if (!array) return E_INVALIDARG;
    VARTYPE type = VT_EMPTY;
    if (FAILED(SafeArrayGetVartype(array, &type)) || type != VT_RECORD) return E_INVALIDARG;
    access_.emplace(array);  // which refuses records of another size
    return access_->result();
  }

  // Null without an array (the host could not give one).
  const ScopedSafeArrayAccess<HostNetworkInterfaceRecord>* Records() const {
    return access_ ? &*access_ : nullptr;
  }

 private:
  ScopedSafeArray array_;
  // Declared after the array: unlocked before it is destroyed.
  std::optional<ScopedSafeArrayAccess<HostNetworkInterfaceRecord>> access_;
};

struct AdapterSetter {
  tarnix::Method<void(jstring)> method;
  BSTR HostNetworkInterfaceRecord::*text;
  const WCHAR* failure;
};

constexpr AdapterSetter kAdapterSetters[] = {
    {methods::NetworkInterface::putMacAddress, &HostNetworkInterfaceRecord::macAddress,
     WSTR("Failed to set the MAC address on the Java network interface object.  %s")},
    {methods::NetworkInterface::putIpAddress, &HostNetworkInterfaceRecord::ipAddress,
     WSTR("Failed to set the IP address on the Java network interface object.  %s")},
    {methods::NetworkInterface::putSubnetMask, &HostNetworkInterfaceRecord::subnetMask,
     WSTR("Failed to set the subnet mask on the Java network interface object.  %s")},
    {methods::NetworkInterface::putSubnet, &HostNetworkInterfaceRecord::subnet,
     WSTR("Failed to set the subnet on the Java network interface object.  %s")},
};
constexpr size_t kTextSetters = sizeof(kAdapterSetters) / sizeof(kAdapterSetters[0]);

// An adapter that cannot be converted or added is left out; the desktop goes on.
void AddAdapter(Conversion& c, const CJavaObject& desktop,
                const HostNetworkInterfaceRecord& record) {
  LocalObject adapter = GetNetworkInterface(c, record);
  if (!adapter) return;
  if (std::optional<WString> failure =
          c.Call(desktop, methods::DesktopInformation::addNetworkInterface, *adapter)) {
    c.Log().Error(WSTR("Failed to add network interface '%s' to the Java desktop object.  %s"),
                  WString(View(record.description)), *failure);
  }
}

}  // namespace

LocalObject GetNetworkInterface(Conversion& c, const HostNetworkInterfaceRecord& adapter) {
  const CJavaClass* adapterClass = c.Class(DataClass::NetworkInterface);
  if (!adapterClass) return std::nullopt;
  LocalString description = c.String(View(adapter.description));
  if (!description) return std::nullopt;
  LocalString texts[kTextSetters];
  for (size_t i = 0; i < kTextSetters; ++i) {
    texts[i] = c.String(View(adapter.*kAdapterSetters[i].text));
    if (!texts[i]) return std::nullopt;
  }
  LocalObject javaAdapter =
      c.Construct(*adapterClass, methods::NetworkInterface::ctorDescription,
                  WSTR("Failed to create a new Java network interface object.  %s"), *description);
  if (!javaAdapter) return std::nullopt;
  for (size_t i = 0; i < kTextSetters; ++i) {
    if (std::optional<WString> failure =
            c.Call(*javaAdapter, kAdapterSetters[i].method, *texts[i])) {
      c.Log().Error(kAdapterSetters[i].failure, *failure);
      return std::nullopt;
    }
  }
  if (std::optional<WString> failure = c.Call(*javaAdapter, methods::NetworkInterface::putLinkSpeed,
                                              static_cast<jint>(adapter.linkSpeed))) {
    c.Log().Error(WSTR("Failed to set the link speed on the Java network interface object.  %s"),
                  *failure);
    return std::nullopt;
  }
  return javaAdapter;
}

LocalObject GetDesktop(Conversion& c, ISystemInfo* system, HRESULT* listFailure) {
  const CJavaClass* desktopClass = c.Class(DataClass::DesktopInformation);
  if (!desktopClass || !system) return std::nullopt;
  AdapterList adapters;
  if (const HRESULT hr = adapters.Read(c, system); FAILED(hr)) {
    *listFailure = hr;
    return std::nullopt;
  }
  ScopedBstr name, fqdn;
  system->get_machineName(name.Receive());
  system->get_FQDN(fqdn.Receive());
  LocalString javaName = c.String(View(name.Get()));
  if (!javaName) return std::nullopt;
  LocalString javaFqdn = c.String(View(fqdn.Get()));
  if (!javaFqdn) return std::nullopt;
  LocalObject desktop =
      c.Construct(*desktopClass, methods::DesktopInformation::ctorNameFQDN,
                  WSTR("Failed to create a new Java desktop object.  %s"), *javaName, *javaFqdn);
  if (!desktop) return std::nullopt;
  LONG memory = 0;
  system->get_totalMemory(&memory);
  if (std::optional<WString> failure = c.Call(*desktop, methods::DesktopInformation::putTotalMemory,
                                              static_cast<jint>(memory))) {
    c.Log().Error(WSTR("Failed to set total memory on the Java desktop object.  %s"), *failure);
    return std::nullopt;
  }

  const ScopedSafeArrayAccess<HostNetworkInterfaceRecord>* records = adapters.Records();
  if (!records) {
    *listFailure = E_INVALIDARG;
    return std::nullopt;
  }
  for (const HostNetworkInterfaceRecord& record : *records) AddAdapter(c, *desktop, record);
  return desktop;
}

}  // namespace tarnix::convert
