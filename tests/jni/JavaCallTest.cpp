// Strings, objects and calls through handles on the real JDK.
#include "ProbeClass.h"

#include "convert/ClassTable.h"
#include "jni/JavaObject.h"
#include "jni/JavaString.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

using namespace tarnix::testing;

class JavaCallTest : public BridgeTest {
 protected:
  // The text of a string answer; "<no text>" when GetText fails.
  static std::string TextOf(const std::shared_ptr<CJavaString>& string) {
    WString text;
    return string && string->GetText(text) ? Narrow(text) : "<no text>";
  }
};

TEST_F(JavaCallTest, StringsKeepEveryCodeUnitGoingInStopAtZeroComingBackAndNullHasNoText) {
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
  auto echoed = probe_->CallStringMethod(Probe::echo, zero);
  ASSERT_FALSE(env_->ExceptionCheck());
  EXPECT_EQ(env_->GetStringLength(echoed->Get()), 5);
  EXPECT_EQ(TextOf(echoed), "ab");

  // Surrogate pairs and non-Latin text cross as UTF-16, with no code page involved.
  const WString wide = WSTR("Grüße \u20AC \U0001F600");
  EXPECT_EQ(TextOf(probe_->CallStringMethod(Probe::echo, machine_->NewString(wide))),
            "Grüße \u20AC \U0001F600");

  // A null answer is a string without text.
  for (auto answer : {probe_->CallStringMethod(Probe::answerNull),
                      probe_->CallStringMethod(Probe::echo, nullptr)}) {
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->Get(), nullptr);
    WString untouched = WSTR("untouched");
    EXPECT_FALSE(answer->GetText(untouched));
    EXPECT_EQ(untouched, WSTR("untouched"));
  }
  EXPECT_FALSE(env_->ExceptionCheck());
}

TEST_F(JavaCallTest, ArgumentsArriveAsTheMethodsOwnTypes) {
  auto name = machine_->NewString(WSTR("x"));
  EXPECT_EQ(TextOf(probe_->CallStringMethod(Probe::kinds, 7, jlong{1} << 40, 2.5, true, name)),
            "7|1099511627776|2.5|true|\"x\"");
  // Widening as in Java: an int literal for a long, with its sign; a DWORD keeps its value.
  EXPECT_EQ(TextOf(probe_->CallStringMethod(Probe::wideLong, 5)), "5");
  EXPECT_EQ(TextOf(probe_->CallStringMethod(Probe::wideLong, -1)), "-1");
  EXPECT_EQ(TextOf(probe_->CallStringMethod(Probe::wideLong, DWORD{0x80000000u})), "2147483648");
  EXPECT_EQ(TextOf(probe_->CallStringMethod(Probe::wideDouble, 3)), "3.0");
  EXPECT_EQ(TextOf(probe_->CallStringMethod(Probe::wideDouble, 0.1f)), "0.10000000149011612");
  // JNI's own jboolean is a boolean.
  EXPECT_EQ(TextOf(probe_->CallStringMethod(Probe::kinds, short{-2}, 3, 0.0, jboolean{JNI_TRUE},
                                            nullptr)),
            "-2|3|0.0|true|null");

  JavaControl control(*machine_);
  auto timed = probeClass_->NewObject(Probe::ctorTime, 946684800000LL);
  ASSERT_TRUE(timed);
  EXPECT_EQ(control.Describe(timed->Get()), "Probe(946684800000)");
  auto mixed = probeClass_->NewObject(Probe::ctorIdNameFlag, 3, name, false);
  ASSERT_TRUE(mixed);
  EXPECT_EQ(control.Describe(mixed->Get()), "Probe(3, \"x\", false)");
  EXPECT_FALSE(env_->ExceptionCheck());
}

// The compiler checks aliases and arguments (MustNotCompile.cpp); which class an object
// is, it cannot: a handle of another class's table would call an id the object lacks.
TEST_F(JavaCallTest, AHandleOfAnotherClassRaisesAJavaExceptionAndReachesNothing) {
  JavaControl control(*machine_);
  control.ClearCalls();

  probe_->CallVoidMethod(tarnix::methods::BaseMetric::putLongValue, 1);
  EXPECT_NE(TakeException().find("IllegalArgumentException: no method \"putLongValue\" in the "
                                 "method table of com/tarnix/testing/Probe"),
            std::string::npos);
  EXPECT_EQ(
      probe_->CallStringMethod(tarnix::methods::DesktopMessageClient::onStartup, nullptr, nullptr)
          ->Get(),
      nullptr);
  EXPECT_NE(TakeException().find("no method \"onStartup\""), std::string::npos);
  EXPECT_FALSE(probe_->CallObjectMethod(tarnix::methods::HashMap::put, nullptr, nullptr));
  EXPECT_NE(TakeException().find("no method \"put\""), std::string::npos);

  EXPECT_TRUE(control.Calls().empty());
  EXPECT_FALSE(env_->ExceptionCheck());
}

TEST_F(JavaCallTest, NothingRunsWhileAnEarlierExceptionIsUnread) {
  JavaControl control(*machine_);
  control.ClearCalls();
  probe_->CallVoidMethod(Probe::throwWithFrames, machine_->NewString(WSTR("first")));
  ASSERT_TRUE(env_->ExceptionCheck());

  EXPECT_FALSE(machine_->NewString(WSTR("x")));
  EXPECT_FALSE(probeClass_->NewObject(Probe::ctor));
  EXPECT_FALSE(probeClass_->NewLocalObject(Probe::ctor));
  probe_->CallVoidMethod(Probe::record, nullptr);
  EXPECT_EQ(probe_->CallStringMethod(Probe::answerNull)->Get(), nullptr);
  EXPECT_FALSE(machine_->LoadClass("java/util/HashMap", nullptr, 0));

  EXPECT_EQ(TakeException().rfind("java.lang.IllegalStateException: first", 0), 0u);
  EXPECT_TRUE(control.Calls().empty());
}

TEST_F(JavaCallTest, ResultsNobodyReadsLeaveNoLocalReferencesBehind) {
  // The creating thread never returns to Java, so anything left in its frame stays for
  // good. The JVM's JNI checks (the suite's second pass) report a frame that grows.
  for (int i = 0; i < 500; ++i) {
    probe_->CallVoidMethod(Probe::answerObject);
    probe_->CallVoidMethod(Probe::answerInt);
    auto text = machine_->NewString(WSTR("short-lived"));
    auto echoed = probe_->CallStringMethod(Probe::echo, text);
    auto object = probe_->CallObjectMethod(Probe::answerObject);
    auto made = probeClass_->NewObject(Probe::ctorTime, i);
    probe_->CallVoidMethod(Probe::throwWithFrames, text);
    ASSERT_TRUE(machine_->TakeException());
  }
}

TEST_F(JavaCallTest, ReferencesCanBeLetGoFromAnyThread) {
  auto object = probeClass_->NewObject(Probe::ctorTime, jlong{5});
  auto string = machine_->NewString(WSTR("local"));
  ASSERT_TRUE(object && string);

  // A global reference released on a thread the machine does not know, which is left
  // as unattached as it was found.
  jint after = JNI_OK;
  std::thread([&] {
    object.reset();
    JNIEnv* env = nullptr;
    after = machine_->GetJavaVM()->GetEnv(reinterpret_cast<void**>(&env), JNI_VERSION_1_6);
  }).join();
  EXPECT_EQ(after, JNI_EDETACHED);

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
