// Root sniffing with the parser factory as an argument, so that the walk over the events
// can be run with any parser.
#pragma once

#include <istream>

#include "common/ZQXmlUtil.h"

namespace ZQCommonNS::xmlutil {

/// Makes the parser a sniff uses.
typedef ZQPtr<ZQXmlParser> (*ParserFactory)();

/// getRootParser of a stream with parsers from `make`.
ZQCOMMON_API ZQPtr<ZQXmlParser> getRootParser(ParserFactory make, std::istream& stream,
                                              const ZQUri::ContentInfo* contentInfo,
                                              const UnicodeString& extension,
                                              const UnicodeString& id);
/// getRootParser of a URI text with parsers from `make`.
ZQCOMMON_API ZQPtr<ZQXmlParser> getRootParser(ParserFactory make, const UnicodeString& uriText,
                                              const UnicodeString& id);
/// getRootName of a stream with parsers from `make`.
ZQCOMMON_API ZQName getRootName(ParserFactory make, ZQName& localName, std::istream& stream,
                                const ZQUri::ContentInfo* contentInfo,
                                const UnicodeString& extension, const UnicodeString& id);
/// getRootName of a URI text with parsers from `make`.
ZQCOMMON_API ZQName getRootName(ParserFactory make, ZQName& localName, const UnicodeString& uriText,
                                const UnicodeString& id);
/// getXSLStylesheetNamespace of a seekable stream with parsers from `make`.
ZQCOMMON_API ZQName getXSLStylesheetNamespace(ParserFactory make, ZQName& localName,
                                              std::istream& stream);

}  // namespace ZQCommonNS::xmlutil
