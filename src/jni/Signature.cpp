#include "jni/Signature.h"

namespace tarnix {
namespace {

// Consumes one field descriptor at `at`; false when there is none.
bool SkipFieldDescriptor(std::string_view descriptor, size_t& at) {
  while (at < descriptor.size() && descriptor[at] == '[') ++at;
  if (at >= descriptor.size()) return false;
  switch (descriptor[at]) {
    case 'Z': case 'B': case 'C': case 'S': case 'I': case 'J': case 'F': case 'D':
      ++at;
      return true;
    case 'L': {
      const size_t end = descriptor.find(';', at);
      if (end == std::string_view::npos || end == at + 1) return false;
      at = end + 1;
      return true;
    }
    default:
      return false;
  }
}

}  // namespace

bool ParseMethodDescriptor(std::string_view descriptor, std::string& parameters,
                           std::string& result) {
  parameters.clear();
  result.clear();
  if (descriptor.empty() || descriptor[0] != '(') return false;
  size_t at = 1;
  while (at < descriptor.size() && descriptor[at] != ')') {
    const size_t start = at;
    if (!SkipFieldDescriptor(descriptor, at)) return false;
    const char letter = descriptor[start];
    parameters.push_back(letter == '[' ? 'L' : letter);
  }
  if (at >= descriptor.size()) return false;
  ++at;  // ')'
  const size_t resultStart = at;
  if (at < descriptor.size() && descriptor[at] == 'V') {
    ++at;
  } else if (!SkipFieldDescriptor(descriptor, at)) {
    return false;
  }
  if (at != descriptor.size()) return false;
  result.assign(descriptor.substr(resultStart));
  return true;
}

}  // namespace tarnix
