// Each kind of data reaches its one message of the Java client, or none.
#include "JvmHost.h"

#include "JvmTestSupport.h"
#include "fixtures/FakeDataObjects.h"
#include "fixtures/Secrets.h"
#include "manager/CommManagerImpl.h"
#include "tarnix/DataType.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <thread>

namespace tarnix::testing {
namespace {

constexpr ULONGLONG kNumber = 0x8000000000000001ull;

class ManagerDispatch : public JvmHostTest {
 protected:
  ManagerDispatch() {
    WriteSettings({});
    SystemInfo().SetMachineId(W("machine-1"));
    SystemInfo().SetVirtualMachineId(W("vm-7"));
    SystemInfo().SetUniqueId(W("unique-3"));
    SystemInfo().SetMachineName(W("DESK-01"));
    SystemInfo().SetNetworkInterfaces([] {
      return MakeAdapterArray({{W("eth0"), W("00-11-22-33-44-55"), W("10.0.0.5"),
                                W("255.255.255.0"), W("10.0.0.0"), 1000}});
    });
  }

  void TearDown() override {
    manager_.reset();
    JvmHostTest::TearDown();
  }

  LONG Dump(unsigned char type, IUnknown* data) {
    return manager_->DumpData(WSTR("url"), kAuthToken, kCertificate, kNumber, type, data);
  }
  // The messages that carried data, leaving out construction and configuration.
  std::vector<std::string> Sends() {
    std::vector<std::string> sends;
    for (const std::string& call : JavaControl(*manager_->GetJavaVM()).Calls()) {
      if (call.rfind("on", 0) == 0 || call.rfind("refreshSession", 0) == 0) sends.push_back(call);
    }
    JavaControl(*manager_->GetJavaVM()).ClearCalls();
    return sends;
  }

  std::unique_ptr<CRMICommManagerImpl> manager_ = std::make_unique<CRMICommManagerImpl>();
};

// What each kind sends is the end-to-end suite's, over real RMI; here, what sends nothing.
TEST_F(ManagerDispatch, DataOfTheWrongKindFailsAndSendsNothing) {
  ASSERT_EQ(manager_->Initialize(), S_OK);
  auto notASession = MakeHostObject<FakeSample>();
  for (unsigned char type = eUserSessionStart; type <= eUserSessionEnd; ++type) {
    EXPECT_EQ(static_cast<uint32_t>(Dump(type, notASession.Get())), 0x80004005u) << int(type);
    EXPECT_EQ(static_cast<uint32_t>(Dump(type, nullptr)), 0x80004005u) << int(type);
  }
  EXPECT_EQ(static_cast<uint32_t>(Dump(eSample, nullptr)), 0x80004005u);
  EXPECT_TRUE(Sends().empty());
}

// A map that refused one attribute still goes out with the others; the call then ends
// in the send-failure line with the refusal's text, and in nothing else.
TEST_F(ManagerDispatch, AnAttributeTheMapRefusesIsReportedAsAFailedSend) {
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

  EXPECT_EQ(static_cast<uint32_t>(Dump(eExtendedData, data.Get())), 0x80004005u);
  const auto errors = Lines(Logger(), LogOperation::Error);
  ASSERT_EQ(errors.size(), 1u) << Logger().Dump();
  EXPECT_EQ(errors[0].rfind("Failed to send data with type eExtendedData to the message server.  "
                            "java.lang.ArrayStoreException: java.util.HashMap$Node\r\n\t",
                            0),
            0u)
      << errors[0];
  const auto sends = Sends();
  ASSERT_EQ(sends.size(), 1u);
  EXPECT_NE(sends[0].find("{\"b\"=\"2\"}"), std::string::npos) << sends[0];
}

// A client description that cannot become a Java string (here too large for the JVM's
// heap) ends the start-up message as any missing Java object does: E_FAIL, no line.
TEST_F(ManagerDispatch, AClientDescriptionJavaCannotHoldEndsTheCallSilently) {
  ASSERT_EQ(manager_->Initialize(), S_OK);
  SystemInfo().SetMachineName(WString(60u << 20, u'\u20AC'));
  EXPECT_EQ(static_cast<uint32_t>(Dump(eStartup, nullptr)), 0x80004005u);
  EXPECT_TRUE(Logger().Messages(LogOperation::Error).empty()) << Logger().Dump().substr(0, 300);
  EXPECT_FALSE(manager_->GetJavaVM()->GetEnv()->ExceptionCheck());
  EXPECT_TRUE(Sends().empty());
}

// The bridge under the messages, on a JDK class whose calls leave a trace: a void call on
// a method with an answer runs it once, and a reference let go on a thread the component
// did not attach is still deleted.
TEST_F(ManagerDispatch, TheBridgeCallsOnceAndLetsGoFromAnyThread) {
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
