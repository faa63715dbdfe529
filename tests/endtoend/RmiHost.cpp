#include "RmiHost.h"

#include "manager/AgentRegistry.h"

namespace tarnix::testing {

RmiHostTest::RmiHostTest() {
  registry_.Own(HKEY_LOCAL_MACHINE, AgentKeyPath());
  registry_.CreateKey(HKEY_LOCAL_MACHINE, AgentKeyPath());
  const auto set = [&](const char* name, const std::string& value) {
    registry_.SetString(HKEY_LOCAL_MACHINE, AgentKeyPath(), Utf8ToWide(name), Utf8ToWide(value));
  };
  set("JrePath", ENDTOEND_JAVA_HOME);
  set("ClassPath", ENDTOEND_AGENT_JAR_DIR);
  set("LogDirectory", "/tmp/tarnix-agent-logs");
  set("ConfigDirectory", "/tmp/tarnix-agent-config");
  registry_.Apply();
  DescribeMachine();
}

void RmiHostTest::TearDown() {
  manager_.reset();
  server_.reset();
  HostTest::TearDown();
}

hostsim::MessageServerProcess& RmiHostTest::StartServer(int port) {
  hostsim::MessageServerOptions options;
  options.java = ENDTOEND_JAVA_HOME "/bin/java";
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

std::string RmiHostTest::RuntimeLibrary() { return ENDTOEND_JAVA_HOME "/lib/server/libjvm.so"; }

}  // namespace tarnix::testing
