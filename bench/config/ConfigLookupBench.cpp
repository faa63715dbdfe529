// What one server-information lookup costs, source by source, and whether repeating it
// makes the process grow.
#include <benchmark/benchmark.h>

#include "config/ServerConfig.h"
#include "fixtures/FakeHostService.h"
#include "fixtures/FakeSystemInfo.h"
#include "fixtures/RecordingLogger.h"
#include "fixtures/TestRegistry.h"
#include "platform/ScopedBstr.h"
#include "platform/ScopedVariant.h"
#include "tarnix/RMICommManager.h"

#include <fstream>
#include <string>

using namespace tarnix;
using namespace tarnix::testing;

namespace {

const WString kLegacyKey = WSTR("Software\\Corvane, Inc.\\Corvane Palisade\\Node Manager");
const WString kNamedKey = WSTR("Software\\Tarnix Bench\\Server");

// A configuration document of the size the agent keeps, with the entry near its end.
WString ConfigDocument() {
  WString xml = WSTR("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<configuration>\n");
  for (int i = 0; i < 60; ++i) {
    xml += WSTR("  <setting name=\"option") + WString(1, WCHAR('a' + i % 26)) +
           WSTR("\" value=\"some configured value\"/>\n");
  }
  xml += WSTR("  <server><serverConfigRegistry>") + kNamedKey +
         WSTR("</serverConfigRegistry></server>\n</configuration>\n");
  return xml;
}

long ResidentKilobytes() {
  std::ifstream statm("/proc/self/statm");
  long pages = 0, resident = 0;
  statm >> pages >> resident;
  return resident * 4;
}

// The host and the registry for one benchmark.
class Host {
 public:
  Host() {
    logger_ = MakeHostObject<RecordingLogger>();
    info_ = MakeHostObject<FakeSystemInfo>();
    info_->SetUniqueId(WSTR("bench-unique-id"));
    service_.Setup().Offer(IID_ISystemInfo, info_, ServiceRoute::QueryInterface);
  }
  void WithLogger() {
    service_.Setup().Offer(IID_IHostLogger, logger_, ServiceRoute::QueryInterface);
  }
  TestRegistry& Registry() { return registry_; }
  // The recording logger keeps every line; a long run must not measure its growth.
  void ForgetLines() { logger_->Clear(); }

 private:
  ComApartment apartment_;
  RegisteredHostService service_;
  ComPtr<RecordingLogger> logger_;
  ComPtr<FakeSystemInfo> info_;
  TestRegistry registry_;
};

void FreeAll(WCHAR* url, WCHAR* serviceValue, WCHAR* certificate) {
  SysFreeString(url);
  SysFreeString(serviceValue);
  SysFreeString(certificate);
}

void BM_FindEntryInDocumentText(benchmark::State& state) {
  ComApartment apartment;
  ScopedVariant config(ConfigDocument().c_str());
  for (auto _ : state) {
    ScopedBstr path;
    benchmark::DoNotOptimize(FindServerConfigRegistry(config.Get(), path.Receive()));
  }
  state.SetBytesProcessed(state.iterations() * ConfigDocument().size() * sizeof(WCHAR));
}
BENCHMARK(BM_FindEntryInDocumentText);

void BM_GetServerInfoFromLegacyValue(benchmark::State& state) {
  Host host;
  host.Registry().SetString(HKEY_LOCAL_MACHINE, kLegacyKey, WSTR("Zelmar Server URL"),
                            WSTR("https://server:8443/adapter|service|certificate"));
  ScopedVariant config(WSTR("<c/>"));
  for (auto _ : state) {
    WCHAR *url = nullptr, *serviceValue = nullptr, *certificate = nullptr;
    benchmark::DoNotOptimize(
        CRMIConfigLoader::GetServerInfo(config.Get(), &url, &serviceValue, &certificate));
    FreeAll(url, serviceValue, certificate);
  }
}
BENCHMARK(BM_GetServerInfoFromLegacyValue);

// The longest successful road: the legacy lookup fails (and logs), the document names the
// key, the key's two values are read and the host gives the unique id.
void BM_GetServerInfoThroughDocument(benchmark::State& state) {
  Host host;
  host.WithLogger();
  host.Registry().SetString(HKEY_LOCAL_MACHINE, kNamedKey, WSTR("MessageServerURL"),
                            WSTR("https://server:8443/adapter"));
  host.Registry().SetString(HKEY_LOCAL_MACHINE, kNamedKey, WSTR("AdapterCertificate"),
                            WString(1500, WCHAR('c')));
  ScopedVariant config(ConfigDocument().c_str());
  for (auto _ : state) {
    WCHAR *url = nullptr, *serviceValue = nullptr, *certificate = nullptr;
    benchmark::DoNotOptimize(
        CRMIConfigLoader::GetServerInfo(config.Get(), &url, &serviceValue, &certificate));
    FreeAll(url, serviceValue, certificate);
    state.PauseTiming();
    host.ForgetLines();
    state.ResumeTiming();
  }
}
BENCHMARK(BM_GetServerInfoThroughDocument)->Unit(benchmark::kMicrosecond);

// Memory over many lookups that run every source (no host: the fakes keep every object
// they ever made, which would be measured instead). Resident size after the first round
// against the last.
void BM_ResidentGrowthOverAllSources(benchmark::State& state) {
  ComApartment apartment;
  TestRegistry registry;
  registry.SetString(HKEY_LOCAL_MACHINE, kNamedKey, WSTR("MessageServerURL"), WSTR("https://s"));
  registry.SetString(HKEY_LOCAL_MACHINE, kNamedKey, WSTR("AdapterCertificate"),
                     WString(1500, WCHAR('c')));
  ScopedVariant config(ConfigDocument().c_str());
  auto round = [&] {
    for (int i = 0; i < 1000; ++i) {
      WCHAR *url = nullptr, *serviceValue = nullptr, *certificate = nullptr;
      benchmark::DoNotOptimize(
          CRMIConfigLoader::GetServerInfo(config.Get(), &url, &serviceValue, &certificate));
      FreeAll(url, serviceValue, certificate);
    }
  };
  round();
  const long warm = ResidentKilobytes();
  for (auto _ : state) round();
  state.SetItemsProcessed(state.iterations() * 1000);
  state.counters["rss_growth_kb"] = static_cast<double>(ResidentKilobytes() - warm);
}
BENCHMARK(BM_ResidentGrowthOverAllSources)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
