#include <gtest/gtest.h>

#include "PlatformTest.h"
#include "platform/UniqueAny.h"

using tarnix::test::UniqueName;
using tarnix::test::Wide;

using ScopedHandle = tarnix::UniqueHandle;

TEST(Event, NamedEventsAreSharedBetweenHandlesOfTheSameNameUntilTheLastCloses) {
  const WString name = Wide(UniqueName("tarnix-event"));
  SetLastError(0);
  EXPECT_EQ(OpenEventW(EVENT_MODIFY_STATE, FALSE, name.c_str()), nullptr);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
  {
    ScopedHandle created(CreateEventW(nullptr, FALSE, FALSE, name.c_str()));
    ASSERT_NE(created.Get(), nullptr);
    EXPECT_EQ(GetLastError(), 0u);
    ScopedHandle again(CreateEventW(nullptr, FALSE, FALSE, name.c_str()));
    ASSERT_NE(again.Get(), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));

    ScopedHandle opened(OpenEventW(EVENT_MODIFY_STATE | SYNCHRONIZE, FALSE, name.c_str()));
    ASSERT_NE(opened.Get(), nullptr);
    EXPECT_EQ(WaitForSingleObject(created.Get(), 0), static_cast<DWORD>(WAIT_TIMEOUT));
    ASSERT_TRUE(SetEvent(opened.Get()));
    // Auto-reset: one wait takes the signal.
    EXPECT_EQ(WaitForSingleObject(created.Get(), 0), static_cast<DWORD>(WAIT_OBJECT_0));
    EXPECT_EQ(WaitForSingleObject(again.Get(), 0), static_cast<DWORD>(WAIT_TIMEOUT));
    EXPECT_TRUE(CloseHandle(again.Release()));
  }
  // The last handle took the name with it.
  EXPECT_EQ(OpenEventW(SYNCHRONIZE, FALSE, name.c_str()), nullptr);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

TEST(Kernel, SystemTextEndsWithALineEndAndUnknownCodesHaveNone) {
  LPWSTR text = nullptr;
  const DWORD flags =
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
  const DWORD length =
      FormatMessageW(flags, nullptr, 0x80070002, MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
                     reinterpret_cast<LPWSTR>(&text), 0, nullptr);
  ASSERT_GT(length, 2u);
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(static_cast<DWORD>(lstrlenW(text)), length);
  EXPECT_EQ(text[length - 2], u'\r');
  EXPECT_EQ(text[length - 1], u'\n');
  LocalFree(text);

  text = nullptr;
  EXPECT_EQ(FormatMessageW(flags, nullptr, 0x12345678, MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
                           reinterpret_cast<LPWSTR>(&text), 0, nullptr),
            0u);
  EXPECT_EQ(text, nullptr);
}

TEST(Kernel, StrToIntReadsLeadingDigitsOnly) {
  EXPECT_EQ(StrToIntW(WSTR("12abc")), 12);
  EXPECT_EQ(StrToIntW(WSTR(" 5")), 0);
  EXPECT_EQ(StrToIntW(WSTR("-7x")), -7);
  EXPECT_EQ(StrToIntW(WSTR("+5")), 0);  // a minus sign is taken, a plus is not
  EXPECT_EQ(StrToIntW(WSTR("")), 0);
  EXPECT_EQ(StrToIntW(WSTR("0x10")), 0);
  EXPECT_EQ(StrToIntW(WSTR("2147483647")), 2147483647);
}

TEST(Kernel, Utf8ConvertsBothWaysWithSizesMeasuredFirst) {
  const char utf8[] =
      "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9D\x84\x9E";  // café € and a clef outside the BMP
  const int wideLength = MultiByteToWideChar(CP_UTF8, 0, utf8, -1, nullptr, 0);
  ASSERT_EQ(wideLength, 10);  // 4 + 1 + 1 + 1 + 2 + terminator
  WCHAR wide[16];
  ASSERT_EQ(MultiByteToWideChar(CP_UTF8, 0, utf8, -1, wide, 16), wideLength);
  EXPECT_EQ(wide[3], 0xE9);
  EXPECT_EQ(wide[7], 0xD834);

  const int narrowLength = WideCharToMultiByte(CP_UTF8, 0, wide, -1, nullptr, 0, nullptr, nullptr);
  ASSERT_EQ(narrowLength, static_cast<int>(sizeof(utf8)));
  char narrow[32];
  ASSERT_EQ(WideCharToMultiByte(CP_UTF8, 0, wide, -1, narrow, 32, nullptr, nullptr), narrowLength);
  EXPECT_STREQ(narrow, utf8);
}
