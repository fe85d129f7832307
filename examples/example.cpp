// A small consumer of the installed library: names and errors.
#include <common/ZQCommon.h>

#include <iostream>
#include <string>

using namespace ZQCommonNS;

static std::string utf8(const UnicodeString& s) {
  std::string out;
  return s.toUTF8String(out);
}

int main() {
  ZQName size(UnicodeString(u"font-size"));      // built in: a compile-time number
  ZQName custom(UnicodeString(u"my-property"));  // interned at run time
  std::cout << utf8(size) << " = " << static_cast<int>(size) << "\n";
  std::cout << utf8(custom) << " = " << static_cast<int>(custom)
            << (custom.isBuiltin() ? " (built in)" : " (run time)") << "\n";
  ZQError error(3, u"SYSTEM ERROR: x is null.", u"example", 12, 7, u"file.xml");
  std::cout << utf8(error.getMessage()) << "\n";
  return size == ZQN_font_size ? 0 : 1;
}
