// Construction of ZQUri: preparation of the caller's string, normalisation without a base and
// resolution against one. Resolution writes its result once into one string; dot segments are
// removed in place in linear time, so hostile input cannot make it quadratic.
#include "common/ZQName.h"
#include "common/ZQUri.h"
#include "common/ZQXmlCatalogs.h"
#include "core/platform/ZQPlatformFile.h"
#include "io/ZQUriText.h"

namespace ZQCommonNS {

using namespace uritext;

namespace {

/// Appends a path that already holds forward slashes as a "file:" URI where it is rooted (drive
/// letter or "//"); returns false, appending nothing, for a path that stays as it is.
template <class Out>
bool appendPathAsFileUri(Out& out, View s, bool sharpToo) {
  if (hasDriveLetter(s, 0)) {
    out.append(u"file:///", 8);
  } else if (startsWith(s, u"//")) {
    out.append(u"file:", 5);
  } else {
    return false;
  }
  appendEscaped(out, removeQuery(s), sharpToo);
  return true;
}

/// `s` with its backslashes as slashes, in `buf` when any changed.
View withSlashes(View s, TextBuf& buf, bool& changed) {
  size_t b = findChar(s, u'\\');
  changed = b != View::npos;
  if (!changed) return s;
  buf.clear();
  append(buf, s);
  char16_t* p = buf.data();
  for (size_t i = b; i < s.size(); ++i) {
    if (p[i] == u'\\') p[i] = u'/';
  }
  return buf.view();
}

/// True when the text of `v` lies in the buffer of `s`.
bool pointsInto(View v, const TextBuf& s) {
  return v.data() >= s.data() && v.data() <= s.data() + s.size();
}

/// Appends `s` with the ASCII letters of its first `count` characters lower-cased.
void appendLowerHead(TextBuf& out, View s, size_t count) {
  size_t i = 0;
  while (i < count && i < s.size() && !(s[i] >= u'A' && s[i] <= u'Z')) ++i;
  if (i > 0) append(out, s.substr(0, i));
  for (; i < count && i < s.size(); ++i) out.append(asciiLower(s[i]));
  append(out, s.substr(i));
}

/// Steps 3 to 12 of resolution for a non-blank `r`, appended to `out`.
void resolveInto(TextBuf& out, View baseText, View r, int kindWithFlags) {
  const bool existingFile = (kindWithFlags & 0x10) != 0;
  const int kind = kindWithFlags & 3;

  // A fragment is kept aside, and a same-document reference stays one.
  View fragment;
  if (kind != 1 && !existingFile) {
    size_t hash = findChar(r, u'#');
    if (hash != View::npos) {
      fragment = r.substr(hash);
      r = r.substr(0, hash);
      if (r.empty()) {
        append(out, fragment);
        return;
      }
    }
  }

  TextBuf buf1, buf2;
  bool slashesConverted = false;
  int effective = kind;
  if (kind == 3) effective = hasScheme(r) ? 0 : 2;
  switch (effective) {
    case 0:
      if (!isValidUriString(r)) {
        appendEscaped(buf1, r);
        r = buf1.view();
      }
      break;
    case 1:
      appendEscaped(buf1, r, true);
      r = buf1.view();
      break;
    default:
      r = withSlashes(r, buf1, slashesConverted);
      if (appendPathAsFileUri(buf2, r, existingFile)) r = buf2.view();
      break;
  }

  // Repairs of the forms a "file:" reference comes in.
  if (startsWithNoCase(r, u"file:")) {
    if (r.size() > 5 && r[5] != u'/') {
      r = r.substr(5);  // "file:name" is a relative reference
    } else if (startsWith(r.substr(5), u"///")) {
      if (!hasDriveLetter(r, 8) && startsWithNoCase(baseText, u"file:") &&
          hasDriveLetter(baseText, 8)) {
        // Rooted on the base's drive. The base's head may hold a '?' too, and a file has no
        // query, so the cut applies to the joined text.
        const View head = baseText.substr(0, 11);
        const size_t q = findChar(head, u'?');
        if (q != View::npos) {
          append(out, head.substr(0, q));
        } else {
          append(out, head);
          append(out, removeQuery(r.substr(8)));
        }
      } else {
        append(out, removeQuery(r));
      }
      append(out, fragment);
      return;
    } else if (startsWith(r.substr(5), u"//")) {
      if (hasDriveLetter(r, 7)) {
        out.append(u"file:///", 8);
        append(out, removeQuery(r.substr(7)));
      } else {
        append(out, removeQuery(r));  // a server
      }
      append(out, fragment);
      return;
    } else if (startsWith(r.substr(5), u"/")) {
      // "file:/C:/x" keeps two slashes, which getLocalPath reads correctly; "file:/x" gets
      // three and takes no drive from the base. Either has a scheme, so it is the result.
      out.append(u"file://", 7);
      append(out, removeQuery(r.substr(hasDriveLetter(r, 6) ? 6 : 5)));
      append(out, fragment);
      return;
    }
  }

  // Absolute references are never resolved; a base without '/' is none.
  if (hasScheme(r) || baseText.empty() || baseText == u"./" ||
      findChar(baseText, u'/') == View::npos) {
    // A file has no query, whichever way the reference got here.
    append(out, startsWithNoCase(r, u"file:") ? removeQuery(r) : r);
    append(out, fragment);
    return;
  }

  // Split the base into what every path keeps and the path.
  View b = baseText;
  size_t split = 0;              // prefix = b[0, split)
  bool slashBeforePath = false;  // a '/' that the base lacks goes in front of the path
  const int colon = findSchemeEnd(b);
  if (colon < 0) {
    if (startsWith(b, u"//")) {
      size_t s = findChar(b, u'/', 2);
      if (s == View::npos) {
        split = b.size();
        slashBeforePath = true;
      } else {
        split = s;
      }
    }
  } else {
    if (kind >= 2) {  // a path meets a URI base: it is escaped now
      TextBuf& target = pointsInto(r, buf1) ? buf2 : buf1;
      target.clear();
      appendEscaped(target, r, existingFile);
      r = target.view();
    }
    const size_t c = static_cast<size_t>(colon);
    const View scheme = b.substr(0, c);
    auto schemeIs = [&](std::u16string_view lower) {
      return scheme.size() == lower.size() && startsWithNoCase(scheme, lower);
    };
    const bool followedBySlashes = startsWith(b.substr(c + 1), u"//");
    if ((schemeIs(u"http") || schemeIs(u"https")) && followedBySlashes) {
      b = removeQuery(b);
      if (startsWith(r, u"//") && !slashesConverted) {
        split = c + 1;  // a network-path reference keeps only the scheme
      } else {
        size_t s = findChar(b, u'/', c + 3);
        if (s == View::npos) {
          split = b.size();
          slashBeforePath = true;
        } else {
          split = s;
        }
      }
    } else if (schemeIs(u"jar")) {
      size_t bang = b.rfind(u"!/");
      split = bang == View::npos ? 0 : bang + 1;
    } else if (followedBySlashes) {
      size_t s = findChar(b, u'/', c + 3);
      if (s == View::npos) {
        split = b.size();
        slashBeforePath = true;
      } else {
        split = s;
        if (schemeIs(u"file") && hasDriveLetter(b, s + 1)) {
          // The drive belongs to the prefix; "file:///C:dir" reads as "file:///C:/dir".
          split = s + 3;
          if (split >= b.size() || b[split] != u'/') slashBeforePath = true;
        }
      }
    }
  }

  const size_t coreStart = out.size();
  const size_t schemeLen = colon < 0 ? 0 : static_cast<size_t>(colon);
  const View path = b.substr(split);
  out.reserve(coreStart + split + path.size() + r.size() + fragment.size() + 2);
  appendLowerHead(out, b.substr(0, split), schemeLen);
  const size_t refStart = out.size();

  if (r.empty() || r[0] != u'/') {
    // Join to the base's directory.
    if (slashBeforePath) out.append(u'/');
    if (split == 0) {
      appendLowerHead(out, path, schemeLen);
    } else {
      append(out, path);
    }
    const View joined = out.view().substr(refStart);
    auto endsWith = [&](std::u16string_view tail) {
      return joined.size() >= tail.size() && joined.substr(joined.size() - tail.size()) == tail;
    };
    if (endsWith(u"/.")) {
      out.truncate(out.size() - 1);
    } else if (endsWith(u"/..")) {
      out.append(u'/');
    } else if (!endsWith(u"/")) {
      size_t slash = joined.rfind(u'/');
      if (slash == View::npos) {
        out.truncate(refStart);
        out.append(u'/');
      } else {
        out.truncate(refStart + slash + 1);
      }
    }
  }
  append(out, r);

  // Dot segments of the reference part.
  out.truncate(refStart + removeDotSegments(out.data() + refStart, out.size() - refStart));

  // A file has no query.
  const View core = out.view().substr(coreStart);
  if (startsWithNoCase(core, u"file:")) {
    size_t q = findChar(core, u'?');
    if (q != View::npos) out.truncate(coreStart + q);
  }
  append(out, fragment);
}

}  // namespace

// ---- Construction ----

ZQUri::ZQUri(const UnicodeString& str, const ZQXmlCatalogs* catalogs) {
  construct(nullptr, str, URISTR_AUTO, catalogs);
}

ZQUri::ZQUri(const UnicodeString& str, URISTRTYPE type, const ZQXmlCatalogs* catalogs) {
  construct(nullptr, str, type, catalogs);
}

ZQUri::ZQUri(const ZQUri& base, const UnicodeString& str, const ZQXmlCatalogs* catalogs) {
  construct(&base, str, URISTR_AUTO, catalogs);
}

ZQUri::ZQUri(const ZQUri& base, const UnicodeString& str, URISTRTYPE type,
             const ZQXmlCatalogs* catalogs) {
  construct(&base, str, type, catalogs);
}

void ZQUri::construct(const ZQUri* base, const UnicodeString& str, URISTRTYPE type,
                      const ZQXmlCatalogs* catalogs) {
  UnicodeString s = catalogs ? catalogs->resolveURI(str) : str;
  int kind = prepareUriString(s, type);
  // `base` may be this very object (a URI resolved against itself), so the result is built
  // aside before it is stored.
  if (base && !base->uri.isEmpty()) {
    UnicodeString result = resolveUriString(base->uri, s, kind);
    uri = std::move(result);
  } else {
    uri = normalizeUriString(s, kind);
  }
}

int ZQUri::prepareUriString(UnicodeString& str, URISTRTYPE type) {
  if (str.isEmpty()) return KIND_REFERENCE;
  int flags = 0;
  if (type == URISTR_AUTO) {
    // A file whose name holds '#' or '%' works without any escaping by the caller.
    std::string utf8;
    str.toUTF8String(utf8);
    if (platform::pathAccess(utf8, 0)) {
      type = URISTR_PATH;
      flags = KIND_FLAG_EXISTING_FILE;
    } else {
      type = URISTR_URI;
    }
  }
  int kind;
  if (type == URISTR_PATH || type == URISTR_CSS_PATH) {
    kind = KIND_PATH_OR_URI;
  } else {
    kind = uritext::hasDriveLetter(view(str), 0) || findChar(view(str), u'\\') != View::npos
               ? KIND_PATH
               : KIND_REFERENCE;
  }
  if (type == URISTR_CSS_URI || type == URISTR_CSS_PATH) {
    const int32_t n = str.length();
    const int32_t open = str.indexOf(u'(');
    if (n > 0 && str[n - 1] == u')' && open > 0) {
      // Only built-in names can match, so the look-up interns nothing.
      ZQNameEnum fn = ZQNameTable::getBuiltinNameEnum(UnicodeString(str, 0, open));
      if (fn == ZQN_url) {
        UnicodeString inner(str, 4, n - 1 - 4);
        str = inner.trim();
        kind = KIND_REFERENCE;
      } else if (fn == ZQN_linear_gradient || fn == ZQN_radial_gradient ||
                 fn == ZQN_repeating_linear_gradient || fn == ZQN_repeating_radial_gradient) {
        kind = KIND_LITERAL;  // an opaque reference: its '#' is no fragment
      }
    }
    const int32_t m = str.length();
    if (m > 0 && (str[0] == u'"' || str[0] == u'\'') && str[m - 1] == str[0]) {
      str.retainBetween(1, m - 1);
    }
  }
  return kind | (kind == KIND_PATH_OR_URI ? flags : 0);
}

UnicodeString ZQUri::normalizeUriString(const UnicodeString& s, int kind) {
  View v = view(s);
  if (isBlank(v)) return UnicodeString();
  kind &= 3;
  if (kind == KIND_PATH || (kind == KIND_PATH_OR_URI && !hasScheme(v))) {
    TextBuf buf;
    bool changed;
    v = withSlashes(v, buf, changed);
    UnicodeString out;
    if (appendPathAsFileUri(out, v, false)) return out;
    return changed ? buf.toString() : s;
  }
  if (isValidUriString(v)) return s;
  UnicodeString out;
  appendEscaped(out, v);
  return out;
}

UnicodeString ZQUri::resolveUriString(const UnicodeString& base, const UnicodeString& ref,
                                      int kind) {
  View r = view(ref);
  if (isBlank(r)) return UnicodeString();
  TextBuf out;
  // "jar:" prefixes are set aside and put back in front of the resolved rest.
  while (startsWithNoCase(r, u"jar:")) {
    r = r.substr(4);
    out.append(u"jar:", 4);
    if (isBlank(r)) return out.toString();
  }
  resolveInto(out, view(base), r, kind);
  return out.toString();
}

}  // namespace ZQCommonNS
