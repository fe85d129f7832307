// Helpers shared by the element and attribute tests.
#pragma once

#include <gtest/gtest.h>

#include <functional>

#include "TestSupport.h"
#include "common/ZQDocument.h"
#include "common/ZQElement.h"
#include "common/ZQError.h"
#include "common/ZQName.h"

namespace zqtest {

/// The interned name of an ASCII text.
inline ZQCommonNS::ZQName N(const char* text) { return ZQCommonNS::ZQName(u(text)); }

/// A string value of an ASCII text.
inline ZQCommonNS::ZQValue S(const char* text) {
  return ZQCommonNS::ZQValue(u(text), ZQCommonNS::ZQUNIT_NONE);
}

/// The ZQError that `call` throws; a test failure if it throws none.
inline ZQCommonNS::ZQError thrownBy(const std::function<void()>& call) {
  try {
    call();
  } catch (const ZQCommonNS::ZQError& error) {
    return error;
  }
  ADD_FAILURE() << "no ZQError was thrown";
  return ZQCommonNS::ZQError();
}

/// Attribute names of an element in ring order, as "qname=value" joined by spaces.
inline std::string ringOf(ZQCommonNS::ZQElement* element) {
  std::string out;
  ZQCommonNS::ZQNamedNodeMap* map = element->getAttributes();
  for (int i = 0; map && i < map->getLength(); ++i) {
    ZQCommonNS::ZQAttr* attr = map->item(i);
    if (!out.empty()) out += ' ';
    out += utf8(attr->getNodeName().toString()) + "=" + utf8(attr->getText());
  }
  return out;
}

}  // namespace zqtest
