// The pull-parser interface through which the library reads every kind of markup.
#pragma once

#include <cstdint>
#include <istream>

#include "common/ZQError.h"
#include "common/ZQExport.h"
#include "common/ZQName.h"
#include "common/ZQObject.h"
#include "common/ZQUri.h"

namespace ZQCommonNS {

/// A pull parser: the caller asks for the next event, then queries the state it left.
/// Names cross the interface as ZQName values, 0 meaning none. The virtual operations keep
/// their order, which implementations and callers rely on.
class ZQCOMMON_API ZQXmlParser : public ZQRCObject {
  ZQ_DECLARE_TYPE(ZQXmlParser, ZQRCObject)

 public:
  /// What the last call of next() or nextToken() met; the numbers are the interface.
  enum EventType : int {
    START_DOCUMENT = 0,
    END_DOCUMENT = 1,
    START_TAG = 2,
    END_TAG = 3,
    TEXT = 4,
    CDSECT = 5,
    ENTITY_REF = 6,
    IGNORABLE_WHITESPACE = 7,
    PROCESSING_INSTRUCTION = 8,
    COMMENT = 9,
    DOCDECL = 10,
  };

  /// Switches of a parser, all off after construction. Any int converts to it, so that a
  /// number outside 0..9 can be passed and ignored.
  enum Feature : int {
    FEATURE_SKIP_EXTERNAL_DTD = 0,
    FEATURE_IGNORE_UNDEFINED_ENTITIES = 1,
    FEATURE_ALLOW_UNDECLARED_PREFIX = 2,
    FEATURE_IGNORE_DTD_ERRORS = 3,
    FEATURE_ALLOW_UNKNOWN_ENCODING = 4,
    FEATURE_BUILTIN_ENCODINGS_ONLY = 5,
    FEATURE_NO_POSITION_DESCRIPTION = 6,
    FEATURE_NO_CHARACTER_CHECK = 7,
    FEATURE_REPORT_PI = 8,
    FEATURE_FORBID_EXTERNAL_ENTITIES = 9,
  };

  /// Number of event types and of features.
  static constexpr int EVENT_TYPE_COUNT = 11;
  static constexpr int FEATURE_COUNT = 10;

  /// The function that receives input errors, with the data pointer given beside it.
  typedef void (*ErrorCallback)(const ZQError& error, void* data);

  ZQXmlParser() = default;
  ~ZQXmlParser() override;
  ZQXmlParser(const ZQXmlParser&) = delete;
  ZQXmlParser& operator=(const ZQXmlParser&) = delete;

  /// The library's own parser, held by a ZQPtr.
  static ZQPtr<ZQXmlParser> createXmlParser();

  /// The name of an event type as position descriptions show it ("START_TAG"); empty for a
  /// number outside the enumeration.
  static const UnicodeString& getEventTypeName(int type);
  /// The name of a feature ("FEATURE_REPORT_PI"); empty for a number outside 0..9.
  static const UnicodeString& getFeatureName(int feature);

  /// Turns a feature on or off; a number outside 0..9 is ignored.
  virtual void setFeature(Feature feature, bool value) = 0;
  /// State of a feature; false for a number outside 0..9.
  virtual bool getFeature(Feature feature) = 0;
  /// Media type and language of a fetch (`info` may be null) and the file extension, which
  /// help decide between XML and HTML.
  virtual void setStreamType(const ZQUri::ContentInfo* info, const UnicodeString& extension);
  /// Installs the receiver of input errors; a null `fn` removes it.
  virtual void setCallbackError(ErrorCallback fn, void* data);
  /// Starts reading the resource of `uri`, which the parser opens and owns.
  virtual void setInput(ZQUri& uri, const UnicodeString& encoding, const UnicodeString& base) = 0;
  /// Starts reading `stream`, which stays the caller's.
  virtual void setInput(std::istream& stream, const UnicodeString& encoding,
                        const UnicodeString& base) = 0;
  /// Name of the input being read at this moment.
  virtual UnicodeString getInputUri();
  /// Unwinds every input and leaves the parser without one.
  virtual void closeStream() = 0;
  /// Name of the encoding in force.
  virtual UnicodeString getInputEncoding() = 0;
  /// Sets the value of an internal general entity, replacing an earlier one.
  virtual void defineEntityReplacementText(ZQName entity, const UnicodeString& value) = 0;
  /// Number of namespace declarations made at `depth`.
  virtual int getNamespaceCount(int depth) = 0;
  /// Prefix of the declaration at `pos` of the current depth.
  virtual ZQName getNamespacePrefix(int pos) = 0;
  /// Namespace of the declaration at `pos` of the current depth.
  virtual ZQName getNamespaceUri(int pos) = 0;
  /// Namespace of the current element.
  virtual ZQName getNamespace() = 0;
  /// Namespace of `prefix` in the current context.
  virtual ZQName getNamespace(ZQName prefix) = 0;
  /// Number of open elements.
  virtual int getDepth() = 0;
  /// Event, input and position as text, for messages.
  virtual UnicodeString getPositionDescription() = 0;
  /// Line of the reader, from 1; -1 before the first read.
  virtual int getLineNumber() = 0;
  /// Characters read on the line; -1 before the first read.
  virtual int getColumnNumber() = 0;
  /// True when the text of the event is whitespace only.
  virtual bool isWhitespace() = 0;
  /// Text of the current event.
  virtual UnicodeString getText() = 0;
  /// Target of the last processing instruction.
  virtual ZQName getTarget() = 0;
  /// True when an XML declaration was read.
  virtual bool hasXmlDecl() = 0;
  /// Local name of the current element, entity or target.
  virtual ZQName getName() = 0;
  /// Prefix of the current element.
  virtual ZQName getPrefix() = 0;
  /// True at the start tag of an element that has no content.
  virtual bool isEmptyElementTag() = 0;
  /// Number of attributes of a start tag; -1 at other events.
  virtual int getAttributeCount() = 0;
  /// Namespace of the attribute at `index`.
  virtual ZQName getAttributeNamespace(int index) = 0;
  /// Local name of the attribute at `index`.
  virtual ZQName getAttributeName(int index) = 0;
  /// Prefix of the attribute at `index`.
  virtual ZQName getAttributePrefix(int index) = 0;
  /// Value of an attribute by namespace and local name; the bogus string when absent.
  virtual UnicodeString getAttributeValue(ZQName ns, ZQName name) = 0;
  /// Value of the attribute at `index`.
  virtual UnicodeString getAttributeValue(int index) = 0;
  /// The current event.
  virtual EventType getEventType() = 0;
  /// Moves to the next event of the document's content, merging text.
  virtual EventType next() = 0;
  /// Moves to the next token, reporting every kind of markup.
  virtual EventType nextToken() = 0;
  /// Base URI of the input being read at this moment.
  virtual UnicodeString getBaseUri();
  /// Reads the resource `uri` (relative to the base URI) in place, as `parseType` says.
  virtual void pushStream(const UnicodeString& uri, ZQName parseType,
                          const UnicodeString& encoding);
  /// Reports an input error with its code and two message arguments.
  virtual void throwError(unsigned short code, const UnicodeString& a, const UnicodeString& b);
  /// Moves the oldest queued error into `error`; false when there is none.
  virtual bool popError(ZQError& error);
  /// Queues a copy of `error`, stamped with the parser's position.
  virtual void pushError(const ZQError& error);
  /// Makes the MathML entities known.
  virtual void addMathMLEntities();
  /// A copy of the entity tables that the caller hands back to recoverEntityMaps.
  virtual const void* saveEntityMaps() const;
  /// Restores the tables from a copy of saveEntityMaps, frees it and nulls the pointer.
  virtual void recoverEntityMaps(const void*& data);
  /// Reads the same input again from its start.
  virtual void rewind();
  /// Whether the input is closed at the end of the document.
  virtual void setAutoClose(bool autoClose);
  /// True unless the input is read as HTML.
  virtual bool isXML();
  /// True when the input is read as tag-soup HTML; may settle the type.
  virtual bool isHTMLSyntax();
  /// True when the input is read as XHTML; may settle the type.
  virtual bool isXHTMLSyntax();
  /// Chooses how the input is read: `auto` (or 0), `html`, `xhtml`, `text`, or else XML.
  virtual void setParserType(ZQName type, ZQName defaultType);
  /// Encoding for HTML input that declares none.
  virtual void setHtmlDefaultCharset(const UnicodeString& charset);
  /// Language of the content, from the fetch or the document.
  virtual UnicodeString getLanguage();
  /// Public identifier of the DOCTYPE as written.
  virtual UnicodeString getPubidLiteral();
  /// System identifier of the DOCTYPE as written.
  virtual UnicodeString getExternalDTD();

  /// Process-wide limits that new parsers take for entity expansion: nesting of expansions
  /// being read, and characters expansions may add to one document (0 or less: no limit).
  static void setDefaultEntityExpansionLimits(int depth, int64_t chars);
  /// The nesting limit that new parsers take (64 unless set).
  static int getDefaultEntityExpansionDepth();
  /// The character limit that new parsers take (32 Mi unless set).
  static int64_t getDefaultEntityExpansionChars();

  /// Starts reading the URI written as `uri`.
  void setInput(const UnicodeString& uri, const UnicodeString& encoding, const UnicodeString& base);
};

}  // namespace ZQCommonNS
