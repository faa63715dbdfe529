// What the manager adds to every DumpData: the lock, the configuration check, the
// identity read from the host, the attachment of the calling thread, and for the start-up
// message the client description, the connection and the Java call with its answer.
// "Prologue" sends a type without a Java message; "Startup" a full round trip to the
// stand-in client. The "Attaching" variants call from a host thread that is not attached
// to Java, so each call attaches and detaches it.
//
//   build with -DTARNIX_BUILD_BENCH=ON, then: bench/manager/manager_bench
#include "BenchHost.h"

#include "jni/JavaVM.h"
#include "tarnix/DataType.h"

#include <benchmark/benchmark.h>

namespace {

using tarnix::bench::BenchHost;
using tarnix::bench::TheHost;

// A data type with no message of its own: the call runs up to the Java client and stops.
constexpr unsigned char kTypeWithoutMessage = 11;

// Calls from a host thread the manager attaches for each call: the benchmark's own
// thread, which start-up did not create.
void Attaching(benchmark::State& state, unsigned char type) {
  BenchHost& host = TheHost();
  host.manager.GetJavaVM()->DetachCurrentThread();
  for (auto _ : state) benchmark::DoNotOptimize(host.Dump(type));
  host.manager.GetJavaVM()->AttachCurrentThread();
  host.ClearRecords();
}

// The same calls from a thread that stays attached across calls, as the starting thread
// does.
void Attached(benchmark::State& state, unsigned char type) {
  BenchHost& host = TheHost();
  for (auto _ : state) benchmark::DoNotOptimize(host.Dump(type));
  host.ClearRecords();
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
