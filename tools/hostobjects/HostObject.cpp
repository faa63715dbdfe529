#include "hostobjects/HostObject.h"

#include <cstdio>

#include "tarnix/DataInterfaces.h"

namespace tarnix::host {
namespace {

std::atomic<HostObjectWatcher*> g_watcher{nullptr};
thread_local int t_innerDepth = 0;

}  // namespace

void WatchHostObjects(HostObjectWatcher* watcher) { g_watcher = watcher; }

HostObjectBase::HostObjectBase(std::string name) : name_(std::move(name)) {
  if (HostObjectWatcher* watcher = g_watcher.load()) watcher->Created(*this);
}

HostObjectBase::~HostObjectBase() = default;

HostObjectBase::InnerWork::InnerWork() { ++t_innerDepth; }
HostObjectBase::InnerWork::~InnerWork() { --t_innerDepth; }

bool HostObjectBase::Watched() { return g_watcher.load() && t_innerDepth == 0; }

HRESULT HostObjectBase::Enter(const std::string& call) {
  HostObjectWatcher* watcher = g_watcher.load();
  return watcher && t_innerDepth == 0 ? watcher->Entering(*this, call) : S_OK;
}

HRESULT HostObjectBase::EnterQuery(REFIID iid) {
  return Watched() ? Enter("QueryInterface(" + InterfaceName(iid) + ")") : S_OK;
}

HRESULT HostObjectBase::Unused(int slot) {
  if (HostObjectWatcher* watcher = g_watcher.load())
    watcher->Misused(*this, "the component called unused slot " + std::to_string(slot));
  return E_NOTIMPL;
}

ULONG HostObjectBase::CountedAddRef() {
  ++addRefs_;
  if (retired_.load()) {
    if (HostObjectWatcher* watcher = g_watcher.load())
      watcher->Misused(*this, "referenced again after its last reference was released");
  }
  return ++refs_;
}

ULONG HostObjectBase::CountedRelease() {
  ++releases_;
  ULONG before = refs_.load();
  do {
    if (before == 0) {
      if (HostObjectWatcher* watcher = g_watcher.load())
        watcher->Misused(*this, "released more often than it was referenced");
      return 0;
    }
  } while (!refs_.compare_exchange_weak(before, before - 1));
  // An object referenced again after its retirement (a misuse already shown) retires once.
  if (before == 1 && !retired_.exchange(true)) {
    HostObjectWatcher* watcher = g_watcher.load();
    if (!watcher || !watcher->Retired(*this)) delete this;
  }
  return before - 1;
}

std::string InterfaceName(REFIID iid) {
  static const struct {
    const IID* iid;
    const char* name;
  } known[] = {
      {&IID_IUnknown, "IUnknown"},
      {&IID_IClassFactory, "IClassFactory"},
      {&IID_IHostSystemService, "IHostSystemService"},
      {&IID_IHostLogger, "IHostLogger"},
      {&IID_ISystemInfo, "ISystemInfo"},
      {&IID_IHostActionExecutor, "IHostActionExecutor"},
      {&IID_IHostAuxiliaryService, "IHostSessionSource"},
      {&IID_IHostNamedValues, "IHostNamedValues"},
      {&IID_IHostSample, "IHostSample"},
      {&IID_IHostUserSession, "IHostUserSession"},
      {&IID_IHostEnumerator, "IHostEnumerator"},
  };
  for (const auto& entry : known) {
    if (IsEqualIID(iid, *entry.iid)) return entry.name;
  }
  char text[40];
  std::snprintf(text, sizeof text, "{%08lX-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                static_cast<unsigned long>(iid.Data1), iid.Data2, iid.Data3, iid.Data4[0],
                iid.Data4[1], iid.Data4[2], iid.Data4[3], iid.Data4[4], iid.Data4[5], iid.Data4[6],
                iid.Data4[7]);
  return text;
}

}  // namespace tarnix::host
