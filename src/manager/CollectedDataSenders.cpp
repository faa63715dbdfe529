// The collected data: samples, extended data, trace routes and desktop polls, each with
// the connection that names this machine.
#include "manager/Dispatch.h"

#include "common/SystemService.h"
#include "convert/JNIConvertor.h"
#include "convert/ClassTable.h"
#include "jni/JavaVM.h"
#include "manager/DispatchConversions.h"
#include "platform/ScopedBstr.h"
#include "platform/ScopedVariant.h"

#include <tuple>

using Client = tarnix::methods::DesktopMessageClient;

namespace tarnix {
namespace {

// The data's interface `iid`; null when the data is none or does not answer it.
template <class T>
ComPtr<T> QueryData(IUnknown* data, REFIID iid) {
  ComPtr<T> object;
  if (data) data->QueryInterface(iid, object.ReceiveVoid());
  return object;
}

[[nodiscard]] HRESULT ReadItem(IHostNamedValues* values, const WCHAR* name, ScopedVariant* value) {
  const ScopedBstr itemName(name);
  return values->get_Item(itemName.Get(), value->Receive());
}

// The item's value as the object it holds, queried for the interface `iid`; null when it
// holds none or the object does not answer it.
template <class T>
[[nodiscard]] HRESULT ObjectOfItem(const ScopedVariant& item, REFIID iid, ComPtr<T>* object) {
  ScopedVariant asObject;
  HRESULT hr =
      VariantChangeType(asObject.Receive(), const_cast<VARIANT*>(&item.Get()), 0, VT_UNKNOWN);
  if (FAILED(hr)) return hr;
  if (IUnknown* unknown = asObject.Get().punkVal)
    unknown->QueryInterface(iid, object->ReceiveVoid());
  return S_OK;
}

// The exception of an attribute the map refused, cleared; the map holds the others.
[[nodiscard]] std::optional<WString> RefusedAttribute(CJavaVM& machine) {
  return machine.TakeException();
}

}  // namespace

DispatchOutcome SendSample(const DispatchCall& call) {
  const Converted connection = ConvertConnection(call);
  if (!connection) return connection.Failure();
  const ComPtr<IHostSample> sample = QueryData<IHostSample>(call.data, IID_IHostSample);
  if (!sample) return {E_FAIL, nullptr};
  // The host resolves each instance's session id; without it the sample goes out with
  // its own metrics only.
  ComPtr<IHostSessionSource> sessions;
  std::ignore = GetServiceInterface(IID_IHostSessionSource, sessions.ReceiveVoid());
  const CJNIConvertor convertor(call.log.Get());
  const std::shared_ptr<CJavaObject> javaSample =
      convertor.GetSample(call.machine, sample.Get(), sessions.Get());
  if (!javaSample) return {E_FAIL, nullptr};
  return DispatchOutcome::Sent(
      call.client.CallStringMethod(Client::onDataCollected, *connection.object, *javaSample));
}

DispatchOutcome SendExtendedData(const DispatchCall& call) {
  const Converted connection = ConvertConnection(call);
  if (!connection) return connection.Failure();
  const ComPtr<IHostNamedValues> values =
      QueryData<IHostNamedValues>(call.data, IID_IHostNamedValues);
  if (!values) return {E_FAIL, nullptr};
  ScopedVariant metaData, metrics;
  HRESULT hr = ReadItem(values.Get(), WSTR("meta-data"), &metaData);
  if (SUCCEEDED(hr)) hr = ReadItem(values.Get(), WSTR("metrics"), &metrics);
  ComPtr<IHostNamedValues> attributes;
  ComPtr<IHostEnumerator> extendedMetrics;
  if (SUCCEEDED(hr)) hr = ObjectOfItem(metrics, IID_IHostNamedValues, &attributes);
  if (SUCCEEDED(hr)) hr = ObjectOfItem(metaData, IID_IHostEnumerator, &extendedMetrics);
  if (FAILED(hr)) return {hr, nullptr};

  const CJNIConvertor convertor(call.log.Get());
  const std::shared_ptr<CJavaObject> map =
      convertor.GetExtendedData(call.machine, attributes.Get());
  if (!map) return {E_FAIL, nullptr};
  std::optional<WString> refused = RefusedAttribute(*call.machine);
  const std::shared_ptr<CJavaObject> javaSample = convertor.GetExtendedSample(
      call.machine, QueryData<IHostSample>(call.data, IID_IHostSample).Get(),
      extendedMetrics.Get());
  if (!javaSample) return {E_FAIL, nullptr, std::move(refused)};
  return DispatchOutcome::Sent(call.client.CallStringMethod(Client::onExtendedDataCollected,
                                                            *connection.object, *map, *javaSample),
                               std::move(refused));
}

DispatchOutcome SendTraceRoute(const DispatchCall& call) {
  const Converted connection = ConvertConnection(call);
  if (!connection) return connection.Failure();
  const ComPtr<IHostNamedValues> values =
      QueryData<IHostNamedValues>(call.data, IID_IHostNamedValues);
  if (!values) return {E_FAIL, nullptr};
  ScopedVariant metadata, route;
  HRESULT hr = ReadItem(values.Get(), WSTR("metadata"), &metadata);
  if (FAILED(hr)) {
    call.log.ErrorWithCode(WSTR("Failed to handle metadata property for traceroute msg"), hr);
    return {hr, nullptr};
  }
  hr = ReadItem(values.Get(), WSTR("route"), &route);
  if (FAILED(hr)) {
    call.log.ErrorWithCode(WSTR("Failed to handle route property for traceroute msg"), hr);
    return {hr, nullptr};
  }

  const CJNIConvertor convertor(call.log.Get());
  ComPtr<IHostNamedValues> attributes;
  std::ignore = ObjectOfItem(metadata, IID_IHostNamedValues, &attributes);
  const std::shared_ptr<CJavaObject> map =
      convertor.GetExtendedData(call.machine, attributes.Get());
  if (!map) {
    call.log.Error(WSTR("Failed to GetMetadata for traceroute msg"));
    return {E_FAIL, nullptr};
  }
  std::optional<WString> refused = RefusedAttribute(*call.machine);
  ScopedVariant routeText;
  std::shared_ptr<CJavaString> javaRoute;
  if (SUCCEEDED(
          VariantChangeType(routeText.Receive(), const_cast<VARIANT*>(&route.Get()), 0, VT_BSTR))) {
    javaRoute = convertor.GetJavaString(call.machine, BstrText(routeText.Get().bstrVal), false);
  }
  if (!javaRoute) {
    call.log.Error(WSTR("No traceResult."));
    return {E_FAIL, nullptr, std::move(refused)};
  }
  return DispatchOutcome::Sent(
      call.client.CallStringMethod(Client::onActionPerformed, *connection.object, *map, *javaRoute),
      std::move(refused));
}

DispatchOutcome SendDesktopPoll(const DispatchCall& call) {
  const Converted connection = ConvertConnection(call);
  if (!connection) return connection.Failure();
  // The desktop is converted to prove it can be, but the poll does not carry it.
  const Converted desktop = ConvertDesktop(call);
  if (!desktop) return desktop.Failure();
  const std::shared_ptr<CJavaString> empty = RequiredString(*call.machine, WString());
  if (!empty) return {E_FAIL, nullptr};
  return DispatchOutcome::Sent(call.client.CallStringMethod(
      Client::onDesktopPoll, *connection.object, JavaNumber(call), *empty));
}

}  // namespace tarnix
