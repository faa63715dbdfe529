// The library shell. Loading the library starts nothing: the first DumpData does.
#include "platform/Win32.h"

#ifdef _WIN32
BOOL WINAPI DllMain(HINSTANCE, DWORD, LPVOID) { return TRUE; }
#endif
