// SHA-256 and AES-CBC throughput of our classes beside direct calls of libcrypto's EVP
// interface, on the same 64 MB in the same run. At the end the ratio ours/direct is printed
// for each pair, from the best of the repetitions of each side. Rates are per CPU second: the
// machine is shared, and wall time would measure the neighbours.
#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include <cstdio>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "common/ZQCipher.h"
#include "common/ZQDigest.h"

namespace {

constexpr size_t kSize = size_t{64} << 20;

const std::vector<unsigned char>& data() {
  static const std::vector<unsigned char> bytes = [] {
    std::vector<unsigned char> v(kSize);
    std::mt19937 rng(42);
    for (auto& b : v) b = static_cast<unsigned char>(rng());
    return v;
  }();
  return bytes;
}

std::vector<unsigned char>& output() {
  static std::vector<unsigned char> out(kSize);
  return out;
}

const unsigned char kKey[32] = {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15, 16,
                                17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32};
const unsigned char kIv[16] = {9, 8, 7, 6, 5, 4, 3, 2, 1, 0, 1, 2, 3, 4, 5, 6};

void BM_Sha256_ZQCommon(benchmark::State& state) {
  const auto& in = data();
  unsigned char digest[32];
  for (auto _ : state) {
    ZQCommonNS::SHA256_CTX ctx;
    ctx.Update(in.data(), in.size());
    ctx.Final(digest);
    benchmark::DoNotOptimize(digest);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kSize));
}

void BM_Sha256_EVP(benchmark::State& state) {
  const auto& in = data();
  unsigned char digest[32];
  for (auto _ : state) {
    EVP_MD_CTX* ctx = EVP_MD_CTX_new();
    EVP_DigestInit_ex(ctx, EVP_sha256(), nullptr);
    EVP_DigestUpdate(ctx, in.data(), in.size());
    EVP_DigestFinal_ex(ctx, digest, nullptr);
    EVP_MD_CTX_free(ctx);
    benchmark::DoNotOptimize(digest);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kSize));
}

void BM_AesCbc_ZQCommon(benchmark::State& state) {
  const auto& in = data();
  auto& out = output();
  int keyLength = static_cast<int>(state.range(0) / 8);
  for (auto _ : state) {
    ZQCommonNS::AES_Encryption aes(ZQCommonNS::AES_MODE_CBC, kKey, keyLength, kIv);
    int bits = aes.blockEncrypt(in.data(), static_cast<int>(kSize * 8), out.data());
    if (bits != static_cast<int>(kSize * 8)) state.SkipWithError("encryption failed");
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kSize));
}

void BM_AesCbc_EVP(benchmark::State& state) {
  const auto& in = data();
  auto& out = output();
  const EVP_CIPHER* cipher = state.range(0) == 128 ? EVP_aes_128_cbc() : EVP_aes_256_cbc();
  for (auto _ : state) {
    EVP_CIPHER_CTX* ctx = EVP_CIPHER_CTX_new();
    EVP_EncryptInit_ex(ctx, cipher, nullptr, kKey, kIv);
    EVP_CIPHER_CTX_set_padding(ctx, 0);
    int n = 0;
    EVP_EncryptUpdate(ctx, out.data(), &n, in.data(), static_cast<int>(kSize));
    EVP_CIPHER_CTX_free(ctx);
    if (n != static_cast<int>(kSize)) state.SkipWithError("encryption failed");
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * kSize));
}

// The console report, and for each benchmark the best bytes per second of its repetitions.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const auto& run : runs) {
      if (run.run_type != Run::RT_Iteration || run.cpu_accumulated_time <= 0) continue;
      double rate = static_cast<double>(run.iterations) * static_cast<double>(kSize) /
                    run.cpu_accumulated_time;
      double& best = m_best[run.run_name.function_name + "/" + run.run_name.args];
      if (rate > best) best = rate;
    }
    ConsoleReporter::ReportRuns(runs);
  }

  void printRatios() const {
    std::printf("\n%-16s %14s %14s %8s\n", "pair (64 MB)", "ours MB/s", "direct MB/s", "ratio");
    printPair("SHA-256", "BM_Sha256_ZQCommon/", "BM_Sha256_EVP/");
    printPair("AES-128-CBC", "BM_AesCbc_ZQCommon/128", "BM_AesCbc_EVP/128");
    printPair("AES-256-CBC", "BM_AesCbc_ZQCommon/256", "BM_AesCbc_EVP/256");
  }

 private:
  void printPair(const char* label, const std::string& ours, const std::string& direct) const {
    auto a = m_best.find(ours);
    auto b = m_best.find(direct);
    if (a == m_best.end() || b == m_best.end() || b->second <= 0) return;
    std::printf("%-16s %14.1f %14.1f %7.3fx\n", label, a->second / 1e6, b->second / 1e6,
                a->second / b->second);
  }

  std::map<std::string, double> m_best;
};

}  // namespace

BENCHMARK(BM_Sha256_ZQCommon)->Unit(benchmark::kMillisecond)->Repetitions(5);
BENCHMARK(BM_Sha256_EVP)->Unit(benchmark::kMillisecond)->Repetitions(5);
BENCHMARK(BM_AesCbc_ZQCommon)
    ->Arg(128)
    ->Arg(256)
    ->Unit(benchmark::kMillisecond)

    ->Repetitions(5);
BENCHMARK(BM_AesCbc_EVP)
    ->Arg(128)
    ->Arg(256)
    ->Unit(benchmark::kMillisecond)

    ->Repetitions(5);

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  data();  // made once, before any timing
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.printRatios();
  benchmark::Shutdown();
  return 0;
}
