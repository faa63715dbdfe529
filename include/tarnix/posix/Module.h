// Dynamic libraries with the Win32 names, over dlopen. Paths are UTF-16 as on Windows.
// Failures set the last error as Windows does: 126 for a library that cannot be loaded,
// 127 for a missing symbol.
#pragma once

#include "tarnix/posix/Types.h"

struct HINSTANCE__;
typedef HINSTANCE__* HINSTANCE;
typedef HINSTANCE HMODULE;
typedef intptr_t INT_PTR;
typedef INT_PTR (*FARPROC)();

#define LOAD_WITH_ALTERED_SEARCH_PATH 0x00000008u
#define GET_MODULE_HANDLE_EX_FLAG_PIN 0x00000001u
#define GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT 0x00000002u
#define GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS 0x00000004u

// A name without a slash is looked for in the DLL directory first (when one is set),
// then as dlopen looks for it. The libraries a loaded library depends on are found by
// the dynamic linker's own rules, which the DLL directory does not change.
HMODULE LoadLibraryW(LPCWSTR fileName);
HMODULE LoadLibraryExW(LPCWSTR fileName, HANDLE reserved, DWORD flags);
FARPROC GetProcAddress(HMODULE module, LPCSTR name);
BOOL FreeLibrary(HMODULE module);
// A library already loaded, named by its path (or by an address inside it with
// GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS); never loads one. With
// GET_MODULE_HANDLE_EX_FLAG_PIN the library stays mapped until the process ends.
BOOL GetModuleHandleExW(DWORD flags, LPCWSTR moduleName, HMODULE* module);
// Null restores the default search; the directory is process-wide, as on Windows.
BOOL SetDllDirectoryW(LPCWSTR directory);
// Characters copied without the terminating zero, or the size needed including it when
// the buffer is too small; 0 when no directory is set.
DWORD GetDllDirectoryW(DWORD bufferLength, LPWSTR buffer);
