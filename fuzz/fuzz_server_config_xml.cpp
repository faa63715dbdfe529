// The "serverConfigRegistry" entry found in arbitrary configuration text; a text that loads
// as a document gives the same answer when the host hands over the document instead.
#include "FuzzSupport.h"

#include "config/ServerConfig.h"
#include "platform/ComPtr.h"
#include "platform/ScopedBstr.h"
#include "platform/ScopedVariant.h"
#include "platform/XmlDom.h"
#include "tarnix/RMICommManager.h"

namespace {

const HRESULT kEntryNotFound = HRESULT_FROM_WIN32(ERROR_NOT_FOUND);

WString Text(BSTR bstr) { return bstr ? WString(bstr, SysStringLen(bstr)) : WString(); }

tarnix::ComPtr<IXMLDOMDocument> Document(BSTR xml) {
  CLSID clsid;
  tarnix::ComPtr<IXMLDOMDocument> document;
  FUZZ_CHECK(SUCCEEDED(CLSIDFromProgID(tarnix::kXmlDomProgId, &clsid)));
  FUZZ_CHECK(SUCCEEDED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IXMLDOMDocument,
                                        document.ReceiveVoid())));
  VARIANT_BOOL loaded = VARIANT_FALSE;
  FUZZ_CHECK(SUCCEEDED(document->loadXML(xml, &loaded)));
  FUZZ_CHECK(loaded == VARIANT_TRUE);
  return document;
}

// The document object gives what its text gave.
void CheckDocument(BSTR xml, HRESULT expected, const WString& entry) {
  tarnix::ComPtr<IXMLDOMDocument> document = Document(xml);
  tarnix::ScopedVariant config;
  config.SetUnknown(document.Get());
  tarnix::ScopedBstr text;
  const HRESULT hr = tarnix::FindServerConfigRegistry(config.Get(), text.Receive());
  FUZZ_CHECK(hr == expected);
  FUZZ_CHECK(FAILED(hr) ? !text.Get() : Text(text.Get()) == entry);
}

// GetConfigContent answers with the entry as a string, and leaves the caller's value be.
void CheckContent(const tarnix::ScopedVariant& config, HRESULT expected, const WString& entry) {
  tarnix::ScopedVariant content;
  const HRESULT hr = CRMIConfigLoader::GetConfigContent(config.Get(), content.Receive());
  FUZZ_CHECK(FAILED(expected) ? hr == expected : hr == S_OK);
  if (SUCCEEDED(hr)) {
    FUZZ_CHECK(content.type() == VT_BSTR);
    FUZZ_CHECK(Text(content.Get().bstrVal) == entry);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const WString xml = tarnix::fuzz::WideFromBytes(data, size);
  tarnix::ScopedVariant config;
  config.Reset([&] {
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_BSTR;
    value.bstrVal = SysAllocStringLen(xml.data(), static_cast<UINT>(xml.size()));
    return value;
  }());

  tarnix::ScopedBstr text;
  const HRESULT hr = tarnix::FindServerConfigRegistry(config.Get(), text.Receive());
  const WString entry = Text(text.Get());
  if (hr == S_FALSE) {
    // Not XML: the text itself, as it stands.
    FUZZ_CHECK(text.Get() && entry == xml);
  } else if (hr == S_OK) {
    FUZZ_CHECK(text.Get() != nullptr);
  } else {
    FUZZ_CHECK(hr == kEntryNotFound);
    FUZZ_CHECK(!text.Get());
  }
  FUZZ_CHECK(config.type() == VT_BSTR && Text(config.Get().bstrVal) == xml);

  if (hr != S_FALSE) CheckDocument(config.Get().bstrVal, hr, entry);
  CheckContent(config, hr, entry);
  return 0;
}
