// Building blocks of URI text shared by the ZQUri sources: scheme test, safe characters,
// validity, escaping. They work on views so that resolution copies text only once.
#pragma once

#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf16.h>

#include <cstring>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace ZQCommonNS::uritext {

using View = std::u16string_view;
using icu::UnicodeString;

inline View view(const UnicodeString& s) {
  return View(s.getBuffer() ? s.getBuffer() : u"", static_cast<size_t>(s.length()));
}

/// Index of the first `c` in `s` from `pos` on, or npos; eight characters at a step where the
/// processor allows.
inline size_t findChar(View s, char16_t c, size_t pos = 0) {
  const char16_t* p = s.data();
  const size_t n = s.size();
  size_t i = pos;
#if defined(__SSE2__)
  const __m128i needle = _mm_set1_epi16(static_cast<short>(c));
  for (; i + 8 <= n; i += 8) {
    __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
    int mask = _mm_movemask_epi8(_mm_cmpeq_epi16(chunk, needle));
    if (mask) return i + (static_cast<unsigned>(__builtin_ctz(static_cast<unsigned>(mask))) >> 1);
  }
#endif
  for (; i < n; ++i) {
    if (p[i] == c) return i;
  }
  return View::npos;
}

inline bool isAsciiLetter(char16_t c) { return (c | 0x20) >= u'a' && (c | 0x20) <= u'z'; }
inline bool isAsciiDigit(char16_t c) { return c >= u'0' && c <= u'9'; }
inline bool isHexDigit(char16_t c) {
  return isAsciiDigit(c) || ((c | 0x20) >= u'a' && (c | 0x20) <= u'f');
}
inline char16_t asciiLower(char16_t c) { return c >= u'A' && c <= u'Z' ? c + 0x20 : c; }

/// Index of the colon that ends a scheme of two characters or more, or -1.
inline int findSchemeEnd(View s) {
  if (s.empty() || !isAsciiLetter(s[0])) return -1;
  for (size_t i = 1; i < s.size(); ++i) {
    char16_t c = s[i];
    if (c == u':') return i >= 2 ? static_cast<int>(i) : -1;
    if (!(isAsciiLetter(c) || isAsciiDigit(c) || c == u'+' || c == u'-' || c == u'.')) return -1;
  }
  return -1;
}
inline bool hasScheme(View s) { return findSchemeEnd(s) >= 0; }

/// Characters a URI may hold as they are; from U+00A0 up everything is, so the stored form
/// is an IRI.
struct SafeTable {
  bool safe[160];
  constexpr SafeTable() : safe() {
    for (int c = 0; c < 160; ++c) {
      safe[c] = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    }
    for (char c : std::string_view("!#$&'()*+,-./:;=?@[]_~")) safe[static_cast<int>(c)] = true;
  }
};
inline constexpr SafeTable kSafe{};
inline bool isUriSafeChar(char16_t c) { return c >= 0xA0 || kSafe.safe[c]; }

/// True when `s` has a scheme, or else every '%' starts an escape and all else is safe.
inline bool isValidUriString(View s) {
  if (hasScheme(s)) return true;
  const size_t n = s.size();
  for (size_t i = 0; i < n; ++i) {
    char16_t c = s[i];
    if (c == u'%') {
      if (i + 2 >= n || !isHexDigit(s[i + 1]) || !isHexDigit(s[i + 2])) return false;
      i += 2;
    } else if (!isUriSafeChar(c)) {
      return false;
    }
  }
  return true;
}

/// A growing UTF-16 buffer that keeps short texts on the stack, so that resolution allocates
/// nothing but its result. Its appends have the shape of UnicodeString's.
class TextBuf {
 public:
  TextBuf() = default;
  TextBuf(const TextBuf&) = delete;
  TextBuf& operator=(const TextBuf&) = delete;
  ~TextBuf() {
    if (m_p != m_inline) delete[] m_p;
  }

  TextBuf& append(const char16_t* s, int32_t n) {
    const size_t k = static_cast<size_t>(n);
    if (m_n + k > m_cap) grow(m_n + k);
    std::memcpy(m_p + m_n, s, k * sizeof(char16_t));
    m_n += k;
    return *this;
  }
  TextBuf& append(char16_t c) {
    if (m_n == m_cap) grow(m_n + 1);
    m_p[m_n++] = c;
    return *this;
  }
  void reserve(size_t capacity) {
    if (capacity > m_cap) grow(capacity);
  }
  void clear() { m_n = 0; }
  /// Shortens the text; after an edit in place through data(), also sets its new length.
  void truncate(size_t n) {
    if (n < m_n) m_n = n;
  }
  size_t size() const { return m_n; }
  char16_t* data() { return m_p; }
  const char16_t* data() const { return m_p; }
  View view() const { return View(m_p, m_n); }
  UnicodeString toString() const { return UnicodeString(m_p, static_cast<int32_t>(m_n)); }

 private:
  void grow(size_t need) {
    size_t capacity = m_cap * 2 > need ? m_cap * 2 : need;
    char16_t* p = new char16_t[capacity];
    std::memcpy(p, m_p, m_n * sizeof(char16_t));
    if (m_p != m_inline) delete[] m_p;
    m_p = p;
    m_cap = capacity;
  }
  static constexpr size_t kInline = 256;
  char16_t m_inline[kInline];
  char16_t* m_p = m_inline;
  size_t m_n = 0;
  size_t m_cap = kInline;
};

/// Appends `s` with each unsafe character as "%XX" of its low byte; with `sharpToo` each '#'
/// becomes "%23" as well.
template <class Out>
inline void appendEscaped(Out& out, View s, bool sharpToo = false) {
  static constexpr char16_t kHex[] = u"0123456789ABCDEF";
  size_t run = 0;  // start of the pending run of safe characters
  for (size_t i = 0; i < s.size(); ++i) {
    char16_t c = s[i];
    if (isUriSafeChar(c) && !(sharpToo && c == u'#')) continue;
    if (i > run) out.append(s.data() + run, static_cast<int32_t>(i - run));
    char16_t esc[3] = {u'%', kHex[(c >> 4) & 0xF], kHex[c & 0xF]};
    out.append(esc, 3);
    run = i + 1;
  }
  if (s.size() > run) out.append(s.data() + run, static_cast<int32_t>(s.size() - run));
}

template <class Out>
inline void append(Out& out, View s) {
  if (!s.empty()) out.append(s.data(), static_cast<int32_t>(s.size()));
}

/// `s` cut at its first '?'.
inline View removeQuery(View s) {
  size_t q = findChar(s, u'?');
  return q == View::npos ? s : s.substr(0, q);
}

/// At least two characters from `pos`, an ASCII letter followed by ':'.
inline bool hasDriveLetter(View s, size_t pos) {
  return pos + 1 < s.size() && s[pos + 1] == u':' && isAsciiLetter(s[pos]);
}

inline bool startsWithNoCase(View s, std::u16string_view lowerPrefix) {
  if (s.size() < lowerPrefix.size()) return false;
  for (size_t i = 0; i < lowerPrefix.size(); ++i) {
    if (asciiLower(s[i]) != lowerPrefix[i]) return false;
  }
  return true;
}

inline bool startsWith(View s, std::u16string_view prefix) {
  return s.size() >= prefix.size() && s.substr(0, prefix.size()) == prefix;
}

/// The white space that UnicodeString::trim removes.
inline bool isTrimSpace(UChar32 c) { return c == 0x20 || u_isWhitespace(c); }

inline bool isBlank(View s) {
  for (size_t i = 0; i < s.size(); ++i) {
    char16_t c = s[i];
    if (c > 0x20 && c < 0x7F) return false;  // the common case, without a property look-up
    UChar32 cp = c;
    if (U16_IS_LEAD(c) && i + 1 < s.size() && U16_IS_TRAIL(s[i + 1])) {
      cp = U16_GET_SUPPLEMENTARY(c, s[i + 1]);
      ++i;
    }
    if (!isTrimSpace(cp)) return false;
  }
  return true;
}

/// Removes dot segments from s[0..n) in place and returns the new length. The effect is that
/// of the told loop: every "/./" goes first; then the first "/../" is removed with the segment
/// before it, again and again, until one has no '/' before it, which ends the work.
inline size_t removeDotSegments(char16_t* s, size_t n) {
  // Text ahead of the first "/." holds no dot segment and stays where it is.
  size_t first = 0;
  for (size_t dot = findChar(View(s, n), u'.', 1);; dot = findChar(View(s, n), u'.', dot + 1)) {
    if (dot == View::npos) return n;
    if (s[dot - 1] == u'/') {
      first = dot - 1;
      break;
    }
  }
  // "/./" -> "/". Rewriting cannot create an occurrence left of the one just removed, so one
  // pass from the left reaches the same result as repeated first-occurrence removal.
  size_t w = first;
  for (size_t r = first; r < n; ++r) {
    s[w++] = s[r];
    if (s[w - 1] == u'/' && w >= 3 && s[w - 2] == u'.' && s[w - 3] == u'/') w -= 2;
  }
  n = w;
  // "/seg/../" -> "/". Removal cannot create an earlier "/../" nor a new "/./".
  w = first;
  for (size_t r = first; r < n; ++r) {
    s[w++] = s[r];
    if (s[w - 1] == u'/' && w >= 4 && s[w - 2] == u'.' && s[w - 3] == u'.' && s[w - 4] == u'/') {
      size_t at = w - 4;
      size_t j = at;
      while (j > 0 && s[j - 1] != u'/') --j;
      if (j == 0) {  // no '/' before it: the rest stays as it is
        for (size_t k = r + 1; k < n; ++k) s[w++] = s[k];
        return w;
      }
      w = j;  // s[j - 1] is the '/' that stays
    }
  }
  return w;
}

}  // namespace ZQCommonNS::uritext
