#include "platform/Win32.h"
#include "platform/WideText.h"

#include <dlfcn.h>

#include <mutex>
#include <string>

namespace {

std::mutex g_dllDirectoryLock;
WString g_dllDirectory;

bool HasSlash(const std::string& path) { return path.find('/') != std::string::npos; }

std::string DllDirectoryCandidate(const std::string& name) {
  std::lock_guard<std::mutex> lock(g_dllDirectoryLock);
  if (g_dllDirectory.empty()) return {};
  std::string directory = tarnix::WideToUtf8(g_dllDirectory);
  if (directory.back() != '/') directory.push_back('/');
  return directory + name;
}

HMODULE Open(const std::string& path) {
  // RTLD_LOCAL keeps one runtime's symbols from answering for another's.
  return static_cast<HMODULE>(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL));
}

}  // namespace

HMODULE LoadLibraryExW(LPCWSTR fileName, HANDLE, DWORD) {
  if (!fileName || !*fileName) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  const std::string path = tarnix::WideToUtf8(fileName);
  HMODULE module = nullptr;
  if (!HasSlash(path)) {
    const std::string candidate = DllDirectoryCandidate(path);
    if (!candidate.empty()) module = Open(candidate);
  }
  if (!module) module = Open(path);
  if (!module) {
    SetLastError(ERROR_MOD_NOT_FOUND);
    return nullptr;
  }
  return module;
}

HMODULE LoadLibraryW(LPCWSTR fileName) { return LoadLibraryExW(fileName, nullptr, 0); }

FARPROC GetProcAddress(HMODULE module, LPCSTR name) {
  if (!module || !name) {
    SetLastError(module ? ERROR_PROC_NOT_FOUND : ERROR_INVALID_HANDLE);
    return nullptr;
  }
  void* symbol = dlsym(module, name);
  if (!symbol) {
    SetLastError(ERROR_PROC_NOT_FOUND);
    return nullptr;
  }
  return reinterpret_cast<FARPROC>(symbol);
}

BOOL FreeLibrary(HMODULE module) {
  if (!module || dlclose(module) != 0) {
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
  }
  return TRUE;
}

BOOL GetModuleHandleExW(DWORD flags, LPCWSTR moduleName, HMODULE* module) {
  if (!module) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
  }
  *module = nullptr;
  std::string path;
  if (flags & GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS) {
    Dl_info info{};
    if (!dladdr(reinterpret_cast<const void*>(moduleName), &info) || !info.dli_fname) {
      SetLastError(ERROR_MOD_NOT_FOUND);
      return FALSE;
    }
    path = info.dli_fname;
  } else if (moduleName) {
    path = tarnix::WideToUtf8(moduleName);
  }
  int mode = RTLD_NOW | RTLD_NOLOAD;
  if (flags & GET_MODULE_HANDLE_EX_FLAG_PIN) mode |= RTLD_NODELETE;
  void* handle = dlopen(path.empty() ? nullptr : path.c_str(), mode);
  if (!handle) {
    SetLastError(ERROR_MOD_NOT_FOUND);
    return FALSE;
  }
  // Windows counts a reference unless told not to; a pinned library needs none.
  if (flags & (GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT | GET_MODULE_HANDLE_EX_FLAG_PIN)) {
    dlclose(handle);
  }
  *module = static_cast<HMODULE>(handle);
  return TRUE;
}

BOOL SetDllDirectoryW(LPCWSTR directory) {
  std::lock_guard<std::mutex> lock(g_dllDirectoryLock);
  g_dllDirectory = directory ? WString(directory) : WString();
  return TRUE;
}

DWORD GetDllDirectoryW(DWORD bufferLength, LPWSTR buffer) {
  std::lock_guard<std::mutex> lock(g_dllDirectoryLock);
  const DWORD length = static_cast<DWORD>(g_dllDirectory.size());
  if (bufferLength <= length || !buffer) {
    if (buffer && bufferLength > 0) buffer[0] = 0;
    return length == 0 ? 0 : length + 1;
  }
  g_dllDirectory.copy(buffer, length);
  buffer[length] = 0;
  return length;
}
