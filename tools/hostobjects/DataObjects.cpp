#include "hostobjects/DataObjects.h"

#include <cstring>

#include "platform/WideText.h"
#include <tuple>

namespace tarnix::host {
namespace {

template <class Fill>
ScopedVariant Holding(VARTYPE type, Fill fill) {
  VARIANT v;
  VariantInit(&v);
  v.vt = type;
  fill(v);
  ScopedVariant out;
  out.Reset(v);
  return out;
}

HRESULT CopyText(const WString& text, BSTR* out) {
  if (!out) return E_POINTER;
  *out = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
  return *out ? S_OK : E_OUTOFMEMORY;
}

void CopyInto(ValueEnumerator& enumerator, const NamedValue& pair) {
  ScopedVariant copy;
  std::ignore = pair.value.CopyTo(&copy);  // a value that cannot be copied goes out empty
  enumerator.Add(pair.name, std::move(copy));
}

}  // namespace

ScopedVariant I2(SHORT value) {
  return Holding(VT_I2, [=](VARIANT& v) { v.iVal = value; });
}
ScopedVariant I4(LONG value) { return ScopedVariant(value); }
ScopedVariant UI2(USHORT value) {
  return Holding(VT_UI2, [=](VARIANT& v) { v.uiVal = value; });
}
ScopedVariant UI4(ULONG value) {
  return Holding(VT_UI4, [=](VARIANT& v) { v.ulVal = value; });
}
ScopedVariant I8(LONGLONG value) {
  return Holding(VT_I8, [=](VARIANT& v) { v.llVal = value; });
}
ScopedVariant UI8(ULONGLONG value) {
  return Holding(VT_UI8, [=](VARIANT& v) { v.ullVal = value; });
}
ScopedVariant R4(float value) {
  return Holding(VT_R4, [=](VARIANT& v) { v.fltVal = value; });
}
ScopedVariant R8(double value) {
  return Holding(VT_R8, [=](VARIANT& v) { v.dblVal = value; });
}
ScopedVariant Text(const WString& value) { return ScopedVariant(value.c_str()); }
ScopedVariant Bool(bool value) {
  return Holding(VT_BOOL, [=](VARIANT& v) { v.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE; });
}
ScopedVariant Empty() { return ScopedVariant(); }
ScopedVariant OfType(VARTYPE type, LONGLONG bits) {
  return Holding(type, [=](VARIANT& v) { v.llVal = bits; });
}
ScopedVariant Object(IUnknown* object) {
  ScopedVariant out;
  out.SetUnknown(object);
  return out;
}

HRESULT CombinedObject::QueryOther(REFIID iid, void** object) {
  const InnerWork inner;
  for (const ComPtr<IUnknown>& part : parts_) {
    if (part && SUCCEEDED(part->QueryInterface(iid, object))) return S_OK;
  }
  return E_NOINTERFACE;
}

ValueEnumerator& ValueEnumerator::Add(const WString& name, ScopedVariant value) {
  items_.push_back({name, std::move(value)});
  return *this;
}

HRESULT ValueEnumerator::Next(BSTR* name, VARIANT* value) {
  if (!name || !value) return E_POINTER;
  *name = nullptr;
  VariantInit(value);
  if (const HRESULT planned = Enter("IHostEnumerator::Next"); FAILED(planned)) return planned;
  if (position_ >= items_.size()) return end_;
  const NamedValue& pair = items_[position_++];
  HRESULT hr = CopyText(pair.name, name);
  if (SUCCEEDED(hr)) hr = VariantCopy(value, pair.value.AsInput());
  return hr;
}

SampleEnumerator& SampleEnumerator::Add(const WString& key, IHostSample* item) {
  items_.emplace_back(key, ComPtr<IHostSample>(item));
  return *this;
}

HRESULT SampleEnumerator::Next(BSTR* key, IHostSample** item) {
  if (!key || !item) return E_POINTER;
  *key = nullptr;
  *item = nullptr;
  if (const HRESULT planned = Enter("IHostSampleEnumerator::Next"); FAILED(planned)) return planned;
  if (position_ >= items_.size()) return end_;
  const auto& pair = items_[position_++];
  HRESULT hr = CopyText(pair.first, key);
  if (FAILED(hr)) return hr;
  if (pair.second) {
    *item = pair.second.Get();
    (*item)->AddRef();
  }
  return S_OK;
}

ComPtr<SampleEnumerator> Sample::Enumerate(const Collection& collection) {
  auto enumerator = MakeHostObject<SampleEnumerator>();
  for (const auto& pair : collection.items) enumerator->Add(pair.first, pair.second.Get());
  enumerator->EndWith(collection.end);
  return enumerator;
}

HRESULT Sample::get_time(DATE* time) {
  if (!time) return E_POINTER;
  if (const HRESULT planned = Enter("IHostSample::get_time"); FAILED(planned)) return planned;
  *time = time_;
  return S_OK;
}

HRESULT Sample::get_instances(IHostSampleEnumerator** instances) {
  if (!instances) return E_POINTER;
  *instances = nullptr;
  if (const HRESULT planned = Enter("IHostSample::get_instances"); FAILED(planned)) return planned;
  *instances = Enumerate(instances_).Detach();
  return S_OK;
}

HRESULT Sample::get_metrics(LONG, IHostEnumerator** metrics) {
  if (!metrics) return E_POINTER;
  *metrics = nullptr;
  if (const HRESULT planned = Enter("IHostSample::get_metrics"); FAILED(planned)) return planned;
  auto enumerator = MakeHostObject<ValueEnumerator>();
  for (const NamedValue& pair : metrics_) CopyInto(*enumerator.Get(), pair);
  enumerator->EndWith(metricsEnd_);
  *metrics = enumerator.Detach();
  return S_OK;
}

HRESULT Sample::get_collection(BSTR name, IHostSampleEnumerator** items) {
  if (!items) return E_POINTER;
  *items = nullptr;
  if (const HRESULT planned = Enter("IHostSample::get_collection"); FAILED(planned)) return planned;
  const WString key = name ? WString(name, SysStringLen(name)) : WString();
  auto found = collections_.find(key);
  *items = Enumerate(found == collections_.end() ? Collection{} : found->second).Detach();
  return S_OK;
}

PropertyBox& PropertyBox::Add(const WString& name, ScopedVariant value) {
  properties_.push_back({name, std::move(value)});
  return *this;
}

HRESULT PropertyBox::get_enumerator(IHostEnumerator** properties) {
  if (!properties) return E_POINTER;
  *properties = nullptr;
  if (const HRESULT planned = Enter("IHostPropertyBox::get_enumerator"); FAILED(planned))
    return planned;
  auto enumerator = MakeHostObject<ValueEnumerator>();
  for (const NamedValue& pair : properties_) CopyInto(*enumerator.Get(), pair);
  *properties = enumerator.Detach();
  return S_OK;
}

UserSession::UserSession(LONG id, const WString& sid, const WString& user, const WString& domain,
                         VARIANT_BOOL connected)
    : HostObject("UserSession"),
      id_(id),
      sid_(sid),
      user_(user),
      domain_(domain),
      label_(domain + WSTR("\\") + user),
      connected_(connected),
      box_(MakeHostObject<PropertyBox>()) {}

HRESULT UserSession::AnswerText(const char* call, const WString& text, BSTR* out) {
  const HRESULT result = Enter(call);
  if (!out) return E_POINTER;
  *out = nullptr;
  return FAILED(result) ? result : CopyText(text, out);
}

HRESULT UserSession::get_propertyBox(IHostPropertyBox** box) {
  const HRESULT result = Enter("IHostUserSession::get_propertyBox");
  if (!box) return E_POINTER;
  *box = nullptr;
  if (FAILED(result)) return result;
  *box = box_.Get();
  (*box)->AddRef();
  return S_OK;
}

HRESULT UserSession::get_id(LONG* id) {
  const HRESULT result = Enter("IHostUserSession::get_id");
  if (!id) return E_POINTER;
  if (SUCCEEDED(result)) *id = id_;
  return result;
}

HRESULT UserSession::get_sid(BSTR* sid) {
  return AnswerText("IHostUserSession::get_sid", sid_, sid);
}
HRESULT UserSession::get_user(BSTR* user) {
  return AnswerText("IHostUserSession::get_user", user_, user);
}
HRESULT UserSession::get_domain(BSTR* domain) {
  return AnswerText("IHostUserSession::get_domain", domain_, domain);
}
HRESULT UserSession::get_userLabel(BSTR* label) {
  return AnswerText("IHostUserSession::get_userLabel", label_, label);
}

HRESULT UserSession::get_connected(VARIANT_BOOL* connected) {
  const HRESULT result = Enter("IHostUserSession::get_connected");
  if (!connected) return E_POINTER;
  if (SUCCEEDED(result)) *connected = connected_;
  return result;
}

SessionSource& SessionSource::Add(ComPtr<UserSession> session) {
  LONG id = 0;
  {
    const InnerWork inner;
    session->get_id(&id);
  }
  sessions_[id] = std::move(session);
  return *this;
}

HRESULT SessionSource::GetSession(LONG id, IHostUserSession** session) {
  if (!session) return E_POINTER;
  *session = nullptr;
  if (const HRESULT planned = Enter("IHostSessionSource::GetSession"); FAILED(planned))
    return planned;
  auto found = sessions_.find(id);
  if (found == sessions_.end()) return E_INVALIDARG;
  *session = found->second.Get();
  (*session)->AddRef();
  return S_OK;
}

void NamedValues::SetText(const WString& name, const WString& text) {
  std::lock_guard<std::mutex> hold(lock_);
  values_[name] = ScopedVariant(text.c_str());
}

void NamedValues::SetValue(const WString& name, const VARIANT& value) {
  ScopedVariant copy;
  VariantCopy(copy.Receive(), const_cast<VARIANT*>(&value));
  std::lock_guard<std::mutex> hold(lock_);
  values_[name] = std::move(copy);
}

HRESULT NamedValues::get_Enumerator(IHostEnumerator** items) {
  if (!items) return E_POINTER;
  *items = nullptr;
  if (const HRESULT planned = Enter("IHostNamedValues::get_Enumerator"); FAILED(planned))
    return planned;
  ComPtr<ValueEnumerator> enumerator = NewEnumerator();
  std::lock_guard<std::mutex> hold(lock_);
  for (const auto& [name, value] : values_) {
    ScopedVariant copy;
    std::ignore = value.CopyTo(&copy);
    enumerator->Add(name, std::move(copy));
  }
  *items = enumerator.Detach();
  return S_OK;
}

HRESULT NamedValues::get_Item(BSTR name, VARIANT* value) {
  if (!value) return E_POINTER;
  VariantInit(value);
  const WString key = name ? WString(name, SysStringLen(name)) : WString();
  if (Watched()) {
    const HRESULT planned = Enter("IHostNamedValues::get_Item(" + WideToUtf8(key) + ")");
    if (FAILED(planned)) return planned;
  }
  std::lock_guard<std::mutex> hold(lock_);
  auto found = values_.find(key);
  if (found == values_.end()) return E_INVALIDARG;
  return VariantCopy(value, found->second.AsInput());
}

namespace {
BSTR* RecordStrings(PVOID record) {
  return &static_cast<HostNetworkInterfaceRecord*>(record)->description;
}
constexpr int kRecordStrings = 5;
}  // namespace

HRESULT AdapterRecordInfo::RecordInit(PVOID pvNew) {
  if (!pvNew) return E_INVALIDARG;
  std::memset(pvNew, 0, sizeof(HostNetworkInterfaceRecord));
  return S_OK;
}

HRESULT AdapterRecordInfo::RecordClear(PVOID pvExisting) {
  if (!pvExisting) return E_INVALIDARG;
  BSTR* strings = RecordStrings(pvExisting);
  for (int i = 0; i < kRecordStrings; ++i) {
    SysFreeString(strings[i]);
    strings[i] = nullptr;
  }
  return S_OK;
}

HRESULT AdapterRecordInfo::RecordCopy(PVOID pvExisting, PVOID pvNew) {
  if (!pvExisting || !pvNew) return E_INVALIDARG;
  std::memcpy(pvNew, pvExisting, sizeof(HostNetworkInterfaceRecord));
  BSTR* from = RecordStrings(pvExisting);
  BSTR* to = RecordStrings(pvNew);
  for (int i = 0; i < kRecordStrings; ++i) {
    to[i] = from[i] ? SysAllocStringLen(from[i], SysStringLen(from[i])) : nullptr;
  }
  return S_OK;
}

HRESULT AdapterRecordInfo::GetGuid(GUID*) { return E_NOTIMPL; }
HRESULT AdapterRecordInfo::GetName(BSTR*) { return E_NOTIMPL; }
HRESULT AdapterRecordInfo::GetSize(ULONG* pcbSize) {
  if (!pcbSize) return E_POINTER;
  *pcbSize = sizeof(HostNetworkInterfaceRecord);
  return S_OK;
}
HRESULT AdapterRecordInfo::GetTypeInfo(ITypeInfo**) { return E_NOTIMPL; }
HRESULT AdapterRecordInfo::GetField(PVOID, LPCOLESTR, VARIANT*) { return E_NOTIMPL; }
HRESULT AdapterRecordInfo::GetFieldNoCopy(PVOID, LPCOLESTR, VARIANT*, PVOID*) { return E_NOTIMPL; }
HRESULT AdapterRecordInfo::PutField(ULONG, PVOID, LPCOLESTR, VARIANT*) { return E_NOTIMPL; }
HRESULT AdapterRecordInfo::PutFieldNoCopy(ULONG, PVOID, LPCOLESTR, VARIANT*) { return E_NOTIMPL; }
HRESULT AdapterRecordInfo::GetFieldNames(ULONG*, BSTR*) { return E_NOTIMPL; }
BOOL AdapterRecordInfo::IsMatchingType(IRecordInfo* other) {
  return other == static_cast<IRecordInfo*>(this);
}
PVOID AdapterRecordInfo::RecordCreate() { return nullptr; }
HRESULT AdapterRecordInfo::RecordCreateCopy(PVOID, PVOID*) { return E_NOTIMPL; }
HRESULT AdapterRecordInfo::RecordDestroy(PVOID) { return E_NOTIMPL; }

SAFEARRAY* MakeAdapterArray(const std::vector<AdapterValues>& adapters, LONG lowerBound) {
  auto info = MakeHostObject<AdapterRecordInfo>();
  // The extra argument is read as an IRecordInfo*, so it must be that exact pointer.
  IRecordInfo* recordInfo = info.Get();
  SAFEARRAY* array = SafeArrayCreateVectorEx(VT_RECORD, lowerBound,
                                             static_cast<ULONG>(adapters.size()), recordInfo);
  void* data = nullptr;
  if (!array || FAILED(SafeArrayAccessData(array, &data))) {
    if (array) SafeArrayDestroy(array);
    return nullptr;
  }
  auto* records = static_cast<HostNetworkInterfaceRecord*>(data);
  for (size_t i = 0; i < adapters.size(); ++i) {
    const AdapterValues& values = adapters[i];
    HostNetworkInterfaceRecord& record = records[i];
    record.reserved = 0xA5A5A5A5A5A5A5A5ULL;
    record.description = SysAllocString(values.description.c_str());
    record.macAddress = SysAllocString(values.macAddress.c_str());
    record.ipAddress = SysAllocString(values.ipAddress.c_str());
    record.subnetMask = SysAllocString(values.subnetMask.c_str());
    record.subnet = SysAllocString(values.subnet.c_str());
    record.linkSpeed = values.linkSpeed;
  }
  SafeArrayUnaccessData(array);
  return array;
}

}  // namespace tarnix::host
