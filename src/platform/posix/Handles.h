// Kernel object handles: small numbers that map to objects, so that a stale or foreign
// handle is refused with ERROR_INVALID_HANDLE instead of being followed.
#pragma once

#include "platform/Win32.h"

#include <memory>

namespace tarnix::posix {

class KernelObject {
 public:
  virtual ~KernelObject() = default;
};

HANDLE AddHandle(std::shared_ptr<KernelObject> object);
std::shared_ptr<KernelObject> FindHandle(HANDLE handle);
// The object is gone once the last user lets go of it.
bool RemoveHandle(HANDLE handle);

template <class T>
std::shared_ptr<T> FindHandleOf(HANDLE handle) {
  return std::dynamic_pointer_cast<T>(FindHandle(handle));
}

}  // namespace tarnix::posix
