// Names, text and XPath selection over libxml2 nodes.
#include "DomNode.h"

#include "platform/WideText.h"

#include <libxml/xpath.h>

#include <new>
#include <string>

namespace tarnix::posix::dom {
namespace {

HRESULT NewBstr(const std::string& utf8, BSTR* out) {
  const WString wide = Utf8ToWide(utf8);
  *out = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
  return *out ? S_OK : E_OUTOFMEMORY;
}

std::string Text(const xmlChar* text) {
  return text ? std::string(reinterpret_cast<const char*>(text)) : std::string();
}

// The node's own content, or for an attribute the text of its value.
std::string RawContent(xmlNodePtr node) {
  if (node->type != XML_ATTRIBUTE_NODE) return Text(node->content);
  xmlChar* value = xmlNodeGetContent(node);
  std::string text = Text(value);
  xmlFree(value);
  return text;
}

bool IsXmlBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

// Joins text the way a DOM that does not preserve white space reads it: CDATA and text
// under xml:space="preserve" count as they stand; other text is trimmed, and every cut it
// loses between two pieces of kept text becomes one blank.
class TextJoiner {
 public:
  void AddNormalized(const std::string& text) {
    size_t first = 0;
    while (first < text.size() && IsXmlBlank(text[first])) ++first;
    if (first == text.size()) {
      Cut();
      return;
    }
    size_t last = text.size();
    while (IsXmlBlank(text[last - 1])) --last;
    if (first > 0) Cut();
    AddVerbatim(text.substr(first, last - first));
    if (last < text.size()) Cut();
  }
  void AddVerbatim(const std::string& text) {
    if (!out_.empty()) out_.append(cuts_, ' ');
    cuts_ = 0;
    out_ += text;
  }
  const std::string& Result() const { return out_; }

 private:
  // White space at the very start or end of the result is dropped altogether.
  void Cut() {
    if (!out_.empty()) ++cuts_;
  }

  std::string out_;
  size_t cuts_ = 0;
};

void AddTextNode(xmlNodePtr node, TextJoiner* joiner) {
  const bool preserved = node->parent && xmlNodeGetSpacePreserve(node->parent) == 1;
  if (node->type == XML_CDATA_SECTION_NODE || preserved) {
    joiner->AddVerbatim(Text(node->content));
  } else {
    joiner->AddNormalized(Text(node->content));
  }
}

// Text and CDATA of `root` and its descendants, in document order, without recursion.
std::string DescendantText(xmlNodePtr root) {
  TextJoiner joiner;
  xmlNodePtr node = root;
  while (node) {
    if (node->type == XML_TEXT_NODE || node->type == XML_CDATA_SECTION_NODE) {
      AddTextNode(node, &joiner);
    }
    const bool descend =
        node->children && (node->type == XML_ELEMENT_NODE || node->type == XML_DOCUMENT_NODE ||
                           node->type == XML_DOCUMENT_FRAG_NODE);
    if (descend) {
      node = node->children;
      continue;
    }
    while (node != root && !node->next) node = node->parent;
    node = node == root ? nullptr : node->next;
  }
  return joiner.Result();
}

std::string QualifiedName(xmlNodePtr node) {
  std::string name = Text(node->name);
  if (node->ns && node->ns->prefix) name = Text(node->ns->prefix) + ":" + name;
  return name;
}

void IgnoreXPathError(void*, xmlErrorPtr) {}

struct XPathContextDeleter {
  void operator()(xmlXPathContextPtr context) const { xmlXPathFreeContext(context); }
};
struct XPathObjectDeleter {
  void operator()(xmlXPathObjectPtr object) const { xmlXPathFreeObject(object); }
};

}  // namespace

DOMNodeType GetNodeType(xmlNodePtr node) {
  switch (node->type) {
    case XML_ELEMENT_NODE: return NODE_ELEMENT;
    case XML_ATTRIBUTE_NODE: return NODE_ATTRIBUTE;
    case XML_TEXT_NODE: return NODE_TEXT;
    case XML_CDATA_SECTION_NODE: return NODE_CDATA_SECTION;
    case XML_ENTITY_REF_NODE: return NODE_ENTITY_REFERENCE;
    case XML_ENTITY_NODE: return NODE_ENTITY;
    case XML_PI_NODE: return NODE_PROCESSING_INSTRUCTION;
    case XML_COMMENT_NODE: return NODE_COMMENT;
    case XML_DOCUMENT_NODE: return NODE_DOCUMENT;
    case XML_DOCUMENT_TYPE_NODE:
    case XML_DTD_NODE: return NODE_DOCUMENT_TYPE;
    case XML_DOCUMENT_FRAG_NODE: return NODE_DOCUMENT_FRAGMENT;
    case XML_NOTATION_NODE: return NODE_NOTATION;
    default: return NODE_INVALID;
  }
}

HRESULT GetNodeName(xmlNodePtr node, BSTR* name) {
  switch (node->type) {
    case XML_ELEMENT_NODE:
    case XML_ATTRIBUTE_NODE: return NewBstr(QualifiedName(node), name);
    case XML_TEXT_NODE: return NewBstr("#text", name);
    case XML_CDATA_SECTION_NODE: return NewBstr("#cdata-section", name);
    case XML_COMMENT_NODE: return NewBstr("#comment", name);
    case XML_DOCUMENT_NODE: return NewBstr("#document", name);
    case XML_DOCUMENT_FRAG_NODE: return NewBstr("#document-fragment", name);
    default: return NewBstr(Text(node->name), name);
  }
}

HRESULT GetNodeText(xmlNodePtr node, BSTR* text) {
  switch (node->type) {
    case XML_ELEMENT_NODE:
    case XML_DOCUMENT_NODE:
    case XML_DOCUMENT_FRAG_NODE:
    case XML_TEXT_NODE: return NewBstr(DescendantText(node), text);
    default: return NewBstr(RawContent(node), text);
  }
}

HRESULT SelectFirstNode(const XmlTree& tree, xmlNodePtr context, BSTR query, IXMLDOMNode** result) {
  *result = nullptr;
  const UINT length = SysStringLen(query);
  // libxml2 reads the expression up to its first zero: a longer BSTR would be half read.
  if (std::char_traits<WCHAR>::length(query) != length) return E_FAIL;
  std::unique_ptr<xmlXPathContext, XPathContextDeleter> xpath(xmlXPathNewContext(tree.get()));
  if (!xpath) return E_OUTOFMEMORY;
  xpath->node = context;
  xpath->error = IgnoreXPathError;
  const std::string expression = WideToUtf8(query, length);
  std::unique_ptr<xmlXPathObject, XPathObjectDeleter> found(
      xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(expression.c_str()), xpath.get()));
  if (!found || found->type != XPATH_NODESET) return E_FAIL;
  if (xmlXPathNodeSetIsEmpty(found->nodesetval)) return S_FALSE;
  xmlNodePtr first = found->nodesetval->nodeTab[0];
  // Namespace nodes are copies that die with the result set, not nodes of the tree.
  if (first->type == XML_NAMESPACE_DECL) return E_NOTIMPL;
  *result = new (std::nothrow) SelectedNode(tree, first);
  return *result ? S_OK : E_OUTOFMEMORY;
}

}  // namespace tarnix::posix::dom
