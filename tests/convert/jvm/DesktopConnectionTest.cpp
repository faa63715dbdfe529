// The connection that names the machine in every call, and the secrets it carries.
#include "ConvertTest.h"

#include "convert/DesktopConnection.h"

namespace tarnix::testing {
namespace {

class DesktopConnectionTest : public ConvertTest {
 protected:
  std::shared_ptr<CJavaObject> Convert(IHostLogger* logger) {
    const DesktopIdentity identity{WSTR("machine-42"), kAuthToken, kUniqueId};
    return GetDesktopConnection(logger, VmRef(), identity, SystemInfoRef().Get());
  }
};

TEST_F(DesktopConnectionTest, DesktopOnlyForTrueAndANewObjectEveryTime) {
  const std::string desktop =
      "DesktopConnection{id=\"machine-42\", authToken=\"token-5f3a9c\", "
      "uniqueId=\"unique-77e1\", version=394752, deviceType=\"DESKTOP\"}";
  auto first = Convert(LoggerRef().Get());
  auto second = Convert(LoggerRef().Get());
  ASSERT_TRUE(first && second);
  EXPECT_EQ(Describe(first), desktop);
  EXPECT_EQ(Describe(second), desktop);
  EXPECT_FALSE(Vm().GetEnv()->IsSameObject(first->Get(), second->Get()));

  for (VARIANT_BOOL flag : {VARIANT_BOOL{1}, VARIANT_BOOL{0}, VARIANT_BOOL{2}}) {
    SystemInfo().SetDesktopFlag(flag);
    EXPECT_NE(Describe(Convert(LoggerRef().Get())).find("deviceType=\"SERVER\""), std::string::npos)
        << flag;
  }
  EXPECT_NE(Describe(GetDesktopConnection(nullptr, VmRef(), {}, nullptr)).find("\"SERVER\""),
            std::string::npos);
  EXPECT_EQ(Logger().Count(), 0u) << Logger().Dump();
}

TEST_F(DesktopConnectionTest, FailuresNeverShowTheTokenOrTheUniqueId) {
  Java().ThrowIn("DesktopConnection.<init>", "java.lang.IllegalStateException", "refused");
  EXPECT_FALSE(Convert(LoggerRef().Get()));
  EXPECT_FALSE(Convert(nullptr));
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
