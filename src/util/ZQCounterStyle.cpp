// Counter styles: the six CSS systems, the library's own numeral systems, and the fallback.
#include <algorithm>
#include <cstdarg>
#include <string>

#include "common/ZQUtil.h"
#include "util/ZQCounterStyleInternal.h"

namespace ZQCommonNS {

using CounterStyle = ZQUtil::CounterStyle;

namespace {

// Positional and repeating systems give up at this many UTF-16 units: the text is bounded, and
// building it by prepending never turns quadratic.
constexpr int kMaxUnits = 1000;

// Padding beyond this many code points is not written: a caller's absurd pad length must not
// exhaust memory. Sensible pads lie far below it.
constexpr int kMaxPad = 1000;

UnicodeString fromChars(const char* text) { return text ? UnicodeString(text) : UnicodeString(); }

template <class T>
int compareLists(const std::vector<T>* a, const std::vector<T>* b) {
  const size_t na = a ? a->size() : 0;
  const size_t nb = b ? b->size() : 0;
  if (na != nb) return na < nb ? -1 : 1;
  for (size_t i = 0; i < na; ++i) {
    if ((*a)[i] < (*b)[i]) return -1;
    if ((*b)[i] < (*a)[i]) return 1;
  }
  return 0;
}

template <class T>
int compareValues(const T& a, const T& b) {
  return a < b ? -1 : b < a ? 1 : 0;
}

bool isChineseSystem(ZQName system) {
  return system == ZQN_simp_chinese_informal || system == ZQN_simp_chinese_formal ||
         system == ZQN_trad_chinese_informal || system == ZQN_trad_chinese_formal;
}

// The absolute value, also of the lowest long long.
unsigned long long magnitude(long long n) {
  return n < 0 ? 0ull - static_cast<unsigned long long>(n) : static_cast<unsigned long long>(n);
}

// Marks a style as falling back for the time of the hand-over, also when a bound check throws.
class FallbackMark {
 public:
  explicit FallbackMark(std::atomic<int>& mark) : m_mark(mark) {
    m_mark.fetch_add(1, std::memory_order_relaxed);
  }
  ~FallbackMark() { m_mark.fetch_sub(1, std::memory_order_relaxed); }
  FallbackMark(const FallbackMark&) = delete;
  FallbackMark& operator=(const FallbackMark&) = delete;

 private:
  std::atomic<int>& m_mark;
};

// The four Chinese long forms: symbols 0-9 are digits, 10-12 ten, hundred and thousand.
// A run of zeros inside the number is one zero, trailing zeros are silent, and the informal
// forms drop the "one" of ten to nineteen.
UnicodeString formatChinese(unsigned long long m, const CounterStyle::SymbolList& symbols,
                            bool informal) {
  if (m == 0) return symbols.at(0);
  UnicodeString text;
  const unsigned long long m0 = m;
  int prev = 0;
  for (int pos = 0; m > 0; ++pos, m /= 10) {
    const int d = static_cast<int>(m % 10);
    if (d != 0 && pos != 0) text.insert(0, symbols.at(pos + 9));
    if ((d != 0 || !text.isEmpty()) && !(informal && pos == 1 && m0 >= 10 && m0 <= 19) &&
        (d != 0 || prev != 0))
      text.insert(0, symbols.at(d));
    prev = d;
  }
  return text;
}

// The table of a kansuji style: the defaults, overridden by the style's symbols. Their count
// picks the mode: 22 grouping, 25 readable, any other simple (which reads exactly ten).
util::KansujiMode kansujiTable(const CounterStyle::SymbolList* symbols, util::KansujiTable& table) {
  table = util::defaultKansujiTable();
  if (symbols == nullptr || symbols->empty()) return util::KansujiMode::Simple;
  auto take = [&](int symbol, int index) {
    const CounterStyle::Symbol& s = symbols->at(symbol);
    if (!s.isEmpty()) table[index] = s.char32At(0);
  };
  const size_t count = symbols->size();
  for (int i = 0; i < 10; ++i) take(i, 1 + i);
  if (count == 22) {
    for (int i = 10; i < 22; ++i) take(i, 14 + i - 10);
    return util::KansujiMode::Grouping;
  }
  if (count == 25) {
    for (int i = 10; i < 13; ++i) take(i, 11 + i - 10);
    for (int i = 13; i < 25; ++i) take(i, 14 + i - 13);
    return util::KansujiMode::Readable;
  }
  return util::KansujiMode::Simple;
}

}  // namespace

// ---- Symbol and IntSymbol ----

CounterStyle::Symbol::Symbol(int codePoint) : UnicodeString(static_cast<UChar32>(codePoint)) {}

bool CounterStyle::Symbol::operator==(const Symbol& other) const {
  return static_cast<const UnicodeString&>(*this) == static_cast<const UnicodeString&>(other) &&
         m_url == other.m_url;
}

bool CounterStyle::Symbol::operator<(const Symbol& other) const {
  const int c = compare(other);
  if (c != 0) return c < 0;
  return m_url < other.m_url;
}

bool CounterStyle::IntSymbol::operator==(const IntSymbol& other) const {
  return value == other.value && symbol == other.symbol;
}

bool CounterStyle::IntSymbol::operator<(const IntSymbol& other) const {
  if (value != other.value) return value < other.value;
  return symbol < other.symbol;
}

// ---- Construction ----

CounterStyle::CounterStyle() : CounterStyle(ZQName(ZQN_symbolic)) {}

CounterStyle::CounterStyle(ZQName system)
    : m_system(system),
      m_negative{Symbol(UnicodeString(u"-")), Symbol()},
      m_suffix(UnicodeString(u". ")),
      m_fallback(ZQN_decimal) {}

CounterStyle::CounterStyle(const CounterStyle& other)
    : m_system(other.m_system),
      m_first(other.m_first),
      m_symbols(other.m_symbols ? new SymbolList(*other.m_symbols) : nullptr),
      m_additiveSymbols(other.m_additiveSymbols ? new IntSymbolList(*other.m_additiveSymbols)
                                                : nullptr),
      m_negative{other.m_negative[0], other.m_negative[1]},
      m_prefix(other.m_prefix),
      m_suffix(other.m_suffix),
      m_range(other.m_range ? new RangeList(*other.m_range) : nullptr),
      m_pad(other.m_pad),
      m_reserved(other.m_reserved),
      m_fallback(other.m_fallback),
      m_predefined(other.m_predefined) {}

CounterStyle& CounterStyle::operator=(const CounterStyle& other) {
  if (this == &other) return *this;
  m_system = other.m_system;
  m_first = other.m_first;
  m_symbols.reset(other.m_symbols ? new SymbolList(*other.m_symbols) : nullptr);
  m_additiveSymbols.reset(other.m_additiveSymbols ? new IntSymbolList(*other.m_additiveSymbols)
                                                  : nullptr);
  m_negative[0] = other.m_negative[0];
  m_negative[1] = other.m_negative[1];
  m_prefix = other.m_prefix;
  m_suffix = other.m_suffix;
  m_range.reset(other.m_range ? new RangeList(*other.m_range) : nullptr);
  m_pad = other.m_pad;
  m_reserved = other.m_reserved;
  m_fallback = other.m_fallback;
  m_predefined = other.m_predefined;
  return *this;
}

CounterStyle::~CounterStyle() = default;

// ---- Setters ----

void CounterStyle::setSystem(ZQName system) {
  switch (static_cast<ZQNameEnum>(system)) {
    case ZQN_alphabetic:
    case ZQN_additive:
    case ZQN_cyclic:
    case ZQN_fixed:
    case ZQN_numeric:
    case ZQN_symbolic:
      m_system = system;
      break;
    default:
      break;
  }
}

void CounterStyle::setNegative(const Symbol& before, const Symbol& after) {
  m_negative[0] = before;
  m_negative[1] = after;
}

void CounterStyle::setNegative(const char* before, const char* after) {
  setNegative(Symbol(fromChars(before)), Symbol(fromChars(after)));
}

void CounterStyle::setPrefix(int codePoint) { m_prefix = Symbol(codePoint); }
void CounterStyle::setPrefix(const Symbol& prefix) { m_prefix = prefix; }
void CounterStyle::setPrefix(const char* prefix) { m_prefix = Symbol(fromChars(prefix)); }
void CounterStyle::setSuffix(int codePoint) { m_suffix = Symbol(codePoint); }
void CounterStyle::setSuffix(const Symbol& suffix) { m_suffix = suffix; }
void CounterStyle::setSuffix(const char* suffix) { m_suffix = Symbol(fromChars(suffix)); }

void CounterStyle::setPad(const IntSymbol& pad) { m_pad = pad; }
void CounterStyle::setPad(int length, const Symbol& symbol) { m_pad = IntSymbol(length, symbol); }
void CounterStyle::setPad(int length, const char* symbol) {
  m_pad = IntSymbol(length, Symbol(fromChars(symbol)));
}

void CounterStyle::clrSymbols() { m_symbols.reset(); }

void CounterStyle::addSymbol(int codePoint) { addSymbol(Symbol(codePoint)); }

void CounterStyle::addSymbol(const Symbol& symbol) {
  if (!m_symbols) m_symbols = std::make_unique<SymbolList>();
  m_symbols->push_back(symbol);
}

void CounterStyle::addSymbols(const Symbol& symbols) {
  for (int i = 0; i < symbols.length(); i = symbols.moveIndex32(i, 1))
    addSymbol(Symbol(symbols.char32At(i)));
}

void CounterStyle::addSymbols(int codePoint, ...) {
  va_list args;
  va_start(args, codePoint);
  for (int c = codePoint; c != 0; c = va_arg(args, int)) addSymbol(c);
  va_end(args);
}

void CounterStyle::addSymbols(const char* symbol, ...) {
  va_list args;
  va_start(args, symbol);
  for (const char* s = symbol; s != nullptr && *s != '\0'; s = va_arg(args, const char*))
    addSymbol(Symbol(UnicodeString(s)));
  va_end(args);
}

void CounterStyle::clrAdditiveSymbols() { m_additiveSymbols.reset(); }

void CounterStyle::addAdditiveSymbol(const IntSymbol& symbol) {
  if (!m_additiveSymbols) m_additiveSymbols = std::make_unique<IntSymbolList>();
  m_additiveSymbols->push_back(symbol);
}

void CounterStyle::addAdditiveSymbol(int weight, int codePoint) {
  addAdditiveSymbol(IntSymbol(weight, Symbol(codePoint)));
}

void CounterStyle::addAdditiveSymbol(int weight, const Symbol& symbol) {
  addAdditiveSymbol(IntSymbol(weight, symbol));
}

void CounterStyle::addAdditiveSymbol(int weight, const char* symbol) {
  addAdditiveSymbol(IntSymbol(weight, Symbol(fromChars(symbol))));
}

void CounterStyle::clrRange() { m_range.reset(); }

void CounterStyle::addRange(long long low, long long high) {
  if (!m_range) m_range = std::make_unique<RangeList>();
  m_range->emplace_back(low, high);
}

// ---- Order ----

bool CounterStyle::operator<(const CounterStyle& other) const {
  if (m_system != other.m_system) return m_system < other.m_system;
  if (int c = compareValues(m_prefix, other.m_prefix); c != 0) return c < 0;
  if (int c = compareValues(m_suffix, other.m_suffix); c != 0) return c < 0;
  if (m_fallback != other.m_fallback) return m_fallback < other.m_fallback;
  if (int c = compareLists(m_symbols.get(), other.m_symbols.get()); c != 0) return c < 0;
  if (int c = compareLists(m_additiveSymbols.get(), other.m_additiveSymbols.get()); c != 0)
    return c < 0;
  if (int c = compareLists(m_range.get(), other.m_range.get()); c != 0) return c < 0;
  if (m_first != other.m_first) return m_first < other.m_first;
  if (m_reserved != other.m_reserved) return m_reserved < other.m_reserved;
  if (m_predefined != other.m_predefined) return m_predefined < other.m_predefined;
  return m_pad.value < other.m_pad.value;
}

// ---- Formatting ----

bool CounterStyle::checkRange(long long n) const {
  if (m_range) {
    return std::any_of(m_range->begin(), m_range->end(),
                       [n](const Range& r) { return r.first <= n && n <= r.second; });
  }
  switch (static_cast<ZQNameEnum>(m_system)) {
    case ZQN_alphabetic:
    case ZQN_symbolic:
      return n >= 1;
    case ZQN_additive:
      return n >= 0;
    default:
      return true;
  }
}

UnicodeString CounterStyle::finishString(const UnicodeString& text, bool negative,
                                         bool bare) const {
  UnicodeString result(text);
  const int length = text.countChar32();
  const int padTo = std::min(m_pad.value, kMaxPad);
  if (padTo > length && !m_pad.symbol.isEmpty()) {
    const int missing = padTo - length;
    const int k = m_pad.symbol.countChar32();
    UnicodeString padding;
    for (int i = (missing + k - 1) / k; i > 0; --i) padding.append(m_pad.symbol);
    result.insert(0, padding);
  }
  if (negative) {
    result.insert(0, m_negative[0]);
    result.append(m_negative[1]);
  }
  if (!bare) {
    result.insert(0, m_prefix);
    result.append(m_suffix);
  }
  return result;
}

UnicodeString CounterStyle::formatFallback(long long n, Lookup lookup, void* data,
                                           bool bare) const {
  UnicodeString text;
  {
    FallbackMark mark(m_inFallback);
    const CounterStyle* style = nullptr;
    if (lookup != nullptr) {
      style = lookup(m_fallback, data);
      if (style != nullptr && style->m_inFallback.load(std::memory_order_relaxed) != 0)
        style = nullptr;
    }
    if (style == nullptr) style = ZQUtil::getPredefinedCounterStyle(ZQN_decimal);
    text = style->formatNumber(n, lookup, data, true);
  }
  if (bare) return text;
  UnicodeString result(m_prefix);
  result.append(text);
  result.append(m_suffix);
  return result;
}

UnicodeString CounterStyle::formatNumber(long long n, Lookup lookup, void* data, bool bare) const {
  if (!checkRange(n)) return formatFallback(n, lookup, data, bare);
  const long long count = m_symbols ? static_cast<long long>(m_symbols->size()) : 0;
  const bool negative = n < 0;
  const unsigned long long m = magnitude(n);
  UnicodeString text;
  bool isSigned = false;
  switch (static_cast<ZQNameEnum>(m_system)) {
    case ZQN_cyclic: {
      if (count < 1) return formatFallback(n, lookup, data, bare);
      long long index = n % count - 1;  // (n - 1) mod count, without overflow at the low end
      if (index < 0) index += count;
      text = (*m_symbols)[static_cast<size_t>(index)];
      break;
    }
    case ZQN_fixed: {
      const __int128 index = static_cast<__int128>(n) - m_first;
      if (index < 0 || index >= count) return formatFallback(n, lookup, data, bare);
      text = (*m_symbols)[static_cast<size_t>(index)];
      break;
    }
    case ZQN_symbolic: {
      if (count < 1 || n < 1) return formatFallback(n, lookup, data, bare);
      const Symbol& symbol = (*m_symbols)[static_cast<size_t>((n - 1) % count)];
      if (!symbol.isEmpty()) {
        for (long long times = (n - 1) / count + 1; times > 0; --times) {
          text.append(symbol);
          if (text.length() >= kMaxUnits) return formatFallback(n, lookup, data, bare);
        }
      }
      break;
    }
    case ZQN_alphabetic: {
      if (count < 2 || n < 1) return formatFallback(n, lookup, data, bare);
      for (long long rest = n; rest > 0;) {
        --rest;
        text.insert(0, (*m_symbols)[static_cast<size_t>(rest % count)]);
        if (text.length() >= kMaxUnits) return formatFallback(n, lookup, data, bare);
        rest /= count;
      }
      break;
    }
    case ZQN_numeric: {
      isSigned = true;
      if (count < 2) return formatFallback(n, lookup, data, bare);
      if (m == 0) {
        text = (*m_symbols)[0];
        break;
      }
      const auto base = static_cast<unsigned long long>(count);
      for (unsigned long long rest = m; rest > 0; rest /= base) {
        text.insert(0, (*m_symbols)[static_cast<size_t>(rest % base)]);
        if (text.length() >= kMaxUnits) return formatFallback(n, lookup, data, bare);
      }
      break;
    }
    case ZQN_additive: {
      isSigned = true;
      if (!m_additiveSymbols || m_additiveSymbols->empty())
        return formatFallback(n, lookup, data, bare);
      if (m == 0) {
        if (m_additiveSymbols->back().value != 0) return formatFallback(n, lookup, data, bare);
        text = m_additiveSymbols->back().symbol;
        break;
      }
      unsigned long long rest = m;
      for (const IntSymbol& s : *m_additiveSymbols) {
        if (rest == 0) break;
        if (s.value <= 0) continue;
        const auto weight = static_cast<unsigned long long>(s.value);
        if (s.symbol.isEmpty()) {  // writes nothing, however often it is used
          rest %= weight;
          continue;
        }
        while (rest >= weight) {
          text.append(s.symbol);
          rest -= weight;
          if (text.length() >= kMaxUnits) return formatFallback(n, lookup, data, bare);
        }
      }
      if (rest != 0) return formatFallback(n, lookup, data, bare);
      break;
    }
    case ZQN_ethiopic_numeric:
      text = util::formatEthiopic(n);
      break;
    case ZQN_kansuji: {
      isSigned = true;
      util::KansujiTable table;
      const util::KansujiMode mode = kansujiTable(m_symbols.get(), table);
      const UnicodeString digits(std::to_string(m).c_str(), -1, US_INV);
      text = util::convertKansujiText(digits, mode, table);
      break;
    }
    default:
      if (isChineseSystem(m_system)) {
        isSigned = true;
        static const SymbolList none;
        text = formatChinese(
            m, m_symbols ? *m_symbols : none,
            m_system == ZQN_simp_chinese_informal || m_system == ZQN_trad_chinese_informal);
        break;
      }
      return formatFallback(n, lookup, data, bare);
  }
  return finishString(text, isSigned && negative, bare);
}

}  // namespace ZQCommonNS
