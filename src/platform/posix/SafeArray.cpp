// SAFEARRAY, laid out as on Windows: the descriptor is preceded by 16 bytes that hold the
// element VARTYPE (at -4), an interface IID (at -16) or a record's IRecordInfo (at -8).
// Bounds are stored last dimension first, and the first index varies fastest.
#include "platform/Win32.h"

#include <cstdlib>
#include <cstring>

namespace {

constexpr size_t kPrefix = 16;
constexpr USHORT kCreatedAsVector = 0x2000;  // FADF_CREATEVECTOR
constexpr uint64_t kMaxDataBytes = 0x7FFFFFFF;
constexpr ULONG kMaxLocks = 65535;

char* Prefix(SAFEARRAY* psa) { return reinterpret_cast<char*>(psa) - kPrefix; }

IRecordInfo* RecordInfoOf(SAFEARRAY* psa) {
  IRecordInfo* info = nullptr;
  std::memcpy(&info, Prefix(psa) + 8, sizeof(info));
  return info;
}

// The element size and feature flags of an element type; false for a type an array
// cannot hold.
bool ElementTraits(VARTYPE vt, ULONG* size, USHORT* features) {
  *features = FADF_HAVEVARTYPE;
  switch (vt) {
    case VT_I1:
    case VT_UI1: *size = 1; return true;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL: *size = 2; return true;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_R4:
    case VT_ERROR: *size = 4; return true;
    case VT_I8:
    case VT_UI8:
    case VT_R8:
    case VT_CY:
    case VT_DATE: *size = 8; return true;
    case VT_DECIMAL: *size = 16; return true;
    case VT_BSTR:
      *size = sizeof(BSTR);
      *features |= FADF_BSTR;
      return true;
    case VT_VARIANT:
      *size = sizeof(VARIANT);
      *features |= FADF_VARIANT;
      return true;
    case VT_UNKNOWN:
      *size = sizeof(IUnknown*);
      *features = FADF_HAVEIID | FADF_UNKNOWN;
      return true;
    case VT_DISPATCH:
      *size = sizeof(IDispatch*);
      *features = FADF_HAVEIID | FADF_DISPATCH;
      return true;
    case VT_RECORD:
      *size = 0;
      *features = FADF_RECORD;
      return true;
    default: return false;
  }
}

uint64_t ElementCount(SAFEARRAY* psa) {
  uint64_t count = 1;
  for (USHORT k = 0; k < psa->cDims; ++k) count *= psa->rgsabound[k].cElements;
  return count;
}

char* ElementAt(SAFEARRAY* psa, uint64_t index) {
  return static_cast<char*>(psa->pvData) + index * psa->cbElements;
}

void ClearElement(SAFEARRAY* psa, char* element) {
  if (psa->fFeatures & FADF_BSTR) {
    BSTR* slot = reinterpret_cast<BSTR*>(element);
    SysFreeString(*slot);
    *slot = nullptr;
  } else if (psa->fFeatures & (FADF_UNKNOWN | FADF_DISPATCH)) {
    IUnknown** slot = reinterpret_cast<IUnknown**>(element);
    if (*slot) (*slot)->Release();
    *slot = nullptr;
  } else if (psa->fFeatures & FADF_VARIANT) {
    VariantClear(reinterpret_cast<VARIANT*>(element));
  } else if (psa->fFeatures & FADF_RECORD) {
    if (IRecordInfo* info = RecordInfoOf(psa)) info->RecordClear(element);
  }
}

// Copies one element out of `from` into the empty slot `to`, as its owner.
HRESULT CopyElement(SAFEARRAY* psa, const char* from, char* to) {
  if (psa->fFeatures & FADF_BSTR) {
    BSTR source = *reinterpret_cast<const BSTR*>(from);
    BSTR copy = nullptr;
    if (source) {
      copy = SysAllocStringByteLen(reinterpret_cast<LPCSTR>(source), SysStringByteLen(source));
      if (!copy) return E_OUTOFMEMORY;
    }
    std::memcpy(to, &copy, sizeof(copy));
  } else if (psa->fFeatures & (FADF_UNKNOWN | FADF_DISPATCH)) {
    IUnknown* source = *reinterpret_cast<IUnknown* const*>(from);
    if (source) source->AddRef();
    std::memcpy(to, &source, sizeof(source));
  } else if (psa->fFeatures & FADF_VARIANT) {
    VARIANT* target = reinterpret_cast<VARIANT*>(to);
    VariantInit(target);
    return VariantCopy(target, const_cast<VARIANT*>(reinterpret_cast<const VARIANT*>(from)));
  } else if (psa->fFeatures & FADF_RECORD) {
    IRecordInfo* info = RecordInfoOf(psa);
    return info ? info->RecordCopy(const_cast<char*>(from), to) : E_INVALIDARG;
  } else {
    std::memcpy(to, from, psa->cbElements);
  }
  return S_OK;
}

HRESULT CellOffset(SAFEARRAY* psa, const LONG* indices, uint64_t* offset) {
  uint64_t cell = 0, stride = 1;
  for (USHORT dim = 0; dim < psa->cDims; ++dim) {
    const SAFEARRAYBOUND& bound = psa->rgsabound[psa->cDims - 1 - dim];
    const int64_t position = static_cast<int64_t>(indices[dim]) - bound.lLbound;
    if (position < 0 || position >= static_cast<int64_t>(bound.cElements)) return DISP_E_BADINDEX;
    cell += static_cast<uint64_t>(position) * stride;
    stride *= bound.cElements;
  }
  *offset = cell;
  return S_OK;
}

// `bounds` in dimension order (dimension 1 first), as callers give them.
SAFEARRAY* Create(VARTYPE vt, UINT cDims, const SAFEARRAYBOUND* bounds, PVOID pvExtra,
                  bool vector) {
  ULONG size = 0;
  USHORT features = 0;
  if (cDims == 0 || cDims > 0xFFFF || !bounds || !ElementTraits(vt, &size, &features))
    return nullptr;
  IRecordInfo* info = nullptr;
  if (vt == VT_RECORD) {
    info = static_cast<IRecordInfo*>(pvExtra);
    if (!info || FAILED(info->GetSize(&size)) || size == 0) return nullptr;
  }
  uint64_t count = 1;
  for (UINT k = 0; k < cDims; ++k) {
    count *= bounds[k].cElements;
    if (count * size > kMaxDataBytes) return nullptr;
  }
  const size_t descriptorBytes = kPrefix + sizeof(SAFEARRAY) + (cDims - 1) * sizeof(SAFEARRAYBOUND);
  char* block = static_cast<char*>(std::calloc(1, descriptorBytes));
  if (!block) return nullptr;
  auto* psa = reinterpret_cast<SAFEARRAY*>(block + kPrefix);
  psa->pvData = std::calloc(1, count * size != 0 ? static_cast<size_t>(count * size) : 1);
  if (!psa->pvData) {
    std::free(block);
    return nullptr;
  }
  psa->cDims = static_cast<USHORT>(cDims);
  psa->fFeatures = features | (vector ? kCreatedAsVector : 0);
  psa->cbElements = size;
  for (UINT k = 0; k < cDims; ++k) psa->rgsabound[cDims - 1 - k] = bounds[k];
  if (features & FADF_HAVEVARTYPE) {
    const DWORD type = vt;
    std::memcpy(block + 12, &type, sizeof(type));
  } else if (features & FADF_HAVEIID) {
    const IID& iid = (pvExtra ? *static_cast<const IID*>(pvExtra)
                              : (vt == VT_DISPATCH ? IID_IDispatch : IID_IUnknown));
    std::memcpy(block, &iid, sizeof(iid));
  } else if (info) {
    info->AddRef();
    std::memcpy(block + 8, &info, sizeof(info));
  }
  return psa;
}

}  // namespace

SAFEARRAY* SafeArrayCreate(VARTYPE vt, UINT cDims, SAFEARRAYBOUND* rgsabound) {
  return vt == VT_RECORD ? nullptr : Create(vt, cDims, rgsabound, nullptr, false);
}

SAFEARRAY* SafeArrayCreateEx(VARTYPE vt, UINT cDims, SAFEARRAYBOUND* rgsabound, PVOID pvExtra) {
  return Create(vt, cDims, rgsabound, pvExtra, false);
}

SAFEARRAY* SafeArrayCreateVector(VARTYPE vt, LONG lLbound, ULONG cElements) {
  if (vt == VT_RECORD) return nullptr;
  SAFEARRAYBOUND bound = {cElements, lLbound};
  return Create(vt, 1, &bound, nullptr, true);
}

SAFEARRAY* SafeArrayCreateVectorEx(VARTYPE vt, LONG lLbound, ULONG cElements, PVOID pvExtra) {
  SAFEARRAYBOUND bound = {cElements, lLbound};
  return Create(vt, 1, &bound, pvExtra, true);
}

HRESULT SafeArrayDestroy(SAFEARRAY* psa) {
  if (!psa) return S_OK;
  if (psa->cLocks > 0) return DISP_E_ARRAYISLOCKED;
  if (psa->pvData) {
    const uint64_t count = ElementCount(psa);
    for (uint64_t k = 0; k < count; ++k) ClearElement(psa, ElementAt(psa, k));
    std::free(psa->pvData);
  }
  if (psa->fFeatures & FADF_RECORD) {
    if (IRecordInfo* info = RecordInfoOf(psa)) info->Release();
  }
  std::free(Prefix(psa));
  return S_OK;
}

HRESULT SafeArrayCopy(SAFEARRAY* psa, SAFEARRAY** ppsaOut) {
  if (!ppsaOut) return E_INVALIDARG;
  *ppsaOut = nullptr;
  if (!psa) return S_OK;
  VARTYPE vt = VT_EMPTY;
  HRESULT hr = SafeArrayGetVartype(psa, &vt);
  if (FAILED(hr)) return hr;
  SAFEARRAYBOUND* bounds = new SAFEARRAYBOUND[psa->cDims];
  for (USHORT k = 0; k < psa->cDims; ++k) bounds[k] = psa->rgsabound[psa->cDims - 1 - k];
  IID iid = IID_IUnknown;
  PVOID extra = nullptr;
  if (psa->fFeatures & FADF_RECORD) {
    extra = RecordInfoOf(psa);
  } else if (psa->fFeatures & FADF_HAVEIID) {
    std::memcpy(&iid, Prefix(psa), sizeof(iid));
    extra = &iid;
  }
  SAFEARRAY* copy = Create(vt, psa->cDims, bounds, extra, false);
  delete[] bounds;
  if (!copy) return E_OUTOFMEMORY;
  const uint64_t count = ElementCount(psa);
  for (uint64_t k = 0; k < count; ++k) {
    hr = CopyElement(psa, ElementAt(psa, k), ElementAt(copy, k));
    if (FAILED(hr)) {
      SafeArrayDestroy(copy);
      return hr;
    }
  }
  *ppsaOut = copy;
  return S_OK;
}

UINT SafeArrayGetDim(SAFEARRAY* psa) { return psa ? psa->cDims : 0; }

UINT SafeArrayGetElemsize(SAFEARRAY* psa) { return psa ? psa->cbElements : 0; }

HRESULT SafeArrayGetLBound(SAFEARRAY* psa, UINT nDim, LONG* plLbound) {
  if (!psa || !plLbound) return E_INVALIDARG;
  if (nDim == 0 || nDim > psa->cDims) return DISP_E_BADINDEX;
  *plLbound = psa->rgsabound[psa->cDims - nDim].lLbound;
  return S_OK;
}

HRESULT SafeArrayGetUBound(SAFEARRAY* psa, UINT nDim, LONG* plUbound) {
  if (!psa || !plUbound) return E_INVALIDARG;
  if (nDim == 0 || nDim > psa->cDims) return DISP_E_BADINDEX;
  const SAFEARRAYBOUND& bound = psa->rgsabound[psa->cDims - nDim];
  *plUbound = static_cast<LONG>(static_cast<int64_t>(bound.lLbound) + bound.cElements - 1);
  return S_OK;
}

HRESULT SafeArrayGetVartype(SAFEARRAY* psa, VARTYPE* pvt) {
  if (!psa || !pvt) return E_INVALIDARG;
  if (psa->fFeatures & FADF_RECORD) {
    *pvt = VT_RECORD;
  } else if (psa->fFeatures & FADF_HAVEIID) {
    *pvt = (psa->fFeatures & FADF_DISPATCH) ? VT_DISPATCH : VT_UNKNOWN;
  } else if (psa->fFeatures & FADF_HAVEVARTYPE) {
    DWORD type = 0;
    std::memcpy(&type, Prefix(psa) + 12, sizeof(type));
    *pvt = static_cast<VARTYPE>(type);
  } else {
    return E_INVALIDARG;
  }
  return S_OK;
}

HRESULT SafeArrayGetRecordInfo(SAFEARRAY* psa, IRecordInfo** prinfo) {
  if (!psa || !prinfo) return E_INVALIDARG;
  *prinfo = nullptr;
  if (!(psa->fFeatures & FADF_RECORD)) return E_INVALIDARG;
  *prinfo = RecordInfoOf(psa);
  if (*prinfo) (*prinfo)->AddRef();
  return S_OK;
}

HRESULT SafeArrayLock(SAFEARRAY* psa) {
  if (!psa) return E_INVALIDARG;
  if (__atomic_add_fetch(&psa->cLocks, 1, __ATOMIC_ACQ_REL) > kMaxLocks) {
    __atomic_sub_fetch(&psa->cLocks, 1, __ATOMIC_ACQ_REL);
    return E_UNEXPECTED;
  }
  return S_OK;
}

HRESULT SafeArrayUnlock(SAFEARRAY* psa) {
  if (!psa) return E_INVALIDARG;
  ULONG locks = __atomic_load_n(&psa->cLocks, __ATOMIC_ACQUIRE);
  do {
    if (locks == 0) return E_UNEXPECTED;
  } while (!__atomic_compare_exchange_n(&psa->cLocks, &locks, locks - 1, false, __ATOMIC_ACQ_REL,
                                        __ATOMIC_ACQUIRE));
  return S_OK;
}

HRESULT SafeArrayAccessData(SAFEARRAY* psa, void** ppvData) {
  if (!psa || !ppvData) return E_INVALIDARG;
  HRESULT hr = SafeArrayLock(psa);
  *ppvData = SUCCEEDED(hr) ? psa->pvData : nullptr;
  return hr;
}

HRESULT SafeArrayUnaccessData(SAFEARRAY* psa) { return SafeArrayUnlock(psa); }

HRESULT SafeArrayPtrOfIndex(SAFEARRAY* psa, LONG* rgIndices, void** ppvData) {
  if (!psa || !rgIndices || !ppvData) return E_INVALIDARG;
  uint64_t cell = 0;
  HRESULT hr = CellOffset(psa, rgIndices, &cell);
  *ppvData = SUCCEEDED(hr) ? ElementAt(psa, cell) : nullptr;
  return hr;
}

HRESULT SafeArrayGetElement(SAFEARRAY* psa, LONG* rgIndices, void* pv) {
  if (!psa || !rgIndices || !pv) return E_INVALIDARG;
  uint64_t cell = 0;
  HRESULT hr = CellOffset(psa, rgIndices, &cell);
  if (FAILED(hr)) return hr;
  SafeArrayLock(psa);
  hr = CopyElement(psa, ElementAt(psa, cell), static_cast<char*>(pv));
  SafeArrayUnlock(psa);
  return hr;
}

// BSTR, IUnknown* and IDispatch* come as the value itself; every other type by address.
HRESULT SafeArrayPutElement(SAFEARRAY* psa, LONG* rgIndices, void* pv) {
  if (!psa || !rgIndices) return E_INVALIDARG;
  const bool byValue = (psa->fFeatures & (FADF_BSTR | FADF_UNKNOWN | FADF_DISPATCH)) != 0;
  if (!pv && !byValue) return E_INVALIDARG;
  uint64_t cell = 0;
  HRESULT hr = CellOffset(psa, rgIndices, &cell);
  if (FAILED(hr)) return hr;
  char* slot = ElementAt(psa, cell);
  SafeArrayLock(psa);
  if (byValue) {
    // Copy first: the new value may be the one already stored.
    char fresh[sizeof(void*)];
    hr = CopyElement(psa, reinterpret_cast<const char*>(&pv), fresh);
    if (SUCCEEDED(hr)) {
      ClearElement(psa, slot);
      std::memcpy(slot, fresh, sizeof(fresh));
    }
  } else if (psa->fFeatures & FADF_VARIANT) {
    VARIANT fresh;
    hr = CopyElement(psa, static_cast<const char*>(pv), reinterpret_cast<char*>(&fresh));
    if (SUCCEEDED(hr)) {
      ClearElement(psa, slot);
      std::memcpy(slot, &fresh, sizeof(fresh));
    }
  } else if (psa->fFeatures & FADF_RECORD) {
    ClearElement(psa, slot);
    hr = CopyElement(psa, static_cast<const char*>(pv), slot);
  } else {
    std::memcpy(slot, pv, psa->cbElements);
  }
  SafeArrayUnlock(psa);
  return hr;
}
