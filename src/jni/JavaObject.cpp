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

  // `owner` is the environment of the thread whose local reference the object is; null
  // for a global one.
  bool Prepare(CJavaVM* machine, const CJavaClass& javaClass, JNIEnv* owner,
               std::string_view alias, tarnix::JavaArguments arguments) {
    env = machine->GetEnv();
    if (!env || env->ExceptionCheck()) return false;
    if (owner && owner != env) {
      tarnix::RaiseIllegalArgument(env, "a local reference of another thread: " +
                                            javaClass.GetName() + " \"" + std::string(alias) +
                                            "\" needs a global object");
      return false;
    }
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
    : machine_(machine), class_(javaClass), global_(std::move(object)), object_(global_.Get()) {}

CJavaObject::CJavaObject(CJavaVM* machine, const CJavaClass* javaClass,
                         tarnix::LocalRef<jobject> object)
    : machine_(machine), class_(javaClass), local_(std::move(object)), object_(local_.Get()) {}

CJavaObject::CJavaObject(CJavaObject&& other) noexcept
    : machine_(other.machine_),
      class_(other.class_),
      global_(std::move(other.global_)),
      local_(std::move(other.local_)),
      object_(std::exchange(other.object_, nullptr)) {}

CJavaObject& CJavaObject::operator=(CJavaObject&& other) noexcept {
  if (this != &other) {
    ForgetIfDetached();
    machine_ = other.machine_;
    class_ = other.class_;
    global_ = std::move(other.global_);
    local_ = std::move(other.local_);
    object_ = std::exchange(other.object_, nullptr);
  }
  return *this;
}

CJavaObject::~CJavaObject() { ForgetIfDetached(); }

void CJavaObject::ForgetIfDetached() {
  if (!local_) return;
  // The environment answers for the thread: one the machine still knows for this thread
  // is the one the reference was made in. A detach has already dropped the thread's
  // frame and the reference with it.
  JNIEnv* env = local_.Env();
  jobject ref = local_.Release();
  if (machine_->GetEnv() == env) env->DeleteLocalRef(ref);
}

std::shared_ptr<CJavaObject> CJavaObject::MakeGlobal() const {
  JNIEnv* env = machine_->GetEnv();
  if (!env || !object_) return {};
  // A converter may hand back an object together with an exception meant for its caller;
  // it is set aside while the reference is made, and stays pending.
  tarnix::LocalRef<jthrowable> pending(env, env->ExceptionOccurred());
  if (pending) env->ExceptionClear();
  tarnix::GlobalRef<jobject> pinned(machine_, env->NewGlobalRef(object_));
  if (pending) env->Throw(pending.Get());
  if (!pinned) return {};
  return std::make_shared<CJavaObject>(machine_, class_, std::move(pinned));
}

void CJavaObject::CallVoidMethodWith(std::string_view alias,
                                     tarnix::JavaArguments arguments) const {
  PreparedCall call;
  if (!call.Prepare(machine_, *class_, Owner(), alias, arguments)) return;
  JNIEnv* env = call.env;
  const jmethodID id = call.method->id;
  const jvalue* values = call.values.Get();
  // Each result kind through its own call, and an object result deleted at once: on a
  // thread that stays attached it would otherwise stay in the frame for good.
  switch (call.method->result) {
    case 'V': env->CallVoidMethodA(object_, id, values); break;
    case 'L': tarnix::LocalRef<jobject>(env, env->CallObjectMethodA(object_, id, values)); break;
    case 'Z': env->CallBooleanMethodA(object_, id, values); break;
    case 'B': env->CallByteMethodA(object_, id, values); break;
    case 'C': env->CallCharMethodA(object_, id, values); break;
    case 'S': env->CallShortMethodA(object_, id, values); break;
    case 'I': env->CallIntMethodA(object_, id, values); break;
    case 'J': env->CallLongMethodA(object_, id, values); break;
    case 'F': env->CallFloatMethodA(object_, id, values); break;
    case 'D': env->CallDoubleMethodA(object_, id, values); break;
  }
}

std::shared_ptr<CJavaString> CJavaObject::CallStringMethodWith(
    std::string_view alias, tarnix::JavaArguments arguments) const {
  tarnix::LocalRef<jstring> answer;
  PreparedCall call;
  if (call.Prepare(machine_, *class_, Owner(), alias, arguments)) {
    if (call.method->returnsString) {
      answer = tarnix::LocalRef<jstring>(
          call.env, static_cast<jstring>(call.env->CallObjectMethodA(
                        object_, call.method->id, call.values.Get())));
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
  if (!call.Prepare(machine_, *class_, Owner(), alias, arguments)) return {};
  if (call.method->result != 'L') {
    tarnix::RaiseIllegalArgument(call.env, class_->GetName() + "." + call.method->name +
                                               call.method->signature +
                                               " does not answer an object");
    return {};
  }
  return tarnix::LocalRef<jobject>(
      call.env, call.env->CallObjectMethodA(object_, call.method->id, call.values.Get()));
}
