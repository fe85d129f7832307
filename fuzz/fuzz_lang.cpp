// Feeds arbitrary text to the language and script constructors and to the script of a text.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "common/ZQLang.h"
#include "common/ZQScript.h"

using namespace ZQCommonNS;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  long sink = 0;

  // The bytes as a UTF-8 tag, with and without a country after the first NUL.
  const char* bytes = reinterpret_cast<const char*>(data);
  const size_t split = strnlen(bytes, size);
  const UnicodeString tag = UnicodeString::fromUTF8(std::string(bytes, split));
  const UnicodeString country =
      split < size ? UnicodeString::fromUTF8(std::string(bytes + split + 1, size - split - 1))
                   : UnicodeString();
  for (const ZQLang& lang :
       {ZQLang(tag), ZQLang(tag, country), ZQLang(std::string(bytes, split).c_str())}) {
    sink += lang.toFullString().length() + lang.toISO3String().length() +
            lang.getISO3Country().length() + lang.getLCID() + lang.isNullLang();
    const ZQScript script = lang.toScript();
    sink += lang.isTypicalScript(script) + script.getScriptName().length();
    sink += ZQLang(script).isNullLang() + (lang < ZQLang(tag)) + (lang == ZQLang(country));
  }
  const ZQScript fromString(tag);
  sink += fromString.code + fromString.toString().length() + fromString.getA();

  // The bytes as UTF-16 code units, surrogates and all.
  UnicodeString text;
  for (size_t i = 0; i + 1 < size; i += 2) text.append(char16_t(data[i] | (data[i + 1] << 8)));
  sink += ZQScript::getScriptFromText(text, false) + ZQScript::getScriptFromText(text, true);

  // The bytes as 32-bit values: code points and script codes, in and out of range.
  for (size_t i = 0; i + 3 < size; i += 4) {
    int32_t v;
    std::memcpy(&v, data + i, sizeof v);
    // Any value an enumeration of ICU's script codes can hold, past the last code included.
    ZQScript script(static_cast<UScriptCode>(v % 256));
    sink += ZQScript::getScript(v) + script.isZenkakuScript(v) +
            static_cast<int>(script.getScriptCode().operator ZQNameEnum()) +
            script.getScriptName().length() + script.getA() + script.isCJKJustify();
  }
  volatile long keep = sink;
  (void)keep;
  return 0;
}
