#pragma once

#include "platform/ScopedBstr.h"
#include "platform/Win32.h"

#include <cstddef>

namespace tarnix {

// A new BSTR holding a copy of the text. A failed allocation throws
// HResultError(E_OUTOFMEMORY): the callers have no result code to hand it back through.
ScopedBstr NewBstr(const WCHAR* text, size_t length);
inline ScopedBstr NewBstr(const WString& text) { return NewBstr(text.data(), text.size()); }

}  // namespace tarnix
