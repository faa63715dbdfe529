#include "jni/JavaClass.h"

#include "jni/ExceptionText.h"
#include "jni/JavaObject.h"
#include "jni/JavaThreads.h"

CJavaClass::CJavaClass(CJavaThreads* machine, std::string name)
    : ResolvedMethods(std::move(name)), machine_(machine) {}

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
  std::vector<jmethodID> ids;
  for (ULONGLONG i = 0; i < count; ++i) {
    const MethodEntry& row = table[i];
    if (!row.alias || !row.name || !row.signature) {
      tarnix::RaiseIllegalArgument(
          env, "incomplete method table row " + std::to_string(i) + " for " + name_);
      return false;
    }
    ids.push_back(env->GetMethodID(class_.Get(), row.name, row.signature));
    if (!ids.back()) return false;  // NoSuchMethodError is pending
  }
  table_ = table;
  ids_ = std::move(ids);
  return true;
}

jmethodID CJavaClass::GetMethodId(std::string_view alias) const {
  for (size_t row = ids_.size(); row-- > 0;) {
    if (alias == table_[row].alias) return ids_[row];
  }
  return nullptr;
}

std::optional<CJavaObject> CJavaClass::NewLocalObjectWith(const MethodEntry* table, size_t row,
                                                          const jvalue* values) const {
  if (table != table_) return {};
  JNIEnv* env = machine_->GetEnv();
  if (!env || env->ExceptionCheck()) return {};
  const jobject made = env->NewObjectA(class_.Get(), ids_[row], values);
  if (!made) return {};
  return std::optional<CJavaObject>(std::in_place, machine_, this,
                                    tarnix::LocalRef<jobject>(env, made));
}

std::shared_ptr<CJavaObject> CJavaClass::NewPinnedObjectWith(const MethodEntry* table, size_t row,
                                                             const jvalue* values) const {
  if (table != table_) return {};
  JNIEnv* env = machine_->GetEnv();
  if (!env || env->ExceptionCheck()) return {};
  // Straight to a global reference: no exception can be pending beside a new object.
  tarnix::GlobalRef<jobject> pinned =
      tarnix::MakeGlobal(machine_, env, env->NewObjectA(class_.Get(), ids_[row], values));
  if (!pinned) return {};
  return std::make_shared<CJavaObject>(machine_, this, std::move(pinned));
}
