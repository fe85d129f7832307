// Elements: attribute access through the element's map, namespace look-ups, base URIs and
// cloning.
#include "common/ZQElement.h"

#include <new>
#include <utility>
#include <vector>

#include "common/ZQDocument.h"
#include "common/ZQUri.h"
#include "common/ZQXmlUtil.h"
#include "core/ZQCommonError.h"
#include "dom/ZQDomClasses.h"

namespace ZQCommonNS {

namespace {

bool isPlainElement(const ZQElement* element) {
  return element->getTypeID() == Element::getStaticTypeID();
}

/// The parent when it is an element, else null.
const ZQElement* parentElement(const ZQNode* node) {
  const ZQNode* parent = node->getParentNode();
  if (parent == nullptr || parent->getNodeType() != ZQNode::ELEMENT_NODE ||
      !parent->isA(ZQElement::getStaticTypeID()))
    return nullptr;
  return static_cast<const ZQElement*>(parent);
}

/// A declaration's value compared as a name.
ZQName valueAsName(const ZQValue& value) { return value.isNull() ? ZQName() : value.toZQName(); }

ZQValue stringValue(const UnicodeString& text) { return ZQValue(text, ZQUNIT_NONE); }

/// Calls `visit` on each attribute of `map` in ring order until it answers true; returns the
/// attribute that stopped the walk, or null.
template <class Visit>
ZQAttr* findAttr(ZQNamedNodeMap* map, Visit visit) {
  if (map == nullptr) return nullptr;
  ZQNode* last = map->getLastNode();
  if (last == nullptr) return nullptr;
  for (ZQNode* node = map->getFirstNode(); node != nullptr; node = map->getNextNode(node)) {
    ZQAttr* attr = static_cast<ZQAttr*>(node);
    if (visit(attr)) return attr;
    if (node == last) break;
  }
  return nullptr;
}

// The frames of a deep clone in progress on this thread. An element clone asked for while a
// deep clone runs is made shallow and queued here, and the outermost call fills in the
// children level by level, so that the depth of a tree never turns into depth of the stack.
struct CloneFrame {
  const ZQNode* source;
  ZQPtr<ZQNode> clone;
  ZQNode* child;
  bool started;
};

thread_local std::vector<CloneFrame>* t_cloneFrames = nullptr;

class CloneScope {
 public:
  explicit CloneScope(std::vector<CloneFrame>* frames) { t_cloneFrames = frames; }
  ~CloneScope() { t_cloneFrames = nullptr; }
  CloneScope(const CloneScope&) = delete;
  CloneScope& operator=(const CloneScope&) = delete;
};

}  // namespace

// ---- ZQElement ----

ZQElement::ZQElement(ZQDocument* ownerDocument)
    : ZQNode(ownerDocument), m_attributes(), m_sourceLine(-1), m_sourceColumn(-1) {
  m_attributes = new AttrNodeMap(this);
}

ZQElement::~ZQElement() {
  // A map still held from outside must not keep pointers into this element.
  if (m_attributes) m_attributes->clear();
}

ZQNamedNodeMap* ZQElement::getAttributes() const { return m_attributes.get(); }

bool ZQElement::hasAttributes() const {
  const AttrNodeMap* map = m_attributes.get();
  return map != nullptr && map->m_node != nullptr && map->m_node != this;
}

ZQValue ZQElement::getAttribute(ZQName qname) const {
  ZQAttr* attr = m_attributes ? m_attributes->getNamedItem(qname) : nullptr;
  return attr ? attr->getValue() : ZQValue::NULL_VALUE;
}

ZQValue ZQElement::getAttributeNS(ZQName uri, ZQName localName) const {
  ZQAttr* attr = m_attributes ? m_attributes->getNamedItemNS(uri, localName) : nullptr;
  return attr ? attr->getValue() : ZQValue::NULL_VALUE;
}

void ZQElement::getAttributeLocal(ZQName localName, std::vector<ZQValue>* values) const {
  if (values == nullptr) return;
  findAttr(m_attributes.get(), [&](ZQAttr* attr) {
    if (attr->getLocalName() == localName) values->push_back(attr->getValue());
    return false;
  });
}

void ZQElement::setAttribute(ZQName qname, const ZQValue& value) {
  if (!m_attributes) return;
  ZQAttr* attr = m_attributes->getNamedItem(qname);
  ZQPtr<ZQAttr> created;
  if (attr == nullptr) {
    if (m_ownerDocument == nullptr) return;
    created = m_ownerDocument->createAttribute(qname);
    if (!created) return;
    m_attributes->appendNew(created.get());
    attr = created.get();
  }
  attr->setValue(value);
}

void ZQElement::setAttributeNS(ZQName uri, ZQName prefix, ZQName localName, const ZQValue& value) {
  if (!m_attributes) return;
  ZQAttr* attr = m_attributes->getNamedItemNS(uri, localName);
  ZQPtr<ZQAttr> created;
  if (attr != nullptr) {
    attr->setPrefix(prefix);
  } else {
    if (m_ownerDocument == nullptr) return;
    created = m_ownerDocument->createAttributeNS(uri, prefix, localName);
    if (!created) return;
    m_attributes->appendNew(created.get());
    attr = created.get();
  }
  attr->setValue(value);
}

void ZQElement::setAttributeNS(ZQName uri, ZQName qname, const ZQValue& value) {
  setAttributeNS(uri, ZQXmlUtil::getPrefixFromQName(qname), ZQXmlUtil::getLocalPartFromQName(qname),
                 value);
}

void ZQElement::setAttributeEx(ZQName uri, ZQName prefix, ZQName localName,
                               const UnicodeString& text) {
  // The library's own element classes keep setAttributeNS as it is here, so a new attribute
  // of the library's own class may take the string over instead of a copy of it: the loader
  // sets every attribute this way.
  if (isLibraryElement(this) && m_attributes && m_ownerDocument &&
      m_attributes->getNamedItemNS(uri, localName) == nullptr) {
    ZQPtr<ZQAttr> created = m_ownerDocument->createAttributeNS(uri, prefix, localName);
    if (!created) return;
    // The factory's reference becomes the map's, without a count up and down.
    ZQAttr* attr = giveUpReference(std::move(created));
    m_attributes->adoptNew(attr, this);
    if (isLibraryAttr(attr))
      static_cast<Attr*>(attr)->takeValue(stringValue(text));
    else
      attr->setValue(stringValue(text));
    return;
  }
  setAttributeNS(uri, prefix, localName, stringValue(text));
}

void ZQElement::removeAttribute(ZQName qname) {
  if (m_attributes) m_attributes->removeNamedItem(qname);
}

void ZQElement::removeAttributeNS(ZQName uri, ZQName localName) {
  if (m_attributes) m_attributes->removeNamedItemNS(uri, localName);
}

ZQAttr* ZQElement::getAttributeNode(ZQName qname) const {
  return m_attributes ? m_attributes->getNamedItem(qname) : nullptr;
}

ZQAttr* ZQElement::getAttributeNodeNS(ZQName uri, ZQName localName) const {
  return m_attributes ? m_attributes->getNamedItemNS(uri, localName) : nullptr;
}

void ZQElement::getAttributeNodeLocal(ZQName localName, std::vector<ZQPtr<ZQAttr>>* result) const {
  if (m_attributes) m_attributes->getNamedItemLocal(localName, result);
}

ZQPtr<ZQAttr> ZQElement::setAttributeNode(ZQAttr* attr) { return m_attributes->setNamedItem(attr); }

ZQPtr<ZQAttr> ZQElement::setAttributeNodeNS(ZQAttr* attr) {
  return m_attributes->setNamedItemNS(attr);
}

ZQPtr<ZQAttr> ZQElement::removeAttributeNode(ZQAttr* attr) {
  if (attr == nullptr)
    throwCommonError(3, ZQSRC_ELEMENT_REMOVE_ATTRIBUTE_NODE, UnicodeString(u"oldAttr"),
                     ZQEmptyString::EMPTY_VALUE);
  AttrNodeMap* map = m_attributes.get();
  ZQAttr* last = map ? map->lastAttr() : nullptr;
  if (last == nullptr) return ZQPtr<ZQAttr>();
  ZQAttr* previous = last;
  ZQAttr* node = AttrNodeMap::nextAttr(last);
  for (;;) {
    if (node == attr) return map->unlink(node, previous);
    if (node == last) return ZQPtr<ZQAttr>();
    previous = node;
    node = AttrNodeMap::nextAttr(node);
  }
}

bool ZQElement::hasAttribute(ZQName qname) const { return getAttributeNode(qname) != nullptr; }

bool ZQElement::hasAttributeNS(ZQName uri, ZQName localName) const {
  return getAttributeNodeNS(uri, localName) != nullptr;
}

bool ZQElement::hasAttributeLocal(ZQName localName) const {
  return findAttr(m_attributes.get(),
                  [&](ZQAttr* attr) { return attr->getLocalName() == localName; }) != nullptr;
}

ZQName ZQElement::getAttributeXMLNS(ZQName prefix) const {
  return valueAsName(getAttributeNS(ZQName(ZQN_NS_XMLNS), prefix));
}

void ZQElement::setAttributeXMLNS(ZQName uri, ZQName prefix) {
  setAttributeNS(ZQName(ZQN_NS_XMLNS), ZQName(ZQN_xmlns), prefix, ZQValue(uri));
}

void ZQElement::removeAttributeXMLNS(ZQName prefix) {
  removeAttributeNS(ZQName(ZQN_NS_XMLNS), prefix);
}

int ZQElement::getSourceLineNumber() const {
  return m_sourceLine != -1 ? m_sourceLine : ZQNode::getSourceLineNumber();
}

int ZQElement::getSourceColumnNumber() const {
  return m_sourceColumn != -1 ? m_sourceColumn : ZQNode::getSourceColumnNumber();
}

// ---- namespace look-ups ----
// Ancestors are searched in a loop rather than by asking each parent in turn, so that a deep
// tree cannot exhaust the stack.

ZQName ZQElement::lookupNamespaceUri(ZQName prefix) const {
  const ZQName xmlns(ZQN_xmlns);
  for (const ZQElement* element = this; element != nullptr; element = parentElement(element)) {
    if (!isPlainElement(element)) {
      ZQName ns = element->getNamespaceUri();
      if (!ns.isEmpty() && element->getPrefix() == prefix) return ns;
    }
    ZQName found;
    bool hit = findAttr(element->getAttributes(), [&](ZQAttr* attr) {
                 ZQName local = attr->getLocalName();
                 if ((attr->getPrefix() == xmlns && local == prefix) ||
                     (local == xmlns && prefix.isEmpty())) {
                   found = valueAsName(attr->getValue());
                   return true;
                 }
                 return false;
               }) != nullptr;
    if (hit) return found;
  }
  return ZQName();
}

ZQName ZQElement::lookupPrefix(ZQName uri) const {
  const ZQName xmlns(ZQN_xmlns);
  for (const ZQElement* element = this; element != nullptr; element = parentElement(element)) {
    if (!isPlainElement(element)) {
      ZQName prefix = element->getPrefix();
      if (element->getNamespaceUri() == uri && !prefix.isEmpty() &&
          lookupNamespaceUri(prefix) == uri)
        return prefix;
    }
    ZQAttr* declaration = findAttr(element->getAttributes(), [&](ZQAttr* attr) {
      return attr->getPrefix() == xmlns && valueAsName(attr->getValue()) == uri &&
             lookupNamespaceUri(attr->getLocalName()) == uri;
    });
    if (declaration) return declaration->getLocalName();
  }
  return ZQName();
}

bool ZQElement::isDefaultNamespace(ZQName uri) const {
  const ZQName xmlns(ZQN_xmlns);
  for (const ZQElement* element = this; element != nullptr; element = parentElement(element)) {
    if (element->getPrefix().isEmpty()) return element->getNamespaceUri() == uri;
    ZQAttr* declaration = findAttr(element->getAttributes(),
                                   [&](ZQAttr* attr) { return attr->getLocalName() == xmlns; });
    if (declaration) return valueAsName(declaration->getValue()) == uri;
  }
  return false;
}

// ---- base URI ----

UnicodeString ZQElement::getBaseUri() const {
  // The chain of elements up to the first ancestor that is not one, worked from the top down,
  // so that a deep tree costs a loop and not a recursion.
  std::vector<const ZQElement*> chain;
  for (const ZQElement* element = this; element != nullptr;) {
    chain.push_back(element);
    const ZQNode* parent = element->getParentNode();
    element = (parent && parent->isA(ZQElement::getStaticTypeID()))
                  ? static_cast<const ZQElement*>(parent)
                  : nullptr;
  }
  // The base of the topmost element's parent, or the document's when it has none.
  UnicodeString base = chain.back()->ZQNode::getBaseUri();
  const ZQName xmlNs(ZQN_NS_XML), baseName(ZQN_base);
  for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
    const ZQElement* element = *it;
    ZQValue value = element->getAttributeNS(xmlNs, baseName);
    UnicodeString text = value.isNull() ? UnicodeString() : value.toString();
    if (text.isEmpty()) continue;  // the parent's base stays
    ZQUri uri(text);
    if (uri.isAbsolute() || element->getParentNode() == nullptr) {
      base = text;
    } else if (!base.isEmpty()) {
      base = ZQUri(ZQUri(base), text).toString();
    } else {
      base = uri.toString();
    }
  }
  return base;
}

// ---- cloning ----

ZQPtr<ZQNode> ZQElement::cloneShallow() const {
  if (m_ownerDocument == nullptr) return ZQPtr<ZQNode>();
  ZQPtr<ZQElement> clone =
      m_ownerDocument->createElementNS(getNamespaceUri(), getPrefix(), getLocalName());
  if (!clone) return ZQPtr<ZQNode>();
  findAttr(m_attributes.get(), [&](ZQAttr* attr) {
    clone->setAttributeNS(attr->getNamespaceUri(), attr->getPrefix(), attr->getLocalName(),
                          attr->getNodeValue());
    return false;
  });
  cloneMembers(clone.get());
  return ZQPtr<ZQNode>(clone.get());
}

ZQPtr<ZQNode> ZQElement::cloneNode(bool deep) const {
  ZQPtr<ZQNode> clone = cloneShallow();
  if (!clone || !deep) return clone;
  if (t_cloneFrames != nullptr) {
    // Inside a deep clone: the outermost call fills in the children.
    t_cloneFrames->push_back(CloneFrame{this, clone, nullptr, false});
    return clone;
  }
  std::vector<CloneFrame> frames;
  frames.push_back(CloneFrame{this, clone, nullptr, false});
  CloneScope scope(&frames);
  while (!frames.empty()) {
    CloneFrame& frame = frames.back();
    // The plain accessors, so that a node still loading is completed by the clone.
    ZQNode* child = frame.started ? frame.child->getNextSibling() : frame.source->getFirstChild();
    frame.started = true;
    frame.child = child;
    if (child == nullptr) {
      frames.pop_back();
      continue;
    }
    ZQPtr<ZQNode> target = frame.clone;  // the frame may move when a child pushes its own
    ZQPtr<ZQNode> childClone = child->cloneNode(true);
    target->appendChild(childClone.get());
  }
  return clone;
}

// ---- Element, ElementNS ----

Element::Element(ZQDocument* ownerDocument, ZQName prefix, ZQName localName)
    : ZQElement(ownerDocument), m_prefix(prefix), m_localName(localName) {}

Element::~Element() = default;

ZQName Element::getNamespaceUri() const { return lookupNamespaceUri(m_prefix); }

ElementNS::ElementNS(ZQDocument* ownerDocument, ZQName uri, ZQName prefix, ZQName localName)
    : Element(ownerDocument, prefix, localName), m_namespace(uri) {}

ElementNS::~ElementNS() = default;

}  // namespace ZQCommonNS
