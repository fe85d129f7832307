// Japanese numerals of the digit runs of a text, over the counter styles' one conversion.
#include "common/ZQUtil.h"
#include "util/ZQCounterStyleInternal.h"
#include "util/ZQFormatNumberInternal.h"

namespace ZQCommonNS {

namespace {

// Overwrites table entries from `first` on with the code points of `text`, at most `count`.
// Returns where the text stopped.
int32_t fillTable(util::KansujiTable& table, int first, int count, const UnicodeString& text,
                  int32_t start) {
  int32_t i = start;
  for (int k = 0; k < count && i < text.length(); ++k) {
    table[static_cast<size_t>(first + k)] = text.char32At(i);
    i = text.moveIndex32(i, 1);
  }
  return i;
}

}  // namespace

UnicodeString ZQUtil::convertKansuji(const UnicodeString& text, const ZQName& mode,
                                     const ZQName& digits, const UnicodeString& units,
                                     const UnicodeString& /*reserved*/) {
  util::KansujiTable table = util::defaultKansujiTable();
  util::KansujiMode kmode = util::KansujiMode::Simple;
  if (mode == ZQN_grouping)
    kmode = util::KansujiMode::Grouping;
  else if (mode == ZQN_readable)
    kmode = util::KansujiMode::Readable;

  if (digits == ZQN_latin) {
    for (int d = 0; d < 10; ++d) table[static_cast<size_t>(1 + d)] = 0xFF10 + d;
  } else if (digits != ZQN_kanji && !digits.isEmpty()) {
    fillTable(table, 1, 10, digits.toString(), 0);
  }
  // Ten, hundred and thousand, then the powers of ten thousand.
  const int32_t rest = fillTable(table, 11, 3, units, 0);
  fillTable(table, 14, 12, units, rest);
  return util::convertKansujiText(text, kmode, table);
}

UnicodeString ZQUtil::convertKansuji(long long n, const ZQName& mode, const ZQName& digits,
                                     const UnicodeString& units, const UnicodeString& reserved) {
  return convertKansuji(
      formatNumber(n, UnicodeString(u"1"), UnicodeString(), 0, ZQLang(), ZQN_auto), mode, digits,
      units, reserved);
}

}  // namespace ZQCommonNS
