// Keeping the Java client on the message server the calls name, on the real JVM.
#include "JvmHost.h"

#include "JvmTestSupport.h"
#include "manager/CommManagerImpl.h"
#include "manager/ManagerMessages.h"
#include "tarnix/DataType.h"

#include <gtest/gtest.h>

namespace tarnix::testing {
namespace {

class ServerConfigPush : public JvmHostTest {
 protected:
  // The calls of the client other than its construction.
  std::vector<std::string> Pushes() {
    std::vector<std::string> pushes;
    for (const std::string& call : RawJava().Calls()) {
      if (call.rfind("setProviderUrl", 0) == 0 || call.rfind("initialize", 0) == 0) {
        pushes.push_back(call);
      }
    }
    return pushes;
  }
};

TEST_F(ServerConfigPush, PushesWhenTheConfigurationChanges) {
  WriteSettings({});
  Logger().ForbidText(W("CERTIFICATE-1"));
  Logger().ForbidText(W("CERTIFICATE-2"));
  CRMICommManagerImpl manager;

  EXPECT_EQ(manager.SetCurrentServerConfig(WSTR("rmi://ServerZ:1099/a"), WSTR("id"),
                                           WSTR("CERTIFICATE-1")),
            S_OK);
  EXPECT_EQ(manager.GetState(), eStateInitialized);
  EXPECT_EQ(Pushes(), (std::vector<std::string>{
                          "setProviderUrl(\"rmi://ServerZ:1099/a\")",
                          "initialize(\"/tmp/tarnix-agent-config\", \"CERTIFICATE-1\")"}));
  EXPECT_EQ(Lines(Logger(), LogOperation::Info).back(),
            "Updated the message server URL in the Java client to rmi://ServerZ:1099/a.");

  // The server's name may differ in case; the other two strings may not.
  EXPECT_EQ(manager.SetCurrentServerConfig(WSTR("RMI://serverz:1099/A"), WSTR("id"),
                                           WSTR("CERTIFICATE-1")),
            S_FALSE);
  EXPECT_EQ(Pushes().size(), 2u);
  EXPECT_EQ(manager.SetCurrentServerConfig(WSTR("rmi://ServerZ:1099/a"), WSTR("ID"),
                                           WSTR("CERTIFICATE-1")),
            S_OK);
  EXPECT_EQ(Pushes().size(), 4u);
  EXPECT_EQ(manager.SetCurrentServerConfig(WSTR("rmi://ServerZ:1099/a"), WSTR("ID"),
                                           WSTR("CERTIFICATE-2")),
            S_OK);
  EXPECT_EQ(Pushes().back(), "initialize(\"/tmp/tarnix-agent-config\", \"CERTIFICATE-2\")");
  // A URL that extends, shortens or replaces a letter of the last one is still a change.
  for (const WCHAR* url : {WSTR("rmi://ServerZ:1099/a/b"), WSTR("rmi://ServerZ:1099/b"),
                           WSTR("rmi://ServerZ:1099/a")}) {
    EXPECT_EQ(manager.SetCurrentServerConfig(url, WSTR("ID"), WSTR("CERTIFICATE-2")), S_OK);
  }
  EXPECT_TRUE(Logger().Messages(LogOperation::Error).empty()) << Logger().Dump();
}

TEST_F(ServerConfigPush, AFailedPushIsTriedAgain) {
  WriteSettings({});
  CRMICommManagerImpl manager;
  ASSERT_EQ(manager.Initialize(), S_OK);
  JavaControl java(*manager.GetJavaVM());
  java.ThrowOnHit("DesktopMessageClient.setProviderUrl", 1, "java.rmi.ConnectException", "down");
  java.ThrowOnHit("DesktopMessageClient.initialize", 1, "java.lang.IllegalStateException", "bad");
  const auto push = [&] {
    return manager.SetCurrentServerConfig(WSTR("rmi://server/a"), WSTR("id"), WSTR("cert"));
  };

  for (const char* line :
       {"Failed to set the message server URL in the Java client.  java.rmi.ConnectException: down",
        "Failed to initialize RMI in the Java client.  java.lang.IllegalStateException: bad"}) {
    Logger().Clear();
    EXPECT_EQ(push(), E_FAIL);
    ExpectErrors(Logger(), {line});
  }
  EXPECT_EQ(push(), S_OK);
  EXPECT_EQ(push(), S_FALSE);
  EXPECT_EQ(Pushes().size(), 5u);
  EXPECT_FALSE(manager.GetJavaVM()->GetEnv()->ExceptionCheck());
}

TEST_F(ServerConfigPush, WithoutAConfigurationFolderEveryCallFails) {
  AgentSettings settings;
  settings.configDirectory.reset();
  WriteSettings(settings);
  CRMICommManagerImpl manager;
  const HRESULT missing = HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
  for (int call = 0; call < 2; ++call) {
    Logger().Clear();
    EXPECT_EQ(manager.DumpData(WSTR("rmi://server/a"), WSTR("id"), WSTR("cert"), 0,
                               kTypeWithoutMessage, nullptr),
              missing);
    // Only the call's own line: reading the folder logs nothing of its own.
    ExpectErrors(Logger(), {U(messages::kDumpDataConfigFailed) + "  Error code 0x80070002"});
  }
  EXPECT_TRUE(Pushes().empty());
}

}  // namespace
}  // namespace tarnix::testing
