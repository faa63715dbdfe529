// The "serverConfigRegistry" entry of the host's configuration document, read through the
// real DOM of each build.
#include <gtest/gtest.h>

#include "config/ServerConfig.h"
#include "fixtures/HostObjectWatch.h"
#include "fixtures/FakeHostService.h"
#include "platform/ScopedBstr.h"
#include "platform/ScopedVariant.h"
#include "platform/WideText.h"
#include "platform/XmlDom.h"
#include "tarnix/RMICommManager.h"

#include <cstring>
#include <string>

using tarnix::ScopedBstr;
using tarnix::ScopedVariant;
using tarnix::WideToUtf8;

namespace {

const HRESULT kNotFound = static_cast<HRESULT>(0x80070490);

class ServerConfigXml : public ::testing::Test {
 protected:
  // The result, and the text as "<null>" or the text itself.
  static std::pair<HRESULT, std::string> Find(const VARIANT& config) {
    BSTR text = nullptr;
    const HRESULT hr = tarnix::FindServerConfigRegistry(config, &text);
    ScopedBstr owned;
    owned.Reset(text);
    return {hr, text ? WideToUtf8(owned.Text()) : "<null>"};
  }
  static std::pair<HRESULT, std::string> Find(const WString& text) {
    ScopedVariant config(text.c_str());
    return Find(config.Get());
  }

  static tarnix::ComPtr<IXMLDOMDocument> Document(const WCHAR* xml) {
    CLSID clsid;
    EXPECT_EQ(CLSIDFromProgID(tarnix::kXmlDomProgId, &clsid), S_OK);
    tarnix::ComPtr<IXMLDOMDocument> document;
    EXPECT_EQ(CoCreateInstance(clsid, nullptr, 0x17, IID_IXMLDOMDocument, document.ReceiveVoid()),
              S_OK);
    ScopedBstr text(xml);
    VARIANT_BOOL loaded = VARIANT_FALSE;
    EXPECT_EQ(document->loadXML(text.Get(), &loaded), S_OK);
    return document;
  }

  tarnix::testing::ComApartment apartment_;
};

using Found = std::pair<HRESULT, std::string>;

TEST_F(ServerConfigXml, TextIsReadAsADocumentOrElseTakenAsThePathItself) {
  EXPECT_EQ(Find(WSTR("<c><serverConfigRegistry>Software\\X</serverConfigRegistry></c>")),
            Found(S_OK, "Software\\X"));
  EXPECT_EQ(Find(WSTR("<c><serverConfigRegistry>HKEY_LOCAL_MACHINE\\<a>Software</a>\\<b><c>X</c>"
                      "</b></serverConfigRegistry></c>")),
            Found(S_OK, "HKEY_LOCAL_MACHINE\\Software\\X"));
  EXPECT_EQ(Find(WSTR("<c><serverConfigRegistry/></c>")), Found(S_OK, ""));
  EXPECT_EQ(Find(WSTR("HKEY_LOCAL_MACHINE\\Software\\Corvane, Inc.\\Server")),
            Found(S_FALSE, "HKEY_LOCAL_MACHINE\\Software\\Corvane, Inc.\\Server"));
  EXPECT_EQ(Find(WSTR("<c><serverConfigRegistry>unclosed")),
            Found(S_FALSE, "<c><serverConfigRegistry>unclosed"));
  EXPECT_EQ(Find(WSTR("")), Found(S_FALSE, ""));

  // Loaded, but no entry: a failure of its own, so the caller moves on.
  EXPECT_EQ(Find(WSTR("<c><other>Software\\X</other></c>")), Found(kNotFound, "<null>"));
  EXPECT_EQ(Find(WSTR("<c xmlns=\"urn:c\"><serverConfigRegistry>X</serverConfigRegistry></c>")),
            Found(kNotFound, "<null>"));

  // Other values become text first: a number is a path, VT_EMPTY an empty one.
  ScopedVariant number(LONG(42));
  EXPECT_EQ(Find(number.Get()), Found(S_FALSE, "42"));
  EXPECT_EQ(Find(ScopedVariant().Get()), Found(S_FALSE, ""));
}

// An object that is no XML document.
class NotADocument : public tarnix::testing::HostObject<IUnknown> {
 public:
  NotADocument() : HostObject("NotADocument") {}
};

TEST_F(ServerConfigXml, DocumentObjectWithoutEntryFailsAndOtherObjectsAreRefused) {
  auto empty = Document(WSTR("<c/>"));
  ScopedVariant emptyDocument;
  emptyDocument.SetUnknown(empty.Get());
  EXPECT_EQ(Find(emptyDocument.Get()), Found(kNotFound, "<null>"));

  auto other = tarnix::testing::MakeHostObject<NotADocument>();
  ScopedVariant object;
  object.SetUnknown(other.Get());
  EXPECT_EQ(Find(object.Get()), Found(E_FAIL, "<null>"));
  object.Reset();
  // Every reference the lookup took on the object was given back.
  EXPECT_EQ(other->RefCount(), 1u);

  VARIANT null;
  VariantInit(&null);
  null.vt = VT_NULL;
  EXPECT_EQ(Find(null), Found(E_FAIL, "<null>"));
  VARIANT nothing;
  VariantInit(&nothing);
  nothing.vt = VT_UNKNOWN;
  nothing.punkVal = nullptr;
  EXPECT_EQ(Find(nothing).first, E_FAIL);
}

TEST_F(ServerConfigXml, ConfigContentIsTheEntryAsBstrAndLeavesTheCallersValueAlone) {
  const WString xml = WSTR("<c><serverConfigRegistry>Software\\Content</serverConfigRegistry></c>");
  ScopedVariant config(xml.c_str());
  const VARIANT before = config.Get();
  ScopedVariant content;
  EXPECT_EQ(CRMIConfigLoader::GetConfigContent(config.Get(), content.Receive()), S_OK);
  ASSERT_EQ(content.type(), VT_BSTR);
  EXPECT_EQ(WideToUtf8(WString(content.Get().bstrVal, SysStringLen(content.Get().bstrVal))),
            "Software\\Content");
  EXPECT_EQ(0, std::memcmp(&before, &config.Get(), sizeof(VARIANT)));
  EXPECT_EQ(WString(config.Get().bstrVal, SysStringLen(config.Get().bstrVal)), xml);

  // A plain path comes back as it is, and the copy's result (success) is the answer.
  ScopedVariant path(WSTR("Software\\Plain"));
  EXPECT_EQ(CRMIConfigLoader::GetConfigContent(path.Get(), content.Receive()), S_OK);
  EXPECT_EQ(WideToUtf8(WString(content.Get().bstrVal, SysStringLen(content.Get().bstrVal))),
            "Software\\Plain");

  // A failure is answered as it is, with the output untouched.
  ScopedVariant missing(WSTR("<c/>"));
  ScopedVariant untouched(LONG(7));
  EXPECT_EQ(
      CRMIConfigLoader::GetConfigContent(missing.Get(), const_cast<VARIANT*>(&untouched.Get())),
      kNotFound);
  EXPECT_EQ(untouched.type(), VT_I4);
  EXPECT_EQ(untouched.Get().lVal, 7);
}

}  // namespace
