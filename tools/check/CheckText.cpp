#include "CheckText.h"

#include "Sha256.h"

#include <cstdio>

namespace tarnix::check {

std::string CodeText(LONG code) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08lx", static_cast<unsigned long>(code) & 0xFFFFFFFFul);
  return text;
}

std::string FirstLine(const WString& exceptionText) {
  if (exceptionText.empty()) return "no Java exception";
  return ToUtf8(exceptionText.substr(0, exceptionText.find_first_of(WSTR("\r\n"))));
}

std::string DescribeSecret(const WString& secret) {
  if (secret.empty()) return "absent";
  const std::string digest = Sha256Hex(ToUtf8(secret));
  return "present, " + std::to_string(secret.size()) + " characters, SHA-256 prefix " +
         (digest.empty() ? std::string("unavailable") : digest.substr(0, 8));
}

}  // namespace tarnix::check
