// The XML serializer: call order and states, escaping, encodings, namespace declarations,
// sorted attributes, the failures it raises, and its output as another parser reads it.
#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <unicode/ucnv.h>

#include <functional>
#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

#include "StreamTestSupport.h"
#include "TestSupport.h"
#include "common/ZQCommon.h"
#include "common/ZQError.h"
#include "common/ZQNameEnum.h"
#include "common/ZQXmlSerializer.h"
#include "common/ZQXmlUtil.h"
#include "core/ZQCommonError.h"
#include "xml/ZQXmlSerializerImpl.h"

using namespace ZQCommonNS;
using zqtest::u;
using zqtest::utf8;

namespace {

ZQName nm(const char* text) { return ZQName(u(text)); }

UnicodeString fromUtf8(const char* text) { return UnicodeString::fromUTF8(text); }

// Runs `fn` and hands back the ZQError it throws; fails the test when nothing is thrown.
ZQError catchError(const std::function<void()>& fn) {
  try {
    fn();
  } catch (const ZQError& e) {
    return e;
  }
  ADD_FAILURE() << "no ZQError thrown";
  return ZQError();
}

void expectError(const ZQError& e, unsigned short code, const char* message, const char* source) {
  EXPECT_EQ(e.getErrorCode(), code);
  EXPECT_EQ(utf8(e.getRawMessage()), message);
  EXPECT_EQ(utf8(e.getSource()), source);
  EXPECT_EQ(e.getLineNumber(), -1);
  EXPECT_EQ(e.getColumnNumber(), -1);
  EXPECT_TRUE(e.getUri().isEmpty());
}

// A stream buffer that takes `limit` bytes and then refuses every further one.
class LimitedBuf : public std::streambuf {
 public:
  explicit LimitedBuf(size_t limit) : m_limit(limit) {}
  std::string data;

 protected:
  int_type overflow(int_type ch) override {
    if (traits_type::eq_int_type(ch, traits_type::eof())) return traits_type::not_eof(ch);
    if (data.size() >= m_limit) return traits_type::eof();
    data.push_back(static_cast<char>(ch));
    return ch;
  }

 private:
  size_t m_limit;
};

// Parses bytes with libxml2; true when they are a well-formed, namespace-well-formed document.
struct ParsedXml {
  xmlDocPtr doc = nullptr;
  explicit ParsedXml(const std::string& bytes, const char* encoding = nullptr) {
    doc = xmlReadMemory(bytes.data(), static_cast<int>(bytes.size()), "mem.xml", encoding,
                        XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
  }
  ~ParsedXml() {
    if (doc) xmlFreeDoc(doc);
  }
  xmlNodePtr root() const { return doc ? xmlDocGetRootElement(doc) : nullptr; }
};

std::string content(xmlNodePtr node) {
  xmlChar* text = xmlNodeGetContent(node);
  std::string out = text ? reinterpret_cast<const char*>(text) : "";
  xmlFree(text);
  return out;
}

std::string prop(xmlNodePtr node, const char* name, const char* ns = nullptr) {
  xmlChar* value =
      ns ? xmlGetNsProp(node, BAD_CAST name, BAD_CAST ns) : xmlGetNoNsProp(node, BAD_CAST name);
  std::string out = value ? reinterpret_cast<const char*>(value) : "<none>";
  xmlFree(value);
  return out;
}

std::string nodeNs(xmlNodePtr node) {
  return node && node->ns && node->ns->href ? reinterpret_cast<const char*>(node->ns->href) : "";
}

class XmlSerializerTest : public ::testing::Test {
 protected:
  void SetUp() override { s = ZQXmlSerializer::createXmlSerializer(); }
  ZQXmlSerializerImpl* impl() { return static_cast<ZQXmlSerializerImpl*>(s.get()); }
  // Output set to the string stream and the document started, with no declaration.
  void begin(const char* encoding = "") {
    s->setFeature(ZQXmlSerializer::FEATURE_OMIT_XML_DECLARATION, true);
    s->setOutput(out, u(encoding), UnicodeString());
    s->startDocument(UnicodeString(), UnicodeString());
  }
  std::string written() const { return out.str(); }

  std::ostringstream out;
  ZQPtr<ZQXmlSerializer> s;
};

// ---- factories, features, types ----

TEST_F(XmlSerializerTest, FactoriesMakeTheImplementation) {
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(s->getTypeID(), ZQTypeId::ZQXmlSerializerImpl);
  EXPECT_TRUE(s->isA(ZQTypeId::ZQXmlSerializer));
  EXPECT_TRUE(s->isA(ZQTypeId::ZQRCObject));
  EXPECT_EQ(utf8(s->getTypeName()), "ZQXmlSerializerImpl");
  EXPECT_EQ(s->getRefCount(), 1);
  ZQPtr<ZQXmlSerializer> other = ZQXmlUtil::createXmlSerializer();
  ASSERT_NE(other, nullptr);
  EXPECT_NE(other.get(), s.get());
  EXPECT_EQ(other->getTypeID(), ZQTypeId::ZQXmlSerializerImpl);
  EXPECT_EQ(impl()->getState(), ZQXmlSerializerImpl::STATE_RESET);
}

TEST_F(XmlSerializerTest, FeaturesByNumber) {
  EXPECT_FALSE(s->getFeature(0));
  EXPECT_FALSE(s->getFeature(1));
  s->setFeature(0, true);
  EXPECT_TRUE(s->getFeature(0));
  EXPECT_FALSE(s->getFeature(1));
  s->setFeature(1, true);
  EXPECT_TRUE(s->getFeature(1));
  s->setFeature(2, true);
  s->setFeature(-1, true);
  EXPECT_FALSE(s->getFeature(2));
  EXPECT_FALSE(s->getFeature(-1));
  EXPECT_FALSE(s->getFeature(1000));
  s->setFeature(0, false);
  EXPECT_FALSE(s->getFeature(0));
}

// ---- the prolog ----

TEST_F(XmlSerializerTest, DeclarationWithoutEncodingOrStandalone) {
  s->setOutput(out, UnicodeString(), UnicodeString());
  EXPECT_EQ(impl()->getState(), ZQXmlSerializerImpl::STATE_OUTPUT_SET);
  s->startDocument(UnicodeString(), UnicodeString());
  EXPECT_EQ(impl()->getState(), ZQXmlSerializerImpl::STATE_PROLOG);
  EXPECT_EQ(written(), "<?xml version=\"1.0\"?>");
}

TEST_F(XmlSerializerTest, DeclarationWithUtf8AndStandalone) {
  s->setOutput(out, u(" utf-8 "), u("yes"));
  s->startDocument(UnicodeString(), UnicodeString());
  EXPECT_EQ(written(), "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>");
}

TEST_F(XmlSerializerTest, StartDocumentArgumentsReplaceStoredValues) {
  s->setOutput(out, u("EUC-JP"), u("no"));
  s->startDocument(u("UTF-8"), u("yes"));
  EXPECT_EQ(written(), "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>");
  EXPECT_EQ(utf8(impl()->getEncoding()), "UTF-8");
}

TEST_F(XmlSerializerTest, EmptyStartDocumentArgumentsKeepSetOutputValues) {
  s->setOutput(out, u("Shift_JIS"), u("no"));
  s->startDocument(UnicodeString(), UnicodeString());
  EXPECT_EQ(written(), "<?xml version=\"1.0\" encoding=\"SHIFT_JIS\" standalone=\"no\"?>");
}

TEST_F(XmlSerializerTest, OmittedDeclarationWritesNothing) {
  s->setFeature(ZQXmlSerializer::FEATURE_OMIT_XML_DECLARATION, true);
  s->setOutput(out, u("UTF-8"), u("yes"));
  s->startDocument(UnicodeString(), UnicodeString());
  EXPECT_EQ(written(), "");
  s->startTag(ZQName(), nm("a"));
  s->endDocument();
  EXPECT_EQ(written(), "<a/>");
}

TEST_F(XmlSerializerTest, GeneratorCommentFollowsTheDeclaration) {
  s->setGenerator(u("Gen 1.0"));
  s->setOutput(out, UnicodeString(), UnicodeString());
  s->startDocument(UnicodeString(), UnicodeString());
  EXPECT_EQ(written(), "<?xml version=\"1.0\"?><!-- Gen 1.0 -->");
}

TEST_F(XmlSerializerTest, GeneratorCommentWithoutDeclaration) {
  s->setGenerator(u("Gen"));
  s->setFeature(ZQXmlSerializer::FEATURE_OMIT_XML_DECLARATION, true);
  s->setOutput(out, UnicodeString(), UnicodeString());
  s->startDocument(UnicodeString(), UnicodeString());
  EXPECT_EQ(written(), "<!-- Gen -->");
}

TEST_F(XmlSerializerTest, InterfaceSetGeneratorStoresNothing) {
  s->ZQXmlSerializer::setGenerator(u("Gen"));
  s->setOutput(out, UnicodeString(), UnicodeString());
  s->startDocument(UnicodeString(), UnicodeString());
  EXPECT_EQ(written(), "<?xml version=\"1.0\"?>");
}

TEST_F(XmlSerializerTest, StartDocumentTwiceRaises12) {
  s->setOutput(out, UnicodeString(), UnicodeString());
  s->startDocument(UnicodeString(), UnicodeString());
  ZQError e = catchError([&] { s->startDocument(UnicodeString(), UnicodeString()); });
  expectError(e, 12, "SYSTEM ERROR: startDocument() must be called just after setOutput().",
              "ZQCommonNS::ZQXmlSerializerImpl::startDocumen");
}

TEST_F(XmlSerializerTest, StartDocumentWithoutOutputRaises12) {
  ZQError e = catchError([&] { s->startDocument(UnicodeString(), UnicodeString()); });
  EXPECT_EQ(e.getErrorCode(), 12);
  EXPECT_EQ(written(), "");
}

TEST_F(XmlSerializerTest, StartDocumentAfterContentRaises12) {
  s->setOutput(out, UnicodeString(), UnicodeString());
  s->startTag(ZQName(), nm("a"));
  EXPECT_EQ(catchError([&] { s->startDocument(UnicodeString(), UnicodeString()); }).getErrorCode(),
            12);
}

// ---- encodings ----

TEST_F(XmlSerializerTest, AsciiNamesDeclareNoEncodingAndWriteReferences) {
  const char* names[] = {"ANSI_X3.4",  "ANSI_X3.4-1968", "ANSI_X3.4-1986",   "ASCII",
                         "ISO646-US",  "ISO_646.IRV",    "ISO_646.IRV:1991", "US-ASCII",
                         " us-ascii ", "ascii",          "iso_646.irv:1991"};
  for (const char* name : names) {
    std::ostringstream o;
    ZQPtr<ZQXmlSerializer> ser = ZQXmlSerializer::createXmlSerializer();
    ser->setOutput(o, u(name), UnicodeString());
    ser->startDocument(UnicodeString(), UnicodeString());
    ser->startTag(ZQName(), nm("a"));
    ser->text(fromUtf8("\xC3\xA9"));
    ser->endDocument();
    EXPECT_EQ(o.str(), "<?xml version=\"1.0\"?><a>&#233;</a>") << name;
    auto* si = static_cast<ZQXmlSerializerImpl*>(ser.get());
    EXPECT_EQ(si->getOutputEncoding(), ZQXmlSerializerImpl::OUTPUT_ASCII) << name;
    EXPECT_EQ(utf8(si->getEncoding()), name) << "the encoding stays";
  }
}

TEST_F(XmlSerializerTest, AsciiOutputJoinsSurrogatesIntoOneReference) {
  begin("US-ASCII");
  s->startTag(ZQName(), nm("a"));
  UnicodeString text;
  text.append(static_cast<UChar32>(0x1F600));
  text.append(static_cast<char16_t>(0xD800));  // alone
  text.append(u'x');
  text.append(static_cast<char16_t>(0xDC00));  // alone
  text.append(static_cast<char16_t>(0x20AC));
  s->text(text);
  s->endTag(ZQName(), nm("a"));
  EXPECT_EQ(written(), "<a>&#128512;&#55296;x&#56320;&#8364;</a>");
}

TEST_F(XmlSerializerTest, AsciiOutputWritesReferencesInNamesAndComments) {
  begin("ASCII");
  s->comment(fromUtf8("\xC3\xA9"));
  s->startTag(ZQName(), ZQName(fromUtf8("\xC3\xA9")));
  s->attribute(ZQName(), nm("v"), fromUtf8("\xC3\xBC"));
  s->endTag(ZQName(), ZQName(fromUtf8("\xC3\xA9")));
  EXPECT_EQ(written(), "<!--&#233;--><&#233; v=\"&#252;\"/>");
}

TEST_F(XmlSerializerTest, ShiftJisNamesDeclareShiftJisAndWriteOnlyAscii) {
  const char* names[] = {"SHIFT-JIS", "SHIFT_JIS", "WINDOWS31J", "shift_jis", " Windows31J"};
  for (const char* name : names) {
    std::ostringstream o;
    ZQPtr<ZQXmlSerializer> ser = ZQXmlSerializer::createXmlSerializer();
    ser->setOutput(o, u(name), UnicodeString());
    ser->startDocument(UnicodeString(), UnicodeString());
    ser->startTag(ZQName(), nm("doc"));
    ser->attribute(ZQName(), nm("t"), fromUtf8("\xE6\x97\xA5"));  // U+65E5
    ser->text(fromUtf8("\xE6\x97\xA5\xE6\x9C\xAC a\xF0\x9F\x98\x80"));
    ser->endDocument();
    const std::string bytes = o.str();
    EXPECT_EQ(bytes,
              "<?xml version=\"1.0\" encoding=\"SHIFT_JIS\"?><doc t=\"&#26085;\">"
              "&#26085;&#26412; a&#128512;</doc>")
        << name;
    for (char c : bytes) EXPECT_LT(static_cast<unsigned char>(c), 0x80u);
  }
}

TEST_F(XmlSerializerTest, ShiftJisOutputReadsBackThroughIcuAndLibxml2) {
  s->setOutput(out, u("Shift_JIS"), UnicodeString());
  s->startDocument(UnicodeString(), UnicodeString());
  s->startTag(ZQName(), nm("doc"));
  const UnicodeString text = fromUtf8("\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E & \xEF\xBD\xB1");
  s->text(text);
  s->endDocument();
  const std::string bytes = written();

  UErrorCode status = U_ZERO_ERROR;
  UConverter* conv = ucnv_open("Shift_JIS", &status);
  ASSERT_TRUE(U_SUCCESS(status));
  std::vector<char16_t> buffer(bytes.size() * 2 + 4);
  int32_t n = ucnv_toUChars(conv, buffer.data(), static_cast<int32_t>(buffer.size()), bytes.data(),
                            static_cast<int32_t>(bytes.size()), &status);
  ucnv_close(conv);
  ASSERT_TRUE(U_SUCCESS(status));
  // Every byte is ASCII, which Shift_JIS reads as itself.
  EXPECT_EQ(utf8(UnicodeString(buffer.data(), n)), bytes);

  ParsedXml parsed(bytes);
  ASSERT_NE(parsed.doc, nullptr);
  EXPECT_EQ(content(parsed.root()), utf8(text));
}

TEST_F(XmlSerializerTest, EucJpFallsBackToUtf8WithoutEncodingInDeclaration) {
  s->setOutput(out, u("EUC-JP"), UnicodeString());
  s->startDocument(UnicodeString(), UnicodeString());
  s->startTag(ZQName(), nm("a"));
  s->text(fromUtf8("\xE6\x97\xA5"));
  s->endDocument();
  EXPECT_EQ(written(), "<?xml version=\"1.0\"?><a>\xE6\x97\xA5</a>");
  EXPECT_TRUE(impl()->getEncoding().isEmpty());
}

TEST_F(XmlSerializerTest, Utf16RequestIsWrittenAsUtf8AndReadsBackThroughIcu) {
  s->setOutput(out, u("UTF-16"), UnicodeString());
  s->startDocument(UnicodeString(), UnicodeString());
  s->startTag(ZQName(), nm("a"));
  UnicodeString text = fromUtf8("\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
  s->text(text);
  s->endDocument();
  const std::string bytes = written();
  EXPECT_EQ(bytes.rfind("<?xml version=\"1.0\"?>", 0), 0u);
  EXPECT_TRUE(impl()->getEncoding().isEmpty());
  UErrorCode status = U_ZERO_ERROR;
  UConverter* conv = ucnv_open("UTF-8", &status);
  ASSERT_TRUE(U_SUCCESS(status));
  std::vector<char16_t> buffer(bytes.size() + 4);
  int32_t n = ucnv_toUChars(conv, buffer.data(), static_cast<int32_t>(buffer.size()), bytes.data(),
                            static_cast<int32_t>(bytes.size()), &status);
  ucnv_close(conv);
  ASSERT_TRUE(U_SUCCESS(status));
  UnicodeString expected = u("<?xml version=\"1.0\"?><a>");
  expected += text;
  expected += u("</a>");
  EXPECT_EQ(UnicodeString(buffer.data(), n), expected);
}

TEST_F(XmlSerializerTest, ClassifyEncoding) {
  UnicodeString declared;
  bool supported = false;
  EXPECT_EQ(ZQXmlSerializerImpl::classifyEncoding(u("utf-8"), declared, supported),
            ZQXmlSerializerImpl::OUTPUT_UTF8);
  EXPECT_EQ(utf8(declared), "UTF-8");
  EXPECT_TRUE(supported);
  EXPECT_EQ(ZQXmlSerializerImpl::classifyEncoding(u("utf8"), declared, supported),
            ZQXmlSerializerImpl::OUTPUT_UTF8);
  EXPECT_TRUE(declared.isEmpty());
  EXPECT_FALSE(supported);
  EXPECT_EQ(ZQXmlSerializerImpl::classifyEncoding(u(""), declared, supported),
            ZQXmlSerializerImpl::OUTPUT_UTF8);
  EXPECT_FALSE(supported);
  EXPECT_EQ(ZQXmlSerializerImpl::classifyEncoding(u("Windows31j"), declared, supported),
            ZQXmlSerializerImpl::OUTPUT_SHIFT_JIS);
  EXPECT_EQ(utf8(declared), "SHIFT_JIS");
  EXPECT_EQ(ZQXmlSerializerImpl::classifyEncoding(u("ansi_x3.4-1986"), declared, supported),
            ZQXmlSerializerImpl::OUTPUT_ASCII);
  EXPECT_TRUE(declared.isEmpty());
  EXPECT_TRUE(supported);
  EXPECT_EQ(ZQXmlSerializerImpl::classifyEncoding(u("ISO-8859-1"), declared, supported),
            ZQXmlSerializerImpl::OUTPUT_UTF8);
  EXPECT_FALSE(supported);
}

TEST_F(XmlSerializerTest, Utf8ByteLengths) {
  begin("UTF-8");
  UnicodeString text;
  text.append(static_cast<char16_t>(0x7F));    // one byte, kept
  text.append(static_cast<char16_t>(0x80));    // two
  text.append(static_cast<char16_t>(0x7FF));   // two
  text.append(static_cast<char16_t>(0x800));   // three
  text.append(static_cast<char16_t>(0xFFFF));  // three
  text.append(static_cast<UChar32>(0x10000));  // four
  text.append(static_cast<UChar32>(0x10FFFF));
  s->text(text);
  EXPECT_EQ(written(),
            "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
}

TEST_F(XmlSerializerTest, LoneSurrogatesAreThreeBytesEach) {
  begin();
  UnicodeString text;
  text.append(static_cast<char16_t>(0xD83D));  // high, then a non-surrogate
  text.append(u'a');
  text.append(static_cast<char16_t>(0xDE00));  // low alone
  text.append(static_cast<char16_t>(0xDBFF));  // high at the end
  s->text(text);
  EXPECT_EQ(written(),
            "\xED\xA0\xBD"
            "a\xED\xB8\x80\xED\xAF\xBF");
}

// ---- elements, text and states ----

TEST_F(XmlSerializerTest, StartTagThenEndTagIsAnEmptyElement) {
  begin();
  s->startTag(ZQName(), nm("a"));
  EXPECT_EQ(impl()->getState(), ZQXmlSerializerImpl::STATE_START_TAG_OPEN);
  s->endTag(ZQName(), nm("a"));
  EXPECT_EQ(impl()->getState(), ZQXmlSerializerImpl::STATE_EMPTY_ELEMENT_CLOSED);
  EXPECT_EQ(written(), "<a/>");
}

TEST_F(XmlSerializerTest, EmptyTextClosesTheStartTag) {
  begin();
  s->startTag(ZQName(), nm("a"))->text(UnicodeString());
  EXPECT_EQ(impl()->getState(), ZQXmlSerializerImpl::STATE_TEXT_WRITTEN);
  s->endTag(ZQName(), nm("a"));
  EXPECT_EQ(impl()->getState(), ZQXmlSerializerImpl::STATE_END_TAG_WRITTEN);
  EXPECT_EQ(written(), "<a></a>");
}

TEST_F(XmlSerializerTest, OperationsChainThroughTheirResult) {
  begin();
  s->startTag(ZQName(), nm("a"))
      ->attribute(ZQName(), nm("x"), u("1"))
      ->text(u("t"))
      ->endTag(ZQName(), nm("a"));
  EXPECT_EQ(written(), "<a x=\"1\">t</a>");
}

TEST_F(XmlSerializerTest, NestedElementsAndStates) {
  begin();
  s->startTag(ZQName(), nm("a"));
  s->startTag(ZQName(), nm("b"));
  EXPECT_EQ(s->getDepth(), 2);
  s->endTag(ZQName(), nm("b"));
  s->startTag(ZQName(), nm("c"));
  s->text(u("x"));
  s->endTag(ZQName(), nm("c"));
  s->endTag(ZQName(), nm("a"));
  EXPECT_EQ(s->getDepth(), 0);
  EXPECT_EQ(written(), "<a><b/><c>x</c></a>");
}

TEST_F(XmlSerializerTest, TextFromCharacterArray) {
  begin();
  const char16_t chars[] = u"xa<b&cy";
  s->startTag(ZQName(), nm("a"));
  s->text(chars, 1, 5);
  s->text(nullptr, 0, 3);
  s->text(chars, 2, 0);
  s->text(chars, 2, -4);
  s->text(chars + 3, -1, 2);
  s->endTag(ZQName(), nm("a"));
  EXPECT_EQ(written(), "<a>a&lt;b&amp;c</a>");
}

TEST_F(XmlSerializerTest, TextEscapesMarkupOnly) {
  begin();
  s->startTag(ZQName(), nm("a"));
  s->text(u("<&>\"'\t\n\r"));
  s->endTag(ZQName(), nm("a"));
  EXPECT_EQ(written(), "<a>&lt;&amp;&gt;\"'\t\n\r</a>");
}

TEST_F(XmlSerializerTest, LineFeedInAttributeIsAReferenceInTextAsItStands) {
  begin();
  s->startTag(ZQName(), nm("a"));
  s->attribute(ZQName(), nm("v"), u("x\ny"));
  s->text(u("x\ny"));
  s->endTag(ZQName(), nm("a"));
  EXPECT_EQ(written(), "<a v=\"x&#10;y\">x\ny</a>");
}

TEST_F(XmlSerializerTest, AttributeValueEscapes) {
  begin();
  s->startTag(ZQName(), nm("a"));
  UnicodeString value(u"<&>\"'\t\r");
  value.append(static_cast<char16_t>(0x7F));
  s->attribute(ZQName(), nm("v"), value);
  s->endTag(ZQName(), nm("a"));
  EXPECT_EQ(written(), "<a v=\"&lt;&amp;&gt;&quot;'&#9;&#13;\x7F\"/>");
}

TEST_F(XmlSerializerTest, EscapeFlagsOneByOne) {
  begin();
  UnicodeString all(u"&<>\"'\t\n\r");
  all.append(static_cast<char16_t>(0x01));
  all.append(static_cast<char16_t>(0x1F));
  all.append(static_cast<char16_t>(0x7F));
  auto escaped = [&](int flags) {
    out.str(std::string());
    impl()->writeEscapedText(all, flags);
    return written();
  };
  EXPECT_EQ(escaped(0), "&<>\"'\t\n\r\x7F");
  EXPECT_EQ(escaped(1), "&amp;&lt;&gt;\"'\t\n\r\x7F");
  EXPECT_EQ(escaped(2), "&amp;&lt;&gt;&quot;'\t\n\r\x7F");
  EXPECT_EQ(escaped(4), "&amp;&lt;&gt;\"&#39;\t\n\r\x7F");
  EXPECT_EQ(escaped(8), "&amp;&lt;&gt;\"'&#9;&#10;&#13;&#1;&#31;&#127;");
  EXPECT_EQ(escaped(16), "&amp;&lt;&gt;\"'&#9;&#10;&#13;\x7F");
  EXPECT_EQ(escaped(3), "&amp;&lt;&gt;&quot;'\t\n\r\x7F");
  EXPECT_EQ(escaped(19), "&amp;&lt;&gt;&quot;'&#9;&#10;&#13;\x7F");
  EXPECT_EQ(escaped(31), "&amp;&lt;&gt;&quot;&#39;&#9;&#10;&#13;&#1;&#31;&#127;");
  EXPECT_EQ(ZQXmlSerializerImpl::TEXT_FLAGS, 1);
  EXPECT_EQ(ZQXmlSerializerImpl::ATTRIBUTE_FLAGS, 19);
  EXPECT_EQ(ZQXmlSerializerImpl::NAMESPACE_FLAGS, 3);
}

TEST_F(XmlSerializerTest, NumericReferencesAreDecimal) {
  begin("ASCII");
  UnicodeString text;
  text.append(static_cast<char16_t>(0x80));
  text.append(static_cast<char16_t>(0xFFFD));
  text.append(static_cast<UChar32>(0x10FFFF));
  impl()->writeEscapedText(text, 0);
  EXPECT_EQ(written(), "&#128;&#65533;&#1114111;");
}

TEST_F(XmlSerializerTest, ControlCharacterDisappears) {
  begin();
  s->startTag(ZQName(), nm("a"));
  // Each control below 32 but tab, line feed and carriage return, and the zero unit too.
  const char16_t attr[] = {u'x', 0x01, u'y', 0x1F};
  const char16_t text[] = {u'p', 0x01, u'q', 0x00, u'r', 0x0B, u's', 0x7F};
  const char16_t note[] = {u'c', 0x02};
  s->attribute(ZQName(), nm("v"), UnicodeString(attr, 4));
  s->text(UnicodeString(text, 8));
  s->comment(UnicodeString(note, 2));
  s->endTag(ZQName(), nm("a"));
  EXPECT_EQ(written(), "<a v=\"xy\">pqrs\x7F<!--c--></a>");
}

TEST_F(XmlSerializerTest, NamesAreWrittenWithoutEscaping) {
  begin();
  s->startTag(ZQName(), nm("a&<b"));
  s->attribute(ZQName(), nm("c\"d"), u("v"));
  s->endTag(ZQName(), nm("a&<b"));
  EXPECT_EQ(written(), "<a&<b c\"d=\"v\"/>");
}

TEST_F(XmlSerializerTest, CdataCommentAndWhitespaceAreWrittenAsGiven) {
  begin();
  s->startTag(ZQName(), nm("a"));
  EXPECT_EQ(impl()->getState(), ZQXmlSerializerImpl::STATE_START_TAG_OPEN);
  s->cdsect(u("x]]>y<&"));
  EXPECT_EQ(impl()->getState(), ZQXmlSerializerImpl::STATE_START_TAG_CLOSED);
  s->comment(u("a--b&<"));
  s->ignorableWhitespace(u(" \n<&"));
  s->entityRef(u("amp"));
  EXPECT_EQ(impl()->getState(), ZQXmlSerializerImpl::STATE_START_TAG_CLOSED);
  s->endTag(ZQName(), nm("a"));
  EXPECT_EQ(written(), "<a><![CDATA[x]]>y<&]]><!--a--b&<--> \n<&&amp;</a>");
}

TEST_F(XmlSerializerTest, ContentOperationsLeaveTheTextState) {
  begin();
  s->startTag(ZQName(), nm("a"));
  s->text(u("t"));
  s->comment(u("c"));
  EXPECT_EQ(impl()->getState(), ZQXmlSerializerImpl::STATE_TEXT_WRITTEN);
  s->processingInstruction(nm("pi"), UnicodeString());
  s->entityRef(u("lt"));
  s->cdsect(u("d"));
  s->ignorableWhitespace(u(" "));
  EXPECT_EQ(impl()->getState(), ZQXmlSerializerImpl::STATE_TEXT_WRITTEN);
  s->endTag(ZQName(), nm("a"));
  EXPECT_EQ(written(), "<a>t<!--c--><?pi?>&lt;<![CDATA[d]]> </a>");
}

TEST_F(XmlSerializerTest, ProcessingInstructionTrimsItsData) {
  begin();
  s->processingInstruction(nm("target"), u("  some data \n"));
  s->processingInstruction(nm("empty"), u(" \t "));
  s->processingInstruction(nm("x"), u("a?>b"));
  EXPECT_EQ(written(), "<?target some data?><?empty?><?x a?>b?>");
}

TEST_F(XmlSerializerTest, DocdeclInThePrologAfterAComment) {
  s->setOutput(out, UnicodeString(), UnicodeString());
  s->startDocument(UnicodeString(), UnicodeString());
  s->comment(u("c"));
  s->docdecl(u("html"));
  EXPECT_EQ(impl()->getState(), ZQXmlSerializerImpl::STATE_PROLOG);
  s->startTag(ZQName(), nm("html"));
  s->endDocument();
  EXPECT_EQ(written(), "<?xml version=\"1.0\"?><!--c--><!DOCTYPE html><html/>");
}

TEST_F(XmlSerializerTest, DocdeclSpaceOnlyWhenTheTextHasNone) {
  begin();
  s->docdecl(u(" a SYSTEM \"a&<.dtd\""));
  s->docdecl(u("\tb"));
  s->docdecl(UnicodeString());
  EXPECT_EQ(written(), "<!DOCTYPE a SYSTEM \"a&<.dtd\"><!DOCTYPE\tb><!DOCTYPE >");
}

TEST_F(XmlSerializerTest, DocdeclAfterTheFirstElementRaises16) {
  begin();
  s->startTag(ZQName(), nm("a"));
  ZQError e = catchError([&] { s->docdecl(u("a")); });
  // The document type declaration names no source.
  expectError(e, 16, "SYSTEM ERROR: Unexpected docdecl().", "");
  EXPECT_EQ(written(), "<a");
}

TEST_F(XmlSerializerTest, DocdeclBeforeStartDocumentRaises16) {
  s->setOutput(out, UnicodeString(), UnicodeString());
  EXPECT_EQ(catchError([&] { s->docdecl(u("a")); }).getErrorCode(), 16);
  s->startDocument(UnicodeString(), UnicodeString());
  s->text(u("x"));
  EXPECT_EQ(catchError([&] { s->docdecl(u("a")); }).getErrorCode(), 16);
}

TEST_F(XmlSerializerTest, AttributeAfterTextRaises13) {
  begin();
  s->startTag(ZQName(), nm("a"));
  s->text(u("t"));
  ZQError e = catchError([&] { s->attribute(ZQName(), nm("x"), u("1")); });
  expectError(e, 13, "SYSTEM ERROR: attribute() must be called just after startTag().",
              "ZQCommonNS::ZQXmlSerializerImpl::attributeSub");
  EXPECT_EQ(written(), "<a>t");
}

TEST_F(XmlSerializerTest, AttributeOutsideAStartTagRaises13) {
  begin();
  EXPECT_EQ(catchError([&] { s->attribute(ZQName(), nm("x"), u("1")); }).getErrorCode(), 13);
  s->startTag(ZQName(), nm("a"));
  s->startTag(ZQName(), nm("b"));
  s->endTag(ZQName(), nm("b"));
  EXPECT_EQ(catchError([&] { s->attribute(ZQName(), nm("x"), u("1")); }).getErrorCode(), 13);
  s->comment(u("c"));
  EXPECT_EQ(catchError([&] { s->attribute(ZQName(), nm("x"), nm("y"), u("1")); }).getErrorCode(),
            13);
  s->setPrefix(nm("p"), nm("urn:p"));
  EXPECT_EQ(catchError([&] { s->attribute(ZQName(), nm("x"), u("1")); }).getErrorCode(), 13);
}

TEST_F(XmlSerializerTest, EndTagWithNothingOpenRaises14) {
  begin();
  ZQError e = catchError([&] { s->endTag(ZQName(), nm("a")); });
  expectError(e, 14, "SYSTEM ERROR: Unexpected endTag().",
              "ZQCommonNS::ZQXmlSerializerImpl::endTagt");
  s->startTag(ZQName(), nm("a"));
  s->endTag(ZQName(), nm("a"));
  EXPECT_EQ(catchError([&] { s->endTag(ZQName(), nm("a")); }).getErrorCode(), 14);
}

TEST_F(XmlSerializerTest, MismatchedEndTagRaises15) {
  begin();
  s->startTag(nm("urn:x"), nm("p"), nm("a"));
  ZQError e = catchError([&] { s->endTag(nm("urn:y"), nm("b")); });
  expectError(e, 15, "SYSTEM ERROR: End tag '{urn:y}:b' does not match the start tag 'p:a'.",
              "ZQCommonNS::ZQXmlSerializerImpl::endTagt");
  // The namespace alone differs.
  e = catchError([&] { s->endTag(ZQName(), nm("a")); });
  EXPECT_EQ(utf8(e.getRawMessage()),
            "SYSTEM ERROR: End tag 'a' does not match the start tag 'p:a'.");
  e = catchError([&] { s->endTag(ZQN_NS_XML, nm("a")); });
  EXPECT_EQ(utf8(e.getRawMessage()),
            "SYSTEM ERROR: End tag 'xml:a' does not match the start tag 'p:a'.");
  e = catchError([&] { s->endTag(ZQN_NS_XMLNS, nm("b")); });
  EXPECT_EQ(utf8(e.getRawMessage()),
            "SYSTEM ERROR: End tag 'xmlns:b' does not match the start tag 'p:a'.");
  e = catchError([&] { s->endTag(ZQN_NS_XMLNS, ZQN_xmlns); });
  EXPECT_EQ(utf8(e.getRawMessage()),
            "SYSTEM ERROR: End tag 'xmlns' does not match the start tag 'p:a'.");
  // A namespace equal to the open element's local name takes the open element's prefix.
  e = catchError([&] { s->endTag(nm("a"), nm("b")); });
  EXPECT_EQ(utf8(e.getRawMessage()),
            "SYSTEM ERROR: End tag 'p:b' does not match the start tag 'p:a'.");
  // The element is still open and closes normally.
  s->endTag(nm("urn:x"), nm("a"));
  EXPECT_EQ(written(), "<p:a xmlns:p=\"urn:x\"/>");
}

TEST_F(XmlSerializerTest, EndDocumentClosesOpenElements) {
  begin();
  s->startTag(ZQName(), nm("a"));
  s->startTag(ZQName(), nm("b"));
  s->text(u("t"));
  s->startTag(nm("urn:c"), nm("q"), nm("c"));
  s->endDocument();
  EXPECT_EQ(written(), "<a><b>t<q:c xmlns:q=\"urn:c\"/></b></a>");
  EXPECT_EQ(impl()->getState(), ZQXmlSerializerImpl::STATE_DOCUMENT_ENDED);
  EXPECT_EQ(s->getDepth(), 0);
}

TEST_F(XmlSerializerTest, WritesAfterEndDocumentRaise69) {
  begin();
  s->startTag(ZQName(), nm("a"));
  s->endDocument();
  ZQError e = catchError([&] { s->text(u("x")); });
  expectError(e, 69, "Output stream is not set.", "ZQCommonNS::ZQXmlSerializerImpl::checkStream");
  EXPECT_EQ(catchError([&] { s->endDocument(); }).getErrorCode(), 69);
  EXPECT_EQ(catchError([&] { s->flush(); }).getErrorCode(), 69);
  EXPECT_EQ(written(), "<a/>");
}

TEST_F(XmlSerializerTest, WritesWithoutOutputRaise69) {
  EXPECT_EQ(catchError([&] { s->startTag(ZQName(), nm("a")); }).getErrorCode(), 69);
  EXPECT_EQ(catchError([&] { s->comment(u("c")); }).getErrorCode(), 69);
}

TEST_F(XmlSerializerTest, NullStreamPointerRaises69) {
  ZQError e = catchError([&] { s->setOutput(static_cast<std::ostream*>(nullptr), u(""), u("")); });
  expectError(e, 69, "Output stream is not set.", "ZQCommonNS::ZQXmlSerializerImpl::checkStream");
  std::ostream* stream = &out;
  s->setOutput(stream, u(""), u(""));
  EXPECT_EQ(impl()->getState(), ZQXmlSerializerImpl::STATE_OUTPUT_SET);
}

TEST_F(XmlSerializerTest, FailedStreamRaises71) {
  out.setstate(std::ios::failbit);
  ZQError e = catchError([&] { s->setOutput(out, u(""), u("")); });
  expectError(e, 71, "Output stream error.", "ZQCommonNS::ZQXmlSerializerImpl::checkStream");
}

TEST_F(XmlSerializerTest, StreamThatFailsMidwayRaises71AndStaysFailed) {
  LimitedBuf buf(6);
  std::ostream limited(&buf);
  s->setOutput(limited, u(""), u(""));
  s->startTag(ZQName(), nm("a"));
  s->text(u("12345678"));  // the stream fails inside this write
  EXPECT_FALSE(limited.good());
  EXPECT_EQ(catchError([&] { s->text(u("x")); }).getErrorCode(), 71);
  EXPECT_EQ(catchError([&] { s->endTag(ZQName(), nm("a")); }).getErrorCode(), 71);
  EXPECT_EQ(catchError([&] { s->endDocument(); }).getErrorCode(), 71);
  EXPECT_EQ(buf.data, "<a>123");
  s = nullptr;  // the serializer goes before the stream it writes to
}

// ---- long writes ----

namespace {

// The escaping rules written out one character at a time, as the reference for long texts.
std::string referenceEscape(const std::u16string& text, int flags) {
  std::string out;
  for (size_t i = 0; i < text.size(); ++i) {
    char16_t c = text[i];
    if (flags && c == u'&') {
      out += "&amp;";
      continue;
    }
    if (flags && c == u'<') {
      out += "&lt;";
      continue;
    }
    if (flags && c == u'>') {
      out += "&gt;";
      continue;
    }
    if ((flags & 2) && c == u'"') {
      out += "&quot;";
      continue;
    }
    if ((flags & 16) && (c == 9 || c == 10 || c == 13)) {
      out += "&#" + std::to_string(c) + ";";
      continue;
    }
    if (c < 32 && c != 9 && c != 10 && c != 13) continue;
    if (c < 128) {
      out += static_cast<char>(c);
      continue;
    }
    if (c < 0x800) {
      out += static_cast<char>(0xC0 | (c >> 6));
      out += static_cast<char>(0x80 | (c & 0x3F));
      continue;
    }
    out += static_cast<char>(0xE0 | (c >> 12));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  }
  return out;
}

// Plain runs of every length round the serializer's gathering size, with escapes, dropped
// controls and characters beyond ASCII falling on both sides of its edges.
std::u16string mixedText(int length) {
  static const char16_t kPieces[] = u"abc&<>\"\t\n\x01\u00e9\u20ac xyz";
  std::u16string text;
  for (int i = 0; static_cast<int>(text.size()) < length; ++i) {
    text.append(static_cast<size_t>(i % 97), u'p');
    text += kPieces[i % (sizeof kPieces / sizeof kPieces[0] - 1)];
  }
  text.resize(static_cast<size_t>(length));
  return text;
}

}  // namespace

TEST_F(XmlSerializerTest, LongTextIsEscapedAsCharacterByCharacter) {
  begin();
  const std::u16string text = mixedText(9000);
  s->startTag(ZQName(), nm("a"));
  s->text(UnicodeString(text.data(), static_cast<int32_t>(text.size())));
  s->endTag(ZQName(), nm("a"));
  EXPECT_EQ(written(), "<a>" + referenceEscape(text, 1) + "</a>");
}

TEST_F(XmlSerializerTest, LongAttributeValueIsEscapedAsCharacterByCharacter) {
  begin();
  const std::u16string value = mixedText(7000);
  s->startTag(ZQName(), nm("a"));
  s->attribute(ZQName(), nm("v"), UnicodeString(value.data(), static_cast<int32_t>(value.size())));
  s->endTag(ZQName(), nm("a"));
  EXPECT_EQ(written(), "<a v=\"" + referenceEscape(value, 19) + "\"/>");
}

TEST_F(XmlSerializerTest, NamesFollowTheEncodingOfEachOutput) {
  ZQName name(UnicodeString(u"caf\u00e9"));
  begin("US-ASCII");
  s->startTag(ZQName(), name);
  s->endTag(ZQName(), name);
  s->endDocument();
  EXPECT_EQ(written(), "<caf&#233;/>");
  std::ostringstream second;
  s->setOutput(second, u("UTF-8"), UnicodeString());
  s->startDocument(UnicodeString(), UnicodeString());
  s->startTag(ZQName(), name);
  s->text(u("x"));
  s->endTag(ZQName(), name);
  s->endDocument();
  EXPECT_EQ(second.str(), "<caf\xc3\xa9>x</caf\xc3\xa9>");
}

// ---- files ----

TEST_F(XmlSerializerTest, FileOutputIsOwnedAndClosedByEndDocument) {
  streamtest::ScratchDir dir;
  const std::string path = dir.file("out.xml");
  s->setOutput(UnicodeString::fromUTF8(path), u("UTF-8"), UnicodeString());
  s->startDocument(UnicodeString(), UnicodeString());
  s->startTag(ZQName(), nm("a"));
  s->text(fromUtf8("\xC3\xA9"));
  s->endDocument();
  EXPECT_EQ(streamtest::readFile(path),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a>\xC3\xA9</a>");
}

TEST_F(XmlSerializerTest, FileOutputWithBackslashesIsOpenedNatively) {
  streamtest::ScratchDir dir;
  std::string told = dir.file("b.xml");
  for (char& c : told) {
    if (c == '/') c = '\\';
  }
  s->setOutput(UnicodeString::fromUTF8(told), UnicodeString(), UnicodeString());
  s->startDocument(UnicodeString(), UnicodeString());
  s->endDocument();
  EXPECT_EQ(streamtest::readFile(dir.file("b.xml")), "<?xml version=\"1.0\"?>");
}

TEST_F(XmlSerializerTest, DestructorEndsAnOwnedFile) {
  streamtest::ScratchDir dir;
  const std::string path = dir.file("d.xml");
  {
    ZQPtr<ZQXmlSerializer> ser = ZQXmlSerializer::createXmlSerializer();
    ser->setOutput(UnicodeString::fromUTF8(path), UnicodeString(), UnicodeString());
    ser->startTag(ZQName(), nm("a"));
    ser->text(u("t"));
  }
  EXPECT_EQ(streamtest::readFile(path), "<a>t");
}

TEST_F(XmlSerializerTest, FileThatDoesNotOpenRaises67) {
  streamtest::ScratchDir dir;
  const std::string path = dir.file("missing/dir/x.xml");
  ZQError e = catchError(
      [&] { s->setOutput(UnicodeString::fromUTF8(path), UnicodeString(), UnicodeString()); });
  EXPECT_EQ(e.getErrorCode(), 67);
  EXPECT_EQ(utf8(e.getRawMessage()), "Cannot open file: " + path);
  EXPECT_EQ(utf8(e.getSource()), "ZQCommonNS::ZQXmlSerializerImpl::setOutput");
  EXPECT_EQ(impl()->getState(), ZQXmlSerializerImpl::STATE_RESET);
  EXPECT_EQ(catchError([&] { s->setOutput(UnicodeString(), u(""), u("")); }).getErrorCode(), 67);
}

TEST_F(XmlSerializerTest, SetOutputEndsThePreviousOutputAndResets) {
  streamtest::ScratchDir dir;
  const std::string path = dir.file("first.xml");
  s->setOutput(UnicodeString::fromUTF8(path), UnicodeString(), UnicodeString());
  s->startTag(ZQName(), nm("a"));
  s->startTag(ZQName(), nm("b"));
  s->setOutput(out, UnicodeString(), UnicodeString());
  EXPECT_EQ(streamtest::readFile(path), "<a><b");
  EXPECT_EQ(s->getDepth(), 0);
  EXPECT_EQ(impl()->getState(), ZQXmlSerializerImpl::STATE_OUTPUT_SET);
  s->startTag(ZQName(), nm("c"));
  s->endDocument();
  EXPECT_EQ(written(), "<c/>");
}

TEST_F(XmlSerializerTest, FlushReachesTheStream) {
  std::stringstream target;
  s->setOutput(target, UnicodeString(), UnicodeString());
  s->startTag(ZQName(), nm("a"));
  s->flush();
  EXPECT_EQ(target.str(), "<a");
  s = nullptr;  // the serializer goes before the stream it writes to
}

// ---- namespaces ----

TEST_F(XmlSerializerTest, PrefixedStartTagDeclaresItsPrefixOnce) {
  begin();
  s->startTag(nm("urn:a"), nm("p"), nm("a"));
  s->startTag(nm("urn:a"), nm("p"), nm("b"));
  s->endTag(nm("urn:a"), nm("b"));
  s->endTag(nm("urn:a"), nm("a"));
  EXPECT_EQ(written(), "<p:a xmlns:p=\"urn:a\"><p:b/></p:a>");
}

TEST_F(XmlSerializerTest, DefaultNamespaceAndItsUndeclaration) {
  begin();
  s->startTag(nm("urn:d"), ZQName(), nm("a"));
  EXPECT_EQ(s->getDefaultNamespace(), nm("urn:d"));
  s->startTag(nm("urn:d"), nm("b"));  // found as the default in force
  s->endTag(nm("urn:d"), nm("b"));
  s->startTag(ZQName(), nm("c"));  // no namespace below a default one
  EXPECT_EQ(s->getDefaultNamespace(), ZQName());
  s->startTag(ZQName(), nm("e"));
  s->endTag(ZQName(), nm("e"));
  s->endTag(ZQName(), nm("c"));
  EXPECT_EQ(s->getDefaultNamespace(), nm("urn:d"));
  s->endTag(nm("urn:d"), nm("a"));
  EXPECT_EQ(written(), "<a xmlns=\"urn:d\"><b/><c xmlns=\"\"><e/></c></a>");
  ParsedXml parsed(written());
  ASSERT_NE(parsed.doc, nullptr);
  EXPECT_EQ(nodeNs(parsed.root()), "urn:d");
  EXPECT_EQ(nodeNs(parsed.root()->children), "urn:d");
  EXPECT_EQ(nodeNs(parsed.root()->children->next), "");
}

TEST_F(XmlSerializerTest, SetPrefixBeforeStartTagDeclaresOnThatElement) {
  begin();
  s->setPrefix(nm("p"), nm("urn:p"));
  EXPECT_EQ(impl()->getState(), ZQXmlSerializerImpl::STATE_PREFIXES_PENDING);
  s->setPrefix(ZQName(), nm("urn:d"));
  EXPECT_EQ(s->getDepth(), 0);
  s->startTag(nm("urn:p"), nm("a"));
  EXPECT_EQ(s->getDepth(), 1);
  s->startTag(nm("urn:d"), nm("b"));
  s->endDocument();
  EXPECT_EQ(written(), "<p:a xmlns=\"urn:d\" xmlns:p=\"urn:p\"><b/></p:a>");
}

TEST_F(XmlSerializerTest, SetPrefixClosesAnOpenStartTag) {
  begin();
  s->startTag(ZQName(), nm("a"));
  s->setPrefix(nm("q"), nm("urn:q"));
  EXPECT_EQ(written(), "<a>");
  EXPECT_EQ(s->getDepth(), 1);
  EXPECT_EQ(s->getName(), nm("a"));
  s->startTag(nm("urn:q"), nm("b"));
  EXPECT_EQ(s->getDepth(), 2);
  s->endDocument();
  EXPECT_EQ(written(), "<a><q:b xmlns:q=\"urn:q\"/></a>");
}

TEST_F(XmlSerializerTest, PrefixesWithoutTheirElementAreDropped) {
  begin();
  s->startTag(ZQName(), nm("a"));
  s->setPrefix(nm("q"), nm("urn:q"));
  s->text(u("t"));
  s->startTag(nm("urn:q"), nm("q"), nm("b"));
  s->endTag(nm("urn:q"), nm("b"));
  s->setPrefix(nm("r"), nm("urn:r"));
  s->endTag(ZQName(), nm("a"));
  s->setPrefix(nm("z"), nm("urn:z"));
  s->endDocument();
  EXPECT_EQ(written(), "<a>t<q:b xmlns:q=\"urn:q\"/></a>");
}

TEST_F(XmlSerializerTest, DocdeclAfterSetPrefixRaises16) {
  begin();
  s->setPrefix(nm("q"), nm("urn:q"));
  EXPECT_EQ(catchError([&] { s->docdecl(u("a")); }).getErrorCode(), 16);
  EXPECT_EQ(written(), "");
  // The prefix still waits for the coming element.
  s->startTag(ZQName(), nm("a"));
  s->endDocument();
  EXPECT_EQ(written(), "<a xmlns:q=\"urn:q\"/>");
}

TEST_F(XmlSerializerTest, EndTagAfterPrefixesAtTheTopRaises14) {
  begin();
  s->setPrefix(nm("q"), nm("urn:q"));
  EXPECT_EQ(catchError([&] { s->endTag(ZQName(), ZQName()); }).getErrorCode(), 14);
  EXPECT_EQ(written(), "");
}

TEST_F(XmlSerializerTest, GetPrefixFindsDeclaredAndReservedPrefixes) {
  begin();
  EXPECT_EQ(s->getPrefix(ZQName(), true), ZQName());
  EXPECT_EQ(s->getPrefix(ZQN_NS_XML, false), ZQN_xml);
  EXPECT_EQ(s->getPrefix(ZQN_NS_XMLNS, false), ZQN_xmlns);
  s->startTag(nm("urn:a"), nm("p"), nm("a"));
  EXPECT_EQ(s->getPrefix(nm("urn:a"), false), nm("p"));
  EXPECT_EQ(s->getPrefix(nm("urn:none"), false), ZQName());
  s->startTag(nm("urn:d"), ZQName(), nm("b"));
  // The default namespace in force gives no prefix, even when asked to make one.
  EXPECT_EQ(s->getPrefix(nm("urn:d"), true), ZQName());
  s->endDocument();
  EXPECT_EQ(written(), "<p:a xmlns:p=\"urn:a\"><b xmlns=\"urn:d\"/></p:a>");
}

TEST_F(XmlSerializerTest, GetPrefixGeneratesAndDeclares) {
  begin();
  s->startTag(ZQName(), nm("a"));
  const int last = static_cast<int>(ZQNameTable::getSharedNameTable()->getNameLast());
  ZQName generated = s->getPrefix(nm("urn:gen-test-ns"), true);
  // Interning the namespace above may have taken one number.
  const std::string text = utf8(generated.toString());
  const std::string expectedA = "-N" + std::to_string(last + 1);
  const std::string expectedB = "-N" + std::to_string(last + 2);
  EXPECT_TRUE(text == expectedA || text == expectedB) << text;
  EXPECT_EQ(s->getPrefix(nm("urn:gen-test-ns"), true), generated);
  s->endTag(ZQName(), nm("a"));
  EXPECT_EQ(written(), "<a xmlns:" + text + "=\"urn:gen-test-ns\"/>");
}

TEST_F(XmlSerializerTest, TwoArgumentStartTagGeneratesAPrefix) {
  begin();
  ZQName ns = nm("urn:gen-elem");
  s->startTag(ns, nm("a"));
  const std::string prefix = utf8(s->getPrefix(ns, false).toString());
  ASSERT_FALSE(prefix.empty());
  EXPECT_EQ(prefix[0], '-');
  s->endTag(ns, nm("a"));
  EXPECT_EQ(written(), "<" + prefix + ":a xmlns:" + prefix + "=\"urn:gen-elem\"/>");
}

TEST_F(XmlSerializerTest, PrefixMayBeDeclaredUntilTheTagCloses) {
  begin();
  s->startTag(ZQName(), nm("a"));
  s->attribute(ZQN_NS_XMLNS, nm("p"), u("urn:late"));
  s->attribute(nm("urn:late"), nm("x"), u("1"));
  s->text(u("t"));
  s->endTag(ZQName(), nm("a"));
  EXPECT_EQ(written(), "<a p:x=\"1\" xmlns:p=\"urn:late\">t</a>");
  ParsedXml parsed(written());
  ASSERT_NE(parsed.doc, nullptr);
  EXPECT_EQ(prop(parsed.root(), "x", "urn:late"), "1");
}

TEST_F(XmlSerializerTest, XmlnsAttributesBecomeDeclarations) {
  begin();
  s->startTag(ZQName(), nm("a"));
  s->attribute(ZQN_NS_XMLNS, ZQN_xmlns, nm("p"), u("urn:p"));   // xmlns namespace, prefixed
  s->attribute(ZQN_NS_XMLNS, ZQName(), ZQN_xmlns, u("urn:d"));  // xmlns namespace, default
  EXPECT_EQ(impl()->getState(), ZQXmlSerializerImpl::STATE_START_TAG_OPEN);
  s->endTag(ZQName(), nm("a"));
  s->startTag(ZQName(), nm("b"));
  s->attribute(nm("urn:other"), ZQName(), ZQN_xmlns, u("urn:e"));  // local name xmlns
  s->endTag(ZQName(), nm("b"));
  EXPECT_EQ(written(), "<a xmlns=\"urn:d\" xmlns:p=\"urn:p\"/><b xmlns=\"urn:e\"/>");
}

TEST_F(XmlSerializerTest, RedundantXmlnsAttributeIsNotRepeated) {
  begin();
  s->startTag(nm("urn:d"), ZQName(), nm("a"));
  s->attribute(ZQN_NS_XMLNS, ZQName(), ZQN_xmlns, u("urn:d"));
  s->startTag(nm("urn:p"), nm("p"), nm("b"));
  s->attribute(ZQN_NS_XMLNS, ZQN_xmlns, nm("p"), u("urn:p"));
  s->endDocument();
  EXPECT_EQ(written(), "<a xmlns=\"urn:d\"><p:b xmlns:p=\"urn:p\"/></a>");
}

TEST_F(XmlSerializerTest, XmlnsPrefixOutsideItsNamespaceIsDeclaredAndWritten) {
  begin();
  s->startTag(ZQName(), nm("a"));
  s->attribute(ZQName(), ZQN_xmlns, nm("p"), u("urn:p"));
  s->attribute(nm("urn:p"), nm("x"), u("1"));
  s->endTag(ZQName(), nm("a"));
  EXPECT_EQ(written(), "<a xmlns:p=\"urn:p\" p:x=\"1\" xmlns:p=\"urn:p\"/>");
}

TEST_F(XmlSerializerTest, XmlnsPrefixOutsideItsNamespaceSortedOnce) {
  s->setFeature(ZQXmlSerializer::FEATURE_SORT_ATTRIBUTES, true);
  begin();
  s->startTag(ZQName(), nm("a"));
  s->attribute(ZQName(), ZQN_xmlns, nm("p"), u("urn:p"));
  s->attribute(nm("urn:p"), nm("x"), u("1"));
  s->endTag(ZQName(), nm("a"));
  EXPECT_EQ(written(), "<a xmlns:p=\"urn:p\" p:x=\"1\"/>");
  EXPECT_NE(ParsedXml(written()).doc, nullptr);
}

TEST_F(XmlSerializerTest, PrefixedAttributeDeclaresItsNamespace) {
  begin();
  s->startTag(ZQName(), nm("a"));
  s->attribute(ZQN_NS_XLINK, nm("xlink"), nm("href"), u("#x"));
  s->attribute(ZQN_NS_XML, ZQN_xml, ZQN_lang, u("en"));
  s->attribute(ZQN_NS_XML, ZQN_id, u("i1"));  // xml prefix found
  s->attribute(nm("urn:n"), ZQName(), nm("plain"), u("v"));
  s->endTag(ZQName(), nm("a"));
  EXPECT_EQ(written(),
            "<a xlink:href=\"#x\" xml:lang=\"en\" xml:id=\"i1\" plain=\"v\" "
            "xmlns:xlink=\"http://www.w3.org/1999/xlink\"/>");
  ParsedXml parsed(written());
  ASSERT_NE(parsed.doc, nullptr);
  EXPECT_EQ(prop(parsed.root(), "href", "http://www.w3.org/1999/xlink"), "#x");
  EXPECT_EQ(prop(parsed.root(), "lang", "http://www.w3.org/XML/1998/namespace"), "en");
}

TEST_F(XmlSerializerTest, NamespaceDeclarationEscapesMarkupAndQuotes) {
  begin();
  s->startTag(nm("urn:a?x=<&>\"'\t"), nm("p"), nm("a"));
  s->endTag(nm("urn:a?x=<&>\"'\t"), nm("a"));
  EXPECT_EQ(written(), "<p:a xmlns:p=\"urn:a?x=&lt;&amp;&gt;&quot;'\t\"/>");
}

TEST_F(XmlSerializerTest, OpenElementQueries) {
  begin();
  EXPECT_EQ(s->getDepth(), 0);
  EXPECT_EQ(s->getName(), ZQName());
  EXPECT_EQ(s->getNamespace(), ZQName());
  s->startTag(nm("urn:a"), nm("p"), nm("a"));
  EXPECT_EQ(s->getDepth(), 1);
  EXPECT_EQ(s->getName(), nm("a"));
  EXPECT_EQ(s->getNamespace(), nm("urn:a"));
  EXPECT_EQ(s->getDefaultNamespace(), ZQName());
  s->startTag(ZQName(), nm("b"));
  EXPECT_EQ(s->getName(), nm("b"));
  EXPECT_EQ(s->getNamespace(), ZQName());
  s->endTag(ZQName(), nm("b"));
  EXPECT_EQ(s->getName(), nm("a"));
}

// ---- sorted attributes ----

TEST_F(XmlSerializerTest, SortedAttributesDeclarationsFirstThenByPrefixAndName) {
  s->setFeature(ZQXmlSerializer::FEATURE_SORT_ATTRIBUTES, true);
  begin();
  s->startTag(nm("urn:d"), ZQName(), nm("root"));
  s->attribute(nm("urn:z"), nm("zz"), nm("b"), u("1"));
  s->attribute(ZQName(), nm("z"), u("2"));
  s->attribute(nm("urn:a"), nm("aa"), nm("c"), u("3"));
  s->attribute(ZQName(), nm("a"), u("4"));
  s->attribute(ZQN_NS_XML, ZQN_xml, ZQN_lang, u("en"));
  s->attribute(nm("urn:a"), nm("aa"), nm("b"), u("5"));
  EXPECT_EQ(written(), "<root");
  s->endTag(nm("urn:d"), nm("root"));
  EXPECT_EQ(written(),
            "<root xmlns=\"urn:d\" xmlns:aa=\"urn:a\" xmlns:zz=\"urn:z\" a=\"4\" z=\"2\" "
            "aa:b=\"5\" aa:c=\"3\" xml:lang=\"en\" zz:b=\"1\"/>");
  EXPECT_NE(ParsedXml(written()).doc, nullptr);
}

TEST_F(XmlSerializerTest, SortedRepeatedAttributeOverwrites) {
  s->setFeature(ZQXmlSerializer::FEATURE_SORT_ATTRIBUTES, true);
  begin();
  s->startTag(ZQName(), nm("a"));
  s->attribute(ZQName(), nm("x"), u("1"));
  s->attribute(ZQName(), nm("x"), u("2\n"));
  s->text(u("t"));
  s->startTag(ZQName(), nm("b"));
  s->attribute(ZQName(), nm("y"), u("3"));
  s->endDocument();
  // Sorted values go through the attribute flags, and nothing is left for the next element.
  EXPECT_EQ(written(), "<a x=\"2&#10;\">t<b y=\"3\"/></a>");
}

TEST_F(XmlSerializerTest, SortedDeclarationsUseTheAttributeFlags) {
  s->setFeature(ZQXmlSerializer::FEATURE_SORT_ATTRIBUTES, true);
  begin();
  s->startTag(nm("urn:a\tb"), nm("p"), nm("a"));
  s->endTag(nm("urn:a\tb"), nm("a"));
  EXPECT_EQ(written(), "<p:a xmlns:p=\"urn:a&#9;b\"/>");
}

TEST_F(XmlSerializerTest, UnsortedAttributesKeepTheirOrderBeforeDeclarations) {
  begin();
  s->startTag(nm("urn:d"), ZQName(), nm("root"));
  s->attribute(ZQName(), nm("z"), u("2"));
  s->attribute(ZQName(), nm("a"), u("4"));
  s->endTag(nm("urn:d"), nm("root"));
  EXPECT_EQ(written(), "<root z=\"2\" a=\"4\" xmlns=\"urn:d\"/>");
}

TEST_F(XmlSerializerTest, SortingSwitchedOffInsideATagStillWritesWhatWaits) {
  s->setFeature(ZQXmlSerializer::FEATURE_SORT_ATTRIBUTES, true);
  begin();
  s->startTag(ZQName(), nm("a"));
  s->attribute(ZQName(), nm("y"), u("1"));
  s->attribute(ZQName(), nm("x"), u("2"));
  s->setFeature(ZQXmlSerializer::FEATURE_SORT_ATTRIBUTES, false);
  s->attribute(ZQName(), nm("w"), u("3"));
  s->startTag(ZQName(), nm("b"));
  s->endDocument();
  EXPECT_EQ(written(), "<a w=\"3\" x=\"2\" y=\"1\"><b/></a>");
}

// ---- the ways a document drives it ----

TEST_F(XmlSerializerTest, ContentWithoutStartDocumentHasNoDeclaration) {
  s->setOutput(out, u("UTF-8"), UnicodeString());
  s->startTag(nm("urn:e"), ZQName(), nm("e"));
  s->text(fromUtf8("\xC3\xA9"));
  s->endDocument();
  EXPECT_EQ(written(), "<e xmlns=\"urn:e\">\xC3\xA9</e>");
}

TEST_F(XmlSerializerTest, LargeDocumentWrittenPiecewise) {
  s->setOutput(out, UnicodeString(), UnicodeString());
  s->startDocument(UnicodeString(), UnicodeString());
  // The root's start tag with its attributes only...
  s->startTag(nm("urn:r"), ZQName(), nm("root"));
  s->attribute(ZQName(), ZQName(), nm("n"), u("1"));
  // ...then each child as it is finished...
  for (int i = 0; i < 3; ++i) {
    s->startTag(nm("urn:r"), ZQName(), nm("child"));
    s->text(UnicodeString(static_cast<char16_t>(u'0' + i)));
    s->endTag(nm("urn:r"), nm("child"));
  }
  // ...then the root's end tag.
  s->endTag(nm("urn:r"), nm("root"));
  s->endDocument();
  EXPECT_EQ(written(),
            "<?xml version=\"1.0\"?><root n=\"1\" xmlns=\"urn:r\"><child>0</child>"
            "<child>1</child><child>2</child></root>");
  EXPECT_NE(ParsedXml(written()).doc, nullptr);
}

// ---- the output as another parser reads it ----

TEST_F(XmlSerializerTest, RichDocumentParsesAndRoundTrips) {
  s->setGenerator(u("ZQCommon tests"));
  s->setOutput(out, u("UTF-8"), u("yes"));
  s->startDocument(UnicodeString(), UnicodeString());
  s->comment(u(" prolog "));
  s->docdecl(u("doc"));
  s->processingInstruction(nm("pi"), u("data"));
  s->startTag(nm("urn:doc"), ZQName(), nm("doc"));
  s->attribute(ZQName(), nm("v"), fromUtf8("a<b>&\"c'\t\n\r\xC3\xA9"));
  s->setPrefix(nm("x"), nm("urn:x"));
  s->startTag(nm("urn:x"), nm("item"));
  s->attribute(nm("urn:x"), nm("k"), u("1"));
  s->text(fromUtf8("x < y & z > w \xE2\x82\xAC \xF0\x9F\x98\x80"));
  s->endTag(nm("urn:x"), nm("item"));
  s->cdsect(u("<raw & stuff>"));
  s->entityRef(u("amp"));
  s->startTag(ZQName(), nm("plain"));
  s->endDocument();

  ParsedXml parsed(written());
  ASSERT_NE(parsed.doc, nullptr) << written();
  xmlNodePtr root = parsed.root();
  ASSERT_NE(root, nullptr);
  EXPECT_STREQ(reinterpret_cast<const char*>(root->name), "doc");
  EXPECT_EQ(nodeNs(root), "urn:doc");
  EXPECT_EQ(prop(root, "v"), "a<b>&\"c'\t\n\r\xC3\xA9");
  xmlNodePtr item = root->children;
  ASSERT_NE(item, nullptr);
  EXPECT_EQ(nodeNs(item), "urn:x");
  EXPECT_EQ(prop(item, "k", "urn:x"), "1");
  EXPECT_EQ(content(item), "x < y & z > w \xE2\x82\xAC \xF0\x9F\x98\x80");
  xmlNodePtr cdata = item->next;
  ASSERT_NE(cdata, nullptr);
  EXPECT_EQ(cdata->type, XML_CDATA_SECTION_NODE);
  EXPECT_EQ(content(cdata), "<raw & stuff>");
  xmlNodePtr plain = root->last;
  EXPECT_STREQ(reinterpret_cast<const char*>(plain->name), "plain");
  EXPECT_EQ(nodeNs(plain), "");
  EXPECT_EQ(parsed.doc->standalone, 1);
}

TEST_F(XmlSerializerTest, AsciiOutputParsesToTheSameText) {
  s->setOutput(out, u("US-ASCII"), UnicodeString());
  s->startDocument(UnicodeString(), UnicodeString());
  s->startTag(ZQName(), nm("a"));
  const char* text = "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80 & <";
  s->attribute(ZQName(), nm("v"), fromUtf8(text));
  s->text(fromUtf8(text));
  s->endDocument();
  for (char c : written()) EXPECT_LT(static_cast<unsigned char>(c), 0x80u);
  ParsedXml parsed(written());
  ASSERT_NE(parsed.doc, nullptr);
  EXPECT_EQ(content(parsed.root()), text);
  EXPECT_EQ(prop(parsed.root(), "v"), text);
}

}  // namespace
