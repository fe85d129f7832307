// Decoding through ICU: 4096 source bytes at a time into an area of 4096 UTF-16 units.
#include <unicode/ucnv.h>

#include <cstring>

#include "common/ZQICUIStream.h"

namespace ZQCommonNS {

ZQICUIStreamBuf::ZQICUIStreamBuf(std::istream* source, const char* charset) : m_source(source) {
  if (charset && *charset) {
    UErrorCode status = U_ZERO_ERROR;
    m_converter = ucnv_open(charset, &status);
    if (U_FAILURE(status)) {
      if (m_converter) ucnv_close(m_converter);
      m_converter = nullptr;
    }
  }
  m_input = new char[INPUT_SIZE];
  // The output area holds UTF-16 units, so it starts on a unit boundary.
  m_buffer = reinterpret_cast<char*>(new char16_t[(PUTBACK_SIZE + OUTPUT_SIZE) / 2]);
  char* data = m_buffer + PUTBACK_SIZE;
  setg(data, data, data);
}

ZQICUIStreamBuf::~ZQICUIStreamBuf() {
  closeConverter();
  delete[] m_input;
  delete[] reinterpret_cast<char16_t*>(m_buffer);
}

void ZQICUIStreamBuf::closeConverter() {
  if (m_converter) ucnv_close(m_converter);
  m_converter = nullptr;
}

size_t ZQICUIStreamBuf::convert(bool flush) {
  char16_t* start = reinterpret_cast<char16_t*>(m_buffer + PUTBACK_SIZE);
  char16_t* target = start;
  const char* source = m_input + m_inputPos;
  UErrorCode status = U_ZERO_ERROR;
  // The status isn't looked at: bad bytes come out as substitutes. A character completed by
  // bytes held from the last read can make one fill exceed the area; the converter keeps the
  // units it couldn't place and the bytes it didn't take wait here, both for the next fill.
  ucnv_toUnicode(m_converter, &target, start + OUTPUT_SIZE / 2, &source, m_input + m_inputEnd,
                 nullptr, flush, &status);
  m_inputPos = static_cast<size_t>(source - m_input);
  return static_cast<size_t>(target - start) * 2;
}

ZQICUIStreamBuf::int_type ZQICUIStreamBuf::underflow() {
  if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
  if (!m_converter) return traits_type::eof();

  size_t keep = static_cast<size_t>(gptr() - eback());
  if (keep > PUTBACK_SIZE) keep = PUTBACK_SIZE;
  char* data = m_buffer + PUTBACK_SIZE;
  std::memmove(data - keep, gptr() - keep, keep);

  for (;;) {
    if (m_inputPos == m_inputEnd) {
      m_inputPos = m_inputEnd = 0;
      if (m_source && !m_source->eof()) {
        m_source->read(m_input, static_cast<std::streamsize>(INPUT_SIZE));
        m_inputEnd = static_cast<size_t>(m_source->gcount());
      }
    }
    size_t produced;
    if (m_inputEnd == 0) {
      // At the end: whatever the converter still holds is the last of the text.
      produced = convert(true);
      if (produced == 0) {
        closeConverter();
        setg(data - keep, data, data);
        return traits_type::eof();
      }
    } else {
      produced = convert(m_source->eof());
    }
    // A read that ended inside a character gives nothing yet: read on.
    if (produced != 0) {
      setg(data - keep, data, data + produced);
      return traits_type::to_int_type(*gptr());
    }
  }
}

ZQICUIStream::ZQICUIStream(std::istream* source, const char* charset)
    : std::istream(nullptr), m_buf(source, charset) {
  rdbuf(&m_buf);
}

ZQICUIStream::~ZQICUIStream() = default;

}  // namespace ZQCommonNS
