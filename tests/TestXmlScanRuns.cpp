// Reading in runs: the scanner takes plain ASCII straight from a stream buffer's get area
// when it holds the bytes, and one character at a time otherwise. Both ways must give the
// same events, names, text, attributes, errors and positions, wherever the buffer's
// refills cut the input.
#include <gtest/gtest.h>

#include <algorithm>
#include <istream>
#include <memory>
#include <random>
#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

#include "common/ZQError.h"
#include "common/ZQXmlParser.h"
#include "xml/ZQXmlScanText.h"

using namespace ZQCommonNS;
using icu::UnicodeString;

namespace {

/// A stream buffer over bytes that shows at most `chunk` of them per refill, so that runs
/// end at the edge of the get area.
class ChunkedBuf : public std::streambuf {
 public:
  ChunkedBuf(const std::string& bytes, size_t chunk) : m_bytes(bytes), m_chunk(chunk) {
    char* p = const_cast<char*>(m_bytes.data());
    setg(p, p, p);
  }

 protected:
  int_type underflow() override {
    char* base = const_cast<char*>(m_bytes.data());
    size_t offset = static_cast<size_t>(egptr() - base);
    if (offset >= m_bytes.size()) return traits_type::eof();
    size_t n = std::min(m_chunk, m_bytes.size() - offset);
    setg(base, base + offset, base + offset + n);
    return traits_type::to_int_type(*gptr());
  }
  int_type pbackfail(int_type c) override {
    if (gptr() == eback()) return traits_type::eof();
    gbump(-1);
    if (!traits_type::eq_int_type(c, traits_type::eof())) *gptr() = traits_type::to_char_type(c);
    return traits_type::to_int_type(*gptr());
  }

 private:
  std::string m_bytes;
  size_t m_chunk;
};

void collectError(const ZQError& error, void* data) {
  std::ostringstream out;
  out << "error " << error.getErrorCode() << " at " << error.getLineNumber() << ":"
      << error.getColumnNumber() << "\n";
  *static_cast<std::string*>(data) += out.str();
}

std::string text(const UnicodeString& s) {
  std::string out;
  s.toUTF8String(out);
  return out;
}

/// A stream buffer whose get area is a heap block of exactly the document's size, so that a
/// read one byte past the input is caught by the address sanitizer.
class ExactBuf : public std::streambuf {
 public:
  explicit ExactBuf(const std::string& bytes) : m_bytes(new char[bytes.size()]) {
    std::copy(bytes.begin(), bytes.end(), m_bytes.get());
    setg(m_bytes.get(), m_bytes.get(), m_bytes.get() + bytes.size());
  }

 private:
  std::unique_ptr<char[]> m_bytes;
};

/// A parser reading `in`, whose errors go to `log` instead of stopping it.
ZQPtr<ZQXmlParser> openParser(std::istream& in, std::string& log) {
  ZQPtr<ZQXmlParser> parser = ZQXmlParser::createXmlParser();
  parser->setFeature(ZQXmlParser::FEATURE_SKIP_EXTERNAL_DTD, true);
  parser->setCallbackError(collectError, &log);
  parser->setInput(in, UnicodeString(), UnicodeString());
  return parser;
}

/// Every event with what a caller reads of it, positions included, as one transcript.
std::string transcript(std::streambuf& buf) {
  std::istream in(&buf);
  std::string log;
  ZQPtr<ZQXmlParser> parser = openParser(in, log);
  for (int guard = 0; guard < 10000; ++guard) {
    ZQXmlParser::EventType type;
    try {
      type = parser->next();
    } catch (const ZQError& error) {
      // An error the callback may not pass over ends the reading where it was met.
      collectError(error, &log);
      log += "thrown\n";
      break;
    }
    std::ostringstream out;
    out << type << " " << parser->getLineNumber() << ":" << parser->getColumnNumber();
    if (type == ZQXmlParser::START_TAG || type == ZQXmlParser::END_TAG) {
      out << " " << static_cast<unsigned>(parser->getPrefix()) << ":"
          << static_cast<unsigned>(parser->getName()) << "@"
          << static_cast<unsigned>(parser->getNamespace());
    }
    if (type == ZQXmlParser::START_TAG) {
      for (int i = 0; i < parser->getAttributeCount(); ++i) {
        out << " [" << static_cast<unsigned>(parser->getAttributePrefix(i)) << ":"
            << static_cast<unsigned>(parser->getAttributeName(i)) << "@"
            << static_cast<unsigned>(parser->getAttributeNamespace(i)) << "="
            << text(parser->getAttributeValue(i)) << "]";
      }
    }
    if (type == ZQXmlParser::TEXT) out << " '" << text(parser->getText()) << "'";
    log += out.str() + "\n";
    if (type == ZQXmlParser::END_DOCUMENT) break;
  }
  return log;
}

std::string transcript(const std::string& document, size_t chunk) {
  ChunkedBuf buf(document, chunk);
  return transcript(buf);
}

// Documents that mix what runs take (plain ASCII text, names, values, whitespace) with what
// they leave to the per-character path (CR, tabs, non-ASCII, references, long names, bad
// markup), so that a run ends at each kind of character.
const char* const kDocuments[] = {
    "<?xml version=\"1.0\"?>\n<root a=\"1\" b='two words'>plain text\nover lines</root>\n",
    "<r>\r\nline one\r\nline two\rthree\r\n<e  x = \"v\"\r\n y='w'\t/></r>",
    "<r xmlns=\"urn:d\" xmlns:p=\"urn:p\"><p:e p:a=\"x\" b=\"y\">t</p:e><f/></r>",
    "<r>caf\xC3\xA9 na\xC3\xAFve <n\xC3\xA9 v=\"\xC3\xA9t\xC3\xA9\">\xE2\x82\xAC</n\xC3\xA9></r>",
    "<r a=\"x &amp; y\" b=\"&#65;&#x42;\" c=\"tab\there\" d=\"l\nf\">a &lt; b &gt; c</r>",
    "<r><averyveryveryveryveryverylongelementnamethatpassesthecache attributenamethatis"
    "alsoquitelongindeed=\"1\">x</averyveryveryveryveryverylongelementnamethatpassesthe"
    "cache></r>",
    "<r>a]b]]c]]&gt;<![CDATA[d]]>e<!--c-->f<?pi x?>g</r>",
    "<r><a></b></r>",
    "<r><a b='1'c='2'/><d e=\"1\" e=\"2\"/><f g=\"<\"/></r>",
    "<r>\x01 bad \x7F del</r>",
    "<r a=\"unterminated></r>",
    "<r>\n\t<a>1</a >\n\t<b>2</b\n>\n</r>\n",
    "<r>\n<e\n a=\"1\"\n\tb='2' \n c = \"3\"\n/><f  g='1'\n\n/></r>",
    "<r a='1'\n b='2'\n c='3' d></r>",
    // References of every kind inside text: declared plain, longer and markup values, an
    // external one, undefined names, a redeclared amp, and forms that are not references.
    "<!DOCTYPE r [<!ENTITY x \"y\"><!ENTITY two \"two chars\"><!ENTITY m \"<i>t</i>\">"
    "<!ENTITY ext SYSTEM \"none.ent\"><!ENTITY amp \"&#38;#38;\"><!ENTITY sp \" \">]>"
    "<r>a&x;b&two;c&m;d&undefined;f&amp;g&#65;h& i&x j&x:y;k&lt;&sp;&x;&x;l&ext;</r>",
    "<r><a>&amp;&amp;</a>&amp;<b> &lt; </b>\n&gt;&quot;&apos;\n<c>&amp</c>&a-b.c_d;&1;</r>",
};

// Text longer than the blocks a run is read in, with line feeds on both sides of their edges.
std::string longTextDocument() {
  std::string text = "<r>";
  for (int i = 0; i < 700; ++i) {
    text += "word";
    text += static_cast<char>('a' + i % 26);
    text += (i % 37 == 0 || i % 101 == 5) ? '\n' : ' ';
  }
  return text + "&amp;tail\n</r>";
}

TEST(XmlScanRuns, ChunkedReadingMatchesReadingFromOneBuffer) {
  std::vector<std::string> documents(std::begin(kDocuments), std::end(kDocuments));
  documents.push_back(longTextDocument());
  for (const std::string& document : documents) {
    SCOPED_TRACE(document);
    const std::string whole = transcript(document, 1u << 20);
    for (size_t chunk : {1u, 2u, 3u, 5u, 7u, 16u, 33u, 2049u}) {
      EXPECT_EQ(transcript(document, chunk), whole) << "chunk " << chunk << " of: " << document;
    }
  }
}

TEST(XmlScanRuns, InputEndingAnywhereInATagIsNotReadPast) {
  // Plain attributes one after another are read from one look at the buffer; the input may
  // end right after any of them.
  const std::string document = "<r a=\"1\" b='2' p:c=\"3\"  d='4'/>";
  for (size_t length = 1; length <= document.size(); ++length) {
    const std::string prefix = document.substr(0, length);
    ExactBuf exact(prefix);
    EXPECT_EQ(transcript(exact), transcript(prefix, 1u << 20)) << prefix;
  }
}

TEST(XmlScanRuns, LongTextKeepsItsCharactersAndLines) {
  const std::string document = longTextDocument();
  ChunkedBuf buf(document, 1u << 20);
  std::istream in(&buf);
  ZQPtr<ZQXmlParser> parser = ZQXmlParser::createXmlParser();
  parser->setInput(in, UnicodeString(), UnicodeString());
  ASSERT_EQ(parser->next(), ZQXmlParser::START_TAG);
  ASSERT_EQ(parser->next(), ZQXmlParser::TEXT);
  std::string expected = document.substr(3, document.size() - 3 - 4);
  expected.replace(expected.find("&amp;"), 5, "&");
  EXPECT_EQ(text(parser->getText()), expected);
  ASSERT_EQ(parser->next(), ZQXmlParser::END_TAG);
  // Every line feed of the text counted once, whatever block of the run it fell in.
  const auto feeds = std::count(document.begin(), document.end(), '\n');
  EXPECT_EQ(parser->getLineNumber(), 1 + static_cast<int>(feeds));
  // The end tag, after the last line feed, is all of the last line so far.
  EXPECT_EQ(parser->getColumnNumber(), 4);
}

// Every event's type and text, as next() gives them.
std::string textEvents(const std::string& document) {
  ChunkedBuf buf(document, 1u << 20);
  std::istream in(&buf);
  std::string log;
  ZQPtr<ZQXmlParser> parser = openParser(in, log);
  for (int guard = 0; guard < 100; ++guard) {
    ZQXmlParser::EventType type = parser->next();
    log += std::to_string(type);
    if (type == ZQXmlParser::TEXT) log += "[" + text(parser->getText()) + "]";
    log += " ";
    if (type == ZQXmlParser::END_DOCUMENT) break;
  }
  return log;
}

TEST(XmlScanRuns, EntityCharactersJoinTheTextTheyStandIn) {
  const std::string tags = std::to_string(ZQXmlParser::START_TAG) + " ";
  const std::string text = std::to_string(ZQXmlParser::TEXT);
  const std::string endTag = std::to_string(ZQXmlParser::END_TAG) + " ";
  const std::string end = std::to_string(ZQXmlParser::END_DOCUMENT) + " ";
  // The five predefined entities, alone, in a row and around text: one text each time.
  EXPECT_EQ(textEvents("<r>a&amp;b&lt;c&gt;d&quot;e&apos;f</r>"),
            tags + text + "[a&b<c>d\"e'f] " + endTag + end);
  EXPECT_EQ(textEvents("<r>&amp;&lt;&gt;</r>"), tags + text + "[&<>] " + endTag + end);
  EXPECT_EQ(textEvents("<r>&amp;</r>"), tags + text + "[&] " + endTag + end);
  // Declared ones: a plain character, a value that holds a reference to amp, markup, and
  // a bracket that may begin "]]>", which is read as input.
  EXPECT_EQ(textEvents("<!DOCTYPE r [<!ENTITY x \"y\"><!ENTITY a \"&#38;amp;\">"
                       "<!ENTITY m \"<i>t</i>\"><!ENTITY b \"]\">]>"
                       "<r>&x;z&a;&m;&b;</r>"),
            tags + text + "[yz&] " + tags + text + "[t] " + endTag + text + "[]] " + endTag + end);
  EXPECT_NE(textEvents("<!DOCTYPE r [<!ENTITY b \"]\">]><r>&b;]></r>").find("error 144"),
            std::string::npos);
}

TEST(XmlScanRuns, NextTokenStillReportsEachReference) {
  // next() takes plain references into the text where it reads; nextToken, asked after it
  // on the same parser, reports them one by one.
  const std::string document = "<r>a&amp;b<s>c&lt;d&#65;</s></r>";
  ChunkedBuf buf(document, 1u << 20);
  std::istream in(&buf);
  std::string log;
  ZQPtr<ZQXmlParser> parser = openParser(in, log);
  ASSERT_EQ(parser->next(), ZQXmlParser::START_TAG);
  ASSERT_EQ(parser->next(), ZQXmlParser::TEXT);
  EXPECT_EQ(text(parser->getText()), "a&b");
  ASSERT_EQ(parser->next(), ZQXmlParser::START_TAG);
  std::string events;
  for (ZQXmlParser::EventType type; (type = parser->nextToken()) != ZQXmlParser::END_TAG;) {
    events += std::to_string(type) + "[" +
              text(type == ZQXmlParser::TEXT ? parser->getText() : parser->getName().toString()) +
              "] ";
  }
  const std::string textEvent = std::to_string(ZQXmlParser::TEXT);
  const std::string reference = std::to_string(ZQXmlParser::ENTITY_REF);
  EXPECT_EQ(events,
            textEvent + "[c] " + reference + "[lt] " + textEvent + "[d] " + reference + "[#x41] ");
  EXPECT_EQ(log, "");
}

TEST(XmlScanRuns, PositionsAfterRunsCountLinesAndColumns) {
  // A text run with line feeds inside: the position after it is on its last line.
  ChunkedBuf buf("<r>ab\ncd\nefg<x/></r>", 1u << 20);
  std::istream in(&buf);
  ZQPtr<ZQXmlParser> parser = ZQXmlParser::createXmlParser();
  parser->setInput(in, UnicodeString(), UnicodeString());
  ASSERT_EQ(parser->next(), ZQXmlParser::START_TAG);
  ASSERT_EQ(parser->next(), ZQXmlParser::TEXT);
  EXPECT_EQ(text(parser->getText()), "ab\ncd\nefg");
  // next() has looked past the text for more of it and read "<x": line 3, column 5.
  EXPECT_EQ(parser->getLineNumber(), 3);
  EXPECT_EQ(parser->getColumnNumber(), 5);
}

}  // namespace

namespace {

// What appendTextRun must give, one byte at a time: the run of text bytes (printable ASCII
// but '<', '&' and ']', and tab and line feed), its line feeds and the last of them.
struct ReferenceRun {
  std::u16string text;
  size_t count = 0;
  long lastFeed = -1;
};

ReferenceRun referenceRun(const std::string& bytes) {
  ReferenceRun r;
  for (size_t i = 0; i < bytes.size(); ++i) {
    const unsigned char c = static_cast<unsigned char>(bytes[i]);
    const bool text =
        (c >= 0x20 && c < 0x7F && c != '<' && c != '&' && c != ']') || c == '\t' || c == '\n';
    if (!text) break;
    r.text += static_cast<char16_t>(c);
    if (c == '\n') {
      ++r.count;
      r.lastFeed = static_cast<long>(i);
    }
  }
  return r;
}

}  // namespace

TEST(XmlScanRuns, TextRunsMatchTheByteByByteRuleOnBothLoops) {
  // Bytes that end a run, bytes that count, and plain letters, in runs of every length
  // around the sixteen- and thirty-two-byte blocks and the 2 KB buffer blocks.
  const std::string stops = std::string("<&]\r\x01\x7F\x80\xFF", 8) + std::string(1, '\0');
  const bool detected = xmlscan::wideTextOn;
  std::mt19937 rng(7);
  for (bool wide : {false, true}) {
    xmlscan::wideTextOn = wide && detected;
    for (int round = 0; round < 3000; ++round) {
      const size_t length = round < 200 ? static_cast<size_t>(round) : rng() % 5000;
      std::string bytes;
      for (size_t i = 0; i < length; ++i) {
        const unsigned pick = rng() % 100;
        if (pick < 2)
          bytes += stops[rng() % stops.size()];
        else if (pick < 8)
          bytes += '\n';
        else if (pick < 10)
          bytes += '\t';
        else
          bytes += static_cast<char>('a' + rng() % 26);
      }
      // Some runs start in a string that already holds text.
      UnicodeString target(round % 3 == 0 ? u"head" : u"");
      const UnicodeString before = target;
      std::vector<unsigned char> heap(bytes.begin(), bytes.end());
      const unsigned char* p = heap.data();
      xmlscan::RunLines lines;
      const size_t run = xmlscan::appendTextRun(target, p, p + heap.size(), lines);
      const ReferenceRun expected = referenceRun(bytes);
      ASSERT_EQ(run, expected.text.size()) << "round " << round << " wide " << wide;
      EXPECT_EQ(target, before + UnicodeString(expected.text.data(),
                                               static_cast<int32_t>(expected.text.size())));
      EXPECT_EQ(lines.count, expected.count);
      EXPECT_EQ(lines.last ? static_cast<long>(lines.last - p) : -1L, expected.lastFeed);
    }
  }
  xmlscan::wideTextOn = detected;
}
