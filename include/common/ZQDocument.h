// The document: root of a tree, factory of its nodes, driver of the parser and the serializer.
#pragma once

#include <istream>
#include <ostream>

#include "common/ZQExport.h"
#include "common/ZQLock.h"
#include "common/ZQName.h"
#include "common/ZQNode.h"
#include "common/ZQObject.h"
#include "common/ZQString.h"
#include "common/ZQUri.h"
#include "common/ZQXmlParser.h"
#include "common/ZQXmlSerializer.h"

namespace ZQCommonNS {

class ZQElement;
class ZQAttr;
/// Root of a tree and the factory of all its nodes. In pull mode its nodes come into being one
/// at a time, as readers ask for them through the plain accessors of ZQNode. Derived documents
/// override the factories; the order of the virtual operations is kept.
class ZQCOMMON_API ZQDocument : public ZQNode {
  ZQ_DECLARE_TYPE(ZQDocument, ZQNode)

 public:
  /// An empty document holding a reference on the shared name table.
  ZQDocument();
  ~ZQDocument() override;

  /// "#document".
  ZQName getLocalName() const override;
  ZQNodeType getNodeType() const override { return DOCUMENT_NODE; }
  /// Null: a document has no owner.
  ZQDocument* getOwnerDocument() const override;
  /// The base URI field, or the document URI when that is empty.
  UnicodeString getBaseUri() const override;

  // ---- virtual operations, in their fixed order ----

  /// The first child element, or null; in pull mode loads up to it.
  virtual ZQElement* getDocumentElement() const;
  /// An Element of that qualified name.
  virtual ZQPtr<ZQElement> createElement(ZQName qname);
  /// An ElementNS, whatever the namespace.
  virtual ZQPtr<ZQElement> createElementNS(ZQName uri, ZQName prefix, ZQName localName);
  /// Splits the qualified name and makes an ElementNS.
  virtual ZQPtr<ZQElement> createElementNS(ZQName uri, ZQName qname);
  /// A text node holding a copy of `text`.
  virtual ZQPtr<ZQTextNode> createTextNode(const UnicodeString& text);
  virtual ZQPtr<ZQProcessingInstruction> createProcessingInstruction(ZQName target,
                                                                     const UnicodeString& data);
  virtual ZQPtr<ZQDocumentFragment> createDocumentFragment();
  /// An Attr, or an AttrNS where the prefix is "xmlns" or "xml" or another prefix.
  virtual ZQPtr<ZQAttr> createAttribute(ZQName qname);
  /// An Attr when uri and prefix are both empty, an AttrNS otherwise.
  virtual ZQPtr<ZQAttr> createAttributeNS(ZQName uri, ZQName prefix, ZQName localName);
  /// Splits the qualified name and calls the three-name form.
  virtual ZQPtr<ZQAttr> createAttributeNS(ZQName uri, ZQName qname);
  /// The node that holds text under `parent`: here createTextNode's; derived documents may make
  /// an element that acts as text.
  virtual ZQPtr<ZQNode> createTextNodeElement(const UnicodeString& text, ZQNode* parent);
  /// Turns the next parser events into at most one new node; null when the load is over.
  virtual ZQNode* loadNextNode();

  // ---- access ----

  /// The parser, made on first need.
  ZQXmlParser* getParser();
  ZQXmlParser* getParser() const { return m_parser.get(); }
  /// Swaps the parser and forgets the document URI.
  void setParser(ZQXmlParser* parser);
  /// The serializer, made on first need.
  ZQXmlSerializer* getSerializer();
  ZQXmlSerializer* getSerializer() const { return m_serializer.get(); }
  /// Swaps the serializer; the document URI stays.
  void setSerializer(ZQXmlSerializer* serializer);

  /// The node the loader continues from; null when no load is open.
  ZQNode* getLastLoadingNode() const { return m_lastLoadingNode; }
  bool hasXInclude() const { return m_hasXInclude; }
  bool getPullMode() const { return m_pullMode; }
  void setPullMode(bool pull) { m_pullMode = pull; }
  bool isBaseUriSpecified() const { return !m_baseUri.isEmpty(); }
  /// The document URI, or the base URI when that is empty.
  UnicodeString getDocumentUri() const;
  /// Stores the normal form of `text` after any redirection.
  void setBaseUri(const UnicodeString& text);
  /// Ends an open load: the next loadNextNode answers null.
  void abort() { m_lastLoadingNode = nullptr; }
  /// The lock round loadNextNode.
  ZQLock& getDocumentLock() { return m_lock; }

  // ---- loading ----

  /// Loads the resource of `uri` into `into` (null: the whole document).
  void load(ZQUri& uri, ZQNode* into = nullptr);
  /// Loads the resource named by `path`.
  void load(const UnicodeString& path, ZQNode* into = nullptr);
  /// Loads from the caller's stream, which must outlive a pulled load; `uri` names it.
  void load(std::istream& stream, ZQNode* into = nullptr,
            const UnicodeString& uri = ZQEmptyString::EMPTY_VALUE);
  /// Loads through a parser that the caller has set up.
  void load();
  /// Loads from markup text; never pulls.
  void loadXml(const UnicodeString& text, ZQNode* into = nullptr);

  // ---- saving ----

  /// Writes `node` (null: the document) to a file; `a4` is the serializer's standalone text.
  void save(const UnicodeString& path, ZQNode* node = nullptr,
            const UnicodeString& encoding = ZQEmptyString::EMPTY_VALUE,
            const UnicodeString& a4 = ZQEmptyString::EMPTY_VALUE);
  /// Writes `node` (null: the document) to the caller's stream.
  void save(std::ostream& stream, ZQNode* node = nullptr,
            const UnicodeString& encoding = ZQEmptyString::EMPTY_VALUE,
            const UnicodeString& a4 = ZQEmptyString::EMPTY_VALUE);
  /// As the stream form, with a comment and a document type declaration after the start.
  void save(const UnicodeString& comment, const UnicodeString& doctype, std::ostream& stream,
            ZQNode* node = nullptr, const UnicodeString& encoding = ZQEmptyString::EMPTY_VALUE,
            const UnicodeString& a6 = ZQEmptyString::EMPTY_VALUE);
  /// The markup of `node` (of the whole document for null) as a string.
  UnicodeString saveXml(ZQNode* node = nullptr);
  /// Writes the document element's start tag with its attributes only.
  void saveDocumentElement(const UnicodeString& path);
  /// The same on the caller's stream.
  void saveDocumentElement(std::ostream& stream);
  /// Writes the whole subtree of `node` into the open output.
  void saveChildElement(ZQNode* node);
  /// Writes the document element's end tag and ends the document.
  void closeDocumentElement();

 protected:
  /// Starts a load into `into` (null: the document): clears its children, marks it loading,
  /// and unless `pull` loads everything.
  void doLoad(ZQNode* into, bool pull);

 private:
  void doSave(ZQNode* node, bool startOnly);
  void saveAttributes(ZQNode* node);

  ZQLock m_lock;
  ZQNameTable* m_nameTable;
  ZQPtr<ZQXmlParser> m_parser;
  ZQPtr<ZQXmlSerializer> m_serializer;
  UnicodeString m_baseUri;
  UnicodeString m_documentUri;

 protected:
  ZQNode* m_lastLoadingNode;
  int m_skipDepth;

 private:
  bool m_pullMode;
  bool m_hasXInclude;
};

}  // namespace ZQCommonNS
