// The attribute map: one pointer that names the owner element until the first attribute and
// the last attribute of the ring afterwards.
#include "common/ZQDocument.h"
#include "common/ZQElement.h"
#include "core/ZQCommonError.h"
#include "core/ZQSmallPool.h"
#include "dom/ZQDomClasses.h"

namespace ZQCommonNS {

void* AttrNodeMap::operator new(std::size_t size) { return smallpool::allocate(size); }

void AttrNodeMap::operator delete(void* p, std::size_t size) noexcept {
  smallpool::deallocate(p, size);
}

namespace {

bool sameQName(const ZQAttr* attr, ZQName qname) { return attr->getNodeName() == qname; }

bool sameNSName(const ZQAttr* attr, ZQName uri, ZQName localName) {
  return attr->getLocalName() == localName && attr->getNamespaceUri() == uri;
}

}  // namespace

ZQNamedNodeMap::~ZQNamedNodeMap() = default;

AttrNodeMap::AttrNodeMap(ZQElement* owner) : m_node(owner) {}

AttrNodeMap::~AttrNodeMap() { clear(); }

ZQAttr* AttrNodeMap::lastAttr() const {
  // The pointer names an attribute once the ring has started; before that, the element.
  // The library's own classes answer without a virtual call.
  if (m_node == nullptr) return nullptr;
  if (isLibraryAttr(m_node)) return static_cast<ZQAttr*>(m_node);
  if (isLibraryElement(m_node) || !m_node->isA(ZQAttr::getStaticTypeID())) return nullptr;
  return static_cast<ZQAttr*>(m_node);
}

ZQAttr* AttrNodeMap::nextAttr(const ZQAttr* attr) {
  return static_cast<ZQAttr*>(static_cast<const ZQNode*>(attr)->m_nextSibling);
}

ZQElement* AttrNodeMap::getOwnerElement() const {
  if (m_node == nullptr) return nullptr;
  if (ZQAttr* last = lastAttr())
    return static_cast<ZQElement*>(static_cast<ZQNode*>(last)->m_parent);
  return static_cast<ZQElement*>(m_node);
}

void AttrNodeMap::linkLast(ZQAttr* attr) {
  ZQNode* node = attr;
  ZQAttr* last = lastAttr();
  if (last) {
    ZQNode* lastNode = last;
    node->m_nextSibling = lastNode->m_nextSibling;
    lastNode->m_nextSibling = node;
  } else {
    node->m_nextSibling = node;
  }
  m_node = node;
}

void AttrNodeMap::appendNew(ZQAttr* attr) {
  attr->addRef();
  static_cast<ZQNode*>(attr)->m_parent = getOwnerElement();
  linkLast(attr);
}

void AttrNodeMap::adoptNew(ZQAttr* attr, ZQElement* owner) {
  static_cast<ZQNode*>(attr)->m_parent = owner;
  linkLast(attr);
}

ZQPtr<ZQAttr> AttrNodeMap::unlink(ZQAttr* attr, ZQAttr* previous) {
  ZQNode* node = attr;
  ZQElement* owner = getOwnerElement();
  if (previous == attr) {
    // The only attribute: the map goes back to naming its element, so it keeps its owner.
    m_node = owner;
  } else {
    static_cast<ZQNode*>(previous)->m_nextSibling = node->m_nextSibling;
    if (m_node == node) m_node = previous;
  }
  node->m_nextSibling = nullptr;
  node->m_parent = nullptr;
  ZQPtr<ZQAttr> result(attr);
  attr->removeRef();  // the map's reference moves into the result
  return result;
}

void AttrNodeMap::clear() {
  ZQAttr* last = lastAttr();
  if (last == nullptr) {
    m_node = nullptr;
    return;
  }
  m_node = nullptr;
  ZQNode* node = static_cast<ZQNode*>(last)->m_nextSibling;
  for (;;) {
    ZQNode* next = node->m_nextSibling;
    bool end = node == last;
    node->m_nextSibling = nullptr;
    node->m_parent = nullptr;
    node->release();
    if (end) break;
    node = next;
  }
}

ZQNode* AttrNodeMap::getFirstNode() {
  ZQAttr* last = lastAttr();
  return last ? nextAttr(last) : nullptr;
}

ZQNode* AttrNodeMap::getLastNode() { return lastAttr(); }

ZQNode* AttrNodeMap::getNextNode(ZQNode* node) {
  ZQAttr* last = lastAttr();
  if (node == nullptr || last == nullptr || node == last) return nullptr;
  // Only a member of this ring may hand out its next link.
  if (node->m_parent != static_cast<ZQNode*>(last)->m_parent ||
      !node->isA(ZQAttr::getStaticTypeID()))
    return nullptr;
  return node->m_nextSibling;
}

ZQNode* AttrNodeMap::getPreviousNode(ZQNode* node) {
  ZQAttr* last = lastAttr();
  if (node == nullptr || last == nullptr) return nullptr;
  ZQAttr* previous = last;
  ZQAttr* attr = nextAttr(last);
  for (;;) {
    if (attr == node) return attr == nextAttr(last) ? nullptr : previous;
    if (attr == last) return nullptr;
    previous = attr;
    attr = nextAttr(attr);
  }
}

int AttrNodeMap::getLength() {
  ZQAttr* last = lastAttr();
  if (last == nullptr) return 0;
  int count = 1;
  for (ZQAttr* attr = nextAttr(last); attr != last; attr = nextAttr(attr)) ++count;
  return count;
}

ZQAttr* AttrNodeMap::item(int index) {
  ZQAttr* last = lastAttr();
  if (last == nullptr || index < 0) return nullptr;
  ZQAttr* attr = nextAttr(last);
  for (; index > 0; --index) {
    if (attr == last) return nullptr;
    attr = nextAttr(attr);
  }
  return attr;
}

ZQAttr* AttrNodeMap::getNamedItem(ZQName qname) {
  ZQAttr* last = lastAttr();
  if (last == nullptr) return nullptr;
  ZQAttr* attr = last;
  do {
    attr = nextAttr(attr);
    if (sameQName(attr, qname)) return attr;
  } while (attr != last);
  return nullptr;
}

ZQAttr* AttrNodeMap::getNamedItemNS(ZQName uri, ZQName localName) {
  ZQAttr* last = lastAttr();
  if (last == nullptr) return nullptr;
  ZQAttr* attr = last;
  do {
    attr = nextAttr(attr);
    // The library's own attributes are compared on their fields; an AttrNS with a prefix and
    // no stored namespace looks its namespace up, so it takes the virtual road.
    const std::type_info& type = typeid(*attr);
    if (type == typeid(Attr)) {
      if (uri.isEmpty() && static_cast<Attr*>(attr)->storedValue().getName() == localName)
        return attr;
    } else if (type == typeid(AttrNS) && (!static_cast<AttrNS*>(attr)->m_namespace.isEmpty() ||
                                          static_cast<AttrNS*>(attr)->m_prefix.isEmpty())) {
      const AttrNS* ns = static_cast<AttrNS*>(attr);
      if (ns->storedValue().getName() == localName && ns->m_namespace == uri) return attr;
    } else if (sameNSName(attr, uri, localName)) {
      return attr;
    }
  } while (attr != last);
  return nullptr;
}

void AttrNodeMap::getNamedItemLocal(ZQName localName, std::vector<ZQPtr<ZQAttr>>* result) {
  ZQAttr* last = lastAttr();
  if (result == nullptr || last == nullptr) return;
  ZQAttr* attr = last;
  do {
    attr = nextAttr(attr);
    if (attr->getLocalName() == localName) result->emplace_back(attr);
  } while (attr != last);
}

ZQPtr<ZQAttr> AttrNodeMap::setItem(ZQAttr* attr, bool byNamespace) {
  const int source = byNamespace ? ZQSRC_ATTR_MAP_SET_NAMED_ITEM_NS : ZQSRC_ATTR_MAP_SET_NAMED_ITEM;
  const UnicodeString& none = ZQEmptyString::EMPTY_VALUE;
  if (attr == nullptr) throwCommonError(3, source, none, none);
  ZQElement* owner = getOwnerElement();
  ZQDocument* document = owner ? static_cast<ZQNode*>(owner)->m_ownerDocument : nullptr;
  ZQNode* node = attr;
  if (node->m_ownerDocument != document) throwCommonError(6, source, none, none);
  if (attr->getNodeType() != ZQNode::ATTRIBUTE_NODE) throwCommonError(7, source, none, none);
  // The owner link holds an element, never a map: any attribute that has an owner is refused,
  // one of this very element too.
  if (node->m_parent != nullptr) throwCommonError(8, source, none, none);

  attr->addRef();
  node->m_parent = owner;

  ZQAttr* last = lastAttr();
  if (last != nullptr) {
    // The keys are read once the owner is set, so a prefix finds its namespace in scope.
    const ZQName qname = byNamespace ? ZQName() : attr->getNodeName();
    const ZQName uri = byNamespace ? attr->getNamespaceUri() : ZQName();
    const ZQName localName = byNamespace ? attr->getLocalName() : ZQName();
    ZQAttr* previous = last;
    ZQAttr* match = nextAttr(last);
    for (;;) {
      bool found = byNamespace ? sameNSName(match, uri, localName) : sameQName(match, qname);
      if (found) {
        ZQNode* matchNode = match;
        if (match == previous) {
          node->m_nextSibling = node;  // it replaces the only attribute
        } else {
          node->m_nextSibling = matchNode->m_nextSibling;
          static_cast<ZQNode*>(previous)->m_nextSibling = node;
        }
        if (m_node == matchNode) m_node = node;
        matchNode->m_nextSibling = nullptr;
        matchNode->m_parent = nullptr;
        ZQPtr<ZQAttr> result(match);
        match->removeRef();
        return result;
      }
      if (match == last) break;
      previous = match;
      match = nextAttr(match);
    }
  }
  linkLast(attr);
  return ZQPtr<ZQAttr>();
}

ZQPtr<ZQAttr> AttrNodeMap::setNamedItem(ZQAttr* attr) { return setItem(attr, false); }

ZQPtr<ZQAttr> AttrNodeMap::setNamedItemNS(ZQAttr* attr) { return setItem(attr, true); }

ZQPtr<ZQAttr> AttrNodeMap::removeNamedItem(ZQName qname) {
  ZQAttr* last = lastAttr();
  if (last == nullptr) return ZQPtr<ZQAttr>();
  ZQAttr* previous = last;
  ZQAttr* attr = nextAttr(last);
  for (;;) {
    if (sameQName(attr, qname)) return unlink(attr, previous);
    if (attr == last) return ZQPtr<ZQAttr>();
    previous = attr;
    attr = nextAttr(attr);
  }
}

ZQPtr<ZQAttr> AttrNodeMap::removeNamedItemNS(ZQName uri, ZQName localName) {
  ZQAttr* last = lastAttr();
  if (last == nullptr) return ZQPtr<ZQAttr>();
  ZQAttr* previous = last;
  ZQAttr* attr = nextAttr(last);
  for (;;) {
    if (sameNSName(attr, uri, localName)) return unlink(attr, previous);
    if (attr == last) return ZQPtr<ZQAttr>();
    previous = attr;
    attr = nextAttr(attr);
  }
}

}  // namespace ZQCommonNS
