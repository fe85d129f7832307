// The serializer writing a flat document (a root with many children, each with two attributes
// and some text) into a sink that keeps no bytes, beside libxml2's text writer on the same
// document. allocs/op shows that the plain path allocates nothing once the names are interned.
#include <libxml/xmlwriter.h>

#include <streambuf>
#include <string>

#include "BenchSupport.h"
#include "common/ZQName.h"
#include "common/ZQXmlSerializer.h"

using namespace ZQCommonNS;

namespace {

constexpr int kChildren = 1000;

// Counts the bytes and forgets them, reusing one small area.
class CountingSink : public std::streambuf {
 public:
  CountingSink() { setp(m_area, m_area + sizeof m_area); }
  size_t count() const { return m_flushed + static_cast<size_t>(pptr() - pbase()); }

 protected:
  int_type overflow(int_type ch) override {
    m_flushed += static_cast<size_t>(pptr() - pbase());
    setp(m_area, m_area + sizeof m_area);
    if (!traits_type::eq_int_type(ch, traits_type::eof())) {
      *pptr() = traits_type::to_char_type(ch);
      pbump(1);
    }
    return traits_type::not_eof(ch);
  }

 private:
  char m_area[4096];
  size_t m_flushed = 0;
};

struct Names {
  ZQName ns{UnicodeString(u"urn:bench")};
  ZQName prefix{UnicodeString(u"b")};
  ZQName root{UnicodeString(u"root")};
  ZQName item{UnicodeString(u"item")};
  ZQName id{UnicodeString(u"id")};
  ZQName kind{UnicodeString(u"kind")};
};

const UnicodeString& itemText(bool nonAscii) {
  static const UnicodeString ascii(u"Some text & a <tag> to escape, line one\nline two");
  static const UnicodeString wide(u"Texte \u00E9t\u00E9 \u65E5\u672C\u8A9E & <b> \U0001F600 fin");
  return nonAscii ? wide : ascii;
}

size_t writeDocument(ZQXmlSerializer& s, std::ostream& out, const Names& n, const char16_t* enc,
                     bool nonAscii) {
  static const UnicodeString idValue(u"n42");
  static const UnicodeString kindValue(u"a \"quoted\" value");
  s.setOutput(out, UnicodeString(enc), UnicodeString());
  s.startDocument(UnicodeString(), UnicodeString());
  s.startTag(n.ns, n.prefix, n.root);
  for (int i = 0; i < kChildren; ++i) {
    s.startTag(n.ns, n.prefix, n.item);
    s.attribute(ZQName(), ZQName(), n.id, idValue);
    s.attribute(ZQName(), ZQName(), n.kind, kindValue);
    s.text(itemText(nonAscii));
    s.endTag(n.ns, n.item);
  }
  s.endDocument();
  return kChildren;
}

void serializer(benchmark::State& state, const char16_t* encoding, bool sorted, bool nonAscii) {
  Names names;
  ZQPtr<ZQXmlSerializer> s = ZQXmlSerializer::createXmlSerializer();
  s->setFeature(ZQXmlSerializer::FEATURE_SORT_ATTRIBUTES, sorted);
  CountingSink sink;
  std::ostream out(&sink);
  writeDocument(*s, out, names, encoding, nonAscii);  // warms the context stack
  zqbench::runCounted(state, [&] { return writeDocument(*s, out, names, encoding, nonAscii); });
  state.counters["bytes/doc"] = benchmark::Counter(static_cast<double>(sink.count()) /
                                                   static_cast<double>(state.iterations() + 1));
}

void BM_SerializerUtf8(benchmark::State& state) { serializer(state, u"UTF-8", false, false); }
void BM_SerializerUtf8NonAscii(benchmark::State& state) {
  serializer(state, u"UTF-8", false, true);
}
void BM_SerializerAsciiReferences(benchmark::State& state) {
  serializer(state, u"US-ASCII", false, true);
}
void BM_SerializerSortedAttributes(benchmark::State& state) {
  serializer(state, u"UTF-8", true, false);
}

void libxml2Writer(benchmark::State& state, bool nonAscii) {
  std::string text;
  itemText(nonAscii).toUTF8String(text);
  size_t bytes = 0;
  zqbench::runCounted(state, [&] {
    xmlBufferPtr buffer = xmlBufferCreate();
    xmlTextWriterPtr w = xmlNewTextWriterMemory(buffer, 0);
    xmlTextWriterStartDocument(w, nullptr, "UTF-8", nullptr);
    xmlTextWriterStartElementNS(w, BAD_CAST "b", BAD_CAST "root", BAD_CAST "urn:bench");
    for (int i = 0; i < kChildren; ++i) {
      xmlTextWriterStartElementNS(w, BAD_CAST "b", BAD_CAST "item", nullptr);
      xmlTextWriterWriteAttribute(w, BAD_CAST "id", BAD_CAST "n42");
      xmlTextWriterWriteAttribute(w, BAD_CAST "kind", BAD_CAST "a \"quoted\" value");
      xmlTextWriterWriteString(w, BAD_CAST text.c_str());
      xmlTextWriterEndElement(w);
    }
    xmlTextWriterEndDocument(w);
    xmlFreeTextWriter(w);
    bytes = static_cast<size_t>(xmlBufferLength(buffer));
    xmlBufferFree(buffer);
    return static_cast<size_t>(kChildren);
  });
  state.counters["bytes/doc"] = static_cast<double>(bytes);
}

void BM_Libxml2TextWriter(benchmark::State& state) { libxml2Writer(state, false); }
void BM_Libxml2TextWriterNonAscii(benchmark::State& state) { libxml2Writer(state, true); }

}  // namespace

BENCHMARK(BM_SerializerUtf8);
BENCHMARK(BM_Libxml2TextWriter);
BENCHMARK(BM_SerializerUtf8NonAscii);
BENCHMARK(BM_Libxml2TextWriterNonAscii);
BENCHMARK(BM_SerializerAsciiReferences);
BENCHMARK(BM_SerializerSortedAttributes);

BENCHMARK_MAIN();
