// Tests of "data:" URIs: the header read through the tokenizer, parameters and their typed
// getters, the page range, decoding of the data part and shared parameters of copies.
#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <sstream>

#include "TestSupport.h"
#include "common/ZQDataUri.h"
#include "common/ZQUtil.h"

using namespace ZQCommonNS;
using zqtest::u;
using zqtest::utf8;

namespace {

ZQDataUri uri(const char* text) {
  return ZQDataUri(UnicodeString::fromUTF8(text), ZQUri::URISTR_URI);
}

std::string dataOf(const ZQDataUri& d) {
  return d.getDataPos() < 0 ? std::string("<none>")
                            : utf8(d.toString().tempSubString(d.getDataPos()));
}

std::pair<int, int> pages(const char* value) {
  std::string text = std::string("data:;page=") + value + ",x";
  return uri(text.c_str()).getPageNumber();
}

}  // namespace

// ---- Header ----

TEST(ZQDataUri, NoMediaType) {
  ZQDataUri d = uri("data:,abc");
  EXPECT_EQ(utf8(d.getMediaType()), "");
  EXPECT_EQ(d.getDataPos(), 6);
  EXPECT_FALSE(d.isBase64());
  EXPECT_EQ(dataOf(d), "abc");
  EXPECT_TRUE(d.getParams().empty());
}

TEST(ZQDataUri, MediaTypeAndCharset) {
  ZQDataUri d = uri("data:text/plain;charset=utf-8,abc");
  EXPECT_EQ(utf8(d.getMediaType()), "text/plain");
  EXPECT_EQ(utf8(d.getStringParam(ZQN_charset)), "utf-8");
  EXPECT_EQ(utf8(d.getStringParam(u("charset"))), "utf-8");
  EXPECT_EQ(d.getDataPos(), 30);
  EXPECT_EQ(dataOf(d), "abc");
}

TEST(ZQDataUri, Base64MarkerAndItsBytes) {
  ZQDataUri d = uri("data:;base64,QUJD");
  EXPECT_TRUE(d.isBase64());
  ASSERT_EQ(d.getDataPos(), 13);
  const UnicodeString& s = d.toString();
  std::ostringstream out;
  ZQUtil::decodeBase64(s.getBuffer() + d.getDataPos(), s.length() - d.getDataPos(), out);
  EXPECT_EQ(out.str(), "ABC");
}

TEST(ZQDataUri, Base64MustStandLast) {
  ZQDataUri d = uri("data:text/plain;base64;x=1,abc");
  EXPECT_EQ(d.getDataPos(), -1);
  // What was read up to the fault stays.
  EXPECT_EQ(utf8(d.getMediaType()), "text/plain");
  EXPECT_TRUE(d.isBase64());
}

TEST(ZQDataUri, Base64MarkerIsCaseSensitive) {
  ZQDataUri d = uri("data:;BASE64,QUJD");
  EXPECT_FALSE(d.isBase64());
  EXPECT_EQ(d.getDataPos(), -1);  // an ordinary parameter then, which needs "="
}

TEST(ZQDataUri, PercentEscapesInTheDataAreDecodedOnce) {
  ZQDataUri d = uri("data:,a%20b%2541");
  EXPECT_EQ(utf8(d.toString()), "data:,a b%41");
  EXPECT_EQ(dataOf(d), "a b%41");
}

TEST(ZQDataUri, Base64DataIsDecodedToo) {
  ZQDataUri d = uri("data:;base64,QU%4AD");
  EXPECT_EQ(dataOf(d), "QUJD");
}

TEST(ZQDataUri, EscapesInTheHeaderAreDecoded) {
  ZQDataUri d = uri("data:text/x%2Dy;n%61me=v%41l,z");
  EXPECT_EQ(utf8(d.getMediaType()), "text/x-y");
  EXPECT_EQ(utf8(d.getStringParam(u("name"))), "vAl");
  EXPECT_EQ(dataOf(d), "z");
}

TEST(ZQDataUri, OtherSchemeIsNoDataUri) {
  ZQDataUri d = uri("http://example.com/a,b");
  EXPECT_EQ(d.getDataPos(), -1);
  EXPECT_FALSE(d.isBase64());
  EXPECT_EQ(utf8(d.toString()), "http://example.com/a,b");
  EXPECT_EQ(d.getPageNumber(), std::make_pair(0, 0));
}

TEST(ZQDataUri, SchemeMustBeLowerCase) {
  EXPECT_EQ(uri("DATA:,abc").getDataPos(), -1);
  EXPECT_EQ(uri("Data:,abc").getDataPos(), -1);
  EXPECT_EQ(uri("data:,abc").getDataPos(), 6);
}

TEST(ZQDataUri, NoSchemeOrALongerOne) {
  EXPECT_EQ(uri("abc").getDataPos(), -1);
  EXPECT_EQ(uri("").getDataPos(), -1);
  EXPECT_EQ(uri("datax:,abc").getDataPos(), -1);
}

TEST(ZQDataUri, MalformedHeaders) {
  EXPECT_EQ(uri("data:text,abc").getDataPos(), -1);          // no subtype
  EXPECT_EQ(uri("data:text/,abc").getDataPos(), -1);         // empty subtype
  EXPECT_EQ(uri("data:text/plain").getDataPos(), -1);        // no comma
  EXPECT_EQ(uri("data:;x,abc").getDataPos(), -1);            // no "="
  EXPECT_EQ(uri("data:text/plain x,abc").getDataPos(), -1);  // neither "," nor ";"
  EXPECT_EQ(uri("data:").getDataPos(), -1);
}

TEST(ZQDataUri, MalformedHeaderKeepsWhatWasRead) {
  ZQDataUri d = uri("data:text/plain;a=1;b");
  EXPECT_EQ(d.getDataPos(), -1);
  EXPECT_EQ(utf8(d.getMediaType()), "text/plain");
  EXPECT_EQ(utf8(d.getStringParam(u("a"))), "1");
}

TEST(ZQDataUri, ParametersWithoutMediaType) {
  ZQDataUri d = uri("data:;a=1;b=two,xyz");
  EXPECT_EQ(utf8(d.getMediaType()), "");
  EXPECT_EQ(utf8(d.getStringParam(u("a"))), "1");
  EXPECT_EQ(utf8(d.getStringParam(u("b"))), "two");
  EXPECT_EQ(dataOf(d), "xyz");
}

TEST(ZQDataUri, ParameterValueOfSeveralTokens) {
  ZQDataUri d = uri("data:;a=x/y@z,q");
  EXPECT_EQ(utf8(d.getStringParam(u("a"))), "x/y@z");
  EXPECT_EQ(dataOf(d), "q");
}

TEST(ZQDataUri, QuotedParameterValueMayHoldTheComma) {
  ZQDataUri d = uri("data:;a=\"x,y\",q");
  EXPECT_EQ(utf8(d.getStringParam(u("a"))), "x,y");
  EXPECT_EQ(dataOf(d), "q");
}

TEST(ZQDataUri, FirstParameterOfANameWins) {
  ZQDataUri d = uri("data:;a=1;a=2,x");
  EXPECT_EQ(utf8(d.getStringParam(u("a"))), "1");
  EXPECT_EQ(d.getParams().size(), 1u);
}

TEST(ZQDataUri, DataMayHoldHeaderCharacters) {
  ZQDataUri d = uri("data:text/plain,a;b=c,d");
  EXPECT_EQ(d.getDataPos(), 16);
  EXPECT_EQ(dataOf(d), "a;b=c,d");
  EXPECT_TRUE(d.getParams().empty());
}

TEST(ZQDataUri, ConstructorsWithTypeBaseAndAuto) {
  ZQUri base(u("http://example.com/dir/"), ZQUri::URISTR_URI);
  ZQDataUri a(u("data:text/css,p{}"));
  ZQDataUri b(u("data:text/css,p{}"), ZQUri::URISTR_URI);
  ZQDataUri c(base, u("data:text/css,p{}"));
  ZQDataUri e(base, u("data:text/css,p{}"), ZQUri::URISTR_URI);
  for (const ZQDataUri* d : {&a, &b, &c, &e}) {
    EXPECT_EQ(utf8(d->getMediaType()), "text/css");
    EXPECT_EQ(dataOf(*d), "p{}");
    EXPECT_EQ(d->getDataPos(), 14);
  }
  ZQDataUri relative(base, u("file.txt"), ZQUri::URISTR_URI);
  EXPECT_EQ(relative.getDataPos(), -1);
  EXPECT_EQ(utf8(relative.toString()), "http://example.com/dir/file.txt");
}

// ---- Typed parameters ----

TEST(ZQDataUri, StringParamOfAnAbsentNameIsEmpty) {
  ZQDataUri d = uri("data:;a=1,x");
  EXPECT_TRUE(d.getStringParam(u("missing")).isEmpty());
  EXPECT_TRUE(d.getStringParam(ZQN_charset).isEmpty());
  EXPECT_TRUE(d.getStringParam(u("")).isEmpty());
}

TEST(ZQDataUri, IntegerParam) {
  ZQDataUri d = uri("data:;n=12;r=12.75;neg=-3;px=12px;s=abc;e=\"\",x");
  EXPECT_EQ(d.getIntegerParam(u("n"), -1), 12);
  EXPECT_EQ(d.getIntegerParam(u("r"), -1), 12);  // truncated
  EXPECT_EQ(d.getIntegerParam(u("neg"), -1), -3);
  EXPECT_EQ(d.getIntegerParam(u("px"), -1), -1);  // more than a number
  EXPECT_EQ(d.getIntegerParam(u("s"), -1), -1);
  EXPECT_EQ(d.getIntegerParam(u("e"), -1), -1);  // no digit is a parse error
  EXPECT_EQ(d.getIntegerParam(u("absent"), 42), 42);
  EXPECT_EQ(d.getIntegerParam(ZQNameTable::getSharedNameEnum(u("n")), 0), 12);
}

TEST(ZQDataUri, IntegerParamOfAHugeNumberIsClamped) {
  ZQDataUri d = uri("data:;n=99999999999;m=-99999999999,x");
  EXPECT_EQ(d.getIntegerParam(u("n"), 0), INT_MAX);
  EXPECT_EQ(d.getIntegerParam(u("m"), 0), INT_MIN);
}

TEST(ZQDataUri, RealParam) {
  ZQDataUri d = uri("data:;r=1.5;i=3;em=1.5em;e=\"\",x");
  EXPECT_FLOAT_EQ(d.getRealParam(u("r"), -1.0f), 1.5f);
  EXPECT_FLOAT_EQ(d.getRealParam(u("i"), -1.0f), 3.0f);
  EXPECT_FLOAT_EQ(d.getRealParam(u("em"), -1.0f), -1.0f);
  EXPECT_FLOAT_EQ(d.getRealParam(u("absent"), 7.5f), 7.5f);
  // The parse's error isn't looked at: an empty value ends where the number would.
  EXPECT_FLOAT_EQ(d.getRealParam(u("e"), -1.0f), 0.0f);
}

TEST(ZQDataUri, LowerNameParam) {
  ZQDataUri d = uri("data:;charset=UTF-8;Mode=Fast,x");
  EXPECT_EQ(d.getLowerNameParam(ZQN_charset), ZQName(u("utf-8")));
  EXPECT_EQ(d.getLowerNameParam(u("Mode")), ZQName(u("fast")));
  EXPECT_TRUE(d.getLowerNameParam(u("mode")).isEmpty());  // names keep their case
  EXPECT_TRUE(d.getLowerNameParam(u("absent")).isEmpty());
}

// ---- Pages ----

TEST(ZQDataUri, PageRange) { EXPECT_EQ(pages("2-5"), std::make_pair(2, 5)); }

TEST(ZQDataUri, ReversedPageRangeCollapses) { EXPECT_EQ(pages("5-2"), std::make_pair(5, 5)); }

TEST(ZQDataUri, PageZero) { EXPECT_EQ(pages("0"), std::make_pair(0, 0)); }

TEST(ZQDataUri, SinglePage) { EXPECT_EQ(pages("3"), std::make_pair(3, 3)); }

TEST(ZQDataUri, NoPageParameter) {
  EXPECT_EQ(uri("data:,x").getPageNumber(), std::make_pair(0, 0));
}

TEST(ZQDataUri, PageWithOneTrailingLetterIsASinglePage) {
  EXPECT_EQ(pages("3x"), std::make_pair(3, 3));
  EXPECT_EQ(pages("3xy"), std::make_pair(0, 0));
}

TEST(ZQDataUri, PageRangeEdges) {
  EXPECT_EQ(pages("2-2"), std::make_pair(2, 2));
  EXPECT_EQ(pages("3-"), std::make_pair(3, 3));       // no second number
  EXPECT_EQ(pages("3-x"), std::make_pair(0, 0));      // something remains
  EXPECT_EQ(pages("3-0"), std::make_pair(3, 0));      // below 1 is taken
  EXPECT_EQ(pages("3--4"), std::make_pair(3, 0));     // and a negative page reads 0
  EXPECT_EQ(pages("2.9-4.9"), std::make_pair(2, 4));  // truncated
  EXPECT_EQ(pages("-3"), std::make_pair(0, 0));
  EXPECT_EQ(pages("abc"), std::make_pair(0, 0));
  EXPECT_EQ(pages("0-5"), std::make_pair(0, 0));  // nothing is consumed after 0
  EXPECT_EQ(pages("\"\""), std::make_pair(0, 0));
}

// ---- Copies ----

TEST(ZQDataUri, CopiesShareTheParameters) {
  auto original = std::make_unique<ZQDataUri>(u("data:text/plain;charset=utf-8;page=2-3,abc"),
                                              ZQUri::URISTR_URI);
  ZQDataUri copy(*original);
  EXPECT_EQ(&copy.getParams(), &original->getParams());
  ZQDataUri assigned = uri("data:;x=1,y");
  assigned = *original;
  EXPECT_EQ(&assigned.getParams(), &original->getParams());
  EXPECT_EQ(copy.getDataPos(), original->getDataPos());
  EXPECT_EQ(utf8(copy.getMediaType()), "text/plain");
  // The table outlives its first owner.
  original.reset();
  EXPECT_EQ(utf8(copy.getStringParam(ZQN_charset)), "utf-8");
  EXPECT_EQ(assigned.getPageNumber(), std::make_pair(2, 3));
  EXPECT_TRUE(assigned.getStringParam(u("x")).isEmpty());
}

TEST(ZQDataUri, DataUriIsAUri) {
  ZQDataUri d = uri("data:,abc");
  const ZQUri& asUri = d;
  EXPECT_TRUE(asUri.isDataScheme());
  EXPECT_EQ(utf8(asUri.toString()), "data:,abc");
}

TEST(ZQDataUri, TheTokenAfterTheEqualSignIsTheValueWhateverItIs) {
  // The value's first token is taken even when it is a separator; the rest runs to the next.
  ZQDataUri d = uri("data:;x=;y=1,abc");
  EXPECT_EQ(utf8(d.getStringParam(u("x"))), "y=1");
  EXPECT_TRUE(d.getStringParam(u("y")).isEmpty());
  EXPECT_EQ(dataOf(d), "abc");
  EXPECT_EQ(uri("data:;x=,abc").getDataPos(), -1);
}
