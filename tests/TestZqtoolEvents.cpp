// zqtool events: the event lines, the escaping of text, the errors in line and the exit
// status, first against a parser that plays a script, then through the tool itself.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "../tools/zqtool/ZQToolEvents.h"
#include "ZqtoolTestSupport.h"
#include "common/ZQError.h"
#include "common/ZQName.h"
#include "common/ZQXmlParser.h"

using namespace ZQCommonNS;

namespace {

/// One attribute of a scripted start tag.
struct ScriptAttr {
  UnicodeString ns;
  UnicodeString prefix;
  UnicodeString name;
  UnicodeString value;
};

/// One step of the script: what next() returns and what the getters then answer.
struct ScriptStep {
  ZQXmlParser::EventType type = ZQXmlParser::END_DOCUMENT;
  int depth = 0;
  UnicodeString prefix;
  UnicodeString name;
  UnicodeString ns;
  std::vector<ScriptAttr> attrs;
  UnicodeString text;
  bool empty = false;
  std::vector<ZQError> queued;  ///< errors queued while reaching this step
  bool throws = false;          ///< next() throws `thrown` instead of reaching the step
  ZQError thrown;
};

ZQName nameOf(const UnicodeString& text) { return text.isEmpty() ? ZQName() : ZQName(text); }

/// A parser that plays a script; it records which of next() and nextToken() was called.
class ScriptParser : public ZQXmlParser {
 public:
  explicit ScriptParser(std::vector<ScriptStep> steps) : m_steps(std::move(steps)) {}

  int nextCalls = 0;
  int nextTokenCalls = 0;

  EventType next() override {
    ++nextCalls;
    return advance();
  }
  EventType nextToken() override {
    ++nextTokenCalls;
    return advance();
  }
  bool popError(ZQError& error) override {
    if (m_queue.empty()) return false;
    error = m_queue.front();
    m_queue.erase(m_queue.begin());
    return true;
  }
  int getDepth() override { return step().depth; }
  ZQName getName() override { return nameOf(step().name); }
  ZQName getPrefix() override { return nameOf(step().prefix); }
  ZQName getNamespace() override { return nameOf(step().ns); }
  UnicodeString getText() override { return step().text; }
  bool isEmptyElementTag() override { return step().empty; }
  int getAttributeCount() override {
    return step().type == START_TAG ? static_cast<int>(step().attrs.size()) : -1;
  }
  ZQName getAttributeNamespace(int i) override { return nameOf(step().attrs.at(i).ns); }
  ZQName getAttributeName(int i) override { return nameOf(step().attrs.at(i).name); }
  ZQName getAttributePrefix(int i) override { return nameOf(step().attrs.at(i).prefix); }
  UnicodeString getAttributeValue(int i) override { return step().attrs.at(i).value; }
  UnicodeString getAttributeValue(ZQName, ZQName) override { return UnicodeString(); }
  EventType getEventType() override { return m_index < 0 ? START_DOCUMENT : step().type; }
  int getLineNumber() override { return 7; }
  int getColumnNumber() override { return 3; }

  void setFeature(Feature, bool) override {}
  bool getFeature(Feature) override { return false; }
  void setInput(ZQUri&, const UnicodeString&, const UnicodeString&) override {}
  void setInput(std::istream&, const UnicodeString&, const UnicodeString&) override {}
  void closeStream() override {}
  UnicodeString getInputEncoding() override { return UnicodeString(); }
  void defineEntityReplacementText(ZQName, const UnicodeString&) override {}
  int getNamespaceCount(int) override { return 0; }
  ZQName getNamespacePrefix(int) override { return ZQName(); }
  ZQName getNamespaceUri(int) override { return ZQName(); }
  ZQName getNamespace(ZQName) override { return ZQName(); }
  UnicodeString getPositionDescription() override { return UnicodeString(); }
  bool isWhitespace() override { return false; }
  ZQName getTarget() override { return ZQName(); }
  bool hasXmlDecl() override { return false; }

 private:
  const ScriptStep& step() const {
    static const ScriptStep kStart{ZQXmlParser::START_DOCUMENT};
    return m_index < 0 ? kStart : m_steps[static_cast<size_t>(m_index)];
  }
  EventType advance() {
    if (m_index + 1 < static_cast<int>(m_steps.size())) {
      const ScriptStep& s = m_steps[static_cast<size_t>(m_index + 1)];
      m_queue.insert(m_queue.end(), s.queued.begin(), s.queued.end());
      if (s.throws) throw s.thrown;
      ++m_index;
    }
    return step().type;
  }

  std::vector<ScriptStep> m_steps;
  std::vector<ZQError> m_queue;
  int m_index = -1;
};

ScriptStep endDocument() { return ScriptStep{ZQXmlParser::END_DOCUMENT}; }

ZQError parserError(unsigned short code, const char* message, int line, int column) {
  return ZQError(code, UnicodeString::fromUTF8(message),
                 UnicodeString(u"ZQCommonNS::ZQXmlParserImpl"), line, column, UnicodeString());
}

std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> out;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) out.push_back(line);
  return out;
}

TEST(ZqtoolEvents, StartTagLineHasDepthQualifiedNameNamespaceAndAttributes) {
  ScriptStep tag{ZQXmlParser::START_TAG, 1, u"p", u"a", u"urn:x"};
  tag.attrs = {{u"urn:x", u"p", u"id", u"1"}, {u"", u"", u"plain", u"two words"}};
  ScriptParser parser({tag, endDocument()});
  std::ostringstream out;
  EXPECT_EQ(zqtool::listEvents(parser, false, out), 0);
  EXPECT_EQ(out.str(),
            "START_TAG 1 p:a {urn:x} urn:x/id=\"1\" plain=\"two words\"\n"
            "END_DOCUMENT 0\n");
}

TEST(ZqtoolEvents, EmptyElementIsMarkedAndEndTagShowsItsName) {
  ScriptStep start{ZQXmlParser::START_TAG, 1, u"", u"a"};
  start.empty = true;
  ScriptParser parser({start, ScriptStep{ZQXmlParser::END_TAG, 1, u"", u"a"}, endDocument()});
  std::ostringstream out;
  EXPECT_EQ(zqtool::listEvents(parser, false, out), 0);
  EXPECT_EQ(out.str(), "START_TAG 1 a (empty)\nEND_TAG 1 a\nEND_DOCUMENT 0\n");
}

TEST(ZqtoolEvents, TextIsEscapedOntoOneLine) {
  ScriptStep text{ZQXmlParser::TEXT, 1};
  text.text = UnicodeString(u"a\"b\\c\nd\re\tf") + UnicodeString(static_cast<UChar32>(1)) +
              UnicodeString(static_cast<UChar32>(0x85)) +
              UnicodeString(static_cast<UChar32>(0x2028)) + UnicodeString(u"\u00e9") +
              UnicodeString(static_cast<UChar>(0xD800));
  ScriptParser parser({text, endDocument()});
  std::ostringstream out;
  EXPECT_EQ(zqtool::listEvents(parser, false, out), 0);
  const auto got = lines(out.str());
  ASSERT_EQ(got.size(), 2u);
  EXPECT_EQ(got[0], "TEXT 1 \"a\\\"b\\\\c\\nd\\re\\tf\\x01\\u0085\\u2028\xC3\xA9\\uD800\"");
}

TEST(ZqtoolEvents, EntityRefAndProcessingInstructionShowNameAndText) {
  ScriptParser parser(
      {ScriptStep{ZQXmlParser::ENTITY_REF, 1, u"", u"#x41", u"", {}, u"A"},
       ScriptStep{ZQXmlParser::PROCESSING_INSTRUCTION, 0, u"", u"pi", u"", {}, u"do it"},
       ScriptStep{ZQXmlParser::COMMENT, 0, u"", u"", u"", {}, u" c "}, endDocument()});
  std::ostringstream out;
  EXPECT_EQ(zqtool::listEvents(parser, true, out), 0);
  EXPECT_EQ(out.str(),
            "ENTITY_REF 1 #x41 \"A\"\n"
            "PROCESSING_INSTRUCTION 0 pi \"do it\"\n"
            "COMMENT 0 \" c \"\n"
            "END_DOCUMENT 0\n");
}

TEST(ZqtoolEvents, TokenModeCallsNextTokenOnly) {
  ScriptParser tokens({ScriptStep{ZQXmlParser::START_TAG, 1, u"", u"a"}, endDocument()});
  std::ostringstream out;
  zqtool::listEvents(tokens, true, out);
  EXPECT_EQ(tokens.nextTokenCalls, 2);
  EXPECT_EQ(tokens.nextCalls, 0);

  ScriptParser events({ScriptStep{ZQXmlParser::START_TAG, 1, u"", u"a"}, endDocument()});
  zqtool::listEvents(events, false, out);
  EXPECT_EQ(events.nextCalls, 2);
  EXPECT_EQ(events.nextTokenCalls, 0);
}

TEST(ZqtoolEvents, QueuedErrorsFollowTheEventThatRaisedThem) {
  ScriptStep start{ZQXmlParser::START_TAG, 1, u"", u"a"};
  start.empty = true;
  start.queued = {parserError(770, "Unexpected whitespace after '/'.", 1, 4)};
  ScriptParser parser({start, ScriptStep{ZQXmlParser::END_TAG, 1, u"", u"a"}, endDocument()});
  std::ostringstream out;
  EXPECT_EQ(zqtool::listEvents(parser, false, out), 0);
  EXPECT_EQ(out.str(),
            "START_TAG 1 a (empty)\n"
            "warning 770 \"Unexpected whitespace after '/'.\" line 1 col 4\n"
            "END_TAG 1 a\n"
            "END_DOCUMENT 0\n");
}

TEST(ZqtoolEvents, ThrownErrorEndsTheListingWithStatusOne) {
  ScriptStep bad;
  bad.throws = true;
  bad.thrown = parserError(130, "Only one top level element is allowed.", 2, 5);
  bad.queued = {parserError(771, "Unexpected character '--' in comment", 1, 9)};
  ScriptParser parser({ScriptStep{ZQXmlParser::START_TAG, 1, u"", u"a"}, bad, endDocument()});
  std::ostringstream out;
  EXPECT_EQ(zqtool::listEvents(parser, false, out), 1);
  EXPECT_EQ(out.str(),
            "START_TAG 1 a\n"
            "warning 771 \"Unexpected character '--' in comment\" line 1 col 9\n"
            "error 130 \"Only one top level element is allowed.\" line 2 col 5\n");
}

TEST(ZqtoolEvents, ErrorWithoutPositionTakesTheParsers) {
  // Without the feature that drops position descriptions, the message holds the position
  // and the error has none; the line then shows where the parser stopped.
  ScriptStep bad;
  bad.throws = true;
  bad.thrown = parserError(129, "Missing end tag.\nEND_DOCUMENT, Line 7, Col 3.", -1, -1);
  ScriptParser parser({bad});
  std::ostringstream out;
  EXPECT_EQ(zqtool::listEvents(parser, false, out), 1);
  EXPECT_EQ(out.str(),
            "error 129 \"Missing end tag.\\nEND_DOCUMENT, Line 7, Col 3.\" line 7 col 3\n");
}

TEST(ZqtoolEvents, EndlessParserIsStoppedByTheEventCap) {
  std::vector<ScriptStep> steps(50, ScriptStep{ZQXmlParser::TEXT, 1, u"", u"", u"", {}, u"x"});
  ScriptParser parser(steps);
  std::ostringstream out;
  EXPECT_EQ(zqtool::listEvents(parser, false, out, 10), 1);
  const auto got = lines(out.str());
  ASSERT_EQ(got.size(), 11u);
  EXPECT_EQ(got.back(), "error: no END_DOCUMENT after 10 events");
}

TEST(ZqtoolEvents, FeatureNamesAreThoseOfTheInterface) {
  ZQXmlParser::Feature feature = ZQXmlParser::FEATURE_SKIP_EXTERNAL_DTD;
  ASSERT_TRUE(zqtool::featureByName("FEATURE_REPORT_PI", feature));
  EXPECT_EQ(feature, ZQXmlParser::FEATURE_REPORT_PI);
  ASSERT_TRUE(zqtool::featureByName("FEATURE_FORBID_EXTERNAL_ENTITIES", feature));
  EXPECT_EQ(feature, ZQXmlParser::FEATURE_FORBID_EXTERNAL_ENTITIES);
  ASSERT_TRUE(zqtool::featureByName("FEATURE_SKIP_EXTERNAL_DTD", feature));
  EXPECT_EQ(feature, ZQXmlParser::FEATURE_SKIP_EXTERNAL_DTD);
  EXPECT_FALSE(zqtool::featureByName("REPORT_PI", feature));
  EXPECT_FALSE(zqtool::featureByName("feature_report_pi", feature));
}

#ifdef ZQ_ZQTOOL_PATH

using zqtooltest::ToolRun;

/// Runs zqtool with `args` (already quoted for the shell).
ToolRun runTool(const std::string& args) { return zqtooltest::runTool(ZQ_ZQTOOL_PATH, args); }

std::string scratchFile(const std::string& name, const std::string& content) {
  const char* dir = std::getenv("ZQ_TEST_TMP");
  std::string base = dir && *dir ? dir : "/tmp";
  std::string mkdir = "mkdir -p '" + base + "'";
  if (std::system(mkdir.c_str()) != 0) return std::string();
  const std::string path = base + "/zqtool_events_" + name;
  std::ofstream(path, std::ios::binary) << content;
  return path;
}

TEST(ZqtoolEventsCommand, WithoutInputPrintsUsageAndExitsTwo) {
  EXPECT_EQ(runTool("events").status, 2);
  EXPECT_EQ(runTool("events --token").status, 2);
}

TEST(ZqtoolEventsCommand, UnknownFeatureExitsTwo) {
  const std::string path = scratchFile("unknown_feature.xml", "<a/>");
  EXPECT_EQ(runTool("events --feature FEATURE_NONSENSE '" + path + "'").status, 2);
}

TEST(ZqtoolEventsCommand, MissingFileIsCommonErrorSixtySeven) {
  const ToolRun run = runTool("events /nonexistent/zqtool_events_missing.xml");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out.rfind("error 67 ", 0), 0u) << run.out;
}

TEST(ZqtoolEventsCommand, EmptyFileEndsAtOnce) {
  const std::string path = scratchFile("empty.xml", "");
  const ToolRun run = runTool("events --feature FEATURE_SKIP_EXTERNAL_DTD '" + path + "'");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "END_DOCUMENT 0\n");
}

TEST(ZqtoolEventsCommand, ReadsStandardInput) {
  const std::string path = scratchFile("stdin.xml", "");
  const ToolRun run = runTool("events --token - < '" + path + "'");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "END_DOCUMENT 0\n");
}

TEST(ZqtoolEventsCommand, EmptyElementGivesStartEndAndEndDocument) {
  const std::string path = scratchFile("empty_element.xml", "<a/>");
  const ToolRun run = runTool("events '" + path + "'");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "START_TAG 1 a (empty)\nEND_TAG 1 a\nEND_DOCUMENT 0\n");
}

TEST(ZqtoolEventsCommand, NamespacesAttributesAndMergedText) {
  const std::string path = scratchFile(
      "namespaces.xml", "<r xmlns:p='urn:p'><p:a p:x='1' y='a\nb'>t&amp;u<!--c-->v</p:a></r>");
  const ToolRun run = runTool("events '" + path + "'");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out,
            "START_TAG 1 r http://www.w3.org/2000/xmlns//p=\"urn:p\"\n"
            "START_TAG 2 p:a {urn:p} urn:p/x=\"1\" y=\"a b\"\n"
            "TEXT 2 \"t&uv\"\n"
            "END_TAG 2 p:a {urn:p}\n"
            "END_TAG 1 r\n"
            "END_DOCUMENT 0\n");
}

TEST(ZqtoolEventsCommand, TokenModeReportsCharacterReferencesAndComments) {
  const std::string path = scratchFile("tokens.xml", "<r>&#x41;<!--c--></r>");
  const ToolRun run = runTool("events --token '" + path + "'");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out,
            "START_TAG 1 r\n"
            "ENTITY_REF 1 #x41 \"A\"\n"
            "COMMENT 1 \"c\"\n"
            "END_TAG 1 r\n"
            "END_DOCUMENT 0\n");
}

TEST(ZqtoolEventsCommand, FeatureReportPiStopsAtProcessingInstructions) {
  const std::string path = scratchFile("pi.xml", "<r><?t  d ?></r>");
  EXPECT_EQ(runTool("events '" + path + "'").out, "START_TAG 1 r\nEND_TAG 1 r\nEND_DOCUMENT 0\n");
  const ToolRun run = runTool("events --feature FEATURE_REPORT_PI '" + path + "'");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out,
            "START_TAG 1 r\nPROCESSING_INSTRUCTION 1 t \"d\"\nEND_TAG 1 r\nEND_DOCUMENT 0\n");
}

TEST(ZqtoolEventsCommand, NonFatalErrorIsListedAfterItsEventAndExitIsZero) {
  const std::string path = scratchFile("nonfatal.xml", "<a/ >");
  const ToolRun run = runTool("events '" + path + "'");
  EXPECT_EQ(run.status, 0);
  const auto got = lines(run.out);
  ASSERT_EQ(got.size(), 4u) << run.out;
  EXPECT_EQ(got[0], "START_TAG 1 a (empty)");
  EXPECT_EQ(got[1].rfind("warning 770 \"Unexpected whitespace after '/'.", 0), 0u) << got[1];
  EXPECT_EQ(got[2], "END_TAG 1 a");
  EXPECT_EQ(got[3], "END_DOCUMENT 0");
}

TEST(ZqtoolEventsCommand, FatalErrorEndsWithCodeMessagePositionAndStatusOne) {
  const std::string path = scratchFile("fatal.xml", "<a>\n</b>");
  const ToolRun run = runTool("events --feature FEATURE_NO_POSITION_DESCRIPTION '" + path + "'");
  EXPECT_EQ(run.status, 1);
  const auto got = lines(run.out);
  ASSERT_EQ(got.size(), 3u) << run.out;
  EXPECT_EQ(got[0], "START_TAG 1 a");
  EXPECT_EQ(got[1], "TEXT 1 \"\\n\"");
  EXPECT_EQ(got[2], "error 134 \"End tag 'b' does not match the start tag 'a'.\" line 2 col 4");
}

#endif  // ZQ_ZQTOOL_PATH

}  // namespace
