#include "jni/CallArguments.h"

#include "jni/LocalRef.h"

namespace tarnix {
namespace {

std::string MethodText(const CJavaClass& javaClass, std::string_view alias,
                       const JavaMethod& method) {
  std::string text = javaClass.GetName();
  text += '.';
  text += method.name;
  text += method.signature;
  text += " (alias \"";
  text += alias;
  text += "\")";
  return text;
}

}  // namespace

void RaiseIllegalArgument(JNIEnv* env, const std::string& message) {
  if (env->ExceptionCheck()) return;
  LocalRef<jclass> type(env, env->FindClass("java/lang/IllegalArgumentException"));
  if (type) env->ThrowNew(type.Get(), message.c_str());
}

bool CallArguments::Prepare(JNIEnv* env, const CJavaClass& javaClass, std::string_view alias,
                            const JavaMethod& method, JavaArguments arguments) {
  const std::string& parameters = method.parameters;
  if (arguments.size() != parameters.size()) {
    RaiseIllegalArgument(env, MethodText(javaClass, alias, method) + " takes " +
                                  std::to_string(parameters.size()) + " arguments, not " +
                                  std::to_string(arguments.size()));
    return false;
  }
  if (parameters.size() > inline_.size()) {
    spilled_.resize(parameters.size());
    data_ = spilled_.data();
  }
  for (size_t i = 0; i < parameters.size(); ++i) {
    if (!arguments[i].Fits(parameters[i])) {
      RaiseIllegalArgument(env, MethodText(javaClass, alias, method) + ": argument " +
                                    std::to_string(i + 1) + " is " + arguments[i].Describe() +
                                    ", which does not convert to '" + parameters[i] + "'");
      return false;
    }
    data_[i] = arguments[i].As(parameters[i]);
  }
  return true;
}

}  // namespace tarnix
