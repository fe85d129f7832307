// Tests for nodes of exactly the library's own classes. Such nodes keep the library's own
// operations, so code inside the library may use their fields without the virtual road.
#pragma once

#include <new>
#include <typeinfo>
#include <utility>

#include "common/ZQElement.h"

namespace ZQCommonNS {

// Type objects are compared by address, which costs no string comparison: a derived class
// never matches, and a miss would only cost the slower road.
inline bool isLibraryAttr(const ZQNode* node) {
  const std::type_info* type = &typeid(*node);
  return type == &typeid(Attr) || type == &typeid(AttrNS);
}

inline bool isLibraryText(const ZQNode* node) { return &typeid(*node) == &typeid(ZQTextNode); }

inline bool isLibraryElement(const ZQNode* node) {
  const std::type_info* type = &typeid(*node);
  return type == &typeid(ElementNS) || type == &typeid(Element);
}

/// The object of `held`, whose reference now belongs to the caller: the holder is moved into
/// storage that is never destroyed, so it never releases.
template <class T>
T* giveUpReference(ZQPtr<T>&& held) {
  alignas(ZQPtr<T>) unsigned char slot[sizeof(ZQPtr<T>)];
  return (new (slot) ZQPtr<T>(std::move(held)))->get();
}

}  // namespace ZQCommonNS
