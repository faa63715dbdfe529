// The built library over its whole life in a host: loading it starts nothing, and
// unloading it destroys the manager, giving the host back everything it held, without a
// single call into Java - even though a Java machine is up at that moment.
#include "LibraryExports.h"
#include "StubCounts.h"

#include "fixtures/FakeCallbacks.h"
#include "fixtures/HostTest.h"
#include "fixtures/TestRegistry.h"
#include "manager/AgentRegistry.h"

#include <gtest/gtest.h>

#include <string>

namespace tarnix::testing {
namespace {

bool SameCounts(const StubCounts& left, const StubCounts& right) {
  return left.createCalls == right.createCalls && left.destroyCalls == right.destroyCalls &&
         left.attachCalls == right.attachCalls && left.detachCalls == right.detachCalls &&
         left.getEnvCalls == right.getEnvCalls && left.findClassCalls == right.findClassCalls;
}

class LibraryLifetime : public HostTest {
 protected:
  void SetUp() override {
    registry_.Own(HKEY_LOCAL_MACHINE, AgentKeyPath());
    registry_.SetString(HKEY_LOCAL_MACHINE, AgentKeyPath(), WSTR("JrePath"),
                        NativePath(TARNIX_STUB_HOME));
    registry_.Apply();
  }

  TestRegistry registry_;
};

TEST_F(LibraryLifetime, UnloadDestroysTheManagerWithoutCallingJava) {
  Module library(NativePath(TARNIX_LIBRARY_PATH));
  ASSERT_NE(library.Get(), nullptr);
  EXPECT_EQ(Service().Created(), 0) << "loading the library asked the host for something";
  EXPECT_EQ(Logger().Count(), 0u);

  const auto getInstance = Find<GetInstanceFunction>(library.Get(), kGetInstance);
  const auto dumpData = Find<DumpDataFunction>(library.Get(), kDumpData);
  const auto registerCallback = Find<CallbackFunction>(library.Get(), kRegister);
  ASSERT_TRUE(getInstance && dumpData && registerCallback);
  void* manager = getInstance();
  auto callback = MakeHostObject<DataDumpInbox>();
  ASSERT_EQ(registerCallback(manager, WSTR("url"), nullptr, WSTR("cert"), callback.Get()), S_OK);
  EXPECT_EQ(Service().Created(), 0) << "a registration started the Java side";

  // The machine is created, then start-up stops at the first class: the manager keeps a
  // live machine in its failed state.
  EXPECT_EQ(dumpData(manager, WSTR("url"), nullptr, WSTR("cert"), 1, 8, nullptr), E_FAIL);
  EXPECT_TRUE(Logger().Contains(WSTR("Failed to load class "))) << Logger().Dump();
  // Loaded a second time here, the runtime and its counts outlive the library.
  Module runtime(NativePath(TARNIX_STUB_LIBRARY));
  const auto counts = Find<StubCountsFunction>(runtime.Get(), TARNIX_STUB_COUNTS_FUNCTION);
  ASSERT_NE(counts, nullptr);
  const StubCounts beforeUnload = *counts();
  EXPECT_EQ(beforeUnload.createCalls, 1);
  EXPECT_EQ(beforeUnload.findClassCalls, 1);
  EXPECT_EQ(callback->RefCount(), 2u);
  const size_t linesBeforeUnload = Logger().Count();

  EXPECT_TRUE(library.Free());
  EXPECT_EQ(callback->RefCount(), 1u) << "the manager was not destroyed at unload";
  EXPECT_TRUE(SameCounts(*counts(), beforeUnload)) << "unloading called into Java";
  EXPECT_EQ(counts()->destroyCalls, 0);
  EXPECT_EQ(Logger().Count(), linesBeforeUnload);
  // The end of the test checks that the logger and system information came back too.
}

#ifdef _WIN32
// What a host, an installer or a support engineer reads from the file.
TEST(LibraryVersion, TheResourceNamesTheComponentVersion) {
  const WString path = NativePath(TARNIX_LIBRARY_PATH);
  DWORD ignored = 0;
  const DWORD size = GetFileVersionInfoSizeW(path.c_str(), &ignored);
  ASSERT_GT(size, 0u);
  std::string data(size, '\0');
  ASSERT_TRUE(GetFileVersionInfoW(path.c_str(), 0, size, data.data()));

  void* value = nullptr;
  UINT length = 0;
  ASSERT_TRUE(VerQueryValueW(data.data(), L"\\", &value, &length));
  const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(value);
  EXPECT_EQ(fixed->dwSignature, 0xFEEF04BDu);
  EXPECT_EQ(fixed->dwFileVersionMS, (6u << 16) | 6u);
  EXPECT_EQ(fixed->dwFileType, static_cast<DWORD>(VFT_DLL));

  for (const wchar_t* name : {L"\\StringFileInfo\\040904b0\\FileVersion",
                              L"\\StringFileInfo\\040904b0\\ProductVersion"}) {
    ASSERT_TRUE(VerQueryValueW(data.data(), name, &value, &length)) << WideToUtf8(name);
    EXPECT_EQ(WideToUtf8(static_cast<const wchar_t*>(value)), TARNIX_VERSION) << WideToUtf8(name);
  }
  ASSERT_TRUE(VerQueryValueW(data.data(), L"\\StringFileInfo\\040904b0\\OriginalFilename", &value,
                             &length));
  EXPECT_EQ(WString(static_cast<const wchar_t*>(value)), WSTR("tarnix-rmi.dll"));
}
#endif

}  // namespace
}  // namespace tarnix::testing
