// A JNI local frame for the Java work of one operation. Owns the frame: every local
// reference made on the thread while it lives, including those the JVM makes on its own
// (a half-built object whose constructor threw), goes when it goes. A thread that stays
// attached between operations, such as the one that created the machine, never returns to
// Java to drop them otherwise. Declare it after the thread is attached and before any
// local reference of the operation, so that every such reference is gone before it pops.
// A frame that cannot be pushed (the JVM is out of memory) costs nothing: the work runs
// in the enclosing frame, as it would without one, and no exception is left pending.
#pragma once

#include <jni.h>

namespace tarnix {

class LocalFrame {
 public:
  // A null environment (a thread that is not attached) makes no frame.
  explicit LocalFrame(JNIEnv* env) : env_(env) {
    if (!env_) return;
    // The JNI checks warn beyond this many references live at once; a sample's conversion
    // holds a few dozen.
    constexpr jint kCapacity = 256;
    if (env_->PushLocalFrame(kCapacity) == JNI_OK) return;
    env_->ExceptionClear();
    env_ = nullptr;
  }
  ~LocalFrame() {
    if (env_) env_->PopLocalFrame(nullptr);
  }
  LocalFrame(const LocalFrame&) = delete;
  LocalFrame& operator=(const LocalFrame&) = delete;

 private:
  JNIEnv* env_;
};

}  // namespace tarnix
