// Elements, attributes and the attribute map of an element.
#pragma once

#include <utility>
#include <vector>

#include "common/ZQExport.h"
#include "common/ZQName.h"
#include "common/ZQNamedValueMap.h"
#include "common/ZQNode.h"
#include "common/ZQNodeList.h"
#include "common/ZQObject.h"
#include "common/ZQValue.h"

namespace ZQCommonNS {

class ZQElement;

/// An attribute node. Its parent link holds the owner element and its next link the ring of
/// the element's attributes, yet it answers null for parent and siblings, as W3C wants.
class ZQCOMMON_API ZQAttr : public ZQNode {
  ZQ_DECLARE_TYPE(ZQAttr, ZQNode)

 public:
  ~ZQAttr() override;

  // ---- virtual operations added behind those of ZQNode, in their fixed order ----

  /// The attribute's value.
  virtual ZQValue getValue() const = 0;
  /// Replaces the value's kind, unit and payload; the attribute keeps its name.
  virtual void setValue(const ZQValue& value) = 0;
  /// The element that carries the attribute, or null.
  virtual ZQElement* getOwnerElement() const = 0;

  // ---- ZQNode ----

  ZQNodeType getNodeType() const override { return ATTRIBUTE_NODE; }
  /// Null: an attribute is not a child of its element.
  ZQNode* getParentNode() const override { return nullptr; }
  ZQNode* getPreviousSibling() const override { return nullptr; }
  ZQNode* getNextSibling() const override { return nullptr; }
  /// getValue.
  ZQValue getNodeValue() const override { return getValue(); }
  /// setValue.
  void setNodeValue(const ZQValue& value) override { setValue(value); }
  /// The value's text.
  UnicodeString getText() const override;
  /// Stores a string value holding a copy of `text`.
  void setText(const UnicodeString& text) override;
  /// Asked of the owner element; the empty name without one.
  ZQName lookupPrefix(ZQName uri) const override;
  /// Asked of the owner element; false without one.
  bool isDefaultNamespace(ZQName uri) const override;
  /// Asked of the owner element; the empty name without one.
  ZQName lookupNamespaceUri(ZQName prefix) const override;

 protected:
  explicit ZQAttr(ZQDocument* ownerDocument);

  /// The owner element as the link stands.
  ZQElement* ownerElementField() const;
};

/// An attribute without namespace: its name and value share the two words of a named value.
/// It answers ZQAttr's type number and name on purpose.
class ZQCOMMON_API Attr : public ZQAttr {
 public:
  /// A detached attribute of that name holding the null value.
  Attr(ZQDocument* ownerDocument, ZQName name);
  ~Attr() override;

  /// The stored name.
  ZQName getNodeName() const override { return m_value.getName(); }
  /// The stored name.
  ZQName getLocalName() const override { return m_value.getName(); }
  ZQValue getValue() const override { return m_value.getValue(); }
  void setValue(const ZQValue& value) override { m_value.setValue(value); }
  ZQElement* getOwnerElement() const override { return ownerElementField(); }

  /// The stored value itself, for the library's own readers that need no copy of it.
  const ZQNamedValue& storedValue() const { return m_value; }
  /// Takes `value` over without copying it; the attribute's name stays.
  void takeValue(ZQValue&& value) {
    const ZQName name = m_value.getName();
    static_cast<ZQValue&>(m_value) = std::move(value);
    m_value.setName(name);
  }

 private:
  ZQNamedValue m_value;
};

/// An attribute with a prefix and a stored namespace.
class ZQCOMMON_API AttrNS : public Attr {
  ZQ_DECLARE_TYPE(AttrNS, Attr)

 public:
  AttrNS(ZQDocument* ownerDocument, ZQName uri, ZQName prefix, ZQName localName);
  ~AttrNS() override;

  /// Prefix and local name joined.
  ZQName getNodeName() const override;
  ZQName getPrefix() const override { return m_prefix; }
  void setPrefix(ZQName prefix) override { m_prefix = prefix; }
  /// The stored namespace; with a prefix and none stored, the one bound to the prefix in scope.
  ZQName getNamespaceUri() const override;

 private:
  friend class AttrNodeMap;

  ZQName m_namespace;
  ZQName m_prefix;
};

/// The attributes of an element as a named list.
class ZQCOMMON_API ZQNamedNodeMap : public ZQNodeIterable {
  ZQ_DECLARE_TYPE(ZQNamedNodeMap, ZQNodeIterable)

 public:
  ZQNamedNodeMap() = default;
  ~ZQNamedNodeMap() override;

  /// Number of attributes.
  virtual int getLength() = 0;
  /// The attribute at `index`, or null outside the list.
  virtual ZQAttr* item(int index) = 0;
  /// The first attribute of that qualified name, or null.
  virtual ZQAttr* getNamedItem(ZQName qname) = 0;
  /// The first attribute of that local name and namespace, or null.
  virtual ZQAttr* getNamedItemNS(ZQName uri, ZQName localName) = 0;
  /// Appends every attribute of that local name to `result`; nothing for a null `result`.
  virtual void getNamedItemLocal(ZQName localName, std::vector<ZQPtr<ZQAttr>>* result) = 0;
  /// Adds `attr`, or puts it in the place of the one of the same qualified name, which comes
  /// back.
  virtual ZQPtr<ZQAttr> setNamedItem(ZQAttr* attr) = 0;
  /// As setNamedItem, matching by local name and namespace.
  virtual ZQPtr<ZQAttr> setNamedItemNS(ZQAttr* attr) = 0;
  /// Unlinks the first attribute of that qualified name and returns it; empty if none.
  virtual ZQPtr<ZQAttr> removeNamedItem(ZQName qname) = 0;
  /// Unlinks the first attribute of that local name and namespace and returns it.
  virtual ZQPtr<ZQAttr> removeNamedItemNS(ZQName uri, ZQName localName) = 0;
};

/// The one map of an element: a single pointer, to the element while no attribute was ever
/// set, otherwise to the last attribute of a ring that runs through the attributes' next
/// links. The map holds one reference on each attribute; the element holds the map's one.
class ZQCOMMON_API AttrNodeMap : public ZQNamedNodeMap {
  ZQ_DECLARE_TYPE(AttrNodeMap, ZQNamedNodeMap)

 public:
  /// An empty map of `owner`.
  explicit AttrNodeMap(ZQElement* owner);
  ~AttrNodeMap() override;

  /// Maps come from the tree's own pool of small objects, as nodes do.
  static void* operator new(std::size_t size);
  static void operator delete(void* p, std::size_t size) noexcept;

  ZQNode* getFirstNode() override;
  ZQNode* getLastNode() override;
  /// Null for null, for the last attribute and for a node of another element.
  ZQNode* getNextNode(ZQNode* node) override;
  /// Null for the first attribute and for a node that is not in the ring.
  ZQNode* getPreviousNode(ZQNode* node) override;

  int getLength() override;
  ZQAttr* item(int index) override;
  ZQAttr* getNamedItem(ZQName qname) override;
  ZQAttr* getNamedItemNS(ZQName uri, ZQName localName) override;
  void getNamedItemLocal(ZQName localName, std::vector<ZQPtr<ZQAttr>>* result) override;
  ZQPtr<ZQAttr> setNamedItem(ZQAttr* attr) override;
  ZQPtr<ZQAttr> setNamedItemNS(ZQAttr* attr) override;
  ZQPtr<ZQAttr> removeNamedItem(ZQName qname) override;
  ZQPtr<ZQAttr> removeNamedItemNS(ZQName uri, ZQName localName) override;

  /// The element whose attributes these are, or null once it is gone.
  ZQElement* getOwnerElement() const;
  /// True while the ring holds no attribute.
  bool isEmpty() const { return lastAttr() == nullptr; }

 private:
  friend class ZQElement;

  ZQAttr* lastAttr() const;
  static ZQAttr* nextAttr(const ZQAttr* attr);
  /// Puts `attr`, already counted and owned, at the end of the ring.
  void linkLast(ZQAttr* attr);
  /// Takes a new reference on `attr` and appends it without checks or search.
  void appendNew(ZQAttr* attr);
  /// Appends `attr` of `owner`, taking over the caller's reference, without checks or search.
  void adoptNew(ZQAttr* attr, ZQElement* owner);
  /// Unlinks `attr`, whose predecessor in the ring is `previous`; the map's reference comes
  /// back in the result.
  ZQPtr<ZQAttr> unlink(ZQAttr* attr, ZQAttr* previous);
  ZQPtr<ZQAttr> setItem(ZQAttr* attr, bool byNamespace);
  /// Lets go of every attribute and of the owner.
  void clear();

  ZQNode* m_node;
};

/// An element: a node with attributes and a source position.
class ZQCOMMON_API ZQElement : public ZQNode {
  ZQ_DECLARE_TYPE(ZQElement, ZQNode)

 public:
  ~ZQElement() override;

  // ---- ZQNode ----

  ZQNodeType getNodeType() const override { return ELEMENT_NODE; }
  bool isElementNode() const override { return true; }
  /// The attribute map.
  ZQNamedNodeMap* getAttributes() const override;
  /// True while the element carries at least one attribute.
  bool hasAttributes() const override;
  /// An ElementNS of the owner document with copies of the attributes and the flags, and for
  /// `deep` clones of the children. Deep trees are cloned without deep recursion.
  ZQPtr<ZQNode> cloneNode(bool deep) const override;
  ZQName lookupPrefix(ZQName uri) const override;
  bool isDefaultNamespace(ZQName uri) const override;
  ZQName lookupNamespaceUri(ZQName prefix) const override;
  /// The base URI after the xml:base attributes of this element and its ancestors.
  UnicodeString getBaseUri() const override;
  /// The stored line, else the previous sibling's or the parent's.
  int getSourceLineNumber() const override;
  void setSourceLineNumber(int line) override { m_sourceLine = line; }
  /// The stored column, else the previous sibling's or the parent's.
  int getSourceColumnNumber() const override;
  void setSourceColumnNumber(int column) override { m_sourceColumn = column; }

  // ---- virtual operations added behind those of ZQNode, in their fixed order ----

  /// The value of the attribute of that qualified name, or the null value.
  virtual ZQValue getAttribute(ZQName qname) const;
  /// The value of the attribute of that namespace and local name, or the null value.
  virtual ZQValue getAttributeNS(ZQName uri, ZQName localName) const;
  /// Sets the value of the attribute of that qualified name, adding it at the end if new.
  virtual void setAttribute(ZQName qname, const ZQValue& value);
  /// Sets the value (and the prefix) of the attribute of that namespace and local name,
  /// adding it at the end if new.
  virtual void setAttributeNS(ZQName uri, ZQName prefix, ZQName localName, const ZQValue& value);
  /// Splits `qname` and sets as the four-name form.
  virtual void setAttributeNS(ZQName uri, ZQName qname, const ZQValue& value);
  /// Removes the attribute of that qualified name, if any.
  virtual void removeAttribute(ZQName qname);
  /// Removes the attribute of that namespace and local name, if any.
  virtual void removeAttributeNS(ZQName uri, ZQName localName);
  /// The attribute node of that qualified name, or null.
  virtual ZQAttr* getAttributeNode(ZQName qname) const;
  /// The attribute node of that namespace and local name, or null.
  virtual ZQAttr* getAttributeNodeNS(ZQName uri, ZQName localName) const;
  /// Appends every attribute of that local name to `result`; nothing for a null `result`.
  virtual void getAttributeNodeLocal(ZQName localName, std::vector<ZQPtr<ZQAttr>>* result) const;
  /// Adds a detached attribute; the one it replaces comes back.
  virtual ZQPtr<ZQAttr> setAttributeNode(ZQAttr* attr);
  /// As setAttributeNode, matching by namespace and local name.
  virtual ZQPtr<ZQAttr> setAttributeNodeNS(ZQAttr* attr);
  /// Unlinks exactly `attr` and returns it; empty if it is not an attribute here.
  virtual ZQPtr<ZQAttr> removeAttributeNode(ZQAttr* attr);
  virtual bool hasAttribute(ZQName qname) const;
  virtual bool hasAttributeNS(ZQName uri, ZQName localName) const;
  /// True if any attribute has that local name, whatever its prefix.
  virtual bool hasAttributeLocal(ZQName localName) const;
  /// Sets a string value holding a copy of `text`: what the loader fills elements through.
  virtual void setAttributeEx(ZQName uri, ZQName prefix, ZQName localName,
                              const UnicodeString& text);

  // ---- not virtual ----

  /// Appends to `values` the value of every attribute of that local name, in ring order;
  /// nothing for a null `values`.
  void getAttributeLocal(ZQName localName, std::vector<ZQValue>* values) const;
  /// The namespace declared here for `prefix` (an xmlns attribute), or the empty name.
  ZQName getAttributeXMLNS(ZQName prefix) const;
  /// Declares `uri` for `prefix` with an xmlns attribute.
  void setAttributeXMLNS(ZQName uri, ZQName prefix);
  /// Removes the xmlns attribute of `prefix`.
  void removeAttributeXMLNS(ZQName prefix);

 protected:
  /// An element of `ownerDocument` with an empty attribute map and no source position.
  explicit ZQElement(ZQDocument* ownerDocument);

 private:
  friend class AttrNodeMap;

  /// Steps 1-3 of a clone: the element, its attributes and flags, without children.
  ZQPtr<ZQNode> cloneShallow() const;
  /// The map's attributes when there are any, else null.
  AttrNodeMap* attributeMap() const { return m_attributes.get(); }

  ZQPtr<AttrNodeMap> m_attributes;
  int m_sourceLine;
  int m_sourceColumn;
};

/// An element that holds its qualified name only; its namespace comes from the xmlns
/// attributes in scope, asked at each call.
class ZQCOMMON_API Element : public ZQElement {
  ZQ_DECLARE_TYPE(Element, ZQElement)

 public:
  Element(ZQDocument* ownerDocument, ZQName prefix, ZQName localName);
  ~Element() override;

  ZQName getLocalName() const override { return m_localName; }
  ZQName getPrefix() const override { return m_prefix; }
  void setPrefix(ZQName prefix) override { m_prefix = prefix; }
  /// The namespace bound to the prefix in scope.
  ZQName getNamespaceUri() const override;

 private:
  ZQName m_prefix;
  ZQName m_localName;
};

/// An element with a stored namespace, which no operation changes.
class ZQCOMMON_API ElementNS : public Element {
  ZQ_DECLARE_TYPE(ElementNS, Element)

 public:
  ElementNS(ZQDocument* ownerDocument, ZQName uri, ZQName prefix, ZQName localName);
  ~ElementNS() override;

  /// The stored namespace.
  ZQName getNamespaceUri() const override { return m_namespace; }

 private:
  ZQName m_namespace;
};

}  // namespace ZQCommonNS
