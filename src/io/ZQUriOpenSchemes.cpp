// TEMPORARY until the memory stream and the zip reader are merged.
#include "io/ZQUriOpenInternal.h"

namespace ZQCommonNS {
std::istream* openDataUri(const ZQUri&, ZQUri::ContentInfo*) { return nullptr; }
std::istream* openJarUri(const ZQUri&, ZQUri::ContentInfo*, UnicodeString*) { return nullptr; }
std::istream* ZQUri::getStreamFromResolver() const { return nullptr; }
}  // namespace ZQCommonNS
