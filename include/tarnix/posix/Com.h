// COM basics for the POSIX build: IUnknown, IClassFactory and in-process class objects.
// There is no apartment and no marshalling here; every object lives in this process and
// is called directly, which is all an in-process component ever sees on Windows too.
#pragma once

#include "tarnix/posix/Types.h"

#define interface struct
#define STDMETHOD(method) virtual HRESULT STDMETHODCALLTYPE method
#define STDMETHOD_(type, method) virtual type STDMETHODCALLTYPE method
#define STDMETHODIMP HRESULT STDMETHODCALLTYPE
#define STDMETHODIMP_(type) type STDMETHODCALLTYPE
#define STDAPI HRESULT STDAPICALLTYPE
#define STDAPI_(type) type STDAPICALLTYPE
#define PURE = 0

#define CO_E_NOTINITIALIZED ((HRESULT)0x800401F0)
#define CO_E_OBJNOTREG ((HRESULT)0x800401FB)
#define CO_E_IIDSTRING ((HRESULT)0x80040004)
#define RPC_E_CHANGED_MODE ((HRESULT)0x80010106)

struct IUnknown {
  virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppvObject) = 0;
  virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
  virtual ULONG STDMETHODCALLTYPE Release() = 0;
};
typedef IUnknown* LPUNKNOWN;

struct IClassFactory : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* pUnkOuter, REFIID riid,
                                                   void** ppvObject) = 0;
  virtual HRESULT STDMETHODCALLTYPE LockServer(BOOL fLock) = 0;
};
typedef IClassFactory* LPCLASSFACTORY;

extern const IID IID_IUnknown;
extern const IID IID_IClassFactory;
extern const GUID GUID_NULL;
#define IID_NULL GUID_NULL
#define CLSID_NULL GUID_NULL

enum tagCLSCTX {
  CLSCTX_INPROC_SERVER = 0x1,
  CLSCTX_INPROC_HANDLER = 0x2,
  CLSCTX_LOCAL_SERVER = 0x4,
  CLSCTX_INPROC_SERVER16 = 0x8,
  CLSCTX_REMOTE_SERVER = 0x10,
};
typedef tagCLSCTX CLSCTX;
#define CLSCTX_INPROC (CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER)
#define CLSCTX_SERVER (CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER)
#define CLSCTX_ALL \
  (CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER)

enum tagREGCLS {
  REGCLS_SINGLEUSE = 0,
  REGCLS_MULTIPLEUSE = 1,
  REGCLS_MULTI_SEPARATE = 2,
  REGCLS_SUSPENDED = 4,
  REGCLS_SURROGATE = 8,
};
typedef tagREGCLS REGCLS;

enum tagCOINIT {
  COINIT_MULTITHREADED = 0x0,
  COINIT_APARTMENTTHREADED = 0x2,
  COINIT_DISABLE_OLE1DDE = 0x4,
  COINIT_SPEED_OVER_MEMORY = 0x8,
};
typedef tagCOINIT COINIT;

// Apartments do not exist here: initialisation only counts, so that a caller pairing
// CoInitializeEx with CoUninitialize sees the answers Windows would give (S_OK first,
// S_FALSE when already initialised on the thread).
HRESULT CoInitialize(LPVOID pvReserved);
HRESULT CoInitializeEx(LPVOID pvReserved, DWORD dwCoInit);
void CoUninitialize();

HRESULT CoRegisterClassObject(REFCLSID rclsid, LPUNKNOWN pUnk, DWORD dwClsContext, DWORD flags,
                              LPDWORD lpdwRegister);
HRESULT CoRevokeClassObject(DWORD dwRegister);
HRESULT CoGetClassObject(REFCLSID rclsid, DWORD dwClsContext, LPVOID pvReserved, REFIID riid,
                         LPVOID* ppv);
HRESULT CoCreateInstance(REFCLSID rclsid, LPUNKNOWN pUnkOuter, DWORD dwClsContext, REFIID riid,
                         LPVOID* ppv);

HRESULT CLSIDFromString(LPCOLESTR lpsz, LPCLSID pclsid);
HRESULT IIDFromString(LPCOLESTR lpsz, LPIID lpiid);
HRESULT StringFromCLSID(REFCLSID rclsid, LPOLESTR* lplpsz);
HRESULT StringFromIID(REFIID rclsid, LPOLESTR* lplpsz);
int StringFromGUID2(REFGUID rguid, LPOLESTR lpsz, int cchMax);
HRESULT CLSIDFromProgID(LPCOLESTR lpszProgID, LPCLSID lpclsid);

LPVOID CoTaskMemAlloc(SIZE_T cb);
LPVOID CoTaskMemRealloc(LPVOID pv, SIZE_T cb);
void CoTaskMemFree(LPVOID pv);

namespace tarnix::posix {

// Makes a class creatable for the life of the process, as an installed in-process server
// is on Windows: CoCreateInstance finds it without anyone calling CoRegisterClassObject,
// and, when progId is given, CLSIDFromProgID finds it through HKEY_CLASSES_ROOT\<progId>\CLSID
// (written as a volatile key, so it is never saved into the hive file). Takes its own
// reference on the factory. Registering the same class again replaces the factory.
HRESULT RegisterBuiltinClass(REFCLSID clsid, LPCOLESTR progId, IClassFactory* factory);

// Writes HKEY_CLASSES_ROOT\<progId>\CLSID = "{...}" as a volatile key.
HRESULT RegisterBuiltinProgId(LPCOLESTR progId, REFCLSID clsid);

}  // namespace tarnix::posix
