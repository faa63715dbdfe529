// Critical sections are recursive mutexes, as on Windows.
#include "platform/Win32.h"

void InitializeCriticalSection(LPCRITICAL_SECTION lpCriticalSection) {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(&lpCriticalSection->mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
}

BOOL InitializeCriticalSectionEx(LPCRITICAL_SECTION lpCriticalSection, DWORD dwSpinCount,
                                 DWORD Flags) {
  InitializeCriticalSection(lpCriticalSection);
  return TRUE;
}

BOOL InitializeCriticalSectionAndSpinCount(LPCRITICAL_SECTION lpCriticalSection,
                                           DWORD dwSpinCount) {
  InitializeCriticalSection(lpCriticalSection);
  return TRUE;
}

void EnterCriticalSection(LPCRITICAL_SECTION lpCriticalSection) {
  pthread_mutex_lock(&lpCriticalSection->mutex);
}

BOOL TryEnterCriticalSection(LPCRITICAL_SECTION lpCriticalSection) {
  return pthread_mutex_trylock(&lpCriticalSection->mutex) == 0 ? TRUE : FALSE;
}

void LeaveCriticalSection(LPCRITICAL_SECTION lpCriticalSection) {
  pthread_mutex_unlock(&lpCriticalSection->mutex);
}

void DeleteCriticalSection(LPCRITICAL_SECTION lpCriticalSection) {
  pthread_mutex_destroy(&lpCriticalSection->mutex);
}
