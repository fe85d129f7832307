// Colour syntax: placeholder until the colour reader lands; every text stays text.
#include "common/ZQParser.h"

namespace ZQCommonNS {

ZQValue ZQParser::parseColor(const UnicodeString& text, bool) { return ZQValue(text, ZQUNIT_NONE); }

ZQValue ZQParser::parseColor(ZQTokenizer&, bool) { return ZQValue(); }

}  // namespace ZQCommonNS
