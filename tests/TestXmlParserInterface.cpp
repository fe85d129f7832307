#include <gtest/gtest.h>

#include "TestSupport.h"
#include "XmlParserTestSupport.h"

#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "common/ZQError.h"
#include "common/ZQTypeId.h"
#include "common/ZQXmlParser.h"
#include "xml/ZQXmlParserImpl.h"

using namespace ZQCommonNS;
using zqtest::StateParser;
using zqtest::u;
using zqtest::utf8;

namespace {

UnicodeString u16(const char16_t* text) { return UnicodeString(text); }

ZQXmlAttribute attr(ZQName prefix, ZQName local, ZQName ns, const char* value) {
  ZQXmlAttribute a;
  a.prefix = prefix;
  a.localName = local;
  a.namespaceUri = ns;
  a.value = u(value);
  return a;
}

// Runs `call`, which must throw; gives the error.
template <class F>
ZQError caught(F call) {
  try {
    call();
  } catch (const ZQError& e) {
    return e;
  }
  ADD_FAILURE() << "no ZQError was thrown";
  return ZQError();
}

// ---- enumerations and their names ----

TEST(XmlParserEnums, EventTypeNumbersAndNames) {
  const char* names[] = {"START_DOCUMENT",
                         "END_DOCUMENT",
                         "START_TAG",
                         "END_TAG",
                         "TEXT",
                         "CDSECT",
                         "ENTITY_REF",
                         "IGNORABLE_WHITESPACE",
                         "PROCESSING_INSTRUCTION",
                         "COMMENT",
                         "DOCDECL"};
  const ZQXmlParser::EventType types[] = {ZQXmlParser::START_DOCUMENT,
                                          ZQXmlParser::END_DOCUMENT,
                                          ZQXmlParser::START_TAG,
                                          ZQXmlParser::END_TAG,
                                          ZQXmlParser::TEXT,
                                          ZQXmlParser::CDSECT,
                                          ZQXmlParser::ENTITY_REF,
                                          ZQXmlParser::IGNORABLE_WHITESPACE,
                                          ZQXmlParser::PROCESSING_INSTRUCTION,
                                          ZQXmlParser::COMMENT,
                                          ZQXmlParser::DOCDECL};
  ASSERT_EQ(ZQXmlParser::EVENT_TYPE_COUNT, 11);
  for (int i = 0; i < 11; ++i) {
    EXPECT_EQ(static_cast<int>(types[i]), i);
    EXPECT_EQ(ZQXmlParser::getEventTypeName(i), u(names[i]));
  }
}

TEST(XmlParserEnums, FeatureNumbersAndNames) {
  const char* names[] = {"FEATURE_SKIP_EXTERNAL_DTD",
                         "FEATURE_IGNORE_UNDEFINED_ENTITIES",
                         "FEATURE_ALLOW_UNDECLARED_PREFIX",
                         "FEATURE_IGNORE_DTD_ERRORS",
                         "FEATURE_ALLOW_UNKNOWN_ENCODING",
                         "FEATURE_BUILTIN_ENCODINGS_ONLY",
                         "FEATURE_NO_POSITION_DESCRIPTION",
                         "FEATURE_NO_CHARACTER_CHECK",
                         "FEATURE_REPORT_PI",
                         "FEATURE_FORBID_EXTERNAL_ENTITIES"};
  const ZQXmlParser::Feature features[] = {ZQXmlParser::FEATURE_SKIP_EXTERNAL_DTD,
                                           ZQXmlParser::FEATURE_IGNORE_UNDEFINED_ENTITIES,
                                           ZQXmlParser::FEATURE_ALLOW_UNDECLARED_PREFIX,
                                           ZQXmlParser::FEATURE_IGNORE_DTD_ERRORS,
                                           ZQXmlParser::FEATURE_ALLOW_UNKNOWN_ENCODING,
                                           ZQXmlParser::FEATURE_BUILTIN_ENCODINGS_ONLY,
                                           ZQXmlParser::FEATURE_NO_POSITION_DESCRIPTION,
                                           ZQXmlParser::FEATURE_NO_CHARACTER_CHECK,
                                           ZQXmlParser::FEATURE_REPORT_PI,
                                           ZQXmlParser::FEATURE_FORBID_EXTERNAL_ENTITIES};
  ASSERT_EQ(ZQXmlParser::FEATURE_COUNT, 10);
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(static_cast<int>(features[i]), i);
    EXPECT_EQ(ZQXmlParser::getFeatureName(i), u(names[i]));
  }
}

TEST(XmlParserEnums, NamesOutsideTheEnumerationsAreEmpty) {
  EXPECT_TRUE(ZQXmlParser::getEventTypeName(-1).isEmpty());
  EXPECT_TRUE(ZQXmlParser::getEventTypeName(11).isEmpty());
  EXPECT_TRUE(ZQXmlParser::getEventTypeName(65535).isEmpty());
  EXPECT_TRUE(ZQXmlParser::getFeatureName(-1).isEmpty());
  EXPECT_TRUE(ZQXmlParser::getFeatureName(10).isEmpty());
}

TEST(XmlParserEnums, TypeOfTheClasses) {
  StateParser parser;
  EXPECT_EQ(parser.getTypeID(), 0xC6714BC2u);
  EXPECT_EQ(parser.getTypeName(), u("ZQXmlParserImpl"));
  EXPECT_TRUE(parser.isA(ZQTypeId::ZQXmlParser));
  EXPECT_TRUE(parser.isA(ZQTypeId::ZQRCObject));
  EXPECT_FALSE(parser.isA(ZQTypeId::ZQMSXmlParser));
  EXPECT_EQ(ZQXmlParser::getStaticTypeID(), 0x34A5686Cu);
  EXPECT_EQ(parser.ZQXmlParser::getTypeName(), u("ZQXmlParser"));
  EXPECT_EQ(parser.ZQXmlParser::getTypeID(), 0x34A5686Cu);
}

// ---- what the interface does by itself ----

TEST(XmlParserBase, OperationsTheInterfaceAnswersItself) {
  StateParser parser;
  parser.setNames(u("in.xml"), u("file:///base/"));
  parser.setDoctypeIds(u("-//P"), u("s.dtd"));
  ZQXmlParser& base = parser;
  EXPECT_TRUE(base.ZQXmlParser::getInputUri().isEmpty());
  EXPECT_TRUE(base.ZQXmlParser::getBaseUri().isEmpty());
  EXPECT_TRUE(base.ZQXmlParser::getLanguage().isEmpty());
  EXPECT_TRUE(base.ZQXmlParser::getPubidLiteral().isEmpty());
  EXPECT_TRUE(base.ZQXmlParser::getExternalDTD().isEmpty());
  EXPECT_FALSE(base.ZQXmlParser::isXML());
  EXPECT_FALSE(base.ZQXmlParser::isHTMLSyntax());
  EXPECT_FALSE(base.ZQXmlParser::isXHTMLSyntax());
  EXPECT_EQ(base.ZQXmlParser::saveEntityMaps(), nullptr);
  ZQError error(5, u("kept"), UnicodeString(), 1, 2, UnicodeString());
  base.ZQXmlParser::pushError(error);
  EXPECT_FALSE(base.ZQXmlParser::popError(error));
  EXPECT_EQ(error.getRawMessage(), u("kept"));
  EXPECT_FALSE(parser.popError(error));  // the base pushError queued nothing
}

TEST(XmlParserBase, OperationsTheInterfaceIgnores) {
  StateParser parser;
  ZQXmlParser& base = parser;
  ZQUri::ContentInfo info;
  info.contentType = u("text/html");
  base.ZQXmlParser::setStreamType(&info, u(".htm"));
  base.ZQXmlParser::setCallbackError([](const ZQError&, void*) {}, nullptr);
  base.ZQXmlParser::setAutoClose(false);
  base.ZQXmlParser::setParserType(ZQN_html, ZQN_xhtml);
  base.ZQXmlParser::setHtmlDefaultCharset(u("utf-8"));
  base.ZQXmlParser::throwError(130, UnicodeString(), UnicodeString());  // does not throw
  const void* data = &info;
  base.ZQXmlParser::recoverEntityMaps(data);
  EXPECT_EQ(data, &info);
  base.ZQXmlParser::rewind();
  base.ZQXmlParser::addMathMLEntities();
  base.ZQXmlParser::pushStream(u("x.xml"), ZQN_xml, UnicodeString());
  EXPECT_TRUE(parser.streamMediaType().isEmpty());
  EXPECT_EQ(parser.errorCallback(), nullptr);
  EXPECT_TRUE(parser.autoClose());
  EXPECT_EQ(parser.parserType(), ZQN_auto);
  EXPECT_TRUE(parser.htmlDefaultCharset().isEmpty());
  EXPECT_EQ(parser.pendingToken(), ZQXmlParserImpl::TOKEN_NONE);
}

TEST(XmlParserBase, SetInputFromTextBuildsAUriAndCallsTheUriForm) {
  StateParser parser;
  parser.setInput(u("dir/../doc.xml"), u("UTF-8"), u("file:///b/"));
  ASSERT_EQ(parser.setInputCalls.size(), 1u);
  EXPECT_EQ(parser.setInputCalls[0], ZQUri(u("dir/../doc.xml")).toString());
  EXPECT_EQ(parser.lastEncoding, u("UTF-8"));
  EXPECT_EQ(parser.lastBase, u("file:///b/"));
}

// ---- settings ----

TEST(XmlParserSettings, FeaturesStartOffAndReadBack) {
  StateParser parser;
  for (int f = 0; f < ZQXmlParser::FEATURE_COUNT; ++f)
    EXPECT_FALSE(parser.getFeature(static_cast<ZQXmlParser::Feature>(f)));
  parser.setFeature(ZQXmlParser::FEATURE_REPORT_PI, true);
  parser.setFeature(ZQXmlParser::FEATURE_SKIP_EXTERNAL_DTD, true);
  parser.setFeature(ZQXmlParser::FEATURE_SKIP_EXTERNAL_DTD, false);
  for (int f = 0; f < ZQXmlParser::FEATURE_COUNT; ++f) {
    EXPECT_EQ(parser.getFeature(static_cast<ZQXmlParser::Feature>(f)),
              f == ZQXmlParser::FEATURE_REPORT_PI);
  }
}

TEST(XmlParserSettings, FeatureNumbersOutsideTheRangeAreIgnoredAndReadFalse) {
  StateParser parser;
  parser.setFeature(static_cast<ZQXmlParser::Feature>(10), true);
  parser.setFeature(static_cast<ZQXmlParser::Feature>(-1), true);
  parser.setFeature(static_cast<ZQXmlParser::Feature>(1000000), true);
  EXPECT_FALSE(parser.getFeature(static_cast<ZQXmlParser::Feature>(10)));
  EXPECT_FALSE(parser.getFeature(static_cast<ZQXmlParser::Feature>(-1)));
  EXPECT_FALSE(parser.getFeature(static_cast<ZQXmlParser::Feature>(1000000)));
  for (int f = 0; f < ZQXmlParser::FEATURE_COUNT; ++f)
    EXPECT_FALSE(parser.getFeature(static_cast<ZQXmlParser::Feature>(f)));
}

TEST(XmlParserSettings, StreamTypeIsStoredInLowerCase) {
  StateParser parser;
  ZQUri::ContentInfo info;
  info.contentType = u("Application/XHTML+XML");
  info.contentLanguage = u("en-GB");
  parser.setStreamType(&info, u(".XHTML"));
  EXPECT_EQ(parser.streamMediaType(), u("application/xhtml+xml"));
  EXPECT_EQ(parser.streamExtension(), u(".xhtml"));
  EXPECT_EQ(parser.getLanguage(), u("en-GB"));  // the language as given
}

TEST(XmlParserSettings, StreamTypeWithoutInfoSetsOnlyTheExtension) {
  StateParser parser;
  ZQUri::ContentInfo info;
  info.contentType = u("text/html");
  info.contentLanguage = u("fr");
  parser.setStreamType(&info, u(".htm"));
  parser.setStreamType(nullptr, u(".XML"));
  EXPECT_EQ(parser.streamMediaType(), u("text/html"));
  EXPECT_EQ(parser.streamExtension(), u(".xml"));
  EXPECT_EQ(parser.getLanguage(), u("fr"));
  parser.setStreamType(nullptr, UnicodeString());
  EXPECT_TRUE(parser.streamExtension().isEmpty());
}

void noteError(const ZQError& error, void* data) {
  static_cast<std::vector<ZQError>*>(data)->push_back(error);
}

TEST(XmlParserSettings, CallbackIsInstalledAndANullFunctionRemovesIt) {
  StateParser parser;
  std::vector<ZQError> seen;
  parser.setCallbackError(noteError, &seen);
  EXPECT_EQ(parser.errorCallback(), &noteError);
  EXPECT_EQ(parser.errorCallbackData(), &seen);
  parser.setCallbackError(nullptr, &seen);
  EXPECT_EQ(parser.errorCallback(), nullptr);
  EXPECT_THROW(parser.throwError(130, UnicodeString(), UnicodeString()), ZQError);
  EXPECT_TRUE(seen.empty());
}

TEST(XmlParserSettings, AutoCloseDefaultsOn) {
  StateParser parser;
  EXPECT_TRUE(parser.autoClose());
  parser.setAutoClose(false);
  EXPECT_FALSE(parser.autoClose());
  parser.setAutoClose(true);
  EXPECT_TRUE(parser.autoClose());
}

TEST(XmlParserSettings, ParserTypeDefaultsToAutoWithHtmlAndClearsTheSettledType) {
  StateParser parser;
  EXPECT_EQ(parser.parserType(), ZQN_auto);
  EXPECT_EQ(parser.defaultType(), ZQN_html);
  parser.setParserType(ZQN_xhtml, ZQN_xhtml);
  EXPECT_TRUE(parser.isXHTMLSyntax());
  EXPECT_EQ(parser.settledType(), ZQN_xhtml);
  parser.setParserType(ZQN_html, ZQN_xhtml);
  EXPECT_EQ(parser.settledType(), ZQName());
  EXPECT_EQ(parser.parserType(), ZQN_html);
  EXPECT_EQ(parser.defaultType(), ZQN_xhtml);
  EXPECT_TRUE(parser.isHTMLSyntax());
}

TEST(XmlParserSettings, HtmlDefaultCharsetIsKept) {
  StateParser parser;
  parser.setHtmlDefaultCharset(u("windows-1252"));
  EXPECT_EQ(parser.htmlDefaultCharset(), u("windows-1252"));
}

TEST(XmlParserSettings, IdentifiersOfTheDoctypeAsWritten) {
  StateParser parser;
  EXPECT_TRUE(parser.getPubidLiteral().isEmpty());
  EXPECT_TRUE(parser.getExternalDTD().isEmpty());
  parser.setDoctypeIds(u("-//W3C//DTD XHTML 1.0 Strict//EN"), u("DTD/xhtml1-strict.dtd"));
  EXPECT_EQ(parser.getPubidLiteral(), u("-//W3C//DTD XHTML 1.0 Strict//EN"));
  EXPECT_EQ(parser.getExternalDTD(), u("DTD/xhtml1-strict.dtd"));
}

// ---- the state of a document ----

TEST(XmlParserState, ResetLeavesStartDocumentAtDepthZero) {
  StateParser parser;
  EXPECT_EQ(parser.getEventType(), ZQXmlParser::START_DOCUMENT);
  EXPECT_EQ(parser.getDepth(), 0);
  EXPECT_EQ(parser.getLineNumber(), -1);
  EXPECT_EQ(parser.getColumnNumber(), -1);
  parser.openElement(ZQName(), ZQN_html, ZQN_NS_XHTML);
  parser.openElement(ZQName(), ZQN_svg, ZQN_NS_SVG);
  parser.setPosition(4, 2);
  std::istringstream in("");
  parser.setInput(in, UnicodeString(), UnicodeString());
  EXPECT_EQ(parser.getEventType(), ZQXmlParser::START_DOCUMENT);
  EXPECT_EQ(parser.getDepth(), 0);
  EXPECT_EQ(parser.getLineNumber(), -1);
  EXPECT_EQ(parser.getColumnNumber(), -1);
  EXPECT_EQ(parser.getNamespace(ZQN_xml), ZQN_NS_XML);
}

TEST(XmlParserState, EmptyElementGivesStartAndEndTagAtDepthOne) {
  StateParser parser;
  parser.openElement(ZQName(), ZQN_svg, ZQN_NS_SVG, {}, true);
  EXPECT_EQ(parser.getEventType(), ZQXmlParser::START_TAG);
  EXPECT_TRUE(parser.isEmptyElementTag());
  EXPECT_EQ(parser.getDepth(), 1);
  parser.endElement();
  EXPECT_EQ(parser.getEventType(), ZQXmlParser::END_TAG);
  EXPECT_EQ(parser.getName(), ZQN_svg);
  EXPECT_EQ(parser.getNamespace(), ZQN_NS_SVG);
  EXPECT_EQ(parser.getDepth(), 1);
  parser.popElement();
  parser.setEvent(ZQXmlParser::END_DOCUMENT);
  EXPECT_EQ(parser.getDepth(), 0);
  EXPECT_EQ(parser.getName(), ZQName());
}

TEST(XmlParserState, IsEmptyElementTagOnlyAtAStartTag) {
  StateParser parser;
  parser.openElement(ZQName(), ZQN_svg, ZQN_NS_SVG);
  EXPECT_FALSE(parser.isEmptyElementTag());
  parser.endElement();
  ZQError e = caught([&] { parser.isEmptyElementTag(); });
  EXPECT_EQ(e.getErrorCode(), 11);
  EXPECT_EQ(e.getRawMessage(), u("SYSTEM ERROR: Cannot set a value on node type."));
  EXPECT_EQ(e.getSource(), u("ZQCommonNS::ZQXmlParserImpl::isEmptyElementTag"));
  EXPECT_EQ(e.getLineNumber(), -1);
}

TEST(XmlParserState, NamesOfTheCurrentElement) {
  StateParser parser;
  parser.openElement(ZQN_svg, ZQN_text, ZQN_NS_SVG);
  EXPECT_EQ(parser.getName(), ZQN_text);
  EXPECT_EQ(parser.getPrefix(), ZQN_svg);
  EXPECT_EQ(parser.getNamespace(), ZQN_NS_SVG);
  parser.endElement();
  EXPECT_EQ(parser.getPrefix(), ZQN_svg);
  parser.setTextEvent(ZQXmlParser::TEXT, u("t"));
  EXPECT_EQ(parser.getName(), ZQName());
  EXPECT_EQ(parser.getPrefix(), ZQName());
  EXPECT_EQ(parser.getNamespace(), ZQName());
  parser.setEvent(ZQXmlParser::COMMENT);
  EXPECT_EQ(parser.getNamespace(), ZQName());
}

TEST(XmlParserState, NameOfAProcessingInstructionIsItsTarget) {
  StateParser parser;
  ZQName target(u("xml-stylesheet"));
  parser.setTarget(target);
  EXPECT_EQ(parser.getTarget(), target);
  parser.setEvent(ZQXmlParser::PROCESSING_INSTRUCTION);
  EXPECT_EQ(parser.getName(), target);
  parser.setEvent(ZQXmlParser::COMMENT);
  EXPECT_EQ(parser.getName(), ZQName());
  EXPECT_EQ(parser.getTarget(), target);  // the last one stays
}

TEST(XmlParserState, CharacterReferenceIsNamedByHexadecimalCode) {
  StateParser parser;
  parser.setTextEvent(ZQXmlParser::ENTITY_REF, u("xyA"), 2);
  EXPECT_EQ(parser.getName().toString(), u("#x41"));
  EXPECT_EQ(parser.getText(), u("A"));
  parser.setTextEvent(ZQXmlParser::ENTITY_REF, u16(u"\U0001F600"));
  EXPECT_EQ(parser.getName().toString(), u("#x1F600"));
  parser.setTextEvent(ZQXmlParser::ENTITY_REF, u16(u"\u00e9"));
  EXPECT_EQ(parser.getName().toString(), u("#xE9"));
}

TEST(XmlParserState, NamedEntityReferenceGivesNameAndValue) {
  StateParser parser;
  parser.setEntityRef(ZQN_amp);
  EXPECT_EQ(parser.getName(), ZQN_amp);
  EXPECT_EQ(parser.getText(), u("&#38;"));
  ZQName copy(u("copy"));
  parser.defineEntityReplacementText(copy, u16(u"\u00A9"));
  parser.setEntityRef(copy);
  EXPECT_EQ(parser.getText(), u16(u"\u00A9"));
}

TEST(XmlParserState, UndefinedEntityTextIsWhatTheLookUpGave) {
  StateParser parser;
  ZQName nbsp(u("nbsp"));
  parser.setEntityRef(nbsp);
  EXPECT_TRUE(parser.getText().isBogus());
  parser.setFeature(ZQXmlParser::FEATURE_IGNORE_UNDEFINED_ENTITIES, true);
  parser.setEntityRef(nbsp);
  UnicodeString text = parser.getText();
  EXPECT_FALSE(text.isBogus());
  EXPECT_TRUE(text.isEmpty());
}

TEST(XmlParserState, ExternalEntityTextIsItsSystemIdentifier) {
  StateParser parser;
  ZQName chap(u("chap1"));
  parser.setExternalGeneralEntity(chap, u("chap1.xml"));
  parser.setEntityRef(chap);
  EXPECT_EQ(parser.getText(), u("chap1.xml"));
}

TEST(XmlParserState, TextIsMadeOncePerEvent) {
  StateParser parser;
  parser.setTextEvent(ZQXmlParser::TEXT, u("before|after"), 7);
  EXPECT_EQ(parser.getText(), u("after"));
  parser.setTextEvent(ZQXmlParser::CDSECT, u("a<b"));
  EXPECT_EQ(parser.getText(), u("a<b"));
  parser.setTextEvent(ZQXmlParser::TEXT, u("ab"));
  UnicodeString first = parser.getText();
  parser.defineEntityReplacementText(ZQN_lt, u("ignored"));  // no bearing on a text event
  EXPECT_EQ(parser.getText(), first);
}

TEST(XmlParserState, WhitespaceOfTextAndCdata) {
  StateParser parser;
  parser.setTextEvent(ZQXmlParser::TEXT, u(" \t\r\n"));
  EXPECT_TRUE(parser.isWhitespace());
  parser.setTextEvent(ZQXmlParser::TEXT, UnicodeString());
  EXPECT_TRUE(parser.isWhitespace());
  parser.setTextEvent(ZQXmlParser::TEXT, u(" a "));
  EXPECT_FALSE(parser.isWhitespace());
  parser.setTextEvent(ZQXmlParser::TEXT, u16(u" \u00A0"));
  EXPECT_FALSE(parser.isWhitespace());
  parser.setTextEvent(ZQXmlParser::TEXT, u("\f"));
  EXPECT_FALSE(parser.isWhitespace());
  parser.setTextEvent(ZQXmlParser::CDSECT, u("x  "), 1);
  EXPECT_TRUE(parser.isWhitespace());
  parser.setTextEvent(ZQXmlParser::CDSECT, u("  x"), 1);
  EXPECT_FALSE(parser.isWhitespace());
  parser.setTextEvent(ZQXmlParser::IGNORABLE_WHITESPACE, u("not looked at"));
  EXPECT_TRUE(parser.isWhitespace());
}

TEST(XmlParserState, WhitespaceQueryAtOtherEventsFailsWithCode11) {
  StateParser parser;
  const ZQXmlParser::EventType others[] = {
      ZQXmlParser::START_DOCUMENT, ZQXmlParser::END_DOCUMENT, ZQXmlParser::START_TAG,
      ZQXmlParser::END_TAG,        ZQXmlParser::ENTITY_REF,   ZQXmlParser::PROCESSING_INSTRUCTION,
      ZQXmlParser::COMMENT,        ZQXmlParser::DOCDECL};
  for (ZQXmlParser::EventType type : others) {
    parser.setTextEvent(type, u(" "));
    ZQError e = caught([&] { parser.isWhitespace(); });
    EXPECT_EQ(e.getErrorCode(), 11) << utf8(ZQXmlParser::getEventTypeName(type));
    EXPECT_EQ(e.getRawMessage(), u("SYSTEM ERROR: Cannot set a value on node type."));
    EXPECT_EQ(e.getSource(), u("ZQCommonNS::ZQXmlParserImpl::isWhitespace"));
  }
}

TEST(XmlParserState, XmlDeclarationFlag) {
  StateParser parser;
  EXPECT_FALSE(parser.hasXmlDecl());
  parser.setXmlDecl(true);
  EXPECT_TRUE(parser.hasXmlDecl());
}

// ---- attributes ----

TEST(XmlParserAttributes, CountIsMinusOneAwayFromAStartTag) {
  StateParser parser;
  EXPECT_EQ(parser.getAttributeCount(), -1);
  parser.openElement(ZQName(), ZQN_svg, ZQName(), {attr(ZQName(), ZQN_id, ZQName(), "a")});
  EXPECT_EQ(parser.getAttributeCount(), 1);
  parser.setTextEvent(ZQXmlParser::TEXT, u("x"));
  EXPECT_EQ(parser.getAttributeCount(), -1);
  parser.endElement();
  EXPECT_EQ(parser.getAttributeCount(), -1);
}

TEST(XmlParserAttributes, IndexAtAStartTagWithoutAttributesFailsWithCode4) {
  StateParser parser;
  parser.openElement(ZQName(), ZQN_svg, ZQName());
  EXPECT_EQ(parser.getAttributeCount(), 0);
  ZQError e = caught([&] { parser.getAttributeName(0); });
  EXPECT_EQ(e.getErrorCode(), 4);
  EXPECT_EQ(e.getRawMessage(), u("SYSTEM ERROR: Argument is out of range."));
  EXPECT_EQ(e.getSource(), u("ZQCommonNS::ZQXmlParserImpl::getAttributeName"));
}

TEST(XmlParserAttributes, EachIndexedQueryChecksItsRange) {
  StateParser parser;
  parser.openElement(ZQName(), ZQN_svg, ZQName(), {attr(ZQName(), ZQN_id, ZQName(), "a")});
  struct Query {
    const char* source;
    std::function<void(int)> call;
  };
  const Query queries[] = {
      {"ZQCommonNS::ZQXmlParserImpl::getAttributeNamespace",
       [&](int i) { parser.getAttributeNamespace(i); }},
      {"ZQCommonNS::ZQXmlParserImpl::getAttributeName", [&](int i) { parser.getAttributeName(i); }},
      {"ZQCommonNS::ZQXmlParserImpl::getAttributePrefix",
       [&](int i) { parser.getAttributePrefix(i); }},
      {"ZQCommonNS::ZQXmlParserImpl::getAttributeValue",
       [&](int i) { parser.getAttributeValue(i); }},
  };
  for (const Query& q : queries) {
    EXPECT_NO_THROW(q.call(0)) << q.source;
    for (int index : {-1, 1, 1000}) {
      ZQError e = caught([&] { q.call(index); });
      EXPECT_EQ(e.getErrorCode(), 4) << q.source << " " << index;
      EXPECT_EQ(e.getRawMessage(), u("SYSTEM ERROR: Argument is out of range."));
      EXPECT_EQ(e.getSource(), u(q.source));
    }
  }
  // Away from a start tag the count is -1, so index 0 is out of range too.
  parser.endElement();
  EXPECT_EQ(caught([&] { parser.getAttributeValue(0); }).getErrorCode(), 4);
}

TEST(XmlParserAttributes, IndexedQueriesReadTheList) {
  StateParser parser;
  ZQName p(u("p"));
  parser.openElement(ZQName(), ZQN_svg, ZQName(),
                     {attr(ZQN_xmlns, p, ZQN_NS_XMLNS, "urn:p"), attr(p, ZQN_id, ZQN_NS_SVG, "v"),
                      attr(ZQName(), ZQN_text, ZQName(), "")});
  ASSERT_EQ(parser.getAttributeCount(), 3);
  EXPECT_EQ(parser.getAttributePrefix(0), ZQN_xmlns);
  EXPECT_EQ(parser.getAttributeName(0), p);
  EXPECT_EQ(parser.getAttributeNamespace(0), ZQN_NS_XMLNS);
  EXPECT_EQ(parser.getAttributeValue(0), u("urn:p"));
  EXPECT_EQ(parser.getAttributeNamespace(1), ZQN_NS_SVG);
  EXPECT_EQ(parser.getAttributeValue(1), u("v"));
  EXPECT_FALSE(parser.getAttributeValue(2).isBogus());
  EXPECT_TRUE(parser.getAttributeValue(2).isEmpty());
}

TEST(XmlParserAttributes, AbsentAttributeIsBogusNotEmpty) {
  StateParser parser;
  parser.openElement(ZQName(), ZQN_svg, ZQName(), {attr(ZQName(), ZQN_text, ZQName(), "")});
  UnicodeString absent = parser.getAttributeValue(ZQName(), ZQN_id);
  EXPECT_TRUE(absent.isBogus());
  UnicodeString empty = parser.getAttributeValue(ZQName(), ZQN_text);
  EXPECT_FALSE(empty.isBogus());
  EXPECT_TRUE(empty.isEmpty());
}

TEST(XmlParserAttributes, ValueByNameOnlyAtAStartTag) {
  StateParser parser;
  parser.openElement(ZQName(), ZQN_svg, ZQName(), {attr(ZQName(), ZQN_id, ZQName(), "a")});
  parser.endElement();
  ZQError e = caught([&] { parser.getAttributeValue(ZQName(), ZQN_id); });
  EXPECT_EQ(e.getErrorCode(), 4);
  EXPECT_EQ(e.getRawMessage(), u("SYSTEM ERROR: Argument is out of range."));
  EXPECT_EQ(e.getSource(), u("ZQCommonNS::ZQXmlParserImpl::getAttributeValue"));
}

TEST(XmlParserAttributes, APrefixedAttributeMatchesTheNamespaceItsPrefixResolvesTo) {
  StateParser parser;
  ZQName p(u("p"));
  ZQName q(u("q"));
  ZQName urn(u("urn:u"));
  parser.openElement(ZQName(), ZQN_svg, ZQName(),
                     {attr(p, ZQN_id, urn, "first"), attr(q, ZQN_id, urn, "second")});
  parser.declare(p, urn);
  parser.declare(q, ZQN_NS_SVG);
  // q resolves to SVG in this context, whatever the stored namespace says.
  EXPECT_EQ(parser.getAttributeValue(urn, ZQN_id), u("first"));
  EXPECT_EQ(parser.getAttributeValue(ZQN_NS_SVG, ZQN_id), u("second"));
  EXPECT_TRUE(parser.getAttributeValue(ZQName(), ZQN_id).isBogus());
  EXPECT_TRUE(parser.getAttributeValue(ZQN_NS_MATHML, ZQN_id).isBogus());
}

TEST(XmlParserAttributes, AnUnprefixedAttributeMatchesAnyNamespaceWithoutADefault) {
  StateParser parser;
  parser.openElement(ZQN_svg, ZQN_svg, ZQN_NS_SVG, {attr(ZQName(), ZQN_id, ZQName(), "v")}, false,
                     {{ZQN_svg, ZQN_NS_SVG}});
  EXPECT_EQ(parser.getAttributeValue(ZQName(), ZQN_id), u("v"));
  EXPECT_EQ(parser.getAttributeValue(ZQN_NS_MATHML, ZQN_id), u("v"));
}

TEST(XmlParserAttributes, AnUnprefixedAttributeUnderADefaultNamespaceResolvesToIt) {
  // No prefix resolves like any other: to the default namespace in force.
  StateParser parser;
  parser.openElement(ZQName(), ZQN_svg, ZQN_NS_SVG, {attr(ZQName(), ZQN_id, ZQName(), "v")}, false,
                     {{ZQName(), ZQN_NS_SVG}});
  EXPECT_EQ(parser.getAttributeValue(ZQN_NS_SVG, ZQN_id), u("v"));
  EXPECT_TRUE(parser.getAttributeValue(ZQName(), ZQN_id).isBogus());
}

TEST(XmlParserAttributes, TheFirstMatchInOrderWins) {
  StateParser parser;
  parser.openElement(
      ZQName(), ZQN_svg, ZQName(),
      {attr(ZQName(), ZQN_id, ZQName(), "one"), attr(ZQName(), ZQN_id, ZQName(), "two")});
  EXPECT_EQ(parser.getAttributeValue(ZQName(), ZQN_id), u("one"));
}

// ---- namespaces through the parser ----

TEST(XmlParserNamespaces, DeclarationsOfTheCurrentDepth) {
  StateParser parser;
  ZQName p(u("p"));
  parser.openElement(ZQName(), ZQN_html, ZQN_NS_XHTML, {}, false, {{ZQName(), ZQN_NS_XHTML}});
  parser.openElement(ZQN_svg, ZQN_svg, ZQN_NS_SVG, {}, false,
                     {{p, ZQN_NS_MATHML}, {ZQN_svg, ZQN_NS_SVG}});
  EXPECT_EQ(parser.getNamespaceCount(0), 2);
  EXPECT_EQ(parser.getNamespaceCount(1), 1);
  EXPECT_EQ(parser.getNamespaceCount(2), 2);
  EXPECT_EQ(parser.getNamespaceCount(3), 0);
  EXPECT_EQ(parser.getNamespaceCount(-1), 0);
  // In name order, not in the order of declaration: svg's number is below p's.
  ASSERT_LT(static_cast<int>(ZQName(ZQN_svg)), static_cast<int>(p));
  EXPECT_EQ(parser.getNamespacePrefix(0), ZQN_svg);
  EXPECT_EQ(parser.getNamespaceUri(0), ZQN_NS_SVG);
  EXPECT_EQ(parser.getNamespacePrefix(1), p);
  EXPECT_EQ(parser.getNamespaceUri(1), ZQN_NS_MATHML);
  EXPECT_EQ(parser.getNamespacePrefix(2), ZQName());
  EXPECT_EQ(parser.getNamespaceUri(-1), ZQName());
  EXPECT_EQ(parser.getNamespace(p), ZQN_NS_MATHML);
  // The default namespace comes from html's own name: svg has a prefix.
  EXPECT_EQ(parser.getNamespace(ZQName()), ZQN_NS_XHTML);
}

TEST(XmlParserNamespaces, ADepthWithoutDeclarationsHasNoPositions) {
  StateParser parser;
  parser.openElement(ZQName(), ZQN_svg, ZQName());
  EXPECT_EQ(parser.getNamespaceCount(1), 0);
  EXPECT_EQ(parser.getNamespacePrefix(0), ZQName());
  EXPECT_EQ(parser.getNamespaceUri(0), ZQName());
}

// ---- inputs ----

int streamsDeleted = 0;

class CountedStream : public std::istringstream {
 public:
  explicit CountedStream(const char* text = "") : std::istringstream(text) {}
  ~CountedStream() override { ++streamsDeleted; }
};

class XmlParserInput : public ::testing::Test {
 protected:
  void SetUp() override { streamsDeleted = 0; }
};

TEST_F(XmlParserInput, CloseDeletesAnOwnedStreamAndItsConverter) {
  StateParser parser;
  parser.setStreams(new CountedStream(), new CountedStream(), true);
  parser.closeStream();
  EXPECT_EQ(streamsDeleted, 2);
  EXPECT_EQ(parser.stream(), nullptr);
  parser.closeStream();  // no input: nothing
  EXPECT_EQ(streamsDeleted, 2);
}

TEST_F(XmlParserInput, CloseLeavesTheCallersStream) {
  CountedStream callers;
  {
    StateParser parser;
    parser.setStreams(&callers, new CountedStream(), false);
    parser.closeStream();
    EXPECT_EQ(streamsDeleted, 1);  // the converter only
    parser.setStreams(&callers, nullptr, false);
  }  // the destructor closes as well
  EXPECT_EQ(streamsDeleted, 1);
}

TEST_F(XmlParserInput, CloseUnwindsPushedInputs) {
  StateParser parser;
  parser.setStreams(new CountedStream(), nullptr, true);
  parser.setNames(u("doc.xml"), u("file:///d/"));
  parser.setPosition(7, 3);
  parser.pushInput(new CountedStream(), u("ent1.xml"), 1, 0);
  parser.pushInput(new CountedStream(), u("ent2.xml"), 1, 0);
  EXPECT_EQ(parser.getInputUri(), u("ent2.xml"));
  EXPECT_EQ(parser.inputDepth(), 2u);
  parser.closeStream();
  EXPECT_EQ(streamsDeleted, 3);
  EXPECT_EQ(parser.inputDepth(), 0u);
  EXPECT_EQ(parser.stream(), nullptr);
}

TEST_F(XmlParserInput, DestructorClosesTheInput) {
  {
    StateParser parser;
    parser.setStreams(new CountedStream(), nullptr, true);
    parser.pushInput(new CountedStream(), u("ent.xml"), 1, 0);
  }
  EXPECT_EQ(streamsDeleted, 2);
}

TEST_F(XmlParserInput, NamesAndPositionAreThoseOfTheInputReadNow) {
  StateParser parser;
  parser.setStreams(new CountedStream(), nullptr, true);
  parser.setNames(u("doc.xml"), u("file:///d/"));
  parser.setEncodingName(u("UTF-8"));
  parser.setPosition(7, 3);
  EXPECT_EQ(parser.getInputUri(), u("doc.xml"));
  EXPECT_EQ(parser.getBaseUri(), u("file:///d/"));
  EXPECT_EQ(parser.getInputEncoding(), u("UTF-8"));
  parser.pushInput(new CountedStream(), u("ent.xml"), 1, 0);
  parser.setEncodingName(u("ISO-8859-1"));
  EXPECT_EQ(parser.getInputUri(), u("ent.xml"));
  EXPECT_EQ(parser.getLineNumber(), 1);
  EXPECT_EQ(parser.getInputEncoding(), u("ISO-8859-1"));
  parser.closeStream();
  // Unwinding restored the outer input's state.
  EXPECT_EQ(parser.getInputUri(), u("doc.xml"));
  EXPECT_EQ(parser.getBaseUri(), u("file:///d/"));
  EXPECT_EQ(parser.getLineNumber(), 7);
  EXPECT_EQ(parser.getColumnNumber(), 3);
  EXPECT_EQ(parser.getInputEncoding(), u("UTF-8"));
}

// ---- entities ----

TEST(XmlParserEntities, TheFivePredefinedEntities) {
  StateParser parser;
  const ZQXmlEntityMap& general = parser.entities().generalEntities;
  ASSERT_EQ(general.size(), 5u);
  EXPECT_EQ(general.at(ZQN_lt), u("&#60;"));
  EXPECT_EQ(general.at(ZQN_gt), u(">"));
  EXPECT_EQ(general.at(ZQN_amp), u("&#38;"));
  EXPECT_EQ(general.at(ZQN_apos), u("'"));
  EXPECT_EQ(general.at(ZQN_quot), u("\""));
}

TEST(XmlParserEntities, DefineOverwrites) {
  StateParser parser;
  ZQName e(u("e"));
  parser.defineEntityReplacementText(e, u("x"));
  parser.defineEntityReplacementText(e, u("y"));
  EXPECT_EQ(parser.entity(e, false), u("y"));
  parser.defineEntityReplacementText(ZQN_lt, u("<"));
  EXPECT_EQ(parser.entity(ZQN_lt, false), u("<"));
}

TEST(XmlParserEntities, LookUpInternalFirstThenExternalOfTheSameKind) {
  StateParser parser;
  ZQName e(u("e"));
  parser.setExternalGeneralEntity(e, u("e.xml"));
  EXPECT_EQ(parser.entity(e, false), u("e.xml"));
  parser.defineEntityReplacementText(e, u("inline"));
  EXPECT_EQ(parser.entity(e, false), u("inline"));
  EXPECT_TRUE(parser.entity(e, true).isBogus());
  parser.setParameterEntity(e, u("p.ent"), true);
  EXPECT_EQ(parser.entity(e, true), u("p.ent"));
  parser.setParameterEntity(e, u("<!ENTITY x 'y'>"), false);
  EXPECT_EQ(parser.entity(e, true), u("<!ENTITY x 'y'>"));
}

TEST(XmlParserEntities, ResetReinstatesThePredefinedOnlyWhenTheCountDiffers) {
  StateParser parser;
  ZQName e(u("e"));
  parser.defineEntityReplacementText(e, u("x"));
  parser.setExternalGeneralEntity(e, u("e.xml"));
  parser.setParameterEntity(e, u("v"), false);
  parser.setParameterEntity(e, u("p.ent"), true);
  parser.reset();
  EXPECT_EQ(parser.entities().generalEntities.size(), 5u);
  EXPECT_TRUE(parser.entity(e, false).isBogus());
  EXPECT_TRUE(parser.entity(e, true).isBogus());
  EXPECT_TRUE(parser.entities().externalGeneralEntities.empty());
  // Five entries, one of them redefined: the table is left as it is.
  parser.defineEntityReplacementText(ZQN_lt, u("z"));
  parser.reset();
  EXPECT_EQ(parser.entity(ZQN_lt, false), u("z"));
}

TEST(XmlParserEntities, ResetKeepsTheSystemIdentifierOnly) {
  StateParser parser;
  parser.setDoctypeIds(u("-//A//B"), u("b.dtd"));
  parser.reset();
  EXPECT_TRUE(parser.getPubidLiteral().isEmpty());
  EXPECT_EQ(parser.getExternalDTD(), u("b.dtd"));
}

TEST(XmlParserEntities, SaveGivesADeepCopyThatRecoverRestoresAndFrees) {
  StateParser parser;
  ZQName e(u("e"));
  parser.defineEntityReplacementText(e, u("before"));
  parser.setParameterEntity(e, u("pv"), false);
  const void* saved = parser.saveEntityMaps();
  ASSERT_NE(saved, nullptr);
  parser.defineEntityReplacementText(e, u("after"));
  parser.defineEntityReplacementText(ZQName(u("f")), u("new"));
  parser.reset();
  EXPECT_TRUE(parser.entity(e, true).isBogus());
  parser.recoverEntityMaps(saved);
  EXPECT_EQ(saved, nullptr);
  EXPECT_EQ(parser.entity(e, false), u("before"));
  EXPECT_EQ(parser.entity(e, true), u("pv"));
  EXPECT_TRUE(parser.entity(ZQName(u("f")), false).isBogus());
  EXPECT_EQ(parser.entities().generalEntities.size(), 6u);
}

TEST(XmlParserEntities, RecoverOfNullDoesNothing) {
  StateParser parser;
  ZQName e(u("e"));
  parser.defineEntityReplacementText(e, u("kept"));
  const void* none = nullptr;
  parser.recoverEntityMaps(none);
  EXPECT_EQ(none, nullptr);
  EXPECT_EQ(parser.entity(e, false), u("kept"));
}

// ---- document type ----

TEST(XmlParserSyntax, IsXMLOnADocumentSettledAsXhtmlIsTrue) {
  StateParser parser;
  parser.setParserType(ZQN_xhtml, ZQN_html);
  EXPECT_TRUE(parser.isXHTMLSyntax());
  EXPECT_FALSE(parser.isHTMLSyntax());
  EXPECT_TRUE(parser.isXML());
}

TEST(XmlParserSyntax, IsXMLIsTheNegationOfHtml) {
  StateParser parser;
  EXPECT_TRUE(parser.isXML());
  parser.setParserType(ZQN_html, ZQN_html);
  EXPECT_FALSE(parser.isXML());
}

TEST(XmlParserSyntax, ParserTypeDecides) {
  StateParser parser;
  parser.setParserType(ZQN_html, ZQN_html);
  EXPECT_TRUE(parser.isHTMLSyntax());
  EXPECT_FALSE(parser.isXHTMLSyntax());
  parser.setParserType(ZQN_text, ZQN_html);
  EXPECT_FALSE(parser.isHTMLSyntax());
  EXPECT_FALSE(parser.isXHTMLSyntax());
  EXPECT_EQ(parser.settledType(), ZQName());
  parser.setParserType(ZQN_svg, ZQN_html);  // any other name is plain XML
  parser.setRoot(ZQN_html, ZQName());
  EXPECT_FALSE(parser.isHTMLSyntax());
  EXPECT_FALSE(parser.isXHTMLSyntax());
}

TEST(XmlParserSyntax, TextHtmlMediaTypeAnswersFalseThenTrue) {
  StateParser parser;
  ZQUri::ContentInfo info;
  info.contentType = u("text/html");
  parser.setStreamType(&info, UnicodeString());
  EXPECT_FALSE(parser.isHTMLSyntax());
  EXPECT_EQ(parser.settledType(), ZQN_html);
  EXPECT_TRUE(parser.isHTMLSyntax());
  EXPECT_FALSE(parser.isXHTMLSyntax());
}

TEST(XmlParserSyntax, XhtmlMediaTypeSettlesXhtml) {
  StateParser parser;
  ZQUri::ContentInfo info;
  info.contentType = u("application/xhtml+xml");
  parser.setStreamType(&info, u(".html"));
  EXPECT_FALSE(parser.isHTMLSyntax());
  EXPECT_EQ(parser.settledType(), ZQN_xhtml);
  EXPECT_TRUE(parser.isXHTMLSyntax());
}

TEST(XmlParserSyntax, OtherMediaTypesAreNotXhtmlButLeaveTheExtensionToHtml) {
  StateParser parser;
  ZQUri::ContentInfo info;
  info.contentType = u("application/xml");
  parser.setStreamType(&info, u(".xhtml"));
  EXPECT_FALSE(parser.isXHTMLSyntax());
  EXPECT_EQ(parser.settledType(), ZQName());
  parser.setStreamType(&info, u(".htm"));
  EXPECT_TRUE(parser.isHTMLSyntax());
}

TEST(XmlParserSyntax, ExtensionsUnderTheHtmlDefault) {
  for (const char* ext : {".xht", ".xhtm", ".xhtml"}) {
    StateParser parser;
    parser.setStreamType(nullptr, u(ext));
    EXPECT_TRUE(parser.isXHTMLSyntax()) << ext;
    EXPECT_EQ(parser.settledType(), ZQN_xhtml);
  }
  for (const char* ext : {".html", ".htm", ".HTM"}) {
    StateParser parser;
    parser.setStreamType(nullptr, u(ext));
    EXPECT_TRUE(parser.isHTMLSyntax()) << ext;
    EXPECT_EQ(parser.settledType(), ZQN_html);
  }
  StateParser parser;
  parser.setStreamType(nullptr, u(".xml"));
  EXPECT_FALSE(parser.isHTMLSyntax());
  EXPECT_EQ(parser.settledType(), ZQName());
}

TEST(XmlParserSyntax, ExtensionsCountOnlyUnderTheHtmlDefault) {
  StateParser parser;
  parser.setParserType(ZQN_auto, ZQN_xhtml);
  parser.setStreamType(nullptr, u(".html"));
  EXPECT_FALSE(parser.isHTMLSyntax());
  EXPECT_FALSE(parser.isXHTMLSyntax());
}

TEST(XmlParserSyntax, XmlDeclarationWithXhtmlRootUnderTheXhtmlDefault) {
  StateParser parser;
  parser.setParserType(ZQName(), ZQN_xhtml);  // 0 reads as auto
  parser.setXmlDecl(true);
  parser.setRoot(ZQN_html, ZQN_NS_XHTML);
  EXPECT_TRUE(parser.isXHTMLSyntax());
  StateParser other;
  other.setXmlDecl(true);
  other.setRoot(ZQN_html, ZQN_NS_XHTML);  // the html default: XML
  EXPECT_FALSE(other.isXHTMLSyntax());
  EXPECT_FALSE(other.isHTMLSyntax());
  EXPECT_EQ(other.settledType(), ZQName());
}

TEST(XmlParserSyntax, PublicIdentifierDecidesWithoutXmlDeclaration) {
  StateParser html;
  html.setDoctypeIds(u("-//W3C//DTD HTML 4.01//EN"), UnicodeString());
  EXPECT_TRUE(html.isHTMLSyntax());
  StateParser xhtml;
  xhtml.setDoctypeIds(u("-//W3C//DTD XHTML 1.0 Strict//EN"), UnicodeString());
  EXPECT_FALSE(xhtml.isHTMLSyntax());
  EXPECT_TRUE(xhtml.isXHTMLSyntax());
  StateParser declared;
  declared.setXmlDecl(true);
  declared.setDoctypeIds(u("-//W3C//DTD HTML 4.01//EN"), UnicodeString());
  EXPECT_FALSE(declared.isHTMLSyntax());
}

TEST(XmlParserSyntax, HtmlRootWithoutNamespaceOrDeclaration) {
  StateParser parser;
  EXPECT_FALSE(parser.isHTMLSyntax());
  parser.setRoot(ZQName(u("HTML")), ZQName());
  EXPECT_TRUE(parser.isHTMLSyntax());
  StateParser withNs;
  withNs.setRoot(ZQN_html, ZQN_NS_XHTML);
  EXPECT_FALSE(withNs.isHTMLSyntax());
  StateParser declared;
  declared.setXmlDecl(true);
  declared.setRoot(ZQN_html, ZQName());
  EXPECT_FALSE(declared.isHTMLSyntax());
}

// ---- errors ----

TEST(XmlParserErrors, PositionDescription) {
  StateParser parser;
  EXPECT_EQ(parser.getPositionDescription(), u("START_DOCUMENT."));
  parser.openElement(ZQName(), ZQN_svg, ZQName());
  parser.setNames(u("in.xml"), u("file:///b/"));
  parser.setPosition(3, 7);
  EXPECT_EQ(parser.getPositionDescription(), u("START_TAG, 'in.xml', Line 3, Col 7."));
  parser.setNames(UnicodeString(), u("file:///b/"));
  parser.setPosition(1, 0);
  parser.setTextEvent(ZQXmlParser::TEXT, u("t"));
  EXPECT_EQ(parser.getPositionDescription(), u("TEXT, 'file:///b/', Line 1, Col 0."));
  parser.setNames(UnicodeString(), UnicodeString());
  parser.setPosition(12, -1);
  EXPECT_EQ(parser.getPositionDescription(), u("TEXT, Line 12."));
  parser.setFeature(ZQXmlParser::FEATURE_NO_POSITION_DESCRIPTION, true);
  EXPECT_TRUE(parser.getPositionDescription().isEmpty());
}

TEST(XmlParserErrors, FatalCodeIsThrownWithThePositionInTheMessage) {
  StateParser parser;
  parser.setNames(u("in.xml"), UnicodeString());
  parser.setPosition(2, 5);
  parser.openElement(ZQName(), ZQN_svg, ZQName());
  parser.setPendingToken(ZQXmlParserImpl::TOKEN_TEXT);
  ZQError e = caught([&] { parser.throwError(130, UnicodeString(), UnicodeString()); });
  EXPECT_EQ(e.getErrorCode(), 130);
  EXPECT_EQ(e.getRawMessage(),
            u("Only one top level element is allowed.\nSTART_TAG, 'in.xml', Line 2, Col 5."));
  EXPECT_EQ(e.getSource(), u("ZQCommonNS::ZQXmlParserImpl"));
  EXPECT_EQ(e.getLineNumber(), -1);
  EXPECT_EQ(e.getColumnNumber(), -1);
  EXPECT_TRUE(e.getUri().isEmpty());
  // Left at "stop", so that the next call ends the document.
  EXPECT_EQ(parser.pendingToken(), ZQXmlParserImpl::TOKEN_STOP);
}

TEST(XmlParserErrors, WithoutPositionTextTheErrorCarriesThePosition) {
  StateParser parser;
  parser.setFeature(ZQXmlParser::FEATURE_NO_POSITION_DESCRIPTION, true);
  parser.setNames(u("in.xml"), UnicodeString());
  parser.setPosition(2, 5);
  ZQError e = caught([&] { parser.throwError(135, u("p"), UnicodeString()); });
  EXPECT_EQ(e.getRawMessage(), u("Undeclared namespace prefix: p"));
  EXPECT_EQ(e.getLineNumber(), 2);
  EXPECT_EQ(e.getColumnNumber(), 5);
  EXPECT_EQ(e.getUri(), u("in.xml"));
  EXPECT_EQ(e.getMessage(), u("Undeclared namespace prefix: p\nLine 2, Col 5, in.xml"));
}

TEST(XmlParserErrors, HtmlAndNonFatalFormsAreThrownUnderThePlainCodes) {
  struct Case {
    unsigned short raised;
    unsigned short thrown;
    const char* message;
  } cases[] = {
      {513, 134, "End tag 'a' does not match the start tag 'b'."},
      {514, 157, "Reference to undefined entity: %a;"},
      {515, 158, "Reference to undefined entity: &a;"},
      {897, 140, "Unexpected character: a"},
      {898, 141, "Unexpected whitespace after 'a'."},
  };
  for (const Case& c : cases) {
    StateParser parser;
    parser.setFeature(ZQXmlParser::FEATURE_NO_POSITION_DESCRIPTION, true);
    ZQError e = caught([&] { parser.throwError(c.raised, u("a"), u("b")); });
    EXPECT_EQ(e.getErrorCode(), c.thrown) << c.raised;
    EXPECT_EQ(e.getRawMessage(), u(c.message)) << c.raised;
  }
}

TEST(XmlParserErrors, NonFatalCodesAreQueuedWithoutACallback) {
  StateParser parser;
  parser.setPosition(1, 4);
  parser.setPendingToken(ZQXmlParserImpl::TOKEN_EMPTY_ELEMENT);
  const unsigned short codes[] = {516, 770, 771, 899};
  for (unsigned short code : codes)
    EXPECT_NO_THROW(parser.throwError(code, u("a"), UnicodeString())) << code;
  EXPECT_EQ(parser.pendingToken(), ZQXmlParserImpl::TOKEN_EMPTY_ELEMENT);
  ZQError e;
  ASSERT_TRUE(parser.popError(e));
  EXPECT_EQ(e.getErrorCode(), 516);
  EXPECT_EQ(e.getRawMessage(),
            u("External entity is not allowed: 'a'.\nSTART_DOCUMENT, Line 1, Col 4."));
  ASSERT_TRUE(parser.popError(e));
  EXPECT_EQ(e.getErrorCode(), 770);
  EXPECT_EQ(e.getRawMessage(),
            u("Unexpected whitespace after 'a'.\nSTART_DOCUMENT, Line 1, Col 4."));
  ASSERT_TRUE(parser.popError(e));
  EXPECT_EQ(e.getErrorCode(), 771);
  ASSERT_TRUE(parser.popError(e));
  EXPECT_EQ(e.getErrorCode(), 899);
  EXPECT_EQ(e.getRawMessage(),
            u("Unexpected character '--' in comment\nSTART_DOCUMENT, Line 1, Col 4."));
  EXPECT_FALSE(parser.popError(e));
  EXPECT_EQ(e.getErrorCode(), 899);  // untouched when the queue is empty
}

TEST(XmlParserErrors, CallbackGetsEveryCodeAsItStands) {
  StateParser parser;
  std::vector<ZQError> seen;
  parser.setCallbackError(noteError, &seen);
  parser.setNames(u("in.xml"), u("file:///b/"));
  parser.setPosition(9, 2);
  parser.setPendingToken(ZQXmlParserImpl::TOKEN_START_TAG);
  EXPECT_NO_THROW(parser.throwError(130, UnicodeString(), UnicodeString()));
  EXPECT_NO_THROW(parser.throwError(513, u("p"), u("div")));
  EXPECT_NO_THROW(parser.throwError(770, u("/"), UnicodeString()));
  EXPECT_EQ(parser.pendingToken(), ZQXmlParserImpl::TOKEN_START_TAG);
  ASSERT_EQ(seen.size(), 3u);
  EXPECT_EQ(seen[0].getErrorCode(), 130);
  EXPECT_EQ(seen[0].getRawMessage(), u("Only one top level element is allowed."));
  EXPECT_EQ(seen[0].getSource(), u("ZQCommonNS::ZQXmlParserImpl"));
  EXPECT_EQ(seen[0].getLineNumber(), 9);
  EXPECT_EQ(seen[0].getColumnNumber(), 2);
  EXPECT_EQ(seen[0].getUri(), u("in.xml"));
  EXPECT_EQ(seen[1].getErrorCode(), 513);
  EXPECT_EQ(seen[1].getRawMessage(), u("End tag 'p' does not match the start tag 'div'."));
  EXPECT_EQ(seen[2].getErrorCode(), 770);
  ZQError e;
  EXPECT_FALSE(parser.popError(e));  // nothing is queued under a callback
}

struct Thrower {
  StateParser* parser;
  int tokenSeen = -1;
};

void throwFromCallback(const ZQError& error, void* data) {
  Thrower* thrower = static_cast<Thrower*>(data);
  thrower->tokenSeen = thrower->parser->pendingToken();
  throw error;
}

TEST(XmlParserErrors, ACallbackMayThrowAndLeavesTheParserStopped) {
  StateParser parser;
  Thrower thrower{&parser};
  parser.setCallbackError(throwFromCallback, &thrower);
  parser.setPendingToken(ZQXmlParserImpl::TOKEN_TEXT);
  ZQError e = caught([&] { parser.throwError(771, UnicodeString(), UnicodeString()); });
  EXPECT_EQ(e.getErrorCode(), 771);  // even a non-fatal code, as the callback chose
  EXPECT_EQ(thrower.tokenSeen, ZQXmlParserImpl::TOKEN_STOP);
  EXPECT_EQ(parser.pendingToken(), ZQXmlParserImpl::TOKEN_STOP);
}

TEST(XmlParserErrors, PushErrorStampsThePositionAndPopErrorIsFirstInFirstOut) {
  StateParser parser;
  parser.setNames(u("doc.xml"), u("file:///b/"));
  parser.setPosition(5, 6);
  parser.pushError(ZQError(186, u("Invalid element name: x"), u("src"), 1, 1, u("other.xml")));
  parser.setPosition(8, 1);
  parser.pushError(ZQError(187, u("second"), UnicodeString(), -1, -1, UnicodeString()));
  ZQError e;
  ASSERT_TRUE(parser.popError(e));
  EXPECT_EQ(e.getErrorCode(), 186);
  EXPECT_EQ(e.getRawMessage(), u("Invalid element name: x"));
  EXPECT_EQ(e.getSource(), u("src"));
  EXPECT_EQ(e.getLineNumber(), 5);
  EXPECT_EQ(e.getColumnNumber(), 6);
  EXPECT_EQ(e.getUri(), u("doc.xml"));
  ASSERT_TRUE(parser.popError(e));
  EXPECT_EQ(e.getRawMessage(), u("second"));
  EXPECT_EQ(e.getLineNumber(), 8);
  EXPECT_FALSE(parser.popError(e));
}

TEST(XmlParserErrors, ErrorsRaisedForTheDocumentUseTheParsersPosition) {
  StateParser parser;
  parser.setNames(u("doc.xml"), UnicodeString());
  parser.setPosition(3, 1);
  parser.setEvent(ZQXmlParser::START_TAG);
  ZQError e = caught([&] { parser.throwError(186, u("1x"), UnicodeString()); });
  EXPECT_EQ(e.getRawMessage(), u("Invalid element name: 1x\nSTART_TAG, 'doc.xml', Line 3, Col 1."));
  e = caught([&] { parser.throwError(187, u("width"), u("-1")); });
  EXPECT_EQ(e.getErrorCode(), 187);
  EXPECT_EQ(e.getRawMessage(),
            u("Invalid attribute value: width=\"-1\"\nSTART_TAG, 'doc.xml', Line 3, Col 1."));
}

TEST(XmlParserErrors, MessageOfEveryCode) {
  struct Row {
    unsigned short code;
    const char* text;
  };
  // Arguments "A" and "B" throughout.
  const Row rows[] = {
      {129, "Missing end tag."},
      {130, "Only one top level element is allowed."},
      {131, "Invalid root tag name after '<!DOCTYPE'."},
      {132, "Invalid start tag name."},
      {133, "Invalid end tag name."},
      {134, "End tag 'A' does not match the start tag 'B'."},
      {513, "End tag 'A' does not match the start tag 'B'."},
      {135, "Undeclared namespace prefix: A"},
      {136, "Duplicate attribute: A"},
      {137, "Invalid attribute name: A"},
      {138, "Missing '=' after attribute name."},
      {139, "Missing whitespace between attributes."},
      {140, "Unexpected character: A"},
      {897, "Unexpected character: A"},
      {141, "Unexpected whitespace after 'A'."},
      {770, "Unexpected whitespace after 'A'."},
      {898, "Unexpected whitespace after 'A'."},
      {142, "Unexpected text at top level of the XML document: A"},
      {143, "Unexpected '<![A'."},
      {144, "Unexpected ']]>'."},
      {145, "Unexpected end of input while looking for CDATA section terminator ']]>'."},
      {146, "Unexpected end of input while looking for comment terminator '-->'."},
      {147, "Unexpected character '--' in comment"},
      {771, "Unexpected character '--' in comment"},
      {899, "Unexpected character '--' in comment"},
      {148, "Unexpected DOCTYPE declaration outside of prolog."},
      {149, "Cannot have multiple DOCTYPE declarations."},
      {150, "Missing whitespace after 'A'."},
      {151, "External ID is expected after 'A'."},
      {152, "PubidLiteral is expected after 'A'."},
      {153, "SystemLiteral is expected after 'A'."},
      {154, "Unexpected end of input in A declaration."},
      {155, "Empty entity name."},
      {156, "Invalid character in entity reference: A;"},
      {157, "Reference to undefined entity: %A;"},
      {514, "Reference to undefined entity: %A;"},
      {158, "Reference to undefined entity: &A;"},
      {515, "Reference to undefined entity: &A;"},
      {159, "Entity name is expected after 'A'."},
      {160, "NDATA is expected after 'A'."},
      {161, "Unexpected XML declaration."},
      {162, "Missing 'version=' after '<?xml ' in XML declaration."},
      {163, "Missing '=' after 'A' in XML declaration."},
      {164, "Missing whitespace after 'A' in XML declaration."},
      {165, "Missing whitespace before 'A' in XML declaration."},
      {166, "Unsupported XML version: A"},
      {167, "Invalid standalone declaration in XML declaration."},
      {168, "Invalid syntax in CDATA section."},
      {169, "Invalid syntax in comment."},
      {170, "Unexpected '<!A'."},
      {171, "The name 'xml' must be lower case: <?A"},
      {172, "Missing whitespace after PI target: <?A"},
      {173, "Unexpected end of input while looking for PI terminator '?>'."},
      {174, "Missing quotation character (\" or ')."},
      {175, "Unexpected end of input while looking for literal terminator (A)."},
      {176, "Unexpected '<' in attribute value."},
      {177, "Unexpected whitespace in character reference: &#A;"},
      {178, "Invalid character in character reference: &#A;"},
      {179, "Invalid Unicode character: A"},
      {180, "Invalid character."},
      {181, "Unknown or unsupported encoding: A."},
      {182, "No-XML document."},
      {185, "Conflict encoding: A."},
      {186, "Invalid element name: A"},
      {187, "Invalid attribute value: A=\"B\""},
      {188, "External entity is not allowed: 'A'."},
      {516, "External entity is not allowed: 'A'."},
      {189, "Empty attribute name: A"},
      {183, "XML parser error."},
      {184, "XML parser error."},
      {128, "XML parser error."},
      {190, "Entity expansion limit exceeded: &A;"},
      {191, "XML parser error."},
      {512, "XML parser error."},
      {0, "XML parser error."},
      {65535, "XML parser error."},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(formatXmlParserMessage(row.code, u("A"), u("B")), u(row.text)) << row.code;
    // The funnel uses the same words.
    StateParser parser;
    std::vector<ZQError> seen;
    parser.setCallbackError(noteError, &seen);
    parser.throwError(row.code, u("A"), u("B"));
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].getRawMessage(), u(row.text)) << row.code;
    EXPECT_EQ(seen[0].getErrorCode(), row.code);
  }
}

TEST(XmlParserErrors, LevelsDecideBetweenThrowAndQueue) {
  // Without a callback, codes whose level is fatal are thrown; the others are queued.
  for (unsigned short code : {129, 189, 186, 187, 516, 770, 771, 899}) {
    StateParser parser;
    parser.setFeature(ZQXmlParser::FEATURE_NO_POSITION_DESCRIPTION, true);
    bool thrown = false;
    try {
      parser.throwError(code, u("a"), u("b"));
    } catch (const ZQError& e) {
      thrown = true;
      EXPECT_EQ(e.getErrorCode(), code);
    }
    ZQError queued;
    EXPECT_EQ(thrown, getErrorLevel(code) == 0) << code;
    EXPECT_EQ(parser.popError(queued), !thrown) << code;
  }
}

}  // namespace
