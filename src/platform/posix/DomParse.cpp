// Parsing text into a libxml2 tree, with what a configuration document may make the parser
// do cut down to nothing: no network, no file, no DTD. A document that declares a DTD is
// refused outright, as MSXML 6 refuses it by default; that also rules out entity
// expansion attacks, since only a DTD can declare entities.
#include "DomNode.h"

#include "platform/WideText.h"

#include <libxml/parser.h>

#include <climits>
#include <string>

namespace tarnix::posix::dom {
namespace {

struct ParserDeleter {
  void operator()(xmlParserCtxtPtr parser) const { xmlFreeParserCtxt(parser); }
};

void FreeTree(xmlDocPtr document) { xmlFreeDoc(document); }

void RefuseDoctype(void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
  auto* parser = static_cast<xmlParserCtxtPtr>(context);
  parser->wellFormed = 0;
  xmlStopParser(parser);
}

xmlParserInputPtr RefuseEntity(void*, const xmlChar*, const xmlChar*) { return nullptr; }

void IgnoreParseError(void*, xmlErrorPtr) {}

// UTF-16 from a BSTR may hold halves of surrogate pairs, which no XML text can contain;
// converting them would silently turn them into replacement characters instead.
bool HasUnpairedSurrogate(const WCHAR* text, size_t length) {
  for (size_t i = 0; i < length; ++i) {
    const WCHAR unit = text[i];
    if (unit >= 0xD800 && unit <= 0xDBFF) {
      if (i + 1 == length || text[i + 1] < 0xDC00 || text[i + 1] > 0xDFFF) return true;
      ++i;
    } else if (unit >= 0xDC00 && unit <= 0xDFFF) {
      return true;
    }
  }
  return false;
}

// The text is already Unicode, so whatever encoding its declaration names is ignored.
constexpr int kParseOptions =
    XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_IGNORE_ENC;

}  // namespace

XmlTree EmptyTree() {
  xmlDocPtr document = xmlNewDoc(reinterpret_cast<const xmlChar*>("1.0"));
  if (!document) return nullptr;
  return XmlTree(document, FreeTree);
}

XmlTree ParseTree(const WCHAR* text, size_t length) {
  if (length == 0 || HasUnpairedSurrogate(text, length)) return nullptr;
  const std::string utf8 = WideToUtf8(text, length);
  if (utf8.size() > static_cast<size_t>(INT_MAX)) return nullptr;
  std::unique_ptr<xmlParserCtxt, ParserDeleter> parser(xmlNewParserCtxt());
  if (!parser) return nullptr;
  parser->sax->internalSubset = RefuseDoctype;
  parser->sax->externalSubset = nullptr;
  parser->sax->resolveEntity = RefuseEntity;
  parser->sax->serror = IgnoreParseError;
  xmlDocPtr document = xmlCtxtReadMemory(parser.get(), utf8.data(), static_cast<int>(utf8.size()),
                                         nullptr, "UTF-8", kParseOptions);
  if (!document) return nullptr;
  XmlTree tree(document, FreeTree);
  if (!parser->wellFormed || !xmlDocGetRootElement(document)) return nullptr;
  return tree;
}

}  // namespace tarnix::posix::dom
