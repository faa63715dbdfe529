// GetSample on a realistic sample (50 machine metrics; 20 sessions, each with two
// properties, 30 metrics and 3 remote applications of 5 metrics), beside the same object
// graph built from the same host objects with raw JNI calls (cached ids, local
// references, an exception check after every call), and beside Java building it alone.
// The first pair differs by what the converters and the bridge add; the second shows
// what crossing JNI costs at all.
//
//   build with -DTARNIX_BUILD_BENCH=ON, then: bench/convert/convert_bench
#include "convert/JNIConvertor.h"
#include "fixtures/FakeDataObjects.h"
#include "jni/ClassTable.h"
#include "jni/JavaVM.h"

#include "platform/ScopedBstr.h"
#include "platform/ScopedVariant.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

using tarnix::ComPtr;
using tarnix::ScopedBstr;
using tarnix::ScopedVariant;
namespace fakes = tarnix::testing;

constexpr int kMachineMetrics = 50;
constexpr int kSessions = 20;
constexpr int kSessionMetrics = 30;
constexpr int kApps = 3;
constexpr int kAppMetrics = 5;
constexpr DATE kTime = 45000.5;

WString Wide(const std::string& text) { return WString(text.begin(), text.end()); }

// Four in five metrics are counters, one a ratio, as the host's samples run.
void AddMetrics(fakes::FakeSample& target, const char* prefix, int count) {
  for (int i = 0; i < count; ++i) {
    const WString name = Wide(prefix + std::to_string(i));
    if (i % 5 == 4) {
      target.AddMetric(name, fakes::R8(i + 0.5));
    } else {
      target.AddMetric(name, fakes::I8(i * 1000LL));
    }
  }
}

struct HostData {
  ComPtr<fakes::FakeSample> sample;
  ComPtr<fakes::FakeSessionSource> sessions;
};

HostData MakeHostData() {
  HostData data{tarnix::testing::MakeFake<fakes::FakeSample>(kTime),
                tarnix::testing::MakeFake<fakes::FakeSessionSource>()};
  AddMetrics(*data.sample.Get(), "machine.metric.", kMachineMetrics);
  for (int s = 0; s < kSessions; ++s) {
    auto session = tarnix::testing::MakeFake<fakes::FakeUserSession>(
        s + 1, Wide("S-1-5-21-" + std::to_string(s)), Wide("user" + std::to_string(s)),
        WSTR("CORP"), 1);
    session->Properties()
        .Add(WSTR("client"), fakes::Text(Wide("pc-" + std::to_string(s))))
        .Add(WSTR("protocol"), fakes::Text(WSTR("rdp")));
    data.sessions->Add(session);
    auto instance = tarnix::testing::MakeFake<fakes::FakeSample>(kTime);
    AddMetrics(*instance.Get(), "session.metric.", kSessionMetrics);
    for (int a = 0; a < kApps; ++a) {
      auto app = tarnix::testing::MakeFake<fakes::FakeSample>(kTime);
      AddMetrics(*app.Get(), "app.metric.", kAppMetrics);
      instance->AddToCollection(WSTR("remoteApps"), Wide("app-" + std::to_string(a)), app.Get());
    }
    data.sample->AddInstance(Wide(std::to_string(s + 1)), instance.Get());
  }
  return data;
}

struct Bench {
  std::shared_ptr<CJavaVM> machine;
  HostData host;
  jobject builder = nullptr;  // global
  jmethodID build = nullptr;
};

Bench& Shared() {
  static Bench* bench = [] {
    auto* made = new Bench;
    made->machine = std::make_shared<CJavaVM>(Wide(TARNIX_BENCH_JAVA_HOME));
    if (made->machine->Create({std::string("-Djava.class.path=") + TARNIX_BENCH_CLASSPATH,
                               "-Xrs", "-Xmx100M"}) != 0) {
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
    jobject builder = env->NewObject(type, env->GetMethodID(type, "<init>", "(IIIII)V"),
                                     kMachineMetrics, kSessions, kSessionMetrics, kApps,
                                     kAppMetrics);
    made->builder = env->NewGlobalRef(builder);
    made->build = env->GetMethodID(type, "build", "(J)Ljava/lang/Object;");
    env->DeleteLocalRef(builder);
    env->DeleteLocalRef(type);
    made->host = MakeHostData();
    return made;
  }();
  return *bench;
}

void GetSample(benchmark::State& state) {
  Bench& bench = Shared();
  const CJNIConvertor convertor(nullptr);
  for (auto _ : state) {
    std::shared_ptr<CJavaObject> sample =
        convertor.GetSample(bench.machine, bench.host.sample.Get(), bench.host.sessions.Get());
    if (!sample) state.SkipWithError("no sample");
    benchmark::DoNotOptimize(sample);
  }
}

// ---- The same graph by hand.

struct RawIds {
  jclass sample, metric, session, app;
  jmethodID sampleCtor, samplePutMetric, putSession;
  jmethodID metricCtor, putLong, putDouble, putString;
  jmethodID sessionCtor, putProperty, sessionPutMetric, putRemoteApp;
  jmethodID appCtor, appPutMetric;

  explicit RawIds(CJavaVM& vm) {
    namespace classes = tarnix::classes;
    sample = vm.GetClass(classes::kBaseSample)->Get();
    metric = vm.GetClass(classes::kBaseMetric)->Get();
    session = vm.GetClass(classes::kBaseUserSession)->Get();
    app = vm.GetClass(classes::kBaseRemoteApp)->Get();
    JNIEnv* env = vm.GetEnv();
    const char* metricType = "(Lcom/corvane/zelmar/adapters/brixcommon/datamodel/Metric;)V";
    sampleCtor = env->GetMethodID(sample, "<init>", "(J)V");
    samplePutMetric = env->GetMethodID(sample, "putMetric", metricType);
    putSession = env->GetMethodID(sample, "putSession",
                                  "(Lcom/corvane/zelmar/adapters/brixcommon/datamodel/UserSession;)V");
    metricCtor = env->GetMethodID(metric, "<init>", "(Ljava/lang/String;)V");
    putLong = env->GetMethodID(metric, "putLongValue", "(J)V");
    putDouble = env->GetMethodID(metric, "putDoubleValue", "(D)V");
    putString = env->GetMethodID(metric, "putStringValue", "(Ljava/lang/String;)V");
    sessionCtor = env->GetMethodID(session, "<init>",
                                   "(ILjava/lang/String;Ljava/lang/String;Ljava/lang/String;Z)V");
    putProperty = env->GetMethodID(session, "putProperty", "(Ljava/lang/String;Ljava/lang/String;)V");
    sessionPutMetric = env->GetMethodID(session, "putMetric", metricType);
    putRemoteApp = env->GetMethodID(session, "putRemoteApp",
                                    "(Lcom/corvane/zelmar/adapters/brixcommon/datamodel/RemoteApp;)V");
    appCtor = env->GetMethodID(app, "<init>", "(Ljava/lang/String;)V");
    appPutMetric = env->GetMethodID(app, "putMetric", metricType);
  }
};

bool Failed(JNIEnv* env) {
  if (!env->ExceptionCheck()) return false;
  env->ExceptionClear();
  return true;
}

jstring RawString(JNIEnv* env, BSTR text) {
  return env->NewString(reinterpret_cast<const jchar*>(text ? text : WSTR("")),
                        text ? static_cast<jsize>(SysStringLen(text)) : 0);
}

jobject RawMetric(JNIEnv* env, const RawIds& ids, BSTR name, const VARIANT& value) {
  jstring javaName = RawString(env, name);
  jobject metric = env->NewObject(ids.metric, ids.metricCtor, javaName);
  env->DeleteLocalRef(javaName);
  if (!metric) {
    Failed(env);
    return nullptr;
  }
  switch (value.vt) {
    case VT_I8: env->CallVoidMethod(metric, ids.putLong, static_cast<jlong>(value.llVal)); break;
    case VT_R8: env->CallVoidMethod(metric, ids.putDouble, value.dblVal); break;
    default: break;
  }
  if (Failed(env)) {
    env->DeleteLocalRef(metric);
    return nullptr;
  }
  return metric;
}

void RawPutMetrics(JNIEnv* env, const RawIds& ids, jobject target, jmethodID put,
                   IHostSample* source) {
  ComPtr<IHostEnumerator> metrics;
  if (FAILED(source->get_metrics(1, metrics.Receive()))) return;
  ScopedBstr name;
  ScopedVariant value;
  while (metrics->Next(name.Receive(), value.Receive()) == S_OK) {
    jobject metric = RawMetric(env, ids, name.Get(), value.Get());
    if (!metric) continue;
    env->CallVoidMethod(target, put, metric);
    Failed(env);
    env->DeleteLocalRef(metric);
  }
}

void RawPutRemoteApps(JNIEnv* env, const RawIds& ids, jobject session, IHostSample* instance) {
  ComPtr<IHostSampleEnumerator> apps;
  ScopedBstr collection(WSTR("remoteApps"));
  if (FAILED(instance->get_collection(collection.Get(), apps.Receive()))) return;
  ScopedBstr id;
  ComPtr<IHostSample> app;
  while (apps->Next(id.Receive(), app.Receive()) == S_OK) {
    jstring javaId = RawString(env, id.Get());
    jobject javaApp = env->NewObject(ids.app, ids.appCtor, javaId);
    env->DeleteLocalRef(javaId);
    if (!javaApp) {
      Failed(env);
      continue;
    }
    RawPutMetrics(env, ids, javaApp, ids.appPutMetric, app.Get());
    env->CallVoidMethod(session, ids.putRemoteApp, javaApp);
    Failed(env);
    env->DeleteLocalRef(javaApp);
  }
}

jobject RawSession(JNIEnv* env, const RawIds& ids, IHostUserSession* host) {
  LONG id = 0;
  ScopedBstr sid, user, domain;
  VARIANT_BOOL connected = 0;
  host->get_id(&id);
  host->get_sid(sid.Receive());
  host->get_user(user.Receive());
  host->get_domain(domain.Receive());
  host->get_connected(&connected);
  jstring strings[] = {RawString(env, sid.Get()), RawString(env, user.Get()),
                       RawString(env, domain.Get())};
  jobject session = env->NewObject(ids.session, ids.sessionCtor, static_cast<jint>(id),
                                   strings[0], strings[1], strings[2],
                                   static_cast<jboolean>(connected == 1));
  for (jstring string : strings) env->DeleteLocalRef(string);
  if (!session) {
    Failed(env);
    return nullptr;
  }
  ComPtr<IHostPropertyBox> box;
  ComPtr<IHostEnumerator> properties;
  if (SUCCEEDED(host->get_propertyBox(box.Receive())) &&
      SUCCEEDED(box->get_enumerator(properties.Receive()))) {
    ScopedBstr name;
    ScopedVariant value;
    while (properties->Next(name.Receive(), value.Receive()) == S_OK) {
      value.ChangeType(VT_BSTR);
      jstring javaName = RawString(env, name.Get());
      jstring javaValue = RawString(env, value.Get().bstrVal);
      env->CallVoidMethod(session, ids.putProperty, javaName, javaValue);
      Failed(env);
      env->DeleteLocalRef(javaName);
      env->DeleteLocalRef(javaValue);
    }
  }
  return session;
}

jobject RawSample(JNIEnv* env, const RawIds& ids, IHostSample* host, IHostSessionSource* sessions) {
  DATE time = 0;
  if (FAILED(host->get_time(&time))) return nullptr;
  jobject sample = env->NewObject(ids.sample, ids.sampleCtor,
                                  static_cast<jlong>(CJNIConvertor::ToJavaTime(time) * 1000));
  if (!sample) {
    Failed(env);
    return nullptr;
  }
  RawPutMetrics(env, ids, sample, ids.samplePutMetric, host);
  ComPtr<IHostSampleEnumerator> instances;
  if (FAILED(host->get_instances(instances.Receive()))) {
    env->DeleteLocalRef(sample);
    return nullptr;
  }
  ScopedBstr key;
  ComPtr<IHostSample> instance;
  while (instances->Next(key.Receive(), instance.Receive()) == S_OK) {
    ComPtr<IHostUserSession> hostSession;
    if (FAILED(sessions->GetSession(StrToIntW(key.Get()), hostSession.Receive()))) continue;
    jobject session = RawSession(env, ids, hostSession.Get());
    if (!session) continue;
    RawPutMetrics(env, ids, session, ids.sessionPutMetric, instance.Get());
    RawPutRemoteApps(env, ids, session, instance.Get());
    env->CallVoidMethod(sample, ids.putSession, session);
    Failed(env);
    env->DeleteLocalRef(session);
  }
  return sample;
}

void RawJni(benchmark::State& state) {
  Bench& bench = Shared();
  JNIEnv* env = bench.machine->GetEnv();
  const RawIds ids(*bench.machine);
  for (auto _ : state) {
    jobject sample = RawSample(env, ids, bench.host.sample.Get(), bench.host.sessions.Get());
    if (!sample) state.SkipWithError("no sample");
    benchmark::DoNotOptimize(sample);
    env->DeleteLocalRef(sample);
  }
}

// The host side alone: every read the converters make, through the same fakes. Both JNI
// variants pay this; it is not the component's cost.
void WalkMetrics(IHostSample* source) {
  ComPtr<IHostEnumerator> metrics;
  if (FAILED(source->get_metrics(1, metrics.Receive()))) return;
  ScopedBstr name;
  ScopedVariant value;
  while (metrics->Next(name.Receive(), value.Receive()) == S_OK) benchmark::DoNotOptimize(value);
}

void HostOnly(benchmark::State& state) {
  Bench& bench = Shared();
  for (auto _ : state) {
    IHostSample* host = bench.host.sample.Get();
    DATE time = 0;
    host->get_time(&time);
    WalkMetrics(host);
    ComPtr<IHostSampleEnumerator> instances;
    host->get_instances(instances.Receive());
    ScopedBstr key;
    ComPtr<IHostSample> instance;
    while (instances->Next(key.Receive(), instance.Receive()) == S_OK) {
      ComPtr<IHostUserSession> session;
      bench.host.sessions->GetSession(StrToIntW(key.Get()), session.Receive());
      ScopedBstr sid, user, domain;
      session->get_sid(sid.Receive());
      session->get_user(user.Receive());
      session->get_domain(domain.Receive());
      ComPtr<IHostPropertyBox> box;
      ComPtr<IHostEnumerator> properties;
      session->get_propertyBox(box.Receive());
      box->get_enumerator(properties.Receive());
      ScopedBstr name;
      ScopedVariant value;
      while (properties->Next(name.Receive(), value.Receive()) == S_OK) value.ChangeType(VT_BSTR);
      WalkMetrics(instance.Get());
      ComPtr<IHostSampleEnumerator> apps;
      ScopedBstr collection(WSTR("remoteApps"));
      instance->get_collection(collection.Get(), apps.Receive());
      ScopedBstr id;
      ComPtr<IHostSample> app;
      while (apps->Next(id.Receive(), app.Receive()) == S_OK) WalkMetrics(app.Get());
    }
  }
}

void PureJava(benchmark::State& state) {
  Bench& bench = Shared();
  JNIEnv* env = bench.machine->GetEnv();
  const jlong time = static_cast<jlong>(CJNIConvertor::ToJavaTime(kTime) * 1000);
  for (auto _ : state) {
    jobject sample = env->CallObjectMethod(bench.builder, bench.build, time);
    if (!sample) state.SkipWithError("no sample");
    benchmark::DoNotOptimize(sample);
    env->DeleteLocalRef(sample);
  }
}

}  // namespace

BENCHMARK(GetSample)->Unit(benchmark::kMicrosecond);
BENCHMARK(RawJni)->Unit(benchmark::kMicrosecond);
BENCHMARK(PureJava)->Unit(benchmark::kMicrosecond);
BENCHMARK(HostOnly)->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv) {
  Shared();  // the JVM starts on the main thread, which stays its creating thread
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
