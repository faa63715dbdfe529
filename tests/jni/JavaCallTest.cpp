// Strings, objects and calls by alias on the real JDK.
#include "JvmTestSupport.h"
#include "ProbeClass.h"

#include "jni/JavaObject.h"
#include "jni/JavaString.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

using namespace tarnix::testing;

class JavaCallTest : public ::testing::Test {
 protected:
  void SetUp() override {
    machine_ = CreateTestMachine();
    ASSERT_TRUE(machine_);
    env_ = machine_->GetEnv();
    probeClass_ = machine_->LoadClass(kProbe, kProbeMethods);
    ASSERT_TRUE(probeClass_);
    probe_ = probeClass_->NewObject("ctor()");
    ASSERT_TRUE(probe_);
  }

  std::string TakeException() {
    WString text;
    return machine_->GetExceptionText(text) ? Narrow(text) : std::string();
  }

  // The text of a string answer; "<no text>" when GetText fails.
  static std::string TextOf(const std::shared_ptr<CJavaString>& string) {
    WString text;
    return string && string->GetText(text) ? Narrow(text) : "<no text>";
  }

  std::shared_ptr<CJavaVM> machine_;
  JNIEnv* env_ = nullptr;
  std::shared_ptr<CJavaClass> probeClass_;
  std::shared_ptr<CJavaObject> probe_;
};

TEST_F(JavaCallTest, StringsKeepEveryCodeUnitGoingInAndStopAtZeroComingBack) {
  auto empty = machine_->NewString(WString());
  ASSERT_TRUE(empty);
  ASSERT_NE(empty->Get(), nullptr);
  EXPECT_EQ(env_->GetStringLength(empty->Get()), 0);
  WString text = WSTR("untouched");
  EXPECT_TRUE(empty->GetText(text));
  EXPECT_EQ(text, WString());
  auto fromNull = machine_->NewString(static_cast<const WCHAR*>(nullptr));
  ASSERT_TRUE(fromNull);
  EXPECT_EQ(env_->GetStringLength(fromNull->Get()), 0);

  const WString withZero(WSTR("ab\0cd"), 5);
  auto zero = machine_->NewString(withZero);
  ASSERT_TRUE(zero);
  EXPECT_EQ(env_->GetStringLength(zero->Get()), 5);
  EXPECT_EQ(TextOf(zero), "ab");
  auto echoed = probe_->CallStringMethod("echo", zero);
  ASSERT_FALSE(env_->ExceptionCheck());
  EXPECT_EQ(env_->GetStringLength(echoed->Get()), 5);
  EXPECT_EQ(TextOf(echoed), "ab");

  // Surrogate pairs and non-Latin text cross as UTF-16, with no code page involved.
  const WString wide = WSTR("Grüße \u20AC \U0001F600");
  EXPECT_EQ(TextOf(probe_->CallStringMethod("echo", machine_->NewString(wide))),
            "Grüße \u20AC \U0001F600");
}

TEST_F(JavaCallTest, NullAnswersGiveAStringWithoutText) {
  for (auto answer : {probe_->CallStringMethod("answerNull"),
                      probe_->CallStringMethod("echo", nullptr)}) {
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->Get(), nullptr);
    WString text = WSTR("untouched");
    EXPECT_FALSE(answer->GetText(text));
    EXPECT_EQ(text, WSTR("untouched"));
  }
  EXPECT_FALSE(env_->ExceptionCheck());
}

TEST_F(JavaCallTest, ArgumentsArriveAsTheMethodsOwnTypes) {
  auto name = machine_->NewString(WSTR("x"));
  EXPECT_EQ(TextOf(probe_->CallStringMethod("kinds", 7, jlong{1} << 40, 2.5, true, name)),
            "7|1099511627776|2.5|true|\"x\"");
  // Widening as in Java: an int literal for a long, with its sign; a DWORD keeps its value.
  EXPECT_EQ(TextOf(probe_->CallStringMethod("wideLong", 5)), "5");
  EXPECT_EQ(TextOf(probe_->CallStringMethod("wideLong", -1)), "-1");
  EXPECT_EQ(TextOf(probe_->CallStringMethod("wideLong", DWORD{0x80000000u})), "2147483648");
  EXPECT_EQ(TextOf(probe_->CallStringMethod("wideDouble", 3)), "3.0");
  EXPECT_EQ(TextOf(probe_->CallStringMethod("wideDouble", 0.1f)), "0.10000000149011612");
  // JNI's own jboolean is a boolean.
  EXPECT_EQ(TextOf(probe_->CallStringMethod("kinds", short{-2}, 3, 0.0, jboolean{JNI_TRUE},
                                            nullptr)),
            "-2|3|0.0|true|null");

  JavaControl control(*machine_);
  auto timed = probeClass_->NewObject("ctor(time)", 946684800000LL);
  ASSERT_TRUE(timed);
  EXPECT_EQ(control.Describe(timed->Get()), "Probe(946684800000)");
  auto mixed = probeClass_->NewObject("ctor(id,name,flag)", 3, name, false);
  ASSERT_TRUE(mixed);
  EXPECT_EQ(control.Describe(mixed->Get()), "Probe(3, \"x\", false)");
  EXPECT_FALSE(env_->ExceptionCheck());
}

TEST_F(JavaCallTest, CallsThatCannotBeMadeRaiseAJavaExceptionAndReachNothing) {
  JavaControl control(*machine_);
  control.ClearCalls();
  auto text = machine_->NewString(WSTR("t"));

  probe_->CallVoidMethod("record", 5);
  EXPECT_NE(TakeException().find("IllegalArgumentException: com/tarnix/testing/Probe.record"
                                 "(Ljava/lang/String;)V (alias \"record\"): argument 1 is an "
                                 "int, which does not convert to 'L'"),
            std::string::npos);
  probe_->CallVoidMethod("record");
  EXPECT_NE(TakeException().find("takes 1 arguments, not 0"), std::string::npos);
  EXPECT_EQ(probe_->CallStringMethod("kinds", jlong{1}, jlong{1}, 1.0, true, text)->Get(), nullptr);
  EXPECT_NE(TakeException().find("argument 1 is a long, which does not convert to 'I'"),
            std::string::npos);
  EXPECT_EQ(probe_->CallStringMethod("wideLong", 1.0)->Get(), nullptr);
  EXPECT_NE(TakeException().find("argument 1 is a double"), std::string::npos);
  EXPECT_EQ(probe_->CallStringMethod("kinds", 1, 1, 1.0, 1, text)->Get(), nullptr);
  EXPECT_NE(TakeException().find("argument 4 is an int, which does not convert to 'Z'"),
            std::string::npos);

  probe_->CallVoidMethod("noSuchAlias");
  EXPECT_NE(TakeException().find("no method \"noSuchAlias\" in the method table of "
                                 "com/tarnix/testing/Probe"),
            std::string::npos);
  probe_->CallVoidMethod("ctor()");
  EXPECT_NE(TakeException().find("no method \"ctor()\""), std::string::npos);
  EXPECT_EQ(probe_->CallStringMethod("answerInt")->Get(), nullptr);
  EXPECT_NE(TakeException().find("answerInt()I does not answer a string"), std::string::npos);
  EXPECT_FALSE(probe_->CallObjectMethod("answerInt"));
  EXPECT_NE(TakeException().find("does not answer an object"), std::string::npos);

  EXPECT_FALSE(probeClass_->NewObject("ctor(time)", 1.5));
  EXPECT_NE(TakeException().find("<init>(J)V (alias \"ctor(time)\"): argument 1 is a double"),
            std::string::npos);

  EXPECT_TRUE(control.Calls().empty());
  EXPECT_FALSE(env_->ExceptionCheck());
}

TEST_F(JavaCallTest, NothingRunsWhileAnEarlierExceptionIsUnread) {
  JavaControl control(*machine_);
  control.ClearCalls();
  probe_->CallVoidMethod("throwWithFrames", machine_->NewString(WSTR("first")));
  ASSERT_TRUE(env_->ExceptionCheck());

  EXPECT_FALSE(machine_->NewString(WSTR("x")));
  EXPECT_FALSE(probeClass_->NewObject("ctor()"));
  probe_->CallVoidMethod("record", nullptr);
  EXPECT_EQ(probe_->CallStringMethod("answerNull")->Get(), nullptr);
  EXPECT_FALSE(machine_->LoadClass("java/util/HashMap", nullptr, 0));

  EXPECT_EQ(TakeException().rfind("java.lang.IllegalStateException: first", 0), 0u);
  EXPECT_TRUE(control.Calls().empty());
}

TEST_F(JavaCallTest, ResultsNobodyReadsLeaveNoLocalReferencesBehind) {
  // The creating thread never returns to Java, so anything left in its frame stays for
  // good. The JVM's JNI checks (the suite's second pass) report a frame that grows.
  for (int i = 0; i < 500; ++i) {
    probe_->CallVoidMethod("answerObject");
    probe_->CallVoidMethod("answerInt");
    auto text = machine_->NewString(WSTR("short-lived"));
    auto echoed = probe_->CallStringMethod("echo", text);
    auto object = probe_->CallObjectMethod("answerObject");
    auto made = probeClass_->NewObject("ctor(time)", i);
    probe_->CallVoidMethod("throwWithFrames", text);
    WString exception;
    ASSERT_TRUE(machine_->GetExceptionText(exception));
  }
}

TEST_F(JavaCallTest, ReferencesCanBeLetGoFromAnyThread) {
  auto object = probeClass_->NewObject("ctor(time)", jlong{5});
  auto string = machine_->NewString(WSTR("local"));
  ASSERT_TRUE(object && string);

  // A global reference released on a thread the machine does not know.
  std::thread([&object] { object.reset(); }).join();

  // A local reference released after its thread was detached is already gone with it.
  std::shared_ptr<CJavaString> stranded;
  std::thread([&] {
    auto guard = machine_->AttachForScope();
    stranded = machine_->NewString(WSTR("stranded"));
    guard.reset();
    stranded.reset();
  }).join();

  JavaControl control(*machine_);
  EXPECT_EQ(control.Describe(probe_->Get()), "Probe()");
}

}  // namespace
