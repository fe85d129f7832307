// A growable in-memory byte stream kept in fixed-size blocks, which can read ahead from other
// streams on demand and move its content to a temporary file.
#pragma once

#include "common/ZQExport.h"

#include <cstddef>
#include <cstdint>
#include <istream>
#include <streambuf>
#include <string>

#include "common/ZQTempFile.h"

namespace ZQCommonNS {

/// Stream buffer over a queue of blocks of `growBytes` bytes each. Growth never moves data, so
/// pointers into a block stay valid while the buffer grows. Queued source streams are read
/// into new blocks as readers or seeks reach past the data held.
class ZQCOMMON_API ZQMemStreamBuf : public std::streambuf {
 public:
  /// The index getIndex gives for a block it doesn't hold.
  static constexpr uint64_t NOT_FOUND = ~uint64_t(0);
  /// The block size when none (or 0) is given.
  static constexpr size_t DEFAULT_GROW_BYTES = 8192;

  /// An empty buffer with blocks of `growBytes` (0 counts as the default); a non-null
  /// `source` is queued, and deleted when done with if `sourceOwned`.
  explicit ZQMemStreamBuf(std::istream* source = nullptr, size_t growBytes = DEFAULT_GROW_BYTES,
                          bool sourceOwned = false);
  /// An empty buffer with the other's block size and keepMemory; the content isn't copied.
  ZQMemStreamBuf(const ZQMemStreamBuf& other);
  /// remove(), then the other's block size and keepMemory; the content isn't copied.
  ZQMemStreamBuf& operator=(const ZQMemStreamBuf& other);
  /// Frees the blocks and deletes the owned sources.
  ~ZQMemStreamBuf() override;

  /// Sets the block size; ignored once a block exists, and for 0.
  void setGrowBytes(size_t growBytes);
  size_t getGrowBytes() const { return static_cast<size_t>(m_growBytes); }
  /// With false, a reader keeps at most two blocks: the one before and the one being read.
  void setKeepMemory(bool keepMemory) { m_keepMemory = keepMemory; }
  bool getKeepMemory() const { return m_keepMemory; }
  /// Queues a further source behind the others; null does nothing. If the last block has room,
  /// the front source fills it at once.
  void setSource(std::istream* source, bool owned);
  /// The front source, or null when none is queued.
  std::istream* getSource() const { return m_sources.empty() ? nullptr : m_sources[0].stream; }
  /// The bytes left in the get area, that is in the current block.
  size_t getRemains() const { return static_cast<size_t>(egptr() - gptr()); }

  /// The logical length, after all sources have been read into memory.
  uint64_t length();
  /// Reads every queued source into memory.
  void drainSources();

  /// Moves the get position onto the first byte of the next occurrence of `pattern` (`len` 0:
  /// NUL-terminated). False, with the position unchanged, when there is none.
  bool searchSeek(const char* pattern, size_t len);
  /// When the bytes at the get position are `pattern`, moves behind them and gives true.
  bool skipSeek(const char* pattern, size_t len);
  /// Moves the get position past the next run of CR and LF bytes; at the end of the data when
  /// there is none. True when it stops on a byte behind a line end.
  bool seekEOL();
  /// Reads up to `count` bytes of `source` straight into the blocks at the put position.
  /// Returns the bytes copied.
  size_t copyStream(std::istream& source, size_t count);
  /// Points `p` at the next unread byte and gives the contiguous bytes ahead of it in its
  /// block, moving the get position past them. Repeated calls walk the content block by block.
  size_t getBuffer(const char*& p);
  /// Appends the entire content to `out`, whatever the get position.
  void appendToString(std::string& out);
  /// Cuts the content to `newLength` bytes, freeing blocks behind it; positions beyond the
  /// cut move to it.
  void trim(size_t newLength);
  /// Frees the blocks before the get position's block; positions then restart there.
  void abandonBuffer();
  /// Empties the buffer but keeps the first block for re-use, and drops all sources.
  void remove();
  /// Frees all blocks and sources and restores keepMemory; a step of moving the content to a
  /// temporary file.
  void clear();
  /// The OpenType table checksum of the whole content: big-endian 32-bit words summed.
  unsigned int calcOTFTableChecksum();
  /// The 16 raw MD5 bytes of the content from the get position on; empty when nothing was
  /// ever read.
  std::string getMD5();

  /// The number of blocks held (for diagnostics).
  size_t getBlockCount() const { return m_blocks.size(); }
  /// The bytes of data in the last block, as of the last size update (for diagnostics).
  uint64_t getLastBlockSize() const { return m_lastBlockSize; }

 protected:
  int_type overflow(int_type ch) override;
  int_type pbackfail(int_type ch) override;
  int_type underflow() override;
  pos_type seekoff(off_type off, std::ios_base::seekdir way,
                   std::ios_base::openmode which = std::ios_base::in | std::ios_base::out) override;
  pos_type seekpos(pos_type pos,
                   std::ios_base::openmode which = std::ios_base::in | std::ios_base::out) override;

  /// Brings lastBlockSize up to what was written through the put area.
  void flushBuffer();
  /// Adds one block at the back (recycling the front one when `keep` is false) and fills it
  /// from the sources.
  void appendBuffer(bool keep);
  /// The index of `block`, or NOT_FOUND; caches it in currentBlock.
  uint64_t getIndex(const char* block);

 private:
  friend class ZQMemStream;

  /// A double-ended queue in one ring of slots, the first few of them inline, so that a small
  /// stream costs one allocation: its block.
  template <class T>
  class Queue {
   public:
    Queue() = default;
    ~Queue() {
      if (m_items != m_inline) delete[] m_items;
    }
    Queue(const Queue&) = delete;
    Queue& operator=(const Queue&) = delete;

    bool empty() const { return m_size == 0; }
    size_t size() const { return m_size; }
    T& operator[](size_t i) { return m_items[(m_head + i) & (m_capacity - 1)]; }
    const T& operator[](size_t i) const { return m_items[(m_head + i) & (m_capacity - 1)]; }
    T& front() { return (*this)[0]; }
    T& back() { return (*this)[m_size - 1]; }
    void push_back(const T& item) {
      if (m_size == m_capacity) grow();
      m_items[(m_head + m_size) & (m_capacity - 1)] = item;
      ++m_size;
    }
    void pop_front() {
      m_head = (m_head + 1) & (m_capacity - 1);
      --m_size;
    }
    void pop_back() { --m_size; }
    void clear() { m_head = m_size = 0; }

   private:
    void grow() {
      const size_t capacity = m_capacity * 2;
      T* items = new T[capacity];
      for (size_t i = 0; i < m_size; ++i) items[i] = (*this)[i];
      if (m_items != m_inline) delete[] m_items;
      m_items = items;
      m_capacity = capacity;
      m_head = 0;
    }

    static constexpr size_t INLINE_SLOTS = 4;
    T m_inline[INLINE_SLOTS] = {};
    T* m_items = m_inline;
    size_t m_head = 0;
    size_t m_size = 0;
    size_t m_capacity = INLINE_SLOTS;  // a power of two
  };

  /// A queued source and whether the buffer deletes it when done with it.
  struct Source {
    std::istream* stream;
    bool owned;
  };

  /// The data bytes of block `index`.
  uint64_t blockLength(uint64_t index) const;
  /// Sets the put area on `block` (one byte short of it) with the put pointer at `offset`.
  void setPutArea(char* block, uint64_t offset);
  /// Stores one byte at the put position and moves on to the next block when this one is full.
  void putByte(char ch);
  /// Moves the put area to the start of the block after the put block.
  void nextPutBlock();
  /// Clears the get or put area when it lies on `block`, which is about to be freed.
  void forgetBlock(const char* block);
  /// Retires the front source, deleting it when owned.
  void popSource();
  /// Reads sources into a new block; false when none is queued or the block came out empty.
  bool loadMore();
  /// The logical position of the get side, or -1 when its block isn't held.
  int64_t getPosition();
  /// Copies every byte from the get position on into `out`, reading with keepMemory.
  void writeAll(std::ostream& out);

  Queue<char*> m_blocks;
  uint64_t m_currentBlock = 0;
  uint64_t m_lastBlockSize = 0;
  Queue<Source> m_sources;
  uint64_t m_growBytes;
  bool m_keepMemory = true;
};

/// A bidirectional stream over a ZQMemStreamBuf: a growable memory buffer that adds seeking,
/// searching and re-reading to slow or forward-only source streams.
class ZQCOMMON_API ZQMemStream : public std::iostream {
 public:
  /// An empty stream with blocks of `growBytes`; a non-null `source` is queued, and deleted
  /// when done with if `sourceOwned`.
  explicit ZQMemStream(std::istream* source = nullptr,
                       size_t growBytes = ZQMemStreamBuf::DEFAULT_GROW_BYTES,
                       bool sourceOwned = false);
  /// Reads straight from `source`'s own buffer until resetBuffer; the stream takes `source`
  /// over and deletes it, so it must have been made with new.
  explicit ZQMemStream(std::istream& source);
  /// A stream with a copy of the other's content and its get and put positions.
  ZQMemStream(const ZQMemStream& other);
  /// Writes the other's content at the put position and takes its positions; an empty other
  /// leaves this stream as it is.
  ZQMemStream& operator=(const ZQMemStream& other);
  /// Deletes the owned sources, frees the blocks and removes the temporary file if any.
  ~ZQMemStream() override;

  /// The stream's own buffer (not necessarily the current one; see resetBuffer).
  ZQMemStreamBuf* getStreamBuf() { return &m_buf; }

  /// Sets the block size; ignored once a block exists.
  void setGrowBytes(size_t growBytes) { m_buf.setGrowBytes(growBytes); }
  size_t getGrowBytes() const { return m_buf.getGrowBytes(); }
  /// Whether blocks already read are kept.
  void setKeepMemory(bool keepMemory) { m_buf.setKeepMemory(keepMemory); }
  /// Queues a further source; null does nothing.
  void setSource(std::istream* source, bool owned) { m_buf.setSource(source, owned); }

  /// The length of the content, sources drained; on a foreign buffer its end position.
  size_t length() const;
  size_t size() const { return length(); }
  /// length() == 0.
  bool empty() const { return length() == 0; }
  bool isEmpty() const { return length() == 0; }

  /// Clears a fail or bad state and moves the get position to 0.
  ZQMemStream& begin();
  /// Empties the buffer and clears a fail or bad state.
  void remove();
  ZQMemStream& erase() {
    remove();
    return *this;
  }
  /// Writes the bytes of `s`.
  ZQMemStream& operator+=(const std::string& s) { return append(s); }
  ZQMemStream& append(const std::string& s);
  /// Writes the bytes of `s` up to its NUL; null writes nothing.
  ZQMemStream& writeStr(const char* s);
  /// Appends the entire content to `out`, whatever the get position.
  void appendToString(std::string& out) { m_buf.appendToString(out); }

  /// See ZQMemStreamBuf::searchSeek.
  bool searchSeek(const char* pattern, size_t len = 0) { return m_buf.searchSeek(pattern, len); }
  /// See ZQMemStreamBuf::skipSeek.
  bool skipSeek(const char* pattern, size_t len = 0) { return m_buf.skipSeek(pattern, len); }
  /// See ZQMemStreamBuf::seekEOL.
  bool seekEOL() { return m_buf.seekEOL(); }
  /// Copies up to `count` bytes of `source` into the stream; returns the bytes copied.
  size_t copyStream(std::istream& source, size_t count) { return m_buf.copyStream(source, count); }
  /// See ZQMemStreamBuf::getBuffer.
  size_t getBuffer(const char*& p) { return m_buf.getBuffer(p); }
  /// See ZQMemStreamBuf::trim.
  void trim(size_t newLength) { m_buf.trim(newLength); }
  /// See ZQMemStreamBuf::abandonBuffer.
  void abandonBuffer() { m_buf.abandonBuffer(); }
  /// See ZQMemStreamBuf::calcOTFTableChecksum.
  unsigned int calcOTFTableChecksum() { return m_buf.calcOTFTableChecksum(); }
  /// See ZQMemStreamBuf::getMD5.
  std::string getMD5() { return m_buf.getMD5(); }

  /// Moves the content to a new temporary file and reads from that file from then on. Does
  /// nothing if it already did; a file that can't be made leaves the content in memory.
  void changeTempBuffer();
  /// Makes the own buffer current again, from position 0, when the stream reads a foreign
  /// buffer taken at construction. Does nothing after changeTempBuffer.
  void resetBuffer();
  /// The name of the temporary file holding the content, empty if none.
  UnicodeString getTempFileName() const { return m_tempFile.getFileName(); }
  /// Does nothing; lets the stream stand where a file stream is closed.
  void close() const {}

 private:
  /// Copies `other`'s content into this stream at the put position and takes its positions.
  void copyFrom(const ZQMemStream& other);

  // The temporary file goes before the buffer so that the file's own source stream is closed
  // before the file is removed.
  ZQTempFile m_tempFile;
  mutable ZQMemStreamBuf m_buf;
};

}  // namespace ZQCommonNS
