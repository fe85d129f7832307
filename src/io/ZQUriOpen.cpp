// Opening a ZQUri: local files, HTTP and HTTPS, gzip tests and wrappers, and the redirection
// check. The stream factories never throw: a failure reads as null.
#include <memory>
#include <string>

#include "common/ZQGzipStream.h"
#include "common/ZQUri.h"
#include "common/ZQUriStream.h"
#include "core/platform/ZQPlatformFile.h"
#include "core/platform/ZQPlatformOpen.h"
#include "io/ZQUriOpenInternal.h"
#include "io/ZQUriStreamInternal.h"

namespace ZQCommonNS {

namespace {

std::string nativeLocalPath(const ZQUri& uri) {
  std::string told;
  uri.getLocalPath().toUTF8String(told);
  return platform::nativePath(told);
}

ZQUriStreamBuf::HttpRequestParams defaultRequestParams() {
  ZQUriStreamBuf::HttpRequestParams params;
  params.userAgent = ZQUri::getUserAgent();
  params.connectTimeout = ZQUri::getInternetConnectTimeout();
  params.connectRetries = ZQUri::getInternetConnectRetries();
  params.connectBackoff = ZQUri::getInternetConnectBackoff();
  return params;
}

}  // namespace

std::istream* openLocalFile(const ZQUri& uri) {
  const std::string path = nativeLocalPath(uri);
  if (platform::pathIsDirectory(path)) return nullptr;
  auto stream = std::make_unique<std::ifstream>(path, std::ios::in | std::ios::binary);
  if (!stream->is_open()) return nullptr;
  return stream.release();
}

std::istream* openHttp(const ZQUri& uri, ZQUri::ContentInfo* info, UnicodeString* error) {
  ZQUriStreamBuf::HttpRequestParams params = defaultRequestParams();
  UnicodeString referer;
  if (info) {
    // The timeout is taken as it is, so a caller's -1 means no limit; the other two only
    // when set.
    params.connectTimeout = info->connectTimeout;
    if (info->connectRetries >= 0) params.connectRetries = info->connectRetries;
    if (info->connectBackoff >= 0) params.connectBackoff = info->connectBackoff;
    params.ignoreCertErrors = (info->flags & ZQUri::ContentInfo::FLAG_IGNORE_CERT_ERRORS) != 0;
    referer = info->referer;
  }
  auto stream = std::make_unique<ZQUriStream>(uri.toString(), referer, params);
  const ZQUriStreamBuf* buf = stream->getStreamBuf();
  if (error) *error = buf->getErrorMessage();
  if (!buf->hasBuffer()) return nullptr;
  if (info) {
    info->contentType = buf->getContentType();
    info->charset = buf->getCharset();
    info->contentLanguage = buf->getContentLanguage();
    info->contentLength = buf->getContentLength();
  }
  rememberRedirection(uri.toString(), buf->getFinalUrl());
  return stream.release();
}

std::istream* ZQUri::getIStream() const { return getIStream(nullptr, nullptr); }

std::istream* ZQUri::getIStream(ContentInfo* info, UnicodeString* error) const {
  try {
    if (std::istream* resolved = getStreamFromResolver()) return resolved;
    if (!uri.isEmpty() && isFile()) return openLocalFile(*this);
    if (isDataScheme()) return openDataUri(*this, info);
    if (isJarScheme()) return openJarUri(*this, info, error);
    if (isHttpScheme()) {
      std::istream* stream = openHttp(*this, info, error);
      if (stream && info && (info->flags & ContentInfo::FLAG_UPDATE_URI)) {
        // A document resolves its links against where it really came from.
        const UnicodeString& finalUrl =
            static_cast<ZQUriStream*>(stream)->getStreamBuf()->getFinalUrl();
        if (!finalUrl.isEmpty()) const_cast<ZQUri*>(this)->uri = finalUrl;
      }
      return stream;
    }
    return nullptr;
  } catch (...) {
    // Every helper above owns what it built until it returns it, so nothing is left over.
    if (error) *error = u"Unknown exception";
    return nullptr;
  }
}

std::ofstream* ZQUri::getOStream(bool truncate) const {
  if (uri.isEmpty() || !isFile()) return nullptr;
  try {
    std::ios::openmode mode = std::ios::out | std::ios::binary;
    if (truncate) mode |= std::ios::trunc;
    auto stream = std::make_unique<std::ofstream>(nativeLocalPath(*this), mode);
    if (!stream->is_open()) return nullptr;
    return stream.release();
  } catch (...) {
    return nullptr;
  }
}

std::fstream* ZQUri::getFStream() const {
  if (uri.isEmpty() || !isFile()) return nullptr;
  try {
    auto stream = std::make_unique<std::fstream>(nativeLocalPath(*this),
                                                 std::ios::in | std::ios::out | std::ios::binary);
    if (!stream->is_open()) return nullptr;
    return stream.release();
  } catch (...) {
    return nullptr;
  }
}

ZQGzipIStream* ZQUri::getGzipStream() const {
  try {
    auto stream = std::make_unique<ZQGzipIStream>(getLocalPath());
    if (!stream->is_open()) return nullptr;
    return stream.release();
  } catch (...) {
    return nullptr;
  }
}

ZQGzipIStream* ZQUri::getGzipStream(std::istream& stream) {
  stream.seekg(0);
  return new ZQGzipIStream(stream);
}

namespace {

/// Reads two bytes where the stream stands: true when they are the gzip magic 1F 8B.
bool readsGzipMagic(std::istream& stream) {
  char magic[2] = {0, 0};
  stream.read(magic, 2);
  return stream.gcount() == 2 && static_cast<unsigned char>(magic[0]) == 0x1F &&
         static_cast<unsigned char>(magic[1]) == 0x8B;
}

}  // namespace

bool ZQUri::isGzip() const {
  // A fresh stream stands at its start; network streams can't seek, so none is attempted.
  try {
    std::unique_ptr<std::istream> stream(getIStream());
    return stream && readsGzipMagic(*stream);
  } catch (...) {
    return false;
  }
}

bool ZQUri::isGzip(std::istream& stream) {
  try {
    stream.seekg(0);
    return readsGzipMagic(stream);
  } catch (...) {
    return false;
  }
}

bool ZQUri::checkRedirection() {
  if (!isHttpScheme()) return false;
  UnicodeString finalUrl;
  if (lookupRedirection(uri, finalUrl)) {
    if (finalUrl.isEmpty()) return false;
    uri = finalUrl;
    return true;
  }
  // Only the outcome counts: whatever goes wrong reads as "no redirect".
  try {
    ZQUriStreamBuf::HttpRequestParams params = defaultRequestParams();
    params.headersOnly = true;
    ZQUriStreamBuf request(uri, UnicodeString(), params);
    finalUrl = request.getFinalUrl();
  } catch (...) {
    finalUrl.remove();
  }
  rememberRedirection(uri, finalUrl);
  if (finalUrl.isEmpty()) return false;
  uri = finalUrl;
  return true;
}

}  // namespace ZQCommonNS
