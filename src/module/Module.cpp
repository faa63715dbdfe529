// The library shell. Loading the library starts nothing: the first DumpData does.
#include "platform/Win32.h"

#ifdef _WIN32
#  include "manager/CommManagerImpl.h"

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID reserved) {
  // A non-null `reserved` on detach: the process is ending rather than unloading us.
  if (reason == DLL_PROCESS_DETACH && reserved) CRMICommManagerImpl::ProcessEnding();
  return TRUE;
}
#endif
