#include <gtest/gtest.h>

#include "platform/Win32.h"

namespace {

uint64_t Ticks(const FILETIME& time) {
  return (static_cast<uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

struct Expected {
  double date;
  WORD year, month, day, hour, minute, second, dayOfWeek;
  uint64_t ticks;
};

}  // namespace

TEST(OleDate, DatesBecomeCalendarTimesAndFileTimes) {
  const Expected cases[] = {
      {25569.0, 1970, 1, 1, 0, 0, 0, 4, 116444736000000000ull},
      {36526.0, 2000, 1, 1, 0, 0, 0, 6, 125911584000000000ull},
      {36526.5, 2000, 1, 1, 12, 0, 0, 6, 125912016000000000ull},
      // Before the epoch the fraction still counts forward from midnight.
      {-1.25, 1899, 12, 29, 6, 0, 0, 5, 94352472000000000ull},
      // Whole seconds: 0.4 s rounds down, 0.6 s up.
      {36526.0 + 10.4 / 86400, 2000, 1, 1, 0, 0, 10, 6, 125911584100000000ull},
      {36526.0 + 10.6 / 86400, 2000, 1, 1, 0, 0, 11, 6, 125911584110000000ull},
      // Half a second less a rounding error already rounds up.
      {36526.000005787035, 2000, 1, 1, 0, 0, 1, 6, 125911584010000000ull},
  };
  for (const Expected& c : cases) {
    SCOPED_TRACE(c.date);
    SYSTEMTIME st = {};
    ASSERT_TRUE(VariantTimeToSystemTime(c.date, &st));
    EXPECT_EQ(st.wYear, c.year);
    EXPECT_EQ(st.wMonth, c.month);
    EXPECT_EQ(st.wDay, c.day);
    EXPECT_EQ(st.wHour, c.hour);
    EXPECT_EQ(st.wMinute, c.minute);
    EXPECT_EQ(st.wSecond, c.second);
    EXPECT_EQ(st.wMilliseconds, 0);
    EXPECT_EQ(st.wDayOfWeek, c.dayOfWeek);
    FILETIME ft = {};
    ASSERT_TRUE(SystemTimeToFileTime(&st, &ft));
    EXPECT_EQ(Ticks(ft), c.ticks);
  }
}

TEST(OleDate, OutOfRangeDatesAndTimesAreRefused) {
  UDATE ud = {};
  EXPECT_EQ(VarUdateFromDate(2958466.0, 0, &ud), E_INVALIDARG);
  EXPECT_EQ(VarUdateFromDate(-657435.0, 0, &ud), E_INVALIDARG);
  SYSTEMTIME st = {};
  EXPECT_FALSE(VariantTimeToSystemTime(2958466.0, &st));
  EXPECT_FALSE(VariantTimeToSystemTime(-657435.0, &st));

  ASSERT_EQ(VarUdateFromDate(2958465.0, 0, &ud), S_OK);
  EXPECT_EQ(ud.st.wYear, 9999);
  EXPECT_EQ(ud.wDayOfYear, 365);
  ASSERT_EQ(VarUdateFromDate(36526.0 + 59, 0, &ud), S_OK);  // 29 February 2000
  EXPECT_EQ(ud.st.wMonth, 2);
  EXPECT_EQ(ud.st.wDay, 29);
  EXPECT_EQ(ud.wDayOfYear, 60);

  SYSTEMTIME bad = {2000, 13, 0, 1, 0, 0, 0, 0};
  FILETIME ft = {};
  EXPECT_FALSE(SystemTimeToFileTime(&bad, &ft));
  SYSTEMTIME early = {1600, 12, 0, 31, 0, 0, 0, 0};
  EXPECT_FALSE(SystemTimeToFileTime(&early, &ft));
}
