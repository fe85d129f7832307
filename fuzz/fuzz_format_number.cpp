// Number formatting with arbitrary numbers, formats, separators and language tags: no crash,
// no hang, and never an empty result. The kansuji conversion runs on the same text.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "common/ZQLang.h"
#include "common/ZQUtil.h"

using namespace ZQCommonNS;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 11) return 0;
  long long n;
  std::memcpy(&n, data, sizeof n);
  const int groupSize = static_cast<int8_t>(data[8]);
  const size_t langLength = data[9] % 16;
  const uint8_t flags = data[10];
  data += 11;
  size -= 11;
  if (langLength > size) return 0;
  const std::string tag(reinterpret_cast<const char*>(data), langLength);
  data += langLength;
  size -= langLength;
  // The rest is UTF-16: with flag bit 0 its first unit is the group separator.
  UnicodeString text;
  for (size_t i = 0; i + 1 < size; i += 2) text.append(char16_t(data[i] | (data[i + 1] << 8)));
  UnicodeString separator;
  if ((flags & 1) != 0 && !text.isEmpty()) {
    separator = text.tempSubString(0, 1);
    text.remove(0, 1);
  }
  if (tag.find('\0') != std::string::npos) return 0;
  const ZQLang lang(tag.c_str());

  UnicodeString result = ZQUtil::formatNumber(n, text, separator, groupSize, lang, ZQN_auto);
  if (result.isEmpty() || result.isBogus()) __builtin_trap();
  UnicodeString shortForm = ZQUtil::formatNumber(n, text, lang);
  if (shortForm.isEmpty()) __builtin_trap();

  static const ZQNameEnum modes[] = {ZQN_grouping, ZQN_readable, ZQN_auto};
  static const ZQNameEnum digits[] = {ZQN_kanji, ZQN_latin, ZQN_auto};
  const ZQName mode(modes[(flags >> 1) % 3]);
  const ZQName digitNames(digits[(flags >> 3) % 3]);
  UnicodeString kansuji =
      ZQUtil::convertKansuji(text, mode, digitNames, separator, UnicodeString());
  (void)kansuji;
  UnicodeString kansujiNumber = ZQUtil::convertKansuji(n, mode, digitNames, text, UnicodeString());
  if (kansujiNumber.isEmpty()) __builtin_trap();
  return 0;
}
