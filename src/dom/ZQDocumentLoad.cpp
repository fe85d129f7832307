// The document's loader: the load entry points and loadNextNode, which turns the parser's next
// events into at most one new node, so that eager and pulled loads build the same tree.
#include <typeinfo>

#include "common/ZQDocument.h"
#include "common/ZQElement.h"
#include "common/ZQStrStream.h"
#include "common/ZQXmlUtil.h"
#include "core/ZQCommonError.h"
#include "dom/ZQDomClasses.h"
#include "xml/ZQXmlParserImpl.h"

namespace ZQCommonNS {

namespace {

bool isWholeDocument(const ZQNode* into, const ZQDocument* document) {
  return !into || into == document;
}

// Clears the loading flag and sets the done flag, whatever the node's state.
void markDone(ZQNode* node) {
  node->setFlag(ZQNode::FLAG_LOADING, false);
  node->setFlag(ZQNode::FLAG_LOAD_DONE, true);
}

// The parser when it is exactly the library's own, whose attributes may be read in place.
const ZQXmlParserImpl* ownParser(const ZQXmlParser* parser) {
  return &typeid(*parser) == &typeid(ZQXmlParserImpl) ? static_cast<const ZQXmlParserImpl*>(parser)
                                                      : nullptr;
}

UnicodeString attributeText(const ZQElement* element, ZQName name) {
  ZQValue value = element->getAttribute(name);
  if (value.isNull()) return UnicodeString();
  return value.toString();
}

}  // namespace

// ---- entry points ----

void ZQDocument::load(ZQUri& uri, ZQNode* into) {
  // The base given is the one set on the document; without one the parser takes the URI's.
  getParser()->setInput(uri, ZQEmptyString::EMPTY_VALUE, m_baseUri);
  if (isWholeDocument(into, this)) m_documentUri = uri.toString();
  doLoad(into, m_pullMode);
}

void ZQDocument::load(const UnicodeString& path, ZQNode* into) {
  ZQUri uri(path);
  load(uri, into);
}

void ZQDocument::load(std::istream& stream, ZQNode* into, const UnicodeString& uri) {
  if (isWholeDocument(into, this)) m_documentUri = uri;
  getParser()->setInput(stream, ZQEmptyString::EMPTY_VALUE, getBaseUri());
  doLoad(into, m_pullMode);
}

void ZQDocument::load() { doLoad(nullptr, m_pullMode); }

void ZQDocument::loadXml(const UnicodeString& text, ZQNode* into) {
  if (isWholeDocument(into, this)) m_documentUri.remove();
  ZQStrStream stream(text);
  ZQXmlParser* parser = getParser();
  parser->setInput(stream, UnicodeString(u"UTF-16"), getBaseUri());
  // The stream dies with this call, so the parser must not keep it, on any way out.
  try {
    doLoad(into, false);
  } catch (...) {
    parser->closeStream();
    throw;
  }
  parser->closeStream();
}

// ---- the engine ----

ZQNode* ZQDocument::loadNextNode() {
  ZQMutex guard(m_lock);
  ZQNode* last = m_lastLoadingNode;
  if (!last) return nullptr;

  // A finished text and a processing instruction take no children: the next node is a sibling.
  ZQNode* parent = last;
  if ((last->isText() && !last->getFlag(FLAG_LOADING)) || last->isProcessingInstruction())
    parent = last->getParentNode();

  ZQXmlParser* parser = getParser();
  for (;;) {
    int event = parser->next();
    if (m_skipDepth != 0) {
      if (event == ZQXmlParser::END_DOCUMENT) {
        m_skipDepth = 0;
      } else {
        if (event == ZQXmlParser::END_TAG && parser->getDepth() == m_skipDepth) m_skipDepth = 0;
        continue;
      }
    }

    // A run of end tags is swallowed here, in one call.
    for (;;) {
      if (!parent) {
        m_lastLoadingNode = nullptr;
        return nullptr;
      }
      if (event != ZQXmlParser::END_TAG) break;
      markDone(parent);
      do {
        parent = parent->getParentNode();
      } while (parent && parent->getFlag(FLAG_COMPLEMENTAL));
      event = parser->next();
    }

    switch (event) {
      case ZQXmlParser::END_DOCUMENT:
        markDone(parent);
        m_lastLoadingNode = nullptr;
        return nullptr;

      case ZQXmlParser::START_TAG: {
        ZQName ns = parser->getNamespace();
        ZQName prefix = parser->getPrefix();
        ZQName local = parser->getName();
        ZQPtr<ZQElement> element = createElementNS(ns, prefix, local);
        if (!element) {
          m_skipDepth = parser->getDepth();
          continue;
        }
        element->setFlag(FLAG_LOADING, true);
        element->setSourceLineNumber(parser->getLineNumber());
        element->setSourceColumnNumber(parser->getColumnNumber());
        // Every attribute is in place before the element is shown to the tree.
        int count = parser->getAttributeCount();
        if (const ZQXmlParserImpl* own = ownParser(parser)) {
          for (int i = 0; i < count; ++i) {
            const ZQXmlAttribute& attribute = own->attributeAt(i);
            element->setAttributeEx(attribute.namespaceUri, attribute.prefix, attribute.localName,
                                    attribute.value);
          }
        } else {
          for (int i = 0; i < count; ++i) {
            element->setAttributeEx(parser->getAttributeNamespace(i), parser->getAttributePrefix(i),
                                    parser->getAttributeName(i), parser->getAttributeValue(i));
          }
        }

        if (ns != ZQN_NS_XINCLUDE) {
          ZQNode* placed;
          if (parent->mayAdopt(element.get())) {
            // The factory's reference goes into the tree as it is.
            placed = parent->adoptLastChild(giveUpReference(std::move(element)));
          } else {
            placed = parent->appendChildEx(element.get());
            if (placed && placed != element.get() && !placed->isA(ZQElement::getStaticTypeID()))
              placed = nullptr;
          }
          if (placed) {
            m_lastLoadingNode = placed;
            return placed;
          }
          // Refused: the whole subtree is read and dropped.
          m_skipDepth = parser->getDepth();
          continue;
        }

        if (local != ZQN_include) {
          // When the report does not stop us the element is dropped and its content falls to
          // the parent.
          parser->throwError(186, ZQXmlUtil::makeQNameStr(prefix.toString(), local.toString()),
                             ZQEmptyString::EMPTY_VALUE);
          continue;
        }

        m_hasXInclude = true;
        UnicodeString href = attributeText(element.get(), ZQName(ZQN_href));
        UnicodeString parseText = attributeText(element.get(), ZQName(ZQN_parse));
        UnicodeString encoding = attributeText(element.get(), ZQName(ZQN_encoding));
        // Whatever the include holds, fallback included, is read and ignored.
        for (int depth = 1; depth > 0;) {
          int inner = parser->next();
          if (inner == ZQXmlParser::START_TAG)
            ++depth;
          else if (inner == ZQXmlParser::END_TAG)
            --depth;
          else if (inner == ZQXmlParser::END_DOCUMENT)
            break;
        }
        if (!href.isEmpty()) {
          ZQName parse = parseText.isEmpty() ? ZQName(ZQN_xml) : ZQName(parseText);
          if (parse != ZQN_xml && parse != ZQN_text) {
            parser->throwError(187, UnicodeString(u"parse"), parseText);
          } else {
            parser->pushStream(href, parse, encoding);
          }
        }
        continue;
      }

      case ZQXmlParser::TEXT: {
        // The library's own parser lends its text buffer: the node copies what it keeps.
        const ZQXmlParserImpl* own = ownParser(parser);
        const UnicodeString* lent = own ? own->textInPlace() : nullptr;
        ZQNode* text =
            lent ? parent->appendChildText(*lent) : parent->appendChildText(parser->getText());
        if (text) {
          m_lastLoadingNode = text;
          return text;
        }
        continue;  // a derived class refused the text
      }

      case ZQXmlParser::PROCESSING_INSTRUCTION: {
        ZQPtr<ZQProcessingInstruction> pi =
            createProcessingInstruction(parser->getTarget(), parser->getText());
        ZQNode* placed = parent->appendChild(pi.get());
        if (!placed) continue;
        m_lastLoadingNode = placed;
        return placed;
      }

      default:
        throwCommonError(11, ZQSRC_DOCUMENT_LOAD_NEXT_NODE, ZQEmptyString::EMPTY_VALUE,
                         ZQEmptyString::EMPTY_VALUE);
    }
  }
}

}  // namespace ZQCommonNS
