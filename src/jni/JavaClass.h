// A loaded Java class and the methods the component may call on it. Call sites name a
// method by a handle of the class's method table (jni/JavaMethod.h), so that no call site
// spells a JNI name or descriptor and no call looks anything up by text.
#pragma once

#include "jni/GlobalRef.h"
#include "jni/JavaArgument.h"
#include "jni/JavaMethod.h"
#include "jni/JavaObject.h"
#include "jni/ResolvedMethods.h"

#include "platform/Win32.h"

#include <jni.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class CJavaThreads;

class CJavaClass : public tarnix::ResolvedMethods {
 public:
  CJavaClass(CJavaThreads* machine, std::string name);
  virtual ~CJavaClass();
  CJavaClass(const CJavaClass&) = delete;
  CJavaClass& operator=(const CJavaClass&) = delete;

  // Finds the class with the calling thread's environment and resolves every row in
  // order. False at the first failure, with the Java exception left pending. The table
  // must outlive the class: handles are checked against it.
  [[nodiscard]] bool Initialize(const MethodEntry* table, ULONGLONG count);

  // By text, for whoever walks the table at run time; calls use handles. Null when the
  // alias is not in the table; a later row of the same alias wins.
  jmethodID GetMethodId(std::string_view alias) const;

  // A new instance through the constructor, pinned by a global reference. Empty when the
  // constructor is not of this class's table (nothing is called and no exception is
  // raised), when an exception was already pending, or when the constructor threw (its
  // exception is then pending).
  template <class... P, class... Args>
  std::shared_ptr<CJavaObject> NewObject(tarnix::Constructor<void(P...)> constructor,
                                         const Args&... args) const {
    static_assert(sizeof...(Args) == sizeof...(P), "the constructor takes other arguments");
    const tarnix::JValues<sizeof...(P)> values{{tarnix::ToJValue<P>(args)...}};
    return NewPinnedObjectWith(constructor.Table(), constructor.Row(), values.Get());
  }
  // The same as a local reference of the calling thread, without the shared handle: for
  // the objects of one call, which die with it and are not worth a global reference each.
  template <class... P, class... Args>
  [[nodiscard]] std::optional<CJavaObject> NewLocalObject(
      tarnix::Constructor<void(P...)> constructor, const Args&... args) const {
    static_assert(sizeof...(Args) == sizeof...(P), "the constructor takes other arguments");
    const tarnix::JValues<sizeof...(P)> values{{tarnix::ToJValue<P>(args)...}};
    return NewLocalObjectWith(constructor.Table(), constructor.Row(), values.Get());
  }

  jclass Get() const { return class_.Get(); }
  CJavaThreads* GetMachine() const { return machine_; }

 private:
  [[nodiscard]] std::optional<CJavaObject> NewLocalObjectWith(const MethodEntry* table, size_t row,
                                                              const jvalue* values) const;
  std::shared_ptr<CJavaObject> NewPinnedObjectWith(const MethodEntry* table, size_t row,
                                                   const jvalue* values) const;

  CJavaThreads* machine_;
  tarnix::GlobalRef<jclass> class_;
};
