#include <gtest/gtest.h>

#include "TestSupport.h"

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

}  // namespace
