#include "HostRuntime.h"

// The compiler may call these for copies and zero-filling; with no C runtime linked they
// are ours. Byte loops: nothing here is large.
extern "C" {
void* memset(void* target, int value, size_t count) {
  auto* bytes = static_cast<volatile unsigned char*>(target);
  for (size_t i = 0; i < count; ++i) bytes[i] = static_cast<unsigned char>(value);
  return target;
}
void* memcpy(void* target, const void* source, size_t count) {
  auto* to = static_cast<volatile unsigned char*>(target);
  const auto* from = static_cast<const unsigned char*>(source);
  for (size_t i = 0; i < count; ++i) to[i] = from[i];
  return target;
}
// A pure virtual function was called: an object was used after (or before) its life.
int _purecall() {
  host::Print("FAILED: pure virtual function called\n");
  ExitProcess(3);
}
}

namespace host {
namespace {

int g_failures = 0;

void Write(const char* bytes, unsigned count) {
  DWORD written = 0;
  WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), bytes, count, &written, nullptr);
}

void Fail(const char* what) {
  ++g_failures;
  Print("FAILED: ");
  Print(what);
  Print("\n");
}

void FailText(const char* what, const WCHAR* actual, const char* relation, const WCHAR* expected) {
  Fail(what);
  Print("  text     \"");
  PrintWide(actual);
  Print(relation);
  PrintWide(expected);
  Print("\"\n");
}

}  // namespace

void Print(const char* text) {
  unsigned count = 0;
  while (text[count]) ++count;
  Write(text, count);
}

void PrintWide(const WCHAR* text) {
  if (!text) {
    Print("(null)");
    return;
  }
  char chunk[64];
  unsigned used = 0;
  for (; *text; ++text) {
    chunk[used++] = *text < 0x80 ? static_cast<char>(*text) : '?';
    if (used == sizeof chunk) {
      Write(chunk, used);
      used = 0;
    }
  }
  Write(chunk, used);
}

void PrintHex(unsigned long value) {
  char digits[11] = {'0', 'x'};
  for (int i = 0; i < 8; ++i) digits[9 - i] = "0123456789abcdef"[(value >> (4 * i)) & 0xF];
  Write(digits, 10);
}

unsigned Length(const WCHAR* text) {
  unsigned length = 0;
  while (text && text[length]) ++length;
  return length;
}

bool Same(const WCHAR* left, const WCHAR* right) {
  if (!left || !right) return left == right;
  for (; *left && *left == *right; ++left, ++right) {
  }
  return *left == *right;
}

bool StartsWith(const WCHAR* text, const WCHAR* prefix) {
  if (!text || !prefix) return false;
  for (; *prefix; ++text, ++prefix) {
    if (*text != *prefix) return false;
  }
  return true;
}

Text& Text::Append(const WCHAR* text) {
  for (; text && *text && length_ < kCapacity; ++text) buffer_[length_++] = *text;
  buffer_[length_] = 0;
  return *this;
}

void Check(bool ok, const char* what) {
  if (!ok) Fail(what);
}

void CheckCode(LONG actual, LONG expected, const char* what) {
  if (actual == expected) return;
  Fail(what);
  Print("  result ");
  PrintHex(static_cast<unsigned long>(actual));
  Print(", expected ");
  PrintHex(static_cast<unsigned long>(expected));
  Print("\n");
}

void CheckCount(long actual, long expected, const char* what) { CheckCode(actual, expected, what); }

void CheckText(const WCHAR* actual, const WCHAR* expected, const char* what) {
  if (!Same(actual, expected)) FailText(what, actual, "\"\n  expected \"", expected);
}

void CheckPrefix(const WCHAR* actual, const WCHAR* prefix, const char* what) {
  if (!StartsWith(actual, prefix)) FailText(what, actual, "\"\n  expected to begin \"", prefix);
}

int Failures() { return g_failures; }

}  // namespace host
