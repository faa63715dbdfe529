// A DumpData of every kind of host data through the component, the stand-in client and real
// RMI to a message server in its own process, as the server gets it, and back. That many
// calls leave Java's global references as they were is the concurrency suite's check (and
// the host simulator's soak mode's).
#include "HostData.h"
#include "JvmHost.h"
#include "MessageServerProcess.h"
#include "fixtures/FakeCallbacks.h"
#include "tarnix/DataType.h"

#include <gtest/gtest.h>

#include <memory>

namespace tarnix::testing {
namespace {

constexpr HRESULT kNetworkUnavailable = static_cast<HRESULT>(0x800713AB);

struct Delivery {
  unsigned char type;
  ULONGLONG number;
  ComPtr<IUnknown> data;
  const char* method;                  // nullptr: no call at all
  std::vector<std::string> fragments;  // each must be in the received line
};

// The manager suites' host (the agent's settings, the described machine, a manager of its
// own) with a message server in a process of its own, on `port` (0: a free one).
class RmiRoundTrip : public ManagerJvmTest {
 protected:
  void TearDown() override {
    manager_.reset();
    server_.reset();
    ManagerJvmTest::TearDown();
  }
  hostsim::MessageServerProcess& StartServer(int port = 0) {
    hostsim::MessageServerOptions options;
    options.java = MANAGER_TEST_JAVA_HOME "/bin/java";
    options.classPath = ENDTOEND_SERVER_CLASSPATH;
    options.port = port;
    server_.reset();
    server_ = std::make_unique<hostsim::MessageServerProcess>(options);
    EXPECT_TRUE(server_->Running()) << server_->Failure();
    if (server_->Running()) url_ = Utf8ToWide(server_->Url());
    return *server_;
  }
  void StopServer() { EXPECT_TRUE(server_->Stop()); }
  hostsim::MessageServerProcess& Server() { return *server_; }
  LONG Dump(unsigned char type, IUnknown* data = nullptr, ULONGLONG number = 42) {
    return manager_->DumpData(url_.c_str(), kAuthToken, kCertificate, number, type, data);
  }

  std::unique_ptr<hostsim::MessageServerProcess> server_;
  WString url_;
};

TEST_F(RmiRoundTrip, TheServerGetsOneCallOfTheRightMethodWithEverythingInIt) {
  hostsim::DescribeDesktop(SystemInfo());
  Service().Offer(IID_IHostSessionSource, hostsim::MakeSessions(), ServiceRoute::Both);
  StartServer();
  ASSERT_TRUE(Server().SetAnswer("onStartup", "policy-text"));
  auto callback = MakeHostObject<DataDumpInbox>();
  manager_->Register(url_.c_str(), kAuthToken, kCertificate, callback.Get());
  const std::string desktop =
      "DesktopInformation{name=\"DESK-0042\", FQDN=\"desk-0042.corp.example\"";
  const std::string wired = "macAddress=\"00-1A-2B-3C-4D-5E\", ipAddress=\"10.20.30.40\"";
  const std::string wireless = "macAddress=\"00-1A-2B-3C-4D-5F\", ipAddress=\"192.168.1.23\"";
  const ComPtr<IUnknown> anna = AsUnknown(hostsim::MakeSession(1));
  const ComPtr<IUnknown> li = AsUnknown(hostsim::MakeSession(2));
  const std::vector<Delivery> deliveries = {
      {eStartup,
       8,
       nullptr,
       "onStartup",
       {"<name>DESK-0042</name>",
        "authToken=\"" + WideToUtf8(kAuthToken) + "\", uniqueId=\"vm-5003a1c2\""}},
      {eUserSessionLogon,
       0x8000000000000001ull,
       anna,
       "onUserLogon",
       {desktop, wired, wireless, ", -9223372036854775807, BaseUserSession{id=1",
        "user=\"anna.berg\"", "\"clientName\"=\"THIN-CLIENT-07\""}},
      {eSample,
       9,
       hostsim::MakeSample(),
       "onDataCollected",
       {"BaseMetric{name=\"cpuPercent\", value=double 23.5}", "user=\"li.wei\"",
        "user=\"omar.haddad\"", "BaseRemoteApp{id=\"chrome.exe\"", "latencyMs"}},
      {eExtendedData,
       7,
       hostsim::MakeExtendedData(),
       "onExtendedDataCollected",
       {"\"source\"=\"gpu-monitor\"", "BaseMetric{name=\"gpuUtilization\""}},
      {eTraceRoute,
       10,
       hostsim::MakeTraceRoute(),
       "onActionPerformed",
       {"\"target\"=\"msgserver.corp.example\"",
        "\"1  10.20.30.1  0.412 ms\n2  10.0.0.1  1.870 ms\n3  172.16.8.20  2.954 ms\")"}},
      {eDesktopPoll, 0xFFFFFFFFFFFFFFFFull, nullptr, "onDesktopPoll", {"}, -1, \"\")"}},
      {eUserSessionRefresh,
       3,
       li,
       "refreshSession",
       {", 3, " + desktop, wireless, "BaseUserSession{id=2", "user=\"li.wei\""}},
      {eUserSessionDisconnect, 5, li, "onUserDisconnect", {", 5, BaseUserSession{id=2"}},
      {eUserSessionReconnect, 4, li, "onUserReconnect", {", 4, BaseUserSession{id=2"}},
      {eUserSessionLogoff,
       2,
       hostsim::MakeLogoff(3),
       "onUserLogoff",
       {", 2, BaseUserSession{id=3", "user=\"omar.haddad\"", "latencyMs", "WINWORD.EXE"}},
      {eUserSessionStart, 0, anna, nullptr, {}},
      {eUserSessionEnd, 6, anna, nullptr, {}},
      {77, 77, anna, nullptr, {}},
  };

  for (const Delivery& delivery : deliveries) {
    SCOPED_TRACE(static_cast<int>(delivery.type));
    ASSERT_TRUE(Server().ClearReceived());
    EXPECT_GE(Dump(delivery.type, delivery.data.Get(), delivery.number), 0) << Logger().Dump();
    const std::vector<std::string> received = Server().Received();
    if (!delivery.method) {
      EXPECT_TRUE(received.empty()) << received.front();
      continue;
    }
    ASSERT_EQ(received.size(), 1u);
    const std::string call = hostsim::Unescaped(received[0]);
    EXPECT_EQ(call.rfind(std::string(delivery.method) + "(DesktopConnection{", 0) == 0 ||
                  call.rfind(std::string(delivery.method) + "(\"", 0) == 0,
              true)
        << call;
    for (const std::string& fragment : delivery.fragments) {
      EXPECT_NE(call.find(fragment), std::string::npos) << fragment << "\nnot in\n" << call;
    }
  }
  EXPECT_TRUE(Lines(Logger(), LogOperation::Error).empty()) << Logger().Dump();
  // The server's answer to the start-up reached the host.
  ASSERT_EQ(callback->Answers().size(), 1u);
  EXPECT_EQ(callback->Answers()[0].dataType, eStartup);
  EXPECT_EQ(WideToUtf8(callback->Answers()[0].text), "policy-text");
  manager_->Unregister(url_.c_str(), kAuthToken, kCertificate, callback.Get());
}

TEST_F(RmiRoundTrip, AStoppedServerIsANetworkFailureUntilItIsBackWithoutRestartingTheHost) {
  const int port = StartServer().Port();
  ASSERT_EQ(Dump(eStartup), S_OK) << Logger().Dump();

  StopServer();
  Logger().Clear();
  EXPECT_EQ(Dump(eStartup), kNetworkUnavailable);
  ExpectErrors(Logger(), {"Failed to send data with type eStartup to the message server.  "
                          "java.rmi.ConnectException: Connection refused to host: 127.0.0.1"});
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
  EXPECT_TRUE(Lines(Logger(), LogOperation::Error).empty()) << Logger().Dump();
}

TEST_F(RmiRoundTrip, ANameNobodyIsBoundUnderIsANetworkFailure) {
  const int port = StartServer().Port();
  const WString url = Utf8ToWide("rmi://127.0.0.1:" + std::to_string(port) + "/Elsewhere");
  EXPECT_EQ(manager_->DumpData(url.c_str(), kAuthToken, kCertificate, 1, eStartup, nullptr),
            kNetworkUnavailable);
  const auto errors = ExpectErrors(Logger(), {""});
  EXPECT_NE(errors[0].find("java.rmi.RemoteException: no message server at " + WideToUtf8(url)),
            std::string::npos)
      << errors[0];
  EXPECT_NE(errors[0].find("java.rmi.NotBoundException: Elsewhere"), std::string::npos)
      << errors[0];
  EXPECT_TRUE(Server().Received().empty());
}

}  // namespace
}  // namespace tarnix::testing
