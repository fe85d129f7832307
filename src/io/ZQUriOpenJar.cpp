// "jar:" URIs: an entry of a zip named as jar: outer "!/" entry, where the entry may itself be
// a zip followed by a further "!/" and an entry inside it, to any depth.
#include <memory>

#include "common/ZQInflaterStream.h"
#include "common/ZQMemStream.h"
#include "common/ZQStrStream.h"
#include "common/ZQUri.h"
#include "common/ZQZipFile.h"
#include "io/ZQUriOpenInternal.h"

namespace ZQCommonNS {

namespace {

const UnicodeString& entrySeparator() {
  static const UnicodeString separator(u"!/");
  return separator;
}

/// Cuts the first name off `entryPath` (up to its next "!/"), leaving the rest there.
UnicodeString takeEntryName(UnicodeString& entryPath) {
  UnicodeString name;
  const int32_t at = entryPath.indexOf(entrySeparator());
  if (at < 0) {
    name = entryPath;
    entryPath.remove();
  } else {
    entryPath.extractBetween(0, at, name);
    entryPath.remove(0, at + 2);
  }
  return name;
}

/// Opens the entry `name` of the zip read through `zipStream` (deleted by the zip when
/// `owned`): a new stream over an own copy of the entry's data, inflating for method 8.
/// Null when there is no such entry.
std::unique_ptr<std::istream> openEntry(std::istream* zipStream, bool owned,
                                        const UnicodeString& name) {
  ZQZipFile zip;
  zip.open(zipStream, owned);
  ZQPtr<ZQZipFileEntry> entry = zip.getFileEntry(name);
  if (entry == nullptr) return nullptr;
  size_t size = 0;
  const char* data = entry->getCompressedData(size);
  if (entry->getCompressionMethod() == ZQZipFileEntry::DEFLATED) {
    return std::make_unique<ZQInflaterStream>(data, size, true);
  }
  return std::make_unique<ZQStrStream>(data, size, true);
}

bool isZipRecord(unsigned int signature) {
  return signature == ZQZipEntry::LOCAL_HEADER_SIGNATURE ||
         signature == ZQZipEntry::DIRECTORY_SIGNATURE ||
         signature == ZQZipEntry::END_DIRECTORY_SIGNATURE;
}

}  // namespace

std::istream* openJarUri(const ZQUri& uri, ZQUri::ContentInfo* info, UnicodeString* error) {
  UnicodeString rest;
  uri.toString().extractBetween(4, uri.toString().length(), rest);
  UnicodeString outer, entryPath;
  const int32_t at = rest.indexOf(entrySeparator());
  if (at < 0) {
    outer = rest;
  } else {
    rest.extractBetween(0, at, outer);
    rest.extractBetween(at + 2, rest.length(), entryPath);
  }

  const ZQUri outerUri(outer, ZQUri::URISTR_AUTO);
  std::unique_ptr<std::istream> stream(outerUri.getIStream(info, error));
  if (!stream) return nullptr;
  // Without an entry, the zip file itself is what is read.
  if (entryPath.isEmpty()) return stream.release();

  if (outerUri.isFile()) {
    // A local file can seek, so the zip reads it directly and takes it over.
    if (!ZQZipFile::isZipFile(stream.get())) return nullptr;
    const UnicodeString name = takeEntryName(entryPath);
    stream = openEntry(stream.release(), true, name);
  }
  while (stream && !entryPath.isEmpty()) {
    // Network and inflater streams can't seek, and the zip reader does: the whole resource
    // goes into memory first.
    auto buffered = std::make_unique<ZQMemStream>(stream.release(), 8192, true);
    const unsigned int signature = ZQZipEntry::getSignature(buffered.get());
    if (!isZipRecord(signature)) return nullptr;
    const UnicodeString name = takeEntryName(entryPath);
    stream = openEntry(buffered.get(), false, name);
  }
  if (!stream) return nullptr;
  if (info) {
    // What a server said described the outer resource, not the entry.
    info->contentType.remove();
    info->charset.remove();
    info->contentLanguage.remove();
    info->contentLength = -1;
  }
  return stream.release();
}

}  // namespace ZQCommonNS
