#include "platform/Win32.h"
#include "platform/WideText.h"

#include <cstdlib>
#include <cstring>

int lstrlenW(LPCWSTR lpString) {
  return lpString ? static_cast<int>(std::char_traits<WCHAR>::length(lpString)) : 0;
}

// A minus sign, then decimal digits up to the first other character. No blank is skipped
// and a plus sign is not a sign: " 5" and "+5" are 0, as the system answers.
int StrToIntW(PCWSTR pszSrc) {
  if (!pszSrc) return 0;
  const WCHAR* p = pszSrc;
  const bool negative = *p == u'-';
  if (negative) ++p;
  uint32_t value = 0;
  for (; *p >= u'0' && *p <= u'9'; ++p) value = value * 10 + static_cast<uint32_t>(*p - u'0');
  return static_cast<int>(negative ? 0u - value : value);
}

DWORD GetEnvironmentVariableW(LPCWSTR lpName, LPWSTR lpBuffer, DWORD nSize) {
  const char* value = lpName ? std::getenv(tarnix::WideToUtf8(lpName).c_str()) : nullptr;
  if (!value) {
    SetLastError(203);  // ERROR_ENVVAR_NOT_FOUND
    return 0;
  }
  const WString text = tarnix::Utf8ToWide(value);
  // Too small a buffer: the size needed, terminator included.
  if (!lpBuffer || nSize <= text.size()) return static_cast<DWORD>(text.size() + 1);
  std::memcpy(lpBuffer, text.c_str(), (text.size() + 1) * sizeof(WCHAR));
  return static_cast<DWORD>(text.size());
}
