// Finding the pieces the Java side starts from: the runtime, the class path and the
// machine's options, and loading the component's classes with their method tables.
#pragma once

#include "common/HostLog.h"
#include "jni/JavaClass.h"
#include "platform/Win32.h"

#include <memory>
#include <string>
#include <vector>

class CJavaVM;

namespace tarnix {

// The setting the runtime's home came from; None when none could be read.
enum class JreSource { None, AgentJrePath, HostJavaHome, AgentInstallPath };

// The runtime's home, ending with the path separator: the agent's own setting, else the
// host desktop's Java home, else the "jre" folder of the host agent's installation. The
// caller goes on with whatever this produced, even an empty text. `source`, when given,
// names the setting used.
[[nodiscard]] HRESULT GetJrePath(const HostLog& log, WString* path, JreSource* source = nullptr);

// Every jar of the agent's class-path folder, joined with the platform's separator.
[[nodiscard]] HRESULT GetClassPath(const HostLog& log, std::string* classPath);

// Appends each file the pattern finds (folders left out), in the order the file system
// lists them. A null or empty pattern lists every file of the current folder.
[[nodiscard]] HRESULT AppendJarsOfDirectory(const HostLog& log, const WCHAR* pattern,
                                            std::string* classPath);

// The machine's options; nothing else is ever passed.
std::vector<std::string> JavaVMOptions(const std::string& classPath);

// Creates the machine with exactly those options; a failure is logged with its code (the
// JNI code, or the HRESULT of a runtime library that did not load) and returned.
[[nodiscard]] LONG CreateJavaMachine(CJavaVM& machine, const HostLog& log,
                                     const std::string& classPath);

// Loads a class with its method table into the machine's cache; on failure the Java
// exception is logged and cleared.
[[nodiscard]] bool LoadJavaClass(CJavaVM& machine, const HostLog& log, const char* name,
                                 const MethodEntry* table, ULONGLONG count,
                                 std::shared_ptr<CJavaClass>* loaded = nullptr);

}  // namespace tarnix
