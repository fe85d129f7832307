// ZQUri: queries and modifications of the string, local paths, relative URIs.
#include <gtest/gtest.h>

#include <random>

#include "UriTestSupport.h"
#include "common/ZQString.h"
#include "common/ZQUri.h"

using namespace ZQCommonNS;
using uritest::S;
using uritest::str;

namespace {
ZQUri U(const char16_t* s) { return ZQUri(UnicodeString(s), ZQUri::URISTR_URI); }
}  // namespace

// ---- Simple queries ----

TEST(UriQuery, ToStringAndConversion) {
  ZQUri u = U(u"http://x/a");
  const UnicodeString& s = u;
  EXPECT_EQ(&s, &u.toString());
  EXPECT_FALSE(u.isEmpty());
}

TEST(UriQuery, ComparisonIsCaseSensitiveOnTheNormalForm) {
  EXPECT_TRUE(U(u"http://x/a") == U(u"http://x/a"));
  EXPECT_FALSE(U(u"http://x/a") == U(u"http://x/A"));
  EXPECT_TRUE(U(u"http://x/A") < U(u"http://x/a"));
  EXPECT_FALSE(U(u"http://x/a") < U(u"http://x/a"));
  EXPECT_TRUE(U(u"a b") == U(u"a%20b"));  // compared after normalisation
}

TEST(UriQuery, SchemeIsALowerCasedName) {
  EXPECT_EQ(U(u"HTTP://x").getScheme(), ZQName(ZQN_http));
  EXPECT_EQ(U(u"file:///a").getScheme(), ZQName(ZQN_file));
  EXPECT_EQ(U(u"Jar:x!/y").getScheme(), ZQName(ZQN_jar));
  EXPECT_EQ(U(u"x-my+s.1:y").getScheme().toString(), UnicodeString(u"x-my+s.1"));
  EXPECT_TRUE(U(u"a/b").getScheme().isEmpty());
  EXPECT_TRUE(ZQUri().getScheme().isEmpty());
}

TEST(UriQuery, IsFile) {
  EXPECT_FALSE(ZQUri().isFile());
  EXPECT_TRUE(U(u"a/b.xml").isFile());
  EXPECT_TRUE(U(u"FILE:///x").isFile());
  EXPECT_TRUE(U(u"C:\\x").isFile());
  EXPECT_FALSE(U(u"http://x/a").isFile());
  EXPECT_FALSE(U(u"data:,x").isFile());
}

TEST(UriQuery, SchemePrefixTests) {
  EXPECT_TRUE(U(u"FiLe:///a").isFileScheme());
  EXPECT_FALSE(U(u"files:///a").isFileScheme());
  EXPECT_TRUE(U(u"DATA:,x").isDataScheme());
  EXPECT_TRUE(U(u"jAr:x").isJarScheme());
  EXPECT_TRUE(U(u"HTTP://x").isHttpScheme());
  EXPECT_TRUE(U(u"hTTps://x").isHttpScheme());
  EXPECT_TRUE(U(u"http:x").isHttpScheme());
  EXPECT_FALSE(U(u"httpx://x").isHttpScheme());
  EXPECT_FALSE(U(u"ftp://x").isHttpScheme());
  EXPECT_FALSE(ZQUri().isHttpScheme());
}

TEST(UriQuery, IsDirectory) {
  EXPECT_TRUE(U(u"http://x/").isDirectory());
  EXPECT_FALSE(U(u"http://x").isDirectory());
  EXPECT_FALSE(ZQUri().isDirectory());
}

TEST(UriQuery, IsSameFileComparesLocalPathsWithoutCase) {
  EXPECT_TRUE(U(u"file:///C:/Dir/A.xml").isSameFile(U(u"C:\\dir\\a.xml")));
  EXPECT_TRUE(U(u"file:///C:/a%20b").isSameFile(U(u"file:///c:/A B")));
  EXPECT_FALSE(U(u"file:///C:/a").isSameFile(U(u"file:///C:/b")));
  EXPECT_FALSE(U(u"http://x/a").isSameFile(U(u"http://x/a")));
  EXPECT_FALSE(ZQUri().isSameFile(ZQUri()));
  EXPECT_TRUE(U(u"a/b.xml").isSameFile(U(u"A/B.XML")));
}

// ---- getLocalPath ----

TEST(UriLocalPath, EmptyAndNonFileComeBackAsTheyAre) {
  EXPECT_TRUE(ZQUri().getLocalPath().isEmpty());
  EXPECT_EQ(str(U(u"http://x/a%20b").getLocalPath()), u"http://x/a%20b");
  EXPECT_EQ(str(U(u"a%20b/c").getLocalPath()), u"a%20b/c");
}

TEST(UriLocalPath, DriveAfterAnyNumberOfSlashes) {
  EXPECT_EQ(str(U(u"file:///C:/a%20b/c").getLocalPath()), u"C:\\a b\\c");
  EXPECT_EQ(str(U(u"file://C:/a").getLocalPath()), u"C:\\a");
  EXPECT_EQ(str(U(u"file:C:/a").getLocalPath()), u"C:\\a");
  EXPECT_EQ(str(U(u"file:////C:/a").getLocalPath()), u"C:\\a");
}

TEST(UriLocalPath, FewerThanTwoSlashesKeepForwardSlashes) {
  EXPECT_EQ(str(U(u"file:/a/b%20c").getLocalPath()), u"/a/b c");
  EXPECT_EQ(str(U(u"file:a%20b/c").getLocalPath()), u"a b/c");
  EXPECT_EQ(str(U(u"file:").getLocalPath()), u"");
}

TEST(UriLocalPath, ThreeSlashesRootOnTheCurrentDrive) {
  EXPECT_EQ(str(U(u"file:///dir/a.xml").getLocalPath()), u"\\dir\\a.xml");
  EXPECT_EQ(str(U(u"file:///home/a.xml").getLocalPath()), u"\\home\\a.xml");
}

TEST(UriLocalPath, OtherSlashCountsMakeUncPaths) {
  EXPECT_EQ(str(U(u"file://server/share").getLocalPath()), u"\\\\server\\share");
  EXPECT_EQ(str(U(u"file:////server/share").getLocalPath()), u"\\\\server\\share");
  EXPECT_EQ(str(U(u"file://///server").getLocalPath()), u"\\\\server");
  EXPECT_EQ(str(U(u"file://").getLocalPath()), u"\\\\");
}

TEST(UriLocalPath, UnescapedBeforeSlashesTurn) {
  EXPECT_EQ(str(U(u"file:///C:/a%2Fb").getLocalPath()), u"C:\\a\\b");
  EXPECT_EQ(str(U(u"file:///C:/caf%C3%A9").getLocalPath()), u"C:\\caf\u00E9");
}

TEST(UriLocalPath, QueryAndFragmentAreNotRemoved) {
  EXPECT_EQ(str(U(u"file:///C:/a.xml#f").getLocalPath()), u"C:\\a.xml#f");
}

TEST(UriLocalPath, StaticFormMakesAUriOnlyOfFileStrings) {
  EXPECT_EQ(str(ZQUri::getLocalPath(u"file:///C:/a%20b")), u"C:\\a b");
  EXPECT_EQ(str(ZQUri::getLocalPath(u"C:/a%20b/c")), u"C:/a%20b/c");
  EXPECT_EQ(str(ZQUri::getLocalPath(u"http://x/y")), u"http://x/y");
  EXPECT_EQ(str(ZQUri::getLocalPath(u"")), u"");
}

// ---- Extensions and names ----

TEST(UriExtension, LastDotOfTheLastSegment) {
  EXPECT_EQ(str(U(u"http://x/a.tar.gz").getExtension()), u".gz");
  EXPECT_EQ(str(U(u"http://x/a.b/c").getExtension()), u"");
  EXPECT_EQ(str(U(u"http://x/a.b/").getExtension()), u"");
  EXPECT_EQ(str(U(u"name.").getExtension()), u".");
  EXPECT_EQ(str(U(u"x.xml").getExtension()), u".xml");
  EXPECT_EQ(str(ZQUri().getExtension()), u"");
}

TEST(UriExtension, DataUriHasNone) { EXPECT_EQ(str(U(u"data:text/x.y,a.b").getExtension()), u""); }

TEST(UriExtension, QueryAndFragmentAreNotConsidered) {
  EXPECT_EQ(str(U(u"http://x/a.xml?v=1").getExtension()), u".xml?v=1");
  EXPECT_EQ(str(U(u"http://x/a.xml?v=1.5").getExtension()), u".5");
  EXPECT_EQ(str(U(u"http://x/a.xml#s.t").getExtension()), u".t");
}

TEST(UriExtension, SetExtensionReplacesAndReturnsTheOld) {
  ZQUri u = U(u"http://x/a.xml");
  EXPECT_EQ(str(u.setExtension(UnicodeString(u".html"))), u".xml");
  EXPECT_EQ(str(u), u"http://x/a.html");
  EXPECT_EQ(str(u.setExtension(UnicodeString(u"pdf"))), u".html");  // no dot added
  EXPECT_EQ(str(u), u"http://x/apdf");
}

TEST(UriExtension, SetExtensionWithNullRemoves) {
  ZQUri u = U(u"http://x/a.b.xml");
  EXPECT_EQ(str(u.setExtension(static_cast<const UnicodeString*>(nullptr))), u".xml");
  EXPECT_EQ(str(u), u"http://x/a.b");
}

TEST(UriExtension, SetExtensionWithoutOldAppends) {
  ZQUri u = U(u"http://x/a");
  EXPECT_EQ(str(u.setExtension(UnicodeString(u".xml"))), u"");
  EXPECT_EQ(str(u), u"http://x/a.xml");
}

TEST(UriExtension, SetExtensionOnDirectoryReturnsBogus) {
  ZQUri u = U(u"file:///C:/d/");
  UnicodeString old = u.setExtension(static_cast<const UnicodeString*>(nullptr));
  EXPECT_TRUE(old.isBogus());
  EXPECT_EQ(&ZQBogusString::getBugusString(), &ZQBogusString::BOGUS_VALUE);
  EXPECT_EQ(str(u), u"file:///C:/d/");
}

TEST(UriFileName, FileUsesTheLocalPath) {
  EXPECT_EQ(str(U(u"file:///C:/a%20b/c%20d.xml").getFileName()), u"c d.xml");
  EXPECT_EQ(str(U(u"file:a%20b.xml").getFileName()), u"a b.xml");
  EXPECT_EQ(str(U(u"file:/x/y.xml").getFileName()), u"/x/y.xml");  // no '\' in the local path
}

TEST(UriFileName, OthersUseTheString) {
  EXPECT_EQ(str(U(u"http://x/a/b%20c.html").getFileName()), u"b%20c.html");
  EXPECT_EQ(str(U(u"name.xml").getFileName()), u"name.xml");
  EXPECT_EQ(str(U(u"http://x/a/").getFileName()), u"");
}

TEST(UriBaseString, DirectoryInLocalForm) {
  EXPECT_EQ(str(U(u"file:///C:/a%20b/c.xml").getBaseString()), u"C:\\a b\\");
  EXPECT_EQ(str(U(u"file://server/share/a.xml").getBaseString()), u"\\\\server\\share\\");
  EXPECT_EQ(str(U(u"http://x/a/b.xml?q=1/2").getBaseString()), u"http://x/a/b.xml?q=1/");
  EXPECT_EQ(str(U(u"a.xml").getBaseString()), u"./");
  EXPECT_EQ(str(U(u"data:text/plain,a/b").getBaseString()), u"");
}

// ---- Fragments and directories ----

TEST(UriFragment, RemoveCutsAtTheFirstSharp) {
  ZQUri u = U(u"http://x/a#b#c");
  EXPECT_EQ(str(u.removeFragment(false)), u"#b#c");
  EXPECT_EQ(str(u), u"http://x/a");
  ZQUri v = U(u"http://x/a#b");
  EXPECT_EQ(str(v.removeFragment(true)), u"b");
  EXPECT_EQ(str(v), u"http://x/a");
  EXPECT_EQ(str(v.removeFragment(true)), u"");
  EXPECT_EQ(str(v), u"http://x/a");
}

TEST(UriDirectory, ToDirectoryAppendsOnce) {
  ZQUri u = U(u"http://x/a");
  ZQUri copy = u.toDirectory();
  EXPECT_EQ(str(u), u"http://x/a/");
  EXPECT_EQ(str(copy), u"http://x/a/");
  u.toDirectory();
  EXPECT_EQ(str(u), u"http://x/a/");
}

TEST(UriDirectory, StaticToDirectoryWithSeparator) {
  UnicodeString s(u"C:\\a");
  EXPECT_EQ(str(ZQUri::toDirectory(s, u'\\')), u"C:\\a\\");
  EXPECT_EQ(str(s), u"C:\\a\\");
  EXPECT_EQ(str(ZQUri::toDirectory(s, u'\\')), u"C:\\a\\");
  UnicodeString e;
  EXPECT_EQ(str(ZQUri::toDirectory(e, u'/')), u"/");
}

TEST(UriSlashes, ConversionsTellWhetherAnythingChanged) {
  UnicodeString s(u"a\\b\\c");
  EXPECT_TRUE(ZQUri::backslash2slash(s));
  EXPECT_EQ(str(s), u"a/b/c");
  EXPECT_FALSE(ZQUri::backslash2slash(s));
  EXPECT_TRUE(ZQUri::slash2backslash(s));
  EXPECT_EQ(str(s), u"a\\b\\c");
  EXPECT_FALSE(ZQUri::slash2backslash(s));
}

TEST(UriDrive, HasDriveLetter) {
  EXPECT_TRUE(ZQUri::hasDriveLetter(u"C:", 0));
  EXPECT_TRUE(ZQUri::hasDriveLetter(u"file:///z:/", 8));
  EXPECT_FALSE(ZQUri::hasDriveLetter(u"C", 0));
  EXPECT_FALSE(ZQUri::hasDriveLetter(u"1:", 0));
  EXPECT_FALSE(ZQUri::hasDriveLetter(u"\u00E9:", 0));
  EXPECT_FALSE(ZQUri::hasDriveLetter(u"C:", 1));
  EXPECT_FALSE(ZQUri::hasDriveLetter(u"C:", -1));
  EXPECT_FALSE(ZQUri::hasDriveLetter(u"C:", 100));
}

// ---- getRelativeUri ----

TEST(UriRelative, EmptyInputsAndNoSlash) {
  EXPECT_EQ(str(ZQUri().getRelativeUri(u"http://x/a")), u"");
  EXPECT_EQ(str(U(u"http://x/a").getRelativeUri(u"")), u"");
  EXPECT_EQ(str(U(u"name.xml").getRelativeUri(u"x/y")), u"");
}

TEST(UriRelative, SameDirectoryGivesTheName) {
  EXPECT_EQ(str(U(u"http://x/a/b.xml").getRelativeUri(u"http://x/a/c.xml")), u"b.xml");
  EXPECT_EQ(str(U(u"http://x/a/b.xml").getRelativeUri(u"http://x/a/b.xml")), u"b.xml");
}

TEST(UriRelative, BelowTheBaseDirectory) {
  EXPECT_EQ(str(U(u"http://x/a/d/e/b.xml").getRelativeUri(u"http://x/a/c.xml")), u"d/e/b.xml");
}

TEST(UriRelative, ParentStepsForEachSlashLeft) {
  EXPECT_EQ(str(U(u"http://x/a/b/c.xml").getRelativeUri(u"http://x/a/d/e/f.xml")),
            u"../../b/c.xml");
  EXPECT_EQ(str(U(u"http://x/c.xml").getRelativeUri(u"http://x/a/b/f.xml")), u"../../c.xml");
}

TEST(UriRelative, SegmentsCompareWhole) {
  EXPECT_EQ(str(U(u"http://x/ab/c.xml").getRelativeUri(u"http://x/a/d.xml")), u"../ab/c.xml");
}

TEST(UriRelative, NoCommonRootGivesEmpty) {
  EXPECT_EQ(str(U(u"a/b.xml").getRelativeUri(u"c/d.xml")), u"");
  EXPECT_EQ(str(U(u"/b.xml").getRelativeUri(u"c/d.xml")), u"");
}

TEST(UriRelative, ComparisonIsCaseSensitive) {
  EXPECT_EQ(str(U(u"http://x/A/b.xml").getRelativeUri(u"http://x/a/c.xml")), u"../A/b.xml");
  EXPECT_EQ(str(U(u"HTTP://x/a/b.xml").getRelativeUri(u"http://x/a/c.xml")), u"");
}

TEST(UriRelative, BaseWithoutSlash) {
  EXPECT_EQ(str(U(u"/x/b.xml").getRelativeUri(u"c.xml")), u"");
}

namespace {

/// getRelativeUri as it is told, moving one segment at a time.
std::u16string toldRelative(const std::u16string& self, const std::u16string& base) {
  if (self.empty() || base.empty()) return u"";
  size_t slash = self.rfind(u'/');
  if (slash == std::u16string::npos) return u"";
  size_t bs = base.rfind(u'/');
  std::u16string baseDir = bs == std::u16string::npos ? u"" : base.substr(0, bs + 1);
  std::u16string dir = self.substr(0, slash + 1), name = self.substr(slash + 1), tail;
  while (baseDir.compare(0, dir.size(), dir) != 0) {
    if (dir.size() < 2) return u"";
    size_t prev = dir.rfind(u'/', dir.size() - 2);
    if (prev == std::u16string::npos) return u"";
    tail = dir.substr(prev + 1) + tail;
    dir.resize(prev + 1);
  }
  std::u16string result;
  for (size_t i = dir.size(); i < baseDir.size(); ++i) {
    if (baseDir[i] == u'/') result += u"../";
  }
  return result + tail + name;
}

}  // namespace

TEST(UriRelative, AgreesWithTheToldLoop) {
  std::mt19937 rng(777);
  const char16_t alphabet[] = {u'/', u'a', u'b', u'/'};
  for (int round = 0; round < 20000; ++round) {
    std::u16string a(rng() % 12, u'a'), b(rng() % 12, u'a');
    for (auto& c : a) c = alphabet[rng() % 4];
    for (auto& c : b) c = alphabet[rng() % 4];
    ZQUri self = U(a.c_str());
    ASSERT_EQ(str(self.toString()), a);
    ASSERT_EQ(str(self.getRelativeUri(UnicodeString(b.data(), static_cast<int32_t>(b.size())))),
              toldRelative(a, b))
        << std::string(a.begin(), a.end()) << " vs " << std::string(b.begin(), b.end());
  }
}

// ---- isDescendantOrSelf ----

TEST(UriDescendant, LocalComparesWithoutCase) {
  ZQUri doc = U(u"file:///C:/Docs/a.xml");
  EXPECT_TRUE(doc.isDescendantOrSelf(U(u"file:///c:/docs/sub/b.xml")));
  EXPECT_TRUE(doc.isDescendantOrSelf(U(u"file:///C:/DOCS/b.xml")));
  EXPECT_TRUE(doc.isDescendantOrSelf(doc));
  EXPECT_FALSE(doc.isDescendantOrSelf(U(u"file:///C:/other/b.xml")));
  EXPECT_FALSE(doc.isDescendantOrSelf(U(u"file:///C:/b.xml")));
}

TEST(UriDescendant, RemoteComparesWithCase) {
  ZQUri page = U(u"http://x/A/index.html");
  EXPECT_TRUE(page.isDescendantOrSelf(U(u"http://x/A/b/c.html")));
  EXPECT_FALSE(page.isDescendantOrSelf(U(u"http://x/a/b/c.html")));
  EXPECT_FALSE(page.isDescendantOrSelf(U(u"https://x/A/b.html")));
}

TEST(UriDescendant, WayWithASchemeIsNoDescendant) {
  EXPECT_FALSE(U(u"d/a.xml").isDescendantOrSelf(U(u"d/ab:c")));
  EXPECT_TRUE(U(u"d/a.xml").isDescendantOrSelf(U(u"d/abc")));
}

TEST(UriDescendant, EmptyIsNeither) {
  EXPECT_FALSE(ZQUri().isDescendantOrSelf(U(u"http://x/a")));
  EXPECT_FALSE(U(u"http://x/a").isDescendantOrSelf(ZQUri()));
}
