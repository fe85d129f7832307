// Document load and save: the pull loader, XInclude, the document's URIs and every save form.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "common/ZQColor.h"
#include "common/ZQDocument.h"
#include "common/ZQElement.h"
#include "common/ZQNamedValueMap.h"
#include "common/ZQXmlSerializer.h"
#include "core/ZQCommonError.h"
#include "xml/ZQXmlParserImpl.h"

using namespace ZQCommonNS;
using zqtest::s8;
using zqtest::u;

namespace {

// A fresh directory, removed with its files at the end of the test.
struct DocTempDir {
  std::string path;
  DocTempDir() {
    const char* root = getenv("ZQ_TEST_TMP");
    std::string base = root && *root ? root : "/tmp";
    std::filesystem::create_directories(base);
    std::string pattern = base + "/zqdoc-XXXXXX";
    char* made = mkdtemp(pattern.data());
    path = made ? std::string(made) : base;
  }
  ~DocTempDir() {
    std::error_code ec;
    std::filesystem::remove_all(path, ec);
  }
  std::string write(const std::string& name, const std::string& bytes) {
    std::string full = path + "/" + name;
    std::ofstream(full, std::ios::binary) << bytes;
    return full;
  }
};

// A read-only buffer that counts the bytes the parser takes from it.
class CountingBuf : public std::streambuf {
 public:
  explicit CountingBuf(std::string data) : m_data(std::move(data)) {}
  size_t taken() const { return m_pos; }

 protected:
  int_type underflow() override {
    if (m_pos >= m_data.size()) return traits_type::eof();
    size_t n = std::min<size_t>(256, m_data.size() - m_pos);
    char* p = m_data.data() + m_pos;
    setg(p, p, p + n);
    m_pos += n;
    return traits_type::to_int_type(*p);
  }

 private:
  std::string m_data;
  size_t m_pos = 0;
};

// An element whose appendChildEx refuses children named "skip" and replaces children named
// "swap" by a text node or by another element.
class PickyElement : public ElementNS {
 public:
  PickyElement(ZQDocument* doc, ZQName uri, ZQName prefix, ZQName local)
      : ElementNS(doc, uri, prefix, local) {}
  ZQNode* appendChildEx(ZQNode* child) override {
    if (child->getLocalName() == ZQName(u("skip"))) return nullptr;
    if (child->getLocalName() == ZQName(u("swaptext"))) {
      appendChildText(u("instead"));
      return getLastChildFast();
    }
    if (child->getLocalName() == ZQName(u("swapelement"))) {
      ZQPtr<ZQElement> other = getOwnerDocument()->createElementNS(ZQName(), ZQName(u("other")));
      return appendChild(other.get());
    }
    return appendChild(child);
  }
};

class PickyDocument : public ZQDocument {
 public:
  ZQPtr<ZQElement> createElementNS(ZQName uri, ZQName prefix, ZQName local) override {
    if (local == ZQName(u("nothing"))) return ZQPtr<ZQElement>();
    return ZQPtr<ZQElement>(new PickyElement(this, uri, prefix, local));
  }
  using ZQDocument::createElementNS;
};

// A parser that plays a fixed script of events; what it is not asked for answers neutrally.
class ScriptParser : public ZQXmlParser {
 public:
  struct Step {
    EventType type;
    const char* name;
    int depth;
  };
  explicit ScriptParser(std::vector<Step> steps)
      : m_steps(std::move(steps)), m_count(static_cast<int>(m_steps.size())) {}
  // Steps made on demand: `step(i)` for i from 0 below `count`.
  ScriptParser(std::function<Step(int)> step, int count)
      : m_make(std::move(step)), m_count(count) {}
  int consumed() const { return m_index; }

  void setFeature(Feature, bool) override {}
  bool getFeature(Feature) override { return false; }
  void setInput(ZQUri&, const UnicodeString&, const UnicodeString&) override {}
  void setInput(std::istream&, const UnicodeString&, const UnicodeString&) override {}
  void closeStream() override {}
  UnicodeString getInputEncoding() override { return UnicodeString(); }
  void defineEntityReplacementText(ZQName, const UnicodeString&) override {}
  int getNamespaceCount(int) override { return 0; }
  ZQName getNamespacePrefix(int) override { return ZQName(); }
  ZQName getNamespaceUri(int) override { return ZQName(); }
  ZQName getNamespace() override { return ZQName(); }
  ZQName getNamespace(ZQName) override { return ZQName(); }
  int getDepth() override { return current().depth; }
  UnicodeString getPositionDescription() override { return UnicodeString(); }
  int getLineNumber() override { return 1; }
  int getColumnNumber() override { return m_index; }
  bool isWhitespace() override { return false; }
  UnicodeString getText() override { return u(current().name); }
  ZQName getTarget() override { return ZQName(u(current().name)); }
  bool hasXmlDecl() override { return false; }
  ZQName getName() override { return ZQName(u(current().name)); }
  ZQName getPrefix() override { return ZQName(); }
  bool isEmptyElementTag() override { return false; }
  int getAttributeCount() override { return current().type == START_TAG ? 0 : -1; }
  ZQName getAttributeNamespace(int) override { return ZQName(); }
  ZQName getAttributeName(int) override { return ZQName(); }
  ZQName getAttributePrefix(int) override { return ZQName(); }
  UnicodeString getAttributeValue(ZQName, ZQName) override { return UnicodeString(); }
  UnicodeString getAttributeValue(int) override { return UnicodeString(); }
  EventType getEventType() override { return current().type; }
  EventType next() override {
    if (m_index <= m_count) ++m_index;
    return current().type;
  }
  EventType nextToken() override { return next(); }

 private:
  const Step& current() const {
    static const Step start{START_DOCUMENT, "", 0};
    static const Step end{END_DOCUMENT, "", 0};
    if (m_index == 0) return start;
    if (m_index > m_count) return end;
    if (m_make) {
      m_made = m_make(m_index - 1);
      return m_made;
    }
    return m_steps[static_cast<size_t>(m_index - 1)];
  }
  std::vector<Step> m_steps;
  std::function<Step(int)> m_make;
  mutable Step m_made{START_DOCUMENT, "", 0};
  int m_count;
  int m_index = 0;
};

// A serializer that only follows the nesting it is asked to write.
class NestingSerializer : public ZQXmlSerializer {
 public:
  int depth = 0;
  int maxDepth = 0;
  long starts = 0;
  long ends = 0;
  void setFeature(int, bool) override {}
  bool getFeature(int) override { return false; }
  void setOutput(const UnicodeString&, const UnicodeString&, const UnicodeString&) override {}
  void setOutput(std::ostream&, const UnicodeString&, const UnicodeString&) override {}
  void startDocument(const UnicodeString&, const UnicodeString&) override {}
  void endDocument() override {}
  void setPrefix(ZQName, ZQName) override {}
  ZQName getPrefix(ZQName, bool) override { return ZQName(); }
  int getDepth() override { return depth; }
  ZQName getNamespace() override { return ZQName(); }
  ZQName getDefaultNamespace() override { return ZQName(); }
  ZQName getName() override { return ZQName(); }
  ZQXmlSerializer* startTag(ZQName, ZQName, ZQName) override {
    ++starts;
    if (++depth > maxDepth) maxDepth = depth;
    return this;
  }
  ZQXmlSerializer* startTag(ZQName ns, ZQName local) override {
    return startTag(ns, ZQName(), local);
  }
  ZQXmlSerializer* attribute(ZQName, ZQName, ZQName, const UnicodeString&) override { return this; }
  ZQXmlSerializer* attribute(ZQName, ZQName, const UnicodeString&) override { return this; }
  ZQXmlSerializer* endTag(ZQName, ZQName) override {
    ++ends;
    --depth;
    return this;
  }
  ZQXmlSerializer* text(const char16_t*, int, int) override { return this; }
  ZQXmlSerializer* text(const UnicodeString&) override { return this; }
  void cdsect(const UnicodeString&) override {}
  void entityRef(const UnicodeString&) override {}
  void processingInstruction(ZQName, const UnicodeString&) override {}
  void comment(const UnicodeString&) override {}
  void docdecl(const UnicodeString&) override {}
  void ignorableWhitespace(const UnicodeString&) override {}
  void flush() override {}
};

// Loads `text` from a stream into `doc`, which keeps the stream alive for a pulled load.
struct StreamLoad {
  std::istringstream stream;
  explicit StreamLoad(ZQDocument& doc, const std::string& text, bool pull) : stream(text) {
    doc.setPullMode(pull);
    doc.load(stream);
  }
};

std::string shape(const ZQNode* node) {
  // Element names and texts, in document order, without loading.
  std::string out;
  for (const ZQNode* c = node->getFirstChildFast(); c; c = c->getNextSiblingFast()) {
    if (c->getNodeType() == ZQNode::ELEMENT_NODE) {
      out += "<" + s8(c->getLocalName().toString()) + ">" + shape(c) + "</>";
    } else if (c->getNodeType() == ZQNode::TEXT_NODE) {
      out += s8(c->getText());
    } else if (c->getNodeType() == ZQNode::PROCESSING_INSTRUCTION_NODE) {
      out += "<?" + s8(c->getLocalName().toString()) + "?>";
    }
  }
  return out;
}

std::string fileText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

ZQError catchError(const std::function<void()>& fn) {
  try {
    fn();
  } catch (const ZQError& e) {
    return e;
  }
  ADD_FAILURE() << "no error was thrown";
  return ZQError(0, UnicodeString(), UnicodeString(), -1, -1, UnicodeString());
}

}  // namespace

// ---- loading ----

TEST(DocumentLoad, RootOnlyGivesElementThenNullAndMarksBothDone) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  StreamLoad load(*doc, "<root/>", true);
  EXPECT_TRUE(doc->isLoading());
  ZQNode* first = doc->loadNextNode();
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->getLocalName(), ZQName(u("root")));
  EXPECT_EQ(doc->loadNextNode(), nullptr);
  EXPECT_TRUE(first->getFlag(ZQNode::FLAG_LOAD_DONE));
  EXPECT_FALSE(first->getFlag(ZQNode::FLAG_LOADING));
  EXPECT_TRUE(doc->getFlag(ZQNode::FLAG_LOAD_DONE));
  EXPECT_FALSE(doc->getFlag(ZQNode::FLAG_LOADING));
  EXPECT_EQ(doc->getLastLoadingNode(), nullptr);
  EXPECT_EQ(doc->loadNextNode(), nullptr);
}

TEST(DocumentLoad, EagerLoadBuildsWholeTree) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  StreamLoad load(*doc, "<r a='1'><x>t</x><y><z/></y>tail</r>", false);
  EXPECT_EQ(shape(doc.get()), "<r><x>t</><y><z></></>tail</>");
  EXPECT_EQ(doc->getLastLoadingNode(), nullptr);
  ZQElement* root = doc->getDocumentElement();
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(s8(root->getAttribute(ZQName(u("a"))).toString()), "1");
  EXPECT_EQ(root->getSourceLineNumber(), 1);
}

TEST(DocumentLoad, PullHasChildNodesAndFirstChildWithoutChildren) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  StreamLoad load(*doc, "<r><a><b/></a><c/></r>", true);
  EXPECT_FALSE(doc->hasChildNodesFast());
  EXPECT_TRUE(doc->hasChildNodes());
  ZQNode* root = doc->getFirstChild();
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(root->getLocalName(), ZQName(u("r")));
  EXPECT_FALSE(root->hasChildNodesFast());
  EXPECT_TRUE(root->isLoading());
  EXPECT_EQ(doc->getLastLoadingNode(), root);
}

TEST(DocumentLoad, PullEmptyDocumentHasNoChildren) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  StreamLoad load(*doc, "<?xml version='1.0'?>\n", true);
  bool threw = false;
  try {
    EXPECT_FALSE(doc->hasChildNodes());
  } catch (const ZQError&) {
    threw = true;  // a document without a root may be reported; it must not crash
  }
  (void)threw;
  EXPECT_EQ(doc->getFirstChildFast(), nullptr);
}

TEST(DocumentLoad, PullGetLastChildReadsWholeInput) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  StreamLoad load(*doc, "<r><a><b/></a><c>text</c></r>", true);
  ZQNode* root = doc->getLastChild();
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(doc->getLastLoadingNode(), nullptr);
  EXPECT_EQ(shape(doc.get()), "<r><a><b></></><c>text</></>");
  EXPECT_TRUE(doc->getFlag(ZQNode::FLAG_LOAD_DONE));
}

TEST(DocumentLoad, PullWalkParsesNothingPastTheAskedNode) {
  // A late error fires only when the walk reaches it.
  ZQPtr<ZQDocument> doc(new ZQDocument());
  StreamLoad load(*doc, "<r><a>one</a><b/><c></d></r>", true);
  ZQNode* root = doc->getFirstChild();
  ASSERT_NE(root, nullptr);
  ZQNode* a = root->getFirstChild();
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(a->getLocalName(), ZQName(u("a")));
  ZQNode* b = a->getNextSibling();
  ASSERT_NE(b, nullptr);
  EXPECT_EQ(b->getLocalName(), ZQName(u("b")));
  ZQError e = catchError([&] { root->getLastChild(); });
  EXPECT_NE(e.getErrorCode(), 0);
  // The tree keeps what was built, the load stays open where it was.
  EXPECT_EQ(shape(doc.get()), "<r><a>one</><b></><c></></>");
  EXPECT_NE(doc->getLastLoadingNode(), nullptr);
}

TEST(DocumentLoad, PullTakesOnlyTheHeadOfALongInput) {
  std::string text = "<r><head>h</head><body>";
  while (text.size() < (4u << 20)) text += "<p>some paragraph text</p>";
  text += "</body></r>";
  CountingBuf buf(text);
  std::istream stream(&buf);
  ZQPtr<ZQDocument> doc(new ZQDocument());
  doc->setPullMode(true);
  doc->load(stream);
  ZQNode* head = doc->getDocumentElement()->getFirstChild();
  ASSERT_NE(head, nullptr);
  EXPECT_EQ(head->getLocalName(), ZQName(u("head")));
  EXPECT_LT(buf.taken(), text.size() / 8);
  size_t before = buf.taken();
  // Completing the document reads everything.
  doc->getLastChild();
  EXPECT_GT(buf.taken(), before);
  EXPECT_EQ(buf.taken(), text.size());
}

TEST(DocumentLoad, NextSiblingWalkSeesWholeDocument) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  StreamLoad load(*doc, "<r><a>1</a><b><c/>2</b><d/></r>", true);
  std::string walked;
  ZQNode* root = doc->getDocumentElement();
  for (ZQNode* c = root->getFirstChild(); c; c = c->getNextSibling())
    walked += s8(c->getLocalName().toString()) + ",";
  EXPECT_EQ(walked, "a,b,d,");
}

TEST(DocumentLoad, SecondLoadIntoNodeClearsJustThatSubtree) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  doc->loadXml(u("<r><a><old/></a><b>keep</b></r>"));
  doc->setBaseUri(u("file:///base/dir/doc.xml"));
  ZQNode* a = doc->getDocumentElement()->getFirstChild();
  UnicodeString uriBefore = doc->getDocumentUri();
  std::istringstream second("<fresh>new</fresh>");
  doc->load(second, a, u("file:///elsewhere.xml"));
  EXPECT_EQ(shape(doc.get()), "<r><a><fresh>new</></><b>keep</></>");
  EXPECT_EQ(doc->getDocumentUri(), uriBefore);
  EXPECT_TRUE(a->getFlag(ZQNode::FLAG_LOAD_DONE));
}

TEST(DocumentLoad, SecondLoadOfDocumentStartsOver) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  StreamLoad first(*doc, "<r><a/><b/></r>", true);
  doc->getFirstChild();
  std::istringstream second("<s/>");
  doc->setPullMode(false);
  doc->load(second);
  EXPECT_EQ(shape(doc.get()), "<s></>");
}

TEST(DocumentLoad, AbortLeavesWhatWasReadAndNeverThrows) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  StreamLoad load(*doc, "<r><a>x</a><b></c></r>", true);
  ZQNode* root = doc->getFirstChild();
  ZQNode* a = root->getFirstChild();
  ASSERT_NE(a, nullptr);
  doc->abort();
  EXPECT_EQ(doc->getLastLoadingNode(), nullptr);
  EXPECT_NO_THROW({
    EXPECT_EQ(a->getNextSibling(), nullptr);
    EXPECT_EQ(root->getLastChild(), a);
    EXPECT_EQ(root->getChildNodeCount(), 1);
    EXPECT_EQ(doc->loadNextNode(), nullptr);
  });
  EXPECT_TRUE(root->isLoading());  // open nodes stay flagged
}

TEST(DocumentLoad, ParseErrorReachesCallerOfEagerLoad) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  std::istringstream in("<r><a>x</a><b></c></r>");
  ZQError e = catchError([&] { doc->load(in); });
  EXPECT_NE(e.getErrorCode(), 0);
  EXPECT_EQ(shape(doc.get()), "<r><a>x</><b></></>");
}

TEST(DocumentLoad, RefusedElementDropsItsWholeSubtree) {
  ZQPtr<ZQDocument> doc(new PickyDocument());
  doc->loadXml(u("<r><a/><skip><x><y>deep</y></x><skip/></skip><next/>t</r>"));
  EXPECT_EQ(shape(doc.get()), "<r><a></><next></>t</>");
}

TEST(DocumentLoad, RefusedElementInPullModeNextSiblingIsNextNode) {
  ZQPtr<ZQDocument> doc(new PickyDocument());
  StreamLoad load(*doc, "<r><skip><x/></skip><after/></r>", true);
  ZQNode* root = doc->loadNextNode();
  ASSERT_NE(root, nullptr);
  ZQNode* after = doc->loadNextNode();
  ASSERT_NE(after, nullptr);
  EXPECT_EQ(after->getLocalName(), ZQName(u("after")));
  EXPECT_EQ(after->getParentNodeFast(), root);
}

TEST(DocumentLoad, FactoryGivingNothingSkipsTheElement) {
  ZQPtr<ZQDocument> doc(new PickyDocument());
  doc->loadXml(u("<r><nothing><z/>lost</nothing><kept/></r>"));
  EXPECT_EQ(shape(doc.get()), "<r><kept></></>");
}

TEST(DocumentLoad, AppendChildExReplacement) {
  ZQPtr<ZQDocument> doc(new PickyDocument());
  // An element put in place continues the load; a text in its place counts as a refusal.
  doc->loadXml(u("<r><swapelement><in/></swapelement><swaptext><gone/></swaptext><end/></r>"));
  EXPECT_EQ(shape(doc.get()), "<r><other><in></></>instead<end></></>");
}

// The library's parser with its attribute values marked: a derived parser keeps its say over
// what the loader reads, although the library's own one is read in place.
class MarkingParser : public ZQXmlParserImpl {
 public:
  UnicodeString getAttributeValue(int index) override {
    return ZQXmlParserImpl::getAttributeValue(index) + u"!";
  }
  using ZQXmlParser::getAttributeValue;
};

TEST(DocumentLoad, ADerivedParserIsAskedForItsAttributeValues) {
  for (bool derived : {false, true}) {
    ZQPtr<ZQDocument> doc(new ZQDocument());
    if (derived) doc->setParser(ZQPtr<ZQXmlParser>(new MarkingParser()).get());
    doc->loadXml(u("<r a='x' xmlns:p='urn:p' p:b='y'><e c='z'/></r>"));
    ZQElement* root = doc->getDocumentElement();
    ASSERT_NE(root, nullptr);
    const char16_t* mark = derived ? u"!" : u"";
    EXPECT_EQ(root->getAttribute(ZQName(u("a"))).toString(), u("x") + mark);
    EXPECT_EQ(root->getAttributeNS(ZQName(u("urn:p")), ZQName(u("b"))).toString(), u("y") + mark);
    auto* child = static_cast<ZQElement*>(root->getFirstChild());
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(child->getAttribute(ZQName(u("c"))).toString(), u("z") + mark);
  }
}

// A text node that answers its text in capitals, made by its own document.
class ShoutingText : public ZQTextNode {
 public:
  using ZQTextNode::ZQTextNode;
  UnicodeString getText() const override {
    UnicodeString text = ZQTextNode::getText();
    return text.toUpper();
  }
};

class ShoutingDocument : public ZQDocument {
 public:
  ZQPtr<ZQTextNode> createTextNode(const UnicodeString& text) override {
    return ZQPtr<ZQTextNode>(new ShoutingText(this, text));
  }
};

TEST(DocumentSave, ADerivedTextNodeIsSavedThroughItsGetText) {
  ZQPtr<ZQDocument> plain(new ZQDocument());
  plain->loadXml(u("<r>quiet <b>words</b></r>"));
  EXPECT_EQ(plain->saveXml(plain->getDocumentElement()), u("<r>quiet <b>words</b></r>"));
  ZQPtr<ZQDocument> shouting(new ShoutingDocument());
  shouting->loadXml(u("<r>quiet <b>words</b></r>"));
  EXPECT_EQ(shouting->saveXml(shouting->getDocumentElement()), u("<r>QUIET <b>WORDS</b></r>"));
}

TEST(DocumentLoad, SkipInForceAtEndOfDocumentEndsTheLoad) {
  ZQPtr<ZQDocument> doc(new PickyDocument());
  ZQPtr<ScriptParser> parser(new ScriptParser({{ZQXmlParser::START_TAG, "r", 1},
                                               {ZQXmlParser::START_TAG, "skip", 2},
                                               {ZQXmlParser::START_TAG, "x", 3},
                                               {ZQXmlParser::TEXT, "lost", 3}}));
  doc->setParser(parser.get());
  doc->setPullMode(true);
  doc->load();
  ZQNode* root = doc->loadNextNode();
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(doc->loadNextNode(), nullptr);
  EXPECT_EQ(doc->getLastLoadingNode(), nullptr);
  EXPECT_TRUE(root->getFlag(ZQNode::FLAG_LOAD_DONE));
  EXPECT_FALSE(root->hasChildNodesFast());
  EXPECT_EQ(parser->consumed(), 5);
}

TEST(DocumentLoad, EndTagRunIsSwallowedInOneCall) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ScriptParser> parser(new ScriptParser({{ZQXmlParser::START_TAG, "r", 1},
                                               {ZQXmlParser::START_TAG, "a", 2},
                                               {ZQXmlParser::START_TAG, "b", 3},
                                               {ZQXmlParser::END_TAG, "b", 3},
                                               {ZQXmlParser::END_TAG, "a", 2},
                                               {ZQXmlParser::TEXT, "t", 1},
                                               {ZQXmlParser::END_TAG, "r", 1}}));
  doc->setParser(parser.get());
  doc->setPullMode(true);
  doc->load();
  doc->loadNextNode();
  doc->loadNextNode();
  ZQNode* b = doc->loadNextNode();
  ASSERT_NE(b, nullptr);
  ZQNode* text = doc->loadNextNode();
  ASSERT_NE(text, nullptr);
  EXPECT_TRUE(text->isText());
  EXPECT_EQ(parser->consumed(), 6);
  EXPECT_EQ(text->getParentNodeFast(), doc->getDocumentElement());
  EXPECT_TRUE(b->getParentNodeFast()->getFlag(ZQNode::FLAG_LOAD_DONE));
}

TEST(DocumentLoad, UnknownEventRaisesCode11) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ScriptParser> parser(
      new ScriptParser({{ZQXmlParser::START_TAG, "r", 1}, {ZQXmlParser::COMMENT, "c", 1}}));
  doc->setParser(parser.get());
  ZQError e = catchError([&] { doc->load(); });
  EXPECT_EQ(e.getErrorCode(), 11);
  EXPECT_EQ(s8(e.getSource()), "ZQCommonNS::ZQDocument::loadNextNode");
  EXPECT_EQ(e.getRawMessage(),
            formatCommonErrorMessage(11, ZQEmptyString::EMPTY_VALUE, ZQEmptyString::EMPTY_VALUE));
  EXPECT_EQ(shape(doc.get()), "<r></>");
}

TEST(DocumentLoad, ProcessingInstructionBecomesNode) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  doc->getParser()->setFeature(ZQXmlParser::FEATURE_REPORT_PI, true);
  doc->loadXml(u("<r>a<?tgt some data?>b</r>"));
  EXPECT_EQ(shape(doc.get()), "<r>a<?tgt?>b</>");
}

TEST(DocumentLoad, LoadXmlWithDeclaredEncoding) {
  // The text arrives as UTF-16 whatever the declaration says.
  ZQPtr<ZQDocument> doc(new ZQDocument());
  UnicodeString text = u("<?xml version='1.0' encoding='ISO-8859-1'?><r>");
  text.append(UnicodeString(u"\u00E9\u4E2D")).append(u("</r>"));
  try {
    doc->loadXml(text);
  } catch (const ZQError& e) {
    FAIL() << s8(e.getMessage());
  }
  ZQNode* root = doc->getDocumentElement();
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(root->getInnerText(), UnicodeString(u"\u00E9\u4E2D"));
  EXPECT_TRUE(doc->getDocumentUri().isEmpty());
}

TEST(DocumentLoad, LoadXmlNeverPulls) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  doc->setPullMode(true);
  doc->loadXml(u("<r><a/></r>"));
  EXPECT_EQ(doc->getLastLoadingNode(), nullptr);
  EXPECT_EQ(shape(doc.get()), "<r><a></></>");
}

TEST(DocumentLoad, LoadXmlErrorLeavesNoDanglingStream) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  catchError([&] { doc->loadXml(u("<r><a></b></r>")); });
  // The load stays open, and reading on finds no input instead of a dead stream.
  try {
    doc->loadNextNode();
  } catch (const ZQError&) {
  }
  EXPECT_EQ(shape(doc.get()), "<r><a></></>");
}

TEST(DocumentLoad, MillionNestedElementsLoadAndSave) {
  // The loader and the writer neither recurse nor keep a stack of their own per level.
  const int depth = 1000000;
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ScriptParser> parser(new ScriptParser(
      [depth](int i) {
        return i < depth ? ScriptParser::Step{ZQXmlParser::START_TAG, "a", i + 1}
                         : ScriptParser::Step{ZQXmlParser::END_TAG, "a", 2 * depth - i};
      },
      2 * depth));
  doc->setParser(parser.get());
  doc->load();
  int levels = 0;
  ZQNode* deepest = nullptr;
  for (ZQNode* n = doc->getFirstChildFast(); n; n = n->getFirstChildFast()) {
    ++levels;
    deepest = n;
  }
  EXPECT_EQ(levels, depth);
  ASSERT_NE(deepest, nullptr);
  EXPECT_TRUE(deepest->getFlag(ZQNode::FLAG_LOAD_DONE));
  EXPECT_TRUE(doc->getFlag(ZQNode::FLAG_LOAD_DONE));
  ZQPtr<NestingSerializer> serializer(new NestingSerializer());
  doc->setSerializer(serializer.get());
  std::ostringstream out;
  doc->save(out);
  EXPECT_EQ(serializer->starts, depth);
  EXPECT_EQ(serializer->ends, depth);
  EXPECT_EQ(serializer->maxDepth, depth);
  EXPECT_EQ(serializer->depth, 0);
}

TEST(DocumentLoad, DeeplyNestedMarkupRoundTrips) {
  const char* depthText = getenv("ZQ_TEST_NEST_DEPTH");
  const int depth = depthText ? atoi(depthText) : 5000;
  std::string text;
  for (int i = 0; i < depth; ++i) text += "<a>";
  text += "x";
  for (int i = 0; i < depth; ++i) text += "</a>";
  ZQPtr<ZQDocument> doc(new ZQDocument());
  std::istringstream in(text);
  doc->load(in);
  int levels = 0;
  for (ZQNode* n = doc->getFirstChildFast(); n && n->isElementNode(); n = n->getFirstChildFast())
    ++levels;
  EXPECT_EQ(levels, depth);
  ZQPtr<ZQXmlSerializer> serializer = ZQXmlSerializer::createXmlSerializer();
  serializer->setFeature(ZQXmlSerializer::FEATURE_OMIT_XML_DECLARATION, true);
  doc->setSerializer(serializer.get());
  std::ostringstream out;
  doc->save(out);
  EXPECT_NE(out.str().find(text), std::string::npos);
}

// ---- XInclude ----

TEST(DocumentXInclude, ParseMissingIncludesXml) {
  DocTempDir dir;
  dir.write("part.xml", "<?xml version='1.0'?><part><p>in</p></part>");
  std::string main = dir.write(
      "main.xml",
      "<r xmlns:xi='http://www.w3.org/2001/XInclude'><a/><xi:include href='part.xml'/><b/></r>");
  ZQPtr<ZQDocument> doc(new ZQDocument());
  doc->load(u(main.c_str()));
  EXPECT_EQ(shape(doc.get()), "<r><a></><part><p>in</></><b></></>");
  EXPECT_TRUE(doc->hasXInclude());
}

TEST(DocumentXInclude, ParseTextIncludesText) {
  DocTempDir dir;
  dir.write("note.txt", "plain <text> & more");
  std::string main = dir.write("main.xml",
                               "<r xmlns:xi='http://www.w3.org/2001/XInclude'>"
                               "<xi:include href='note.txt' parse='text'/></r>");
  ZQPtr<ZQDocument> doc(new ZQDocument());
  doc->load(u(main.c_str()));
  EXPECT_EQ(s8(doc->getDocumentElement()->getInnerText()), "plain <text> & more");
  EXPECT_EQ(doc->getDocumentElement()->getFirstChildFast()->getNodeType(), ZQNode::TEXT_NODE);
}

TEST(DocumentXInclude, ParsePdfReportsCode187) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQError e = catchError([&] {
    doc->loadXml(
        u("<r xmlns:xi='http://www.w3.org/2001/XInclude'><xi:include href='x.pdf' "
          "parse='pdf'/></r>"));
  });
  EXPECT_EQ(e.getErrorCode(), 187);
  std::string message = s8(e.getRawMessage());
  EXPECT_EQ(message.substr(0, message.find('\n')), "Invalid attribute value: parse=\"pdf\"");
}

TEST(DocumentXInclude, UnknownXIncludeElementReportsCode186) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQError e = catchError(
      [&] { doc->loadXml(u("<r xmlns:xi='http://www.w3.org/2001/XInclude'><xi:other/></r>")); });
  EXPECT_EQ(e.getErrorCode(), 186);
  std::string message = s8(e.getRawMessage());
  EXPECT_EQ(message.substr(0, message.find('\n')), "Invalid element name: xi:other");
}

namespace {
void collectErrors(const ZQError& error, void* data) {
  static_cast<std::vector<int>*>(data)->push_back(error.getErrorCode());
}
}  // namespace

TEST(DocumentXInclude, ReportedButNotThrownErrorsGoOn) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  std::vector<int> codes;
  doc->getParser()->setCallbackError(collectErrors, &codes);
  doc->loadXml(
      u("<r xmlns:xi='http://www.w3.org/2001/XInclude'><xi:include href='x' parse='pdf'/>"
        "<a/><xi:other><kid/></xi:other></r>"));
  ASSERT_EQ(codes.size(), 2u);
  EXPECT_EQ(codes[0], 187);
  EXPECT_EQ(codes[1], 186);
  // The dropped element's content falls to its parent.
  EXPECT_EQ(shape(doc.get()).substr(0, 19), "<r><a></><kid></></");
}

TEST(DocumentXInclude, FallbackAndNestedContentAreIgnored) {
  DocTempDir dir;
  dir.write("part.xml", "<part/>");
  std::string main = dir.write("main.xml",
                               "<r xmlns:xi='http://www.w3.org/2001/XInclude'>"
                               "<xi:include href='part.xml'><xi:fallback><fb><deep/></fb>"
                               "</xi:fallback><other><x/></other></xi:include><after/></r>");
  ZQPtr<ZQDocument> doc(new ZQDocument());
  doc->load(u(main.c_str()));
  EXPECT_EQ(shape(doc.get()), "<r><part></><after></></>");
}

TEST(DocumentXInclude, EmptyHrefIncludesNothing) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  doc->loadXml(
      u("<r xmlns:xi='http://www.w3.org/2001/XInclude'><xi:include parse='pdf'><f/>"
        "</xi:include><a/></r>"));
  EXPECT_EQ(shape(doc.get()), "<r><a></></>");
  EXPECT_TRUE(doc->hasXInclude());
}

// ---- URIs, parser and serializer ----

TEST(DocumentAccess, BaseAndDocumentUrisFallBackOnEachOther) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  EXPECT_FALSE(doc->isBaseUriSpecified());
  EXPECT_TRUE(doc->getBaseUri().isEmpty());
  std::istringstream in("<r/>");
  doc->load(in, nullptr, u("file:///data/doc.xml"));
  EXPECT_EQ(s8(doc->getDocumentUri()), "file:///data/doc.xml");
  EXPECT_EQ(s8(doc->getBaseUri()), "file:///data/doc.xml");
  doc->setBaseUri(u("file:///other/base.xml"));
  EXPECT_TRUE(doc->isBaseUriSpecified());
  EXPECT_EQ(s8(doc->getBaseUri()), "file:///other/base.xml");
  EXPECT_EQ(s8(doc->getDocumentUri()), "file:///data/doc.xml");
  doc->loadXml(u("<r/>"));
  EXPECT_EQ(s8(doc->getDocumentUri()), "file:///other/base.xml");
}

TEST(DocumentAccess, SetBaseUriStoresNormalForm) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  UnicodeString typed = u("FILE:///a/b/../c.xml");
  doc->setBaseUri(typed);
  EXPECT_EQ(doc->getBaseUri(), ZQUri(typed).toString());
}

TEST(DocumentAccess, LoadFromPathSetsDocumentUri) {
  DocTempDir dir;
  std::string path = dir.write("d.xml", "<r>x</r>");
  ZQPtr<ZQDocument> doc(new ZQDocument());
  doc->load(u(path.c_str()));
  EXPECT_EQ(doc->getDocumentUri(), ZQUri(u(path.c_str())).toString());
  EXPECT_EQ(shape(doc.get()), "<r>x</>");
}

TEST(DocumentAccess, ParserAndSerializerOwnership) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  const ZQDocument& constDoc = *doc;
  EXPECT_EQ(constDoc.getParser(), nullptr);
  EXPECT_EQ(constDoc.getSerializer(), nullptr);
  ZQXmlParser* parser = doc->getParser();
  EXPECT_NE(parser, nullptr);
  EXPECT_EQ(doc->getParser(), parser);
  ZQXmlSerializer* serializer = doc->getSerializer();
  EXPECT_NE(serializer, nullptr);
  EXPECT_EQ(constDoc.getSerializer(), serializer);

  std::istringstream in("<r/>");
  doc->load(in, nullptr, u("file:///x.xml"));
  ZQPtr<ZQXmlSerializer> other = ZQXmlSerializer::createXmlSerializer();
  doc->setSerializer(other.get());
  EXPECT_EQ(doc->getSerializer(), other.get());
  EXPECT_EQ(s8(doc->getDocumentUri()), "file:///x.xml");
  ZQPtr<ZQXmlParser> otherParser = ZQXmlParser::createXmlParser();
  doc->setParser(otherParser.get());
  EXPECT_EQ(doc->getParser(), otherParser.get());
  EXPECT_TRUE(doc->getDocumentUri().isEmpty());
}

// ---- saving ----

TEST(DocumentSave, SaveXmlOfElementHasNoDeclarationOfDocumentHasOne) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  doc->loadXml(u("<r><a x='1'>t</a></r>"));
  std::string whole = s8(doc->saveXml(nullptr));
  EXPECT_EQ(whole.rfind("<?xml", 0), 0u);
  EXPECT_NE(whole.find("<r><a x=\"1\">t</a></r>"), std::string::npos);
  std::string part = s8(doc->saveXml(doc->getDocumentElement()->getFirstChild()));
  EXPECT_EQ(part, "<a x=\"1\">t</a>");
}

TEST(DocumentSave, SaveAndLoadAgainIsEqual) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  doc->getParser()->setFeature(ZQXmlParser::FEATURE_REPORT_PI, true);
  doc->loadXml(
      u("<r xmlns='urn:d' xmlns:p='urn:p' p:at='v&amp;w'><p:a>x &lt; y</p:a><?pi data?>"
        "<b c='&quot;q&quot;'/>\u00e9</r>"));
  UnicodeString first = doc->saveXml();
  ZQPtr<ZQDocument> again(new ZQDocument());
  again->getParser()->setFeature(ZQXmlParser::FEATURE_REPORT_PI, true);
  again->loadXml(first);
  EXPECT_EQ(shape(again.get()), shape(doc.get()));
  EXPECT_EQ(s8(again->saveXml()), s8(first));
  ZQElement* a = static_cast<ZQElement*>(again->getDocumentElement()->getFirstChild());
  EXPECT_EQ(s8(a->getNamespaceUri().toString()), "urn:p");
  EXPECT_EQ(s8(a->getInnerText()), "x < y");
}

TEST(DocumentSave, SaveToFileAndStreamForms) {
  DocTempDir dir;
  ZQPtr<ZQDocument> doc(new ZQDocument());
  doc->loadXml(u("<r><a/></r>"));
  std::string path = dir.path + "/out.xml";
  doc->save(u(path.c_str()));
  std::string fromFile = fileText(path);
  std::ostringstream stream;
  doc->save(stream);
  EXPECT_EQ(fromFile, stream.str());
  EXPECT_NE(fromFile.find("<r><a/></r>"), std::string::npos);

  std::ostringstream withHead;
  doc->save(u("a comment"), u("<!DOCTYPE r>"), withHead);
  std::string head = withHead.str();
  size_t comment = head.find("<!--a comment-->");
  size_t doctype = head.find("<!DOCTYPE r>");
  size_t root = head.find("<r>");
  ASSERT_NE(comment, std::string::npos);
  ASSERT_NE(doctype, std::string::npos);
  EXPECT_LT(comment, doctype);
  EXPECT_LT(doctype, root);
}

TEST(DocumentSave, SaveOfSubtreeNode) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  doc->loadXml(u("<r><a><b/></a></r>"));
  std::ostringstream out;
  doc->save(out, doc->getDocumentElement()->getFirstChild());
  EXPECT_NE(out.str().find("<a><b/></a>"), std::string::npos);
  EXPECT_EQ(out.str().find("<r>"), std::string::npos);
}

TEST(DocumentSave, PiecewiseSave) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  doc->loadXml(u("<r k='v'><a>1</a><b>2</b></r>"));
  std::ostringstream out;
  doc->saveDocumentElement(out);
  ZQNode* root = doc->getDocumentElement();
  for (ZQNode* c = root->getFirstChild(); c; c = c->getNextSibling()) doc->saveChildElement(c);
  doc->closeDocumentElement();
  std::string text = out.str();
  EXPECT_NE(text.find("<r k=\"v\"><a>1</a><b>2</b></r>"), std::string::npos) << text;
}

TEST(DocumentSave, PulledDocumentSavesWhole) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  StreamLoad load(*doc, "<r><a><b>x</b></a><c/></r>", true);
  std::string saved = s8(doc->saveXml(nullptr));
  EXPECT_NE(saved.find("<r><a><b>x</b></a><c/></r>"), std::string::npos) << saved;
}

TEST(DocumentSave, ColourAttributeUsesSvgFormUnderSvgRoot) {
  // A colour whose two text forms differ, so that the form chosen shows.
  const ZQColor candidates[] = {ZQColor(0.1f, 0.2f, 0.3f, 0.4f), ZQColor(0.5f),
                                ZQColor(ZQName(u("red"))), ZQColor(0x12, 0x34, 0x56)};
  ZQColor colour = candidates[0];
  for (const ZQColor& c : candidates) {
    if (c.toString(true) != c.toString(false)) {
      colour = c;
      break;
    }
  }
  ASSERT_NE(colour.toString(true), colour.toString(false));
  const char* forms[] = {"<svg xmlns='http://www.w3.org/2000/svg'><g/></svg>", "<r><g/></r>"};
  for (int i = 0; i < 2; ++i) {
    ZQPtr<ZQDocument> doc(new ZQDocument());
    doc->loadXml(u(forms[i]));
    auto* g = static_cast<ZQElement*>(doc->getDocumentElement()->getFirstChild());
    g->setAttribute(ZQName(u("fill")), ZQValue(colour));
    std::string saved = s8(doc->saveXml(g));
    std::string expected = "fill=\"" + s8(colour.toString(i == 0)) + "\"";
    EXPECT_NE(saved.find(expected), std::string::npos) << saved;
  }
}

TEST(DocumentSave, CompoundWritesOneAttributePerEntry) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  doc->loadXml(u("<r/>"));
  ZQElement* root = doc->getDocumentElement();
  ZQPtr<ZQNamedValueMap> map(new ZQNamedValueMap());
  map->setNamedItem(ZQName(u("b")), ZQValue(u("one"), ZQUNIT_NONE));
  map->setNamedItem(ZQName(u("c")), ZQValue(u("two"), ZQUNIT_NONE));
  root->setAttribute(ZQName(u("a")), ZQValue(map.get()));
  ZQPtr<ZQNamedValueMap> empty(new ZQNamedValueMap());
  root->setAttribute(ZQName(u("e")), ZQValue(empty.get()));
  std::string saved = s8(doc->saveXml(root));
  EXPECT_NE(saved.find("a.b=\"" + s8(map->item(0).toValueText()) + "\""), std::string::npos)
      << saved;
  EXPECT_NE(saved.find("a.c=\"" + s8(map->item(1).toValueText()) + "\""), std::string::npos)
      << saved;
  EXPECT_EQ(saved.find(" e"), std::string::npos) << saved;
}

TEST(DocumentSave, NullAndArrayValuesWriteNothing) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  doc->loadXml(u("<r keep='1'/>"));
  ZQElement* root = doc->getDocumentElement();
  root->setAttribute(ZQName(u("gone")), ZQValue::NULL_VALUE);
  std::string saved = s8(doc->saveXml(root));
  EXPECT_EQ(saved, "<r keep=\"1\"/>");
}

TEST(DocumentSave, SaveAfterFailedSaveUsesFreshSerializer) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  doc->loadXml(u("<r/>"));
  ZQXmlSerializer* before = doc->getSerializer();
  ASSERT_NE(before, nullptr);
  ZQError e = catchError([&] { doc->save(u("/nonexistent-dir-zq/sub/out.xml")); });
  EXPECT_NE(e.getErrorCode(), 0);
  const ZQDocument& constDoc = *doc;
  EXPECT_EQ(constDoc.getSerializer(), nullptr);
  std::ostringstream out;
  doc->save(out);
  EXPECT_NE(out.str().find("<r/>"), std::string::npos);
  EXPECT_NE(constDoc.getSerializer(), nullptr);
}

namespace {
class OddNode : public ZQNode {
 public:
  explicit OddNode(ZQDocument* doc) : ZQNode(doc) {}
  ZQName getLocalName() const override { return ZQName(u("odd")); }
  ZQNodeType getNodeType() const override { return NOTATION_NODE; }
};
}  // namespace

TEST(DocumentSave, UnsupportedNodeTypeRaisesCode18) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQDocumentFragment> fragment = doc->createDocumentFragment();
  ZQPtr<ZQNode> odd(new OddNode(doc.get()));
  fragment->appendChild(odd.get());
  ZQError e = catchError([&] { doc->saveXml(fragment.get()); });
  EXPECT_EQ(e.getErrorCode(), 18);
  EXPECT_EQ(s8(e.getSource()), "ZQCommonNS::ZQDocument::doSave");
  EXPECT_EQ(s8(e.getRawMessage()), "SYSTEM ERROR: Unsupported node type.");
  // The failed save left no serializer behind.
  const ZQDocument& constDoc = *doc;
  EXPECT_EQ(constDoc.getSerializer(), nullptr);
}

// ---- derived classes keep their own operations on the loader's and saver's roads ----

namespace {

// An element that keeps a note of each attribute set on it through setAttributeNS, and
// upper-cases the values it stores.
class NotingElement : public ElementNS {
 public:
  NotingElement(ZQDocument* doc, ZQName uri, ZQName prefix, ZQName local)
      : ElementNS(doc, uri, prefix, local) {}
  void setAttributeNS(ZQName uri, ZQName prefix, ZQName localName, const ZQValue& value) override {
    noted.push_back(s8(localName.toString()));
    ElementNS::setAttributeNS(uri, prefix, localName,
                              ZQValue(value.toString().toUpper(), ZQUNIT_NONE));
  }
  using ZQElement::setAttributeNS;
  std::vector<std::string> noted;
};

// An attribute whose value reads back with a mark in front, as a layer above might compute it.
class MarkedAttr : public Attr {
 public:
  MarkedAttr(ZQDocument* doc, ZQName name) : Attr(doc, name) {}
  ZQValue getValue() const override {
    return ZQValue(UnicodeString(u"#") + Attr::getValue().toString(), ZQUNIT_NONE);
  }
};

class DerivedClassesDocument : public ZQDocument {
 public:
  ZQPtr<ZQElement> createElementNS(ZQName uri, ZQName prefix, ZQName local) override {
    if (local == ZQName(u("noting")))
      return ZQPtr<ZQElement>(new NotingElement(this, uri, prefix, local));
    return ZQDocument::createElementNS(uri, prefix, local);
  }
  ZQPtr<ZQAttr> createAttributeNS(ZQName uri, ZQName prefix, ZQName local) override {
    if (uri.isEmpty() && prefix.isEmpty() && local == ZQName(u("marked")))
      return ZQPtr<ZQAttr>(new MarkedAttr(this, local));
    return ZQDocument::createAttributeNS(uri, prefix, local);
  }
  using ZQDocument::createAttributeNS;
  using ZQDocument::createElementNS;
};

}  // namespace

TEST(DocumentLoad, DerivedElementGetsEveryAttributeThroughItsSetAttributeNS) {
  ZQPtr<ZQDocument> doc(new DerivedClassesDocument());
  doc->loadXml(u("<r a='x'><noting b='one' c='two'/></r>"));
  auto* noting = static_cast<NotingElement*>(doc->getDocumentElement()->getFirstChild());
  EXPECT_EQ(noting->noted, (std::vector<std::string>{"b", "c"}));
  EXPECT_EQ(s8(noting->getAttribute(ZQName(u("c"))).toString()), "TWO");
  // The library's own element beside it took its attribute as it was.
  EXPECT_EQ(s8(doc->getDocumentElement()->getAttribute(ZQName(u("a"))).toString()), "x");
}

TEST(DocumentLoad, LoadedAttributeOfDerivedClassGetsItsValueThroughSetValue) {
  ZQPtr<ZQDocument> doc(new DerivedClassesDocument());
  doc->loadXml(u("<r marked='v' plain='w'/>"));
  ZQElement* root = doc->getDocumentElement();
  EXPECT_EQ(s8(root->getAttribute(ZQName(u("marked"))).toString()), "#v");
  EXPECT_EQ(s8(root->getAttribute(ZQName(u("plain"))).toString()), "w");
}

TEST(DocumentSave, AttributeOfDerivedClassIsSavedThroughItsGetValue) {
  ZQPtr<ZQDocument> doc(new DerivedClassesDocument());
  doc->loadXml(u("<r marked='v' plain='w&amp;'/>"));
  EXPECT_EQ(s8(doc->saveXml(doc->getDocumentElement())), "<r marked=\"#v\" plain=\"w&amp;\"/>");
}

TEST(DocumentSave, LargeDocumentToFileEqualsTheStreamForm) {
  // Far more than one block of the file output, with escapes and text beyond ASCII.
  std::string xml = "<r>";
  for (int i = 0; i < 20000; ++i) {
    xml += "<e n='" + std::to_string(i) + "' q='a&quot;b&lt;'>t&amp;x \xc3\xa9\xe2\x82\xac</e>";
  }
  xml += "</r>";
  ZQPtr<ZQDocument> doc(new ZQDocument());
  doc->loadXml(UnicodeString::fromUTF8(xml));
  DocTempDir dir;
  std::string path = dir.path + "/large.xml";
  doc->save(u(path.c_str()));
  std::ostringstream stream;
  doc->save(stream);
  EXPECT_GT(stream.str().size(), 20000u * 40);
  EXPECT_EQ(fileText(path), stream.str());
  EXPECT_NE(
      stream.str().find("<e n=\"19999\" q=\"a&quot;b&lt;\">t&amp;x \xc3\xa9\xe2\x82\xac</e></r>"),
      std::string::npos);
}
