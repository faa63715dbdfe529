// A loaded class's method table: the class's name, the table, and the id resolved for
// each row in the table's order. It is what an object needs of its class to make a call,
// so that objects do not depend on the class that makes them. Filled once, when the class
// loads, and read-only afterwards.
#pragma once

#include "jni/JavaMethod.h"

#include <jni.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace tarnix {

class ResolvedMethods {
 public:
  const std::string& GetName() const { return name_; }
  const MethodEntry* Table() const { return table_; }
  // The id resolved at load for a row of Table().
  jmethodID MethodId(size_t row) const { return ids_[row]; }

 protected:
  explicit ResolvedMethods(std::string name) : name_(std::move(name)) {}
  ~ResolvedMethods() = default;

  std::string name_;
  const MethodEntry* table_ = nullptr;
  // One per row of the table, in its order.
  std::vector<jmethodID> ids_;
};

}  // namespace tarnix
