// The Java classes the component loads, with the method table of each, in loading order.
// The data-model classes are found again later with CJavaVM::GetClass by these names.
#pragma once

#include "jni/JavaClass.h"

namespace tarnix::classes {

inline constexpr const char kInstanceLoggerFactory[] =
    "com/corvane/zelmar/adapters/brixcommon/communication/rmi/common/InstanceLoggerFactory";
inline constexpr const char kDesktopMessageClient[] =
    "com/corvane/zelmar/adapters/brixcommon/communication/rmi/client/DesktopMessageClient";
inline constexpr const char kDesktopConnection[] =
    "com/corvane/zelmar/adapters/brixcommon/datamodel/DesktopConnection";
inline constexpr const char kDesktopInformation[] =
    "com/corvane/zelmar/adapters/brixcommon/datamodel/DesktopInformation";
inline constexpr const char kNetworkInterface[] =
    "com/corvane/zelmar/adapters/brixcommon/datamodel/NetworkInterface";
inline constexpr const char kBaseUserSession[] =
    "com/corvane/zelmar/adapters/brixcommon/datamodel/BaseUserSession";
inline constexpr const char kBaseSample[] =
    "com/corvane/zelmar/adapters/brixcommon/datamodel/BaseSample";
inline constexpr const char kBaseMetric[] =
    "com/corvane/zelmar/adapters/brixcommon/datamodel/BaseMetric";
inline constexpr const char kBaseRemoteApp[] =
    "com/corvane/zelmar/adapters/brixcommon/datamodel/BaseRemoteApp";
inline constexpr const char kHashMap[] = "java/util/HashMap";

struct ClassTableRow {
  const char* name;
  const MethodEntry* methods;
  ULONGLONG count;
};

// The ten classes in the order they are loaded; the logger factory comes first.
extern const ClassTableRow kClassTable[10];

// The method table of a class of kClassTable by its name; null for any other name.
const ClassTableRow* FindClassTableRow(const char* name);

}  // namespace tarnix::classes
