// Qualified-name helpers and the escaping of user-defined keys into XML names.
#include "common/ZQXmlUtil.h"

#include "common/ZQChar.h"

namespace ZQCommonNS {

namespace {

// U+2182 opens an escape; it is escaped itself, so the mapping can be undone.
constexpr char16_t ESCAPE_MARK = 0x2182;

void appendHex4(UnicodeString& out, char16_t unit) {
  static const char16_t digits[] = u"0123456789ABCDEF";
  for (int shift = 12; shift >= 0; shift -= 4) out.append(digits[(unit >> shift) & 15]);
}

}  // namespace

ZQName ZQXmlUtil::makeQName(ZQName prefix, ZQName local) {
  if (prefix.isEmpty()) return local;
  UnicodeString text(prefix.toString());
  text.append(u':').append(local.toString());
  return ZQName(text);
}

UnicodeString ZQXmlUtil::makeQNameStr(const UnicodeString& prefix, const UnicodeString& local) {
  if (prefix.isEmpty()) return local;
  UnicodeString text(prefix);
  return text.append(u':').append(local);
}

UnicodeString ZQXmlUtil::makeNSQNameStr(const UnicodeString& ns, const UnicodeString& local) {
  if (ns.isEmpty()) return local;
  UnicodeString text;
  if (ns == ZQName(ZQN_NS_XML).toString()) return text.append(u"xml:").append(local);
  if (ns == ZQName(ZQN_NS_XMLNS).toString()) {
    if (local == u"xmlns") return local;
    return text.append(u"xmlns:").append(local);
  }
  // The colon after the brace belongs to the format.
  return text.append(u'{').append(ns).append(u"}:").append(local);
}

ZQName ZQXmlUtil::getPrefixFromQName(ZQName qname) {
  const UnicodeString& text = qname.toString();
  int colon = text.indexOf(u':');
  if (colon <= 0) return ZQName();
  return ZQName(UnicodeString(text, 0, colon));
}

UnicodeString ZQXmlUtil::getPrefixFromQNameStr(const UnicodeString& qname) {
  int colon = qname.indexOf(u':');
  if (colon <= 0) return UnicodeString();
  return UnicodeString(qname, 0, colon);
}

ZQName ZQXmlUtil::getLocalPartFromQName(ZQName qname) {
  // Unlike the prefix, the local part is cut at a colon in first place too.
  const UnicodeString& text = qname.toString();
  int colon = text.indexOf(u':');
  if (colon < 0) return qname;
  return ZQName(UnicodeString(text, colon + 1));
}

UnicodeString ZQXmlUtil::getLocalPartFromQNameStr(const UnicodeString& qname) {
  int colon = qname.indexOf(u':');
  if (colon < 0) return qname;
  return UnicodeString(qname, colon + 1);
}

UnicodeString ZQXmlUtil::escapeXmpUserDefinedKey(const UnicodeString& key) {
  UnicodeString out;
  int length = key.length();
  for (int i = 0; i < length;) {
    UChar32 c = key.char32At(i);
    int units = U16_LENGTH(c);
    if (i + units > length) units = length - i;
    bool keep = c != ESCAPE_MARK && c != u':' &&
                (i == 0 ? ZQChar::isNCNameStartChar(c) : ZQChar::isNameChar(c));
    if (keep) {
      out.append(key, i, units);
    } else {
      for (int k = 0; k < units; ++k) {
        out.append(ESCAPE_MARK);
        appendHex4(out, key.charAt(i + k));
      }
    }
    i += units;
  }
  return out;
}

}  // namespace ZQCommonNS
