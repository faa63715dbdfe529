// Owns one VARIANT: whatever it holds (a BSTR, an interface reference, an array) is
// released with VariantClear when the owner goes.
#pragma once

#include "platform/ScopedBstr.h"
#include "platform/ScopedSafeArray.h"
#include "platform/Win32.h"

#include <utility>

namespace tarnix {

class ScopedVariant {
 public:
  ScopedVariant() { VariantInit(&var_); }
  // Copies the text into a new BSTR; a null text gives a null BSTR.
  explicit ScopedVariant(const OLECHAR* text) : ScopedVariant() { SetText(text); }
  // Takes over the text, or an array of `elements`, as the value.
  explicit ScopedVariant(ScopedBstr text) : ScopedVariant() {
    var_.vt = VT_BSTR;
    var_.bstrVal = text.Release();
  }
  ScopedVariant(ScopedSafeArray array, VARTYPE elements) : ScopedVariant() {
    var_.vt = VT_ARRAY | elements;
    var_.parray = array.Release();
  }
  explicit ScopedVariant(LONG value) : ScopedVariant() {
    var_.vt = VT_I4;
    var_.lVal = value;
  }
  ScopedVariant(const ScopedVariant&) = delete;
  ScopedVariant& operator=(const ScopedVariant&) = delete;
  ScopedVariant(ScopedVariant&& other) noexcept : ScopedVariant() { std::swap(var_, other.var_); }
  ScopedVariant& operator=(ScopedVariant&& other) noexcept {
    Reset(other.Release());
    return *this;
  }
  ~ScopedVariant() { VariantClear(&var_); }

  // Takes ownership of what value holds; the old content is cleared first.
  void Reset(const VARIANT& value = Empty()) {
    if (&value != &var_) {
      VariantClear(&var_);
      var_ = value;
    }
  }
  // Gives up ownership: the caller must VariantClear the result.
  VARIANT Release() {
    VARIANT out = var_;
    var_.vt = VT_EMPTY;
    return out;
  }
  // For out-parameters: clears what is held and lends the VARIANT.
  VARIANT* Receive() {
    VariantClear(&var_);
    return &var_;
  }
  // A second owner of the same value (BSTRs copied, interfaces AddRef'ed).
  [[nodiscard]] HRESULT CopyTo(ScopedVariant* out) const {
    return VariantCopy(out->Receive(), const_cast<VARIANT*>(&var_));
  }
  // Converts in place, keeping the old value when the conversion fails.
  [[nodiscard]] HRESULT ChangeType(VARTYPE vt, USHORT flags = 0) {
    VARIANT converted;
    VariantInit(&converted);
    HRESULT hr = VariantChangeType(&converted, &var_, flags, vt);
    if (SUCCEEDED(hr)) Reset(converted);
    return hr;
  }

  void SetText(const OLECHAR* text) {
    VariantClear(&var_);
    var_.vt = VT_BSTR;
    var_.bstrVal = text ? SysAllocString(text) : nullptr;
  }
  // Takes a reference of its own on the interface.
  void SetUnknown(IUnknown* unknown) {
    VariantClear(&var_);
    var_.vt = VT_UNKNOWN;
    var_.punkVal = unknown;
    if (unknown) unknown->AddRef();
  }

  VARTYPE type() const { return var_.vt; }
  const VARIANT& Get() const { return var_; }
  // For in-parameters of calls that take a non-const VARIANT* yet do not keep it.
  VARIANT* AsInput() const { return const_cast<VARIANT*>(&var_); }

  static const VARIANT& Empty() {
    static const VARIANT empty = [] {
      VARIANT v;
      VariantInit(&v);
      return v;
    }();
    return empty;
  }

 private:
  VARIANT var_;
};

}  // namespace tarnix
