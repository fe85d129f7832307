// The openers behind ZQUri::getIStream, one per kind of resource. Each owns what it builds
// until it hands the stream back, and may throw; getIStream catches.
#pragma once

#include <istream>

#include "common/ZQUri.h"

namespace ZQCommonNS {

/// The local file as a binary input stream, or null (missing, unreadable, a directory).
std::istream* openLocalFile(const ZQUri& uri);
/// An HTTP or HTTPS resource; fills `info` from the response and `error` with the reason of
/// a failure (empty on success).
std::istream* openHttp(const ZQUri& uri, ZQUri::ContentInfo* info, UnicodeString* error);
/// The bytes of a "data:" URI in a memory stream.
std::istream* openDataUri(const ZQUri& uri, ZQUri::ContentInfo* info);
/// An entry of a zip ("jar:" outer "!/" entry, nested zips with further "!/"), or the outer
/// resource itself when no entry is named.
std::istream* openJarUri(const ZQUri& uri, ZQUri::ContentInfo* info, UnicodeString* error);

}  // namespace ZQCommonNS
