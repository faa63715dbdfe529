#include "CheckHost.h"

#include "CheckText.h"
#include "platform/Win32.h"
#include "tarnix/HostInterfaces.h"

#include <atomic>
#include <mutex>
#include <vector>

namespace tarnix::check {

// One object behind every interface the component asks of the host. It lives exactly as
// long as its owner, who revokes the registration before letting it go; the reference
// count only keeps COM's rules for the component's calls.
class CheckHost::Services : public IClassFactory,
                            public IHostSystemService,
                            public IHostLogger,
                            public ISystemInfo {
 public:
  // IUnknown, shared by every interface.
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (!object) return E_POINTER;
    *object = Interface(iid);
    if (!*object) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override { return --references_; }

  // IClassFactory
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
    if (object) *object = nullptr;
    return outer ? CLASS_E_NOAGGREGATION : QueryInterface(iid, object);
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

  // IHostSystemService and IHostLogger share their placeholder slots.
  HRESULT STDMETHODCALLTYPE Reserved3() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reserved4() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reserved5() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reserved6() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reserved7() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reserved8() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetService(REFIID iid, IUnknown** object) override {
    return QueryInterface(iid, reinterpret_cast<void**>(object));
  }

  // IHostLogger
  HRESULT STDMETHODCALLTYPE LogError(BSTR, BSTR message) override { return Keep("error", message); }
  HRESULT STDMETHODCALLTYPE LogWarning(BSTR, BSTR message) override {
    return Keep("warning", message);
  }
  HRESULT STDMETHODCALLTYPE LogInfo(BSTR, BSTR message) override { return Keep("info", message); }
  HRESULT STDMETHODCALLTYPE LogLevel(BSTR, LONG, BSTR message) override {
    return Keep("trace", message);
  }

  // ISystemInfo: only the unique id is ever asked by the configuration lookup.
  HRESULT STDMETHODCALLTYPE Refresh() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_networkInterfaces(SAFEARRAY**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_machineName(BSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_isDesktop(VARIANT_BOOL*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_FQDN(BSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_totalMemory(LONG*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_virtualMachineId(BSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_machineId(BSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_uniqueId(BSTR* id) override {
    if (!id) return E_POINTER;
    uniqueIdAsked_ = true;
    *id = SysAllocString(WSTR(""));
    return *id ? S_OK : E_OUTOFMEMORY;
  }
  HRESULT STDMETHODCALLTYPE get_componentsIdentities(IHostNamedValues**) override {
    return E_NOTIMPL;
  }

  std::vector<LoggedLine> TakeLines() {
    std::vector<LoggedLine> taken;
    std::lock_guard<std::mutex> hold(lock_);
    taken.swap(lines_);
    return taken;
  }
  bool TakeUniqueIdAsked() { return uniqueIdAsked_.exchange(false); }

 private:
  void* Interface(REFIID iid) {
    if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IHostSystemService)) {
      return static_cast<IHostSystemService*>(this);
    }
    if (IsEqualIID(iid, IID_IClassFactory)) return static_cast<IClassFactory*>(this);
    if (IsEqualIID(iid, IID_IHostLogger)) return static_cast<IHostLogger*>(this);
    if (IsEqualIID(iid, IID_ISystemInfo)) return static_cast<ISystemInfo*>(this);
    return nullptr;
  }

  HRESULT Keep(const char* level, BSTR message) {
    std::lock_guard<std::mutex> hold(lock_);
    lines_.push_back({level, message ? WideToUtf8(message, SysStringLen(message)) : std::string()});
    return S_OK;
  }

  std::atomic<ULONG> references_{1};
  std::atomic<bool> uniqueIdAsked_{false};
  std::mutex lock_;
  std::vector<LoggedLine> lines_;
};

CheckHost::CheckHost()
    : services_(std::make_unique<Services>()),
      apartment_(CoInitializeEx(nullptr, COINIT_MULTITHREADED)) {
  registration_ =
      CoRegisterClassObject(CLSID_HostSystemService, static_cast<IClassFactory*>(services_.get()),
                            CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie_);
}

CheckHost::~CheckHost() {
  if (SUCCEEDED(registration_)) CoRevokeClassObject(cookie_);
  if (SUCCEEDED(apartment_)) CoUninitialize();
}

bool CheckHost::Registered() const { return SUCCEEDED(registration_); }

std::vector<LoggedLine> CheckHost::TakeLines() { return services_->TakeLines(); }

bool CheckHost::TakeUniqueIdAsked() { return services_->TakeUniqueIdAsked(); }

}  // namespace tarnix::check
