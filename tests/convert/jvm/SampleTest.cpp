// Whole samples: machine metrics, one session per instance, and what an instance or the
// sample itself may fail on.
#include "ConvertTest.h"

namespace tarnix::testing {
namespace {

using SampleTest = ConvertTest;

TEST_F(SampleTest, InstancesBecomeSessionsWithTheirMetricsAndApplications) {
  auto sessions = MakeHostObject<FakeSessionSource>();
  auto ann = MakeHostObject<FakeUserSession>(1, WSTR("S-1-5-21-1"), WSTR("ann"), WSTR("CORP"), 1);
  ann->Properties().Add(WSTR("client"), Text(WSTR("pc-ann")));
  auto bob = MakeHostObject<FakeUserSession>(2, WSTR("S-1-5-21-2"), WSTR("bob"), WSTR("CORP"), 0);
  auto console =
      MakeHostObject<FakeUserSession>(0, WSTR("S-1-5-18"), WSTR("SYSTEM"), WSTR("NT"), 1);
  sessions->Add(ann).Add(bob).Add(console);

  auto editor = MakeHostObject<FakeSample>();
  editor->AddMetric(WSTR("appCpu"), I4(1));
  auto annInstance = MakeHostObject<FakeSample>();
  annInstance->AddMetric(WSTR("sessionCpu"), I4(3))
      .AddToCollection(WSTR("remoteApps"), WSTR("editor"), editor.Get());
  auto bobInstance = MakeHostObject<FakeSample>();
  bobInstance->AddMetric(WSTR("sessionCpu"), R8(4.5));
  auto goneInstance = MakeHostObject<FakeSample>();
  auto consoleInstance = MakeHostObject<FakeSample>();

  auto sample = MakeHostObject<FakeSample>(kYear2000);
  sample->AddMetric(WSTR("cpu"), I4(37))
      .AddMetric(WSTR("memory"), R8(0.5))
      .AddInstance(WSTR("1"), annInstance.Get())
      .AddInstance(WSTR("9"), goneInstance.Get())           // the host no longer knows session 9
      .AddInstance(WSTR("console"), consoleInstance.Get())  // no number: session 0
      .AddInstance(WSTR("2"), bobInstance.Get());
  Java().ThrowOnHit("BaseSample.putSession", 2, "java.lang.IllegalStateException", "too late");

  auto javaSample = Convertor().GetSample(VmRef(), sample.Get(), sessions.Get());

  ASSERT_TRUE(javaSample);
  EXPECT_EQ(Describe(javaSample),
            "BaseSample{time=946684800000, metrics=[BaseMetric{name=\"cpu\", value=long 37}, "
            "BaseMetric{name=\"memory\", value=double 0.5}], sessions=["
            "BaseUserSession{id=1, sid=\"S-1-5-21-1\", user=\"ann\", domain=\"CORP\", "
            "connected=true, properties={\"client\"=\"pc-ann\"}, "
            "metrics=[BaseMetric{name=\"sessionCpu\", value=long 3}], "
            "remoteApps=[BaseRemoteApp{id=\"editor\", properties={}, "
            "metrics=[BaseMetric{name=\"appCpu\", value=long 1}]}]}, "
            "BaseUserSession{id=2, sid=\"S-1-5-21-2\", user=\"bob\", domain=\"CORP\", "
            "connected=false, properties={}, "
            "metrics=[BaseMetric{name=\"sessionCpu\", value=double 4.5}], remoteApps=[]}]}");
  EXPECT_EQ(sessions->Asked(), (std::vector<LONG>{1, 9, 0, 2}));
  EXPECT_EQ(sample->LastMetricsFlag(), 1);
  EXPECT_EQ(Lines(LogOperation::Level),
            (std::vector<std::string>{
                "Adding remote app to sample: 'editor'", "Adding session to sample: '1'",
                "Adding session to sample: 'console'", "Adding session to sample: '2'"}));
  for (const LogLine& line : Logger().Lines()) {
    if (line.operation == LogOperation::Level) {
      EXPECT_EQ(line.level, 8);
    }
  }
  const std::vector<std::string> errors = Lines(LogOperation::Error);
  ASSERT_EQ(errors.size(), 1u) << Logger().Dump();
  EXPECT_TRUE(EndsWithException(
      errors[0], "Failed to add session 'console' to sample '" + Label(kYear2000) + "'.  ",
      "java.lang.IllegalStateException: too late"));
  // The test's and the session source's references; the converter kept none.
  EXPECT_EQ(ann->RefCount(), 2u);
  EXPECT_EQ(console->RefCount(), 2u);
}

TEST_F(SampleTest, AnObjectJavaCannotMakeFailsTheWholeSample) {
  auto sessions = MakeHostObject<FakeSessionSource>();
  Java().ThrowIn("BaseSample.<init>", "java.lang.IllegalStateException", "no sample");
  auto plain = MakeHostObject<FakeSample>();
  EXPECT_FALSE(Convertor().GetSample(VmRef(), plain.Get(), sessions.Get()));
  Java().ClearFaults();
  const std::vector<std::string> errors = Lines(LogOperation::Error);
  ASSERT_EQ(errors.size(), 1u) << Logger().Dump();
  EXPECT_TRUE(EndsWithException(errors[0], "Failed to create a new Java sample object.  ",
                                "java.lang.IllegalStateException: no sample"));

  // A failing walk of the instances ends it like its end: the sample goes as filled.
  auto ann = MakeHostObject<FakeUserSession>(1, WSTR("S-1"), WSTR("ann"), WSTR("CORP"));
  sessions->Add(ann);
  auto instance = MakeHostObject<FakeSample>();
  auto broken = MakeHostObject<FakeSample>(kUnixEpoch);
  broken->AddInstance(WSTR("1"), instance.Get()).EndInstancesWith(kHostFailure);
  auto partial = Convertor().GetSample(VmRef(), broken.Get(), sessions.Get());
  EXPECT_EQ(Describe(partial),
            "BaseSample{time=0, metrics=[], sessions=[BaseUserSession{id=1, sid=\"S-1\", "
            "user=\"ann\", domain=\"CORP\", connected=true, properties={}, metrics=[], "
            "remoteApps=[]}]}");
  EXPECT_EQ(Lines(LogOperation::Error).size(), 1u) << Logger().Dump();
}

// Without a logger the same conversions give the same objects and nothing is written;
// only the metrics flag tells the two apart, as the remote applications rely on.
TEST_F(SampleTest, WithoutLoggerResultsAreTheSameAndNothingIsWritten) {
  auto sessions = MakeHostObject<FakeSessionSource>();
  const CJNIConvertor silent(nullptr);
  auto ann = MakeHostObject<FakeUserSession>(1, WSTR("S-1"), WSTR("ann"), WSTR("CORP"));
  sessions->Add(ann);
  auto instance = MakeHostObject<FakeSample>();
  instance->FailMetrics(kHostFailure).FailCollections(kHostFailure);
  auto sample = MakeHostObject<FakeSample>(kYear2000);
  sample->AddMetric(WSTR("flag"), Bool(true)).AddInstance(WSTR("1"), instance.Get());
  Java().ThrowIn("BaseSample.putSession", "java.lang.IllegalStateException", "refused");

  auto javaSample = silent.GetSample(VmRef(), sample.Get(), sessions.Get());
  EXPECT_EQ(Describe(javaSample), "BaseSample{time=946684800000, metrics=[], sessions=[]}");
  auto target = silent.GetRemoteApp(VmRef(), WSTR("probe"));
  ASSERT_TRUE(target);
  EXPECT_FALSE(silent.PutMetrics(VmRef(), *target, instance.Get()));
  EXPECT_TRUE(Convertor().PutMetrics(VmRef(), *target, instance.Get()));

  auto noTime = MakeHostObject<FakeSample>();
  noTime->SetTime(0, kHostFailure);
  EXPECT_FALSE(silent.GetSample(VmRef(), noTime.Get(), sessions.Get()));

  const std::vector<std::string> lines = Lines(LogOperation::Error);
  ASSERT_EQ(lines.size(), 1u) << Logger().Dump();  // the one call made with the logger
  EXPECT_EQ(lines[0], "Failed to get metrics from sample  Error code 0x80041234.");
}

}  // namespace
}  // namespace tarnix::testing
