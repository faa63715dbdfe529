#include "HostReads.h"

#include "common/SystemService.h"
#include "fixtures/HostObjectWatch.h"
#include "platform/ComPtr.h"
#include "platform/ScopedVariant.h"

namespace tarnix::bench {
namespace {

void ReadMetrics(IHostSample* source) {
  ComPtr<IHostEnumerator> metrics;
  if (FAILED(source->get_metrics(1, metrics.Receive()))) return;
  ScopedBstr name;
  ScopedVariant value;
  while (metrics->Next(name.Receive(), value.Receive()) == S_OK) benchmark::DoNotOptimize(value);
}

void ReadSession(IHostUserSession* session) {
  LONG id = 0;
  VARIANT_BOOL connected = 0;
  ScopedBstr sid, user, domain;
  session->get_id(&id);
  session->get_sid(sid.Receive());
  session->get_user(user.Receive());
  session->get_domain(domain.Receive());
  session->get_connected(&connected);
  ComPtr<IHostPropertyBox> box;
  ComPtr<IHostEnumerator> properties;
  if (FAILED(session->get_propertyBox(box.Receive())) ||
      FAILED(box->get_enumerator(properties.Receive()))) {
    return;
  }
  ScopedBstr name;
  ScopedVariant value;
  while (properties->Next(name.Receive(), value.Receive()) == S_OK) value.ChangeType(VT_BSTR);
}

}  // namespace

void ReadSample(IHostSample* sample, IHostSessionSource* sessions) {
  DATE time = 0;
  sample->get_time(&time);
  ReadMetrics(sample);
  ComPtr<IHostSampleEnumerator> instances;
  if (FAILED(sample->get_instances(instances.Receive()))) return;
  ScopedBstr key;
  ComPtr<IHostSample> instance;
  while (instances->Next(key.Receive(), instance.Receive()) == S_OK) {
    ComPtr<IHostUserSession> session;
    if (FAILED(sessions->GetSession(StrToIntW(key.Get()), session.Receive()))) continue;
    ReadSession(session.Get());
    ReadMetrics(instance.Get());
    ComPtr<IHostSampleEnumerator> apps;
    ScopedBstr collection(WSTR("remoteApps"));
    if (FAILED(instance->get_collection(collection.Get(), apps.Receive()))) continue;
    ScopedBstr id;
    ComPtr<IHostSample> app;
    while (apps->Next(id.Receive(), app.Receive()) == S_OK) ReadMetrics(app.Get());
  }
}

HRESULT ReadIdentity(ISystemInfo* system, HostIdentity& identity) {
  system->Refresh();
  HRESULT hr = system->get_machineId(identity.machineId.Receive());
  if (SUCCEEDED(hr)) hr = system->get_virtualMachineId(identity.virtualMachineId.Receive());
  if (SUCCEEDED(hr)) hr = system->get_uniqueId(identity.uniqueId.Receive());
  if (FAILED(hr)) return hr;
  ComPtr<IHostNamedValues> identities;
  if (FAILED(system->get_componentsIdentities(identities.Receive())) || !identities) return S_OK;
  ScopedBstr name(WSTR("Verdant"));
  ScopedVariant value;
  if (SUCCEEDED(identities->get_Item(name.Get(), value.Receive()))) value.ChangeType(VT_BSTR);
  return S_OK;
}

HRESULT ReadDumpDataHost(ISystemInfo* system, IUnknown* data, HostIdentity& identity,
                         ComPtr<IHostSample>& sample, ComPtr<IHostSessionSource>& sessions) {
  const HRESULT hr = ReadIdentity(system, identity);
  if (FAILED(hr)) return hr;
  VARIANT_BOOL desktop = VARIANT_FALSE;
  system->get_isDesktop(&desktop);
  ComPtr<IHostUserSession> session;
  data->QueryInterface(IID_IHostUserSession, session.ReceiveVoid());
  data->QueryInterface(IID_IHostSample, sample.ReceiveVoid());
  GetServiceInterface(IID_IHostSessionSource, sessions.ReceiveVoid());
  return sample && sessions ? S_OK : E_NOINTERFACE;
}

void FakeSweep::After(benchmark::State& state) {
  if (++calls_ % 256 != 0) return;
  state.PauseTiming();
  testing::FreeRetiredObjects();
  state.ResumeTiming();
}

}  // namespace tarnix::bench
