// The cost of starting: JNI_CreateJavaVM alone (the component's machine on the agent's
// class path), and the component's whole Initialize (machine, classes, logger factory,
// message client). A JVM can be made once per process, so each repetition is a child
// process of this program; the parent prints the median and range of each in
// milliseconds, and the child's whole life as the host would see it.
//
//   build with -DTARNIX_BUILD_BENCH=ON, then: bench/startup/startup_bench [repetitions]
#include "BenchHost.h"

#include "jni/JavaVM.h"
#include "platform/WideText.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

double MillisecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// Child: prints the milliseconds the step took.
int RunVmChild() {
  CJavaVM vm(tarnix::Utf8ToWide(TARNIX_BENCH_JAVA_HOME "/"));
  const auto start = Clock::now();
  const LONG created =
      vm.Create({std::string("-Djava.class.path=") + TARNIX_BENCH_CLASSPATH, "-Xrs"});
  const double took = MillisecondsSince(start);
  if (created != 0) return 1;
  std::printf("%.3f\n", took);
  return 0;
}

int RunInitializeChild() {
  tarnix::bench::BenchHost host;
  const auto start = Clock::now();
  const LONG started = host.manager.Initialize();
  const double took = MillisecondsSince(start);
  if (started != S_OK) return 1;
  std::printf("%.3f\n", took);
  std::fflush(stdout);
  // The host's teardown is not start-up.
  _exit(0);
}

struct Figures {
  std::vector<double> values;
  void Print(const char* what) {
    if (values.empty()) {
      std::printf("%-34s failed\n", what);
      return;
    }
    std::sort(values.begin(), values.end());
    std::printf("%-34s median %8.2f ms  min %8.2f  max %8.2f  (n=%zu)\n", what,
                values[values.size() / 2], values.front(), values.back(), values.size());
  }
};

// Runs this program as a child with `mode`; adds its answer and its whole life.
void RunChild(const std::string& self, const char* mode, Figures& step, Figures& process) {
  const auto start = Clock::now();
  FILE* child = popen((self + " " + mode).c_str(), "r");
  if (!child) return;
  char line[64] = {};
  const bool answered = std::fgets(line, sizeof(line), child) != nullptr;
  const int status = pclose(child);
  const double life = MillisecondsSince(start);
  if (!answered || status != 0) return;
  step.values.push_back(std::atof(line));
  process.values.push_back(life);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1 && !std::strcmp(argv[1], "--child-vm")) return RunVmChild();
  if (argc > 1 && !std::strcmp(argv[1], "--child-initialize")) return RunInitializeChild();
  const int repetitions = argc > 1 ? std::max(1, std::atoi(argv[1])) : 10;
  const std::string self = argv[0];
  Figures vm, vmProcess, initialize, initializeProcess;
  for (int i = 0; i < repetitions; ++i) {
    RunChild(self, "--child-vm", vm, vmProcess);
    RunChild(self, "--child-initialize", initialize, initializeProcess);
  }
  vm.Print("JNI_CreateJavaVM");
  vmProcess.Print("process with JNI_CreateJavaVM");
  initialize.Print("Initialize");
  initializeProcess.Print("process with Initialize");
  return vm.values.empty() || initialize.values.empty() ? 1 : 0;
}
