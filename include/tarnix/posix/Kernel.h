// Kernel32 and shlwapi for the POSIX build: critical sections, named events, heaps, system
// message text, the command line, code pages, paths and file enumeration.
#pragma once

#include "tarnix/posix/Types.h"

#include <pthread.h>

#include <cstdarg>
#include <string>

typedef double DOUBLE;
typedef HANDLE HLOCAL;
typedef HANDLE HGLOBAL;
typedef BOOL* LPBOOL;
typedef const CHAR* LPCCH;
typedef const WCHAR* LPCWCH;
typedef const WCHAR* PCWSTR;
typedef WCHAR* PWSTR;

#define ERROR_MR_MID_NOT_FOUND 317L
#define ERROR_NO_UNICODE_TRANSLATION 1113L
#define ERROR_TIMEOUT 1460L
#define INVALID_FILE_ATTRIBUTES ((DWORD)-1)

struct SECURITY_ATTRIBUTES {
  DWORD nLength;
  LPVOID lpSecurityDescriptor;
  BOOL bInheritHandle;
};
typedef SECURITY_ATTRIBUTES* LPSECURITY_ATTRIBUTES;
typedef SECURITY_ATTRIBUTES* PSECURITY_ATTRIBUTES;

// ---- Times
struct SYSTEMTIME {
  WORD wYear;
  WORD wMonth;
  WORD wDayOfWeek;
  WORD wDay;
  WORD wHour;
  WORD wMinute;
  WORD wSecond;
  WORD wMilliseconds;
};
typedef SYSTEMTIME* LPSYSTEMTIME;
typedef SYSTEMTIME* PSYSTEMTIME;

// 100-nanosecond intervals since 1 January 1601 (UTC).
struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};
typedef FILETIME* LPFILETIME;
typedef FILETIME* PFILETIME;

BOOL SystemTimeToFileTime(const SYSTEMTIME* lpSystemTime, LPFILETIME lpFileTime);
BOOL FileTimeToSystemTime(const FILETIME* lpFileTime, LPSYSTEMTIME lpSystemTime);
void GetSystemTime(LPSYSTEMTIME lpSystemTime);
void GetSystemTimeAsFileTime(LPFILETIME lpSystemTimeAsFileTime);

// ---- Critical sections: recursive, as on Windows.
struct CRITICAL_SECTION {
  pthread_mutex_t mutex;
};
typedef CRITICAL_SECTION* LPCRITICAL_SECTION;
typedef CRITICAL_SECTION* PCRITICAL_SECTION;

void InitializeCriticalSection(LPCRITICAL_SECTION lpCriticalSection);
BOOL InitializeCriticalSectionEx(LPCRITICAL_SECTION lpCriticalSection, DWORD dwSpinCount,
                                 DWORD Flags);
BOOL InitializeCriticalSectionAndSpinCount(LPCRITICAL_SECTION lpCriticalSection, DWORD dwSpinCount);
void EnterCriticalSection(LPCRITICAL_SECTION lpCriticalSection);
BOOL TryEnterCriticalSection(LPCRITICAL_SECTION lpCriticalSection);
void LeaveCriticalSection(LPCRITICAL_SECTION lpCriticalSection);
void DeleteCriticalSection(LPCRITICAL_SECTION lpCriticalSection);

// ---- Events. A named event is shared between processes, as on Windows; it lives in a
// POSIX named semaphore. Unnamed events stay inside the process.
#define SYNCHRONIZE 0x00100000L
#define EVENT_MODIFY_STATE 0x0002
#define EVENT_ALL_ACCESS 0x1F0003
#define WAIT_OBJECT_0 0x00000000L
#define WAIT_ABANDONED 0x00000080L
#define WAIT_TIMEOUT 0x00000102L
#define WAIT_FAILED ((DWORD)0xFFFFFFFF)

HANDLE CreateEventW(LPSECURITY_ATTRIBUTES lpEventAttributes, BOOL bManualReset, BOOL bInitialState,
                    LPCWSTR lpName);
HANDLE OpenEventW(DWORD dwDesiredAccess, BOOL bInheritHandle, LPCWSTR lpName);
BOOL SetEvent(HANDLE hEvent);
BOOL ResetEvent(HANDLE hEvent);
DWORD WaitForSingleObject(HANDLE hHandle, DWORD dwMilliseconds);
BOOL CloseHandle(HANDLE hObject);

void Sleep(DWORD dwMilliseconds);
DWORD GetCurrentProcessId();
DWORD GetTickCount();
ULONGLONG GetTickCount64();

// ---- Heaps
#define HEAP_NO_SERIALIZE 0x00000001
#define HEAP_GENERATE_EXCEPTIONS 0x00000004
#define HEAP_ZERO_MEMORY 0x00000008
#define LMEM_FIXED 0x0000
#define LMEM_ZEROINIT 0x0040
#define LPTR (LMEM_FIXED | LMEM_ZEROINIT)

HANDLE GetProcessHeap();
LPVOID HeapAlloc(HANDLE hHeap, DWORD dwFlags, SIZE_T dwBytes);
LPVOID HeapReAlloc(HANDLE hHeap, DWORD dwFlags, LPVOID lpMem, SIZE_T dwBytes);
BOOL HeapFree(HANDLE hHeap, DWORD dwFlags, LPVOID lpMem);
HLOCAL LocalAlloc(UINT uFlags, SIZE_T uBytes);
HLOCAL LocalFree(HLOCAL hMem);

// ---- System message text
#define FORMAT_MESSAGE_ALLOCATE_BUFFER 0x00000100
#define FORMAT_MESSAGE_IGNORE_INSERTS 0x00000200
#define FORMAT_MESSAGE_FROM_STRING 0x00000400
#define FORMAT_MESSAGE_FROM_HMODULE 0x00000800
#define FORMAT_MESSAGE_FROM_SYSTEM 0x00001000
#define FORMAT_MESSAGE_ARGUMENT_ARRAY 0x00002000
#define FORMAT_MESSAGE_MAX_WIDTH_MASK 0x000000FF
#define LANG_NEUTRAL 0x00
#define LANG_ENGLISH 0x09
#define SUBLANG_NEUTRAL 0x00
#define SUBLANG_DEFAULT 0x01
#define SUBLANG_ENGLISH_US 0x01
#define MAKELANGID(p, s) ((((WORD)(s)) << 10) | (WORD)(p))

// Knows the English text of the codes the component reports (HRESULTs, and Win32 errors
// either bare or as 0x8007xxxx); for any other code it answers 0 with
// ERROR_MR_MID_NOT_FOUND, as Windows does for a code without text. Inserts are never
// expanded: FROM_SYSTEM without IGNORE_INSERTS is refused with ERROR_INVALID_PARAMETER
// when the text holds one.
DWORD FormatMessageW(DWORD dwFlags, LPCVOID lpSource, DWORD dwMessageId, DWORD dwLanguageId,
                     LPWSTR lpBuffer, DWORD nSize, va_list* Arguments);

// ---- Command line
LPWSTR GetCommandLineW();

// ---- Code pages: every ANSI code page is UTF-8 here.
#define CP_ACP 0
#define CP_OEMCP 1
#define CP_MACCP 2
#define CP_THREAD_ACP 3
#define CP_UTF8 65001
#define MB_PRECOMPOSED 0x00000001
#define MB_ERR_INVALID_CHARS 0x00000008
#define WC_ERR_INVALID_CHARS 0x00000080

int MultiByteToWideChar(UINT CodePage, DWORD dwFlags, LPCCH lpMultiByteStr, int cbMultiByte,
                        LPWSTR lpWideCharStr, int cchWideChar);
int WideCharToMultiByte(UINT CodePage, DWORD dwFlags, LPCWCH lpWideCharStr, int cchWideChar,
                        LPSTR lpMultiByteStr, int cbMultiByte, LPCCH lpDefaultChar,
                        LPBOOL lpUsedDefaultChar);

// ---- Strings and paths (shlwapi, CRT)
int lstrlenW(LPCWSTR lpString);
int StrToIntW(PCWSTR pszSrc);
// Joins with '/' (the native separator); a file part that is absolute replaces the
// directory; "." and ".." segments are folded away as PathCanonicalize would.
LPWSTR PathCombineW(LPWSTR pszDest, LPCWSTR pszDir, LPCWSTR pszFile);
WCHAR* _wfullpath(WCHAR* absPath, const WCHAR* relPath, size_t maxLength);
DWORD GetEnvironmentVariableW(LPCWSTR lpName, LPWSTR lpBuffer, DWORD nSize);

// ---- Files
#define FILE_ATTRIBUTE_READONLY 0x00000001
#define FILE_ATTRIBUTE_HIDDEN 0x00000002
#define FILE_ATTRIBUTE_SYSTEM 0x00000004
#define FILE_ATTRIBUTE_DIRECTORY 0x00000010
#define FILE_ATTRIBUTE_ARCHIVE 0x00000020
#define FILE_ATTRIBUTE_NORMAL 0x00000080
#define FILE_ATTRIBUTE_REPARSE_POINT 0x00000400

struct WIN32_FIND_DATAW {
  DWORD dwFileAttributes;
  FILETIME ftCreationTime;
  FILETIME ftLastAccessTime;
  FILETIME ftLastWriteTime;
  DWORD nFileSizeHigh;
  DWORD nFileSizeLow;
  DWORD dwReserved0;
  DWORD dwReserved1;
  WCHAR cFileName[MAX_PATH];
  WCHAR cAlternateFileName[14];
};
typedef WIN32_FIND_DATAW* LPWIN32_FIND_DATAW;
typedef WIN32_FIND_DATAW* PWIN32_FIND_DATAW;

// The pattern's last segment may hold '*' and '?'; both '/' and '\\' separate folders.
// Entries come in the file system's order, "." and ".." included when they match.
HANDLE FindFirstFileW(LPCWSTR lpFileName, LPWIN32_FIND_DATAW lpFindFileData);
BOOL FindNextFileW(HANDLE hFindFile, LPWIN32_FIND_DATAW lpFindFileData);
BOOL FindClose(HANDLE hFindFile);
DWORD GetFileAttributesW(LPCWSTR lpFileName);

namespace tarnix::posix {

// Replaces what GetCommandLineW answers, for tests; an empty text restores the real one.
void SetCommandLineForTesting(const std::basic_string<WCHAR>& commandLine);

}  // namespace tarnix::posix
