// Metric values by VARIANT type, metrics that cannot be valued or put, and extended data:
// attributes as a map of texts, and metrics that carry instances.
#include "ConvertTest.h"

namespace tarnix::testing {
namespace {

class MetricTest : public ConvertTest {
 protected:
  std::shared_ptr<CJavaObject> NewTarget() {
    return Vm().GetClass(classes::kBaseSample)->NewObject(methods::BaseSample::ctorTime, jlong{0});
  }
};

TEST_F(MetricTest, EachAcceptedTypeGoesAsLongDoubleOrTextAndTheRestAreRefused) {
  auto sample = MakeHostObject<FakeSample>();
  sample->AddMetric(WSTR("i2"), I2(-2))
      .AddMetric(WSTR("i4"), I4(-40000))
      .AddMetric(WSTR("ui2"), UI2(65535))
      .AddMetric(WSTR("ui4"), UI4(4294967295u))
      .AddMetric(WSTR("i8"), I8(-9000000000000000000LL))
      .AddMetric(WSTR("ui8"), UI8(18446744073709551615ULL))
      .AddMetric(WSTR("r4"), R4(0.1f))
      .AddMetric(WSTR("r8"), R8(0.1))
      .AddMetric(WSTR("text"), Text(WSTR("busy")))
      .AddMetric(WSTR("bool"), Bool(true))
      .AddMetric(WSTR("empty"), Empty())
      .AddMetric(WSTR("ui1"), OfType(VT_UI1, 5))
      .AddMetric(WSTR("int"), OfType(VT_INT, 5))
      .AddMetric(WSTR("date"), OfType(VT_DATE, 0))
      .AddMetric(WSTR("error"), OfType(VT_ERROR, 5))
      .AddMetric(WSTR("byref"), OfType(VT_I4 | VT_BYREF, 0));
  auto target = NewTarget();
  ASSERT_TRUE(target);

  EXPECT_TRUE(Convertor().PutMetrics(VmRef(), *target, sample.Get()));

  EXPECT_EQ(Describe(target),
            "BaseSample{time=0, metrics=["
            "BaseMetric{name=\"i2\", value=long -2}, "
            "BaseMetric{name=\"i4\", value=long -40000}, "
            "BaseMetric{name=\"ui2\", value=long 65535}, "
            "BaseMetric{name=\"ui4\", value=long 4294967295}, "
            "BaseMetric{name=\"i8\", value=long -9000000000000000000}, "
            "BaseMetric{name=\"ui8\", value=long -1}, "
            "BaseMetric{name=\"r4\", value=double 0.10000000149011612}, "
            "BaseMetric{name=\"r8\", value=double 0.1}, "
            "BaseMetric{name=\"text\", value=string \"busy\"}], sessions=[]}");
  std::vector<std::string> expected;
  for (const char* name : {"bool", "empty", "ui1", "int", "date", "error", "byref"}) {
    expected.push_back(std::string("Invalid type for metric '") + name + "'.");
  }
  EXPECT_EQ(Lines(LogOperation::Error), expected);
}

TEST_F(MetricTest, AMetricThatCannotBeValuedOrPutIsLeftOutAlone) {
  auto sample = MakeHostObject<FakeSample>(kUnixEpoch);
  sample->AddMetric(WSTR("a"), I4(1))
      .AddMetric(WSTR("b"), I4(2))
      .AddMetric(WSTR("c"), I4(3))
      .AddMetric(WSTR("d"), R8(4));
  Java().ThrowOnHit("BaseMetric.putLongValue", 2, "java.lang.ArithmeticException", "overflow");
  Java().ThrowOnHit("BaseSample.putMetric", 2, "java.lang.IllegalStateException", "full");
  auto target = NewTarget();
  ASSERT_TRUE(target);

  EXPECT_TRUE(Convertor().PutMetrics(VmRef(), *target, sample.Get()));

  // "b" fails its value; "c" is the second metric put and is refused by the sample.
  EXPECT_EQ(Describe(target),
            "BaseSample{time=0, metrics=[BaseMetric{name=\"a\", value=long 1}, "
            "BaseMetric{name=\"d\", value=double 4.0}], sessions=[]}");
  const std::vector<std::string> errors = Lines(LogOperation::Error);
  ASSERT_EQ(errors.size(), 2u) << Logger().Dump();
  EXPECT_TRUE(EndsWithException(errors[0], "Failed to set the value for metric 'b'.  ",
                                "java.lang.ArithmeticException: overflow"));
  EXPECT_TRUE(EndsWithException(errors[1],
                                "Failed to add metric 'c' to sample '" + Label(kUnixEpoch) + "'.  ",
                                "java.lang.IllegalStateException: full"));
  EXPECT_EQ(sample->TimeReads(), 1);  // only for the message's label
}

TEST_F(MetricTest, EmptyOrUnreadableMetricsLeaveTheTargetAsItWas) {
  auto target = NewTarget();
  ASSERT_TRUE(target);
  auto empty = MakeHostObject<FakeSample>();
  EXPECT_FALSE(Convertor().PutMetrics(VmRef(), *target, empty.Get()));
  EXPECT_EQ(Logger().Count(), 0u) << Logger().Dump();

  // An enumerator that fails at once delivered nothing either.
  auto failing = MakeHostObject<FakeSample>();
  failing->EndMetricsWith(kHostFailure);
  EXPECT_FALSE(Convertor().PutMetrics(VmRef(), *target, failing.Get()));
  EXPECT_EQ(Logger().Count(), 0u) << Logger().Dump();

  // A metric whose object cannot be made.
  Java().ThrowIn("BaseMetric.<init>", "java.lang.IllegalStateException", "no metric");
  auto one = MakeHostObject<FakeSample>();
  one->AddMetric(WSTR("cpu"), I4(1));
  EXPECT_TRUE(Convertor().PutMetrics(VmRef(), *target, one.Get()));
  EXPECT_TRUE(EndsWithException(Lines(LogOperation::Error).back(),
                                "Failed to create a new Java metric object.  ",
                                "java.lang.IllegalStateException: no metric"));
  EXPECT_EQ(Describe(target), "BaseSample{time=0, metrics=[], sessions=[]}");
}

TEST_F(MetricTest, AttributesBecomeAMapOfTexts) {
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
TEST_F(MetricTest, TheExceptionOfAFailedPutIsLeftPending) {
  auto attributes = MakeHostObject<FakeNamedValues>();
  attributes->SetText(WSTR("a"), WSTR("1"));
  attributes->SetText(WSTR("b"), WSTR("2"));
  attributes->SetValue(WSTR("c"), I4(3).Get());
  GlobalRef<jobject> broken;
  int nextCalls = 0;
  attributes->OnNext([this, &broken, &nextCalls](int earlierCalls) {
    JNIEnv* env = Vm().GetEnv();
    nextCalls = earlierCalls + 1;
    if (earlierCalls == 0) broken = BreakLocallyHeldMap(Vm());
    // No JNI call may be made while the failed put's exception is pending.
    if (earlierCalls == 1 && !env->ExceptionCheck()) MendMap(Vm(), broken.Get());
    // The JVM out of memory for the next name: that attribute is left out.
    if (earlierCalls == 2) env->ThrowNew(env->FindClass("java/lang/OutOfMemoryError"), "full");
  });

  auto map = Convertor().GetExtendedData(VmRef(), attributes.Get());

  ASSERT_TRUE(map);
  ASSERT_TRUE(Vm().GetEnv()->ExceptionCheck());
  EXPECT_EQ(TakeException().rfind("java.lang.ArrayStoreException: java.util.HashMap$Node", 0), 0u);
  EXPECT_EQ(nextCalls, 4);  // walked to its end
  EXPECT_EQ(Describe(map), "{\"b\"=\"2\"}");
  EXPECT_EQ(Logger().Count(), 1u) << Logger().Dump();
  EXPECT_TRUE(Logger().Contains(WSTR("for c.  java.lang.OutOfMemoryError: full")));
}

TEST_F(MetricTest, MetricsCarryTheirInstances) {
  auto disk = MakeHostObject<FakeEnumerator>();
  disk->Add(WSTR("C:"), I4(10)).Add(WSTR("E:"), Bool(false)).Add(WSTR("D:"), R8(2.5));
  auto net = MakeHostObject<FakeEnumerator>();          // a metric without instances
  auto notAnEnumerator = MakeHostObject<FakeSample>();  // an object without the enumerator
  auto metrics = MakeHostObject<FakeEnumerator>();
  metrics->Add(WSTR("disk"), Object(disk.Get()))
      .Add(WSTR("plain"), I4(3))  // no object at all: left out, and the walk goes on
      .Add(WSTR("net"), Object(net.Get()))
      .Add(WSTR("odd"), Object(notAnEnumerator.Get()));
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

TEST_F(MetricTest, TheSampleGoesWithWhatWentIn) {
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
}

}  // namespace
}  // namespace tarnix::testing
