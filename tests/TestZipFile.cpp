// Zip reader: archives built byte by byte for each rule, and archives made by Python's zipfile
// module and by Info-ZIP zip, whose entries must read back as their source files.
#include <gtest/gtest.h>
#include <unicode/ucnv.h>
#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "StreamTestSupport.h"
#include "TestSupport.h"
#include "common/ZQInflaterStream.h"
#include "common/ZQMemStream.h"
#include "common/ZQStrStream.h"
#include "common/ZQZipFile.h"
#include "core/platform/ZQPlatformFileBuf.h"

using namespace ZQCommonNS;
using streamtest::ScratchDir;
using zqtest::u;
using zqtest::utf8;

namespace {

// ---- building archives byte by byte -------------------------------------------------------

std::string le16(unsigned v) {
  return std::string{static_cast<char>(v & 0xFF), static_cast<char>((v >> 8) & 0xFF)};
}
std::string le32(uint32_t v) { return le16(v & 0xFFFF) + le16(v >> 16); }

uint32_t crcOf(const std::string& s) {
  return static_cast<uint32_t>(
      ::crc32(0, reinterpret_cast<const Bytef*>(s.data()), static_cast<uInt>(s.size())));
}

std::string rawDeflate(const std::string& in) {
  z_stream zs{};
  deflateInit2(&zs, 9, Z_DEFLATED, -15, 9, Z_DEFAULT_STRATEGY);
  std::string out(deflateBound(&zs, static_cast<uLong>(in.size())) + 16, '\0');
  zs.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(in.data()));
  zs.avail_in = static_cast<uInt>(in.size());
  zs.next_out = reinterpret_cast<Bytef*>(out.data());
  zs.avail_out = static_cast<uInt>(out.size());
  deflate(&zs, Z_FINISH);
  out.resize(zs.total_out);
  deflateEnd(&zs);
  return out;
}

// One entry as it is to be written.
struct EntryPlan {
  std::string name;
  std::string content;
  unsigned method = 0;  // 8 deflates `content`; any other number stores it as given
  unsigned flags = 0;
  bool descriptor = false;  // bit 3: zeros in the local header, a descriptor behind the data
  bool descriptorSignature = true;
  bool zeroLocalSizes = false;  // zeros in the local header without a descriptor
  std::string extra;            // local extra field
  std::string dirName;          // name in the directory record, when it differs
  uint32_t dirCrc = 0;          // CRC-32 written to the directory, when non-zero
};

class ZipBuilder {
 public:
  // Appends a local header, the data and perhaps a descriptor; returns the header's offset.
  uint32_t add(const EntryPlan& plan) {
    EntryPlan s = plan;
    if (s.descriptor) s.flags |= 8;
    std::string data = s.method == 8 ? rawDeflate(s.content) : s.content;
    uint32_t crc = crcOf(s.content);
    bool zeros = s.descriptor || s.zeroLocalSizes;
    uint32_t offset = static_cast<uint32_t>(m_bytes.size());
    m_bytes += "PK\3\4" + le16(20) + le16(s.flags) + le16(s.method) + le16(0x6000) + le16(0x58CB) +
               le32(zeros ? 0 : crc) + le32(zeros ? 0 : uint32_t(data.size())) +
               le32(zeros ? 0 : uint32_t(s.content.size())) + le16(unsigned(s.name.size())) +
               le16(unsigned(s.extra.size())) + s.name + s.extra + data;
    if (s.descriptor) {
      if (s.descriptorSignature) m_bytes += "PK\7\10";
      m_bytes += le32(crc) + le32(uint32_t(data.size())) + le32(uint32_t(s.content.size()));
    }
    std::string dirName = s.dirName.empty() ? s.name : s.dirName;
    m_directory += "PK\1\2" + le16(0x031E) + le16(20) + le16(s.flags) + le16(s.method) +
                   le16(0x6000) + le16(0x58CB) + le32(s.dirCrc ? s.dirCrc : crc) +
                   le32(uint32_t(data.size())) + le32(uint32_t(s.content.size())) +
                   le16(unsigned(dirName.size())) + le16(0) + le16(0) + le16(0) + le16(0) +
                   le32(0) + le32(offset) + dirName;
    ++m_count;
    return offset;
  }
  void junk(const std::string& bytes) { m_bytes += bytes; }
  // The archive with its directory and end record.
  std::string finish(const std::string& comment = "") const {
    return m_bytes + m_directory + endRecord(uint32_t(m_bytes.size()), comment);
  }
  // The archive with no directory at all.
  std::string bare() const { return m_bytes; }
  std::string endRecord(uint32_t directoryOffset, const std::string& comment) const {
    return "PK\5\6" + le16(0) + le16(0) + le16(m_count) + le16(m_count) +
           le32(uint32_t(m_directory.size())) + le32(directoryOffset) +
           le16(unsigned(comment.size())) + comment;
  }

 private:
  std::string m_bytes;
  std::string m_directory;
  unsigned m_count = 0;
};

// ---- reading ------------------------------------------------------------------------------

std::string readAll(std::istream* in) {
  if (!in) return "<null>";
  std::ostringstream out;
  char buf[1000];
  while (in->read(buf, sizeof buf), in->gcount() > 0) out.write(buf, in->gcount());
  return out.str();
}

// The entry's bytes through an independent stream, which is then deleted.
std::string contentOf(const ZQPtr<ZQZipFileEntry>& entry) {
  if (!entry) return "<no entry>";
  std::unique_ptr<std::istream> in(entry->getUncompressedStream(true));
  return readAll(in.get());
}

// A zip file held in memory; `stream` stays alive with the file.
struct MemZip {
  std::istringstream stream;
  ZQZipFile zip;
  explicit MemZip(const std::string& bytes) : stream(bytes) { zip.open(&stream, false); }
};

// A stream buffer that hands out one byte per refill and can't step back inside its get area,
// so every step back must seek.
class OneByteBuf : public std::streambuf {
 public:
  explicit OneByteBuf(std::string data) : m_data(std::move(data)) {}

 protected:
  // The get area stays empty: every byte goes through underflow (peek) or uflow (take).
  int_type underflow() override {
    if (m_pos >= m_data.size()) return traits_type::eof();
    return traits_type::to_int_type(m_data[m_pos]);
  }
  int_type uflow() override {
    int_type c = underflow();
    if (c != traits_type::eof()) ++m_pos;
    return c;
  }
  std::streamsize showmanyc() override { return 0; }
  std::streamsize xsgetn(char* s, std::streamsize n) override {
    std::streamsize got = 0;
    while (got < n && m_pos < m_data.size()) s[got++] = m_data[m_pos++];
    return got;
  }
  pos_type seekoff(off_type off, std::ios_base::seekdir way, std::ios_base::openmode) override {
    off_type base = way == std::ios_base::beg   ? 0
                    : way == std::ios_base::cur ? off_type(m_pos)
                                                : off_type(m_data.size());
    return seekpos(base + off, std::ios_base::in);
  }
  pos_type seekpos(pos_type pos, std::ios_base::openmode) override {
    off_type p = pos;
    if (p < 0 || p > off_type(m_data.size())) return pos_type(off_type(-1));
    m_pos = size_t(p);
    return pos;
  }

 private:
  std::string m_data;
  size_t m_pos = 0;
};

// A stream buffer over bytes in memory that hands them out 512 at a time and counts how many
// it has handed out, so a test can tell how much of an archive was read.
class CountingBuf : public std::streambuf {
 public:
  explicit CountingBuf(std::string data) : m_data(std::move(data)) {}
  size_t served() const { return m_served; }

 protected:
  int_type underflow() override {
    if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
    size_t at = position();
    if (at >= m_data.size()) return traits_type::eof();
    size_t n = std::min<size_t>(512, m_data.size() - at);
    char* base = m_data.data() + at;
    setg(base, base, base + n);
    m_served += n;
    return traits_type::to_int_type(*base);
  }
  pos_type seekoff(off_type off, std::ios_base::seekdir way, std::ios_base::openmode) override {
    off_type base = way == std::ios_base::beg   ? 0
                    : way == std::ios_base::cur ? off_type(position())
                                                : off_type(m_data.size());
    return seekpos(base + off, std::ios_base::in);
  }
  pos_type seekpos(pos_type pos, std::ios_base::openmode) override {
    off_type p = pos;
    if (p < 0 || p > off_type(m_data.size())) return pos_type(off_type(-1));
    char* at = m_data.data() + p;
    setg(at, at, at);
    return pos;
  }

 private:
  size_t position() const { return eback() ? static_cast<size_t>(gptr() - m_data.data()) : 0; }
  std::string m_data;
  size_t m_served = 0;
};

// ---- fixtures from Python's zipfile and Info-ZIP zip --------------------------------------

struct Listed {
  std::string name;    // UTF-8
  std::string source;  // relative to the fixture directory, "-" for a directory entry
};

struct Fixtures {
  ScratchDir dir;
  bool made = false;
  explicit Fixtures(const std::string& kinds) {
    std::string script = std::string(ZQ_SOURCE_DIR) + "/tests/fixtures/make_zips.py";
    made = streamtest::run("python3 " + streamtest::quote(script) + " " +
                           streamtest::quote(dir.path) + " " + kinds);
  }
  std::string zip(const std::string& kind) const { return dir.file(kind + ".zip"); }
  std::vector<Listed> listing(const std::string& kind) const {
    std::vector<Listed> out;
    std::ifstream in(dir.file(kind + ".txt"));
    std::string line;
    while (std::getline(in, line)) {
      size_t tab = line.find('\t');
      if (tab != std::string::npos) out.push_back({line.substr(0, tab), line.substr(tab + 1)});
    }
    return out;
  }
  std::string source(const Listed& l) const {
    return l.source == "-" ? std::string() : streamtest::readFile(dir.file(l.source));
  }
};

// Every entry in archive order has its listed name and its source's bytes, through both the
// independent and the cached stream. Returns the number of entries checked.
size_t expectMatchesSources(const Fixtures& fx, const std::string& kind, const ZQZipFile& zip) {
  std::vector<Listed> listed = fx.listing(kind);
  EXPECT_EQ(zip.getFileEntryCount(), listed.size()) << kind;
  size_t checked = 0;
  for (size_t i = 0; i < listed.size() && i < zip.getFileEntryCount(); ++i) {
    ZQPtr<ZQZipFileEntry> entry = zip.getFileEntry(static_cast<unsigned>(i));
    std::string expected = fx.source(listed[i]);
    EXPECT_EQ(utf8(entry->getFileName()), listed[i].name) << kind << " #" << i;
    EXPECT_EQ(entry->getUncompressedSize(), expected.size()) << kind << " " << listed[i].name;
    EXPECT_TRUE(contentOf(entry) == expected) << kind << " " << listed[i].name;
    EXPECT_TRUE(readAll(entry->getUncompressedStream(false)) == expected)
        << kind << " " << listed[i].name;
    EXPECT_EQ(zip.getFileEntry(UnicodeString::fromUTF8(listed[i].name)).get(), entry.get());
    ++checked;
  }
  return checked;
}

// Bytes decoded by the converter ICU names as the default one (UTF-8 wherever ICU is built
// to take every narrow string as UTF-8, as on Linux).
UnicodeString fromDefaultCodePage(const std::string& bytes) {
  return UnicodeString(bytes.data(), static_cast<int32_t>(bytes.size()), ucnv_getDefaultName());
}

// Replaces the CRC-32 of the first directory record: which CRC an entry reports then tells
// whether the directory was read.
std::string markDirectory(std::string zip, uint32_t mark) {
  size_t dir = zip.find("PK\1\2");
  if (dir != std::string::npos) zip.replace(dir + 16, 4, le32(mark));
  return zip;
}

constexpr uint32_t kMark = 0xDEADBEEF;

}  // namespace

// ---- records and fields -------------------------------------------------------------------

TEST(ZipFile, LocalHeaderFieldsAreReadAsStored) {
  ZipBuilder b;
  b.add({.name = "a.txt", .content = "alpha", .flags = 0x0002, .extra = "XYZW"});
  MemZip m(b.finish());
  ASSERT_EQ(m.zip.getFileEntryCount(), 1u);
  ZQPtr<ZQZipFileEntry> e = m.zip.getFileEntry(0u);
  EXPECT_EQ(e->getSignature(), 0x04034B50u);
  EXPECT_EQ(e->getVersionNeeded(), 20u);
  EXPECT_EQ(e->getFlags(), 0x0002u);
  EXPECT_EQ(e->getCompressionMethod(), ZQZipFileEntry::STORED);
  EXPECT_EQ(e->getTime(), 0x6000u);
  EXPECT_EQ(e->getDate(), 0x58CBu);
  EXPECT_EQ(e->getCRC32(), crcOf("alpha"));
  EXPECT_EQ(e->getCompressedSize(), 5u);
  EXPECT_EQ(e->getUncompressedSize(), 5u);
  EXPECT_EQ(e->getNameLength(), 5u);
  EXPECT_EQ(e->getExtraLength(), 4u);
  EXPECT_EQ(e->getPosition(), 0);
  EXPECT_EQ(e->getDataOffset(), 30 + 5 + 4);
  EXPECT_EQ(utf8(e->getFileName()), "a.txt");
  EXPECT_EQ(contentOf(e), "alpha");
}

TEST(ZipFile, DirectoryAndEndRecordFieldsAreReadAsStored) {
  ZipBuilder b;
  b.add({.name = "one", .content = "1"});
  uint32_t second = b.add({.name = "two", .content = "22", .method = 8});
  std::string zip = b.finish("hi");
  std::istringstream in(zip);
  size_t dirAt = zip.find("PK\1\2");
  in.seekg(static_cast<std::streamoff>(zip.find("PK\1\2", dirAt + 4)));
  ZQZipDirectoryEntry d(&in);
  EXPECT_EQ(d.getSignature(), 0x02014B50u);
  EXPECT_EQ(d.getVersionMadeBy(), 0x031Eu);
  EXPECT_EQ(d.getVersionNeeded(), 20u);
  EXPECT_EQ(d.getCompressionMethod(), 8u);
  EXPECT_EQ(d.getCRC32(), crcOf("22"));
  EXPECT_EQ(d.getCompressedSize(), rawDeflate("22").size());
  EXPECT_EQ(d.getUncompressedSize(), 2u);
  EXPECT_EQ(d.getNameLength(), 3u);
  EXPECT_EQ(d.getLocalHeaderOffset(), second);
  EXPECT_EQ(utf8(d.getFileName()), "two");
  // The stream stands behind the record, on the end record.
  EXPECT_EQ(ZQZipEntry::getSignature(&in), 0x06054B50u);
  ZQZipEndDirectoryEntry end(&in);
  EXPECT_EQ(end.getTotalEntries(), 2u);
  EXPECT_EQ(end.getEntriesOnDisk(), 2u);
  EXPECT_EQ(end.getDirectoryOffset(), dirAt);
  EXPECT_EQ(end.getDirectorySize(), zip.size() - 22 - 2 - dirAt);
  EXPECT_EQ(end.getCommentLength(), 2u);
}

TEST(ZipFile, FieldsReadPastTheEndAreZero) {
  // A local header cut inside its CRC field: what is there is read, the rest is 0.
  std::string cut = "PK\3\4" + le16(20) + le16(0x0800) + le16(8) + le16(0x1234) + "\x01";
  std::istringstream in(cut);
  ZQZipFileEntry e(&in);
  EXPECT_EQ(e.getSignature(), 0x04034B50u);
  EXPECT_EQ(e.getVersionNeeded(), 20u);
  EXPECT_EQ(e.getFlags(), 0x0800u);
  EXPECT_EQ(e.getCompressionMethod(), ZQZipFileEntry::DEFLATED);
  EXPECT_EQ(e.getTime(), 0x1234u);
  EXPECT_EQ(e.getDate(), 0u);  // one byte of two was there
  EXPECT_EQ(e.getCRC32(), 0u);
  EXPECT_EQ(e.getCompressedSize(), 0u);
  EXPECT_EQ(e.getUncompressedSize(), 0u);
  EXPECT_EQ(e.getNameLength(), 0u);
  EXPECT_TRUE(e.getFileName().isEmpty());

  std::istringstream empty("");
  ZQZipExtheaderEntry d(&empty);
  EXPECT_EQ(d.getSignature(), 0u);
  EXPECT_EQ(d.getCRC32(), 0u);
  EXPECT_EQ(d.getCompressedSize(), 0u);
  std::istringstream three("\x01\x02\x03");
  EXPECT_EQ(ZQZipEntry::read32(&three), 0u);
  std::istringstream one("\x01");
  EXPECT_EQ(ZQZipEntry::read16(&one), 0u);
  std::istringstream two("\x34\x12");
  EXPECT_EQ(ZQZipEntry::read16(&two), 0x1234u);
  EXPECT_EQ(ZQZipEntry::read16(nullptr), 0u);
}

TEST(ZipFile, ACutArchiveGivesAnEntryWithAnEmptyName) {
  // Only the signature and a few bytes of the header: the scan keeps one empty-named entry.
  MemZip m("PK\3\4" + le16(10));
  ASSERT_EQ(m.zip.getFileEntryCount(), 1u);
  EXPECT_TRUE(m.zip.getFileEntry(0u)->getFileName().isEmpty());
  EXPECT_EQ(m.zip.getFileEntry(0u)->getVersionNeeded(), 10u);
  EXPECT_EQ(contentOf(m.zip.getFileEntry(0u)), "");
}

TEST(ZipFile, GetSignaturePeeksWithoutMoving) {
  std::istringstream in("xxPK\5\6rest");
  in.seekg(2);
  EXPECT_EQ(ZQZipEntry::getSignature(&in), 0x06054B50u);
  EXPECT_EQ(in.tellg(), 2);
  EXPECT_EQ(ZQZipEntry::getSignature(&in), 0x06054B50u);
  EXPECT_TRUE(in.good());
  EXPECT_EQ(ZQZipEntry::getSignature(nullptr), 0u);
}

TEST(ZipFile, GetSignatureOfFewerThanFourBytesIsZeroAndPutsThePositionBack) {
  std::istringstream in("abcPK\5");
  in.seekg(3);
  EXPECT_EQ(ZQZipEntry::getSignature(&in), 0u);
  EXPECT_TRUE(in.fail());
  in.clear();
  EXPECT_EQ(in.tellg(), 3);
}

TEST(ZipFile, GetSignatureSeeksBackWhereTheBufferCannotStepBack) {
  OneByteBuf buf(std::string("..PK\3\4.."));
  std::istream in(&buf);
  in.seekg(2);
  EXPECT_EQ(ZQZipEntry::getSignature(&in), 0x04034B50u);
  EXPECT_EQ(in.tellg(), 2);
}

TEST(ZipFile, WholeArchiveReadsThroughAStreamThatCannotStepBack) {
  ZipBuilder b;
  b.add({.name = "x", .content = "first entry", .method = 8});
  b.add({.name = "y", .content = std::string(3000, 'y')});
  OneByteBuf buf(b.finish());
  std::istream in(&buf);
  ZQZipFile zip;
  zip.open(&in, false);
  ASSERT_EQ(zip.getFileEntryCount(), 2u);
  EXPECT_EQ(contentOf(zip.getFileEntry(u("x"))), "first entry");
  EXPECT_EQ(contentOf(zip.getFileEntry(u("y"))), std::string(3000, 'y'));
}

TEST(ZipFile, TypesReportAsTold) {
  ZipBuilder b;
  b.add({.name = "t", .content = "t"});
  std::string zip = b.finish();
  MemZip m(zip);
  ZQPtr<ZQZipFileEntry> e = m.zip.getFileEntry(0u);
  EXPECT_EQ(utf8(e->getTypeName()), "ZQZipFileEntry");
  EXPECT_EQ(e->getTypeID(), ZQTypeId::ZQZipFileEntry);
  EXPECT_TRUE(e->isA(ZQTypeId::ZQZipEntry));
  EXPECT_TRUE(e->isA(ZQTypeId::ZQRCObject));
  std::istringstream in(zip);
  ZQZipExtheaderEntry x(&in);
  ZQZipDirectoryEntry d(&in);
  ZQZipEndDirectoryEntry end(&in);
  for (const ZQZipEntry* r :
       {static_cast<const ZQZipEntry*>(&x), static_cast<const ZQZipEntry*>(&d),
        static_cast<const ZQZipEntry*>(&end)}) {
    EXPECT_EQ(utf8(r->getTypeName()), "ZQZipEntry");
    EXPECT_EQ(r->getTypeID(), ZQTypeId::ZQZipEntry);
    EXPECT_FALSE(r->isA(ZQTypeId::ZQZipFileEntry));
  }
}

// ---- finding the directory ----------------------------------------------------------------

TEST(ZipFile, AComment200BytesLongOpensThroughTheDirectory) {
  ZipBuilder b;
  b.add({.name = "a", .content = "aaa"});
  MemZip m(markDirectory(b.finish(std::string(200, 'c')), kMark));
  ASSERT_EQ(m.zip.getFileEntryCount(), 1u);
  EXPECT_EQ(m.zip.getFileEntry(0u)->getCRC32(), kMark);
}

TEST(ZipFile, AComment400BytesLongIsReadByTheScan) {
  ZipBuilder b;
  b.add({.name = "a", .content = "aaa"});
  b.add({.name = "b", .content = "bbbb", .method = 8});
  MemZip m(markDirectory(b.finish(std::string(400, 'c')), kMark));
  ASSERT_EQ(m.zip.getFileEntryCount(), 2u);
  EXPECT_EQ(m.zip.getFileEntry(0u)->getCRC32(), crcOf("aaa"));  // the local header's
  EXPECT_EQ(contentOf(m.zip.getFileEntry(u("b"))), "bbbb");
}

TEST(ZipFile, TheEndRecordMustBeginWithinTheLast320Bytes) {
  ZipBuilder b;
  b.add({.name = "a", .content = "aaa"});
  // 22 + 298 = 320 bytes: found from the farthest step.
  MemZip found(markDirectory(b.finish(std::string(298, 'c')), kMark));
  ASSERT_EQ(found.zip.getFileEntryCount(), 1u);
  EXPECT_EQ(found.zip.getFileEntry(0u)->getCRC32(), kMark);
  // One byte more and the record lies out of reach.
  MemZip missed(markDirectory(b.finish(std::string(299, 'c')), kMark));
  ASSERT_EQ(missed.zip.getFileEntryCount(), 1u);
  EXPECT_EQ(missed.zip.getFileEntry(0u)->getCRC32(), crcOf("aaa"));
}

TEST(ZipFile, AShortFileIsSearchedFromItsFirstByte) {
  // 103 bytes, not a multiple of 32: the end record at byte 0 lies within the last 320 bytes
  // and is found, though no step of 32 starts exactly there. Its directory follows it.
  std::string local = "PK\3\4" + le16(20) + le16(0) + le16(0) + le16(0) + le16(0) +
                      le32(crcOf("aaa")) + le32(3) + le32(3) + le16(1) + le16(0) + "a" + "aaa";
  std::string record = "PK\1\2" + le16(20) + le16(20) + le16(0) + le16(0) + le16(0) + le16(0) +
                       le32(kMark) + le32(3) + le32(3) + le16(1) + le16(0) + le16(0) + le16(0) +
                       le16(0) + le32(0) + le32(22 + 47) + "a";
  std::string end =
      "PK\5\6" + le16(0) + le16(0) + le16(1) + le16(1) + le32(47) + le32(22) + le16(0);
  std::string zip = end + record + local;
  ASSERT_EQ(zip.size(), 103u);
  MemZip m(zip);
  ASSERT_EQ(m.zip.getFileEntryCount(), 1u);
  EXPECT_EQ(m.zip.getFileEntry(0u)->getCRC32(), kMark);
  EXPECT_EQ(contentOf(m.zip.getFileEntry(u("a"))), "aaa");
}

TEST(ZipFile, TheFirstEndSignatureInTheSearchedRangeWins) {
  ZipBuilder b;
  b.add({.name = "a", .content = "aaa"});
  // The record lies 62 bytes before the end; a false signature 10 bytes before the end is in
  // the first, shortest range and wins. Its "directory offset" points at nothing, so the
  // archive is scanned.
  std::string comment = std::string(30, 'c') + "PK\5\6" + std::string(6, '\0');
  MemZip m(markDirectory(b.finish(comment), kMark));
  ASSERT_EQ(m.zip.getFileEntryCount(), 1u);
  EXPECT_EQ(m.zip.getFileEntry(0u)->getCRC32(), crcOf("aaa"));
  // A false signature only a longer range reaches lies behind the record in that range, so
  // the record wins.
  std::string early = "PK\5\6" + std::string(36, 'c');
  MemZip n(markDirectory(b.finish(early), kMark));
  EXPECT_EQ(n.zip.getFileEntry(0u)->getCRC32(), kMark);
}

TEST(ZipFile, DirectoryOffsetIsTakenAsItStands) {
  // Bytes in front of the archive shift every record: the directory offset points into the
  // wrong place, and the scan finds no local header at the start either.
  ZipBuilder b;
  b.add({.name = "a", .content = "aaa"});
  MemZip m("SFX!" + b.finish());
  EXPECT_EQ(m.zip.getFileEntryCount(), 0u);
}

TEST(ZipFile, DirectoryOffsetPointingAtNothingFallsBackToTheScan) {
  ZipBuilder b;
  b.add({.name = "a", .content = "aaa"});
  b.add({.name = "b", .content = "bb"});
  std::string zip = b.bare() + b.endRecord(0x7FFFFFF0u, "");
  MemZip m(zip);
  ASSERT_EQ(m.zip.getFileEntryCount(), 2u);
  EXPECT_EQ(contentOf(m.zip.getFileEntry(u("b"))), "bb");
}

TEST(ZipFile, LocalHeaderNamesTheEntryAndTheDirectorySizesIt) {
  ZipBuilder b;
  b.add({.name = "local.txt", .content = "payload", .method = 8, .dirName = "central.txt"});
  MemZip m(b.finish());
  ASSERT_EQ(m.zip.getFileEntryCount(), 1u);
  EXPECT_EQ(m.zip.getFileEntry(u("central.txt")).get(), nullptr);
  ZQPtr<ZQZipFileEntry> e = m.zip.getFileEntry(u("local.txt"));
  ASSERT_NE(e.get(), nullptr);
  EXPECT_EQ(contentOf(e), "payload");
}

TEST(ZipFile, DirectorySizesWinOverZerosInTheLocalHeader) {
  ZipBuilder b;
  // Bit 3 with no descriptor at all: only the directory knows the sizes.
  b.add({.name = "a",
         .content = "first",
         .method = 8,
         .descriptor = true,
         .descriptorSignature = false});
  b.add({.name = "b", .content = "second one", .method = 8, .descriptor = true});
  b.add({.name = "c", .content = "third", .zeroLocalSizes = true});
  MemZip m(b.finish());
  ASSERT_EQ(m.zip.getFileEntryCount(), 3u);
  EXPECT_EQ(m.zip.getFileEntry(0u)->getCompressedSize(), rawDeflate("first").size());
  EXPECT_EQ(m.zip.getFileEntry(0u)->getUncompressedSize(), 5u);
  EXPECT_EQ(m.zip.getFileEntry(0u)->getCRC32(), crcOf("first"));
  EXPECT_EQ(contentOf(m.zip.getFileEntry(u("a"))), "first");
  EXPECT_EQ(contentOf(m.zip.getFileEntry(u("b"))), "second one");
  EXPECT_EQ(contentOf(m.zip.getFileEntry(u("c"))), "third");
}

TEST(ZipFile, ALocalHeaderOffsetPastTheEndSpoilsOnlyItsOwnEntry) {
  ZipBuilder b;
  b.add({.name = "a", .content = "alpha"});
  b.add({.name = "b", .content = "beta", .method = 8});
  std::string zip = b.finish();
  size_t dir = zip.find("PK\1\2");
  zip.replace(dir + 42, 4, le32(0x7FFFFFF0u));
  ScratchDir files;
  streamtest::writeFile(files.file("far.zip"), zip);
  MemZip inMemory(zip);
  ZQZipFile onDisk;
  onDisk.open(files.file("far.zip").c_str());
  for (const ZQZipFile* z : {&inMemory.zip, &onDisk}) {
    ASSERT_EQ(z->getFileEntryCount(), 2u);
    // Nothing is there: zero fields and an empty name, then the directory's sizes.
    ZQPtr<ZQZipFileEntry> far = z->getFileEntry(0u);
    EXPECT_EQ(far->getSignature(), 0u);
    EXPECT_TRUE(far->getFileName().isEmpty());
    EXPECT_EQ(far->getUncompressedSize(), 5u);
    EXPECT_EQ(contentOf(far), "");
    // The failed read doesn't stop the next entry from being found where it is.
    EXPECT_EQ(contentOf(z->getFileEntry(u("b"))), "beta");
  }
}

TEST(ZipFile, OpeningThroughTheDirectoryReadsNoEntryData) {
  // Entries with bit 3 and stored data: the directory gives their sizes, so opening reads the
  // end, the directory and each local header, and none of the data.
  ZipBuilder b;
  std::string first = streamtest::randomBytes(100000, 3);
  std::string second = streamtest::randomBytes(100000, 4);
  b.add({.name = "one", .content = first, .descriptor = true});
  b.add({.name = "two", .content = second, .descriptor = true});
  CountingBuf buf(b.finish());
  std::istream in(&buf);
  ZQZipFile zip;
  zip.open(&in, false);
  ASSERT_EQ(zip.getFileEntryCount(), 2u);
  EXPECT_LT(buf.served(), 8000u);
  EXPECT_TRUE(contentOf(zip.getFileEntry(u("two"))) == second);
  EXPECT_GE(buf.served(), 100000u);
}

TEST(ZipFile, EntryCountOfTheEndRecordIsNotConsulted) {
  ZipBuilder b;
  b.add({.name = "a", .content = "1"});
  b.add({.name = "b", .content = "2"});
  std::string zip = b.finish();
  size_t end = zip.rfind("PK\5\6");
  zip.replace(end + 8, 4, le16(7) + le16(7));
  MemZip m(zip);
  EXPECT_EQ(m.zip.getFileEntryCount(), 2u);
}

// ---- the scan without a directory ---------------------------------------------------------

TEST(ZipFile, DirectoryLessArchiveIsScannedFromTheStart) {
  ZipBuilder b;
  b.add({.name = "a", .content = "alpha", .method = 8});
  b.add({.name = "b", .content = "beta"});
  MemZip m(b.bare());
  ASSERT_EQ(m.zip.getFileEntryCount(), 2u);
  EXPECT_EQ(contentOf(m.zip.getFileEntry(0u)), "alpha");
  EXPECT_EQ(contentOf(m.zip.getFileEntry(1u)), "beta");
}

TEST(ZipFile, DescriptorsGiveTheSizesWhenThereIsNoDirectory) {
  ZipBuilder b;
  b.add({.name = "a", .content = "alpha alpha alpha", .method = 8, .descriptor = true});
  b.add({.name = "b", .content = "stored bytes", .descriptor = true});
  b.add({.name = "c", .content = "gamma", .method = 8, .descriptor = true});
  MemZip m(b.bare());
  ASSERT_EQ(m.zip.getFileEntryCount(), 3u);
  ZQPtr<ZQZipFileEntry> a = m.zip.getFileEntry(0u);
  EXPECT_EQ(a->getCompressedSize(), rawDeflate("alpha alpha alpha").size());
  EXPECT_EQ(a->getUncompressedSize(), 17u);
  EXPECT_EQ(a->getCRC32(), crcOf("alpha alpha alpha"));
  EXPECT_EQ(contentOf(a), "alpha alpha alpha");
  EXPECT_EQ(contentOf(m.zip.getFileEntry(1u)), "stored bytes");
  EXPECT_EQ(contentOf(m.zip.getFileEntry(2u)), "gamma");
}

TEST(ZipFile, BytesBetweenEntriesAreSkippedOneAtATime) {
  ZipBuilder b;
  b.add({.name = "a", .content = "alpha"});
  b.junk("junk");
  b.add({.name = "b", .content = "beta"});
  b.junk("P");  // one byte short of anything
  b.junk("PK\3");
  b.add({.name = "c", .content = "gamma"});
  MemZip m(b.bare());
  ASSERT_EQ(m.zip.getFileEntryCount(), 3u);
  EXPECT_EQ(contentOf(m.zip.getFileEntry(u("a"))), "alpha");
  EXPECT_EQ(contentOf(m.zip.getFileEntry(u("b"))), "beta");
  EXPECT_EQ(contentOf(m.zip.getFileEntry(u("c"))), "gamma");
}

TEST(ZipFile, ScanEndsAtADirectoryOrEndSignature) {
  ZipBuilder b;
  b.add({.name = "a", .content = "alpha"});
  std::string withDirectory = b.bare() + "PK\1\2";
  ZipBuilder more;
  more.add({.name = "b", .content = "beta"});
  MemZip m(withDirectory + more.bare());
  EXPECT_EQ(m.zip.getFileEntryCount(), 1u);
  MemZip n(b.bare() + "PK\5\6" + more.bare());
  EXPECT_EQ(n.zip.getFileEntryCount(), 1u);
}

TEST(ZipFile, AFileThatDoesNotBeginWithARecordHasNoEntries) {
  ZipBuilder b;
  b.add({.name = "a", .content = "alpha"});
  MemZip m("#" + b.bare());
  EXPECT_EQ(m.zip.getFileEntryCount(), 0u);
  MemZip empty("");
  EXPECT_EQ(empty.zip.getFileEntryCount(), 0u);
}

TEST(ZipFile, DescriptorBeforeAnyEntryIsReadAndIgnored) {
  ZipBuilder b;
  b.add({.name = "a", .content = "alpha"});
  std::string zip = "PK\7\10" + le32(1) + le32(2) + le32(3) + b.bare();
  MemZip m(zip);
  ASSERT_EQ(m.zip.getFileEntryCount(), 1u);
  EXPECT_EQ(contentOf(m.zip.getFileEntry(0u)), "alpha");
}

TEST(ZipFile, StoredDataHoldingADescriptorSignatureEndsTheEntryEarly) {
  // The search for the descriptor is a plain byte search: the first "PK\7\10" wins and the
  // bytes behind it are taken for the descriptor's fields. Here a directory signature follows
  // in the data, so the scan ends there and the entry keeps the sizes it was given.
  std::string content = "abcPK\7\10" + le32(0) + le32(3) + le32(3) + "PK\1\2 and the rest";
  ZipBuilder b;
  b.add({.name = "s", .content = content, .descriptor = true});
  MemZip m(b.bare());
  ASSERT_EQ(m.zip.getFileEntryCount(), 1u);
  ZQPtr<ZQZipFileEntry> e = m.zip.getFileEntry(0u);
  EXPECT_EQ(e->getCompressedSize(), 3u);
  EXPECT_EQ(contentOf(e), "abc");
  // With the directory the true sizes stand.
  MemZip d(b.finish());
  EXPECT_EQ(contentOf(d.zip.getFileEntry(0u)), content);
}

TEST(ZipFile, EveryDescriptorTheScanMeetsGoesToTheLastEntry) {
  // A false descriptor inside stored data is read first; the scan then steps through the rest
  // of the data byte by byte, meets the true descriptor, and its sizes replace the false ones.
  std::string content = "abcPK\7\10" + le32(0) + le32(3) + le32(3) + "the rest of the data";
  ZipBuilder b;
  b.add({.name = "s", .content = content, .descriptor = true});
  b.add({.name = "t", .content = "next"});
  MemZip m(b.bare());
  ASSERT_EQ(m.zip.getFileEntryCount(), 2u);
  EXPECT_EQ(m.zip.getFileEntry(0u)->getCompressedSize(), content.size());
  EXPECT_EQ(contentOf(m.zip.getFileEntry(0u)), content);
  EXPECT_EQ(contentOf(m.zip.getFileEntry(1u)), "next");
}

TEST(ZipFile, MissingDescriptorEndsTheScan) {
  // Bit 3 and no descriptor signature anywhere: the search runs to the end of the data, and
  // nothing behind that entry is found.
  ZipBuilder b;
  b.add({.name = "a", .content = "alpha"});
  b.add({.name = "b", .content = "beta", .descriptor = true, .descriptorSignature = false});
  b.add({.name = "c", .content = "gamma"});
  MemZip m(b.bare());
  ASSERT_EQ(m.zip.getFileEntryCount(), 2u);
  EXPECT_EQ(contentOf(m.zip.getFileEntry(u("a"))), "alpha");
  EXPECT_EQ(m.zip.getFileEntry(u("b"))->getCompressedSize(), 0u);
  EXPECT_EQ(m.zip.getFileEntry(u("c")).get(), nullptr);
}

TEST(ZipFile, ExtraFieldIsSkippedUnread) {
  ZipBuilder b;
  b.add({.name = "e", .content = "data", .extra = std::string("UT\5\0\1\2\3\4\5PK\3\4", 13)});
  b.add({.name = "f", .content = "more", .method = 8, .extra = "PK\1\2"});
  MemZip withDir(b.finish());
  EXPECT_EQ(contentOf(withDir.zip.getFileEntry(u("e"))), "data");
  EXPECT_EQ(contentOf(withDir.zip.getFileEntry(u("f"))), "more");
  MemZip bare(b.bare());
  ASSERT_EQ(bare.zip.getFileEntryCount(), 2u);
  EXPECT_EQ(contentOf(bare.zip.getFileEntry(u("f"))), "more");
}

// ---- names --------------------------------------------------------------------------------

TEST(ZipFile, NamesDecodeFromTheDefaultCodePageOrFromUtf8ByFlagBit11) {
  ZipBuilder b;
  b.add({.name = "caf\xE9.txt", .content = "1"});                       // bit 11 clear
  b.add({.name = "caf\xC3\xA9.utf8", .content = "2", .flags = 0x800});  // bit 11 set
  b.add({.name = "caf\xE9.bad", .content = "3", .flags = 0x800});       // not UTF-8
  b.add({.name = "caf\xC3\xA9.txt", .content = "4"});                   // bit 11 clear
  MemZip m(b.finish());
  ASSERT_EQ(m.zip.getFileEntryCount(), 4u);
  EXPECT_EQ(m.zip.getFileEntry(0u)->getFileName(), fromDefaultCodePage("caf\xE9.txt"));
  EXPECT_EQ(m.zip.getFileEntry(1u)->getFileName(), UnicodeString(u"caf\u00E9.utf8"));
  EXPECT_EQ(m.zip.getFileEntry(2u)->getFileName(), UnicodeString(u"caf\uFFFD.bad"));
  EXPECT_EQ(m.zip.getFileEntry(3u)->getFileName(), fromDefaultCodePage("caf\xC3\xA9.txt"));
  EXPECT_EQ(contentOf(m.zip.getFileEntry(UnicodeString(u"caf\u00E9.utf8"))), "2");
  EXPECT_EQ(m.zip.getFileEntry(1u)->getRawFileName(), "caf\xC3\xA9.utf8");
}

TEST(ZipFile, DirectoryNamesIgnoreFlagBit11) {
  ZipBuilder b;
  b.add({.name = "\xC3\xA9\xE9", .content = "x", .flags = 0x800});
  std::string zip = b.finish();
  std::istringstream in(zip);
  in.seekg(static_cast<std::streamoff>(zip.find("PK\1\2")));
  ZQZipDirectoryEntry d(&in);
  EXPECT_EQ(d.getFlags(), 0x800u);
  EXPECT_EQ(d.getFileName(), fromDefaultCodePage("\xC3\xA9\xE9"));
}

TEST(ZipFile, NamesCompareExactlyAndCaseSensitively) {
  ZipBuilder b;
  b.add({.name = "dir/File.txt", .content = "f"});
  MemZip m(b.finish());
  EXPECT_NE(m.zip.getFileEntry(u("dir/File.txt")).get(), nullptr);
  EXPECT_EQ(m.zip.getFileEntry(u("dir/file.txt")).get(), nullptr);
  EXPECT_EQ(m.zip.getFileEntry(u("dir\\File.txt")).get(), nullptr);
  EXPECT_EQ(m.zip.getFileEntry(u("/dir/File.txt")).get(), nullptr);
  EXPECT_EQ(m.zip.getFileEntry(u("")).get(), nullptr);
}

TEST(ZipFile, DuplicateNamesBothStayAndTheLaterOneIsFoundByName) {
  ZipBuilder b;
  b.add({.name = "same", .content = "first"});
  b.add({.name = "same", .content = "second"});
  MemZip m(b.finish());
  ASSERT_EQ(m.zip.getFileEntryCount(), 2u);
  EXPECT_EQ(contentOf(m.zip.getFileEntry(0u)), "first");
  EXPECT_EQ(contentOf(m.zip.getFileEntry(1u)), "second");
  EXPECT_EQ(m.zip.getFileEntry(u("same")).get(), m.zip.getFileEntry(1u).get());
}

TEST(ZipFile, EntryByIndexOutOfRangeIsNull) {
  ZipBuilder b;
  b.add({.name = "a", .content = "a"});
  MemZip m(b.finish());
  EXPECT_NE(m.zip.getFileEntry(0u).get(), nullptr);
  EXPECT_EQ(m.zip.getFileEntry(1u).get(), nullptr);
  EXPECT_EQ(m.zip.getFileEntry(0xFFFFFFFFu).get(), nullptr);
}

// ---- streams ------------------------------------------------------------------------------

TEST(ZipFile, CachedUncompressedStreamIsTheSameStreamRewound) {
  ZipBuilder b;
  std::string text = streamtest::compressibleText(20000);
  b.add({.name = "d", .content = text, .method = 8});
  MemZip m(b.finish());
  ZQPtr<ZQZipFileEntry> e = m.zip.getFileEntry(0u);
  std::istream* first = e->getUncompressedStream(false);
  char head[100];
  first->read(head, sizeof head);
  EXPECT_EQ(std::string(head, 100), text.substr(0, 100));
  std::istream* again = e->getUncompressedStream(false);
  EXPECT_EQ(again, first);
  EXPECT_TRUE(readAll(again) == text);  // from the start again, after reading to the end
  EXPECT_TRUE(readAll(e->getUncompressedStream(false)) == text);
}

TEST(ZipFile, CachedCompressedStreamIsTheSameStreamRewound) {
  ZipBuilder b;
  b.add({.name = "s", .content = "stored text"});
  MemZip m(b.finish());
  ZQPtr<ZQZipFileEntry> e = m.zip.getFileEntry(0u);
  std::istream* first = e->getCompressedStream(false);
  EXPECT_EQ(readAll(first), "stored text");
  EXPECT_TRUE(first->eof());
  std::istream* again = e->getCompressedStream(false);
  EXPECT_EQ(again, first);
  EXPECT_TRUE(again->good());
  EXPECT_EQ(readAll(again), "stored text");
}

TEST(ZipFile, IndependentStreamsAreDistinctAndOutliveTheArchive) {
  ZipBuilder b;
  std::string text = streamtest::compressibleText(9000, 3);
  b.add({.name = "d", .content = text, .method = 8});
  std::unique_ptr<std::istream> one, two, raw;
  {
    MemZip m(b.finish());
    ZQPtr<ZQZipFileEntry> e = m.zip.getFileEntry(0u);
    one.reset(e->getUncompressedStream(true));
    two.reset(e->getUncompressedStream(true));
    raw.reset(e->getCompressedStream(true));
    ASSERT_NE(one.get(), two.get());
    char c[10];
    one->read(c, 10);  // moving one leaves the other at its start
    EXPECT_NE(one.get(), e->getUncompressedStream(false));
  }
  EXPECT_TRUE(readAll(two.get()) == text);
  EXPECT_TRUE(readAll(one.get()) == text.substr(10));
  EXPECT_TRUE(readAll(raw.get()) == rawDeflate(text));
}

TEST(ZipFile, CompressedStreamOfADeflatedEntryGivesTheDeflateBytes) {
  ZipBuilder b;
  b.add({.name = "d", .content = "hello hello hello", .method = 8});
  MemZip m(b.finish());
  ZQPtr<ZQZipFileEntry> e = m.zip.getFileEntry(0u);
  EXPECT_EQ(readAll(e->getCompressedStream(false)), rawDeflate("hello hello hello"));
  size_t size = 0;
  const char* data = e->getCompressedData(size);
  EXPECT_EQ(std::string(data, size), rawDeflate("hello hello hello"));
}

TEST(ZipFile, UnknownMethodHandsOutTheRawBytes) {
  ZipBuilder b;
  b.add({.name = "bz", .content = "BZh91AY&SY raw bytes", .method = 12});
  MemZip m(b.finish());
  ZQPtr<ZQZipFileEntry> e = m.zip.getFileEntry(0u);
  EXPECT_EQ(e->getCompressionMethod(), 12);
  EXPECT_EQ(contentOf(e), "BZh91AY&SY raw bytes");
  // The cached form is exactly the compressed stream.
  EXPECT_EQ(e->getUncompressedStream(false), e->getCompressedStream(false));
}

TEST(ZipFile, DamagedDeflateDataReadsAsAnEarlyEnd) {
  ZipBuilder b;
  std::string text = streamtest::compressibleText(30000, 5);
  b.add({.name = "d", .content = text, .method = 8});
  std::string zip = b.finish();
  // Overwrite bytes inside the deflate data with an invalid block type.
  for (size_t i = 200; i < 260; ++i) zip[30 + 1 + i] = '\xFF';
  MemZip m(zip);
  std::string got = contentOf(m.zip.getFileEntry(0u));
  EXPECT_LT(got.size(), text.size());
}

TEST(ZipFile, TruncatedDataReadsWhatIsThere) {
  ZipBuilder b;
  b.add({.name = "s", .content = std::string(1000, 's')});
  std::string zip = b.bare().substr(0, 30 + 1 + 400);
  MemZip m(zip);
  ASSERT_EQ(m.zip.getFileEntryCount(), 1u);
  EXPECT_EQ(m.zip.getFileEntry(0u)->getCompressedSize(), 1000u);
  EXPECT_EQ(contentOf(m.zip.getFileEntry(0u)), std::string(400, 's'));
}

TEST(ZipFile, HugeClaimedSizeAllocatesOnlyWhatTheStreamHolds) {
  ZipBuilder b;
  b.add({.name = "big", .content = "tiny", .method = 8});
  std::string zip = b.finish();
  size_t dir = zip.find("PK\1\2");
  zip.replace(dir + 20, 4, le32(0xFFFFFFF0u));
  MemZip m(zip);
  ZQPtr<ZQZipFileEntry> e = m.zip.getFileEntry(0u);
  EXPECT_EQ(e->getCompressedSize(), 0xFFFFFFF0u);
  size_t size = 0;
  e->getCompressedData(size);
  EXPECT_EQ(size, zip.size() - (30 + 3));
  EXPECT_EQ(contentOf(e), "tiny");  // the deflate stream ends by itself
}

TEST(ZipFile, EncryptionFlagIsNotLookedAt) {
  ZipBuilder b;
  b.add({.name = "enc", .content = "not really encrypted", .flags = 1});
  MemZip m(b.finish());
  EXPECT_EQ(m.zip.getFileEntry(0u)->getFlags() & 1u, 1u);
  EXPECT_EQ(contentOf(m.zip.getFileEntry(0u)), "not really encrypted");
}

TEST(ZipFile, WrongCrcIsKeptNotChecked) {
  ZipBuilder b;
  b.add({.name = "a", .content = "content", .method = 8, .dirCrc = 0x12345678});
  MemZip m(b.finish());
  EXPECT_EQ(m.zip.getFileEntry(0u)->getCRC32(), 0x12345678u);
  EXPECT_EQ(contentOf(m.zip.getFileEntry(0u)), "content");
}

TEST(ZipFile, EmptyEntryHasEmptyStreams) {
  ZipBuilder b;
  b.add({.name = "e0", .content = ""});
  b.add({.name = "e8", .content = "", .method = 8});
  MemZip m(b.finish());
  EXPECT_EQ(contentOf(m.zip.getFileEntry(0u)), "");
  EXPECT_EQ(contentOf(m.zip.getFileEntry(1u)), "");
  EXPECT_EQ(readAll(m.zip.getFileEntry(1u)->getCompressedStream(false)), rawDeflate(""));
}

TEST(ZipFile, DataIsReadOnFirstUseNotAtOpen) {
  ZipBuilder b;
  b.add({.name = "a", .content = "original"});
  std::string zip = b.finish();
  std::stringstream io(zip);
  ZQZipFile file;
  file.open(&io, false);
  ZQPtr<ZQZipFileEntry> e = file.getFileEntry(0u);
  // Change the stored bytes after opening: the entry reads what is there on first use.
  io.clear();
  io.seekp(30 + 1);
  io.write("ORIGINAL", 8);
  EXPECT_EQ(contentOf(e), "ORIGINAL");
  // From then on the entry holds its data.
  io.seekp(30 + 1);
  io.write("changed!", 8);
  EXPECT_EQ(contentOf(e), "ORIGINAL");
}

// ---- opening ------------------------------------------------------------------------------

TEST(ZipFile, NewArchiveHasNoEntries) {
  ZQZipFile zip;
  EXPECT_EQ(zip.getFileEntryCount(), 0u);
  EXPECT_EQ(zip.getFileEntry(0u).get(), nullptr);
  EXPECT_EQ(zip.getFileEntry(u("a")).get(), nullptr);
}

TEST(ZipFile, OpenByPathReadsTheFile) {
  ScratchDir dir;
  ZipBuilder b;
  b.add({.name = "p", .content = "by path", .method = 8});
  streamtest::writeFile(dir.file("a.zip"), b.finish());
  ZQZipFile wide;
  wide.open(UnicodeString::fromUTF8(dir.file("a.zip")));
  EXPECT_EQ(contentOf(wide.getFileEntry(u("p"))), "by path");
  ZQZipFile narrow;
  narrow.open(dir.file("a.zip").c_str());
  EXPECT_EQ(contentOf(narrow.getFileEntry(u("p"))), "by path");
}

TEST(ZipFile, NarrowPathNamesTheFileByItsOwnBytes) {
  // A name that isn't UTF-8 still opens through the narrow forms.
  ScratchDir dir;
  ZipBuilder b;
  b.add({.name = "n", .content = "narrow"});
  std::string path = dir.file("caf\xE9.zip");
  streamtest::writeFile(path, b.finish());
  EXPECT_TRUE(ZQZipFile::isZipFile(path.c_str()));
  ZQZipFile zip;
  zip.open(path.c_str());
  EXPECT_EQ(contentOf(zip.getFileEntry(u("n"))), "narrow");
}

TEST(ZipFile, FileThatDoesNotOpenGivesNoEntries) {
  ScratchDir dir;
  ZQZipFile zip;
  zip.open(UnicodeString::fromUTF8(dir.file("missing.zip")));
  EXPECT_EQ(zip.getFileEntryCount(), 0u);
  zip.open(static_cast<const char*>(nullptr));
  EXPECT_EQ(zip.getFileEntryCount(), 0u);
  zip.open(static_cast<std::istream*>(nullptr), false);
  EXPECT_EQ(zip.getFileEntryCount(), 0u);
}

TEST(ZipFile, StreamWithoutABufferGivesNoEntries) {
  std::istream none(nullptr);
  ZQZipFile zip;
  zip.open(&none, false);
  EXPECT_EQ(zip.getFileEntryCount(), 0u);
  EXPECT_FALSE(ZQZipFile::isZipFile(&none));
  // A record read from it has zero fields and no data.
  ZQZipFileEntry entry(&none);
  EXPECT_EQ(entry.getSignature(), 0u);
  EXPECT_EQ(contentOf(ZQPtr<ZQZipFileEntry>(new ZQZipFileEntry(&none))), "");
}

TEST(ZipFile, OpenAgainReplacesStreamAndEntries) {
  ZipBuilder a;
  a.add({.name = "a1", .content = "1"});
  a.add({.name = "a2", .content = "2"});
  ZipBuilder b;
  b.add({.name = "b1", .content = "3"});
  ZQZipFile zip;
  auto* first = new std::istringstream(a.finish());
  zip.open(first, true);
  EXPECT_EQ(zip.getFileEntryCount(), 2u);
  zip.open(new std::istringstream(b.finish()), true);  // the first stream is deleted
  EXPECT_EQ(zip.getFileEntryCount(), 1u);
  EXPECT_EQ(zip.getFileEntry(u("a1")).get(), nullptr);
  EXPECT_EQ(contentOf(zip.getFileEntry(u("b1"))), "3");
}

TEST(ZipFile, CopySharesStreamAndEntries) {
  ZipBuilder b;
  b.add({.name = "c", .content = "copied"});
  std::istringstream in(b.finish());
  ZQZipFile zip;
  zip.open(&in, false);
  ZQZipFile copy(zip);
  EXPECT_EQ(copy.getFileEntryCount(), 1u);
  EXPECT_EQ(copy.getFileEntry(0u).get(), zip.getFileEntry(0u).get());
  ZQZipFile assigned;
  assigned = zip;
  EXPECT_EQ(assigned.getFileEntry(u("c")).get(), zip.getFileEntry(0u).get());
  EXPECT_EQ(contentOf(assigned.getFileEntry(u("c"))), "copied");
}

// A reader that makes its own entries, counting them.
class CountingZip : public ZQZipFile {
 public:
  int made = 0;

 protected:
  ZQPtr<ZQZipFileEntry> createZipFileEntry() override {
    ++made;
    return ZQZipFile::createZipFileEntry();
  }
};

TEST(ZipFile, EntriesAreMadeThroughTheVirtualFactory) {
  ZipBuilder b;
  b.add({.name = "a", .content = "1"});
  b.add({.name = "b", .content = "2"});
  std::istringstream withDir(b.finish());
  CountingZip zip;
  zip.open(&withDir, false);
  EXPECT_EQ(zip.made, 2);
  std::istringstream bare(b.bare());
  zip.open(&bare, false);
  EXPECT_EQ(zip.made, 4);
  EXPECT_EQ(zip.getFileEntryCount(), 2u);
}

// ---- isZipFile ----------------------------------------------------------------------------

TEST(ZipFile, IsZipFileOnAnEmptyFileIsFalse) {
  ScratchDir dir;
  streamtest::writeFile(dir.file("empty"), "");
  EXPECT_FALSE(ZQZipFile::isZipFile(UnicodeString::fromUTF8(dir.file("empty"))));
  EXPECT_FALSE(ZQZipFile::isZipFile(dir.file("empty").c_str()));
  streamtest::writeFile(dir.file("three"), "PK\3");
  EXPECT_FALSE(ZQZipFile::isZipFile(dir.file("three").c_str()));
  EXPECT_FALSE(ZQZipFile::isZipFile(dir.file("missing").c_str()));
  EXPECT_FALSE(ZQZipFile::isZipFile(static_cast<const char*>(nullptr)));
}

TEST(ZipFile, EmptyArchiveOf22BytesIsAZipWithNoEntries) {
  ScratchDir dir;
  std::string empty = ZipBuilder().finish();
  ASSERT_EQ(empty.size(), 22u);
  streamtest::writeFile(dir.file("empty.zip"), empty);
  EXPECT_TRUE(ZQZipFile::isZipFile(dir.file("empty.zip").c_str()));
  ZQZipFile zip;
  zip.open(dir.file("empty.zip").c_str());
  EXPECT_EQ(zip.getFileEntryCount(), 0u);
}

TEST(ZipFile, IsZipFileAcceptsTheThreeRecordSignaturesOnly) {
  for (const char* head : {"PK\3\4...", "PK\1\2...", "PK\5\6..."}) {
    std::istringstream in(std::string(head, 7));
    EXPECT_TRUE(ZQZipFile::isZipFile(&in)) << head;
  }
  for (const char* head : {"PK\7\10...", "PK\3\3...", "MZ\220\0...", "\0PK\3\4.."}) {
    std::istringstream in(std::string(head, 7));
    EXPECT_FALSE(ZQZipFile::isZipFile(&in));
  }
  // A self-extracting archive begins with its program, so it isn't taken for a zip.
  ZipBuilder b;
  b.add({.name = "a", .content = "a"});
  std::istringstream sfx(
      "\x7F"
      "ELF" +
      b.finish());
  EXPECT_FALSE(ZQZipFile::isZipFile(&sfx));
}

TEST(ZipFile, IsZipFileOnAStreamDoesNotMove) {
  std::istringstream in("..PK\3\4");
  in.seekg(2);
  EXPECT_TRUE(ZQZipFile::isZipFile(&in));
  EXPECT_EQ(in.tellg(), 2);
  std::istringstream none("PK");
  EXPECT_FALSE(ZQZipFile::isZipFile(&none));
  EXPECT_FALSE(ZQZipFile::isZipFile(static_cast<std::istream*>(nullptr)));
}

// ---- archives of other writers ------------------------------------------------------------

TEST(ZipFileInterop, PythonStored) {
  Fixtures fx("stored");
  ASSERT_TRUE(fx.made);
  ZQZipFile zip;
  zip.open(UnicodeString::fromUTF8(fx.zip("stored")));
  EXPECT_EQ(expectMatchesSources(fx, "stored", zip), 7u);
  EXPECT_EQ(zip.getFileEntry(u("noise.bin"))->getCompressionMethod(), ZQZipFileEntry::STORED);
}

TEST(ZipFileInterop, PythonDeflated) {
  Fixtures fx("deflated");
  ASSERT_TRUE(fx.made);
  ZQZipFile zip;
  zip.open(fx.zip("deflated").c_str());
  EXPECT_EQ(expectMatchesSources(fx, "deflated", zip), 7u);
  EXPECT_EQ(zip.getFileEntry(u("text/lorem.txt"))->getCompressionMethod(),
            ZQZipFileEntry::DEFLATED);
  EXPECT_LT(zip.getFileEntry(u("zeros.bin"))->getCompressedSize(), 1000u);
}

TEST(ZipFileInterop, PythonStreamedWithDataDescriptors) {
  Fixtures fx("streamed streamed-stored");
  ASSERT_TRUE(fx.made);
  for (const char* kind : {"streamed", "streamed-stored"}) {
    ZQZipFile zip;
    zip.open(fx.zip(kind).c_str());
    EXPECT_EQ(expectMatchesSources(fx, kind, zip), 7u) << kind;
    ASSERT_GT(zip.getFileEntryCount(), 0u);
    EXPECT_EQ(zip.getFileEntry(0u)->getFlags() & 8u, 8u) << kind;
  }
}

TEST(ZipFileInterop, PythonUtf8Names) {
  Fixtures fx("utf8");
  ASSERT_TRUE(fx.made);
  ZQZipFile zip;
  zip.open(fx.zip("utf8").c_str());
  EXPECT_EQ(expectMatchesSources(fx, "utf8", zip), 3u);
  EXPECT_NE(zip.getFileEntry(UnicodeString(u"\u65E5\u672C/\u8A9E.txt")).get(), nullptr);
  EXPECT_NE(zip.getFileEntry(UnicodeString(u"caf\u00E9.txt")).get(), nullptr);
}

TEST(ZipFileInterop, PythonLongCommentIsScanned) {
  Fixtures fx("comment200 comment400");
  ASSERT_TRUE(fx.made);
  for (const char* kind : {"comment200", "comment400"}) {
    std::string bytes = markDirectory(streamtest::readFile(fx.zip(kind)), kMark);
    MemZip m(bytes);
    EXPECT_EQ(expectMatchesSources(fx, kind, m.zip), 7u) << kind;
    bool throughDirectory = m.zip.getFileEntry(0u)->getCRC32() == kMark;
    EXPECT_EQ(throughDirectory, std::string(kind) == "comment200") << kind;
  }
}

TEST(ZipFileInterop, PythonWithoutDirectory) {
  Fixtures fx("nodir nodir-streamed");
  ASSERT_TRUE(fx.made);
  for (const char* kind : {"nodir", "nodir-streamed"}) {
    std::string bytes = streamtest::readFile(fx.zip(kind));
    ASSERT_EQ(bytes.find("PK\5\6"), std::string::npos);
    MemZip m(bytes);
    EXPECT_EQ(expectMatchesSources(fx, kind, m.zip), 7u) << kind;
  }
}

TEST(ZipFileInterop, PythonEmptyArchive) {
  Fixtures fx("empty");
  ASSERT_TRUE(fx.made);
  EXPECT_EQ(streamtest::readFile(fx.zip("empty")).size(), 22u);
  EXPECT_TRUE(ZQZipFile::isZipFile(fx.zip("empty").c_str()));
  ZQZipFile zip;
  zip.open(fx.zip("empty").c_str());
  EXPECT_EQ(zip.getFileEntryCount(), 0u);
}

TEST(ZipFileInterop, PythonBzip2IsHandedOutRaw) {
  Fixtures fx("bzip2");
  ASSERT_TRUE(fx.made);
  ZQZipFile zip;
  zip.open(fx.zip("bzip2").c_str());
  ZQPtr<ZQZipFileEntry> e = zip.getFileEntry(u("text/lorem.txt"));
  ASSERT_NE(e.get(), nullptr);
  EXPECT_EQ(e->getCompressionMethod(), 12);
  std::string raw = contentOf(e);
  EXPECT_EQ(raw.size(), e->getCompressedSize());
  EXPECT_EQ(raw.substr(0, 3), "BZh");
  EXPECT_LT(raw.size(), e->getUncompressedSize());
}

TEST(ZipFileInterop, InfoZip) {
  Fixtures fx("infozip");
  ASSERT_TRUE(fx.made) << "the zip command is needed (scripts/bootstrap.sh installs it)";
  ZQZipFile zip;
  zip.open(fx.zip("infozip").c_str());
  EXPECT_EQ(expectMatchesSources(fx, "infozip", zip), 9u);  // two folder entries too
  EXPECT_GT(zip.getFileEntry(u("hello.txt"))->getExtraLength(), 0u);
}

TEST(ZipFileInterop, InfoZipToAPipe) {
  Fixtures fx("infozip-stream nodir-infozip-stream");
  ASSERT_TRUE(fx.made) << "the zip command is needed (scripts/bootstrap.sh installs it)";
  for (const char* kind : {"infozip-stream", "nodir-infozip-stream"}) {
    ZQZipFile zip;
    zip.open(fx.zip(kind).c_str());
    EXPECT_EQ(expectMatchesSources(fx, kind, zip), 9u) << kind;
    EXPECT_EQ(zip.getFileEntry(u("hello.txt"))->getFlags() & 8u, 8u) << kind;
  }
}

TEST(ZipFileInterop, ZipInsideAZipReadsThroughAMemoryStream) {
  Fixtures fx("nested deflated");
  ASSERT_TRUE(fx.made);
  ZQZipFile outer;
  outer.open(fx.zip("nested").c_str());
  EXPECT_EQ(expectMatchesSources(fx, "nested", outer), 2u);
  ZQPtr<ZQZipFileEntry> innerEntry = outer.getFileEntry(u("inner.zip"));
  ASSERT_NE(innerEntry.get(), nullptr);
  // An inflating stream can't seek, so the inner archive reads through a memory stream.
  std::istream* inflated = innerEntry->getUncompressedStream(true);
  ASSERT_TRUE(ZQZipFile::isZipFile(inflated));
  ZQMemStream buffered(inflated, 8192, true);
  ZQZipFile inner;
  inner.open(&buffered, false);
  EXPECT_EQ(expectMatchesSources(fx, "deflated", inner), 7u);
}

// ---- the file stream behind open(path) ----------------------------------------------------

TEST(ZipFileStream, ReadsSeeksAndTellsLikeAFileStream) {
  ScratchDir dir;
  std::string data = streamtest::randomBytes(50000, 21);
  streamtest::writeFile(dir.file("f"), data);
  platform::FileReadStream in(dir.file("f"));
  ASSERT_TRUE(in.good());
  char small[10];
  in.read(small, 10);
  EXPECT_EQ(std::string(small, 10), data.substr(0, 10));
  EXPECT_EQ(in.tellg(), 10);
  in.seekg(5);  // inside the buffered bytes
  EXPECT_EQ(in.get(), static_cast<unsigned char>(data[5]));
  in.seekg(-3, std::ios::cur);
  EXPECT_EQ(in.tellg(), 3);
  in.seekg(30000);  // outside them
  EXPECT_EQ(in.get(), static_cast<unsigned char>(data[30000]));
  std::string big(20000, '\0');  // larger than the buffer: straight into the caller's memory
  in.read(big.data(), 20000);
  EXPECT_EQ(in.gcount(), 19999);
  EXPECT_TRUE(big.substr(0, 19999) == data.substr(30001));
  EXPECT_TRUE(in.eof());
  in.clear();
  in.seekg(-4, std::ios::end);
  EXPECT_EQ(in.tellg(), 49996);
  in.seekg(1000);
  std::string mid(9000, '\0');
  in.read(mid.data(), 9000);
  EXPECT_TRUE(mid == data.substr(1000, 9000));
  in.ignore(100);
  EXPECT_EQ(in.tellg(), 10100);
  EXPECT_TRUE(in.unget());
  EXPECT_EQ(in.get(), static_cast<unsigned char>(data[10099]));
  // The byte before the buffer's start is read again from the file.
  in.seekg(20000);
  EXPECT_TRUE(in.unget());
  EXPECT_EQ(in.tellg(), 19999);
  EXPECT_EQ(in.get(), static_cast<unsigned char>(data[19999]));
  in.seekg(0);
  EXPECT_FALSE(in.unget());
}

TEST(ZipFileStream, SeekPastTheEndReadsNothingAndBeforeTheStartFails) {
  ScratchDir dir;
  streamtest::writeFile(dir.file("f"), "0123456789");
  platform::FileReadStream in(dir.file("f"));
  in.seekg(100);
  EXPECT_TRUE(in.good());
  EXPECT_EQ(in.get(), EOF);
  in.clear();
  in.seekg(-11, std::ios::end);
  EXPECT_TRUE(in.fail());
  in.clear();
  in.seekg(2);
  EXPECT_EQ(in.get(), '2');
}

TEST(ZipFileStream, MissingFileOrFolderLeavesTheStreamFailed) {
  ScratchDir dir;
  platform::FileReadStream missing(dir.file("missing"));
  EXPECT_TRUE(missing.fail());
  EXPECT_EQ(missing.get(), EOF);
  platform::FileReadStream folder(dir.path);
  EXPECT_TRUE(folder.fail());
  platform::FileReadStream empty("");
  EXPECT_TRUE(empty.fail());
}
