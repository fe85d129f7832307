// Counter styles built from the input: every system, any symbols, ranges and numbers; and the
// kansuji conversion of the input text in its three modes.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>

#include "common/ZQUtil.h"
#include "util/ZQCounterStyleInternal.h"

using namespace ZQCommonNS;
using CounterStyle = ZQUtil::CounterStyle;

namespace {

struct Reader {
  const uint8_t* data;
  size_t size;
  uint8_t byte() {
    if (size == 0) return 0;
    --size;
    return *data++;
  }
  long long integer() {
    unsigned long long v = 0;
    for (int i = 0; i < 8; ++i) v = (v << 8) | byte();
    return static_cast<long long>(v);
  }
  // Small or extreme numbers, so that both the ordinary and the edge paths are reached.
  long long number() {
    const uint8_t kind = byte();
    if (kind % 4 == 0) return integer();
    return static_cast<long long>(static_cast<int8_t>(byte())) * (kind % 4 == 1 ? 1 : 997);
  }
};

const ZQNameEnum kSystems[] = {ZQN_alphabetic,
                               ZQN_additive,
                               ZQN_cyclic,
                               ZQN_fixed,
                               ZQN_numeric,
                               ZQN_symbolic,
                               ZQN_kansuji,
                               ZQN_ethiopic_numeric,
                               ZQN_simp_chinese_formal,
                               ZQN_simp_chinese_informal,
                               ZQN_trad_chinese_formal,
                               ZQN_trad_chinese_informal,
                               ZQN_decimal};

const CounterStyle* selfLookup(ZQName, void* data) { return static_cast<CounterStyle*>(data); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Reader in{data, size};
  CounterStyle style(kSystems[in.byte() % std::size(kSystems)]);
  const int symbols = in.byte() % 30;
  for (int i = 0; i < symbols; ++i) {
    const int length = in.byte() % 4;
    UnicodeString s;
    for (int k = 0; k < length; ++k) s.append(static_cast<UChar32>(0x20 + in.byte()));
    style.addSymbol(CounterStyle::Symbol(s));
  }
  const int additive = in.byte() % 8;
  for (int i = 0; i < additive; ++i)
    style.addAdditiveSymbol(static_cast<int>(in.number()), 'a' + (in.byte() % 26));
  if (in.byte() % 2) {
    const long long low = in.number();
    style.addRange(low, low + (in.number() & 0xFFFF));
  }
  style.setFirst(static_cast<int>(in.number()));
  style.setPad(in.byte() % 64 - 8, in.byte() % 2 ? "0" : "ab");
  style.setPrefix("<");
  const long long n = in.number();
  try {
    UnicodeString text = style.formatNumber(n, in.byte() % 2 ? selfLookup : nullptr, &style);
    // Every system stops at 1000 units or falls back; padding stops at 1000 code points.
    if (text.length() > 4200) __builtin_trap();
    if (!text.startsWith(UnicodeString(u"<"))) __builtin_trap();
  } catch (const std::out_of_range&) {
    // the bound check on symbol indexes of the numeral systems
  }

  UnicodeString text;
  for (size_t i = 0; i < size; ++i)
    text.append(static_cast<char16_t>(data[i] < 0x80 ? data[i] : 0x3000 + data[i]));
  const auto& table = util::defaultKansujiTable();
  UnicodeString simple = util::convertKansujiText(text, util::KansujiMode::Simple, table);
  if (simple.countChar32() != text.length()) __builtin_trap();
  util::convertKansujiText(text, util::KansujiMode::Grouping, table);
  util::convertKansujiText(text, util::KansujiMode::Readable, table);
  return 0;
}
