// The host's data objects: samples with instances and named collections, the enumerators
// that walk them, user sessions with property boxes, the host's sessions by id, named
// values, and adapter-record arrays. Every enumerator an object hands out is a new object
// that the receiver must release.
#pragma once

#include "hostobjects/HostObject.h"
#include "platform/ScopedVariant.h"
#include "tarnix/DataInterfaces.h"

#include <functional>
#include <initializer_list>
#include <map>
#include <mutex>
#include <vector>

namespace tarnix::host {

TARNIX_HOST_INTERFACE_ID(IHostEnumerator, IID_IHostEnumerator);
TARNIX_HOST_INTERFACE_ID(IHostSample, IID_IHostSample);
TARNIX_HOST_INTERFACE_ID(IHostUserSession, IID_IHostUserSession);
TARNIX_HOST_INTERFACE_ID(IHostSessionSource, IID_IHostSessionSource);
TARNIX_HOST_INTERFACE_ID(IRecordInfo, IID_IRecordInfo);
// The host never has the component query for these; it uses identifiers of its own.
inline constexpr IID kHostIidSampleEnumerator = {
    0x3B0E2C51, 0x8E0D, 0x4F55, {0x9A, 0x41, 0x6C, 0x1E, 0x0B, 0x7D, 0x52, 0x10}};
inline constexpr IID kHostIidPropertyBox = {
    0x3B0E2C52, 0x8E0D, 0x4F55, {0x9A, 0x41, 0x6C, 0x1E, 0x0B, 0x7D, 0x52, 0x10}};
TARNIX_HOST_INTERFACE_ID(IHostSampleEnumerator, kHostIidSampleEnumerator);
TARNIX_HOST_INTERFACE_ID(IHostPropertyBox, kHostIidPropertyBox);

// One host object answering the interfaces of several (a user session that is also a
// sample); its parts are asked in order and hold references of their own.
class CombinedObject : public HostObject<IUnknown> {
 public:
  explicit CombinedObject(std::vector<ComPtr<IUnknown>> parts)
      : HostObject("CombinedObject"), parts_(std::move(parts)) {}

 protected:
  HRESULT QueryOther(REFIID iid, void** object) override;

 private:
  std::vector<ComPtr<IUnknown>> parts_;
};

// Values for (name, value) pairs.
ScopedVariant I2(SHORT value);
ScopedVariant I4(LONG value);
ScopedVariant UI2(USHORT value);
ScopedVariant UI4(ULONG value);
ScopedVariant I8(LONGLONG value);
ScopedVariant UI8(ULONGLONG value);
ScopedVariant R4(float value);
ScopedVariant R8(double value);
ScopedVariant Text(const WString& value);
ScopedVariant Bool(bool value);
ScopedVariant Empty();
// Any other type, with the bits given.
ScopedVariant OfType(VARTYPE type, LONGLONG bits = 0);
// Holds a reference of its own to the object.
ScopedVariant Object(IUnknown* object);

struct NamedValue {
  WString name;
  ScopedVariant value;
};

// (name, VARIANT) pairs, handed out in order.
class ValueEnumerator : public HostObject<IHostEnumerator> {
 public:
  ValueEnumerator() : HostObject("ValueEnumerator") {}

  ValueEnumerator& Add(const WString& name, ScopedVariant value);
  // What Next answers after the last pair: S_FALSE, or the failure of a broken walk.
  ValueEnumerator& EndWith(HRESULT result) {
    end_ = result;
    return *this;
  }

  HRESULT STDMETHODCALLTYPE Reserved3() override { return Unused(3); }
  HRESULT STDMETHODCALLTYPE Next(BSTR* name, VARIANT* value) override;

 protected:
  // The pairs handed out so far.
  size_t Position() const { return position_; }

 private:
  std::vector<NamedValue> items_;
  size_t position_ = 0;
  HRESULT end_ = S_FALSE;
};

// (key, object) pairs of a sample's instances or of a named collection.
class SampleEnumerator : public HostObject<IHostSampleEnumerator> {
 public:
  SampleEnumerator() : HostObject("SampleEnumerator") {}

  // A null object is handed out as a null pointer.
  SampleEnumerator& Add(const WString& key, IHostSample* item);
  // What Next answers after the last pair.
  SampleEnumerator& EndWith(HRESULT result) {
    end_ = result;
    return *this;
  }

  HRESULT STDMETHODCALLTYPE Reserved3() override { return Unused(3); }
  HRESULT STDMETHODCALLTYPE Next(BSTR* key, IHostSample** item) override;

 private:
  std::vector<std::pair<WString, ComPtr<IHostSample>>> items_;
  size_t position_ = 0;
  HRESULT end_ = S_FALSE;
};

// A sample, an instance of one, or a remote application: its time, metrics, instances and
// named collections. Every enumerator is a new object.
class Sample : public HostObject<IHostSample> {
 public:
  explicit Sample(DATE time = 36526.0) : HostObject("Sample"), time_(time) {}

  Sample& SetTime(DATE time) {
    time_ = time;
    return *this;
  }
  Sample& AddMetric(const WString& name, ScopedVariant value) {
    metrics_.push_back({name, std::move(value)});
    return *this;
  }
  // The sample keeps a reference of its own (a null instance is handed out as null).
  Sample& AddInstance(const WString& key, IHostSample* instance) {
    return AddToCollection(instances_, key, instance);
  }
  Sample& AddToCollection(const WString& collection, const WString& key, IHostSample* item) {
    return AddToCollection(collections_[collection], key, item);
  }

  HRESULT STDMETHODCALLTYPE Reserved3() override { return Unused(3); }
  HRESULT STDMETHODCALLTYPE Reserved4() override { return Unused(4); }
  HRESULT STDMETHODCALLTYPE Reserved5() override { return Unused(5); }
  HRESULT STDMETHODCALLTYPE Reserved6() override { return Unused(6); }
  HRESULT STDMETHODCALLTYPE get_time(DATE* time) override;
  HRESULT STDMETHODCALLTYPE get_instances(IHostSampleEnumerator** instances) override;
  HRESULT STDMETHODCALLTYPE get_metrics(LONG flag, IHostEnumerator** metrics) override;
  HRESULT STDMETHODCALLTYPE Reserved10() override { return Unused(10); }
  HRESULT STDMETHODCALLTYPE get_collection(BSTR name, IHostSampleEnumerator** items) override;

 protected:
  struct Collection {
    std::vector<std::pair<WString, ComPtr<IHostSample>>> items;
    HRESULT end = S_FALSE;
  };
  // What the metrics enumerator answers after its last pair.
  HRESULT metricsEnd_ = S_FALSE;
  Collection instances_;

 private:
  static ComPtr<SampleEnumerator> Enumerate(const Collection& collection);
  Sample& AddToCollection(Collection& collection, const WString& key, IHostSample* item) {
    collection.items.emplace_back(key, ComPtr<IHostSample>(item));
    return *this;
  }

  DATE time_;
  std::vector<NamedValue> metrics_;
  std::map<WString, Collection> collections_;
};

class PropertyBox : public HostObject<IHostPropertyBox> {
 public:
  PropertyBox() : HostObject("PropertyBox") {}

  PropertyBox& Add(const WString& name, ScopedVariant value);

  HRESULT STDMETHODCALLTYPE get_enumerator(IHostEnumerator** properties) override;

 private:
  std::vector<NamedValue> properties_;
};

class UserSession : public HostObject<IHostUserSession> {
 public:
  UserSession(LONG id, const WString& sid, const WString& user, const WString& domain,
              VARIANT_BOOL connected = 1);

  // The session starts with an empty property box.
  PropertyBox& Properties() { return *box_.Get(); }

  HRESULT STDMETHODCALLTYPE get_propertyBox(IHostPropertyBox** box) override;
  HRESULT STDMETHODCALLTYPE get_id(LONG* id) override;
  HRESULT STDMETHODCALLTYPE get_sid(BSTR* sid) override;
  HRESULT STDMETHODCALLTYPE get_user(BSTR* user) override;
  HRESULT STDMETHODCALLTYPE get_domain(BSTR* domain) override;
  HRESULT STDMETHODCALLTYPE get_connected(VARIANT_BOOL* connected) override;
  HRESULT STDMETHODCALLTYPE Reserved9() override { return Unused(9); }
  HRESULT STDMETHODCALLTYPE Reserved10() override { return Unused(10); }
  HRESULT STDMETHODCALLTYPE Reserved11() override { return Unused(11); }
  HRESULT STDMETHODCALLTYPE Reserved12() override { return Unused(12); }
  HRESULT STDMETHODCALLTYPE Reserved13() override { return Unused(13); }
  HRESULT STDMETHODCALLTYPE get_userLabel(BSTR* label) override;

 private:
  HRESULT AnswerText(const char* call, const WString& text, BSTR* out);

  LONG id_;
  WString sid_, user_, domain_, label_;
  VARIANT_BOOL connected_;
  ComPtr<PropertyBox> box_;
};

// The host's sessions by id; an unknown id answers E_INVALIDARG.
class SessionSource : public HostObject<IHostSessionSource> {
 public:
  SessionSource() : HostObject("SessionSource") {}

  SessionSource& Add(ComPtr<UserSession> session);
  template <class Session>
  SessionSource& Add(const ComPtr<Session>& session) {
    return Add(ComPtr<UserSession>(session.Get()));
  }

  HRESULT STDMETHODCALLTYPE GetSession(LONG id, IHostUserSession** session) override;

 private:
  std::map<LONG, ComPtr<UserSession>> sessions_;
};

// A collection of named values (the host's component identities, extended-data items).
class NamedValues : public HostObject<IHostNamedValues> {
 public:
  NamedValues() : HostObject("NamedValues") {}

  void SetText(const WString& name, const WString& text);
  // Stores a copy of `value`.
  void SetValue(const WString& name, const VARIANT& value);

  // Every value in name order.
  HRESULT STDMETHODCALLTYPE get_Enumerator(IHostEnumerator** items) override;
  HRESULT STDMETHODCALLTYPE get_Item(BSTR name, VARIANT* value) override;

 protected:
  // The enumerator get_Enumerator fills.
  virtual ComPtr<ValueEnumerator> NewEnumerator() { return MakeHostObject<ValueEnumerator>(); }

 private:
  mutable std::mutex lock_;
  std::map<WString, ScopedVariant> values_;
};

// The record description of the host's adapter records: it frees a record's strings and
// copies them, as the array functions ask.
class AdapterRecordInfo : public HostObject<IRecordInfo> {
 public:
  AdapterRecordInfo() : HostObject("AdapterRecordInfo") {}

  HRESULT STDMETHODCALLTYPE RecordInit(PVOID pvNew) override;
  HRESULT STDMETHODCALLTYPE RecordClear(PVOID pvExisting) override;
  HRESULT STDMETHODCALLTYPE RecordCopy(PVOID pvExisting, PVOID pvNew) override;
  HRESULT STDMETHODCALLTYPE GetGuid(GUID* pguid) override;
  HRESULT STDMETHODCALLTYPE GetName(BSTR* pbstrName) override;
  HRESULT STDMETHODCALLTYPE GetSize(ULONG* pcbSize) override;
  HRESULT STDMETHODCALLTYPE GetTypeInfo(ITypeInfo** ppTypeInfo) override;
  HRESULT STDMETHODCALLTYPE GetField(PVOID pvData, LPCOLESTR szFieldName,
                                     VARIANT* pvarField) override;
  HRESULT STDMETHODCALLTYPE GetFieldNoCopy(PVOID pvData, LPCOLESTR szFieldName, VARIANT* pvarField,
                                           PVOID* ppvDataCArray) override;
  HRESULT STDMETHODCALLTYPE PutField(ULONG wFlags, PVOID pvData, LPCOLESTR szFieldName,
                                     VARIANT* pvarField) override;
  HRESULT STDMETHODCALLTYPE PutFieldNoCopy(ULONG wFlags, PVOID pvData, LPCOLESTR szFieldName,
                                           VARIANT* pvarField) override;
  HRESULT STDMETHODCALLTYPE GetFieldNames(ULONG* pcNames, BSTR* rgBstrNames) override;
  BOOL STDMETHODCALLTYPE IsMatchingType(IRecordInfo* pRecordInfo) override;
  PVOID STDMETHODCALLTYPE RecordCreate() override;
  HRESULT STDMETHODCALLTYPE RecordCreateCopy(PVOID pvSource, PVOID* ppvDest) override;
  HRESULT STDMETHODCALLTYPE RecordDestroy(PVOID pvRecord) override;
};

struct AdapterValues {
  WString description, macAddress, ipAddress, subnetMask, subnet;
  LONG linkSpeed = 0;
};

// A VT_RECORD vector of adapter records from `lowerBound` on, as get_networkInterfaces
// hands it out (the receiver destroys it); null when it could not be made.
SAFEARRAY* MakeAdapterArray(const std::vector<AdapterValues>& adapters, LONG lowerBound = 0);

}  // namespace tarnix::host
