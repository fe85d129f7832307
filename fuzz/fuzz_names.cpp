// Interns arbitrary strings and reads them back: every text gets one number, and the number
// gives the text again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "common/ZQName.h"

using namespace ZQCommonNS;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // The input is split at NUL bytes into several strings of UTF-8.
  size_t start = 0;
  int interned = 0;
  for (size_t i = 0; i <= size; ++i) {
    if (i < size && data[i] != 0) continue;
    icu::StringPiece piece(reinterpret_cast<const char*>(data + start),
                           static_cast<int32_t>(i - start));
    UnicodeString text = UnicodeString::fromUTF8(piece);
    start = i + 1;
    ZQNameEnum a = ZQNameTable::getSharedNameEnum(text);
    ZQNameEnum b = ZQName(text);
    if (a != b) abort();
    const UnicodeString& back = ZQNameTable::getSharedNameString(a);
    if (text.isEmpty() ? a != ZQN_EMPTY || !back.isEmpty() : back != text) abort();
    if (ZQName(a).isBuiltin() !=
        (ZQNameTable::getBuiltinNameEnum(text) != ZQN_EMPTY || text.isEmpty())) {
      abort();
    }
    if (ZQNameTable::getSharedNameTable()->lookupName(text) != a) abort();
    ++interned;
  }
  // Keep the table from growing without bound over a long run.
  if (ZQNameTable::getSharedNameTable()->getNameLast() > 200000) ZQNameTable::cleanup();
  return interned >= 0 ? 0 : 1;
}
