#include "Report.h"

#include <algorithm>
#include <cstdio>

namespace tarnix::check {
namespace {

const char* VerdictText(Verdict verdict) {
  switch (verdict) {
    case Verdict::Pass: return "PASS";
    case Verdict::Fail: return "FAIL";
    case Verdict::Skipped: break;
  }
  return "SKIP";
}

bool Reported(const LoggedLine& line) { return line.level == "error" || line.level == "warning"; }

// Continuation lines (a Java stack trace) under the first, at the given indentation.
std::string Indented(const std::string& text, const std::string& indent) {
  // A system error text ends with a line break of its own.
  const size_t end = text.find_last_not_of(" \r\n");
  std::string result;
  for (char c : text.substr(0, end == std::string::npos ? 0 : end + 1)) {
    if (c == '\r') continue;
    result.push_back(c);
    if (c == '\n') result += indent;
  }
  return result;
}

std::string JsonString(const std::string& text) {
  std::string quoted = "\"";
  for (unsigned char c : text) {
    if (c == '"' || c == '\\') {
      quoted.push_back('\\');
      quoted.push_back(static_cast<char>(c));
    } else if (c < 0x20) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", c);
      quoted += escape;
    } else {
      quoted.push_back(static_cast<char>(c));
    }
  }
  return quoted + "\"";
}

std::string JsonStrings(const std::vector<std::string>& texts) {
  std::string list = "[";
  for (size_t i = 0; i < texts.size(); ++i) list += (i ? "," : "") + JsonString(texts[i]);
  return list + "]";
}

std::string JsonLog(const std::vector<LoggedLine>& lines) {
  std::string list = "[";
  for (const LoggedLine& line : lines) {
    if (!Reported(line)) continue;
    list += (list.size() > 1 ? "," : "");
    list += "{\"level\":" + JsonString(line.level) + ",\"text\":" + JsonString(line.text) + "}";
  }
  return list + "]";
}

std::string JsonStep(const StepReport& step) {
  std::string facts = "{";
  for (const auto& fact : step.facts) {
    facts += (facts.size() > 1 ? "," : "") + JsonString(fact.first) + ":" + JsonString(fact.second);
  }
  std::string verdict = VerdictText(step.verdict);
  std::transform(verdict.begin(), verdict.end(), verdict.begin(), ::tolower);
  return "{\"step\":" + std::to_string(step.number) + ",\"name\":" + JsonString(step.name) +
         ",\"verdict\":" + JsonString(verdict) + ",\"summary\":" + JsonString(step.summary) +
         ",\"facts\":" + facts + "},\"problems\":" + JsonStrings(step.problems) +
         ",\"log\":" + JsonLog(step.log) + "}";
}

}  // namespace

StepReport SkippedStep(int number, std::string name, std::string title, std::string why) {
  StepReport step;
  step.number = number;
  step.name = std::move(name);
  step.title = std::move(title);
  step.summary = std::move(why);
  return step;
}

StepReport StartedStep(int number, std::string name, std::string title) {
  StepReport step = SkippedStep(number, std::move(name), std::move(title), "");
  step.verdict = Verdict::Pass;
  return step;
}

void FailStep(StepReport* step, std::string problem) {
  step->verdict = Verdict::Fail;
  step->problems.push_back(std::move(problem));
}

bool AnyFailed(const std::vector<StepReport>& steps) {
  return std::any_of(steps.begin(), steps.end(),
                     [](const StepReport& step) { return step.verdict == Verdict::Fail; });
}

void PrintText(std::ostream& out, const std::vector<StepReport>& steps) {
  const std::string indent = "        ";
  for (const StepReport& step : steps) {
    out << VerdictText(step.verdict) << "  " << step.number << ". " << step.title << ": "
        << step.summary << "\n";
    for (const auto& fact : step.facts) {
      out << indent << fact.first << ": " << Indented(fact.second, indent) << "\n";
    }
    for (const std::string& problem : step.problems) {
      out << indent << "! " << Indented(problem, indent + "  ") << "\n";
    }
    for (const LoggedLine& line : step.log) {
      if (Reported(line))
        out << indent << "component " << line.level << ": " << Indented(line.text, indent + "  ")
            << "\n";
    }
  }
  out << (AnyFailed(steps) ? "Result: FAIL" : "Result: PASS") << "\n";
}

void PrintJson(std::ostream& out, const std::vector<StepReport>& steps) {
  out << "{\"tool\":\"tarnix-rmi-check\",\"passed\":" << (AnyFailed(steps) ? "false" : "true")
      << ",\"steps\":[";
  for (size_t i = 0; i < steps.size(); ++i) out << (i ? "," : "") << JsonStep(steps[i]);
  out << "]}\n";
}

}  // namespace tarnix::check
