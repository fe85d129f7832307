// The document tree beside libxml2's tree and pugixml's: load a generated ~50 MB document from
// memory, walk every node reading what a caller reads (names, namespaces, attribute values,
// text), save it to a file in a temporary directory, then free it.
//
// Every case runs in a forked child, so that each library's peak memory is its own: the child
// starts with the document bytes already resident, and its peak is the kernel's high-water
// mark of the resident set (VmHWM, reset at the start of the child) minus the resident set at
// that start. Allocation counting through the malloc hooks would miss what a library maps
// itself and would not see freed-and-reused memory as the peak, so the kernel's figure is the
// one compared. Times are CPU time of the child (user + system) per phase, so that other work
// on a shared machine weighs less; each case runs ZQ_BENCH_DOM_REPEAT times (default 3),
// interleaved, and the best time and the lowest peak are kept.
//
// ZQ_BENCH_XML_MB sets the document size in MB (default 50). ZQ_BENCH_DOM_ONLY=us|libxml2|pugixml
// and ZQ_BENCH_DOM_KIND=attributes|text|namespaces restrict the run, e.g. under a profiler.
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <istream>
#include <streambuf>
#include <string>
#include <vector>

#include "BenchSupport.h"
#include "common/ZQDocument.h"
#include "common/ZQElement.h"
#include "common/ZQError.h"
#include "common/ZQNode.h"

#ifdef ZQ_HAVE_PUGIXML
#include <pugixml.hpp>
#endif

using namespace ZQCommonNS;
using zqbench::Document;
using zqbench::statusKb;

namespace {

// ---- Measuring ----

double cpuMs() {
  timespec ts{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
  return static_cast<double>(ts.tv_sec) * 1e3 + static_cast<double>(ts.tv_nsec) / 1e6;
}

/// System time and minor page faults of this process so far: the kernel's share of a phase,
/// mostly first touches of fresh memory, apart from the library's own work.
struct Usage {
  double sysMs = 0;
  long faults = 0;
};

Usage usage() {
  rusage ru{};
  getrusage(RUSAGE_SELF, &ru);
  return Usage{static_cast<double>(ru.ru_stime.tv_sec) * 1e3 +
                   static_cast<double>(ru.ru_stime.tv_usec) / 1e3,
               ru.ru_minflt};
}

/// What one case measured; sent from the child to the parent through a pipe.
struct Result {
  double loadMs = 0;
  double loadSysMs = 0;  // of loadMs, the time spent in the kernel
  long loadFaults = 0;
  double walkMs = 0;
  double saveMs = 0;
  double freeMs = 0;
  double peakMb = 0;
  long long elements = 0;  // start tags seen by the walk
  long long nodes = 0;
  long long outputBytes = 0;
  unsigned long long touched = 0;
  char error[200] = {};
};

void setError(Result& r, const std::string& text) {
  std::snprintf(r.error, sizeof r.error, "%s", text.c_str());
}

long long fileSize(const std::string& path) {
  std::ifstream in(path, std::ios::binary | std::ios::ate);
  return in ? static_cast<long long>(in.tellg()) : -1;
}

/// A stream buffer over bytes owned elsewhere: the parser reads them where they lie.
class MemoryBuf : public std::streambuf {
 public:
  MemoryBuf(const char* data, size_t size) {
    char* p = const_cast<char*>(data);
    setg(p, p, p + size);
  }
};

// ---- The three libraries ----

enum Peer { PEER_US, PEER_LIBXML2, PEER_PUGIXML, PEER_COUNT };
const char* const kPeerNames[PEER_COUNT] = {"us", "libxml2", "pugixml"};

void walkUs(ZQNode* root, Result& r) {
  unsigned long long touched = 0;
  ZQNode* n = root;
  while (n) {
    ++r.nodes;
    if (n->getNodeType() == ZQNode::ELEMENT_NODE) {
      ++r.elements;
      touched +=
          static_cast<unsigned>(n->getLocalName()) + static_cast<unsigned>(n->getNamespaceUri());
      if (ZQNamedNodeMap* attrs = n->getAttributes()) {
        for (ZQNode* a = attrs->getFirstNode(); a; a = attrs->getNextNode(a)) {
          touched += static_cast<unsigned>(a->getLocalName()) +
                     static_cast<unsigned>(a->getNamespaceUri()) +
                     static_cast<unsigned>(a->getNodeValue().getStringValue().length());
        }
      }
    } else if (n->getNodeType() == ZQNode::TEXT_NODE) {
      touched += static_cast<unsigned>(n->getText().length());
    }
    if (ZQNode* c = n->getFirstChild()) {
      n = c;
      continue;
    }
    while (n && n != root && !n->getNextSibling()) n = n->getParentNode();
    n = (n && n != root) ? n->getNextSibling() : nullptr;
  }
  r.touched = touched;
}

void runUs(const Document& doc, const std::string& out, Result& r) {
  try {
    const Usage startUsage = usage();
    double t = cpuMs();
    ZQPtr<ZQDocument> document(new ZQDocument());
    {
      MemoryBuf buf(doc.bytes.data(), doc.bytes.size());
      std::istream in(&buf);
      document->load(in, nullptr, UnicodeString(u"file:///bench.xml"));
    }
    r.loadMs = cpuMs() - t;
    r.loadSysMs = usage().sysMs - startUsage.sysMs;
    r.loadFaults = usage().faults - startUsage.faults;
    t = cpuMs();
    walkUs(document.get(), r);
    r.walkMs = cpuMs() - t;
    t = cpuMs();
    document->save(UnicodeString::fromUTF8(out));
    r.saveMs = cpuMs() - t;
    t = cpuMs();
    document = nullptr;
    r.freeMs = cpuMs() - t;
  } catch (const ZQError& e) {
    std::string text;
    setError(r, "ZQError " + std::to_string(e.getErrorCode()) + ": " +
                    e.getRawMessage().toUTF8String(text));
  }
}

size_t textLength(const xmlChar* s) {
  return s ? std::strlen(reinterpret_cast<const char*>(s)) : 0;
}

void walkLibxml2(xmlNodePtr root, Result& r) {
  unsigned long long touched = 0;
  xmlNodePtr n = root;
  while (n) {
    ++r.nodes;
    if (n->type == XML_ELEMENT_NODE) {
      ++r.elements;
      touched += reinterpret_cast<uintptr_t>(n->name) +
                 (n->ns ? reinterpret_cast<uintptr_t>(n->ns->href) : 0);
      for (xmlAttrPtr a = n->properties; a; a = a->next) {
        touched += reinterpret_cast<uintptr_t>(a->name) +
                   (a->ns ? reinterpret_cast<uintptr_t>(a->ns->href) : 0) +
                   (a->children ? textLength(a->children->content) : 0);
      }
    } else if (n->type == XML_TEXT_NODE || n->type == XML_CDATA_SECTION_NODE) {
      touched += textLength(n->content);
    }
    if (n->children && n->type != XML_ENTITY_REF_NODE) {
      n = n->children;
      continue;
    }
    while (n && n != root && !n->next) n = n->parent;
    n = (n && n != root) ? n->next : nullptr;
  }
  r.touched = touched;
}

void runLibxml2(const Document& doc, const std::string& out, Result& r) {
  const Usage startUsage = usage();
  double t = cpuMs();
  // HUGE lifts the limits on text node size and depth that a large document may pass.
  xmlDocPtr document = xmlReadMemory(doc.bytes.data(), static_cast<int>(doc.bytes.size()),
                                     "bench.xml", nullptr, XML_PARSE_HUGE);
  r.loadMs = cpuMs() - t;
  r.loadSysMs = usage().sysMs - startUsage.sysMs;
  r.loadFaults = usage().faults - startUsage.faults;
  if (!document) return setError(r, "xmlReadMemory failed");
  t = cpuMs();
  walkLibxml2(reinterpret_cast<xmlNodePtr>(document), r);
  r.walkMs = cpuMs() - t;
  t = cpuMs();
  if (xmlSaveFile(out.c_str(), document) < 0) setError(r, "xmlSaveFile failed");
  r.saveMs = cpuMs() - t;
  t = cpuMs();
  xmlFreeDoc(document);
  r.freeMs = cpuMs() - t;
}

#ifdef ZQ_HAVE_PUGIXML
void walkPugi(pugi::xml_node root, Result& r) {
  unsigned long long touched = 0;
  pugi::xml_node n = root;
  while (n) {
    ++r.nodes;
    if (n.type() == pugi::node_element) {
      ++r.elements;
      touched += std::strlen(n.name());
      for (pugi::xml_attribute a = n.first_attribute(); a; a = a.next_attribute())
        touched += std::strlen(a.name()) + std::strlen(a.value());
    } else if (n.type() == pugi::node_pcdata || n.type() == pugi::node_cdata) {
      touched += std::strlen(n.value());
    }
    if (pugi::xml_node c = n.first_child()) {
      n = c;
      continue;
    }
    while (n && n != root && !n.next_sibling()) n = n.parent();
    n = (n && n != root) ? n.next_sibling() : pugi::xml_node();
  }
  r.touched = touched;
}

void runPugi(const Document& doc, const std::string& out, Result& r) {
  const Usage startUsage = usage();
  double t = cpuMs();
  auto document = std::make_unique<pugi::xml_document>();
  pugi::xml_parse_result parsed = document->load_buffer(doc.bytes.data(), doc.bytes.size());
  r.loadMs = cpuMs() - t;
  r.loadSysMs = usage().sysMs - startUsage.sysMs;
  r.loadFaults = usage().faults - startUsage.faults;
  if (!parsed) return setError(r, std::string("pugixml: ") + parsed.description());
  t = cpuMs();
  walkPugi(*document, r);
  r.walkMs = cpuMs() - t;
  t = cpuMs();
  // Raw output, as the others write: no indentation added.
  if (!document->save_file(out.c_str(), "", pugi::format_raw)) setError(r, "save_file failed");
  r.saveMs = cpuMs() - t;
  t = cpuMs();
  document.reset();
  r.freeMs = cpuMs() - t;
}
#endif

/// Runs one case in a child process and reads its result back.
Result runCase(int peer, const Document& doc, const std::string& dir) {
  Result result;
  int fds[2];
  if (pipe(fds) != 0) {
    setError(result, "pipe failed");
    return result;
  }
  std::fflush(stdout);
  const pid_t pid = fork();
  if (pid < 0) {
    setError(result, "fork failed");
    return result;
  }
  if (pid == 0) {
    close(fds[0]);
    Result r;
    const std::string out = dir + "/" + kPeerNames[peer] + ".xml";
    {
      std::ofstream reset("/proc/self/clear_refs");
      reset << "5";
    }
    const long base = statusKb("VmRSS");
    switch (peer) {
      case PEER_US:
        runUs(doc, out, r);
        break;
      case PEER_LIBXML2:
        runLibxml2(doc, out, r);
        break;
      default:
#ifdef ZQ_HAVE_PUGIXML
        runPugi(doc, out, r);
#endif
        break;
    }
    r.peakMb = static_cast<double>(std::max(0L, statusKb("VmHWM") - base)) / 1024.0;
    r.outputBytes = fileSize(out);
    std::remove(out.c_str());
    const ssize_t written = write(fds[1], &r, sizeof r);
    _exit(written == static_cast<ssize_t>(sizeof r) ? 0 : 1);
  }
  close(fds[1]);
  size_t got = 0;
  char* p = reinterpret_cast<char*>(&result);
  while (got < sizeof result) {
    const ssize_t n = read(fds[0], p + got, sizeof result - got);
    if (n <= 0) break;
    got += static_cast<size_t>(n);
  }
  close(fds[0]);
  int status = 0;
  waitpid(pid, &status, 0);
  if (got != sizeof result) setError(result, "the child died");
  return result;
}

const int kKinds[] = {zqbench::DOC_ATTRIBUTES, zqbench::DOC_TEXT, zqbench::DOC_NAMESPACES};
constexpr int kKindCount = 3;

bool selected(const char* env, const char* name) {
  const char* want = std::getenv(env);
  return !want || !*want || std::strcmp(want, name) == 0;
}

double ratio(double a, double b) { return a > 0 && b > 0 ? a / b : 0.0; }

}  // namespace

int main(int argc, char** argv) {
  // Arguments meant for the other benchmarks (--benchmark_*) are ignored.
  (void)argc;
  (void)argv;
  LIBXML_TEST_VERSION
  const char* repeatText = std::getenv("ZQ_BENCH_DOM_REPEAT");
  const int repeat = std::max(1, repeatText ? std::atoi(repeatText) : 3);

  const char* tmp = std::getenv("TMPDIR");
  std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/zqdom.XXXXXX";
  std::vector<char> dirBuf(pattern.begin(), pattern.end());
  dirBuf.push_back('\0');
  if (!mkdtemp(dirBuf.data())) {
    std::perror("mkdtemp");
    return 1;
  }
  const std::string dir(dirBuf.data());

  Result best[kKindCount][PEER_COUNT];
  bool have[kKindCount][PEER_COUNT] = {};
  for (int k = 0; k < kKindCount; ++k) {
    if (selected("ZQ_BENCH_DOM_KIND", zqbench::kDocNames[kKinds[k]]))
      (void)zqbench::document(kKinds[k]);  // generated before any child starts
  }
  for (int rep = 0; rep < repeat; ++rep) {
    for (int k = 0; k < kKindCount; ++k) {
      if (!selected("ZQ_BENCH_DOM_KIND", zqbench::kDocNames[kKinds[k]])) continue;
      const Document& doc = zqbench::document(kKinds[k]);
      for (int peer = 0; peer < PEER_COUNT; ++peer) {
#ifndef ZQ_HAVE_PUGIXML
        if (peer == PEER_PUGIXML) continue;
#endif
        if (!selected("ZQ_BENCH_DOM_ONLY", kPeerNames[peer])) continue;
        Result r = runCase(peer, doc, dir);
        if (!r.error[0] && r.elements != static_cast<long long>(doc.elements)) {
          setError(r, "walk saw " + std::to_string(r.elements) + " elements of " +
                          std::to_string(doc.elements));
        }
        std::printf(
            "%-11s %-8s load %8.1f (sys %6.1f, %6ldk faults)  walk %7.1f  save %7.1f  free %7.1f ms"
            "  peak %7.1f MB  out %lld B%s%s\n",
            zqbench::kDocNames[kKinds[k]], kPeerNames[peer], r.loadMs, r.loadSysMs,
            r.loadFaults / 1000, r.walkMs, r.saveMs, r.freeMs, r.peakMb, r.outputBytes,
            r.error[0] ? "  ERROR: " : "", r.error);
        Result& b = best[k][peer];
        if (!have[k][peer] || r.error[0]) {
          b = r;
          have[k][peer] = true;
        } else if (!b.error[0]) {
          b.loadMs = std::min(b.loadMs, r.loadMs);
          b.walkMs = std::min(b.walkMs, r.walkMs);
          b.saveMs = std::min(b.saveMs, r.saveMs);
          b.freeMs = std::min(b.freeMs, r.freeMs);
          b.peakMb = std::min(b.peakMb, r.peakMb);
        }
      }
    }
  }
  rmdir(dir.c_str());

  std::printf("\nDocuments of %zu MB, best of %d, CPU ms; peak = resident growth in MB.\n",
              zqbench::documentSize() >> 20, repeat);
  std::printf("%-11s %-8s %9s %8s %8s %8s   %11s %11s %11s %11s\n", "document", "library", "load",
              "walk", "save", "peak", "load/lx2", "save spd", "peak/lx2", "load/pugi");
  bool allMet = true;
  for (int k = 0; k < kKindCount; ++k) {
    for (int peer = 0; peer < PEER_COUNT; ++peer) {
      if (!have[k][peer]) continue;
      const Result& r = best[k][peer];
      std::printf("%-11s %-8s %9.1f %8.1f %8.1f %8.1f", zqbench::kDocNames[kKinds[k]],
                  kPeerNames[peer], r.loadMs, r.walkMs, r.saveMs, r.peakMb);
      if (peer == PEER_US && have[k][PEER_LIBXML2]) {
        const Result& x = best[k][PEER_LIBXML2];
        const double load = ratio(r.loadMs, x.loadMs);
        const double save = ratio(x.saveMs, r.saveMs);  // our speed over theirs
        const double peak = ratio(r.peakMb, x.peakMb);
        std::printf("   %10.2fx %10.2fx %10.2fx", load, save, peak);
        if (have[k][PEER_PUGIXML])
          std::printf(" %10.2fx", ratio(r.loadMs, best[k][PEER_PUGIXML].loadMs));
        allMet = allMet && load <= 1.0 && save >= 1.0 && peak <= 1.0 && !r.error[0];
      }
      if (r.error[0]) std::printf("   ERROR: %s", r.error);
      std::printf("\n");
    }
  }
  std::printf(
      "Goals: load/lx2 <= 1.0x, save spd (libxml2 time / ours) >= 1.0x, "
      "peak/lx2 <= 1.0x: %s\n",
      allMet ? "met" : "not met");
  xmlCleanupParser();
  return 0;
}
