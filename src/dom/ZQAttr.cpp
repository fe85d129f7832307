// Attribute nodes: a value with a name, and the namespace form with a prefix.
#include "common/ZQElement.h"
#include "common/ZQXmlUtil.h"

namespace ZQCommonNS {

ZQAttr::ZQAttr(ZQDocument* ownerDocument) : ZQNode(ownerDocument) {}

ZQAttr::~ZQAttr() = default;

ZQElement* ZQAttr::ownerElementField() const { return static_cast<ZQElement*>(m_parent); }

UnicodeString ZQAttr::getText() const { return getValue().toString(); }

void ZQAttr::setText(const UnicodeString& text) { setValue(ZQValue(text, ZQUNIT_NONE)); }

ZQName ZQAttr::lookupPrefix(ZQName uri) const {
  const ZQElement* owner = getOwnerElement();
  return owner ? owner->lookupPrefix(uri) : ZQName();
}

bool ZQAttr::isDefaultNamespace(ZQName uri) const {
  const ZQElement* owner = getOwnerElement();
  return owner ? owner->isDefaultNamespace(uri) : false;
}

ZQName ZQAttr::lookupNamespaceUri(ZQName prefix) const {
  const ZQElement* owner = getOwnerElement();
  return owner ? owner->lookupNamespaceUri(prefix) : ZQName();
}

Attr::Attr(ZQDocument* ownerDocument, ZQName name)
    : ZQAttr(ownerDocument), m_value(ZQValue::NULL_VALUE, name) {}

Attr::~Attr() = default;

AttrNS::AttrNS(ZQDocument* ownerDocument, ZQName uri, ZQName prefix, ZQName localName)
    : Attr(ownerDocument, localName), m_namespace(uri), m_prefix(prefix) {}

AttrNS::~AttrNS() = default;

ZQName AttrNS::getNodeName() const { return ZQXmlUtil::makeQName(m_prefix, getLocalName()); }

ZQName AttrNS::getNamespaceUri() const {
  // A prefixed attribute made without a namespace finds it in scope, at each call.
  if (m_namespace.isEmpty() && !m_prefix.isEmpty()) return lookupNamespaceUri(m_prefix);
  return m_namespace;
}

}  // namespace ZQCommonNS
