// The XML DOM for the POSIX build: the MSXML document interfaces, slot for slot as in
// msxml2.h, implemented over libxml2 and registered as "MSXML2.DOMDocument.6.0".
//
// Implemented: IUnknown; IXMLDOMNode get_nodeName, get_nodeType, get_text and
// selectSingleNode (XPath 1.0); IXMLDOMDocument loadXML. Every other operation answers
// E_NOTIMPL. Documents are parsed as MSXML 6 does by default: no network, no external
// entities, and no DTD at all (a document carrying one does not load). White space is
// not preserved: get_text drops white-space-only text and trims each text node, keeping
// one blank where white space was cut between two pieces of text.
#pragma once

#include "tarnix/posix/Com.h"
#include "tarnix/posix/OleAuto.h"

enum tagDOMNodeType {
  NODE_INVALID = 0,
  NODE_ELEMENT,
  NODE_ATTRIBUTE,
  NODE_TEXT,
  NODE_CDATA_SECTION,
  NODE_ENTITY_REFERENCE,
  NODE_ENTITY,
  NODE_PROCESSING_INSTRUCTION,
  NODE_COMMENT,
  NODE_DOCUMENT,
  NODE_DOCUMENT_TYPE,
  NODE_DOCUMENT_FRAGMENT,
  NODE_NOTATION
};
typedef tagDOMNodeType DOMNodeType;

struct IXMLDOMNodeList;
struct IXMLDOMNamedNodeMap;
struct IXMLDOMDocument;
struct IXMLDOMDocumentType;
struct IXMLDOMImplementation;
struct IXMLDOMElement;
struct IXMLDOMDocumentFragment;
struct IXMLDOMText;
struct IXMLDOMComment;
struct IXMLDOMCDATASection;
struct IXMLDOMProcessingInstruction;
struct IXMLDOMAttribute;
struct IXMLDOMEntityReference;
struct IXMLDOMParseError;
struct IXMLDOMSchemaCollection;

struct IXMLDOMNode : public IDispatch {
  STDMETHOD(get_nodeName)(BSTR* name) = 0;
  STDMETHOD(get_nodeValue)(VARIANT* value) = 0;
  STDMETHOD(put_nodeValue)(VARIANT value) = 0;
  STDMETHOD(get_nodeType)(DOMNodeType* type) = 0;
  STDMETHOD(get_parentNode)(IXMLDOMNode** parent) = 0;
  STDMETHOD(get_childNodes)(IXMLDOMNodeList** childList) = 0;
  STDMETHOD(get_firstChild)(IXMLDOMNode** firstChild) = 0;
  STDMETHOD(get_lastChild)(IXMLDOMNode** lastChild) = 0;
  STDMETHOD(get_previousSibling)(IXMLDOMNode** previousSibling) = 0;
  STDMETHOD(get_nextSibling)(IXMLDOMNode** nextSibling) = 0;
  STDMETHOD(get_attributes)(IXMLDOMNamedNodeMap** attributeMap) = 0;
  STDMETHOD(insertBefore)(IXMLDOMNode* newChild, VARIANT refChild, IXMLDOMNode** outNewChild) = 0;
  STDMETHOD(replaceChild)
  (IXMLDOMNode* newChild, IXMLDOMNode* oldChild, IXMLDOMNode** outOldChild) = 0;
  STDMETHOD(removeChild)(IXMLDOMNode* childNode, IXMLDOMNode** oldChild) = 0;
  STDMETHOD(appendChild)(IXMLDOMNode* newChild, IXMLDOMNode** outNewChild) = 0;
  STDMETHOD(hasChildNodes)(VARIANT_BOOL* hasChild) = 0;
  STDMETHOD(get_ownerDocument)(IXMLDOMDocument** document) = 0;
  STDMETHOD(cloneNode)(VARIANT_BOOL deep, IXMLDOMNode** cloneRoot) = 0;
  STDMETHOD(get_nodeTypeString)(BSTR* nodeType) = 0;
  STDMETHOD(get_text)(BSTR* text) = 0;
  STDMETHOD(put_text)(BSTR text) = 0;
  STDMETHOD(get_specified)(VARIANT_BOOL* isSpecified) = 0;
  STDMETHOD(get_definition)(IXMLDOMNode** definitionNode) = 0;
  STDMETHOD(get_nodeTypedValue)(VARIANT* typedValue) = 0;
  STDMETHOD(put_nodeTypedValue)(VARIANT typedValue) = 0;
  STDMETHOD(get_dataType)(VARIANT* dataTypeName) = 0;
  STDMETHOD(put_dataType)(BSTR dataTypeName) = 0;
  STDMETHOD(get_xml)(BSTR* xmlString) = 0;
  STDMETHOD(transformNode)(IXMLDOMNode* stylesheet, BSTR* xmlString) = 0;
  STDMETHOD(selectNodes)(BSTR queryString, IXMLDOMNodeList** resultList) = 0;
  STDMETHOD(selectSingleNode)(BSTR queryString, IXMLDOMNode** resultNode) = 0;
  STDMETHOD(get_parsed)(VARIANT_BOOL* isParsed) = 0;
  STDMETHOD(get_namespaceURI)(BSTR* namespaceURI) = 0;
  STDMETHOD(get_prefix)(BSTR* prefixString) = 0;
  STDMETHOD(get_baseName)(BSTR* nameString) = 0;
  STDMETHOD(transformNodeToObject)(IXMLDOMNode* stylesheet, VARIANT outputObject) = 0;
};

struct IXMLDOMDocument : public IXMLDOMNode {
  STDMETHOD(get_doctype)(IXMLDOMDocumentType** documentType) = 0;
  STDMETHOD(get_implementation)(IXMLDOMImplementation** impl) = 0;
  STDMETHOD(get_documentElement)(IXMLDOMElement** element) = 0;
  STDMETHOD(putref_documentElement)(IXMLDOMElement* element) = 0;
  STDMETHOD(createElement)(BSTR tagName, IXMLDOMElement** element) = 0;
  STDMETHOD(createDocumentFragment)(IXMLDOMDocumentFragment** fragment) = 0;
  STDMETHOD(createTextNode)(BSTR data, IXMLDOMText** text) = 0;
  STDMETHOD(createComment)(BSTR data, IXMLDOMComment** comment) = 0;
  STDMETHOD(createCDATASection)(BSTR data, IXMLDOMCDATASection** cdata) = 0;
  STDMETHOD(createProcessingInstruction)
  (BSTR target, BSTR data, IXMLDOMProcessingInstruction** pi) = 0;
  STDMETHOD(createAttribute)(BSTR name, IXMLDOMAttribute** attribute) = 0;
  STDMETHOD(createEntityReference)(BSTR name, IXMLDOMEntityReference** entityRef) = 0;
  STDMETHOD(getElementsByTagName)(BSTR tagName, IXMLDOMNodeList** resultList) = 0;
  STDMETHOD(createNode)(VARIANT type, BSTR name, BSTR namespaceURI, IXMLDOMNode** node) = 0;
  STDMETHOD(nodeFromID)(BSTR idString, IXMLDOMNode** node) = 0;
  STDMETHOD(load)(VARIANT xmlSource, VARIANT_BOOL* isSuccessful) = 0;
  STDMETHOD(get_readyState)(LONG* value) = 0;
  STDMETHOD(get_parseError)(IXMLDOMParseError** errorObj) = 0;
  STDMETHOD(get_url)(BSTR* urlString) = 0;
  STDMETHOD(get_async)(VARIANT_BOOL* isAsync) = 0;
  STDMETHOD(put_async)(VARIANT_BOOL isAsync) = 0;
  STDMETHOD(abort)() = 0;
  STDMETHOD(loadXML)(BSTR bstrXML, VARIANT_BOOL* isSuccessful) = 0;
  STDMETHOD(save)(VARIANT destination) = 0;
  STDMETHOD(get_validateOnParse)(VARIANT_BOOL* isValidating) = 0;
  STDMETHOD(put_validateOnParse)(VARIANT_BOOL isValidating) = 0;
  STDMETHOD(get_resolveExternals)(VARIANT_BOOL* isResolving) = 0;
  STDMETHOD(put_resolveExternals)(VARIANT_BOOL isResolving) = 0;
  STDMETHOD(get_preserveWhiteSpace)(VARIANT_BOOL* isPreserving) = 0;
  STDMETHOD(put_preserveWhiteSpace)(VARIANT_BOOL isPreserving) = 0;
  STDMETHOD(put_onreadystatechange)(VARIANT sink) = 0;
  STDMETHOD(put_ondataavailable)(VARIANT sink) = 0;
  STDMETHOD(put_ontransformnode)(VARIANT sink) = 0;
};

struct IXMLDOMDocument2 : public IXMLDOMDocument {
  STDMETHOD(get_namespaces)(IXMLDOMSchemaCollection** namespaceCollection) = 0;
  STDMETHOD(get_schemas)(VARIANT* otherCollection) = 0;
  STDMETHOD(putref_schemas)(VARIANT otherCollection) = 0;
  STDMETHOD(validate)(IXMLDOMParseError** errorObj) = 0;
  STDMETHOD(setProperty)(BSTR name, VARIANT value) = 0;
  STDMETHOD(getProperty)(BSTR name, VARIANT* value) = 0;
};

extern const IID IID_IXMLDOMNode;
extern const IID IID_IXMLDOMDocument;
extern const IID IID_IXMLDOMDocument2;
extern const CLSID CLSID_DOMDocument60;

namespace tarnix::posix {

// Makes the document class creatable under CLSID_DOMDocument60 and its ProgID, as an
// installed MSXML 6 is on Windows. Safe to call from any thread, any number of times.
HRESULT RegisterXmlDomClass();

}  // namespace tarnix::posix
