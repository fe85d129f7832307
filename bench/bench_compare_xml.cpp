// The pull parser beside libxml2's xmlTextReader and expat on four generated documents of
// ~50 MB each (attribute-heavy, text-heavy, deeply nested, namespaced). Each parser pulls or
// receives every event and touches what a caller would read: names, namespaces, attribute
// values and text. Our parser reads a std::istream over the same bytes, through a stream
// buffer that points into them. Printed at the end: MB/s of each, the ratios us/libxml2 and
// us/expat, and how far the resident set grew while a document was read.
//
// Speeds are per CPU second, so that other work on the machine weighs less on the ratios.
// ZQ_BENCH_XML_MB sets the document size in MB (default 50), e.g. for a quick profile.
#include <benchmark/benchmark.h>
#include <libxml/xmlreader.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <istream>
#include <map>
#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

#include "BenchSupport.h"
#include "common/ZQError.h"
#include "common/ZQXmlParser.h"

#ifdef ZQ_HAVE_EXPAT
#include <expat.h>
#endif

using namespace ZQCommonNS;

using zqbench::DOC_KIND_COUNT;
using zqbench::Document;
using zqbench::document;
using zqbench::documentSize;
using zqbench::kDocNames;
using zqbench::statusKb;

namespace {

// ---- Memory ----

/// Peak growth of the resident set over a stretch of work: the kernel's high-water mark is
/// reset at the start, so its value at the end is the peak during the work.
class RssWatch {
 public:
  RssWatch() {
    std::ofstream reset("/proc/self/clear_refs");
    reset << "5";
    reset.close();
    m_resetWorked = static_cast<bool>(reset);
    m_start = statusKb("VmRSS");
    m_peak = m_start;
  }
  /// Samples the current set, for kernels that can't reset the mark.
  void sample() {
    if (!m_resetWorked) m_peak = std::max(m_peak, statusKb("VmRSS"));
  }
  /// Peak growth in MB.
  double growthMb() {
    const long peak = m_resetWorked ? statusKb("VmHWM") : std::max(m_peak, statusKb("VmRSS"));
    return static_cast<double>(std::max(0L, peak - m_start)) / 1024.0;
  }

 private:
  bool m_resetWorked = false;
  long m_start = 0;
  long m_peak = 0;
};

constexpr size_t kSampleEvery = 1u << 18;

// ---- Runs ----

/// What each parser saw; the element count is checked against the generator's.
struct Seen {
  size_t elements = 0;
  size_t events = 0;
  size_t touched = 0;  // sum of name numbers, pointer bits and lengths, so nothing is skipped
};

/// A stream buffer over bytes owned elsewhere: the parser reads them where they lie.
class MemoryBuf : public std::streambuf {
 public:
  MemoryBuf(const char* data, size_t size) {
    char* p = const_cast<char*>(data);
    setg(p, p, p + size);
  }

 protected:
  pos_type seekoff(off_type off, std::ios_base::seekdir dir, std::ios_base::openmode) override {
    char* target = dir == std::ios_base::beg   ? eback() + off
                   : dir == std::ios_base::cur ? gptr() + off
                                               : egptr() + off;
    if (target < eback() || target > egptr()) return pos_type(off_type(-1));
    setg(eback(), target, egptr());
    return pos_type(target - eback());
  }
  pos_type seekpos(pos_type pos, std::ios_base::openmode which) override {
    return seekoff(off_type(pos), std::ios_base::beg, which);
  }
};

/// The result of one parse, kept per benchmark for the summary.
struct Summary {
  double mbPerSecond = 0;
  double rssGrowthMb = -1;
  double allocsPerEvent = 0;
  std::string error;
};
std::map<std::string, Summary>& summaries() {
  static std::map<std::string, Summary> table;
  return table;
}

std::string parseWithUs(const Document& doc, Seen& seen, RssWatch& rss) {
  MemoryBuf buf(doc.bytes.data(), doc.bytes.size());
  std::istream in(&buf);
  ZQPtr<ZQXmlParser> parser = ZQXmlParser::createXmlParser();
  parser->setFeature(ZQXmlParser::FEATURE_SKIP_EXTERNAL_DTD, true);
  try {
    parser->setInput(in, UnicodeString(), UnicodeString());
    for (;;) {
      const ZQXmlParser::EventType type = parser->next();
      ++seen.events;
      if ((seen.events & (kSampleEvery - 1)) == 0) rss.sample();
      if (type == ZQXmlParser::END_DOCUMENT) break;
      switch (type) {
        case ZQXmlParser::START_TAG: {
          ++seen.elements;
          seen.touched +=
              static_cast<size_t>(parser->getName()) + static_cast<size_t>(parser->getNamespace());
          const int count = parser->getAttributeCount();
          for (int i = 0; i < count; ++i) {
            seen.touched += static_cast<size_t>(parser->getAttributeName(i)) +
                            static_cast<size_t>(parser->getAttributeNamespace(i)) +
                            static_cast<size_t>(parser->getAttributeValue(i).length());
          }
          break;
        }
        case ZQXmlParser::END_TAG:
          seen.touched +=
              static_cast<size_t>(parser->getName()) + static_cast<size_t>(parser->getNamespace());
          break;
        case ZQXmlParser::TEXT:
          seen.touched += static_cast<size_t>(parser->getText().length());
          break;
        default:
          break;
      }
    }
  } catch (const ZQError& e) {
    std::string text;
    return "ZQError " + std::to_string(e.getErrorCode()) + ": " +
           e.getRawMessage().toUTF8String(text);
  }
  return std::string();
}

size_t touchText(const xmlChar* s) { return s ? std::strlen(reinterpret_cast<const char*>(s)) : 0; }

std::string parseWithLibxml2(const Document& doc, Seen& seen, RssWatch& rss) {
  // HUGE lifts the default nesting limit of 256 that the nested document passes.
  xmlTextReaderPtr reader = xmlReaderForMemory(doc.bytes.data(), static_cast<int>(doc.bytes.size()),
                                               nullptr, nullptr, XML_PARSE_HUGE);
  if (!reader) return "xmlReaderForMemory failed";
  int ret;
  while ((ret = xmlTextReaderRead(reader)) == 1) {
    ++seen.events;
    if ((seen.events & (kSampleEvery - 1)) == 0) rss.sample();
    switch (xmlTextReaderNodeType(reader)) {
      case XML_READER_TYPE_ELEMENT: {
        ++seen.elements;
        seen.touched += reinterpret_cast<uintptr_t>(xmlTextReaderConstLocalName(reader)) +
                        reinterpret_cast<uintptr_t>(xmlTextReaderConstNamespaceUri(reader));
        const bool empty = xmlTextReaderIsEmptyElement(reader) == 1;
        while (xmlTextReaderMoveToNextAttribute(reader) == 1) {
          seen.touched += reinterpret_cast<uintptr_t>(xmlTextReaderConstLocalName(reader)) +
                          reinterpret_cast<uintptr_t>(xmlTextReaderConstNamespaceUri(reader)) +
                          touchText(xmlTextReaderConstValue(reader));
        }
        (void)empty;
        break;
      }
      case XML_READER_TYPE_END_ELEMENT:
        seen.touched += reinterpret_cast<uintptr_t>(xmlTextReaderConstLocalName(reader)) +
                        reinterpret_cast<uintptr_t>(xmlTextReaderConstNamespaceUri(reader));
        break;
      case XML_READER_TYPE_TEXT:
      case XML_READER_TYPE_CDATA:
      case XML_READER_TYPE_WHITESPACE:
      case XML_READER_TYPE_SIGNIFICANT_WHITESPACE:
        seen.touched += touchText(xmlTextReaderConstValue(reader));
        break;
      default:
        break;
    }
  }
  xmlFreeTextReader(reader);
  return ret == 0 ? std::string() : "xmlTextReaderRead failed";
}

#ifdef ZQ_HAVE_EXPAT
struct ExpatState {
  Seen* seen;
  RssWatch* rss;
};

void XMLCALL expatStart(void* data, const XML_Char* name, const XML_Char** atts) {
  ExpatState& st = *static_cast<ExpatState*>(data);
  ++st.seen->elements;
  ++st.seen->events;
  if ((st.seen->events & (kSampleEvery - 1)) == 0) st.rss->sample();
  st.seen->touched += std::strlen(name);
  for (; *atts; atts += 2) st.seen->touched += std::strlen(atts[0]) + std::strlen(atts[1]);
}

void XMLCALL expatEnd(void* data, const XML_Char* name) {
  ExpatState& st = *static_cast<ExpatState*>(data);
  ++st.seen->events;
  st.seen->touched += std::strlen(name);
}

void XMLCALL expatText(void* data, const XML_Char* s, int len) {
  ExpatState& st = *static_cast<ExpatState*>(data);
  ++st.seen->events;
  // The characters are there already; touch the first and count them, as the others do.
  st.seen->touched += static_cast<size_t>(len) + static_cast<unsigned char>(s[0]);
}

std::string parseWithExpat(const Document& doc, Seen& seen, RssWatch& rss) {
  // Namespace processing on, as our parser always resolves prefixes; names come back as
  // "uri local".
  XML_Parser p = XML_ParserCreateNS(nullptr, ' ');
  ExpatState st{&seen, &rss};
  XML_SetUserData(p, &st);
  XML_SetElementHandler(p, expatStart, expatEnd);
  XML_SetCharacterDataHandler(p, expatText);
  constexpr size_t kChunk = 1u << 20;
  std::string error;
  for (size_t off = 0; off < doc.bytes.size(); off += kChunk) {
    const size_t n = std::min(kChunk, doc.bytes.size() - off);
    const bool last = off + n == doc.bytes.size();
    if (XML_Parse(p, doc.bytes.data() + off, static_cast<int>(n), last) != XML_STATUS_OK) {
      error = std::string("expat: ") + XML_ErrorString(XML_GetErrorCode(p));
      break;
    }
  }
  XML_ParserFree(p);
  return error;
}
#endif

enum Peer { PEER_US, PEER_LIBXML2, PEER_EXPAT };
const char* const kPeerNames[] = {"ZQXmlParser", "libxml2Reader", "expat"};

std::string benchName(int peer, int kind) {
  return std::string(kPeerNames[peer]) + "/" + kDocNames[kind];
}

void runParse(benchmark::State& state, int peer, int kind) {
  const Document& doc = document(kind);
  Summary& summary = summaries()[benchName(peer, kind)];
  double rssGrowth = 0;
  size_t events = 0;
  const size_t allocsBefore = zqbench::allocationCount();
  std::string error;
  for (auto _ : state) {
    Seen seen;
    RssWatch rss;
    switch (peer) {
      case PEER_US:
        error = parseWithUs(doc, seen, rss);
        break;
      case PEER_LIBXML2:
        error = parseWithLibxml2(doc, seen, rss);
        break;
#ifdef ZQ_HAVE_EXPAT
      default:
        error = parseWithExpat(doc, seen, rss);
        break;
#endif
    }
    rssGrowth = std::max(rssGrowth, rss.growthMb());
    events += seen.events;
    benchmark::DoNotOptimize(seen.touched);
    if (error.empty() && seen.elements != doc.elements) {
      error =
          "saw " + std::to_string(seen.elements) + " elements of " + std::to_string(doc.elements);
    }
    if (!error.empty()) break;
  }
  if (!error.empty()) {
    summary.error = error;
    state.SkipWithError(error.c_str());
    return;
  }
  const size_t allocs = zqbench::allocationCount() - allocsBefore;
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(doc.bytes.size()));
  state.counters["rssGrowthMB"] = rssGrowth;
  state.counters["allocs/event"] =
      static_cast<double>(allocs) / static_cast<double>(events ? events : 1);
  summary.rssGrowthMb = rssGrowth;
  summary.allocsPerEvent = static_cast<double>(allocs) / static_cast<double>(events ? events : 1);
}

/// Prints as usual and keeps each run's throughput for the summary.
class SummaryReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      auto it = run.counters.find("bytes_per_second");
      if (it == run.counters.end() || run.run_type != Run::RT_Iteration) continue;
      std::string name = run.run_name.function_name;
      if (name.rfind("BM_", 0) == 0) name = name.substr(3);
      summaries()[name].mbPerSecond = it->second.value / (1024.0 * 1024.0);
    }
    ConsoleReporter::ReportRuns(runs);
  }
};

void registerAll() {
  for (int kind = 0; kind < DOC_KIND_COUNT; ++kind) {
    for (int peer = PEER_US; peer <= PEER_EXPAT; ++peer) {
#ifndef ZQ_HAVE_EXPAT
      if (peer == PEER_EXPAT) continue;
#endif
      benchmark::RegisterBenchmark(("BM_" + benchName(peer, kind)).c_str(),
                                   [peer, kind](benchmark::State& st) { runParse(st, peer, kind); })
          ->Unit(benchmark::kMillisecond)
          ->MinTime(1.0);
    }
  }
}

void printSummary() {
  std::printf("\nDocuments of %zu MB. MB/s (peak RSS growth while reading, MB):\n",
              documentSize() >> 20);
  std::printf("%-11s %22s %22s %22s %10s %10s\n", "document", kPeerNames[PEER_US],
              kPeerNames[PEER_LIBXML2], kPeerNames[PEER_EXPAT], "us/libxml2", "us/expat");
  for (int kind = 0; kind < DOC_KIND_COUNT; ++kind) {
    double speed[3] = {0, 0, 0};
    std::printf("%-11s", kDocNames[kind]);
    for (int peer = PEER_US; peer <= PEER_EXPAT; ++peer) {
      auto it = summaries().find(benchName(peer, kind));
      char cell[64];
      if (it == summaries().end()) {
        std::snprintf(cell, sizeof cell, "-");
      } else if (!it->second.error.empty()) {
        std::snprintf(cell, sizeof cell, "failed");
      } else {
        speed[peer] = it->second.mbPerSecond;
        std::snprintf(cell, sizeof cell, "%8.1f (%6.1f)", it->second.mbPerSecond,
                      it->second.rssGrowthMb);
      }
      std::printf(" %22s", cell);
    }
    auto ratio = [](double a, double b) { return a > 0 && b > 0 ? a / b : 0.0; };
    std::printf(" %9.2fx %9.2fx\n", ratio(speed[0], speed[1]), ratio(speed[0], speed[2]));
  }
  std::printf("Goal: us/libxml2 >= 1.0x, us/expat >= 0.5x.\n");
  for (const auto& [name, summary] : summaries()) {
    if (!summary.error.empty()) std::printf("%s failed: %s\n", name.c_str(), summary.error.c_str());
  }
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  LIBXML_TEST_VERSION
  registerAll();
  SummaryReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  printSummary();
  xmlCleanupParser();
  benchmark::Shutdown();
  return 0;
}
