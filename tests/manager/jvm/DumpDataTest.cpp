// A DumpData from the host to the Java client and back, on the real JVM: what each kind
// sends is the end-to-end suite's (over real RMI), what each failing host call does is the
// fault walk's, and that a host thread leaves detached is the concurrency suite's; here, the
// rest.
#include "JvmHost.h"

#include "JvmTestSupport.h"
#include "fixtures/FakeCallbacks.h"
#include "fixtures/FakeDataObjects.h"
#include "tarnix/DataType.h"

#include <gtest/gtest.h>

#include <thread>

namespace tarnix::testing {
namespace {

class ManagerDumpData : public ManagerJvmTest {
 protected:
  ManagerDumpData() {
    identities_->SetText(W("Verdant"), W("verdant-42"));
    SystemInfo().SetComponentsIdentities(ComPtr<IHostNamedValues>(identities_.Get()));
  }
  void TearDown() override {
    identities_.Reset();
    ManagerJvmTest::TearDown();
  }

  ComPtr<FakeNamedValues> identities_ = MakeHostObject<FakeNamedValues>();
};

TEST_F(ManagerDumpData, StartupMessageDescribesTheClientAndItsAnswerReachesTheHost) {
  auto callback = MakeHostObject<DataDumpInbox>();
  ASSERT_EQ(manager_->Initialize(), S_OK);
  JavaControl(*manager_->GetJavaVM()).SetAnswer("onStartup", std::string("policy-text"));
  manager_->Register(WSTR("url"), kAuthToken, kCertificate, callback.Get());

  EXPECT_EQ(Dump(eStartup), S_OK) << Logger().Dump();
  const auto sends = Sends();
  ASSERT_EQ(sends.size(), 1u);
  EXPECT_EQ(sends[0].rfind("onStartup(\"<client><type>DesktopAgent</type><name>DESK-01</name>"
                           "<id>verdant-42</id><version>6.6.0.10866517</version><uniqueid>vm-7"
                           "</uniqueid></client>\", DesktopConnection{id=\"verdant-42\", "
                           "authToken=\"" +
                               U(kAuthToken) + "\", uniqueId=\"vm-7\", version=394752",
                           0),
            0u)
      << sends[0];
  ASSERT_EQ(callback->Answers().size(), 1u);
  EXPECT_EQ(callback->Answers()[0].dataType, eStartup);
  EXPECT_EQ(U(callback->Answers()[0].text), "policy-text");
  EXPECT_TRUE(Logger().Messages(LogOperation::Error).empty()) << Logger().Dump();
  manager_->Unregister(WSTR("url"), kAuthToken, kCertificate, callback.Get());
}

// A failing identifier ends the call before Java; unreadable component identities do not
// stop it, but it answers their code when no answer decides it.
TEST_F(ManagerDumpData, IdentityDecidesBeforeJavaAndCarriesItsFailure) {
  ASSERT_EQ(manager_->Initialize(), S_OK);
  SystemInfo().Fail(SystemInfoSlot::VirtualMachineId, E_ACCESSDENIED);
  EXPECT_EQ(Dump(eStartup), E_ACCESSDENIED);
  EXPECT_TRUE(Sends().empty());
  SystemInfo().Fail(SystemInfoSlot::VirtualMachineId, S_OK);

  SystemInfo().Fail(SystemInfoSlot::ComponentsIdentities, E_ACCESSDENIED);
  JavaControl(*manager_->GetJavaVM()).SetAnswer("onStartup", std::nullopt);
  EXPECT_EQ(Dump(eStartup), E_ACCESSDENIED);
  const auto sends = Sends();
  ASSERT_EQ(sends.size(), 1u);
  EXPECT_NE(sends[0].find("<id>machine-1</id>"), std::string::npos) << sends[0];
}

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

}  // namespace
}  // namespace tarnix::testing
