// Remote applications of a session's instance.
#include "ConvertTest.h"

namespace tarnix::testing {
namespace {

class RemoteAppTest : public ConvertTest {
 protected:
  std::shared_ptr<CJavaObject> NewSession() {
    auto host = MakeHostObject<FakeUserSession>(3, WSTR("S-3"), WSTR("ann"), WSTR("CORP"));
    return Convertor().GetUserSession(VmRef(), ComPtr<IHostUserSession>(host.Get()));
  }
};

TEST_F(RemoteAppTest, OnlyApplicationsWithMetricsAreAddedAndAnnounced) {
  auto editor = MakeHostObject<FakeSample>();
  editor->AddMetric(WSTR("cpu"), I4(12)).AddMetric(WSTR("title"), Text(WSTR("notes.txt")));
  auto idle = MakeHostObject<FakeSample>();
  auto refused = MakeHostObject<FakeSample>();
  refused->AddMetric(WSTR("cpu"), I4(1));
  auto unreadable = MakeHostObject<FakeSample>();  // kept: its metrics were merely unreadable
  unreadable->FailMetrics(kHostFailure);
  auto instance = MakeHostObject<FakeSample>(kYear2000);
  instance->AddToCollection(WSTR("remoteApps"), WSTR("editor"), editor.Get())
      .AddToCollection(WSTR("remoteApps"), WSTR("idle"), idle.Get())
      .AddToCollection(WSTR("remoteApps"), WSTR("refused"), refused.Get())
      .AddToCollection(WSTR("remoteApps"), WSTR("unreadable"), unreadable.Get())
      .AddToCollection(WSTR("remoteApps"), WSTR("gone"), nullptr);
  auto session = NewSession();
  ASSERT_TRUE(session);
  Java().ThrowOnHit("BaseUserSession.putRemoteApp", 2, "java.lang.IllegalStateException", "no");

  Convertor().PutRemoteApps(VmRef(), *session, instance.Get());

  EXPECT_EQ(instance->CollectionsAsked(), std::vector<WString>{WSTR("remoteApps")});
  EXPECT_NE(
      Describe(session).find("remoteApps=[BaseRemoteApp{id=\"editor\", properties={}, metrics=["
                             "BaseMetric{name=\"cpu\", value=long 12}, "
                             "BaseMetric{name=\"title\", value=string \"notes.txt\"}]}, "
                             "BaseRemoteApp{id=\"unreadable\", properties={}, metrics=[]}]"),
      std::string::npos)
      << Describe(session);
  EXPECT_EQ(Lines(LogOperation::Level),
            (std::vector<std::string>{"Adding remote app to sample: 'editor'",
                                      "Adding remote app to sample: 'refused'",
                                      "Adding remote app to sample: 'unreadable'"}));
  const std::vector<std::string> errors = Lines(LogOperation::Error);
  ASSERT_EQ(errors.size(), 2u) << Logger().Dump();
  EXPECT_TRUE(EndsWithException(
      errors[0], "Failed to add app 'refused' to sample '" + Label(kYear2000) + "'.  ",
      "java.lang.IllegalStateException: no"));
  EXPECT_EQ(errors[1], "Failed to get metrics from sample  Error code 0x80041234.");
}

TEST_F(RemoteAppTest, NoApplicationsAddNothingAndAnAppObjectNotMadeCostsOnlyItsApp) {
  auto session = NewSession();
  ASSERT_TRUE(session);
  auto none = MakeHostObject<FakeSample>();
  Convertor().PutRemoteApps(VmRef(), *session, none.Get());
  EXPECT_EQ(Logger().Count(), 0u) << Logger().Dump();

  auto app = MakeHostObject<FakeSample>();
  app->AddMetric(WSTR("cpu"), I4(1));
  auto instance = MakeHostObject<FakeSample>();
  instance->AddToCollection(WSTR("remoteApps"), WSTR("editor"), app.Get())
      .AddToCollection(WSTR("remoteApps"), WSTR("viewer"), app.Get());
  // The app object that could not be made costs that app only.
  Java().ThrowOnHit("BaseRemoteApp.<init>", 1, "java.lang.IllegalStateException", "no app");
  Convertor().PutRemoteApps(VmRef(), *session, instance.Get());
  EXPECT_EQ(app->MetricsReads(), 1);
  EXPECT_TRUE(EndsWithException(Lines(LogOperation::Error).back(),
                                "Failed to create a new Java remote app object.  ",
                                "java.lang.IllegalStateException: no app"));
  EXPECT_NE(Describe(session).find("remoteApps=[BaseRemoteApp{id=\"viewer\""), std::string::npos)
      << Describe(session);
}

}  // namespace
}  // namespace tarnix::testing
