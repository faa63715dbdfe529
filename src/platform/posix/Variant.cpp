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
    case VT_NULL: return (vt & (VT_ARRAY | VT_BYREF)) == 0;
    case VT_VARIANT: return (vt & (VT_ARRAY | VT_BYREF)) != 0;
    case VT_I2:
    case VT_I4:
    case VT_R4:
    case VT_R8:
    case VT_CY:
    case VT_DATE:
    case VT_BSTR:
    case VT_DISPATCH:
    case VT_ERROR:
    case VT_BOOL:
    case VT_UNKNOWN:
    case VT_DECIMAL:
    case VT_I1:
    case VT_UI1:
    case VT_UI2:
    case VT_UI4:
    case VT_I8:
    case VT_UI8:
    case VT_INT:
    case VT_UINT:
    case VT_RECORD: return true;
    default: return false;
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
        case VT_BSTR: SysFreeString(pvarg->bstrVal); break;
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
        default: break;
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

namespace {

// Collation as the user-default locale orders text ("word sort"): hyphens and apostrophes
// count only when all else is equal; symbols sort before digits, digits before letters;
// a letter's accent matters only between otherwise equal texts, and its case after that,
// lower before upper.
bool Ignorable(WCHAR c) { return c == u'-' || c == u'\''; }

// The letter without its accent, for the accented Latin-1 letters.
WCHAR BaseLetter(WCHAR c) {
  static const char kBases[] = "AAAAAAACEEEEIIIIDNOOOOO*OUUUUYTsaaaaaaaceeeeiiiidnooooo/ouuuuyty";
  if (c < 0xC0 || c > 0xFF) return c;
  const char base = kBases[c - 0xC0];
  return (base == '*' || base == '/' || base == 'T' || base == 't' || base == 's')
             ? c
             : static_cast<WCHAR>(base);
}

uint32_t PrimaryWeight(WCHAR c) {
  const WCHAR folded = tarnix::posix::FoldCase(BaseLetter(c));
  if (folded >= u'0' && folded <= u'9') return 0x10000 + folded;
  if ((folded >= u'A' && folded <= u'Z') || folded >= 0xC0) return 0x20000 + folded;
  return 0x100 + folded;  // blanks, punctuation and symbols
}

std::u16string Significant(const WCHAR* text, size_t length) {
  std::u16string out;
  for (size_t k = 0; k < length; ++k) {
    if (!Ignorable(text[k])) out.push_back(text[k]);
  }
  return out;
}

template <class Key>
int CompareBy(const std::u16string& a, const std::u16string& b, Key key) {
  const size_t n = a.size() < b.size() ? a.size() : b.size();
  for (size_t k = 0; k < n; ++k) {
    const auto x = key(a[k]), y = key(b[k]);
    if (x != y) return x < y ? -1 : 1;
  }
  return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

int Collate(const WCHAR* a, size_t an, const WCHAR* b, size_t bn, bool ignoreCase) {
  const std::u16string x = Significant(a, an), y = Significant(b, bn);
  int order = CompareBy(x, y, PrimaryWeight);
  if (order == 0) order = CompareBy(x, y, [](WCHAR c) { return tarnix::posix::FoldCase(c); });
  if (order == 0 && !ignoreCase) {
    // Lower case first: the higher code unit of a letter pair is the lower-case one.
    order = CompareBy(x, y, [](WCHAR c) { return -static_cast<int>(c); });
  }
  if (order == 0) {
    // Only the hyphens and apostrophes differ: more of them sorts later.
    std::u16string ignoredA, ignoredB;
    for (size_t k = 0; k < an; ++k)
      if (Ignorable(a[k])) ignoredA.push_back(a[k]);
    for (size_t k = 0; k < bn; ++k)
      if (Ignorable(b[k])) ignoredB.push_back(b[k]);
    order = ignoredA.size() != ignoredB.size() ? (ignoredA.size() < ignoredB.size() ? -1 : 1)
                                               : ignoredA.compare(ignoredB);
  }
  return order;
}

}  // namespace

HRESULT VarBstrCmp(BSTR bstrLeft, BSTR bstrRight, LCID lcid, ULONG dwFlags) {
  const WCHAR empty = 0;
  const int order =
      Collate(bstrLeft ? bstrLeft : &empty, SysStringLen(bstrLeft), bstrRight ? bstrRight : &empty,
              SysStringLen(bstrRight), (dwFlags & NORM_IGNORECASE) != 0);
  return order < 0 ? VARCMP_LT : (order > 0 ? VARCMP_GT : VARCMP_EQ);
}
