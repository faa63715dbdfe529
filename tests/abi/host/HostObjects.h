// The host's side of the component's interfaces, written in the host's own code and
// compiled for its ABI: the class object of its system service, the service, the logger
// and system information it hands out, and a data-dump callback. The objects live on the
// host's stack for the whole run and are never freed; their reference counts are there to
// be checked.
#pragma once

#include "tarnix/HostInterfaces.h"

namespace host {

bool SameIid(REFIID left, REFIID right);

template <class Interface>
class Counted : public Interface {
 public:
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override { return --references_; }
  // 1 is the host's own reference.
  ULONG References() const { return references_; }

 protected:
  // Answers IUnknown and `own` with this object.
  HRESULT Answer(REFIID iid, REFIID own, void** object) {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (!SameIid(iid, IID_IUnknown) && !SameIid(iid, own)) return E_NOINTERFACE;
    *object = static_cast<Interface*>(this);
    AddRef();
    return S_OK;
  }

 private:
  ULONG references_ = 1;
};

struct LogLine {
  WCHAR message[640];
};

class Logger : public Counted<IHostLogger> {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return Answer(iid, IID_IHostLogger, object);
  }
  HRESULT STDMETHODCALLTYPE Reserved3() override { return Unexpected(); }
  HRESULT STDMETHODCALLTYPE Reserved4() override { return Unexpected(); }
  HRESULT STDMETHODCALLTYPE Reserved5() override { return Unexpected(); }
  HRESULT STDMETHODCALLTYPE Reserved6() override { return Unexpected(); }
  HRESULT STDMETHODCALLTYPE Reserved7() override { return Unexpected(); }
  HRESULT STDMETHODCALLTYPE Reserved8() override { return Unexpected(); }
  HRESULT STDMETHODCALLTYPE LogError(BSTR component, BSTR message) override {
    return Record(component, message);
  }
  HRESULT STDMETHODCALLTYPE LogWarning(BSTR component, BSTR message) override {
    return Record(component, message);
  }
  HRESULT STDMETHODCALLTYPE LogInfo(BSTR component, BSTR message) override {
    return Record(component, message);
  }
  HRESULT STDMETHODCALLTYPE LogLevel(BSTR component, LONG, BSTR message) override {
    return Record(component, message);
  }

  unsigned Count() const;
  const LogLine& Line(unsigned index) const;
  // Checks that the lines since the last Clear are exactly `count` and prints them if not.
  void CheckCount(unsigned count, const char* what) const;
  void Clear();

 private:
  HRESULT Record(BSTR component, BSTR message);
  HRESULT Unexpected();
};

class SystemInfo : public Counted<ISystemInfo> {
 public:
  static constexpr const WCHAR* kUniqueId = L"unique-42";

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return Answer(iid, IID_ISystemInfo, object);
  }
  HRESULT STDMETHODCALLTYPE Refresh() override { return Unexpected(); }
  HRESULT STDMETHODCALLTYPE get_networkInterfaces(SAFEARRAY**) override { return Unexpected(); }
  HRESULT STDMETHODCALLTYPE get_machineName(BSTR*) override { return Unexpected(); }
  HRESULT STDMETHODCALLTYPE Reserved6() override { return Unexpected(); }
  HRESULT STDMETHODCALLTYPE get_isDesktop(VARIANT_BOOL*) override { return Unexpected(); }
  HRESULT STDMETHODCALLTYPE get_FQDN(BSTR*) override { return Unexpected(); }
  HRESULT STDMETHODCALLTYPE get_totalMemory(LONG*) override { return Unexpected(); }
  HRESULT STDMETHODCALLTYPE get_virtualMachineId(BSTR*) override { return Unexpected(); }
  HRESULT STDMETHODCALLTYPE get_machineId(BSTR*) override { return Unexpected(); }
  HRESULT STDMETHODCALLTYPE get_uniqueId(BSTR* id) override;
  HRESULT STDMETHODCALLTYPE get_componentsIdentities(IHostNamedValues**) override {
    return Unexpected();
  }

 private:
  HRESULT Unexpected();
};

// Hands out the logger and the system information by QueryInterface.
class SystemService : public Counted<IHostSystemService> {
 public:
  SystemService(Logger* logger, SystemInfo* systemInfo)
      : logger_(logger), systemInfo_(systemInfo) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  HRESULT STDMETHODCALLTYPE Reserved3() override { return Unexpected(); }
  HRESULT STDMETHODCALLTYPE Reserved4() override { return Unexpected(); }
  HRESULT STDMETHODCALLTYPE Reserved5() override { return Unexpected(); }
  HRESULT STDMETHODCALLTYPE Reserved6() override { return Unexpected(); }
  HRESULT STDMETHODCALLTYPE GetService(REFIID iid, IUnknown** object) override;

 private:
  HRESULT Unexpected();
  Logger* logger_;
  SystemInfo* systemInfo_;
};

class ServiceFactory : public Counted<IClassFactory> {
 public:
  explicit ServiceFactory(SystemService* service) : service_(service) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return Answer(iid, IID_IClassFactory, object);
  }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override;
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
  // How often the component asked for the service.
  long Created() const { return created_; }

 private:
  SystemService* service_;
  long created_ = 0;
};

// The component knows the callback only as the pointer it is given; the host names its
// interface itself.
inline constexpr IID kDataDumpCallbackIid = {
    0x5B1C0E3A, 0x2F6D, 0x4C1E, {0x9A, 0x41, 0x7E, 0x0B, 0x6C, 0x22, 0x13, 0x58}};

class DataDumpCallback : public Counted<IDataDumpCallback> {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return Answer(iid, kDataDumpCallbackIid, object);
  }
  HRESULT STDMETHODCALLTYPE OnDataDumped(LONG, BSTR) override {
    ++calls_;
    return S_OK;
  }
  long Calls() const { return calls_; }

 private:
  long calls_ = 0;
};

}  // namespace host
