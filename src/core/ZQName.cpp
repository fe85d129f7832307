#include "common/ZQName.h"

#include <atomic>
#include <cstdint>
#include <cstring>
#include <string>

#include "common/ZQString.h"
#include "core/ZQInit.h"
#include "core/ZQNameInternal.h"

namespace ZQCommonNS {

namespace {

#include "ZQBuiltinNames.inc"

static_assert(sizeof(kBuiltinNameTexts) / sizeof(kBuiltinNameTexts[0]) == ZQ_BUILTIN_NAME_COUNT,
              "the built-in vocabulary and ZQ_BUILTIN_NAME_COUNT disagree");

// The look-up of built-in names is the hot path of interning: an open-addressing table over
// the constant texts, built once at load, read without a lock and without allocating.
class BuiltinMap {
 public:
  static constexpr uint32_t kSlots = 8192;  // a power of two, about 37% full
  static_assert(kSlots > 2 * ZQ_BUILTIN_NAME_COUNT);

  void insert(const char16_t* text, int32_t length, ZQNameEnum name) {
    uint32_t i = hash(text, length) & (kSlots - 1);
    while (m_slots[i].text) i = (i + 1) & (kSlots - 1);
    m_slots[i] = Slot{text, length, name};
  }

  /// Number of a built-in text, or -1.
  int find(const char16_t* text, int32_t length) const {
    uint32_t i = hash(text, length) & (kSlots - 1);
    for (;;) {
      const Slot& slot = m_slots[i];
      if (!slot.text) return -1;
      if (slot.length == length &&
          std::memcmp(slot.text, text, static_cast<size_t>(length) * sizeof(char16_t)) == 0) {
        return slot.name;
      }
      i = (i + 1) & (kSlots - 1);
    }
  }

 private:
  struct Slot {
    const char16_t* text = nullptr;
    int32_t length = 0;
    ZQNameEnum name = ZQN_EMPTY;
  };

  static uint32_t hash(const char16_t* text, int32_t length) {
    uint64_t h = 0x9E3779B97F4A7C15ull ^ static_cast<uint64_t>(length);
    const auto* bytes = reinterpret_cast<const unsigned char*>(text);
    size_t n = static_cast<size_t>(length) * sizeof(char16_t);
    size_t i = 0;
    for (; i + 8 <= n; i += 8) {
      uint64_t v;
      std::memcpy(&v, bytes + i, 8);
      h = (h ^ v) * 0xBF58476D1CE4E5B9ull;
      h ^= h >> 29;
    }
    if (i < n) {
      uint64_t v = 0;
      std::memcpy(&v, bytes + i, n - i);
      h = (h ^ v) * 0x94D049BB133111EBull;
    }
    h ^= h >> 32;
    return static_cast<uint32_t>(h);
  }

  Slot m_slots[kSlots];
};

// The built-in strings alias the constant texts, so they cost no heap and never move.
struct BuiltinNames {
  UnicodeString strings[ZQ_BUILTIN_NAME_COUNT];
  BuiltinMap map;

  BuiltinNames() {
    for (int i = 1; i < ZQ_BUILTIN_NAME_COUNT; ++i) {
      strings[i].setTo(true, kBuiltinNameTexts[i], -1);
      map.insert(kBuiltinNameTexts[i], strings[i].length(), static_cast<ZQNameEnum>(i));
    }
  }

  /// Number of a non-empty built-in string, or -1.
  int find(const UnicodeString& text) const { return map.find(text.getBuffer(), text.length()); }
};

const BuiltinNames s_builtin ZQ_INIT_PRIORITY_NAMES;

std::atomic<ZQNameTable*> s_sharedNameTable{nullptr};
ZQLock s_sharedNameTableLock ZQ_INIT_PRIORITY_BASE;

constexpr size_t kReservedNames = 1024;

}  // namespace

ZQLock& sharedNameTableLock() { return s_sharedNameTableLock; }

ZQNameTable* peekSharedNameTable() { return s_sharedNameTable.load(); }

// ---- ZQName ----

ZQName::ZQName(const UnicodeString& text) : m_name(ZQNameTable::getSharedNameEnum(text)) {}

const UnicodeString& ZQName::toString() const { return ZQNameTable::getSharedNameString(m_name); }

ZQName ZQName::generateID(const UnicodeString& prefix) {
  UnicodeString text(u'-');
  text += prefix.isEmpty() ? UnicodeString(u'N') : prefix;
  ZQNameTable* table = ZQNameTable::getSharedNameTable();
  // The number is read without holding the lock across the insert, as callers expect.
  std::string number = std::to_string(static_cast<long long>(table->getNameLast()) + 1);
  text += UnicodeString(number.c_str(), static_cast<int32_t>(number.size()), US_INV);
  return ZQName(ZQNameTable::getSharedNameEnum(text));
}

UnicodeString operator+(const UnicodeString& left, const ZQName& name) {
  UnicodeString result(left);
  result += name.toString();
  return result;
}

// ---- ZQNameTable ----

ZQNameTable::ZQNameTable()
    : m_map(8), m_nameLast(static_cast<ZQNameEnum>(ZQ_BUILTIN_NAME_COUNT - 1)) {
  m_map.max_load_factor(1.0f);
  m_strings.reserve(kReservedNames);
}

ZQNameTable::~ZQNameTable() {
  ZQNameTable* self = this;
  s_sharedNameTable.compare_exchange_strong(self, nullptr);
}

ZQNameEnum ZQNameTable::getSharedNameEnum(const UnicodeString& text) {
  if (text.length() == 0) return ZQN_EMPTY;  // bogus strings too
  int builtin = s_builtin.find(text);
  if (builtin >= 0) return static_cast<ZQNameEnum>(builtin);
  ZQMutex guard(s_sharedNameTableLock);
  ZQNameTable* table = s_sharedNameTable.load();
  if (!table) {
    table = new ZQNameTable();
    s_sharedNameTable.store(table);
  }
  return table->getNonBuiltinNameEnumMutexed(text);
}

const UnicodeString& ZQNameTable::getSharedNameString(ZQNameEnum name) {
  if (name < 1) return s_builtin.strings[0];
  if (name < ZQ_BUILTIN_NAME_COUNT) return s_builtin.strings[name];
  ZQMutex guard(s_sharedNameTableLock);
  ZQNameTable* table = s_sharedNameTable.load();
  if (table && name <= table->m_nameLast) return table->m_strings[name - ZQ_BUILTIN_NAME_COUNT];
  return s_builtin.strings[0];
}

ZQNameTable* ZQNameTable::setupSharedNameTable() {
  ZQNameTable* table = s_sharedNameTable.load();
  if (!table) {
    table = new ZQNameTable();
    s_sharedNameTable.store(table);
  }
  return table;
}

ZQNameTable* ZQNameTable::getSharedNameTable() {
  ZQNameTable* table = s_sharedNameTable.load();
  if (table) return table;
  ZQMutex guard(s_sharedNameTableLock);
  return setupSharedNameTable();
}

ZQNameTable* ZQNameTable::addRefSharedNameTable() {
  ZQMutex guard(s_sharedNameTableLock);
  ZQNameTable* table = setupSharedNameTable();
  table->addRef();
  return table;
}

void ZQNameTable::releaseSharedNameTable() {
  ZQMutex guard(s_sharedNameTableLock);
  ZQNameTable* table = s_sharedNameTable.load();
  if (table) table->release();
}

ZQNameEnum ZQNameTable::getBuiltinNameEnum(const UnicodeString& text) {
  if (text.length() == 0) return ZQN_EMPTY;
  int builtin = s_builtin.find(text);
  return builtin >= 0 ? static_cast<ZQNameEnum>(builtin) : ZQN_EMPTY;
}

const UnicodeString& ZQNameTable::getBuiltinNameString(ZQNameEnum name) {
  if (name < 1 || name >= ZQ_BUILTIN_NAME_COUNT) return s_builtin.strings[0];
  return s_builtin.strings[name];
}

void ZQNameTable::cleanup() {
  ZQMutex guard;  // the library lock
  ZQNameTable* table = s_sharedNameTable.exchange(nullptr);
  delete table;
}

ZQNameEnum ZQNameTable::getNameEnum(const UnicodeString& text) {
  if (text.length() == 0) return ZQN_EMPTY;
  int builtin = s_builtin.find(text);
  if (builtin >= 0) return static_cast<ZQNameEnum>(builtin);
  ZQMutex guard(s_sharedNameTableLock);
  return getNonBuiltinNameEnumMutexed(text);
}

const UnicodeString& ZQNameTable::getNameString(ZQNameEnum name) const {
  if (name < 1 || name > m_nameLast) return s_builtin.strings[0];
  if (name >= ZQ_BUILTIN_NAME_COUNT) return m_strings[name - ZQ_BUILTIN_NAME_COUNT];
  return s_builtin.strings[name];
}

ZQNameEnum ZQNameTable::lookupName(const UnicodeString& text) const {
  ZQNameEnum name = getBuiltinNameEnum(text);
  if (name != ZQN_EMPTY) return name;
  auto it = m_map.find(text);
  return it != m_map.end() ? it->second : ZQN_EMPTY;
}

ZQNameEnum ZQNameTable::getNonBuiltinNameEnumMutexed(const UnicodeString& text) {
  auto found = m_map.find(text);
  if (found != m_map.end()) return found->second;  // no number is used up
  auto candidate = static_cast<ZQNameEnum>(m_nameLast + 1);
  auto it = m_map.emplace(text, candidate).first;
  try {
    if (m_strings.size() == m_strings.capacity()) {
      // Grow by half so that references into the table stay valid as long as possible.
      size_t cap = m_strings.capacity();
      m_strings.reserve(cap + cap / 2 + (cap < 2 ? 1 : 0));
    }
    m_strings.push_back(text);
  } catch (...) {
    m_map.erase(it);
    throw;
  }
  m_nameLast = candidate;
  return m_nameLast;
}

// ---- ZQNameList ----

ZQNameList::ZQNameList(const ZQNameEnum* array) noexcept : m_array(array), m_count(0) {
  if (array) {
    while (array[m_count] != ZQN_EMPTY) ++m_count;
  }
}

int ZQNameList::indexOf(ZQName name) const {
  for (int i = 0; i < m_count; ++i) {
    if (m_array[i] == name) return i;
  }
  return -1;
}

ZQNameListInstance::ZQNameListInstance(int count)
    : m_array(count > 0 ? new ZQNameEnum[static_cast<size_t>(count)] : nullptr),
      m_list(m_array, count > 0 ? count : 0) {}

ZQNameListInstance::~ZQNameListInstance() { delete[] m_array; }

}  // namespace ZQCommonNS
