// Named values and the small ordered dictionary of a compound value.
#pragma once

#include <cstdint>
#include <vector>

#include "common/ZQExport.h"
#include "common/ZQName.h"
#include "common/ZQObject.h"
#include "common/ZQValue.h"

namespace ZQCommonNS {

/// A value with a name: the same two words as ZQValue, the name in bits 9 and up of the flags.
class ZQCOMMON_API ZQNamedValue : public ZQValue {
 public:
  /// The null value with the empty name.
  static const ZQNamedValue NULL_VALUE;

  constexpr ZQNamedValue() noexcept = default;
  /// A copy of `value` carrying `name`.
  ZQNamedValue(const ZQValue& value, ZQName name) : ZQValue(value) { setNameBits(name); }
  ZQNamedValue(const ZQNamedValue&) = default;
  ZQNamedValue(ZQNamedValue&&) noexcept = default;
  ZQNamedValue& operator=(const ZQNamedValue&) = default;
  ZQNamedValue& operator=(ZQNamedValue&&) noexcept = default;

  ZQName getName() const { return ZQName(getNameBits()); }
  /// Changes the name bits only.
  void setName(ZQName name) { setNameBits(name); }
  /// A copy of the value, without the name.
  ZQValue getValue() const;
  /// Takes the payload, type and unit of `value`; the name stays.
  void setValue(const ZQValue& value);
};

static_assert(sizeof(ZQNamedValue) == sizeof(ZQValue), "a named value is a value");

/// A dictionary from name to value that keeps the order of insertion; each member carries its
/// key in its own flags, so an entry is nothing but a value.
class ZQCOMMON_API ZQNamedValueMap : public ZQRCObject {
  ZQ_DECLARE_TYPE(ZQNamedValueMap, ZQRCObject)

 public:
  ZQNamedValueMap();
  ~ZQNamedValueMap() override;
  ZQNamedValueMap(const ZQNamedValueMap&) = delete;
  ZQNamedValueMap& operator=(const ZQNamedValueMap&) = delete;

  int getCount() const { return static_cast<int>(m_items.size()); }
  /// The member at `index` in insertion order, with its name; out of range: the null value.
  ZQNamedValue item(int index) const;
  /// The member of that name, or the null value.
  ZQNamedValue getNamedItem(ZQName name) const;
  /// Assigns the member's value to `result` if found; otherwise `result` is left as it is,
  /// so the caller presets its default. An empty map touches nothing.
  void getNamedItemFast(ZQName name, ZQValue& result) const {
    if (m_items.empty()) return;
    int pos = find(name);
    if (pos < 0) return;
    result = m_items[static_cast<size_t>(pos)];
    result.m_flags &= 0x1FFu;  // a free-standing result does not carry the member's key
  }
  /// Adds a member at the end, or gives an existing member of that name the new value in
  /// its old position.
  void setNamedItem(ZQName name, const ZQValue& value);
  void setNamedItem(const ZQNamedValue& member);
  /// Removes the member of that name, if present.
  void removeNamedItem(ZQName name);
  /// Removes the member of that name only if its value equals `value`.
  void removeNamedItem(ZQName name, const ZQValue& value);
  /// A new map with a copy of each member, in the same order, held once.
  ZQPtr<ZQNamedValueMap> clone() const;

 private:
  friend class ZQNamedValueMapIterator;

  /// Position of the member of that name, or -1.
  int find(ZQNameEnum name) const {
    if (!m_index.empty()) return findIndexed(name);
    const size_t n = m_items.size();
    for (size_t i = 0; i < n; ++i) {
      if (m_items[i].getNameBits() == name) return static_cast<int>(i);
    }
    return -1;
  }
  int findIndexed(ZQNameEnum name) const {
    const uint32_t mask = static_cast<uint32_t>(m_index.size() - 1);
    for (uint32_t slot = slotOf(name, m_indexShift);; slot = (slot + 1) & mask) {
      const Slot& entry = m_index[slot];
      if (entry.position == 0) return -1;
      if (entry.name == name) return entry.position - 1;
    }
  }
  static uint32_t slotOf(ZQNameEnum name, unsigned shift) {
    return (static_cast<uint32_t>(name) * 0x9E3779B1u) >> shift;
  }
  void append(ZQNamedValue&& member);
  void rebuildIndex();
  void indexInsert(ZQNameEnum name, int position);

  // A slot of the index: a key and its position + 1 (0 is an empty slot).
  struct Slot {
    ZQNameEnum name;
    int32_t position;
  };

  // Members in insertion order. Small maps are searched in order; larger ones through an
  // open-addressing index, at most half full, so a probe always ends on an empty slot.
  std::vector<ZQNamedValue> m_items;
  std::vector<Slot> m_index;
  unsigned m_indexShift = 32;
};

/// Walks a map in insertion order. It holds no reference and does not survive a change of
/// the map.
class ZQCOMMON_API ZQNamedValueMapIterator {
 public:
  explicit ZQNamedValueMapIterator(const ZQNamedValueMap* map) : m_map(map), m_position(0) {}

  bool hasNext() const { return m_map && m_position < m_map->getCount(); }
  /// The current member; advances.
  const ZQNamedValue& next() { return m_map->m_items[static_cast<size_t>(m_position++)]; }
  void setToStart() { m_position = 0; }

 private:
  const ZQNamedValueMap* m_map;
  int m_position;
};

}  // namespace ZQCommonNS
