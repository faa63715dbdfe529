// A DumpData through the component, the stand-in client and real RMI to a message server
// in its own process, and back.
#include "RmiHost.h"

#include "HostData.h"
#include "JvmProbe.h"
#include "fixtures/FakeCallbacks.h"
#include "fixtures/Secrets.h"
#include "manager/CommManagerImpl.h"
#include "tarnix/DataType.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <memory>

namespace tarnix::testing {
namespace {

constexpr HRESULT kNetworkUnavailable = static_cast<HRESULT>(0x800713AB);

class RmiRoundTrip : public RmiHostTest {
 protected:
  LONG Dump(unsigned char type, ULONGLONG number = 42) {
    return manager_->DumpData(Url().c_str(), kAuthToken, kCertificate, number, type, nullptr);
  }
  // The manager lets go of the host's objects before the host checks them.
  void TearDown() override {
    manager_.reset();
    RmiHostTest::TearDown();
  }

  std::unique_ptr<CRMICommManagerImpl> manager_ = std::make_unique<CRMICommManagerImpl>();
};

TEST_F(RmiRoundTrip, StartupReachesTheServerAndItsAnswerReachesTheHost) {
  StartServer();
  ASSERT_TRUE(Server().SetAnswer("onStartup", "policy-text"));
  auto callback = MakeHostObject<DataDumpInbox>();
  manager_->Register(Url().c_str(), kAuthToken, kCertificate, callback.Get());

  EXPECT_EQ(Dump(eStartup), S_OK) << Logger().Dump();
  const auto received = Server().Received();
  ASSERT_EQ(received.size(), 1u);
  EXPECT_EQ(received[0].rfind("onStartup(\"<client><type>DesktopAgent</type><name>DESK-01</name>"
                              "<id>machine-1</id>",
                              0),
            0u)
      << received[0];
  EXPECT_NE(
      received[0].find("DesktopConnection{id=\"machine-1\", authToken=\"" + WideToUtf8(kAuthToken) +
                       "\", "
                       "uniqueId=\"vm-7\""),
      std::string::npos)
      << received[0];
  ASSERT_EQ(callback->Answers().size(), 1u);
  EXPECT_EQ(WideToUtf8(callback->Answers()[0].text), "policy-text");

  // A null answer from the server goes nowhere and is no failure.
  ASSERT_TRUE(Server().ClearAnswer("onStartup"));
  EXPECT_EQ(Dump(eStartup), S_OK);
  EXPECT_EQ(callback->Answers().size(), 1u);
  EXPECT_EQ(Server().Received().size(), 2u);
  EXPECT_TRUE(Lines(LogOperation::Error).empty()) << Logger().Dump();
  manager_->Unregister(Url().c_str(), kAuthToken, kCertificate, callback.Get());
}

TEST_F(RmiRoundTrip, AStoppedServerIsANetworkFailureUntilItIsBackWithoutRestartingTheHost) {
  const int port = StartServer().Port();
  ASSERT_EQ(Dump(eStartup), S_OK) << Logger().Dump();

  StopServer();
  Logger().Clear();
  EXPECT_EQ(Dump(eStartup), kNetworkUnavailable);
  auto errors = Lines(LogOperation::Error);
  ASSERT_EQ(errors.size(), 1u) << Logger().Dump();
  EXPECT_EQ(errors[0].rfind("Failed to send data with type eStartup to the message server.  "
                            "java.rmi.ConnectException: Connection refused to host: 127.0.0.1",
                            0),
            0u)
      << errors[0];
  // Still down: the client looks again on every call and fails the same way.
  EXPECT_EQ(Dump(eStartup), kNetworkUnavailable);

  StartServer(port);
  Logger().Clear();
  EXPECT_EQ(Dump(eStartup), S_OK) << Logger().Dump();
  EXPECT_EQ(Server().Received().size(), 1u);

  // A restart between two calls is not seen by the host at all: the kept stub finds
  // nobody, the client looks the server up again and delivers.
  StopServer();
  StartServer(port);
  EXPECT_EQ(Dump(eStartup), S_OK) << Logger().Dump();
  EXPECT_EQ(Server().Received().size(), 1u);
  EXPECT_TRUE(Lines(LogOperation::Error).empty()) << Logger().Dump();
}

TEST_F(RmiRoundTrip, ASlowServerIsWaitedForUntilTheClientGivesUp) {
  // The client waits this long for an answer; the JVM reads it when it starts.
  const char* options = std::getenv("JAVA_TOOL_OPTIONS");
  setenv("JAVA_TOOL_OPTIONS",
         ((options ? std::string(options) + " " : std::string()) +
          "-Dsun.rmi.transport.tcp.responseTimeout=2000")
             .c_str(),
         1);
  StartServer();
  ASSERT_TRUE(Server().SetAnswer("onStartup", "policy-text"));
  auto callback = MakeHostObject<DataDumpInbox>();
  manager_->Register(Url().c_str(), kAuthToken, kCertificate, callback.Get());

  // Slow, but within the client's patience: the answer still arrives.
  ASSERT_TRUE(Server().SetDelay(std::chrono::milliseconds(300)));
  EXPECT_EQ(Dump(eStartup), S_OK) << Logger().Dump();
  ASSERT_EQ(callback->Answers().size(), 1u);
  EXPECT_EQ(WideToUtf8(callback->Answers()[0].text), "policy-text");

  // Slower than that: the send fails as the network does, and nothing reaches the host.
  ASSERT_TRUE(Server().SetDelay(std::chrono::milliseconds(5000)));
  Logger().Clear();
  EXPECT_EQ(Dump(eStartup), kNetworkUnavailable);
  const auto errors = Lines(LogOperation::Error);
  ASSERT_EQ(errors.size(), 1u) << Logger().Dump();
  EXPECT_EQ(errors[0].rfind("Failed to send data with type eStartup to the message server.  "
                            "java.rmi.",
                            0),
            0u)
      << errors[0];
  EXPECT_NE(errors[0].find("java.net.SocketTimeoutException"), std::string::npos) << errors[0];
  EXPECT_EQ(callback->Answers().size(), 1u);

  // Back to speed, the same host goes on.
  ASSERT_TRUE(Server().SetDelay(std::chrono::milliseconds(0)));
  EXPECT_EQ(Dump(eStartup), S_OK) << Logger().Dump();
  EXPECT_EQ(callback->Answers().size(), 2u);
  EXPECT_EQ(Server().Received().size(), 3u);
  manager_->Unregister(Url().c_str(), kAuthToken, kCertificate, callback.Get());
}

TEST_F(RmiRoundTrip, ANameNobodyIsBoundUnderIsANetworkFailure) {
  const int port = StartServer().Port();
  const WString url = Utf8ToWide("rmi://127.0.0.1:" + std::to_string(port) + "/Elsewhere");
  EXPECT_EQ(manager_->DumpData(url.c_str(), kAuthToken, kCertificate, 1, eStartup, nullptr),
            kNetworkUnavailable);
  const auto errors = Lines(LogOperation::Error);
  ASSERT_EQ(errors.size(), 1u) << Logger().Dump();
  EXPECT_NE(errors[0].find("java.rmi.RemoteException: no message server at " + WideToUtf8(url)),
            std::string::npos)
      << errors[0];
  EXPECT_NE(errors[0].find("java.rmi.NotBoundException: Elsewhere"), std::string::npos)
      << errors[0];
  EXPECT_TRUE(Server().Received().empty());
}

TEST_F(RmiRoundTrip, ManySamplesLeaveTheJvmsGlobalReferencesFlat) {
  // The full count (100,000) runs in the host simulator's soak mode; this keeps CI short.
  constexpr int kWarmUp = 200;
  constexpr int kCalls = 2000;
  Service().Offer(IID_IHostSessionSource, hostsim::MakeSessions(), ServiceRoute::Both);
  StartServer();
  const auto sample = [this] {
    return manager_->DumpData(Url().c_str(), kAuthToken, kCertificate, 9, eSample,
                              hostsim::MakeSample().Get());
  };
  for (int i = 0; i < kWarmUp; ++i) ASSERT_EQ(sample(), S_OK) << Logger().Dump();
  ASSERT_TRUE(Server().ClearReceived());
  const long referencesBefore = hostsim::JniGlobalReferences(RuntimeLibrary());
  const long residentBefore = hostsim::ResidentKilobytes();
  ASSERT_GT(referencesBefore, 0);

  for (int i = 0; i < kCalls; ++i) ASSERT_EQ(sample(), S_OK) << i << Logger().Dump();

  const long referencesAfter = hostsim::JniGlobalReferences(RuntimeLibrary());
  RecordProperty("global_refs_before", std::to_string(referencesBefore));
  RecordProperty("global_refs_after", std::to_string(referencesAfter));
  RecordProperty("resident_kb_before", std::to_string(residentBefore));
  RecordProperty("resident_kb_after", std::to_string(hostsim::ResidentKilobytes()));
  EXPECT_LE(referencesAfter - referencesBefore, 16)
      << referencesBefore << " -> " << referencesAfter;
  const auto received = Server().Received();
  ASSERT_EQ(received.size(), static_cast<size_t>(kCalls));
  EXPECT_NE(received.back().find("user=\"omar.haddad\""), std::string::npos) << received.back();
}

}  // namespace
}  // namespace tarnix::testing
