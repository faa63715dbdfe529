// The host fixtures every suite relies on must themselves catch what they promise to. How
// the fakes answer is checked by the suites that use them.
#include "fixtures/FakeSystemInfo.h"
#include "fixtures/RecordingLogger.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

namespace tarnix::testing {
namespace {

TEST(Fixtures, ReferencesLeftBehindOrReleasedTwiceAreReported) {
  IHostLogger* leaked = nullptr;
  EXPECT_NONFATAL_FAILURE(
      {
        ReferenceBalance balance;
        ComPtr<RecordingLogger> logger = MakeHostObject<RecordingLogger>();
        leaked = logger.Get();
        leaked->AddRef();
      },
      "RecordingLogger with 1 reference(s) (2 AddRef, 1 Release)");
  leaked->Release();

  ReferenceBalance balance;
  IHostNamedValues* values = MakeHostObject<FakeNamedValues>().Detach();
  values->Release();
  // The object is retired, not freed, so the extra call is caught safely.
  EXPECT_NONFATAL_FAILURE(values->Release(), "released more often than it was referenced");
  EXPECT_NONFATAL_FAILURE(values->AddRef(), "referenced again");
  values->Release();
}

TEST(Fixtures, TheLoggerFailsTheTestWhenASecretIsLogged) {
  ReferenceBalance balance;
  ComPtr<RecordingLogger> logger = MakeHostObject<RecordingLogger>();
  logger->ForbidText(WSTR("s3cret"));
  HostLog log(logger.Get());
  log.Info(WSTR("harmless"));
  EXPECT_NONFATAL_FAILURE(log.Error(WSTR("key '%s'"), WSTR("xs3cretx")),
                          "a secret reached the log");
  EXPECT_EQ(logger->Count(), 2u);
}

}  // namespace
}  // namespace tarnix::testing
