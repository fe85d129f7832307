#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "common/ZQObject.h"

using namespace ZQCommonNS;

namespace {

// A chain shaped like the attribute classes: ZQNode <- ZQAttr <- Attr (no identity) <- AttrNS.
class TNode : public ZQRCObject {
  ZQ_DECLARE_TYPE(ZQNode, ZQRCObject)
 public:
  explicit TNode(bool* destroyed = nullptr) : m_destroyed(destroyed) {}
  ~TNode() override {
    if (m_destroyed) *m_destroyed = true;
  }
  using ZQRCObject::clearRefCount;
  using ZQRCObject::decrementRefCount;

 private:
  bool* m_destroyed;
};
class TZQAttr : public TNode {
  ZQ_DECLARE_TYPE(ZQAttr, TNode)
};
class TAttr : public TZQAttr {};
class TAttrNS : public TAttr {
  ZQ_DECLARE_TYPE(AttrNS, TAttr)
};

TEST(ZQRCObject, NewObjectHasCountZeroAndOnePtrOwnsIt) {
  bool destroyed = false;
  TNode* node = new TNode(&destroyed);
  EXPECT_EQ(node->getRefCount(), 0);
  {
    ZQPtr<TNode> p(node);
    EXPECT_EQ(node->getRefCount(), 1);
    EXPECT_FALSE(destroyed);
  }
  EXPECT_TRUE(destroyed);
}

TEST(ZQRCObject, RemoveRefKeepsObjectAliveThenReleaseDestroys) {
  bool destroyed = false;
  TNode* node = new TNode(&destroyed);
  node->addRef();
  EXPECT_EQ(node->removeRef(), 0);
  EXPECT_FALSE(destroyed);
  EXPECT_EQ(node->getRefCount(), 0);
  EXPECT_EQ(node->release(), -1);
  EXPECT_TRUE(destroyed);
}

TEST(ZQRCObject, ReleaseAtCountZeroDestroysAndReturnsMinusOne) {
  bool destroyed = false;
  TNode* node = new TNode(&destroyed);
  EXPECT_EQ(node->release(), -1);
  EXPECT_TRUE(destroyed);
}

TEST(ZQRCObject, ReleaseAboveOneKeepsObjectAndReturnsNewCount) {
  bool destroyed = false;
  TNode* node = new TNode(&destroyed);
  EXPECT_EQ(node->addRef(), 1);
  EXPECT_EQ(node->addRef(), 2);
  EXPECT_EQ(node->release(), 1);
  EXPECT_FALSE(destroyed);
  EXPECT_EQ(node->release(), 0);
  EXPECT_TRUE(destroyed);
}

TEST(ZQRCObject, ProtectedCountHelpers) {
  TNode* node = new TNode();
  node->addRef();
  node->addRef();
  EXPECT_EQ(node->decrementRefCount(), 1);
  node->clearRefCount();
  EXPECT_EQ(node->getRefCount(), 0);
  node->release();
}

TEST(ZQRCObject, CopyStartsWithCountZero) {
  TNode a;
  a.addRef();
  TNode b(a);
  EXPECT_EQ(b.getRefCount(), 0);
  a.removeRef();
}

TEST(ZQRCObject, ConcurrentAddRefReleaseKeepExactCount) {
  bool destroyed = false;
  ZQPtr<TNode> holder(new TNode(&destroyed));
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 10000; ++i) {
        ZQPtr<TNode> local(holder);
      }
    });
  }
  for (auto& t : threads) t.join();
  EXPECT_EQ(holder->getRefCount(), 1);
  EXPECT_FALSE(destroyed);
}

TEST(ZQRCObject, DebugPrintFunctionsExistAndDoNothing) {
  ZQRCObject::DebugPrintInstanceCount("x");
  ZQRCObject::DebugPrintInstanceId("x", 3);
  SUCCEED();
}

TEST(ZQPtr, AssignmentReleasesOldAndAddsNew) {
  bool d1 = false, d2 = false;
  ZQPtr<TNode> p(new TNode(&d1));
  TNode* second = new TNode(&d2);
  p = second;
  EXPECT_TRUE(d1);
  EXPECT_FALSE(d2);
  EXPECT_EQ(second->getRefCount(), 1);
  ZQPtr<TNode> q(p);
  EXPECT_EQ(second->getRefCount(), 2);
  p = nullptr;
  EXPECT_TRUE(p == nullptr);
  EXPECT_EQ(second->getRefCount(), 1);
  q = q;  // self-assignment keeps the object
  EXPECT_FALSE(d2);
  q = static_cast<TNode*>(q);  // assigning the held pointer keeps it too
  EXPECT_FALSE(d2);
  q = nullptr;
  EXPECT_TRUE(d2);
}

TEST(ZQPtr, ConvertsToRawPointerAndDereferences) {
  ZQPtr<TNode> p(new TNode());
  TNode* raw = p;
  EXPECT_EQ(raw, p.get());
  EXPECT_EQ(&*p, raw);
  EXPECT_TRUE(p != nullptr);
  ZQPtr<ZQRCObject> base(p);
  EXPECT_EQ(raw->getRefCount(), 2);
  ZQPtr<TNode> moved(std::move(p));
  EXPECT_TRUE(p == nullptr);
  EXPECT_EQ(raw->getRefCount(), 2);
}

class TLeaf : public TNode {
 public:
  using TNode::TNode;
};

TEST(ZQPtr, MovingToABaseHolderHandsTheReferenceOn) {
  bool destroyed = false;
  ZQPtr<TLeaf> derived(new TLeaf(&destroyed));
  TLeaf* raw = derived.get();
  ZQPtr<TNode> base(std::move(derived));
  EXPECT_TRUE(derived == nullptr);
  EXPECT_EQ(base.get(), raw);
  EXPECT_EQ(raw->getRefCount(), 1);
  // A copy to a base holder still counts up.
  ZQPtr<TLeaf> again(raw);
  ZQPtr<TNode> copy(again);
  EXPECT_EQ(raw->getRefCount(), 3);
  again = nullptr;
  copy = nullptr;
  EXPECT_FALSE(destroyed);
  base = nullptr;
  EXPECT_TRUE(destroyed);
}

TEST(TypeIdentity, NumbersOfTheTreeAreFixed) {
  EXPECT_EQ(ZQObjectBase::getStaticTypeID(), 0xDF537371u);
  EXPECT_EQ(ZQRCObject::getStaticTypeID(), 0xD18D040Au);
  EXPECT_EQ(ZQTypeId::ZQNameTable, 0xDF2E12FAu);
  EXPECT_EQ(ZQTypeId::ZQValueArray, 0x5B81E171u);
  EXPECT_EQ(ZQTypeId::ZQNamedValueMap, 0x2D6DF390u);
  EXPECT_EQ(ZQTypeId::ZQNamespaceManager, 0xFD1182ADu);
  EXPECT_EQ(ZQTypeId::ZQNamespaceMap, 0xE8F3CB34u);
  EXPECT_EQ(ZQTypeId::ZQNode, 0xFF72074Au);
  EXPECT_EQ(ZQTypeId::ZQAttr, 0x507DD55Fu);
  EXPECT_EQ(ZQTypeId::AttrNS, 0xF2136280u);
  EXPECT_EQ(ZQTypeId::ZQElement, 0x9B60777Du);
  EXPECT_EQ(ZQTypeId::Element, 0x883D36C4u);
  EXPECT_EQ(ZQTypeId::ElementNS, 0x92C5C0B8u);
  EXPECT_EQ(ZQTypeId::ZQTextNode, 0xD8444919u);
  EXPECT_EQ(ZQTypeId::ZQProcessingInstruction, 0x78626383u);
  EXPECT_EQ(ZQTypeId::ZQDocument, 0x2A780AB6u);
  EXPECT_EQ(ZQTypeId::ZQDocumentFragment, 0xB7475C6Fu);
  EXPECT_EQ(ZQTypeId::ZQNodeIterable, 0x6D959880u);
  EXPECT_EQ(ZQTypeId::ZQNodeList, 0xB426D516u);
  EXPECT_EQ(ZQTypeId::ChildNodeList, 0xA6531568u);
  EXPECT_EQ(ZQTypeId::TreeNodeList, 0x78F0F49Eu);
  EXPECT_EQ(ZQTypeId::ZQNamedNodeMap, 0xDE19E4A4u);
  EXPECT_EQ(ZQTypeId::AttrNodeMap, 0x95F69A2Cu);
  EXPECT_EQ(ZQTypeId::ZQXmlParser, 0x34A5686Cu);
  EXPECT_EQ(ZQTypeId::ZQXmlParserImpl, 0xC6714BC2u);
  EXPECT_EQ(ZQTypeId::ZQMSXmlParser, 0x7608EA26u);
  EXPECT_EQ(ZQTypeId::ZQXmlSerializer, 0x5DCEE8F5u);
  EXPECT_EQ(ZQTypeId::ZQXmlSerializerImpl, 0x40058898u);
  EXPECT_EQ(ZQTypeId::ZQXmlCatalogs, 0x026E56FEu);
  EXPECT_EQ(ZQTypeId::ZQXmlCatalogsImpl, 0x03AB9026u);
  EXPECT_EQ(ZQTypeId::ZQCssParser, 0xF4440044u);
  EXPECT_EQ(ZQTypeId::ZQCssParserImpl, 0x922A3921u);
  EXPECT_EQ(ZQTypeId::ZQCssRules, 0x11D99FFEu);
  EXPECT_EQ(ZQTypeId::ZQCssRulesImpl, 0x90083561u);
  EXPECT_EQ(ZQTypeId::ZQZipEntry, 0x3DBE4CC1u);
  EXPECT_EQ(ZQTypeId::ZQZipFileEntry, 0xD8C59E0Cu);
}

TEST(TypeIdentity, ClassWithoutOwnIdentityAnswersWithItsBase) {
  ZQPtr<TAttr> attr(new TAttr());
  EXPECT_EQ(attr->getTypeID(), TZQAttr::getStaticTypeID());
  EXPECT_EQ(attr->getTypeName(), UnicodeString(u"ZQAttr"));
}

TEST(TypeIdentity, IsAWalksTheWholeChain) {
  ZQPtr<TAttrNS> ns(new TAttrNS());
  EXPECT_EQ(ns->getTypeID(), 0xF2136280u);
  EXPECT_EQ(ns->getTypeName(), UnicodeString(u"AttrNS"));
  EXPECT_TRUE(ns->isA(ZQTypeId::AttrNS));
  EXPECT_TRUE(ns->isA(ZQTypeId::ZQAttr));
  EXPECT_TRUE(ns->isA(ZQTypeId::ZQNode));
  EXPECT_TRUE(ns->isA(ZQTypeId::ZQRCObject));
  EXPECT_TRUE(ns->isA(ZQTypeId::ZQObjectBase));
  EXPECT_FALSE(ns->isA(ZQTypeId::ZQElement));
  ZQPtr<TNode> node(new TNode());
  EXPECT_FALSE(node->isA(ZQTypeId::ZQAttr));
  EXPECT_TRUE(node->isA(ZQTypeId::ZQObjectBase));
}

}  // namespace

namespace {

TEST(TypeIdentity, RootIsAAnswersOnlyItsOwnChain) {
  ZQPtr<TNode> node(new TNode());
  const ZQObjectBase& root = *node;
  EXPECT_TRUE(root.ZQObjectBase::isA(ZQTypeId::ZQObjectBase));
  EXPECT_FALSE(root.ZQObjectBase::isA(ZQTypeId::ZQRCObject));
  EXPECT_FALSE(root.ZQObjectBase::isA(ZQTypeId::ZQNode));
  const ZQRCObject& counted = *node;
  EXPECT_TRUE(counted.ZQRCObject::isA(ZQTypeId::ZQRCObject));
  EXPECT_TRUE(counted.ZQRCObject::isA(ZQTypeId::ZQObjectBase));
  EXPECT_FALSE(counted.ZQRCObject::isA(ZQTypeId::ZQNode));
  EXPECT_FALSE(node->isA(0u));
  EXPECT_EQ(TNode::getStaticTypeID(), ZQTypeId::ZQNode);
  EXPECT_EQ(node->getTypeName(), UnicodeString(u"ZQNode"));
}

TEST(ZQPtr, StepThroughAChainHeldByTheObjectItReleases) {
  // p = p->next, where only the object being released holds the next one.
  struct Link : TNode {
    explicit Link(bool* destroyed) : TNode(destroyed) {}
    ZQPtr<Link> next;
  };
  bool d1 = false, d2 = false;
  ZQPtr<Link> p(new Link(&d1));
  p->next = new Link(&d2);
  p = p->next;
  EXPECT_TRUE(d1);
  EXPECT_FALSE(d2);
  EXPECT_EQ(p->getRefCount(), 1);
}

}  // namespace
