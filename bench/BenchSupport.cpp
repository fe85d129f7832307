#include "BenchSupport.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <random>
#include <string>

// The program interposes malloc, so every heap allocation of the process is counted: those of
// the library, of ICU (which allocates through malloc) and of operator new.
extern "C" {
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
void* __libc_memalign(size_t, size_t);
}

namespace {
std::atomic<size_t> g_allocations{0};
}

namespace zqbench {
size_t allocationCount() { return g_allocations.load(std::memory_order_relaxed); }
}  // namespace zqbench

extern "C" {
void* malloc(size_t size) {
  g_allocations.fetch_add(1, std::memory_order_relaxed);
  return __libc_malloc(size);
}
void* calloc(size_t n, size_t size) {
  g_allocations.fetch_add(1, std::memory_order_relaxed);
  return __libc_calloc(n, size);
}
void* realloc(void* p, size_t size) {
  g_allocations.fetch_add(1, std::memory_order_relaxed);
  return __libc_realloc(p, size);
}
void* memalign(size_t align, size_t size) {
  g_allocations.fetch_add(1, std::memory_order_relaxed);
  return __libc_memalign(align, size);
}
}

// ---- Generated documents ----

namespace zqbench {

size_t documentSize() {
  const char* mb = std::getenv("ZQ_BENCH_XML_MB");
  const long n = mb ? std::atol(mb) : 50;
  return static_cast<size_t>(n > 0 ? n : 50) << 20;
}

namespace {

const char* const kWords[] = {"stream", "buffer", "layout", "margin", "font",   "glyph",   "page",
                              "block",  "inline", "border", "colour", "table",  "cell",    "row",
                              "column", "region", "flow",   "static", "marker", "footnote"};
constexpr size_t kWordCount = sizeof kWords / sizeof kWords[0];

void appendWords(std::string& out, std::mt19937& rng, int count) {
  for (int i = 0; i < count; ++i) {
    if (i) out += ' ';
    out += kWords[rng() % kWordCount];
  }
}

/// Elements with eight attributes each, some values with references.
void makeAttributes(Document& doc, size_t size, std::mt19937& rng) {
  std::string& s = doc.bytes;
  s += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<catalog>\n";
  ++doc.elements;
  for (size_t n = 0; s.size() < size; ++n) {
    s += "  <item id=\"i" + std::to_string(n) + "\" name=\"";
    appendWords(s, rng, 2);
    s += "\" class=\"c" + std::to_string(rng() % 50) + " c" + std::to_string(rng() % 50) +
         "\" x=\"" + std::to_string(rng() % 10000) + ".5\" y=\"" + std::to_string(rng() % 10000) +
         ".25\" style=\"font-size: " + std::to_string(8 + rng() % 12) +
         "pt; color: #336699\" ref=\"#i" + std::to_string(rng() % (n + 1)) + "\" title=\"";
    appendWords(s, rng, 3);
    s += (n % 7 == 0) ? " &amp; more &lt;x&gt;\"" : "\"";
    s += (n % 5 == 0) ? "><sub kind='a' v='1'/></item>\n" : "/>\n";
    doc.elements += (n % 5 == 0) ? 2 : 1;
  }
  s += "</catalog>\n";
}

/// Long paragraphs with some inline markup and references.
void makeText(Document& doc, size_t size, std::mt19937& rng) {
  std::string& s = doc.bytes;
  s += "<?xml version=\"1.0\"?>\n<book>\n";
  ++doc.elements;
  while (s.size() < size) {
    s += "<para>";
    ++doc.elements;
    const int sentences = 3 + static_cast<int>(rng() % 8);
    for (int i = 0; i < sentences; ++i) {
      appendWords(s, rng, 8 + static_cast<int>(rng() % 20));
      switch (rng() % 6) {
        case 0:
          s += " <b>";
          appendWords(s, rng, 2);
          s += "</b>";
          ++doc.elements;
          break;
        case 1:
          s += " &amp; ";
          break;
        case 2:
          s += "\n";
          break;
        default:
          break;
      }
      s += ". ";
    }
    s += "</para>\n";
  }
  s += "</book>\n";
}

/// Chains of 1000 nested elements, each with one attribute and a little text.
void makeNested(Document& doc, size_t size, std::mt19937& rng) {
  constexpr int kDepth = 1000;
  std::string& s = doc.bytes;
  s += "<?xml version=\"1.0\"?>\n<deep>";
  ++doc.elements;
  while (s.size() < size) {
    for (int d = 0; d < kDepth; ++d) {
      s += "<n d=\"" + std::to_string(d) + "\">";
      s += kWords[rng() % kWordCount];
    }
    for (int d = 0; d < kDepth; ++d) s += "</n>";
    s += '\n';
    doc.elements += kDepth;
  }
  s += "</deep>\n";
}

/// Four prefixes and a default namespace at the root, prefixed elements and attributes, and
/// declarations made again lower down.
void makeNamespaces(Document& doc, size_t size, std::mt19937& rng) {
  static const char* const kPrefixes[] = {"fo", "svg", "x", "m"};
  std::string& s = doc.bytes;
  s += "<?xml version=\"1.0\"?>\n"
       "<root xmlns=\"urn:example:default\" xmlns:fo=\"urn:example:fo\" "
       "xmlns:svg=\"urn:example:svg\" xmlns:x=\"urn:example:x\" xmlns:m=\"urn:example:m\">\n";
  ++doc.elements;
  for (size_t n = 0; s.size() < size; ++n) {
    const char* p = kPrefixes[rng() % 4];
    const char* q = kPrefixes[rng() % 4];
    const bool redeclare = n % 10 == 0;
    s += std::string("<") + p + ":block";
    if (redeclare)
      s += std::string(" xmlns:") + p + "=\"urn:example:local" + std::to_string(n % 3) + "\"";
    s += std::string(" ") + q + ":role=\"r" + std::to_string(rng() % 100) + "\" id=\"b" +
         std::to_string(n) + "\">";
    s += "<inline x:kind=\"k\">";
    appendWords(s, rng, 4);
    s += "</inline><svg:rect svg:width=\"" + std::to_string(rng() % 500) + "\"/></" + p +
         ":block>\n";
    doc.elements += 3;
  }
  s += "</root>\n";
}

}  // namespace

const Document& document(int kind) {
  static Document docs[DOC_KIND_COUNT];
  Document& doc = docs[kind];
  if (doc.bytes.empty()) {
    const size_t size = documentSize();
    doc.bytes.reserve(size + 4096);
    std::mt19937 rng(1000 + static_cast<unsigned>(kind));
    switch (kind) {
      case DOC_ATTRIBUTES:
        makeAttributes(doc, size, rng);
        break;
      case DOC_TEXT:
        makeText(doc, size, rng);
        break;
      case DOC_NESTED:
        makeNested(doc, size, rng);
        break;
      default:
        makeNamespaces(doc, size, rng);
        break;
    }
  }
  return doc;
}

long statusKb(const char* field) {
  std::ifstream in("/proc/self/status");
  std::string line;
  const size_t n = std::strlen(field);
  while (std::getline(in, line)) {
    if (line.compare(0, n, field) == 0 && line.size() > n && line[n] == ':')
      return std::atol(line.c_str() + n + 1);
  }
  return -1;
}

}  // namespace zqbench
