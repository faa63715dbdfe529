// Arguments of calls through method handles. A C++ argument reaches a parameter only
// where Java itself would take it without a cast (identity or a widening primitive
// conversion); anything else does not compile. So a 32-bit number can never reach a
// method taking a long as garbage, text can never be passed where an object is expected,
// and an object that is not a string never where a string is.
#pragma once

#include "platform/Win32.h"

#include <jni.h>

#include <cstddef>
#include <memory>
#include <string_view>
#include <type_traits>

namespace tarnix {

namespace detail {
template <class T>
inline constexpr bool kIsCharacter = std::is_same_v<T, char> || std::is_same_v<T, wchar_t> ||
                                     std::is_same_v<T, char16_t> || std::is_same_v<T, char32_t>;

// Anything with a Get() that yields a JNI reference: CJavaObject, CJavaString, LocalRef,
// GlobalRef.
template <class R, class = void>
struct HoldsJavaReference : std::false_type {};
template <class R>
struct HoldsJavaReference<R, std::void_t<decltype(std::declval<const R&>().Get())>>
    : std::is_convertible<decltype(std::declval<const R&>().Get()), jobject> {};

template <class T>
struct Unshared {
  using type = T;
};
template <class T>
struct Unshared<std::shared_ptr<T>> {
  using type = T;
};

// What an argument is to Java, by JNI's descriptor letters: 'L' an object, 'T' a string,
// 'N' null (either), 0 nothing Java takes.
template <class A>
constexpr char KindOf() {
  using T = typename Unshared<std::decay_t<A>>::type;
  if constexpr (std::is_same_v<T, bool> || std::is_same_v<T, jboolean>) {
    return 'Z';
  } else if constexpr (kIsCharacter<T>) {
    return 0;  // text goes to Java as a CJavaString
  } else if constexpr (std::is_integral_v<T>) {
    // Every 32-bit unsigned value fits a Java long but not a Java int; an unsigned
    // 64-bit value fits neither.
    if constexpr (std::is_signed_v<T>)
      return sizeof(T) <= sizeof(jint) ? 'I' : 'J';
    else
      return sizeof(T) < sizeof(jint) ? 'I' : sizeof(T) == sizeof(jint) ? 'J' : 0;
  } else if constexpr (std::is_same_v<T, float>) {
    return 'F';
  } else if constexpr (std::is_same_v<T, double>) {
    return 'D';
  } else if constexpr (std::is_same_v<T, std::nullptr_t>) {
    return 'N';
  } else if constexpr (std::is_pointer_v<T>) {
    if constexpr (std::is_convertible_v<T, jstring>)
      return 'T';
    else
      return std::is_convertible_v<T, jobject> ? 'L' : 0;
  } else if constexpr (HoldsJavaReference<T>::value) {
    return KindOf<decltype(std::declval<const T&>().Get())>();
  } else {
    return 0;
  }
}

constexpr bool KindFits(char kind, std::string_view accepted) {
  for (char letter : accepted) {
    if (letter == kind) return true;
  }
  return false;
}

template <class P>
constexpr std::string_view AcceptedKinds() {
  if constexpr (std::is_same_v<P, jboolean>)
    return "Z";
  else if constexpr (std::is_same_v<P, jint>)
    return "I";
  else if constexpr (std::is_same_v<P, jlong>)
    return "IJ";
  else if constexpr (std::is_same_v<P, jfloat>)
    return "IJF";
  else if constexpr (std::is_same_v<P, jdouble>)
    return "IJFD";
  else if constexpr (std::is_same_v<P, jstring>)
    return "TN";
  else if constexpr (std::is_same_v<P, jobject>)
    return "LTN";
  else
    return "";  // byte, char and short parameters take only an explicit narrowing
}
}  // namespace detail

// Whether an argument of type A may be passed to a parameter of JNI type P.
template <class P, class A>
inline constexpr bool kFits =
    detail::KindOf<A>() != 0 && detail::KindFits(detail::KindOf<A>(), detail::AcceptedKinds<P>());

template <class A>
jobject ReferenceOf(const A& argument) {
  if constexpr (std::is_same_v<A, std::nullptr_t>)
    return nullptr;
  else if constexpr (std::is_pointer_v<A>)
    return argument;
  else if constexpr (detail::HoldsJavaReference<A>::value)
    return argument.Get();
  else
    return argument ? argument->Get() : nullptr;  // an empty shared holder is null
}

// The argument as the parameter's own type.
template <class P, class A>
jvalue ToJValue(const A& argument) {
  static_assert(kFits<P, A>, "the argument does not convert to the parameter without a cast");
  jvalue value{};
  if constexpr (std::is_same_v<P, jboolean>)
    value.z = argument ? JNI_TRUE : JNI_FALSE;
  else if constexpr (std::is_same_v<P, jint>)
    value.i = static_cast<jint>(argument);
  else if constexpr (std::is_same_v<P, jlong>)
    value.j = static_cast<jlong>(argument);
  else if constexpr (std::is_same_v<P, jfloat>)
    value.f = static_cast<jfloat>(argument);
  else if constexpr (std::is_same_v<P, jdouble>)
    value.d = static_cast<jdouble>(argument);
  else
    value.l = ReferenceOf(argument);
  return value;
}

// The argument as exactly the parameter's type, for JNI's variadic calls, which read each
// argument back as that type (after C's promotions).
template <class P, class A>
P ToJni(const A& argument) {
  static_assert(kFits<P, A>, "the argument does not convert to the parameter without a cast");
  if constexpr (std::is_same_v<P, jboolean>)
    return argument ? JNI_TRUE : JNI_FALSE;
  else if constexpr (std::is_pointer_v<P>)
    return static_cast<P>(ReferenceOf(argument));
  else
    return static_cast<P>(argument);
}

// The values of one call; never a zero-length array.
template <size_t N>
struct JValues {
  jvalue values[N == 0 ? 1 : N];
  const jvalue* Get() const { return values; }
};

}  // namespace tarnix
