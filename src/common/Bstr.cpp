#include "common/Bstr.h"

#include "common/HResultError.h"

#include <limits>

namespace tarnix {

ScopedBstr NewBstr(const WCHAR* text, size_t length) {
  if (length > std::numeric_limits<UINT>::max() / sizeof(WCHAR)) throw HResultError(E_OUTOFMEMORY);
  ScopedBstr result;
  result.Reset(SysAllocStringLen(text, static_cast<UINT>(length)));
  if (!result.Get()) throw HResultError(E_OUTOFMEMORY);
  return result;
}

ScopedVariant TextArrayVariant(const std::vector<WString>& strings) {
  ScopedSafeArray array(SafeArrayCreateVector(VT_BSTR, 0, static_cast<ULONG>(strings.size())));
  if (!array) throw HResultError(E_OUTOFMEMORY);
  if (!strings.empty()) {
    ScopedSafeArrayAccess<BSTR> elements(array.Get());
    ThrowIfFailed(elements.result());
    for (size_t i = 0; i < strings.size(); ++i) elements[i] = NewBstr(strings[i]).Release();
  }
  return ScopedVariant(std::move(array), VT_BSTR);
}

}  // namespace tarnix
