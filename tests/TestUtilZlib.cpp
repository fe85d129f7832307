#include <gtest/gtest.h>

#include <unistd.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <string>

#include "common/ZQUtil.h"

using namespace ZQCommonNS;

namespace {

std::string randomText(std::mt19937& rng, size_t n) {
  // Compressible but not trivial: words from a small set.
  static const char* words[] = {"alpha ", "beta ", "gamma ", "delta\n", "\x01\x02", "zz"};
  std::string s;
  while (s.size() < n) s += words[rng() % 6];
  s.resize(n);
  return s;
}

std::string randomBytes(std::mt19937& rng, size_t n) {
  std::string s(n, '\0');
  for (auto& c : s) c = static_cast<char>(rng() & 0xFF);
  return s;
}

std::string zdeflate(const std::string& in, bool* ok = nullptr) {
  std::ostringstream out;
  bool r = ZQUtil::deflate(out, in.data(), static_cast<unsigned>(in.size()));
  if (ok) *ok = r;
  return out.str();
}

bool zinflate(const std::string& in, std::string& result, bool raw = false) {
  std::ostringstream out;
  bool r = raw ? ZQUtil::inflate2(out, in.data(), static_cast<unsigned>(in.size()))
               : ZQUtil::inflate(out, in.data(), static_cast<unsigned>(in.size()));
  result = out.str();
  return r;
}

std::filesystem::path tempFile(const std::string& name) {
  const char* env = std::getenv("ZQ_TEST_TMP");
  std::filesystem::path dir = env ? env : std::filesystem::temp_directory_path();
  std::filesystem::create_directories(dir);
  return dir / ("zq_zlib_" + std::to_string(getpid()) + "_" + name);
}

// Runs a python3 transformation of `input` through zlib's own module.
bool python(const std::string& expr, const std::string& input, std::string& output) {
  auto in = tempFile("in"), out = tempFile("out");
  {
    std::ofstream f(in, std::ios::binary);
    f.write(input.data(), static_cast<std::streamsize>(input.size()));
  }
  std::string cmd =
      "python3 -c \"import zlib,sys; d=open(sys.argv[1],'rb').read(); "
      "open(sys.argv[2],'wb').write(" +
      expr + ")\" '" + in.string() + "' '" + out.string() + "'";
  int rc = std::system(cmd.c_str());
  std::ifstream f(out, std::ios::binary);
  output.assign(std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>());
  std::filesystem::remove(in);
  std::filesystem::remove(out);
  return rc == 0;
}

}  // namespace

TEST(ZQUtilZlib, DeflateThenInflateRoundTrips) {
  std::mt19937 rng(1);
  for (size_t n : {0u, 1u, 100u, 4095u, 4096u, 4097u, 200000u}) {
    std::string data = randomText(rng, n);
    bool ok = false;
    std::string packed = zdeflate(data, &ok);
    EXPECT_TRUE(ok);
    std::string back;
    EXPECT_TRUE(zinflate(packed, back)) << n;
    EXPECT_EQ(back, data) << n;
  }
}

TEST(ZQUtilZlib, DeflateWritesAZlibStreamAtTheDefaultLevel) {
  std::string packed = zdeflate("hello hello hello hello");
  ASSERT_GE(packed.size(), 6u);
  EXPECT_EQ(static_cast<unsigned char>(packed[0]), 0x78);
  EXPECT_EQ(static_cast<unsigned char>(packed[1]), 0x9C);
}

TEST(ZQUtilZlib, IncompressibleDataLongerThanTheOutputBuffer) {
  std::mt19937 rng(2);
  std::string data = randomBytes(rng, 50000);
  std::string packed = zdeflate(data);
  EXPECT_GT(packed.size(), 50000u);
  std::string back;
  EXPECT_TRUE(zinflate(packed, back));
  EXPECT_EQ(back, data);
}

TEST(ZQUtilZlib, AgreesWithZlibsOwnModule) {
  std::mt19937 rng(5);
  std::string data = randomText(rng, 30000) + randomBytes(rng, 5000);
  std::string packed;
  ASSERT_TRUE(python("zlib.compress(d, 9)", data, packed));
  std::string back;
  EXPECT_TRUE(zinflate(packed, back));
  EXPECT_EQ(back, data);

  std::string raw;
  ASSERT_TRUE(python(
      "(lambda c: c.compress(d) + c.flush())(zlib.compressobj(6, zlib.DEFLATED, -15))", data, raw));
  EXPECT_TRUE(zinflate(raw, back, true));
  EXPECT_EQ(back, data);

  std::string ours = zdeflate(data), theirs;
  ASSERT_TRUE(python("zlib.decompress(d)", ours, theirs));
  EXPECT_EQ(theirs, data);
}

TEST(ZQUtilZlib, RawStreamIsNotAZlibStream) {
  std::string data = "some text some text some text";
  std::string packed = zdeflate(data);
  std::string raw = packed.substr(2, packed.size() - 6);  // without header and checksum
  std::string back;
  EXPECT_TRUE(zinflate(raw, back, true));
  EXPECT_EQ(back, data);
  EXPECT_FALSE(zinflate(raw, back, false));
  EXPECT_FALSE(zinflate(packed, back, true));
}

TEST(ZQUtilZlib, TruncatedStreamIsFalseButKeepsWhatCameOut) {
  std::mt19937 rng(4);
  std::string data = randomText(rng, 100000);
  std::string packed = zdeflate(data);
  std::string back;
  EXPECT_FALSE(zinflate(packed.substr(0, packed.size() / 2), back));
  EXPECT_FALSE(back.empty());
  EXPECT_EQ(back, data.substr(0, back.size()));
  EXPECT_FALSE(zinflate(packed.substr(0, packed.size() - 1), back));  // checksum cut
}

TEST(ZQUtilZlib, GarbageEmptyAndNullAreFalse) {
  std::string back;
  EXPECT_FALSE(zinflate("not a zlib stream at all", back));
  EXPECT_FALSE(zinflate("", back));
  EXPECT_FALSE(zinflate("", back, true));
  std::ostringstream out;
  EXPECT_FALSE(ZQUtil::inflate(out, nullptr, 100));
  EXPECT_FALSE(ZQUtil::inflate2(out, nullptr, 100));
  std::string packed = zdeflate("abc");
  packed[packed.size() - 1] ^= 1;  // a bad checksum
  EXPECT_FALSE(zinflate(packed, back));
}

TEST(ZQUtilZlib, DeflateOfNothingIsAValidStream) {
  std::ostringstream out;
  EXPECT_TRUE(ZQUtil::deflate(out, nullptr, 0));
  std::string back = "x";
  EXPECT_TRUE(zinflate(out.str(), back));
  EXPECT_EQ(back, "");
}

TEST(ZQUtilZlib, BytesBehindTheStreamEndAreIgnored) {
  std::string packed = zdeflate("payload") + "trailing junk";
  std::string back;
  EXPECT_TRUE(zinflate(packed, back));
  EXPECT_EQ(back, "payload");
}

TEST(ZQUtilZlib, ThrowingOutputStreamGivesFalse) {
  std::string packed = zdeflate(std::string(10000, 'a'));
  struct FailingBuf : std::streambuf {
    int_type overflow(int_type) override { return traits_type::eof(); }
  } buf;
  std::ostream out(&buf);
  out.exceptions(std::ios::badbit);
  bool r = true;
  EXPECT_NO_THROW(r = ZQUtil::inflate(out, packed.data(), static_cast<unsigned>(packed.size())));
  EXPECT_FALSE(r);
}
