// The document object, its class factory and its registration as "MSXML2.DOMDocument.6.0".
#include "DomNode.h"

#include "platform/XmlDom.h"

#include <mutex>
#include <new>

const IID IID_IXMLDOMNode = {
    0x2933bf80, 0x7b36, 0x11d2, {0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60}};
const IID IID_IXMLDOMDocument = {
    0x2933bf81, 0x7b36, 0x11d2, {0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60}};
const IID IID_IXMLDOMDocument2 = {
    0x2933bf95, 0x7b36, 0x11d2, {0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60}};
const CLSID CLSID_DOMDocument60 = {
    0x88d96a05, 0xf192, 0x11d4, {0xa6, 0x5f, 0x00, 0x40, 0x96, 0x32, 0x51, 0xe5}};

namespace tarnix::posix::dom {
namespace {

class DocumentObject final : public NodeObject<IXMLDOMDocument2> {
 public:
  explicit DocumentObject(XmlTree empty) : tree_(std::move(empty)) {}

  STDMETHODIMP loadXML(BSTR xml, VARIANT_BOOL* isSuccessful) override {
    if (isSuccessful) *isSuccessful = VARIANT_FALSE;
    XmlTree parsed = ParseTree(xml, xml ? SysStringLen(xml) : 0);
    // A failed load leaves an empty document behind, never the previous one.
    XmlTree next = parsed ? parsed : EmptyTree();
    if (!next) return E_OUTOFMEMORY;
    {
      std::lock_guard<std::mutex> lock(mutex_);
      tree_.swap(next);
    }
    if (!parsed) return S_FALSE;
    if (isSuccessful) *isSuccessful = VARIANT_TRUE;
    return S_OK;
  }

  TARNIX_DOM_NOT_IMPLEMENTED(get_doctype, IXMLDOMDocumentType**)
  TARNIX_DOM_NOT_IMPLEMENTED(get_implementation, IXMLDOMImplementation**)
  TARNIX_DOM_NOT_IMPLEMENTED(get_documentElement, IXMLDOMElement**)
  TARNIX_DOM_NOT_IMPLEMENTED(putref_documentElement, IXMLDOMElement*)
  TARNIX_DOM_NOT_IMPLEMENTED(createElement, BSTR, IXMLDOMElement**)
  TARNIX_DOM_NOT_IMPLEMENTED(createDocumentFragment, IXMLDOMDocumentFragment**)
  TARNIX_DOM_NOT_IMPLEMENTED(createTextNode, BSTR, IXMLDOMText**)
  TARNIX_DOM_NOT_IMPLEMENTED(createComment, BSTR, IXMLDOMComment**)
  TARNIX_DOM_NOT_IMPLEMENTED(createCDATASection, BSTR, IXMLDOMCDATASection**)
  TARNIX_DOM_NOT_IMPLEMENTED(createProcessingInstruction, BSTR, BSTR,
                             IXMLDOMProcessingInstruction**)
  TARNIX_DOM_NOT_IMPLEMENTED(createAttribute, BSTR, IXMLDOMAttribute**)
  TARNIX_DOM_NOT_IMPLEMENTED(createEntityReference, BSTR, IXMLDOMEntityReference**)
  TARNIX_DOM_NOT_IMPLEMENTED(getElementsByTagName, BSTR, IXMLDOMNodeList**)
  TARNIX_DOM_NOT_IMPLEMENTED(createNode, VARIANT, BSTR, BSTR, IXMLDOMNode**)
  TARNIX_DOM_NOT_IMPLEMENTED(nodeFromID, BSTR, IXMLDOMNode**)
  TARNIX_DOM_NOT_IMPLEMENTED(load, VARIANT, VARIANT_BOOL*)
  TARNIX_DOM_NOT_IMPLEMENTED(get_readyState, LONG*)
  TARNIX_DOM_NOT_IMPLEMENTED(get_parseError, IXMLDOMParseError**)
  TARNIX_DOM_NOT_IMPLEMENTED(get_url, BSTR*)
  TARNIX_DOM_NOT_IMPLEMENTED(get_async, VARIANT_BOOL*)
  TARNIX_DOM_NOT_IMPLEMENTED(put_async, VARIANT_BOOL)
  TARNIX_DOM_NOT_IMPLEMENTED(abort)
  TARNIX_DOM_NOT_IMPLEMENTED(save, VARIANT)
  TARNIX_DOM_NOT_IMPLEMENTED(get_validateOnParse, VARIANT_BOOL*)
  TARNIX_DOM_NOT_IMPLEMENTED(put_validateOnParse, VARIANT_BOOL)
  TARNIX_DOM_NOT_IMPLEMENTED(get_resolveExternals, VARIANT_BOOL*)
  TARNIX_DOM_NOT_IMPLEMENTED(put_resolveExternals, VARIANT_BOOL)
  TARNIX_DOM_NOT_IMPLEMENTED(get_preserveWhiteSpace, VARIANT_BOOL*)
  TARNIX_DOM_NOT_IMPLEMENTED(put_preserveWhiteSpace, VARIANT_BOOL)
  TARNIX_DOM_NOT_IMPLEMENTED(put_onreadystatechange, VARIANT)
  TARNIX_DOM_NOT_IMPLEMENTED(put_ondataavailable, VARIANT)
  TARNIX_DOM_NOT_IMPLEMENTED(put_ontransformnode, VARIANT)
  TARNIX_DOM_NOT_IMPLEMENTED(get_namespaces, IXMLDOMSchemaCollection**)
  TARNIX_DOM_NOT_IMPLEMENTED(get_schemas, VARIANT*)
  TARNIX_DOM_NOT_IMPLEMENTED(putref_schemas, VARIANT)
  TARNIX_DOM_NOT_IMPLEMENTED(validate, IXMLDOMParseError**)
  TARNIX_DOM_NOT_IMPLEMENTED(setProperty, BSTR, VARIANT)
  TARNIX_DOM_NOT_IMPLEMENTED(getProperty, BSTR, VARIANT*)

 private:
  XmlTree Tree() const override {
    std::lock_guard<std::mutex> lock(mutex_);
    return tree_;
  }
  // libxml2 lays a document out as a node, and XPath takes it as its root node.
  xmlNodePtr Node(const XmlTree& tree) const override {
    return reinterpret_cast<xmlNodePtr>(tree.get());
  }
  bool Implements(REFIID iid) const override {
    return NodeObject::Implements(iid) || iid == IID_IXMLDOMDocument || iid == IID_IXMLDOMDocument2;
  }

  mutable std::mutex mutex_;
  XmlTree tree_;
};

class DocumentFactory final : public IClassFactory {
 public:
  STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (iid != IID_IUnknown && iid != IID_IClassFactory) return E_NOINTERFACE;
    *object = static_cast<IClassFactory*>(this);
    return S_OK;
  }
  // One factory lives as long as the process: counting would change nothing.
  STDMETHODIMP_(ULONG) AddRef() override { return 2; }
  STDMETHODIMP_(ULONG) Release() override { return 1; }

  STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (outer) return CLASS_E_NOAGGREGATION;
    XmlTree empty = EmptyTree();
    if (!empty) return E_OUTOFMEMORY;
    auto* document = new (std::nothrow) DocumentObject(std::move(empty));
    if (!document) return E_OUTOFMEMORY;
    const HRESULT hr = document->QueryInterface(iid, object);
    document->Release();
    return hr;
  }
  STDMETHODIMP LockServer(BOOL) override { return S_OK; }
};

}  // namespace
}  // namespace tarnix::posix::dom

namespace tarnix::posix {

HRESULT RegisterXmlDomClass() {
  static dom::DocumentFactory factory;
  static std::once_flag parserReady;
  std::call_once(parserReady, [] { xmlInitParser(); });
  // Registered anew on every call: a reloaded registry has lost the ProgID key.
  return RegisterBuiltinClass(CLSID_DOMDocument60, kXmlDomProgId, &factory);
}

}  // namespace tarnix::posix
