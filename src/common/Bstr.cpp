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

}  // namespace tarnix
