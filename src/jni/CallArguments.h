// The arguments of one call as the method's own JNI types.
#pragma once

#include "jni/JavaArgument.h"
#include "jni/JavaClass.h"

#include <jni.h>

#include <array>
#include <string>
#include <vector>

namespace tarnix {

// Raises a java.lang.IllegalArgumentException on the calling thread, unless an
// exception is already pending (that one is the more telling).
void RaiseIllegalArgument(JNIEnv* env, const std::string& message);

class CallArguments {
 public:
  CallArguments() = default;
  CallArguments(const CallArguments&) = delete;
  CallArguments& operator=(const CallArguments&) = delete;

  // False, with an IllegalArgumentException raised, when the count or a type does not
  // fit the method's descriptor.
  bool Prepare(JNIEnv* env, const CJavaClass& javaClass, std::string_view alias,
               const JavaMethod& method, JavaArguments arguments);
  const jvalue* Get() const { return data_; }

 private:
  // The component's methods take at most five arguments; more spill to the heap.
  std::array<jvalue, 8> inline_{};
  std::vector<jvalue> spilled_;
  jvalue* data_ = inline_.data();
};

}  // namespace tarnix
