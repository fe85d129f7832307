// Catalog files read from a scratch directory, and URIs mapped through what they hold.
#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "TestSupport.h"
#include "UriTestSupport.h"
#include "common/ZQError.h"
#include "common/ZQUri.h"
#include "common/ZQXmlCatalogs.h"
#include "common/ZQXmlUtil.h"
#include "xml/ZQXmlCatalogsImpl.h"

using namespace ZQCommonNS;
using uritest::S;
using uritest::TempDir;
using zqtest::utf8;

namespace {

const char* const kHead =
    "<?xml version=\"1.0\"?>\n"
    "<catalog xmlns=\"urn:oasis:names:tc:entity:xmlns:xml:catalog\">\n";
const char* const kTail = "</catalog>\n";

// A scratch directory holding catalog files, and a catalog object to load them into.
class Catalogs : public ::testing::Test {
 protected:
  TempDir dir;
  ZQPtr<ZQXmlCatalogs> catalogs = ZQXmlUtil::createXmlCatalogs();

  std::string write(const std::string& name, const std::string& bytes) {
    std::string path = dir.path + "/" + name;
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
  }
  // Writes a catalog whose root holds `body`, and loads it.
  void load(const std::string& body, const std::string& name = "catalog.xml") {
    catalogs->loadCatalog(ZQUri(S(write(name, kHead + body + kTail))));
  }
  std::string resolve(const std::string& uri) const { return utf8(catalogs->resolveURI(S(uri))); }
  const std::vector<ZQXmlCatalogEntry>& entries() const {
    return static_cast<ZQXmlCatalogsImpl*>(catalogs.get())->getEntries();
  }
  // The file URI of a name in the scratch directory.
  std::string fileUri(const std::string& name) const { return "file://" + dir.path + "/" + name; }
  // The absolute path of a name in the scratch directory.
  std::string local(const std::string& name) const { return dir.path + "/" + name; }
};

struct Collected {
  std::vector<ZQError> errors;
};

void collect(const ZQError& error, void* data) {
  static_cast<Collected*>(data)->errors.push_back(error);
}

// ---- the object ----

TEST_F(Catalogs, FactoryMakesTheCatalogFileImplementation) {
  ASSERT_NE(catalogs, nullptr);
  EXPECT_EQ(catalogs->getTypeID(), ZQTypeId::ZQXmlCatalogsImpl);
  EXPECT_TRUE(catalogs->isA(ZQTypeId::ZQXmlCatalogs));
  EXPECT_TRUE(catalogs->isA(ZQTypeId::ZQRCObject));
  EXPECT_EQ(utf8(catalogs->getTypeName()), "ZQXmlCatalogsImpl");
  EXPECT_NE(ZQXmlUtil::createXmlCatalogs().get(), catalogs.get());
}

TEST_F(Catalogs, WithNoCatalogLoadedResolveReturnsItsArgument) {
  EXPECT_EQ(resolve("http://example.org/a.xml"), "http://example.org/a.xml");
  EXPECT_EQ(resolve(""), "");
  EXPECT_TRUE(entries().empty());
}

// ---- resolution ----

TEST_F(Catalogs, UriEntryResolvesAnExactMatchOnly) {
  load("<uri name=\"http://example.org/a.xml\" uri=\"http://mirror.test/b.xml\"/>\n");
  EXPECT_EQ(resolve("http://example.org/a.xml"), "http://mirror.test/b.xml");
  EXPECT_EQ(resolve("http://example.org/a.xml#frag"), "http://example.org/a.xml#frag");
  EXPECT_EQ(resolve("http://example.org/a.xm"), "http://example.org/a.xm");
  EXPECT_EQ(resolve("HTTP://example.org/a.xml"), "HTTP://example.org/a.xml");
  EXPECT_EQ(resolve("x http://example.org/a.xml"), "x http://example.org/a.xml");
}

TEST_F(Catalogs, TwoRewriteEntriesShorterFirstTheShorterWins) {
  load(
      "<rewriteURI uriStartString=\"http://example.org/\" rewritePrefix=\"/short/\"/>\n"
      "<rewriteURI uriStartString=\"http://example.org/deep/\" rewritePrefix=\"/long/\"/>\n");
  EXPECT_EQ(resolve("http://example.org/deep/x.xml"), "/short/deep/x.xml");
}

TEST_F(Catalogs, TwoRewriteEntriesLongerFirstTheLongerWins) {
  load(
      "<rewriteURI uriStartString=\"http://example.org/deep/\" rewritePrefix=\"/long/\"/>\n"
      "<rewriteURI uriStartString=\"http://example.org/\" rewritePrefix=\"/short/\"/>\n");
  EXPECT_EQ(resolve("http://example.org/deep/x.xml"), "/long/x.xml");
  EXPECT_EQ(resolve("http://example.org/y.xml"), "/short/y.xml");
}

TEST_F(Catalogs, RewriteKeepsTheRestAfterTheKeysLength) {
  load("<rewriteURI uriStartString=\"http://ex.test/dtd\" rewritePrefix=\"file:///opt/d\"/>\n");
  EXPECT_EQ(resolve("http://ex.test/dtd/a/b.dtd?q=1"), "file:///opt/d/a/b.dtd?q=1");
  EXPECT_EQ(resolve("http://ex.test/dtd"), "file:///opt/d");
  EXPECT_EQ(resolve("http://ex.test/dt"), "http://ex.test/dt");
  EXPECT_EQ(resolve("https://ex.test/dtd/a"), "https://ex.test/dtd/a");
}

TEST_F(Catalogs, UriSuffixMatchesTheEndOfTheUri) {
  load("<uriSuffix uriSuffix=\"/svg11.dtd\" uri=\"local/svg.dtd\"/>\n");
  EXPECT_EQ(resolve("http://www.w3.org/Graphics/SVG/1.1/DTD/svg11.dtd"), "local/svg.dtd");
  EXPECT_EQ(resolve("/svg11.dtd"), "local/svg.dtd");
  EXPECT_EQ(resolve("svg11.dtd"), "svg11.dtd");
  EXPECT_EQ(resolve("http://x/svg11.dtd.bak"), "http://x/svg11.dtd.bak");
}

TEST_F(Catalogs, EarlierRewriteWinsOverALaterExactUriEntry) {
  load(
      "<rewriteURI uriStartString=\"http://ex.test/\" rewritePrefix=\"r/\"/>\n"
      "<uri name=\"http://ex.test/a.xml\" uri=\"http://exact.test/a.xml\"/>\n");
  EXPECT_EQ(resolve("http://ex.test/a.xml"), "r/a.xml");
}

TEST_F(Catalogs, EarlierUriEntryWinsOverALaterRewrite) {
  load(
      "<uri name=\"http://ex.test/a.xml\" uri=\"http://exact.test/a.xml\"/>\n"
      "<rewriteURI uriStartString=\"http://ex.test/\" rewritePrefix=\"r/\"/>\n");
  EXPECT_EQ(resolve("http://ex.test/a.xml"), "http://exact.test/a.xml");
  EXPECT_EQ(resolve("http://ex.test/b.xml"), "r/b.xml");
}

TEST_F(Catalogs, EarlierSuffixWinsOverALaterRewrite) {
  load(
      "<uriSuffix uriSuffix=\".xml\" uri=\"any.xml\"/>\n"
      "<rewriteURI uriStartString=\"http://ex.test/\" rewritePrefix=\"r/\"/>\n");
  EXPECT_EQ(resolve("http://ex.test/a.xml"), "any.xml");
  EXPECT_EQ(resolve("http://ex.test/a.svg"), "r/a.svg");
}

TEST_F(Catalogs, ResultIsNotPassedThroughTheCatalogAgain) {
  load(
      "<uri name=\"http://a.test/1\" uri=\"http://a.test/2\"/>\n"
      "<uri name=\"http://a.test/2\" uri=\"http://a.test/3\"/>\n");
  EXPECT_EQ(resolve("http://a.test/1"), "http://a.test/2");
  EXPECT_EQ(resolve("http://a.test/2"), "http://a.test/3");
}

TEST_F(Catalogs, PublicEntryDoesNotAffectResolve) {
  load(
      "<public publicId=\"-//EX//DTD A//EN\" uri=\"http://ex.test/a.dtd\"/>\n"
      "<system systemId=\"http://ex.test/s.dtd\" uri=\"http://other.test/s.dtd\"/>\n"
      "<rewriteSystem systemIdStartString=\"http://ex.test/\" rewritePrefix=\"sys/\"/>\n"
      "<systemSuffix systemIdSuffix=\".dtd\" uri=\"suffix.dtd\"/>\n"
      "<delegateURI uriStartString=\"http://ex.test/\" catalog=\"http://cat.test/c.xml\"/>\n");
  EXPECT_EQ(entries().size(), 5u);
  EXPECT_EQ(resolve("-//EX//DTD A//EN"), "-//EX//DTD A//EN");
  EXPECT_EQ(resolve("http://ex.test/s.dtd"), "http://ex.test/s.dtd");
  EXPECT_EQ(resolve("http://ex.test/a.xml"), "http://ex.test/a.xml");
}

TEST_F(Catalogs, PreferChangesNoResult) {
  load(
      "<group prefer=\"public\">\n"
      "  <uri name=\"http://a.test/p\" uri=\"http://b.test/p\"/>\n"
      "</group>\n"
      "<group prefer=\"system\">\n"
      "  <uri name=\"http://a.test/s\" uri=\"http://b.test/s\"/>\n"
      "</group>\n");
  EXPECT_EQ(resolve("http://a.test/p"), "http://b.test/p");
  EXPECT_EQ(resolve("http://a.test/s"), "http://b.test/s");
}

// ---- what loading stores ----

TEST_F(Catalogs, EveryEntryKindIsStoredWithItsKeyAndTarget) {
  load(
      "<public publicId=\"PUB\" uri=\"http://t.test/public\"/>\n"
      "<system systemId=\"SYS\" uri=\"http://t.test/system\"/>\n"
      "<uri name=\"URI\" uri=\"http://t.test/uri\"/>\n"
      "<delegatePublic publicIdStartString=\"DP\" catalog=\"http://t.test/dp.xml\"/>\n"
      "<delegateSystem systemIdStartString=\"DS\" catalog=\"http://t.test/ds.xml\"/>\n"
      "<delegateURI uriStartString=\"DU\" catalog=\"http://t.test/du.xml\"/>\n"
      "<rewriteSystem systemIdStartString=\"RS\" rewritePrefix=\"rs/\"/>\n"
      "<rewriteURI uriStartString=\"RU\" rewritePrefix=\"ru/\"/>\n"
      "<systemSuffix systemIdSuffix=\"SS\" uri=\"ss.dtd\"/>\n"
      "<uriSuffix uriSuffix=\"US\" uri=\"us.xml\"/>\n");
  struct Expected {
    ZQNameEnum kind;
    const char* key;
    const char* target;
  };
  const Expected expected[] = {
      {ZQN_public, "PUB", "http://t.test/public"},
      {ZQN_system, "SYS", "http://t.test/system"},
      {ZQN_uri, "URI", "http://t.test/uri"},
      {ZQN_delegatePublic, "DP", "http://t.test/dp.xml"},
      {ZQN_delegateSystem, "DS", "http://t.test/ds.xml"},
      {ZQN_delegateURI, "DU", "http://t.test/du.xml"},
      {ZQN_rewriteSystem, "RS", "rs/"},
      {ZQN_rewriteURI, "RU", "ru/"},
      {ZQN_systemSuffix, "SS", "ss.dtd"},
      {ZQN_uriSuffix, "US", "us.xml"},
  };
  ASSERT_EQ(entries().size(), std::size(expected));
  for (size_t i = 0; i < std::size(expected); ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(entries()[i].kind, expected[i].kind);
    EXPECT_EQ(utf8(entries()[i].key), expected[i].key);
    EXPECT_EQ(utf8(entries()[i].target), expected[i].target);
  }
}

TEST_F(Catalogs, RelativeTargetsOfTheResolvedKindsFollowTheBase) {
  load(
      "<group xml:base=\"http://base.test/dir/\">\n"
      "<public publicId=\"P\" uri=\"p.dtd\"/>\n"
      "<system systemId=\"S\" uri=\"s.dtd\"/>\n"
      "<delegatePublic publicIdStartString=\"DP\" catalog=\"dp.xml\"/>\n"
      "<delegateSystem systemIdStartString=\"DS\" catalog=\"ds.xml\"/>\n"
      "<delegateURI uriStartString=\"DU\" catalog=\"../du.xml\"/>\n"
      "<rewriteSystem systemIdStartString=\"RS\" rewritePrefix=\"rs/\"/>\n"
      "<systemSuffix systemIdSuffix=\"SS\" uri=\"ss.dtd\"/>\n"
      "<uriSuffix uriSuffix=\"US\" uri=\"us.xml\"/>\n"
      "</group>\n");
  ASSERT_EQ(entries().size(), 8u);
  EXPECT_EQ(utf8(entries()[0].target), "http://base.test/dir/p.dtd");
  EXPECT_EQ(utf8(entries()[1].target), "http://base.test/dir/s.dtd");
  EXPECT_EQ(utf8(entries()[2].target), "http://base.test/dir/dp.xml");
  EXPECT_EQ(utf8(entries()[3].target), "http://base.test/dir/ds.xml");
  EXPECT_EQ(utf8(entries()[4].target), "http://base.test/du.xml");
  EXPECT_EQ(utf8(entries()[5].target), "rs/");
  EXPECT_EQ(utf8(entries()[6].target), "ss.dtd");
  EXPECT_EQ(utf8(entries()[7].target), "us.xml");
}

TEST_F(Catalogs, RewritePrefixIsTakenAsWrittenWhateverXmlBaseSays) {
  load(
      "<group xml:base=\"http://base.test/dir/\">\n"
      "  <rewriteURI uriStartString=\"http://ex.test/\" rewritePrefix=\"rel/\"/>\n"
      "  <rewriteURI xml:base=\"http://own.test/\" uriStartString=\"http://ex2.test/\""
      " rewritePrefix=\"../up/\"/>\n"
      "</group>\n");
  EXPECT_EQ(resolve("http://ex.test/a.xml"), "rel/a.xml");
  EXPECT_EQ(resolve("http://ex2.test/a.xml"), "../up/a.xml");
}

TEST_F(Catalogs, UriTargetUnderXmlBaseComesOutAbsolute) {
  load("<uri xml:base=\"http://base.test/dir/\" name=\"http://ex.test/a\" uri=\"sub/b.xml\"/>\n");
  EXPECT_EQ(resolve("http://ex.test/a"), "http://base.test/dir/sub/b.xml");
}

TEST_F(Catalogs, UriTargetWithoutXmlBaseFollowsTheCatalogFile) {
  load("<uri name=\"http://ex.test/a\" uri=\"b.xml\"/>\n");
  EXPECT_EQ(resolve("http://ex.test/a"), local("b.xml"));
}

TEST_F(Catalogs, UriTargetOfACatalogNamedByFileUriIsAnAbsolutePath) {
  write("by-uri.xml", std::string(kHead) + "<uri name=\"a\" uri=\"sub/b.xml\"/>\n" + kTail);
  catalogs->loadCatalog(ZQUri(S(fileUri("by-uri.xml"))));
  EXPECT_EQ(resolve("a"), local("sub/b.xml"));
}

TEST_F(Catalogs, UriTargetOfAnAbsoluteReferenceStaysAsWritten) {
  load("<uri name=\"a\" uri=\"http://abs.test/x.xml\"/>\n");
  EXPECT_EQ(resolve("a"), "http://abs.test/x.xml");
}

TEST_F(Catalogs, RootXmlBaseIsTheBaseOfItsEntries) {
  write("root.xml",
        "<catalog xmlns=\"urn:oasis:names:tc:entity:xmlns:xml:catalog\""
        " xml:base=\"http://root.test/r/\">\n"
        "<uri name=\"a\" uri=\"a.xml\"/>\n"
        "</catalog>\n");
  catalogs->loadCatalog(ZQUri(S(dir.path + "/root.xml")));
  EXPECT_EQ(resolve("a"), "http://root.test/r/a.xml");
}

TEST_F(Catalogs, GroupBaseAppliesInsideTheGroupOnly) {
  load(
      "<group xml:base=\"http://g.test/\">\n"
      "  <uri name=\"in\" uri=\"in.xml\"/>\n"
      "  <uri xml:base=\"http://own.test/x/\" name=\"own\" uri=\"own.xml\"/>\n"
      "</group>\n"
      "<uri name=\"out\" uri=\"out.xml\"/>\n");
  EXPECT_EQ(resolve("in"), "http://g.test/in.xml");
  EXPECT_EQ(resolve("own"), "http://own.test/x/own.xml");
  EXPECT_EQ(resolve("out"), local("out.xml"));
}

TEST_F(Catalogs, GroupWithEmptyXmlBaseRepeatsTheBaseAbove) {
  write("base.xml",
        "<catalog xmlns=\"urn:oasis:names:tc:entity:xmlns:xml:catalog\""
        " xml:base=\"http://root.test/r/\">\n"
        "<group xml:base=\"\" prefer=\"\"><uri name=\"a\" uri=\"a.xml\"/></group>\n"
        "<group><uri name=\"b\" uri=\"b.xml\"/></group>\n"
        "</catalog>\n");
  catalogs->loadCatalog(ZQUri(S(dir.path + "/base.xml")));
  EXPECT_EQ(resolve("a"), "http://root.test/r/a.xml");
  EXPECT_EQ(resolve("b"), "http://root.test/r/b.xml");
}

TEST_F(Catalogs, GroupInsideAGroupIsNotDescendedIntoAndItsEntriesAreLost) {
  load(
      "<group>\n"
      "  <uri name=\"before\" uri=\"http://t.test/before\"/>\n"
      "  <group>\n"
      "    <uri name=\"inner\" uri=\"http://t.test/inner\"/>\n"
      "    <rewriteURI uriStartString=\"http://in.test/\" rewritePrefix=\"x/\"/>\n"
      "  </group>\n"
      "  <uri name=\"after\" uri=\"http://t.test/after\"/>\n"
      "</group>\n"
      "<uri name=\"top\" uri=\"http://t.test/top\"/>\n");
  EXPECT_EQ(resolve("inner"), "inner");
  EXPECT_EQ(resolve("http://in.test/a"), "http://in.test/a");
  EXPECT_EQ(resolve("before"), "http://t.test/before");
  EXPECT_EQ(resolve("after"), "http://t.test/after");
  EXPECT_EQ(resolve("top"), "http://t.test/top");
  EXPECT_EQ(entries().size(), 3u);
}

TEST_F(Catalogs, SkippedNestedGroupLeavesTheOuterBaseInForce) {
  load(
      "<group xml:base=\"http://outer.test/\">\n"
      "  <group xml:base=\"http://inner.test/\"><uri name=\"i\" uri=\"i.xml\"/></group>\n"
      "  <uri name=\"o\" uri=\"o.xml\"/>\n"
      "</group>\n"
      "<uri name=\"t\" uri=\"t.xml\"/>\n");
  EXPECT_EQ(resolve("o"), "http://outer.test/o.xml");
  EXPECT_EQ(resolve("t"), local("t.xml"));
  EXPECT_EQ(resolve("i"), "i");
}

TEST_F(Catalogs, EntryWithEmptyOrAbsentKeyIsNotStored) {
  load(
      "<uri name=\"\" uri=\"http://t.test/empty\"/>\n"
      "<uri uri=\"http://t.test/absent\"/>\n"
      "<rewriteURI uriStartString=\"\" rewritePrefix=\"all/\"/>\n"
      "<uriSuffix uri=\"x\"/>\n"
      "<public uri=\"http://t.test/p\"/>\n");
  EXPECT_TRUE(entries().empty());
  EXPECT_EQ(resolve(""), "");
  EXPECT_EQ(resolve("http://a.test/"), "http://a.test/");
}

TEST_F(Catalogs, EntryWithAbsentTargetKeepsAnEmptyTarget) {
  load(
      "<rewriteURI uriStartString=\"http://cut.test/\"/>\n"
      "<uriSuffix uriSuffix=\".gone\"/>\n");
  ASSERT_EQ(entries().size(), 2u);
  EXPECT_FALSE(entries()[0].target.isBogus());
  EXPECT_EQ(resolve("http://cut.test/a/b"), "a/b");
  EXPECT_EQ(resolve("x.gone"), "");
}

TEST_F(Catalogs, ChildrenOfForeignElementsAreRead) {
  load(
      "<ext:wrap xmlns:ext=\"http://ext.test/\">\n"
      "  <uri name=\"w\" uri=\"http://t.test/w\"/>\n"
      "  <ext:deeper><uri name=\"d\" uri=\"http://t.test/d\"/></ext:deeper>\n"
      "</ext:wrap>\n"
      "<plain xmlns=\"\"><uri xmlns=\"urn:oasis:names:tc:entity:xmlns:xml:catalog\""
      " name=\"p\" uri=\"http://t.test/p\"/></plain>\n");
  EXPECT_EQ(resolve("w"), "http://t.test/w");
  EXPECT_EQ(resolve("d"), "http://t.test/d");
  EXPECT_EQ(resolve("p"), "http://t.test/p");
}

TEST_F(Catalogs, ElementsInAnotherNamespaceAreNotEntries) {
  load(
      "<uri xmlns=\"http://ext.test/\" name=\"n\" uri=\"http://t.test/n\"/>\n"
      "<c:uri xmlns:c=\"urn:oasis:names:tc:entity:xmlns:xml:catalog\" c:name=\"q\""
      " c:uri=\"http://t.test/q\"/>\n");
  EXPECT_EQ(resolve("n"), "n");
  EXPECT_EQ(resolve("q"), "http://t.test/q");
  EXPECT_EQ(entries().size(), 1u);
}

TEST_F(Catalogs, ChildrenOfEntriesAndUnknownCatalogElementsAreSkipped) {
  load(
      "<system systemId=\"s\" uri=\"http://t.test/s\">\n"
      "  <uri name=\"in-entry\" uri=\"http://t.test/1\"/>\n"
      "</system>\n"
      "<dtddecl publicId=\"x\" uri=\"y\"><uri name=\"in-unknown\" uri=\"http://t.test/2\"/>"
      "</dtddecl>\n"
      "<catalog><uri name=\"in-catalog\" uri=\"http://t.test/3\"/></catalog>\n"
      "<uri name=\"last\" uri=\"http://t.test/4\"/>\n");
  EXPECT_EQ(resolve("in-entry"), "in-entry");
  EXPECT_EQ(resolve("in-unknown"), "in-unknown");
  EXPECT_EQ(resolve("in-catalog"), "in-catalog");
  EXPECT_EQ(resolve("last"), "http://t.test/4");
  EXPECT_EQ(entries().size(), 2u);
}

TEST_F(Catalogs, GroupBelowAForeignElementIsNotDescendedInto) {
  load(
      "<ext:wrap xmlns:ext=\"http://ext.test/\">\n"
      "  <group><uri name=\"g\" uri=\"http://t.test/g\"/></group>\n"
      "</ext:wrap>\n");
  EXPECT_EQ(resolve("g"), "g");
  EXPECT_TRUE(entries().empty());
}

TEST_F(Catalogs, NextCatalogIsNotFollowed) {
  write("next.xml",
        std::string(kHead) + "<uri name=\"from-next\" uri=\"http://t.test/next\"/>\n" + kTail);
  load(
      "<nextCatalog catalog=\"next.xml\"/>\n"
      "<uri name=\"here\" uri=\"http://t.test/here\"/>\n");
  EXPECT_EQ(resolve("from-next"), "from-next");
  EXPECT_EQ(resolve("here"), "http://t.test/here");
  EXPECT_EQ(entries().size(), 1u);
}

TEST_F(Catalogs, RepeatedLoadsAddToTheSameListInOrder) {
  load("<uri name=\"a\" uri=\"http://first.test/a\"/>\n", "one.xml");
  load(
      "<uri name=\"a\" uri=\"http://second.test/a\"/>\n"
      "<uri name=\"b\" uri=\"http://second.test/b\"/>\n",
      "two.xml");
  EXPECT_EQ(entries().size(), 3u);
  EXPECT_EQ(resolve("a"), "http://first.test/a");
  EXPECT_EQ(resolve("b"), "http://second.test/b");
}

TEST_F(Catalogs, ExternalDtdOfTheCatalogIsNotRead) {
  write("dtd.xml",
        "<?xml version=\"1.0\"?>\n"
        "<!DOCTYPE catalog PUBLIC \"-//OASIS//DTD XML Catalogs V1.1//EN\" \"missing.dtd\">\n" +
            std::string(kHead).substr(22) + "<uri name=\"d\" uri=\"http://t.test/d\"/>\n" + kTail);
  EXPECT_NO_THROW(catalogs->loadCatalog(ZQUri(S(dir.path + "/dtd.xml"))));
  EXPECT_EQ(resolve("d"), "http://t.test/d");
}

// ---- failures ----

TEST_F(Catalogs, RootCatalogWithoutNamespaceFailsWithCommonError518) {
  std::string path = write("nons.xml", "<catalog><uri name=\"a\" uri=\"b\"/></catalog>\n");
  ZQUri uri(S(path));
  try {
    catalogs->loadCatalog(uri);
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 518);
    EXPECT_EQ(utf8(e.getRawMessage()),
              "Not an XML Catalog file: " + utf8(uri.getLocalPath()) + ".");
    EXPECT_EQ(utf8(e.getSource()), "ZQCommonNS::ZQXmlCatalogsImpl");
    EXPECT_EQ(e.getLineNumber(), -1);
    EXPECT_EQ(e.getColumnNumber(), -1);
  }
  EXPECT_TRUE(entries().empty());
}

TEST_F(Catalogs, RootOfAnotherNameInTheCatalogNamespaceFails) {
  std::string path =
      write("group.xml", "<group xmlns=\"urn:oasis:names:tc:entity:xmlns:xml:catalog\"></group>\n");
  try {
    catalogs->loadCatalog(ZQUri(S(path)));
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 518);
    EXPECT_EQ(utf8(e.getRawMessage()).rfind("Not an XML Catalog file: ", 0), 0u);
  }
}

TEST_F(Catalogs, NotACatalogFailsEvenWithACallback) {
  Collected collected;
  catalogs->setCallbackError(collect, &collected);
  std::string path = write("html.xml", "<html><body/></html>\n");
  try {
    catalogs->loadCatalog(ZQUri(S(path)));
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 518);
  }
  EXPECT_TRUE(collected.errors.empty());
}

TEST_F(Catalogs, CatalogCanBeLoadedAfterAFailedOne) {
  write("bad.xml", "<catalog/>\n");
  EXPECT_THROW(catalogs->loadCatalog(ZQUri(S(dir.path + "/bad.xml"))), ZQError);
  load("<uri name=\"a\" uri=\"http://t.test/a\"/>\n");
  EXPECT_EQ(resolve("a"), "http://t.test/a");
}

TEST_F(Catalogs, XmlErrorWithoutCallbackIsThrown) {
  write("broken.xml", std::string(kHead) + "<uri name=\"a\" uri=\"http://t.test/a\"/>\n<uri </x>");
  EXPECT_THROW(catalogs->loadCatalog(ZQUri(S(dir.path + "/broken.xml"))), ZQError);
}

TEST_F(Catalogs, XmlErrorGoesToTheCallback) {
  Collected collected;
  catalogs->setCallbackError(collect, &collected);
  // An undefined entity is an error the parse goes on after.
  write("entity.xml", std::string(kHead) +
                          "<uri name=\"a&undefined;\" uri=\"http://t.test/a\"/>\n"
                          "<uri name=\"b\" uri=\"http://t.test/b\"/>\n" +
                          kTail);
  EXPECT_NO_THROW(catalogs->loadCatalog(ZQUri(S(dir.path + "/entity.xml"))));
  ASSERT_FALSE(collected.errors.empty());
  EXPECT_EQ(resolve("b"), "http://t.test/b");
}

TEST_F(Catalogs, CallbackCanBeRemoved) {
  Collected collected;
  catalogs->setCallbackError(collect, &collected);
  catalogs->setCallbackError(nullptr, nullptr);
  write("entity.xml", std::string(kHead) + "<uri name=\"a&undefined;\" uri=\"u\"/>\n" + kTail);
  EXPECT_THROW(catalogs->loadCatalog(ZQUri(S(dir.path + "/entity.xml"))), ZQError);
  EXPECT_TRUE(collected.errors.empty());
}

TEST_F(Catalogs, TruncatedFileUnderACallbackEnds) {
  Collected collected;
  catalogs->setCallbackError(collect, &collected);
  write("cut.xml", std::string(kHead) + "<uri name=\"a\" uri=\"http://t.test/a\"/>\n<system");
  try {
    catalogs->loadCatalog(ZQUri(S(dir.path + "/cut.xml")));
  } catch (const ZQError&) {
    // a fatal code may still end the read; what matters is that it ends
  }
  EXPECT_EQ(resolve("a"), "http://t.test/a");
}

TEST_F(Catalogs, FileThatCannotBeOpenedFailsAsSetInput) {
  ZQUri missing(S(dir.path + "/no-such-catalog.xml"));
  try {
    catalogs->loadCatalog(missing);
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 67);
    EXPECT_EQ(utf8(e.getRawMessage()), "Cannot open file: " + utf8(missing.toString()));
  }
  EXPECT_TRUE(entries().empty());
}

// ---- through ZQUri ----

TEST_F(Catalogs, UriConstructedWithTheCatalogsMapsThroughThem) {
  load(
      "<uri name=\"http://ex.test/doc.xml\" uri=\"http://mirror.test/doc.xml\"/>\n"
      "<rewriteURI uriStartString=\"http://ex.test/\" rewritePrefix=\"http://rw.test/\"/>\n");
  EXPECT_EQ(utf8(ZQUri(u"http://ex.test/doc.xml", catalogs.get()).toString()),
            "http://mirror.test/doc.xml");
  EXPECT_EQ(utf8(ZQUri(u"http://ex.test/a/b.xml", ZQUri::URISTR_URI, catalogs.get()).toString()),
            "http://rw.test/a/b.xml");
  EXPECT_EQ(utf8(ZQUri(u"http://other.test/c.xml", catalogs.get()).toString()),
            "http://other.test/c.xml");
  EXPECT_EQ(utf8(ZQUri(u"http://ex.test/doc.xml").toString()), "http://ex.test/doc.xml");
}

TEST_F(Catalogs, UriWithABaseMapsTheReferenceAsWritten) {
  load("<uri name=\"shared.xml\" uri=\"http://mirror.test/shared.xml\"/>\n");
  ZQUri base(u"http://site.test/dir/page.xml");
  EXPECT_EQ(utf8(ZQUri(base, u"shared.xml", catalogs.get()).toString()),
            "http://mirror.test/shared.xml");
  EXPECT_EQ(utf8(ZQUri(base, u"other.xml", catalogs.get()).toString()),
            "http://site.test/dir/other.xml");
}

TEST_F(Catalogs, MappedUriOpensTheLocalCopy) {
  write("local.xml", "<doc>local copy</doc>");
  load("<rewriteURI uriStartString=\"http://unreachable.invalid/docs/\" rewritePrefix=\"" +
       fileUri("") + "\"/>\n");
  ZQUri uri(u"http://unreachable.invalid/docs/local.xml", catalogs.get());
  EXPECT_EQ(utf8(uri.toString()), fileUri("local.xml"));
  std::unique_ptr<std::istream> in(uri.getIStream(nullptr, nullptr));
  ASSERT_NE(in, nullptr);
  std::ostringstream bytes;
  bytes << in->rdbuf();
  EXPECT_EQ(bytes.str(), "<doc>local copy</doc>");
}

TEST_F(Catalogs, ResolveFromSeveralThreadsAfterLoading) {
  load(
      "<uri name=\"a\" uri=\"http://t.test/a\"/>\n"
      "<rewriteURI uriStartString=\"http://r.test/\" rewritePrefix=\"http://w.test/\"/>\n");
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 2000; ++i) {
        if (catalogs->resolveURI(u"a") != UnicodeString(u"http://t.test/a")) ++wrong;
        if (catalogs->resolveURI(u"http://r.test/x") != UnicodeString(u"http://w.test/x")) ++wrong;
      }
    });
  }
  for (std::thread& t : threads) t.join();
  EXPECT_EQ(wrong.load(), 0);
}

// ---- the identity base ----

TEST(XmlCatalogsBase, IdentityMapsEveryUriToItselfAndLoadsNothing) {
  ZQPtr<ZQXmlCatalogs> identity(new ZQXmlCatalogs());
  identity->setCallbackError(collect, nullptr);
  identity->loadCatalog(ZQUri(u"/no/such/catalog.xml"));
  EXPECT_EQ(utf8(identity->resolveURI(u"http://a.test/x")), "http://a.test/x");
  EXPECT_EQ(utf8(ZQUri(u"http://a.test/x", identity.get()).toString()), "http://a.test/x");
}

}  // namespace
