// Helpers shared by the sources of the POSIX layer; not part of its interface.
#pragma once

#include "platform/Win32.h"

#include <string>

namespace tarnix::posix {

// Strict registry form "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}", either case.
bool ParseGuid(LPCOLESTR text, GUID* out);

// The length of a zero-terminated wide text.
inline size_t WideLength(const WCHAR* text) { return std::char_traits<WCHAR>::length(text); }

// Simple case folding for the comparisons Windows makes case-insensitively (registry names,
// NORM_IGNORECASE): ASCII, Latin-1, Greek and Cyrillic letters.
inline WCHAR FoldCase(WCHAR c) {
  if (c < 0x80) return (c >= u'a' && c <= u'z') ? static_cast<WCHAR>(c - 0x20) : c;
  if ((c >= 0xE0 && c <= 0xFE && c != 0xF7) || (c >= 0x3B1 && c <= 0x3C9 && c != 0x3C2) ||
      (c >= 0x430 && c <= 0x44F))
    return static_cast<WCHAR>(c - 0x20);
  if (c >= 0x450 && c <= 0x45F) return static_cast<WCHAR>(c - 0x50);
  if (c == 0xFF) return 0x178;
  return c;
}

// <0, 0, >0 as the folded texts order.
inline int CompareFolded(const WCHAR* a, size_t an, const WCHAR* b, size_t bn) {
  const size_t n = an < bn ? an : bn;
  for (size_t i = 0; i < n; ++i) {
    const WCHAR x = FoldCase(a[i]), y = FoldCase(b[i]);
    if (x != y) return x < y ? -1 : 1;
  }
  return an == bn ? 0 : (an < bn ? -1 : 1);
}

inline bool EqualsFolded(const std::basic_string<WCHAR>& a, const std::basic_string<WCHAR>& b) {
  return a.size() == b.size() && CompareFolded(a.data(), a.size(), b.data(), b.size()) == 0;
}

}  // namespace tarnix::posix

namespace tarnix::posix {

// A type a VARIANT may carry (VT_ARRAY and VT_BYREF combinations included).
bool IsValidVariantType(VARTYPE vt);

}  // namespace tarnix::posix

namespace tarnix::posix {

// An OLE date as calendar fields, rounded to whole seconds; false outside years 100..9999.
bool OleDateToSystemTime(double date, SYSTEMTIME* out);

}  // namespace tarnix::posix
