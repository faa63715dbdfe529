// Reading JNI method descriptors, so that calls can check their arguments.
#pragma once

#include <string>
#include <string_view>

namespace tarnix {

// "(ILjava/lang/String;[J)V" gives the parameter letters "ILL" (objects and arrays are
// both 'L') and the result descriptor "V". False for a malformed descriptor.
bool ParseMethodDescriptor(std::string_view descriptor, std::string& parameters,
                           std::string& result);

}  // namespace tarnix
