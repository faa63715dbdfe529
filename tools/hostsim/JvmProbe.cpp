#include "JvmProbe.h"

#include <dlfcn.h>
#include <jni.h>

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

// The JVM's thread dump, through its diagnostic command bean; empty on any failure.
std::string ThreadDump(JNIEnv* env) {
  std::string dump;
  if (env->PushLocalFrame(16) != JNI_OK) return dump;
  jclass factory = env->FindClass("java/lang/management/ManagementFactory");
  jmethodID serverOf = factory ? env->GetStaticMethodID(factory, "getPlatformMBeanServer",
                                                         "()Ljavax/management/MBeanServer;")
                               : nullptr;
  jobject server = serverOf ? env->CallStaticObjectMethod(factory, serverOf) : nullptr;
  jclass nameClass = server ? env->FindClass("javax/management/ObjectName") : nullptr;
  jmethodID nameOf =
      nameClass ? env->GetMethodID(nameClass, "<init>", "(Ljava/lang/String;)V") : nullptr;
  jobject name = nameOf ? env->NewObject(nameClass, nameOf,
                                         env->NewStringUTF("com.sun.management:type=DiagnosticCommand"))
                        : nullptr;
  jclass serverClass = name ? env->FindClass("javax/management/MBeanServer") : nullptr;
  jmethodID invoke = serverClass ? env->GetMethodID(serverClass, "invoke",
                                                    "(Ljavax/management/ObjectName;Ljava/lang/String;"
                                                    "[Ljava/lang/Object;[Ljava/lang/String;)Ljava/lang/Object;")
                                 : nullptr;
  jclass stringClass = invoke ? env->FindClass("java/lang/String") : nullptr;
  jclass objectClass = stringClass ? env->FindClass("java/lang/Object") : nullptr;
  jobjectArray parameters = objectClass ? env->NewObjectArray(1, objectClass, nullptr) : nullptr;
  jobjectArray noArguments = parameters ? env->NewObjectArray(0, stringClass, nullptr) : nullptr;
  jobjectArray signature = noArguments ? env->NewObjectArray(1, stringClass, nullptr) : nullptr;
  jobject text = nullptr;
  if (signature) {
    env->SetObjectArrayElement(parameters, 0, noArguments);
    env->SetObjectArrayElement(signature, 0, env->NewStringUTF("[Ljava.lang.String;"));
    text = env->CallObjectMethod(server, invoke, name, env->NewStringUTF("threadPrint"),
                                 parameters, signature);
  }
  if (env->ExceptionCheck()) {
    env->ExceptionClear();
    text = nullptr;
  }
  if (text) {
    const char* chars = env->GetStringUTFChars(static_cast<jstring>(text), nullptr);
    if (chars) {
      dump = chars;
      env->ReleaseStringUTFChars(static_cast<jstring>(text), chars);
    }
  }
  if (env->ExceptionCheck()) env->ExceptionClear();
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

long ResidentKilobytes() {
  std::ifstream statm("/proc/self/statm");
  long pages = 0, resident = 0;
  if (!(statm >> pages >> resident)) return 0;
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

}  // namespace tarnix::hostsim
