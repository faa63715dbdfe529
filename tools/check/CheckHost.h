// The host the component's code expects, stood in for by the check tool. While the owner
// lives, this process's COM apartment is open and the host's system service class is
// registered here, offering a logger that keeps every line the component writes and
// system information that answers only the machine unique id (an empty text: the tool
// has no agent to ask). Nothing is written to the registry. One owner per process, on
// the main thread; the lines are read back on that thread too.
#pragma once

#include "platform/Win32.h"

#include <memory>
#include <string>
#include <vector>

namespace tarnix::check {

struct LoggedLine {
  std::string level;  // "error", "warning", "info" or "trace"
  std::string text;   // UTF-8
};

class CheckHost {
 public:
  CheckHost();
  ~CheckHost();
  CheckHost(const CheckHost&) = delete;
  CheckHost& operator=(const CheckHost&) = delete;

  // False when the service could not be registered; the component's code then runs
  // without a logger and without system information, as in a host that lacks them.
  bool Registered() const;

  // The lines logged since the last call, oldest first.
  std::vector<LoggedLine> TakeLines();

  // Whether the component asked for the machine unique id since the last call.
  bool TakeUniqueIdAsked();

 private:
  class Services;
  std::unique_ptr<Services> services_;
  HRESULT apartment_ = E_FAIL;
  HRESULT registration_ = E_FAIL;
  DWORD cookie_ = 0;
};

}  // namespace tarnix::check
