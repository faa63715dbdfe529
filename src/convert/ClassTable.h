// The Java classes the component loads, with the method table of each, in loading order,
// and the handles the component calls them through. The tables hold the system's own
// texts (class names, aliases, JNI names and descriptors) once; each handle is made from
// its row when the component is compiled, so a handle whose alias or C++ signature does
// not match its row does not build. The data-model classes are found again later with
// CJavaVM::GetClass by these names.
#pragma once

#include "jni/JavaClass.h"
#include "jni/JavaMethod.h"

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

#define TARNIX_DATAMODEL "Lcom/corvane/zelmar/adapters/brixcommon/datamodel/"
#define TARNIX_CONNECTION TARNIX_DATAMODEL "DesktopConnection;"
#define TARNIX_INFORMATION TARNIX_DATAMODEL "DesktopInformation;"
#define TARNIX_SESSION TARNIX_DATAMODEL "UserSession;"
#define TARNIX_SAMPLE TARNIX_DATAMODEL "Sample;"
#define TARNIX_METRIC TARNIX_DATAMODEL "Metric;"
#define TARNIX_REMOTE_APP TARNIX_DATAMODEL "RemoteApp;"
#define TARNIX_STRING "Ljava/lang/String;"
#define TARNIX_MAP "Ljava/util/Map;"

inline constexpr MethodEntry kInstanceLoggerFactoryMethods[] = {
    {"ctor()", "<init>", "()V"},
    {"ctor(folder)", "<init>", "(" TARNIX_STRING ")V"},
};

inline constexpr MethodEntry kDesktopMessageClientMethods[] = {
    {"ctor()", "<init>", "()V"},
    {"initialize", "initialize", "(" TARNIX_STRING TARNIX_STRING ")V"},
    {"setProviderUrl", "setProviderUrl", "(" TARNIX_STRING ")V"},
    {"onStartup", "onStartup", "(" TARNIX_STRING TARNIX_CONNECTION ")" TARNIX_STRING},
    {"onUserLogon", "onUserLogon",
     "(" TARNIX_CONNECTION TARNIX_INFORMATION "J" TARNIX_SESSION ")" TARNIX_STRING},
    {"onUserLogoff", "onUserLogoff", "(" TARNIX_CONNECTION "J" TARNIX_SESSION ")V"},
    {"onUserDisconnect", "onUserDisconnect", "(" TARNIX_CONNECTION "J" TARNIX_SESSION ")V"},
    {"onUserReconnect", "onUserReconnect", "(" TARNIX_CONNECTION "J" TARNIX_SESSION ")V"},
    {"onDataCollected", "onDataCollected", "(" TARNIX_CONNECTION TARNIX_SAMPLE ")" TARNIX_STRING},
    {"onExtendedDataCollected", "onExtendedDataCollected",
     "(" TARNIX_CONNECTION TARNIX_MAP TARNIX_SAMPLE ")" TARNIX_STRING},
    {"refreshSession", "refreshSession",
     "(" TARNIX_CONNECTION "J" TARNIX_INFORMATION TARNIX_SESSION ")V"},
    {"onDesktopPoll", "onDesktopPoll", "(" TARNIX_CONNECTION "J" TARNIX_STRING ")" TARNIX_STRING},
    {"onActionPerformed", "onActionPerformed",
     "(" TARNIX_CONNECTION TARNIX_MAP TARNIX_STRING ")" TARNIX_STRING},
    {"dispose", "dispose", "()V"},
};

inline constexpr MethodEntry kDesktopConnectionMethods[] = {
    {"ctor()", "<init>", "()V"},
    {"ctor(id,authToken,uniqueId,version,deviceType)", "<init>",
     "(" TARNIX_STRING TARNIX_STRING TARNIX_STRING "I" TARNIX_STRING ")V"},
};

inline constexpr MethodEntry kDesktopInformationMethods[] = {
    {"ctor()", "<init>", "()V"},
    {"ctor(name,FQDN)", "<init>", "(" TARNIX_STRING TARNIX_STRING ")V"},
    {"putTotalMemory", "putTotalMemory", "(I)V"},
    {"addNetworkInterface", "addNetworkInterface", "(" TARNIX_DATAMODEL "NetworkInterface;)V"},
};

inline constexpr MethodEntry kNetworkInterfaceMethods[] = {
    {"ctor()", "<init>", "()V"},
    {"ctor(description)", "<init>", "(" TARNIX_STRING ")V"},
    {"putMacAddress", "putMacAddress", "(" TARNIX_STRING ")V"},
    {"putIpAddress", "putIpAddress", "(" TARNIX_STRING ")V"},
    {"putSubnetMask", "putSubnetMask", "(" TARNIX_STRING ")V"},
    {"putSubnet", "putSubnet", "(" TARNIX_STRING ")V"},
    {"putLinkSpeed", "putLinkSpeed", "(I)V"},
};

inline constexpr MethodEntry kBaseUserSessionMethods[] = {
    {"ctor()", "<init>", "()V"},
    {"ctor(id,sid,user,domain)", "<init>", "(I" TARNIX_STRING TARNIX_STRING TARNIX_STRING ")V"},
    {"ctor(id,sid,user,domain,connected)", "<init>",
     "(I" TARNIX_STRING TARNIX_STRING TARNIX_STRING "Z)V"},
    {"putProperty", "putProperty", "(" TARNIX_STRING TARNIX_STRING ")V"},
    {"putMetric", "putMetric", "(" TARNIX_METRIC ")V"},
    {"putRemoteApp", "putRemoteApp", "(" TARNIX_REMOTE_APP ")V"},
};

inline constexpr MethodEntry kBaseSampleMethods[] = {
    {"ctor()", "<init>", "()V"},
    {"ctor(time)", "<init>", "(J)V"},
    {"putMetric", "putMetric", "(" TARNIX_METRIC ")V"},
    {"putSession", "putSession", "(" TARNIX_SESSION ")V"},
};

inline constexpr MethodEntry kBaseMetricMethods[] = {
    {"ctor()", "<init>", "()V"},
    {"ctor(name)", "<init>", "(" TARNIX_STRING ")V"},
    {"putDoubleValue", "putDoubleValue", "(D)V"},
    {"putLongValue", "putLongValue", "(J)V"},
    {"putStringValue", "putStringValue", "(" TARNIX_STRING ")V"},
    {"addInstance", "addInstance", "(" TARNIX_METRIC ")V"},
};

inline constexpr MethodEntry kBaseRemoteAppMethods[] = {
    {"ctor()", "<init>", "()V"},
    {"ctor(id)", "<init>", "(" TARNIX_STRING ")V"},
    {"putProperty", "putProperty", "(" TARNIX_STRING TARNIX_STRING ")V"},
    {"putMetric", "putMetric", "(" TARNIX_METRIC ")V"},
};

inline constexpr MethodEntry kHashMapMethods[] = {
    {"ctor()", "<init>", "()V"},
    {"put", "put", "(Ljava/lang/Object;Ljava/lang/Object;)Ljava/lang/Object;"},
};

#undef TARNIX_DATAMODEL
#undef TARNIX_CONNECTION
#undef TARNIX_INFORMATION
#undef TARNIX_SESSION
#undef TARNIX_SAMPLE
#undef TARNIX_METRIC
#undef TARNIX_REMOTE_APP
#undef TARNIX_STRING
#undef TARNIX_MAP

struct ClassTableRow {
  const char* name;
  const MethodEntry* methods;
  ULONGLONG count;
};

// The classes by their rows of kClassTable, in the order they are loaded; the logger
// factory comes first.
enum class ClassId {
  InstanceLoggerFactory,
  DesktopMessageClient,
  DesktopConnection,
  DesktopInformation,
  NetworkInterface,
  UserSession,
  Sample,
  Metric,
  RemoteApp,
  HashMap,
  Count,
};

extern const ClassTableRow kClassTable[static_cast<size_t>(ClassId::Count)];

// The method table of a class of kClassTable by its name; null for any other name.
const ClassTableRow* FindClassTableRow(const char* name);

}  // namespace tarnix::classes

// The handles, one struct per class, each named after its row's alias; a constructor's
// parameter names follow "ctor" ("ctor(id,name)" is ctorIdName). Java strings are
// jstring, every other object jobject.
namespace tarnix::methods {

using classes::kBaseMetricMethods;
using classes::kBaseRemoteAppMethods;
using classes::kBaseSampleMethods;
using classes::kBaseUserSessionMethods;
using classes::kDesktopConnectionMethods;
using classes::kDesktopInformationMethods;
using classes::kDesktopMessageClientMethods;
using classes::kHashMapMethods;
using classes::kInstanceLoggerFactoryMethods;
using classes::kNetworkInterfaceMethods;

struct InstanceLoggerFactory {
  static constexpr auto ctorFolder =
      ConstructorOf<void(jstring)>(kInstanceLoggerFactoryMethods, "ctor(folder)");
};

struct DesktopMessageClient {
  static constexpr auto ctor = ConstructorOf<void()>(kDesktopMessageClientMethods, "ctor()");
  static constexpr auto initialize =
      MethodOf<void(jstring, jstring)>(kDesktopMessageClientMethods, "initialize");
  static constexpr auto setProviderUrl =
      MethodOf<void(jstring)>(kDesktopMessageClientMethods, "setProviderUrl");
  static constexpr auto onStartup =
      MethodOf<jstring(jstring, jobject)>(kDesktopMessageClientMethods, "onStartup");
  static constexpr auto onUserLogon = MethodOf<jstring(jobject, jobject, jlong, jobject)>(
      kDesktopMessageClientMethods, "onUserLogon");
  static constexpr auto onUserLogoff =
      MethodOf<void(jobject, jlong, jobject)>(kDesktopMessageClientMethods, "onUserLogoff");
  static constexpr auto onUserDisconnect =
      MethodOf<void(jobject, jlong, jobject)>(kDesktopMessageClientMethods, "onUserDisconnect");
  static constexpr auto onUserReconnect =
      MethodOf<void(jobject, jlong, jobject)>(kDesktopMessageClientMethods, "onUserReconnect");
  static constexpr auto onDataCollected =
      MethodOf<jstring(jobject, jobject)>(kDesktopMessageClientMethods, "onDataCollected");
  static constexpr auto onExtendedDataCollected = MethodOf<jstring(jobject, jobject, jobject)>(
      kDesktopMessageClientMethods, "onExtendedDataCollected");
  static constexpr auto refreshSession = MethodOf<void(jobject, jlong, jobject, jobject)>(
      kDesktopMessageClientMethods, "refreshSession");
  static constexpr auto onDesktopPoll =
      MethodOf<jstring(jobject, jlong, jstring)>(kDesktopMessageClientMethods, "onDesktopPoll");
  static constexpr auto onActionPerformed = MethodOf<jstring(jobject, jobject, jstring)>(
      kDesktopMessageClientMethods, "onActionPerformed");
  static constexpr auto dispose = MethodOf<void()>(kDesktopMessageClientMethods, "dispose");
};

struct DesktopConnection {
  static constexpr auto ctor = ConstructorOf<void()>(kDesktopConnectionMethods, "ctor()");
  static constexpr auto ctorIdAuthTokenUniqueIdVersionDeviceType =
      ConstructorOf<void(jstring, jstring, jstring, jint, jstring)>(
          kDesktopConnectionMethods, "ctor(id,authToken,uniqueId,version,deviceType)");
};

struct DesktopInformation {
  static constexpr auto ctorNameFQDN =
      ConstructorOf<void(jstring, jstring)>(kDesktopInformationMethods, "ctor(name,FQDN)");
  static constexpr auto putTotalMemory =
      MethodOf<void(jint)>(kDesktopInformationMethods, "putTotalMemory");
  static constexpr auto addNetworkInterface =
      MethodOf<void(jobject)>(kDesktopInformationMethods, "addNetworkInterface");
};

struct NetworkInterface {
  static constexpr auto ctorDescription =
      ConstructorOf<void(jstring)>(kNetworkInterfaceMethods, "ctor(description)");
  static constexpr auto putMacAddress =
      MethodOf<void(jstring)>(kNetworkInterfaceMethods, "putMacAddress");
  static constexpr auto putIpAddress =
      MethodOf<void(jstring)>(kNetworkInterfaceMethods, "putIpAddress");
  static constexpr auto putSubnetMask =
      MethodOf<void(jstring)>(kNetworkInterfaceMethods, "putSubnetMask");
  static constexpr auto putSubnet = MethodOf<void(jstring)>(kNetworkInterfaceMethods, "putSubnet");
  static constexpr auto putLinkSpeed =
      MethodOf<void(jint)>(kNetworkInterfaceMethods, "putLinkSpeed");
};

struct BaseUserSession {
  static constexpr auto ctorIdSidUserDomainConnected =
      ConstructorOf<void(jint, jstring, jstring, jstring, jboolean)>(
          kBaseUserSessionMethods, "ctor(id,sid,user,domain,connected)");
  static constexpr auto putProperty =
      MethodOf<void(jstring, jstring)>(kBaseUserSessionMethods, "putProperty");
  static constexpr auto putMetric = MethodOf<void(jobject)>(kBaseUserSessionMethods, "putMetric");
  static constexpr auto putRemoteApp =
      MethodOf<void(jobject)>(kBaseUserSessionMethods, "putRemoteApp");
};

struct BaseSample {
  static constexpr auto ctorTime = ConstructorOf<void(jlong)>(kBaseSampleMethods, "ctor(time)");
  static constexpr auto putMetric = MethodOf<void(jobject)>(kBaseSampleMethods, "putMetric");
  static constexpr auto putSession = MethodOf<void(jobject)>(kBaseSampleMethods, "putSession");
};

struct BaseMetric {
  static constexpr auto ctorName = ConstructorOf<void(jstring)>(kBaseMetricMethods, "ctor(name)");
  static constexpr auto putDoubleValue =
      MethodOf<void(jdouble)>(kBaseMetricMethods, "putDoubleValue");
  static constexpr auto putLongValue = MethodOf<void(jlong)>(kBaseMetricMethods, "putLongValue");
  static constexpr auto putStringValue =
      MethodOf<void(jstring)>(kBaseMetricMethods, "putStringValue");
  static constexpr auto addInstance = MethodOf<void(jobject)>(kBaseMetricMethods, "addInstance");
};

struct BaseRemoteApp {
  static constexpr auto ctorId = ConstructorOf<void(jstring)>(kBaseRemoteAppMethods, "ctor(id)");
  static constexpr auto putMetric = MethodOf<void(jobject)>(kBaseRemoteAppMethods, "putMetric");
};

struct HashMap {
  static constexpr auto ctor = ConstructorOf<void()>(kHashMapMethods, "ctor()");
  static constexpr auto put = MethodOf<jobject(jobject, jobject)>(kHashMapMethods, "put");
};

}  // namespace tarnix::methods
