// The XML declaration, the DOCTYPE with its internal and external subsets, entity
// declarations and the scope of the MathML entity set.
#include "xml/ZQXmlParserImpl.h"

namespace ZQCommonNS {

// Placeholders until the prolog reader lands: declarations are passed over.
void ZQXmlParserImpl::parseXmlDecl() {
  m_pendingToken = TOKEN_NONE;
  UChar32 last = 0;
  for (UChar32 c = readChar(); c != END_OF_INPUT; c = readChar()) {
    if (c == u'>' && last == u'?') break;
    last = c;
  }
  m_hasXmlDecl = true;
}

void ZQXmlParserImpl::parseDocDecl() {
  m_eventType = DOCDECL;
  m_pendingToken = TOKEN_NONE;
  int depth = 1;
  for (UChar32 c = readChar(); c != END_OF_INPUT; c = readChar()) {
    if (c == u'<') ++depth;
    if (c == u'>' && --depth == 0) break;
  }
  m_hasDoctype = true;
}

void ZQXmlParserImpl::parseEntityDecl() {}

void ZQXmlParserImpl::parseExternalSubset() {}

void ZQXmlParserImpl::applyRootEntityRules() {}

void ZQXmlParserImpl::enterMathScope() {}

void ZQXmlParserImpl::leaveMathScope() {}

}  // namespace ZQCommonNS
