#include "module/HostString.h"

#include "common/HResultError.h"

#include <new>
#include <stdexcept>

namespace tarnix {

HostString::HostString(const WCHAR* text) {
  if (!text) return;
  try {
    text_.emplace(text);
  } catch (const std::bad_alloc&) {
    throw HResultError(E_OUTOFMEMORY);
  } catch (const std::length_error&) {
    throw HResultError(E_INVALIDARG);
  }
}

}  // namespace tarnix
