// The process command line as Windows keeps it: one string, rebuilt here from the
// argument vector with the quoting rules of the C run-time, so that parsing it back
// (CommandLineToArgvW rules) gives the same arguments.
#include "platform/Win32.h"
#include "platform/WideText.h"

#include <fstream>
#include <iterator>
#include <list>
#include <mutex>
#include <string>

namespace {

std::mutex g_mutex;
WString* g_real = nullptr;
WString* g_override = nullptr;

bool NeedsQuotes(const std::string& argument) {
  return argument.empty() || argument.find_first_of(" \t\n\v\"") != std::string::npos;
}

// Backslashes are literal unless they precede a quote; those before a quote, and those
// before the closing quote, are doubled.
std::string Quote(const std::string& argument) {
  if (!NeedsQuotes(argument)) return argument;
  std::string out = "\"";
  size_t backslashes = 0;
  for (char c : argument) {
    if (c == '\\') {
      ++backslashes;
      continue;
    }
    if (c == '"') {
      out.append(backslashes * 2 + 1, '\\');
    } else {
      out.append(backslashes, '\\');
    }
    backslashes = 0;
    out.push_back(c);
  }
  out.append(backslashes * 2, '\\');
  return out + "\"";
}

WString ReadCommandLine() {
  std::ifstream in("/proc/self/cmdline", std::ios::binary);
  const std::string raw((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  std::string line;
  size_t start = 0;
  while (start < raw.size()) {
    size_t end = raw.find('\0', start);
    if (end == std::string::npos) end = raw.size();
    if (!line.empty()) line.push_back(' ');
    line += Quote(raw.substr(start, end - start));
    start = end + 1;
  }
  return tarnix::Utf8ToWide(line);
}

}  // namespace

LPWSTR GetCommandLineW() {
  std::lock_guard<std::mutex> lock(g_mutex);
  if (g_override) return &(*g_override)[0];
  // Built once: the pointer stays valid for the life of the process, as on Windows.
  if (!g_real) g_real = new WString(ReadCommandLine());
  return &(*g_real)[0];
}

namespace tarnix::posix {

// Every override is kept for the life of the process: a caller may still hold the
// pointer an earlier one gave.
void SetCommandLineForTesting(const std::basic_string<WCHAR>& commandLine) {
  static auto* overrides = new std::list<WString>();
  std::lock_guard<std::mutex> lock(g_mutex);
  if (commandLine.empty()) {
    g_override = nullptr;
    return;
  }
  overrides->push_back(commandLine);
  g_override = &overrides->back();
}

}  // namespace tarnix::posix
