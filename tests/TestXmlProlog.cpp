// The XML declaration, the DOCTYPE and its subsets, entity declarations, the built-in sets
// that stand in for well-known DTDs, external DTDs and their process-wide cache, and the
// scope of the MathML entities.
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "StreamTestSupport.h"
#include "TestSupport.h"
#include "common/ZQError.h"
#include "common/ZQUri.h"
#include "xml/ZQXmlDtdCache.h"
#include "xml/ZQXmlParserImpl.h"

using namespace ZQCommonNS;
using icu::UnicodeString;
using zqtest::u;
using zqtest::utf8;

namespace {

const char* const kMathML = "http://www.w3.org/1998/Math/MathML";

/// The parser with the prolog state opened up.
class PrologParser : public ZQXmlParserImpl {
 public:
  using ZQXmlParserImpl::lookupEntity;
  using ZQXmlParserImpl::parseExternalSubset;
  ZQName doctypeName() const { return m_doctypeName; }
  const ZQXmlEntityMaps& maps() const { return m_entities; }
  bool hasSavedMaps() const { return m_savedEntityMaps != nullptr; }
  bool xml11() const { return m_xml11; }
  int encodingKind() const { return m_encodingKind; }
  bool xhtmlAdded() const { return m_xhtmlEntitiesAdded; }
  ZQName htmlAdded() const { return m_htmlEntitiesAdded; }
  bool hasDoctype() const { return m_hasDoctype; }
  ErrorCallback callback() const { return m_errorCallback; }
  bool general(const char* name) const {
    return m_entities.generalEntities.count(ZQName(u(name))) != 0;
  }
};

struct Reported {
  std::vector<int> codes;
  std::vector<std::string> texts;
  bool has(int code) const {
    for (int c : codes)
      if (c == code) return true;
    return false;
  }
  std::string textOf(int code) const {
    for (size_t i = 0; i < codes.size(); ++i)
      if (codes[i] == code) return texts[i];
    return "<none>";
  }
};

void collect(const ZQError& error, void* data) {
  Reported* reported = static_cast<Reported*>(data);
  reported->codes.push_back(error.getErrorCode());
  reported->texts.push_back(utf8(error.getRawMessage()));
}

/// A document read from memory; errors go to a callback that returns unless `throwing`.
struct Doc {
  std::istringstream in;
  ZQPtr<PrologParser> parser;
  Reported reported;
  explicit Doc(const std::string& text, bool withCallback = true, const std::string& base = "",
               std::initializer_list<ZQXmlParser::Feature> features = {})
      : in(text), parser(new PrologParser()) {
    for (ZQXmlParser::Feature f : features) parser->setFeature(f, true);
    if (withCallback) parser->setCallbackError(collect, &reported);
    parser->setInput(in, UnicodeString(), UnicodeString::fromUTF8(base));
  }
  /// Text of all TEXT events under next(), up to the end; at most `limit` events.
  std::string text(int limit = 10000) {
    std::string out;
    for (int i = 0; i < limit; ++i) {
      ZQXmlParser::EventType t = parser->next();
      if (t == ZQXmlParser::TEXT) out += utf8(parser->getText());
      if (t == ZQXmlParser::END_DOCUMENT) return out;
    }
    return out + "<no end>";
  }
  /// Events under next() to the end; "<no end>" as last when the limit was reached.
  std::vector<std::string> events(int limit = 10000) {
    std::vector<std::string> out;
    for (int i = 0; i < limit; ++i) {
      ZQXmlParser::EventType t = parser->next();
      std::string name = utf8(ZQXmlParser::getEventTypeName(t));
      if (t == ZQXmlParser::START_TAG || t == ZQXmlParser::END_TAG)
        name += " " + utf8(parser->getName().toString());
      if (t == ZQXmlParser::TEXT) name += " " + utf8(parser->getText());
      out.push_back(name);
      if (t == ZQXmlParser::END_DOCUMENT) return out;
    }
    out.push_back("<no end>");
    return out;
  }
  /// Reads until the DOCTYPE has been read (the first event after it) under nextToken().
  ZQXmlParser::EventType toDoctype() {
    for (int i = 0; i < 100; ++i) {
      ZQXmlParser::EventType t = parser->nextToken();
      if (t == ZQXmlParser::DOCDECL || t == ZQXmlParser::END_DOCUMENT) return t;
    }
    return ZQXmlParser::END_DOCUMENT;
  }
};

/// The code and raw text of the error thrown while reading `text` to its end without a
/// callback; code 0 when nothing was thrown.
std::pair<int, std::string> thrownBy(const std::string& text,
                                     std::initializer_list<ZQXmlParser::Feature> features = {},
                                     const std::string& base = "") {
  Doc doc(text, false, base, features);
  doc.parser->setFeature(ZQXmlParser::FEATURE_NO_POSITION_DESCRIPTION, true);
  try {
    for (int i = 0; i < 10000; ++i)
      if (doc.parser->next() == ZQXmlParser::END_DOCUMENT) return {0, ""};
  } catch (const ZQError& e) {
    return {e.getErrorCode(), utf8(e.getRawMessage())};
  }
  return {-1, "no end"};
}

/// Records every URI that anything in the library tries to open, and produces none.
class RecordingResolver : public ZQUriReferenceResolver2 {
 public:
  RecordingResolver() { previous = ZQUri::setUriReferenceResolver2(this); }
  ~RecordingResolver() override { ZQUri::setUriReferenceResolver2(previous); }
  bool resolveUriReference(const char16_t* uri, WriteFunc, void*) override {
    std::lock_guard<std::mutex> guard(mutex);
    asked.push_back(utf8(UnicodeString(uri)));
    return false;
  }
  std::vector<std::string> seen() {
    std::lock_guard<std::mutex> guard(mutex);
    return asked;
  }
  bool saw(const std::string& part) {
    for (const std::string& s : seen())
      if (s.find(part) != std::string::npos) return true;
    return false;
  }

 private:
  ZQUriReferenceResolver2* previous = nullptr;
  std::mutex mutex;
  std::vector<std::string> asked;
};

std::string utf16le(const std::string& ascii) {
  std::string out;
  for (char c : ascii) {
    out += c;
    out += '\0';
  }
  return out;
}

std::string utf32le(const std::string& ascii) {
  std::string out;
  for (char c : ascii) {
    out += c;
    out.append(3, '\0');
  }
  return out;
}

/// A scratch directory as a base URI ending in "/".
struct DtdDir {
  streamtest::ScratchDir dir;
  std::string base() const { return dir.path + "/"; }
  std::string write(const std::string& name, const std::string& content) const {
    std::string path = dir.file(name);
    streamtest::writeFile(path, content);
    return path;
  }
};

}  // namespace

// ---------------------------------------------------------------------------------------
// XML declaration

TEST(XmlProlog, XmlDeclarationReadAndVersionKept) {
  Doc doc("<?xml version='1.1' encoding='UTF-8' standalone='yes'?><r/>");
  EXPECT_EQ(doc.parser->nextToken(), ZQXmlParser::START_TAG);
  EXPECT_TRUE(doc.parser->hasXmlDecl());
  EXPECT_TRUE(doc.parser->xml11());
  EXPECT_TRUE(doc.reported.codes.empty());

  Doc ten("<?xml version=\"1.0\"?><r/>");
  EXPECT_EQ(ten.parser->nextToken(), ZQXmlParser::START_TAG);
  EXPECT_TRUE(ten.parser->hasXmlDecl());
  EXPECT_FALSE(ten.parser->xml11());
}

TEST(XmlProlog, Code161DeclarationNotAtStart) {
  auto thrown = thrownBy("<!--c--><?xml version='1.0'?><r/>");
  EXPECT_EQ(thrown.first, 161);
  EXPECT_EQ(thrown.second, "Unexpected XML declaration.");
  Doc doc(" <?xml version='1.0'?><r/>");
  doc.text();
  EXPECT_TRUE(doc.reported.has(161));
}

TEST(XmlProlog, Code162MissingVersion) {
  auto thrown = thrownBy("<?xml encoding='UTF-8'?><r/>");
  EXPECT_EQ(thrown.first, 162);
  EXPECT_EQ(thrown.second, "Missing 'version=' after '<?xml ' in XML declaration.");
}

TEST(XmlProlog, Code163MissingEquals) {
  auto a = thrownBy("<?xml version '1.0'?><r/>");
  EXPECT_EQ(a.first, 163);
  EXPECT_EQ(a.second, "Missing '=' after '<?xml version' in XML declaration.");
  auto b = thrownBy("<?xml version='1.0' encoding 'UTF-8'?><r/>");
  EXPECT_EQ(b.first, 163);
  EXPECT_EQ(b.second, "Missing '=' after 'encoding' in XML declaration.");
  auto c = thrownBy("<?xml version='1.0' standalone 'no'?><r/>");
  EXPECT_EQ(c.first, 163);
  EXPECT_EQ(c.second, "Missing '=' after 'standalone' in XML declaration.");
}

TEST(XmlProlog, Code164MissingWhitespaceAfterXml) {
  auto thrown = thrownBy("<?xml?><r/>");
  EXPECT_EQ(thrown.first, 164);
  EXPECT_EQ(thrown.second, "Missing whitespace after '<?xml' in XML declaration.");
}

TEST(XmlProlog, Code165MissingWhitespaceBeforePseudoAttribute) {
  auto a = thrownBy("<?xml version='1.0'encoding='UTF-8'?><r/>");
  EXPECT_EQ(a.first, 165);
  EXPECT_EQ(a.second, "Missing whitespace before 'encoding=' in XML declaration.");
  auto b = thrownBy("<?xml version='1.0'standalone='no'?><r/>");
  EXPECT_EQ(b.first, 165);
  EXPECT_EQ(b.second, "Missing whitespace before 'standalone=' in XML declaration.");
}

TEST(XmlProlog, Code166UnsupportedVersion) {
  auto thrown = thrownBy("<?xml version='2.0'?><r/>");
  EXPECT_EQ(thrown.first, 166);
  EXPECT_EQ(thrown.second, "Unsupported XML version: 2.0");
}

TEST(XmlProlog, Code167InvalidStandalone) {
  auto thrown = thrownBy("<?xml version='1.0' standalone='maybe'?><r/>");
  EXPECT_EQ(thrown.first, 167);
  EXPECT_EQ(thrown.second, "Invalid standalone declaration in XML declaration.");
  EXPECT_EQ(thrownBy("<?xml version='1.0' standalone='no'?><r/>").first, 0);
}

TEST(XmlProlog, Code140JunkAtEndOfDeclaration) {
  auto thrown = thrownBy("<?xml version='1.0'!><r/>");
  EXPECT_EQ(thrown.first, 140);
  EXPECT_EQ(thrown.second, "Unexpected character: !");
  auto second = thrownBy("<?xml version='1.0'?x<r/>");
  EXPECT_EQ(second.first, 140);
  EXPECT_EQ(second.second, "Unexpected character: x");
  auto third = thrownBy("<?xml version='1.0'><r/>");
  EXPECT_EQ(third.first, 140);
  EXPECT_EQ(third.second, "Unexpected character: >");
}

TEST(XmlProlog, DeclaredEncodingChangesSingleByteKind) {
  // Detected UTF-8 without a mark gives way to a declared Latin-1.
  Doc doc("<?xml version='1.0' encoding='ISO-8859-1'?><r>\xE9</r>");
  EXPECT_EQ(doc.text(), "\xC3\xA9");
  EXPECT_EQ(doc.parser->encodingKind(), ZQXmlParserImpl::ENCODING_LATIN1);
  EXPECT_TRUE(doc.reported.codes.empty());
}

TEST(XmlProlog, Code185Utf8MarkWithUtf16Declaration) {
  auto thrown = thrownBy("\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-16'?><r/>");
  EXPECT_EQ(thrown.first, 185);
  EXPECT_EQ(thrown.second, "Conflict encoding: UTF-16.");
}

TEST(XmlProlog, Code185Utf16MarkWithUtf8DeclarationKeepsUtf16) {
  Doc doc("\xFF\xFE" + utf16le("<?xml version='1.0' encoding='UTF-8'?><r>x</r>"));
  EXPECT_EQ(doc.text(), "x");
  ASSERT_EQ(doc.reported.codes, std::vector<int>{185});
  EXPECT_EQ(doc.reported.texts[0], "Conflict encoding: UTF-8.");
  EXPECT_EQ(doc.parser->encodingKind(), ZQXmlParserImpl::ENCODING_UTF16LE);
}

TEST(XmlProlog, Utf16MarkWithUtf16DeclarationPasses) {
  Doc doc("\xFF\xFE" + utf16le("<?xml version='1.0' encoding='UTF-16'?><r>x</r>"));
  EXPECT_EQ(doc.text(), "x");
  EXPECT_TRUE(doc.reported.codes.empty());
  EXPECT_EQ(utf8(doc.parser->getInputEncoding()), "UTF-16");
}

TEST(XmlProlog, Utf32MarkAcceptsUtf32AndRejectsUtf16) {
  Doc same(std::string("\xFF\xFE\0\0", 4) +
           utf32le("<?xml version='1.0' encoding='UTF-32'?><r>x</r>"));
  EXPECT_EQ(same.text(), "x");
  EXPECT_TRUE(same.reported.codes.empty());

  std::string bytes =
      std::string("\xFF\xFE\0\0", 4) + utf32le("<?xml version='1.0' encoding='UTF-16'?><r>x</r>");
  Doc other(bytes);
  EXPECT_EQ(other.text(), "x");
  EXPECT_EQ(other.reported.codes, std::vector<int>{185});
  EXPECT_EQ(other.parser->encodingKind(), ZQXmlParserImpl::ENCODING_UTF32LE);
}

TEST(XmlProlog, DetectedUtf16WithoutMarkKeepsKindAgainstDeclaration) {
  // No mark, so no conflict is reported, but the detected width stays.
  Doc doc(utf16le("<?xml version='1.0' encoding='ISO-8859-1'?><r>x</r>"));
  EXPECT_EQ(doc.text(), "x");
  EXPECT_TRUE(doc.reported.codes.empty());
  EXPECT_EQ(doc.parser->encodingKind(), ZQXmlParserImpl::ENCODING_UTF16LE);
  EXPECT_EQ(utf8(doc.parser->getInputEncoding()), "UTF-16LE");
}

// ---------------------------------------------------------------------------------------
// DOCTYPE

TEST(XmlProlog, HtmlDoctypeWithoutDtdWork) {
  size_t cached = ZQDtdCache::size();
  RecordingResolver resolver;
  Doc doc("<!DOCTYPE html><html></html>");
  EXPECT_EQ(doc.toDoctype(), ZQXmlParser::DOCDECL);
  EXPECT_EQ(doc.parser->doctypeName(), ZQN_html);
  EXPECT_FALSE(doc.parser->xhtmlAdded());
  EXPECT_TRUE(doc.parser->getPubidLiteral().isEmpty());
  EXPECT_TRUE(doc.parser->getExternalDTD().isEmpty());
  EXPECT_TRUE(resolver.seen().empty());
  EXPECT_EQ(ZQDtdCache::size(), cached);
}

TEST(XmlProlog, DoctypeNameStoredInLowerCase) {
  Doc doc("<!DOCTYPE Root><Root/>");
  EXPECT_EQ(doc.toDoctype(), ZQXmlParser::DOCDECL);
  EXPECT_EQ(utf8(doc.parser->doctypeName().toString()), "root");
}

TEST(XmlProlog, LowerCaseHtmlDoctypeWithPublicIdAddsXhtmlSet) {
  RecordingResolver resolver;
  Doc doc("<!doctype HTML public \"-//W3C//DTD HTML 4.01//EN\"><html><body>&eacute;</body></html>");
  EXPECT_EQ(doc.toDoctype(), ZQXmlParser::DOCDECL);
  EXPECT_EQ(utf8(doc.parser->getPubidLiteral()), "-//W3C//DTD HTML 4.01//EN");
  EXPECT_TRUE(doc.parser->getExternalDTD().isEmpty());
  EXPECT_EQ(doc.parser->doctypeName(), ZQN_html);
  EXPECT_TRUE(doc.parser->xhtmlAdded());
  EXPECT_TRUE(doc.parser->general("eacute"));
  EXPECT_TRUE(doc.reported.codes.empty());
  EXPECT_TRUE(resolver.seen().empty());
}

TEST(XmlProlog, PublicAndSystemIdentifiersRead) {
  Doc doc("<!DOCTYPE r PUBLIC '-//X//DTD R//EN' \"r.dtd\" []><r/>");
  doc.parser->setFeature(ZQXmlParser::FEATURE_SKIP_EXTERNAL_DTD, true);
  EXPECT_EQ(doc.toDoctype(), ZQXmlParser::DOCDECL);
  EXPECT_EQ(utf8(doc.parser->getPubidLiteral()), "-//X//DTD R//EN");
  EXPECT_EQ(utf8(doc.parser->getExternalDTD()), "r.dtd");
  EXPECT_TRUE(doc.reported.codes.empty());
}

TEST(XmlProlog, PublicIdentifierAloneEndsIdentifiers) {
  Doc doc("<!DOCTYPE r PUBLIC '-//X//DTD R//EN' [<!ENTITY a 'A'>]><r>&a;</r>");
  EXPECT_EQ(doc.text(), "A");
  EXPECT_TRUE(doc.parser->getExternalDTD().isEmpty());
  EXPECT_TRUE(doc.reported.codes.empty());
}

TEST(XmlProlog, XhtmlSystemIdentifierFetchesNothing) {
  size_t cached = ZQDtdCache::size();
  RecordingResolver resolver;
  Doc doc(
      "<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Strict//EN\" "
      "\"http://www.w3.org/TR/xhtml1/DTD/xhtml1-strict.dtd\">"
      "<html xmlns='http://www.w3.org/1999/xhtml'><body>&nbsp;</body></html>");
  EXPECT_EQ(doc.toDoctype(), ZQXmlParser::DOCDECL);
  EXPECT_TRUE(doc.parser->xhtmlAdded());
  EXPECT_EQ(doc.text(), "\xC2\xA0");
  EXPECT_TRUE(doc.reported.codes.empty());
  EXPECT_TRUE(resolver.seen().empty());
  EXPECT_EQ(ZQDtdCache::size(), cached);
}

TEST(XmlProlog, XhtmlDtdUnderOtherW3CPathsAndHttps) {
  RecordingResolver resolver;
  const char* const ids[] = {"http://www.w3.org/MarkUp/DTD/xhtml11.dtd",
                             "https://www.w3.org/TR/xhtml1/DTD/xhtml1-transitional.dtd",
                             "https://www.w3.org/MarkUp/DTD/xhtml-basic11.dtd"};
  for (const char* id : ids) {
    Doc doc(std::string("<!DOCTYPE r SYSTEM '") + id + "'><r>&copy;</r>");
    EXPECT_EQ(doc.text(), "\xC2\xA9") << id;
    EXPECT_TRUE(doc.parser->xhtmlAdded()) << id;
    EXPECT_TRUE(doc.reported.codes.empty()) << id;
  }
  EXPECT_TRUE(resolver.seen().empty());
}

TEST(XmlProlog, HtmlPublicIdentifierChoosesXhtmlSetWhateverTheSystemId) {
  RecordingResolver resolver;
  Doc doc(
      "<!DOCTYPE r PUBLIC \"-//W3C//DTD HTML 4.01 Transitional//EN\" "
      "\"http://example.invalid/loose.dtd\"><r>&nbsp;</r>");
  EXPECT_EQ(doc.toDoctype(), ZQXmlParser::DOCDECL);
  EXPECT_TRUE(doc.parser->xhtmlAdded());
  EXPECT_TRUE(resolver.seen().empty());
}

TEST(XmlProlog, HtmlPublicIdentifierWithoutSystemIdNeedsHtmlRoot) {
  Doc doc("<!DOCTYPE r PUBLIC \"-//W3C//DTD HTML 4.01//EN\"><r/>");
  EXPECT_EQ(doc.toDoctype(), ZQXmlParser::DOCDECL);
  EXPECT_FALSE(doc.parser->xhtmlAdded());
}

TEST(XmlProlog, MathMLDtdGivesSetWithoutMark) {
  RecordingResolver resolver;
  for (const char* id : {"http://www.w3.org/Math/DTD/mathml2/mathml2.dtd",
                         "https://www.w3.org/TR/MathML2/dtd/mathml2.dtd"}) {
    Doc doc(std::string("<!DOCTYPE r SYSTEM '") + id + "'><r>&alpha;</r>");
    EXPECT_EQ(doc.toDoctype(), ZQXmlParser::DOCDECL) << id;
    EXPECT_TRUE(doc.parser->general("NotEqualTilde")) << id;
    EXPECT_FALSE(doc.parser->maps().mathmlEntitiesAdded) << id;
    EXPECT_FALSE(doc.parser->xhtmlAdded()) << id;
    EXPECT_EQ(doc.text(), "\xCE\xB1") << id;
  }
  EXPECT_TRUE(resolver.seen().empty());
}

TEST(XmlProlog, SkipExternalDtdChoosesNoSet) {
  RecordingResolver resolver;
  Doc doc(
      "<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Strict//EN\" "
      "\"http://www.w3.org/TR/xhtml1/DTD/xhtml1-strict.dtd\"><r/>",
      true, "", {ZQXmlParser::FEATURE_SKIP_EXTERNAL_DTD});
  EXPECT_EQ(doc.toDoctype(), ZQXmlParser::DOCDECL);
  EXPECT_FALSE(doc.parser->xhtmlAdded());
  EXPECT_FALSE(doc.parser->general("nbsp"));
  EXPECT_TRUE(doc.parser->hasDoctype());
  EXPECT_TRUE(resolver.seen().empty());
}

TEST(XmlProlog, SvgPublicIdentifierDeclaresSvgNamespaces) {
  Doc doc("<!DOCTYPE g PUBLIC \"-//W3C//DTD SVG 1.1//EN\"><g/>");
  EXPECT_EQ(doc.parser->next(), ZQXmlParser::START_TAG);
  EXPECT_EQ(doc.parser->getNamespace(), ZQN_NS_SVG);
  EXPECT_EQ(doc.parser->getNamespace(ZQN_xlink), ZQN_NS_XLINK);
  Doc other("<!DOCTYPE g PUBLIC \"-//X//DTD G//EN\"><g/>");
  EXPECT_EQ(other.parser->next(), ZQXmlParser::START_TAG);
  EXPECT_TRUE(other.parser->getNamespace().isEmpty());
}

TEST(XmlProlog, Code148DoctypeAfterRoot) {
  auto thrown = thrownBy("<r/><!DOCTYPE r>");
  EXPECT_EQ(thrown.first, 148);
  EXPECT_EQ(thrown.second, "Unexpected DOCTYPE declaration outside of prolog.");
}

TEST(XmlProlog, Code149SecondDoctype) {
  auto thrown = thrownBy("<!DOCTYPE r><!DOCTYPE r><r/>");
  EXPECT_EQ(thrown.first, 149);
  EXPECT_EQ(thrown.second, "Cannot have multiple DOCTYPE declarations.");
}

TEST(XmlProlog, Code150MissingWhitespaceInDoctype) {
  auto a = thrownBy("<!DOCTYPE[]><r/>");
  EXPECT_EQ(a.first, 150);
  EXPECT_EQ(a.second, "Missing whitespace after '<!DOCTYPE'.");
  auto b = thrownBy("<!DOCTYPE r'x'><r/>");
  EXPECT_EQ(b.first, 150);
  EXPECT_EQ(b.second, "Missing whitespace after '<!DOCTYPE r'.");
  auto c = thrownBy("<!DOCTYPE r SYSTEM'x'><r/>");
  EXPECT_EQ(c.first, 150);
  EXPECT_EQ(c.second, "Missing whitespace after '<!DOCTYPE r SYSTEM'.");
  auto d = thrownBy("<!DOCTYPE r PUBLIC 'p''s'><r/>");
  EXPECT_EQ(d.first, 150);
  EXPECT_EQ(d.second, "Missing whitespace after '<!DOCTYPE r PUBLIC \"p\"'.");
}

TEST(XmlProlog, Code131InvalidRootName) {
  auto thrown = thrownBy("<!DOCTYPE 1r><r/>");
  EXPECT_EQ(thrown.first, 131);
  EXPECT_EQ(thrown.second, "Invalid root tag name after '<!DOCTYPE'.");
}

TEST(XmlProlog, Code151UnknownExternalIdKeyword) {
  auto thrown = thrownBy("<!DOCTYPE r FOO 'x'><r/>");
  EXPECT_EQ(thrown.first, 151);
  EXPECT_EQ(thrown.second, "External ID is expected after '<!DOCTYPE r'.");
  // Any case of the keyword passes only for html.
  EXPECT_EQ(thrownBy("<!DOCTYPE r system 'x'><r/>").first, 151);
}

TEST(XmlProlog, Code152MissingPublicLiteral) {
  auto thrown = thrownBy("<!DOCTYPE r PUBLIC x><r/>");
  EXPECT_EQ(thrown.first, 152);
  EXPECT_EQ(thrown.second, "PubidLiteral is expected after '<!DOCTYPE r PUBLIC'.");
}

TEST(XmlProlog, Code153MissingSystemLiteral) {
  auto thrown = thrownBy("<!DOCTYPE r SYSTEM x><r/>");
  EXPECT_EQ(thrown.first, 153);
  EXPECT_EQ(thrown.second, "SystemLiteral is expected after '<!DOCTYPE r SYSTEM|PUBLIC'.");
  // A callback that returns lets the unquoted identifier be read, and then fetched.
  Doc doc("<!DOCTYPE r SYSTEM x><r/>", true, "", {ZQXmlParser::FEATURE_SKIP_EXTERNAL_DTD});
  EXPECT_EQ(doc.events().back(), "END_DOCUMENT");
  EXPECT_EQ(doc.reported.codes, (std::vector<int>{153, 174}));
  EXPECT_EQ(utf8(doc.parser->getExternalDTD()), "x");
}

TEST(XmlProlog, Code154EndOfInputInDoctype) {
  auto thrown = thrownBy("<!DOCTYPE r [<!ELEMENT r ANY>");
  EXPECT_EQ(thrown.first, 154);
  EXPECT_EQ(thrown.second, "Unexpected end of input in DOCTYPE declaration.");
}

TEST(XmlProlog, DoctypeEventTextLacksTheYOfEntityDeclarations) {
  Doc doc("<!DOCTYPE r [<!ENTITY b 'x'><!ELEMENT r ANY>]><r/>");
  EXPECT_EQ(doc.parser->nextToken(), ZQXmlParser::DOCDECL);
  // The whitespace read on the way is kept with the subset.
  EXPECT_EQ(utf8(doc.parser->getText()), "  [<!ENTIT b 'x'><!ELEMENT r ANY>]");
}

TEST(XmlProlog, InternalSubsetSkipsCommentsPIsAndQuotedMarkup) {
  Doc doc(
      "<!DOCTYPE r [\n"
      "<!-- <!ENTITY c 'comment'> -->\n"
      "<?pi <!ENTITY p 'pi'> ?>\n"
      "<!ATTLIST r a CDATA '> <!ENTITY q \"quoted\">'>\n"
      "<!ENTITY ok 'yes'>\n"
      "]><r>&ok;</r>");
  EXPECT_EQ(doc.text(), "yes");
  EXPECT_TRUE(doc.reported.codes.empty());
  EXPECT_FALSE(doc.parser->general("c"));
  EXPECT_FALSE(doc.parser->general("p"));
  EXPECT_FALSE(doc.parser->general("q"));
}

// ---------------------------------------------------------------------------------------
// Entity declarations

TEST(XmlProlog, FirstDeclarationWins) {
  Doc doc("<!DOCTYPE r [<!ENTITY a 'x'><!ENTITY a 'y'>]><r>&a;</r>");
  EXPECT_EQ(doc.text(), "x");
  EXPECT_TRUE(doc.reported.codes.empty());
}

TEST(XmlProlog, PredefinedEntityCannotBeRedefined) {
  Doc doc("<!DOCTYPE r [<!ENTITY lt 'z'>]><r>&lt;</r>");
  EXPECT_EQ(doc.text(), "<");
  EXPECT_EQ(utf8(doc.parser->lookupEntity(ZQN_lt, false)), "&#60;");
}

TEST(XmlProlog, CharacterReferenceInValueExpandedAtDeclaration) {
  Doc doc("<!DOCTYPE r [<!ENTITY a '&#38;#60;'>]><r>&a;</r>");
  EXPECT_EQ(doc.toDoctype(), ZQXmlParser::DOCDECL);
  EXPECT_EQ(utf8(doc.parser->lookupEntity(ZQName(u("a")), false)), "&#60;");
  EXPECT_EQ(doc.events(),
            (std::vector<std::string>{"START_TAG r", "TEXT <", "END_TAG r", "END_DOCUMENT"}));
}

TEST(XmlProlog, GeneralReferenceInValueExpandedAtUse) {
  Doc doc("<!DOCTYPE r [<!ENTITY a 'x&b;y'><!ENTITY b 'B'>]><r>&a;</r>");
  EXPECT_EQ(doc.toDoctype(), ZQXmlParser::DOCDECL);
  EXPECT_EQ(utf8(doc.parser->lookupEntity(ZQName(u("a")), false)), "x&b;y");
  EXPECT_EQ(doc.text(), "xBy");
}

TEST(XmlProlog, ExternalEntityInAttributeIsItsSystemIdentifier) {
  RecordingResolver resolver;
  Doc doc("<!DOCTYPE r [<!ENTITY e SYSTEM 'part.xml'>]><r a='[&e;]'/>");
  EXPECT_EQ(doc.parser->next(), ZQXmlParser::START_TAG);
  EXPECT_EQ(utf8(doc.parser->getAttributeValue(0)), "[part.xml]");
  EXPECT_TRUE(resolver.seen().empty());
}

TEST(XmlProlog, PublicEntityAndUnparsedEntityStoredAsExternal) {
  Doc doc(
      "<!DOCTYPE r [<!ENTITY p PUBLIC '-//X//ENT//EN' 'p.xml'>"
      "<!ENTITY img SYSTEM 'pic.png' NDATA png><!ENTITY % pe SYSTEM 'pe.ent'>]><r/>");
  EXPECT_EQ(doc.toDoctype(), ZQXmlParser::DOCDECL);
  const ZQXmlEntityMaps& maps = doc.parser->maps();
  EXPECT_EQ(utf8(maps.externalGeneralEntities.at(ZQName(u("p")))), "p.xml");
  EXPECT_EQ(utf8(maps.externalGeneralEntities.at(ZQName(u("img")))), "pic.png");
  EXPECT_EQ(utf8(maps.externalParameterEntities.at(ZQName(u("pe")))), "pe.ent");
  EXPECT_EQ(maps.generalEntities.count(ZQName(u("p"))), 0u);
  EXPECT_EQ(maps.parameterEntities.count(ZQName(u("pe"))), 0u);
  EXPECT_TRUE(doc.reported.codes.empty());
}

TEST(XmlProlog, ParameterAndGeneralEntitiesAreApart) {
  Doc doc("<!DOCTYPE r [<!ENTITY % p 'P'>]><r>&p;</r>");
  EXPECT_EQ(doc.text(), "");
  EXPECT_EQ(doc.reported.codes, std::vector<int>{515});
  EXPECT_EQ(doc.reported.texts[0], "Reference to undefined entity: &p;");
  EXPECT_EQ(utf8(doc.parser->lookupEntity(ZQName(u("p")), true)), "P");
}

TEST(XmlProlog, Code150MissingWhitespaceInEntityDeclaration) {
  struct Case {
    const char* decl;
    const char* arg;
  } cases[] = {{"<!ENTITY%p 'x'>", "<!ENTITY"},
               {"<!ENTITY %p 'x'>", "<!ENTITY %"},
               {"<!ENTITY a'x'>", "<!ENTITY a"},
               {"<!ENTITY a SYSTEM'x'>", "<!ENTITY a SYSTEM"},
               {"<!ENTITY a PUBLIC 'p''s'>", "<!ENTITY a PUBLIC\"p\""},
               {"<!ENTITY a SYSTEM 's' NDATA'n'>", "<!ENTITY a ... \"s\" NDATA"}};
  for (const Case& c : cases) {
    auto thrown = thrownBy(std::string("<!DOCTYPE r [") + c.decl + "]><r/>");
    EXPECT_EQ(thrown.first, 150) << c.decl;
    EXPECT_EQ(thrown.second, std::string("Missing whitespace after '") + c.arg + "'.") << c.decl;
  }
}

TEST(XmlProlog, Code151UnknownEntityKeyword) {
  auto thrown = thrownBy("<!DOCTYPE r [<!ENTITY a FOO 'x'>]><r/>");
  EXPECT_EQ(thrown.first, 151);
  EXPECT_EQ(thrown.second, "External ID is expected after '<!ENTITY a'.");
  // Under a callback that returns, the declaration reads on as a system identifier.
  Doc doc("<!DOCTYPE r [<!ENTITY a FOO 'x'><!ENTITY b 'B'>]><r>&b;</r>");
  EXPECT_EQ(doc.text(), "B");
  EXPECT_EQ(doc.reported.codes, std::vector<int>{151});
  EXPECT_EQ(utf8(doc.parser->lookupEntity(ZQName(u("a")), false)), "x");
}

TEST(XmlProlog, Code152And153EntityLiterals) {
  auto a = thrownBy("<!DOCTYPE r [<!ENTITY a PUBLIC x>]><r/>");
  EXPECT_EQ(a.first, 152);
  EXPECT_EQ(a.second, "PubidLiteral is expected after '<!ENTITY a PUBLIC'.");
  auto b = thrownBy("<!DOCTYPE r [<!ENTITY a SYSTEM x>]><r/>");
  EXPECT_EQ(b.first, 153);
  EXPECT_EQ(b.second, "SystemLiteral is expected after '<!ENTITY a SYSTEM|PUBLIC'.");
  auto c = thrownBy("<!DOCTYPE r [<!ENTITY a PUBLIC 'p' x>]><r/>");
  EXPECT_EQ(c.first, 153);
}

TEST(XmlProlog, Code154EndOfInputInEntityValue) {
  auto thrown = thrownBy("<!DOCTYPE r [<!ENTITY a 'x");
  EXPECT_EQ(thrown.first, 154);
  EXPECT_EQ(thrown.second, "Unexpected end of input in ENTITY declaration.");
}

TEST(XmlProlog, Code155EmptyParameterEntityName) {
  auto thrown = thrownBy("<!DOCTYPE r [ % ; ]><r/>");
  EXPECT_EQ(thrown.first, 155);
  EXPECT_EQ(thrown.second, "Empty entity name.");
}

TEST(XmlProlog, Code156ParameterReferenceWithoutSemicolon) {
  auto thrown = thrownBy("<!DOCTYPE r [<!ENTITY % p ''> %p ]><r/>");
  EXPECT_EQ(thrown.first, 156);
  EXPECT_EQ(thrown.second, "Invalid character in entity reference: %p ;");
}

TEST(XmlProlog, Code514UndefinedParameterEntityThrownAs157) {
  auto thrown = thrownBy("<!DOCTYPE r [ %q; ]><r/>");
  EXPECT_EQ(thrown.first, 157);
  EXPECT_EQ(thrown.second, "Reference to undefined entity: %q;");
  Doc doc("<!DOCTYPE r [ %q; <!ENTITY a 'A'>]><r>&a;</r>");
  EXPECT_EQ(doc.text(), "A");
  EXPECT_EQ(doc.reported.codes, std::vector<int>{514});
  EXPECT_EQ(doc.reported.texts[0], "Reference to undefined entity: %q;");
}

TEST(XmlProlog, UndefinedParameterEntityIgnoredUnderFeature) {
  Doc doc("<!DOCTYPE r [ %q; <!ENTITY a 'A'>]><r>&a;</r>", false, "",
          {ZQXmlParser::FEATURE_IGNORE_UNDEFINED_ENTITIES});
  EXPECT_EQ(doc.text(), "A");
}

TEST(XmlProlog, Code159MissingEntityName) {
  auto thrown = thrownBy("<!DOCTYPE r [<!ENTITY 'x'>]><r/>");
  EXPECT_EQ(thrown.first, 159);
  EXPECT_EQ(thrown.second, "Entity name is expected after '!ENTITY '.");
}

TEST(XmlProlog, Code160NotationKeyword) {
  auto thrown = thrownBy("<!DOCTYPE r [<!ENTITY a SYSTEM 's' NOTDATA n>]><r/>");
  EXPECT_EQ(thrown.first, 160);
  EXPECT_EQ(thrown.second, "NDATA is expected after '<!ENTITY a ... \"s\"'.");
}

TEST(XmlProlog, Code140AtEndOfEntityDeclaration) {
  auto thrown = thrownBy("<!DOCTYPE r [<!ENTITY a 'x' y>]><r/>");
  EXPECT_EQ(thrown.first, 140);
  EXPECT_EQ(thrown.second, "Unexpected character: y");
}

TEST(XmlProlog, UndefinedGeneralEntityIsCode515ThrownAs158) {
  auto thrown = thrownBy("<r>&u;</r>");
  EXPECT_EQ(thrown.first, 158);
  EXPECT_EQ(thrown.second, "Reference to undefined entity: &u;");
  auto inAttribute = thrownBy("<r a='&u;'/>");
  EXPECT_EQ(inAttribute.first, 158);
  Doc doc("<r>a&u;b</r>");
  EXPECT_EQ(doc.text(), "ab");
  EXPECT_EQ(doc.reported.codes, std::vector<int>{515});
}

TEST(XmlProlog, UndefinedGeneralEntityEmptyUnderFeature) {
  Doc doc("<r a='x&u;y'>a&u;b</r>", true, "", {ZQXmlParser::FEATURE_IGNORE_UNDEFINED_ENTITIES});
  EXPECT_EQ(doc.parser->next(), ZQXmlParser::START_TAG);
  EXPECT_EQ(utf8(doc.parser->getAttributeValue(0)), "xy");
  EXPECT_EQ(doc.text(), "ab");
  EXPECT_TRUE(doc.reported.codes.empty());
}

TEST(XmlProlog, Code516ForbiddenExternalEntityIsDropped) {
  Doc doc("<!DOCTYPE r [<!ENTITY e SYSTEM 'e.xml'>]><r>a&e;b</r>", false, "",
          {ZQXmlParser::FEATURE_FORBID_EXTERNAL_ENTITIES,
           ZQXmlParser::FEATURE_NO_POSITION_DESCRIPTION});
  EXPECT_EQ(doc.text(), "ab");
  ZQError error;
  ASSERT_TRUE(doc.parser->popError(error));
  EXPECT_EQ(error.getErrorCode(), 516);
  EXPECT_EQ(utf8(error.getRawMessage()),
            "External entity is not allowed: '<!ENTITY e ... \"e.xml\"'.");
  EXPECT_FALSE(doc.parser->popError(error));
}

TEST(XmlProlog, ExternalGeneralEntityIsReadFromItsFile) {
  DtdDir dir;
  dir.write("part.xml", "<b>in part</b>");
  Doc doc("<!DOCTYPE r [<!ENTITY e SYSTEM 'part.xml'>]><r>&e;</r>", true, dir.base());
  EXPECT_EQ(doc.events(), (std::vector<std::string>{"START_TAG r", "START_TAG b", "TEXT in part",
                                                    "END_TAG b", "END_TAG r", "END_DOCUMENT"}));
  EXPECT_TRUE(doc.reported.codes.empty());
}

// ---------------------------------------------------------------------------------------
// Parameter entities

TEST(XmlProlog, InternalParameterEntityExpandsToDeclarations) {
  Doc doc("<!DOCTYPE r [<!ENTITY % decl '<!ENTITY g \"G\">'> %decl; ]><r>&g;</r>");
  EXPECT_EQ(doc.text(), "G");
  EXPECT_TRUE(doc.reported.codes.empty());
}

TEST(XmlProlog, ExternalParameterEntityReadFromFile) {
  DtdDir dir;
  dir.write("decls.ent", "<?xml version='1.0' encoding='UTF-8'?><!ENTITY g 'from file'>");
  Doc doc("<!DOCTYPE r [<!ENTITY % ext SYSTEM 'decls.ent'> %ext; <!ENTITY h 'H'>]><r>&g;&h;</r>",
          true, dir.base());
  EXPECT_EQ(doc.text(), "from fileH");
  EXPECT_TRUE(doc.reported.codes.empty());
}

TEST(XmlProlog, MissingExternalParameterEntity) {
  DtdDir dir;
  std::string text = "<!DOCTYPE r [<!ENTITY % ext SYSTEM 'none.ent'> %ext; ]><r>x</r>";
  auto thrown = thrownBy(text, {}, dir.base());
  EXPECT_EQ(thrown.first, 67);
  // Swallowed when undefined entities are ignored.
  Doc doc(text, false, dir.base(), {ZQXmlParser::FEATURE_IGNORE_UNDEFINED_ENTITIES});
  EXPECT_EQ(doc.text(), "x");
}

// ---------------------------------------------------------------------------------------
// External DTD and its cache

TEST(XmlProlog, ExternalDtdReadAndCached) {
  DtdDir dir;
  std::string path = dir.write(
      "cached.dtd", "<!ENTITY a 'from dtd'>\n<!ENTITY % p 'P'>\n<!ENTITY x SYSTEM 'x.xml'>\n");
  RecordingResolver resolver;
  size_t before = ZQDtdCache::size();
  std::string text = "<!DOCTYPE r SYSTEM 'cached.dtd'><r>&a;</r>";
  {
    Doc doc(text, true, dir.base());
    EXPECT_EQ(doc.text(), "from dtd");
    EXPECT_TRUE(doc.reported.codes.empty());
    EXPECT_EQ(utf8(doc.parser->lookupEntity(ZQName(u("p")), true)), "P");
    EXPECT_EQ(utf8(doc.parser->lookupEntity(ZQName(u("x")), false)), "x.xml");
  }
  EXPECT_EQ(ZQDtdCache::size(), before + 1);
  EXPECT_TRUE(resolver.saw("cached.dtd"));
  size_t asked = resolver.seen().size();

  // Gone from disk: the second parse takes it from the cache and opens nothing.
  std::filesystem::remove(path);
  Doc again(text, true, dir.base());
  EXPECT_EQ(again.text(), "from dtd");
  EXPECT_TRUE(again.reported.codes.empty());
  EXPECT_EQ(resolver.seen().size(), asked);
  EXPECT_EQ(ZQDtdCache::size(), before + 1);

  // Changed on disk: still the entities read first.
  dir.write("cached.dtd", "<!ENTITY a 'changed'>");
  Doc third(text, true, dir.base());
  EXPECT_EQ(third.text(), "from dtd");
}

TEST(XmlProlog, ExternalDtdThroughFileUri) {
  DtdDir dir;
  dir.write("uri.dtd", "<!ENTITY a 'by uri'>");
  Doc doc("<!DOCTYPE r SYSTEM 'uri.dtd'><r>&a;</r>", true, "file://" + dir.base());
  EXPECT_EQ(doc.text(), "by uri");
  EXPECT_TRUE(doc.reported.codes.empty());
}

TEST(XmlProlog, InternalSubsetBeatsExternalDtd) {
  DtdDir dir;
  dir.write("both.dtd", "<!ENTITY a 'external'><!ENTITY b 'B'>");
  std::string tail = "]><r>&a;&b;</r>";
  Doc doc("<!DOCTYPE r SYSTEM 'both.dtd' [<!ENTITY a 'internal'>" + tail, true, dir.base());
  EXPECT_EQ(doc.text(), "internalB");
  // Cached now, and still beaten by the document's own declaration.
  Doc again("<!DOCTYPE r SYSTEM 'both.dtd' [<!ENTITY a 'second'>" + tail, true, dir.base());
  EXPECT_EQ(again.text(), "secondB");
  Doc plain("<!DOCTYPE r SYSTEM 'both.dtd'><r>&a;</r>", true, dir.base());
  EXPECT_EQ(plain.text(), "external");
}

TEST(XmlProlog, ExternalDtdIgnoreAndIncludeSections) {
  DtdDir dir;
  dir.write("sections.dtd",
            "<![IGNORE[ <!ENTITY a 'ignored'> <!ENTITY gone 'no'> ]]>\n"
            "<!ENTITY a 'kept'>\n"
            "<![INCLUDE[ <!ENTITY b 'included'> ]]>\n"
            "<!-- <!ENTITY c 'comment'> -->\n"
            "<?pi <!ENTITY d 'pi'> ?>\n"
            "<!ELEMENT r ANY>\n");
  Doc doc("<!DOCTYPE r SYSTEM 'sections.dtd'><r>&a;&b;</r>", true, dir.base());
  EXPECT_EQ(doc.text(), "keptincluded");
  EXPECT_TRUE(doc.reported.codes.empty());
  EXPECT_FALSE(doc.parser->general("gone"));
  EXPECT_FALSE(doc.parser->general("c"));
  EXPECT_FALSE(doc.parser->general("d"));
}

TEST(XmlProlog, IgnoreSectionCountsBracketsNotSections) {
  DtdDir dir;
  // The inner "]]" ends the ignored part: what follows it is read again.
  dir.write("nested.dtd",
            "<![IGNORE[ <![IGNORE[ <!ENTITY a 'in'> ]]> <!ENTITY c 'after'> ]]>\n"
            "<![IGNORE[ ] <!ENTITY d 'bracket'> ]>\n");
  Doc doc("<!DOCTYPE r SYSTEM 'nested.dtd'><r>&c;</r>", true, dir.base());
  EXPECT_EQ(doc.text(), "after");
  EXPECT_FALSE(doc.parser->general("a"));
  EXPECT_FALSE(doc.parser->general("d"));
}

TEST(XmlProlog, ExternalDtdParameterEntities) {
  DtdDir dir;
  dir.write("more.ent", "<!ENTITY m 'more'>");
  dir.write("params.dtd",
            "<!ENTITY % inner '<!ENTITY i \"inner\">'>\n"
            "%inner;\n"
            "<!ENTITY % more SYSTEM 'more.ent'>\n"
            "%more;\n"
            "%undefined;\n"
            "<!ATTLIST r x CDATA %alsoundefined;>\n"
            "<!ENTITY last 'last'>\n");
  Doc doc("<!DOCTYPE r SYSTEM 'params.dtd'><r>&i;&m;&last;</r>", true, dir.base());
  EXPECT_EQ(doc.text(), "innermorelast");
  EXPECT_TRUE(doc.reported.codes.empty());
}

TEST(XmlProlog, ExternalDtdStopsAtContent) {
  DtdDir dir;
  dir.write("stray.dtd", "<!ENTITY a 'A'> <stray/> <!ENTITY b 'B'>");
  Doc doc("<!DOCTYPE r SYSTEM 'stray.dtd'><r>&a;</r>", true, dir.base());
  EXPECT_EQ(doc.text(), "A");
  EXPECT_FALSE(doc.parser->general("b"));
}

TEST(XmlProlog, MissingDtdIsAnErrorUnlessIgnored) {
  DtdDir dir;
  std::string text = "<!DOCTYPE r SYSTEM 'missing.dtd'><r>x</r>";
  auto thrown = thrownBy(text, {}, dir.base());
  EXPECT_EQ(thrown.first, 67);

  // Even with a callback the failure is thrown, and the callback is back afterwards.
  Doc withCallback(text, true, dir.base());
  EXPECT_THROW(withCallback.text(), ZQError);
  EXPECT_EQ(withCallback.parser->callback(), &collect);
  EXPECT_TRUE(withCallback.reported.codes.empty());

  Doc ignored(text, true, dir.base(), {ZQXmlParser::FEATURE_IGNORE_DTD_ERRORS});
  EXPECT_EQ(ignored.text(), "x");
  EXPECT_TRUE(ignored.parser->hasDoctype());
  EXPECT_EQ(utf8(ignored.parser->getExternalDTD()), "missing.dtd");
  EXPECT_EQ(ignored.parser->callback(), &collect);
}

TEST(XmlProlog, DtdSyntaxErrorIsThrownAndNotCached) {
  DtdDir dir;
  std::string path = dir.write("bad.dtd", "<!ENTITY a 'A'>\n<!ENTITY 'no name'>\n");
  size_t before = ZQDtdCache::size();
  std::string text = "<!DOCTYPE r SYSTEM 'bad.dtd'><r>&a;</r>";
  auto thrown = thrownBy(text, {}, dir.base());
  EXPECT_EQ(thrown.first, 159);

  Doc ignored(text, true, dir.base(), {ZQXmlParser::FEATURE_IGNORE_DTD_ERRORS});
  EXPECT_EQ(ignored.text(), "");
  // The reading failed, so nothing of it came in and the callback hears of &a; now.
  EXPECT_EQ(ignored.reported.codes, std::vector<int>{515});
  EXPECT_EQ(ZQDtdCache::size(), before);

  // Not cached: a repaired file is read afresh.
  streamtest::writeFile(path, "<!ENTITY a 'repaired'>");
  Doc repaired(text, true, dir.base());
  EXPECT_EQ(repaired.text(), "repaired");
}

TEST(XmlProlog, SkipExternalDtdReadsNothing) {
  DtdDir dir;
  std::string text = "<!DOCTYPE r SYSTEM 'absent.dtd' [<!ENTITY a 'A'>]><r>&a;</r>";
  Doc doc(text, false, dir.base(), {ZQXmlParser::FEATURE_SKIP_EXTERNAL_DTD});
  EXPECT_EQ(doc.text(), "A");
  EXPECT_EQ(utf8(doc.parser->getExternalDTD()), "absent.dtd");
}

TEST(XmlProlog, ExternalSubsetParsedDirectly) {
  DtdDir dir;
  std::string path =
      dir.write("direct.dtd", "<?xml version='1.0' encoding='UTF-8'?>\n<!ENTITY a 'A'>");
  ZQPtr<PrologParser> parser(new PrologParser());
  parser->setInput(UnicodeString::fromUTF8(path), UnicodeString(), UnicodeString());
  parser->parseExternalSubset();
  EXPECT_EQ(parser->getEventType(), ZQXmlParser::END_DOCUMENT);
  EXPECT_EQ(utf8(parser->lookupEntity(ZQName(u("a")), false)), "A");
  EXPECT_TRUE(parser->hasXmlDecl());
}

TEST(XmlProlog, TwoThreadsReadExternalDtdsAtOnce) {
  DtdDir dir;
  dir.write("shared.dtd", "<!ENTITY s 'shared'>");
  const int rounds = 20;
  for (int t = 0; t < 2; ++t)
    for (int i = 0; i < rounds; ++i)
      dir.write("t" + std::to_string(t) + "_" + std::to_string(i) + ".dtd",
                "<!ENTITY own '" + std::to_string(t * 100 + i) + "'>");
  std::atomic<int> good{0};
  auto work = [&](int t) {
    for (int i = 0; i < rounds; ++i) {
      std::string own = "t" + std::to_string(t) + "_" + std::to_string(i) + ".dtd";
      try {
        Doc shared("<!DOCTYPE r SYSTEM 'shared.dtd'><r>&s;</r>", false, dir.base());
        Doc mine("<!DOCTYPE r SYSTEM '" + own + "'><r>&own;</r>", false, dir.base());
        if (shared.text() == "shared" && mine.text() == std::to_string(t * 100 + i)) ++good;
      } catch (const ZQError&) {
      }
    }
  };
  std::thread a(work, 0), b(work, 1);
  a.join();
  b.join();
  EXPECT_EQ(good.load(), 2 * rounds);
}

// ---------------------------------------------------------------------------------------
// MathML entity scope

TEST(XmlProlog, MathRootWithoutDoctypeGetsMathMLSet) {
  Doc doc(std::string("<math xmlns='") + kMathML + "'><mi>&alpha;</mi></math>");
  EXPECT_EQ(doc.text(), "\xCE\xB1");
  EXPECT_TRUE(doc.reported.codes.empty());
  EXPECT_TRUE(doc.parser->maps().mathmlEntitiesAdded);
}

TEST(XmlProlog, MathRootWithDoctypeOrSkipGetsNoSet) {
  Doc withDoctype(std::string("<!DOCTYPE math><math xmlns='") + kMathML + "'>&alpha;</math>");
  EXPECT_EQ(withDoctype.text(), "");
  EXPECT_EQ(withDoctype.reported.codes, std::vector<int>{515});

  Doc skipped(std::string("<math xmlns='") + kMathML + "'>&alpha;</math>", true, "",
              {ZQXmlParser::FEATURE_SKIP_EXTERNAL_DTD});
  EXPECT_EQ(skipped.text(), "");
  EXPECT_EQ(skipped.reported.codes, std::vector<int>{515});

  Doc otherNamespace("<math>&alpha;</math>");
  EXPECT_EQ(otherNamespace.text(), "");
  EXPECT_EQ(otherNamespace.reported.codes, std::vector<int>{515});
}

TEST(XmlProlog, NestedMathScopesTheSet) {
  Doc doc(std::string("<r><m:math xmlns:m='") + kMathML + "'>&alpha;</m:math>[&alpha;]</r>");
  EXPECT_EQ(doc.text(), "\xCE\xB1[]");
  EXPECT_EQ(doc.reported.codes, std::vector<int>{515});
  EXPECT_FALSE(doc.parser->maps().mathmlEntitiesAdded);
  EXPECT_FALSE(doc.parser->hasSavedMaps());
}

TEST(XmlProlog, DeclarationsSurviveTheMathScope) {
  Doc doc(std::string("<!DOCTYPE r [<!ENTITY a 'A'>]><r><math xmlns='") + kMathML +
          "'>&a;&alpha;</math>&a;</r>");
  EXPECT_EQ(doc.text(),
            "A\xCE\xB1"
            "A");
  EXPECT_TRUE(doc.reported.codes.empty());
}

TEST(XmlProlog, InnerMathEndRestoresForTheOuterOne) {
  Doc doc(std::string("<r><math xmlns='") + kMathML +
          "'><mrow><math>&alpha;</math></mrow>[&alpha;]</math></r>");
  EXPECT_EQ(doc.text(), "\xCE\xB1[]");
  EXPECT_EQ(doc.reported.codes, std::vector<int>{515});
}

TEST(XmlProlog, MathInsideMathRootSavesNothing) {
  Doc doc(std::string("<math xmlns='") + kMathML + "'><math>&alpha;</math>&beta;</math>");
  EXPECT_EQ(doc.text(), "\xCE\xB1\xCE\xB2");
  EXPECT_TRUE(doc.reported.codes.empty());
  EXPECT_FALSE(doc.parser->hasSavedMaps());
}

TEST(XmlProlog, SkipExternalDtdKeepsNestedMathWithoutSet) {
  Doc doc(std::string("<r><math xmlns='") + kMathML + "'>&alpha;</math></r>", true, "",
          {ZQXmlParser::FEATURE_SKIP_EXTERNAL_DTD});
  EXPECT_EQ(doc.text(), "");
  EXPECT_EQ(doc.reported.codes, std::vector<int>{515});
}

TEST(XmlProlog, MathMLDtdSetStaysAfterNestedMath) {
  Doc doc(std::string("<!DOCTYPE r SYSTEM 'http://www.w3.org/Math/DTD/mathml2/mathml2.dtd'>"
                      "<r>&alpha;<math xmlns='") +
          kMathML + "'>&beta;</math>&gamma;</r>");
  EXPECT_EQ(doc.text(), "\xCE\xB1\xCE\xB2\xCE\xB3");
  EXPECT_TRUE(doc.reported.codes.empty());
}

// ---------------------------------------------------------------------------------------
// A callback that returns never makes a routine loop

TEST(XmlProlog, ReturningCallbackEndsTruncatedPrologs) {
  const char* const texts[] = {"<?xml version='1.0'",
                               "<?xml version=",
                               "<?xml",
                               "<!DOCTYPE",
                               "<!DOCTYPE r",
                               "<!DOCTYPE r PUBLIC",
                               "<!DOCTYPE r PUBLIC 'p",
                               "<!DOCTYPE r SYSTEM 's' [",
                               "<!DOCTYPE r [<!-- ",
                               "<!DOCTYPE r [<?pi ",
                               "<!DOCTYPE r [ 'quoted",
                               "<!DOCTYPE r [<!ENTITY",
                               "<!DOCTYPE r [<!ENTITY % ",
                               "<!DOCTYPE r [<!ENTITY a 'x",
                               "<!DOCTYPE r [<!ENTITY a SYSTEM",
                               "<!DOCTYPE r [<!ENTITY a SYSTEM 's' NDATA",
                               "<!DOCTYPE r [<!ENTITY a 'x'",
                               "<!DOCTYPE r [ %",
                               "<!DOCTYPE r [ %p",
                               "<!DOCTYPE r [<!ENTITY % p '<!ENTITY'> %p; ]><r/>"};
  for (const char* text : texts) {
    Doc doc(text);
    std::vector<std::string> events = doc.events(200);
    EXPECT_EQ(events.back(), "END_DOCUMENT") << text;
    EXPECT_FALSE(doc.reported.codes.empty()) << text;
  }
}

TEST(XmlProlog, ReturningCallbackAfterEveryDoctypeError) {
  const char* const texts[] = {"<!DOCTYPE r FOO x><r/>",
                               "<!DOCTYPE r [<!ENTITY a FOO 'x'>]><r/>",
                               "<!DOCTYPE 1><r/>",
                               "<!DOCTYPE r [<!ENTITY 'x'>]><r/>",
                               "<!DOCTYPE r [ % ; %q; ]><r/>",
                               "<r/><!DOCTYPE r>",
                               "<!DOCTYPE r PUBLIC x><r/>"};
  for (const char* text : texts) {
    Doc doc(text);
    std::vector<std::string> events = doc.events(200);
    EXPECT_EQ(events.back(), "END_DOCUMENT") << text;
    EXPECT_FALSE(doc.reported.codes.empty()) << text;
  }
}

// ---------------------------------------------------------------------------------------
// Parameter entities that expand without end

TEST(XmlProlog, SelfReferringParameterEntityStopsAtTheGuard) {
  auto thrown = thrownBy("<!DOCTYPE r [<!ENTITY % a 'x%a;'> %a; ]><r/>");
  EXPECT_EQ(thrown.first, 190);
  Doc doc("<!DOCTYPE r [<!ENTITY % a '%a;'> %a; ]><r/>");
  EXPECT_EQ(doc.events(1000).back(), "END_DOCUMENT");
  EXPECT_EQ(doc.reported.codes, std::vector<int>{190});
}

TEST(XmlProlog, MultiplyingParameterEntitiesDroppedAfterTheFirstRefusal) {
  // Each level doubles the references; refusing them one by one would never end.
  Doc doc(
      "<!DOCTYPE r [<!ENTITY % a '%b;%b;'><!ENTITY % b '%a;'> %a; <!ENTITY c 'C'>]>"
      "<r>&c;</r>");
  EXPECT_EQ(doc.text(1000), "C");
  EXPECT_EQ(doc.reported.codes, std::vector<int>{190});
}

TEST(XmlProlog, DtdIncludingItselfIsAnError) {
  DtdDir dir;
  dir.write("self.dtd", "<!ENTITY % me SYSTEM 'self.dtd'>\n%me;\n<!ENTITY a 'A'>\n");
  std::string text = "<!DOCTYPE r SYSTEM 'self.dtd'><r>x</r>";
  EXPECT_EQ(thrownBy(text, {}, dir.base()).first, 190);
  Doc ignored(text, true, dir.base(), {ZQXmlParser::FEATURE_IGNORE_DTD_ERRORS});
  EXPECT_EQ(ignored.text(), "x");
  EXPECT_TRUE(ignored.reported.codes.empty());
}

TEST(XmlProlog, PushedDocumentMayBringItsOwnDoctype) {
  DtdDir dir;
  dir.write("inc.xml", "<!DOCTYPE x [<!ENTITY y 'Y'>]><x>&y;</x>");
  Doc doc("<!DOCTYPE r [<!ENTITY e SYSTEM 'inc.xml'>]><r>&e;</r>", true, dir.base());
  EXPECT_EQ(doc.events(), (std::vector<std::string>{"START_TAG r", "START_TAG x", "TEXT Y",
                                                    "END_TAG x", "END_TAG r", "END_DOCUMENT"}));
  EXPECT_TRUE(doc.reported.codes.empty());

  // Without a DOCTYPE of the document's own, the pushed one comes after the root.
  Doc plain("<r></r>", true, dir.base());
  EXPECT_EQ(plain.parser->next(), ZQXmlParser::START_TAG);
  plain.parser->pushStream(u("inc.xml"), ZQN_xml, UnicodeString());
  plain.events();
  EXPECT_EQ(plain.reported.codes, std::vector<int>{148});
}
