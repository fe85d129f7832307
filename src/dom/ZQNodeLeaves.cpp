// The small leaf nodes: text, processing instruction, document fragment.
#include <algorithm>
#include <utility>

#include "common/ZQDocument.h"
#include "common/ZQNode.h"

namespace ZQCommonNS {

// ---- ZQTextNode ----

namespace {

// A text may share a buffer that was grown while it was read, with room to spare that the
// node would keep for its whole life: such a text gets a buffer of its own size. Texts up to
// 27 units live inside the string object and have no buffer to trim.
bool needsExactCopy(const UnicodeString& text) {
  constexpr int32_t kInlineUnits = 27;
  const int32_t length = text.length();
  const int32_t capacity = text.getCapacity();
  return capacity > kInlineUnits && capacity - length > length / 8 + 16;
}

UnicodeString exactCopy(const UnicodeString& text) {
  // A buffer asked for with a given capacity is the one way to an exact buffer: ICU's other
  // copies grow by a quarter.
  const int32_t length = text.length();
  UnicodeString exact;
  char16_t* out = exact.getBuffer(length);
  if (!out) return text;
  std::copy_n(text.getBuffer(), length, out);
  exact.releaseBuffer(length);
  return exact;
}

}  // namespace

ZQTextNode::ZQTextNode(ZQDocument* ownerDocument, const UnicodeString& text)
    : ZQNode(ownerDocument),
      m_text(needsExactCopy(text) ? exactCopy(text) : text),
      m_bidiLevel(-1) {}

ZQTextNode::~ZQTextNode() = default;

ZQName ZQTextNode::getLocalName() const { return ZQName(ZQN_hash_text); }

ZQValue ZQTextNode::getNodeValue() const { return ZQValue(m_text, ZQUNIT_NONE); }

void ZQTextNode::setNodeValue(const ZQValue& value) { m_text = value.toString(); }

ZQPtr<ZQNode> ZQTextNode::cloneNode(bool) const {
  if (!m_ownerDocument) return ZQPtr<ZQNode>();
  ZQPtr<ZQTextNode> clone = m_ownerDocument->createTextNode(m_text);
  if (clone) cloneMembers(clone.get());
  return ZQPtr<ZQNode>(clone.get());
}

void ZQTextNode::cloneMembers(ZQNode* to) const {
  ZQNode::cloneMembers(to);
  // A target of another class is the caller's error; it gets the flags only.
  if (to && to->isA(ZQTextNode::getStaticTypeID()))
    static_cast<ZQTextNode*>(to)->m_bidiLevel = m_bidiLevel;
}

int ZQTextNode::getLength() const { return m_text.length(); }
UnicodeString ZQTextNode::getData() const { return m_text; }
void ZQTextNode::setData(const UnicodeString& data) { m_text = data; }

// ---- ZQProcessingInstruction ----

ZQProcessingInstruction::ZQProcessingInstruction(ZQDocument* ownerDocument, ZQName target,
                                                 const UnicodeString& data)
    : ZQNode(ownerDocument), m_target(target), m_data(data) {}

ZQProcessingInstruction::~ZQProcessingInstruction() = default;

// ---- ZQDocumentFragment ----

ZQDocumentFragment::ZQDocumentFragment(ZQDocument* ownerDocument) : ZQNode(ownerDocument) {}

ZQDocumentFragment::~ZQDocumentFragment() = default;

ZQName ZQDocumentFragment::getLocalName() const { return ZQName(ZQN_hash_document_fragment); }

}  // namespace ZQCommonNS
