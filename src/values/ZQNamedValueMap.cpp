#include "common/ZQNamedValueMap.h"

#include <utility>

namespace ZQCommonNS {

namespace {

// Up to this many members a scan in order is faster than any hashing.
constexpr size_t kLinearLimit = 8;

}  // namespace

// ---- ZQNamedValue ----

const ZQNamedValue ZQNamedValue::NULL_VALUE;

ZQValue ZQNamedValue::getValue() const {
  ZQNamedValue copy(*this);
  copy.setNameBits(ZQN_EMPTY);
  return copy;
}

void ZQNamedValue::setValue(const ZQValue& value) {
  ZQNameEnum name = getNameBits();
  ZQValue::operator=(value);
  setNameBits(name);
}

// ---- ZQNamedValueMap ----

ZQNamedValueMap::ZQNamedValueMap() = default;

ZQNamedValueMap::~ZQNamedValueMap() = default;

void ZQNamedValueMap::indexInsert(ZQNameEnum name, int position) {
  const uint32_t mask = static_cast<uint32_t>(m_index.size() - 1);
  uint32_t slot = slotOf(name, m_indexShift);
  while (m_index[slot].position != 0) slot = (slot + 1) & mask;
  m_index[slot] = Slot{name, position + 1};
}

void ZQNamedValueMap::rebuildIndex() {
  m_index.clear();
  m_indexShift = 32;
  if (m_items.size() <= kLinearLimit) return;
  // At most half full, so probes stay short and always end on an empty slot.
  unsigned bits = 4;
  while ((size_t(1) << bits) < m_items.size() * 2) ++bits;
  m_index.assign(size_t(1) << bits, Slot{ZQN_EMPTY, 0});
  m_indexShift = 32 - bits;
  for (size_t i = 0; i < m_items.size(); ++i) {
    indexInsert(m_items[i].getNameBits(), static_cast<int>(i));
  }
}

void ZQNamedValueMap::append(ZQNamedValue&& member) {
  m_items.push_back(std::move(member));
  const size_t n = m_items.size();
  if (n <= kLinearLimit) return;
  if (m_index.empty() || n * 2 > m_index.size()) {
    rebuildIndex();
  } else {
    indexInsert(m_items.back().getNameBits(), static_cast<int>(n - 1));
  }
}

ZQNamedValue ZQNamedValueMap::item(int index) const {
  if (index < 0 || index >= getCount()) return ZQNamedValue::NULL_VALUE;
  return m_items[static_cast<size_t>(index)];
}

ZQNamedValue ZQNamedValueMap::getNamedItem(ZQName name) const {
  int pos = find(name);
  if (pos < 0) return ZQNamedValue::NULL_VALUE;
  return m_items[static_cast<size_t>(pos)];
}

void ZQNamedValueMap::setNamedItem(ZQName name, const ZQValue& value) {
  int pos = find(name);
  if (pos >= 0) {
    m_items[static_cast<size_t>(pos)].setValue(value);
    return;
  }
  append(ZQNamedValue(value, name));
}

void ZQNamedValueMap::setNamedItem(const ZQNamedValue& member) {
  setNamedItem(member.getName(), member);
}

void ZQNamedValueMap::removeNamedItem(ZQName name) {
  int pos = find(name);
  if (pos < 0) return;
  // The member leaves the map before its value is destroyed, which may reach back here.
  ZQNamedValue gone(std::move(m_items[static_cast<size_t>(pos)]));
  m_items.erase(m_items.begin() + pos);
  rebuildIndex();
}

void ZQNamedValueMap::removeNamedItem(ZQName name, const ZQValue& value) {
  int pos = find(name);
  if (pos < 0 || !(m_items[static_cast<size_t>(pos)] == value)) return;
  removeNamedItem(name);
}

ZQPtr<ZQNamedValueMap> ZQNamedValueMap::clone() const {
  ZQPtr<ZQNamedValueMap> copy(new ZQNamedValueMap());
  copy->m_items = m_items;
  copy->rebuildIndex();
  return copy;
}

}  // namespace ZQCommonNS
