// zqtool dom [--pull] [--tree] [--stats] [--feature NAME]... <uri|-> [-o out.xml]: loads a
// document into the tree, whole or pulled node by node as a walk asks for it, and saves it again
// (or lists it).
#include <exception>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "ZQToolCommand.h"
#include "ZQToolEvents.h"
#include "ZQToolTree.h"

using namespace ZQCommonNS;

namespace {

const char kUsage[] =
    "usage: zqtool dom [--pull] [--tree] [--stats] [--feature NAME]... <uri|-> [-o out.xml]\n";

struct DomOptions {
  bool pull = false;
  bool tree = false;
  bool stats = false;
  std::vector<ZQXmlParser::Feature> features;
  std::string input;
  std::string output;
  bool hasInput = false;
  bool hasOutput = false;
};

/// Reads the arguments; false (after a message on stderr) when they make no sense.
bool parseArgs(const zqtool::Args& args, DomOptions& options) {
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    const bool hasValue = i + 1 < args.size();
    if (arg == "--pull") {
      options.pull = true;
    } else if (arg == "--tree") {
      options.tree = true;
    } else if (arg == "--stats") {
      options.stats = true;
    } else if (arg == "--feature" && hasValue) {
      ZQXmlParser::Feature feature;
      if (!zqtool::featureByName(args[++i], feature)) {
        std::cerr << "zqtool dom: unknown feature '" << args[i] << "'\n";
        return false;
      }
      options.features.push_back(feature);
    } else if ((arg == "-o" || arg == "--output") && hasValue && !options.hasOutput) {
      options.output = args[++i];
      options.hasOutput = true;
    } else if (!options.hasInput && !arg.empty() && (arg == "-" || arg[0] != '-')) {
      options.input = arg;
      options.hasInput = true;
    } else {
      return false;
    }
  }
  return options.hasInput && !(options.hasOutput && options.output.empty());
}

/// Writes the errors the parser queued instead of throwing them (the non-fatal ones).
void printWarnings(ZQXmlParser* parser) {
  if (!parser) return;
  ZQError queued;
  while (parser->popError(queued)) {
    std::cerr << "warning: " << zqtool::utf8(queued.getMessage()) << '\n';
  }
}

int runDom(const zqtool::Args& args) {
  DomOptions options;
  if (!parseArgs(args, options)) {
    std::cerr << kUsage;
    return 2;
  }

  ZQPtr<ZQDocument> document(new ZQDocument());
  document->setPullMode(options.pull);
  ZQXmlParser* parser = document->getParser();
  for (ZQXmlParser::Feature feature : options.features) parser->setFeature(feature, true);
  try {
    if (options.input == "-") {
      document->load(std::cin, nullptr, UnicodeString());
    } else {
      document->load(zqtool::fromUtf8(options.input));
    }
    const long afterLoad = zqtool::countBuiltNodes(document.get());
    if (options.pull) {
      // Each step of the walk pulls what it needs from the parser, so the whole input is read
      // (and any error in it met) before a byte of output is written.
      ZQTreeIterator walk(document.get(), nullptr, false, ZQTreeIterator::PRE_ORDER);
      while (walk.nextNode()) {
      }
    }
    printWarnings(parser);
    if (options.stats) {
      std::cerr << "nodes built by the load: " << afterLoad
                << ", after the walk: " << zqtool::countBuiltNodes(document.get()) << '\n';
    }

    if (options.tree) {
      if (options.hasOutput) {
        std::ofstream out(options.output, std::ios::binary);
        if (!out) {
          std::cerr << "zqtool dom: cannot write " << options.output << '\n';
          return 1;
        }
        zqtool::listTree(document.get(), out);
        if (!out.flush()) {
          std::cerr << "zqtool dom: cannot write " << options.output << '\n';
          return 1;
        }
      } else {
        zqtool::listTree(document.get(), std::cout);
      }
    } else if (options.hasOutput) {
      document->save(zqtool::fromUtf8(options.output));
    } else {
      document->save(std::cout);
    }
  } catch (const ZQError& error) {
    std::cout.flush();
    printWarnings(parser);
    std::cerr << zqtool::utf8(error.getMessage()) << '\n';
    return 1;
  } catch (const std::exception& error) {
    std::cout.flush();
    std::cerr << "zqtool dom: " << error.what() << '\n';
    return 1;
  }
  std::cout.flush();
  if (!std::cout) {
    std::cerr << "zqtool dom: cannot write to the output\n";
    return 1;
  }
  return 0;
}

zqtool::Register reg("dom", "dom [--pull] [--tree] <uri> [-o F]",
                     "load a document into the tree and save it to F or stdout (--pull: load "
                     "node by node as a walk asks; --tree: list the nodes; --stats: node counts "
                     "to stderr; --feature F; '-' reads stdin)",
                     runDom);

}  // namespace
