// Colour syntax: hexadecimal colours, colour names, the functions rgb(), rgba(), hsl(), hsla(),
// cmyk(), device-cmyk(), cmyka(), rgb-icc(), and in CSS a colour followed by icc-color().
#include <unicode/locid.h>

#include "common/ZQColor.h"
#include "common/ZQParser.h"

namespace ZQCommonNS {

namespace {

constexpr int kMaxTailArguments = 6;
constexpr int kIccValues = 4;

// Result bits of the ICC tail; the last three become a separation's flags.
constexpr int kTailOk = 1;
constexpr int kTailSeparation = 2;
constexpr int kTailTint = 4;
constexpr int kTailCMYK = 8;

bool isBlank(char16_t c) { return c == 9 || c == 10 || c == 13 || c == 32; }

// The character after white space; the tokenizer's buffer ends in a NUL, so the scan stops.
char16_t peekCharacter(ZQTokenizer& tk) {
  const char16_t* p = tk.getPtr();
  while (isBlank(*p)) ++p;
  tk.setPtr(p);
  return *p;
}

bool isToken(const ZQTokenizer& tk, char16_t c) { return tk.getTokenType() == c; }

// Moves back to `ptr`, dropping a pushed-back token, so that the text is read again from there.
void rewind(ZQTokenizer& tk, const char16_t* ptr) {
  if (tk.isPushedBack()) tk.nextToken();
  tk.setPtr(ptr);
}

// A number as it stands, or a percentage / 100.
bool readFraction(const ZQValue& v, float& out) {
  if (v.isNumber()) {
    out = v.getRealValue(ZQUNIT_NUMBER);
    return true;
  }
  if (v.isPercentage()) {
    out = v.getRealValue(ZQUNIT_PERCENT) / 100.0f;
    return true;
  }
  return false;
}

bool readFractions(const ZQValue* args, int count, float* out) {
  for (int i = 0; i < count; ++i) {
    if (!readFraction(args[i], out[i])) return false;
  }
  return true;
}

// `count` arguments with optional commas between them, then ")".
bool readArguments(ZQTokenizer& tk, ZQValue* out, int count) {
  for (int i = 0; i < count; ++i) {
    if (i) tk.skipSeparator(u',');
    out[i] = tk.nextTokenValueSigned();
  }
  return tk.nextToken() == u')';
}

// The tail "[,][#]profile, arguments...)" that closes rgb-icc() and icc-color(). On success
// `color` becomes the colour it describes, built on the rgb of `color` when `rgbGiven`, and the
// result is nonzero (kTailOk and, for a separation, its flag bits); on failure it is 0 and
// `color` is unchanged.
int readIccTail(ZQTokenizer& tk, ZQColor& color, bool rgbGiven) {
  tk.skipSeparator(u',');
  const bool builtin = peekCharacter(tk) == u'#';
  if (builtin) tk.setPtr(tk.getPtr() + 1);
  const ZQValue profileValue = tk.nextTokenValue(false);
  if (!profileValue.isName() && !profileValue.isString()) return 0;
  const UnicodeString profile = profileValue.getStringValue();
  if (profile.isEmpty()) return 0;

  ZQValue args[kMaxTailArguments];
  int count = 0;
  for (;;) {
    tk.skipSeparator(u',');
    ZQValue v = tk.nextTokenValueSigned();
    if (isToken(tk, u')')) break;
    if (tk.getTokenType() == ZQTokenizer::TOKEN_END || count == kMaxTailArguments) return 0;
    args[count++] = std::move(v);
  }
  // The tail closes the colour: nothing may follow it.
  if (tk.nextToken() != ZQTokenizer::TOKEN_END) return 0;

  // The profile is chosen by its upper-case text with the "#", however the "#" came.
  UnicodeString key(profile);
  key.toUpper(icu::Locale::getRoot());
  if (builtin) key.insert(0, u'#');
  const ZQColor rgb = color;
  float v[kMaxTailArguments] = {};

  const ZQNameEnum kind = ZQNameTable::getBuiltinNameEnum(key);
  switch (kind) {
    case ZQN_hash_CMYK:
      if (count != 4 || !readFractions(args, 4, v)) return 0;
      color = rgbGiven ? ZQColor(rgb, v[0], v[1], v[2], v[3]) : ZQColor(v[0], v[1], v[2], v[3]);
      return kTailOk;
    case ZQN_hash_GRAYSCALE:
      if (count != 1 || !readFraction(args[0], v[0])) return 0;
      v[0] = ZQColor::zeroone(v[0]);
      color = rgbGiven ? ZQColor(rgb, v[0]) : ZQColor(v[0]);
      return kTailOk;
    case ZQN_hash_REGISTRATION:
    case ZQN_hash_SEPARATION:
    case ZQN_hash_SPOTCOLOR: {
      UnicodeString name(true, u"All", 3);
      const ZQValue* rest = args;
      int left = count;
      if (kind != ZQN_hash_REGISTRATION) {
        if (count < 1 || (!args[0].isName() && !args[0].isString())) return 0;
        name = args[0].getStringValue();
        ++rest;
        --left;
      }
      // An optional tint, then for a named separation optionally the four CMYK values of the
      // full tint; the registration colour takes the tint alone.
      if (left != 0 && left != 1 && (left != 5 || kind == ZQN_hash_REGISTRATION)) return 0;
      if (!readFractions(rest, left, v)) return 0;
      const bool tint = left >= 1;
      const bool cmyk = left == 5;
      const float t = tint ? v[0] : 1.0f;
      if (cmyk) {
        color = rgbGiven ? ZQColor(rgb, name, t, v[1], v[2], v[3], v[4])
                         : ZQColor(name, t, v[1], v[2], v[3], v[4]);
      } else {
        color = rgbGiven ? ZQColor(rgb, name, t) : ZQColor(name, t);
      }
      color.adjustSeparationFlags(rgbGiven, tint, cmyk, false);
      return kTailOk | kTailSeparation | (tint ? kTailTint : 0) | (cmyk ? kTailCMYK : 0);
    }
    default:
      break;
  }
  // A profile of the author's: never a "#" name, which would make an invalid colour.
  if (key.startsWith(UnicodeString(u'#')) || count > kIccValues) return 0;
  if (!readFractions(args, count, v)) return 0;
  color = ZQColor(rgb, profile, v[0], v[1], v[2], v[3]);
  return kTailOk;
}

// In CSS a colour may be followed by "icc-color(...)", which refines it; the colour itself is
// the rgb. When no such tail follows, or it does not read, the tokenizer is left after the
// colour.
void tryCssIccColor(ZQTokenizer& tk, ZQColor& color) {
  const char16_t* start = tk.getPtr();
  if (tk.nextToken() == ZQTokenizer::TOKEN_NAME &&
      tk.getTokenText() == UnicodeString(true, u"icc-color", -1) && tk.nextToken() == u'(') {
    if (readIccTail(tk, color, true)) return;
  }
  rewind(tk, start);
}

// The function `name` after its "(": true and `color` set when it reads as a colour.
bool readFunction(ZQTokenizer& tk, ZQNameEnum name, bool css, ZQColor& color) {
  ZQValue a[5];
  switch (name) {
    case ZQN_rgb:
      if (!readArguments(tk, a, 3) || !color.setRGB(a[0], a[1], a[2], nullptr)) return false;
      break;
    case ZQN_rgba:
      a[0] = tk.nextTokenValueSigned();
      if (a[0].isName()) {
        // A named colour and its alpha.
        tk.skipSeparator(u',');
        a[1] = tk.nextTokenValueSigned();
        // A name that names no colour still reads: the colour is the invalid one.
        if (tk.nextToken() != u')' || !color.setRGB(a[0], ZQValue(), ZQValue(), &a[1])) {
          return false;
        }
      } else {
        tk.skipSeparator(u',');
        if (!readArguments(tk, a + 1, 3) || !color.setRGB(a[0], a[1], a[2], &a[3])) return false;
      }
      break;
    case ZQN_hsl:
      return readArguments(tk, a, 3) && color.setHSL(a[0], a[1], a[2], nullptr);
    case ZQN_hsla:
      return readArguments(tk, a, 4) && color.setHSL(a[0], a[1], a[2], &a[3]);
    case ZQN_cmyk:
    case ZQN_device_cmyk:
      return readArguments(tk, a, 4) && color.setCMYK(a[0], a[1], a[2], a[3], nullptr);
    case ZQN_cmyka:
      return readArguments(tk, a, 5) && color.setCMYK(a[0], a[1], a[2], a[3], &a[4]);
    case ZQN_icc_color:
      return css && readIccTail(tk, color, false) != 0;
    case ZQN_rgb_icc: {
      // Three values are read unless a "#" profile comes first. When they are not all numbers
      // or percentages the rgb is not given, and the tail still starts after them: without an
      // rgb only a built-in profile, which can give one, makes a colour.
      bool rgbGiven = false;
      if (peekCharacter(tk) != u'#') {
        for (int i = 0; i < 3; ++i) {
          if (i) tk.skipSeparator(u',');
          a[i] = tk.nextTokenValueSigned();
        }
        if (a[0].isNumberOrPercentage() && a[1].isNumberOrPercentage() &&
            a[2].isNumberOrPercentage()) {
          if (!color.setRGB(a[0], a[1], a[2], nullptr)) return false;
          rgbGiven = true;
        }
      }
      return readIccTail(tk, color, rgbGiven) != 0;
    }
    default:
      return false;
  }
  if (css) tryCssIccColor(tk, color);
  return true;
}

bool isColorFunction(ZQNameEnum name, bool css) {
  switch (name) {
    case ZQN_rgb:
    case ZQN_rgba:
    case ZQN_hsl:
    case ZQN_hsla:
    case ZQN_cmyk:
    case ZQN_device_cmyk:
    case ZQN_cmyka:
    case ZQN_rgb_icc:
      return true;
    case ZQN_icc_color:
      return css;
    default:
      return false;
  }
}

}  // namespace

ZQValue ZQParser::parseColor(const UnicodeString& text, bool css) {
  ZQTokenizer tk(text, ZQTokenizer::TOKENIZER_EXPRESSION);
  ZQValue value = parseColor(tk, css);
  if (!value.isNull() && tk.nextToken() == ZQTokenizer::TOKEN_END) return value;
  return ZQValue(text, ZQUNIT_NONE);
}

ZQValue ZQParser::parseColor(ZQTokenizer& tk, bool css) {
  ZQValue value = tk.nextTokenValueSigned();
  switch (tk.getTokenType()) {
    case ZQTokenizer::TOKEN_COLOR:
    case ZQTokenizer::TOKEN_COLOR_ALPHA: {
      if (!css) return value;
      ZQColor color = value.getColorValue();
      tryCssIccColor(tk, color);
      return ZQValue(color);
    }
    case ZQTokenizer::TOKEN_STRING:
    case ZQTokenizer::TOKEN_NUMBER:
      return value;
    case ZQTokenizer::TOKEN_NAME:
      break;
    default:
      return ZQValue();
  }

  // A name: a keyword, or a colour function when "(" follows.
  const ZQName name = value.getNameValue();
  const char16_t* afterName = tk.getPtr();
  const int next = tk.nextToken();
  if (next == ZQTokenizer::TOKEN_END) return value;
  if (next != u'(') {
    if (css) {
      ZQColor color(name);
      if (!color.isInvalid()) {
        rewind(tk, afterName);
        tryCssIccColor(tk, color);
        return ZQValue(color);
      }
    }
    tk.pushBack();
    return value;
  }
  const char16_t* atParen = afterName;
  if (isColorFunction(name, css)) {
    ZQColor color;
    if (readFunction(tk, name, css, color)) return ZQValue(color);
    // Not a colour: the tokenizer goes back to just after the name, its "(" pushed back.
    rewind(tk, atParen);
    tk.nextToken();
  }
  tk.pushBack();
  return value;
}

}  // namespace ZQCommonNS
