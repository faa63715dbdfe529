// Metric values by VARIANT type, and metrics that cannot be valued or put.
#include "ConvertTest.h"

#include "convert/ClassTable.h"

namespace tarnix::testing {
namespace {

class MetricTest : public ConvertTest {
 protected:
  std::shared_ptr<CJavaObject> NewTarget() {
    std::shared_ptr<CJavaClass> sampleClass = Vm().GetClass(classes::kBaseSample);
    return sampleClass ? sampleClass->NewObject(methods::BaseSample::ctorTime, jlong{0}) : nullptr;
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
      .AddMetric(WSTR("null"), OfType(VT_NULL))
      .AddMetric(WSTR("i1"), OfType(VT_I1, 5))
      .AddMetric(WSTR("ui1"), OfType(VT_UI1, 5))
      .AddMetric(WSTR("int"), OfType(VT_INT, 5))
      .AddMetric(WSTR("uint"), OfType(VT_UINT, 5))
      .AddMetric(WSTR("date"), OfType(VT_DATE, 0))
      .AddMetric(WSTR("cy"), OfType(VT_CY, 50000))
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
  for (const char* name :
       {"bool", "empty", "null", "i1", "ui1", "int", "uint", "date", "cy", "error", "byref"}) {
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

}  // namespace
}  // namespace tarnix::testing
