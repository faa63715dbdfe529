#include "RawSample.h"

#include "convert/JNIConvertor.h"
#include "convert/ClassTable.h"

#include "platform/ComPtr.h"
#include "platform/ScopedBstr.h"
#include "platform/ScopedVariant.h"

namespace tarnix::bench {
namespace {

#define DATAMODEL "Lcom/corvane/zelmar/adapters/brixcommon/datamodel/"

// The component refuses every call while an exception is pending, so it asks before each
// one (and a converter asks again after it); the comparator asks as often.
bool Refused(JNIEnv* env) { return env->ExceptionCheck(); }

bool Failed(JNIEnv* env) {
  if (!env->ExceptionCheck()) return false;
  env->ExceptionClear();
  return true;
}

jstring RawString(JNIEnv* env, const WCHAR* text, jsize length) {
  if (Refused(env)) return nullptr;
  return env->NewString(reinterpret_cast<const jchar*>(text ? text : WSTR("")), text ? length : 0);
}

jstring RawString(JNIEnv* env, BSTR text) {
  return RawString(env, text, text ? static_cast<jsize>(SysStringLen(text)) : 0);
}

jobject RawMetric(JNIEnv* env, const RawIds& ids, BSTR name, const VARIANT& value) {
  jstring javaName = RawString(env, name);
  jobject metric = Refused(env) ? nullptr : env->NewObject(ids.metric, ids.metricCtor, javaName);
  env->DeleteLocalRef(javaName);
  if (!metric) {
    Failed(env);
    return nullptr;
  }
  if (Refused(env)) {
    env->DeleteLocalRef(metric);
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
    if (!Refused(env)) env->CallVoidMethod(target, put, metric);
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
    jobject javaApp = Refused(env) ? nullptr : env->NewObject(ids.app, ids.appCtor, javaId);
    env->DeleteLocalRef(javaId);
    if (!javaApp) {
      Failed(env);
      continue;
    }
    RawPutMetrics(env, ids, javaApp, ids.appPutMetric, app.Get());
    if (!Refused(env)) env->CallVoidMethod(session, ids.putRemoteApp, javaApp);
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
  jobject session =
      Refused(env) ? nullptr
                   : env->NewObject(ids.session, ids.sessionCtor, static_cast<jint>(id), strings[0],
                                    strings[1], strings[2], static_cast<jboolean>(connected == 1));
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
      if (!Refused(env)) env->CallVoidMethod(session, ids.putProperty, javaName, javaValue);
      Failed(env);
      env->DeleteLocalRef(javaName);
      env->DeleteLocalRef(javaValue);
    }
  }
  return session;
}

}  // namespace

RawIds::RawIds(CJavaVM& vm) {
  sample = vm.GetClass(classes::kBaseSample)->Get();
  metric = vm.GetClass(classes::kBaseMetric)->Get();
  session = vm.GetClass(classes::kBaseUserSession)->Get();
  app = vm.GetClass(classes::kBaseRemoteApp)->Get();
  connection = vm.GetClass(classes::kDesktopConnection)->Get();
  JNIEnv* env = vm.GetEnv();
  const char* metricType = "(" DATAMODEL "Metric;)V";
  sampleCtor = env->GetMethodID(sample, "<init>", "(J)V");
  samplePutMetric = env->GetMethodID(sample, "putMetric", metricType);
  putSession = env->GetMethodID(sample, "putSession", "(" DATAMODEL "UserSession;)V");
  metricCtor = env->GetMethodID(metric, "<init>", "(Ljava/lang/String;)V");
  putLong = env->GetMethodID(metric, "putLongValue", "(J)V");
  putDouble = env->GetMethodID(metric, "putDoubleValue", "(D)V");
  putString = env->GetMethodID(metric, "putStringValue", "(Ljava/lang/String;)V");
  sessionCtor = env->GetMethodID(session, "<init>",
                                 "(ILjava/lang/String;Ljava/lang/String;Ljava/lang/String;Z)V");
  putProperty = env->GetMethodID(session, "putProperty", "(Ljava/lang/String;Ljava/lang/String;)V");
  sessionPutMetric = env->GetMethodID(session, "putMetric", metricType);
  putRemoteApp = env->GetMethodID(session, "putRemoteApp", "(" DATAMODEL "RemoteApp;)V");
  appCtor = env->GetMethodID(app, "<init>", "(Ljava/lang/String;)V");
  appPutMetric = env->GetMethodID(app, "putMetric", metricType);
  connectionCtor = env->GetMethodID(
      connection, "<init>",
      "(Ljava/lang/String;Ljava/lang/String;Ljava/lang/String;ILjava/lang/String;)V");
}

jobject RawSample(JNIEnv* env, const RawIds& ids, IHostSample* host, IHostSessionSource* sessions) {
  DATE time = 0;
  if (FAILED(host->get_time(&time))) return nullptr;
  if (Refused(env)) return nullptr;
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
    if (!Refused(env)) env->CallVoidMethod(sample, ids.putSession, session);
    Failed(env);
    env->DeleteLocalRef(session);
  }
  return sample;
}

jobject RawConnection(JNIEnv* env, const RawIds& ids, const WCHAR* id, const WCHAR* token,
                      const WCHAR* uniqueId) {
  const auto length = [](const WCHAR* text) {
    jsize n = 0;
    while (text[n]) ++n;
    return n;
  };
  jstring strings[] = {RawString(env, id, length(id)), RawString(env, token, length(token)),
                       RawString(env, uniqueId, length(uniqueId)),
                       RawString(env, WSTR("DESKTOP"), 7)};
  jobject connection =
      Refused(env) ? nullptr
                   : env->NewObject(ids.connection, ids.connectionCtor, strings[0], strings[1],
                                    strings[2], static_cast<jint>(0x00060600), strings[3]);
  for (jstring string : strings) env->DeleteLocalRef(string);
  if (!connection) Failed(env);
  return connection;
}

}  // namespace tarnix::bench
