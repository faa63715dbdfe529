// A DumpData from the host to the Java client and back, on the real JVM.
#include "JvmHost.h"

#include "JvmTestSupport.h"
#include "common/ErrorText.h"
#include "fixtures/FakeCallbacks.h"
#include "fixtures/Secrets.h"
#include "manager/CommManagerImpl.h"
#include "tarnix/DataType.h"

#include <gtest/gtest.h>

#include <thread>

namespace tarnix::testing {
namespace {

const std::string kDescription =
    "<client><type>DesktopAgent</type><name>DESK-01</name><id>verdant-42</id>"
    "<version>6.6.0.10866517</version><uniqueid>vm-7</uniqueid></client>";

class ManagerDumpData : public JvmHostTest {
 protected:
  ManagerDumpData() {
    WriteSettings({});
    SystemInfo().SetMachineId(W("machine-1"));
    SystemInfo().SetVirtualMachineId(W("vm-7"));
    SystemInfo().SetUniqueId(W("unique-3"));
    SystemInfo().SetMachineName(W("DESK-01"));
    identities_ = MakeHostObject<FakeNamedValues>();
    identities_->SetText(W("Verdant"), W("verdant-42"));
    SystemInfo().SetComponentsIdentities(ComPtr<IHostNamedValues>(identities_.Get()));
  }
  void TearDown() override {
    identities_.Reset();
    JvmHostTest::TearDown();
  }

  LONG Dump(CRMICommManagerImpl& manager, unsigned char type, const WCHAR* url = WSTR("url")) {
    return manager.DumpData(url, kAuthToken, kCertificate, 42, type, nullptr);
  }
  // The calls that carried data, leaving out construction and configuration.
  static std::vector<std::string> Sends() {
    std::vector<std::string> sends;
    for (const std::string& call : RawJava().Calls()) {
      if (call.rfind("on", 0) == 0) sends.push_back(call);
    }
    return sends;
  }

  ComPtr<FakeNamedValues> identities_;
};

TEST_F(ManagerDumpData, StartupMessageDescribesTheClientAndItsAnswerReachesTheHost) {
  auto callback = MakeHostObject<DataDumpInbox>();
  CRMICommManagerImpl manager;
  ASSERT_EQ(manager.Initialize(), S_OK);
  JavaControl(*manager.GetJavaVM()).SetAnswer("onStartup", std::string("policy-text"));
  manager.Register(WSTR("url"), kAuthToken, kCertificate, callback.Get());

  EXPECT_EQ(Dump(manager, eStartup), S_OK) << Logger().Dump();
  const auto sends = Sends();
  ASSERT_EQ(sends.size(), 1u);
  EXPECT_EQ(sends[0].rfind("onStartup(\"" + kDescription +
                               "\", DesktopConnection{id=\"verdant-42\", "
                               "authToken=\"" +
                               U(kAuthToken) + "\", uniqueId=\"vm-7\", version=394752",
                           0),
            0u)
      << sends[0];
  ASSERT_EQ(callback->Answers().size(), 1u);
  EXPECT_EQ(callback->Answers()[0].dataType, eStartup);
  EXPECT_EQ(U(callback->Answers()[0].text), "policy-text");
  EXPECT_TRUE(Logger().Messages(LogOperation::Error).empty()) << Logger().Dump();
  manager.Unregister(WSTR("url"), kAuthToken, kCertificate, callback.Get());
}

TEST_F(ManagerDumpData, IdentityDecidesBeforeJavaAndCarriesItsFailure) {
  CRMICommManagerImpl manager;
  ASSERT_EQ(manager.Initialize(), S_OK);
  const HRESULT hostFailure = static_cast<HRESULT>(0x80070015);

  SystemInfo().Fail(SystemInfoSlot::VirtualMachineId, hostFailure);
  EXPECT_EQ(Dump(manager, eStartup), hostFailure);
  EXPECT_TRUE(Sends().empty());
  EXPECT_EQ(CountStartingWith(Logger(), "Failed to get virtual machine id"), 1u);
  SystemInfo().Fail(SystemInfoSlot::VirtualMachineId, S_OK);

  // Unreadable component identities do not stop the call, but it answers their code when
  // no answer decides it.
  SystemInfo().Fail(SystemInfoSlot::ComponentsIdentities, E_ACCESSDENIED);
  EXPECT_EQ(Dump(manager, kTypeWithoutMessage), E_ACCESSDENIED);
  EXPECT_EQ(Dump(manager, eStartup), E_ACCESSDENIED);
  const auto sends = Sends();
  ASSERT_EQ(sends.size(), 1u);
  EXPECT_NE(sends[0].find("<id>machine-1</id>"), std::string::npos) << sends[0];

  auto callback = MakeHostObject<DataDumpInbox>();
  manager.Register(WSTR("url"), nullptr, nullptr, callback.Get());
  JavaControl(*manager.GetJavaVM()).SetAnswer("onStartup", std::string("policy-text"));
  EXPECT_EQ(Dump(manager, eStartup), S_OK);
  manager.Unregister(WSTR("url"), nullptr, nullptr, callback.Get());
}

TEST_F(ManagerDumpData, AnotherThreadIsAttachedForItsCallOnly) {
  CRMICommManagerImpl manager;
  ASSERT_EQ(manager.Initialize(), S_OK);
  // No answer: one nobody took would be logged with the call's secret strings.
  JavaControl(*manager.GetJavaVM()).SetAnswer("onStartup", std::nullopt);
  LONG result = E_UNEXPECTED;
  jint afterwards = JNI_OK;
  std::thread host([&] {
    result = Dump(manager, eStartup);
    JNIEnv* env = nullptr;
    afterwards = RunningJavaVM()->GetEnv(reinterpret_cast<void**>(&env), JNI_VERSION_1_6);
  });
  host.join();
  EXPECT_EQ(result, S_OK) << Logger().Dump();
  EXPECT_EQ(afterwards, JNI_EDETACHED);
  EXPECT_EQ(Sends().size(), 1u);
}

}  // namespace
}  // namespace tarnix::testing
