// The single-value parser and the attribute-list reader on arbitrary text, in every tokenizer
// type and every flag combination. Nothing may throw or crash, and:
// - a refused text comes back unchanged, as a string of unit 0;
// - an accepted value is a number, colour, name or string, as the flags allow;
// - parseNonNumeric is parse with both flags;
// - a strict failure leaves an empty map; the tolerant reader never fails; where the strict
//   reader succeeds, the tolerant one gives the same map; accepting duplicates only adds.
//
// Input: byte 0 bit 0 picks the encoding (1: UTF-16LE, else UTF-8); the rest is the text.
#include <cstddef>
#include <cstdint>

#include "common/ZQParser.h"

using namespace ZQCommonNS;

namespace {

void check(bool ok) {
  if (!ok) __builtin_trap();
}

bool sameValue(const ZQValue& a, const ZQValue& b) {
  return a.getValueType() == b.getValueType() && a.getUnitType() == b.getUnitType() &&
         a.toString() == b.toString();
}

bool contains(const ZQParser::AttributeMap& big, const ZQParser::AttributeMap& small) {
  for (const auto& [key, value] : small) {
    auto it = big.find(key);
    if (it == big.end() || it->second != value) return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1) return 0;
  const uint8_t* rest = data + 1;
  const size_t restSize = size - 1;
  UnicodeString text;
  if (data[0] & 1) {
    for (size_t i = 0; i + 1 < restSize; i += 2) text.append(char16_t(rest[i] | rest[i + 1] << 8));
  } else {
    text = UnicodeString::fromUTF8(
        icu::StringPiece(reinterpret_cast<const char*>(rest), static_cast<int32_t>(restSize)));
  }

  try {
    for (int t = 0; t < 6; ++t) {
      const auto type = static_cast<ZQTokenizer::TokenizerType>(t);
      for (int flags = 0; flags < 4; ++flags) {
        const ZQValue v = ZQParser::parse(text, flags, type);
        check(!v.isNull());
        if (v.isUnknownString()) {
          check(v.toString() == text);
          continue;
        }
        const bool colour = v.isColor();
        const bool number = v.isNumericalValue() && !colour;
        check(colour || number || v.isName() || v.isLiteralString());
        if (flags & ZQParser::PARSE_NO_NUMBER) check(!number);
        if (flags & ZQParser::PARSE_NO_COLOR) check(!colour);
        if (v.isName() && t == 0) {
          // An expression name is an NCName, and it reads back as itself.
          check(ZQParser::parse(v.toString()).getNameValue() == v.getNameValue());
        }
      }
      check(sameValue(ZQParser::parseNonNumeric(text, type), ZQParser::parse(text, 3, type)));
      check(sameValue(ZQParser::parse(text, type), ZQParser::parse(text, 0, type)));
    }

    ZQParser::AttributeMap strict, tolerant, strictDup, tolerantDup;
    const bool okStrict = ZQParser::parseAttributes(text, strict, 0);
    const bool okTolerant =
        ZQParser::parseAttributes(text, tolerant, ZQParser::ATTRIBUTES_TOLERANT);
    const bool okStrictDup =
        ZQParser::parseAttributes(text, strictDup, ZQParser::ATTRIBUTES_DUPLICATES_OK);
    const bool okTolerantDup = ZQParser::parseAttributes(
        text, tolerantDup, ZQParser::ATTRIBUTES_TOLERANT | ZQParser::ATTRIBUTES_DUPLICATES_OK);
    check(okTolerant && okTolerantDup);
    if (!okStrict) check(strict.empty());
    if (!okStrictDup) check(strictDup.empty());
    if (okStrict) check(strict == tolerant);
    if (okStrictDup) check(strictDup == tolerantDup);
    check(contains(tolerantDup, tolerant));
    if (okStrict && okStrictDup) check(contains(strictDup, strict));
    for (const auto& [key, value] : tolerantDup) check(!key.isEmpty() && !value.isBogus());
  } catch (...) {
    __builtin_trap();  // the parsers never throw
  }
  return 0;
}
