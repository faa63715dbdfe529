// In-process class objects: those registered at run time with CoRegisterClassObject, and
// the layer's built-in classes, which stand for servers installed on Windows.
#include "platform/ComPtr.h"
#include "platform/RegKey.h"
#include "platform/Win32.h"
#include "tarnix/posix/Dom.h"
#include "Internal.h"

#include <mutex>
#include <vector>

using tarnix::ComPtr;

namespace {

constexpr DWORD kInprocContexts =
    CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER | CLSCTX_LOCAL_SERVER;

struct ClassEntry {
  CLSID clsid;
  ComPtr<IUnknown> object;
  DWORD context;
  DWORD flags;
  DWORD cookie;  // 0 for a built-in class, which cannot be revoked
  bool used;
};

class ClassTable {
 public:
  static ClassTable& Instance() {
    static ClassTable* table = new ClassTable();  // lives past static destruction
    return *table;
  }

  DWORD Add(REFCLSID clsid, IUnknown* object, DWORD context, DWORD flags, bool builtin) {
    std::lock_guard<std::mutex> lock(mutex_);
    const DWORD cookie = builtin ? 0 : nextCookie_++;
    if (builtin) {
      for (auto& entry : entries_) {
        if (entry.cookie == 0 && entry.clsid == clsid) {
          entry.object = ComPtr<IUnknown>(object);
          return 0;
        }
      }
    }
    entries_.push_back({clsid, ComPtr<IUnknown>(object), context, flags, cookie, false});
    return cookie;
  }

  // The reference is dropped outside the lock: its Release may call back into COM.
  bool Remove(DWORD cookie) {
    ComPtr<IUnknown> dropped;
    std::lock_guard<std::mutex> lock(mutex_);
    for (auto it = entries_.begin(); it != entries_.end(); ++it) {
      if (cookie != 0 && it->cookie == cookie) {
        dropped = std::move(it->object);
        entries_.erase(it);
        return true;
      }
    }
    return false;
  }

  // The newest registration that serves the context wins, as a later registration
  // shadows an earlier one on Windows.
  ComPtr<IUnknown> Find(REFCLSID clsid, DWORD context) {
    std::lock_guard<std::mutex> lock(mutex_);
    for (auto it = entries_.rbegin(); it != entries_.rend(); ++it) {
      if (it->clsid != clsid || (it->context & context & kInprocContexts) == 0) continue;
      if (it->flags == REGCLS_SINGLEUSE) {
        if (it->used) continue;
        it->used = true;
      }
      return it->object;
    }
    return nullptr;
  }

 private:
  std::mutex mutex_;
  std::vector<ClassEntry> entries_;
  DWORD nextCookie_ = 1;
};

// ProgIDs of the built-in classes. The registry keys written for them are volatile and go
// with a reload of the hive, as volatile keys go with a reboot on Windows; the classes
// stay installed, so their ProgIDs are still answered from here.
struct BuiltinProgId {
  WString progId;
  CLSID clsid;
};
std::mutex g_progIdsMutex;
std::vector<BuiltinProgId>& BuiltinProgIds() {
  static auto* list = new std::vector<BuiltinProgId>();
  return *list;
}

bool FindBuiltinProgId(LPCOLESTR progId, CLSID* clsid) {
  const WString wanted(progId);
  std::lock_guard<std::mutex> lock(g_progIdsMutex);
  for (const auto& entry : BuiltinProgIds()) {
    if (tarnix::posix::EqualsFolded(entry.progId, wanted)) {
      *clsid = entry.clsid;
      return true;
    }
  }
  return false;
}

// The layer's own classes (the XML DOM), installed before the first lookup as Windows
// has its system classes installed before any program runs.
void EnsureBuiltinClasses() {
  static std::once_flag once;
  std::call_once(once, [] { tarnix::posix::RegisterXmlDomClass(); });
}

thread_local int t_comInitCount = 0;
thread_local DWORD t_comModel = 0;

}  // namespace

HRESULT CoInitialize(LPVOID pvReserved) {
  return CoInitializeEx(pvReserved, COINIT_APARTMENTTHREADED);
}

HRESULT CoInitializeEx(LPVOID pvReserved, DWORD dwCoInit) {
  const DWORD model = dwCoInit & COINIT_APARTMENTTHREADED;
  if (t_comInitCount > 0) {
    if (model != t_comModel) return RPC_E_CHANGED_MODE;
    ++t_comInitCount;
    return S_FALSE;
  }
  t_comModel = model;
  t_comInitCount = 1;
  return S_OK;
}

void CoUninitialize() {
  if (t_comInitCount > 0) --t_comInitCount;
}

HRESULT CoRegisterClassObject(REFCLSID rclsid, LPUNKNOWN pUnk, DWORD dwClsContext, DWORD flags,
                              LPDWORD lpdwRegister) {
  if (!pUnk || !lpdwRegister) return E_INVALIDARG;
  *lpdwRegister = ClassTable::Instance().Add(rclsid, pUnk, dwClsContext, flags, false);
  return S_OK;
}

HRESULT CoRevokeClassObject(DWORD dwRegister) {
  return ClassTable::Instance().Remove(dwRegister) ? S_OK : E_INVALIDARG;
}

HRESULT CoGetClassObject(REFCLSID rclsid, DWORD dwClsContext, LPVOID pvReserved, REFIID riid,
                         LPVOID* ppv) {
  if (!ppv) return E_INVALIDARG;
  *ppv = nullptr;
  EnsureBuiltinClasses();
  ComPtr<IUnknown> object = ClassTable::Instance().Find(rclsid, dwClsContext);
  if (!object) return REGDB_E_CLASSNOTREG;
  return object->QueryInterface(riid, ppv);
}

HRESULT CoCreateInstance(REFCLSID rclsid, LPUNKNOWN pUnkOuter, DWORD dwClsContext, REFIID riid,
                         LPVOID* ppv) {
  if (!ppv) return E_POINTER;
  *ppv = nullptr;
  ComPtr<IClassFactory> factory;
  HRESULT hr =
      CoGetClassObject(rclsid, dwClsContext, nullptr, IID_IClassFactory, factory.ReceiveVoid());
  if (FAILED(hr)) return hr;
  if (!factory) return E_NOINTERFACE;
  return factory->CreateInstance(pUnkOuter, riid, ppv);
}

HRESULT CLSIDFromProgID(LPCOLESTR lpszProgID, LPCLSID lpclsid) {
  if (!lpszProgID || !lpclsid) return E_INVALIDARG;
  *lpclsid = GUID_NULL;
  EnsureBuiltinClasses();
  WString path(lpszProgID);
  path += WSTR("\\CLSID");
  tarnix::RegKey key;
  WString text;
  if (key.Open(HKEY_CLASSES_ROOT, path.c_str(), KEY_QUERY_VALUE) != ERROR_SUCCESS ||
      key.ReadValue(nullptr, &text) != ERROR_SUCCESS ||
      !tarnix::posix::ParseGuid(text.c_str(), lpclsid)) {
    *lpclsid = GUID_NULL;
    return FindBuiltinProgId(lpszProgID, lpclsid) ? S_OK : CO_E_CLASSSTRING;
  }
  return S_OK;
}

namespace tarnix::posix {

HRESULT RegisterBuiltinProgId(LPCOLESTR progId, REFCLSID clsid) {
  if (!progId || !*progId) return E_INVALIDARG;
  {
    std::lock_guard<std::mutex> lock(g_progIdsMutex);
    auto& list = BuiltinProgIds();
    auto it = list.begin();
    while (it != list.end() && !EqualsFolded(it->progId, WString(progId))) ++it;
    if (it == list.end())
      list.push_back({WString(progId), clsid});
    else
      it->clsid = clsid;
  }
  OLECHAR text[40];
  StringFromGUID2(clsid, text, 40);
  WString path(progId);
  path += WSTR("\\CLSID");
  RegKey key;
  LONG result = key.Create(HKEY_CLASSES_ROOT, path.c_str(), KEY_ALL_ACCESS, REG_OPTION_VOLATILE);
  if (result == ERROR_SUCCESS) result = key.WriteValue(nullptr, text);
  return HRESULT_FROM_WIN32(static_cast<uint32_t>(result));
}

HRESULT RegisterBuiltinClass(REFCLSID clsid, LPCOLESTR progId, IClassFactory* factory) {
  if (!factory) return E_INVALIDARG;
  ClassTable::Instance().Add(clsid, factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, true);
  return progId ? RegisterBuiltinProgId(progId, clsid) : S_OK;
}

}  // namespace tarnix::posix
