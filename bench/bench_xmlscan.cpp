// The pull parser's scanner over a generated document of elements, attributes, text and
// references, read to the end with next(); side by side with expat and pugixml on the same
// bytes. One operation is one document; bytes per second are reported too.
#include <benchmark/benchmark.h>

#include <sstream>
#include <string>

#include "BenchSupport.h"
#include "xml/ZQXmlParserImpl.h"

#ifdef ZQ_HAVE_EXPAT
#include <expat.h>
#endif
#ifdef ZQ_HAVE_PUGIXML
#include <pugixml.hpp>
#endif

using namespace ZQCommonNS;

namespace {

const std::string& document() {
  static const std::string text = [] {
    std::string s = "<?xml version='1.0'?>\n<doc xmlns='urn:x' xmlns:p='urn:p'>\n";
    for (int i = 0; i < 4000; ++i) {
      s += "  <item id='i" + std::to_string(i) +
           "' p:kind=\"plain &amp; simple\"><name>Item number " + std::to_string(i) +
           "</name><text>Some text with &lt;markup&gt; and a character &#233; in it, "
           "long enough to be a paragraph of a real document.</text><empty/></item>\n";
    }
    return s + "</doc>\n";
  }();
  return text;
}

void BM_ZQXmlParser_Next(benchmark::State& state) {
  const std::string& text = document();
  zqbench::runCounted(state, [&] {
    std::istringstream in(text);
    ZQPtr<ZQXmlParserImpl> parser(new ZQXmlParserImpl());
    parser->setInput(in, UnicodeString(), UnicodeString());
    size_t events = 0;
    while (parser->next() != ZQXmlParser::END_DOCUMENT) ++events;
    benchmark::DoNotOptimize(events);
    return size_t(1);
  });
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_ZQXmlParser_Next)->Unit(benchmark::kMillisecond);

void BM_ZQXmlParser_NextToken(benchmark::State& state) {
  const std::string& text = document();
  zqbench::runCounted(state, [&] {
    std::istringstream in(text);
    ZQPtr<ZQXmlParserImpl> parser(new ZQXmlParserImpl());
    parser->setInput(in, UnicodeString(), UnicodeString());
    size_t events = 0;
    while (parser->nextToken() != ZQXmlParser::END_DOCUMENT) ++events;
    benchmark::DoNotOptimize(events);
    return size_t(1);
  });
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_ZQXmlParser_NextToken)->Unit(benchmark::kMillisecond);

#ifdef ZQ_HAVE_EXPAT
void BM_Expat_Parse(benchmark::State& state) {
  const std::string& text = document();
  zqbench::runCounted(state, [&] {
    XML_Parser parser = XML_ParserCreateNS(nullptr, ' ');
    size_t events = 0;
    XML_SetUserData(parser, &events);
    XML_SetElementHandler(
        parser, [](void* d, const XML_Char*, const XML_Char**) { ++*static_cast<size_t*>(d); },
        [](void* d, const XML_Char*) { ++*static_cast<size_t*>(d); });
    XML_SetCharacterDataHandler(parser,
                                [](void* d, const XML_Char*, int) { ++*static_cast<size_t*>(d); });
    XML_Parse(parser, text.data(), static_cast<int>(text.size()), 1);
    XML_ParserFree(parser);
    benchmark::DoNotOptimize(events);
    return size_t(1);
  });
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_Expat_Parse)->Unit(benchmark::kMillisecond);
#endif

#ifdef ZQ_HAVE_PUGIXML
void BM_Pugixml_Load(benchmark::State& state) {
  const std::string& text = document();
  zqbench::runCounted(state, [&] {
    pugi::xml_document doc;
    doc.load_buffer(text.data(), text.size());
    benchmark::DoNotOptimize(doc.first_child());
    return size_t(1);
  });
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
}
BENCHMARK(BM_Pugixml_Load)->Unit(benchmark::kMillisecond);
#endif

}  // namespace

BENCHMARK_MAIN();
