// The parser's input layer: decoding by encoding, line ends, positions, pushback, the
// stack of inputs and the encoding decision.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "common/ZQError.h"
#include "common/ZQUri.h"
#include "xml/ZQXmlParserImpl.h"

using namespace ZQCommonNS;
using icu::UnicodeString;

namespace {

/// The parser with its input routines opened up; it has no scanner, so next() only says
/// that there is nothing to scan.
class InputParser : public ZQXmlParserImpl {
 public:
  using ZQXmlParserImpl::applyHtmlDefaultCharset;
  using ZQXmlParserImpl::checkStream;
  using ZQXmlParserImpl::decodeChar;
  using ZQXmlParserImpl::detectEncoding;
  using ZQXmlParserImpl::peekChar;
  using ZQXmlParserImpl::popStream;
  using ZQXmlParserImpl::readChar;
  using ZQXmlParserImpl::resetParser;
  using ZQXmlParserImpl::setEncoding;
  using ZQXmlParserImpl::setInput;
  using ZQXmlParserImpl::unreadChar;
  using ZQXmlParserImpl::unreadText;

  EventType next() override { return END_DOCUMENT; }
  EventType nextToken() override { return END_DOCUMENT; }
  void addMathMLEntities() override {}
  void rewind() override {}

  /// Starts reading as the scanner does at the start of a document.
  void start() {
    m_lineNumber = 1;
    m_columnNumber = 0;
    detectEncoding(false);
    if (m_pushedChar != END_OF_INPUT) ++m_columnNumber;
  }
  /// Everything left, up to end of input.
  UnicodeString readAll() {
    UnicodeString out;
    for (UChar32 c = readChar(); c != END_OF_INPUT; c = readChar()) out.append(c);
    return out;
  }
  std::vector<UChar32> readCodePoints() {
    std::vector<UChar32> out;
    for (UChar32 c = readChar(); c != END_OF_INPUT; c = readChar()) out.push_back(c);
    return out;
  }
  static int encodingKindOfName(const UnicodeString& name) { return encodingKindOf(name); }
  int kind() const { return m_encodingKind; }
  void setKind(int kind) { m_encodingKind = kind; }
  bool bomSeen() const { return m_bomSeen; }
  bool xml11() const { return m_xml11; }
  void setXml11(bool on) { m_xml11 = on; }
  void setHtmlEntities() { m_htmlEntitiesAdded = ZQN_html; }
  size_t inputDepth() const { return m_inputStack.size(); }
  bool hasConverter() const { return m_stream != m_baseStream; }
  bool hasStream() const { return m_stream != nullptr; }
  UChar32 pushedChar() const { return m_pushedChar; }
  const UnicodeString& pushedText() const { return m_pushedText; }
  ZQName parserType() const { return m_parserType; }
  int baseDepth() const { return m_baseDepth; }
  void setPosition(int line, int column) {
    m_lineNumber = line;
    m_columnNumber = column;
  }
  /// Makes `stream` (owned) the current input over the saved outer one.
  void pushInnerForTest(std::istream* stream) {
    InputState state;
    state.stream = m_stream;
    state.baseStream = m_baseStream;
    state.encodingKind = m_encodingKind;
    state.encodingName = m_encodingName;
    state.parserType = m_parserType;
    state.lineNumber = m_lineNumber;
    state.columnNumber = m_columnNumber;
    state.pushedChar = m_pushedChar;
    m_inputStack.push_back(state);
    m_stream = m_baseStream = stream;
    m_pushedChar = END_OF_INPUT;
  }
  void openElements(int n) {
    for (int i = 0; i < n; ++i) m_namespaces->pushContext();
  }
};

std::string bytes(std::initializer_list<int> list) {
  std::string s;
  for (int b : list) s.push_back(static_cast<char>(b));
  return s;
}

UnicodeString u16(const char* utf8) { return UnicodeString::fromUTF8(utf8); }

/// A parser reading `data` with an encoding set before detection.
struct Reader {
  std::istringstream in;
  InputParser parser;
  explicit Reader(const std::string& data, const UnicodeString& encoding = UnicodeString(),
                  bool detect = true)
      : in(data, std::ios::binary) {
    parser.setInput(in, encoding, UnicodeString());
    if (detect) parser.start();
  }
};

std::string utf16le(const UnicodeString& s, bool bom) {
  std::string out = bom ? bytes({0xFF, 0xFE}) : std::string();
  for (int i = 0; i < s.length(); ++i) {
    out.push_back(static_cast<char>(s[i] & 0xFF));
    out.push_back(static_cast<char>(s[i] >> 8));
  }
  return out;
}

std::string utf16be(const UnicodeString& s, bool bom) {
  std::string out = bom ? bytes({0xFE, 0xFF}) : std::string();
  for (int i = 0; i < s.length(); ++i) {
    out.push_back(static_cast<char>(s[i] >> 8));
    out.push_back(static_cast<char>(s[i] & 0xFF));
  }
  return out;
}

std::string utf32(const UnicodeString& s, bool little, bool bom) {
  std::string out;
  auto put = [&out, little](uint32_t c) {
    for (int i = 0; i < 4; ++i) {
      int shift = little ? 8 * i : 8 * (3 - i);
      out.push_back(static_cast<char>((c >> shift) & 0xFF));
    }
  };
  if (bom) put(0xFEFF);
  for (int i = 0; i < s.length(); i = s.moveIndex32(i, 1)) put(s.char32At(i));
  return out;
}

/// A directory of its own for the files of one test.
class TempDir {
 public:
  TempDir() {
    path_ = std::filesystem::temp_directory_path() /
            ("zq_xmlinput_" + std::to_string(getpid()) + "_" + std::to_string(counter_++));
    std::filesystem::create_directories(path_);
  }
  ~TempDir() { std::filesystem::remove_all(path_); }
  std::string write(const std::string& name, const std::string& data) const {
    std::filesystem::path p = path_ / name;
    std::ofstream(p, std::ios::binary) << data;
    return p.string();
  }
  std::string path(const std::string& name) const { return (path_ / name).string(); }

 private:
  static inline int counter_ = 0;
  std::filesystem::path path_;
};

const UnicodeString kSample = u16("<a>é€\U0001F600</a>");

}  // namespace

// ---- Detection by mark and first bytes ----

TEST(XmlInput, Utf8WithoutMark) {
  Reader r("<a>\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80</a>");
  EXPECT_EQ(r.parser.kind(), 1);
  EXPECT_EQ(r.parser.getInputEncoding(), u"UTF-8");
  EXPECT_FALSE(r.parser.bomSeen());
  EXPECT_EQ(r.parser.readAll(), kSample);
}

TEST(XmlInput, Utf8WithMark) {
  Reader r("\xEF\xBB\xBF<a>\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80</a>");
  EXPECT_EQ(r.parser.kind(), 1);
  EXPECT_EQ(r.parser.getInputEncoding(), u"UTF-8");
  EXPECT_TRUE(r.parser.bomSeen());
  EXPECT_EQ(r.parser.readAll(), kSample);
}

TEST(XmlInput, Utf16LEWithMark) {
  Reader r(utf16le(kSample, true));
  EXPECT_EQ(r.parser.kind(), 3);
  EXPECT_EQ(r.parser.getInputEncoding(), u"UTF-16");
  EXPECT_TRUE(r.parser.bomSeen());
  EXPECT_EQ(r.parser.readAll(), kSample);
}

TEST(XmlInput, Utf16LEWithoutMark) {
  Reader r(utf16le(kSample, false));
  EXPECT_EQ(r.parser.kind(), 3);
  EXPECT_EQ(r.parser.getInputEncoding(), u"UTF-16LE");
  EXPECT_FALSE(r.parser.bomSeen());
  EXPECT_EQ(r.parser.readAll(), kSample);
}

TEST(XmlInput, Utf16LEWithoutMarkSecondCharacterHighByte) {
  // "<" then U+4E00: the third byte is 0, the fourth is not.
  Reader r(bytes({'<', 0, 0, 0x4E, 'a', 0}));
  EXPECT_EQ(r.parser.kind(), 3);
  EXPECT_EQ(r.parser.readAll(), u16("<\u4E00a"));
}

TEST(XmlInput, Utf16BEWithMark) {
  Reader r(utf16be(kSample, true));
  EXPECT_EQ(r.parser.kind(), 4);
  EXPECT_EQ(r.parser.getInputEncoding(), u"UTF-16");
  EXPECT_TRUE(r.parser.bomSeen());
  EXPECT_EQ(r.parser.readAll(), kSample);
}

TEST(XmlInput, Utf16BEWithoutMark) {
  Reader r(utf16be(kSample, false));
  EXPECT_EQ(r.parser.kind(), 4);
  EXPECT_EQ(r.parser.getInputEncoding(), u"UTF-16BE");
  EXPECT_FALSE(r.parser.bomSeen());
  EXPECT_EQ(r.parser.readAll(), kSample);
}

TEST(XmlInput, Utf32LEWithMark) {
  Reader r(utf32(kSample, true, true));
  EXPECT_EQ(r.parser.kind(), 6);
  EXPECT_EQ(r.parser.getInputEncoding(), u"UTF-32");
  EXPECT_TRUE(r.parser.bomSeen());
  EXPECT_EQ(r.parser.readAll(), kSample);
}

TEST(XmlInput, Utf32LEWithoutMark) {
  Reader r(utf32(kSample, true, false));
  EXPECT_EQ(r.parser.kind(), 6);
  EXPECT_EQ(r.parser.getInputEncoding(), u"UTF-32LE");
  EXPECT_EQ(r.parser.readAll(), kSample);
}

TEST(XmlInput, Utf32BEWithMark) {
  Reader r(utf32(kSample, false, true));
  EXPECT_EQ(r.parser.kind(), 7);
  EXPECT_EQ(r.parser.getInputEncoding(), u"UTF-32");
  EXPECT_TRUE(r.parser.bomSeen());
  EXPECT_EQ(r.parser.readAll(), kSample);
}

TEST(XmlInput, Utf32BEWithoutMark) {
  Reader r(utf32(kSample, false, false));
  EXPECT_EQ(r.parser.kind(), 7);
  EXPECT_EQ(r.parser.getInputEncoding(), u"UTF-32BE");
  EXPECT_EQ(r.parser.readAll(), kSample);
}

TEST(XmlInput, MarkBeatsEncodingGivenToSetInput) {
  Reader r(utf16le(u16("<a/>"), true), u"ISO-8859-2");
  EXPECT_EQ(r.parser.kind(), 3);
  EXPECT_EQ(r.parser.getInputEncoding(), u"UTF-16");
  EXPECT_EQ(r.parser.readAll(), u"<a/>");
}

TEST(XmlInput, MarkBeatsConverterEncodingGivenToSetInput) {
  Reader r("\xEF\xBB\xBF<a>\xE6\x97\xA5</a>", u"Shift_JIS");
  EXPECT_FALSE(r.parser.hasConverter());
  EXPECT_EQ(r.parser.kind(), 1);
  EXPECT_EQ(r.parser.getInputEncoding(), u"UTF-8");
  EXPECT_EQ(r.parser.readAll(), u16("<a>日</a>"));
}

TEST(XmlInput, BadByteAfterMarkLeadRaises180) {
  InputParser parser;
  std::istringstream in(bytes({0xEF, 0xBB, 'x', '<'}));
  parser.setInput(in, UnicodeString(), UnicodeString());
  parser.setPosition(1, 0);
  try {
    parser.detectEncoding(false);
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 180);
    EXPECT_TRUE(e.getRawMessage().startsWith(u"Invalid character."));
  }
}

TEST(XmlInput, BadMarkWithCallbackStoresKindNone) {
  InputParser parser;
  std::vector<int> codes;
  parser.setCallbackError(
      [](const ZQError& e, void* data) {
        static_cast<std::vector<int>*>(data)->push_back(e.getErrorCode());
      },
      &codes);
  std::istringstream in(bytes({0xFE, 'a', 'b'}));
  parser.setInput(in, u"UTF-8", UnicodeString());
  parser.start();
  ASSERT_EQ(codes.size(), 1u);
  EXPECT_EQ(codes[0], 180);
  EXPECT_EQ(parser.kind(), 0);
}

TEST(XmlInput, TwoSpacesWithoutDeclarationReadAsLatin1) {
  Reader r("  <a>\xE9</a>");
  EXPECT_EQ(r.parser.kind(), 0);
  EXPECT_EQ(r.parser.getInputEncoding(), u"");
  EXPECT_EQ(r.parser.readAll(), u16("  <a>é</a>"));
}

TEST(XmlInput, EncodingGivenToSetInputKeptWhenNoMark) {
  Reader r("<a>\xA1</a>", u"ISO-8859-2");
  EXPECT_EQ(r.parser.kind(), 10);
  EXPECT_EQ(r.parser.readAll(), u16("<a>Ą</a>"));
}

TEST(XmlInput, TextDetectionLeavesKindNoneForNonMarkup) {
  InputParser parser;
  std::istringstream in("plain \xE9");
  parser.setInput(in, UnicodeString(), UnicodeString());
  parser.setPosition(1, 0);
  parser.detectEncoding(true);
  EXPECT_EQ(parser.kind(), 0);
  EXPECT_EQ(parser.readAll(), u16("plain é"));
}

TEST(XmlInput, EmptyInputReadsAsEndWithoutError) {
  Reader r("");
  EXPECT_EQ(r.parser.readChar(), ZQXmlParserImpl::END_OF_INPUT);
  EXPECT_EQ(r.parser.readChar(), ZQXmlParserImpl::END_OF_INPUT);
  ZQError e;
  EXPECT_FALSE(r.parser.popError(e));
}

// ---- UTF-8 decoding ----

TEST(XmlInput, Utf8BadContinuationGivesReplacementAndLosesByte) {
  Reader r(std::string("<\xC3") + "ab");
  EXPECT_EQ(r.parser.readAll(), u16("<\uFFFDb"));
}

TEST(XmlInput, Utf8LoneContinuationConsumesFollowers) {
  // 0x80 as a lead is read like a four-byte lead and fails at the end.
  Reader r(std::string("<\x80\x80\x80\x80") + "z");
  EXPECT_EQ(r.parser.readAll(), u16("<\uFFFDz"));
}

TEST(XmlInput, Utf8OverlongFormIsNotChecked) {
  Reader r(std::string("<\xC1\x81"));
  EXPECT_EQ(r.parser.readAll(), u"<A");
}

TEST(XmlInput, Utf8TruncatedAtEndGivesReplacement) {
  Reader r(std::string("<\xE2\x82"));
  EXPECT_EQ(r.parser.readAll(), u16("<\uFFFD"));
}

// ---- UTF-16 and UTF-32 decoding ----

TEST(XmlInput, Utf16LoneLowSurrogatePasses) {
  Reader r(bytes({'<', 0, 0x00, 0xDC, 'a', 0}));
  r.parser.setFeature(ZQXmlParser::FEATURE_NO_CHARACTER_CHECK, true);
  std::vector<UChar32> got = r.parser.readCodePoints();
  EXPECT_EQ(got, (std::vector<UChar32>{'<', 0xDC00, 'a'}));
}

TEST(XmlInput, Utf16HighSurrogateWithoutLowGivesReplacement) {
  Reader r(bytes({'<', 0, 0x3D, 0xD8, 'a', 0, 'b', 0}));
  EXPECT_EQ(r.parser.readAll(), u16("<\uFFFDb"));
}

TEST(XmlInput, Utf16OddByteAtEndGivesReplacement) {
  Reader r(bytes({'<', 0, 'a'}));
  EXPECT_EQ(r.parser.readAll(), u16("<\uFFFD"));
}

TEST(XmlInput, Utf32TruncatedGivesReplacement) {
  Reader r(bytes({'<', 0, 0, 0, 'a', 0}));
  EXPECT_EQ(r.parser.readAll(), u16("<\uFFFD"));
}

TEST(XmlInput, Utf32OutOfRangeValueFailsCharacterCheck) {
  Reader r(bytes({'<', 0, 0, 0, 0, 0, 0x11, 0}));
  EXPECT_EQ(r.parser.readChar(), '<');
  try {
    r.parser.readChar();
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 179);
    EXPECT_TRUE(e.getRawMessage().startsWith(u"Invalid Unicode character: U+110000"));
  }
}

// ---- Single-byte tables ----

TEST(XmlInput, Iso8859Part6ByteA4IsArabicSemicolon) {
  Reader r("<\xA4", u"ISO-8859-6");
  EXPECT_EQ(r.parser.readAll(), u16("<\u061B"));
}

TEST(XmlInput, Iso8859Part3CompactedShift) {
  // 0xA5 is unassigned, so it reads the character of 0xA6.
  Reader r("<\xA4\xA5", u"ISO-8859-3");
  EXPECT_EQ(r.parser.readAll(), u16("<\u00A4\u0124"));
}

TEST(XmlInput, CompactedTableEndsInBytesAsThemselves) {
  // ISO 8859-6 holds 51 entries: bytes from 0xD3 on are past the table.
  Reader r("<\xD2\xD3\xFF", u"ISO-8859-6");
  std::vector<UChar32> got = r.parser.readCodePoints();
  ASSERT_EQ(got.size(), 4u);
  EXPECT_EQ(got[1], 0x0652);
  EXPECT_EQ(got[2], 0xD3);
  EXPECT_EQ(got[3], 0xFF);
}

TEST(XmlInput, Iso8859FullTablesMatchPublishedOnes) {
  struct Case {
    const char16_t* name;
    int kind;
    int byte;
    UChar32 expected;
  };
  const Case cases[] = {
      {u"ISO-8859-2", 10, 0xA1, 0x0104},  {u"ISO-8859-4", 12, 0xA1, 0x0104},
      {u"ISO-8859-5", 13, 0xC0, 0x0420},  {u"ISO-8859-9", 17, 0xD0, 0x011E},
      {u"ISO-8859-10", 18, 0xA1, 0x0104}, {u"ISO-8859-13", 20, 0xA1, 0x201D},
      {u"ISO-8859-14", 21, 0xA1, 0x1E02}, {u"ISO-8859-15", 22, 0xA4, 0x20AC},
      {u"ISO-8859-16", 23, 0xA4, 0x20AC},
  };
  for (const Case& c : cases) {
    Reader r(std::string("<") + static_cast<char>(c.byte), c.name);
    EXPECT_EQ(r.parser.kind(), c.kind) << c.kind;
    std::vector<UChar32> got = r.parser.readCodePoints();
    ASSERT_EQ(got.size(), 2u);
    EXPECT_EQ(got[1], c.expected) << c.kind;
  }
}

TEST(XmlInput, CompactedGreekHebrewThaiTablesShiftAfterFirstGap) {
  // ISO 8859-7 lacks 0xAE, -8 lacks 0xA1, -11 ends at 88 entries.
  Reader greek("<\xA1\xC1", u"ISO-8859-7");
  EXPECT_EQ(greek.parser.readAll(), u16("<\u2018\u0392"));
  Reader hebrew("<\xA2\xE0", u"ISO-8859-8");
  EXPECT_EQ(hebrew.parser.readAll(), u16("<\u00A3\u00E0"));
  Reader thai("<\xA1\xFF", u"ISO-8859-11");
  EXPECT_EQ(thai.parser.readAll(), u16("<\u0E01\u00FF"));
}

TEST(XmlInput, AsciiAndLatin1BytesAreCodePoints) {
  Reader ascii("<\xE9", u"US-ASCII");
  EXPECT_EQ(ascii.parser.kind(), 8);
  EXPECT_EQ(ascii.parser.readAll(), u16("<é"));
  Reader latin("<\xE9", u"latin1");
  EXPECT_EQ(latin.parser.kind(), 9);
  EXPECT_EQ(latin.parser.readAll(), u16("<é"));
}

// ---- Converters ----

TEST(XmlInput, ShiftJisThroughConverter) {
  Reader r("<a>\x93\xFA\x96\x7B</a>", u"Shift_JIS");
  EXPECT_TRUE(r.parser.hasConverter());
  EXPECT_EQ(r.parser.kind(), 3);
  EXPECT_EQ(r.parser.readAll(), u16("<a>日本</a>"));
}

TEST(XmlInput, EucJpThroughConverter) {
  Reader r("<a>\xC6\xFC\xCB\xDC</a>", u"EUC-JP");
  EXPECT_TRUE(r.parser.hasConverter());
  EXPECT_EQ(r.parser.readAll(), u16("<a>日本</a>"));
}

TEST(XmlInput, UnknownEncodingRaises181) {
  InputParser parser;
  std::istringstream in("<a/>");
  try {
    parser.setInput(in, u"no-such-charset", UnicodeString());
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 181);
    EXPECT_TRUE(e.getRawMessage().startsWith(u"Unknown or unsupported encoding: no-such-charset."));
  }
}

TEST(XmlInput, UnknownEncodingAllowedReadsBytesAsTheyAre) {
  InputParser parser;
  parser.setFeature(ZQXmlParser::FEATURE_ALLOW_UNKNOWN_ENCODING, true);
  std::istringstream in(" <a>\xE9</a>");
  parser.setInput(in, u"no-such-charset", UnicodeString());
  EXPECT_FALSE(parser.hasConverter());
  EXPECT_EQ(parser.kind(), 0);
  parser.setPosition(1, 0);
  parser.detectEncoding(false);
  EXPECT_EQ(parser.readAll(), u16(" <a>é</a>"));
}

TEST(XmlInput, BuiltinEncodingsOnlyRejectsConverterEncodings) {
  InputParser parser;
  parser.setFeature(ZQXmlParser::FEATURE_BUILTIN_ENCODINGS_ONLY, true);
  std::istringstream in("<a/>");
  try {
    parser.setInput(in, u"Shift_JIS", UnicodeString());
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 181);
  }
  EXPECT_FALSE(parser.hasConverter());
}

TEST(XmlInput, EncodingCannotChangeOnceConverterIsIn) {
  Reader r("<a/>", u"Shift_JIS");
  r.parser.setEncoding(u"ISO-8859-2");
  EXPECT_EQ(r.parser.kind(), 3);
  EXPECT_TRUE(r.parser.hasConverter());
}

TEST(XmlInput, GenericUtf16KeepsDetectedOrder) {
  Reader r(utf16le(u16("<a/>"), true));
  r.parser.setEncoding(u"UTF-16");
  EXPECT_EQ(r.parser.kind(), 3);
  EXPECT_EQ(r.parser.getInputEncoding(), u"UTF-16");
  Reader r32(utf32(u16("<a/>"), false, false));
  r32.parser.setEncoding(u"UCS-4");
  EXPECT_EQ(r32.parser.kind(), 7);
}

TEST(XmlInput, GenericUtf16OverSingleByteKindReadsBytes) {
  Reader r("  x", u"ISO-8859-2");
  r.parser.setEncoding(u"UTF-16");
  EXPECT_EQ(r.parser.kind(), 2);
  EXPECT_EQ(r.parser.readAll(), u"  x");
}

// ---- Line ends, positions, validity ----

TEST(XmlInput, CrLfCrAloneAndCrNelAreOneLineEnd) {
  Reader r(
      "<a\r\nb\rc\r\xC2\x85"
      "d");
  EXPECT_EQ(r.parser.readAll(), u"<a\nb\nc\nd");
  EXPECT_EQ(r.parser.getLineNumber(), 4);
  EXPECT_EQ(r.parser.getColumnNumber(), 1);
}

TEST(XmlInput, NelAndLineSeparatorAreLineEndsOnlyInXml11) {
  Reader r10("<\xC2\x85\xE2\x80\xA8x");
  EXPECT_EQ(r10.parser.readAll(), u16("<\u0085\u2028x"));
  EXPECT_EQ(r10.parser.getLineNumber(), 1);
  EXPECT_EQ(r10.parser.getColumnNumber(), 4);
  Reader r11("<\xC2\x85\xE2\x80\xA8x");
  r11.parser.setXml11(true);
  EXPECT_EQ(r11.parser.readAll(), u"<\n\nx");
  EXPECT_EQ(r11.parser.getLineNumber(), 3);
  EXPECT_EQ(r11.parser.getColumnNumber(), 1);
}

TEST(XmlInput, PositionIsMinusOneBeforeFirstRead) {
  InputParser parser;
  std::istringstream in("<a/>");
  parser.setInput(in, UnicodeString(), UnicodeString());
  EXPECT_EQ(parser.getLineNumber(), -1);
  EXPECT_EQ(parser.getColumnNumber(), -1);
}

TEST(XmlInput, SupplementaryCharacterCountsAsOneColumn) {
  Reader r("<\xF0\x9F\x98\x80x");
  r.parser.readAll();
  EXPECT_EQ(r.parser.getColumnNumber(), 3);
}

TEST(XmlInput, PushbackDoesNotMovePosition) {
  Reader r("<ab");
  EXPECT_EQ(r.parser.readChar(), '<');
  UChar32 a = r.parser.readChar();
  EXPECT_EQ(r.parser.getColumnNumber(), 2);
  r.parser.unreadChar(a);
  EXPECT_EQ(r.parser.getColumnNumber(), 2);
  EXPECT_EQ(r.parser.readChar(), 'a');
  EXPECT_EQ(r.parser.getColumnNumber(), 2);
  EXPECT_EQ(r.parser.readChar(), 'b');
  EXPECT_EQ(r.parser.getColumnNumber(), 3);
}

TEST(XmlInput, InvalidCharacterRaises179WithCodePoint) {
  Reader r(std::string("<\x01"));
  EXPECT_EQ(r.parser.readChar(), '<');
  try {
    r.parser.readChar();
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 179);
    EXPECT_TRUE(e.getRawMessage().startsWith(u"Invalid Unicode character: U+0001"));
  }
}

TEST(XmlInput, InvalidCharacterReportedThenReturned) {
  InputParser parser;
  std::vector<UnicodeString> messages;
  parser.setCallbackError(
      [](const ZQError& e, void* data) {
        static_cast<std::vector<UnicodeString>*>(data)->push_back(e.getRawMessage());
      },
      &messages);
  std::istringstream in(std::string("<\x0B\xEF\xBF\xBE", 5));
  parser.setInput(in, UnicodeString(), UnicodeString());
  parser.start();
  std::vector<UChar32> got = parser.readCodePoints();
  EXPECT_EQ(got, (std::vector<UChar32>{'<', 0x0B, 0xFFFE}));
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(messages[0], u"Invalid Unicode character: U+000B");
  EXPECT_EQ(messages[1], u"Invalid Unicode character: U+FFFE");
}

TEST(XmlInput, Xml10AcceptsDeleteWhichXml11Refuses) {
  Reader r10("<\x7F");
  EXPECT_EQ(r10.parser.readAll(), u16("<\u007F"));
  Reader r11("<\x7F");
  r11.parser.setXml11(true);
  r11.parser.readChar();
  EXPECT_THROW(r11.parser.readChar(), ZQError);
}

TEST(XmlInput, Xml11RefusesRestrictedC1Controls) {
  Reader r("<\xC2\x80");
  r.parser.setXml11(true);
  r.parser.readChar();
  EXPECT_THROW(r.parser.readChar(), ZQError);
}

TEST(XmlInput, NoCharacterCheckFeatureSkipsTest) {
  Reader r(std::string("<\x01"));
  r.parser.setFeature(ZQXmlParser::FEATURE_NO_CHARACTER_CHECK, true);
  EXPECT_EQ(r.parser.readAll(), u16("<\u0001"));
}

TEST(XmlInput, FormFeedAcceptedOnceHtmlEntitiesAreIn) {
  Reader r("<\x0C");
  r.parser.setHtmlEntities();
  EXPECT_EQ(r.parser.readAll(), u16("<\u000C"));
  Reader plain("<\x0C");
  plain.parser.readChar();
  EXPECT_THROW(plain.parser.readChar(), ZQError);
}

// ---- Pushback ----

TEST(XmlInput, OneSlotHoldsFirstUnreadCharacter) {
  Reader r("<xyz");
  r.parser.readChar();
  r.parser.unreadChar('q');
  EXPECT_EQ(r.parser.pushedChar(), 'q');
  EXPECT_TRUE(r.parser.pushedText().isEmpty());
  EXPECT_EQ(r.parser.peekChar(), 'q');
  EXPECT_EQ(r.parser.readAll(), u"qxyz");
}

TEST(XmlInput, SecondUnreadFallsBackOnText) {
  Reader r("<z");
  r.parser.readChar();
  r.parser.unreadChar('b');
  r.parser.unreadChar('a');
  EXPECT_EQ(r.parser.pushedChar(), ZQXmlParserImpl::END_OF_INPUT);
  EXPECT_EQ(r.parser.pushedText(), u"ab");
  EXPECT_EQ(r.parser.readAll(), u"abz");
}

TEST(XmlInput, UnreadTextGoesAheadOfUnreadPartAndSlotBehind) {
  Reader r("<z");
  r.parser.readChar();
  r.parser.unreadText(u"cde");
  EXPECT_EQ(r.parser.readChar(), 'c');
  r.parser.unreadChar('x');
  r.parser.unreadText(u"12");
  EXPECT_EQ(r.parser.readAll(), u"12xdez");
}

TEST(XmlInput, UnreadSupplementaryCharacterRoundTrips) {
  Reader r("<z");
  r.parser.readChar();
  r.parser.unreadChar('z');
  r.parser.unreadChar(0x1F600);
  EXPECT_EQ(r.parser.readChar(), 0x1F600);
  EXPECT_EQ(r.parser.readChar(), 'z');
}

// ---- setInput ----

TEST(XmlInput, SetInputFromUriReadsFileAndNames) {
  TempDir dir;
  std::string path = dir.write("doc.XML", "<a>\xC3\xA9</a>");
  InputParser parser;
  ZQUri uri(UnicodeString::fromUTF8(path));
  parser.setInput(uri, UnicodeString(), UnicodeString());
  EXPECT_EQ(parser.getInputUri(), uri.getLocalPath());
  EXPECT_EQ(parser.getBaseUri(), uri.getBaseString());
  parser.start();
  EXPECT_EQ(parser.readAll(), u16("<a>é</a>"));
  parser.closeStream();
  EXPECT_FALSE(parser.hasStream());
}

TEST(XmlInput, SetInputBaseArgumentWins) {
  TempDir dir;
  std::string path = dir.write("doc.xml", "<a/>");
  InputParser parser;
  ZQUri uri(UnicodeString::fromUTF8(path));
  parser.setInput(uri, UnicodeString(), u"http://example.org/x/");
  EXPECT_EQ(parser.getBaseUri(), u"http://example.org/x/");
}

TEST(XmlInput, SetInputMissingFileRaises67) {
  TempDir dir;
  InputParser parser;
  ZQUri uri(UnicodeString::fromUTF8(dir.path("missing.xml")));
  try {
    parser.setInput(uri, UnicodeString(), UnicodeString());
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 67);
    EXPECT_NE(e.getRawMessage().indexOf(u"Cannot open file: "), -1);
  }
}

TEST(XmlInput, SetInputStreamAtEndRaises68) {
  std::istringstream in("x");
  in.get();
  in.get();  // read past the end
  InputParser parser;
  try {
    parser.setInput(in, UnicodeString(), UnicodeString());
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 68);
    EXPECT_NE(e.getRawMessage().indexOf(u"Unexpected end of input stream"), -1);
  }
}

TEST(XmlInput, SetInputBrokenStreamRaises70) {
  std::istringstream in("<a/>");
  in.setstate(std::ios::badbit);
  InputParser parser;
  try {
    parser.setInput(in, UnicodeString(), UnicodeString());
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 70);
    EXPECT_NE(e.getRawMessage().indexOf(u"Input stream error"), -1);
  }
}

TEST(XmlInput, CheckWithoutStreamRaises11) {
  InputParser parser;
  try {
    parser.checkStream();
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 11);
  }
}

TEST(XmlInput, CallerStreamIsNotFreedByClose) {
  std::istringstream in("<a/>");
  InputParser parser;
  parser.setInput(in, UnicodeString(), UnicodeString());
  parser.closeStream();
  EXPECT_EQ(in.get(), '<');
}

TEST(XmlInput, ResetParserClearsInputState) {
  Reader r("\xEF\xBB\xBF<a>");
  r.parser.setXml11(true);
  r.parser.readChar();
  r.parser.unreadChar('x');
  r.parser.resetParser();
  EXPECT_EQ(r.parser.kind(), 0);
  EXPECT_EQ(r.parser.getInputEncoding(), u"");
  EXPECT_FALSE(r.parser.bomSeen());
  EXPECT_FALSE(r.parser.xml11());
  EXPECT_EQ(r.parser.getLineNumber(), -1);
  EXPECT_EQ(r.parser.pushedChar(), ZQXmlParserImpl::END_OF_INPUT);
  EXPECT_FALSE(r.parser.hasStream());
}

// ---- pushStream ----

TEST(XmlInput, PushedStreamReadsThenOuterContinues) {
  TempDir dir;
  std::string outer = dir.write("outer.xml", "<a>tail");
  dir.write("inner.xml", "<?xml version='1.0' encoding='ISO-8859-2'?><b>\xA1</b>");
  InputParser parser;
  ZQUri uri(UnicodeString::fromUTF8(outer));
  parser.setInput(uri, UnicodeString(), UnicodeString());
  parser.start();
  EXPECT_EQ(parser.readChar(), '<');
  EXPECT_EQ(parser.readChar(), 'a');
  EXPECT_EQ(parser.readChar(), '>');
  parser.pushStream(u"inner.xml", ZQName(), UnicodeString());
  EXPECT_EQ(parser.inputDepth(), 1u);
  EXPECT_EQ(parser.kind(), 10);
  EXPECT_EQ(parser.getInputEncoding(), u"ISO-8859-2");
  EXPECT_NE(parser.getInputUri().indexOf(u"inner.xml"), -1);
  EXPECT_EQ(parser.readChar(), '<');
  EXPECT_EQ(parser.getLineNumber(), 1);
  EXPECT_EQ(parser.readAll(), u16("b>Ą</b>tail"));
  EXPECT_EQ(parser.inputDepth(), 0u);
  EXPECT_EQ(parser.kind(), 1);
  // The first character after the inner input ends comes through a nested read and is
  // counted once: column 3 when pushed, then "tail" brings it to 7.
  EXPECT_EQ(parser.getColumnNumber(), 7);
}

TEST(XmlInput, LineEndAfterInnerInputCountsOnce) {
  TempDir dir;
  std::string outer = dir.write("outer.xml", "<a>\nz");
  dir.write("inner.ent", "x\r");
  InputParser parser;
  ZQUri uri(UnicodeString::fromUTF8(outer));
  parser.setInput(uri, UnicodeString(), UnicodeString());
  parser.start();
  EXPECT_EQ(parser.readChar(), '<');
  EXPECT_EQ(parser.readChar(), 'a');
  EXPECT_EQ(parser.readChar(), '>');
  parser.pushStream(u"inner.ent", ZQName(), UnicodeString());
  EXPECT_EQ(parser.readChar(), 'x');
  // The inner CR ends its line; the outer LF is a line end of its own.
  EXPECT_EQ(parser.readChar(), 10);
  EXPECT_EQ(parser.readChar(), 10);
  EXPECT_EQ(parser.getLineNumber(), 2);
  EXPECT_EQ(parser.getColumnNumber(), 0);
  EXPECT_EQ(parser.readChar(), 'z');
  EXPECT_EQ(parser.getLineNumber(), 2);
  EXPECT_EQ(parser.getColumnNumber(), 1);
}

TEST(XmlInput, PushedStreamWithoutDeclarationKeepsItsText) {
  TempDir dir;
  std::string outer = dir.write("outer.xml", "<a>");
  dir.write("inner.ent", "<?xm>");
  InputParser parser;
  ZQUri uri(UnicodeString::fromUTF8(outer));
  parser.setInput(uri, UnicodeString(), UnicodeString());
  parser.start();
  parser.pushStream(u"inner.ent", ZQName(), UnicodeString());
  EXPECT_EQ(parser.readAll(), u"<?xm><a>");
}

TEST(XmlInput, PushedStreamShortTextBeforeSpaceIsKept) {
  TempDir dir;
  std::string outer = dir.write("outer.xml", "<a>");
  dir.write("inner.ent", "ab cd");
  InputParser parser;
  ZQUri uri(UnicodeString::fromUTF8(outer));
  parser.setInput(uri, UnicodeString(), UnicodeString());
  parser.start();
  parser.readAll();
  parser.pushStream(u"inner.ent", ZQName(), UnicodeString());
  EXPECT_EQ(parser.readAll(), u"ab cd");
}

TEST(XmlInput, PushedUtf16StreamKeepsKindAgainstDeclaration) {
  TempDir dir;
  std::string outer = dir.write("outer.xml", "<a>");
  dir.write("inner.xml", utf16le(u16("<?xml encoding='ISO-8859-1'?><b/>"), false));
  InputParser parser;
  ZQUri uri(UnicodeString::fromUTF8(outer));
  parser.setInput(uri, UnicodeString(), UnicodeString());
  parser.start();
  parser.readAll();
  parser.pushStream(u"inner.xml", ZQName(), UnicodeString());
  EXPECT_EQ(parser.kind(), 3);
  EXPECT_EQ(parser.getInputEncoding(), u"UTF-16LE");
  EXPECT_EQ(parser.readAll(), u"<b/>");
}

TEST(XmlInput, PushedTextStreamUsesGivenEncodingAndTextType) {
  TempDir dir;
  std::string outer = dir.write("outer.xml", "<a>");
  dir.write("part.txt", "\x93\xFA <x>");
  InputParser parser;
  ZQUri uri(UnicodeString::fromUTF8(outer));
  parser.setInput(uri, UnicodeString(), UnicodeString());
  parser.start();
  parser.readAll();
  parser.pushStream(u"part.txt", ZQN_text, u"Shift_JIS");
  EXPECT_EQ(parser.parserType(), ZQName(ZQN_text));
  EXPECT_EQ(parser.readAll(), u16("日 <x>"));
  // A text input ends by itself; the caller pops it.
  EXPECT_EQ(parser.inputDepth(), 1u);
  parser.popStream();
  EXPECT_EQ(parser.parserType(), ZQName(ZQN_auto));
}

TEST(XmlInput, ShortPushedStreamEndsLookAheadAtItsOwnEnd) {
  TempDir dir;
  std::string outer = dir.write("outer.xml", "<a>z");
  dir.write("short.ent", "<b");
  InputParser parser;
  ZQUri uri(UnicodeString::fromUTF8(outer));
  parser.setInput(uri, UnicodeString(), UnicodeString());
  parser.start();
  EXPECT_EQ(parser.readChar(), '<');
  parser.pushStream(u"short.ent", ZQName(), UnicodeString());
  EXPECT_EQ(parser.inputDepth(), 1u);
  EXPECT_EQ(parser.readAll(), u"<ba>z");
}

TEST(XmlInput, PushedXmlStreamSetsBaseDepth) {
  TempDir dir;
  std::string outer = dir.write("outer.xml", "<a>");
  dir.write("inc.xml", "<b/>");
  InputParser parser;
  ZQUri uri(UnicodeString::fromUTF8(outer));
  parser.setInput(uri, UnicodeString(), UnicodeString());
  parser.start();
  parser.openElements(3);
  parser.pushStream(u"inc.xml", ZQN_xml, UnicodeString());
  EXPECT_EQ(parser.baseDepth(), 2);
  EXPECT_EQ(parser.readAll(), u"<b/><a>");
  EXPECT_EQ(parser.baseDepth(), 0);
}

TEST(XmlInput, PushedMissingLocalFileRaises67) {
  TempDir dir;
  std::string outer = dir.write("outer.xml", "<a>");
  InputParser parser;
  ZQUri uri(UnicodeString::fromUTF8(outer));
  parser.setInput(uri, UnicodeString(), UnicodeString());
  parser.start();
  try {
    parser.pushStream(u"nothing-here.xml", ZQName(), UnicodeString());
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 67);
  }
  EXPECT_EQ(parser.inputDepth(), 0u);
}

TEST(XmlInput, PushedBadTextDeclarationRaises163And140) {
  TempDir dir;
  std::string outer = dir.write("outer.xml", "<a>");
  dir.write("noeq.xml", "<?xml version '1.0'?>");
  dir.write("noend.xml", "<?xml version='1.0'!>");
  InputParser parser;
  ZQUri uri(UnicodeString::fromUTF8(outer));
  parser.setInput(uri, UnicodeString(), UnicodeString());
  parser.start();
  try {
    parser.pushStream(u"noeq.xml", ZQName(), UnicodeString());
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 163);
    EXPECT_TRUE(e.getRawMessage().startsWith(u"Missing '=' after '<?xml version'"));
  }
  parser.closeStream();
  parser.setInput(uri, UnicodeString(), UnicodeString());
  parser.start();
  try {
    parser.pushStream(u"noend.xml", ZQName(), UnicodeString());
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 140);
    EXPECT_TRUE(e.getRawMessage().startsWith(u"Unexpected character: !"));
  }
}

// ---- HTML default charset ----

TEST(XmlInput, HtmlDefaultCharsetOverridesAssumedUtf8) {
  Reader r("<html>\xE9");
  r.parser.setHtmlDefaultCharset(u"ISO-8859-1");
  EXPECT_EQ(r.parser.kind(), 1);
  r.parser.applyHtmlDefaultCharset();
  EXPECT_EQ(r.parser.kind(), 9);
  EXPECT_EQ(r.parser.readAll(), u16("<html>é"));
}

TEST(XmlInput, HtmlDefaultCharsetThroughConverter) {
  Reader r("<html>\x93\xFA");
  r.parser.setHtmlDefaultCharset(u"Shift_JIS");
  r.parser.applyHtmlDefaultCharset();
  EXPECT_TRUE(r.parser.hasConverter());
  EXPECT_EQ(r.parser.readAll(), u16("<html>日"));
}

TEST(XmlInput, HtmlDefaultCharsetIgnoredAfterMarkOrWideKind) {
  Reader bom("\xEF\xBB\xBF<html>");
  bom.parser.setHtmlDefaultCharset(u"ISO-8859-2");
  bom.parser.applyHtmlDefaultCharset();
  EXPECT_EQ(bom.parser.kind(), 1);
  Reader wide(utf16le(u16("<html>"), false));
  wide.parser.setHtmlDefaultCharset(u"ISO-8859-2");
  wide.parser.applyHtmlDefaultCharset();
  EXPECT_EQ(wide.parser.kind(), 3);
  Reader none("<html>");
  none.parser.applyHtmlDefaultCharset();
  EXPECT_EQ(none.parser.kind(), 1);
}

TEST(XmlInput, FailedStreamReadsAsEnd) {
  Reader r("<abc");
  EXPECT_EQ(r.parser.readChar(), '<');
  EXPECT_EQ(r.parser.readChar(), 'a');
  r.in.setstate(std::ios::badbit);
  EXPECT_EQ(r.parser.readChar(), ZQXmlParserImpl::END_OF_INPUT);
}

TEST(XmlInput, FailedInnerStreamGivesWayToOuter) {
  std::istringstream outer("<a>x");
  InputParser parser;
  parser.setInput(outer, UnicodeString(), UnicodeString());
  parser.start();
  EXPECT_EQ(parser.readChar(), '<');
  // An inner input whose stream breaks: reading goes on in the outer one.
  auto* inner = new std::istringstream("yz");
  inner->setstate(std::ios::failbit);
  parser.pushInnerForTest(inner);
  EXPECT_EQ(parser.readAll(), u"a>x");
  EXPECT_EQ(parser.inputDepth(), 0u);
}

TEST(XmlInput, ConverterReportsStandardName) {
  Reader r("<a/>", u"shift_jis");
  EXPECT_EQ(r.parser.getInputEncoding(), u"Shift_JIS");
}

TEST(XmlInput, UnknownEncodingReportedToCallbackLeavesNothingToRead) {
  InputParser parser;
  std::vector<int> codes;
  parser.setCallbackError(
      [](const ZQError& e, void* data) {
        static_cast<std::vector<int>*>(data)->push_back(e.getErrorCode());
      },
      &codes);
  std::istringstream in("<a/>");
  parser.setInput(in, u"no-such-charset", UnicodeString());
  ASSERT_EQ(codes, std::vector<int>{181});
  // The converter that could not open stays in place and reads as an empty input.
  EXPECT_TRUE(parser.hasConverter());
  parser.start();
  EXPECT_EQ(parser.readChar(), ZQXmlParserImpl::END_OF_INPUT);
}

TEST(XmlInput, EncodingKindTableMatchesAliasesAfterCanonicalForm) {
  EXPECT_EQ(InputParser::encodingKindOfName(u"utf-16"), 2);
  EXPECT_EQ(InputParser::encodingKindOfName(u" ucs-4 "), 5);
  EXPECT_EQ(InputParser::encodingKindOfName(u"ascii"), 8);
  EXPECT_EQ(InputParser::encodingKindOfName(u"latin1"), 9);
  EXPECT_EQ(InputParser::encodingKindOfName(u"iso_8859-9"), 17);
  EXPECT_EQ(InputParser::encodingKindOfName(u"ISO-8859-16"), 23);
  EXPECT_EQ(InputParser::encodingKindOfName(u"Shift_JIS"), -1);
}
