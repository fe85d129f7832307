// The default run of zqtool: shows the library at work on an embedded sample.
#include <iostream>
#include <sstream>
#include <string>

#include "ZQToolCommand.h"
#include "ZQToolTree.h"

using namespace ZQCommonNS;

namespace zqtool {

namespace {

// A small style sheet as a formatter meets it: property names, values with units, colours and
// a reference to an image, resolved against the document's URI.
struct Declaration {
  const char16_t* property;
  float number;
  ZQUnitType unit;
};
const Declaration kLengths[] = {{u"font-size", 12.0f, ZQUNIT_PT},
                                {u"margin-top", 1.0f, ZQUNIT_CM},
                                {u"start-indent", 0.5f, ZQUNIT_IN},
                                {u"my-own-indent", 3.0f, ZQUNIT_MM}};
const char16_t* const kColours[] = {u"rebeccapurple", u"transparent", u"currentColor"};
const char16_t* const kDocument = u"file:///C:/books/chapter1/index.fo";
const char16_t* const kImage = u"../images/cover image.png#page=2";
const UChar32 kCharacters[] = {0x41, 0x3042, 0xFF76, 0x2F00};

// A small book with most of what a parser meets: an internal subset with an entity and an
// attribute list (read past: the parser keeps only entities, so no default appears), a default
// and a prefixed namespace, references, CDATA, a comment and processing instructions.
const char kSampleName[] = "sample-book.xml";
const char kSample[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE book [
  <!ENTITY press "ZQ Press &amp; Sons">
  <!ATTLIST chapter status CDATA "draft">
]>
<?xml-stylesheet type="text/css" href="book.css"?>
<book xmlns="http://www.zqcommon.org/sample/book"
      xmlns:n="http://www.zqcommon.org/sample/notes" xml:lang="en" id="b1">
  <title>Fonts &amp; Colours</title>
  <!-- the entity below comes from the internal subset -->
  <chapter n:ref="c1">
    <para>Printed by &press; &#x2014; see <n:note level="2">&lt;margin&gt;</n:note>.</para>
    <code><![CDATA[if (a < b && c > d) { swap(a, c); }]]></code>
    <?page-break before?>
  </chapter>
</book>
)";

/// Loads the sample in pull mode and lists its tree as the walk pulls it in; 1 on an error.
int showSampleTree() {
  std::cout << "A document (" << kSampleName << "):\n";
  std::istringstream source(kSample);
  for (std::string line; std::getline(source, line);) std::cout << "  | " << line << "\n";
  // The stream must outlive the pulled load, so it is made before the document.
  std::istringstream input(kSample);
  ZQPtr<ZQDocument> document(new ZQDocument());
  document->setPullMode(true);
  document->getParser()->setFeature(ZQXmlParser::FEATURE_REPORT_PI, true);
  try {
    document->load(input, nullptr, fromUtf8(kSampleName));
    std::cout << "Its tree, pulled in as the walk goes (nodes built before the walk: "
              << countBuiltNodes(document.get()) << "):\n";
    listTree(document.get(), std::cout, 2);
    std::cout << "Nodes built after the walk: " << countBuiltNodes(document.get()) << "\n";
  } catch (const ZQError& error) {
    std::cout << "error: " << utf8(error.getMessage()) << "\n";
    return 1;
  }
  return 0;
}

}  // namespace

int demo(const Args&) {
  std::cout << "ZQCommon " << ZQ_VERSION << " on an embedded sample\n\nProperties:\n";
  for (const Declaration& d : kLengths) {
    ZQName name{UnicodeString(d.property)};
    ZQValue value(d.number, d.unit);
    ZQLength points(value);
    std::cout << "  " << utf8(name) << " (#" << static_cast<int>(name)
              << (name.isBuiltin() ? ", built in" : ", run time")
              << ") = " << utf8(value.toCssText()) << " = " << points.getRealValue(ZQUNIT_PT)
              << "pt\n";
  }
  std::cout << "Colours:\n";
  for (const char16_t* text : kColours) {
    ZQColor colour{ZQName(UnicodeString(text))};
    std::cout << "  " << utf8(UnicodeString(text)) << " -> " << utf8(colour.toString(true)) << " / "
              << utf8(colour.toString(false)) << "\n";
  }
  ZQUri document{UnicodeString(kDocument)};
  ZQUri image(document, UnicodeString(kImage));
  std::cout << "A reference:\n  " << utf8(UnicodeString(kImage)) << "\n  against " << utf8(document)
            << "\n  is " << utf8(image) << "\n  local path " << utf8(image.getLocalPath())
            << ", extension " << utf8(image.getExtension()) << "\n";
  std::cout << "Characters:\n";
  for (UChar32 c : kCharacters) {
    std::cout << "  U+" << std::hex << std::uppercase << c << std::dec
              << (ZQChar::isZenkaku(c) ? " full width" : " half width")
              << (ZQChar::isLetter(c) ? ", letter" : "") << (ZQChar::isSymbol(c) ? ", symbol" : "")
              << "\n";
  }
  ZQName generated = ZQName::generateID(UnicodeString());
  std::cout << "A generated id: " << utf8(generated) << "\n";
  ZQError error(ZQERR_NULL_ARGUMENT, u"SYSTEM ERROR: node is null.", u"demo", 3, 14, u"sample.xml");
  std::cout << "A reported error:\n" << utf8(error.getMessage()) << "\n";
  return showSampleTree();
}

}  // namespace zqtool
