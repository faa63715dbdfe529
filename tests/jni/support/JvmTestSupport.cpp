#include "JvmTestSupport.h"

#include "TestPaths.h"

#include "jni/LocalRef.h"

#include "platform/WideText.h"

#include <gtest/gtest.h>
#include <jvmti.h>

namespace tarnix::testing {

std::shared_ptr<CJavaVM> CreateTestMachine() {
  auto machine = std::make_shared<CJavaVM>(TARNIX_TEST_JAVA_HOME);
  // The component's own machine options, on the stand-ins' class path.
  const LONG result = machine->Create(
      {std::string("-Djava.class.path=") + TARNIX_TEST_CLASSPATH, "-Xrs", "-Xmx100M"});
  EXPECT_EQ(result, 0) << "the JVM of " << Narrow(TARNIX_TEST_JAVA_HOME) << " did not start";
  return result == 0 ? machine : nullptr;
}

std::string Narrow(const WString& text) { return WideToUtf8(text); }

JNIEnv* JavaControl::Env() {
  JNIEnv* env = machine_ ? machine_->GetEnv() : env_;
  EXPECT_NE(env, nullptr) << "test controls called on an unattached thread";
  // Also the check JNI asks for after every call into Java.
  if (env && env->ExceptionCheck()) {
    env->ExceptionDescribe();
    env->ExceptionClear();
    ADD_FAILURE() << "a Java exception was pending when the test looked";
  }
  return env;
}

jstring JavaControl::Java(const std::string& text) {
  const WString wide = Utf8ToWide(text);
  return Env()->NewString(reinterpret_cast<const jchar*>(wide.data()),
                          static_cast<jsize>(wide.size()));
}

std::string JavaControl::Text(jstring string) {
  if (!string) return "<null>";
  JNIEnv* env = Env();
  const jsize length = env->GetStringLength(string);
  WString wide(static_cast<size_t>(length), WCHAR{0});
  env->GetStringRegion(string, 0, length, reinterpret_cast<jchar*>(&wide[0]));
  return WideToUtf8(wide);
}

std::string JavaControl::CallStatic(const char* className, const char* method,
                                    const char* signature, std::vector<jvalue> arguments) {
  JNIEnv* env = Env();
  if (!env) return {};
  LocalRef<jclass> type(env, env->FindClass(className));
  const jmethodID id = type ? env->GetStaticMethodID(type.Get(), method, signature) : nullptr;
  if (!id) {
    env->ExceptionClear();
    ADD_FAILURE() << className << "." << method << " not found";
    return {};
  }
  const bool answersText = std::string(signature).back() != 'V';
  LocalRef<jstring> text(env, nullptr);
  if (answersText) {
    text = LocalRef<jstring>(
        env, static_cast<jstring>(env->CallStaticObjectMethodA(type.Get(), id, arguments.data())));
  } else {
    env->CallStaticVoidMethodA(type.Get(), id, arguments.data());
  }
  if (env->ExceptionCheck()) {
    env->ExceptionDescribe();
    env->ExceptionClear();
    ADD_FAILURE() << className << "." << method << " threw";
    return {};
  }
  return answersText ? Text(text.Get()) : std::string();
}

namespace {
constexpr const char* kFaults = "com/tarnix/testing/Faults";
constexpr const char* kCalls = "com/tarnix/testing/Calls";
constexpr const char* kAnswers = "com/tarnix/testing/Answers";
constexpr const char* kText = "com/tarnix/testing/Text";

jvalue Object(jobject object) {
  jvalue value{};
  value.l = object;
  return value;
}
jvalue Int(jint number) {
  jvalue value{};
  value.i = number;
  return value;
}
}  // namespace

void JavaControl::ThrowOnHit(const std::string& where, int nth, const std::string& exceptionClass,
                             const std::string& message) {
  JNIEnv* env = Env();
  LocalRef<jstring> a(env, Java(where)), b(env, Java(exceptionClass)), c(env, Java(message));
  CallStatic(kFaults, "throwOnHit", "(Ljava/lang/String;ILjava/lang/String;Ljava/lang/String;)V",
             {Object(a.Get()), Int(nth), Object(b.Get()), Object(c.Get())});
}

void JavaControl::ClearFaults() { CallStatic(kFaults, "clear", "()V", {}); }

void JavaControl::SetAnswer(const std::string& method, const std::optional<std::string>& text) {
  JNIEnv* env = Env();
  LocalRef<jstring> name(env, Java(method));
  LocalRef<jstring> answer(env, text ? Java(*text) : nullptr);
  CallStatic(kAnswers, "set", "(Ljava/lang/String;Ljava/lang/String;)V",
             {Object(name.Get()), Object(answer.Get())});
}

std::vector<std::string> JavaControl::Calls() {
  std::vector<std::string> calls;
  JNIEnv* env = Env();
  if (!env) return calls;
  LocalRef<jclass> type(env, env->FindClass(kCalls));
  const jmethodID count = env->GetStaticMethodID(type.Get(), "count", "()I");
  const jint n = env->CallStaticIntMethod(type.Get(), count);
  for (jint i = 0; i < n; ++i) {
    calls.push_back(CallStatic(kCalls, "get", "(I)Ljava/lang/String;", {Int(i)}));
  }
  return calls;
}

void JavaControl::ClearCalls() { CallStatic(kCalls, "clear", "()V", {}); }

std::string JavaControl::Describe(jobject object) {
  return CallStatic(kText, "of", "(Ljava/lang/Object;)Ljava/lang/String;", {Object(object)});
}

std::string JavaControl::ThrowableText(jobject throwable) {
  return CallStatic(kText, "throwableText", "(Ljava/lang/Throwable;)Ljava/lang/String;",
                    {Object(throwable)});
}

std::string JavaControl::SystemProperty(const char* name) {
  if (!Env()) return {};
  LocalRef<jstring> key(Env(), Java(name));
  return CallStatic("java/lang/System", "getProperty", "(Ljava/lang/String;)Ljava/lang/String;",
                    {Object(key.Get())});
}

namespace {

constexpr jlong kHeldMapTag = 0x7A9;

jint JNICALL TagLocallyHeld(jvmtiHeapReferenceKind kind, const jvmtiHeapReferenceInfo*, jlong,
                            jlong, jlong, jlong* tag, jlong*, jint, void*) {
  if (kind == JVMTI_HEAP_REFERENCE_JNI_LOCAL) *tag = kHeldMapTag;
  return 0;  // the roots are all that matter
}

// The one HashMap a JNI local reference holds; empty (the test failed) otherwise.
LocalRef<jobject> LocallyHeldMap(CJavaVM& vm, jvmtiEnv* ti, jclass mapClass) {
  jvmtiCapabilities capabilities{};
  capabilities.can_tag_objects = 1;
  jvmtiHeapCallbacks callbacks{};
  callbacks.heap_reference_callback = TagLocallyHeld;
  jint count = 0;
  jobject* maps = nullptr;
  if (ti->AddCapabilities(&capabilities) != JVMTI_ERROR_NONE ||
      ti->FollowReferences(0, mapClass, nullptr, &callbacks, nullptr) != JVMTI_ERROR_NONE ||
      ti->GetObjectsWithTags(1, &kHeldMapTag, &count, &maps, nullptr) != JVMTI_ERROR_NONE) {
    ADD_FAILURE() << "JVMTI would not find the map";
    return {};
  }
  std::vector<LocalRef<jobject>> found;
  for (jint i = 0; i < count; ++i) found.emplace_back(vm.GetEnv(), maps[i]);
  ti->Deallocate(reinterpret_cast<unsigned char*>(maps));
  if (count != 1) {
    ADD_FAILURE() << count << " locally held HashMaps, not the converter's one";
    return {};
  }
  ti->SetTag(found[0].Get(), 0);
  return std::move(found[0]);
}

void SetTable(JNIEnv* env, jobject map, jobject table) {
  LocalRef<jclass> mapClass(env, env->FindClass("java/util/HashMap"));
  const jfieldID field = env->GetFieldID(mapClass.Get(), "table", "[Ljava/util/HashMap$Node;");
  ASSERT_NE(field, nullptr);
  env->SetObjectField(map, field, table);
}

}  // namespace

GlobalRef<jobject> BreakLocallyHeldMap(CJavaVM& vm) {
  jvmtiEnv* ti = nullptr;
  EXPECT_EQ(vm.GetJavaVM()->GetEnv(reinterpret_cast<void**>(&ti), JVMTI_VERSION_1_2), JNI_OK);
  if (!ti) return {};
  JNIEnv* env = vm.GetEnv();
  LocalRef<jclass> mapClass(env, env->FindClass("java/util/HashMap"));
  LocalRef<jobject> map = LocallyHeldMap(vm, ti, mapClass.Get());
  ti->DisposeEnvironment();
  if (!map) return {};
  LocalRef<jclass> treeNode(env, env->FindClass("java/util/HashMap$TreeNode"));
  LocalRef<jobjectArray> narrow(env, env->NewObjectArray(16, treeNode.Get(), nullptr));
  SetTable(env, map.Get(), narrow.Get());
  return GlobalRef<jobject>(&vm, env->NewGlobalRef(map.Get()));
}

void MendMap(CJavaVM& vm, jobject map) { SetTable(vm.GetEnv(), map, nullptr); }

}  // namespace tarnix::testing
