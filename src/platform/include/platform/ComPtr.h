// Owns one counted reference to a COM interface.
#pragma once

#include "platform/Win32.h"

#include <utility>

namespace tarnix {

template <class T>
class ComPtr {
 public:
  ComPtr() = default;
  ComPtr(std::nullptr_t) {}
  // Takes a new reference of its own.
  explicit ComPtr(T* p) : p_(p) {
    if (p_) p_->AddRef();
  }
  ComPtr(const ComPtr& other) : ComPtr(other.p_) {}
  ComPtr(ComPtr&& other) noexcept : p_(std::exchange(other.p_, nullptr)) {}
  ~ComPtr() { Reset(); }

  ComPtr& operator=(ComPtr other) noexcept {
    std::swap(p_, other.p_);
    return *this;
  }

  // Adopts a reference the caller already owns (an out-parameter's result).
  static ComPtr Attach(T* p) {
    ComPtr result;
    result.p_ = p;
    return result;
  }
  T* Detach() { return std::exchange(p_, nullptr); }

  void Reset() {
    if (T* p = std::exchange(p_, nullptr)) p->Release();
  }

  T* Get() const { return p_; }
  T* operator->() const { return p_; }
  explicit operator bool() const { return p_ != nullptr; }

  // For out-parameters: releases what is held and lends the slot.
  T** Receive() {
    Reset();
    return &p_;
  }
  void** ReceiveVoid() { return reinterpret_cast<void**>(Receive()); }

  template <class U>
  [[nodiscard]] HRESULT QueryInterface(REFIID iid, ComPtr<U>* out) const {
    if (!p_) return E_POINTER;
    return p_->QueryInterface(iid, out->ReceiveVoid());
  }

 private:
  T* p_ = nullptr;
};

}  // namespace tarnix
