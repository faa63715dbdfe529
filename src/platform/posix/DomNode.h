// The COM objects of the libxml2 DOM. A node object keeps the whole tree it belongs to
// alive, as MSXML nodes keep their document: a node the caller still holds stays valid
// after the document object is released or loads another text.
#pragma once

#include "tarnix/posix/Dom.h"

#include <libxml/tree.h>

#include <atomic>
#include <memory>

namespace tarnix::posix::dom {

using XmlTree = std::shared_ptr<xmlDoc>;

// A tree with no document element: what a document object holds before a successful load.
XmlTree EmptyTree();
// Parses UTF-16 text; null when the text is not a well-formed document without a DTD.
XmlTree ParseTree(const WCHAR* text, size_t length);

HRESULT GetNodeName(xmlNodePtr node, BSTR* name);
HRESULT GetNodeText(xmlNodePtr node, BSTR* text);
DOMNodeType GetNodeType(xmlNodePtr node);
// The first node the XPath expression selects from `context`, in document order.
HRESULT SelectFirstNode(const XmlTree& tree, xmlNodePtr context, BSTR query, IXMLDOMNode** result);

#define TARNIX_DOM_NOT_IMPLEMENTED(method, ...) \
  STDMETHODIMP method(__VA_ARGS__) override { return E_NOTIMPL; }

// IXMLDOMNode over one libxml2 node; `Interface` is IXMLDOMNode or a document interface.
template <class Interface>
class NodeObject : public Interface {
 public:
  NodeObject(const NodeObject&) = delete;
  NodeObject& operator=(const NodeObject&) = delete;

  STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (!Implements(iid)) return E_NOINTERFACE;
    *object = static_cast<Interface*>(this);
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
  STDMETHODIMP_(ULONG) Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

  STDMETHODIMP get_nodeName(BSTR* name) override {
    if (!name) return E_INVALIDARG;
    XmlTree tree = Tree();
    return GetNodeName(Node(tree), name);
  }
  STDMETHODIMP get_nodeType(DOMNodeType* type) override {
    if (!type) return E_INVALIDARG;
    XmlTree tree = Tree();
    *type = GetNodeType(Node(tree));
    return S_OK;
  }
  STDMETHODIMP get_text(BSTR* text) override {
    if (!text) return E_INVALIDARG;
    XmlTree tree = Tree();
    return GetNodeText(Node(tree), text);
  }
  STDMETHODIMP selectSingleNode(BSTR query, IXMLDOMNode** result) override {
    if (!query || !result) return E_INVALIDARG;
    XmlTree tree = Tree();
    return SelectFirstNode(tree, Node(tree), query, result);
  }

  TARNIX_DOM_NOT_IMPLEMENTED(GetTypeInfoCount, UINT*)
  TARNIX_DOM_NOT_IMPLEMENTED(GetTypeInfo, UINT, LCID, ITypeInfo**)
  TARNIX_DOM_NOT_IMPLEMENTED(GetIDsOfNames, REFIID, LPOLESTR*, UINT, LCID, DISPID*)
  TARNIX_DOM_NOT_IMPLEMENTED(Invoke, DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                             UINT*)
  TARNIX_DOM_NOT_IMPLEMENTED(get_nodeValue, VARIANT*)
  TARNIX_DOM_NOT_IMPLEMENTED(put_nodeValue, VARIANT)
  TARNIX_DOM_NOT_IMPLEMENTED(get_parentNode, IXMLDOMNode**)
  TARNIX_DOM_NOT_IMPLEMENTED(get_childNodes, IXMLDOMNodeList**)
  TARNIX_DOM_NOT_IMPLEMENTED(get_firstChild, IXMLDOMNode**)
  TARNIX_DOM_NOT_IMPLEMENTED(get_lastChild, IXMLDOMNode**)
  TARNIX_DOM_NOT_IMPLEMENTED(get_previousSibling, IXMLDOMNode**)
  TARNIX_DOM_NOT_IMPLEMENTED(get_nextSibling, IXMLDOMNode**)
  TARNIX_DOM_NOT_IMPLEMENTED(get_attributes, IXMLDOMNamedNodeMap**)
  TARNIX_DOM_NOT_IMPLEMENTED(insertBefore, IXMLDOMNode*, VARIANT, IXMLDOMNode**)
  TARNIX_DOM_NOT_IMPLEMENTED(replaceChild, IXMLDOMNode*, IXMLDOMNode*, IXMLDOMNode**)
  TARNIX_DOM_NOT_IMPLEMENTED(removeChild, IXMLDOMNode*, IXMLDOMNode**)
  TARNIX_DOM_NOT_IMPLEMENTED(appendChild, IXMLDOMNode*, IXMLDOMNode**)
  TARNIX_DOM_NOT_IMPLEMENTED(hasChildNodes, VARIANT_BOOL*)
  TARNIX_DOM_NOT_IMPLEMENTED(get_ownerDocument, IXMLDOMDocument**)
  TARNIX_DOM_NOT_IMPLEMENTED(cloneNode, VARIANT_BOOL, IXMLDOMNode**)
  TARNIX_DOM_NOT_IMPLEMENTED(get_nodeTypeString, BSTR*)
  TARNIX_DOM_NOT_IMPLEMENTED(put_text, BSTR)
  TARNIX_DOM_NOT_IMPLEMENTED(get_specified, VARIANT_BOOL*)
  TARNIX_DOM_NOT_IMPLEMENTED(get_definition, IXMLDOMNode**)
  TARNIX_DOM_NOT_IMPLEMENTED(get_nodeTypedValue, VARIANT*)
  TARNIX_DOM_NOT_IMPLEMENTED(put_nodeTypedValue, VARIANT)
  TARNIX_DOM_NOT_IMPLEMENTED(get_dataType, VARIANT*)
  TARNIX_DOM_NOT_IMPLEMENTED(put_dataType, BSTR)
  TARNIX_DOM_NOT_IMPLEMENTED(get_xml, BSTR*)
  TARNIX_DOM_NOT_IMPLEMENTED(transformNode, IXMLDOMNode*, BSTR*)
  TARNIX_DOM_NOT_IMPLEMENTED(selectNodes, BSTR, IXMLDOMNodeList**)
  TARNIX_DOM_NOT_IMPLEMENTED(get_parsed, VARIANT_BOOL*)
  TARNIX_DOM_NOT_IMPLEMENTED(get_namespaceURI, BSTR*)
  TARNIX_DOM_NOT_IMPLEMENTED(get_prefix, BSTR*)
  TARNIX_DOM_NOT_IMPLEMENTED(get_baseName, BSTR*)
  TARNIX_DOM_NOT_IMPLEMENTED(transformNodeToObject, IXMLDOMNode*, VARIANT)

 protected:
  NodeObject() = default;
  virtual ~NodeObject() = default;

  // The tree as it stands now; a document may swap its tree between two calls.
  virtual XmlTree Tree() const = 0;
  virtual xmlNodePtr Node(const XmlTree& tree) const = 0;
  virtual bool Implements(REFIID iid) const {
    return iid == IID_IUnknown || iid == IID_IDispatch || iid == IID_IXMLDOMNode;
  }

 private:
  std::atomic<ULONG> references_{1};
};

// A node found by selectSingleNode.
class SelectedNode final : public NodeObject<IXMLDOMNode> {
 public:
  // Starts with one reference, which the caller owns.
  SelectedNode(XmlTree tree, xmlNodePtr node) : tree_(std::move(tree)), node_(node) {}

 private:
  XmlTree Tree() const override { return tree_; }
  xmlNodePtr Node(const XmlTree&) const override { return node_; }

  const XmlTree tree_;
  xmlNodePtr const node_;
};

}  // namespace tarnix::posix::dom
