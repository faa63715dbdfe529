#include "common/ProductName.h"

namespace tarnix {
namespace {

// The characters that end an unquoted name. The terminating zero belongs to the set.
bool IsSeparator(WCHAR c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\b' || c == 0;
}

// Where the name starts: right after "--product=", after the separators that follow
// "--product", or, with neither, at the start of the line (which names no product, so the
// registry lookups under it miss and their callers fall back). Null when the line ends
// before any name begins.
const WCHAR* FindValue(const WString& line) {
  static const WCHAR kWithEquals[] = WSTR("--product=");
  static const WCHAR kOption[] = WSTR("--product");
  size_t at = line.find(kWithEquals);
  if (at != WString::npos) return line.c_str() + at + (sizeof(kWithEquals) / sizeof(WCHAR) - 1);
  at = line.find(kOption);
  if (at == WString::npos) return line.c_str();
  const WCHAR* value = line.c_str() + at + (sizeof(kOption) / sizeof(WCHAR) - 1);
  while (*value != 0 && IsSeparator(*value)) ++value;
  return *value == 0 ? nullptr : value;
}

}  // namespace

WString GetProductName() {
  const WCHAR* commandLine = GetCommandLineW();
  if (!commandLine) return kDefaultProductName;
  const WString line(commandLine);
  const WCHAR* value = FindValue(line);
  if (!value) return kDefaultProductName;
  if (*value == '"') {
    const WCHAR* end = ++value;
    while (*end != 0 && *end != '"') ++end;
    if (*end == 0) return kDefaultProductName;
    return WString(value, end);
  }
  const WCHAR* end = value;
  while (!IsSeparator(*end)) ++end;
  return WString(value, end);
}

}  // namespace tarnix
