// ZQUri: building blocks of URI text, preparation of the caller's string, normalisation.
#include <gtest/gtest.h>

#include "UriTestSupport.h"
#include "common/ZQUri.h"
#include "common/ZQXmlCatalogs.h"
#include "io/ZQUriText.h"

using namespace ZQCommonNS;
using uritest::S;
using uritest::str;
using uritest::UriProbe;

// ---- Scheme ----

TEST(UriScheme, TwoLettersMakeASchemeOneDoesNot) {
  EXPECT_TRUE(ZQUri(u"ab:c", ZQUri::URISTR_URI).isAbsolute());
  EXPECT_EQ(ZQUri(u"ab:c", ZQUri::URISTR_URI).getScheme().toString(), UnicodeString(u"ab"));
  // "a:" is no scheme but a drive letter, so the string is read as a path.
  EXPECT_EQ(str(ZQUri(u"a:c", ZQUri::URISTR_URI)), u"file:///a:c");
  EXPECT_EQ(uritext::findSchemeEnd(u"ab:c"), 2);
  EXPECT_EQ(uritext::findSchemeEnd(u"a:c"), -1);
}

TEST(UriScheme, DriveLetterIsNeverAScheme) {
  EXPECT_EQ(uritext::findSchemeEnd(u"C:/dir"), -1);
  EXPECT_FALSE(ZQUri(u"C:/dir/a.xml", ZQUri::URISTR_URI).toString().startsWith(u"C:"));
}

TEST(UriScheme, CharactersOfTheRun) {
  EXPECT_EQ(uritext::findSchemeEnd(u"a+b-c.d9:x"), 8);
  EXPECT_EQ(uritext::findSchemeEnd(u"x-y:"), 3);
  EXPECT_EQ(uritext::findSchemeEnd(u"1a:x"), -1);   // must start with a letter
  EXPECT_EQ(uritext::findSchemeEnd(u"a_b:x"), -1);  // '_' ends the run without a colon
  EXPECT_EQ(uritext::findSchemeEnd(u":x"), -1);
  EXPECT_EQ(uritext::findSchemeEnd(u"abc"), -1);  // no colon
  EXPECT_EQ(uritext::findSchemeEnd(u""), -1);
  EXPECT_EQ(uritext::findSchemeEnd(u"\u00E9a:x"), -1);
}

// ---- Safe characters, validity, escaping ----

TEST(UriSafeChar, ListedPunctuationIsSafe) {
  for (char16_t c : std::u16string_view(u"!#$&'()*+,-./:;=?@[]_~")) {
    EXPECT_TRUE(uritext::isUriSafeChar(c)) << static_cast<int>(c);
  }
  for (char16_t c = u'0'; c <= u'9'; ++c) EXPECT_TRUE(uritext::isUriSafeChar(c));
  for (char16_t c = u'a'; c <= u'z'; ++c) EXPECT_TRUE(uritext::isUriSafeChar(c));
  for (char16_t c = u'A'; c <= u'Z'; ++c) EXPECT_TRUE(uritext::isUriSafeChar(c));
}

TEST(UriSafeChar, ListedOthersAreUnsafe) {
  for (char16_t c : std::u16string_view(u" \"%<>\\^`{|}")) {
    EXPECT_FALSE(uritext::isUriSafeChar(c)) << static_cast<int>(c);
  }
  for (char16_t c = 0; c < 0x20; ++c) EXPECT_FALSE(uritext::isUriSafeChar(c));
  for (char16_t c = 0x7F; c <= 0x9F; ++c) EXPECT_FALSE(uritext::isUriSafeChar(c));
}

TEST(UriSafeChar, EverythingFromA0UpIsSafe) {
  EXPECT_TRUE(uritext::isUriSafeChar(0xA0));
  EXPECT_TRUE(uritext::isUriSafeChar(0xE9));
  EXPECT_TRUE(uritext::isUriSafeChar(0xD800));  // surrogates pass as they are
  EXPECT_TRUE(uritext::isUriSafeChar(0xFFFF));
  // The stored form is an IRI: non-ASCII text is not escaped.
  EXPECT_EQ(str(ZQUri(u"caf\u00E9 x.xml", ZQUri::URISTR_URI)), u"caf\u00E9%20x.xml");
}

TEST(UriValid, SchemeMakesAnyStringValid) {
  EXPECT_TRUE(uritext::isValidUriString(u"http://a b/<c>"));
  EXPECT_EQ(str(ZQUri(u"http://a b/<c>", ZQUri::URISTR_URI)), u"http://a b/<c>");
}

TEST(UriValid, PercentNeedsTwoHexDigits) {
  EXPECT_TRUE(uritext::isValidUriString(u"a%20b%fF"));
  EXPECT_FALSE(uritext::isValidUriString(u"a%2"));
  EXPECT_FALSE(uritext::isValidUriString(u"a%zz"));
  EXPECT_FALSE(uritext::isValidUriString(u"%"));
  EXPECT_FALSE(uritext::isValidUriString(u"a b"));
  EXPECT_TRUE(uritext::isValidUriString(u"a#b?c=d"));
}

TEST(UriEscape, UnsafeCharactersBecomeUpperHexOfTheirLowByte) {
  UnicodeString out;
  uritext::appendEscaped(out, u"a b\"<>\\^`{|}\x01\x7F\u0080\u009F%");
  EXPECT_EQ(out, UnicodeString(u"a%20b%22%3C%3E%5C%5E%60%7B%7C%7D%01%7F%80%9F%25"));
}

TEST(UriEscape, NotIdempotentSoOnlyInvalidStringsAreEscaped) {
  // "%20" is valid and stands; "a b%20" is not and its '%' is escaped too.
  EXPECT_EQ(str(ZQUri(u"a%20b", ZQUri::URISTR_URI)), u"a%20b");
  EXPECT_EQ(str(ZQUri(u"a b%20", ZQUri::URISTR_URI)), u"a%20b%2520");
}

TEST(UriEscape, NoUtf8Escaping) {
  EXPECT_EQ(str(ZQUri(u"\u00E9 \u4E2D", ZQUri::URISTR_URI)), u"\u00E9%20\u4E2D");
}

// ---- unescape ----

TEST(UriUnescape, StringWithoutPercentIsUnchanged) {
  UnicodeString s(u"a+b c\u00E9");
  EXPECT_EQ(ZQUri::unescape(s), s);
}

TEST(UriUnescape, EscapesAreReadAsUtf8) {
  EXPECT_EQ(ZQUri::unescape(u"caf%C3%A9"), UnicodeString(u"caf\u00E9"));
  EXPECT_EQ(ZQUri::unescape(u"%41%2f%2F"), UnicodeString(u"A//"));
  EXPECT_EQ(ZQUri::unescape(u"%E4%B8%AD"), UnicodeString(u"\u4E2D"));
}

TEST(UriUnescape, IncompleteOrBadEscapesStay) {
  EXPECT_EQ(ZQUri::unescape(u"100%"), UnicodeString(u"100%"));
  EXPECT_EQ(ZQUri::unescape(u"a%4"), UnicodeString(u"a%4"));
  EXPECT_EQ(ZQUri::unescape(u"%zz%4"), UnicodeString(u"%zz%4"));
  EXPECT_EQ(ZQUri::unescape(u"%%41"), UnicodeString(u"%A"));
}

TEST(UriUnescape, LoneByteIsNotTakenFromTheLocalCodePage) {
  // %E9 alone is no UTF-8: it reads as the replacement character, not as e-acute.
  EXPECT_EQ(ZQUri::unescape(u"%E9"), UnicodeString(u"\uFFFD"));
}

TEST(UriUnescape, NonAsciiTextSurvives) {
  EXPECT_EQ(ZQUri::unescape(u"\u4E2D%20\U0001F600"), UnicodeString(u"\u4E2D \U0001F600"));
}

// ---- Trimming ----

TEST(UriTrim, BlankTestMatchesTheStringTrim) {
  for (UChar32 c = 0; c < 0x10000; ++c) {
    if (U16_IS_SURROGATE(c)) continue;
    UnicodeString s(c);
    bool trimmedEmpty = UnicodeString(s).trim().isEmpty();
    ASSERT_EQ(uritext::isBlank(uritext::view(s)), trimmedEmpty) << c;
  }
}

// ---- prepareUriString ----

TEST(UriPrepare, EmptyStringComesBackAsItIs) {
  UnicodeString s;
  EXPECT_EQ(UriProbe::prepare(s, ZQUri::URISTR_CSS_URI), 0);
  EXPECT_TRUE(s.isEmpty());
  EXPECT_TRUE(ZQUri(u"", ZQUri::URISTR_AUTO).isEmpty());
}

TEST(UriPrepare, PathTypesAreKind3) {
  UnicodeString s(u"a/b.xml");
  EXPECT_EQ(UriProbe::prepare(s, ZQUri::URISTR_PATH), 3);
  s = u"a/b.xml";
  EXPECT_EQ(UriProbe::prepare(s, ZQUri::URISTR_CSS_PATH), 3);
}

TEST(UriPrepare, ReferenceIsKind0UnlessDriveOrBackslash) {
  UnicodeString s(u"a/b.xml");
  EXPECT_EQ(UriProbe::prepare(s, ZQUri::URISTR_URI), 0);
  s = u"C:x";
  EXPECT_EQ(UriProbe::prepare(s, ZQUri::URISTR_URI), 2);
  s = u"a\\b";
  EXPECT_EQ(UriProbe::prepare(s, ZQUri::URISTR_URI), 2);
  s = u"http://x/a\\b";  // a backslash anywhere, even behind a scheme
  EXPECT_EQ(UriProbe::prepare(s, ZQUri::URISTR_URI), 2);
  s = u"xC:";
  EXPECT_EQ(UriProbe::prepare(s, ZQUri::URISTR_CSS_URI), 0);  // drive only at position 0
}

TEST(UriPrepare, AutoAsksTheFileSystem) {
  uritest::TempDir dir;
  std::string file = dir.touch("exists.xml");
  UnicodeString s = UnicodeString::fromUTF8(file);
  EXPECT_EQ(UriProbe::prepare(s, ZQUri::URISTR_AUTO) & 3, 3);
  UnicodeString missing = UnicodeString::fromUTF8(dir.path + "/missing.xml");
  EXPECT_EQ(UriProbe::prepare(missing, ZQUri::URISTR_AUTO), 0);
  UnicodeString drive(u"C:\\no\\such.xml");
  EXPECT_EQ(UriProbe::prepare(drive, ZQUri::URISTR_AUTO), 2);
}

TEST(UriPrepare, CssUrlIsUnwrappedTrimmedAndBecomesAReference) {
  UnicodeString s(u"url(  a b.png )");
  EXPECT_EQ(UriProbe::prepare(s, ZQUri::URISTR_CSS_PATH), 0);
  EXPECT_EQ(s, UnicodeString(u"a b.png"));
  // Kind 0 even where the text has a backslash.
  s = u"url(a\\b.png)";
  EXPECT_EQ(UriProbe::prepare(s, ZQUri::URISTR_CSS_URI), 0);
  EXPECT_EQ(s, UnicodeString(u"a\\b.png"));
}

TEST(UriPrepare, CssUrlQuotesAreRemovedAfterUnwrapping) {
  UnicodeString s(u"url( \"a b.png\" )");
  EXPECT_EQ(UriProbe::prepare(s, ZQUri::URISTR_CSS_URI), 0);
  EXPECT_EQ(s, UnicodeString(u"a b.png"));
  s = u"url('x.png')";
  UriProbe::prepare(s, ZQUri::URISTR_CSS_URI);
  EXPECT_EQ(s, UnicodeString(u"x.png"));
}

TEST(UriPrepare, CssQuotesOnlyWhenBothEndsMatch) {
  UnicodeString s(u"\"a.png'");
  UriProbe::prepare(s, ZQUri::URISTR_CSS_URI);
  EXPECT_EQ(s, UnicodeString(u"\"a.png'"));
  s = u"'a.png'";
  UriProbe::prepare(s, ZQUri::URISTR_CSS_PATH);
  EXPECT_EQ(s, UnicodeString(u"a.png"));
  s = u"'a.png'";  // not a CSS type: the quotes stay (and are escaped)
  EXPECT_EQ(str(ZQUri(s, ZQUri::URISTR_URI)), u"'a.png'");
}

TEST(UriPrepare, CssGradientsStayWholeAsLiterals) {
  for (const char16_t* fn :
       {u"linear-gradient(#fff,#000)", u"radial-gradient(#fff,#000)",
        u"repeating-linear-gradient(#fff,#000)", u"repeating-radial-gradient(#fff,#000)"}) {
    UnicodeString s(fn);
    EXPECT_EQ(UriProbe::prepare(s, ZQUri::URISTR_CSS_URI), 1);
    EXPECT_EQ(s, UnicodeString(fn));
  }
}

TEST(UriPrepare, CssFunctionNamesAreCaseSensitiveAndNeedAName) {
  UnicodeString s(u"URL(a b)");
  EXPECT_EQ(UriProbe::prepare(s, ZQUri::URISTR_CSS_URI), 0);
  EXPECT_EQ(s, UnicodeString(u"URL(a b)"));
  s = u"(a b)";  // '(' at 0 is not a function
  UriProbe::prepare(s, ZQUri::URISTR_CSS_URI);
  EXPECT_EQ(s, UnicodeString(u"(a b)"));
  s = u"url(a";  // no closing bracket
  UriProbe::prepare(s, ZQUri::URISTR_CSS_URI);
  EXPECT_EQ(s, UnicodeString(u"url(a"));
  s = u"local(a.ttf)";  // another function stays as it is
  EXPECT_EQ(UriProbe::prepare(s, ZQUri::URISTR_CSS_URI), 0);
  EXPECT_EQ(s, UnicodeString(u"local(a.ttf)"));
}

TEST(UriPrepare, CssUnwrappingOnlyForCssTypes) {
  UnicodeString s(u"url(a.png)");
  EXPECT_EQ(UriProbe::prepare(s, ZQUri::URISTR_URI), 0);
  EXPECT_EQ(s, UnicodeString(u"url(a.png)"));
}

TEST(UriPrepare, EmptyUrlGivesEmptyUri) {
  EXPECT_TRUE(ZQUri(u"url()", ZQUri::URISTR_CSS_URI).isEmpty());
  EXPECT_TRUE(ZQUri(u"url(  )", ZQUri::URISTR_CSS_URI).isEmpty());
  EXPECT_TRUE(ZQUri(u"\"\"", ZQUri::URISTR_CSS_URI).isEmpty());
}

// ---- normalizeUriString (no base) ----

TEST(UriNormalize, BlankGivesEmpty) {
  EXPECT_TRUE(ZQUri(u"  \t\n", ZQUri::URISTR_URI).isEmpty());
  EXPECT_TRUE(ZQUri(u"   ", ZQUri::URISTR_PATH).isEmpty());
}

TEST(UriNormalize, UntrimmedStringIsUsed) {
  EXPECT_EQ(str(ZQUri(u" a.xml ", ZQUri::URISTR_URI)), u"%20a.xml%20");
}

TEST(UriNormalize, DrivePathBecomesFileUri) {
  EXPECT_EQ(str(ZQUri(u"C:\\dir\\na me.xml", ZQUri::URISTR_URI)), u"file:///C:/dir/na%20me.xml");
  EXPECT_EQ(str(ZQUri(u"c:/a%b.xml", ZQUri::URISTR_PATH)), u"file:///c:/a%25b.xml");
}

TEST(UriNormalize, UncPathBecomesFileUri) {
  EXPECT_EQ(str(ZQUri(u"\\\\server\\share\\a.xml", ZQUri::URISTR_URI)),
            u"file://server/share/a.xml");
  EXPECT_EQ(str(ZQUri(u"//server/share/a b.xml", ZQUri::URISTR_PATH)),
            u"file://server/share/a%20b.xml");
}

TEST(UriNormalize, RootedPathLosesItsQuery) {
  EXPECT_EQ(str(ZQUri(u"C:\\a.xml?x=1", ZQUri::URISTR_URI)), u"file:///C:/a.xml");
  EXPECT_EQ(str(ZQUri(u"\\\\s\\a.xml?x", ZQUri::URISTR_URI)), u"file://s/a.xml");
}

TEST(UriNormalize, RelativePathStaysNeitherEscapedNorShortened) {
  EXPECT_EQ(str(ZQUri(u"a b\\c.xml?q", ZQUri::URISTR_URI)), u"a b/c.xml?q");
  EXPECT_EQ(str(ZQUri(u"a b/c%.xml", ZQUri::URISTR_PATH)), u"a b/c%.xml");
}

TEST(UriNormalize, PosixAbsolutePathStaysAPath) {
  EXPECT_EQ(str(ZQUri(u"/home/a b.xml", ZQUri::URISTR_PATH)), u"/home/a b.xml");
}

TEST(UriNormalize, PathWithSchemeIsAReference) {
  EXPECT_EQ(str(ZQUri(u"http://x/a b", ZQUri::URISTR_PATH)), u"http://x/a b");
  EXPECT_EQ(str(ZQUri(u"file:///C:/a b", ZQUri::URISTR_PATH)), u"file:///C:/a b");
}

TEST(UriNormalize, ReferenceEscapedOnlyWhenInvalid) {
  EXPECT_EQ(str(ZQUri(u"a%20b#frag", ZQUri::URISTR_URI)), u"a%20b#frag");
  EXPECT_EQ(str(ZQUri(u"a b#frag", ZQUri::URISTR_URI)), u"a%20b#frag");
  EXPECT_EQ(str(ZQUri(u"a%2", ZQUri::URISTR_URI)), u"a%252");
}

TEST(UriNormalize, LiteralKindWithoutBaseKeepsItsSharp) {
  // Without a base a gradient is an ordinary reference: '#' stays.
  EXPECT_EQ(str(ZQUri(u"linear-gradient(#fff, #000)", ZQUri::URISTR_CSS_URI)),
            u"linear-gradient(#fff,%20#000)");
  EXPECT_EQ(UriProbe::normalize(u"#x y", 1), UnicodeString(u"#x%20y"));
}

// ---- Constructors and catalogs ----

namespace {
class MapCatalog : public ZQXmlCatalogs {
 public:
  UnicodeString resolveURI(const UnicodeString& uri) const override {
    ++calls;
    if (uri == UnicodeString(u"urn:doc")) return UnicodeString(u"C:\\docs\\d.xml");
    return uri;
  }
  mutable int calls = 0;
};
}  // namespace

TEST(UriConstruct, DefaultIsEmpty) {
  ZQUri u;
  EXPECT_TRUE(u.isEmpty());
  EXPECT_TRUE(u.toString().isEmpty());
}

TEST(UriConstruct, CatalogIsAskedFirst) {
  MapCatalog catalog;
  // The catalog's answer is then prepared as a reference: a drive path becomes a file URI.
  EXPECT_EQ(str(ZQUri(u"urn:doc", ZQUri::URISTR_URI, &catalog)), u"file:///C:/docs/d.xml");
  EXPECT_EQ(catalog.calls, 1);
  ZQUri base(u"http://x/y/z", ZQUri::URISTR_URI);
  EXPECT_EQ(str(ZQUri(base, u"urn:doc", ZQUri::URISTR_URI, &catalog)), u"file:///C:/docs/d.xml");
  EXPECT_EQ(str(ZQUri(base, u"a.xml", ZQUri::URISTR_URI, &catalog)), u"http://x/y/a.xml");
  EXPECT_EQ(catalog.calls, 3);
}

TEST(UriConstruct, IdentityCatalogChangesNothing) {
  ZQPtr<ZQXmlCatalogs> catalog(new ZQXmlCatalogs());
  EXPECT_EQ(str(ZQUri(u"a b.xml", ZQUri::URISTR_URI, catalog.get())), u"a%20b.xml");
  EXPECT_EQ(catalog->resolveURI(u"urn:x:y"), UnicodeString(u"urn:x:y"));
}

TEST(UriConstruct, ConstructorsWithoutTypeUseAuto) {
  uritest::TempDir dir;
  std::string file = dir.touch("a#b.xml");
  UnicodeString text = UnicodeString::fromUTF8(file);
  // As a reference '#' would start a fragment; as an existing file it is part of the name.
  ZQUri base(UnicodeString::fromUTF8("file://" + dir.path + "/x.xml"), ZQUri::URISTR_URI);
  EXPECT_EQ(str(ZQUri(base, text)), str(ZQUri(base, text, ZQUri::URISTR_AUTO)));
  EXPECT_TRUE(str(ZQUri(base, text)).find(u"%23") != std::u16string::npos);
  EXPECT_EQ(ZQUri(text), ZQUri(text, ZQUri::URISTR_AUTO));
}

TEST(UriConstruct, ValueSemantics) {
  ZQUri a(u"http://x/a", ZQUri::URISTR_URI);
  ZQUri b = a;
  EXPECT_EQ(a, b);
  b.toDirectory();
  EXPECT_NE(a, b);
  EXPECT_EQ(str(a), u"http://x/a");
}

TEST(UriConstruct, ResolvingAgainstItself) {
  ZQUri u(u"http://x/a/b", ZQUri::URISTR_URI);
  u = ZQUri(u, u"c", ZQUri::URISTR_URI);
  EXPECT_EQ(str(u), u"http://x/a/c");
}

TEST(UriConstruct, EmptyBaseMeansNormalisation) {
  ZQUri empty;
  EXPECT_EQ(str(ZQUri(empty, u"C:\\a.xml", ZQUri::URISTR_URI)), u"file:///C:/a.xml");
  EXPECT_EQ(str(ZQUri(empty, u"#f", ZQUri::URISTR_URI)), u"#f");
}

TEST(UriText, FindCharAgreesWithAPlainSearch) {
  std::u16string s;
  for (size_t len = 0; len < 40; ++len) {
    for (size_t at = 0; at <= len; ++at) {
      s.assign(len, u'a');
      if (at < len) s[at] = u'?';
      for (size_t from = 0; from <= len + 1; ++from) {
        size_t expected = from <= len ? s.find(u'?', from) : std::u16string::npos;
        ASSERT_EQ(uritext::findChar(s, u'?', from), expected) << len << " " << at << " " << from;
      }
    }
  }
}
