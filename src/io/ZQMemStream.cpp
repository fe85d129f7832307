// The stream object over ZQMemStreamBuf: construction on a foreign buffer, copies, and the
// move of the content to a temporary file.
#include <cstring>
#include <fstream>
#include <memory>

#include "common/ZQError.h"
#include "common/ZQMemStream.h"
#include "common/ZQUri.h"
#include "core/platform/ZQPlatformFile.h"

namespace ZQCommonNS {

namespace {

std::string utf8(const UnicodeString& s) {
  std::string out;
  s.toUTF8String(out);
  return out;
}

}  // namespace

ZQMemStream::ZQMemStream(std::istream* source, size_t growBytes, bool sourceOwned)
    : std::iostream(nullptr), m_buf(source, growBytes, sourceOwned) {
  rdbuf(&m_buf);
}

ZQMemStream::ZQMemStream(std::istream& source)
    : std::iostream(source.rdbuf()), m_buf(&source, ZQMemStreamBuf::DEFAULT_GROW_BYTES, true) {}

ZQMemStream::ZQMemStream(const ZQMemStream& other)
    : std::basic_ios<char>(),
      std::iostream(nullptr),
      m_buf(nullptr, other.m_buf.getGrowBytes(), false) {
  rdbuf(&m_buf);
  m_buf.setKeepMemory(other.m_buf.getKeepMemory());
  if (other.length() != 0) copyFrom(other);
}

ZQMemStream& ZQMemStream::operator=(const ZQMemStream& other) {
  // An empty other leaves this stream as it is, so assignment never empties it.
  if (this == &other || other.length() == 0) return *this;
  copyFrom(other);
  return *this;
}

ZQMemStream::~ZQMemStream() = default;

void ZQMemStream::copyFrom(const ZQMemStream& other) {
  std::streambuf* from = other.rdbuf();
  if (!from) return;
  const pos_type getPos = from->pubseekoff(0, std::ios_base::cur, std::ios_base::in);
  const pos_type putPos = from->pubseekoff(0, std::ios_base::cur, std::ios_base::out);
  from->pubseekpos(0, std::ios_base::in);
  static_cast<std::ostream&>(*this) << from;
  if (fail() && !bad()) clear();
  if (off_type(getPos) >= 0) seekg(getPos);
  if (off_type(putPos) >= 0) seekp(putPos);
  if (off_type(getPos) >= 0) from->pubseekpos(getPos, std::ios_base::in);
}

size_t ZQMemStream::length() const {
  std::streambuf* current = rdbuf();
  if (current == &m_buf) return static_cast<size_t>(m_buf.length());
  if (!current) return 0;
  const pos_type here = current->pubseekoff(0, std::ios_base::cur, std::ios_base::in);
  const pos_type end = current->pubseekoff(0, std::ios_base::end, std::ios_base::in);
  if (off_type(here) >= 0) current->pubseekpos(here, std::ios_base::in);
  return off_type(end) < 0 ? 0 : static_cast<size_t>(off_type(end));
}

ZQMemStream& ZQMemStream::begin() {
  if (fail() || bad()) clear();
  seekg(0);
  return *this;
}

void ZQMemStream::remove() {
  m_buf.remove();
  if (fail() || bad()) clear();
}

ZQMemStream& ZQMemStream::append(const std::string& s) {
  write(s.data(), static_cast<std::streamsize>(s.size()));
  return *this;
}

ZQMemStream& ZQMemStream::writeStr(const char* s) {
  if (s) write(s, static_cast<std::streamsize>(std::strlen(s)));
  return *this;
}

void ZQMemStream::resetBuffer() {
  if (m_tempFile.isTempFile() || rdbuf() == &m_buf) return;
  clear();
  seekg(0);
  rdbuf(&m_buf);
  seekg(0);
  seekp(0);
}

void ZQMemStream::changeTempBuffer() {
  if (m_tempFile.isTempFile()) return;
  std::unique_ptr<ZQTempFile> local;
  try {
    local = std::make_unique<ZQTempFile>("", "ZQMem", ".tmp");
  } catch (const ZQError&) {
    return;  // no file: the content stays in memory
  }
  const std::string path = platform::nativePath(utf8(local->getFileName()));
  std::ofstream out(path, std::ios::out | std::ios::binary | std::ios::trunc);
  if (!out) return;

  resetBuffer();
  // Sources are read through into the file one block at a time.
  m_buf.setKeepMemory(false);
  m_buf.pubseekpos(0, std::ios_base::in);
  const std::streampos before = out.tellp();
  m_buf.writeAll(out);
  const bool wroteNothing = out.tellp() == before;
  out.close();
  if (wroteNothing || out.fail()) out.setstate(std::ios::failbit);

  m_buf.clear();
  const UnicodeString released = local->releaseFileName();
  m_tempFile.setFileName(released);

  // The file is opened as any resource is, through its URI, so a caller's resolver is asked
  // as well. Should nothing open, the stream stays on its own buffer, now empty.
  std::istream* file = ZQUri(released, ZQUri::URISTR_PATH).getIStream();
  if (file) {
    m_buf.setSource(file, true);
    rdbuf(file->rdbuf());
  }
  seekg(0);
  seekp(0);
}

}  // namespace ZQCommonNS
