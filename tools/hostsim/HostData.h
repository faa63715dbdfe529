// The host's data objects for each kind of DumpData, with realistic content: sessions with
// their clients, samples with metrics per session and the sessions' published applications,
// extended data, a trace route.
#pragma once

#include "hostobjects/DataObjects.h"
#include "hostobjects/SystemInformation.h"

namespace tarnix::hostsim {

// One object that answers the interfaces of several: the host hands the component a
// user session that is also a sample, or named values that are also a sample.
ComPtr<IUnknown> Combine(std::initializer_list<ComPtr<IUnknown>> parts);

// The desktop: machine identity, two network adapters, memory, component identities.
void DescribeDesktop(host::SystemInformation& system);

// The host's sessions by id: 1 (anna.berg), 2 (li.wei), 3 (omar.haddad).
ComPtr<host::SessionSource> MakeSessions();
ComPtr<host::UserSession> MakeSession(LONG id);

// A sample of the three sessions with their metrics and published applications.
ComPtr<IUnknown> MakeSample();
// A session as it logs off, with its last sample.
ComPtr<IUnknown> MakeLogoff(LONG id);
// Extended GPU metrics with their instances and attributes.
ComPtr<IUnknown> MakeExtendedData();
// The result of a trace route to the message server.
ComPtr<IUnknown> MakeTraceRoute();

}  // namespace tarnix::hostsim
