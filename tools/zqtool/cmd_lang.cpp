// zqtool lang <tag>...: how each language tag is read, and the script it implies.
#include <iostream>

#include "ZQToolCommand.h"

using namespace ZQCommonNS;

namespace {

void printLang(const std::string& arg) {
  const UnicodeString tag = zqtool::fromUtf8(arg);
  const ZQLang lang(tag);
  const ZQScript script = lang.toScript();
  std::cout << "tag:          " << arg << "\n"
            << "normalised:   " << zqtool::utf8(ZQLang::normalizeLangTag(tag)) << "\n"
            << "language:     " << zqtool::utf8(lang.getLanguage()) << "\n"
            << "country:      " << zqtool::utf8(lang.getCountry()) << "\n"
            << "script:       " << zqtool::utf8(lang.getLangScript()) << "\n"
            << "iso3:         " << zqtool::utf8(lang.getISO3Language()) << "\n"
            << "toString:     " << zqtool::utf8(lang.toString()) << "\n"
            << "toISO3String: " << zqtool::utf8(lang.toISO3String()) << "\n"
            << "toFullString: " << zqtool::utf8(lang.toFullString()) << "\n"
            << "toScript:     " << script.code << " " << zqtool::utf8(script.toString()) << " ("
            << zqtool::utf8(script.getScriptName()) << ")\n";
}

int runLang(const zqtool::Args& args) {
  if (args.empty()) {
    std::cerr << "usage: zqtool lang <tag>...\n";
    return 2;
  }
  bool first = true;
  for (const auto& arg : args) {
    if (!first) std::cout << "\n";
    first = false;
    printLang(arg);
  }
  return 0;
}

zqtool::Register reg("lang", "lang <tag>...",
                     "print how each language tag is read: fields, three-letter forms, script",
                     runLang);

}  // namespace
