// The members the host links against, each named once. This file is compiled twice: by
// this build's compiler, and by a compiler for the host's ABI; the build pairs the names
// the two give each member and exports every member under the host's name. Nothing here
// is linked into the library.
//
// Binding the host's name straight to our member is sound because both compilers call
// these the same way on x64: `this` in the first register, integers and pointers in the
// next ones, a VARIANT by value as the address of a copy the caller made, a LONG or a
// reference returned in RAX. A member returning a class by value would not be: the two
// put the hidden result pointer and `this` in opposite order.
#include "tarnix/RMICommManager.h"

#define TARNIX_EXPORTED_MEMBER(variable, member) extern const auto variable = &member;

TARNIX_EXPORTED_MEMBER(kGetInstance, CRMICommManager::GetInstance)
TARNIX_EXPORTED_MEMBER(kDumpData, CRMICommManager::DumpData<IUnknown>)
TARNIX_EXPORTED_MEMBER(kRegisterDataDumpCallback, CRMICommManager::RegisterDataDumpCallback)
TARNIX_EXPORTED_MEMBER(kUnregisterDataDumpCallback, CRMICommManager::UnregisterDataDumpCallback)
TARNIX_EXPORTED_MEMBER(kGetServerInfo, CRMIConfigLoader::GetServerInfo)
TARNIX_EXPORTED_MEMBER(kGetConfigContent, CRMIConfigLoader::GetConfigContent)
