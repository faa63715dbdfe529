// The Java start-up on the real JVM, from the settings in the registry. A JVM can be made
// once per process: each test here runs in a process of its own.
#include "JvmHost.h"

#include "convert/ClassTable.h"
#include "jni/JavaVM.h"
#include "manager/CommManagerImpl.h"

#include <gtest/gtest.h>

namespace tarnix::testing {
namespace {

const std::string kClassPaths = MANAGER_TEST_BROKEN_CLASSPATHS;
const std::string kJavaHome = MANAGER_TEST_JAVA_HOME;
const std::string kDataModel = "com/corvane/zelmar/adapters/brixcommon/datamodel/";

std::vector<std::string> LoadedLines(size_t count) {
  std::vector<std::string> lines;
  for (size_t i = 0; i < count; ++i) {
    lines.push_back(std::string("Loaded class ") + classes::kClassTable[i].name + ".");
  }
  return lines;
}

bool StartsWith(const std::string& text, const std::string& prefix) {
  return text.rfind(prefix, 0) == 0;
}

class JavaStartup : public JvmHostTest {
 protected:
  // Starts Java and expects it up, with the runtime found at `runtime`.
  void ExpectStarted(CRMICommManagerImpl& manager, const std::string& runtime) {
    ASSERT_EQ(manager.Initialize(), S_OK) << Logger().Dump();
    EXPECT_TRUE(Logger().Messages(LogOperation::Error).empty()) << Logger().Dump();
    const auto info = Lines(Logger(), LogOperation::Info);
    ASSERT_FALSE(info.empty());
    EXPECT_EQ(info.front(), "Using JRE from '" + runtime + "'.");
    EXPECT_EQ(info.back(), "Initialized communication manager.");
    EXPECT_EQ(Lines(Logger(), LogOperation::Level), LoadedLines(10));
    ASSERT_TRUE(manager.GetMessageClient());
    EXPECT_EQ(U(manager.GetJavaVM()->GetRuntimeLibraryPath()), runtime + "lib/server/libjvm.so");
  }
};

TEST_F(JavaStartup, FromTheAgentsRuntimeAndJars) {
  WriteSettings({});
  CRMICommManagerImpl manager;
  ExpectStarted(manager, kJavaHome + "/");
  EXPECT_EQ(Lines(Logger(), LogOperation::Info),
            (std::vector<std::string>{"Using JRE from '" + kJavaHome + "/'.",
                                      "SUCCESSFULLY initialized the Message Logger.",
                                      "Initialized communication manager."}));
  RawJava java;
  EXPECT_EQ(java.SystemProperty("java.class.path"), StandInClassPath(MANAGER_TEST_JAR_DIR));
  const std::vector<std::string> made = {"InstanceLoggerFactory(\"/tmp/tarnix-agent-logs\")",
                                         "DesktopMessageClient()"};
  EXPECT_EQ(java.Calls(), made);

  // Started once: a second start-up makes nothing.
  const auto machine = manager.GetJavaVM();
  Logger().Clear();
  EXPECT_EQ(manager.Initialize(), S_OK);
  EXPECT_EQ(manager.GetJavaVM(), machine);
  EXPECT_EQ(java.Calls(), made);
  EXPECT_EQ(Logger().Count(), 0u);
}

TEST_F(JavaStartup, FromTheHostDesktopsJavaHome) {
  AgentSettings settings;
  settings.jrePath.reset();
  settings.javaHome = kJavaHome + "/";
  WriteSettings(settings);
  CRMICommManagerImpl manager;
  ExpectStarted(manager, kJavaHome + "/");
  EXPECT_TRUE(Logger().Messages(LogOperation::Warning).empty());
}

TEST_F(JavaStartup, FromTheHostAgentsOwnRuntime) {
  AgentSettings settings;
  settings.jrePath.reset();
  settings.agentInstallPath = MANAGER_TEST_AGENT_INSTALL;
  WriteSettings(settings);
  CRMICommManagerImpl manager;
  ExpectStarted(manager, std::string(MANAGER_TEST_AGENT_INSTALL) + "/jre/");
  EXPECT_EQ(Lines(Logger(), LogOperation::Warning),
            std::vector<std::string>{"Failed to retrieve the Java home path.  Using the Vantage "
                                     "agent's JRE instead.  Error code 0x80070002."});
}

TEST_F(JavaStartup, WithoutALogFolderTheJavaLoggerIsLeftOut) {
  AgentSettings settings;
  settings.logDirectory.reset();
  WriteSettings(settings);
  CRMICommManagerImpl manager;
  ExpectStarted(manager, kJavaHome + "/");
  EXPECT_EQ(
      Lines(Logger(), LogOperation::Warning),
      std::vector<std::string>{"Failed to retrieve the log foler path.    Error code 0x80070002."});
  EXPECT_EQ(CountStartingWith(Logger(), "SUCCESSFULLY initialized the Message Logger."), 1u);
  EXPECT_EQ(RawJava().Calls(), std::vector<std::string>{"DesktopMessageClient()"});
}

TEST_F(JavaStartup, AnEmptyClassPathFindsNoClass) {
  AgentSettings settings;
  settings.classPath = kClassPaths + "/empty";
  WriteSettings(settings);
  CRMICommManagerImpl manager;
  EXPECT_EQ(manager.Initialize(), E_FAIL);
  // A folder without jars is a search that finds nothing, which is logged.
  const auto errors = Lines(Logger(), LogOperation::Error);
  ASSERT_EQ(errors.size(), 2u) << Logger().Dump();
  EXPECT_TRUE(StartsWith(errors[0], "Failed to enumerate class path directory '" + kClassPaths +
                                        "/empty/*.jar'.  Error code 0x80070002"))
      << errors[0];
  EXPECT_TRUE(StartsWith(errors[1], std::string("Failed to load class ") +
                                        classes::kInstanceLoggerFactory +
                                        ".  java.lang.NoClassDefFoundError"))
      << errors[1];
  EXPECT_TRUE(Logger().Messages(LogOperation::Level).empty());
  EXPECT_EQ(RawJava().SystemProperty("java.class.path"), "");

  // One attempt per manager, also after a failure.
  Logger().Clear();
  EXPECT_EQ(manager.Initialize(), S_OK);
  EXPECT_EQ(Logger().Count(), 0u);
  EXPECT_FALSE(manager.GetMessageClient());
}

TEST_F(JavaStartup, AMissingClassStopsTheTable) {
  AgentSettings settings;
  settings.classPath = kClassPaths + "/missing-class";
  WriteSettings(settings);
  CRMICommManagerImpl manager;
  EXPECT_EQ(manager.Initialize(), E_FAIL);
  EXPECT_EQ(Lines(Logger(), LogOperation::Level), LoadedLines(8));
  const auto errors = Lines(Logger(), LogOperation::Error);
  ASSERT_EQ(errors.size(), 1u) << Logger().Dump();
  EXPECT_TRUE(StartsWith(errors[0], "Failed to load class " + kDataModel +
                                        "BaseRemoteApp.  java.lang.NoClassDefFoundError"))
      << errors[0];
  EXPECT_EQ(CountStartingWith(Logger(), "Initialized communication manager."), 0u);
  EXPECT_FALSE(manager.GetMessageClient());
  EXPECT_FALSE(manager.GetJavaVM()->GetClass(classes::kHashMap));
}

TEST_F(JavaStartup, AMethodOfTheWrongSignatureStopsTheTable) {
  AgentSettings settings;
  settings.classPath = kClassPaths + "/wrong-signature";
  WriteSettings(settings);
  CRMICommManagerImpl manager;
  EXPECT_EQ(manager.Initialize(), E_FAIL);
  EXPECT_EQ(Lines(Logger(), LogOperation::Level), LoadedLines(8));
  const auto errors = Lines(Logger(), LogOperation::Error);
  ASSERT_EQ(errors.size(), 1u) << Logger().Dump();
  EXPECT_TRUE(StartsWith(errors[0], "Failed to load class " + kDataModel +
                                        "BaseRemoteApp.  java.lang.NoSuchMethodError"))
      << errors[0];
  EXPECT_NE(errors[0].find("putMetric"), std::string::npos) << errors[0];
  EXPECT_FALSE(manager.GetMessageClient());
}

TEST_F(JavaStartup, ALoggerFactoryThatThrowsStopsStartUp) {
  WriteSettings({});
  ArmFaultsAtStartUp("InstanceLoggerFactory.<init>=java.lang.IllegalStateException:no-log-folder");
  CRMICommManagerImpl manager;
  EXPECT_EQ(manager.Initialize(), E_FAIL);
  const auto errors = Lines(Logger(), LogOperation::Error);
  ASSERT_EQ(errors.size(), 1u) << Logger().Dump();
  EXPECT_TRUE(StartsWith(errors[0],
                         "Failed to Initialize the Message Server Logger.  "
                         "java.lang.IllegalStateException: no-log-folder\r\n\t"))
      << errors[0];
  EXPECT_EQ(Lines(Logger(), LogOperation::Level), LoadedLines(1));
  EXPECT_EQ(CountStartingWith(Logger(), "SUCCESSFULLY"), 0u);
}

TEST_F(JavaStartup, AClientThatThrowsStopsStartUp) {
  WriteSettings({});
  ArmFaultsAtStartUp("DesktopMessageClient.<init>=java.lang.IllegalStateException:no-client");
  CRMICommManagerImpl manager;
  EXPECT_EQ(manager.Initialize(), E_FAIL);
  const auto errors = Lines(Logger(), LogOperation::Error);
  ASSERT_EQ(errors.size(), 1u) << Logger().Dump();
  EXPECT_TRUE(StartsWith(errors[0],
                         "Failed to create a new message client.  "
                         "java.lang.IllegalStateException: no-client"))
      << errors[0];
  EXPECT_EQ(Lines(Logger(), LogOperation::Level), LoadedLines(10));
  EXPECT_FALSE(manager.GetMessageClient());
  EXPECT_EQ(CountStartingWith(Logger(), "Initialized communication manager."), 0u);
}

}  // namespace
}  // namespace tarnix::testing
