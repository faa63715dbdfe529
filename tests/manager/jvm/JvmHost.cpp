#include "JvmHost.h"

#include "manager/AgentRegistry.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

namespace tarnix::testing {

JvmHostTest::JvmHostTest() {
  registry_.Own(HKEY_LOCAL_MACHINE, AgentKeyPath());
  registry_.Own(HKEY_LOCAL_MACHINE, kHostDesktopKeyPath);
}

void JvmHostTest::WriteSettings(const AgentSettings& settings) {
  auto set = [&](const WString& key, const char* name, const std::optional<std::string>& value) {
    if (value) registry_.SetString(HKEY_LOCAL_MACHINE, key, W(name), W(*value));
  };
  registry_.CreateKey(HKEY_LOCAL_MACHINE, AgentKeyPath());
  set(AgentKeyPath(), "JrePath", settings.jrePath);
  set(AgentKeyPath(), "ClassPath", settings.classPath);
  set(AgentKeyPath(), "LogDirectory", settings.logDirectory);
  set(AgentKeyPath(), "ConfigDirectory", settings.configDirectory);
}

void JvmHostTest::ArmFaultsAtStartUp(const std::string& faults) {
  const char* existing = std::getenv("JAVA_TOOL_OPTIONS");
  std::string options = existing ? existing : "";
  options += " -javaagent:" MANAGER_TEST_FAULTS_AGENT "=" + faults;
  setenv("JAVA_TOOL_OPTIONS", options.c_str(), 1);
}

std::vector<std::string> ManagerJvmTest::Sends() {
  std::vector<std::string> sends;
  for (const std::string& call : RawJava().Calls()) {
    if (call.rfind("on", 0) == 0 || call.rfind("refreshSession", 0) == 0) sends.push_back(call);
  }
  RawJava().ClearCalls();
  return sends;
}

std::string StandInClassPath(const std::string& folder) {
  std::string classPath;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() != ".jar") continue;
    if (!classPath.empty()) classPath += ':';
    classPath += entry.path().string();
  }
  return classPath;
}

JavaVM* RunningJavaVM() {
  using GetCreated = jint(JNICALL*)(JavaVM**, jsize, jsize*);
  // The test's own reference to the runtime library; the JVM lives in the one copy.
  static const HMODULE runtime =
      LoadLibraryW(W(MANAGER_TEST_JAVA_HOME "/lib/server/libjvm.so").c_str());
  if (!runtime) return nullptr;
  const auto getCreated = reinterpret_cast<GetCreated>(
      reinterpret_cast<void*>(GetProcAddress(runtime, "JNI_GetCreatedJavaVMs")));
  JavaVM* vm = nullptr;
  jsize count = 0;
  if (!getCreated || getCreated(&vm, 1, &count) != JNI_OK || count == 0) return nullptr;
  return vm;
}

AttachedThread::AttachedThread() : vm(RunningJavaVM()) {
  if (!vm) {
    ADD_FAILURE() << "no JVM runs in this process";
    return;
  }
  if (vm->GetEnv(reinterpret_cast<void**>(&env), JNI_VERSION_1_6) == JNI_OK) return;
  attached = vm->AttachCurrentThread(reinterpret_cast<void**>(&env), nullptr) == JNI_OK;
  if (!attached) env = nullptr;
}

AttachedThread::~AttachedThread() {
  if (attached) vm->DetachCurrentThread();
}

}  // namespace tarnix::testing
