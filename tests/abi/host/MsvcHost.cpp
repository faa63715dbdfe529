// A host agent as MSVC builds one: compiled for the MSVC ABI, linked against the
// library's import library, no C runtime. It implements the host's interfaces in its own
// code, registers its system service, and calls every exported member the way such a host
// does, checking each result code, output string and log line. Exits 0 when every check
// held. Run with "--product=<name>": the product's registry keys are this program's own.
#include "HostObjects.h"
#include "HostRegistry.h"
#include "HostRuntime.h"
#include "StubRecord.h"
#include "tarnix/DataType.h"
#include "tarnix/RMICommManager.h"

#include <oleauto.h>

namespace {

using host::Check;
using host::CheckCode;
using host::CheckCount;
using host::CheckPrefix;
using host::CheckText;
using host::Text;

constexpr const WCHAR* kAgentKey = L"Software\\Corvane, Inc.\\TarnixMsvcHost\\Desktop Agent";
constexpr const WCHAR* kLegacyKey = L"Software\\Corvane, Inc.\\Corvane Palisade\\Node Manager";
constexpr const WCHAR* kLegacyValue = L"Zelmar Server URL";
constexpr const WCHAR* kServerKey = L"Software\\TarnixMsvcHost\\Server";

constexpr const WCHAR* kUrl = L"rmi://127.0.0.1:1099/adapter";
constexpr const WCHAR* kCertificate = L"CERTIFICATE-TEXT";
constexpr ULONGLONG kNumber = 0x0123456789ABCDEFull;

// The library and the stand-in Java runtime sit beside this program.
Text g_runtimeHome;

struct Host {
  host::Logger logger;
  host::SystemInfo systemInfo;
  host::SystemService service{&logger, &systemInfo};
  host::ServiceFactory factory{&service};
  host::DataDumpCallback callback;
};

void FindRuntimeHome() {
  static WCHAR path[MAX_PATH];
  const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
  DWORD cut = length;
  while (cut > 0 && path[cut - 1] != L'\\') --cut;
  path[cut] = 0;
  g_runtimeHome.Append(path).Append(L"stub-jre\\");
}

// Everything under this product's names goes; of the shared legacy key only its value.
void CleanRegistry() {
  host::DeleteKey(L"Software\\Corvane, Inc.\\TarnixMsvcHost");
  host::DeleteKey(L"Software\\Policies\\Corvane, Inc.\\TarnixMsvcHost");
  host::DeleteKey(L"Software\\TarnixMsvcHost");
  host::DeleteValue(kLegacyKey, kLegacyValue);
}

StubRecord* RuntimeCounts() {
  const HMODULE runtime = GetModuleHandleW(L"jvm.dll");
  if (!runtime) return nullptr;
  auto counts = reinterpret_cast<StubRecordFunction>(
      reinterpret_cast<void*>(GetProcAddress(runtime, TARNIX_STUB_RECORD_FUNCTION)));
  return counts ? counts() : nullptr;
}

// The library was loaded with this program: loading it started nothing.
void CheckNothingAtLoad(Host& host) {
  Check(GetModuleHandleW(L"tarnix-rmi.dll") != nullptr, "the library is loaded");
  Check(GetModuleHandleW(L"jvm.dll") == nullptr, "no Java runtime is loaded at start");
  CheckCount(host.factory.Created(), 0, "nobody asked for the host's service at load");
}

void CheckCallbacks(Host& host, CRMICommManager& manager) {
  CheckCode(manager.RegisterDataDumpCallback(kUrl, nullptr, kCertificate, &host.callback), S_OK,
            "RegisterDataDumpCallback");
  CheckCount(host.callback.References(), 2, "the registered callback is held once");
  CheckCode(manager.UnregisterDataDumpCallback(kUrl, nullptr, kCertificate, &host.callback), S_OK,
            "UnregisterDataDumpCallback");
  CheckCount(host.callback.References(), 1, "the unregistered callback is released");
  // Kept registered from here on: the library gives it back when it is unloaded.
  CheckCode(manager.RegisterDataDumpCallback(kUrl, L"second", kCertificate, &host.callback), S_OK,
            "RegisterDataDumpCallback again");
  Check(GetModuleHandleW(L"jvm.dll") == nullptr, "callbacks start no Java runtime");
  CheckCount(host.factory.Created(), 0, "callbacks ask nothing of the host");
  CheckCount(host.callback.Calls(), 0, "no answer reached the callback");
}

void CheckFirstDumpData(Host& host, CRMICommManager& manager) {
  host.logger.Clear();
  // The one instance there is: DumpData<IUnknown>.
  IUnknown* data = &host.callback;
  const LONG result = manager.DumpData(kUrl, L"second", kCertificate, kNumber, eStartup, data);
  CheckCode(result, E_FAIL, "the first DumpData, whose Java start-up finds no classes");
  host.logger.CheckCount(5, "the first DumpData logs five lines");
  CheckText(host.logger.Line(0).message,
            Text(L"Using JRE from '").Append(g_runtimeHome.Get()).Append(L"'.").Get(),
            "DumpData log line 1");
  CheckPrefix(host.logger.Line(1).message,
              L"Failed to get the agent's class path.  Error code 0x80070002",
              "DumpData log line 2");
  CheckText(host.logger.Line(2).message,
            L"Failed to load class com/corvane/zelmar/adapters/brixcommon/communication/rmi/"
            L"common/InstanceLoggerFactory.  ",
            "DumpData log line 3");
  CheckPrefix(host.logger.Line(3).message,
              L"Failed to initialize CRMICommManagerImpl in long __cdecl "
              L"CRMICommManagerImpl::SetCurrentServerConfig(const wchar_t *,const wchar_t *,"
              L"const wchar_t *)  Error code 0x80004005",
              "DumpData log line 4");
  CheckPrefix(host.logger.Line(4).message,
              L"Failed to SetCurrentServerConfig in function long __cdecl "
              L"CRMICommManagerImpl::DumpData<struct IUnknown>(const wchar_t *,const wchar_t *,"
              L"const wchar_t *,unsigned __int64,unsigned char,struct IUnknown *)  Error code "
              L"0x80004005",
              "DumpData log line 5");
  CheckCount(host.callback.References(), 2, "DumpData keeps no reference to its data");

  const StubRecord* counts = RuntimeCounts();
  Check(counts != nullptr, "the stand-in Java runtime was loaded");
  if (!counts) return;
  CheckCount(counts->createCalls, 1, "one Java machine was created");
  CheckCount(counts->findClassCalls, 1, "start-up stopped at the first class");
  CheckCount(counts->destroyCalls + counts->attachCalls + counts->detachCalls, 0,
             "the machine was neither destroyed nor asked about threads");
}

// GetServerInfo on a configuration of the caller's, which goes by value: the library works
// on its copy. The outputs are the caller's to free.
class ServerInfoCall {
 public:
  explicit ServerInfoCall(const WCHAR* text) {
    VariantInit(&config_);
    config_.vt = VT_BSTR;
    config_.bstrVal = SysAllocString(text);
    before_ = config_;
  }
  ~ServerInfoCall() {
    SysFreeString(url);
    SysFreeString(serviceValue);
    SysFreeString(certificate);
    VariantClear(&config_);
  }
  LONG Call() {
    const LONG result = CRMIConfigLoader::GetServerInfo(config_, &url, &serviceValue, &certificate);
    Check(config_.vt == before_.vt && config_.bstrVal == before_.bstrVal,
          "the caller's VARIANT is untouched");
    return result;
  }
  const VARIANT& Config() const { return config_; }

  WCHAR* url = nullptr;
  WCHAR* serviceValue = nullptr;
  WCHAR* certificate = nullptr;

 private:
  VARIANT config_;
  VARIANT before_;
};

// The document names the key; the certificate is a multi-string, joined without breaks.
void CheckServerInfoFromDocument(Host& host) {
  host.logger.Clear();
  static const WCHAR kLines[] = L"-----BEGIN-----\0ABCDEF\0-----END-----\0";
  Check(host::SetString(kServerKey, L"MessageServerURL", kUrl) &&
            host::SetValue(kServerKey, L"AdapterCertificate", REG_MULTI_SZ, kLines, sizeof kLines),
        "writing the key the document names");
  ServerInfoCall call(
      L"<agent><serverConfigRegistry>Software\\TarnixMsvcHost\\Server</serverConfigRegistry>"
      L"</agent>");
  const ULONG serviceReferences = host.service.References();
  CheckCode(call.Call(), S_OK, "GetServerInfo through the document");
  CheckText(call.url, kUrl, "url from the named key");
  CheckText(call.serviceValue, host::SystemInfo::kUniqueId, "service value from the host");
  CheckText(call.certificate, L"-----BEGIN-----ABCDEF-----END-----", "joined certificate");
  CheckCount(host.service.References(), serviceReferences, "GetServerInfo keeps no service");
  host.logger.CheckCount(1, "GetServerInfo through the document logs one line");
  CheckPrefix(host.logger.Line(0).message,
              L"Failed to get the message server configuration in function long __cdecl "
              L"CRMIConfigLoader::loadLegancyServerInfo(wchar_t **,wchar_t **,wchar_t **)  "
              L"Error code 0x80070002",
              "document log line");

  VARIANT content;
  VariantInit(&content);
  CheckCode(CRMIConfigLoader::GetConfigContent(call.Config(), &content), S_OK, "GetConfigContent");
  Check(content.vt == VT_BSTR, "GetConfigContent gives text");
  if (content.vt == VT_BSTR) CheckText(content.bstrVal, kServerKey, "GetConfigContent text");
  VariantClear(&content);
}

int Run(Host& host) {
  FindRuntimeHome();
  CleanRegistry();
  Check(host::SetString(kAgentKey, L"JrePath", g_runtimeHome.Get()), "writing JrePath");

  Check(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)), "CoInitializeEx");
  DWORD cookie = 0;
  CheckCode(CoRegisterClassObject(CLSID_HostSystemService, &host.factory, CLSCTX_INPROC_SERVER,
                                  REGCLS_MULTIPLEUSE, &cookie),
            S_OK, "registering the host's system service");

  CheckNothingAtLoad(host);
  CRMICommManager& manager = CRMICommManager::GetInstance();
  Check(&CRMICommManager::GetInstance() == &manager, "GetInstance gives one object");
  CheckCallbacks(host, manager);
  CheckFirstDumpData(host, manager);
  CheckServerInfoFromDocument(host);

  CoRevokeClassObject(cookie);
  CleanRegistry();
  if (host::Failures() == 0) host::Print("every check held\n");
  return host::Failures() == 0 ? 0 : 1;
}

}  // namespace

// The host's objects outlive the checks: the library still holds some of them, and gives
// them back while the process ends.
extern "C" void mainCRTStartup() {
  Host host;
  ExitProcess(static_cast<UINT>(Run(host)));
}
