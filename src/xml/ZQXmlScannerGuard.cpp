// The guard on entity expansion: how deep expansions nest while they are read, and how many
// characters they add to one document. A hostile document (an entity that names itself,
// or one that doubles at each level) ends with error 190 instead of looping or filling memory.
#include <algorithm>

#include "xml/ZQXmlParserImpl.h"

namespace ZQCommonNS {

void ZQXmlParserImpl::setEntityExpansionLimits(int depth, int64_t chars) {
  m_expansionDepthLimit = depth;
  m_expansionCharLimit = chars;
}

bool ZQXmlParserImpl::guardExpansion(ZQName entity, int64_t length) {
  size_t level = m_inputStack.size();
  // An expansion put back as text is still being read while the pushback of its input holds
  // at least what stood behind it and nothing further was taken from that input. A text
  // that ends in a reference thus counts as holding the expansion of that reference, which
  // is what makes an entity naming itself nest instead of following itself.
  auto active = [this, level](const ExpansionMark& mark) {
    if (mark.stream) return m_streamPushes > mark.serial && level > mark.level;
    if (mark.level > level) return false;
    if (mark.level == level) {
      int remaining =
          (m_pushedText.length() - m_pushedTextPos) + (m_pushedChar != END_OF_INPUT ? 1 : 0);
      return remaining >= mark.remaining && m_lineNumber == mark.line &&
             m_columnNumber == mark.column;
    }
    const InputState& state = m_inputStack[mark.level];
    int remaining = (state.pushedText.length() - state.pushedTextPos) +
                    (state.pushedChar != END_OF_INPUT ? 1 : 0);
    return remaining >= mark.remaining && state.lineNumber == mark.line &&
           state.columnNumber == mark.column;
  };
  m_expansionMarks.erase(
      std::remove_if(m_expansionMarks.begin(), m_expansionMarks.end(),
                     [&active](const ExpansionMark& mark) { return !active(mark); }),
      m_expansionMarks.end());

  // A reference written in the document counts what its value adds beyond "&name;", so
  // that short values (the predefined entities, character names) cost nothing however often
  // they are used. A reference met inside another expansion is amplification by nature and
  // counts its whole value.
  int64_t growth = 0;
  if (length > 0) {
    growth = length;
    if (m_expansionMarks.empty())
      growth = std::max<int64_t>(0, length - (entity.toString().length() + 2));
  }
  bool tooDeep = m_expansionDepthLimit > 0 &&
                 m_expansionMarks.size() >= static_cast<size_t>(m_expansionDepthLimit);
  bool tooLong = m_expansionCharLimit > 0 && m_expandedChars + growth > m_expansionCharLimit;
  if (tooDeep || tooLong) {
    throwError(190, entity.toString(), UnicodeString());
    return false;
  }
  m_expandedChars += growth;

  ExpansionMark mark;
  mark.level = level;
  if (length < 0) {
    mark.stream = true;
    mark.serial = m_streamPushes;
  } else {
    mark.remaining =
        (m_pushedText.length() - m_pushedTextPos) + (m_pushedChar != END_OF_INPUT ? 1 : 0);
    mark.line = m_lineNumber;
    mark.column = m_columnNumber;
  }
  m_expansionMarks.push_back(mark);
  return true;
}

void ZQXmlParserImpl::dropEndedExpansions() {
  size_t level = m_inputStack.size();
  m_expansionMarks.erase(std::remove_if(m_expansionMarks.begin(), m_expansionMarks.end(),
                                        [level](const ExpansionMark& mark) {
                                          return mark.stream ? mark.level >= level
                                                             : mark.level > level;
                                        }),
                         m_expansionMarks.end());
}

}  // namespace ZQCommonNS
