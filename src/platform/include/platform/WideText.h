// UTF-8 <-> UTF-16 for tests, logs and the demo, the same on every platform. Malformed
// input never fails: each bad sequence becomes U+FFFD.
#pragma once

#include "platform/Win32.h"

#include <string>

namespace tarnix {

inline WString Utf8ToWide(const std::string& text) {
  WString out;
  out.reserve(text.size());
  const auto* s = reinterpret_cast<const unsigned char*>(text.data());
  const size_t n = text.size();
  size_t i = 0;
  while (i < n) {
    const unsigned char lead = s[i];
    uint32_t cp = 0xFFFD;
    size_t extra = 0;
    uint32_t min = 0;
    if (lead < 0x80) {
      cp = lead;
    } else if (lead >= 0xC2 && lead <= 0xDF) {
      cp = lead & 0x1F, extra = 1, min = 0x80;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
      cp = lead & 0x0F, extra = 2, min = 0x800;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
      cp = lead & 0x07, extra = 3, min = 0x10000;
    }
    size_t used = 1;
    if (extra > 0) {
      size_t k = 0;
      while (k < extra && i + 1 + k < n && (s[i + 1 + k] & 0xC0) == 0x80) {
        cp = (cp << 6) | (s[i + 1 + k] & 0x3F);
        ++k;
      }
      used = 1 + k;
      if (k < extra || cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) cp = 0xFFFD;
    } else if (lead >= 0x80) {
      cp = 0xFFFD;
    }
    i += used;
    if (cp >= 0x10000) {
      cp -= 0x10000;
      out.push_back(static_cast<WCHAR>(0xD800 + (cp >> 10)));
      out.push_back(static_cast<WCHAR>(0xDC00 + (cp & 0x3FF)));
    } else {
      out.push_back(static_cast<WCHAR>(cp));
    }
  }
  return out;
}

inline std::string WideToUtf8(const WCHAR* text, size_t length) {
  std::string out;
  out.reserve(length);
  for (size_t i = 0; i < length; ++i) {
    uint32_t cp = static_cast<uint16_t>(text[i]);
    if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < length) {
      const uint32_t low = static_cast<uint16_t>(text[i + 1]);
      if (low >= 0xDC00 && low <= 0xDFFF) {
        cp = 0x10000 + ((cp - 0xD800) << 10) + (low - 0xDC00);
        ++i;
      }
    }
    if (cp >= 0xD800 && cp <= 0xDFFF) cp = 0xFFFD;  // an unpaired surrogate
    if (cp < 0x80) {
      out.push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
      out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
      out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
      out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
      out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
      out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
  }
  return out;
}

inline std::string WideToUtf8(const WString& text) { return WideToUtf8(text.data(), text.size()); }

// A null pointer reads as empty.
inline std::string WideToUtf8(const WCHAR* text) {
  return text ? WideToUtf8(text, std::char_traits<WCHAR>::length(text)) : std::string();
}

}  // namespace tarnix
