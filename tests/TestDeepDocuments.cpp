// Documents a million elements deep: loaded whole and pulled, walked, cloned, saved, loaded
// again and torn down, all without recursion and in about linear time. Also source positions
// on deep and long trees, and two threads on one pulled document.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "TestSupport.h"
#include "common/ZQDocument.h"
#include "common/ZQElement.h"
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
// declares q and carries a q:k attribute, as does the innermost one.
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
      if (i == 0 && flavour == PREFIXED) text += " xmlns:p=\"urn:p\" xmlns=\"urn:deep\"";
      if (flavour == PREFIXED && i == marked()) text += " xmlns:q=\"urn:q\" q:k=\"half\"";
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
    ASSERT_EQ(s8(x->getText()), s8(y->getText())) << "node " << count;
    ASSERT_EQ(attributesOf(x), attributesOf(y)) << "node " << count;
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
  ZQPtr<ZQDocument> again(new ZQDocument());
  again->loadXml(saved);
  note("reload");
  expectSameTree(doc.get(), again.get());
  if (testing::Test::HasFatalFailure()) return;
  // What a save writes, it writes again after a load.
  EXPECT_TRUE(again->saveXml() == saved);
  note("compare+save");
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

}  // namespace
