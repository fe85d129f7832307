// Feeds arbitrary code units and integers to the character predicates and string helpers.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "common/ZQChar.h"

using namespace ZQCommonNS;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // The bytes as UTF-16 code units, surrogates and all.
  UnicodeString text;
  for (size_t i = 0; i + 1 < size; i += 2) text.append(char16_t(data[i] | (data[i + 1] << 8)));

  volatile int sink = 0;
  sink += ZQChar::isNameStr(text) + ZQChar::isNCNameStr(text) + ZQChar::isWhitespace(text) +
          ZQChar::isEmptyOrWhitespace(text) + ZQChar::last(text) + ZQChar::last32(text);
  sink += ZQChar::getMirrorString(text).length();
  for (int32_t pos = -1; pos <= text.length(); ++pos) {
    for (int method = -1; method <= 3; ++method) {
      sink += ZQChar::isInseparableCharEx(text, pos,
                                          static_cast<ZQChar::INSEPARABLECHAR_METHOD>(method));
    }
  }
  UnicodeString copy = text;
  sink += ZQChar::toZenkaku(copy).length() + ZQChar::toZenkakuKana(copy).length() +
          ZQChar::toFullsizeKana(copy).length();

  // The bytes as 32-bit values, negatives and values past 10FFFF included.
  ZQChar::TR50Overrides overrides;
  for (size_t i = 0; i + 3 < size; i += 4) {
    int c;
    std::memcpy(&c, data + i, sizeof c);
    overrides[c ^ 1] = {data[i], data[i + 1]};
    sink += ZQChar::getTR50SVO(c, &overrides, data[i] & 1) + ZQChar::getTR50MVO(c) +
            ZQChar::convertRadical(c, data[i + 1] & 1) + ZQChar::isZeroWidthControlCode(c) +
            ZQChar::isUndefined(c) + ZQChar::isGraphemeCluster(c) + ZQChar::isHalfPunct(c) +
            ZQChar::isNoVerticalChar(c) + ZQChar::isSymbolJIS(c) + ZQChar::isNonStarterJIS(c) +
            ZQChar::getIntPropertyValue(c, static_cast<UProperty>(data[i + 2] * 17 - 300)) +
            ZQChar::isPunct(static_cast<UCharCategory>(data[i + 3] & 31)) +
            ZQChar::UTF8toUChar32(data[i], data[i + 1], data[i + 2], data[i + 3]) +
            ZQChar::UTF16toUChar32(char16_t(c), char16_t(c >> 16));
  }
  (void)sink;
  return 0;
}
