// Resident memory and JVM global references over a long run of DumpData(eSample) (a
// sample of three sessions with their metrics and applications) on the in-process
// stand-in client: before the first call, then at every tenth of the run. A leak of
// one reference or one small block per call shows as a line that keeps climbing; the
// Java heap's committed size is shown beside it, because the JVM grows its heap towards
// its maximum (a quarter of the machine's memory unless the agent's options cap it)
// while garbage is plentiful.
//
//   build with -DTARNIX_BUILD_BENCH=ON, then: bench/soak/soak_bench [calls [type]]
#include "BenchHost.h"

#include "HostData.h"
#include "jni/JavaVM.h"
#include "JvmProbe.h"
#include "tarnix/DataType.h"

#include <chrono>
#include <malloc.h>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

// The stand-in records every call it gets; cleared this often so its record stays small.
constexpr long kClearEvery = 1000;

// The Java heap's committed size in kilobytes, or -1.
long JavaHeapKilobytes(CJavaVM& vm) {
  JNIEnv* env = vm.GetEnv();
  if (!env) return -1;
  jclass runtime = env->FindClass("java/lang/Runtime");
  if (!runtime) {
    env->ExceptionClear();
    return -1;
  }
  jobject current = env->CallStaticObjectMethod(
      runtime, env->GetStaticMethodID(runtime, "getRuntime", "()Ljava/lang/Runtime;"));
  const jlong bytes =
      current ? env->CallLongMethod(current, env->GetMethodID(runtime, "totalMemory", "()J")) : -1;
  if (env->ExceptionCheck()) env->ExceptionClear();
  env->DeleteLocalRef(current);
  env->DeleteLocalRef(runtime);
  return bytes < 0 ? -1 : static_cast<long>(bytes / 1024);
}

}  // namespace

int main(int argc, char** argv) {
  const long calls = argc > 1 ? std::max(1L, std::atol(argv[1])) : 1000000L;
  const auto type = static_cast<unsigned char>(argc > 2 ? std::atoi(argv[2]) : eSample);
  const std::string runtime = TARNIX_BENCH_JAVA_HOME "/lib/server/libjvm.so";
  tarnix::bench::BenchHost& host = tarnix::bench::TheHost(
      tarnix::ComPtr<IHostSessionSource>(tarnix::hostsim::MakeSessions().Get()));
  tarnix::hostsim::DescribeDesktop(*host.systemInfo.Get());
  const tarnix::ComPtr<IUnknown> sample = tarnix::hostsim::MakeSample();
  const auto report = [&](long done) {
    host.ClearRecords();
    std::printf("calls %ld rss_kb %ld global_refs %ld java_heap_kb %ld malloc_kb %ld\n", done,
                tarnix::hostsim::ResidentKilobytes(), tarnix::hostsim::JniGlobalReferences(runtime),
                JavaHeapKilobytes(*host.manager.GetJavaVM()),
                static_cast<long>(mallinfo2().uordblks / 1024));
    std::fflush(stdout);
  };
  report(0);
  const auto start = std::chrono::steady_clock::now();
  long failed = 0;
  const long step = calls / 10 > 0 ? calls / 10 : 1;
  for (long i = 1; i <= calls; ++i) {
    if (host.Dump(type, type == eSample ? sample.Get() : nullptr) < 0) ++failed;
    if (i % kClearEvery == 0) host.ClearRecords();
    if (i % step == 0) report(i);
  }
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  std::printf("failed %ld us_per_call %.1f\n", failed, seconds * 1e6 / static_cast<double>(calls));
  std::fflush(stdout);
  // The host's teardown is not part of the run.
  std::_Exit(failed == 0 ? 0 : 1);
}
