// VARIANT life cycle: init, clear, copy; and BSTR comparison.
#include "platform/Win32.h"
#include "Internal.h"

#include <cstring>

namespace tarnix::posix {

bool IsValidVariantType(VARTYPE vt) {
  if (vt & ~(VT_TYPEMASK | VT_ARRAY | VT_BYREF)) return false;
  const VARTYPE base = vt & VT_TYPEMASK;
  switch (base) {
    case VT_EMPTY:
    case VT_NULL:
      return (vt & (VT_ARRAY | VT_BYREF)) == 0;
    case VT_VARIANT:
      return (vt & (VT_ARRAY | VT_BYREF)) != 0;
    case VT_I2: case VT_I4: case VT_R4: case VT_R8: case VT_CY: case VT_DATE: case VT_BSTR:
    case VT_DISPATCH: case VT_ERROR: case VT_BOOL: case VT_UNKNOWN: case VT_DECIMAL:
    case VT_I1: case VT_UI1: case VT_UI2: case VT_UI4: case VT_I8: case VT_UI8: case VT_INT:
    case VT_UINT: case VT_RECORD:
      return true;
    default:
      return false;
  }
}

}  // namespace tarnix::posix

void VariantInit(VARIANTARG* pvarg) {
  if (!pvarg) return;
  pvarg->vt = VT_EMPTY;
  pvarg->wReserved1 = pvarg->wReserved2 = pvarg->wReserved3 = 0;
}

HRESULT VariantClear(VARIANTARG* pvarg) {
  if (!pvarg) return E_INVALIDARG;
  if (!tarnix::posix::IsValidVariantType(pvarg->vt)) return DISP_E_BADVARTYPE;
  if ((pvarg->vt & VT_BYREF) == 0) {
    if (pvarg->vt & VT_ARRAY) {
      if (pvarg->parray) {
        HRESULT hr = SafeArrayDestroy(pvarg->parray);
        if (FAILED(hr)) return hr;
      }
    } else {
      switch (pvarg->vt) {
        case VT_BSTR:
          SysFreeString(pvarg->bstrVal);
          break;
        case VT_UNKNOWN:
        case VT_DISPATCH:
          if (pvarg->punkVal) pvarg->punkVal->Release();
          break;
        case VT_RECORD:
          // The record's storage belongs to whoever made it; only its contents and the
          // type reference are ours to release.
          if (pvarg->pRecInfo) {
            pvarg->pRecInfo->RecordClear(pvarg->pvRecord);
            pvarg->pRecInfo->Release();
          }
          break;
        default:
          break;
      }
    }
  }
  VariantInit(pvarg);
  return S_OK;
}

HRESULT VariantCopy(VARIANTARG* pvargDest, VARIANTARG* pvargSrc) {
  if (!pvargDest || !pvargSrc) return E_INVALIDARG;
  if (pvargDest == pvargSrc) return S_OK;
  if (!tarnix::posix::IsValidVariantType(pvargSrc->vt)) return DISP_E_BADVARTYPE;
  HRESULT hr = VariantClear(pvargDest);
  if (FAILED(hr)) return hr;

  VARIANT copy = *pvargSrc;
  if ((copy.vt & VT_BYREF) == 0) {
    if (copy.vt & VT_ARRAY) {
      copy.parray = nullptr;
      if (pvargSrc->parray) {
        hr = SafeArrayCopy(pvargSrc->parray, &copy.parray);
        if (FAILED(hr)) return hr;
      }
    } else if (copy.vt == VT_BSTR && copy.bstrVal) {
      copy.bstrVal = SysAllocStringByteLen(reinterpret_cast<LPCSTR>(pvargSrc->bstrVal),
                                           SysStringByteLen(pvargSrc->bstrVal));
      if (!copy.bstrVal) return E_OUTOFMEMORY;
    } else if ((copy.vt == VT_UNKNOWN || copy.vt == VT_DISPATCH) && copy.punkVal) {
      copy.punkVal->AddRef();
    } else if (copy.vt == VT_RECORD) {
      if (!copy.pRecInfo) return E_INVALIDARG;
      ULONG size = 0;
      hr = copy.pRecInfo->GetSize(&size);
      if (FAILED(hr)) return hr;
      copy.pvRecord = CoTaskMemAlloc(size);
      if (!copy.pvRecord) return E_OUTOFMEMORY;
      std::memset(copy.pvRecord, 0, size);
      hr = copy.pRecInfo->RecordCopy(pvargSrc->pvRecord, copy.pvRecord);
      if (FAILED(hr)) {
        CoTaskMemFree(copy.pvRecord);
        return hr;
      }
      copy.pRecInfo->AddRef();
    }
  }
  *pvargDest = copy;
  return S_OK;
}

HRESULT VarBstrCmp(BSTR bstrLeft, BSTR bstrRight, LCID lcid, ULONG dwFlags) {
  const size_t leftLength = SysStringLen(bstrLeft);
  const size_t rightLength = SysStringLen(bstrRight);
  const WCHAR empty = 0;
  const WCHAR* left = bstrLeft ? bstrLeft : &empty;
  const WCHAR* right = bstrRight ? bstrRight : &empty;
  // Letters order first regardless of case; without NORM_IGNORECASE a tie is then broken
  // by case, lower before upper, as the user-default collation orders Latin text.
  int order = tarnix::posix::CompareFolded(left, leftLength, right, rightLength);
  if (order == 0 && (dwFlags & NORM_IGNORECASE) == 0) {
    for (size_t i = 0; i < leftLength && order == 0; ++i) {
      if (left[i] != right[i]) order = left[i] > right[i] ? -1 : 1;
    }
  }
  return order < 0 ? VARCMP_LT : (order > 0 ? VARCMP_GT : VARCMP_EQ);
}
