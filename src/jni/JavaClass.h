// A loaded Java class and the methods the component may call on it, named by alias
// ("ctor(time)", "putMetric") so that no call site spells a JNI name or descriptor.
#pragma once

#include "jni/GlobalRef.h"
#include "jni/JavaArgument.h"
#include "jni/JavaObject.h"

#include "platform/Win32.h"

#include <jni.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class CJavaVM;

// One row of a class's method table. A constructor's alias is "ctor(" + its Java
// parameter names + ")", its name "<init>"; a method's alias is its Java name.
struct MethodEntry {
  const char* alias;
  const char* name;
  const char* signature;
};

namespace tarnix {
// A resolved row: the id and what its descriptor says about arguments and result.
struct JavaMethod {
  std::string alias;
  jmethodID id = nullptr;
  std::string name;
  std::string signature;
  // One descriptor letter per parameter; 'L' for objects and arrays alike.
  std::string parameters;
  // 'V', a primitive letter, or 'L' for objects and arrays.
  char result = 'V';
  bool returnsString = false;
  bool isConstructor = false;
};
}  // namespace tarnix

class CJavaClass {
 public:
  CJavaClass(CJavaVM* machine, std::string name);
  virtual ~CJavaClass();
  CJavaClass(const CJavaClass&) = delete;
  CJavaClass& operator=(const CJavaClass&) = delete;

  // Finds the class with the calling thread's environment and resolves every row in
  // order. False at the first failure, with the Java exception left pending.
  bool Initialize(const MethodEntry* table, ULONGLONG count);

  // Null when the alias is not in the table.
  jmethodID GetMethodId(std::string_view alias) const;
  const tarnix::JavaMethod* FindMethod(std::string_view alias) const;

  // A new instance through the constructor of that alias, pinned by a global reference.
  // Empty when the alias is not a constructor of the table (nothing is called and no
  // exception is raised), or when the arguments do not fit its descriptor, or the
  // constructor threw (an exception is then pending).
  template <class... Args>
  std::shared_ptr<CJavaObject> NewObject(std::string_view alias, const Args&... args) const {
    return NewObjectWith(alias, tarnix::MakeJavaArguments(args...));
  }
  std::shared_ptr<CJavaObject> NewObjectWith(std::string_view alias,
                                             tarnix::JavaArguments arguments) const;
  // The same as a local reference of the calling thread, without the shared handle: for
  // the objects of one call, which die with it and are not worth a global reference each.
  template <class... Args>
  std::optional<CJavaObject> NewLocalObject(std::string_view alias, const Args&... args) const {
    return NewLocalObjectWith(alias, tarnix::MakeJavaArguments(args...));
  }
  std::optional<CJavaObject> NewLocalObjectWith(std::string_view alias,
                                                tarnix::JavaArguments arguments) const;

  const std::string& GetName() const { return name_; }
  jclass Get() const { return class_.Get(); }
  CJavaVM* GetMachine() const { return machine_; }

 private:
  CJavaVM* machine_;
  std::string name_;
  tarnix::GlobalRef<jclass> class_;
  // In table order, one row per alias. The tables are a dozen rows at most: a scan
  // that compares lengths first beats a tree of strings on every call.
  std::vector<tarnix::JavaMethod> methods_;
};
