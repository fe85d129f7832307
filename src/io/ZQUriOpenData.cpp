// "data:" URIs and the caller's resolver: both produce their bytes into a memory stream.
#include <algorithm>
#include <memory>
#include <string>

#include "common/ZQDataUri.h"
#include "common/ZQMemStream.h"
#include "common/ZQUri.h"
#include "common/ZQUtil.h"
#include "io/ZQUriOpenInternal.h"

namespace ZQCommonNS {

std::istream* openDataUri(const ZQUri& uri, ZQUri::ContentInfo* info) {
  // The data URI has already percent-decoded its data part.
  const ZQDataUri data(uri.toString(), ZQUri::URISTR_URI);
  const UnicodeString& text = data.toString();
  // A malformed header leaves the data position at -1; the data is then the whole string.
  const int32_t start = std::max(data.getDataPos(), 0);
  auto stream = std::make_unique<ZQMemStream>();
  if (data.isBase64()) {
    ZQUtil::decodeBase64(text.getBuffer() + start, text.length() - start, *stream);
  } else {
    std::string bytes;
    text.tempSubString(start).toUTF8String(bytes);
    stream->write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }
  stream->begin();
  if (info) {
    info->contentType = data.getMediaType();
    info->charset.remove();
    info->contentLanguage.remove();
    info->contentLength = -1;
  }
  return stream.release();
}

std::istream* ZQUri::getStreamFromResolver() const {
  ZQUriReferenceResolver2* resolver = getUriReferenceResolver2();
  if (!resolver) return nullptr;
  auto stream = std::make_unique<ZQMemStream>();
  ZQUriReferenceResolver2::WriteFunc write = [](size_t count, const void* bytes, void* target) {
    if (count == 0 || !bytes || !target) return;
    static_cast<ZQMemStream*>(target)->write(static_cast<const char*>(bytes),
                                             static_cast<std::streamsize>(count));
  };
  UnicodeString terminated(uri);
  if (!resolver->resolveUriReference(terminated.getTerminatedBuffer(), write, stream.get())) {
    return nullptr;
  }
  stream->clear();
  stream->seekg(0);
  return stream.release();
}

}  // namespace ZQCommonNS
