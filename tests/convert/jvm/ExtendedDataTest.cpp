// Extended data: attributes as a map of texts, and metrics that carry instances.
#include "ConvertTest.h"

namespace tarnix::testing {
namespace {

class ExtendedDataTest : public ConvertTest {};

// Attributes walked by a given enumerator.
class WalkedAttributes : public HostObject<IHostNamedValues> {
 public:
  explicit WalkedAttributes(ComPtr<IHostEnumerator> items)
      : HostObject("WalkedAttributes"), items_(std::move(items)) {}
  HRESULT STDMETHODCALLTYPE get_Enumerator(IHostEnumerator** items) override {
    *items = ComPtr<IHostEnumerator>(items_).Detach();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_Item(BSTR, VARIANT*) override { return E_NOTIMPL; }

 private:
  ComPtr<IHostEnumerator> items_;
};

TEST_F(ExtendedDataTest, AttributesBecomeAMapOfTexts) {
  auto attributes = MakeHostObject<FakeNamedValues>();
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
// line reports a map that refused an attribute. The later attributes still go in.
TEST_F(ExtendedDataTest, TheExceptionOfAFailedPutIsLeftPending) {
  auto items = MakeHostObject<FakeEnumerator>();
  items->Add(WSTR("a"), Text(WSTR("1"))).Add(WSTR("b"), Text(WSTR("2"))).Add(WSTR("c"), I4(3));
  GlobalRef<jobject> broken;
  items->OnNext([this, &broken](int earlierCalls) {
    JNIEnv* env = Vm().GetEnv();
    if (earlierCalls == 0) broken = BreakLocallyHeldMap(Vm());
    // No JNI call may be made while the failed put's exception is pending.
    if (earlierCalls == 1 && !env->ExceptionCheck()) MendMap(Vm(), broken.Get());
    // The JVM out of memory for the next name: that attribute is left out.
    if (earlierCalls == 2) env->ThrowNew(env->FindClass("java/lang/OutOfMemoryError"), "full");
  });
  auto attributes = MakeHostObject<WalkedAttributes>(ComPtr<IHostEnumerator>(items.Get()));

  auto map = Convertor().GetExtendedData(VmRef(), attributes.Get());

  ASSERT_TRUE(map);
  JNIEnv* env = Vm().GetEnv();
  ASSERT_TRUE(env->ExceptionCheck());
  EXPECT_EQ(TakeException().rfind("java.lang.ArrayStoreException: java.util.HashMap$Node", 0), 0u);
  EXPECT_EQ(items->NextCalls(), 4);  // walked to its end
  EXPECT_EQ(Describe(map), "{\"b\"=\"2\"}");
  EXPECT_EQ(Logger().Count(), 1u) << Logger().Dump();
  EXPECT_TRUE(Logger().Contains(WSTR("for c.  java.lang.OutOfMemoryError: full")));
}

TEST_F(ExtendedDataTest, MetricsCarryTheirInstances) {
  auto disk = MakeHostObject<FakeEnumerator>();
  disk->Add(WSTR("C:"), I4(10)).Add(WSTR("D:"), R8(2.5)).Add(WSTR("E:"), Bool(false));
  auto net = MakeHostObject<FakeEnumerator>();          // a metric without instances
  auto notAnEnumerator = MakeHostObject<FakeSample>();  // an object without the enumerator
  auto metrics = MakeHostObject<FakeEnumerator>();
  metrics->Add(WSTR("disk"), Object(disk.Get()))
      .Add(WSTR("net"), Object(net.Get()))
      .Add(WSTR("odd"), Object(notAnEnumerator.Get()))
      .Add(WSTR("plain"), I4(3));  // no object at all: left out
  auto sample = MakeHostObject<FakeSample>(kYear2000);

  EXPECT_EQ(Describe(Convertor().GetExtendedSample(VmRef(), sample.Get(), metrics.Get())),
            "BaseSample{time=946684800000, metrics=["
            "BaseMetric{name=\"disk\", value=none, instances=["
            "BaseMetric{name=\"C:\", value=long 10}, BaseMetric{name=\"D:\", value=double 2.5}]}, "
            "BaseMetric{name=\"net\", value=none}, BaseMetric{name=\"odd\", value=none}], "
            "sessions=[]}");
  EXPECT_EQ(Lines(LogOperation::Error), std::vector<std::string>{"Invalid type for metric 'E:'."});
  EXPECT_EQ(sample->MetricsReads(), 0);
}

TEST_F(ExtendedDataTest, TheSampleGoesWithWhatWentIn) {
  auto first = MakeHostObject<FakeEnumerator>();
  first->Add(WSTR("x"), I4(1)).Add(WSTR("y"), I4(2));
  auto metrics = MakeHostObject<FakeEnumerator>();
  metrics->Add(WSTR("first"), Object(first.Get()))
      .Add(WSTR("second"), Object(first.Get()))
      .Add(WSTR("third"), Object(first.Get()))
      .EndWith(kHostFailure, 3);
  auto sample = MakeHostObject<FakeSample>(kYear2000);
  Java().ThrowOnHit("BaseMetric.addInstance", 2, "java.lang.IllegalStateException", "no y");
  Java().ThrowOnHit("BaseSample.putMetric", 2, "java.lang.IllegalStateException", "no second");

  // The instances enumerator is shared and spent by the first metric: the others get none.
  EXPECT_EQ(
      Describe(Convertor().GetExtendedSample(VmRef(), sample.Get(), metrics.Get())),
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
  Java().ThrowIn("BaseSample.<init>", "java.lang.IllegalStateException", "no sample");
  EXPECT_FALSE(Convertor().GetExtendedSample(VmRef(), sample.Get(), metrics.Get()));
  const std::vector<std::string> failures = Lines(LogOperation::Error);
  ASSERT_EQ(failures.size(), 1u) << Logger().Dump();
  EXPECT_TRUE(EndsWithException(failures[0], "Failed to create a new Java sample object.  ",
                                "java.lang.IllegalStateException: no sample"));
}

}  // namespace
}  // namespace tarnix::testing
