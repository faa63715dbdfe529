#include "jni/ExceptionText.h"

#include "jni/LocalRef.h"
#include "jni/StringChars.h"
#include "platform/ThreadAnsi.h"

#include <optional>

namespace {

// Queries of an exception that has already been cleared. A query that throws in turn
// has its exception cleared and counts as having no answer.
class ThrowableReader {
 public:
  explicit ThrowableReader(JNIEnv* env) : env_(env) {}

  // toString() of the object, or nothing when there is none.
  std::optional<WString> ToString(jobject object) {
    tarnix::LocalRef<jclass> type(env_, env_->GetObjectClass(object));
    if (!Answered(type.Get())) return std::nullopt;
    const jmethodID method = env_->GetMethodID(type.Get(), "toString", "()Ljava/lang/String;");
    if (!Answered(method)) return std::nullopt;
    tarnix::LocalRef<jstring> string(env_,
                                     static_cast<jstring>(env_->CallObjectMethod(object, method)));
    if (!Answered(string.Get())) return std::nullopt;
    const tarnix::StringUtfChars chars(env_, string.Get());
    if (!Answered(chars.Get())) return std::nullopt;
    // Java hands out modified UTF-8; it is read in the thread's ANSI code page, which is
    // what the host's log expects of it.
    return tarnix::FromThreadAnsi(chars.Get());
  }

  tarnix::LocalRef<jobjectArray> StackTrace(jobject throwable) {
    tarnix::LocalRef<jclass> type(env_, env_->GetObjectClass(throwable));
    if (!Answered(type.Get())) return {};
    const jmethodID method =
        env_->GetMethodID(type.Get(), "getStackTrace", "()[Ljava/lang/StackTraceElement;");
    if (!Answered(method)) return {};
    tarnix::LocalRef<jobjectArray> frames(
        env_, static_cast<jobjectArray>(env_->CallObjectMethod(throwable, method)));
    if (!Answered(frames.Get())) return {};
    return frames;
  }

  void AppendFrames(jobjectArray frames, WString& out) {
    const jsize count = env_->GetArrayLength(frames);
    for (jsize i = 0; i < count; ++i) {
      tarnix::ScopedLocalRef frame(env_, env_->GetObjectArrayElement(frames, i));
      if (!Answered(frame.Get())) continue;
      const std::optional<WString> text = ToString(frame.Get());
      if (!text) continue;
      out += WSTR("\r\n\t");
      out += *text;
    }
  }

 private:
  template <class T>
  bool Answered(T result) {
    if (env_->ExceptionCheck()) {
      env_->ExceptionClear();
      return false;
    }
    return result != nullptr;
  }

  JNIEnv* env_;
};

}  // namespace

namespace tarnix {

WString TakePendingExceptionText(JNIEnv* env) {
  tarnix::LocalRef<jthrowable> exception(env, env->ExceptionOccurred());
  if (!exception) return WString();
  // JNI allows no queries while an exception is pending, so it is taken and cleared
  // first; the text comes out the same.
  env->ExceptionClear();
  ThrowableReader reader(env);
  // Without a toString() answer, the frames alone.
  WString text = reader.ToString(exception.Get()).value_or(WString());
  tarnix::LocalRef<jobjectArray> frames = reader.StackTrace(exception.Get());
  if (frames) reader.AppendFrames(frames.Get(), text);
  return text;
}

void RaiseIllegalArgument(JNIEnv* env, const std::string& message) {
  if (env->ExceptionCheck()) return;
  LocalRef<jclass> type(env, env->FindClass("java/lang/IllegalArgumentException"));
  if (type) env->ThrowNew(type.Get(), message.c_str());
}

}  // namespace tarnix
