// Nodes are made and freed on any thread: a node made on one thread and released on another,
// and nodes of threads that have ended, keep their contents and their storage stays usable.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "common/ZQDocument.h"
#include "common/ZQElement.h"

using namespace ZQCommonNS;

namespace {

UnicodeString numbered(const char16_t* stem, int n) {
  UnicodeString text(stem);
  text += UnicodeString(std::to_string(n).c_str(), -1, US_INV);
  return text;
}

// A document of `count` elements, each with one attribute and one text child.
ZQPtr<ZQDocument> makeDocument(int count) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQElement> root = doc->createElement(ZQName(UnicodeString(u"root")));
  doc->appendChild(root.get());
  for (int i = 0; i < count; ++i) {
    ZQPtr<ZQElement> item = doc->createElement(ZQName(UnicodeString(u"item")));
    item->setAttribute(ZQName(UnicodeString(u"id")), ZQValue(numbered(u"i", i), ZQUNIT_NONE));
    ZQPtr<ZQNode> text = doc->createTextNode(numbered(u"text ", i));
    item->appendChild(text.get());
    root->appendChild(item.get());
  }
  return doc;
}

// Every element still holds what makeDocument put there.
void expectDocument(ZQDocument* doc, int count) {
  ZQNode* root = doc->getDocumentElement();
  ASSERT_NE(root, nullptr);
  int i = 0;
  for (ZQNode* item = root->getFirstChildFast(); item; item = item->getNextSiblingFast(), ++i) {
    ZQElement* element = static_cast<ZQElement*>(item);
    EXPECT_EQ(element->getAttribute(ZQName(UnicodeString(u"id"))).toString(), numbered(u"i", i));
    ASSERT_NE(item->getFirstChildFast(), nullptr);
    EXPECT_EQ(item->getFirstChildFast()->getText(), numbered(u"text ", i));
  }
  EXPECT_EQ(i, count);
}

}  // namespace

TEST(NodeStorage, NodesMadeOnOneThreadAreFreedOnAnother) {
  constexpr int kCount = 2000;
  std::vector<ZQPtr<ZQDocument>> docs(4);
  std::vector<std::thread> makers;
  for (size_t t = 0; t < docs.size(); ++t)
    makers.emplace_back([&docs, t] { docs[t] = makeDocument(kCount); });
  for (std::thread& m : makers) m.join();
  // The makers have ended: their nodes are read and freed here and elsewhere.
  for (auto& doc : docs) expectDocument(doc.get(), kCount);
  std::thread freer([&docs] {
    docs[0] = nullptr;
    docs[1] = nullptr;
  });
  freer.join();
  docs[2] = nullptr;
  // New nodes of any thread may reuse the storage freed above; the survivor is untouched.
  ZQPtr<ZQDocument> fresh = makeDocument(kCount);
  std::thread other([] {
    ZQPtr<ZQDocument> doc = makeDocument(kCount);
    expectDocument(doc.get(), kCount);
  });
  other.join();
  expectDocument(fresh.get(), kCount);
  expectDocument(docs[3].get(), kCount);
}

TEST(NodeStorage, ThreadsMakeAndFreeAtOnce) {
  std::vector<std::thread> workers;
  for (int t = 0; t < 4; ++t) {
    workers.emplace_back([t] {
      for (int round = 0; round < 5; ++round) {
        ZQPtr<ZQDocument> doc = makeDocument(300 + t * 10 + round);
        expectDocument(doc.get(), 300 + t * 10 + round);
      }
    });
  }
  for (std::thread& w : workers) w.join();
}
