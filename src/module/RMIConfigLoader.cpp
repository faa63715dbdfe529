// The exported configuration lookups: stateless, each call forwarding to config/.
#include "tarnix/RMICommManager.h"

#include "common/HResultError.h"
#include "config/ServerConfig.h"

// Both let out only exceptions that carry a result code, as every export does.
LONG CRMIConfigLoader::GetServerInfo(VARIANT config, WCHAR** url, WCHAR** serviceValue,
                                     WCHAR** certificate) {
  return tarnix::WithResultCodes(
      [&] { return tarnix::LookUpServerInfo(config, url, serviceValue, certificate, nullptr); });
}

LONG CRMIConfigLoader::GetConfigContent(VARIANT config, VARIANT* content) {
  return tarnix::WithResultCodes([&] { return tarnix::CopyConfigContent(config, content); });
}
