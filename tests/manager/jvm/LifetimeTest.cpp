// The exported manager's life on the real JVM: one start-up, however the first calls
// race, and an end when the thread that started Java ends. One process per test.
#include "JvmHost.h"

#include "fixtures/FakeCallbacks.h"
#include "common/ErrorText.h"
#include "manager/CommManagerImpl.h"
#include "manager/ManagerMessages.h"
#include "tarnix/RMICommManager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

namespace tarnix::testing {
namespace {

class ManagerLifetime : public JvmHostTest {
 protected:
  ManagerLifetime() {
    SkipReferenceCheck();  // the process-wide manager keeps the host's logger
    WriteSettings({});
  }
  static LONG Dump() {
    return CRMICommManager::GetInstance().DumpData<IUnknown>(WSTR("rmi://127.0.0.1/server"),
                                                             WSTR("unique"), WSTR("cert"), 0,
                                                             kTypeWithoutMessage, nullptr);
  }
  static size_t Count(const std::vector<std::string>& calls, const std::string& call) {
    return static_cast<size_t>(std::count(calls.begin(), calls.end(), call));
  }
};

TEST_F(ManagerLifetime, RacingFirstCallsStartJavaOnce) {
  std::atomic<int> arrived{0}, done{0};
  LONG results[2] = {E_UNEXPECTED, E_UNEXPECTED};
  // Both threads call at once, and both stay until both calls are over: the starting
  // thread's end would end the manager for the other.
  auto caller = [&](int index) {
    for (++arrived; arrived.load() < 2;) std::this_thread::yield();
    results[index] = Dump();
    for (++done; done.load() < 2;) std::this_thread::yield();
  };
  std::thread first(caller, 0), second(caller, 1);
  first.join();
  second.join();

  EXPECT_EQ(results[0], S_OK);
  EXPECT_EQ(results[1], S_OK);
  EXPECT_EQ(CountStartingWith(Logger(), "Initialized communication manager."), 1u);
  EXPECT_TRUE(Logger().Messages(LogOperation::Error).empty()) << Logger().Dump();
  EXPECT_EQ(Service().Queries(IID_IHostLogger), 1);
  const auto calls = RawJava().Calls();
  EXPECT_EQ(Count(calls, "DesktopMessageClient()"), 1u);
  EXPECT_EQ(Count(calls, "setProviderUrl(\"rmi://127.0.0.1/server\")"), 1u);
}

TEST_F(ManagerLifetime, TheStartingThreadsEndIsTheManagersEnd) {
  LONG started = E_UNEXPECTED;
  std::thread([&] { started = Dump(); }).join();
  ASSERT_EQ(started, S_OK) << Logger().Dump();

  const auto calls = RawJava().Calls();
  ASSERT_FALSE(calls.empty());
  EXPECT_EQ(calls.back(), "dispose()");

  Logger().Clear();
  EXPECT_EQ(Dump(), E_FAIL);
  const auto errors = Lines(Logger(), LogOperation::Error);
  ASSERT_EQ(errors.size(), 2u) << Logger().Dump();
  EXPECT_EQ(errors[0], U(messages::kRefusedAfterTeardown));
  EXPECT_EQ(RawJava().Calls().size(), calls.size());

  // Callbacks still work, and Java is left running for the process.
  auto callback = MakeHostObject<DataDumpInbox>();
  CRMICommManager& manager = CRMICommManager::GetInstance();
  EXPECT_EQ(manager.RegisterDataDumpCallback(WSTR("url"), nullptr, nullptr, callback.Get()), S_OK);
  EXPECT_EQ(manager.UnregisterDataDumpCallback(WSTR("url"), nullptr, nullptr, callback.Get()),
            S_OK);
  EXPECT_EQ(RawJava().SystemProperty("java.vm.name").empty(), false);
}

// A host logger that calls DumpData from inside the first start-up: the nested call is
// refused as a failed start is, and the start-up it interrupted goes on to the end, with
// the one machine it made, which the starting thread's end tears down as usual.
TEST_F(ManagerLifetime, ACallFromInsideStartUpIsRefusedAndStartUpGoesOn) {
  LONG nested = E_UNEXPECTED;
  Logger().OnLine([&nested](const WString& line) {
    if (U(line).rfind("Using JRE from", 0) == 0) nested = Dump();
  });
  LONG started = E_UNEXPECTED;
  std::thread([&] { started = Dump(); }).join();
  Logger().OnLine(nullptr);

  EXPECT_EQ(started, S_OK) << Logger().Dump();
  EXPECT_EQ(nested, E_FAIL);
  EXPECT_EQ(
      Lines(Logger(), LogOperation::Error),
      std::vector<std::string>{U(messages::kDumpDataConfigFailed) + U(ResultCodeSuffix(E_FAIL))});
  const auto calls = RawJava().Calls();
  EXPECT_EQ(Count(calls, "DesktopMessageClient()"), 1u);
  ASSERT_FALSE(calls.empty());
  EXPECT_EQ(calls.back(), "dispose()");
}

TEST_F(ManagerLifetime, AnEndingProcessLeavesJavaAlone) {
  CRMICommManagerImpl manager;
  std::thread([&] {
    EXPECT_EQ(manager.DumpData(WSTR("url"), nullptr, nullptr, 0, kTypeWithoutMessage, nullptr),
              S_OK);
    CRMICommManagerImpl::ProcessEnding();
  }).join();
  EXPECT_EQ(manager.GetState(), eStateInitialized);
  EXPECT_EQ(Count(RawJava().Calls(), "dispose()"), 0u);
}

}  // namespace
}  // namespace tarnix::testing
