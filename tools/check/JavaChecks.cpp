// Checks 5 and 6: the component's Java start-up in the tool's own process, and a lookup
// of the message server from that machine.
#include "CheckText.h"
#include "Checks.h"

#include "common/HostLog.h"
#include "convert/ClassTable.h"
#include "jni/JavaVM.h"
#include "jni/LocalRef.h"
#include "manager/JavaStartup.h"
#include "platform/ThreadAnsi.h"

namespace tarnix::check {
namespace {

std::string Failure(CJavaVM& machine) {
  return FirstLine(machine.TakeException().value_or(WString()));
}

// Why a class of the table does not load, row by row: the component stops at the first
// row that fails, the operator wants every one.
void ReportUnresolvedRows(CJavaVM& machine, const classes::ClassTableRow& row, StepReport* step) {
  JNIEnv* env = machine.GetEnv();
  const std::string name = row.name;
  const LocalRef<jclass> javaClass(env, env ? env->FindClass(row.name) : nullptr);
  if (!javaClass) {
    step->problems.push_back("class " + name + " does not load: " + Failure(machine));
    return;
  }
  for (ULONGLONG i = 0; i < row.count; ++i) {
    const MethodEntry& entry = row.methods[i];
    if (env->GetMethodID(javaClass.Get(), entry.name, entry.signature)) continue;
    step->problems.push_back("class " + name + ", alias \"" + entry.alias + "\": " + entry.name +
                             " " + entry.signature + " does not resolve: " + Failure(machine));
  }
}

std::string JoinedOptions(const std::string& classPath) {
  std::string joined;
  for (const std::string& option : JavaVMOptions(classPath)) {
    joined += (joined.empty() ? "" : " ") + option;
  }
  return joined;
}

void LoadClassTable(CJavaVM& machine, StepReport* step) {
  const HostLog log = HostLog::AcquiredOnFirstUse();
  size_t loaded = 0;
  for (const classes::ClassTableRow& row : classes::kClassTable) {
    if (LoadJavaClass(machine, log, row.name, row.methods, row.count)) {
      ++loaded;
    } else {
      ReportUnresolvedRows(machine, row, step);
      step->verdict = Verdict::Fail;
    }
  }
  const std::string count =
      std::to_string(loaded) + " of " + std::to_string(std::size(classes::kClassTable));
  step->facts.emplace_back("classes loaded", count);
  step->summary = "machine created, " + count + " classes loaded";
}

}  // namespace

StepReport CheckJavaSide(CheckHost& host, Findings* findings) {
  StepReport step = StartedStep(5, "java-side", "Java side");
  step.facts.emplace_back("options", JoinedOptions(findings->classPath));
  findings->machine = std::make_unique<CJavaVM>(findings->runtimeDirectory);
  const LONG created =
      CreateJavaMachine(*findings->machine, HostLog::AcquiredOnFirstUse(), findings->classPath);
  if (created != 0) {
    findings->machine.reset();
    step.summary = "no Java machine (" + CodeText(created) + ")";
    FailStep(&step, "the Java machine was not created: " + CodeText(created));
  } else {
    LoadClassTable(*findings->machine, &step);
  }
  step.log = host.TakeLines();
  return step;
}

}  // namespace tarnix::check
