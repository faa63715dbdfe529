// printf-style formatting of wide text, the same on every platform (the C library's wide
// printf cannot serve: wchar_t is 32 bits outside Windows). Arguments are checked by type,
// so a mismatched argument gives a defined text instead of undefined behaviour.
//
// Directives: %s (wide text; a null pointer prints "(null)"), %d and %i (signed), %u,
// %x and %X (unsigned, hexadecimal), %% ; flags '-' and '0', a width, a precision (for %s
// the most characters taken), and the size prefixes l and h (32 bits, as on Windows, where
// long is 32 bits) and ll or I64 (64 bits). A directive without its argument prints nothing.
#pragma once

#include "platform/Win32.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace tarnix {

class FormatArg {
 public:
  enum class Kind { Text, Signed, Unsigned };

  FormatArg(const WCHAR* text) : kind_(Kind::Text), text_(text) {}
  FormatArg(WCHAR* text) : kind_(Kind::Text), text_(text) {}
  FormatArg(const WString& text) : kind_(Kind::Text), text_(text.c_str()) {}
  FormatArg(std::nullptr_t) : kind_(Kind::Text), text_(nullptr) {}

  template <class T, std::enable_if_t<std::is_integral_v<T> && !std::is_same_v<T, WCHAR>, int> = 0>
  FormatArg(T value) {
    if constexpr (std::is_signed_v<T>) {
      kind_ = Kind::Signed;
      signed_ = static_cast<int64_t>(value);
    } else {
      kind_ = Kind::Unsigned;
      unsigned_ = static_cast<uint64_t>(value);
    }
  }
  template <class T, std::enable_if_t<std::is_enum_v<T>, int> = 0>
  FormatArg(T value) : FormatArg(static_cast<std::underlying_type_t<T>>(value)) {}

  Kind GetKind() const { return kind_; }
  const WCHAR* Text() const { return kind_ == Kind::Text ? text_ : nullptr; }
  // The argument's bits, as printf would take them from the argument list.
  uint64_t Bits() const {
    switch (kind_) {
      case Kind::Signed: return static_cast<uint64_t>(signed_);
      case Kind::Unsigned: return unsigned_;
      default: return 0;
    }
  }

 private:
  Kind kind_ = Kind::Text;
  union {
    const WCHAR* text_;
    int64_t signed_;
    uint64_t unsigned_;
  };
};

// Formats `format` with `count` arguments.
WString FormatTextArgs(const WCHAR* format, const FormatArg* args, size_t count);

template <class... Args>
WString FormatText(const WCHAR* format, const Args&... args) {
  if constexpr (sizeof...(Args) == 0) {
    return FormatTextArgs(format, nullptr, 0);
  } else {
    const FormatArg list[] = {FormatArg(args)...};
    return FormatTextArgs(format, list, sizeof...(Args));
  }
}

}  // namespace tarnix
