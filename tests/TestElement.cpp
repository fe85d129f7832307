// Elements: attribute operations, namespace look-ups, base URIs, positions and cloning.
#include <gtest/gtest.h>

#include <vector>

#include "ElementTestSupport.h"
#include "common/ZQDocument.h"
#include "common/ZQElement.h"

using namespace ZQCommonNS;
using zqtest::N;
using zqtest::ringOf;
using zqtest::S;
using zqtest::thrownBy;
using zqtest::u;
using zqtest::utf8;

namespace {

class ElementTest : public ::testing::Test {
 protected:
  ZQPtr<ZQDocument> doc{new ZQDocument()};
  ZQPtr<ZQElement> elem{doc->createElement(N("e"))};

  /// A new plain element appended under `parent`.
  ZQElement* child(ZQNode* parent, const char* qname) {
    ZQPtr<ZQElement> made = doc->createElement(N(qname));
    parent->appendChild(made.get());
    return made.get();
  }
};

}  // namespace

// ---- classes and factories ----

TEST_F(ElementTest, TypeNumbersAndNames) {
  EXPECT_EQ(elem->getTypeID(), 0x883D36C4u);
  EXPECT_EQ(utf8(elem->getTypeName()), "Element");
  EXPECT_TRUE(elem->isA(0x9B60777Du));
  EXPECT_TRUE(elem->isA(0xFF72074Au));
  EXPECT_FALSE(elem->isA(ElementNS::getStaticTypeID()));
  ZQPtr<ZQElement> ns = doc->createElementNS(N("urn:x"), N("p:e"));
  EXPECT_EQ(ns->getTypeID(), 0x92C5C0B8u);
  EXPECT_EQ(utf8(ns->getTypeName()), "ElementNS");
  EXPECT_TRUE(ns->isA(Element::getStaticTypeID()));
  EXPECT_TRUE(ns->isA(ZQElement::getStaticTypeID()));
  EXPECT_EQ(ns->getNodeType(), ZQNode::ELEMENT_NODE);
  EXPECT_TRUE(ns->isElementNode());
}

TEST_F(ElementTest, CreateElementSplitsTheQualifiedName) {
  ZQPtr<ZQElement> e = doc->createElement(N("fo:block"));
  EXPECT_EQ(e->getTypeID(), Element::getStaticTypeID());
  EXPECT_EQ(e->getPrefix(), N("fo"));
  EXPECT_EQ(e->getLocalName(), N("block"));
  EXPECT_EQ(e->getNodeName(), N("fo:block"));
  EXPECT_EQ(e->getRefCount(), 1);
  EXPECT_EQ(e->getOwnerDocument(), doc.get());
  e->setPrefix(N("x"));
  EXPECT_EQ(e->getNodeName(), N("x:block"));
}

TEST_F(ElementTest, CreateElementNSStoresTheNamespaceEvenWhenEmpty) {
  ZQPtr<ZQElement> e = doc->createElementNS(ZQName(), ZQName(), N("a"));
  EXPECT_EQ(e->getTypeID(), ElementNS::getStaticTypeID());
  EXPECT_TRUE(e->getNamespaceUri().isEmpty());
  ZQPtr<ZQElement> f = doc->createElementNS(N("urn:x"), N("p"), N("b"));
  EXPECT_EQ(f->getNamespaceUri(), N("urn:x"));
  EXPECT_EQ(f->getNodeName(), N("p:b"));
}

// ---- attributes ----

TEST_F(ElementTest, HasAttributesFollowsTheFirstSetAndTheLastRemoval) {
  EXPECT_FALSE(elem->hasAttributes());
  EXPECT_NE(elem->getAttributes(), nullptr);
  elem->setAttribute(N("a"), S("1"));
  EXPECT_TRUE(elem->hasAttributes());
  elem->removeAttribute(N("a"));
  EXPECT_FALSE(elem->hasAttributes());
  // The map keeps its owner, so attributes can be added again.
  elem->setAttribute(N("b"), S("2"));
  EXPECT_TRUE(elem->hasAttributes());
  EXPECT_EQ(elem->getAttributeNode(N("b"))->getOwnerElement(), elem.get());
}

TEST_F(ElementTest, SetAttributeOnAnExistingNameChangesOnlyTheValue) {
  elem->setAttribute(N("a"), S("1"));
  elem->setAttribute(N("b"), S("2"));
  elem->setAttribute(N("c"), S("3"));
  ZQAttr* before = elem->getAttributeNode(N("b"));
  elem->setAttribute(N("b"), ZQValue(42));
  EXPECT_EQ(elem->getAttributeNode(N("b")), before);
  EXPECT_EQ(ringOf(elem), "a=1 b=42 c=3");
  EXPECT_EQ(elem->getAttribute(N("b")), ZQValue(42));
}

TEST_F(ElementTest, SetAttributeMayStoreTheNullValue) {
  elem->setAttribute(N("a"), ZQValue::NULL_VALUE);
  EXPECT_TRUE(elem->hasAttribute(N("a")));
  EXPECT_TRUE(elem->getAttribute(N("a")).isNull());
}

TEST_F(ElementTest, GetAttributeOfAMissingNameIsTheNullValue) {
  EXPECT_TRUE(elem->getAttribute(N("nothing")).isNull());
  EXPECT_TRUE(elem->getAttributeNS(N("urn:x"), N("nothing")).isNull());
  EXPECT_EQ(elem->getAttributeNode(N("nothing")), nullptr);
  EXPECT_EQ(elem->getAttributeNodeNS(N("urn:x"), N("nothing")), nullptr);
  EXPECT_FALSE(elem->hasAttribute(N("nothing")));
  EXPECT_FALSE(elem->hasAttributeNS(ZQName(), N("nothing")));
  EXPECT_FALSE(elem->hasAttributeLocal(N("nothing")));
  elem->removeAttribute(N("nothing"));  // silent
  elem->removeAttributeNS(N("urn:x"), N("nothing"));
  EXPECT_FALSE(elem->hasAttributes());
}

TEST_F(ElementTest, SetAttributeNSWithANewPrefixChangesAnAttrNSAndIgnoresAPlainAttr) {
  elem->setAttributeNS(N("urn:x"), N("p"), N("a"), S("1"));
  ZQAttr* ns = elem->getAttributeNodeNS(N("urn:x"), N("a"));
  elem->setAttributeNS(N("urn:x"), N("q"), N("a"), S("2"));
  EXPECT_EQ(elem->getAttributeNodeNS(N("urn:x"), N("a")), ns);
  EXPECT_EQ(ns->getPrefix(), N("q"));
  EXPECT_EQ(utf8(ns->getText()), "2");

  elem->setAttribute(N("b"), S("3"));
  ZQAttr* plain = elem->getAttributeNode(N("b"));
  elem->setAttributeNS(ZQName(), N("r"), N("b"), S("4"));
  EXPECT_EQ(elem->getAttributeNodeNS(ZQName(), N("b")), plain);
  EXPECT_TRUE(plain->getPrefix().isEmpty());
  EXPECT_EQ(ringOf(elem), "q:a=2 b=4");
}

TEST_F(ElementTest, SetAttributeNSWithAQualifiedNameSplitsIt) {
  elem->setAttributeNS(N("urn:x"), N("p:a"), S("1"));
  ZQAttr* attr = elem->getAttributeNodeNS(N("urn:x"), N("a"));
  ASSERT_NE(attr, nullptr);
  EXPECT_EQ(attr->getPrefix(), N("p"));
  EXPECT_EQ(attr->getNodeName(), N("p:a"));
}

TEST_F(ElementTest, SetAttributeExStoresAStringCopy) {
  UnicodeString text(u"Helvetica");
  elem->setAttributeEx(ZQName(), ZQName(), N("font-family"), text);
  text.append(u"!");
  ZQValue value = elem->getAttribute(N("font-family"));
  EXPECT_TRUE(value.isString());
  EXPECT_EQ(utf8(value.toString()), "Helvetica");
  EXPECT_FALSE(elem->getAttributeNode(N("font-family"))->isA(AttrNS::getStaticTypeID()));
  elem->setAttributeEx(N("urn:x"), N("p"), N("a"), u("v"));
  EXPECT_TRUE(elem->getAttributeNode(N("p:a"))->isA(AttrNS::getStaticTypeID()));
}

TEST_F(ElementTest, GetAttributeByQualifiedNameFindsAnAttrNS) {
  elem->setAttributeNS(N("urn:a"), N("a"), N("b"), S("v"));
  ZQAttr* attr = elem->getAttributeNode(N("a:b"));
  ASSERT_NE(attr, nullptr);
  EXPECT_EQ(attr->getPrefix(), N("a"));
  EXPECT_EQ(attr->getLocalName(), N("b"));
  EXPECT_EQ(utf8(elem->getAttribute(N("a:b")).toString()), "v");
  EXPECT_TRUE(elem->getAttributeNS(N("urn:wrong"), N("b")).isNull());
  EXPECT_EQ(utf8(elem->getAttributeNS(N("urn:a"), N("b")).toString()), "v");
  EXPECT_TRUE(elem->hasAttribute(N("a:b")));
  EXPECT_FALSE(elem->hasAttribute(N("b")));
  EXPECT_FALSE(elem->hasAttributeNS(N("urn:wrong"), N("b")));
}

TEST_F(ElementTest, GetAttributeLocalFindsEveryPrefixInRingOrder) {
  elem->setAttributeNS(N("urn:a"), N("a"), N("b"), S("1"));
  elem->setAttribute(N("x"), S("0"));
  elem->setAttributeNS(N("urn:c"), N("c"), N("b"), S("2"));
  elem->setAttribute(N("b"), S("3"));
  std::vector<ZQValue> values;
  elem->getAttributeLocal(N("b"), &values);
  ASSERT_EQ(values.size(), 3u);
  EXPECT_EQ(utf8(values[0].toString()), "1");
  EXPECT_EQ(utf8(values[1].toString()), "2");
  EXPECT_EQ(utf8(values[2].toString()), "3");
  elem->getAttributeLocal(N("b"), nullptr);

  std::vector<ZQPtr<ZQAttr>> nodes;
  elem->getAttributeNodeLocal(N("b"), &nodes);
  ASSERT_EQ(nodes.size(), 3u);
  EXPECT_EQ(nodes[0]->getNodeName(), N("a:b"));
  EXPECT_EQ(nodes[1]->getNodeName(), N("c:b"));
  EXPECT_EQ(nodes[2]->getNodeName(), N("b"));
  elem->getAttributeNodeLocal(N("b"), nullptr);
  EXPECT_TRUE(elem->hasAttributeLocal(N("b")));
}

TEST_F(ElementTest, SetNamedItemOfAnAttributeOfTheSameElementFailsWithCode8) {
  elem->setAttribute(N("a"), S("1"));
  ZQAttr* own = elem->getAttributeNode(N("a"));
  ZQError error = thrownBy([&] { elem->getAttributes()->setNamedItem(own); });
  EXPECT_EQ(error.getErrorCode(), 8);
  EXPECT_EQ(utf8(error.getRawMessage()),
            "SYSTEM ERROR: arg is an ZQAttr that is already an attribute of another ZQElement "
            "object.");
  EXPECT_EQ(utf8(error.getSource()), "ZQCommonNS::AttrNodeMap::setNamedItem");
  EXPECT_EQ(ringOf(elem), "a=1");
  EXPECT_EQ(own->getRefCount(), 1);
}

TEST_F(ElementTest, SetAttributeNodeReturnsTheReplacedAttributeWithoutOwner) {
  elem->setAttribute(N("a"), S("1"));
  elem->setAttribute(N("b"), S("2"));
  ZQAttr* old = elem->getAttributeNode(N("a"));
  ZQPtr<ZQAttr> fresh = doc->createAttribute(N("a"));
  fresh->setText(u("new"));
  ZQPtr<ZQAttr> replaced = elem->setAttributeNode(fresh.get());
  EXPECT_EQ(replaced.get(), old);
  EXPECT_EQ(replaced->getOwnerElement(), nullptr);
  EXPECT_EQ(replaced->getRefCount(), 1);  // the map's reference, now in our pointer
  EXPECT_EQ(ringOf(elem), "a=new b=2");
  EXPECT_EQ(fresh->getOwnerElement(), elem.get());
  EXPECT_EQ(elem->getAttributes()->getFirstNode(), fresh.get());
  // Once detached, the old attribute may go to another element.
  ZQPtr<ZQElement> other = doc->createElement(N("o"));
  EXPECT_EQ(other->setAttributeNode(replaced.get()), nullptr);
  EXPECT_EQ(replaced->getOwnerElement(), other.get());
}

TEST_F(ElementTest, RemoveAttributeNodeOfAnotherElementChangesNothing) {
  elem->setAttribute(N("a"), S("1"));
  ZQPtr<ZQElement> other = doc->createElement(N("o"));
  other->setAttribute(N("a"), S("2"));
  ZQAttr* foreign = other->getAttributeNode(N("a"));
  EXPECT_EQ(elem->removeAttributeNode(foreign), nullptr);
  EXPECT_EQ(ringOf(elem), "a=1");
  EXPECT_EQ(ringOf(other), "a=2");
  EXPECT_EQ(foreign->getOwnerElement(), other.get());
  ZQPtr<ZQAttr> detached = doc->createAttribute(N("a"));
  EXPECT_EQ(elem->removeAttributeNode(detached.get()), nullptr);
  EXPECT_EQ(other->removeAttributeNode(detached.get()), nullptr);
}

TEST_F(ElementTest, RemoveAttributeNodeUnlinksByIdentity) {
  elem->setAttribute(N("a"), S("1"));
  elem->setAttribute(N("b"), S("2"));
  elem->setAttribute(N("c"), S("3"));
  ZQAttr* c = elem->getAttributeNode(N("c"));
  ZQPtr<ZQAttr> removed = elem->removeAttributeNode(c);
  EXPECT_EQ(removed.get(), c);
  EXPECT_EQ(c->getOwnerElement(), nullptr);
  EXPECT_EQ(c->getRefCount(), 1);
  EXPECT_EQ(ringOf(elem), "a=1 b=2");
  EXPECT_EQ(elem->getAttributes()->getLastNode(), elem->getAttributeNode(N("b")));
}

TEST_F(ElementTest, RemoveAttributeNodeOfNullFailsWithCode3AndTheArgumentName) {
  ZQError error = thrownBy([&] { elem->removeAttributeNode(nullptr); });
  EXPECT_EQ(error.getErrorCode(), 3);
  EXPECT_EQ(utf8(error.getRawMessage()), "SYSTEM ERROR: oldAttr is null.");
  EXPECT_EQ(utf8(error.getSource()), "ZQCommonNS::ZQElement::removeAttributeNode");
  EXPECT_EQ(error.getLineNumber(), -1);
  EXPECT_EQ(error.getColumnNumber(), -1);
}

TEST_F(ElementTest, AnAttributeHeldOutsideOutlivesItsElement) {
  ZQPtr<ZQAttr> kept;
  {
    ZQPtr<ZQElement> e = doc->createElement(N("t"));
    e->setAttribute(N("a"), S("1"));
    kept = e->getAttributeNode(N("a"));
    EXPECT_EQ(kept->getRefCount(), 2);
  }
  EXPECT_EQ(kept->getRefCount(), 1);
  EXPECT_EQ(kept->getOwnerElement(), nullptr);
  EXPECT_EQ(utf8(kept->getText()), "1");
}

TEST_F(ElementTest, AMapHeldOutsideLetsGoOfItsElement) {
  ZQPtr<ZQNamedNodeMap> map;
  {
    ZQPtr<ZQElement> e = doc->createElement(N("t"));
    e->setAttribute(N("a"), S("1"));
    map = e->getAttributes();
  }
  EXPECT_EQ(map->getLength(), 0);
  EXPECT_EQ(map->getFirstNode(), nullptr);
  EXPECT_EQ(static_cast<AttrNodeMap*>(map.get())->getOwnerElement(), nullptr);
}

// ---- namespace declarations ----

TEST_F(ElementTest, XmlnsHelpersWorkInTheXmlnsNamespace) {
  elem->setAttributeXMLNS(N("http://www.w3.org/2000/svg"), N("svg"));
  ZQAttr* decl = elem->getAttributeNodeNS(ZQName(ZQN_NS_XMLNS), N("svg"));
  ASSERT_NE(decl, nullptr);
  EXPECT_EQ(decl->getPrefix(), N("xmlns"));
  EXPECT_EQ(decl->getNodeName(), N("xmlns:svg"));
  EXPECT_TRUE(decl->getValue().isName());
  EXPECT_EQ(elem->getAttributeXMLNS(N("svg")), N("http://www.w3.org/2000/svg"));
  EXPECT_EQ(elem->lookupNamespaceUri(N("svg")), N("http://www.w3.org/2000/svg"));
  EXPECT_TRUE(elem->getAttributeXMLNS(N("other")).isEmpty());
  elem->removeAttributeXMLNS(N("svg"));
  EXPECT_FALSE(elem->hasAttributes());
  EXPECT_TRUE(elem->getAttributeXMLNS(N("svg")).isEmpty());
}

TEST_F(ElementTest, APlainElementFindsItsNamespaceInScopeAndAnElementNSKeepsItsOwn) {
  ZQElement* outer = child(doc.get(), "root");
  outer->setAttributeXMLNS(N("urn:outer"), N("a"));
  ZQElement* middle = child(outer, "m");
  ZQElement* inner = child(middle, "a:b");
  EXPECT_EQ(inner->getNamespaceUri(), N("urn:outer"));
  middle->setAttributeXMLNS(N("urn:middle"), N("a"));
  EXPECT_EQ(inner->getNamespaceUri(), N("urn:middle"));  // asked again at each call

  ZQPtr<ZQElement> stored = doc->createElementNS(N("urn:stored"), N("a"), N("b"));
  middle->appendChild(stored.get());
  EXPECT_EQ(stored->getNamespaceUri(), N("urn:stored"));
  stored->setAttributeXMLNS(N("urn:own"), N("a"));
  EXPECT_EQ(stored->getNamespaceUri(), N("urn:stored"));
}

TEST_F(ElementTest, ADefaultNamespaceDeclarationServesElementsWithoutPrefix) {
  ZQElement* root = child(doc.get(), "root");
  root->setAttribute(N("xmlns"), ZQValue(N("urn:default")));
  ZQElement* inner = child(root, "p");
  EXPECT_EQ(inner->getNamespaceUri(), N("urn:default"));
  EXPECT_EQ(root->lookupNamespaceUri(ZQName()), N("urn:default"));
  EXPECT_TRUE(inner->isDefaultNamespace(N("urn:default")));
  EXPECT_FALSE(inner->isDefaultNamespace(N("urn:other")));
}

TEST_F(ElementTest, LookupNamespaceUriOfAnElementNSAnswersItsOwnPrefix) {
  ZQPtr<ZQElement> e = doc->createElementNS(N("urn:x"), N("p"), N("e"));
  EXPECT_EQ(e->lookupNamespaceUri(N("p")), N("urn:x"));
  EXPECT_TRUE(e->lookupNamespaceUri(N("q")).isEmpty());
  // A plain element's prefix binds nothing by itself.
  ZQPtr<ZQElement> plain = doc->createElement(N("p:e"));
  EXPECT_TRUE(plain->lookupNamespaceUri(N("p")).isEmpty());
}

TEST_F(ElementTest, NoPrefixIsBoundImplicitly) {
  EXPECT_TRUE(elem->lookupNamespaceUri(N("xml")).isEmpty());
  EXPECT_TRUE(elem->lookupNamespaceUri(N("xmlns")).isEmpty());
  EXPECT_TRUE(elem->lookupPrefix(ZQName(ZQN_NS_XML)).isEmpty());
}

TEST_F(ElementTest, LookupPrefixSearchesTheElementThenDeclarationsThenAncestors) {
  // An element with a stored namespace binds its own prefix.
  ZQPtr<ZQElement> own = doc->createElementNS(N("urn:x"), N("p"), N("e"));
  EXPECT_EQ(own->lookupPrefix(N("urn:x")), N("p"));
  // A plain element's prefix counts only through a declaration.
  ZQPtr<ZQElement> plain = doc->createElement(N("p:e"));
  EXPECT_TRUE(plain->lookupPrefix(N("urn:x")).isEmpty());
  plain->setAttributeXMLNS(N("urn:x"), N("p"));
  EXPECT_EQ(plain->lookupPrefix(N("urn:x")), N("p"));
  // The element's own binding comes before its declarations.
  own->setAttributeXMLNS(N("urn:elsewhere"), N("p"));
  EXPECT_EQ(own->lookupPrefix(N("urn:x")), N("p"));

  ZQElement* root = child(doc.get(), "root");
  root->setAttributeXMLNS(N("urn:r"), N("r"));
  ZQElement* inner = child(root, "i");
  EXPECT_EQ(inner->lookupPrefix(N("urn:r")), N("r"));
  // A declaration hidden by a nearer one of the same prefix is no answer.
  inner->setAttributeXMLNS(N("urn:other"), N("r"));
  EXPECT_TRUE(inner->lookupPrefix(N("urn:r")).isEmpty());
  EXPECT_EQ(root->lookupPrefix(N("urn:r")), N("r"));
}

TEST_F(ElementTest, IsDefaultNamespaceOfAPrefixedElementReadsTheFirstXmlnsAttribute) {
  ZQElement* root = child(doc.get(), "root");
  root->setAttribute(N("xmlns"), ZQValue(N("urn:d")));
  ZQElement* inner = child(root, "q:i");
  EXPECT_TRUE(inner->isDefaultNamespace(N("urn:d")));  // from the parent
  inner->setAttribute(N("xmlns"), ZQValue(N("urn:inner")));
  EXPECT_TRUE(inner->isDefaultNamespace(N("urn:inner")));
  EXPECT_FALSE(inner->isDefaultNamespace(N("urn:d")));
  ZQPtr<ZQElement> lonely = doc->createElement(N("q:l"));
  EXPECT_FALSE(lonely->isDefaultNamespace(ZQName()));
}

TEST_F(ElementTest, NamespaceLookUpsClimbADeepTreeWithoutRecursion) {
  ZQElement* root = child(doc.get(), "root");
  root->setAttributeXMLNS(N("urn:deep"), N("d"));
  ZQElement* node = root;
  for (int i = 0; i < 200000; ++i) node = child(node, "x");
  EXPECT_EQ(node->lookupNamespaceUri(N("d")), N("urn:deep"));
  EXPECT_EQ(node->lookupPrefix(N("urn:deep")), N("d"));
  EXPECT_FALSE(node->isDefaultNamespace(N("urn:deep")));
  EXPECT_TRUE(node->getBaseUri().isEmpty());
}

// ---- base URI ----

TEST_F(ElementTest, AnAbsoluteXmlBaseWinsOverEveryAncestor) {
  ZQElement* root = child(doc.get(), "root");
  root->setAttribute(N("xml:base"), S("http://example.org/a/"));
  ZQElement* middle = child(root, "m");
  middle->setAttribute(N("xml:base"), S("http://other.org/b/"));
  ZQElement* inner = child(middle, "i");
  EXPECT_EQ(utf8(middle->getBaseUri()), "http://other.org/b/");
  EXPECT_EQ(utf8(inner->getBaseUri()), "http://other.org/b/");
  EXPECT_EQ(utf8(root->getBaseUri()), "http://example.org/a/");
}

TEST_F(ElementTest, ARelativeXmlBaseIsResolvedAgainstTheParentsBase) {
  ZQElement* root = child(doc.get(), "root");
  root->setAttribute(N("xml:base"), S("http://example.org/a/"));
  ZQElement* middle = child(root, "m");
  middle->setAttribute(N("xml:base"), S("sub/"));
  ZQElement* inner = child(middle, "i");
  inner->setAttribute(N("xml:base"), S("../up/x.xml"));
  EXPECT_EQ(utf8(middle->getBaseUri()), "http://example.org/a/sub/");
  EXPECT_EQ(utf8(inner->getBaseUri()), "http://example.org/a/up/x.xml");
}

TEST_F(ElementTest, WithoutXmlBaseTheBaseIsTheDocuments) {
  doc->setBaseUri(u("http://example.org/doc.xml"));
  ZQElement* root = child(doc.get(), "root");
  ZQElement* inner = child(root, "i");
  EXPECT_EQ(utf8(inner->getBaseUri()), utf8(doc->getBaseUri()));
  inner->setAttribute(N("xml:base"), S("img/"));
  EXPECT_EQ(utf8(inner->getBaseUri()), "http://example.org/img/");
}

TEST_F(ElementTest, AnElementWithoutParentGivesARelativeXmlBaseAsItStands) {
  elem->setAttribute(N("xml:base"), S("my dir/x.xml"));
  EXPECT_EQ(utf8(elem->getBaseUri()), "my dir/x.xml");
}

TEST_F(ElementTest, ARelativeXmlBaseUnderAnEmptyBaseIsOnlyNormalised) {
  ZQElement* root = child(doc.get(), "root");
  root->setAttribute(N("xml:base"), S("my dir/x.xml"));
  EXPECT_EQ(utf8(root->getBaseUri()), "my%20dir/x.xml");
}

// ---- source position ----

TEST_F(ElementTest, SourcePositionIsStoredOrTakenFromTheNeighbours) {
  ZQElement* root = child(doc.get(), "root");
  EXPECT_EQ(root->getSourceLineNumber(), -1);
  EXPECT_EQ(root->getSourceColumnNumber(), -1);
  root->setSourceLineNumber(3);
  root->setSourceColumnNumber(7);
  ZQElement* first = child(root, "a");
  EXPECT_EQ(first->getSourceLineNumber(), 3);  // from the parent
  EXPECT_EQ(first->getSourceColumnNumber(), 7);
  first->setSourceLineNumber(5);
  first->setSourceColumnNumber(2);
  ZQElement* second = child(root, "b");
  EXPECT_EQ(second->getSourceLineNumber(), 5);  // from the previous sibling
  EXPECT_EQ(second->getSourceColumnNumber(), 2);
  second->setSourceLineNumber(9);
  EXPECT_EQ(second->getSourceLineNumber(), 9);
}

// ---- element lists ----

TEST_F(ElementTest, GetElementsByTagNameListsDescendantElementsOnly) {
  ZQElement* root = child(doc.get(), "root");
  ZQElement* a1 = child(root, "a");
  root->appendChildText(u("text"));
  ZQElement* b = child(root, "b");
  ZQElement* a2 = child(b, "a");
  ZQPtr<ZQNodeList> list = root->getElementsByTagName(N("a"));
  ASSERT_EQ(list->getLength(), 2);
  EXPECT_EQ(list->item(0), a1);
  EXPECT_EQ(list->item(1), a2);
  ZQPtr<ZQNodeList> all = root->getElementsByTagName(N("*"));
  EXPECT_EQ(all->getLength(), 3);
  ZQPtr<ZQNodeList> self = a1->getElementsByTagName(N("a"));
  EXPECT_EQ(self->getLength(), 0);  // the root itself is left out
}

TEST_F(ElementTest, GetElementsByTagNameNSMatchesNamespaceAndName) {
  ZQElement* root = child(doc.get(), "root");
  ZQPtr<ZQElement> x = doc->createElementNS(N("urn:x"), N("p"), N("a"));
  ZQPtr<ZQElement> y = doc->createElementNS(N("urn:y"), N("q"), N("a"));
  root->appendChild(x.get());
  root->appendChild(y.get());
  ZQPtr<ZQNodeList> list = root->getElementsByTagNameNS(N("urn:y"), N("a"));
  ASSERT_EQ(list->getLength(), 1);
  EXPECT_EQ(list->item(0), y.get());
  EXPECT_EQ(root->getElementsByTagNameNS(N("*"), N("a"))->getLength(), 2);
  EXPECT_EQ(root->getElementsByTagNameNS(N("urn:x"), N("*"))->getLength(), 1);
}

// ---- cloning ----

TEST_F(ElementTest, AShallowCloneIsAnElementNSWithAttributesAndFlags) {
  ZQElement* root = child(doc.get(), "root");
  root->setAttributeXMLNS(N("urn:a"), N("a"));
  ZQElement* original = child(root, "a:b");
  original->setAttribute(N("plain"), S("1"));
  original->setAttributeNS(N("urn:z"), N("z"), N("q"), ZQValue(7));
  original->setFlag(ZQNode::FLAG_LOAD_DONE | 64, true);
  original->setSourceLineNumber(12);
  child(original, "kid");

  ZQPtr<ZQNode> clone = original->cloneNode(false);
  ASSERT_NE(clone, nullptr);
  EXPECT_EQ(clone->getTypeID(), ElementNS::getStaticTypeID());
  EXPECT_EQ(clone->getNamespaceUri(), N("urn:a"));  // as found in scope at cloning time
  EXPECT_EQ(clone->getNodeName(), N("a:b"));
  EXPECT_EQ(clone->getParentNode(), nullptr);
  EXPECT_FALSE(clone->hasChildNodes());
  EXPECT_EQ(clone->getFlags(), original->getFlags());
  EXPECT_EQ(clone->getSourceLineNumber(), -1);  // the position is not copied
  ZQElement* copy = static_cast<ZQElement*>(clone.get());
  EXPECT_EQ(ringOf(copy), "plain=1 z:q=7");
  EXPECT_EQ(copy->getAttributeNS(N("urn:z"), N("q")), ZQValue(7));
  EXPECT_NE(copy->getAttributeNode(N("plain")), original->getAttributeNode(N("plain")));
  EXPECT_EQ(copy->getAttributeNode(N("plain"))->getOwnerElement(), copy);
}

TEST_F(ElementTest, ADeepCloneCopiesTheWholeSubtreeInOrder) {
  ZQElement* root = child(doc.get(), "root");
  ZQElement* a = child(root, "a");
  a->appendChildText(u("one"));
  ZQElement* b = child(a, "b");
  b->setAttribute(N("k"), S("v"));
  b->appendChildText(u("two"));
  child(root, "c");

  ZQPtr<ZQNode> clone = root->cloneNode(true);
  ASSERT_NE(clone, nullptr);
  EXPECT_EQ(clone->getChildNodeCount(), 2);
  ZQNode* ca = clone->getFirstChild();
  EXPECT_EQ(ca->getLocalName(), N("a"));
  EXPECT_NE(ca, a);
  ZQNode* text = ca->getFirstChild();
  ASSERT_TRUE(text->isText());
  EXPECT_EQ(utf8(text->getText()), "one");
  ZQNode* cb = text->getNextSibling();
  EXPECT_EQ(cb->getLocalName(), N("b"));
  EXPECT_EQ(utf8(static_cast<ZQElement*>(cb)->getAttribute(N("k")).toString()), "v");
  EXPECT_EQ(utf8(cb->getFirstChild()->getText()), "two");
  EXPECT_EQ(ca->getNextSibling()->getLocalName(), N("c"));
  EXPECT_EQ(utf8(clone->getInnerText()), "onetwo");
  EXPECT_EQ(clone->getOwnerDocument(), doc.get());
  // The original is untouched.
  EXPECT_EQ(root->getChildNodeCount(), 2);
  EXPECT_EQ(b->getParentNode(), a);
}

TEST_F(ElementTest, ADeepCloneStopsAtAProcessingInstruction) {
  ZQElement* root = child(doc.get(), "root");
  ZQElement* a = child(root, "a");
  ZQPtr<ZQProcessingInstruction> pi = doc->createProcessingInstruction(N("target"), u("data"));
  a->appendChild(pi.get());
  ZQError error = thrownBy([&] { root->cloneNode(true); });
  EXPECT_EQ(error.getErrorCode(), 3);
  EXPECT_EQ(utf8(error.getRawMessage()), "SYSTEM ERROR: newChild is null.");
  EXPECT_EQ(utf8(error.getSource()), "ZQCommonNS::ZQNode::appendChild");
  // A later clone works again on this thread.
  ZQPtr<ZQNode> shallow = root->cloneNode(false);
  EXPECT_NE(shallow, nullptr);
  a->removeChild(pi.get());
  ZQPtr<ZQNode> deep = root->cloneNode(true);
  ASSERT_NE(deep, nullptr);
  EXPECT_EQ(deep->getFirstChild()->getLocalName(), N("a"));
}

TEST_F(ElementTest, DeepCloneOfAMillionNestedElementsDoesNotExhaustTheStack) {
  constexpr int depth = 1000000;
  ZQPtr<ZQElement> top = doc->createElementNS(ZQName(), ZQName(), N("n"));
  ZQNode* node = top.get();
  for (int i = 1; i < depth; ++i) {
    ZQPtr<ZQElement> next = doc->createElementNS(ZQName(), ZQName(), N("n"));
    node->appendChild(next.get());
    node = next.get();
  }
  node->appendChildText(u("leaf"));
  ZQPtr<ZQNode> clone = top->cloneNode(true);
  ASSERT_NE(clone, nullptr);
  int count = 0;
  ZQNode* walk = clone.get();
  ZQNode* last = walk;
  while (walk != nullptr && walk->isElementNode()) {
    ++count;
    last = walk;
    walk = walk->getFirstChildFast();
  }
  EXPECT_EQ(count, depth);
  ASSERT_NE(walk, nullptr);
  EXPECT_EQ(utf8(walk->getText()), "leaf");
  EXPECT_EQ(last->getChildNodeCount(), 1);
}

// ---- cloning through the virtual factories and hooks ----

namespace {

/// An element class of a layer above, counting the clones asked of it.
class CountingElement : public ElementNS {
 public:
  CountingElement(ZQDocument* doc, ZQName uri, ZQName prefix, ZQName local)
      : ElementNS(doc, uri, prefix, local) {}
  ZQPtr<ZQNode> cloneNode(bool deep) const override {
    ++(deep ? deepCalls : shallowCalls);
    return ElementNS::cloneNode(deep);
  }
  static int deepCalls;
  static int shallowCalls;
};
int CountingElement::deepCalls = 0;
int CountingElement::shallowCalls = 0;

/// A document of a layer above: its own element and attribute classes, an optional refusal of
/// new elements, and content that grows one text at a time under one loading element.
class LayerDocument : public ZQDocument {
 public:
  ZQPtr<ZQElement> createElementNS(ZQName uri, ZQName prefix, ZQName local) override {
    if (refuseElements) return ZQPtr<ZQElement>();
    return ZQPtr<ZQElement>(new CountingElement(this, uri, prefix, local));
  }
  ZQPtr<ZQAttr> createAttribute(ZQName qname) override {
    ++attributesMade;
    return ZQDocument::createAttribute(qname);
  }
  ZQPtr<ZQAttr> createAttributeNS(ZQName uri, ZQName prefix, ZQName local) override {
    ++attributesMade;
    return ZQDocument::createAttributeNS(uri, prefix, local);
  }
  ZQNode* loadNextNode() override {
    if (growing == nullptr) return nullptr;
    if (pendingTexts == 0) {
      growing->setFlag(ZQNode::FLAG_LOADING, false);
      growing->setFlag(ZQNode::FLAG_LOAD_DONE, true);
      growing = nullptr;
      return nullptr;
    }
    --pendingTexts;
    return growing->appendChildText(UnicodeString(u"t"));
  }

  bool refuseElements = false;
  int attributesMade = 0;
  ZQNode* growing = nullptr;
  int pendingTexts = 0;
};

}  // namespace

TEST(ElementClone, ChildrenAreClonedThroughTheirOwnVirtualCloneNode) {
  ZQPtr<LayerDocument> doc(new LayerDocument());
  ZQPtr<ZQElement> root = doc->createElementNS(ZQName(), ZQName(), N("r"));
  ZQPtr<ZQElement> a = doc->createElementNS(ZQName(), ZQName(), N("a"));
  ZQPtr<ZQElement> b = doc->createElementNS(ZQName(), ZQName(), N("b"));
  ZQPtr<ZQElement> c = doc->createElementNS(ZQName(), ZQName(), N("c"));
  root->appendChild(a.get());
  a->appendChild(b.get());
  root->appendChild(c.get());
  CountingElement::deepCalls = CountingElement::shallowCalls = 0;
  ZQPtr<ZQNode> clone = root->cloneNode(true);
  EXPECT_EQ(CountingElement::deepCalls, 4);  // the root and each of its three descendants
  EXPECT_EQ(CountingElement::shallowCalls, 0);
  ASSERT_NE(clone, nullptr);
  EXPECT_TRUE(clone->isA(ElementNS::getStaticTypeID()));
  ZQNode* ca = clone->getFirstChildFast();
  ASSERT_NE(ca, nullptr);
  EXPECT_EQ(ca->getLocalName(), N("a"));
  ASSERT_NE(ca->getFirstChildFast(), nullptr);
  EXPECT_EQ(ca->getFirstChildFast()->getLocalName(), N("b"));
  EXPECT_EQ(ca->getNextSiblingFast()->getLocalName(), N("c"));
  EXPECT_EQ(clone->getChildNodeCount(), 2);
}

TEST(ElementClone, ARefusedElementGivesAnEmptyClone) {
  ZQPtr<LayerDocument> doc(new LayerDocument());
  ZQPtr<ZQElement> e = doc->createElement(N("e"));
  doc->refuseElements = true;
  EXPECT_EQ(e->cloneNode(false), nullptr);
  EXPECT_EQ(e->cloneNode(true), nullptr);
}

TEST(ElementClone, ADeepCloneCompletesALoadingElement) {
  ZQPtr<LayerDocument> doc(new LayerDocument());
  ZQPtr<ZQElement> e = doc->createElement(N("e"));
  e->setFlag(ZQNode::FLAG_LOADING, true);
  doc->growing = e.get();
  doc->pendingTexts = 3;
  ZQPtr<ZQNode> clone = e->cloneNode(true);
  ASSERT_NE(clone, nullptr);
  EXPECT_EQ(doc->pendingTexts, 0);
  EXPECT_TRUE(e->getFlag(ZQNode::FLAG_LOAD_DONE));
  int texts = 0;
  for (ZQNode* n = clone->getFirstChildFast(); n != nullptr; n = n->getNextSiblingFast()) {
    EXPECT_TRUE(n->isText());
    ++texts;
  }
  EXPECT_EQ(texts, 3);
  // The flags went over as they were when the clone began, the loading bit with them.
  EXPECT_TRUE(clone->getFlag(ZQNode::FLAG_LOADING));
}

TEST(ElementClone, AttributesAreMadeByTheDocumentsVirtualFactories) {
  ZQPtr<LayerDocument> doc(new LayerDocument());
  ZQPtr<ZQElement> e = doc->createElement(N("e"));
  e->setAttribute(N("a"), ZQValue(1));
  e->setAttribute(N("a"), ZQValue(2));  // the existing node takes the value
  e->setAttributeNS(N("urn:x"), N("p"), N("b"), ZQValue(3));
  EXPECT_EQ(doc->attributesMade, 2);
  ZQPtr<ZQNode> clone = e->cloneNode(false);
  EXPECT_EQ(doc->attributesMade, 4);  // the clone sets both through createAttributeNS
  EXPECT_EQ(ringOf(static_cast<ZQElement*>(clone.get())), "a=2 p:b=3");
}
