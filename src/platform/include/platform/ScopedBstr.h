// Owns one BSTR.
#pragma once

#include "platform/Win32.h"

#include <utility>

namespace tarnix {

// A borrowed BSTR's text as the component keeps it; a null BSTR reads as empty.
inline WString BstrText(BSTR text) { return text ? WString(text, SysStringLen(text)) : WString(); }

class ScopedBstr {
 public:
  ScopedBstr() = default;
  // Copies the text; a null text gives a null BSTR.
  explicit ScopedBstr(const OLECHAR* text) : bstr_(text ? SysAllocString(text) : nullptr) {}
  ScopedBstr(const ScopedBstr&) = delete;
  ScopedBstr& operator=(const ScopedBstr&) = delete;
  ScopedBstr(ScopedBstr&& other) noexcept : bstr_(std::exchange(other.bstr_, nullptr)) {}
  ScopedBstr& operator=(ScopedBstr&& other) noexcept {
    Reset(other.Release());
    return *this;
  }
  ~ScopedBstr() { Reset(); }

  void Reset(BSTR value = nullptr) {
    if (bstr_ && bstr_ != value) SysFreeString(bstr_);
    bstr_ = value;
  }
  BSTR Release() { return std::exchange(bstr_, nullptr); }
  // For out-parameters: frees what is held and lends the slot.
  BSTR* Receive() {
    Reset();
    return &bstr_;
  }

  BSTR Get() const { return bstr_; }
  UINT Length() const { return bstr_ ? SysStringLen(bstr_) : 0; }
  WString Text() const { return BstrText(bstr_); }

 private:
  BSTR bstr_ = nullptr;
};

}  // namespace tarnix
