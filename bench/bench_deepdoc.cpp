// Depth costs: namespace look-ups under many open contexts, and documents nested a million
// deep through markup (load, save, load again). Both should grow with the size, not its square.
#include <sstream>
#include <string>

#include "BenchSupport.h"
#include "common/ZQDocument.h"
#include "common/ZQNamespaceManager.h"

using namespace ZQCommonNS;

namespace {

// A manager `depth` contexts deep, the default namespace declared at the first, every
// element in it, as the parser leaves it in a deep document.
ZQPtr<ZQNamespaceManager> deepManager(int depth) {
  ZQPtr<ZQNamespaceManager> manager = new ZQNamespaceManager();
  manager->pushContext();
  manager->declare(ZQName(), ZQN_NS_XHTML);
  for (int i = 1; i < depth; ++i) {
    manager->pushContext();
    manager->top().localName = ZQN_div;
    manager->top().namespaceUri = ZQN_NS_XHTML;
  }
  return manager;
}

void BM_NamespaceLookupAtDepth(benchmark::State& state) {
  ZQPtr<ZQNamespaceManager> manager = deepManager(static_cast<int>(state.range(0)));
  zqbench::runCounted(state, [&] {
    // A prefix bound nowhere walks the whole stack when the look-up is a walk.
    benchmark::DoNotOptimize(manager->lookup(ZQN_svg));
    benchmark::DoNotOptimize(manager->lookupDefault());
    benchmark::DoNotOptimize(manager->lookupPrefix(ZQN_NS_SVG));
    return 3;
  });
}
BENCHMARK(BM_NamespaceLookupAtDepth)->Arg(10)->Arg(1000)->Arg(100000)->Arg(1000000);

void BM_PushAndPopAtDepth(benchmark::State& state) {
  ZQPtr<ZQNamespaceManager> manager = deepManager(static_cast<int>(state.range(0)));
  zqbench::runCounted(state, [&] {
    manager->pushContext();
    manager->declare(ZQName(), ZQN_NS_XHTML);  // redundant: makes no map
    manager->top().localName = ZQN_div;
    manager->popContext();
    return 1;
  });
}
BENCHMARK(BM_PushAndPopAtDepth)->Arg(10)->Arg(1000000);

std::string nestedMarkup(int depth, bool namespaces) {
  std::string text;
  for (int i = 0; i < depth; ++i) {
    text += i == 0 && namespaces ? "<e xmlns=\"urn:deep\" xmlns:p=\"urn:p\">"
                                 : (namespaces && i % 2 ? "<p:e>" : "<e>");
  }
  text += "x";
  for (int i = depth - 1; i >= 0; --i) text += namespaces && i % 2 ? "</p:e>" : "</e>";
  return text;
}

void BM_NestedDocumentRoundTrip(benchmark::State& state) {
  int depth = static_cast<int>(state.range(0));
  std::string markup = nestedMarkup(depth, state.range(1) != 0);
  for (auto _ : state) {
    ZQPtr<ZQDocument> doc(new ZQDocument());
    std::istringstream stream(markup);
    doc->load(stream);
    UnicodeString saved = doc->saveXml();
    ZQPtr<ZQDocument> again(new ZQDocument());
    again->loadXml(saved);
    benchmark::DoNotOptimize(again->getDocumentElement());
  }
  state.SetItemsProcessed(state.iterations() * depth);
}
BENCHMARK(BM_NestedDocumentRoundTrip)
    ->Args({100000, 0})
    ->Args({1000000, 0})
    ->Args({100000, 1})
    ->Args({1000000, 1})
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
