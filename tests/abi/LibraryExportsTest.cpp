// The built library as a host loads it: exactly the exported members, under the names the
// host's compiler gives them, callable through those names alone.
#include "LibraryExports.h"

#include "fixtures/FakeCallbacks.h"

#include <gtest/gtest.h>

namespace tarnix::testing {
namespace {

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

}  // namespace
}  // namespace tarnix::testing
