// Number formatting checked against xsltproc's xsl:number for 1 to 4000: one stylesheet emits
// every number under every format in one run, and each line is compared with ours.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "common/ZQUtil.h"

using namespace ZQCommonNS;

namespace {

using zqtest::utf8;

constexpr int kLast = 4000;

struct Format {
  std::string format;     // UTF-8
  std::string separator;  // empty: no grouping attributes
  int size;
};

// The formats compared: the plain tokens, with and without grouping, and a few with prefix,
// suffix or the digits of other scripts.
const std::vector<Format>& formats() {
  static const std::vector<Format> list = {
      {"1", "", 0},
      {"01", "", 0},
      {"a", "", 0},
      {"A", "", 0},
      {"i", "", 0},
      {"I", "", 0},
      {"1", ",", 3},
      {"01", ",", 3},
      {"0001", ".", 2},
      {"a", ",", 1},
      {"A", ",", 2},
      {"i", ",", 1},
      {"I", ",", 3},
      {"(1)", "", 0},
      {"a)", "", 0},
      {"[I]", "", 0},
      {"\u0661", "", 0},
      {"\u0660\u0661", "", 0},
      {"\u0E50\u0E51", "", 0},
      {"\u0967", ",", 2},
  };
  return list;
}

std::string xmlEscaped(const std::string& s) {
  std::string out;
  for (char c : s) {
    if (c == '&')
      out += "&amp;";
    else if (c == '<')
      out += "&lt;";
    else if (c == '"')
      out += "&quot;";
    else
      out += c;
  }
  return out;
}

// A stylesheet that splits 1..kLast in halves (keeping the template depth small) and writes
// one line per number: the number, then each format's result, separated by tabs.
std::string stylesheet() {
  std::ostringstream s;
  s << "<xsl:stylesheet version='1.0' xmlns:xsl='http://www.w3.org/1999/XSL/Transform'>\n"
       "<xsl:output method='text' encoding='UTF-8'/>\n"
       "<xsl:template match='/'><xsl:call-template name='range'>"
       "<xsl:with-param name='lo' select='1'/><xsl:with-param name='hi' select='"
    << kLast
    << "'/></xsl:call-template></xsl:template>\n"
       "<xsl:template name='range'><xsl:param name='lo'/><xsl:param name='hi'/>"
       "<xsl:choose><xsl:when test='$lo = $hi'><xsl:value-of select='$lo'/>";
  for (const Format& f : formats()) {
    s << "<xsl:text>&#9;</xsl:text><xsl:number value='$lo' format=\"" << xmlEscaped(f.format)
      << "\"";
    if (!f.separator.empty())
      s << " grouping-separator=\"" << xmlEscaped(f.separator) << "\" grouping-size=\"" << f.size
        << "\"";
    s << "/>";
  }
  s << "<xsl:text>&#10;</xsl:text></xsl:when>"
       "<xsl:when test='$lo &lt; $hi'><xsl:variable name='mid' select='floor(($lo + $hi) div "
       "2)'/>"
       "<xsl:call-template name='range'><xsl:with-param name='lo' select='$lo'/>"
       "<xsl:with-param name='hi' select='$mid'/></xsl:call-template>"
       "<xsl:call-template name='range'><xsl:with-param name='lo' select='$mid + 1'/>"
       "<xsl:with-param name='hi' select='$hi'/></xsl:call-template></xsl:when></xsl:choose>"
       "</xsl:template>\n</xsl:stylesheet>\n";
  return s.str();
}

std::filesystem::path tempDir() {
  const char* env = std::getenv("ZQ_TEST_TMP");
  std::filesystem::path dir = env ? env : std::filesystem::temp_directory_path();
  std::filesystem::create_directories(dir);
  return dir;
}

// xsltproc's lines by number: each a list of results in the order of formats().
struct XsltRun {
  bool ok = false;
  std::string error;
  std::map<int, std::vector<std::string>> lines;
};

const XsltRun& xsltRun() {
  static const XsltRun run = [] {
    XsltRun r;
    const std::string stem = "zq_number_" + std::to_string(getpid());
    const auto xsl = tempDir() / (stem + ".xsl");
    const auto xml = tempDir() / (stem + ".xml");
    std::ofstream(xsl) << stylesheet();
    std::ofstream(xml) << "<x/>\n";
    const std::string cmd = "xsltproc '" + xsl.string() + "' '" + xml.string() + "' 2>&1";
    FILE* p = popen(cmd.c_str(), "r");
    std::string out;
    if (p != nullptr) {
      char buf[65536];
      size_t n;
      while ((n = fread(buf, 1, sizeof buf, p)) > 0) out.append(buf, n);
      r.ok = pclose(p) == 0;
    }
    std::filesystem::remove(xsl);
    std::filesystem::remove(xml);
    if (!r.ok) {
      r.error = "xsltproc (installed by scripts/bootstrap.sh) failed: " + out.substr(0, 500);
      return r;
    }
    std::istringstream in(out);
    std::string line;
    while (std::getline(in, line)) {
      std::vector<std::string> fields;
      size_t start = 0;
      for (size_t tab; (tab = line.find('\t', start)) != std::string::npos; start = tab + 1)
        fields.push_back(line.substr(start, tab - start));
      fields.push_back(line.substr(start));
      const int n = std::atoi(fields[0].c_str());
      fields.erase(fields.begin());
      r.lines[n] = std::move(fields);
    }
    return r;
  }();
  return run;
}

std::string ours(long long n, const Format& f) {
  return utf8(ZQUtil::formatNumber(n, UnicodeString::fromUTF8(f.format),
                                   UnicodeString::fromUTF8(f.separator), f.size, ZQLang(),
                                   ZQN_auto));
}

bool isRomanFormat(const Format& f) { return f.format.find_first_of("iI") != std::string::npos; }

}  // namespace

TEST(FormatNumberXslt, OneRunGivesEveryNumberUnderEveryFormat) {
  const XsltRun& run = xsltRun();
  ASSERT_TRUE(run.ok) << run.error;
  ASSERT_EQ(run.lines.size(), static_cast<size_t>(kLast));
  for (const auto& [n, fields] : run.lines) ASSERT_EQ(fields.size(), formats().size()) << n;
}

TEST(FormatNumberXslt, AgreesWhereverBothDefineTheNumber) {
  const XsltRun& run = xsltRun();
  ASSERT_TRUE(run.ok) << run.error;
  int compared = 0;
  for (size_t i = 0; i < formats().size(); ++i) {
    const Format& f = formats()[i];
    for (const auto& [n, fields] : run.lines) {
      // Our Roman numerals end below 4000; xsl:number goes on with repeated thousands.
      if (isRomanFormat(f) && n >= 4000) continue;
      ASSERT_EQ(ours(n, f), fields[i]) << "format \"" << f.format << "\" separator \""
                                       << f.separator << "\" size " << f.size << " n=" << n;
      ++compared;
    }
  }
  EXPECT_GT(compared, static_cast<int>(formats().size()) * (kLast - 2));
}

TEST(FormatNumberXslt, RomanAt4000DiffersOnPurpose) {
  const XsltRun& run = xsltRun();
  ASSERT_TRUE(run.ok) << run.error;
  const auto& fields = run.lines.at(4000);
  auto at = [&](const char* format, const char* sep) {
    for (size_t i = 0; i < formats().size(); ++i)
      if (formats()[i].format == format && formats()[i].separator == sep) return fields[i];
    return std::string("<missing>");
  };
  // xsl:number repeats M; lower-case Roman here ends at 3999 and goes decimal (grouped),
  // upper case goes on with U+2181 for five thousand.
  EXPECT_EQ(at("i", ""), "mmmm");
  EXPECT_EQ(ours(4000, {"i", "", 0}), "4000");
  EXPECT_EQ(at("i", ","), "mmmm");
  EXPECT_EQ(ours(4000, {"i", ",", 1}), "4,0,0,0");
  EXPECT_EQ(at("I", ""), "MMMM");
  EXPECT_EQ(ours(4000, {"I", "", 0}), "M\u2181");
  EXPECT_EQ(at("I", ","), "MMMM");
  EXPECT_EQ(ours(4000, {"I", ",", 3}), "M\u2181");
  EXPECT_EQ(at("[I]", ""), "[MMMM]");
  EXPECT_EQ(ours(4000, {"[I]", "", 0}), "[M\u2181]");
}
