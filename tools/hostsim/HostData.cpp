#include "HostData.h"

#include <ctime>
#include <vector>

namespace tarnix::hostsim {
namespace {

using namespace tarnix::host;

// Now, as the host's OLE dates count: days since 30 December 1899.
DATE Now() { return static_cast<double>(std::time(nullptr)) / 86400.0 + 25569.0; }

struct Person {
  LONG id;
  const WCHAR* user;
  const WCHAR* client;
  const WCHAR* address;
};
const Person kPeople[] = {
    {1, WSTR("anna.berg"), WSTR("THIN-CLIENT-07"), WSTR("10.20.30.41")},
    {2, WSTR("li.wei"), WSTR("LAPTOP-LW-2291"), WSTR("10.20.31.17")},
    {3, WSTR("omar.haddad"), WSTR("KIOSK-LOBBY-1"), WSTR("10.20.40.3")},
};

ComPtr<Sample> Application(double cpu, LONG memoryMb) {
  auto app = MakeHostObject<Sample>(Now());
  app->AddMetric(WSTR("cpuPercent"), R8(cpu)).AddMetric(WSTR("memoryMB"), I4(memoryMb));
  return app;
}

// What one session did in the last interval, with its published applications.
ComPtr<Sample> SessionInstance(LONG id) {
  auto instance = MakeHostObject<Sample>(Now());
  instance->AddMetric(WSTR("cpuPercent"), R8(3.5 * id))
      .AddMetric(WSTR("latencyMs"), I4(18 + 7 * id))
      .AddMetric(WSTR("framesPerSecond"), R4(24.0f));
  instance->AddToCollection(WSTR("remoteApps"), WSTR("WINWORD.EXE"), Application(1.2, 212).Get());
  if (id != 3) {
    instance->AddToCollection(WSTR("remoteApps"), WSTR("chrome.exe"), Application(6.8, 640).Get());
  }
  return instance;
}

}  // namespace

ComPtr<IUnknown> Combine(std::initializer_list<ComPtr<IUnknown>> parts) {
  return AsUnknown(MakeHostObject<CombinedObject>(parts));
}

void DescribeDesktop(SystemInformation& system) {
  system.SetMachineName(WSTR("DESK-0042"));
  system.SetFQDN(WSTR("desk-0042.corp.example"));
  system.SetMachineId(WSTR("4C4C4544-0042-4D10-8038-B7C04F4A3132"));
  system.SetVirtualMachineId(WSTR("vm-5003a1c2"));
  system.SetUniqueId(WSTR("unique-77e1"));
  system.SetTotalMemory(16384);
  system.SetNetworkInterfaces([] {
    return MakeAdapterArray({
        {WSTR("Intel(R) Ethernet Connection I219-LM"), WSTR("00-1A-2B-3C-4D-5E"),
         WSTR("10.20.30.40"), WSTR("255.255.255.0"), WSTR("10.20.30.0"), 1000},
        {WSTR("Wi-Fi 6 AX201 160MHz"), WSTR("00-1A-2B-3C-4D-5F"), WSTR("192.168.1.23"),
         WSTR("255.255.255.0"), WSTR("192.168.1.0"), 866},
    });
  });
}

ComPtr<UserSession> MakeSession(LONG id) {
  const Person& person = kPeople[(id >= 1 && id <= 3) ? id - 1 : 0];
  auto session = MakeHostObject<UserSession>(
      id, WSTR("S-1-5-21-3623811015-3361044348-30300820-10") + WString(1, WCHAR('0' + id)),
      person.user, WSTR("CORP"));
  session->Properties()
      .Add(WSTR("clientName"), Text(person.client))
      .Add(WSTR("clientAddress"), Text(person.address))
      .Add(WSTR("protocol"), Text(WSTR("BLAST")));
  return session;
}

ComPtr<SessionSource> MakeSessions() {
  auto sessions = MakeHostObject<SessionSource>();
  for (const Person& person : kPeople) sessions->Add(MakeSession(person.id));
  return sessions;
}

ComPtr<IUnknown> MakeSample() {
  auto sample = MakeHostObject<Sample>(Now());
  sample->AddMetric(WSTR("cpuPercent"), R8(23.5))
      .AddMetric(WSTR("memoryUsedMB"), UI8(9216))
      .AddMetric(WSTR("diskQueueLength"), I4(2));
  for (const Person& person : kPeople) {
    sample->AddInstance(WString(1, WCHAR('0' + person.id)), SessionInstance(person.id).Get());
  }
  return AsUnknown(sample);
}

ComPtr<IUnknown> MakeLogoff(LONG id) {
  return Combine({AsUnknown(MakeSession(id)), AsUnknown(SessionInstance(id))});
}

ComPtr<IUnknown> MakeExtendedData() {
  // The attributes go as a map of texts, the metrics with their instances into a sample;
  // each item answers both ways.
  auto attributes = MakeHostObject<NamedValues>();
  attributes->SetText(WSTR("source"), WSTR("gpu-monitor"));
  attributes->SetText(WSTR("driver"), WSTR("535.104"));
  auto utilisation = MakeHostObject<ValueEnumerator>();
  utilisation->Add(WSTR("GPU0"), R8(37.5)).Add(WSTR("GPU1"), R8(12.0));
  auto metrics = MakeHostObject<ValueEnumerator>();
  metrics->Add(WSTR("gpuUtilization"), Object(utilisation.Get()))
      .Add(WSTR("encoderSessions"), Object(nullptr));
  const ComPtr<IUnknown> item = Combine({AsUnknown(attributes), AsUnknown(metrics)});

  auto values = MakeHostObject<NamedValues>();
  values->SetValue(WSTR("meta-data"), Object(item.Get()).Get());
  values->SetValue(WSTR("metrics"), Object(item.Get()).Get());
  return Combine({AsUnknown(values), AsUnknown(MakeHostObject<Sample>(Now()))});
}

ComPtr<IUnknown> MakeTraceRoute() {
  auto metadata = MakeHostObject<NamedValues>();
  metadata->SetText(WSTR("target"), WSTR("msgserver.corp.example"));
  metadata->SetText(WSTR("protocol"), WSTR("ICMP"));
  metadata->SetText(WSTR("hops"), WSTR("3"));
  auto values = MakeHostObject<NamedValues>();
  values->SetValue(WSTR("metadata"), Object(metadata.Get()).Get());
  values->SetValue(WSTR("route"), Text(WSTR("1  10.20.30.1  0.412 ms\n2  10.0.0.1  1.870 ms\n"
                                            "3  172.16.8.20  2.954 ms"))
                                      .Get());
  return AsUnknown(values);
}

}  // namespace tarnix::hostsim
