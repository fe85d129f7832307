// Live node lists and the value iterator over them. Nothing is cached: every answer is a walk
// through the plain accessors, so the lists load what they pass over.
#include "common/ZQNodeList.h"

#include "common/ZQNode.h"

namespace ZQCommonNS {

namespace {

// Looked up at each test, as the shared table may have been renewed since the list was made.
ZQName anyName() { return ZQName(ZQNameTable::getSharedNameEnum(UnicodeString(u"*"))); }

}  // namespace

// ---- ZQNodeIterable, ZQNodeList ----

ZQNodeIterable::~ZQNodeIterable() = default;

ZQNodeIterator ZQNodeIterable::getIterator() { return ZQNodeIterator(this); }

ZQNodeList::~ZQNodeList() = default;

// ---- ChildNodeList ----

ChildNodeList::ChildNodeList(ZQNode* parent) : m_parent(parent) {}
ChildNodeList::~ChildNodeList() = default;

ZQNode* ChildNodeList::getFirstNode() { return m_parent ? m_parent->getFirstChild() : nullptr; }
ZQNode* ChildNodeList::getLastNode() { return m_parent ? m_parent->getLastChild() : nullptr; }
ZQNode* ChildNodeList::getNextNode(ZQNode* node) { return node ? node->getNextSibling() : nullptr; }
ZQNode* ChildNodeList::getPreviousNode(ZQNode* node) {
  return node ? node->getPreviousSibling() : nullptr;
}

int ChildNodeList::getLength() {
  int count = 0;
  for (ZQNode* n = getFirstNode(); n; n = n->getNextSibling()) ++count;
  return count;
}

ZQNode* ChildNodeList::item(int index) {
  if (index < 0) return nullptr;
  ZQNode* n = getFirstNode();
  for (; n && index > 0; --index) n = n->getNextSibling();
  return n;
}

// ---- TreeNodeList ----

TreeNodeList::TreeNodeList(ZQNode* root) : m_root(root), m_mode(MODE_ALL), m_uri(), m_name() {}
TreeNodeList::TreeNodeList(ZQNode* root, ZQName name)
    : m_root(root), m_mode(MODE_NAME), m_uri(), m_name(name) {}
TreeNodeList::TreeNodeList(ZQNode* root, ZQName uri, ZQName name)
    : m_root(root), m_mode(MODE_NAME_NS), m_uri(uri), m_name(name) {}
TreeNodeList::~TreeNodeList() = default;

bool TreeNodeList::matches(const ZQNode* node) const {
  if (m_mode == MODE_ALL) return true;
  if (node->getNodeType() != ZQNode::ELEMENT_NODE) return false;
  const ZQName any = anyName();
  if (m_mode == MODE_NAME) return m_name == any || m_name == node->getLocalName();
  return (m_uri == any || m_uri == node->getNamespaceUri()) &&
         (m_name == any || m_name == node->getLocalName());
}

ZQNode* TreeNodeList::getNextNode(ZQNode* node) {
  ZQNode* n = node;
  while (n) {
    ZQNode* candidate = nullptr;
    if (n->hasChildNodes()) {
      candidate = n->getFirstChild();
    } else {
      if (n == m_root) return nullptr;
      for (ZQNode* x = n; !candidate;) {
        candidate = x->getNextSibling();
        if (candidate) break;
        x = x->getParentNode();
        if (!x || x == m_root) return nullptr;
      }
    }
    if (!candidate) return nullptr;
    if (matches(candidate)) return candidate;
    n = candidate;
  }
  return nullptr;
}

ZQNode* TreeNodeList::getPreviousNode(ZQNode* node) {
  ZQNode* n = node;
  while (n && n != m_root) {
    ZQNode* candidate = n->getPreviousSibling();
    if (candidate) {
      while (ZQNode* last = candidate->getLastChild()) candidate = last;
    } else {
      candidate = n->getParentNode();
      if (!candidate || candidate == m_root) return nullptr;
    }
    if (matches(candidate)) return candidate;
    n = candidate;
  }
  return nullptr;
}

ZQNode* TreeNodeList::getFirstNode() { return m_root ? getNextNode(m_root) : nullptr; }

ZQNode* TreeNodeList::getLastNode() {
  if (!m_root) return nullptr;
  ZQNode* n = m_root;
  while (ZQNode* last = n->getLastChild()) n = last;
  if (n == m_root) return nullptr;
  return matches(n) ? n : getPreviousNode(n);
}

int TreeNodeList::getLength() {
  int count = 0;
  for (ZQNode* n = getFirstNode(); n; n = getNextNode(n)) ++count;
  return count;
}

ZQNode* TreeNodeList::item(int index) {
  if (index < 0) return nullptr;
  ZQNode* n = getFirstNode();
  for (; n && index > 0; --index) n = getNextNode(n);
  return n;
}

// ---- ZQNodeIterator ----

ZQNodeIterator::ZQNodeIterator(ZQNodeIterable* iterable)
    : m_iterable(iterable), m_next(iterable ? iterable->getFirstNode() : nullptr) {}

ZQNode* ZQNodeIterator::nextNode() {
  ZQNode* node = m_next;
  if (node) m_next = m_iterable->getNextNode(node);
  return node;
}

bool ZQNodeIterator::hasPreviousNode() const {
  return m_iterable && m_next != m_iterable->getFirstNode();
}

ZQNode* ZQNodeIterator::previousNode() {
  if (!m_iterable) return nullptr;
  m_next = m_next ? m_iterable->getPreviousNode(m_next) : m_iterable->getLastNode();
  return m_next;
}

void ZQNodeIterator::setToStart() { m_next = m_iterable ? m_iterable->getFirstNode() : nullptr; }

}  // namespace ZQCommonNS
