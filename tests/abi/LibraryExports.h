// The built library's exports as a host finds them: the names its compiler gives the
// members, and the members as functions taking `this` first, as both ABIs pass it.
#pragma once

#include "platform/WideText.h"
#include "tarnix/HostInterfaces.h"

#include <algorithm>
#include <string>

namespace tarnix::testing {

#ifdef _WIN32
// As MSVC decorates them; the host is built with MSVC.
inline const char* const kGetInstance = "?GetInstance@CRMICommManager@@SAAEAV1@XZ";
inline const char* const kDumpData =
    "??$DumpData@UIUnknown@@@CRMICommManager@@QEAAJPEB_W00_KEPEAUIUnknown@@@Z";
inline const char* const kRegister =
    "?RegisterDataDumpCallback@CRMICommManager@@QEAAJPEB_W00PEAUIDataDumpCallback@@@Z";
inline const char* const kUnregister =
    "?UnregisterDataDumpCallback@CRMICommManager@@QEAAJPEB_W00PEAUIDataDumpCallback@@@Z";
inline const char* const kGetServerInfo =
    "?GetServerInfo@CRMIConfigLoader@@SAJUtagVARIANT@@PEAPEA_W11@Z";
inline const char* const kGetConfigContent =
    "?GetConfigContent@CRMIConfigLoader@@SAJUtagVARIANT@@PEAU2@@Z";
#else
inline const char* const kGetInstance = "_ZN15CRMICommManager11GetInstanceEv";
inline const char* const kDumpData = "_ZN15CRMICommManager8DumpDataI8IUnknownEEiPKDsS3_S3_mhPT_";
inline const char* const kRegister =
    "_ZN15CRMICommManager24RegisterDataDumpCallbackEPKDsS1_S1_P17IDataDumpCallback";
inline const char* const kUnregister =
    "_ZN15CRMICommManager26UnregisterDataDumpCallbackEPKDsS1_S1_P17IDataDumpCallback";
inline const char* const kGetServerInfo =
    "_ZN16CRMIConfigLoader13GetServerInfoE10tagVARIANTPPDsS2_S2_";
inline const char* const kGetConfigContent =
    "_ZN16CRMIConfigLoader16GetConfigContentE10tagVARIANTPS0_";
#endif

using GetInstanceFunction = void* (*)();
using DumpDataFunction = LONG (*)(void*, const WCHAR*, const WCHAR*, const WCHAR*, ULONGLONG,
                                  unsigned char, IUnknown*);
using CallbackFunction = LONG (*)(void*, const WCHAR*, const WCHAR*, const WCHAR*,
                                  IDataDumpCallback*);

// A build path as the component's platform spells it.
inline WString NativePath(std::string path) {
#ifdef _WIN32
  std::replace(path.begin(), path.end(), '/', '\\');
  path = "Z:" + path;
#endif
  return Utf8ToWide(path);
}

// Frees a module on every way out of a test.
class Module {
 public:
  explicit Module(const WString& path) : handle_(LoadLibraryW(path.c_str())) {}
  ~Module() { Free(); }
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;
  HMODULE Get() const { return handle_; }
  bool Free() {
    const bool freed = handle_ && FreeLibrary(handle_);
    handle_ = nullptr;
    return freed;
  }

 private:
  HMODULE handle_;
};

template <class Function>
Function Find(HMODULE library, const char* name) {
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

}  // namespace tarnix::testing
