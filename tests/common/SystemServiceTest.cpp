#include "common/SystemService.h"

#include "fixtures/FakeCallbacks.h"
#include "fixtures/HostTest.h"
#include "fixtures/TestRegistry.h"
#include "platform/RegKey.h"

#include <gtest/gtest.h>

namespace tarnix {
namespace {

using testing::HostTest;
using testing::MakeHostObject;
using testing::ServiceRoute;
using testing::TestRegistry;

// The interfaces the service tests may repair.
const WCHAR kLoggerIid[] = WSTR("{D320790B-D7C2-4757-A1CA-8C0F82975845}");
const WCHAR kSystemInfoIid[] = WSTR("{AE7AFB5C-DA85-43BA-BB7B-9AAC30F27E31}");
const WCHAR kServiceIid[] = WSTR("{92AFA5E6-7B4C-4B33-BF40-F68E4DA74AA5}");
const WCHAR kExecutorIid[] = WSTR("{545A3670-9230-4402-838F-4AC388270E6A}");
const WString kMarshaller = WSTR("{00020424-0000-0000-C000-000000000046}");

WString InterfaceKey(const WCHAR* iidText) { return WString(WSTR("Interface\\")) + iidText; }

// The marshalling repair writes under HKEY_CLASSES_ROOT; every test that may reach it owns
// the keys of the interfaces involved.
class SystemServiceTest : public HostTest {
 protected:
  SystemServiceTest() {
    for (const WCHAR* iid : {kLoggerIid, kSystemInfoIid, kServiceIid, kExecutorIid}) {
      registry_.Own(HKEY_CLASSES_ROOT, InterfaceKey(iid));
    }
  }

  WString ProxyStub(const WCHAR* iidText, const WCHAR* name) {
    WString value;
    testing::ReadRegistryText(HKEY_CLASSES_ROOT, InterfaceKey(iidText) + WSTR("\\") + name,
                              WString(), &value);
    return value;
  }

  TestRegistry registry_;
};

TEST_F(SystemServiceTest, AnInterfaceTheServiceAnswersItselfNeedsNoGetService) {
  ComPtr<IHostLogger> logger;
  ASSERT_EQ(GetHostLogger(&logger), S_OK);
  EXPECT_EQ(static_cast<IHostLogger*>(&Logger()), logger.Get());
  EXPECT_EQ(Service().GetServiceCalls(IID_IHostLogger), 0);
  EXPECT_EQ(Service().Created(), 1);
  // Nothing was repaired: the first query succeeded.
  EXPECT_TRUE(ProxyStub(kLoggerIid, WSTR("ProxyStubClsid32")).empty());
  logger.Reset();
  // Only the test and the offer hold the logger; the service made for the call is gone.
  EXPECT_EQ(Logger().RefCount(), 2u);
}

TEST_F(SystemServiceTest, AnInterfaceGivenOnlyThroughGetServiceIsObtainedThere) {
  Service().Offer(IID_ISystemInfo, SystemInfoRef(), ServiceRoute::GetService);
  ComPtr<ISystemInfo> info;
  ASSERT_EQ(GetSystemInfo(&info), S_OK);
  EXPECT_EQ(static_cast<ISystemInfo*>(&SystemInfo()), info.Get());
  // Queried, repaired and queried again before GetService was asked.
  EXPECT_EQ(Service().Queries(IID_ISystemInfo), 2);
  EXPECT_EQ(Service().GetServiceCalls(IID_ISystemInfo), 1);
  EXPECT_EQ(Service().IntermediateQueries(IID_ISystemInfo), 1);
  EXPECT_EQ(ProxyStub(kSystemInfoIid, WSTR("ProxyStubClsid")), kMarshaller);
  EXPECT_EQ(ProxyStub(kSystemInfoIid, WSTR("ProxyStubClsid32")), kMarshaller);
}

TEST_F(SystemServiceTest, TheObjectFromGetServiceIsQueriedAgainAfterARepair) {
  auto executor = MakeHostObject<testing::ActionInbox>();
  Service().Offer(IID_IHostActionExecutor, executor, ServiceRoute::GetService);
  Service().ScriptIntermediateQuery(IID_IHostActionExecutor, {E_NOINTERFACE});
  ComPtr<IHostActionExecutor> obtained;
  ASSERT_EQ(GetActionExecutor(&obtained), S_OK);
  EXPECT_EQ(static_cast<IHostActionExecutor*>(executor.Get()), obtained.Get());
  EXPECT_EQ(Service().IntermediateQueries(IID_IHostActionExecutor), 2);
}

TEST_F(SystemServiceTest, ARepairThatFailsAfterGetServiceGivesItsOwnCode) {
  auto executor = MakeHostObject<testing::ActionInbox>();
  Service().Offer(IID_IHostActionExecutor, executor, ServiceRoute::GetService);
  // A repair that cannot write (a volatile key takes no lasting subkey) is the last call
  // made: its code is the answer, and the object is not queried again.
  ComPtr<IHostActionExecutor> obtained;
  HKEY blocking = nullptr;
  ASSERT_EQ(RegCreateKeyExW(HKEY_CLASSES_ROOT, InterfaceKey(kExecutorIid).c_str(), 0, nullptr,
                            REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr, &blocking, nullptr),
            ERROR_SUCCESS);
  RegCloseKey(blocking);
  Service().ScriptIntermediateQuery(IID_IHostActionExecutor, {E_NOINTERFACE}, ERROR_ACCESS_DENIED);
  EXPECT_EQ(GetActionExecutor(&obtained), E_ACCESSDENIED);
  EXPECT_FALSE(obtained);
  EXPECT_EQ(Service().IntermediateQueries(IID_IHostActionExecutor), 1);
}

TEST_F(SystemServiceTest, TheLastFailureIsAnsweredAndNothingIsHeld) {
  ComPtr<IHostActionExecutor> executor;
  // Not offered at all: GetService's own answer.
  Service().ScriptGetService(IID_IHostActionExecutor, {static_cast<HRESULT>(0x80040155)});
  EXPECT_EQ(GetActionExecutor(&executor), static_cast<HRESULT>(0x80040155));
  EXPECT_FALSE(executor);
  EXPECT_EQ(GetActionExecutor(&executor), E_NOINTERFACE);
  EXPECT_FALSE(executor);
  // A failure other than E_NOINTERFACE goes straight to GetService, with no repair.
  Service().Offer(IID_ISystemInfo, SystemInfoRef(), ServiceRoute::QueryInterface);
  Service().ScriptQuery(IID_ISystemInfo, {E_ACCESSDENIED});
  ComPtr<ISystemInfo> info;
  EXPECT_EQ(GetSystemInfo(&info), E_NOINTERFACE);
  EXPECT_EQ(Service().GetServiceCalls(IID_ISystemInfo), 1);
  EXPECT_TRUE(ProxyStub(kSystemInfoIid, WSTR("ProxyStubClsid")).empty());
  EXPECT_EQ(GetServiceInterface(IID_IHostLogger, static_cast<void**>(nullptr)), E_POINTER);
  EXPECT_EQ(Service().Created(), 3);
}

TEST_F(SystemServiceTest, CreationIsRetriedOnceAfterRepairingTheServiceInterface) {
  Service().ScriptCreate({E_NOINTERFACE});
  ComPtr<IHostSystemService> service;
  ASSERT_EQ(CreateSystemService(service.Receive()), S_OK);
  EXPECT_TRUE(service);
  EXPECT_EQ(ProxyStub(kServiceIid, WSTR("ProxyStubClsid32")), kMarshaller);
  service.Reset();

  Service().ScriptCreate({E_NOINTERFACE, E_NOINTERFACE, E_OUTOFMEMORY});
  EXPECT_EQ(CreateSystemService(service.Receive()), E_NOINTERFACE);
  // Any other failure is answered at once.
  EXPECT_EQ(CreateSystemService(service.Receive()), E_OUTOFMEMORY);
  EXPECT_FALSE(service);
  EXPECT_EQ(Service().Created(), 1);
}

TEST(SystemService, WithoutARegisteredServiceTheClassIsNotFound) {
  testing::ReferenceBalance balance;
  testing::ComApartment apartment;
  ComPtr<IHostLogger> logger;
  const HRESULT hr = GetHostLogger(&logger);
  EXPECT_EQ(hr, REGDB_E_CLASSNOTREG);
  EXPECT_FALSE(logger);
}

TEST(ProxyStubRegistration, MissingRegistrationsAreWrittenAndExistingOnesKept) {
  // An interface of this test's own.
  const IID iid = {0x3F1C2B9E, 0x55AA, 0x4C1D, {0x9E, 0x10, 0x2B, 0x7A, 0x61, 0xC4, 0x08, 0xD3}};
  const WString key = InterfaceKey(WSTR("{3F1C2B9E-55AA-4C1D-9E10-2B7A61C408D3}"));
  const WString other = WSTR("{B196B286-BAB4-101A-B69C-00AA00341D07}");
  TestRegistry registry;
  registry.Own(HKEY_CLASSES_ROOT, key);
  registry.SetString(HKEY_CLASSES_ROOT, key + WSTR("\\ProxyStubClsid32"), WString(), other);
  // A key with values of its own but no default value counts as missing.
  registry.SetString(HKEY_CLASSES_ROOT, key + WSTR("\\ProxyStubClsid"), WSTR("note"), WSTR("x"));

  ASSERT_EQ(EnsureProxyStubRegistration(iid), S_OK);
  WString value;
  ASSERT_TRUE(testing::ReadRegistryText(HKEY_CLASSES_ROOT, key + WSTR("\\ProxyStubClsid32"),
                                        WString(), &value));
  EXPECT_EQ(value, other);
  ASSERT_TRUE(testing::ReadRegistryText(HKEY_CLASSES_ROOT, key + WSTR("\\ProxyStubClsid"),
                                        WString(), &value));
  EXPECT_EQ(value, kMarshaller);

  // Written as REG_SZ whose length counts the terminating zero.
  RegKey written;
  ASSERT_EQ(written.Open(HKEY_CLASSES_ROOT, (key + WSTR("\\ProxyStubClsid")).c_str(), KEY_READ),
            ERROR_SUCCESS);
  DWORD type = 0, size = 0;
  ASSERT_EQ(RegQueryValueExW(written.Handle(), nullptr, nullptr, &type, nullptr, &size),
            ERROR_SUCCESS);
  EXPECT_EQ(type, static_cast<DWORD>(REG_SZ));
  EXPECT_EQ(size, (kMarshaller.size() + 1) * sizeof(WCHAR));

  // Running again changes nothing.
  ASSERT_EQ(EnsureProxyStubRegistration(iid), S_OK);
  ASSERT_TRUE(testing::ReadRegistryText(HKEY_CLASSES_ROOT, key + WSTR("\\ProxyStubClsid32"),
                                        WString(), &value));
  EXPECT_EQ(value, other);
}

}  // namespace
}  // namespace tarnix
