// The node tree: building, walking by links and by the tree walker, and taking down a tree,
// side by side with pugixml's DOM on a tree of the same shape.
#include <benchmark/benchmark.h>

#include <pugixml.hpp>

#include "BenchSupport.h"
#include "common/ZQDocument.h"
#include "common/ZQElement.h"
#include "common/ZQNode.h"

using namespace ZQCommonNS;

namespace {

// A document of `sections` sections, each with ten paragraphs holding a text.
constexpr int kSections = 100;
constexpr int kParagraphs = 10;
constexpr int kNodes = 1 + kSections * (1 + kParagraphs * 2);

void buildZQ(ZQDocument* doc) {
  ZQName body(UnicodeString(u"body")), section(UnicodeString(u"section")),
      para(UnicodeString(u"p"));
  ZQNode* root = doc->appendChild(doc->createElementNS(ZQName(), ZQName(), body));
  UnicodeString text(u"Some text of a paragraph.");
  for (int s = 0; s < kSections; ++s) {
    ZQNode* sec = root->appendChild(doc->createElementNS(ZQName(), ZQName(), section));
    for (int p = 0; p < kParagraphs; ++p) {
      ZQNode* par = sec->appendChild(doc->createElementNS(ZQName(), ZQName(), para));
      par->appendChildText(text);
    }
  }
}

void buildPugi(pugi::xml_document& doc) {
  pugi::xml_node root = doc.append_child("body");
  for (int s = 0; s < kSections; ++s) {
    pugi::xml_node sec = root.append_child("section");
    for (int p = 0; p < kParagraphs; ++p)
      sec.append_child("p").append_child(pugi::node_pcdata).set_value("Some text of a paragraph.");
  }
}

// Depth-first walk by links only, without recursion.
template <class First, class Next, class Parent, class Node>
int walkLinks(Node root, First first, Next next, Parent parent) {
  int count = 0;
  Node n = root;
  while (n) {
    ++count;
    if (Node c = first(n)) {
      n = c;
      continue;
    }
    while (n && n != root && !next(n)) n = parent(n);
    n = (n && n != root) ? next(n) : Node();
  }
  return count;
}

void BM_ZQNode_Build(benchmark::State& state) {
  zqbench::runCounted(state, [] {
    ZQPtr<ZQDocument> doc(new ZQDocument());
    buildZQ(doc);
    return static_cast<size_t>(kNodes);
  });
}

void BM_Pugi_Build(benchmark::State& state) {
  zqbench::runCounted(state, [] {
    pugi::xml_document doc;
    buildPugi(doc);
    return static_cast<size_t>(kNodes);
  });
}

void BM_ZQNode_WalkFast(benchmark::State& state) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  buildZQ(doc);
  ZQNode* root = doc->getFirstChildFast();
  zqbench::runCounted(state, [&] {
    int n = walkLinks(
        root, [](ZQNode* x) { return x->getFirstChildFast(); },
        [](ZQNode* x) { return x->getNextSiblingFast(); },
        [](ZQNode* x) { return x->getParentNodeFast(); });
    benchmark::DoNotOptimize(n);
    return static_cast<size_t>(n);
  });
}

void BM_ZQNode_WalkPlain(benchmark::State& state) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  buildZQ(doc);
  ZQNode* root = doc->getFirstChildFast();
  zqbench::runCounted(state, [&] {
    int n = walkLinks(
        root, [](ZQNode* x) { return x->getFirstChild(); },
        [](ZQNode* x) { return x->getNextSibling(); },
        [](ZQNode* x) { return x->getParentNode(); });
    benchmark::DoNotOptimize(n);
    return static_cast<size_t>(n);
  });
}

void BM_ZQTreeIterator_PreOrder(benchmark::State& state) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  buildZQ(doc);
  ZQNode* root = doc->getFirstChildFast();
  zqbench::runCounted(state, [&] {
    ZQTreeIterator it(root, nullptr, false, ZQTreeIterator::PRE_ORDER);
    size_t n = 0;
    while (it.nextNode()) ++n;
    return n;
  });
}

void BM_ZQTreeIterator_BothOrders(benchmark::State& state) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  buildZQ(doc);
  ZQNode* root = doc->getFirstChildFast();
  zqbench::runCounted(state, [&] {
    ZQTreeIterator it(root, nullptr, false, ZQTreeIterator::PRE_AND_POST_ORDER);
    size_t n = 0;
    while (it.nextNode()) ++n;
    return n;
  });
}

void BM_Pugi_Walk(benchmark::State& state) {
  pugi::xml_document doc;
  buildPugi(doc);
  pugi::xml_node root = doc.first_child();
  zqbench::runCounted(state, [&] {
    int n = walkLinks(
        root, [](pugi::xml_node x) { return x.first_child(); },
        [](pugi::xml_node x) { return x.next_sibling(); },
        [](pugi::xml_node x) { return x.parent(); });
    benchmark::DoNotOptimize(n);
    return static_cast<size_t>(n);
  });
}

void BM_ZQNode_ElementsByTagName(benchmark::State& state) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  buildZQ(doc);
  ZQPtr<ZQNodeList> list = doc->getElementsByTagName(ZQName(UnicodeString(u"p")));
  zqbench::runCounted(state, [&] {
    size_t n = 0;
    for (ZQNode* x = list->getFirstNode(); x; x = list->getNextNode(x)) ++n;
    return n;
  });
}

void BM_ZQNode_Destroy(benchmark::State& state) {
  size_t ops = 0;
  for (auto _ : state) {
    state.PauseTiming();
    ZQPtr<ZQDocument> doc(new ZQDocument());
    buildZQ(doc);
    state.ResumeTiming();
    doc = nullptr;
    ops += kNodes;
  }
  state.SetItemsProcessed(static_cast<int64_t>(ops));
}

void BM_ZQNode_DeleteAllChildNodes(benchmark::State& state) {
  size_t ops = 0;
  for (auto _ : state) {
    state.PauseTiming();
    ZQPtr<ZQDocument> doc(new ZQDocument());
    buildZQ(doc);
    state.ResumeTiming();
    ops += static_cast<size_t>(doc->deleteAllChildNodes());
  }
  state.SetItemsProcessed(static_cast<int64_t>(ops));
}

}  // namespace

BENCHMARK(BM_ZQNode_Build);
BENCHMARK(BM_Pugi_Build);
BENCHMARK(BM_ZQNode_WalkFast);
BENCHMARK(BM_ZQNode_WalkPlain);
BENCHMARK(BM_ZQTreeIterator_PreOrder);
BENCHMARK(BM_ZQTreeIterator_BothOrders);
BENCHMARK(BM_Pugi_Walk);
BENCHMARK(BM_ZQNode_ElementsByTagName);
BENCHMARK(BM_ZQNode_Destroy);
BENCHMARK(BM_ZQNode_DeleteAllChildNodes);

BENCHMARK_MAIN();
