// A host whose component talks to a real message server: the agent's settings in the
// registry, the host's identity, the server in a process of its own, and a manager that lets
// go of the host's objects before the host checks them.
#pragma once

#include "MessageServerProcess.h"
#include "fixtures/HostTest.h"
#include "fixtures/Secrets.h"
#include "fixtures/TestRegistry.h"
#include "manager/CommManagerImpl.h"
#include "platform/WideText.h"

#include <memory>
#include <string>
#include <vector>

namespace tarnix::testing {

class RmiHostTest : public HostTest {
 protected:
  RmiHostTest();
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

  static std::string RuntimeLibrary();

  std::unique_ptr<CRMICommManagerImpl> manager_ = std::make_unique<CRMICommManagerImpl>();

 private:
  TestRegistry registry_;
  std::unique_ptr<hostsim::MessageServerProcess> server_;
  WString url_;
};

}  // namespace tarnix::testing
