// TEMPORARY until the zip reader is merged.
#include "io/ZQUriOpenInternal.h"

namespace ZQCommonNS {
std::istream* openJarUri(const ZQUri&, ZQUri::ContentInfo*, UnicodeString*) { return nullptr; }
}  // namespace ZQCommonNS
