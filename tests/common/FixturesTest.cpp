// The host fixtures every suite relies on must themselves catch what they promise to. How
// the fakes answer is checked by the suites that use them.
#include "fixtures/FakeSystemInfo.h"
#include "fixtures/RecordingLogger.h"
#include "fixtures/TestRegistry.h"
#include "platform/RegKey.h"

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

TEST(Fixtures, RegistryContentReadsBackAsWritten) {
  const WString path = WSTR("Software\\tarnix-test\\fixtures");
  TestRegistry registry;
  registry.Own(HKEY_CURRENT_USER, WSTR("Software\\tarnix-test"));
  registry.SetString(HKEY_CURRENT_USER, path, WSTR("text"), WSTR("C:\\a \"b\"\\"));
  registry.SetString(HKEY_CURRENT_USER, path, WString(), WSTR("default"));
  registry.SetString(HKEY_CURRENT_USER, path, WSTR("expand"), WSTR("%ProgramFiles%\\x"),
                     REG_EXPAND_SZ);
  registry.SetDword(HKEY_CURRENT_USER, path, WSTR("number"), 0x2A);
  registry.SetRaw(HKEY_CURRENT_USER, path, WSTR("odd"), REG_SZ, {'a', 0, 'b'});
  registry.Apply();

  RegKey key;
  ASSERT_EQ(key.Open(HKEY_CURRENT_USER, path.c_str(), KEY_READ), ERROR_SUCCESS);
  WString text;
  EXPECT_EQ(key.ReadValue(WSTR("text"), &text), ERROR_SUCCESS);
  EXPECT_EQ(text, WSTR("C:\\a \"b\"\\"));
  EXPECT_EQ(key.ReadValue(nullptr, &text), ERROR_SUCCESS);
  EXPECT_EQ(text, WSTR("default"));
  EXPECT_EQ(key.ReadValue(WSTR("expand"), &text), ERROR_SUCCESS);
  EXPECT_EQ(text, WSTR("%ProgramFiles%\\x"));
  DWORD number = 0;
  EXPECT_EQ(key.ReadValueDW(WSTR("number"), &number), ERROR_SUCCESS);
  EXPECT_EQ(number, 0x2Au);
  std::vector<BYTE> raw;
  DWORD type = 0;
  EXPECT_EQ(key.ReadRaw(WSTR("odd"), &raw, &type), ERROR_SUCCESS);
  EXPECT_EQ(raw, (std::vector<BYTE>{'a', 0, 'b'}));
  EXPECT_EQ(type, static_cast<DWORD>(REG_SZ));
}

}  // namespace
}  // namespace tarnix::testing
