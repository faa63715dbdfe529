// Loading the runtime library and the machine's thread bookkeeping, against a stand-in
// runtime library that records its calls (under Wine for the Windows build).
#include "LoadedModule.h"
#include "TestPaths.h"
#include "stub/StubRecord.h"

#include "jni/JavaVM.h"

#include "platform/JavaRuntime.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <stdexcept>
#include <thread>

namespace {

using tarnix::testing::DllDirectory;
using tarnix::testing::IsModuleLoaded;

std::string RecordOption(StubRecord& record) {
  char option[64];
  std::snprintf(option, sizeof option, "-Dstub.record=%llx",
                static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(&record)));
  return option;
}

// Runs a function on a thread of its own and waits for it.
template <class F>
void OnOtherThread(F function) {
  std::thread thread(function);
  thread.join();
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

TEST(RuntimeLoading, CreateLoadsByFullPathAndHandsOverTheOptionsOnce) {
  StubRecord record{};
  CJavaVM machine(TARNIX_TEST_STUB_JRE);
  ASSERT_EQ(machine.Create({RecordOption(record), "-Xrs", "-Xmx100M"}), 0);

  EXPECT_TRUE(IsModuleLoaded(machine.GetRuntimeLibraryPath()));
  EXPECT_NE(machine.GetRuntimeModule(), nullptr);
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
  auto ownRecord = reinterpret_cast<StubRecordFunction>(reinterpret_cast<void (*)()>(
      GetProcAddress(machine.GetRuntimeModule(), kStubRecordFunction)));
  ASSERT_NE(ownRecord, nullptr);
  EXPECT_EQ(ownRecord(), &record);

  const HMODULE module = machine.GetRuntimeModule();
  EXPECT_EQ(machine.Create({RecordOption(record)}), 0);
  EXPECT_EQ(record.createCalls, 1);
  EXPECT_EQ(machine.GetRuntimeModule(), module);
}

TEST(RuntimeLoading, EmptyOptionsPassANullArray) {
  CJavaVM machine(TARNIX_TEST_STUB_JRE);
  ASSERT_EQ(machine.Create({}), 0);
  auto ownRecord = reinterpret_cast<StubRecordFunction>(reinterpret_cast<void (*)()>(
      GetProcAddress(machine.GetRuntimeModule(), kStubRecordFunction)));
  ASSERT_NE(ownRecord, nullptr);
  EXPECT_EQ(ownRecord()->createCalls, 1);
  EXPECT_EQ(ownRecord()->optionCount, 0);
  EXPECT_TRUE(ownRecord()->optionsWereNull);
}

TEST(RuntimeLoading, SearchDirectoryIsTheRuntimesOwnWhileLoadingAndTheHostsAfterwards) {
  const WString hostDirectory = TARNIX_TEST_MISSING_JRE;
  ASSERT_TRUE(SetDllDirectoryW(hostDirectory.c_str()));
  StubRecord record{};
  {
    CJavaVM machine(TARNIX_TEST_STUB_JRE);
    ASSERT_EQ(machine.Create({RecordOption(record)}), 0);
    EXPECT_EQ(DllDirectory(), hostDirectory);
#ifdef _WIN32
    // The stand-in imports a library that sits only in the runtime's bin folder, so the
    // load itself proves the search directory; the library saw it too.
    EXPECT_EQ(WString(reinterpret_cast<const WCHAR*>(record.dllDirectoryAtLoad)),
              machine.GetDllDirectory());
#endif
  }
  ASSERT_TRUE(SetDllDirectoryW(nullptr));
  CJavaVM machine(TARNIX_TEST_STUB_JRE);
  ASSERT_EQ(machine.Create({RecordOption(record)}), 0);
  EXPECT_EQ(DllDirectory(), WString());
}

TEST(RuntimeLoading, LoadFailuresAreTheLoadersLastErrorAsHresult) {
  CJavaVM missing(TARNIX_TEST_MISSING_JRE);
  EXPECT_EQ(missing.Create({"-Xrs"}), static_cast<LONG>(0x8007007E));
  EXPECT_EQ(missing.GetRuntimeModule(), nullptr);
  EXPECT_EQ(missing.GetEnv(), nullptr);
  EXPECT_EQ(missing.GetCreatingThread(), 0u);

  CJavaVM withoutEntry(TARNIX_TEST_STUB_JRE_WITHOUT_ENTRY);
  EXPECT_EQ(withoutEntry.Create({"-Xrs"}), static_cast<LONG>(0x8007007F));
  EXPECT_EQ(withoutEntry.GetEnv(), nullptr);
}

TEST(RuntimeLoading, RefusedCreationReturnsTheJniCodeAndRegistersNoThread) {
  StubRecord record{};
  CJavaVM machine(TARNIX_TEST_STUB_JRE);
  EXPECT_EQ(machine.Create({RecordOption(record), "-Dstub.result=-3"}), JNI_EVERSION);
  EXPECT_EQ(machine.GetEnv(), nullptr);
  EXPECT_EQ(machine.GetCreatingThread(), 0u);
  // The library stays loaded until the machine goes; a later attempt tries again.
  EXPECT_TRUE(IsModuleLoaded(machine.GetRuntimeLibraryPath()));
  EXPECT_EQ(machine.Create({RecordOption(record)}), 0);
  EXPECT_EQ(record.createCalls, 2);
  EXPECT_NE(machine.GetEnv(), nullptr);
}

TEST(RuntimeLoading, AttachAndDetachAskTheMachineOnlyWhenTheMapSaysSo) {
  StubRecord record{};
  CJavaVM machine(TARNIX_TEST_STUB_JRE);
  ASSERT_EQ(machine.Create({RecordOption(record)}), 0);

  // The creating thread is registered for good.
  EXPECT_EQ(machine.AttachCurrentThread(), 0);
  EXPECT_EQ(machine.DetachCurrentThread(), 0);
  EXPECT_NE(machine.GetEnv(), nullptr);
  EXPECT_EQ(record.attachCalls, 0);
  EXPECT_EQ(record.detachCalls, 0);

  OnOtherThread([&] {
    EXPECT_EQ(machine.GetEnv(), nullptr);
    EXPECT_EQ(machine.AttachCurrentThread(), 0);
    EXPECT_NE(machine.GetEnv(), nullptr);
    EXPECT_EQ(machine.AttachCurrentThread(), 0);
    EXPECT_EQ(record.attachCalls, 1);
    EXPECT_EQ(machine.DetachCurrentThread(), 0);
    EXPECT_EQ(machine.GetEnv(), nullptr);
    EXPECT_EQ(record.detachCalls, 1);
  });
}

TEST(RuntimeLoading, RefusalsOfTheMachineAreReturnedAndLeaveTheMapAlone) {
  StubRecord record{};
  CJavaVM machine(TARNIX_TEST_STUB_JRE);
  ASSERT_EQ(machine.Create({RecordOption(record), "-Dstub.detach=-1"}), 0);
  OnOtherThread([&] {
    ASSERT_EQ(machine.AttachCurrentThread(), 0);
    EXPECT_EQ(machine.DetachCurrentThread(), JNI_ERR);
    EXPECT_NE(machine.GetEnv(), nullptr);
  });

  StubRecord refusing{};
  CJavaVM refusingMachine(TARNIX_TEST_STUB_JRE);
  ASSERT_EQ(refusingMachine.Create({RecordOption(refusing), "-Dstub.attach=-4"}), 0);
  OnOtherThread([&] {
    LONG result = 0;
    EXPECT_FALSE(refusingMachine.AttachForScope(&result));
    EXPECT_EQ(result, JNI_ENOMEM);
    EXPECT_EQ(refusingMachine.GetEnv(), nullptr);
  });
  EXPECT_EQ(refusing.detachCalls, 0);
}

TEST(RuntimeLoading, ScopedAttachmentDetachesOnEveryPathAndOnlyWhatItAttached) {
  StubRecord record{};
  CJavaVM machine(TARNIX_TEST_STUB_JRE);
  ASSERT_EQ(machine.Create({RecordOption(record)}), 0);

  // The creating thread is never handed a detaching guard.
  EXPECT_FALSE(machine.AttachForScope());

  OnOtherThread([&] {
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
    EXPECT_EQ(record.detachCalls, 1);

    try {
      CJavaVM::ThreadDetachGuard guard = machine.AttachForScope();
      throw std::runtime_error("host failure");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(machine.GetEnv(), nullptr);
    EXPECT_EQ(record.detachCalls, 2);
  });
  EXPECT_EQ(record.attachCalls, 2);
}

TEST(RuntimeLoading, DestructionDestroysTheMachineAndFreesTheLibrary) {
  StubRecord record{};
  WString path;
  {
    CJavaVM machine(TARNIX_TEST_STUB_JRE);
    path = machine.GetRuntimeLibraryPath();
    ASSERT_EQ(machine.Create({RecordOption(record)}), 0);
    EXPECT_TRUE(IsModuleLoaded(path));
  }
  EXPECT_EQ(record.destroyCalls, 1);
  EXPECT_FALSE(IsModuleLoaded(path));
}

TEST(RuntimeLoading, UnloadLetsGoOfARunningMachineWithoutDestroyingIt) {
  StubRecord record{};
  WString path;
  {
    CJavaVM machine(TARNIX_TEST_STUB_JRE);
    path = machine.GetRuntimeLibraryPath();
    ASSERT_EQ(machine.Create({RecordOption(record)}), 0);
    machine.Unload();
    EXPECT_EQ(machine.GetEnv(), nullptr);
    EXPECT_EQ(machine.GetJavaVM(), nullptr);
    EXPECT_EQ(machine.GetRuntimeModule(), nullptr);
    EXPECT_EQ(machine.DetachCurrentThread(), JNI_ERR);
  }
  EXPECT_EQ(record.destroyCalls, 0);
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
