// zqtool dom and the tree listing of the default run: the listing itself on trees made here,
// then the tool, whose output must be what the library gives in-process for the same input.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "../tools/zqtool/ZQToolTree.h"
#include "ZqtoolTestSupport.h"
#include "common/ZQDocument.h"
#include "common/ZQElement.h"
#include "common/ZQError.h"
#include "common/ZQXmlParser.h"

using namespace ZQCommonNS;

namespace {

std::vector<std::string> splitLines(const std::string& text) {
  std::vector<std::string> out;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) out.push_back(line);
  return out;
}

/// The tree listing of `xml` loaded whole from a string, with `indent`.
std::string wholeTreeOf(const std::string& xml, bool reportPi, int indent = 0) {
  std::istringstream input(xml);
  ZQPtr<ZQDocument> document(new ZQDocument());
  if (reportPi) document->getParser()->setFeature(ZQXmlParser::FEATURE_REPORT_PI, true);
  document->load(input, nullptr, UnicodeString(u"whole.xml"));
  std::ostringstream out;
  zqtool::listTree(document.get(), out, indent);
  return out.str();
}

const char kSmall[] =
    "<?xml version='1.0'?>\n"
    "<!DOCTYPE r [<!ENTITY e 'E&#x41;'>]>\n"
    "<r xmlns='urn:d' xmlns:p='urn:p' a='1'><p:x p:b='2 &amp; 3'>t&e;<![CDATA[<c>]]></p:x>"
    "<!--gone--><?go on?><y/></r>";

TEST(ZqtoolDomTree, LinesAreIndentedByDepthWithKindNameNamespaceAttributesAndText) {
  EXPECT_EQ(wholeTreeOf(kSmall, true),
            "document\n"
            "  element r {urn:d} xmlns=\"urn:d\" xmlns:p=\"urn:p\" a=\"1\"\n"
            "    element p:x {urn:p} p:b=\"2 & 3\"\n"
            "      text \"tEA<c>\"\n"
            "    pi go \"on\"\n"
            "    element y {urn:d}\n");
}

TEST(ZqtoolDomTree, IndentIsAddedToEveryLine) {
  const auto lines = splitLines(wholeTreeOf("<a><b/></a>", false, 4));
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0], "    document");
  EXPECT_EQ(lines[1], "      element a");
  EXPECT_EQ(lines[2], "        element b");
}

TEST(ZqtoolDomTree, TextIsEscapedOntoOneLine) {
  EXPECT_EQ(wholeTreeOf("<a q='x&#9;y'>1\n2\r\n\"3\"\\&#x85;</a>", false),
            "document\n"
            "  element a q=\"x\\ty\"\n"
            "    text \"1\\n2\\n\\\"3\\\"\\\\\\u0085\"\n");
}

TEST(ZqtoolDomTree, NodesMadeByHandAreListedToo) {
  ZQPtr<ZQDocument> document(new ZQDocument());
  ZQPtr<ZQElement> root = document->createElementNS(
      ZQName(UnicodeString(u"urn:n")), ZQName(UnicodeString(u"q")), ZQName(UnicodeString(u"root")));
  document->appendChild(root.get());
  ZQPtr<ZQProcessingInstruction> pi =
      document->createProcessingInstruction(ZQName(UnicodeString(u"t")), UnicodeString(u"d"));
  root->appendChild(pi.get());
  ZQPtr<ZQDocumentFragment> fragment = document->createDocumentFragment();
  std::ostringstream out;
  EXPECT_EQ(zqtool::listTree(document.get(), out), 3);
  EXPECT_EQ(out.str(), "document\n  element q:root {urn:n}\n    pi t \"d\"\n");
  EXPECT_EQ(zqtool::describeNode(*fragment), "fragment");
}

TEST(ZqtoolDomTree, PulledWalkListsWhatAWholeLoadGivesAndCountsLinesAsItGoes) {
  std::istringstream input(kSmall);
  ZQPtr<ZQDocument> document(new ZQDocument());
  document->setPullMode(true);
  document->getParser()->setFeature(ZQXmlParser::FEATURE_REPORT_PI, true);
  document->load(input, nullptr, UnicodeString(u"whole.xml"));
  EXPECT_EQ(zqtool::countBuiltNodes(document.get()), 0);
  EXPECT_TRUE(document->isLoading());
  std::ostringstream out;
  EXPECT_EQ(zqtool::listTree(document.get(), out), 6);
  EXPECT_EQ(out.str(), wholeTreeOf(kSmall, true));
  EXPECT_EQ(zqtool::countBuiltNodes(document.get()), 5);
  EXPECT_EQ(document->getLastLoadingNode(), nullptr);
}

TEST(ZqtoolDomTree, CountingBuiltNodesNeverLoads) {
  std::istringstream input("<a><b><c/></b><d/></a>");
  ZQPtr<ZQDocument> document(new ZQDocument());
  document->setPullMode(true);
  document->load(input);
  ASSERT_NE(document->getFirstChild(), nullptr);  // loads a
  EXPECT_EQ(zqtool::countBuiltNodes(document.get()), 1);
  ASSERT_NE(document->getFirstChild()->getFirstChild(), nullptr);  // loads b
  EXPECT_EQ(zqtool::countBuiltNodes(document.get()), 2);
  EXPECT_EQ(zqtool::countBuiltNodes(document.get()), 2);
  document->getLastChild();  // completes everything
  EXPECT_EQ(zqtool::countBuiltNodes(document.get()), 4);
  EXPECT_EQ(zqtool::countBuiltNodes(nullptr), 0);
}

#ifdef ZQ_ZQTOOL_PATH

using zqtooltest::readFile;
using zqtooltest::ToolRun;

/// A path of its own for this test and this process, so parallel runs do not meet.
std::string scratchPath(const std::string& name) {
  const char* dir = std::getenv("ZQ_TEST_TMP");
  const std::string base = dir && *dir ? dir : "/tmp";
  const std::string mkdir = "mkdir -p '" + base + "'";
  if (std::system(mkdir.c_str()) != 0) return std::string();
  const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
  return base + "/zqtool_dom_" + std::to_string(getpid()) + "_" + info->name() + "_" + name;
}

std::string scratchFile(const std::string& name, const std::string& content) {
  const std::string path = scratchPath(name);
  std::ofstream(path, std::ios::binary) << content;
  return path;
}

ToolRun runTool(const std::string& args) { return zqtooltest::runTool(ZQ_ZQTOOL_PATH, args); }

std::string quoted(const std::string& path) { return "'" + path + "'"; }

/// What the library saves for the document at `path`, loaded whole in this process.
std::string savedInProcess(const std::string& path, bool reportPi = false) {
  ZQPtr<ZQDocument> document(new ZQDocument());
  if (reportPi) document->getParser()->setFeature(ZQXmlParser::FEATURE_REPORT_PI, true);
  document->load(UnicodeString::fromUTF8(path));
  std::ostringstream out;
  document->save(out);
  return out.str();
}

/// The full message of the error that loading `path` in this process throws.
std::string loadErrorInProcess(const std::string& path, bool pull) {
  ZQPtr<ZQDocument> document(new ZQDocument());
  document->setPullMode(pull);
  try {
    document->load(UnicodeString::fromUTF8(path));
    document->getLastChild();
  } catch (const ZQError& error) {
    std::string text;
    return error.getMessage().toUTF8String(text);
  }
  return "(no error)";
}

const char* const kDocuments[] = {
    "<a/>",
    kSmall,
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- head -->\n<book xmlns=\"urn:b\" "
    "xmlns:n=\"urn:n\" xml:lang=\"fr\">\n  <title n:k=\"v\">Caf\xC3\xA9 &lt;&amp;&gt; "
    "\xE2\x80\x94</title>\n  <empty/>\n  <![CDATA[a]]>b]]&gt;\n  <n:deep><n:deeper><x "
    "y=\"&quot;'\"/></n:deeper></n:deep>\n</book>\n",
    "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><r>\xE9t\xE9</r>",
};

TEST(ZqtoolDomCommand, SavesWhatTheLibrarySavesAndTheSavedFormLoadsBackTheSame) {
  int index = 0;
  for (const char* xml : kDocuments) {
    const std::string path = scratchFile("doc" + std::to_string(index++) + ".xml", xml);
    const std::string expected = savedInProcess(path);
    ASSERT_FALSE(expected.empty());
    const ToolRun run = runTool("dom " + quoted(path));
    EXPECT_EQ(run.status, 0) << xml << "\n" << run.err;
    EXPECT_EQ(run.out, expected) << xml;
    EXPECT_EQ(run.err, "");
    // The saved form is a fixed point: loading and saving it again changes nothing.
    const std::string again = scratchFile("again.xml", run.out);
    EXPECT_EQ(runTool("dom " + quoted(again)).out, run.out) << xml;
  }
}

TEST(ZqtoolDomCommand, KeepsTheMarkupThatSurvivesTheTree) {
  const std::string path = scratchFile("small.xml", kSmall);
  const ToolRun run = runTool("dom --feature FEATURE_REPORT_PI " + quoted(path));
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, savedInProcess(path, true));
  EXPECT_NE(run.out.find("<?go on?>"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("p:b=\"2 &amp; 3\""), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("tEA&lt;c&gt;"), std::string::npos) << run.out;
  EXPECT_EQ(run.out.find("gone"), std::string::npos) << run.out;
  // Without the feature the parser passes instructions by, and so does the tree.
  EXPECT_EQ(runTool("dom " + quoted(path)).out.find("<?go"), std::string::npos);
}

TEST(ZqtoolDomCommand, PullModeSavesTheSameBytesAsAWholeLoad) {
  int index = 0;
  for (const char* xml : kDocuments) {
    const std::string path = scratchFile("pull" + std::to_string(index++) + ".xml", xml);
    const ToolRun whole = runTool("dom " + quoted(path));
    const ToolRun pulled = runTool("dom --pull " + quoted(path));
    EXPECT_EQ(pulled.status, 0) << pulled.err;
    EXPECT_EQ(pulled.out, whole.out) << xml;
    const ToolRun tree = runTool("dom --tree " + quoted(path));
    EXPECT_EQ(runTool("dom --pull --tree " + quoted(path)).out, tree.out) << xml;
  }
}

TEST(ZqtoolDomCommand, PullModeBuildsNothingUntilTheWalk) {
  const std::string path = scratchFile("stats.xml", kDocuments[2]);
  const ToolRun whole = runTool("dom --stats " + quoted(path));
  const ToolRun pulled = runTool("dom --stats --pull " + quoted(path));
  EXPECT_EQ(pulled.out, whole.out);
  // book, and the 5 texts and 5 elements below it
  EXPECT_EQ(whole.err, "nodes built by the load: 11, after the walk: 11\n");
  EXPECT_EQ(pulled.err, "nodes built by the load: 0, after the walk: 11\n");
}

TEST(ZqtoolDomCommand, OutputOptionWritesTheFileAndNothingToStdout) {
  const std::string path = scratchFile("in.xml", kDocuments[2]);
  const std::string target = scratchPath("out.xml");
  std::remove(target.c_str());
  const ToolRun run = runTool("dom --pull " + quoted(path) + " -o " + quoted(target));
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(readFile(target), savedInProcess(path));
  // The option may come first as well.
  std::remove(target.c_str());
  EXPECT_EQ(runTool("dom -o " + quoted(target) + " " + quoted(path)).status, 0);
  EXPECT_EQ(readFile(target), savedInProcess(path));
  std::remove(target.c_str());
}

TEST(ZqtoolDomCommand, TreeOptionListsTheNodes) {
  const std::string path = scratchFile("tree.xml", kSmall);
  const ToolRun run = runTool("dom --tree --feature FEATURE_REPORT_PI " + quoted(path));
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, wholeTreeOf(kSmall, true));
  const std::string target = scratchPath("tree.txt");
  EXPECT_EQ(runTool("dom --tree " + quoted(path) + " -o " + quoted(target)).out, "");
  EXPECT_EQ(readFile(target), wholeTreeOf(kSmall, false));
  std::remove(target.c_str());
}

TEST(ZqtoolDomCommand, ReadsStandardInputAndDataUris) {
  const std::string path = scratchFile("stdin.xml", "<r a='1'><x>t</x></r>");
  const std::string expected = savedInProcess(path);
  EXPECT_EQ(runTool("dom - < " + quoted(path)).out, expected);
  EXPECT_EQ(runTool("dom --pull - < " + quoted(path)).out, expected);
  const ToolRun data = runTool("dom 'data:text/xml,<r a=\"1\"><x>t</x></r>'");
  EXPECT_EQ(data.status, 0) << data.err;
  EXPECT_EQ(data.out, expected);
}

TEST(ZqtoolDomCommand, ParseErrorPrintsTheExactMessageAndExitsOne) {
  const std::string path = scratchFile("bad.xml", "<a>\n</b>");
  for (const bool pull : {false, true}) {
    const ToolRun run = runTool(std::string("dom ") + (pull ? "--pull " : "") + quoted(path));
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "") << "nothing is saved from a failed load";
    EXPECT_EQ(run.err, loadErrorInProcess(path, pull) + "\n");
    EXPECT_EQ(run.err, "End tag 'b' does not match the start tag 'a'.\nEND_TAG, '" + path +
                           "', Line 2, Col 4.\n");
  }
}

TEST(ZqtoolDomCommand, ParseErrorLeavesTheOutputFileUnwritten) {
  const std::string path = scratchFile("bad.xml", "<a><b></a>");
  const std::string target = scratchPath("never.xml");
  std::remove(target.c_str());
  const ToolRun run = runTool("dom --pull " + quoted(path) + " -o " + quoted(target));
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, loadErrorInProcess(path, true) + "\n");
  EXPECT_NE(access(target.c_str(), F_OK), 0);
}

TEST(ZqtoolDomCommand, NonFatalErrorIsAWarningAndTheDocumentIsSaved) {
  const std::string path = scratchFile("nonfatal.xml", "<a/ >");
  const ToolRun run = runTool("dom " + quoted(path));
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, savedInProcess(path));
  EXPECT_EQ(run.err.rfind("warning: Unexpected whitespace after '/'.", 0), 0u) << run.err;
}

TEST(ZqtoolDomCommand, MissingFileExitsOneWithTheLibrarysMessage) {
  const std::string path = scratchPath("missing.xml");
  std::remove(path.c_str());
  const ToolRun run = runTool("dom " + quoted(path));
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, loadErrorInProcess(path, false) + "\n");
  EXPECT_EQ(run.err.rfind("Cannot open file: ", 0), 0u) << run.err;
}

TEST(ZqtoolDomCommand, UsageErrorsExitTwoWithTheUsageLine) {
  const std::string path = scratchFile("usage.xml", "<a/>");
  const char kUsage[] =
      "usage: zqtool dom [--pull] [--tree] [--stats] [--feature NAME]... <uri|-> [-o out.xml]\n";
  for (const std::string& args :
       {std::string("dom"), std::string("dom --pull"), "dom --bogus " + quoted(path),
        "dom " + quoted(path) + " -o", "dom " + quoted(path) + " " + quoted(path),
        "dom -o a.xml -o b.xml " + quoted(path), "dom " + quoted(path) + " -o ''"}) {
    const ToolRun run = runTool(args);
    EXPECT_EQ(run.status, 2) << args;
    EXPECT_EQ(run.out, "") << args;
    EXPECT_EQ(run.err, kUsage) << args;
  }
  const ToolRun feature = runTool("dom --feature FEATURE_NONSENSE " + quoted(path));
  EXPECT_EQ(feature.status, 2);
  EXPECT_EQ(feature.err, std::string("zqtool dom: unknown feature 'FEATURE_NONSENSE'\n") + kUsage);
}

TEST(ZqtoolDefaultRun, ListsTheTreeOfItsSamplePulledAsTheWalkGoes) {
  const ToolRun run = runTool("");
  ASSERT_EQ(run.status, 0) << run.err;
  const auto lines = splitLines(run.out);
  // The demonstration of before stays in front.
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines[0].rfind("ZQCommon ", 0), 0u);
  EXPECT_NE(run.out.find("\nProperties:\n"), std::string::npos);
  EXPECT_NE(run.out.find("\nA reported error:\n"), std::string::npos);

  // The sample's source is shown behind "  | ", then the tree behind two spaces.
  std::string source;
  size_t i = 0;
  while (i < lines.size() && lines[i] != "A document (sample-book.xml):") ++i;
  ASSERT_LT(i, lines.size()) << run.out;
  for (++i; i < lines.size() && lines[i].rfind("  | ", 0) == 0; ++i) {
    source += lines[i].substr(4) + "\n";
  }
  ASSERT_LT(i, lines.size());
  EXPECT_EQ(lines[i], "Its tree, pulled in as the walk goes (nodes built before the walk: 0):");
  std::string tree;
  for (++i; i < lines.size() && lines[i].rfind("  ", 0) == 0; ++i) tree += lines[i] + "\n";
  ASSERT_LT(i, lines.size());
  EXPECT_EQ(i + 1, lines.size()) << "the tree is the last section";

  // Every node of the sample loaded whole is in the pulled listing, in the same place.
  EXPECT_EQ(tree, wholeTreeOf(source, true, 2));
  const auto treeLines = splitLines(tree);
  EXPECT_EQ(lines[i], "Nodes built after the walk: " + std::to_string(treeLines.size() - 1));

  // The sample has what it promises.
  EXPECT_NE(source.find("<!DOCTYPE book ["), std::string::npos);
  EXPECT_NE(source.find("<!ENTITY press"), std::string::npos);
  EXPECT_NE(source.find("<![CDATA["), std::string::npos);
  EXPECT_NE(source.find("<!--"), std::string::npos);
  EXPECT_EQ(treeLines[0], "  document");
  EXPECT_EQ(treeLines[1], "    pi xml-stylesheet \"type=\\\"text/css\\\" href=\\\"book.css\\\"\"");
  EXPECT_EQ(treeLines[2],
            "    element book {http://www.zqcommon.org/sample/book} "
            "xmlns=\"http://www.zqcommon.org/sample/book\" "
            "xmlns:n=\"http://www.zqcommon.org/sample/notes\" xml:lang=\"en\" id=\"b1\"");
  const std::string note =
      "          element n:note {http://www.zqcommon.org/sample/notes} level=\"2\"";
  const std::string entityText = "          text \"Printed by ZQ Press & Sons \xE2\x80\x94 see \"";
  const std::string cdata = "          text \"if (a < b && c > d) { swap(a, c); }\"";
  const std::string pi = "        pi page-break \"before\"";
  for (const std::string& wanted : {note, entityText, cdata, pi}) {
    EXPECT_NE(std::find(treeLines.begin(), treeLines.end(), wanted), treeLines.end()) << wanted;
  }
  ASSERT_NE(source.find("<!-- the entity below"), std::string::npos);
  EXPECT_EQ(tree.find("the entity below"), std::string::npos) << "comments do not enter the tree";
}

#endif  // ZQ_ZQTOOL_PATH

}  // namespace
