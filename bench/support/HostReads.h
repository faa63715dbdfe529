// The host's side alone: every read the component makes of the bench host's fakes, with
// nothing done with the answers. The component and the raw JNI comparators both pay for
// these reads; the own-work ratio takes them out of both sides.
#pragma once

#include "platform/ComPtr.h"
#include "platform/ScopedBstr.h"

#include "tarnix/DataInterfaces.h"

#include <benchmark/benchmark.h>

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

// Everything DumpData(eSample) asks of the host before it reads the sample itself: the
// identity, whether the machine is a desktop, the data as a sample (and not a session),
// and the session source through the host's system service.
HRESULT ReadDumpDataHost(ISystemInfo* system, IUnknown* data, HostIdentity& identity,
                         ComPtr<IHostSample>& sample, ComPtr<IHostSessionSource>& sessions);

// The bench host's fakes stay in memory after their last release until they are freed
// (so that one release too many is reported, not a crash), and every read makes a few.
// Left alone, a run measures a heap that grows by thousands of fakes per iteration, and
// its repetitions drift apart; this frees them every 256 iterations, with the clock
// stopped.
class FakeSweep {
 public:
  void After(benchmark::State& state);

 private:
  int calls_ = 0;
};

}  // namespace tarnix::bench
