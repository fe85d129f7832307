#include "common/ZQString.h"

#include <cstring>
#include <memory>

#include "core/ZQInit.h"

namespace ZQCommonNS {

const ZQEmptyString ZQEmptyString::EMPTY_VALUE ZQ_INIT_PRIORITY_BASE;
const ZQBogusString ZQBogusString::BOGUS_VALUE ZQ_INIT_PRIORITY_BASE;

const UnicodeString& ZQEmptyString::getEmptyString() { return EMPTY_VALUE; }

const UnicodeString& ZQBogusString::getBugusString() { return BOGUS_VALUE; }

namespace {
char* copyName(const char* name) {
  if (!name) return nullptr;
  size_t n = std::strlen(name) + 1;
  char* copy = new char[n];
  std::memcpy(copy, name, n);
  return copy;
}
}  // namespace

ZQCStr::ZQCStr(const UnicodeString& text) : UnicodeString(text) {}

ZQCStr::ZQCStr(const char* text, const char* encoding)
    : UnicodeString(text ? text : "", encoding), m_narrow(text ? text : "") {
  m_encoding = copyName(encoding);
  m_snapshot = *this;
}

ZQCStr::ZQCStr(const char16_t* text, int length) : UnicodeString(text, length) {}

ZQCStr::ZQCStr(const ZQCStr& other)
    : UnicodeString(other),
      m_narrow(other.m_narrow),
      m_encoding(copyName(other.m_encoding)),
      m_snapshot(other.m_snapshot) {}

ZQCStr& ZQCStr::operator=(const ZQCStr& other) {
  if (this == &other) return *this;
  UnicodeString::operator=(other);
  m_narrow = other.m_narrow;
  char* name = copyName(other.m_encoding);
  delete[] m_encoding;
  m_encoding = name;
  m_snapshot = other.m_snapshot;
  return *this;
}

ZQCStr::~ZQCStr() { delete[] m_encoding; }

const char* ZQCStr::toNarrow() {
  if (m_snapshot != *this || m_encoding != nullptr) return convert(nullptr);
  return m_narrow.c_str();
}

const char* ZQCStr::toNarrow(const char* encoding) {
  if (m_snapshot != *this) return convert(encoding);
  bool same =
      (encoding == nullptr && m_encoding == nullptr) ||
      (encoding != nullptr && m_encoding != nullptr && std::strcmp(encoding, m_encoding) == 0);
  return same ? m_narrow.c_str() : convert(encoding);
}

const char* ZQCStr::convert(const char* encoding) {
  int32_t size = extract(0, length(), nullptr, 0, encoding);
  if (size <= 0) {
    m_narrow.clear();
  } else {
    auto buffer = std::make_unique<char[]>(static_cast<size_t>(size) + 1);
    int32_t written = extract(0, length(), buffer.get(), static_cast<uint32_t>(size) + 1, encoding);
    m_narrow.assign(buffer.get(), static_cast<size_t>(written < 0 ? 0 : written));
  }
  char* name = copyName(encoding);
  delete[] m_encoding;
  m_encoding = name;
  m_snapshot = *this;
  return m_narrow.c_str();
}

}  // namespace ZQCommonNS
