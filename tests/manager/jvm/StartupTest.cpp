// The Java start-up on the real JVM, from the settings in the registry. A JVM can be made
// once per process: each test here runs in a process of its own.
#include "JvmHost.h"

#include "convert/ClassTable.h"
#include "jni/JavaVM.h"
#include "manager/CommManagerImpl.h"
#include "manager/ResultCodes.h"
#include "tarnix/DataType.h"

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

class JavaStartup : public JvmHostTest {
 protected:
  // Starts Java and expects it up, with the runtime found at `runtime`.
  void ExpectStarted(CRMICommManagerImpl& manager, const std::string& runtime) {
    ASSERT_EQ(manager.Initialize(), S_OK) << Logger().Dump();
    EXPECT_TRUE(Logger().Messages(LogOperation::Error).empty()) << Logger().Dump();
    EXPECT_EQ(Lines(Logger(), LogOperation::Info),
              (std::vector<std::string>{"Using JRE from '" + runtime + "'.",
                                        "SUCCESSFULLY initialized the Message Logger.",
                                        "Initialized communication manager."}));
    EXPECT_EQ(Lines(Logger(), LogOperation::Level), LoadedLines(10));
    ASSERT_TRUE(manager.GetMessageClient());
    EXPECT_EQ(U(manager.GetJavaVM()->GetRuntimeLibraryPath()), runtime + "lib/server/libjvm.so");
  }
};

TEST_F(JavaStartup, FromTheAgentsRuntimeAndJars) {
  WriteSettings({});
  CRMICommManagerImpl manager;
  ExpectStarted(manager, kJavaHome + "/");
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

TEST_F(JavaStartup, WithoutALogFolderTheJavaLoggerIsLeftOut) {
  AgentSettings settings;
  settings.logDirectory.reset();
  WriteSettings(settings);
  CRMICommManagerImpl manager;
  ExpectStarted(manager, kJavaHome + "/");
  EXPECT_EQ(
      Lines(Logger(), LogOperation::Warning),
      std::vector<std::string>{"Failed to retrieve the log foler path.    Error code 0x80070002."});
  EXPECT_EQ(RawJava().Calls(), std::vector<std::string>{"DesktopMessageClient()"});
}

// A start-up that fails: the class-path folder it finds (under the broken ones; null: the
// stand-in jars) or the fault armed in it, the error lines it must log, in order, the classes
// loaded before it stopped, and a text the last line holds.
struct Failure {
  const char* name;
  const char* folder;
  const char* fault;
  std::vector<std::string> errors;
  size_t loaded;
  const char* alsoInLastLine;
};

const Failure kFailures[] = {
    // A folder without jars is a search that finds nothing, which is logged.
    {"EmptyClassPath",
     "empty",
     "",
     {"Failed to enumerate class path directory '" + kClassPaths +
          "/empty/*.jar'.  Error code 0x80070002",
      std::string("Failed to load class ") + classes::kInstanceLoggerFactory +
          ".  java.lang.NoClassDefFoundError"},
     0,
     ""},
    {"MissingClass",
     "missing-class",
     "",
     {"Failed to load class " + kDataModel + "BaseRemoteApp.  java.lang.NoClassDefFoundError"},
     8,
     ""},
    {"WrongSignature",
     "wrong-signature",
     "",
     {"Failed to load class " + kDataModel + "BaseRemoteApp.  java.lang.NoSuchMethodError"},
     8,
     "putMetric"},
    {"LoggerFactoryThrows",
     nullptr,
     "InstanceLoggerFactory.<init>=java.lang.IllegalStateException:no-log-folder",
     {"Failed to Initialize the Message Server Logger.  "
      "java.lang.IllegalStateException: no-log-folder\r\n\t"},
     1,
     ""},
    {"ClientThrows",
     nullptr,
     "DesktopMessageClient.<init>=java.lang.IllegalStateException:no-client",
     {"Failed to create a new message client.  java.lang.IllegalStateException: no-client"},
     10,
     ""},
};

class FailedStartup : public JavaStartup, public ::testing::WithParamInterface<Failure> {};

TEST_P(FailedStartup, LogsWhereItStoppedAndIsNotTriedAgain) {
  const Failure& failure = GetParam();
  AgentSettings settings;
  if (failure.folder) settings.classPath = kClassPaths + "/" + failure.folder;
  WriteSettings(settings);
  if (*failure.fault) ArmFaultsAtStartUp(failure.fault);
  CRMICommManagerImpl manager;
  EXPECT_EQ(manager.Initialize(), E_FAIL);
  const auto errors = ExpectErrors(Logger(), failure.errors);
  EXPECT_NE(errors.back().find(failure.alsoInLastLine), std::string::npos) << errors.back();
  EXPECT_EQ(Lines(Logger(), LogOperation::Level), LoadedLines(failure.loaded));
  EXPECT_EQ(CountStartingWith(Logger(), "Initialized communication manager."), 0u);
  EXPECT_FALSE(manager.GetMessageClient());
  EXPECT_EQ(static_cast<bool>(manager.GetJavaVM()->GetClass(classes::kHashMap)),
            failure.loaded == 10);

  // One attempt per manager, also after a failure.
  Logger().Clear();
  EXPECT_EQ(manager.Initialize(), S_OK);
  EXPECT_EQ(Logger().Count(), 0u);
  EXPECT_FALSE(manager.GetMessageClient());
  // Left with a machine but no client, the manager neither pushes nor sends to it. (A null
  // configuration is the one it already has, so the send is not stopped by the push.)
  DescribeMachine();
  EXPECT_EQ(manager.SetCurrentServerConfig(WSTR("url"), nullptr, nullptr), kJavaNotRunning);
  EXPECT_EQ(manager.DumpData(nullptr, nullptr, nullptr, 0, eStartup, nullptr), kJavaNotRunning);
  EXPECT_EQ(manager.Teardown(), S_OK);  // with no client to dispose of
}

INSTANTIATE_TEST_SUITE_P(Each, FailedStartup, ::testing::ValuesIn(kFailures),
                         [](const ::testing::TestParamInfo<Failure>& info) {
                           return std::string(info.param.name);
                         });

}  // namespace
}  // namespace tarnix::testing
