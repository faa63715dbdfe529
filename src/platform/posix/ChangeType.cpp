// VariantChangeType: the conversions an Automation client relies on, giving the texts the
// system gives for flags 0 with the en-US locale.
#include "platform/ComPtr.h"
#include "platform/Win32.h"
#include "platform/WideText.h"
#include "Internal.h"

#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <locale.h>
#include <stdlib.h>
#include <string>

using tarnix::ComPtr;

namespace {

// A numeric value on its way from one VARTYPE to another.
struct Number {
  enum Kind { kSigned, kUnsigned, kReal } kind = kSigned;
  int64_t i = 0;
  uint64_t u = 0;
  double d = 0;

  static Number Signed(int64_t v) {
    Number n;
    n.kind = kSigned;
    n.i = v;
    return n;
  }
  static Number Unsigned(uint64_t v) {
    Number n;
    n.kind = kUnsigned;
    n.u = v;
    return n;
  }
  static Number Real(double v) {
    Number n;
    n.kind = kReal;
    n.d = v;
    return n;
  }

  double AsDouble() const {
    return kind == kReal ? d : (kind == kSigned ? static_cast<double>(i) : static_cast<double>(u));
  }
  bool IsZero() const { return kind == kReal ? d == 0 : (kind == kSigned ? i == 0 : u == 0); }
};

// A non-owning view of the value a VT_BYREF variant points at.
bool Dereference(const VARIANT& byref, VARIANT* view) {
  VariantInit(view);
  const VARTYPE base = byref.vt & ~VT_BYREF;
  if (!byref.byref) return false;
  if (base == VT_VARIANT) {
    const VARIANT& inner = *byref.pvarVal;
    if (inner.vt & VT_BYREF) return false;  // Windows allows only one level
    *view = inner;
    return true;
  }
  view->vt = base;
  if (base & VT_ARRAY) {
    view->parray = *byref.pparray;
    return true;
  }
  switch (base) {
    case VT_I1:
    case VT_UI1: view->bVal = *byref.pbVal; return true;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL: view->uiVal = *byref.puiVal; return true;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_ERROR:
    case VT_R4: std::memcpy(&view->lVal, byref.byref, 4); return true;
    case VT_I8:
    case VT_UI8:
    case VT_R8:
    case VT_DATE:
    case VT_CY: std::memcpy(&view->llVal, byref.byref, 8); return true;
    case VT_BSTR: view->bstrVal = *byref.pbstrVal; return true;
    case VT_UNKNOWN:
    case VT_DISPATCH: view->punkVal = *byref.ppunkVal; return true;
    default: return false;
  }
}

// from_chars leaves the value alone when it is out of range, which would read "1e999" as
// 0; the C library's reading (in the "C" locale) tells an overflow, infinity, from an
// underflow, zero or a subnormal.
double OutOfRange(const char* decimal) {
  static const locale_t classic = newlocale(LC_ALL_MASK, "C", nullptr);
  return strtod_l(decimal, nullptr, classic);
}

bool IsBlank(WCHAR c) { return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n'; }

// Decimal text as the en-US locale writes it: blanks around, a sign, digits, a fraction,
// an exponent.
bool ParseNumber(BSTR text, Number* out) {
  if (!text) return false;
  std::string ascii;
  size_t begin = 0, end = SysStringLen(text);
  while (begin < end && IsBlank(text[begin])) ++begin;
  while (end > begin && IsBlank(text[end - 1])) --end;
  for (size_t k = begin; k < end; ++k) {
    if (text[k] >= 0x80) return false;
    ascii.push_back(static_cast<char>(text[k]));
  }
  bool negative = false;
  size_t pos = 0;
  if (pos < ascii.size() && (ascii[pos] == '+' || ascii[pos] == '-'))
    negative = ascii[pos++] == '-';
  if (pos >= ascii.size() || !((ascii[pos] >= '0' && ascii[pos] <= '9') || ascii[pos] == '.'))
    return false;
  const char* first = ascii.data() + pos;
  const char* last = ascii.data() + ascii.size();
  if (ascii.find_first_of(".eE", pos) == std::string::npos) {
    uint64_t magnitude = 0;
    auto [ptr, ec] = std::from_chars(first, last, magnitude);
    if (ec == std::errc() && ptr == last) {
      if (!negative) {
        *out = Number::Unsigned(magnitude);
        return true;
      }
      if (magnitude <= static_cast<uint64_t>(std::numeric_limits<int64_t>::max()) + 1) {
        *out = Number::Signed(static_cast<int64_t>(0 - magnitude));
        return true;
      }
    }
  }
  double value = 0;
  auto [ptr, ec] = std::from_chars(first, last, value, std::chars_format::general);
  if (ptr != last || (ec != std::errc() && ec != std::errc::result_out_of_range)) return false;
  if (ec == std::errc::result_out_of_range) value = OutOfRange(first);
  *out = Number::Real(negative ? -value : value);
  return true;
}

bool EqualsIgnoringCase(BSTR text, const char* word) {
  const size_t n = std::strlen(word);
  if (SysStringLen(text) != n) return false;
  for (size_t k = 0; k < n; ++k) {
    if (tarnix::posix::FoldCase(text[k]) != tarnix::posix::FoldCase(static_cast<WCHAR>(word[k])))
      return false;
  }
  return true;
}

// An object's value is its default property (DISPID_VALUE).
HRESULT DefaultValue(const VARIANT& object, USHORT flags, VARIANT* value) {
  if (!object.punkVal) return object.vt == VT_DISPATCH ? DISP_E_BADVARTYPE : DISP_E_TYPEMISMATCH;
  if (flags & VARIANT_NOVALUEPROP) return DISP_E_TYPEMISMATCH;
  ComPtr<IDispatch> dispatch;
  if (FAILED(object.punkVal->QueryInterface(IID_IDispatch, dispatch.ReceiveVoid())) || !dispatch)
    return DISP_E_TYPEMISMATCH;
  DISPPARAMS none = {nullptr, nullptr, 0, 0};
  VariantInit(value);
  HRESULT hr = dispatch->Invoke(DISPID_VALUE, GUID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET,
                                &none, value, nullptr, nullptr);
  if (FAILED(hr)) return DISP_E_TYPEMISMATCH;
  if (value->vt == VT_UNKNOWN || value->vt == VT_DISPATCH || (value->vt & (VT_BYREF | VT_ARRAY))) {
    VariantClear(value);
    return DISP_E_TYPEMISMATCH;
  }
  return S_OK;
}

HRESULT ToNumber(const VARIANT& v, USHORT flags, bool forBool, Number* out) {
  switch (v.vt) {
    case VT_EMPTY: *out = Number::Signed(0); return S_OK;
    case VT_I1: *out = Number::Signed(static_cast<signed char>(v.cVal)); return S_OK;
    case VT_I2: *out = Number::Signed(v.iVal); return S_OK;
    case VT_I4: *out = Number::Signed(v.lVal); return S_OK;
    case VT_INT: *out = Number::Signed(v.intVal); return S_OK;
    case VT_I8: *out = Number::Signed(v.llVal); return S_OK;
    case VT_UI1: *out = Number::Unsigned(v.bVal); return S_OK;
    case VT_UI2: *out = Number::Unsigned(v.uiVal); return S_OK;
    case VT_UI4: *out = Number::Unsigned(v.ulVal); return S_OK;
    case VT_UINT: *out = Number::Unsigned(v.uintVal); return S_OK;
    case VT_UI8: *out = Number::Unsigned(v.ullVal); return S_OK;
    case VT_R4: *out = Number::Real(v.fltVal); return S_OK;
    case VT_R8: *out = Number::Real(v.dblVal); return S_OK;
    case VT_DATE: *out = Number::Real(v.date); return S_OK;
    case VT_CY: *out = Number::Real(static_cast<double>(v.cyVal.int64) / 10000.0); return S_OK;
    // Whatever short it holds, as Windows converts it: a VT_BOOL of 1 is the number 1.
    case VT_BOOL: *out = Number::Signed(v.boolVal); return S_OK;
    case VT_BSTR:
      if (ParseNumber(v.bstrVal, out)) {
        return out->kind == Number::kReal && std::isinf(out->d) ? DISP_E_OVERFLOW : S_OK;
      }
      if (forBool && v.bstrVal &&
          (EqualsIgnoringCase(v.bstrVal, "true") || EqualsIgnoringCase(v.bstrVal, "false"))) {
        *out = Number::Signed(EqualsIgnoringCase(v.bstrVal, "true") ? -1 : 0);
        return S_OK;
      }
      return DISP_E_TYPEMISMATCH;
    case VT_UNKNOWN:
    case VT_DISPATCH: {
      VARIANT value;
      HRESULT hr = DefaultValue(v, flags, &value);
      if (FAILED(hr)) return hr;
      hr = ToNumber(value, flags, forBool, out);
      VariantClear(&value);
      return hr;
    }
    default: return DISP_E_TYPEMISMATCH;
  }
}

// Whole numbers within [low, high]; reals round half to even, as Automation does.
HRESULT ToInteger(const Number& n, double low, double high, int64_t* asSigned,
                  uint64_t* asUnsigned) {
  switch (n.kind) {
    case Number::kSigned:
      if (static_cast<double>(n.i) < low || (n.i > 0 && static_cast<double>(n.i) > high))
        return DISP_E_OVERFLOW;
      *asSigned = n.i;
      *asUnsigned = static_cast<uint64_t>(n.i);
      return S_OK;
    case Number::kUnsigned:
      if (static_cast<double>(n.u) > high) return DISP_E_OVERFLOW;
      *asSigned = static_cast<int64_t>(n.u);
      *asUnsigned = n.u;
      return S_OK;
    case Number::kReal: {
      const double r = std::nearbyint(n.d);
      if (std::isnan(r) || r < low || r > high) return DISP_E_OVERFLOW;
      if (r >= 9223372036854775808.0) {
        *asUnsigned = static_cast<uint64_t>(r);
        *asSigned = static_cast<int64_t>(*asUnsigned);
      } else {
        *asSigned = static_cast<int64_t>(r);
        *asUnsigned = static_cast<uint64_t>(*asSigned);
      }
      return S_OK;
    }
  }
  return DISP_E_TYPEMISMATCH;
}

HRESULT NumberTo(const Number& n, VARTYPE vt, VARIANT* out) {
  int64_t s = 0;
  uint64_t u = 0;
  HRESULT hr = S_OK;
  // The ends of the 64-bit ranges are not exact doubles; these bounds keep rounding honest.
  constexpr double kI64Low = -9223372036854775808.0, kI64High = 9223372036854774784.0;
  constexpr double kU64High = 18446744073709549568.0;
  switch (vt) {
    case VT_I1:
      hr = ToInteger(n, -128, 127, &s, &u);
      out->cVal = static_cast<CHAR>(s);
      break;
    case VT_UI1:
      hr = ToInteger(n, 0, 255, &s, &u);
      out->bVal = static_cast<BYTE>(u);
      break;
    case VT_I2:
      hr = ToInteger(n, -32768, 32767, &s, &u);
      out->iVal = static_cast<SHORT>(s);
      break;
    case VT_UI2:
      hr = ToInteger(n, 0, 65535, &s, &u);
      out->uiVal = static_cast<USHORT>(u);
      break;
    case VT_I4:
      hr = ToInteger(n, -2147483648.0, 2147483647.0, &s, &u);
      out->lVal = static_cast<LONG>(s);
      break;
    case VT_INT:
      hr = ToInteger(n, -2147483648.0, 2147483647.0, &s, &u);
      out->intVal = static_cast<INT>(s);
      break;
    case VT_UI4:
      hr = ToInteger(n, 0, 4294967295.0, &s, &u);
      out->ulVal = static_cast<ULONG>(u);
      break;
    case VT_UINT:
      hr = ToInteger(n, 0, 4294967295.0, &s, &u);
      out->uintVal = static_cast<UINT>(u);
      break;
    case VT_I8:
      if (n.kind == Number::kUnsigned &&
          n.u > static_cast<uint64_t>(std::numeric_limits<int64_t>::max()))
        return DISP_E_OVERFLOW;
      hr = ToInteger(n, kI64Low, n.kind == Number::kReal ? kI64High : 9.3e18, &s, &u);
      out->llVal = s;
      break;
    case VT_UI8:
      if (n.kind == Number::kSigned && n.i < 0) return DISP_E_OVERFLOW;
      hr = ToInteger(n, 0, n.kind == Number::kReal ? kU64High : 1.9e19, &s, &u);
      out->ullVal = u;
      break;
    case VT_R4: {
      const double d = n.AsDouble();
      if (std::fabs(d) > FLT_MAX) return DISP_E_OVERFLOW;
      out->fltVal = static_cast<float>(d);
      break;
    }
    case VT_R8: out->dblVal = n.AsDouble(); break;
    case VT_DATE: {
      const double d = n.AsDouble();
      if (!(d >= -657434.0 && d < 2958466.0)) return DISP_E_OVERFLOW;
      out->date = d;
      break;
    }
    case VT_CY: {
      const double scaled = std::nearbyint(n.AsDouble() * 10000.0);
      if (!(scaled >= kI64Low && scaled <= kI64High)) return DISP_E_OVERFLOW;
      out->cyVal.int64 = static_cast<LONGLONG>(scaled);
      break;
    }
    case VT_BOOL: out->boolVal = n.IsZero() ? VARIANT_FALSE : VARIANT_TRUE; break;
    default: return DISP_E_TYPEMISMATCH;
  }
  if (SUCCEEDED(hr)) out->vt = vt;
  return hr;
}

// Significant digits as %G gives them, upper-case exponent, independent of the C locale.
std::string RealText(double value, int digits) {
  if (value == 0) return "0";
  char buffer[64];
  auto result =
      std::to_chars(buffer, buffer + sizeof(buffer), value, std::chars_format::general, digits);
  std::string text(buffer, result.ptr);
  for (char& c : text) {
    if (c == 'e') c = 'E';
  }
  return text;
}

std::string CurrencyText(LONGLONG value) {
  const bool negative = value < 0;
  const uint64_t magnitude =
      negative ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
  std::string text = std::to_string(magnitude / 10000);
  uint64_t fraction = magnitude % 10000;
  if (fraction) {
    char digits[8];
    std::snprintf(digits, sizeof(digits), "%04u", static_cast<unsigned>(fraction));
    std::string f(digits);
    f.erase(f.find_last_not_of('0') + 1);
    text += "." + f;
  }
  return negative ? "-" + text : text;
}

// en-US short date "M/D/YYYY" and long time "h:mm:ss AM"; a date without a time of day
// shows only the date, and one on day 0 only the time.
HRESULT DateText(double date, std::string* out) {
  SYSTEMTIME st;
  if (!tarnix::posix::OleDateToSystemTime(date, &st)) return E_INVALIDARG;
  const double whole = std::trunc(date);
  const bool showDate = whole != 0;
  const bool showTime = whole == 0 || date != whole;
  char buffer[64] = "";
  std::string text;
  if (showDate) {
    std::snprintf(buffer, sizeof(buffer), "%u/%u/%u", st.wMonth, st.wDay, st.wYear);
    text = buffer;
  }
  if (showTime) {
    const unsigned hour12 = st.wHour % 12 == 0 ? 12 : st.wHour % 12;
    std::snprintf(buffer, sizeof(buffer), "%u:%02u:%02u %s", hour12, st.wMinute, st.wSecond,
                  st.wHour < 12 ? "AM" : "PM");
    if (!text.empty()) text += ' ';
    text += buffer;
  }
  *out = text;
  return S_OK;
}

HRESULT ToText(const VARIANT& v, USHORT flags, std::string* out) {
  switch (v.vt) {
    case VT_EMPTY: out->clear(); return S_OK;
    case VT_I1: *out = std::to_string(static_cast<signed char>(v.cVal)); return S_OK;
    case VT_I2: *out = std::to_string(v.iVal); return S_OK;
    case VT_I4: *out = std::to_string(v.lVal); return S_OK;
    case VT_INT: *out = std::to_string(v.intVal); return S_OK;
    case VT_I8: *out = std::to_string(v.llVal); return S_OK;
    case VT_UI1: *out = std::to_string(v.bVal); return S_OK;
    case VT_UI2: *out = std::to_string(v.uiVal); return S_OK;
    case VT_UI4: *out = std::to_string(v.ulVal); return S_OK;
    case VT_UINT: *out = std::to_string(v.uintVal); return S_OK;
    case VT_UI8: *out = std::to_string(v.ullVal); return S_OK;
    case VT_R4: *out = RealText(v.fltVal, 7); return S_OK;
    case VT_R8: *out = RealText(v.dblVal, 15); return S_OK;
    case VT_CY: *out = CurrencyText(v.cyVal.int64); return S_OK;
    case VT_DATE: return DateText(v.date, out);
    case VT_BOOL:
      if (flags & (VARIANT_ALPHABOOL | VARIANT_LOCALBOOL)) {
        *out = v.boolVal ? "True" : "False";
      } else {
        *out = std::to_string(v.boolVal);  // as a short: VARIANT_TRUE is "-1", a 1 is "1"
      }
      return S_OK;
    case VT_UNKNOWN:
    case VT_DISPATCH: {
      VARIANT value;
      HRESULT hr = DefaultValue(v, flags, &value);
      if (FAILED(hr)) return hr;
      if (value.vt == VT_BSTR) {
        *out = tarnix::WideToUtf8(value.bstrVal, SysStringLen(value.bstrVal));
      } else {
        hr = ToText(value, flags, out);
      }
      VariantClear(&value);
      return hr;
    }
    default: return DISP_E_TYPEMISMATCH;
  }
}

HRESULT ToBstr(const VARIANT& v, USHORT flags, VARIANT* out) {
  std::string text;
  HRESULT hr = ToText(v, flags, &text);
  if (FAILED(hr)) return hr;
  const WString wide = tarnix::Utf8ToWide(text);
  out->bstrVal = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
  if (!out->bstrVal) return E_OUTOFMEMORY;
  out->vt = VT_BSTR;
  return S_OK;
}

HRESULT ToObject(const VARIANT& v, VARTYPE vt, VARIANT* out) {
  if (v.vt != VT_UNKNOWN && v.vt != VT_DISPATCH) return DISP_E_TYPEMISMATCH;
  if (vt == VT_UNKNOWN) {
    // An IDispatch is an IUnknown: the same pointer serves, with a reference of its own.
    out->punkVal = v.punkVal;
    if (out->punkVal) out->punkVal->AddRef();
  } else if (v.punkVal) {
    void* dispatch = nullptr;
    if (FAILED(v.punkVal->QueryInterface(IID_IDispatch, &dispatch)) || !dispatch)
      return DISP_E_TYPEMISMATCH;
    out->pdispVal = static_cast<IDispatch*>(dispatch);
  } else {
    out->pdispVal = nullptr;
  }
  out->vt = vt;
  return S_OK;
}

HRESULT Convert(const VARIANT& source, USHORT flags, VARTYPE vt, VARIANT* out) {
  if (source.vt == vt) return VariantCopy(out, const_cast<VARIANT*>(&source));
  if (vt == VT_EMPTY || vt == VT_NULL) {
    out->vt = vt;
    return S_OK;
  }
  if (source.vt == VT_NULL || source.vt == VT_ERROR || (source.vt & VT_ARRAY))
    return DISP_E_TYPEMISMATCH;
  switch (vt) {
    case VT_BSTR: return ToBstr(source, flags, out);
    case VT_UNKNOWN:
    case VT_DISPATCH: return ToObject(source, vt, out);
    default: {
      Number n;
      HRESULT hr = ToNumber(source, flags, vt == VT_BOOL, &n);
      return FAILED(hr) ? hr : NumberTo(n, vt, out);
    }
  }
}

}  // namespace

HRESULT VariantChangeTypeEx(VARIANTARG* pvargDest, VARIANTARG* pvarSrc, LCID lcid, USHORT wFlags,
                            VARTYPE vt) {
  if (!pvargDest || !pvarSrc) return E_INVALIDARG;
  if (!tarnix::posix::IsValidVariantType(pvarSrc->vt)) return DISP_E_BADVARTYPE;
  if (vt & (VT_BYREF | VT_ARRAY)) return DISP_E_TYPEMISMATCH;
  if (!tarnix::posix::IsValidVariantType(vt) || vt == VT_RECORD || vt == VT_DECIMAL) {
    return tarnix::posix::IsValidVariantType(vt) ? DISP_E_TYPEMISMATCH : DISP_E_BADVARTYPE;
  }
  VARIANT source = *pvarSrc;
  if (pvarSrc->vt & VT_BYREF) {
    if (!Dereference(*pvarSrc, &source)) return DISP_E_TYPEMISMATCH;
  }
  VARIANT result;
  VariantInit(&result);
  HRESULT hr = Convert(source, wFlags, vt, &result);
  if (FAILED(hr)) return hr;
  // The destination may be the source itself: it is released only now that the result
  // owns everything it needs.
  VariantClear(pvargDest);
  *pvargDest = result;
  return S_OK;
}

HRESULT VariantChangeType(VARIANTARG* pvargDest, VARIANTARG* pvarSrc, USHORT wFlags, VARTYPE vt) {
  return VariantChangeTypeEx(pvargDest, pvarSrc, LOCALE_USER_DEFAULT, wFlags, vt);
}
