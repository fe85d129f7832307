// A value as a list or as a record of named members.
#include "common/ZQNamedValueMap.h"
#include "common/ZQValue.h"
#include "common/ZQValueArray.h"

namespace ZQCommonNS {

void ZQValue::makeArray() {
  if (isArray()) return;
  ZQPtr<ZQValueArray> array(new ZQValueArray());
  if (!isNull()) {
    ZQValue first(*this);
    first.m_flags &= 0x1FFu;  // the item stands free; the key stays with this value
    array->addItem(first);
  }
  ZQNameEnum name = getNameBits();
  release();
  m_payload.o = array.get();
  array->addRef();
  m_flags = bitfield(ZQVALUE_ARRAY, ZQUNIT_NONE, name);
}

void ZQValue::makeCompound() {
  if (isCompound()) return;
  ZQPtr<ZQNamedValueMap> map(new ZQNamedValueMap());
  if (!isNull()) map->setNamedItem(ZQName(), *this);
  ZQNameEnum name = getNameBits();
  release();
  m_payload.o = map.get();
  map->addRef();
  m_flags = bitfield(ZQVALUE_COMPOUND, ZQUNIT_NONE, name);
}

void ZQValue::addItem(const ZQValue& item) {
  if (isNull()) {
    ZQNameEnum name = getNameBits();
    *this = item;
    setNameBits(name);
    return;
  }
  if (isArray()) {
    static_cast<ZQValueArray*>(m_payload.o)->addItem(item);
    return;
  }
  // `item` may be this very value, which makeArray is about to turn into the list.
  ZQValue second(item);
  makeArray();
  static_cast<ZQValueArray*>(m_payload.o)->addItem(second);
}

ZQValue ZQValue::getNthItem(int n) const {
  if (isArray()) return static_cast<ZQValueArray*>(m_payload.o)->getNthItem(n);
  return n == 0 ? *this : NULL_VALUE;
}

ZQValue ZQValue::getNamedItem(ZQName name) const {
  if (isCompound())
    return static_cast<ZQNamedValueMap*>(m_payload.o)->getNamedItem(name).getValue();
  return name.isEmpty() ? *this : NULL_VALUE;
}

void ZQValue::setNamedItem(ZQName name, const ZQValue& value) {
  if (isCompound()) {
    static_cast<ZQNamedValueMap*>(m_payload.o)->setNamedItem(name, value);
    return;
  }
  // `value` may be this very value, which makeCompound is about to turn into the record.
  ZQValue member(value);
  makeCompound();
  static_cast<ZQNamedValueMap*>(m_payload.o)->setNamedItem(name, member);
}

void ZQValue::setNamedItem(const ZQNamedValue& member) {
  if (isCompound()) {
    static_cast<ZQNamedValueMap*>(m_payload.o)->setNamedItem(member);
    return;
  }
  ZQNamedValue copy(member);
  makeCompound();
  static_cast<ZQNamedValueMap*>(m_payload.o)->setNamedItem(copy);
}

void ZQValue::removeNamedItem(ZQName name) {
  if (isCompound()) static_cast<ZQNamedValueMap*>(m_payload.o)->removeNamedItem(name);
}

}  // namespace ZQCommonNS
