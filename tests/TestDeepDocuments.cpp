// Documents a million elements deep: loaded whole and pulled, walked, cloned, saved, loaded
// again and torn down, all without recursion and in about linear time. Also source positions
// on deep and long trees, and two threads on one pulled document.
#include <gtest/gtest.h>

#include <atomic>
#include <set>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "TestSupport.h"
#include "common/ZQDocument.h"
#include "common/ZQElement.h"
#include "common/ZQLock.h"
#include "common/ZQNodeList.h"
#include "common/ZQStrStream.h"

using namespace ZQCommonNS;
using zqtest::s8;
using zqtest::u;

namespace {

const int kDeep = 1000000;

enum Flavour { NO_NAMESPACE, DEFAULT_NAMESPACE, PREFIXED };

// Level i (0 is the root) is named "a" or "b" by parity. With PREFIXED the "a" levels are
// "p:a" in urn:p and the "b" levels sit in the default namespace; halfway down an element
// declares q and carries a q:k attribute, as does the innermost one. Attributes come in the
// order a save writes them, so that the saved text is the markup read.
struct DeepShape {
  Flavour flavour;
  int depth;

  int marked() const { return depth / 2; }

  std::string markup() const {
    std::string text;
    text.reserve(static_cast<size_t>(depth) * 10 + 200);
    for (int i = 0; i < depth; ++i) {
      text += '<';
      if (flavour == PREFIXED && i % 2 == 0) text += "p:";
      text += i % 2 == 0 ? 'a' : 'b';
      if (i == 0 && flavour == DEFAULT_NAMESPACE) text += " xmlns=\"urn:deep\"";
      if (i == 0 && flavour == PREFIXED) text += " xmlns=\"urn:deep\" xmlns:p=\"urn:p\"";
      if (flavour == PREFIXED && i == marked()) text += " q:k=\"half\" xmlns:q=\"urn:q\"";
      if (flavour == PREFIXED && i == depth - 1) text += " q:k=\"bottom\"";
      text += '>';
    }
    text += "x";
    for (int i = depth - 1; i >= 0; --i) {
      text += "</";
      if (flavour == PREFIXED && i % 2 == 0) text += "p:";
      text += i % 2 == 0 ? 'a' : 'b';
      text += '>';
    }
    return text;
  }

  ZQName local(int i) const { return ZQName(i % 2 == 0 ? u("a") : u("b")); }
  ZQName prefix(int i) const {
    return flavour == PREFIXED && i % 2 == 0 ? ZQName(u("p")) : ZQName();
  }
  ZQName ns(int i) const {
    if (flavour == NO_NAMESPACE) return ZQName();
    if (flavour == PREFIXED && i % 2 == 0) return ZQName(u("urn:p"));
    return ZQName(u("urn:deep"));
  }
};

// The q:k attribute of an element, as text; empty when it has none.
std::string qAttribute(ZQNode* element) {
  ZQValue value =
      static_cast<ZQElement*>(element)->getAttributeNS(ZQName(u("urn:q")), ZQName(u("k")));
  return value.isNull() ? std::string() : s8(value.toString());
}

// Walks down from the document through the plain accessors, so a pulled document loads as it
// goes, and checks every level against the shape.
void expectShape(ZQDocument* doc, const DeepShape& shape) {
  ZQNode* node = doc->getFirstChild();
  for (int i = 0; i < shape.depth; ++i) {
    ASSERT_NE(node, nullptr) << "level " << i;
    ASSERT_EQ(node->getNodeType(), ZQNode::ELEMENT_NODE) << "level " << i;
    ASSERT_EQ(node->getLocalName(), shape.local(i)) << "level " << i;
    ASSERT_EQ(node->getPrefix(), shape.prefix(i)) << "level " << i;
    ASSERT_EQ(node->getNamespaceUri(), shape.ns(i)) << "level " << i;
    if (shape.flavour == PREFIXED && (i == shape.marked() || i == shape.depth - 1)) {
      EXPECT_EQ(qAttribute(node), i == shape.marked() ? "half" : "bottom");
    }
    node = node->getFirstChild();
  }
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(node->getNodeType(), ZQNode::TEXT_NODE);
  EXPECT_EQ(s8(node->getText()), "x");
  EXPECT_EQ(node->getNextSibling(), nullptr);
  EXPECT_EQ(node->getFirstChild(), nullptr);
  EXPECT_EQ(doc->getFirstChild()->getNextSibling(), nullptr);
}

// Attributes of an element as "{ns}prefix:local=value", sorted: a save writes the namespace
// declarations after the other attributes.
std::string attributesOf(ZQNode* node) {
  ZQNamedNodeMap* map = node->getAttributes();
  if (!map || !map->getFirstNode()) return std::string();
  std::vector<std::string> all;
  for (ZQNode* attr = map->getFirstNode(); attr; attr = map->getNextNode(attr)) {
    all.push_back("{" + s8(attr->getNamespaceUri().toString()) + "}" +
                  s8(attr->getPrefix().toString()) + ":" + s8(attr->getLocalName().toString()) +
                  "=" + s8(attr->getNodeValue().toString()));
  }
  std::sort(all.begin(), all.end());
  std::string out;
  for (const std::string& one : all) out += one + " ";
  return out;
}

// Compares two loaded trees node by node, without recursion.
void expectSameTree(ZQNode* a, ZQNode* b) {
  ZQTreeIterator left(a, a, false, ZQTreeIterator::PRE_ORDER);
  ZQTreeIterator right(b, b, false, ZQTreeIterator::PRE_ORDER);
  long count = 0;
  ZQNode* x = a;
  ZQNode* y = b;
  while (x && y) {
    ASSERT_EQ(x->getNodeType(), y->getNodeType()) << "node " << count;
    ASSERT_EQ(x->getLocalName(), y->getLocalName()) << "node " << count;
    ASSERT_EQ(x->getPrefix(), y->getPrefix()) << "node " << count;
    ASSERT_EQ(x->getNamespaceUri(), y->getNamespaceUri()) << "node " << count;
    if (x->getNodeType() == ZQNode::TEXT_NODE) {
      ASSERT_EQ(s8(x->getText()), s8(y->getText())) << "node " << count;
    }
    ASSERT_EQ(x->hasAttributes(), y->hasAttributes()) << "node " << count;
    if (x->hasAttributes()) ASSERT_EQ(attributesOf(x), attributesOf(y)) << "node " << count;
    ++count;
    x = left.nextNode();
    y = right.nextNode();
  }
  EXPECT_EQ(x, nullptr);
  EXPECT_EQ(y, nullptr);
}

double secondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void roundTrip(Flavour flavour, bool pull) {
  DeepShape shape{flavour, kDeep};
  std::string markup = shape.markup();
  auto start = std::chrono::steady_clock::now();
  auto lap = start;
  std::string timings;
  auto note = [&](const char* what) {
    char line[64];
    std::snprintf(line, sizeof line, " %s %.2fs", what, secondsSince(lap));
    timings += line;
    lap = std::chrono::steady_clock::now();
  };

  ZQPtr<ZQDocument> doc(new ZQDocument());
  std::istringstream stream(markup);
  doc->setPullMode(pull);
  doc->load(stream);
  note("load");
  expectShape(doc.get(), shape);
  if (testing::Test::HasFatalFailure()) return;
  note("walk");
  EXPECT_TRUE(doc->getDocumentElement()->getFlag(ZQNode::FLAG_LOAD_DONE));

  ZQPtr<ZQNode> clone = doc->getDocumentElement()->cloneNode(true);
  ASSERT_NE(clone, nullptr);
  expectSameTree(doc->getDocumentElement(), clone.get());
  if (testing::Test::HasFatalFailure()) return;
  clone = nullptr;
  note("clone+compare+drop");

  UnicodeString saved = doc->saveXml();
  note("save");
  // The markup read is written back word for word.
  EXPECT_TRUE(saved ==
              UnicodeString::fromUTF8("<?xml version=\"1.0\" encoding=\"UTF-8\"?>" + markup));
  ZQPtr<ZQDocument> again(new ZQDocument());
  again->loadXml(saved);
  note("reload");
  expectSameTree(doc.get(), again.get());
  if (testing::Test::HasFatalFailure()) return;
  note("compare");
  doc = nullptr;
  again = nullptr;
  note("destroy");
  std::printf("[ deep %d, flavour %d, %s:%s; total %.2fs ]\n", kDeep, static_cast<int>(flavour),
              pull ? "pulled" : "whole", timings.c_str(), secondsSince(start));
}

TEST(DeepDocuments, AMillionLevelsWithoutNamespacesWhole) { roundTrip(NO_NAMESPACE, false); }
TEST(DeepDocuments, AMillionLevelsWithoutNamespacesPulled) { roundTrip(NO_NAMESPACE, true); }
TEST(DeepDocuments, AMillionLevelsInADefaultNamespaceWhole) { roundTrip(DEFAULT_NAMESPACE, false); }
TEST(DeepDocuments, AMillionLevelsInADefaultNamespacePulled) { roundTrip(DEFAULT_NAMESPACE, true); }
TEST(DeepDocuments, AMillionLevelsWithPrefixesWhole) { roundTrip(PREFIXED, false); }
TEST(DeepDocuments, AMillionLevelsWithPrefixesPulled) { roundTrip(PREFIXED, true); }

TEST(DeepDocuments, SavedMarkupOfASmallDeepShape) {
  // The round trip above compares trees; here the words themselves, on a shape small enough
  // to read.
  DeepShape shape{PREFIXED, 4};
  ZQPtr<ZQDocument> doc(new ZQDocument());
  doc->loadXml(UnicodeString::fromUTF8(shape.markup()));
  std::string saved = s8(doc->saveXml());
  // Declarations follow the other attributes, the default namespace first.
  EXPECT_EQ(saved,
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?><p:a xmlns=\"urn:deep\" "
            "xmlns:p=\"urn:p\"><b><p:a q:k=\"half\" xmlns:q=\"urn:q\"><b q:k=\"bottom\">x</b>"
            "</p:a></b></p:a>");
}

// ---- source positions ----

// An element that answers its own position whatever is stored: a fixed one, or -1 without
// asking anybody else.
class FixedPositionElement : public ElementNS {
 public:
  FixedPositionElement(ZQDocument* doc, int line, int column)
      : ElementNS(doc, ZQName(), ZQName(), ZQName(u("fixed"))), m_line(line), m_column(column) {}
  int getSourceLineNumber() const override { return m_line; }
  int getSourceColumnNumber() const override { return m_column; }

 private:
  int m_line;
  int m_column;
};

// The position rules as told, by recursion over the virtual getters: for small trees only.
struct PositionModel {
  std::map<const ZQNode*, std::pair<int, int>> stored;  // elements with a position of their own
  std::map<const ZQNode*, std::pair<int, int>> fixed;   // FixedPositionElement's answers

  int of(const ZQNode* node, bool line) const {
    auto f = fixed.find(node);
    if (f != fixed.end()) return line ? f->second.first : f->second.second;
    auto s = stored.find(node);
    if (s != stored.end()) {
      int value = line ? s->second.first : s->second.second;
      if (value != -1) return value;
    }
    if (const ZQNode* previous = node->getPreviousSibling()) {
      int value = of(previous, line);
      if (value != -1) return value;
    }
    const ZQNode* parent = node->getParentNode();
    return parent ? of(parent, line) : -1;
  }
};

TEST(SourcePositions, AnswerAsTheToldRecursionOnRandomTrees) {
  for (unsigned seed = 1; seed <= 200; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    ZQPtr<ZQDocument> doc(new ZQDocument());
    PositionModel model;
    std::vector<ZQNode*> parents;
    std::vector<ZQNode*> all;
    ZQPtr<ZQElement> root = doc->createElementNS(ZQName(), ZQName(), ZQName(u("r")));
    if (random() % 2) {
      root->setSourceLineNumber(1);
      root->setSourceColumnNumber(random() % 3 ? 2 : -1);
      model.stored[root.get()] = {1, root->getSourceColumnNumber()};
    }
    doc->appendChild(root.get());
    parents.push_back(root.get());
    all.push_back(root.get());
    int count = 1 + static_cast<int>(random() % 60);
    for (int i = 0; i < count; ++i) {
      ZQNode* parent = parents[random() % parents.size()];
      ZQPtr<ZQNode> node;
      switch (random() % 4) {
        case 0:
          node = doc->createTextNode(u("t")).get();
          break;
        case 1: {
          ZQPtr<ZQElement> element = doc->createElementNS(ZQName(), ZQName(), ZQName(u("e")));
          int line = random() % 3 ? 10 + i : -1;
          int column = random() % 3 ? 100 + i : -1;
          element->setSourceLineNumber(line);
          element->setSourceColumnNumber(column);
          model.stored[element.get()] = {line, column};
          node = element.get();
          break;
        }
        case 2:
          node = doc->createElementNS(ZQName(), ZQName(), ZQName(u("e"))).get();
          break;
        default: {
          int line = random() % 2 ? -1 : 500 + i;
          node = new FixedPositionElement(doc.get(), line, line == -1 ? 7 : -1);
          model.fixed[node.get()] = {line, line == -1 ? 7 : -1};
        }
      }
      parent->appendChild(node.get());
      all.push_back(node.get());
      if (node->getNodeType() == ZQNode::ELEMENT_NODE) parents.push_back(node.get());
    }
    for (size_t i = 0; i < all.size(); ++i) {
      ASSERT_EQ(all[i]->getSourceLineNumber(), model.of(all[i], true)) << "node " << i;
      ASSERT_EQ(all[i]->getSourceColumnNumber(), model.of(all[i], false)) << "node " << i;
    }
  }
}

TEST(SourcePositions, AMillionLevelsDeep) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQNode* parent = doc.get();
  ZQNode* upper = nullptr;
  for (int i = 0; i < kDeep; ++i) {
    ZQPtr<ZQElement> element = doc->createElementNS(ZQName(), ZQName(), ZQName(u("e")));
    if (i == 0) {
      element->setSourceLineNumber(7);
      element->setSourceColumnNumber(3);
    }
    if (i == kDeep / 2) element->setSourceLineNumber(11);  // a line, but no column
    if (i == kDeep / 2 - 1) upper = element.get();
    parent->appendChild(element.get());
    parent = element.get();
  }
  ZQNode* text = parent->appendChildText(u("x"));
  EXPECT_EQ(text->getSourceLineNumber(), 11);
  EXPECT_EQ(text->getSourceColumnNumber(), 3);
  EXPECT_EQ(parent->getSourceLineNumber(), 11);
  EXPECT_EQ(upper->getSourceLineNumber(), 7);
  EXPECT_EQ(upper->getSourceColumnNumber(), 3);
}

TEST(SourcePositions, AMillionSiblingsLong) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQElement> root = doc->createElementNS(ZQName(), ZQName(), ZQName(u("r")));
  root->setSourceLineNumber(2);
  root->setSourceColumnNumber(4);
  doc->appendChild(root.get());
  ZQNode* middle = nullptr;
  for (int i = 0; i < kDeep; ++i) {
    if (i == kDeep / 2) {
      ZQPtr<ZQElement> element = doc->createElementNS(ZQName(), ZQName(), ZQName(u("e")));
      element->setSourceColumnNumber(9);  // a column, but no line
      root->appendChild(element.get());
    }
    ZQNode* text = root->appendChildText(u("t"));
    if (i == kDeep / 2 - 1) middle = text;
  }
  ZQNode* last = root->getLastChild();
  EXPECT_EQ(last->getSourceLineNumber(), 2);
  EXPECT_EQ(last->getSourceColumnNumber(), 9);
  EXPECT_EQ(middle->getSourceLineNumber(), 2);
  EXPECT_EQ(middle->getSourceColumnNumber(), 4);
}

TEST(SourcePositions, ALoadedDeepDocumentGivesTheInnermostElementsPlace) {
  DeepShape shape{NO_NAMESPACE, kDeep};
  ZQPtr<ZQDocument> doc(new ZQDocument());
  std::istringstream stream("\n" + shape.markup());
  doc->load(stream);
  ZQNode* node = doc->getDocumentElement();
  while (node->getFirstChild()) node = node->getFirstChild();
  ASSERT_EQ(node->getNodeType(), ZQNode::TEXT_NODE);
  EXPECT_EQ(node->getSourceLineNumber(), 2);
  EXPECT_EQ(node->getSourceColumnNumber(), node->getParentNode()->getSourceColumnNumber());
  EXPECT_GT(node->getSourceColumnNumber(), kDeep);
}

// ---- two threads on one pulled document ----

// Wide and deep at once: many short branches, then one long chain.
std::string mixedMarkup() {
  std::string text = "<r xmlns=\"urn:m\" xmlns:p=\"urn:p\">";
  for (int i = 0; i < 3000; ++i) {
    text += "<p:s n=\"" + std::to_string(i) + "\"><t>a" + std::to_string(i) + "</t><u/>b</p:s>";
  }
  for (int i = 0; i < 20000; ++i) text += "<d>";
  text += "end";
  for (int i = 0; i < 20000; ++i) text += "</d>";
  return text + "tail</r>";
}

// Names and texts in document order, by the plain accessors, so a pulled document loads as
// the walk goes. Each step holds the document lock when `lock` is given: the tree itself is
// not guarded, so concurrent readers keep each other out of the links the loader writes.
std::string walkInOrder(ZQDocument* doc, ZQLock* lock) {
  std::string out;
  auto step = [&](auto&& body) {
    ZQMutex guard(lock);
    return body();
  };
  ZQNode* node = step([&] { return doc->getFirstChild(); });
  while (node) {
    node = step([&]() -> ZQNode* {
      if (node->getNodeType() == ZQNode::ELEMENT_NODE) {
        out += "<" + s8(node->getNodeName().toString()) + "{" +
               s8(node->getNamespaceUri().toString()) + "}";
      } else {
        out += s8(node->getText());
      }
      if (ZQNode* child = node->getFirstChild()) return child;
      for (ZQNode* at = node; at && at != doc; at = at->getParentNode()) {
        if (at->getNodeType() == ZQNode::ELEMENT_NODE) out += ">";
        if (ZQNode* next = at->getNextSibling()) return next;
      }
      return nullptr;
    });
  }
  return out;
}

TEST(PulledDocumentThreads, TwoThreadsDrivingTheLoaderBuildTheTreeOnce) {
  std::string markup = mixedMarkup();
  ZQPtr<ZQDocument> whole(new ZQDocument());
  whole->loadXml(UnicodeString::fromUTF8(markup));

  ZQPtr<ZQDocument> doc(new ZQDocument());
  std::istringstream stream(markup);
  doc->setPullMode(true);
  doc->load(stream);
  std::atomic<bool> go{false};
  std::vector<ZQNode*> made[2];
  auto drive = [&](int which) {
    while (!go.load()) std::this_thread::yield();
    while (ZQNode* node = doc->loadNextNode()) made[which].push_back(node);
  };
  std::thread first(drive, 0);
  std::thread second(drive, 1);
  go = true;
  first.join();
  second.join();

  // Every node came into being once, through one of the two.
  std::set<ZQNode*> seen;
  for (const auto& list : made)
    for (ZQNode* node : list) EXPECT_TRUE(seen.insert(node).second);
  long count = 0;
  ZQTreeIterator it(doc.get(), doc.get(), false, ZQTreeIterator::PRE_ORDER);
  for (ZQNode* node = it.nextNode(); node; node = it.nextNode()) {
    ++count;
    EXPECT_EQ(seen.count(node), 1u);
  }
  EXPECT_EQ(static_cast<long>(seen.size()), count);
  expectSameTree(whole.get(), doc.get());
  EXPECT_EQ(walkInOrder(doc.get(), nullptr), walkInOrder(whole.get(), nullptr));
}

TEST(PulledDocumentThreads, TwoWalkersSeeTheSameCompleteTree) {
  std::string markup = mixedMarkup();
  ZQPtr<ZQDocument> whole(new ZQDocument());
  whole->loadXml(UnicodeString::fromUTF8(markup));
  std::string expected = walkInOrder(whole.get(), nullptr);
  ASSERT_NE(expected.find("<p:s{urn:p}<t{urn:m}a2999><u{urn:m}>b>"), std::string::npos);

  for (int round = 0; round < 3; ++round) {
    ZQPtr<ZQDocument> doc(new ZQDocument());
    std::istringstream stream(markup);
    doc->setPullMode(true);
    doc->load(stream);
    std::atomic<bool> go{false};
    std::string walked[2];
    auto walk = [&](int which) {
      while (!go.load()) std::this_thread::yield();
      walked[which] = walkInOrder(doc.get(), &doc->getDocumentLock());
    };
    std::thread first(walk, 0);
    std::thread second(walk, 1);
    go = true;
    first.join();
    second.join();
    EXPECT_EQ(walked[0], expected);
    EXPECT_EQ(walked[1], expected);
    EXPECT_TRUE(doc->getDocumentElement()->getFlag(ZQNode::FLAG_LOAD_DONE));
  }
}

}  // namespace
