// Code pages: every ANSI and OEM code page is UTF-8 here, as it is on a Linux desktop.
#include "platform/Win32.h"
#include "platform/WideText.h"

#include <cstring>

namespace {

bool KnownCodePage(UINT codePage) {
  return codePage == CP_ACP || codePage == CP_OEMCP || codePage == CP_MACCP ||
         codePage == CP_THREAD_ACP || codePage == CP_UTF8;
}

bool ValidUtf8(const char* text, size_t length) {
  // Re-encoding is exact only when nothing was replaced.
  const std::string original(text, length);
  return tarnix::WideToUtf8(tarnix::Utf8ToWide(original)) == original;
}

bool ValidUtf16(const WCHAR* text, size_t length) {
  for (size_t k = 0; k < length; ++k) {
    const WCHAR c = text[k];
    if (c >= 0xD800 && c <= 0xDBFF) {
      if (k + 1 >= length || text[k + 1] < 0xDC00 || text[k + 1] > 0xDFFF) return false;
      ++k;
    } else if (c >= 0xDC00 && c <= 0xDFFF) {
      return false;
    }
  }
  return true;
}

int Fail(DWORD error) {
  SetLastError(error);
  return 0;
}

}  // namespace

int MultiByteToWideChar(UINT CodePage, DWORD dwFlags, LPCCH lpMultiByteStr, int cbMultiByte,
                        LPWSTR lpWideCharStr, int cchWideChar) {
  if (!KnownCodePage(CodePage) || !lpMultiByteStr || cbMultiByte == 0 || cchWideChar < 0 ||
      (cchWideChar > 0 && !lpWideCharStr))
    return Fail(ERROR_INVALID_PARAMETER);
  // -1 means zero-terminated, the terminator being converted too.
  const size_t length =
      cbMultiByte < 0 ? std::strlen(lpMultiByteStr) + 1 : static_cast<size_t>(cbMultiByte);
  if ((dwFlags & MB_ERR_INVALID_CHARS) && !ValidUtf8(lpMultiByteStr, length))
    return Fail(ERROR_NO_UNICODE_TRANSLATION);
  const WString wide = tarnix::Utf8ToWide(std::string(lpMultiByteStr, length));
  if (cchWideChar == 0) return static_cast<int>(wide.size());
  if (wide.size() > static_cast<size_t>(cchWideChar)) return Fail(ERROR_INSUFFICIENT_BUFFER);
  std::memcpy(lpWideCharStr, wide.data(), wide.size() * sizeof(WCHAR));
  return static_cast<int>(wide.size());
}

int WideCharToMultiByte(UINT CodePage, DWORD dwFlags, LPCWCH lpWideCharStr, int cchWideChar,
                        LPSTR lpMultiByteStr, int cbMultiByte, LPCCH lpDefaultChar,
                        LPBOOL lpUsedDefaultChar) {
  if (!KnownCodePage(CodePage) || !lpWideCharStr || cchWideChar == 0 || cbMultiByte < 0 ||
      (cbMultiByte > 0 && !lpMultiByteStr))
    return Fail(ERROR_INVALID_PARAMETER);
  // As for UTF-8 on Windows, a default character makes no sense when every character fits.
  if (CodePage == CP_UTF8 && (lpDefaultChar || lpUsedDefaultChar))
    return Fail(ERROR_INVALID_PARAMETER);
  const size_t length = cchWideChar < 0 ? std::char_traits<WCHAR>::length(lpWideCharStr) + 1
                                        : static_cast<size_t>(cchWideChar);
  if ((dwFlags & WC_ERR_INVALID_CHARS) && !ValidUtf16(lpWideCharStr, length))
    return Fail(ERROR_NO_UNICODE_TRANSLATION);
  if (lpUsedDefaultChar) *lpUsedDefaultChar = FALSE;
  const std::string narrow = tarnix::WideToUtf8(lpWideCharStr, length);
  if (cbMultiByte == 0) return static_cast<int>(narrow.size());
  if (narrow.size() > static_cast<size_t>(cbMultiByte)) return Fail(ERROR_INSUFFICIENT_BUFFER);
  std::memcpy(lpMultiByteStr, narrow.data(), narrow.size());
  return static_cast<int>(narrow.size());
}
