// The XML DOM the configuration lookup reads through. The same expectations run against
// the libxml2 document natively and against MSXML 6 under Wine, so they hold only what
// both agree on (see the white-space cases).
#include <gtest/gtest.h>

#include "platform/ComPtr.h"
#include "platform/ScopedBstr.h"
#include "platform/WideText.h"
#include "platform/XmlDom.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

namespace tarnix::testing {
namespace {

class XmlDom : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_GE(CoInitialize(nullptr), 0); }
  void TearDown() override { CoUninitialize(); }

  static ComPtr<IXMLDOMDocument> NewDocument() {
    CLSID clsid;
    EXPECT_EQ(CLSIDFromProgID(kXmlDomProgId, &clsid), S_OK);
    ComPtr<IXMLDOMDocument> document;
    EXPECT_EQ(CoCreateInstance(clsid, nullptr, 0x17, IID_IXMLDOMDocument, document.ReceiveVoid()),
              S_OK);
    return document;
  }

  // loadXML's result code, checked against the success flag it reports beside it.
  static HRESULT Load(IXMLDOMDocument* document, const WString& text) {
    ScopedBstr xml;
    xml.Reset(SysAllocStringLen(text.data(), static_cast<UINT>(text.size())));
    VARIANT_BOOL ok = 7;
    const HRESULT hr = document->loadXML(xml.Get(), &ok);
    EXPECT_EQ(ok, hr == S_OK ? VARIANT_TRUE : VARIANT_FALSE) << "hr " << hr;
    return hr;
  }

  static HRESULT Select(IXMLDOMNode* from, const WCHAR* query, ComPtr<IXMLDOMNode>* node) {
    ScopedBstr xpath(query);
    return from->selectSingleNode(xpath.Get(), node->Receive());
  }

  static std::string Name(IXMLDOMNode* node) {
    ScopedBstr name;
    EXPECT_EQ(node->get_nodeName(name.Receive()), S_OK);
    return WideToUtf8(name.Text());
  }

  static std::string Text(IXMLDOMNode* node) {
    ScopedBstr text;
    EXPECT_GE(node->get_text(text.Receive()), 0);
    return WideToUtf8(text.Text());
  }

  // The text of the first "r" element of the document, or "<none>".
  static std::string TextOfR(const WString& xml) {
    ComPtr<IXMLDOMDocument> document = NewDocument();
    if (Load(document.Get(), xml) != S_OK) return "<not loaded>";
    ComPtr<IXMLDOMNode> node;
    if (Select(document.Get(), WSTR("//r"), &node) != S_OK) return "<none>";
    return Text(node.Get());
  }
};

TEST_F(XmlDom, DocumentComesFromTheProgIdAnswersItsInterfacesAndRefusesNulls) {
  CLSID clsid;
  ASSERT_EQ(CLSIDFromProgID(kXmlDomProgId, &clsid), S_OK);
  EXPECT_TRUE(IsEqualCLSID(clsid, CLSID_DOMDocument60));

  ComPtr<IXMLDOMDocument> document = NewDocument();
  ASSERT_TRUE(document);
  ComPtr<IXMLDOMDocument2> second;
  EXPECT_EQ(document.QueryInterface(IID_IXMLDOMDocument2, &second), S_OK);
  ComPtr<IUnknown> viaDocument, viaSecond;
  ASSERT_EQ(document.QueryInterface(IID_IUnknown, &viaDocument), S_OK);
  ASSERT_EQ(second.QueryInterface(IID_IUnknown, &viaSecond), S_OK);
  EXPECT_EQ(viaDocument.Get(), viaSecond.Get());

  const IID unrelated = {0x12345678, 0x1, 0x2, {3, 4, 5, 6, 7, 8, 9, 10}};
  void* none = &clsid;
  EXPECT_EQ(document->QueryInterface(unrelated, &none), E_NOINTERFACE);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(Name(document.Get()), "#document");

  ASSERT_EQ(Load(document.Get(), WSTR("<a/>")), S_OK);
  ScopedBstr query(WSTR("//a"));
  ComPtr<IXMLDOMNode> node;
  EXPECT_EQ(document->get_text(nullptr), E_INVALIDARG);
  EXPECT_EQ(document->get_nodeName(nullptr), E_INVALIDARG);
  EXPECT_EQ(document->selectSingleNode(nullptr, node.Receive()), E_INVALIDARG);
  EXPECT_EQ(document->selectSingleNode(query.Get(), nullptr), E_INVALIDARG);
}

TEST_F(XmlDom, TextThatIsNotOneWellFormedDocumentDoesNotLoad) {
  ComPtr<IXMLDOMDocument> document = NewDocument();
  ASSERT_EQ(Load(document.Get(), WSTR("<a><serverConfigRegistry>x</serverConfigRegistry></a>")),
            S_OK);

  const WString refused[] = {
      WSTR("<a></a><b></b>"),
      WString(WSTR("<a>x\0y</a>"), 10),
      WString(WSTR("<a>x")) + WCHAR(0xD800) + WSTR("y</a>"),
      WString(WSTR("<a>x")) + WCHAR(0xDC00) + WSTR("</a>"),
  };
  for (const WString& text : refused) {
    EXPECT_EQ(Load(document.Get(), text), S_FALSE) << WideToUtf8(text);
  }
  // A failed load leaves an empty document, not the one loaded before.
  ComPtr<IXMLDOMNode> node;
  EXPECT_EQ(Select(document.Get(), WSTR("//serverConfigRegistry"), &node), S_FALSE);
  EXPECT_FALSE(node);

  VARIANT_BOOL ok = 7;
  EXPECT_EQ(document->loadXML(nullptr, &ok), S_FALSE);
  EXPECT_EQ(ok, VARIANT_FALSE);
}

TEST_F(XmlDom, SelectionFindsTheFirstElementOfThatNameAtAnyDepth) {
  ComPtr<IXMLDOMDocument> document = NewDocument();
  ASSERT_EQ(Load(document.Get(),
                 WSTR("<?xml version=\"1.0\"?>\n<config><x:serverConfigRegistry xmlns:x=\"urn:x\">"
                      "prefixed</x:serverConfigRegistry><a><b><serverConfigRegistry>first"
                      "</serverConfigRegistry></b></a><serverConfigRegistry>second"
                      "</serverConfigRegistry></config>")),
            S_OK);
  ComPtr<IXMLDOMNode> node, kept;
  ASSERT_EQ(Select(document.Get(), WSTR("//serverConfigRegistry"), &node), S_OK);
  EXPECT_EQ(Name(node.Get()), "serverConfigRegistry");
  EXPECT_EQ(Text(node.Get()), "first");
  kept = node;

  // Relative to a node, and onto an attribute.
  ASSERT_EQ(Load(document.Get(), WSTR("<a k=' v '><b><c>in</c></b><c>out</c></a>")), S_OK);
  ComPtr<IXMLDOMNode> b, c, attribute;
  ASSERT_EQ(Select(document.Get(), WSTR("/a/b"), &b), S_OK);
  ASSERT_EQ(Select(b.Get(), WSTR("c"), &c), S_OK);
  EXPECT_EQ(Text(c.Get()), "in");
  ASSERT_EQ(Select(document.Get(), WSTR("//@k"), &attribute), S_OK);
  EXPECT_EQ(Name(attribute.Get()), "k");
  EXPECT_EQ(Text(attribute.Get()), " v ");

  // No match: S_FALSE and no node. Elements in a namespace are not matched by a bare name.
  ASSERT_EQ(Load(document.Get(), WSTR("<a xmlns=\"urn:d\"><serverConfigRegistry>d"
                                      "</serverConfigRegistry></a>")),
            S_OK);
  EXPECT_EQ(Select(document.Get(), WSTR("//serverConfigRegistry"), &node), S_FALSE);
  EXPECT_FALSE(node);

  // Expressions that are not XPath, or select no nodes, fail.
  EXPECT_LT(Select(document.Get(), WSTR("//["), &node), 0);
  EXPECT_LT(Select(document.Get(), WSTR("count(//a)"), &node), 0);
  EXPECT_FALSE(node);

  // A node keeps its tree alive after the document has moved on and gone.
  document.Reset();
  EXPECT_EQ(Text(kept.Get()), "first");
  EXPECT_EQ(Name(kept.Get()), "serverConfigRegistry");
}

TEST_F(XmlDom, TextJoinsTheDescendantsAndDropsOuterWhiteSpace) {
  EXPECT_EQ(TextOfR(WSTR("<r>HKEY_LOCAL_MACHINE\\<b>Software</b>\\<c><d>X</d></c></r>")),
            "HKEY_LOCAL_MACHINE\\Software\\X");
  EXPECT_EQ(TextOfR(WSTR("<r>\n   padded path  \n</r>")), "padded path");
  EXPECT_EQ(TextOfR(WSTR("<r>a<!-- note -->b<?pi data?>c</r>")), "abc");
  EXPECT_EQ(TextOfR(WSTR("<r>a<![CDATA[ <c> ]]>b</r>")), "a <c> b");
  EXPECT_EQ(TextOfR(WSTR("<r>a &amp; b &lt;&#x263A;&#65;</r>")),
            u8"a & b <\u263A"
            "A");
  EXPECT_EQ(TextOfR(WSTR("<r>caf\u00e9 \U0001F600</r>")), u8"caf\u00e9 \U0001F600");
  EXPECT_EQ(TextOfR(WSTR("<r/>")), "");
  EXPECT_EQ(TextOfR(WSTR("<r xml:space=\"preserve\"> kept </r>")), " kept ");

  // The declaration's encoding means nothing for text that is already Unicode.
  EXPECT_EQ(TextOfR(WSTR("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><r>\u00e9</r>")),
            u8"\u00e9");
  EXPECT_EQ(TextOfR(WSTR("<?xml version=\"1.0\" encoding=\"UTF-16\"?><r>\u00e9</r>")), u8"\u00e9");
}

// A file URL of a path outside the document.
WString FileUrl(const std::filesystem::path& file) {
  std::string path = file.generic_string();
  if (path.front() != '/') path.insert(0, "/");
  return Utf8ToWide("file://" + path);
}

TEST_F(XmlDom, HostileDocumentsNeverReachOutsideAndNeverCrash) {
  // Files outside the document that it names: their text must never show up.
  const std::filesystem::path secret = std::filesystem::temp_directory_path() / "tarnix-dom.txt";
  const std::filesystem::path dtd = std::filesystem::temp_directory_path() / "tarnix-dom.dtd";
  std::ofstream(secret, std::ios::binary) << "SECRET-FILE-TEXT";
  std::ofstream(dtd, std::ios::binary) << "<!ENTITY leak \"SECRET-DTD-TEXT\">";
  const WString documents[] = {
      WSTR("<!DOCTYPE r [<!ENTITY e SYSTEM \"") + FileUrl(secret) + WSTR("\">]><r>&e;</r>"),
      WSTR("<!DOCTYPE r SYSTEM \"") + FileUrl(dtd) + WSTR("\"><r>&leak;</r>"),
      WSTR("<!DOCTYPE r [<!ENTITY % p SYSTEM \"") + FileUrl(dtd) + WSTR("\"> %p;]><r>&leak;</r>"),
  };
  for (const WString& xml : documents) {
    const std::string text = TextOfR(xml);
    EXPECT_EQ(text.find("SECRET"), std::string::npos) << text;
  }
  std::filesystem::remove(secret);
  std::filesystem::remove(dtd);

  // Entity expansion, nesting and size beyond any configuration: a defined answer.
  WString laughs = WSTR("<!DOCTYPE r [<!ENTITY a0 \"lol\">");
  for (int level = 1; level <= 9; ++level) {
    laughs += WSTR("<!ENTITY a") + WString(1, WCHAR('0' + level)) + WSTR(" \"");
    for (int i = 0; i < 10; ++i)
      laughs += WSTR("&a") + WString(1, WCHAR('0' + level - 1)) + WSTR(";");
    laughs += WSTR("\">");
  }
  laughs += WSTR("]><r>&a9;</r>");
  EXPECT_LT(TextOfR(laughs).size(), 1000000u);

  WString deep;
  for (int i = 0; i < 100000; ++i) deep += WSTR("<r>");
  for (int i = 0; i < 100000; ++i) deep += WSTR("</r>");
  TextOfR(deep);

  const WString huge = WSTR("<a><r>") + WString(20000000, WCHAR('x')) + WSTR("</r></a>");
  const std::string hugeText = TextOfR(huge);
  EXPECT_TRUE(hugeText == "<not loaded>" || hugeText.size() == 20000000u);
}

}  // namespace
}  // namespace tarnix::testing
