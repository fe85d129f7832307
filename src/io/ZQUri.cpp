// ZQUri queries, modifications and string helpers.
#include "common/ZQUri.h"

#include <unicode/locid.h>

#include <string>

#include "common/ZQString.h"
#include "core/platform/ZQPlatformFile.h"
#include "io/ZQUriText.h"

namespace ZQCommonNS {

using namespace uritext;

namespace {

std::string toUtf8(const UnicodeString& s) {
  std::string out;
  s.toUTF8String(out);
  return out;
}

bool endsWithChar(const UnicodeString& s, char16_t c) {
  return s.length() > 0 && s[s.length() - 1] == c;
}

UnicodeString unescapeView(View s) {
  if (s.find(u'%') == View::npos) return UnicodeString(s.data(), static_cast<int32_t>(s.size()));
  std::string bytes;
  UnicodeString(s.data(), static_cast<int32_t>(s.size())).toUTF8String(bytes);
  auto hex = [](char c) -> int {
    if (c >= '0' && c <= '9') return c - '0';
    c = static_cast<char>(c | 0x20);
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
  };
  size_t w = 0;
  for (size_t r = 0; r < bytes.size(); ++r) {
    char c = bytes[r];
    if (c == '%' && r + 2 < bytes.size()) {
      int hi = hex(bytes[r + 1]);
      int lo = hex(bytes[r + 2]);
      if (hi >= 0 && lo >= 0) {
        bytes[w++] = static_cast<char>(hi * 16 + lo);
        r += 2;
        continue;
      }
    }
    bytes[w++] = c;
  }
  bytes.resize(w);
  return UnicodeString::fromUTF8(bytes);
}

/// The local form of a "file:" string: the slashes after "file:" decide between a drive path,
/// a path rooted on the current drive ("\dir", three slashes) and a UNC path ("\\server").
UnicodeString localPathOf(const UnicodeString& s) {
  View v = view(s);
  if (v.empty()) return UnicodeString();
  if (!startsWithNoCase(v, u"file:")) return s;
  size_t i = 5;
  while (i < v.size() && v[i] == u'/') ++i;
  const size_t slashes = i - 5;
  UnicodeString out;
  if (hasDriveLetter(v, i)) {
    out = unescapeView(v.substr(i));
  } else if (slashes < 2) {
    return unescapeView(v.substr(5));
  } else {
    UnicodeString joined(slashes == 3 ? u"\\" : u"\\\\");
    append(joined, v.substr(i));
    out = unescapeView(view(joined));
  }
  ZQUri::slash2backslash(out);
  return out;
}

UnicodeString lowerCased(const UnicodeString& s) {
  UnicodeString copy(s);
  copy.toLower(icu::Locale::getRoot());
  return copy;
}

}  // namespace

ZQUri::~ZQUri() = default;

ZQUriReferenceResolver2::~ZQUriReferenceResolver2() = default;

// ---- Queries ----

ZQName ZQUri::getScheme() const {
  int colon = findSchemeEnd(view(uri));
  if (colon < 0) return ZQName();
  UnicodeString scheme;
  for (int i = 0; i < colon; ++i) scheme.append(asciiLower(uri[i]));
  return ZQName(ZQNameTable::getSharedNameEnum(scheme));
}

bool ZQUri::isAbsolute() const { return hasScheme(view(uri)); }

bool ZQUri::isFile() const {
  return !uri.isEmpty() && (startsWithNoCase(view(uri), u"file:") || !hasScheme(view(uri)));
}

bool ZQUri::isFileScheme() const { return startsWithNoCase(view(uri), u"file:"); }

bool ZQUri::isDataScheme() const { return startsWithNoCase(view(uri), u"data:"); }

bool ZQUri::isJarScheme() const { return startsWithNoCase(view(uri), u"jar:"); }

bool ZQUri::isHttpScheme() const {
  View v = view(uri);
  return startsWithNoCase(v, u"http:") || startsWithNoCase(v, u"https:");
}

bool ZQUri::isDirectory() const { return endsWithChar(uri, u'/'); }

bool ZQUri::isRemote() const {
  if (!isFileScheme()) return false;
  // A drive or share root decides on Windows; Linux mounts sit at any depth, so the file
  // system is asked about the path itself (or its nearest existing ancestor).
  return platform::pathIsRemote(toUtf8(getLocalPath()));
}

bool ZQUri::isFileExists() const {
  if (uri.isEmpty()) return false;
  return platform::pathAccess(toUtf8(getLocalPath()), 0);
}

bool ZQUri::isFileExists(const char* path) { return path && platform::pathAccess(path, 0); }

bool ZQUri::isFileExists(const wchar_t* path) {
  if (!path) return false;
  std::wstring_view w(path);
  UnicodeString s;
  if constexpr (sizeof(wchar_t) == 4) {
    s = UnicodeString::fromUTF32(reinterpret_cast<const UChar32*>(w.data()),
                                 static_cast<int32_t>(w.size()));
  } else {
    s = UnicodeString(reinterpret_cast<const char16_t*>(w.data()), static_cast<int32_t>(w.size()));
  }
  return platform::pathAccess(toUtf8(s), 0);
}

bool ZQUri::isSameFile(const ZQUri& other) const {
  if (!isFile() || !other.isFile()) return false;  // both non-empty, both local
  return lowerCased(getLocalPath()) == lowerCased(other.getLocalPath());
}

bool ZQUri::isDescendantOrSelf(const ZQUri& other) const {
  UnicodeString way;
  if (isFile()) {
    // Local paths compare without regard to case.
    ZQUri self(lowerCased(uri), URISTR_AUTO);
    ZQUri target(lowerCased(other.uri), URISTR_AUTO);
    way = target.getRelativeUri(self.uri);
  } else {
    way = other.getRelativeUri(uri);
  }
  return !way.isEmpty() && !way.startsWith(u"..", 2) && !hasScheme(view(way));
}

UnicodeString ZQUri::getExtension() const {
  if (isDataScheme() || isDirectory()) return UnicodeString();
  int32_t slash = uri.lastIndexOf(u'/');
  int32_t dot = uri.lastIndexOf(u'.', slash + 1);
  return dot < 0 ? UnicodeString() : UnicodeString(uri, dot);
}

UnicodeString ZQUri::getFileName() const {
  if (isFileScheme()) {
    UnicodeString local = getLocalPath();
    int32_t sep = local.lastIndexOf(u'\\');
    return sep < 0 ? local : UnicodeString(local, sep + 1);
  }
  int32_t slash = uri.lastIndexOf(u'/');
  return slash < 0 ? uri : UnicodeString(uri, slash + 1);
}

UnicodeString ZQUri::getBaseString() const {
  if (isDataScheme()) return UnicodeString();
  int32_t slash = uri.lastIndexOf(u'/');
  if (slash < 0) return UnicodeString(u"./");
  return localPathOf(UnicodeString(uri, 0, slash + 1));
}

UnicodeString ZQUri::getRelativeUri(const UnicodeString& base) const {
  if (uri.isEmpty() || base.isEmpty()) return UnicodeString();
  const int32_t slash = uri.lastIndexOf(u'/');
  if (slash < 0) return UnicodeString();
  View self = view(uri);
  View dir = self.substr(0, static_cast<size_t>(slash) + 1);
  View name = self.substr(static_cast<size_t>(slash) + 1);
  View baseView = view(base);
  const int32_t baseSlash = base.lastIndexOf(u'/');
  View baseDir = baseView.substr(0, static_cast<size_t>(baseSlash + 1));

  // Segments leave the end of `dir` until `baseDir` starts with it: that is the longest prefix
  // of `dir` ending in '/' that `baseDir` shares. With none, the two have no common root.
  size_t common = 0;
  while (common < dir.size() && common < baseDir.size() && dir[common] == baseDir[common]) {
    ++common;
  }
  size_t keep;
  if (common == dir.size()) {
    keep = dir.size();
  } else {
    size_t lastSlash = dir.substr(0, common).rfind(u'/');
    if (lastSlash == View::npos) return UnicodeString();
    keep = lastSlash + 1;
  }
  View tail = dir.substr(keep);

  UnicodeString result;
  for (size_t i = keep; i < baseDir.size(); ++i) {
    if (baseDir[i] == u'/') result.append(u"../", 3);
  }
  append(result, tail);
  append(result, name);
  return result;
}

UnicodeString ZQUri::getLocalPath() const { return localPathOf(uri); }

// ---- Modifications ----

UnicodeString ZQUri::setExtension(const UnicodeString& ext) { return setExtension(&ext); }

UnicodeString ZQUri::setExtension(const UnicodeString* ext) {
  if (isDirectory()) return ZQBogusString::getBugusString();
  UnicodeString old = getExtension();
  uri.truncate(uri.length() - old.length());
  if (ext) uri += *ext;
  return old;
}

UnicodeString ZQUri::removeFragment(bool withoutSharp) {
  int32_t hash = uri.indexOf(u'#');
  if (hash < 0) return UnicodeString();
  UnicodeString cut(uri, withoutSharp ? hash + 1 : hash);
  uri.truncate(hash);
  return cut;
}

ZQUri ZQUri::toDirectory() {
  if (!isDirectory()) uri.append(u'/');
  return *this;
}

// ---- Static helpers ----

UnicodeString ZQUri::toDirectory(UnicodeString& s, char16_t separator) {
  if (!endsWithChar(s, separator)) s.append(separator);
  return s;
}

bool ZQUri::backslash2slash(UnicodeString& s) {
  if (s.indexOf(u'\\') < 0) return false;
  s.findAndReplace(UnicodeString(u'\\'), UnicodeString(u'/'));
  return true;
}

bool ZQUri::slash2backslash(UnicodeString& s) {
  if (s.indexOf(u'/') < 0) return false;
  s.findAndReplace(UnicodeString(u'/'), UnicodeString(u'\\'));
  return true;
}

bool ZQUri::hasDriveLetter(const UnicodeString& s, int pos) {
  return pos >= 0 && uritext::hasDriveLetter(view(s), static_cast<size_t>(pos));
}

UnicodeString ZQUri::unescape(const UnicodeString& s) {
  if (s.indexOf(u'%') < 0) return s;
  return unescapeView(view(s));
}

UnicodeString ZQUri::getLocalPath(const UnicodeString& s) {
  if (!startsWithNoCase(view(s), u"file:")) return s;
  return ZQUri(s, URISTR_AUTO).getLocalPath();
}

UnicodeString ZQUri::escapeSharpIfExist(const UnicodeString& s) {
  if (s.indexOf(u'#') < 0) return s;
  ZQUri path(s, URISTR_PATH);
  if (!path.isFileScheme() || !path.isFileExists()) return s;
  UnicodeString escaped(path.uri);
  escaped.findAndReplace(UnicodeString(u'#'), UnicodeString(u"%23"));
  return escaped;
}

}  // namespace ZQCommonNS
