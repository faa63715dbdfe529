// The built library as a host loads it: exactly the exported members, under the names the
// host's compiler gives them, callable through those names alone; and over its whole life in
// a host: loading it starts nothing, and unloading it destroys the manager, giving the host
// back everything it held, without a single call into Java - even though a Java machine is
// up at that moment.
#include "StubRecord.h"

#include "fixtures/FakeCallbacks.h"
#include "fixtures/HostTest.h"
#include "fixtures/TestRegistry.h"
#include "manager/AgentRegistry.h"
#include "platform/WideText.h"
#include "tarnix/HostInterfaces.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

namespace tarnix::testing {
namespace {

#ifdef _WIN32
// As MSVC decorates them; the host is built with MSVC.
inline const char* const kGetInstance = "?GetInstance@CRMICommManager@@SAAEAV1@XZ";
inline const char* const kDumpData =
    "??$DumpData@UIUnknown@@@CRMICommManager@@QEAAJPEB_W00_KEPEAUIUnknown@@@Z";
inline const char* const kRegister =
    "?RegisterDataDumpCallback@CRMICommManager@@QEAAJPEB_W00PEAUIDataDumpCallback@@@Z";
inline const char* const kUnregister =
    "?UnregisterDataDumpCallback@CRMICommManager@@QEAAJPEB_W00PEAUIDataDumpCallback@@@Z";
inline const char* const kGetServerInfo =
    "?GetServerInfo@CRMIConfigLoader@@SAJUtagVARIANT@@PEAPEA_W11@Z";
inline const char* const kGetConfigContent =
    "?GetConfigContent@CRMIConfigLoader@@SAJUtagVARIANT@@PEAU2@@Z";
#else
inline const char* const kGetInstance = "_ZN15CRMICommManager11GetInstanceEv";
inline const char* const kDumpData = "_ZN15CRMICommManager8DumpDataI8IUnknownEEiPKDsS3_S3_mhPT_";
inline const char* const kRegister =
    "_ZN15CRMICommManager24RegisterDataDumpCallbackEPKDsS1_S1_P17IDataDumpCallback";
inline const char* const kUnregister =
    "_ZN15CRMICommManager26UnregisterDataDumpCallbackEPKDsS1_S1_P17IDataDumpCallback";
inline const char* const kGetServerInfo =
    "_ZN16CRMIConfigLoader13GetServerInfoE10tagVARIANTPPDsS2_S2_";
inline const char* const kGetConfigContent =
    "_ZN16CRMIConfigLoader16GetConfigContentE10tagVARIANTPS0_";
#endif

using GetInstanceFunction = void* (*)();
using DumpDataFunction = LONG (*)(void*, const WCHAR*, const WCHAR*, const WCHAR*, ULONGLONG,
                                  unsigned char, IUnknown*);
using CallbackFunction = LONG (*)(void*, const WCHAR*, const WCHAR*, const WCHAR*,
                                  IDataDumpCallback*);

// A build path as the component's platform spells it.
inline WString NativePath(std::string path) {
#ifdef _WIN32
  std::replace(path.begin(), path.end(), '/', '\\');
  path = "Z:" + path;
#endif
  return Utf8ToWide(path);
}

// Frees a module on every way out of a test.
class Module {
 public:
  explicit Module(const WString& path) : handle_(LoadLibraryW(path.c_str())) {}
  ~Module() { Free(); }
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;
  HMODULE Get() const { return handle_; }
  bool Free() {
    const bool freed = handle_ && FreeLibrary(handle_);
    handle_ = nullptr;
    return freed;
  }

 private:
  HMODULE handle_;
};

template <class Function>
Function Find(HMODULE library, const char* name) {
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

// Loaded with no host service registered, the way a host that has not set itself up would.
TEST(LibraryExports, TheHostsNamesReachTheManager) {
  const Module module(NativePath(TARNIX_LIBRARY_PATH));
  const HMODULE library = module.Get();
  ASSERT_NE(library, nullptr) << TARNIX_LIBRARY_PATH;
  for (const char* name :
       {kGetInstance, kDumpData, kRegister, kUnregister, kGetServerInfo, kGetConfigContent}) {
    EXPECT_NE(Find<void*>(library, name), nullptr) << name;
  }
  // Nothing of the inside shows: not the implementation, not the platform layer.
  EXPECT_EQ(Find<void*>(library, "_ZN19CRMICommManagerImplC1Ev"), nullptr);
#ifndef _WIN32
  EXPECT_EQ(Find<void*>(library, "SysAllocString"), nullptr);
#endif

  const auto getInstance = Find<GetInstanceFunction>(library, kGetInstance);
  const auto dumpData = Find<DumpDataFunction>(library, kDumpData);
  const auto registerCallback = Find<CallbackFunction>(library, kRegister);
  const auto unregisterCallback = Find<CallbackFunction>(library, kUnregister);
  ASSERT_TRUE(getInstance && dumpData && registerCallback && unregisterCallback);
  void* manager = getInstance();
  EXPECT_EQ(getInstance(), manager);

  auto callback = MakeHostObject<DataDumpInbox>();
  EXPECT_EQ(registerCallback(manager, WSTR("url"), nullptr, WSTR("cert"), callback.Get()), S_OK);
  EXPECT_EQ(callback->RefCount(), 2u);
  EXPECT_EQ(registerCallback(manager, WSTR("url"), nullptr, WSTR("cert"), nullptr), E_POINTER);
  EXPECT_EQ(unregisterCallback(manager, WSTR("url"), nullptr, WSTR("cert"), callback.Get()), S_OK);
  EXPECT_EQ(callback->RefCount(), 1u);

  // No host service is registered for the library: start-up fails once, and from then
  // on every call is refused.
  EXPECT_TRUE(FAILED(dumpData(manager, WSTR("url"), nullptr, nullptr, 1, 8, nullptr)));
  EXPECT_EQ(dumpData(manager, WSTR("url"), nullptr, nullptr, 1, 8, nullptr), E_FAIL);
}

class LibraryLifetime : public HostTest {
 protected:
  void SetUp() override {
    registry_.Own(HKEY_LOCAL_MACHINE, AgentKeyPath());
    registry_.SetString(HKEY_LOCAL_MACHINE, AgentKeyPath(), WSTR("JrePath"),
                        NativePath(TARNIX_STUB_HOME));
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
  const auto counts = Find<StubRecordFunction>(runtime.Get(), TARNIX_STUB_RECORD_FUNCTION);
  ASSERT_NE(counts, nullptr);
  const StubRecord beforeUnload = *counts();
  EXPECT_EQ(beforeUnload.createCalls, 1);
  EXPECT_EQ(beforeUnload.findClassCalls, 1);
  EXPECT_EQ(callback->RefCount(), 2u);
  const size_t linesBeforeUnload = Logger().Count();

  EXPECT_TRUE(library.Free());
  EXPECT_EQ(callback->RefCount(), 1u) << "the manager was not destroyed at unload";
  EXPECT_EQ(std::memcmp(counts(), &beforeUnload, sizeof beforeUnload), 0)
      << "unloading called into Java";
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
