// RC4 is ours: libcrypto keeps it only in its legacy provider, which may not be loaded.
#include "common/ZQCipher.h"

namespace ZQCommonNS {

RC4_KEY::RC4_KEY(int length, const unsigned char* key) : m_x(0), m_y(0) {
  for (int i = 0; i < 256; ++i) m_s[i] = static_cast<unsigned char>(i);
  if (!key || length < 1) return;
  unsigned char j = 0;
  int k = 0;
  for (int i = 0; i < 256; ++i) {
    unsigned char t = m_s[i];
    j = static_cast<unsigned char>(j + t + key[k]);
    m_s[i] = m_s[j];
    m_s[j] = t;
    if (++k == length) k = 0;
  }
}

void RC4_KEY::RC4(int length, const unsigned char* in, unsigned char* out) {
  if (length < 1 || !in || !out) return;
  // Locals let the compiler keep the indices in registers across the loop.
  unsigned char x = m_x;
  unsigned char y = m_y;
  unsigned char* s = m_s;
  for (int n = 0; n < length; ++n) {
    x = static_cast<unsigned char>(x + 1);
    unsigned char tx = s[x];
    y = static_cast<unsigned char>(y + tx);
    unsigned char ty = s[y];
    s[x] = ty;
    s[y] = tx;
    out[n] = static_cast<unsigned char>(in[n] ^ s[static_cast<unsigned char>(tx + ty)]);
  }
  m_x = x;
  m_y = y;
}

}  // namespace ZQCommonNS
