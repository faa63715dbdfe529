// Owns one handle that a function closes, after WIL's unique_any: the handle type, its
// close function and the value that means "no handle" make the owner, so each kind of
// handle is one line below. Move-only; the close runs once, when the owner lets go.
#pragma once

#include "platform/Win32.h"

#include <cstdint>
#include <type_traits>
#include <utility>

namespace tarnix {

template <class T, auto Close, std::intptr_t Invalid = 0>
class UniqueAny {
 public:
  static T None() {
    if constexpr (std::is_pointer_v<T>)
      return reinterpret_cast<T>(Invalid);
    else
      return static_cast<T>(Invalid);
  }

  UniqueAny() = default;
  explicit UniqueAny(T handle) : handle_(handle) {}
  UniqueAny(UniqueAny&& other) noexcept : handle_(other.Release()) {}
  UniqueAny& operator=(UniqueAny&& other) noexcept {
    Reset(other.Release());
    return *this;
  }
  UniqueAny(const UniqueAny&) = delete;
  UniqueAny& operator=(const UniqueAny&) = delete;
  ~UniqueAny() { Reset(); }

  T Get() const { return handle_; }
  explicit operator bool() const { return handle_ != None(); }
  T Release() { return std::exchange(handle_, None()); }
  void Reset(T handle = None()) {
    if (T old = std::exchange(handle_, handle); old != None() && old != handle) Close(old);
  }
  // For out-parameters: closes what is held and lends the slot.
  T* Receive() {
    Reset();
    return &handle_;
  }

 private:
  T handle_ = None();
};

// A kernel object (an event, say): null means none.
using UniqueHandle = UniqueAny<HANDLE, &CloseHandle>;
// A file search: FindFirstFileW answers INVALID_HANDLE_VALUE when it finds nothing.
using UniqueFind = UniqueAny<HANDLE, &FindClose, -1>;

}  // namespace tarnix
