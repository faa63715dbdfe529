// What a host built without a C runtime provides for itself: console output, wide-text
// helpers, and a record of failed checks. Every check names what it checked; a failure is
// printed at once and counted.
#pragma once

#include <windows.h>

namespace host {

void Print(const char* text);
// ASCII as it is; anything else as '?' (the console's code page is not ours to assume).
void PrintWide(const WCHAR* text);
void PrintHex(unsigned long value);

unsigned Length(const WCHAR* text);
// Null equals only null.
bool Same(const WCHAR* left, const WCHAR* right);
bool StartsWith(const WCHAR* text, const WCHAR* prefix);

// Wide text built up in a fixed buffer; what does not fit is cut off (and then differs
// from whatever it is compared with). Constant-initialised as a global: nothing runs
// constructors of globals in a program without a C runtime.
class Text {
 public:
  constexpr Text() : buffer_{}, length_(0) {}
  explicit Text(const WCHAR* text) : Text() { Append(text); }
  Text& Append(const WCHAR* text);
  const WCHAR* Get() const { return buffer_; }
  unsigned Length() const { return length_; }

 private:
  static constexpr unsigned kCapacity = 400;
  WCHAR buffer_[kCapacity + 1];
  unsigned length_;
};

void Check(bool ok, const char* what);
void CheckCode(LONG actual, LONG expected, const char* what);
void CheckCount(long actual, long expected, const char* what);
void CheckText(const WCHAR* actual, const WCHAR* expected, const char* what);
void CheckPrefix(const WCHAR* actual, const WCHAR* prefix, const char* what);
int Failures();

}  // namespace host
