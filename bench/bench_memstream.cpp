// ZQMemStream beside std::stringstream on the same job: a fresh stream, the data written in
// 4 KB pieces, then read back in 4 KB pieces. Printed side by side with the ratio
// (stringstream time / ZQMemStream time, so above 1 means ZQMemStream is faster).
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "BenchSupport.h"
#include "common/ZQMemStream.h"

using namespace ZQCommonNS;

namespace {

constexpr size_t kPiece = 4096;

std::string randomBytes(size_t n) {
  std::mt19937 rng(42);
  std::string s(n, '\0');
  for (char& c : s) c = static_cast<char>(rng());
  return s;
}

template <class Stream>
size_t writeThenRead(Stream& stream, const std::string& data, std::vector<char>& sink) {
  for (size_t at = 0; at < data.size(); at += kPiece) {
    const size_t n = std::min(kPiece, data.size() - at);
    stream.write(data.data() + at, static_cast<std::streamsize>(n));
  }
  size_t total = 0;
  while (stream.read(sink.data(), static_cast<std::streamsize>(kPiece)), stream.gcount() > 0) {
    total += static_cast<size_t>(stream.gcount());
  }
  return total;
}

template <class Job>
double secondsPerRun(Job& job, size_t reps) {
  const auto start = std::chrono::steady_clock::now();
  for (size_t i = 0; i < reps; ++i) job();
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
  return took.count() / static_cast<double>(reps);
}

// Best times of rounds that alternate the two jobs, so that a change in the machine's load
// falls on both alike.
template <class JobA, class JobB>
std::pair<double, double> bestSecondsPerRun(JobA&& a, JobB&& b, size_t bytes) {
  const size_t reps = std::max<size_t>(1, (size_t(64) << 20) / std::max<size_t>(bytes, 1) / 4);
  std::pair<double, double> best(1e30, 1e30);
  for (int round = 0; round < 9; ++round) {
    best.first = std::min(best.first, secondsPerRun(a, reps));
    best.second = std::min(best.second, secondsPerRun(b, reps));
  }
  return best;
}

}  // namespace

int main() {
  std::printf("%-8s %16s %16s %10s %14s %14s\n", "size", "ZQMemStream", "stringstream", "ratio",
              "ZQ allocs/run", "std allocs/run");
  const std::pair<const char*, size_t> sizes[] = {
      {"1 KB", size_t(1) << 10}, {"1 MB", size_t(1) << 20}, {"64 MB", size_t(64) << 20}};
  bool allFaster = true;
  for (const auto& [label, size] : sizes) {
    const std::string data = randomBytes(size);
    std::vector<char> sink(kPiece);
    size_t readZQ = 0;
    size_t readStd = 0;

    size_t before = zqbench::allocationCount();
    ZQMemStream probe;
    writeThenRead(probe, data, sink);
    const size_t allocsZQ = zqbench::allocationCount() - before;
    before = zqbench::allocationCount();
    {
      std::stringstream s;
      writeThenRead(s, data, sink);
    }
    const size_t allocsStd = zqbench::allocationCount() - before;

    const auto [zq, st] = bestSecondsPerRun(
        [&] {
          ZQMemStream ms;
          readZQ = writeThenRead(ms, data, sink);
        },
        [&] {
          std::stringstream ss;
          readStd = writeThenRead(ss, data, sink);
        },
        size);
    if (readZQ != size || readStd != size) {
      std::fprintf(stderr, "read back %zu and %zu bytes of %zu\n", readZQ, readStd, size);
      return 1;
    }
    const double ratio = st / zq;
    allFaster = allFaster && ratio > 1.0;
    std::printf("%-8s %13.3f us %13.3f us %9.2fx %14zu %14zu\n", label, zq * 1e6, st * 1e6, ratio,
                allocsZQ, allocsStd);
  }
  std::printf("%s\n", allFaster ? "ZQMemStream is faster at every size"
                                : "ZQMemStream is not faster at every size");
  return 0;
}
