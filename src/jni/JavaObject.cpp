#include "jni/JavaObject.h"

#include "jni/CallArguments.h"
#include "jni/JavaClass.h"
#include "jni/JavaString.h"
#include "jni/JavaVM.h"

namespace {

// Everything a call needs, or false when it cannot be made: no environment, an
// exception still pending from before (it stays the caller's to read), or an alias or
// arguments that do not fit (an IllegalArgumentException is raised).
struct PreparedCall {
  JNIEnv* env = nullptr;
  const tarnix::JavaMethod* method = nullptr;
  tarnix::CallArguments values;

  bool Prepare(CJavaVM* machine, const CJavaClass& javaClass, std::string_view alias,
               tarnix::JavaArguments arguments) {
    env = machine->GetEnv();
    if (!env || env->ExceptionCheck()) return false;
    method = javaClass.FindMethod(alias);
    if (!method || method->isConstructor) {
      tarnix::RaiseIllegalArgument(env, "no method \"" + std::string(alias) +
                                            "\" in the method table of " +
                                            javaClass.GetName());
      return false;
    }
    return values.Prepare(env, javaClass, alias, *method, arguments);
  }
};

}  // namespace

CJavaObject::CJavaObject(CJavaVM* machine, const CJavaClass* javaClass,
                         tarnix::GlobalRef<jobject> object)
    : machine_(machine), class_(javaClass), object_(std::move(object)) {}

CJavaObject::~CJavaObject() = default;

void CJavaObject::CallVoidMethodWith(std::string_view alias,
                                     tarnix::JavaArguments arguments) const {
  PreparedCall call;
  if (!call.Prepare(machine_, *class_, alias, arguments)) return;
  JNIEnv* env = call.env;
  const jmethodID id = call.method->id;
  const jvalue* values = call.values.Get();
  // Each result kind through its own call, and an object result deleted at once: on a
  // thread that stays attached it would otherwise stay in the frame for good.
  switch (call.method->result) {
    case 'V': env->CallVoidMethodA(object_.Get(), id, values); break;
    case 'L': tarnix::LocalRef<jobject>(env, env->CallObjectMethodA(object_.Get(), id, values)); break;
    case 'Z': env->CallBooleanMethodA(object_.Get(), id, values); break;
    case 'B': env->CallByteMethodA(object_.Get(), id, values); break;
    case 'C': env->CallCharMethodA(object_.Get(), id, values); break;
    case 'S': env->CallShortMethodA(object_.Get(), id, values); break;
    case 'I': env->CallIntMethodA(object_.Get(), id, values); break;
    case 'J': env->CallLongMethodA(object_.Get(), id, values); break;
    case 'F': env->CallFloatMethodA(object_.Get(), id, values); break;
    case 'D': env->CallDoubleMethodA(object_.Get(), id, values); break;
  }
}

std::shared_ptr<CJavaString> CJavaObject::CallStringMethodWith(
    std::string_view alias, tarnix::JavaArguments arguments) const {
  tarnix::LocalRef<jstring> answer;
  PreparedCall call;
  if (call.Prepare(machine_, *class_, alias, arguments)) {
    if (call.method->returnsString) {
      answer = tarnix::LocalRef<jstring>(
          call.env, static_cast<jstring>(call.env->CallObjectMethodA(
                        object_.Get(), call.method->id, call.values.Get())));
    } else {
      tarnix::RaiseIllegalArgument(call.env, class_->GetName() + "." + call.method->name +
                                                 call.method->signature +
                                                 " does not answer a string");
    }
  }
  return std::make_shared<CJavaString>(machine_, std::move(answer));
}

tarnix::LocalRef<jobject> CJavaObject::CallObjectMethodWith(
    std::string_view alias, tarnix::JavaArguments arguments) const {
  PreparedCall call;
  if (!call.Prepare(machine_, *class_, alias, arguments)) return {};
  if (call.method->result != 'L') {
    tarnix::RaiseIllegalArgument(call.env, class_->GetName() + "." + call.method->name +
                                               call.method->signature +
                                               " does not answer an object");
    return {};
  }
  return tarnix::LocalRef<jobject>(
      call.env, call.env->CallObjectMethodA(object_.Get(), call.method->id, call.values.Get()));
}
