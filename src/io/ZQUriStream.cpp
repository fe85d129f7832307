// HTTP and HTTPS streams: the request with its redirects and messages, the body read piece by
// piece, the splitting of HTTP URLs and the process-wide cache of redirections.
#include "common/ZQUriStream.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unordered_map>

#include "common/ZQChar.h"
#include "common/ZQError.h"
#include "common/ZQLock.h"
#include "common/ZQUri.h"
#include "core/ZQUnload.h"
#include "core/platform/ZQPlatformHttp.h"
#include "io/ZQUriStreamInternal.h"

namespace ZQCommonNS {

namespace {

std::string narrow(const UnicodeString& s) {
  std::string out;
  s.toUTF8String(out);
  return out;
}

UnicodeString wide(const std::string& s) { return UnicodeString::fromUTF8(s); }

/// Digits at the start of `s` (after blanks and a sign), as a decimal number; 0 when none.
int decimalOf(const UnicodeString& s) {
  int32_t i = 0;
  const int32_t n = s.length();
  while (i < n && (s[i] == u' ' || s[i] == u'\t')) ++i;
  bool negative = false;
  if (i < n && (s[i] == u'-' || s[i] == u'+')) negative = s[i++] == u'-';
  long long value = 0;
  for (; i < n && s[i] >= u'0' && s[i] <= u'9'; ++i) {
    value = value * 10 + (s[i] - u'0');
    if (value > 0x7FFFFFFFLL) return negative ? INT_MIN : INT_MAX;
  }
  return static_cast<int>(negative ? -value : value);
}

// The status and the header values are taken as fixed buffers of these sizes, terminator
// included, would take them: a longer status is no status, a longer header value is absent.
constexpr size_t kStatusBufferSize = 100;
constexpr size_t kHeaderBufferSize = 2048;

bool fitsQueryBuffer(const std::string& text, size_t bufferSize) {
  return text.size() < bufferSize;
}

bool queryHeader(platform::HttpTransport& http, std::string_view name, std::string& value) {
  return http.queryHeader(name, value) && fitsQueryBuffer(value, kHeaderBufferSize);
}

}  // namespace

// ---- URL parts ----

ZQHttpUrlParts crackHttpUrl(const ZQUri& url) {
  ZQHttpUrlParts parts;
  const UnicodeString& s = url.toString();
  parts.secure = url.getScheme() == ZQName(ZQN_https);
  UnicodeString rest;
  s.extractBetween(parts.secure ? 8 : 7, s.length(), rest);
  parts.port = parts.secure ? 443 : 80;
  UnicodeString authority;
  const int32_t slash = rest.indexOf(u'/');
  if (slash >= 0) {
    rest.extractBetween(slash, rest.length(), parts.path);
    rest.extractBetween(0, slash, authority);
  } else {
    parts.path = u"/";
    authority = rest;
  }
  const int32_t at = authority.indexOf(u'@');
  if (at > 0) {
    UnicodeString userInfo;
    authority.extractBetween(0, at, userInfo);
    const int32_t colon = userInfo.indexOf(u':');
    if (colon > 0) {
      userInfo.extractBetween(0, colon, parts.user);
      userInfo.extractBetween(colon + 1, userInfo.length(), parts.password);
    } else {
      parts.user = userInfo;
    }
    authority.extractBetween(at + 1, authority.length(), parts.host);
  } else {
    parts.host = authority;
  }
  const int32_t colon = parts.host.indexOf(u':');
  if (colon >= 1) {
    UnicodeString port;
    parts.host.extractBetween(colon + 1, parts.host.length(), port);
    parts.port = std::atoi(narrow(port).c_str());
    parts.host.truncate(colon);
  }
  return parts;
}

// ---- Redirection cache ----

namespace {

struct UnicodeStringHash {
  size_t operator()(const UnicodeString& s) const { return static_cast<size_t>(s.hashCode()); }
};
using RedirectionCache = std::unordered_map<UnicodeString, UnicodeString, UnicodeStringHash>;

/// Guards the cache. Never destroyed, so that a late caller still finds it.
ZQLock& cacheLock() {
  static ZQLock* lock = new ZQLock();
  return *lock;
}

RedirectionCache* s_cache = nullptr;

void releaseRedirectionCache() {
  delete s_cache;
  s_cache = nullptr;
}

const bool s_cacheCleanupRegistered = (registerUnloadCleanup(&releaseRedirectionCache), true);

}  // namespace

void rememberRedirection(const UnicodeString& url, const UnicodeString& finalUrl) {
  ZQMutex guard(cacheLock());
  if (!s_cache) s_cache = new RedirectionCache();
  s_cache->emplace(url, finalUrl);
  // Where a chain of redirects ended, nothing redirects.
  if (!finalUrl.isEmpty()) s_cache->emplace(finalUrl, UnicodeString());
}

bool lookupRedirection(const UnicodeString& url, UnicodeString& finalUrl) {
  ZQMutex guard(cacheLock());
  if (!s_cache) return false;
  auto found = s_cache->find(url);
  if (found == s_cache->end()) return false;
  finalUrl = found->second;
  return true;
}

void clearRedirectionCache() {
  ZQMutex guard(cacheLock());
  releaseRedirectionCache();
}

// ---- ZQUriStreamBuf ----

class ZQUriStreamBuf::Session {
 public:
  std::unique_ptr<platform::HttpTransport> http;
};

ZQUriStreamBuf::ZQUriStreamBuf(const UnicodeString& url, const UnicodeString& referrer,
                               const HttpRequestParams& params) {
  request(url, referrer, params);
}

ZQUriStreamBuf::~ZQUriStreamBuf() {
  delete[] m_buffer;
  m_buffer = nullptr;
}

void ZQUriStreamBuf::fail(const char16_t* what, unsigned long code, const UnicodeString& url) {
  m_errorMessage = what;
  m_errorMessage += u": ";
  m_errorMessage += wide(std::to_string(code));
  UnicodeString text = ZQError::getLastErrorMessage(code, nullptr);
  if (!text.isEmpty()) {
    m_errorMessage += u": ";
    m_errorMessage += text;
  }
  m_errorMessage += u'\n';
  m_errorMessage += url;
}

void ZQUriStreamBuf::failStatus(const UnicodeString& statusText, const UnicodeString& url) {
  m_errorMessage = u"HTTP status is ";
  m_errorMessage += statusText;
  m_errorMessage += u'\n';
  m_errorMessage += url;
}

void ZQUriStreamBuf::request(const UnicodeString& url, const UnicodeString& referrer,
                             const HttpRequestParams& params) {
  m_errorMessage.remove();
  m_connectTimeout = params.connectTimeout;
  m_connectRetries = params.connectRetries;
  m_connectBackoff = params.connectBackoff;
  const UnicodeString userAgent =
      params.userAgent.isEmpty() ? ZQUri::getDefaultUserAgent() : params.userAgent;

  m_session = std::make_unique<Session>();
  m_session->http = platform::makeHttpTransport();
  platform::HttpTransport& http = *m_session->http;
  unsigned long code = http.open(narrow(userAgent));
  if (code != 0) return fail(u"Cannot access the Internet", code, url);
  if (m_connectTimeout != INT_MIN) {
    http.setConnectTimeout(m_connectTimeout < 0 ? -1 : m_connectTimeout);
  }
  if (m_connectRetries >= 0) http.setConnectRetries(m_connectRetries);
  if (m_connectBackoff >= 0) http.setConnectBackoff(m_connectBackoff);

  std::string headers = "Accept:*/*\r\n";
  if (!referrer.isEmpty()) headers += "Referer:" + narrow(referrer) + "\r\n";
  headers += "\r\n";

  UnicodeString current = url;
  UnicodeString statusText;
  int redirects = 0;
  // Once an HTTPS URL was asked, TLS (and with ignoreCertErrors, accepting a certificate of
  // another name or date) stays on for every further request of the chain, whatever the
  // scheme of a later location. An unknown issuer is accepted per HTTPS request only.
  bool secure = false;
  bool ignoreCertNameAndDate = false;
  for (;;) {
    const ZQUri currentUri(current, ZQUri::URISTR_URI);
    const ZQHttpUrlParts parts = crackHttpUrl(currentUri);
    code = http.connect(narrow(parts.host), parts.port, narrow(parts.user), narrow(parts.password));
    if (code != 0) return fail(u"Cannot connect the Internet", code, url);
    if (parts.secure) {
      secure = true;
      if (params.ignoreCertErrors) ignoreCertNameAndDate = true;
    }
    code = http.openRequest(narrow(parts.path), secure, ignoreCertNameAndDate,
                            parts.secure && params.ignoreCertErrors);
    if (code != 0) return fail(u"Cannot open URL", code, url);
    code = http.send(headers);
    if (code != 0) return fail(u"HTTP request failure", code, url);
    std::string status;
    code = http.queryStatus(status);
    if (code == 0 && !fitsQueryBuffer(status, kStatusBufferSize)) code = platform::kHttpBadReply;
    if (code != 0) return fail(u"Cannot get HTTP status", code, url);
    statusText = wide(status);
    m_status = decimalOf(statusText);
    if (m_status < 300 || m_status > 399) break;

    // The library follows redirects itself, at most nine of them.
    if (++redirects == 10) return failStatus(statusText, url);
    std::string location;
    if (!queryHeader(http, "Location", location)) return failStatus(statusText, url);
    http.closeRequest();
    const UnicodeString locationText = wide(location);
    ZQUri next(locationText);
    // A relative location is relative to the URL that sent it.
    if (!next.isAbsolute()) next = ZQUri(ZQUri(currentUri.getBaseString()), locationText);
    current = next.toString();
    m_finalUrl = current;
  }

  if (params.headersOnly) return;
  if (m_status < 200 || m_status > 299) return failStatus(statusText, url);

  m_available = static_cast<uint32_t>(http.queryDataAvailable());
  m_buffer = new char[m_available + PUTBACK_SIZE];

  std::string value;
  if (queryHeader(http, "Content-Type", value)) {
    m_contentType = wide(value);
    const int32_t semicolon = m_contentType.indexOf(u';');
    if (semicolon >= 0) {
      UnicodeString parameters;
      m_contentType.extractBetween(semicolon + 1, m_contentType.length(), parameters);
      m_contentType.truncate(semicolon);
      m_contentType.trim();
      int32_t at = parameters.indexOf(UnicodeString(u"charset="));
      if (at >= 0) {
        at += 8;
        if (at < parameters.length() && parameters[at] == u'"') ++at;
        int32_t end = at;
        while (end < parameters.length() && ZQChar::isNameChar(parameters.char32At(end))) {
          end = parameters.moveIndex32(end, 1);
        }
        parameters.extractBetween(at, end, m_charset);
      }
    }
  }
  if (queryHeader(http, "Content-Language", value)) m_contentLanguage = wide(value);
  if (queryHeader(http, "Content-Length", value)) m_contentLength = decimalOf(wide(value));

  setg(m_buffer, m_buffer, m_buffer);
}

ZQUriStreamBuf::int_type ZQUriStreamBuf::underflow() {
  if (!m_buffer) return traits_type::eof();
  if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
  // Keep the last bytes read so that they can be put back.
  const size_t kept = std::min<size_t>(PUTBACK_SIZE, static_cast<size_t>(gptr() - eback()));
  std::memmove(m_buffer, gptr() - kept, kept);
  setg(m_buffer, m_buffer + kept, m_buffer + kept);
  size_t count = 0;
  const unsigned long code = m_session->http->read(m_buffer + kept, m_available, count);
  if (code != 0 || count == 0) return traits_type::eof();
  setg(m_buffer, m_buffer + kept, m_buffer + kept + count);
  return traits_type::to_int_type(*gptr());
}

// ---- ZQUriStream ----

ZQUriStream::ZQUriStream(const UnicodeString& url, const UnicodeString& referrer,
                         const ZQUriStreamBuf::HttpRequestParams& params)
    : std::istream(nullptr), m_buf(url, referrer, params) {
  rdbuf(&m_buf);
}

ZQUriStream::~ZQUriStream() = default;

}  // namespace ZQCommonNS
