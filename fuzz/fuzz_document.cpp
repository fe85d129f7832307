// A document loaded in pull mode and walked with random accessors, then compared with an eager
// load of the same bytes and, when it was read whole, saved and loaded back.
// Input: two control bytes, a walk, then the document.
//   byte 0: bit 0 processing instructions are reported; bit 1 undefined entities read as
//           empty; bits 2-3 the parser type (xml, xml, auto, xhtml); bit 4 save through
//           saveXml instead of a stream.
//   byte 1: number of walk steps (modulo 48), each one byte that follows: low five bits the
//           accessor, high three bits its argument.
// Every URI is served from memory, so XInclude and the DTD reach nothing outside the process.
// Checks: only ZQError escapes; parse errors leave a tree whose links agree and which can
// still be walked; abort() silences the loader; a pulled load that read everything built the
// tree an eager load builds; and for XML read whole, the saved text loads back into an equal
// tree (same kinds, names, namespaces, attribute sets and texts, up to what the writer is
// told to change: dropped control characters, line ends in text and in namespace names
// written as they stand, redundant namespace declarations not repeated), and libxml2 finds
// that text well-formed. Text beside the root (from a character reference) is not sent back,
// and libxml2 does not judge an instruction without a target: both are the reader's leniency.
#include <libxml/parser.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <istream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "FuzzTextLoop.h"
#include "common/ZQDocument.h"
#include "common/ZQElement.h"
#include "common/ZQError.h"
#include "common/ZQName.h"
#include "common/ZQNameEnum.h"
#include "common/ZQNode.h"
#include "common/ZQNodeList.h"
#include "common/ZQUri.h"
#include "common/ZQXmlParser.h"

using namespace ZQCommonNS;

namespace {

constexpr int kMaxSteps = 100000;

void check(bool ok, const char* what) {
  if (!ok) {
    fprintf(stderr, "fuzz_document: %s\n", what);
    __builtin_trap();
  }
}

/// Serves every URI from memory, by its last letter: an XML fragment for "l", plain text for
/// "t", an entity declaration for "d", nothing for the rest.
class MemoryResolver : public ZQUriReferenceResolver2 {
 public:
  bool resolveUriReference(const char16_t* uri, WriteFunc write, void* data) override {
    char16_t last = 0;
    for (const char16_t* p = uri; *p; ++p) last = *p;
    const char* body = last == u'l'   ? "<inc a='1'>included<?pi data?><b/></inc>"
                       : last == u't' ? "plain text & <markup/>"
                       : last == u'd' ? "<!ENTITY ext 'external text'>"
                                      : "";
    size_t n = 0;
    while (body[n]) ++n;
    write(n, body, data);
    return true;
  }
};

/// A stream buffer over bytes that are not copied.
class InputBuf : public std::streambuf {
 public:
  InputBuf(const char* data, size_t size) {
    char* p = const_cast<char*>(data);
    setg(p, p, p + size);
  }
};

struct Setup {
  bool reportPI = false;
  bool ignoreUndefined = false;
  int type = 0;  // 0 xml, 1 auto, 2 xhtml
};

void configure(ZQDocument* doc, const Setup& setup) {
  ZQXmlParser* parser = doc->getParser();
  parser->setFeature(ZQXmlParser::FEATURE_SKIP_EXTERNAL_DTD, true);
  parser->setFeature(ZQXmlParser::FEATURE_FORBID_EXTERNAL_ENTITIES, true);
  parser->setFeature(ZQXmlParser::FEATURE_REPORT_PI, setup.reportPI);
  parser->setFeature(ZQXmlParser::FEATURE_IGNORE_UNDEFINED_ENTITIES, setup.ignoreUndefined);
  static const ZQName kTypes[] = {ZQName(ZQN_xml), ZQName(ZQN_auto),
                                  ZQName(UnicodeString(u"xhtml"))};
  parser->setParserType(kTypes[setup.type], ZQName(ZQN_html));
}

// ---- the tree as text, for comparison ----

// What a text becomes through the writer and a second read: controls other than tab, line
// feed and carriage return are dropped, and carriage returns, written as they stand, come
// back as line feeds.
UnicodeString normalText(const UnicodeString& text) {
  UnicodeString out;
  for (int i = 0; i < text.length(); ++i) {
    char16_t c = text.charAt(i);
    if (c < 32 && c != 9 && c != 10 && c != 13) continue;
    if (c == 13) {
      out.append(char16_t(10));
      if (i + 1 < text.length() && text.charAt(i + 1) == 10) ++i;
      continue;
    }
    out.append(c);
  }
  return out;
}

// Controls only: attribute values keep tab, line feed and carriage return as references.
UnicodeString normalValue(const UnicodeString& text) {
  UnicodeString out;
  for (int i = 0; i < text.length(); ++i) {
    char16_t c = text.charAt(i);
    if (c < 32 && c != 9 && c != 10 && c != 13) continue;
    out.append(c);
  }
  return out;
}

// Namespace names are written without references for tab, line feed and carriage return, so
// they come back as the spaces of a normalised attribute value.
UnicodeString normalNamespace(const UnicodeString& text) {
  UnicodeString out;
  for (int i = 0; i < text.length(); ++i) {
    char16_t c = text.charAt(i);
    if (c < 32 && c != 9 && c != 10 && c != 13) continue;
    if (c == 13 && i + 1 < text.length() && text.charAt(i + 1) == 10) ++i;
    out.append(c == 9 || c == 10 || c == 13 ? char16_t(32) : c);
  }
  return out;
}

bool isSpaceOnly(const UnicodeString& text) {
  for (int i = 0; i < text.length(); ++i) {
    char16_t c = text.charAt(i);
    if (c != 9 && c != 10 && c != 13 && c != 32) return false;
  }
  return true;
}

UnicodeString nameText(ZQName name) {
  UnicodeString out;
  out.append(u'{').append(name.toString()).append(u'}');
  return out;
}

UnicodeString namespaceText(ZQName name, bool normal) {
  UnicodeString out;
  out.append(u'{').append(normal ? normalNamespace(name.toString()) : name.toString()).append(u'}');
  return out;
}

// One line per node in document order, read through the Fast links only. With `normal`, the
// tree is put in the form the writer gives it back: adjacent texts joined, empty ones and
// white space outside the root dropped, characters as in normalText, and namespace
// declarations that repeat a binding already in force left out (the writer records none).
// Namespace bindings in force, by prefix (the empty prefix for the default namespace).
using Scope = std::map<ZQName, ZQName>;

void describe(const ZQNode* node, bool normal, UnicodeString& out, int depth, const Scope& scope) {
  check(depth < 100000, "tree too deep");
  UnicodeString pendingText;
  bool hasText = false;
  auto flushText = [&] {
    if (!hasText) return;
    hasText = false;
    if (normal && (pendingText.isEmpty() ||
                   (node->getNodeType() == ZQNode::DOCUMENT_NODE && isSpaceOnly(pendingText)))) {
      pendingText.remove();
      return;
    }
    out.append(u"T").append(normal ? normalText(pendingText) : pendingText).append(u'\n');
    pendingText.remove();
  };
  for (const ZQNode* c = node->getFirstChildFast(); c; c = c->getNextSiblingFast()) {
    switch (c->getNodeType()) {
      case ZQNode::TEXT_NODE:
        if (!normal) {
          out.append(u"T").append(c->getText()).append(u'\n');
        } else {
          pendingText.append(c->getText());
          hasText = true;
        }
        break;
      case ZQNode::PROCESSING_INSTRUCTION_NODE:
        flushText();
        out.append(u"P")
            .append(nameText(c->getLocalName()))
            .append(normal ? normalText(c->getText()) : c->getText())
            .append(u'\n');
        break;
      case ZQNode::ELEMENT_NODE: {
        flushText();
        out.append(u"E")
            .append(namespaceText(c->getNamespaceUri(), normal))
            .append(nameText(c->getPrefix()))
            .append(nameText(c->getLocalName()))
            .append(u'\n');
        // Attributes as a set: sorted lines.
        std::vector<UnicodeString> attrs;
        Scope inner = scope;
        if (ZQNamedNodeMap* map = c->getAttributes()) {
          for (ZQNode* a = map->getFirstNode(); a; a = map->getNextNode(a)) {
            if (normal && a->getNamespaceUri() == ZQN_NS_XMLNS) {
              ZQName prefix = a->getLocalName() == ZQN_xmlns ? ZQName() : a->getLocalName();
              ZQName uri(a->getText());
              auto bound = scope.find(prefix);
              ZQName before = bound == scope.end() ? ZQName() : bound->second;
              if (before == uri) continue;
              inner[prefix] = uri;
            }
            bool declaration = a->getNamespaceUri() == ZQN_NS_XMLNS;
            UnicodeString value = !normal       ? a->getText()
                                  : declaration ? normalNamespace(a->getText())
                                                : normalValue(a->getText());
            UnicodeString line(u"A");
            line.append(namespaceText(a->getNamespaceUri(), normal))
                .append(nameText(a->getPrefix()))
                .append(nameText(a->getLocalName()))
                .append(value)
                .append(u'\n');
            attrs.push_back(line);
            check(attrs.size() < 100000, "attribute ring does not end");
          }
        }
        std::sort(attrs.begin(), attrs.end());
        for (const UnicodeString& line : attrs) out.append(line);
        describe(c, normal, out, depth + 1, inner);
        out.append(u"/\n");
        break;
      }
      default:
        check(false, "unexpected node type in a loaded tree");
    }
  }
  flushText();
}

UnicodeString describe(const ZQNode* root, bool normal) {
  UnicodeString out;
  Scope scope;
  scope[ZQName(ZQN_xml)] = ZQName(ZQN_NS_XML);
  scope[ZQName(ZQN_xmlns)] = ZQName(ZQN_NS_XMLNS);
  describe(root, normal, out, 0, scope);
  return out;
}

void reportMismatch(const char* what, const UnicodeString& a, const UnicodeString& b) {
  std::string sa, sb;
  a.toUTF8String(sa);
  b.toUTF8String(sb);
  fprintf(stderr, "---- first\n%s---- second\n%s----\n", sa.c_str(), sb.c_str());
  check(false, what);
}

// The links of every node agree both ways round.
void checkLinks(const ZQNode* parent, int depth) {
  check(depth < 100000, "tree too deep");
  std::vector<const ZQNode*> forward;
  for (const ZQNode* c = parent->getFirstChildFast(); c; c = c->getNextSiblingFast()) {
    check(c->getParentNodeFast() == parent, "child with another parent");
    forward.push_back(c);
    check(forward.size() < 1000000, "sibling ring does not end");
  }
  size_t i = forward.size();
  for (const ZQNode* c = parent->getLastChildFast(); c; c = c->getPreviousSibling())
    check(i > 0 && forward[--i] == c, "previous links disagree with next links");
  check(i == 0, "previous links end early");
  for (const ZQNode* c : forward) checkLinks(c, depth + 1);
}

// Errors that libxml2 raised while reading, other than its complaint about a namespace name
// that is not a URI, which Namespaces in XML does not make an error and we do not check.
int g_libxmlErrors = 0;

void onLibxmlError(void*, xmlErrorPtr error) {
  if (error->level < XML_ERR_ERROR) return;
  if (error->code == XML_WAR_NS_URI || error->code == XML_WAR_NS_URI_RELATIVE) return;
  ++g_libxmlErrors;
}

// libxml2 reads the saved text as a well-formed, namespace-well-formed document.
bool wellFormed(const std::string& bytes) {
  xmlParserCtxtPtr ctxt = xmlNewParserCtxt();
  if (!ctxt) return true;
  g_libxmlErrors = 0;
  xmlDocPtr doc = xmlCtxtReadMemory(ctxt, bytes.data(), static_cast<int>(bytes.size()), "saved.xml",
                                    nullptr, XML_PARSE_NONET);
  bool ok = doc && ctxt->wellFormed && g_libxmlErrors == 0;
  if (doc) xmlFreeDoc(doc);
  xmlFreeParserCtxt(ctxt);
  return ok;
}

// Whether the tree holds a processing instruction without a target: the reader takes "<? x?>"
// as one, and its text is then ours alone.
bool hasEmptyTarget(const ZQNode* node) {
  for (const ZQNode* c = node->getFirstChildFast(); c; c = c->getNextSiblingFast()) {
    if (c->isProcessingInstruction() && c->getLocalName().isEmpty()) return true;
    if (hasEmptyTarget(c)) return true;
  }
  return false;
}

// Whether the document holds text of its own beside the root: a character reference before the
// root reads as such text, and written as it stands it is refused on the way back.
bool hasTopLevelText(const ZQNode* doc) {
  for (const ZQNode* c = doc->getFirstChildFast(); c; c = c->getNextSiblingFast())
    if (c->isText() && !isSpaceOnly(c->getText())) return true;
  return false;
}

// ---- the random walk ----

struct Walk {
  ZQDocument* doc;
  ZQNode* cur;
  std::vector<ZQPtr<ZQNode>> clones;
  bool aborted = false;
  bool loadFailed = false;
};

void step(Walk& w, unsigned op, unsigned arg) {
  ZQNode*& cur = w.cur;
  switch (op) {
    case 0:
      if (ZQNode* n = cur->getFirstChild()) cur = n;
      break;
    case 1:
      if (ZQNode* n = cur->getLastChild()) cur = n;
      break;
    case 2:
      if (ZQNode* n = cur->getNextSibling()) cur = n;
      break;
    case 3:
      if (ZQNode* n = cur->getPreviousSibling()) cur = n;
      break;
    case 4:
      if (ZQNode* n = cur->getParentNode()) cur = n;
      break;
    case 5: {
      bool has = cur->hasChildNodes();
      int count = cur->getChildNodeCount();
      check(count >= 0, "negative child count");
      check(!has || count > 0, "hasChildNodes without children");
      ZQPtr<ZQNodeList> list = cur->getChildNodes();
      check(list->getLength() == count, "child list length differs from the count");
      break;
    }
    case 6: {
      ZQPtr<ZQNodeList> list = cur->getChildNodes();
      if (ZQNode* n = list->item(static_cast<int>(arg))) {
        check(n->getParentNodeFast() == cur, "child list item of another parent");
        cur = n;
      }
      break;
    }
    case 7: {
      auto order = static_cast<ZQTreeIterator::TraversalOrder>(arg % 3 + 1);
      ZQTreeIterator it(cur, nullptr, false, order);
      int steps = 0;
      while (ZQNode* n = it.nextNode()) {
        check(++steps < kMaxSteps, "tree iterator does not end");
        check(n == cur || n->isDescendantOf(cur), "tree iterator left its root");
        if (steps > 64) break;
      }
      if (arg & 4) {
        for (int k = 0; k < 8 && it.previousNode(); ++k) {
        }
      }
      break;
    }
    case 8: {
      ZQPtr<ZQNodeList> list = cur->getElementsByTagName(arg & 1 ? ZQName(UnicodeString(u"*"))
                                                                 : ZQName(UnicodeString(u"b")));
      int length = list->getLength();
      check(length >= 0, "negative list length");
      if (ZQNode* n = list->item(static_cast<int>(arg) % (length + 1))) {
        check(n->isElementNode(), "element list holds a non-element");
        cur = n;
      }
      if (length > 0) check(list->item(length - 1) == list->getLastNode(), "last item differs");
      break;
    }
    case 9: {
      ZQPtr<ZQNodeList> list = cur->getElementsByTagNameNS(
          ZQName(UnicodeString(u"*")), arg & 1 ? ZQName(UnicodeString(u"*")) : cur->getLocalName());
      for (ZQNode* n = list->getFirstNode(); n; n = list->getNextNode(n))
        check(n->isDescendantOf(cur), "element list left its root");
      break;
    }
    case 10: {
      ZQNamedNodeMap* map = cur->getAttributes();
      if (!map) break;
      int length = map->getLength();
      ZQElement* element = static_cast<ZQElement*>(cur);
      for (int i = 0; i < length; ++i) {
        ZQAttr* attr = map->item(i);
        check(attr != nullptr, "attribute item missing");
        check(attr->getOwnerElement() == element, "attribute with another owner");
        ZQAttr* byName = element->getAttributeNode(attr->getNodeName());
        check(byName != nullptr, "attribute not found by its name");
        ZQAttr* byNs = element->getAttributeNodeNS(attr->getNamespaceUri(), attr->getLocalName());
        check(byNs != nullptr, "attribute not found by its namespace");
        check(element->hasAttributeLocal(attr->getLocalName()), "attribute not found locally");
        (void)attr->getText();
        (void)element->getAttribute(attr->getNodeName()).toString();
      }
      check(map->item(length) == nullptr, "attribute item beyond the end");
      check(cur->hasAttributes() == (length > 0), "hasAttributes disagrees with the map");
      break;
    }
    case 11:
      (void)cur->getText();
      (void)cur->getInnerText();
      break;
    case 12:
      switch (arg & 3) {
        case 0:
          if (ZQNode* n = cur->getFirstChildFast()) cur = n;
          break;
        case 1:
          if (ZQNode* n = cur->getLastChildFast()) cur = n;
          break;
        case 2:
          if (ZQNode* n = cur->getNextSiblingFast()) cur = n;
          break;
        default:
          if (ZQNode* n = cur->getParentNodeFast()) cur = n;
          break;
      }
      break;
    case 13:
      if (cur->getNodeType() == ZQNode::DOCUMENT_NODE) break;
      try {
        ZQPtr<ZQNode> clone = cur->cloneNode((arg & 1) != 0);
        if (clone) {
          checkLinks(clone.get(), 0);
          w.clones.push_back(clone);
        }
      } catch (const ZQError& e) {
        // A node class without cloneNode (a processing instruction) stops a deep clone.
        if (e.getErrorCode() != 3) throw;
      }
      break;
    case 14:
      if (ZQNode* n = w.doc->getDocumentElement()) cur = n;
      break;
    case 15: {
      ZQNodeIterator it = cur->getIterator();
      int steps = 0;
      while (it.hasNextNode() && steps++ < static_cast<int>(arg) * 4) it.nextNode();
      if (arg & 1) it.previousNode();
      (void)it.hasPreviousNode();
      break;
    }
    case 16:
      (void)cur->getNextSiblingOrSelfIgnoreEmptyOrWhitespace();
      (void)cur->countPrecedingSiblings();
      (void)cur->countFollowingSiblings();
      check(cur->getNodeDepth() >= -1, "negative depth");
      break;
    case 17: {
      ZQPtr<ZQNodeList> list = cur->getDescendantNodes();
      if (arg & 1) {
        ZQNode* last = list->getLastNode();
        check(!last || last->isDescendantOf(cur), "last descendant outside the root");
      } else {
        (void)list->getLength();
      }
      break;
    }
    case 18:
      (void)cur->lookupNamespaceUri(cur->getPrefix());
      (void)cur->lookupPrefix(cur->getNamespaceUri());
      (void)cur->isDefaultNamespace(cur->getNamespaceUri());
      (void)cur->getBaseUri();
      (void)cur->getNodeName();
      break;
    case 19:
      if (arg == 7) {
        w.doc->abort();
        w.aborted = true;
      }
      break;
    case 20:
      (void)cur->getSourceLineNumber();
      (void)cur->getSourceColumnNumber();
      break;
    case 21:
      (void)w.doc->loadNextNode();
      break;
    default:
      cur = w.doc;
      break;
  }
}

// Runs one accessor; a load error is expected and leaves the tree as it was built.
void guardedStep(Walk& w, unsigned op, unsigned arg) {
  try {
    step(w, op, arg);
  } catch (const ZQError&) {
    check(!w.aborted, "an accessor loaded after abort");
    w.loadFailed = true;
  }
}

// Reads everything still to come through the plain accessors.
void finish(Walk& w) {
  for (int round = 0; round < 4; ++round) {
    try {
      ZQTreeIterator it(w.doc, nullptr, false, ZQTreeIterator::PRE_ORDER);
      int steps = 0;
      while (it.nextNode()) check(++steps < 10 * kMaxSteps, "walk does not end");
      return;
    } catch (const ZQError& e) {
      check(!w.aborted, "a walk loaded after abort");
      w.loadFailed = true;
    }
  }
}

std::string saveBytes(ZQDocument* doc, bool asString) {
  std::string bytes;
  if (asString) {
    doc->saveXml(nullptr).toUTF8String(bytes);
    return bytes;
  }
  std::ostringstream out;
  doc->save(out);
  return out.str();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  xmlInitParser();
  xmlSetStructuredErrorFunc(nullptr, onLibxmlError);
  static MemoryResolver resolver;
  ZQUri::setUriReferenceResolver2(&resolver);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzzsupport::chooseTextLoop(size);
  if (size < 2) return 0;
  Setup setup;
  setup.reportPI = (data[0] & 1) != 0;
  setup.ignoreUndefined = (data[0] & 2) != 0;
  static const int kTypeOf[] = {0, 0, 1, 2};
  setup.type = kTypeOf[(data[0] >> 2) & 3];
  const bool saveAsString = (data[0] & 0x10) != 0;
  size_t walkLength = data[1] % 48;
  if (size < 2 + walkLength) return 0;
  const uint8_t* walkBytes = data + 2;
  const char* text = reinterpret_cast<const char*>(data + 2 + walkLength);
  const size_t textSize = size - 2 - walkLength;

  // Pulled, and walked at random.
  InputBuf pullBuf(text, textSize);
  std::istream pullIn(&pullBuf);
  ZQPtr<ZQDocument> doc(new ZQDocument());
  configure(doc.get(), setup);
  doc->setPullMode(true);
  Walk w{doc.get(), doc.get()};
  try {
    doc->load(pullIn, nullptr, UnicodeString(u"file:///fuzz/doc.xml"));
  } catch (const ZQError&) {
    return 0;  // the input cannot even be opened
  }
  for (size_t i = 0; i < walkLength; ++i) guardedStep(w, walkBytes[i] & 31, walkBytes[i] >> 5);
  finish(w);
  checkLinks(doc.get(), 0);
  for (const ZQPtr<ZQNode>& clone : w.clones) checkLinks(clone.get(), 0);
  if (!w.aborted && !w.loadFailed) {
    check(doc->getLastLoadingNode() == nullptr, "a finished walk left the load open");
    check(doc->getFlag(ZQNode::FLAG_LOAD_DONE), "a finished load did not mark the document");
  }
  const bool complete = !w.aborted && !w.loadFailed;
  UnicodeString pulled = describe(doc.get(), false);

  // The same bytes, eagerly: the same tree, or the same failure.
  InputBuf eagerBuf(text, textSize);
  std::istream eagerIn(&eagerBuf);
  ZQPtr<ZQDocument> eager(new ZQDocument());
  configure(eager.get(), setup);
  bool eagerFailed = false;
  try {
    eager->load(eagerIn, nullptr, UnicodeString(u"file:///fuzz/doc.xml"));
  } catch (const ZQError&) {
    eagerFailed = true;
  }
  checkLinks(eager.get(), 0);
  if (!w.aborted) check(eagerFailed == w.loadFailed, "pulled and eager loads fail differently");
  if (complete && !eagerFailed) {
    UnicodeString whole = describe(eager.get(), false);
    if (whole != pulled) reportMismatch("pulled and eager trees differ", pulled, whole);
  }

  // Saved and loaded back. A document that was not read whole may still be saved.
  std::string bytes;
  try {
    bytes = saveBytes(doc.get(), saveAsString);
  } catch (const ZQError&) {
    check(!complete || setup.type != 0, "a complete XML tree could not be saved");
    return 0;
  }
  if (!complete || setup.type != 0 || !doc->getDocumentElement() || hasTopLevelText(doc.get()))
    return 0;

  InputBuf againBuf(bytes.data(), bytes.size());
  std::istream againIn(&againBuf);
  ZQPtr<ZQDocument> again(new ZQDocument());
  configure(again.get(), setup);
  try {
    again->load(againIn, nullptr, UnicodeString(u"file:///fuzz/saved.xml"));
  } catch (const ZQError& e) {
    std::string message;
    e.getMessage().toUTF8String(message);
    fprintf(stderr, "%s\n", message.c_str());
    reportMismatch("the saved text does not load", pulled, UnicodeString::fromUTF8(bytes));
  }
  if (!hasEmptyTarget(doc.get()) && !wellFormed(bytes))
    reportMismatch("libxml2 refuses the saved text", pulled, UnicodeString::fromUTF8(bytes));
  UnicodeString first = describe(doc.get(), true);
  UnicodeString second = describe(again.get(), true);
  if (first != second) reportMismatch("the saved text loads into another tree", first, second);
  return 0;
}
