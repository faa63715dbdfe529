#include "manager/Dispatch.h"

#include "tarnix/DataType.h"

#include <array>

namespace tarnix {
namespace {

using SenderTable = std::array<DataSender, 256>;

SenderTable MakeSenderTable() {
  SenderTable table{};
  table[eStartup] = &SendStartup;
  return table;
}

}  // namespace

DataSender FindDataSender(unsigned char dataType) {
  static const SenderTable table = MakeSenderTable();
  return table[dataType];
}

}  // namespace tarnix
