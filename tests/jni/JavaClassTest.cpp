// Classes and their method tables on the real JDK, and what becomes of them when the
// machine is unloaded.
#include "ProbeClass.h"

#include "convert/ClassTable.h"
#include "jni/JavaObject.h"
#include "jni/JavaString.h"
#include "jni/LocalRef.h"

#include <gtest/gtest.h>

namespace {

using namespace tarnix::testing;

class JavaClassTest : public BridgeTest {
 protected:
  JavaClassTest() : BridgeTest(false) {}
};

TEST_F(JavaClassTest, SameNameAnswersTheFirstLoadAndAnEmptyTableLoadsNoMethods) {
  const MethodEntry first[] = {{"ctor()", "<init>", "()V"},
                               {"echo", "echo", "(Ljava/lang/String;)Ljava/lang/String;"}};
  const MethodEntry second[] = {{"length", "length", "(Ljava/lang/String;)I"}};
  auto loaded = machine_->LoadClass(kProbe, first);
  ASSERT_TRUE(loaded);
  auto again = machine_->LoadClass(kProbe, second);
  EXPECT_EQ(again, loaded);
  EXPECT_EQ(machine_->GetClass(kProbe), loaded);
  EXPECT_NE(loaded->GetMethodId("echo"), nullptr);
  EXPECT_EQ(loaded->GetMethodId("length"), nullptr);

  auto map = machine_->LoadClass("java/util/HashMap", nullptr, 0);
  ASSERT_TRUE(map);
  EXPECT_NE(map->Get(), nullptr);
  EXPECT_EQ(map->GetMethodId("ctor()"), nullptr);
  EXPECT_FALSE(map->NewObject(tarnix::methods::HashMap::ctor));
  EXPECT_FALSE(env_->ExceptionCheck());
}

TEST_F(JavaClassTest, ABadRowRejectsTheWholeClassAndLeavesTheReasonPending) {
  const MethodEntry wrongThirdRow[] = {
      {"ctor()", "<init>", "()V"},
      {"echo", "echo", "(Ljava/lang/String;)Ljava/lang/String;"},
      {"length", "length", "(Ljava/lang/String;)J"},
      {"answerInt", "answerInt", "()I"},
  };
  EXPECT_FALSE(machine_->LoadClass(kProbe, wrongThirdRow));
  ASSERT_TRUE(env_->ExceptionCheck());
  const std::string text = TakeException();
  EXPECT_EQ(text.rfind("java.lang.NoSuchMethodError", 0), 0u) << text;
  EXPECT_NE(text.find("length"), std::string::npos) << text;
  EXPECT_FALSE(machine_->GetClass(kProbe));
  EXPECT_FALSE(machine_->LoadClass(kProbe, nullptr, 3));
  EXPECT_NE(TakeException().find("IllegalArgumentException: no method table"), std::string::npos);
  const MethodEntry incomplete[] = {{"ctor()", "<init>", nullptr}};
  EXPECT_FALSE(machine_->LoadClass(kProbe, incomplete));
  EXPECT_NE(TakeException().find("incomplete method table row 0"), std::string::npos);
  EXPECT_FALSE(machine_->GetClass(kProbe));

  // Nothing was cached, so a corrected table loads.
  EXPECT_TRUE(machine_->LoadClass(kProbe, kProbeMethods));

  EXPECT_FALSE(machine_->LoadClass("com/tarnix/testing/NoSuchClass", kProbeMethods));
  EXPECT_EQ(
      TakeException().rfind("java.lang.NoClassDefFoundError: com/tarnix/testing/NoSuchClass", 0),
      0u);
  EXPECT_FALSE(machine_->GetClass("com/tarnix/testing/NoSuchClass"));
}

TEST_F(JavaClassTest, ALaterRowOfTheSameAliasWins) {
  static constexpr MethodEntry table[] = {{"ctor", "<init>", "()V"}, {"ctor", "<init>", "(J)V"}};
  static constexpr auto ctor = tarnix::ConstructorOf<void(jlong)>(table, "ctor");
  auto probe = machine_->LoadClass(kProbe, table);
  ASSERT_TRUE(probe);
  EXPECT_EQ(probe->GetMethodId("ctor"), env_->GetMethodID(probe->Get(), "<init>", "(J)V"));
  auto object = probe->NewObject(ctor, jlong{77});
  ASSERT_TRUE(object);
  JavaControl control(*machine_);
  EXPECT_EQ(control.Describe(object->Get()), "Probe(77)");
}

TEST_F(JavaClassTest, AConstructorOfAnotherTableMakesNothingAndCallsNoJava) {
  const tarnix::classes::ClassTableRow* row =
      tarnix::classes::FindClassTableRow(tarnix::classes::kInstanceLoggerFactory);
  ASSERT_NE(row, nullptr);
  auto factory = machine_->LoadClass(row->name, row->methods, row->count);
  ASSERT_TRUE(factory);
  JavaControl control(*machine_);
  control.ClearCalls();

  EXPECT_FALSE(factory->NewObject(tarnix::methods::DesktopMessageClient::ctor));
  EXPECT_FALSE(factory->NewLocalObject(Probe::ctor));
  EXPECT_FALSE(env_->ExceptionCheck());
  EXPECT_TRUE(control.Calls().empty());
}

TEST_F(JavaClassTest, ConstructorThatThrowsLeavesItsExceptionPending) {
  const tarnix::classes::ClassTableRow* row =
      tarnix::classes::FindClassTableRow(tarnix::classes::kBaseSample);
  auto sample = machine_->LoadClass(row->name, row->methods, row->count);
  ASSERT_TRUE(sample);
  JavaControl control(*machine_);
  control.ThrowIn("BaseSample.<init>", "java.lang.OutOfMemoryError", "no room");
  EXPECT_FALSE(sample->NewObject(tarnix::methods::BaseSample::ctorTime, jlong{1}));
  EXPECT_EQ(TakeException().rfind("java.lang.OutOfMemoryError: no room", 0), 0u);
  control.ClearFaults();
  EXPECT_TRUE(sample->NewObject(tarnix::methods::BaseSample::ctorTime, jlong{1}));
}

TEST_F(JavaClassTest, UnloadForgetsTheClassesButLeavesTheJvmRunning) {
  ASSERT_TRUE(machine_->LoadClass(kProbe, kProbeMethods));
  JavaVM* jvm = machine_->GetJavaVM();
  machine_->Unload();
  EXPECT_FALSE(machine_->GetClass(kProbe));
  EXPECT_EQ(machine_->GetEnv(), nullptr);
  EXPECT_FALSE(machine_->NewString(WSTR("no environment")));

  // The JVM itself goes on, its library still in place.
  JNIEnv* env = nullptr;
  ASSERT_EQ(jvm->GetEnv(reinterpret_cast<void**>(&env), JNI_VERSION_1_6), JNI_OK);
  tarnix::LocalRef<jclass> probe(env, env->FindClass(kProbe));
  EXPECT_TRUE(probe);
}

}  // namespace
