#include <gtest/gtest.h>

#include <algorithm>

#include "TestSupport.h"

#include <algorithm>
#include <map>
#include <random>
#include <vector>

#include "common/ZQNamespaceManager.h"
#include "common/ZQTypeId.h"
#include "core/ZQNameInternal.h"

using namespace ZQCommonNS;
using zqtest::u;

namespace {

ZQName name(const char* text) { return ZQName(u(text)); }

// ---- ZQNamespaceMap ----

TEST(NamespaceMap, TypeOfTheClass) {
  ZQPtr<ZQNamespaceMap> map = new ZQNamespaceMap();
  EXPECT_EQ(map->getTypeID(), 0xE8F3CB34u);
  EXPECT_EQ(map->getTypeName(), u("ZQNamespaceMap"));
  EXPECT_TRUE(map->isA(ZQTypeId::ZQRCObject));
  EXPECT_FALSE(map->isA(ZQTypeId::ZQNamespaceManager));
}

TEST(NamespaceMap, OrderedByNameNumberWithTheDefaultFirst) {
  ZQPtr<ZQNamespaceMap> map = new ZQNamespaceMap();
  ZQName late = name("zz-prefix-made-at-run-time");
  ASSERT_GE(static_cast<int>(late), ZQ_BUILTIN_NAME_COUNT);
  map->set(late, ZQN_NS_SVG);
  map->set(ZQN_xlink, ZQN_NS_XLINK);
  map->set(ZQName(), ZQN_NS_XHTML);
  map->set(ZQN_auto, ZQN_NS_MATHML);  // a built-in name below xlink, though later in the alphabet
  ASSERT_EQ(map->getCount(), 4);
  EXPECT_EQ(map->getPrefix(0), ZQName());
  EXPECT_EQ(map->getNamespace(0), ZQN_NS_XHTML);
  EXPECT_EQ(map->getPrefix(1), ZQN_auto);
  EXPECT_EQ(map->getPrefix(2), ZQN_xlink);
  EXPECT_EQ(map->getPrefix(3), late);
  EXPECT_EQ(map->getNamespace(3), ZQN_NS_SVG);
  std::vector<ZQName> walked;
  for (const ZQNamespaceMap::Binding& binding : *map) walked.push_back(binding.first);
  EXPECT_EQ(walked, (std::vector<ZQName>{ZQName(), ZQN_auto, ZQN_xlink, late}));
}

TEST(NamespaceMap, OrderIsSigned) {
  ZQPtr<ZQNamespaceMap> map = new ZQNamespaceMap();
  map->set(ZQName(), ZQN_NS_SVG);
  map->set(static_cast<ZQNameEnum>(-7), ZQN_NS_XLINK);
  EXPECT_EQ(static_cast<int>(map->getPrefix(0)), -7);
  EXPECT_EQ(map->getPrefix(1), ZQName());
}

TEST(NamespaceMap, SetOverwritesAndFindTellsABindingToNothing) {
  ZQPtr<ZQNamespaceMap> map = new ZQNamespaceMap();
  map->set(ZQN_xlink, ZQN_NS_XLINK);
  map->set(ZQN_xlink, ZQN_NS_SVG);
  EXPECT_EQ(map->getCount(), 1);
  EXPECT_EQ(map->get(ZQN_xlink), ZQN_NS_SVG);
  map->set(ZQName(), ZQName());
  ZQName ns = ZQN_NS_XML;
  EXPECT_TRUE(map->find(ZQName(), ns));
  EXPECT_EQ(ns, ZQName());
  EXPECT_TRUE(map->contains(ZQName()));
  EXPECT_FALSE(map->contains(ZQN_svg));
  EXPECT_FALSE(map->find(ZQN_svg, ns));
  EXPECT_EQ(map->get(ZQN_svg), ZQName());
}

TEST(NamespaceMap, PositionsOutsideTheMapGiveNothing) {
  ZQPtr<ZQNamespaceMap> map = new ZQNamespaceMap();
  map->set(ZQN_xlink, ZQN_NS_XLINK);
  EXPECT_EQ(map->getPrefix(-1), ZQName());
  EXPECT_EQ(map->getPrefix(1), ZQName());
  EXPECT_EQ(map->getNamespace(-1), ZQName());
  EXPECT_EQ(map->getNamespace(1), ZQName());
}

// ---- ZQNamespaceManager ----

TEST(NamespaceManager, TypeOfTheClass) {
  ZQPtr<ZQNamespaceManager> ns = new ZQNamespaceManager();
  EXPECT_EQ(ns->getTypeID(), 0xFD1182ADu);
  EXPECT_EQ(ns->getTypeName(), u("ZQNamespaceManager"));
  EXPECT_TRUE(ns->isA(ZQTypeId::ZQRCObject));
  EXPECT_TRUE(ns->isA(ZQTypeId::ZQObjectBase));
}

TEST(NamespaceManager, XmlIsBoundOnANewManager) {
  ZQPtr<ZQNamespaceManager> ns = new ZQNamespaceManager();
  EXPECT_EQ(ns->lookup(ZQN_xml), ZQN_NS_XML);
  EXPECT_EQ(ns->lookup(ZQN_xmlns), ZQN_NS_XMLNS);
  EXPECT_EQ(ns->lookup(ZQName()), ZQName());
  EXPECT_EQ(ns->getDepth(), 0);
  // The base context holds the two bindings, xml's number being the lower.
  ASSERT_NE(ns->topMap(), nullptr);
  EXPECT_EQ(ns->getNamespaceCount(0), 2);
  EXPECT_EQ(ns->topMap()->getPrefix(0), ZQN_xml);
  EXPECT_EQ(ns->topMap()->getPrefix(1), ZQN_xmlns);
}

TEST(NamespaceManager, PopOnANewManagerKeepsTheBase) {
  ZQPtr<ZQNamespaceManager> ns = new ZQNamespaceManager();
  EXPECT_FALSE(ns->popContext());
  EXPECT_EQ(ns->getDepth(), 0);
  EXPECT_EQ(ns->lookup(ZQN_xml), ZQN_NS_XML);
  ns->pushContext();
  ns->pushContext();
  EXPECT_EQ(ns->getDepth(), 2);
  EXPECT_TRUE(ns->popContext());
  EXPECT_TRUE(ns->popContext());
  EXPECT_FALSE(ns->popContext());
  EXPECT_EQ(ns->lookup(ZQN_xmlns), ZQN_NS_XMLNS);
}

TEST(NamespaceManager, PopToBaseLeavesOnlyTheBase) {
  ZQPtr<ZQNamespaceManager> ns = new ZQNamespaceManager();
  for (int i = 0; i < 5; ++i) {
    ns->pushContext();
    ns->declare(ZQN_svg, ZQN_NS_SVG);
  }
  ns->popToBase();
  EXPECT_EQ(ns->getDepth(), 0);
  EXPECT_EQ(ns->lookup(ZQN_svg), ZQName());
  EXPECT_EQ(ns->lookup(ZQN_xml), ZQN_NS_XML);
}

TEST(NamespaceManager, ARedundantDeclarationMakesNoMap) {
  ZQPtr<ZQNamespaceManager> ns = new ZQNamespaceManager();
  ns->pushContext();
  ns->declare(ZQN_xml, ZQN_NS_XML);
  EXPECT_EQ(ns->topMap(), nullptr);
  EXPECT_EQ(ns->getNamespaceCount(1), 0);
  // Undeclaring a default namespace that isn't there is redundant too.
  ns->declare(ZQName(), ZQName());
  EXPECT_EQ(ns->topMap(), nullptr);
  ns->declare(ZQN_svg, ZQN_NS_SVG);
  ASSERT_NE(ns->topMap(), nullptr);
  ns->pushContext();
  ns->declare(ZQN_svg, ZQN_NS_SVG);
  EXPECT_EQ(ns->topMap(), nullptr);
}

TEST(NamespaceManager, DeclareOverwritesInTheSameContext) {
  ZQPtr<ZQNamespaceManager> ns = new ZQNamespaceManager();
  ns->pushContext();
  ns->declare(ZQN_svg, ZQN_NS_SVG);
  ns->declare(ZQN_svg, ZQN_NS_MATHML);
  EXPECT_EQ(ns->getNamespaceCount(1), 1);
  EXPECT_EQ(ns->lookup(ZQN_svg), ZQN_NS_MATHML);
}

TEST(NamespaceManager, EmptyDefaultNamespaceUndeclaresUntilPopped) {
  ZQPtr<ZQNamespaceManager> ns = new ZQNamespaceManager();
  ns->pushContext();
  ns->declare(ZQName(), ZQN_NS_XHTML);
  ns->pushContext();
  EXPECT_EQ(ns->lookup(ZQName()), ZQN_NS_XHTML);
  ns->declare(ZQName(), ZQName());
  ASSERT_NE(ns->topMap(), nullptr);
  EXPECT_EQ(ns->lookup(ZQName()), ZQName());
  EXPECT_EQ(ns->lookupDefault(), ZQName());
  ns->pushContext();  // and below
  EXPECT_EQ(ns->lookup(ZQName()), ZQName());
  ns->popContext();
  ns->popContext();
  EXPECT_EQ(ns->lookup(ZQName()), ZQN_NS_XHTML);
  EXPECT_EQ(ns->lookupDefault(), ZQN_NS_XHTML);
}

TEST(NamespaceManager, APrefixBoundToNothingIsPassedOver) {
  ZQPtr<ZQNamespaceManager> ns = new ZQNamespaceManager();
  ns->pushContext();
  ns->declare(ZQN_svg, ZQN_NS_SVG);
  ns->pushContext();
  ns->declare(ZQN_svg, ZQName());
  ASSERT_NE(ns->topMap(), nullptr);
  EXPECT_TRUE(ns->topMap()->contains(ZQN_svg));
  EXPECT_EQ(ns->lookup(ZQN_svg), ZQN_NS_SVG);
}

TEST(NamespaceManager, AnElementsOwnPrefixAnswersWithoutDeclaration) {
  ZQPtr<ZQNamespaceManager> ns = new ZQNamespaceManager();
  ns->pushContext();
  ns->top().prefix = ZQN_svg;
  ns->top().localName = ZQN_svg;
  ns->top().namespaceUri = ZQN_NS_SVG;
  EXPECT_EQ(ns->lookup(ZQN_svg), ZQN_NS_SVG);
  EXPECT_EQ(ns->topMap(), nullptr);
  // An element name with a namespace of 0 answers nothing; the walk goes on outwards.
  ns->pushContext();
  ns->top().prefix = ZQN_svg;
  EXPECT_EQ(ns->lookup(ZQN_svg), ZQN_NS_SVG);
  ns->popContext();
  ns->popContext();
  EXPECT_EQ(ns->lookup(ZQN_svg), ZQName());
}

TEST(NamespaceManager, TheElementsNameIsAskedBeforeItsMap) {
  ZQPtr<ZQNamespaceManager> ns = new ZQNamespaceManager();
  ns->pushContext();
  ns->declare(ZQN_svg, ZQN_NS_MATHML);
  ns->top().prefix = ZQN_svg;
  ns->top().namespaceUri = ZQN_NS_SVG;
  EXPECT_EQ(ns->lookup(ZQN_svg), ZQN_NS_SVG);
}

TEST(NamespaceManager, LookupDefaultSkipsTheElementsOwnBinding) {
  ZQPtr<ZQNamespaceManager> ns = new ZQNamespaceManager();
  ns->pushContext();
  ns->declare(ZQName(), ZQN_NS_MATHML);
  ns->pushContext();
  ns->top().localName = ZQN_svg;
  ns->top().namespaceUri = ZQN_NS_SVG;
  EXPECT_EQ(ns->lookup(ZQName()), ZQN_NS_SVG);
  EXPECT_EQ(ns->lookupDefault(), ZQN_NS_MATHML);
  ns->popToBase();
  EXPECT_EQ(ns->lookupDefault(), ZQName());
}

TEST(NamespaceManager, LookupPrefixOfTheDefaultNamespaceIsNothing) {
  ZQPtr<ZQNamespaceManager> ns = new ZQNamespaceManager();
  ns->pushContext();
  ns->declare(ZQName(), ZQN_NS_XHTML);
  ns->top().localName = ZQN_html;
  ns->top().namespaceUri = ZQN_NS_XHTML;
  EXPECT_EQ(ns->lookupPrefix(ZQN_NS_XHTML), ZQName());
  EXPECT_EQ(ns->lookupPrefix(ZQN_NS_XML), ZQN_xml);
  EXPECT_EQ(ns->lookupPrefix(ZQN_NS_XMLNS), ZQN_xmlns);
  EXPECT_EQ(ns->lookupPrefix(ZQN_NS_SVG), ZQName());
}

TEST(NamespaceManager, LookupPrefixFindsAnElementsPrefixAndTheFirstInMapOrder) {
  ZQPtr<ZQNamespaceManager> ns = new ZQNamespaceManager();
  ZQName late = name("zz-second-svg-prefix");
  ns->pushContext();
  ns->declare(late, ZQN_NS_SVG);
  ns->declare(ZQN_svg, ZQN_NS_SVG);
  EXPECT_EQ(ns->lookupPrefix(ZQN_NS_SVG), ZQN_svg);  // lower number first, not declaration order
  ns->pushContext();
  ns->top().prefix = late;
  ns->top().namespaceUri = ZQN_NS_SVG;
  EXPECT_EQ(ns->lookupPrefix(ZQN_NS_SVG), late);  // the inner element's own prefix
}

TEST(NamespaceManager, LookupPrefixDoesNotCheckForHiddenPrefixes) {
  ZQPtr<ZQNamespaceManager> ns = new ZQNamespaceManager();
  ns->pushContext();
  ns->declare(ZQN_svg, ZQN_NS_SVG);
  ns->pushContext();
  ns->declare(ZQN_svg, ZQN_NS_MATHML);
  EXPECT_EQ(ns->lookup(ZQN_svg), ZQN_NS_MATHML);
  EXPECT_EQ(ns->lookupPrefix(ZQN_NS_SVG), ZQN_svg);
}

TEST(NamespaceManager, NamespaceCountPerDepth) {
  ZQPtr<ZQNamespaceManager> ns = new ZQNamespaceManager();
  ns->pushContext();
  ns->pushContext();
  ns->declare(ZQName(), ZQN_NS_SVG);
  ns->declare(ZQN_xlink, ZQN_NS_XLINK);
  EXPECT_EQ(ns->getNamespaceCount(0), 2);
  EXPECT_EQ(ns->getNamespaceCount(1), 0);
  EXPECT_EQ(ns->getNamespaceCount(2), 2);
  EXPECT_EQ(ns->getNamespaceCount(3), 0);
  EXPECT_EQ(ns->getNamespaceCount(-1), 0);
  EXPECT_EQ(ns->getEntry(2).map.get(), ns->topMap());
}

TEST(NamespaceManager, PoppingReleasesTheMap) {
  ZQPtr<ZQNamespaceManager> ns = new ZQNamespaceManager();
  ns->pushContext();
  ns->declare(ZQN_svg, ZQN_NS_SVG);
  ZQPtr<ZQNamespaceMap> kept = ns->topMap();
  EXPECT_EQ(kept->getRefCount(), 2);
  ns->popContext();
  EXPECT_EQ(kept->getRefCount(), 1);
}

TEST(NamespaceManager, HoldsTheSharedNameTable) {
  ZQNameTable::cleanup();
  ZQName before = name("made-before-any-manager");
  ZQNameTable* table = peekSharedNameTable();
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(table->getRefCount(), 0);
  {
    ZQPtr<ZQNamespaceManager> first = new ZQNamespaceManager();
    EXPECT_EQ(table->getRefCount(), 1);
    {
      ZQPtr<ZQNamespaceManager> second = new ZQNamespaceManager();
      EXPECT_EQ(table->getRefCount(), 2);
    }
    EXPECT_EQ(table->getRefCount(), 1);
    EXPECT_EQ(before.toString(), u("made-before-any-manager"));
  }
  // The last holder took the table and its run-time names with it.
  EXPECT_EQ(peekSharedNameTable(), nullptr);
  EXPECT_TRUE(ZQNameTable::getSharedNameString(before).isEmpty());
}

// ---- the look-ups against a plain walk of the stack ----

// The manager's look-ups as a walk over every context, top down: what the indexed manager
// must answer in every state.
class WalkingModel {
 public:
  struct Context {
    std::map<int, ZQName> bindings;  // ordered by the prefix's number, signed
    bool hasMap = false;
    ZQName prefix;
    ZQName localName;
    ZQName ns;
  };

  WalkingModel() {
    m_stack.emplace_back();
    set(ZQN_xml, ZQN_NS_XML);
    set(ZQN_xmlns, ZQN_NS_XMLNS);
  }

  void push() { m_stack.emplace_back(); }
  bool pop() {
    if (m_stack.size() < 2) return false;
    m_stack.pop_back();
    return true;
  }
  void set(ZQName prefix, ZQName ns) {
    m_stack.back().hasMap = true;
    m_stack.back().bindings[static_cast<int>(prefix)] = ns;
  }
  void declare(ZQName prefix, ZQName ns) {
    if (lookup(prefix) != ns) set(prefix, ns);
  }
  Context& top() { return m_stack.back(); }
  int depth() const { return static_cast<int>(m_stack.size()) - 1; }
  int count(int depth) const {
    if (depth < 0 || depth > this->depth()) return 0;
    return static_cast<int>(m_stack[static_cast<size_t>(depth)].bindings.size());
  }

  ZQName lookup(ZQName prefix) const {
    for (auto it = m_stack.rbegin(); it != m_stack.rend(); ++it) {
      if (it->prefix == prefix && !it->ns.isEmpty()) return it->ns;
      auto found = it->bindings.find(static_cast<int>(prefix));
      if (found == it->bindings.end()) continue;
      if (!found->second.isEmpty()) return found->second;
      if (prefix.isEmpty()) return ZQName();
    }
    return ZQName();
  }
  ZQName lookupDefault() const {
    for (auto it = m_stack.rbegin(); it != m_stack.rend(); ++it) {
      auto found = it->bindings.find(0);
      if (found != it->bindings.end()) return found->second;
    }
    return ZQName();
  }
  ZQName lookupPrefix(ZQName ns) const {
    for (auto it = m_stack.rbegin(); it != m_stack.rend(); ++it) {
      if (it->ns == ns && !it->prefix.isEmpty()) return it->prefix;
      for (const auto& binding : it->bindings)
        if (binding.second == ns && binding.first != 0)
          return ZQName(static_cast<ZQNameEnum>(binding.first));
    }
    return ZQName();
  }

 private:
  std::vector<Context> m_stack;
};

// Runs one seeded sequence of pushes, pops, declarations, direct writes of the top's names
// and of its map, comparing every look-up after every step.
void runAgainstTheWalk(unsigned seed, int steps, int& deepest) {
  std::mt19937 random(seed);
  auto pick = [&random](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  const std::vector<ZQName> prefixes = {ZQName(),
                                        ZQN_xml,
                                        ZQN_xmlns,
                                        ZQN_svg,
                                        ZQN_xlink,
                                        ZQN_auto,
                                        name("zz-run-time-prefix"),
                                        ZQName(static_cast<ZQNameEnum>(-3))};
  const std::vector<ZQName> namespaces = {
      ZQName(),     ZQN_NS_XML,    ZQN_NS_XMLNS, ZQN_NS_SVG,
      ZQN_NS_XLINK, ZQN_NS_MATHML, ZQN_NS_XHTML, name("urn:zz-run-time-namespace")};
  ZQPtr<ZQNamespaceManager> manager = new ZQNamespaceManager();
  WalkingModel model;
  // Some runs stay shallow and change a lot, others grow deep.
  int pushWeight = 3 + static_cast<int>(seed % 4);
  for (int step = 0; step < steps; ++step) {
    int what = pick(20);
    if (what < pushWeight) {
      manager->pushContext();
      model.push();
    } else if (what < 7) {
      ASSERT_EQ(manager->popContext(), model.pop()) << "step " << step;
    } else if (what < 12) {
      ZQName prefix = prefixes[static_cast<size_t>(pick(static_cast<int>(prefixes.size())))];
      ZQName ns = namespaces[static_cast<size_t>(pick(static_cast<int>(namespaces.size())))];
      manager->declare(prefix, ns);
      model.declare(prefix, ns);
    } else if (what < 17) {
      ZQName value = what == 14 ? name("zz-local")
                                : (what < 14 ? prefixes : namespaces)[static_cast<size_t>(pick(8))];
      if (what < 14) {
        manager->top().prefix = value;
        model.top().prefix = value;
      } else if (what == 14) {
        manager->top().localName = value;
        model.top().localName = value;
      } else {
        manager->top().namespaceUri = value;
        model.top().ns = value;
      }
    } else if (what < 19) {
      // The owner may write the top's map itself once it exists.
      if (ZQNamespaceMap* map = manager->topMap()) {
        ZQName prefix = prefixes[static_cast<size_t>(pick(8))];
        ZQName ns = namespaces[static_cast<size_t>(pick(8))];
        map->set(prefix, ns);
        model.set(prefix, ns);
      }
    } else if (pick(50) == 0) {
      manager->popToBase();
      while (model.pop()) {
      }
    }

    ASSERT_EQ(manager->getDepth(), model.depth()) << "step " << step;
    deepest = std::max(deepest, model.depth());
    ASSERT_EQ(manager->topMap() != nullptr, model.top().hasMap) << "step " << step;
    int depth = pick(model.depth() + 2);
    ASSERT_EQ(manager->getNamespaceCount(depth), model.count(depth)) << "step " << step;
    ASSERT_EQ(manager->lookupDefault(), model.lookupDefault()) << "step " << step;
    for (ZQName prefix : prefixes)
      ASSERT_EQ(manager->lookup(prefix), model.lookup(prefix))
          << "step " << step << " prefix " << static_cast<int>(prefix);
    for (ZQName ns : namespaces)
      ASSERT_EQ(manager->lookupPrefix(ns), model.lookupPrefix(ns))
          << "step " << step << " namespace " << static_cast<int>(ns);
  }
}

TEST(NamespaceManagerIndex, AnswersAsTheWalkThroughRandomSequences) {
  // Shallow runs stay among the contexts near the base that are walked; deep ones go far
  // into the indexed ones, and come back across the boundary.
  int shallowRuns = 0;
  int deepRuns = 0;
  for (unsigned seed = 1; seed <= 24; ++seed) {
    SCOPED_TRACE(seed);
    int deepest = 0;
    runAgainstTheWalk(seed, 4000, deepest);
    if (HasFatalFailure()) return;
    if (deepest < 32) ++shallowRuns;
    if (deepest > 200) ++deepRuns;
  }
  EXPECT_GT(shallowRuns, 0);
  EXPECT_GT(deepRuns, 0);
}

TEST(NamespaceManagerIndex, AnEntryWrittenAgainAfterItsChildIsClosedIsReadAfresh) {
  ZQPtr<ZQNamespaceManager> ns = new ZQNamespaceManager();
  ns->pushContext();
  ns->declare(ZQN_svg, ZQN_NS_SVG);
  ns->pushContext();
  EXPECT_EQ(ns->lookup(ZQN_svg), ZQN_NS_SVG);
  ns->popContext();
  // Back on top, the entry changes before the next child opens.
  ns->declare(ZQN_svg, ZQN_NS_MATHML);
  ns->top().prefix = ZQN_xlink;
  ns->top().namespaceUri = ZQN_NS_XLINK;
  ns->pushContext();
  EXPECT_EQ(ns->lookup(ZQN_svg), ZQN_NS_MATHML);
  EXPECT_EQ(ns->lookup(ZQN_xlink), ZQN_NS_XLINK);
  EXPECT_EQ(ns->lookupPrefix(ZQN_NS_SVG), ZQName());
  EXPECT_EQ(ns->lookupPrefix(ZQN_NS_MATHML), ZQN_svg);
  EXPECT_EQ(ns->lookupPrefix(ZQN_NS_XLINK), ZQN_xlink);
  // A map put in place of another is read afresh too.
  ns->popContext();
  ns->top().map = new ZQNamespaceMap();
  ns->pushContext();
  EXPECT_EQ(ns->lookup(ZQN_svg), ZQName());
}

TEST(NamespaceManagerIndex, AMillionContextsDeep) {
  ZQPtr<ZQNamespaceManager> ns = new ZQNamespaceManager();
  ns->pushContext();
  ns->declare(ZQName(), ZQN_NS_XHTML);
  ns->declare(ZQN_svg, ZQN_NS_SVG);
  const int depth = 1000000;
  for (int i = 1; i < depth; ++i) {
    ns->pushContext();
    ns->top().localName = ZQN_div;
    ns->top().namespaceUri = ns->lookup(ZQName());
    if (i == depth / 2) ns->declare(ZQN_xlink, ZQN_NS_XLINK);
  }
  EXPECT_EQ(ns->getDepth(), depth);
  EXPECT_EQ(ns->lookup(ZQName()), ZQN_NS_XHTML);
  EXPECT_EQ(ns->lookupDefault(), ZQN_NS_XHTML);
  EXPECT_EQ(ns->lookup(ZQN_svg), ZQN_NS_SVG);
  EXPECT_EQ(ns->lookup(ZQN_xlink), ZQN_NS_XLINK);
  EXPECT_EQ(ns->lookupPrefix(ZQN_NS_SVG), ZQN_svg);
  EXPECT_EQ(ns->lookupPrefix(ZQN_NS_XHTML), ZQName());
  EXPECT_EQ(ns->getNamespaceCount(1), 2);
  // Down to the context that declared xlink, then one further.
  while (ns->getDepth() > depth / 2 + 1) ns->popContext();
  EXPECT_EQ(ns->lookup(ZQN_xlink), ZQN_NS_XLINK);
  ns->popContext();
  EXPECT_EQ(ns->lookup(ZQN_xlink), ZQName());
  ns->popToBase();
  EXPECT_EQ(ns->lookup(ZQN_svg), ZQName());
  EXPECT_EQ(ns->lookup(ZQN_xml), ZQN_NS_XML);
}

}  // namespace
