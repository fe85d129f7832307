// Namespace look-ups of nodes, after the W3C model: only declarations found on elements in
// scope count, and no prefix is bound implicitly.
#include "common/ZQDocument.h"
#include "common/ZQElement.h"
#include "common/ZQNode.h"

namespace ZQCommonNS {

namespace {

bool isElement(const ZQNode* node) { return node && node->getNodeType() == ZQNode::ELEMENT_NODE; }

// A plain Element asks these very look-ups for its namespace, so its own name is not used.
bool storesOwnNamespace(const ZQNode* element) { return element->getTypeID() != ZQTypeId::Element; }

const ZQNode* documentElementOf(const ZQNode* document) {
  if (!document->isA(ZQDocument::getStaticTypeID())) return nullptr;
  return static_cast<const ZQDocument*>(document)->getDocumentElement();
}

bool hasNoNamespaceScope(int type) {
  return type == ZQNode::ENTITY_NODE || type == ZQNode::DOCUMENT_TYPE_NODE ||
         type == ZQNode::DOCUMENT_FRAGMENT_NODE || type == ZQNode::NOTATION_NODE;
}

// The ancestors are climbed in a loop rather than by recursion, as documents may be deep.
ZQName lookupPrefixFrom(const ZQNode* element, ZQName uri, const ZQNode* origin) {
  for (; element; element = element->getParentNode()) {
    if (!isElement(element)) break;
    if (storesOwnNamespace(element)) {
      ZQName prefix = element->getPrefix();
      if (element->getNamespaceUri() == uri && !prefix.isEmpty() &&
          origin->lookupNamespaceUri(prefix) == uri)
        return prefix;
    }
    if (element->hasAttributes()) {
      if (ZQNamedNodeMap* map = element->getAttributes()) {
        for (ZQNode* attr = map->getFirstNode(); attr; attr = map->getNextNode(attr)) {
          if (attr->getPrefix() != ZQN_xmlns) continue;
          if (ZQName(attr->getNodeValue()) != uri) continue;
          ZQName local = attr->getLocalName();
          if (origin->lookupNamespaceUri(local) == uri) return local;
        }
      }
    }
  }
  return ZQName();
}

}  // namespace

ZQName ZQNode::lookupPrefix(ZQName uri) const {
  const int type = getNodeType();
  if (type == ELEMENT_NODE) return lookupPrefixFrom(this, uri, this);
  if (type == ATTRIBUTE_NODE) return m_parent ? m_parent->lookupPrefix(uri) : ZQName();
  if (type == DOCUMENT_NODE) {
    const ZQNode* root = documentElementOf(this);
    return root ? root->lookupPrefix(uri) : ZQName();
  }
  if (hasNoNamespaceScope(type)) return ZQName();
  const ZQNode* parent = getParentNode();
  return isElement(parent) ? parent->lookupPrefix(uri) : ZQName();
}

bool ZQNode::isDefaultNamespace(ZQName uri) const {
  const int type = getNodeType();
  if (type == ELEMENT_NODE) {
    for (const ZQNode* element = this; isElement(element); element = element->getParentNode()) {
      if (element->getPrefix().isEmpty()) return element->getNamespaceUri() == uri;
      if (element->hasAttributes()) {
        if (ZQNamedNodeMap* map = element->getAttributes()) {
          for (ZQNode* attr = map->getFirstNode(); attr; attr = map->getNextNode(attr))
            if (attr->getLocalName() == ZQN_xmlns) return ZQName(attr->getNodeValue()) == uri;
        }
      }
    }
    return false;
  }
  if (type == ATTRIBUTE_NODE) return m_parent ? m_parent->isDefaultNamespace(uri) : false;
  if (type == DOCUMENT_NODE) {
    const ZQNode* root = documentElementOf(this);
    return root ? root->isDefaultNamespace(uri) : false;
  }
  if (hasNoNamespaceScope(type)) return false;
  const ZQNode* parent = getParentNode();
  return isElement(parent) ? parent->isDefaultNamespace(uri) : false;
}

ZQName ZQNode::lookupNamespaceUri(ZQName prefix) const {
  const int type = getNodeType();
  if (type == ELEMENT_NODE) {
    for (const ZQNode* element = this; isElement(element); element = element->getParentNode()) {
      if (storesOwnNamespace(element)) {
        ZQName ns = element->getNamespaceUri();
        if (!ns.isEmpty() && element->getPrefix() == prefix) return ns;
      }
      if (element->hasAttributes()) {
        if (ZQNamedNodeMap* map = element->getAttributes()) {
          for (ZQNode* attr = map->getFirstNode(); attr; attr = map->getNextNode(attr)) {
            ZQName local = attr->getLocalName();
            if (attr->getPrefix() == ZQN_xmlns && local == prefix)
              return ZQName(attr->getNodeValue());
            if (local == ZQN_xmlns && prefix.isEmpty()) return ZQName(attr->getNodeValue());
          }
        }
      }
    }
    return ZQName();
  }
  if (type == ATTRIBUTE_NODE) return m_parent ? m_parent->lookupNamespaceUri(prefix) : ZQName();
  if (type == DOCUMENT_NODE) {
    const ZQNode* root = documentElementOf(this);
    return root ? root->lookupNamespaceUri(prefix) : ZQName();
  }
  if (hasNoNamespaceScope(type)) return ZQName();
  const ZQNode* parent = getParentNode();
  return isElement(parent) ? parent->lookupNamespaceUri(prefix) : ZQName();
}

}  // namespace ZQCommonNS
