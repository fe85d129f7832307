// Random call sequences on the serializer with random names and texts: no crash, no hang, and
// whenever the sequence kept to what a well-formed document needs (names that are names,
// comments without "--", one root, declared prefixes...), libxml2 reads the output as a
// well-formed, namespace-well-formed document.
#include <libxml/parser.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <set>
#include <sstream>
#include <string>

#include "common/ZQError.h"
#include "common/ZQName.h"
#include "common/ZQNameEnum.h"
#include "common/ZQXmlSerializer.h"

using namespace ZQCommonNS;

namespace {

class Reader {
 public:
  Reader(const uint8_t* data, size_t size) : m_data(data), m_size(size) {}
  bool done() const { return m_pos >= m_size; }
  unsigned byte() { return m_pos < m_size ? m_data[m_pos++] : 0; }
  unsigned pick(unsigned n) { return n ? byte() % n : 0; }
  // A short text: mostly ASCII with markup characters, sometimes any UTF-16 unit.
  UnicodeString text() {
    UnicodeString out;
    unsigned length = pick(12);
    for (unsigned i = 0; i < length && !done(); ++i) {
      unsigned b = byte();
      if (b < 0xF0) {
        static const char kChars[] = "ab -<>&\"'\t\n\r]?";
        out.append(static_cast<char16_t>(b < 0x60 ? 0x20 + b : kChars[b % (sizeof kChars - 1)]));
      } else {
        out.append(static_cast<char16_t>(byte() | (byte() << 8)));
      }
    }
    return out;
  }

 private:
  const uint8_t* m_data;
  size_t m_size;
  size_t m_pos = 0;
};

// What the written characters become: controls other than tab, line feed and carriage return
// are dropped on the way out.
UnicodeString effective(const UnicodeString& text) {
  UnicodeString out;
  for (int i = 0; i < text.length(); ++i) {
    char16_t c = text.charAt(i);
    if (c < 32 && c != 9 && c != 10 && c != 13) continue;
    out.append(c);
  }
  return out;
}

// True when every written character is one XML allows.
bool allowedChars(const UnicodeString& text) {
  for (int i = 0; i < text.length(); ++i) {
    char16_t c = text.charAt(i);
    if (c == 0xFFFE || c == 0xFFFF) return false;
    if (U16_IS_LEAD(c)) {
      if (i + 1 >= text.length() || !U16_IS_TRAIL(text.charAt(i + 1))) return false;
      ++i;
    } else if (U16_IS_TRAIL(c)) {
      return false;
    }
  }
  return true;
}

bool isSpaceOnly(const UnicodeString& text) {
  for (int i = 0; i < text.length(); ++i) {
    char16_t c = text.charAt(i);
    if (c != 0x20 && c != 9 && c != 10 && c != 13) return false;
  }
  return true;
}

bool isSimpleName(const UnicodeString& text) {
  if (text.isEmpty()) return false;
  for (int i = 0; i < text.length(); ++i) {
    char16_t c = text.charAt(i);
    bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    if (!letter && !(i > 0 && c >= '0' && c <= '9')) return false;
  }
  // "xml" and "xmlns" are reserved as prefixes, and names starting "xml" reserved as names.
  UnicodeString lower(text);
  lower.toLower();
  return !lower.startsWith(UnicodeString(u"xml"));
}

struct Fuzzer {
  Reader in;
  ZQPtr<ZQXmlSerializer> s = ZQXmlSerializer::createXmlSerializer();
  std::ostringstream out;
  // In strict mode the calls keep to what a well-formed document needs, so that the check
  // below is reached often; otherwise anything goes and the model tells whether it kept to it.
  bool strict = false;
  bool checked = true;  // the output must be well-formed
  bool rootStarted = false;
  bool rootClosed = false;
  bool docdeclWritten = false;
  std::set<int32_t> attributeNames;  // local names on the open start tag

  Fuzzer(const uint8_t* data, size_t size) : in(data, size) {}

  ZQName localName() {
    static const char16_t* const kNames[] = {u"a", u"b", u"item", u"x1", u"Z"};
    unsigned k = in.pick(8);
    if (k < 5 || strict) return ZQName(UnicodeString(kNames[k % 5]));
    UnicodeString t = in.text();
    if (!isSimpleName(t)) checked = false;
    return ZQName(t);
  }
  ZQName prefix() {
    static const char16_t* const kPrefixes[] = {u"p", u"q", u"r"};
    unsigned k = in.pick(6);
    if (k < 3) return ZQName(UnicodeString(kPrefixes[k]));
    if (k < 5 || strict) return ZQName();
    UnicodeString t = in.text();
    if (!t.isEmpty() && !isSimpleName(t)) checked = false;
    return ZQName(t);
  }
  ZQName ns() {
    static const char16_t* const kSpaces[] = {u"urn:a", u"urn:b", u"http://example.com/c&d"};
    unsigned k = in.pick(6);
    if (k < 3) return ZQName(UnicodeString(kSpaces[k]));
    if (k < 5 || strict) return ZQName();
    // libxml2 takes a namespace that is no URI for an error of the document.
    checked = false;
    return ZQName(in.text());
  }
  // A text; in strict mode without what XML can't hold and without `avoid`.
  UnicodeString anyText(char16_t avoid = 0) {
    UnicodeString t = in.text();
    if (strict) {
      for (int i = 0; i < t.length(); ++i) {
        char16_t c = t.charAt(i);
        if (c == avoid || c == 0xFFFE || c == 0xFFFF || U16_IS_TRAIL(c) ||
            (U16_IS_LEAD(c) && (i + 1 >= t.length() || !U16_IS_TRAIL(t.charAt(i + 1))))) {
          t.setCharAt(i, u'x');
        } else if (U16_IS_LEAD(c)) {
          ++i;
        }
      }
    }
    if (!allowedChars(t)) checked = false;
    return t;
  }

  ZQNameEnum nameLast() const { return ZQNameTable::getSharedNameTable()->getNameLast(); }

  // In strict mode, whether a prefix for `n` is there without making one.
  bool resolvable(ZQName n) {
    return n.isEmpty() || !s->getPrefix(n, false).isEmpty() || n == s->getDefaultNamespace();
  }

  void contentOutsideRoot(const UnicodeString& written) {
    if (s->getDepth() == 0 && !isSpaceOnly(effective(written))) checked = false;
  }

  void step() {
    const bool atTop = s->getDepth() == 0;
    switch (in.pick(20)) {
      case 0:
      case 1: {  // startTag with a prefix
        ZQName n = ns(), p = prefix(), l = localName();
        if (strict && (rootStarted && atTop)) return;
        if (strict && n.isEmpty()) p = ZQName();
        if (!p.isEmpty() && n.isEmpty()) checked = false;
        s->startTag(n, p, l);
        onStart(atTop);
        break;
      }
      case 2:
      case 3: {  // startTag with a found or made prefix
        ZQName n = ns(), l = localName();
        if (strict && ((rootStarted && atTop) || !resolvable(n))) return;
        ZQNameEnum before = nameLast();
        s->startTag(n, l);
        if (nameLast() != before) checked = false;  // made prefixes are no XML names
        onStart(atTop);
        break;
      }
      case 4: {  // attribute with a prefix
        ZQName n = ns(), p = prefix(), l = localName();
        UnicodeString v = anyText();
        if (strict && n.isEmpty()) p = ZQName();
        if (strict && attributeNames.count(static_cast<ZQNameEnum>(l))) return;
        if (!p.isEmpty() && n.isEmpty()) checked = false;
        s->attribute(n, p, l, v);
        onAttribute(l);
        break;
      }
      case 5: {  // attribute with a found or made prefix
        ZQName n = ns(), l = localName();
        UnicodeString v = anyText();
        if (strict && (!resolvable(n) || attributeNames.count(static_cast<ZQNameEnum>(l)))) return;
        ZQNameEnum before = nameLast();
        s->attribute(n, l, v);
        if (nameLast() != before) checked = false;
        onAttribute(l);
        break;
      }
      case 6: {  // a declaration given as an attribute
        ZQName p = prefix(), n = ns();
        if (strict && !p.isEmpty() && n.isEmpty()) n = ZQName(UnicodeString(u"urn:a"));
        if (!p.isEmpty() && n.isEmpty()) checked = false;  // prefixes can't be undeclared
        unsigned form = in.pick(strict ? 3 : 4);
        if (form == 0) {
          s->attribute(ZQN_NS_XMLNS, ZQN_xmlns, p.isEmpty() ? ZQName(ZQN_xmlns) : p, n.toString());
        } else if (form == 1) {
          s->attribute(ZQN_NS_XMLNS, ZQName(), ZQN_xmlns, n.toString());
        } else if (form == 2) {
          s->attribute(ZQName(), ZQName(), ZQN_xmlns, n.toString());
        } else {
          s->attribute(ZQName(), ZQN_xmlns, p, n.toString());
          checked = false;  // declared and written besides: may repeat the declaration
        }
        break;
      }
      case 7: {  // endTag of the open element, or of another one
        if (in.pick(4) != 0) {
          s->endTag(s->getNamespace(), s->getName());
        } else {
          ZQName n = ns(), l = localName();
          s->endTag(n, l);
        }
        if (s->getDepth() == 0) rootClosed = true;
        break;
      }
      case 8:
      case 9: {
        UnicodeString t = anyText();
        if (strict && atTop) return;
        s->text(t);
        contentOutsideRoot(t);
        break;
      }
      case 10: {
        UnicodeString t = anyText(u']');
        if (strict && atTop) return;
        s->cdsect(t);
        if (s->getDepth() == 0 || effective(t).indexOf(UnicodeString(u"]]>")) >= 0) {
          checked = false;
        }
        break;
      }
      case 11: {
        static const char16_t* const kRefs[] = {u"amp", u"lt", u"gt", u"quot", u"apos"};
        unsigned k = in.pick(strict ? 5 : 6);
        UnicodeString name = k < 5 ? UnicodeString(kRefs[k]) : in.text();
        if (strict && atTop) return;
        s->entityRef(name);
        if (k == 5 || s->getDepth() == 0) checked = false;
        break;
      }
      case 12: {
        ZQName target = in.pick(4) ? ZQName(UnicodeString(u"pi")) : localName();
        UnicodeString data = anyText(u'?');
        s->processingInstruction(target, data);
        if (effective(data).indexOf(UnicodeString(u"?>")) >= 0) checked = false;
        break;
      }
      case 13: {
        UnicodeString t = anyText(u'-');
        UnicodeString e = effective(t);
        s->comment(t);
        if (e.indexOf(UnicodeString(u"--")) >= 0 || e.endsWith(UnicodeString(u"-"))) {
          checked = false;
        }
        break;
      }
      case 14: {
        UnicodeString t = in.pick(3) || strict ? UnicodeString(u"doc") : anyText();
        if (strict && docdeclWritten) return;
        s->docdecl(t);
        if (docdeclWritten || !isSimpleName(t)) checked = false;
        docdeclWritten = true;
        break;
      }
      case 15: {
        UnicodeString t = anyText(u'<');
        UnicodeString e = effective(t);
        if (strict && (atTop || e.indexOf(u'&') >= 0 || e.indexOf(UnicodeString(u"]]>")) >= 0)) {
          return;
        }
        s->ignorableWhitespace(t);
        if (e.indexOf(u'<') >= 0 || e.indexOf(u'&') >= 0 || e.indexOf(UnicodeString(u"]]>")) >= 0) {
          checked = false;
        }
        contentOutsideRoot(t);
        break;
      }
      case 16: {
        ZQName p = prefix(), n = ns();
        if (strict && !p.isEmpty() && n.isEmpty()) n = ZQName(UnicodeString(u"urn:b"));
        if (!p.isEmpty() && n.isEmpty()) checked = false;
        s->setPrefix(p, n);
        break;
      }
      case 17: {
        ZQName n = ns();
        ZQNameEnum before = nameLast();
        s->getPrefix(n, !strict && in.pick(2) != 0);
        if (nameLast() != before) checked = false;
        break;
      }
      case 18:
        s->flush();
        break;
      default:
        // Queries must answer whatever the state.
        (void)s->getDepth();
        (void)s->getName();
        (void)s->getNamespace();
        (void)s->getDefaultNamespace();
        (void)s->getFeature(static_cast<int>(in.byte()));
        break;
    }
  }

  void onStart(bool atTop) {
    if (atTop && (rootStarted || rootClosed)) checked = false;  // a second root
    rootStarted = true;
    attributeNames.clear();
  }

  void onAttribute(ZQName l) {
    // The same local name twice may be the same attribute twice.
    if (!attributeNames.insert(static_cast<int32_t>(static_cast<ZQNameEnum>(l))).second) {
      checked = false;
    }
  }

  void run() {
    static const char16_t* const kEncodings[] = {u"",          u"UTF-8",  u"US-ASCII",
                                                 u"Shift_JIS", u"EUC-JP", u"windows31j"};
    static const char16_t* const kStandalone[] = {u"", u"yes", u"no"};
    static const char16_t* const kGenerators[] = {u"", u"gen", u"a-b"};
    unsigned flags = in.byte();
    strict = (flags & 4) != 0;
    s->setFeature(0, flags & 1);
    s->setFeature(1, (flags & 2) != 0);
    s->setGenerator(UnicodeString(kGenerators[in.pick(3)]));
    s->setOutput(out, UnicodeString(kEncodings[in.pick(6)]),
                 UnicodeString(kStandalone[in.pick(3)]));
    if (in.pick(4) != 0) s->startDocument(UnicodeString(), UnicodeString());
    for (int ops = 0; ops < 256 && !in.done(); ++ops) {
      try {
        step();
      } catch (const ZQError&) {
        // A refused call changes nothing that the model tracks.
      }
    }
    try {
      s->endDocument();
    } catch (const ZQError&) {
    }
  }
};

// Shows the output that libxml2 refused, then stops.
[[noreturn]] void fail(const std::string& bytes) {
  std::fprintf(stderr, "not well-formed: [%s]\n", bytes.c_str());
  __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static bool initialised = [] {
    xmlInitParser();
    return true;
  }();
  (void)initialised;

  Fuzzer f(data, size);
  f.run();
  if (!f.checked || !f.rootStarted) return 0;

  const std::string bytes = f.out.str();
  // Text is written with ">" as it stands, so pieces of text written one after another may
  // join into "]]>", which XML refuses outside a CDATA section: such outputs are not judged.
  auto count = [&bytes](const char* what) {
    size_t n = 0;
    for (size_t at = bytes.find(what); at != std::string::npos; at = bytes.find(what, at + 1)) ++n;
    return n;
  };
  if (count("]]>") != count("<![CDATA[")) return 0;
  const int options = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
  xmlDocPtr doc =
      xmlReadMemory(bytes.data(), static_cast<int>(bytes.size()), "fuzz.xml", nullptr, options);
  if (!doc) fail(bytes);
  xmlFreeDoc(doc);
  // Namespace errors don't stop libxml2; a context tells about them.
  xmlParserCtxtPtr ctxt = xmlNewParserCtxt();
  if (!ctxt) return 0;
  doc = xmlCtxtReadMemory(ctxt, bytes.data(), static_cast<int>(bytes.size()), "fuzz.xml", nullptr,
                          options);
  bool nsWellFormed = doc && ctxt->nsWellFormed;
  if (doc) xmlFreeDoc(doc);
  xmlFreeParserCtxt(ctxt);
  if (!nsWellFormed) fail(bytes);
  return 0;
}
