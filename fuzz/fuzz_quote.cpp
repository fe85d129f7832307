// Reading quoted strings in every mode: no crash, no read past the text, and what quoteString
// writes in a mode that escapes its quote reads back as the same text.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "common/ZQUtil.h"

using namespace ZQCommonNS;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1) return 0;
  const int mode = data[0] & 63;
  // The rest is UTF-16 text, NUL-terminated as the readers expect.
  std::vector<char16_t> text;
  for (size_t i = 1; i + 1 < size; i += 2) text.push_back(char16_t(data[i] | (data[i + 1] << 8)));
  text.push_back(0);
  const ZQUtil::QuoteMode m = static_cast<ZQUtil::QuoteMode>(mode);

  const char16_t* end = nullptr;
  UnicodeString parsed = ZQUtil::parseString(text.data(), &end, m);
  if (end < text.data() || end > text.data() + text.size() - 1) __builtin_trap();

  UnicodeString source(text.data(), static_cast<int32_t>(text.size() - 1));
  UnicodeString unquoted = ZQUtil::unquoteString(source, m);
  (void)unquoted;

  bool hasNul = false;
  for (size_t i = 0; i + 1 < text.size(); ++i) hasNul |= text[i] == 0;
  if ((mode & 3) && (mode & 28) && !hasNul) {
    UnicodeString quoted = ZQUtil::quoteString(source, m);
    const char16_t* q = quoted.getTerminatedBuffer();
    const char16_t* qend = nullptr;
    UnicodeString back = ZQUtil::parseString(q, &qend, m);
    if (back != source || qend != q + quoted.length()) __builtin_trap();
  }
  return 0;
}
