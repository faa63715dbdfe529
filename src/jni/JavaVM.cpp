#include "jni/JavaVM.h"

#include "jni/ExceptionText.h"
#include "jni/JavaString.h"

#include "platform/JavaRuntime.h"

#include <functional>
#include <tuple>

CJavaVM::CJavaVM(const WString& runtimeDirectory)
    : dllDirectory_(runtimeDirectory + tarnix::platform::kRuntimeDllDirectory),
      runtimeLibraryPath_(runtimeDirectory + tarnix::platform::kRuntimeLibrary) {}

CJavaVM::~CJavaVM() {
  ForgetClassesAndThreads();
  if (vm_) {
    vm_->DestroyJavaVM();
    vm_ = nullptr;
  }
  // The library goes with library_, after the machine.
}

void CJavaVM::ForgetClassesAndThreads() {
  // Classes delete their global references while the machine still exists and the
  // threads are still known; their destructors must not run under the class lock.
  decltype(classes_) classes;
  {
    std::lock_guard<std::mutex> lock(classLock_);
    classes.swap(classes_);
  }
  classes.clear();
  ForgetThreads();
}

void CJavaVM::Unload() {
  ForgetClassesAndThreads();
  // The JVM goes on running on its own threads; unmapping its code under them would
  // bring the host down.
  if (vm_) library_.Pin();
  vm_ = nullptr;
  creatingThread_ = 0;
  library_.Free();
}

LONG CJavaVM::Create(std::vector<std::string> options) {
  if (vm_) return 0;
  const HRESULT loaded = library_.Load(runtimeLibraryPath_, dllDirectory_);
  if (FAILED(loaded)) return loaded;
  const tarnix::CreateJavaVMFunction createJavaVM = library_.GetCreateJavaVM();
  if (!createJavaVM) return tarnix::platform::LastErrorResult();

  std::vector<JavaVMOption> jvmOptions(options.size());  // zero-filled: no extraInfo
  for (size_t i = 0; i < options.size(); ++i) jvmOptions[i].optionString = options[i].data();
  JavaVMInitArgs args{};
  args.version = JNI_VERSION_1_6;
  args.nOptions = static_cast<jint>(jvmOptions.size());
  args.options = jvmOptions.empty() ? nullptr : jvmOptions.data();
  args.ignoreUnrecognized = JNI_FALSE;

  JavaVM* vm = nullptr;
  JNIEnv* env = nullptr;
  const jint result = createJavaVM(&vm, reinterpret_cast<void**>(&env), &args);
  if (result != JNI_OK) return result;
  if (!vm || !env) return JNI_ERR;
  vm_ = vm;
  creatingThread_ = GetCurrentThreadId();
  Register(env);
  return 0;
}

CJavaVM::ThreadDetachGuard CJavaVM::MakeDetachGuard() {
  const DWORD thread = GetCurrentThreadId();
  return ThreadDetachGuard(this, [thread](CJavaVM* machine) {
    // Only the attached thread can detach itself; a guard released elsewhere would
    // detach the wrong thread.
    if (thread == GetCurrentThreadId()) std::ignore = machine->DetachCurrentThread();
  });
}

CJavaVM::ThreadDetachGuard CJavaVM::AttachForScope(LONG* result) {
  LONG attached = 0;
  ThreadDetachGuard guard;
  if (!IsRegistered()) {
    attached = AttachCurrentThread();
    if (attached == 0) guard = MakeDetachGuard();
  }
  if (result) *result = attached;
  return guard;
}

std::shared_ptr<CJavaClass> CJavaVM::LoadClass(const std::string& name, const MethodEntry* table,
                                               ULONGLONG count) {
  // A class that fails to resolve is destroyed after the lock is left, so that its
  // global reference goes without the class lock held.
  std::shared_ptr<CJavaClass> candidate;
  std::lock_guard<std::mutex> lock(classLock_);
  const auto found = classes_.find(name);
  if (found != classes_.end()) return found->second;
  candidate = std::make_shared<CJavaClass>(this, name);
  if (!candidate->Initialize(table, count)) return {};
  classes_[name] = candidate;
  return candidate;
}

std::shared_ptr<CJavaClass> CJavaVM::GetClass(std::string_view name) {
  std::lock_guard<std::mutex> lock(classLock_);
  const auto found = classes_.find(name);
  return found == classes_.end() ? nullptr : found->second;
}

std::shared_ptr<CJavaString> CJavaVM::NewString(std::basic_string_view<WCHAR> text) {
  std::optional<CJavaString> string = NewLocalString(text);
  if (!string) return {};
  return std::make_shared<CJavaString>(std::move(*string));
}

std::optional<CJavaString> CJavaVM::RefuseLongText(JNIEnv* env) {
  tarnix::RaiseIllegalArgument(env, "text too long for a Java string");
  return {};
}

std::shared_ptr<CJavaString> CJavaVM::NewString(const WCHAR* text) {
  return NewString(text ? std::basic_string_view<WCHAR>(text) : std::basic_string_view<WCHAR>());
}
