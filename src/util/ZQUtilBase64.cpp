// Base64 in both directions, and the data-URI form of the encoder.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <istream>
#include <ostream>

#include "common/ZQUtil.h"

namespace ZQCommonNS {

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Six-bit value of each ASCII character; kSkip for characters outside the alphabet,
// kStop for "=". Both have the high bit set, so four values or-ed together show at once
// whether a group is plain.
constexpr uint8_t kSkip = 0xFF;
constexpr uint8_t kStop = 0xFE;

constexpr std::array<uint8_t, 128> makeDecodeTable() {
  std::array<uint8_t, 128> t{};
  for (auto& v : t) v = kSkip;
  for (int i = 0; i < 64; ++i)
    t[static_cast<unsigned char>(kAlphabet[i])] = static_cast<uint8_t>(i);
  t['='] = kStop;
  return t;
}
constexpr std::array<uint8_t, 128> kDecode = makeDecodeTable();

// The same values already shifted to their place in a group of four characters, with bit 31
// set for anything outside the alphabet, so a group costs four look-ups and one test.
struct ShiftedTables {
  uint32_t t[4][256];
};
constexpr ShiftedTables makeShiftedTables() {
  ShiftedTables s{};
  for (int k = 0; k < 4; ++k)
    for (int c = 0; c < 256; ++c) {
      uint8_t v = c < 128 ? kDecode[c] : kSkip;
      s.t[k][c] = (v & 0x80) ? 0x80000000u : uint32_t(v) << (18 - 6 * k);
    }
  return s;
}
constexpr ShiftedTables kShifted = makeShiftedTables();

// Bytes read from the stream at a time (a multiple of 3, so blocks need no padding).
constexpr int kReadBlock = 3072;

// Two output characters for each 12-bit value: a group of three bytes costs two look-ups.
struct PairTable {
  char16_t t[4096][2];
};
constexpr PairTable makePairTable() {
  PairTable p{};
  for (int v = 0; v < 4096; ++v) {
    p.t[v][0] = static_cast<char16_t>(kAlphabet[v >> 6]);
    p.t[v][1] = static_cast<char16_t>(kAlphabet[v & 63]);
  }
  return p;
}
constexpr PairTable kPairs = makePairTable();

inline void encodeGroup(const unsigned char* in, char16_t* out) {
  uint32_t v = (uint32_t(in[0]) << 16) | (uint32_t(in[1]) << 8) | in[2];
  std::memcpy(out, kPairs.t[v >> 12], 2 * sizeof(char16_t));
  std::memcpy(out + 2, kPairs.t[v & 0xFFF], 2 * sizeof(char16_t));
}

// Reads up to `n` bytes; a stream that throws on failure ends the input as end of file does.
std::streamsize readBlock(std::istream& in, unsigned char* buf, std::streamsize n) {
  try {
    in.read(reinterpret_cast<char*>(buf), n);
  } catch (const std::ios_base::failure&) {
  }
  return in.gcount();
}

// Appends the base64 of everything left in `in` to `out`, writing into its buffer directly.
void encodeStream(std::istream& in, UnicodeString& out) {
  unsigned char buf[kReadBlock + 2];
  int carry = 0;  // bytes of an unfinished group left from a short read
  int32_t len = out.length();
  int32_t capacity = std::max(out.getCapacity(), len + 8);
  char16_t* dst = out.getBuffer(capacity);
  capacity = out.getCapacity();
  for (;;) {
    std::streamsize got = in.good() ? readBlock(in, buf + carry, kReadBlock) : 0;
    int n = carry + static_cast<int>(got);
    int whole = got > 0 ? n / 3 * 3 : 0;
    int need = whole / 3 * 4 + 4;
    if (len + need > capacity) {
      out.releaseBuffer(len);
      dst = out.getBuffer(len + std::max(need, len / 2));
      if (!dst) return;  // out of memory: what is written so far stays
      capacity = out.getCapacity();
    }
    if (got <= 0) {
      if (n > 0) {  // the last one or two bytes, padded
        unsigned char last[3] = {buf[0], n > 1 ? buf[1] : static_cast<unsigned char>(0), 0};
        encodeGroup(last, dst + len);
        if (n == 1) dst[len + 2] = u'=';
        dst[len + 3] = u'=';
        len += 4;
      }
      break;
    }
    for (int i = 0; i < whole; i += 3, len += 4) encodeGroup(buf + i, dst + len);
    carry = n - whole;
    for (int i = 0; i < carry; ++i) buf[i] = buf[whole + i];
  }
  out.releaseBuffer(len);
}

}  // namespace

UnicodeString ZQUtil::encodeBase64(std::istream& in, int size) {
  UnicodeString out;
  if (size > 0 && size < (1 << 30)) {
    out.getBuffer(static_cast<int32_t>(static_cast<long long>(size) * 4 / 3 + 10));
    out.releaseBuffer(0);
  }
  encodeStream(in, out);
  return out;
}

UnicodeString ZQUtil::encodeBase64(std::istream& in, int size, const UnicodeString& mediaType,
                                   const UnicodeString& charset) {
  UnicodeString out(u"data:");
  int32_t head = 5 + mediaType.length() + charset.length() + 18;
  if (size > 0 && size < (1 << 30)) {
    out.getBuffer(static_cast<int32_t>(static_cast<long long>(size) * 4 / 3 + 10 + head));
    out.releaseBuffer(5);
  }
  if (!mediaType.isBogus()) out.append(mediaType);
  if (!charset.isBogus() && !charset.isEmpty()) out.append(u";charset=", 9).append(charset);
  out.append(u";base64,", 8);
  encodeStream(in, out);
  return out;
}

void ZQUtil::decodeBase64(const char16_t* text, int length, std::ostream& out) {
  if (!text) return;
  if (length < 0) {
    length = 0;
    while (text[length]) ++length;
  }
  constexpr int kOut = 4096;
  char buf[kOut];
  int o = 0;
  uint32_t acc = 0;
  int bits = 0;
  int i = 0;
  try {
    while (i < length) {
      if (bits == 0) {
        // Plain groups of four characters in a row make three bytes.
        while (i + 4 <= length && o <= kOut - 3) {
          char16_t c0 = text[i], c1 = text[i + 1], c2 = text[i + 2], c3 = text[i + 3];
          if ((c0 | c1 | c2 | c3) & 0xFF00) break;
          uint32_t v =
              kShifted.t[0][c0] | kShifted.t[1][c1] | kShifted.t[2][c2] | kShifted.t[3][c3];
          if (v & 0x80000000u) break;
          buf[o++] = static_cast<char>(v >> 16);
          buf[o++] = static_cast<char>(v >> 8);
          buf[o++] = static_cast<char>(v);
          i += 4;
        }
        if (o > kOut - 3) {
          out.write(buf, o);
          o = 0;
          continue;
        }
        if (i >= length) break;
      }
      char16_t c = text[i++];
      if (c >= 128) continue;
      uint8_t v = kDecode[c];
      if (v == kStop) break;
      if (v == kSkip) continue;
      acc = (acc << 6) | v;
      bits += 6;
      if (bits >= 8) {
        bits -= 8;
        buf[o++] = static_cast<char>(acc >> bits);
        acc &= (1u << bits) - 1;
        if (o == kOut) {
          out.write(buf, o);
          o = 0;
        }
      }
    }
    if (o > 0) out.write(buf, o);
  } catch (const std::ios_base::failure&) {
    // An output stream that throws on failure just ends the decoding.
  }
}

}  // namespace ZQCommonNS
