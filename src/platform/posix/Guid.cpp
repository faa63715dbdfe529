// GUID text in the registry form "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}", and task memory.
#include "platform/Win32.h"
#include "Internal.h"

#include <cstdlib>

const IID IID_IUnknown = {0x00000000, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
const IID IID_IClassFactory = {0x00000001, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
const IID IID_IDispatch = {0x00020400, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
const IID IID_IRecordInfo = {0x0000002F, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
const GUID GUID_NULL = {};

namespace {

constexpr int kGuidTextLength = 38;  // without the terminator

int HexDigit(OLECHAR c) {
  if (c >= u'0' && c <= u'9') return c - u'0';
  if (c >= u'a' && c <= u'f') return c - u'a' + 10;
  if (c >= u'A' && c <= u'F') return c - u'A' + 10;
  return -1;
}

// Reads `digits` hex digits; false on anything else.
bool ReadHex(const OLECHAR* text, int digits, uint64_t* out) {
  uint64_t value = 0;
  for (int i = 0; i < digits; ++i) {
    const int d = HexDigit(text[i]);
    if (d < 0) return false;
    value = (value << 4) | static_cast<uint64_t>(d);
  }
  *out = value;
  return true;
}

}  // namespace

namespace tarnix::posix {

bool ParseGuid(LPCOLESTR text, GUID* out) {
  // Every position is checked in order, so a short text stops at its terminator.
  if (text[0] != u'{') return false;
  const OLECHAR* p = text + 1;
  uint64_t v = 0;
  GUID g{};
  if (!ReadHex(p, 8, &v) || p[8] != u'-') return false;
  g.Data1 = static_cast<uint32_t>(v);
  p += 9;
  if (!ReadHex(p, 4, &v) || p[4] != u'-') return false;
  g.Data2 = static_cast<uint16_t>(v);
  p += 5;
  if (!ReadHex(p, 4, &v) || p[4] != u'-') return false;
  g.Data3 = static_cast<uint16_t>(v);
  p += 5;
  for (int i = 0; i < 8; ++i) {
    if (!ReadHex(p, 2, &v)) return false;
    g.Data4[i] = static_cast<uint8_t>(v);
    p += 2;
    if (i == 1) {
      if (*p != u'-') return false;
      ++p;
    }
  }
  if (p[0] != u'}' || p[1] != 0) return false;
  *out = g;
  return true;
}

}  // namespace tarnix::posix

namespace {

void FormatGuid(REFGUID g, OLECHAR* out) {
  static const char kDigits[] = "0123456789ABCDEF";
  OLECHAR* p = out;
  auto put = [&p](uint64_t value, int digits) {
    for (int i = digits - 1; i >= 0; --i) *p++ = kDigits[(value >> (i * 4)) & 0xF];
  };
  *p++ = u'{';
  put(g.Data1, 8);
  *p++ = u'-';
  put(g.Data2, 4);
  *p++ = u'-';
  put(g.Data3, 4);
  *p++ = u'-';
  for (int i = 0; i < 8; ++i) {
    put(g.Data4[i], 2);
    if (i == 1) *p++ = u'-';
  }
  *p++ = u'}';
  *p = 0;
}

}  // namespace

HRESULT CLSIDFromString(LPCOLESTR lpsz, LPCLSID pclsid) {
  if (!pclsid) return E_INVALIDARG;
  // Windows answers GUID_NULL for a null text.
  if (!lpsz) {
    *pclsid = GUID_NULL;
    return S_OK;
  }
  if (tarnix::posix::ParseGuid(lpsz, pclsid)) return S_OK;
  // Not braced GUID text: it may be a ProgID, as Windows also accepts.
  if (lpsz[0] != u'{' && SUCCEEDED(CLSIDFromProgID(lpsz, pclsid))) return S_OK;
  *pclsid = GUID_NULL;
  return CO_E_CLASSSTRING;
}

HRESULT IIDFromString(LPCOLESTR lpsz, LPIID lpiid) {
  if (!lpiid) return E_INVALIDARG;
  if (!lpsz) {
    *lpiid = GUID_NULL;
    return S_OK;
  }
  if (tarnix::posix::ParseGuid(lpsz, lpiid)) return S_OK;
  return E_INVALIDARG;
}

int StringFromGUID2(REFGUID rguid, LPOLESTR lpsz, int cchMax) {
  if (!lpsz || cchMax < kGuidTextLength + 1) return 0;
  FormatGuid(rguid, lpsz);
  return kGuidTextLength + 1;
}

HRESULT StringFromCLSID(REFCLSID rclsid, LPOLESTR* lplpsz) {
  if (!lplpsz) return E_INVALIDARG;
  auto* text = static_cast<LPOLESTR>(CoTaskMemAlloc((kGuidTextLength + 1) * sizeof(OLECHAR)));
  *lplpsz = text;
  if (!text) return E_OUTOFMEMORY;
  FormatGuid(rclsid, text);
  return S_OK;
}

HRESULT StringFromIID(REFIID rclsid, LPOLESTR* lplpsz) { return StringFromCLSID(rclsid, lplpsz); }

LPVOID CoTaskMemAlloc(SIZE_T cb) { return std::malloc(cb ? cb : 1); }

LPVOID CoTaskMemRealloc(LPVOID pv, SIZE_T cb) {
  if (cb == 0 && pv) {
    std::free(pv);
    return nullptr;
  }
  return std::realloc(pv, cb ? cb : 1);
}

void CoTaskMemFree(LPVOID pv) { std::free(pv); }
