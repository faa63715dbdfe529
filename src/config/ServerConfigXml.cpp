// Finding the registry path of the message server in the host's XML configuration.
#include "common/Bstr.h"
#include "common/HResultError.h"
#include "config/ServerConfig.h"
#include "platform/ComPtr.h"
#include "platform/ScopedBstr.h"
#include "platform/ScopedVariant.h"
#include "platform/XmlDom.h"

namespace tarnix {
namespace {

constexpr const WCHAR* kEntryName = WSTR("serverConfigRegistry");
constexpr const WCHAR* kEntryQuery = WSTR("//serverConfigRegistry");
constexpr DWORD kDomContext = 0x17;
const HRESULT kEntryNotFound = HRESULT_FROM_WIN32(ERROR_NOT_FOUND);

// A document holding `xml`, or nothing when no document can be made or the text does not
// load as XML.
ComPtr<IXMLDOMDocument> LoadDocument(const WString& xml) {
  CLSID clsid;
  ComPtr<IXMLDOMDocument> document;
  if (FAILED(CLSIDFromProgID(kXmlDomProgId, &clsid)) ||
      FAILED(CoCreateInstance(clsid, nullptr, kDomContext, IID_IXMLDOMDocument,
                              document.ReceiveVoid())) ||
      !document) {
    return nullptr;
  }
  ScopedBstr text = NewBstr(xml);
  VARIANT_BOOL loaded = VARIANT_FALSE;
  if (document->loadXML(text.Get(), &loaded) != S_OK || loaded != VARIANT_TRUE) return nullptr;
  return document;
}

[[nodiscard]] HRESULT ReadEntry(IXMLDOMNode* document, BSTR* text) {
  ScopedBstr query = NewBstr(kEntryQuery, std::char_traits<WCHAR>::length(kEntryQuery));
  ComPtr<IXMLDOMNode> node;
  HRESULT hr = document->selectSingleNode(query.Get(), node.Receive());
  if (FAILED(hr)) return hr;
  if (!node) return kEntryNotFound;
  ScopedBstr name, expected = NewBstr(kEntryName, std::char_traits<WCHAR>::length(kEntryName));
  hr = node->get_nodeName(name.Receive());
  if (FAILED(hr)) return hr;
  if (VarBstrCmp(name.Get(), expected.Get(), LOCALE_USER_DEFAULT, 0) != VARCMP_EQ) {
    return kEntryNotFound;
  }
  ScopedBstr entry;
  hr = node->get_text(entry.Receive());
  if (FAILED(hr)) return hr;
  *text = entry.Get() ? entry.Release() : NewBstr(WString()).Release();
  return S_OK;
}

}  // namespace

HRESULT FindServerConfigRegistry(VARIANT config, BSTR* text) {
  ScopedVariant copy;
  const HRESULT copied = VariantCopy(copy.Receive(), &config);
  if (FAILED(copied)) {
    VARIANT error;
    VariantInit(&error);
    error.vt = VT_ERROR;
    error.scode = copied;
    copy.Reset(error);
  }

  ScopedVariant asText;
  if (SUCCEEDED(VariantChangeType(asText.Receive(), copy.AsInput(), 0, VT_BSTR))) {
    const WString xml = BstrText(asText.Get().bstrVal);
    ComPtr<IXMLDOMDocument> document = LoadDocument(xml);
    if (!document) {
      // Not XML: a registry path given in place of a document is the path itself.
      *text = NewBstr(xml).Release();
      return S_FALSE;
    }
    return ReadEntry(document.Get(), text);
  }

  ScopedVariant asObject;
  if (FAILED(VariantChangeType(asObject.Receive(), copy.AsInput(), 0, VT_UNKNOWN)) ||
      !asObject.Get().punkVal) {
    return E_FAIL;
  }
  ComPtr<IXMLDOMDocument2> document;
  if (FAILED(
          asObject.Get().punkVal->QueryInterface(IID_IXMLDOMDocument2, document.ReceiveVoid()))) {
    return E_FAIL;
  }
  return ReadEntry(document.Get(), text);
}

LONG CopyConfigContent(VARIANT config, VARIANT* content) {
  ScopedBstr text;
  const HRESULT found = FindServerConfigRegistry(config, text.Receive());
  if (FAILED(found)) return found;
  if (!content) return E_INVALIDARG;
  VARIANT value;
  VariantInit(&value);
  value.vt = VT_BSTR;
  value.bstrVal = nullptr;
  if (text.Get()) {
    value.bstrVal =
        SysAllocStringByteLen(reinterpret_cast<LPCSTR>(text.Get()), SysStringByteLen(text.Get()));
    if (!value.bstrVal) {
      value.vt = VT_ERROR;
      value.scode = E_OUTOFMEMORY;
    }
  }
  ScopedVariant owned;
  owned.Reset(value);
  return VariantCopy(content, owned.AsInput());
}

}  // namespace tarnix
