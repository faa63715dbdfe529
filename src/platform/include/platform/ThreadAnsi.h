// Text in the thread's ANSI code page, as the Java machine's options, class names and
// exception texts are handed around (and as the host's log expects the latter). Text that
// does not convert comes out empty.
#pragma once

#include "platform/Win32.h"

#include <climits>
#include <string>

namespace tarnix {

inline std::string ToThreadAnsi(const WString& text) {
  if (text.empty() || text.size() > static_cast<size_t>(INT_MAX)) return {};
  const int length = static_cast<int>(text.size());
  const int needed =
      WideCharToMultiByte(CP_THREAD_ACP, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  if (needed <= 0) return {};
  std::string narrow(static_cast<size_t>(needed), '\0');
  const int written = WideCharToMultiByte(CP_THREAD_ACP, 0, text.data(), length, &narrow[0], needed,
                                          nullptr, nullptr);
  narrow.resize(written > 0 ? static_cast<size_t>(written) : 0);
  return narrow;
}

inline WString FromThreadAnsi(const std::string& text) {
  if (text.empty() || text.size() > static_cast<size_t>(INT_MAX)) return {};
  const int length = static_cast<int>(text.size());
  const int needed = MultiByteToWideChar(CP_THREAD_ACP, 0, text.data(), length, nullptr, 0);
  if (needed <= 0) return {};
  WString wide(static_cast<size_t>(needed), WCHAR());
  const int written = MultiByteToWideChar(CP_THREAD_ACP, 0, text.data(), length, &wide[0], needed);
  wide.resize(written > 0 ? static_cast<size_t>(written) : 0);
  return wide;
}

}  // namespace tarnix
