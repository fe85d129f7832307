// The records of a zip archive, read field by field. A field that lies past the end of the
// stream reads as 0, so a cut archive gives zero fields rather than garbage.
#include <algorithm>
#include <cstring>

#include "common/ZQInflaterStream.h"
#include "common/ZQMemStream.h"
#include "common/ZQStrStream.h"
#include "common/ZQZipFile.h"

namespace ZQCommonNS {

namespace {

constexpr unsigned int kFlagDataDescriptor = 1u << 3;
constexpr unsigned int kFlagUtf8Name = 1u << 11;
constexpr std::streamoff kLocalHeaderSize = 30;
constexpr size_t kSearchBlockSize = 8192;

// The fixed fields of a record behind its signature, read in one go. A field that lies past
// the bytes that came reads as 0, as if it had been read on its own.
class FixedFields {
 public:
  FixedFields(std::istream* in, std::streamsize size) {
    if (in) {
      in->read(reinterpret_cast<char*>(m_bytes), size);
      m_got = static_cast<size_t>(in->gcount());
    }
  }
  unsigned int u16(size_t at) const {
    if (at + 2 > m_got) return 0;
    return static_cast<unsigned int>(m_bytes[at]) | static_cast<unsigned int>(m_bytes[at + 1]) << 8;
  }
  uint32_t u32(size_t at) const {
    if (at + 4 > m_got) return 0;
    return u16(at) | static_cast<uint32_t>(u16(at + 2)) << 16;
  }

 private:
  unsigned char m_bytes[64];
  size_t m_got = 0;
};

// Reads `n` bytes (at most 4); false when fewer came.
bool readBytes(std::istream* in, unsigned char* out, std::streamsize n) {
  if (!in) return false;
  in->read(reinterpret_cast<char*>(out), n);
  return in->gcount() == n;
}

// Reads `length` bytes of a name; a cut name keeps what was there.
std::string readName(std::istream* in, unsigned int length) {
  std::string bytes;
  if (!in || length == 0) return bytes;
  bytes.resize(length);
  in->read(bytes.data(), static_cast<std::streamsize>(length));
  bytes.resize(static_cast<size_t>(in->gcount()));
  return bytes;
}

UnicodeString decodeDefault(const std::string& bytes) {
  if (bytes.empty()) return UnicodeString();
  return UnicodeString(bytes.data(), static_cast<int32_t>(bytes.size()),
                       static_cast<const char*>(nullptr));
}

// Moves forward by `count` bytes; small skips stay inside the stream's buffer.
void skipForward(std::istream* in, std::streamoff count) {
  if (!in || count <= 0) return;
  if (count <= 4096) {
    in->ignore(static_cast<std::streamsize>(count));
  } else {
    in->seekg(count, std::ios::cur);
  }
}

}  // namespace

// ---------------------------------------------------------------------------------------------

ZQZipEntry::ZQZipEntry(std::istream* in) : stream(in), position(-1), signature(0) {
  if (stream) {
    position = static_cast<std::streamoff>(stream->tellg());
    signature = read32(stream);
  }
}

ZQZipEntry::~ZQZipEntry() = default;

unsigned int ZQZipEntry::read16(std::istream* in) {
  unsigned char b[2];
  if (!readBytes(in, b, 2)) return 0;
  return static_cast<unsigned int>(b[0]) | static_cast<unsigned int>(b[1]) << 8;
}

unsigned int ZQZipEntry::read32(std::istream* in) {
  unsigned char b[4];
  if (!readBytes(in, b, 4)) return 0;
  return static_cast<unsigned int>(b[0]) | static_cast<unsigned int>(b[1]) << 8 |
         static_cast<unsigned int>(b[2]) << 16 | static_cast<unsigned int>(b[3]) << 24;
}

unsigned int ZQZipEntry::getSignature(std::istream* in) {
  if (!in) return 0;
  unsigned char b[4];
  in->read(reinterpret_cast<char*>(b), 4);
  std::streamsize got = in->gcount();
  // Stepping back inside the stream's buffer costs nothing; only at a buffer seam (or on a
  // buffer that can't step back) does the stream have to seek.
  std::streambuf* buf = in->rdbuf();
  std::streamsize back = 0;
  while (back < got && buf && buf->sungetc() != std::streambuf::traits_type::eof()) ++back;
  if (back < got) {
    std::ios::iostate state = in->rdstate();
    in->clear();
    in->seekg(-static_cast<std::streamoff>(got - back), std::ios::cur);
    in->setstate(state);
  }
  if (got < 4) return 0;
  return static_cast<unsigned int>(b[0]) | static_cast<unsigned int>(b[1]) << 8 |
         static_cast<unsigned int>(b[2]) << 16 | static_cast<unsigned int>(b[3]) << 24;
}

// ---------------------------------------------------------------------------------------------

ZQZipFileEntry::ZQZipFileEntry(std::istream* in, bool findDescriptor) : ZQZipEntry(in) {
  FixedFields f(stream, kLocalHeaderSize - 4);
  versionNeeded = f.u16(0);
  flags = f.u16(2);
  compressionMethod = static_cast<CMETHOD>(f.u16(4));
  time = f.u16(6);
  date = f.u16(8);
  crc32 = f.u32(10);
  compressedSize = f.u32(14);
  uncompressedSize = f.u32(18);
  nameLength = f.u16(22);
  extraLength = f.u16(24);
  rawFileName = readName(stream, nameLength);
  if (flags & kFlagUtf8Name) {
    fileName = UnicodeString::fromUTF8(rawFileName);
  } else {
    fileName = decodeDefault(rawFileName);
  }
  if (stream && stream->good()) {
    stream->seekg(static_cast<std::streamoff>(extraLength) + compressedSize, std::ios::cur);
  }
  if ((flags & kFlagDataDescriptor) && findDescriptor) seekDescriptor();
}

ZQZipFileEntry::~ZQZipFileEntry() {
  compressedData.reset();
  delete compressedStream;
  delete uncompressedStream;
}

void ZQZipFileEntry::seekDescriptor() {
  if (!stream) return;
  std::streamoff start = static_cast<std::streamoff>(stream->tellg());
  if (start < 0) return;
  // The buffer reads the stream from where it stands, so its positions count from `start`.
  // A signature that isn't there leaves the stream read to its end, which ends a scan.
  ZQMemStream search(stream, kSearchBlockSize, false);
  if (search.searchSeek("PK\7\10", 4)) {
    std::streamoff found = static_cast<std::streamoff>(search.tellg());
    stream->clear();
    stream->seekg(start + found);
  }
}

std::streamoff ZQZipFileEntry::getDataOffset() const {
  if (position < 0) return -1;
  return position + kLocalHeaderSize + nameLength + extraLength;
}

void ZQZipFileEntry::readCompressedData() {
  if (compressedDataLoaded) return;
  compressedDataLoaded = true;
  std::streamoff start = getDataOffset();
  if (!stream || !stream->rdbuf() || start < 0 || compressedSize == 0) return;
  // A scan leaves the stream at its end with the fail bit set.
  stream->clear();
  // Never allocate more than the stream holds: a damaged header may claim gigabytes.
  size_t wanted = compressedSize;
  std::streamoff end =
      static_cast<std::streamoff>(stream->rdbuf()->pubseekoff(0, std::ios::end, std::ios::in));
  if (end >= 0) {
    wanted = end > start ? std::min<size_t>(wanted, static_cast<size_t>(end - start)) : 0;
  }
  stream->seekg(start);
  if (wanted == 0 || !stream->good()) return;
  if (end >= 0) {
    compressedData.reset(new char[wanted]);
    stream->read(compressedData.get(), static_cast<std::streamsize>(wanted));
    compressedDataSize = static_cast<size_t>(stream->gcount());
    return;
  }
  // A stream that can't tell its end is read in pieces, so only bytes that came are held.
  std::string bytes;
  char piece[65536];
  while (bytes.size() < wanted && stream->good()) {
    size_t n = std::min(sizeof piece, wanted - bytes.size());
    stream->read(piece, static_cast<std::streamsize>(n));
    bytes.append(piece, static_cast<size_t>(stream->gcount()));
  }
  if (bytes.empty()) return;
  compressedData.reset(new char[bytes.size()]);
  std::memcpy(compressedData.get(), bytes.data(), bytes.size());
  compressedDataSize = bytes.size();
}

const char* ZQZipFileEntry::getCompressedData(size_t& size) {
  readCompressedData();
  size = compressedDataSize;
  return compressedData.get();
}

std::istream* ZQZipFileEntry::getCompressedStream(bool independent) {
  readCompressedData();
  if (independent) return new ZQStrStream(compressedData.get(), compressedDataSize, true);
  if (!compressedStream) {
    compressedStream = new ZQStrStream(compressedData.get(), compressedDataSize, false);
  } else {
    compressedStream->clear();
    compressedStream->getStreamBuf()->rewind();
  }
  return compressedStream;
}

std::istream* ZQZipFileEntry::getUncompressedStream(bool independent) {
  if (compressionMethod != DEFLATED) return getCompressedStream(independent);
  readCompressedData();
  if (independent) return new ZQInflaterStream(compressedData.get(), compressedDataSize, true);
  if (!uncompressedStream) {
    uncompressedStream = new ZQInflaterStream(compressedData.get(), compressedDataSize, false);
  } else {
    uncompressedStream->reset();
  }
  return uncompressedStream;
}

void ZQZipFileEntry::setDirectoryEntry(const ZQZipDirectoryEntry& entry) {
  crc32 = entry.getCRC32();
  compressedSize = entry.getCompressedSize();
  uncompressedSize = entry.getUncompressedSize();
}

void ZQZipFileEntry::setExtHeader(const ZQZipExtheaderEntry& entry) {
  crc32 = entry.getCRC32();
  compressedSize = entry.getCompressedSize();
  uncompressedSize = entry.getUncompressedSize();
}

// ---------------------------------------------------------------------------------------------

ZQZipDirectoryEntry::ZQZipDirectoryEntry(std::istream* in) : ZQZipEntry(in) {
  FixedFields f(stream, 42);
  versionMadeBy = f.u16(0);
  versionNeeded = f.u16(2);
  flags = f.u16(4);
  compressionMethod = f.u16(6);
  time = f.u16(8);
  date = f.u16(10);
  crc32 = f.u32(12);
  compressedSize = f.u32(16);
  uncompressedSize = f.u32(20);
  nameLength = f.u16(24);
  extraLength = f.u16(26);
  commentLength = f.u16(28);
  diskNumberStart = f.u16(30);
  internalAttributes = f.u16(32);
  externalAttributes = f.u32(34);
  localHeaderOffset = f.u32(38);
  // The directory's name is only ever shown, never looked up: the local header names entries.
  fileName = decodeDefault(readName(stream, nameLength));
  skipForward(stream, static_cast<std::streamoff>(extraLength) + commentLength);
}

ZQZipDirectoryEntry::~ZQZipDirectoryEntry() = default;

// ---------------------------------------------------------------------------------------------

ZQZipEndDirectoryEntry::ZQZipEndDirectoryEntry(std::istream* in) : ZQZipEntry(in) {
  FixedFields f(stream, 18);
  diskNumber = f.u16(0);
  directoryDiskNumber = f.u16(2);
  entriesOnDisk = f.u16(4);
  totalEntries = f.u16(6);
  directorySize = f.u32(8);
  directoryOffset = f.u32(12);
  commentLength = f.u16(16);
}

ZQZipEndDirectoryEntry::~ZQZipEndDirectoryEntry() = default;

// ---------------------------------------------------------------------------------------------

ZQZipExtheaderEntry::ZQZipExtheaderEntry(std::istream* in) : ZQZipEntry(in) {
  FixedFields f(stream, 12);
  crc32 = f.u32(0);
  compressedSize = f.u32(4);
  uncompressedSize = f.u32(8);
}

ZQZipExtheaderEntry::~ZQZipExtheaderEntry() = default;

}  // namespace ZQCommonNS
