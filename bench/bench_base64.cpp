// Base64 encode and decode of ZQUtil beside OpenSSL's EVP_EncodeBlock/EVP_DecodeBlock, on the
// same bytes. ZQUtil reads from a stream and writes UTF-16 text (and the reverse), OpenSSL works
// on 8-bit buffers, so the ratio includes what the stream interface costs.
#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include <istream>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "BenchSupport.h"
#include "common/ZQUtil.h"

using namespace ZQCommonNS;

namespace {

std::vector<unsigned char> randomBytes(size_t n) {
  std::mt19937 rng(42);
  std::vector<unsigned char> v(n);
  for (auto& b : v) b = static_cast<unsigned char>(rng());
  return v;
}

// Reads a fixed buffer; rewound before each run without copying.
class MemReadBuf : public std::streambuf {
 public:
  MemReadBuf(const unsigned char* data, size_t n)
      : m_data(reinterpret_cast<char*>(const_cast<unsigned char*>(data))), m_n(n) {
    rewind();
  }
  void rewind() { setg(m_data, m_data, m_data + m_n); }

 private:
  char* m_data;
  size_t m_n;
};

// Writes into a buffer reserved ahead, so the timing holds no reallocation.
class MemWriteBuf : public std::streambuf {
 public:
  explicit MemWriteBuf(size_t capacity) : m_buf(capacity) { rewind(); }
  void rewind() { setp(m_buf.data(), m_buf.data() + m_buf.size()); }
  size_t written() const { return static_cast<size_t>(pptr() - pbase()); }

 private:
  std::vector<char> m_buf;
};

void BM_Encode_ZQUtil(benchmark::State& state) {
  auto data = randomBytes(static_cast<size_t>(state.range(0)));
  MemReadBuf buf(data.data(), data.size());
  std::istream in(&buf);
  for (auto _ : state) {
    buf.rewind();
    in.clear();
    UnicodeString text = ZQUtil::encodeBase64(in, static_cast<int>(data.size()));
    benchmark::DoNotOptimize(text.getBuffer());
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void BM_Encode_OpenSSL(benchmark::State& state) {
  auto data = randomBytes(static_cast<size_t>(state.range(0)));
  std::vector<unsigned char> out((data.size() + 2) / 3 * 4 + 1);
  for (auto _ : state) {
    int n = EVP_EncodeBlock(out.data(), data.data(), static_cast<int>(data.size()));
    benchmark::DoNotOptimize(n);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void BM_Decode_ZQUtil(benchmark::State& state) {
  auto data = randomBytes(static_cast<size_t>(state.range(0)));
  MemReadBuf src(data.data(), data.size());
  std::istream in(&src);
  UnicodeString text = ZQUtil::encodeBase64(in, static_cast<int>(data.size()));
  MemWriteBuf sink(data.size() + 16);
  std::ostream out(&sink);
  size_t allocations = zqbench::allocationCount();
  for (auto _ : state) {
    sink.rewind();
    ZQUtil::decodeBase64(text.getBuffer(), text.length(), out);
    benchmark::DoNotOptimize(sink.written());
  }
  state.counters["allocs/iter"] =
      static_cast<double>(zqbench::allocationCount() - allocations) / state.iterations();
  if (sink.written() != data.size()) state.SkipWithError("decoded size differs");
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void BM_Decode_OpenSSL(benchmark::State& state) {
  auto data = randomBytes(static_cast<size_t>(state.range(0)));
  std::vector<unsigned char> text((data.size() + 2) / 3 * 4 + 1);
  int len = EVP_EncodeBlock(text.data(), data.data(), static_cast<int>(data.size()));
  std::vector<unsigned char> out(data.size() + 16);
  for (auto _ : state) {
    int n = EVP_DecodeBlock(out.data(), text.data(), len);
    benchmark::DoNotOptimize(n);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

}  // namespace

BENCHMARK(BM_Encode_ZQUtil)->Arg(64)->Arg(4096)->Arg(1 << 20);
BENCHMARK(BM_Encode_OpenSSL)->Arg(64)->Arg(4096)->Arg(1 << 20);
BENCHMARK(BM_Decode_ZQUtil)->Arg(64)->Arg(4096)->Arg(1 << 20);
BENCHMARK(BM_Decode_OpenSSL)->Arg(64)->Arg(4096)->Arg(1 << 20);

BENCHMARK_MAIN();
