#include "convert/ClassTable.h"

#include <cstring>

namespace tarnix::classes {
namespace {

template <size_t N>
constexpr ClassTableRow Row(const char* name, const MethodEntry (&methods)[N]) {
  return {name, methods, N};
}

}  // namespace

constexpr ClassTableRow kClassTable[static_cast<size_t>(ClassId::Count)] = {
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

constexpr bool IsRowOf(ClassId id, const char* name) {
  return kClassTable[static_cast<size_t>(id)].name == name;
}
// The rows of the class table follow ClassId.
static_assert(IsRowOf(ClassId::InstanceLoggerFactory, kInstanceLoggerFactory));
static_assert(IsRowOf(ClassId::DesktopMessageClient, kDesktopMessageClient));
static_assert(IsRowOf(ClassId::DesktopConnection, kDesktopConnection));
static_assert(IsRowOf(ClassId::DesktopInformation, kDesktopInformation));
static_assert(IsRowOf(ClassId::NetworkInterface, kNetworkInterface));
static_assert(IsRowOf(ClassId::UserSession, kBaseUserSession));
static_assert(IsRowOf(ClassId::Sample, kBaseSample));
static_assert(IsRowOf(ClassId::Metric, kBaseMetric));
static_assert(IsRowOf(ClassId::RemoteApp, kBaseRemoteApp));
static_assert(IsRowOf(ClassId::HashMap, kHashMap));

const ClassTableRow* FindClassTableRow(const char* name) {
  if (!name) return nullptr;
  for (const ClassTableRow& row : kClassTable) {
    if (std::strcmp(row.name, name) == 0) return &row;
  }
  return nullptr;
}

}  // namespace tarnix::classes
