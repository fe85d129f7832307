#include <gtest/gtest.h>

#include <cerrno>
#include <stdexcept>

#include "common/ZQError.h"
#include "common/ZQString.h"
#include "core/ZQCommonError.h"

using namespace ZQCommonNS;

namespace {

UnicodeString u(const char* s) { return UnicodeString::fromUTF8(s); }
const UnicodeString& E = ZQEmptyString::EMPTY_VALUE;

ZQError raise(int code, int source, const UnicodeString& arg = UnicodeString(),
              const UnicodeString& arg2 = UnicodeString()) {
  try {
    throwCommonError(code, source, arg, arg2);
  } catch (const ZQError& e) {
    return e;
  }
  ADD_FAILURE() << "throwCommonError returned";
  return ZQError();
}

TEST(ZQError, DefaultHasNoCodeAndNoPosition) {
  ZQError e;
  EXPECT_EQ(e.getErrorCode(), 0);
  EXPECT_EQ(e.getLineNumber(), -1);
  EXPECT_EQ(e.getColumnNumber(), -1);
  EXPECT_TRUE(e.getRawMessage().isEmpty());
  EXPECT_TRUE(e.getSource().isEmpty());
  EXPECT_TRUE(e.getUri().isEmpty());
}

TEST(ZQError, AccessorsAndSetters) {
  ZQError e(5, u("msg"), u("src"), 1, 2, u("a.xml"));
  EXPECT_EQ(e.getErrorCode(), 5);
  EXPECT_EQ(e.getSource(), u("src"));
  e.setErrorCode(0x305);
  e.setSource(u("other"));
  e.setLineNumber(9);
  e.setColumnNumber(8);
  e.setUri(u("b.xml"));
  e.setRawMessage(u("raw"));
  EXPECT_EQ(e.getErrorCode(), 0x305);
  EXPECT_EQ(e.getSource(), u("other"));
  EXPECT_EQ(e.getLineNumber(), 9);
  EXPECT_EQ(e.getColumnNumber(), 8);
  EXPECT_EQ(e.getUri(), u("b.xml"));
  EXPECT_EQ(e.getRawMessage(), u("raw"));
  ZQError copy(e);
  EXPECT_EQ(copy.getMessage(), e.getMessage());
  ZQError assigned;
  assigned = e;
  EXPECT_EQ(assigned.getRawMessage(), u("raw"));
}

TEST(ZQError, ZeroPositionIsEmptyAndMessageIsRaw) {
  ZQError e(4, u("text"), E, 0, 0, E);
  EXPECT_TRUE(e.getPositionDescription().isEmpty());
  EXPECT_EQ(e.getMessage(), e.getRawMessage());
}

TEST(ZQError, LineOnlyPosition) {
  ZQError e(4, u("text"), E, 3, -1, E);
  EXPECT_EQ(e.getPositionDescription(), u("Line 3, "));
  EXPECT_EQ(e.getMessage(), u("text\nLine 3, "));
}

TEST(ZQError, FullPosition) {
  ZQError e(4, u("text"), E, 12, 7, u("file.xml"));
  EXPECT_EQ(e.getPositionDescription(), u("Line 12, Col 7, file.xml"));
  ZQError uriOnly(4, u("text"), E, -1, -1, u("file.xml"));
  EXPECT_EQ(uriOnly.getPositionDescription(), u("file.xml"));
}

TEST(ZQError, SetMessageOfGetMessageKeepsRaw) {
  ZQError e(4, u("text"), E, 12, 7, u("file.xml"));
  e.setMessage(e.getMessage());
  EXPECT_EQ(e.getRawMessage(), u("text"));
  e.setMessage(u("other text"));
  EXPECT_EQ(e.getRawMessage(), u("other text"));
  e.setMessage(u("ends\nLine 12, Col 7, other.xml"));  // not this error's position: kept whole
  EXPECT_EQ(e.getRawMessage(), u("ends\nLine 12, Col 7, other.xml"));
  ZQError none(4, u("x"), E, -1, -1, E);
  none.setMessage(u("a\n"));
  EXPECT_EQ(none.getRawMessage(), u("a\n"));
}

TEST(ZQError, AppendMessage) {
  ZQError e;
  e.appendMessage(UnicodeString());
  EXPECT_TRUE(e.getRawMessage().isEmpty());
  e.appendMessage(u("first"));
  EXPECT_EQ(e.getRawMessage(), u("first"));
  e.appendMessage(UnicodeString());
  EXPECT_EQ(e.getRawMessage(), u("first"));
  e.appendMessage(u("second"));
  EXPECT_EQ(e.getRawMessage(), u("first\nsecond"));
}

TEST(ZQError, Levels) {
  EXPECT_EQ(getErrorLevel(0x0005), 0);
  EXPECT_EQ(getErrorLevel(0x0205), 512);
  EXPECT_EQ(getErrorLevel(0x0305), 768);
  EXPECT_EQ(getErrorLevel(0x0385), 896);
  EXPECT_EQ(getErrorLevel(0x0105), 0);  // 0x100 without 0x200 is still fatal
  EXPECT_EQ(getErrorLevel(0x0285), 512);
}

TEST(ZQError, Category) {
  EXPECT_EQ(ZQError(0x0405, E, E, -1, -1, E).getErrorCategory(), 0x0400);
  EXPECT_EQ(ZQError(0xFC05, E, E, -1, -1, E).getErrorCategory(), 0xFC00);
  EXPECT_EQ(ZQError(0x0305, E, E, -1, -1, E).getErrorCategory(), 0);
}

TEST(ZQError, ThrowFatalError) {
  EXPECT_NO_THROW(ZQError().throwFatalError());
  EXPECT_NO_THROW(ZQError(0x205, u("m"), E, -1, -1, E).throwFatalError());
  ZQError fatal(3, u("fatal"), u("src"), 1, 2, u("u"));
  try {
    fatal.throwFatalError();
    FAIL() << "did not throw";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 3);
    EXPECT_EQ(e.getMessage(), fatal.getMessage());
  }
}

TEST(ZQError, FromBadAlloc) {
  ZQError e(std::bad_alloc(), u("here"));
  EXPECT_EQ(e.getErrorCode(), 1);
  EXPECT_EQ(e.getRawMessage(), u("SYSTEM ERROR: Out of memory."));
  EXPECT_EQ(e.getSource(), u("here"));
  EXPECT_EQ(e.getLineNumber(), -1);
  EXPECT_TRUE(e.getUri().isEmpty());
}

TEST(ZQError, FromStdException) {
  ZQError e(std::runtime_error("disk on fire"), u("there"));
  EXPECT_EQ(e.getErrorCode(), 2);
  EXPECT_EQ(e.getRawMessage(), u("SYSTEM ERROR: C++ exception: disk on fire"));
  EXPECT_EQ(e.getColumnNumber(), -1);
}

TEST(ZQError, LastErrorMessage) {
  EXPECT_TRUE(ZQError::getLastErrorMessage(999999, nullptr).isEmpty());
  UnicodeString enoent = ZQError::getLastErrorMessage(ENOENT, nullptr);
  EXPECT_FALSE(enoent.isEmpty());
  EXPECT_EQ(enoent, UnicodeString(enoent).trim());
  // Codes of the HTTP client: 12000 + its own code (6: host could not be resolved).
  EXPECT_FALSE(ZQError::getLastErrorMessage(12006, nullptr).isEmpty());
  EXPECT_TRUE(ZQError::getLastErrorMessage(12175, nullptr).isEmpty());
  EXPECT_TRUE(ZQError::getLastErrorMessage(0xFFFFFFFFul, nullptr).isEmpty());
}

TEST(ZQError, LastErrorMessageWithAModuleStillSearchesTheSystem) {
  int dummy = 0;
  EXPECT_EQ(ZQError::getLastErrorMessage(ENOENT, &dummy),
            ZQError::getLastErrorMessage(ENOENT, nullptr));
  EXPECT_TRUE(ZQError::getLastErrorMessage(999999, &dummy).isEmpty());
}

// ---- the code table, word for word ----

TEST(CommonError, NullArgumentWithoutArgSaysArg) {
  ZQError e = raise(3, 9, E, E);
  EXPECT_EQ(e.getErrorCode(), 3);
  EXPECT_EQ(e.getRawMessage(), u("SYSTEM ERROR: arg is null."));
  EXPECT_EQ(e.getSource(), u("ZQCommonNS::ZQNode::appendChild"));
  EXPECT_EQ(e.getLineNumber(), -1);
  EXPECT_EQ(e.getColumnNumber(), -1);
  EXPECT_TRUE(e.getUri().isEmpty());
}

TEST(CommonError, EveryTemplate) {
  struct Row {
    int code;
    const char* arg;
    const char* arg2;
    const char* message;
  };
  const Row rows[] = {
      {1, "", "", "SYSTEM ERROR: Out of memory."},
      {3, "newChild", "", "SYSTEM ERROR: newChild is null."},
      {4, "", "", "SYSTEM ERROR: Argument is out of range."},
      {4, "ignored", "", "SYSTEM ERROR: Argument is out of range."},
      {6, "newChild", "", "SYSTEM ERROR: newChild is created from a different document."},
      {6, "", "", "SYSTEM ERROR: arg is created from a different document."},
      {7, "node", "", "SYSTEM ERROR: node is not an ZQAttr object."},
      {7, "", "", "SYSTEM ERROR: arg is not an ZQAttr object."},
      {8, "attr", "",
       "SYSTEM ERROR: attr is an ZQAttr that is already an attribute of another ZQElement object."},
      {8, "", "",
       "SYSTEM ERROR: arg is an ZQAttr that is already an attribute of another ZQElement object."},
      {9, "refChild", "", "SYSTEM ERROR: refChild is not a child of this node."},
      {9, "", "", "SYSTEM ERROR: arg is not a child of this node."},
      {11, "", "", "SYSTEM ERROR: Cannot set a value on node type."},
      {11, "1", "", "SYSTEM ERROR: Cannot set a value on node type: 1"},
      {12, "", "", "SYSTEM ERROR: startDocument() must be called just after setOutput()."},
      {13, "", "", "SYSTEM ERROR: attribute() must be called just after startTag()."},
      {14, "", "", "SYSTEM ERROR: Unexpected endTag()."},
      {15, "a", "b", "SYSTEM ERROR: End tag 'a' does not match the start tag 'b'."},
      {15, "", "", "SYSTEM ERROR: End tag '' does not match the start tag ''."},
      {16, "", "", "SYSTEM ERROR: Unexpected docdecl()."},
      {18, "", "", "SYSTEM ERROR: Unsupported node type."},
      {67, "a.xml", "", "Cannot open file: a.xml"},
      {67, "", "", "Cannot open file: "},
      {68, "", "", "Unexpected end of input stream."},
      {68, "in comment", "", "Unexpected end of input stream: in comment"},
      {69, "", "", "Output stream is not set."},
      {70, "", "", "Input stream error."},
      {70, "bad byte", "", "Input stream error: bad byte"},
      {71, "", "", "Output stream error."},
      {77, "/tmp/x", "", "Cannot remove temporary file: /tmp/x"},
      {78, "/tmp/y", "", "Cannot create temporary file: /tmp/y"},
      {517, "b.xml", "", "Cannot open file: b.xml"},
      {518, "", "", "Not an XML Catalog file."},
      {518, "c.xml", "", "Not an XML Catalog file: c.xml."},
      {0, "", "", "SYSTEM ERROR: ZQErrorCodeCOMMON"},
      {5, "", "", "SYSTEM ERROR: ZQErrorCodeCOMMON"},
      {10, "", "", "SYSTEM ERROR: ZQErrorCodeCOMMON"},
      {17, "", "", "SYSTEM ERROR: ZQErrorCodeCOMMON"},
      {66, "x", "", "SYSTEM ERROR: ZQErrorCodeCOMMON"},
      {1000, "", "", "SYSTEM ERROR: ZQErrorCodeCOMMON"},
  };
  for (const Row& r : rows) {
    ZQError e = raise(r.code, 9, u(r.arg), u(r.arg2));
    EXPECT_EQ(e.getErrorCode(), static_cast<unsigned short>(r.code));
    EXPECT_EQ(e.getRawMessage(), u(r.message)) << "code " << r.code << " arg '" << r.arg << "'";
  }
}

TEST(CommonError, EndOfInputWithoutArgHasNoSystemErrorStart) {
  EXPECT_EQ(raise(68, 10).getRawMessage(), u("Unexpected end of input stream."));
}

TEST(CommonError, CodeTwoAppendsItsText) {
  EXPECT_EQ(raise(2, 9, u("boom")).getRawMessage(), u("SYSTEM ERROR: C++ exception: boom"));
}

TEST(CommonError, EverySourceName) {
  const char* sources[] = {
      "ZQDocument::loadNextNode",
      "ZQDocument::doSave",
      "AttrNodeMap::setNamedItem",
      "AttrNodeMap::setNamedItemNS",
      "ZQElement::removeAttributeNode",
      "ZQNode::setNodeValue",
      "ZQNode::insertBefore",
      "ZQNode::replaceChild",
      "ZQNode::removeChild",
      "ZQNode::appendChild",
      "ZQXmlParserImpl::checkStream",
      "ZQXmlParserImpl::pushStream",
      "ZQXmlParserImpl::setInput",
      "ZQXmlParserImpl::isWhitespace",
      "ZQXmlParserImpl::isEmptyElementTag",
      "ZQXmlParserImpl::getAttributeNamespace",
      "ZQXmlParserImpl::getAttributeName",
      "ZQXmlParserImpl::getAttributePrefix",
      "ZQXmlParserImpl::getAttributeValue",
      "ZQXmlSerializerImpl::setOutput",
      "ZQXmlSerializerImpl::startDocumen",
      "ZQXmlSerializerImpl::attributeSub",
      "ZQXmlSerializerImpl::endTagt",
      nullptr,
      "ZQXmlSerializerImpl::checkStream",
      "ZQMSXmlParser",
      "ZQXmlCatalogsImpl",
      "ZQTempFile",
  };
  for (int id = 0; id < 28; ++id) {
    ZQError e = raise(4, id);
    if (sources[id] == nullptr) {
      EXPECT_TRUE(e.getSource().isEmpty()) << id;
    } else {
      EXPECT_EQ(e.getSource(), u("ZQCommonNS::") + u(sources[id])) << id;
    }
  }
  EXPECT_TRUE(raise(4, 28).getSource().isEmpty());
  EXPECT_TRUE(raise(4, 500).getSource().isEmpty());
  EXPECT_TRUE(raise(4, -1).getSource().isEmpty());
}

// ---- ZQMessage ----

TEST(ZQMessage, FormatsFiveArguments) {
  ZQMessage m(u("{0}-{1}-{2}-{3}-{4}"), u("a"), u("b"), u("c"), u("d"), u("e"));
  EXPECT_EQ(m.toString(), u("a-b-c-d-e"));
  ZQMessage narrow("File {0} not found at line {1}.", u("x.xml"), u("12"));
  EXPECT_EQ(static_cast<const UnicodeString&>(narrow), u("File x.xml not found at line 12."));
}

TEST(ZQMessage, QuotesAndUnusedArguments) {
  ZQMessage m(u("It''s {1}"), u("unused"), u("here"));
  EXPECT_EQ(m, u("It's here"));
}

TEST(ZQMessage, BadPatternDoesNotThrow) { EXPECT_NO_THROW(ZQMessage(u("{0"), u("a"))); }

}  // namespace
