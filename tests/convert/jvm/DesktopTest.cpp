// The machine's description with its network adapters, and the connection that names the
// machine in every call with the secrets it carries.
#include "ConvertTest.h"
#include "convert/DesktopConnection.h"

namespace tarnix::testing {
namespace {

std::vector<AdapterValues> ThreeAdapters() {
  return {
      {WSTR("eth0"), WSTR("00:11:22:33:44:55"), WSTR("10.0.0.5"), WSTR("255.255.255.0"),
       WSTR("10.0.0.0"), 1000},
      {WSTR("eth1"), WSTR("00:11:22:33:44:66"), WSTR("10.1.0.5"), WSTR("255.255.0.0"),
       WSTR("10.1.0.0"), 100},
      {WSTR("wlan0"), WSTR("00:11:22:33:44:77"), WSTR("192.168.1.9"), WSTR("255.255.255.0"),
       WSTR("192.168.1.0"), -1},
  };
}

// Records of another kind: larger than the host's adapter records.
class LargerRecordInfo : public AdapterRecordInfo {
  HRESULT STDMETHODCALLTYPE GetSize(ULONG* size) override {
    *size = 2 * sizeof(HostNetworkInterfaceRecord);
    return S_OK;
  }
};

class DesktopTest : public ConvertTest {
 protected:
  void SetUp() override {
    ConvertTest::SetUp();
    SystemInfo().SetMachineName(WSTR("desk-01"));
    SystemInfo().SetFQDN(WSTR("desk-01.corp.example"));
    SystemInfo().SetTotalMemory(16384);
  }

  std::shared_ptr<CJavaObject> Convert() {
    return Convertor().GetDesktop(VmRef(), SystemInfoRef().Get(), &listFailure_);
  }
  // The code GetDesktop failed the adapter list with, or S_OK.
  HRESULT Raised() {
    listFailure_ = S_OK;
    Convert();
    return listFailure_;
  }

  std::shared_ptr<CJavaObject> Connection(IHostLogger* logger) {
    const DesktopIdentity identity{WSTR("machine-42"), kAuthToken, kUniqueId};
    return GetDesktopConnection(logger, VmRef(), identity, SystemInfoRef().Get());
  }

  HRESULT listFailure_ = S_OK;
};

TEST_F(DesktopTest, AdaptersAreReadFromTheLowerBoundAndAFailingOneIsLeftOut) {
  SystemInfo().SetNetworkInterfaces([] { return MakeAdapterArray(ThreeAdapters(), 1); });
  Java().ThrowOnHit("NetworkInterface.putMacAddress", 2, "java.lang.IllegalArgumentException",
                    "bad MAC");

  EXPECT_EQ(Describe(Convert()),
            "DesktopInformation{name=\"desk-01\", FQDN=\"desk-01.corp.example\", "
            "totalMemory=16384, networkInterfaces=["
            "NetworkInterface{description=\"eth0\", macAddress=\"00:11:22:33:44:55\", "
            "ipAddress=\"10.0.0.5\", subnetMask=\"255.255.255.0\", subnet=\"10.0.0.0\", "
            "linkSpeed=1000}, "
            "NetworkInterface{description=\"wlan0\", macAddress=\"00:11:22:33:44:77\", "
            "ipAddress=\"192.168.1.9\", subnetMask=\"255.255.255.0\", subnet=\"192.168.1.0\", "
            "linkSpeed=-1}]}");
  const std::vector<std::string> errors = Lines(LogOperation::Error);
  ASSERT_EQ(errors.size(), 1u) << Logger().Dump();
  EXPECT_TRUE(EndsWithException(
      errors[0], "Failed to set the MAC address on the Java network interface object.  ",
      "java.lang.IllegalArgumentException: bad MAC"));

  // Every other setter fails its adapter the same way, with its own line.
  Logger().Clear();
  Java().ClearFaults();
  const std::pair<const char*, const char*> setters[] = {
      {"NetworkInterface.putIpAddress", "the IP address"},
      {"NetworkInterface.putSubnetMask", "the subnet mask"},
      {"NetworkInterface.putSubnet", "the subnet"},
      {"NetworkInterface.putLinkSpeed", "the link speed"},
      {"DesktopInformation.addNetworkInterface", nullptr},
  };
  for (const auto& setter : setters) {
    Java().ThrowOnHit(setter.first, 1, "java.lang.IllegalStateException", "refused");
    const std::string described = Describe(Convert());
    EXPECT_EQ(described.find("\"eth0\""), std::string::npos) << setter.first;
    EXPECT_NE(described.find("\"eth1\""), std::string::npos) << setter.first;
    Java().ClearFaults();
    const std::string line = Lines(LogOperation::Error).back();
    const std::string fixed =
        setter.second ? std::string("Failed to set ") + setter.second +
                            " on the Java network interface object.  "
                      : "Failed to add network interface 'eth0' to the Java desktop object.  ";
    EXPECT_TRUE(EndsWithException(line, fixed, "java.lang.IllegalStateException: refused"));
  }
}

TEST_F(DesktopTest, AnAdapterListThatCannotBeReadEndsInInvalidArgument) {
  // The desktop's own values are still converted, and the missing list then raises.
  SystemInfo().Fail(SystemInfoSlot::NetworkInterfaces, kHostFailure);
  EXPECT_EQ(Raised(), E_INVALIDARG);
  EXPECT_EQ(SystemInfo().Calls(SystemInfoSlot::TotalMemory), 1);
  // A desktop that fails before the list is reached ends empty, without raising.
  Java().ThrowIn("DesktopInformation.putTotalMemory", "java.lang.IllegalStateException", "no");
  EXPECT_EQ(Raised(), S_OK);
  EXPECT_TRUE(EndsWithException(Lines(LogOperation::Error).back(),
                                "Failed to set total memory on the Java desktop object.  ",
                                "java.lang.IllegalStateException: no"));
  Java().ClearFaults();

  // A null array, or one of other elements, raises at once: nothing else is read.
  SystemInfo().Fail(SystemInfoSlot::NetworkInterfaces, S_OK);
  EXPECT_EQ(Raised(), E_INVALIDARG);
  SystemInfo().SetNetworkInterfaces([] { return SafeArrayCreateVector(VT_BSTR, 0, 2); });
  EXPECT_EQ(Raised(), E_INVALIDARG);
  SystemInfo().SetNetworkInterfaces([] {
    auto info = MakeHostObject<LargerRecordInfo>();
    return SafeArrayCreateVectorEx(VT_RECORD, 0, 1, static_cast<IRecordInfo*>(info.Get()));
  });
  EXPECT_EQ(Raised(), E_INVALIDARG);
  EXPECT_EQ(SystemInfo().Calls(SystemInfoSlot::MachineName), 2);
}

TEST_F(DesktopTest, EmptyListsAndFailedObjects) {
  // Upper bound below the lower one: no adapters.
  SystemInfo().SetNetworkInterfaces([] { return MakeAdapterArray({}, 5); });
  EXPECT_EQ(Describe(Convert()),
            "DesktopInformation{name=\"desk-01\", FQDN=\"desk-01.corp.example\", "
            "totalMemory=16384, networkInterfaces=[]}");
  SystemInfo().SetNetworkInterfaces([] { return MakeAdapterArray(ThreeAdapters()); });
  Java().ThrowIn("NetworkInterface.<init>", "java.lang.IllegalStateException", "no adapter");
  EXPECT_NE(Describe(Convert()).find("networkInterfaces=[]"), std::string::npos);
  Java().ThrowIn("DesktopInformation.<init>", "java.lang.IllegalStateException", "no desktop");
  EXPECT_FALSE(Convert());

  const std::vector<std::string> errors = Lines(LogOperation::Error);
  ASSERT_EQ(errors.size(), 4u) << Logger().Dump();
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(EndsWithException(errors[i],
                                  "Failed to create a new Java network interface object.  ",
                                  "java.lang.IllegalStateException: no adapter"));
  }
  EXPECT_TRUE(EndsWithException(errors[3], "Failed to create a new Java desktop object.  ",
                                "java.lang.IllegalStateException: no desktop"));
}

TEST_F(DesktopTest, DesktopOnlyForTrueAndANewObjectEveryTime) {
  const std::string desktop =
      "DesktopConnection{id=\"machine-42\", authToken=\"token-5f3a9c\", "
      "uniqueId=\"unique-77e1\", version=394752, deviceType=\"DESKTOP\"}";
  auto first = Connection(LoggerRef().Get());
  auto second = Connection(LoggerRef().Get());
  ASSERT_TRUE(first && second);
  EXPECT_EQ(Describe(second), desktop);
  EXPECT_FALSE(Vm().GetEnv()->IsSameObject(first->Get(), second->Get()));

  for (VARIANT_BOOL flag : {VARIANT_BOOL{1}, VARIANT_BOOL{0}, VARIANT_BOOL{2}}) {
    SystemInfo().SetDesktopFlag(flag);
    EXPECT_NE(Describe(Connection(LoggerRef().Get())).find("deviceType=\"SERVER\""),
              std::string::npos)
        << flag;
  }
  EXPECT_NE(Describe(GetDesktopConnection(nullptr, VmRef(), {}, nullptr)).find("\"SERVER\""),
            std::string::npos);
  EXPECT_EQ(Logger().Count(), 0u) << Logger().Dump();
}

TEST_F(DesktopTest, FailuresNeverShowTheTokenOrTheUniqueId) {
  Java().ThrowIn("DesktopConnection.<init>", "java.lang.IllegalStateException", "refused");
  EXPECT_FALSE(Connection(LoggerRef().Get()));
  EXPECT_FALSE(Connection(nullptr));
  const std::vector<std::string> errors = Lines(LogOperation::Error);
  ASSERT_EQ(errors.size(), 1u) << Logger().Dump();
  EXPECT_TRUE(EndsWithException(errors[0], "Failed to create a new Java connection object.  ",
                                "java.lang.IllegalStateException: refused"));

  // A string that cannot be made (here because an exception is already pending) is named
  // in the line only when it may be shown.
  JNIEnv* env = Vm().GetEnv();
  const auto raise = [env] {
    LocalRef<jclass> type(env, env->FindClass("java/lang/IllegalStateException"));
    env->ThrowNew(type.Get(), "earlier");
  };
  raise();
  EXPECT_FALSE(Convertor().GetJavaString(VmRef(), kAuthToken, true));
  raise();
  EXPECT_FALSE(Convertor().GetJavaString(VmRef(), WSTR("visible"), false));
  EXPECT_FALSE(env->ExceptionCheck());
  const std::vector<std::string> lines = Lines(LogOperation::Error);
  ASSERT_EQ(lines.size(), 3u) << Logger().Dump();
  // Thrown from native code, the exception has no frames to list.
  EXPECT_EQ(lines[1],
            "Failed to create a new Java string.  java.lang.IllegalStateException: earlier");
  EXPECT_EQ(lines[2],
            "Failed to create a new Java string for visible.  "
            "java.lang.IllegalStateException: earlier");
}

}  // namespace
}  // namespace tarnix::testing
