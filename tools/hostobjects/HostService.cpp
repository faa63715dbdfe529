#include "hostobjects/HostService.h"

namespace tarnix::host {
namespace {

bool OffersBy(ServiceRoute route, ServiceRoute wanted) {
  return route == ServiceRoute::Both || route == wanted;
}

// What GetService hands out: a separate object from which the interface is queried.
class ServiceProvider : public HostObject<IUnknown> {
 public:
  ServiceProvider(std::shared_ptr<HostServiceOffers> offers, ComPtr<IUnknown> target)
      : HostObject("ServiceProvider"), offers_(std::move(offers)), target_(std::move(target)) {}

 protected:
  HRESULT QueryOther(REFIID iid, void** object) override {
    const InnerWork inner;
    return offers_->IntermediateQuery(iid, target_.Get(), object);
  }

 private:
  std::shared_ptr<HostServiceOffers> offers_;
  ComPtr<IUnknown> target_;
};

class SystemService : public HostObject<IHostSystemService> {
 public:
  explicit SystemService(std::shared_ptr<HostServiceOffers> offers)
      : HostObject("SystemService"), offers_(std::move(offers)) {}

  HRESULT STDMETHODCALLTYPE Reserved3() override { return Unused(3); }
  HRESULT STDMETHODCALLTYPE Reserved4() override { return Unused(4); }
  HRESULT STDMETHODCALLTYPE Reserved5() override { return Unused(5); }
  HRESULT STDMETHODCALLTYPE Reserved6() override { return Unused(6); }
  HRESULT STDMETHODCALLTYPE GetService(REFIID iid, IUnknown** object) override {
    if (object) *object = nullptr;
    if (Watched()) {
      const HRESULT planned = Enter("IHostSystemService::GetService(" + InterfaceName(iid) + ")");
      if (FAILED(planned)) return planned;
    }
    const InnerWork inner;
    return offers_->GetService(iid, object);
  }

 protected:
  HRESULT QueryOther(REFIID iid, void** object) override {
    const InnerWork inner;
    return offers_->Query(iid, object);
  }

 private:
  std::shared_ptr<HostServiceOffers> offers_;
};

class ServiceFactory : public HostObject<IClassFactory> {
 public:
  explicit ServiceFactory(std::shared_ptr<HostServiceOffers> offers)
      : HostObject("ServiceFactory"), offers_(std::move(offers)) {}

  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (outer) return CLASS_E_NOAGGREGATION;
    if (const HRESULT planned = Enter("IClassFactory::CreateInstance"); FAILED(planned))
      return planned;
    if (const HRESULT refused = offers_->Create(); FAILED(refused)) return refused;
    const InnerWork inner;
    return MakeHostObject<SystemService>(offers_)->QueryInterface(iid, object);
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

 private:
  std::shared_ptr<HostServiceOffers> offers_;
};

}  // namespace

void HostServiceOffers::Offer(REFIID iid, ComPtr<IUnknown> object, ServiceRoute route) {
  ComPtr<IUnknown> dropped;  // released outside the lock
  std::lock_guard<std::mutex> hold(lock_);
  for (auto& entry : entries_) {
    if (!IsEqualIID(entry.first, iid)) continue;
    dropped = std::exchange(entry.second.object, std::move(object));
    entry.second.route = route;
    return;
  }
  entries_.emplace_back(iid, Entry{std::move(object), route});
}

void HostServiceOffers::Withdraw(REFIID iid) { Offer(iid, ComPtr<IUnknown>(), ServiceRoute::Both); }

ComPtr<IUnknown> HostServiceOffers::Offered(REFIID iid, ServiceRoute route) {
  std::lock_guard<std::mutex> hold(lock_);
  for (const auto& entry : entries_) {
    if (IsEqualIID(entry.first, iid) && OffersBy(entry.second.route, route))
      return entry.second.object;
  }
  return ComPtr<IUnknown>();
}

HRESULT HostServiceOffers::Query(REFIID iid, void** object) {
  if (const HRESULT scripted = Step(ServiceStep::Query, iid); FAILED(scripted)) return scripted;
  const ComPtr<IUnknown> target = Offered(iid, ServiceRoute::QueryInterface);
  return target ? target->QueryInterface(iid, object) : E_NOINTERFACE;
}

HRESULT HostServiceOffers::GetService(REFIID iid, IUnknown** object) {
  if (!object) return E_POINTER;
  *object = nullptr;
  if (const HRESULT scripted = Step(ServiceStep::GetService, iid); FAILED(scripted))
    return scripted;
  ComPtr<IUnknown> target = Offered(iid, ServiceRoute::GetService);
  if (!target) return E_NOINTERFACE;
  // The offers live as long as any object that refers to them.
  *object = MakeHostObject<ServiceProvider>(shared_from_this(), std::move(target)).Detach();
  return S_OK;
}

HRESULT HostServiceOffers::IntermediateQuery(REFIID iid, IUnknown* target, void** object) {
  if (const HRESULT scripted = Step(ServiceStep::IntermediateQuery, iid); FAILED(scripted))
    return scripted;
  return target ? target->QueryInterface(iid, object) : E_NOINTERFACE;
}

void HostServiceOffers::Clear() {
  std::vector<std::pair<IID, Entry>> dropped;  // released outside the lock
  std::lock_guard<std::mutex> hold(lock_);
  dropped.swap(entries_);
}

HostServiceRegistration::HostServiceRegistration(std::shared_ptr<HostServiceOffers> offers)
    : offers_(std::move(offers)) {
  ComPtr<ServiceFactory> factory = MakeHostObject<ServiceFactory>(offers_);
  registration_ =
      CoRegisterClassObject(CLSID_HostSystemService, static_cast<IClassFactory*>(factory.Get()),
                            CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie_);
}

HostServiceRegistration::~HostServiceRegistration() { Revoke(); }

HRESULT HostServiceRegistration::Revoke() {
  offers_->Clear();
  if (FAILED(registration_) || cookie_ == 0) return S_OK;
  return CoRevokeClassObject(std::exchange(cookie_, 0));
}

}  // namespace tarnix::host
