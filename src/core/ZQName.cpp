#include "common/ZQName.h"

#include <atomic>
#include <string>

#include "common/ZQString.h"
#include "core/ZQInit.h"

namespace ZQCommonNS {

namespace {

#include "ZQBuiltinNames.inc"

static_assert(sizeof(kBuiltinNameTexts) / sizeof(kBuiltinNameTexts[0]) == ZQ_BUILTIN_NAME_COUNT,
              "the built-in vocabulary and ZQ_BUILTIN_NAME_COUNT disagree");

using NameMap = std::unordered_map<UnicodeString, ZQNameEnum, ZQString_hash>;

// The built-in strings alias the constant texts, so they cost no heap and never move.
struct BuiltinNames {
  UnicodeString strings[ZQ_BUILTIN_NAME_COUNT];
  NameMap map;

  BuiltinNames() {
    for (int i = 1; i < ZQ_BUILTIN_NAME_COUNT; ++i) {
      strings[i].setTo(true, kBuiltinNameTexts[i], -1);
    }
    map.reserve(ZQ_BUILTIN_NAME_COUNT * 2);
    for (int i = 0; i < ZQ_BUILTIN_NAME_COUNT; ++i) {
      map.emplace(strings[i], static_cast<ZQNameEnum>(i));
    }
  }
};

const BuiltinNames s_builtin ZQ_INIT_PRIORITY_NAMES;

std::atomic<ZQNameTable*> s_sharedNameTable{nullptr};
ZQLock s_sharedNameTableLock ZQ_INIT_PRIORITY_BASE;

constexpr size_t kReservedNames = 1024;

}  // namespace

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
  auto it = s_builtin.map.find(text);
  if (it != s_builtin.map.end()) return it->second;
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
  auto it = s_builtin.map.find(text);
  return it != s_builtin.map.end() ? it->second : ZQN_EMPTY;
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
  auto it = s_builtin.map.find(text);
  if (it != s_builtin.map.end()) return it->second;
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
  auto candidate = static_cast<ZQNameEnum>(m_nameLast + 1);
  auto [it, inserted] = m_map.emplace(text, candidate);
  if (!inserted) return it->second;
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
