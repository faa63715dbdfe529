#include "RmiHost.h"

namespace tarnix::testing {

void RmiHostTest::TearDown() {
  manager_.reset();
  server_.reset();
  ManagerJvmTest::TearDown();
}

hostsim::MessageServerProcess& RmiHostTest::StartServer(int port) {
  hostsim::MessageServerOptions options;
  options.java = MANAGER_TEST_JAVA_HOME "/bin/java";
  options.classPath = ENDTOEND_SERVER_CLASSPATH;
  options.port = port;
  server_.reset();
  server_ = std::make_unique<hostsim::MessageServerProcess>(options);
  EXPECT_TRUE(server_->Running()) << server_->Failure();
  if (server_->Running()) url_ = Utf8ToWide(server_->Url());
  return *server_;
}

void RmiHostTest::StopServer() {
  if (server_) {
    EXPECT_TRUE(server_->Stop());
  }
}

}  // namespace tarnix::testing
