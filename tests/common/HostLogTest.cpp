#include "common/HostLog.h"

#include "fixtures/HostTest.h"

#include <gtest/gtest.h>

namespace tarnix {
namespace {

using testing::HostTest;
using testing::LogLine;
using testing::MakeHostObject;
using testing::RecordingLogger;
using testing::ReferenceBalance;

const HRESULT kFileNotFound = static_cast<HRESULT>(0x80070002);
// A code no system has a text for.
const HRESULT kWithoutText = static_cast<HRESULT>(0x8004DEAD);

const WCHAR kServerInfoPrefix[] = WSTR(
    "Failed to load server config in function long __cdecl CRMIConfigLoader::GetServerInfo("
    "struct tagVARIANT,wchar_t **,wchar_t **,wchar_t **)");

class HostLogTest : public HostTest {};

TEST_F(HostLogTest, EachKindReachesItsOperationAndFailuresCarryTheCodeAfterThePrefix) {
  HostLog log(&Logger());
  // The system's text is kept verbatim, line end included.
  const WString text = SystemMessageText(kFileNotFound);
  ASSERT_FALSE(text.empty()) << "the system has a text for 0x80070002";
  EXPECT_EQ(text.back(), WCHAR('\n'));
  ASSERT_TRUE(SystemMessageText(kWithoutText).empty());
  // The logger's own answer changes nothing.
  Logger().SetResult(E_FAIL);
  EXPECT_TRUE(log.ErrorWithCode(kServerInfoPrefix, kFileNotFound));
  EXPECT_TRUE(log.ErrorWithCode(kServerInfoPrefix, kWithoutText));
  // A prefix that already ends in two blanks gets two more.
  EXPECT_TRUE(log.WarningWithCode(WSTR("Failed to retrieve the log foler path.  "), kWithoutText));
  // The property-box lines run the prefix and the suffix together.
  EXPECT_TRUE(log.ErrorWithJoinedCode(WSTR("Failed to get property box"), kFileNotFound));
  EXPECT_TRUE(log.ErrorWithJoinedCode(WSTR("Failed to get action executor"), kWithoutText));
  // A formatted prefix: the arguments fill the prefix only.
  EXPECT_TRUE(log.ErrorWithCode(WSTR("Failed to read '%s'"), kWithoutText, WSTR("100%")));
  EXPECT_TRUE(
      log.Error(WSTR("Failed to load class %s.  %s"), WSTR("a/B"), WSTR("java.lang.Error")));
  EXPECT_TRUE(log.Warning(WSTR("Failed to retrieve the sample at log off.")));
  EXPECT_TRUE(log.Info(WSTR("Using message server '%s'."), WSTR("rmi://127.0.0.1:1099/x")));
  EXPECT_TRUE(log.Trace(WSTR("Adding session to sample: '%s'"), WSTR("3")));

  const std::vector<LogLine> lines = Logger().Lines();
  ASSERT_EQ(lines.size(), 10u) << Logger().Dump();
  EXPECT_EQ(lines[0].message,
            kServerInfoPrefix + WString(WSTR("  Error code 0x80070002 -- ")) + text);
  EXPECT_EQ(lines[1].message, kServerInfoPrefix + WString(WSTR("  Error code 0x8004dead.")));
  EXPECT_EQ(lines[2].message,
            WSTR("Failed to retrieve the log foler path.    Error code 0x8004dead."));
  EXPECT_EQ(lines[2].operation, LogOperation::Warning);
  EXPECT_EQ(lines[3].message, WSTR("Failed to get property boxError code 0x80070002 -- ") + text);
  EXPECT_EQ(lines[4].message, WSTR("Failed to get action executorError code 0x8004dead."));
  EXPECT_EQ(lines[5].message, WSTR("Failed to read '100%'  Error code 0x8004dead."));
  EXPECT_EQ(lines[6].operation, LogOperation::Error);
  EXPECT_EQ(lines[6].message, WSTR("Failed to load class a/B.  java.lang.Error"));
  EXPECT_EQ(lines[7].operation, LogOperation::Warning);
  EXPECT_EQ(lines[8].operation, LogOperation::Info);
  EXPECT_EQ(lines[8].message, WSTR("Using message server 'rmi://127.0.0.1:1099/x'."));
  EXPECT_EQ(lines[9].operation, LogOperation::Level);
  EXPECT_EQ(lines[9].level, 8);
  EXPECT_EQ(lines[9].message, WSTR("Adding session to sample: '3'"));
  for (const LogLine& line : lines) EXPECT_EQ(line.component, WSTR("tarnix-rmi"));
}

TEST(HostLog, WithoutALoggerNothingIsWrittenAndNothingAsked) {
  ReferenceBalance balance;
  const HostLog none;
  EXPECT_FALSE(none.HasLogger());
  EXPECT_FALSE(none.Error(WSTR("Failed to %s"), WSTR("x")));
  EXPECT_FALSE(none.ErrorWithCode(WSTR("Failed"), kFileNotFound));
  EXPECT_FALSE(none.ErrorWithJoinedCode(WSTR("Failed"), kFileNotFound));
  EXPECT_FALSE(none.WarningWithCode(WSTR("Failed"), kFileNotFound));
  EXPECT_FALSE(none.Info(WSTR("x")));
  EXPECT_FALSE(none.Trace(WSTR("x")));

  // A copy shares the logger, and each holder's reference goes with it.
  ComPtr<RecordingLogger> logger = MakeHostObject<RecordingLogger>();
  {
    HostLog log(logger.Get());
    HostLog copy = log;
    EXPECT_EQ(logger->RefCount(), 3u);
    EXPECT_TRUE(copy.Info(WSTR("x")));
  }
  EXPECT_EQ(logger->RefCount(), 1u);
  EXPECT_EQ(logger->Count(), 1u);
}

TEST_F(HostLogTest, AnOnDemandLogAsksTheHostOnlyWhenThereIsSomethingToLog) {
  { HostLog quiet = HostLog::AcquiredOnFirstUse(); }
  EXPECT_EQ(Service().Created(), 0);

  {
    HostLog log = HostLog::AcquiredOnFirstUse();
    EXPECT_TRUE(log.Info(WSTR("first")));
    EXPECT_TRUE(log.ErrorWithCode(WSTR("second"), kWithoutText));
    // Asked once, then kept for the rest of the call.
    EXPECT_EQ(Service().Created(), 1);
    EXPECT_EQ(Logger().RefCount(), 3u);  // this test, the service's offer, the log
  }
  EXPECT_EQ(Logger().RefCount(), 2u);
  EXPECT_EQ(Logger().Messages(),
            (std::vector<WString>{WSTR("first"), WSTR("second  Error code 0x8004dead.")}));
}

TEST_F(HostLogTest, AnOnDemandLogDropsMessagesWhileTheHostHasNoLogger) {
  Service().ScriptCreate({REGDB_E_CLASSNOTREG});
  HostLog log = HostLog::AcquiredOnFirstUse();
  EXPECT_FALSE(log.Error(WSTR("dropped")));
  // The slot is still empty, so the next message asks again.
  EXPECT_TRUE(log.Error(WSTR("written")));
  EXPECT_EQ(Logger().Messages(), std::vector<WString>{WSTR("written")});
}

}  // namespace
}  // namespace tarnix
