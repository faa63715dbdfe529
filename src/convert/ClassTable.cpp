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
static_assert(IsRowOf(ClassId::InstanceLoggerFactory, kInstanceLoggerFactory) &&
                  IsRowOf(ClassId::DesktopMessageClient, kDesktopMessageClient) &&
                  IsRowOf(ClassId::DesktopConnection, kDesktopConnection) &&
                  IsRowOf(ClassId::DesktopInformation, kDesktopInformation) &&
                  IsRowOf(ClassId::NetworkInterface, kNetworkInterface) &&
                  IsRowOf(ClassId::UserSession, kBaseUserSession) &&
                  IsRowOf(ClassId::Sample, kBaseSample) && IsRowOf(ClassId::Metric, kBaseMetric) &&
                  IsRowOf(ClassId::RemoteApp, kBaseRemoteApp) &&
                  IsRowOf(ClassId::HashMap, kHashMap),
              "the rows of the class table follow ClassId");

const ClassTableRow* FindClassTableRow(const char* name) {
  if (!name) return nullptr;
  for (const ClassTableRow& row : kClassTable) {
    if (std::strcmp(row.name, name) == 0) return &row;
  }
  return nullptr;
}

}  // namespace tarnix::classes
