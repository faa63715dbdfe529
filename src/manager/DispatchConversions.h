// The conversions the senders share: each turns one part of a call into its Java object,
// or answers why it could not.
#pragma once

#include "manager/Dispatch.h"

#include <jni.h>

#include <memory>

class CJavaObject;
class CJavaString;
class CJavaVM;

namespace tarnix {

// A converted part, or the call's result when there is none (E_FAIL, or the code a
// conversion raised).
struct Converted {
  std::shared_ptr<CJavaObject> object;
  HRESULT result = S_OK;

  explicit operator bool() const { return object != nullptr; }
  DispatchOutcome Failure() const { return {FAILED(result) ? result : E_FAIL, nullptr}; }
};

[[nodiscard]] Converted ConvertConnection(const DispatchCall& call);
// The call's user session; the caller has checked that the data is one.
[[nodiscard]] Converted ConvertSession(const DispatchCall& call);
[[nodiscard]] Converted ConvertDesktop(const DispatchCall& call);

// A Java string the message cannot go without. Empty when it cannot be made, with no
// exception left pending: the call then ends as for any missing Java object, silently.
std::shared_ptr<CJavaString> RequiredString(CJavaVM& machine, const WString& text);

// The number of the call as the Java long it is passed as, bit for bit.
inline jlong JavaNumber(const DispatchCall& call) { return static_cast<jlong>(call.number); }

}  // namespace tarnix
