// zqtool value [--type N] <text>: the value that the expression parser reads from a text.
#include <cstdlib>
#include <iostream>

#include "ZQToolCommand.h"

using namespace ZQCommonNS;

namespace {

const char* typeName(ZQValueType type) {
  static const char* const names[] = {"null",   "integer", "real",  "name",
                                      "string", "object",  "array", "compound"};
  return names[type & 7];
}

int usage() {
  std::cerr << "usage: zqtool value [--type N] <text>   (N: tokenizer type 0 to 5)\n";
  return 2;
}

int runValue(const zqtool::Args& args) {
  int type = 0;
  size_t i = 0;
  if (i < args.size() && args[i] == "--type") {
    if (i + 1 >= args.size()) return usage();
    char* end = nullptr;
    const long t = std::strtol(args[i + 1].c_str(), &end, 10);
    if (end == args[i + 1].c_str() || *end != 0 || t < 0 || t > 5) return usage();
    type = static_cast<int>(t);
    i += 2;
  }
  if (args.size() != i + 1) return usage();

  const ZQValue v =
      ZQParser::parse(zqtool::fromUtf8(args[i]), static_cast<ZQTokenizer::TokenizerType>(type));
  const ZQUnitType unit = v.getUnitType();
  std::cout << "type\t" << typeName(v.getValueType()) << " (" << v.getValueType() << ")\n"
            << "unit\t" << unit;
  const UnicodeString unitText = ZQValue::getUnitString(unit);
  if (!unitText.isEmpty()) std::cout << " " << zqtool::utf8(unitText);
  std::cout << "\n"
            << "text\t" << zqtool::utf8(v.toString()) << "\n"
            << "css\t" << zqtool::utf8(v.toCssText()) << "\n";
  return 0;
}

zqtool::Register reg("value", "value [--type N] <text>",
                     "print the value parsed from a property text: type, unit, text and CSS text",
                     runValue);

}  // namespace
