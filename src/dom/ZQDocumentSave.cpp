// The document's writer: every save form drives the serializer the same way, through doSave.
#include <sstream>
#include <string>

#include "common/ZQDocument.h"
#include "common/ZQElement.h"
#include "common/ZQNamedValueMap.h"
#include "common/ZQNodeList.h"
#include "common/ZQXmlUtil.h"
#include "core/ZQCommonError.h"
#include "dom/ZQDomClasses.h"

namespace ZQCommonNS {

namespace {

// Gives the parser's entity tables back on every way out of a save, the failure path too.
class EntityMapsGuard {
 public:
  explicit EntityMapsGuard(ZQXmlParser* parser)
      : m_parser(parser), m_saved(parser->saveEntityMaps()) {}
  ~EntityMapsGuard() { m_parser->recoverEntityMaps(m_saved); }
  EntityMapsGuard(const EntityMapsGuard&) = delete;
  EntityMapsGuard& operator=(const EntityMapsGuard&) = delete;

 private:
  ZQXmlParser* m_parser;
  const void* m_saved;
};

bool isSavedAsColor(const ZQValue& value) {
  if (value.getUnitType() != ZQUNIT_COLOR) return false;
  return value.isNumeric() || value.getValueType() >= ZQVALUE_OBJECT;
}

}  // namespace

// A failed save drops its serializer, so that the next save starts with a fresh one.
template <class Steps>
static void runSave(ZQPtr<ZQXmlSerializer>& serializer, Steps&& steps) {
  try {
    steps();
  } catch (...) {
    serializer = nullptr;
    throw;
  }
}

void ZQDocument::save(const UnicodeString& path, ZQNode* node, const UnicodeString& encoding,
                      const UnicodeString& a4) {
  runSave(m_serializer, [&] {
    ZQXmlSerializer* serializer = getSerializer();
    serializer->setOutput(path, encoding, a4);
    serializer->startDocument(ZQEmptyString::EMPTY_VALUE, ZQEmptyString::EMPTY_VALUE);
    doSave(node ? node : this, false);
    serializer->endDocument();
  });
}

void ZQDocument::save(std::ostream& stream, ZQNode* node, const UnicodeString& encoding,
                      const UnicodeString& a4) {
  save(ZQEmptyString::EMPTY_VALUE, ZQEmptyString::EMPTY_VALUE, stream, node, encoding, a4);
}

void ZQDocument::save(const UnicodeString& comment, const UnicodeString& doctype,
                      std::ostream& stream, ZQNode* node, const UnicodeString& encoding,
                      const UnicodeString& a6) {
  runSave(m_serializer, [&] {
    ZQXmlSerializer* serializer = getSerializer();
    serializer->setOutput(stream, encoding, a6);
    serializer->startDocument(ZQEmptyString::EMPTY_VALUE, ZQEmptyString::EMPTY_VALUE);
    if (!comment.isEmpty()) serializer->comment(comment);
    if (!doctype.isEmpty()) serializer->docdecl(doctype);
    doSave(node ? node : this, false);
    serializer->endDocument();
  });
}

UnicodeString ZQDocument::saveXml(ZQNode* node) {
  std::ostringstream bytes;
  // The serializer lets go of the stream before it goes out of scope, on both ways out.
  runSave(m_serializer, [&] {
    ZQXmlSerializer* serializer = getSerializer();
    serializer->setOutput(bytes, UnicodeString(u"UTF-8"), ZQEmptyString::EMPTY_VALUE);
    bool whole = !node || node == this;
    if (whole) serializer->startDocument(ZQEmptyString::EMPTY_VALUE, ZQEmptyString::EMPTY_VALUE);
    doSave(whole ? this : node, false);
    serializer->endDocument();
  });
  return UnicodeString::fromUTF8(bytes.str());
}

void ZQDocument::saveDocumentElement(const UnicodeString& path) {
  ZQXmlSerializer* serializer = getSerializer();
  serializer->setOutput(path, ZQEmptyString::EMPTY_VALUE, ZQEmptyString::EMPTY_VALUE);
  serializer->startDocument(ZQEmptyString::EMPTY_VALUE, ZQEmptyString::EMPTY_VALUE);
  doSave(getDocumentElement(), true);
}

void ZQDocument::saveDocumentElement(std::ostream& stream) {
  ZQXmlSerializer* serializer = getSerializer();
  serializer->setOutput(stream, ZQEmptyString::EMPTY_VALUE, ZQEmptyString::EMPTY_VALUE);
  serializer->startDocument(ZQEmptyString::EMPTY_VALUE, ZQEmptyString::EMPTY_VALUE);
  doSave(getDocumentElement(), true);
}

void ZQDocument::saveChildElement(ZQNode* node) { doSave(node, false); }

void ZQDocument::closeDocumentElement() {
  ZQXmlSerializer* serializer = getSerializer();
  if (ZQElement* root = getDocumentElement())
    serializer->endTag(root->getNamespaceUri(), root->getLocalName());
  serializer->endDocument();
}

void ZQDocument::doSave(ZQNode* node, bool startOnly) {
  if (!node) return;
  ZQXmlSerializer* serializer = getSerializer();
  ZQXmlParser* parser = getParser();
  EntityMapsGuard entityMaps(parser);
  if (node->getNamespaceUri() == ZQN_NS_MATHML && node->getLocalName() == ZQN_math)
    parser->addMathMLEntities();

  // An iterative walk: a deep tree costs no stack.
  ZQTreeIterator it(node, node, false, ZQTreeIterator::PRE_AND_POST_ORDER);
  for (ZQNode* current = node; current; current = it.nextNode()) {
    switch (current->getNodeType()) {
      case ELEMENT_NODE:
        if (it.atPostVisit()) {
          serializer->endTag(current->getNamespaceUri(), current->getLocalName());
        } else if (current->isText() && current->getLocalName() == ZQN_hash_text) {
          // An element of a derived class that acts as text: no child of it is written.
          if (current->saveTextTag()) {
            ZQName ns = serializer->getDefaultNamespace();
            serializer->startTag(ns, ZQName(), ZQName(ZQN_text));
            saveAttributes(current);
            serializer->text(current->getText());
            serializer->endTag(ns, ZQName(ZQN_text));
          } else {
            serializer->text(current->getText());
          }
          it.setAtPostVisit(true);
        } else {
          serializer->startTag(current->getNamespaceUri(), current->getPrefix(),
                               current->getLocalName());
          saveAttributes(current);
          if (startOnly) return;
        }
        break;
      case TEXT_NODE:
        // The library's own text node is written from where its text lies.
        if (isLibraryText(current))
          serializer->text(static_cast<const ZQTextNode*>(current)->storedText());
        else
          serializer->text(current->getText());
        break;
      case PROCESSING_INSTRUCTION_NODE:
        serializer->processingInstruction(current->getLocalName(), current->getText());
        break;
      case DOCUMENT_NODE:
      case DOCUMENT_FRAGMENT_NODE:
        break;
      default:
        throwCommonError(18, ZQSRC_DOCUMENT_DO_SAVE, ZQEmptyString::EMPTY_VALUE,
                         ZQEmptyString::EMPTY_VALUE);
    }
  }
}

void ZQDocument::saveAttributes(ZQNode* node) {
  node->finishAttributes();
  ZQNamedNodeMap* attributes = node->getAttributes();
  if (!attributes) return;
  ZQXmlSerializer* serializer = getSerializer();
  for (ZQNode* attr = attributes->getFirstNode(); attr; attr = attributes->getNextNode(attr)) {
    // A string in an attribute of the library's own class is written from where it lies:
    // the copies that getNodeValue and toValueText make would cost per attribute.
    if (isLibraryAttr(attr)) {
      const ZQNamedValue& stored = static_cast<const Attr*>(attr)->storedValue();
      if (stored.isString()) {
        // A plain string is its own value text; a literal or URI is quoted first.
        const ZQUnitType unit = stored.getUnitType();
        const UnicodeString* text = stored.peekString();
        if (text && unit != ZQUNIT_LITERAL && unit != ZQUNIT_URI)
          serializer->attribute(attr->getNamespaceUri(), attr->getPrefix(), attr->getLocalName(),
                                *text);
        else
          serializer->attribute(attr->getNamespaceUri(), attr->getPrefix(), attr->getLocalName(),
                                stored.toValueText());
        continue;
      }
    }
    ZQValue value = attr->getNodeValue();
    if (value.isNull()) continue;
    ZQName uri = attr->getNamespaceUri();
    ZQName prefix = attr->getPrefix();
    ZQName local = attr->getLocalName();
    if (isSavedAsColor(value)) {
      ZQElement* root = getDocumentElement();
      bool svg = root && root->getNamespaceUri() == ZQN_NS_SVG;
      serializer->attribute(uri, prefix, local, value.getColorValue().toString(svg));
    } else if (ZQNamedValueMap* map = value.getNamedValueMap()) {
      // A compound writes one attribute per entry: "name" or "name.entry".
      int count = map->getCount();
      for (int i = 0; i < count; ++i) {
        ZQNamedValue entry = map->item(i);
        UnicodeString name = local.toString();
        if (!entry.getName().isEmpty()) name.append(u'.').append(entry.getName().toString());
        serializer->attribute(uri, prefix, ZQName(name), entry.toValueText());
      }
    } else if (value.getValueType() >= ZQVALUE_OBJECT) {
      continue;  // arrays and other objects have no attribute text
    } else {
      serializer->attribute(uri, prefix, local, value.toValueText());
    }
  }
}

}  // namespace ZQCommonNS
