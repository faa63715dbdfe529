// The members the host links against, each named once. This file is compiled twice: by
// this build's compiler, and by a compiler for the host's ABI; the build pairs the names
// the two give each member and exports every member under the host's name. Nothing here
// is linked into the library.
#include "tarnix/RMICommManager.h"

#define TARNIX_EXPORTED_MEMBER(variable, member) \
  extern const auto variable = &member;

TARNIX_EXPORTED_MEMBER(kGetInstance, CRMICommManager::GetInstance)
TARNIX_EXPORTED_MEMBER(kDumpData, CRMICommManager::DumpData<IUnknown>)
TARNIX_EXPORTED_MEMBER(kRegisterDataDumpCallback, CRMICommManager::RegisterDataDumpCallback)
TARNIX_EXPORTED_MEMBER(kUnregisterDataDumpCallback, CRMICommManager::UnregisterDataDumpCallback)
TARNIX_EXPORTED_MEMBER(kGetServerInfo, CRMIConfigLoader::GetServerInfo)
TARNIX_EXPORTED_MEMBER(kGetConfigContent, CRMIConfigLoader::GetConfigContent)
