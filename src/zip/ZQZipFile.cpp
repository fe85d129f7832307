// The archive: the directory found by a short backward search, or, when there is none, a walk
// over the local headers from the start, so that cut and directory-less archives still read.
#include <algorithm>
#include <memory>
#include <string>

#include "common/ZQMemStream.h"
#include "common/ZQStrStream.h"
#include "common/ZQString.h"
#include "common/ZQZipFile.h"
#include "core/platform/ZQPlatformFile.h"
#include "core/platform/ZQPlatformFileBuf.h"

namespace ZQCommonNS {

namespace {

// The end record must begin within this many bytes of the end, searched in steps of 32.
constexpr std::streamoff kEndSearchStep = 32;
constexpr int kEndSearchSteps = 10;
constexpr size_t kSearchBlockSize = 8192;
// Directories up to this size are read into memory whole before their records are parsed.
constexpr std::streamoff kDirectoryInMemory = std::streamoff{16} << 20;

std::istream* openFile(const UnicodeString& path) {
  std::string told;
  path.toUTF8String(told);
  return new platform::FileReadStream(platform::nativePath(told));
}

// A narrow path names the file by its own bytes, kept by ZQCStr, so a name that isn't valid in
// the default code page still opens.
std::istream* openFile(const char* path) {
  ZQCStr told(path);
  const char* bytes = told.toNarrow();
  return new platform::FileReadStream(platform::nativePath(bytes ? bytes : ""));
}

bool isZipSignature(unsigned int signature) {
  return signature == ZQZipEntry::DIRECTORY_SIGNATURE ||
         signature == ZQZipEntry::LOCAL_HEADER_SIGNATURE ||
         signature == ZQZipEntry::END_DIRECTORY_SIGNATURE;
}

// Position of the end record: for each step a forward search from 32 * k bytes before the
// end, so the first occurrence in the range wins. -1 when there is none.
std::streamoff findEndRecord(std::istream* stream) {
  stream->clear();
  std::streamoff end =
      static_cast<std::streamoff>(stream->rdbuf()->pubseekoff(0, std::ios::end, std::ios::in));
  if (end <= 0) return -1;
  // One buffer holds the whole searched tail, read once; each step searches from its own start.
  std::streamoff base = std::max<std::streamoff>(0, end - kEndSearchStep * kEndSearchSteps);
  stream->seekg(base);
  if (!stream->good()) return -1;
  ZQMemStream tail(stream, kSearchBlockSize, false);
  for (int k = 1; k <= kEndSearchSteps; ++k) {
    std::streamoff from = std::max<std::streamoff>(base, end - kEndSearchStep * k);
    tail.clear();
    tail.seekg(from - base);
    if (tail.searchSeek("PK\5\6", 4)) return base + static_cast<std::streamoff>(tail.tellg());
    if (from == base) break;  // a short stream: further steps would search the same bytes
  }
  return -1;
}

// Reads the directory records from `offset` on, while the signature is the directory's.
// The bytes from there to the end are read in one go when that is a sensible amount, so the
// records are parsed from memory rather than through many small reads of the file.
void readDirectory(std::istream* stream, std::streamoff offset,
                   std::vector<ZQPtr<ZQZipDirectoryEntry>>& directory) {
  stream->seekg(offset);
  if (ZQZipEntry::getSignature(stream) != ZQZipEntry::DIRECTORY_SIGNATURE) return;
  std::streamoff end =
      static_cast<std::streamoff>(stream->rdbuf()->pubseekoff(0, std::ios::end, std::ios::in));
  stream->seekg(offset);
  if (end > offset && end - offset <= kDirectoryInMemory && stream->good()) {
    std::unique_ptr<char[]> bytes(new char[static_cast<size_t>(end - offset)]);
    stream->read(bytes.get(), static_cast<std::streamsize>(end - offset));
    ZQStrStream records(bytes.get(), static_cast<size_t>(stream->gcount()), false);
    while (ZQZipEntry::getSignature(&records) == ZQZipEntry::DIRECTORY_SIGNATURE) {
      directory.push_back(new ZQZipDirectoryEntry(&records));
    }
    return;
  }
  stream->clear();
  stream->seekg(offset);
  while (ZQZipEntry::getSignature(stream) == ZQZipEntry::DIRECTORY_SIGNATURE) {
    directory.push_back(new ZQZipDirectoryEntry(stream));
  }
}

}  // namespace

ZQZipFile::ZQZipFile() = default;

ZQZipFile::ZQZipFile(const ZQZipFile& other)
    : stream(other.stream),
      ownsStream(other.ownsStream),
      entries(other.entries),
      entryMap(other.entryMap),
      findDescriptors(other.findDescriptors) {}

ZQZipFile& ZQZipFile::operator=(const ZQZipFile& other) {
  if (this != &other) {
    stream = other.stream;
    ownsStream = other.ownsStream;
    entries = other.entries;
    entryMap = other.entryMap;
    findDescriptors = other.findDescriptors;
  }
  return *this;
}

ZQZipFile::~ZQZipFile() { dropStream(); }

void ZQZipFile::dropStream() {
  if (ownsStream) delete stream;
  stream = nullptr;
  ownsStream = false;
}

void ZQZipFile::open(const UnicodeString& path) {
  dropStream();
  stream = openFile(path);
  ownsStream = true;
  init();
}

void ZQZipFile::open(const char* path) {
  dropStream();
  stream = openFile(path);
  ownsStream = true;
  init();
}

void ZQZipFile::open(std::istream* newStream, bool owned) {
  if (newStream != stream) dropStream();
  stream = newStream;
  ownsStream = owned;
  init();
}

ZQPtr<ZQZipFileEntry> ZQZipFile::getFileEntry(const UnicodeString& name) const {
  auto it = entryMap.find(name);
  return it == entryMap.end() ? ZQPtr<ZQZipFileEntry>() : it->second;
}

ZQPtr<ZQZipFileEntry> ZQZipFile::getFileEntry(unsigned int index) const {
  return index < entries.size() ? entries[index] : ZQPtr<ZQZipFileEntry>();
}

bool ZQZipFile::isZipFile(const UnicodeString& path) {
  std::unique_ptr<std::istream> in(openFile(path));
  return isZipSignature(ZQZipEntry::read32(in.get()));
}

bool ZQZipFile::isZipFile(const char* path) {
  std::unique_ptr<std::istream> in(openFile(path));
  return isZipSignature(ZQZipEntry::read32(in.get()));
}

bool ZQZipFile::isZipFile(std::istream* in) { return isZipSignature(ZQZipEntry::getSignature(in)); }

ZQPtr<ZQZipFileEntry> ZQZipFile::createZipFileEntry() {
  return new ZQZipFileEntry(stream, findDescriptors);
}

void ZQZipFile::addEntry(const ZQPtr<ZQZipFileEntry>& entry) {
  entries.push_back(entry);
  entryMap[entry->getFileName()] = entry;
}

void ZQZipFile::init() {
  entries.clear();
  entryMap.clear();
  // A stream with no buffer behind it holds nothing to read.
  if (!stream || !stream->rdbuf()) return;

  std::vector<ZQPtr<ZQZipDirectoryEntry>> directory;
  std::streamoff endRecord = findEndRecord(stream);
  if (endRecord >= 0) {
    stream->clear();
    stream->seekg(endRecord);
    if (ZQZipEntry::getSignature(stream) == ZQZipEntry::END_DIRECTORY_SIGNATURE) {
      // The offset is believed as it stands; data prepended to the archive isn't allowed for.
      ZQZipEndDirectoryEntry end(stream);
      readDirectory(stream, static_cast<std::streamoff>(end.getDirectoryOffset()), directory);
    }
  }
  stream->clear();

  if (!directory.empty()) {
    // The local header names the entry; the directory says how big it is.
    findDescriptors = false;
    for (const auto& record : directory) {
      stream->clear();
      stream->seekg(static_cast<std::streamoff>(record->getLocalHeaderOffset()));
      ZQPtr<ZQZipFileEntry> entry = createZipFileEntry();
      if (!entry) continue;
      addEntry(entry);
      entry->setDirectoryEntry(*record);
    }
    findDescriptors = true;
    return;
  }

  // No directory: walk the local headers from the start, taking sizes from data descriptors
  // and stepping over junk between entries one byte at a time.
  findDescriptors = true;
  stream->seekg(0);
  while (stream->good()) {
    unsigned int signature = ZQZipEntry::getSignature(stream);
    if (signature == ZQZipEntry::DIRECTORY_SIGNATURE ||
        signature == ZQZipEntry::END_DIRECTORY_SIGNATURE) {
      break;
    }
    if (signature == ZQZipEntry::LOCAL_HEADER_SIGNATURE) {
      ZQPtr<ZQZipFileEntry> entry = createZipFileEntry();
      if (!entry) break;
      addEntry(entry);
    } else if (signature == ZQZipEntry::DATA_DESCRIPTOR_SIGNATURE) {
      ZQZipExtheaderEntry descriptor(stream);
      if (!entries.empty()) entries.back()->setExtHeader(descriptor);
    } else if (!entries.empty()) {
      stream->ignore(1);
    } else {
      break;
    }
  }
}

}  // namespace ZQCommonNS
