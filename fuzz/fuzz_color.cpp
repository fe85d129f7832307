// Reads arbitrary text as a colour in both syntaxes, and the result back as a ZQColor.
// Nothing may crash; a text that is no colour comes back unchanged as a string of unit 0; a
// colour value reads back as the same colour, strict or not and through its value form. Only
// rgba() of a name that names no colour gives the invalid colour, as its bare rgb.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "common/ZQColor.h"
#include "common/ZQParser.h"
#include "common/ZQTokenizer.h"
#include "common/ZQValue.h"

using namespace ZQCommonNS;

namespace {

// A colour value that reads as the invalid colour must be the bare rgb of it.
bool invalidOnlyAsBareRgb(const ZQValue& v, const ZQColor& c) {
  return !c.isInvalid() ||
         (v.isInteger() && static_cast<unsigned>(v.getIntegerValue()) == ZQColor::RGB_INVALID);
}

void check(const UnicodeString& text, bool css) {
  const ZQValue v = ZQParser::parseColor(text, css);
  if (v.isNull()) abort();
  if (v.isString() && v.getUnitType() == ZQUNIT_NONE) {
    // Refused: the text itself.
    if (v.getStringValue() != text) abort();
  } else if (v.getUnitType() == ZQUNIT_COLOR) {
    if (!v.isColor()) abort();
    const ZQColor c = v.getColorValue(true);
    if (!invalidOnlyAsBareRgb(v, c)) abort();
    if (c != v.getColorValue(false)) abort();
    // The value form of the colour holds the same colour.
    if (ZQValue(c).getColorValue(true) != c) abort();
    (void)c.toString(false);
    (void)c.toString(true);
  } else {
    // A name, a string or a number filling the text.
    if (!v.isName() && !v.isString() && !v.isNumeric()) abort();
    (void)v.getColorValue(true);
  }

  // The tokenizer form reads one value and leaves the tokenizer usable.
  ZQTokenizer tk(text);
  for (int i = 0; i < 64; ++i) {
    const ZQValue part = ZQParser::parseColor(tk, css);
    if (part.isNull() && tk.getTokenType() == ZQTokenizer::TOKEN_END) break;
    if (part.getUnitType() == ZQUNIT_COLOR && !invalidOnlyAsBareRgb(part, part.getColorValue(true)))
      abort();
  }

  // A string value is read in the XSL-FO syntax: its colour when that gives one, else nothing.
  const ZQValue s(text, ZQUNIT_NONE);
  const ZQColor strict = s.getColorValue(true);
  const ZQColor loose = s.getColorValue();
  const ZQValue fo = css ? ZQParser::parseColor(text, false) : v;
  if (fo.getUnitType() == ZQUNIT_COLOR) {
    const ZQColor c = fo.getColorValue();
    if (strict != c || loose != c) abort();
  } else if (!strict.isInvalid() || !loose.isTransparent()) {
    abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // The bytes as UTF-8, and as UTF-16 units so that any code unit can appear.
  const UnicodeString utf8 = UnicodeString::fromUTF8(
      icu::StringPiece(reinterpret_cast<const char*>(data), static_cast<int32_t>(size)));
  UnicodeString units;
  for (size_t i = 0; i + 1 < size; i += 2)
    units += static_cast<char16_t>(data[i] | data[i + 1] << 8);
  for (const UnicodeString* text : {&utf8, static_cast<const UnicodeString*>(&units)}) {
    check(*text, false);
    check(*text, true);
  }
  return 0;
}
