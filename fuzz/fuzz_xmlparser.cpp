// The pull parser over arbitrary documents. Input: three control bytes, then the document.
//   byte 0: bit 0 nextToken() instead of next(); bit 1 an error callback is set; bits 2-4 the
//           callback throws at its n-th error (0: it always returns); bits 5-7 the parser
//           type (auto, html, xhtml, text, xml, then auto again).
//   bytes 1-2: features, bit i for feature i. Skipping the external DTD and forbidding
//           external entities are always on, and every URI the parser asks for is served
//           from memory by a resolver, so nothing outside the process is reached.
// At each event every getter is called and the queued errors are popped. Pulling stops at
// END_DOCUMENT or at the first exception; then a few more calls must end the document.
// Checks: only ZQError escapes, END_DOCUMENT repeats, a parser error thrown leaves a parser
// that only closes elements or ends, and the event stream ends (a capped count is a hang).
#include <cstddef>
#include <cstdint>
#include <istream>
#include <streambuf>

#include "FuzzTextLoop.h"
#include "common/ZQError.h"
#include "common/ZQName.h"
#include "common/ZQNameEnum.h"
#include "common/ZQUri.h"
#include "common/ZQXmlParser.h"

using namespace ZQCommonNS;

namespace {

constexpr size_t kMaxEvents = 1000000;

/// Serves every URI from memory: one of a few small external subsets, chosen by the URI.
class MemoryResolver : public ZQUriReferenceResolver2 {
 public:
  bool resolveUriReference(const char16_t* uri, WriteFunc write, void* data) override {
    static const char* const kBodies[] = {
        "",
        "<!ENTITY ext 'external text'>",
        "<?xml version='1.0' encoding='UTF-8'?><!ENTITY % inner '<!ENTITY deep \"d\">'>%inner;",
        "<!ELEMENT a (#PCDATA)><!ATTLIST a b CDATA #IMPLIED><![IGNORE[ <!ENTITY no 'x'> ]]>",
        "plain text & <markup/>",
    };
    unsigned hash = 0;
    for (const char16_t* p = uri; *p; ++p) hash = hash * 31 + *p;
    const char* body = kBodies[hash % (sizeof kBodies / sizeof kBodies[0])];
    size_t n = 0;
    while (body[n]) ++n;
    write(n, body, data);
    return true;
  }
};

/// A stream buffer over the fuzz input itself.
class InputBuf : public std::streambuf {
 public:
  InputBuf(const uint8_t* data, size_t size) {
    char* p = reinterpret_cast<char*>(const_cast<uint8_t*>(data));
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

struct CallbackState {
  unsigned throwAt = 0;  // 0: never throw
  unsigned calls = 0;
};

void onError(const ZQError& error, void* data) {
  CallbackState& state = *static_cast<CallbackState*>(data);
  ++state.calls;
  if (state.throwAt != 0 && state.calls >= state.throwAt) throw error;
}

volatile size_t g_sink;

/// Every query of the current event, as a caller might make them.
void queryAll(ZQXmlParser& parser, ZQXmlParser::EventType type) {
  size_t sink = 0;
  if (parser.getEventType() != type) __builtin_trap();
  const int depth = parser.getDepth();
  if (depth < 0) __builtin_trap();
  sink += static_cast<size_t>(parser.getName()) + static_cast<size_t>(parser.getPrefix()) +
          static_cast<size_t>(parser.getNamespace()) + static_cast<size_t>(parser.getTarget());
  sink += static_cast<size_t>(parser.getText().length());
  sink += static_cast<size_t>(parser.getPositionDescription().length());
  sink += static_cast<size_t>(parser.getLineNumber() + parser.getColumnNumber());
  sink += static_cast<size_t>(parser.getInputEncoding().length()) + parser.hasXmlDecl();
  sink += parser.isXML() + parser.isHTMLSyntax() + parser.isXHTMLSyntax();
  const int declared = parser.getNamespaceCount(depth);
  for (int i = 0; i < declared; ++i) {
    const ZQName prefix = parser.getNamespacePrefix(i);
    sink += static_cast<size_t>(prefix) + static_cast<size_t>(parser.getNamespaceUri(i)) +
            static_cast<size_t>(parser.getNamespace(prefix));
  }
  if (type == ZQXmlParser::TEXT || type == ZQXmlParser::CDSECT ||
      type == ZQXmlParser::IGNORABLE_WHITESPACE) {
    sink += parser.isWhitespace();
  }
  const int count = parser.getAttributeCount();
  if (type != ZQXmlParser::START_TAG && count != -1) __builtin_trap();
  if (type == ZQXmlParser::START_TAG) {
    sink += parser.isEmptyElementTag();
    for (int i = 0; i < count; ++i) {
      const ZQName ns = parser.getAttributeNamespace(i);
      const ZQName name = parser.getAttributeName(i);
      sink += static_cast<size_t>(parser.getAttributePrefix(i));
      const UnicodeString byIndex = parser.getAttributeValue(i);
      sink += static_cast<size_t>(byIndex.length());
      sink += static_cast<size_t>(parser.getAttributeValue(ns, name).length());
    }
  }
  ZQError queued;
  while (parser.popError(queued)) sink += queued.getErrorCode();
  g_sink = sink;
}

ZQName parserType(unsigned bits) {
  switch (bits) {
    case 1:
      return ZQName(ZQN_html);
    case 2:
      return ZQName(ZQN_xhtml);
    case 3:
      return ZQName(ZQN_text);
    case 4:
      return ZQName(ZQN_xml);
    default:
      return ZQName(ZQN_auto);
  }
}

bool isParserError(const ZQError& error) {
  static const UnicodeString kSource(u"ZQCommonNS::ZQXmlParserImpl");
  return error.getSource() == kSource;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  static MemoryResolver resolver;
  ZQUri::setUriReferenceResolver2(&resolver);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzzsupport::chooseTextLoop(size);
  if (size < 3) return 0;
  const uint8_t mode = data[0];
  const unsigned features = data[1] | (static_cast<unsigned>(data[2]) << 8);
  const bool tokens = (mode & 0x01) != 0;
  InputBuf buf(data + 3, size - 3);
  std::istream in(&buf);

  ZQPtr<ZQXmlParser> parser = ZQXmlParser::createXmlParser();
  for (int i = 0; i < ZQXmlParser::FEATURE_COUNT; ++i) {
    parser->setFeature(static_cast<ZQXmlParser::Feature>(i), (features >> i) & 1);
  }
  parser->setFeature(ZQXmlParser::FEATURE_SKIP_EXTERNAL_DTD, true);
  parser->setFeature(ZQXmlParser::FEATURE_FORBID_EXTERNAL_ENTITIES, true);
  parser->setParserType(parserType(mode >> 5), ZQName(ZQN_html));
  CallbackState callback;
  callback.throwAt = (mode >> 2) & 0x07;
  if (mode & 0x02) parser->setCallbackError(onError, &callback);

  try {
    parser->setInput(in, UnicodeString(), UnicodeString(u"file:///fuzz/doc.xml"));
  } catch (const ZQError&) {
    return 0;
  }

  bool parserThrew = false;
  for (size_t events = 0;; ++events) {
    if (events >= kMaxEvents) __builtin_trap();  // the document never ends
    ZQXmlParser::EventType type;
    try {
      type = tokens ? parser->nextToken() : parser->next();
    } catch (const ZQError& error) {
      parserThrew = isParserError(error);
      if (!parserThrew) return 0;  // a common error, e.g. an input that can't be opened
      break;
    }
    try {
      queryAll(*parser, type);
    } catch (const ZQError&) {
      __builtin_trap();  // every query made is legal at its event
    }
    if (type == ZQXmlParser::END_DOCUMENT) {
      // A later call ends again; with elements left open it reports code 129 again first,
      // which a callback may throw.
      try {
        if ((tokens ? parser->nextToken() : parser->next()) != ZQXmlParser::END_DOCUMENT) {
          __builtin_trap();
        }
      } catch (const ZQError& error) {
        if (error.getErrorCode() != 129) __builtin_trap();
      }
      return 0;
    }
  }

  // After a thrown parser error the parser only winds down: end tags of the open elements
  // (HTML closes them one by one) or the end, or code 129 for elements left open in XML.
  parser->setCallbackError(nullptr, nullptr);
  const int depth = parser->getDepth();
  for (int calls = 0; calls <= depth + 2; ++calls) {
    try {
      const ZQXmlParser::EventType type = parser->next();
      if (type == ZQXmlParser::END_DOCUMENT) return 0;
      if (type != ZQXmlParser::END_TAG) __builtin_trap();
    } catch (const ZQError& error) {
      if (error.getErrorCode() != 129) __builtin_trap();
      return 0;
    }
  }
  __builtin_trap();  // still not at the end
  return 0;
}
