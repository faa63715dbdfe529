// The realistic sample the benchmarks convert: 50 machine metrics, and 20 sessions with
// two properties, 30 metrics and 3 remote applications of 5 metrics each; four in five
// metrics are counters, one a ratio, as the host's samples run.
#pragma once

#include "fixtures/FakeDataObjects.h"

namespace tarnix::bench {

constexpr int kMachineMetrics = 50;
constexpr int kSessions = 20;
constexpr int kSessionMetrics = 30;
constexpr int kApps = 3;
constexpr int kAppMetrics = 5;
constexpr DATE kSampleTime = 45000.5;

struct RealisticSample {
  ComPtr<testing::FakeSample> sample;
  ComPtr<testing::FakeSessionSource> sessions;
};

RealisticSample MakeRealisticSample();

}  // namespace tarnix::bench
