// Input errors of the pull parser as a caller sees them: the exact text of every code, the
// code under a callback and the code thrown without one, the position text appended to a
// thrown error, the queue of non-fatal errors, and what a next() after a thrown error does.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "common/ZQError.h"
#include "common/ZQName.h"
#include "common/ZQUri.h"
#include "common/ZQXmlParser.h"
#include "xml/ZQXmlParserImpl.h"

using namespace ZQCommonNS;
using zqtest::utf8;

namespace {

UnicodeString U(const char* text) { return UnicodeString::fromUTF8(text); }

// Codes after which the scanner would read end of input again: a callback that returned
// there could loop, so the collecting callback throws for them and ends the parse.
const std::set<int> kStopCodes = {129, 145, 146, 154, 173, 175, 190};

struct Collected {
  std::vector<ZQError> errors;
};

void collect(const ZQError& error, void* data) {
  static_cast<Collected*>(data)->errors.push_back(error);
  if (kStopCodes.count(error.getErrorCode())) throw error;
}

enum Syntax { XML, HTML, XHTML };

// One parser over one document held in memory.
struct Doc {
  std::istringstream in;
  ZQPtr<ZQXmlParser> parser = ZQXmlParser::createXmlParser();
  Collected collected;

  Doc(const std::string& bytes, Syntax syntax = XML, bool callback = false,
      const std::vector<ZQXmlParser::Feature>& features = {})
      : in(bytes, std::ios::binary) {
    if (syntax == HTML) parser->setParserType(ZQN_html, ZQN_html);
    if (syntax == XHTML) parser->setParserType(ZQN_xhtml, ZQN_xhtml);
    for (ZQXmlParser::Feature f : features) parser->setFeature(f, true);
    if (callback) parser->setCallbackError(collect, &collected);
    parser->setInput(in, UnicodeString(), UnicodeString());
  }

  // Reads with next() until END_DOCUMENT; a ZQError ends the reading and is returned in
  // `thrown`. Gives the number of events read.
  int run(bool* threw = nullptr, ZQError* thrown = nullptr) {
    int events = 0;
    if (threw) *threw = false;
    try {
      for (int i = 0; i < 10000; ++i) {
        ++events;
        if (parser->next() == ZQXmlParser::END_DOCUMENT) return events;
      }
      ADD_FAILURE() << "no END_DOCUMENT after 10000 events";
    } catch (const ZQError& e) {
      if (threw) *threw = true;
      if (thrown) *thrown = e;
    }
    return events;
  }
};

// The form of a position text for an input without a name or base URI.
const std::regex kPositionForm("^[A-Z_]+, Line [0-9]+, Col [0-9]+\\.$");

bool hasPositionForm(const UnicodeString& text) {
  return std::regex_match(utf8(text), kPositionForm);
}

// A directory of its own for the files of one test.
class TempDir {
 public:
  TempDir() {
    const char* root = std::getenv("ZQ_TEST_TMP");
    std::filesystem::path base = root ? root : std::filesystem::temp_directory_path().string();
    path_ = base / ("zq_xmlmsg_" + std::to_string(getpid()) + "_" + std::to_string(counter_++));
    std::filesystem::create_directories(path_);
  }
  ~TempDir() { std::filesystem::remove_all(path_); }
  std::string write(const std::string& name, const std::string& data) const {
    std::filesystem::path p = path_ / name;
    std::ofstream(p, std::ios::binary) << data;
    return p.string();
  }

 private:
  static inline int counter_ = 0;
  std::filesystem::path path_;
};

// ---- every code a document can raise ----

struct MessageCase {
  const char* name;
  const char* doc;
  Syntax syntax;
  unsigned short raised;  // code the callback receives
  unsigned short thrown;  // code thrown without a callback; 0 when the code is only queued
  const char* text;       // exact message, arguments filled in
  bool forbidExternal;
  // Undefined entities read as empty, so that an entity value can refer to itself: a
  // reference to an entity not yet declared is reported when the value is read.
  bool ignoreUndefined = false;
};

std::ostream& operator<<(std::ostream& os, const MessageCase& c) { return os << c.name; }

const MessageCase kMessageCases[] = {
    {"MissingEndTag129", "<a>text", XML, 129, 129, "Missing end tag.", false},
    {"SecondRoot130", "<a/><b/>", XML, 130, 130, "Only one top level element is allowed.", false},
    {"BadDoctypeRoot131", "<!DOCTYPE 1a><a/>", XML, 131, 131,
     "Invalid root tag name after '<!DOCTYPE'.", false},
    {"BadStartTagName132", "<a><1/></a>", XML, 132, 132, "Invalid start tag name.", false},
    {"BadEndTagName133", "<a></1a>", XML, 133, 133, "Invalid end tag name.", false},
    {"EndTagMismatch134", "<a></b>", XML, 134, 134, "End tag 'b' does not match the start tag 'a'.",
     false},
    {"EndTagMismatchQualified134", "<p:a xmlns:p='u'></p:b>", XML, 134, 134,
     "End tag 'p:b' does not match the start tag 'p:a'.", false},
    {"HtmlEndTagMismatch513", "<html><body><b></i></b></body></html>", HTML, 513, 134,
     "End tag 'i' does not match the start tag 'b'.", false},
    {"UndeclaredElementPrefix135", "<p:a/>", XML, 135, 135, "Undeclared namespace prefix: p",
     false},
    {"UndeclaredAttributePrefix135", "<a p:x='1'/>", XML, 135, 135,
     "Undeclared namespace prefix: p", false},
    {"DuplicateAttribute136", "<a x='1' x='2'/>", XML, 136, 136, "Duplicate attribute: x", false},
    {"DuplicateThroughTwoPrefixes136", "<a xmlns:p='u' xmlns:q='u' p:x='1' q:x='2'/>", XML, 136,
     136, "Duplicate attribute: q:x", false},
    {"PrefixWithoutLocalName137", "<a p:='1'/>", XML, 137, 137,
     "Invalid attribute name: p:", false},
    {"MissingEquals138", "<a b/>", XML, 138, 138, "Missing '=' after attribute name.", false},
    {"MissingWhitespace139", "<a b='1'c='2'/>", XML, 139, 139,
     "Missing whitespace between attributes.", false},
    {"JunkInEndTag140", "<a></a x>", XML, 140, 140, "Unexpected character: x", false},
    {"JunkAfterSlash140", "<a/x>", XML, 140, 140, "Unexpected character: x", false},
    {"CommentStartingWithGt897", "<a><!-->--></a>", XML, 897, 140, "Unexpected character: >",
     false},
    {"XhtmlJunkAfterSlash897", "<a/x>", XHTML, 897, 140, "Unexpected character: x", false},
    {"HtmlJunkAfterSlash897", "<html/x>", HTML, 897, 140, "Unexpected character: x", false},
    {"WhitespaceAfterLt141", "< a/>", XML, 141, 141, "Unexpected whitespace after '<'.", false},
    {"WhitespaceAfterLtSlash141", "<a></ a>", XML, 141, 141, "Unexpected whitespace after '</'.",
     false},
    {"WhitespaceAfterSlash770", "<a/ >", XML, 770, 0, "Unexpected whitespace after '/'.", false},
    {"XhtmlWhitespaceAfterSlash898", "<a/ >", XHTML, 898, 141, "Unexpected whitespace after '/'.",
     false},
    {"HtmlWhitespaceAfterSlash898", "<html/ >", HTML, 898, 141, "Unexpected whitespace after '/'.",
     false},
    {"HtmlDoubleDashInComment899", "<html><!-- a -- b --></html>", HTML, 899, 0,
     "Unexpected character '--' in comment", false},
    {"TextAfterRoot142", "<a/>x", XML, 142, 142,
     "Unexpected text at top level of the XML document: U+0078 (x)", false},
    {"TextBeforeRoot142", "<?xml version='1.0'?>\xC3\xA9<a/>", XML, 142, 142,
     "Unexpected text at top level of the XML document: U+00E9 (\xC3\xA9)", false},
    {"CdataEndInText144", "<a>]]></a>", XML, 144, 144, "Unexpected ']]>'.", false},
    {"UnterminatedCdata145", "<a><![CDATA[x", XML, 145, 145,
     "Unexpected end of input while looking for CDATA section terminator ']]>'.", false},
    {"UnterminatedBracketDeclaration145", "<a><![FOO x", XML, 145, 145,
     "Unexpected end of input while looking for CDATA section terminator ']]>'.", false},
    {"UnterminatedComment146", "<a><!-- x", XML, 146, 146,
     "Unexpected end of input while looking for comment terminator '-->'.", false},
    {"UnterminatedEmptyTag146", "<a/", XML, 146, 146,
     "Unexpected end of input while looking for comment terminator '-->'.", false},
    {"DoubleDashInComment771", "<a><!-- a -- b --></a>", XML, 771, 0,
     "Unexpected character '--' in comment", false},
    {"XhtmlDoubleDashInComment899", "<a><!-- a -- b --></a>", XHTML, 899, 0,
     "Unexpected character '--' in comment", false},
    {"DoctypeAfterRoot148", "<a/><!DOCTYPE a>", XML, 148, 148,
     "Unexpected DOCTYPE declaration outside of prolog.", false},
    {"SecondDoctype149", "<!DOCTYPE a><!DOCTYPE a><a/>", XML, 149, 149,
     "Cannot have multiple DOCTYPE declarations.", false},
    {"NoWhitespaceAfterDoctypeName150", "<!DOCTYPE a'x'><a/>", XML, 150, 150,
     "Missing whitespace after '<!DOCTYPE a'.", false},
    {"NoWhitespaceAfterSystem150", "<!DOCTYPE a SYSTEM'x'><a/>", XML, 150, 150,
     "Missing whitespace after '<!DOCTYPE a SYSTEM'.", false},
    {"NoWhitespaceAfterEntity150", "<!DOCTYPE a [<!ENTITYe 'x'>]><a/>", XML, 150, 150,
     "Missing whitespace after '<!ENTITY'.", false},
    {"BadDoctypeKeyword151", "<!DOCTYPE a FOO 'x'><a/>", XML, 151, 151,
     "External ID is expected after '<!DOCTYPE a'.", false},
    {"BadEntityKeyword151", "<!DOCTYPE a [<!ENTITY e FOO 'x'>]><a/>", XML, 151, 151,
     "External ID is expected after '<!ENTITY e'.", false},
    {"MissingPublicLiteral152", "<!DOCTYPE a PUBLIC x><a/>", XML, 152, 152,
     "PubidLiteral is expected after '<!DOCTYPE a PUBLIC'.", false},
    {"MissingSystemLiteral153", "<!DOCTYPE a SYSTEM x><a/>", XML, 153, 153,
     "SystemLiteral is expected after '<!DOCTYPE a SYSTEM|PUBLIC'.", false},
    {"UnterminatedDoctype154", "<!DOCTYPE a [", XML, 154, 154,
     "Unexpected end of input in DOCTYPE declaration.", false},
    {"UnterminatedEntityValue154", "<!DOCTYPE a [<!ENTITY e 'x", XML, 154, 154,
     "Unexpected end of input in ENTITY declaration.", false},
    {"EmptyEntityName155", "<a>&;</a>", XML, 155, 155, "Empty entity name.", false},
    {"NoSemicolonAfterEntityName156", "<a>&amp </a>", XML, 156, 156,
     "Invalid character in entity reference: &amp ;", false},
    {"UndefinedParameterEntity514", "<!DOCTYPE a [%e;]><a/>", XML, 514, 157,
     "Reference to undefined entity: %e;", false},
    {"UndefinedEntityInText515", "<a>&foo;</a>", XML, 515, 158,
     "Reference to undefined entity: &foo;", false},
    {"UndefinedEntityInAttribute515", "<a b='&foo;'/>", XML, 515, 158,
     "Reference to undefined entity: &foo;", false},
    {"MissingEntityName159", "<!DOCTYPE a [<!ENTITY 1 'x'>]><a/>", XML, 159, 159,
     "Entity name is expected after '!ENTITY '.", false},
    {"NotNdata160", "<!DOCTYPE a [<!ENTITY e SYSTEM 'x.ent' FOO n>]><a/>", XML, 160, 160,
     "NDATA is expected after '<!ENTITY e ... \"x.ent\"'.", false},
    {"XmlDeclarationInContent161", "<a><?xml version='1.0'?></a>", XML, 161, 161,
     "Unexpected XML declaration.", false},
    {"MissingVersion162", "<?xml encoding='UTF-8'?><a/>", XML, 162, 162,
     "Missing 'version=' after '<?xml ' in XML declaration.", false},
    {"MissingEqualsAfterVersion163", "<?xml version '1.0'?><a/>", XML, 163, 163,
     "Missing '=' after '<?xml version' in XML declaration.", false},
    {"MissingEqualsAfterEncoding163", "<?xml version='1.0' encoding 'UTF-8'?><a/>", XML, 163, 163,
     "Missing '=' after 'encoding' in XML declaration.", false},
    {"MissingWhitespaceAfterXml164", "<?xml?><a/>", XML, 164, 164,
     "Missing whitespace after '<?xml' in XML declaration.", false},
    {"MissingWhitespaceBeforeEncoding165", "<?xml version='1.0'encoding='UTF-8'?><a/>", XML, 165,
     165, "Missing whitespace before 'encoding=' in XML declaration.", false},
    {"MissingWhitespaceBeforeStandalone165", "<?xml version='1.0'standalone='yes'?><a/>", XML, 165,
     165, "Missing whitespace before 'standalone=' in XML declaration.", false},
    {"UnsupportedVersion166", "<?xml version='2.0'?><a/>", XML, 166, 166,
     "Unsupported XML version: 2.0", false},
    {"BadStandalone167", "<?xml version='1.0' standalone='maybe'?><a/>", XML, 167, 167,
     "Invalid standalone declaration in XML declaration.", false},
    {"CdataWithoutBracket168", "<a><![CDATA x]]></a>", XML, 168, 168,
     "Invalid syntax in CDATA section.", false},
    {"SingleDashComment169", "<a><!-x--></a>", XML, 169, 169, "Invalid syntax in comment.", false},
    {"UnknownDeclaration170", "<a><!FOO></a>", XML, 170, 170, "Unexpected '<!FOO'.", false},
    {"UpperCaseXmlTarget171", "<?XML version='1.0'?><a/>", XML, 171, 171,
     "The name 'xml' must be lower case: <?XML", false},
    {"NoWhitespaceAfterTarget172", "<?pi=x?><a/>", XML, 172, 172,
     "Missing whitespace after PI target: <?pi", false},
    {"UnterminatedPI173", "<a><?pi x", XML, 173, 173,
     "Unexpected end of input while looking for PI terminator '?>'.", false},
    {"UnquotedAttribute174", "<a b=1/>", XML, 174, 174, "Missing quotation character (\" or ').",
     false},
    {"UnquotedDeclarationValue174", "<?xml version=1.0?><a/>", XML, 174, 174,
     "Missing quotation character (\" or ').", false},
    {"UnterminatedLiteral175", "<a b='1", XML, 175, 175,
     "Unexpected end of input while looking for literal terminator (').", false},
    {"LtInAttribute176", "<a b='<'/>", XML, 176, 176, "Unexpected '<' in attribute value.", false},
    {"WhitespaceInCharRef177", "<a>&#12 ;</a>", XML, 177, 177,
     "Unexpected whitespace in character reference: &#12 ;", false},
    {"BadDigitInCharRef178", "<a>&#1G;</a>", XML, 178, 178,
     "Invalid character in character reference: &#1G;", false},
    {"InvalidCharRef179", "<a>&#0;</a>", XML, 179, 179, "Invalid Unicode character: &#0;;", false},
    {"InvalidCharacter179", "<a>\x01</a>", XML, 179, 179, "Invalid Unicode character: U+0001",
     false},
    {"RealFFFF180", "<a>\xEF\xBF\xBF</a>", XML, 180, 180, "Invalid character.", false},
    {"BadByteAfterMarkLead180", "\xEF\x41<a/>", XML, 180, 180, "Invalid character.", false},
    {"UnknownEncoding181", "<?xml version='1.0' encoding='x-no-such-encoding'?><a/>", XML, 181, 181,
     "Unknown or unsupported encoding: x-no-such-encoding.", false},
    {"Utf8MarkDeclaresUtf16185", "\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-16'?><a/>", XML,
     185, 185, "Conflict encoding: UTF-16.", false},
    {"ForbiddenExternalEntity516", "<!DOCTYPE a [<!ENTITY e SYSTEM 'x.ent'>]><a>&e;</a>", XML, 516,
     0, "External entity is not allowed: '<!ENTITY e ... \"x.ent\"'.", true},
    {"BadAttributeName189", "<a 1='2'/>", XML, 189, 189, "Empty attribute name: 1='2'", false},
    {"QuotedAttributeName189", "<a 'x'='1'/>", XML, 189, 189, "Empty attribute name: 'x'", false},
    {"SelfReferringEntity190", "<!DOCTYPE a [<!ENTITY e '&e;'>]><a>&e;</a>", XML, 190, 190,
     "Entity expansion limit exceeded: &e;", false, true},
};

class XmlMessage : public ::testing::TestWithParam<MessageCase> {};

// Under a callback the error arrives with the code as raised, the bare text, the parser's
// source name and a position; the first error of each document is the one it is made for.
TEST_P(XmlMessage, CallbackGetsCodeAsRaised) {
  const MessageCase& c = GetParam();
  std::vector<ZQXmlParser::Feature> features;
  if (c.forbidExternal) features.push_back(ZQXmlParser::FEATURE_FORBID_EXTERNAL_ENTITIES);
  if (c.ignoreUndefined) features.push_back(ZQXmlParser::FEATURE_IGNORE_UNDEFINED_ENTITIES);
  Doc doc(c.doc, c.syntax, true, features);
  doc.run();
  ASSERT_FALSE(doc.collected.errors.empty()) << "no error reported for " << c.doc;
  const ZQError& e = doc.collected.errors.front();
  EXPECT_EQ(e.getErrorCode(), c.raised);
  EXPECT_EQ(utf8(e.getRawMessage()), c.text);
  EXPECT_EQ(utf8(e.getSource()), "ZQCommonNS::ZQXmlParserImpl");
  EXPECT_GE(e.getLineNumber(), 1);
  EXPECT_GE(e.getColumnNumber(), 0);
}

// Without a callback a fatal code is thrown under its plain number, the position text of the
// moment after a line feed, and line and column -1; a later next() ends the document or
// finds the elements still open (129). A non-fatal code is queued and parsing goes on.
TEST_P(XmlMessage, WithoutCallbackThrownOrQueued) {
  const MessageCase& c = GetParam();
  std::vector<ZQXmlParser::Feature> features;
  if (c.forbidExternal) features.push_back(ZQXmlParser::FEATURE_FORBID_EXTERNAL_ENTITIES);
  if (c.ignoreUndefined) features.push_back(ZQXmlParser::FEATURE_IGNORE_UNDEFINED_ENTITIES);
  Doc doc(c.doc, c.syntax, false, features);
  bool threw = false;
  ZQError e;
  doc.run(&threw, &e);
  if (c.thrown == 0) {
    EXPECT_FALSE(threw) << "non-fatal code thrown: " << e.getErrorCode() << " "
                        << utf8(e.getRawMessage());
    EXPECT_EQ(doc.parser->getEventType(), ZQXmlParser::END_DOCUMENT);
    ZQError queued;
    ASSERT_TRUE(doc.parser->popError(queued));
    EXPECT_EQ(queued.getErrorCode(), c.raised);
    std::string message = utf8(queued.getRawMessage());
    std::string head = std::string(c.text) + "\n";
    ASSERT_EQ(message.substr(0, head.size()), head);
    EXPECT_TRUE(std::regex_match(message.substr(head.size()), kPositionForm)) << message;
    EXPECT_EQ(queued.getLineNumber(), -1);
    EXPECT_EQ(queued.getColumnNumber(), -1);
    EXPECT_TRUE(queued.getUri().isEmpty());
    return;
  }
  ASSERT_TRUE(threw) << "nothing thrown for " << c.doc;
  EXPECT_EQ(e.getErrorCode(), c.thrown);
  std::string message = utf8(e.getRawMessage());
  std::string head = std::string(c.text) + "\n";
  ASSERT_EQ(message.substr(0, head.size()), head);
  std::string position = message.substr(head.size());
  EXPECT_TRUE(std::regex_match(position, kPositionForm)) << message;
  EXPECT_EQ(e.getLineNumber(), -1);
  EXPECT_EQ(e.getColumnNumber(), -1);
  EXPECT_TRUE(e.getUri().isEmpty());
  EXPECT_EQ(utf8(e.getSource()), "ZQCommonNS::ZQXmlParserImpl");
  // After the throw the parser only ends: END_DOCUMENT, or 129 while elements are open
  // (under HTML an END_TAG for each open element instead). An error of the start of the
  // document (mark, XML declaration) is left out: the first call reads the start again.
  if (position.rfind("START_DOCUMENT", 0) == 0) return;
  for (int i = 0; i < 10; ++i) {
    try {
      ZQXmlParser::EventType t = doc.parser->next();
      if (t == ZQXmlParser::END_DOCUMENT) break;
      EXPECT_TRUE(c.syntax == HTML && t == ZQXmlParser::END_TAG) << "event " << t;
    } catch (const ZQError& later) {
      EXPECT_EQ(later.getErrorCode(), 129) << utf8(later.getRawMessage());
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Codes, XmlMessage, ::testing::ValuesIn(kMessageCases),
                         [](const ::testing::TestParamInfo<MessageCase>& info) {
                           return std::string(info.param.name);
                         });

// ---- exact position texts ----

TEST(XmlMessagePosition, SecondRootOnOneLine) {
  Doc doc("<a/><b/>");
  ZQError e;
  bool threw = false;
  doc.run(&threw, &e);
  ASSERT_TRUE(threw);
  EXPECT_EQ(utf8(e.getRawMessage()),
            "Only one top level element is allowed.\nSTART_TAG, Line 1, Col 6.");
}

TEST(XmlMessagePosition, SecondRootOnSecondLine) {
  Doc doc("<a/>\n<b/>");
  ZQError e;
  bool threw = false;
  doc.run(&threw, &e);
  ASSERT_TRUE(threw);
  EXPECT_EQ(utf8(e.getRawMessage()),
            "Only one top level element is allowed.\nSTART_TAG, Line 2, Col 2.");
}

TEST(XmlMessagePosition, MissingEndTagAfterText) {
  Doc doc("<a>\ntext");
  ZQError e;
  bool threw = false;
  doc.run(&threw, &e);
  ASSERT_TRUE(threw);
  EXPECT_EQ(e.getErrorCode(), 129);
  EXPECT_EQ(utf8(e.getRawMessage()), "Missing end tag.\nTEXT, Line 2, Col 4.");
}

TEST(XmlMessagePosition, EndTagMismatchOnSecondLine) {
  Doc doc("<a>\n  <b></c>\n</a>");
  ZQError e;
  bool threw = false;
  doc.run(&threw, &e);
  ASSERT_TRUE(threw);
  EXPECT_EQ(utf8(e.getRawMessage()),
            "End tag 'c' does not match the start tag 'b'.\nEND_TAG, Line 2, Col 9.");
}

// A literal is read again from its start, so its errors carry the position inside it.
TEST(XmlMessagePosition, LiteralErrorAtItsOwnPosition) {
  Doc doc("<a\n b='x<'/>");
  ZQError e;
  bool threw = false;
  doc.run(&threw, &e);
  ASSERT_TRUE(threw);
  EXPECT_EQ(utf8(e.getRawMessage()),
            "Unexpected '<' in attribute value.\nSTART_TAG, Line 2, Col 6.");
}

TEST(XmlMessagePosition, UndefinedEntityInLiteralAtItsOwnPosition) {
  Doc doc("<a b='&foo;x'/>");
  ZQError e;
  bool threw = false;
  doc.run(&threw, &e);
  ASSERT_TRUE(threw);
  EXPECT_EQ(utf8(e.getRawMessage()),
            "Reference to undefined entity: &foo;\nSTART_TAG, Line 1, Col 11.");
}

TEST(XmlMessagePosition, InputNameInQuotes) {
  TempDir dir;
  std::string path = dir.write("named.xml", "<a/>\n<b/>");
  ZQUri uri(U(path.c_str()));
  ZQPtr<ZQXmlParser> parser = ZQXmlParser::createXmlParser();
  parser->setInput(uri, UnicodeString(), UnicodeString());
  UnicodeString name = parser->getInputUri();
  ASSERT_FALSE(name.isEmpty());
  try {
    while (parser->next() != ZQXmlParser::END_DOCUMENT) {
    }
    FAIL() << "no error thrown";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getRawMessage(), UnicodeString(u"Only one top level element is allowed.\n"
                                               u"START_TAG, '") +
                                     name + u"', Line 2, Col 2.");
    EXPECT_TRUE(e.getUri().isEmpty());
  }
}

TEST(XmlMessagePosition, BaseUriWhenInputHasNoName) {
  ZQPtr<ZQXmlParser> parser = ZQXmlParser::createXmlParser();
  std::istringstream in("<a/>\n<b/>");
  parser->setInput(in, UnicodeString(), u"http://example.org/doc.xml");
  UnicodeString base = parser->getBaseUri();
  ASSERT_TRUE(parser->getInputUri().isEmpty());
  ASSERT_FALSE(base.isEmpty());
  try {
    while (parser->next() != ZQXmlParser::END_DOCUMENT) {
    }
    FAIL() << "no error thrown";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getRawMessage(), UnicodeString(u"Only one top level element is allowed.\n"
                                               u"START_TAG, '") +
                                     base + u"', Line 2, Col 2.");
  }
}

TEST(XmlMessagePosition, NonFatalQueuedWithPositionOfTheMoment) {
  Doc doc("<a/ >");
  EXPECT_EQ(doc.parser->next(), ZQXmlParser::START_TAG);
  EXPECT_TRUE(doc.parser->isEmptyElementTag());
  ZQError e;
  ASSERT_TRUE(doc.parser->popError(e));
  EXPECT_EQ(e.getErrorCode(), 770);
  EXPECT_EQ(utf8(e.getRawMessage()), "Unexpected whitespace after '/'.\nSTART_TAG, Line 1, Col 4.");
  EXPECT_FALSE(doc.parser->popError(e));
  EXPECT_EQ(doc.parser->next(), ZQXmlParser::END_TAG);
  EXPECT_EQ(doc.parser->next(), ZQXmlParser::END_DOCUMENT);
}

TEST(XmlMessagePosition, NoPositionFeatureSetsLineColumnAndName) {
  TempDir dir;
  std::string path = dir.write("plain.xml", "<a/>\n<b/>");
  ZQUri uri(U(path.c_str()));
  ZQPtr<ZQXmlParser> parser = ZQXmlParser::createXmlParser();
  parser->setFeature(ZQXmlParser::FEATURE_NO_POSITION_DESCRIPTION, true);
  parser->setInput(uri, UnicodeString(), UnicodeString());
  UnicodeString name = parser->getInputUri();
  try {
    while (parser->next() != ZQXmlParser::END_DOCUMENT) {
    }
    FAIL() << "no error thrown";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 130);
    EXPECT_EQ(utf8(e.getRawMessage()), "Only one top level element is allowed.");
    EXPECT_EQ(e.getLineNumber(), 2);
    EXPECT_EQ(e.getColumnNumber(), 2);
    EXPECT_EQ(e.getUri(), name);
    EXPECT_TRUE(parser->getPositionDescription().isEmpty());
  }
}

TEST(XmlMessagePosition, CallbackErrorCarriesLineColumnAndName) {
  TempDir dir;
  std::string path = dir.write("cb.xml", "<a>\n<b></c>\n</a>");
  ZQUri uri(U(path.c_str()));
  ZQPtr<ZQXmlParser> parser = ZQXmlParser::createXmlParser();
  Collected collected;
  parser->setCallbackError(collect, &collected);
  parser->setInput(uri, UnicodeString(), UnicodeString());
  UnicodeString name = parser->getInputUri();
  std::vector<ZQXmlParser::EventType> events;
  try {
    for (int i = 0; i < 100; ++i) {
      events.push_back(parser->next());
      if (events.back() == ZQXmlParser::END_DOCUMENT) break;
    }
  } catch (const ZQError&) {
  }
  ASSERT_EQ(collected.errors.size(), 1u);
  const ZQError& e = collected.errors[0];
  EXPECT_EQ(e.getErrorCode(), 134);
  EXPECT_EQ(utf8(e.getRawMessage()), "End tag 'c' does not match the start tag 'b'.");
  EXPECT_EQ(e.getLineNumber(), 2);
  EXPECT_EQ(e.getColumnNumber(), 7);
  EXPECT_EQ(e.getUri(), name);
  // A mismatch that the callback lets pass closes the open element all the same.
  ASSERT_FALSE(events.empty());
  EXPECT_EQ(events.back(), ZQXmlParser::END_DOCUMENT);
}

std::string dataPath(const char* name) { return std::string(ZQ_TEST_DATA_DIR) + "/xml/" + name; }

// Inside an external entity the position is that of the entity's own input.
TEST(XmlMessagePosition, ErrorInsideExternalEntityNamesTheEntity) {
  ZQPtr<ZQXmlParser> parser = ZQXmlParser::createXmlParser();
  parser->setInput(U(dataPath("msg-entity-bad.xml").c_str()), UnicodeString(), UnicodeString());
  try {
    while (parser->next() != ZQXmlParser::END_DOCUMENT) {
    }
    FAIL() << "no error thrown";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 134);
    std::string m = utf8(e.getRawMessage());
    std::string head = "End tag 'c' does not match the start tag 'b'.\nEND_TAG, '";
    std::string tail = "msg-entity-bad.ent', Line 2, Col 7.";
    ASSERT_GE(m.size(), head.size() + tail.size()) << m;
    EXPECT_EQ(m.substr(0, head.size()), head) << m;
    EXPECT_EQ(m.substr(m.size() - tail.size()), tail) << m;
  }
}

// Once the entity is read, the outer input's name and position are back.
TEST(XmlMessagePosition, ErrorAfterExternalEntityNamesTheDocument) {
  ZQPtr<ZQXmlParser> parser = ZQXmlParser::createXmlParser();
  parser->setInput(U(dataPath("msg-after-entity.xml").c_str()), UnicodeString(), UnicodeString());
  UnicodeString name = parser->getInputUri();
  try {
    while (parser->next() != ZQXmlParser::END_DOCUMENT) {
    }
    FAIL() << "no error thrown";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 134);
    EXPECT_EQ(utf8(e.getRawMessage()),
              utf8(UnicodeString(u"End tag 'b' does not match the start tag 'a'.\nEND_TAG, '") +
                   name + u"', Line 2, Col 10."));
  }
}

// The line end that follows the entity counts once.
TEST(XmlMessagePosition, LineAfterExternalEntityCountsOnce) {
  ZQPtr<ZQXmlParser> parser = ZQXmlParser::createXmlParser();
  parser->setInput(U(dataPath("msg-after-entity-line.xml").c_str()), UnicodeString(),
                   UnicodeString());
  UnicodeString name = parser->getInputUri();
  try {
    while (parser->next() != ZQXmlParser::END_DOCUMENT) {
    }
    FAIL() << "no error thrown";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 134);
    EXPECT_EQ(utf8(e.getRawMessage()),
              utf8(UnicodeString(u"End tag 'b' does not match the start tag 'a'.\nEND_TAG, '") +
                   name + u"', Line 3, Col 4."));
  }
}

// ---- a callback that throws ----

void throwAll(const ZQError& error, void* data) {
  ++*static_cast<int*>(data);
  throw error;
}

TEST(XmlMessageCallback, ThrowingCallbackEndsTheDocument) {
  std::istringstream in("<a><b/ ></a>");
  ZQPtr<ZQXmlParser> parser = ZQXmlParser::createXmlParser();
  int calls = 0;
  parser->setCallbackError(throwAll, &calls);
  parser->setInput(in, UnicodeString(), UnicodeString());
  EXPECT_EQ(parser->next(), ZQXmlParser::START_TAG);
  try {
    parser->next();
    FAIL() << "the callback's exception did not come through";
  } catch (const ZQError& e) {
    // Thrown by the callback, so the code is the one raised, non-fatal as it is.
    EXPECT_EQ(e.getErrorCode(), 770);
    EXPECT_EQ(utf8(e.getRawMessage()), "Unexpected whitespace after '/'.");
  }
  EXPECT_EQ(calls, 1);
  // The parser stopped where the error was reported: elements are open, so 129 follows,
  // through the callback again.
  try {
    parser->next();
    FAIL() << "no error thrown";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 129);
  }
  EXPECT_EQ(calls, 2);
}

TEST(XmlMessageCallback, ReturningCallbackLetsTheFlowGoOn) {
  Doc doc("<a p:x='1' q:y='2'>&undefined;<b/ ></a>", XML, true);
  EXPECT_EQ(doc.parser->next(), ZQXmlParser::START_TAG);
  EXPECT_EQ(doc.parser->getAttributeCount(), 2);
  EXPECT_EQ(doc.parser->next(), ZQXmlParser::START_TAG);
  EXPECT_EQ(utf8(doc.parser->getName().toString()), "b");
  EXPECT_EQ(doc.parser->next(), ZQXmlParser::END_TAG);
  EXPECT_EQ(doc.parser->next(), ZQXmlParser::END_TAG);
  EXPECT_EQ(doc.parser->next(), ZQXmlParser::END_DOCUMENT);
  std::vector<int> codes;
  for (const ZQError& e : doc.collected.errors) codes.push_back(e.getErrorCode());
  EXPECT_EQ(codes, (std::vector<int>{135, 135, 515, 770}));
}

// ---- the queue of non-fatal errors ----

TEST(XmlMessageQueue, SeveralNonFatalErrorsQueuedInOrder) {
  Doc doc("<a><b/ ><!-- x -- y --><c/ ></a>");
  EXPECT_EQ(doc.run(), 7);  // a, b, /b, c, /c, /a and END_DOCUMENT
  std::vector<int> codes;
  ZQError e;
  while (doc.parser->popError(e)) codes.push_back(e.getErrorCode());
  EXPECT_EQ(codes, (std::vector<int>{770, 771, 770}));
}

TEST(XmlMessageQueue, NonFatalErrorsGoToTheCallbackNotTheQueue) {
  Doc doc("<a><b/ ><!-- x -- y --></a>", XML, true);
  doc.run();
  ASSERT_EQ(doc.collected.errors.size(), 2u);
  EXPECT_EQ(doc.collected.errors[0].getErrorCode(), 770);
  EXPECT_EQ(doc.collected.errors[1].getErrorCode(), 771);
  ZQError e;
  EXPECT_FALSE(doc.parser->popError(e));
}

TEST(XmlMessageQueue, ForbiddenEntityIsDroppedAndTextGoesOn) {
  Doc doc("<!DOCTYPE a [<!ENTITY e SYSTEM 'x.ent'>]><a>1&e;2</a>", XML, false,
          {ZQXmlParser::FEATURE_FORBID_EXTERNAL_ENTITIES});
  EXPECT_EQ(doc.parser->next(), ZQXmlParser::START_TAG);
  EXPECT_EQ(doc.parser->next(), ZQXmlParser::TEXT);
  EXPECT_EQ(utf8(doc.parser->getText()), "12");
  EXPECT_EQ(doc.parser->next(), ZQXmlParser::END_TAG);
  ZQError e;
  ASSERT_TRUE(doc.parser->popError(e));
  EXPECT_EQ(e.getErrorCode(), 516);
}

// ---- after a thrown error ----

TEST(XmlMessageAfterThrow, NextGivesEndDocumentWithNothingOpen) {
  Doc doc("<a/><b/>");
  EXPECT_EQ(doc.parser->next(), ZQXmlParser::START_TAG);
  EXPECT_EQ(doc.parser->next(), ZQXmlParser::END_TAG);
  try {
    doc.parser->next();
    FAIL() << "no error thrown";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 130);
  }
  EXPECT_EQ(doc.parser->next(), ZQXmlParser::END_DOCUMENT);
  EXPECT_EQ(doc.parser->next(), ZQXmlParser::END_DOCUMENT);
}

TEST(XmlMessageAfterThrow, NextGives129WithElementsOpen) {
  Doc doc("<a><b>&undefined;</b></a>");
  EXPECT_EQ(doc.parser->next(), ZQXmlParser::START_TAG);
  EXPECT_EQ(doc.parser->next(), ZQXmlParser::START_TAG);
  try {
    doc.parser->next();
    FAIL() << "no error thrown";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 158);
  }
  try {
    doc.parser->next();
    FAIL() << "no error thrown";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 129);
    EXPECT_EQ(utf8(e.getRawMessage()).substr(0, 17), "Missing end tag.\n");
  }
}

// ---- codes that only callers raise, through the funnel itself ----

TEST(XmlMessageFunnel, FormatOfCodesNoReadingRaises) {
  EXPECT_EQ(utf8(formatXmlParserMessage(143, u"CDATA", u"")), "Unexpected '<![CDATA'.");
  EXPECT_EQ(utf8(formatXmlParserMessage(147, u"", u"")), "Unexpected character '--' in comment");
  EXPECT_EQ(utf8(formatXmlParserMessage(182, u"", u"")), "No-XML document.");
  EXPECT_EQ(utf8(formatXmlParserMessage(183, u"a", u"b")), "XML parser error.");
  EXPECT_EQ(utf8(formatXmlParserMessage(184, u"a", u"b")), "XML parser error.");
  EXPECT_EQ(utf8(formatXmlParserMessage(186, u"1x", u"")), "Invalid element name: 1x");
  EXPECT_EQ(utf8(formatXmlParserMessage(187, u"width", u"-3")),
            "Invalid attribute value: width=\"-3\"");
  EXPECT_EQ(utf8(formatXmlParserMessage(188, u"<!ENTITY e ... \"x\"", u"")),
            "External entity is not allowed: '<!ENTITY e ... \"x\"'.");
  EXPECT_EQ(utf8(formatXmlParserMessage(190, u"e", u"")), "Entity expansion limit exceeded: &e;");
}

TEST(XmlMessageFunnel, ThrowErrorBeforeInputHasStartDocumentPosition) {
  ZQPtr<ZQXmlParser> parser = ZQXmlParser::createXmlParser();
  try {
    parser->throwError(186, u"1x", u"");
    FAIL() << "no error thrown";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 186);
    EXPECT_EQ(utf8(e.getRawMessage()), "Invalid element name: 1x\nSTART_DOCUMENT.");
    EXPECT_EQ(e.getLineNumber(), -1);
  }
}

TEST(XmlMessageFunnel, ThrowErrorAtStartTagOfDocument) {
  Doc doc("<a\n  b='1'/>");
  ASSERT_EQ(doc.parser->next(), ZQXmlParser::START_TAG);
  UnicodeString position = doc.parser->getPositionDescription();
  try {
    doc.parser->throwError(187, u"b", u"1");
    FAIL() << "no error thrown";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 187);
    EXPECT_EQ(e.getRawMessage(), UnicodeString(u"Invalid attribute value: b=\"1\"\n") + position);
    EXPECT_TRUE(hasPositionForm(position)) << utf8(position);
  }
}

TEST(XmlMessageFunnel, CallbackGetsCodesOfCallersUnchanged) {
  ZQPtr<ZQXmlParser> parser = ZQXmlParser::createXmlParser();
  Collected collected;
  parser->setCallbackError(collect, &collected);
  for (unsigned short code : {143, 182, 183, 186, 187, 513, 897})
    parser->throwError(code, u"a", u"b");
  ASSERT_EQ(collected.errors.size(), 7u);
  EXPECT_EQ(collected.errors[0].getErrorCode(), 143);
  EXPECT_EQ(utf8(collected.errors[0].getRawMessage()), "Unexpected '<![a'.");
  EXPECT_EQ(utf8(collected.errors[1].getRawMessage()), "No-XML document.");
  EXPECT_EQ(utf8(collected.errors[2].getRawMessage()), "XML parser error.");
  EXPECT_EQ(utf8(collected.errors[3].getRawMessage()), "Invalid element name: a");
  EXPECT_EQ(utf8(collected.errors[4].getRawMessage()), "Invalid attribute value: a=\"b\"");
  EXPECT_EQ(collected.errors[5].getErrorCode(), 513);
  EXPECT_EQ(collected.errors[6].getErrorCode(), 897);
}

TEST(XmlMessageFunnel, ReplacedCodesWithoutCallback) {
  const std::pair<unsigned short, unsigned short> replaced[] = {
      {513, 134}, {514, 157}, {515, 158}, {897, 140}, {898, 141}};
  for (const auto& [raised, thrown] : replaced) {
    ZQPtr<ZQXmlParser> parser = ZQXmlParser::createXmlParser();
    try {
      parser->throwError(raised, u"a", u"b");
      ADD_FAILURE() << raised << " not thrown";
    } catch (const ZQError& e) {
      EXPECT_EQ(e.getErrorCode(), thrown) << raised;
    }
  }
}

TEST(XmlMessageFunnel, NonFatalCodesQueuedWithoutCallback) {
  ZQPtr<ZQXmlParser> parser = ZQXmlParser::createXmlParser();
  for (unsigned short code : {516, 770, 771, 899}) parser->throwError(code, u"a", u"b");
  std::vector<int> codes;
  ZQError e;
  while (parser->popError(e)) codes.push_back(e.getErrorCode());
  EXPECT_EQ(codes, (std::vector<int>{516, 770, 771, 899}));
}

// ---- the expansion guard ----

TEST(XmlMessageExpansion, ExponentialEntitiesStopAtTheLimit) {
  std::string doc = "<!DOCTYPE a [<!ENTITY e0 'xxxxxxxxxx'>";
  for (int i = 1; i <= 12; ++i) {
    std::string prev = "&e" + std::to_string(i - 1) + ";";
    doc += "<!ENTITY e" + std::to_string(i) + " '" + prev + prev + prev + prev + prev + prev +
           prev + prev + prev + prev + "'>";
  }
  doc += "]><a>&e12;</a>";
  Doc d(doc);
  bool threw = false;
  ZQError e;
  d.run(&threw, &e);
  ASSERT_TRUE(threw);
  EXPECT_EQ(e.getErrorCode(), 190);
  EXPECT_EQ(utf8(e.getRawMessage()).substr(0, 35), "Entity expansion limit exceeded: &e");
}

// Declared forward, a reference in an entity value is reported when the value is read.
TEST(XmlMessageExpansion, ForwardReferenceInEntityValueReported) {
  Doc d("<!DOCTYPE a [<!ENTITY a1 '&a2;'><!ENTITY a2 'x'>]><a>&a1;</a>", XML, true);
  d.run();
  ASSERT_FALSE(d.collected.errors.empty());
  EXPECT_EQ(d.collected.errors[0].getErrorCode(), 515);
  EXPECT_EQ(utf8(d.collected.errors[0].getRawMessage()), "Reference to undefined entity: &a2;");
}

TEST(XmlMessageExpansion, MutualRecursionStops) {
  Doc d("<!DOCTYPE a [<!ENTITY a1 '&a2;'><!ENTITY a2 '&a1;'>]><a>&a1;</a>", XML, false,
        {ZQXmlParser::FEATURE_IGNORE_UNDEFINED_ENTITIES});
  bool threw = false;
  ZQError e;
  d.run(&threw, &e);
  ASSERT_TRUE(threw);
  EXPECT_EQ(e.getErrorCode(), 190);
}

TEST(XmlMessageExpansion, RecursionInAttributeStops) {
  Doc d("<a b='&e;'/>");
  d.parser->defineEntityReplacementText(ZQName(u"e"), u"x&e;");
  bool threw = false;
  ZQError e;
  d.run(&threw, &e);
  ASSERT_TRUE(threw);
  EXPECT_EQ(e.getErrorCode(), 190);
  EXPECT_EQ(utf8(e.getRawMessage()).substr(0, 37), "Entity expansion limit exceeded: &e;\n");
}

}  // namespace
