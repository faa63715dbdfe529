// A host of tarnix-rmi in one file, to copy from. It publishes the host's system service
// (the component asks it for the logger and the system information), asks where the
// message server is, registers a callback for the server's answers and sends a start-up
// message and one sample. Every answer and every log line is printed.
//
// Build:  cmake -S . -B build -DCMAKE_PREFIX_PATH=<tarnix-rmi install folder>
// Run:    build/example-host --product=<product>  (the component reads the Java runtime
//         and the message server from the registry, under the product's key:
//         share/doc/tarnix-rmi/integration.md)
#include <tarnix/DataInterfaces.h>
#include <tarnix/DataType.h>
#include <tarnix/HostInterfaces.h>
#include <tarnix/RMICommManager.h>

#include <atomic>
#include <cstdio>

namespace {

// Wide text is wchar_t on Windows and char16_t on Linux; ASCII is enough for a console.
void PrintText(const WCHAR* text) {
  for (; text && *text; ++text) std::putchar(*text < 128 ? static_cast<char>(*text) : '?');
}

// IUnknown for a heap object that answers one interface besides IUnknown.
template <class Interface, const IID& kIid>
class ComObject : public Interface {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, kIid)) return E_NOINTERFACE;
    *object = static_cast<Interface*>(this);
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

 protected:
  virtual ~ComObject() = default;

 private:
  std::atomic<ULONG> references_{1};
};

// The host's log: here, the console. The component names itself in `component`.
class ConsoleLogger : public ComObject<IHostLogger, IID_IHostLogger> {
  HRESULT Print(const char* kind, BSTR component, BSTR message) {
    std::printf("  log %s [", kind);
    PrintText(component);
    std::printf("] ");
    PrintText(message);
    std::printf("\n");
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Reserved3() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reserved4() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reserved5() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reserved6() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reserved7() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reserved8() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE LogError(BSTR c, BSTR m) override { return Print("error", c, m); }
  HRESULT STDMETHODCALLTYPE LogWarning(BSTR c, BSTR m) override { return Print("warning", c, m); }
  HRESULT STDMETHODCALLTYPE LogInfo(BSTR c, BSTR m) override { return Print("info", c, m); }
  HRESULT STDMETHODCALLTYPE LogLevel(BSTR c, LONG, BSTR m) override { return Print("level", c, m); }
};

// The identities of the host's parts, by name; this host has none to give.
class NoIdentities : public ComObject<IHostNamedValues, IID_IHostNamedValues> {
  HRESULT STDMETHODCALLTYPE get_Enumerator(IHostEnumerator** items) override {
    *items = nullptr;
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE get_Item(BSTR, VARIANT* value) override {
    VariantInit(value);
    return E_INVALIDARG;
  }
};

// What the host knows about its machine. Every string out-parameter is a new BSTR that
// the component frees.
class MachineInfo : public ComObject<ISystemInfo, IID_ISystemInfo> {
  static HRESULT Give(const WCHAR* text, BSTR* out) {
    if (!out) return E_POINTER;
    *out = SysAllocString(text);
    return *out ? S_OK : E_OUTOFMEMORY;
  }
  HRESULT STDMETHODCALLTYPE Refresh() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE get_networkInterfaces(SAFEARRAY** adapters) override {
    *adapters = nullptr;  // no adapters to report
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_machineName(BSTR* name) override {
    return Give(WSTR("desk-07"), name);
  }
  HRESULT STDMETHODCALLTYPE Reserved6() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_isDesktop(VARIANT_BOOL* desktop) override {
    *desktop = VARIANT_TRUE;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_FQDN(BSTR* name) override {
    return Give(WSTR("desk-07.corp.example"), name);
  }
  HRESULT STDMETHODCALLTYPE get_totalMemory(LONG* megabytes) override {
    *megabytes = 16384;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_virtualMachineId(BSTR* id) override {
    return Give(WSTR("vm-7"), id);
  }
  HRESULT STDMETHODCALLTYPE get_machineId(BSTR* id) override { return Give(WSTR("machine-7"), id); }
  HRESULT STDMETHODCALLTYPE get_uniqueId(BSTR* id) override { return Give(WSTR("unique-7"), id); }
  HRESULT STDMETHODCALLTYPE get_componentsIdentities(IHostNamedValues** identities) override {
    *identities = new NoIdentities;
    return S_OK;
  }
};

// The system service: the component creates it by class and asks it for interfaces.
class SystemService : public ComObject<IHostSystemService, IID_IHostSystemService> {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (object && IsEqualIID(iid, IID_IHostLogger)) return Hand(new ConsoleLogger, iid, object);
    if (object && IsEqualIID(iid, IID_ISystemInfo)) return Hand(new MachineInfo, iid, object);
    return ComObject::QueryInterface(iid, object);
  }

 private:
  static HRESULT Hand(IUnknown* created, REFIID iid, void** object) {
    const HRESULT hr = created->QueryInterface(iid, object);
    created->Release();
    return hr;
  }
  HRESULT STDMETHODCALLTYPE Reserved3() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reserved4() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reserved5() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reserved6() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetService(REFIID iid, IUnknown** object) override {
    return QueryInterface(iid, reinterpret_cast<void**>(object));
  }
};

class ServiceFactory : public ComObject<IClassFactory, IID_IClassFactory> {
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
    if (outer) return CLASS_E_NOAGGREGATION;
    SystemService* service = new SystemService;
    const HRESULT hr = service->QueryInterface(iid, object);
    service->Release();
    return hr;
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

// The server's answers for this host's key arrive here.
constexpr IID kCallbackIid = {
    0x3E1F7A20, 0x5B8C, 0x4D2A, {0x9E, 0x11, 0x60, 0x2C, 0x7D, 0x45, 0xA8, 0x01}};
class PrintingCallback : public ComObject<IDataDumpCallback, kCallbackIid> {
  HRESULT STDMETHODCALLTYPE OnDataDumped(LONG dataType, BSTR text) override {
    std::printf("  callback for data type %ld: ", static_cast<long>(dataType));
    PrintText(text);
    std::printf("\n");
    return S_OK;
  }
};

// (name, value) pairs; here two machine metrics of the sample.
class Metrics : public ComObject<IHostEnumerator, IID_IHostEnumerator> {
  int next_ = 0;
  HRESULT STDMETHODCALLTYPE Reserved3() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Next(BSTR* name, VARIANT* value) override {
    static const WCHAR* const kNames[] = {WSTR("cpuUsage"), WSTR("memoryUsage")};
    static const double kValues[] = {12.5, 48.0};
    if (next_ == 2) return S_FALSE;
    *name = SysAllocString(kNames[next_]);
    VariantInit(value);
    value->vt = VT_R8;
    value->dblVal = kValues[next_++];
    return S_OK;
  }
};

// A sample of the machine's own metrics, with no user sessions.
class MachineSample : public ComObject<IHostSample, IID_IHostSample> {
  HRESULT STDMETHODCALLTYPE Reserved3() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reserved4() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reserved5() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reserved6() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_time(DATE* time) override {
    *time = 46000.5;  // an OLE date, universal time
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_instances(IHostSampleEnumerator** instances) override {
    *instances = nullptr;  // no sessions
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_metrics(LONG, IHostEnumerator** metrics) override {
    *metrics = new Metrics;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Reserved10() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_collection(BSTR, IHostSampleEnumerator** items) override {
    *items = nullptr;
    return S_OK;
  }
};

void PrintResult(const char* call, LONG result) {
  std::printf("%s -> 0x%08X\n", call, static_cast<unsigned>(result));
}

// The three strings of every manager call, as GetServerInfo hands them over: new BSTRs
// that the host frees.
struct ServerInfo {
  BSTR url = nullptr;
  BSTR second = nullptr;
  BSTR certificate = nullptr;
  ServerInfo() = default;
  ServerInfo(const ServerInfo&) = delete;
  ServerInfo& operator=(const ServerInfo&) = delete;
  ~ServerInfo() {
    SysFreeString(url);
    SysFreeString(second);
    SysFreeString(certificate);
  }
};

LONG FindServer(ServerInfo* server) {
  // No XML configuration here: an empty VARIANT leaves the registry to answer.
  VARIANT config;
  VariantInit(&config);
  const LONG found =
      CRMIConfigLoader::GetServerInfo(config, &server->url, &server->second, &server->certificate);
  PrintResult("CRMIConfigLoader::GetServerInfo", found);
  std::printf("  url=");
  PrintText(server->url);
  std::printf(" second=");
  PrintText(server->second);
  std::printf(" certificate=");
  PrintText(server->certificate);
  std::printf("\n");
  return found;
}

// What the agent does on every collection: hand the data to the component.
void SendData(const ServerInfo& server) {
  CRMICommManager& manager = CRMICommManager::GetInstance();
  IDataDumpCallback* callback = new PrintingCallback;
  PrintResult(
      "RegisterDataDumpCallback",
      manager.RegisterDataDumpCallback(server.url, server.second, server.certificate, callback));
  PrintResult("DumpData(eStartup)",
              manager.DumpData<IUnknown>(server.url, server.second, server.certificate, 0, eStartup,
                                         nullptr));
  IUnknown* sample = new MachineSample;
  PrintResult("DumpData(eSample)",
              manager.DumpData<IUnknown>(server.url, server.second, server.certificate, 0, eSample,
                                         sample));
  sample->Release();
  PrintResult(
      "UnregisterDataDumpCallback",
      manager.UnregisterDataDumpCallback(server.url, server.second, server.certificate, callback));
  callback->Release();
}

}  // namespace

int main() {
  CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  // The component creates the system service by its class whenever it needs a host
  // interface: register the class object before the first call.
  IClassFactory* factory = new ServiceFactory;
  DWORD registration = 0;
  PrintResult("CoRegisterClassObject(host system service)",
              CoRegisterClassObject(CLSID_HostSystemService, factory, CLSCTX_INPROC_SERVER,
                                    REGCLS_MULTIPLEUSE, &registration));
  LONG found;
  {
    ServerInfo server;
    found = FindServer(&server);
    SendData(server);
  }
  CoRevokeClassObject(registration);
  factory->Release();
  CoUninitialize();
  return found >= 0 ? 0 : 1;
}
