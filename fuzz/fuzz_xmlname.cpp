// Qualified-name helpers and the escaping of user-defined keys: no crash, an escaped key is
// an XML name without colon that unescapes to the key, and a name split at its first colon
// joins again to itself.
#include <cstddef>
#include <cstdint>

#include "common/ZQChar.h"
#include "common/ZQXmlUtil.h"

using namespace ZQCommonNS;

namespace {

int hexValue(char16_t c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Undoes the escaping: the mark and four hex digits stand for one UTF-16 unit.
bool unescape(const UnicodeString& text, UnicodeString& out) {
  for (int i = 0; i < text.length(); ++i) {
    char16_t c = text.charAt(i);
    if (c != 0x2182) {
      out.append(c);
      continue;
    }
    if (i + 4 >= text.length()) return false;
    int unit = 0;
    for (int k = 1; k <= 4; ++k) {
      int v = hexValue(text.charAt(i + k));
      if (v < 0) return false;
      unit = unit * 16 + v;
    }
    out.append(static_cast<char16_t>(unit));
    i += 4;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  UnicodeString text;
  for (size_t i = 0; i + 1 < size; i += 2) text.append(char16_t(data[i] | (data[i + 1] << 8)));

  UnicodeString escaped = ZQXmlUtil::escapeXmpUserDefinedKey(text);
  for (int i = 0; i < escaped.length();) {
    UChar32 c = escaped.char32At(i);
    bool ok = c != ':' && (i == 0 ? ZQChar::isNCNameStartChar(c) : ZQChar::isNameChar(c));
    if (!ok) __builtin_trap();
    i += U16_LENGTH(c);
  }
  UnicodeString back;
  if (!unescape(escaped, back) || back != text) __builtin_trap();

  UnicodeString prefix = ZQXmlUtil::getPrefixFromQNameStr(text);
  UnicodeString local = ZQXmlUtil::getLocalPartFromQNameStr(text);
  int colon = text.indexOf(u':');
  if (colon > 0) {
    if (ZQXmlUtil::makeQNameStr(prefix, local) != text) __builtin_trap();
  } else if (!prefix.isEmpty()) {
    __builtin_trap();
  }
  if (colon < 0 && local != text) __builtin_trap();
  if (colon >= 0 && local != UnicodeString(text, colon + 1)) __builtin_trap();
  UnicodeString qualified = ZQXmlUtil::makeNSQNameStr(prefix, local);
  if (prefix.isEmpty() ? qualified != local : !qualified.endsWith(local)) __builtin_trap();
  return 0;
}
