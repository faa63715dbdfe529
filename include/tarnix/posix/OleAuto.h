// OLE Automation for the POSIX build: BSTR, VARIANT, SAFEARRAY, IRecordInfo and OLE dates,
// laid out as on 64-bit Windows so that data can be handed across as it is there.
#pragma once

#include "tarnix/posix/Com.h"
#include "tarnix/posix/Kernel.h"

// ---- BSTR: a 32-bit byte count, then the UTF-16 text, then a terminating zero.
typedef OLECHAR* BSTR;
typedef BSTR* LPBSTR;

BSTR SysAllocString(const OLECHAR* psz);
BSTR SysAllocStringLen(const OLECHAR* strIn, UINT ui);
BSTR SysAllocStringByteLen(LPCSTR psz, UINT len);
INT SysReAllocString(BSTR* pbstr, const OLECHAR* psz);
INT SysReAllocStringLen(BSTR* pbstr, const OLECHAR* psz, UINT len);
void SysFreeString(BSTR bstrString);
UINT SysStringLen(BSTR pbstr);
UINT SysStringByteLen(BSTR bstr);

// ---- VARTYPE
enum VARENUM {
  VT_EMPTY = 0,
  VT_NULL = 1,
  VT_I2 = 2,
  VT_I4 = 3,
  VT_R4 = 4,
  VT_R8 = 5,
  VT_CY = 6,
  VT_DATE = 7,
  VT_BSTR = 8,
  VT_DISPATCH = 9,
  VT_ERROR = 10,
  VT_BOOL = 11,
  VT_VARIANT = 12,
  VT_UNKNOWN = 13,
  VT_DECIMAL = 14,
  VT_I1 = 16,
  VT_UI1 = 17,
  VT_UI2 = 18,
  VT_UI4 = 19,
  VT_I8 = 20,
  VT_UI8 = 21,
  VT_INT = 22,
  VT_UINT = 23,
  VT_VOID = 24,
  VT_HRESULT = 25,
  VT_PTR = 26,
  VT_SAFEARRAY = 27,
  VT_CARRAY = 28,
  VT_USERDEFINED = 29,
  VT_LPSTR = 30,
  VT_LPWSTR = 31,
  VT_RECORD = 36,
  VT_INT_PTR = 37,
  VT_UINT_PTR = 38,
  VT_FILETIME = 64,
  VT_BLOB = 65,
  VT_STREAM = 66,
  VT_STORAGE = 67,
  VT_STREAMED_OBJECT = 68,
  VT_STORED_OBJECT = 69,
  VT_BLOB_OBJECT = 70,
  VT_CF = 71,
  VT_CLSID = 72,
  VT_VERSIONED_STREAM = 73,
  VT_BSTR_BLOB = 0xfff,
  VT_VECTOR = 0x1000,
  VT_ARRAY = 0x2000,
  VT_BYREF = 0x4000,
  VT_RESERVED = 0x8000,
  VT_ILLEGAL = 0xffff,
  VT_ILLEGALMASKED = 0xfff,
  VT_TYPEMASK = 0xfff,
};

// ---- Interfaces a VARIANT can carry.
struct ITypeInfo;
struct IRecordInfo;
struct tagVARIANT;
typedef tagVARIANT VARIANT;
typedef tagVARIANT VARIANTARG;
typedef VARIANT* LPVARIANT;
typedef VARIANT* LPVARIANTARG;

typedef LONG DISPID;
typedef DISPID MEMBERID;
#define DISPID_UNKNOWN (-1)
#define DISPID_VALUE 0

struct DISPPARAMS {
  VARIANTARG* rgvarg;
  DISPID* rgdispidNamedArgs;
  UINT cArgs;
  UINT cNamedArgs;
};

struct EXCEPINFO {
  WORD wCode;
  WORD wReserved;
  BSTR bstrSource;
  BSTR bstrDescription;
  BSTR bstrHelpFile;
  DWORD dwHelpContext;
  PVOID pvReserved;
  HRESULT(STDMETHODCALLTYPE* pfnDeferredFillIn)(EXCEPINFO*);
  SCODE scode;
};

#define DISPATCH_METHOD 0x1
#define DISPATCH_PROPERTYGET 0x2
#define DISPATCH_PROPERTYPUT 0x4
#define DISPATCH_PROPERTYPUTREF 0x8

struct IDispatch : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* pctinfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT iTInfo, LCID lcid, ITypeInfo** ppTInfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* rgszNames, UINT cNames,
                                                  LCID lcid, DISPID* rgDispId) = 0;
  virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID dispIdMember, REFIID riid, LCID lcid, WORD wFlags,
                                           DISPPARAMS* pDispParams, VARIANT* pVarResult,
                                           EXCEPINFO* pExcepInfo, UINT* puArgErr) = 0;
};
typedef IDispatch* LPDISPATCH;
extern const IID IID_IDispatch;

// ---- SAFEARRAY
struct SAFEARRAYBOUND {
  ULONG cElements;
  LONG lLbound;
};
typedef SAFEARRAYBOUND* LPSAFEARRAYBOUND;

struct SAFEARRAY {
  USHORT cDims;
  USHORT fFeatures;
  ULONG cbElements;
  ULONG cLocks;
  PVOID pvData;
  SAFEARRAYBOUND rgsabound[1];
};
typedef SAFEARRAY* LPSAFEARRAY;

#define FADF_AUTO 0x1
#define FADF_STATIC 0x2
#define FADF_EMBEDDED 0x4
#define FADF_FIXEDSIZE 0x10
#define FADF_RECORD 0x20
#define FADF_HAVEIID 0x40
#define FADF_HAVEVARTYPE 0x80
#define FADF_BSTR 0x100
#define FADF_UNKNOWN 0x200
#define FADF_DISPATCH 0x400
#define FADF_VARIANT 0x800
#define FADF_RESERVED 0xF008

// ---- CY
union CY {
  struct {
    ULONG Lo;
    LONG Hi;
  } s;
  LONGLONG int64;
};

// ---- VARIANT: 24 bytes on a 64-bit target, as on Windows.
#if defined(__GNUC__)
#  pragma GCC diagnostic push
#  pragma GCC diagnostic ignored "-Wpedantic"
#endif
struct tagVARIANT {
  VARTYPE vt;
  WORD wReserved1;
  WORD wReserved2;
  WORD wReserved3;
  union {
    LONGLONG llVal;
    LONG lVal;
    BYTE bVal;
    SHORT iVal;
    float fltVal;
    double dblVal;
    VARIANT_BOOL boolVal;
    SCODE scode;
    CY cyVal;
    DATE date;
    BSTR bstrVal;
    IUnknown* punkVal;
    IDispatch* pdispVal;
    SAFEARRAY* parray;
    BYTE* pbVal;
    SHORT* piVal;
    LONG* plVal;
    LONGLONG* pllVal;
    float* pfltVal;
    double* pdblVal;
    VARIANT_BOOL* pboolVal;
    SCODE* pscode;
    DATE* pdate;
    BSTR* pbstrVal;
    IUnknown** ppunkVal;
    IDispatch** ppdispVal;
    SAFEARRAY** pparray;
    VARIANT* pvarVal;
    PVOID byref;
    CHAR cVal;
    USHORT uiVal;
    ULONG ulVal;
    ULONGLONG ullVal;
    INT intVal;
    UINT uintVal;
    CHAR* pcVal;
    USHORT* puiVal;
    ULONG* pulVal;
    ULONGLONG* pullVal;
    INT* pintVal;
    UINT* puintVal;
    struct {
      PVOID pvRecord;
      IRecordInfo* pRecInfo;
    };
  };
};
#if defined(__GNUC__)
#  pragma GCC diagnostic pop
#endif

#define V_VT(X) ((X)->vt)
#define V_ISBYREF(X) (V_VT(X) & VT_BYREF)
#define V_ISARRAY(X) (V_VT(X) & VT_ARRAY)
#define V_UI1(X) ((X)->bVal)
#define V_I1(X) ((X)->cVal)
#define V_I2(X) ((X)->iVal)
#define V_UI2(X) ((X)->uiVal)
#define V_I4(X) ((X)->lVal)
#define V_UI4(X) ((X)->ulVal)
#define V_I8(X) ((X)->llVal)
#define V_UI8(X) ((X)->ullVal)
#define V_INT(X) ((X)->intVal)
#define V_UINT(X) ((X)->uintVal)
#define V_R4(X) ((X)->fltVal)
#define V_R8(X) ((X)->dblVal)
#define V_BOOL(X) ((X)->boolVal)
#define V_ERROR(X) ((X)->scode)
#define V_DATE(X) ((X)->date)
#define V_BSTR(X) ((X)->bstrVal)
#define V_UNKNOWN(X) ((X)->punkVal)
#define V_DISPATCH(X) ((X)->pdispVal)
#define V_ARRAY(X) ((X)->parray)
#define V_BYREF(X) ((X)->byref)
#define V_VARIANTREF(X) ((X)->pvarVal)
#define V_RECORD(X) ((X)->pvRecord)
#define V_RECORDINFO(X) ((X)->pRecInfo)

// ---- IRecordInfo: the full interface in slot order; the layer itself calls only
// RecordClear, RecordCopy and GetSize.
struct IRecordInfo : public IUnknown {
  virtual HRESULT STDMETHODCALLTYPE RecordInit(PVOID pvNew) = 0;
  virtual HRESULT STDMETHODCALLTYPE RecordClear(PVOID pvExisting) = 0;
  virtual HRESULT STDMETHODCALLTYPE RecordCopy(PVOID pvExisting, PVOID pvNew) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetGuid(GUID* pguid) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetName(BSTR* pbstrName) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetSize(ULONG* pcbSize) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(ITypeInfo** ppTypeInfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetField(PVOID pvData, LPCOLESTR szFieldName,
                                             VARIANT* pvarField) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetFieldNoCopy(PVOID pvData, LPCOLESTR szFieldName,
                                                   VARIANT* pvarField, PVOID* ppvDataCArray) = 0;
  virtual HRESULT STDMETHODCALLTYPE PutField(ULONG wFlags, PVOID pvData, LPCOLESTR szFieldName,
                                             VARIANT* pvarField) = 0;
  virtual HRESULT STDMETHODCALLTYPE PutFieldNoCopy(ULONG wFlags, PVOID pvData,
                                                   LPCOLESTR szFieldName, VARIANT* pvarField) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetFieldNames(ULONG* pcNames, BSTR* rgBstrNames) = 0;
  virtual BOOL STDMETHODCALLTYPE IsMatchingType(IRecordInfo* pRecordInfo) = 0;
  virtual PVOID STDMETHODCALLTYPE RecordCreate() = 0;
  virtual HRESULT STDMETHODCALLTYPE RecordCreateCopy(PVOID pvSource, PVOID* ppvDest) = 0;
  virtual HRESULT STDMETHODCALLTYPE RecordDestroy(PVOID pvRecord) = 0;
};
typedef IRecordInfo* LPRECORDINFO;
extern const IID IID_IRecordInfo;

// ---- VARIANT functions. Source arguments are non-const, as in the mingw-w64 headers, so
// that code written here compiles against both Windows header sets.
#define VARIANT_NOVALUEPROP 0x1
#define VARIANT_ALPHABOOL 0x2
#define VARIANT_NOUSEROVERRIDE 0x4
#define VARIANT_CALENDAR_HIJRI 0x8
#define VARIANT_LOCALBOOL 0x10

void VariantInit(VARIANTARG* pvarg);
HRESULT VariantClear(VARIANTARG* pvarg);
HRESULT VariantCopy(VARIANTARG* pvargDest, VARIANTARG* pvargSrc);
HRESULT VariantChangeType(VARIANTARG* pvargDest, VARIANTARG* pvarSrc, USHORT wFlags, VARTYPE vt);
HRESULT VariantChangeTypeEx(VARIANTARG* pvargDest, VARIANTARG* pvarSrc, LCID lcid, USHORT wFlags,
                            VARTYPE vt);

#define LOCALE_USER_DEFAULT 0x400
#define LOCALE_SYSTEM_DEFAULT 0x800
#define LOCALE_INVARIANT 0x7f
#define NORM_IGNORECASE 0x1

#define VARCMP_LT 0
#define VARCMP_EQ 1
#define VARCMP_GT 2
#define VARCMP_NULL 3

// Compares by code unit (and, with NORM_IGNORECASE, after simple case folding). A null
// BSTR equals an empty one.
HRESULT VarBstrCmp(BSTR bstrLeft, BSTR bstrRight, LCID lcid, ULONG dwFlags);

// ---- SAFEARRAY functions.
SAFEARRAY* SafeArrayCreate(VARTYPE vt, UINT cDims, SAFEARRAYBOUND* rgsabound);
SAFEARRAY* SafeArrayCreateEx(VARTYPE vt, UINT cDims, SAFEARRAYBOUND* rgsabound, PVOID pvExtra);
SAFEARRAY* SafeArrayCreateVector(VARTYPE vt, LONG lLbound, ULONG cElements);
SAFEARRAY* SafeArrayCreateVectorEx(VARTYPE vt, LONG lLbound, ULONG cElements, PVOID pvExtra);
HRESULT SafeArrayDestroy(SAFEARRAY* psa);
HRESULT SafeArrayCopy(SAFEARRAY* psa, SAFEARRAY** ppsaOut);
UINT SafeArrayGetDim(SAFEARRAY* psa);
UINT SafeArrayGetElemsize(SAFEARRAY* psa);
HRESULT SafeArrayGetLBound(SAFEARRAY* psa, UINT nDim, LONG* plLbound);
HRESULT SafeArrayGetUBound(SAFEARRAY* psa, UINT nDim, LONG* plUbound);
HRESULT SafeArrayGetVartype(SAFEARRAY* psa, VARTYPE* pvt);
HRESULT SafeArrayGetRecordInfo(SAFEARRAY* psa, IRecordInfo** prinfo);
HRESULT SafeArrayLock(SAFEARRAY* psa);
HRESULT SafeArrayUnlock(SAFEARRAY* psa);
HRESULT SafeArrayAccessData(SAFEARRAY* psa, void** ppvData);
HRESULT SafeArrayUnaccessData(SAFEARRAY* psa);
HRESULT SafeArrayPtrOfIndex(SAFEARRAY* psa, LONG* rgIndices, void** ppvData);
HRESULT SafeArrayGetElement(SAFEARRAY* psa, LONG* rgIndices, void* pv);
HRESULT SafeArrayPutElement(SAFEARRAY* psa, LONG* rgIndices, void* pv);

// ---- OLE dates: days since 30 December 1899, the fraction being the time of day.
struct UDATE {
  SYSTEMTIME st;
  USHORT wDayOfYear;
};

#define VAR_TIMEVALUEONLY 0x1
#define VAR_DATEVALUEONLY 0x2

INT VariantTimeToSystemTime(DOUBLE vtime, LPSYSTEMTIME lpSystemTime);
INT SystemTimeToVariantTime(LPSYSTEMTIME lpSystemTime, DOUBLE* pvtime);
HRESULT VarUdateFromDate(DATE dateIn, ULONG dwFlags, UDATE* pudateOut);
HRESULT VarDateFromUdate(UDATE* pudateIn, ULONG dwFlags, DATE* pdateOut);
