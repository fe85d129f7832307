// The node tree: the sibling ring, loading accessors, tree writing and its failures, counting
// and relations, the leaf nodes, and destruction of deep trees.
#include <gtest/gtest.h>

#include <vector>

#include "NodeTestSupport.h"
#include "common/ZQError.h"

using namespace ZQCommonNS;
using zqtest::names;
using zqtest::RawLinks;
using zqtest::ScriptDocument;
using zqtest::TestElement;
using zqtest::u;
using zqtest::utf8;

namespace {

using Ev = ScriptDocument;

ZQPtr<ZQNode> el(ZQDocument* doc, const char* name) { return zqtest::element(doc, name); }

std::vector<ZQNode*> childrenFast(const ZQNode* parent) {
  std::vector<ZQNode*> out;
  for (ZQNode* c = parent->getFirstChildFast(); c; c = c->getNextSiblingFast()) out.push_back(c);
  return out;
}

std::vector<ZQNode*> childrenBackward(const ZQNode* parent) {
  std::vector<ZQNode*> out;
  for (ZQNode* c = parent->getLastChildFast(); c; c = c->getPreviousSibling()) out.push_back(c);
  return out;
}

// Every link of a parent's ring agrees with every other.
void expectRingIntact(const ZQNode* parent) {
  std::vector<ZQNode*> forward = childrenFast(parent);
  std::vector<ZQNode*> backward = childrenBackward(parent);
  ASSERT_EQ(forward.size(), backward.size());
  for (size_t i = 0; i < forward.size(); ++i) {
    EXPECT_EQ(forward[i], backward[backward.size() - 1 - i]);
    EXPECT_EQ(RawLinks::parent(forward[i]), parent);
  }
  if (!forward.empty()) {
    EXPECT_EQ(RawLinks::next(forward.back()), forward.front());
    EXPECT_EQ(RawLinks::previous(forward.front()), nullptr);
  }
}

// Runs `f`, expecting a ZQError with that code, message and source.
template <class F>
void expectError(F f, int code, const char* message, const char* source) {
  try {
    f();
    ADD_FAILURE() << "no error thrown";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), code);
    EXPECT_EQ(utf8(e.getRawMessage()), message);
    EXPECT_EQ(utf8(e.getSource()), source);
  }
}

// A document that counts calls of its text factory.
class CountingDocument : public ZQDocument {
 public:
  ZQPtr<ZQNode> createTextNodeElement(const UnicodeString& text, ZQNode* parent) override {
    ++textElementCalls;
    lastParent = parent;
    return ZQDocument::createTextNodeElement(text, parent);
  }
  ZQPtr<ZQTextNode> createTextNode(const UnicodeString& text) override {
    ++textCalls;
    return ZQDocument::createTextNode(text);
  }
  int textElementCalls = 0;
  int textCalls = 0;
  ZQNode* lastParent = nullptr;
};

// A node class that overrides appendChildEx to substitute a node of its own.
class SubstitutingElement : public TestElement {
 public:
  using TestElement::TestElement;
  ZQNode* appendChildEx(ZQNode* child) override {
    if (child->getLocalName() == ZQName(u("refuse"))) return nullptr;
    return appendChild(child);
  }
};

// An element that counts the children offered to its appendChild.
class CountingAppendElement : public TestElement {
 public:
  using TestElement::TestElement;
  ZQNode* appendChild(ZQNode* child) override {
    ++appendCalls;
    return ZQNode::appendChild(child);
  }
  int appendCalls = 0;
};

// A document whose text factory hands out one node it keeps, already placed in a holder.
class ReusingTextDocument : public ZQDocument {
 public:
  ZQPtr<ZQNode> createTextNodeElement(const UnicodeString& text, ZQNode* parent) override {
    if (!shared) {
      holder = createElement(ZQName(UnicodeString(u"holder")));
      shared = ZQDocument::createTextNodeElement(text, parent);
      holder->appendChild(shared.get());
    }
    return shared;
  }
  ZQPtr<ZQElement> holder;
  ZQPtr<ZQNode> shared;
};

}  // namespace

// ---------------------------------------------------------------- type identity

TEST(Node, TypeIdentityOfLeafNodes) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQTextNode> text = doc->createTextNode(u("x"));
  ZQPtr<ZQProcessingInstruction> pi = doc->createProcessingInstruction(ZQName(u("t")), u("d"));
  ZQPtr<ZQDocumentFragment> frag = doc->createDocumentFragment();

  EXPECT_EQ(text->getTypeID(), 0xD8444919u);
  EXPECT_EQ(utf8(text->getTypeName()), "ZQTextNode");
  EXPECT_EQ(pi->getTypeID(), 0x78626383u);
  EXPECT_EQ(utf8(pi->getTypeName()), "ZQProcessingInstruction");
  EXPECT_EQ(frag->getTypeID(), 0xB7475C6Fu);
  EXPECT_EQ(utf8(frag->getTypeName()), "ZQDocumentFragment");
  EXPECT_EQ(doc->getTypeID(), 0x2A780AB6u);
  EXPECT_EQ(utf8(doc->getTypeName()), "ZQDocument");
  EXPECT_EQ(ZQNode::getStaticTypeID(), 0xFF72074Au);

  for (const ZQNode* n :
       {static_cast<const ZQNode*>(text.get()), static_cast<const ZQNode*>(pi.get()),
        static_cast<const ZQNode*>(frag.get()), static_cast<const ZQNode*>(doc.get())}) {
    EXPECT_TRUE(n->isA(0xFF72074Au));
    EXPECT_TRUE(n->isA(0xD18D040Au));
    EXPECT_TRUE(n->isA(0xDF537371u));
    EXPECT_FALSE(n->isA(0x9B60777Du));
  }
  EXPECT_FALSE(text->isA(ZQDocument::getStaticTypeID()));
}

TEST(Node, NodeTypesNamesAndValues) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQTextNode> text = doc->createTextNode(u("hello"));
  ZQPtr<ZQProcessingInstruction> pi =
      doc->createProcessingInstruction(ZQName(u("target")), u("data"));
  ZQPtr<ZQDocumentFragment> frag = doc->createDocumentFragment();

  EXPECT_EQ(text->getNodeType(), ZQNode::TEXT_NODE);
  EXPECT_EQ(pi->getNodeType(), ZQNode::PROCESSING_INSTRUCTION_NODE);
  EXPECT_EQ(frag->getNodeType(), ZQNode::DOCUMENT_FRAGMENT_NODE);
  EXPECT_EQ(doc->getNodeType(), ZQNode::DOCUMENT_NODE);
  EXPECT_EQ(ZQNode::ELEMENT_NODE, 1);
  EXPECT_EQ(ZQNode::ATTRIBUTE_NODE, 2);
  EXPECT_EQ(ZQNode::ENTITY_NODE, 6);
  EXPECT_EQ(ZQNode::DOCUMENT_TYPE_NODE, 10);
  EXPECT_EQ(ZQNode::NOTATION_NODE, 12);

  EXPECT_EQ(text->getLocalName(), ZQN_hash_text);
  EXPECT_EQ(utf8(text->getNodeName().toString()), "#text");
  EXPECT_EQ(utf8(pi->getLocalName().toString()), "target");
  EXPECT_EQ(pi->getNodeName(), pi->getLocalName());
  EXPECT_EQ(frag->getLocalName(), ZQN_hash_document_fragment);
  EXPECT_EQ(doc->getLocalName(), ZQN_hash_document);
  EXPECT_EQ(doc->getFOName(), ZQName(ZQN_hash_document));

  EXPECT_TRUE(text->getNamespaceUri().isEmpty());
  EXPECT_TRUE(text->getPrefix().isEmpty());
  text->setPrefix(ZQName(u("p")));
  EXPECT_TRUE(text->getPrefix().isEmpty());

  EXPECT_TRUE(pi->getNodeValue().isNull());
  EXPECT_TRUE(frag->getNodeValue().isNull());
  EXPECT_TRUE(frag->getText().isEmpty());
  EXPECT_EQ(frag->getAttributes(), nullptr);
  EXPECT_FALSE(frag->hasAttributes());
}

TEST(Node, OwnerDocument) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> e = el(doc, "a");
  EXPECT_EQ(e->getOwnerDocument(), doc.get());
  EXPECT_EQ(doc->getOwnerDocument(), nullptr);
}

TEST(Node, PredicatesAreFalse) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> n = doc->createDocumentFragment();
  EXPECT_FALSE(n->isFO());
  EXPECT_FALSE(n->isAXFO());
  EXPECT_FALSE(n->isArea());
  EXPECT_FALSE(n->isCSS());
  EXPECT_FALSE(n->isHTML());
  EXPECT_FALSE(n->isHTMLSyntax());
  EXPECT_FALSE(n->isXHTMLSyntax());
  EXPECT_FALSE(n->isXML());
  EXPECT_FALSE(n->isBlock());
  EXPECT_FALSE(n->isBlockOrBdo(true));
  EXPECT_FALSE(n->isBlockOrBdo(false));
  EXPECT_FALSE(n->isInline());
  EXPECT_FALSE(n->isInlineBlock());
  EXPECT_FALSE(n->isNeutral());
  EXPECT_FALSE(n->isOutOfLine());
  EXPECT_FALSE(n->isBidiOverride());
  EXPECT_FALSE(n->isElementNode());
  EXPECT_FALSE(n->isProcessingInstruction());
  EXPECT_FALSE(n->isText());
  EXPECT_FALSE(n->saveTextTag());
  EXPECT_FALSE(n->isBidiDone());
  n->bidiDone(3);
  EXPECT_FALSE(n->isBidiDone());
  n->setText(u("ignored"));
  EXPECT_TRUE(n->getText().isEmpty());
  n->finishAttributes();
  EXPECT_EQ(n->cloneNode(true), nullptr);
  EXPECT_EQ(n->cloneNode(false), nullptr);
}

// ---------------------------------------------------------------- flags

TEST(Node, FlagWord) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> n = el(doc, "a");
  EXPECT_EQ(n->getFlags(), 0u);
  EXPECT_FALSE(n->isLoading());
  EXPECT_FALSE(n->isLoaded());

  n->setFlag(0x30, true);
  EXPECT_TRUE(n->getFlag(0x10));
  EXPECT_TRUE(n->getFlag(0x11));
  EXPECT_FALSE(n->getFlag(0x01));
  n->setFlag(0x10, false);
  EXPECT_EQ(n->getFlags(), 0x20u);

  // setLoadDone acts only on a loading node.
  n->setLoadDone();
  EXPECT_FALSE(n->getFlag(ZQNode::FLAG_LOAD_DONE));

  n->setFlag(ZQNode::FLAG_LOADING, true);
  EXPECT_TRUE(n->isLoading());
  EXPECT_TRUE(n->isLoaded());  // true from the moment loading begins
  n->setLoadDone();
  EXPECT_FALSE(n->isLoading());
  EXPECT_TRUE(n->getFlag(ZQNode::FLAG_LOAD_DONE));
  EXPECT_TRUE(n->isLoaded());
}

TEST(Node, CloneMembersCopiesTheWholeFlagWord) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> a = el(doc, "a");
  ZQPtr<ZQNode> b = el(doc, "b");
  b->setFlag(0x100, true);
  a->setFlag(ZQNode::FLAG_LOADING | ZQNode::FLAG_COMPLEMENTAL | 0x40, true);
  a->cloneMembers(b);
  EXPECT_EQ(b->getFlags(), a->getFlags());
}

// ---------------------------------------------------------------- the sibling ring

TEST(Node, OneChildPointsToItself) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  ZQPtr<ZQNode> c = el(doc, "c");
  p->appendChild(c);
  EXPECT_EQ(RawLinks::next(c), c.get());
  EXPECT_EQ(c->getNextSiblingFast(), nullptr);
  EXPECT_EQ(c->getNextSibling(), nullptr);
  EXPECT_EQ(p->getFirstChildFast(), p->getLastChildFast());
  EXPECT_EQ(p->getFirstChildFast(), c.get());
  EXPECT_EQ(c->getPreviousSibling(), nullptr);
  EXPECT_EQ(c->getParentNode(), p.get());
  EXPECT_EQ(c->getParentNodeFast(), p.get());
}

TEST(Node, RingOfSeveralChildren) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  for (const char* n : {"a", "b", "c", "d"}) p->appendChild(el(doc, n));
  EXPECT_EQ(names(childrenFast(p)), "a,b,c,d");
  EXPECT_EQ(names(childrenBackward(p)), "d,c,b,a");
  expectRingIntact(p);
  EXPECT_EQ(RawLinks::lastChild(p)->getLocalName(), ZQName(u("d")));
  // The last child's next field is the first child, but is never handed out.
  EXPECT_EQ(RawLinks::next(p->getLastChildFast()), p->getFirstChildFast());
  EXPECT_EQ(p->getLastChildFast()->getNextSiblingFast(), nullptr);
  EXPECT_TRUE(p->hasChildNodesFast());
  EXPECT_TRUE(p->hasChildNodes());
}

TEST(Node, DetachedNodeHasNoSiblings) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> n = el(doc, "n");
  EXPECT_EQ(n->getNextSibling(), nullptr);
  EXPECT_EQ(n->getNextSiblingFast(), nullptr);
  EXPECT_EQ(n->getPreviousSibling(), nullptr);
  EXPECT_EQ(n->getParentNode(), nullptr);
  EXPECT_EQ(n->getFirstChild(), nullptr);
  EXPECT_EQ(n->getLastChild(), nullptr);
  EXPECT_FALSE(n->hasChildNodes());
  EXPECT_FALSE(n->hasChildNodesFast());
}

// ---------------------------------------------------------------- tree writing

TEST(Node, AppendChildTakesOneReference) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  ZQPtr<ZQNode> c = el(doc, "c");
  EXPECT_EQ(c->getRefCount(), 1);
  EXPECT_EQ(p->appendChild(c), c.get());
  EXPECT_EQ(c->getRefCount(), 2);
}

TEST(Node, AppendChildMovesFromTheOldParent) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  ZQPtr<ZQNode> q = el(doc, "q");
  ZQPtr<ZQNode> a = el(doc, "a");
  ZQPtr<ZQNode> b = el(doc, "b");
  p->appendChild(a);
  p->appendChild(b);
  q->appendChild(a);
  EXPECT_EQ(names(childrenFast(p)), "b");
  EXPECT_EQ(names(childrenFast(q)), "a");
  EXPECT_EQ(a->getRefCount(), 2);
  expectRingIntact(p);
  expectRingIntact(q);
  // Appending the last child again keeps it last.
  p->appendChild(el(doc, "c"));
  p->appendChild(b);
  EXPECT_EQ(names(childrenFast(p)), "c,b");
  expectRingIntact(p);
}

TEST(Node, InsertBeforeItselfChangesNothing) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  for (const char* n : {"a", "b", "c"}) p->appendChild(el(doc, n));
  ZQNode* b = p->getFirstChildFast()->getNextSiblingFast();
  int count = b->getRefCount();
  EXPECT_EQ(p->insertBefore(b, b), b);
  EXPECT_EQ(b->getRefCount(), count);
  EXPECT_EQ(names(childrenFast(p)), "a,b,c");
  expectRingIntact(p);
}

TEST(Node, InsertBeforeNullAppends) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  p->appendChild(el(doc, "a"));
  ZQPtr<ZQNode> z = el(doc, "z");
  EXPECT_EQ(p->insertBefore(z, nullptr), z.get());
  EXPECT_EQ(names(childrenFast(p)), "a,z");
  expectRingIntact(p);
}

TEST(Node, InsertBeforeOwnNextSiblingKeepsTheOrder) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  for (const char* n : {"a", "b", "c"}) p->appendChild(el(doc, n));
  ZQNode* a = p->getFirstChildFast();
  ZQNode* b = a->getNextSiblingFast();
  ZQNode* c = b->getNextSiblingFast();
  p->insertBefore(a, b);
  EXPECT_EQ(names(childrenFast(p)), "a,b,c");
  expectRingIntact(p);
  p->insertBefore(b, c);
  EXPECT_EQ(names(childrenFast(p)), "a,b,c");
  expectRingIntact(p);
  EXPECT_EQ(b->getRefCount(), 1);
}

TEST(Node, InsertBeforeAtEveryPlace) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  for (const char* n : {"a", "b", "c"}) p->appendChild(el(doc, n));
  ZQNode* a = p->getFirstChildFast();
  ZQNode* c = p->getLastChildFast();
  p->insertBefore(el(doc, "x"), a);  // new first child closes the ring
  EXPECT_EQ(names(childrenFast(p)), "x,a,b,c");
  expectRingIntact(p);
  p->insertBefore(el(doc, "y"), c);
  EXPECT_EQ(names(childrenFast(p)), "x,a,b,y,c");
  expectRingIntact(p);
  // Moving the last child to the front.
  p->insertBefore(c, p->getFirstChildFast());
  EXPECT_EQ(names(childrenFast(p)), "c,x,a,b,y");
  expectRingIntact(p);
  // Moving the first child before the last.
  p->insertBefore(p->getFirstChildFast(), p->getLastChildFast());
  EXPECT_EQ(names(childrenFast(p)), "x,a,b,c,y");
  expectRingIntact(p);
}

TEST(Node, InsertBeforeMovesFromAnotherParent) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  ZQPtr<ZQNode> q = el(doc, "q");
  p->appendChild(el(doc, "a"));
  q->appendChild(el(doc, "x"));
  q->appendChild(el(doc, "y"));
  ZQNode* x = q->getFirstChildFast();
  p->insertBefore(x, p->getFirstChildFast());
  EXPECT_EQ(names(childrenFast(p)), "x,a");
  EXPECT_EQ(names(childrenFast(q)), "y");
  EXPECT_EQ(x->getRefCount(), 1);
  expectRingIntact(p);
  expectRingIntact(q);
}

TEST(Node, ReplaceChildWithItselfAddsAReference) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  p->appendChild(el(doc, "a"));
  p->appendChild(el(doc, "b"));
  ZQNode* a = p->getFirstChildFast();
  EXPECT_EQ(a->getRefCount(), 1);
  {
    ZQPtr<ZQNode> r = p->replaceChild(a, a);
    EXPECT_EQ(r.get(), a);
    EXPECT_EQ(a->getRefCount(), 2);
    EXPECT_EQ(names(childrenFast(p)), "a,b");
  }
  EXPECT_EQ(a->getRefCount(), 1);
  expectRingIntact(p);
}

TEST(Node, ReplaceOnlyChildPointsNewNodeToItself) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  ZQPtr<ZQNode> old = el(doc, "old");
  ZQPtr<ZQNode> nu = el(doc, "new");
  p->appendChild(old);
  ZQPtr<ZQNode> r = p->replaceChild(nu, old);
  EXPECT_EQ(r.get(), old.get());
  EXPECT_EQ(RawLinks::next(nu), nu.get());
  EXPECT_EQ(RawLinks::previous(nu), nullptr);
  EXPECT_EQ(p->getLastChildFast(), nu.get());
  EXPECT_EQ(old->getParentNode(), nullptr);
  EXPECT_EQ(RawLinks::next(old), nullptr);
  EXPECT_EQ(RawLinks::previous(old), nullptr);
  // The result took over the parent's reference: the caller's and the result's.
  EXPECT_EQ(old->getRefCount(), 2);
  EXPECT_EQ(nu->getRefCount(), 2);
}

TEST(Node, ReplaceChildAtEveryPlace) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  for (const char* n : {"a", "b", "c"}) p->appendChild(el(doc, n));
  p->replaceChild(el(doc, "A"), p->getFirstChildFast());
  EXPECT_EQ(names(childrenFast(p)), "A,b,c");
  expectRingIntact(p);
  p->replaceChild(el(doc, "B"), p->getFirstChildFast()->getNextSiblingFast());
  EXPECT_EQ(names(childrenFast(p)), "A,B,c");
  expectRingIntact(p);
  p->replaceChild(el(doc, "C"), p->getLastChildFast());
  EXPECT_EQ(names(childrenFast(p)), "A,B,C");
  EXPECT_EQ(utf8(p->getLastChildFast()->getLocalName().toString()), "C");
  expectRingIntact(p);
  // A sibling of the same parent takes the old one's place, read after its own removal.
  p->replaceChild(p->getFirstChildFast(), p->getLastChildFast());
  EXPECT_EQ(names(childrenFast(p)), "B,A");
  expectRingIntact(p);
  p->replaceChild(p->getLastChildFast(), p->getFirstChildFast());
  EXPECT_EQ(names(childrenFast(p)), "A");
  expectRingIntact(p);
}

TEST(Node, ReplacedNodeDiesWithTheReturnedPointer) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  p->appendChild(el(doc, "a"));
  int live = TestElement::liveCount;
  {
    ZQPtr<ZQNode> r = p->replaceChild(el(doc, "b"), p->getFirstChildFast());
    EXPECT_EQ(r->getRefCount(), 1);
    EXPECT_EQ(TestElement::liveCount, live + 1);
  }
  EXPECT_EQ(TestElement::liveCount, live);
}

TEST(Node, RemoveChildAtEveryPlace) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  for (const char* n : {"a", "b", "c", "d"}) p->appendChild(el(doc, n));
  ZQPtr<ZQNode> b = p->removeChild(p->getFirstChildFast()->getNextSiblingFast());
  EXPECT_EQ(names(childrenFast(p)), "a,c,d");
  EXPECT_EQ(b->getRefCount(), 1);
  EXPECT_EQ(b->getParentNode(), nullptr);
  EXPECT_EQ(RawLinks::next(b), nullptr);
  EXPECT_EQ(RawLinks::previous(b), nullptr);
  expectRingIntact(p);
  p->removeChild(p->getFirstChildFast());
  EXPECT_EQ(names(childrenFast(p)), "c,d");
  expectRingIntact(p);
  p->removeChild(p->getLastChildFast());
  EXPECT_EQ(names(childrenFast(p)), "c");
  expectRingIntact(p);
  EXPECT_EQ(RawLinks::next(p->getLastChildFast()), p->getLastChildFast());
  p->removeChild(p->getLastChildFast());
  EXPECT_FALSE(p->hasChildNodesFast());
  EXPECT_EQ(p->getFirstChildFast(), nullptr);
}

TEST(Node, RemovedNodeDiesWithTheReturnedPointer) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  p->appendChild(el(doc, "a"));
  int live = TestElement::liveCount;
  p->removeChild(p->getFirstChildFast());
  EXPECT_EQ(TestElement::liveCount, live - 1);
}

TEST(Node, AppendToTheDocumentItselfBeforeAnyLoad) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> root = el(doc, "root");
  EXPECT_EQ(doc->appendChild(root), root.get());
  EXPECT_EQ(doc->getFirstChild(), root.get());
  EXPECT_EQ(root->getParentNode(), doc.get());
  ZQPtr<ZQNode> pi = doc->createProcessingInstruction(ZQName(u("pi")), u(""));
  EXPECT_EQ(doc->insertBefore(pi, root), pi.get());
  EXPECT_EQ(doc->getChildNodeCount(), 2);
}

TEST(Node, FragmentIsInsertedItself) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  ZQPtr<ZQDocumentFragment> frag = doc->createDocumentFragment();
  frag->appendChild(el(doc, "a"));
  frag->appendChild(el(doc, "b"));
  p->appendChild(frag);
  EXPECT_EQ(p->getChildNodeCount(), 1);
  EXPECT_EQ(p->getFirstChild(), frag.get());
  EXPECT_EQ(frag->getChildNodeCount(), 2);
}

// ---------------------------------------------------------------- failures

TEST(Node, InsertBeforeFailures) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQDocument> other(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  ZQPtr<ZQNode> a = el(doc, "a");
  ZQPtr<ZQNode> stranger = el(doc, "s");
  ZQPtr<ZQNode> foreign = el(other, "f");
  p->appendChild(a);
  expectError([&] { p->insertBefore(nullptr, a); }, 3, "SYSTEM ERROR: newChild is null.",
              "ZQCommonNS::ZQNode::insertBefore");
  expectError([&] { p->insertBefore(el(doc, "x"), stranger); }, 9,
              "SYSTEM ERROR: refChild is not a child of this node.",
              "ZQCommonNS::ZQNode::insertBefore");
  expectError([&] { p->insertBefore(foreign, a); }, 6,
              "SYSTEM ERROR: newChild is created from a different document.",
              "ZQCommonNS::ZQNode::insertBefore");
  // A null refChild hands over to appendChild, whose site reports the failure.
  expectError([&] { p->insertBefore(foreign, nullptr); }, 6,
              "SYSTEM ERROR: newChild is created from a different document.",
              "ZQCommonNS::ZQNode::appendChild");
  // The null check comes first, then refChild's parent, then the document.
  expectError([&] { p->insertBefore(nullptr, stranger); }, 3, "SYSTEM ERROR: newChild is null.",
              "ZQCommonNS::ZQNode::insertBefore");
  expectError([&] { p->insertBefore(foreign, stranger); }, 9,
              "SYSTEM ERROR: refChild is not a child of this node.",
              "ZQCommonNS::ZQNode::insertBefore");
  EXPECT_EQ(names(childrenFast(p)), "a");
  EXPECT_EQ(foreign->getRefCount(), 1);
  EXPECT_EQ(foreign->getParentNode(), nullptr);
}

TEST(Node, InsertBeforeItselfFromAnotherDocumentIsNotChecked) {
  // Equal nodes return before the document check.
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  ZQPtr<ZQNode> a = el(doc, "a");
  p->appendChild(a);
  EXPECT_EQ(p->insertBefore(a, a), a.get());
}

TEST(Node, ReplaceChildFailures) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQDocument> other(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  ZQPtr<ZQNode> a = el(doc, "a");
  ZQPtr<ZQNode> stranger = el(doc, "s");
  ZQPtr<ZQNode> foreign = el(other, "f");
  p->appendChild(a);
  expectError([&] { p->replaceChild(nullptr, a); }, 3, "SYSTEM ERROR: newChild is null.",
              "ZQCommonNS::ZQNode::replaceChild");
  expectError([&] { p->replaceChild(stranger, nullptr); }, 3, "SYSTEM ERROR: oldChild is null.",
              "ZQCommonNS::ZQNode::replaceChild");
  expectError([&] { p->replaceChild(a, stranger); }, 9,
              "SYSTEM ERROR: oldChild is not a child of this node.",
              "ZQCommonNS::ZQNode::replaceChild");
  expectError([&] { p->replaceChild(foreign, a); }, 6,
              "SYSTEM ERROR: newChild is created from a different document.",
              "ZQCommonNS::ZQNode::replaceChild");
  EXPECT_EQ(names(childrenFast(p)), "a");
  EXPECT_EQ(a->getRefCount(), 2);
}

TEST(Node, RemoveChildFailures) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  ZQPtr<ZQNode> q = el(doc, "q");
  ZQPtr<ZQNode> a = el(doc, "a");
  q->appendChild(a);
  expectError([&] { p->removeChild(nullptr); }, 3, "SYSTEM ERROR: oldChild is null.",
              "ZQCommonNS::ZQNode::removeChild");
  expectError([&] { p->removeChild(a); }, 9, "SYSTEM ERROR: oldChild is not a child of this node.",
              "ZQCommonNS::ZQNode::removeChild");
  EXPECT_EQ(a->getParentNode(), q.get());
}

TEST(Node, AnOwnedAttributeIsNotAChildOfItsElement) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQElement> e = doc->createElement(ZQName(u("e")));
  e->appendChild(el(doc, "c"));
  e->setAttribute(ZQName(u("a")), ZQValue(1));
  e->setAttribute(ZQName(u("b")), ZQValue(2));
  ZQAttr* a = e->getAttributeNode(ZQName(u("a")));
  const int refs = a->getRefCount();
  ZQPtr<ZQNode> fresh = el(doc, "f");
  ZQPtr<ZQNode> other = el(doc, "o");
  const char* notChild = "SYSTEM ERROR: oldChild is not a child of this node.";
  expectError([&] { e->removeChild(a); }, 9, notChild, "ZQCommonNS::ZQNode::removeChild");
  expectError([&] { e->insertBefore(fresh, a); }, 9,
              "SYSTEM ERROR: refChild is not a child of this node.",
              "ZQCommonNS::ZQNode::insertBefore");
  expectError([&] { e->replaceChild(fresh, a); }, 9, notChild, "ZQCommonNS::ZQNode::replaceChild");
  // Moving it elsewhere asks its element to give it up, which it refuses.
  expectError([&] { other->appendChild(a); }, 9, notChild, "ZQCommonNS::ZQNode::removeChild");
  expectError([&] { other->insertBefore(a, nullptr); }, 9, notChild,
              "ZQCommonNS::ZQNode::removeChild");
  ZQNode* c = other->appendChild(el(doc, "oc"));
  expectError([&] { other->replaceChild(a, c); }, 9, notChild, "ZQCommonNS::ZQNode::removeChild");
  // Nothing moved and no reference was kept.
  EXPECT_EQ(a->getRefCount(), refs);
  EXPECT_EQ(a->getOwnerElement(), e.get());
  EXPECT_EQ(e->getAttributes()->getLength(), 2);
  EXPECT_EQ(e->getAttribute(ZQName(u("b"))).toString(), u("2"));
  EXPECT_EQ(names(childrenFast(e)), "c");
  EXPECT_EQ(names(childrenFast(other)), "oc");
  expectRingIntact(e);
  EXPECT_EQ(fresh->getParentNode(), nullptr);
  // A detached attribute is a node like any other and may be a child.
  ZQPtr<ZQAttr> b = e->getAttributes()->removeNamedItem(ZQName(u("b")));
  other->appendChild(b);
  EXPECT_EQ(other->getLastChildFast(), b.get());
  ZQPtr<ZQNode> back = other->removeChild(b);
  EXPECT_EQ(back.get(), b.get());
  EXPECT_EQ(names(childrenFast(other)), "oc");
}

TEST(Node, AppendChildFailures) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQDocument> other(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  ZQPtr<ZQNode> foreign = el(other, "f");
  expectError([&] { p->appendChild(nullptr); }, 3, "SYSTEM ERROR: newChild is null.",
              "ZQCommonNS::ZQNode::appendChild");
  expectError([&] { p->appendChild(foreign); }, 6,
              "SYSTEM ERROR: newChild is created from a different document.",
              "ZQCommonNS::ZQNode::appendChild");
  // Nor may a node of one document go under another document itself.
  expectError([&] { doc->appendChild(foreign); }, 6,
              "SYSTEM ERROR: newChild is created from a different document.",
              "ZQCommonNS::ZQNode::appendChild");
  EXPECT_FALSE(p->hasChildNodesFast());
  EXPECT_EQ(foreign->getRefCount(), 1);
}

TEST(Node, SetNodeValueFails) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> frag = doc->createDocumentFragment();
  expectError([&] { frag->setNodeValue(ZQValue(1)); }, 11,
              "SYSTEM ERROR: Cannot set a value on node type: ZQDocumentFragment",
              "ZQCommonNS::ZQNode::setNodeValue");
  ZQPtr<ZQNode> pi = doc->createProcessingInstruction(ZQName(u("t")), u("d"));
  expectError([&] { pi->setNodeValue(ZQValue(u("x"), ZQUNIT_NONE)); }, 11,
              "SYSTEM ERROR: Cannot set a value on node type: ZQProcessingInstruction",
              "ZQCommonNS::ZQNode::setNodeValue");
  expectError([&] { doc->setNodeValue(ZQValue::NULL_VALUE); }, 11,
              "SYSTEM ERROR: Cannot set a value on node type: ZQDocument",
              "ZQCommonNS::ZQNode::setNodeValue");
}

// ---------------------------------------------------------------- other writing

TEST(Node, AppendChildExIsAppendChild) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  ZQPtr<ZQNode> c = el(doc, "c");
  EXPECT_EQ(p->appendChildEx(c), c.get());
  EXPECT_EQ(p->getLastChildFast(), c.get());
  expectError([&] { p->appendChildEx(nullptr); }, 3, "SYSTEM ERROR: newChild is null.",
              "ZQCommonNS::ZQNode::appendChild");
}

TEST(Node, AppendChildTextAsksAnOverriddenAppendChild) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<CountingAppendElement> p(new CountingAppendElement(doc.get(), ZQName(u("p"))));
  ZQNode* t = p->appendChildText(u("abc"));
  ASSERT_NE(t, nullptr);
  EXPECT_EQ(p->appendCalls, 1);
  EXPECT_EQ(p->getLastChildFast(), t);
  EXPECT_EQ(t->getRefCount(), 1);
}

TEST(Node, AppendChildTextMovesAPlacedNodeFromItsParent) {
  ZQPtr<ReusingTextDocument> doc(new ReusingTextDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  ZQNode* t = p->appendChildText(u("abc"));
  ASSERT_NE(t, nullptr);
  EXPECT_EQ(t->getParentNode(), p.get());
  EXPECT_EQ(doc->holder->getFirstChildFast(), nullptr);
  EXPECT_EQ(p->getChildNodeCount(), 1);
  // The factory's holder and the parent: the moved node is counted once for each.
  EXPECT_EQ(t->getRefCount(), 2);
  // Asked again, the same node moves to its own parent's end and is not counted again.
  EXPECT_EQ(p->appendChildText(u("abc")), t);
  EXPECT_EQ(p->getChildNodeCount(), 1);
  EXPECT_EQ(t->getRefCount(), 2);
}

TEST(Node, AppendChildTextGoesThroughTheDocument) {
  ZQPtr<CountingDocument> doc(new CountingDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  ZQNode* t = p->appendChildText(u("abc"));
  ASSERT_NE(t, nullptr);
  EXPECT_TRUE(t->isText());
  EXPECT_EQ(utf8(t->getText()), "abc");
  EXPECT_EQ(doc->textElementCalls, 1);
  EXPECT_EQ(doc->textCalls, 1);
  EXPECT_EQ(doc->lastParent, p.get());
  EXPECT_EQ(t->getRefCount(), 1);  // the parent's only

  ZQNode* lf = p->appendChildTextLF();
  EXPECT_EQ(utf8(lf->getText()), "\n");
  EXPECT_EQ(doc->textElementCalls, 2);

  ZQNode* lf2 = p->insertBeforeTextLF(t);
  EXPECT_EQ(utf8(lf2->getText()), "\n");
  EXPECT_EQ(doc->textElementCalls, 3);
  EXPECT_EQ(p->getFirstChildFast(), lf2);
  EXPECT_EQ(p->getChildNodeCount(), 3);
  // A null refChild appends.
  ZQNode* appended = p->insertBeforeTextLF(nullptr);
  EXPECT_EQ(appended, p->getLastChildFast());
}

TEST(Node, AppendChildrenMovesARun) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> from = el(doc, "from");
  ZQPtr<ZQNode> to = el(doc, "to");
  for (const char* n : {"a", "b", "c", "d", "e"}) from->appendChild(el(doc, n));
  ZQNode* b = from->getFirstChildFast()->getNextSiblingFast();
  ZQNode* e = from->getLastChildFast();
  to->appendChildren(b, e);
  EXPECT_EQ(names(childrenFast(from)), "a,e");
  EXPECT_EQ(names(childrenFast(to)), "b,c,d");
  // Without a stop, to the end of the run.
  to->appendChildren(from->getFirstChildFast(), nullptr);
  EXPECT_EQ(names(childrenFast(from)), "");
  EXPECT_EQ(names(childrenFast(to)), "b,c,d,a,e");
  expectRingIntact(to);
  for (ZQNode* c : childrenFast(to)) EXPECT_EQ(c->getRefCount(), 1);
}

TEST(Node, AppendChildrenOfItsOwnChildrenEnds) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  for (const char* n : {"a", "b", "c", "d"}) p->appendChild(el(doc, n));
  ZQNode* b = p->getFirstChildFast()->getNextSiblingFast();
  // To the end of the run: b, c and d go to the end once each, in their order.
  p->appendChildren(b, nullptr);
  EXPECT_EQ(names(childrenFast(p)), "a,b,c,d");
  p->appendChildren(p->getFirstChildFast(), nullptr);
  EXPECT_EQ(names(childrenFast(p)), "a,b,c,d");
  // Up to a stop among them.
  ZQNode* c = b->getNextSiblingFast();
  p->appendChildren(p->getFirstChildFast(), c);
  EXPECT_EQ(names(childrenFast(p)), "c,d,a,b");
  expectRingIntact(p);
  for (ZQNode* child : childrenFast(p)) EXPECT_EQ(child->getRefCount(), 1);
}

TEST(Node, RemoveAllChildNodesReleasesEachChild) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  ZQPtr<ZQNode> kept = el(doc, "kept");
  p->appendChild(el(doc, "a"));
  p->appendChild(kept);
  p->appendChild(el(doc, "c"));
  int live = TestElement::liveCount;
  p->removeAllChildNodes();
  EXPECT_FALSE(p->hasChildNodesFast());
  EXPECT_EQ(TestElement::liveCount, live - 2);
  EXPECT_EQ(kept->getRefCount(), 1);
  EXPECT_EQ(kept->getParentNode(), nullptr);
  EXPECT_EQ(RawLinks::next(kept), nullptr);
  EXPECT_EQ(RawLinks::previous(kept), nullptr);
}

TEST(Node, DeleteAllChildNodesCountsEveryNode) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  ZQPtr<ZQNode> held = el(doc, "held");
  // p(a(x,y(z)), held(w), 'text')
  ZQNode* a = p->appendChild(el(doc, "a"));
  a->appendChild(el(doc, "x"));
  ZQNode* y = a->appendChild(el(doc, "y"));
  y->appendChild(el(doc, "z"));
  p->appendChild(held);
  held->appendChild(el(doc, "w"));
  p->appendChildText(u("text"));
  int live = TestElement::liveCount;
  EXPECT_EQ(p->deleteAllChildNodes(), 7L);
  EXPECT_FALSE(p->hasChildNodesFast());
  // Every element but the held one went; the held node lost its children too.
  EXPECT_EQ(TestElement::liveCount, live - 5);
  EXPECT_EQ(held->getRefCount(), 1);
  EXPECT_EQ(held->getParentNode(), nullptr);
  EXPECT_FALSE(held->hasChildNodesFast());
  EXPECT_EQ(p->deleteAllChildNodes(), 0L);
}

TEST(Node, DeleteAllChildNodesOfADeepTree) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> root = el(doc, "r");
  ZQNode* n = root;
  for (int i = 0; i < 1000000; ++i) n = n->appendChild(el(doc, "n"));
  root->appendChild(el(doc, "sibling"))->appendChildText(u("t"));
  int live = TestElement::liveCount;
  EXPECT_EQ(root->deleteAllChildNodes(), 1000002L);
  EXPECT_EQ(TestElement::liveCount, live - 1000001);
  EXPECT_FALSE(root->hasChildNodesFast());
}

// ---------------------------------------------------------------- destruction

TEST(Node, HeldNodeOutlivesItsParent) {
  ZQPtr<ZQNode> held;
  ZQPtr<ZQDocument> doc(new ZQDocument());
  int live = TestElement::liveCount;
  {
    ZQPtr<ZQNode> p = el(doc, "p");
    p->appendChild(el(doc, "a"));
    ZQNode* b = p->appendChild(el(doc, "b"));
    b->appendChild(el(doc, "b1"));
    b->appendChild(el(doc, "b2"))->appendChild(el(doc, "b21"));
    p->appendChild(el(doc, "c"))->appendChild(el(doc, "c1"));
    held = b;
    EXPECT_EQ(TestElement::liveCount, live + 8);
  }
  // p, a, c and c1 are gone; b keeps its subtree and loses its parent.
  EXPECT_EQ(TestElement::liveCount, live + 4);
  EXPECT_EQ(held->getParentNode(), nullptr);
  EXPECT_EQ(RawLinks::next(held), nullptr);
  EXPECT_EQ(RawLinks::previous(held), nullptr);
  EXPECT_EQ(names(childrenFast(held)), "b1,b2");
  EXPECT_EQ(names(childrenFast(held->getLastChildFast())), "b21");
  held = nullptr;
  EXPECT_EQ(TestElement::liveCount, live);
}

TEST(Node, DestroyingAMillionNestedNodesDoesNotRecurse) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  int live = TestElement::liveCount;
  {
    ZQPtr<ZQNode> root = el(doc, "r");
    ZQNode* n = root;
    for (int i = 0; i < 1000000; ++i) n = n->appendChild(el(doc, "n"));
    n->appendChildText(u("leaf"));
    EXPECT_EQ(TestElement::liveCount, live + 1000001);
    EXPECT_EQ(n->getNodeDepth(), 1000000);
  }
  EXPECT_EQ(TestElement::liveCount, live);
}

TEST(Node, DestroyingALongAndDeepDocument) {
  int live = TestElement::liveCount;
  {
    ZQPtr<ZQDocument> doc(new ZQDocument());
    ZQNode* n = doc;
    for (int i = 0; i < 1000; ++i) {
      ZQNode* e = n->appendChild(el(doc, "e"));
      for (int j = 0; j < 100; ++j) e->appendChildText(u("t"));
      n = e;
    }
    EXPECT_EQ(TestElement::liveCount, live + 1000);
  }
  EXPECT_EQ(TestElement::liveCount, live);
}

TEST(Node, DestroyingALoadingDocumentLoadsNothing) {
  int live = TestElement::liveCount;
  ZQPtr<ScriptDocument> doc(new ScriptDocument());
  doc->open({Ev::S("a"), Ev::S("b"), Ev::T("x"), Ev::E(), Ev::S("c"), Ev::E(), Ev::E()});
  ZQNode* a = doc->getFirstChild();
  ASSERT_NE(a, nullptr);
  a->getFirstChild();
  int calls = doc->loadCalls;
  size_t pending = doc->pending();
  doc->removeAllChildNodes();
  EXPECT_EQ(doc->loadCalls, calls);
  EXPECT_EQ(doc->pending(), pending);
  EXPECT_EQ(TestElement::liveCount, live);
}

// ---------------------------------------------------------------- pull reading

TEST(NodePull, FastAccessorsNeverLoad) {
  ZQPtr<ScriptDocument> doc(new ScriptDocument());
  doc->open({Ev::S("root"), Ev::S("a"), Ev::E(), Ev::E()});
  EXPECT_TRUE(doc->isLoading());
  EXPECT_FALSE(doc->hasChildNodesFast());
  EXPECT_EQ(doc->getFirstChildFast(), nullptr);
  EXPECT_EQ(doc->getLastChildFast(), nullptr);
  EXPECT_EQ(doc->loadCalls, 0);
}

TEST(NodePull, HasChildNodesLoadsOneNode) {
  ZQPtr<ScriptDocument> doc(new ScriptDocument());
  doc->open({Ev::S("root"), Ev::S("a"), Ev::E(), Ev::S("b"), Ev::E(), Ev::E()});
  EXPECT_TRUE(doc->hasChildNodes());
  EXPECT_EQ(doc->loadCalls, 1);
  ZQNode* root = doc->getFirstChildFast();
  ASSERT_NE(root, nullptr);
  EXPECT_TRUE(root->isLoading());
  EXPECT_FALSE(root->hasChildNodesFast());
  // The children of root come next.
  EXPECT_TRUE(root->hasChildNodes());
  EXPECT_EQ(doc->loadCalls, 2);
  EXPECT_EQ(names(childrenFast(root)), "a");
  // Asked again, a known answer loads nothing.
  EXPECT_TRUE(root->hasChildNodes());
  EXPECT_EQ(doc->loadCalls, 2);
}

TEST(NodePull, GetFirstChildLoadsOnlyWhatItNeeds) {
  ZQPtr<ScriptDocument> doc(new ScriptDocument());
  doc->open({Ev::S("root"), Ev::T("t1"), Ev::S("a"), Ev::E(), Ev::E()});
  ZQNode* root = doc->getFirstChild();
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(utf8(root->getLocalName().toString()), "root");
  EXPECT_EQ(doc->loadCalls, 1);
  ZQNode* t = root->getFirstChild();
  ASSERT_NE(t, nullptr);
  EXPECT_EQ(utf8(t->getText()), "t1");
  EXPECT_EQ(doc->loadCalls, 2);
  EXPECT_EQ(doc->pending(), 3u);
}

TEST(NodePull, EmptyClosedElementHasNoChildren) {
  ZQPtr<ScriptDocument> doc(new ScriptDocument());
  doc->open({Ev::S("root"), Ev::S("a"), Ev::E(), Ev::S("b"), Ev::E(), Ev::E()});
  ZQNode* root = doc->getFirstChild();
  ZQNode* a = root->getFirstChild();
  ASSERT_NE(a, nullptr);
  // One step reads a's end tag and b: a is then closed and has no child.
  EXPECT_FALSE(a->hasChildNodes());
  EXPECT_FALSE(a->isLoading());
  EXPECT_TRUE(a->getFlag(ZQNode::FLAG_LOAD_DONE));
  EXPECT_EQ(a->getFirstChild(), nullptr);
}

TEST(NodePull, GetLastChildCompletesTheNode) {
  ZQPtr<ScriptDocument> doc(new ScriptDocument());
  doc->open({Ev::S("root"), Ev::S("a"), Ev::T("x"), Ev::E(), Ev::S("b"), Ev::E(), Ev::E(),
             Ev::T("tail")});
  ZQNode* root = doc->getFirstChild();
  ZQNode* last = root->getLastChild();
  ASSERT_NE(last, nullptr);
  EXPECT_EQ(utf8(last->getLocalName().toString()), "b");
  EXPECT_FALSE(root->isLoading());
  EXPECT_TRUE(root->getFlag(ZQNode::FLAG_LOAD_DONE));
  EXPECT_EQ(names(childrenFast(root)), "a,b");
  EXPECT_EQ(names(childrenFast(root->getFirstChildFast())), "'x'");
}

TEST(NodePull, DocumentGetLastChildReadsEverything) {
  ZQPtr<ScriptDocument> doc(new ScriptDocument());
  doc->open({Ev::S("root"), Ev::S("a"), Ev::E(), Ev::E()});
  EXPECT_NE(doc->getLastChild(), nullptr);
  EXPECT_EQ(doc->pending(), 0u);
  EXPECT_FALSE(doc->isLoading());
  EXPECT_TRUE(doc->getFlag(ZQNode::FLAG_LOAD_DONE));
  EXPECT_EQ(doc->getLastLoadingNode(), nullptr);
}

TEST(NodePull, GetNextSiblingCompletesThenStepsOnce) {
  ZQPtr<ScriptDocument> doc(new ScriptDocument());
  doc->open({Ev::S("root"), Ev::S("a"), Ev::S("a1"), Ev::E(), Ev::S("a2"), Ev::E(), Ev::E(),
             Ev::S("b"), Ev::S("b1"), Ev::E(), Ev::E(), Ev::E()});
  ZQNode* root = doc->getFirstChild();
  ZQNode* a = root->getFirstChild();
  ASSERT_NE(a, nullptr);
  EXPECT_FALSE(a->hasChildNodesFast());
  ZQNode* b = a->getNextSibling();
  ASSERT_NE(b, nullptr);
  EXPECT_EQ(utf8(b->getLocalName().toString()), "b");
  // a was completed on the way; b is there but its children are not read yet.
  EXPECT_EQ(names(childrenFast(a)), "a1,a2");
  EXPECT_TRUE(b->isLoading());
  EXPECT_FALSE(b->hasChildNodesFast());
  // A sibling that is not the last child needs no loading.
  int calls = doc->loadCalls;
  EXPECT_EQ(a->getNextSibling(), b);
  EXPECT_EQ(doc->loadCalls, calls);
  // The last child of a closed parent: nothing more.
  EXPECT_EQ(b->getNextSibling(), nullptr);
  EXPECT_FALSE(root->isLoading());
}

TEST(NodePull, PlainWalkSeesTheWholeDocument) {
  ZQPtr<ScriptDocument> doc(new ScriptDocument());
  doc->open({Ev::S("root"), Ev::S("a"), Ev::T("x"), Ev::S("a1"), Ev::E(), Ev::E(), Ev::T("y"),
             Ev::S("b"), Ev::E(), Ev::E()});
  std::vector<ZQNode*> seen;
  ZQTreeIterator it(doc, nullptr, false, ZQTreeIterator::PRE_ORDER);
  while (ZQNode* n = it.nextNode()) seen.push_back(n);
  EXPECT_EQ(names(seen), "#document,root,a,'x',a1,'y',b");
  EXPECT_EQ(doc->pending(), 0u);
}

TEST(NodePull, FastWalkOfALoadingTreeEndsEarly) {
  ZQPtr<ScriptDocument> doc(new ScriptDocument());
  doc->open({Ev::S("root"), Ev::S("a"), Ev::E(), Ev::S("b"), Ev::E(), Ev::E()});
  ZQNode* root = doc->getFirstChild();
  root->getFirstChild();
  EXPECT_EQ(names(childrenFast(root)), "a");
  EXPECT_EQ(root->getChildNodeCount(), 2);
  EXPECT_EQ(names(childrenFast(root)), "a,b");
}

TEST(NodePull, AbortedLoadLeavesWhatWasRead) {
  ZQPtr<ScriptDocument> doc(new ScriptDocument());
  doc->open({Ev::S("root"), Ev::S("a"), Ev::E(), Ev::S("b"), Ev::E(), Ev::E()});
  ZQNode* root = doc->getFirstChild();
  doc->abort();
  EXPECT_EQ(doc->getLastLoadingNode(), nullptr);
  EXPECT_TRUE(root->isLoading());
  EXPECT_EQ(root->getFirstChild(), nullptr);
  EXPECT_EQ(root->getLastChild(), nullptr);
  EXPECT_EQ(root->getNextSibling(), nullptr);
  EXPECT_EQ(root->getChildNodeCount(), 0);
}

TEST(NodePull, PreviousSiblingAndParentNeverLoad) {
  ZQPtr<ScriptDocument> doc(new ScriptDocument());
  doc->open({Ev::S("root"), Ev::S("a"), Ev::E(), Ev::E()});
  ZQNode* root = doc->getFirstChild();
  int calls = doc->loadCalls;
  EXPECT_EQ(root->getPreviousSibling(), nullptr);
  EXPECT_EQ(root->getParentNode(), doc.get());
  EXPECT_EQ(root->getParentNodeFast(), doc.get());
  EXPECT_EQ(root->getNextSiblingFast(), nullptr);
  EXPECT_EQ(doc->loadCalls, calls);
}

TEST(NodePull, RefusedElementIsSkipped) {
  ZQPtr<ScriptDocument> doc(new ScriptDocument());
  ZQPtr<ZQNode> host(new SubstitutingElement(doc, ZQName(u("host"))));
  doc->appendChild(host);
  ZQPtr<ZQNode> keep = el(doc, "keep");
  EXPECT_EQ(host->appendChildEx(keep), keep.get());
  ZQPtr<ZQNode> refuse = el(doc, "refuse");
  EXPECT_EQ(host->appendChildEx(refuse), nullptr);
  EXPECT_EQ(names(childrenFast(host)), "keep");
}

// ---------------------------------------------------------------- counting and relations

namespace {

// doc( r( a( a1, a2('t') ), b, c( c1 ) ) )
struct SampleTree {
  ZQPtr<ZQDocument> doc{new ZQDocument()};
  ZQNode* r;
  ZQNode* a;
  ZQNode* a1;
  ZQNode* a2;
  ZQNode* t;
  ZQNode* b;
  ZQNode* c;
  ZQNode* c1;
  SampleTree() {
    r = doc->appendChild(el(doc, "r"));
    a = r->appendChild(el(doc, "a"));
    a1 = a->appendChild(el(doc, "a1"));
    a2 = a->appendChild(el(doc, "a2"));
    t = a2->appendChildText(u("t"));
    b = r->appendChild(el(doc, "b"));
    c = r->appendChild(el(doc, "c"));
    c1 = c->appendChild(el(doc, "c1"));
  }
};

}  // namespace

TEST(NodeRelations, Counting) {
  SampleTree s;
  EXPECT_EQ(s.r->getChildNodeCount(), 3);
  EXPECT_EQ(s.b->getChildNodeCount(), 0);
  EXPECT_EQ(s.a->countPrecedingSiblings(), 0);
  EXPECT_EQ(s.c->countPrecedingSiblings(), 2);
  EXPECT_EQ(s.a->countFollowingSiblings(), 2);
  EXPECT_EQ(s.c->countFollowingSiblings(), 0);
  EXPECT_EQ(s.r->getPreviousOrSelfNodeCount(nullptr), 0);
  EXPECT_EQ(s.r->getPreviousOrSelfNodeCount(s.c), 3);
  EXPECT_EQ(s.a1->getPreviousOrSelfNodeCount(s.b), 2);  // `this` takes no part
  EXPECT_EQ(s.doc->getPreviousOrSelfNodeCount(s.a), 1);
}

TEST(NodeRelations, Depth) {
  SampleTree s;
  EXPECT_EQ(s.r->getNodeDepth(), 0);
  EXPECT_EQ(s.a->getNodeDepth(), 1);
  EXPECT_EQ(s.t->getNodeDepth(), 3);
  EXPECT_EQ(s.doc->getNodeDepth(), 0);
  ZQPtr<ZQNode> detached = el(s.doc, "d");
  EXPECT_EQ(detached->getNodeDepth(), 0);
  ZQNode* child = detached->appendChild(el(s.doc, "dc"));
  EXPECT_EQ(child->getNodeDepth(), 1);
}

TEST(NodeRelations, ChildByNameAndType) {
  SampleTree s;
  ZQNode* b2 = s.r->appendChild(el(s.doc, "b"));
  EXPECT_EQ(s.r->getChildNodeByName(ZQName(u("b"))), s.b);
  EXPECT_EQ(s.r->getChildNodeByName(ZQName(u("b")), s.b), b2);
  EXPECT_EQ(s.r->getChildNodeByName(ZQName(u("b")), b2), nullptr);
  EXPECT_EQ(s.r->getChildNodeByName(ZQName(u("zz"))), nullptr);
  EXPECT_EQ(s.a2->getChildNodeByName(ZQName(ZQN_hash_text)), s.t);
  EXPECT_EQ(s.a2->getChildNodeByTypeID(ZQTextNode::getStaticTypeID()), s.t);
  EXPECT_EQ(s.r->getChildNodeByTypeID(ZQTextNode::getStaticTypeID()), nullptr);
  EXPECT_EQ(s.r->getChildNodeByTypeID(ZQNode::getStaticTypeID()), s.a);
}

TEST(NodeRelations, ChildByNameNS) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  ZQName ns1(u("urn:1"));
  ZQName ns2(u("urn:2"));
  ZQName x(u("x"));
  ZQNode* x1 = p->appendChild(ZQPtr<ZQNode>(new TestElement(doc, x, ns1)));
  ZQNode* x2 = p->appendChild(ZQPtr<ZQNode>(new TestElement(doc, x, ns2)));
  ZQNode* x2b = p->appendChild(ZQPtr<ZQNode>(new TestElement(doc, x, ns2)));
  EXPECT_EQ(p->getChildNodeByNameNS(ns2, x), x2);
  EXPECT_EQ(p->getChildNodeByNameNS(ns1, x), x1);
  EXPECT_EQ(p->getChildNodeByNameNS(ns2, x, x2), x2b);
  EXPECT_EQ(p->getChildNodeByNameNS(ZQName(), x), nullptr);

  ZQNode* inner = x2->appendChild(el(doc, "inner"));
  EXPECT_EQ(inner->getAncestorByNameNS(ns2, x), x2);
  EXPECT_EQ(inner->getAncestorByNameNS(ns1, x), nullptr);
  EXPECT_TRUE(x2->isSameOfType(x2b));
  EXPECT_FALSE(x1->isSameOfType(x2));
  EXPECT_FALSE(x1->isSameOfType(nullptr));
  EXPECT_FALSE(inner->isSameOfType(x1));
}

TEST(NodeRelations, Ancestors) {
  SampleTree s;
  EXPECT_EQ(s.t->getAncestorByName(ZQName(u("a"))), s.a);
  EXPECT_EQ(s.a->getAncestorByName(ZQName(u("a"))), nullptr);
  EXPECT_EQ(s.a->getAncestorOrSelfByName(ZQName(u("a"))), s.a);
  EXPECT_EQ(s.t->getAncestorByName(ZQName(ZQN_hash_document)), s.doc.get());
  EXPECT_EQ(s.t->getAncestorByTypeID(ZQDocument::getStaticTypeID()), s.doc.get());
  EXPECT_EQ(s.t->getAncestorByTypeID(ZQNode::getStaticTypeID()), s.a2);
  EXPECT_EQ(s.t->getAncestorByTypeID(ZQTextNode::getStaticTypeID()), nullptr);
  EXPECT_EQ(s.t->getAncestorOrSelfByTypeID(ZQTextNode::getStaticTypeID()), s.t);
}

TEST(NodeRelations, Descendants) {
  SampleTree s;
  EXPECT_TRUE(s.t->isDescendantOf(s.a));
  EXPECT_TRUE(s.t->isDescendantOf(s.doc));
  EXPECT_FALSE(s.t->isDescendantOf(s.t));
  EXPECT_FALSE(s.t->isDescendantOf(s.b));
  EXPECT_FALSE(s.t->isDescendantOf(nullptr));
  EXPECT_TRUE(s.t->isDescendantOrSelfOf(s.t));
  EXPECT_TRUE(s.t->isDescendantOrSelfOf(s.r));
  EXPECT_FALSE(s.r->isDescendantOrSelfOf(s.t));
  EXPECT_FALSE(s.t->isDescendantOrSelfOf(nullptr));
}

TEST(NodeRelations, CommonAncestors) {
  SampleTree s;
  EXPECT_EQ(s.t->getCommonAncestorOrSelf(s.a1), s.a);
  EXPECT_EQ(s.t->getCommonAncestorOrSelf(s.c1), s.r);
  EXPECT_EQ(s.a->getCommonAncestorOrSelf(s.t), s.a);
  EXPECT_EQ(s.t->getCommonAncestorOrSelf(s.a), s.a);
  EXPECT_EQ(s.t->getCommonAncestorOrSelf(s.t), s.t);
  EXPECT_EQ(s.t->getCommonAncestorOrSelf(nullptr), nullptr);
  EXPECT_EQ(s.t->getCommonAncestor(s.a1), s.a);
  EXPECT_EQ(s.a->getCommonAncestor(s.t), s.r);  // both sides strictly ancestors
  EXPECT_EQ(s.t->getCommonAncestor(s.a), s.r);
  EXPECT_EQ(s.t->getCommonAncestor(s.t), s.a2);
  EXPECT_EQ(s.t->getCommonAncestor(nullptr), nullptr);
  ZQPtr<ZQNode> detached = el(s.doc, "d");
  EXPECT_EQ(s.t->getCommonAncestorOrSelf(detached), nullptr);
  EXPECT_EQ(s.t->getCommonAncestor(detached), nullptr);
}

TEST(NodeRelations, IsFollowingOf) {
  SampleTree s;
  EXPECT_FALSE(s.t->isFollowingOf(s.a));  // not of its own ancestor
  EXPECT_FALSE(s.t->isFollowingOf(s.r));
  EXPECT_FALSE(s.t->isFollowingOf(s.t));
  EXPECT_TRUE(s.t->isFollowingOf(s.a1));  // the previous sibling of an ancestor
  EXPECT_TRUE(s.c1->isFollowingOf(s.t));  // a descendant of an ancestor's previous sibling
  EXPECT_TRUE(s.c1->isFollowingOf(s.b));
  EXPECT_TRUE(s.b->isFollowingOf(s.a));
  EXPECT_FALSE(s.a->isFollowingOf(s.b));
  EXPECT_FALSE(s.a1->isFollowingOf(s.t));
  EXPECT_FALSE(s.a1->isFollowingOf(nullptr));
}

TEST(NodeRelations, IsPrecedingOf) {
  SampleTree s;
  EXPECT_TRUE(s.a->isPrecedingOf(s.b));
  EXPECT_TRUE(s.t->isPrecedingOf(s.c1));
  EXPECT_TRUE(s.a1->isPrecedingOf(s.t));
  EXPECT_FALSE(s.a->isPrecedingOf(s.t));  // not of its own descendant
  EXPECT_FALSE(s.b->isPrecedingOf(s.a));
  EXPECT_FALSE(s.c1->isPrecedingOf(s.a1));
  EXPECT_FALSE(s.t->isPrecedingOf(s.t));
  EXPECT_FALSE(s.t->isPrecedingOf(nullptr));
}

TEST(NodeRelations, NextSiblingOrSelfIgnoringWhiteSpace) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> p = el(doc, "p");
  ZQNode* ws = p->appendChildText(u(" \t\r\n"));
  ZQNode* empty = p->appendChildText(u(""));
  ZQNode* word = p->appendChildText(u(" x "));
  ZQNode* e = p->appendChild(el(doc, "e"));
  EXPECT_EQ(ws->getNextSiblingOrSelfIgnoreEmptyOrWhitespace(), word);
  EXPECT_EQ(empty->getNextSiblingOrSelfIgnoreEmptyOrWhitespace(), word);
  EXPECT_EQ(word->getNextSiblingOrSelfIgnoreEmptyOrWhitespace(), word);
  EXPECT_EQ(e->getNextSiblingOrSelfIgnoreEmptyOrWhitespace(), e);
  // Other white space is not passed over.
  ZQPtr<ZQNode> q = el(doc, "q");
  ZQNode* nbsp = q->appendChildText(UnicodeString(u"\u00A0"));
  EXPECT_EQ(nbsp->getNextSiblingOrSelfIgnoreEmptyOrWhitespace(), nbsp);
  // An empty text that is the only node.
  ZQPtr<ZQNode> lone = el(doc, "lone");
  ZQNode* only = lone->appendChildText(u(""));
  EXPECT_EQ(only->getNextSiblingOrSelfIgnoreEmptyOrWhitespace(), nullptr);
  ZQPtr<ZQTextNode> detached = doc->createTextNode(u(""));
  EXPECT_EQ(detached->getNextSiblingOrSelfIgnoreEmptyOrWhitespace(), nullptr);
}

TEST(NodeRelations, InnerText) {
  SampleTree s;
  s.a1->appendChildText(u("one "));
  s.c1->appendChildText(u(" three"));
  s.b->appendChild(s.doc->createProcessingInstruction(ZQName(u("pi")), u("skip")));
  EXPECT_EQ(utf8(s.r->getInnerText()), "one t three");
  EXPECT_EQ(utf8(s.a2->getInnerText()), "t");
  EXPECT_EQ(utf8(s.t->getInnerText()), "t");
  EXPECT_EQ(utf8(s.b->getInnerText()), "");
  // Not an element: its own text.
  ZQPtr<ZQNode> pi = s.doc->createProcessingInstruction(ZQName(u("pi")), u("data"));
  EXPECT_EQ(utf8(pi->getInnerText()), "data");
  ZQPtr<ZQDocumentFragment> frag = s.doc->createDocumentFragment();
  frag->appendChildText(u("inside"));
  EXPECT_EQ(utf8(frag->getInnerText()), "");
}

TEST(NodeRelations, ParentNodeUncomplemental) {
  SampleTree s;
  s.a->setFlag(ZQNode::FLAG_COMPLEMENTAL, true);
  s.a2->setFlag(ZQNode::FLAG_COMPLEMENTAL, true);
  EXPECT_EQ(s.t->getParentNodeUncomplemental(), s.r);
  EXPECT_EQ(s.a1->getParentNodeUncomplemental(), s.r);
  EXPECT_EQ(s.r->getParentNodeUncomplemental(), s.doc.get());
  EXPECT_EQ(s.doc->getParentNodeUncomplemental(), nullptr);
  s.r->setFlag(ZQNode::FLAG_COMPLEMENTAL, true);
  s.doc->setFlag(ZQNode::FLAG_COMPLEMENTAL, true);
  EXPECT_EQ(s.t->getParentNodeUncomplemental(), nullptr);
}

TEST(NodeRelations, SourcePositionsFallBack) {
  SampleTree s;
  EXPECT_EQ(s.t->getSourceLineNumber(), -1);
  EXPECT_EQ(s.t->getSourceColumnNumber(), -1);
  s.a->setSourceLineNumber(10);
  s.a->setSourceColumnNumber(4);
  // The text takes its parent's chain: a2 has none, then a1 before it has none, then a.
  EXPECT_EQ(s.t->getSourceLineNumber(), 10);
  EXPECT_EQ(s.t->getSourceColumnNumber(), 4);
  s.a1->setSourceLineNumber(11);
  s.a1->setSourceColumnNumber(2);
  EXPECT_EQ(s.a2->getSourceLineNumber(), 11);
  EXPECT_EQ(s.t->getSourceLineNumber(), 11);
  // A text reports the position of the element before it.
  ZQNode* t2 = s.r->insertBefore(s.doc->createTextNode(u("x")), s.b);
  EXPECT_EQ(t2->getSourceLineNumber(), 10);
  s.b->setSourceLineNumber(20);
  ZQNode* t3 = s.r->insertBefore(s.doc->createTextNode(u("y")), s.c);
  EXPECT_EQ(t3->getSourceLineNumber(), 20);
  // Text nodes store nothing.
  t3->setSourceLineNumber(99);
  EXPECT_EQ(t3->getSourceLineNumber(), 20);
}

TEST(NodeRelations, BaseUriComesFromParentThenDocument) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> detached = el(doc, "d");
  EXPECT_TRUE(detached->getBaseUri().isEmpty());
  doc->setBaseUri(u("file:///tmp/dir/doc.xml"));
  EXPECT_EQ(utf8(doc->getBaseUri()), "file:///tmp/dir/doc.xml");
  EXPECT_EQ(utf8(detached->getBaseUri()), "file:///tmp/dir/doc.xml");
  ZQNode* r = doc->appendChild(el(doc, "r"));
  ZQNode* t = r->appendChildText(u("t"));
  EXPECT_EQ(utf8(t->getBaseUri()), "file:///tmp/dir/doc.xml");
}

TEST(NodeRelations, ChildNodesAndIterator) {
  SampleTree s;
  ZQPtr<ZQNodeList> list = s.r->getChildNodes();
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->getTypeID(), ChildNodeList::getStaticTypeID());
  EXPECT_EQ(list->getLength(), 3);
  ZQNodeIterator it = s.r->getIterator();
  std::vector<ZQNode*> seen;
  while (it.hasNextNode()) seen.push_back(it.nextNode());
  EXPECT_EQ(names(seen), "a,b,c");
  EXPECT_EQ(s.r->getElementsByTagName(ZQName(u("a2")))->getLength(), 1);
  EXPECT_EQ(s.r->getElementsByTagNameNS(ZQName(), ZQName(u("c1")))->getLength(), 1);
  EXPECT_EQ(s.r->getDescendantNodes()->getLength(), 7);
}

// ---------------------------------------------------------------- leaf nodes

TEST(TextNode, TextAndData) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQTextNode> t = doc->createTextNode(u("abc"));
  EXPECT_TRUE(t->isText());
  EXPECT_EQ(t->getLength(), 3);
  EXPECT_EQ(utf8(t->getData()), "abc");
  EXPECT_EQ(utf8(t->getText()), "abc");
  t->setData(UnicodeString(u"\U0001F600x"));
  EXPECT_EQ(t->getLength(), 3);  // 16-bit units
  t->setText(u("hello"));
  EXPECT_EQ(utf8(t->getData()), "hello");
  ZQValue v = t->getNodeValue();
  EXPECT_EQ(v.getValueType(), ZQVALUE_STRING);
  EXPECT_EQ(utf8(v.toString()), "hello");
  t->setNodeValue(ZQValue(42));
  EXPECT_EQ(utf8(t->getText()), "42");
  t->setNodeValue(ZQValue(u("str"), ZQUNIT_NONE));
  EXPECT_EQ(utf8(t->getText()), "str");
}

TEST(TextNode, TextWithMuchSpareRoomGetsAnExactBuffer) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  // A text as a reader leaves it: a buffer grown far past its length.
  UnicodeString grown(4000, 0, 0);
  for (int i = 0; i < 100; ++i) grown.append(u"0123456789");
  ASSERT_GT(grown.getCapacity(), 3000);
  ZQPtr<ZQTextNode> t = doc->createTextNode(grown);
  EXPECT_EQ(t->getText(), grown);
  // The copy handed out shares the node's buffer, so it shows the node's capacity.
  EXPECT_LT(t->getText().getCapacity(), 1000 + 1000 / 8 + 16);
  EXPECT_GE(t->getText().getCapacity(), 1000);
  // A text that fits its buffer keeps sharing it.
  UnicodeString tight(1000, 0, 0);
  tight.append(grown);
  ZQPtr<ZQTextNode> shared = doc->createTextNode(tight);
  EXPECT_EQ(shared->getText().getBuffer(), tight.getBuffer());
}

TEST(TextNode, BidiLevel) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQTextNode> t = doc->createTextNode(u("abc"));
  EXPECT_EQ(t->getBidiLevel(), -1);
  EXPECT_FALSE(t->isBidiDone());
  t->bidiDone(0);
  EXPECT_TRUE(t->isBidiDone());
  EXPECT_EQ(t->getBidiLevel(), 0);
  t->bidiDone(-1);
  EXPECT_FALSE(t->isBidiDone());
}

TEST(TextNode, CloneGoesThroughTheDocumentAndCopiesMembers) {
  ZQPtr<CountingDocument> doc(new CountingDocument());
  ZQPtr<ZQTextNode> t = doc->createTextNode(u("abc"));
  t->bidiDone(2);
  t->setFlag(ZQNode::FLAG_LOADING | 0x80, true);
  for (bool deep : {false, true}) {
    int calls = doc->textCalls;
    ZQPtr<ZQNode> c = t->cloneNode(deep);
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(doc->textCalls, calls + 1);
    EXPECT_NE(c.get(), t.get());
    EXPECT_EQ(c->getRefCount(), 1);
    EXPECT_EQ(utf8(c->getText()), "abc");
    EXPECT_EQ(c->getFlags(), t->getFlags());
    EXPECT_TRUE(c->isBidiDone());
    EXPECT_EQ(static_cast<ZQTextNode*>(c.get())->getBidiLevel(), 2);
    EXPECT_EQ(c->getOwnerDocument(), doc.get());
    EXPECT_EQ(c->getParentNode(), nullptr);
  }
}

TEST(ProcessingInstruction, TargetAndData) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQProcessingInstruction> pi =
      doc->createProcessingInstruction(ZQName(u("xml-stylesheet")), u("href='a.css'"));
  EXPECT_TRUE(pi->isProcessingInstruction());
  EXPECT_FALSE(pi->isText());
  EXPECT_EQ(utf8(pi->getTarget().toString()), "xml-stylesheet");
  EXPECT_EQ(utf8(pi->getText()), "href='a.css'");
  pi->setText(u("new"));
  EXPECT_EQ(utf8(pi->getText()), "new");
  EXPECT_TRUE(pi->getNodeValue().isNull());
  EXPECT_EQ(pi->cloneNode(true), nullptr);
  EXPECT_EQ(pi->getRefCount(), 1);
}

TEST(DocumentSkeleton, FieldsAndFactories) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  EXPECT_FALSE(doc->getPullMode());
  doc->setPullMode(true);
  EXPECT_TRUE(doc->getPullMode());
  EXPECT_FALSE(doc->hasXInclude());
  EXPECT_EQ(doc->getLastLoadingNode(), nullptr);
  EXPECT_EQ(doc->loadNextNode(), nullptr);
  EXPECT_FALSE(doc->isBaseUriSpecified());
  EXPECT_TRUE(doc->getBaseUri().isEmpty());
  EXPECT_TRUE(doc->getDocumentUri().isEmpty());
  const ZQDocument* cdoc = doc.get();
  EXPECT_EQ(cdoc->getParser(), nullptr);
  ZQXmlParser* parser = doc->getParser();
  ASSERT_NE(parser, nullptr);
  EXPECT_EQ(doc->getParser(), parser);
  doc->setParser(nullptr);
  EXPECT_EQ(cdoc->getParser(), nullptr);

  ZQPtr<ZQTextNode> t = doc->createTextNode(u("x"));
  EXPECT_EQ(t->getRefCount(), 1);
  EXPECT_EQ(t->getOwnerDocument(), doc.get());
  ZQPtr<ZQNode> te = doc->createTextNodeElement(u("y"), doc);
  EXPECT_TRUE(te->isText());
  EXPECT_EQ(te->getRefCount(), 1);
  ZQPtr<ZQDocumentFragment> f = doc->createDocumentFragment();
  EXPECT_EQ(f->getRefCount(), 1);
  EXPECT_EQ(f->getOwnerDocument(), doc.get());
}

TEST(DocumentSkeleton, BaseAndDocumentUriFallBackOnEachOther) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  // Stored in the URI's normal form, not as typed.
  doc->setBaseUri(UnicodeString(u"C:\\dir\\na me.xml"));
  EXPECT_TRUE(doc->isBaseUriSpecified());
  EXPECT_EQ(utf8(doc->getBaseUri()), "file:///C:/dir/na%20me.xml");
  EXPECT_EQ(utf8(doc->getDocumentUri()), "file:///C:/dir/na%20me.xml");
}

TEST(DocumentSkeleton, EagerLoadBuildsTheSameTree) {
  ZQPtr<ScriptDocument> doc(new ScriptDocument());
  doc->open({Ev::S("root"), Ev::S("a"), Ev::T("x"), Ev::E(), Ev::S("b"), Ev::E(), Ev::E()}, false);
  EXPECT_EQ(doc->pending(), 0u);
  EXPECT_FALSE(doc->isLoading());
  ZQNode* root = doc->getFirstChildFast();
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(names(childrenFast(root)), "a,b");
  EXPECT_TRUE(root->getFlag(ZQNode::FLAG_LOAD_DONE));
  // A second load starts over.
  doc->open({Ev::S("other"), Ev::E()}, false);
  EXPECT_EQ(names(childrenFast(doc)), "other");
}

// ---------------------------------------------------------------- namespace look-ups

namespace {

ZQName N(const char* text) { return ZQName(u(text)); }

// doc( root[xmlns:p="urn:p" xmlns="urn:d"]( mid( 'text', <?pi?> ) ) )
struct NsTree {
  ZQPtr<ZQDocument> doc{new ZQDocument()};
  ZQElement* root;
  ZQElement* mid;
  ZQNode* text;
  ZQNode* pi;
  NsTree() {
    root = static_cast<ZQElement*>(doc->appendChild(doc->createElement(N("root"))));
    root->setAttributeXMLNS(N("urn:p"), N("p"));
    root->setAttributeNS(ZQName(ZQN_NS_XMLNS), ZQName(), ZQName(ZQN_xmlns), ZQValue(N("urn:d")));
    mid = static_cast<ZQElement*>(root->appendChild(doc->createElement(N("mid"))));
    text = mid->appendChildText(u("text"));
    pi = mid->appendChild(doc->createProcessingInstruction(N("pi"), u("")));
  }
};

}  // namespace

TEST(NodeNamespaces, TextAndInstructionAskTheirParentElement) {
  NsTree t;
  for (ZQNode* n : {t.text, t.pi}) {
    EXPECT_EQ(n->lookupNamespaceUri(N("p")), N("urn:p"));
    EXPECT_EQ(n->lookupNamespaceUri(ZQName()), N("urn:d"));
    EXPECT_TRUE(n->lookupNamespaceUri(N("q")).isEmpty());
    EXPECT_EQ(n->lookupPrefix(N("urn:p")), N("p"));
    EXPECT_TRUE(n->lookupPrefix(N("urn:none")).isEmpty());
    EXPECT_TRUE(n->isDefaultNamespace(N("urn:d")));
    EXPECT_FALSE(n->isDefaultNamespace(N("urn:p")));
  }
}

TEST(NodeNamespaces, DocumentAsksItsDocumentElement) {
  NsTree t;
  EXPECT_EQ(t.doc->getDocumentElement(), t.root);
  EXPECT_EQ(t.doc->lookupNamespaceUri(N("p")), N("urn:p"));
  EXPECT_EQ(t.doc->lookupPrefix(N("urn:p")), N("p"));
  EXPECT_TRUE(t.doc->isDefaultNamespace(N("urn:d")));
  ZQPtr<ZQDocument> empty(new ZQDocument());
  empty->appendChild(empty->createProcessingInstruction(N("pi"), u("")));
  EXPECT_EQ(empty->getDocumentElement(), nullptr);
  EXPECT_TRUE(empty->lookupNamespaceUri(N("p")).isEmpty());
  EXPECT_TRUE(empty->lookupPrefix(N("urn:p")).isEmpty());
  EXPECT_FALSE(empty->isDefaultNamespace(ZQName()));
}

TEST(NodeNamespaces, FragmentsAndDetachedNodesFindNothing) {
  NsTree t;
  ZQPtr<ZQDocumentFragment> frag = t.doc->createDocumentFragment();
  ZQNode* e = frag->appendChild(t.doc->createElementNS(N("urn:f"), N("f"), N("e")));
  ZQNode* inner = frag->appendChildText(u("x"));
  EXPECT_EQ(e->lookupNamespaceUri(N("f")), N("urn:f"));
  EXPECT_TRUE(frag->lookupNamespaceUri(N("f")).isEmpty());
  EXPECT_TRUE(frag->lookupPrefix(N("urn:f")).isEmpty());
  EXPECT_FALSE(frag->isDefaultNamespace(ZQName()));
  // A text whose parent is no element.
  EXPECT_TRUE(inner->lookupNamespaceUri(N("f")).isEmpty());
  EXPECT_FALSE(inner->isDefaultNamespace(ZQName()));
  ZQPtr<ZQTextNode> detached = t.doc->createTextNode(u("d"));
  EXPECT_TRUE(detached->lookupPrefix(N("urn:p")).isEmpty());
  EXPECT_TRUE(detached->lookupNamespaceUri(ZQName()).isEmpty());
  // Text directly under the document: the document is no element.
  ZQNode* top = t.doc->appendChildText(u("top"));
  EXPECT_TRUE(top->lookupNamespaceUri(N("p")).isEmpty());
}

TEST(NodeNamespaces, AttributesAskTheirOwnerElement) {
  NsTree t;
  t.mid->setAttribute(N("a"), ZQValue(u("v"), ZQUNIT_NONE));
  ZQAttr* attr = t.mid->getAttributeNode(N("a"));
  ASSERT_NE(attr, nullptr);
  EXPECT_EQ(attr->lookupNamespaceUri(N("p")), N("urn:p"));
  EXPECT_EQ(attr->lookupPrefix(N("urn:p")), N("p"));
  EXPECT_TRUE(attr->isDefaultNamespace(N("urn:d")));
  ZQPtr<ZQAttr> loose = t.doc->createAttribute(N("loose"));
  EXPECT_TRUE(loose->lookupNamespaceUri(N("p")).isEmpty());
  EXPECT_FALSE(loose->isDefaultNamespace(ZQName()));
}

TEST(NodeNamespaces, NoPrefixIsBoundImplicitly) {
  NsTree t;
  EXPECT_TRUE(t.text->lookupNamespaceUri(ZQName(ZQN_xml)).isEmpty());
  EXPECT_TRUE(t.text->lookupNamespaceUri(ZQName(ZQN_xmlns)).isEmpty());
  EXPECT_TRUE(t.text->lookupPrefix(ZQName(ZQN_NS_XML)).isEmpty());
  t.root->setAttributeXMLNS(ZQName(ZQN_NS_XML), ZQName(ZQN_xml));
  EXPECT_EQ(t.text->lookupNamespaceUri(ZQName(ZQN_xml)), ZQName(ZQN_NS_XML));
}

TEST(NodeNamespaces, ElementsOfOtherClassesUseTheirStoredNames) {
  // Elements that are not of the element family go through the base look-ups.
  NsTree t;
  ZQNode* x =
      t.mid->appendChild(ZQPtr<ZQNode>(new TestElement(t.doc, N("x"), N("urn:x"), N("px"))));
  ZQNode* y = x->appendChild(ZQPtr<ZQNode>(new TestElement(t.doc, N("y"), N("urn:y"))));
  ZQNode* yt = y->appendChildText(u("t"));
  EXPECT_EQ(x->lookupNamespaceUri(N("px")), N("urn:x"));
  EXPECT_EQ(yt->lookupNamespaceUri(N("px")), N("urn:x"));
  EXPECT_EQ(yt->lookupNamespaceUri(N("p")), N("urn:p"));    // declared on root, through mid
  EXPECT_EQ(yt->lookupNamespaceUri(ZQName()), N("urn:y"));  // y's own, without prefix
  EXPECT_EQ(x->lookupNamespaceUri(ZQName()), N("urn:d"));
  EXPECT_EQ(y->lookupPrefix(N("urn:x")), N("px"));
  EXPECT_EQ(y->lookupPrefix(N("urn:p")), N("p"));
  EXPECT_TRUE(y->lookupPrefix(N("urn:y")).isEmpty());  // no prefix to give
  EXPECT_TRUE(yt->isDefaultNamespace(N("urn:y")));     // no prefix: its own namespace
  EXPECT_FALSE(yt->isDefaultNamespace(N("urn:d")));
  // With a prefix and no declaration, the parent's answer.
  EXPECT_TRUE(x->isDefaultNamespace(N("urn:d")));
  // A prefix whose binding below is shadowed is no answer for the origin.
  ZQNode* z = y->appendChild(ZQPtr<ZQNode>(new TestElement(t.doc, N("z"), N("urn:other"), N("p"))));
  EXPECT_EQ(z->lookupNamespaceUri(N("p")), N("urn:other"));
  EXPECT_TRUE(z->lookupPrefix(N("urn:p")).isEmpty());
}

TEST(NodeNamespaces, DeepChainsDoNotRecurse) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQNode> top(new TestElement(doc, N("top"), N("urn:top"), N("t")));
  ZQNode* n = top;
  for (int i = 0; i < 200000; ++i) n = n->appendChild(el(doc, "n"));
  EXPECT_EQ(n->lookupNamespaceUri(N("t")), N("urn:top"));
  EXPECT_EQ(n->lookupPrefix(N("urn:top")), N("t"));
}

// ---------------------------------------------------------------- with the element family

TEST(NodeWithElements, DeepCloneStopsAtAProcessingInstruction) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQElement> e = doc->createElementNS(N("urn:e"), N("p"), N("e"));
  e->appendChildText(u("before"));
  e->appendChild(doc->createProcessingInstruction(N("pi"), u("d")));
  expectError([&] { e->cloneNode(true); }, 3, "SYSTEM ERROR: newChild is null.",
              "ZQCommonNS::ZQNode::appendChild");
  ZQPtr<ZQNode> shallow = e->cloneNode(false);
  ASSERT_NE(shallow, nullptr);
  EXPECT_FALSE(shallow->hasChildNodesFast());
}

TEST(NodeWithElements, DocumentElementIsTheFirstElementChild) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  EXPECT_EQ(doc->getDocumentElement(), nullptr);
  doc->appendChild(doc->createProcessingInstruction(N("pi"), u("")));
  doc->appendChildText(u("\n"));
  doc->appendChild(el(doc, "not-of-the-family"));
  EXPECT_EQ(doc->getDocumentElement(), nullptr);
  ZQPtr<ZQElement> root = doc->createElement(N("root"));
  doc->appendChild(root);
  doc->appendChild(doc->createElement(N("second")));
  EXPECT_EQ(doc->getDocumentElement(), root.get());
}

TEST(NodeWithElements, DocumentElementLoadsUpToTheFirstElement) {
  ZQPtr<ScriptDocument> doc(new ScriptDocument());
  doc->useFactory = true;
  doc->open({Ev::T("lead"), Ev::S("root"), Ev::S("a"), Ev::E(), Ev::E()});
  ZQElement* root = doc->getDocumentElement();
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(utf8(root->getLocalName().toString()), "root");
  EXPECT_EQ(root->getTypeID(), ElementNS::getStaticTypeID());
  EXPECT_EQ(doc->pending(), 3u);
  EXPECT_FALSE(root->hasChildNodesFast());
}

TEST(NodeWithElements, InnerTextAndListsOfRealElements) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQElement> p = doc->createElement(N("p"));
  p->appendChildText(u("a"));
  ZQNode* b = p->appendChild(doc->createElementNS(N("urn:b"), N("b"), N("bold")));
  b->appendChildText(u("b"));
  p->appendChildText(u("c"));
  EXPECT_EQ(utf8(p->getInnerText()), "abc");
  EXPECT_EQ(utf8(b->getInnerText()), "b");
  EXPECT_EQ(p->getElementsByTagNameNS(N("urn:b"), N("bold"))->getLength(), 1);
  EXPECT_EQ(p->getElementsByTagName(N("bold"))->item(0), b);
  EXPECT_EQ(p->getElementsByTagName(N("b:bold"))->getLength(), 0);  // local names only
}
