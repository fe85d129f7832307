// Test nodes for the node tree: a small element class, a view of the raw links, and a
// document that grows on demand from a script of events, as the pull loader would.
#pragma once

#include <initializer_list>
#include <vector>

#include "TestSupport.h"
#include "common/ZQDocument.h"
#include "common/ZQElement.h"
#include "common/ZQNode.h"

namespace zqtest {

using namespace ZQCommonNS;

/// An element-like node: type 1 with a stored name, namespace, prefix and source position.
class TestElement : public ZQNode {
 public:
  TestElement(ZQDocument* doc, ZQName local, ZQName ns = ZQName(), ZQName prefix = ZQName())
      : ZQNode(doc), m_local(local), m_ns(ns), m_prefix(prefix) {}

  ZQName getLocalName() const override { return m_local; }
  ZQName getNamespaceUri() const override { return m_ns; }
  ZQName getPrefix() const override { return m_prefix; }
  void setPrefix(ZQName prefix) override { m_prefix = prefix; }
  ZQNodeType getNodeType() const override { return ELEMENT_NODE; }
  bool isElementNode() const override { return true; }
  int getSourceLineNumber() const override {
    return m_line != -1 ? m_line : ZQNode::getSourceLineNumber();
  }
  void setSourceLineNumber(int line) override { m_line = line; }
  int getSourceColumnNumber() const override {
    return m_column != -1 ? m_column : ZQNode::getSourceColumnNumber();
  }
  void setSourceColumnNumber(int column) override { m_column = column; }

  static int liveCount;
  ~TestElement() override { --liveCount; }
  void* operator new(size_t size) {
    ++liveCount;
    return ::operator new(size);
  }
  void operator delete(void* p) { ::operator delete(p); }

 private:
  ZQName m_local;
  ZQName m_ns;
  ZQName m_prefix;
  int m_line = -1;
  int m_column = -1;
};

inline int TestElement::liveCount = 0;

/// The raw links of any node, as the tree keeps them.
struct RawLinks : ZQNode {
  static ZQNode* next(const ZQNode* n) { return n->*(&RawLinks::m_nextSibling); }
  static ZQNode* previous(const ZQNode* n) { return n->*(&RawLinks::m_previousSibling); }
  static ZQNode* parent(const ZQNode* n) { return n->*(&RawLinks::m_parent); }
  static ZQNode* lastChild(const ZQNode* n) { return n->*(&RawLinks::m_lastChild); }
};

/// A document whose content arrives one node per loadNextNode from a script of events.
class ScriptDocument : public ZQDocument {
 public:
  struct Event {
    enum Kind { START, TEXT, END } kind;
    const char* text;
  };
  static Event S(const char* name) { return {Event::START, name}; }
  static Event T(const char* text) { return {Event::TEXT, text}; }
  static Event E() { return {Event::END, nullptr}; }

  /// Opens a load of the whole document from `events`; in pull mode nothing is read yet.
  void open(std::initializer_list<Event> events, bool pull = true) {
    m_script.assign(events.begin(), events.end());
    m_pos = 0;
    doLoad(nullptr, pull);
  }

  ZQNode* loadNextNode() override {
    ZQMutex guard(getDocumentLock());
    ++loadCalls;
    if (!m_lastLoadingNode) return nullptr;
    ZQNode* parent = m_lastLoadingNode;
    if ((parent->isText() && !parent->isLoading()) || parent->isProcessingInstruction())
      parent = parent->getParentNode();
    for (;;) {
      if (!parent) {
        m_lastLoadingNode = nullptr;
        return nullptr;
      }
      if (m_pos >= m_script.size()) {
        markDone(parent);
        m_lastLoadingNode = nullptr;
        return nullptr;
      }
      const Event& ev = m_script[m_pos++];
      if (ev.kind == Event::END) {
        markDone(parent);
        parent = parent->getParentNode();
        while (parent && parent->getFlag(FLAG_COMPLEMENTAL)) parent = parent->getParentNode();
        continue;
      }
      ZQNode* node;
      if (ev.kind == Event::TEXT) {
        node = parent->appendChildText(u(ev.text));
      } else {
        ZQPtr<ZQNode> element;
        if (useFactory)
          element = ZQPtr<ZQNode>(createElementNS(ZQName(), ZQName(), ZQName(u(ev.text))).get());
        else
          element = ZQPtr<ZQNode>(new TestElement(this, ZQName(u(ev.text))));
        element->setFlag(FLAG_LOADING, true);
        node = parent->appendChildEx(element.get());
      }
      m_lastLoadingNode = node;
      return node;
    }
  }

  /// Events not read yet.
  size_t pending() const { return m_script.size() - m_pos; }

  int loadCalls = 0;
  /// Elements come from the document's own factory instead of being test elements.
  bool useFactory = false;

 private:
  static void markDone(ZQNode* node) {
    node->setFlag(FLAG_LOADING, false);
    node->setFlag(FLAG_LOAD_DONE, true);
  }

  std::vector<Event> m_script;
  size_t m_pos = 0;
};

/// A new test element of `doc`, held.
inline ZQPtr<ZQNode> element(ZQDocument* doc, const char* name) {
  return ZQPtr<ZQNode>(new TestElement(doc, ZQName(u(name))));
}

/// Local names of a sequence of nodes, joined by commas, for compact comparisons.
template <class Range>
std::string names(const Range& nodes) {
  std::string out;
  for (const ZQNode* n : nodes) {
    if (!out.empty()) out += ",";
    if (!n)
      out += "null";
    else if (n->isText())
      out += "'" + utf8(n->getText()) + "'";
    else
      out += utf8(n->getLocalName().toString());
  }
  return out;
}

}  // namespace zqtest
