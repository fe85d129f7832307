#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "CryptoTestSupport.h"
#include "common/ZQDigest.h"

using namespace ZQCommonNS;
using namespace zqcrypto;

namespace {

// One face for the five contexts, so the generic checks run on each.
template <class Ctx>
struct Algo;

template <>
struct Algo<MD5_CTX> {
  static constexpr size_t size = 16;
  static constexpr const char* cli = "md5";
  static void update(MD5_CTX& c, const unsigned char* p, size_t n) { c.Update(p, n); }
  static void final(MD5_CTX& c, unsigned char* out) { c.Final(out); }
};
template <>
struct Algo<SHA1_CTX> {
  static constexpr size_t size = 20;
  static constexpr const char* cli = "sha1";
  static void update(SHA1_CTX& c, const unsigned char* p, size_t n) {
    ASSERT_EQ(c.Update(p, static_cast<unsigned>(n)), 0);
  }
  static void final(SHA1_CTX& c, unsigned char* out) { ASSERT_EQ(c.Final(out), 0); }
};
template <>
struct Algo<SHA256_CTX> {
  static constexpr size_t size = 32;
  static constexpr const char* cli = "sha256";
  static void update(SHA256_CTX& c, const unsigned char* p, size_t n) { c.Update(p, n); }
  static void final(SHA256_CTX& c, unsigned char* out) { c.Final(out); }
};
template <>
struct Algo<SHA384_CTX> {
  static constexpr size_t size = 48;
  static constexpr const char* cli = "sha384";
  static void update(SHA384_CTX& c, const unsigned char* p, size_t n) { c.Update(p, n); }
  static void final(SHA384_CTX& c, unsigned char* out) { c.Final(out); }
};
template <>
struct Algo<SHA512_CTX> {
  static constexpr size_t size = 64;
  static constexpr const char* cli = "sha512";
  static void update(SHA512_CTX& c, const unsigned char* p, size_t n) { c.Update(p, n); }
  static void final(SHA512_CTX& c, unsigned char* out) { c.Final(out); }
};

template <class Ctx>
std::string finalHex(Ctx& c) {
  unsigned char out[64];
  Algo<Ctx>::final(c, out);
  return hex(out, Algo<Ctx>::size);
}

template <class Ctx>
std::string digestOf(const unsigned char* p, size_t n) {
  Ctx c;
  Algo<Ctx>::update(c, p, n);
  return finalHex(c);
}

template <class Ctx>
std::string digestOf(const std::string& s) {
  return digestOf<Ctx>(reinterpret_cast<const unsigned char*>(s.data()), s.size());
}

// One million "a", fed in pieces of 1000 as the standard's example suggests.
template <class Ctx>
std::string millionA() {
  Ctx c;
  std::string chunk(1000, 'a');
  for (int i = 0; i < 1000; ++i)
    Algo<Ctx>::update(c, reinterpret_cast<const unsigned char*>(chunk.data()), chunk.size());
  return finalHex(c);
}

const char* const k448 = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";
const char* const k896 =
    "abcdefghbcdefghicdefghijdefghijkefghijklfghijklmghijklmnhijklmnoijklmnopjklmnopqklmnopqrlmnopq"
    "rsmnopqrstnopqrstu";

// Feeding random pieces gives the same digest as one call.
template <class Ctx>
void checkRandomSplits() {
  std::mt19937 rng(1234);
  for (int round = 0; round < 40; ++round) {
    Bytes data = randomBytes(rng, rng() % 3000);
    std::string whole = digestOf<Ctx>(data.data(), data.size());
    Ctx c;
    size_t pos = 0;
    while (pos < data.size()) {
      size_t n = std::min<size_t>(data.size() - pos, rng() % 200);
      Algo<Ctx>::update(c, data.data() + pos, n);
      pos += n;
    }
    EXPECT_EQ(finalHex(c), whole) << "length " << data.size();
  }
}

// A copy goes on from the same point, and the two then part ways.
template <class Ctx>
void checkCopies() {
  const auto* abc = reinterpret_cast<const unsigned char*>("abc");
  const auto* def = reinterpret_cast<const unsigned char*>("def");
  const auto* xyz = reinterpret_cast<const unsigned char*>("xyz");
  Ctx a;
  Algo<Ctx>::update(a, abc, 3);
  Ctx b(a);
  Ctx c;
  Algo<Ctx>::update(c, xyz, 3);  // overwritten by the assignment
  c = a;
  Algo<Ctx>::update(a, def, 3);
  Algo<Ctx>::update(b, xyz, 3);
  EXPECT_EQ(finalHex(a), digestOf<Ctx>("abcdef"));
  EXPECT_EQ(finalHex(b), digestOf<Ctx>("abcxyz"));
  EXPECT_EQ(finalHex(c), digestOf<Ctx>("abc"));

  Ctx d;
  Algo<Ctx>::update(d, abc, 3);
  Ctx& same = d;
  d = same;
  Algo<Ctx>::update(d, def, 3);
  EXPECT_EQ(finalHex(d), digestOf<Ctx>("abcdef"));
}

// The openssl command on random inputs of random lengths, block edges included.
template <class Ctx>
void checkAgainstCommand() {
  if (!haveOpenSslCommand()) GTEST_SKIP() << "openssl command not installed";
  std::mt19937 rng(99);
  std::vector<size_t> lengths = {0, 1, 55, 56, 63, 64, 65, 111, 112, 127, 128, 129};
  for (int i = 0; i < 12; ++i) lengths.push_back(rng() % 70000);
  for (size_t n : lengths) {
    Bytes data = randomBytes(rng, n);
    Bytes out;
    ASSERT_TRUE(runOpenSsl(std::string("dgst -") + Algo<Ctx>::cli + " -r", data, out));
    std::string text(out.begin(), out.end());
    EXPECT_EQ(digestOf<Ctx>(data.data(), data.size()), text.substr(0, text.find(' ')))
        << "length " << n;
  }
}

// Final hands out the digest and leaves the context ready for another message.
template <class Ctx>
void checkFinalStartsAfresh() {
  Ctx c;
  Algo<Ctx>::update(c, reinterpret_cast<const unsigned char*>("first"), 5);
  EXPECT_EQ(finalHex(c), digestOf<Ctx>("first"));
  Algo<Ctx>::update(c, reinterpret_cast<const unsigned char*>("second"), 6);
  EXPECT_EQ(finalHex(c), digestOf<Ctx>("second"));
  EXPECT_EQ(finalHex(c), digestOf<Ctx>(""));
}

// A null pointer adds nothing, and a null output neither writes nor ends the message.
template <class Ctx>
void checkNulls() {
  Ctx c;
  Algo<Ctx>::update(c, reinterpret_cast<const unsigned char*>("ab"), 2);
  c.Update(nullptr, 100);
  c.Final(nullptr);
  Algo<Ctx>::update(c, reinterpret_cast<const unsigned char*>("c"), 1);
  EXPECT_EQ(finalHex(c), digestOf<Ctx>("abc"));
}

}  // namespace

TEST(Digest, Md5Rfc1321Suite) {
  EXPECT_EQ(digestOf<MD5_CTX>(""), "d41d8cd98f00b204e9800998ecf8427e");
  EXPECT_EQ(digestOf<MD5_CTX>("a"), "0cc175b9c0f1b6a831c399e269772661");
  EXPECT_EQ(digestOf<MD5_CTX>("abc"), "900150983cd24fb0d6963f7d28e17f72");
  EXPECT_EQ(digestOf<MD5_CTX>("message digest"), "f96b697d7cb7938d525a2f31aaf161d0");
  EXPECT_EQ(digestOf<MD5_CTX>("abcdefghijklmnopqrstuvwxyz"), "c3fcd3d76192e4007dfb496cca67e13b");
  EXPECT_EQ(digestOf<MD5_CTX>("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"),
            "d174ab98d277d9f5a5611c2c9f419d9f");
  EXPECT_EQ(digestOf<MD5_CTX>("1234567890123456789012345678901234567890123456789012345678901234"
                              "5678901234567890"),
            "57edf4a22be3c955ac49da2e2107b67a");
}

TEST(Digest, Sha1Fips180Examples) {
  EXPECT_EQ(digestOf<SHA1_CTX>("abc"), "a9993e364706816aba3e25717850c26c9cd0d89d");
  EXPECT_EQ(digestOf<SHA1_CTX>(k448), "84983e441c3bd26ebaae4aa1f95129e5e54670f1");
  EXPECT_EQ(millionA<SHA1_CTX>(), "34aa973cd4c4daa4f61eeb2bdbad27316534016f");
  EXPECT_EQ(digestOf<SHA1_CTX>(""), "da39a3ee5e6b4b0d3255bfef95601890afd80709");
}

TEST(Digest, Sha256Fips180Examples) {
  EXPECT_EQ(digestOf<SHA256_CTX>("abc"),
            "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(digestOf<SHA256_CTX>(k448),
            "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
  EXPECT_EQ(millionA<SHA256_CTX>(),
            "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
  EXPECT_EQ(digestOf<SHA256_CTX>(""),
            "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

TEST(Digest, Sha384Fips180Examples) {
  EXPECT_EQ(
      digestOf<SHA384_CTX>("abc"),
      "cb00753f45a35e8bb5a03d699ac65007272c32ab0eded1631a8b605a43ff5bed8086072ba1e7cc2358baeca1"
      "34c825a7");
  EXPECT_EQ(
      digestOf<SHA384_CTX>(k896),
      "09330c33f71147e83d192fc782cd1b4753111b173b3b05d22fa08086e3b0f712fcc7c71a557e2db966c3e9fa"
      "91746039");
  EXPECT_EQ(
      millionA<SHA384_CTX>(),
      "9d0e1809716474cb086e834e310a4a1ced149e9c00f248527972cec5704c2a5b07b8b3dc38ecc4ebae97ddd8"
      "7f3d8985");
}

TEST(Digest, Sha512Fips180Examples) {
  EXPECT_EQ(
      digestOf<SHA512_CTX>("abc"),
      "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a2192992a274fc1a836ba3c23"
      "a3feebbd454d4423643ce80e2a9ac94fa54ca49f");
  EXPECT_EQ(
      digestOf<SHA512_CTX>(k896),
      "8e959b75dae313da8cf4f72814fc143f8f7779c6eb9f7fa17299aeadb6889018501d289e4900f7e4331b99de"
      "c4b5433ac7d329eeb6dd26545e96e55b874be909");
  EXPECT_EQ(
      millionA<SHA512_CTX>(),
      "e718483d0ce769644e2e42c7bc15b4638e1f98b13b2044285632a803afa973ebde0ff244877ea60a4cb0432c"
      "e577c31beb009c5c2c49aa2e4eadb217ad8cc09b");
}

TEST(Digest, Md5RandomSplitsEqualOneShot) { checkRandomSplits<MD5_CTX>(); }
TEST(Digest, Sha1RandomSplitsEqualOneShot) { checkRandomSplits<SHA1_CTX>(); }
TEST(Digest, Sha256RandomSplitsEqualOneShot) { checkRandomSplits<SHA256_CTX>(); }
TEST(Digest, Sha384RandomSplitsEqualOneShot) { checkRandomSplits<SHA384_CTX>(); }
TEST(Digest, Sha512RandomSplitsEqualOneShot) { checkRandomSplits<SHA512_CTX>(); }

TEST(Digest, Md5CopiesContinueIndependently) { checkCopies<MD5_CTX>(); }
TEST(Digest, Sha1CopiesContinueIndependently) { checkCopies<SHA1_CTX>(); }
TEST(Digest, Sha256CopiesContinueIndependently) { checkCopies<SHA256_CTX>(); }
TEST(Digest, Sha384CopiesContinueIndependently) { checkCopies<SHA384_CTX>(); }
TEST(Digest, Sha512CopiesContinueIndependently) { checkCopies<SHA512_CTX>(); }

TEST(Digest, Md5MatchesOpenSslCommand) { checkAgainstCommand<MD5_CTX>(); }
TEST(Digest, Sha1MatchesOpenSslCommand) { checkAgainstCommand<SHA1_CTX>(); }
TEST(Digest, Sha256MatchesOpenSslCommand) { checkAgainstCommand<SHA256_CTX>(); }
TEST(Digest, Sha384MatchesOpenSslCommand) { checkAgainstCommand<SHA384_CTX>(); }
TEST(Digest, Sha512MatchesOpenSslCommand) { checkAgainstCommand<SHA512_CTX>(); }

TEST(Digest, Md5FinalStartsANewMessage) { checkFinalStartsAfresh<MD5_CTX>(); }
TEST(Digest, Sha256FinalStartsANewMessage) { checkFinalStartsAfresh<SHA256_CTX>(); }
TEST(Digest, Sha384FinalStartsANewMessage) { checkFinalStartsAfresh<SHA384_CTX>(); }
TEST(Digest, Sha512FinalStartsANewMessage) { checkFinalStartsAfresh<SHA512_CTX>(); }

TEST(Digest, Md5NullPointersChangeNothing) { checkNulls<MD5_CTX>(); }
TEST(Digest, Sha256NullPointersChangeNothing) { checkNulls<SHA256_CTX>(); }
TEST(Digest, Sha384NullPointersChangeNothing) { checkNulls<SHA384_CTX>(); }
TEST(Digest, Sha512NullPointersChangeNothing) { checkNulls<SHA512_CTX>(); }

TEST(Digest, Sha1StatusesAreZeroOnSuccess) {
  SHA1_CTX c;
  EXPECT_EQ(c.Update(reinterpret_cast<const unsigned char*>("abc"), 3), SHA1_CTX::SHA_SUCCESS);
  unsigned char out[20];
  EXPECT_EQ(c.Final(out), SHA1_CTX::SHA_SUCCESS);
  EXPECT_EQ(hex(out, 20), "a9993e364706816aba3e25717850c26c9cd0d89d");
}

TEST(Digest, Sha1FinalRepeatsTheSameDigest) {
  SHA1_CTX c;
  c.Update(reinterpret_cast<const unsigned char*>("abc"), 3);
  unsigned char first[20], second[20];
  ASSERT_EQ(c.Final(first), 0);
  ASSERT_EQ(c.Final(second), 0);
  EXPECT_EQ(hex(second, 20), hex(first, 20));
  EXPECT_EQ(hex(first, 20), "a9993e364706816aba3e25717850c26c9cd0d89d");
}

TEST(Digest, Sha1UpdateAfterFinalIsHeldAndReturnedByFinalAtOnce) {
  SHA1_CTX c;
  unsigned char out[20];
  ASSERT_EQ(c.Final(out), 0);
  int status = c.Update(reinterpret_cast<const unsigned char*>("x"), 1);
  EXPECT_NE(status, 0);
  EXPECT_EQ(status, SHA1_CTX::SHA_STATE_ERROR);
  unsigned char again[20];
  std::memset(again, 0xEE, sizeof again);
  EXPECT_EQ(c.Final(again), status);
  // Returned at once: nothing was written.
  EXPECT_EQ(hex(again, 20), std::string(40, 'e'));
  // The held status stays, and a copy carries it.
  EXPECT_EQ(c.Update(reinterpret_cast<const unsigned char*>("y"), 1), status);
  SHA1_CTX copy(c);
  EXPECT_EQ(copy.Final(again), status);
  SHA1_CTX assigned;
  assigned = c;
  EXPECT_EQ(assigned.Final(again), status);
}

TEST(Digest, Sha1NullPointersGiveANullStatusWithoutSpoilingTheMessage) {
  SHA1_CTX c;
  EXPECT_EQ(c.Update(reinterpret_cast<const unsigned char*>("ab"), 2), 0);
  EXPECT_EQ(c.Update(nullptr, 5), SHA1_CTX::SHA_NULL);
  EXPECT_EQ(c.Update(nullptr, 0), SHA1_CTX::SHA_SUCCESS);
  EXPECT_EQ(c.Final(nullptr), SHA1_CTX::SHA_NULL);
  EXPECT_EQ(c.Update(reinterpret_cast<const unsigned char*>("c"), 1), 0);
  unsigned char out[20];
  EXPECT_EQ(c.Final(out), 0);
  EXPECT_EQ(hex(out, 20), "a9993e364706816aba3e25717850c26c9cd0d89d");
}

TEST(Digest, Sha1WithoutAnEngineHoldsAFailure) {
  withoutAlgorithms([] {
    SHA1_CTX c;
    int status = c.Update(reinterpret_cast<const unsigned char*>("abc"), 3);
    EXPECT_NE(status, 0);
    unsigned char out[20];
    EXPECT_EQ(c.Final(out), status);
  });
}

TEST(Digest, ContextsWithoutAnEngineGiveZeroDigestsAndDoNotCrash) {
  withoutAlgorithms([] {
    MD5_CTX md5;
    SHA256_CTX sha256;
    SHA512_CTX sha512;
    MD5_CTX md5Copy(md5);
    md5.Update(reinterpret_cast<const unsigned char*>("abc"), 3);
    sha256.Update(reinterpret_cast<const unsigned char*>("abc"), 3);
    sha512.Update(reinterpret_cast<const unsigned char*>("abc"), 3);
    unsigned char out[64];
    std::memset(out, 0xEE, sizeof out);
    md5.Final(out);
    EXPECT_EQ(hex(out, 16), std::string(32, '0'));
    sha256.Final(out);
    EXPECT_EQ(hex(out, 32), std::string(64, '0'));
    sha512.Final(out);
    EXPECT_EQ(hex(out, 64), std::string(128, '0'));
    md5Copy = md5;
    md5Copy.Final(out);
    EXPECT_EQ(hex(out, 16), std::string(32, '0'));
  });
  // Back with the engine, contexts work again.
  EXPECT_EQ(digestOf<MD5_CTX>("abc"), "900150983cd24fb0d6963f7d28e17f72");
}

namespace {

struct BlockSha256 : SHA256_CTX {
  using SHA256_CTX::Transform;
};
struct BlockSha512 : SHA512_CTX {
  using SHA512_CTX::Last;
  using SHA512_CTX::Transform;
};

}  // namespace

TEST(Digest, Sha256TransformAddsOneWholeBlock) {
  std::mt19937 rng(7);
  Bytes data = randomBytes(rng, 64 * 5 + 13);
  BlockSha256 c;
  for (int i = 0; i < 5; ++i) c.Transform(data.data() + 64 * i);
  c.Update(data.data() + 64 * 5, 13);
  EXPECT_EQ(finalHex<SHA256_CTX>(c), digestOf<SHA256_CTX>(data.data(), data.size()));
}

TEST(Digest, Sha512TransformAddsOneWholeBlock) {
  std::mt19937 rng(8);
  Bytes data = randomBytes(rng, 128 * 3 + 100);
  BlockSha512 c;
  c.Update(data.data(), 100);
  for (int i = 0; i < 3; ++i) c.Transform(data.data() + 100 + 128 * i);
  EXPECT_EQ(finalHex<SHA512_CTX>(c), digestOf<SHA512_CTX>(data.data(), data.size()));
}

TEST(Digest, Sha512LastClosesTheMessageForFinal) {
  BlockSha512 c;
  c.Update(reinterpret_cast<const unsigned char*>("abc"), 3);
  c.Last();
  c.Last();  // closing twice changes nothing
  EXPECT_EQ(finalHex<SHA512_CTX>(c), digestOf<SHA512_CTX>("abc"));
  // Bytes after Last start a new message.
  c.Update(reinterpret_cast<const unsigned char*>("ab"), 2);
  c.Last();
  c.Update(reinterpret_cast<const unsigned char*>("xyz"), 3);
  EXPECT_EQ(finalHex<SHA512_CTX>(c), digestOf<SHA512_CTX>("xyz"));
}
