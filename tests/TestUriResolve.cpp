// ZQUri: resolution of a reference against a base, step by step, with the file: repairs, the
// departures from RFC 3986 and the listed edge cases.
#include <gtest/gtest.h>

#include <random>

#include "UriDotModel.h"
#include "UriTestSupport.h"
#include "common/ZQUri.h"
#include "io/ZQUriText.h"

using namespace ZQCommonNS;
using uritest::S;
using uritest::str;
using uritest::UriProbe;

namespace {

/// `ref` (a URI reference) resolved against `base` (a normalised URI string).
std::u16string R(const char16_t* base, const char16_t* ref,
                 ZQUri::URISTRTYPE type = ZQUri::URISTR_URI) {
  ZQUri b(UnicodeString(base), ZQUri::URISTR_URI);
  return str(ZQUri(b, UnicodeString(ref), type));
}

const char16_t* const kFileBase = u"file:///C:/x/y.xml";

}  // namespace

// ---- Edge cases ----

TEST(UriEdge, RelativeAgainstDriveBase) {
  EXPECT_EQ(R(kFileBase, u"a/b.xml"), u"file:///C:/x/a/b.xml");
}

TEST(UriEdge, RootedStaysOnTheBaseDrive) {
  EXPECT_EQ(R(kFileBase, u"/a.xml"), u"file:///C:/a.xml");
}

TEST(UriEdge, ThreeSlashFileTakesTheDriveOneSlashDoesNot) {
  EXPECT_EQ(R(kFileBase, u"file:///a.xml"), u"file:///C:/a.xml");
  EXPECT_EQ(R(kFileBase, u"file:/a.xml"), u"file:///a.xml");
}

TEST(UriEdge, FragmentOnlyAndEmptyReference) {
  EXPECT_EQ(R(kFileBase, u"#top"), u"#top");
  EXPECT_EQ(R(u"http://x/y", u"#top"), u"#top");
  EXPECT_EQ(R(kFileBase, u""), u"");
  EXPECT_TRUE(ZQUri(ZQUri(u"http://x/y", ZQUri::URISTR_URI), u"").isEmpty());
}

TEST(UriEdge, NetworkPathAgainstHttp) {
  EXPECT_EQ(R(u"http://x/y", u"//host/a"), u"http://host/a");
}

TEST(UriEdge, QueryOnlyAgainstHttpWithQuery) {
  EXPECT_EQ(R(u"http://x/y/z?old", u"?q=1"), u"http://x/y/?q=1");
}

TEST(UriEdge, RelativeInsideJar) {
  EXPECT_EQ(R(u"jar:file:///C:/b.zip!/d/e.xml", u"a.png"), u"jar:file:///C:/b.zip!/d/a.png");
}

TEST(UriEdge, SurplusParentStepsStayAtTheRoot) {
  EXPECT_EQ(R(u"http://x/y/z", u"../../../a"), u"http://x/../../a");
}

TEST(UriEdge, DrivePathWithSpaceAndItsLocalPath) {
  ZQUri u(u"C:\\dir\\na me.xml", ZQUri::URISTR_URI);
  EXPECT_EQ(str(u), u"file:///C:/dir/na%20me.xml");
  EXPECT_EQ(str(u.getLocalPath()), u"C:\\dir\\na me.xml");
}

TEST(UriEdge, UncPathAndItsLocalPath) {
  ZQUri u(u"\\\\server\\share\\a.xml", ZQUri::URISTR_URI);
  EXPECT_EQ(str(u), u"file://server/share/a.xml");
  EXPECT_EQ(str(u.getLocalPath()), u"\\\\server\\share\\a.xml");
}

TEST(UriEdge, TwoLetterSchemeOneLetterNone) {
  // "ab:c" has a scheme and is never resolved; "a:c" has none, its "a:" is a drive.
  EXPECT_EQ(R(u"http://x/y/z", u"ab:c"), u"ab:c");
  EXPECT_EQ(R(u"http://x/y/z", u"a:c"), u"file:///a:c");
  EXPECT_TRUE(ZQUri(u"ab:c", ZQUri::URISTR_PATH).isAbsolute());
  EXPECT_EQ(str(ZQUri(u"a:c", ZQUri::URISTR_PATH)), u"file:///a:c");
}

TEST(UriEdge, CssUrlWithQuotedSpace) {
  EXPECT_EQ(str(ZQUri(u"url(\"a b.png\")", ZQUri::URISTR_CSS_URI)), u"a%20b.png");
  EXPECT_EQ(R(u"http://x/s/c.css", u"url('a b.png')", ZQUri::URISTR_CSS_URI),
            u"http://x/s/a%20b.png");
}

TEST(UriEdge, GradientKeepsItsSharpAgainstABase) {
  std::u16string r = R(u"http://x/s/c.css", u"linear-gradient(#fff,#000)", ZQUri::URISTR_CSS_URI);
  EXPECT_EQ(r, u"http://x/s/linear-gradient(%23fff,%23000)");
  ZQUri u(ZQUri(u"http://x/s/c.css", ZQUri::URISTR_URI), u"linear-gradient(#fff,#000)",
          ZQUri::URISTR_CSS_URI);
  EXPECT_TRUE(u.removeFragment(true).isEmpty());  // no fragment was cut off
}

TEST(UriEdge, SharpInExistingFileNameSurvives) {
  uritest::TempDir dir;
  std::string file = dir.touch("a#b c.xml");
  UnicodeString text = S(file);
  // Without a base the name stays a path, '#' included, and the file is reachable.
  ZQUri alone(text, ZQUri::URISTR_AUTO);
  EXPECT_EQ(str(alone), str(text));
  EXPECT_TRUE(alone.isFileExists());
  // With a base it is escaped into the URI, '#' as "%23", and still names the file.
  ZQUri base(S("file://" + dir.path + "/x.xml"), ZQUri::URISTR_URI);
  ZQUri resolved(base, text, ZQUri::URISTR_AUTO);
  EXPECT_EQ(str(resolved), str(S("file://" + dir.path + "/a%23b%20c.xml")));
  EXPECT_TRUE(resolved.isFileExists());
  EXPECT_TRUE(resolved.removeFragment(false).isEmpty());
}

TEST(UriEdge, SharpInMissingFileNameIsAFragment) {
  uritest::TempDir dir;
  ZQUri base(S("file://" + dir.path + "/x.xml"), ZQUri::URISTR_URI);
  ZQUri resolved(base, S(dir.path + "/a#b.xml"), ZQUri::URISTR_AUTO);
  EXPECT_EQ(str(resolved), str(S("file://" + dir.path + "/a#b.xml")));
}

TEST(UriEdge, PercentInExistingFileNameSurvives) {
  uritest::TempDir dir;
  std::string file = dir.touch("a%20b.xml");
  ZQUri base(S("file://" + dir.path + "/x.xml"), ZQUri::URISTR_URI);
  ZQUri resolved(base, S(file), ZQUri::URISTR_AUTO);
  EXPECT_EQ(str(resolved), str(S("file://" + dir.path + "/a%2520b.xml")));
  EXPECT_EQ(str(resolved.getLocalPath()), str(S(uritest::told(dir.path) + "\\a%20b.xml")));
  EXPECT_TRUE(resolved.isFileExists());
}

TEST(UriEdge, SetExtensionOnDirectory) {
  ZQUri u(u"http://x/dir/", ZQUri::URISTR_URI);
  UnicodeString old = u.setExtension(UnicodeString(u".xml"));
  EXPECT_TRUE(old.isBogus());
  EXPECT_EQ(str(u), u"http://x/dir/");
}

// ---- Step 1: blank references ----

TEST(UriResolveSteps, BlankReferenceIsEmptyWhateverTheBase) {
  EXPECT_EQ(R(u"http://x/y", u"  \t "), u"");
  EXPECT_EQ(R(u"jar:file:///a.zip!/b", u"\n"), u"");
}

TEST(UriResolveSteps, UntrimmedReferenceIsUsed) {
  EXPECT_EQ(R(u"http://x/y/z", u" a"), u"http://x/y/%20a");
}

// ---- Step 2: jar: ----

TEST(UriResolveSteps, JarPrefixIsSetAsideAndPutBack) {
  EXPECT_EQ(R(u"http://x/y/z", u"jar:a.zip!/e.xml"), u"jar:http://x/y/a.zip!/e.xml");
  EXPECT_EQ(R(u"http://x/y/z", u"JAR:a.zip!/e.xml"), u"jar:http://x/y/a.zip!/e.xml");
  EXPECT_EQ(R(u"http://x/y/z", u"jar:jar:a.zip!/b.zip!/c"), u"jar:jar:http://x/y/a.zip!/b.zip!/c");
  EXPECT_EQ(R(u"http://x/y/z", u"jar:file:///C:/b.zip!/e"), u"jar:file:///C:/b.zip!/e");
}

TEST(UriResolveSteps, JarWithBlankRestIsJarAlone) {
  EXPECT_EQ(R(u"http://x/y/z", u"jar:"), u"jar:");
  EXPECT_EQ(R(u"http://x/y/z", u"jar:jar: "), u"jar:jar:");
  EXPECT_EQ(R(u"http://x/y/z", u"jar:#f"), u"jar:#f");
}

// ---- Step 3: fragment ----

TEST(UriResolveSteps, FragmentIsKeptAsideAndAppended) {
  EXPECT_EQ(R(u"http://x/y/z", u"a.xml#s/../t"), u"http://x/y/a.xml#s/../t");
  EXPECT_EQ(R(u"http://x/y/z", u"a b#c d"), u"http://x/y/a%20b#c d");  // fragment not escaped
}

TEST(UriResolveSteps, LiteralKindKeepsSharpInTheName) {
  EXPECT_EQ(str(UriProbe::resolve(u"http://x/y/z", u"a#b", 1)), u"http://x/y/a%23b");
  EXPECT_EQ(str(UriProbe::resolve(u"http://x/y/z", u"#b", 1)), u"http://x/y/%23b");
}

// ---- Step 4: kinds ----

TEST(UriResolveSteps, ReferenceKindEscapesOnlyInvalid) {
  EXPECT_EQ(R(u"http://x/y/z", u"a%20b"), u"http://x/y/a%20b");
  EXPECT_EQ(R(u"http://x/y/z", u"a b%20"), u"http://x/y/a%20b%2520");
}

TEST(UriResolveSteps, LiteralKindEscapesAlways) {
  EXPECT_EQ(str(UriProbe::resolve(u"http://x/y/z", u"a%20b", 1)), u"http://x/y/a%2520b");
}

TEST(UriResolveSteps, PathKindConvertsBackslashes) {
  EXPECT_EQ(R(u"http://x/y/z", u"a\\b c.xml"), u"http://x/y/a/b%20c.xml");
  EXPECT_EQ(R(u"http://x/y/z", u"D:\\a.xml"), u"file:///D:/a.xml");
  EXPECT_EQ(R(u"http://x/y/z", u"\\\\srv\\a.xml"), u"file://srv/a.xml");
}

TEST(UriResolveSteps, PathOrUriKind) {
  // With a scheme: a reference, escaped only if invalid (it is valid, having a scheme).
  EXPECT_EQ(R(u"http://x/y/z", u"ftp://h/a b", ZQUri::URISTR_PATH), u"ftp://h/a b");
  // Without: a path, whose '%' is a character of the name.
  EXPECT_EQ(R(u"http://x/y/z", u"a%20b", ZQUri::URISTR_PATH), u"http://x/y/a%2520b");
  EXPECT_EQ(R(u"http://x/y/z", u"a\\b", ZQUri::URISTR_PATH), u"http://x/y/a/b");
}

TEST(UriResolveSteps, PathAgainstPathBaseStaysUnescaped) {
  EXPECT_EQ(R(u"dir/x.xml", u"a b.xml", ZQUri::URISTR_PATH), u"dir/a b.xml");
  EXPECT_EQ(R(u"/home/u/x.xml", u"a b\\c.xml", ZQUri::URISTR_PATH), u"/home/u/a b/c.xml");
}

// ---- Step 5: repairs of file: references, one test per row ----

TEST(UriFileRepair, FileColonThenNonSlashIsRelative) {
  EXPECT_EQ(R(u"http://x/y/z", u"file:a.xml"), u"http://x/y/a.xml");
  EXPECT_EQ(R(kFileBase, u"FILE:../a.xml#f"), u"file:///C:/a.xml#f");
  EXPECT_EQ(R(u"http://x/y/z", u"file:http://h/a"), u"http://h/a");  // the rest has a scheme
}

TEST(UriFileRepair, ThreeSlashesWithDriveIsFinished) {
  EXPECT_EQ(R(u"http://x/y/z", u"file:///D:/a/../b.xml#f"), u"file:///D:/a/../b.xml#f");
  // The finished form keeps its shape, but a file has no query.
  EXPECT_EQ(R(kFileBase, u"file:///D:/a.xml?q#f"), u"file:///D:/a.xml#f");
}

TEST(UriFileRepair, ThreeSlashesTakeTheDriveOfAFileBase) {
  EXPECT_EQ(R(kFileBase, u"file:///a/b.xml#f"), u"file:///C:/a/b.xml#f");
  EXPECT_EQ(R(u"FILE:///e:/q/r.xml", u"file:///a.xml"), u"FILE:///e:/a.xml");
}

TEST(UriFileRepair, DriveTakenFromTheBaseBringsNoQuery) {
  // The base's first 11 characters may end in a query; a file result carries none.
  EXPECT_EQ(R(u"file:///C:?x/y", u"file:///a.xml#f"), u"file:///C:#f");
}

TEST(UriFileRepair, ThreeSlashesOtherwiseStand) {
  EXPECT_EQ(R(u"http://x/y/z", u"file:///a.xml#f"), u"file:///a.xml#f");
  EXPECT_EQ(R(u"file:///home/u/x.xml", u"file:///a.xml"), u"file:///a.xml");
  EXPECT_EQ(R(u"file://srv/C:/x", u"file:///a.xml"), u"file:///a.xml");  // drive not at 8
}

TEST(UriFileRepair, TwoSlashesWithDriveGetThreeAndLoseTheQuery) {
  EXPECT_EQ(R(u"http://x/y/z", u"file://C:/a.xml?q=1#f"), u"file:///C:/a.xml#f");
}

TEST(UriFileRepair, TwoSlashesWithServerStand) {
  EXPECT_EQ(R(kFileBase, u"file://server/share/a.xml#f"), u"file://server/share/a.xml#f");
}

TEST(UriFileRepair, OneSlashWithDriveKeepsTwoSlashes) {
  ZQUri u(ZQUri(kFileBase, ZQUri::URISTR_URI), u"file:/D:/a.xml#f", ZQUri::URISTR_URI);
  EXPECT_EQ(str(u), u"file://D:/a.xml#f");
  u.removeFragment(false);
  EXPECT_EQ(str(u.getLocalPath()), u"D:\\a.xml");
}

TEST(UriFileRepair, OneSlashWithoutDriveTakesNoDriveFromTheBase) {
  EXPECT_EQ(R(kFileBase, u"file:/a/b.xml#f"), u"file:///a/b.xml#f");
}

TEST(UriFileRepair, FileColonAloneHasAScheme) {
  EXPECT_EQ(R(kFileBase, u"file:"), u"file:");
  EXPECT_EQ(R(kFileBase, u"file:#f"), u"file:#f");
}

// ---- Steps 6 and 7: no resolution ----

TEST(UriResolveSteps, ReferenceWithSchemeIsNeverResolvedNorNormalised) {
  EXPECT_EQ(R(u"http://x/y/z", u"HTTP://Y/./a/../b"), u"HTTP://Y/./a/../b");
  EXPECT_EQ(R(u"http://x/y/z", u"http:a"), u"http:a");  // no same-scheme rule
  EXPECT_EQ(R(u"http://x/y/z", u"mailto:a@b"), u"mailto:a@b");
}

TEST(UriResolveSteps, BaseWithoutSlashOrDotSlashIsNoBase) {
  EXPECT_EQ(R(u"./", u"a b.xml"), u"a%20b.xml");
  EXPECT_EQ(R(u"urn:isbn:1", u"a.xml"), u"a.xml");
  EXPECT_EQ(R(u"abc", u"../a.xml"), u"../a.xml");
  EXPECT_EQ(str(UriProbe::resolve(u"", u"a/./b", 0)), u"a/./b");
}

// ---- Step 8: split of the base ----

TEST(UriResolveSplit, NetworkPathBaseWithoutScheme) {
  EXPECT_EQ(R(u"//host/a/b", u"c"), u"//host/a/c");
  EXPECT_EQ(R(u"//host/a/b", u"/r"), u"//host/r");
  EXPECT_EQ(R(u"//host", u"c"), u"//host/c");
  EXPECT_EQ(R(u"//host", u"../c"), u"//host/../c");
}

TEST(UriResolveSplit, PathBaseWithoutScheme) {
  EXPECT_EQ(R(u"dir/a.xml", u"b.xml"), u"dir/b.xml");
  EXPECT_EQ(R(u"/abs/a.xml", u"/r.xml"), u"/r.xml");
  EXPECT_EQ(R(u"/home/u/d/a.xml", u"../c.xml"), u"/home/u/c.xml");
}

TEST(UriResolveSplit, OnlyTheBaseSchemeIsLowerCased) {
  EXPECT_EQ(R(u"HTTP://X/y/z", u"a"), u"http://X/y/a");
  EXPECT_EQ(R(u"Ftp://h/a/b", u"c"), u"ftp://h/a/c");
  EXPECT_EQ(R(u"URN:a/b", u"c"), u"urn:a/c");
  EXPECT_EQ(R(u"http://x/y", u"FTP://Q/r"), u"FTP://Q/r");
}

TEST(UriResolveSplit, HttpDropsTheBaseQuery) {
  EXPECT_EQ(R(u"http://x/y/z?old", u"a"), u"http://x/y/a");
  EXPECT_EQ(R(u"http://x?q/r", u"a"), u"http://x/a");
  EXPECT_EQ(R(u"https://x/y/z?o", u"/a?n"), u"https://x/a?n");
}

TEST(UriResolveSplit, HttpWithoutPathGetsASlash) {
  EXPECT_EQ(R(u"http://x", u"a"), u"http://x/a");
  EXPECT_EQ(R(u"https://x", u"/a"), u"https://x/a");
}

TEST(UriResolveSplit, HttpNetworkPathKeepsOnlyTheScheme) {
  EXPECT_EQ(R(u"https://x/y", u"//h/p/../q"), u"https://h/q");
}

TEST(UriResolveSplit, HttpWithoutSlashesIsAnotherScheme) {
  EXPECT_EQ(R(u"http:a/b", u"c"), u"http:a/c");
}

TEST(UriResolveSplit, JarSplitsAtTheLastBangSlash) {
  EXPECT_EQ(R(u"jar:file:///a.zip!/b.zip!/c/d.xml", u"/e.xml"), u"jar:file:///a.zip!/b.zip!/e.xml");
  EXPECT_EQ(R(u"jar:file:///a.zip!/c/d.xml", u"../../e.xml"), u"jar:file:///a.zip!/../e.xml");
}

TEST(UriResolveSplit, JarWithoutBangSlashHasNoPrefix) {
  EXPECT_EQ(R(u"JAR:file:///C:/b.zip", u"a"), u"jar:file:///C:/a");
  EXPECT_EQ(R(u"jar:file:///C:/b.zip", u"/a"), u"/a");
}

TEST(UriResolveSplit, OtherSchemeWithAuthority) {
  EXPECT_EQ(R(u"ftp://h/a/b", u"c"), u"ftp://h/a/c");
  EXPECT_EQ(R(u"ftp://h", u"c"), u"ftp://h/c");
  EXPECT_EQ(R(u"ftp://h/a/b", u"/c"), u"ftp://h/c");
  EXPECT_EQ(R(u"file://server/share/d/x.xml", u"/r.xml"), u"file://server/r.xml");
}

TEST(UriResolveSplit, FileDriveBelongsToThePrefix) {
  EXPECT_EQ(R(kFileBase, u"../a"), u"file:///C:/a");
  EXPECT_EQ(R(kFileBase, u"../../a"), u"file:///C:/../a");
  EXPECT_EQ(R(u"file://C:/x/y.xml", u"/a"), u"file://C:/a");
}

TEST(UriResolveSplit, FileDriveWithoutSlashGetsOne) {
  EXPECT_EQ(R(u"file:///C:dir", u"a"), u"file:///C:/a");
  EXPECT_EQ(R(u"file:///C:dir/x", u"a"), u"file:///C:/dir/a");
  EXPECT_EQ(R(u"file:///C:", u"a"), u"file:///C:/a");
}

TEST(UriResolveSplit, OtherSchemeWithoutAuthorityHasNoPrefix) {
  EXPECT_EQ(R(u"urn:a/b/c", u"d"), u"urn:a/b/d");
  EXPECT_EQ(R(u"urn:a/b/c", u"/d"), u"/d");
}

// ---- Step 9: join to the base directory ----

TEST(UriResolveJoin, BasePathEndingInDot) { EXPECT_EQ(R(u"http://x/a/.", u"b"), u"http://x/a/b"); }

TEST(UriResolveJoin, BasePathEndingInDotDot) {
  EXPECT_EQ(R(u"http://x/a/b/..", u"c"), u"http://x/a/c");
}

TEST(UriResolveJoin, BasePathEndingInSlash) { EXPECT_EQ(R(u"http://x/a/", u"b"), u"http://x/a/b"); }

TEST(UriResolveJoin, BasePathLosesItsLastSegment) {
  EXPECT_EQ(R(u"http://x/a/b.html", u"c"), u"http://x/a/c");
  EXPECT_EQ(R(u"http://x/a.b/", u"c"), u"http://x/a.b/c");
}

// ---- Step 10: dot segments ----

TEST(UriResolveDots, InteriorDotsAreRemoved) {
  EXPECT_EQ(R(u"http://x/y/z", u"./a"), u"http://x/y/a");
  EXPECT_EQ(R(u"http://x/y/z", u"a/./././b"), u"http://x/y/a/b");
  EXPECT_EQ(R(u"http://x/y/z", u"a/b/../../c"), u"http://x/y/c");
  EXPECT_EQ(R(u"http://x/y/z", u"a/./../b"), u"http://x/y/b");
  EXPECT_EQ(R(u"http://x/y/z", u"..//a"), u"http://x//a");
}

TEST(UriResolveDots, TrailingDotsStay) {
  EXPECT_EQ(R(u"http://x/y/z", u"a/."), u"http://x/y/a/.");
  EXPECT_EQ(R(u"http://x/y/z", u"a/.."), u"http://x/y/a/..");
  EXPECT_EQ(R(u"http://x/y/z", u"."), u"http://x/y/.");
  EXPECT_EQ(R(u"http://x/y/z", u".."), u"http://x/y/..");
}

TEST(UriResolveDots, FirstUnresolvableParentEndsTheWork) {
  // "d/../" has no '/' before it, so the later "b/../" stays as well.
  EXPECT_EQ(R(u"d/x.xml", u"../a/b/../c"), u"d/../a/b/../c");
}

TEST(UriResolveDots, PrefixIsNotTouched) {
  EXPECT_EQ(R(u"jar:file:///a/./b/../c.zip!/d/e", u"f"), u"jar:file:///a/./b/../c.zip!/d/f");
  EXPECT_EQ(R(u"http://h/./x/y", u"../../../a"), u"http://h/../../a");
}

namespace {

using uritest::toldDotLoop;

}  // namespace

TEST(UriResolveDots, LinearRemovalAgreesWithTheToldLoop) {
  std::mt19937 rng(12345);
  const char16_t alphabet[] = {u'/', u'.', u'a', u'/', u'.'};
  for (int round = 0; round < 20000; ++round) {
    std::u16string s(rng() % 24, u'a');
    for (auto& c : s) c = alphabet[rng() % 5];
    std::u16string fast = s;
    fast.resize(uritext::removeDotSegments(fast.data(), fast.size()));
    ASSERT_EQ(fast, toldDotLoop(s)) << "input " << std::string(s.begin(), s.end());
  }
}

TEST(UriResolveDots, LongHostileReferenceResolves) {
  std::u16string ref;
  for (int i = 0; i < 100000; ++i) ref += u"a/./";
  for (int i = 0; i < 100000; ++i) ref += u"../";
  ref += u"z";
  std::u16string r = R(u"http://x/y/", ref.c_str());
  EXPECT_EQ(r, u"http://x/y/z");
}

// ---- Steps 11 and 12 ----

TEST(UriResolveSteps, MergedFileResultLosesItsQuery) {
  EXPECT_EQ(R(kFileBase, u"a.xml?q=1#f"), u"file:///C:/x/a.xml#f");
  EXPECT_EQ(R(kFileBase, u"?q"), u"file:///C:/x/");
}

// ---- Departures from RFC 3986 ----

TEST(UriDepartures, FileResultsNeverCarryAQuery) {
  EXPECT_EQ(R(kFileBase, u"file:///D:/a.xml?q"), u"file:///D:/a.xml");
  EXPECT_EQ(R(kFileBase, u"file:///a.xml?q"), u"file:///C:/a.xml");
  EXPECT_EQ(R(kFileBase, u"file://server/share/a.xml?q#f"), u"file://server/share/a.xml#f");
  EXPECT_EQ(R(kFileBase, u"file:/home/a.xml?q"), u"file:///home/a.xml");
  EXPECT_EQ(R(kFileBase, u"b.xml?q"), u"file:///C:/x/b.xml");
  EXPECT_EQ(R(u"http://x/y", u"b?q"), u"http://x/b?q");  // other schemes keep theirs
}

TEST(UriDepartures, EmptyReferenceIsNotTheBase) { EXPECT_EQ(R(u"http://x/y", u""), u""); }

TEST(UriDepartures, FragmentOnlyStaysFragmentOnly) { EXPECT_EQ(R(u"http://x/y?q", u"#f"), u"#f"); }

TEST(UriDepartures, QueryOnlyIsMergedLikeAPath) {
  EXPECT_EQ(R(u"http://x/a/b", u"?q"), u"http://x/a/?q");
}

TEST(UriDepartures, SchemeReferenceIsNeitherResolvedNorDotNormalised) {
  EXPECT_EQ(R(u"http://x/a/b", u"http://x/a/./../c"), u"http://x/a/./../c");
}

TEST(UriDepartures, OnlyInteriorDotSegmentsGo) {
  EXPECT_EQ(R(u"http://x/a/b", u"c/.."), u"http://x/a/c/..");
  EXPECT_EQ(R(u"http://x/a/b/.", u"c"), u"http://x/a/b/c");
}

TEST(UriDepartures, SurplusParentsAtTheRootAreKept) {
  EXPECT_EQ(R(u"http://x/a", u"../../b"), u"http://x/../../b");
}

TEST(UriDepartures, BaseWithoutSlashIsNoBase) {
  EXPECT_EQ(R(u"mailto:x@y", u"a"), u"a");
  EXPECT_EQ(R(u"./", u"a"), u"a");
}

TEST(UriDepartures, HttpBaseQueryIsDroppedForPathReferences) {
  EXPECT_EQ(R(u"http://x/a?b/c", u"d"), u"http://x/d");
}

TEST(UriDepartures, MergedFileResultsCarryNoQuery) {
  EXPECT_EQ(R(u"file:///home/u/a.xml", u"b.xml?x"), u"file:///home/u/b.xml");
  EXPECT_EQ(str(ZQUri(u"C:\\a.xml?x", ZQUri::URISTR_URI)), u"file:///C:/a.xml");
}

TEST(UriDepartures, SchemeCaseOnlyFoldedInTheBase) {
  EXPECT_EQ(R(u"HTTPS://x/a", u"b"), u"https://x/b");
  EXPECT_EQ(R(u"https://x/a", u"HTTPS://x/b"), u"HTTPS://x/b");
}

TEST(UriDepartures, DriveLetterActsAsAuthority) {
  EXPECT_EQ(R(u"file:///D:/p/q/r.xml", u"/s.xml"), u"file:///D:/s.xml");
  EXPECT_EQ(R(u"file:///D:/p/r.xml", u"../../../s.xml"), u"file:///D:/../../s.xml");
}
