// The facade's own copies of the strings a host passes in.
#pragma once

#include "platform/Win32.h"

#include <optional>

namespace tarnix {

// A copy of a zero-terminated host string that keeps a null string null. A copy that
// cannot be made throws HResultError: E_OUTOFMEMORY when memory runs out, E_INVALIDARG
// for a string too long to hold.
class HostString {
 public:
  explicit HostString(const WCHAR* text);

  const WCHAR* Get() const { return text_ ? text_->c_str() : nullptr; }

 private:
  std::optional<WString> text_;
};

}  // namespace tarnix
