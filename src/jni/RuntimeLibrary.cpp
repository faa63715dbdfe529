#include "jni/RuntimeLibrary.h"

#include <vector>

namespace tarnix {

ScopedDllDirectory::ScopedDllDirectory(const WString& directory) {
  // The host may have a search directory of its own; it gets it back afterwards.
  const DWORD needed = GetDllDirectoryW(0, nullptr);
  if (needed > 0) {
    std::vector<WCHAR> buffer(needed + 1);
    const DWORD length = GetDllDirectoryW(static_cast<DWORD>(buffer.size()), buffer.data());
    if (length > 0 && length < buffer.size()) {
      previous_.assign(buffer.data(), length);
      hadPrevious_ = true;
    }
  }
  SetDllDirectoryW(directory.c_str());
}

ScopedDllDirectory::~ScopedDllDirectory() {
  const DWORD error = GetLastError();  // the load's error is the caller's answer
  SetDllDirectoryW(hadPrevious_ ? previous_.c_str() : nullptr);
  SetLastError(error);
}

HRESULT RuntimeLibrary::Load(const WString& path, const WString& dllDirectory) {
  Free();
  {
    ScopedDllDirectory searchDirectory(dllDirectory);
    module_ = LoadLibraryW(path.c_str());
  }
  return module_ ? S_OK : platform::LastErrorResult();
}

CreateJavaVMFunction RuntimeLibrary::GetCreateJavaVM() const {
  if (!module_) return nullptr;
  // Through void(*)(), the one function type every other converts to without a warning.
  auto entry = reinterpret_cast<void (*)()>(GetProcAddress(module_, "JNI_CreateJavaVM"));
  return reinterpret_cast<CreateJavaVMFunction>(entry);
}

void RuntimeLibrary::Pin() const {
  const CreateJavaVMFunction inside = GetCreateJavaVM();
  if (!inside) return;
  HMODULE pinned = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                     reinterpret_cast<LPCWSTR>(inside), &pinned);
}

void RuntimeLibrary::Free() {
  if (module_) {
    FreeLibrary(module_);
    module_ = nullptr;
  }
}

}  // namespace tarnix
