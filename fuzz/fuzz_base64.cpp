// Base64 decoding of any text, and encode then decode of the decoded bytes.
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "common/ZQUtil.h"

using namespace ZQCommonNS;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // Bytes as UTF-16 units, one unit per byte for most inputs so the alphabet is hit often;
  // a leading 0xFF byte switches to pairs, to reach characters beyond Latin-1.
  std::vector<char16_t> text;
  if (size > 0 && data[0] == 0xFF) {
    for (size_t i = 1; i + 1 < size; i += 2) text.push_back(char16_t(data[i] | (data[i + 1] << 8)));
  } else {
    for (size_t i = 0; i < size; ++i) text.push_back(data[i]);
  }
  std::ostringstream out;
  ZQUtil::decodeBase64(text.data(), static_cast<int>(text.size()), out);
  std::string bytes = out.str();
  if (bytes.size() > text.size()) __builtin_trap();

  std::istringstream in(bytes);
  UnicodeString encoded = ZQUtil::encodeBase64(in, static_cast<int>(bytes.size()));
  std::ostringstream again;
  ZQUtil::decodeBase64(encoded.getBuffer(), encoded.length(), again);
  if (again.str() != bytes) __builtin_trap();
  return 0;
}
