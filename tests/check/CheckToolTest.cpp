// tarnix-rmi-check as an operator runs it: a child process reading registry content written
// here (natively a hive file named in the environment it inherits, under Wine Wine's own
// registry). Every run is held to its exit status and the lines it must print, and must
// show neither secret in clear nor change the registry.
#include "fixtures/Secrets.h"
#include "fixtures/TestRegistry.h"
#include "platform/WideText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#ifndef _WIN32
#  include <sys/wait.h>
#endif

#ifdef CHECK_WITH_JVM
#  include "MessageServerProcess.h"
#endif

namespace tarnix::testing {
namespace {

const WCHAR kAgentKey[] = WSTR("Software\\Corvane, Inc.\\CheckTest\\Desktop Agent");
const WCHAR kHostKey[] = WSTR("Software\\Corvane, Inc.\\Corvane Palisade");
const WCHAR kLegacyKey[] = WSTR("Software\\Corvane, Inc.\\Corvane Palisade\\Node Manager");
const WCHAR kNamedKey[] = WSTR("Software\\Tarnix Tests\\Check Server");
const std::string kSeparator = CHECK_FOLDER[0] == '/' ? "/" : "\\";

struct Setting {
  const WCHAR* key;
  const WCHAR* name;
  WString value;
};
using Settings = std::vector<Setting>;

// An agent with every setting in place: its runtime, one jar, its folders and the server
// with the machine's secrets; by default the stand-in runtime and an unreachable server.
Settings Healthy(const std::string& runtime = CHECK_STUB_JRE,
                 const std::string& jars = CHECK_FOLDER + kSeparator + "jars",
                 const std::string& url = "rmi://127.0.0.1:1/M") {
  return {{kAgentKey, WSTR("JrePath"), Utf8ToWide(runtime)},
          {kAgentKey, WSTR("ClassPath"), Utf8ToWide(jars)},
          {kAgentKey, WSTR("LogDirectory"), Utf8ToWide(CHECK_FOLDER)},
          {kAgentKey, WSTR("ConfigDirectory"), Utf8ToWide(CHECK_FOLDER)},
          {kLegacyKey, WSTR("Zelmar Server URL"),
           Utf8ToWide(url) + WSTR("|") + kAuthToken + WSTR("|") + kCertificate}};
}

// The settings with `name` left out, or (with a key) given the value there instead.
[[maybe_unused]] Settings Changed(Settings settings, const WCHAR* name, const WCHAR* key = nullptr,
                                  const std::string& value = "") {
  Settings changed;
  for (Setting& setting : settings) {
    if (WString(setting.name) != name) changed.push_back(std::move(setting));
  }
  if (key) changed.push_back({key, name, Utf8ToWide(value)});
  return changed;
}

std::string FileText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

// The tool's exit status; what it printed on either stream goes to `output` through a file,
// which a shell writes the same way on both systems.
int RunCheck(const std::string& arguments, std::string* output) {
  const std::string printed =
      CHECK_FOLDER + kSeparator + ::testing::UnitTest::GetInstance()->current_test_info()->name();
  const int status = std::system(
      (std::string(CHECK_TOOL) + " --product CheckTest " + arguments + " >" + printed + " 2>&1")
          .c_str());
  *output = FileText(printed);
  output->erase(std::remove(output->begin(), output->end(), '\r'), output->end());
#ifdef _WIN32
  return status;
#else
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
#endif
}

struct Case {
  const char* name;
  Settings settings;
  std::string arguments;
  int status;
  std::vector<std::string> expected;  // each somewhere in the output
};

void Expect(const Case& c) {
  TestRegistry registry;
  for (const WCHAR* key : {kAgentKey, kHostKey, kNamedKey}) {
    registry.Own(HKEY_LOCAL_MACHINE, key);
  }
  for (const Setting& setting : c.settings) {
    registry.SetString(HKEY_LOCAL_MACHINE, setting.key, setting.name, setting.value);
  }
  const std::string hive = FileText(registry.FilePath());
  std::string output;
  const int status = RunCheck(c.arguments, &output);
  // Where the checks of the JVM's own JNI checking pass look.
  std::cout << output;
  EXPECT_EQ(status, c.status) << c.name;
  for (const std::string& line : c.expected) {
    EXPECT_NE(output.find(line), std::string::npos) << c.name << ": no \"" << line << "\"";
  }
  for (const WCHAR* secret : {kAuthToken, kCertificate}) {
    EXPECT_EQ(output.find(WideToUtf8(secret)), std::string::npos) << c.name;
  }
  EXPECT_EQ(FileText(registry.FilePath()), hive) << c.name << ": the registry was written";
}

#ifndef CHECK_WITH_JVM

// The agent's XML configuration, naming the key the server is in.
std::string WriteConfig() {
  const std::string config = CHECK_FOLDER + kSeparator + "config.xml";
  std::ofstream(config) << "<agent><serverConfigRegistry>" << WideToUtf8(kNamedKey)
                        << "</serverConfigRegistry></agent>";
  return config;
}

TEST(CheckTool, ReportsEachCauseWithItsVerdictAndStatus) {
  const Case cases[] = {
      {"healthy",
       Healthy(),
       "",
       0,
       {"PASS  1. product name and keys: product \"CheckTest\", agent key found",
        "PASS  2. Java runtime: from JrePath", "PASS  3. class path: 1 jar(s)",
        "jar 1: " CHECK_FOLDER, "PASS  4. message server: from the legacy value, URL rmi://",
        "second value: present, 12 characters, SHA-256 prefix baca6a99",
        "certificate: present, 76 characters, SHA-256 prefix 4e34fee3",
        "SKIP  5. Java side: not asked", "Result: PASS"}},
      {"class path folder without jars",
       Changed(Healthy(), WSTR("ClassPath"), kAgentKey, CHECK_FOLDER + kSeparator + "no-jars"),
       "",
       1,
       {"FAIL  3. class path: 0 jar(s)", "option: -Djava.class.path=\n", "! no jars"}},
      {"no server configuration, reported as JSON",
       Changed(Healthy(), WSTR("Zelmar Server URL")),
       "--json",
       1,
       {"{\"step\":4,\"name\":\"message-server\",\"verdict\":\"fail\",\"summary\":\"not "
        "found, URL absent, certificate absent",
        "\"passed\":false"}},
      {"server in the key the XML configuration names",
       Changed(Changed(Changed(Healthy(), WSTR("Zelmar Server URL")), WSTR("MessageServerURL"),
                       kNamedKey, "rmi://named/M"),
               WSTR("AdapterCertificate"), kNamedKey, WideToUtf8(kCertificate)),
       "--config " + WriteConfig(),
       0,
       {"PASS  4. message server: from the registry path named by the XML configuration, URL "
        "rmi://named/M",
        "second value: the machine unique id of the agent's system"}},
      {"legacy value without its certificate",
       Changed(Healthy(), WSTR("Zelmar Server URL"), kLegacyKey, "rmi://bare/M"),
       "",
       1,
       {"FAIL  4. message server: from the legacy value, URL rmi://bare/M, certificate absent",
        "! no adapter certificate is configured"}},
      {"stand-in runtime without classes",
       Healthy(),
       "--jvm",
       1,
       {"FAIL  5. Java side: machine created, 0 of 10 classes loaded",
        "! class java/util/HashMap does not load: no Java exception",
        "component error: Failed to load class com/corvane/zelmar/adapters/brixcommon/"
        "communication/rmi/common/InstanceLoggerFactory.\n"}},
      {"bad usage", Healthy(), "--timeout 0", 2, {"Usage: tarnix-rmi-check"}},
  };
  for (const Case& c : cases) Expect(c);
}

#else

TEST(CheckTool, RealJavaMachineFindsTheJarsAndTheServer) {
  hostsim::MessageServerOptions options;
  options.java = CHECK_JAVA_HOME "/bin/java";
  options.classPath = CHECK_SERVER_CLASSPATH;
  hostsim::MessageServerProcess server(options);
  ASSERT_TRUE(server.Running()) << server.Failure();
  const std::string port = std::to_string(server.Port());
  const Case cases[] = {
      {"healthy",
       Healthy(CHECK_JAVA_HOME, CHECK_JAR_DIR, server.Url()),
       "--connect",
       0,
       {"PASS  5. Java side: machine created, 10 of 10 classes loaded",
        "PASS  6. server reachable: the server at 127.0.0.1:" + port + " answers the lookup"}},
      {"method of the wrong signature",
       Healthy(CHECK_JAVA_HOME, CHECK_WRONG_SIGNATURE_DIR, ""),
       "--jvm",
       1,
       {"FAIL  5. Java side: machine created, 9 of 10 classes loaded",
        "alias \"putMetric\": putMetric (Lcom/corvane/zelmar/adapters/brixcommon/datamodel/"
        "Metric;)V does not resolve: java.lang.NoSuchMethodError",
        "component error: Failed to load class"}},
      {"server down",
       Healthy(CHECK_JAVA_HOME, CHECK_JAR_DIR, "rmi://127.0.0.1:1/M"),
       "--connect --timeout 5",
       1,
       {"FAIL  6. server reachable: no connection to 127.0.0.1:1",
        "failed: java.net.ConnectException"}},
  };
  for (const Case& c : cases) Expect(c);
  EXPECT_TRUE(server.Received().empty()) << "a lookup sends no agent message";
  EXPECT_TRUE(server.Stop());
}

#endif

}  // namespace
}  // namespace tarnix::testing
