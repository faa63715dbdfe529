#include <gtest/gtest.h>

#include "PlatformTest.h"
#include "platform/ComPtr.h"

using tarnix::ComPtr;
using tarnix::test::CountingFactory;

namespace {

const CLSID kTestClass = {
    0x2D6D321D, 0x3A1D, 0x4BB9, {0x91, 0x61, 0x21, 0x91, 0xD7, 0x01, 0x01, 0x1D}};
const IID kOtherInterface = {
    0x92AFA5E6, 0x1111, 0x2222, {0x33, 0x33, 0x44, 0x44, 0x55, 0x55, 0x66, 0x66}};

class ComTest : public ::testing::Test {
 protected:
  void SetUp() override { initialized_ = SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)); }
  void TearDown() override {
    if (initialized_) CoUninitialize();
  }
  bool initialized_ = false;
};

}  // namespace

TEST(Guid, TextRoundTripsInUpperCaseBracedForm) {
  CLSID parsed = {};
  ASSERT_EQ(CLSIDFromString(WSTR("{2d6d321d-3a1d-4bb9-9161-2191d701011d}"), &parsed), S_OK);
  EXPECT_TRUE(IsEqualGUID(parsed, kTestClass));

  LPOLESTR text = nullptr;
  ASSERT_EQ(StringFromCLSID(parsed, &text), S_OK);
  EXPECT_EQ(tarnix::WideToUtf8(text), "{2D6D321D-3A1D-4BB9-9161-2191D701011D}");
  CoTaskMemFree(text);

  for (const WCHAR* bad :
       {WSTR("{2D6D321D-3A1D-4BB9-9161-2191D701011}"), WSTR("2D6D321D-3A1D-4BB9-9161-2191D701011D"),
        WSTR("{2D6D321D-3A1D-4BB9-9161-2191D701011DX}"),
        WSTR("{2D6D321D_3A1D-4BB9-9161-2191D701011D}"),
        WSTR("{2D6D321D-3A1D-4BB9-9161-2191D70G011D}"), WSTR("")}) {
    EXPECT_EQ(CLSIDFromString(bad, &parsed), CO_E_CLASSSTRING) << tarnix::WideToUtf8(bad);
  }
  EXPECT_EQ(CLSIDFromProgID(WSTR("No.Such.ProgId"), &parsed), CO_E_CLASSSTRING);
}

TEST_F(ComTest, RegisteredClassObjectsAreCreatedInEveryInprocContext) {
  const auto factory = tarnix::host::MakeHostObject<CountingFactory>();
  DWORD cookie = 0;
  ASSERT_EQ(CoRegisterClassObject(kTestClass, factory.Get(), CLSCTX_INPROC_SERVER,
                                  REGCLS_MULTIPLEUSE, &cookie),
            S_OK);
  for (DWORD context : {DWORD(0x17), DWORD(CLSCTX_INPROC_SERVER), DWORD(CLSCTX_ALL)}) {
    ComPtr<IUnknown> object;
    ASSERT_EQ(CoCreateInstance(kTestClass, nullptr, context, IID_IUnknown, object.ReceiveVoid()),
              S_OK);
    EXPECT_EQ(object.Get(), factory->product.Get());
  }
  EXPECT_EQ(factory->created, 3);
  EXPECT_EQ(factory->product->RefCount(), 1u);

  // The factory's answer for the interface comes through unchanged.
  void* other = reinterpret_cast<void*>(1);
  EXPECT_EQ(CoCreateInstance(kTestClass, nullptr, 0x17, kOtherInterface, &other), E_NOINTERFACE);
  EXPECT_EQ(other, nullptr);

  ASSERT_EQ(CoRevokeClassObject(cookie), S_OK);
  EXPECT_EQ(CoRevokeClassObject(0xDEAD), E_INVALIDARG);
  EXPECT_EQ(factory->RefCount(), 1u);
  void* after = reinterpret_cast<void*>(1);
  EXPECT_EQ(CoCreateInstance(kTestClass, nullptr, 0x17, IID_IUnknown, &after), REGDB_E_CLASSNOTREG);
  EXPECT_EQ(after, nullptr);
}
