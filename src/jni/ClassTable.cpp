#include "jni/ClassTable.h"

#include <cstring>

namespace tarnix::classes {
namespace {

#define DATAMODEL "Lcom/corvane/zelmar/adapters/brixcommon/datamodel/"
#define CONNECTION DATAMODEL "DesktopConnection;"
#define INFORMATION DATAMODEL "DesktopInformation;"
#define SESSION DATAMODEL "UserSession;"
#define SAMPLE DATAMODEL "Sample;"
#define METRIC DATAMODEL "Metric;"
#define REMOTE_APP DATAMODEL "RemoteApp;"
#define STRING "Ljava/lang/String;"
#define MAP "Ljava/util/Map;"

const MethodEntry kInstanceLoggerFactoryMethods[] = {
    {"ctor()", "<init>", "()V"},
    {"ctor(folder)", "<init>", "(" STRING ")V"},
};

const MethodEntry kDesktopMessageClientMethods[] = {
    {"ctor()", "<init>", "()V"},
    {"initialize", "initialize", "(" STRING STRING ")V"},
    {"setProviderUrl", "setProviderUrl", "(" STRING ")V"},
    {"onStartup", "onStartup", "(" STRING CONNECTION ")" STRING},
    {"onUserLogon", "onUserLogon", "(" CONNECTION INFORMATION "J" SESSION ")" STRING},
    {"onUserLogoff", "onUserLogoff", "(" CONNECTION "J" SESSION ")V"},
    {"onUserDisconnect", "onUserDisconnect", "(" CONNECTION "J" SESSION ")V"},
    {"onUserReconnect", "onUserReconnect", "(" CONNECTION "J" SESSION ")V"},
    {"onDataCollected", "onDataCollected", "(" CONNECTION SAMPLE ")" STRING},
    {"onExtendedDataCollected", "onExtendedDataCollected", "(" CONNECTION MAP SAMPLE ")" STRING},
    {"refreshSession", "refreshSession", "(" CONNECTION "J" INFORMATION SESSION ")V"},
    {"onDesktopPoll", "onDesktopPoll", "(" CONNECTION "J" STRING ")" STRING},
    {"onActionPerformed", "onActionPerformed", "(" CONNECTION MAP STRING ")" STRING},
    {"dispose", "dispose", "()V"},
};

const MethodEntry kDesktopConnectionMethods[] = {
    {"ctor()", "<init>", "()V"},
    {"ctor(id,authToken,uniqueId,version,deviceType)", "<init>",
     "(" STRING STRING STRING "I" STRING ")V"},
};

const MethodEntry kDesktopInformationMethods[] = {
    {"ctor()", "<init>", "()V"},
    {"ctor(name,FQDN)", "<init>", "(" STRING STRING ")V"},
    {"putTotalMemory", "putTotalMemory", "(I)V"},
    {"addNetworkInterface", "addNetworkInterface", "(" DATAMODEL "NetworkInterface;)V"},
};

const MethodEntry kNetworkInterfaceMethods[] = {
    {"ctor()", "<init>", "()V"},
    {"ctor(description)", "<init>", "(" STRING ")V"},
    {"putMacAddress", "putMacAddress", "(" STRING ")V"},
    {"putIpAddress", "putIpAddress", "(" STRING ")V"},
    {"putSubnetMask", "putSubnetMask", "(" STRING ")V"},
    {"putSubnet", "putSubnet", "(" STRING ")V"},
    {"putLinkSpeed", "putLinkSpeed", "(I)V"},
};

const MethodEntry kBaseUserSessionMethods[] = {
    {"ctor()", "<init>", "()V"},
    {"ctor(id,sid,user,domain)", "<init>", "(I" STRING STRING STRING ")V"},
    {"ctor(id,sid,user,domain,connected)", "<init>", "(I" STRING STRING STRING "Z)V"},
    {"putProperty", "putProperty", "(" STRING STRING ")V"},
    {"putMetric", "putMetric", "(" METRIC ")V"},
    {"putRemoteApp", "putRemoteApp", "(" REMOTE_APP ")V"},
};

const MethodEntry kBaseSampleMethods[] = {
    {"ctor()", "<init>", "()V"},
    {"ctor(time)", "<init>", "(J)V"},
    {"putMetric", "putMetric", "(" METRIC ")V"},
    {"putSession", "putSession", "(" SESSION ")V"},
};

const MethodEntry kBaseMetricMethods[] = {
    {"ctor()", "<init>", "()V"},
    {"ctor(name)", "<init>", "(" STRING ")V"},
    {"putDoubleValue", "putDoubleValue", "(D)V"},
    {"putLongValue", "putLongValue", "(J)V"},
    {"putStringValue", "putStringValue", "(" STRING ")V"},
    {"addInstance", "addInstance", "(" METRIC ")V"},
};

const MethodEntry kBaseRemoteAppMethods[] = {
    {"ctor()", "<init>", "()V"},
    {"ctor(id)", "<init>", "(" STRING ")V"},
    {"putProperty", "putProperty", "(" STRING STRING ")V"},
    {"putMetric", "putMetric", "(" METRIC ")V"},
};

const MethodEntry kHashMapMethods[] = {
    {"ctor()", "<init>", "()V"},
    {"put", "put", "(Ljava/lang/Object;Ljava/lang/Object;)Ljava/lang/Object;"},
};

#undef DATAMODEL
#undef CONNECTION
#undef INFORMATION
#undef SESSION
#undef SAMPLE
#undef METRIC
#undef REMOTE_APP
#undef STRING
#undef MAP

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
