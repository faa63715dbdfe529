// Checks 1 to 4: everything the start-up reads before any Java runs.
#include "CheckText.h"
#include "Checks.h"

#include "common/HostLog.h"
#include "common/ProductName.h"
#include "config/RegistryRead.h"
#include "config/ServerConfig.h"
#include "jni/JavaVM.h"
#include "manager/AgentRegistry.h"
#include "manager/JavaStartup.h"
#include "platform/JavaRuntime.h"
#include "platform/RegKey.h"
#include "platform/ScopedBstr.h"

#include <tuple>

namespace tarnix::check {
namespace {

const char* const kMachineRoot = "HKEY_LOCAL_MACHINE\\";

bool KeyExists(const WCHAR* subkey) {
  return RegKey(HKEY_LOCAL_MACHINE, subkey, kConfigKeyAccess).Valid();
}

std::string Found(bool found) { return found ? "found" : "not found"; }

const char* JreSourceName(JreSource source) {
  switch (source) {
    case JreSource::AgentJrePath: return "JrePath";
    case JreSource::HostJavaHome: return "JavaHome";
    case JreSource::AgentInstallPath: return "AgentInstallPath";
    case JreSource::None: break;
  }
  return "none";
}

const char* ServerSourceName(ServerInfoSource source) {
  switch (source) {
    case ServerInfoSource::LegacyValue: return "legacy value";
    case ServerInfoSource::PolicyUrlAsLegacyValue:
      return "policy key's MessageServerURL, read as a legacy value";
    case ServerInfoSource::XmlNamedKey: return "registry path named by the XML configuration";
    case ServerInfoSource::PolicyKey: return "policy key";
    case ServerInfoSource::None: break;
  }
  return "none";
}

WString TextOf(const ScopedBstr& text) {
  return text.Get() ? WString(text.Get(), SysStringLen(text.Get())) : WString();
}

std::vector<std::string> SplitClassPath(const std::string& classPath) {
  std::vector<std::string> jars;
  size_t start = 0;
  while (start < classPath.size()) {
    size_t end = classPath.find(platform::kClassPathSeparator, start);
    if (end == std::string::npos) end = classPath.size();
    jars.push_back(classPath.substr(start, end - start));
    start = end + 1;
  }
  return jars;
}

// A folder the agent names: its value, and whether it is there. A value that names a
// missing folder fails the check; a missing value fails it only when `required`.
void CheckFolderSetting(StepReport* step, const WCHAR* valueName, bool required) {
  const std::string name = ToUtf8(WString(valueName));
  WString folder;
  const HRESULT read = ReadAgentValue(valueName, &folder);
  if (FAILED(read)) {
    step->facts.emplace_back(name, "not set (" + CodeText(read) + ")");
    if (required) FailStep(step, name + " is not set in the agent key");
    return;
  }
  const bool exists = FolderExists(folder);
  step->facts.emplace_back(name, ToUtf8(folder) + (exists ? " (exists)" : " (missing)"));
  if (!exists) FailStep(step, name + " names a folder that does not exist");
}

}  // namespace

bool FileExists(const WString& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool FolderExists(const WString& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

StepReport CheckProductAndKeys(CheckHost& host) {
  StepReport step = StartedStep(1, "product", "product name and keys");
  const WString agentKey = AgentKeyPath();
  const bool agentKeyFound = KeyExists(agentKey.c_str());
  const bool hostKeyFound = KeyExists(kHostDesktopKeyPath);
  step.facts = {{"product", ToUtf8(GetProductName())},
                {"agent key", kMachineRoot + ToUtf8(agentKey) + " (" + Found(agentKeyFound) + ")"},
                {"host desktop key", kMachineRoot + ToUtf8(WString(kHostDesktopKeyPath)) + " (" +
                                         Found(hostKeyFound) + ")"}};
  step.summary = "product \"" + step.facts[0].second + "\", agent key " + Found(agentKeyFound) +
                 ", host desktop key " + Found(hostKeyFound);
  if (!agentKeyFound) FailStep(&step, "the agent key is missing: is --product the agent's?");
  step.log = host.TakeLines();
  return step;
}

StepReport CheckJavaRuntime(CheckHost& host, Findings* findings) {
  StepReport step = StartedStep(2, "java-runtime", "Java runtime");
  JreSource source = JreSource::None;
  const HRESULT hr =
      GetJrePath(HostLog::AcquiredOnFirstUse(), &findings->runtimeDirectory, &source);
  const WString library = CJavaVM(findings->runtimeDirectory).GetRuntimeLibraryPath();
  const bool exists = FileExists(library);
  step.facts = {{"source", JreSourceName(source)},
                {"runtime directory", ToUtf8(findings->runtimeDirectory)},
                {"library", ToUtf8(library) + (exists ? " (exists)" : " (missing)")}};
  step.summary = std::string("from ") + JreSourceName(source) + ", " + ToUtf8(library) +
                 (exists ? " exists" : " is missing");
  if (FAILED(hr)) FailStep(&step, "no setting names the Java runtime (" + CodeText(hr) + ")");
  if (!exists) FailStep(&step, "the Java runtime library is not there");
  step.log = host.TakeLines();
  return step;
}

StepReport CheckClassPath(CheckHost& host, Findings* findings) {
  StepReport step = StartedStep(3, "class-path", "class path");
  WString folder;
  const HRESULT folderRead = ReadAgentValue(WSTR("ClassPath"), &folder);
  std::ignore = GetClassPath(HostLog::AcquiredOnFirstUse(), &findings->classPath);
  const std::vector<std::string> jars = SplitClassPath(findings->classPath);
  step.facts.emplace_back(
      "folder", SUCCEEDED(folderRead) ? ToUtf8(folder) : "not set (" + CodeText(folderRead) + ")");
  for (size_t i = 0; i < jars.size(); ++i) {
    step.facts.emplace_back("jar " + std::to_string(i + 1), jars[i]);
  }
  step.facts.emplace_back("option", JavaVMOptions(findings->classPath).front());
  step.summary = std::to_string(jars.size()) + " jar(s)";
  if (jars.empty()) FailStep(&step, "no jars in the class path folder");
  CheckFolderSetting(&step, WSTR("LogDirectory"), false);
  CheckFolderSetting(&step, WSTR("ConfigDirectory"), true);
  step.log = host.TakeLines();
  return step;
}

StepReport CheckMessageServer(CheckHost& host, const VARIANT& config, Findings* findings) {
  StepReport step = StartedStep(4, "message-server", "message server");
  ScopedBstr url, serviceValue, certificate;
  ServerInfoSource source = ServerInfoSource::None;
  const LONG hr = LookUpServerInfo(config, url.Receive(), serviceValue.Receive(),
                                   certificate.Receive(), &source);
  const bool fromSystemInfo = host.TakeUniqueIdAsked();
  findings->serverUrl = TextOf(url);
  const WString certificateText = TextOf(certificate);
  step.facts = {{"source", ServerSourceName(source)},
                {"result", CodeText(hr)},
                {"url", ToUtf8(findings->serverUrl)},
                {"second value", fromSystemInfo ? "the machine unique id of the agent's system "
                                                  "information (not available to this tool)"
                                                : DescribeSecret(TextOf(serviceValue))},
                {"certificate", DescribeSecret(certificateText)}};
  const std::string found = source == ServerInfoSource::None
                                ? "not found"
                                : std::string("from the ") + ServerSourceName(source);
  step.summary = found + ", URL " +
                 (findings->serverUrl.empty() ? "absent" : ToUtf8(findings->serverUrl)) +
                 ", certificate " + (certificateText.empty() ? "absent" : "present");
  if (FAILED(hr)) FailStep(&step, "no source holds the message server configuration");
  if (SUCCEEDED(hr) && findings->serverUrl.empty()) FailStep(&step, "the URL is empty");
  if (SUCCEEDED(hr) && certificateText.empty()) {
    FailStep(&step, "no adapter certificate is configured");
  }
  step.log = host.TakeLines();
  return step;
}

}  // namespace tarnix::check
