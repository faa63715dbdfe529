// What the manager adds to every DumpData: the lock, the configuration check, the
// identity read from the host, the attachment of the calling thread, and for the start-up
// message the client description, the connection and the Java call with its answer.
// "Prologue" sends a type without a Java message; "Startup" a full round trip to the
// stand-in client. The "Attaching" variants call from a host thread that is not attached
// to Java, so each call attaches and detaches it.
//
//   build with -DTARNIX_BUILD_BENCH=ON, then: bench/manager/manager_bench
#include "fixtures/FakeHostService.h"
#include "fixtures/FakeSystemInfo.h"
#include "fixtures/RecordingLogger.h"
#include "fixtures/TestRegistry.h"
#include "manager/AgentRegistry.h"
#include "jni/JavaVM.h"
#include "manager/CommManagerImpl.h"
#include "platform/WideText.h"
#include "tarnix/DataType.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace {

namespace fakes = tarnix::testing;

// A data type with no message of its own: the call runs up to the Java client and stops.
constexpr unsigned char kTypeWithoutMessage = 11;
using tarnix::ComPtr;
using tarnix::Utf8ToWide;

// The host around one manager whose Java side runs for the whole process.
struct Host {
  fakes::ComApartment apartment;
  fakes::RegisteredHostService service;
  ComPtr<fakes::RecordingLogger> logger = fakes::MakeFake<fakes::RecordingLogger>();
  ComPtr<fakes::FakeSystemInfo> systemInfo = fakes::MakeFake<fakes::FakeSystemInfo>();
  fakes::TestRegistry registry;
  CRMICommManagerImpl manager;

  Host() {
    service.Setup().Offer(IID_IHostLogger, logger, fakes::ServiceRoute::QueryInterface);
    service.Setup().Offer(IID_ISystemInfo, systemInfo, fakes::ServiceRoute::QueryInterface);
    systemInfo->SetMachineId(Utf8ToWide("machine-1"));
    systemInfo->SetVirtualMachineId(Utf8ToWide("vm-7"));
    systemInfo->SetUniqueId(Utf8ToWide("unique-3"));
    systemInfo->SetMachineName(Utf8ToWide("DESK-01"));
    const WString key = tarnix::AgentKeyPath();
    registry.SetString(HKEY_LOCAL_MACHINE, key, Utf8ToWide("JrePath"),
                       Utf8ToWide(TARNIX_BENCH_JAVA_HOME));
    registry.SetString(HKEY_LOCAL_MACHINE, key, Utf8ToWide("ClassPath"),
                       Utf8ToWide(TARNIX_BENCH_JAR_DIR));
    registry.SetString(HKEY_LOCAL_MACHINE, key, Utf8ToWide("ConfigDirectory"),
                       Utf8ToWide("/tmp/tarnix-bench-config"));
    registry.Apply();
  }

  LONG Dump(unsigned char type) {
    return manager.DumpData(WSTR("in-process"), WSTR("token"), WSTR("cert"), 1, type,
                            nullptr);
  }
};

// Started on a thread of its own that lives as long as the process: that thread's end
// would end the manager.
Host& TheHost() {
  static Host* host = [] {
    Host* made = nullptr;
    std::mutex lock;
    std::condition_variable ready;
    std::thread([&] {
      Host* created = new Host();
      const LONG started = created->Dump(kTypeWithoutMessage);
      if (started != S_OK) std::fprintf(stderr, "start-up failed: 0x%08x\n", started);
      {
        std::lock_guard<std::mutex> hold(lock);
        made = created;
      }
      ready.notify_all();
      for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
    }).detach();
    std::unique_lock<std::mutex> hold(lock);
    ready.wait(hold, [&] { return made != nullptr; });
    return made;
  }();
  return *host;
}

// Calls from a host thread the manager attaches for each call: the benchmark's own
// thread, which start-up did not create.
void Attaching(benchmark::State& state, unsigned char type) {
  Host& host = TheHost();
  for (auto _ : state) benchmark::DoNotOptimize(host.Dump(type));
  host.logger->Clear();
}

// The same calls from a thread that stays attached across calls, as the starting thread
// does.
void Attached(benchmark::State& state, unsigned char type) {
  Host& host = TheHost();
  auto machine = host.manager.GetJavaVM();
  machine->AttachCurrentThread();
  for (auto _ : state) benchmark::DoNotOptimize(host.Dump(type));
  machine->DetachCurrentThread();
  host.logger->Clear();
}

void BM_PrologueAttaching(benchmark::State& state) { Attaching(state, kTypeWithoutMessage); }
void BM_StartupAttaching(benchmark::State& state) { Attaching(state, eStartup); }
void BM_PrologueAttached(benchmark::State& state) { Attached(state, kTypeWithoutMessage); }
void BM_StartupAttached(benchmark::State& state) { Attached(state, eStartup); }

BENCHMARK(BM_PrologueAttaching);
BENCHMARK(BM_StartupAttaching);
BENCHMARK(BM_PrologueAttached);
BENCHMARK(BM_StartupAttached);

}  // namespace

BENCHMARK_MAIN();
