// The one Java virtual machine the component runs inside the host's process: the runtime
// library loaded from a runtime directory, the machine with the JNI environment of every
// thread that uses it (jni/JavaThreads.h), and the classes loaded so far.
#pragma once

#include "jni/ExceptionText.h"
#include "jni/JavaClass.h"
#include "jni/JavaString.h"
#include "jni/JavaThreads.h"
#include "jni/RuntimeLibrary.h"

#include "platform/Win32.h"

#include <jni.h>

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class CJavaVM : public CJavaThreads {
 public:
  // runtimeDirectory is the runtime's home and ends with a path separator; the library
  // paths are plain concatenations onto it.
  explicit CJavaVM(const WString& runtimeDirectory);
  virtual ~CJavaVM();
  CJavaVM(const CJavaVM&) = delete;
  CJavaVM& operator=(const CJavaVM&) = delete;

  // Loads the runtime library and creates the machine on the calling thread, which stays
  // attached for the machine's life. 0, a JNI error code (negative), or the load
  // failure as an HRESULT. A second call is a successful no-op.
  [[nodiscard]] LONG Create(std::vector<std::string> options);

  // Releasing the last copy detaches the calling thread. It never deletes the machine.
  using ThreadDetachGuard = std::shared_ptr<CJavaVM>;
  ThreadDetachGuard MakeDetachGuard();
  // Attaches the calling thread for the life of the returned guard. A thread that was
  // already registered (the creating thread, or one an outer operation attached) gets an
  // empty guard and stays attached; so does a thread the machine refused, with the code
  // in *result.
  ThreadDetachGuard AttachForScope(LONG* result = nullptr);

  // Loads a class once and caches it by name; a later load of the name answers the
  // cached class and ignores the table. Empty on failure, with the Java exception pending
  // and nothing cached.
  std::shared_ptr<CJavaClass> LoadClass(const std::string& name, const MethodEntry* table,
                                        ULONGLONG count);
  template <size_t N>
  std::shared_ptr<CJavaClass> LoadClass(const std::string& name, const MethodEntry (&table)[N]) {
    return LoadClass(name, table, N);
  }
  // A class loaded before; never loads.
  std::shared_ptr<CJavaClass> GetClass(std::string_view name);

  // A Java string of every UTF-16 code unit of the text, embedded zeros included. Empty
  // on failure, with the Java exception pending. A null pointer is the empty text.
  std::shared_ptr<CJavaString> NewString(std::basic_string_view<WCHAR> text);
  std::shared_ptr<CJavaString> NewString(const WCHAR* text);
  // The same without the shared handle, for the many strings of one call: inline, and
  // made where the caller keeps it.
  [[nodiscard]] std::optional<CJavaString> NewLocalString(std::basic_string_view<WCHAR> text) {
    JNIEnv* env = GetEnv();
    if (!env || env->ExceptionCheck()) return {};
    if (text.size() > static_cast<size_t>(INT32_MAX)) return RefuseLongText(env);
    static const jchar kEmpty = 0;
    const jchar* chars = text.empty() ? &kEmpty : reinterpret_cast<const jchar*>(text.data());
    const jstring made = env->NewString(chars, static_cast<jsize>(text.size()));
    if (!made) return {};
    return std::optional<CJavaString>(std::in_place, this, tarnix::LocalRef<jstring>(env, made));
  }

  // The one way the component takes a pending Java exception: it is cleared (JNI allows
  // no other call while one is pending) and its text comes back, its toString() followed
  // by "\r\n\t" and each stack frame. Nothing when none is pending. Inline: it is asked
  // after every call into Java, and the plain check spares a reference when all is well.
  std::optional<WString> TakeException() { return tarnix::TakeException(GetEnv()); }

  // Lets go of the machine without destroying it, for a host that is shutting down: the
  // classes and the thread map are emptied and the runtime library's handle is freed. A
  // running JVM cannot lose its code, so its library stays mapped until the process ends.
  void Unload();

  const WString& GetDllDirectory() const { return dllDirectory_; }
  const WString& GetRuntimeLibraryPath() const { return runtimeLibraryPath_; }
  HMODULE GetRuntimeModule() const { return library_.Get(); }

 private:
  // Empty, with an IllegalArgumentException raised.
  [[nodiscard]] std::optional<CJavaString> RefuseLongText(JNIEnv* env);
  void ForgetClassesAndThreads();

  WString dllDirectory_;
  WString runtimeLibraryPath_;
  tarnix::RuntimeLibrary library_;
  std::mutex classLock_;
  std::map<std::string, std::shared_ptr<CJavaClass>, std::less<>> classes_;
};
