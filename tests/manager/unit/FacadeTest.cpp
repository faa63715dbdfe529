// The exported manager as the host calls it. The facade is one per process, so each test
// here runs in a process of its own.
#include "ManagerTestSupport.h"

#include "fixtures/FakeCallbacks.h"
#include "fixtures/HostTest.h"
#include "fixtures/TestRegistry.h"
#include "manager/AgentRegistry.h"
#include "manager/ManagerMessages.h"
#include "tarnix/RMICommManager.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace tarnix::testing {
namespace {

class FacadeTest : public HostTest {
 protected:
  LONG Dump() {
    return CRMICommManager::GetInstance().DumpData<IUnknown>(WSTR("rmi://127.0.0.1:1099/server"),
                                                             WSTR("unique"), WSTR("certificate"), 1,
                                                             kTypeWithoutMessage, nullptr);
  }
  TestRegistry registry_;
};

TEST_F(FacadeTest, RegisteringCallbacksStartsNothing) {
  CRMICommManager& manager = CRMICommManager::GetInstance();
  EXPECT_EQ(&manager, &CRMICommManager::GetInstance());
  auto callback = MakeFake<FakeDataDumpCallback>();

  EXPECT_EQ(manager.RegisterDataDumpCallback(WSTR("url"), nullptr, WSTR("cert"), callback.Get()),
            S_OK);
  EXPECT_EQ(manager.UnregisterDataDumpCallback(WSTR("url"), nullptr, WSTR("cert"), callback.Get()),
            S_OK);
  EXPECT_EQ(manager.RegisterDataDumpCallback(nullptr, nullptr, nullptr, nullptr), E_POINTER);
  // Start-up asks the host for its logger before anything else.
  EXPECT_EQ(Service().Created(), 0);
  EXPECT_EQ(Logger().Count(), 0u);
  EXPECT_EQ(callback->RefCount(), 1u);
}

TEST_F(FacadeTest, FailedStartUpIsFinal) {
  SkipReferenceCheck();  // the process-wide manager keeps the host's logger
  const std::filesystem::path nowhere =
      std::filesystem::temp_directory_path() / "tarnix-no-such-runtime";
  registry_.Own(HKEY_LOCAL_MACHINE, AgentKeyPath());
  registry_.SetString(HKEY_LOCAL_MACHINE, AgentKeyPath(), W("JrePath"), W(nowhere.u8string()));
  registry_.SetString(HKEY_LOCAL_MACHINE, AgentKeyPath(), W("ClassPath"), W(nowhere.u8string()));
  registry_.Apply();
  const std::string configLine = U(messages::kDumpDataConfigFailed) + "  Error code 0x80004005";

  EXPECT_EQ(Dump(), E_FAIL);
  const auto first = Lines(Logger(), LogOperation::Error);
  ASSERT_GE(first.size(), 3u) << Logger().Dump();
  EXPECT_EQ(first[first.size() - 3].rfind(
                "Failed to create a Java virtual machine instance.  Error code 0x8007007e", 0),
            0u);
  EXPECT_EQ(
      first[first.size() - 2].rfind(U(messages::kStartUpFailed) + "  Error code 0x80004005", 0),
      0u);
  EXPECT_EQ(first.back().rfind(configLine, 0), 0u);

  // No second attempt: the refusal is all there is, on every later call.
  for (int call = 0; call < 2; ++call) {
    Logger().Clear();
    EXPECT_EQ(Dump(), E_FAIL);
    const auto later = Lines(Logger(), LogOperation::Error);
    ASSERT_EQ(later.size(), 2u) << Logger().Dump();
    EXPECT_EQ(later[0], U(messages::kRefusedAfterFailure));
    EXPECT_EQ(later[1].rfind(configLine, 0), 0u);
  }
  EXPECT_EQ(Service().Queries(IID_IHostLogger), 1);

  // Callbacks work in every state.
  auto callback = MakeFake<FakeDataDumpCallback>();
  CRMICommManager& manager = CRMICommManager::GetInstance();
  EXPECT_EQ(manager.RegisterDataDumpCallback(WSTR("url"), nullptr, nullptr, callback.Get()), S_OK);
  EXPECT_EQ(manager.UnregisterDataDumpCallback(WSTR("url"), nullptr, nullptr, callback.Get()),
            S_OK);
}

}  // namespace
}  // namespace tarnix::testing
