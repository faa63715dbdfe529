// The bridge's own test class (com.tarnix.testing.Probe) and a method table for it.
#pragma once

#include "jni/JavaClass.h"

namespace tarnix::testing {

inline constexpr const char kProbe[] = "com/tarnix/testing/Probe";

inline constexpr MethodEntry kProbeMethods[] = {
    {"ctor()", "<init>", "()V"},
    {"ctor(time)", "<init>", "(J)V"},
    {"ctor(id,name,flag)", "<init>", "(ILjava/lang/String;Z)V"},
    {"kinds", "kinds", "(IJDZLjava/lang/String;)Ljava/lang/String;"},
    {"wideLong", "wideLong", "(J)Ljava/lang/String;"},
    {"wideDouble", "wideDouble", "(D)Ljava/lang/String;"},
    {"echo", "echo", "(Ljava/lang/String;)Ljava/lang/String;"},
    {"length", "length", "(Ljava/lang/String;)I"},
    {"answerNull", "answerNull", "()Ljava/lang/String;"},
    {"answerObject", "answerObject", "()Ljava/lang/Object;"},
    {"answerInt", "answerInt", "()I"},
    {"record", "record", "(Ljava/lang/String;)V"},
    {"describe", "describe", "()Ljava/lang/String;"},
    {"throwWithFrames", "throwWithFrames", "(Ljava/lang/String;)V"},
    {"throwWithoutStack", "throwWithoutStack", "(Ljava/lang/String;)V"},
    {"throwNullText", "throwNullText", "()V"},
    {"throwBrokenText", "throwBrokenText", "()V"},
    {"throwNamed", "throwNamed", "(Ljava/lang/String;Ljava/lang/String;)V"},
};

}  // namespace tarnix::testing
