// The scanner over arbitrary bytes, with a callback that returns, so that every error path
// goes on scanning. The first byte picks the syntax, next or nextToken and a few features;
// entities that nest, name themselves and grow are defined. No crash, and the document
// ends: a bounded number of events reaches END_DOCUMENT and stays there.
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include "FuzzTextLoop.h"
#include "common/ZQError.h"
#include "xml/ZQXmlParserImpl.h"

using namespace ZQCommonNS;

namespace {

void ignore(const ZQError&, void*) {}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzzsupport::chooseTextLoop(size);
  if (size < 1) return 0;
  uint8_t mode = data[0];
  std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
  std::istringstream in(text, std::ios::binary);
  ZQPtr<ZQXmlParserImpl> parser(new ZQXmlParserImpl());
  parser->setCallbackError(&ignore, nullptr);
  parser->setEntityExpansionLimits(8, 4096);
  static const ZQName kTypes[] = {ZQName(), ZQN_html, ZQN_xhtml, ZQN_text};
  switch (mode & 3) {
    case 0:
      break;
    default:
      parser->setParserType(kTypes[mode & 3], ZQN_html);
      break;
  }
  parser->setFeature(ZQXmlParser::FEATURE_REPORT_PI, (mode & 4) != 0);
  parser->setFeature(ZQXmlParser::FEATURE_IGNORE_UNDEFINED_ENTITIES, (mode & 8) != 0);
  parser->setFeature(ZQXmlParser::FEATURE_NO_CHARACTER_CHECK, (mode & 16) != 0);
  parser->setFeature(ZQXmlParser::FEATURE_ALLOW_UNDECLARED_PREFIX, (mode & 32) != 0);
  bool tokens = (mode & 64) != 0;
  try {
    parser->setInput(in, UnicodeString(), UnicodeString());
  } catch (const ZQError&) {
    return 0;
  }
  parser->defineEntityReplacementText(ZQName(u"e"), u"<i a='&f;'>&f;</i>");
  parser->defineEntityReplacementText(ZQName(u"f"), u"x&#65;&lt;");
  parser->defineEntityReplacementText(ZQName(u"s"), u"&s;");
  parser->defineEntityReplacementText(ZQName(u"d"), u"&s;&d;&d;");
  int events = 0;
  for (;;) {
    ZQXmlParser::EventType t = tokens ? parser->nextToken() : parser->next();
    if (t == ZQXmlParser::END_DOCUMENT) break;
    if (t == ZQXmlParser::START_TAG) {
      for (int i = 0; i < parser->getAttributeCount(); ++i) parser->getAttributeValue(i);
    }
    if (t >= ZQXmlParser::TEXT && t != ZQXmlParser::ENTITY_REF) parser->getText();
    // Far more than input and expansions can make: reaching it means a loop.
    if (++events > 4000000) __builtin_trap();
  }
  if (parser->next() != ZQXmlParser::END_DOCUMENT) __builtin_trap();
  return 0;
}
