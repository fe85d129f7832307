// The block store behind ZQMemStream: a queue of equal blocks, the get and put areas laid on
// one block at a time, and sources read into new blocks on demand.
#include <algorithm>
#include <climits>
#include <cstring>
#include <limits>
#include <ostream>

#include "common/ZQDigest.h"
#include "common/ZQMemStream.h"

namespace ZQCommonNS {

namespace {

// No process can hold more than this, whatever the block size: a seek that would need more
// fails at once, as a seek, instead of allocating until the machine gives out.
constexpr uint64_t kAddressSpace = uint64_t(1) << 47;

bool isLineEnd(char c) { return c == '\r' || c == '\n'; }

uint32_t bigEndianWord(const unsigned char* p) {
  return (uint32_t(p[0]) << 24) | (uint32_t(p[1]) << 16) | (uint32_t(p[2]) << 8) | uint32_t(p[3]);
}

}  // namespace

ZQMemStreamBuf::ZQMemStreamBuf(std::istream* source, size_t growBytes, bool sourceOwned)
    : m_growBytes(growBytes ? growBytes : DEFAULT_GROW_BYTES) {
  if (source) m_sources.push_back(Source{source, sourceOwned});
}

ZQMemStreamBuf::ZQMemStreamBuf(const ZQMemStreamBuf& other)
    : std::streambuf(), m_growBytes(other.m_growBytes), m_keepMemory(other.m_keepMemory) {}

ZQMemStreamBuf& ZQMemStreamBuf::operator=(const ZQMemStreamBuf& other) {
  if (this == &other) return *this;
  remove();
  m_currentBlock = 0;
  m_lastBlockSize = 0;
  if (other.m_growBytes != m_growBytes) {
    // The block kept by remove() has the old size; it can't serve the new one.
    for (size_t i = 0; i < m_blocks.size(); ++i) delete[] m_blocks[i];
    m_blocks.clear();
    setg(nullptr, nullptr, nullptr);
    setp(nullptr, nullptr);
    m_growBytes = other.m_growBytes;
  }
  m_keepMemory = other.m_keepMemory;
  return *this;
}

ZQMemStreamBuf::~ZQMemStreamBuf() {
  while (!m_sources.empty()) popSource();
  for (size_t i = 0; i < m_blocks.size(); ++i) delete[] m_blocks[i];
}

void ZQMemStreamBuf::setGrowBytes(size_t growBytes) {
  if (m_blocks.empty() && growBytes) m_growBytes = growBytes;
}

// ---- Internal helpers ----

uint64_t ZQMemStreamBuf::blockLength(uint64_t index) const {
  return index + 1 == m_blocks.size() ? m_lastBlockSize : m_growBytes;
}

uint64_t ZQMemStreamBuf::getIndex(const char* block) {
  if (!block) return NOT_FOUND;
  const uint64_t count = m_blocks.size();
  for (uint64_t i = m_currentBlock; i < count; ++i) {
    if (m_blocks[i] == block) return m_currentBlock = i;
  }
  for (uint64_t i = std::min(m_currentBlock, count); i-- > 0;) {
    if (m_blocks[i] == block) return m_currentBlock = i;
  }
  return NOT_FOUND;
}

void ZQMemStreamBuf::setPutArea(char* block, uint64_t offset) {
  // The area ends one byte short of the block so that overflow() sees every block boundary;
  // a pointer standing at the very end (a block filled by copyStream) gets the whole block.
  const uint64_t reserved = m_growBytes - 1;
  setp(block, block + (offset > reserved ? m_growBytes : reserved));
  while (offset > 0) {
    const int step = offset > uint64_t(INT_MAX) ? INT_MAX : static_cast<int>(offset);
    pbump(step);
    offset -= static_cast<uint64_t>(step);
  }
}

void ZQMemStreamBuf::forgetBlock(const char* block) {
  if (pbase() == block) setp(nullptr, nullptr);
  if (eback() == block) setg(nullptr, nullptr, nullptr);
}

void ZQMemStreamBuf::popSource() {
  const Source source = m_sources.front();
  m_sources.pop_front();
  if (source.owned) delete source.stream;
}

void ZQMemStreamBuf::flushBuffer() {
  if (!m_blocks.empty() && pbase() == m_blocks.back()) {
    m_lastBlockSize = std::max(m_lastBlockSize, static_cast<uint64_t>(pptr() - pbase()));
  }
}

void ZQMemStreamBuf::appendBuffer(bool keep) {
  char* block;
  if (!keep && m_blocks.size() > 1) {
    while (m_blocks.size() > 2) {
      forgetBlock(m_blocks.front());
      delete[] m_blocks.front();
      m_blocks.pop_front();
    }
    block = m_blocks.front();
    forgetBlock(block);
    m_blocks.pop_front();
  } else {
    block = new char[m_growBytes];
  }
  try {
    m_blocks.push_back(block);
  } catch (...) {
    delete[] block;
    throw;
  }
  m_lastBlockSize = 0;
  m_currentBlock = m_blocks.size() - 1;
  // One block may hold the end of one source and the start of the next.
  while (!m_sources.empty() && m_lastBlockSize < m_growBytes) {
    std::istream* source = m_sources.front().stream;
    source->read(block + m_lastBlockSize,
                 static_cast<std::streamsize>(m_growBytes - m_lastBlockSize));
    m_lastBlockSize += static_cast<uint64_t>(std::max<std::streamsize>(source->gcount(), 0));
    if (source->eof() || m_lastBlockSize < m_growBytes) popSource();
  }
}

bool ZQMemStreamBuf::loadMore() {
  if (m_sources.empty()) return false;
  appendBuffer(true);
  return m_lastBlockSize > 0;
}

void ZQMemStreamBuf::drainSources() {
  flushBuffer();
  while (!m_sources.empty()) appendBuffer(true);
}

uint64_t ZQMemStreamBuf::length() {
  drainSources();
  return m_blocks.empty() ? 0 : (m_blocks.size() - 1) * m_growBytes + m_lastBlockSize;
}

int64_t ZQMemStreamBuf::getPosition() {
  const uint64_t index = getIndex(eback());
  if (index == NOT_FOUND) return -1;
  return static_cast<int64_t>(index * m_growBytes + static_cast<uint64_t>(gptr() - eback()));
}

// ---- Sources ----

void ZQMemStreamBuf::setSource(std::istream* source, bool owned) {
  if (!source) return;
  flushBuffer();
  m_sources.push_back(Source{source, owned});
  if (m_blocks.empty() || m_lastBlockSize >= m_growBytes) return;
  // The last block has room: the front source fills it now. A short read means that source
  // is finished, so a queued source always stands behind a full block.
  char* block = m_blocks.back();
  std::istream* front = m_sources.front().stream;
  front->read(block + m_lastBlockSize, static_cast<std::streamsize>(m_growBytes - m_lastBlockSize));
  m_lastBlockSize += static_cast<uint64_t>(std::max<std::streamsize>(front->gcount(), 0));
  if (front->eof() || m_lastBlockSize < m_growBytes) popSource();
  seekoff(0, std::ios_base::cur, std::ios_base::in);
}

// ---- Virtual operations of the stream buffer ----

ZQMemStreamBuf::int_type ZQMemStreamBuf::underflow() {
  flushBuffer();
  if (!eback()) {
    uint64_t length;
    if (m_blocks.empty()) {
      appendBuffer(m_keepMemory);
      length = m_lastBlockSize;
    } else {
      m_currentBlock = 0;
      length = m_blocks.size() > 1 ? m_growBytes : m_lastBlockSize;
    }
    char* block = m_blocks[m_currentBlock];
    setg(block, block, block + length);
  }
  if (gptr() < egptr()) return traits_type::to_int_type(*gptr());

  uint64_t index = getIndex(eback());
  if (index == NOT_FOUND) return traits_type::eof();
  uint64_t offset = static_cast<uint64_t>(egptr() - eback());
  if (offset >= blockLength(index)) {
    offset = 0;
    ++index;
  }
  if (index < m_blocks.size()) {
    // Either the next block, or more bytes written into this one since the area was set.
    char* block = m_blocks[index];
    setg(block, block + offset, block + blockLength(index));
  } else {
    if (m_sources.empty()) return traits_type::eof();
    appendBuffer(m_keepMemory);
    char* block = m_blocks[m_currentBlock];
    setg(block, block, block + m_lastBlockSize);
  }
  return gptr() < egptr() ? traits_type::to_int_type(*gptr()) : traits_type::eof();
}

void ZQMemStreamBuf::nextPutBlock() {
  const uint64_t index = getIndex(pbase());
  if (index != NOT_FOUND && index + 1 < m_blocks.size()) {
    m_currentBlock = index + 1;
  } else {
    // Writing keeps memory whatever keepMemory says.
    appendBuffer(true);
  }
  setPutArea(m_blocks[m_currentBlock], 0);
}

void ZQMemStreamBuf::putByte(char ch) {
  if (!pbase()) {
    if (m_blocks.empty()) appendBuffer(true);
    m_currentBlock = 0;
    setPutArea(m_blocks[0], 0);
  }
  if (static_cast<uint64_t>(pptr() - pbase()) >= m_growBytes) {
    flushBuffer();
    nextPutBlock();
  }
  // A block whose last byte is written stays the put block until the next byte comes, so
  // that exactly growBytes bytes make one full block and no empty one behind it.
  const uint64_t offset = static_cast<uint64_t>(pptr() - pbase()) + 1;
  *pptr() = ch;
  setPutArea(pbase(), offset);
  flushBuffer();
}

ZQMemStreamBuf::int_type ZQMemStreamBuf::overflow(int_type ch) {
  if (traits_type::eq_int_type(ch, traits_type::eof())) {
    if (!pbase()) {
      // No byte to store, but the put side is laid at the start all the same.
      if (m_blocks.empty()) appendBuffer(true);
      m_currentBlock = 0;
      setPutArea(m_blocks[0], 0);
    }
    flushBuffer();
    return ch;
  }
  putByte(traits_type::to_char_type(ch));
  return ch;
}

ZQMemStreamBuf::int_type ZQMemStreamBuf::pbackfail(int_type ch) {
  if (!eback() || traits_type::eq_int_type(ch, traits_type::eof())) return traits_type::eof();
  const uint64_t index = getIndex(eback());
  if (index == NOT_FOUND) return traits_type::eof();
  if (gptr() > eback()) {
    // Only the pointer moves: the byte in the buffer stays as it is.
    gbump(-1);
    return ch;
  }
  if (index == 0) return traits_type::eof();
  char* previous = m_blocks[index - 1];
  setg(previous, previous + (m_growBytes - 1), previous + m_growBytes);
  m_currentBlock = index - 1;
  return ch;
}

ZQMemStreamBuf::pos_type ZQMemStreamBuf::seekoff(off_type off, std::ios_base::seekdir way,
                                                 std::ios_base::openmode which) {
  flushBuffer();
  int64_t base;
  if (way == std::ios_base::beg) {
    base = 0;
  } else if (way == std::ios_base::cur) {
    const bool input = which == std::ios_base::in;
    char* first = input ? eback() : pbase();
    char* next = input ? gptr() : pptr();
    base = 0;
    if (next) {
      const uint64_t index = getIndex(first);
      if (index == NOT_FOUND) return pos_type(off_type(-1));
      base = static_cast<int64_t>(index * m_growBytes + static_cast<uint64_t>(next - first));
    }
  } else if (way == std::ios_base::end) {
    base = static_cast<int64_t>(length());
  } else {
    return pos_type(off_type(-1));
  }
  int64_t pos;
  if (__builtin_add_overflow(base, static_cast<int64_t>(off), &pos)) {
    return pos_type(off_type(-1));
  }
  return seekpos(pos_type(off_type(pos)), which);
}

ZQMemStreamBuf::pos_type ZQMemStreamBuf::seekpos(pos_type position, std::ios_base::openmode which) {
  const off_type signedPos = off_type(position);
  if (signedPos < 0) return pos_type(off_type(-1));
  const uint64_t pos = static_cast<uint64_t>(signedPos);
  flushBuffer();
  if (m_blocks.empty()) appendBuffer(true);
  uint64_t length = (m_blocks.size() - 1) * m_growBytes + m_lastBlockSize;
  while (pos >= length && !m_sources.empty()) {
    appendBuffer(true);
    length += m_lastBlockSize;
  }
  if (pos > length && !(which & std::ios_base::out)) return pos_type(off_type(-1));

  const uint64_t index = pos / m_growBytes;
  const uint64_t offset = pos % m_growBytes;
  if (index >= m_blocks.size() && (index - m_blocks.size() + 1) > kAddressSpace / m_growBytes) {
    return pos_type(off_type(-1));
  }
  // A seek past the end for output makes the blocks in between; their bytes stay unset.
  while (index >= m_blocks.size()) appendBuffer(true);

  char* block = m_blocks[index];
  const uint64_t clamped = std::min(blockLength(index), offset);
  if (which & std::ios_base::in) {
    setg(block, block + clamped, block + blockLength(index));
  }
  if (which & std::ios_base::out) {
    setPutArea(block, (which & std::ios_base::in) ? clamped : offset);
  }
  m_currentBlock = index;
  return position;
}

// ---- Searching ----

bool ZQMemStreamBuf::searchSeek(const char* pattern, size_t len) {
  if (!pattern) return false;
  if (len == 0) len = std::strlen(pattern);
  if (len == 0) return false;
  seekoff(0, std::ios_base::cur, std::ios_base::in);
  uint64_t index = getIndex(eback());
  if (index == NOT_FOUND) return false;
  uint64_t offset = static_cast<uint64_t>(gptr() - eback());

  const char first = pattern[0];
  for (;;) {
    // Find the pattern's first byte from (index, offset) on, loading blocks as needed.
    if (offset >= blockLength(index)) {
      if (index + 1 >= m_blocks.size() && !loadMore()) return false;
      ++index;
      offset = 0;
      continue;
    }
    const char* begin = m_blocks[index] + offset;
    const void* hit = std::memchr(begin, first, blockLength(index) - offset);
    if (!hit) {
      offset = blockLength(index);
      continue;
    }
    offset += static_cast<uint64_t>(static_cast<const char*>(hit) - begin);

    // Compare the rest, across block seams.
    uint64_t i = index;
    uint64_t o = offset + 1;
    size_t matched = 1;
    bool ended = false;
    while (matched < len) {
      if (o >= blockLength(i)) {
        if (i + 1 >= m_blocks.size() && !loadMore()) {
          ended = true;
          break;
        }
        ++i;
        o = 0;
        continue;
      }
      if (m_blocks[i][o] != pattern[matched]) break;
      ++matched;
      ++o;
    }
    if (matched == len) {
      seekpos(pos_type(off_type(index * m_growBytes + offset)), std::ios_base::in);
      return true;
    }
    if (ended) return false;
    ++offset;
  }
}

bool ZQMemStreamBuf::skipSeek(const char* pattern, size_t len) {
  if (!pattern) return false;
  if (len == 0) len = std::strlen(pattern);
  if (len == 0) return false;
  seekoff(0, std::ios_base::cur, std::ios_base::in);
  uint64_t index = getIndex(eback());
  if (index == NOT_FOUND) return false;
  uint64_t offset = static_cast<uint64_t>(gptr() - eback());
  size_t matched = 0;
  while (matched < len) {
    if (offset >= blockLength(index)) {
      if (index + 1 >= m_blocks.size() && !loadMore()) return false;
      ++index;
      offset = 0;
      continue;
    }
    if (m_blocks[index][offset] != pattern[matched]) return false;
    ++matched;
    ++offset;
  }
  seekpos(pos_type(off_type(index * m_growBytes + offset)), std::ios_base::in);
  return true;
}

bool ZQMemStreamBuf::seekEOL() {
  seekoff(0, std::ios_base::cur, std::ios_base::in);
  uint64_t index = getIndex(eback());
  if (index == NOT_FOUND) return false;
  uint64_t offset = static_cast<uint64_t>(gptr() - eback());
  bool seenLineEnd = false;
  for (;;) {
    if (offset >= blockLength(index)) {
      if (index + 1 >= m_blocks.size() && !loadMore()) break;
      ++index;
      offset = 0;
      continue;
    }
    const char c = m_blocks[index][offset];
    if (isLineEnd(c)) {
      seenLineEnd = true;
    } else if (seenLineEnd) {
      seekpos(pos_type(off_type(index * m_growBytes + offset)), std::ios_base::in);
      return true;
    }
    ++offset;
  }
  // The data ended first: the position is its end.
  const uint64_t end = (m_blocks.size() - 1) * m_growBytes + m_lastBlockSize;
  seekpos(pos_type(off_type(end)), std::ios_base::in);
  return false;
}

// ---- Bulk operations ----

size_t ZQMemStreamBuf::copyStream(std::istream& source, size_t count) {
  size_t total = 0;
  while (source.good() && count > 0) {
    if (off_type(seekoff(0, std::ios_base::cur, std::ios_base::out)) < 0) break;
    const uint64_t offset = static_cast<uint64_t>(pptr() - pbase());
    const uint64_t room = m_growBytes - offset;
    const uint64_t want = std::min<uint64_t>(room, count);
    source.read(pptr(), static_cast<std::streamsize>(want));
    const uint64_t got = static_cast<uint64_t>(std::max<std::streamsize>(source.gcount(), 0));
    setPutArea(pbase(), offset + got);
    total += static_cast<size_t>(got);
    count -= static_cast<size_t>(got);
  }
  if (pbase() && static_cast<uint64_t>(pptr() - pbase()) == m_growBytes) {
    seekoff(0, std::ios_base::cur, std::ios_base::out);
  }
  return total;
}

size_t ZQMemStreamBuf::getBuffer(const char*& p) {
  p = nullptr;
  if (off_type(seekoff(0, std::ios_base::cur, std::ios_base::in)) < 0) return 0;
  p = gptr();
  const size_t n = static_cast<size_t>(egptr() - gptr());
  setg(eback(), egptr(), egptr());
  return n;
}

void ZQMemStreamBuf::appendToString(std::string& out) {
  drainSources();
  if (m_blocks.empty()) return;
  const uint64_t total = (m_blocks.size() - 1) * m_growBytes + m_lastBlockSize;
  out.reserve(out.size() + static_cast<size_t>(total));
  for (uint64_t i = 0; i < m_blocks.size(); ++i) {
    out.append(m_blocks[i], static_cast<size_t>(blockLength(i)));
  }
}

void ZQMemStreamBuf::writeAll(std::ostream& out) {
  for (;;) {
    if (gptr() < egptr()) {
      out.write(gptr(), egptr() - gptr());
      setg(eback(), egptr(), egptr());
    }
    if (traits_type::eq_int_type(underflow(), traits_type::eof())) break;
  }
}

void ZQMemStreamBuf::trim(size_t newLength) {
  drainSources();
  if (m_blocks.empty()) return;
  const uint64_t length = (m_blocks.size() - 1) * m_growBytes + m_lastBlockSize;
  if (newLength >= length) return;

  // Positions behind the cut move to it; both sides are laid again after the cut.
  int64_t getPos = 0;
  if (gptr()) getPos = std::max<int64_t>(getPosition(), 0);
  int64_t putPos = 0;
  if (pptr()) {
    const uint64_t index = getIndex(pbase());
    if (index != NOT_FOUND) {
      putPos = static_cast<int64_t>(index * m_growBytes + static_cast<uint64_t>(pptr() - pbase()));
    }
  }
  getPos = std::min<int64_t>(getPos, static_cast<int64_t>(newLength));
  putPos = std::min<int64_t>(putPos, static_cast<int64_t>(newLength));
  setg(nullptr, nullptr, nullptr);
  setp(nullptr, nullptr);

  const uint64_t keep = (newLength + m_growBytes - 1) / m_growBytes;
  while (m_blocks.size() > keep) {
    delete[] m_blocks.back();
    m_blocks.pop_back();
  }
  m_currentBlock = 0;
  const uint64_t rest = newLength % m_growBytes;
  m_lastBlockSize = rest ? rest : (newLength ? m_growBytes : 0);

  seekpos(pos_type(off_type(getPos)), std::ios_base::in);
  seekpos(pos_type(off_type(putPos)), std::ios_base::out);
}

void ZQMemStreamBuf::abandonBuffer() {
  const uint64_t index = getIndex(eback());
  if (index == NOT_FOUND || index == 0) return;
  for (uint64_t i = 0; i < index; ++i) {
    forgetBlock(m_blocks.front());
    delete[] m_blocks.front();
    m_blocks.pop_front();
  }
  m_currentBlock = 0;
}

void ZQMemStreamBuf::remove() {
  while (m_blocks.size() > 1) {
    forgetBlock(m_blocks.back());
    delete[] m_blocks.back();
    m_blocks.pop_back();
  }
  while (!m_sources.empty()) popSource();
  m_currentBlock = 0;
  m_lastBlockSize = 0;
  if (!m_blocks.empty()) {
    setg(nullptr, nullptr, nullptr);
    setp(nullptr, nullptr);
    seekpos(pos_type(off_type(0)), std::ios_base::in | std::ios_base::out);
  }
}

void ZQMemStreamBuf::clear() {
  for (size_t i = 0; i < m_blocks.size(); ++i) delete[] m_blocks[i];
  m_blocks.clear();
  while (!m_sources.empty()) popSource();
  m_currentBlock = 0;
  m_lastBlockSize = 0;
  m_keepMemory = true;
  // No area may point into the freed blocks.
  setg(nullptr, nullptr, nullptr);
  setp(nullptr, nullptr);
}

unsigned int ZQMemStreamBuf::calcOTFTableChecksum() {
  drainSources();
  if (m_blocks.empty()) return 0;
  uint32_t sum = 0;
  const uint64_t last = m_blocks.size() - 1;
  for (uint64_t i = 0; i < last; ++i) {
    const auto* p = reinterpret_cast<const unsigned char*>(m_blocks[i]);
    for (uint64_t w = 0; w < m_growBytes / 4; ++w) sum += bigEndianWord(p + 4 * w);
  }
  auto* p = reinterpret_cast<unsigned char*>(m_blocks[last]);
  const uint64_t words = m_lastBlockSize / 4;
  for (uint64_t w = 0; w < words; ++w) sum += bigEndianWord(p + 4 * w);
  const uint64_t rest = m_lastBlockSize % 4;
  if (rest) {
    // The table is padded with zeros to a whole word; the padding goes into the block itself
    // where the block has room for it.
    unsigned char word[4] = {0, 0, 0, 0};
    std::memcpy(word, p + 4 * words, rest);
    for (uint64_t k = m_lastBlockSize; k < 4 * words + 4 && k < m_growBytes; ++k) p[k] = 0;
    sum += bigEndianWord(word);
  }
  return sum;
}

std::string ZQMemStreamBuf::getMD5() {
  flushBuffer();
  uint64_t index = getIndex(eback());
  if (index == NOT_FOUND) return std::string();
  uint64_t offset = static_cast<uint64_t>(gptr() - eback());
  MD5_CTX md5;
  for (;;) {
    const uint64_t length = blockLength(index);
    if (offset < length) {
      md5.Update(reinterpret_cast<const unsigned char*>(m_blocks[index] + offset),
                 static_cast<size_t>(length - offset));
    }
    if (index + 1 >= m_blocks.size() && !loadMore()) break;
    ++index;
    offset = 0;
  }
  unsigned char digest[16];
  md5.Final(digest);
  return std::string(reinterpret_cast<const char*>(digest), sizeof digest);
}

}  // namespace ZQCommonNS
