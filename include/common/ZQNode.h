// The node tree: the base node with its sibling ring, and the small leaf nodes.
#pragma once

#include "common/ZQExport.h"

#include <cstddef>
#include <new>

#include "common/ZQName.h"
#include "common/ZQNodeList.h"
#include "common/ZQObject.h"
#include "common/ZQString.h"
#include "common/ZQValue.h"

namespace ZQCommonNS {

class ZQDocument;
class ZQElement;
class ZQAttr;
class ZQNamedNodeMap;
class AttrNodeMap;

/// Base of the document tree. A parent keeps only its last child; children form a ring through
/// their next links (the last child's next is the first) while previous links stop at null on
/// the first child. Plain accessors may pull input through the owner document; the Fast ones
/// read the links as they stand. Every virtual operation is a hook for derived node classes,
/// and the order of the virtual operations is kept.
class ZQCOMMON_API ZQNode : public ZQRCObject {
  ZQ_DECLARE_TYPE(ZQNode, ZQRCObject)

 public:
  /// Node types, numbered as in the W3C model.
  enum ZQNodeType : int {
    ELEMENT_NODE = 1,
    ATTRIBUTE_NODE = 2,
    TEXT_NODE = 3,
    ENTITY_NODE = 6,
    PROCESSING_INSTRUCTION_NODE = 7,
    DOCUMENT_NODE = 9,
    DOCUMENT_TYPE_NODE = 10,
    DOCUMENT_FRAGMENT_NODE = 11,
    NOTATION_NODE = 12,
  };

  /// Nodes come from the tree's own pool of small objects, derived classes' nodes too.
  static void* operator new(std::size_t size);
  static void operator delete(void* p, std::size_t size) noexcept;
  static void* operator new(std::size_t size, std::align_val_t align) {
    return ::operator new(size, align);
  }
  static void operator delete(void* p, std::align_val_t align) noexcept {
    ::operator delete(p, align);
  }
  static void* operator new(std::size_t, void* place) noexcept { return place; }
  static void operator delete(void*, void*) noexcept {}

  /// Bits of the flag word; bits above these are free for derived classes.
  enum Flag : int {
    FLAG_LOADING = 1,       ///< open in the pull loader: children may still arrive
    FLAG_LOAD_DONE = 2,     ///< its end tag was reached
    FLAG_COMPLEMENTAL = 4,  ///< put in by a derived class, with no source element behind it
  };

  ZQNode(const ZQNode&) = delete;
  ZQNode& operator=(const ZQNode&) = delete;

  // ---- virtual operations, in their fixed order ----

  /// The qualified name: prefix and local name joined.
  virtual ZQName getNodeName() const;
  virtual ZQName getLocalName() const = 0;
  /// The formatting-object name; here the local name.
  virtual ZQName getFOName() const;
  virtual ZQName getNamespaceUri() const;
  virtual ZQName getPrefix() const;
  /// Does nothing here.
  virtual void setPrefix(ZQName prefix);
  /// The null value here.
  virtual ZQValue getNodeValue() const;
  /// Fails here (code 11) unless a derived class stores values.
  virtual void setNodeValue(const ZQValue& value);
  virtual ZQNodeType getNodeType() const = 0;
  virtual ZQNode* getParentNode() const;
  /// May load one node through the owner document.
  virtual bool hasChildNodes() const;
  /// A live list of the children.
  virtual ZQPtr<ZQNodeList> getChildNodes() const;
  /// May load one node through the owner document.
  virtual ZQNode* getFirstChild() const;
  /// Completes a loading node first.
  virtual ZQNode* getLastChild() const;
  virtual ZQNode* getPreviousSibling() const;
  /// Completes this node, then may load one more node of a loading parent.
  virtual ZQNode* getNextSibling() const;
  virtual ZQDocument* getOwnerDocument() const;
  /// Moves `newChild` before `refChild` (at the end for a null `refChild`); returns newChild.
  virtual ZQNode* insertBefore(ZQNode* newChild, ZQNode* refChild);
  /// Puts `newChild` in `oldChild`'s place; the parent's reference comes back with oldChild.
  virtual ZQPtr<ZQNode> replaceChild(ZQNode* newChild, ZQNode* oldChild);
  /// Unlinks a child; the parent's reference comes back with it.
  virtual ZQPtr<ZQNode> removeChild(ZQNode* oldChild);
  /// Moves `newChild` to the end of the children; returns it.
  virtual ZQNode* appendChild(ZQNode* newChild);
  /// The attribute map of an element; null here.
  virtual ZQNamedNodeMap* getAttributes() const;
  virtual bool hasAttributes() const;
  /// A copy made through the owner document; an empty pointer where cloning is not supported.
  virtual ZQPtr<ZQNode> cloneNode(bool deep) const;
  /// Copies this node's own members (here the flag word) to a clone.
  virtual void cloneMembers(ZQNode* to) const;
  virtual ZQName lookupPrefix(ZQName uri) const;
  virtual bool isDefaultNamespace(ZQName uri) const;
  virtual ZQName lookupNamespaceUri(ZQName prefix) const;
  /// Called just before the attributes are written out.
  virtual void finishAttributes();
  virtual bool isElementNode() const;
  virtual bool isProcessingInstruction() const;
  virtual bool isText() const;
  /// For a text-like element: whether it is saved inside a "text" tag.
  virtual bool saveTextTag() const;
  // Classification hooks of derived classes; all false here.
  virtual bool isFO() const;
  virtual bool isAXFO() const;
  virtual bool isArea() const;
  virtual bool isCSS() const;
  virtual bool isHTML() const;
  virtual bool isHTMLSyntax() const;
  virtual bool isXHTMLSyntax() const;
  virtual bool isXML() const;
  virtual bool isBlock() const;
  virtual bool isBlockOrBdo(bool arg);
  virtual bool isInline() const;
  virtual bool isInlineBlock() const;
  virtual bool isNeutral() const;
  /// The node's text; empty here.
  virtual UnicodeString getText() const;
  /// Does nothing here.
  virtual void setText(const UnicodeString& text);
  /// A live list of descendant elements of that local name ("*" for any).
  virtual ZQPtr<ZQNodeList> getElementsByTagName(ZQName name) const;
  /// A live list of descendant elements of that namespace and local name ("*" for any).
  virtual ZQPtr<ZQNodeList> getElementsByTagNameNS(ZQName uri, ZQName localName) const;
  /// A live list of every descendant.
  virtual ZQPtr<ZQNodeList> getDescendantNodes() const;
  /// An iterator over the children.
  virtual ZQNodeIterator getIterator() const;
  /// What the loader appends elements through; derived classes may substitute another node or
  /// refuse with null. Here exactly appendChild.
  virtual ZQNode* appendChildEx(ZQNode* child);
  /// Appends a text node made by the owner document's createTextNodeElement.
  virtual ZQNode* appendChildText(const UnicodeString& text);
  /// The parent's base URI, else the owner document's, else empty.
  virtual UnicodeString getBaseUri() const;
  /// Source line, -1 when unknown; a node without its own takes its previous sibling's, then
  /// its parent's.
  virtual int getSourceLineNumber() const;
  virtual void setSourceLineNumber(int line);
  /// Source column, as for the line.
  virtual int getSourceColumnNumber() const;
  virtual void setSourceColumnNumber(int column);
  virtual bool isOutOfLine() const;
  virtual bool isBidiOverride() const;
  /// Whether the bidirectional analysis of this node is over.
  virtual bool isBidiDone() const;
  /// Marks the bidirectional analysis as over, with its level.
  virtual void bidiDone(int level);

  // ---- flags ----

  /// True if any bit of the mask is set.
  bool getFlag(int mask) const { return (m_flags & static_cast<unsigned int>(mask)) != 0; }
  /// Sets or clears the mask.
  void setFlag(int mask, bool on) {
    if (on)
      m_flags |= static_cast<unsigned int>(mask);
    else
      m_flags &= ~static_cast<unsigned int>(mask);
  }
  unsigned int getFlags() const { return m_flags; }
  bool isLoading() const { return getFlag(FLAG_LOADING); }
  /// True once loading has begun (bit 1 or bit 2).
  bool isLoaded() const { return getFlag(FLAG_LOADING | FLAG_LOAD_DONE); }
  /// On a loading node: clears bit 1 and sets bit 2.
  void setLoadDone() {
    if (isLoading()) {
      setFlag(FLAG_LOADING, false);
      setFlag(FLAG_LOAD_DONE, true);
    }
  }

  // ---- links as they stand; never load ----

  bool hasChildNodesFast() const { return m_lastChild != nullptr; }
  ZQNode* getFirstChildFast() const { return m_lastChild ? m_lastChild->m_nextSibling : nullptr; }
  ZQNode* getLastChildFast() const { return m_lastChild; }
  /// Null without a parent and on the last child.
  ZQNode* getNextSiblingFast() const {
    return (m_parent && m_parent->m_lastChild != this) ? m_nextSibling : nullptr;
  }
  ZQNode* getParentNodeFast() const { return m_parent; }
  /// The nearest ancestor without the complemental flag, or null.
  ZQNode* getParentNodeUncomplemental() const;

  // ---- more writing ----

  /// Appends a text node holding one U+000A.
  ZQNode* appendChildTextLF();
  /// Inserts a text node holding one U+000A before `refChild`.
  ZQNode* insertBeforeTextLF(ZQNode* refChild);
  /// Moves the siblings from `first` up to, not including, `stop` to the end of this node.
  void appendChildren(ZQNode* first, ZQNode* stop);
  /// Unlinks and releases every child.
  void removeAllChildNodes();
  /// Takes the whole subtree down when nothing else can hold a node of it; returns the number
  /// of nodes visited.
  long deleteAllChildNodes();

  // ---- counting and relations ----

  /// Number of children; completes a loading node.
  int getChildNodeCount() const;
  int countPrecedingSiblings() const;
  int countFollowingSiblings() const;
  /// `n` and its preceding siblings; 0 for null.
  int getPreviousOrSelfNodeCount(const ZQNode* n) const;
  /// Number of ancestors, a document not counted.
  int getNodeDepth() const;
  ZQNode* getChildNodeByName(ZQName localName, const ZQNode* after = nullptr) const;
  ZQNode* getChildNodeByNameNS(ZQName uri, ZQName localName, const ZQNode* after = nullptr) const;
  ZQNode* getChildNodeByTypeID(unsigned int id) const;
  ZQNode* getAncestorByName(ZQName localName) const;
  ZQNode* getAncestorOrSelfByName(ZQName localName) const;
  ZQNode* getAncestorByNameNS(ZQName uri, ZQName localName) const;
  ZQNode* getAncestorByTypeID(unsigned int id) const;
  ZQNode* getAncestorOrSelfByTypeID(unsigned int id) const;
  /// Same local name and namespace.
  bool isSameOfType(const ZQNode* other) const;
  bool isDescendantOf(const ZQNode* other) const;
  bool isDescendantOrSelfOf(const ZQNode* other) const;
  ZQNode* getCommonAncestorOrSelf(const ZQNode* n) const;
  ZQNode* getCommonAncestor(const ZQNode* n) const;
  /// Whether this node comes after `other` without being inside it.
  bool isFollowingOf(const ZQNode* other) const;
  /// Whether this node comes before `other` without containing it.
  bool isPrecedingOf(const ZQNode* other) const;
  /// From this node on: the first that is not white-space-only text; null at the end.
  ZQNode* getNextSiblingOrSelfIgnoreEmptyOrWhitespace() const;
  /// The text of a text or non-element; for an element its descendant texts joined.
  UnicodeString getInnerText() const;

 protected:
  /// A node of `ownerDocument`, with no links, flags 0.
  explicit ZQNode(ZQDocument* ownerDocument);
  /// Takes the subtree apart without recursing down it; a child held from outside keeps its
  /// own children and only loses its parent.
  ~ZQNode() override;

  unsigned int m_flags;
  ZQNode* m_parent;
  ZQNode* m_nextSibling;      // circular among siblings
  ZQNode* m_previousSibling;  // null on the first child
  ZQNode* m_lastChild;        // the only link from a parent to its children
  ZQDocument* m_ownerDocument;

 private:
  // Attribute rings reuse the parent and next links of the attribute nodes.
  friend class ZQDocument;
  friend class ZQElement;
  friend class ZQAttr;
  friend class AttrNodeMap;

  void linkBefore(ZQNode* newChild, ZQNode* refChild);
  bool isChildHere(const ZQNode* node) const;
  void detachFromOldParent(ZQNode* newChild);
  void releaseChildren();
  /// True when `child` may go in by adoptLastChild: a node of this node's document, not this
  /// node, with no parent, and this node keeps the library's own appendChild.
  bool mayAdopt(const ZQNode* child) const;
  /// Links `child` as the last child, taking over the caller's reference to it.
  ZQNode* adoptLastChild(ZQNode* child);
};

/// A run of character data.
class ZQCOMMON_API ZQTextNode : public ZQNode {
  ZQ_DECLARE_TYPE(ZQTextNode, ZQNode)

 public:
  ZQTextNode(ZQDocument* ownerDocument, const UnicodeString& text);
  ~ZQTextNode() override;

  /// "#text".
  ZQName getLocalName() const override;
  ZQNodeType getNodeType() const override { return TEXT_NODE; }
  /// The text as a string value.
  ZQValue getNodeValue() const override;
  /// Stores the value's string form.
  void setNodeValue(const ZQValue& value) override;
  /// A new text node of the owner document with the same text, bidi level and flags.
  ZQPtr<ZQNode> cloneNode(bool deep) const override;
  /// Copies the flags and the bidi level; `to` must be a ZQTextNode.
  void cloneMembers(ZQNode* to) const override;
  bool isText() const override { return true; }
  UnicodeString getText() const override { return m_text; }
  void setText(const UnicodeString& text) override { m_text = text; }
  /// True once a bidi level was stored.
  bool isBidiDone() const override { return m_bidiLevel >= 0; }
  void bidiDone(int level) override { m_bidiLevel = level; }

  /// Length of the text in 16-bit units.
  virtual int getLength() const;
  virtual UnicodeString getData() const;
  virtual void setData(const UnicodeString& data);

  /// The stored bidi level, -1 before bidiDone.
  int getBidiLevel() const { return m_bidiLevel; }
  /// The stored text where it lies, without the copy getText makes; what a derived class
  /// answers through getText may differ.
  const UnicodeString& storedText() const { return m_text; }

 private:
  UnicodeString m_text;
  int m_bidiLevel;
};

/// A processing instruction: a target name and its data.
class ZQCOMMON_API ZQProcessingInstruction : public ZQNode {
  ZQ_DECLARE_TYPE(ZQProcessingInstruction, ZQNode)

 public:
  ZQProcessingInstruction(ZQDocument* ownerDocument, ZQName target, const UnicodeString& data);
  ~ZQProcessingInstruction() override;

  /// The target.
  ZQName getLocalName() const override { return m_target; }
  ZQNodeType getNodeType() const override { return PROCESSING_INSTRUCTION_NODE; }
  bool isProcessingInstruction() const override { return true; }
  /// The data.
  UnicodeString getText() const override { return m_data; }
  void setText(const UnicodeString& data) override { m_data = data; }

  ZQName getTarget() const { return m_target; }

 private:
  ZQName m_target;
  UnicodeString m_data;
};

/// A lightweight container node; inserting it inserts the fragment itself.
class ZQCOMMON_API ZQDocumentFragment : public ZQNode {
  ZQ_DECLARE_TYPE(ZQDocumentFragment, ZQNode)

 public:
  explicit ZQDocumentFragment(ZQDocument* ownerDocument);
  ~ZQDocumentFragment() override;

  /// "#document-fragment".
  ZQName getLocalName() const override;
  ZQNodeType getNodeType() const override { return DOCUMENT_FRAGMENT_NODE; }
};

}  // namespace ZQCommonNS
