// The dot-segment loop of URI resolution written plainly, one occurrence at a time, as a model
// that the tests and the URI fuzzer compare the fast one-pass removal with.
#pragma once

#include <string>

namespace uritest {

inline std::u16string toldDotLoop(std::u16string s) {
  for (;;) {
    size_t p = s.find(u"/./");
    if (p != std::u16string::npos) {
      s.erase(p, 2);
      continue;
    }
    size_t q = s.find(u"/../");
    if (q == std::u16string::npos || q == 0) return s;
    size_t j = s.rfind(u'/', q - 1);
    if (j == std::u16string::npos) return s;
    s.erase(j, q + 3 - j);
  }
}

}  // namespace uritest
