// GetSample on a realistic sample (50 machine metrics; 20 sessions, each with two
// properties, 30 metrics and 3 remote applications of 5 metrics), beside the same object
// graph built from the same host objects with raw JNI calls (cached ids, local
// references, an exception check after every call), and beside Java building it alone.
// The first pair differs by what the converters and the bridge add; the second shows
// what crossing JNI costs at all.
//
//   build with -DTARNIX_BUILD_BENCH=ON, then: bench/convert/convert_bench
#include "HostReads.h"
#include "RawSample.h"
#include "RealisticSample.h"

#include "convert/JNIConvertor.h"
#include "fixtures/HostObjectWatch.h"
#include "convert/ClassTable.h"
#include "jni/JavaVM.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

namespace support = tarnix::bench;

WString Wide(const std::string& text) { return WString(text.begin(), text.end()); }

struct Bench {
  std::shared_ptr<CJavaVM> machine;
  support::RealisticSample host;
  jobject builder = nullptr;  // global
  jmethodID build = nullptr;
};

Bench& Shared() {
  static Bench* bench = [] {
    auto* made = new Bench;
    made->machine = std::make_shared<CJavaVM>(Wide(TARNIX_BENCH_JAVA_HOME));
    if (made->machine->Create({std::string("-Djava.class.path=") + TARNIX_BENCH_CLASSPATH, "-Xrs",
                               "-Xmx100M"}) != 0) {
      std::fprintf(stderr, "no JVM\n");
      std::exit(1);
    }
    for (const auto& row : tarnix::classes::kClassTable) {
      if (!made->machine->LoadClass(row.name, row.methods, row.count)) {
        std::fprintf(stderr, "no class %s\n", row.name);
        std::exit(1);
      }
    }
    JNIEnv* env = made->machine->GetEnv();
    jclass type = env->FindClass("com/tarnix/bench/SampleBuilder");
    if (!type) {
      std::fprintf(stderr, "no SampleBuilder\n");
      std::exit(1);
    }
    jobject builder = env->NewObject(
        type, env->GetMethodID(type, "<init>", "(IIIII)V"), support::kMachineMetrics,
        support::kSessions, support::kSessionMetrics, support::kApps, support::kAppMetrics);
    made->builder = env->NewGlobalRef(builder);
    made->build = env->GetMethodID(type, "build", "(J)Ljava/lang/Object;");
    env->DeleteLocalRef(builder);
    env->DeleteLocalRef(type);
    made->host = support::MakeRealisticSample();
    return made;
  }();
  return *bench;
}

void GetSample(benchmark::State& state) {
  Bench& bench = Shared();
  const CJNIConvertor convertor(nullptr);
  support::FakeSweep sweep;
  for (auto _ : state) {
    std::shared_ptr<CJavaObject> sample =
        convertor.GetSample(bench.machine, bench.host.sample.Get(), bench.host.sessions.Get());
    if (!sample) state.SkipWithError("no sample");
    benchmark::DoNotOptimize(sample);
    sample.reset();
    sweep.After(state);
  }
}

void RawJni(benchmark::State& state) {
  Bench& bench = Shared();
  JNIEnv* env = bench.machine->GetEnv();
  const support::RawIds ids(*bench.machine);
  support::FakeSweep sweep;
  for (auto _ : state) {
    jobject sample =
        support::RawSample(env, ids, bench.host.sample.Get(), bench.host.sessions.Get());
    if (!sample) state.SkipWithError("no sample");
    benchmark::DoNotOptimize(sample);
    env->DeleteLocalRef(sample);
    sweep.After(state);
  }
}

// The host side alone: every read the converters make, through the same fakes. Both JNI
// variants pay this; it is not the component's cost.
void HostOnly(benchmark::State& state) {
  Bench& bench = Shared();
  support::FakeSweep sweep;
  for (auto _ : state) {
    support::ReadSample(bench.host.sample.Get(), bench.host.sessions.Get());
    sweep.After(state);
  }
}

void PureJava(benchmark::State& state) {
  Bench& bench = Shared();
  JNIEnv* env = bench.machine->GetEnv();
  const jlong time = static_cast<jlong>(CJNIConvertor::ToJavaTime(support::kSampleTime) * 1000);
  for (auto _ : state) {
    jobject sample = env->CallObjectMethod(bench.builder, bench.build, time);
    if (!sample) state.SkipWithError("no sample");
    benchmark::DoNotOptimize(sample);
    env->DeleteLocalRef(sample);
  }
}

// Java compiles what runs often: every repetition should measure the compiled code, not
// the first one the interpreter.
void WarmUp() {
  Bench& bench = Shared();
  JNIEnv* env = bench.machine->GetEnv();
  const support::RawIds ids(*bench.machine);
  const CJNIConvertor convertor(nullptr);
  for (int i = 0; i < 300; ++i) {
    convertor.GetSample(bench.machine, bench.host.sample.Get(), bench.host.sessions.Get());
    env->DeleteLocalRef(
        support::RawSample(env, ids, bench.host.sample.Get(), bench.host.sessions.Get()));
    tarnix::testing::FreeRetiredObjects();
  }
}

}  // namespace

BENCHMARK(GetSample)->Unit(benchmark::kMicrosecond);
BENCHMARK(RawJni)->Unit(benchmark::kMicrosecond);
BENCHMARK(PureJava)->Unit(benchmark::kMicrosecond);
BENCHMARK(HostOnly)->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv) {
  Shared();  // the JVM starts on the main thread, which stays its creating thread
  WarmUp();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
