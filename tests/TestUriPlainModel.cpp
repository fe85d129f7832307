// ZQUri construction against a plain rendering of its rules, one step after another on copies
// of std::u16string. The real resolution works in place in one buffer; both must give the same
// strings for any mix of schemes, drives, slashes, escapes, queries, fragments and CSS forms.
#include <gtest/gtest.h>

#include <cstdio>
#include <random>

#include "UriTestSupport.h"
#include "common/ZQUri.h"

using namespace ZQCommonNS;
using uritest::str;
using uritest::UriProbe;

namespace {
using U = std::u16string;
bool letter(char16_t c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool digit(char16_t c) { return c >= '0' && c <= '9'; }
int schemeEnd(const U& s) {
  if (s.empty() || !letter(s[0])) return -1;
  for (size_t i = 1; i < s.size(); ++i) {
    char16_t c = s[i];
    if (c == ':') return i >= 2 ? (int)i : -1;
    if (!(letter(c) || digit(c) || c == '+' || c == '-' || c == '.')) return -1;
  }
  return -1;
}
bool hasScheme(const U& s) { return schemeEnd(s) >= 0; }
bool safe(char16_t c) {
  if (c >= 0xA0) return true;
  if (letter(c) || digit(c)) return true;
  return U(u"!#$&'()*+,-./:;=?@[]_~").find(c) != U::npos;
}
bool hex(char16_t c) { return digit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }
bool valid(const U& s) {
  if (hasScheme(s)) return true;
  for (size_t i = 0; i < s.size(); ++i) {
    if (s[i] == '%') {
      if (!(i + 2 < s.size() && hex(s[i + 1]) && hex(s[i + 2]))) return false;
    } else if (!safe(s[i]))
      return false;
  }
  return true;
}
U esc(const U& s) {
  U o;
  for (char16_t c : s) {
    if (safe(c)) {
      o += c;
    } else {
      char b[4];
      snprintf(b, 4, "%%%02X", c & 0xFF);
      o += (char16_t)b[0];
      o += (char16_t)b[1];
      o += (char16_t)b[2];
    }
  }
  return o;
}
U rq(const U& s) { return s.substr(0, s.find(u'?')); }
bool drive(const U& s, size_t p) { return p + 1 < s.size() && s[p + 1] == ':' && letter(s[p]); }
bool starts(const U& s, const U& p) { return s.compare(0, p.size(), p) == 0; }
bool startsNC(const U& s, const U& p) {
  if (s.size() < p.size()) return false;
  for (size_t i = 0; i < p.size(); ++i) {
    char16_t c = s[i];
    if (c >= 'A' && c <= 'Z') c += 32;
    if (c != p[i]) return false;
  }
  return true;
}
bool ends(const U& s, const U& t) {
  return s.size() >= t.size() && s.compare(s.size() - t.size(), t.size(), t) == 0;
}
bool b2s(U& s) {
  bool ch = false;
  for (auto& c : s)
    if (c == '\\') c = '/', ch = true;
  return ch;
}
U p2f(const U& s) {
  if (drive(s, 0)) return u"file:///" + esc(rq(s));
  if (starts(s, u"//")) return u"file:" + esc(rq(s));
  return s;
}
bool blank(const U& s) {
  UnicodeString u(s.data(), (int32_t)s.size());
  return u.trim().isEmpty();
}
U trim(const U& s) {
  UnicodeString u(s.data(), (int32_t)s.size());
  u.trim();
  return str(u);
}
U dots(U s) {
  for (;;) {
    size_t p = s.find(u"/./");
    if (p != U::npos) {
      s.erase(p, 2);
      continue;
    }
    size_t q = s.find(u"/../");
    if (q == U::npos || q == 0) return s;
    size_t j = s.rfind(u'/', q - 1);
    if (j == U::npos) return s;
    s.erase(j, q + 3 - j);
  }
}
U normalize(U s, int kind) {
  if (blank(s)) return u"";
  if (kind == 2 || (kind == 3 && !hasScheme(s))) {
    b2s(s);
    return p2f(s);
  }
  return valid(s) ? s : esc(s);
}
/// Resolution; "file:" results never carry a query, the repaired forms included.
U resolve(const U& base, U ref, int kind) {
  if (blank(ref)) return u"";
  if (startsNC(ref, u"jar:")) return u"jar:" + resolve(base, ref.substr(4), kind);
  U frag;
  if (kind != 1) {
    size_t h = ref.find(u'#');
    if (h != U::npos) {
      frag = ref.substr(h);
      ref = ref.substr(0, h);
      if (ref.empty()) return frag;
    }
  }
  bool conv = false;
  if (kind == 0 || (kind == 3 && hasScheme(ref))) {
    if (!valid(ref)) ref = esc(ref);
  } else if (kind == 1) {
    ref = esc(ref);
    for (size_t p; (p = ref.find(u'#')) != U::npos;) ref.replace(p, 1, u"%23");
  } else {
    conv = b2s(ref);
    ref = p2f(ref);
  }
  if (startsNC(ref, u"file:")) {
    U r5 = ref.substr(5);
    if (ref.size() > 5 && ref[5] != '/') {
      ref = r5;
    } else if (starts(r5, u"///")) {
      if (drive(ref, 8)) return rq(ref) + frag;
      if (startsNC(base, u"file:") && drive(base, 8)) {
        ref = base.substr(0, 11) + ref.substr(8);
        return rq(ref) + frag;
      }
      return rq(ref) + frag;
    } else if (starts(r5, u"//")) {
      if (drive(ref, 7)) return u"file:///" + rq(ref.substr(7)) + frag;
      return rq(ref) + frag;
    } else if (starts(r5, u"/")) {
      if (drive(ref, 6))
        ref = u"file://" + ref.substr(6);
      else
        ref = u"file://" + ref.substr(5);
    }
  }
  if (hasScheme(ref)) return (startsNC(ref, u"file:") ? rq(ref) : ref) + frag;
  if (base.empty() || base == u"./" || base.find(u'/') == U::npos) return ref + frag;
  U b = base, prefix, path;
  int c = schemeEnd(b);
  auto splitAt = [&](size_t p) {
    prefix = b.substr(0, p);
    path = b.substr(p);
  };
  if (c < 0) {
    if (starts(b, u"//")) {
      size_t p = b.find(u'/', 2);
      if (p == U::npos) {
        b += u'/';
        p = b.size() - 1;
      }
      splitAt(p);
    } else {
      path = b;
    }
  } else {
    if (kind == 2 || kind == 3) ref = esc(ref);
    for (int i = 0; i < c; ++i)
      if (b[i] >= 'A' && b[i] <= 'Z') b[i] += 32;
    if (starts(b, u"http://") || starts(b, u"https://")) {
      b = rq(b);
      if (starts(ref, u"//") && !conv) {
        splitAt(c + 1);
      } else {
        size_t p = b.find(u'/', c + 3);
        if (p == U::npos) {
          b += u'/';
          p = b.size() - 1;
        }
        splitAt(p);
      }
    } else if (starts(b, u"jar:")) {
      size_t p = b.rfind(u"!/");
      if (p == U::npos)
        path = b;
      else
        splitAt(p + 1);
    } else if (starts(b.substr(c + 1), u"//")) {
      size_t p = b.find(u'/', c + 3);
      if (p == U::npos) {
        b += u'/';
        p = b.size() - 1;
      }
      if (starts(b, u"file:") && drive(b, p + 1)) {
        p += 3;
        if (p >= b.size() || b[p] != '/') b.insert(p, u"/");
      }
      splitAt(p);
    } else {
      path = b;
    }
  }
  if (ref.empty() || ref[0] != '/') {
    if (ends(path, u"/."))
      path.pop_back();
    else if (ends(path, u"/.."))
      path += u'/';
    else if (ends(path, u"/"))
      ;
    else {
      size_t p = path.rfind(u'/');
      path = p == U::npos ? U(u"/") : path.substr(0, p + 1);
    }
    ref = path + ref;
  }
  ref = dots(ref);
  ref = prefix + ref;
  if (starts(ref, u"file:")) ref = rq(ref);  // the scheme of the prefix is lower case here
  return ref + frag;
}
int prepare(U& s, int type) {
  if (s.empty()) return 0;
  int kind = (type == 1 || type == 3) ? 3 : ((drive(s, 0) || s.find(u'\\') != U::npos) ? 2 : 0);
  if (type == 2 || type == 3) {
    size_t n = s.size();
    size_t o = s.find(u'(');
    if (n > 0 && s[n - 1] == ')' && o != U::npos && o > 0) {
      U name = s.substr(0, o);
      if (name == u"url") {
        s = trim(s.substr(4, n - 1 - 4));
        kind = 0;
      } else if (name == u"linear-gradient" || name == u"radial-gradient" ||
                 name == u"repeating-linear-gradient" || name == u"repeating-radial-gradient") {
        kind = 1;
      }
    }
    size_t m = s.size();
    if (m > 0 && (s[0] == '"' || s[0] == '\'') && s[m - 1] == s[0])
      s = m >= 2 ? s.substr(1, m - 2) : U();
  }
  return kind;
}
U construct(const U& base, U s, int type) {
  int kind = prepare(s, type);
  return base.empty() ? normalize(s, kind) : resolve(base, s, kind);
}
}  // namespace

TEST(UriPlainModel, ConstructionAgreesWithThePlainSteps) {
  std::mt19937 rng(4242);
  const char16_t* toks[] = {u"file:",
                            u"/",
                            u"//",
                            u"\\",
                            u"C:",
                            u"c:",
                            u"http://",
                            u"https://",
                            u"jar:",
                            u"!/",
                            u"#",
                            u"?",
                            u"%",
                            u"%2",
                            u"%41",
                            u" ",
                            u".",
                            u"..",
                            u"a",
                            u"b",
                            u"url(",
                            u")",
                            u"'",
                            u"\"",
                            u"linear-gradient(",
                            u"FILE:",
                            u"HTTP://",
                            u"ab:",
                            u"x",
                            u"\u00E9",
                            u"/./",
                            u"/../",
                            u"ftp://",
                            u"JAR:",
                            u"urn:",
                            u"./",
                            u"file:///",
                            u"file://",
                            u"file:/",
                            u"C:/",
                            u"?q",
                            u"%23",
                            u"\t",
                            u"Url(",
                            u"C:?",
                            u"file:///C:?",
                            u"//h",
                            u"!",
                            u":",
                            u"radial-gradient(",
                            u"url('",
                            u"')",
                            u"d:\\",
                            u"\\\\",
                            u"HtTpS://",
                            u"file:C:",
                            u"jar:file:///C:/z.zip!/",
                            u"?",
                            u"#x",
                            u"a/b/../c"};
  const int nt = sizeof(toks) / sizeof(toks[0]);
  int fails = 0;
  for (int round = 0; round < 300000 && fails < 30; ++round) {
    U b, r;
    int nb = rng() % 6, nr = rng() % 6;
    for (int i = 0; i < nb; ++i) b += toks[rng() % nt];
    for (int i = 0; i < nr; ++i) r += toks[rng() % nt];
    int btype = rng() % 4, type = rng() % 4;
    ZQUri base(UnicodeString(b.data(), (int32_t)b.size()), (ZQUri::URISTRTYPE)btype);
    U expectBase = construct(U(), b, btype);
    if (str(base) != expectBase) {
      ++fails;
      ADD_FAILURE() << "base type " << btype << " [" << std::string(b.begin(), b.end()) << "] got ["
                    << std::string(str(base).begin(), str(base).end()) << "] want ["
                    << std::string(expectBase.begin(), expectBase.end()) << "]";
      continue;
    }
    ZQUri u(base, UnicodeString(r.data(), (int32_t)r.size()), (ZQUri::URISTRTYPE)type);
    U want = construct(str(base), r, type);
    if (str(u) != want) {
      ++fails;
      U g = str(u), bb = str(base);
      ADD_FAILURE() << "type " << type << " base [" << std::string(bb.begin(), bb.end())
                    << "] ref [" << std::string(r.begin(), r.end()) << "] got ["
                    << std::string(g.begin(), g.end()) << "] want ["
                    << std::string(want.begin(), want.end()) << "]";
    }
  }
}
