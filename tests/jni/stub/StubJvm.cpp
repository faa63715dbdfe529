// A stand-in for a Java runtime's machine library: JNI_CreateJavaVM records how it was
// called and answers a chosen code, and the machine it makes counts its calls. Every class
// it is asked for is missing, with no exception to explain why, so a start-up stops at its
// first class. A call it does not expect finds no function and brings the process down,
// which fails the test that made it. Options understood: -Dstub.record=<address of a
// StubRecord>, -Dstub.result=<code>, -Dstub.attach=<code>, -Dstub.detach=<code>.
#include "StubRecord.h"

#include <jni.h>

#include <cstdlib>
#include <cstring>
#include <string>

#ifdef _WIN32
#  include <windows.h>
#  define STUB_EXPORT extern "C" __declspec(dllexport)
extern "C" __declspec(dllimport) int TarnixStub_Dependency();
#else
#  define STUB_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace {

StubRecord g_ownRecord;
StubRecord* g_record = &g_ownRecord;
jint g_attachResult = JNI_OK;
jint g_detachResult = JNI_OK;
jint g_createResult = JNI_OK;

jboolean JNICALL ExceptionCheck(JNIEnv*) { return JNI_FALSE; }
jthrowable JNICALL ExceptionOccurred(JNIEnv*) { return nullptr; }
void JNICALL ExceptionClear(JNIEnv*) {}
jint JNICALL PushLocalFrame(JNIEnv*, jint) { return JNI_OK; }
jobject JNICALL PopLocalFrame(JNIEnv*, jobject) { return nullptr; }
jclass JNICALL FindClass(JNIEnv*, const char*) {
  ++g_record->findClassCalls;
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
  ++g_record->destroyCalls;
  return JNI_OK;
}

jint JNICALL AttachCurrentThread(JavaVM*, void** env, void*) {
  ++g_record->attachCalls;
  if (g_attachResult != JNI_OK) return g_attachResult;
  *env = &g_env;
  return JNI_OK;
}

jint JNICALL DetachCurrentThread(JavaVM*) {
  ++g_record->detachCalls;
  return g_detachResult;
}

jint JNICALL GetEnv(JavaVM*, void** env, jint) {
  ++g_record->getEnvCalls;
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

bool OptionValue(const char* option, const char* name, std::string& value) {
  const size_t length = std::strlen(name);
  if (std::strncmp(option, name, length) != 0) return false;
  value = option + length;
  return true;
}

// Applies the stub's own options; the record and the codes may change here.
void ApplyOption(const char* option) {
  std::string value;
  if (OptionValue(option, "-Dstub.record=", value)) {
    g_record = reinterpret_cast<StubRecord*>(std::strtoull(value.c_str(), nullptr, 16));
  } else if (OptionValue(option, "-Dstub.attach=", value)) {
    g_attachResult = std::atoi(value.c_str());
  } else if (OptionValue(option, "-Dstub.detach=", value)) {
    g_detachResult = std::atoi(value.c_str());
  } else if (OptionValue(option, "-Dstub.result=", value)) {
    g_createResult = std::atoi(value.c_str());
  }
}

void Record(const JavaVMInitArgs* args) {
  g_createResult = JNI_OK;
  for (jint i = 0; args->options && i < args->nOptions; ++i)
    ApplyOption(args->options[i].optionString);
  if (g_record != &g_ownRecord) {
    std::memcpy(g_record->dllDirectoryAtLoad, g_ownRecord.dllDirectoryAtLoad,
                sizeof g_ownRecord.dllDirectoryAtLoad);
  }
  StubRecord& record = *g_record;
  ++record.createCalls;
  record.version = args->version;
  record.optionCount = args->nOptions;
  record.optionsWereNull = args->options == nullptr;
  record.ignoreUnrecognized = args->ignoreUnrecognized;
  record.extraInfoAllNull = 1;
  for (jint i = 0; args->options && i < args->nOptions; ++i) {
    if (args->options[i].extraInfo) record.extraInfoAllNull = 0;
    if (i < 8) {
      std::strncpy(record.options[i], args->options[i].optionString, sizeof record.options[i] - 1);
    }
  }
}

}  // namespace

STUB_EXPORT StubRecord* TarnixStub_Record() { return g_record; }

// The variant without an entry point has the same code under another name.
#ifdef TARNIX_STUB_WITHOUT_ENTRY
#  define STUB_ENTRY TarnixStub_NotTheEntryPoint
#else
#  define STUB_ENTRY JNI_CreateJavaVM
#endif

STUB_EXPORT jint JNICALL STUB_ENTRY(JavaVM** vm, void** env, void* initArgs) {
  const auto* args = static_cast<const JavaVMInitArgs*>(initArgs);
  Record(args);
  if (g_createResult != JNI_OK) return g_createResult;
  *vm = &g_vm;
  *env = &g_env;
  return JNI_OK;
}

#ifdef _WIN32
BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) {
    TarnixStub_Dependency();  // keeps the import, so the loader must find the dependency
    wchar_t directory[300] = {};
    GetDllDirectoryW(300, directory);
    for (int i = 0; i < 300; ++i) g_ownRecord.dllDirectoryAtLoad[i] = directory[i];
  }
  return TRUE;
}
#endif
