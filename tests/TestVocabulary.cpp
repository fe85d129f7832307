#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "common/ZQName.h"

#include "TestSupport.h"

using namespace ZQCommonNS;

namespace {

// The data file is the source of truth; the table must agree with it line by line.
std::vector<std::string> readVocabulary() {
  std::ifstream in(std::string(ZQ_SOURCE_DIR) + "/data/builtin-names.txt");
  std::vector<std::string> names;
  std::string line;
  while (std::getline(in, line)) {
    if (line.empty() || line.rfind("# ", 0) == 0) continue;
    names.push_back(line.substr(0, line.find('\t')));
  }
  return names;
}

TEST(Vocabulary, HasExactly3007DistinctNames) {
  auto names = readVocabulary();
  ASSERT_EQ(names.size(), 3007u);
  std::set<std::string> distinct(names.begin(), names.end());
  EXPECT_EQ(distinct.size(), 3007u);
  EXPECT_EQ(ZQ_BUILTIN_NAME_COUNT, 3008);
}

TEST(Vocabulary, EveryNameRoundTrips) {
  auto names = readVocabulary();
  ASSERT_EQ(names.size(), 3007u);
  for (size_t i = 0; i < names.size(); ++i) {
    UnicodeString text = UnicodeString::fromUTF8(names[i]);
    auto expected = static_cast<ZQNameEnum>(i + 1);
    ZQName name(text);
    ASSERT_EQ(static_cast<ZQNameEnum>(name), expected) << names[i];
    ASSERT_TRUE(name.isBuiltin());
    ASSERT_EQ(name.toString(), text) << names[i];
    ASSERT_EQ(ZQNameTable::getBuiltinNameEnum(text), expected);
    ASSERT_EQ(ZQNameTable::getBuiltinNameString(expected), text);
  }
}

TEST(Vocabulary, KnownNumbers) {
  EXPECT_EQ(ZQN_ANSI_X3_4, 1);
  EXPECT_EQ(ZQN_Complete, 40);
  EXPECT_EQ(ZQN_percent, 177);
  EXPECT_EQ(ZQN_hash_CMYK, 178);
  EXPECT_EQ(ZQN_abs, 188);
  EXPECT_EQ(ZQN_currentColor, 483);
  EXPECT_EQ(ZQN_currentcolor, 2882);
  EXPECT_EQ(ZQN_zoom, 1641);
  EXPECT_EQ(ZQN_x_height, 3007);
  EXPECT_EQ(ZQName(UnicodeString(u"alternate stylesheet")), static_cast<ZQNameEnum>(1692));
  EXPECT_EQ(ZQName(UnicodeString(u"and korean-hanja-formal")), static_cast<ZQNameEnum>(2720));
  EXPECT_EQ(ZQName(UnicodeString(u"##RGBA")), static_cast<ZQNameEnum>(2499));
}

TEST(Vocabulary, NamespacesUseStandardUrisAndTheVendorRoot) {
  EXPECT_EQ(ZQName(ZQN_NS_ZQ_RX_LAYOUT).toString(),
            UnicodeString(u"http://www.zqcommon.org/names/RX/Layout"));
  EXPECT_EQ(static_cast<int>(ZQN_NS_ZQ_RX_LAYOUT), 756);
  EXPECT_EQ(static_cast<int>(ZQN_NS_MATHML), 760);
  EXPECT_EQ(ZQName(ZQN_NS_XSL_FO).toString(), UnicodeString(u"http://www.w3.org/1999/XSL/Format"));
  EXPECT_EQ(static_cast<int>(ZQN_NS_XSL_FO), 761);
  EXPECT_EQ(ZQName(ZQN_NS_XML).toString(), UnicodeString(u"http://www.w3.org/XML/1998/namespace"));
  EXPECT_EQ(static_cast<int>(ZQN_NS_XML), 765);
  EXPECT_EQ(ZQName(ZQN_NS_XMLNS).toString(), UnicodeString(u"http://www.w3.org/2000/xmlns/"));
  EXPECT_EQ(static_cast<int>(ZQN_NS_XHTML), 1912);
  EXPECT_EQ(ZQName(ZQN_NS_XINCLUDE).toString(), UnicodeString(u"http://www.w3.org/2001/XInclude"));
  EXPECT_EQ(static_cast<int>(ZQN_NS_XINCLUDE), 2305);
  EXPECT_EQ(static_cast<int>(ZQN_NS_RDF), 2304);
}

TEST(Vocabulary, BadEnumReadsAsEmpty) {
  EXPECT_TRUE(ZQName(static_cast<ZQNameEnum>(-7)).toString().isEmpty());
  EXPECT_TRUE(ZQNameTable::getBuiltinNameString(static_cast<ZQNameEnum>(123456)).isEmpty());
}

// Block boundaries of the vocabulary, written down independently of the data file: the first
// and the last name of every block of forty.
TEST(Vocabulary, BlockBoundariesHaveTheirNumbers) {
  struct Row {
    int number;
    const char16_t* text;
  };
  const Row rows[] = {
      {1, u"ANSI_X3.4"},
      {40, u"Complete"},
      {41, u"Cyrl"},
      {80, u"ISO-8859-1"},
      {81, u"ISO_8859-1"},
      {120, u"PUBLIC"},
      {121, u"PageReferenceArea"},
      {160, u"UCS-2"},
      {161, u"UCS-4"},
      {200, u"adjacent"},
      {201, u"afr"},
      {240, u"append-non-starter-characters"},
      {241, u"appworkspace"},
      {280, u"baseline"},
      {281, u"baseline-after"},
      {320, u"border-after-color"},
      {321, u"border-after-precedence"},
      {360, u"border-top-right-radius"},
      {361, u"border-top-style"},
      {400, u"center-left"},
      {401, u"center-right"},
      {440, u"column-gap"},
      {441, u"column-number"},
      {480, u"cue"},
      {481, u"cue-after"},
      {520, u"diagonal-border-color"},
      {521, u"diagonal-border-style"},
      {560, u"end-indent"},
      {561, u"end-intrusion-adjustment"},
      {600, u"field-button-icon"},
      {601, u"field-button-icon-down"},
      {640, u"fitwindow"},
      {641, u"fixed"},
      {680, u"footnote-number-format"},
      {681, u"footnote-number-initial"},
      {720, u"glyph-width"},
      {721, u"gold"},
      {760, u"http://www.w3.org/1998/Math/MathML"},
      {761, u"http://www.w3.org/1999/XSL/Format"},
      {800, u"inactivecaptionText"},
      {801, u"ind"},
      {840, u"intrinsic-scale-value"},
      {841, u"intrusion-displace"},
      {880, u"kor"},
      {881, u"label-end"},
      {920, u"length-range"},
      {921, u"letter-spacing"},
      {960, u"line-number-display-align"},
      {961, u"line-number-font-family"},
      {1000, u"lr-tb"},
      {1001, u"lt"},
      {1040, u"merge-property-values"},
      {1041, u"merge-ranges-across-index-key-references"},
      {1080, u"no-change"},
      {1081, u"no-force"},
      {1120, u"optimum"},
      {1121, u"orange"},
      {1160, u"padding-box"},
      {1161, u"padding-end"},
      {1200, u"pdf-settings"},
      {1201, u"peachpuff"},
      {1240, u"punctuation-wrap"},
      {1241, u"purple"},
      {1280, u"reset"},
      {1281, u"reset-size"},
      {1320, u"rtl"},
      {1321, u"rule"},
      {1360, u"simple-page-master"},
      {1361, u"single-page-master-reference"},
      {1400, u"springgreen"},
      {1401, u"sqi"},
      {1440, u"table-auto-layout-limit"},
      {1441, u"table-body"},
      {1480, u"text-settings"},
      {1481, u"text-shadow"},
      {1520, u"twip"},
      {1521, u"type"},
      {1560, u"wave"},
      {1561, u"wheat"},
      {1600, u"xsl-before-float"},
      {1601, u"xsl-before-float-separator"},
      {1640, u"zho-TWN"},
      {1641, u"zoom"},
      {1680, u"-n"},
      {1681, u"a"},
      {1720, u"block-direction"},
      {1721, u"block-flow"},
      {1760, u"break-word"},
      {1761, u"bt"},
      {1800, u"contain"},
      {1801, u"content"},
      {1840, u"ethiopic-abegede-gez"},
      {1841, u"ethiopic-abegede-ti-er"},
      {1880, u"fullwidth-upper-latin"},
      {1881, u"fullwidth-upper-roman"},
      {1920, u"hyphenate-lines"},
      {1921, u"hyphenate-resource"},
      {1960, u"left-top"},
      {1961, u"li"},
      {2000, u"nfkd"},
      {2001, u"no-clip"},
      {2040, u"punctuation-trim-adjacent"},
      {2041, u"punctuation-trim-close"},
      {2080, u"somali"},
      {2081, u"source"},
      {2120, u"textarea"},
      {2121, u"tfoot"},
      {2160, u"vw"},
      {2161, u"wbr"},
      {2200, u"alphanumeric"},
      {2201, u"annotation"},
      {2240, u"discretionary-ligatures"},
      {2241, u"distribute-letter"},
      {2280, u"font-variant-alternates"},
      {2281, u"font-variant-caps"},
      {2320, u"jis78"},
      {2321, u"jis83"},
      {2360, u"op"},
      {2361, u"opentype"},
      {2400, u"ruby-container"},
      {2401, u"ruby-font-family"},
      {2440, u"swash"},
      {2441, u"symbols"},
      {2480, u"unicase"},
      {2481, u"upright"},
      {2520, u"bik"},
      {2521, u"bin"},
      {2560, u"gez"},
      {2561, u"gla"},
      {2600, u"kpe"},
      {2601, u"kru"},
      {2640, u"nso"},
      {2641, u"nya"},
      {2680, u"sid"},
      {2681, u"sin"},
      {2720, u"and korean-hanja-formal"},
      {2721, u"and trad-chinese-formal"},
      {2760, u"korean-hangul-formal"},
      {2761, u"korean-hanja-formal"},
      {2800, u"relative-link"},
      {2801, u"right-page-master-reference"},
      {2840, u"headers"},
      {2841, u"line-number-show"},
      {2880, u"cross-filled-circle"},
      {2881, u"cross-filled-double-circle"},
      {2920, u"image-orientation"},
      {2921, u"index-page-citation-range-f-suffix"},
      {2960, u"region-alternative"},
      {2961, u"region-condition"},
      {3000, u"initial-letters-first-line-head-height"},
      {3001, u"initial-letters-text-align"},
      {3007, u"x-height"},
  };
  for (const Row& r : rows) {
    UnicodeString text(r.text);
    EXPECT_EQ(static_cast<int>(ZQNameTable::getBuiltinNameEnum(text)), r.number)
        << zqtest::utf8(text);
    EXPECT_EQ(ZQNameTable::getBuiltinNameString(static_cast<ZQNameEnum>(r.number)), text)
        << r.number;
  }
}

// Every namespace row: standard namespaces by their standard URIs, vendor ones under one root.
TEST(Vocabulary, EveryNamespaceRow) {
  struct Row {
    ZQNameEnum name;
    int number;
    const char16_t* uri;
  };
  const Row rows[] = {
      {ZQN_NS_ZQ_RX_LAYOUT, 756, u"http://www.zqcommon.org/names/RX/Layout"},
      {ZQN_NS_ZQ_XSL_AREATREE, 757, u"http://www.zqcommon.org/names/XSL/AreaTree"},
      {ZQN_NS_ZQ_XSL_EXTENSIONS, 758, u"http://www.zqcommon.org/names/XSL/Extensions"},
      {ZQN_NS_ZQ_XSL_ZWO, 759, u"http://www.zqcommon.org/names/XSL/ZWO"},
      {ZQN_NS_MATHML, 760, u"http://www.w3.org/1998/Math/MathML"},
      {ZQN_NS_XSL_FO, 761, u"http://www.w3.org/1999/XSL/Format"},
      {ZQN_NS_XSLT, 762, u"http://www.w3.org/1999/XSL/Transform"},
      {ZQN_NS_SVG, 763, u"http://www.w3.org/2000/svg"},
      {ZQN_NS_XMLNS, 764, u"http://www.w3.org/2000/xmlns/"},
      {ZQN_NS_XML, 765, u"http://www.w3.org/XML/1998/namespace"},
      {ZQN_NS_WORDML_2003, 1906, u"http://schemas.microsoft.com/office/word/2003/wordml"},
      {ZQN_NS_DRAWINGML_CHART, 1907, u"http://schemas.openxmlformats.org/drawingml/2006/chart"},
      {ZQN_NS_ZQ_CSS, 1908, u"http://www.zqcommon.org/names/CSS"},
      {ZQN_NS_ZQ_CHARTML, 1909, u"http://www.zqcommon.org/names/ChartML"},
      {ZQN_NS_ZQ_XSL_HYPHENATIONS, 1910, u"http://www.zqcommon.org/names/XSL/Hyphenations"},
      {ZQN_NS_ZQ_XSL_SETTINGS, 1911, u"http://www.zqcommon.org/names/XSL/Settings"},
      {ZQN_NS_XHTML, 1912, u"http://www.w3.org/1999/xhtml"},
      {ZQN_NS_XLINK, 1913, u"http://www.w3.org/1999/xlink"},
      {ZQN_NS_RDF, 2304, u"http://www.w3.org/1999/02/22-rdf-syntax-ns#"},
      {ZQN_NS_XINCLUDE, 2305, u"http://www.w3.org/2001/XInclude"},
  };
  for (const Row& r : rows) {
    EXPECT_EQ(static_cast<int>(r.name), r.number);
    EXPECT_EQ(ZQName(r.name).toString(), UnicodeString(r.uri)) << r.number;
    EXPECT_EQ(ZQName(UnicodeString(r.uri)), r.name) << r.number;
  }
}

}  // namespace
