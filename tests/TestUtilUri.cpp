#include <gtest/gtest.h>

#include <string>

#include "TestSupport.h"
#include "common/ZQString.h"
#include "common/ZQUri.h"
#include "common/ZQUtil.h"

using namespace ZQCommonNS;

namespace {
using zqtest::utf8;
std::string unquote(const char* s) { return utf8(ZQUtil::unquoteUri(UnicodeString::fromUTF8(s))); }
}  // namespace

TEST(ZQUtilUnquoteUri, UnwrapsUrlFormsAndEscapes) {
  EXPECT_EQ(unquote("url(\"a b.png\")"), "a%20b.png");
  EXPECT_EQ(unquote("url('x.png')"), "x.png");
  EXPECT_EQ(unquote("url( x.png )"), "x.png");
  EXPECT_EQ(unquote("url(http://example.org/a.css)"), "http://example.org/a.css");
}

TEST(ZQUtilUnquoteUri, QuotedTextWithoutUrl) { EXPECT_EQ(unquote("\"img/a.png\""), "img/a.png"); }

TEST(ZQUtilUnquoteUri, AgreesWithTheUriClass) {
  for (const char* s : {"url(\"a b.png\")", "url(c:\\dir\\f.png)", "linear-gradient(#fff,#000)",
                        "url(\"q%22.png\")", "plain.png", ""}) {
    UnicodeString text = UnicodeString::fromUTF8(s);
    EXPECT_EQ(utf8(ZQUtil::unquoteUri(text)), utf8(ZQUri(text, ZQUri::URISTR_CSS_URI).toString()))
        << s;
  }
}

TEST(ZQUtilUnquoteUri, ReadsWhatQuoteUriWrites) {
  UnicodeString quoted = ZQUtil::quoteUri(u"dir/say\"hi\".png");
  EXPECT_EQ(utf8(ZQUtil::unquoteUri(quoted)), "dir/say%22hi%22.png");
}

TEST(ZQUtilUnquoteUri, EmptyAndBogusGiveEmpty) {
  EXPECT_EQ(unquote(""), "");
  EXPECT_TRUE(ZQUtil::unquoteUri(ZQBogusString::BOGUS_VALUE).isEmpty());
}
