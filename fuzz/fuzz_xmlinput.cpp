// The parser's input layer over arbitrary bytes: the first byte picks an encoding (every
// built-in kind and a few converters) and the reading mode, the rest is read through
// readChar with pushback mixed in. No crash, no hang; every character read is a code point
// or the end mark, and the position only moves forward.
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include "FuzzTextLoop.h"
#include "common/ZQError.h"
#include "xml/ZQXmlParserImpl.h"

using namespace ZQCommonNS;

namespace {

const char16_t* const kEncodings[] = {
    u"",
    u"UTF-8",
    u"UTF-16",
    u"UTF-16LE",
    u"UTF-16BE",
    u"UTF-32",
    u"UTF-32LE",
    u"UTF-32BE",
    u"US-ASCII",
    u"ISO-8859-1",
    u"ISO-8859-2",
    u"ISO-8859-3",
    u"ISO-8859-4",
    u"ISO-8859-5",
    u"ISO-8859-6",
    u"ISO-8859-7",
    u"ISO-8859-8",
    u"ISO-8859-9",
    u"ISO-8859-10",
    u"ISO-8859-11",
    u"ISO-8859-13",
    u"ISO-8859-14",
    u"ISO-8859-15",
    u"ISO-8859-16",
    u"Shift_JIS",
    u"EUC-JP",
    u"windows-1252",
    u"no-such-encoding",
};
constexpr size_t kEncodingCount = sizeof(kEncodings) / sizeof(kEncodings[0]);

class FuzzParser : public ZQXmlParserImpl {
 public:
  EventType next() override { return END_DOCUMENT; }
  EventType nextToken() override { return END_DOCUMENT; }
  void addMathMLEntities() override {}
  void rewind() override {}

  void run(uint8_t mode) {
    m_lineNumber = 1;
    m_columnNumber = 0;
    m_xml11 = (mode & 0x01) != 0;
    setFeature(FEATURE_NO_CHARACTER_CHECK, (mode & 0x02) != 0);
    if (mode & 0x04) m_htmlEntitiesAdded = ZQN_html;
    detectEncoding((mode & 0x08) != 0);
    int lastLine = m_lineNumber;
    for (size_t count = 0;; ++count) {
      UChar32 c = readChar();
      if (c == END_OF_INPUT) break;
      if (c < 0) __builtin_trap();
      if (m_lineNumber < lastLine) __builtin_trap();
      lastLine = m_lineNumber;
      // Put some characters back, one or two at a time, as the scanner does.
      if ((mode & 0x10) && count % 7 == 3) {
        unreadChar(c);
        if (readChar() != c) __builtin_trap();
      }
      if ((mode & 0x20) && count % 11 == 5) {
        UChar32 d = readChar();
        unreadChar(d);
        unreadChar(c);
        // Text holds only real code points; an unchecked UTF-32 value past U+10FFFF is lost.
        if (c <= 0x10FFFF && readChar() != c) __builtin_trap();
      }
      if (count > (1u << 22)) __builtin_trap();  // each read consumes input: no endless loop
    }
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzzsupport::chooseTextLoop(size);
  if (size < 2) return 0;
  const UnicodeString encoding(kEncodings[data[0] % kEncodingCount]);
  const uint8_t mode = data[1];
  std::istringstream in(std::string(reinterpret_cast<const char*>(data + 2), size - 2),
                        std::ios::binary);
  FuzzParser parser;
  if (mode & 0x40) {
    ZQXmlParser::ErrorCallback ignore = [](const ZQError&, void*) {};
    parser.setCallbackError(ignore, nullptr);
  }
  try {
    parser.setInput(in, encoding, UnicodeString());
    parser.run(mode);
  } catch (const ZQError&) {
    // Invalid characters and unknown encodings are reported this way.
  }
  return 0;
}
