#include "jni/JavaClass.h"

#include "jni/CallArguments.h"
#include "jni/JavaObject.h"
#include "jni/JavaVM.h"
#include "jni/Signature.h"

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
    method.name = row.name;
    method.signature = row.signature;
    method.result = result[0] == '[' ? 'L' : result[0];
    method.returnsString = result == "Ljava/lang/String;";
    method.isConstructor = method.name == "<init>";
    methods_[row.alias] = std::move(method);  // a later row of the same alias wins
  }
  return true;
}

const tarnix::JavaMethod* CJavaClass::FindMethod(std::string_view alias) const {
  const auto found = methods_.find(alias);
  return found == methods_.end() ? nullptr : &found->second;
}

jmethodID CJavaClass::GetMethodId(std::string_view alias) const {
  const tarnix::JavaMethod* method = FindMethod(alias);
  return method ? method->id : nullptr;
}

std::shared_ptr<CJavaObject> CJavaClass::NewObjectWith(std::string_view alias,
                                                       tarnix::JavaArguments arguments) const {
  const tarnix::JavaMethod* method = FindMethod(alias);
  if (!method || !method->isConstructor) return {};
  JNIEnv* env = machine_->GetEnv();
  if (!env || env->ExceptionCheck()) return {};
  tarnix::CallArguments values;
  if (!values.Prepare(env, *this, alias, *method, arguments)) return {};
  tarnix::GlobalRef<jobject> object = tarnix::MakeGlobal(
      machine_, env, env->NewObjectA(class_.Get(), method->id, values.Get()));
  if (!object) return {};
  return std::make_shared<CJavaObject>(machine_, this, std::move(object));
}
