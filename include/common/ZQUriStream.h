// Input streams over HTTP and HTTPS resources: the request runs when the stream is made, and
// the body is read piece by piece as the stream is read.
#pragma once

#include <climits>
#include <cstdint>
#include <istream>
#include <memory>
#include <streambuf>

#include "common/ZQExport.h"
#include "common/ZQString.h"

namespace ZQCommonNS {

/// Stream buffer over one HTTP GET. Its constructor performs the request (following at most
/// nine redirects itself); a failure leaves no buffer, reads give end of file, and the reason
/// stands in getErrorMessage.
class ZQCOMMON_API ZQUriStreamBuf : public std::streambuf {
 public:
  /// What a request is made with.
  struct HttpRequestParams {
    UnicodeString userAgent;        ///< empty for the library's default
    int connectTimeout = INT_MIN;   ///< milliseconds; INT_MIN keeps the client's default
    int connectRetries = INT_MIN;   ///< applied when not negative
    int connectBackoff = INT_MIN;   ///< milliseconds; applied when not negative
    bool headersOnly = false;       ///< stop once the status is known, with no body
    bool ignoreCertErrors = false;  ///< accept any server certificate
  };

  /// Puts back up to this many bytes read before each refill.
  static constexpr int PUTBACK_SIZE = 16;

  /// Performs the GET of `url`, sending `referrer` when it isn't empty.
  ZQUriStreamBuf(const UnicodeString& url, const UnicodeString& referrer,
                 const HttpRequestParams& params);
  ~ZQUriStreamBuf() override;
  ZQUriStreamBuf(const ZQUriStreamBuf&) = delete;
  ZQUriStreamBuf& operator=(const ZQUriStreamBuf&) = delete;

  /// True once a response with a body was accepted.
  bool hasBuffer() const { return m_buffer != nullptr; }
  /// The HTTP status of the last response, 0 when none came.
  int getStatus() const { return m_status; }
  /// The media type of the response, parameters removed.
  const UnicodeString& getContentType() const { return m_contentType; }
  /// The charset parameter of the response's media type.
  const UnicodeString& getCharset() const { return m_charset; }
  /// The response's language header.
  const UnicodeString& getContentLanguage() const { return m_contentLanguage; }
  /// The response's length header, -1 when unknown.
  int getContentLength() const { return m_contentLength; }
  /// Why the request failed; empty on success.
  const UnicodeString& getErrorMessage() const { return m_errorMessage; }
  /// Where redirects ended; empty when there was none.
  const UnicodeString& getFinalUrl() const { return m_finalUrl; }
  /// The size of one read from the network (the read buffer holds it and the put-back area).
  uint32_t getAvailable() const { return m_available; }
  /// The connection settings the request was made with.
  int getConnectTimeout() const { return m_connectTimeout; }
  int getConnectRetries() const { return m_connectRetries; }
  int getConnectBackoff() const { return m_connectBackoff; }

 protected:
  int_type underflow() override;

 private:
  class Session;

  void request(const UnicodeString& url, const UnicodeString& referrer,
               const HttpRequestParams& params);
  void fail(const char16_t* what, unsigned long code, const UnicodeString& url);
  void failStatus(const UnicodeString& statusText, const UnicodeString& url);

  char* m_buffer = nullptr;
  int m_status = 0;
  UnicodeString m_contentType;
  UnicodeString m_charset;
  UnicodeString m_contentLanguage;
  int m_contentLength = -1;
  UnicodeString m_errorMessage;
  UnicodeString m_finalUrl;
  std::unique_ptr<Session> m_session;  // the client session and its open request
  uint32_t m_available = 0;
  int m_connectTimeout = INT_MIN;
  int m_connectRetries = INT_MIN;
  int m_connectBackoff = INT_MIN;
};

/// Input stream that owns one ZQUriStreamBuf.
class ZQCOMMON_API ZQUriStream : public std::istream {
 public:
  /// Performs the GET of `url` (see ZQUriStreamBuf).
  ZQUriStream(const UnicodeString& url, const UnicodeString& referrer,
              const ZQUriStreamBuf::HttpRequestParams& params);
  ~ZQUriStream() override;
  ZQUriStream(const ZQUriStream&) = delete;
  ZQUriStream& operator=(const ZQUriStream&) = delete;

  /// The buffer, with what the server said.
  ZQUriStreamBuf* getStreamBuf() { return &m_buf; }
  const ZQUriStreamBuf* getStreamBuf() const { return &m_buf; }

 private:
  ZQUriStreamBuf m_buf;
};

}  // namespace ZQCommonNS
