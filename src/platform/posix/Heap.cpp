// The process heap and local memory are the C heap; blocks from either may be freed by
// the other, as on Windows where both end in the same heap.
#include "platform/Win32.h"

#include <malloc.h>

#include <cstdlib>
#include <cstring>

namespace {
// Any non-null value serves: the heap argument is not used.
char g_processHeap;
}  // namespace

HANDLE GetProcessHeap() { return &g_processHeap; }

LPVOID HeapAlloc(HANDLE hHeap, DWORD dwFlags, SIZE_T dwBytes) {
  const SIZE_T size = dwBytes ? dwBytes : 1;  // a zero-byte block is still a block
  return (dwFlags & HEAP_ZERO_MEMORY) ? std::calloc(1, size) : std::malloc(size);
}

LPVOID HeapReAlloc(HANDLE hHeap, DWORD dwFlags, LPVOID lpMem, SIZE_T dwBytes) {
  if (!lpMem) return nullptr;
  // The block's usable size stands for its old size: the C heap keeps no other.
  const SIZE_T before = malloc_usable_size(lpMem);
  auto* block = static_cast<char*>(std::realloc(lpMem, dwBytes ? dwBytes : 1));
  if (block && (dwFlags & HEAP_ZERO_MEMORY) && dwBytes > before)
    std::memset(block + before, 0, dwBytes - before);
  return block;
}

BOOL HeapFree(HANDLE hHeap, DWORD dwFlags, LPVOID lpMem) {
  std::free(lpMem);
  return TRUE;
}

HLOCAL LocalAlloc(UINT uFlags, SIZE_T uBytes) {
  const SIZE_T size = uBytes ? uBytes : 1;
  return (uFlags & LMEM_ZEROINIT) ? std::calloc(1, size) : std::malloc(size);
}

HLOCAL LocalFree(HLOCAL hMem) {
  std::free(hMem);
  return nullptr;
}
