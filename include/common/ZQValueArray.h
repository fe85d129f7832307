// A reference-counted list of values: the payload of an array value.
#pragma once

#include <vector>

#include "common/ZQExport.h"
#include "common/ZQObject.h"
#include "common/ZQValue.h"

namespace ZQCommonNS {

/// A list of values in the order they were added; the items of a space- or comma-separated
/// property value.
class ZQCOMMON_API ZQValueArray : public ZQRCObject {
  ZQ_DECLARE_TYPE(ZQValueArray, ZQRCObject)

 public:
  ZQValueArray();
  ~ZQValueArray() override;
  ZQValueArray(const ZQValueArray&) = delete;
  ZQValueArray& operator=(const ZQValueArray&) = delete;

  int getCount() const { return static_cast<int>(m_items.size()); }
  /// Item `n`, or the null value when `n` is negative or not below the count.
  ZQValue getNthItem(int n) const;
  /// The same as getNthItem.
  ZQValue item(int n) const { return getNthItem(n); }
  /// Appends a copy; a value that holds an object shares it.
  void addItem(const ZQValue& value);
  /// Removes all items.
  void clear();
  /// A new array with a copy of each item, held once.
  ZQPtr<ZQValueArray> clone() const;

  /// The items themselves, for walking without copies.
  const std::vector<ZQValue>& getItems() const { return m_items; }

 private:
  std::vector<ZQValue> m_items;
};

}  // namespace ZQCommonNS
