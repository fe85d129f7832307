// Counting, searching and ordering of nodes, and the text helpers of the base node.
#include "common/ZQNode.h"

namespace ZQCommonNS {

int ZQNode::getChildNodeCount() const {
  int count = 0;
  for (ZQNode* child = getFirstChild(); child; child = child->getNextSibling()) ++count;
  return count;
}

int ZQNode::countPrecedingSiblings() const {
  int count = 0;
  for (ZQNode* n = getPreviousSibling(); n; n = n->getPreviousSibling()) ++count;
  return count;
}

int ZQNode::countFollowingSiblings() const {
  int count = 0;
  for (ZQNode* n = getNextSibling(); n; n = n->getNextSibling()) ++count;
  return count;
}

int ZQNode::getPreviousOrSelfNodeCount(const ZQNode* n) const {
  if (!n) return 0;
  return 1 + n->countPrecedingSiblings();
}

int ZQNode::getNodeDepth() const {
  int depth = 0;
  for (ZQNode* p = getParentNode(); p; p = p->getParentNode())
    if (p->getNodeType() != DOCUMENT_NODE) ++depth;
  return depth;
}

ZQNode* ZQNode::getChildNodeByName(ZQName localName, const ZQNode* after) const {
  for (ZQNode* n = after ? after->getNextSibling() : getFirstChild(); n; n = n->getNextSibling())
    if (n->getLocalName() == localName) return n;
  return nullptr;
}

ZQNode* ZQNode::getChildNodeByNameNS(ZQName uri, ZQName localName, const ZQNode* after) const {
  for (ZQNode* n = after ? after->getNextSibling() : getFirstChild(); n; n = n->getNextSibling())
    if (n->getLocalName() == localName && n->getNamespaceUri() == uri) return n;
  return nullptr;
}

ZQNode* ZQNode::getChildNodeByTypeID(unsigned int id) const {
  for (ZQNode* n = getFirstChild(); n; n = n->getNextSibling())
    if (n->isA(id)) return n;
  return nullptr;
}

ZQNode* ZQNode::getAncestorByName(ZQName localName) const {
  for (ZQNode* p = getParentNode(); p; p = p->getParentNode())
    if (p->getLocalName() == localName) return p;
  return nullptr;
}

ZQNode* ZQNode::getAncestorOrSelfByName(ZQName localName) const {
  if (getLocalName() == localName) return const_cast<ZQNode*>(this);
  return getAncestorByName(localName);
}

ZQNode* ZQNode::getAncestorByNameNS(ZQName uri, ZQName localName) const {
  for (ZQNode* p = getParentNode(); p; p = p->getParentNode())
    if (p->getLocalName() == localName && p->getNamespaceUri() == uri) return p;
  return nullptr;
}

ZQNode* ZQNode::getAncestorByTypeID(unsigned int id) const {
  for (ZQNode* p = getParentNode(); p; p = p->getParentNode())
    if (p->isA(id)) return p;
  return nullptr;
}

ZQNode* ZQNode::getAncestorOrSelfByTypeID(unsigned int id) const {
  if (isA(id)) return const_cast<ZQNode*>(this);
  return getAncestorByTypeID(id);
}

bool ZQNode::isSameOfType(const ZQNode* other) const {
  return other && getLocalName() == other->getLocalName() &&
         getNamespaceUri() == other->getNamespaceUri();
}

bool ZQNode::isDescendantOf(const ZQNode* other) const {
  if (!other) return false;
  for (const ZQNode* p = m_parent; p; p = p->m_parent)
    if (p == other) return true;
  return false;
}

bool ZQNode::isDescendantOrSelfOf(const ZQNode* other) const {
  return other && (other == this || isDescendantOf(other));
}

ZQNode* ZQNode::getCommonAncestorOrSelf(const ZQNode* n) const {
  for (const ZQNode* x = n; x; x = x->getParentNode())
    if (x == this || isDescendantOf(x)) return const_cast<ZQNode*>(x);
  return nullptr;
}

ZQNode* ZQNode::getCommonAncestor(const ZQNode* n) const {
  if (!n) return nullptr;
  for (const ZQNode* x = n->getParentNode(); x; x = x->getParentNode())
    if (isDescendantOf(x)) return const_cast<ZQNode*>(x);
  return nullptr;
}

bool ZQNode::isFollowingOf(const ZQNode* other) const {
  const ZQNode* n = this;
  for (;;) {
    if (n == other) return false;
    if (const ZQNode* p = n->getPreviousSibling()) {
      if (p == other || (other && other->isDescendantOf(p))) return true;
      n = p;
    } else {
      n = n->m_parent;
      if (!n) return false;
    }
  }
}

bool ZQNode::isPrecedingOf(const ZQNode* other) const {
  const ZQNode* n = this;
  for (;;) {
    if (!n || n == other) return false;
    if (n->m_parent && n->m_parent->m_lastChild != n) {
      n = n->m_nextSibling;
      if (n == other || (other && other->isDescendantOf(n))) return true;
    } else {
      n = n->m_parent;
    }
  }
}

namespace {

bool isWhiteSpaceOnly(const UnicodeString& text) {
  for (int32_t i = 0; i < text.length(); ++i) {
    char16_t c = text.charAt(i);
    if (c != 0x09 && c != 0x0A && c != 0x0D && c != 0x20) return false;
  }
  return true;
}

}  // namespace

ZQNode* ZQNode::getNextSiblingOrSelfIgnoreEmptyOrWhitespace() const {
  for (ZQNode* n = const_cast<ZQNode*>(this); n; n = n->getNextSibling())
    if (!n->isText() || !isWhiteSpaceOnly(n->getText())) return n;
  return nullptr;
}

UnicodeString ZQNode::getInnerText() const {
  if (isText() || !isElementNode()) return getText();
  UnicodeString result;
  ZQPtr<ZQNodeList> list = getDescendantNodes();
  if (!list) return result;
  for (ZQNode* n = list->getFirstNode(); n; n = list->getNextNode(n))
    if (n->isText()) result += n->getText();
  return result;
}

}  // namespace ZQCommonNS
