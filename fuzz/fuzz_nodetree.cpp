// Random edits of a node tree: moves, insertions, replacements and removals between a few
// parents, with every sibling ring checked after each step, walks in all three orders, and the
// tree's destruction at the end.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "common/ZQDocument.h"
#include "common/ZQError.h"
#include "common/ZQNode.h"

using namespace ZQCommonNS;

namespace {

void check(bool ok) {
  if (!ok) __builtin_trap();
}

// The links of a parent agree with each other both ways round.
void checkRing(const ZQNode* parent) {
  std::vector<const ZQNode*> forward;
  for (const ZQNode* c = parent->getFirstChildFast(); c; c = c->getNextSiblingFast()) {
    check(c->getParentNodeFast() == parent);
    forward.push_back(c);
    check(forward.size() < 100000);
  }
  size_t i = forward.size();
  for (const ZQNode* c = parent->getLastChildFast(); c; c = c->getPreviousSibling()) {
    check(i > 0 && forward[--i] == c);
  }
  check(i == 0);
}

// Whether `node` is `ancestor` or inside it: the tree allows such cycles, the fuzzer does not.
bool isInside(const ZQNode* node, const ZQNode* ancestor) {
  return node->isDescendantOrSelfOf(ancestor);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ZQPtr<ZQDocument> doc(new ZQDocument());
  ZQPtr<ZQDocument> other(new ZQDocument());
  std::vector<ZQPtr<ZQNode>> pool;
  for (int i = 0; i < 12; ++i) {
    if (i % 3 == 2)
      pool.push_back(ZQPtr<ZQNode>(doc->createTextNode(UnicodeString(u"t")).get()));
    else
      pool.push_back(ZQPtr<ZQNode>(doc->createDocumentFragment().get()));
  }
  pool.push_back(ZQPtr<ZQNode>(other->createDocumentFragment().get()));
  auto pick = [&](uint8_t b) -> ZQNode* {
    size_t k = b % (pool.size() + 1);
    return k == pool.size() ? nullptr : pool[k].get();
  };

  for (size_t i = 0; i + 3 < size; i += 4) {
    ZQNode* a = pick(data[i + 1]);
    ZQNode* b = pick(data[i + 2]);
    ZQNode* c = pick(data[i + 3]);
    try {
      switch (data[i] % 8) {
        case 0:
          if (a && b && isInside(a, b)) break;
          if (a) a->appendChild(b);
          break;
        case 1:
          if (a && b && isInside(a, b)) break;
          if (a) a->insertBefore(b, c);
          break;
        case 2:
          if (a && b && isInside(a, b)) break;
          if (a) ZQPtr<ZQNode> old = a->replaceChild(b, c);
          break;
        case 3:
          if (a) ZQPtr<ZQNode> old = a->removeChild(b);
          break;
        case 4:
          if (a) a->appendChildText(UnicodeString(u"x"));
          break;
        case 5:
          if (a && b) {
            bool safe = true;
            for (ZQNode* n = b; n && n != c; n = n->getNextSiblingFast())
              safe = safe && !isInside(a, n);
            if (safe) a->appendChildren(b, c);
          }
          break;
        case 6:
          if (a) a->removeAllChildNodes();
          break;
        case 7:
          if (a) {
            for (int order = 1; order <= 3; ++order) {
              ZQTreeIterator it(a, nullptr, false,
                                static_cast<ZQTreeIterator::TraversalOrder>(order));
              int steps = 0;
              while (it.nextNode()) check(++steps < 1000000);
            }
            ZQPtr<ZQNodeList> list = a->getDescendantNodes();
            int n = list->getLength();
            check(n >= 0);
            if (n > 0) check(list->item(n - 1) == list->getLastNode());
          }
          break;
      }
    } catch (const ZQError& e) {
      int code = e.getErrorCode();
      check(code == 3 || code == 6 || code == 9);
    }
    for (const ZQPtr<ZQNode>& n : pool) checkRing(n);
  }
  return 0;
}
