// The text of Java exceptions, read on the real JDK.
#include "ProbeClass.h"

#include "jni/ExceptionText.h"
#include "jni/LocalRef.h"

#include <gtest/gtest.h>

namespace {

using namespace tarnix::testing;

class ExceptionTextTest : public BridgeTest {
 protected:
  // Java's own rendering of the pending throwable, made after the bridge has read it.
  struct Reading {
    bool pending = false;
    std::string text;
    std::string javasOwn;
  };
  // Java's own rendering is skipped for a throwable whose toString() throws.
  Reading Read(bool rendered = true) {
    Reading reading;
    tarnix::LocalRef<jthrowable> thrown(env_, env_->ExceptionOccurred());
    const std::optional<WString> text = machine_->TakeException();
    reading.pending = text.has_value();
    reading.text = Narrow(text.value_or(WString()));
    EXPECT_FALSE(env_->ExceptionCheck()) << "the text was read but the exception stays";
    if (thrown && rendered) reading.javasOwn = JavaControl(*machine_).ThrowableText(thrown.Get());
    return reading;
  }

  template <class Method, class... Text>
  void Throw(Method method, Text... message) {
    probe_->CallVoidMethod(method, machine_->NewString(message)...);
    ASSERT_TRUE(env_->ExceptionCheck());
  }
};

TEST_F(ExceptionTextTest, TextIsToStringThenEveryFrameOnALineOfItsOwn) {
  EXPECT_FALSE(machine_->TakeException());
  EXPECT_EQ(tarnix::TakePendingExceptionText(env_), WString());

  Throw(Probe::throwWithFrames, WSTR("boom"));
  const Reading reading = Read();
  EXPECT_TRUE(reading.pending);
  EXPECT_EQ(reading.text, reading.javasOwn);
  EXPECT_EQ(reading.text.rfind("java.lang.IllegalStateException: boom\r\n\t"
                               "com.tarnix.testing.Probe.level2(Probe.java:",
                               0),
            0u)
      << reading.text;
  EXPECT_NE(reading.text.find("\r\n\tcom.tarnix.testing.Probe.level1(Probe.java:"),
            std::string::npos);
  EXPECT_NE(reading.text.find("\r\n\tcom.tarnix.testing.Probe.throwWithFrames(Probe.java:"),
            std::string::npos);
}

// No frames: the first line alone, its text through the thread's code page unchanged.
TEST_F(ExceptionTextTest, EmptyStackGivesTheFirstLineAlone) {
  Throw(Probe::throwWithoutStack, WSTR("Grüße \u20AC"));
  EXPECT_EQ(Read().text, "java.lang.IllegalStateException: Grüße \u20AC");
}

TEST_F(ExceptionTextTest, MissingFirstLineLeavesOnlyTheFrames) {
  Throw(Probe::throwNullText);
  Reading reading = Read();
  EXPECT_EQ(reading.text.rfind("\r\n\tcom.tarnix.testing.Probe.throwNullText(Probe.java:", 0), 0u)
      << reading.text;
  EXPECT_EQ(reading.text, reading.javasOwn);

  // A toString() that throws in turn is as good as none, and its exception goes too.
  Throw(Probe::throwBrokenText);
  reading = Read(false);
  EXPECT_EQ(reading.text.rfind("\r\n\tcom.tarnix.testing.Probe.throwBrokenText(Probe.java:", 0), 0u)
      << reading.text;
}

}  // namespace
