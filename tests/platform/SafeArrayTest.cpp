#include <gtest/gtest.h>

#include "PlatformTest.h"
#include "platform/ScopedBstr.h"
#include "platform/ScopedSafeArray.h"

#include <vector>

using tarnix::ScopedBstr;
using tarnix::ScopedSafeArray;
using tarnix::ScopedSafeArrayAccess;

namespace {

// A record of a name and a number; clearing frees the name and counts.
struct Pair {
  BSTR name;
  LONG number;
};

class PairRecordInfo : public IRecordInfo {
 public:
  int cleared = 0;
  int copied = 0;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
    if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IRecordInfo)) {
      *ppv = this;
      AddRef();
      return S_OK;
    }
    *ppv = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++refs; }
  ULONG STDMETHODCALLTYPE Release() override { return --refs; }

  HRESULT STDMETHODCALLTYPE RecordInit(PVOID pvNew) override {
    *static_cast<Pair*>(pvNew) = Pair{nullptr, 0};
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE RecordClear(PVOID pvExisting) override {
    auto* pair = static_cast<Pair*>(pvExisting);
    SysFreeString(pair->name);
    *pair = Pair{nullptr, 0};
    ++cleared;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE RecordCopy(PVOID pvExisting, PVOID pvNew) override {
    const auto* from = static_cast<const Pair*>(pvExisting);
    auto* to = static_cast<Pair*>(pvNew);
    to->name = from->name ? SysAllocString(from->name) : nullptr;
    to->number = from->number;
    ++copied;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetGuid(GUID* pguid) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetName(BSTR* pbstrName) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetSize(ULONG* pcbSize) override {
    *pcbSize = sizeof(Pair);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(ITypeInfo** ppTypeInfo) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetField(PVOID, LPCOLESTR, VARIANT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetFieldNoCopy(PVOID, LPCOLESTR, VARIANT*, PVOID*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE PutField(ULONG, PVOID, LPCOLESTR, VARIANT*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE PutFieldNoCopy(ULONG, PVOID, LPCOLESTR, VARIANT*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetFieldNames(ULONG*, BSTR*) override { return E_NOTIMPL; }
  BOOL STDMETHODCALLTYPE IsMatchingType(IRecordInfo* other) override { return other == this; }
  PVOID STDMETHODCALLTYPE RecordCreate() override { return nullptr; }
  HRESULT STDMETHODCALLTYPE RecordCreateCopy(PVOID, PVOID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE RecordDestroy(PVOID) override { return E_NOTIMPL; }

  ULONG refs = 1;
};

}  // namespace

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

TEST(SafeArray, TwoDimensionsKeepTheirOwnBounds) {
  SAFEARRAYBOUND bounds[2] = {{2, 1}, {3, 10}};  // dimension 1: 1..2, dimension 2: 10..12
  ScopedSafeArray array(SafeArrayCreate(VT_I4, 2, bounds));
  ASSERT_TRUE(array);
  for (const UINT dimension : {1u, 2u}) {
    LONG lower = 0, upper = 0;
    SafeArrayGetLBound(array.Get(), dimension, &lower);
    SafeArrayGetUBound(array.Get(), dimension, &upper);
    EXPECT_EQ(lower, dimension == 1 ? 1 : 10);
    EXPECT_EQ(upper, dimension == 1 ? 2 : 12);
  }
  // The first index varies fastest in memory.
  LONG at[2] = {2, 10};
  LONG value = 77;
  ASSERT_EQ(SafeArrayPutElement(array.Get(), at, &value), S_OK);
  void* data = nullptr;
  ASSERT_EQ(SafeArrayAccessData(array.Get(), &data), S_OK);
  EXPECT_EQ(static_cast<LONG*>(data)[1], 77);
  SafeArrayUnaccessData(array.Get());
  // Read as a list, it is its first dimension.
  const ScopedSafeArrayAccess<LONG> first(array.Get());
  ASSERT_TRUE(first.Valid());
  EXPECT_EQ(first.size(), 2u);
  EXPECT_EQ(first[1], 77);
}

TEST(SafeArray, RecordArraysClearEveryRecordAndHoldOneReferenceToTheirRecordInfo) {
  PairRecordInfo info;
  {
    ScopedSafeArray array(SafeArrayCreateVectorEx(VT_RECORD, 1, 2, &info));
    ASSERT_TRUE(array);
    EXPECT_EQ(info.refs, 2u);
    VARTYPE vt = VT_EMPTY;
    ASSERT_EQ(SafeArrayGetVartype(array.Get(), &vt), S_OK);
    EXPECT_EQ(vt, VT_RECORD);
    EXPECT_EQ(SafeArrayGetElemsize(array.Get()), sizeof(Pair));
    LONG lower = 0, upper = 0;
    ASSERT_TRUE(array.GetBounds(&lower, &upper));
    EXPECT_EQ(lower, 1);
    EXPECT_EQ(upper, 2);

    IRecordInfo* fetched = nullptr;
    ASSERT_EQ(SafeArrayGetRecordInfo(array.Get(), &fetched), S_OK);
    EXPECT_EQ(fetched, &info);
    fetched->Release();

    {
      ScopedSafeArrayAccess<Pair> records(array.Get());
      ASSERT_TRUE(records.Valid());
      records[0] = Pair{SysAllocString(WSTR("first")), 1};
      records[1] = Pair{SysAllocString(WSTR("second")), 2};
    }
    LONG index = 2;
    Pair copy{nullptr, 0};
    ASSERT_EQ(SafeArrayGetElement(array.Get(), &index, &copy), S_OK);
    EXPECT_EQ(info.copied, 1);
    EXPECT_EQ(copy.number, 2);
    EXPECT_EQ(tarnix::WideToUtf8(copy.name), "second");
    info.RecordClear(&copy);
    info.cleared = 0;
  }
  EXPECT_EQ(info.cleared, 2);
  EXPECT_EQ(info.refs, 1u);
}
