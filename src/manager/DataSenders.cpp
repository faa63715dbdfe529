#include "manager/Dispatch.h"

#include "tarnix/DataType.h"

#include <array>

namespace tarnix {
namespace {

using SenderTable = std::array<DataSender, 256>;

SenderTable MakeSenderTable() {
  SenderTable table{};
  table[eUserSessionStart] = &ConvertSessionOnly;
  table[eUserSessionLogon] = &SendLogon;
  table[eUserSessionLogoff] = &SendLogoff;
  table[eUserSessionRefresh] = &SendRefresh;
  table[eUserSessionReconnect] = &SendReconnect;
  table[eUserSessionDisconnect] = &SendDisconnect;
  table[eUserSessionEnd] = &ConvertSessionOnly;
  table[eExtendedData] = &SendExtendedData;
  table[eStartup] = &SendStartup;
  table[eSample] = &SendSample;
  table[eTraceRoute] = &SendTraceRoute;
  table[eDesktopPoll] = &SendDesktopPoll;
  return table;
}

}  // namespace

DataSender FindDataSender(unsigned char dataType) {
  static const SenderTable table = MakeSenderTable();
  return table[dataType];
}

}  // namespace tarnix
