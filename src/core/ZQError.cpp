#include "common/ZQError.h"

#include <unicode/fmtable.h>
#include <unicode/msgfmt.h>

#include <string>

#include "common/ZQString.h"
#include "core/ZQCommonError.h"
#include "core/platform/ZQPlatform.h"

namespace ZQCommonNS {

ZQErrorLevel getErrorLevel(unsigned short code) {
  if (!(code & 0x200)) return ZQERRLEVEL_FATAL;
  if (!(code & 0x100)) return ZQERRLEVEL_ERROR;
  return static_cast<ZQErrorLevel>(0x300 | (code & 0x80));
}

// ---- ZQError ----

ZQError::ZQError() : m_code(0), m_line(-1), m_column(-1) {}

ZQError::ZQError(unsigned short code, const UnicodeString& message, const UnicodeString& source,
                 int line, int column, const UnicodeString& uri)
    : m_code(code),
      m_message(message),
      m_source(source),
      m_line(line),
      m_column(column),
      m_uri(uri) {}

ZQError::ZQError(const std::bad_alloc&, const UnicodeString& source)
    : m_code(ZQERR_OUT_OF_MEMORY),
      m_message(u"SYSTEM ERROR: Out of memory."),
      m_source(source),
      m_line(-1),
      m_column(-1) {}

ZQError::ZQError(const std::exception& e, const UnicodeString& source)
    : m_code(ZQERR_CPP_EXCEPTION),
      m_message(u"SYSTEM ERROR: C++ exception: "),
      m_source(source),
      m_line(-1),
      m_column(-1) {
  const char* what = e.what();
  m_message += UnicodeString(what ? what : "", static_cast<const char*>(nullptr));
}

ZQError::~ZQError() = default;

UnicodeString ZQError::getPositionDescription() const {
  UnicodeString out;
  if (m_line > 0) {
    out += u"Line ";
    out += UnicodeString(std::to_string(m_line).c_str(), -1, US_INV);
    out += u", ";
  }
  if (m_column > 0) {
    out += u"Col ";
    out += UnicodeString(std::to_string(m_column).c_str(), -1, US_INV);
    out += u", ";
  }
  out += m_uri;
  return out;
}

UnicodeString ZQError::getMessage() const {
  UnicodeString position = getPositionDescription();
  if (position.isEmpty()) return m_message;
  UnicodeString out(m_message);
  out += u'\n';
  out += position;
  return out;
}

void ZQError::setMessage(const UnicodeString& text) {
  m_message = text;
  UnicodeString position = getPositionDescription();
  if (position.isEmpty()) return;
  UnicodeString tail(u'\n');
  tail += position;
  if (m_message.endsWith(tail)) m_message.truncate(m_message.length() - tail.length());
}

void ZQError::appendMessage(const UnicodeString& text) {
  if (text.isEmpty()) return;
  if (!m_message.isEmpty()) m_message += u'\n';
  m_message += text;
}

void ZQError::throwFatalError() const {
  if (m_code != 0 && getErrorLevel(m_code) == ZQERRLEVEL_FATAL) throw ZQError(*this);
}

UnicodeString ZQError::getLastErrorMessage(unsigned long code, void* module) {
  // Codes 12000..12175 without a module are the HTTP client's; the system's own table is
  // searched in every case, with or without a module.
  std::string text;
  if (module == nullptr && code >= 12000 && code <= 12175) {
    text = platform::httpClientErrorText(code - 12000);
  }
  if (text.empty()) text = platform::errnoText(code);
  UnicodeString out = UnicodeString::fromUTF8(text);
  out.trim();
  return out;
}

// ---- common failures ----

namespace {

const char16_t* const kSourceNames[] = {
    u"ZQDocument::loadNextNode",
    u"ZQDocument::doSave",
    u"AttrNodeMap::setNamedItem",
    u"AttrNodeMap::setNamedItemNS",
    u"ZQElement::removeAttributeNode",
    u"ZQNode::setNodeValue",
    u"ZQNode::insertBefore",
    u"ZQNode::replaceChild",
    u"ZQNode::removeChild",
    u"ZQNode::appendChild",
    u"ZQXmlParserImpl::checkStream",
    u"ZQXmlParserImpl::pushStream",
    u"ZQXmlParserImpl::setInput",
    u"ZQXmlParserImpl::isWhitespace",
    u"ZQXmlParserImpl::isEmptyElementTag",
    u"ZQXmlParserImpl::getAttributeNamespace",
    u"ZQXmlParserImpl::getAttributeName",
    u"ZQXmlParserImpl::getAttributePrefix",
    u"ZQXmlParserImpl::getAttributeValue",
    u"ZQXmlSerializerImpl::setOutput",
    u"ZQXmlSerializerImpl::startDocumen",
    u"ZQXmlSerializerImpl::attributeSub",
    u"ZQXmlSerializerImpl::endTagt",
    u"",  // the document type declaration of the serializer names no source
    u"ZQXmlSerializerImpl::checkStream",
    u"ZQMSXmlParser",
    u"ZQXmlCatalogsImpl",
    u"ZQTempFile",
};
constexpr int kSourceCount = static_cast<int>(sizeof(kSourceNames) / sizeof(kSourceNames[0]));

// ": arg" when arg is given, "." when it is not.
void appendColonArgOrPeriod(UnicodeString& out, const UnicodeString& arg) {
  if (arg.isEmpty()) {
    out += u'.';
  } else {
    out += u": ";
    out += arg;
  }
}

}  // namespace

UnicodeString commonErrorSource(int sourceId) {
  if (sourceId < 0 || sourceId >= kSourceCount || kSourceNames[sourceId][0] == 0) {
    return UnicodeString();
  }
  UnicodeString out(u"ZQCommonNS::");
  out += kSourceNames[sourceId];
  return out;
}

UnicodeString formatCommonErrorMessage(int code, const UnicodeString& arg,
                                       const UnicodeString& arg2) {
  UnicodeString named = arg.isEmpty() ? UnicodeString(u"arg") : arg;
  UnicodeString out(u"SYSTEM ERROR: ");
  switch (code) {
    case 1:
      out += u"Out of memory.";
      break;
    case 2:
      out += u"C++ exception: ";
      out += arg;
      break;
    case 3:
      out += named;
      out += u" is null.";
      break;
    case 4:
      out += u"Argument is out of range.";
      break;
    case 6:
      out += named;
      out += u" is created from a different document.";
      break;
    case 7:
      out += named;
      out += u" is not an ZQAttr object.";
      break;
    case 8:
      out += named;
      out += u" is an ZQAttr that is already an attribute of another ZQElement object.";
      break;
    case 9:
      out += named;
      out += u" is not a child of this node.";
      break;
    case 11:
      out += u"Cannot set a value on node type";
      appendColonArgOrPeriod(out, arg);
      break;
    case 12:
      out += u"startDocument() must be called just after setOutput().";
      break;
    case 13:
      out += u"attribute() must be called just after startTag().";
      break;
    case 14:
      out += u"Unexpected endTag().";
      break;
    case 15:
      out += u"End tag '";
      out += arg;
      out += u"' does not match the start tag '";
      out += arg2;
      out += u"'.";
      break;
    case 16:
      out += u"Unexpected docdecl().";
      break;
    case 18:
      out += u"Unsupported node type.";
      break;
    case 67:
    case 517:
      out = u"Cannot open file: ";
      out += arg;
      break;
    case 68:
      out = u"Unexpected end of input stream";
      appendColonArgOrPeriod(out, arg);
      break;
    case 69:
      out = u"Output stream is not set.";
      break;
    case 70:
      out = u"Input stream error";
      appendColonArgOrPeriod(out, arg);
      break;
    case 71:
      out = u"Output stream error.";
      break;
    case 77:
      out = u"Cannot remove temporary file: ";
      out += arg;
      break;
    case 78:
      out = u"Cannot create temporary file: ";
      out += arg;
      break;
    case 518:
      out = u"Not an XML Catalog file";
      if (!arg.isEmpty()) {
        out += u": ";
        out += arg;
      }
      out += u'.';
      break;
    default:
      out += u"ZQErrorCodeCOMMON";
      break;
  }
  return out;
}

void throwCommonError(int code, int sourceId, const UnicodeString& arg, const UnicodeString& arg2) {
  throw ZQError(static_cast<unsigned short>(code), formatCommonErrorMessage(code, arg, arg2),
                commonErrorSource(sourceId), -1, -1, ZQEmptyString::EMPTY_VALUE);
}

// ---- ZQMessage ----

ZQMessage::ZQMessage(const UnicodeString& pattern, const UnicodeString& a0, const UnicodeString& a1,
                     const UnicodeString& a2, const UnicodeString& a3, const UnicodeString& a4) {
  const UnicodeString args[5] = {a0, a1, a2, a3, a4};
  format(pattern, args);
}

ZQMessage::ZQMessage(const char* pattern, const UnicodeString& a0, const UnicodeString& a1,
                     const UnicodeString& a2, const UnicodeString& a3, const UnicodeString& a4) {
  const UnicodeString args[5] = {a0, a1, a2, a3, a4};
  format(UnicodeString(pattern ? pattern : "", static_cast<const char*>(nullptr)), args);
}

void ZQMessage::format(const UnicodeString& pattern, const UnicodeString* args) {
  icu::Formattable values[5];
  for (int i = 0; i < 5; ++i) values[i].setString(args[i]);
  UErrorCode status = U_ZERO_ERROR;
  // A failure status leaves the string as ICU left it.
  icu::MessageFormat::format(pattern, values, 5, *this, status);
}

}  // namespace ZQCommonNS
