#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "common/ZQName.h"

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

}  // namespace
