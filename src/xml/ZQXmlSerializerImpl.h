// The library's serializer: a state machine over a namespace context stack that writes bytes
// straight to a standard stream, with no buffer of its own.
#pragma once

#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "common/ZQExport.h"
#include "common/ZQName.h"
#include "common/ZQNamespaceManager.h"
#include "common/ZQXmlSerializer.h"

namespace ZQCommonNS {

class ZQCOMMON_API ZQXmlSerializerImpl : public ZQXmlSerializer {
  ZQ_DECLARE_TYPE(ZQXmlSerializerImpl, ZQXmlSerializer)

 public:
  /// Where the serializer stands; the numbers are the interface.
  enum State : int {
    STATE_RESET = 0,
    STATE_OUTPUT_SET = 1,
    STATE_PROLOG = 2,
    STATE_DOCUMENT_ENDED = 3,
    STATE_OUTPUT_CLOSED = 4,
    STATE_PREFIXES_PENDING = 5,
    STATE_START_TAG_OPEN = 6,
    STATE_ATTRIBUTES_WRITTEN = 7,
    STATE_START_TAG_CLOSED = 8,
    STATE_END_TAG_WRITTEN = 9,
    STATE_EMPTY_ELEMENT_CLOSED = 10,
    STATE_TEXT_WRITTEN = 11,
  };

  /// Bits of the text writer's flags word; any bit set escapes "&", "<" and ">".
  enum EscapeFlag : int {
    ESCAPE_MARKUP = 1,
    ESCAPE_QUOTE = 2,
    ESCAPE_APOSTROPHE = 4,
    ESCAPE_CONTROLS = 8,
    ESCAPE_LINE_BREAKS = 16,
  };
  /// The flags of content text, attribute values and namespace declarations.
  static constexpr int TEXT_FLAGS = ESCAPE_MARKUP;
  static constexpr int ATTRIBUTE_FLAGS = ESCAPE_MARKUP | ESCAPE_QUOTE | ESCAPE_LINE_BREAKS;
  static constexpr int NAMESPACE_FLAGS = ESCAPE_MARKUP | ESCAPE_QUOTE;

  /// What the bytes of the output can hold beyond ASCII.
  enum OutputEncoding : int {
    OUTPUT_UTF8 = 0,
    OUTPUT_ASCII = 1,     ///< numeric references beyond ASCII
    OUTPUT_SHIFT_JIS = 2  ///< declared Shift_JIS, but written as ASCII with references
  };

  ZQXmlSerializerImpl();
  ~ZQXmlSerializerImpl() override;

  using ZQXmlSerializer::setOutput;

  void setFeature(int feature, bool value) override;
  bool getFeature(int feature) override;
  void setOutput(const UnicodeString& fileName, const UnicodeString& encoding,
                 const UnicodeString& standalone) override;
  void setOutput(std::ostream& stream, const UnicodeString& encoding,
                 const UnicodeString& standalone) override;
  void startDocument(const UnicodeString& encoding, const UnicodeString& standalone) override;
  void endDocument() override;
  void setPrefix(ZQName prefix, ZQName ns) override;
  ZQName getPrefix(ZQName ns, bool generate) override;
  int getDepth() override;
  ZQName getNamespace() override;
  ZQName getDefaultNamespace() override;
  ZQName getName() override;
  ZQXmlSerializer* startTag(ZQName ns, ZQName prefix, ZQName localName) override;
  ZQXmlSerializer* startTag(ZQName ns, ZQName localName) override;
  ZQXmlSerializer* attribute(ZQName ns, ZQName prefix, ZQName localName,
                             const UnicodeString& value) override;
  ZQXmlSerializer* attribute(ZQName ns, ZQName localName, const UnicodeString& value) override;
  ZQXmlSerializer* endTag(ZQName ns, ZQName localName) override;
  ZQXmlSerializer* text(const char16_t* chars, int start, int length) override;
  ZQXmlSerializer* text(const UnicodeString& text) override;
  void cdsect(const UnicodeString& text) override;
  void entityRef(const UnicodeString& name) override;
  void processingInstruction(ZQName target, const UnicodeString& data) override;
  void comment(const UnicodeString& text) override;
  void docdecl(const UnicodeString& text) override;
  void ignorableWhitespace(const UnicodeString& text) override;
  void flush() override;
  void setGenerator(const UnicodeString& text) override;

  /// Writes text through the escaping rules with any flags word, also those no operation
  /// uses (4 and 8); raises 69 or 71 as every write does.
  void writeEscapedText(const UnicodeString& text, int flags) { writeText(text, flags); }
  /// The state number, for tests and tools.
  int getState() const { return m_state; }
  /// The encoding as stored (cleared by startDocument when it isn't supported).
  const UnicodeString& getEncoding() const { return m_encoding; }
  /// What the output bytes can hold, as the stored encoding decides.
  OutputEncoding getOutputEncoding() const { return m_outputEncoding; }

  /// Sorts the encoding names the serializer knows, after trimming and upper-casing; the name
  /// for the declaration goes to `declared` (empty for ASCII and for what isn't supported).
  static OutputEncoding classifyEncoding(const UnicodeString& encoding, UnicodeString& declared,
                                         bool& supported);

 private:
  /// Key of an attribute waiting for a sorted start tag: prefix, then local name.
  typedef std::pair<ZQName, ZQName> AttributeKey;
  /// Declarations first, then attributes; each by the text of prefix, then of local name,
  /// so an unprefixed attribute comes before a prefixed one.
  struct AttributeKeyLess {
    bool operator()(const AttributeKey& a, const AttributeKey& b) const;
  };

  void reset();
  void endOutput();
  /// Raises 69 without a stream, 71 when it has failed.
  void checkStream() {
    if (!m_output || !m_output->good()) streamFailed();
  }
  [[noreturn]] void streamFailed();
  /// Closes an open start tag with ">" or, for an empty element, "/>".
  void finishStartTag(bool empty);
  /// Removes a context that setPrefix opened for an element that never came.
  void dropPendingPrefixes();
  /// Index of the open element's context: the top, or the one below a pending context.
  const ZQNamespaceManager::Entry& openEntry() const;
  void declareAttribute(ZQName prefix, ZQName localName, const UnicodeString& value);
  ZQXmlSerializer* attributeSub(ZQName ns, ZQName prefix, ZQName localName,
                                const UnicodeString& value, bool generate);
  ZQXmlSerializer* startTagSub(ZQName ns, ZQName prefix, ZQName localName, bool generate);

  void writeAscii(const char* text);
  void writeText(const UnicodeString& text, int flags);
  void writeChars(const char16_t* chars, int length, int flags);
  void writeMarkupName(std::string_view before, ZQName prefix, ZQName localName,
                       std::string_view after);
  const std::string& nameBytes(ZQName name, int spare);
  void qnameBytes(ZQName prefix, ZQName localName, const std::string*& prefixBytes,
                  const std::string*& localBytes);
  void flushPending() noexcept;
  void writeAttribute(ZQName prefix, ZQName localName, const UnicodeString& value);

  int m_state;
  ZQPtr<ZQNamespaceManager> m_namespaces;
  std::ostream* m_output;
  bool m_ownsOutput;
  UnicodeString m_encoding;
  UnicodeString m_standalone;
  UnicodeString m_generator;
  bool m_omitDeclaration;
  bool m_sortAttributes;
  std::map<AttributeKey, UnicodeString, AttributeKeyLess> m_pendingAttributes;
  OutputEncoding m_outputEncoding;
  /// The state that a setPrefix found, given back when its context is dropped.
  int m_stateBeforePrefixes;
  // The bytes of each name written to this output, by name number. Names above the limit are
  // encoded each time into one of the spare strings.
  static constexpr size_t kNameCacheLimit = 1u << 16;
  std::vector<std::string> m_nameBytes;
  bool m_nameBytesAscii = false;
  std::string m_nameSpare[2];
  // Bytes bound for an output file of the serializer's own, handed over in large blocks.
  static constexpr size_t kBlockSize = 65536;
  std::unique_ptr<char[]> m_block;
  size_t m_blockUsed = 0;
};

}  // namespace ZQCommonNS
