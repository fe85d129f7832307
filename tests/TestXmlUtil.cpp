#include <gtest/gtest.h>

#include "TestSupport.h"
#include "XmlParserTestSupport.h"

#include <sstream>
#include <string>

#include "common/ZQXmlUtil.h"
#include "xml/ZQXmlUtilInternal.h"

using namespace ZQCommonNS;
using zqtest::u;
using zqtest::utf8;

namespace {

UnicodeString u16(const char16_t* text) { return UnicodeString(text); }

// ---- qualified names ----

TEST(XmlUtilNames, MakeQNameInternsPrefixColonLocal) {
  ZQName qname = ZQXmlUtil::makeQName(ZQN_svg, ZQN_text);
  EXPECT_EQ(qname.toString(), u("svg:text"));
  EXPECT_EQ(qname, ZQName(u("svg:text")));
  EXPECT_EQ(ZQXmlUtil::makeQName(ZQName(), ZQN_text), ZQN_text);
}

TEST(XmlUtilNames, MakeQNameStrNeedsANonEmptyPrefix) {
  EXPECT_EQ(ZQXmlUtil::makeQNameStr(u("p"), u("a")), u("p:a"));
  EXPECT_EQ(ZQXmlUtil::makeQNameStr(UnicodeString(), u("a")), u("a"));
  EXPECT_EQ(ZQXmlUtil::makeQNameStr(u("p"), UnicodeString()), u("p:"));
}

TEST(XmlUtilNames, MakeNSQNameStrOfAnyOtherNamespaceUsesBracesAndAColon) {
  EXPECT_EQ(ZQXmlUtil::makeNSQNameStr(u("u"), u("a")), u("{u}:a"));
  EXPECT_EQ(ZQXmlUtil::makeNSQNameStr(u("http://www.w3.org/2000/svg"), u("rect")),
            u("{http://www.w3.org/2000/svg}:rect"));
}

TEST(XmlUtilNames, MakeNSQNameStrWithoutNamespaceIsTheLocalName) {
  EXPECT_EQ(ZQXmlUtil::makeNSQNameStr(UnicodeString(), u("a")), u("a"));
}

TEST(XmlUtilNames, MakeNSQNameStrOfTheXmlNamespace) {
  EXPECT_EQ(ZQXmlUtil::makeNSQNameStr(u("http://www.w3.org/XML/1998/namespace"), u("lang")),
            u("xml:lang"));
}

TEST(XmlUtilNames, MakeNSQNameStrOfTheXmlnsNamespace) {
  const UnicodeString xmlns = u("http://www.w3.org/2000/xmlns/");
  EXPECT_EQ(ZQXmlUtil::makeNSQNameStr(xmlns, u("xmlns")), u("xmlns"));
  EXPECT_EQ(ZQXmlUtil::makeNSQNameStr(xmlns, u("svg")), u("xmlns:svg"));
}

TEST(XmlUtilNames, NameWithoutColonHasNoPrefixAndIsItsOwnLocalPart) {
  EXPECT_TRUE(ZQXmlUtil::getPrefixFromQNameStr(u("a")).isEmpty());
  EXPECT_FALSE(ZQXmlUtil::getPrefixFromQNameStr(u("a")).isBogus());
  EXPECT_EQ(ZQXmlUtil::getLocalPartFromQNameStr(u("a")), u("a"));
  EXPECT_EQ(ZQXmlUtil::getPrefixFromQName(ZQN_svg), ZQName());
  EXPECT_EQ(ZQXmlUtil::getLocalPartFromQName(ZQN_svg), ZQN_svg);
}

TEST(XmlUtilNames, SplitAtTheFirstColon) {
  EXPECT_EQ(ZQXmlUtil::getPrefixFromQNameStr(u("p:a:b")), u("p"));
  EXPECT_EQ(ZQXmlUtil::getLocalPartFromQNameStr(u("p:a:b")), u("a:b"));
  ZQName qname(u("svg:text"));
  EXPECT_EQ(ZQXmlUtil::getPrefixFromQName(qname), ZQN_svg);
  EXPECT_EQ(ZQXmlUtil::getLocalPartFromQName(qname), ZQN_text);
}

TEST(XmlUtilNames, ALeadingColonIsNoPrefixButCutsTheLocalPart) {
  EXPECT_TRUE(ZQXmlUtil::getPrefixFromQNameStr(u(":a")).isEmpty());
  EXPECT_EQ(ZQXmlUtil::getLocalPartFromQNameStr(u(":a")), u("a"));
  ZQName qname(u(":a"));
  EXPECT_EQ(ZQXmlUtil::getPrefixFromQName(qname), ZQName());
  EXPECT_EQ(ZQXmlUtil::getLocalPartFromQName(qname).toString(), u("a"));
}

TEST(XmlUtilNames, ATrailingColonLeavesAnEmptyLocalPart) {
  EXPECT_EQ(ZQXmlUtil::getPrefixFromQNameStr(u("p:")), u("p"));
  EXPECT_TRUE(ZQXmlUtil::getLocalPartFromQNameStr(u("p:")).isEmpty());
  EXPECT_EQ(ZQXmlUtil::getLocalPartFromQName(ZQName(u("svg:"))), ZQName());
}

TEST(XmlUtilNames, EmptyNames) {
  EXPECT_EQ(ZQXmlUtil::getPrefixFromQName(ZQName()), ZQName());
  EXPECT_EQ(ZQXmlUtil::getLocalPartFromQName(ZQName()), ZQName());
  EXPECT_TRUE(ZQXmlUtil::getPrefixFromQNameStr(UnicodeString()).isEmpty());
  EXPECT_TRUE(ZQXmlUtil::getLocalPartFromQNameStr(UnicodeString()).isEmpty());
}

// ---- escaping of user-defined keys ----

TEST(XmlUtilEscape, NameCharactersStay) {
  EXPECT_EQ(ZQXmlUtil::escapeXmpUserDefinedKey(u("Author_2.name-x")), u("Author_2.name-x"));
  EXPECT_EQ(ZQXmlUtil::escapeXmpUserDefinedKey(u16(u"\u00E9t\u00E9")), u16(u"\u00E9t\u00E9"));
  EXPECT_TRUE(ZQXmlUtil::escapeXmpUserDefinedKey(UnicodeString()).isEmpty());
}

TEST(XmlUtilEscape, ColonBecomesMarkAndHex) {
  EXPECT_EQ(ZQXmlUtil::escapeXmpUserDefinedKey(u("a:b")), u16(u"a\u2182003Ab"));
  EXPECT_EQ(ZQXmlUtil::escapeXmpUserDefinedKey(u(":")), u16(u"\u2182003A"));
}

TEST(XmlUtilEscape, TheMarkItselfIsAlwaysEscaped) {
  // U+2182 is a name start character, yet it must be escaped for the mapping to reverse.
  EXPECT_EQ(ZQXmlUtil::escapeXmpUserDefinedKey(u16(u"\u2182")), u16(u"\u21822182"));
  EXPECT_EQ(ZQXmlUtil::escapeXmpUserDefinedKey(u16(u"a\u2182")), u16(u"a\u21822182"));
}

TEST(XmlUtilEscape, FirstPositionNeedsANameStartCharacter) {
  EXPECT_EQ(ZQXmlUtil::escapeXmpUserDefinedKey(u("1a1")), u16(u"\u21820031a1"));
  EXPECT_EQ(ZQXmlUtil::escapeXmpUserDefinedKey(u("-a-")), u16(u"\u2182002Da-"));
  EXPECT_EQ(ZQXmlUtil::escapeXmpUserDefinedKey(u(".")), u16(u"\u2182002E"));
  EXPECT_EQ(ZQXmlUtil::escapeXmpUserDefinedKey(u16(u"\u00B7\u00B7")), u16(u"\u218200B7\u00B7"));
}

TEST(XmlUtilEscape, OtherCharactersUseUpperCaseHexInFourDigits) {
  EXPECT_EQ(ZQXmlUtil::escapeXmpUserDefinedKey(u("a b")), u16(u"a\u21820020b"));
  EXPECT_EQ(ZQXmlUtil::escapeXmpUserDefinedKey(u("a\x7f")), u16(u"a\u2182007F"));
  EXPECT_EQ(ZQXmlUtil::escapeXmpUserDefinedKey(u16(u"x\u00D7y")), u16(u"x\u218200D7y"));
}

TEST(XmlUtilEscape, ASupplementaryCharacterTakesTwoGroups) {
  // U+F0000 is no name character; U+10000 is one, even in first place.
  EXPECT_EQ(ZQXmlUtil::escapeXmpUserDefinedKey(u16(u"a\U000F0000")), u16(u"a\u2182DB80\u2182DC00"));
  EXPECT_EQ(ZQXmlUtil::escapeXmpUserDefinedKey(u16(u"\U00010000")), u16(u"\U00010000"));
}

TEST(XmlUtilEscape, AnUnpairedSurrogateTakesOneGroup) {
  UnicodeString key(u"a");
  key.append(static_cast<char16_t>(0xD800)).append(u'b');
  EXPECT_EQ(ZQXmlUtil::escapeXmpUserDefinedKey(key), u16(u"a\u2182D800b"));
}

// ---- root sniffing ----

// The last parser made, kept alive so that a test can look at it after a sniff dropped it.
ZQPtr<zqtest::StateParser> lastMade;
int parsersMade = 0;

ZQPtr<ZQXmlParser> makeStateParser() {
  ++parsersMade;
  lastMade = new zqtest::StateParser();
  return ZQPtr<ZQXmlParser>(lastMade.get());
}

class XmlUtilRoot : public ::testing::Test {
 protected:
  void SetUp() override {
    lastMade = nullptr;
    parsersMade = 0;
  }
  void TearDown() override { lastMade = nullptr; }
};

const char* const SVG = "http://www.w3.org/2000/svg";

TEST_F(XmlUtilRoot, FirstStartTagWithoutId) {
  std::istringstream in(std::string("TEXT\nTEXT\nSTART svg ") + SVG + "\nSTART rect " + SVG);
  ZQPtr<ZQXmlParser> parser =
      xmlutil::getRootParser(makeStateParser, in, nullptr, UnicodeString(), UnicodeString());
  ASSERT_NE(parser, nullptr);
  EXPECT_EQ(parser->getEventType(), ZQXmlParser::START_TAG);
  EXPECT_EQ(parser->getName(), ZQN_svg);
  EXPECT_EQ(parser->getNamespace(), ZQN_NS_SVG);
  EXPECT_EQ(lastMade->nextCalls, 3);
}

TEST_F(XmlUtilRoot, SniffSwitchesOnTheTolerantFeatures) {
  std::istringstream in("START a -");
  ZQPtr<ZQXmlParser> parser =
      xmlutil::getRootParser(makeStateParser, in, nullptr, UnicodeString(), UnicodeString());
  ASSERT_NE(parser, nullptr);
  for (int f = 0; f < ZQXmlParser::FEATURE_COUNT; ++f) {
    ZQXmlParser::Feature feature = static_cast<ZQXmlParser::Feature>(f);
    bool expected = feature == ZQXmlParser::FEATURE_SKIP_EXTERNAL_DTD ||
                    feature == ZQXmlParser::FEATURE_IGNORE_UNDEFINED_ENTITIES ||
                    feature == ZQXmlParser::FEATURE_ALLOW_UNDECLARED_PREFIX ||
                    feature == ZQXmlParser::FEATURE_ALLOW_UNKNOWN_ENCODING ||
                    feature == ZQXmlParser::FEATURE_FORBID_EXTERNAL_ENTITIES;
    EXPECT_EQ(parser->getFeature(feature), expected) << utf8(ZQXmlParser::getFeatureName(f));
  }
}

TEST_F(XmlUtilRoot, StreamFormPassesTheStreamTypeAndNoEncodingOrBase) {
  std::istringstream in("START html -");
  ZQUri::ContentInfo info;
  info.contentType = u("Text/HTML");
  info.contentLanguage = u("de");
  ZQPtr<ZQXmlParser> parser =
      xmlutil::getRootParser(makeStateParser, in, &info, u(".HTM"), UnicodeString());
  ASSERT_NE(parser, nullptr);
  EXPECT_EQ(lastMade->streamMediaType(), u("text/html"));
  EXPECT_EQ(lastMade->streamExtension(), u(".htm"));
  EXPECT_EQ(parser->getLanguage(), u("de"));
  EXPECT_TRUE(lastMade->lastEncoding.isEmpty());
  EXPECT_TRUE(lastMade->lastBase.isEmpty());
}

TEST_F(XmlUtilRoot, IdSelectsTheElementAndAttributesAreTriedLastToFirst) {
  std::istringstream in(
      "START a - id - x\n"
      "START b - id - y class - y\n"
      "START c - id - y\n");
  ZQPtr<ZQXmlParser> parser =
      xmlutil::getRootParser(makeStateParser, in, nullptr, UnicodeString(), u("y"));
  ASSERT_NE(parser, nullptr);
  EXPECT_EQ(parser->getName().toString(), u("b"));
}

TEST_F(XmlUtilRoot, IdOfAnyNamespaceMatchesButOnlyByLocalName) {
  std::istringstream in(
      "START a - xid - k\n"
      "START b - id http://example.org/ns k\n");
  ZQPtr<ZQXmlParser> parser =
      xmlutil::getRootParser(makeStateParser, in, nullptr, UnicodeString(), u("k"));
  ASSERT_NE(parser, nullptr);
  EXPECT_EQ(parser->getName().toString(), u("b"));
}

TEST_F(XmlUtilRoot, UnmatchedIdReadsToTheEndAndGivesNull) {
  std::istringstream in("START a - id - x\nTEXT\nSTART b - id - z\n");
  ZQPtr<ZQXmlParser> parser =
      xmlutil::getRootParser(makeStateParser, in, nullptr, UnicodeString(), u("y"));
  EXPECT_EQ(parser, nullptr);
  ASSERT_NE(lastMade, nullptr);
  EXPECT_EQ(lastMade->nextCalls, 4);  // three events and the end of the document
}

TEST_F(XmlUtilRoot, EmptyDocumentGivesNullAndNoName) {
  std::istringstream in("");
  ZQName local = ZQN_svg;
  ZQName ns =
      xmlutil::getRootName(makeStateParser, local, in, nullptr, UnicodeString(), UnicodeString());
  EXPECT_EQ(ns, ZQName());
  EXPECT_EQ(local, ZQName());
}

TEST_F(XmlUtilRoot, RootNameGivesLocalNameAndNamespace) {
  std::istringstream in(std::string("START svg ") + SVG);
  ZQName local;
  ZQName ns =
      xmlutil::getRootName(makeStateParser, local, in, nullptr, UnicodeString(), UnicodeString());
  EXPECT_EQ(ns, ZQN_NS_SVG);
  EXPECT_EQ(local, ZQN_svg);
}

TEST_F(XmlUtilRoot, TextFormReturnsNullAtOnceForAnEmptyText) {
  ZQName local = ZQN_svg;
  EXPECT_EQ(xmlutil::getRootParser(makeStateParser, UnicodeString(), UnicodeString()), nullptr);
  EXPECT_EQ(xmlutil::getRootName(makeStateParser, local, UnicodeString(), UnicodeString()),
            ZQName());
  EXPECT_EQ(local, ZQName());
  EXPECT_EQ(parsersMade, 0);
}

TEST_F(XmlUtilRoot, TextFormOpensTheUriWithNoEncodingOrBase) {
  // The scripted parser reads nothing from a URI, so the sniff ends at the document's end.
  EXPECT_EQ(xmlutil::getRootParser(makeStateParser, u("doc.xml"), UnicodeString()), nullptr);
  ASSERT_NE(lastMade, nullptr);
  ASSERT_EQ(lastMade->setInputCalls.size(), 1u);
  EXPECT_EQ(lastMade->setInputCalls[0], u("doc.xml"));
  EXPECT_TRUE(lastMade->lastEncoding.isEmpty());
  EXPECT_TRUE(lastMade->lastBase.isEmpty());
  EXPECT_TRUE(lastMade->getFeature(ZQXmlParser::FEATURE_FORBID_EXTERNAL_ENTITIES));
}

const char* const FO = "http://www.w3.org/1999/XSL/Format";
const char* const XSLT = "http://www.w3.org/1999/XSL/Transform";

TEST_F(XmlUtilRoot, FoRootWithXslVersionIsAStylesheet) {
  std::istringstream in(std::string("START root ") + FO + " version " + XSLT + " 1.0 id - r");
  ZQName local;
  ZQName ns = xmlutil::getXSLStylesheetNamespace(makeStateParser, local, in);
  EXPECT_EQ(ns, ZQN_NS_XSLT);
  EXPECT_EQ(local, ZQN_root);
  // The second look re-read the stream from its start.
  EXPECT_EQ(parsersMade, 2);
}

TEST_F(XmlUtilRoot, FoRootWithoutXslVersionIsFo) {
  std::istringstream in(std::string("START root ") + FO + " version - 1.0");
  ZQName local;
  EXPECT_EQ(xmlutil::getXSLStylesheetNamespace(makeStateParser, local, in), ZQN_NS_XSL_FO);
  EXPECT_EQ(local, ZQN_root);
  EXPECT_EQ(parsersMade, 2);
}

TEST_F(XmlUtilRoot, OtherRootsAnswerTheirNamespaceAtOnce) {
  std::istringstream in(std::string("START stylesheet ") + XSLT + "\n");
  ZQName local;
  EXPECT_EQ(xmlutil::getXSLStylesheetNamespace(makeStateParser, local, in), ZQN_NS_XSLT);
  EXPECT_EQ(local.toString(), u("stylesheet"));
  EXPECT_EQ(parsersMade, 1);

  std::istringstream block(std::string("START block ") + FO + " version " + XSLT + " 1.0");
  EXPECT_EQ(xmlutil::getXSLStylesheetNamespace(makeStateParser, local, block), ZQN_NS_XSL_FO);
  EXPECT_EQ(parsersMade, 2);
}

}  // namespace
