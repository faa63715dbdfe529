#include "manager/JavaStartup.h"

#include "jni/JavaVM.h"
#include "manager/AgentRegistry.h"
#include "platform/ThreadAnsi.h"
#include "platform/JavaRuntime.h"
#include "platform/UniqueAny.h"

#include <cstdlib>
#include <tuple>

namespace tarnix {
namespace {

bool EndsWith(const WString& text, WCHAR last) { return !text.empty() && text.back() == last; }

// The folder of the pattern's full path, up to and including its last separator.
[[nodiscard]] bool SearchRoot(const WCHAR* pattern, WString* root) {
  WCHAR full[MAX_PATH] = {};
  if (!_wfullpath(full, pattern, MAX_PATH)) return false;
  *root = full;
  const size_t cut = root->find_last_of(WSTR("\\/"));
  root->resize(cut == WString::npos ? 0 : cut + 1);
  return true;
}

void AppendEntry(const WString& path, std::string* classPath) {
  if (!classPath->empty()) classPath->push_back(platform::kClassPathSeparator);
  *classPath += ToThreadAnsi(path);
}

[[nodiscard]] HRESULT GetAgentJrePath(const HostLog& log, HRESULT javaHomeFailure, WString* path) {
  log.Warning(WSTR("Failed to retrieve the Java home path.  Using the Vantage agent's JRE "
                   "instead.  Error code 0x%08lx."),
              javaHomeFailure);
  const HRESULT hr = ReadHostDesktopValue(WSTR("AgentInstallPath"), path);
  if (FAILED(hr)) {
    log.ErrorWithCode(WSTR("Failed to get the agent's installation path."), hr);
    return hr;
  }
  if (!EndsWith(*path, platform::kPathSeparator)) path->push_back(platform::kPathSeparator);
  *path += WSTR("jre");
  return S_OK;
}

// The first setting that names the runtime's home; None, with the failure in *hr, when
// not even the agent's installation path can be read.
JreSource ReadRuntimeHome(const HostLog& log, WString* path, HRESULT* hr) {
  const HRESULT agentSetting = ReadAgentValue(WSTR("JrePath"), path);
  if (SUCCEEDED(agentSetting)) return JreSource::AgentJrePath;
  if (SUCCEEDED(ReadHostDesktopValue(WSTR("JavaHome"), path))) return JreSource::HostJavaHome;
  *hr = GetAgentJrePath(log, agentSetting, path);
  return SUCCEEDED(*hr) ? JreSource::AgentInstallPath : JreSource::None;
}

}  // namespace

HRESULT GetJrePath(const HostLog& log, WString* path, JreSource* source) {
  HRESULT hr = S_OK;
  const JreSource used = ReadRuntimeHome(log, path, &hr);
  if (source) *source = used;
  if (FAILED(hr)) return hr;
  if (!path->empty() && !EndsWith(*path, platform::kPathSeparator)) {
    path->push_back(platform::kPathSeparator);
  }
  log.Info(WSTR("Using JRE from '%s'."), *path);
  return S_OK;
}

HRESULT GetClassPath(const HostLog& log, std::string* classPath) {
  WString folder;
  HRESULT hr = ReadAgentValue(WSTR("ClassPath"), &folder);
  if (SUCCEEDED(hr)) {
    WCHAR pattern[MAX_PATH] = {};
    // A folder too long for a pattern would otherwise search somewhere else entirely.
    if (!PathCombineW(pattern, folder.c_str(), WSTR("*.jar"))) {
      hr = HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER);
    } else {
      std::ignore = AppendJarsOfDirectory(log, pattern, classPath);
      return S_OK;
    }
  }
  log.ErrorWithCode(WSTR("Failed to get the agent's class path."), hr);
  return hr;
}

HRESULT AppendJarsOfDirectory(const HostLog& log, const WCHAR* pattern, std::string* classPath) {
  const WCHAR* search = pattern && *pattern ? pattern : WSTR("*.*");
  WString root;
  WIN32_FIND_DATAW entry = {};
  UniqueFind find;
  if (SearchRoot(search, &root)) {
    find.Reset(FindFirstFileW(search, &entry));
  } else {
    SetLastError(ERROR_INVALID_NAME);
  }
  if (!find) {
    const HRESULT hr = platform::LastErrorResult();
    log.ErrorWithCode(WSTR("Failed to enumerate class path directory '%s'."), hr, search);
    return hr;
  }
  do {
    if (!(entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) {
      AppendEntry(root + entry.cFileName, classPath);
    }
  } while (FindNextFileW(find.Get(), &entry));
  return S_OK;
}

std::vector<std::string> JavaVMOptions(const std::string& classPath) {
  return {"-Djava.class.path=" + classPath, "-Xrs", "-Xmx100M"};
}

LONG CreateJavaMachine(CJavaVM& machine, const HostLog& log, const std::string& classPath) {
  const LONG created = machine.Create(JavaVMOptions(classPath));
  if (created != 0) {
    log.ErrorWithCode(WSTR("Failed to create a Java virtual machine instance."), created);
  }
  return created;
}

bool LoadJavaClass(CJavaVM& machine, const HostLog& log, const char* name, const MethodEntry* table,
                   ULONGLONG count, std::shared_ptr<CJavaClass>* loaded) {
  std::shared_ptr<CJavaClass> javaClass = machine.LoadClass(name, table, count);
  if (!javaClass) {
    const WString failure = machine.TakeException().value_or(WString());
    log.Error(WSTR("Failed to load class %s.  %s"), FromThreadAnsi(name), failure);
    return false;
  }
  if (loaded) *loaded = std::move(javaClass);
  log.Trace(WSTR("Loaded class %s."), FromThreadAnsi(name));
  return true;
}

}  // namespace tarnix
