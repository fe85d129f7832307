// The default run of zqtool: shows the library at work on an embedded sample.
#include <iostream>

#include "ZQToolCommand.h"

using namespace ZQCommonNS;

namespace zqtool {

namespace {
// A property sheet as a formatter would meet it; the words become names.
const char16_t* const kSample[] = {u"font-size", u"color",  u"margin-top", u"page-sequence",
                                   u"xml:lang",  u"my-own", u"-zq-",       u"my-own"};
}  // namespace

int demo(const Args&) {
  std::cout << "ZQCommon " << ZQ_VERSION << ": names of an embedded sample\n";
  for (const char16_t* text : kSample) {
    ZQName name{UnicodeString(text)};
    std::cout << "  " << utf8(name) << "\t#" << static_cast<int>(name)
              << (name.isBuiltin() ? "\tbuilt-in" : "\trun-time") << "\n";
  }
  ZQName generated = ZQName::generateID(UnicodeString());
  std::cout << "  generated id\t" << utf8(generated) << "\n";
  ZQError error(ZQERR_NULL_ARGUMENT, u"SYSTEM ERROR: node is null.", u"demo", 3, 14, u"sample.xml");
  std::cout << "A reported error:\n" << utf8(error.getMessage()) << "\n";
  return 0;
}

}  // namespace zqtool
