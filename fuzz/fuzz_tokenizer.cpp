// The tokenizer in every type, driven through every reader in an order chosen by the input.
// Nothing may crash or hang; the position never leaves the text; a token that is not the end
// always moves on; and a fresh drain reaches the end in at most one token per unit.
//
// Input: byte 0 picks the type (low 3 bits, mod 6) and the text encoding (bit 3: UTF-16LE,
// else UTF-8); byte 1 gives the count of operation bytes that follow; the rest is the text.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "common/ZQTokenizer.h"

using namespace ZQCommonNS;

namespace {

void check(bool ok) {
  if (!ok) __builtin_trap();
}

// Where the scanners must stop: the first NUL of the text.
int32_t endOffset(const UnicodeString& text) {
  const int32_t nul = text.indexOf(char16_t(0));
  return nul < 0 ? text.length() : nul;
}

void checkPosition(const ZQTokenizer& tok, int32_t end) {
  check(tok.getOffset() >= 0 && tok.getOffset() <= end);
}

// Reads tokens to the end: each token that is not the end moves on by one unit at least.
void drain(ZQTokenizer& tok, int32_t end) {
  if (tok.isPushedBack()) tok.nextToken();
  for (int32_t i = 0; i <= end + 1; ++i) {
    const int before = tok.getOffset();
    const int t = tok.nextToken();
    checkPosition(tok, end);
    if (t == ZQTokenizer::TOKEN_END) {
      check(tok.getOffset() == end);
      check(tok.getTokenText().isEmpty() && tok.getNumber() == 0.0);
      return;
    }
    check(tok.getOffset() > before);
    check(t >= ZQTokenizer::TOKEN_COLOR_ALPHA && t != ZQTokenizer::TOKEN_NONE && t != 0);
    if (t > 0) check(tok.getTokenText().isEmpty());
  }
  check(false);  // more tokens than units: something did not move
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) return 0;
  const auto type = static_cast<ZQTokenizer::TokenizerType>((data[0] & 7) % 6);
  const bool utf16 = (data[0] & 8) != 0;
  const size_t opCount = data[1] % 32 < size - 2 ? data[1] % 32 : size - 2;
  const uint8_t* ops = data + 2;
  const uint8_t* rest = ops + opCount;
  const size_t restSize = size - 2 - opCount;

  UnicodeString text;
  if (utf16) {
    for (size_t i = 0; i + 1 < restSize; i += 2) text.append(char16_t(rest[i] | rest[i + 1] << 8));
  } else {
    text = UnicodeString::fromUTF8(
        icu::StringPiece(reinterpret_cast<const char*>(rest), static_cast<int32_t>(restSize)));
  }
  const int32_t end = endOffset(text);

  ZQTokenizer tok(text, type);
  const char16_t* start = tok.getPtr();
  const char16_t* saved = start;
  // Enough rounds to run every operation byte a few times over, bounded by the text.
  const size_t rounds = opCount == 0 ? 0 : 4 * opCount + static_cast<size_t>(end);
  for (size_t i = 0; i < rounds; ++i) {
    const uint8_t op = ops[i % opCount];
    const bool flag = (op & 0x80) != 0;
    const char16_t sep = u" ,;/&="[((op >> 4) & 7) % 6];
    switch (op & 15) {
      case 0:
        tok.nextToken();
        break;
      case 1:
        tok.pushBack();
        break;
      case 2:
        (void)tok.nextTokenValue(flag).toString();
        break;
      case 3:
        (void)tok.nextTokenValueSigned(flag);
        break;
      case 4:
        (void)tok.nextTokenValueSigned();
        break;
      case 5:
        (void)tok.nextTokenValueExp();
        break;
      case 6:
        (void)tok.nextTokenDoubleExp();
        break;
      case 7:
        (void)tok.nextTokenValueFunc(flag).toString();
        break;
      case 8: {
        const int before = tok.getOffset();
        const bool pushed = tok.isPushedBack();
        const bool hit = tok.skipSeparator(sep);
        if (pushed) check(!hit && tok.getOffset() == before);
        break;
      }
      case 9: {
        const int before = tok.getOffset();
        (void)tok.scanSeparator(sep);
        check(tok.getOffset() == before);
        break;
      }
      case 10: {
        UnicodeString item = tok.nextSeparatedValue(flag ? 0 : sep, (op & 0x40) != 0);
        check(!item.isBogus());
        break;
      }
      case 11:
        saved = tok.getPtr();
        break;
      case 12:
        tok.setPtr(saved);
        break;
      case 13: {
        // A copy reads the same as the original.
        ZQTokenizer copy(tok);
        const int a = copy.nextToken();
        const int b = tok.nextToken();
        check(a == b && copy.getPtr() == tok.getPtr() && copy.getTokenText() == tok.getTokenText());
        break;
      }
      case 14:
        tok.setTokenizerType(static_cast<ZQTokenizer::TokenizerType>((op >> 4) % 6));
        break;
      default: {
        ZQTokenizer moved(std::move(tok));
        tok = std::move(moved);
        start = tok.getPtr() - tok.getOffset();
        saved = start;
        break;
      }
    }
    checkPosition(tok, end);
  }
  drain(tok, end);

  // A fresh tokenizer of each type reaches the end too.
  for (int t = 0; t < 6; ++t) {
    ZQTokenizer fresh(text, static_cast<ZQTokenizer::TokenizerType>(t));
    drain(fresh, end);
    ZQTokenizer values(text, static_cast<ZQTokenizer::TokenizerType>(t));
    for (int32_t i = 0; i <= end + 1; ++i) {
      if (values.nextTokenValueFunc().isNull()) break;
      checkPosition(values, end);
    }
    check(values.nextToken() == ZQTokenizer::TOKEN_END);
  }
  return 0;
}
