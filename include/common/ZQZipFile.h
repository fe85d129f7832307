// Reading zip archives: the directory, the entries and their data as streams.
#pragma once

#include "common/ZQExport.h"

#include <cstddef>
#include <cstdint>
#include <ios>
#include <istream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "common/ZQObject.h"

namespace ZQCommonNS {

class ZQStrStream;
class ZQInflaterStream;

/// One record of a zip archive read from a stream: where it began and its signature.
class ZQCOMMON_API ZQZipEntry : public ZQRCObject {
  ZQ_DECLARE_TYPE(ZQZipEntry, ZQRCObject)

 public:
  /// Signatures of the records, as little-endian numbers ("PK\3\4" and so on).
  static constexpr unsigned int LOCAL_HEADER_SIGNATURE = 0x04034B50u;
  static constexpr unsigned int DIRECTORY_SIGNATURE = 0x02014B50u;
  static constexpr unsigned int END_DIRECTORY_SIGNATURE = 0x06054B50u;
  static constexpr unsigned int DATA_DESCRIPTOR_SIGNATURE = 0x08074B50u;

  /// Notes the position of `stream` and reads the four signature bytes there.
  explicit ZQZipEntry(std::istream* stream);
  ~ZQZipEntry() override;

  /// The record's signature (0 when it couldn't be read).
  unsigned int getSignature() const { return signature; }
  /// The stream the record was read from (not owned).
  std::istream* getStream() const { return stream; }
  /// The stream position where the record began, or -1 when the stream couldn't tell.
  std::streamoff getPosition() const { return position; }

  /// The next four bytes of `stream` as a little-endian number, the position put back. A
  /// stream with fewer bytes left gives 0 and is left in a failed state.
  static unsigned int getSignature(std::istream* stream);
  /// Reads a little-endian 32-bit number; 0 when the read falls short.
  static unsigned int read32(std::istream* stream);
  /// Reads a little-endian 16-bit number; 0 when the read falls short.
  static unsigned int read16(std::istream* stream);

 protected:
  /// Reads a little-endian 16-bit number of this record's stream; 0 when short.
  unsigned int read16() { return read16(stream); }
  /// Reads a little-endian 32-bit number of this record's stream; 0 when short.
  unsigned int read32() { return read32(stream); }

  std::istream* stream;
  std::streamoff position;
  unsigned int signature;
};

class ZQZipDirectoryEntry;
class ZQZipExtheaderEntry;

/// An entry of the archive, read from its local header; its data is read on first use.
class ZQCOMMON_API ZQZipFileEntry : public ZQZipEntry {
  ZQ_DECLARE_TYPE(ZQZipFileEntry, ZQZipEntry)

 public:
  /// The zip format's method numbers; only DEFLATED is decompressed.
  enum CMETHOD : unsigned short { STORED = 0, DEFLATED = 8 };

  /// Reads the local header at the position of `stream`, and leaves the stream behind the
  /// entry's data. With flag bit 3 the sizes here are unusable, so unless `findDescriptor` is
  /// false (a directory will give them) the stream is moved on to the next data descriptor
  /// signature, when there is one.
  explicit ZQZipFileEntry(std::istream* stream, bool findDescriptor = true);
  ~ZQZipFileEntry() override;
  ZQZipFileEntry(const ZQZipFileEntry&) = delete;
  ZQZipFileEntry& operator=(const ZQZipFileEntry&) = delete;

  /// The name, from UTF-8 with flag bit 11, otherwise from the default code page.
  const UnicodeString& getFileName() const { return fileName; }
  /// The name's bytes as stored in the local header.
  const std::string& getRawFileName() const { return rawFileName; }
  /// The method number as stored; only DEFLATED is inflated.
  CMETHOD getCompressionMethod() const { return compressionMethod; }
  /// The sizes as finally set: local header, then directory or data descriptor.
  uint32_t getCompressedSize() const { return compressedSize; }
  uint32_t getUncompressedSize() const { return uncompressedSize; }
  /// CRC-32 as recorded; it is never checked.
  uint32_t getCRC32() const { return crc32; }
  /// The general-purpose flags and the version needed, as stored.
  unsigned int getFlags() const { return flags; }
  unsigned int getVersionNeeded() const { return versionNeeded; }
  /// DOS time and date, as stored.
  unsigned int getTime() const { return time; }
  unsigned int getDate() const { return date; }
  /// Lengths of the name and of the extra field, as stored.
  unsigned int getNameLength() const { return nameLength; }
  unsigned int getExtraLength() const { return extraLength; }
  /// Stream position of the first data byte: behind header, name and extra field.
  std::streamoff getDataOffset() const;

  /// The data as stored. With `independent` a new stream over a copy, which the caller
  /// deletes; otherwise the entry's own stream, rewound on each call, which dies with it.
  std::istream* getCompressedStream(bool independent);
  /// The data inflated for method 8; for any other method the same as getCompressedStream.
  std::istream* getUncompressedStream(bool independent);
  /// The stored data, read on first call; null with `size` 0 when empty.
  const char* getCompressedData(size_t& size);

  /// Takes CRC-32 and both sizes from the central directory record.
  void setDirectoryEntry(const ZQZipDirectoryEntry& entry);
  /// Takes CRC-32 and both sizes from a data descriptor.
  void setExtHeader(const ZQZipExtheaderEntry& entry);

 private:
  void readCompressedData();
  void seekDescriptor();

  unsigned int versionNeeded = 0;
  unsigned int flags = 0;
  CMETHOD compressionMethod = STORED;
  unsigned int time = 0;
  unsigned int date = 0;
  uint32_t crc32 = 0;
  uint32_t compressedSize = 0;
  uint32_t uncompressedSize = 0;
  unsigned int nameLength = 0;
  unsigned int extraLength = 0;
  std::string rawFileName;
  UnicodeString fileName;
  std::unique_ptr<char[]> compressedData;
  size_t compressedDataSize = 0;
  bool compressedDataLoaded = false;
  ZQStrStream* compressedStream = nullptr;
  ZQInflaterStream* uncompressedStream = nullptr;
};

/// A record of the central directory.
class ZQCOMMON_API ZQZipDirectoryEntry : public ZQZipEntry {
 public:
  /// Reads the record at the position of `stream` and leaves the stream behind its name,
  /// extra field and comment.
  explicit ZQZipDirectoryEntry(std::istream* stream);
  ~ZQZipDirectoryEntry() override;

  /// The record's fields, as stored.
  unsigned int getVersionMadeBy() const { return versionMadeBy; }
  unsigned int getVersionNeeded() const { return versionNeeded; }
  unsigned int getFlags() const { return flags; }
  unsigned int getCompressionMethod() const { return compressionMethod; }
  unsigned int getTime() const { return time; }
  unsigned int getDate() const { return date; }
  uint32_t getCRC32() const { return crc32; }
  uint32_t getCompressedSize() const { return compressedSize; }
  uint32_t getUncompressedSize() const { return uncompressedSize; }
  unsigned int getNameLength() const { return nameLength; }
  unsigned int getExtraLength() const { return extraLength; }
  unsigned int getCommentLength() const { return commentLength; }
  unsigned int getDiskNumberStart() const { return diskNumberStart; }
  unsigned int getInternalAttributes() const { return internalAttributes; }
  uint32_t getExternalAttributes() const { return externalAttributes; }
  uint32_t getLocalHeaderOffset() const { return localHeaderOffset; }
  /// The name, always from the default code page.
  const UnicodeString& getFileName() const { return fileName; }

 private:
  unsigned int versionMadeBy = 0;
  unsigned int versionNeeded = 0;
  unsigned int flags = 0;
  unsigned int compressionMethod = 0;
  unsigned int time = 0;
  unsigned int date = 0;
  uint32_t crc32 = 0;
  uint32_t compressedSize = 0;
  uint32_t uncompressedSize = 0;
  unsigned int nameLength = 0;
  unsigned int extraLength = 0;
  unsigned int commentLength = 0;
  unsigned int diskNumberStart = 0;
  unsigned int internalAttributes = 0;
  uint32_t externalAttributes = 0;
  uint32_t localHeaderOffset = 0;
  UnicodeString fileName;
};

/// The end of central directory record; only the directory offset is used.
class ZQCOMMON_API ZQZipEndDirectoryEntry : public ZQZipEntry {
 public:
  /// Reads the record at the position of `stream`; the comment isn't read.
  explicit ZQZipEndDirectoryEntry(std::istream* stream);
  ~ZQZipEndDirectoryEntry() override;

  /// The record's fields, as stored.
  unsigned int getDiskNumber() const { return diskNumber; }
  unsigned int getDirectoryDiskNumber() const { return directoryDiskNumber; }
  unsigned int getEntriesOnDisk() const { return entriesOnDisk; }
  unsigned int getTotalEntries() const { return totalEntries; }
  uint32_t getDirectorySize() const { return directorySize; }
  uint32_t getDirectoryOffset() const { return directoryOffset; }
  unsigned int getCommentLength() const { return commentLength; }

 private:
  unsigned int diskNumber = 0;
  unsigned int directoryDiskNumber = 0;
  unsigned int entriesOnDisk = 0;
  unsigned int totalEntries = 0;
  uint32_t directorySize = 0;
  uint32_t directoryOffset = 0;
  unsigned int commentLength = 0;
};

/// A data descriptor, which follows the data of an entry whose flag bit 3 is set.
class ZQCOMMON_API ZQZipExtheaderEntry : public ZQZipEntry {
 public:
  /// Reads the descriptor (signature included) at the position of `stream`.
  explicit ZQZipExtheaderEntry(std::istream* stream);
  ~ZQZipExtheaderEntry() override;

  /// The descriptor's CRC-32 and sizes, as stored.
  uint32_t getCRC32() const { return crc32; }
  uint32_t getCompressedSize() const { return compressedSize; }
  uint32_t getUncompressedSize() const { return uncompressedSize; }

 private:
  uint32_t crc32 = 0;
  uint32_t compressedSize = 0;
  uint32_t uncompressedSize = 0;
};

/// A zip archive read from a seekable stream. It doesn't validate: it believes the directory
/// it finds near the end and otherwise walks the local headers from the start.
class ZQCOMMON_API ZQZipFile {
 public:
  /// No stream, no entries.
  ZQZipFile();
  /// Shares the other's stream, ownership flag and entries: an owning object must not be
  /// copied while both live.
  ZQZipFile(const ZQZipFile& other);
  ZQZipFile& operator=(const ZQZipFile& other);
  /// Deletes the stream if owned.
  virtual ~ZQZipFile();

  /// Opens the file at `path` and reads its directory; a file that doesn't open has no entries.
  void open(const UnicodeString& path);
  /// As above; the narrow path's own bytes name the file.
  void open(const char* path);
  /// Reads the directory of `stream`, which must be seekable; with `owned` it is deleted later.
  void open(std::istream* stream, bool owned);

  /// Number of entries, duplicates included.
  unsigned int getFileEntryCount() const { return static_cast<unsigned int>(entries.size()); }
  /// The entry of exactly that name (the later one of duplicates), or null.
  ZQPtr<ZQZipFileEntry> getFileEntry(const UnicodeString& name) const;
  /// The entry at `index` in archive order, or null out of range.
  ZQPtr<ZQZipFileEntry> getFileEntry(unsigned int index) const;

  /// True when the file begins with a local header, a directory record or an end record.
  static bool isZipFile(const UnicodeString& path);
  /// As above; the narrow path's own bytes name the file.
  static bool isZipFile(const char* path);
  /// The same test on the next four bytes of `stream`, whose position doesn't move.
  static bool isZipFile(std::istream* stream);

 protected:
  /// Makes the entry for the local header at the stream's position.
  virtual ZQPtr<ZQZipFileEntry> createZipFileEntry();
  /// Reads the directory, or scans the local headers when there is none.
  virtual void init();

  std::istream* stream = nullptr;
  bool ownsStream = false;
  std::vector<ZQPtr<ZQZipFileEntry>> entries;
  std::map<UnicodeString, ZQPtr<ZQZipFileEntry>> entryMap;
  /// False while the directory's records are read: they give the sizes, so the entries need
  /// not look for their data descriptors.
  bool findDescriptors = true;

 private:
  void addEntry(const ZQPtr<ZQZipFileEntry>& entry);
  void dropStream();
};

}  // namespace ZQCommonNS
