#include "jni/JavaArgument.h"

namespace tarnix {

// Java's widening primitive conversions: a call by alias accepts what a Java call
// site would accept without a cast.
bool JavaArgument::Fits(char parameter) const {
  switch (parameter) {
    case 'Z':
      return kind_ == kBoolean;
    case 'I':
      return kind_ == kInt;
    case 'J':
      return kind_ == kInt || kind_ == kLong;
    case 'F':
      return kind_ == kInt || kind_ == kLong || kind_ == kFloat;
    case 'D':
      return kind_ == kInt || kind_ == kLong || kind_ == kFloat || kind_ == kDouble;
    case 'L':
      return kind_ == kObject;
    default:  // byte, char and short parameters take only an explicit narrowing
      return false;
  }
}

jvalue JavaArgument::As(char parameter) const {
  jvalue out{};
  switch (parameter) {
    case 'Z':
      out.z = value_.z;
      break;
    case 'I':
      out.i = value_.i;
      break;
    case 'J':
      out.j = kind_ == kInt ? static_cast<jlong>(value_.i) : value_.j;
      break;
    case 'F':
      out.f = kind_ == kInt    ? static_cast<jfloat>(value_.i)
              : kind_ == kLong ? static_cast<jfloat>(value_.j)
                               : value_.f;
      break;
    case 'D':
      out.d = kind_ == kInt     ? static_cast<jdouble>(value_.i)
              : kind_ == kLong  ? static_cast<jdouble>(value_.j)
              : kind_ == kFloat ? static_cast<jdouble>(value_.f)
                                : value_.d;
      break;
    default:
      out.l = value_.l;
      break;
  }
  return out;
}

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
