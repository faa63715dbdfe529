// The bridge's own test class (com.tarnix.testing.Probe), a method table for it, and the
// fixture of the suites that call it on the real JDK.
#pragma once

#include "JvmTestSupport.h"

#include "jni/JavaClass.h"
#include "jni/JavaObject.h"
#include "jni/JavaString.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace tarnix::testing {

inline constexpr const char kProbe[] = "com/tarnix/testing/Probe";

inline constexpr MethodEntry kProbeMethods[] = {
    {"ctor()", "<init>", "()V"},
    {"ctor(time)", "<init>", "(J)V"},
    {"ctor(id,name,flag)", "<init>", "(ILjava/lang/String;Z)V"},
    {"kinds", "kinds", "(IJDZLjava/lang/String;)Ljava/lang/String;"},
    {"wideLong", "wideLong", "(J)Ljava/lang/String;"},
    {"wideDouble", "wideDouble", "(D)Ljava/lang/String;"},
    {"echo", "echo", "(Ljava/lang/String;)Ljava/lang/String;"},
    {"length", "length", "(Ljava/lang/String;)I"},
    {"answerNull", "answerNull", "()Ljava/lang/String;"},
    {"answerObject", "answerObject", "()Ljava/lang/Object;"},
    {"answerInt", "answerInt", "()I"},
    {"record", "record", "(Ljava/lang/String;)V"},
    {"describe", "describe", "()Ljava/lang/String;"},
    {"throwWithFrames", "throwWithFrames", "(Ljava/lang/String;)V"},
    {"throwWithoutStack", "throwWithoutStack", "(Ljava/lang/String;)V"},
    {"throwNullText", "throwNullText", "()V"},
    {"throwBrokenText", "throwBrokenText", "()V"},
};

// Its handles, named after their aliases.
struct Probe {
  static constexpr auto ctor = tarnix::ConstructorOf<void()>(kProbeMethods, "ctor()");
  static constexpr auto ctorTime = tarnix::ConstructorOf<void(jlong)>(kProbeMethods, "ctor(time)");
  static constexpr auto ctorIdNameFlag =
      tarnix::ConstructorOf<void(jint, jstring, jboolean)>(kProbeMethods, "ctor(id,name,flag)");
  static constexpr auto kinds =
      tarnix::MethodOf<jstring(jint, jlong, jdouble, jboolean, jstring)>(kProbeMethods, "kinds");
  static constexpr auto wideLong = tarnix::MethodOf<jstring(jlong)>(kProbeMethods, "wideLong");
  static constexpr auto wideDouble =
      tarnix::MethodOf<jstring(jdouble)>(kProbeMethods, "wideDouble");
  static constexpr auto echo = tarnix::MethodOf<jstring(jstring)>(kProbeMethods, "echo");
  static constexpr auto answerNull = tarnix::MethodOf<jstring()>(kProbeMethods, "answerNull");
  static constexpr auto answerObject = tarnix::MethodOf<jobject()>(kProbeMethods, "answerObject");
  static constexpr auto answerInt = tarnix::MethodOf<jint()>(kProbeMethods, "answerInt");
  static constexpr auto record = tarnix::MethodOf<void(jstring)>(kProbeMethods, "record");
  static constexpr auto throwWithFrames =
      tarnix::MethodOf<void(jstring)>(kProbeMethods, "throwWithFrames");
  static constexpr auto throwWithoutStack =
      tarnix::MethodOf<void(jstring)>(kProbeMethods, "throwWithoutStack");
  static constexpr auto throwNullText = tarnix::MethodOf<void()>(kProbeMethods, "throwNullText");
  static constexpr auto throwBrokenText =
      tarnix::MethodOf<void()>(kProbeMethods, "throwBrokenText");
};

// A machine on the stand-in jars for each test; the probe class is loaded with its whole
// table, and one probe made, only when a suite asks for it.
class BridgeTest : public ::testing::Test {
 protected:
  explicit BridgeTest(bool withProbe = true) : withProbe_(withProbe) {}
  void SetUp() override {
    machine_ = CreateTestMachine();
    ASSERT_TRUE(machine_);
    env_ = machine_->GetEnv();
    if (!withProbe_) return;
    probeClass_ = machine_->LoadClass(kProbe, kProbeMethods);
    ASSERT_TRUE(probeClass_);
    probe_ = probeClass_->NewObject(Probe::ctor);
    ASSERT_TRUE(probe_);
  }

  // The pending exception's text, cleared; empty when there was none.
  std::string TakeException() { return Narrow(machine_->TakeException().value_or(WString())); }

  std::shared_ptr<CJavaVM> machine_;
  JNIEnv* env_ = nullptr;
  std::shared_ptr<CJavaClass> probeClass_;
  std::shared_ptr<CJavaObject> probe_;

 private:
  bool withProbe_;
};

}  // namespace tarnix::testing
