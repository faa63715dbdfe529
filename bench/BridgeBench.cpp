// The bridge's primitives beside the same JNI calls made by hand with cached ids, on the
// real JDK. Both sides make the same JNI calls, the refusal to call while an exception is
// pending included, so a pair differs only by what the bridge adds: the thread's
// environment, the handle's class check, and owning every reference.
//
//   build with -DTARNIX_BUILD_BENCH=ON, then: bench/bridge_bench
#include "jni/JavaClass.h"
#include "jni/JavaVM.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <thread>

namespace {

constexpr const char kProbe[] = "com/tarnix/testing/Probe";
constexpr MethodEntry kProbeMethods[] = {
    {"ctor()", "<init>", "()V"},
    {"ctor(time)", "<init>", "(J)V"},
    {"touch", "touch", "(J)V"},
};
constexpr auto kCtor = tarnix::ConstructorOf<void()>(kProbeMethods, "ctor()");
constexpr auto kCtorTime = tarnix::ConstructorOf<void(jlong)>(kProbeMethods, "ctor(time)");
constexpr auto kTouch = tarnix::MethodOf<void(jlong)>(kProbeMethods, "touch");

// One JVM for the whole run; a JVM cannot be made twice in a process.
struct Bench {
  std::shared_ptr<CJavaVM> machine;
  std::shared_ptr<CJavaClass> probeClass;
  std::shared_ptr<CJavaObject> probe;
};

Bench& Shared() {
  static Bench* bench = [] {
    auto* made = new Bench;
    WString home;
    for (const char* c = TARNIX_BENCH_JAVA_HOME; *c; ++c) home.push_back(static_cast<WCHAR>(*c));
    made->machine = std::make_shared<CJavaVM>(home);
    if (made->machine->Create({std::string("-Djava.class.path=") + TARNIX_BENCH_CLASSPATH, "-Xrs",
                               "-Xmx100M"}) != 0) {
      std::fprintf(stderr, "no JVM\n");
      std::exit(1);
    }
    made->probeClass = made->machine->LoadClass(kProbe, kProbeMethods);
    made->probe = made->probeClass ? made->probeClass->NewObject(kCtor) : nullptr;
    if (!made->probe) {
      std::fprintf(stderr, "no probe class\n");
      std::exit(1);
    }
    return made;
  }();
  return *bench;
}

const WString kText = WSTR("twenty characters...");

// Threads of a multi-threaded run attach for the run, as host threads attach per call.
CJavaVM::ThreadDetachGuard AttachThisThread() { return Shared().machine->AttachForScope(); }

// The strings of a conversion: a local reference owned on the stack.
void BridgeNewString(benchmark::State& state) {
  auto guard = AttachThisThread();
  CJavaVM& machine = *Shared().machine;
  for (auto _ : state) benchmark::DoNotOptimize(machine.NewLocalString(kText));
}

void RawNewString(benchmark::State& state) {
  auto guard = AttachThisThread();
  JNIEnv* env = Shared().machine->GetEnv();
  const auto* chars = reinterpret_cast<const jchar*>(kText.data());
  const auto length = static_cast<jsize>(kText.size());
  for (auto _ : state) {
    if (env->ExceptionCheck()) break;
    jstring string = env->NewString(chars, length);
    benchmark::DoNotOptimize(string);
    env->DeleteLocalRef(string);
  }
}

// A string handed to a caller that may keep it: the same behind a shared handle.
void BridgeNewSharedString(benchmark::State& state) {
  auto guard = AttachThisThread();
  CJavaVM& machine = *Shared().machine;
  for (auto _ : state) benchmark::DoNotOptimize(machine.NewString(kText));
}

// The objects of a conversion: a local reference owned on the stack.
void BridgeNewLocalObject(benchmark::State& state) {
  auto guard = AttachThisThread();
  CJavaClass& probeClass = *Shared().probeClass;
  for (auto _ : state) benchmark::DoNotOptimize(probeClass.NewLocalObject(kCtorTime, jlong{42}));
}

void RawNewObjectLocal(benchmark::State& state) {
  auto guard = AttachThisThread();
  JNIEnv* env = Shared().machine->GetEnv();
  const jclass type = Shared().probeClass->Get();
  const jmethodID constructor = env->GetMethodID(type, "<init>", "(J)V");
  for (auto _ : state) {
    if (env->ExceptionCheck()) break;
    jvalue time;
    time.j = 42;
    jobject local = env->NewObjectA(type, constructor, &time);
    benchmark::DoNotOptimize(local);
    env->DeleteLocalRef(local);
  }
}

// An object kept beyond the call, pinned by a global reference.
void BridgeNewObject(benchmark::State& state) {
  auto guard = AttachThisThread();
  CJavaClass& probeClass = *Shared().probeClass;
  for (auto _ : state) benchmark::DoNotOptimize(probeClass.NewObject(kCtorTime, jlong{42}));
}

void RawNewObjectGlobal(benchmark::State& state) {
  auto guard = AttachThisThread();
  JNIEnv* env = Shared().machine->GetEnv();
  const jclass type = Shared().probeClass->Get();
  const jmethodID constructor = env->GetMethodID(type, "<init>", "(J)V");
  for (auto _ : state) {
    if (env->ExceptionCheck()) break;
    jvalue time;
    time.j = 42;
    jobject local = env->NewObjectA(type, constructor, &time);
    jobject global = env->NewGlobalRef(local);
    env->DeleteLocalRef(local);
    benchmark::DoNotOptimize(global);
    env->DeleteGlobalRef(global);
  }
}

void BridgeCallVoidMethod(benchmark::State& state) {
  auto guard = AttachThisThread();
  CJavaObject& probe = *Shared().probe;
  for (auto _ : state) probe.CallVoidMethod(kTouch, jlong{7});
}

void RawCallVoidMethod(benchmark::State& state) {
  auto guard = AttachThisThread();
  JNIEnv* env = Shared().machine->GetEnv();
  const jobject probe = Shared().probe->Get();
  const jmethodID touch = env->GetMethodID(Shared().probeClass->Get(), "touch", "(J)V");
  for (auto _ : state) {
    if (env->ExceptionCheck()) break;
    env->CallVoidMethod(probe, touch, jlong{7});
  }
}

void BridgeGetEnv(benchmark::State& state) {
  auto guard = AttachThisThread();
  CJavaVM& machine = *Shared().machine;
  for (auto _ : state) benchmark::DoNotOptimize(machine.GetEnv());
}

// What the refusal to call with an exception pending costs on every call.
void RawExceptionCheck(benchmark::State& state) {
  auto guard = AttachThisThread();
  JNIEnv* env = Shared().machine->GetEnv();
  for (auto _ : state) benchmark::DoNotOptimize(env->ExceptionCheck());
}

// A host thread entering Java for one call: attach, call, detach.
void BridgeAttachCallDetach(benchmark::State& state) {
  CJavaVM& machine = *Shared().machine;
  CJavaObject& probe = *Shared().probe;
  std::thread([&] {
    for (auto _ : state) {
      auto guard = machine.AttachForScope();
      probe.CallVoidMethod(kTouch, jlong{7});
    }
  }).join();
}

}  // namespace

BENCHMARK(RawNewString);
BENCHMARK(BridgeNewString);
BENCHMARK(BridgeNewSharedString);
BENCHMARK(RawNewObjectLocal);
BENCHMARK(BridgeNewLocalObject);
BENCHMARK(RawNewObjectGlobal);
BENCHMARK(BridgeNewObject);
BENCHMARK(RawCallVoidMethod)->Threads(1)->Threads(2);
BENCHMARK(BridgeCallVoidMethod)->Threads(1)->Threads(2);
BENCHMARK(BridgeGetEnv)->Threads(1)->Threads(2);
BENCHMARK(RawExceptionCheck);
BENCHMARK(BridgeAttachCallDetach);

int main(int argc, char** argv) {
  Shared();  // the JVM starts on the main thread, which stays its creating thread
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
