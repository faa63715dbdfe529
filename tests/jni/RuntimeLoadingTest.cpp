// Loading the runtime library and the machine's thread bookkeeping, against a stand-in
// runtime library that records its calls, and the module calls the bridge relies on: alike
// on Windows (Wine) and the POSIX layer.
#include "TestPaths.h"
#include "stub/StubRecord.h"

#include "jni/JavaVM.h"
#include "jni/RuntimeLibrary.h"

#include "platform/JavaRuntime.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>
#include <stdexcept>
#include <thread>

namespace {

// Whether a library is mapped into the process, without taking a reference to it.
bool IsModuleLoaded(const WString& path) {
  HMODULE module = nullptr;
  return GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT, path.c_str(), &module) &&
         module != nullptr;
}

WString DllDirectory() {
  WCHAR buffer[MAX_PATH + 1] = {};
  const DWORD length = GetDllDirectoryW(MAX_PATH + 1, buffer);
  return WString(buffer, length);
}

// A machine on a stand-in runtime that records its calls into `record` (its own, or one
// that outlives it); each Create passes the record's option before the given ones.
struct StubMachine {
  explicit StubMachine(StubRecord* into = nullptr) : record(into ? *into : own) {}
  LONG Create(std::vector<std::string> options = {}) {
    char option[64];
    std::snprintf(option, sizeof option, "-Dstub.record=%llx",
                  static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(&record)));
    options.insert(options.begin(), option);
    return machine.Create(options);
  }
  StubRecord own{};
  StubRecord& record;
  CJavaVM machine{TARNIX_TEST_STUB_JRE};
};

// The record of the module the machine loaded, as its own export answers it.
StubRecord* OwnRecord(CJavaVM& machine) {
  auto function = reinterpret_cast<StubRecordFunction>(reinterpret_cast<void (*)()>(
      GetProcAddress(machine.GetRuntimeModule(), TARNIX_STUB_RECORD_FUNCTION)));
  return function ? function() : nullptr;
}

TEST(RuntimeLoading, PathsAreConcatenatedOntoTheRuntimeDirectory) {
#ifdef _WIN32
  CJavaVM machine(WSTR("C:\\Agent\\jre"));
  EXPECT_EQ(machine.GetDllDirectory(), WSTR("C:\\Agent\\jrebin"));
  EXPECT_EQ(machine.GetRuntimeLibraryPath(), WSTR("C:\\Agent\\jrebin\\server\\jvm.dll"));
  CJavaVM withSeparator(WSTR("C:\\Agent\\jre\\"));
  EXPECT_EQ(withSeparator.GetRuntimeLibraryPath(), WSTR("C:\\Agent\\jre\\bin\\server\\jvm.dll"));
#else
  CJavaVM machine(WSTR("/opt/agent/jre"));
  EXPECT_EQ(machine.GetDllDirectory(), WSTR("/opt/agent/jrelib"));
  EXPECT_EQ(machine.GetRuntimeLibraryPath(), WSTR("/opt/agent/jrelib/server/libjvm.so"));
  CJavaVM withSeparator(WSTR("/opt/agent/jre/"));
  EXPECT_EQ(withSeparator.GetRuntimeLibraryPath(), WSTR("/opt/agent/jre/lib/server/libjvm.so"));
#endif
  EXPECT_EQ(machine.GetRuntimeModule(), nullptr);
  EXPECT_EQ(machine.GetEnv(), nullptr);
}

TEST(RuntimeLoading, BareNamesAreFoundInTheDllDirectoryKeptUntilReset) {
#ifdef _WIN32
  const WString folder = WString(TARNIX_TEST_STUB_JRE) + WSTR("bin");
  const WString name = WSTR("stubdep.dll");
#else
  const WString folder = WString(TARNIX_TEST_STUB_JRE) + WSTR("lib/server");
  const WString name = WSTR("libjvm.so");
#endif
  EXPECT_EQ(DllDirectory(), WString());
  EXPECT_EQ(LoadLibraryW(name.c_str()), nullptr);
  ASSERT_TRUE(SetDllDirectoryW(folder.c_str()));
  EXPECT_EQ(DllDirectory(), folder);
  WCHAR tooSmall[4] = {};
  EXPECT_EQ(GetDllDirectoryW(4, tooSmall), folder.size() + 1);
  const HMODULE module = LoadLibraryW(name.c_str());
  ASSERT_TRUE(SetDllDirectoryW(nullptr));
  EXPECT_EQ(DllDirectory(), WString());
  ASSERT_NE(module, nullptr);
  EXPECT_TRUE(FreeLibrary(module));
}

TEST(RuntimeLoading, CreateLoadsByFullPathAndHandsOverTheOptionsOnce) {
  StubMachine stub;
  CJavaVM& machine = stub.machine;
  ASSERT_EQ(stub.Create({"-Xrs", "-Xmx100M"}), 0);
  const StubRecord& record = stub.record;
  EXPECT_TRUE(IsModuleLoaded(machine.GetRuntimeLibraryPath()));
  EXPECT_EQ(record.createCalls, 1);
  EXPECT_EQ(record.version, 0x00010006);
  EXPECT_EQ(record.optionCount, 3);
  EXPECT_FALSE(record.optionsWereNull);
  EXPECT_EQ(record.ignoreUnrecognized, JNI_FALSE);
  EXPECT_TRUE(record.extraInfoAllNull);
  EXPECT_STREQ(record.options[1], "-Xrs");
  EXPECT_STREQ(record.options[2], "-Xmx100M");
  EXPECT_EQ(machine.GetCreatingThread(), GetCurrentThreadId());
  EXPECT_NE(machine.GetEnv(), nullptr);
  // The entry point that ran is the one of this module: its own record says so.
  EXPECT_EQ(OwnRecord(machine), &record);

  const HMODULE module = machine.GetRuntimeModule();
  EXPECT_EQ(stub.Create(), 0);
  EXPECT_EQ(record.createCalls, 1);
  EXPECT_EQ(machine.GetRuntimeModule(), module);
}

TEST(RuntimeLoading, EmptyOptionsPassANullArray) {
  CJavaVM machine(TARNIX_TEST_STUB_JRE);
  ASSERT_EQ(machine.Create({}), 0);
  const StubRecord* record = OwnRecord(machine);
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->createCalls, 1);
  EXPECT_EQ(record->optionCount, 0);
  EXPECT_TRUE(record->optionsWereNull);
}

TEST(RuntimeLoading, SearchDirectoryIsTheRuntimesOwnWhileLoadingAndTheHostsAfterwards) {
  const WString hostDirectory = TARNIX_TEST_MISSING_JRE;
  ASSERT_TRUE(SetDllDirectoryW(hostDirectory.c_str()));
  {
    StubMachine stub;
    ASSERT_EQ(stub.Create(), 0);
    EXPECT_EQ(DllDirectory(), hostDirectory);
#ifdef _WIN32
    // The stand-in imports a library that sits only in the runtime's bin folder, so the
    // load itself proves the search directory; the library saw it too.
    EXPECT_EQ(WString(reinterpret_cast<const WCHAR*>(stub.record.dllDirectoryAtLoad)),
              stub.machine.GetDllDirectory());
#endif
  }
  ASSERT_TRUE(SetDllDirectoryW(nullptr));
  StubMachine stub;
  ASSERT_EQ(stub.Create(), 0);
  EXPECT_EQ(DllDirectory(), WString());
}

TEST(RuntimeLoading, FailuresAreTheLoadersLastErrorOrTheJniCodeAndRegisterNoThread) {
  CJavaVM missing(TARNIX_TEST_MISSING_JRE);
  EXPECT_EQ(missing.Create({"-Xrs"}), static_cast<LONG>(0x8007007E));
  EXPECT_EQ(missing.GetRuntimeModule(), nullptr);
  CJavaVM withoutEntry(TARNIX_TEST_STUB_JRE_WITHOUT_ENTRY);
  EXPECT_EQ(withoutEntry.Create({"-Xrs"}), static_cast<LONG>(0x8007007F));

  StubMachine refused;
  EXPECT_EQ(refused.Create({"-Dstub.result=-3"}), JNI_EVERSION);
  for (CJavaVM* machine : {&missing, &withoutEntry, &refused.machine}) {
    EXPECT_EQ(machine->GetEnv(), nullptr);
    EXPECT_EQ(machine->GetCreatingThread(), 0u);
  }
  // The library stays loaded until the machine goes; a later attempt tries again.
  EXPECT_TRUE(IsModuleLoaded(refused.machine.GetRuntimeLibraryPath()));
  EXPECT_EQ(refused.Create(), 0);
  EXPECT_EQ(refused.record.createCalls, 2);
  EXPECT_NE(refused.machine.GetEnv(), nullptr);
}

TEST(RuntimeLoading, AttachAndDetachAskTheMachineOnlyWhenTheMapSaysSo) {
  StubMachine stub;
  CJavaVM& machine = stub.machine;
  ASSERT_EQ(stub.Create(), 0);
  // The creating thread is registered for good, and never handed a detaching guard.
  EXPECT_EQ(machine.AttachCurrentThread(), 0);
  EXPECT_EQ(machine.DetachCurrentThread(), 0);
  EXPECT_FALSE(machine.AttachForScope());
  EXPECT_NE(machine.GetEnv(), nullptr);

  std::thread([&] {
    EXPECT_EQ(machine.GetEnv(), nullptr);
    EXPECT_EQ(machine.AttachCurrentThread(), 0);
    EXPECT_NE(machine.GetEnv(), nullptr);
    EXPECT_EQ(machine.AttachCurrentThread(), 0);
    EXPECT_EQ(stub.record.attachCalls, 1);
    EXPECT_EQ(machine.DetachCurrentThread(), 0);
    EXPECT_EQ(machine.GetEnv(), nullptr);
    EXPECT_EQ(stub.record.detachCalls, 1);
    {
      LONG result = -1;
      CJavaVM::ThreadDetachGuard guard = machine.AttachForScope(&result);
      EXPECT_EQ(result, 0);
      EXPECT_TRUE(guard);
      // An inner operation finds the thread attached and leaves it so.
      EXPECT_FALSE(machine.AttachForScope());
      EXPECT_NE(machine.GetEnv(), nullptr);
    }
    EXPECT_EQ(machine.GetEnv(), nullptr);
    EXPECT_EQ(stub.record.detachCalls, 2);
    try {
      CJavaVM::ThreadDetachGuard guard = machine.AttachForScope();
      throw std::runtime_error("host failure");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(machine.GetEnv(), nullptr);
    EXPECT_EQ(stub.record.detachCalls, 3);
  }).join();
  EXPECT_EQ(stub.record.attachCalls, 3);
}

TEST(RuntimeLoading, RefusalsOfTheMachineAreReturnedAndLeaveTheMapAlone) {
  StubMachine refusingDetach;
  ASSERT_EQ(refusingDetach.Create({"-Dstub.detach=-1"}), 0);
  std::thread([&] {
    ASSERT_EQ(refusingDetach.machine.AttachCurrentThread(), 0);
    EXPECT_EQ(refusingDetach.machine.DetachCurrentThread(), JNI_ERR);
    EXPECT_NE(refusingDetach.machine.GetEnv(), nullptr);
  }).join();

  StubMachine refusingAttach;
  ASSERT_EQ(refusingAttach.Create({"-Dstub.attach=-4"}), 0);
  std::thread([&] {
    LONG result = 0;
    EXPECT_FALSE(refusingAttach.machine.AttachForScope(&result));
    EXPECT_EQ(result, JNI_ENOMEM);
    EXPECT_EQ(refusingAttach.machine.GetEnv(), nullptr);
  }).join();
  EXPECT_EQ(refusingAttach.record.detachCalls, 0);
}

TEST(RuntimeLoading, DestructionDestroysTheMachineAndFreesTheLibraryButUnloadLeavesItMapped) {
  StubRecord destroyed{}, unloaded{};
  WString path;
  {
    StubMachine stub(&destroyed);
    path = stub.machine.GetRuntimeLibraryPath();
    ASSERT_EQ(stub.Create(), 0);
    EXPECT_TRUE(IsModuleLoaded(path));
  }
  EXPECT_EQ(destroyed.destroyCalls, 1);
  EXPECT_FALSE(IsModuleLoaded(path));
  {
    StubMachine stub(&unloaded);
    ASSERT_EQ(stub.Create(), 0);
    stub.machine.Unload();
    EXPECT_EQ(stub.machine.GetEnv(), nullptr);
    EXPECT_EQ(stub.machine.GetJavaVM(), nullptr);
    EXPECT_EQ(stub.machine.GetRuntimeModule(), nullptr);
    EXPECT_EQ(stub.machine.DetachCurrentThread(), JNI_ERR);
  }
  EXPECT_EQ(unloaded.destroyCalls, 0);
  // The machine's threads still run in the library's code, so it stays mapped.
  EXPECT_TRUE(IsModuleLoaded(path));

  // A library whose machine never started has nothing running in it.
  CJavaVM refused(TARNIX_TEST_STUB_JRE_WITHOUT_ENTRY);
  EXPECT_NE(refused.Create({}), 0);
  const WString refusedPath = refused.GetRuntimeLibraryPath();
  EXPECT_TRUE(IsModuleLoaded(refusedPath));
  refused.Unload();
  EXPECT_FALSE(IsModuleLoaded(refusedPath));
}

}  // namespace
