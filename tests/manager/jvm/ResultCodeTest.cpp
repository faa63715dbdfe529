// Failures inside Java that no host call of the walk in FaultInjectionTest brings about:
// the code the host receives, and no exception left on the host's thread.
#include "JvmHost.h"

#include "JvmTestSupport.h"
#include "fixtures/FakeDataObjects.h"
#include "manager/CommManagerImpl.h"
#include "tarnix/DataType.h"

#include <gtest/gtest.h>

#include <memory>

namespace tarnix::testing {
namespace {

class ManagerResultCode : public JvmHostTest {
 protected:
  ManagerResultCode() { WriteSettings({}); }
  void TearDown() override {
    manager_.reset();
    JvmHostTest::TearDown();
  }

  std::unique_ptr<CRMICommManagerImpl> manager_ = std::make_unique<CRMICommManagerImpl>();
};

// The poll's text is made after the desktop: a JVM out of memory by then fails the poll.
TEST_F(ManagerResultCode, APollWhoseTextJavaCannotMakeFails) {
  SystemInfo().SetNetworkInterfaces([] {
    return MakeAdapterArray(
        {{W("eth0"), W("00-11"), W("10.0.0.5"), W("255.0.0.0"), W("10.0.0.0"), 1}});
  });
  ASSERT_EQ(manager_->Initialize(), S_OK);
  CJavaVM& vm = *manager_->GetJavaVM();
  JavaControl(vm).ThrowIn("DesktopInformation.addNetworkInterface", "java.lang.Error", "no");
  Logger().OnLine([&vm](const WString& line) {
    if (line.rfind(WSTR("Failed to add network interface"), 0) != 0) return;
    JNIEnv* env = vm.GetEnv();
    env->ThrowNew(env->FindClass("java/lang/OutOfMemoryError"), "full");
  });
  const LONG hr = manager_->DumpData(WSTR("url"), WSTR("t"), WSTR("c"), 1, eDesktopPoll, nullptr);
  Logger().OnLine(nullptr);
  EXPECT_EQ(static_cast<uint32_t>(hr), 0x80004005u) << Logger().Dump();
}

TEST_F(ManagerResultCode, AFailedDisposeLeavesNoExceptionPending) {
  ASSERT_EQ(manager_->Initialize(), S_OK);
  JavaControl(*manager_->GetJavaVM())
      .ThrowIn("DesktopMessageClient.dispose", "java.lang.Error", "no");
  EXPECT_EQ(manager_->Teardown(), S_OK);
  JNIEnv* env = nullptr;
  ASSERT_EQ(RunningJavaVM()->GetEnv(reinterpret_cast<void**>(&env), JNI_VERSION_1_6), JNI_OK);
  EXPECT_FALSE(env->ExceptionCheck());
}

}  // namespace
}  // namespace tarnix::testing
