// A memory block as an input stream: the get area is set once over all of it.
#include <cstring>

#include "common/ZQStrStream.h"

namespace ZQCommonNS {

ZQStrStream::StrStreamBuf::StrStreamBuf(const char* data, size_t size, bool copy) {
  if (!data) size = 0;
  char* begin = const_cast<char*>(data);
  if (copy && size) {
    m_copy = new char[size];
    std::memcpy(m_copy, data, size);
    begin = m_copy;
  }
  setg(begin, begin, begin + size);
}

ZQStrStream::StrStreamBuf::~StrStreamBuf() { delete[] m_copy; }

ZQStrStream::ZQStrStream(const char* data, size_t size, bool copy)
    : std::istream(nullptr), m_buf(data, size, copy) {
  rdbuf(&m_buf);
}

ZQStrStream::ZQStrStream(const UnicodeString& text)
    : std::istream(nullptr),
      m_buf(reinterpret_cast<const char*>(text.getBuffer()),
            text.isBogus() ? 0 : static_cast<size_t>(text.length()) * sizeof(char16_t), false) {
  rdbuf(&m_buf);
}

ZQStrStream::~ZQStrStream() = default;

}  // namespace ZQCommonNS
