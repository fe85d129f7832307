// zqtool: the command-line face of the library.
#include <iostream>

#include "ZQToolCommand.h"

namespace zqtool {

std::map<std::string, Command>& commands() {
  static std::map<std::string, Command> table;
  return table;
}

std::string utf8(const icu::UnicodeString& s) {
  std::string out;
  return s.toUTF8String(out);
}

icu::UnicodeString fromUtf8(const std::string& s) { return icu::UnicodeString::fromUTF8(s); }

int demo(const Args& args);  // the default run, tools/zqtool/demo.cpp

static void printHelp() {
  std::cout << "usage: zqtool [--help] [--version] [<command> <args>...]\n\n"
               "With no command, demonstrates the library on an embedded sample.\n\n"
               "Commands:\n";
  for (const auto& [name, cmd] : commands()) {
    std::string usage = cmd.usage;
    std::cout << "  " << usage;
    for (size_t n = usage.size(); n < 30; ++n) std::cout << ' ';
    std::cout << "  " << cmd.help << "\n";
  }
}

}  // namespace zqtool

int main(int argc, char** argv) {
  using namespace zqtool;
  Args args(argv + 1, argv + argc);
  if (args.empty()) return demo(args);
  const std::string& first = args[0];
  if (first == "--help" || first == "-h" || first == "help") {
    printHelp();
    return 0;
  }
  if (first == "--version") {
    std::cout << "zqtool " << ZQ_VERSION << "\n";
    return 0;
  }
  auto it = commands().find(first);
  if (it == commands().end()) {
    std::cerr << "zqtool: unknown command '" << first << "' (try --help)\n";
    return 2;
  }
  try {
    return it->second.run(Args(args.begin() + 1, args.end()));
  } catch (const ZQCommonNS::ZQError& e) {
    std::cerr << "zqtool: " << utf8(e.getMessage()) << "\n";
    return 1;
  }
}
