// gzip reading and writing: files and streams, headers of every shape, plain data passing
// through, and interchange with the gzip tool and zlib's own reader.
#include <gtest/gtest.h>
#include <zlib.h>

#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "StreamTestSupport.h"
#include "common/ZQGzipStream.h"

using namespace ZQCommonNS;
using streamtest::quote;
using streamtest::readFile;
using streamtest::run;
using streamtest::ScratchDir;
using streamtest::writeFile;

namespace {

std::string readAll(std::istream& in) {
  std::string out;
  char chunk[1000];
  while (in.read(chunk, sizeof chunk) || in.gcount() > 0) {
    out.append(chunk, static_cast<size_t>(in.gcount()));
  }
  return out;
}

/// Raw deflate data (no header) of `data`, at `level`.
std::string rawDeflate(const std::string& data, int level = 6) {
  z_stream zs{};
  EXPECT_EQ(deflateInit2(&zs, level, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY), Z_OK);
  std::string out(deflateBound(&zs, static_cast<uLong>(data.size())) + 16, '\0');
  zs.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
  zs.avail_in = static_cast<uInt>(data.size());
  zs.next_out = reinterpret_cast<Bytef*>(out.data());
  zs.avail_out = static_cast<uInt>(out.size());
  EXPECT_EQ(deflate(&zs, Z_FINISH), Z_STREAM_END);
  out.resize(zs.total_out);
  deflateEnd(&zs);
  return out;
}

void putLE32(std::string& s, uint32_t v) {
  for (int i = 0; i < 4; ++i) s += static_cast<char>((v >> (8 * i)) & 0xFF);
}

/// A gzip member with the header fields given; `flags` also chooses which fields appear.
std::string handMadeGzip(const std::string& data, int flags, const std::string& extra = "",
                         const std::string& name = "", const std::string& comment = "") {
  std::string h;
  h += '\x1f';
  h += '\x8b';
  h += '\x08';
  h += static_cast<char>(flags);
  putLE32(h, 0x5F5E1000);  // time
  h += '\x00';             // extra flags
  h += '\x03';             // operating system
  if (flags & 4) {
    h += static_cast<char>(extra.size() & 0xFF);
    h += static_cast<char>(extra.size() >> 8);
    h += extra;
  }
  if (flags & 8) h.append(name).push_back('\0');
  if (flags & 16) h.append(comment).push_back('\0');
  if (flags & 2) {
    uLong crc = crc32(0L, reinterpret_cast<const Bytef*>(h.data()), static_cast<uInt>(h.size()));
    h += static_cast<char>(crc & 0xFF);
    h += static_cast<char>((crc >> 8) & 0xFF);
  }
  std::string member = h + rawDeflate(data);
  putLE32(member, static_cast<uint32_t>(
                      crc32(0L, reinterpret_cast<const Bytef*>(data.data()), data.size())));
  putLE32(member, static_cast<uint32_t>(data.size()));
  return member;
}

/// Reads a gzip file with zlib's own file reader.
bool zlibGzread(const std::string& path, std::string& out) {
  gzFile f = gzopen(path.c_str(), "rb");
  if (!f) return false;
  out.clear();
  char chunk[7000];
  int n;
  while ((n = gzread(f, chunk, sizeof chunk)) > 0) out.append(chunk, static_cast<size_t>(n));
  int err = Z_OK;
  gzerror(f, &err);
  gzclose(f);
  return n == 0 && err == Z_OK;
}

/// Decompresses a file with the gzip tool; false if the tool complains.
bool gzipTool(const std::string& path, std::string& out, const ScratchDir& dir) {
  std::string target = dir.file("tool-output");
  bool ok = run("gzip -dc " + quote(path) + " > " + quote(target) + " 2>/dev/null");
  out = readFile(target);
  return ok;
}

/// The gzip tool's output for `data`: with its file name stored (-N) or not (-n).
std::string gzipToolCompress(const std::string& data, bool withName, const ScratchDir& dir) {
  std::string plain = dir.file("fixture.txt");
  std::string packed = dir.file(withName ? "fixture-named.gz" : "fixture-plain.gz");
  writeFile(plain, data);
  EXPECT_TRUE(run(std::string("gzip -c ") + (withName ? "-N " : "-n ") + quote(plain) + " > " +
                  quote(packed)));
  return packed;
}

}  // namespace

// ---- Reading files ----

TEST(ZQGzipIStream, FileMadeByGzipToolWithoutNameReadsBack) {
  ScratchDir dir;
  std::string text = streamtest::compressibleText(100000);
  std::string packed = gzipToolCompress(text, false, dir);
  ZQGzipIStream in(packed.c_str());
  ASSERT_TRUE(in.is_open());
  EXPECT_EQ(readAll(in), text);
}

TEST(ZQGzipIStream, FileMadeByGzipToolWithNameReadsBackFromEveryPathForm) {
  ScratchDir dir;
  std::string text = streamtest::compressibleText(30000, 3);
  std::string packed = gzipToolCompress(text, true, dir);
  ASSERT_EQ(readFile(packed)[3] & 8, 8) << "the tool stored no name";
  {
    ZQGzipIStream in(UnicodeString::fromUTF8(packed));
    ASSERT_TRUE(in.is_open());
    EXPECT_EQ(readAll(in), text);
  }
  {
    std::wstring wide(packed.begin(), packed.end());
    ZQGzipIStream in(wide.c_str());
    ASSERT_TRUE(in.is_open());
    EXPECT_EQ(readAll(in), text);
  }
}

TEST(ZQGzipIStream, BackslashesInAFilePathAreSeparators) {
  ScratchDir dir;
  std::string packed = gzipToolCompress("through a told path", false, dir);
  std::string told = packed;
  for (char& c : told) {
    if (c == '/') c = '\\';
  }
  ZQGzipIStream in(told.c_str());
  ASSERT_TRUE(in.is_open());
  EXPECT_EQ(readAll(in), "through a told path");
}

TEST(ZQGzipIStream, MissingFileIsNotOpenAndReadsNothing) {
  ScratchDir dir;
  std::string missing = dir.file("missing.gz");
  for (int form = 0; form < 2; ++form) {
    ZQGzipIStream in = form == 0 ? ZQGzipIStream(missing.c_str())
                                 : ZQGzipIStream(UnicodeString::fromUTF8(missing));
    EXPECT_FALSE(in.is_open());
    EXPECT_EQ(in.get(), EOF);
    EXPECT_TRUE(in.eof());
  }
}

TEST(ZQGzipIStream, PlainFileReadsAsItStands) {
  ScratchDir dir;
  std::string plain = dir.file("plain.txt");
  writeFile(plain, "not compressed at all");
  ZQGzipIStream in(plain.c_str());
  ASSERT_TRUE(in.is_open());
  EXPECT_EQ(readAll(in), "not compressed at all");
}

TEST(ZQGzipIStream, FileFormReadsEveryMemberOfAFile) {
  ScratchDir dir;
  std::string path = dir.file("two.gz");
  writeFile(path, handMadeGzip("first|", 0) + handMadeGzip("second", 0));
  ZQGzipIStream in(path.c_str());
  EXPECT_EQ(readAll(in), "first|second");
}

// ---- Reading streams ----

TEST(ZQGzipIStream, StreamMadeByGzipToolReadsBack) {
  ScratchDir dir;
  std::string text = streamtest::compressibleText(250000, 5);
  for (bool named : {false, true}) {
    std::istringstream source(readFile(gzipToolCompress(text, named, dir)));
    ZQGzipIStream in(source);
    ASSERT_TRUE(in.is_open());
    EXPECT_EQ(readAll(in), text) << "named " << named;
  }
}

TEST(ZQGzipIStream, StreamIsReadFromItsFirstByte) {
  std::istringstream source(handMadeGzip("from the start", 0));
  source.ignore(5);  // a caller's earlier reading doesn't matter
  ZQGzipIStream in(source);
  EXPECT_EQ(readAll(in), "from the start");
}

TEST(ZQGzipIStream, NonGzipStreamPassesThroughUnchangedFromTheStart) {
  std::string plain = streamtest::randomBytes(20000);
  plain[0] = 'P';  // not the first magic byte
  std::istringstream source(plain);
  source.ignore(100);
  ZQGzipIStream in(source);
  ASSERT_TRUE(in.is_open());
  EXPECT_EQ(readAll(in), plain);
}

TEST(ZQGzipIStream, ShortNonGzipStreamsPassThrough) {
  for (std::string plain :
       {std::string("\x1f"), std::string("\x1f\x8b"), std::string("\x1f\x8b\x08"),
        std::string("\x1f\x8b\x07\x00xyz"), std::string("A"),
        std::string("\x1f"
                    "A")}) {
    std::istringstream source(plain);
    ZQGzipIStream in(source);
    EXPECT_EQ(readAll(in), plain) << plain.size();
  }
}

TEST(ZQGzipIStream, EmptyStreamEndsAtOnce) {
  std::istringstream source("");
  ZQGzipIStream in(source);
  EXPECT_TRUE(in.is_open());
  EXPECT_EQ(in.get(), EOF);
}

TEST(ZQGzipIStream, HeaderWithExtraNameCommentAndCrcIsSkipped) {
  ScratchDir dir;
  std::string text = streamtest::compressibleText(9000, 9);
  std::string extra = "AB\x04\x00wxyz";
  std::string member = handMadeGzip(text, 2 | 4 | 8 | 16, extra, "name.txt", "a comment");
  // The hand-made header is a real one: the gzip tool checks its CRC and accepts it.
  std::string path = dir.file("allflags.gz");
  writeFile(path, member);
  std::string byTool;
  ASSERT_TRUE(gzipTool(path, byTool, dir));
  ASSERT_EQ(byTool, text);

  std::istringstream source(member);
  ZQGzipIStream in(source);
  EXPECT_EQ(readAll(in), text);
}

TEST(ZQGzipIStream, LongExtraFieldIsSkippedByItsLittleEndianLength) {
  std::string extra(0x0203, 'e');  // 515 bytes: the high length byte counts
  std::istringstream source(handMadeGzip("after the extra field", 4, extra));
  ZQGzipIStream in(source);
  EXPECT_EQ(readAll(in), "after the extra field");
}

TEST(ZQGzipIStream, EachOptionalFieldAloneIsSkipped) {
  struct Case {
    int flags;
    const char* what;
  } cases[] = {{2, "crc"}, {4, "extra"}, {8, "name"}, {16, "comment"}, {8 | 16, "name+comment"}};
  for (const Case& c : cases) {
    std::istringstream source(handMadeGzip("payload", c.flags, "xy", "file", "note"));
    ZQGzipIStream in(source);
    EXPECT_EQ(readAll(in), "payload") << c.what;
  }
}

TEST(ZQGzipIStream, ReservedFlagBitMakesTheDataPassThroughAsPlainBytes) {
  for (int reserved : {0x20, 0x40, 0x80}) {
    std::string member = handMadeGzip("hidden", 0);
    member[3] = static_cast<char>(reserved);
    std::istringstream source(member);
    ZQGzipIStream in(source);
    EXPECT_EQ(readAll(in), member) << reserved;
  }
}

TEST(ZQGzipIStream, MethodOtherThanDeflatePassesThrough) {
  std::string member = handMadeGzip("stored?", 0);
  member[2] = 7;
  std::istringstream source(member);
  ZQGzipIStream in(source);
  EXPECT_EQ(readAll(in), member);
}

TEST(ZQGzipIStream, OnlyTheFirstMemberOfAStreamIsRead) {
  std::istringstream source(handMadeGzip("first", 0) + handMadeGzip("second", 0));
  ZQGzipIStream in(source);
  EXPECT_EQ(readAll(in), "first");
}

TEST(ZQGzipIStream, TrailerOfAStreamIsNotChecked) {
  std::string member = handMadeGzip("trailer is ignored", 0);
  member[member.size() - 8] ^= 0x55;  // wrong CRC
  member[member.size() - 1] ^= 0x55;  // wrong length
  std::istringstream source(member);
  ZQGzipIStream in(source);
  EXPECT_EQ(readAll(in), "trailer is ignored");
}

TEST(ZQGzipIStream, CutStreamEndsEarlyWithAPrefix) {
  std::string text = streamtest::compressibleText(200000, 13);
  std::string member = handMadeGzip(text, 0);
  std::istringstream source(member.substr(0, member.size() / 2));
  ZQGzipIStream in(source);
  std::string got = readAll(in);
  EXPECT_LT(got.size(), text.size());
  EXPECT_GT(got.size(), 0u);
  EXPECT_EQ(got, text.substr(0, got.size()));
  EXPECT_EQ(got.size() % ZQGzipIStreamBuf::BUFFER_SIZE, 0u) << "the last partial pass is dropped";
}

TEST(ZQGzipIStream, DamagedBodyEndsEarly) {
  std::string text = streamtest::compressibleText(50000, 17);
  std::string member = handMadeGzip(text, 0);
  for (size_t i = 30; i < 60; ++i) member[i] = '\xff';
  std::istringstream source(member);
  ZQGzipIStream in(source);
  std::string got = readAll(in);
  EXPECT_LT(got.size(), text.size());
}

TEST(ZQGzipIStream, TenBytesCanBePutBackAfterARefill) {
  std::string text = streamtest::compressibleText(3 * 4096, 19);
  std::istringstream source(handMadeGzip(text, 0));
  ZQGzipIStream in(source);
  std::string first(4096, '\0');
  ASSERT_TRUE(in.read(first.data(), 4096));
  ASSERT_EQ(in.get(), static_cast<unsigned char>(text[4096]));  // a refill happened here
  int ungot = 0;
  while (ungot < 20 && in.unget()) ++ungot;
  EXPECT_EQ(ungot, 11);  // the byte just read and the ten kept in front of it
  in.clear();
  EXPECT_EQ(in.get(), static_cast<unsigned char>(text[4096 - 10]));
}

TEST(ZQGzipIStream, CheckHeaderMovesBackTwoOrFourBytes) {
  {
    std::istringstream s("XYrest");
    s.ignore(0);
    EXPECT_FALSE(ZQGzipIStreamBuf::checkHeader(s));
    EXPECT_EQ(s.tellg(), 0);
    EXPECT_TRUE(s.good());
  }
  {
    std::istringstream s(std::string("ab\x1f\x8b\x09\x00rest", 10));
    s.ignore(2);
    EXPECT_FALSE(ZQGzipIStreamBuf::checkHeader(s));
    EXPECT_EQ(s.tellg(), 2);  // moved back over magic, method and flags
  }
  {
    std::istringstream s(handMadeGzip("x", 8, "", "nm"));
    EXPECT_TRUE(ZQGzipIStreamBuf::checkHeader(s));
    EXPECT_EQ(s.tellg(), 10 + 3);  // fixed part and "nm\0"
  }
}

TEST(ZQGzipIStream, CheckHeaderAtEndOfFileIsFalse) {
  std::istringstream s("");
  s.get();
  ASSERT_TRUE(s.eof());
  EXPECT_FALSE(ZQGzipIStreamBuf::checkHeader(s));
}

TEST(ZQGzipIStream, HeaderCutInsideTheNameStillCountsAsHeader) {
  std::string member = handMadeGzip("x", 8, "", "longname");
  std::istringstream s(member.substr(0, 14));
  EXPECT_TRUE(ZQGzipIStreamBuf::checkHeader(s));
  std::istringstream source(member.substr(0, 14));
  ZQGzipIStream in(source);
  EXPECT_EQ(readAll(in), "");
}

// ---- Writing ----

TEST(ZQGzipOStream, OutputReadsBackWithGzipToolAndZlib) {
  ScratchDir dir;
  std::string text = streamtest::compressibleText(300000, 23) + streamtest::randomBytes(20000);
  std::ostringstream target;
  {
    ZQGzipOStream out(target);
    // Odd chunk sizes cross the 4096-byte put area at every offset.
    for (size_t i = 0; i < text.size(); i += 777) {
      out.write(text.data() + i,
                static_cast<std::streamsize>(std::min<size_t>(777, text.size() - i)));
    }
  }
  std::string path = dir.file("ours.gz");
  writeFile(path, target.str());
  std::string byTool, byZlib;
  ASSERT_TRUE(gzipTool(path, byTool, dir));
  EXPECT_EQ(byTool, text);
  ASSERT_TRUE(zlibGzread(path, byZlib));
  EXPECT_EQ(byZlib, text);
}

TEST(ZQGzipOStream, OutputIsLevelNineGzipWithMemoryLevelNine) {
  std::string text = streamtest::compressibleText(200000, 29);
  std::ostringstream target;
  {
    ZQGzipOStream out(target);
    out << text;
  }
  std::string ours = target.str();
  ASSERT_GE(ours.size(), 18u);
  EXPECT_EQ(static_cast<unsigned char>(ours[0]), 31);
  EXPECT_EQ(static_cast<unsigned char>(ours[1]), 139);
  EXPECT_EQ(ours[2], 8);
  EXPECT_EQ(ours[8], 2) << "extra flags say maximum compression";

  // The same bytes as zlib gives for level 9, window 31, memory level 9.
  z_stream zs{};
  ASSERT_EQ(deflateInit2(&zs, 9, Z_DEFLATED, 31, 9, Z_DEFAULT_STRATEGY), Z_OK);
  std::string expected(deflateBound(&zs, text.size()) + 64, '\0');
  zs.next_in = reinterpret_cast<Bytef*>(text.data());
  zs.avail_in = static_cast<uInt>(text.size());
  zs.next_out = reinterpret_cast<Bytef*>(expected.data());
  zs.avail_out = static_cast<uInt>(expected.size());
  ASSERT_EQ(deflate(&zs, Z_FINISH), Z_STREAM_END);
  expected.resize(zs.total_out);
  deflateEnd(&zs);
  EXPECT_EQ(ours, expected);
}

TEST(ZQGzipOStream, NothingWrittenStillGivesAnEmptyMemberAtDestruction) {
  ScratchDir dir;
  std::ostringstream target;
  {
    ZQGzipOStream out(target);
    EXPECT_EQ(target.str().size(), 0u) << "nothing goes out before the end";
  }
  std::string path = dir.file("empty.gz");
  writeFile(path, target.str());
  EXPECT_EQ(target.str().size(), 20u);  // header, empty block, trailer
  std::string byTool = "x", byZlib = "x";
  ASSERT_TRUE(gzipTool(path, byTool, dir));
  EXPECT_EQ(byTool, "");
  ASSERT_TRUE(zlibGzread(path, byZlib));
  EXPECT_EQ(byZlib, "");
}

TEST(ZQGzipOStream, WriteAfterFlushDoesNotReachTheTarget) {
  ScratchDir dir;
  std::ostringstream target;
  {
    ZQGzipOStream out(target);
    out << "kept";
    out.flush();
    std::string atFlush = target.str();
    EXPECT_GT(atFlush.size(), 0u) << "flush ends the member";
    out << "lost" << std::string(10000, 'z');
    out.flush();
    EXPECT_EQ(target.str(), atFlush);
  }
  std::string path = dir.file("flushed.gz");
  writeFile(path, target.str());
  std::string byTool;
  ASSERT_TRUE(gzipTool(path, byTool, dir));
  EXPECT_EQ(byTool, "kept");
}

namespace {

/// Keeps what is written, the size of each write, and how often it was asked to sync.
class RecordingBuf : public std::streambuf {
 public:
  std::string data;
  std::vector<std::streamsize> writes;
  int syncs = 0;

 protected:
  std::streamsize xsputn(const char* s, std::streamsize n) override {
    writes.push_back(n);
    data.append(s, static_cast<size_t>(n));
    return n;
  }
  int_type overflow(int_type ch) override {
    if (traits_type::eq_int_type(ch, traits_type::eof())) return traits_type::not_eof(ch);
    char c = traits_type::to_char_type(ch);
    return xsputn(&c, 1) == 1 ? ch : traits_type::eof();
  }
  int sync() override {
    ++syncs;
    return 0;
  }
};

std::string gunzip(const std::string& member) {
  std::istringstream source(member);
  ZQGzipIStream in(source);
  return readAll(in);
}

}  // namespace

TEST(ZQGzipOStream, CompressedBytesGoToTheTargetIn4096BytePieces) {
  std::string text = streamtest::randomBytes(30000, 71);  // hardly compresses: many pieces
  RecordingBuf sink;
  std::ostream target(&sink);
  {
    ZQGzipOStream out(target);
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
  }
  ASSERT_GE(sink.writes.size(), 3u);
  for (size_t i = 0; i + 1 < sink.writes.size(); ++i) EXPECT_EQ(sink.writes[i], 4096) << i;
  EXPECT_LE(sink.writes.back(), 4096);
  EXPECT_EQ(gunzip(sink.data), text);
}

TEST(ZQGzipOStream, EndingTheMemberDoesNotFlushTheTarget) {
  RecordingBuf sink;
  std::ostream target(&sink);
  {
    ZQGzipOStream out(target);
    out << "member";
    out.flush();
  }
  EXPECT_EQ(sink.syncs, 0);
  EXPECT_EQ(gunzip(sink.data), "member");

  // So a gzip stream can be the target of another and go on after the inner member ends.
  std::ostringstream packed;
  {
    ZQGzipOStream outer(packed);
    {
      ZQGzipOStream inner(static_cast<std::ostream&>(outer));
      inner << "inner";
    }
    outer << "|outer";
  }
  std::string decoded = gunzip(packed.str());
  ASSERT_GT(decoded.size(), 6u);
  EXPECT_EQ(decoded.substr(decoded.size() - 6), "|outer");
  EXPECT_EQ(gunzip(decoded.substr(0, decoded.size() - 6)), "inner");
}

TEST(ZQGzipOStream, OwnedFileIsWrittenAndClosed) {
  ScratchDir dir;
  std::string path = dir.file("owned.gz");
  std::string text = streamtest::compressibleText(50000, 31);
  {
    ZQGzipOStream out(UnicodeString::fromUTF8(path));
    out << text;
  }
  std::string byTool;
  ASSERT_TRUE(gzipTool(path, byTool, dir));
  EXPECT_EQ(byTool, text);
}

TEST(ZQGzipOStream, RoundTripThroughBothStreams) {
  std::string text = streamtest::randomBytes(70000, 37) + streamtest::compressibleText(70000);
  std::stringstream packed;
  {
    ZQGzipOStream out(packed);
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
  }
  ZQGzipIStream in(packed);
  EXPECT_EQ(readAll(in), text);
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

TEST(ZQGzipIStream, LargeReadsGiveWhatByteReadsGiveEvenForCutOrDamagedData) {
  ScratchDir dir;
  std::string text = streamtest::compressibleText(120000, 47) + streamtest::randomBytes(30000);
  std::string member = handMadeGzip(text, 8, "", "n");
  std::vector<std::string> inputs = {member, "plain bytes " + text};
  for (size_t cut : {member.size() / 7, member.size() / 3, member.size() - 12}) {
    inputs.push_back(member.substr(0, cut));
  }
  for (size_t at : {member.size() / 5, member.size() / 2}) {
    std::string damaged = member;
    for (size_t i = at; i < at + 40; ++i) damaged[i] = static_cast<char>(i * 7);
    inputs.push_back(damaged);
  }
  for (size_t i = 0; i < inputs.size(); ++i) {
    const std::string& data = inputs[i];
    std::string path = dir.file("input.gz");
    writeFile(path, data);
    std::istringstream byteSource(data);
    ZQGzipIStream bytes(byteSource);
    std::string expected = readByBytes(bytes);
    ZQGzipIStream fileBytes(path.c_str());
    std::string expectedFromFile = readByBytes(fileBytes);
    for (size_t first : {0u, 1u, 4096u, 5000u}) {
      for (size_t chunk : {4096u, 4097u, 65536u, 1u << 20}) {
        std::istringstream source(data);
        ZQGzipIStream in(source);
        EXPECT_EQ(readInChunks(in, first, chunk), expected)
            << "input " << i << " first " << first << " chunk " << chunk;
        ZQGzipIStream file(path.c_str());
        EXPECT_EQ(readInChunks(file, first, chunk), expectedFromFile)
            << "file input " << i << " first " << first << " chunk " << chunk;
      }
    }
  }
}

TEST(ZQGzipIStream, TenBytesCanBePutBackAfterALargeRead) {
  std::string text = streamtest::compressibleText(100000, 53);
  std::istringstream source(handMadeGzip(text, 0));
  ZQGzipIStream in(source);
  std::string big(50000, '\0');
  ASSERT_TRUE(in.read(big.data(), 50000));
  EXPECT_EQ(big, text.substr(0, 50000));
  for (int i = 0; i < 10; ++i) EXPECT_TRUE(in.unget()) << i;
  std::string back(10, '\0');
  in.read(back.data(), 10);
  EXPECT_EQ(back, text.substr(49990, 10));
  EXPECT_EQ(readAll(in), text.substr(50000));
}

TEST(ZQGzipIStream, InputEndingExactlyAtAFillBoundaryEndsTheRead) {
  // Deflate data flushed after 8192 bytes and cut there: the input runs out just as the
  // second fill is complete.
  std::string text = streamtest::compressibleText(20000, 59);
  z_stream zs{};
  ASSERT_EQ(deflateInit2(&zs, 6, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY), Z_OK);
  std::string body(40000, '\0');
  zs.next_in = reinterpret_cast<Bytef*>(text.data());
  zs.avail_in = 8192;
  zs.next_out = reinterpret_cast<Bytef*>(body.data());
  zs.avail_out = static_cast<uInt>(body.size());
  ASSERT_EQ(deflate(&zs, Z_SYNC_FLUSH), Z_OK);
  body.resize(zs.total_out);
  deflateEnd(&zs);
  std::string member = handMadeGzip("", 0).substr(0, 10) + body;
  for (size_t chunk : {1u, 4096u, 65536u}) {
    std::istringstream source(member);
    ZQGzipIStream in(source);
    EXPECT_EQ(readInChunks(in, 0, chunk), text.substr(0, 8192)) << chunk;
  }
}

namespace {

/// Serves its bytes and then fails: the stream reading it goes bad without reaching its end.
class FailingBuf : public std::streambuf {
 public:
  explicit FailingBuf(std::string data) : m_data(std::move(data)) {
    setg(m_data.data(), m_data.data(), m_data.data() + m_data.size());
  }

 protected:
  int_type underflow() override { throw std::runtime_error("device failed"); }

 private:
  std::string m_data;
};

}  // namespace

TEST(ZQGzipIStream, SourceThatFailsMidwayEndsTheRead) {
  std::string text = streamtest::compressibleText(200000, 67);
  std::string member = handMadeGzip(text, 0);
  for (size_t chunk : {1u, 4096u, 65536u}) {
    FailingBuf buf(member.substr(0, member.size() / 2));
    std::istream source(&buf);
    ZQGzipIStream in(source);
    std::string got = readInChunks(in, 0, chunk);
    EXPECT_LT(got.size(), text.size()) << chunk;
    EXPECT_EQ(got, text.substr(0, got.size())) << chunk;
    // Asking again after the end gives nothing more, at once.
    in.clear();
    std::string again(65536, '\0');
    in.read(again.data(), 65536);
    EXPECT_EQ(in.gcount(), 0) << chunk;
  }
}
