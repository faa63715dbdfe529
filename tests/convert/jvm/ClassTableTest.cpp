// The component's class table against the stand-in jars, and what the stand-ins show.
#include "JvmTestSupport.h"

#include "convert/ClassTable.h"
#include "manager/RemoteFailure.h"
#include "jni/JavaObject.h"
#include "jni/JavaString.h"

#include <gtest/gtest.h>

namespace {

using namespace tarnix::testing;
namespace classes = tarnix::classes;
namespace methods = tarnix::methods;

class ClassTableTest : public ::testing::Test {
 protected:
  void SetUp() override {
    machine_ = CreateTestMachine();
    ASSERT_TRUE(machine_);
    for (const classes::ClassTableRow& row : classes::kClassTable) {
      auto loaded = machine_->LoadClass(row.name, row.methods, row.count);
      const WString why = machine_->TakeException().value_or(WString());
      ASSERT_TRUE(loaded) << row.name << ": " << Narrow(why);
      for (ULONGLONG i = 0; i < row.count; ++i) {
        EXPECT_NE(loaded->GetMethodId(row.methods[i].alias), nullptr) << row.methods[i].alias;
      }
    }
  }

  std::shared_ptr<CJavaClass> Class(const char* name) { return machine_->GetClass(name); }
  std::shared_ptr<CJavaString> Text(const WCHAR* text) { return machine_->NewString(text); }
  std::string TakeException() { return Narrow(machine_->TakeException().value_or(WString())); }

  std::shared_ptr<CJavaVM> machine_;
};

TEST_F(ClassTableTest, MessageClientRecordsWhatArrivedAndAnswersAsTold) {
  JavaControl control(*machine_);
  auto client =
      Class(classes::kDesktopMessageClient)->NewObject(methods::DesktopMessageClient::ctor);
  ASSERT_TRUE(client);
  auto connection =
      Class(classes::kDesktopConnection)
          ->NewObject(methods::DesktopConnection::ctorIdAuthTokenUniqueIdVersionDeviceType,
                      Text(WSTR("vm-1")), Text(WSTR("token")), Text(WSTR("u-1")), 7,
                      Text(WSTR("desktop")));
  auto sample =
      Class(classes::kBaseSample)->NewObject(methods::BaseSample::ctorTime, jlong{946684800000});
  auto metric =
      Class(classes::kBaseMetric)->NewObject(methods::BaseMetric::ctorName, Text(WSTR("cpu")));
  ASSERT_TRUE(connection && sample && metric);
  metric->CallVoidMethod(methods::BaseMetric::putDoubleValue, 12.5);
  sample->CallVoidMethod(methods::BaseSample::putMetric, metric);
  control.ClearCalls();

  control.SetAnswer("onDataCollected", std::string("<actions/>"));
  WString answer;
  EXPECT_TRUE(
      client->CallStringMethod(methods::DesktopMessageClient::onDataCollected, connection, sample)
          ->GetText(answer));
  EXPECT_EQ(Narrow(answer), "<actions/>");
  control.SetAnswer("onDataCollected", std::nullopt);
  EXPECT_FALSE(
      client->CallStringMethod(methods::DesktopMessageClient::onDataCollected, connection, sample)
          ->GetText(answer));
  client->CallVoidMethod(methods::DesktopMessageClient::onUserLogoff, connection, jlong{42},
                         nullptr);

  const std::vector<std::string> calls = control.Calls();
  ASSERT_EQ(calls.size(), 3u);
  const std::string arrived =
      "onDataCollected(DesktopConnection{id=\"vm-1\", authToken=\"token\", uniqueId=\"u-1\", "
      "version=7, deviceType=\"desktop\"}, BaseSample{time=946684800000, "
      "metrics=[BaseMetric{name=\"cpu\", value=double 12.5}], sessions=[]})";
  EXPECT_EQ(calls[0], arrived);
  EXPECT_EQ(calls[1], arrived);
  EXPECT_EQ(calls[2].rfind("onUserLogoff(DesktopConnection{", 0), 0u);
  EXPECT_NE(calls[2].find("}, 42, null)"), std::string::npos);
  EXPECT_FALSE(machine_->GetEnv()->ExceptionCheck());
}

TEST_F(ClassTableTest, StandInsThrowWhatTheyAreToldTo) {
  JavaControl control(*machine_);
  auto client =
      Class(classes::kDesktopMessageClient)->NewObject(methods::DesktopMessageClient::ctor);
  auto connection = Class(classes::kDesktopConnection)->NewObject(methods::DesktopConnection::ctor);
  ASSERT_TRUE(client && connection);

  control.ThrowIn("DesktopMessageClient.onDesktopPoll", "java.rmi.ConnectException",
                  "Connection refused to host: 127.0.0.1");
  EXPECT_EQ(client
                ->CallStringMethod(methods::DesktopMessageClient::onDesktopPoll, connection,
                                   jlong{1}, Text(WSTR("")))
                ->Get(),
            nullptr);
  std::optional<WString> text = machine_->TakeException();
  ASSERT_TRUE(text);
  EXPECT_TRUE(IsRemoteFailureText(*text)) << Narrow(*text);

  control.ThrowIn("DesktopMessageClient.onDesktopPoll", "java.lang.NullPointerException", "");
  client->CallStringMethod(methods::DesktopMessageClient::onDesktopPoll, connection, jlong{1},
                           Text(WSTR("")));
  text = machine_->TakeException();
  ASSERT_TRUE(text);
  EXPECT_FALSE(IsRemoteFailureText(*text)) << Narrow(*text);

  // Only the second put of a list fails; constructors fail as a whole.
  auto session = Class(classes::kBaseUserSession)
                     ->NewObject(methods::BaseUserSession::ctorIdSidUserDomainConnected, 3,
                                 Text(WSTR("S-1")), Text(WSTR("ann")), Text(WSTR("CORP")), true);
  ASSERT_TRUE(session);
  control.ThrowOnHit("BaseUserSession.putProperty", 2, "java.lang.IllegalStateException", "full");
  session->CallVoidMethod(methods::BaseUserSession::putProperty, Text(WSTR("a")), Text(WSTR("1")));
  EXPECT_EQ(TakeException(), "");
  session->CallVoidMethod(methods::BaseUserSession::putProperty, Text(WSTR("b")), Text(WSTR("2")));
  EXPECT_EQ(TakeException().rfind("java.lang.IllegalStateException: full", 0), 0u);
  session->CallVoidMethod(methods::BaseUserSession::putProperty, Text(WSTR("c")), Text(WSTR("3")));
  EXPECT_EQ(TakeException(), "");
  EXPECT_EQ(control.Describe(session->Get()),
            "BaseUserSession{id=3, sid=\"S-1\", user=\"ann\", domain=\"CORP\", connected=true, "
            "properties={\"a\"=\"1\", \"c\"=\"3\"}, metrics=[], remoteApps=[]}");

  control.ThrowIn("NetworkInterface.<init>", "java.lang.IllegalStateException", "no card");
  EXPECT_FALSE(Class(classes::kNetworkInterface)
                   ->NewObject(methods::NetworkInterface::ctorDescription, Text(WSTR("eth0"))));
  EXPECT_EQ(TakeException().rfind("java.lang.IllegalStateException: no card", 0), 0u);
  control.ClearFaults();
}

TEST_F(ClassTableTest, MapPutKeepsNoLocalForItsAnswer) {
  JavaControl control(*machine_);
  auto map = Class(classes::kHashMap)->NewObject(methods::HashMap::ctor);
  ASSERT_TRUE(map);
  for (int i = 0; i < 100; ++i) {
    auto key = Text(WSTR("key"));
    map->CallVoidMethod(methods::HashMap::put, key, Text(WSTR("value")));
  }
  map->CallVoidMethod(methods::HashMap::put, Text(WSTR("other")), nullptr);
  EXPECT_EQ(control.Describe(map->Get()), "{\"key\"=\"value\", \"other\"=null}");
}

}  // namespace
