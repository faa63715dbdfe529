// Everything the manager does differently for each DataType, as one row per type: the
// name its messages give the type, the sender that makes its Java call, and where the
// message server's answer goes. Handling a new type means one row here (and its sender).
#pragma once

#include "manager/Dispatch.h"
#include "platform/Win32.h"
#include "tarnix/DataType.h"

namespace tarnix {

// Who takes the message server's answer to a type.
enum class AnswerRoute {
  Dropped,
  // The host's callbacks.
  Callbacks,
  // The host's action executor.
  ActionExecutor,
};

struct DataTypeRow {
  unsigned char type;
  // Null for a value that is not an enumerator: its messages show it in hexadecimal.
  const WCHAR* name;
  // Null for a type that makes no Java call.
  DataSender send;
  AnswerRoute answer;
};

// The row of a type; null for a value without one (no call, no answer).
const DataTypeRow* FindDataType(unsigned char dataType);

// The name of a DataType for messages: the enumerator's own spelling, or "0x" and the
// value in lower-case hexadecimal for a value without one ("0xb", "0xff").
WString Enum2String(unsigned char value);

}  // namespace tarnix
