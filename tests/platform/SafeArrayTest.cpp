#include <gtest/gtest.h>

#include "PlatformTest.h"
#include "platform/ScopedBstr.h"
#include "hostobjects/DataObjects.h"
#include "platform/ScopedSafeArray.h"

#include <vector>

using tarnix::ScopedBstr;
using tarnix::ScopedSafeArray;
using tarnix::ScopedSafeArrayAccess;

TEST(SafeArray, VectorsHaveTheirBoundsAndElementsAndEmptyOrBadOnesDefinedAnswers) {
  ScopedSafeArray array(SafeArrayCreateVector(VT_BSTR, 1, 3));
  ASSERT_TRUE(array);
  LONG lower = 0, upper = 0;
  ASSERT_EQ(SafeArrayGetLBound(array.Get(), 1, &lower), S_OK);
  ASSERT_EQ(SafeArrayGetUBound(array.Get(), 1, &upper), S_OK);
  EXPECT_EQ(lower, 1);
  EXPECT_EQ(upper, 3);
  EXPECT_EQ(SafeArrayGetLBound(array.Get(), 2, &lower), DISP_E_BADINDEX);
  EXPECT_EQ(SafeArrayGetUBound(array.Get(), 0, &upper), DISP_E_BADINDEX);
  EXPECT_EQ(SafeArrayGetDim(array.Get()), 1u);
  EXPECT_EQ(SafeArrayGetElemsize(array.Get()), sizeof(BSTR));
  VARTYPE vt = VT_EMPTY;
  ASSERT_EQ(SafeArrayGetVartype(array.Get(), &vt), S_OK);
  EXPECT_EQ(vt, VT_BSTR);
  EXPECT_TRUE(array.Get()->fFeatures & FADF_BSTR);

  // Elements are copied in and out; the array owns its copies.
  const WCHAR* words[] = {WSTR("one"), WSTR("two"), WSTR("three")};
  for (LONG index = 1; index <= 3; ++index) {
    ScopedBstr word(words[index - 1]);
    ASSERT_EQ(SafeArrayPutElement(array.Get(), &index, word.Get()), S_OK);
  }
  LONG index = 2;
  ScopedBstr got;
  ASSERT_EQ(SafeArrayGetElement(array.Get(), &index, got.Receive()), S_OK);
  EXPECT_EQ(tarnix::WideToUtf8(got.Get()), "two");
  index = 0;
  EXPECT_EQ(SafeArrayGetElement(array.Get(), &index, got.Receive()), DISP_E_BADINDEX);
  index = 4;
  EXPECT_EQ(SafeArrayPutElement(array.Get(), &index, got.Get()), DISP_E_BADINDEX);

  {
    ScopedSafeArrayAccess<BSTR> data(array.Get());
    ASSERT_TRUE(data.Valid());
    ASSERT_EQ(data.size(), 3u);
    EXPECT_EQ(tarnix::WideToUtf8(data[2]), "three");
    // Locked while its data is out.
    EXPECT_EQ(SafeArrayDestroy(array.Get()), DISP_E_ARRAYISLOCKED);
  }
  EXPECT_EQ(SafeArrayUnlock(array.Get()), E_UNEXPECTED);

  ScopedSafeArray empty(SafeArrayCreateVector(VT_I4, 1, 0));
  ASSERT_TRUE(empty);
  lower = upper = 9;
  EXPECT_EQ(SafeArrayGetLBound(empty.Get(), 1, &lower), S_OK);
  EXPECT_EQ(SafeArrayGetUBound(empty.Get(), 1, &upper), S_OK);
  EXPECT_EQ(lower, 1);
  EXPECT_EQ(upper, 0);
  EXPECT_EQ(SafeArrayCreateVector(VT_EMPTY, 0, 1), nullptr);
  EXPECT_EQ(SafeArrayCreateVector(VT_NULL, 0, 1), nullptr);
  EXPECT_EQ(SafeArrayGetLBound(nullptr, 1, &lower), E_INVALIDARG);
  EXPECT_EQ(SafeArrayDestroy(nullptr), S_OK);
}

TEST(SafeArray, ATwoDimensionalArrayReadAsAListIsItsFirstDimension) {
  SAFEARRAYBOUND bounds[2] = {{2, 1}, {3, 10}};  // dimension 1: 1..2, dimension 2: 10..12
  ScopedSafeArray array(SafeArrayCreate(VT_I4, 2, bounds));
  ASSERT_TRUE(array);
  LONG at[2] = {2, 10};
  LONG value = 77;
  ASSERT_EQ(SafeArrayPutElement(array.Get(), at, &value), S_OK);
  const ScopedSafeArrayAccess<LONG> first(array.Get());
  ASSERT_TRUE(first.Valid());
  EXPECT_EQ(first.size(), 2u);
  EXPECT_EQ(first[1], 77);
}

// The host's own adapter records: their record description copies and frees the strings.
TEST(SafeArray, RecordArraysCopyTheirRecordsAndHoldOneReferenceToTheirRecordInfo) {
  ScopedSafeArray array(tarnix::host::MakeAdapterArray(
      {{WSTR("first"), {}, {}, {}, {}, 1}, {WSTR("second"), {}, {}, {}, {}, 2}}, 1));
  ASSERT_TRUE(array);
  VARTYPE vt = VT_EMPTY;
  ASSERT_EQ(SafeArrayGetVartype(array.Get(), &vt), S_OK);
  EXPECT_EQ(vt, VT_RECORD);
  EXPECT_EQ(SafeArrayGetElemsize(array.Get()), sizeof(HostNetworkInterfaceRecord));
  LONG lower = 0, upper = 0;
  ASSERT_TRUE(array.GetBounds(&lower, &upper));
  EXPECT_EQ(lower, 1);
  EXPECT_EQ(upper, 2);

  tarnix::ComPtr<IRecordInfo> info;
  ASSERT_EQ(SafeArrayGetRecordInfo(array.Get(), info.Receive()), S_OK);
  const auto* counted = dynamic_cast<tarnix::host::AdapterRecordInfo*>(info.Get());
  ASSERT_NE(counted, nullptr);
  EXPECT_EQ(counted->RefCount(), 2u);  // the array's and this test's

  LONG index = 2;
  HostNetworkInterfaceRecord copy{};
  ASSERT_EQ(SafeArrayGetElement(array.Get(), &index, &copy), S_OK);
  EXPECT_EQ(copy.linkSpeed, 2);
  EXPECT_EQ(tarnix::WideToUtf8(copy.description), "second");
  {
    ScopedSafeArrayAccess<HostNetworkInterfaceRecord> records(array.Get());
    ASSERT_TRUE(records.Valid());
    EXPECT_NE(copy.description, records[1].description);
  }
  info->RecordClear(&copy);
  array.Reset();
  EXPECT_EQ(counted->RefCount(), 1u);
}
