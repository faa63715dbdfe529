#include "convert/JNIConvertor.h"

#include "convert/Converters.h"

namespace convert = tarnix::convert;
using convert::Conversion;

std::shared_ptr<CJavaObject> CJNIConvertor::GetSample(std::shared_ptr<CJavaVM> vm,
                                                      IHostSample* sample,
                                                      IHostSessionSource* sessions) const {
  if (!vm) return nullptr;
  Conversion c(*vm, log_);
  return convert::Pinned(convert::GetSample(c, sample, sessions));
}

bool CJNIConvertor::PutMetrics(std::shared_ptr<CJavaVM> vm, const CJavaObject& target,
                               IHostSample* source) const {
  if (!vm) return false;
  Conversion c(*vm, log_);
  return convert::PutMetrics(c, target, source);
}

std::shared_ptr<CJavaObject> CJNIConvertor::GetMetric(std::shared_ptr<CJavaVM> vm,
                                                      const WString& name,
                                                      const VARIANT& value) const {
  if (!vm) return nullptr;
  Conversion c(*vm, log_);
  return convert::Pinned(convert::GetMetric(c, name, value));
}

std::shared_ptr<CJavaObject> CJNIConvertor::GetMetricWithInstances(
    std::shared_ptr<CJavaVM> vm, const WString& name, IHostEnumerator* instances) const {
  if (!vm) return nullptr;
  Conversion c(*vm, log_);
  return convert::Pinned(convert::GetMetricWithInstances(c, name, instances));
}

std::shared_ptr<CJavaObject> CJNIConvertor::GetUserSession(
    std::shared_ptr<CJavaVM> vm, tarnix::ComPtr<IHostUserSession> session) const {
  if (!vm) return nullptr;
  Conversion c(*vm, log_);
  return convert::Pinned(convert::GetUserSession(c, std::move(session)));
}

std::shared_ptr<CJavaObject> CJNIConvertor::GetDesktop(std::shared_ptr<CJavaVM> vm,
                                                       ISystemInfo* system,
                                                       HRESULT* listFailure) const {
  if (!vm) return nullptr;
  Conversion c(*vm, log_);
  return convert::Pinned(convert::GetDesktop(c, system, listFailure));
}

std::shared_ptr<CJavaObject> CJNIConvertor::GetNetworkInterface(
    std::shared_ptr<CJavaVM> vm, const HostNetworkInterfaceRecord& adapter) const {
  if (!vm) return nullptr;
  Conversion c(*vm, log_);
  return convert::Pinned(convert::GetNetworkInterface(c, adapter));
}

std::shared_ptr<CJavaObject> CJNIConvertor::GetExtendedData(std::shared_ptr<CJavaVM> vm,
                                                            IHostNamedValues* attributes) const {
  if (!vm) return nullptr;
  Conversion c(*vm, log_);
  return convert::Pinned(convert::GetExtendedData(c, attributes));
}

std::shared_ptr<CJavaObject> CJNIConvertor::GetExtendedSample(std::shared_ptr<CJavaVM> vm,
                                                              IHostSample* sample,
                                                              IHostEnumerator* metrics) const {
  if (!vm) return nullptr;
  Conversion c(*vm, log_);
  return convert::Pinned(convert::GetExtendedSample(c, sample, metrics));
}

HRESULT CJNIConvertor::PutExtendedMetrics(std::shared_ptr<CJavaVM> vm,
                                          const CJavaObject& javaSample, IHostSample* sample,
                                          IHostEnumerator* metrics) const {
  if (!vm) return E_POINTER;
  Conversion c(*vm, log_);
  return convert::PutExtendedMetrics(c, javaSample, sample, metrics);
}

void CJNIConvertor::PutRemoteApps(std::shared_ptr<CJavaVM> vm, const CJavaObject& target,
                                  IHostSample* instance) const {
  if (!vm) return;
  Conversion c(*vm, log_);
  convert::PutRemoteApps(c, target, instance);
}

std::shared_ptr<CJavaObject> CJNIConvertor::GetRemoteApp(std::shared_ptr<CJavaVM> vm,
                                                         const WString& id) const {
  if (!vm) return nullptr;
  Conversion c(*vm, log_);
  return convert::Pinned(convert::GetRemoteApp(c, id));
}

std::shared_ptr<CJavaString> CJNIConvertor::GetJavaString(std::shared_ptr<CJavaVM> vm,
                                                          const WString& text,
                                                          bool hideText) const {
  if (!vm) return nullptr;
  convert::LocalString string = convert::GetJavaString(
      log_, *vm, text, hideText ? convert::TextInLog::Hidden : convert::TextInLog::Shown);
  if (!string) return nullptr;
  return std::make_shared<CJavaString>(std::move(*string));
}

ULONGLONG CJNIConvertor::ToJavaTime(DATE date) { return convert::ToJavaTime(date); }
