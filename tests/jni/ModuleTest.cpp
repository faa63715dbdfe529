// The module calls the bridge relies on behave alike on Windows (Wine) and the POSIX layer.
#include "LoadedModule.h"
#include "TestPaths.h"
#include "stub/StubRecord.h"

#include "platform/JavaRuntime.h"

#include <gtest/gtest.h>

namespace {

using tarnix::testing::DllDirectory;
using tarnix::testing::IsModuleLoaded;

const WString kStubLibrary = WString(TARNIX_TEST_STUB_JRE) + tarnix::platform::kRuntimeLibrary;

TEST(Module, FailuresSetTheLastErrorAsWindowsDoes) {
  SetLastError(0);
  EXPECT_EQ(LoadLibraryW((WString(TARNIX_TEST_MISSING_JRE) + WSTR("none.dll")).c_str()), nullptr);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));

  // The stand-in runtime needs its dependency found through the DLL directory on Windows.
  SetDllDirectoryW(
      (WString(TARNIX_TEST_STUB_JRE) + tarnix::platform::kRuntimeDllDirectory).c_str());
  const HMODULE module = LoadLibraryW(kStubLibrary.c_str());
  SetDllDirectoryW(nullptr);
  ASSERT_NE(module, nullptr);
  EXPECT_NE(GetProcAddress(module, kStubRecordFunction), nullptr);
  EXPECT_NE(GetProcAddress(module, "JNI_CreateJavaVM"), nullptr);
  SetLastError(0);
  EXPECT_EQ(GetProcAddress(module, "NoSuchFunction"), nullptr);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PROC_NOT_FOUND));

  EXPECT_TRUE(IsModuleLoaded(kStubLibrary));
  EXPECT_TRUE(FreeLibrary(module));
  EXPECT_FALSE(IsModuleLoaded(kStubLibrary));
}

TEST(Module, BareNamesAreFoundInTheDllDirectoryKeptUntilReset) {
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

}  // namespace
