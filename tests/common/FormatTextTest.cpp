#include "common/FormatText.h"

#include <gtest/gtest.h>

namespace tarnix {
namespace {

TEST(FormatText, ResultCodesPrintAsEightLowerCaseDigitsWhateverTheArgumentType) {
  const HRESULT outOfMemory = static_cast<HRESULT>(0x8007000E);
  EXPECT_EQ(FormatText(WSTR("0x%08lx"), outOfMemory), WSTR("0x8007000e"));
  EXPECT_EQ(FormatText(WSTR("0x%08lx"), S_FALSE), WSTR("0x00000001"));
  EXPECT_EQ(FormatText(WSTR("0x%08lx"), static_cast<DWORD>(0xABCDEF)), WSTR("0x00abcdef"));
  // A 64-bit argument under %lx is taken as 32 bits, as a Windows long is.
  EXPECT_EQ(FormatText(WSTR("%lx"), 0x1234567890ull), WSTR("34567890"));
  EXPECT_EQ(FormatText(WSTR("%llx|%I64X"), 0x1234567890ull, 0xabull), WSTR("1234567890|AB"));
  EXPECT_EQ(FormatText(WSTR("%X"), 0xbeefu), WSTR("BEEF"));
}

TEST(FormatText, SignedUnsignedWidthsAndFlags) {
  EXPECT_EQ(FormatText(WSTR("%d %i %u"), -42, 0, 4294967295u), WSTR("-42 0 4294967295"));
  EXPECT_EQ(FormatText(WSTR("%d"), static_cast<LONG>(-2147483647 - 1)), WSTR("-2147483648"));
  // %u of a negative 32-bit value shows its bits, as printf does.
  EXPECT_EQ(FormatText(WSTR("%u"), -1), WSTR("4294967295"));
  EXPECT_EQ(FormatText(WSTR("[%5d][%-5d][%05d][%05d][%10d]"), 42, 42, 42, -42, 7),
            WSTR("[   42][42   ][00042][-0042][         7]"));
  EXPECT_EQ(FormatText(WSTR("%lld"), -9000000000ll), WSTR("-9000000000"));
  EXPECT_EQ(FormatText(WSTR("%.3d"), 5), WSTR("005"));
  // A precision beyond what a number can need stops short of the sign's place.
  EXPECT_EQ(FormatText(WSTR("%.30d"), -5), WSTR("-") + WString(22, WCHAR('0')) + WSTR("5"));
}

TEST(FormatText, WideTextIsInsertedAsItStands) {
  const WString name(WSTR("C:\\Program Files\\Java\\jre"));
  EXPECT_EQ(FormatText(WSTR("Using JRE from '%s'."), name),
            WSTR("Using JRE from 'C:\\Program Files\\Java\\jre'."));
  // Text holding '%' is data, never a directive.
  EXPECT_EQ(FormatText(WSTR("%s|%s"), WSTR("100% %s %d"), WSTR("")), WSTR("100% %s %d|"));
  // Line ends and non-ASCII text survive untouched.
  const WCHAR mixed[] = {0x00E9, '\r', '\n', 0x4E2D, 0xD83D, 0xDE00, 0};
  EXPECT_EQ(FormatText(WSTR("<%s>"), mixed), WString(WSTR("<")) + mixed + WSTR(">"));
  EXPECT_EQ(FormatText(WSTR("[%-4s][%4s][%.2s]"), WSTR("ab"), WSTR("ab"), WSTR("abc")),
            WSTR("[ab  ][  ab][ab]"));
  const WCHAR* none = nullptr;
  EXPECT_EQ(FormatText(WSTR("%s"), none), WSTR("(null)"));
}

TEST(FormatText, MalformedFormatsAndMissingArgumentsGiveDefinedText) {
  EXPECT_EQ(FormatText(WSTR("100%% sure")), WSTR("100% sure"));
  EXPECT_EQ(FormatText(WSTR("a %s b %d c")), WSTR("a  b  c"));
  EXPECT_EQ(FormatText(WSTR("%s %d"), 5, WSTR("x")), WSTR(" "));
  EXPECT_EQ(FormatText(WSTR("%s|%d|%s"), WSTR("x")), WSTR("x||"));
  EXPECT_EQ(FormatText(WSTR("%q %s"), WSTR("x")), WSTR("%q x"));
  EXPECT_EQ(FormatText(WSTR("trailing %")), WSTR("trailing %"));
  EXPECT_EQ(FormatText(WSTR("trailing %08l")), WSTR("trailing %08l"));
  EXPECT_EQ(FormatText(nullptr), WString());
  EXPECT_EQ(FormatText(WSTR("")), WString());
}

}  // namespace
}  // namespace tarnix
