// Round trips through the canonical form (XML Canonicalization 1.0 without comments, made by
// libxml2): what ZQDocument reads and writes back must canonicalise to the same bytes as its
// input, and the canonical form itself, read and written with sorted attributes and no
// declaration, must come back byte for byte, up to the writer's own told rules.
#include <gtest/gtest.h>
#include <libxml/c14n.h>
#include <libxml/parser.h>

#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "TestSupport.h"
#include "common/ZQDocument.h"
#include "common/ZQNameEnum.h"
#include "common/ZQXmlParser.h"
#include "common/ZQXmlSerializer.h"

using namespace ZQCommonNS;

namespace {

struct Sample {
  const char* name;
  std::string bytes;
  // Text holds a carriage return given by reference: written as it stands, it comes back as
  // a line feed.
  bool crInText = false;
  // The internal subset declares attributes: our reader scans ATTLIST over, so neither
  // defaults nor the normalisation of tokenized types apply.
  bool attlist = false;
};

std::string utf16le(const std::u16string& text) {
  std::string out("\xFF\xFE", 2);
  for (char16_t c : text) {
    out.push_back(static_cast<char>(c & 0xFF));
    out.push_back(static_cast<char>(c >> 8));
  }
  return out;
}

std::vector<Sample> samples() {
  return {
      {"plain", "<?xml version=\"1.0\"?>\n<doc><a>text</a><b>more <i>mixed</i> content</b></doc>"},
      {"defaultNamespace",
       "<doc xmlns=\"urn:a\"><in xmlns=\"\"><deep/></in><x:y xmlns:x=\"urn:x\" x:at=\"1\"/>"
       "<back/></doc>"},
      {"prefixes",
       "<p:doc xmlns:p=\"urn:p\" xmlns:q=\"urn:q\"><p:e xmlns:p=\"urn:p\" q:a=\"1\" p:b=\"2\" "
       "c=\"3\"><q:f/></p:e></p:doc>"},
      {"attributeOrder",
       "<doc z=\"1\" a=\"2\" m=\"3\" xmlns:b=\"urn:b\" b:k=\"4\" xmlns:a=\"urn:z\" a:k=\"5\" "
       "xmlns=\"urn:d\"/>"},
      {"internalEntities",
       "<!DOCTYPE doc [\n<!ENTITY e1 \"one\">\n<!ENTITY e2 \"two &e1; &#38;amp; <i>in</i>\">\n]>\n"
       "<doc a=\"&e1;-x\">&e2; &amp; &lt; &gt;</doc>"},
      {"characterReferences",
       "<doc a=\"&#x41;&#66;&#x20AC;\">&#x10000;&#65;&#xE9;&#x3C;&#x26;</doc>"},
      {"cdata", "<doc><![CDATA[<tag> & \"q\" ]]]]><![CDATA[>]]>tail<![CDATA[]]></doc>"},
      {"whitespaceInAttributesAndText",
       "<doc a=\"x&#9;y&#10;z&#13;w\" b=\"tab\tand\nnew\r\nline\">line1\r\nline2\rline3\ttab"
       "</doc>"},
      {"carriageReturnReference", "<doc>a&#13;b&#13;&#10;c</doc>", true},
      {"processingInstructions",
       "<?xml version=\"1.0\"?>\n<?first one two?>\n<doc><?inner data here?>x<?empty?></doc>\n"
       "<?last?>"},
      {"comments", "<!--c0--><doc><!-- c1 -->a<!--c2-->b<e><!--c3--></e></doc><!--c4-->"},
      {"whitespaceOutsideRoot", "\n\n  <doc>\n  <a/>\n</doc>\n\n"},
      {"emptyElements", "<doc><e1/><e2></e2><e3 a=\"1\"/><e4 a=\"1\"></e4></doc>"},
      {"xmlAttributes",
       "<doc xml:base=\"http://example.org/dir/\" xml:lang=\"en\"><p xml:lang=\"fr\" "
       "xml:space=\"preserve\"> x </p></doc>"},
      {"utf16",
       utf16le(u"<?xml version=\"1.0\" encoding=\"UTF-16\"?><doc a=\"\u00E9\">\u65E5\u672C "
               u"\u20AC \U00010400</doc>")},
      {"defaultAttributes",
       "<!DOCTYPE doc [<!ATTLIST e d CDATA \"def\" t CDATA #FIXED \"fix\">]>"
       "<doc><e/><e d=\"own\"/></doc>",
       false, true},
      {"specialCharacters",
       "<doc a=\"&lt;&gt;&amp;&quot;'\" b='\"' c=\"&gt;\">\"quoted\" 'apos' &gt; ]]&gt;</doc>"},
      {"tokenizedAttributes",
       "<!DOCTYPE doc [<!ATTLIST doc id ID #IMPLIED n NMTOKENS #IMPLIED>]>"
       "<doc id=\"  x1 \" n=\" a   b \"/>",
       false, true},
  };
}

// The canonical form of a document as libxml2 makes it: entities expanded, default
// attributes added, comments left out.
std::string canonical(const std::string& bytes) {
  xmlDocPtr doc = xmlReadMemory(bytes.data(), static_cast<int>(bytes.size()), "sample.xml", nullptr,
                                XML_PARSE_NOENT | XML_PARSE_DTDATTR | XML_PARSE_NONET);
  if (!doc) return "<libxml2 could not read it>";
  xmlChar* out = nullptr;
  int size = xmlC14NDocDumpMemory(doc, nullptr, XML_C14N_1_0, nullptr, 0, &out);
  std::string result = size >= 0 && out ? std::string(reinterpret_cast<char*>(out), size)
                                        : std::string("<no canonical form>");
  xmlFree(out);
  xmlFreeDoc(doc);
  return result;
}

ZQPtr<ZQDocument> newDocument(bool pull) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQXmlParser* parser = doc->getParser();
  parser->setParserType(ZQName(ZQN_xml), ZQName(ZQN_html));
  parser->setFeature(ZQXmlParser::FEATURE_REPORT_PI, true);
  doc->setPullMode(pull);
  return doc;
}

std::string saveToBytes(ZQDocument* doc) {
  std::ostringstream out;
  doc->save(out);
  return out.str();
}

// A whole load saved to a stream, and a pulled load saved as a string: the save itself pulls.
std::string roundTrip(const std::string& bytes, bool pull) {
  ZQPtr<ZQDocument> doc = newDocument(pull);
  std::istringstream in(bytes);
  doc->load(in);
  if (!pull) return saveToBytes(doc.get());
  std::string out;
  doc->saveXml(nullptr).toUTF8String(out);
  return out;
}

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
  for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
}

// The document with every ATTLIST declaration cut out (the samples hold no ">" inside one).
std::string withoutAttlists(std::string bytes) {
  for (size_t at = bytes.find("<!ATTLIST"); at != std::string::npos; at = bytes.find("<!ATTLIST"))
    bytes.erase(at, bytes.find('>', at) + 1 - at);
  return bytes;
}

// The canonical form as our writer puts it, by its told rules:
// - no XML declaration (feature 0) and no line feeds between the nodes outside the root, since
//   the writer adds no white space and the reader drops it there;
// - namespace declarations first, then the other attributes, each group in the text order of
//   (prefix, local name), an unprefixed name before any prefixed one (feature 1);
// - an element without content as "<e/>";
// - in attribute values ">" as "&gt;", and tab, line feed and carriage return as decimal
//   references;
// - in text a carriage return as it stands.
// The canonical form has no comments, no CDATA, no DOCTYPE, double quotes and single spaces
// in tags, which is what makes this small scanner enough.
std::string ourForm(const std::string& canon) {
  std::string out;
  size_t pos = 0;
  int depth = 0;
  while (pos < canon.size()) {
    if (canon[pos] != '<') {
      size_t end = std::min(canon.find('<', pos), canon.size());
      std::string text = canon.substr(pos, end - pos);
      pos = end;
      if (depth == 0) {
        EXPECT_EQ(text.find_first_not_of('\n'), std::string::npos) << "text outside the root";
        continue;
      }
      replaceAll(text, "&#xD;", "\r");
      out += text;
      continue;
    }
    if (canon.compare(pos, 2, "<?") == 0 || canon.compare(pos, 2, "</") == 0) {
      size_t end = canon.find('>', pos);
      if (canon[pos + 1] == '/') --depth;
      out += canon.substr(pos, end + 1 - pos);
      pos = end + 1;
      continue;
    }
    // A start tag: name, then ` qname="value"` pairs.
    size_t nameEnd = canon.find_first_of(" >", pos);
    std::string name = canon.substr(pos + 1, nameEnd - pos - 1);
    pos = nameEnd;
    std::vector<std::pair<std::pair<std::string, std::string>, std::string>> attrs;
    while (canon[pos] == ' ') {
      size_t eq = canon.find("=\"", pos);
      std::string qname = canon.substr(pos + 1, eq - pos - 1);
      size_t close = canon.find('"', eq + 2);
      std::string value = canon.substr(eq + 2, close - eq - 2);
      replaceAll(value, ">", "&gt;");
      replaceAll(value, "&#x9;", "&#9;");
      replaceAll(value, "&#xA;", "&#10;");
      replaceAll(value, "&#xD;", "&#13;");
      size_t colon = qname.find(':');
      std::string prefix = colon == std::string::npos ? "" : qname.substr(0, colon);
      std::string local = colon == std::string::npos ? qname : qname.substr(colon + 1);
      // Declarations sort ahead of every attribute.
      bool declaration = qname == "xmlns" || prefix == "xmlns";
      attrs.push_back({{std::string(declaration ? "0" : "1") + prefix, local}, value});
      pos = close + 1;
    }
    ++pos;  // '>'
    std::sort(attrs.begin(), attrs.end());
    out += "<" + name;
    for (const auto& a : attrs) {
      out += " ";
      std::string prefix = a.first.first.substr(1);
      if (!prefix.empty()) out += prefix + ":";
      out += a.first.second + "=\"" + a.second + "\"";
    }
    std::string endTag = "</" + name + ">";
    if (canon.compare(pos, endTag.size(), endTag) == 0) {
      out += "/>";
      pos += endTag.size();
    } else {
      out += ">";
      ++depth;
    }
  }
  return out;
}

class CanonicalRoundTrip : public ::testing::TestWithParam<Sample> {};

// Read whole and pulled, written back: the canonical form is unchanged.
TEST_P(CanonicalRoundTrip, SavedTextHasTheInputsCanonicalForm) {
  const Sample& sample = GetParam();
  std::string expected = canonical(sample.bytes);
  ASSERT_EQ(expected.find("<no canonical form>"), std::string::npos);
  ASSERT_EQ(expected.find("<libxml2"), std::string::npos);
  if (sample.crInText) {
    // The one told difference: a carriage return in text is written as it stands and read
    // back as a line feed, a CR LF pair as one line feed.
    replaceAll(expected, "&#xD;\n", "\n");
    replaceAll(expected, "&#xD;", "\n");
  }
  if (sample.attlist) {
    // Told difference: what the input means without its attribute declarations.
    std::string asRead = withoutAttlists(sample.bytes);
    std::string plain = canonical(asRead);
    EXPECT_NE(plain, expected) << "the declarations should matter to this sample";
    expected = plain;
  }
  for (bool pull : {false, true}) {
    SCOPED_TRACE(pull ? "pulled" : "whole");
    std::string saved = roundTrip(sample.bytes, pull);
    EXPECT_EQ(canonical(saved), expected) << "saved: " << saved;
  }
}

// The canonical form read and written with sorted attributes and no declaration comes back as
// it was, up to the writer's rules listed with ourForm.
TEST_P(CanonicalRoundTrip, CanonicalFormComesBackByteForByte) {
  const Sample& sample = GetParam();
  std::string canon = canonical(sample.bytes);
  for (bool pull : {false, true}) {
    SCOPED_TRACE(pull ? "pulled" : "whole");
    ZQPtr<ZQDocument> doc = newDocument(pull);
    std::istringstream in(canon);
    doc->load(in);
    ZQXmlSerializer* serializer = doc->getSerializer();
    serializer->setFeature(0, true);
    serializer->setFeature(1, true);
    EXPECT_EQ(saveToBytes(doc.get()), ourForm(canon)) << "canonical: " << canon;
  }
}

INSTANTIATE_TEST_SUITE_P(Samples, CanonicalRoundTrip, ::testing::ValuesIn(samples()),
                         [](const ::testing::TestParamInfo<Sample>& info) {
                           return std::string(info.param.name);
                         });

// The rules that ourForm applies, seen on one small canonical text, so that a change in the
// writer shows here by name.
TEST(CanonicalRoundTrip, WriterRulesOnOneCanonicalText) {
  std::string canon =
      "<?p d?>\n<doc xmlns=\"urn:d\" xmlns:z=\"urn:z\" b=\"&#x9;&#xA;&#xD;>\" "
      "z:a=\"1\"><e></e>a&#xD;b</doc>";
  ZQPtr<ZQDocument> doc = newDocument(false);
  std::istringstream in(canon);
  doc->load(in);
  doc->getSerializer()->setFeature(0, true);
  doc->getSerializer()->setFeature(1, true);
  std::string expected =
      "<?p d?><doc xmlns=\"urn:d\" xmlns:z=\"urn:z\" b=\"&#9;&#10;&#13;&gt;\" z:a=\"1\"><e/>a\rb"
      "</doc>";
  EXPECT_EQ(saveToBytes(doc.get()), expected);
  EXPECT_EQ(ourForm(canon), expected);
}

// An included text that is empty adds nothing and ends no element early; the text after it
// and the parent's end tag are read as usual.
TEST(DocumentXInclude, EmptyTextIncludeAddsNothing) {
  const char* root = getenv("ZQ_TEST_TMP");
  std::filesystem::path dir =
      std::filesystem::path(root && *root ? root : "/tmp") /
      ("zqcanon-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()));
  std::filesystem::create_directories(dir);
  std::ofstream(dir / "empty.txt", std::ios::binary).flush();
  std::ofstream(dir / "doc.xml", std::ios::binary)
      << "<r xmlns:xi=\"http://www.w3.org/2001/XInclude\">a<xi:include href=\"empty.txt\" "
         "parse=\"text\"/>b<c/></r>";
  for (bool pull : {false, true}) {
    SCOPED_TRACE(pull ? "pulled" : "whole");
    ZQPtr<ZQDocument> doc = newDocument(pull);
    doc->load(UnicodeString::fromUTF8((dir / "doc.xml").string()));
    doc->getSerializer()->setFeature(0, true);
    EXPECT_EQ(saveToBytes(doc.get()), "<r xmlns:xi=\"http://www.w3.org/2001/XInclude\">ab<c/></r>");
    EXPECT_TRUE(doc->hasXInclude());
  }
  std::error_code ec;
  std::filesystem::remove_all(dir, ec);
}

}  // namespace
