// The host's system service, registered as a class object under its class identifier so
// that the component's own CoCreateInstance finds it (natively and under Wine alike). What
// it offers, and how, is set per interface; every instance created shares that setting.
#pragma once

#include "hostobjects/HostObject.h"

#include <memory>
#include <mutex>
#include <vector>

namespace tarnix::host {

// How the service hands out an interface.
enum class ServiceRoute {
  QueryInterface,  // the service object answers it itself
  GetService,      // only through GetService (slot 7), on a separate object
  Both,
};

// The steps of the service where a harness may answer instead (HostServiceOffers::Step).
enum class ServiceStep { Create, Query, GetService, IntermediateQuery };

class HostServiceOffers : public std::enable_shared_from_this<HostServiceOffers> {
 public:
  virtual ~HostServiceOffers() = default;

  // Offers `object` (which must answer `iid`) along `route`.
  void Offer(REFIID iid, ComPtr<IUnknown> object, ServiceRoute route);
  template <class T>
  void Offer(REFIID iid, const ComPtr<T>& object, ServiceRoute route) {
    Offer(iid, AsUnknown(object), route);
  }
  // Stops offering `iid`.
  void Withdraw(REFIID iid);

  // The service's own answers; used by its objects: the class factory's CreateInstance,
  // the service's own QueryInterface of `iid`, its GetService of `iid`, and the
  // QueryInterface of `iid` on the object GetService gave.
  HRESULT Create() { return Step(ServiceStep::Create, IID_IUnknown); }
  HRESULT Query(REFIID iid, void** object);
  HRESULT GetService(REFIID iid, IUnknown** object);
  HRESULT IntermediateQuery(REFIID iid, IUnknown* target, void** object);
  void Clear();

 protected:
  // Runs before each step: a failure is answered instead (S_OK: the step goes on).
  virtual HRESULT Step(ServiceStep, REFIID) { return S_OK; }

 private:
  struct Entry {
    ComPtr<IUnknown> object;
    ServiceRoute route = ServiceRoute::QueryInterface;
  };
  // The object offered for `iid` along `route`, or null.
  ComPtr<IUnknown> Offered(REFIID iid, ServiceRoute route);

  std::mutex lock_;
  std::vector<std::pair<IID, Entry>> entries_;
};

// Registers the class factory of the system service for its lifetime. COM must be
// initialised on the thread (ComApartment).
class HostServiceRegistration {
 public:
  explicit HostServiceRegistration(
      std::shared_ptr<HostServiceOffers> offers = std::make_shared<HostServiceOffers>());
  ~HostServiceRegistration();
  HostServiceRegistration(const HostServiceRegistration&) = delete;
  HostServiceRegistration& operator=(const HostServiceRegistration&) = delete;

  HostServiceOffers& Offers() { return *offers_; }
  // CoRegisterClassObject's answer.
  HRESULT Registration() const { return registration_; }
  // Withdraws every offer and revokes the class object (also done on destruction); the
  // revocation's answer.
  HRESULT Revoke();

 private:
  std::shared_ptr<HostServiceOffers> offers_;
  DWORD cookie_ = 0;
  HRESULT registration_ = E_FAIL;
};

// COM initialised (multithreaded) on the calling thread for the owner's lifetime.
class ComApartment {
 public:
  ComApartment() : result_(CoInitializeEx(nullptr, COINIT_MULTITHREADED)) {}
  ~ComApartment() {
    if (SUCCEEDED(result_)) CoUninitialize();
  }
  ComApartment(const ComApartment&) = delete;
  ComApartment& operator=(const ComApartment&) = delete;

  HRESULT Result() const { return result_; }

 private:
  HRESULT result_;
};

}  // namespace tarnix::host
