// A real JVM on the stand-in jars for tests, and the stand-ins' test controls
// (com.tarnix.testing): recorded calls, answers of the message client, injected faults.
#pragma once

#include "jni/GlobalRef.h"
#include "jni/JavaVM.h"

#include "platform/Win32.h"

#include <jni.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tarnix::testing {

// A machine made on the calling thread from the JDK the build uses; fails the test
// (and answers null) when it cannot be made. One per process: a JVM cannot be made twice.
std::shared_ptr<CJavaVM> CreateTestMachine();

// Calls on the stand-ins' test controls through raw JNI, on the calling (attached)
// thread, or on the thread of the given environment. Text crosses as UTF-8. Each call
// fails the test on a Java exception.
class JavaControl {
 public:
  explicit JavaControl(CJavaVM& machine) : machine_(&machine) {}
  explicit JavaControl(JNIEnv* env) : env_(env) {}

  // Place is "<Class>.<method>" or "<Class>.<init>"; every hit throws a new
  // exceptionClass(message), or only the nth (from 1).
  void ThrowIn(const std::string& where, const std::string& exceptionClass,
               const std::string& message) {
    ThrowOnHit(where, 0, exceptionClass, message);  // 0: every hit
  }
  void ThrowOnHit(const std::string& where, int nth, const std::string& exceptionClass,
                  const std::string& message);
  void ClearFaults();

  // What the message client's method answers; nullopt answers null.
  void SetAnswer(const std::string& method, const std::optional<std::string>& text);

  // The calls that reached the stand-ins, oldest first, as "method(arg, ...)".
  std::vector<std::string> Calls();
  void ClearCalls();

  // describe() of a data-model stand-in.
  std::string Describe(jobject object);
  // Java's own text of a throwable: toString(), then each frame on a line of its own.
  std::string ThrowableText(jobject throwable);
  std::string SystemProperty(const char* name);

 private:
  JNIEnv* Env();
  // A static method's answer as text; empty for a void one.
  std::string CallStatic(const char* className, const char* method, const char* signature,
                         std::vector<jvalue> arguments);
  jstring Java(const std::string& text);
  std::string Text(jstring string);

  CJavaVM* machine_ = nullptr;
  JNIEnv* env_ = nullptr;
};

// Makes every put on the one HashMap held by a JNI local reference (a converter's map,
// between its construction and its first put) throw ArrayStoreException from inside
// HashMap.put, until the map is mended: its bucket table becomes an array of a narrower
// element type. java.util.HashMap offers no other way to fail a put. The map stays
// referenced by the returned global reference (empty, with the test failed, when the map
// is not found).
GlobalRef<jobject> BreakLocallyHeldMap(CJavaVM& vm);
// Gives the map a table it can store in again; it forgets what it held.
void MendMap(CJavaVM& vm, jobject map);

// UTF-8 of wide text, for readable assertions.
std::string Narrow(const WString& text);

}  // namespace tarnix::testing
