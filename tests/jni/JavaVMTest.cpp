// The machine on the real JDK: creation, the creating thread, tear-down.
#include "JvmTestSupport.h"
#include "ProbeClass.h"
#include "TestPaths.h"

#include "jni/JavaString.h"
#include "jni/LocalRef.h"

#include <gtest/gtest.h>

namespace {

using namespace tarnix::testing;

TEST(JavaVM, SecondCreateIsANoOpAndTheCreatingThreadStaysAttached) {
  auto machine = CreateTestMachine();
  ASSERT_TRUE(machine);
  JNIEnv* env = machine->GetEnv();
  ASSERT_NE(env, nullptr);

  // An option the JVM would refuse shows that the second list is never looked at.
  EXPECT_EQ(machine->Create({"-XX:+NoSuchOption"}), 0);
  EXPECT_EQ(machine->AttachCurrentThread(), 0);
  EXPECT_EQ(machine->DetachCurrentThread(), 0);
  EXPECT_EQ(machine->GetEnv(), env);

  JNIEnv* jvmsOwn = nullptr;
  ASSERT_EQ(machine->GetJavaVM()->GetEnv(reinterpret_cast<void**>(&jvmsOwn), JNI_VERSION_1_6),
            JNI_OK);
  EXPECT_EQ(jvmsOwn, env);
}

TEST(JavaVM, RefusedOptionGivesTheJniCode) {
  CJavaVM machine(TARNIX_TEST_JAVA_HOME);
  EXPECT_EQ(machine.Create({"-XX:+NoSuchOption"}), JNI_EINVAL);
  EXPECT_EQ(machine.GetEnv(), nullptr);
  EXPECT_EQ(machine.GetCreatingThread(), 0u);
}

TEST(JavaVM, UnloadForgetsTheMachineButLeavesTheJvmRunning) {
  auto machine = CreateTestMachine();
  ASSERT_TRUE(machine);
  ASSERT_TRUE(machine->LoadClass(kProbe, kProbeMethods));
  JavaVM* jvm = machine->GetJavaVM();
  machine->Unload();
  EXPECT_FALSE(machine->GetClass(kProbe));
  EXPECT_EQ(machine->GetEnv(), nullptr);
  EXPECT_FALSE(machine->NewString(WSTR("no environment")));

  // The JVM itself goes on, its library still in place.
  JNIEnv* env = nullptr;
  ASSERT_EQ(jvm->GetEnv(reinterpret_cast<void**>(&env), JNI_VERSION_1_6), JNI_OK);
  tarnix::LocalRef<jclass> probe(env, env->FindClass(kProbe));
  EXPECT_TRUE(probe);
}

}  // namespace
