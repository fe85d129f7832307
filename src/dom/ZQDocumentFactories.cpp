// The document's factories of elements and attributes.
#include "common/ZQDocument.h"
#include "common/ZQElement.h"
#include "common/ZQXmlUtil.h"

namespace ZQCommonNS {

ZQPtr<ZQElement> ZQDocument::createElement(ZQName qname) {
  return ZQPtr<ZQElement>(new Element(this, ZQXmlUtil::getPrefixFromQName(qname),
                                      ZQXmlUtil::getLocalPartFromQName(qname)));
}

ZQPtr<ZQElement> ZQDocument::createElementNS(ZQName uri, ZQName prefix, ZQName localName) {
  return ZQPtr<ZQElement>(new ElementNS(this, uri, prefix, localName));
}

ZQPtr<ZQElement> ZQDocument::createElementNS(ZQName uri, ZQName qname) {
  return createElementNS(uri, ZQXmlUtil::getPrefixFromQName(qname),
                         ZQXmlUtil::getLocalPartFromQName(qname));
}

ZQPtr<ZQAttr> ZQDocument::createAttribute(ZQName qname) {
  // The reserved prefixes bring their namespaces with them.
  ZQName prefix = ZQXmlUtil::getPrefixFromQName(qname);
  ZQName localName = ZQXmlUtil::getLocalPartFromQName(qname);
  if (qname == ZQN_xmlns || prefix == ZQN_xmlns)
    return ZQPtr<ZQAttr>(new AttrNS(this, ZQName(ZQN_NS_XMLNS), prefix, localName));
  if (prefix == ZQN_xml)
    return ZQPtr<ZQAttr>(new AttrNS(this, ZQName(ZQN_NS_XML), prefix, localName));
  if (!prefix.isEmpty()) return ZQPtr<ZQAttr>(new AttrNS(this, ZQName(), prefix, localName));
  return ZQPtr<ZQAttr>(new Attr(this, qname));
}

ZQPtr<ZQAttr> ZQDocument::createAttributeNS(ZQName uri, ZQName prefix, ZQName localName) {
  if (uri.isEmpty() && prefix.isEmpty()) return ZQPtr<ZQAttr>(new Attr(this, localName));
  return ZQPtr<ZQAttr>(new AttrNS(this, uri, prefix, localName));
}

ZQPtr<ZQAttr> ZQDocument::createAttributeNS(ZQName uri, ZQName qname) {
  return createAttributeNS(uri, ZQXmlUtil::getPrefixFromQName(qname),
                           ZQXmlUtil::getLocalPartFromQName(qname));
}

}  // namespace ZQCommonNS
