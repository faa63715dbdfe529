#include "jni/JavaArgument.h"

namespace tarnix {

const char* JavaArgument::Describe() const {
  switch (kind_) {
    case kBoolean: return "a boolean";
    case kInt: return "an int";
    case kLong: return "a long";
    case kFloat: return "a float";
    case kDouble: return "a double";
    case kObject: return "an object";
    default: return "nothing";
  }
}

}  // namespace tarnix
