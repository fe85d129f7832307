// The base node: defaults of the virtual operations, the sibling ring, reading and writing.
#include "common/ZQNode.h"

#include "common/ZQDocument.h"
#include "common/ZQElement.h"
#include "common/ZQXmlUtil.h"
#include "core/ZQCommonError.h"
#include "core/ZQSmallPool.h"
#include "dom/ZQDomClasses.h"

namespace ZQCommonNS {

void* ZQNode::operator new(std::size_t size) { return smallpool::allocate(size); }

void ZQNode::operator delete(void* p, std::size_t size) noexcept { smallpool::deallocate(p, size); }

namespace {

const UnicodeString kNewChild(u"newChild");
const UnicodeString kOldChild(u"oldChild");
const UnicodeString kRefChild(u"refChild");

}  // namespace

ZQNode::ZQNode(ZQDocument* ownerDocument)
    : m_flags(0),
      m_parent(nullptr),
      m_nextSibling(nullptr),
      m_previousSibling(nullptr),
      m_lastChild(nullptr),
      m_ownerDocument(ownerDocument) {}

ZQNode::~ZQNode() {
  if (!m_lastChild) return;
  // A document may be far too deep for recursion, so the subtree is emptied bottom-up by one
  // walk: children are let go at their parent's post-visit, when they have no children left.
  ZQTreeIterator it(this, nullptr, false, ZQTreeIterator::PRE_AND_POST_ORDER);
  while (ZQNode* node = it.nextNode()) {
    if (it.atPreVisit()) {
      // The walk's own accessors must not pull input through a dying document.
      node->setFlag(FLAG_LOADING, false);
      // Somebody else holds this node: it keeps its children.
      if (node != this && node->getRefCount() > 1) it.setAtPostVisit(true);
    } else {
      node->releaseChildren();
    }
  }
}

void ZQNode::releaseChildren() {
  ZQNode* child = m_lastChild;
  m_lastChild = nullptr;
  while (child) {
    ZQNode* previous = child->m_previousSibling;
    child->m_parent = nullptr;
    child->m_nextSibling = nullptr;
    child->m_previousSibling = nullptr;
    child->release();
    child = previous;
  }
}

// ---- names and values ----

ZQName ZQNode::getNodeName() const { return ZQXmlUtil::makeQName(getPrefix(), getLocalName()); }
ZQName ZQNode::getFOName() const { return getLocalName(); }
ZQName ZQNode::getNamespaceUri() const { return ZQName(); }
ZQName ZQNode::getPrefix() const { return ZQName(); }
void ZQNode::setPrefix(ZQName) {}
ZQValue ZQNode::getNodeValue() const { return ZQValue::NULL_VALUE; }

void ZQNode::setNodeValue(const ZQValue&) {
  throwCommonError(11, ZQSRC_NODE_SET_NODE_VALUE, getTypeName(), ZQEmptyString::EMPTY_VALUE);
}

ZQNamedNodeMap* ZQNode::getAttributes() const { return nullptr; }
bool ZQNode::hasAttributes() const { return false; }
ZQPtr<ZQNode> ZQNode::cloneNode(bool) const { return ZQPtr<ZQNode>(); }
void ZQNode::cloneMembers(ZQNode* to) const {
  if (to) to->m_flags = m_flags;
}
void ZQNode::finishAttributes() {}
bool ZQNode::isElementNode() const { return false; }
bool ZQNode::isProcessingInstruction() const { return false; }
bool ZQNode::isText() const { return false; }
bool ZQNode::saveTextTag() const { return false; }
bool ZQNode::isFO() const { return false; }
bool ZQNode::isAXFO() const { return false; }
bool ZQNode::isArea() const { return false; }
bool ZQNode::isCSS() const { return false; }
bool ZQNode::isHTML() const { return false; }
bool ZQNode::isHTMLSyntax() const { return false; }
bool ZQNode::isXHTMLSyntax() const { return false; }
bool ZQNode::isXML() const { return false; }
bool ZQNode::isBlock() const { return false; }
bool ZQNode::isBlockOrBdo(bool) { return false; }
bool ZQNode::isInline() const { return false; }
bool ZQNode::isInlineBlock() const { return false; }
bool ZQNode::isNeutral() const { return false; }
bool ZQNode::isOutOfLine() const { return false; }
bool ZQNode::isBidiOverride() const { return false; }
bool ZQNode::isBidiDone() const { return false; }
void ZQNode::bidiDone(int) {}
UnicodeString ZQNode::getText() const { return UnicodeString(); }
void ZQNode::setText(const UnicodeString&) {}
void ZQNode::setSourceLineNumber(int) {}
void ZQNode::setSourceColumnNumber(int) {}

// A position is looked for by a loop over previous siblings and parents instead of a call per
// node, which would recurse once per node of a deep or long tree. Each node on the way is
// still asked through its virtual getter, so that an override keeps its say; a getter that
// falls back to the one here (and gives its answer back as it is, as ZQElement's does) meets
// the probe below and hands the search back to the loop, which goes on from that node as the
// fallback would have.
namespace {

enum PositionKind { POSITION_LINE, POSITION_COLUMN };

struct PositionProbe {
  const ZQNode* node;
  PositionKind kind;
  bool deferred;
};

thread_local PositionProbe t_positionProbe = {nullptr, POSITION_LINE, false};

// True, and the probe taken, when `node` is the one being asked by the loop: its getter has
// fallen back to ZQNode's.
bool takeProbe(const ZQNode* node, PositionKind kind) {
  PositionProbe& probe = t_positionProbe;
  if (probe.node != node || probe.kind != kind || probe.deferred) return false;
  probe.deferred = true;
  return true;
}

// The node's own answer through its virtual getter; `deferred` when it fell back to ZQNode's.
int askPosition(const ZQNode* node, PositionKind kind, bool& deferred) {
  // The outer probe comes back on every way out, a getter that throws too.
  struct Restore {
    PositionProbe saved = t_positionProbe;
    ~Restore() { t_positionProbe = saved; }
  } restore;
  t_positionProbe = PositionProbe{node, kind, false};
  int value = kind == POSITION_LINE ? node->getSourceLineNumber() : node->getSourceColumnNumber();
  deferred = t_positionProbe.deferred;
  return value;
}

// The previous sibling's position, else the parent's, each node's own first.
int findPosition(const ZQNode* start, PositionKind kind) {
  const ZQNode* node = start;
  for (;;) {
    bool deferred = false;
    if (const ZQNode* previous = node->getPreviousSibling()) {
      int value = askPosition(previous, kind, deferred);
      if (deferred) {
        // Its own search, when it finds nothing, ends at the parent that this node would
        // ask next: going on from the sibling gives the same answer.
        node = previous;
        continue;
      }
      if (value != -1) return value;
    }
    const ZQNode* parent = node->getParentNode();
    if (!parent) return -1;
    int value = askPosition(parent, kind, deferred);
    if (!deferred) return value;
    node = parent;
  }
}

}  // namespace

int ZQNode::getSourceLineNumber() const {
  if (takeProbe(this, POSITION_LINE)) return -1;
  return findPosition(this, POSITION_LINE);
}

int ZQNode::getSourceColumnNumber() const {
  if (takeProbe(this, POSITION_COLUMN)) return -1;
  return findPosition(this, POSITION_COLUMN);
}

UnicodeString ZQNode::getBaseUri() const {
  if (const ZQNode* parent = getParentNode()) return parent->getBaseUri();
  if (m_ownerDocument && static_cast<const ZQNode*>(m_ownerDocument) != this)
    return m_ownerDocument->getBaseUri();
  return UnicodeString();
}

// ---- reading, plain: these may pull input through the owner document ----

ZQNode* ZQNode::getParentNode() const { return m_parent; }
ZQNode* ZQNode::getPreviousSibling() const { return m_previousSibling; }
ZQDocument* ZQNode::getOwnerDocument() const { return m_ownerDocument; }

bool ZQNode::hasChildNodes() const {
  if (m_lastChild) return true;
  if (isLoading() && m_ownerDocument) m_ownerDocument->loadNextNode();
  return m_lastChild != nullptr;
}

ZQNode* ZQNode::getFirstChild() const {
  if (!m_lastChild && isLoading() && m_ownerDocument) m_ownerDocument->loadNextNode();
  return getFirstChildFast();
}

ZQNode* ZQNode::getLastChild() const {
  while (isLoading() && m_ownerDocument && m_ownerDocument->loadNextNode()) {
  }
  return m_lastChild;
}

ZQNode* ZQNode::getNextSibling() const {
  if (!m_parent) return nullptr;
  if (m_parent->m_lastChild != this) return m_nextSibling;
  while (isLoading() && m_ownerDocument && m_ownerDocument->loadNextNode()) {
  }
  if (m_parent && m_parent->m_lastChild == this && m_parent->isLoading() && m_ownerDocument)
    m_ownerDocument->loadNextNode();
  if (!m_parent || m_parent->m_lastChild == this) return nullptr;
  return m_nextSibling;
}

ZQNode* ZQNode::getParentNodeUncomplemental() const {
  for (ZQNode* p = getParentNode(); p; p = p->getParentNode())
    if (!p->getFlag(FLAG_COMPLEMENTAL)) return p;
  return nullptr;
}

// ---- lists ----

ZQPtr<ZQNodeList> ZQNode::getChildNodes() const {
  return ZQPtr<ZQNodeList>(new ChildNodeList(const_cast<ZQNode*>(this)));
}

ZQPtr<ZQNodeList> ZQNode::getElementsByTagName(ZQName name) const {
  return ZQPtr<ZQNodeList>(new TreeNodeList(const_cast<ZQNode*>(this), name));
}

ZQPtr<ZQNodeList> ZQNode::getElementsByTagNameNS(ZQName uri, ZQName localName) const {
  return ZQPtr<ZQNodeList>(new TreeNodeList(const_cast<ZQNode*>(this), uri, localName));
}

ZQPtr<ZQNodeList> ZQNode::getDescendantNodes() const {
  return ZQPtr<ZQNodeList>(new TreeNodeList(const_cast<ZQNode*>(this)));
}

ZQNodeIterator ZQNode::getIterator() const {
  ZQPtr<ZQNodeList> list = getChildNodes();
  return ZQNodeIterator(list.get());
}

// ---- writing ----

// An attribute's parent field names its owner element, but the attribute lives in the
// element's attribute ring: unlinking it from the child ring would tear both rings apart.
bool ZQNode::isChildHere(const ZQNode* node) const {
  if (node->m_parent != this) return false;
  if (node->getNodeType() != ATTRIBUTE_NODE) return true;
  ZQNamedNodeMap* map = getAttributes();
  if (!map) return true;
  for (ZQNode* attr = map->getFirstNode(); attr; attr = map->getNextNode(attr))
    if (attr == node) return false;
  return true;
}

// Takes newChild out of its old place; the reference taken for this parent is given back if
// the old parent refuses.
void ZQNode::detachFromOldParent(ZQNode* newChild) {
  ZQNode* oldParent = newChild->m_parent;
  if (!oldParent) return;
  try {
    oldParent->removeChild(newChild);
  } catch (...) {
    newChild->removeRef();
    throw;
  }
}

void ZQNode::linkBefore(ZQNode* newChild, ZQNode* refChild) {
  // Read only now: taking newChild out of its old place may have moved refChild's neighbours.
  ZQNode* previous = refChild->m_previousSibling;
  newChild->m_parent = this;
  newChild->m_nextSibling = refChild;
  newChild->m_previousSibling = previous;
  refChild->m_previousSibling = newChild;
  if (previous)
    previous->m_nextSibling = newChild;
  else
    m_lastChild->m_nextSibling = newChild;  // a new first child closes the ring
}

ZQNode* ZQNode::insertBefore(ZQNode* newChild, ZQNode* refChild) {
  if (!newChild)
    throwCommonError(3, ZQSRC_NODE_INSERT_BEFORE, kNewChild, ZQEmptyString::EMPTY_VALUE);
  if (!refChild) return appendChild(newChild);
  if (!isChildHere(refChild))
    throwCommonError(9, ZQSRC_NODE_INSERT_BEFORE, kRefChild, ZQEmptyString::EMPTY_VALUE);
  if (newChild == refChild) return newChild;
  if (newChild->m_ownerDocument != m_ownerDocument &&
      static_cast<ZQNode*>(newChild->m_ownerDocument) != this)
    throwCommonError(6, ZQSRC_NODE_INSERT_BEFORE, kNewChild, ZQEmptyString::EMPTY_VALUE);

  newChild->addRef();  // becomes this parent's reference
  detachFromOldParent(newChild);
  linkBefore(newChild, refChild);
  return newChild;
}

ZQPtr<ZQNode> ZQNode::replaceChild(ZQNode* newChild, ZQNode* oldChild) {
  if (!newChild)
    throwCommonError(3, ZQSRC_NODE_REPLACE_CHILD, kNewChild, ZQEmptyString::EMPTY_VALUE);
  if (!oldChild)
    throwCommonError(3, ZQSRC_NODE_REPLACE_CHILD, kOldChild, ZQEmptyString::EMPTY_VALUE);
  if (!isChildHere(oldChild))
    throwCommonError(9, ZQSRC_NODE_REPLACE_CHILD, kOldChild, ZQEmptyString::EMPTY_VALUE);
  if (newChild == oldChild) return ZQPtr<ZQNode>(oldChild);
  if (newChild->m_ownerDocument != m_ownerDocument &&
      static_cast<ZQNode*>(newChild->m_ownerDocument) != this)
    throwCommonError(6, ZQSRC_NODE_REPLACE_CHILD, kNewChild, ZQEmptyString::EMPTY_VALUE);

  newChild->addRef();
  detachFromOldParent(newChild);

  const bool wasLast = m_lastChild == oldChild;
  const bool onlyChild = oldChild->m_nextSibling == oldChild;
  ZQNode* previous = oldChild->m_previousSibling;
  ZQNode* next = oldChild->m_nextSibling;
  newChild->m_parent = this;
  newChild->m_previousSibling = previous;
  newChild->m_nextSibling = onlyChild ? newChild : next;
  if (!wasLast) next->m_previousSibling = newChild;  // the first child's previous stays null
  if (wasLast) m_lastChild = newChild;
  if (previous)
    previous->m_nextSibling = newChild;
  else if (!onlyChild)
    m_lastChild->m_nextSibling = newChild;

  oldChild->m_parent = nullptr;
  oldChild->m_nextSibling = nullptr;
  oldChild->m_previousSibling = nullptr;
  ZQPtr<ZQNode> result(oldChild);
  oldChild->removeRef();  // the result takes over the parent's reference
  return result;
}

ZQPtr<ZQNode> ZQNode::removeChild(ZQNode* oldChild) {
  if (!oldChild)
    throwCommonError(3, ZQSRC_NODE_REMOVE_CHILD, kOldChild, ZQEmptyString::EMPTY_VALUE);
  if (!isChildHere(oldChild))
    throwCommonError(9, ZQSRC_NODE_REMOVE_CHILD, kOldChild, ZQEmptyString::EMPTY_VALUE);

  ZQNode* previous = oldChild->m_previousSibling;
  ZQNode* next = oldChild->m_nextSibling;
  if (oldChild == m_lastChild) {
    m_lastChild = previous;
    if (previous) previous->m_nextSibling = next;  // next is the first child
  } else {
    next->m_previousSibling = previous;
    if (previous)
      previous->m_nextSibling = next;
    else
      m_lastChild->m_nextSibling = next;  // next is the new first child
  }
  oldChild->m_parent = nullptr;
  oldChild->m_nextSibling = nullptr;
  oldChild->m_previousSibling = nullptr;
  ZQPtr<ZQNode> result(oldChild);
  oldChild->removeRef();
  return result;
}

ZQNode* ZQNode::appendChild(ZQNode* newChild) {
  if (!newChild)
    throwCommonError(3, ZQSRC_NODE_APPEND_CHILD, kNewChild, ZQEmptyString::EMPTY_VALUE);
  if (newChild->m_ownerDocument != m_ownerDocument &&
      static_cast<ZQNode*>(newChild->m_ownerDocument) != this)
    throwCommonError(6, ZQSRC_NODE_APPEND_CHILD, kNewChild, ZQEmptyString::EMPTY_VALUE);

  newChild->addRef();
  detachFromOldParent(newChild);
  return adoptLastChild(newChild);
}

bool ZQNode::mayAdopt(const ZQNode* child) const {
  return child && child != this && child->m_parent == nullptr &&
         child->m_ownerDocument == m_ownerDocument && isLibraryElement(this);
}

ZQNode* ZQNode::adoptLastChild(ZQNode* child) {
  if (m_lastChild) {
    child->m_nextSibling = m_lastChild->m_nextSibling;
    child->m_previousSibling = m_lastChild;
    m_lastChild->m_nextSibling = child;
  } else {
    child->m_nextSibling = child;
    child->m_previousSibling = nullptr;
  }
  child->m_parent = this;
  m_lastChild = child;
  return child;
}

ZQNode* ZQNode::appendChildEx(ZQNode* child) { return appendChild(child); }

ZQNode* ZQNode::appendChildText(const UnicodeString& text) {
  ZQPtr<ZQNode> node;
  if (m_ownerDocument) node = m_ownerDocument->createTextNodeElement(text, this);
  // The factory's reference goes into the tree as it is, without a count up and down.
  if (mayAdopt(node.get())) return adoptLastChild(giveUpReference(std::move(node)));
  return appendChild(node.get());
}

ZQNode* ZQNode::appendChildTextLF() { return appendChildText(UnicodeString(u'\n')); }

ZQNode* ZQNode::insertBeforeTextLF(ZQNode* refChild) {
  ZQPtr<ZQNode> node;
  if (m_ownerDocument) node = m_ownerDocument->createTextNodeElement(UnicodeString(u'\n'), this);
  return insertBefore(node.get(), refChild);
}

void ZQNode::appendChildren(ZQNode* first, ZQNode* stop) {
  ZQNode* node = first;
  while (node && node != stop) {
    ZQNode* next = node->getNextSibling();
    appendChild(node);
    // A run of this node's own children comes round to the nodes already moved: without this
    // stop it would move them for ever.
    if (next == first) break;
    node = next;
  }
}

void ZQNode::removeAllChildNodes() { releaseChildren(); }

// Plain arithmetic on the counts is the point of this fast path: the caller promises that
// nothing else holds a node of the subtree. The nodes still to visit are chained through their
// previous links, which already chain each run of siblings, so a deep tree needs neither
// recursion nor a stack of its own.
long ZQNode::deleteAllChildNodes() {
  long count = 0;
  ZQNode* todo = m_lastChild;
  m_lastChild = nullptr;
  while (todo) {
    ZQNode* node = todo;
    todo = node->m_previousSibling;
    if (ZQNode* last = node->m_lastChild) {
      ZQNode* first = last->m_nextSibling;
      first->m_previousSibling = todo;  // the children's run goes ahead of the rest
      todo = last;
    }
    node->m_parent = nullptr;
    node->m_nextSibling = nullptr;
    node->m_previousSibling = nullptr;
    node->m_lastChild = nullptr;
    ++count;
    if (node->decrementRefCount() < 1) delete node;
  }
  return count;
}

}  // namespace ZQCommonNS
