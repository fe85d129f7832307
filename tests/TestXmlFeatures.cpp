// The ten switches of the pull parser, each shown on a document read with it off and on.
#include <gtest/gtest.h>

#include <unicode/ucnv.h>

#include <sstream>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "common/ZQError.h"
#include "common/ZQName.h"
#include "common/ZQString.h"
#include "common/ZQXmlParser.h"

using namespace ZQCommonNS;
using zqtest::utf8;

namespace {

typedef ZQXmlParser P;

UnicodeString U(const char* text) { return UnicodeString::fromUTF8(text); }

std::string dataPath(const char* name) { return std::string(ZQ_TEST_DATA_DIR) + "/xml/" + name; }

// Bytes of `text` in the ICU converter `name`.
std::string encode(const char* name, const UnicodeString& text) {
  UErrorCode status = U_ZERO_ERROR;
  UConverter* conv = ucnv_open(name, &status);
  EXPECT_TRUE(U_SUCCESS(status)) << name;
  if (U_FAILURE(status)) return std::string();
  std::string out(static_cast<size_t>(text.length()) * 4 + 16, '\0');
  int32_t n = ucnv_fromUChars(conv, out.data(), static_cast<int32_t>(out.size()), text.getBuffer(),
                              text.length(), &status);
  ucnv_close(conv);
  EXPECT_TRUE(U_SUCCESS(status)) << name;
  out.resize(static_cast<size_t>(n));
  return out;
}

// A parser with the features asked for, over a document in memory or a file of the test data.
struct FeatureRun {
  std::istringstream in;
  ZQPtr<P> parser = P::createXmlParser();

  FeatureRun(const std::string& bytes, const std::vector<P::Feature>& on)
      : in(bytes, std::ios::binary) {
    for (P::Feature f : on) parser->setFeature(f, true);
    parser->setInput(in, UnicodeString(), UnicodeString());
  }
  FeatureRun(const char* file, const std::vector<P::Feature>& on, bool) {
    for (P::Feature f : on) parser->setFeature(f, true);
    parser->setInput(U(dataPath(file).c_str()), UnicodeString(), UnicodeString());
  }

  // Events under next() as text: "S:name", "E:name", "T:text", "PI:target:text", "END".
  std::vector<std::string> events() {
    std::vector<std::string> out;
    for (int i = 0; i < 1000; ++i) {
      P::EventType t = parser->next();
      switch (t) {
        case P::START_TAG:
          out.push_back("S:" + utf8(parser->getName().toString()));
          break;
        case P::END_TAG:
          out.push_back("E:" + utf8(parser->getName().toString()));
          break;
        case P::TEXT:
          out.push_back("T:" + utf8(parser->getText()));
          break;
        case P::PROCESSING_INSTRUCTION:
          out.push_back("PI:" + utf8(parser->getName().toString()) + ":" + utf8(parser->getText()));
          break;
        case P::END_DOCUMENT:
          out.push_back("END");
          return out;
        default:
          out.push_back("?" + std::to_string(static_cast<int>(t)));
          break;
      }
    }
    ADD_FAILURE() << "no END_DOCUMENT";
    return out;
  }

  // Code of the ZQError that reading to the end throws, 0 if none.
  int thrownCode() {
    try {
      for (int i = 0; i < 1000; ++i)
        if (parser->next() == P::END_DOCUMENT) return 0;
    } catch (const ZQError& e) {
      return e.getErrorCode();
    }
    return -1;
  }
};

typedef std::vector<std::string> Events;

// The message without the position text that a thrown or queued error carries after a line
// feed.
std::string firstLine(const ZQError& e) {
  std::string m = utf8(e.getRawMessage());
  return m.substr(0, m.find('\n'));
}

// ---- construction ----

TEST(XmlFeatures, AllOffAfterConstructionAndOutOfRangeIgnored) {
  ZQPtr<P> parser = P::createXmlParser();
  for (int i = 0; i < P::FEATURE_COUNT; ++i) EXPECT_FALSE(parser->getFeature(P::Feature(i))) << i;
  parser->setFeature(P::Feature(10), true);
  parser->setFeature(P::Feature(-1), true);
  EXPECT_FALSE(parser->getFeature(P::Feature(10)));
  EXPECT_FALSE(parser->getFeature(P::Feature(-1)));
  for (int i = 0; i < P::FEATURE_COUNT; ++i) EXPECT_FALSE(parser->getFeature(P::Feature(i))) << i;
  parser->setFeature(P::FEATURE_REPORT_PI, true);
  EXPECT_TRUE(parser->getFeature(P::FEATURE_REPORT_PI));
  parser->setFeature(P::FEATURE_REPORT_PI, false);
  EXPECT_FALSE(parser->getFeature(P::FEATURE_REPORT_PI));
}

// ---- 0: skip the external DTD ----

TEST(XmlFeatures, SkipExternalDtdOffReadsItsEntities) {
  FeatureRun r("feature-dtd.xml", {}, true);
  EXPECT_EQ(r.events(), (Events{"S:a", "T:from the DTD", "E:a", "END"}));
}

TEST(XmlFeatures, SkipExternalDtdOnLeavesItsEntitiesUndefined) {
  FeatureRun r("feature-dtd.xml", {P::FEATURE_SKIP_EXTERNAL_DTD}, true);
  EXPECT_EQ(r.thrownCode(), 158);
}

TEST(XmlFeatures, SkipExternalDtdOffChoosesBuiltinSetBySystemId) {
  FeatureRun r(
      "<!DOCTYPE a SYSTEM 'http://www.w3.org/TR/xhtml1/DTD/xhtml1-strict.dtd'><a>&nbsp;</a>", {});
  EXPECT_EQ(r.events(), (Events{"S:a", "T:\xC2\xA0", "E:a", "END"}));
}

TEST(XmlFeatures, SkipExternalDtdOnChoosesNoSet) {
  FeatureRun r(
      "<!DOCTYPE a SYSTEM 'http://www.w3.org/TR/xhtml1/DTD/xhtml1-strict.dtd'><a>&nbsp;</a>",
      {P::FEATURE_SKIP_EXTERNAL_DTD});
  EXPECT_EQ(r.thrownCode(), 158);
}

TEST(XmlFeatures, SkipExternalDtdOffAddsMathmlForMathRoot) {
  FeatureRun r("<math xmlns='http://www.w3.org/1998/Math/MathML'><mi>&alpha;</mi></math>", {});
  EXPECT_EQ(r.events(), (Events{"S:math", "S:mi", "T:\xCE\xB1", "E:mi", "E:math", "END"}));
}

TEST(XmlFeatures, SkipExternalDtdOnAddsNoMathml) {
  FeatureRun r("<math xmlns='http://www.w3.org/1998/Math/MathML'><mi>&alpha;</mi></math>",
               {P::FEATURE_SKIP_EXTERNAL_DTD});
  EXPECT_EQ(r.thrownCode(), 158);
}

TEST(XmlFeatures, SkipExternalDtdOffInternalSubsetWins) {
  FeatureRun r("feature-dtd-override.xml", {}, true);
  EXPECT_EQ(r.events(), (Events{"S:a", "T:internal", "E:a", "END"}));
  // Read a second time, now from the cache of external DTDs: the same.
  FeatureRun again("feature-dtd-override.xml", {}, true);
  EXPECT_EQ(again.events(), (Events{"S:a", "T:internal", "E:a", "END"}));
  FeatureRun plain("feature-dtd.xml", {}, true);
  EXPECT_EQ(plain.events(), (Events{"S:a", "T:from the DTD", "E:a", "END"}));
}

TEST(XmlFeatures, SkipExternalDtdOffMathmlInsideMathOnly) {
  const char* doc =
      "<r><math xmlns='http://www.w3.org/1998/Math/MathML'><mi>&alpha;</mi></math>&alpha;</r>";
  FeatureRun r(doc, {});
  ASSERT_EQ(r.parser->next(), P::START_TAG);
  ASSERT_EQ(r.parser->next(), P::START_TAG);
  ASSERT_EQ(r.parser->next(), P::START_TAG);
  ASSERT_EQ(r.parser->next(), P::TEXT);
  EXPECT_EQ(utf8(r.parser->getText()), "\xCE\xB1");
  ASSERT_EQ(r.parser->next(), P::END_TAG);
  ASSERT_EQ(r.parser->next(), P::END_TAG);
  // Past the end of `math` the set is gone again.
  EXPECT_EQ(r.thrownCode(), 158);
}

TEST(XmlFeatures, SkipExternalDtdOnNoMathmlInsideMath) {
  FeatureRun r("<r><math xmlns='http://www.w3.org/1998/Math/MathML'><mi>&alpha;</mi></math></r>",
               {P::FEATURE_SKIP_EXTERNAL_DTD});
  EXPECT_EQ(r.thrownCode(), 158);
}

TEST(XmlFeatures, SkipExternalDtdStillKeepsIdentifiers) {
  FeatureRun r("feature-dtd-missing.xml", {P::FEATURE_SKIP_EXTERNAL_DTD}, true);
  EXPECT_EQ(r.events(), (Events{"S:a", "T:ok", "E:a", "END"}));
  EXPECT_EQ(utf8(r.parser->getExternalDTD()), "feature-no-such.dtd");
}

// ---- 1: ignore undefined entities ----

TEST(XmlFeatures, UndefinedEntityOffFails) {
  FeatureRun r("<a>x&foo;y</a>", {});
  EXPECT_EQ(r.thrownCode(), 158);
}

TEST(XmlFeatures, UndefinedEntityOnReadsAsEmpty) {
  FeatureRun r("<a>x&foo;y</a>", {P::FEATURE_IGNORE_UNDEFINED_ENTITIES});
  EXPECT_EQ(r.events(), (Events{"S:a", "T:xy", "E:a", "END"}));
  ZQError e;
  EXPECT_FALSE(r.parser->popError(e));
}

TEST(XmlFeatures, UndefinedEntityInAttributeOnReadsAsEmpty) {
  FeatureRun r("<a b='x&foo;y'/>", {P::FEATURE_IGNORE_UNDEFINED_ENTITIES});
  ASSERT_EQ(r.parser->next(), P::START_TAG);
  EXPECT_EQ(utf8(r.parser->getAttributeValue(0)), "xy");
}

TEST(XmlFeatures, UndefinedEntityTextUnderNextToken) {
  {
    FeatureRun r("<a>&foo;</a>", {});
    ASSERT_EQ(r.parser->nextToken(), P::START_TAG);
    ASSERT_EQ(r.parser->nextToken(), P::ENTITY_REF);
    EXPECT_EQ(utf8(r.parser->getName().toString()), "foo");
    EXPECT_TRUE(r.parser->getText().isBogus());
  }
  {
    FeatureRun r("<a>&foo;</a>", {P::FEATURE_IGNORE_UNDEFINED_ENTITIES});
    ASSERT_EQ(r.parser->nextToken(), P::START_TAG);
    ASSERT_EQ(r.parser->nextToken(), P::ENTITY_REF);
    UnicodeString text = r.parser->getText();
    EXPECT_FALSE(text.isBogus());
    EXPECT_TRUE(text.isEmpty());
  }
}

TEST(XmlFeatures, MissingExternalParameterEntityOffFails) {
  FeatureRun r("feature-param-missing.xml", {}, true);
  EXPECT_EQ(r.thrownCode(), 67);
}

TEST(XmlFeatures, MissingExternalParameterEntityOnIsSwallowed) {
  FeatureRun r("feature-param-missing.xml", {P::FEATURE_IGNORE_UNDEFINED_ENTITIES}, true);
  EXPECT_EQ(r.events(), (Events{"S:a", "T:ok", "E:a", "END"}));
}

// ---- 2: allow an undeclared attribute prefix ----

TEST(XmlFeatures, UndeclaredAttributePrefixOffFails) {
  FeatureRun r("<a p:x='1'/>", {});
  EXPECT_EQ(r.thrownCode(), 135);
}

TEST(XmlFeatures, UndeclaredAttributePrefixOnTakesPrefixAsNamespace) {
  FeatureRun r("<a p:x='1'/>", {P::FEATURE_ALLOW_UNDECLARED_PREFIX});
  ASSERT_EQ(r.parser->next(), P::START_TAG);
  ASSERT_EQ(r.parser->getAttributeCount(), 1);
  EXPECT_EQ(utf8(r.parser->getAttributePrefix(0).toString()), "p");
  EXPECT_EQ(utf8(r.parser->getAttributeNamespace(0).toString()), "p");
  EXPECT_EQ(utf8(r.parser->getAttributeName(0).toString()), "x");
  EXPECT_EQ(utf8(r.parser->getAttributeValue(0)), "1");
  EXPECT_EQ(r.parser->next(), P::END_TAG);
  EXPECT_EQ(r.parser->next(), P::END_DOCUMENT);
  ZQError e;
  EXPECT_FALSE(r.parser->popError(e));
}

TEST(XmlFeatures, UndeclaredPrefixOnDoesNotCoverElements) {
  FeatureRun r("<p:a/>", {P::FEATURE_ALLOW_UNDECLARED_PREFIX});
  EXPECT_EQ(r.thrownCode(), 135);
}

// ---- 3: ignore errors of the external DTD ----

TEST(XmlFeatures, UnreadableDtdOffFails) {
  FeatureRun r("feature-dtd-missing.xml", {}, true);
  EXPECT_EQ(r.thrownCode(), 67);
}

TEST(XmlFeatures, UnreadableDtdOnIsSwallowed) {
  FeatureRun r("feature-dtd-missing.xml", {P::FEATURE_IGNORE_DTD_ERRORS}, true);
  EXPECT_EQ(r.events(), (Events{"S:a", "T:ok", "E:a", "END"}));
}

TEST(XmlFeatures, BrokenDtdOffFails) {
  FeatureRun r("feature-dtd-broken.xml", {}, true);
  EXPECT_EQ(r.thrownCode(), 151);
}

TEST(XmlFeatures, BrokenDtdOnIsSwallowed) {
  FeatureRun r("feature-dtd-broken.xml", {P::FEATURE_IGNORE_DTD_ERRORS}, true);
  EXPECT_EQ(r.events(), (Events{"S:a", "T:ok", "E:a", "END"}));
}

void countErrors(const ZQError&, void* data) { ++*static_cast<int*>(data); }

// The DTD is read with the document's callback taken away, so its error is thrown even
// when the document has a callback.
TEST(XmlFeatures, BrokenDtdErrorBypassesTheCallback) {
  FeatureRun r("feature-dtd-broken.xml", {}, true);
  int calls = 0;
  r.parser->setCallbackError(countErrors, &calls);
  EXPECT_EQ(r.thrownCode(), 151);
  EXPECT_EQ(calls, 0);
}

// ---- 4: allow an unknown encoding ----

TEST(XmlFeatures, UnknownEncodingOffFails) {
  FeatureRun r("<?xml version='1.0' encoding='x-no-such-encoding'?><a>\xC3\xA9</a>", {});
  EXPECT_EQ(r.thrownCode(), 181);
}

TEST(XmlFeatures, UnknownEncodingOnReadsBytesUnderTheKindInForce) {
  FeatureRun r("<?xml version='1.0' encoding='x-no-such-encoding'?><a>\xC3\xA9</a>",
               {P::FEATURE_ALLOW_UNKNOWN_ENCODING});
  EXPECT_EQ(r.events(), (Events{"S:a", "T:\xC3\xA9", "E:a", "END"}));
}

// ---- 5: built-in encodings only ----

const char* kJapanese = "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E";  // three kanji

TEST(XmlFeatures, ConverterEncodingOffIsDecoded) {
  std::string doc =
      "<?xml version='1.0' encoding='Shift_JIS'?><a>" + encode("Shift_JIS", U(kJapanese)) + "</a>";
  FeatureRun r(doc, {});
  EXPECT_EQ(r.events(), (Events{"S:a", std::string("T:") + kJapanese, "E:a", "END"}));
}

TEST(XmlFeatures, ConverterEncodingOnIsUnknown) {
  std::string doc =
      "<?xml version='1.0' encoding='Shift_JIS'?><a>" + encode("Shift_JIS", U(kJapanese)) + "</a>";
  FeatureRun r(doc, {P::FEATURE_BUILTIN_ENCODINGS_ONLY});
  try {
    while (r.parser->next() != P::END_DOCUMENT) {
    }
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 181);
    EXPECT_EQ(firstLine(e), "Unknown or unsupported encoding: Shift_JIS.");
  }
}

TEST(XmlFeatures, BuiltinEncodingOnStillDecoded) {
  std::string doc = "<?xml version='1.0' encoding='ISO-8859-2'?><a>\xA3\xF3\x64\xBC</a>";
  FeatureRun r(doc, {P::FEATURE_BUILTIN_ENCODINGS_ONLY});
  EXPECT_EQ(r.events(), (Events{"S:a", "T:\xC5\x81\xC3\xB3\x64\xC5\xBA", "E:a", "END"}));
}

// ---- 6: no position description ----

TEST(XmlFeatures, PositionDescriptionOffDescribesEvent) {
  FeatureRun r("<a>\n<b/></a>", {});
  ASSERT_EQ(r.parser->next(), P::START_TAG);
  ASSERT_EQ(r.parser->next(), P::TEXT);
  ASSERT_EQ(r.parser->next(), P::START_TAG);
  EXPECT_EQ(utf8(r.parser->getPositionDescription()), "START_TAG, Line 2, Col 4.");
}

TEST(XmlFeatures, PositionDescriptionOnIsEmptyAndErrorCarriesPosition) {
  FeatureRun r("<a>\n<b></c></a>", {P::FEATURE_NO_POSITION_DESCRIPTION});
  ASSERT_EQ(r.parser->next(), P::START_TAG);
  EXPECT_TRUE(r.parser->getPositionDescription().isEmpty());
  try {
    while (r.parser->next() != P::END_DOCUMENT) {
    }
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 134);
    EXPECT_EQ(utf8(e.getRawMessage()), "End tag 'c' does not match the start tag 'b'.");
    EXPECT_EQ(e.getLineNumber(), 2);
    EXPECT_EQ(e.getColumnNumber(), 7);
  }
}

// ---- 7: no character check ----

TEST(XmlFeatures, CharacterCheckOffRejectsReference) {
  FeatureRun r("<a>&#1;</a>", {});
  EXPECT_EQ(r.thrownCode(), 179);
}

TEST(XmlFeatures, CharacterCheckOnAcceptsReference) {
  FeatureRun r("<a>&#1;</a>", {P::FEATURE_NO_CHARACTER_CHECK});
  EXPECT_EQ(r.events(), (Events{"S:a", "T:\x01", "E:a", "END"}));
}

TEST(XmlFeatures, CharacterCheckOffRejectsRawCharacter) {
  FeatureRun r("<a>x\x02y</a>", {});
  EXPECT_EQ(r.thrownCode(), 179);
}

TEST(XmlFeatures, CharacterCheckOnAcceptsRawCharacter) {
  FeatureRun r("<a>x\x02y</a>", {P::FEATURE_NO_CHARACTER_CHECK});
  EXPECT_EQ(r.events(), (Events{"S:a", "T:x\x02y", "E:a", "END"}));
}

// ---- 8: report processing instructions ----

TEST(XmlFeatures, ReportPiOffMergesTextAroundIt) {
  FeatureRun r("<a>x<?pi  data ?>y</a>", {});
  EXPECT_EQ(r.events(), (Events{"S:a", "T:xy", "E:a", "END"}));
}

TEST(XmlFeatures, ReportPiOnStopsAtIt) {
  FeatureRun r("<a>x<?pi  data ?>y</a>", {P::FEATURE_REPORT_PI});
  EXPECT_EQ(r.events(), (Events{"S:a", "T:x", "PI:pi:data", "T:y", "E:a", "END"}));
  EXPECT_EQ(utf8(r.parser->getTarget().toString()), "pi");
}

TEST(XmlFeatures, ReportPiOnBeforeRoot) {
  FeatureRun r("<?pi a?><a/>", {P::FEATURE_REPORT_PI});
  EXPECT_EQ(r.events(), (Events{"PI:pi:a", "S:a", "E:a", "END"}));
}

TEST(XmlFeatures, ReportPiOffBeforeRoot) {
  FeatureRun r("<?pi a?><a/>", {});
  EXPECT_EQ(r.events(), (Events{"S:a", "E:a", "END"}));
}

TEST(XmlFeatures, ReportPiReadWhenNeeded) {
  FeatureRun r("<a><?p1 x?><?p2 y?></a>", {});
  ASSERT_EQ(r.parser->next(), P::START_TAG);
  r.parser->setFeature(P::FEATURE_REPORT_PI, true);
  ASSERT_EQ(r.parser->next(), P::PROCESSING_INSTRUCTION);
  EXPECT_EQ(utf8(r.parser->getName().toString()), "p1");
  r.parser->setFeature(P::FEATURE_REPORT_PI, false);
  EXPECT_EQ(r.parser->next(), P::END_TAG);
}

TEST(XmlFeatures, NextTokenReportsPiWhateverTheFeature) {
  FeatureRun r("<a><?pi x?></a>", {});
  ASSERT_EQ(r.parser->nextToken(), P::START_TAG);
  EXPECT_EQ(r.parser->nextToken(), P::PROCESSING_INSTRUCTION);
}

// ---- 9: forbid external entities ----

TEST(XmlFeatures, ExternalEntityOffIsRead) {
  FeatureRun r("feature-entity.xml", {}, true);
  EXPECT_EQ(r.events(), (Events{"S:a", "T:[external text]", "E:a", "END"}));
  ZQError e;
  EXPECT_FALSE(r.parser->popError(e));
}

TEST(XmlFeatures, ExternalEntityOnIsDroppedAndQueued) {
  FeatureRun r("feature-entity.xml", {P::FEATURE_FORBID_EXTERNAL_ENTITIES}, true);
  EXPECT_EQ(r.events(), (Events{"S:a", "T:[]", "E:a", "END"}));
  ZQError e;
  ASSERT_TRUE(r.parser->popError(e));
  EXPECT_EQ(e.getErrorCode(), 516);
  EXPECT_EQ(firstLine(e), "External entity is not allowed: '<!ENTITY e ... \"feature-ext.ent\"'.");
  EXPECT_FALSE(r.parser->popError(e));
}

TEST(XmlFeatures, ExternalEntityInAttributeIsNotOpened) {
  // In an attribute the value of an external entity is its system identifier, scanned in
  // place, whatever the switch says.
  for (bool forbid : {false, true}) {
    std::vector<P::Feature> on;
    if (forbid) on.push_back(P::FEATURE_FORBID_EXTERNAL_ENTITIES);
    FeatureRun r("<!DOCTYPE a [<!ENTITY e SYSTEM 'feature-ext.ent'>]><a b='&e;'/>", on);
    ASSERT_EQ(r.parser->next(), P::START_TAG) << forbid;
    EXPECT_EQ(utf8(r.parser->getAttributeValue(0)), "feature-ext.ent") << forbid;
  }
}

}  // namespace
