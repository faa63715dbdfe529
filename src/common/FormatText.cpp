#include "common/FormatText.h"

#include "common/HResultError.h"

#include <new>

namespace tarnix {
namespace {

struct Directive {
  bool leftAlign = false;
  bool zeroPad = false;
  size_t width = 0;
  bool hasPrecision = false;
  size_t precision = 0;
  bool wide64 = false;  // ll or I64
  WCHAR conversion = 0;
};

bool IsDigit(WCHAR c) { return c >= '0' && c <= '9'; }

size_t ReadNumber(const WCHAR*& p) {
  size_t value = 0;
  while (IsDigit(*p)) value = value * 10 + static_cast<size_t>(*p++ - '0');
  return value;
}

// Reads the directive after a '%'; `p` is left on its conversion character (or on the
// terminating zero of a format that ends inside a directive).
Directive ParseDirective(const WCHAR*& p) {
  Directive d;
  for (;; ++p) {
    if (*p == '-')
      d.leftAlign = true;
    else if (*p == '0')
      d.zeroPad = true;
    else
      break;
  }
  d.width = ReadNumber(p);
  if (*p == '.') {
    ++p;
    d.hasPrecision = true;
    d.precision = ReadNumber(p);
  }
  if (p[0] == 'l' && p[1] == 'l') {
    d.wide64 = true;
    p += 2;
  } else if (p[0] == 'I' && p[1] == '6' && p[2] == '4') {
    d.wide64 = true;
    p += 3;
  } else if (*p == 'l' || *p == 'h') {
    ++p;
  }
  d.conversion = *p;
  return d;
}

void Pad(WString& out, size_t count, WCHAR fill) { out.append(count, fill); }

void AppendField(WString& out, const Directive& d, const WCHAR* body, size_t length, bool numeric) {
  size_t padding = d.width > length ? d.width - length : 0;
  if (d.leftAlign) {
    out.append(body, length);
    Pad(out, padding, ' ');
    return;
  }
  const bool zeros = d.zeroPad && numeric;
  if (zeros && length > 0 && body[0] == '-') {
    out += body[0];
    ++body;
    --length;
  }
  Pad(out, padding, zeros ? WCHAR('0') : WCHAR(' '));
  out.append(body, length);
}

void AppendText(WString& out, const Directive& d, const FormatArg& arg) {
  static const WCHAR kNull[] = {'(', 'n', 'u', 'l', 'l', ')', 0};
  const WCHAR* text = arg.Text() ? arg.Text() : kNull;
  size_t length = 0;
  while (text[length] && (!d.hasPrecision || length < d.precision)) ++length;
  AppendField(out, d, text, length, false);
}

void AppendNumber(WString& out, const Directive& d, const FormatArg& arg) {
  uint64_t bits = arg.Bits();
  if (!d.wide64) bits &= 0xFFFFFFFFu;
  WCHAR digits[24];
  WCHAR* end = digits + sizeof(digits) / sizeof(digits[0]);
  WCHAR* start = end;
  bool negative = false;
  uint64_t magnitude = bits;
  if (d.conversion == 'd' || d.conversion == 'i') {
    int64_t value = d.wide64
                        ? static_cast<int64_t>(bits)
                        : static_cast<int64_t>(static_cast<int32_t>(static_cast<uint32_t>(bits)));
    negative = value < 0;
    magnitude = negative ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
  }
  const unsigned base = (d.conversion == 'x' || d.conversion == 'X') ? 16 : 10;
  const char* alphabet = d.conversion == 'X' ? "0123456789ABCDEF" : "0123456789abcdef";
  do {
    *--start = static_cast<WCHAR>(alphabet[magnitude % base]);
    magnitude /= base;
  } while (magnitude != 0);
  if (d.hasPrecision) {
    while (static_cast<size_t>(end - start) < d.precision && start > digits + 1) *--start = '0';
  }
  if (negative) *--start = '-';
  Directive field = d;
  if (d.hasPrecision) field.zeroPad = false;
  AppendField(out, field, start, static_cast<size_t>(end - start), true);
}

}  // namespace

WString FormatTextArgs(const WCHAR* format, const FormatArg* args, size_t count) {
  WString out;
  if (!format) return out;
  try {
    size_t next = 0;
    for (const WCHAR* p = format; *p; ++p) {
      if (*p != '%') {
        out += *p;
        continue;
      }
      const WCHAR* start = p++;
      if (*p == '%') {
        out += '%';
        continue;
      }
      Directive d = ParseDirective(p);
      const FormatArg* arg = next < count ? &args[next] : nullptr;
      // A directive whose argument is missing, or of the other kind, prints nothing.
      const bool isText = arg && arg->GetKind() == FormatArg::Kind::Text;
      switch (d.conversion) {
        case 's':
          if (arg) ++next;
          if (isText) AppendText(out, d, *arg);
          break;
        case 'd':
        case 'i':
        case 'u':
        case 'x':
        case 'X':
          if (arg) ++next;
          if (arg && !isText) AppendNumber(out, d, *arg);
          break;
        case 0:
          // The format ends inside a directive: keep what was written of it.
          out.append(start, static_cast<size_t>(p - start));
          return out;
        default:
          // Not a directive this formatter knows: the text stays as it was written.
          out.append(start, static_cast<size_t>(p - start) + 1);
      }
    }
  } catch (const std::bad_alloc&) {
    throw HResultError(E_OUTOFMEMORY);
  }
  return out;
}

}  // namespace tarnix
