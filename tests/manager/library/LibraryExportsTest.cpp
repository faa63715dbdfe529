// The built library as a host loads it: exactly the exported members, under the names the
// host's compiler gives them, callable through those names alone.
#include "ManagerTestSupport.h"

#include "fixtures/FakeCallbacks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace tarnix::testing {
namespace {

#ifdef _WIN32
// As MSVC decorates them; the host is built with MSVC.
const char* const kGetInstance = "?GetInstance@CRMICommManager@@SAAEAV1@XZ";
const char* const kDumpData =
    "??$DumpData@UIUnknown@@@CRMICommManager@@QEAAJPEB_W00_KEPEAUIUnknown@@@Z";
const char* const kRegister =
    "?RegisterDataDumpCallback@CRMICommManager@@QEAAJPEB_W00PEAUIDataDumpCallback@@@Z";
const char* const kUnregister =
    "?UnregisterDataDumpCallback@CRMICommManager@@QEAAJPEB_W00PEAUIDataDumpCallback@@@Z";
const char* const kGetServerInfo = "?GetServerInfo@CRMIConfigLoader@@SAJUtagVARIANT@@PEAPEA_W11@Z";
const char* const kGetConfigContent = "?GetConfigContent@CRMIConfigLoader@@SAJUtagVARIANT@@PEAU2@@Z";
#else
const char* const kGetInstance = "_ZN15CRMICommManager11GetInstanceEv";
const char* const kDumpData = "_ZN15CRMICommManager8DumpDataI8IUnknownEEiPKDsS3_S3_mhPT_";
const char* const kRegister =
    "_ZN15CRMICommManager24RegisterDataDumpCallbackEPKDsS1_S1_P17IDataDumpCallback";
const char* const kUnregister =
    "_ZN15CRMICommManager26UnregisterDataDumpCallbackEPKDsS1_S1_P17IDataDumpCallback";
const char* const kGetServerInfo = "_ZN16CRMIConfigLoader13GetServerInfoE10tagVARIANTPPDsS2_S2_";
const char* const kGetConfigContent = "_ZN16CRMIConfigLoader16GetConfigContentE10tagVARIANTPS0_";
#endif

// Members called through their exported names: `this` goes first, as both ABIs pass it.
using GetInstanceFunction = void* (*)();
using DumpDataFunction = LONG (*)(void*, const WCHAR*, const WCHAR*, const WCHAR*, ULONGLONG,
                                  unsigned char, IUnknown*);
using CallbackFunction = LONG (*)(void*, const WCHAR*, const WCHAR*, const WCHAR*,
                                  IDataDumpCallback*);

WString LibraryPath() {
  std::string path = TARNIX_LIBRARY_PATH;
#ifdef _WIN32
  std::replace(path.begin(), path.end(), '/', '\\');
  path = "Z:" + path;
#endif
  return W(path);
}

template <class Function>
Function Find(HMODULE library, const char* name) {
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

TEST(LibraryExports, TheHostsNamesReachTheManager) {
  const HMODULE library = LoadLibraryW(LibraryPath().c_str());
  ASSERT_NE(library, nullptr) << U(LibraryPath());
  for (const char* name : {kGetInstance, kDumpData, kRegister, kUnregister, kGetServerInfo,
                           kGetConfigContent}) {
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

  auto callback = MakeFake<FakeDataDumpCallback>();
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

}  // namespace
}  // namespace tarnix::testing
