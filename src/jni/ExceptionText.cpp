#include "jni/ExceptionText.h"

#include "jni/LocalRef.h"
#include "jni/StringChars.h"
#include "platform/ThreadAnsi.h"

namespace {

// Queries of an exception that has already been cleared. A query that throws in turn
// has its exception cleared and counts as having no answer.
class ThrowableReader {
 public:
  explicit ThrowableReader(JNIEnv* env) : env_(env) {}

  // toString() of the object, or false when there is none.
  bool ToString(jobject object, WString& text) {
    tarnix::LocalRef<jclass> type(env_, env_->GetObjectClass(object));
    if (!Answered(type.Get())) return false;
    const jmethodID method = env_->GetMethodID(type.Get(), "toString", "()Ljava/lang/String;");
    if (!Answered(method)) return false;
    tarnix::LocalRef<jstring> string(env_,
                                     static_cast<jstring>(env_->CallObjectMethod(object, method)));
    if (!Answered(string.Get())) return false;
    const tarnix::StringUtfChars chars(env_, string.Get());
    if (!Answered(chars.Get())) return false;
    // Java hands out modified UTF-8; it is read in the thread's ANSI code page, which is
    // what the host's log expects of it.
    text = tarnix::FromThreadAnsi(chars.Get());
    return true;
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
      WString text;
      if (!Answered(frame.Get()) || !ToString(frame.Get(), text)) continue;
      out += WSTR("\r\n\t");
      out += text;
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
  // JNI allows no queries while an exception is pending, so it is taken and cleared
  // first; the text comes out the same.
  env->ExceptionClear();
  ThrowableReader reader(env);
  WString text;  // without a toString() answer, the frames alone
  reader.ToString(exception.Get(), text);
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
