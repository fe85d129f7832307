// Base64 in both directions, and the data-URI form of the encoder.
#include <array>
#include <cstdint>
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

// Bytes read from the stream at a time (a multiple of 3, so blocks need no padding).
constexpr int kReadBlock = 3072;

inline void encodeGroup(const unsigned char* in, char16_t* out) {
  uint32_t v = (uint32_t(in[0]) << 16) | (uint32_t(in[1]) << 8) | in[2];
  out[0] = static_cast<char16_t>(kAlphabet[v >> 18]);
  out[1] = static_cast<char16_t>(kAlphabet[(v >> 12) & 63]);
  out[2] = static_cast<char16_t>(kAlphabet[(v >> 6) & 63]);
  out[3] = static_cast<char16_t>(kAlphabet[v & 63]);
}

// Reads up to `n` bytes; a stream that throws on failure ends the input as end of file does.
std::streamsize readBlock(std::istream& in, unsigned char* buf, std::streamsize n) {
  try {
    in.read(reinterpret_cast<char*>(buf), n);
  } catch (const std::ios_base::failure&) {
  }
  return in.gcount();
}

// Appends the base64 of everything left in `in` to `out`.
void encodeStream(std::istream& in, UnicodeString& out) {
  unsigned char buf[kReadBlock + 2];
  char16_t text[(kReadBlock + 2) / 3 * 4 + 4];
  int carry = 0;  // bytes of an unfinished group left from a short read
  while (in.good()) {
    std::streamsize got = readBlock(in, buf + carry, kReadBlock);
    int n = carry + static_cast<int>(got);
    int whole = n / 3 * 3;
    int t = 0;
    for (int i = 0; i < whole; i += 3, t += 4) encodeGroup(buf + i, text + t);
    out.append(text, 0, t);
    carry = n - whole;
    for (int i = 0; i < carry; ++i) buf[i] = buf[whole + i];
    if (got == 0) break;
  }
  if (carry > 0) {
    unsigned char last[3] = {buf[0], carry > 1 ? buf[1] : static_cast<unsigned char>(0), 0};
    char16_t tail[4];
    encodeGroup(last, tail);
    if (carry == 1) tail[2] = u'=';
    tail[3] = u'=';
    out.append(tail, 0, 4);
  }
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
          if ((c0 | c1 | c2 | c3) >= 128) break;
          uint8_t v0 = kDecode[c0], v1 = kDecode[c1], v2 = kDecode[c2], v3 = kDecode[c3];
          if ((v0 | v1 | v2 | v3) & 0x80) break;
          uint32_t v = (uint32_t(v0) << 18) | (uint32_t(v1) << 12) | (uint32_t(v2) << 6) | v3;
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
