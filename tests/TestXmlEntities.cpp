#include <gtest/gtest.h>

#include "TestSupport.h"
#include "XmlParserTestSupport.h"

#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "common/ZQName.h"
#include "xml/ZQXmlEntities.h"
#include "xml/ZQXmlParserImpl.h"

using namespace ZQCommonNS;
using zqtest::u;
using zqtest::utf8;

namespace {

// The state parser with the real entity operations opened up.
class EntityParser : public zqtest::StateParser {
 public:
  using ZQXmlParserImpl::addEntitySet;
  using ZQXmlParserImpl::addHtmlEntities;
  using ZQXmlParserImpl::addXhtmlEntities;
  using ZQXmlParserImpl::lookupEntity;
  void addMathMLEntities() override { ZQXmlParserImpl::addMathMLEntities(); }
  ZQXmlEntityMaps& maps() { return m_entities; }
  ZQName htmlAdded() const { return m_htmlEntitiesAdded; }
  bool xhtmlAdded() const { return m_xhtmlEntitiesAdded; }
};

typedef std::map<std::string, std::u32string> NameValues;

std::u32string codePoints(const UnicodeString& s) {
  std::u32string out;
  for (int32_t i = 0; i < s.length(); i = s.moveIndex32(i, 1)) out += char32_t(s.char32At(i));
  return out;
}

NameValues toMap(const ZQXmlEntityList& list) {
  NameValues out;
  for (const auto& row : list) {
    if (row.first.isEmpty()) continue;
    out[utf8(row.first)] = codePoints(row.second);
  }
  return out;
}

// Runs python3 with a program that prints "name<TAB>hex hex..." lines, one per entity.
bool readPython(const char* program, NameValues& out) {
  std::string command = std::string("python3 -c '") + program + "'";
  FILE* pipe = popen(command.c_str(), "r");
  if (!pipe) return false;
  std::string text;
  char buffer[4096];
  size_t n;
  while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0) text.append(buffer, n);
  if (pclose(pipe) != 0) return false;
  std::istringstream lines(text);
  std::string line;
  while (std::getline(lines, line)) {
    size_t tab = line.find('\t');
    if (tab == std::string::npos) return false;
    std::u32string value;
    std::istringstream points(line.substr(tab + 1));
    std::string hex;
    while (points >> hex) value += char32_t(std::stoul(hex, nullptr, 16));
    out[line.substr(0, tab)] = value;
  }
  return true;
}

// The HTML names that the MathML definitions lack: upper-case forms, Greek capitals that
// look Latin, and a few HTML 4 additions.
const char* const kHtmlOnly[] = {
    "AMP",     "COPY",   "GT",       "LT",     "QUOT",    "REG",     "TRADE", "Alpha",
    "Beta",    "Chi",    "Epsilon",  "Eta",    "Iota",    "Kappa",   "Mu",    "Nu",
    "Omicron", "Rho",    "Tau",      "Zeta",   "alefsym", "bdquo",   "crarr", "epsilon",
    "euro",    "frasl",  "lrm",      "lsaquo", "oline",   "omicron", "rlm",   "rsaquo",
    "sbquo",   "sigmaf", "thetasym", "upsih",  "zwj",     "zwnj",
};

size_t twoPointRows(ZQXmlEntitySets::SetKind set) {
  size_t count = 0;
  const ZQXmlEntityRow* rows = ZQXmlEntitySets::getRows(set, count);
  size_t two = 0;
  for (size_t i = 0; i < count; ++i)
    if (rows[i].second != 0) ++two;
  return two;
}

}  // namespace

TEST(XmlEntities, RowCountsOfTheThreeSets) {
  size_t count = 0;
  const ZQXmlEntityRow* rows = ZQXmlEntitySets::getRows(ZQXmlEntitySets::SET_MATHML, count);
  ASSERT_NE(rows, nullptr);
  // 2087 named rows and the empty row that ends the list.
  ASSERT_EQ(count, 2088u);
  EXPECT_STREQ(rows[count - 1].name, "");
  EXPECT_EQ(rows[count - 1].first, 0);
  EXPECT_EQ(rows[count - 1].second, 0);
  for (size_t i = 0; i + 1 < count; ++i) EXPECT_STRNE(rows[i].name, "") << i;

  ASSERT_NE(ZQXmlEntitySets::getRows(ZQXmlEntitySets::SET_HTML, count), nullptr);
  EXPECT_EQ(count, 2125u);
  ASSERT_NE(ZQXmlEntitySets::getRows(ZQXmlEntitySets::SET_XHTML, count), nullptr);
  EXPECT_EQ(count, 253u);

  EXPECT_EQ(ZQXmlEntitySets::getList(ZQXmlEntitySets::SET_MATHML).size(), 2088u);
  EXPECT_EQ(toMap(ZQXmlEntitySets::getList(ZQXmlEntitySets::SET_MATHML)).size(), 2087u);
  EXPECT_EQ(ZQXmlEntitySets::getList(ZQXmlEntitySets::SET_HTML).size(), 2125u);
  EXPECT_EQ(ZQXmlEntitySets::getList(ZQXmlEntitySets::SET_XHTML).size(), 253u);
}

TEST(XmlEntities, NinetyThreeRowsHaveTwoCodePoints) {
  EXPECT_EQ(twoPointRows(ZQXmlEntitySets::SET_MATHML), 93u);
  EXPECT_EQ(twoPointRows(ZQXmlEntitySets::SET_HTML), 93u);
  EXPECT_EQ(twoPointRows(ZQXmlEntitySets::SET_XHTML), 0u);
  size_t lists = 0;
  for (const auto& row : ZQXmlEntitySets::getList(ZQXmlEntitySets::SET_MATHML))
    if (row.second.countChar32() == 2) ++lists;
  EXPECT_EQ(lists, 93u);
  NameValues mathml = toMap(ZQXmlEntitySets::getList(ZQXmlEntitySets::SET_MATHML));
  EXPECT_EQ(mathml["NotEqualTilde"], std::u32string(U"\u2242\u0338"));
  EXPECT_EQ(mathml["nvlt"], std::u32string(U"<\u20D2"));
  EXPECT_EQ(mathml["alpha"], std::u32string(U"\u03B1"));
}

TEST(XmlEntities, HtmlAndXhtmlSetsMatchPythonHtmlEntities) {
  NameValues html, xhtml;
  ASSERT_TRUE(
      readPython("import html.entities as h\n"
                 "for k, v in h.html5.items():\n"
                 "  if k.endswith(\";\"): print(k[:-1] + chr(9) + "
                 "\" \".join(\"%x\" % ord(c) for c in v))",
                 html));
  ASSERT_TRUE(
      readPython("import html.entities as h\n"
                 "for k, v in h.name2codepoint.items(): print(k + chr(9) + \"%x\" % v)",
                 xhtml));
  ASSERT_EQ(html.size(), 2125u);
  ASSERT_EQ(xhtml.size(), 252u);
  xhtml["apos"] = U"'";
  EXPECT_EQ(toMap(ZQXmlEntitySets::getList(ZQXmlEntitySets::SET_HTML)), html);
  EXPECT_EQ(toMap(ZQXmlEntitySets::getList(ZQXmlEntitySets::SET_XHTML)), xhtml);
}

TEST(XmlEntities, MathmlIsHtmlLessThirtyEightNames) {
  NameValues html = toMap(ZQXmlEntitySets::getList(ZQXmlEntitySets::SET_HTML));
  std::set<std::string> htmlOnly(std::begin(kHtmlOnly), std::end(kHtmlOnly));
  ASSERT_EQ(htmlOnly.size(), 38u);
  for (const auto& name : htmlOnly) {
    EXPECT_EQ(html.count(name), 1u) << name;
    html.erase(name);
  }
  EXPECT_EQ(toMap(ZQXmlEntitySets::getList(ZQXmlEntitySets::SET_MATHML)), html);
}

TEST(XmlEntities, ListsAreBuiltOnce) {
  const ZQXmlEntityList& first = ZQXmlEntitySets::getList(ZQXmlEntitySets::SET_HTML);
  EXPECT_EQ(&first, &ZQXmlEntitySets::getList(ZQXmlEntitySets::SET_HTML));
  EXPECT_NE(&first, &ZQXmlEntitySets::getList(ZQXmlEntitySets::SET_XHTML));
  EXPECT_EQ(&ZQXmlEntitySets::getList(ZQXmlEntitySets::SET_MATHML),
            &ZQXmlEntitySets::getList(ZQXmlEntitySets::SET_MATHML));
}

TEST(XmlEntities, UnknownSetIsEmpty) {
  size_t count = 7;
  EXPECT_EQ(ZQXmlEntitySets::getRows(3, count), nullptr);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(ZQXmlEntitySets::getRows(-1, count), nullptr);
  EXPECT_TRUE(ZQXmlEntitySets::getList(3).empty());
  EXPECT_TRUE(ZQXmlEntitySets::getList(-1).empty());
}

TEST(XmlEntities, ListsFromManyThreadsAreTheSameObjects) {
  constexpr int kThreads = 8;
  std::vector<const ZQXmlEntityList*> seen(kThreads * 3);
  std::vector<size_t> added(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &seen, &added] {
      for (int s = 0; s < 3; ++s) {
        int set = (s + t) % 3;
        seen[t * 3 + set] = &ZQXmlEntitySets::getList(set);
      }
      EntityParser parser;
      parser.reset();
      parser.addHtmlEntities();
      added[t] = parser.entities().generalEntities.size();
    });
  }
  for (auto& thread : threads) thread.join();
  for (int t = 0; t < kThreads; ++t) {
    for (int set = 0; set < 3; ++set)
      EXPECT_EQ(seen[t * 3 + set], &ZQXmlEntitySets::getList(set)) << t << " " << set;
    // The five predefined names are among the 2125.
    EXPECT_EQ(added[t], 2125u) << t;
  }
}

TEST(XmlEntities, FirstBuildFromManyThreadsGivesOneListPerSet) {
  // A fresh process of this test binary, where no list has been built yet, so the threads
  // race for the first build.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        constexpr int kThreads = 6;
        std::vector<const ZQXmlEntityList*> seen(kThreads);
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t)
          threads.emplace_back([t, &seen] { seen[t] = &ZQXmlEntitySets::getList(t % 3); });
        for (auto& thread : threads) thread.join();
        bool same = true;
        for (int t = 0; t < kThreads; ++t)
          same = same && seen[t] == &ZQXmlEntitySets::getList(t % 3);
        bool sizes = ZQXmlEntitySets::getList(0).size() == 2088u &&
                     ZQXmlEntitySets::getList(1).size() == 2125u &&
                     ZQXmlEntitySets::getList(2).size() == 253u;
        std::exit(same && sizes ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

TEST(XmlEntities, CompiledTablesMatchTheDataFiles) {
  std::string command =
      std::string("python3 '") + ZQ_SOURCE_DIR + "/tools/gen_entities/gen_entities.py' check 2>&1";
  FILE* pipe = popen(command.c_str(), "r");
  ASSERT_NE(pipe, nullptr);
  std::string text;
  char buffer[512];
  size_t n;
  while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0) text.append(buffer, n);
  EXPECT_EQ(pclose(pipe), 0) << text;
}

TEST(XmlEntities, MathmlSetIsAddedOnceAndMarked) {
  EntityParser parser;
  parser.reset();
  EXPECT_FALSE(parser.entities().mathmlEntitiesAdded);
  parser.addMathMLEntities();
  EXPECT_TRUE(parser.entities().mathmlEntitiesAdded);
  // The five predefined names are among the 2087.
  EXPECT_EQ(parser.entities().generalEntities.size(), 2087u);
  EXPECT_EQ(utf8(parser.lookupEntity(ZQName(u("eacute")), false)), "\xC3\xA9");
  EXPECT_TRUE(parser.lookupEntity(ZQName(u("AMP")), false).isBogus());

  parser.maps().generalEntities.erase(ZQName(u("eacute")));
  parser.addMathMLEntities();
  EXPECT_TRUE(parser.lookupEntity(ZQName(u("eacute")), false).isBogus());

  parser.reset();
  EXPECT_FALSE(parser.entities().mathmlEntitiesAdded);
  EXPECT_EQ(parser.entities().generalEntities.size(), 5u);
}

TEST(XmlEntities, HtmlAndXhtmlSetsAreAddedOncePerDocument) {
  EntityParser parser;
  parser.reset();
  EXPECT_TRUE(parser.htmlAdded().isEmpty());
  parser.addHtmlEntities();
  EXPECT_EQ(parser.htmlAdded(), ZQName(ZQN_html));
  EXPECT_EQ(parser.entities().generalEntities.size(), 2125u);
  parser.maps().generalEntities.erase(ZQName(u("Alpha")));
  parser.addHtmlEntities();
  EXPECT_TRUE(parser.lookupEntity(ZQName(u("Alpha")), false).isBogus());

  parser.reset();
  EXPECT_TRUE(parser.htmlAdded().isEmpty());
  EXPECT_FALSE(parser.xhtmlAdded());
  parser.addXhtmlEntities();
  EXPECT_TRUE(parser.xhtmlAdded());
  // 253 names, five of them the predefined ones.
  EXPECT_EQ(parser.entities().generalEntities.size(), 253u);
  EXPECT_EQ(utf8(parser.lookupEntity(ZQName(u("nbsp")), false)), "\xC2\xA0");
  EXPECT_TRUE(parser.lookupEntity(ZQName(u("NotEqualTilde")), false).isBogus());
  parser.maps().generalEntities.erase(ZQName(u("nbsp")));
  parser.addXhtmlEntities();
  EXPECT_TRUE(parser.lookupEntity(ZQName(u("nbsp")), false).isBogus());
}

TEST(XmlEntities, DocumentDeclarationsWinOverBuiltInSets) {
  EntityParser parser;
  parser.reset();
  parser.defineEntityReplacementText(ZQName(u("nbsp")), u("mine"));
  parser.maps().externalGeneralEntities[ZQName(u("copy"))] = u("copy.ent");
  parser.addXhtmlEntities();
  EXPECT_EQ(utf8(parser.lookupEntity(ZQName(u("nbsp")), false)), "mine");
  EXPECT_EQ(parser.entities().generalEntities.count(ZQName(u("copy"))), 0u);
  EXPECT_EQ(utf8(parser.lookupEntity(ZQName(u("copy")), false)), "copy.ent");
  // The predefined values keep their character references.
  EXPECT_EQ(utf8(parser.lookupEntity(ZQName(u("lt")), false)), "&#60;");
  EXPECT_EQ(utf8(parser.lookupEntity(ZQName(u("amp")), false)), "&#38;");
  EXPECT_EQ(utf8(parser.lookupEntity(ZQName(u("gt")), false)), ">");
  EXPECT_EQ(utf8(parser.lookupEntity(ZQName(u("eacute")), false)), "\xC3\xA9");
}

TEST(XmlEntities, AddEntitySetSkipsEmptyNames) {
  EntityParser parser;
  parser.reset();
  ZQXmlEntityList list;
  list.emplace_back(UnicodeString(), u("nothing"));
  list.emplace_back(u("zqOwnEntity"), u("own"));
  parser.addEntitySet(list);
  EXPECT_EQ(parser.entities().generalEntities.size(), 6u);
  EXPECT_EQ(utf8(parser.lookupEntity(ZQName(u("zqOwnEntity")), false)), "own");
}

TEST(XmlEntities, MathmlSetHoldsOnlyBetweenSaveAndRecover) {
  EntityParser parser;
  parser.reset();
  const void* saved = parser.saveEntityMaps();
  parser.addMathMLEntities();
  EXPECT_FALSE(parser.lookupEntity(ZQName(u("eacute")), false).isBogus());
  parser.recoverEntityMaps(saved);
  EXPECT_EQ(saved, nullptr);
  EXPECT_FALSE(parser.entities().mathmlEntitiesAdded);
  EXPECT_TRUE(parser.lookupEntity(ZQName(u("eacute")), false).isBogus());
}

TEST(XmlEntities, LookupFindsInternalThenExternal) {
  EntityParser parser;
  parser.reset();
  ZQName name(u("zqBoth"));
  parser.maps().externalGeneralEntities[name] = u("both.ent");
  EXPECT_EQ(utf8(parser.lookupEntity(name, false)), "both.ent");
  parser.maps().generalEntities[name] = u("inside");
  EXPECT_EQ(utf8(parser.lookupEntity(name, false)), "inside");
  // The parameter tables are apart from the general ones.
  EXPECT_TRUE(parser.lookupEntity(name, true).isBogus());
  parser.maps().externalParameterEntities[name] = u("param.ent");
  EXPECT_EQ(utf8(parser.lookupEntity(name, true)), "param.ent");
  parser.maps().parameterEntities[name] = u("param");
  EXPECT_EQ(utf8(parser.lookupEntity(name, true)), "param");
}

TEST(XmlEntities, UndefinedEntityIsBogusOrEmptyWhenIgnored) {
  EntityParser parser;
  parser.reset();
  ZQName name(u("zqNoSuchEntity"));
  EXPECT_TRUE(parser.lookupEntity(name, false).isBogus());
  EXPECT_TRUE(parser.lookupEntity(name, true).isBogus());
  parser.setFeature(ZQXmlParser::FEATURE_IGNORE_UNDEFINED_ENTITIES, true);
  UnicodeString general = parser.lookupEntity(name, false);
  UnicodeString parameter = parser.lookupEntity(name, true);
  EXPECT_FALSE(general.isBogus());
  EXPECT_TRUE(general.isEmpty());
  EXPECT_FALSE(parameter.isBogus());
  EXPECT_TRUE(parameter.isEmpty());
}

TEST(XmlEntities, EntityRefTextComesFromTheAddedSet) {
  EntityParser parser;
  parser.reset();
  parser.setEntityRef(ZQName(u("hearts")));
  EXPECT_TRUE(parser.getText().isBogus());
  parser.addHtmlEntities();
  parser.setEntityRef(ZQName(u("hearts")));
  EXPECT_EQ(codePoints(parser.getText()), std::u32string(U"\u2665"));
}
