#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "CryptoTestSupport.h"
#include "common/ZQCipher.h"

using namespace ZQCommonNS;
using namespace zqcrypto;

namespace {

const char* const kKey128 = "2b7e151628aed2a6abf7158809cf4f3c";
const char* const kKey192 = "8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b";
const char* const kKey256 = "603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4";
const char* const kIv = "000102030405060708090a0b0c0d0e0f";
const char* const kPlain4 =
    "6bc1bee22e409f96e93d7e117393172a"
    "ae2d8a571e03ac9c9eb76fac45af8e51"
    "30c81c46a35ce411e5fbc1191a0a52ef"
    "f69f2445df4f9b17ad2b417be66c3710";

struct CbcCase {
  const char* key;
  const char* cipher;
};

const CbcCase kCbcCases[] = {
    {kKey128,
     "7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2"
     "73bed6b8e3c1743b7116e69e222295163ff1caa1681fac09120eca307586e1a7"},
    {kKey192,
     "4f021db243bc633d7178183a9fa071e8b4d9ada9ad7dedf4e5e738763f69145a"
     "571b242012fb7ae07fa9baac3df102e008b0e27988598881d920a9e64f5615cd"},
    {kKey256,
     "f58c4c04d6e5f1ba779eabfb5f7bfbd69cfc4e967edb808d679f777bc6702c7d"
     "39f23369a9d9bacfa530e26304231461b2eb05e2c39be9fcda6c19078c6a9d1b"},
};

int keyLen(const Bytes& key) { return static_cast<int>(key.size()); }
int bitsOf(const Bytes& b) { return static_cast<int>(b.size() * 8); }

Bytes encryptBlocks(AES_Mode mode, const Bytes& key, const Bytes& iv, const Bytes& in) {
  AES_Encryption e(mode, key.data(), keyLen(key), iv.empty() ? nullptr : iv.data());
  Bytes out(in.size());
  EXPECT_EQ(e.blockEncrypt(in.data(), bitsOf(in), out.data()), bitsOf(in) / 128 * 128);
  return out;
}

Bytes decryptBlocks(AES_Mode mode, const Bytes& key, const Bytes& iv, const Bytes& in) {
  AES_Decryption d(mode, key.data(), keyLen(key), iv.empty() ? nullptr : iv.data());
  Bytes out(in.size());
  EXPECT_EQ(d.blockDecrypt(in.data(), bitsOf(in), out.data()), bitsOf(in) / 128 * 128);
  return out;
}

// Exposes the shared implementation, to reach the direction checks.
struct RawAes : AES_Base {
  RawAes(int direction, AES_Mode mode, const unsigned char* key, int keyLength)
      : AES_Base(direction, mode, key, keyLength, nullptr) {}
  using AES_Base::cipherBlocks;
  using AES_Base::cipherPadded;
};

// Every operation of both classes gives `code`.
void expectAllFail(AES_Encryption& e, AES_Decryption& d, int code) {
  unsigned char in[32] = {}, out[48];
  EXPECT_EQ(e.getStatus(), code);
  EXPECT_EQ(d.getStatus(), code);
  EXPECT_EQ(e.blockEncrypt(in, 256, out), code);
  EXPECT_EQ(e.padEncrypt(in, 20, out), code);
  EXPECT_EQ(d.blockDecrypt(in, 256, out), code);
  EXPECT_EQ(d.padDecrypt(in, 32, out), code);
  // Lengths that would otherwise give 0 fail as well.
  EXPECT_EQ(e.blockEncrypt(in, 0, out), code);
  EXPECT_EQ(d.padDecrypt(in, 0, out), code);
}

const char* modeName(AES_Mode mode) {
  return mode == AES_MODE_ECB ? "ecb" : mode == AES_MODE_CBC ? "cbc" : "cfb1";
}

std::string cliArgs(bool decrypt, AES_Mode mode, const Bytes& key, const Bytes& iv, bool pad) {
  std::string s = std::string("enc ") + (decrypt ? "-d " : "") + "-aes-" +
                  std::to_string(key.size() * 8) + "-" + modeName(mode) + " -K " + hex(key);
  if (mode != AES_MODE_ECB) s += " -iv " + hex(iv);
  if (!pad) s += " -nopad";
  return s;
}

const AES_Mode kModes[] = {AES_MODE_ECB, AES_MODE_CBC, AES_MODE_CFB1};

}  // namespace

// Known answers

TEST(Cipher, AesFips197AppendixCEcb) {
  struct {
    const char* key;
    const char* cipher;
  } cases[] = {
      {"000102030405060708090a0b0c0d0e0f", "69c4e0d86a7b0430d8cdb78070b4c55a"},
      {"000102030405060708090a0b0c0d0e0f1011121314151617", "dda97ca4864cdfe06eaf70a0ec0d7191"},
      {"000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f",
       "8ea2b7ca516745bfeafc49904b496089"},
  };
  Bytes plain = unhex("00112233445566778899aabbccddeeff");
  for (const auto& c : cases) {
    Bytes key = unhex(c.key);
    EXPECT_EQ(hex(encryptBlocks(AES_MODE_ECB, key, {}, plain)), c.cipher) << c.key;
    EXPECT_EQ(hex(decryptBlocks(AES_MODE_ECB, key, {}, unhex(c.cipher))), hex(plain)) << c.key;
  }
}

TEST(Cipher, AesSp80038aCbcEncrypt) {
  for (const auto& c : kCbcCases)
    EXPECT_EQ(hex(encryptBlocks(AES_MODE_CBC, unhex(c.key), unhex(kIv), unhex(kPlain4))), c.cipher)
        << c.key;
}

TEST(Cipher, AesSp80038aCbcDecrypt) {
  for (const auto& c : kCbcCases)
    EXPECT_EQ(hex(decryptBlocks(AES_MODE_CBC, unhex(c.key), unhex(kIv), unhex(c.cipher))), kPlain4)
        << c.key;
}

// The published one-bit CFB examples cover 16 bits. The stream is bit by bit, so the first 16
// bits of a whole block depend on the first 16 bits of input alone.
TEST(Cipher, AesSp80038aCfb1EncryptAndDecrypt) {
  struct {
    const char* key;
    const char* cipher16;
  } cases[] = {{kKey128, "68b3"}, {kKey192, "9359"}, {kKey256, "9029"}};
  for (const auto& c : cases) {
    Bytes key = unhex(c.key);
    Bytes plain = unhex(kPlain4);
    plain.resize(16);
    Bytes cipher = encryptBlocks(AES_MODE_CFB1, key, unhex(kIv), plain);
    EXPECT_EQ(hex(cipher).substr(0, 4), c.cipher16) << c.key;
    Bytes given = unhex(c.cipher16);
    given.resize(16, 0xA5);  // any later bits
    EXPECT_EQ(hex(decryptBlocks(AES_MODE_CFB1, key, unhex(kIv), given)).substr(0, 4), "6bc1")
        << c.key;
  }
}

// Chaining from call to call

TEST(Cipher, CbcStateChainsFromCallToCall) {
  for (const auto& c : kCbcCases) {
    Bytes key = unhex(c.key), iv = unhex(kIv), plain = unhex(kPlain4);
    AES_Encryption e(AES_MODE_CBC, key.data(), keyLen(key), iv.data());
    Bytes out(64);
    for (int i = 0; i < 4; ++i)
      ASSERT_EQ(e.blockEncrypt(plain.data() + 16 * i, 128, out.data() + 16 * i), 128);
    EXPECT_EQ(hex(out), c.cipher);
    AES_Decryption d(AES_MODE_CBC, key.data(), keyLen(key), iv.data());
    Bytes cipher = unhex(c.cipher), back(64);
    ASSERT_EQ(d.blockDecrypt(cipher.data(), 128, back.data()), 128);
    ASSERT_EQ(d.blockDecrypt(cipher.data() + 16, 384, back.data() + 16), 384);
    EXPECT_EQ(hex(back), kPlain4);
  }
}

TEST(Cipher, RandomSplitPointsEqualOneShot) {
  std::mt19937 rng(5);
  for (AES_Mode mode : kModes) {
    for (int keyBytes : {16, 24, 32}) {
      Bytes key = randomBytes(rng, keyBytes), iv = randomBytes(rng, 16);
      Bytes plain = randomBytes(rng, 16 * (1 + rng() % 40));
      Bytes whole = encryptBlocks(mode, key, iv, plain);
      AES_Encryption e(mode, key.data(), keyBytes, iv.data());
      AES_Decryption d(mode, key.data(), keyBytes, iv.data());
      Bytes pieces(plain.size()), back(plain.size());
      size_t pos = 0;
      while (pos < plain.size()) {
        size_t blocks = std::min<size_t>((plain.size() - pos) / 16, rng() % 5);
        int bits = static_cast<int>(blocks * 128);
        ASSERT_EQ(e.blockEncrypt(plain.data() + pos, bits, pieces.data() + pos), bits);
        ASSERT_EQ(d.blockDecrypt(whole.data() + pos, bits, back.data() + pos), bits);
        pos += blocks * 16;
      }
      EXPECT_EQ(hex(pieces), hex(whole)) << modeName(mode) << keyBytes;
      EXPECT_EQ(hex(back), hex(plain)) << modeName(mode) << keyBytes;
    }
  }
}

TEST(Cipher, PaddedCallsChainLikeBlockCalls) {
  // CBC padded messages sent one after the other continue the same chain.
  Bytes key = unhex(kKey128), iv = unhex(kIv);
  AES_Encryption e(AES_MODE_CBC, key.data(), 16, iv.data());
  const char* first = "first message";
  const char* second = "second, somewhat longer message";
  Bytes out(96);
  int n1 = e.padEncrypt(reinterpret_cast<const unsigned char*>(first), 13, out.data());
  int n2 = e.padEncrypt(reinterpret_cast<const unsigned char*>(second), 31, out.data() + n1);
  ASSERT_EQ(n1, 16);
  ASSERT_EQ(n2, 32);
  AES_Decryption d(AES_MODE_CBC, key.data(), 16, iv.data());
  Bytes back(48);
  ASSERT_EQ(d.padDecrypt(out.data(), 16, back.data()), 13);
  EXPECT_EQ(std::string(back.begin(), back.begin() + 13), first);
  ASSERT_EQ(d.padDecrypt(out.data() + 16, 32, back.data()), 31);
  EXPECT_EQ(std::string(back.begin(), back.begin() + 31), second);
}

// Lengths of the block forms

TEST(Cipher, BlockLengthsBelowOneGiveZero) {
  Bytes key = unhex(kKey128);
  AES_Encryption e(AES_MODE_CBC, key.data(), 16, nullptr);
  AES_Decryption d(AES_MODE_CBC, key.data(), 16, nullptr);
  unsigned char in[16] = {}, out[16];
  std::memset(out, 0xEE, sizeof out);
  EXPECT_EQ(e.blockEncrypt(in, 0, out), 0);
  EXPECT_EQ(e.blockEncrypt(in, -1, out), 0);
  EXPECT_EQ(e.blockEncrypt(in, -128, out), 0);
  EXPECT_EQ(d.blockDecrypt(in, 0, out), 0);
  EXPECT_EQ(d.blockDecrypt(in, -7, out), 0);
  EXPECT_EQ(hex(out, 16), std::string(32, 'e'));
}

TEST(Cipher, BlockFormsProcessWholeBlocksOnly) {
  Bytes key = unhex(kKey128), plain = unhex(kPlain4);
  for (AES_Mode mode : kModes) {
    AES_Encryption e(mode, key.data(), 16, nullptr);
    Bytes out(64, 0xEE);
    EXPECT_EQ(e.blockEncrypt(plain.data(), 127, out.data()), 0);
    EXPECT_EQ(hex(out), std::string(128, 'e'));
    // 129 and 255 bits: one block, and the bytes after it are untouched.
    EXPECT_EQ(e.blockEncrypt(plain.data(), 129, out.data()), 128);
    EXPECT_EQ(hex(out).substr(32), std::string(96, 'e'));
    AES_Encryption f(mode, key.data(), 16, nullptr);
    Bytes two(64, 0xEE);
    EXPECT_EQ(f.blockEncrypt(plain.data(), 383, two.data()), 256);
    EXPECT_EQ(hex(two).substr(0, 32), hex(out).substr(0, 32));
    EXPECT_EQ(hex(two).substr(64), std::string(64, 'e'));
  }
}

TEST(Cipher, NullIvMeansZeros) {
  Bytes key = unhex(kKey256), zeros(16, 0), plain = unhex(kPlain4);
  for (AES_Mode mode : {AES_MODE_CBC, AES_MODE_CFB1}) {
    EXPECT_EQ(hex(encryptBlocks(mode, key, {}, plain)), hex(encryptBlocks(mode, key, zeros, plain)))
        << modeName(mode);
    EXPECT_NE(hex(encryptBlocks(mode, key, {}, plain)),
              hex(encryptBlocks(mode, key, unhex(kIv), plain)))
        << modeName(mode);
  }
  // With a zero vector the first CBC block is the ECB block.
  Bytes one(plain.begin(), plain.begin() + 16);
  EXPECT_EQ(hex(encryptBlocks(AES_MODE_CBC, key, {}, one)),
            hex(encryptBlocks(AES_MODE_ECB, key, {}, one)));
}

TEST(Cipher, EcbIgnoresTheVector) {
  Bytes key = unhex(kKey192), plain = unhex(kPlain4);
  EXPECT_EQ(hex(encryptBlocks(AES_MODE_ECB, key, unhex(kIv), plain)),
            hex(encryptBlocks(AES_MODE_ECB, key, {}, plain)));
}

TEST(Cipher, InPlaceOperation) {
  std::mt19937 rng(11);
  for (AES_Mode mode : kModes) {
    Bytes key = randomBytes(rng, 32), iv = randomBytes(rng, 16), plain = randomBytes(rng, 80);
    Bytes expected = encryptBlocks(mode, key, iv, plain);
    Bytes buf = plain;
    AES_Encryption e(mode, key.data(), 32, iv.data());
    ASSERT_EQ(e.blockEncrypt(buf.data(), bitsOf(buf), buf.data()), bitsOf(buf));
    EXPECT_EQ(hex(buf), hex(expected));
    AES_Decryption d(mode, key.data(), 32, iv.data());
    ASSERT_EQ(d.blockDecrypt(buf.data(), bitsOf(buf), buf.data()), bitsOf(buf));
    EXPECT_EQ(hex(buf), hex(plain));

    Bytes padded(96);
    std::copy(plain.begin(), plain.begin() + 70, padded.begin());
    AES_Encryption pe(mode, key.data(), 32, iv.data());
    ASSERT_EQ(pe.padEncrypt(padded.data(), 70, padded.data()), 80);
    AES_Decryption pd(mode, key.data(), 32, iv.data());
    ASSERT_EQ(pd.padDecrypt(padded.data(), 80, padded.data()), 70);
    EXPECT_EQ(hex(padded.data(), 70), hex(plain.data(), 70));
  }
}

// Padding

TEST(Cipher, PaddedLengthsZeroToThirtyThree) {
  std::mt19937 rng(3);
  for (AES_Mode mode : kModes) {
    Bytes key = randomBytes(rng, 16), iv = randomBytes(rng, 16);
    for (int n = 0; n <= 33; ++n) {
      Bytes plain = randomBytes(rng, static_cast<size_t>(n));
      int expected = n - n % 16 + 16;
      Bytes out(static_cast<size_t>(expected) + 16, 0xEE);
      AES_Encryption e(mode, key.data(), 16, iv.data());
      ASSERT_EQ(e.padEncrypt(plain.data(), n, out.data()), expected) << n;
      EXPECT_EQ(out[static_cast<size_t>(expected)], 0xEE) << "wrote past the result, n=" << n;

      // The padding as written: the block forms leave it in place.
      Bytes raw = decryptBlocks(mode, key, iv, Bytes(out.begin(), out.begin() + expected));
      unsigned char pad = static_cast<unsigned char>(expected - n);
      EXPECT_EQ(hex(raw.data(), static_cast<size_t>(n)), hex(plain)) << n;
      for (int i = n; i < expected; ++i) EXPECT_EQ(raw[static_cast<size_t>(i)], pad) << n;

      // Round trip; the output gets the plain bytes and nothing after them.
      Bytes back(static_cast<size_t>(expected), 0xEE);
      AES_Decryption d(mode, key.data(), 16, iv.data());
      ASSERT_EQ(d.padDecrypt(out.data(), expected, back.data()), n) << n;
      EXPECT_EQ(hex(back.data(), static_cast<size_t>(n)), hex(plain)) << n;
      for (int i = n; i < expected; ++i) EXPECT_EQ(back[static_cast<size_t>(i)], 0xEE) << n;
    }
  }
}

TEST(Cipher, PadEncryptOfNothingIsOneFullPadBlock) {
  Bytes key = unhex(kKey128);
  AES_Encryption e(AES_MODE_ECB, key.data(), 16, nullptr);
  unsigned char out[16];
  EXPECT_EQ(e.padEncrypt(nullptr, 0, out), 16);
  Bytes block(16, 16);
  EXPECT_EQ(hex(out, 16), hex(encryptBlocks(AES_MODE_ECB, key, {}, block)));
  EXPECT_EQ(e.padEncrypt(out, -3, out), 0);
}

TEST(Cipher, PadDecryptRejectsBadPadding) {
  Bytes key = unhex(kKey128);
  auto check = [&](Bytes lastBlock, const char* what) {
    Bytes cipher = encryptBlocks(AES_MODE_ECB, key, {}, lastBlock);
    AES_Decryption d(AES_MODE_ECB, key.data(), 16, nullptr);
    Bytes out(16);
    EXPECT_EQ(d.padDecrypt(cipher.data(), 16, out.data()), AES_Base::AES_BAD_DATA) << what;
  };
  Bytes block(16, 'x');
  block[15] = 0;
  check(block, "pad byte 0");
  block[15] = 17;
  check(block, "pad byte 17");
  block[15] = 0xFF;
  check(block, "pad byte 255");
  block[15] = 3;
  block[14] = 3;
  block[13] = 2;
  check(block, "pad bytes differ");
  Bytes good(16, 16);
  good[0] = 15;
  check(good, "full pad block with one wrong byte");
  // Good padding at the edges: one byte of 1, sixteen of 16.
  Bytes one(16, 'y');
  one[15] = 1;
  Bytes cipher = encryptBlocks(AES_MODE_ECB, key, {}, one);
  AES_Decryption d(AES_MODE_ECB, key.data(), 16, nullptr);
  Bytes out(16);
  EXPECT_EQ(d.padDecrypt(cipher.data(), 16, out.data()), 15);
}

TEST(Cipher, PadDecryptRejectsLengthsOfPartBlocks) {
  Bytes key = unhex(kKey128);
  AES_Decryption d(AES_MODE_CBC, key.data(), 16, nullptr);
  unsigned char in[48] = {}, out[48];
  EXPECT_EQ(d.padDecrypt(in, 15, out), AES_Base::AES_BAD_DATA);
  EXPECT_EQ(d.padDecrypt(in, 17, out), AES_Base::AES_BAD_DATA);
  EXPECT_EQ(d.padDecrypt(in, 47, out), AES_Base::AES_BAD_DATA);
  EXPECT_EQ(d.padDecrypt(in, 0, out), 0);
  EXPECT_EQ(d.padDecrypt(in, -16, out), 0);
}

// Negative codes

TEST(Cipher, CodeMinusOneForABadMode) {
  Bytes key = unhex(kKey128);
  for (int m : {-1, 3, 100}) {
    AES_Encryption e(static_cast<AES_Mode>(m), key.data(), 16, nullptr);
    AES_Decryption d(static_cast<AES_Mode>(m), key.data(), 16, nullptr);
    expectAllFail(e, d, -1);
  }
  EXPECT_EQ(AES_Base::AES_BAD_MODE, -1);
}

TEST(Cipher, CodeMinusTwoForABadDirection) {
  Bytes key = unhex(kKey128);
  RawAes bad(2, AES_MODE_ECB, key.data(), 16);
  unsigned char in[16] = {}, out[16];
  EXPECT_EQ(bad.getStatus(), -2);
  EXPECT_EQ(bad.cipherBlocks(AES_Base::DIR_ENCRYPT, in, 128, out), -2);
  // A good key asked to run in no known direction.
  RawAes good(AES_Base::DIR_ENCRYPT, AES_MODE_ECB, key.data(), 16);
  EXPECT_EQ(good.getStatus(), 0);
  EXPECT_EQ(good.cipherBlocks(5, in, 128, out), -2);
  EXPECT_EQ(good.cipherPadded(-1, in, 16, out), -2);
  EXPECT_EQ(good.cipherBlocks(AES_Base::DIR_ENCRYPT, in, 128, out), 128);
  EXPECT_EQ(AES_Base::AES_BAD_DIRECTION, -2);
}

TEST(Cipher, CodeMinusThreeForABadKeyLength) {
  Bytes key(64, 7);
  for (int length : {0, -16, 1, 8, 15, 17, 20, 31, 33, 64}) {
    AES_Encryption e(AES_MODE_CBC, key.data(), length, nullptr);
    AES_Decryption d(AES_MODE_CBC, key.data(), length, nullptr);
    expectAllFail(e, d, -3);
  }
  EXPECT_EQ(AES_Base::AES_BAD_KEY_LENGTH, -3);
}

TEST(Cipher, CodeMinusFourForANullKey) {
  for (int length : {16, 24, 32}) {
    AES_Encryption e(AES_MODE_ECB, nullptr, length, nullptr);
    AES_Decryption d(AES_MODE_ECB, nullptr, length, nullptr);
    expectAllFail(e, d, -4);
  }
  EXPECT_EQ(AES_Base::AES_NULL_KEY, -4);
}

TEST(Cipher, CodeMinusFiveForAnUnusableKeyState) {
  Bytes key = unhex(kKey128);
  // With no AES to be found, the key cannot be set up.
  withoutAlgorithms([&] {
    AES_Encryption e(AES_MODE_CBC, key.data(), 16, nullptr);
    AES_Decryption d(AES_MODE_CBC, key.data(), 16, nullptr);
    expectAllFail(e, d, -5);
    AES_Encryption copy(e);
    EXPECT_EQ(copy.getStatus(), -5);
  });
  EXPECT_EQ(AES_Base::AES_BAD_KEY_STATE, -5);
}

TEST(Cipher, CodeMinusSixForUseInTheWrongDirection) {
  Bytes key = unhex(kKey128);
  AES_Encryption e(AES_MODE_CBC, key.data(), 16, nullptr);
  AES_Decryption d(AES_MODE_CBC, key.data(), 16, nullptr);
  // Through the shared base, each object receives a key of the other direction.
  AES_Encryption holdsDecryptionKey(e);
  static_cast<AES_Base&>(holdsDecryptionKey) = d;
  AES_Decryption holdsEncryptionKey(d);
  static_cast<AES_Base&>(holdsEncryptionKey) = e;
  unsigned char in[32] = {}, out[48];
  EXPECT_EQ(holdsDecryptionKey.blockEncrypt(in, 128, out), -6);
  EXPECT_EQ(holdsDecryptionKey.padEncrypt(in, 5, out), -6);
  EXPECT_EQ(holdsEncryptionKey.blockDecrypt(in, 128, out), -6);
  EXPECT_EQ(holdsEncryptionKey.padDecrypt(in, 32, out), -6);
  RawAes raw(AES_Base::DIR_DECRYPT, AES_MODE_ECB, key.data(), 16);
  EXPECT_EQ(raw.cipherBlocks(AES_Base::DIR_ENCRYPT, in, 128, out), -6);
  EXPECT_EQ(AES_Base::AES_WRONG_DIRECTION, -6);
}

TEST(Cipher, AesClassesShareOneOwnedStateBehindAVirtualDestructor) {
  static_assert(AES_MODE_ECB == 0 && AES_MODE_CBC == 1 && AES_MODE_CFB1 == 2);
  static_assert(std::has_virtual_destructor_v<AES_Base>);
  static_assert(std::is_base_of_v<AES_Base, AES_Encryption>);
  static_assert(std::is_base_of_v<AES_Base, AES_Decryption>);
  // The two directions add no fields of their own.
  static_assert(sizeof(AES_Encryption) == sizeof(AES_Base));
  static_assert(sizeof(AES_Decryption) == sizeof(AES_Base));
  // Deleted through the base, each frees its own state (the leak checker watches this).
  Bytes key = unhex(kKey256);
  std::unique_ptr<AES_Base> e(new AES_Encryption(AES_MODE_CBC, key.data(), 32, nullptr));
  std::unique_ptr<AES_Base> d(new AES_Decryption(AES_MODE_CFB1, key.data(), 32, nullptr));
  EXPECT_EQ(e->getStatus(), 0);
  EXPECT_EQ(d->getStatus(), 0);
}

TEST(Cipher, KeyLengthsInBytes) {
  Bytes key(32, 1), plain(16, 2);
  for (int length : {16, 24, 32}) {
    AES_Encryption e(AES_MODE_ECB, key.data(), length, nullptr);
    EXPECT_EQ(e.getStatus(), 0) << length;
    Bytes out(16);
    EXPECT_EQ(e.blockEncrypt(plain.data(), 128, out.data()), 128) << length;
  }
  // The three lengths are three different keys.
  Bytes k16(key.begin(), key.begin() + 16), k24(key.begin(), key.begin() + 24);
  EXPECT_NE(hex(encryptBlocks(AES_MODE_ECB, k16, {}, plain)),
            hex(encryptBlocks(AES_MODE_ECB, k24, {}, plain)));
  EXPECT_NE(hex(encryptBlocks(AES_MODE_ECB, k24, {}, plain)),
            hex(encryptBlocks(AES_MODE_ECB, key, {}, plain)));
}

TEST(Cipher, NullBuffersProcessNothing) {
  Bytes key = unhex(kKey128);
  AES_Encryption e(AES_MODE_CBC, key.data(), 16, nullptr);
  AES_Decryption d(AES_MODE_CBC, key.data(), 16, nullptr);
  unsigned char buf[32] = {};
  EXPECT_EQ(e.blockEncrypt(nullptr, 128, buf), 0);
  EXPECT_EQ(e.blockEncrypt(buf, 128, nullptr), 0);
  EXPECT_EQ(e.padEncrypt(nullptr, 5, buf), 0);
  EXPECT_EQ(e.padEncrypt(buf, 5, nullptr), 0);
  EXPECT_EQ(d.blockDecrypt(nullptr, 128, buf), 0);
  EXPECT_EQ(d.padDecrypt(buf, 16, nullptr), 0);
  // Nothing was consumed: the chain still starts from the vector.
  Bytes plain = unhex(kPlain4);
  Bytes out(16);
  ASSERT_EQ(e.blockEncrypt(plain.data(), 128, out.data()), 128);
  EXPECT_EQ(hex(out),
            hex(encryptBlocks(AES_MODE_CBC, key, {}, Bytes(plain.begin(), plain.begin() + 16))));
}

// Copies

TEST(Cipher, CopiesContinueIndependently) {
  Bytes key = unhex(kKey128), iv = unhex(kIv), plain = unhex(kPlain4);
  Bytes expected = unhex(kCbcCases[0].cipher);
  for (AES_Mode mode : {AES_MODE_CBC, AES_MODE_CFB1}) {
    Bytes all = encryptBlocks(mode, key, iv, plain);
    AES_Encryption a(mode, key.data(), 16, iv.data());
    Bytes out(16);
    ASSERT_EQ(a.blockEncrypt(plain.data(), 128, out.data()), 128);
    AES_Encryption b(a);
    AES_Encryption c(AES_MODE_ECB, key.data(), 16, nullptr);
    c = a;
    // The original moves on; the copies still stand after the first block.
    Bytes junk(32, 0x55);
    ASSERT_EQ(a.blockEncrypt(junk.data(), 256, junk.data()), 256);
    Bytes rest(48);
    ASSERT_EQ(b.blockEncrypt(plain.data() + 16, 384, rest.data()), 384);
    EXPECT_EQ(hex(rest), hex(all).substr(32)) << modeName(mode);
    ASSERT_EQ(c.blockEncrypt(plain.data() + 16, 384, rest.data()), 384);
    EXPECT_EQ(hex(rest), hex(all).substr(32)) << modeName(mode);
    if (mode == AES_MODE_CBC) EXPECT_EQ(hex(all), hex(expected));
  }
  // A decryption copy too.
  AES_Decryption d(AES_MODE_CBC, key.data(), 16, iv.data());
  Bytes back(16);
  ASSERT_EQ(d.blockDecrypt(expected.data(), 128, back.data()), 128);
  AES_Decryption e(d);
  AES_Decryption& same = e;
  e = same;
  Bytes rest(48);
  ASSERT_EQ(e.blockDecrypt(expected.data() + 16, 384, rest.data()), 384);
  EXPECT_EQ(hex(rest), std::string(kPlain4).substr(32));
}

TEST(Cipher, CopiesOfAFailedKeyKeepItsCode) {
  Bytes key(16, 1);
  AES_Encryption bad(AES_MODE_CBC, key.data(), 10, nullptr);
  AES_Encryption copy(bad);
  EXPECT_EQ(copy.getStatus(), -3);
  AES_Encryption good(AES_MODE_CBC, key.data(), 16, nullptr);
  good = bad;
  unsigned char buf[16] = {};
  EXPECT_EQ(good.blockEncrypt(buf, 128, buf), -3);
  bad = AES_Encryption(AES_MODE_CBC, key.data(), 16, nullptr);
  EXPECT_EQ(bad.blockEncrypt(buf, 128, buf), 128);
}

// Against the openssl command

TEST(Cipher, BlockFormsMatchOpenSslCommand) {
  if (!haveOpenSslCommand()) GTEST_SKIP() << "openssl command not installed";
  std::mt19937 rng(21);
  for (AES_Mode mode : kModes) {
    for (int keyBytes : {16, 24, 32}) {
      for (int round = 0; round < 2; ++round) {
        Bytes key = randomBytes(rng, keyBytes), iv = randomBytes(rng, 16);
        Bytes plain = randomBytes(rng, 16 * (1 + rng() % 200));
        Bytes expected;
        ASSERT_TRUE(runOpenSsl(cliArgs(false, mode, key, iv, false), plain, expected));
        EXPECT_EQ(hex(encryptBlocks(mode, key, iv, plain)), hex(expected))
            << modeName(mode) << keyBytes;
        EXPECT_EQ(hex(decryptBlocks(mode, key, iv, expected)), hex(plain))
            << modeName(mode) << keyBytes;
      }
    }
  }
}

TEST(Cipher, PaddedFormsMatchOpenSslCommand) {
  if (!haveOpenSslCommand()) GTEST_SKIP() << "openssl command not installed";
  std::mt19937 rng(22);
  for (AES_Mode mode : kModes) {
    for (int keyBytes : {16, 24, 32}) {
      for (int round = 0; round < 2; ++round) {
        Bytes key = randomBytes(rng, keyBytes), iv = randomBytes(rng, 16);
        Bytes plain = randomBytes(rng, rng() % 3000);
        // The command pads block modes only: one-bit CFB gets the padding from here.
        bool cliPads = mode != AES_MODE_CFB1;
        Bytes input = plain;
        if (!cliPads) input.insert(input.end(), 16 - plain.size() % 16, 16 - plain.size() % 16);
        Bytes expected;
        ASSERT_TRUE(runOpenSsl(cliArgs(false, mode, key, iv, cliPads), input, expected));
        AES_Encryption e(mode, key.data(), keyBytes, iv.data());
        Bytes out(plain.size() + 16);
        int n = e.padEncrypt(plain.data(), static_cast<int>(plain.size()), out.data());
        ASSERT_EQ(n, static_cast<int>(expected.size()));
        out.resize(static_cast<size_t>(n));
        EXPECT_EQ(hex(out), hex(expected)) << modeName(mode) << keyBytes;
        // And the command deciphers ours.
        Bytes back;
        ASSERT_TRUE(runOpenSsl(cliArgs(true, mode, key, iv, cliPads), out, back));
        EXPECT_EQ(hex(back), hex(input));
      }
    }
  }
}

// RC4

namespace {

Bytes rc4Stream(const Bytes& key, size_t n) {
  RC4_KEY k(static_cast<int>(key.size()), key.data());
  Bytes zeros(n, 0), out(n);
  k.RC4(static_cast<int>(n), zeros.data(), out.data());
  return out;
}

}  // namespace

TEST(Cipher, Rc4Rfc6229FortyBitKey) {
  Bytes stream = rc4Stream(unhex("0102030405"), 4112);
  struct {
    size_t offset;
    const char* bytes;
  } rows[] = {
      {0, "b2396305f03dc027ccc3524a0a1118a8"},    {16, "6982944f18fc82d589c403a47a0d0919"},
      {240, "28cb1132c96ce286421dcaadb8b69eae"},  {256, "1cfcf62b03eddb641d77dfcf7f8d8c93"},
      {496, "42b7d0cdd918a8a33dd51781c81f4041"},  {512, "6459844432a7da923cfb3eb4980661f6"},
      {752, "ec10327bde2beefd18f9277680457e22"},  {768, "eb62638d4f0ba1fe9fca20e05bf8ff2b"},
      {1008, "45129048e6a0ed0b56b490338f078da5"}, {1024, "30abbcc7c20b01609f23ee2d5f6bb7df"},
      {1520, "3294f744d8f9790507e70f62e5bbceea"}, {1536, "d8729db41882259bee4f825325f5a130"},
      {2032, "1eb14a0c13b3bf47fa2a0ba93ad45b8b"}, {2048, "cc582f8ba9f265e2b1be9112e975d2d7"},
      {3056, "f2e30f9bd102ecbf75aaade9bc35c43c"}, {3072, "ec0e11c479dc329dc8da7968fe965681"},
      {4080, "068326a2118416d21f9d04b2cd1ca050"}, {4096, "ff25b58995996707e51fbdf08b34d875"},
  };
  for (const auto& r : rows) EXPECT_EQ(hex(stream.data() + r.offset, 16), r.bytes) << r.offset;
}

TEST(Cipher, Rc4Rfc6229OneHundredTwentyEightBitKey) {
  Bytes stream = rc4Stream(unhex("0102030405060708090a0b0c0d0e0f10"), 272);
  EXPECT_EQ(hex(stream.data(), 16), "9ac7cc9a609d1ef7b2932899cde41b97");
  EXPECT_EQ(hex(stream.data() + 16, 16), "5248c4959014126a6e8a84f11d1a9e1c");
  EXPECT_EQ(hex(stream.data() + 240, 16), "065902e4b620f6cc36c8589f66432f2b");
  EXPECT_EQ(hex(stream.data() + 256, 16), "d39d566bc6bce3010768151549f3873f");
}

// The command keeps RC4 in its legacy provider, with 128-bit keys; without it the check is
// skipped.
TEST(Cipher, Rc4MatchesOpenSslCommand) {
  if (!haveOpenSslCommand()) GTEST_SKIP() << "openssl command not installed";
  std::mt19937 rng(23);
  for (int round = 0; round < 6; ++round) {
    Bytes key = randomBytes(rng, 16), data = randomBytes(rng, rng() % 20000);
    Bytes expected;
    if (!runOpenSsl("enc -rc4 -K " + hex(key) + " -provider legacy -provider default", data,
                    expected))
      GTEST_SKIP() << "the command offers no RC4";
    ASSERT_EQ(expected.size(), data.size());
    RC4_KEY k(16, key.data());
    Bytes out(data.size());
    size_t pos = 0;
    while (pos < data.size()) {
      size_t n = std::min<size_t>(data.size() - pos, rng() % 3000);
      k.RC4(static_cast<int>(n), data.data() + pos, out.data() + pos);
      pos += n;
    }
    EXPECT_EQ(hex(out), hex(expected)) << "length " << data.size();
  }
}

TEST(Cipher, Rc4ClassicTextVectors) {
  struct {
    const char* key;
    const char* plain;
    const char* cipher;
  } cases[] = {{"Key", "Plaintext", "bbf316e8d940af0ad3"},
               {"Wiki", "pedia", "1021bf0420"},
               {"Secret", "Attack at dawn", "45a01f645fc35b383552544b9bf5"}};
  for (const auto& c : cases) {
    Bytes key = bytesOf(c.key), plain = bytesOf(c.plain), out(plain.size());
    RC4_KEY k(static_cast<int>(key.size()), key.data());
    k.RC4(static_cast<int>(plain.size()), plain.data(), out.data());
    EXPECT_EQ(hex(out), c.cipher) << c.key;
    // The same operation deciphers.
    RC4_KEY k2(static_cast<int>(key.size()), key.data());
    Bytes back(out.size());
    k2.RC4(static_cast<int>(out.size()), out.data(), back.data());
    EXPECT_EQ(std::string(back.begin(), back.end()), c.plain);
  }
}

TEST(Cipher, Rc4StateCarriesFromCallToCall) {
  std::mt19937 rng(17);
  for (int round = 0; round < 20; ++round) {
    Bytes key = randomBytes(rng, 1 + rng() % 300), data = randomBytes(rng, rng() % 5000);
    RC4_KEY whole(static_cast<int>(key.size()), key.data());
    Bytes expected(data.size());
    whole.RC4(static_cast<int>(data.size()), data.data(), expected.data());
    RC4_KEY pieces(static_cast<int>(key.size()), key.data());
    Bytes out(data.size());
    size_t pos = 0;
    while (pos < data.size()) {
      size_t n = std::min<size_t>(data.size() - pos, rng() % 300);
      pieces.RC4(static_cast<int>(n), data.data() + pos, out.data() + pos);
      pos += n;
    }
    EXPECT_EQ(hex(out), hex(expected));
  }
}

TEST(Cipher, Rc4InPlaceAndCopies) {
  Bytes key = bytesOf("Secret"), text = bytesOf("Attack at dawn");
  RC4_KEY a(6, key.data());
  a.RC4(7, text.data(), text.data());  // "Attack "
  RC4_KEY b = a;
  RC4_KEY c(1, key.data());
  c = a;
  Bytes rest(text.begin() + 7, text.end()), other = rest, third = rest;
  a.RC4(7, rest.data(), rest.data());
  b.RC4(7, other.data(), other.data());
  c.RC4(7, third.data(), third.data());
  std::copy(rest.begin(), rest.end(), text.begin() + 7);
  EXPECT_EQ(hex(text), "45a01f645fc35b383552544b9bf5");
  EXPECT_EQ(hex(other), hex(rest));
  EXPECT_EQ(hex(third), hex(rest));
}

TEST(Cipher, Rc4BadArgumentsDoNothing) {
  Bytes key = bytesOf("Key"), plain = bytesOf("Plaintext"), out(9, 0xEE);
  RC4_KEY k(3, key.data());
  k.RC4(0, plain.data(), out.data());
  k.RC4(-5, plain.data(), out.data());
  k.RC4(9, nullptr, out.data());
  k.RC4(9, plain.data(), nullptr);
  EXPECT_EQ(hex(out), std::string(18, 'e'));
  // The stream has not moved.
  k.RC4(9, plain.data(), out.data());
  EXPECT_EQ(hex(out), "bbf316e8d940af0ad3");
}

TEST(Cipher, Rc4WithoutAKeyRunsOnTheUnmixedState) {
  // With the identity permutation the first output bytes follow by hand: x=1 swaps s[1] with
  // itself (y=1) and gives s[2] = 2; x=2, y=3 swaps 2 and 3 and gives s[5] = 5.
  for (int length : {0, -1}) {
    RC4_KEY k(length, bytesOf("abc").data());
    unsigned char zeros[2] = {}, out[2];
    k.RC4(2, zeros, out);
    EXPECT_EQ(out[0], 2);
    EXPECT_EQ(out[1], 5);
  }
  RC4_KEY none(16, nullptr);
  unsigned char zeros[2] = {}, out[2];
  none.RC4(2, zeros, out);
  EXPECT_EQ(hex(out, 2), "0205");
}
