// A pending Java exception set aside while more JNI calls are made (JNI allows none while
// one is pending), and raised again once they are done. Only the first one held counts;
// later ones are cleared and dropped. Lives on the thread whose environment it holds.
#pragma once

#include "jni/LocalRef.h"

#include <jni.h>

namespace tarnix {

class HeldException {
 public:
  explicit HeldException(JNIEnv* env) : env_(env) {}

  // Takes what is pending now, if anything.
  void Hold() {
    if (!env_ || !env_->ExceptionCheck()) return;
    LocalRef<jthrowable> thrown(env_, env_->ExceptionOccurred());
    env_->ExceptionClear();
    if (!first_) first_ = std::move(thrown);
  }
  // Leaves the first exception held pending again.
  void Raise() const {
    if (first_) env_->Throw(first_.Get());
  }

 private:
  JNIEnv* env_;
  LocalRef<jthrowable> first_;
};

}  // namespace tarnix
