// The same object graph as the converters make, built from the same host objects with
// raw JNI: ids looked up once, local references deleted as soon as they are put, and the
// exception checks the component makes: before every call, and after every put. What the
// component's own overhead is measured against.
#pragma once

#include "jni/JavaVM.h"

#include "tarnix/DataInterfaces.h"

#include <jni.h>

namespace tarnix::bench {

struct RawIds {
  jclass sample, metric, session, app, connection;
  jmethodID sampleCtor, samplePutMetric, putSession;
  jmethodID metricCtor, putLong, putDouble, putString;
  jmethodID sessionCtor, putProperty, sessionPutMetric, putRemoteApp;
  jmethodID appCtor, appPutMetric;
  jmethodID connectionCtor;

  // The classes start-up (or the bench) loaded into the machine.
  explicit RawIds(CJavaVM& vm);
};

// A local reference to the BaseSample, or null.
jobject RawSample(JNIEnv* env, const RawIds& ids, IHostSample* host, IHostSessionSource* sessions);

// A local reference to a DesktopConnection of these texts, or null.
jobject RawConnection(JNIEnv* env, const RawIds& ids, const WCHAR* id, const WCHAR* token,
                      const WCHAR* uniqueId);

}  // namespace tarnix::bench
