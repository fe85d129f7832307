// The scanner of the pull parser: events and their merging, tags and attributes, text,
// CDATA, comments, processing instructions, literals, references, and the guard on entity
// expansion.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "common/ZQError.h"
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
