// Attribute nodes, the attribute map and the document's attribute factories.
#include <gtest/gtest.h>

#include <vector>

#include "ElementTestSupport.h"
#include "common/ZQDocument.h"
#include "common/ZQElement.h"
#include "common/ZQValueArray.h"

using namespace ZQCommonNS;
using zqtest::N;
using zqtest::ringOf;
using zqtest::S;
using zqtest::thrownBy;
using zqtest::u;
using zqtest::utf8;

namespace {

/// An attribute class that claims to be something else, as a faulty derived class might.
class NotAnAttr : public Attr {
 public:
  NotAnAttr(ZQDocument* document, ZQName name) : Attr(document, name) {}
  ZQNodeType getNodeType() const override { return ELEMENT_NODE; }
};

class AttrTest : public ::testing::Test {
 protected:
  ZQPtr<ZQDocument> doc{new ZQDocument()};
  ZQPtr<ZQElement> elem{doc->createElement(N("e"))};
};

}  // namespace

// ---- identity and factories ----

TEST_F(AttrTest, AttrAnswersTheNumberAndNameOfZQAttr) {
  ZQPtr<ZQAttr> plain = doc->createAttribute(N("a"));
  EXPECT_EQ(plain->getTypeID(), ZQAttr::getStaticTypeID());
  EXPECT_EQ(plain->getTypeID(), 0x507DD55Fu);
  EXPECT_EQ(utf8(plain->getTypeName()), "ZQAttr");
  ZQPtr<ZQAttr> ns = doc->createAttribute(N("p:a"));
  EXPECT_EQ(ns->getTypeID(), 0xF2136280u);
  EXPECT_EQ(utf8(ns->getTypeName()), "AttrNS");
  for (unsigned id : {0x507DD55Fu, 0xFF72074Au, 0xD18D040Au, 0xDF537371u})
    EXPECT_TRUE(ns->isA(id)) << std::hex << id;
  EXPECT_FALSE(plain->isA(AttrNS::getStaticTypeID()));
  EXPECT_FALSE(ns->isA(ZQElement::getStaticTypeID()));
}

TEST_F(AttrTest, CreateAttributeWithoutPrefixIsAPlainAttr) {
  ZQPtr<ZQAttr> attr = doc->createAttribute(N("width"));
  EXPECT_FALSE(attr->isA(AttrNS::getStaticTypeID()));
  EXPECT_EQ(attr->getNodeName(), N("width"));
  EXPECT_EQ(attr->getLocalName(), N("width"));
  EXPECT_TRUE(attr->getPrefix().isEmpty());
  EXPECT_TRUE(attr->getNamespaceUri().isEmpty());
  EXPECT_EQ(attr->getRefCount(), 1);
  EXPECT_EQ(attr->getOwnerDocument(), doc.get());
}

TEST_F(AttrTest, CreateAttributeSuppliesTheReservedNamespaces) {
  ZQPtr<ZQAttr> xmlns = doc->createAttribute(N("xmlns"));
  ASSERT_TRUE(xmlns->isA(AttrNS::getStaticTypeID()));
  EXPECT_EQ(xmlns->getNamespaceUri(), ZQName(ZQN_NS_XMLNS));
  EXPECT_TRUE(xmlns->getPrefix().isEmpty());
  EXPECT_EQ(xmlns->getLocalName(), N("xmlns"));

  ZQPtr<ZQAttr> decl = doc->createAttribute(N("xmlns:svg"));
  EXPECT_EQ(decl->getNamespaceUri(), ZQName(ZQN_NS_XMLNS));
  EXPECT_EQ(decl->getPrefix(), N("xmlns"));
  EXPECT_EQ(decl->getLocalName(), N("svg"));
  EXPECT_EQ(decl->getNodeName(), N("xmlns:svg"));

  ZQPtr<ZQAttr> lang = doc->createAttribute(N("xml:lang"));
  EXPECT_EQ(lang->getNamespaceUri(), ZQName(ZQN_NS_XML));
  EXPECT_EQ(lang->getPrefix(), N("xml"));
  EXPECT_EQ(lang->getLocalName(), N("lang"));

  ZQPtr<ZQAttr> other = doc->createAttribute(N("fo:color"));
  ASSERT_TRUE(other->isA(AttrNS::getStaticTypeID()));
  EXPECT_TRUE(other->getNamespaceUri().isEmpty());  // no owner, nothing in scope
  EXPECT_EQ(other->getPrefix(), N("fo"));
  EXPECT_EQ(other->getLocalName(), N("color"));
}

TEST_F(AttrTest, CreateAttributeNSIsPlainOnlyWithoutNamespaceAndPrefix) {
  ZQPtr<ZQAttr> plain = doc->createAttributeNS(ZQName(), ZQName(), N("a"));
  EXPECT_FALSE(plain->isA(AttrNS::getStaticTypeID()));
  ZQPtr<ZQAttr> withUri = doc->createAttributeNS(N("urn:x"), ZQName(), N("a"));
  EXPECT_TRUE(withUri->isA(AttrNS::getStaticTypeID()));
  EXPECT_EQ(withUri->getNamespaceUri(), N("urn:x"));
  EXPECT_EQ(withUri->getNodeName(), N("a"));
  ZQPtr<ZQAttr> withPrefix = doc->createAttributeNS(ZQName(), N("p"), N("a"));
  EXPECT_TRUE(withPrefix->isA(AttrNS::getStaticTypeID()));
  ZQPtr<ZQAttr> split = doc->createAttributeNS(N("urn:x"), N("p:a"));
  EXPECT_EQ(split->getPrefix(), N("p"));
  EXPECT_EQ(split->getLocalName(), N("a"));
  EXPECT_EQ(split->getNamespaceUri(), N("urn:x"));
}

// ---- node facts ----

TEST_F(AttrTest, AnAttributeIsNotAChildOfItsElement) {
  elem->setAttribute(N("a"), S("1"));
  elem->setAttribute(N("b"), S("2"));
  ZQAttr* a = elem->getAttributeNode(N("a"));
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(a->getNodeType(), ZQNode::ATTRIBUTE_NODE);
  EXPECT_EQ(a->getParentNode(), nullptr);
  EXPECT_EQ(a->getPreviousSibling(), nullptr);
  EXPECT_EQ(a->getNextSibling(), nullptr);
  EXPECT_EQ(a->getOwnerElement(), elem.get());
  EXPECT_FALSE(elem->hasChildNodes());
}

TEST_F(AttrTest, NodeValueIsTheValueAndTextIsItsString) {
  elem->setAttribute(N("a"), ZQValue(12));
  ZQAttr* a = elem->getAttributeNode(N("a"));
  EXPECT_EQ(a->getNodeValue(), ZQValue(12));
  EXPECT_EQ(utf8(a->getText()), "12");
  a->setNodeValue(ZQValue(N("bold")));
  EXPECT_EQ(a->getValue().getNameValue(), N("bold"));
  a->setText(u("10pt"));
  EXPECT_TRUE(a->getValue().isString());
  EXPECT_EQ(utf8(a->getValue().toString()), "10pt");
  EXPECT_EQ(a->getNodeName(), N("a"));  // the name bits survive every value change
}

TEST_F(AttrTest, SetValueKeepsTheNameAndCountsAnObjectPayload) {
  ZQPtr<ZQAttr> attr = doc->createAttribute(N("list"));
  ZQPtr<ZQValueArray> array(new ZQValueArray());
  array->addItem(ZQValue(1));
  EXPECT_EQ(array->getRefCount(), 1);
  attr->setValue(ZQValue(array.get()));
  EXPECT_EQ(array->getRefCount(), 2);
  EXPECT_EQ(attr->getLocalName(), N("list"));
  EXPECT_EQ(attr->getValue().getValueArray(), array.get());
  UnicodeString text(u"copied");
  attr->setValue(ZQValue(text, ZQUNIT_NONE));
  text.append(u"!");
  EXPECT_EQ(utf8(attr->getText()), "copied");
  EXPECT_EQ(array->getRefCount(), 1);
  EXPECT_EQ(attr->getLocalName(), N("list"));
}

TEST_F(AttrTest, AnAttributeCannotBeClonedAlone) {
  ZQPtr<ZQAttr> attr = doc->createAttribute(N("a"));
  EXPECT_EQ(attr->cloneNode(true), nullptr);
  EXPECT_EQ(attr->cloneNode(false), nullptr);
}

TEST_F(AttrTest, PlainAttrIgnoresAPrefix) {
  ZQPtr<ZQAttr> attr = doc->createAttribute(N("a"));
  attr->setPrefix(N("p"));
  EXPECT_TRUE(attr->getPrefix().isEmpty());
  EXPECT_EQ(attr->getNodeName(), N("a"));
}

TEST_F(AttrTest, AttrNSNamesAndPrefix) {
  ZQPtr<ZQAttr> attr = doc->createAttributeNS(N("urn:x"), N("p"), N("a"));
  EXPECT_EQ(attr->getNodeName(), N("p:a"));
  attr->setPrefix(N("q"));
  EXPECT_EQ(attr->getPrefix(), N("q"));
  EXPECT_EQ(attr->getNodeName(), N("q:a"));
  EXPECT_EQ(attr->getNamespaceUri(), N("urn:x"));  // a stored namespace never changes
}

TEST_F(AttrTest, APrefixWithoutStoredNamespaceIsLookedUpAtEachCall) {
  elem->setAttribute(N("p:a"), S("v"));
  ZQAttr* attr = elem->getAttributeNode(N("p:a"));
  ASSERT_NE(attr, nullptr);
  EXPECT_TRUE(attr->getNamespaceUri().isEmpty());
  elem->setAttributeXMLNS(N("urn:p"), N("p"));
  EXPECT_EQ(attr->getNamespaceUri(), N("urn:p"));
  elem->setAttributeXMLNS(N("urn:p2"), N("p"));
  EXPECT_EQ(attr->getNamespaceUri(), N("urn:p2"));
}

TEST_F(AttrTest, NamespaceLookUpsOfAnAttributeAskItsOwner) {
  elem->setAttributeXMLNS(N("urn:p"), N("p"));
  elem->setAttribute(N("a"), S("1"));
  ZQAttr* a = elem->getAttributeNode(N("a"));
  EXPECT_EQ(a->lookupNamespaceUri(N("p")), N("urn:p"));
  EXPECT_EQ(a->lookupPrefix(N("urn:p")), N("p"));
  EXPECT_FALSE(a->isDefaultNamespace(N("urn:p")));
  ZQPtr<ZQAttr> detached = doc->createAttribute(N("b"));
  EXPECT_TRUE(detached->lookupNamespaceUri(N("p")).isEmpty());
  EXPECT_TRUE(detached->lookupPrefix(N("urn:p")).isEmpty());
  EXPECT_FALSE(detached->isDefaultNamespace(ZQName()));
}

// ---- the map ----

TEST_F(AttrTest, MapWalksTheRingInInsertionOrder) {
  AttrNodeMap* map = static_cast<AttrNodeMap*>(elem->getAttributes());
  ASSERT_NE(map, nullptr);
  EXPECT_EQ(map->getTypeID(), 0x95F69A2Cu);
  EXPECT_TRUE(map->isA(ZQNamedNodeMap::getStaticTypeID()));
  EXPECT_TRUE(map->isA(ZQNodeIterable::getStaticTypeID()));
  EXPECT_EQ(map->getLength(), 0);
  EXPECT_EQ(map->getFirstNode(), nullptr);
  EXPECT_EQ(map->getLastNode(), nullptr);
  EXPECT_EQ(map->item(0), nullptr);
  EXPECT_EQ(map->getOwnerElement(), elem.get());

  elem->setAttribute(N("c"), S("1"));
  elem->setAttribute(N("a"), S("2"));
  elem->setAttribute(N("b"), S("3"));
  EXPECT_EQ(map->getLength(), 3);
  ZQAttr* c = map->item(0);
  ZQAttr* a = map->item(1);
  ZQAttr* b = map->item(2);
  EXPECT_EQ(c->getLocalName(), N("c"));
  EXPECT_EQ(a->getLocalName(), N("a"));
  EXPECT_EQ(b->getLocalName(), N("b"));
  EXPECT_EQ(map->item(3), nullptr);
  EXPECT_EQ(map->item(-1), nullptr);
  EXPECT_EQ(map->getFirstNode(), c);
  EXPECT_EQ(map->getLastNode(), b);
  EXPECT_EQ(map->getNextNode(c), a);
  EXPECT_EQ(map->getNextNode(a), b);
  EXPECT_EQ(map->getNextNode(b), nullptr);
  EXPECT_EQ(map->getNextNode(nullptr), nullptr);
  EXPECT_EQ(map->getPreviousNode(b), a);
  EXPECT_EQ(map->getPreviousNode(a), c);
  EXPECT_EQ(map->getPreviousNode(c), nullptr);
  EXPECT_EQ(map->getOwnerElement(), elem.get());
}

TEST_F(AttrTest, PreviousNodeOfAStrangerIsNull) {
  elem->setAttribute(N("a"), S("1"));
  ZQPtr<ZQElement> other = doc->createElement(N("o"));
  other->setAttribute(N("x"), S("1"));
  other->setAttribute(N("y"), S("1"));
  ZQNamedNodeMap* map = elem->getAttributes();
  EXPECT_EQ(map->getPreviousNode(other->getAttributeNode(N("y"))), nullptr);
  EXPECT_EQ(map->getNextNode(other->getAttributeNode(N("x"))), nullptr);
}

TEST_F(AttrTest, IteratorOfTheMapGoesRoundOnce) {
  elem->setAttribute(N("a"), S("1"));
  elem->setAttribute(N("b"), S("2"));
  ZQNodeIterator it = elem->getAttributes()->getIterator();
  std::vector<ZQNode*> seen;
  while (it.hasNextNode()) seen.push_back(it.nextNode());
  ASSERT_EQ(seen.size(), 2u);
  EXPECT_EQ(seen[0], elem->getAttributeNode(N("a")));
  EXPECT_EQ(seen[1], elem->getAttributeNode(N("b")));
}

TEST_F(AttrTest, NamedLookUpsCompareQualifiedOrLocalAndNamespace) {
  elem->setAttributeNS(N("urn:x"), N("p"), N("a"), S("1"));
  elem->setAttributeNS(N("urn:y"), N("q"), N("a"), S("2"));
  elem->setAttribute(N("a"), S("3"));
  ZQNamedNodeMap* map = elem->getAttributes();
  EXPECT_EQ(utf8(map->getNamedItem(N("q:a"))->getText()), "2");
  EXPECT_EQ(utf8(map->getNamedItem(N("a"))->getText()), "3");
  EXPECT_EQ(utf8(map->getNamedItemNS(N("urn:y"), N("a"))->getText()), "2");
  EXPECT_EQ(utf8(map->getNamedItemNS(ZQName(), N("a"))->getText()), "3");
  EXPECT_EQ(map->getNamedItemNS(N("urn:z"), N("a")), nullptr);
  std::vector<ZQPtr<ZQAttr>> all;
  map->getNamedItemLocal(N("a"), &all);
  ASSERT_EQ(all.size(), 3u);
  EXPECT_EQ(utf8(all[0]->getText()), "1");
  EXPECT_EQ(utf8(all[2]->getText()), "3");
  map->getNamedItemLocal(N("a"), nullptr);  // nothing to fill, nothing happens
}

TEST_F(AttrTest, RemoveNamedItemHandsOverTheMapsReference) {
  elem->setAttribute(N("a"), S("1"));
  elem->setAttribute(N("b"), S("2"));
  elem->setAttribute(N("c"), S("3"));
  ZQNamedNodeMap* map = elem->getAttributes();
  ZQAttr* b = elem->getAttributeNode(N("b"));
  EXPECT_EQ(b->getRefCount(), 1);
  ZQPtr<ZQAttr> removed = map->removeNamedItem(N("b"));
  EXPECT_EQ(removed.get(), b);
  EXPECT_EQ(b->getRefCount(), 1);
  EXPECT_EQ(b->getOwnerElement(), nullptr);
  EXPECT_EQ(ringOf(elem), "a=1 c=3");
  EXPECT_EQ(map->removeNamedItem(N("b")), nullptr);
  ZQPtr<ZQAttr> last = map->removeNamedItemNS(ZQName(), N("c"));
  ASSERT_NE(last, nullptr);
  EXPECT_EQ(ringOf(elem), "a=1");
  EXPECT_EQ(map->getLastNode(), elem->getAttributeNode(N("a")));
  EXPECT_EQ(map->removeNamedItemNS(N("urn:x"), N("a")), nullptr);
}

TEST_F(AttrTest, SetNamedItemNSReplacesByNamespaceAndLocalName) {
  elem->setAttributeNS(N("urn:x"), N("p"), N("a"), S("1"));
  elem->setAttribute(N("z"), S("2"));
  ZQPtr<ZQAttr> fresh = doc->createAttributeNS(N("urn:x"), N("q"), N("a"));
  fresh->setText(u("new"));
  ZQPtr<ZQAttr> old = elem->getAttributes()->setNamedItemNS(fresh.get());
  ASSERT_NE(old, nullptr);
  EXPECT_EQ(old->getPrefix(), N("p"));
  EXPECT_EQ(old->getOwnerElement(), nullptr);
  EXPECT_EQ(ringOf(elem), "q:a=new z=2");
  EXPECT_EQ(fresh->getOwnerElement(), elem.get());
  EXPECT_EQ(fresh->getRefCount(), 2);  // ours and the map's
}

TEST_F(AttrTest, SetNamedItemOfANewNameGoesToTheEnd) {
  elem->setAttribute(N("a"), S("1"));
  ZQPtr<ZQAttr> fresh = doc->createAttribute(N("b"));
  fresh->setText(u("2"));
  EXPECT_EQ(elem->getAttributes()->setNamedItem(fresh.get()), nullptr);
  EXPECT_EQ(ringOf(elem), "a=1 b=2");
  EXPECT_EQ(elem->getAttributes()->getLastNode(), fresh.get());
}

TEST_F(AttrTest, ReplacingTheOnlyAndTheLastAttributeKeepsTheRingClosed) {
  elem->setAttribute(N("a"), S("1"));
  ZQPtr<ZQAttr> onlyOne = doc->createAttribute(N("a"));
  onlyOne->setText(u("2"));
  EXPECT_NE(elem->setAttributeNode(onlyOne.get()), nullptr);
  ZQNamedNodeMap* map = elem->getAttributes();
  EXPECT_EQ(map->getFirstNode(), onlyOne.get());
  EXPECT_EQ(map->getLastNode(), onlyOne.get());
  EXPECT_EQ(map->getLength(), 1);

  elem->setAttribute(N("b"), S("3"));
  ZQPtr<ZQAttr> last = doc->createAttribute(N("b"));
  last->setText(u("4"));
  EXPECT_NE(elem->setAttributeNode(last.get()), nullptr);
  EXPECT_EQ(map->getLastNode(), last.get());
  EXPECT_EQ(map->getNextNode(onlyOne.get()), last.get());
  EXPECT_EQ(ringOf(elem), "a=2 b=4");
}

// ---- failures of setNamedItem and setNamedItemNS ----

TEST_F(AttrTest, SetNamedItemOfNullFailsWithCode3) {
  ZQError error = thrownBy([&] { elem->getAttributes()->setNamedItem(nullptr); });
  EXPECT_EQ(error.getErrorCode(), 3);
  EXPECT_EQ(utf8(error.getRawMessage()), "SYSTEM ERROR: arg is null.");
  EXPECT_EQ(utf8(error.getSource()), "ZQCommonNS::AttrNodeMap::setNamedItem");
  error = thrownBy([&] { elem->getAttributes()->setNamedItemNS(nullptr); });
  EXPECT_EQ(error.getErrorCode(), 3);
  EXPECT_EQ(utf8(error.getRawMessage()), "SYSTEM ERROR: arg is null.");
  EXPECT_EQ(utf8(error.getSource()), "ZQCommonNS::AttrNodeMap::setNamedItemNS");
}

TEST_F(AttrTest, SetNamedItemFromAnotherDocumentFailsWithCode6) {
  ZQPtr<ZQDocument> other(new ZQDocument());
  ZQPtr<ZQAttr> stranger = other->createAttribute(N("a"));
  elem->setAttribute(N("a"), S("1"));
  ZQError error = thrownBy([&] { elem->getAttributes()->setNamedItem(stranger.get()); });
  EXPECT_EQ(error.getErrorCode(), 6);
  EXPECT_EQ(utf8(error.getRawMessage()), "SYSTEM ERROR: arg is created from a different document.");
  EXPECT_EQ(utf8(error.getSource()), "ZQCommonNS::AttrNodeMap::setNamedItem");
  error = thrownBy([&] { elem->setAttributeNodeNS(stranger.get()); });
  EXPECT_EQ(error.getErrorCode(), 6);
  EXPECT_EQ(utf8(error.getSource()), "ZQCommonNS::AttrNodeMap::setNamedItemNS");
  EXPECT_EQ(ringOf(elem), "a=1");
  EXPECT_EQ(stranger->getOwnerElement(), nullptr);
  EXPECT_EQ(stranger->getRefCount(), 1);
}

TEST_F(AttrTest, SetNamedItemOfANonAttributeFailsWithCode7) {
  ZQPtr<ZQAttr> odd(new NotAnAttr(doc.get(), N("a")));
  ZQError error = thrownBy([&] { elem->setAttributeNode(odd.get()); });
  EXPECT_EQ(error.getErrorCode(), 7);
  EXPECT_EQ(utf8(error.getRawMessage()), "SYSTEM ERROR: arg is not an ZQAttr object.");
  EXPECT_EQ(utf8(error.getSource()), "ZQCommonNS::AttrNodeMap::setNamedItem");
  error = thrownBy([&] { elem->getAttributes()->setNamedItemNS(odd.get()); });
  EXPECT_EQ(error.getErrorCode(), 7);
  EXPECT_EQ(utf8(error.getSource()), "ZQCommonNS::AttrNodeMap::setNamedItemNS");
  EXPECT_FALSE(elem->hasAttributes());
}

TEST_F(AttrTest, SetNamedItemOfAnOwnedAttributeFailsWithCode8) {
  ZQPtr<ZQElement> other = doc->createElement(N("o"));
  other->setAttribute(N("a"), S("1"));
  ZQAttr* owned = other->getAttributeNode(N("a"));
  ZQError error = thrownBy([&] { elem->setAttributeNode(owned); });
  EXPECT_EQ(error.getErrorCode(), 8);
  EXPECT_EQ(utf8(error.getRawMessage()),
            "SYSTEM ERROR: arg is an ZQAttr that is already an attribute of another ZQElement "
            "object.");
  EXPECT_EQ(utf8(error.getSource()), "ZQCommonNS::AttrNodeMap::setNamedItem");
  error = thrownBy([&] { elem->setAttributeNodeNS(owned); });
  EXPECT_EQ(error.getErrorCode(), 8);
  EXPECT_EQ(utf8(error.getSource()), "ZQCommonNS::AttrNodeMap::setNamedItemNS");
  EXPECT_EQ(owned->getOwnerElement(), other.get());
  EXPECT_FALSE(elem->hasAttributes());
}

TEST_F(AttrTest, TheMapIsOnePointerAndTheElementHoldsItOnce) {
  EXPECT_EQ(sizeof(AttrNodeMap), sizeof(ZQNamedNodeMap) + sizeof(void*));
  EXPECT_EQ(sizeof(Attr), sizeof(ZQAttr) + sizeof(ZQNamedValue));
  EXPECT_EQ(sizeof(ZQAttr), sizeof(ZQNode));
  EXPECT_EQ(elem->getAttributes()->getRefCount(), 1);
  elem->setAttribute(N("a"), S("1"));
  EXPECT_EQ(elem->getAttributes()->getRefCount(), 1);
  EXPECT_EQ(elem->getAttributeNode(N("a"))->getRefCount(), 1);  // the map's one reference
}
