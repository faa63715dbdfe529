// Placeholders until each concept has its own source; every entry point links.
#include "platform/Win32.h"

HRESULT CoInitialize(LPVOID pvReserved) { return E_NOTIMPL; }
HRESULT CoInitializeEx(LPVOID pvReserved, DWORD dwCoInit) { return E_NOTIMPL; }
void CoUninitialize() {  }
HRESULT CoRegisterClassObject(REFCLSID rclsid, LPUNKNOWN pUnk, DWORD dwClsContext, DWORD flags, LPDWORD lpdwRegister) { return E_NOTIMPL; }
HRESULT CoRevokeClassObject(DWORD dwRegister) { return E_NOTIMPL; }
HRESULT CoGetClassObject(REFCLSID rclsid, DWORD dwClsContext, LPVOID pvReserved, REFIID riid, LPVOID* ppv) { return E_NOTIMPL; }
HRESULT CoCreateInstance(REFCLSID rclsid, LPUNKNOWN pUnkOuter, DWORD dwClsContext, REFIID riid, LPVOID* ppv) { return E_NOTIMPL; }
HRESULT CLSIDFromString(LPCOLESTR lpsz, LPCLSID pclsid) { return E_NOTIMPL; }
HRESULT IIDFromString(LPCOLESTR lpsz, LPIID lpiid) { return E_NOTIMPL; }
HRESULT StringFromCLSID(REFCLSID rclsid, LPOLESTR* lplpsz) { return E_NOTIMPL; }
HRESULT StringFromIID(REFIID rclsid, LPOLESTR* lplpsz) { return E_NOTIMPL; }
int StringFromGUID2(REFGUID rguid, LPOLESTR lpsz, int cchMax) { return 0; }
HRESULT CLSIDFromProgID(LPCOLESTR lpszProgID, LPCLSID lpclsid) { return E_NOTIMPL; }
LPVOID CoTaskMemAlloc(SIZE_T cb) { return nullptr; }
LPVOID CoTaskMemRealloc(LPVOID pv, SIZE_T cb) { return nullptr; }
void CoTaskMemFree(LPVOID pv) {  }
namespace tarnix::posix {
HRESULT RegisterBuiltinClass(REFCLSID clsid, LPCOLESTR progId, IClassFactory* factory) { return E_NOTIMPL; }
HRESULT RegisterBuiltinProgId(LPCOLESTR progId, REFCLSID clsid) { return E_NOTIMPL; }
}
BSTR SysAllocString(const OLECHAR* psz) { return nullptr; }
BSTR SysAllocStringLen(const OLECHAR* strIn, UINT ui) { return nullptr; }
BSTR SysAllocStringByteLen(LPCSTR psz, UINT len) { return nullptr; }
INT SysReAllocString(BSTR* pbstr, const OLECHAR* psz) { return 0; }
INT SysReAllocStringLen(BSTR* pbstr, const OLECHAR* psz, UINT len) { return 0; }
void SysFreeString(BSTR bstrString) {  }
UINT SysStringLen(BSTR pbstr) { return 0; }
UINT SysStringByteLen(BSTR bstr) { return 0; }
void VariantInit(VARIANTARG* pvarg) {  }
HRESULT VariantClear(VARIANTARG* pvarg) { return E_NOTIMPL; }
HRESULT VariantCopy(VARIANTARG* pvargDest, VARIANTARG* pvargSrc) { return E_NOTIMPL; }
HRESULT VariantChangeType(VARIANTARG* pvargDest, VARIANTARG* pvarSrc, USHORT wFlags, VARTYPE vt) { return E_NOTIMPL; }
HRESULT VariantChangeTypeEx(VARIANTARG* pvargDest, VARIANTARG* pvarSrc, LCID lcid, USHORT wFlags, VARTYPE vt) { return E_NOTIMPL; }
HRESULT VarBstrCmp(BSTR bstrLeft, BSTR bstrRight, LCID lcid, ULONG dwFlags) { return E_NOTIMPL; }
SAFEARRAY* SafeArrayCreate(VARTYPE vt, UINT cDims, SAFEARRAYBOUND* rgsabound) { return nullptr; }
SAFEARRAY* SafeArrayCreateEx(VARTYPE vt, UINT cDims, SAFEARRAYBOUND* rgsabound, PVOID pvExtra) { return nullptr; }
SAFEARRAY* SafeArrayCreateVector(VARTYPE vt, LONG lLbound, ULONG cElements) { return nullptr; }
SAFEARRAY* SafeArrayCreateVectorEx(VARTYPE vt, LONG lLbound, ULONG cElements, PVOID pvExtra) { return nullptr; }
HRESULT SafeArrayDestroy(SAFEARRAY* psa) { return E_NOTIMPL; }
HRESULT SafeArrayCopy(SAFEARRAY* psa, SAFEARRAY** ppsaOut) { return E_NOTIMPL; }
UINT SafeArrayGetDim(SAFEARRAY* psa) { return 0; }
UINT SafeArrayGetElemsize(SAFEARRAY* psa) { return 0; }
HRESULT SafeArrayGetLBound(SAFEARRAY* psa, UINT nDim, LONG* plLbound) { return E_NOTIMPL; }
HRESULT SafeArrayGetUBound(SAFEARRAY* psa, UINT nDim, LONG* plUbound) { return E_NOTIMPL; }
HRESULT SafeArrayGetVartype(SAFEARRAY* psa, VARTYPE* pvt) { return E_NOTIMPL; }
HRESULT SafeArrayGetRecordInfo(SAFEARRAY* psa, IRecordInfo** prinfo) { return E_NOTIMPL; }
HRESULT SafeArrayLock(SAFEARRAY* psa) { return E_NOTIMPL; }
HRESULT SafeArrayUnlock(SAFEARRAY* psa) { return E_NOTIMPL; }
HRESULT SafeArrayAccessData(SAFEARRAY* psa, void** ppvData) { return E_NOTIMPL; }
HRESULT SafeArrayUnaccessData(SAFEARRAY* psa) { return E_NOTIMPL; }
HRESULT SafeArrayPtrOfIndex(SAFEARRAY* psa, LONG* rgIndices, void** ppvData) { return E_NOTIMPL; }
HRESULT SafeArrayGetElement(SAFEARRAY* psa, LONG* rgIndices, void* pv) { return E_NOTIMPL; }
HRESULT SafeArrayPutElement(SAFEARRAY* psa, LONG* rgIndices, void* pv) { return E_NOTIMPL; }
INT VariantTimeToSystemTime(DOUBLE vtime, LPSYSTEMTIME lpSystemTime) { return 0; }
INT SystemTimeToVariantTime(LPSYSTEMTIME lpSystemTime, DOUBLE* pvtime) { return 0; }
HRESULT VarUdateFromDate(DATE dateIn, ULONG dwFlags, UDATE* pudateOut) { return E_NOTIMPL; }
HRESULT VarDateFromUdate(UDATE* pudateIn, ULONG dwFlags, DATE* pdateOut) { return E_NOTIMPL; }
BOOL SystemTimeToFileTime(const SYSTEMTIME* lpSystemTime, LPFILETIME lpFileTime) { return 0; }
BOOL FileTimeToSystemTime(const FILETIME* lpFileTime, LPSYSTEMTIME lpSystemTime) { return 0; }
void GetSystemTime(LPSYSTEMTIME lpSystemTime) {  }
void GetSystemTimeAsFileTime(LPFILETIME lpSystemTimeAsFileTime) {  }
void InitializeCriticalSection(LPCRITICAL_SECTION lpCriticalSection) {  }
BOOL InitializeCriticalSectionEx(LPCRITICAL_SECTION lpCriticalSection, DWORD dwSpinCount, DWORD Flags) { return 0; }
BOOL InitializeCriticalSectionAndSpinCount(LPCRITICAL_SECTION lpCriticalSection, DWORD dwSpinCount) { return 0; }
void EnterCriticalSection(LPCRITICAL_SECTION lpCriticalSection) {  }
BOOL TryEnterCriticalSection(LPCRITICAL_SECTION lpCriticalSection) { return 0; }
void LeaveCriticalSection(LPCRITICAL_SECTION lpCriticalSection) {  }
void DeleteCriticalSection(LPCRITICAL_SECTION lpCriticalSection) {  }
HANDLE CreateEventW(LPSECURITY_ATTRIBUTES lpEventAttributes, BOOL bManualReset, BOOL bInitialState, LPCWSTR lpName) { return nullptr; }
HANDLE OpenEventW(DWORD dwDesiredAccess, BOOL bInheritHandle, LPCWSTR lpName) { return nullptr; }
BOOL SetEvent(HANDLE hEvent) { return 0; }
BOOL ResetEvent(HANDLE hEvent) { return 0; }
DWORD WaitForSingleObject(HANDLE hHandle, DWORD dwMilliseconds) { return 0; }
BOOL CloseHandle(HANDLE hObject) { return 0; }
void Sleep(DWORD dwMilliseconds) {  }
DWORD GetCurrentProcessId() { return 0; }
DWORD GetTickCount() { return 0; }
ULONGLONG GetTickCount64() { return 0; }
HANDLE GetProcessHeap() { return nullptr; }
LPVOID HeapAlloc(HANDLE hHeap, DWORD dwFlags, SIZE_T dwBytes) { return nullptr; }
LPVOID HeapReAlloc(HANDLE hHeap, DWORD dwFlags, LPVOID lpMem, SIZE_T dwBytes) { return nullptr; }
BOOL HeapFree(HANDLE hHeap, DWORD dwFlags, LPVOID lpMem) { return 0; }
HLOCAL LocalAlloc(UINT uFlags, SIZE_T uBytes) { return nullptr; }
HLOCAL LocalFree(HLOCAL hMem) { return nullptr; }
DWORD FormatMessageW(DWORD dwFlags, LPCVOID lpSource, DWORD dwMessageId, DWORD dwLanguageId, LPWSTR lpBuffer, DWORD nSize, va_list* Arguments) { return 0; }
LPWSTR GetCommandLineW() { return nullptr; }
int MultiByteToWideChar(UINT CodePage, DWORD dwFlags, LPCCH lpMultiByteStr, int cbMultiByte, LPWSTR lpWideCharStr, int cchWideChar) { return 0; }
int WideCharToMultiByte(UINT CodePage, DWORD dwFlags, LPCWCH lpWideCharStr, int cchWideChar, LPSTR lpMultiByteStr, int cbMultiByte, LPCCH lpDefaultChar, LPBOOL lpUsedDefaultChar) { return 0; }
int lstrlenW(LPCWSTR lpString) { return 0; }
int StrToIntW(PCWSTR pszSrc) { return 0; }
LPWSTR PathCombineW(LPWSTR pszDest, LPCWSTR pszDir, LPCWSTR pszFile) { return nullptr; }
WCHAR* _wfullpath(WCHAR* absPath, const WCHAR* relPath, size_t maxLength) { return nullptr; }
DWORD GetEnvironmentVariableW(LPCWSTR lpName, LPWSTR lpBuffer, DWORD nSize) { return 0; }
HANDLE FindFirstFileW(LPCWSTR lpFileName, LPWIN32_FIND_DATAW lpFindFileData) { return nullptr; }
BOOL FindNextFileW(HANDLE hFindFile, LPWIN32_FIND_DATAW lpFindFileData) { return 0; }
BOOL FindClose(HANDLE hFindFile) { return 0; }
DWORD GetFileAttributesW(LPCWSTR lpFileName) { return 0; }
namespace tarnix::posix {
void SetCommandLineForTesting(const std::basic_string<WCHAR>& commandLine) {  }
}
LSTATUS RegOpenKeyExW(HKEY hKey, LPCWSTR lpSubKey, DWORD ulOptions, REGSAM samDesired, PHKEY phkResult) { return 120; }
LSTATUS RegCreateKeyExW(HKEY hKey, LPCWSTR lpSubKey, DWORD Reserved, LPWSTR lpClass, DWORD dwOptions, REGSAM samDesired, const LPSECURITY_ATTRIBUTES lpSecurityAttributes, PHKEY phkResult, LPDWORD lpdwDisposition) { return 120; }
LSTATUS RegCloseKey(HKEY hKey) { return 120; }
LSTATUS RegQueryValueExW(HKEY hKey, LPCWSTR lpValueName, LPDWORD lpReserved, LPDWORD lpType, LPBYTE lpData, LPDWORD lpcbData) { return 120; }
LSTATUS RegGetValueW(HKEY hkey, LPCWSTR lpSubKey, LPCWSTR lpValue, DWORD dwFlags, LPDWORD pdwType, PVOID pvData, LPDWORD pcbData) { return 120; }
LSTATUS RegSetValueExW(HKEY hKey, LPCWSTR lpValueName, DWORD Reserved, DWORD dwType, const BYTE* lpData, DWORD cbData) { return 120; }
LSTATUS RegEnumValueW(HKEY hKey, DWORD dwIndex, LPWSTR lpValueName, LPDWORD lpcchValueName, LPDWORD lpReserved, LPDWORD lpType, LPBYTE lpData, LPDWORD lpcbData) { return 120; }
LSTATUS RegEnumKeyExW(HKEY hKey, DWORD dwIndex, LPWSTR lpName, LPDWORD lpcchName, LPDWORD lpReserved, LPWSTR lpClass, LPDWORD lpcchClass, PFILETIME lpftLastWriteTime) { return 120; }
LSTATUS RegDeleteValueW(HKEY hKey, LPCWSTR lpValueName) { return 120; }
LSTATUS RegDeleteKeyW(HKEY hKey, LPCWSTR lpSubKey) { return 120; }
namespace tarnix::posix {
size_t ReloadRegistry() { return 0; }
std::string RegistryText() { return {}; }
}
const IID IID_IUnknown = {0x00000000, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
const IID IID_IClassFactory = {0x00000001, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
const IID IID_IDispatch = {0x00020400, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
const IID IID_IRecordInfo = {0x0000002F, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
const GUID GUID_NULL = {};
