// The host around a manager that starts the real JVM: the agent's settings in a test
// registry pointing at the JDK and the stand-in jars, and ways to see what reached Java.
#pragma once

#include "ManagerTestPaths.h"
#include "ManagerTestSupport.h"
#include "JvmTestSupport.h"

#include "fixtures/HostTest.h"
#include "fixtures/Secrets.h"
#include "fixtures/TestRegistry.h"
#include "manager/CommManagerImpl.h"

#include <jni.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tarnix::testing {

struct AgentSettings {
  std::optional<std::string> jrePath = std::string(MANAGER_TEST_JAVA_HOME);
  std::optional<std::string> classPath = std::string(MANAGER_TEST_JAR_DIR);
  std::optional<std::string> logDirectory = std::string("/tmp/tarnix-agent-logs");
  std::optional<std::string> configDirectory = std::string("/tmp/tarnix-agent-config");
};

class JvmHostTest : public HostTest {
 protected:
  JvmHostTest();
  void WriteSettings(const AgentSettings& settings);

  // Makes the stand-ins throw before start-up reaches them: "place=exceptionClass:message"
  // entries separated by ";". Only before the machine is made.
  static void ArmFaultsAtStartUp(const std::string& faults);

  TestRegistry registry_;
};

// A manager of the test's own on the real JVM, over the agent's settings and the machine
// most suites describe. It lets go of the host's objects before the host checks them.
class ManagerJvmTest : public JvmHostTest {
 protected:
  ManagerJvmTest() {
    WriteSettings({});
    DescribeMachine();
  }
  void TearDown() override {
    manager_.reset();
    JvmHostTest::TearDown();
  }
  LONG Dump(unsigned char type, IUnknown* data = nullptr, ULONGLONG number = 42) {
    return manager_->DumpData(WSTR("url"), kAuthToken, kCertificate, number, type, data);
  }
  // The messages that carried data since the last look, leaving out construction and
  // configuration.
  std::vector<std::string> Sends();

  std::unique_ptr<CRMICommManagerImpl> manager_ = std::make_unique<CRMICommManagerImpl>();
};

// The class-path folder of the stand-in jars, as start-up lists it.
std::string StandInClassPath(const std::string& folder);

// The JVM of this process, found without the component (which may have let go of it).
JavaVM* RunningJavaVM();

// The running JVM's environment on the calling thread, attached for the object's life when
// it was not.
struct AttachedThread {
  AttachedThread();
  ~AttachedThread();
  AttachedThread(const AttachedThread&) = delete;

  JavaVM* vm = nullptr;
  JNIEnv* env = nullptr;
  bool attached = false;
};

// The stand-ins' test controls on the running JVM, from the calling thread.
class RawJava : private AttachedThread, public JavaControl {
 public:
  RawJava() : JavaControl(env) {}
};

}  // namespace tarnix::testing
