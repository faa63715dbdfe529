#include "RealisticSample.h"

#include <string>

namespace tarnix::bench {
namespace {

namespace fakes = tarnix::testing;

WString Wide(const std::string& text) { return WString(text.begin(), text.end()); }

void AddMetrics(fakes::FakeSample& target, const char* prefix, int count) {
  for (int i = 0; i < count; ++i) {
    const WString name = Wide(prefix + std::to_string(i));
    if (i % 5 == 4) {
      target.AddMetric(name, fakes::R8(i + 0.5));
    } else {
      target.AddMetric(name, fakes::I8(i * 1000LL));
    }
  }
}

}  // namespace

RealisticSample MakeRealisticSample() {
  RealisticSample data{fakes::MakeHostObject<fakes::FakeSample>(kSampleTime),
                       fakes::MakeHostObject<fakes::FakeSessionSource>()};
  AddMetrics(*data.sample.Get(), "machine.metric.", kMachineMetrics);
  for (int s = 0; s < kSessions; ++s) {
    auto session = fakes::MakeHostObject<fakes::FakeUserSession>(
        s + 1, Wide("S-1-5-21-" + std::to_string(s)), Wide("user" + std::to_string(s)),
        WSTR("CORP"), 1);
    session->Properties()
        .Add(WSTR("client"), fakes::Text(Wide("pc-" + std::to_string(s))))
        .Add(WSTR("protocol"), fakes::Text(WSTR("rdp")));
    data.sessions->Add(session);
    auto instance = fakes::MakeHostObject<fakes::FakeSample>(kSampleTime);
    AddMetrics(*instance.Get(), "session.metric.", kSessionMetrics);
    for (int a = 0; a < kApps; ++a) {
      auto app = fakes::MakeHostObject<fakes::FakeSample>(kSampleTime);
      AddMetrics(*app.Get(), "app.metric.", kAppMetrics);
      instance->AddToCollection(WSTR("remoteApps"), Wide("app-" + std::to_string(a)), app.Get());
    }
    data.sample->AddInstance(Wide(std::to_string(s + 1)), instance.Get());
  }
  return data;
}

}  // namespace tarnix::bench
