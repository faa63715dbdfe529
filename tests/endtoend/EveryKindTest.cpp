// Every kind of host data, through the component and real RMI, as the server gets it.
#include "RmiHost.h"

#include "HostData.h"
#include "fixtures/Secrets.h"
#include "manager/CommManagerImpl.h"
#include "tarnix/DataType.h"

#include <gtest/gtest.h>

#include <memory>

namespace tarnix::testing {
namespace {

struct Delivery {
  unsigned char type;
  ULONGLONG number;
  ComPtr<IUnknown> data;
  const char* method;                  // nullptr: no call at all
  std::vector<std::string> fragments;  // each must be in the received line
};

class RmiEveryKind : public RmiHostTest {
 protected:
  RmiEveryKind() {
    hostsim::DescribeDesktop(SystemInfo());
    Service().Offer(IID_IHostSessionSource, hostsim::MakeSessions(), ServiceRoute::Both);
  }
  void TearDown() override {
    manager_.reset();
    RmiHostTest::TearDown();
  }

  std::unique_ptr<CRMICommManagerImpl> manager_ = std::make_unique<CRMICommManagerImpl>();
};

TEST_F(RmiEveryKind, TheServerGetsOneCallOfTheRightMethodWithEverythingInIt) {
  StartServer();
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
    EXPECT_GE(manager_->DumpData(Url().c_str(), kAuthToken, kCertificate, delivery.number,
                                 delivery.type, delivery.data.Get()),
              0)
        << Logger().Dump();
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
  EXPECT_TRUE(Lines(LogOperation::Error).empty()) << Logger().Dump();
}

}  // namespace
}  // namespace tarnix::testing
