// URI resolution: a fixed set of (base, reference) pairs resolved by ZQUri, side by side with
// liburiparser on the same pairs. Each side holds its bases already parsed or normalised, as a
// document holds its base URI, and produces the resolved string of every reference.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "BenchSupport.h"
#include "common/ZQUri.h"

#if defined(ZQ_HAVE_URIPARSER)
#include <uriparser/Uri.h>
#endif

using namespace ZQCommonNS;

namespace {

struct Pair {
  const char* base;
  const char* ref;
};

// Links as documents hold them: relative paths, parent steps, rooted paths, network paths,
// queries, fragments and absolute references, against web and file bases.
const Pair kPairs[] = {
    {"http://www.example.com/docs/guide/index.html", "chapter1.html"},
    {"http://www.example.com/docs/guide/index.html", "../images/logo.png"},
    {"http://www.example.com/docs/guide/index.html", "./a/b/../c.xml"},
    {"http://www.example.com/docs/guide/index.html", "/styles/site.css"},
    {"http://www.example.com/docs/guide/index.html", "//cdn.example.net/lib/app.js"},
    {"http://www.example.com/docs/guide/index.html", "https://other.example.org/x/y"},
    {"http://www.example.com/docs/guide/index.html", "part2.html#section-4"},
    {"http://example.com/a/b/c/d;p?q", "g;x?y#s"},
    {"http://example.com/a/b/c/d;p?q", "../../g"},
    {"http://example.com/a/b/c/d;p?q", "g/./h/../i"},
    {"http://example.com/a/b/c/d;p?q", "?y"},
    {"file:///home/user/project/book.xml", "images/figure-01.svg"},
    {"file:///home/user/project/book.xml", "../shared/styles/print.css"},
    {"file:///home/user/project/chapters/ch01.xml", "../fonts/serif/regular.ttf"},
    {"jar:file:///home/user/pack.zip!/content/main.xml", "img/cover.png"},
    {"https://docs.example.org/v2/api/reference/uri.html", "../../guide/intro.html"},
};
constexpr size_t kCount = sizeof(kPairs) / sizeof(kPairs[0]);

struct ZQSide {
  std::vector<ZQUri> bases;
  std::vector<UnicodeString> refs;
  ZQSide() {
    for (const Pair& p : kPairs) {
      bases.emplace_back(UnicodeString::fromUTF8(p.base), ZQUri::URISTR_URI);
      refs.push_back(UnicodeString::fromUTF8(p.ref));
    }
  }
};

void BM_ZQUri_Resolve(benchmark::State& state) {
  static ZQSide side;
  zqbench::runCounted(state, [&] {
    for (size_t i = 0; i < kCount; ++i) {
      ZQUri resolved(side.bases[i], side.refs[i], ZQUri::URISTR_URI);
      benchmark::DoNotOptimize(resolved.toString().length());
    }
    return kCount;
  });
}
BENCHMARK(BM_ZQUri_Resolve);

// The same through the constructor that asks the file system first (URISTR_AUTO).
void BM_ZQUri_ResolveAuto(benchmark::State& state) {
  static ZQSide side;
  zqbench::runCounted(state, [&] {
    for (size_t i = 0; i < kCount; ++i) {
      ZQUri resolved(side.bases[i], side.refs[i]);
      benchmark::DoNotOptimize(resolved.toString().length());
    }
    return kCount;
  });
}
BENCHMARK(BM_ZQUri_ResolveAuto);

// Windows and POSIX paths without a base, which have no counterpart in the peer.
void BM_ZQUri_NormalisePath(benchmark::State& state) {
  static const UnicodeString paths[] = {
      UnicodeString(u"C:\\Users\\me\\Documents\\book one\\main.xml"),
      UnicodeString(u"\\\\server\\share\\fonts\\serif.ttf"),
      UnicodeString(u"images/figure 01.svg"),
  };
  zqbench::runCounted(state, [&] {
    for (const auto& p : paths) {
      ZQUri u(p, ZQUri::URISTR_PATH);
      benchmark::DoNotOptimize(u.toString().length());
    }
    return std::size(paths);
  });
}
BENCHMARK(BM_ZQUri_NormalisePath);

#if defined(ZQ_HAVE_URIPARSER)
struct ParserSide {
  std::vector<UriUriA> bases;
  std::vector<std::string> baseText, refs;
  ParserSide() {
    bases.resize(kCount);
    for (size_t i = 0; i < kCount; ++i) {
      baseText.push_back(kPairs[i].base);
      refs.push_back(kPairs[i].ref);
    }
    for (size_t i = 0; i < kCount; ++i) {
      const char* error = nullptr;
      if (uriParseSingleUriA(&bases[i], baseText[i].c_str(), &error) != URI_SUCCESS) std::abort();
    }
  }
  ~ParserSide() {
    for (auto& b : bases) uriFreeUriMembersA(&b);
  }
};

void BM_UriParser_Resolve(benchmark::State& state) {
  static ParserSide side;
  std::string out;
  zqbench::runCounted(state, [&] {
    for (size_t i = 0; i < kCount; ++i) {
      UriUriA ref, resolved;
      const char* error = nullptr;
      if (uriParseSingleUriA(&ref, side.refs[i].c_str(), &error) != URI_SUCCESS) std::abort();
      if (uriAddBaseUriA(&resolved, &ref, &side.bases[i]) != URI_SUCCESS) std::abort();
      int chars = 0;
      uriToStringCharsRequiredA(&resolved, &chars);
      out.resize(static_cast<size_t>(chars) + 1);
      uriToStringA(out.data(), &resolved, chars + 1, nullptr);
      benchmark::DoNotOptimize(out.data());
      uriFreeUriMembersA(&resolved);
      uriFreeUriMembersA(&ref);
    }
    return kCount;
  });
}
BENCHMARK(BM_UriParser_Resolve);
#endif

}  // namespace

BENCHMARK_MAIN();
