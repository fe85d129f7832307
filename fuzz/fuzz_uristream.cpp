// Opening URIs that need no network: "data:" URIs and zip entries inside them ("jar:data:"),
// and the splitting of HTTP URLs. Input: one byte choosing the mode, then the rest.
//   mode 0: the rest is URI text; only texts starting with "data:" or "jar:data:" are opened.
//   mode 1: the rest follows "http://" and "https://" and is split as an HTTP URL.
//   mode 2: the rest is the bytes of a zip, opened as "jar:data:;base64,...!/a.txt" and
//           "...!/in.zip!/b.txt".
// Checks: getIStream never throws, a "data:" URI always gives a stream, reads end, the split
// URL has a path starting with '/' and the port of its scheme unless one is written.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>

#include "common/ZQUri.h"
#include "io/ZQUriStreamInternal.h"

using namespace ZQCommonNS;

namespace {

std::string base64(const uint8_t* p, size_t n) {
  static const char kAlphabet[] =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  for (size_t i = 0; i < n; i += 3) {
    uint32_t v = static_cast<uint32_t>(p[i]) << 16;
    if (i + 1 < n) v |= static_cast<uint32_t>(p[i + 1]) << 8;
    if (i + 2 < n) v |= p[i + 2];
    out += kAlphabet[(v >> 18) & 63];
    out += kAlphabet[(v >> 12) & 63];
    out += i + 1 < n ? kAlphabet[(v >> 6) & 63] : '=';
    out += i + 2 < n ? kAlphabet[v & 63] : '=';
  }
  return out;
}

/// Opens `uri` and reads at most a few megabytes of it (an inflated entry may be large).
void openAndRead(const ZQUri& uri, bool mustOpen) {
  ZQUri::ContentInfo info;
  UnicodeString error;
  std::unique_ptr<std::istream> in;
  try {
    in.reset(uri.getIStream(&info, &error));
  } catch (...) {
    __builtin_trap();  // getIStream never throws
  }
  if (mustOpen && !in) __builtin_trap();
  if (!in) return;
  char buf[4096];
  size_t total = 0;
  while (total < (4u << 20) && (in->read(buf, sizeof buf) || in->gcount() > 0)) {
    total += static_cast<size_t>(in->gcount());
  }
  (void)ZQUri::isGzip(*in);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const uint8_t mode = data[0] % 3;
  ++data;
  --size;
  const std::string rest(reinterpret_cast<const char*>(data), size);

  if (mode == 0) {
    const UnicodeString text = UnicodeString::fromUTF8(rest);
    const bool isData = text.startsWith(UnicodeString(u"data:"));
    if (!isData && !text.startsWith(UnicodeString(u"jar:data:"))) return 0;
    const ZQUri uri(text, ZQUri::URISTR_URI);
    if (!uri.toString().startsWith(isData ? UnicodeString(u"data:") : UnicodeString(u"jar:data:")))
      __builtin_trap();
    openAndRead(uri, isData);
  } else if (mode == 1) {
    for (const char* scheme : {"http://", "https://"}) {
      const ZQUri uri(UnicodeString::fromUTF8(scheme + rest), ZQUri::URISTR_URI);
      const ZQHttpUrlParts parts = crackHttpUrl(uri);
      if (parts.path.isEmpty() || parts.path[0] != u'/') __builtin_trap();
      if (rest.find(':') == std::string::npos && parts.port != (parts.secure ? 443 : 80)) {
        __builtin_trap();
      }
    }
  } else {
    const std::string zip = "jar:data:;base64," + base64(data, size);
    openAndRead(ZQUri(UnicodeString::fromUTF8(zip + "!/a.txt"), ZQUri::URISTR_URI), false);
    openAndRead(ZQUri(UnicodeString::fromUTF8(zip + "!/in.zip!/b.txt"), ZQUri::URISTR_URI), false);
    openAndRead(ZQUri(UnicodeString::fromUTF8(zip), ZQUri::URISTR_URI), true);
  }
  return 0;
}
