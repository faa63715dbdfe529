// The XML DOM behind "MSXML2.DOMDocument.6.0": MSXML through COM on Windows, the libxml2
// document of the POSIX layer elsewhere. Both expose the same interfaces in the same slot
// order, so the component's code is one.
#pragma once

#include "platform/Win32.h"

#ifdef _WIN32
#  if __has_include(<msxml6.h>)
#    include <msxml6.h>
#    ifdef _MSC_VER
#      pragma comment(lib, "msxml6.lib")
#    endif
#  else
// mingw-w64 stops at the MSXML 4 headers: the MSXML 6 class and the second document
// interface are missing from its import libraries, so they are defined here.
#    include <msxml2.h>
extern "C" inline constexpr IID IID_IXMLDOMDocument2 = {
    0x2933bf95, 0x7b36, 0x11d2, {0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60}};
inline constexpr CLSID CLSID_DOMDocument60 = {
    0x88d96a05, 0xf192, 0x11d4, {0xa6, 0x5f, 0x00, 0x40, 0x96, 0x32, 0x51, 0xe5}};
#  endif
#else
#  include "tarnix/posix/Dom.h"
#endif

namespace tarnix {

// The ProgID of the DOM document class the component creates.
inline constexpr const WCHAR* kXmlDomProgId = WSTR("MSXML2.DOMDocument.6.0");

}  // namespace tarnix
