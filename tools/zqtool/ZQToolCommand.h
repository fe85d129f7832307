// Subcommands of zqtool register themselves, so each lives in a file of its own.
#pragma once

#include <common/ZQCommon.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace zqtool {

using Args = std::vector<std::string>;
using Handler = std::function<int(const Args&)>;

struct Command {
  std::string usage;  // e.g. "names <text>..."
  std::string help;   // one line
  Handler run;
};

/// All registered subcommands by name.
std::map<std::string, Command>& commands();

/// Registers a subcommand from a static initialiser.
struct Register {
  Register(const std::string& name, const std::string& usage, const std::string& help,
           Handler run) {
    commands()[name] = Command{usage, help, std::move(run)};
  }
};

/// UTF-8 of a string, for printing.
std::string utf8(const icu::UnicodeString& s);
/// String of UTF-8 command-line text.
icu::UnicodeString fromUtf8(const std::string& s);

}  // namespace zqtool
