// Turns the host's data objects into objects of the Java data model. Every operation
// works on the calling thread, which must be attached to the machine; Java objects come
// back pinned by global references, and nothing made on the way is left behind. An empty
// result is the only failure answer, and the reason has been logged where the host
// expects a line. Without a logger nothing is formatted or written, and every result is
// the same.
#pragma once

#include "common/HostLog.h"
#include "jni/JavaObject.h"
#include "jni/JavaString.h"
#include "jni/JavaVM.h"

#include "platform/ComPtr.h"
#include "platform/Win32.h"
#include "tarnix/DataInterfaces.h"
#include "tarnix/HostInterfaces.h"

#include <memory>

class CJNIConvertor {
 public:
  // The logger may be null.
  explicit CJNIConvertor(IHostLogger* logger = nullptr) : log_(logger) {}

  // A BaseSample with the sample's metrics and one BaseUserSession per instance whose
  // session the source knows.
  std::shared_ptr<CJavaObject> GetSample(std::shared_ptr<CJavaVM> vm, IHostSample* sample,
                                         IHostSessionSource* sessions) const;

  // Puts every metric of the host object on the target (anything with "putMetric").
  // True when the host delivered at least one metric, and also when the metrics could
  // not be read while a logger is present.
  bool PutMetrics(std::shared_ptr<CJavaVM> vm, const CJavaObject& target,
                  IHostSample* source) const;
  std::shared_ptr<CJavaObject> GetMetric(std::shared_ptr<CJavaVM> vm, const WString& name,
                                         const VARIANT& value) const;
  // `instances` stays the caller's; null is an empty list.
  std::shared_ptr<CJavaObject> GetMetricWithInstances(std::shared_ptr<CJavaVM> vm,
                                                      const WString& name,
                                                      IHostEnumerator* instances) const;

  // Takes over the caller's reference to the session and releases it on every path.
  std::shared_ptr<CJavaObject> GetUserSession(std::shared_ptr<CJavaVM> vm,
                                              tarnix::ComPtr<IHostUserSession> session) const;

  // A DesktopInformation with one NetworkInterface per adapter. An adapter list that
  // cannot be read fails it with E_INVALIDARG (or the array's own code) in *listFailure,
  // which the caller makes its result; *listFailure is left alone otherwise.
  std::shared_ptr<CJavaObject> GetDesktop(std::shared_ptr<CJavaVM> vm, ISystemInfo* system,
                                          HRESULT* listFailure) const;
  std::shared_ptr<CJavaObject> GetNetworkInterface(std::shared_ptr<CJavaVM> vm,
                                                   const HostNetworkInterfaceRecord& adapter) const;

  // A java.util.HashMap of every attribute as text. A failed "put" leaves its exception
  // pending for the caller, and no further attribute is sent.
  std::shared_ptr<CJavaObject> GetExtendedData(std::shared_ptr<CJavaVM> vm,
                                               IHostNamedValues* attributes) const;
  // A BaseSample with the sample's time and one metric (with its instances) per extended
  // metric.
  std::shared_ptr<CJavaObject> GetExtendedSample(std::shared_ptr<CJavaVM> vm, IHostSample* sample,
                                                 IHostEnumerator* metrics) const;
  // The result of the enumerator's last Next.
  [[nodiscard]] HRESULT PutExtendedMetrics(std::shared_ptr<CJavaVM> vm,
                                           const CJavaObject& javaSample, IHostSample* sample,
                                           IHostEnumerator* metrics) const;

  // Puts a BaseRemoteApp for every remote application of the instance that has metrics.
  void PutRemoteApps(std::shared_ptr<CJavaVM> vm, const CJavaObject& target,
                     IHostSample* instance) const;
  std::shared_ptr<CJavaObject> GetRemoteApp(std::shared_ptr<CJavaVM> vm, const WString& id) const;

  // Empty on failure, which is logged with the text unless `hideText` is set.
  std::shared_ptr<CJavaString> GetJavaString(std::shared_ptr<CJavaVM> vm, const WString& text,
                                             bool hideText) const;
  // Whole seconds from 1970-01-01 to the OLE date.
  static ULONGLONG ToJavaTime(DATE date);

  IHostLogger* GetLogger() const { return log_.Get(); }

 private:
  tarnix::HostLog log_;
};
