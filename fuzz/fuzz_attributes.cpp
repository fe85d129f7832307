// Random attribute edits on a few elements: sets by name and by namespace, node moves between
// elements and documents, removals and clones, with every attribute ring checked after each
// step.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "common/ZQDocument.h"
#include "common/ZQElement.h"
#include "common/ZQError.h"

using namespace ZQCommonNS;

namespace {

void check(bool ok) {
  if (!ok) __builtin_trap();
}

// The ring agrees with the list view both ways round, and every member names its owner.
void checkRing(ZQElement* element) {
  ZQNamedNodeMap* map = element->getAttributes();
  std::vector<ZQNode*> forward;
  for (ZQNode* n = map->getFirstNode(); n; n = map->getNextNode(n)) {
    check(static_cast<ZQAttr*>(n)->getOwnerElement() == element);
    check(n->getRefCount() >= 1);
    forward.push_back(n);
    check(forward.size() < 1000);
  }
  check(static_cast<int>(forward.size()) == map->getLength());
  check(element->hasAttributes() == !forward.empty());
  check(map->getLastNode() == (forward.empty() ? nullptr : forward.back()));
  for (size_t i = 0; i < forward.size(); ++i) {
    check(map->item(static_cast<int>(i)) == forward[i]);
    check(map->getPreviousNode(forward[i]) == (i == 0 ? nullptr : forward[i - 1]));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const char16_t* const kNames[] = {u"a",     u"b",       u"p:a",      u"q:a",
                                           u"xmlns", u"xmlns:p", u"xml:base", u"c"};
  static const char16_t* const kUris[] = {u"", u"urn:p", u"urn:q",
                                          u"http://www.w3.org/2000/xmlns/"};
  auto name = [&](uint8_t b) { return ZQName(UnicodeString(kNames[b % 8])); };
  auto uri = [&](uint8_t b) { return ZQName(UnicodeString(kUris[b % 4])); };

  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQDocument> other(new ZQDocument());
  std::vector<ZQPtr<ZQElement>> elements;
  elements.push_back(doc->createElement(ZQName(UnicodeString(u"r"))));
  elements.push_back(doc->createElementNS(uri(1), ZQName(UnicodeString(u"p:e"))));
  elements.push_back(other->createElement(ZQName(UnicodeString(u"o"))));
  elements[0]->appendChild(elements[1].get());
  std::vector<ZQPtr<ZQAttr>> pool;

  for (size_t i = 0; i + 3 < size; i += 4) {
    ZQElement* e = elements[data[i + 1] % elements.size()].get();
    uint8_t x = data[i + 2], y = data[i + 3];
    try {
      switch (data[i] % 12) {
        case 0:
          e->setAttribute(name(x), ZQValue(static_cast<int>(y)));
          break;
        case 1:
          e->setAttributeNS(uri(x), name(y), ZQValue(name(x)));
          break;
        case 2:
          e->removeAttribute(name(x));
          break;
        case 3:
          e->removeAttributeNS(uri(x), ZQName(UnicodeString(u"a")));
          break;
        case 4:
          pool.push_back(((y & 1) ? other : doc)->createAttribute(name(x)));
          break;
        case 5:
          if (!pool.empty()) e->setAttributeNode(pool[x % pool.size()].get());
          break;
        case 6:
          if (!pool.empty()) e->setAttributeNodeNS(pool[x % pool.size()].get());
          break;
        case 7:
          if (ZQNode* n = e->getAttributes()->item(x % 4))
            pool.push_back(e->removeAttributeNode(static_cast<ZQAttr*>(n)));
          else if (!pool.empty())
            e->removeAttributeNode(pool[y % pool.size()].get());
          break;
        case 8: {
          ZQPtr<ZQNode> clone = e->cloneNode((y & 1) != 0);
          if (clone && clone->isA(ZQElement::getStaticTypeID()))
            checkRing(static_cast<ZQElement*>(clone.get()));
          break;
        }
        case 9: {
          std::vector<ZQValue> values;
          e->getAttributeLocal(ZQName(UnicodeString(u"a")), &values);
          std::vector<ZQPtr<ZQAttr>> nodes;
          e->getAttributeNodeLocal(ZQName(UnicodeString(u"a")), &nodes);
          check(values.size() == nodes.size());
          break;
        }
        case 10:
          e->lookupNamespaceUri(ZQName(UnicodeString(u"p")));
          e->lookupPrefix(uri(x));
          e->isDefaultNamespace(uri(y));
          e->getBaseUri();
          break;
        default:
          if (!pool.empty() && (y & 1)) pool.erase(pool.begin() + x % pool.size());
          break;
      }
    } catch (const ZQError&) {
      // refused moves leave the rings as they were
    }
    for (auto& element : elements) checkRing(element.get());
  }
  return 0;
}
