// A DumpData from the host to the Java client and back, on the real JVM: what each kind
// sends is the end-to-end suite's (over real RMI), what each failing host call does is the
// fault walk's, how the identity is gathered and described is the client identity suite's,
// and that a host thread leaves detached is the concurrency suite's; here, failures inside
// Java that no host call brings about, and the bridge under the messages.
#include "JvmHost.h"

#include "JvmTestSupport.h"
#include "fixtures/FakeDataObjects.h"
#include "tarnix/DataType.h"

#include <gtest/gtest.h>

#include <thread>

namespace tarnix::testing {
namespace {

using ManagerDumpData = ManagerJvmTest;

// A map that refused one attribute still goes out with the others; the call then ends
// in the send-failure line with the refusal's text, and in nothing else.
TEST_F(ManagerDumpData, AnAttributeTheMapRefusesIsReportedAsAFailedSend) {
  ASSERT_EQ(manager_->Initialize(), S_OK);
  CJavaVM& vm = *manager_->GetJavaVM();
  auto attributes = MakeHostObject<FakeNamedValues>();
  attributes->SetText(W("a"), W("1"));
  attributes->SetText(W("b"), W("2"));
  GlobalRef<jobject> broken;
  attributes->OnNext([&](int earlierCalls) {
    if (earlierCalls == 0) broken = BreakLocallyHeldMap(vm);
    if (earlierCalls == 1 && !vm.GetEnv()->ExceptionCheck()) MendMap(vm, broken.Get());
  });
  auto item = MakeHostObject<CombinedObject>(std::vector<ComPtr<IUnknown>>{
      AsUnknown(attributes), AsUnknown(MakeHostObject<FakeEnumerator>())});
  auto values = MakeHostObject<FakeNamedValues>();
  values->SetValue(W("meta-data"), Object(item.Get()).Get());
  values->SetValue(W("metrics"), Object(item.Get()).Get());
  auto data = MakeHostObject<CombinedObject>(
      std::vector<ComPtr<IUnknown>>{AsUnknown(values), AsUnknown(MakeHostObject<FakeSample>())});

  EXPECT_EQ(Dump(eExtendedData, data.Get()), E_FAIL);
  ExpectErrors(Logger(), {"Failed to send data with type eExtendedData to the message server.  "
                          "java.lang.ArrayStoreException: java.util.HashMap$Node\r\n\t"});
  const auto sends = Sends();
  ASSERT_EQ(sends.size(), 1u);
  EXPECT_NE(sends[0].find("{\"b\"=\"2\"}"), std::string::npos) << sends[0];
}

// A client description that cannot become a Java string (here too large for the JVM's
// heap) ends the start-up message as any missing Java object does: E_FAIL, no line.
TEST_F(ManagerDumpData, AClientDescriptionJavaCannotHoldEndsTheCallSilently) {
  ASSERT_EQ(manager_->Initialize(), S_OK);
  SystemInfo().SetMachineName(WString(60u << 20, u'\u20AC'));
  EXPECT_EQ(Dump(eStartup), E_FAIL);
  EXPECT_TRUE(Logger().Messages(LogOperation::Error).empty()) << Logger().Dump().substr(0, 300);
  EXPECT_FALSE(manager_->GetJavaVM()->GetEnv()->ExceptionCheck());
  EXPECT_TRUE(Sends().empty());
}

// The bridge under the messages, on a JDK class whose calls leave a trace: a void call on
// a method with an answer runs it once, and a reference let go on a thread the component
// did not attach is still deleted.
TEST_F(ManagerDumpData, TheBridgeCallsOnceAndLetsGoFromAnyThread) {
  ASSERT_EQ(manager_->Initialize(), S_OK);
  CJavaVM& machine = *manager_->GetJavaVM();
  static constexpr MethodEntry kBuilder[] = {{"ctor()", "<init>", "()V"},
                                             {"append", "append", "(I)Ljava/lang/StringBuilder;"},
                                             {"toString", "toString", "()Ljava/lang/String;"}};
  static constexpr auto ctor = tarnix::ConstructorOf<void()>(kBuilder, "ctor()");
  static constexpr auto append = tarnix::MethodOf<jobject(jint)>(kBuilder, "append");
  static constexpr auto toString = tarnix::MethodOf<jstring()>(kBuilder, "toString");
  auto builderClass = machine.LoadClass("java/lang/StringBuilder", kBuilder);
  ASSERT_TRUE(builderClass);
  auto builder = builderClass->NewObject(ctor);
  ASSERT_TRUE(builder);
  builder->CallVoidMethod(append, jint{7});
  WString text;
  ASSERT_TRUE(builder->CallStringMethod(toString)->GetText(text));
  EXPECT_EQ(text, WSTR("7"));

  // Let go on a thread something else attached, and on one Java has never seen.
  JNIEnv* env = machine.GetEnv();
  const jclass system = env->FindClass("java/lang/System");
  const jmethodID gc = env->GetStaticMethodID(system, "gc", "()V");
  for (bool attachedElsewhere : {true, false}) {
    auto dropped = builderClass->NewObject(ctor);
    const jweak weak = env->NewWeakGlobalRef(dropped->Get());
    jobject strong = env->NewGlobalRef(dropped->Get());
    dropped.reset();
    std::thread([&] {
      JNIEnv* own = nullptr;
      JavaVM* vm = machine.GetJavaVM();
      if (attachedElsewhere) vm->AttachCurrentThread(reinterpret_cast<void**>(&own), nullptr);
      machine.DeleteGlobalRef(strong);
      if (attachedElsewhere) vm->DetachCurrentThread();
    }).join();
    for (int round = 0; round < 10 && !env->IsSameObject(weak, nullptr); ++round) {
      env->CallStaticVoidMethod(system, gc);
    }
    EXPECT_TRUE(env->IsSameObject(weak, nullptr)) << "attached elsewhere: " << attachedElsewhere;
    env->DeleteWeakGlobalRef(weak);
  }
  env->DeleteLocalRef(system);
}

// The poll's text is made after the desktop: a JVM out of memory by then fails the poll.
TEST_F(ManagerDumpData, APollWhoseTextJavaCannotMakeFails) {
  SystemInfo().SetNetworkInterfaces([] {
    return MakeAdapterArray(
        {{W("eth0"), W("00-11"), W("10.0.0.5"), W("255.0.0.0"), W("10.0.0.0"), 1}});
  });
  ASSERT_EQ(manager_->Initialize(), S_OK);
  CJavaVM& vm = *manager_->GetJavaVM();
  JavaControl(vm).ThrowIn("DesktopInformation.addNetworkInterface", "java.lang.Error", "no");
  Logger().OnLine([&vm](const WString& line) {
    if (line.rfind(WSTR("Failed to add network interface"), 0) != 0) return;
    JNIEnv* env = vm.GetEnv();
    env->ThrowNew(env->FindClass("java/lang/OutOfMemoryError"), "full");
  });
  const LONG hr = manager_->DumpData(WSTR("url"), WSTR("t"), WSTR("c"), 1, eDesktopPoll, nullptr);
  Logger().OnLine(nullptr);
  EXPECT_EQ(static_cast<uint32_t>(hr), 0x80004005u) << Logger().Dump();
}

TEST_F(ManagerDumpData, AFailedDisposeLeavesNoExceptionPending) {
  ASSERT_EQ(manager_->Initialize(), S_OK);
  JavaControl(*manager_->GetJavaVM())
      .ThrowIn("DesktopMessageClient.dispose", "java.lang.Error", "no");
  EXPECT_EQ(manager_->Teardown(), S_OK);
  JNIEnv* env = nullptr;
  ASSERT_EQ(RunningJavaVM()->GetEnv(reinterpret_cast<void**>(&env), JNI_VERSION_1_6), JNI_OK);
  EXPECT_FALSE(env->ExceptionCheck());
}

}  // namespace
}  // namespace tarnix::testing
