// BSTR: a 32-bit byte count, the text, then a terminating zero code unit. The pointer
// handed out points at the text, so a BSTR reads as a plain zero-terminated string too.
#include "platform/Win32.h"

#include <cstdlib>
#include <cstring>

namespace {

// Windows refuses lengths whose byte count with header and terminator would not fit 32 bits.
constexpr size_t kMaxBytes = 0xFFFFFFFFu - sizeof(uint32_t) - 2 * sizeof(OLECHAR);

uint32_t* Header(BSTR bstr) { return reinterpret_cast<uint32_t*>(bstr) - 1; }

BSTR Allocate(const void* data, size_t bytes) {
  if (bytes > kMaxBytes) return nullptr;
  // Two terminator code units: an odd byte count still ends in a whole zero OLECHAR.
  auto* block = static_cast<char*>(std::malloc(sizeof(uint32_t) + bytes + 2 * sizeof(OLECHAR)));
  if (!block) return nullptr;
  const uint32_t count = static_cast<uint32_t>(bytes);
  std::memcpy(block, &count, sizeof(count));
  char* text = block + sizeof(uint32_t);
  if (data) {
    std::memcpy(text, data, bytes);
  } else {
    std::memset(text, 0, bytes);
  }
  std::memset(text + bytes, 0, 2 * sizeof(OLECHAR));
  return reinterpret_cast<BSTR>(text);
}

size_t TextLength(const OLECHAR* text) { return std::char_traits<OLECHAR>::length(text); }

}  // namespace

BSTR SysAllocString(const OLECHAR* psz) {
  if (!psz) return nullptr;
  return Allocate(psz, TextLength(psz) * sizeof(OLECHAR));
}

BSTR SysAllocStringLen(const OLECHAR* strIn, UINT ui) {
  if (ui > kMaxBytes / sizeof(OLECHAR)) return nullptr;
  return Allocate(strIn, static_cast<size_t>(ui) * sizeof(OLECHAR));
}

BSTR SysAllocStringByteLen(LPCSTR psz, UINT len) { return Allocate(psz, len); }

INT SysReAllocString(BSTR* pbstr, const OLECHAR* psz) {
  if (!pbstr) return FALSE;
  if (!psz) {
    SysFreeString(*pbstr);
    *pbstr = nullptr;
    return TRUE;
  }
  return SysReAllocStringLen(pbstr, psz, static_cast<UINT>(TextLength(psz)));
}

INT SysReAllocStringLen(BSTR* pbstr, const OLECHAR* psz, UINT len) {
  if (!pbstr) return FALSE;
  // The source may lie inside the old string, so copy before freeing.
  BSTR fresh = SysAllocStringLen(psz, len);
  if (!fresh) return FALSE;
  SysFreeString(*pbstr);
  *pbstr = fresh;
  return TRUE;
}

void SysFreeString(BSTR bstrString) {
  if (bstrString) std::free(Header(bstrString));
}

UINT SysStringLen(BSTR pbstr) { return pbstr ? *Header(pbstr) / sizeof(OLECHAR) : 0; }

UINT SysStringByteLen(BSTR bstr) { return bstr ? *Header(bstr) : 0; }
