// The library's own pull parser: its state, the queries that read it, and the error funnel.
// Reading (input and decoding, the scanner, the prolog and DTD, HTML) completes this class.
#pragma once

#include <cstdint>
#include <deque>
#include <istream>
#include <memory>
#include <sstream>
#include <unordered_map>
#include <vector>

#include "common/ZQExport.h"
#include "common/ZQName.h"
#include "common/ZQNamespaceManager.h"
#include "common/ZQXmlParser.h"
#include "xml/ZQXmlEntities.h"

namespace ZQCommonNS {

namespace xmlscan {
struct RunLines;
}

/// One attribute of the current start tag.
struct ZQXmlAttribute {
  ZQName prefix;
  ZQName localName;
  /// Namespace the prefix resolved to; the xmlns namespace for declarations.
  ZQName namespaceUri;
  UnicodeString value;
};

/// Entity name to replacement text (or, in the external tables, system identifier).
typedef std::unordered_map<ZQName, UnicodeString> ZQXmlEntityMap;

/// The four entity tables of a parser and the mark that the MathML set is in them; the
/// record that saveEntityMaps copies.
struct ZQXmlEntityMaps {
  ZQXmlEntityMap generalEntities;
  ZQXmlEntityMap parameterEntities;
  ZQXmlEntityMap externalGeneralEntities;
  ZQXmlEntityMap externalParameterEntities;
  bool mathmlEntitiesAdded = false;
};

/// The text of an input error of the parser by its code; a and b are the arguments.
ZQCOMMON_API UnicodeString formatXmlParserMessage(unsigned short code, const UnicodeString& a,
                                                  const UnicodeString& b);

class ZQCOMMON_API ZQXmlParserImpl : public ZQXmlParser {
  ZQ_DECLARE_TYPE(ZQXmlParserImpl, ZQXmlParser)

 public:
  /// Marks end of input in the character stream, and an empty pushback slot.
  static constexpr UChar32 END_OF_INPUT = 65535;

  /// What peekToken saw ahead of the current event.
  enum PendingToken {
    TOKEN_NONE = 0,
    TOKEN_STOP = 1,  ///< an error is being reported, or was thrown
    TOKEN_EMPTY_ELEMENT = 2,
    TOKEN_START_TAG = 3,
    TOKEN_END_TAG = 4,
    TOKEN_TEXT = 5,
    TOKEN_REFERENCE = 6,
    TOKEN_PI = 7,
    TOKEN_DECLARATION = 8,
    TOKEN_END_OF_INPUT = 9,
  };

  /// How bytes become code points.
  enum EncodingKind {
    ENCODING_NONE = 0,
    ENCODING_UTF8 = 1,
    ENCODING_UTF16 = 2,
    ENCODING_UTF16LE = 3,
    ENCODING_UTF16BE = 4,
    ENCODING_UTF32 = 5,
    ENCODING_UTF32LE = 6,
    ENCODING_UTF32BE = 7,
    ENCODING_ASCII = 8,
    ENCODING_LATIN1 = 9,
    ENCODING_ISO8859_2 = 10,  ///< up to part 9 at 17, then parts 10, 11, 13 to 16 at 18 to 23
    ENCODING_ISO8859_16 = 23,
  };

  /// What pushStream and readLiteral save and restore around an inner input.
  struct InputState {
    std::istream* stream = nullptr;
    std::istream* baseStream = nullptr;
    bool stringInput = false;
    bool bomSeen = false;
    bool topLevelSeen = false;
    int encodingKind = ENCODING_NONE;
    UnicodeString encodingName;
    ZQName parserType;
    ZQName settledType;
    UnicodeString inputUri;
    UnicodeString baseUri;
    int baseDepth = 0;
    int lineNumber = -1;
    int columnNumber = -1;
    UChar32 pushedChar = END_OF_INPUT;
    UnicodeString pushedText;
    int pushedTextPos = 0;
  };

  ZQXmlParserImpl();
  ~ZQXmlParserImpl() override;

  using ZQXmlParser::setInput;

  void setFeature(Feature feature, bool value) override;
  bool getFeature(Feature feature) override;
  void setStreamType(const ZQUri::ContentInfo* info, const UnicodeString& extension) override;
  void setCallbackError(ErrorCallback fn, void* data) override;
  void setInput(ZQUri& uri, const UnicodeString& encoding, const UnicodeString& base) override;
  void setInput(std::istream& stream, const UnicodeString& encoding,
                const UnicodeString& base) override;
  UnicodeString getInputUri() override;
  void closeStream() override;
  UnicodeString getInputEncoding() override;
  void defineEntityReplacementText(ZQName entity, const UnicodeString& value) override;
  int getNamespaceCount(int depth) override;
  ZQName getNamespacePrefix(int pos) override;
  ZQName getNamespaceUri(int pos) override;
  ZQName getNamespace() override;
  ZQName getNamespace(ZQName prefix) override;
  int getDepth() override;
  UnicodeString getPositionDescription() override;
  int getLineNumber() override;
  int getColumnNumber() override;
  bool isWhitespace() override;
  UnicodeString getText() override;
  ZQName getTarget() override;
  bool hasXmlDecl() override;
  ZQName getName() override;
  ZQName getPrefix() override;
  bool isEmptyElementTag() override;
  int getAttributeCount() override;
  /// The attribute at `index` (0 to getAttributeCount() - 1, unchecked) where it lies, for the
  /// library's own readers: the value is not copied as getAttributeValue copies it.
  const ZQXmlAttribute& attributeAt(int index) const {
    return m_attributes[static_cast<size_t>(index)];
  }
  /// The text of a text event where it lies, when getText would hand out the whole text
  /// buffer; null otherwise, and getText is to be asked.
  const UnicodeString* textInPlace() const {
    return m_eventType == TEXT && m_cachedText.isBogus() && m_textStart <= 0 ? &m_textBuffer
                                                                             : nullptr;
  }
  ZQName getAttributeNamespace(int index) override;
  ZQName getAttributeName(int index) override;
  ZQName getAttributePrefix(int index) override;
  UnicodeString getAttributeValue(ZQName ns, ZQName name) override;
  UnicodeString getAttributeValue(int index) override;
  EventType getEventType() override;
  EventType next() override;
  EventType nextToken() override;
  UnicodeString getBaseUri() override;
  void pushStream(const UnicodeString& uri, ZQName parseType,
                  const UnicodeString& encoding) override;
  void throwError(unsigned short code, const UnicodeString& a, const UnicodeString& b) override;
  bool popError(ZQError& error) override;
  void pushError(const ZQError& error) override;
  /// Adds the MathML set once; the mark goes with the tables.
  void addMathMLEntities() override;
  const void* saveEntityMaps() const override;
  void recoverEntityMaps(const void*& data) override;
  void rewind() override;
  void setAutoClose(bool autoClose) override;
  bool isXML() override;
  bool isHTMLSyntax() override;
  bool isXHTMLSyntax() override;
  void setParserType(ZQName type, ZQName defaultType) override;
  void setHtmlDefaultCharset(const UnicodeString& charset) override;
  UnicodeString getLanguage() override;
  UnicodeString getPubidLiteral() override;
  UnicodeString getExternalDTD() override;

  /// Limits of entity expansion for this parser: how many expansions may be read inside one
  /// another, and how many characters expansions may add to one document. A value of 0 or
  /// less lifts that limit. New parsers take the process-wide defaults of ZQXmlParser.
  void setEntityExpansionLimits(int depth, int64_t chars);
  int getEntityExpansionDepthLimit() const { return m_expansionDepthLimit; }
  int64_t getEntityExpansionCharLimit() const { return m_expansionCharLimit; }

 protected:
  /// Clears the state of a document; the features, the parser type, the callback and the
  /// stream type stay.
  void resetParser();
  /// Leaves an inner input: frees its streams and restores the state saved for it.
  void popStream();
  /// Value of an entity, internal table first; for an external one its system identifier.
  /// An unknown entity gives the bogus string, or the empty one when undefined entities
  /// are ignored.
  UnicodeString lookupEntity(ZQName name, bool parameter) const;
  /// Adds a built-in set to the general entities under the library lock. A name the
  /// document declared, internal or external, keeps its declaration.
  void addEntitySet(const ZQXmlEntityList& list);
  /// Adds the HTML set once per document.
  void addHtmlEntities();
  /// Adds the XHTML set once per document.
  void addXhtmlEntities();
  /// Text of the current event as the scanner left it in the buffer.
  UnicodeString eventText() const;
  /// The next code point of the input, line ends normalised and checked; END_OF_INPUT at
  /// the end. Inline for the common case: a plain ASCII byte straight from the stream
  /// buffer, where decoding, line-end folding and the character test change nothing.
  UChar32 readChar() {
    if (m_pushedChar != END_OF_INPUT) {
      UChar32 c = m_pushedChar;
      m_pushedChar = END_OF_INPUT;
      return c;
    }
    if (m_pendingDecoded == END_OF_INPUT && m_pushedText.isEmpty() && m_stream &&
        (m_encodingKind <= ENCODING_UTF8 || m_encodingKind >= ENCODING_ASCII) &&
        m_stream->rdstate() == std::ios::goodbit) {
      std::streambuf* buf = m_stream->rdbuf();
      int b = buf->sgetc();
      if (b >= 0x20 && b < 0x7F) {
        buf->sbumpc();
        ++m_columnNumber;
        return b;
      }
      if (b == 10) {
        buf->sbumpc();
        ++m_lineNumber;
        m_columnNumber = 0;
        return b;
      }
    }
    return readCharSlow();
  }
  /// The plain bytes waiting in the stream buffer, for the scans that take runs of them at
  /// once; false when the next character must come through readChar (pushback, a pending
  /// decoded character, a multi-byte encoding, a stream not good). Defined in ZQXmlScanText.h.
  inline bool bulkBytes(const unsigned char*& begin, const unsigned char*& end);
  /// bulkBytes whatever waits in the one-character slot.
  inline bool bulkWindow(const unsigned char*& begin, const unsigned char*& end);
  /// Takes `count` bytes from bulkBytes as read: line and column move as readChar would have
  /// moved them.
  inline void takeBulk(const unsigned char* bytes, size_t count);
  /// The position part of takeBulk.
  inline void countBulk(const unsigned char* bytes, size_t count);
  /// The stream part of takeBulk: moves the get area on by `count`.
  inline void bumpBulk(size_t count);
  /// Line and column after `count` bulk bytes whose line feeds are known.
  inline void positionAfter(const unsigned char* bytes, size_t count,
                            const xmlscan::RunLines& lines);
  /// readChar for everything but the plain case: pushback text, other encodings, line ends,
  /// the character test and the end of an input.
  UChar32 readCharSlow();
  /// Puts one code point back; the slot takes the first, pushedText any further one.
  void unreadChar(UChar32 c) {
    if (m_pushedChar == END_OF_INPUT)
      m_pushedChar = c;
    else
      unreadSecondChar(c);
  }
  /// unreadChar with the slot taken: both go ahead of pushedText.
  void unreadSecondChar(UChar32 c);
  /// Puts a string back ahead of everything still unread.
  void unreadText(const UnicodeString& s);
  /// Puts `piece` ahead of the unread part of a non-empty pushedText.
  void insertPushedText(const UnicodeString& piece);
  /// The next code point, left unread.
  UChar32 peekChar() {
    UChar32 c = readChar();
    unreadChar(c);
    return c;
  }
  /// One code point from the stream by the encoding kind in force; END_OF_INPUT at the end
  /// of the outermost input.
  UChar32 decodeChar();
  /// Applies an encoding by name: a built-in kind, else an ICU converter over the stream.
  void setEncoding(const UnicodeString& name);
  /// Settles the encoding from a byte order mark or the first bytes of the stream.
  void detectEncoding(bool isText);
  /// Peeks one byte so that an unreadable stream fails at once (common errors 68, 70, 11).
  void checkStream();
  /// At the root start tag of HTML: applies the default charset unless a converter, a byte
  /// order mark or a UTF-16/UTF-32 kind settled the encoding already.
  void applyHtmlDefaultCharset();
  /// Reads the text declaration at the start of a pushed input, if there is one.
  void readTextDeclaration();
  /// The kind that the built-in table gives a canonical encoding name, or -1.
  static int encodingKindOf(const UnicodeString& name);

  // ---- Markup scanning ----
  /// Class of what comes next (a PendingToken), read once and kept in m_pendingToken.
  int peekToken();
  void parseStartTag();
  void parseEndTag();
  void parseText();
  void parseCdata();
  void parseComment();
  void parsePI();
  void parseMarkupDecl();
  /// An interned NCName, or 0 when none starts here.
  ZQName readName();
  /// The name for `length` code units of text, through the per-parser cache of names.
  ZQName internName(const char16_t* text, int length);
  /// lookup(prefix) at a start tag whose context was just pushed at `depth`; the default namespace
  /// is taken from the parent's remembered one instead of a walk up the whole stack.
  ZQName lookupAtStartTag(ZQName prefix, size_t depth);
  /// The common attribute ` name="plain value"` (prefix allowed) read whole from the stream
  /// buffer; false, with nothing taken, when anything about it needs the general path.
  /// `window` carries the stream buffer from one plain attribute of a tag to the next, so
  /// that the stream is looked at once per run of them; a null `buf` makes it look again.
  struct BulkWindow {
    std::streambuf* buf = nullptr;
    const unsigned char* next = nullptr;
    const unsigned char* end = nullptr;
    /// Set on failure when the tag's "/" or ">" follows with nothing between.
    bool atTagEnd = false;
  };
  bool readPlainAttribute(ZQXmlAttribute& attribute, BulkWindow& window);
  /// The index check of the attribute queries, without the virtual call of getAttributeCount.
  bool hasAttributeAt(int index) const {
    return m_eventType == START_TAG && index >= 0 &&
           static_cast<size_t>(index) < m_attributes.size();
  }
  /// An attribute by the general path, its leading whitespace read already.
  void readAttributeSlowly(ZQXmlAttribute& attribute);
  /// An ASCII qualified name from the stream buffer at `p`, its first character perhaps
  /// waiting in the slot; `p` moves past it. False when the general path must read it.
  bool scanPlainQName(const unsigned char*& p, const unsigned char* end, ZQName& prefix,
                      ZQName& local);
  /// readQName from the stream buffer: the character after the name is left in the slot,
  /// counted, as readQName leaves it. False, with nothing taken, when the general path must
  /// read it.
  bool readPlainQName(ZQName& prefix, ZQName& local);
  /// The rest of an end tag, `name>`, when it is plain and matches the open element: read
  /// whole from the stream buffer. False, with nothing taken, otherwise.
  bool readPlainEndTag();
  /// The name for ASCII bytes, or 0 when it is too long for the cache of names.
  ZQName internBytes(const unsigned char* bytes, size_t length);
  /// A name with an optional prefix; false when no (local) name could be read.
  bool readQName(ZQName& prefix, ZQName& local);
  /// Value of a literal; `mode` 0..4 decides quoting and references.
  UnicodeString readLiteral(int mode);
  /// The same into `value`, whose buffer is reused.
  void readLiteral(int mode, UnicodeString& value);
  /// Reads a reference after "&": a character into `out`, or an entity's name into `name`.
  void readReference(UnicodeString& out, ZQName& name, bool expand);
  /// End of input reached by nextToken: HTML closes an open element, XML reports one and
  /// ends the document.
  EventType endOfInput();
  /// Under next(): an entity reference is read in place, as text put back or a pushed input.
  /// Expands the entity of an ENTITY_REF; returns the one plain character its value adds
  /// when that goes straight into the text, END_OF_INPUT when the value is read as input.
  UChar32 expandEntity();
  /// Under next(), at the "&" of a bulk window inside an element: takes a reference to an
  /// internal entity whose value is one plain character, as the ENTITY_REF that next()
  /// merges would have added it. False, with nothing taken, for every other reference.
  bool takePlainReference(const unsigned char* begin, const unsigned char* end);
  /// Skips whitespace; true when there was any.
  bool skipSpaces();
  /// The rest of an empty-element tag after its "/".
  void parseEmptyTagTail();
  /// Saves the current input on inputStack and empties the pushback for an inner one.
  void pushInputState();
  /// At the start of a document: line 1, column 0, and the encoding detected.
  void startInput();

  // ---- Prolog, DTD and entities ----
  void parseXmlDecl();
  void parseDocDecl();
  void parseEntityDecl();
  /// Reads an external DTD for its entities; run on an inner parser instead of next().
  void parseExternalSubset();
  /// Skips whitespace, appending it to the text buffer when asked; true when there was any.
  bool skipDeclarationSpace(bool append);
  /// The counting scan of the DOCTYPE's internal subset, or (`external`) of one declaration
  /// of an external DTD, up to the ">" that closes it. False when input ended first.
  bool scanDeclarations(bool external);
  /// After "%": reads the reference and, when `expand`, expands it in place or opens its
  /// external entity. `external` is the DTD's own scan, where undefined entities pass;
  /// `silent` reports nothing. False when the expansion guard refused it.
  bool expandParameterReference(bool external, bool silent, bool expand);
  /// The entities of the external DTD at the resolved `systemId`, read once per process.
  void loadExternalDtd(const UnicodeString& systemId);
  /// At the first start tag: the entity sets the root decides (the MathML set for a `math`
  /// root without a DOCTYPE).
  void applyRootEntityRules();
  /// At a start tag below the root: a MathML `math` element brings the MathML set into scope.
  void enterMathScope();
  /// At an end tag: the end of the `math` element that brought the MathML set restores the
  /// tables saved for it.
  void leaveMathScope();

  // ---- Entity-expansion guard ----
  /// Counts one expansion of `entity` before its value is read: `length` characters put back
  /// with unreadText, or a negative length for an input about to be pushed with pushStream.
  /// False, after reporting error 190, when a limit is reached and the expansion must be
  /// dropped. Call it right before the unreadText or pushStream it guards.
  bool guardExpansion(ZQName entity, int64_t length);
  /// Forgets the expansions of inputs that have ended; popStream calls it.
  void dropEndedExpansions();

  /// Records the settled document type.
  void settleType(ZQName type) { m_settledType = type; }

  // ---- Input and decoding ----
  std::istream* m_stream = nullptr;      ///< the converter stream when one is installed
  std::istream* m_baseStream = nullptr;  ///< the stream under the converter
  bool m_ownsStream = false;
  bool m_stringInput = false;
  int m_baseDepth = 0;
  int m_lineNumber = -1;
  int m_columnNumber = -1;
  UnicodeString m_inputUri;
  UnicodeString m_baseUri;
  UChar32 m_pushedChar = END_OF_INPUT;
  UnicodeString m_pushedText;
  int m_pushedTextPos = 0;
  UChar32 m_pendingDecoded = END_OF_INPUT;
  bool m_readByOuterInput = false;  ///< decodeChar's result came from a nested readChar
  bool m_xml11 = false;
  int m_encodingKind = ENCODING_NONE;
  UnicodeString m_encodingName;
  bool m_bomSeen = false;
  std::vector<InputState> m_inputStack;
  /// The stream of a literal's second pass, kept for the next literal; popStream leaves it.
  std::unique_ptr<std::istringstream> m_literalStream;
  bool m_literalStreamBusy = false;
  uint64_t m_streamPushes = 0;  ///< inputs pushStream opened, for the expansion guard

  // ---- Entity-expansion guard ----
  /// An expansion still being read: put back as text at input level `level` with
  /// `remaining` characters of pushback behind it while the reader stood at line and column,
  /// or (`stream`) an input pushed above level `level` by the pushStream numbered `serial`.
  struct ExpansionMark {
    size_t level = 0;
    int remaining = 0;
    int line = 0;
    int column = 0;
    bool stream = false;
    uint64_t serial = 0;
  };
  std::vector<ExpansionMark> m_expansionMarks;
  int64_t m_expandedChars = 0;      ///< characters expansions added to this document
  bool m_expansionStopped = false;  ///< a limit was hit: no further expansion in this document
  int m_expansionDepthLimit;
  int64_t m_expansionCharLimit;

  // ---- Scanner ----
  EventType m_eventType = START_DOCUMENT;
  int m_pendingToken = TOKEN_NONE;
  bool m_hasXmlDecl = false;
  bool m_hasDoctype = false;
  bool m_rootSeen = false;
  bool m_topLevelSeen = false;
  ZQName m_rootNamespace;
  ZQName m_rootName;
  UnicodeString m_textBuffer;
  int m_textStart = 0;
  bool m_mergingText = false;  ///< next() is reading: references go into the text
  UnicodeString m_cachedText;  ///< bogus until getText builds it
  ZQPtr<ZQNamespaceManager> m_namespaces;
  std::vector<ZQXmlAttribute> m_attributes;
  /// Value strings of earlier tags' attributes, kept with their buffers so that reading
  /// attribute values allocates nothing once the parser has warmed up.
  std::vector<UnicodeString> m_spareValues;
  /// Per depth, the default namespace in force inside the element, once its start tag set
  /// it up; `valid` is false while the tag is still being read (or was left by an error).
  struct DefaultNamespace {
    ZQName ns;
    bool valid = false;
  };
  std::vector<DefaultNamespace> m_defaultNamespaces;
  /// Text of recent names to their interned name: the shared table takes a lock and hashes
  /// the whole string on every look-up. Names stay valid while the namespace manager holds
  /// the table.
  static constexpr int kNameCacheSlots = 512;
  static constexpr int kNameCacheKeyMax = 32;
  struct NameCacheSlot {
    char16_t text[kNameCacheKeyMax];
    int length = -1;
    ZQName name;
  };
  std::unique_ptr<NameCacheSlot[]> m_nameCache;
  ZQName m_entityName;  ///< 0 at a character reference
  ZQName m_target;
  /// The markup just read (a dropped section, an XML declaration) made no event.
  bool m_markupDropped = false;
  std::deque<ZQError> m_errorQueue;
  ErrorCallback m_errorCallback = nullptr;
  void* m_errorCallbackData = nullptr;

  // ---- Entities and DOCTYPE ----
  ZQXmlEntityMaps m_entities;
  std::unique_ptr<ZQXmlEntityMaps> m_savedEntityMaps;
  ZQName m_htmlEntitiesAdded;  ///< `html` once the HTML set is in, else 0
  bool m_xhtmlEntitiesAdded = false;
  ZQName m_doctypeName;  ///< lower case
  UnicodeString m_publicId;
  UnicodeString m_systemId;

  // ---- Document type (XML, HTML, XHTML, text) ----
  ZQName m_parserType;
  ZQName m_settledType;
  ZQName m_defaultType;
  UnicodeString m_streamMediaType;  ///< lower case
  UnicodeString m_streamExtension;  ///< lower case, dot included
  UnicodeString m_metaMediaType;

  // ---- Cache of an open syntax question ----
  /// What an unsettled answer of isHTMLSyntax or isXHTMLSyntax depends on. The strings of
  /// the decision are covered by `serial`, which every writer of them moves on.
  struct SyntaxInputs {
    uint32_t serial = 0;
    ZQName parserType;
    ZQName defaultType;
    ZQName rootName;
    ZQName rootNamespace;
    bool hasXmlDecl = false;
    int publicIdLength = 0;
    bool operator==(const SyntaxInputs&) const = default;
  };
  SyntaxInputs syntaxInputs() const {
    return SyntaxInputs{m_syntaxSerial,  m_parserType, m_defaultType,      m_rootName,
                        m_rootNamespace, m_hasXmlDecl, m_publicId.length()};
  }
  /// Marks the inputs of the syntax decision as changed.
  void syntaxInputsChanged() { ++m_syntaxSerial; }
  /// The decisions themselves, asked when no cached "no" answers.
  bool decideHTMLSyntax();
  bool decideXHTMLSyntax();
  uint32_t m_syntaxSerial = 0;
  /// Inputs under which the unsettled answer was "no"; the answer stands while they do.
  SyntaxInputs m_notHtmlInputs;
  SyntaxInputs m_notXhtmlInputs;
  bool m_notHtmlCached = false;
  bool m_notXhtmlCached = false;

  // ---- Settings and what the fetch or the document told ----
  bool m_features[FEATURE_COUNT] = {};
  bool m_autoClose = true;
  UnicodeString m_htmlDefaultCharset;
  UnicodeString m_language;
};

}  // namespace ZQCommonNS
