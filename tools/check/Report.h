// What each check found, and how it is printed: one verdict line per check with the
// facts under it for people, or one JSON document for fleet tooling. Secrets never reach
// a report: the checks put in only their descriptions (see DescribeSecret).
#pragma once

#include "CheckHost.h"

#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace tarnix::check {

enum class Verdict { Pass, Fail, Skipped };

struct StepReport {
  int number = 0;
  std::string name;   // "java-runtime"
  std::string title;  // "Java runtime"
  Verdict verdict = Verdict::Skipped;
  std::string summary;                                     // the verdict line's text
  std::vector<std::pair<std::string, std::string>> facts;  // in the order found
  std::vector<std::string> problems;                       // one finding each
  std::vector<LoggedLine> log;  // the component's own lines while the check ran
};

// A check that was not asked for.
StepReport SkippedStep(int number, std::string name, std::string title, std::string why);
// A check that passes until a problem is found.
StepReport StartedStep(int number, std::string name, std::string title);
void FailStep(StepReport* step, std::string problem);

bool AnyFailed(const std::vector<StepReport>& steps);

// Errors and warnings of the component's log go with the check; its routine lines do not.
void PrintText(std::ostream& out, const std::vector<StepReport>& steps);
void PrintJson(std::ostream& out, const std::vector<StepReport>& steps);

}  // namespace tarnix::check
