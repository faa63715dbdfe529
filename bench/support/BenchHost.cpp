#include "BenchHost.h"

#include "jni/JavaVM.h"
#include "manager/AgentRegistry.h"
#include "platform/WideText.h"
#include "tarnix/DataType.h"

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <thread>

namespace tarnix::bench {

BenchHost::BenchHost(ComPtr<IHostSessionSource> sessions) {
  using testing::ServiceRoute;
  service.Setup().Offer(IID_IHostLogger, logger, ServiceRoute::Both);
  service.Setup().Offer(IID_ISystemInfo, systemInfo, ServiceRoute::Both);
  if (sessions) service.Setup().Offer(IID_IHostSessionSource, sessions, ServiceRoute::Both);
  systemInfo->SetMachineId(Utf8ToWide("machine-1"));
  systemInfo->SetVirtualMachineId(Utf8ToWide("vm-7"));
  systemInfo->SetUniqueId(Utf8ToWide("unique-3"));
  systemInfo->SetMachineName(Utf8ToWide("DESK-01"));
  const WString key = AgentKeyPath();
  registry.SetString(HKEY_LOCAL_MACHINE, key, Utf8ToWide("JrePath"),
                     Utf8ToWide(TARNIX_BENCH_JAVA_HOME));
  registry.SetString(HKEY_LOCAL_MACHINE, key, Utf8ToWide("ClassPath"),
                     Utf8ToWide(TARNIX_BENCH_JAR_DIR));
  registry.SetString(HKEY_LOCAL_MACHINE, key, Utf8ToWide("ConfigDirectory"),
                     Utf8ToWide("/tmp/tarnix-bench-config"));
}

LONG BenchHost::Dump(unsigned char type, IUnknown* data, ULONGLONG number) {
  return manager.DumpData(WSTR("in-process"), WSTR("token"), WSTR("cert"), number, type, data);
}

void BenchHost::ClearRecords() {
  logger->Clear();
  testing::FreeRetiredObjects();
  JNIEnv* env = manager.GetJavaVM() ? manager.GetJavaVM()->GetEnv() : nullptr;
  if (!env) return;
  jclass calls = env->FindClass("com/tarnix/testing/Calls");
  if (!calls) {
    env->ExceptionClear();
    return;
  }
  env->CallStaticVoidMethod(calls, env->GetStaticMethodID(calls, "clear", "()V"));
  if (env->ExceptionCheck()) env->ExceptionClear();
  env->DeleteLocalRef(calls);
}

BenchHost& TheHost(ComPtr<IHostSessionSource> sessions) {
  static BenchHost* host = [&sessions] {
    BenchHost* made = nullptr;
    std::mutex lock;
    std::condition_variable ready;
    std::thread([&] {
      auto* created = new BenchHost(sessions);
      // A type without a message of its own: start-up and configuration only.
      const LONG started = created->Dump(11);
      if (started != S_OK)
        std::fprintf(stderr, "start-up failed: 0x%08x\n", static_cast<unsigned>(started));
      {
        std::lock_guard<std::mutex> hold(lock);
        made = created;
      }
      ready.notify_all();
      for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
    }).detach();
    std::unique_lock<std::mutex> hold(lock);
    ready.wait(hold, [&] { return made != nullptr; });
    made->manager.GetJavaVM()->AttachCurrentThread();
    return made;
  }();
  return *host;
}

}  // namespace tarnix::bench
