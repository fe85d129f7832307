// Bit access to packed samples: the first sample sits in the most significant bits.
#include <algorithm>

#include "common/ZQUtil.h"

namespace ZQCommonNS {

unsigned ZQUtil::fetchBit1(const unsigned char* data, int index) {
  return (data[index >> 3] >> (7 - (index & 7))) & 1u;
}

unsigned ZQUtil::fetchBit2(const unsigned char* data, int index) {
  return (data[index >> 2] >> (6 - 2 * (index & 3))) & 3u;
}

unsigned ZQUtil::fetchBit4(const unsigned char* data, int index) {
  return (data[index >> 1] >> ((index & 1) ? 0 : 4)) & 15u;
}

unsigned ZQUtil::fetchBit8(const unsigned char* data, int index) { return data[index]; }

unsigned ZQUtil::fetchBit12(const unsigned char* data, int index) {
  const unsigned char* p = data + (index >> 1) * 3;
  if (index & 1) return ((p[1] & 15u) << 8) | p[2];
  return (unsigned(p[0]) << 4) | (p[1] >> 4);
}

unsigned ZQUtil::fetchBit16(const unsigned char* data, int index) {
  const unsigned char* p = data + index * 2;
  return (unsigned(p[0]) << 8) | p[1];
}

unsigned ZQUtil::fetchBit24(const unsigned char* data, int index) {
  const unsigned char* p = data + index * 3;
  return (unsigned(p[0]) << 16) | (unsigned(p[1]) << 8) | p[2];
}

unsigned ZQUtil::fetchBit32(const unsigned char* data, int index) {
  const unsigned char* p = data + index * 4;
  return (unsigned(p[0]) << 24) | (unsigned(p[1]) << 16) | (unsigned(p[2]) << 8) | p[3];
}

void ZQUtil::patchBit1(unsigned char* data, int index) {
  data[index >> 3] |= static_cast<unsigned char>(0x80u >> (index & 7));
}

void ZQUtil::patchBit2(unsigned char* data, int index) {
  data[index >> 2] |= static_cast<unsigned char>(0xC0u >> (2 * (index & 3)));
}

void ZQUtil::patchBit4(unsigned char* data, int index) {
  data[index >> 1] |= static_cast<unsigned char>((index & 1) ? 0x0Fu : 0xF0u);
}

// ---- BitIterator ----

ZQUtil::BitIterator::BitIterator(unsigned char* data, int bits)
    : m_data(data), m_write(data), m_bits(data && bits > 0 ? bits : 0) {}

ZQUtil::BitIterator::BitIterator(const unsigned char* data, int bits)
    : m_data(data), m_write(nullptr), m_bits(data && bits > 0 ? bits : 0) {}

void ZQUtil::BitIterator::seekFetch(int pos) { m_fetch = std::clamp(pos, 0, m_bits); }

void ZQUtil::BitIterator::seekPatch(int pos) { m_patch = std::clamp(pos, 0, m_bits); }

void ZQUtil::BitIterator::advanceFetch(int count) {
  m_fetch = static_cast<int>(std::clamp<long long>(0LL + m_fetch + count, 0, m_bits));
}

void ZQUtil::BitIterator::advancePatch(int count) {
  m_patch = static_cast<int>(std::clamp<long long>(0LL + m_patch + count, 0, m_bits));
}

bool ZQUtil::BitIterator::fetch() {
  if (m_fetch >= m_bits) return false;
  bool bit = fetchBit1(m_data, m_fetch) != 0;
  ++m_fetch;
  return bit;
}

unsigned ZQUtil::BitIterator::fetch(int count) {
  if (count <= 0) return 0;
  if (count > 32) count = 32;
  unsigned value = 0;
  int pos = m_fetch;
  int left = count;
  while (left > 0) {
    if (pos >= m_bits) {  // past the end the bits read as 0
      value = left >= 32 ? 0 : value << left;
      break;
    }
    int inByte = 8 - (pos & 7);
    int take = std::min({left, inByte, m_bits - pos});
    unsigned bits = (m_data[pos >> 3] >> (inByte - take)) & ((1u << take) - 1);
    value = (take >= 32 ? 0 : value << take) | bits;
    pos += take;
    left -= take;
  }
  advanceFetch(count);
  return value;
}

void ZQUtil::BitIterator::patch(bool value) {
  if (m_patch >= m_bits) return;
  if (m_write) {
    unsigned char mask = static_cast<unsigned char>(0x80u >> (m_patch & 7));
    if (value)
      m_write[m_patch >> 3] |= mask;
    else
      m_write[m_patch >> 3] &= static_cast<unsigned char>(~mask);
  }
  ++m_patch;
}

void ZQUtil::BitIterator::patch(unsigned value, int count) {
  if (count <= 0) return;
  if (count > 32) count = 32;
  int pos = m_patch;
  int left = count;
  while (left > 0 && pos < m_bits) {
    int inByte = 8 - (pos & 7);
    int take = std::min({left, inByte, m_bits - pos});
    unsigned bits = (value >> (left - take)) & ((1u << take) - 1);
    unsigned char mask = static_cast<unsigned char>(((1u << take) - 1) << (inByte - take));
    if (m_write) {
      unsigned char& b = m_write[pos >> 3];
      b = static_cast<unsigned char>((b & ~mask) | (bits << (inByte - take)));
    }
    pos += take;
    left -= take;
  }
  advancePatch(count);
}

void ZQUtil::BitIterator::patchFill(bool value, int count) {
  if (count <= 0) return;
  int end = m_patch + std::min(count, m_bits - m_patch);
  int pos = m_patch;
  if (m_write) {
    // Bits up to a byte boundary, whole bytes, then the rest.
    while (pos < end && (pos & 7)) {
      unsigned char mask = static_cast<unsigned char>(0x80u >> (pos & 7));
      m_write[pos >> 3] = value ? (m_write[pos >> 3] | mask) : (m_write[pos >> 3] & ~mask);
      ++pos;
    }
    if (end - pos >= 8) {
      int bytes = (end - pos) >> 3;
      std::fill_n(m_write + (pos >> 3), bytes, value ? 0xFF : 0x00);
      pos += bytes * 8;
    }
    while (pos < end) {
      unsigned char mask = static_cast<unsigned char>(0x80u >> (pos & 7));
      m_write[pos >> 3] = value ? (m_write[pos >> 3] | mask) : (m_write[pos >> 3] & ~mask);
      ++pos;
    }
  }
  m_patch = end;
}

int ZQUtil::BitIterator::countRun(bool value, int limit) const {
  if (limit <= 0) return 0;
  int end = m_fetch + std::min(limit, m_bits - m_fetch);
  int pos = m_fetch;
  const unsigned char whole = value ? 0xFF : 0x00;
  // Bits up to a byte boundary, whole bytes, then the byte where the run ends.
  while (pos < end && (pos & 7)) {
    if (((fetchBit1(m_data, pos)) != 0) != value) return pos - m_fetch;
    ++pos;
  }
  while (end - pos >= 8 && m_data[pos >> 3] == whole) pos += 8;
  while (pos < end) {
    if ((fetchBit1(m_data, pos) != 0) != value) break;
    ++pos;
  }
  return pos - m_fetch;
}

}  // namespace ZQCommonNS
