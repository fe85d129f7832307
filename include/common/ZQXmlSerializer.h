// The write side of the XML family: calls made in document order become markup on a byte stream.
#pragma once

#include <ostream>

#include "common/ZQExport.h"
#include "common/ZQName.h"
#include "common/ZQObject.h"

namespace ZQCommonNS {

/// Writes XML as it is asked for: no indentation, no whitespace of its own. Namespace
/// declarations come from the namespace context when a start tag is finished, so prefixes
/// may still be declared after startTag until the next content closes the tag. The virtual
/// operations keep their order, which implementations and callers rely on.
class ZQCOMMON_API ZQXmlSerializer : public ZQRCObject {
  ZQ_DECLARE_TYPE(ZQXmlSerializer, ZQRCObject)

 public:
  /// Switches addressed by number; any other number is ignored and reads as false.
  enum Feature : int {
    FEATURE_OMIT_XML_DECLARATION = 0,
    FEATURE_SORT_ATTRIBUTES = 1,
  };

  ZQXmlSerializer() = default;
  ~ZQXmlSerializer() override;
  ZQXmlSerializer(const ZQXmlSerializer&) = delete;
  ZQXmlSerializer& operator=(const ZQXmlSerializer&) = delete;

  /// The library's serializer, held by a ZQPtr; the same function as
  /// ZQXmlUtil::createXmlSerializer.
  static ZQPtr<ZQXmlSerializer> createXmlSerializer();

  /// Turns a feature on or off; a number other than 0 and 1 is ignored.
  virtual void setFeature(int feature, bool value) = 0;
  /// State of a feature; false for a number other than 0 and 1.
  virtual bool getFeature(int feature) = 0;
  /// Ends any earlier output and writes to a new file that the serializer owns.
  virtual void setOutput(const UnicodeString& fileName, const UnicodeString& encoding,
                         const UnicodeString& standalone) = 0;
  /// Ends any earlier output and writes to the caller's stream.
  virtual void setOutput(std::ostream& stream, const UnicodeString& encoding,
                         const UnicodeString& standalone) = 0;
  /// The stream form for a stream given by pointer: a null pointer raises common error 69.
  void setOutput(std::ostream* stream, const UnicodeString& encoding,
                 const UnicodeString& standalone);
  /// Writes the XML declaration and the generator comment; only right after setOutput.
  virtual void startDocument(const UnicodeString& encoding, const UnicodeString& standalone) = 0;
  /// Closes every open element, flushes and ends the output.
  virtual void endDocument() = 0;
  /// Declares a prefix (0: the default namespace) for the element that startTag opens next.
  virtual void setPrefix(ZQName prefix, ZQName ns) = 0;
  /// A prefix in force for `ns`; with `generate` one is made and declared when none is.
  /// 0 for no namespace and for the default namespace in force.
  virtual ZQName getPrefix(ZQName ns, bool generate) = 0;
  /// Number of open elements.
  virtual int getDepth() = 0;
  /// Namespace of the open element, or 0.
  virtual ZQName getNamespace() = 0;
  /// The default namespace in force, or 0.
  virtual ZQName getDefaultNamespace() = 0;
  /// Local name of the open element, or 0.
  virtual ZQName getName() = 0;
  /// Opens an element with the given prefix, which is declared for `ns` when needed.
  virtual ZQXmlSerializer* startTag(ZQName ns, ZQName prefix, ZQName localName) = 0;
  /// Opens an element, its prefix found or made by getPrefix(ns, true).
  virtual ZQXmlSerializer* startTag(ZQName ns, ZQName localName) = 0;
  /// Adds an attribute to the open start tag; xmlns attributes become declarations.
  virtual ZQXmlSerializer* attribute(ZQName ns, ZQName prefix, ZQName localName,
                                     const UnicodeString& value) = 0;
  /// Adds an attribute, its prefix found or made by getPrefix(ns, true).
  virtual ZQXmlSerializer* attribute(ZQName ns, ZQName localName, const UnicodeString& value) = 0;
  /// Closes the open element, which must have these names.
  virtual ZQXmlSerializer* endTag(ZQName ns, ZQName localName) = 0;
  /// Character data from `length` units of `chars` at `start`, escaped for content.
  virtual ZQXmlSerializer* text(const char16_t* chars, int start, int length) = 0;
  /// Character data, escaped for content.
  virtual ZQXmlSerializer* text(const UnicodeString& text) = 0;
  /// A CDATA section, written as given.
  virtual void cdsect(const UnicodeString& text) = 0;
  /// A reference "&name;".
  virtual void entityRef(const UnicodeString& name) = 0;
  /// A processing instruction; the data is trimmed.
  virtual void processingInstruction(ZQName target, const UnicodeString& data) = 0;
  /// A comment, written as given.
  virtual void comment(const UnicodeString& text) = 0;
  /// A document type declaration; only right after startDocument.
  virtual void docdecl(const UnicodeString& text) = 0;
  /// Whitespace, written as given.
  virtual void ignorableWhitespace(const UnicodeString& text) = 0;
  /// Flushes the output stream.
  virtual void flush() = 0;
  /// The text of the comment that startDocument writes; this base keeps nothing.
  virtual void setGenerator(const UnicodeString& text);
};

}  // namespace ZQCommonNS
