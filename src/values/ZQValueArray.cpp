#include "common/ZQValueArray.h"

namespace ZQCommonNS {

ZQValueArray::ZQValueArray() = default;

ZQValueArray::~ZQValueArray() = default;

ZQValue ZQValueArray::getNthItem(int n) const {
  if (n < 0 || n >= getCount()) return ZQValue::NULL_VALUE;
  return m_items[static_cast<size_t>(n)];
}

void ZQValueArray::addItem(const ZQValue& value) { m_items.push_back(value); }

void ZQValueArray::clear() {
  // Items may hold the last reference on other arrays; move them out before they go.
  std::vector<ZQValue> old;
  old.swap(m_items);
}

ZQPtr<ZQValueArray> ZQValueArray::clone() const {
  ZQPtr<ZQValueArray> copy(new ZQValueArray());
  copy->m_items = m_items;
  return copy;
}

}  // namespace ZQCommonNS
