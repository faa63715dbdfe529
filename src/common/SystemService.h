// The host's system service: every host interface the component uses is obtained here.
// Nothing is cached; each request creates the service anew and releases it before
// returning. Nothing is logged here either: the logger is itself obtained through it.
#pragma once

#include "platform/ComPtr.h"
#include "platform/Win32.h"
#include "tarnix/HostInterfaces.h"

namespace tarnix {

// Contexts in which the service may live: in-process server and handler, local and remote
// server.
inline constexpr DWORD kSystemServiceContext = 0x17;

[[nodiscard]] HRESULT CreateSystemService(IHostSystemService** service);

// Obtains the interface `iid` from the host, directly from the service or through its
// GetService, repairing a missing marshalling registration on the way. The caller owns the
// reference placed in `*object`.
[[nodiscard]] HRESULT GetServiceInterface(REFIID iid, void** object);

template <class T>
[[nodiscard]] HRESULT GetServiceInterface(REFIID iid, ComPtr<T>* object) {
  return GetServiceInterface(iid, object->ReceiveVoid());
}

[[nodiscard]] inline HRESULT GetHostLogger(ComPtr<IHostLogger>* logger) {
  return GetServiceInterface(IID_IHostLogger, logger);
}
[[nodiscard]] inline HRESULT GetSystemInfo(ComPtr<ISystemInfo>* info) {
  return GetServiceInterface(IID_ISystemInfo, info);
}
[[nodiscard]] inline HRESULT GetActionExecutor(ComPtr<IHostActionExecutor>* executor) {
  return GetServiceInterface(IID_IHostActionExecutor, executor);
}
[[nodiscard]] inline HRESULT GetAuxiliaryService(ComPtr<IHostAuxiliaryService>* service) {
  return GetServiceInterface(IID_IHostAuxiliaryService, service);
}

// Makes sure the interface `iid` can be marshalled: writes the automation marshaller as its
// proxy/stub where no registration names one, leaving any existing registration alone.
// Answers success when the interface's text form cannot be made, and when the registry
// keys can be neither opened nor created without the system reporting an error: the
// callers then simply try once more.
[[nodiscard]] HRESULT EnsureProxyStubRegistration(REFIID iid);

}  // namespace tarnix
