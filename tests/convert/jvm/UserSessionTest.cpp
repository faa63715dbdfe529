// User sessions: identity, the host's connected flag, properties as text, and the remote
// applications of a session's instance.
#include "ConvertTest.h"

namespace tarnix::testing {
namespace {

class UserSessionTest : public ConvertTest {
 protected:
  // The converter takes over the reference it is given; the test keeps its own.
  std::shared_ptr<CJavaObject> Convert(const ComPtr<FakeUserSession>& session) {
    return Convertor().GetUserSession(VmRef(), ComPtr<IHostUserSession>(session.Get()));
  }
};

TEST_F(UserSessionTest, OnlyTheHostsOneIsConnectedAndEveryPropertyGoesAsText) {
  auto ann = MakeHostObject<FakeUserSession>(7, WSTR("S-1-5-21-7"), WSTR("ann"), WSTR("CORP"), 1);
  ann->Properties()
      .Add(WSTR("count"), I4(42))
      .Add(WSTR("nothing"), Empty())
      .Add(WSTR("missing"), OfType(VT_NULL))  // no text for it: sent as ""
      .Add(WSTR("client"), Text(WSTR("pc-7")));
  auto bob = MakeHostObject<FakeUserSession>(8, WSTR("S-1-5-21-8"), WSTR("bob"), WSTR("CORP"),
                                             VARIANT_TRUE);

  EXPECT_EQ(Describe(Convert(ann)),
            "BaseUserSession{id=7, sid=\"S-1-5-21-7\", user=\"ann\", domain=\"CORP\", "
            "connected=true, properties={\"count\"=\"42\", \"nothing\"=\"\", \"missing\"=\"\", "
            "\"client\"=\"pc-7\"}, metrics=[], remoteApps=[]}");
  EXPECT_EQ(Describe(Convert(bob)),
            "BaseUserSession{id=8, sid=\"S-1-5-21-8\", user=\"bob\", domain=\"CORP\", "
            "connected=false, properties={}, metrics=[], remoteApps=[]}");
  EXPECT_EQ(Logger().Count(), 0u) << Logger().Dump();
  EXPECT_EQ(ann->RefCount(), 1u);
  EXPECT_EQ(ann->Calls(SessionSlot::UserLabel), 0);
}

TEST_F(UserSessionTest, RefusedPropertiesAreLoggedAndNeverFailTheSession) {
  auto refused = MakeHostObject<FakeUserSession>(3, WSTR("S-3"), WSTR("cy"), WSTR("CORP"));
  refused->Properties().Add(WSTR("a"), I4(1)).Add(WSTR("b"), I4(2)).Add(WSTR("c"), I4(3));
  auto unnamed = MakeHostObject<FakeUserSession>(4, WSTR("S-4"), WSTR("di"), WSTR("CORP"));
  unnamed->Properties().Add(WSTR("x"), I4(1));
  unnamed->Fail(SessionSlot::UserLabel, kHostFailure);

  Java().ThrowOnHit("BaseUserSession.putProperty", 2, "java.lang.IllegalStateException", "no b");
  EXPECT_NE(Describe(Convert(refused)).find("properties={\"a\"=\"1\", \"c\"=\"3\"}"),
            std::string::npos);
  Java().ThrowIn("BaseUserSession.putProperty", "java.lang.IllegalStateException", "no x");
  EXPECT_NE(Describe(Convert(unnamed)).find("properties={}"), std::string::npos);

  const std::vector<std::string> errors = Lines(LogOperation::Error);
  ASSERT_EQ(errors.size(), 2u) << Logger().Dump();
  EXPECT_TRUE(EndsWithException(errors[0], "Failed to set user property b for user CORP\\cy.  ",
                                "java.lang.IllegalStateException: no b"));
  EXPECT_TRUE(EndsWithException(errors[1], "Failed to set user property x for user NULL.  ",
                                "java.lang.IllegalStateException: no x"));
}

TEST_F(UserSessionTest, IdentityFailuresDropTheSessionSilentlyAndTheReferenceIsReleased) {
  for (SessionSlot slot : {SessionSlot::Id, SessionSlot::Sid, SessionSlot::User,
                           SessionSlot::Domain, SessionSlot::Connected}) {
    auto session = MakeHostObject<FakeUserSession>(1, WSTR("S-1"), WSTR("ann"), WSTR("CORP"));
    session->Fail(slot, kHostFailure);
    EXPECT_FALSE(Convert(session)) << static_cast<int>(slot);
    EXPECT_EQ(session->RefCount(), 1u);
    EXPECT_EQ(session->Calls(SessionSlot::PropertyBox), 0);
  }
  EXPECT_EQ(Logger().Count(), 0u) << Logger().Dump();
  EXPECT_FALSE(Convertor().GetUserSession(VmRef(), nullptr));

  Java().ThrowIn("BaseUserSession.<init>", "java.lang.IllegalStateException", "no session");
  auto session = MakeHostObject<FakeUserSession>(1, WSTR("S-1"), WSTR("ann"), WSTR("CORP"));
  EXPECT_FALSE(Convert(session));
  EXPECT_EQ(session->RefCount(), 1u);
  const std::vector<std::string> errors = Lines(LogOperation::Error);
  ASSERT_EQ(errors.size(), 1u) << Logger().Dump();
  EXPECT_TRUE(EndsWithException(errors[0], "Failed to create a new Java user session object.  ",
                                "java.lang.IllegalStateException: no session"));
}

TEST_F(UserSessionTest, OnlyApplicationsWithMetricsAreAddedAndAnnounced) {
  auto session =
      Convert(MakeHostObject<FakeUserSession>(3, WSTR("S-3"), WSTR("ann"), WSTR("CORP")));
  ASSERT_TRUE(session);
  Convertor().PutRemoteApps(VmRef(), *session, MakeHostObject<FakeSample>().Get());
  EXPECT_EQ(Logger().Count(), 0u) << Logger().Dump();

  auto unmade = MakeHostObject<FakeSample>();  // its app object cannot be made: left out alone
  unmade->AddMetric(WSTR("cpu"), I4(1));
  auto editor = MakeHostObject<FakeSample>();
  editor->AddMetric(WSTR("cpu"), I4(12)).AddMetric(WSTR("title"), Text(WSTR("notes.txt")));
  auto idle = MakeHostObject<FakeSample>();
  auto refused = MakeHostObject<FakeSample>();
  refused->AddMetric(WSTR("cpu"), I4(1));
  auto unreadable = MakeHostObject<FakeSample>();  // kept: its metrics were merely unreadable
  unreadable->FailMetrics(kHostFailure);
  auto instance = MakeHostObject<FakeSample>(kYear2000);
  instance->AddToCollection(WSTR("remoteApps"), WSTR("unmade"), unmade.Get())
      .AddToCollection(WSTR("remoteApps"), WSTR("editor"), editor.Get())
      .AddToCollection(WSTR("remoteApps"), WSTR("idle"), idle.Get())
      .AddToCollection(WSTR("remoteApps"), WSTR("refused"), refused.Get())
      .AddToCollection(WSTR("remoteApps"), WSTR("unreadable"), unreadable.Get())
      .AddToCollection(WSTR("remoteApps"), WSTR("gone"), nullptr);
  Java().ThrowOnHit("BaseRemoteApp.<init>", 1, "java.lang.IllegalStateException", "no app");
  Java().ThrowOnHit("BaseUserSession.putRemoteApp", 2, "java.lang.IllegalStateException", "no");

  Convertor().PutRemoteApps(VmRef(), *session, instance.Get());

  EXPECT_EQ(instance->CollectionsAsked(), std::vector<WString>{WSTR("remoteApps")});
  EXPECT_EQ(unmade->MetricsReads(), 0);
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
  ASSERT_EQ(errors.size(), 3u) << Logger().Dump();
  EXPECT_TRUE(EndsWithException(errors[0], "Failed to create a new Java remote app object.  ",
                                "java.lang.IllegalStateException: no app"));
  EXPECT_TRUE(EndsWithException(
      errors[1], "Failed to add app 'refused' to sample '" + Label(kYear2000) + "'.  ",
      "java.lang.IllegalStateException: no"));
  EXPECT_EQ(errors[2], "Failed to get metrics from sample  Error code 0x80041234.");
}

}  // namespace
}  // namespace tarnix::testing
