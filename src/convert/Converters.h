// The converters themselves, each working inside one Conversion. CJNIConvertor and
// GetDesktopConnection open the Conversion; a converter that calls another passes its
// own on, so a whole sample shares one.
#pragma once

#include "convert/Conversion.h"

#include "platform/ComPtr.h"
#include "tarnix/DataInterfaces.h"
#include "tarnix/HostInterfaces.h"

namespace tarnix::convert {

// A BaseSample at the sample's time (left in *time), or nothing with the reason logged.
LocalObject NewJavaSample(Conversion& c, IHostSample* sample, DATE* time);
LocalObject GetSample(Conversion& c, IHostSample* sample, IHostSessionSource* sessions);

// True when the metrics enumerator delivered a pair, and when the metrics could not be
// read while a logger is present.
bool PutMetrics(Conversion& c, const CJavaObject& target, IHostSample* source);
LocalObject GetMetric(Conversion& c, WStringView name, const VARIANT& value);
// `instances` stays the caller's; null is an empty list.
LocalObject GetMetricWithInstances(Conversion& c, WStringView name, IHostEnumerator* instances);

LocalObject GetUserSession(Conversion& c, ComPtr<IHostUserSession> session);

// An adapter list the host gave but that cannot be read, or none at all, fails the desktop
// with its code in *listFailure (left alone otherwise).
LocalObject GetDesktop(Conversion& c, ISystemInfo* system, HRESULT* listFailure);
LocalObject GetNetworkInterface(Conversion& c, const HostNetworkInterfaceRecord& adapter);

LocalObject GetExtendedData(Conversion& c, IHostNamedValues* attributes);
LocalObject GetExtendedSample(Conversion& c, IHostSample* sample, IHostEnumerator* metrics);
[[nodiscard]] HRESULT PutExtendedMetrics(Conversion& c, const CJavaObject& javaSample,
                                         IHostSample* sample, IHostEnumerator* metrics);

void PutRemoteApps(Conversion& c, const CJavaObject& target, IHostSample* instance);
LocalObject GetRemoteApp(Conversion& c, WStringView id);

}  // namespace tarnix::convert
