// A host whose component talks to a real message server in a process of its own: the
// manager suites' host (the agent's settings, the described machine, a manager of its own)
// with the server's URL.
#pragma once

#include "JvmHost.h"
#include "MessageServerProcess.h"

#include <memory>
#include <string>

namespace tarnix::testing {

class RmiHostTest : public ManagerJvmTest {
 protected:
  void TearDown() override;

  // Starts the server (on `port`, 0 for a free one); a failure to start fails the test.
  hostsim::MessageServerProcess& StartServer(int port = 0);
  void StopServer();
  hostsim::MessageServerProcess& Server() { return *server_; }
  // The server's URL as the host hands it to the component.
  WString Url() const { return url_; }

  LONG Dump(unsigned char type, IUnknown* data = nullptr, ULONGLONG number = 42) {
    return manager_->DumpData(url_.c_str(), kAuthToken, kCertificate, number, type, data);
  }

 private:
  std::unique_ptr<hostsim::MessageServerProcess> server_;
  WString url_;
};

}  // namespace tarnix::testing
