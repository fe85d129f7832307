// The one lexer of property values: FO expressions, CSS values, MIME parameters and word lists.
#pragma once

#include <utility>

#include "common/ZQExport.h"
#include "common/ZQValue.h"

namespace ZQCommonNS {

/// Splits the text of a property value into tokens, and reads tokens at once as values.
/// Scanning runs on raw pointers into the tokenizer's own NUL-terminated copy of the text.
class ZQCOMMON_API ZQTokenizer {
 public:
  /// The small language being read; the numbers are fixed.
  enum TokenizerType : int {
    TOKENIZER_EXPRESSION = 0,   ///< NCNames, strings quoted and doubled (FO attributes)
    TOKENIZER_CSS = 1,          ///< CSS names with escapes and the vendor prefix, CSS strings
    TOKENIZER_CSS_UNIT = 2,     ///< as CSS, and the unit of a number ends at a hyphen
    TOKENIZER_MIME = 3,         ///< runs of MIME token characters (header parameters)
    TOKENIZER_WORDS = 4,        ///< runs up to a blank or a no-break space (word lists)
    TOKENIZER_EXPRESSION2 = 5,  ///< as the expression type, with either quote and no doubling
  };

  /// Token types; a positive type is a single character, the code unit itself.
  enum TokenType : int {
    TOKEN_END = -1,          ///< the end of the text
    TOKEN_NONE = -2,         ///< no token read yet
    TOKEN_NUMBER = -3,       ///< a number; the token text is its unit as written, or empty
    TOKEN_NAME = -4,         ///< a name, escapes resolved
    TOKEN_STRING = -5,       ///< a quoted string, the content unescaped
    TOKEN_COLOR = -6,        ///< "#rgb" or "#rrggbb"; the number is 0xRRGGBB
    TOKEN_COLOR_ALPHA = -7,  ///< "#rgba" or "#rrggbbaa"; the number is 0xRRGGBBAA
  };

  /// Copies `text` (a bogus text counts as empty) and starts at its beginning.
  ZQTokenizer(const UnicodeString& text, TokenizerType type = TOKENIZER_EXPRESSION);
  /// Copies every field, the pointers included: a copy stays usable only while its source
  /// lives unchanged, since its pointers still refer to the source's buffer.
  ZQTokenizer(const ZQTokenizer& other);
  /// Takes the text over with the position in it; `other` is left a tokenizer over nothing.
  ZQTokenizer(ZQTokenizer&& other) noexcept;
  ZQTokenizer& operator=(const ZQTokenizer& other);
  ZQTokenizer& operator=(ZQTokenizer&& other) noexcept;
  ~ZQTokenizer();

  /// The current position, to save before peeking ahead and to restore after.
  const char16_t* getPtr() const { return m_ptr; }
  void setPtr(const char16_t* ptr) { m_ptr = ptr; }
  /// UTF-16 units from the start of the text to the current position.
  int getOffset() const { return static_cast<int>(m_ptr - m_start); }
  TokenizerType getTokenizerType() const { return m_type; }
  void setTokenizerType(TokenizerType type) { m_type = type; }
  /// The type of the last token (TOKEN_NONE before the first).
  int getTokenType() const { return m_tokenType; }
  /// True for a single-character token above U+0020.
  bool isTokenTypeCharacter() const { return m_tokenType > 32; }
  /// The value of the last number or colour token, else 0.
  double getNumber() const { return m_number; }
  /// The text of the last token: a name, a string's content or a number's unit.
  const UnicodeString& getTokenText() const { return m_tokenText; }

  /// Reads the next token and gives its type.
  int nextToken();
  /// Makes the next nextToken() give the last token again.
  void pushBack() { m_pushedBack = true; }
  bool isPushedBack() const { return m_pushedBack; }
  /// True once any string was read (it stays true over later tokens).
  bool hasQuote() const { return m_hasQuote; }
  /// Whether the last number was written with a decimal point.
  bool hasDecimalPoint() const { return m_hasDecimalPoint; }

  /// The next token as a value: a number with its unit, a colour, a string, a name, a character.
  ZQValue nextTokenValue(bool negate = false);
  /// As nextTokenValue, with a leading sign; with `exp` also an exponent ("1e3").
  ZQValue nextTokenValueSigned(bool exp);
  /// As nextTokenValueSigned, with exponents in the CSS types only.
  ZQValue nextTokenValueSigned();
  /// As nextTokenValueSigned, with an exponent always.
  ZQValue nextTokenValueExp();
  /// A signed number with an optional exponent, in double precision.
  double nextTokenDoubleExp();
  /// An atom or a whole parenthesised form, such as "format(...)", "url(...)" or "rgb(...)".
  ZQValue nextTokenValueFunc(bool asString = false);

  /// Steps over `sep` and the white space around it; false (white space still skipped) if it
  /// is not next, and false without a move if a token is pushed back.
  bool skipSeparator(char16_t sep);
  /// Whether `sep` comes next after white space, without moving.
  bool scanSeparator(char16_t sep) const;
  /// One item of a `sep`-separated list, whose quoted parts may hold the separator.
  UnicodeString nextSeparatedValue(char16_t sep, bool keepQuotes = false);

 private:
  bool checkCSSName() const;
  /// Takes [begin, end) as a name token and moves behind it.
  int setName(const char16_t* begin, const char16_t* end);
  /// A CSS name with its escapes resolved, from the current position.
  void readCSSName();
  /// A number and the unit written right behind it, from the current position.
  int readNumber();
  /// nextTokenValueFunc at a nesting depth, so that a deep text cannot exhaust the stack.
  ZQValue nextTokenValueFunc(bool asString, int depth);
  /// The (mantissa, exponent) of a possible exponent after `value`, applied to `value`.
  std::pair<double, double> eNotation(ZQValue& value);

  UnicodeString m_text;
  const char16_t* m_start = nullptr;
  const char16_t* m_ptr = nullptr;
  TokenizerType m_type = TOKENIZER_EXPRESSION;
  int m_tokenType = TOKEN_NONE;
  double m_number = 0.0;
  UnicodeString m_tokenText;
  bool m_pushedBack = false;
  bool m_hasQuote = false;
  bool m_hasDecimalPoint = false;
};

}  // namespace ZQCommonNS
