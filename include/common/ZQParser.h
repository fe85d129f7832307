// Readers that turn the text of a property or an attribute into one value.
#pragma once

#include <unordered_map>

#include "common/ZQExport.h"
#include "common/ZQName.h"
#include "common/ZQTokenizer.h"
#include "common/ZQValue.h"

namespace ZQCommonNS {

/// Static readers of single values, pseudo-attribute lists and colours. None of them throws:
/// what cannot be read comes back as the text, a string of unit 0.
class ZQCOMMON_API ZQParser {
 public:
  /// Bits of the `flags` of parse.
  enum ParseFlags : int {
    PARSE_NO_NUMBER = 1,  ///< a number is not accepted
    PARSE_NO_COLOR = 2,   ///< a colour is not accepted
  };
  /// Bits of the `flags` of parseAttributes.
  enum AttributeFlags : unsigned int {
    ATTRIBUTES_TOLERANT = 1,       ///< skip over errors instead of failing
    ATTRIBUTES_DUPLICATES_OK = 2,  ///< go on after a repeated name (the first value stands)
  };
  /// The map that parseAttributes fills.
  using AttributeMap = std::unordered_map<ZQName, UnicodeString>;

  /// One value (number, name, string or colour) filling the whole text, else the text.
  static ZQValue parse(const UnicodeString& text,
                       ZQTokenizer::TokenizerType type = ZQTokenizer::TOKENIZER_EXPRESSION);
  /// As parse, with ParseFlags bits that refuse numbers or colours.
  static ZQValue parse(const UnicodeString& text, int flags,
                       ZQTokenizer::TokenizerType type = ZQTokenizer::TOKENIZER_EXPRESSION);
  /// As parse, but numbers and colours stay text (identifiers such as "1a", versions "1.0").
  static ZQValue parseNonNumeric(const UnicodeString& text, ZQTokenizer::TokenizerType type =
                                                                ZQTokenizer::TOKENIZER_EXPRESSION);
  /// Reads `name="value"` pairs in the syntax of XML attributes into `attributes` (emptied
  /// first); false on an error in strict mode.
  static bool parseAttributes(const UnicodeString& text, AttributeMap& attributes,
                              unsigned int flags = 0);

  /// A colour filling the whole text, in the XSL-FO syntax or with `css` also in the CSS
  /// form (a colour followed by "icc-color(...)"); else the text as a string of unit 0.
  static ZQValue parseColor(const UnicodeString& text, bool css);
  /// The next colour of `tokenizer`; the null value at the end or where no colour starts.
  static ZQValue parseColor(ZQTokenizer& tokenizer, bool css);
};

}  // namespace ZQCommonNS
