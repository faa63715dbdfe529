// A host around one communication manager whose Java side runs for the whole process, on
// the stand-in message client in this process (its provider URL is no rmi:// URL, so no
// call leaves the process). Logger, system information and the session source are the
// test suites' fakes.
#pragma once

#include "fixtures/FakeHostService.h"
#include "fixtures/FakeSystemInfo.h"
#include "fixtures/RecordingLogger.h"
#include "fixtures/TestRegistry.h"
#include "manager/CommManagerImpl.h"
#include "tarnix/DataInterfaces.h"

namespace tarnix::bench {

struct BenchHost {
  testing::ComApartment apartment;
  testing::RegisteredHostService service;
  ComPtr<testing::RecordingLogger> logger = testing::MakeHostObject<testing::RecordingLogger>();
  ComPtr<testing::FakeSystemInfo> systemInfo = testing::MakeHostObject<testing::FakeSystemInfo>();
  testing::TestRegistry registry;
  CRMICommManagerImpl manager;

  // Offers `sessions` (may be null) as the host's session source.
  explicit BenchHost(ComPtr<IHostSessionSource> sessions = {});

  LONG Dump(unsigned char type, IUnknown* data = nullptr, ULONGLONG number = 1);

  // Forgets what the stand-in client and the logger have recorded, so that a long run
  // measures the component rather than their growing records.
  void ClearRecords();
};

// A host whose manager was started on a thread that lives as long as the process (the
// starting thread's end would end the manager); the caller's thread is attached to Java.
BenchHost& TheHost(ComPtr<IHostSessionSource> sessions = {});

}  // namespace tarnix::bench
