// SHA-256 from the system's own implementation: CNG (bcrypt) on Windows, OpenSSL's
// libcrypto elsewhere. The tool never carries a hash of its own.
#pragma once

#include <string>

namespace tarnix::check {

// The hash of the bytes as 64 lower-case hex digits; empty when the system refused.
std::string Sha256Hex(const std::string& bytes);

}  // namespace tarnix::check
