// HTTP and HTTPS through ZQUri::getIStream and ZQUriStreamBuf, against a loopback server:
// bodies, statuses, redirects, response fields, the request as sent, time limits, retries,
// certificates, the messages, the splitting of URLs and the redirection cache.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "HttpTestSupport.h"
#include "StreamTestSupport.h"
#include "common/ZQError.h"
#include "common/ZQUri.h"
#include "common/ZQUriStream.h"
#include "core/platform/ZQPlatformHttp.h"
#include "io/ZQUriStreamInternal.h"

#if defined(__SANITIZE_ADDRESS__)
#define ZQ_TEST_UNDER_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZQ_TEST_UNDER_ASAN 1
#endif
#endif

using namespace ZQCommonNS;
using httptest::LoopbackServer;
using httptest::Pattern;

namespace {

std::string utf8(const UnicodeString& s) {
  std::string out;
  s.toUTF8String(out);
  return out;
}

UnicodeString u16(const std::string& s) { return UnicodeString::fromUTF8(s); }

std::string readAll(std::istream& in) {
  std::string out;
  char chunk[4096];
  while (in.read(chunk, sizeof chunk) || in.gcount() > 0) {
    out.append(chunk, static_cast<size_t>(in.gcount()));
  }
  return out;
}

/// `text` escaped to stand as one value in a query.
std::string queryValue(const std::string& text) {
  std::string encoded;
  for (char c : text) {
    if (c == '?' || c == '&' || c == '=' || c == '%' || c == '#' || c == '+' || c == ':') {
      char hex[4];
      std::snprintf(hex, sizeof hex, "%%%02X", static_cast<unsigned char>(c));
      encoded += hex;
    } else {
      encoded += c;
    }
  }
  return encoded;
}

/// The message of a failed step as the library words it.
std::string stepFailure(const std::string& what, unsigned long code, const std::string& url) {
  std::string text = utf8(ZQError::getLastErrorMessage(code, nullptr));
  return what + ": " + std::to_string(code) + (text.empty() ? "" : ": " + text) + "\n" + url;
}

/// Peak resident memory of this process in kB.
long peakResidentKb() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.rfind("VmHWM:", 0) == 0) return std::stol(line.substr(6));
  }
  return -1;
}

class Http : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    s_dir = new streamtest::ScratchDir();
    streamtest::writeFile(s_dir->file("plain.txt"), "plain file over HTTP\n");
    s_server = new LoopbackServer(s_dir->path);
  }
  static void TearDownTestSuite() {
    delete s_server;
    s_server = nullptr;
    delete s_dir;
    s_dir = nullptr;
  }
  void SetUp() override {
    ASSERT_TRUE(s_server && s_server->ok()) << "the loopback server did not start";
    clearRedirectionCache();
  }
  void TearDown() override {
    ZQUri::setInternetConnectTimeout(INT_MIN);
    ZQUri::setInternetConnectRetries(INT_MIN);
    ZQUri::setInternetConnectBackoff(INT_MIN);
    ZQUri::setUserAgent(UnicodeString());
  }

  static std::string url(const std::string& path) { return s_server->url(path); }
  static ZQUri uri(const std::string& path) { return ZQUri(u16(url(path)), ZQUri::URISTR_URI); }
  /// How many requests the server had for `target` (path and query).
  static int hits(const std::string& target) {
    std::unique_ptr<std::istream> in(uri("/hits?path=" + queryValue(target)).getIStream());
    return in ? std::stoi(readAll(*in)) : -1;
  }

  static streamtest::ScratchDir* s_dir;
  static LoopbackServer* s_server;
};

streamtest::ScratchDir* Http::s_dir = nullptr;
LoopbackServer* Http::s_server = nullptr;

// ---- bodies and response fields ----

TEST_F(Http, OkResponseReadsBodyAndFillsContentInfo) {
  ZQUri::ContentInfo info;
  UnicodeString error(u"left over");
  std::unique_ptr<std::istream> in(uri("/hello").getIStream(&info, &error));
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), "Hello from the loopback server\n");
  EXPECT_TRUE(error.isEmpty()) << "success hands back the empty message";
  EXPECT_EQ(utf8(info.contentType), "text/plain");
  EXPECT_TRUE(info.charset.isEmpty());
  EXPECT_TRUE(info.contentLanguage.isEmpty());
  EXPECT_EQ(info.contentLength, 31);
}

TEST_F(Http, StreamIsAZQUriStreamOwningItsBuffer) {
  std::unique_ptr<std::istream> in(uri("/hello").getIStream());
  auto* stream = dynamic_cast<ZQUriStream*>(in.get());
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(stream->rdbuf(), stream->getStreamBuf());
  EXPECT_EQ(stream->getStreamBuf()->getStatus(), 200);
  EXPECT_TRUE(stream->getStreamBuf()->getFinalUrl().isEmpty());
}

TEST_F(Http, EmptyOkBodyGivesAStreamAtEndOfFile) {
  UnicodeString error;
  std::unique_ptr<std::istream> in(uri("/empty").getIStream(nullptr, &error));
  ASSERT_TRUE(in) << "an empty body is not a failure";
  EXPECT_EQ(in->get(), std::char_traits<char>::eof());
  EXPECT_TRUE(in->eof());
  EXPECT_TRUE(error.isEmpty());
}

TEST_F(Http, NoContentStatusIsASuccessWithNothingToRead) {
  std::unique_ptr<std::istream> in(uri("/status/204").getIStream());
  ASSERT_TRUE(in);
  EXPECT_EQ(in->get(), std::char_traits<char>::eof());
}

TEST_F(Http, QuotedCharsetAndContentLanguage) {
  ZQUri::ContentInfo info;
  std::unique_ptr<std::istream> in(uri("/charset").getIStream(&info, nullptr));
  ASSERT_TRUE(in);
  EXPECT_EQ(utf8(info.contentType), "text/html");
  EXPECT_EQ(utf8(info.charset), "utf-8") << "the quote marks are not part of the charset";
  EXPECT_EQ(utf8(info.contentLanguage), "de-CH");
  EXPECT_EQ(info.contentLength, 15);
}

TEST_F(Http, BodyWithoutLengthHeaderReportsMinusOne) {
  ZQUri::ContentInfo info;
  std::unique_ptr<std::istream> in(uri("/unsized?size=100000").getIStream(&info, nullptr));
  ASSERT_TRUE(in);
  EXPECT_EQ(info.contentLength, -1);
  const std::string body = readAll(*in);
  EXPECT_EQ(body.size(), 100000u);
  EXPECT_EQ(Pattern().firstMismatch(body.data(), body.size(), 0), -1);
}

TEST_F(Http, LargeGeneratedBodyArrivesWhole) {
  const size_t size = 8 * 1024 * 1024 + 12345;
  ZQUri::ContentInfo info;
  std::unique_ptr<std::istream> in(
      uri("/large?size=" + std::to_string(size)).getIStream(&info, nullptr));
  ASSERT_TRUE(in);
  EXPECT_EQ(info.contentLength, static_cast<int>(size));
  Pattern pattern;
  std::vector<char> chunk(100003);
  uint64_t offset = 0;
  while (in->read(chunk.data(), static_cast<std::streamsize>(chunk.size())) || in->gcount()) {
    const size_t n = static_cast<size_t>(in->gcount());
    ASSERT_EQ(pattern.firstMismatch(chunk.data(), n, offset), -1);
    offset += n;
  }
  EXPECT_EQ(offset, size);
}

TEST_F(Http, LargeBodyStreamsInBoundedMemory) {
#if defined(ZQ_TEST_UNDER_ASAN)
  GTEST_SKIP() << "AddressSanitizer holds freed memory back, so the peak says nothing here";
#endif
  const size_t size = 96u * 1024 * 1024;
  std::unique_ptr<std::istream> in(uri("/large?size=" + std::to_string(size)).getIStream());
  ASSERT_TRUE(in);
  const long before = peakResidentKb();
  std::vector<char> chunk(1 << 16);
  size_t total = 0;
  while (in->read(chunk.data(), static_cast<std::streamsize>(chunk.size())) || in->gcount()) {
    total += static_cast<size_t>(in->gcount());
  }
  const long after = peakResidentKb();
  EXPECT_EQ(total, size);
  ASSERT_GT(before, 0);
  EXPECT_LT(after - before, 16 * 1024) << "peak memory grew by " << (after - before) << " kB";
}

TEST_F(Http, RefillKeepsSixteenBytesThatCanBePutBack) {
  std::unique_ptr<std::istream> in(uri("/large?size=300000").getIStream());
  ASSERT_TRUE(in);
  EXPECT_GT(static_cast<ZQUriStream*>(in.get())->getStreamBuf()->getAvailable(), 0u);
  std::streambuf* buf = in->rdbuf();
  constexpr auto eof = std::char_traits<char>::eof();
  // Read up to the end of a filled piece, then one byte more, so that a refill happens.
  uint64_t pos = 0;
  do {
    ASSERT_NE(buf->sbumpc(), eof);
    ++pos;
  } while (pos < 100 || buf->in_avail() > 0);
  ASSERT_NE(buf->sbumpc(), eof);
  ++pos;
  // The byte just read and the sixteen kept from before the refill go back, and no more.
  int putBack = 0;
  while (putBack < 40 && buf->sungetc() != eof) ++putBack;
  EXPECT_EQ(putBack, 1 + ZQUriStreamBuf::PUTBACK_SIZE);
  char again[40];
  ASSERT_EQ(buf->sgetn(again, putBack), putBack);
  EXPECT_EQ(Pattern().firstMismatch(again, static_cast<size_t>(putBack), pos - putBack), -1);
}

TEST_F(Http, ReadsOfEverySizeKeepTheBytesInOrder) {
  const size_t size = 2 * 1024 * 1024 + 333;
  std::unique_ptr<std::istream> in(uri("/large?size=" + std::to_string(size)).getIStream());
  ASSERT_TRUE(in);
  Pattern pattern;
  const size_t sizes[] = {1, 8191, 8192, 70000, 3, 200000, 16, 5000, 131072, 9000};
  std::vector<char> chunk(200000);
  uint64_t offset = 0;
  for (size_t i = 0; offset < size; ++i) {
    const size_t want = sizes[i % (sizeof sizes / sizeof sizes[0])];
    in->read(chunk.data(), static_cast<std::streamsize>(want));
    const size_t got = static_cast<size_t>(in->gcount());
    ASSERT_EQ(pattern.firstMismatch(chunk.data(), got, offset), -1) << "read " << i;
    offset += got;
    if (got < want) break;
  }
  EXPECT_EQ(offset, size);
}

TEST_F(Http, TruncatedBodyEndsWhereTheBytesEnd) {
  std::unique_ptr<std::istream> in(uri("/truncated").getIStream());
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), "0123456789");
}

// ---- statuses and their message ----

TEST_F(Http, NotFoundGivesNullAndTheStatusMessage) {
  UnicodeString error;
  std::unique_ptr<std::istream> in(uri("/missing").getIStream(nullptr, &error));
  EXPECT_FALSE(in);
  EXPECT_EQ(utf8(error), "HTTP status is 404\n" + url("/missing"));
}

TEST_F(Http, ServerErrorGivesTheStatusMessage) {
  UnicodeString error;
  std::unique_ptr<std::istream> in(uri("/status/500").getIStream(nullptr, &error));
  EXPECT_FALSE(in);
  EXPECT_EQ(utf8(error), "HTTP status is 500\n" + url("/status/500"));
}

TEST_F(Http, SuccessRangeEndsAt299) {
  UnicodeString error;
  std::unique_ptr<std::istream> in(uri("/status/299").getIStream(nullptr, &error));
  EXPECT_TRUE(in) << "299 is still a success";
  in.reset(uri("/status/300").getIStream(nullptr, &error));
  EXPECT_FALSE(in) << "300 without a location is a failed redirect";
  EXPECT_EQ(utf8(error), "HTTP status is 300\n" + url("/status/300"));
}

TEST_F(Http, MissingFailureLeavesNoStreamEvenWithoutErrorArgument) {
  std::unique_ptr<std::istream> in(uri("/missing").getIStream());
  EXPECT_FALSE(in);
}

// ---- redirects ----

TEST_F(Http, ChainOfNineRedirectsIsFollowed) {
  ZQUri start = uri("/chain/9");
  ZQUri::ContentInfo info;
  UnicodeString error;
  std::unique_ptr<std::istream> in(start.getIStream(&info, &error));
  ASSERT_TRUE(in) << utf8(error);
  EXPECT_EQ(readAll(*in), "end of chain\n");
  EXPECT_EQ(utf8(static_cast<ZQUriStream*>(in.get())->getStreamBuf()->getFinalUrl()),
            url("/chain/0"));
  EXPECT_EQ(utf8(start.toString()), url("/chain/9")) << "flag bit 0 was not set";
}

TEST_F(Http, TenthRedirectFailsWithTheStatusMessage) {
  UnicodeString error;
  std::unique_ptr<std::istream> in(uri("/chain/10?ten").getIStream(nullptr, &error));
  EXPECT_FALSE(in);
  EXPECT_EQ(utf8(error), "HTTP status is 302\n" + url("/chain/10?ten"));
  EXPECT_EQ(hits("/chain/1?ten"), 1) << "the tenth answer came from /chain/1";
  EXPECT_EQ(hits("/chain/0?ten"), 0) << "no eleventh request";
}

TEST_F(Http, RelativeLocationResolvesAgainstTheUrlThatSentIt) {
  ZQUri start = uri("/rel/a/b/start");
  ZQUri::ContentInfo info;
  info.flags = ZQUri::ContentInfo::FLAG_UPDATE_URI;
  UnicodeString error;
  std::unique_ptr<std::istream> in(start.getIStream(&info, &error));
  ASSERT_TRUE(in) << utf8(error);
  EXPECT_EQ(readAll(*in), "relative ok\n");
  // "next" came from /rel/a/c/step, so it is /rel/a/c/next and not /rel/a/b/next.
  EXPECT_EQ(utf8(start.toString()), url("/rel/a/c/next"));
}

TEST_F(Http, AbsoluteLocationIsTakenAsItIs) {
  ZQUri start = uri("/absolute");
  ZQUri::ContentInfo info;
  info.flags = ZQUri::ContentInfo::FLAG_UPDATE_URI;
  std::unique_ptr<std::istream> in(start.getIStream(&info, nullptr));
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), "Hello from the loopback server\n");
  EXPECT_EQ(utf8(start.toString()), url("/hello"));
}

TEST_F(Http, UpdateFlagWithoutRedirectKeepsTheUri) {
  ZQUri start = uri("/hello");
  ZQUri::ContentInfo info;
  info.flags = ZQUri::ContentInfo::FLAG_UPDATE_URI;
  std::unique_ptr<std::istream> in(start.getIStream(&info, nullptr));
  ASSERT_TRUE(in);
  EXPECT_EQ(utf8(start.toString()), url("/hello"));
}

TEST_F(Http, RedirectWithoutLocationFailsWithTheStatusMessage) {
  UnicodeString error;
  std::unique_ptr<std::istream> in(uri("/status/302").getIStream(nullptr, &error));
  EXPECT_FALSE(in);
  EXPECT_EQ(utf8(error), "HTTP status is 302\n" + url("/status/302"));
}

TEST_F(Http, LocationOfUpTo2047BytesIsFollowed) {
  const std::string head = "/hello?pad=";
  const std::string location = head + std::string(2047 - head.size(), 'p');
  const std::string start = "/goto?to=" + queryValue(location);
  UnicodeString error;
  std::unique_ptr<std::istream> in(uri(start).getIStream(nullptr, &error));
  ASSERT_TRUE(in) << utf8(error);
  EXPECT_EQ(readAll(*in), "Hello from the loopback server\n");
  EXPECT_EQ(hits(location), 1);
}

TEST_F(Http, LocationOf2048BytesFailsWithTheStatusMessage) {
  const std::string head = "/hello?pad=";
  const std::string location = head + std::string(2048 - head.size(), 'q');
  const std::string start = "/goto?to=" + queryValue(location);
  UnicodeString error;
  std::unique_ptr<std::istream> in(uri(start).getIStream(nullptr, &error));
  EXPECT_FALSE(in);
  EXPECT_EQ(utf8(error), "HTTP status is 302\n" + url(start));
  EXPECT_EQ(hits(location), 0) << "the location was not followed";
}

TEST_F(Http, ContentTypeOfUpTo2047BytesIsRead) {
  const std::string head = "text/x-long; charset=utf-8; pad=";
  const std::string fits = head + std::string(2047 - head.size(), 'a');
  ZQUri::ContentInfo info;
  std::unique_ptr<std::istream> in(
      uri("/with-header?name=Content-Type&value=" + queryValue(fits)).getIStream(&info, nullptr));
  ASSERT_TRUE(in);
  EXPECT_EQ(utf8(info.contentType), "text/x-long");
  EXPECT_EQ(utf8(info.charset), "utf-8");
  const std::string tooLong = fits + "a";
  ZQUri::ContentInfo longer;
  in.reset(uri("/with-header?name=Content-Type&value=" + queryValue(tooLong))
               .getIStream(&longer, nullptr));
  ASSERT_TRUE(in) << "a header that doesn't fit is only absent";
  EXPECT_TRUE(longer.contentType.isEmpty());
  EXPECT_TRUE(longer.charset.isEmpty());
  EXPECT_EQ(longer.contentLength, 12) << "the other fields are still read";
}

TEST_F(Http, FailureAfterRedirectNamesTheFirstUrl) {
  UnicodeString error;
  std::unique_ptr<std::istream> in(uri("/to-files/none.txt").getIStream(nullptr, &error));
  EXPECT_FALSE(in);
  EXPECT_EQ(utf8(error), "HTTP status is 404\n" + url("/to-files/none.txt"));
}

// ---- the request as sent ----

TEST_F(Http, RequestIsAnHttp10GetWithTheToldHeaders) {
  std::unique_ptr<std::istream> in(uri("/echo").getIStream());
  ASSERT_TRUE(in);
  const std::string echo = readAll(*in);
  EXPECT_EQ(echo.substr(0, echo.find('\n')), "GET /echo HTTP/1.0");
  EXPECT_NE(echo.find("\nAccept: */*\n"), std::string::npos) << echo;
  EXPECT_EQ(echo.find("Referer"), std::string::npos) << "no referrer was given";
  const std::string agent = utf8(ZQUri::getDefaultUserAgent());
  EXPECT_NE(echo.find("\nUser-Agent: " + agent + "\n"), std::string::npos) << echo;
}

TEST_F(Http, DefaultUserAgentNamesTheRunningSystem) {
  const std::string agent = utf8(ZQUri::getDefaultUserAgent());
  EXPECT_EQ(agent.rfind("Keldmoor Common Library for ", 0), 0u) << agent;
  EXPECT_EQ(agent.substr(agent.size() - 10), " (2,0,0,0)");
  EXPECT_EQ(agent.find("Windows"), std::string::npos);
}

TEST_F(Http, RefererAndStoredUserAgentAreSent) {
  ZQUri::setUserAgent(u"ZQTest agent/1.0");
  ZQUri::ContentInfo info;
  info.referer = u16(url("/from/here.html"));
  std::unique_ptr<std::istream> in(uri("/echo").getIStream(&info, nullptr));
  ASSERT_TRUE(in);
  const std::string echo = readAll(*in);
  EXPECT_NE(echo.find("\nReferer: " + url("/from/here.html") + "\n"), std::string::npos) << echo;
  EXPECT_NE(echo.find("\nUser-Agent: ZQTest agent/1.0\n"), std::string::npos) << echo;
}

TEST_F(Http, PathKeepsItsDotSegmentsAndQueryButNotItsFragment) {
  std::unique_ptr<std::istream> in(uri("/x/../echo?q=1#frag").getIStream());
  // The server sees the dot segment as sent and answers 404 for it.
  EXPECT_FALSE(in);
  EXPECT_EQ(hits("/x/../echo?q=1"), 1);
}

// ---- time limits and retries ----

TEST_F(Http, SlowAnswerBeyondTheConnectTimeoutFails) {
  ZQUri::ContentInfo info;
  info.connectTimeout = 200;
  UnicodeString error;
  std::unique_ptr<std::istream> in(uri("/slow?ms=3000").getIStream(&info, &error));
  EXPECT_FALSE(in);
  EXPECT_EQ(utf8(error), stepFailure("HTTP request failure", 12028, url("/slow?ms=3000")));
}

TEST_F(Http, SlowAnswerWithinTheConnectTimeoutIsRead) {
  ZQUri::ContentInfo info;
  info.connectTimeout = 10000;
  std::unique_ptr<std::istream> in(uri("/slow?ms=100").getIStream(&info, nullptr));
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), "slow\n");
}

TEST_F(Http, ClassTimeoutAppliesWithoutContentInfo) {
  ZQUri::setInternetConnectTimeout(200);
  UnicodeString error;
  std::unique_ptr<std::istream> in(uri("/slow?ms=3000").getIStream(nullptr, &error));
  EXPECT_FALSE(in);
  EXPECT_EQ(utf8(error), stepFailure("HTTP request failure", 12028, url("/slow?ms=3000")));
}

TEST_F(Http, TimedOutConnectionIsRetriedAsOftenAsTold) {
  ZQUri::ContentInfo info;
  info.connectTimeout = 150;
  info.connectRetries = 2;
  info.connectBackoff = 10;
  std::unique_ptr<std::istream> in(uri("/slow?ms=2000&r=1").getIStream(&info, nullptr));
  EXPECT_FALSE(in);
  EXPECT_EQ(hits("/slow?ms=2000&r=1"), 3) << "one attempt and two retries";
}

TEST_F(Http, NoRetryUnlessAsked) {
  ZQUri::ContentInfo info;
  info.connectTimeout = 150;
  std::unique_ptr<std::istream> in(uri("/slow?ms=2000&r=0").getIStream(&info, nullptr));
  EXPECT_FALSE(in);
  EXPECT_EQ(hits("/slow?ms=2000&r=0"), 1);
}

TEST_F(Http, ClassRetriesApplyWhereContentInfoHasMinusOne) {
  ZQUri::setInternetConnectRetries(1);
  ZQUri::ContentInfo info;
  info.connectTimeout = 150;
  std::unique_ptr<std::istream> in(uri("/slow?ms=2000&r=c").getIStream(&info, nullptr));
  EXPECT_FALSE(in);
  EXPECT_EQ(hits("/slow?ms=2000&r=c"), 2);
}

TEST_F(Http, AnsweredRequestIsNotRetried) {
  ZQUri::ContentInfo info;
  info.connectRetries = 3;
  std::unique_ptr<std::istream> in(uri("/status/503?once").getIStream(&info, nullptr));
  EXPECT_FALSE(in);
  EXPECT_EQ(hits("/status/503?once"), 1);
}

TEST_F(Http, RefusedConnectionFailsWithTheRequestMessage) {
  const std::string target =
      "http://127.0.0.1:" + std::to_string(httptest::closedPort()) + "/nothing";
  UnicodeString error;
  std::unique_ptr<std::istream> in(
      ZQUri(u16(target), ZQUri::URISTR_URI).getIStream(nullptr, &error));
  EXPECT_FALSE(in);
  EXPECT_EQ(utf8(error), stepFailure("HTTP request failure", 12007, target));
  EXPECT_NE(utf8(error).find("Couldn't connect to server"), std::string::npos) << utf8(error);
}

TEST_F(Http, RefusedConnectionWaitsTheBackoffBeforeEachRetry) {
  const std::string target =
      "http://127.0.0.1:" + std::to_string(httptest::closedPort()) + "/nothing";
  ZQUri::ContentInfo info;
  info.connectRetries = 2;
  info.connectBackoff = 150;
  const auto start = std::chrono::steady_clock::now();
  std::unique_ptr<std::istream> in(
      ZQUri(u16(target), ZQUri::URISTR_URI).getIStream(&info, nullptr));
  const auto waited = std::chrono::steady_clock::now() - start;
  EXPECT_FALSE(in);
  EXPECT_GE(waited, std::chrono::milliseconds(300)) << "two waits of 150 ms";
}

// ---- the other messages ----

TEST_F(Http, MissingHostCannotConnect) {
  UnicodeString error;
  ZQUri noHost(u"http:///nothing", ZQUri::URISTR_URI);
  ASSERT_EQ(utf8(noHost.toString()), "http:///nothing");
  std::unique_ptr<std::istream> in(noHost.getIStream(nullptr, &error));
  EXPECT_FALSE(in);
  EXPECT_EQ(utf8(error), stepFailure("Cannot connect the Internet", 12003, "http:///nothing"));
}

TEST_F(Http, AnswerWithoutStatusLineCannotGetTheStatus) {
  UnicodeString error;
  std::unique_ptr<std::istream> in(uri("/nostatus").getIStream(nullptr, &error));
  EXPECT_FALSE(in);
  EXPECT_EQ(utf8(error), stepFailure("Cannot get HTTP status", 12008, url("/nostatus")));
}

TEST_F(Http, FailureTailCarriesTheClientCodeAndText) {
  EXPECT_EQ(stepFailure("HTTP request failure", 12007, "http://h/"),
            "HTTP request failure: 12007: Couldn't connect to server\nhttp://h/");
}

// ---- headers only ----

TEST_F(Http, HeadersOnlyRequestKeepsNoBufferAndJudgesNoStatus) {
  ZQUriStreamBuf::HttpRequestParams params;
  params.headersOnly = true;
  ZQUriStreamBuf missing(u16(url("/missing")), UnicodeString(), params);
  EXPECT_FALSE(missing.hasBuffer());
  EXPECT_EQ(missing.getStatus(), 404);
  EXPECT_TRUE(missing.getErrorMessage().isEmpty()) << "no status is judged";
  ZQUriStreamBuf chain(u16(url("/chain/2")), UnicodeString(), params);
  EXPECT_FALSE(chain.hasBuffer());
  EXPECT_EQ(chain.getStatus(), 200);
  EXPECT_EQ(utf8(chain.getFinalUrl()), url("/chain/0"));
}

TEST_F(Http, FailedStreamReadsAsEndOfFile) {
  ZQUriStream stream(u16(url("/missing")), UnicodeString(), {});
  EXPECT_FALSE(stream.getStreamBuf()->hasBuffer());
  EXPECT_EQ(stream.get(), std::char_traits<char>::eof());
}

// ---- redirection cache ----

TEST_F(Http, CheckRedirectionTakesTheFinalUrlAndAsksOnlyOnce) {
  ZQUri first = uri("/chain/3?once");
  EXPECT_TRUE(first.checkRedirection());
  EXPECT_EQ(utf8(first.toString()), url("/chain/0?once"));
  EXPECT_EQ(hits("/chain/3?once"), 1);
  ZQUri second = uri("/chain/3?once");
  EXPECT_TRUE(second.checkRedirection());
  EXPECT_EQ(utf8(second.toString()), url("/chain/0?once"));
  EXPECT_EQ(hits("/chain/3?once"), 1) << "the second answer came from the cache";
}

TEST_F(Http, CheckRedirectionOfAFinalUrlIsFalseFromTheCache) {
  ZQUri first = uri("/chain/1?end");
  ASSERT_TRUE(first.checkRedirection());
  EXPECT_EQ(hits("/chain/0?end"), 1);
  ZQUri last = uri("/chain/0?end");
  EXPECT_FALSE(last.checkRedirection());
  EXPECT_EQ(hits("/chain/0?end"), 1) << "the end of a chain is known not to redirect";
}

TEST_F(Http, CheckRedirectionWithoutRedirectIsFalseAndCached) {
  ZQUri plain = uri("/hello?plain");
  EXPECT_FALSE(plain.checkRedirection());
  EXPECT_FALSE(plain.checkRedirection());
  EXPECT_EQ(utf8(plain.toString()), url("/hello?plain"));
  EXPECT_EQ(hits("/hello?plain"), 1);
}

TEST_F(Http, CheckRedirectionOfAnUnreachableServerIsFalse) {
  const std::string target =
      "http://127.0.0.1:" + std::to_string(httptest::closedPort()) + "/nothing";
  ZQUri unreachable(u16(target), ZQUri::URISTR_URI);
  EXPECT_FALSE(unreachable.checkRedirection());
  EXPECT_EQ(utf8(unreachable.toString()), target);
  UnicodeString cached(u"?");
  EXPECT_TRUE(lookupRedirection(u16(target), cached));
  EXPECT_TRUE(cached.isEmpty());
}

TEST_F(Http, OpeningAStreamFillsTheCache) {
  std::unique_ptr<std::istream> in(uri("/chain/4?fill").getIStream());
  ASSERT_TRUE(in);
  ZQUri again = uri("/chain/4?fill");
  EXPECT_TRUE(again.checkRedirection());
  EXPECT_EQ(utf8(again.toString()), url("/chain/0?fill"));
  EXPECT_EQ(hits("/chain/4?fill"), 1);
}

TEST_F(Http, CacheKeepsTheFirstEntryOfAUrl) {
  rememberRedirection(u"http://cache.test/a", u"http://cache.test/b");
  rememberRedirection(u"http://cache.test/a", u"http://cache.test/c");
  UnicodeString value;
  ASSERT_TRUE(lookupRedirection(u"http://cache.test/a", value));
  EXPECT_EQ(utf8(value), "http://cache.test/b");
  ASSERT_TRUE(lookupRedirection(u"http://cache.test/b", value));
  EXPECT_TRUE(value.isEmpty());
  ASSERT_TRUE(lookupRedirection(u"http://cache.test/c", value));
  EXPECT_TRUE(value.isEmpty()) << "the final URL of the ignored entry is still recorded";
  EXPECT_FALSE(lookupRedirection(u"http://cache.test/d", value));
}

TEST_F(Http, CheckRedirectionOfNonHttpUrisIsFalse) {
  ZQUri file(u"file:///nowhere/a.xml", ZQUri::URISTR_URI);
  EXPECT_FALSE(file.checkRedirection());
  EXPECT_EQ(utf8(file.toString()), "file:///nowhere/a.xml");
  UnicodeString value;
  EXPECT_FALSE(lookupRedirection(u"file:///nowhere/a.xml", value)) << "nothing was asked";
}

// ---- HTTPS ----

class Https : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    s_dir = new streamtest::ScratchDir();
    std::string cert, key;
    if (httptest::makeSelfSignedCertificate(s_dir->path, cert, key)) {
      s_server = new LoopbackServer("", cert, key);
    }
  }
  static void TearDownTestSuite() {
    delete s_server;
    s_server = nullptr;
    delete s_dir;
    s_dir = nullptr;
  }
  void SetUp() override {
    ASSERT_TRUE(s_server && s_server->ok()) << "no certificate or the server did not start";
  }
  static std::string url(const std::string& path) { return s_server->url(path, true); }

  static streamtest::ScratchDir* s_dir;
  static LoopbackServer* s_server;
};

streamtest::ScratchDir* Https::s_dir = nullptr;
LoopbackServer* Https::s_server = nullptr;

TEST_F(Https, SelfSignedCertificateIsRefusedByDefault) {
  UnicodeString error;
  ZQUri target(u16(url("/hello")), ZQUri::URISTR_URI);
  std::unique_ptr<std::istream> in(target.getIStream(nullptr, &error));
  EXPECT_FALSE(in);
  EXPECT_EQ(utf8(error), stepFailure("HTTP request failure", 12060, url("/hello")));
}

TEST_F(Https, DefaultContentInfoStillChecksTheCertificate) {
  ZQUri::ContentInfo info;
  UnicodeString error;
  std::unique_ptr<std::istream> in(
      ZQUri(u16(url("/hello")), ZQUri::URISTR_URI).getIStream(&info, &error));
  EXPECT_FALSE(in);
  EXPECT_EQ(utf8(error).rfind("HTTP request failure: 12060", 0), 0u) << utf8(error);
}

TEST_F(Https, FlagBitOneAcceptsTheCertificate) {
  ZQUri::ContentInfo info;
  info.flags = ZQUri::ContentInfo::FLAG_IGNORE_CERT_ERRORS;
  UnicodeString error;
  std::unique_ptr<std::istream> in(
      ZQUri(u16(url("/hello")), ZQUri::URISTR_URI).getIStream(&info, &error));
  ASSERT_TRUE(in) << utf8(error);
  EXPECT_EQ(readAll(*in), "Hello from the loopback server\n");
  EXPECT_EQ(utf8(info.contentType), "text/plain");
}

TEST_F(Https, RedirectsStayOnHttps) {
  ZQUri start(u16(url("/rel/a/b/start")), ZQUri::URISTR_URI);
  ZQUri::ContentInfo info;
  info.flags = ZQUri::ContentInfo::FLAG_IGNORE_CERT_ERRORS | ZQUri::ContentInfo::FLAG_UPDATE_URI;
  std::unique_ptr<std::istream> in(start.getIStream(&info, nullptr));
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), "relative ok\n");
  EXPECT_EQ(utf8(start.toString()), url("/rel/a/c/next"));
}

TEST_F(Https, LaterPlainUrlOfTheChainIsStillAskedThroughTls) {
  LoopbackServer plain;
  ASSERT_TRUE(plain.ok());
  const std::string target = plain.url("/hello?after-tls");
  ZQUri start(u16(url("/goto?to=" + queryValue(target))), ZQUri::URISTR_URI);
  ZQUri::ContentInfo info;
  info.flags = ZQUri::ContentInfo::FLAG_IGNORE_CERT_ERRORS;
  UnicodeString error;
  std::unique_ptr<std::istream> in(start.getIStream(&info, &error));
  EXPECT_FALSE(in) << "a plain server can't answer a TLS handshake";
  EXPECT_EQ(utf8(error).rfind("HTTP request failure: ", 0), 0u) << utf8(error);
  EXPECT_NE(utf8(error).find("\n" + utf8(start.toString())), std::string::npos);
  std::unique_ptr<std::istream> count(
      ZQUri(u16(plain.url("/hits?path=" + queryValue("/hello?after-tls"))), ZQUri::URISTR_URI)
          .getIStream());
  ASSERT_TRUE(count);
  EXPECT_EQ(readAll(*count), "0\n") << "no plain GET reached the server";
}

TEST_F(Https, LargeBodyOverTls) {
  ZQUri::ContentInfo info;
  info.flags = ZQUri::ContentInfo::FLAG_IGNORE_CERT_ERRORS;
  const size_t size = 3 * 1024 * 1024 + 7;
  std::unique_ptr<std::istream> in(
      ZQUri(u16(url("/large?size=" + std::to_string(size))), ZQUri::URISTR_URI)
          .getIStream(&info, nullptr));
  ASSERT_TRUE(in);
  const std::string body = readAll(*in);
  EXPECT_EQ(body.size(), size);
  EXPECT_EQ(Pattern().firstMismatch(body.data(), body.size(), 0), -1);
}

// ---- URL splitting ----

TEST(HttpUrl, CrackTakesUserPasswordHostPortAndPath) {
  ZQHttpUrlParts p =
      crackHttpUrl(ZQUri(u"http://user:pw@host.test:8080/a/b?q=1", ZQUri::URISTR_URI));
  EXPECT_EQ(utf8(p.user), "user");
  EXPECT_EQ(utf8(p.password), "pw");
  EXPECT_EQ(utf8(p.host), "host.test");
  EXPECT_EQ(p.port, 8080);
  EXPECT_EQ(utf8(p.path), "/a/b?q=1");
  EXPECT_FALSE(p.secure);
}

TEST(HttpUrl, HttpsDefaultsToPort443AndRootPath) {
  ZQHttpUrlParts p = crackHttpUrl(ZQUri(u"https://host.test", ZQUri::URISTR_URI));
  EXPECT_TRUE(p.secure);
  EXPECT_EQ(p.port, 443);
  EXPECT_EQ(utf8(p.host), "host.test");
  EXPECT_EQ(utf8(p.path), "/");
}

TEST(HttpUrl, SchemeIsReadWithoutRegardToCase) {
  ZQHttpUrlParts p = crackHttpUrl(ZQUri(u"HTTPS://Host.Test/X", ZQUri::URISTR_URI));
  EXPECT_TRUE(p.secure);
  EXPECT_EQ(p.port, 443);
  EXPECT_EQ(utf8(p.host), "Host.Test");
  EXPECT_EQ(utf8(p.path), "/X");
}

TEST(HttpUrl, UserWithoutPassword) {
  ZQHttpUrlParts p = crackHttpUrl(ZQUri(u"http://someone@host.test/", ZQUri::URISTR_URI));
  EXPECT_EQ(utf8(p.user), "someone");
  EXPECT_TRUE(p.password.isEmpty());
  EXPECT_EQ(utf8(p.host), "host.test");
  EXPECT_EQ(p.port, 80);
}

TEST(HttpUrl, AtOrColonAtIndexZeroSplitsNothing) {
  ZQHttpUrlParts at = crackHttpUrl(ZQUri(u"http://@host.test/", ZQUri::URISTR_URI));
  EXPECT_TRUE(at.user.isEmpty());
  EXPECT_EQ(utf8(at.host), "@host.test");
  ZQHttpUrlParts colon = crackHttpUrl(ZQUri(u"http://:8080/x", ZQUri::URISTR_URI));
  EXPECT_EQ(utf8(colon.host), ":8080");
  EXPECT_EQ(colon.port, 80);
  ZQHttpUrlParts userColon = crackHttpUrl(ZQUri(u"http://:pw@h/", ZQUri::URISTR_URI));
  EXPECT_EQ(utf8(userColon.user), ":pw") << "no password split at index 0";
  EXPECT_TRUE(userColon.password.isEmpty());
}

TEST(HttpUrl, PortIsReadLikeAtoi) {
  EXPECT_EQ(crackHttpUrl(ZQUri(u"http://h:81x/", ZQUri::URISTR_URI)).port, 81);
  EXPECT_EQ(crackHttpUrl(ZQUri(u"http://h:x/", ZQUri::URISTR_URI)).port, 0);
  EXPECT_EQ(utf8(crackHttpUrl(ZQUri(u"http://h:x/", ZQUri::URISTR_URI)).host), "h");
}

TEST(HttpUrl, NothingIsEscapedOrUnescaped) {
  ZQHttpUrlParts p = crackHttpUrl(ZQUri(u"http://h/a%20b/\u00e9?x=%41", ZQUri::URISTR_URI));
  EXPECT_EQ(p.path, UnicodeString(u"/a%20b/\u00e9?x=%41"));
}

// ---- connect timeout as handed to the client ----

TEST(HttpClient, ConnectTimeoutMapping) {
  EXPECT_EQ(platform::curlConnectTimeout(INT_MIN), -1) << "the marker keeps the default";
  EXPECT_EQ(platform::curlConnectTimeout(-1), 0x7FFFFFFFL) << "negative means no limit";
  EXPECT_EQ(platform::curlConnectTimeout(-500), 0x7FFFFFFFL);
  EXPECT_EQ(platform::curlConnectTimeout(0), 1);
  EXPECT_EQ(platform::curlConnectTimeout(2500), 2500);
}

// ---- steps a real server can't make fail, and settings that leave no trace on the wire ----

/// A client that records every step and fails the one it is told to.
struct FakeClientScript {
  std::string failAt;
  unsigned long failCode = 0;
  /// Status and Location of the answer to each request in turn; "200" without a location
  /// once the list is used up.
  std::vector<std::pair<std::string, std::string>> answers;
  /// Further headers of every answer.
  std::vector<std::pair<std::string, std::string>> headers;
  std::vector<std::string> log;
};
FakeClientScript* g_script = nullptr;

class FakeTransport : public platform::HttpTransport {
 public:
  unsigned long open(const std::string& userAgent) override {
    return step("open:" + userAgent, "open");
  }
  void setConnectTimeout(int ms) override {
    g_script->log.push_back("timeout:" + std::to_string(ms));
  }
  void setConnectRetries(int n) override {
    g_script->log.push_back("retries:" + std::to_string(n));
  }
  void setConnectBackoff(int ms) override {
    g_script->log.push_back("backoff:" + std::to_string(ms));
  }
  unsigned long connect(const std::string& host, int port, const std::string& user,
                        const std::string& password) override {
    return step("connect:" + host + ":" + std::to_string(port) + ":" + user + ":" + password,
                "connect");
  }
  unsigned long openRequest(const std::string& path, bool secure, bool ignoreNameAndDate,
                            bool ignoreUnknownCa) override {
    ++m_requests;
    return step("request:" + path + ":" + (secure ? "secure" : "plain") +
                    (ignoreNameAndDate ? ":ignore-name-date" : "") +
                    (ignoreUnknownCa ? ":ignore-ca" : ""),
                "openRequest");
  }
  unsigned long send(const std::string& headers) override {
    return step("send:" + headers, "send");
  }
  unsigned long queryStatus(std::string& text) override {
    text = answer().first;
    return step("status", "status");
  }
  bool queryHeader(std::string_view name, std::string& value) override {
    if (name == "Location" && !answer().second.empty()) {
      value = answer().second;
      return true;
    }
    for (const auto& [key, text] : g_script->headers) {
      if (key == name) {
        value = text;
        return true;
      }
    }
    return false;
  }
  size_t queryDataAvailable() override { return 5; }
  unsigned long read(char* out, size_t size, size_t& count) override {
    count = m_sent ? 0 : std::min<size_t>(size, 5);
    std::memcpy(out, "fake!", count);
    m_sent = true;
    return 0;
  }
  void closeRequest() override {}

 private:
  unsigned long step(const std::string& entry, const std::string& name) {
    g_script->log.push_back(entry);
    return g_script->failAt == name ? g_script->failCode : 0;
  }
  std::pair<std::string, std::string> answer() const {
    const size_t i = static_cast<size_t>(m_requests - 1);
    return i < g_script->answers.size() ? g_script->answers[i]
                                        : std::pair<std::string, std::string>("200", "");
  }
  bool m_sent = false;
  int m_requests = 0;
};

class HttpSteps : public ::testing::Test {
 protected:
  void SetUp() override {
    g_script = &m_script;
    m_previous =
        platform::setHttpTransportFactory([]() -> std::unique_ptr<platform::HttpTransport> {
          return std::make_unique<FakeTransport>();
        });
  }
  void TearDown() override {
    platform::setHttpTransportFactory(m_previous);
    g_script = nullptr;
    ZQUri::setInternetConnectTimeout(INT_MIN);
    ZQUri::setInternetConnectRetries(INT_MIN);
    ZQUri::setInternetConnectBackoff(INT_MIN);
  }
  bool logged(const std::string& entry) const {
    return std::find(m_script.log.begin(), m_script.log.end(), entry) != m_script.log.end();
  }
  bool loggedPrefix(const std::string& prefix) const {
    for (const std::string& e : m_script.log) {
      if (e.rfind(prefix, 0) == 0) return true;
    }
    return false;
  }
  std::string open(const char16_t* url, ZQUri::ContentInfo* info) {
    UnicodeString error;
    std::unique_ptr<std::istream> in(ZQUri(url, ZQUri::URISTR_URI).getIStream(info, &error));
    m_body = in ? readAll(*in) : std::string("<null>");
    return utf8(error);
  }

  FakeClientScript m_script;
  platform::HttpTransportFactory m_previous = nullptr;
  std::string m_body;
};

TEST_F(HttpSteps, SessionThatCannotStartCannotAccessTheInternet) {
  m_script.failAt = "open";
  m_script.failCode = 12002;
  EXPECT_EQ(open(u"http://host.test/a", nullptr),
            stepFailure("Cannot access the Internet", 12002, "http://host.test/a"));
  EXPECT_EQ(m_body, "<null>");
  EXPECT_FALSE(loggedPrefix("connect:"));
}

TEST_F(HttpSteps, RequestThatCannotBeOpenedCannotOpenUrl) {
  m_script.failAt = "openRequest";
  m_script.failCode = 12003;
  EXPECT_EQ(open(u"http://host.test/a", nullptr),
            stepFailure("Cannot open URL", 12003, "http://host.test/a"));
  EXPECT_EQ(m_body, "<null>");
  EXPECT_FALSE(loggedPrefix("send:"));
}

TEST_F(HttpSteps, StepsRunInOrderWithTheCrackedUrl) {
  EXPECT_EQ(open(u"https://u:p@host.test:8443/a/b?c", nullptr), "");
  EXPECT_EQ(m_body, "fake!");
  ASSERT_EQ(m_script.log.size(), 5u);
  EXPECT_EQ(m_script.log[0], "open:" + utf8(ZQUri::getDefaultUserAgent()));
  EXPECT_EQ(m_script.log[1], "connect:host.test:8443:u:p");
  EXPECT_EQ(m_script.log[2], "request:/a/b?c:secure");
  EXPECT_EQ(m_script.log[3], "send:Accept:*/*\r\n\r\n");
  EXPECT_EQ(m_script.log[4], "status");
}

TEST_F(HttpSteps, HeaderBlockCarriesTheReferrerAndEndsInAnEmptyLine) {
  ZQUri::ContentInfo info;
  info.referer = u"http://from.test/page";
  open(u"http://host.test/", &info);
  EXPECT_TRUE(logged("send:Accept:*/*\r\nReferer:http://from.test/page\r\n\r\n"));
}

TEST_F(HttpSteps, CertificateFlagCountsForHttpsOnly) {
  ZQUri::ContentInfo info;
  info.flags = ZQUri::ContentInfo::FLAG_IGNORE_CERT_ERRORS;
  open(u"http://host.test/x", &info);
  open(u"https://host.test/y", &info);
  EXPECT_TRUE(logged("request:/x:plain"));
  EXPECT_TRUE(logged("request:/y:secure:ignore-name-date:ignore-ca"));
}

TEST_F(HttpSteps, WithoutContentInfoTheTimeoutIsLeftToThePlatform) {
  open(u"http://host.test/", nullptr);
  EXPECT_FALSE(loggedPrefix("timeout:"));
  EXPECT_FALSE(loggedPrefix("retries:"));
  EXPECT_FALSE(loggedPrefix("backoff:"));
}

TEST_F(HttpSteps, DefaultContentInfoSetsAnInfiniteTimeout) {
  ZQUri::ContentInfo info;
  open(u"http://host.test/", &info);
  EXPECT_TRUE(logged("timeout:-1"));
  EXPECT_FALSE(loggedPrefix("retries:"));
  EXPECT_FALSE(loggedPrefix("backoff:"));
}

TEST_F(HttpSteps, ClassSettingsApplyWithoutContentInfo) {
  ZQUri::setInternetConnectTimeout(5000);
  ZQUri::setInternetConnectRetries(2);
  ZQUri::setInternetConnectBackoff(100);
  open(u"http://host.test/", nullptr);
  EXPECT_TRUE(logged("timeout:5000"));
  EXPECT_TRUE(logged("retries:2"));
  EXPECT_TRUE(logged("backoff:100"));
}

TEST_F(HttpSteps, ContentInfoTimeoutWinsAlwaysTheOthersOnlyWhenSet) {
  ZQUri::setInternetConnectTimeout(5000);
  ZQUri::setInternetConnectRetries(2);
  ZQUri::setInternetConnectBackoff(100);
  ZQUri::ContentInfo info;
  open(u"http://host.test/", &info);
  EXPECT_TRUE(logged("timeout:-1")) << "the caller's -1 replaces the class's 5000";
  EXPECT_TRUE(logged("retries:2"));
  EXPECT_TRUE(logged("backoff:100"));
  m_script.log.clear();
  info.connectTimeout = 300;
  info.connectRetries = 4;
  info.connectBackoff = 0;
  open(u"http://host.test/", &info);
  EXPECT_TRUE(logged("timeout:300"));
  EXPECT_TRUE(logged("retries:4"));
  EXPECT_TRUE(logged("backoff:0"));
}

TEST_F(HttpSteps, NegativeTimeoutsAllMeanNoLimit) {
  ZQUri::ContentInfo info;
  info.connectTimeout = -77;
  open(u"http://host.test/", &info);
  EXPECT_TRUE(logged("timeout:-1"));
}

TEST_F(HttpSteps, BufferKeepsTheSettingsItWasMadeWith) {
  ZQUriStreamBuf::HttpRequestParams params;
  params.connectTimeout = 1234;
  params.connectRetries = 3;
  ZQUriStreamBuf buf(u"http://host.test/", UnicodeString(), params);
  EXPECT_EQ(buf.getConnectTimeout(), 1234);
  EXPECT_EQ(buf.getConnectRetries(), 3);
  EXPECT_EQ(buf.getConnectBackoff(), INT_MIN);
  EXPECT_EQ(buf.getAvailable(), 5u);
}

TEST_F(HttpSteps, TlsStaysOnForTheRestOfARedirectChain) {
  m_script.answers = {{"302", "https://other.test/c"}, {"302", "http://last.test/d"}};
  ZQUri::ContentInfo info;
  info.flags = ZQUri::ContentInfo::FLAG_IGNORE_CERT_ERRORS;
  EXPECT_EQ(open(u"http://first.test/a", &info), "");
  EXPECT_EQ(m_body, "fake!");
  const std::vector<std::string> requests = {
      "connect:first.test:80::",  "request:/a:plain",
      "connect:other.test:443::", "request:/c:secure:ignore-name-date:ignore-ca",
      "connect:last.test:80::",   "request:/d:secure:ignore-name-date"};
  std::vector<std::string> seen;
  for (const std::string& e : m_script.log) {
    if (e.rfind("connect:", 0) == 0 || e.rfind("request:", 0) == 0) seen.push_back(e);
  }
  EXPECT_EQ(seen, requests);
}

TEST_F(HttpSteps, TlsAfterRedirectChecksTheCertificateUnlessTold) {
  m_script.answers = {{"301", "http://last.test:8080/d"}};
  EXPECT_EQ(open(u"https://first.test/a", nullptr), "");
  EXPECT_TRUE(logged("request:/a:secure"));
  EXPECT_TRUE(logged("connect:last.test:8080::"));
  EXPECT_TRUE(logged("request:/d:secure"));
}

TEST_F(HttpSteps, StatusOfUpTo99BytesIsRead) {
  m_script.answers = {{std::string(96, '0') + "200", ""}};
  EXPECT_EQ(open(u"http://host.test/a", nullptr), "");
  EXPECT_EQ(m_body, "fake!");
}

TEST_F(HttpSteps, StatusOf100BytesCannotBeGot) {
  m_script.answers = {{std::string(97, '0') + "200", ""}};
  EXPECT_EQ(open(u"http://host.test/a", nullptr),
            stepFailure("Cannot get HTTP status", 12008, "http://host.test/a"));
  EXPECT_EQ(m_body, "<null>");
}

TEST_F(HttpSteps, ResponseFieldsOfUpTo2047BytesAreRead) {
  m_script.headers = {{"Content-Type", "text/plain;x=" + std::string(2047 - 13, 'a')},
                      {"Content-Language", std::string(2047, 'l')},
                      {"Content-Length", std::string(2045, '0') + "42"}};
  ZQUri::ContentInfo info;
  open(u"http://host.test/", &info);
  EXPECT_EQ(utf8(info.contentType), "text/plain");
  EXPECT_EQ(info.contentLanguage.length(), 2047);
  EXPECT_EQ(info.contentLength, 42);
}

TEST_F(HttpSteps, ResponseFieldsOf2048BytesAreAbsent) {
  m_script.headers = {{"Content-Type", "text/plain;x=" + std::string(2048 - 13, 'a')},
                      {"Content-Language", std::string(2048, 'l')},
                      {"Content-Length", std::string(2046, '0') + "42"}};
  ZQUri::ContentInfo info;
  EXPECT_EQ(open(u"http://host.test/", &info), "");
  EXPECT_EQ(m_body, "fake!");
  EXPECT_TRUE(info.contentType.isEmpty());
  EXPECT_TRUE(info.contentLanguage.isEmpty());
  EXPECT_EQ(info.contentLength, -1);
}

TEST_F(HttpSteps, CharsetIsTheNameRunBehindTheExactParameterText) {
  ZQUri::ContentInfo info;
  m_script.headers = {{"Content-Type", "text/xml ; format=flowed; charset=ISO-8859-1;x=y"}};
  open(u"http://host.test/", &info);
  EXPECT_EQ(utf8(info.contentType), "text/xml") << "the part before ';' is trimmed";
  EXPECT_EQ(utf8(info.charset), "ISO-8859-1");
  m_script.headers = {{"Content-Type", "text/html; Charset=utf-8"}};
  open(u"http://host.test/", &info);
  EXPECT_EQ(utf8(info.contentType), "text/html");
  EXPECT_TRUE(info.charset.isEmpty()) << "\"charset=\" is looked for as it is written";
  m_script.headers = {{"Content-Type", "text/html;charset=\"utf-8\" x"}};
  open(u"http://host.test/", &info);
  EXPECT_EQ(utf8(info.charset), "utf-8");
  m_script.headers = {{"Content-Type", "text/plain;"}};
  open(u"http://host.test/", &info);
  EXPECT_EQ(utf8(info.contentType), "text/plain");
  EXPECT_TRUE(info.charset.isEmpty());
}

TEST_F(HttpSteps, ContentLengthBeyondThe32BitRangeIsClamped) {
  m_script.headers = {{"Content-Length", "2147483647"}};
  ZQUri::ContentInfo info;
  open(u"http://host.test/", &info);
  EXPECT_EQ(info.contentLength, 2147483647);
  m_script.headers = {{"Content-Length", "8589934592"}};
  open(u"http://host.test/", &info);
  EXPECT_EQ(info.contentLength, 2147483647);
}

}  // namespace
