#pragma once

#include "platform/Win32.h"

#include <exception>
#include <new>
#include <stdexcept>
#include <system_error>

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

// The result code of a C runtime error number, as the runtime's string copies report it:
// out of memory, an invalid argument or range, anything else a plain failure.
HRESULT ResultOfErrorNumber(int error);

// Runs `work` and lets none of the standard library's own failures out: memory that ran
// out, a length beyond what a string can hold and a lock that could not be taken leave as
// HResultError with their result code, as every exception that leaves an export must.
template <class Work>
auto WithResultCodes(Work&& work) -> decltype(work()) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    throw HResultError(E_OUTOFMEMORY);
  } catch (const std::length_error&) {
    throw HResultError(E_INVALIDARG);
  } catch (const std::system_error& error) {
    throw HResultError(ResultOfErrorNumber(error.code().value()));
  }
}

}  // namespace tarnix
