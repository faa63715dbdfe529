#include "ManagerTestSupport.h"

#include "common/ErrorText.h"
#include "fixtures/HostTest.h"
#include "fixtures/TestRegistry.h"
#include "manager/AgentRegistry.h"
#include "manager/JavaStartup.h"
#include "platform/JavaRuntime.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <optional>

namespace tarnix::testing {
namespace {

namespace fs = std::filesystem;

const HRESULT kMissingValue = HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);

// The runtime settings of the agent and of the host desktop; unset ones are left out.
struct RuntimeSettings {
  std::optional<WString> jrePath, javaHome, agentInstallPath;
  DWORD jrePathType = REG_SZ;
};

void Write(TestRegistry& registry, const RuntimeSettings& settings) {
  registry.Own(HKEY_LOCAL_MACHINE, AgentKeyPath());
  registry.Own(HKEY_LOCAL_MACHINE, kHostDesktopKeyPath);
  registry.CreateKey(HKEY_LOCAL_MACHINE, AgentKeyPath());
  registry.CreateKey(HKEY_LOCAL_MACHINE, kHostDesktopKeyPath);
  if (settings.jrePath) {
    registry.SetString(HKEY_LOCAL_MACHINE, AgentKeyPath(), W("JrePath"), *settings.jrePath,
                       settings.jrePathType);
  }
  if (settings.javaHome) {
    registry.SetString(HKEY_LOCAL_MACHINE, kHostDesktopKeyPath, W("JavaHome"), *settings.javaHome);
  }
  if (settings.agentInstallPath) {
    registry.SetString(HKEY_LOCAL_MACHINE, kHostDesktopKeyPath, W("AgentInstallPath"),
                       *settings.agentInstallPath);
  }
}

const WString kSeparator(1, platform::kPathSeparator);

class JavaPathsTest : public HostTest {
 protected:
  HRESULT JrePath(const RuntimeSettings& settings, WString* path) {
    TestRegistry registry;
    Write(registry, settings);
    Logger().Clear();
    path->clear();
    source_ = JreSource::AgentJrePath;
    return GetJrePath(LogTo(Logger()), path, &source_);
  }
  JreSource source_ = JreSource::None;

  // A fresh folder of its own under the temporary folder, removed again at the end.
  fs::path MakeFolder() {
    static std::atomic<int> counter{0};
    const fs::path folder =
        fs::temp_directory_path() / ("tarnix-classpath-" + std::to_string(GetCurrentProcessId()) +
                                     "-" + std::to_string(++counter));
    fs::create_directories(folder);
    folders_.push_back(folder);
    return folder;
  }
  void TearDown() override {
    std::error_code ignored;
    for (const fs::path& folder : folders_) fs::remove_all(folder, ignored);
    HostTest::TearDown();
  }

  HRESULT ClassPathOf(const WString& folder, std::string* classPath) {
    TestRegistry registry;
    registry.Own(HKEY_LOCAL_MACHINE, AgentKeyPath());
    registry.SetString(HKEY_LOCAL_MACHINE, AgentKeyPath(), W("ClassPath"), folder);
    Logger().Clear();
    classPath->clear();
    return GetClassPath(LogTo(Logger()), classPath);
  }

 private:
  std::vector<fs::path> folders_;
};

TEST_F(JavaPathsTest, RuntimeComesFromTheFirstSettingThatReads) {
  const WString java = W("Java");
  WString path;

  EXPECT_EQ(JrePath({java, W("Home"), W("Agent")}, &path), S_OK);
  EXPECT_EQ(path, java + kSeparator);
  EXPECT_EQ(source_, JreSource::AgentJrePath);
  EXPECT_EQ(Lines(Logger(), LogOperation::Info),
            std::vector<std::string>{"Using JRE from '" + U(java + kSeparator) + "'."});

  // Already ending in a separator, and not expanded when stored as expandable text.
  RuntimeSettings expandable{W("%JAVA%") + kSeparator, std::nullopt, std::nullopt, REG_EXPAND_SZ};
  EXPECT_EQ(JrePath(expandable, &path), S_OK);
  EXPECT_EQ(path, W("%JAVA%") + kSeparator);

  // A setting of the wrong type counts as missing.
  RuntimeSettings wrongType{W("ignored"), W("Home"), std::nullopt, REG_BINARY};
  EXPECT_EQ(JrePath(wrongType, &path), S_OK);
  EXPECT_EQ(path, W("Home") + kSeparator);
  EXPECT_EQ(source_, JreSource::HostJavaHome);
  EXPECT_EQ(Logger().Messages(LogOperation::Warning).size(), 0u);

  EXPECT_EQ(JrePath({std::nullopt, std::nullopt, W("Agent")}, &path), S_OK);
  EXPECT_EQ(path, W("Agent") + kSeparator + W("jre") + kSeparator);
  EXPECT_EQ(source_, JreSource::AgentInstallPath);
  EXPECT_EQ(Lines(Logger(), LogOperation::Warning),
            std::vector<std::string>{"Failed to retrieve the Java home path.  Using the Vantage "
                                     "agent's JRE instead.  Error code 0x80070002."});
  EXPECT_EQ(JrePath({std::nullopt, std::nullopt, W("Agent") + kSeparator}, &path), S_OK);
  EXPECT_EQ(path, W("Agent") + kSeparator + W("jre") + kSeparator);

  EXPECT_EQ(JrePath({}, &path), kMissingValue);
  EXPECT_TRUE(path.empty());
  EXPECT_EQ(source_, JreSource::None);
  EXPECT_EQ(Lines(Logger(), LogOperation::Error),
            std::vector<std::string>{"Failed to get the agent's installation path." +
                                     U(ResultCodeSuffix(kMissingValue))});
  EXPECT_TRUE(Logger().Messages(LogOperation::Info).empty());
}

TEST_F(JavaPathsTest, ClassPathIsEveryJarOfTheFolderInListingOrder) {
  const fs::path folder = MakeFolder();
  for (const char* name : {"b.jar", "a.jar", "notes.txt", "c.jar"}) std::ofstream(folder / name);
  fs::create_directory(folder / "nested.jar");
  std::string expected;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    if (entry.is_directory() || entry.path().extension() != ".jar") continue;
    if (!expected.empty()) expected += platform::kClassPathSeparator;
    expected += entry.path().u8string();
  }

  std::string classPath;
  EXPECT_EQ(ClassPathOf(W(folder.u8string()), &classPath), S_OK);
  EXPECT_EQ(classPath, expected);
  EXPECT_EQ(Logger().Count(), 0u);
  EXPECT_EQ(JavaVMOptions(classPath),
            (std::vector<std::string>{"-Djava.class.path=" + expected, "-Xrs", "-Xmx100M"}));

  // More jars go after a separator.
  const fs::path more = MakeFolder();
  std::ofstream(more / "d.jar");
  const WString pattern = W((more / "*.jar").u8string());
  EXPECT_EQ(AppendJarsOfDirectory(LogTo(Logger()), pattern.c_str(), &classPath), S_OK);
  EXPECT_EQ(classPath, expected + platform::kClassPathSeparator + (more / "d.jar").u8string());

  EXPECT_EQ(ClassPathOf(W(MakeFolder().u8string()), &classPath), S_OK);
  EXPECT_EQ(classPath, "");
  EXPECT_EQ(JavaVMOptions(classPath).front(), "-Djava.class.path=");

  // Without the setting it stays empty, and that is logged.
  TestRegistry unset;
  Write(unset, {});
  Logger().Clear();
  EXPECT_EQ(GetClassPath(LogTo(Logger()), &classPath), kMissingValue);
  EXPECT_EQ(classPath, "");
  EXPECT_EQ(Lines(Logger(), LogOperation::Error),
            std::vector<std::string>{"Failed to get the agent's class path." +
                                     U(ResultCodeSuffix(kMissingValue))});
}

}  // namespace
}  // namespace tarnix::testing
