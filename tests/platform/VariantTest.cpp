#include <gtest/gtest.h>

#include "PlatformTest.h"
#include "platform/ScopedBstr.h"
#include "platform/ScopedVariant.h"

using tarnix::ScopedVariant;
using tarnix::test::CountedObject;
using tarnix::test::Wide;

namespace {

// The text VariantChangeType(VT_BSTR, flags) makes of v, or the failure code as text.
std::string AsText(VARIANT v, USHORT flags = 0) {
  ScopedVariant out;
  const HRESULT hr = VariantChangeType(out.Receive(), &v, flags, VT_BSTR);
  if (FAILED(hr)) {
    char code[16];
    std::snprintf(code, sizeof(code), "hr=%08x", static_cast<unsigned>(hr));
    return code;
  }
  EXPECT_EQ(out.type(), VT_BSTR);
  return tarnix::WideToUtf8(out.Get().bstrVal, SysStringLen(out.Get().bstrVal));
}

template <class Setter>
VARIANT Make(VARTYPE vt, Setter set) {
  VARIANT v;
  VariantInit(&v);
  v.vt = vt;
  set(v);
  return v;
}

}  // namespace

TEST(Variant, ChangeTypeToTextGivesTheSystemsTextForEveryTypeTheComponentConverts) {
  EXPECT_EQ(AsText(Make(VT_I2, [](VARIANT& v) { v.iVal = -42; })), "-42");
  EXPECT_EQ(AsText(Make(VT_I4, [](VARIANT& v) { v.lVal = 42; })), "42");
  EXPECT_EQ(AsText(Make(VT_UI2, [](VARIANT& v) { v.uiVal = 65535; })), "65535");
  EXPECT_EQ(AsText(Make(VT_UI4, [](VARIANT& v) { v.ulVal = 4294967295u; })), "4294967295");
  EXPECT_EQ(AsText(Make(VT_I8, [](VARIANT& v) { v.llVal = -9000000000LL; })), "-9000000000");
  EXPECT_EQ(AsText(Make(VT_UI8, [](VARIANT& v) { v.ullVal = 18000000000000000000ULL; })),
            "18000000000000000000");
  EXPECT_EQ(AsText(Make(VT_I1, [](VARIANT& v) { v.cVal = -5; })), "-5");
  EXPECT_EQ(AsText(Make(VT_UI1, [](VARIANT& v) { v.bVal = 200; })), "200");
  EXPECT_EQ(AsText(Make(VT_INT, [](VARIANT& v) { v.intVal = -7; })), "-7");
  EXPECT_EQ(AsText(Make(VT_UINT, [](VARIANT& v) { v.uintVal = 7; })), "7");

  // Reals: 7 significant digits for a float (not the digits of the widened double), 15
  // for a double, and an upper-case exponent.
  EXPECT_EQ(AsText(Make(VT_R4, [](VARIANT& v) { v.fltVal = 0.1f; })), "0.1");
  EXPECT_EQ(AsText(Make(VT_R4, [](VARIANT& v) { v.fltVal = 1.0f / 3; })), "0.3333333");
  EXPECT_EQ(AsText(Make(VT_R4, [](VARIANT& v) { v.fltVal = 12345678.0f; })), "1.234568E+07");
  EXPECT_EQ(AsText(Make(VT_R8, [](VARIANT& v) { v.dblVal = 0.1; })), "0.1");
  EXPECT_EQ(AsText(Make(VT_R8, [](VARIANT& v) { v.dblVal = 1.0 / 3; })), "0.333333333333333");
  EXPECT_EQ(AsText(Make(VT_R8, [](VARIANT& v) { v.dblVal = 1e20; })), "1E+20");
  EXPECT_EQ(AsText(Make(VT_R8, [](VARIANT& v) { v.dblVal = 1e-5; })), "1E-05");
  EXPECT_EQ(AsText(Make(VT_R8, [](VARIANT& v) { v.dblVal = -0.0; })), "0");

  EXPECT_EQ(AsText(Make(VT_BOOL, [](VARIANT& v) { v.boolVal = VARIANT_TRUE; })), "-1");
  EXPECT_EQ(AsText(Make(VT_BOOL, [](VARIANT& v) { v.boolVal = VARIANT_FALSE; })), "0");
  EXPECT_EQ(AsText(Make(VT_BOOL, [](VARIANT& v) { v.boolVal = 1; })), "1");  // as a short
  EXPECT_EQ(AsText(Make(VT_BOOL, [](VARIANT& v) { v.boolVal = VARIANT_TRUE; }), VARIANT_ALPHABOOL),
            "True");
  EXPECT_EQ(AsText(Make(VT_CY, [](VARIANT& v) { v.cyVal.int64 = 15000; })), "1.5");
  EXPECT_EQ(AsText(Make(VT_EMPTY, [](VARIANT&) {})), "");
  EXPECT_EQ(AsText(Make(VT_NULL, [](VARIANT&) {})), "hr=80020005");
  EXPECT_EQ(AsText(Make(VT_ERROR, [](VARIANT& v) { v.scode = 5; })), "hr=80020005");
  EXPECT_EQ(AsText(Make(VT_UNKNOWN, [](VARIANT& v) { v.punkVal = nullptr; })), "hr=80020005");
}

TEST(Variant, DatesBecomeUsShortDatesWithTheTimeOnlyWhenThereIsOne) {
  auto date = [](double value) {
    return AsText(Make(VT_DATE, [value](VARIANT& v) { v.date = value; }));
  };
  EXPECT_EQ(date(36526.0), "1/1/2000");
  EXPECT_EQ(date(36526.5), "1/1/2000 12:00:00 PM");
  EXPECT_EQ(date(1.0), "12/31/1899");
  EXPECT_EQ(date(0.0), "12:00:00 AM");
  EXPECT_EQ(date(0.5), "12:00:00 PM");
  EXPECT_EQ(date(-1.5), "12/29/1899 12:00:00 PM");
  // Rounded to the second; rounding up to midnight still shows the time.
  EXPECT_EQ(date(36526.25001), "1/1/2000 6:00:01 AM");
  EXPECT_EQ(date(36526.999999999), "1/2/2000 12:00:00 AM");
  EXPECT_EQ(date(2958465.0), "12/31/9999");
  EXPECT_EQ(date(-657434.0), "1/1/100");
  EXPECT_EQ(date(2958466.0), "hr=80070057");
  EXPECT_EQ(date(-657435.0), "hr=80070057");
}

TEST(Variant, ChangeTypeReadsThroughReferencesAndRefusesBadTypes) {
  LONG number = 7;
  VARIANT byref = Make(VT_I4 | VT_BYREF, [&number](VARIANT& v) { v.plVal = &number; });
  EXPECT_EQ(AsText(byref), "7");

  VARIANT bad = Make(0x77, [](VARIANT&) {});
  ScopedVariant out;
  EXPECT_EQ(VariantChangeType(out.Receive(), &bad, 0, VT_BSTR), DISP_E_BADVARTYPE);
  VARIANT four = Make(VT_I4, [](VARIANT& v) { v.lVal = 4; });
  EXPECT_EQ(VariantChangeType(out.Receive(), &four, 0, 0x77), DISP_E_BADVARTYPE);
  EXPECT_EQ(VariantChangeType(out.Receive(), &four, 0, VT_I4 | VT_BYREF), DISP_E_TYPEMISMATCH);
}

TEST(Variant, NumbersConvertWithBankersRoundingAndReportOverflow) {
  const auto real = [](double d) { return Make(VT_R8, [d](VARIANT& v) { v.dblVal = d; }); };
  const auto flag = [](VARIANT_BOOL b) {
    return Make(VT_BOOL, [b](VARIANT& v) { v.boolVal = b; });
  };
  ScopedVariant text(WSTR(" 42 ")), half(WSTR("2.5")), junk(WSTR("4x")), huge(WSTR("-1e999"));
  const struct {
    VARIANT from;
    HRESULT hr;
    LONG value;
  } cases[] = {
      {real(2.5), S_OK, 2},
      {real(3.5), S_OK, 4},
      {real(-2.5), S_OK, -2},
      {real(3e9), DISP_E_OVERFLOW, 0},
      {flag(VARIANT_TRUE), S_OK, -1},
      {flag(1), S_OK, 1},
      {Make(VT_EMPTY, [](VARIANT&) {}), S_OK, 0},
      {Make(VT_NULL, [](VARIANT&) {}), DISP_E_TYPEMISMATCH, 0},
      {text.Get(), S_OK, 42},
      {half.Get(), S_OK, 2},
      {junk.Get(), DISP_E_TYPEMISMATCH, 0},
      // Text beyond a double's range overflows rather than reading as zero.
      {huge.Get(), DISP_E_OVERFLOW, 0},
  };
  for (const auto& c : cases) {
    ScopedVariant result;
    VARIANT from = c.from;
    EXPECT_EQ(VariantChangeType(result.Receive(), &from, 0, VT_I4), c.hr) << from.vt;
    if (c.hr == S_OK) {
      EXPECT_EQ(result.Get().lVal, c.value) << from.vt;
    }
  }

  ScopedVariant big(LONG(70000));
  EXPECT_EQ(big.ChangeType(VT_I2), DISP_E_OVERFLOW);
  EXPECT_EQ(big.type(), VT_I4);  // a failed conversion leaves the value alone
  ScopedVariant realText(WSTR("2.5"));
  ASSERT_EQ(realText.ChangeType(VT_R8), S_OK);
  EXPECT_EQ(realText.Get().dblVal, 2.5);

  // The text of the largest double, rounded up to 15 digits, is beyond its range.
  ScopedVariant hugeReal(WSTR("1e999"));
  EXPECT_EQ(hugeReal.ChangeType(VT_R8), DISP_E_OVERFLOW);
  ScopedVariant largest(WSTR("1.79769313486232E+308"));
  EXPECT_EQ(largest.ChangeType(VT_R8), DISP_E_OVERFLOW);
  ScopedVariant tiny(WSTR("1e-999"));
  ASSERT_EQ(tiny.ChangeType(VT_R8), S_OK);
  EXPECT_EQ(tiny.Get().dblVal, 0.0);
}

TEST(Variant, ObjectsConvertToUnknownWithAReferenceOfTheirOwnAndNothingElseDoes) {
  const auto object = CountedObject();
  {
    ScopedVariant holder;
    holder.SetUnknown(object.Get());
    EXPECT_EQ(object->RefCount(), 2u);
    ScopedVariant unknown;
    ASSERT_EQ(VariantChangeType(unknown.Receive(), holder.AsInput(), 0, VT_UNKNOWN), S_OK);
    EXPECT_EQ(unknown.type(), VT_UNKNOWN);
    EXPECT_EQ(unknown.Get().punkVal, object.Get());
    EXPECT_EQ(object->RefCount(), 3u);

    // In place: the old reference is given back and a new one taken.
    ASSERT_EQ(VariantChangeType(unknown.AsInput(), unknown.AsInput(), 0, VT_UNKNOWN), S_OK);
    EXPECT_EQ(object->RefCount(), 3u);
    ScopedVariant number(WSTR("42"));
    ASSERT_EQ(VariantChangeType(number.AsInput(), number.AsInput(), 0, VT_I4), S_OK);
    EXPECT_EQ(number.Get().lVal, 42);
  }
  EXPECT_EQ(object->RefCount(), 1u);

  ScopedVariant empty, null, number(LONG(1)), text(WSTR("x"));
  null.Reset(Make(VT_NULL, [](VARIANT&) {}));
  for (const ScopedVariant* from : {&empty, &null, &number, &text}) {
    ScopedVariant out;
    EXPECT_EQ(VariantChangeType(out.Receive(), from->AsInput(), 0, VT_UNKNOWN), DISP_E_TYPEMISMATCH)
        << from->type();
    EXPECT_EQ(out.type(), VT_EMPTY);
  }
}

TEST(Variant, CopyAndClearOwnWhatTheVariantHolds) {
  const auto object = CountedObject();
  {
    ScopedVariant text(WSTR("value"));
    ScopedVariant copy;
    ASSERT_EQ(text.CopyTo(&copy), S_OK);
    EXPECT_NE(copy.Get().bstrVal, text.Get().bstrVal);
    EXPECT_EQ(tarnix::WideToUtf8(copy.Get().bstrVal), "value");

    ScopedVariant unknown;
    unknown.SetUnknown(object.Get());
    ScopedVariant second;
    ASSERT_EQ(unknown.CopyTo(&second), S_OK);
    EXPECT_EQ(object->RefCount(), 3u);
    // Copying over a variant releases what it held.
    ASSERT_EQ(text.CopyTo(&second), S_OK);
    EXPECT_EQ(object->RefCount(), 2u);
  }
  EXPECT_EQ(object->RefCount(), 1u);

  // A BSTR keeps its exact byte length through a copy, odd lengths included.
  VARIANT odd;
  VariantInit(&odd);
  odd.vt = VT_BSTR;
  odd.bstrVal = SysAllocStringByteLen("abc", 3);
  ScopedVariant owner;
  owner.Reset(odd);
  ScopedVariant copy;
  ASSERT_EQ(owner.CopyTo(&copy), S_OK);
  EXPECT_EQ(SysStringByteLen(copy.Get().bstrVal), 3u);

  VARIANT bad;
  VariantInit(&bad);
  bad.vt = 0x77;
  EXPECT_EQ(VariantClear(&bad), DISP_E_BADVARTYPE);
}

TEST(Variant, BstrCompareTellsCaseApartAndTreatsNullAsEmpty) {
  tarnix::ScopedBstr lower(WSTR("abc")), upper(WSTR("ABC")), empty(WSTR(""));
  EXPECT_EQ(VarBstrCmp(lower.Get(), lower.Get(), LOCALE_USER_DEFAULT, 0), VARCMP_EQ);
  EXPECT_EQ(VarBstrCmp(lower.Get(), upper.Get(), LOCALE_USER_DEFAULT, 0), VARCMP_LT);
  EXPECT_EQ(VarBstrCmp(upper.Get(), lower.Get(), LOCALE_USER_DEFAULT, 0), VARCMP_GT);
  EXPECT_EQ(VarBstrCmp(nullptr, empty.Get(), LOCALE_USER_DEFAULT, 0), VARCMP_EQ);
  EXPECT_EQ(VarBstrCmp(nullptr, lower.Get(), LOCALE_USER_DEFAULT, 0), VARCMP_LT);
}

TEST(Bstr, StringsAreLengthPrefixedAndKeepOddByteCounts) {
  BSTR text = SysAllocString(WSTR("hello"));
  ASSERT_NE(text, nullptr);
  EXPECT_EQ(SysStringLen(text), 5u);
  EXPECT_EQ(SysStringByteLen(text), 10u);
  EXPECT_EQ(reinterpret_cast<const uint32_t*>(text)[-1], 10u);
  EXPECT_EQ(text[5], 0);
  SysFreeString(text);

  BSTR odd = SysAllocStringByteLen("abc", 3);
  EXPECT_EQ(SysStringLen(odd), 1u);
  EXPECT_EQ(SysStringByteLen(odd), 3u);
  SysFreeString(odd);

  BSTR embedded = SysAllocStringLen(WSTR("a\0b"), 3);
  EXPECT_EQ(SysStringLen(embedded), 3u);
  SysFreeString(embedded);

  EXPECT_EQ(SysAllocString(nullptr), nullptr);
  EXPECT_EQ(SysStringLen(nullptr), 0u);
  SysFreeString(nullptr);
}
