// Small character helpers shared by the parser's reading routines.
#pragma once

#include <unicode/unistr.h>

#include "xml/ZQXmlParserImpl.h"

namespace ZQCommonNS::xmlscan {

/// Whitespace of markup: tab, line feed, carriage return and space.
inline bool isSpace(UChar32 c) { return c == 9 || c == 10 || c == 13 || c == 32; }

/// A character as a message argument; the end of input shows as nothing.
inline UnicodeString charText(UChar32 c) {
  UnicodeString text;
  if (c != ZQXmlParserImpl::END_OF_INPUT) text.append(c);
  return text;
}

}  // namespace ZQCommonNS::xmlscan
