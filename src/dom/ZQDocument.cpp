// The document: its fields, the factories of the node classes of this family, access and the
// start of a load. The loader itself is in ZQDocumentLoad.cpp, the writer in ZQDocumentSave.cpp.
#include "common/ZQDocument.h"

#include "common/ZQElement.h"
#include "common/ZQXmlUtil.h"

namespace ZQCommonNS {

ZQDocument::ZQDocument()
    : ZQNode(nullptr),
      m_nameTable(ZQNameTable::addRefSharedNameTable()),
      m_parser(),
      m_serializer(),
      m_baseUri(),
      m_documentUri(),
      m_lastLoadingNode(nullptr),
      m_skipDepth(0),
      m_pullMode(false),
      m_hasXInclude(false) {
  // The document owns itself, so that the plain accessors load through it as for any node.
  m_ownerDocument = this;
}

ZQDocument::~ZQDocument() {
  m_lastLoadingNode = nullptr;
  if (m_nameTable) {
    ZQNameTable::releaseSharedNameTable();
    m_nameTable = nullptr;
  }
  m_parser = nullptr;
  m_serializer = nullptr;
  // The tree itself goes in ~ZQNode, which clears the loading flags before it walks.
}

ZQName ZQDocument::getLocalName() const { return ZQName(ZQN_hash_document); }

ZQDocument* ZQDocument::getOwnerDocument() const { return nullptr; }

UnicodeString ZQDocument::getBaseUri() const {
  return m_baseUri.isEmpty() ? m_documentUri : m_baseUri;
}

UnicodeString ZQDocument::getDocumentUri() const {
  return m_documentUri.isEmpty() ? m_baseUri : m_documentUri;
}

void ZQDocument::setBaseUri(const UnicodeString& text) {
  ZQUri uri(text);
  uri.checkRedirection();
  m_baseUri = uri.toString();
}

ZQElement* ZQDocument::getDocumentElement() const {
  for (ZQNode* child = getFirstChild(); child; child = child->getNextSibling())
    if (child->getNodeType() == ELEMENT_NODE && child->isA(ZQElement::getStaticTypeID()))
      return static_cast<ZQElement*>(child);
  return nullptr;
}

// ---- factories of the classes of this family ----

ZQPtr<ZQTextNode> ZQDocument::createTextNode(const UnicodeString& text) {
  return ZQPtr<ZQTextNode>(new ZQTextNode(this, text));
}

ZQPtr<ZQProcessingInstruction> ZQDocument::createProcessingInstruction(ZQName target,
                                                                       const UnicodeString& data) {
  return ZQPtr<ZQProcessingInstruction>(new ZQProcessingInstruction(this, target, data));
}

ZQPtr<ZQDocumentFragment> ZQDocument::createDocumentFragment() {
  return ZQPtr<ZQDocumentFragment>(new ZQDocumentFragment(this));
}

ZQPtr<ZQNode> ZQDocument::createTextNodeElement(const UnicodeString& text, ZQNode*) {
  // The factory's reference is handed on as it is.
  return ZQPtr<ZQNode>(createTextNode(text));
}

// ---- parser and loading ----

ZQXmlParser* ZQDocument::getParser() {
  if (!m_parser) m_parser = ZQXmlUtil::createXmlParser();
  return m_parser.get();
}

void ZQDocument::setParser(ZQXmlParser* parser) {
  m_parser = parser;
  m_documentUri.remove();
}

ZQXmlSerializer* ZQDocument::getSerializer() {
  if (!m_serializer) m_serializer = ZQXmlUtil::createXmlSerializer();
  return m_serializer.get();
}

void ZQDocument::setSerializer(ZQXmlSerializer* serializer) { m_serializer = serializer; }

void ZQDocument::doLoad(ZQNode* into, bool pull) {
  ZQNode* target = into ? into : this;
  m_lastLoadingNode = target;
  m_skipDepth = 0;
  target->setFlag(FLAG_LOADING, true);
  target->removeAllChildNodes();
  if (!pull) {
    // Held once for the whole load, so that each loadNextNode only re-enters it: the
    // re-entry of a lock its thread holds takes no atomic operation.
    ZQMutex guard(m_lock);
    while (loadNextNode()) {
    }
  }
}

}  // namespace ZQCommonNS
