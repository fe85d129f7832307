// Opening a zip archive of some hundred files and reading every entry whole, ZQZipFile beside
// libzip on the same file in the same run; also opening alone (the directory). At the end the
// ratio ours/libzip of the best rates is printed for each pair: above 1 means ours is faster.
// Rates are per CPU second, since the machine is shared. libzip checks each entry's CRC-32
// as it reads; ZQZipFile never does.
#include <benchmark/benchmark.h>
#include <unistd.h>
#include <zlib.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "common/ZQZipFile.h"

#if defined(ZQ_HAVE_LIBZIP)
#include <zip.h>
#endif

using namespace ZQCommonNS;

namespace {

constexpr int kFiles = 400;

std::string le16(unsigned v) {
  return std::string{static_cast<char>(v & 0xFF), static_cast<char>((v >> 8) & 0xFF)};
}
std::string le32(uint32_t v) { return le16(v & 0xFFFF) + le16(v >> 16); }

std::string rawDeflate(const std::string& in) {
  z_stream zs{};
  deflateInit2(&zs, 6, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY);
  std::string out(deflateBound(&zs, static_cast<uLong>(in.size())) + 16, '\0');
  zs.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(in.data()));
  zs.avail_in = static_cast<uInt>(in.size());
  zs.next_out = reinterpret_cast<Bytef*>(out.data());
  zs.avail_out = static_cast<uInt>(out.size());
  deflate(&zs, Z_FINISH);
  out.resize(zs.total_out);
  deflateEnd(&zs);
  return out;
}

// A file's content: mostly text of varied length, some incompressible noise, a few empty.
std::string content(std::mt19937& rng, int index) {
  static const char* const kWords[] = {"archive ", "entry ",   "central ", "directory ", "local ",
                                       "header ",  "inflate ", "stream ",  "\n",         "data, "};
  size_t size = 2000 + rng() % 30000;
  if (index % 50 == 0) return std::string();
  std::string out;
  if (index % 7 == 0) {
    out.resize(size);
    for (char& c : out) c = static_cast<char>(rng());
    return out;
  }
  while (out.size() < size) {
    out += kWords[rng() % 10];
    if (rng() % 11 == 0) out += std::to_string(rng() % 100000);
  }
  out.resize(size);
  return out;
}

struct Archive {
  std::string path;
  uint64_t plainBytes = 0;
};

// Writes the archive once: deflated entries (stored when deflate doesn't pay), a directory and
// the end record.
const Archive& archive() {
  static const Archive made = [] {
    Archive a;
    a.path = (std::filesystem::temp_directory_path() /
              ("zqbench-zip-" + std::to_string(getpid()) + ".zip"))
                 .string();
    std::mt19937 rng(7);
    std::string body, directory;
    for (int i = 0; i < kFiles; ++i) {
      std::string name = "dir" + std::to_string(i % 9) + "/file" + std::to_string(i) + ".txt";
      std::string data = content(rng, i);
      std::string packed = rawDeflate(data);
      unsigned method = 8;
      if (packed.size() >= data.size()) {
        packed = data;
        method = 0;
      }
      uint32_t crc = static_cast<uint32_t>(
          ::crc32(0, reinterpret_cast<const Bytef*>(data.data()), static_cast<uInt>(data.size())));
      uint32_t offset = static_cast<uint32_t>(body.size());
      body += "PK\3\4" + le16(20) + le16(0) + le16(method) + le16(0) + le16(0x58CB) + le32(crc) +
              le32(uint32_t(packed.size())) + le32(uint32_t(data.size())) +
              le16(unsigned(name.size())) + le16(0) + name + packed;
      directory += "PK\1\2" + le16(20) + le16(20) + le16(0) + le16(method) + le16(0) +
                   le16(0x58CB) + le32(crc) + le32(uint32_t(packed.size())) +
                   le32(uint32_t(data.size())) + le16(unsigned(name.size())) + le16(0) + le16(0) +
                   le16(0) + le16(0) + le32(0) + le32(offset) + name;
      a.plainBytes += data.size();
    }
    std::string end = "PK\5\6" + le16(0) + le16(0) + le16(kFiles) + le16(kFiles) +
                      le32(uint32_t(directory.size())) + le32(uint32_t(body.size())) + le16(0);
    std::ofstream out(a.path, std::ios::binary | std::ios::trunc);
    out << body << directory << end;
    return a;
  }();
  return made;
}

void BM_ReadAll_ZQZipFile(benchmark::State& state) {
  const Archive& a = archive();
  std::vector<char> buf(65536);
  for (auto _ : state) {
    ZQZipFile zip;
    zip.open(a.path.c_str());
    uint64_t total = 0;
    for (unsigned i = 0; i < zip.getFileEntryCount(); ++i) {
      std::istream* in = zip.getFileEntry(i)->getUncompressedStream(false);
      while (in->read(buf.data(), std::streamsize(buf.size())), in->gcount() > 0) {
        total += static_cast<uint64_t>(in->gcount());
      }
    }
    if (total != a.plainBytes) state.SkipWithError("wrong byte count");
    benchmark::DoNotOptimize(total);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * a.plainBytes));
}

void BM_Open_ZQZipFile(benchmark::State& state) {
  const Archive& a = archive();
  for (auto _ : state) {
    ZQZipFile zip;
    zip.open(a.path.c_str());
    if (zip.getFileEntryCount() != kFiles) state.SkipWithError("wrong entry count");
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kFiles));
}

#if defined(ZQ_HAVE_LIBZIP)
void BM_ReadAll_libzip(benchmark::State& state) {
  const Archive& a = archive();
  std::vector<char> buf(65536);
  for (auto _ : state) {
    int error = 0;
    zip_t* zip = zip_open(a.path.c_str(), ZIP_RDONLY, &error);
    if (!zip) {
      state.SkipWithError("libzip could not open the archive");
      break;
    }
    uint64_t total = 0;
    zip_int64_t count = zip_get_num_entries(zip, 0);
    for (zip_int64_t i = 0; i < count; ++i) {
      zip_file_t* file = zip_fopen_index(zip, static_cast<zip_uint64_t>(i), 0);
      if (!file) continue;
      zip_int64_t n;
      while ((n = zip_fread(file, buf.data(), buf.size())) > 0) total += static_cast<uint64_t>(n);
      zip_fclose(file);
    }
    zip_discard(zip);
    if (total != a.plainBytes) state.SkipWithError("wrong byte count");
    benchmark::DoNotOptimize(total);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * a.plainBytes));
}

void BM_Open_libzip(benchmark::State& state) {
  const Archive& a = archive();
  for (auto _ : state) {
    int error = 0;
    zip_t* zip = zip_open(a.path.c_str(), ZIP_RDONLY, &error);
    if (!zip || zip_get_num_entries(zip, 0) != kFiles) state.SkipWithError("wrong entry count");
    if (zip) zip_discard(zip);
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kFiles));
}
#endif

// The console report, and for each benchmark its best rate per CPU second.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const auto& run : runs) {
      if (run.run_type != Run::RT_Iteration || run.cpu_accumulated_time <= 0) continue;
      double rate = static_cast<double>(run.iterations) / run.cpu_accumulated_time;
      double& best = m_best[run.run_name.function_name];
      if (rate > best) best = rate;
    }
    ConsoleReporter::ReportRuns(runs);
  }

  void printRatios() const {
    const Archive& a = archive();
    std::printf("\narchive: %d files, %.1f MB plain, %.1f MB on disk\n", kFiles,
                static_cast<double>(a.plainBytes) / 1e6,
                static_cast<double>(std::filesystem::file_size(a.path)) / 1e6);
    std::printf("%-22s %14s %14s %8s\n", "pair", "ours /s", "libzip /s", "ratio");
    printPair("open + read all", "BM_ReadAll_ZQZipFile", "BM_ReadAll_libzip");
    printPair("open (directory)", "BM_Open_ZQZipFile", "BM_Open_libzip");
  }

 private:
  void printPair(const char* label, const std::string& ours, const std::string& peer) const {
    auto a = m_best.find(ours);
    auto b = m_best.find(peer);
    if (a == m_best.end() || b == m_best.end() || b->second <= 0) {
      std::printf("%-22s (libzip not measured)\n", label);
      return;
    }
    std::printf("%-22s %14.1f %14.1f %7.3fx\n", label, a->second, b->second, a->second / b->second);
  }

  std::map<std::string, double> m_best;
};

}  // namespace

BENCHMARK(BM_ReadAll_ZQZipFile)->Unit(benchmark::kMillisecond)->Repetitions(5);
#if defined(ZQ_HAVE_LIBZIP)
BENCHMARK(BM_ReadAll_libzip)->Unit(benchmark::kMillisecond)->Repetitions(5);
#endif
BENCHMARK(BM_Open_ZQZipFile)->Unit(benchmark::kMicrosecond)->Repetitions(5);
#if defined(ZQ_HAVE_LIBZIP)
BENCHMARK(BM_Open_libzip)->Unit(benchmark::kMicrosecond)->Repetitions(5);
#endif

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  archive();  // written once, before any timing
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.printRatios();
  benchmark::Shutdown();
  std::error_code ec;
  std::filesystem::remove(archive().path, ec);
  return 0;
}
