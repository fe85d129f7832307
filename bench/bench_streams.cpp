// gzip and raw inflate reading through the library's streams beside zlib used directly, on the
// same ~64 MB of compressible text, read 64 KB at a time. The ratios (library speed / zlib
// speed) print at the end. The file form reads through gzread with 32 KB zlib buffers; the
// ratio against gzread with those same buffers shows what the stream itself costs.
#include <benchmark/benchmark.h>
#include <unistd.h>
#include <zlib.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "BenchSupport.h"
#include "common/ZQGzipStream.h"
#include "common/ZQInflaterStream.h"

using namespace ZQCommonNS;

namespace {

constexpr size_t kDataSize = 64u << 20;
constexpr size_t kReadChunk = 64u << 10;

/// Words and numbers in a random order: compresses about 3:1, like markup.
std::string compressibleText(size_t size) {
  static const char* const kWords[] = {"<para>",   "</para>", "stream ", "buffer ",    "gzip ",
                                       "inflate ", "header ", "member ", "\n",         "window ",
                                       "data, ",   "zlib ",   "flush ",  "font-size=", "12pt "};
  std::mt19937 rng(1);
  std::string out;
  out.reserve(size + 32);
  while (out.size() < size) {
    out += kWords[rng() % (sizeof kWords / sizeof kWords[0])];
    if (rng() % 5 == 0) out += std::to_string(rng() % 1000000);
  }
  out.resize(size);
  return out;
}

struct Fixture {
  std::string text;
  std::string gzipPath;
  std::string gzipBytes;
  std::string rawDeflate;

  Fixture() {
    text = compressibleText(kDataSize);
    const char* dir = std::getenv("TMPDIR");
    gzipPath = std::string(dir && *dir ? dir : "/tmp") + "/zq_bench_streams_" +
               std::to_string(getpid()) + ".gz";
    gzFile f = gzopen(gzipPath.c_str(), "wb6");
    gzwrite(f, text.data(), static_cast<unsigned>(text.size()));
    gzclose(f);
    std::ifstream in(gzipPath, std::ios::binary);
    gzipBytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());

    z_stream zs{};
    deflateInit2(&zs, 6, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY);
    rawDeflate.resize(deflateBound(&zs, text.size()));
    zs.next_in = reinterpret_cast<Bytef*>(text.data());
    zs.avail_in = static_cast<uInt>(text.size());
    zs.next_out = reinterpret_cast<Bytef*>(rawDeflate.data());
    zs.avail_out = static_cast<uInt>(rawDeflate.size());
    deflate(&zs, Z_FINISH);
    rawDeflate.resize(zs.total_out);
    deflateEnd(&zs);
  }
  ~Fixture() { std::remove(gzipPath.c_str()); }
};

Fixture& fixture() {
  static Fixture f;
  return f;
}

size_t readStream(std::istream& in, std::vector<char>& buf) {
  size_t total = 0;
  while (in.read(buf.data(), static_cast<std::streamsize>(buf.size())) || in.gcount() > 0) {
    total += static_cast<size_t>(in.gcount());
  }
  return total;
}

void finish(benchmark::State& state, size_t got) {
  if (got != kDataSize) state.SkipWithError("wrong size read");
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(kDataSize));
}

void BM_GzipFile_ZQGzipIStream(benchmark::State& state) {
  Fixture& f = fixture();
  std::vector<char> buf(kReadChunk);
  size_t got = 0;
  for (auto _ : state) {
    ZQGzipIStream in(f.gzipPath.c_str());
    got = readStream(in, buf);
  }
  finish(state, got);
}

void BM_GzipFile_gzread(benchmark::State& state) {
  Fixture& f = fixture();
  std::vector<char> buf(kReadChunk);
  size_t got = 0;
  for (auto _ : state) {
    gzFile file = gzopen(f.gzipPath.c_str(), "rb");
    got = 0;
    int n;
    while ((n = gzread(file, buf.data(), static_cast<unsigned>(buf.size()))) > 0) {
      got += static_cast<size_t>(n);
    }
    gzclose(file);
  }
  finish(state, got);
}

// gzread with the 32 KB buffers the library asks zlib for, to show what the stream costs over
// the same zlib settings.
void BM_GzipFile_gzread32k(benchmark::State& state) {
  Fixture& f = fixture();
  std::vector<char> buf(kReadChunk);
  size_t got = 0;
  for (auto _ : state) {
    gzFile file = gzopen(f.gzipPath.c_str(), "rb");
    gzbuffer(file, 32768);
    got = 0;
    int n;
    while ((n = gzread(file, buf.data(), static_cast<unsigned>(buf.size()))) > 0) {
      got += static_cast<size_t>(n);
    }
    gzclose(file);
  }
  finish(state, got);
}

void BM_GzipStream_ZQGzipIStream(benchmark::State& state) {
  Fixture& f = fixture();
  std::vector<char> buf(kReadChunk);
  size_t got = 0;
  for (auto _ : state) {
    std::istringstream source(f.gzipBytes);
    ZQGzipIStream in(source);
    got = readStream(in, buf);
  }
  finish(state, got);
}

void BM_Inflater_ZQInflaterStream(benchmark::State& state) {
  Fixture& f = fixture();
  std::vector<char> buf(kReadChunk);
  size_t got = 0;
  for (auto _ : state) {
    ZQInflaterStream in(f.rawDeflate.data(), f.rawDeflate.size(), false);
    got = readStream(in, buf);
  }
  finish(state, got);
}

void BM_Inflater_zlibInflate(benchmark::State& state) {
  Fixture& f = fixture();
  std::vector<char> buf(kReadChunk);
  size_t got = 0;
  for (auto _ : state) {
    z_stream zs{};
    inflateInit2(&zs, -15);
    zs.next_in = reinterpret_cast<Bytef*>(f.rawDeflate.data());
    zs.avail_in = static_cast<uInt>(f.rawDeflate.size());
    got = 0;
    int ret;
    do {
      zs.next_out = reinterpret_cast<Bytef*>(buf.data());
      zs.avail_out = static_cast<uInt>(buf.size());
      ret = inflate(&zs, Z_NO_FLUSH);
      got += buf.size() - zs.avail_out;
    } while (ret == Z_OK);
    inflateEnd(&zs);
  }
  finish(state, got);
}

/// Prints as usual and keeps each benchmark's bytes per second for the ratios.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  std::map<std::string, double> speed;
  std::set<std::string> medians;
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      auto it = run.counters.find("bytes_per_second");
      if (it == run.counters.end()) continue;
      // With repetitions the median stands for the benchmark; otherwise the one run does.
      if (run.run_type == Run::RT_Iteration && !medians.count(run.run_name.function_name)) {
        speed[run.run_name.function_name] = it->second.value;
      } else if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median") {
        speed[run.run_name.function_name] = it->second.value;
        medians.insert(run.run_name.function_name);
      }
    }
    ConsoleReporter::ReportRuns(runs);
  }
};

}  // namespace

BENCHMARK(BM_GzipFile_ZQGzipIStream)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_GzipFile_gzread)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_GzipFile_gzread32k)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_GzipStream_ZQGzipIStream)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_Inflater_ZQInflaterStream)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_Inflater_zlibInflate)->Unit(benchmark::kMillisecond)->MinTime(2.0);

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  auto ratio = [&](const char* ours, const char* peer) {
    auto a = reporter.speed.find(ours), b = reporter.speed.find(peer);
    if (a == reporter.speed.end() || b == reporter.speed.end() || b->second <= 0) return;
    std::printf("%-30s / %-24s = %.3fx\n", ours, peer, a->second / b->second);
  };
  std::printf("\nRatios of throughput, library / zlib directly (target >= 0.95x):\n");
  ratio("BM_GzipFile_ZQGzipIStream", "BM_GzipFile_gzread");
  ratio("BM_GzipFile_ZQGzipIStream", "BM_GzipFile_gzread32k");
  ratio("BM_GzipStream_ZQGzipIStream", "BM_GzipFile_gzread");
  ratio("BM_Inflater_ZQInflaterStream", "BM_Inflater_zlibInflate");
  benchmark::Shutdown();
  return 0;
}
