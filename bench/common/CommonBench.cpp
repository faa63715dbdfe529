#include "common/HostLog.h"
#include "common/ProductName.h"
#include "common/SystemService.h"
#include "fixtures/FakeHostService.h"

#include <benchmark/benchmark.h>

namespace tarnix {
namespace {

const WCHAR kLongPrefix[] = WSTR(
    "Failed to load server config in function long __cdecl CRMIConfigLoader::GetServerInfo("
    "struct tagVARIANT,wchar_t **,wchar_t **,wchar_t **)");
const HRESULT kFileNotFound = static_cast<HRESULT>(0x80070002);

// A host logger that drops everything, so that only the component's side is measured.
class DiscardingLogger : public testing::HostObject<IHostLogger> {
 public:
  DiscardingLogger() : HostObject("DiscardingLogger") {}
  HRESULT STDMETHODCALLTYPE Reserved3() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reserved4() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reserved5() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reserved6() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reserved7() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reserved8() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE LogError(BSTR, BSTR) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE LogWarning(BSTR, BSTR) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE LogInfo(BSTR, BSTR) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE LogLevel(BSTR, LONG, BSTR) override { return S_OK; }
};

void FormatMessageLine(benchmark::State& state) {
  const WString path(WSTR("C:\\Program Files\\Vendor\\Agent\\jre"));
  for (auto _ : state) {
    benchmark::DoNotOptimize(FormatText(WSTR("Using JRE from '%s'."), path));
  }
}
BENCHMARK(FormatMessageLine);

void ResultCodeSuffixWithSystemText(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(ResultCodeSuffix(kFileNotFound));
}
BENCHMARK(ResultCodeSuffixWithSystemText);

void FailureLineToTheHost(benchmark::State& state) {
  auto logger = testing::MakeHostObject<DiscardingLogger>();
  const HostLog log(logger.Get());
  for (auto _ : state) log.ErrorWithCode(kLongPrefix, kFileNotFound);
}
BENCHMARK(FailureLineToTheHost);

void FailureLineWithoutLogger(benchmark::State& state) {
  const HostLog log;
  for (auto _ : state) benchmark::DoNotOptimize(log.ErrorWithCode(kLongPrefix, kFileNotFound));
}
BENCHMARK(FailureLineWithoutLogger);

void ProductNameFromCommandLine(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(GetProductName());
}
BENCHMARK(ProductNameFromCommandLine);

// A whole request: create the service, query, release; as every holder of a host
// interface pays once.
void HostInterfaceThroughTheService(benchmark::State& state) {
  testing::ComApartment apartment;
  testing::RegisteredHostService service;
  auto logger = testing::MakeHostObject<DiscardingLogger>();
  service.Setup().Offer(IID_IHostLogger, logger, testing::ServiceRoute::QueryInterface);
  size_t made = 0;
  for (auto _ : state) {
    ComPtr<IHostLogger> obtained;
    benchmark::DoNotOptimize(GetHostLogger(&obtained));
    // Each request leaves a retired fake service behind; free them now and then.
    if (++made % 4096 == 0) {
      state.PauseTiming();
      testing::FreeRetiredObjects();
      state.ResumeTiming();
    }
  }
}
BENCHMARK(HostInterfaceThroughTheService);

}  // namespace
}  // namespace tarnix

BENCHMARK_MAIN();
