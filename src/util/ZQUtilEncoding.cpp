// Encoding names: the library's canonical spellings and the IANA names ICU knows.
#include <unicode/locid.h>
#include <unicode/ucnv.h>

#include <memory>
#include <string>
#include <unordered_map>

#include "common/ZQUtil.h"
#include "util/ZQUtilInternal.h"

namespace ZQCommonNS {

namespace {

struct AliasRow {
  const char16_t* canonical;
  const char16_t* aliases[9];  // null-terminated
};

// Each row's canonical name is also its own alias.
constexpr AliasRow kAliasRows[] = {
    {u"UTF-8", {nullptr}},
    {u"ISO-10646-UCS-2", {u"UTF-16", u"UCS-2", u"UNICODE", nullptr}},
    {u"UTF-16BE", {nullptr}},
    {u"UTF-16LE", {nullptr}},
    {u"ISO-10646-UCS-4", {u"UTF-32", u"UCS-4", nullptr}},
    {u"US-ASCII",
     {u"ASCII", u"ISO646-US", u"ISO_646.IRV", u"ISO_646.IRV:1991", u"ANSI_X3.4", u"ANSI_X3.4:1968",
      u"ANSI_X3.4:1986", nullptr}},
    {u"ISO-8859-1", {u"ISO-8859-1:1987", u"LATIN1", nullptr}},
    {u"ISO-8859-2", {u"ISO_8859-2", u"ISO_8859-2:1987", u"LATIN2", nullptr}},
    {u"ISO-8859-3", {u"ISO_8859-3", u"ISO_8859-3:1988", u"LATIN3", nullptr}},
    {u"ISO-8859-4", {u"ISO_8859-4", u"ISO_8859-4:1988", u"LATIN4", nullptr}},
    {u"ISO-8859-5", {u"ISO_8859-5", u"ISO_8859-5:1988", u"CYRILLIC", nullptr}},
    {u"ISO-8859-6", {u"ISO_8859-6", u"ISO_8859-6:1987", u"ARABIC", nullptr}},
    {u"ISO-8859-7", {u"ISO_8859-7", u"ISO_8859-7:1987", u"GREEK", nullptr}},
    {u"ISO-8859-8", {u"ISO_8859-8", u"ISO_8859-8:1988", u"HEBREW", nullptr}},
    {u"ISO-8859-9", {u"ISO_8859-9", u"ISO_8859-9:1989", u"LATIN5", nullptr}},
    {u"ISO-8859-10", {u"ISO_8859-10:1992", u"LATIN6", nullptr}},
    {u"ISO-8859-11", {nullptr}},
    {u"ISO-8859-13", {nullptr}},
    {u"ISO-8859-14", {u"ISO_8859-14", u"ISO_8859-14:1998", u"LATIN8", nullptr}},
    {u"ISO-8859-15", {u"ISO_8859-15", u"LATIN-9", nullptr}},
    {u"ISO-8859-16", {u"ISO_8859-16", u"ISO_8859-16:2001", u"LATIN10", nullptr}},
    {u"WINDOWS31J", {u"SHIFT_JIS", nullptr}},
    {u"EUC-JP", {nullptr}},
    {u"ISO-2022-JP", {nullptr}},
    {u"KoreanKSC", {u"KS_C_5601-1987", u"KOREAN", u"KOREANKSC", u"ISO-IR-149", nullptr}},
    {u"ChineseGBK", {u"CHINESEGBK", u"GB2312", nullptr}},
    {u"ChineseBIG5", {u"BIG5", u"CHINESEBIG5", nullptr}},
};

// Letters in upper case and digits without the leading zeros of their run; the rest goes.
std::u16string encodingKey(const char16_t* s, int32_t len) {
  std::u16string key;
  key.reserve(static_cast<size_t>(len));
  for (int32_t i = 0; i < len; ++i) {
    char16_t c = s[i];
    if (c >= u'a' && c <= u'z') {
      key.push_back(static_cast<char16_t>(c - 0x20));
    } else if (c >= u'A' && c <= u'Z') {
      key.push_back(c);
    } else if (c >= u'0' && c <= u'9') {
      // A zero that another digit follows is dropped: this drops the zeros that lead a run
      // (keeping the last digit of an all-zero run) and lets "ISO885901" meet "ISO-8859-1",
      // while "ISO-8859-10" keeps its final zero.
      bool digitFollows = i + 1 < len && s[i + 1] >= u'0' && s[i + 1] <= u'9';
      if (c != u'0' || !digitFollows) key.push_back(c);
    }
  }
  return key;
}

std::u16string encodingKey(const char16_t* s) {
  int32_t n = 0;
  while (s[n]) ++n;
  return encodingKey(s, n);
}

using EncodingTable = std::unordered_map<std::u16string, const char16_t*>;

EncodingTable* g_encodingTable = nullptr;

EncodingTable* buildEncodingTable() {
  auto table = std::make_unique<EncodingTable>();
  for (const AliasRow& row : kAliasRows) {
    table->emplace(encodingKey(row.canonical), row.canonical);
    for (const char16_t* const* a = row.aliases; *a; ++a)
      table->emplace(encodingKey(*a), row.canonical);
  }
  return table.release();
}

const EncodingTable& encodingTable() {
  // Built at library start and then read without a lock; only after cleanup is it made again.
  if (!g_encodingTable) g_encodingTable = buildEncodingTable();
  return *g_encodingTable;
}

// Makes the table while the library loads, before any thread can ask for it.
[[maybe_unused]] const bool g_encodingTableBuilt = (encodingTable(), true);

}  // namespace

void util::releaseEncodingTable() {
  delete g_encodingTable;
  g_encodingTable = nullptr;
}

UnicodeString ZQUtil::getCanonicalEncoding(const UnicodeString& name) {
  if (name.isBogus() || name.isEmpty()) return name;
  const EncodingTable& table = encodingTable();
  auto it = table.find(encodingKey(name.getBuffer(), name.length()));
  if (it == table.end()) return name;
  return UnicodeString(it->second);
}

UnicodeString ZQUtil::getStandardEncoding(const UnicodeString& name) {
  if (name.isBogus()) return UnicodeString(u"UTF-8");
  UnicodeString upper(name);
  upper.trim();
  if (upper.isEmpty()) return UnicodeString(u"UTF-8");
  upper.toUpper(icu::Locale::getRoot());

  static constexpr struct {
    const char16_t* from;
    const char16_t* to;
  } kReplace[] = {
      {u"ANSI_X3.4", u"ANSI_X3.4-1968"}, {u"CHINESEBIG5", u"BIG5"},
      {u"CHINESEGBK", u"GBK"},           {u"ISO_646.IRV", u"ISO_646.IRV:1991"},
      {u"KOREANKSC", u"KS_C_5601-1987"},
  };
  for (const auto& r : kReplace) {
    if (upper == UnicodeString(r.from)) {
      upper = UnicodeString(r.to);
      break;
    }
  }

  // ICU takes invariant characters only; anything else cannot name a converter.
  std::string narrow;
  for (int32_t i = 0; i < upper.length(); ++i) {
    char16_t c = upper.charAt(i);
    if (c == 0 || c > 0x7E) return UnicodeString();
    narrow.push_back(static_cast<char>(c));
  }
  UErrorCode status = U_ZERO_ERROR;
  const char* standard = ucnv_getStandardName(narrow.c_str(), "IANA", &status);
  if (U_FAILURE(status) || !standard) return UnicodeString();
  UnicodeString result(standard, -1, US_INV);
  if (result == UnicodeString(u"UTF-16")) return UnicodeString(u"UTF-16LE");
  if (result == UnicodeString(u"UTF-32")) return UnicodeString(u"UTF-32LE");
  return result;
}

}  // namespace ZQCommonNS
