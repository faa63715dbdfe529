// Extended data: attributes as a map of texts, and metrics that carry instances.
#include "ConvertTest.h"

#include "jni/LocalRef.h"

#include <jvmti.h>

namespace tarnix::testing {
namespace {

constexpr HRESULT kHostFailure = static_cast<HRESULT>(0x80041234);
constexpr jlong kHeldMapTag = 0x7A9;

// Makes the next put on the one HashMap held by a JNI local reference (the converter's
// map, between its construction and its first put) throw from inside HashMap.put: its
// bucket table becomes an array of a narrower element type, so storing the new entry
// raises ArrayStoreException. java.util.HashMap offers no other way to fail a put.
void BreakLocallyHeldMap(CJavaVM& vm) {
  jvmtiEnv* ti = nullptr;
  ASSERT_EQ(vm.GetJavaVM()->GetEnv(reinterpret_cast<void**>(&ti), JVMTI_VERSION_1_2), JNI_OK);
  jvmtiCapabilities capabilities{};
  capabilities.can_tag_objects = 1;
  ASSERT_EQ(ti->AddCapabilities(&capabilities), JVMTI_ERROR_NONE);
  JNIEnv* env = vm.GetEnv();
  LocalRef<jclass> mapClass(env, env->FindClass("java/util/HashMap"));
  jvmtiHeapCallbacks callbacks{};
  callbacks.heap_reference_callback = [](jvmtiHeapReferenceKind kind,
                                         const jvmtiHeapReferenceInfo*, jlong, jlong, jlong,
                                         jlong* tag, jlong*, jint, void*) -> jint {
    if (kind == JVMTI_HEAP_REFERENCE_JNI_LOCAL) *tag = kHeldMapTag;
    return 0;  // the roots are all that matter
  };
  ASSERT_EQ(ti->FollowReferences(0, mapClass.Get(), nullptr, &callbacks, nullptr),
            JVMTI_ERROR_NONE);
  jint count = 0;
  jobject* maps = nullptr;
  ASSERT_EQ(ti->GetObjectsWithTags(1, &kHeldMapTag, &count, &maps, nullptr), JVMTI_ERROR_NONE);
  ASSERT_EQ(count, 1) << "the converter's map is not the only locally held HashMap";
  LocalRef<jobject> map(env, maps[0]);
  ti->Deallocate(reinterpret_cast<unsigned char*>(maps));
  ti->SetTag(map.Get(), 0);
  LocalRef<jclass> treeNode(env, env->FindClass("java/util/HashMap$TreeNode"));
  LocalRef<jobjectArray> narrow(env, env->NewObjectArray(16, treeNode.Get(), nullptr));
  const jfieldID table = env->GetFieldID(mapClass.Get(), "table", "[Ljava/util/HashMap$Node;");
  ASSERT_NE(table, nullptr);
  env->SetObjectField(map.Get(), table, narrow.Get());
  ti->DisposeEnvironment();
}

class ExtendedDataTest : public ConvertTest {};

// Attributes walked by a given enumerator.
class WalkedAttributes : public FakeCom<IHostNamedValues> {
 public:
  explicit WalkedAttributes(ComPtr<IHostEnumerator> items)
      : FakeCom("WalkedAttributes"), items_(std::move(items)) {}
  HRESULT STDMETHODCALLTYPE get_Enumerator(IHostEnumerator** items) override {
    *items = ComPtr<IHostEnumerator>(items_).Detach();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_Item(BSTR, VARIANT*) override { return E_NOTIMPL; }

 private:
  ComPtr<IHostEnumerator> items_;
};

TEST_F(ExtendedDataTest, AttributesBecomeAMapOfTexts) {
  auto attributes = MakeFake<FakeNamedValues>();
  attributes->SetText(WSTR("os"), WSTR("linux"));
  attributes->SetValue(WSTR("cores"), I4(5).Get());
  attributes->SetValue(WSTR("blob"), OfType(VT_NULL).Get());  // no text for it: ""
  EXPECT_EQ(Describe(Convertor().GetExtendedData(VmRef(), attributes.Get())),
            "{\"blob\"=\"\", \"cores\"=\"5\", \"os\"=\"linux\"}");

  // Attributes that cannot be walked, or none at all, give no map and no line.
  attributes->SetEnumeratorResult(kHostFailure);
  EXPECT_FALSE(Convertor().GetExtendedData(VmRef(), attributes.Get()));
  EXPECT_FALSE(Convertor().GetExtendedData(VmRef(), nullptr));
  EXPECT_EQ(Logger().Count(), 0u) << Logger().Dump();
}

// The one conversion that leaves a Java exception pending: the caller's send-failure
// line reports a map that refused an attribute. Nothing else is sent once it is pending.
TEST_F(ExtendedDataTest, TheExceptionOfAFailedPutIsLeftPending) {
  auto items = MakeFake<FakeEnumerator>();
  items->Add(WSTR("a"), Text(WSTR("1"))).Add(WSTR("b"), Text(WSTR("2")));
  items->OnNext([this](int earlierCalls) {
    if (earlierCalls == 0) BreakLocallyHeldMap(Vm());
  });
  auto attributes = MakeFake<WalkedAttributes>(ComPtr<IHostEnumerator>(items.Get()));

  auto map = Convertor().GetExtendedData(VmRef(), attributes.Get());

  ASSERT_TRUE(map);
  JNIEnv* env = Vm().GetEnv();
  ASSERT_TRUE(env->ExceptionCheck());
  EXPECT_EQ(TakeException().rfind("java.lang.ArrayStoreException: java.util.HashMap$Node", 0), 0u);
  EXPECT_EQ(items->NextCalls(), 3);  // walked to its end
  EXPECT_EQ(Describe(map), "{}");
  EXPECT_EQ(Logger().Count(), 0u) << Logger().Dump();
}

TEST_F(ExtendedDataTest, MetricsCarryTheirInstances) {
  auto disk = MakeFake<FakeEnumerator>();
  disk->Add(WSTR("C:"), I4(10)).Add(WSTR("D:"), R8(2.5)).Add(WSTR("E:"), Bool(false));
  auto net = MakeFake<FakeEnumerator>();           // a metric without instances
  auto notAnEnumerator = MakeFake<FakeSample>();    // an object without the enumerator
  auto metrics = MakeFake<FakeEnumerator>();
  metrics->Add(WSTR("disk"), Object(disk.Get()))
      .Add(WSTR("net"), Object(net.Get()))
      .Add(WSTR("odd"), Object(notAnEnumerator.Get()))
      .Add(WSTR("plain"), I4(3));  // no object at all: left out
  auto sample = MakeFake<FakeSample>(kYear2000);

  EXPECT_EQ(Describe(Convertor().GetExtendedSample(VmRef(), sample.Get(), metrics.Get())),
            "BaseSample{time=946684800000, metrics=["
            "BaseMetric{name=\"disk\", value=none, instances=["
            "BaseMetric{name=\"C:\", value=long 10}, BaseMetric{name=\"D:\", value=double 2.5}]}, "
            "BaseMetric{name=\"net\", value=none}, BaseMetric{name=\"odd\", value=none}], "
            "sessions=[]}");
  EXPECT_EQ(Lines(LogOperation::Error),
            std::vector<std::string>{"Invalid type for metric 'E:'."});
  EXPECT_EQ(sample->MetricsReads(), 0);
}

TEST_F(ExtendedDataTest, TheSampleGoesWithWhatWentIn) {
  auto first = MakeFake<FakeEnumerator>();
  first->Add(WSTR("x"), I4(1)).Add(WSTR("y"), I4(2));
  auto metrics = MakeFake<FakeEnumerator>();
  metrics->Add(WSTR("first"), Object(first.Get()))
      .Add(WSTR("second"), Object(first.Get()))
      .Add(WSTR("third"), Object(first.Get()))
      .EndWith(kHostFailure, 3);
  auto sample = MakeFake<FakeSample>(kYear2000);
  Java().ThrowOnHit("BaseMetric.addInstance", 2, "java.lang.IllegalStateException", "no y");
  Java().ThrowOnHit("BaseSample.putMetric", 2, "java.lang.IllegalStateException", "no second");

  // The instances enumerator is shared and spent by the first metric: the others get none.
  EXPECT_EQ(Describe(Convertor().GetExtendedSample(VmRef(), sample.Get(), metrics.Get())),
            "BaseSample{time=946684800000, metrics=["
            "BaseMetric{name=\"first\", value=none, instances=[BaseMetric{name=\"x\", value=long 1}]}, "
            "BaseMetric{name=\"third\", value=none}], sessions=[]}");
  const std::vector<std::string> errors = Lines(LogOperation::Error);
  ASSERT_EQ(errors.size(), 3u) << Logger().Dump();
  EXPECT_TRUE(EndsWithException(errors[0], "Failed to add instance 'y' to metric 'first'.  ",
                                "java.lang.IllegalStateException: no y"));
  EXPECT_TRUE(EndsWithException(
      errors[1], "Failed to add metric 'second' to sample '" + Label(kYear2000) + "'.  ",
      "java.lang.IllegalStateException: no second"));
  EXPECT_EQ(errors[2], "Failed to get extended metrics.");

  // What fails the sample itself.
  Java().ClearFaults();
  Logger().Clear();
  auto noTime = MakeFake<FakeSample>();
  noTime->SetTime(0, kHostFailure);
  EXPECT_FALSE(Convertor().GetExtendedSample(VmRef(), noTime.Get(), metrics.Get()));
  Java().ThrowIn("BaseSample.<init>", "java.lang.IllegalStateException", "no sample");
  EXPECT_FALSE(Convertor().GetExtendedSample(VmRef(), sample.Get(), metrics.Get()));
  const std::vector<std::string> failures = Lines(LogOperation::Error);
  ASSERT_EQ(failures.size(), 2u) << Logger().Dump();
  EXPECT_EQ(failures[0], "Failed to get time from sample  Error code 0x80041234.");
  EXPECT_TRUE(EndsWithException(failures[1], "Failed to create a new Java sample object.  ",
                                "java.lang.IllegalStateException: no sample"));
}

}  // namespace
}  // namespace tarnix::testing
