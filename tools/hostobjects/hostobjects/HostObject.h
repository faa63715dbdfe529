// The host's own COM objects: each counts its references and frees itself when the last
// goes. A watcher (one per process, none by default) sees every object made, retired or
// misused and every call the component makes on one, so that a harness can check reference
// balance or fail a chosen call without the objects knowing about it.
#pragma once

#include "platform/ComPtr.h"
#include "platform/Win32.h"
#include "tarnix/HostInterfaces.h"

#include <atomic>
#include <string>
#include <tuple>
#include <utility>

namespace tarnix::host {

// The identifier of a host interface, for the objects' QueryInterface. Hosts that
// implement further interfaces add their own specialisations.
template <class Interface>
struct InterfaceId;

#define TARNIX_HOST_INTERFACE_ID(Interface, iid) \
  template <>                                    \
  struct InterfaceId<Interface> {                \
    static const IID& Get() { return iid; }      \
  }

TARNIX_HOST_INTERFACE_ID(IUnknown, IID_IUnknown);
TARNIX_HOST_INTERFACE_ID(IClassFactory, IID_IClassFactory);
TARNIX_HOST_INTERFACE_ID(IHostSystemService, IID_IHostSystemService);
TARNIX_HOST_INTERFACE_ID(IHostLogger, IID_IHostLogger);
TARNIX_HOST_INTERFACE_ID(ISystemInfo, IID_ISystemInfo);
TARNIX_HOST_INTERFACE_ID(IHostNamedValues, IID_IHostNamedValues);
// The host registers its callbacks itself and the component never asks for the interface,
// so it has no published identifier; the host uses one of its own.
inline constexpr IID kHostIidDataDumpCallback = {
    0x9949CC8A, 0x61B9, 0x46FB, {0xB0, 0x26, 0xBC, 0x95, 0xC2, 0x93, 0xF0, 0xC6}};
TARNIX_HOST_INTERFACE_ID(IDataDumpCallback, kHostIidDataDumpCallback);
TARNIX_HOST_INTERFACE_ID(IHostActionExecutor, IID_IHostActionExecutor);
TARNIX_HOST_INTERFACE_ID(IHostAuxiliaryService, IID_IHostAuxiliaryService);

class HostObjectBase;

// Sees every host object of the process. Its calls come from any thread.
class HostObjectWatcher {
 public:
  virtual void Created(HostObjectBase& object) = 0;
  // The last reference went. True: the watcher keeps the object and frees it later.
  virtual bool Retired(HostObjectBase& object) = 0;
  // A reference counted wrongly, or an operation the component must never call.
  virtual void Misused(const HostObjectBase& object, const std::string& what) = 0;
  // A call of the component about to be answered ("ISystemInfo::get_machineId",
  // "QueryInterface(IHostSample)"); a failure code is answered instead of the work.
  virtual HRESULT Entering(const HostObjectBase& object, const std::string& call) = 0;

 protected:
  ~HostObjectWatcher() = default;
};

// Installs the watcher (null: none). Set it before any host object is made.
void WatchHostObjects(HostObjectWatcher* watcher);

// The counting half of every host object: not a COM interface itself.
class HostObjectBase {
 public:
  HostObjectBase(const HostObjectBase&) = delete;
  HostObjectBase& operator=(const HostObjectBase&) = delete;
  virtual ~HostObjectBase();

  // References held now, and calls made over the object's life (for a leak report).
  ULONG RefCount() const { return refs_.load(); }
  ULONG AddRefCalls() const { return addRefs_.load(); }
  ULONG ReleaseCalls() const { return releases_.load(); }
  const std::string& Name() const { return name_; }

  // Marks, for its lifetime on the calling thread, the work an object does for a call
  // already seen (a service handing out another object, a combined object asking its
  // parts): the host talking to itself is not a call of the component.
  class InnerWork {
   public:
    InnerWork();
    ~InnerWork();
    InnerWork(const InnerWork&) = delete;
    InnerWork& operator=(const InnerWork&) = delete;
  };

 protected:
  explicit HostObjectBase(std::string name);
  // Whether a watcher sees calls now: objects skip naming their calls when none does.
  static bool Watched();
  // Shows the call to the watcher: its failure code, or S_OK.
  virtual HRESULT Enter(const std::string& call);
  HRESULT EnterQuery(REFIID iid);
  // An operation the component must never call.
  HRESULT Unused(int slot);
  ULONG CountedAddRef();
  // Frees the object (or hands it to the watcher) when the last reference goes.
  ULONG CountedRelease();

 private:
  std::string name_;
  std::atomic<bool> retired_{false};
  std::atomic<ULONG> refs_{0};
  std::atomic<ULONG> addRefs_{0};
  std::atomic<ULONG> releases_{0};
};

// A host object implementing the given interfaces. Derived classes implement the
// interfaces' own operations; QueryInterface answers IUnknown and each listed interface,
// and anything else through QueryOther.
template <class... Interfaces>
class HostObject : public HostObjectBase, public Interfaces... {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (const HRESULT planned = EnterQuery(iid); FAILED(planned)) return planned;
    if (IsEqualIID(iid, IID_IUnknown)) {
      *object = static_cast<IUnknown*>(static_cast<First*>(this));
    } else {
      (TryInterface<Interfaces>(iid, object) || ...);
    }
    if (!*object) return QueryOther(iid, object);
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return CountedAddRef(); }
  ULONG STDMETHODCALLTYPE Release() override { return CountedRelease(); }

 protected:
  explicit HostObject(std::string name) : HostObjectBase(std::move(name)) {}
  // Interfaces beyond the listed ones; the answer must AddRef what it gives.
  virtual HRESULT QueryOther(REFIID, void**) { return E_NOINTERFACE; }

 private:
  using First = std::tuple_element_t<0, std::tuple<Interfaces...>>;
  template <class Interface>
  bool TryInterface(REFIID iid, void** object) {
    if (!IsEqualIID(iid, InterfaceId<Interface>::Get())) return false;
    *object = static_cast<Interface*>(this);
    return true;
  }
};

// Makes a host object; the pointer returned holds its first reference.
template <class Object, class... Args>
ComPtr<Object> MakeHostObject(Args&&... args) {
  return ComPtr<Object>(new Object(std::forward<Args>(args)...));
}

// The object as IUnknown, with a reference of its own.
template <class T>
ComPtr<IUnknown> AsUnknown(const ComPtr<T>& object) {
  IUnknown* unknown = nullptr;
  if (object) object->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&unknown));
  return ComPtr<IUnknown>::Attach(unknown);
}

// The readable name of a host interface, or its identifier.
std::string InterfaceName(REFIID iid);

}  // namespace tarnix::host
