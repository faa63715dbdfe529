// DumpData of every data type, end to end inside the process: the manager's prologue,
// the conversions, the call on the stand-in message client (in this process; no RMI)
// and the answer's epilogue. Beside it, DumpData(eSample) of the realistic sample
// against the same message built with raw JNI: the connection and the sample graph with
// cached ids and local references, the same onDataCollected call and its answer read.
//
//   build with -DTARNIX_BUILD_BENCH=ON, then: bench/manager/dumpdata_bench
#include "BenchHost.h"
#include "HostReads.h"
#include "RawSample.h"
#include "RealisticSample.h"

#include "HostData.h"
#include "convert/ClassTable.h"
#include "jni/JavaVM.h"
#include "tarnix/DataType.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

using tarnix::ComPtr;
namespace bench = tarnix::bench;
namespace hostsim = tarnix::hostsim;

// The stand-in records every call it gets; cleared this often so its record stays small.
constexpr int kClearEvery = 256;

struct Data {
  bench::RealisticSample realistic = bench::MakeRealisticSample();
  ComPtr<IUnknown> small = hostsim::MakeSample();
  ComPtr<IUnknown> session = ComPtr<IUnknown>(hostsim::MakeSession(1).Get());
  ComPtr<IUnknown> logoff = hostsim::MakeLogoff(1);
  ComPtr<IUnknown> extended = hostsim::MakeExtendedData();
  ComPtr<IUnknown> traceRoute = hostsim::MakeTraceRoute();
};

Data& TheData() {
  static Data* data = new Data;
  return *data;
}

bench::BenchHost& Host() {
  Data& data = TheData();
  bench::BenchHost& host =
      bench::TheHost(ComPtr<IHostSessionSource>(data.realistic.sessions.Get()));
  static bool described = [&host] {
    hostsim::DescribeDesktop(*host.systemInfo.Get());
    return true;
  }();
  (void)described;
  return host;
}

void Dump(benchmark::State& state, unsigned char type, IUnknown* data) {
  bench::BenchHost& host = Host();
  int calls = 0;
  for (auto _ : state) {
    const LONG result = host.Dump(type, data);
    if (result < 0) {
      state.SkipWithError(("DumpData failed: " + std::to_string(result)).c_str());
      break;
    }
    if (++calls % kClearEvery == 0) {
      state.PauseTiming();
      host.ClearRecords();
      state.ResumeTiming();
    }
  }
  host.ClearRecords();
}

void BM_DumpData(benchmark::State& state) {
  Data& data = TheData();
  const auto type = static_cast<unsigned char>(state.range(0));
  IUnknown* object = nullptr;
  switch (type) {
    case eSample: object = data.small.Get(); break;
    case eExtendedData: object = data.extended.Get(); break;
    case eTraceRoute: object = data.traceRoute.Get(); break;
    case eUserSessionLogoff: object = data.logoff.Get(); break;
    case eStartup:
    case eDesktopPoll: break;
    default: object = data.session.Get(); break;
  }
  Dump(state, type, object);
}

// The realistic sample (20 sessions, 1000 metrics) through the component.
void BM_DumpDataRealisticSample(benchmark::State& state) {
  Dump(state, eSample, TheData().realistic.sample.Get());
}

// The same message with raw JNI on the manager's own message client.
void BM_RawJniRealisticSample(benchmark::State& state) {
  bench::BenchHost& host = Host();
  CJavaVM& vm = *host.manager.GetJavaVM();
  JNIEnv* env = vm.GetEnv();
  const bench::RawIds ids(vm);
  const std::shared_ptr<CJavaObject> client = host.manager.GetMessageClient();
  const jmethodID onDataCollected = env->GetMethodID(
      vm.GetClass(tarnix::classes::kDesktopMessageClient)->Get(), "onDataCollected",
      "(Lcom/corvane/zelmar/adapters/brixcommon/datamodel/DesktopConnection;"
      "Lcom/corvane/zelmar/adapters/brixcommon/datamodel/Sample;)Ljava/lang/String;");
  Data& data = TheData();
  int calls = 0;
  for (auto _ : state) {
    bench::HostIdentity identity;
    ComPtr<IHostSample> hostSample;
    ComPtr<IHostSessionSource> sessions;
    if (FAILED(bench::ReadDumpDataHost(host.systemInfo.Get(), data.realistic.sample.Get(), identity,
                                       hostSample, sessions))) {
      state.SkipWithError("no identity");
      break;
    }
    jobject connection = bench::RawConnection(env, ids, identity.machineId.Get(), WSTR("token"),
                                              identity.virtualMachineId.Get());
    jobject sample = bench::RawSample(env, ids, hostSample.Get(), sessions.Get());
    auto answer = static_cast<jstring>(
        env->CallObjectMethod(client->Get(), onDataCollected, connection, sample));
    if (env->ExceptionCheck()) {
      env->ExceptionClear();
      state.SkipWithError("onDataCollected threw");
    } else if (answer) {
      const jchar* chars = env->GetStringChars(answer, nullptr);
      benchmark::DoNotOptimize(chars);
      env->ReleaseStringChars(answer, chars);
    }
    env->DeleteLocalRef(answer);
    env->DeleteLocalRef(sample);
    env->DeleteLocalRef(connection);
    if (++calls % kClearEvery == 0) {
      state.PauseTiming();
      host.ClearRecords();
      state.ResumeTiming();
    }
  }
  host.ClearRecords();
}

// The host's side of DumpData(eSample) of the realistic sample alone: the identity, the
// host's session source and the sample, read as the component reads them.
void BM_HostOnlyRealisticSample(benchmark::State& state) {
  bench::BenchHost& host = Host();
  Data& data = TheData();
  bench::FakeSweep sweep;
  for (auto _ : state) {
    bench::HostIdentity identity;
    ComPtr<IHostSample> sample;
    ComPtr<IHostSessionSource> sessions;
    bench::ReadDumpDataHost(host.systemInfo.Get(), data.realistic.sample.Get(), identity, sample,
                            sessions);
    bench::ReadSample(sample.Get(), sessions.Get());
    sweep.After(state);
  }
}

}  // namespace

BENCHMARK(BM_DumpData)
    ->ArgName("type")
    ->Arg(eUserSessionStart)
    ->Arg(eUserSessionLogon)
    ->Arg(eUserSessionLogoff)
    ->Arg(eUserSessionRefresh)
    ->Arg(eUserSessionReconnect)
    ->Arg(eUserSessionDisconnect)
    ->Arg(eUserSessionEnd)
    ->Arg(eExtendedData)
    ->Arg(eStartup)
    ->Arg(eSample)
    ->Arg(eTraceRoute)
    ->Arg(eDesktopPoll)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_DumpDataRealisticSample)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_RawJniRealisticSample)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_HostOnlyRealisticSample)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
