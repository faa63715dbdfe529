// The product name read off arbitrary command lines.
#include "FuzzSupport.h"

#include "common/ProductName.h"

#include <algorithm>

namespace {

// Room for the longest command line Windows allows, and then some.
constexpr size_t kCommandLineRoom = 1 << 16;

// The process's command line buffer, written in place as a process's own start-up code
// would have written it: one override of the full room, set once, so that the thousands of
// inputs do not each leave a copy behind.
WCHAR* CommandLineBuffer() {
  static WCHAR* buffer = [] {
    tarnix::posix::SetCommandLineForTesting(WString(kCommandLineRoom, WCHAR('x')));
    return GetCommandLineW();
  }();
  return buffer;
}

bool IsSeparator(WCHAR c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\b' || c == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  WString line = tarnix::fuzz::WideFromBytes(data, size);
  line.resize(std::min(line.size(), kCommandLineRoom - 1));
  WCHAR* buffer = CommandLineBuffer();
  std::copy(line.begin(), line.end(), buffer);
  buffer[line.size()] = 0;
  // The process sees the line up to its first zero, as it would on Windows.
  line.resize(std::char_traits<WCHAR>::length(buffer));

  const WString name = tarnix::GetProductName();
  FUZZ_CHECK(name == tarnix::kDefaultProductName || line.find(name) != WString::npos);
  FUZZ_CHECK(tarnix::GetProductName() == name);
  // Without the option, an unquoted line names its first word.
  if (line.find(WSTR("--product")) == WString::npos && (line.empty() || line[0] != '"')) {
    const auto end = std::find_if(line.begin(), line.end(), IsSeparator);
    FUZZ_CHECK(name == WString(line.begin(), end));
  }
  return 0;
}
