// Owns one SAFEARRAY (destroyed, elements included, when the owner goes), and a guard that
// holds an array's data locked for as long as the guard lives.
#pragma once

#include "platform/Win32.h"

#include <utility>

namespace tarnix {

class ScopedSafeArray {
 public:
  ScopedSafeArray() = default;
  explicit ScopedSafeArray(SAFEARRAY* array) : array_(array) {}
  ScopedSafeArray(const ScopedSafeArray&) = delete;
  ScopedSafeArray& operator=(const ScopedSafeArray&) = delete;
  ScopedSafeArray(ScopedSafeArray&& other) noexcept
      : array_(std::exchange(other.array_, nullptr)) {}
  ScopedSafeArray& operator=(ScopedSafeArray&& other) noexcept {
    Reset(other.Release());
    return *this;
  }
  ~ScopedSafeArray() { Reset(); }

  void Reset(SAFEARRAY* array = nullptr) {
    if (array_ && array_ != array) SafeArrayDestroy(array_);
    array_ = array;
  }
  SAFEARRAY* Release() { return std::exchange(array_, nullptr); }
  // For out-parameters: destroys what is held and lends the slot.
  SAFEARRAY** Receive() {
    Reset();
    return &array_;
  }

  SAFEARRAY* Get() const { return array_; }
  explicit operator bool() const { return array_ != nullptr; }

  // The bounds of dimension 1 (a vector's only one); false for a null or bad array.
  [[nodiscard]] bool GetBounds(LONG* lower, LONG* upper) const {
    return array_ && SUCCEEDED(SafeArrayGetLBound(array_, 1, lower)) &&
           SUCCEEDED(SafeArrayGetUBound(array_, 1, upper));
  }

 private:
  SAFEARRAY* array_ = nullptr;
};

// Holds SafeArrayAccessData for its lifetime and presents the elements of the array's first
// dimension as T (of more dimensions, those at the lowest index of every other: the first
// dimension varies fastest in memory). Check Valid() before using data(); an array whose
// elements are not T's size is never valid.
template <class T>
class ScopedSafeArrayAccess {
 public:
  explicit ScopedSafeArrayAccess(SAFEARRAY* array) {
    if (!array || SafeArrayGetElemsize(array) != sizeof(T)) {
      result_ = E_INVALIDARG;
      return;
    }
    void* data = nullptr;
    result_ = SafeArrayAccessData(array, &data);
    if (FAILED(result_)) return;
    array_ = array;
    data_ = static_cast<T*>(data);
    LONG lower = 0, upper = -1;
    SafeArrayGetLBound(array, 1, &lower);
    SafeArrayGetUBound(array, 1, &upper);
    size_ = upper >= lower ? static_cast<size_t>(static_cast<LONGLONG>(upper) - lower + 1) : 0;
  }
  ScopedSafeArrayAccess(const ScopedSafeArrayAccess&) = delete;
  ScopedSafeArrayAccess& operator=(const ScopedSafeArrayAccess&) = delete;
  ~ScopedSafeArrayAccess() {
    if (array_) SafeArrayUnaccessData(array_);
  }

  bool Valid() const { return array_ != nullptr; }
  HRESULT result() const { return result_; }
  T* data() const { return data_; }
  size_t size() const { return size_; }
  T& operator[](size_t index) const { return data_[index]; }
  T* begin() const { return data_; }
  T* end() const { return data_ + size_; }

 private:
  SAFEARRAY* array_ = nullptr;
  T* data_ = nullptr;
  size_t size_ = 0;
  HRESULT result_ = S_OK;
};

}  // namespace tarnix
