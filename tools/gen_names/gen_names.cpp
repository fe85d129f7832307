// Reads the built-in name list and writes the ZQNameEnum enumeration and the
// string table that the name table is built from. The build fails when the
// list does not hold exactly 3007 names or when a name repeats.
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr size_t kBuiltinNames = 3007;

std::string makeIdentifier(const std::string& text) {
  std::string id = "ZQN_";
  for (char c : text) {
    unsigned char u = static_cast<unsigned char>(c);
    if (std::isalnum(u)) {
      id += c;
    } else if (c == '#') {
      id += "hash_";
    } else if (c == '%') {
      id += "percent";
    } else if (c == '+') {
      id += "_plus_";
    } else {
      id += '_';  // '-', '_', ' ', '.', ':', '/'
    }
  }
  return id;
}

std::string escapeLiteral(const std::string& text) {
  std::string out;
  for (char c : text) {
    if (c == '\\' || c == '"') out += '\\';
    out += c;
  }
  return out;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: gen_names <names.txt> <ZQNameEnum.h> <ZQBuiltinNames.inc>\n";
    return 2;
  }
  std::ifstream in(argv[1]);
  if (!in) {
    std::cerr << "gen_names: cannot read " << argv[1] << "\n";
    return 1;
  }
  std::vector<std::string> names;
  std::vector<std::string> ids;
  std::set<std::string> seenNames;
  std::set<std::string> seenIds;
  std::string line;
  int lineNo = 0;
  while (std::getline(in, line)) {
    ++lineNo;
    if (line.empty() || line.rfind("# ", 0) == 0) continue;
    std::string name = line;
    std::string id;
    size_t tab = line.find('\t');
    if (tab != std::string::npos) {
      name = line.substr(0, tab);
      id = "ZQN_" + line.substr(tab + 1);
    }
    for (unsigned char c : name) {
      if (c < 0x20 || c > 0x7E) {
        std::cerr << argv[1] << ":" << lineNo << ": names must be printable ASCII\n";
        return 1;
      }
    }
    if (!seenNames.insert(name).second) {
      std::cerr << argv[1] << ":" << lineNo << ": the name \"" << name << "\" repeats\n";
      return 1;
    }
    if (id.empty()) id = makeIdentifier(name);
    // A later name whose identifier is taken gets its number appended.
    if (seenIds.count(id)) id += "_" + std::to_string(names.size() + 1);
    if (!seenIds.insert(id).second) {
      std::cerr << argv[1] << ":" << lineNo << ": identifier " << id << " repeats\n";
      return 1;
    }
    names.push_back(name);
    ids.push_back(id);
  }
  if (names.size() != kBuiltinNames) {
    std::cerr << argv[1] << ": expected " << kBuiltinNames << " built-in names, found "
              << names.size() << "\n";
    return 1;
  }

  std::ostringstream h;
  h << "// Generated from data/builtin-names.txt by gen_names. Do not edit.\n"
       "#pragma once\n\n"
       "namespace ZQCommonNS {\n\n"
       "/// Number of a name: 0 is the empty name, 1..3007 are built in, 3008 on are made at run "
       "time.\n"
       "enum ZQNameEnum : int {\n"
       "  ZQN_EMPTY = 0,\n";
  for (size_t i = 0; i < names.size(); ++i) {
    h << "  " << ids[i] << " = " << (i + 1) << ",  // " << names[i] << "\n";
  }
  h << "};\n\n"
       "/// Count of built-in names, the empty name included; the first run-time number.\n"
       "inline constexpr int ZQ_BUILTIN_NAME_COUNT = "
    << (names.size() + 1)
    << ";\n\n"
       "}  // namespace ZQCommonNS\n";

  std::ostringstream inc;
  inc << "// Generated from data/builtin-names.txt by gen_names. Do not edit.\n"
         "// Texts of the built-in names in number order; entry 0 is the empty name.\n"
         "static constexpr const char16_t* const kBuiltinNameTexts["
      << (names.size() + 1) << "] = {\n  u\"\",\n";
  for (const auto& n : names) inc << "  u\"" << escapeLiteral(n) << "\",\n";
  inc << "};\n";

  auto writeIfChanged = [](const char* path, const std::string& text) {
    std::ifstream old(path, std::ios::binary);
    if (old) {
      std::stringstream ss;
      ss << old.rdbuf();
      if (ss.str() == text) return true;
    }
    std::error_code ec;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ec);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
    return static_cast<bool>(out);
  };
  if (!writeIfChanged(argv[2], h.str()) || !writeIfChanged(argv[3], inc.str())) {
    std::cerr << "gen_names: cannot write the outputs\n";
    return 1;
  }
  return 0;
}
