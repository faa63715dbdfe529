// Handles of the methods in a class's method table, made when the component is compiled.
// A handle is the table and a row of it, typed by the C++ signature that spells the row's
// JNI descriptor: MethodOf<jstring(jobject, jlong)>(table, "onDesktopPoll"). Making a
// handle is a constant expression, so an alias missing from the table, a constructor
// taken for a method (or the reverse) and a signature that does not spell the
// descriptor stop the build; calls take their arguments in the signature's types and
// look nothing up at run time. A handle of another class's table is refused by the call.
#pragma once

#include <jni.h>

#include <cstddef>
#include <stdexcept>
#include <string_view>
#include <type_traits>

// One row of a class's method table. A constructor's alias is "ctor(" + its Java
// parameter names + ")", its name "<init>"; a method's alias is its Java name.
struct MethodEntry {
  const char* alias;
  const char* name;
  const char* signature;
};

namespace tarnix {

namespace descriptor {

// The descriptor a C++ JNI type stands for. jobject stands for any reference but a string,
// which is spelled jstring, so that no other object can be passed where text is expected.
template <class T>
constexpr std::string_view Of() {
  if constexpr (std::is_same_v<T, jboolean>)
    return "Z";
  else if constexpr (std::is_same_v<T, jbyte>)
    return "B";
  else if constexpr (std::is_same_v<T, jchar>)
    return "C";
  else if constexpr (std::is_same_v<T, jshort>)
    return "S";
  else if constexpr (std::is_same_v<T, jint>)
    return "I";
  else if constexpr (std::is_same_v<T, jlong>)
    return "J";
  else if constexpr (std::is_same_v<T, jfloat>)
    return "F";
  else if constexpr (std::is_same_v<T, jdouble>)
    return "D";
  else if constexpr (std::is_same_v<T, jstring>)
    return "Ljava/lang/String;";
  else if constexpr (std::is_same_v<T, jobject>)
    return "L";
  else
    static_assert(std::is_void_v<T>, "a signature spells its types as JNI types");
  return "V";
}

// The length of the field descriptor at `at`; 0 when there is none.
constexpr size_t FieldLength(std::string_view text, size_t at) {
  size_t end = at;
  while (end < text.size() && text[end] == '[') ++end;
  if (end >= text.size()) return 0;
  switch (text[end]) {
    case 'Z':
    case 'B':
    case 'C':
    case 'S':
    case 'I':
    case 'J':
    case 'F':
    case 'D': return end + 1 - at;
    case 'L':
      for (size_t close = end + 1; close < text.size(); ++close) {
        if (text[close] == ';') return close == end + 1 ? 0 : close + 1 - at;
      }
      return 0;
    default: return 0;
  }
}

// Whether T spells the field at `at`, which it then passes.
template <class T>
constexpr bool Takes(std::string_view text, size_t& at) {
  const size_t length = FieldLength(text, at);
  if (length == 0) return false;
  const std::string_view field = text.substr(at, length);
  at += length;
  if constexpr (std::is_same_v<T, jobject>) {
    return (field[0] == 'L' || field[0] == '[') && field != Of<jstring>();
  } else {
    return field == Of<T>();
  }
}

template <class R, class... P>
constexpr bool Spells(std::string_view text) {
  if (text.empty() || text[0] != '(') return false;
  size_t at = 1;
  if (!(Takes<P>(text, at) && ...)) return false;
  if (at >= text.size() || text[at] != ')') return false;
  ++at;
  if constexpr (std::is_void_v<R>) {
    return text.substr(at) == "V";
  } else {
    return Takes<R>(text, at) && at == text.size();
  }
}

}  // namespace descriptor

// The row of the alias; a later row of the same alias wins. Throwing makes a constant
// expression fail, so a missing alias is a compile error where the handle is made.
template <size_t N>
constexpr size_t RowOf(const MethodEntry (&table)[N], std::string_view alias) {
  for (size_t row = N; row-- > 0;) {
    if (std::string_view(table[row].alias) == alias) return row;
  }
  throw std::invalid_argument("the alias is not in the method table");
}

constexpr bool IsConstructor(const MethodEntry& entry) {
  return std::string_view(entry.name) == "<init>";
}

template <class Signature>
class Method;
template <class Signature>
class Constructor;

// A row of one class's method table; the handles below add only their types.
class TableRow {
 public:
  constexpr TableRow(const MethodEntry* table, size_t row) : table_(table), row_(row) {}
  constexpr const MethodEntry* Table() const { return table_; }
  constexpr size_t Row() const { return row_; }
  constexpr const MethodEntry& Entry() const { return table_[row_]; }

 private:
  const MethodEntry* table_;
  size_t row_;
};

// A method of the table's class: R is its result (void, a primitive, jstring, jobject).
template <class R, class... P>
class Method<R(P...)> : public TableRow {
 public:
  using TableRow::TableRow;
};

template <class... P>
class Constructor<void(P...)> : public TableRow {
 public:
  using TableRow::TableRow;
};

template <class Signature>
struct SpellsRow;
template <class R, class... P>
struct SpellsRow<R(P...)> {
  static constexpr bool Check(const MethodEntry& entry) {
    return descriptor::Spells<R, P...>(entry.signature);
  }
};

// Use only to initialise a constexpr handle: that is what makes a wrong alias or
// signature a compile error rather than a throw.
template <class Signature, size_t N>
constexpr Method<Signature> MethodOf(const MethodEntry (&table)[N], std::string_view alias) {
  const size_t row = RowOf(table, alias);
  if (IsConstructor(table[row])) throw std::invalid_argument("a constructor is a Constructor");
  if (!SpellsRow<Signature>::Check(table[row])) {
    throw std::invalid_argument("the signature does not spell the row's descriptor");
  }
  return Method<Signature>(table, row);
}

template <class Signature, size_t N>
constexpr Constructor<Signature> ConstructorOf(const MethodEntry (&table)[N],
                                               std::string_view alias) {
  const size_t row = RowOf(table, alias);
  if (!IsConstructor(table[row])) throw std::invalid_argument("the alias is not a constructor");
  if (!SpellsRow<Signature>::Check(table[row])) {
    throw std::invalid_argument("the signature does not spell the row's descriptor");
  }
  return Constructor<Signature>(table, row);
}

}  // namespace tarnix
