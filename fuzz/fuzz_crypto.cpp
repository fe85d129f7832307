// Digests, AES and RC4 driven by arbitrary bytes: pieces hash like the whole, every mode and key
// length round-trips, any bytes given to padDecrypt are refused or unpadded safely, and RC4
// applied twice gives the input back.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "common/ZQCipher.h"
#include "common/ZQDigest.h"

using namespace ZQCommonNS;

namespace {

using Bytes = std::vector<unsigned char>;

#define CHECK(cond)                \
  do {                             \
    if (!(cond)) __builtin_trap(); \
  } while (0)

// The same input always takes the same split points, keys and vectors.
std::minstd_rand rngFor(const uint8_t* data, size_t size) {
  uint32_t seed = 2166136261u;
  for (size_t i = 0; i < size && i < 16; ++i) seed = (seed ^ data[i]) * 16777619u;
  return std::minstd_rand(seed | 1u);
}

Bytes randomBytes(std::minstd_rand& rng, size_t n) {
  Bytes b(n);
  for (auto& c : b) c = static_cast<unsigned char>(rng() >> 7);
  return b;
}

// Piece lengths that cover `size`, with zero-length pieces among them.
std::vector<size_t> splits(std::minstd_rand& rng, size_t size) {
  std::vector<size_t> pieces;
  size_t pos = 0;
  while (pos < size) {
    size_t n = std::min<size_t>(size - pos, rng() % 150);
    pieces.push_back(n);
    pos += n;
  }
  return pieces;
}

template <class Ctx>
void feed(Ctx& c, const unsigned char* p, size_t n) {
  c.Update(p, n);
}
template <>
void feed<SHA1_CTX>(SHA1_CTX& c, const unsigned char* p, size_t n) {
  CHECK(c.Update(p, static_cast<unsigned>(n)) == 0);
}

template <class Ctx>
void finish(Ctx& c, unsigned char* out) {
  c.Final(out);
}
template <>
void finish<SHA1_CTX>(SHA1_CTX& c, unsigned char* out) {
  CHECK(c.Final(out) == 0);
}

// One call and random pieces give the same digest.
template <class Ctx>
void checkDigest(std::minstd_rand& rng, const unsigned char* data, size_t size, size_t digestSize) {
  unsigned char whole[64], pieces[64];
  Ctx one;
  feed(one, data, size);
  finish(one, whole);
  Ctx c;
  size_t pos = 0;
  for (size_t n : splits(rng, size)) {
    feed(c, data + pos, n);
    pos += n;
  }
  finish(c, pieces);
  CHECK(std::memcmp(whole, pieces, digestSize) == 0);
}

// A copy made at a random point and fed the rest matches the whole, while the original,
// fed something else, matches that message: the two go on independently.
template <class Ctx>
void checkCopyAtSplit(std::minstd_rand& rng, const unsigned char* data, size_t size,
                      size_t digestSize) {
  static const unsigned char junk[3] = {1, 2, 3};
  unsigned char whole[64], fromCopy[64], original[64], expected[64];
  Ctx one;
  feed(one, data, size);
  finish(one, whole);
  const size_t cut = rng() % (size + 1);
  Bytes other(data, data + cut);
  other.insert(other.end(), junk, junk + sizeof junk);
  Ctx two;
  feed(two, other.data(), other.size());
  finish(two, expected);

  Ctx c;
  feed(c, data, cut);
  Ctx copy(c);
  Ctx assigned;
  assigned = c;
  feed(c, junk, sizeof junk);
  feed(copy, data + cut, size - cut);
  feed(assigned, data + cut, size - cut);
  finish(c, original);
  CHECK(std::memcmp(original, expected, digestSize) == 0);
  finish(copy, fromCopy);
  CHECK(std::memcmp(whole, fromCopy, digestSize) == 0);
  finish(assigned, fromCopy);
  CHECK(std::memcmp(whole, fromCopy, digestSize) == 0);
}

void checkDigests(std::minstd_rand& rng, const unsigned char* data, size_t size) {
  checkDigest<MD5_CTX>(rng, data, size, 16);
  checkDigest<SHA1_CTX>(rng, data, size, 20);
  checkDigest<SHA256_CTX>(rng, data, size, 32);
  checkDigest<SHA384_CTX>(rng, data, size, 48);
  checkDigest<SHA512_CTX>(rng, data, size, 64);
  checkCopyAtSplit<MD5_CTX>(rng, data, size, 16);
  checkCopyAtSplit<SHA1_CTX>(rng, data, size, 20);
  checkCopyAtSplit<SHA256_CTX>(rng, data, size, 32);
  checkCopyAtSplit<SHA384_CTX>(rng, data, size, 48);
  checkCopyAtSplit<SHA512_CTX>(rng, data, size, 64);
}

// Exactly `n` bytes on the heap, so that a write past the end is caught.
std::unique_ptr<unsigned char[]> exact(size_t n) {
  return std::unique_ptr<unsigned char[]>(new unsigned char[n ? n : 1]);
}

void checkAes(std::minstd_rand& rng, const unsigned char* data, size_t size) {
  const int length = static_cast<int>(size);
  for (int m = AES_MODE_ECB; m <= AES_MODE_CFB1; ++m) {
    const auto mode = static_cast<AES_Mode>(m);
    for (int keyLength : {16, 24, 32}) {
      Bytes key = randomBytes(rng, static_cast<size_t>(keyLength));
      Bytes iv = randomBytes(rng, 16);
      const unsigned char* ivp = (rng() & 1) ? iv.data() : nullptr;

      // Padded forms: the told length, and the plain bytes back.
      const int padded = length - length % 16 + 16;
      auto cipher = exact(static_cast<size_t>(padded));
      AES_Encryption e(mode, key.data(), keyLength, ivp);
      CHECK(e.padEncrypt(data, length, cipher.get()) == padded);
      auto plain = exact(static_cast<size_t>(padded));
      AES_Decryption d(mode, key.data(), keyLength, ivp);
      CHECK(d.padDecrypt(cipher.get(), padded, plain.get()) == length);
      CHECK(size == 0 || std::memcmp(plain.get(), data, size) == 0);

      // Block forms in random pieces: whole blocks only, and the chain runs across calls.
      const int blocks = length / 16;
      auto blockCipher = exact(size);
      auto blockPlain = exact(size);
      AES_Encryption be(mode, key.data(), keyLength, ivp);
      AES_Decryption bd(mode, key.data(), keyLength, ivp);
      int done = 0;
      while (done < blocks) {
        int n = std::min(blocks - done, static_cast<int>(rng() % 6));
        // A few spare bits past the whole blocks are left alone.
        int bits = n * 128 + (n && done + n == blocks ? static_cast<int>(rng() % 128) : 0);
        CHECK(be.blockEncrypt(data + done * 16, bits, blockCipher.get() + done * 16) == n * 128);
        CHECK(bd.blockDecrypt(blockCipher.get() + done * 16, bits, blockPlain.get() + done * 16) ==
              n * 128);
        done += n;
      }
      CHECK(blocks == 0 ||
            std::memcmp(blockPlain.get(), data, static_cast<size_t>(blocks) * 16) == 0);
      auto oneShot = exact(size);
      AES_Encryption oe(mode, key.data(), keyLength, ivp);
      CHECK(oe.blockEncrypt(data, length * 8, oneShot.get()) == blocks * 128);
      CHECK(blocks == 0 ||
            std::memcmp(oneShot.get(), blockCipher.get(), static_cast<size_t>(blocks) * 16) == 0);
      CHECK(be.blockEncrypt(data, 0, blockCipher.get()) == 0);
      CHECK(bd.blockDecrypt(data, -static_cast<int>(rng() % 1000), blockPlain.get()) == 0);

      // The input as a ciphertext: refused, or unpadded into no more than its own length.
      AES_Decryption any(mode, key.data(), keyLength, ivp);
      auto out = exact(size);
      int r = any.padDecrypt(data, length, out.get());
      if (length % 16 != 0) {
        CHECK(r == AES_Base::AES_BAD_DATA);
      } else if (length == 0) {
        CHECK(r == 0);
      } else {
        CHECK(r == AES_Base::AES_BAD_DATA || (r >= length - 16 && r < length));
      }
    }
  }

  // A key length taken from the input: only 16, 24 and 32 work; the others fail every call.
  if (size > 0) {
    int keyLength = data[0] % 40;
    Bytes key = randomBytes(rng, 40);
    AES_Encryption e(AES_MODE_CBC, key.data(), keyLength, nullptr);
    AES_Decryption d(AES_MODE_CBC, key.data(), keyLength, nullptr);
    bool good = keyLength == 16 || keyLength == 24 || keyLength == 32;
    CHECK((e.getStatus() == 0) == good && (d.getStatus() == 0) == good);
    auto out = exact(size + 16);
    int r = e.padEncrypt(data, length, out.get());
    CHECK(good ? r == length - length % 16 + 16 : r == AES_Base::AES_BAD_KEY_LENGTH);
    r = d.padDecrypt(data, length, out.get());
    CHECK(good || r == AES_Base::AES_BAD_KEY_LENGTH);
  }
}

void checkRc4(std::minstd_rand& rng, const unsigned char* data, size_t size) {
  // The key is a prefix of the input, the message what follows (or all of it).
  size_t keyLength = size ? data[0] % 64 : 0;
  if (keyLength > size) keyLength = size;
  const unsigned char* key = data;
  const int length = static_cast<int>(size);

  RC4_KEY a(static_cast<int>(keyLength), key);
  Bytes once(size), twice(size);
  a.RC4(length, data, once.data());
  RC4_KEY b(static_cast<int>(keyLength), key);
  b.RC4(length, once.data(), twice.data());
  CHECK(twice == Bytes(data, data + size));

  // In place and in pieces gives the same stream.
  RC4_KEY c(static_cast<int>(keyLength), key);
  Bytes buf(data, data + size);
  size_t pos = 0;
  for (size_t n : splits(rng, size)) {
    c.RC4(static_cast<int>(n), buf.data() + pos, buf.data() + pos);
    pos += n;
  }
  CHECK(buf == once);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 8192) return 0;  // one-bit CFB is slow; longer inputs add nothing
  std::minstd_rand rng = rngFor(data, size);
  checkDigests(rng, data, size);
  checkAes(rng, data, size);
  checkRc4(rng, data, size);
  return 0;
}
