#include "convert/DesktopConnection.h"

#include "convert/Conversion.h"

namespace {

using tarnix::convert::TextInLog;

const WCHAR* DeviceType(ISystemInfo* system) {
  VARIANT_BOOL desktop = VARIANT_FALSE;
  if (system) system->get_isDesktop(&desktop);
  return desktop == VARIANT_TRUE ? WSTR("DESKTOP") : WSTR("SERVER");
}

}  // namespace

std::shared_ptr<CJavaObject> GetDesktopConnection(IHostLogger* logger, std::shared_ptr<CJavaVM> vm,
                                                  const DesktopIdentity& identity,
                                                  ISystemInfo* system) {
  if (!vm) return nullptr;
  const tarnix::HostLog log(logger);
  tarnix::convert::Conversion c(*vm, log);
  const CJavaClass* connectionClass = c.Class(tarnix::convert::DataClass::DesktopConnection);
  if (!connectionClass) return nullptr;
  tarnix::convert::LocalString id = c.String(identity.id, TextInLog::Shown);
  if (!id) return nullptr;
  tarnix::convert::LocalString authToken = c.String(identity.authToken, TextInLog::Hidden);
  if (!authToken) return nullptr;
  tarnix::convert::LocalString uniqueId = c.String(identity.uniqueId, TextInLog::Hidden);
  if (!uniqueId) return nullptr;
  tarnix::convert::LocalString deviceType = c.String(DeviceType(system), TextInLog::Shown);
  if (!deviceType) return nullptr;
  return tarnix::convert::Pinned(
      c.Construct(*connectionClass,
                  tarnix::methods::DesktopConnection::ctorIdAuthTokenUniqueIdVersionDeviceType,
                  WSTR("Failed to create a new Java connection object.  %s"), *id, *authToken,
                  *uniqueId, kDesktopProtocolVersion, *deviceType));
}
