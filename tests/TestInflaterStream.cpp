// Raw inflate of memory: reading, private copies, put-back, reset and damaged data.
#include <gtest/gtest.h>
#include <zlib.h>

#include <cstring>
#include <string>
#include <vector>

#include "StreamTestSupport.h"
#include "common/ZQInflaterStream.h"

using namespace ZQCommonNS;

namespace {

std::string readAll(std::istream& in) {
  std::string out;
  char chunk[999];
  while (in.read(chunk, sizeof chunk) || in.gcount() > 0) {
    out.append(chunk, static_cast<size_t>(in.gcount()));
  }
  return out;
}

std::string deflated(const std::string& data, int windowBits = -15) {
  z_stream zs{};
  EXPECT_EQ(deflateInit2(&zs, 6, Z_DEFLATED, windowBits, 8, Z_DEFAULT_STRATEGY), Z_OK);
  std::string out(deflateBound(&zs, static_cast<uLong>(data.size())) + 32, '\0');
  zs.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
  zs.avail_in = static_cast<uInt>(data.size());
  zs.next_out = reinterpret_cast<Bytef*>(out.data());
  zs.avail_out = static_cast<uInt>(out.size());
  EXPECT_EQ(deflate(&zs, Z_FINISH), Z_STREAM_END);
  out.resize(zs.total_out);
  deflateEnd(&zs);
  return out;
}

}  // namespace

TEST(ZQInflaterStream, ReadsRawDeflateData) {
  for (size_t size : {0u, 1u, 4085u, 4086u, 4096u, 4097u, 100000u}) {
    std::string text = streamtest::compressibleText(size, static_cast<unsigned>(size));
    std::string packed = deflated(text);
    ZQInflaterStream in(packed.data(), packed.size(), false);
    EXPECT_EQ(readAll(in), text) << size;
  }
}

TEST(ZQInflaterStream, IncompressibleDataReadsBack) {
  std::string data = streamtest::randomBytes(50000);
  std::string packed = deflated(data);
  ZQInflaterStream in(packed.data(), packed.size(), false);
  EXPECT_EQ(readAll(in), data);
}

TEST(ZQInflaterStream, CopyWorksOnItsOwnBytes) {
  std::string text = streamtest::compressibleText(20000);
  std::string packed = deflated(text);
  std::vector<char> data(packed.begin(), packed.end());
  ZQInflaterStream in(data.data(), data.size(), true);
  std::fill(data.begin(), data.end(), '\0');
  data.clear();
  data.shrink_to_fit();
  EXPECT_EQ(readAll(in), text);
}

TEST(ZQInflaterStream, WithoutCopyTheCallersMemoryIsRead) {
  std::string a = deflated("first text"), b = deflated("other text");
  ASSERT_EQ(a.size(), b.size());
  std::vector<char> data(a.begin(), a.end());
  ZQInflaterStream in(data.data(), data.size(), false);
  std::memcpy(data.data(), b.data(), b.size());  // changed before the first read
  EXPECT_EQ(readAll(in), "other text");
}

TEST(ZQInflaterStream, ResetThenReadGivesTheSameBytesFromTheStart) {
  std::string text = streamtest::compressibleText(30000, 3);
  std::string packed = deflated(text);
  ZQInflaterStream in(packed.data(), packed.size(), true);
  std::string part(5000, '\0');
  ASSERT_TRUE(in.read(part.data(), 5000));
  EXPECT_EQ(part, text.substr(0, 5000));
  in.reset();
  EXPECT_EQ(readAll(in), text);
}

TEST(ZQInflaterStream, ResetClearsAFailState) {
  std::string packed = deflated("short");
  ZQInflaterStream in(packed.data(), packed.size(), false);
  EXPECT_EQ(readAll(in), "short");
  EXPECT_TRUE(in.fail());
  in.setstate(std::ios::badbit);
  in.reset();
  EXPECT_TRUE(in.good());
  EXPECT_EQ(readAll(in), "short");
}

TEST(ZQInflaterStream, TenBytesAreKeptForPutBackAndTheBufferIsNeverOverrun) {
  std::string text = streamtest::compressibleText(20000, 5);
  std::string packed = deflated(text);
  ZQInflaterStream in(packed.data(), packed.size(), false);
  // The first fill uses the whole 4096-byte buffer.
  ASSERT_EQ(in.get(), static_cast<unsigned char>(text[0]));
  EXPECT_EQ(in.rdbuf()->in_avail(), 4095);
  in.ignore(4095);
  // The next keeps ten bytes, so 4086 new ones fit.
  ASSERT_EQ(in.get(), static_cast<unsigned char>(text[4096]));
  EXPECT_EQ(in.rdbuf()->in_avail(), 4085);
  int ungot = 0;
  while (ungot < 20 && in.unget()) ++ungot;
  EXPECT_EQ(ungot, 11);
  in.clear();
  EXPECT_EQ(in.get(), static_cast<unsigned char>(text[4086]));
}

TEST(ZQInflaterStream, EmptyOrNullDataEndsAtOnce) {
  ZQInflaterStream empty("", 0, false);
  EXPECT_EQ(empty.get(), EOF);
  ZQInflaterStream null(nullptr, 100, true);
  EXPECT_EQ(null.get(), EOF);
}

TEST(ZQInflaterStream, CutDataEndsEarlyWithoutItsLastPass) {
  std::string text = streamtest::compressibleText(100000, 7);
  std::string packed = deflated(text);
  std::string cut = packed.substr(0, packed.size() * 2 / 3);
  ZQInflaterStream in(cut.data(), cut.size(), false);
  std::string got = readAll(in);
  EXPECT_LT(got.size(), text.size());
  EXPECT_EQ(got, text.substr(0, got.size()));
  // Whole passes only: 4096 the first time, then 4086 each.
  EXPECT_EQ((got.size() - 4096) % 4086, 0u);
}

TEST(ZQInflaterStream, ZlibWrappedOrGarbageDataReadsAsAnEarlyEnd) {
  std::string wrapped = deflated("has a zlib header", 15);
  ZQInflaterStream in(wrapped.data(), wrapped.size(), false);
  std::string got = readAll(in);
  EXPECT_NE(got, "has a zlib header");
  std::string garbage = streamtest::randomBytes(10000, 99);
  ZQInflaterStream junk(garbage.data(), garbage.size(), false);
  EXPECT_LT(readAll(junk).size(), 1000000u);
  EXPECT_TRUE(junk.eof());
}

TEST(ZQInflaterStream, DataAfterTheEndOfTheDeflateStreamIsIgnored) {
  std::string packed = deflated("the end") + "trailing bytes";
  ZQInflaterStream in(packed.data(), packed.size(), false);
  EXPECT_EQ(readAll(in), "the end");
  EXPECT_EQ(in.get(), EOF);
}

namespace {

std::string readByBytes(std::istream& in) {
  std::string out;
  for (int c = in.get(); c != EOF; c = in.get()) out += static_cast<char>(c);
  return out;
}

std::string readInChunks(std::istream& in, size_t first, size_t chunk) {
  std::string out(first, '\0');
  in.read(out.data(), static_cast<std::streamsize>(first));
  out.resize(static_cast<size_t>(in.gcount()));
  std::string buf(chunk, '\0');
  while (in.read(buf.data(), static_cast<std::streamsize>(chunk)) || in.gcount() > 0) {
    out.append(buf.data(), static_cast<size_t>(in.gcount()));
  }
  return out;
}

}  // namespace

TEST(ZQInflaterStream, LargeReadsGiveWhatByteReadsGiveEvenForCutOrDamagedData) {
  std::string text = streamtest::compressibleText(150000, 41) + streamtest::randomBytes(30000);
  std::string packed = deflated(text);
  std::vector<std::string> inputs = {packed};
  for (size_t cut : {packed.size() / 7, packed.size() / 3, packed.size() - 5, packed.size() - 1}) {
    inputs.push_back(packed.substr(0, cut));
  }
  for (size_t at : {packed.size() / 5, packed.size() / 2}) {
    std::string damaged = packed;
    for (size_t i = at; i < at + 40; ++i) damaged[i] = static_cast<char>(i * 7);
    inputs.push_back(damaged);
  }
  for (size_t i = 0; i < inputs.size(); ++i) {
    const std::string& data = inputs[i];
    ZQInflaterStream bytes(data.data(), data.size(), false);
    std::string expected = readByBytes(bytes);
    for (size_t first : {0u, 1u, 4086u, 5000u}) {
      for (size_t chunk : {4086u, 4096u, 65536u, 1u << 20}) {
        ZQInflaterStream in(data.data(), data.size(), false);
        EXPECT_EQ(readInChunks(in, first, chunk), expected)
            << "input " << i << " first " << first << " chunk " << chunk;
      }
    }
  }
}

TEST(ZQInflaterStream, TenBytesCanBePutBackAfterALargeRead) {
  std::string text = streamtest::compressibleText(100000, 43);
  std::string packed = deflated(text);
  ZQInflaterStream in(packed.data(), packed.size(), false);
  std::string big(50000, '\0');
  ASSERT_TRUE(in.read(big.data(), 50000));
  EXPECT_EQ(big, text.substr(0, 50000));
  for (int i = 0; i < 10; ++i) EXPECT_TRUE(in.unget()) << i;
  std::string back(10, '\0');
  in.read(back.data(), 10);
  EXPECT_EQ(back, text.substr(49990, 10));
  EXPECT_EQ(readAll(in), text.substr(50000));
}

TEST(ZQInflaterStream, InputEndingExactlyAtAFillBoundaryEndsTheRead) {
  // Deflate data flushed after two fills (4096 + 4086 bytes) and cut there.
  std::string text = streamtest::compressibleText(20000, 61);
  z_stream zs{};
  ASSERT_EQ(deflateInit2(&zs, 6, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY), Z_OK);
  std::string body(40000, '\0');
  zs.next_in = reinterpret_cast<Bytef*>(text.data());
  zs.avail_in = 4096 + 4086;
  zs.next_out = reinterpret_cast<Bytef*>(body.data());
  zs.avail_out = static_cast<uInt>(body.size());
  ASSERT_EQ(deflate(&zs, Z_SYNC_FLUSH), Z_OK);
  body.resize(zs.total_out);
  deflateEnd(&zs);
  for (size_t chunk : {1u, 4096u, 65536u}) {
    ZQInflaterStream in(body.data(), body.size(), false);
    EXPECT_EQ(readInChunks(in, 0, chunk), text.substr(0, 8182)) << chunk;
    in.clear();
    std::string again(65536, '\0');
    in.read(again.data(), 65536);
    EXPECT_EQ(in.gcount(), 0) << chunk;
  }
}
