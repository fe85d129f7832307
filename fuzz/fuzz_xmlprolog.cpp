// Documents with declarations, DOCTYPEs, internal subsets and external DTDs, read to their
// end under a callback that returns, so that every routine must end after its errors. The
// first byte picks features; every URI opened comes from a resolver in memory, so nothing
// touches the disk or the network.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>

#include "FuzzTextLoop.h"
#include "common/ZQError.h"
#include "common/ZQUri.h"
#include "xml/ZQXmlParserImpl.h"

using namespace ZQCommonNS;

namespace {

// Any DTD or entity asked for reads as this text.
class MemoryResolver : public ZQUriReferenceResolver2 {
 public:
  bool resolveUriReference(const char16_t*, WriteFunc write, void* data) override {
    static const char kText[] =
        "<!ENTITY ext 'E'>\n<!ENTITY % pe '<!ENTITY pg \"P\">'>\n%pe;\n"
        "<![IGNORE[ <!ENTITY no 'x'> ]]>\n<!-- c --><?pi x?>\n";
    write(sizeof kText - 1, kText, data);
    return true;
  }
};

void ignoreError(const ZQError&, void*) {}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzzsupport::chooseTextLoop(size);
  static MemoryResolver resolver;
  static bool installed = (ZQUri::setUriReferenceResolver2(&resolver), true);
  (void)installed;
  if (size < 1) return 0;
  const uint8_t mode = data[0];
  std::istringstream in(std::string(reinterpret_cast<const char*>(data + 1), size - 1),
                        std::ios::binary);
  ZQPtr<ZQXmlParserImpl> parser(new ZQXmlParserImpl());
  parser->setFeature(ZQXmlParser::FEATURE_SKIP_EXTERNAL_DTD, (mode & 0x01) != 0);
  parser->setFeature(ZQXmlParser::FEATURE_IGNORE_UNDEFINED_ENTITIES, (mode & 0x02) != 0);
  parser->setFeature(ZQXmlParser::FEATURE_IGNORE_DTD_ERRORS, (mode & 0x04) != 0);
  parser->setFeature(ZQXmlParser::FEATURE_FORBID_EXTERNAL_ENTITIES, (mode & 0x08) != 0);
  if (mode & 0x10) parser->setCallbackError(ignoreError, nullptr);
  // Small limits keep hostile expansions quick.
  parser->setEntityExpansionLimits(16, 1 << 16);
  try {
    parser->setInput(in, UnicodeString(), UnicodeString("/fuzz/"));
    for (int i = 0; i < 100000; ++i) {
      ZQXmlParser::EventType t = (mode & 0x20) ? parser->nextToken() : parser->next();
      if (t == ZQXmlParser::END_DOCUMENT) return 0;
    }
    __builtin_trap();  // every event consumes input: a document ends
  } catch (const ZQError&) {
  }
  return 0;
}
