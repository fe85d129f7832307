// The event listing of `zqtool events`: one line per event pulled from a parser, errors in
// line with the events. Header-only so that the unit tests can drive it with a parser of
// their own.
#pragma once

#include <common/ZQCommon.h>

#include <cstdio>
#include <exception>
#include <ostream>
#include <string>

namespace zqtool {

/// UTF-8 of `s` in double quotes, escaped so that any text stays on one line: backslash,
/// quote, C0 and C1 controls, DEL, line and paragraph separators and lone surrogates.
inline std::string quoteText(const icu::UnicodeString& s) {
  std::string out = "\"";
  const int32_t length = s.length();
  for (int32_t i = 0; i < length;) {
    const UChar32 c = s.char32At(i);
    i += U16_LENGTH(c);
    char hex[16];
    if (c == '\\' || c == '"') {
      out += '\\';
      out += static_cast<char>(c);
    } else if (c == '\n') {
      out += "\\n";
    } else if (c == '\r') {
      out += "\\r";
    } else if (c == '\t') {
      out += "\\t";
    } else if (c < 0x20 || c == 0x7F) {
      std::snprintf(hex, sizeof hex, "\\x%02X", static_cast<unsigned>(c));
      out += hex;
    } else if ((c >= 0x80 && c < 0xA0) || c == 0x2028 || c == 0x2029 || U_IS_SURROGATE(c)) {
      std::snprintf(hex, sizeof hex, "\\u%04X", static_cast<unsigned>(c));
      out += hex;
    } else {
      icu::UnicodeString one(c);
      one.toUTF8String(out);
    }
  }
  out += '"';
  return out;
}

/// UTF-8 of a name; empty for the name 0.
inline std::string nameText(ZQCommonNS::ZQName name) {
  std::string out;
  if (static_cast<int>(name) != 0) name.toString().toUTF8String(out);
  return out;
}

/// "prefix:local", or "local" without a prefix.
inline std::string qualifiedName(ZQCommonNS::ZQName prefix, ZQCommonNS::ZQName local) {
  std::string out = nameText(prefix);
  if (!out.empty()) out += ':';
  return out + nameText(local);
}

/// The feature called `name` as written in the interface ("FEATURE_REPORT_PI"); false when
/// there is none of that name.
inline bool featureByName(const std::string& name, ZQCommonNS::ZQXmlParser::Feature& feature) {
  using ZQCommonNS::ZQXmlParser;
  for (int i = 0; i < ZQXmlParser::FEATURE_COUNT; ++i) {
    std::string text;
    ZQXmlParser::getFeatureName(i).toUTF8String(text);
    if (text == name) {
      feature = static_cast<ZQXmlParser::Feature>(i);
      return true;
    }
  }
  return false;
}

/// Whether the event carries text worth printing.
inline bool eventHasText(int type) {
  using ZQCommonNS::ZQXmlParser;
  switch (type) {
    case ZQXmlParser::TEXT:
    case ZQXmlParser::CDSECT:
    case ZQXmlParser::ENTITY_REF:
    case ZQXmlParser::IGNORABLE_WHITESPACE:
    case ZQXmlParser::PROCESSING_INSTRUCTION:
    case ZQXmlParser::COMMENT:
    case ZQXmlParser::DOCDECL:
      return true;
    default:
      return false;
  }
}

/// One line for the event the parser stands on: type, depth, name, {namespace}, then the
/// attributes of a start tag as ns/name="value" and the text of a text-bearing event.
inline std::string describeEvent(ZQCommonNS::ZQXmlParser& parser, int type) {
  using ZQCommonNS::ZQXmlParser;
  std::string line;
  const icu::UnicodeString& typeName = ZQXmlParser::getEventTypeName(type);
  if (typeName.isEmpty()) {
    line = "EVENT_" + std::to_string(type);
  } else {
    typeName.toUTF8String(line);
  }
  line += ' ';
  line += std::to_string(parser.getDepth());
  const bool isTag = type == ZQXmlParser::START_TAG || type == ZQXmlParser::END_TAG;
  const std::string name =
      isTag ? qualifiedName(parser.getPrefix(), parser.getName()) : nameText(parser.getName());
  if (!name.empty()) line += ' ' + name;
  if (isTag) {
    const std::string ns = nameText(parser.getNamespace());
    if (!ns.empty()) line += " {" + ns + '}';
  }
  if (type == ZQXmlParser::START_TAG) {
    const int count = parser.getAttributeCount();
    for (int i = 0; i < count; ++i) {
      line += ' ';
      const std::string ns = nameText(parser.getAttributeNamespace(i));
      if (!ns.empty()) line += ns + '/';
      line += nameText(parser.getAttributeName(i));
      line += '=';
      line += quoteText(parser.getAttributeValue(i));
    }
    if (parser.isEmptyElementTag()) line += " (empty)";
  }
  if (eventHasText(type)) line += ' ' + quoteText(parser.getText());
  return line;
}

/// One line for an input error: `kind` ("error" or "warning"), code, message, line, column.
/// An error that carries no position (its message holds the position description) is placed
/// at `line` and `column`, where the parser stood when it was reported to us.
inline std::string describeError(const char* kind, const ZQCommonNS::ZQError& error, int line,
                                 int column) {
  if (error.getLineNumber() >= 0) {
    line = error.getLineNumber();
    column = error.getColumnNumber();
  }
  return std::string(kind) + ' ' + std::to_string(error.getErrorCode()) + ' ' +
         quoteText(error.getRawMessage()) + " line " + std::to_string(line) + " col " +
         std::to_string(column);
}

/// Writes the queued errors of the parser as warnings.
inline void drainQueuedErrors(ZQCommonNS::ZQXmlParser& parser, std::ostream& out) {
  ZQCommonNS::ZQError queued;
  while (parser.popError(queued)) {
    out << describeError("warning", queued, parser.getLineNumber(), parser.getColumnNumber())
        << '\n';
  }
}

/// Pulls every event of a parser whose input is set, with next() or with nextToken(), and lists
/// them on `out`. Returns 0 at END_DOCUMENT, 1 when the parser threw; `maxEvents` (0: none)
/// stops a parser that never ends, which counts as a failure too.
inline int listEvents(ZQCommonNS::ZQXmlParser& parser, bool tokens, std::ostream& out,
                      size_t maxEvents = 0) {
  using ZQCommonNS::ZQError;
  using ZQCommonNS::ZQXmlParser;
  size_t count = 0;
  try {
    for (;;) {
      const int type = tokens ? parser.nextToken() : parser.next();
      out << describeEvent(parser, type) << '\n';
      drainQueuedErrors(parser, out);
      if (type == ZQXmlParser::END_DOCUMENT) return 0;
      if (maxEvents != 0 && ++count >= maxEvents) {
        out << "error: no END_DOCUMENT after " << maxEvents << " events\n";
        return 1;
      }
    }
  } catch (const ZQError& error) {
    drainQueuedErrors(parser, out);
    out << describeError("error", error, parser.getLineNumber(), parser.getColumnNumber()) << '\n';
  } catch (const std::exception& e) {
    out << "error: " << e.what() << '\n';
  }
  return 1;
}

}  // namespace zqtool
