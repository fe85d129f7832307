// Live node lists, the node iterator and the tree walker.
#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "NodeTestSupport.h"

using namespace ZQCommonNS;
using zqtest::names;
using zqtest::ScriptDocument;
using zqtest::TestElement;
using zqtest::u;
using zqtest::utf8;

namespace {

using Ev = ScriptDocument;
using Order = ZQTreeIterator::TraversalOrder;

ZQPtr<ZQNode> el(ZQDocument* doc, const char* name) { return zqtest::element(doc, name); }

ZQNode* add(ZQNode* parent, const char* name) {
  return parent->appendChild(el(parent->getOwnerDocument(), name));
}

std::vector<ZQNode*> forward(ZQNodeIterable* list) {
  std::vector<ZQNode*> out;
  for (ZQNode* n = list->getFirstNode(); n; n = list->getNextNode(n)) out.push_back(n);
  return out;
}

std::vector<ZQNode*> backward(ZQNodeIterable* list) {
  std::vector<ZQNode*> out;
  for (ZQNode* n = list->getLastNode(); n; n = list->getPreviousNode(n)) out.push_back(n);
  return out;
}

std::vector<ZQNode*> walk(ZQTreeIterator it) {
  std::vector<ZQNode*> out;
  while (ZQNode* n = it.nextNode()) out.push_back(n);
  return out;
}

std::vector<ZQNode*> walkBack(ZQTreeIterator it) {
  std::vector<ZQNode*> out;
  while (ZQNode* n = it.previousNode()) out.push_back(n);
  return out;
}

// doc( r( a( a1, 't1', a2(a21) ), 'ws', b, x:c( c1 ) ) ) where x:c is in urn:x.
struct ListTree {
  ZQPtr<ZQDocument> doc{new ZQDocument()};
  ZQNode* r;
  ZQNode* a;
  ZQNode* a1;
  ZQNode* t1;
  ZQNode* a2;
  ZQNode* a21;
  ZQNode* ws;
  ZQNode* b;
  ZQNode* c;
  ZQNode* c1;
  ZQName urn{u("urn:x")};
  ListTree() {
    r = doc->appendChild(el(doc, "r"));
    a = add(r, "a");
    a1 = add(a, "a1");
    t1 = a->appendChildText(u("t1"));
    a2 = add(a, "a2");
    a21 = add(a2, "a21");
    ws = r->appendChildText(u(" "));
    b = add(r, "b");
    c = r->appendChild(ZQPtr<ZQNode>(new TestElement(doc, ZQName(u("c")), urn, ZQName(u("x")))));
    c1 = add(c, "c1");
  }
};

}  // namespace

// ---------------------------------------------------------------- type identity

TEST(NodeList, TypeIdentity) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNodeList> children = doc->getChildNodes();
  ZQPtr<ZQNodeList> tree = doc->getDescendantNodes();
  EXPECT_EQ(children->getTypeID(), 0xA6531568u);
  EXPECT_EQ(utf8(children->getTypeName()), "ChildNodeList");
  EXPECT_EQ(tree->getTypeID(), 0x78F0F49Eu);
  EXPECT_EQ(utf8(tree->getTypeName()), "TreeNodeList");
  EXPECT_EQ(ZQNodeList::getStaticTypeID(), 0xB426D516u);
  EXPECT_EQ(ZQNodeIterable::getStaticTypeID(), 0x6D959880u);
  for (ZQNodeList* list : {children.get(), tree.get()}) {
    EXPECT_TRUE(list->isA(0xB426D516u));
    EXPECT_TRUE(list->isA(0x6D959880u));
    EXPECT_TRUE(list->isA(0xD18D040Au));
    EXPECT_TRUE(list->isA(0xDF537371u));
    EXPECT_FALSE(list->isA(0xFF72074Au));
  }
  EXPECT_FALSE(children->isA(0x78F0F49Eu));
  EXPECT_EQ(children->getRefCount(), 1);
}

// ---------------------------------------------------------------- ChildNodeList

TEST(ChildNodeList, WalksTheChildren) {
  ListTree t;
  ChildNodeList list(t.r);
  list.addRef();
  EXPECT_EQ(list.getParentNode(), t.r);
  EXPECT_EQ(list.getLength(), 4);
  EXPECT_EQ(names(forward(&list)), "a,' ',b,c");
  EXPECT_EQ(names(backward(&list)), "c,b,' ',a");
  EXPECT_EQ(list.getFirstNode(), t.a);
  EXPECT_EQ(list.getLastNode(), t.c);
  EXPECT_EQ(list.item(0), t.a);
  EXPECT_EQ(list.item(3), t.c);
  EXPECT_EQ(list.item(4), nullptr);
  EXPECT_EQ(list.item(100), nullptr);
  EXPECT_EQ(list.item(-1), nullptr);
  EXPECT_EQ(list.getNextNode(nullptr), nullptr);
  EXPECT_EQ(list.getPreviousNode(nullptr), nullptr);
  list.removeRef();
}

TEST(ChildNodeList, IsLive) {
  ListTree t;
  ZQPtr<ZQNodeList> list = t.b->getChildNodes();
  EXPECT_EQ(list->getLength(), 0);
  EXPECT_EQ(list->getFirstNode(), nullptr);
  EXPECT_EQ(list->getLastNode(), nullptr);
  EXPECT_EQ(list->item(0), nullptr);
  add(t.b, "n1");
  add(t.b, "n2");
  EXPECT_EQ(list->getLength(), 2);
  EXPECT_EQ(names(forward(list)), "n1,n2");
}

TEST(ChildNodeList, LengthOfALoadingNodeCompletesIt) {
  ZQPtr<ScriptDocument> doc(new ScriptDocument());
  doc->open({Ev::S("root"), Ev::S("a"), Ev::E(), Ev::T("x"), Ev::S("b"), Ev::S("b1"), Ev::E(),
             Ev::E(), Ev::E(), Ev::S("after")});
  ZQNode* root = doc->getFirstChild();
  ASSERT_NE(root, nullptr);
  ZQPtr<ZQNodeList> list = root->getChildNodes();
  EXPECT_EQ(list->getLength(), 3);
  EXPECT_FALSE(root->isLoading());
  EXPECT_TRUE(root->getFlag(ZQNode::FLAG_LOAD_DONE));
  // Past the last child one more step was taken, as the document was still open.
  EXPECT_EQ(doc->pending(), 0u);
  EXPECT_EQ(doc->getChildNodeCount(), 2);
}

// ---------------------------------------------------------------- TreeNodeList

TEST(TreeNodeList, AllDescendantsInDocumentOrder) {
  ListTree t;
  ZQPtr<ZQNodeList> list = t.r->getDescendantNodes();
  EXPECT_EQ(names(forward(list)), "a,a1,'t1',a2,a21,' ',b,c,c1");
  EXPECT_EQ(names(backward(list)), "c1,c,b,' ',a21,a2,'t1',a1,a");
  EXPECT_EQ(list->getLength(), 9);
  EXPECT_EQ(list->item(2), t.t1);
  EXPECT_EQ(list->item(8), t.c1);
  EXPECT_EQ(list->item(9), nullptr);
  EXPECT_EQ(list->item(-1), nullptr);
  // The walk stays inside the root.
  ZQPtr<ZQNodeList> sub = t.a->getDescendantNodes();
  EXPECT_EQ(names(forward(sub)), "a1,'t1',a2,a21");
  EXPECT_EQ(names(backward(sub)), "a21,a2,'t1',a1");
  ZQPtr<ZQNodeList> leaf = t.b->getDescendantNodes();
  EXPECT_EQ(leaf->getLength(), 0);
  EXPECT_EQ(leaf->getFirstNode(), nullptr);
  EXPECT_EQ(leaf->getLastNode(), nullptr);
}

TEST(TreeNodeList, StarSkipsTextAndModeZeroDoesNot) {
  ListTree t;
  ZQPtr<ZQNodeList> all = t.r->getElementsByTagName(ZQName(u("*")));
  EXPECT_EQ(names(forward(all)), "a,a1,a2,a21,b,c,c1");
  EXPECT_EQ(names(backward(all)), "c1,c,b,a21,a2,a1,a");
  ZQPtr<ZQNodeList> mode0 = t.r->getDescendantNodes();
  EXPECT_EQ(mode0->getLength(), 9);
  EXPECT_EQ(all->getLength(), 7);
}

TEST(TreeNodeList, ByName) {
  ListTree t;
  add(t.c1, "a2");
  ZQPtr<ZQNodeList> list = t.r->getElementsByTagName(ZQName(u("a2")));
  EXPECT_EQ(list->getLength(), 2);
  EXPECT_EQ(list->item(0), t.a2);
  EXPECT_EQ(list->item(1)->getParentNode(), t.c1);
  EXPECT_EQ(list->getLastNode(), list->item(1));
  EXPECT_EQ(list->getPreviousNode(list->getLastNode()), t.a2);
  EXPECT_EQ(list->getPreviousNode(t.a2), nullptr);
  // A name never used matches nothing, and a text node's name matches no element test.
  EXPECT_EQ(t.r->getElementsByTagName(ZQName(u("none")))->getLength(), 0);
  EXPECT_EQ(t.r->getElementsByTagName(ZQName(ZQN_hash_text))->getLength(), 0);
}

TEST(TreeNodeList, ByNamespaceAndName) {
  ListTree t;
  ZQName star(u("*"));
  ZQPtr<ZQNodeList> list = t.r->getElementsByTagNameNS(t.urn, ZQName(u("c")));
  EXPECT_EQ(names(forward(list)), "c");
  EXPECT_EQ(t.r->getElementsByTagNameNS(ZQName(), ZQName(u("c")))->getLength(), 0);
  EXPECT_EQ(names(forward(t.r->getElementsByTagNameNS(t.urn, star))), "c");
  EXPECT_EQ(names(forward(t.r->getElementsByTagNameNS(star, ZQName(u("c"))))), "c");
  EXPECT_EQ(names(forward(t.r->getElementsByTagNameNS(star, star))), "a,a1,a2,a21,b,c,c1");
  EXPECT_EQ(names(forward(t.r->getElementsByTagNameNS(ZQName(), star))), "a,a1,a2,a21,b,c1");
  ZQPtr<ZQNodeList> noNs = t.r->getElementsByTagNameNS(ZQName(), ZQName(u("c1")));
  EXPECT_EQ(names(backward(noNs)), "c1");
}

TEST(TreeNodeList, DoesNotContainItsRoot) {
  ListTree t;
  ZQNode* inner = add(t.a, "a");
  ZQPtr<ZQNodeList> list = t.a->getElementsByTagName(ZQName(u("a")));
  EXPECT_EQ(list->getLength(), 1);
  EXPECT_EQ(list->getFirstNode(), inner);
  EXPECT_EQ(list->getLastNode(), inner);
  EXPECT_EQ(list->getPreviousNode(inner), nullptr);
  ZQPtr<ZQNodeList> leaf = t.b->getElementsByTagName(ZQName(u("b")));
  EXPECT_EQ(leaf->getLength(), 0);
  EXPECT_EQ(leaf->getLastNode(), nullptr);
}

TEST(TreeNodeList, LastNodeThatDoesNotMatchStepsBack) {
  ListTree t;
  ZQPtr<ZQNodeList> list = t.r->getElementsByTagName(ZQName(u("a1")));
  EXPECT_EQ(list->getLastNode(), t.a1);
  ZQPtr<ZQNodeList> texts = t.a->getElementsByTagName(ZQName(u("*")));
  t.a2->appendChildText(u("tail"));
  EXPECT_EQ(texts->getLastNode(), t.a21);
}

TEST(TreeNodeList, StarIsLookedUpAtEachTest) {
  ListTree t;
  TreeNodeList list(t.r, ZQName(u("*")));
  list.addRef();
  EXPECT_EQ(list.getMode(), TreeNodeList::MODE_NAME);
  EXPECT_EQ(list.getRootNode(), t.r);
  EXPECT_EQ(list.getLength(), 7);
  TreeNodeList ns(t.r, t.urn, ZQName(u("*")));
  ns.addRef();
  EXPECT_EQ(ns.getMode(), TreeNodeList::MODE_NAME_NS);
  EXPECT_EQ(ns.getUri(), t.urn);
  EXPECT_EQ(ns.getLength(), 1);
  TreeNodeList all(t.r);
  all.addRef();
  EXPECT_EQ(all.getMode(), TreeNodeList::MODE_ALL);
  list.removeRef();
  ns.removeRef();
  all.removeRef();
}

TEST(TreeNodeList, WalkingLoadsThePullDocument) {
  ZQPtr<ScriptDocument> doc(new ScriptDocument());
  doc->open(
      {Ev::S("root"), Ev::S("a"), Ev::S("x"), Ev::E(), Ev::E(), Ev::S("x"), Ev::E(), Ev::E()});
  ZQPtr<ZQNodeList> list = doc->getElementsByTagName(ZQName(u("x")));
  EXPECT_EQ(list->getLength(), 2);
  EXPECT_EQ(doc->pending(), 0u);
  EXPECT_EQ(names(forward(doc->getDescendantNodes())), "root,a,x,x");
}

TEST(TreeNodeList, LastNodeCompletesTheRoot) {
  ZQPtr<ScriptDocument> doc(new ScriptDocument());
  doc->open(
      {Ev::S("root"), Ev::S("a"), Ev::E(), Ev::S("b"), Ev::S("b1"), Ev::E(), Ev::E(), Ev::E()});
  ZQPtr<ZQNodeList> list = doc->getDescendantNodes();
  ZQNode* last = list->getLastNode();
  ASSERT_NE(last, nullptr);
  EXPECT_EQ(utf8(last->getLocalName().toString()), "b1");
  EXPECT_EQ(doc->pending(), 0u);
}

// ---------------------------------------------------------------- ZQNodeIterator

TEST(NodeIterator, EmptyIterator) {
  ZQNodeIterator it;
  EXPECT_FALSE(it.hasNextNode());
  EXPECT_EQ(it.nextNode(), nullptr);
  EXPECT_FALSE(it.hasPreviousNode());
  EXPECT_EQ(it.previousNode(), nullptr);
  ZQNodeIterator fromNull(nullptr);
  EXPECT_FALSE(fromNull.hasNextNode());
  EXPECT_EQ(fromNull.nextNode(), nullptr);
  EXPECT_EQ(fromNull.previousNode(), nullptr);
  fromNull.setToStart();
  EXPECT_FALSE(fromNull.hasNextNode());
}

TEST(NodeIterator, ForwardAndBack) {
  ListTree t;
  ZQPtr<ZQNodeList> list = t.r->getElementsByTagName(ZQName(u("*")));
  ZQNodeIterator it = list->getIterator();
  EXPECT_EQ(it.getIterable(), list.get());
  EXPECT_FALSE(it.hasPreviousNode());  // at the first node
  std::vector<ZQNode*> seen;
  while (it.hasNextNode()) seen.push_back(it.nextNode());
  EXPECT_EQ(names(seen), "a,a1,a2,a21,b,c,c1");
  EXPECT_EQ(it.nextNode(), nullptr);
  EXPECT_TRUE(it.hasPreviousNode());
  // Past the end, previousNode goes to the last node.
  EXPECT_EQ(it.previousNode(), t.c1);
  EXPECT_EQ(it.previousNode(), t.c);
  EXPECT_TRUE(it.hasNextNode());
  EXPECT_EQ(it.nextNode(), t.c);
  EXPECT_EQ(it.nextNode(), t.c1);
  it.setToStart();
  EXPECT_FALSE(it.hasPreviousNode());
  EXPECT_EQ(it.nextNode(), t.a);
  EXPECT_TRUE(it.hasPreviousNode());
  EXPECT_EQ(it.previousNode(), t.a);
  // Before the first node the position is null again, as at the end.
  EXPECT_EQ(it.previousNode(), nullptr);
  EXPECT_FALSE(it.hasNextNode());
  it.setToEnd();
  EXPECT_FALSE(it.hasNextNode());
  EXPECT_EQ(it.previousNode(), t.c1);
}

TEST(NodeIterator, CopiesShareTheIterable) {
  ListTree t;
  ZQNodeIterator a;
  {
    ZQPtr<ZQNodeList> list = t.r->getChildNodes();
    a = list->getIterator();
    EXPECT_EQ(list->getRefCount(), 2);
    ZQNodeIterator b = a;
    EXPECT_EQ(list->getRefCount(), 3);
    EXPECT_EQ(b.nextNode(), t.a);
    EXPECT_EQ(b.nextNode(), t.ws);
    EXPECT_EQ(a.nextNode(), t.a);  // positions are separate
  }
  // The list lives on in the iterator.
  EXPECT_EQ(a.getIterable()->getRefCount(), 1);
  EXPECT_EQ(a.nextNode(), t.ws);
}

TEST(NodeIterator, NodeGetIteratorWalksChildren) {
  ListTree t;
  ZQNodeIterator it = t.a->getIterator();
  std::vector<ZQNode*> seen;
  while (ZQNode* n = it.nextNode()) seen.push_back(n);
  EXPECT_EQ(names(seen), "a1,'t1',a2");
  ZQNodeIterator empty = t.b->getIterator();
  EXPECT_FALSE(empty.hasNextNode());
  EXPECT_FALSE(empty.hasPreviousNode());
}

// ---------------------------------------------------------------- ZQTreeIterator

TEST(TreeIterator, DefaultState) {
  ZQTreeIterator it;
  EXPECT_EQ(it.getRootNode(), nullptr);
  EXPECT_EQ(it.getCurrentNode(), nullptr);
  EXPECT_TRUE(it.atPostVisit());
  EXPECT_FALSE(it.atPreVisit());
  EXPECT_EQ(it.getTraversalOrder(), ZQTreeIterator::PRE_AND_POST_ORDER);
  EXPECT_EQ(static_cast<int>(ZQTreeIterator::PRE_ORDER), 1);
  EXPECT_EQ(static_cast<int>(ZQTreeIterator::POST_ORDER), 2);
  EXPECT_EQ(static_cast<int>(ZQTreeIterator::PRE_AND_POST_ORDER), 3);
  EXPECT_EQ(it.previousNode(), nullptr);
  EXPECT_EQ(it.nextNode(), nullptr);
  EXPECT_FALSE(it.hasNextNode());
  EXPECT_FALSE(it.hasPreviousNode());
}

TEST(TreeIterator, AccessorsAndEquality) {
  ListTree t;
  ZQTreeIterator a(t.r, nullptr, false, ZQTreeIterator::PRE_ORDER);
  ZQTreeIterator b(t.r, nullptr, false, ZQTreeIterator::PRE_ORDER);
  EXPECT_TRUE(a == b);
  EXPECT_FALSE(a != b);
  b.setTraversalOrder(ZQTreeIterator::POST_ORDER);
  EXPECT_TRUE(a != b);
  b.setTraversalOrder(ZQTreeIterator::PRE_ORDER);
  b.setAtPostVisit(true);
  EXPECT_TRUE(a != b);
  EXPECT_TRUE(b.atPostVisit());
  b.setAtPreVisit(true);
  EXPECT_TRUE(a == b);
  b.setCurrentNode(t.a, true);
  EXPECT_EQ(b.getCurrentNode(), t.a);
  EXPECT_TRUE(b.atPostVisit());
  EXPECT_TRUE(a != b);
  ZQTreeIterator c(t.a, nullptr, false, ZQTreeIterator::PRE_ORDER);
  EXPECT_TRUE(a != c);
  b.setToStart();
  EXPECT_EQ(b.getCurrentNode(), t.r);
  EXPECT_TRUE(b.atPreVisit());
  b.setToEnd();
  EXPECT_EQ(b.getCurrentNode(), t.r);
  EXPECT_TRUE(b.atPostVisit());
}

TEST(TreeIterator, ChildlessRootPreOrder) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> root = el(doc, "root");
  ZQTreeIterator it(root, nullptr, false, ZQTreeIterator::PRE_ORDER);
  EXPECT_EQ(it.nextNode(), root.get());
  EXPECT_EQ(it.nextNode(), nullptr);
  EXPECT_EQ(it.nextNode(), nullptr);
}

TEST(TreeIterator, ChildlessRootBothOrders) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> root = el(doc, "root");
  ZQTreeIterator it(root, nullptr, false, ZQTreeIterator::PRE_AND_POST_ORDER);
  EXPECT_EQ(it.nextNode(), root.get());
  EXPECT_TRUE(it.atPreVisit());
  EXPECT_EQ(it.nextNode(), root.get());
  EXPECT_TRUE(it.atPostVisit());
  EXPECT_EQ(it.nextNode(), nullptr);
  // A text node is given once.
  ZQPtr<ZQTextNode> text = doc->createTextNode(u("t"));
  EXPECT_EQ(names(walk(ZQTreeIterator(text, nullptr, false, ZQTreeIterator::PRE_AND_POST_ORDER))),
            "'t'");
  EXPECT_EQ(names(walk(ZQTreeIterator(text, nullptr, false, ZQTreeIterator::POST_ORDER))), "'t'");
  EXPECT_EQ(names(walk(ZQTreeIterator(root, nullptr, false, ZQTreeIterator::POST_ORDER))), "root");
}

TEST(TreeIterator, ThreeOrdersOfASmallTree) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> a = el(doc, "a");
  add(a, "b");
  add(a, "c");
  EXPECT_EQ(names(walk(ZQTreeIterator(a, nullptr, false, ZQTreeIterator::POST_ORDER))), "b,c,a");
  EXPECT_EQ(names(walk(ZQTreeIterator(a, nullptr, false, ZQTreeIterator::PRE_ORDER))), "a,b,c");
  EXPECT_EQ(names(walk(ZQTreeIterator(a, nullptr, false, ZQTreeIterator::PRE_AND_POST_ORDER))),
            "a,b,b,c,c,a");
}

TEST(TreeIterator, VisitFlagsInBothOrders) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> a = el(doc, "a");
  add(a, "b");
  a->appendChildText(u("t"));
  ZQTreeIterator it(a, nullptr, false, ZQTreeIterator::PRE_AND_POST_ORDER);
  std::string trace;
  while (ZQNode* n = it.nextNode()) {
    trace += names(std::vector<ZQNode*>{n});
    trace += it.atPreVisit() ? "<" : ">";
  }
  EXPECT_EQ(trace, "a<b<b>'t'<a>");
}

TEST(TreeIterator, AfterTheEndStaysNullAndRestarts) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> a = el(doc, "a");
  add(a, "b");
  add(a, "c");
  ZQTreeIterator it(a, nullptr, false, ZQTreeIterator::PRE_ORDER);
  EXPECT_EQ(walk(it).size(), 3u);
  while (it.nextNode()) {
  }
  EXPECT_EQ(it.getCurrentNode(), nullptr);
  EXPECT_EQ(it.nextNode(), nullptr);
  EXPECT_EQ(it.nextNode(), nullptr);
  EXPECT_FALSE(it.hasNextNode());
  it.setToStart();
  EXPECT_EQ(it.getCurrentNode(), a.get());
  EXPECT_TRUE(it.hasNextNode());
  EXPECT_EQ(names(walk(it)), "b,c");
}

TEST(TreeIterator, BackwardMirrorsForward) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> a = el(doc, "a");
  add(a, "b");
  add(a, "c");
  // From the end state (no current, post-visit) backward.
  EXPECT_EQ(names(walkBack(ZQTreeIterator(a, nullptr, true, ZQTreeIterator::PRE_ORDER))), "c,b,a");
  EXPECT_EQ(names(walkBack(ZQTreeIterator(a, nullptr, true, ZQTreeIterator::POST_ORDER))), "a,c,b");
  EXPECT_EQ(names(walkBack(ZQTreeIterator(a, nullptr, true, ZQTreeIterator::PRE_AND_POST_ORDER))),
            "a,c,c,b,b,a");
  // From the start state backward: nothing.
  ZQTreeIterator start(a, nullptr, false, ZQTreeIterator::PRE_ORDER);
  EXPECT_EQ(start.previousNode(), nullptr);
  EXPECT_FALSE(start.hasPreviousNode());
}

TEST(TreeIterator, PostVisitByHandSkipsTheChildren) {
  ListTree t;
  ZQTreeIterator it(t.r, nullptr, false, ZQTreeIterator::PRE_AND_POST_ORDER);
  std::vector<ZQNode*> seen;
  while (ZQNode* n = it.nextNode()) {
    seen.push_back(n);
    if (n == t.a && it.atPreVisit()) it.setAtPostVisit(true);
  }
  EXPECT_EQ(names(seen), "r,a,' ',b,b,c,c1,c1,c,r");
  // In pre-order too.
  ZQTreeIterator pre(t.r, nullptr, false, ZQTreeIterator::PRE_ORDER);
  seen.clear();
  while (ZQNode* n = pre.nextNode()) {
    seen.push_back(n);
    if (n == t.c) pre.setAtPostVisit(true);
  }
  EXPECT_EQ(names(seen), "r,a,a1,'t1',a2,a21,' ',b,c");
}

TEST(TreeIterator, StartingAtAGivenNode) {
  ListTree t;
  ZQTreeIterator it(t.r, t.a2, false, ZQTreeIterator::PRE_ORDER);
  EXPECT_EQ(names(walk(it)), "a21,' ',b,c,c1");
  ZQTreeIterator post(t.r, t.a2, true, ZQTreeIterator::POST_ORDER);
  EXPECT_EQ(names(walk(post)), "a,' ',b,c1,c,r");
  // A current node outside the root's subtree: the walk ends where the parents end.
  ZQPtr<ZQNode> detached = el(t.doc, "d");
  ZQNode* inner = add(detached, "dc");
  ZQTreeIterator outside(t.r, inner, true, ZQTreeIterator::PRE_ORDER);
  EXPECT_EQ(outside.nextNode(), nullptr);
  EXPECT_EQ(outside.getCurrentNode(), nullptr);
  EXPECT_EQ(outside.nextNode(), nullptr);
}

TEST(TreeIterator, WalkingLoadsThePullDocument) {
  ZQPtr<ScriptDocument> doc(new ScriptDocument());
  doc->open({Ev::S("r"), Ev::S("a"), Ev::T("x"), Ev::E(), Ev::S("b"), Ev::E(), Ev::E()});
  EXPECT_EQ(names(walk(ZQTreeIterator(doc, nullptr, false, ZQTreeIterator::POST_ORDER))),
            "'x',a,b,r,#document");
  EXPECT_EQ(doc->pending(), 0u);
}

namespace {

// Builds a few trees of different shapes under `doc`; returns their roots.
std::vector<ZQPtr<ZQNode>> shapes(ZQDocument* doc) {
  std::vector<ZQPtr<ZQNode>> out;
  out.push_back(el(doc, "lone"));
  out.push_back(ZQPtr<ZQNode>(doc->createTextNode(u("t")).get()));
  ZQPtr<ZQNode> frag(doc->createDocumentFragment().get());
  out.push_back(frag);
  ZQPtr<ZQNode> small = el(doc, "a");
  add(small, "b");
  add(small, "c");
  out.push_back(small);
  ZQPtr<ZQNode> mixed = el(doc, "m");
  ZQNode* x = add(mixed, "x");
  x->appendChildText(u("t1"));
  ZQNode* y = add(x, "y");
  add(y, "z");
  y->appendChildText(u("t2"));
  mixed->appendChildText(u("t3"));
  add(mixed, "w");
  ZQPtr<ZQDocumentFragment> innerFrag = doc->createDocumentFragment();
  innerFrag->appendChildText(u("t4"));
  mixed->appendChild(innerFrag);
  out.push_back(mixed);
  ZQPtr<ZQNode> textOnly = el(doc, "p");
  textOnly->appendChildText(u("only"));
  out.push_back(textOnly);
  return out;
}

const Order kOrders[] = {ZQTreeIterator::PRE_ORDER, ZQTreeIterator::POST_ORDER,
                         ZQTreeIterator::PRE_AND_POST_ORDER};

}  // namespace

TEST(TreeIterator, BackwardIsTheReverseOfForwardInEveryOrder) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  for (const ZQPtr<ZQNode>& root : shapes(doc)) {
    for (Order order : kOrders) {
      std::vector<ZQNode*> fwd = walk(ZQTreeIterator(root, nullptr, false, order));
      std::vector<ZQNode*> back = walkBack(ZQTreeIterator(root, nullptr, true, order));
      std::vector<ZQNode*> reversed(fwd.rbegin(), fwd.rend());
      EXPECT_EQ(names(back), names(reversed))
          << "root " << utf8(root->getLocalName().toString()) << " order " << order;
      EXPECT_FALSE(fwd.empty());
    }
  }
}

TEST(TreeIterator, EachOrderVisitsAsTold) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  std::vector<ZQPtr<ZQNode>> roots = shapes(doc);
  const ZQPtr<ZQNode>& mixed = roots[4];
  EXPECT_EQ(names(walk(ZQTreeIterator(mixed, nullptr, false, ZQTreeIterator::PRE_ORDER))),
            "m,x,'t1',y,z,'t2','t3',w,#document-fragment,'t4'");
  EXPECT_EQ(names(walk(ZQTreeIterator(mixed, nullptr, false, ZQTreeIterator::POST_ORDER))),
            "'t1',z,'t2',y,x,'t3',w,'t4',#document-fragment,m");
  // Elements without children twice, other leaves once, parents before and after.
  EXPECT_EQ(names(walk(ZQTreeIterator(mixed, nullptr, false, ZQTreeIterator::PRE_AND_POST_ORDER))),
            "m,x,'t1',y,z,z,'t2',y,x,'t3',w,w,#document-fragment,'t4',#document-fragment,m");
  // An empty fragment is no element: once.
  EXPECT_EQ(
      names(walk(ZQTreeIterator(roots[2], nullptr, false, ZQTreeIterator::PRE_AND_POST_ORDER))),
      "#document-fragment");
}

TEST(TreeIterator, HasNextNodeAgreesWithNextNodeEverywhere) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  int checks = 0;
  for (const ZQPtr<ZQNode>& root : shapes(doc)) {
    for (Order order : kOrders) {
      ZQTreeIterator it(root, nullptr, false, order);
      for (;;) {
        ZQTreeIterator probe = it;
        bool has = it.hasNextNode();
        ZQNode* next = probe.nextNode();
        EXPECT_EQ(has, next != nullptr) << "order " << order;
        ++checks;
        if (!it.nextNode()) break;
      }
      // And once more after the end.
      EXPECT_FALSE(it.hasNextNode());
    }
  }
  EXPECT_GT(checks, 60);
}

TEST(TreeIterator, HasPreviousNodeAgreesWithPreviousNodeEverywhere) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  int checks = 0;
  for (const ZQPtr<ZQNode>& root : shapes(doc)) {
    for (Order order : kOrders) {
      ZQTreeIterator it(root, nullptr, true, order);
      for (;;) {
        ZQTreeIterator probe = it;
        bool has = it.hasPreviousNode();
        ZQNode* previous = probe.previousNode();
        EXPECT_EQ(has, previous != nullptr) << "order " << order;
        ++checks;
        if (!it.previousNode()) break;
      }
      EXPECT_FALSE(it.hasPreviousNode());
    }
  }
  EXPECT_GT(checks, 60);
}

TEST(TreeIterator, HasNextNodeFromEveryStateAndDirection) {
  // States reached going backward, probed forward, and the other way round.
  ZQPtr<ZQDocument> doc(new ZQDocument());
  for (const ZQPtr<ZQNode>& root : shapes(doc)) {
    for (Order order : kOrders) {
      ZQTreeIterator back(root, nullptr, true, order);
      while (back.previousNode()) {
        ZQTreeIterator probe = back;
        EXPECT_EQ(back.hasNextNode(), probe.nextNode() != nullptr);
      }
      ZQTreeIterator fwd(root, nullptr, false, order);
      while (fwd.nextNode()) {
        ZQTreeIterator probe = fwd;
        EXPECT_EQ(fwd.hasPreviousNode(), probe.previousNode() != nullptr);
      }
    }
  }
}
