// The tree walker: pre-visits and post-visits over a subtree, forward and backward.
#include "common/ZQNode.h"
#include "common/ZQNodeList.h"

namespace ZQCommonNS {

ZQTreeIterator::ZQTreeIterator() noexcept
    : m_root(nullptr), m_current(nullptr), m_postVisit(true), m_order(PRE_AND_POST_ORDER) {}

ZQTreeIterator::ZQTreeIterator(const ZQNode* root, const ZQNode* current, bool postVisit,
                               TraversalOrder order)
    : m_root(const_cast<ZQNode*>(root)),
      m_current(const_cast<ZQNode*>(current)),
      m_postVisit(postVisit),
      m_order(order) {}

void ZQTreeIterator::setCurrentNode(const ZQNode* node, bool postVisit) {
  m_current = const_cast<ZQNode*>(node);
  m_postVisit = postVisit;
}

void ZQTreeIterator::setToStart() {
  m_current = m_root;
  m_postVisit = false;
}

void ZQTreeIterator::setToEnd() {
  m_current = m_root;
  m_postVisit = true;
}

ZQNode* ZQTreeIterator::nextNode() {
  if (!m_current) {
    if (!m_root || m_postVisit) return nullptr;
    m_current = m_root;
    if (m_order != POST_ORDER) return m_current;
  }
  for (;;) {
    if (!m_postVisit) {
      if (ZQNode* child = m_current->getFirstChild()) {
        m_current = child;
        if (m_order != POST_ORDER) return child;
        continue;
      }
      m_postVisit = true;
      if (m_order == POST_ORDER) return m_current;
      if (m_order == PRE_AND_POST_ORDER && m_current->isElementNode()) return m_current;
    } else {
      if (m_current == m_root) {
        m_current = nullptr;
        return nullptr;
      }
      if (ZQNode* sibling = m_current->getNextSibling()) {
        m_current = sibling;
        m_postVisit = false;
        if (m_order != POST_ORDER) return sibling;
        continue;
      }
      m_current = m_current->getParentNode();
      if (!m_current) return nullptr;  // a current node set from outside the subtree
      if (m_order != PRE_ORDER) return m_current;
    }
  }
}

ZQNode* ZQTreeIterator::previousNode() {
  if (!m_current) {
    if (!m_root || !m_postVisit) return nullptr;
    m_current = m_root;
    if (m_order != PRE_ORDER) return m_current;
  }
  for (;;) {
    if (m_postVisit) {
      if (ZQNode* child = m_current->getLastChild()) {
        m_current = child;
        if (m_order != PRE_ORDER) return child;
        continue;
      }
      m_postVisit = false;
      if (m_order == PRE_ORDER) return m_current;
      if (m_order == PRE_AND_POST_ORDER && m_current->isElementNode()) return m_current;
    } else {
      if (m_current == m_root) {
        m_current = nullptr;
        return nullptr;
      }
      if (ZQNode* sibling = m_current->getPreviousSibling()) {
        m_current = sibling;
        m_postVisit = true;
        if (m_order != PRE_ORDER) return sibling;
        continue;
      }
      m_current = m_current->getParentNode();
      if (!m_current) return nullptr;
      if (m_order != POST_ORDER) return m_current;
    }
  }
}

bool ZQTreeIterator::hasNextNode() const {
  if (!m_root) return false;
  if (!m_current) return !m_postVisit;
  if (m_current == m_root) {
    if (m_postVisit) return false;
    if (m_root->hasChildNodes()) return true;
    if (m_order == POST_ORDER) return true;
    return m_order == PRE_AND_POST_ORDER && m_root->isElementNode();
  }
  if (m_order != PRE_ORDER) return true;
  if (!m_postVisit && m_current->hasChildNodes()) return true;
  for (const ZQNode* n = m_current; n && n != m_root; n = n->getParentNode())
    if (n->getNextSibling()) return true;
  return false;
}

bool ZQTreeIterator::hasPreviousNode() const {
  if (!m_root) return false;
  if (!m_current) return m_postVisit;
  if (m_current == m_root) {
    if (!m_postVisit) return false;
    if (m_root->hasChildNodes()) return true;
    if (m_order == PRE_ORDER) return true;
    return m_order == PRE_AND_POST_ORDER && m_root->isElementNode();
  }
  if (m_order != POST_ORDER) return true;
  if (m_postVisit && m_current->hasChildNodes()) return true;
  for (const ZQNode* n = m_current; n && n != m_root; n = n->getParentNode())
    if (n->getPreviousSibling()) return true;
  return false;
}

}  // namespace ZQCommonNS
