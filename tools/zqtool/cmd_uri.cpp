// zqtool uri [--type=T] <base> <ref>: the resolved URI, its local path and its extension.
#include <iostream>

#include "ZQToolCommand.h"

using namespace ZQCommonNS;

namespace {

bool parseType(const std::string& name, ZQUri::URISTRTYPE& type) {
  static const std::pair<const char*, ZQUri::URISTRTYPE> kTypes[] = {
      {"uri", ZQUri::URISTR_URI},
      {"path", ZQUri::URISTR_PATH},
      {"css-uri", ZQUri::URISTR_CSS_URI},
      {"css-path", ZQUri::URISTR_CSS_PATH},
      {"auto", ZQUri::URISTR_AUTO}};
  for (const auto& [text, value] : kTypes) {
    if (name == text) {
      type = value;
      return true;
    }
  }
  return false;
}

int runUri(const zqtool::Args& argsIn) {
  zqtool::Args args;
  ZQUri::URISTRTYPE type = ZQUri::URISTR_AUTO;
  for (const auto& a : argsIn) {
    if (a.rfind("--type=", 0) == 0) {
      if (!parseType(a.substr(7), type)) {
        std::cerr << "zqtool uri: unknown type '" << a.substr(7)
                  << "' (uri, path, css-uri, css-path, auto)\n";
        return 2;
      }
    } else {
      args.push_back(a);
    }
  }
  if (args.size() != 2) {
    std::cerr << "usage: zqtool uri [--type=uri|path|css-uri|css-path|auto] <base> <ref>\n"
                 "       (an empty <base> \"\" normalises <ref> alone)\n";
    return 2;
  }
  // The base is taken as the library would take a document's address: of unknown type.
  ZQUri base(zqtool::fromUtf8(args[0]), ZQUri::URISTR_AUTO);
  ZQUri resolved(base, zqtool::fromUtf8(args[1]), type);
  std::cout << "uri:        " << zqtool::utf8(resolved.toString()) << "\n"
            << "local path: " << zqtool::utf8(resolved.getLocalPath()) << "\n"
            << "extension:  " << zqtool::utf8(resolved.getExtension()) << "\n";
  return 0;
}

zqtool::Register reg("uri", "uri [--type=T] <base> <ref>",
                     "resolve <ref> against <base>; print the URI, local path and extension",
                     runUri);

}  // namespace
