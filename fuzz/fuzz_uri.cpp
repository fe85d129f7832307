// Builds a base and a reference from arbitrary text, resolves one against the other and runs
// the string queries on the results. Input: one byte choosing the type, then the base, a line
// feed, and the reference, both UTF-8. Dot-segment removal is checked against the plain loop.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "UriDotModel.h"
#include "common/ZQUri.h"
#include "io/ZQUriText.h"

using namespace ZQCommonNS;

namespace {

using uritest::toldDotLoop;

UnicodeString fromBytes(const uint8_t* p, size_t n) {
  return UnicodeString::fromUTF8(
      icu::StringPiece(reinterpret_cast<const char*>(p), static_cast<int32_t>(n)));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  // URISTR_AUTO asks the file system; it gets one value in eight so most runs stay in memory.
  static const ZQUri::URISTRTYPE kTypes[8] = {
      ZQUri::URISTR_URI, ZQUri::URISTR_PATH, ZQUri::URISTR_CSS_URI, ZQUri::URISTR_CSS_PATH,
      ZQUri::URISTR_URI, ZQUri::URISTR_PATH, ZQUri::URISTR_CSS_URI, ZQUri::URISTR_AUTO};
  const ZQUri::URISTRTYPE type = kTypes[data[0] & 7];
  ++data;
  --size;
  size_t cut = 0;
  while (cut < size && data[cut] != '\n') ++cut;
  UnicodeString baseText = fromBytes(data, cut);
  UnicodeString refText = cut < size ? fromBytes(data + cut + 1, size - cut - 1) : UnicodeString();

  ZQUri base(baseText, type == ZQUri::URISTR_AUTO ? ZQUri::URISTR_URI : type);
  ZQUri resolved(base, refText, type);
  ZQUri alone(refText, type);

  for (const ZQUri* u : {&base, &resolved, &alone}) {
    (void)u->getLocalPath();
    (void)u->getExtension();
    (void)u->getFileName();
    (void)u->getBaseString();
    (void)u->getScheme();
    (void)u->isFile();
    (void)u->getRelativeUri(base.toString());
    (void)u->isDescendantOrSelf(resolved);
    (void)ZQUri::unescape(u->toString());
    ZQUri copy(*u);
    UnicodeString old = copy.setExtension(UnicodeString(u".x"));
    if (u->isDirectory() != old.isBogus()) abort();
    copy.removeFragment(true);
    if (copy.toString().indexOf(u'#') >= 0) abort();
  }
  // Resolving against an empty base is the same as normalising.
  if (ZQUri(ZQUri(), refText, type == ZQUri::URISTR_AUTO ? ZQUri::URISTR_URI : type) !=
      ZQUri(refText, type == ZQUri::URISTR_AUTO ? ZQUri::URISTR_URI : type)) {
    abort();
  }

  // The linear dot-segment removal agrees with the loop it replaces.
  if (refText.length() <= 512) {
    std::u16string s(refText.getBuffer(), static_cast<size_t>(refText.length()));
    std::u16string fast = s;
    fast.resize(uritext::removeDotSegments(fast.data(), fast.size()));
    if (fast != toldDotLoop(s)) abort();
  }
  return 0;
}
