// Arguments of calls by alias. Each argument keeps the exact JNI type it was given as,
// and the call converts it to what the method's descriptor asks for, refusing anything
// Java itself would not convert implicitly. So a 32-bit number can never reach a method
// taking a long as garbage, and text can never be passed where an object is expected.
#pragma once

#include "platform/Win32.h"

#include <jni.h>

#include <array>
#include <cstddef>
#include <memory>
#include <type_traits>

namespace tarnix {

namespace detail {
template <class>
inline constexpr bool kAlwaysFalse = false;

template <class T>
inline constexpr bool kIsCharacter =
    std::is_same_v<T, char> || std::is_same_v<T, wchar_t> || std::is_same_v<T, char16_t> ||
    std::is_same_v<T, char32_t>;

// Anything with a Get() that yields a JNI reference: CJavaObject, CJavaString, LocalRef,
// GlobalRef.
template <class R, class = void>
struct HoldsJavaReference : std::false_type {};
template <class R>
struct HoldsJavaReference<R, std::void_t<decltype(std::declval<const R&>().Get())>>
    : std::is_convertible<decltype(std::declval<const R&>().Get()), jobject> {};
}  // namespace detail

class JavaArgument {
 public:
  // JNI's descriptor letters. Objects and arrays are both 'L' here.
  enum Kind : char {
    kNone = 0,
    kBoolean = 'Z',
    kInt = 'I',
    kLong = 'J',
    kFloat = 'F',
    kDouble = 'D',
    kObject = 'L',
  };

  JavaArgument() = default;

  JavaArgument(bool value) : kind_(kBoolean) { value_.z = value ? JNI_TRUE : JNI_FALSE; }
  // jboolean.
  JavaArgument(unsigned char value) : kind_(kBoolean) { value_.z = value ? JNI_TRUE : JNI_FALSE; }

  template <class T, std::enable_if_t<std::is_integral_v<T> && !std::is_same_v<T, bool> &&
                                          !std::is_same_v<T, unsigned char>,
                                      int> = 0>
  JavaArgument(T value) {
    static_assert(!detail::kIsCharacter<T>, "text goes to Java as a CJavaString");
    if constexpr (std::is_signed_v<T> && sizeof(T) <= sizeof(jint)) {
      kind_ = kInt;
      value_.i = static_cast<jint>(value);
    } else if constexpr (std::is_unsigned_v<T> && sizeof(T) < sizeof(jint)) {
      kind_ = kInt;
      value_.i = static_cast<jint>(value);
    } else if constexpr (std::is_unsigned_v<T> && sizeof(T) == sizeof(jint)) {
      // Every 32-bit unsigned value fits a Java long but not a Java int.
      kind_ = kLong;
      value_.j = static_cast<jlong>(value);
    } else if constexpr (std::is_signed_v<T> && sizeof(T) == sizeof(jlong)) {
      kind_ = kLong;
      value_.j = static_cast<jlong>(value);
    } else {
      static_assert(detail::kAlwaysFalse<T>,
                    "an unsigned 64-bit value does not fit a Java long; cast it to jlong");
    }
  }

  JavaArgument(float value) : kind_(kFloat) { value_.f = value; }
  JavaArgument(double value) : kind_(kDouble) { value_.d = value; }

  JavaArgument(std::nullptr_t) : kind_(kObject) { value_.l = nullptr; }
  template <class T, std::enable_if_t<std::is_convertible_v<T*, jobject>, int> = 0>
  JavaArgument(T* ref) : kind_(kObject) {
    value_.l = ref;
  }
  template <class R, std::enable_if_t<detail::HoldsJavaReference<R>::value, int> = 0>
  JavaArgument(const R& holder) : kind_(kObject) {
    value_.l = holder.Get();
  }
  // An empty holder passes Java's null.
  template <class R, std::enable_if_t<detail::HoldsJavaReference<R>::value, int> = 0>
  JavaArgument(const std::shared_ptr<R>& holder) : kind_(kObject) {
    value_.l = holder ? holder->Get() : nullptr;
  }
  // Raw text and other pointers: a Java string must be made (and its failure seen) first.
  template <class T, std::enable_if_t<!std::is_convertible_v<T*, jobject>, int> = 0>
  JavaArgument(T*) = delete;

  Kind GetKind() const { return kind_; }
  const jvalue& GetValue() const { return value_; }

  // Whether Java would pass this argument to a parameter of the descriptor letter
  // `parameter` without a cast (identity or widening primitive conversion).
  bool Fits(char parameter) const;
  // The argument as the parameter's own type; only meaningful when Fits(parameter).
  jvalue As(char parameter) const;
  // "an int", "a long"...: for the message of a refused call.
  const char* Describe() const;

 private:
  Kind kind_ = kNone;
  jvalue value_{};
};

// Inline: every argument of every call passes through both.
// Java's widening primitive conversions: a call by alias accepts what a Java call
// site would accept without a cast.
inline bool JavaArgument::Fits(char parameter) const {
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

inline jvalue JavaArgument::As(char parameter) const {
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

// A view of the arguments of one call.
class JavaArguments {
 public:
  JavaArguments() = default;
  JavaArguments(const JavaArgument* data, size_t size) : data_(data), size_(size) {}
  template <size_t N>
  JavaArguments(const std::array<JavaArgument, N>& arguments)
      : data_(arguments.data()), size_(N) {}

  const JavaArgument* begin() const { return data_; }
  const JavaArgument* end() const { return data_ + size_; }
  size_t size() const { return size_; }
  const JavaArgument& operator[](size_t i) const { return data_[i]; }

 private:
  const JavaArgument* data_ = nullptr;
  size_t size_ = 0;
};

template <class... Args>
std::array<JavaArgument, sizeof...(Args)> MakeJavaArguments(const Args&... args) {
  return {{JavaArgument(args)...}};
}

}  // namespace tarnix
