#include "common/SystemService.h"

namespace tarnix {

HRESULT CreateSystemService(IHostSystemService** service) {
  CLSID serviceClass;
  HRESULT hr = CLSIDFromString(kHostSystemServiceClassText, &serviceClass);
  if (FAILED(hr)) return hr;
  auto create = [&] {
    return CoCreateInstance(serviceClass, nullptr, kSystemServiceContext, IID_IHostSystemService,
                            reinterpret_cast<void**>(service));
  };
  hr = create();
  // E_NOINTERFACE here usually means the interface cannot be marshalled into this
  // apartment: repair its registration and try once more.
  if (hr != E_NOINTERFACE) return hr;
  if (FAILED(EnsureProxyStubRegistration(IID_IHostSystemService))) return hr;
  return create();
}

namespace {

// Queries `iid` from `source`, once more after a marshalling repair when the first answer
// is E_NOINTERFACE. Answers the result of the last call made: a failed repair's own code.
[[nodiscard]] HRESULT QueryWithRepair(IUnknown* source, REFIID iid, void** object) {
  const HRESULT hr = source->QueryInterface(iid, object);
  if (hr != E_NOINTERFACE) return hr;
  const HRESULT repaired = EnsureProxyStubRegistration(iid);
  if (FAILED(repaired)) return repaired;
  return source->QueryInterface(iid, object);
}

}  // namespace

HRESULT GetServiceInterface(REFIID iid, void** object) {
  if (!object) return E_POINTER;
  *object = nullptr;
  ComPtr<IHostSystemService> service;
  HRESULT hr = CreateSystemService(service.Receive());
  if (FAILED(hr)) return hr;
  if (!service) return E_NOINTERFACE;

  hr = QueryWithRepair(service.Get(), iid, object);
  if (SUCCEEDED(hr)) return hr;

  // The service does not offer the interface itself: ask it for an object that does.
  ComPtr<IUnknown> intermediate;
  hr = service->GetService(iid, intermediate.Receive());
  if (FAILED(hr)) return hr;
  if (!intermediate) return E_NOINTERFACE;
  return QueryWithRepair(intermediate.Get(), iid, object);
}

}  // namespace tarnix
