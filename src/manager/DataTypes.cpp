#include "manager/DataTypes.h"

#include <array>

namespace tarnix {
namespace {

constexpr DataTypeRow kDataTypes[] = {
    {eUserSessionStart, WSTR("eUserSessionStart"), &ConvertSessionOnly, AnswerRoute::Dropped},
    {eUserSessionLogon, WSTR("eUserSessionLogon"), &SendLogon, AnswerRoute::Callbacks},
    {eUserSessionLogoff, WSTR("eUserSessionLogoff"), &SendLogoff, AnswerRoute::Dropped},
    {eUserSessionRefresh, WSTR("eUserSessionRefresh"), &SendRefresh, AnswerRoute::Dropped},
    {eUserSessionReconnect, WSTR("eUserSessionReconnect"), &SendReconnect, AnswerRoute::Dropped},
    {eUserSessionDisconnect, WSTR("eUserSessionDisconnect"), &SendDisconnect, AnswerRoute::Dropped},
    {eUserSessionEnd, WSTR("eUserSessionEnd"), &ConvertSessionOnly, AnswerRoute::Dropped},
    {eExtendedData, WSTR("eExtendedData"), &SendExtendedData, AnswerRoute::ActionExecutor},
    {eStartup, WSTR("eStartup"), &SendStartup, AnswerRoute::Callbacks},
    {eSample, WSTR("eSample"), &SendSample, AnswerRoute::ActionExecutor},
    {eTraceRoute, WSTR("eTraceRoute"), &SendTraceRoute, AnswerRoute::Dropped},
    {eDesktopPoll, nullptr, &SendDesktopPoll, AnswerRoute::ActionExecutor},
};

// Every call looks its type up: by value, not by a walk through the rows.
using RowIndex = std::array<const DataTypeRow*, 256>;

RowIndex MakeRowIndex() {
  RowIndex index{};
  for (const DataTypeRow& row : kDataTypes) index[row.type] = &row;
  return index;
}

}  // namespace

const DataTypeRow* FindDataType(unsigned char dataType) {
  static const RowIndex index = MakeRowIndex();
  return index[dataType];
}

WString Enum2String(unsigned char value) {
  const DataTypeRow* row = FindDataType(value);
  if (row && row->name) return row->name;
  static constexpr WCHAR kDigits[] = WSTR("0123456789abcdef");
  WString text = WSTR("0x");
  if (value >= 16) text += kDigits[value >> 4];
  text += kDigits[value & 15];
  return text;
}

}  // namespace tarnix
