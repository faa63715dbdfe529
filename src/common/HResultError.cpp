#include "common/HResultError.h"

#include <cerrno>

namespace tarnix {

const char* HResultError::what() const noexcept {
  switch (static_cast<uint32_t>(code_)) {
    case 0x8007000Eu: return "out of memory (0x8007000e)";
    case 0x80070057u: return "invalid argument (0x80070057)";
    default: return "COM failure";
  }
}

HRESULT ResultOfErrorNumber(int error) {
  switch (error) {
    case ENOMEM: return E_OUTOFMEMORY;
    case EINVAL:
    case ERANGE: return E_INVALIDARG;
    default: return E_FAIL;
  }
}

void ThrowIfFailed(HRESULT hr) {
  if (FAILED(hr)) throw HResultError(hr);
}

}  // namespace tarnix
