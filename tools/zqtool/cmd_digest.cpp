// zqtool digest <md5|sha1|sha256|sha384|sha512> <file|->...: hex digest and name of each input,
// as the *sum tools print them.
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <vector>

#include "ZQToolCommand.h"

using namespace ZQCommonNS;

namespace {

// One face for the five contexts: feed bytes, then take the digest.
struct Hasher {
  std::function<void(const unsigned char*, size_t)> update;
  std::function<void(unsigned char*)> final;
  size_t size;
};

template <class Ctx>
Hasher makeHasher(std::shared_ptr<Ctx> ctx, size_t size) {
  return Hasher{[ctx](const unsigned char* p, size_t n) { ctx->Update(p, n); },
                [ctx](unsigned char* out) { ctx->Final(out); }, size};
}

bool makeHasherFor(const std::string& name, Hasher& hasher) {
  if (name == "md5") {
    hasher = makeHasher(std::make_shared<MD5_CTX>(), 16);
  } else if (name == "sha1") {
    auto ctx = std::make_shared<SHA1_CTX>();
    // SHA-1 takes lengths as unsigned; the reads below stay far smaller.
    hasher = Hasher{
        [ctx](const unsigned char* p, size_t n) { ctx->Update(p, static_cast<unsigned>(n)); },
        [ctx](unsigned char* out) { ctx->Final(out); }, 20};
  } else if (name == "sha256") {
    hasher = makeHasher(std::make_shared<SHA256_CTX>(), 32);
  } else if (name == "sha384") {
    hasher = makeHasher(std::make_shared<SHA384_CTX>(), 48);
  } else if (name == "sha512") {
    hasher = makeHasher(std::make_shared<SHA512_CTX>(), 64);
  } else {
    return false;
  }
  return true;
}

// Feeds the whole stream; false on a read error.
bool feed(std::istream& in, Hasher& hasher) {
  std::vector<char> buf(1 << 16);
  while (in) {
    in.read(buf.data(), static_cast<std::streamsize>(buf.size()));
    std::streamsize n = in.gcount();
    if (n > 0) hasher.update(reinterpret_cast<const unsigned char*>(buf.data()), size_t(n));
  }
  return !in.bad();
}

int runDigest(const zqtool::Args& args) {
  if (args.size() < 2) {
    std::cerr << "usage: zqtool digest <md5|sha1|sha256|sha384|sha512> <file|->...\n";
    return 2;
  }
  Hasher probe;
  if (!makeHasherFor(args[0], probe)) {
    std::cerr << "zqtool digest: unknown algorithm '" << args[0]
              << "' (md5, sha1, sha256, sha384, sha512)\n";
    return 2;
  }
  int status = 0;
  for (size_t i = 1; i < args.size(); ++i) {
    const std::string& name = args[i];
    Hasher hasher;
    makeHasherFor(args[0], hasher);
    bool ok;
    std::string reason;
    if (name == "-") {
      ok = feed(std::cin, hasher);
      if (!ok) reason = "read error";
    } else {
      std::error_code ec;
      if (std::filesystem::is_directory(name, ec)) {
        ok = false;
        reason = "is a directory";
      } else {
        std::ifstream in(name, std::ios::binary);
        ok = in.is_open() && feed(in, hasher);
        if (!ok) reason = std::strerror(errno ? errno : EIO);
      }
    }
    if (!ok) {
      std::cerr << "zqtool digest: cannot read '" << name << "': " << reason << "\n";
      status = 1;
      continue;
    }
    unsigned char digest[64];
    hasher.final(digest);
    static const char hexDigits[] = "0123456789abcdef";
    std::string text;
    for (size_t k = 0; k < hasher.size; ++k) {
      text += hexDigits[digest[k] >> 4];
      text += hexDigits[digest[k] & 15];
    }
    std::cout << text << "  " << name << "\n";
  }
  return status;
}

zqtool::Register reg("digest", "digest <algorithm> <file|->...",
                     "print the md5, sha1, sha256, sha384 or sha512 digest of each file",
                     runDigest);

}  // namespace
