// A Java runtime's machine library as far as a start-up that cannot find its classes
// reaches it: the machine is created, and every class it is asked for is missing, with no
// exception to explain why. Everything the machine is asked is counted, so that a host can
// tell whether anything reached Java after a given point. A call it does not expect finds
// no function and brings the process down, which fails the test that made it.
#include "StubCounts.h"

#include <jni.h>

#ifdef _WIN32
#  define STUB_EXPORT extern "C" __declspec(dllexport)
#else
#  define STUB_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

StubCounts g_counts = {};

jboolean JNICALL ExceptionCheck(JNIEnv*) { return JNI_FALSE; }
jthrowable JNICALL ExceptionOccurred(JNIEnv*) { return nullptr; }
void JNICALL ExceptionClear(JNIEnv*) {}
jint JNICALL PushLocalFrame(JNIEnv*, jint) { return JNI_OK; }
jobject JNICALL PopLocalFrame(JNIEnv*, jobject) { return nullptr; }
jclass JNICALL FindClass(JNIEnv*, const char*) {
  ++g_counts.findClassCalls;
  return nullptr;
}

JNINativeInterface_ MakeEnvTable() {
  JNINativeInterface_ table{};
  table.ExceptionCheck = ExceptionCheck;
  table.ExceptionOccurred = ExceptionOccurred;
  table.ExceptionClear = ExceptionClear;
  table.FindClass = FindClass;
  table.PushLocalFrame = PushLocalFrame;
  table.PopLocalFrame = PopLocalFrame;
  return table;
}
JNINativeInterface_ g_envTable = MakeEnvTable();
JNIEnv g_env{&g_envTable};

jint JNICALL DestroyJavaVM(JavaVM*) {
  ++g_counts.destroyCalls;
  return JNI_OK;
}
jint JNICALL AttachCurrentThread(JavaVM*, void** env, void*) {
  ++g_counts.attachCalls;
  *env = &g_env;
  return JNI_OK;
}
jint JNICALL DetachCurrentThread(JavaVM*) {
  ++g_counts.detachCalls;
  return JNI_OK;
}
jint JNICALL GetEnv(JavaVM*, void** env, jint) {
  ++g_counts.getEnvCalls;
  *env = nullptr;
  return JNI_EDETACHED;
}

JNIInvokeInterface_ g_vmTable{nullptr,
                              nullptr,
                              nullptr,
                              DestroyJavaVM,
                              AttachCurrentThread,
                              DetachCurrentThread,
                              GetEnv,
                              AttachCurrentThread};
JavaVM g_vm{&g_vmTable};

}  // namespace

STUB_EXPORT StubCounts* TarnixAbiStub_Counts() { return &g_counts; }

STUB_EXPORT jint JNICALL JNI_CreateJavaVM(JavaVM** vm, void** env, void*) {
  ++g_counts.createCalls;
  *vm = &g_vm;
  *env = &g_env;
  return JNI_OK;
}
