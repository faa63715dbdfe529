// The DesktopConnection that names this machine in every call of the Java message
// client. The manager builds one afresh per call, from the client identity it keeps and
// from the host's answer whether the machine is a desktop.
#pragma once

#include "jni/JavaObject.h"
#include "jni/JavaVM.h"

#include "platform/Win32.h"
#include "tarnix/HostInterfaces.h"

#include <memory>

// The protocol version the server is told: 6.6.0, one byte each for major, minor, patch.
inline constexpr jint kDesktopProtocolVersion = 0x00060600;

struct DesktopIdentity {
  WString id;         // the machine identity
  WString authToken;  // the call's second string; never logged
  WString uniqueId;   // the virtual-machine id; never logged
};

// Empty on failure, logged through `logger` (which may be null). The token and the
// unique id never reach the log, not even when their Java strings fail. `system` answers
// whether this is a desktop; without it the machine is a server.
std::shared_ptr<CJavaObject> GetDesktopConnection(IHostLogger* logger, std::shared_ptr<CJavaVM> vm,
                                                  const DesktopIdentity& identity,
                                                  ISystemInfo* system);
