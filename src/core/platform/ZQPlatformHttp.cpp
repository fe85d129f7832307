#include "core/platform/ZQPlatformHttp.h"

#include <curl/curl.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "core/platform/ZQPlatformTemp.h"

namespace ZQCommonNS::platform {

static_assert(kHttpBadReply == kHttpErrorBase + CURLE_WEIRD_SERVER_REPLY);

HttpTransport::~HttpTransport() = default;

long curlConnectTimeout(int milliseconds) {
  if (milliseconds == kHttpKeepDefault) return -1;
  if (milliseconds < 0) return 0x7FFFFFFFL;
  if (milliseconds == 0) return 1;
  return milliseconds;
}

namespace {

using Clock = std::chrono::steady_clock;

// libcurl hands the body over in pieces of at most this size; it is also the read size that
// queryDataAvailable reports, so one read takes one piece.
constexpr size_t kReadSize = 128 * 1024;
// Body bytes held back while nobody reads; beyond this the transfer pauses, which keeps the
// memory of a stream bounded whatever the size of the body. A few pieces of slack keep the
// pauses, which cost a round through libcurl each, rare.
constexpr size_t kPendingLimit = 4 * kReadSize;

unsigned long codeOf(CURLcode code) { return code == CURLE_OK ? 0 : kHttpErrorBase + code; }

void globalInit() {
  static std::once_flag once;
  std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

std::string_view trimmed(std::string_view s) {
  while (!s.empty() && isBlank(s.front())) s.remove_prefix(1);
  while (!s.empty() && isBlank(s.back())) s.remove_suffix(1);
  return s;
}

bool equalsNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    char x = a[i], y = b[i];
    if (x >= 'A' && x <= 'Z') x = static_cast<char>(x + 32);
    if (y >= 'A' && y <= 'Z') y = static_cast<char>(y + 32);
    if (x != y) return false;
  }
  return true;
}

/// The request target as it goes on the wire: the fragment stays behind, and the bytes that
/// can't stand in a request line (controls, space, non-ASCII) are percent-escaped. Nothing
/// else is touched, dot segments included.
std::string requestTarget(std::string_view path) {
  static const char kHex[] = "0123456789ABCDEF";
  std::string out;
  out.reserve(path.size() + 1);
  for (char ch : path) {
    const unsigned char c = static_cast<unsigned char>(ch);
    if (c == '#') break;
    if (c <= 0x20 || c >= 0x7F) {
      out += '%';
      out += kHex[c >> 4];
      out += kHex[c & 15];
    } else {
      out += ch;
    }
  }
  if (out.empty() || out[0] != '/') out.insert(out.begin(), '/');
  return out;
}

class CurlTransport final : public HttpTransport {
 public:
  CurlTransport() = default;
  CurlTransport(const CurlTransport&) = delete;
  CurlTransport& operator=(const CurlTransport&) = delete;
  ~CurlTransport() override {
    closeRequest();
    if (m_multi) curl_multi_cleanup(m_multi);
  }

  unsigned long open(const std::string& userAgent) override {
    globalInit();
    if (!m_multi) m_multi = curl_multi_init();
    if (!m_multi) return codeOf(CURLE_FAILED_INIT);
    m_userAgent = userAgent;
    return 0;
  }

  void setConnectTimeout(int milliseconds) override { m_timeout = milliseconds; }
  void setConnectRetries(int retries) override { m_retries = retries; }
  void setConnectBackoff(int milliseconds) override { m_backoff = milliseconds; }

  unsigned long connect(const std::string& host, int port, const std::string& user,
                        const std::string& password) override {
    if (!m_multi) return codeOf(CURLE_FAILED_INIT);
    std::string origin = "http://" + host + ":" + std::to_string(port) + "/";
    CURLU* parsed = curl_url();
    if (!parsed) return codeOf(CURLE_OUT_OF_MEMORY);
    CURLUcode rc =
        host.empty() ? CURLUE_NO_HOST : curl_url_set(parsed, CURLUPART_URL, origin.c_str(), 0);
    curl_url_cleanup(parsed);
    if (rc != CURLUE_OK) return codeOf(CURLE_URL_MALFORMAT);
    m_host = host;
    m_port = port;
    m_user = user;
    m_password = password;
    return 0;
  }

  unsigned long openRequest(const std::string& path, bool secure, bool ignoreNameAndDate,
                            bool ignoreUnknownCa) override {
    closeRequest();
    if (!m_multi || m_host.empty()) return codeOf(CURLE_FAILED_INIT);
    m_easy = curl_easy_init();
    if (!m_easy) return codeOf(CURLE_FAILED_INIT);
    m_url = std::string(secure ? "https://" : "http://") + m_host + ":" + std::to_string(m_port) +
            requestTarget(path);
    CURLcode rc = CURLE_OK;
    auto set = [&](CURLoption option, auto value) {
      if (rc == CURLE_OK) rc = curl_easy_setopt(m_easy, option, value);
    };
    set(CURLOPT_URL, m_url.c_str());
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_HTTPGET, 1L);
    set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_0));
    set(CURLOPT_FOLLOWLOCATION, 0L);
    // The path goes out as the URI has it, dot segments included.
    set(CURLOPT_PATH_AS_IS, 1L);
    // A reply without a status line is let in, so that it is the status that is missing.
    set(CURLOPT_HTTP09_ALLOWED, 1L);
    set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_BUFFERSIZE, static_cast<long>(kReadSize));
    set(CURLOPT_USERAGENT, m_userAgent.c_str());
    if (!m_user.empty()) set(CURLOPT_USERNAME, m_user.c_str());
    if (!m_password.empty()) set(CURLOPT_PASSWORD, m_password.c_str());
    // libcurl checks the issuer and the dates in one, so an unknown issuer is let through
    // only when a wrong date is too; the name is a check of its own.
    set(CURLOPT_SSL_VERIFYPEER, ignoreNameAndDate && ignoreUnknownCa ? 0L : 1L);
    set(CURLOPT_SSL_VERIFYHOST, ignoreNameAndDate ? 0L : 2L);
    const long timeout = curlConnectTimeout(m_timeout);
    if (timeout >= 0) set(CURLOPT_CONNECTTIMEOUT_MS, timeout);
    set(CURLOPT_HEADERFUNCTION, &CurlTransport::headerThunk);
    set(CURLOPT_HEADERDATA, static_cast<void*>(this));
    set(CURLOPT_WRITEFUNCTION, &CurlTransport::bodyThunk);
    set(CURLOPT_WRITEDATA, static_cast<void*>(this));
    if (rc == CURLE_OK) {
      CURLU* parsed = curl_url();
      if (!parsed) {
        rc = CURLE_OUT_OF_MEMORY;
      } else {
        if (curl_url_set(parsed, CURLUPART_URL, m_url.c_str(), CURLU_PATH_AS_IS) != CURLUE_OK) {
          rc = CURLE_URL_MALFORMAT;
        }
        curl_url_cleanup(parsed);
      }
    }
    if (rc != CURLE_OK) {
      closeRequest();
      return codeOf(rc);
    }
    return 0;
  }

  unsigned long send(const std::string& headers) override {
    if (!m_easy) return codeOf(CURLE_FAILED_INIT);
    if (m_headerList) {
      curl_slist_free_all(m_headerList);
      m_headerList = nullptr;
    }
    for (size_t pos = 0; pos < headers.size();) {
      size_t end = headers.find("\r\n", pos);
      if (end == std::string::npos) end = headers.size();
      if (end > pos) {
        curl_slist* more = curl_slist_append(m_headerList, headers.substr(pos, end - pos).c_str());
        if (!more) return codeOf(CURLE_OUT_OF_MEMORY);
        m_headerList = more;
      }
      pos = end + 2;
    }
    CURLcode rc = curl_easy_setopt(m_easy, CURLOPT_HTTPHEADER, m_headerList);
    if (rc != CURLE_OK) return codeOf(rc);

    const int retries = m_retries > 0 ? m_retries : 0;
    for (int attempt = 0;; ++attempt) {
      detach();
      resetResponse();
      if (curl_multi_add_handle(m_multi, m_easy) != CURLM_OK) return codeOf(CURLE_FAILED_INIT);
      m_attached = true;
      std::optional<Clock::time_point> deadline;
      if (m_timeout >= 0) {
        deadline = Clock::now() + std::chrono::milliseconds(std::max(m_timeout, 1));
      }
      rc = pump([this] { return m_headersDone; }, deadline);
      if (m_headersDone || rc == CURLE_OK) return 0;
      // Only a connection that never came about is tried again; a server that said anything
      // has answered.
      const bool connectFailure =
          !m_gotBytes && (rc == CURLE_COULDNT_CONNECT || rc == CURLE_OPERATION_TIMEDOUT);
      if (!connectFailure || attempt >= retries) {
        detach();
        return codeOf(rc);
      }
      detach();
      if (m_backoff > 0) sleepMilliseconds(static_cast<unsigned>(m_backoff));
    }
  }

  unsigned long queryStatus(std::string& text) override {
    if (!m_easy || !m_hasStatus || m_statusText.empty()) return kHttpBadReply;
    text = m_statusText;
    return 0;
  }

  bool queryHeader(std::string_view name, std::string& value) override {
    for (const auto& [key, text] : m_headers) {
      if (equalsNoCase(key, name)) {
        value = text;
        return true;
      }
    }
    return false;
  }

  size_t queryDataAvailable() override {
    if (!m_easy || !m_attached) return 0;
    if (pendingSize() == 0 && !m_done) {
      resume();
      pump([this] { return pendingSize() > 0; }, std::nullopt);
    }
    return pendingSize() > 0 ? kReadSize : 0;
  }

  unsigned long read(char* out, size_t size, size_t& count) override {
    count = 0;
    if (!m_easy || !m_attached) return codeOf(CURLE_FAILED_INIT);
    if (size == 0) return 0;
    if (takePending(out, size, count)) return 0;
    if (m_done) return codeOf(m_result);
    // Pieces that arrive while we wait go straight to the caller's buffer.
    m_target = out;
    m_targetCap = size;
    m_targetLen = 0;
    resume();
    CURLcode rc = pump([this] { return m_targetLen > 0 || pendingSize() > 0; }, std::nullopt);
    m_target = nullptr;
    count = m_targetLen;
    if (count > 0 || takePending(out, size, count)) return 0;
    return codeOf(rc);
  }

  void closeRequest() override {
    detach();
    if (m_easy) {
      curl_easy_cleanup(m_easy);
      m_easy = nullptr;
    }
    if (m_headerList) {
      curl_slist_free_all(m_headerList);
      m_headerList = nullptr;
    }
    resetResponse();
  }

 private:
  static size_t headerThunk(char* data, size_t size, size_t count, void* self) {
    return static_cast<CurlTransport*>(self)->onHeader(data, size * count);
  }
  static size_t bodyThunk(char* data, size_t size, size_t count, void* self) {
    return static_cast<CurlTransport*>(self)->onBody(data, size * count);
  }

  size_t onHeader(const char* data, size_t size) {
    m_gotBytes = true;
    std::string_view line(data, size);
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
    if (line.empty()) {
      // The end of a header block; an interim 1xx answer is followed by the real one.
      if (!(m_statusCode >= 100 && m_statusCode < 200)) m_headersDone = true;
      return size;
    }
    if (line.size() >= 5 && line.substr(0, 5) == "HTTP/") {
      m_hasStatus = true;
      m_headers.clear();
      size_t begin = line.find(' ');
      begin = begin == std::string_view::npos ? line.size() : begin;
      while (begin < line.size() && line[begin] == ' ') ++begin;
      size_t end = begin;
      while (end < line.size() && !isBlank(line[end])) ++end;
      m_statusText.assign(line.substr(begin, end - begin));
      m_statusCode = std::atoi(m_statusText.c_str());
    } else if (line.front() == ' ' || line.front() == '\t') {
      if (!m_headers.empty()) {
        m_headers.back().second += ' ';
        m_headers.back().second += trimmed(line);
      }
    } else {
      const size_t colon = line.find(':');
      if (colon != std::string_view::npos) {
        m_headers.emplace_back(std::string(trimmed(line.substr(0, colon))),
                               std::string(trimmed(line.substr(colon + 1))));
      }
    }
    return size;
  }

  size_t onBody(const char* data, size_t size) {
    m_gotBytes = true;
    m_headersDone = true;
    size_t used = 0;
    if (m_target) {
      used = std::min(size, m_targetCap - m_targetLen);
      std::memcpy(m_target + m_targetLen, data, used);
      m_targetLen += used;
    }
    if (used == size) return size;
    if (used == 0 && pendingSize() > 0 && pendingSize() + size > kPendingLimit) {
      m_paused = true;
      return CURL_WRITEFUNC_PAUSE;
    }
    if (m_pendingPos > 0) {
      m_pending.erase(m_pending.begin(), m_pending.begin() + static_cast<ptrdiff_t>(m_pendingPos));
      m_pendingPos = 0;
    }
    m_pending.insert(m_pending.end(), data + used, data + size);
    return size;
  }

  size_t pendingSize() const { return m_pending.size() - m_pendingPos; }

  bool takePending(char* out, size_t size, size_t& count) {
    const size_t n = std::min(size, pendingSize());
    if (n == 0) return false;
    std::memcpy(out, m_pending.data() + m_pendingPos, n);
    m_pendingPos += n;
    if (m_pendingPos == m_pending.size()) {
      m_pending.clear();
      m_pendingPos = 0;
    }
    count = n;
    return true;
  }

  void resume() {
    if (m_paused && m_easy) {
      m_paused = false;
      curl_easy_pause(m_easy, CURLPAUSE_CONT);
    }
  }

  template <class Ready>
  CURLcode pump(Ready ready, std::optional<Clock::time_point> deadline) {
    for (;;) {
      if (ready()) return CURLE_OK;
      if (m_done) return m_result;
      int running = 0;
      const CURLMcode mc = curl_multi_perform(m_multi, &running);
      if (mc != CURLM_OK) {
        m_done = true;
        m_result = mc == CURLM_OUT_OF_MEMORY ? CURLE_OUT_OF_MEMORY : CURLE_FAILED_INIT;
      }
      collectDone();
      if (ready()) return CURLE_OK;
      if (m_done) return m_result;
      int waitMs = 1000;
      if (deadline) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(*deadline - Clock::now());
        if (left.count() <= 0) return CURLE_OPERATION_TIMEDOUT;
        waitMs = static_cast<int>(std::min<long long>(waitMs, left.count()));
      }
      curl_multi_poll(m_multi, nullptr, 0, waitMs, nullptr);
    }
  }

  void collectDone() {
    int queued = 0;
    while (CURLMsg* msg = curl_multi_info_read(m_multi, &queued)) {
      if (msg->msg == CURLMSG_DONE && msg->easy_handle == m_easy) {
        m_done = true;
        m_result = msg->data.result;
      }
    }
  }

  void detach() {
    if (m_attached) {
      curl_multi_remove_handle(m_multi, m_easy);
      m_attached = false;
    }
  }

  void resetResponse() {
    m_statusText.clear();
    m_statusCode = 0;
    m_hasStatus = false;
    m_headers.clear();
    m_headersDone = false;
    m_gotBytes = false;
    m_done = false;
    m_result = CURLE_OK;
    m_paused = false;
    m_pending.clear();
    m_pendingPos = 0;
    m_target = nullptr;
    m_targetCap = m_targetLen = 0;
  }

  CURLM* m_multi = nullptr;
  CURL* m_easy = nullptr;
  curl_slist* m_headerList = nullptr;
  bool m_attached = false;

  std::string m_userAgent;
  std::string m_host;
  int m_port = 80;
  std::string m_user;
  std::string m_password;
  std::string m_url;
  int m_timeout = kHttpKeepDefault;
  int m_retries = kHttpKeepDefault;
  int m_backoff = kHttpKeepDefault;

  // The response as it comes in.
  std::string m_statusText;
  int m_statusCode = 0;
  bool m_hasStatus = false;
  std::vector<std::pair<std::string, std::string>> m_headers;
  bool m_headersDone = false;
  bool m_gotBytes = false;
  bool m_done = false;
  CURLcode m_result = CURLE_OK;
  bool m_paused = false;

  // Body bytes that arrived with nobody reading, and the reader's buffer while it waits.
  std::vector<char> m_pending;
  size_t m_pendingPos = 0;
  char* m_target = nullptr;
  size_t m_targetCap = 0;
  size_t m_targetLen = 0;
};

std::atomic<HttpTransportFactory> s_factory{nullptr};

}  // namespace

std::unique_ptr<HttpTransport> makeHttpTransport() {
  if (HttpTransportFactory factory = s_factory.load()) return factory();
  return std::make_unique<CurlTransport>();
}

HttpTransportFactory setHttpTransportFactory(HttpTransportFactory factory) {
  return s_factory.exchange(factory);
}

}  // namespace ZQCommonNS::platform
