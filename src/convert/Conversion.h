// What every converter does the same way: find its data-model class, make the Java
// strings it needs (a failure is logged with the text or without it), construct the
// object through its handle (a failure is logged with the Java exception), and call put methods
// with the pending-exception test after each. One Conversion serves one top-level call,
// so the classes of a large sample are looked up once, not once per metric.
#pragma once

#include "common/HostLog.h"
#include "convert/ClassTable.h"
#include "jni/JavaClass.h"
#include "jni/JavaObject.h"
#include "jni/JavaString.h"
#include "jni/JavaVM.h"

#include "platform/Win32.h"
#include "tarnix/DataInterfaces.h"

#include <array>
#include <memory>
#include <optional>
#include <string_view>

namespace tarnix::convert {

using WStringView = std::basic_string_view<WCHAR>;

// A BSTR's text, embedded zeros included; a null BSTR is the empty text.
inline WStringView View(BSTR text) {
  return text ? WStringView(text, SysStringLen(text)) : WStringView();
}

// Whether a value may appear in the message of a failed string creation.
enum class TextInLog { Shown, Hidden };

// The data-model class a converter asks for, by its row of the class table.
using DataClass = classes::ClassId;

// The objects and strings of one conversion: local references of the converting thread,
// held by value. A sample makes a thousand of each.
using LocalObject = std::optional<CJavaObject>;
using LocalString = std::optional<CJavaString>;

// A Java string of the text, or empty with the failure logged and the exception cleared.
LocalString GetJavaString(const HostLog& log, CJavaVM& vm, WStringView text, TextInLog visibility);

// Whole seconds from 1970-01-01 (universal time) to the OLE date. Dates before 1970 wrap
// around as unsigned values; the host has always been sent them so.
ULONGLONG ToJavaTime(DATE date);
// The argument of the data model's "ctor(time)": milliseconds, a whole number of seconds.
inline jlong ToJavaMillis(DATE date) { return static_cast<jlong>(ToJavaTime(date) * 1000u); }

// The date as the host's messages show a sample: the C library's "%c" form, or
// "Invalid DateTime" for a date out of the OLE range.
WString DateLabel(DATE date);

// What a converter hands back to its caller outside the conversion: the object pinned
// by a global reference, so it may be kept or released anywhere, as the manager's other
// Java objects are. Empty for an empty object.
inline std::shared_ptr<CJavaObject> Pinned(const LocalObject& object) {
  return object ? object->MakeGlobal() : nullptr;
}

class Conversion {
 public:
  Conversion(CJavaVM& vm, const HostLog& log) : vm_(vm), log_(log) {}
  Conversion(const Conversion&) = delete;
  Conversion& operator=(const Conversion&) = delete;

  CJavaVM& Vm() const { return vm_; }
  const HostLog& Log() const { return log_; }

  // The class start-up loaded, or null (start-up has reported that already). Inline, as
  // the two below: they come with every metric.
  const CJavaClass* Class(DataClass which) {
    const size_t index = static_cast<size_t>(which);
    if (!looked_[index]) LookUp(which);
    return classes_[index].get();
  }

  // The text of the pending Java exception, which is cleared; nothing when none is
  // pending.
  std::optional<WString> TakeException() { return vm_.TakeException(); }
  // Whether an exception is pending, leaving it so.
  bool ExceptionPending() const {
    JNIEnv* env = vm_.GetEnv();
    return env && env->ExceptionCheck();
  }

  LocalString String(WStringView text, TextInLog visibility = TextInLog::Shown) {
    return GetJavaString(log_, vm_, text, visibility);
  }

  // `failure` is the object-creation message, with one %s for the exception text.
  template <class Signature, class... Args>
  LocalObject Construct(const CJavaClass& javaClass, tarnix::Constructor<Signature> constructor,
                        const WCHAR* failure, const Args&... args) {
    LocalObject object = javaClass.NewLocalObject(constructor, args...);
    if (!object) LogWithException(failure);
    return object;
  }

  // Calls a void method; the text of the exception it left, if any, now cleared.
  template <class Signature, class... Args>
  [[nodiscard]] std::optional<WString> Call(const CJavaObject& object,
                                            tarnix::Method<Signature> method, const Args&... args) {
    object.CallVoidMethod(method, args...);
    return TakeException();
  }

  // Takes the pending exception and logs `format` with its text (empty when none was
  // pending).
  void LogWithException(const WCHAR* format);

  // The time of a host sample as a message shows it. The time is read even without a
  // logger, as the host expects of every failed put; only the text is spared.
  WString TimeLabelOf(IHostSample* source);

 private:
  void LookUp(DataClass which);

  CJavaVM& vm_;
  const HostLog& log_;
  std::array<std::shared_ptr<CJavaClass>, static_cast<size_t>(DataClass::Count)> classes_;
  std::array<bool, static_cast<size_t>(DataClass::Count)> looked_{};
};

}  // namespace tarnix::convert
