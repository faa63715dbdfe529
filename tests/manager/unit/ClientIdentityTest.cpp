#include "ManagerTestSupport.h"

#include "common/ErrorText.h"
#include "fixtures/HostTest.h"
#include "fixtures/TestRegistry.h"
#include "manager/ClientIdentity.h"
#include "manager/ManagerMessages.h"

#include <gtest/gtest.h>

namespace tarnix::testing {
namespace {

const WCHAR* const kNamedValuesStubKey =
    WSTR("Interface\\{6AF5CC36-C4D7-4890-AAE3-A39C31654D5D}\\ProxyStubClsid32");

class ClientIdentityTest : public HostTest {
 protected:
  ClientIdentityTest() {
    registry_.Own(HKEY_CLASSES_ROOT, WSTR("Interface\\{6AF5CC36-C4D7-4890-AAE3-A39C31654D5D}"));
    SystemInfo().SetMachineId(W("machine-1"));
    SystemInfo().SetVirtualMachineId(W("vm-7"));
    SystemInfo().SetUniqueId(W("unique-3"));
    SystemInfo().SetMachineName(W("DESK-01"));
  }

  HRESULT Gather(ClientIdentity* identity) {
    return GatherIdentity(&SystemInfo(), LogTo(Logger()), WSTR("second"), identity);
  }

  TestRegistry registry_;
};

TEST_F(ClientIdentityTest, VerdantIdentityNamesTheClient) {
  auto identities = MakeHostObject<FakeNamedValues>();
  identities->SetText(W("Verdant"), W("verdant-42"));
  SystemInfo().SetComponentsIdentities(ComPtr<IHostNamedValues>(identities.Get()));

  ClientIdentity identity;
  ASSERT_EQ(Gather(&identity), S_OK);
  EXPECT_EQ(U(identity.machineIdentity), "verdant-42");
  EXPECT_EQ(U(identity.secondValue), "second");
  EXPECT_EQ(U(identity.virtualMachineId), "vm-7");
  EXPECT_EQ(identity.componentsResult, S_OK);
  EXPECT_EQ(U(MakeClientDescription(&SystemInfo(), identity)),
            "<client><type>DesktopAgent</type><name>DESK-01</name><id>verdant-42</id>"
            "<version>6.6.0.10866517</version><uniqueid>vm-7</uniqueid></client>");
  EXPECT_EQ(Logger().Count(), 0u);

  // Any value that reads as text will do; anything else leaves the machine id.
  ScopedVariant number(LONG{7});
  identities->SetValue(W("Verdant"), number.Get());
  ASSERT_EQ(Gather(&identity), S_OK);
  EXPECT_EQ(U(identity.machineIdentity), "7");

  SystemInfo().SetComponentsIdentities(
      ComPtr<IHostNamedValues>(MakeHostObject<FakeNamedValues>().Get()));
  ASSERT_EQ(Gather(&identity), S_OK);
  EXPECT_EQ(U(identity.machineIdentity), "machine-1");

  // A host that cannot name the machine still gets its start-up message.
  SystemInfo().Fail(SystemInfoSlot::MachineName, E_FAIL);
  EXPECT_EQ(U(MakeClientDescription(&SystemInfo(), identity)),
            "<client><type>DesktopAgent</type><name></name><id>machine-1</id>"
            "<version>6.6.0.10866517</version><uniqueid>vm-7</uniqueid></client>");
}

TEST_F(ClientIdentityTest, LostMarshallingOfIdentitiesIsRepairedOnce) {
  auto identities = MakeHostObject<FakeNamedValues>();
  identities->SetText(W("Verdant"), W("verdant-42"));
  SystemInfo().SetComponentsIdentities(ComPtr<IHostNamedValues>(identities.Get()));

  SystemInfo().FailNext(SystemInfoSlot::ComponentsIdentities, {E_UNEXPECTED});
  ClientIdentity identity;
  ASSERT_EQ(Gather(&identity), S_OK);
  EXPECT_EQ(SystemInfo().Calls(SystemInfoSlot::ComponentsIdentities), 2);
  EXPECT_EQ(identity.componentsResult, S_OK);
  EXPECT_EQ(U(identity.machineIdentity), "verdant-42");
  WString marshaller;
  EXPECT_TRUE(ReadRegistryText(HKEY_CLASSES_ROOT, kNamedValuesStubKey, WString(), &marshaller));
  EXPECT_EQ(U(marshaller), "{00020424-0000-0000-C000-000000000046}");
  EXPECT_EQ(Logger().Count(), 0u);

  // Still failing after the repair: logged, the machine id stands, and the code is kept
  // for the call's result.
  SystemInfo().Fail(SystemInfoSlot::ComponentsIdentities, E_UNEXPECTED);
  ASSERT_EQ(Gather(&identity), S_OK);
  EXPECT_EQ(SystemInfo().Calls(SystemInfoSlot::ComponentsIdentities), 4);
  EXPECT_EQ(identity.componentsResult, E_UNEXPECTED);
  EXPECT_EQ(U(identity.machineIdentity), "machine-1");
  EXPECT_EQ(Lines(Logger(), LogOperation::Error),
            std::vector<std::string>{"Failed to get_componentsIdentities" +
                                     U(ResultCodeSuffix(E_UNEXPECTED))});

  // Other failures are not a marshalling problem: no second read.
  SystemInfo().Fail(SystemInfoSlot::ComponentsIdentities, E_ACCESSDENIED);
  ASSERT_EQ(Gather(&identity), S_OK);
  EXPECT_EQ(SystemInfo().Calls(SystemInfoSlot::ComponentsIdentities), 5);
  EXPECT_EQ(identity.componentsResult, E_ACCESSDENIED);
}

}  // namespace
}  // namespace tarnix::testing
