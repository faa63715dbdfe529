#include <gtest/gtest.h>

#include "manager/DataTypes.h"

namespace tarnix {
namespace {

std::string Narrow(const WString& text) { return std::string(text.begin(), text.end()); }

TEST(DataTypeName, NamesEveryByteValue) {
  const char* named[] = {"eUserSessionStart",
                         "eUserSessionLogon",
                         "eUserSessionLogoff",
                         "eUserSessionRefresh",
                         "eUserSessionReconnect",
                         "eUserSessionDisconnect",
                         "eUserSessionEnd",
                         "eExtendedData",
                         "eStartup",
                         "eSample",
                         "eTraceRoute"};
  for (int value = 0; value < 256; ++value) {
    char hex[8];
    std::snprintf(hex, sizeof hex, "0x%x", value);
    const std::string expected = value <= eTraceRoute ? named[value] : hex;
    EXPECT_EQ(Narrow(Enum2String(static_cast<unsigned char>(value))), expected) << value;
  }
  EXPECT_EQ(Narrow(Enum2String(11)), "0xb");
  EXPECT_EQ(Narrow(Enum2String(eDesktopPoll)), "0xff");
}

}  // namespace
}  // namespace tarnix
