// The event loop of the parser: next, nextToken and the parsing of markup.
#include "xml/ZQXmlParserImpl.h"

namespace ZQCommonNS {

// Placeholder until the scanner lands: every document reads as empty.
ZQXmlParser::EventType ZQXmlParserImpl::nextToken() {
  m_eventType = END_DOCUMENT;
  return m_eventType;
}

ZQXmlParser::EventType ZQXmlParserImpl::next() { return nextToken(); }

void ZQXmlParserImpl::rewind() {}

}  // namespace ZQCommonNS
