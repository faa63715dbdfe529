#include "manager/DataTypeName.h"

#include <array>

namespace tarnix {
namespace {

constexpr std::array<const WCHAR*, 11> kNames = {
    WSTR("eUserSessionStart"),
    WSTR("eUserSessionLogon"),
    WSTR("eUserSessionLogoff"),
    WSTR("eUserSessionRefresh"),
    WSTR("eUserSessionReconnect"),
    WSTR("eUserSessionDisconnect"),
    WSTR("eUserSessionEnd"),
    WSTR("eExtendedData"),
    WSTR("eStartup"),
    WSTR("eSample"),
    WSTR("eTraceRoute"),
};

}  // namespace

WString Enum2String(unsigned char value) {
  if (value < kNames.size()) return kNames[value];
  static constexpr WCHAR kDigits[] = WSTR("0123456789abcdef");
  WString text = WSTR("0x");
  if (value >= 16) text += kDigits[value >> 4];
  text += kDigits[value & 15];
  return text;
}

}  // namespace tarnix
