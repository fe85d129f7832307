#include <gtest/gtest.h>

#include <unistd.h>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

#include "TestSupport.h"
#include "common/ZQUtil.h"

using namespace ZQCommonNS;

namespace {

using zqtest::utf8;

std::string encode(const std::string& bytes) {
  std::istringstream in(bytes);
  return utf8(ZQUtil::encodeBase64(in, static_cast<int>(bytes.size())));
}

std::string decode(const UnicodeString& text, int length = -2) {
  std::ostringstream out;
  ZQUtil::decodeBase64(text.getBuffer(), length == -2 ? text.length() : length, out);
  return out.str();
}

std::string randomBytes(std::mt19937& rng, size_t n) {
  std::string s(n, '\0');
  for (auto& c : s) c = static_cast<char>(rng() & 0xFF);
  return s;
}

std::filesystem::path tempDir() {
  const char* env = std::getenv("ZQ_TEST_TMP");
  std::filesystem::path dir = env ? env : std::filesystem::temp_directory_path();
  std::filesystem::create_directories(dir);
  return dir;
}

// The system's own encoder, for comparison.
bool cliBase64(const std::string& bytes, std::string& result) {
  std::filesystem::path file = tempDir() / ("zq_b64_" + std::to_string(getpid()) + ".bin");
  {
    std::ofstream f(file, std::ios::binary);
    f.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }
  std::string cmd = "base64 -w0 '" + file.string() + "'";
  FILE* p = popen(cmd.c_str(), "r");
  if (!p) return false;
  result.clear();
  char buf[4096];
  size_t n;
  while ((n = fread(buf, 1, sizeof buf, p)) > 0) result.append(buf, n);
  int rc = pclose(p);
  std::filesystem::remove(file);
  return rc == 0;
}

// A stream buffer that hands out its bytes a few at a time, as a pipe would.
class TrickleBuf : public std::streambuf {
 public:
  TrickleBuf(const std::string& data, size_t step) : m_data(data), m_step(step) {}

 protected:
  int_type underflow() override {
    if (m_pos >= m_data.size()) return traits_type::eof();
    size_t n = std::min(m_step, m_data.size() - m_pos);
    char* p = const_cast<char*>(m_data.data()) + m_pos;
    setg(p, p, p + n);
    m_pos += n;
    return traits_type::to_int_type(*p);
  }

 private:
  std::string m_data;
  size_t m_step;
  size_t m_pos = 0;
};

}  // namespace

TEST(ZQUtilBase64, StandardVectors) {
  EXPECT_EQ(encode(""), "");
  EXPECT_EQ(encode("f"), "Zg==");
  EXPECT_EQ(encode("fo"), "Zm8=");
  EXPECT_EQ(encode("foo"), "Zm9v");
  EXPECT_EQ(encode("foob"), "Zm9vYg==");
  EXPECT_EQ(encode("fooba"), "Zm9vYmE=");
  EXPECT_EQ(encode("foobar"), "Zm9vYmFy");
  EXPECT_EQ(encode(std::string("\xFB\xFF\xBF", 3)), "+/+/");
  EXPECT_EQ(decode(u"Zm9vYmFy"), "foobar");
  EXPECT_EQ(decode(u"Zm9vYg=="), "foob");
  EXPECT_EQ(decode(u"Zm9vYmE="), "fooba");
}

TEST(ZQUtilBase64, MatchesTheSystemEncoderOnRandomData) {
  std::mt19937 rng(20240611);
  const size_t sizes[] = {1, 2, 3, 4, 57, 3071, 3072, 3073, 6145, 10000, 65537};
  for (size_t n : sizes) {
    std::string bytes = randomBytes(rng, n);
    std::string expected;
    ASSERT_TRUE(cliBase64(bytes, expected)) << "the base64 tool did not run";
    ASSERT_FALSE(expected.empty());
    EXPECT_EQ(encode(bytes), expected) << n << " bytes";
    EXPECT_EQ(decode(UnicodeString::fromUTF8(expected)), bytes) << n << " bytes";
  }
}

TEST(ZQUtilBase64, ShortReadsFromTheStreamGiveTheSameText) {
  std::mt19937 rng(7);
  std::string bytes = randomBytes(rng, 9000);
  std::string whole = encode(bytes);
  for (size_t step : {1u, 2u, 5u, 3071u, 4096u}) {
    TrickleBuf buf(bytes, step);
    std::istream in(&buf);
    EXPECT_EQ(utf8(ZQUtil::encodeBase64(in, 0)), whole) << step;
  }
}

TEST(ZQUtilBase64, SizeIsOnlyAHint) {
  std::istringstream in("hello world");
  EXPECT_EQ(utf8(ZQUtil::encodeBase64(in, 2)), "aGVsbG8gd29ybGQ=");
  std::istringstream in2("hello");
  EXPECT_EQ(utf8(ZQUtil::encodeBase64(in2, -5)), "aGVsbG8=");
}

TEST(ZQUtilBase64, FailedStreamGivesEmptyText) {
  std::istringstream in("data");
  in.setstate(std::ios::failbit);
  EXPECT_EQ(utf8(ZQUtil::encodeBase64(in, 4)), "");
}

TEST(ZQUtilBase64, StreamWithExceptionsDoesNotThrow) {
  std::istringstream in("abcd");
  in.exceptions(std::ios::failbit | std::ios::badbit);
  UnicodeString r;
  EXPECT_NO_THROW(r = ZQUtil::encodeBase64(in, 4));
  EXPECT_EQ(utf8(r), "YWJjZA==");
}

TEST(ZQUtilBase64, DataUriForm) {
  std::istringstream in("<a/>");
  EXPECT_EQ(utf8(ZQUtil::encodeBase64(in, 4, u"text/xml", u"utf-8")),
            "data:text/xml;charset=utf-8;base64,PGEvPg==");
  std::istringstream in2(std::string("\x89PNG", 4));
  EXPECT_EQ(utf8(ZQUtil::encodeBase64(in2, 4, u"image/png", UnicodeString())),
            "data:image/png;base64,iVBORw==");
  std::istringstream in3("");
  EXPECT_EQ(utf8(ZQUtil::encodeBase64(in3, 0, UnicodeString(), UnicodeString())), "data:;base64,");
}

TEST(ZQUtilBase64, LineBreaksGiveTheSameBytes) {
  std::mt19937 rng(99);
  std::string bytes = randomBytes(rng, 1000);
  std::string text = encode(bytes);
  std::string wrapped;
  for (size_t i = 0; i < text.size(); i += 76) wrapped += text.substr(i, 76) + "\r\n";
  EXPECT_EQ(decode(UnicodeString::fromUTF8(wrapped)), decode(UnicodeString::fromUTF8(text)));
  EXPECT_EQ(decode(UnicodeString::fromUTF8(wrapped)), bytes);
}

TEST(ZQUtilBase64, CharactersOutsideTheAlphabetAreSkipped) {
  EXPECT_EQ(decode(u" Zm 9v\tY-m_F\u00E9y\U0001F600 "), "foobar");
  EXPECT_EQ(decode(u"!!!"), "");
}

TEST(ZQUtilBase64, StopsAtTheFirstEqualsSign) {
  EXPECT_EQ(decode(u"Zm8=Zm9v"), "fo");
  EXPECT_EQ(decode(u"=Zm9v"), "");
  EXPECT_EQ(decode(u"Zm9v=YmFy"), "foo");
}

TEST(ZQUtilBase64, UnfinishedBytesAreDropped) {
  EXPECT_EQ(decode(u"Z"), "");
  EXPECT_EQ(decode(u"Zm"), "f");
  EXPECT_EQ(decode(u"Zm9"), "fo");
  EXPECT_EQ(decode(u"Zm9vY"), "foo");
}

TEST(ZQUtilBase64, LengthLimitsAndNulTermination) {
  UnicodeString t(u"Zm9vYmFy");
  EXPECT_EQ(decode(t, 4), "foo");
  EXPECT_EQ(decode(t, 0), "");
  std::ostringstream out;
  ZQUtil::decodeBase64(u"Zm9vYmFy", -1, out);
  EXPECT_EQ(out.str(), "foobar");
  ZQUtil::decodeBase64(nullptr, 10, out);
  EXPECT_EQ(out.str(), "foobar");
}

TEST(ZQUtilBase64, LongMixedInputRoundTrips) {
  std::mt19937 rng(3);
  std::string bytes = randomBytes(rng, 100000);
  std::string text = encode(bytes);
  // Junk at irregular places forces the slow path between fast groups.
  std::string noisy;
  for (size_t i = 0; i < text.size(); ++i) {
    noisy += text[i];
    if (rng() % 13 == 0) noisy += (rng() & 1) ? " " : "\n";
  }
  EXPECT_EQ(decode(UnicodeString::fromUTF8(noisy)), bytes);
}
