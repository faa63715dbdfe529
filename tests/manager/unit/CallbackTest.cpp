#include "ManagerTestSupport.h"

#include "common/ErrorText.h"
#include "fixtures/FakeCallbacks.h"
#include "fixtures/HostTest.h"
#include "fixtures/TestRegistry.h"
#include "manager/AnswerDelivery.h"
#include "manager/CommManagerImpl.h"
#include "platform/UniqueAny.h"
#include "tarnix/DataType.h"

#include <gtest/gtest.h>

namespace tarnix::testing {
namespace {

class ManagerCallbacks : public HostTest {
 protected:
  ManagerCallbacks() {
    registry_.Own(HKEY_CLASSES_ROOT, WSTR("Interface\\{545A3670-9230-4402-838F-4AC388270E6A}"));
  }
  // Marshalling repairs asked of the host service land here, not in the machine's registry.
  TestRegistry registry_;
};

// Unregisters itself from inside its own call, as a host callback may.
class SelfRemovingCallback : public HostObject<IDataDumpCallback> {
 public:
  explicit SelfRemovingCallback(CRMICommManagerImpl& manager)
      : HostObject("SelfRemovingCallback"), manager_(manager) {}
  int calls = 0;
  HRESULT STDMETHODCALLTYPE OnDataDumped(LONG, BSTR) override {
    ++calls;
    manager_.Unregister(WSTR("url"), nullptr, nullptr, this);
    return S_OK;
  }

 private:
  CRMICommManagerImpl& manager_;
};

TEST_F(ManagerCallbacks, AnswersReachTheirKeyOrTheOnlyKeyThereIs) {
  auto first = MakeHostObject<DataDumpInbox>();
  auto second = MakeHostObject<DataDumpInbox>();
  auto stranger = MakeHostObject<DataDumpInbox>();
  CRMICommManagerImpl manager;

  EXPECT_EQ(manager.Register(WSTR("url"), WSTR("id"), WSTR("cert"), first.Get()), S_OK);
  EXPECT_EQ(manager.Register(WSTR("url"), WSTR("id"), WSTR("cert"), first.Get()), S_OK);
  EXPECT_EQ(manager.Register(WSTR("url"), WSTR("id"), WSTR("cert"), nullptr), E_POINTER);
  // One key: every answer reaches it, whatever key it came with; a double registration
  // is still one callback.
  EXPECT_EQ(manager.CallCallback(WSTR("elsewhere"), nullptr, nullptr, eStartup, WSTR("policy")),
            S_OK);
  ASSERT_EQ(first->Answers().size(), 1u);
  EXPECT_EQ(first->Answers()[0].dataType, eStartup);
  EXPECT_EQ(U(first->Answers()[0].text), "policy");

  // Two keys: only an exact match (null and empty alike, case counted) is called.
  EXPECT_EQ(manager.Register(WSTR("url2"), nullptr, nullptr, second.Get()), S_OK);
  EXPECT_EQ(manager.CallCallback(WSTR("elsewhere"), nullptr, nullptr, eStartup, WSTR("x")), E_FAIL);
  EXPECT_EQ(manager.CallCallback(WSTR("URL2"), nullptr, nullptr, eStartup, WSTR("x")), E_FAIL);
  EXPECT_EQ(manager.CallCallback(WSTR("url2"), WSTR(""), WSTR(""), eUserSessionLogon, nullptr),
            S_OK);
  ASSERT_EQ(second->Answers().size(), 1u);
  EXPECT_TRUE(second->Answers()[0].textIsNull);
  EXPECT_EQ(first->Answers().size(), 1u);

  // Unregistering what was never registered changes nothing.
  EXPECT_EQ(manager.Unregister(WSTR("url2"), nullptr, nullptr, stranger.Get()), S_OK);
  EXPECT_EQ(manager.Unregister(WSTR("no such key"), nullptr, nullptr, first.Get()), S_OK);
  EXPECT_EQ(manager.Unregister(WSTR("url2"), nullptr, nullptr, nullptr), S_OK);
  EXPECT_EQ(manager.CallCallback(WSTR("url2"), nullptr, nullptr, eStartup, WSTR("y")), S_OK);
  EXPECT_EQ(second->Answers().size(), 2u);

  // The last callback of a key takes the key with it, and the fallback applies again.
  EXPECT_EQ(manager.Unregister(WSTR("url2"), nullptr, nullptr, second.Get()), S_OK);
  EXPECT_EQ(second->RefCount(), 1u);
  EXPECT_EQ(manager.CallCallback(WSTR("elsewhere"), nullptr, nullptr, eStartup, WSTR("z")), S_OK);
  EXPECT_EQ(first->Answers().size(), 2u);
  EXPECT_EQ(second->Answers().size(), 2u);
}

TEST_F(ManagerCallbacks, ACallbackMayUnregisterItselfWhileCalled) {
  auto other = MakeHostObject<DataDumpInbox>();
  CRMICommManagerImpl manager;
  auto leaving = MakeHostObject<SelfRemovingCallback>(manager);
  manager.Register(WSTR("url"), nullptr, nullptr, leaving.Get());
  manager.Register(WSTR("url"), nullptr, nullptr, other.Get());

  EXPECT_EQ(manager.CallCallback(WSTR("url"), nullptr, nullptr, eStartup, WSTR("a")), S_OK);
  EXPECT_EQ(manager.CallCallback(WSTR("url"), nullptr, nullptr, eStartup, WSTR("b")), S_OK);
  EXPECT_EQ(leaving->calls, 1);
  EXPECT_EQ(other->Answers().size(), 2u);
  EXPECT_EQ(leaving->RefCount(), 1u);
}

TEST_F(ManagerCallbacks, StartupAnswerNobodyTakesForcesAPolicyUpdate) {
  auto first = MakeHostObject<DataDumpInbox>();
  auto second = MakeHostObject<DataDumpInbox>();
  CRMICommManagerImpl manager;
  manager.Register(WSTR("one"), nullptr, nullptr, first.Get());
  manager.Register(WSTR("two"), nullptr, nullptr, second.Get());
  const HostLog log = LogTo(Logger());
  auto deliver = [&](unsigned char type) {
    return DeliverAnswer(manager, log, WSTR("url"), nullptr, WSTR("cert"), type, WSTR("policy"),
                         S_OK);
  };

  // Without the host's event the line carries the callbacks' failure, not the system's.
  EXPECT_EQ(deliver(eStartup), E_FAIL);
  EXPECT_EQ(Lines(Logger(), LogOperation::Error),
            (std::vector<std::string>{
                "Failed to CallCallback for eStartup:(url, null, cert)",
                "Failed to open event for policy update" + U(ResultCodeSuffix(E_FAIL))}));

  Logger().Clear();
  const UniqueHandle event(CreateEventW(nullptr, FALSE, FALSE, kPolicyUpdateEventName));
  ASSERT_TRUE(event);
  EXPECT_EQ(deliver(eStartup), E_FAIL);
  EXPECT_EQ(WaitForSingleObject(event.Get(), 10000), static_cast<DWORD>(WAIT_OBJECT_0));
  EXPECT_EQ(Lines(Logger(), LogOperation::Info),
            std::vector<std::string>{"Force to update policy..."});

  // A logon answer nobody takes is only logged.
  Logger().Clear();
  EXPECT_EQ(deliver(eUserSessionLogon), E_FAIL);
  EXPECT_EQ(
      Lines(Logger(), LogOperation::Error),
      std::vector<std::string>{"Failed to CallCallback for eUserSessionLogon:(url, null, cert)"});
  EXPECT_EQ(WaitForSingleObject(event.Get(), 0), static_cast<DWORD>(WAIT_TIMEOUT));
  EXPECT_TRUE(first->Answers().empty());
  EXPECT_TRUE(second->Answers().empty());
}

TEST_F(ManagerCallbacks, OtherAnswersGoToTheActionExecutorOrNowhere) {
  CRMICommManagerImpl manager;
  auto callback = MakeHostObject<DataDumpInbox>();
  manager.Register(WSTR("url"), nullptr, nullptr, callback.Get());
  const HostLog log = LogTo(Logger());
  auto deliver = [&](unsigned char type, const WCHAR* text) {
    return DeliverAnswer(manager, log, WSTR("url"), nullptr, nullptr, type, text, E_UNEXPECTED);
  };

  // Answers to traces and to session types other than logon are dropped; the call keeps
  // the result it had.
  EXPECT_EQ(deliver(eTraceRoute, WSTR("route")), E_UNEXPECTED);
  EXPECT_EQ(deliver(eUserSessionLogoff, WSTR("bye")), E_UNEXPECTED);
  EXPECT_TRUE(callback->Answers().empty());
  EXPECT_EQ(Logger().Count(), 0u);

  const HRESULT missing = deliver(eSample, WSTR("restart"));
  EXPECT_TRUE(FAILED(missing));
  EXPECT_EQ(Lines(Logger(), LogOperation::Error),
            std::vector<std::string>{"Failed to get action executor" +
                                     U(ResultCodeSuffix(missing, SuffixStyle::Joined))});

  auto executor = MakeHostObject<ActionInbox>();
  Service().Offer(IID_IHostActionExecutor, executor, ServiceRoute::GetService);
  EXPECT_EQ(deliver(eSample, WSTR("restart")), S_OK);
  EXPECT_EQ(deliver(eExtendedData, WSTR("collect")), S_OK);
  EXPECT_EQ(deliver(eDesktopPoll, WSTR("")), S_OK);
  const auto actions = executor->Actions();
  ASSERT_EQ(actions.size(), 3u);
  for (const ExecutedAction& action : actions) {
    EXPECT_EQ(action.flags, 0);
    EXPECT_EQ(action.type, VT_BSTR);
    EXPECT_FALSE(action.resultSlotGiven);
  }
  EXPECT_EQ(U(actions[0].text), "restart");
  EXPECT_EQ(U(actions[1].text), "collect");
  EXPECT_TRUE(callback->Answers().empty());
}

}  // namespace
}  // namespace tarnix::testing
