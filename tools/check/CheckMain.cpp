// tarnix-rmi-check: runs the component's own start-up and configuration code outside the
// agent and says, one check at a time, what stops a desktop from reaching its message
// server. Exit status: 0 when every check that ran passed, 1 when one failed, 2 for a
// command line it does not understand. It reads the registry and never writes to it.
#include "CheckHost.h"
#include "CheckText.h"
#include "Checks.h"
#include "Report.h"

#include "jni/JavaVM.h"
#include "platform/ScopedVariant.h"

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

namespace {

using namespace tarnix::check;

constexpr const char kUsage[] =
    "Usage: tarnix-rmi-check [--product NAME] [--config FILE] [--jvm] [--connect]\n"
    "                        [--timeout SECONDS] [--json] [--help]\n"
    "\n"
    "Runs the checks the component's own start-up makes, in order:\n"
    "  1. product name and keys   2. Java runtime   3. class path   4. message server\n"
    "  5. Java side (with --jvm): a Java machine with the component's options loads\n"
    "     the ten classes of its class table\n"
    "  6. server reachable (with --connect, which implies --jvm): a lookup of the\n"
    "     message server URL, sending no agent message\n"
    "\n"
    "  --product NAME     the agent's --product, read as the component reads it\n"
    "  --config FILE      the agent's XML configuration (names a registry path)\n"
    "  --timeout SECONDS  how long the server may take to answer (1-600, default 10)\n"
    "  --json             one JSON document instead of lines\n"
    "Exit status: 0 every check passed, 1 a check failed, 2 bad usage.\n";

struct Options {
  bool jvm = false;
  bool connect = false;
  bool json = false;
  bool help = false;
  int timeoutSeconds = 10;
  std::string configFile;
};

bool ParseTimeout(const std::string& text, int* seconds) {
  char* end = nullptr;
  const long value = std::strtol(text.c_str(), &end, 10);
  if (text.empty() || *end != 0 || value < 1 || value > 600) return false;
  *seconds = static_cast<int>(value);
  return true;
}

// The value of an option, given as "--name value" or "--name=value".
bool TakeValue(int argc, char** argv, int* i, const std::string& name, std::string* value) {
  const std::string argument = argv[*i];
  if (argument.rfind(name + "=", 0) == 0) {
    *value = argument.substr(name.size() + 1);
    return true;
  }
  if (argument != name || *i + 1 >= argc) return false;
  *value = argv[++*i];
  return true;
}

bool ParseOptions(int argc, char** argv, Options* options) {
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    std::string value;
    if (argument == "--jvm") {
      options->jvm = true;
    } else if (argument == "--connect") {
      options->jvm = options->connect = true;
    } else if (argument == "--json") {
      options->json = true;
    } else if (argument == "--help" || argument == "-h") {
      options->help = true;
    } else if (TakeValue(argc, argv, &i, "--product", &value)) {
      // The component reads the product from the command line itself.
    } else if (TakeValue(argc, argv, &i, "--config", &value)) {
      options->configFile = value;
    } else if (!TakeValue(argc, argv, &i, "--timeout", &value) ||
               !ParseTimeout(value, &options->timeoutSeconds)) {
      std::cerr << "tarnix-rmi-check: cannot use '" << argument << "'\n\n" << kUsage;
      return false;
    }
  }
  return true;
}

// The configuration as the agent hands it over: the document's text. Without one, a
// null value, which names no registry path and leaves the policy key to be tried.
bool LoadConfig(const std::string& file, tarnix::ScopedVariant* config) {
  if (file.empty()) {
    config->Receive()->vt = VT_NULL;
    return true;
  }
  std::ifstream in(file, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  if (!in) return false;
  *config = tarnix::ScopedVariant(tarnix::Utf8ToWide(text.str()).c_str());
  return true;
}

std::vector<StepReport> RunChecks(const Options& options, const VARIANT& config) {
  CheckHost host;
  Findings findings;
  std::vector<StepReport> steps;
  steps.push_back(CheckProductAndKeys(host));
  steps.push_back(CheckJavaRuntime(host, &findings));
  steps.push_back(CheckClassPath(host, &findings));
  steps.push_back(CheckMessageServer(host, config, &findings));
  steps.push_back(options.jvm ? CheckJavaSide(host, &findings)
                              : SkippedStep(5, "java-side", "Java side", "not asked (--jvm)"));
  steps.push_back(options.connect ? CheckServerReachable(host, &findings, options.timeoutSeconds)
                                  : SkippedStep(6, "server-reachable", "server reachable",
                                                "not asked (--connect)"));
  return steps;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (!ParseOptions(argc, argv, &options)) return 2;
  if (options.help) {
    std::cout << kUsage;
    return 0;
  }
  tarnix::ScopedVariant config;
  if (!LoadConfig(options.configFile, &config)) {
    std::cerr << "tarnix-rmi-check: cannot read '" << options.configFile << "'\n";
    return 2;
  }
  const std::vector<StepReport> steps = RunChecks(options, config.Get());
  if (options.json) {
    PrintJson(std::cout, steps);
  } else {
    PrintText(std::cout, steps);
  }
  std::cout.flush();
  return AnyFailed(steps) ? 1 : 0;
}
