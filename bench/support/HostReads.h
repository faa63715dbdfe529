// The host's side alone: every read the component makes of the bench host's fakes, with
// nothing done with the answers. The component and the raw JNI comparators both pay for
// these reads; the own-work ratio takes them out of both sides.
#pragma once

#include "platform/ScopedBstr.h"

#include "tarnix/DataInterfaces.h"

namespace tarnix::bench {

// What GetSample reads of a sample: its time, its metrics, and for each instance its
// session (texts and properties as text), metrics and remote applications' metrics.
void ReadSample(IHostSample* sample, IHostSessionSource* sessions);

// What DumpData reads of the system information before any Java: a refresh, the machine,
// virtual machine and unique ids, and the machine identity among the components'.
struct HostIdentity {
  ScopedBstr machineId;
  ScopedBstr virtualMachineId;
  ScopedBstr uniqueId;
};
HRESULT ReadIdentity(ISystemInfo* system, HostIdentity& identity);

}  // namespace tarnix::bench
