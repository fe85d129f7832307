// zqtool events [--token] [--feature NAME]... [--type T] [--encoding E] <uri|->: the events of
// a document as the pull parser reports them, one line each, with its input errors in line.
#include <iostream>
#include <string>
#include <vector>

#include "ZQToolCommand.h"
#include "ZQToolEvents.h"

using namespace ZQCommonNS;

namespace {

const char kUsage[] =
    "usage: zqtool events [--token] [--feature NAME]... [--type auto|html|xhtml|text|xml]\n"
    "                     [--encoding NAME] <uri|->\n";

void printFeatureNames() {
  std::cerr << "features:";
  for (int i = 0; i < ZQXmlParser::FEATURE_COUNT; ++i) {
    std::cerr << ' ' << zqtool::utf8(ZQXmlParser::getFeatureName(i));
  }
  std::cerr << '\n';
}

int runEvents(const zqtool::Args& args) {
  bool tokens = false;
  std::vector<ZQXmlParser::Feature> features;
  std::string type;
  std::string encoding;
  std::string input;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    const bool hasValue = i + 1 < args.size();
    if (arg == "--token") {
      tokens = true;
    } else if (arg == "--feature" && hasValue) {
      ZQXmlParser::Feature feature;
      if (!zqtool::featureByName(args[++i], feature)) {
        std::cerr << "zqtool events: unknown feature '" << args[i] << "'\n";
        printFeatureNames();
        return 2;
      }
      features.push_back(feature);
    } else if (arg == "--type" && hasValue) {
      type = args[++i];
    } else if (arg == "--encoding" && hasValue) {
      encoding = args[++i];
    } else if (input.empty() && (arg == "-" || arg.rfind("--", 0) != 0)) {
      input = arg;
    } else {
      std::cerr << kUsage;
      return 2;
    }
  }
  if (input.empty()) {
    std::cerr << kUsage;
    return 2;
  }

  ZQPtr<ZQXmlParser> parser = ZQXmlParser::createXmlParser();
  for (ZQXmlParser::Feature feature : features) parser->setFeature(feature, true);
  if (!type.empty()) parser->setParserType(ZQName(zqtool::fromUtf8(type)), ZQName(ZQN_html));
  try {
    if (input == "-") {
      parser->setInput(std::cin, zqtool::fromUtf8(encoding), UnicodeString());
    } else {
      ZQUri uri(zqtool::fromUtf8(input));
      parser->setInput(uri, zqtool::fromUtf8(encoding), UnicodeString());
    }
  } catch (const ZQError& error) {
    zqtool::drainQueuedErrors(*parser, std::cout);
    std::cout << zqtool::describeError("error", error, parser->getLineNumber(),
                                       parser->getColumnNumber())
              << '\n';
    return 1;
  }
  const int status = zqtool::listEvents(*parser, tokens, std::cout);
  std::cout.flush();
  return status;
}

zqtool::Register reg("events", "events [--token] [--feature F]... <uri>",
                     "the parser's events, one line each, errors in line (--token: nextToken; "
                     "also --type T, --encoding E; '-' reads stdin)",
                     runEvents);

}  // namespace
