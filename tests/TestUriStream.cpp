// Opening URIs as streams: local files, "data:" URIs, the caller's resolver, output and
// read-write file streams, the gzip helpers, and what getIStream leaves alone.
#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <zlib.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "HttpTestSupport.h"
#include "StreamTestSupport.h"
#include "common/ZQGzipStream.h"
#include "common/ZQMemStream.h"
#include "common/ZQUri.h"

using namespace ZQCommonNS;
using streamtest::readFile;
using streamtest::ScratchDir;
using streamtest::writeFile;

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

/// gzip bytes of `text`, made by zlib itself.
std::string gzipped(const std::string& text) {
  z_stream z{};
  deflateInit2(&z, 9, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY);
  std::string out(deflateBound(&z, text.size()) + 32, '\0');
  z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
  z.avail_in = static_cast<uInt>(text.size());
  z.next_out = reinterpret_cast<Bytef*>(out.data());
  z.avail_out = static_cast<uInt>(out.size());
  deflate(&z, Z_FINISH);
  out.resize(z.total_out);
  deflateEnd(&z);
  return out;
}

/// Base64 decoding by OpenSSL, for expectations independent of the library.
std::string openSslBase64(const std::string& text) {
  std::string quad = text.substr(0, text.size() / 4 * 4);
  std::string out(quad.size() / 4 * 3 + 3, '\0');
  int n = EVP_DecodeBlock(reinterpret_cast<unsigned char*>(out.data()),
                          reinterpret_cast<const unsigned char*>(quad.data()),
                          static_cast<int>(quad.size()));
  out.resize(n < 0 ? 0 : static_cast<size_t>(n));
  return out;
}

/// The fields a caller sets before the call, to see what getIStream touches.
ZQUri::ContentInfo presetInfo() {
  ZQUri::ContentInfo info;
  info.contentType = u"preset/type";
  info.charset = u"preset-charset";
  info.contentLanguage = u"xx";
  info.contentLength = 4242;
  return info;
}

bool untouched(const ZQUri::ContentInfo& info) {
  return info.contentType == UnicodeString(u"preset/type") &&
         info.charset == UnicodeString(u"preset-charset") &&
         info.contentLanguage == UnicodeString(u"xx") && info.contentLength == 4242;
}

std::unique_ptr<std::istream> open(const std::string& text, ZQUri::ContentInfo* info = nullptr,
                                   UnicodeString* error = nullptr) {
  return std::unique_ptr<std::istream>(ZQUri(u16(text)).getIStream(info, error));
}

// ---- local files ----

TEST(UriStreamFile, LocalPathReadsTheBytesAsTheyAre) {
  ScratchDir dir;
  const std::string bytes("line one\r\nline two\n\0\xFF end", 25);
  writeFile(dir.file("a.bin"), bytes);
  auto in = open(dir.file("a.bin"));
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), bytes);
}

TEST(UriStreamFile, FileUriReadsTheFile) {
  ScratchDir dir;
  writeFile(dir.file("b.xml"), "<b/>");
  ZQUri uri(u16("file://" + dir.file("b.xml")), ZQUri::URISTR_URI);
  ASSERT_TRUE(uri.isFileScheme());
  std::unique_ptr<std::istream> in(uri.getIStream());
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), "<b/>");
}

TEST(UriStreamFile, EscapedFileUriReadsTheNamedFile) {
  ScratchDir dir;
  writeFile(dir.file("na me.txt"), "spaced");
  ZQUri uri(u16("file://" + dir.path + "/na%20me.txt"), ZQUri::URISTR_URI);
  std::unique_ptr<std::istream> in(uri.getIStream());
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), "spaced");
}

TEST(UriStreamFile, NameWithHashAndPercentOpensThroughAuto) {
  ScratchDir dir;
  writeFile(dir.file("a#b%41.txt"), "hash");
  auto in = open(dir.file("a#b%41.txt"));
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), "hash");
}

TEST(UriStreamFile, PathWithHashPercentAndSpaceOpensAsAPath) {
  ScratchDir dir;
  writeFile(dir.file("a #1 50%.tmp"), "odd name");
  ZQUri uri(u16(dir.file("a #1 50%.tmp")), ZQUri::URISTR_PATH);
  std::unique_ptr<std::istream> in(uri.getIStream());
  ASSERT_TRUE(in) << utf8(uri.toString());
  EXPECT_EQ(readAll(*in), "odd name");
}

TEST(UriStreamFile, MissingFileGivesNullAndNoMessage) {
  ScratchDir dir;
  UnicodeString error(u"untouched");
  ZQUri::ContentInfo info = presetInfo();
  auto in = open(dir.file("missing.xml"), &info, &error);
  EXPECT_FALSE(in);
  EXPECT_EQ(utf8(error), "untouched");
  EXPECT_TRUE(untouched(info));
}

TEST(UriStreamFile, DirectoryIsNotAFile) {
  ScratchDir dir;
  EXPECT_FALSE(open(dir.path));
  EXPECT_FALSE(open(dir.path + "/"));
}

TEST(UriStreamFile, LocalFileLeavesContentInfoAlone) {
  ScratchDir dir;
  writeFile(dir.file("c.txt"), "c");
  ZQUri::ContentInfo info = presetInfo();
  UnicodeString error(u"untouched");
  auto in = open(dir.file("c.txt"), &info, &error);
  ASSERT_TRUE(in);
  EXPECT_TRUE(untouched(info));
  EXPECT_EQ(utf8(error), "untouched");
}

TEST(UriStreamFile, EmptyUriGivesNull) {
  UnicodeString error(u"untouched");
  EXPECT_EQ(ZQUri().getIStream(nullptr, &error), nullptr);
  EXPECT_EQ(ZQUri().getIStream(), nullptr);
  EXPECT_EQ(utf8(error), "untouched");
}

TEST(UriStreamFile, UnknownSchemeGivesNullAndLeavesErrorAlone) {
  for (const char* text :
       {"ftp://127.0.0.1/a.xml", "mailto:someone@example.org", "urn:x:y", "gopher://h/"}) {
    UnicodeString error(u"untouched");
    ZQUri::ContentInfo info = presetInfo();
    ZQUri uri(u16(text), ZQUri::URISTR_URI);
    EXPECT_EQ(uri.getIStream(&info, &error), nullptr) << text;
    EXPECT_EQ(utf8(error), "untouched") << text;
    EXPECT_TRUE(untouched(info)) << text;
  }
}

// ---- output and read-write streams ----

TEST(UriStreamFile, OutputStreamWritesTheLocalFile) {
  ScratchDir dir;
  ZQUri uri(u16(dir.file("out.bin")));
  std::unique_ptr<std::ofstream> out(uri.getOStream(true));
  ASSERT_TRUE(out);
  out->write("ab\0\r\n", 5);
  out.reset();
  EXPECT_EQ(readFile(dir.file("out.bin")), std::string("ab\0\r\n", 5));
}

TEST(UriStreamFile, OutputStreamWithTruncateEmptiesAnExistingFile) {
  ScratchDir dir;
  writeFile(dir.file("old.txt"), "old content that is long");
  std::unique_ptr<std::ofstream> out(ZQUri(u16(dir.file("old.txt"))).getOStream(true));
  ASSERT_TRUE(out);
  *out << "new";
  out.reset();
  EXPECT_EQ(readFile(dir.file("old.txt")), "new");
}

TEST(UriStreamFile, OutputStreamWithoutTruncateStillStartsTheFileAnew) {
  // Output mode alone opens a file stream from an empty file; the flag adds nothing to that.
  ScratchDir dir;
  writeFile(dir.file("kept.txt"), "old content that is long");
  std::unique_ptr<std::ofstream> out(ZQUri(u16(dir.file("kept.txt"))).getOStream(false));
  ASSERT_TRUE(out);
  *out << "new";
  out.reset();
  EXPECT_EQ(readFile(dir.file("kept.txt")), "new");
}

TEST(UriStreamFile, OutputStreamThroughAFileUri) {
  ScratchDir dir;
  ZQUri uri(u16("file://" + dir.file("via-uri.txt")), ZQUri::URISTR_URI);
  std::unique_ptr<std::ofstream> out(uri.getOStream(false));
  ASSERT_TRUE(out);
  *out << "written";
  out.reset();
  EXPECT_EQ(readFile(dir.file("via-uri.txt")), "written");
}

TEST(UriStreamFile, OutputStreamNeedsALocalUri) {
  ScratchDir dir;
  EXPECT_EQ(ZQUri().getOStream(true), nullptr);
  EXPECT_EQ(ZQUri(u"http://127.0.0.1/x.txt", ZQUri::URISTR_URI).getOStream(true), nullptr);
  EXPECT_EQ(ZQUri(u"data:,abc", ZQUri::URISTR_URI).getOStream(true), nullptr);
  EXPECT_EQ(ZQUri(u16(dir.file("no/such/dir/x.txt"))).getOStream(true), nullptr);
  EXPECT_EQ(ZQUri(u16(dir.path)).getOStream(true), nullptr) << "a directory";
}

TEST(UriStreamFile, FileStreamReadsAndWritesInPlace) {
  ScratchDir dir;
  writeFile(dir.file("rw.txt"), "0123456789");
  std::unique_ptr<std::fstream> io(ZQUri(u16(dir.file("rw.txt"))).getFStream());
  ASSERT_TRUE(io);
  char head[4] = {};
  io->read(head, 3);
  EXPECT_EQ(std::string(head), "012");
  io->seekp(5);
  io->write("xy", 2);
  io.reset();
  EXPECT_EQ(readFile(dir.file("rw.txt")), "01234xy789");
}

TEST(UriStreamFile, FileStreamOfAMissingFileOrNonLocalUriIsNull) {
  ScratchDir dir;
  EXPECT_EQ(ZQUri(u16(dir.file("missing.txt"))).getFStream(), nullptr);
  EXPECT_FALSE(streamtest::fileExists(dir.file("missing.txt"))) << "nothing is created";
  EXPECT_EQ(ZQUri().getFStream(), nullptr);
  EXPECT_EQ(ZQUri(u"https://127.0.0.1/x", ZQUri::URISTR_URI).getFStream(), nullptr);
}

// ---- gzip ----

TEST(UriStreamGzip, GzipStreamInflatesTheLocalFile) {
  ScratchDir dir;
  const std::string text = streamtest::compressibleText(50000);
  writeFile(dir.file("t.gz"), gzipped(text));
  std::unique_ptr<ZQGzipIStream> in(ZQUri(u16(dir.file("t.gz"))).getGzipStream());
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), text);
}

TEST(UriStreamGzip, GzipStreamOfAMissingFileIsNull) {
  ScratchDir dir;
  EXPECT_EQ(ZQUri(u16(dir.file("none.gz"))).getGzipStream(), nullptr);
  EXPECT_EQ(ZQUri().getGzipStream(), nullptr);
}

TEST(UriStreamGzip, GzipStreamOfAPlainFilePassesItThrough) {
  ScratchDir dir;
  writeFile(dir.file("plain.txt"), "not compressed");
  std::unique_ptr<ZQGzipIStream> in(ZQUri(u16(dir.file("plain.txt"))).getGzipStream());
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), "not compressed");
}

TEST(UriStreamGzip, WrappingAStreamSeeksItToZeroFirst) {
  const std::string text = "wrapped gzip text, read from the very start";
  std::istringstream source(gzipped(text));
  source.seekg(7);
  std::unique_ptr<ZQGzipIStream> in(ZQUri::getGzipStream(source));
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), text);
  in.reset();
  source.clear();
  source.seekg(0);
  EXPECT_EQ(source.get(), 0x1F) << "the wrapped stream isn't owned and lives on";
}

TEST(UriStreamGzip, IsGzipOfFiles) {
  ScratchDir dir;
  writeFile(dir.file("z.gz"), gzipped("abc"));
  writeFile(dir.file("p.txt"), "plain");
  writeFile(dir.file("one"), "\x1F");
  writeFile(dir.file("empty"), "");
  writeFile(dir.file("swapped"), "\x8B\x1F");
  EXPECT_TRUE(ZQUri(u16(dir.file("z.gz"))).isGzip());
  EXPECT_FALSE(ZQUri(u16(dir.file("p.txt"))).isGzip());
  EXPECT_FALSE(ZQUri(u16(dir.file("one"))).isGzip()) << "two bytes must be read";
  EXPECT_FALSE(ZQUri(u16(dir.file("empty"))).isGzip());
  EXPECT_FALSE(ZQUri(u16(dir.file("swapped"))).isGzip());
  EXPECT_FALSE(ZQUri(u16(dir.file("missing"))).isGzip());
  EXPECT_FALSE(ZQUri().isGzip());
}

TEST(UriStreamGzip, IsGzipOfADataUri) {
  ZQUri gz(u"data:;base64,H4sIAAAAAAAAA0tMSgYAwiQkNQMAAAA=", ZQUri::URISTR_URI);
  EXPECT_TRUE(gz.isGzip());
  EXPECT_FALSE(ZQUri(u"data:,H4sI", ZQUri::URISTR_URI).isGzip());
}

TEST(UriStreamGzip, IsGzipOfAStreamLeavesItTwoBytesIn) {
  std::istringstream gz(gzipped("x"));
  gz.seekg(0, std::ios::end);
  EXPECT_TRUE(ZQUri::isGzip(gz)) << "the stream is seeked to 0 first";
  EXPECT_EQ(static_cast<long>(gz.tellg()), 2);
  std::istringstream plain("plain");
  EXPECT_FALSE(ZQUri::isGzip(plain));
  EXPECT_EQ(static_cast<long>(plain.tellg()), 2);
}

TEST(UriStreamGzip, IsGzipOfAShortStreamThatThrowsIsFalse) {
  std::istringstream shortStream("\x1F");
  shortStream.exceptions(std::ios::failbit | std::ios::badbit | std::ios::eofbit);
  bool result = true;
  EXPECT_NO_THROW(result = ZQUri::isGzip(shortStream));
  EXPECT_FALSE(result);
}

// ---- data: URIs ----

TEST(UriStreamData, PlainDataReadsItsText) {
  ZQUri::ContentInfo info = presetInfo();
  UnicodeString error(u"untouched");
  auto in = open("data:,abc", &info, &error);
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), "abc");
  EXPECT_TRUE(info.contentType.isEmpty());
  EXPECT_TRUE(info.charset.isEmpty());
  EXPECT_TRUE(info.contentLanguage.isEmpty());
  EXPECT_EQ(info.contentLength, -1);
  EXPECT_EQ(utf8(error), "untouched");
}

TEST(UriStreamData, MediaTypeIsReportedAndTheCharsetParameterIsNot) {
  ZQUri::ContentInfo info = presetInfo();
  auto in = open("data:text/plain;charset=utf-8,abc", &info);
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), "abc");
  EXPECT_EQ(utf8(info.contentType), "text/plain");
  EXPECT_TRUE(info.charset.isEmpty());
}

TEST(UriStreamData, Base64DataIsDecoded) {
  auto in = open("data:;base64,QUJD");
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), "ABC");
}

TEST(UriStreamData, Base64BinaryBytes) {
  auto in = open("data:application/octet-stream;base64,AAH/gA==");
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), std::string("\x00\x01\xFF\x80", 4));
}

TEST(UriStreamData, PercentEscapesAreDecodedOnce) {
  auto in = open("data:,a%20b%2541");
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), "a b%41");
  auto padded = open("data:;base64,QUI%3D");
  ASSERT_TRUE(padded);
  EXPECT_EQ(readAll(*padded), "AB");
}

TEST(UriStreamData, TextIsWrittenAsUtf8) {
  auto in = open("data:text/plain,gr\xC3\xBC\xC3\x9F \xE2\x82\xAC");
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), "gr\xC3\xBC\xC3\x9F \xE2\x82\xAC");
}

TEST(UriStreamData, EmptyDataGivesAnEmptyStream) {
  auto in = open("data:,");
  ASSERT_TRUE(in);
  EXPECT_EQ(in->get(), std::char_traits<char>::eof());
}

TEST(UriStreamData, MalformedHeaderReadsTheWholeString) {
  // A comma must follow ";base64": the header is malformed, so there is no data position and
  // the whole string is decoded, skipping what isn't base64 and stopping at the first '='.
  const std::string text = "data:text/plain;base64;x=1,abc";
  auto in = open(text);
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), openSslBase64("datatext/plainbase64x"));
}

TEST(UriStreamData, UpperCaseSchemeIsOpenedButItsHeaderIsNotRead) {
  ZQUri::ContentInfo info = presetInfo();
  auto in = open("DATA:text/plain,abc", &info);
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), "DATA:text/plain,abc");
  EXPECT_TRUE(info.contentType.isEmpty());
}

TEST(UriStreamData, DataStreamCanSeek) {
  auto in = open("data:,0123456789");
  ASSERT_TRUE(in);
  in->seekg(6);
  EXPECT_EQ(readAll(*in), "6789");
  in->clear();
  in->seekg(0);
  EXPECT_EQ(in->get(), '0');
}

// ---- the caller's resolver ----

class Resolver : public ZQUriReferenceResolver2 {
 public:
  enum Mode { PRODUCE, DECLINE, THROW };
  explicit Resolver(Mode mode) : m_mode(mode) {}
  bool resolveUriReference(const char16_t* uri, WriteFunc write, void* data) override {
    ++calls;
    seen = UnicodeString(uri);
    if (m_mode == THROW) throw std::runtime_error("resolver failure");
    if (m_mode == DECLINE) {
      write(3, "xyz", data);  // written, but the answer is no
      return false;
    }
    write(6, "from r", data);
    write(0, nullptr, data);
    write(9, "esolver\n!", data);
    return true;
  }
  int calls = 0;
  UnicodeString seen;

 private:
  Mode m_mode;
};

class UriStreamResolver : public ::testing::Test {
 protected:
  void TearDown() override { ZQUri::setUriReferenceResolver2(m_previous); }
  void install(Resolver* resolver) { m_previous = ZQUri::setUriReferenceResolver2(resolver); }
  ZQUriReferenceResolver2* m_previous = nullptr;
};

TEST_F(UriStreamResolver, ProducedBytesAreTheStream) {
  Resolver resolver(Resolver::PRODUCE);
  install(&resolver);
  ZQUri uri(u"http://127.0.0.1:1/never-asked.xml", ZQUri::URISTR_URI);
  ZQUri::ContentInfo info = presetInfo();
  UnicodeString error(u"untouched");
  std::unique_ptr<std::istream> in(uri.getIStream(&info, &error));
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), "from resolver\n!");
  EXPECT_EQ(resolver.calls, 1);
  EXPECT_EQ(resolver.seen, uri.toString()) << "the resolver is given the URI string";
  EXPECT_TRUE(untouched(info)) << "info stays as it was";
  EXPECT_EQ(utf8(error), "untouched");
}

TEST_F(UriStreamResolver, ResolverStreamStartsAtZeroAndSeeks) {
  Resolver resolver(Resolver::PRODUCE);
  install(&resolver);
  std::unique_ptr<std::istream> in(ZQUri(u"urn:anything", ZQUri::URISTR_URI).getIStream());
  ASSERT_TRUE(in);
  EXPECT_NE(dynamic_cast<ZQMemStream*>(in.get()), nullptr);
  EXPECT_EQ(in->get(), 'f');
  in->seekg(5);
  EXPECT_EQ(in->get(), 'r');
}

TEST_F(UriStreamResolver, DeclinedResolverLetsTheSchemesOpen) {
  ScratchDir dir;
  writeFile(dir.file("f.txt"), "file content");
  Resolver resolver(Resolver::DECLINE);
  install(&resolver);
  auto in = open(dir.file("f.txt"));
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), "file content");
  EXPECT_EQ(resolver.calls, 1);
  EXPECT_EQ(ZQUri(u"urn:x", ZQUri::URISTR_URI).getStreamFromResolver(), nullptr);
}

TEST_F(UriStreamResolver, ThrowingResolverGivesNullAndUnknownException) {
  Resolver resolver(Resolver::THROW);
  install(&resolver);
  UnicodeString error;
  std::istream* in = nullptr;
  EXPECT_NO_THROW(in = ZQUri(u"urn:x", ZQUri::URISTR_URI).getIStream(nullptr, &error));
  EXPECT_EQ(in, nullptr);
  EXPECT_EQ(utf8(error), "Unknown exception");
}

TEST_F(UriStreamResolver, NoResolverMeansNoStream) {
  install(nullptr);
  EXPECT_EQ(ZQUri(u"urn:x", ZQUri::URISTR_URI).getStreamFromResolver(), nullptr);
}

TEST_F(UriStreamResolver, ResolverIsAskedForEveryScheme) {
  Resolver resolver(Resolver::PRODUCE);
  install(&resolver);
  for (const char* text : {"data:,abc", "file:///nowhere/x", "jar:file:///a.zip!/b", "urn:y"}) {
    std::unique_ptr<std::istream> in(ZQUri(u16(text), ZQUri::URISTR_URI).getIStream());
    ASSERT_TRUE(in) << text;
    EXPECT_EQ(readAll(*in), "from resolver\n!") << text;
  }
  EXPECT_EQ(resolver.calls, 4);
}

TEST_F(UriStreamResolver, CheckRedirectionOfAFileOpensNothing) {
  Resolver resolver(Resolver::PRODUCE);
  install(&resolver);
  ZQUri file(u"file:///nowhere/a.xml", ZQUri::URISTR_URI);
  EXPECT_FALSE(file.checkRedirection());
  EXPECT_EQ(resolver.calls, 0);
  EXPECT_EQ(utf8(file.toString()), "file:///nowhere/a.xml");
}

// ---- jar: URIs ----

/// Zip archives for the jar tests, written by Python's zipfile module into a scratch
/// directory: name -> list of (entry name, content or "@file" of another archive, method).
class UriStreamJar : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    s_dir = new ScratchDir();
    const std::string script = s_dir->file("make.py");
    writeFile(
        script,
        "import zipfile, sys\n"
        "d = sys.argv[1]\n"
        "def make(name, entries):\n"
        "    with zipfile.ZipFile(d + '/' + name, 'w') as z:\n"
        "        for entry, content, method in entries:\n"
        "            if content.startswith('@'):\n"
        "                content = open(d + '/' + content[1:], 'rb').read()\n"
        "            else:\n"
        "                content = content.encode('utf-8')\n"
        "            info = zipfile.ZipInfo(entry, (1980, 1, 1, 0, 0, 0))\n"
        "            z.writestr(info, content, compress_type=method)\n"
        "S, D = zipfile.ZIP_STORED, zipfile.ZIP_DEFLATED\n"
        "big = 'deflated text, long enough to be worth compressing. ' * 200\n"
        "make('plain.zip', [('a.txt', 'stored entry', S), ('dir/sub/b.txt', big, D),\n"
        "                   ('Case.txt', 'upper', S), ('other.txt', 'sibling', S),\n"
        "                   ('empty.txt', '', S)])\n"
        "make('inner.zip', [('x.txt', 'inside the inner zip', D), ('y.txt', 'y', S)])\n"
        "make('innermost.zip', [('deep.txt', 'three levels down', D)])\n"
        "make('middle.zip', [('innermost.zip', '@innermost.zip', D)])\n"
        "make('outer.zip', [('inner.zip', '@inner.zip', S), ('inner-d.zip', '@inner.zip', D),\n"
        "                   ('middle.zip', '@middle.zip', D), ('note.txt', 'not a zip', S),\n"
        "                   ('empty.zip', '@empty.zip', S)])\n");
    // An empty archive is its end record alone: 22 bytes.
    writeFile(s_dir->file("empty.zip"), std::string("PK\x05\x06", 4) + std::string(18, '\0'));
    s_made = streamtest::run("python3 " + streamtest::quote(script) + " " +
                             streamtest::quote(s_dir->path));
    writeFile(s_dir->file("not-a-zip.txt"), "just text");
  }
  static void TearDownTestSuite() {
    delete s_dir;
    s_dir = nullptr;
  }
  void SetUp() override { ASSERT_TRUE(s_made) << "the zip fixtures were not made"; }

  static std::string jar(const std::string& zip, const std::string& entries) {
    return "jar:file://" + s_dir->file(zip) + (entries.empty() ? "" : "!/" + entries);
  }
  static std::string big() {
    std::string text;
    for (int i = 0; i < 200; ++i) text += "deflated text, long enough to be worth compressing. ";
    return text;
  }

  static ScratchDir* s_dir;
  static bool s_made;
};

ScratchDir* UriStreamJar::s_dir = nullptr;
bool UriStreamJar::s_made = false;

TEST_F(UriStreamJar, StoredEntryOfALocalZip) {
  auto in = open(jar("plain.zip", "a.txt"));
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), "stored entry");
}

TEST_F(UriStreamJar, DeflatedEntryInADirectory) {
  auto in = open(jar("plain.zip", "dir/sub/b.txt"));
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), big());
}

TEST_F(UriStreamJar, EmptyEntryGivesAnEmptyStream) {
  auto in = open(jar("plain.zip", "empty.txt"));
  ASSERT_TRUE(in);
  EXPECT_EQ(in->get(), std::char_traits<char>::eof());
}

TEST_F(UriStreamJar, WithoutAnEntryTheZipItselfIsRead) {
  auto in = open(jar("plain.zip", ""));
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), readFile(s_dir->file("plain.zip")));
}

TEST_F(UriStreamJar, MissingEntryIsNullWithoutMessage) {
  UnicodeString error(u"untouched");
  ZQUri::ContentInfo info = presetInfo();
  auto in = open(jar("plain.zip", "nothing.txt"), &info, &error);
  EXPECT_FALSE(in);
  EXPECT_EQ(utf8(error), "untouched");
}

TEST_F(UriStreamJar, EntryNamesAreCaseSensitive) {
  EXPECT_TRUE(open(jar("plain.zip", "Case.txt")));
  EXPECT_FALSE(open(jar("plain.zip", "case.txt")));
  EXPECT_FALSE(open(jar("plain.zip", "/a.txt"))) << "names are taken exactly";
}

TEST_F(UriStreamJar, MissingZipIsNull) { EXPECT_FALSE(open(jar("none.zip", "a.txt"))); }

TEST_F(UriStreamJar, LocalFileThatIsNoZipIsNull) {
  EXPECT_FALSE(open(jar("not-a-zip.txt", "a.txt")));
  auto whole = open(jar("not-a-zip.txt", ""));
  ASSERT_TRUE(whole) << "without an entry the file is read as it is";
  EXPECT_EQ(readAll(*whole), "just text");
}

TEST_F(UriStreamJar, EntryOfANestedZipThroughTwoSeparators) {
  auto stored = open(jar("outer.zip", "inner.zip!/x.txt"));
  ASSERT_TRUE(stored);
  EXPECT_EQ(readAll(*stored), "inside the inner zip");
  auto deflated = open(jar("outer.zip", "inner-d.zip!/y.txt"));
  ASSERT_TRUE(deflated) << "a deflated inner zip is inflated, then read from memory";
  EXPECT_EQ(readAll(*deflated), "y");
}

TEST_F(UriStreamJar, ThreeLevelsOfZips) {
  auto in = open(jar("outer.zip", "middle.zip!/innermost.zip!/deep.txt"));
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), "three levels down");
}

TEST_F(UriStreamJar, NestedEntryThatIsNoZipIsNull) {
  EXPECT_FALSE(open(jar("outer.zip", "note.txt!/x.txt")));
  EXPECT_FALSE(open(jar("outer.zip", "inner.zip!/missing.txt")));
}

TEST_F(UriStreamJar, NestedEmptyZipPassesTheSignatureButHasNoEntry) {
  EXPECT_FALSE(open(jar("outer.zip", "empty.zip!/x.txt")));
  auto whole = open(jar("outer.zip", "empty.zip"));
  ASSERT_TRUE(whole);
  EXPECT_EQ(readAll(*whole).size(), 22u);
}

TEST_F(UriStreamJar, RelativeReferenceNamesASiblingEntry) {
  ZQUri base(u16(jar("plain.zip", "a.txt")), ZQUri::URISTR_URI);
  ZQUri sibling(base, u"other.txt", ZQUri::URISTR_URI);
  std::unique_ptr<std::istream> in(sibling.getIStream());
  ASSERT_TRUE(in) << utf8(sibling.toString());
  EXPECT_EQ(readAll(*in), "sibling");
}

TEST_F(UriStreamJar, EntryStreamOwnsItsData) {
  std::unique_ptr<std::istream> in = open(jar("plain.zip", "dir/sub/b.txt"));
  ASSERT_TRUE(in);
  // The zip object is gone by now; the stream reads its own copy.
  char head[8] = {};
  in->read(head, 7);
  EXPECT_EQ(std::string(head), "deflate");
}

TEST_F(UriStreamJar, ContentInfoOfALocalEntryIsEmptied) {
  ZQUri::ContentInfo info = presetInfo();
  auto in = open(jar("plain.zip", "a.txt"), &info);
  ASSERT_TRUE(in);
  EXPECT_TRUE(info.contentType.isEmpty());
  EXPECT_TRUE(info.charset.isEmpty());
  EXPECT_TRUE(info.contentLanguage.isEmpty());
  EXPECT_EQ(info.contentLength, -1);
}

TEST_F(UriStreamJar, IsGzipOfAnEntry) {
  ScratchDir dir;
  writeFile(dir.file("g.gz"), gzipped("zipped gzip"));
  ASSERT_TRUE(streamtest::run("cd " + streamtest::quote(dir.path) +
                              " && python3 -c \"import zipfile; "
                              "zipfile.ZipFile('g.zip','w').write('g.gz')\""));
  EXPECT_TRUE(ZQUri(u16("jar:file://" + dir.file("g.zip") + "!/g.gz"), ZQUri::URISTR_URI).isGzip());
}

TEST_F(UriStreamJar, EntryOfAZipInADataUri) {
  const std::string zip = readFile(s_dir->file("plain.zip"));
  std::string encoded(((zip.size() + 2) / 3) * 4 + 1, '\0');
  const int n = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(encoded.data()),
                                reinterpret_cast<const unsigned char*>(zip.data()),
                                static_cast<int>(zip.size()));
  encoded.resize(static_cast<size_t>(n));
  ZQUri::ContentInfo info = presetInfo();
  auto in = open("jar:data:application/zip;base64," + encoded + "!/dir/sub/b.txt", &info);
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), big());
  EXPECT_TRUE(info.contentType.isEmpty()) << "the data URI's type described the zip";
}

class UriStreamJarHttp : public UriStreamJar {
 protected:
  static void SetUpTestSuite() {
    UriStreamJar::SetUpTestSuite();
    s_server = new httptest::LoopbackServer(s_dir->path);
  }
  static void TearDownTestSuite() {
    delete s_server;
    s_server = nullptr;
    UriStreamJar::TearDownTestSuite();
  }
  void SetUp() override {
    UriStreamJar::SetUp();
    ASSERT_TRUE(s_server && s_server->ok());
  }
  static std::string httpJar(const std::string& zip, const std::string& entries) {
    return "jar:" + s_server->url("/files/" + zip) + (entries.empty() ? "" : "!/" + entries);
  }
  static httptest::LoopbackServer* s_server;
};

httptest::LoopbackServer* UriStreamJarHttp::s_server = nullptr;

TEST_F(UriStreamJarHttp, EntryOfAZipOverHttp) {
  ZQUri::ContentInfo info;
  UnicodeString error;
  auto in = open(httpJar("plain.zip", "dir/sub/b.txt"), &info, &error);
  ASSERT_TRUE(in) << utf8(error);
  EXPECT_EQ(readAll(*in), big());
  EXPECT_TRUE(error.isEmpty());
  // What the server said described the zip, not the entry.
  EXPECT_TRUE(info.contentType.isEmpty());
  EXPECT_EQ(info.contentLength, -1);
}

TEST_F(UriStreamJarHttp, ZipOverHttpWithoutEntryKeepsWhatTheServerSaid) {
  ZQUri::ContentInfo info;
  auto in = open(httpJar("plain.zip", ""), &info);
  ASSERT_TRUE(in);
  const std::string zip = readFile(s_dir->file("plain.zip"));
  EXPECT_EQ(readAll(*in), zip);
  EXPECT_EQ(utf8(info.contentType), "application/octet-stream");
  EXPECT_EQ(info.contentLength, static_cast<int>(zip.size()));
}

TEST_F(UriStreamJarHttp, NestedZipOverHttp) {
  auto in = open(httpJar("outer.zip", "middle.zip!/innermost.zip!/deep.txt"));
  ASSERT_TRUE(in);
  EXPECT_EQ(readAll(*in), "three levels down");
}

TEST_F(UriStreamJarHttp, MissingEntryOverHttpIsNullWithEmptyMessage) {
  UnicodeString error(u"untouched");
  auto in = open(httpJar("plain.zip", "nothing.txt"), nullptr, &error);
  EXPECT_FALSE(in);
  EXPECT_TRUE(error.isEmpty()) << "the download itself succeeded";
}

TEST_F(UriStreamJarHttp, FailedDownloadNamesTheOuterUrl) {
  UnicodeString error;
  auto in = open(httpJar("none.zip", "a.txt"), nullptr, &error);
  EXPECT_FALSE(in);
  EXPECT_EQ(utf8(error), "HTTP status is 404\n" + s_server->url("/files/none.zip"));
}

TEST_F(UriStreamJarHttp, ServedFileThatIsNoZipIsNull) {
  EXPECT_FALSE(open(httpJar("not-a-zip.txt", "a.txt")));
}

// ---- HTTP through the other helpers ----

TEST(UriStreamHttp, IsGzipOverHttp) {
  ScratchDir dir;
  writeFile(dir.file("served.gz"), gzipped("served"));
  writeFile(dir.file("served.txt"), "served");
  httptest::LoopbackServer server(dir.path);
  ASSERT_TRUE(server.ok());
  EXPECT_TRUE(ZQUri(u16(server.url("/files/served.gz")), ZQUri::URISTR_URI).isGzip());
  EXPECT_FALSE(ZQUri(u16(server.url("/files/served.txt")), ZQUri::URISTR_URI).isGzip());
  EXPECT_FALSE(ZQUri(u16(server.url("/files/none.gz")), ZQUri::URISTR_URI).isGzip());
}

TEST(UriStreamHttp, OutputStreamsAreForLocalFilesOnly) {
  EXPECT_EQ(ZQUri(u"http://127.0.0.1:1/a", ZQUri::URISTR_URI).getOStream(false), nullptr);
  EXPECT_EQ(ZQUri(u"http://127.0.0.1:1/a", ZQUri::URISTR_URI).getFStream(), nullptr);
}

}  // namespace
