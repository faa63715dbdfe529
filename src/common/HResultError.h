#pragma once

#include "platform/Win32.h"

#include <exception>

namespace tarnix {

// The component's few throwing paths (a failed allocation of a message or a string copy)
// carry their result code in this exception; the exported operations let it pass.
class HResultError : public std::exception {
 public:
  explicit HResultError(HRESULT code) : code_(code) {}
  HRESULT Code() const { return code_; }
  const char* what() const noexcept override;

 private:
  HRESULT code_;
};

// Throws HResultError(hr) when hr is a failure.
void ThrowIfFailed(HRESULT hr);

}  // namespace tarnix
