// VariantChangeType to VT_BSTR from every VARTYPE the layer knows, with fuzzer-chosen
// values and flags: directly, by reference, in place, through an object's default value,
// and with VARTYPEs it does not know. Whole numbers, currency and booleans must read back
// from their text to the same value; reals to a value as near as their digits allow.
#include "FuzzSupport.h"

#include "platform/ScopedVariant.h"

#include <atomic>
#include <cmath>
#include <memory>

namespace {

using tarnix::ScopedVariant;
using tarnix::fuzz::Input;

// An Automation object whose default property is a given value.
class ValueObject final : public IDispatch {
 public:
  explicit ValueObject(const VARIANT& value) { VariantCopy(&value_, const_cast<VARIANT*>(&value)); }
  ~ValueObject() { VariantClear(&value_); }

  STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
    if (!object) return E_POINTER;
    if (iid != IID_IUnknown && iid != IID_IDispatch) {
      *object = nullptr;
      return E_NOINTERFACE;
    }
    AddRef();
    *object = static_cast<IDispatch*>(this);
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
  STDMETHODIMP_(ULONG) Release() override { return --references_; }
  STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS*, VARIANT* result,
                      EXCEPINFO*, UINT*) override {
    if (member != DISPID_VALUE || !(flags & DISPATCH_PROPERTYGET) || !result) return E_NOTIMPL;
    return VariantCopy(result, &value_);
  }

  // Held by the stack frame that made it: one reference, and none left over.
  ULONG references() const { return references_; }

 private:
  VARIANT value_ = {};
  std::atomic<ULONG> references_{1};
};

// What the value kinds are built from.
enum Kind : uint8_t {
  kPlain,     // one of the VARTYPEs below, with fuzzer bytes
  kText,      // VT_BSTR with the rest of the input
  kNullText,  // VT_BSTR with a null string
  kObject,    // VT_DISPATCH or VT_UNKNOWN whose default value is a plain value
  kNoObject,  // VT_DISPATCH or VT_UNKNOWN with a null pointer
  kArray,     // VT_ARRAY | VT_BSTR
  kAnyType,   // any VARTYPE without pointers behind it, known or not
  kKinds
};

const VARTYPE kPlainTypes[] = {VT_EMPTY, VT_NULL, VT_I1,   VT_I2,  VT_I4,   VT_INT,
                               VT_I8,    VT_UI1,  VT_UI2,  VT_UI4, VT_UINT, VT_UI8,
                               VT_R4,    VT_R8,   VT_DATE, VT_CY,  VT_BOOL, VT_ERROR};

bool HasPointer(VARTYPE vt) {
  if (vt & (VT_BYREF | VT_ARRAY)) return true;
  switch (vt & VT_TYPEMASK) {
    case VT_BSTR:
    case VT_DISPATCH:
    case VT_UNKNOWN:
    case VT_VARIANT:
    case VT_RECORD: return true;
    default: return false;
  }
}

VARIANT Plain(Input& in) {
  VARIANT v;
  VariantInit(&v);
  v.vt = kPlainTypes[in.Take<uint8_t>() % (sizeof(kPlainTypes) / sizeof(kPlainTypes[0]))];
  v.ullVal = in.Take<uint64_t>();
  return v;
}

// The source value; `object` keeps an object the value points at alive.
VARIANT Source(Input& in, std::unique_ptr<ValueObject>* object) {
  VARIANT v;
  VariantInit(&v);
  switch (in.Take<uint8_t>() % kKinds) {
    case kPlain: return Plain(in);
    case kText: {
      const WString text = in.RestAsText();
      v.vt = VT_BSTR;
      v.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
      return v;
    }
    case kNullText:
      v.vt = VT_BSTR;
      v.bstrVal = nullptr;
      return v;
    case kObject: {
      v.vt = in.Take<uint8_t>() & 1 ? VT_DISPATCH : VT_UNKNOWN;
      ScopedVariant inner;
      inner.Reset(in.Take<uint8_t>() & 1 ? Plain(in) : Source(in, object));
      if (*object) return Plain(in);  // one object at most
      object->reset(new ValueObject(inner.Get()));
      v.pdispVal = object->get();
      v.pdispVal->AddRef();  // the value's own reference
      return v;
    }
    case kNoObject:
      v.vt = in.Take<uint8_t>() & 1 ? VT_DISPATCH : VT_UNKNOWN;
      v.punkVal = nullptr;
      return v;
    case kArray: {
      v.vt = VT_ARRAY | VT_BSTR;
      v.parray = SafeArrayCreateVector(VT_BSTR, 0, in.Take<uint8_t>() % 4);
      return v;
    }
    default: {
      const VARTYPE vt = in.Take<VARTYPE>();
      if (HasPointer(vt)) return Plain(in);
      v.vt = vt;
      v.ullVal = in.Take<uint64_t>();
      return v;
    }
  }
}

// A reference to the value: to its data for the plain types, or to the whole VARIANT.
VARIANT ByReference(VARIANT& value, bool toVariant) {
  VARIANT ref;
  VariantInit(&ref);
  if (toVariant || HasPointer(value.vt) || value.vt == VT_EMPTY || value.vt == VT_NULL) {
    ref.vt = VT_BYREF | VT_VARIANT;
    ref.pvarVal = &value;
  } else {
    ref.vt = VT_BYREF | value.vt;
    ref.byref = &value.llVal;
  }
  return ref;
}

bool IsDefinedFailure(HRESULT hr) {
  return hr == DISP_E_TYPEMISMATCH || hr == DISP_E_BADVARTYPE || hr == DISP_E_OVERFLOW ||
         hr == E_INVALIDARG || hr == E_OUTOFMEMORY;
}

// Text of a number reads back as that number.
void CheckReadsBack(const VARIANT& source, const VARIANT& text) {
  const VARTYPE vt = source.vt;
  ScopedVariant back;
  const HRESULT hr = VariantChangeType(back.Receive(), const_cast<VARIANT*>(&text), 0, vt);
  switch (vt) {
    case VT_I1:
    case VT_UI1: FUZZ_CHECK(hr == S_OK && back.Get().bVal == source.bVal); break;
    case VT_I2:
    case VT_UI2: FUZZ_CHECK(hr == S_OK && back.Get().uiVal == source.uiVal); break;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT: FUZZ_CHECK(hr == S_OK && back.Get().ulVal == source.ulVal); break;
    case VT_I8:
    case VT_UI8: FUZZ_CHECK(hr == S_OK && back.Get().ullVal == source.ullVal); break;
    case VT_BOOL:
      FUZZ_CHECK(hr == S_OK && (back.Get().boolVal != 0) == (source.boolVal != 0));
      break;
    case VT_CY:
      // Exact while the scaled value is still a whole double.
      if (std::llabs(source.cyVal.int64) < (1LL << 50)) {
        FUZZ_CHECK(hr == S_OK && back.Get().cyVal.int64 == source.cyVal.int64);
      }
      break;
    case VT_R8:
      if (std::isfinite(source.dblVal)) {
        // Rounded to 15 digits, the largest values name a number beyond the range.
        if (hr == DISP_E_OVERFLOW)
          FUZZ_CHECK(std::fabs(source.dblVal) > 1.797693134862305e308);
        else
          FUZZ_CHECK(hr == S_OK && std::fabs(back.Get().dblVal - source.dblVal) <=
                                       1e-14 * std::fabs(source.dblVal));
      }
      break;
    case VT_R4:
      if (std::isfinite(source.fltVal)) {
        if (hr == DISP_E_OVERFLOW)
          FUZZ_CHECK(std::fabs(source.fltVal) > 3.4028225e38f);
        else
          FUZZ_CHECK(hr == S_OK && std::fabs(back.Get().fltVal - source.fltVal) <=
                                       1e-6f * std::fabs(source.fltVal));
      }
      break;
    default: break;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input in(data, size);
  const USHORT flags = in.Take<USHORT>();
  const uint8_t mode = in.Take<uint8_t>();
  std::unique_ptr<ValueObject> object;
  {
    ScopedVariant source;
    source.Reset(Source(in, &object));
    VARIANT before = source.Get();

    ScopedVariant result;
    HRESULT hr;
    if (mode & 1) {
      // In place: the destination is the source.
      ScopedVariant copy;
      if (FAILED(source.CopyTo(&copy))) copy.Reset(before);  // a VARTYPE nobody can copy
      hr = VariantChangeType(copy.AsInput(), copy.AsInput(), flags, VT_BSTR);
      FUZZ_CHECK(SUCCEEDED(hr) ? copy.type() == VT_BSTR : copy.type() == before.vt);
      result = std::move(copy);
    } else if (mode & 2) {
      VARIANT ref = ByReference(*source.AsInput(), mode & 4);
      hr = VariantChangeType(result.Receive(), &ref, flags, VT_BSTR);
    } else {
      hr = VariantChangeType(result.Receive(), source.AsInput(), flags, VT_BSTR);
    }
    // The source is never changed.
    FUZZ_CHECK(source.type() == before.vt && source.Get().ullVal == before.ullVal);

    if (FAILED(hr)) {
      FUZZ_CHECK(IsDefinedFailure(hr));
    } else {
      FUZZ_CHECK(result.type() == VT_BSTR);
      FUZZ_CHECK(result.Get().bstrVal != nullptr || before.vt == VT_BSTR);
      if (!(mode & 1) && !(flags & (VARIANT_ALPHABOOL | VARIANT_LOCALBOOL))) {
        CheckReadsBack(before, result.Get());
      }
    }
  }
  FUZZ_CHECK(!object || object->references() == 1);
  return 0;
}
