// zqtool names <text>...: each text's name number and whether it is built in.
#include <iostream>

#include "ZQToolCommand.h"

using namespace ZQCommonNS;

namespace {

int runNames(const zqtool::Args& args) {
  if (args.empty()) {
    std::cerr << "usage: zqtool names <text>...\n";
    return 2;
  }
  for (const auto& text : args) {
    ZQName name(zqtool::fromUtf8(text));
    std::cout << text << "\t" << static_cast<int>(name) << "\t"
              << (name.isBuiltin() ? "built-in" : "run-time") << "\n";
  }
  return 0;
}

zqtool::Register reg("names", "names <text>...", "print each text's name number and kind",
                     runNames);

}  // namespace
