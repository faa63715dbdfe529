// The six checks, in the order they run. Each runs the component's own code for its part
// of the start-up, with the tool's host standing in for the agent, and reports what that
// code found. None writes to the registry. Run them on the thread that owns the CheckHost.
#pragma once

#include "CheckHost.h"
#include "Report.h"
#include "platform/Win32.h"

#include <memory>
#include <string>

class CJavaVM;

namespace tarnix::check {

// What later checks need from the earlier ones.
struct Findings {
  WString runtimeDirectory;
  std::string classPath;
  WString serverUrl;
  std::unique_ptr<CJavaVM> machine;  // made by the Java check, used by the server check
};

StepReport CheckProductAndKeys(CheckHost& host);
StepReport CheckJavaRuntime(CheckHost& host, Findings* findings);
StepReport CheckClassPath(CheckHost& host, Findings* findings);
// `config` is the agent's XML configuration as GetServerInfo would be given it.
StepReport CheckMessageServer(CheckHost& host, const VARIANT& config, Findings* findings);
StepReport CheckJavaSide(CheckHost& host, Findings* findings);
StepReport CheckServerReachable(CheckHost& host, Findings* findings, int timeoutSeconds);

// Whether a file (not a folder) or a folder is at the path.
bool FileExists(const WString& path);
bool FolderExists(const WString& path);

}  // namespace tarnix::check
