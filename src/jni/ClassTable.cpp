#include "jni/ClassTable.h"

#include <cstring>

namespace tarnix::classes {
namespace {

template <size_t N>
constexpr ClassTableRow Row(const char* name, const MethodEntry (&methods)[N]) {
  return {name, methods, N};
}

}  // namespace

const ClassTableRow kClassTable[10] = {
    Row(kInstanceLoggerFactory, kInstanceLoggerFactoryMethods),
    Row(kDesktopMessageClient, kDesktopMessageClientMethods),
    Row(kDesktopConnection, kDesktopConnectionMethods),
    Row(kDesktopInformation, kDesktopInformationMethods),
    Row(kNetworkInterface, kNetworkInterfaceMethods),
    Row(kBaseUserSession, kBaseUserSessionMethods),
    Row(kBaseSample, kBaseSampleMethods),
    Row(kBaseMetric, kBaseMetricMethods),
    Row(kBaseRemoteApp, kBaseRemoteAppMethods),
    Row(kHashMap, kHashMapMethods),
};

const ClassTableRow* FindClassTableRow(const char* name) {
  if (!name) return nullptr;
  for (const ClassTableRow& row : kClassTable) {
    if (std::strcmp(row.name, name) == 0) return &row;
  }
  return nullptr;
}

}  // namespace tarnix::classes
