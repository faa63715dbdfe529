// The converters themselves, each working inside one Conversion. CJNIConvertor and
// GetDesktopConnection open the Conversion; a converter that calls another passes its
// own on, so a whole sample shares one.
#pragma once

#include "convert/Conversion.h"

#include "platform/ComPtr.h"
#include "tarnix/DataInterfaces.h"
#include "tarnix/HostInterfaces.h"

namespace tarnix::convert {

std::shared_ptr<CJavaObject> GetSample(Conversion& c, IHostSample* sample,
                                       IHostSessionSource* sessions);

// True when the metrics enumerator delivered a pair, and when the metrics could not be
// read while a logger is present.
bool PutMetrics(Conversion& c, const CJavaObject& target, IHostSample* source);
std::shared_ptr<CJavaObject> GetMetric(Conversion& c, WStringView name, const VARIANT& value);
// `instances` stays the caller's; null is an empty list.
std::shared_ptr<CJavaObject> GetMetricWithInstances(Conversion& c, WStringView name,
                                                    IHostEnumerator* instances);

std::shared_ptr<CJavaObject> GetUserSession(Conversion& c, ComPtr<IHostUserSession> session);

std::shared_ptr<CJavaObject> GetDesktop(Conversion& c, ISystemInfo* system);
std::shared_ptr<CJavaObject> GetNetworkInterface(Conversion& c,
                                                 const HostNetworkInterfaceRecord& adapter);

std::shared_ptr<CJavaObject> GetExtendedData(Conversion& c, IHostNamedValues* attributes);
std::shared_ptr<CJavaObject> GetExtendedSample(Conversion& c, IHostSample* sample,
                                               IHostEnumerator* metrics);
HRESULT PutExtendedMetrics(Conversion& c, const CJavaObject& javaSample, IHostSample* sample,
                           IHostEnumerator* metrics);

void PutRemoteApps(Conversion& c, const CJavaObject& target, IHostSample* instance);
std::shared_ptr<CJavaObject> GetRemoteApp(Conversion& c, WStringView id);

}  // namespace tarnix::convert
