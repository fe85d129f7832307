// The HTTP client behind URI streams: one session that performs GET requests one after the
// other, in the steps the stream buffer takes (open, connect, open a request, send, query,
// read). libcurl does the work; nothing else in the library sees it.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "common/ZQExport.h"

namespace ZQCommonNS::platform {

/// Failures are reported as this base plus libcurl's own code, the range in which
/// ZQError::getLastErrorMessage looks up the client's texts. 0 is success.
inline constexpr unsigned long kHttpErrorBase = 12000;

/// A reply that can't be read as HTTP (libcurl's "weird server reply").
inline constexpr unsigned long kHttpBadReply = kHttpErrorBase + 8;

/// Marker of a connection setting that keeps the client's default.
inline constexpr int kHttpKeepDefault = static_cast<int>(0x80000000u);

/// One client session. Every step returns 0 or an error code (kHttpErrorBase + client code).
class ZQCOMMON_API HttpTransport {
 public:
  virtual ~HttpTransport();

  /// Starts the session; the proxy comes from the environment as the client reads it.
  virtual unsigned long open(const std::string& userAgent) = 0;
  /// Limit for establishing a connection and receiving the response's headers, in
  /// milliseconds; negative for none, kHttpKeepDefault for the client's own.
  virtual void setConnectTimeout(int milliseconds) = 0;
  /// Further attempts after a connection failed or timed out.
  virtual void setConnectRetries(int retries) = 0;
  /// Wait before each further attempt, in milliseconds.
  virtual void setConnectBackoff(int milliseconds) = 0;

  /// Names the server of the following requests; fails for a host or port that can't be one.
  virtual unsigned long connect(const std::string& host, int port, const std::string& user,
                                const std::string& password) = 0;
  /// Prepares a GET of `path` (with its query) over HTTP/1.0, through TLS when `secure`.
  /// `ignoreNameAndDate` accepts a certificate of another name or out of date, and with
  /// `ignoreUnknownCa` as well any certificate at all. A request still open is closed first.
  virtual unsigned long openRequest(const std::string& path, bool secure, bool ignoreNameAndDate,
                                    bool ignoreUnknownCa) = 0;
  /// Sends the request with `headers` (lines ending in CR LF, closed by an empty line) and
  /// waits until the response's headers are in. Redirects are never followed.
  virtual unsigned long send(const std::string& headers) = 0;
  /// The status code as the server wrote it on its status line.
  virtual unsigned long queryStatus(std::string& text) = 0;
  /// The first value of the response header `name` (any case), trimmed; false when absent.
  virtual bool queryHeader(std::string_view name, std::string& value) = 0;
  /// Waits until body bytes are there or the body has ended. The size to read at a time, or
  /// 0 when the body is empty.
  virtual size_t queryDataAvailable() = 0;
  /// Reads up to `size` body bytes into `out`; `count` is 0 at the end.
  virtual unsigned long read(char* out, size_t size, size_t& count) = 0;
  /// Ends the current request and drops its connection.
  virtual void closeRequest() = 0;
};

/// A new session of the installed kind (libcurl unless a test installed another).
ZQCOMMON_API std::unique_ptr<HttpTransport> makeHttpTransport();

/// Makes the sessions of makeHttpTransport; null restores libcurl. Returns the previous one.
/// For tests that must see a step fail which a real server cannot make fail.
using HttpTransportFactory = std::unique_ptr<HttpTransport> (*)();
ZQCOMMON_API HttpTransportFactory setHttpTransportFactory(HttpTransportFactory factory);

/// The libcurl connect timeout for a told one: -1 where libcurl's default stays (the marker),
/// 0x7FFFFFFF ms for no limit (any negative value), 1 ms for 0 (libcurl reads 0 as default).
ZQCOMMON_API long curlConnectTimeout(int milliseconds);

}  // namespace ZQCommonNS::platform
