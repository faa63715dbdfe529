// OLE dates to Java times and to the label messages show; no Java needed.
#include "convert/Conversion.h"
#include "convert/JNIConvertor.h"

#include <gtest/gtest.h>

namespace {

using tarnix::convert::DateLabel;
using tarnix::convert::ToJavaMillis;

TEST(JavaTimeTest, OleDatesBecomeWholeSecondsSince1970AsUniversalTime) {
  EXPECT_EQ(CJNIConvertor::ToJavaTime(25569.0), 0u);
  EXPECT_EQ(ToJavaMillis(25569.0), 0);
  EXPECT_EQ(ToJavaMillis(36526.0), 946684800000LL);
  // 2000-01-01 12:00:00 and 06:00:30: the fraction is the time of day.
  EXPECT_EQ(ToJavaMillis(36526.5), 946728000000LL);
  EXPECT_EQ(ToJavaMillis(36526.25 + 30.0 / 86400), 946706430000LL);
  // Before 1970 the unsigned arithmetic wraps: a day early is (2^64 - a day of ticks) / 10^7
  // seconds, never a negative time.
  const ULONGLONG dayBefore = CJNIConvertor::ToJavaTime(25568.0);
  EXPECT_EQ(dayBefore, (0ULL - 864000000000ULL) / 10000000ULL);
  EXPECT_GT(dayBefore, 1ULL << 40);
}

TEST(JavaTimeTest, DateLabelIsTheCalendarTextOrInvalidDateTime) {
  EXPECT_EQ(DateLabel(1.0e10), WSTR("Invalid DateTime"));
  EXPECT_EQ(DateLabel(-1.0e7), WSTR("Invalid DateTime"));
  const WString label = DateLabel(36526.0);
  EXPECT_NE(label, WSTR("Invalid DateTime"));
  EXPECT_FALSE(label.empty());
#ifndef _WIN32
  // The C locale's form, whatever the process's locale; under Wine the text is Wine's.
  EXPECT_EQ(label, WSTR("Sat Jan  1 00:00:00 2000"));
  EXPECT_EQ(DateLabel(36526.75 + 5.0 / 86400), WSTR("Sat Jan  1 18:00:05 2000"));
#else
  // The host's "no time" (1899-12-30) never reaches Microsoft's runtime, which may end the
  // process on a year before 1900; it reads as the runtime's label of the day 400 years
  // on, which has the same weekday and, in the C locale's layout, the same text.
  EXPECT_EQ(DateLabel(0.0 + 6.5 / 24), DateLabel(146097.0 + 6.5 / 24));
#endif
}

}  // namespace
