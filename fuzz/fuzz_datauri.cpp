// ZQDataUri on arbitrary text, with every getter. Input: one byte choosing the string type,
// then the text as UTF-8. Checks what holds for any text: a data position inside the string,
// a header that ends at a comma, page numbers that are never negative, and copies that share the
// parameters.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "common/ZQDataUri.h"

using namespace ZQCommonNS;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  // URISTR_AUTO asks the file system, so it is left out; the other types stay in memory.
  static const ZQUri::URISTRTYPE kTypes[4] = {ZQUri::URISTR_URI, ZQUri::URISTR_PATH,
                                              ZQUri::URISTR_CSS_URI, ZQUri::URISTR_CSS_PATH};
  const ZQUri::URISTRTYPE type = kTypes[data[0] & 3];
  const UnicodeString text = UnicodeString::fromUTF8(
      icu::StringPiece(reinterpret_cast<const char*>(data + 1), static_cast<int32_t>(size - 1)));

  ZQDataUri uri(text, type);
  const int pos = uri.getDataPos();
  if (pos < -1 || pos > uri.toString().length()) __builtin_trap();
  if (pos >= 0 && !uri.toString().startsWith(UnicodeString(u"data:"))) __builtin_trap();
  // A well-formed header ends with the comma just before the data.
  if (pos >= 0 && (pos < 6 || uri.toString().charAt(pos - 1) != u',')) __builtin_trap();
  (void)uri.isBase64();
  (void)uri.getMediaType();

  const auto pages = uri.getPageNumber();
  if (pages.first < 0 || pages.second < 0) __builtin_trap();
  for (const auto& [name, value] : uri.getParams()) {
    if (uri.getStringParam(name) != value) __builtin_trap();
    (void)uri.getIntegerParam(name, -7);
    (void)uri.getRealParam(name, -7.0f);
    (void)uri.getLowerNameParam(name);
    const UnicodeString& spelled = ZQName(name).toString();
    (void)uri.getStringParam(spelled);
    (void)uri.getIntegerParam(spelled, 0);
    (void)uri.getRealParam(spelled, 0.0f);
    (void)uri.getLowerNameParam(spelled);
  }
  (void)uri.getStringParam(ZQN_charset);
  (void)uri.getIntegerParam(UnicodeString(u"page"), 0);

  ZQDataUri copy(uri);
  if (&copy.getParams() != &uri.getParams()) __builtin_trap();
  ZQDataUri assigned(UnicodeString(u"data:,x"), ZQUri::URISTR_URI);
  assigned = copy;
  if (assigned.getPageNumber() != pages) __builtin_trap();

  // The same text resolved against a base.
  ZQUri base(UnicodeString(u"http://example.com/dir/"), ZQUri::URISTR_URI);
  ZQDataUri resolved(base, text, type);
  (void)resolved.getPageNumber();
  return 0;
}
