#include "JvmProbe.h"

#include <dlfcn.h>
#include <jni.h>
#include <jvmti.h>

#include <fstream>
#include <regex>
#include <unistd.h>

namespace tarnix::hostsim {
namespace {

JavaVM* RunningJavaVM(const std::string& runtimeLibrary) {
  // Only a library that is already loaded: the probe must not start a runtime of its own.
  void* runtime = dlopen(runtimeLibrary.c_str(), RTLD_NOW | RTLD_NOLOAD);
  if (!runtime) return nullptr;
  using GetCreated = jint(JNICALL*)(JavaVM**, jsize, jsize*);
  const auto getCreated = reinterpret_cast<GetCreated>(dlsym(runtime, "JNI_GetCreatedJavaVMs"));
  JavaVM* vm = nullptr;
  jsize count = 0;
  const bool found = getCreated && getCreated(&vm, 1, &count) == JNI_OK && count > 0;
  dlclose(runtime);
  return found ? vm : nullptr;
}

// The JVM's thread dump, through its diagnostic command bean; empty on any failure. Every
// step is checked for a pending exception before the next JNI call, as the JNI checks ask.
std::string Dump(JNIEnv* env) {
  const auto threw = [env] {
    if (!env->ExceptionCheck()) return false;
    env->ExceptionClear();
    return true;
  };
  jclass factory = env->FindClass("java/lang/management/ManagementFactory");
  if (threw() || !factory) return {};
  jmethodID serverOf =
      env->GetStaticMethodID(factory, "getPlatformMBeanServer", "()Ljavax/management/MBeanServer;");
  if (threw() || !serverOf) return {};
  jobject server = env->CallStaticObjectMethod(factory, serverOf);
  if (threw() || !server) return {};
  jclass nameClass = env->FindClass("javax/management/ObjectName");
  if (threw() || !nameClass) return {};
  jmethodID nameOf = env->GetMethodID(nameClass, "<init>", "(Ljava/lang/String;)V");
  if (threw() || !nameOf) return {};
  jstring beanName = env->NewStringUTF("com.sun.management:type=DiagnosticCommand");
  if (threw() || !beanName) return {};
  jobject name = env->NewObject(nameClass, nameOf, beanName);
  if (threw() || !name) return {};
  jclass serverClass = env->FindClass("javax/management/MBeanServer");
  if (threw() || !serverClass) return {};
  jmethodID invoke = env->GetMethodID(serverClass, "invoke",
                                      "(Ljavax/management/ObjectName;Ljava/lang/String;"
                                      "[Ljava/lang/Object;[Ljava/lang/String;)Ljava/lang/Object;");
  if (threw() || !invoke) return {};
  jclass stringClass = env->FindClass("java/lang/String");
  if (threw() || !stringClass) return {};
  jclass objectClass = env->FindClass("java/lang/Object");
  if (threw() || !objectClass) return {};
  jobjectArray parameters = env->NewObjectArray(1, objectClass, nullptr);
  if (threw() || !parameters) return {};
  jobjectArray noArguments = env->NewObjectArray(0, stringClass, nullptr);
  if (threw() || !noArguments) return {};
  env->SetObjectArrayElement(parameters, 0, noArguments);
  if (threw()) return {};
  jobjectArray signature = env->NewObjectArray(1, stringClass, nullptr);
  if (threw() || !signature) return {};
  jstring argumentType = env->NewStringUTF("[Ljava.lang.String;");
  if (threw() || !argumentType) return {};
  env->SetObjectArrayElement(signature, 0, argumentType);
  if (threw()) return {};
  jstring operation = env->NewStringUTF("threadPrint");
  if (threw() || !operation) return {};
  jobject text = env->CallObjectMethod(server, invoke, name, operation, parameters, signature);
  if (threw() || !text) return {};
  const char* chars = env->GetStringUTFChars(static_cast<jstring>(text), nullptr);
  if (threw() || !chars) return {};
  std::string dump = chars;
  env->ReleaseStringUTFChars(static_cast<jstring>(text), chars);
  return dump;
}

// The dump inside a local frame of its own, so that every reference it made goes with it.
std::string ThreadDump(JNIEnv* env) {
  if (env->PushLocalFrame(32) != JNI_OK) {
    env->ExceptionClear();
    return {};
  }
  std::string dump = Dump(env);
  env->PopLocalFrame(nullptr);
  return dump;
}

}  // namespace

long JniGlobalReferences(const std::string& runtimeLibrary) {
  JavaVM* vm = RunningJavaVM(runtimeLibrary);
  if (!vm) return -1;
  JNIEnv* env = nullptr;
  bool attached = false;
  if (vm->GetEnv(reinterpret_cast<void**>(&env), JNI_VERSION_1_6) != JNI_OK) {
    if (vm->AttachCurrentThread(reinterpret_cast<void**>(&env), nullptr) != JNI_OK) return -1;
    attached = true;
  }
  const std::string dump = ThreadDump(env);
  if (attached) vm->DetachCurrentThread();
  std::smatch match;
  static const std::regex count("JNI global refs: ([0-9]+)");
  return std::regex_search(dump, match, count) ? std::stol(match[1]) : -1;
}

namespace {

// Marks the asking thread's object while the roots are walked.
constexpr jlong kAskingThreadTag = 0x51A7;

jint JNICALL CountLocalRoot(jvmtiHeapReferenceKind kind, const jvmtiHeapReferenceInfo* info, jlong,
                            jlong, jlong, jlong*, jlong*, jint, void* count) {
  if (kind == JVMTI_HEAP_REFERENCE_JNI_LOCAL && info->jni_local.thread_tag == kAskingThreadTag) {
    ++*static_cast<long*>(count);
  }
  return 0;  // the roots are all that is counted: nothing is followed further
}

long CountLocalRoots(jvmtiEnv* ti) {
  jvmtiCapabilities capabilities{};
  capabilities.can_tag_objects = 1;
  jthread thread = nullptr;
  if (ti->AddCapabilities(&capabilities) != JVMTI_ERROR_NONE ||
      ti->GetCurrentThread(&thread) != JVMTI_ERROR_NONE ||
      ti->SetTag(thread, kAskingThreadTag) != JVMTI_ERROR_NONE) {
    return -1;
  }
  jvmtiHeapCallbacks callbacks{};
  callbacks.heap_reference_callback = CountLocalRoot;
  long count = 0;
  if (ti->FollowReferences(0, nullptr, nullptr, &callbacks, &count) != JVMTI_ERROR_NONE) count = -1;
  ti->SetTag(thread, 0);
  return count;
}

}  // namespace

long JniLocalReferencesOfThisThread(const std::string& runtimeLibrary) {
  JavaVM* vm = RunningJavaVM(runtimeLibrary);
  JNIEnv* env = nullptr;
  jvmtiEnv* ti = nullptr;
  if (!vm || vm->GetEnv(reinterpret_cast<void**>(&env), JNI_VERSION_1_6) != JNI_OK ||
      vm->GetEnv(reinterpret_cast<void**>(&ti), JVMTI_VERSION_1_2) != JNI_OK) {
    return -1;
  }
  // The thread reference GetCurrentThread makes lives in this frame, and goes with it.
  if (env->PushLocalFrame(4) != JNI_OK) {
    env->ExceptionClear();
    ti->DisposeEnvironment();
    return -1;
  }
  const long count = CountLocalRoots(ti);
  env->PopLocalFrame(nullptr);
  ti->DisposeEnvironment();
  return count;
}

long ResidentKilobytes() {
  std::ifstream statm("/proc/self/statm");
  long pages = 0, resident = 0;
  if (!(statm >> pages >> resident)) return 0;
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

}  // namespace tarnix::hostsim
