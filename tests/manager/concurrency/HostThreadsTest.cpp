// The parts of the component that many host threads reach without Java: the callback
// registry with its answers, and the server information lookup through the registry, the
// XML document and the host's system service. Small enough to run under the thread
// sanitizer and under Wine.
#include "ManagerTestSupport.h"

#include "fixtures/FakeCallbacks.h"
#include "fixtures/HostTest.h"
#include "fixtures/TestRegistry.h"
#include "manager/CommManagerImpl.h"
#include "platform/ScopedVariant.h"
#include "tarnix/DataType.h"
#include "tarnix/RMICommManager.h"

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <thread>
#include <vector>

namespace tarnix::testing {
namespace {

constexpr int kRounds = 2000;
const WString kLegacyKey = WSTR("Software\\Corvane, Inc.\\Corvane Palisade\\Node Manager");
const WString kNamedKey = WSTR("Software\\Tarnix Tests\\Xml Named");

class ManagerHostThreads : public HostTest {
 protected:
  ManagerHostThreads() {
    SystemInfo().SetUniqueId(WSTR("unique-1"));
    registry_.Own(HKEY_LOCAL_MACHINE, kLegacyKey);
    registry_.Own(HKEY_LOCAL_MACHINE, kNamedKey);
  }
  TestRegistry registry_;
};

TEST_F(ManagerHostThreads, CallbacksComeAndGoWhileAnswersArrive) {
  CRMICommManagerImpl manager;
  auto steady = MakeHostObject<DataDumpInbox>();
  ASSERT_EQ(manager.Register(WSTR("url"), WSTR("steady"), nullptr, steady.Get()), S_OK);

  // Each churning thread has a key of its own next to the steady one, so an answer to an
  // unknown key finds one key (delivered) or several (refused) as it arrives.
  std::vector<std::thread> threads;
  std::vector<ComPtr<DataDumpInbox>> churned;
  for (int t = 0; t < 3; ++t) churned.push_back(MakeHostObject<DataDumpInbox>());
  for (int t = 0; t < 3; ++t) {
    threads.emplace_back([&manager, callback = churned[t], t] {
      const WString key = WSTR("churn-") + WString(1, WCHAR('0' + t));
      for (int i = 0; i < kRounds; ++i) {
        EXPECT_EQ(manager.Register(WSTR("url"), key.c_str(), nullptr, callback.Get()), S_OK);
        EXPECT_EQ(manager.Unregister(WSTR("url"), key.c_str(), nullptr, callback.Get()), S_OK);
      }
    });
  }
  std::map<LONG, long> unknownKeyResults;
  std::atomic<long> steadyCalls{0};
  threads.emplace_back([&] {
    for (int i = 0; i < kRounds; ++i) {
      ++unknownKeyResults[manager.CallCallback(WSTR("elsewhere"), nullptr, nullptr, eStartup,
                                               WSTR("policy"))];
      EXPECT_EQ(manager.CallCallback(WSTR("url"), WSTR("steady"), nullptr, eUserSessionLogon,
                                     WSTR("welcome")),
                S_OK);
      ++steadyCalls;
    }
  });
  for (std::thread& thread : threads) thread.join();

  for (const auto& [code, count] : unknownKeyResults) {
    EXPECT_TRUE(code == S_OK || code == E_FAIL) << std::hex << code << " " << std::dec << count;
  }
  // The steady callback heard every answer to its key and every one delivered by default.
  EXPECT_EQ(static_cast<long>(steady->Answers().size()), steadyCalls + unknownKeyResults[S_OK]);
  // Only the steady key is left: an answer to any key reaches it.
  EXPECT_EQ(manager.CallCallback(WSTR("any"), nullptr, nullptr, eStartup, WSTR("x")), S_OK);
  for (const auto& callback : churned) EXPECT_EQ(callback->RefCount(), 1u);
  manager.Unregister(WSTR("url"), WSTR("steady"), nullptr, steady.Get());
}

TEST_F(ManagerHostThreads, ServerInfoFromManyThreads) {
  // No legacy value: every lookup goes on to the key the configuration names.
  registry_.SetString(HKEY_LOCAL_MACHINE, kNamedKey, WSTR("MessageServerURL"), WSTR("https://u/x"));
  registry_.SetString(HKEY_LOCAL_MACHINE, kNamedKey, WSTR("AdapterCertificate"), WSTR("cert"));
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([t] {
      ComApartment apartment;
      for (int i = 0; i < kRounds / 10; ++i) {
        BSTR url = nullptr, serviceValue = nullptr, certificate = nullptr;
        // Half the threads name the key in an XML document, half as a plain path.
        const ScopedVariant config(
            t % 2 ? WSTR("<config><serverConfigRegistry>Software\\Tarnix Tests\\Xml Named"
                         "</serverConfigRegistry></config>")
                  : WSTR("Software\\Tarnix Tests\\Xml Named"));
        ASSERT_EQ(CRMIConfigLoader::GetServerInfo(config.Get(), &url, &serviceValue, &certificate),
                  S_OK);
        EXPECT_EQ(U(url ? WString(url) : WString()), "https://u/x");
        EXPECT_EQ(U(serviceValue ? WString(serviceValue) : WString()), "unique-1");
        EXPECT_EQ(U(certificate ? WString(certificate) : WString()), "cert");
        for (BSTR text : {url, serviceValue, certificate}) SysFreeString(text);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(SystemInfo().Calls(SystemInfoSlot::UniqueId), 4 * kRounds / 10);
}

}  // namespace
}  // namespace tarnix::testing
