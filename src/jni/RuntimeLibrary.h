// The Java runtime library, loaded by full path with its own folder as the DLL search
// directory (the runtime's dependencies sit there), and the machine's entry point bound
// to exactly that module.
#pragma once

#include "platform/Win32.h"

#include <jni.h>

namespace tarnix {

using CreateJavaVMFunction = jint(JNICALL*)(JavaVM** vm, void** env, void* args);

class RuntimeLibrary {
 public:
  RuntimeLibrary() = default;
  ~RuntimeLibrary() { Free(); }
  RuntimeLibrary(const RuntimeLibrary&) = delete;
  RuntimeLibrary& operator=(const RuntimeLibrary&) = delete;

  // S_OK, or the loader's last error as an HRESULT. The DLL search directory is the
  // caller's again when this returns.
  [[nodiscard]] HRESULT Load(const WString& path, const WString& dllDirectory);
  // JNI_CreateJavaVM of the loaded module; null (last error set) when it lacks one.
  CreateJavaVMFunction GetCreateJavaVM() const;
  void Free();
  // Keeps the library mapped until the process ends, whatever frees it later.
  void Pin() const;

  HMODULE Get() const { return module_; }

 private:
  HMODULE module_ = nullptr;
};

// Sets the DLL search directory and puts back whatever was set before.
class ScopedDllDirectory {
 public:
  explicit ScopedDllDirectory(const WString& directory);
  ~ScopedDllDirectory();
  ScopedDllDirectory(const ScopedDllDirectory&) = delete;
  ScopedDllDirectory& operator=(const ScopedDllDirectory&) = delete;

 private:
  WString previous_;
  bool hadPrevious_ = false;
};

}  // namespace tarnix
