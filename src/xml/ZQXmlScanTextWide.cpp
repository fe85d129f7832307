// The text run's inner loop for processors with AVX2: thirty-two bytes at a time where the
// baseline loop takes sixteen. Built for that instruction set alone and called only when the
// processor reports it.
#include "xml/ZQXmlScanText.h"

#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>

namespace ZQCommonNS::xmlscan {

namespace {

bool detectWideText() {
  __builtin_cpu_init();
  return __builtin_cpu_supports("avx2");
}

}  // namespace

bool wideTextOn = detectWideText();

__attribute__((target("avx2"))) size_t wideTextBlocks(const unsigned char* p, size_t count,
                                                      char16_t* out, RunLines& lines,
                                                      bool& stopped) {
  const __m256i lt = _mm256_set1_epi8('<');
  const __m256i amp = _mm256_set1_epi8('&');
  const __m256i bracket = _mm256_set1_epi8(']');
  const __m256i tab = _mm256_set1_epi8('\t');
  const __m256i lf = _mm256_set1_epi8('\n');
  const __m256i belowSpace = _mm256_set1_epi8(0x1F);
  const __m256i del = _mm256_set1_epi8(0x7F);
  size_t i = 0;
  for (; i + 32 <= count; i += 32) {
    const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + i));
    // Signed compares: bytes from 0x80 up are negative and are not printable.
    const __m256i printable =
        _mm256_and_si256(_mm256_cmpgt_epi8(v, belowSpace), _mm256_cmpgt_epi8(del, v));
    const __m256i markup =
        _mm256_or_si256(_mm256_or_si256(_mm256_cmpeq_epi8(v, lt), _mm256_cmpeq_epi8(v, amp)),
                        _mm256_cmpeq_epi8(v, bracket));
    const __m256i feeds = _mm256_cmpeq_epi8(v, lf);
    const __m256i good = _mm256_or_si256(_mm256_andnot_si256(markup, printable),
                                         _mm256_or_si256(_mm256_cmpeq_epi8(v, tab), feeds));
    // Stored whole: units past the run's end land in room the buffer has, and the length the
    // caller sets leaves them out.
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i),
                        _mm256_cvtepu8_epi16(_mm256_castsi256_si128(v)));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i + 16),
                        _mm256_cvtepu8_epi16(_mm256_extracti128_si256(v, 1)));
    const unsigned mask = static_cast<unsigned>(_mm256_movemask_epi8(good));
    unsigned feedMask = static_cast<unsigned>(_mm256_movemask_epi8(feeds));
    unsigned taken = 32;
    if (mask != 0xFFFFFFFFu) {
      taken = static_cast<unsigned>(__builtin_ctz(~mask));
      feedMask &= (1u << taken) - 1;
      stopped = true;
    }
    if (feedMask) {
      lines.count += bitCount16(feedMask & 0xFFFF) + bitCount16(feedMask >> 16);
      lines.last = p + i + (31 - __builtin_clz(feedMask));
    }
    if (stopped) return i + taken;
  }
  return i;
}

}  // namespace ZQCommonNS::xmlscan

#endif
