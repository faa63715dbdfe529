// Win32 base types and result codes, with Windows' sizes: LONG and HRESULT are 32 bits,
// WCHAR is a UTF-16 code unit.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

typedef char16_t WCHAR;
typedef WCHAR OLECHAR;
typedef WCHAR* LPWSTR;
typedef const WCHAR* LPCWSTR;
typedef OLECHAR* LPOLESTR;
typedef const OLECHAR* LPCOLESTR;
typedef char CHAR;
typedef char* LPSTR;
typedef const char* LPCSTR;

typedef int32_t LONG;
typedef uint32_t ULONG;
typedef uint32_t DWORD;
typedef int32_t INT;
typedef uint32_t UINT;
typedef int32_t BOOL;
typedef uint8_t BYTE;
typedef uint16_t WORD;
typedef int16_t SHORT;
typedef uint16_t USHORT;
typedef int64_t LONGLONG;
typedef uint64_t ULONGLONG;
typedef int64_t LONG64;
typedef uint64_t ULONG64;
typedef uint64_t DWORD64;
typedef uintptr_t ULONG_PTR;
typedef intptr_t LONG_PTR;
typedef uintptr_t DWORD_PTR;
typedef size_t SIZE_T;
typedef ULONG_PTR WPARAM;
typedef LONG_PTR LPARAM;
typedef void* LPVOID;
typedef const void* LPCVOID;
typedef BYTE* LPBYTE;
typedef DWORD* LPDWORD;
typedef LONG* PLONG;
typedef void* HANDLE;
typedef void* PVOID;
typedef int32_t HRESULT;
typedef int16_t VARIANT_BOOL;
typedef uint16_t VARTYPE;
typedef double DATE;
typedef DWORD LCID;
typedef LONG SCODE;
typedef DWORD ACCESS_MASK;
typedef ACCESS_MASK REGSAM;

#define TRUE 1
#define FALSE 0
#define VARIANT_TRUE ((VARIANT_BOOL)-1)
#define VARIANT_FALSE ((VARIANT_BOOL)0)
#define WINAPI
#define STDMETHODCALLTYPE
#define STDAPICALLTYPE
#define CALLBACK
#define MAX_PATH 260
#define INVALID_HANDLE_VALUE ((HANDLE)(intptr_t)-1)
#define INFINITE 0xFFFFFFFFu

#define SUCCEEDED(hr) (((HRESULT)(hr)) >= 0)
#define FAILED(hr) (((HRESULT)(hr)) < 0)
#define MAKE_HRESULT(sev, fac, code) \
  ((HRESULT)(((uint32_t)(sev) << 31) | ((uint32_t)(fac) << 16) | ((uint32_t)(code))))
#define FACILITY_WIN32 7
#define HRESULT_CODE(hr) ((hr)&0xFFFF)

inline HRESULT HRESULT_FROM_WIN32(uint32_t code) {
  return (HRESULT)code <= 0
             ? (HRESULT)code
             : (HRESULT)((code & 0x0000FFFFu) | (FACILITY_WIN32 << 16) | 0x80000000u);
}

#define S_OK ((HRESULT)0)
#define S_FALSE ((HRESULT)1)
#define E_NOTIMPL ((HRESULT)0x80004001)
#define E_NOINTERFACE ((HRESULT)0x80004002)
#define E_POINTER ((HRESULT)0x80004003)
#define E_ABORT ((HRESULT)0x80004004)
#define E_FAIL ((HRESULT)0x80004005)
#define E_UNEXPECTED ((HRESULT)0x8000FFFF)
#define E_ACCESSDENIED ((HRESULT)0x80070005)
#define E_HANDLE ((HRESULT)0x80070006)
#define E_OUTOFMEMORY ((HRESULT)0x8007000E)
#define E_INVALIDARG ((HRESULT)0x80070057)
#define CLASS_E_NOAGGREGATION ((HRESULT)0x80040110)
#define CLASS_E_CLASSNOTAVAILABLE ((HRESULT)0x80040111)
#define REGDB_E_CLASSNOTREG ((HRESULT)0x80040154)
#define CO_E_CLASSSTRING ((HRESULT)0x800401F3)
#define DISP_E_TYPEMISMATCH ((HRESULT)0x80020005)
#define DISP_E_BADVARTYPE ((HRESULT)0x80020008)
#define DISP_E_OVERFLOW ((HRESULT)0x8002000A)
#define DISP_E_BADINDEX ((HRESULT)0x8002000B)
#define DISP_E_ARRAYISLOCKED ((HRESULT)0x8002000D)
#define DISP_E_UNKNOWNNAME ((HRESULT)0x80020006)

#define ERROR_SUCCESS 0L
#define ERROR_FILE_NOT_FOUND 2L
#define ERROR_PATH_NOT_FOUND 3L
#define ERROR_ACCESS_DENIED 5L
#define ERROR_INVALID_HANDLE 6L
#define ERROR_NOT_ENOUGH_MEMORY 8L
#define ERROR_INVALID_DATA 13L
#define ERROR_OUTOFMEMORY 14L
#define ERROR_NO_MORE_FILES 18L
#define ERROR_INVALID_PARAMETER 87L
#define ERROR_INSUFFICIENT_BUFFER 122L
#define ERROR_INVALID_NAME 123L
#define ERROR_MOD_NOT_FOUND 126L
#define ERROR_PROC_NOT_FOUND 127L
#define ERROR_ALREADY_EXISTS 183L
#define ERROR_MORE_DATA 234L
#define ERROR_NO_MORE_ITEMS 259L
#define ERROR_NOT_FOUND 1168L
#define ERROR_BADDB 1009L
#define ERROR_BADKEY 1010L
#define ERROR_NETWORK_UNREACHABLE 1231L

struct GUID {
  uint32_t Data1;
  uint16_t Data2;
  uint16_t Data3;
  uint8_t Data4[8];
};
typedef GUID IID;
typedef GUID CLSID;
typedef const GUID& REFGUID;
typedef const IID& REFIID;
typedef const CLSID& REFCLSID;
typedef IID* LPIID;
typedef CLSID* LPCLSID;

inline bool IsEqualGUID(REFGUID a, REFGUID b) { return std::memcmp(&a, &b, sizeof(GUID)) == 0; }
#define IsEqualIID(a, b) IsEqualGUID(a, b)
#define IsEqualCLSID(a, b) IsEqualGUID(a, b)
inline bool operator==(REFGUID a, REFGUID b) { return IsEqualGUID(a, b); }
inline bool operator!=(REFGUID a, REFGUID b) { return !IsEqualGUID(a, b); }

// The thread's last system error, as GetLastError/SetLastError keep it on Windows.
DWORD GetLastError();
void SetLastError(DWORD error);
// A 32-bit id of the calling thread, unique among live threads of the process.
DWORD GetCurrentThreadId();
