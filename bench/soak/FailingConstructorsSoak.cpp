// A long run of DumpData calls on the thread that started Java, each with one data-model
// constructor made to throw, in turn: DesktopConnection, BaseSample, BaseUserSession,
// BaseRemoteApp, DesktopInformation, NetworkInterface. That thread never returns to Java,
// so a reference left in its frame (the JVM keeps one to each half-built object) would
// stay for good: the run prints this thread's JNI local references, the JVM's global
// references and the resident memory before the first call and at every tenth.
//
//   build with -DTARNIX_BUILD_BENCH=ON, then: bench/soak/failing_constructors_soak [calls]
#include "BenchHost.h"

#include "HostData.h"
#include "JvmProbe.h"
#include "jni/JavaVM.h"
#include "tarnix/DataType.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

constexpr long kClearEvery = 1000;

struct Failure {
  const char* place;
  unsigned char type;
};

// Each place is reached by the call of its type before any other constructor throws.
constexpr Failure kFailures[] = {
    {"DesktopConnection.<init>", eStartup},      {"BaseSample.<init>", eSample},
    {"BaseUserSession.<init>", eSample},         {"BaseRemoteApp.<init>", eSample},
    {"DesktopInformation.<init>", eDesktopPoll}, {"NetworkInterface.<init>", eDesktopPoll},
};

// Makes every hit of `place` throw, and nothing else; the bench's own references go with
// a frame of their own, so the count shows the component's alone.
bool ArmOnly(JNIEnv* env, const char* place) {
  if (env->PushLocalFrame(8) != JNI_OK) return false;
  jclass faults = env->FindClass("com/tarnix/testing/Faults");
  jmethodID clear = faults ? env->GetStaticMethodID(faults, "clear", "()V") : nullptr;
  jmethodID throwIn = faults ? env->GetStaticMethodID(faults, "throwIn",
                                                      "(Ljava/lang/String;Ljava/lang/String;"
                                                      "Ljava/lang/String;)V")
                             : nullptr;
  if (clear && throwIn) {
    env->CallStaticVoidMethod(faults, clear);
    env->CallStaticVoidMethod(faults, throwIn, env->NewStringUTF(place),
                              env->NewStringUTF("java.lang.IllegalStateException"),
                              env->NewStringUTF("refused"));
  }
  const bool armed = clear && throwIn && !env->ExceptionCheck();
  env->ExceptionClear();
  env->PopLocalFrame(nullptr);
  return armed;
}

}  // namespace

int main(int argc, char** argv) {
  const long calls = argc > 1 ? std::max(1L, std::atol(argv[1])) : 100000L;
  const std::string runtime = TARNIX_BENCH_JAVA_HOME "/lib/server/libjvm.so";
  tarnix::bench::BenchHost host(
      tarnix::ComPtr<IHostSessionSource>(tarnix::hostsim::MakeSessions().Get()));
  tarnix::hostsim::DescribeDesktop(*host.systemInfo.Get());
  // This thread starts Java (a type without a message: start-up and configuration only).
  if (host.Dump(11) != S_OK) {
    std::fprintf(stderr, "start-up failed\n");
    return 1;
  }
  JNIEnv* env = host.manager.GetJavaVM()->GetEnv();
  const tarnix::ComPtr<IUnknown> sample = tarnix::hostsim::MakeSample();
  const auto report = [&](long done) {
    host.ClearRecords();
    std::printf("calls %ld local_refs %ld global_refs %ld rss_kb %ld\n", done,
                tarnix::hostsim::JniLocalReferencesOfThisThread(runtime),
                tarnix::hostsim::JniGlobalReferences(runtime),
                tarnix::hostsim::ResidentKilobytes());
    std::fflush(stdout);
  };
  report(0);
  const auto start = std::chrono::steady_clock::now();
  long succeeded = 0;
  const long step = calls / 10 > 0 ? calls / 10 : 1;
  for (long i = 1; i <= calls; ++i) {
    const Failure& failure = kFailures[i % std::size(kFailures)];
    if (!ArmOnly(env, failure.place)) return 1;
    if (host.Dump(failure.type, failure.type == eSample ? sample.Get() : nullptr) >= 0) ++succeeded;
    if (i % kClearEvery == 0) host.ClearRecords();
    if (i % step == 0) report(i);
  }
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  std::printf("succeeded %ld us_per_call %.1f\n", succeeded,
              seconds * 1e6 / static_cast<double>(calls));
  std::fflush(stdout);
  std::_Exit(0);
}
