#include "jni/JavaClass.h"

#include "jni/CallArguments.h"
#include "jni/JavaObject.h"
#include "jni/JavaVM.h"
#include "jni/Signature.h"

namespace {

// The row of an alias, const or not as the table is.
template <class Methods>
auto FindRow(Methods& methods, std::string_view alias) -> decltype(&methods[0]) {
  for (auto& method : methods) {
    if (method.alias.size() == alias.size() && method.alias == alias) return &method;
  }
  return nullptr;
}

}  // namespace

CJavaClass::CJavaClass(CJavaVM* machine, std::string name)
    : machine_(machine), name_(std::move(name)) {}

CJavaClass::~CJavaClass() = default;

bool CJavaClass::Initialize(const MethodEntry* table, ULONGLONG count) {
  JNIEnv* env = machine_->GetEnv();
  if (!env || env->ExceptionCheck()) return false;
  class_ = tarnix::MakeGlobal(machine_, env, env->FindClass(name_.c_str()));
  if (!class_) return false;
  if (count == 0) return true;
  if (!table) {
    tarnix::RaiseIllegalArgument(env, "no method table for " + name_);
    return false;
  }
  for (ULONGLONG i = 0; i < count; ++i) {
    const MethodEntry& row = table[i];
    if (!row.alias || !row.name || !row.signature) {
      tarnix::RaiseIllegalArgument(env, "incomplete method table row " + std::to_string(i) +
                                            " for " + name_);
      return false;
    }
    tarnix::JavaMethod method;
    method.id = env->GetMethodID(class_.Get(), row.name, row.signature);
    if (!method.id) return false;  // NoSuchMethodError is pending
    std::string result;
    if (!tarnix::ParseMethodDescriptor(row.signature, method.parameters, result)) {
      tarnix::RaiseIllegalArgument(env, std::string("malformed descriptor ") + row.signature);
      return false;
    }
    method.alias = row.alias;
    method.name = row.name;
    method.signature = row.signature;
    method.result = result[0] == '[' ? 'L' : result[0];
    method.returnsString = result == "Ljava/lang/String;";
    method.isConstructor = method.name == "<init>";
    // A later row of the same alias wins.
    if (tarnix::JavaMethod* earlier = FindRow(methods_, method.alias)) {
      *earlier = std::move(method);
    } else {
      methods_.push_back(std::move(method));
    }
  }
  return true;
}

const tarnix::JavaMethod* CJavaClass::FindMethod(std::string_view alias) const {
  return FindRow(methods_, alias);
}

jmethodID CJavaClass::GetMethodId(std::string_view alias) const {
  const tarnix::JavaMethod* method = FindMethod(alias);
  return method ? method->id : nullptr;
}

std::optional<CJavaObject> CJavaClass::NewLocalObjectWith(std::string_view alias,
                                                          tarnix::JavaArguments arguments) const {
  const tarnix::JavaMethod* method = FindMethod(alias);
  if (!method || !method->isConstructor) return {};
  JNIEnv* env = machine_->GetEnv();
  if (!env || env->ExceptionCheck()) return {};
  tarnix::CallArguments values;
  if (!values.Prepare(env, *this, alias, *method, arguments)) return {};
  tarnix::LocalRef<jobject> object(env, env->NewObjectA(class_.Get(), method->id, values.Get()));
  if (!object) return {};
  return CJavaObject(machine_, this, std::move(object));
}

std::shared_ptr<CJavaObject> CJavaClass::NewObjectWith(std::string_view alias,
                                                       tarnix::JavaArguments arguments) const {
  std::optional<CJavaObject> local = NewLocalObjectWith(alias, arguments);
  if (!local) return {};
  return local->MakeGlobal();
}
