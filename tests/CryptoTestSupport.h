// Helpers of the digest and cipher tests: hex text, random bytes, and the openssl command as
// an independent reference.
#pragma once

#include <openssl/crypto.h>
#include <openssl/provider.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace zqcrypto {

using Bytes = std::vector<unsigned char>;

inline std::string hex(const unsigned char* p, size_t n) {
  static const char digits[] = "0123456789abcdef";
  std::string s;
  for (size_t i = 0; i < n; ++i) {
    s += digits[p[i] >> 4];
    s += digits[p[i] & 15];
  }
  return s;
}

inline std::string hex(const Bytes& b) { return hex(b.data(), b.size()); }

/// Bytes of hex text; spaces are skipped.
inline Bytes unhex(const std::string& text) {
  Bytes out;
  int high = -1;
  for (char c : text) {
    int v = c >= '0' && c <= '9'   ? c - '0'
            : c >= 'a' && c <= 'f' ? c - 'a' + 10
            : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                   : -1;
    if (v < 0) continue;
    if (high < 0) {
      high = v;
    } else {
      out.push_back(static_cast<unsigned char>(high * 16 + v));
      high = -1;
    }
  }
  return out;
}

inline Bytes bytesOf(const std::string& s) { return Bytes(s.begin(), s.end()); }

inline Bytes randomBytes(std::mt19937& rng, size_t n) {
  Bytes b(n);
  for (auto& c : b) c = static_cast<unsigned char>(rng() & 0xFF);
  return b;
}

inline bool haveOpenSslCommand() { return std::system("command -v openssl >/dev/null 2>&1") == 0; }

inline std::filesystem::path tempFile(const std::string& stem) {
  const char* env = std::getenv("ZQ_TEST_TMP");
  std::filesystem::path dir = env ? env : std::filesystem::temp_directory_path();
  std::filesystem::create_directories(dir);
  return dir / (stem + "_" + std::to_string(getpid()) + ".bin");
}

/// Runs `openssl <args>` with `input` on its standard input and collects its standard output; false
/// when the command fails.
inline bool runOpenSsl(const std::string& args, const Bytes& input, Bytes& output) {
  std::filesystem::path file = tempFile("zq_crypto_in");
  {
    std::ofstream f(file, std::ios::binary);
    f.write(reinterpret_cast<const char*>(input.data()),
            static_cast<std::streamsize>(input.size()));
  }
  std::string cmd = "openssl " + args + " < '" + file.string() + "' 2>/dev/null";
  FILE* p = popen(cmd.c_str(), "r");
  if (!p) return false;
  output.clear();
  unsigned char buf[4096];
  size_t n;
  while ((n = fread(buf, 1, sizeof buf, p)) > 0) output.insert(output.end(), buf, buf + n);
  int rc = pclose(p);
  std::filesystem::remove(file);
  return rc == 0;
}

/// Runs `body` with this thread's default library context holding only the "null" provider,
/// so that libcrypto finds no algorithm at all.
template <class F>
inline void withoutAlgorithms(F body) {
  OSSL_LIB_CTX* empty = OSSL_LIB_CTX_new();
  ASSERT_NE(empty, nullptr);
  OSSL_PROVIDER* nullProvider = OSSL_PROVIDER_load(empty, "null");
  OSSL_LIB_CTX* previous = OSSL_LIB_CTX_set0_default(empty);
  body();
  OSSL_LIB_CTX_set0_default(previous);
  OSSL_PROVIDER_unload(nullProvider);
  OSSL_LIB_CTX_free(empty);
}

}  // namespace zqcrypto
