// One DumpData's way to the Java client: which message carries data of each type, and
// what it takes to send it.
#pragma once

#include "common/HostLog.h"
#include "manager/ClientIdentity.h"
#include "platform/Win32.h"
#include "tarnix/DataInterfaces.h"

#include <memory>
#include <optional>
#include <utility>

class CJavaVM;
class CJavaObject;
class CJavaString;

namespace tarnix {

// Everything the message for one call is made from. Lives for that call only.
struct DispatchCall {
  const std::shared_ptr<CJavaVM>& machine;
  const CJavaObject& client;
  const HostLog& log;
  ISystemInfo* systemInfo;
  const ClientIdentity& identity;
  ULONGLONG number;
  unsigned char dataType;
  IUnknown* data;
  // The data object's user session; null when it is not one.
  IHostUserSession* session;
};

// What sending gave: a failure before the Java client was reached, or the client's
// answer (empty for messages without one; the Java string may be null).
struct DispatchOutcome {
  DispatchOutcome() = default;
  DispatchOutcome(HRESULT result, std::shared_ptr<CJavaString> answer,
                  std::optional<WString> failure = std::nullopt)
      : result(result), answer(std::move(answer)), failure(std::move(failure)) {}
  // The message went out; the answer is the server's, or empty when it gave none.
  static DispatchOutcome Sent(std::shared_ptr<CJavaString> answer,
                              std::optional<WString> failure = std::nullopt) {
    return {S_OK, std::move(answer), std::move(failure)};
  }

  HRESULT result = S_OK;
  std::shared_ptr<CJavaString> answer;
  // A Java failure on the way that did not stop the message (an attribute the map
  // refused); the call ends in its send-failure line all the same.
  std::optional<WString> failure;
};

using DataSender = DispatchOutcome (*)(const DispatchCall& call);

// The agent's start-up message: the client description and the connection.
[[nodiscard]] DispatchOutcome SendStartup(const DispatchCall& call);
[[nodiscard]] DispatchOutcome SendDesktopPoll(const DispatchCall& call);
[[nodiscard]] DispatchOutcome SendSample(const DispatchCall& call);
[[nodiscard]] DispatchOutcome SendExtendedData(const DispatchCall& call);
[[nodiscard]] DispatchOutcome SendTraceRoute(const DispatchCall& call);

// The user-session events. Each needs the data's user session and fails without it.
[[nodiscard]] DispatchOutcome SendLogon(const DispatchCall& call);
[[nodiscard]] DispatchOutcome SendRefresh(const DispatchCall& call);
[[nodiscard]] DispatchOutcome SendReconnect(const DispatchCall& call);
[[nodiscard]] DispatchOutcome SendDisconnect(const DispatchCall& call);
[[nodiscard]] DispatchOutcome SendLogoff(const DispatchCall& call);
// A session's start and end: converted, but no message goes to the server.
[[nodiscard]] DispatchOutcome ConvertSessionOnly(const DispatchCall& call);

}  // namespace tarnix
