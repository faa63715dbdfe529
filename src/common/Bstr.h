#pragma once

#include "platform/ScopedBstr.h"
#include "platform/ScopedVariant.h"
#include "platform/Win32.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tarnix {

// A new BSTR holding a copy of the text. A failed allocation throws
// HResultError(E_OUTOFMEMORY): the callers have no result code to hand it back through.
ScopedBstr NewBstr(const WCHAR* text, size_t length);
inline ScopedBstr NewBstr(const WString& text) { return NewBstr(text.data(), text.size()); }
// A zero-terminated text; a null text gives an empty BSTR.
inline ScopedBstr NewBstr(const WCHAR* text) {
  return NewBstr(text, text ? std::char_traits<WCHAR>::length(text) : 0);
}

// The text as a VT_BSTR VARIANT, and the strings as a VT_ARRAY | VT_BSTR one; a copy that
// cannot be made throws as NewBstr does.
inline ScopedVariant TextVariant(const WString& text) { return ScopedVariant(NewBstr(text)); }
ScopedVariant TextArrayVariant(const std::vector<WString>& strings);

}  // namespace tarnix
