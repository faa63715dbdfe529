// Misuses of the bridge that must be compile errors. Each MISUSE number is built on its
// own (MustNotCompile.cmake) and must fail with the message after its number; MISUSE 0,
// the same calls made right, is part of the normal build, so a case fails for its own
// line and nothing else.
#include "convert/ClassTable.h"
#include "jni/JavaClass.h"
#include "jni/JavaObject.h"
#include "jni/JavaString.h"

#include <cstdint>

namespace methods = tarnix::methods;
using tarnix::classes::kBaseMetricMethods;

void UseTheBridge(const CJavaClass& metricClass, const CJavaObject& metric,
                  const CJavaObject& client, const CJavaString& text) {
// Each case sits on its own #elif line, which MustNotCompile.cmake reads as it stands.
// clang-format off
#if MISUSE == 0
  static constexpr auto putLongValue =
      tarnix::MethodOf<void(jlong)>(kBaseMetricMethods, "putLongValue");
  static constexpr auto ctorName =
      tarnix::ConstructorOf<void(jstring)>(kBaseMetricMethods, "ctor(name)");
  metric.CallVoidMethod(putLongValue, jlong{1});
  metricClass.NewObject(ctorName, text);
  metric.CallVoidMethod(methods::BaseMetric::putLongValue, 1);
  metric.CallVoidMethod(methods::BaseMetric::putStringValue, text);
  metric.CallVoidMethod(methods::BaseMetric::addInstance, metric);
  metric.CallVoidMethod(methods::BaseMetric::addInstance, nullptr);
  client.CallStringMethod(methods::DesktopMessageClient::onDesktopPoll, metric, 1, text);
  client.CallVoidMethod(methods::DesktopMessageClient::onDesktopPoll, metric, 1, text);
#elif MISUSE == 1  // the alias is not in the method table
  static constexpr auto putLongValue =
      tarnix::MethodOf<void(jlong)>(kBaseMetricMethods, "putLongValu");
#elif MISUSE == 2  // the signature does not spell the row's descriptor
  static constexpr auto putLongValue =
      tarnix::MethodOf<void(jint)>(kBaseMetricMethods, "putLongValue");
#elif MISUSE == 3  // the signature does not spell the row's descriptor
  static constexpr auto putStringValue =
      tarnix::MethodOf<void(jobject)>(kBaseMetricMethods, "putStringValue");
#elif MISUSE == 4  // a constructor is a Constructor
  static constexpr auto ctorName =
      tarnix::MethodOf<void(jstring)>(kBaseMetricMethods, "ctor(name)");
#elif MISUSE == 5  // the alias is not a constructor
  static constexpr auto addInstance =
      tarnix::ConstructorOf<void(jobject)>(kBaseMetricMethods, "addInstance");
#elif MISUSE == 6  // does not convert to the parameter without a cast
  metric.CallVoidMethod(methods::BaseMetric::putLongValue, 1.0);
#elif MISUSE == 7  // does not convert to the parameter without a cast
  metric.CallVoidMethod(methods::BaseMetric::putLongValue, std::uint64_t{1});
#elif MISUSE == 8  // does not convert to the parameter without a cast
  metric.CallVoidMethod(methods::BaseMetric::putStringValue, metric);
#elif MISUSE == 9  // does not convert to the parameter without a cast
  metric.CallVoidMethod(methods::BaseMetric::putStringValue, "text");
#elif MISUSE == 10  // does not convert to the parameter without a cast
  metricClass.NewObject(methods::BaseUserSession::ctorIdSidUserDomainConnected, 1, text, text,
                        text, 1);
#elif MISUSE == 11  // does not convert to the parameter without a cast
  client.CallVoidMethod(methods::DesktopInformation::putTotalMemory, jlong{1});
#elif MISUSE == 12  // the method takes other arguments
  metric.CallVoidMethod(methods::BaseMetric::putLongValue);
#elif MISUSE == 13  // the constructor takes other arguments
  metricClass.NewObject(methods::BaseMetric::ctorName, text, text);
#elif MISUSE == 14  // the method does not answer a string
  client.CallStringMethod(methods::DesktopMessageClient::onUserLogoff, metric, 1, metric);
#elif MISUSE == 15  // the method does not answer an object
  client.CallObjectMethod(methods::DesktopMessageClient::dispose);
#elif MISUSE == 16  // no matching function
  metric.CallVoidMethod(methods::BaseMetric::ctorName, text);
#endif
}
// clang-format on
