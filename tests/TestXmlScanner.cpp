// The scanner of the pull parser: events and their merging, tags and attributes, text,
// CDATA, comments, processing instructions, literals, references, and the guard on entity
// expansion.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "common/ZQError.h"
#include "common/ZQUri.h"
#include "common/ZQXmlParser.h"
#include "xml/ZQXmlParserImpl.h"

using namespace ZQCommonNS;
using icu::UnicodeString;

namespace {

UnicodeString u16(const std::string& utf8) { return UnicodeString::fromUTF8(utf8); }

std::string utf8(const UnicodeString& text) {
  std::string out;
  text.toUTF8String(out);
  return out;
}

/// Errors that a callback received, in order.
struct Errors {
  std::vector<ZQError> list;
  static void collect(const ZQError& error, void* data) {
    static_cast<Errors*>(data)->list.push_back(error);
  }
  std::vector<int> codes() const {
    std::vector<int> out;
    for (const ZQError& e : list) out.push_back(e.getErrorCode());
    return out;
  }
  bool has(int code) const {
    for (const ZQError& e : list)
      if (e.getErrorCode() == code) return true;
    return false;
  }
  int count(int code) const {
    int n = 0;
    for (const ZQError& e : list)
      if (e.getErrorCode() == code) ++n;
    return n;
  }
};

/// The parser with the scanner's own routines opened for tests.
class ScanParser : public ZQXmlParserImpl {
 public:
  using ZQXmlParserImpl::guardExpansion;
  using ZQXmlParserImpl::readLiteral;
  using ZQXmlParserImpl::readName;
  using ZQXmlParserImpl::readQName;
  using ZQXmlParserImpl::readReference;
  using ZQXmlParserImpl::setInput;

  /// Starts reading as nextToken does at the start of a document.
  void start() {
    m_lineNumber = 1;
    m_columnNumber = 0;
    detectEncoding(false);
    if (m_pushedChar != END_OF_INPUT) ++m_columnNumber;
  }
  void setHtml() { setParserType(ZQN_html, ZQN_html); }
  size_t inputDepth() const { return m_inputStack.size(); }
  int pendingToken() const { return m_pendingToken; }
  int peek() { return peekToken(); }
  UChar32 read() { return readChar(); }
  void declareGeneral(const char* name, const UnicodeString& value) {
    m_entities.generalEntities[ZQName(u16(name))] = value;
  }
  void declareExternal(const char* name, const UnicodeString& systemId) {
    m_entities.externalGeneralEntities[ZQName(u16(name))] = systemId;
  }
  int pushbackLength() const {
    return m_pushedText.length() - m_pushedTextPos + (m_pushedChar != END_OF_INPUT ? 1 : 0);
  }
  int64_t expandedChars() const { return m_expandedChars; }
};

/// A parser over a text, with a callback that collects errors unless `throwing`.
struct Doc {
  std::istringstream in;
  ZQPtr<ScanParser> parser;
  Errors errors;
  explicit Doc(const std::string& text, bool throwing = false)
      : in(text, std::ios::binary), parser(new ScanParser()) {
    if (!throwing) parser->setCallbackError(&Errors::collect, &errors);
    parser->setInput(in, UnicodeString(), UnicodeString());
  }
  ScanParser* operator->() { return parser.get(); }

  /// Events of next() (or nextToken()) as a compact trace: "<a" start, "</a" end,
  /// "T(text)", "R(name)", "C(text)", "P(target)", "D", "W", "X(text)" CDATA.
  std::string trace(bool tokens = false, int limit = 1000) {
    std::string out;
    for (int i = 0; i < limit; ++i) {
      ZQXmlParser::EventType t = tokens ? parser->nextToken() : parser->next();
      if (!out.empty()) out += ' ';
      switch (t) {
        case ZQXmlParser::START_TAG:
          out += "<" + utf8(qname());
          if (parser->isEmptyElementTag()) out += "/";
          break;
        case ZQXmlParser::END_TAG:
          out += "</" + utf8(qname());
          break;
        case ZQXmlParser::TEXT:
          out += "T(" + utf8(parser->getText()) + ")";
          break;
        case ZQXmlParser::CDSECT:
          out += "X(" + utf8(parser->getText()) + ")";
          break;
        case ZQXmlParser::ENTITY_REF:
          out += "R(" + utf8(parser->getName().toString()) + ")";
          break;
        case ZQXmlParser::IGNORABLE_WHITESPACE:
          out += "W";
          break;
        case ZQXmlParser::PROCESSING_INSTRUCTION:
          out += "P(" + utf8(parser->getTarget().toString()) + ")";
          break;
        case ZQXmlParser::COMMENT:
          out += "C(" + utf8(parser->getText()) + ")";
          break;
        case ZQXmlParser::DOCDECL:
          out += "D";
          break;
        case ZQXmlParser::END_DOCUMENT:
          out += "$";
          return out;
        default:
          out += "?";
          break;
      }
    }
    return out + " ...";
  }
  UnicodeString qname() {
    UnicodeString text;
    if (!parser->getPrefix().isEmpty()) text.append(parser->getPrefix().toString()).append(u':');
    return text.append(parser->getName().toString());
  }
  /// Moves with next() to the first start tag.
  void toStartTag() {
    while (parser->next() != ZQXmlParser::START_TAG) {
      if (parser->getEventType() == ZQXmlParser::END_DOCUMENT) FAIL() << "no start tag";
    }
  }
};

/// The code of the error that a throwing parser raises on `text`, or 0.
int thrownCode(const std::string& text, bool tokens = false) {
  Doc doc(text, true);
  try {
    doc.trace(tokens);
  } catch (const ZQError& e) {
    return e.getErrorCode();
  }
  return 0;
}

}  // namespace

// ---- Simple documents ----

TEST(XmlScanner, SimpleDocumentEvents) {
  Doc doc("<a x='1'><b>text</b><c/></a>");
  EXPECT_EQ(doc.trace(), "<a <b T(text) </b <c/ </c </a $");
  EXPECT_TRUE(doc.errors.list.empty());
}

TEST(XmlScanner, StartDocumentSetsLineOneColumnZero) {
  Doc doc("<a/>");
  EXPECT_EQ(doc->getLineNumber(), -1);
  doc->next();
  EXPECT_EQ(doc->getLineNumber(), 1);
  EXPECT_EQ(doc->getColumnNumber(), 4);
  EXPECT_EQ(doc->getInputEncoding(), u"UTF-8");
}

TEST(XmlScanner, EmptyInputGivesEndDocumentAtOnce) {
  Doc doc("");
  EXPECT_EQ(doc->next(), ZQXmlParser::END_DOCUMENT);
  EXPECT_TRUE(doc.errors.list.empty());
}

TEST(XmlScanner, EmptyElementGivesStartAndEndWithDepths) {
  Doc doc("<a/>");
  ASSERT_EQ(doc->next(), ZQXmlParser::START_TAG);
  EXPECT_TRUE(doc->isEmptyElementTag());
  EXPECT_EQ(doc->getDepth(), 1);
  ASSERT_EQ(doc->next(), ZQXmlParser::END_TAG);
  EXPECT_EQ(doc->getName(), ZQName(u"a"));
  EXPECT_EQ(doc->getDepth(), 1);
  ASSERT_EQ(doc->next(), ZQXmlParser::END_DOCUMENT);
  EXPECT_EQ(doc->getDepth(), 0);
  EXPECT_EQ(doc->next(), ZQXmlParser::END_DOCUMENT);
  EXPECT_EQ(doc->nextToken(), ZQXmlParser::END_DOCUMENT);
}

TEST(XmlScanner, EndTagKeepsElementUntilNextCall) {
  Doc doc("<r><a></a>x</r>");
  doc->next();
  doc->next();
  ASSERT_EQ(doc->next(), ZQXmlParser::END_TAG);
  EXPECT_EQ(doc->getName(), ZQName(u"a"));
  EXPECT_EQ(doc->getDepth(), 2);
  ASSERT_EQ(doc->next(), ZQXmlParser::TEXT);
  EXPECT_EQ(doc->getDepth(), 1);
}

// ---- Merging rules of next() ----

TEST(XmlScanner, CommentBetweenTextJoinsUnderNext) {
  Doc doc("<r>a<!--c-->b</r>");
  EXPECT_EQ(doc.trace(), "<r T(ab) </r $");
}

TEST(XmlScanner, CommentBetweenTextIsThreeTokens) {
  Doc doc("<r>a<!--c-->b</r>");
  EXPECT_EQ(doc.trace(true), "<r T(a) C(c) T(b) </r $");
}

TEST(XmlScanner, CdataAndReferencesMergeIntoOneText) {
  Doc doc("<r>a<![CDATA[<b>]]>&#x41;&amp;c</r>");
  EXPECT_EQ(doc.trace(), "<r T(a<b>A&c) </r $");
  EXPECT_TRUE(doc.errors.list.empty());
}

TEST(XmlScanner, TokensOfCdataAndReferences) {
  Doc doc("<r>a<![CDATA[<b>]]>&#x41;&amp;</r>");
  EXPECT_EQ(doc.trace(true), "<r T(a) X(<b>) R(#x41) R(amp) </r $");
}

TEST(XmlScanner, HexCharacterReferenceAsToken) {
  Doc doc("<r>&#x41;</r>");
  doc->nextToken();
  ASSERT_EQ(doc->nextToken(), ZQXmlParser::ENTITY_REF);
  EXPECT_EQ(doc->getName(), ZQName(u"#x41"));
  EXPECT_EQ(doc->getText(), u"A");
}

TEST(XmlScanner, NamedReferenceTokenLooksValueUpOnlyWhenAsked) {
  Doc doc("<r>&e;&nothing;</r>");
  doc->defineEntityReplacementText(ZQName(u"e"), u"<b>x</b>");
  doc->nextToken();
  ASSERT_EQ(doc->nextToken(), ZQXmlParser::ENTITY_REF);
  EXPECT_EQ(doc->getName(), ZQName(u"e"));
  EXPECT_EQ(doc->getText(), u"<b>x</b>");
  ASSERT_EQ(doc->nextToken(), ZQXmlParser::ENTITY_REF);
  EXPECT_TRUE(doc->getText().isBogus());
  EXPECT_TRUE(doc.errors.list.empty());
}

TEST(XmlScanner, EntityValueIsScannedAsInput) {
  Doc doc("<r>&e;</r>");
  doc->defineEntityReplacementText(ZQName(u"e"), u"<b>x</b>");
  EXPECT_EQ(doc.trace(), "<r <b T(x) </b </r $");
}

TEST(XmlScanner, TextAroundEntityMarkupStaysApart) {
  Doc doc("<r>a&e;c</r>");
  doc->defineEntityReplacementText(ZQName(u"e"), u"<b/>");
  EXPECT_EQ(doc.trace(), "<r T(a) <b/ </b T(c) </r $");
}

TEST(XmlScanner, TextEntityJoinsSurroundingText) {
  Doc doc("<r>a&e;c</r>");
  doc->defineEntityReplacementText(ZQName(u"e"), u"b");
  EXPECT_EQ(doc.trace(), "<r T(abc) </r $");
}

TEST(XmlScanner, PredefinedLtAndAmpGiveTextNotMarkup) {
  Doc doc("<r>&lt;b&gt;&amp;lt;&apos;&quot;</r>");
  EXPECT_EQ(doc.trace(), "<r T(<b>&lt;'\") </r $");
}

TEST(XmlScanner, ProcessingInstructionSkippedAndTextJoined) {
  Doc doc("<r>a<?p x?>b</r>");
  EXPECT_EQ(doc.trace(), "<r T(ab) </r $");
}

TEST(XmlScanner, ReportPiStopsNextAtProcessingInstruction) {
  Doc doc("<r>a<?p  x y ?>b</r>");
  doc->setFeature(ZQXmlParser::FEATURE_REPORT_PI, true);
  EXPECT_EQ(doc.trace(), "<r T(a) P(p) T(b) </r $");
  Doc again("<r><?p  x y ?></r>");
  again->setFeature(ZQXmlParser::FEATURE_REPORT_PI, true);
  again->next();
  ASSERT_EQ(again->next(), ZQXmlParser::PROCESSING_INSTRUCTION);
  EXPECT_EQ(again->getText(), u"x y");
  EXPECT_EQ(again->getName(), ZQName(u"p"));
}

TEST(XmlScanner, WhitespaceAtTopIsIgnorableAndSkippedByNext) {
  Doc doc(" <r/>\n ");
  EXPECT_EQ(doc.trace(), "<r/ </r $");
  Doc tokens(" <r/>\n ");
  EXPECT_EQ(tokens.trace(true), "W <r/ </r W $");
}

TEST(XmlScanner, IgnorableWhitespaceIsWhitespace) {
  Doc doc(" <r/>");
  ASSERT_EQ(doc->nextToken(), ZQXmlParser::IGNORABLE_WHITESPACE);
  EXPECT_TRUE(doc->isWhitespace());
  EXPECT_EQ(doc->getText(), u" ");
}

TEST(XmlScanner, DoctypeAndCommentsSkippedByNext) {
  Doc doc("<!DOCTYPE r><!--x--><r/>");
  EXPECT_EQ(doc.trace(), "<r/ </r $");
  Doc tokens("<!DOCTYPE r><!--x--><r/>");
  EXPECT_EQ(tokens.trace(true), "D C(x) <r/ </r $");
}

TEST(XmlScanner, TextBeforeSkippedCommentAndEndTagStops) {
  Doc doc("<r>a<!--c--></r>");
  EXPECT_EQ(doc.trace(), "<r T(a) </r $");
}

TEST(XmlScanner, CharacterReferenceAfterTextUnderNextIsText) {
  Doc doc("<r>&#65;</r>");
  doc->next();
  ASSERT_EQ(doc->next(), ZQXmlParser::TEXT);
  EXPECT_EQ(doc->getText(), u"A");
  EXPECT_FALSE(doc->isWhitespace());
}

// ---- The start of a document ----

TEST(XmlScanner, XmlDeclarationIsNoEventAndPiAtStartIs) {
  Doc doc("<?xml version='1.0'?><?p?><r/>");
  ASSERT_EQ(doc->nextToken(), ZQXmlParser::PROCESSING_INSTRUCTION);
  EXPECT_TRUE(doc->hasXmlDecl());
  EXPECT_EQ(doc->getTarget(), ZQName(u"p"));
  Doc first("<?p?><r/>");
  ASSERT_EQ(first->nextToken(), ZQXmlParser::PROCESSING_INSTRUCTION);
  EXPECT_FALSE(first->hasXmlDecl());
}

TEST(XmlScanner, ColumnCountsCharacterReadByDetection) {
  Doc doc("<r>");
  doc->nextToken();
  // "<r>" read: the "<" was taken by detection and put back.
  EXPECT_EQ(doc->getColumnNumber(), 3);
}

TEST(XmlScanner, WithoutInputEndsAtOnce) {
  ZQPtr<ScanParser> parser(new ScanParser());
  EXPECT_EQ(parser->next(), ZQXmlParser::END_DOCUMENT);
}

// ---- peekToken ----

TEST(XmlScanner, PeekClassesOfTokens) {
  struct Case {
    const char* text;
    int token;
  } cases[] = {
      {"<a", 3}, {"</a", 4}, {"x", 5}, {" ", 5}, {"&a;", 6}, {"<?p", 7}, {"<!--", 8}, {"", 9},
  };
  for (const Case& c : cases) {
    Doc doc(c.text);
    doc->start();
    EXPECT_EQ(doc->peek(), c.token) << c.text;
    EXPECT_EQ(doc->pendingToken(), c.token) << c.text;
    // Kept until consumed.
    EXPECT_EQ(doc->peek(), c.token) << c.text;
  }
}

TEST(XmlScanner, LessThanBeforeNonNameIsTextOnlyInHtml) {
  Doc xml("<r>a < b</r>");
  xml.trace();
  EXPECT_TRUE(xml.errors.has(132));
  Doc html("<html><body>a < b</body></html>");
  html->setHtml();
  EXPECT_EQ(html.trace(), "<html <body T(a < b) </body </html $");
  EXPECT_TRUE(html.errors.list.empty());
}

TEST(XmlScanner, RealU0xFFFFRaises180) {
  Doc doc("<r>\xEF\xBF\xBF</r>");
  doc->setFeature(ZQXmlParser::FEATURE_NO_CHARACTER_CHECK, true);
  doc.trace();
  EXPECT_TRUE(doc.errors.has(180));
}

TEST(XmlScanner, TextParserTypeReadsAllAsOneText) {
  Doc doc("<a>&amp;<!--x-->");
  doc->setParserType(ZQN_text, ZQN_html);
  ASSERT_EQ(doc->next(), ZQXmlParser::TEXT);
  EXPECT_EQ(doc->getText(), u"<a>&amp;<!--x-->");
  EXPECT_EQ(doc->next(), ZQXmlParser::END_DOCUMENT);
  EXPECT_TRUE(doc.errors.list.empty());
}

// ---- Names ----

TEST(XmlScanner, ReadNameTakesNcNameCharacters) {
  Doc doc(
      "<a-b.c\xC2\xB7\xCC\x80\xE2\x80\xBF"
      "9:x");
  doc->start();
  doc->read();
  EXPECT_EQ(doc->readName(), ZQName(u16("a-b.c\xC2\xB7\xCC\x80\xE2\x80\xBF"
                                        "9")));
  EXPECT_EQ(doc->read(), ':');
}

TEST(XmlScanner, ReadNameRefusesNonStartCharacter) {
  Doc doc("9a");
  doc->start();
  EXPECT_TRUE(doc->readName().isEmpty());
  EXPECT_EQ(doc->read(), '9');
  Doc dash("-a");
  dash->start();
  EXPECT_TRUE(dash->readName().isEmpty());
}

TEST(XmlScanner, ReadNameAtEndOfInput) {
  Doc doc("ab");
  doc->start();
  EXPECT_EQ(doc->readName(), ZQName(u"ab"));
  EXPECT_EQ(doc->read(), ZQXmlParserImpl::END_OF_INPUT);
}

TEST(XmlScanner, ReadQNameSplitsAtSingleColon) {
  Doc doc("p:l q r:");
  doc->start();
  ZQName prefix, local;
  EXPECT_TRUE(doc->readQName(prefix, local));
  EXPECT_EQ(prefix, ZQName(u"p"));
  EXPECT_EQ(local, ZQName(u"l"));
  doc->read();
  EXPECT_TRUE(doc->readQName(prefix, local));
  EXPECT_TRUE(prefix.isEmpty());
  EXPECT_EQ(local, ZQName(u"q"));
  doc->read();
  EXPECT_FALSE(doc->readQName(prefix, local));
  EXPECT_EQ(prefix, ZQName(u"r"));
  EXPECT_TRUE(local.isEmpty());
}

TEST(XmlScanner, SecondColonEndsTheName) {
  Doc doc("<a:b:c/>");
  doc->next();
  EXPECT_TRUE(doc.errors.has(139) || doc.errors.has(140));
  EXPECT_EQ(doc->getName(), ZQName(u"b"));
}

// ---- Start tags and attributes ----

TEST(XmlScanner, AttributesInOrderWithValues) {
  Doc doc("<a x='1' y=\"2\"  z = '3'/>");
  doc.toStartTag();
  ASSERT_EQ(doc->getAttributeCount(), 3);
  EXPECT_EQ(doc->getAttributeName(0), ZQName(u"x"));
  EXPECT_EQ(doc->getAttributeValue(1), u"2");
  EXPECT_EQ(doc->getAttributeName(2), ZQName(u"z"));
  EXPECT_EQ(doc->getAttributeValue(ZQName(), ZQName(u"z")), u"3");
  EXPECT_TRUE(doc->getAttributeNamespace(0).isEmpty());
  EXPECT_TRUE(doc.errors.list.empty());
}

TEST(XmlScanner, AttributeLineFeedReadsAsSpaceAndReferenceAsLineFeed) {
  Doc doc("<a x='1\n2' y='1&#10;2' z='\t&#9;'/>");
  doc.toStartTag();
  EXPECT_EQ(doc->getAttributeValue(0), u"1 2");
  EXPECT_EQ(doc->getAttributeValue(1), u"1\n2");
  EXPECT_EQ(doc->getAttributeValue(2), u" \t");
}

TEST(XmlScanner, AttributeEntityExpandsThroughTheSameNormalisation) {
  Doc doc("<a x='[&e;]' y='&lt;&amp;'/>");
  doc->defineEntityReplacementText(ZQName(u"e"), u"p\tq&f;");
  doc->defineEntityReplacementText(ZQName(u"f"), u"!");
  doc.toStartTag();
  EXPECT_EQ(doc->getAttributeValue(0), u"[p q!]");
  EXPECT_EQ(doc->getAttributeValue(1), u"<&");
  EXPECT_TRUE(doc.errors.list.empty());
}

TEST(XmlScanner, MissingWhitespaceBetweenAttributesRaises139) {
  EXPECT_EQ(thrownCode("<a b='1'c='2'/>"), 139);
}

TEST(XmlScanner, JunkAfterAttributesRaises140) {
  Doc doc("<a b='1'!>");
  doc->next();
  EXPECT_EQ(doc.errors.codes(), std::vector<int>({140}));
  EXPECT_EQ(doc.errors.list[0].getRawMessage(), u"Unexpected character: !");
}

TEST(XmlScanner, WhitespaceAfterLessThanRaises141) {
  Doc doc("< a/>");
  doc->next();
  ASSERT_FALSE(doc.errors.list.empty());
  EXPECT_EQ(doc.errors.list[0].getErrorCode(), 141);
  EXPECT_EQ(doc.errors.list[0].getRawMessage(), u"Unexpected whitespace after '<'.");
}

TEST(XmlScanner, MissingStartTagNameRaises132) {
  EXPECT_EQ(thrownCode("<1a/>"), 132);
  EXPECT_EQ(thrownCode("<p:/>"), 132);
}

TEST(XmlScanner, AttributePrefixWithoutLocalNameRaises137) {
  Doc doc("<a p:='1'/>");
  doc->next();
  ASSERT_FALSE(doc.errors.list.empty());
  EXPECT_EQ(doc.errors.list[0].getErrorCode(), 137);
  EXPECT_EQ(doc.errors.list[0].getRawMessage(), u"Invalid attribute name: p:");
}

TEST(XmlScanner, MissingEqualsRaises138) {
  Doc doc("<a b '1'/>");
  doc->next();
  EXPECT_EQ(doc.errors.codes(), std::vector<int>({138}));
  EXPECT_EQ(doc->getAttributeValue(0), u"1");
}

TEST(XmlScanner, BadAttributeNameRaises189WithItsText) {
  Doc doc("<a '1'/>");
  doc->next();
  ASSERT_FALSE(doc.errors.list.empty());
  EXPECT_EQ(doc.errors.list[0].getErrorCode(), 189);
  EXPECT_EQ(doc.errors.list[0].getRawMessage(), u"Empty attribute name: '1'");
  Doc unquoted("<a 1=2>");
  unquoted->next();
  ASSERT_FALSE(unquoted.errors.list.empty());
  EXPECT_EQ(unquoted.errors.list[0].getRawMessage(), u"Empty attribute name: 1=2");
}

TEST(XmlScanner, UnquotedValueRaises174OutsideHtml) {
  Doc doc("<a b=1/>");
  doc->next();
  EXPECT_EQ(doc.errors.codes(), std::vector<int>({174}));
  EXPECT_EQ(doc->getAttributeValue(0), u"1");
  EXPECT_TRUE(doc->isEmptyElementTag());
}

TEST(XmlScanner, HtmlTakesUnquotedValuesMissingEqualsAndMissingSpace) {
  Doc doc("<html a=1 b c='x'd=2/>");
  doc->setHtml();
  doc.toStartTag();
  EXPECT_TRUE(doc.errors.list.empty());
  ASSERT_EQ(doc->getAttributeCount(), 4);
  EXPECT_EQ(doc->getAttributeValue(0), u"1");
  EXPECT_EQ(doc->getAttributeName(1), ZQName(u"b"));
  EXPECT_EQ(doc->getAttributeValue(1), u"");
  EXPECT_EQ(doc->getAttributeValue(2), u"x");
  EXPECT_EQ(doc->getAttributeValue(3), u"2");
  EXPECT_TRUE(doc->isEmptyElementTag());
}

TEST(XmlScanner, LessThanInValueRaises176ExceptQuotedInHtml) {
  Doc doc("<a b='x<y'/>");
  doc->next();
  EXPECT_EQ(doc.errors.codes(), std::vector<int>({176}));
  EXPECT_EQ(doc->getAttributeValue(0), u"x<y");
  Doc html("<html b='x<y' c=x<y></html>");
  html->setHtml();
  html->next();
  EXPECT_EQ(html.errors.codes(), std::vector<int>({176}));
  EXPECT_EQ(html->getAttributeValue(0), u"x<y");
  EXPECT_EQ(html->getAttributeValue(1), u"x<y");
}

TEST(XmlScanner, DuplicateAttributeRaises136) {
  Doc doc("<a b='1' b='2'/>");
  doc->next();
  ASSERT_EQ(doc.errors.codes(), std::vector<int>({136}));
  EXPECT_EQ(doc.errors.list[0].getRawMessage(), u"Duplicate attribute: b");
}

TEST(XmlScanner, TwoPrefixesOfOneNamespaceCollide) {
  Doc doc("<a xmlns:p='u' xmlns:q='u' p:x='1' q:x='2'/>");
  doc->next();
  ASSERT_EQ(doc.errors.codes(), std::vector<int>({136}));
  EXPECT_EQ(doc.errors.list[0].getRawMessage(), u"Duplicate attribute: q:x");
  EXPECT_EQ(thrownCode("<a xmlns:p='u' xmlns:q='u' p:x='1' q:x='2'/>"), 136);
}

TEST(XmlScanner, DuplicateCheckWaitsForDeclarationsAfterTheAttribute) {
  Doc doc("<a p:x='1' q:x='2' xmlns:p='u' xmlns:q='u'/>");
  doc->next();
  EXPECT_EQ(doc.errors.codes(), std::vector<int>({136}));
}

TEST(XmlScanner, SameLocalNameInDifferentNamespacesIsFine) {
  Doc doc("<a xmlns:p='u' xmlns:q='v' p:x='1' q:x='2' x='3'/>");
  doc.toStartTag();
  EXPECT_TRUE(doc.errors.list.empty());
  EXPECT_EQ(doc->getAttributeNamespace(2), ZQName(u"u"));
  EXPECT_EQ(doc->getAttributeNamespace(3), ZQName(u"v"));
  EXPECT_TRUE(doc->getAttributeNamespace(4).isEmpty());
}

TEST(XmlScanner, XmlnsAttributesDeclareAndStayInTheList) {
  Doc doc("<p:a xmlns='d' xmlns:p='u'><b/></p:a>");
  doc.toStartTag();
  EXPECT_EQ(doc->getNamespace(), ZQName(u"u"));
  EXPECT_EQ(doc->getPrefix(), ZQName(u"p"));
  ASSERT_EQ(doc->getAttributeCount(), 2);
  EXPECT_EQ(doc->getAttributeNamespace(0), ZQName(ZQN_NS_XMLNS));
  EXPECT_EQ(doc->getAttributeNamespace(1), ZQName(ZQN_NS_XMLNS));
  EXPECT_EQ(doc->getNamespaceCount(1), 2);
  ASSERT_EQ(doc->next(), ZQXmlParser::START_TAG);
  EXPECT_EQ(doc->getNamespace(), ZQName(u"d"));
}

TEST(XmlScanner, EmptyDefaultNamespaceUndeclares) {
  Doc doc("<a xmlns='d'><b xmlns=''/></a>");
  doc.toStartTag();
  doc->next();
  EXPECT_TRUE(doc->getNamespace().isEmpty());
}

TEST(XmlScanner, UndeclaredElementPrefixRaises135) {
  Doc doc("<p:a/>");
  doc->next();
  ASSERT_EQ(doc.errors.codes(), std::vector<int>({135}));
  EXPECT_EQ(doc.errors.list[0].getRawMessage(), u"Undeclared namespace prefix: p");
}

TEST(XmlScanner, UndeclaredAttributePrefixRaises135UnlessAllowed) {
  Doc doc("<a p:x='1'/>");
  doc->next();
  EXPECT_EQ(doc.errors.codes(), std::vector<int>({135}));
  Doc allowed("<a p:x='1'/>");
  allowed->setFeature(ZQXmlParser::FEATURE_ALLOW_UNDECLARED_PREFIX, true);
  allowed.toStartTag();
  EXPECT_TRUE(allowed.errors.list.empty());
  EXPECT_EQ(allowed->getAttributeNamespace(0), ZQName(u"p"));
  // The feature doesn't cover elements.
  Doc element("<p:a/>");
  element->setFeature(ZQXmlParser::FEATURE_ALLOW_UNDECLARED_PREFIX, true);
  element->next();
  EXPECT_EQ(element.errors.codes(), std::vector<int>({135}));
}

TEST(XmlScanner, HtmlTakesUndeclaredPrefixesAsNamespaces) {
  Doc doc("<html p:x='1'><q:b/></html>");
  doc->setHtml();
  doc.toStartTag();
  EXPECT_EQ(doc->getAttributeNamespace(0), ZQName(u"p"));
  doc->next();
  EXPECT_TRUE(doc.errors.list.empty());
}

TEST(XmlScanner, XmlPrefixIsBuiltIn) {
  Doc doc("<a xml:lang='en'/>");
  doc.toStartTag();
  EXPECT_EQ(doc->getAttributeNamespace(0), ZQName(ZQN_NS_XML));
  EXPECT_TRUE(doc.errors.list.empty());
}

TEST(XmlScanner, SecondRootRaises130AtItsStartTag) {
  Doc doc("<a/><b/>");
  EXPECT_EQ(doc.trace(), "<a/ </a <b/ </b $");
  EXPECT_EQ(doc.errors.codes(), std::vector<int>({130}));
  EXPECT_EQ(thrownCode("<a/><b/>"), 130);
}

// ---- Empty-element tags ----

TEST(XmlScanner, WhitespaceAfterSlashIsQueuedNotThrown) {
  Doc doc("<a/ >", true);
  ASSERT_EQ(doc->next(), ZQXmlParser::START_TAG);
  EXPECT_TRUE(doc->isEmptyElementTag());
  ZQError error;
  ASSERT_TRUE(doc->popError(error));
  EXPECT_EQ(error.getErrorCode(), 770);
  EXPECT_TRUE(error.getRawMessage().startsWith(u"Unexpected whitespace after '/'."));
  EXPECT_EQ(doc->next(), ZQXmlParser::END_TAG);
  EXPECT_EQ(doc->next(), ZQXmlParser::END_DOCUMENT);
}

TEST(XmlScanner, EmptyTagTailReportsFirstOfEachKindOnly) {
  Doc doc("<a/ x y  >");
  doc->next();
  EXPECT_EQ(doc.errors.codes(), std::vector<int>({770, 140}));
  EXPECT_EQ(doc.errors.list[1].getRawMessage(), u"Unexpected character: x");
  EXPECT_TRUE(doc->isEmptyElementTag());
}

TEST(XmlScanner, EmptyTagTailCodesOfHtmlAndXhtml) {
  Doc html("<html/ x>");
  html->setHtml();
  html->next();
  EXPECT_EQ(html.errors.codes(), std::vector<int>({898, 897}));
  Doc xhtml("<html/ x>");
  xhtml->setParserType(ZQN_xhtml, ZQN_html);
  xhtml->next();
  EXPECT_EQ(xhtml.errors.codes(), std::vector<int>({898, 897}));
}

TEST(XmlScanner, EmptyTagTailAtEndRaisesCommentMessage) {
  Doc doc("<a/");
  EXPECT_EQ(doc->next(), ZQXmlParser::START_TAG);
  ASSERT_FALSE(doc.errors.list.empty());
  EXPECT_EQ(doc.errors.list[0].getErrorCode(), 146);
}

// ---- Root namespaces ----

TEST(XmlScanner, SvgRootGetsSvgAndXlinkNamespaces) {
  Doc doc("<svg/>");
  doc.toStartTag();
  EXPECT_EQ(doc->getNamespace(), ZQName(ZQN_NS_SVG));
  EXPECT_EQ(doc->getNamespace(ZQName(ZQN_xlink)), ZQName(ZQN_NS_XLINK));
}

TEST(XmlScanner, ChartRootGetsVendorNamespace) {
  Doc doc("<chart xlink:href='x'/>");
  doc.toStartTag();
  EXPECT_EQ(doc->getNamespace().toString(), u"http://www.zqcommon.org/names/ChartML");
  EXPECT_EQ(doc->getAttributeNamespace(0), ZQName(ZQN_NS_XLINK));
  EXPECT_TRUE(doc.errors.list.empty());
}

TEST(XmlScanner, SvgRootKeepsDeclaredNamespaces) {
  Doc doc("<svg xmlns='u' xmlns:xlink='v'/>");
  doc.toStartTag();
  EXPECT_EQ(doc->getNamespace(), ZQName(u"u"));
  EXPECT_EQ(doc->getNamespace(ZQName(ZQN_xlink)), ZQName(u"v"));
}

TEST(XmlScanner, PrefixedSvgRootGetsOnlyXlink) {
  Doc doc("<s:svg xmlns:s='u'/>");
  doc.toStartTag();
  EXPECT_EQ(doc->getNamespace(), ZQName(u"u"));
  EXPECT_TRUE(doc->getNamespace(ZQName()).isEmpty());
  EXPECT_EQ(doc->getNamespace(ZQName(ZQN_xlink)), ZQName(ZQN_NS_XLINK));
}

TEST(XmlScanner, SvgBelowTheRootGetsNothing) {
  Doc doc("<r><svg/></r>");
  doc.toStartTag();
  doc->next();
  EXPECT_TRUE(doc->getNamespace().isEmpty());
  EXPECT_TRUE(doc->getNamespace(ZQName(ZQN_xlink)).isEmpty());
}

TEST(XmlScanner, RootInHtmlGetsXhtmlNamespaceAndEntities) {
  Doc doc("<html>&nbsp;</html>");
  doc->setHtml();
  doc.toStartTag();
  EXPECT_EQ(doc->getNamespace(), ZQName(ZQN_NS_XHTML));
  ASSERT_EQ(doc->next(), ZQXmlParser::TEXT);
  EXPECT_EQ(doc->getText(), u"\u00A0");
}

TEST(XmlScanner, RootInXhtmlGetsXhtmlEntitiesButNoNamespace) {
  Doc doc("<html>&nbsp;</html>");
  doc->setParserType(ZQN_xhtml, ZQN_html);
  doc.toStartTag();
  EXPECT_TRUE(doc->getNamespace().isEmpty());
  ASSERT_EQ(doc->next(), ZQXmlParser::TEXT);
  EXPECT_EQ(doc->getText(), u"\u00A0");
  Doc xml("<html>&nbsp;</html>");
  xml->setParserType(ZQN_xml, ZQN_html);
  xml.trace();
  EXPECT_TRUE(xml.errors.has(515));
}

// ---- End tags ----

TEST(XmlScanner, MismatchedEndTagRaises134AndClosesAnyway) {
  Doc doc("<p:a xmlns:p='u'><b></c></p:a>");
  EXPECT_EQ(doc.trace(), "<p:a <b </b </p:a $");
  ASSERT_EQ(doc.errors.codes(), std::vector<int>({134}));
  EXPECT_EQ(doc.errors.list[0].getRawMessage(), u"End tag 'c' does not match the start tag 'b'.");
}

TEST(XmlScanner, EndTagsCompareNamesNotNamespaces) {
  Doc doc("<p:a xmlns:p='u' xmlns:q='u'></q:a>");
  doc.trace();
  EXPECT_EQ(doc.errors.codes(), std::vector<int>({134}));
  EXPECT_EQ(doc.errors.list[0].getRawMessage(),
            u"End tag 'q:a' does not match the start tag 'p:a'.");
}

TEST(XmlScanner, EndTagErrors) {
  Doc space("<a></ a>");
  space.trace();
  ASSERT_FALSE(space.errors.list.empty());
  EXPECT_EQ(space.errors.list[0].getErrorCode(), 141);
  EXPECT_EQ(space.errors.list[0].getRawMessage(), u"Unexpected whitespace after '</'.");
  EXPECT_EQ(thrownCode("<a></1>"), 133);
  // Only the character is taken; the rest reads as text, here at the top level.
  Doc junk("<a></a x>");
  junk.trace();
  EXPECT_EQ(junk.errors.codes(), std::vector<int>({140, 142}));
  Doc spaced("<a></a  >");
  EXPECT_EQ(spaced.trace(), "<a </a $");
  EXPECT_TRUE(spaced.errors.list.empty());
}

TEST(XmlScanner, HtmlMismatchUsesCode513AndThrowsAs134) {
  Doc doc("<html><b></c></html>");
  doc->setParserType(ZQN_html, ZQN_html);
  doc.trace();
  EXPECT_TRUE(doc.errors.has(513));
  Doc thrown("<html><b></c></html>", true);
  thrown->setHtml();
  try {
    thrown.trace();
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 134);
  }
}

TEST(XmlScanner, EndTagAtTopLevelDoesNotBreakTheStack) {
  // The event names the open element, and none is open.
  Doc doc("</a>");
  EXPECT_EQ(doc.trace(), "</ $");
  EXPECT_EQ(doc.errors.codes(), std::vector<int>({134}));
  EXPECT_EQ(doc->getDepth(), 0);
}

// ---- Text ----

TEST(XmlScanner, CdataEndInTextRaises144) {
  Doc doc("<r>a]]>b</r>");
  EXPECT_EQ(doc.trace(), "<r T(a]]>b) </r $");
  EXPECT_EQ(doc.errors.codes(), std::vector<int>({144}));
  EXPECT_EQ(thrownCode("<r>a]]>b</r>"), 144);
}

TEST(XmlScanner, DoubleBracketWithoutGreaterIsText) {
  Doc doc("<r>]]x]]]>]</r>");
  EXPECT_EQ(doc.trace(), "<r T(]]x]]]>]) </r $");
  // Only the last three of "]]]>" end a section.
  EXPECT_EQ(doc.errors.codes(), std::vector<int>({144}));
  Doc plain("<r>a]]b]</r>");
  EXPECT_EQ(plain.trace(), "<r T(a]]b]) </r $");
  EXPECT_TRUE(plain.errors.list.empty());
}

TEST(XmlScanner, TextAtTopLevelRaises142WithCodePoint) {
  Doc doc("x<r/>");
  doc.trace();
  ASSERT_FALSE(doc.errors.list.empty());
  EXPECT_EQ(doc.errors.list[0].getErrorCode(), 142);
  EXPECT_EQ(doc.errors.list[0].getRawMessage(),
            u"Unexpected text at top level of the XML document: U+0078 (x)");
  EXPECT_EQ(thrownCode("<r/> z"), 142);
}

TEST(XmlScanner, HtmlTextBeforeRootIsCollectedThenReportedOnce) {
  Doc doc(" ab <html></html>");
  doc->setHtml();
  doc.trace(true);
  EXPECT_EQ(doc.errors.codes(), std::vector<int>({142}));
  EXPECT_EQ(doc.errors.list[0].getRawMessage(),
            u"Unexpected text at top level of the XML document: U+0061 (a)");
}

TEST(XmlScanner, HtmlClosesOpenElementsAtEndWithoutError) {
  Doc doc("<html><body><p>x");
  doc->setHtml();
  EXPECT_EQ(doc.trace(), "<html <body <p T(x) </p </body </html $");
  EXPECT_TRUE(doc.errors.list.empty());
}

TEST(XmlScanner, MissingEndTagRaises129) {
  Doc doc("<a><b>");
  EXPECT_EQ(doc.trace(), "<a <b $");
  EXPECT_EQ(doc.errors.codes(), std::vector<int>({129}));
  EXPECT_EQ(thrownCode("<a><b>"), 129);
}

TEST(XmlScanner, NextAfterCaughtErrorEndsTheDocument) {
  Doc doc("<a/>x<b/>", true);
  EXPECT_THROW(doc.trace(), ZQError);
  EXPECT_EQ(doc->next(), ZQXmlParser::END_DOCUMENT);
}

TEST(XmlScanner, NextAfterErrorInXmlDeclarationEndsTheDocument) {
  Doc doc("<?xml version=\"2.0\"?><r/>", true);
  try {
    doc->next();
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 166);
  }
  EXPECT_EQ(doc->next(), ZQXmlParser::END_DOCUMENT);
}

TEST(XmlScanner, NextAfterCaughtErrorWithOpenElementsRaises129) {
  Doc doc("<a><b b='1' b='2'/>text</a>", true);
  doc->next();
  try {
    doc->next();
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 136);
  }
  try {
    doc->next();
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 129);
  }
}

// ---- CDATA sections ----

TEST(XmlScanner, CdataSectionKeepsMarkupAndBrackets) {
  Doc doc("<r><![CDATA[a]b]]c<&>]]]></r>");
  doc->nextToken();
  ASSERT_EQ(doc->nextToken(), ZQXmlParser::CDSECT);
  EXPECT_EQ(doc->getText(), u"a]b]]c<&>]");
  EXPECT_FALSE(doc->isWhitespace());
}

TEST(XmlScanner, CdataAfterBracketsInTextEndsByItsOwnBrackets) {
  Doc doc("<r>x]]<![CDATA[>y]]></r>");
  EXPECT_EQ(doc.trace(), "<r T(x]]>y) </r $");
}

TEST(XmlScanner, CdataErrors) {
  Doc bad("<r><![CDATA(x]]></r>");
  bad.trace();
  EXPECT_EQ(bad.errors.codes(), std::vector<int>({168}));
  Doc open("<r><![CDATA[x");
  open.trace();
  EXPECT_EQ(open.errors.codes(), std::vector<int>({145, 129}));
}

TEST(XmlScanner, OtherSectionInContentIsDroppedSilently) {
  Doc doc("<r>a<![IGNORE[ <x> ]]>b<![X[]]></r>");
  EXPECT_EQ(doc.trace(), "<r T(ab) </r $");
  EXPECT_TRUE(doc.errors.list.empty());
  Doc tokens("<r><a/><![X[ y ]]></r>");
  EXPECT_EQ(tokens.trace(true), "<r <a/ </a </r $");
  Doc open("<r><![X[ y");
  open.trace();
  EXPECT_EQ(open.errors.codes(), std::vector<int>({145, 129}));
}

// ---- Comments ----

TEST(XmlScanner, CommentText) {
  Doc doc("<!-- a - b --><r/>");
  ASSERT_EQ(doc->nextToken(), ZQXmlParser::COMMENT);
  EXPECT_EQ(doc->getText(), u" a - b ");
}

TEST(XmlScanner, DoubleDashInCommentIsQueued771) {
  Doc doc("<!-- a -- b --><r/>", true);
  ASSERT_EQ(doc->nextToken(), ZQXmlParser::COMMENT);
  EXPECT_EQ(doc->getText(), u" a -- b ");
  ZQError error;
  ASSERT_TRUE(doc->popError(error));
  EXPECT_EQ(error.getErrorCode(), 771);
  EXPECT_TRUE(error.getRawMessage().startsWith(u"Unexpected character '--' in comment"));
}

TEST(XmlScanner, ExtraDashesBeforeEndPassInHtmlOnly) {
  Doc html("<!-- a ---><html/>");
  html->setHtml();
  ASSERT_EQ(html->nextToken(), ZQXmlParser::COMMENT);
  EXPECT_EQ(html->getText(), u" a -");
  EXPECT_TRUE(html.errors.list.empty());
  Doc xml("<r><!-- a --->--></r>");
  xml.trace(true);
  EXPECT_EQ(xml.errors.codes(), std::vector<int>({771}));
  Doc htmlDash("<!-- a -- b --><html/>");
  htmlDash->setHtml();
  htmlDash->nextToken();
  EXPECT_EQ(htmlDash.errors.codes(), std::vector<int>({899}));
}

TEST(XmlScanner, CommentStartingWithGreaterRaises897) {
  Doc doc("<!-->x--><r/>");
  ASSERT_EQ(doc->nextToken(), ZQXmlParser::COMMENT);
  EXPECT_EQ(doc.errors.codes(), std::vector<int>({897}));
  EXPECT_EQ(doc->getText(), u">x");
  // Thrown as 140 without a callback.
  EXPECT_EQ(thrownCode("<!-->x--><r/>", true), 140);
}

TEST(XmlScanner, CommentErrors) {
  Doc single("<!-x--><r/>");
  ASSERT_EQ(single->nextToken(), ZQXmlParser::COMMENT);
  EXPECT_EQ(single.errors.codes(), std::vector<int>({169}));
  for (const char* text : {"<!-- x", "<!-- x -", "<!-- x --"}) {
    Doc open(text);
    EXPECT_EQ(open->nextToken(), ZQXmlParser::COMMENT) << text;
    EXPECT_EQ(open.errors.codes(), std::vector<int>({146})) << text;
    EXPECT_EQ(open->nextToken(), ZQXmlParser::END_DOCUMENT) << text;
  }
}

// ---- Processing instructions ----

TEST(XmlScanner, ProcessingInstructionTargetAndTrimmedContent) {
  Doc doc("<r><?tgt \n a ? b \t?></r>");
  doc->nextToken();
  ASSERT_EQ(doc->nextToken(), ZQXmlParser::PROCESSING_INSTRUCTION);
  EXPECT_EQ(doc->getTarget(), ZQName(u"tgt"));
  EXPECT_EQ(doc->getName(), ZQName(u"tgt"));
  EXPECT_EQ(doc->getText(), u"a ? b");
}

TEST(XmlScanner, EmptyProcessingInstruction) {
  Doc doc("<r><?tgt?></r>");
  doc->nextToken();
  ASSERT_EQ(doc->nextToken(), ZQXmlParser::PROCESSING_INSTRUCTION);
  EXPECT_EQ(doc->getText(), u"");
  EXPECT_TRUE(doc.errors.list.empty());
}

TEST(XmlScanner, ProcessingInstructionErrors) {
  Doc upper("<r><?XmL x?></r>");
  upper.trace();
  ASSERT_EQ(upper.errors.codes(), std::vector<int>({171}));
  EXPECT_EQ(upper.errors.list[0].getRawMessage(), u"The name 'xml' must be lower case: <?XmL");
  Doc nospace("<r><?t!x?></r>");
  nospace->nextToken();
  ASSERT_EQ(nospace->nextToken(), ZQXmlParser::PROCESSING_INSTRUCTION);
  EXPECT_EQ(nospace.errors.codes(), std::vector<int>({172}));
  EXPECT_EQ(nospace->getText(), u"!x");
  Doc open("<r><?t x");
  open.trace(true);
  EXPECT_EQ(open.errors.codes(), std::vector<int>({173, 129}));
}

// ---- Declarations in content ----

TEST(XmlScanner, DoctypeInOtherCaseIsTakenForHtml) {
  Doc doc("<!doctype HTML><r/>");
  ASSERT_EQ(doc->nextToken(), ZQXmlParser::DOCDECL);
  EXPECT_TRUE(doc.errors.list.empty());
  Doc xml("<!Doctype  html><r/>");
  ASSERT_EQ(xml->nextToken(), ZQXmlParser::DOCDECL);
}

TEST(XmlScanner, DoctypeInOtherCaseForOtherRootRaises170) {
  Doc doc("<!doctype r><r/>");
  doc.trace(true);
  ASSERT_FALSE(doc.errors.list.empty());
  EXPECT_EQ(doc.errors.list[0].getErrorCode(), 170);
  EXPECT_EQ(doc.errors.list[0].getRawMessage(), u"Unexpected '<!doctype'.");
}

TEST(XmlScanner, UnknownDeclarationRaises170) {
  Doc doc("<r><!ELEMENT r ANY></r>");
  doc.trace(true);
  ASSERT_FALSE(doc.errors.list.empty());
  EXPECT_EQ(doc.errors.list[0].getRawMessage(), u"Unexpected '<!ELEMENT'.");
}

TEST(XmlScanner, DroppedSectionRepeatsNoEvent) {
  Doc doc("<![X[]]><r><![X[]]>a<![X[]]><![X[]]><b/><![X[]]></r>");
  EXPECT_EQ(doc.trace(), "<r T(a) <b/ </b </r $");
  Doc tokens("<![X[]]><r><![X[]]>a<![X[]]><![X[]]><b/><![X[]]></r>");
  EXPECT_EQ(tokens.trace(true), "<r T(a) <b/ </b </r $");
}

// An XML declaration out of place is reported and read over: the event before it is not
// given again, so an end tag is not popped twice and the document is not started again.
TEST(XmlScanner, MisplacedXmlDeclarationRepeatsNoEvent) {
  const char* text = "<r><a></a><?xml version='1.0'?><b/>t<?xml version='1.0'?>u</r>";
  Doc doc(text);
  EXPECT_EQ(doc.trace(), "<r <a </a <b/ </b T(tu) </r $");
  EXPECT_EQ(doc.errors.codes(), std::vector<int>({161, 161}));
  Doc tokens(text);
  EXPECT_EQ(tokens.trace(true), "<r <a </a <b/ </b T(t) T(u) </r $");
  EXPECT_EQ(tokens.errors.codes(), std::vector<int>({161, 161}));
}

TEST(XmlScanner, SecondXmlDeclarationAtTheTopIsNoEvent) {
  Doc doc("<?xml version='1.0'?><?xml version='1.0'?><r/>");
  EXPECT_EQ(doc.trace(), "<r/ </r $");
  // After a dropped section the event is still the start: the declaration that follows is
  // read as one, and the scan goes on to the end instead of starting over.
  Doc dropped("<![X[]]><?xml version='1.0'?><r/>");
  EXPECT_EQ(dropped.trace(), "<r/ </r $");
  EXPECT_TRUE(dropped.errors.list.empty());
}

// ---- Literals ----

namespace {

/// readLiteral(mode) on `text`, read from its start; what follows stays for `rest`.
struct Literal {
  Doc doc;
  UnicodeString value;
  UnicodeString rest;
  Literal(const std::string& text, int mode, bool html = false) : doc("<" + text) {
    if (html) doc->setHtml();
    doc->start();
    doc->read();
    value = doc->readLiteral(mode);
    for (UChar32 c = doc->read(); c != ZQXmlParserImpl::END_OF_INPUT; c = doc->read())
      rest.append(c);
  }
};

}  // namespace

TEST(XmlScannerLiteral, Mode0KeepsReferencesAndNeedsQuotes) {
  Literal lit("'a&amp;b\tc'>", 0);
  EXPECT_EQ(lit.value, u"a&amp;b c");
  EXPECT_EQ(lit.rest, u">");
  EXPECT_TRUE(lit.doc.errors.list.empty());
  Literal bare("abc def", 0);
  EXPECT_EQ(bare.value, u"abc");
  EXPECT_EQ(bare.rest, u" def");
  EXPECT_EQ(bare.doc.errors.codes(), std::vector<int>({174}));
}

TEST(XmlScannerLiteral, Mode1ExpandsReferences) {
  Literal lit("\"&#65;&lt;&#x9;\" x", 1);
  EXPECT_EQ(lit.value, u"A<\t");
  EXPECT_EQ(lit.rest, u" x");
  EXPECT_TRUE(lit.doc.errors.list.empty());
}

TEST(XmlScannerLiteral, Mode1UndefinedEntityRaises515AndReadsAsNothing) {
  Literal lit("'a&u;b'", 1);
  EXPECT_EQ(lit.value, u"ab");
  ASSERT_EQ(lit.doc.errors.codes(), std::vector<int>({515}));
  EXPECT_EQ(lit.doc.errors.list[0].getRawMessage(), u"Reference to undefined entity: &u;");
}

TEST(XmlScannerLiteral, Mode2ExpandsCharactersAndKeepsGeneralReferences) {
  Doc doc("<'&#38;#60;&lt;&amp;\n'");
  doc->start();
  doc->read();
  EXPECT_EQ(doc->readLiteral(2), u"&#60;&lt;&amp; ");
}

TEST(XmlScannerLiteral, Mode2UndefinedGeneralReferenceIsReportedAndKept) {
  Literal lit("'&u;'", 2);
  EXPECT_EQ(lit.value, u"&u;");
  EXPECT_EQ(lit.doc.errors.codes(), std::vector<int>({515}));
}

TEST(XmlScannerLiteral, Mode3EndsAtQuoteOrSlashAndEndOfInputIsFine) {
  Literal lit("ab\"c", 3);
  EXPECT_EQ(lit.value, u"ab");
  EXPECT_EQ(lit.rest, u"\"c");
  Literal slash("ab/c", 3);
  EXPECT_EQ(slash.value, u"ab");
  EXPECT_EQ(slash.rest, u"/c");
  Literal end("ab", 3);
  EXPECT_EQ(end.value, u"ab");
  EXPECT_TRUE(end.doc.errors.list.empty() && lit.doc.errors.list.empty());
}

TEST(XmlScannerLiteral, Mode4KeepsQuotesAroundTheText) {
  Literal quoted("'a&b' c", 4);
  EXPECT_EQ(quoted.value, u"'a&b'");
  EXPECT_EQ(quoted.rest, u" c");
  Literal open("'ab", 4);
  EXPECT_EQ(open.value, u"'ab");
  EXPECT_TRUE(open.doc.errors.list.empty());
  Literal bare("a/b/>", 4);
  EXPECT_EQ(bare.value, u"a/b");
  EXPECT_EQ(bare.rest, u"/>");
}

TEST(XmlScannerLiteral, UnquotedEndsAtWhitespaceGreaterOrSlashGreater) {
  Literal space("ab c", 1, true);
  EXPECT_EQ(space.value, u"ab");
  Literal greater("ab>c", 1, true);
  EXPECT_EQ(greater.value, u"ab");
  EXPECT_EQ(greater.rest, u">c");
  Literal slash("a/b/>", 1, true);
  EXPECT_EQ(slash.value, u"a/b");
  EXPECT_EQ(slash.rest, u"/>");
  EXPECT_TRUE(slash.doc.errors.list.empty());
}

TEST(XmlScannerLiteral, EndOfInputRaises175WithDelimiter) {
  Literal lit("'ab", 1);
  EXPECT_EQ(lit.value, u"ab");
  ASSERT_EQ(lit.doc.errors.codes(), std::vector<int>({175}));
  EXPECT_EQ(lit.doc.errors.list[0].getRawMessage(),
            u"Unexpected end of input while looking for literal terminator (').");
  Literal zero("\"ab", 0);
  EXPECT_EQ(zero.doc.errors.codes(), std::vector<int>({175}));
}

TEST(XmlScannerLiteral, ErrorsInsideCarryTheirPositionInTheLiteral) {
  Doc doc("<r>\n  <a b='xy\nz<w'/></r>");
  doc.toStartTag();
  doc.toStartTag();
  ASSERT_EQ(doc.errors.codes(), std::vector<int>({176}));
  EXPECT_EQ(doc.errors.list[0].getLineNumber(), 3);
  EXPECT_EQ(doc.errors.list[0].getColumnNumber(), 2);
  // And the reader is back where the literal ended.
  EXPECT_EQ(doc->getLineNumber(), 3);
  EXPECT_EQ(doc->getColumnNumber(), 6);
}

TEST(XmlScannerLiteral, InputStackIsRestoredAfterAThrownError) {
  Doc doc("<a b='x<y'/>", true);
  EXPECT_THROW(doc->next(), ZQError);
  EXPECT_EQ(doc->inputDepth(), 0u);
  EXPECT_EQ(doc->getLineNumber(), 1);
}

// ---- References ----

namespace {

/// readReference on what follows "&" in `text`.
struct Reference {
  Doc doc;
  UnicodeString out;
  ZQName name;
  UnicodeString rest;
  Reference(const std::string& text, bool expand, bool html = false) : doc("<" + text) {
    if (html) doc->setHtml();
    doc->start();
    doc->read();
    doc->readReference(out, name, expand);
    for (UChar32 c = doc->read(); c != ZQXmlParserImpl::END_OF_INPUT; c = doc->read())
      rest.append(c);
  }
};

}  // namespace

TEST(XmlScannerReference, NamedWithAndWithoutExpansion) {
  Reference kept("amp;x", false);
  EXPECT_EQ(kept.name, ZQName(ZQN_amp));
  EXPECT_TRUE(kept.out.isBogus());
  EXPECT_EQ(kept.rest, u"x");
  Reference expanded("amp;x", true);
  EXPECT_EQ(expanded.out, u"&#38;");
  Reference unknown("zz;", true);
  EXPECT_EQ(unknown.name, ZQName(u"zz"));
  EXPECT_TRUE(unknown.out.isBogus());
  EXPECT_TRUE(unknown.doc.errors.list.empty());
}

TEST(XmlScannerReference, DecimalAndHexadecimal) {
  Reference dec("#233;", true);
  EXPECT_EQ(dec.out, u"\u00E9");
  EXPECT_TRUE(dec.name.isEmpty());
  Reference hex("#x1F600;", true);
  EXPECT_EQ(hex.out, UnicodeString().append(UChar32(0x1F600)));
  Reference mixed("#xaB;", true);
  EXPECT_EQ(mixed.out, u"\u00AB");
  EXPECT_TRUE(mixed.doc.errors.list.empty());
}

TEST(XmlScannerReference, CapitalXOnlyInHtml) {
  Reference xml("#X41;", true);
  EXPECT_EQ(xml.doc.errors.codes(), std::vector<int>({178}));
  EXPECT_EQ(xml.doc.errors.list[0].getRawMessage(),
            u"Invalid character in character reference: &#X;");
  Reference html("#X41;", true, true);
  EXPECT_EQ(html.out, u"A");
  EXPECT_TRUE(html.doc.errors.list.empty());
}

TEST(XmlScannerReference, EmptyNameRaises155) {
  Reference ref(" x", true);
  EXPECT_EQ(ref.doc.errors.codes(), std::vector<int>({155}));
  EXPECT_EQ(ref.rest, u" x");
  Reference html(" x", true, true);
  EXPECT_EQ(html.out, u"&");
  EXPECT_TRUE(html.name.isEmpty());
  EXPECT_TRUE(html.doc.errors.list.empty());
}

TEST(XmlScannerReference, MissingSemicolonRaises156) {
  Reference ref("amp x", true);
  ASSERT_EQ(ref.doc.errors.codes(), std::vector<int>({156}));
  EXPECT_EQ(ref.doc.errors.list[0].getRawMessage(),
            u"Invalid character in entity reference: &amp ;");
  EXPECT_EQ(ref.rest, u"x");
}

TEST(XmlScannerReference, HtmlUnknownEntityStaysText) {
  Reference withSemicolon("zz;x", true, true);
  EXPECT_EQ(withSemicolon.out, u"&zz;");
  EXPECT_TRUE(withSemicolon.name.isEmpty());
  EXPECT_EQ(withSemicolon.rest, u"x");
  Reference without("zz x", true, true);
  EXPECT_EQ(without.out, u"&zz");
  EXPECT_EQ(without.rest, u" x");
  Reference known("amp x", true, true);
  EXPECT_EQ(known.name, ZQName(ZQN_amp));
  EXPECT_EQ(known.rest, u" x");
  EXPECT_TRUE(without.doc.errors.list.empty() && known.doc.errors.list.empty());
}

TEST(XmlScannerReference, NumericErrors) {
  Reference space("#12 ", true);
  ASSERT_EQ(space.doc.errors.codes(), std::vector<int>({177}));
  EXPECT_EQ(space.doc.errors.list[0].getRawMessage(),
            u"Unexpected whitespace in character reference: &#12 ;");
  Reference junk("#12a;", true);
  ASSERT_EQ(junk.doc.errors.codes(), std::vector<int>({178}));
  EXPECT_EQ(junk.doc.errors.list[0].getRawMessage(),
            u"Invalid character in character reference: &#12a;");
  Reference none("#;", true);
  EXPECT_EQ(none.doc.errors.codes(), std::vector<int>({178}));
}

TEST(XmlScannerReference, HtmlNumericWithoutSemicolon) {
  Reference ref("#65x", true, true);
  EXPECT_EQ(ref.out, u"A");
  EXPECT_EQ(ref.rest, u"x");
  Reference none("#x;", true, true);
  EXPECT_EQ(none.out, u"&#x");
  EXPECT_EQ(none.rest, u";");
  EXPECT_TRUE(ref.doc.errors.list.empty() && none.doc.errors.list.empty());
}

TEST(XmlScannerReference, InvalidCharacterRaises179WithTwoSemicolons) {
  Reference ref("#1;", true);
  ASSERT_EQ(ref.doc.errors.codes(), std::vector<int>({179}));
  EXPECT_EQ(ref.doc.errors.list[0].getRawMessage(), u"Invalid Unicode character: &#1;;");
  Reference huge("#x110000;", true);
  EXPECT_EQ(huge.doc.errors.codes(), std::vector<int>({179}));
  EXPECT_TRUE(huge.out.isEmpty());
  Reference wrapped("#99999999999999999999;", true);
  EXPECT_EQ(wrapped.doc.errors.codes(), std::vector<int>({179}));
}

TEST(XmlScannerReference, CharacterCheckFollowsVersionAndFeature) {
  Doc unchecked("<&#1;");
  unchecked->setFeature(ZQXmlParser::FEATURE_NO_CHARACTER_CHECK, true);
  unchecked->start();
  unchecked->read();
  unchecked->read();
  UnicodeString out;
  ZQName name;
  unchecked->readReference(out, name, true);
  EXPECT_EQ(out, UnicodeString(UChar(1)));
  EXPECT_TRUE(unchecked.errors.list.empty());
}

TEST(XmlScannerReference, HtmlSetAcceptsInvalidCharacterEndedBySpace) {
  Doc doc("<html>&#1 &#1;</html>");
  doc->setHtml();
  doc.trace();
  // Only the one ended by ";" is reported once the HTML set is in.
  EXPECT_EQ(doc.errors.codes(), std::vector<int>({179}));
}

TEST(XmlScanner, UndefinedEntityUnderNext) {
  Doc doc("<r>a&u;b</r>");
  EXPECT_EQ(doc.trace(), "<r T(ab) </r $");
  ASSERT_EQ(doc.errors.codes(), std::vector<int>({515}));
  EXPECT_EQ(thrownCode("<r>a&u;b</r>"), 158);
  Doc ignored("<r>a&u;b</r>");
  ignored->setFeature(ZQXmlParser::FEATURE_IGNORE_UNDEFINED_ENTITIES, true);
  EXPECT_EQ(ignored.trace(), "<r T(ab) </r $");
  EXPECT_TRUE(ignored.errors.list.empty());
}

TEST(XmlScanner, ForbiddenExternalEntityIsQueuedAndDropped) {
  Doc doc("<r>a&ext;b</r>", true);
  doc->declareExternal("ext", u"x.xml");
  doc->setFeature(ZQXmlParser::FEATURE_FORBID_EXTERNAL_ENTITIES, true);
  EXPECT_EQ(doc.trace(), "<r T(ab) </r $");
  ZQError error;
  ASSERT_TRUE(doc->popError(error));
  EXPECT_EQ(error.getErrorCode(), 516);
  EXPECT_TRUE(error.getRawMessage().startsWith(
      u"External entity is not allowed: '<!ENTITY ext ... \"x.xml\"'."));
}

// ---- Never hang ----

// Every routine ends after reporting the end of input to a callback that returns, so every
// cut of a document ends.
TEST(XmlScanner, EveryTruncationEndsUnderReturningCallback) {
  const std::string full =
      "<?xml version='1.0'?><!DOCTYPE r><?p x?><!-- c - d --><r a='1&amp;&#65;' b=\"&e;\" "
      "xmlns:p='u'><p:b/><![CDATA[x]]y]]>t&e;&#x42;&lt;<![X[ z ]]><c/ ><!doctype html "
      "x></r>";
  for (size_t cut = 0; cut <= full.size(); ++cut) {
    for (int mode = 0; mode < 3; ++mode) {
      Doc doc(full.substr(0, cut));
      doc->defineEntityReplacementText(ZQName(u"e"), u"<i>&e2;</i>");
      doc->defineEntityReplacementText(ZQName(u"e2"), u"v");
      if (mode == 2) doc->setHtml();
      std::string trace = doc.trace(mode == 1, 200);
      EXPECT_EQ(trace.back(), '$') << cut << " " << mode << ": " << trace;
    }
  }
}

TEST(XmlScanner, EndOfInputInsideEachConstructEnds) {
  const char* texts[] = {"<",         "<r",
                         "<r a",      "<r a=",
                         "<r a='",    "<r a='x",
                         "<r a=x",    "<r/",
                         "<r/ ",      "</",
                         "<r></r",    "<r></r ",
                         "<r>&",      "<r>&#",
                         "<r>&#x",    "<r>&a",
                         "<r>]]",     "<!",
                         "<!-",       "<![",
                         "<![CDATA[", "<r><![X[",
                         "<?",        "<?p",
                         "<?p x",     "<?p x?",
                         "<!--",      "<!-- x -",
                         "<!-- x --", "<!DOCTYPE",
                         "<!doctype", "<!doctype ",
                         "<?xml",     "<?xml version='1.0'"};
  for (const char* text : texts) {
    for (bool tokens : {false, true}) {
      Doc doc(text);
      std::string trace = doc.trace(tokens, 50);
      EXPECT_EQ(trace.back(), '$') << text << ": " << trace;
      EXPECT_EQ(doc->next(), ZQXmlParser::END_DOCUMENT) << text;
    }
  }
}

TEST(XmlScanner, EndOfInputErrorsOfEachRoutine) {
  struct Case {
    const char* text;
    int code;
  } cases[] = {{"<r><![CDATA[x", 145}, {"<r><!-- x", 146},  {"<r><?p x", 173}, {"<r a='x", 175},
               {"<r/", 146},           {"<r><![X[ y", 145}, {"<r>", 129}};
  for (const Case& c : cases) {
    Doc doc(c.text);
    doc.trace(false, 50);
    EXPECT_EQ(doc.errors.count(c.code), 1) << c.text;
  }
}

// ---- Positions ----

TEST(XmlScanner, ErrorsCarryLineAndColumnOfTheReader) {
  Doc doc("<r>\n  <a b='1'c='2'/>\n</r>");
  doc.trace();
  ASSERT_FALSE(doc.errors.list.empty());
  EXPECT_EQ(doc.errors.list[0].getErrorCode(), 139);
  EXPECT_EQ(doc.errors.list[0].getLineNumber(), 2);
  EXPECT_EQ(doc.errors.list[0].getColumnNumber(), 11);
}

TEST(XmlScanner, ThrownErrorDescribesThePosition) {
  Doc doc("<r>\n<a></b></r>", true);
  try {
    doc.trace();
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 134);
    EXPECT_EQ(utf8(e.getRawMessage()),
              "End tag 'b' does not match the start tag 'a'.\nEND_TAG, Line 2, Col 7.");
  }
}

// ---- Rewind and auto-close ----

TEST(XmlScanner, RewindParsesTheSameInputAgain) {
  std::istringstream in("<r a='\xE9'>x<b/></r>", std::ios::binary);
  ZQPtr<ZQXmlParserImpl> parser(new ZQXmlParserImpl());
  parser->setAutoClose(false);
  parser->setInput(in, u"ISO-8859-1", UnicodeString());
  parser->setFeature(ZQXmlParser::FEATURE_REPORT_PI, true);
  std::vector<int> first;
  while (parser->next() != ZQXmlParser::END_DOCUMENT) first.push_back(parser->getEventType());
  parser->rewind();
  EXPECT_EQ(parser->getEventType(), ZQXmlParser::START_DOCUMENT);
  EXPECT_EQ(parser->getInputEncoding(), u"ISO-8859-1");
  EXPECT_TRUE(parser->getFeature(ZQXmlParser::FEATURE_REPORT_PI));
  std::vector<int> second;
  ASSERT_EQ(parser->next(), ZQXmlParser::START_TAG);
  EXPECT_EQ(parser->getAttributeValue(0), u"\u00E9");
  second.push_back(ZQXmlParser::START_TAG);
  while (parser->next() != ZQXmlParser::END_DOCUMENT) second.push_back(parser->getEventType());
  EXPECT_EQ(first, second);
}

TEST(XmlScanner, AutoCloseEndsTheInputSoRewindHasNothing) {
  std::istringstream in("<r/>");
  ZQPtr<ZQXmlParserImpl> parser(new ZQXmlParserImpl());
  parser->setInput(in, UnicodeString(), UnicodeString());
  while (parser->next() != ZQXmlParser::END_DOCUMENT) {
  }
  parser->rewind();
  EXPECT_EQ(parser->next(), ZQXmlParser::END_DOCUMENT);
}

// ---- External entities ----

namespace {

/// A directory of its own for the files of one test.
class TempDir {
 public:
  TempDir() {
    path_ = std::filesystem::temp_directory_path() /
            ("zq_xmlscan_" + std::to_string(getpid()) + "_" + std::to_string(counter_++));
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

}  // namespace

TEST(XmlScanner, ExternalEntityIsReadInPlace) {
  TempDir dir;
  std::string outer = dir.write("outer.xml", "<r>a&ext;b</r>");
  dir.write("inner.xml", "<?xml version='1.0' encoding='UTF-8'?><i>in</i>");
  ZQPtr<ScanParser> parser(new ScanParser());
  ZQUri uri(UnicodeString::fromUTF8(outer));
  parser->setInput(uri, UnicodeString(), UnicodeString());
  parser->declareExternal("ext", u"inner.xml");
  std::string trace;
  for (ZQXmlParser::EventType t = parser->next(); t != ZQXmlParser::END_DOCUMENT;
       t = parser->next()) {
    trace += std::to_string(t) + ":" + utf8(parser->getName().toString()) +
             (t == ZQXmlParser::TEXT ? "(" + utf8(parser->getText()) + ")" : "") + " ";
  }
  EXPECT_EQ(trace, "2:r 4:(a) 2:i 4:(in) 3:i 4:(b) 3:r ");
}

TEST(XmlScanner, ExternalEntityNamingItselfEndsWithError190) {
  TempDir dir;
  std::string outer = dir.write("outer.xml", "<r>&self;</r>");
  dir.write("self.ent", "x&self;");
  ZQPtr<ScanParser> parser(new ScanParser());
  Errors errors;
  parser->setCallbackError(&Errors::collect, &errors);
  ZQUri uri(UnicodeString::fromUTF8(outer));
  parser->setInput(uri, UnicodeString(), UnicodeString());
  parser->declareExternal("self", u"self.ent");
  ASSERT_EQ(parser->next(), ZQXmlParser::START_TAG);
  ASSERT_EQ(parser->next(), ZQXmlParser::TEXT);
  EXPECT_EQ(parser->getText(), UnicodeString(64, u'x', 64));
  EXPECT_EQ(parser->next(), ZQXmlParser::END_TAG);
  EXPECT_EQ(parser->next(), ZQXmlParser::END_DOCUMENT);
  EXPECT_EQ(errors.codes(), std::vector<int>({190}));
}

// ---- Entity-expansion guard ----

namespace {

/// Ten times the reference to the entity below, nine levels deep: 10^9 characters if
/// everything were expanded.
void declareLaughs(ScanParser* parser) {
  parser->defineEntityReplacementText(ZQName(u"lol0"), u"lol");
  for (int i = 1; i <= 9; ++i) {
    UnicodeString value;
    UnicodeString ref = UnicodeString(u"&lol").append(UChar(u'0' + i - 1)).append(u";");
    for (int k = 0; k < 10; ++k) value.append(ref);
    parser->defineEntityReplacementText(ZQName(UnicodeString(u"lol").append(UChar(u'0' + i))),
                                        value);
  }
}

}  // namespace

TEST(XmlScannerGuard, BillionLaughsEndsWithError190) {
  Doc doc("<r>&lol9;</r>");
  declareLaughs(doc.parser.get());
  std::string trace = doc.trace();
  EXPECT_EQ(trace.substr(0, 5), "<r T(");
  EXPECT_EQ(trace.substr(trace.size() - 7), ") </r $");
  EXPECT_TRUE(doc.errors.has(190));
  EXPECT_LE(doc->expandedChars(), int64_t(32) << 20);
}

TEST(XmlScannerGuard, BillionLaughsInAnAttributeEndsWithError190) {
  Doc doc("<r a='&lol9;'/>");
  declareLaughs(doc.parser.get());
  doc.toStartTag();
  EXPECT_TRUE(doc.errors.has(190));
  EXPECT_LE(doc->getAttributeValue(0).length(), 32 << 20);
}

TEST(XmlScannerGuard, EntityNamingItselfEndsWithError190) {
  Doc doc("<r>a&a;b</r>");
  doc->defineEntityReplacementText(ZQName(u"a"), u"&a;");
  EXPECT_EQ(doc.trace(), "<r T(ab) </r $");
  ASSERT_EQ(doc.errors.codes(), std::vector<int>({190}));
  EXPECT_EQ(doc.errors.list[0].getRawMessage(), u"Entity expansion limit exceeded: &a;");
}

TEST(XmlScannerGuard, EntityNamingItselfInAnAttribute) {
  Doc doc("<r x='1&a;2'/>");
  doc->defineEntityReplacementText(ZQName(u"a"), u"&a;");
  doc.toStartTag();
  EXPECT_EQ(doc->getAttributeValue(0), u"12");
  EXPECT_EQ(doc.errors.codes(), std::vector<int>({190}));
}

TEST(XmlScannerGuard, EntityNamingItselfWithTextAroundGrowsThenStops) {
  Doc doc("<r>&a;</r>");
  doc->defineEntityReplacementText(ZQName(u"a"), u"(&a;)");
  EXPECT_EQ(doc.trace(), "<r T(" + std::string(64, '(') + std::string(64, ')') + ") </r $");
  EXPECT_EQ(doc.errors.codes(), std::vector<int>({190}));
}

TEST(XmlScannerGuard, MutualRecursionEndsWithError190) {
  Doc doc("<r>&a;</r>");
  doc->defineEntityReplacementText(ZQName(u"a"), u"x&b;");
  doc->defineEntityReplacementText(ZQName(u"b"), u"&a;y");
  std::string trace = doc.trace();
  EXPECT_EQ(trace.substr(trace.size() - 7), ") </r $");
  EXPECT_EQ(doc.errors.codes(), std::vector<int>({190}));
}

TEST(XmlScannerGuard, BranchingEntityStopsAfterOneReport) {
  // Each expansion names itself twice: refusing only the leaves would cost one report per
  // leaf of a tree as deep as the limit.
  Doc doc("<r>&a;</r>");
  doc->defineEntityReplacementText(ZQName(u"a"), u"&a;&a;");
  std::string trace = doc.trace();
  EXPECT_EQ(trace, "<r </r $");
  EXPECT_EQ(doc.errors.codes(), std::vector<int>({190}));
}

TEST(XmlScannerGuard, OnlyShortValuesAreExpandedAfterTheLimit) {
  Doc doc("<r>&a;&b;&lt;&c;</r>");
  doc->defineEntityReplacementText(ZQName(u"a"), u"&a;");
  doc->defineEntityReplacementText(ZQName(u"b"), u"longer than its name");
  doc->defineEntityReplacementText(ZQName(u"c"), u"&lt;");
  EXPECT_EQ(doc.trace(), "<r T(<) </r $");
  EXPECT_EQ(doc.errors.codes(), std::vector<int>({190}));
}

TEST(XmlScannerGuard, ThrownWithoutCallback) {
  Doc doc("<r>&a;</r>", true);
  doc->defineEntityReplacementText(ZQName(u"a"), u"&b;");
  doc->defineEntityReplacementText(ZQName(u"b"), u"&a;");
  try {
    doc.trace();
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 190);
    EXPECT_TRUE(e.getRawMessage().startsWith(u"Entity expansion limit exceeded: &"));
  }
  // The element is still open.
  try {
    doc->next();
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 129);
  }
}

TEST(XmlScannerGuard, QuadraticBlowUpEndsWithError190) {
  std::string text = "<r>";
  for (int i = 0; i < 100000; ++i) text += "&big;";
  text += "</r>";
  Doc doc(text);
  doc->defineEntityReplacementText(ZQName(u"big"), UnicodeString(100 * 1024, u'x', 100 * 1024));
  ASSERT_EQ(doc->next(), ZQXmlParser::START_TAG);
  ASSERT_EQ(doc->next(), ZQXmlParser::TEXT);
  // Up to the limit and not a use more.
  int64_t limit = int64_t(32) << 20;
  EXPECT_LE(doc->getText().length(), limit + 100 * 1024);
  EXPECT_GE(doc->getText().length(), limit - 100 * 1024);
  EXPECT_EQ(doc->next(), ZQXmlParser::END_TAG);
  EXPECT_EQ(doc->next(), ZQXmlParser::END_DOCUMENT);
  EXPECT_TRUE(doc.errors.has(190));
  EXPECT_EQ(doc.errors.count(190), static_cast<int>(doc.errors.list.size()));
}

TEST(XmlScannerGuard, DepthCountsExpansionsStillBeingRead) {
  auto chain = [](int limit) {
    auto doc = std::make_unique<Doc>("<r>&e1;</r>");
    (*doc)->setEntityExpansionLimits(limit, 0);
    for (int i = 1; i <= 4; ++i) {
      UnicodeString value(u"&e");
      value.append(UChar(u'0' + i + 1)).append(u';');
      (*doc)->defineEntityReplacementText(ZQName(UnicodeString(u"e").append(UChar(u'0' + i))),
                                          value);
    }
    (*doc)->defineEntityReplacementText(ZQName(u"e5"), u"x");
    doc->trace();
    return doc->errors.codes();
  };
  EXPECT_TRUE(chain(5).empty());
  EXPECT_EQ(chain(4), std::vector<int>({190}));
  EXPECT_TRUE(chain(0).empty());  // no limit
}

TEST(XmlScannerGuard, SiblingReferencesDoNotNest) {
  std::string text = "<r a='";
  for (int i = 0; i < 200; ++i) text += "&x;";
  text += "'>";
  for (int i = 0; i < 200; ++i) text += "&x;&list;";
  text += "</r>";
  Doc doc(text);
  doc->setEntityExpansionLimits(2, 0);
  doc->defineEntityReplacementText(ZQName(u"x"), u"x");
  UnicodeString list;
  for (int i = 0; i < 50; ++i) list.append(u"&x;");
  doc->defineEntityReplacementText(ZQName(u"list"), list);
  doc.toStartTag();
  EXPECT_EQ(doc->getAttributeValue(0).length(), 200);
  ASSERT_EQ(doc->next(), ZQXmlParser::TEXT);
  EXPECT_EQ(doc->getText().length(), 200 * 51);
  EXPECT_TRUE(doc.errors.list.empty());
}

TEST(XmlScannerGuard, ShortValuesWrittenInTheDocumentCostNothing) {
  std::string text = "<r>";
  for (int i = 0; i < 1000; ++i) text += "&amp;&abc;";
  text += "</r>";
  Doc doc(text);
  doc->setEntityExpansionLimits(64, 10);
  doc->defineEntityReplacementText(ZQName(u"abc"), u"abc");
  doc.trace();
  EXPECT_TRUE(doc.errors.list.empty());
  EXPECT_EQ(doc->expandedChars(), 0);
}

TEST(XmlScannerGuard, CharacterLimitCountsGrowthAndNestedValues) {
  Doc top("<r>&e;&e;</r>");
  top->setEntityExpansionLimits(64, 10);
  top->defineEntityReplacementText(ZQName(u"e"), u"0123456789AB");  // adds 9 over "&e;"
  EXPECT_EQ(top.trace(), "<r T(0123456789AB) </r $");
  EXPECT_EQ(top.errors.codes(), std::vector<int>({190}));

  Doc nested("<r>&c;&c;</r>");
  nested->setEntityExpansionLimits(64, 12);
  nested->defineEntityReplacementText(ZQName(u"c"), u"&a;");
  nested->defineEntityReplacementText(ZQName(u"a"), u"0123456789");  // counts 10 inside c
  EXPECT_EQ(nested.trace(), "<r T(0123456789) </r $");
  EXPECT_EQ(nested.errors.codes(), std::vector<int>({190}));
}

TEST(XmlScannerGuard, ProcessWideDefaultsReachNewParsers) {
  int depth = ZQXmlParser::getDefaultEntityExpansionDepth();
  int64_t chars = ZQXmlParser::getDefaultEntityExpansionChars();
  EXPECT_EQ(depth, 64);
  EXPECT_EQ(chars, int64_t(32) << 20);
  ZQXmlParser::setDefaultEntityExpansionLimits(3, 1000);
  ZQPtr<ZQXmlParserImpl> parser(new ZQXmlParserImpl());
  ZQXmlParser::setDefaultEntityExpansionLimits(depth, chars);
  EXPECT_EQ(parser->getEntityExpansionDepthLimit(), 3);
  EXPECT_EQ(parser->getEntityExpansionCharLimit(), 1000);
  parser->setEntityExpansionLimits(5, 6);
  EXPECT_EQ(parser->getEntityExpansionDepthLimit(), 5);
  EXPECT_EQ(parser->getEntityExpansionCharLimit(), 6);
}

TEST(XmlScannerGuard, CountIsPerDocument) {
  Doc doc("<r>&e;</r>");
  doc->setEntityExpansionLimits(64, 10);
  doc->defineEntityReplacementText(ZQName(u"e"), u"0123456789AB");
  doc.trace();
  EXPECT_EQ(doc->expandedChars(), 9);
  std::istringstream again("<r>&e;</r>");
  doc->setInput(again, UnicodeString(), UnicodeString());
  EXPECT_EQ(doc->expandedChars(), 0);
}

TEST(XmlScannerGuard, GuardCallsNestWhileTextIsUnread) {
  Doc doc("<r>");
  doc->setEntityExpansionLimits(3, 0);
  doc->start();
  EXPECT_TRUE(doc->guardExpansion(ZQName(u"a"), 3));
  EXPECT_TRUE(doc->guardExpansion(ZQName(u"b"), 3));
  EXPECT_TRUE(doc->guardExpansion(ZQName(u"c"), 3));
  EXPECT_FALSE(doc->guardExpansion(ZQName(u"d"), 3));
  EXPECT_EQ(doc.errors.codes(), std::vector<int>({190}));
}

TEST(XmlScannerGuard, GuardForgetsWhatWasRead) {
  Doc doc("<r>abc");
  doc->setEntityExpansionLimits(1, 0);
  doc->start();
  for (int i = 0; i < 5; ++i) {
    // Text put back and read again, then the input moves on.
    EXPECT_TRUE(doc->guardExpansion(ZQName(u"a"), 2));
    doc->read();
  }
  EXPECT_TRUE(doc.errors.list.empty());
}
