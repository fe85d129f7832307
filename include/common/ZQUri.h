// URIs: one normalised string per resource, built from URI references, paths and CSS values.
#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <istream>

#include "common/ZQExport.h"
#include "common/ZQName.h"

namespace ZQCommonNS {

class ZQXmlCatalogs;
class ZQGzipIStream;

/// A caller's source of resources, asked before any scheme is opened.
class ZQCOMMON_API ZQUriReferenceResolver2 {
 public:
  /// Appends `count` bytes at `bytes` to the resource being produced; `data` is handed back.
  typedef void (*WriteFunc)(size_t count, const void* bytes, void* data);

  virtual ~ZQUriReferenceResolver2();
  /// Produces the resource named by the NUL-terminated `uri` through `write`, passing `data`
  /// back on each call. True when it has produced the resource.
  virtual bool resolveUriReference(const char16_t* uri, WriteFunc write, void* data) = 0;
};

/// A URI held as one normalised string. The constructors decide what a string is (URI
/// reference, path, CSS value), escape it as needed and resolve it against a base.
class ZQCOMMON_API ZQUri {
 public:
  /// What a constructor's string is.
  enum URISTRTYPE {
    URISTR_URI = 0,       ///< A URI reference; a path if it has a drive letter or a backslash.
    URISTR_PATH = 1,      ///< A path, unless it has a scheme.
    URISTR_CSS_URI = 2,   ///< A CSS value, read as URISTR_URI after unwrapping url(...).
    URISTR_CSS_PATH = 3,  ///< A CSS value, read as URISTR_PATH after unwrapping url(...).
    URISTR_AUTO = 4       ///< Unknown: a path if it names an existing file, else a reference.
  };

  /// Handle of a loaded library.
  typedef void* ModuleHandle;

  /// The in-and-out record of getIStream: what the server said about the content, and how to
  /// ask it. Built with the connect fields at -1 and no flags.
  struct ContentInfo {
    /// Bits of `flags`.
    enum {
      FLAG_UPDATE_URI = 0x01,          ///< after a redirect, the URI takes the final URL
      FLAG_IGNORE_CERT_ERRORS = 0x02,  ///< accept invalid server certificates
    };
    UnicodeString contentType;      ///< out: the media type, parameters removed
    UnicodeString charset;          ///< out: the charset parameter
    UnicodeString contentLanguage;  ///< out: the language header
    int32_t contentLength = -1;     ///< out: the length header, -1 when unknown
    UnicodeString referer;          ///< in: sent as the referrer; empty for none
    int32_t connectTimeout = -1;    ///< in: milliseconds; taken as it is (negative: no limit)
    int32_t connectRetries = -1;    ///< in: taken when not negative
    int32_t connectBackoff = -1;    ///< in: milliseconds; taken when not negative
    uint8_t flags = 0;              ///< in: FLAG_UPDATE_URI, FLAG_IGNORE_CERT_ERRORS
  };

  /// The empty URI.
  ZQUri() = default;
  /// A URI from `str` of unknown type (URISTR_AUTO), mapped through `catalogs` when given.
  explicit ZQUri(const UnicodeString& str, const ZQXmlCatalogs* catalogs = nullptr);
  /// A URI from `str` of the given type, mapped through `catalogs` when given.
  ZQUri(const UnicodeString& str, URISTRTYPE type, const ZQXmlCatalogs* catalogs = nullptr);
  /// `str` (URISTR_AUTO) resolved against `base`.
  ZQUri(const ZQUri& base, const UnicodeString& str, const ZQXmlCatalogs* catalogs = nullptr);
  /// `str` of the given type resolved against `base`.
  ZQUri(const ZQUri& base, const UnicodeString& str, URISTRTYPE type,
        const ZQXmlCatalogs* catalogs = nullptr);
  ZQUri(const ZQUri&) = default;
  ZQUri(ZQUri&&) = default;
  ZQUri& operator=(const ZQUri&) = default;
  ZQUri& operator=(ZQUri&&) = default;
  virtual ~ZQUri();

  // ---- Queries ----

  /// The normalised string.
  const UnicodeString& toString() const { return uri; }
  operator const UnicodeString&() const { return uri; }
  /// True for the empty URI.
  bool isEmpty() const { return uri.isEmpty(); }
  /// Case-sensitive order of the normalised strings.
  bool operator<(const ZQUri& other) const { return uri < other.uri; }
  /// Case-sensitive equality of the normalised strings.
  bool operator==(const ZQUri& other) const { return uri == other.uri; }
  bool operator!=(const ZQUri& other) const { return uri != other.uri; }

  /// The lower-cased scheme as a name, or the empty name when there is none.
  ZQName getScheme() const;
  /// True when the string has a scheme (two characters at least, so "C:" is none).
  bool isAbsolute() const;
  /// True for a non-empty URI that starts with "file:" or has no scheme.
  bool isFile() const;
  /// Case-insensitive test for the prefix "file:".
  bool isFileScheme() const;
  /// Case-insensitive test for the prefix "data:".
  bool isDataScheme() const;
  /// Case-insensitive test for the prefix "jar:".
  bool isJarScheme() const;
  /// True for "http:" and "https:" in any case.
  bool isHttpScheme() const;
  /// True when the last character is '/'.
  bool isDirectory() const;
  /// True for a "file:" URI whose file lies on a network file system.
  bool isRemote() const;
  /// True when the local path exists.
  bool isFileExists() const;
  /// True when the path exists (a local path as getLocalPath gives it, in the native encoding).
  static bool isFileExists(const char* path);
  /// True when the path exists (a local path as getLocalPath gives it).
  static bool isFileExists(const wchar_t* path);
  /// Both non-empty and local, and their local paths are equal without regard to case.
  bool isSameFile(const ZQUri& other) const;
  /// True when `other` lies at or below this URI's directory.
  bool isDescendantOrSelf(const ZQUri& other) const;
  /// The extension of the last segment, dot included; empty for a "data:" URI or a directory.
  UnicodeString getExtension() const;
  /// The last part of the local path of a "file:" URI, otherwise of the string.
  UnicodeString getFileName() const;
  /// The directory of this URI in the form of getLocalPath; empty for "data:".
  UnicodeString getBaseString() const;
  /// This URI relative to the directory of `base`; empty when the two have no common root.
  UnicodeString getRelativeUri(const UnicodeString& base) const;
  /// The path in the local form ("C:\dir\name", "\\server\share") for "file:" URIs; any other
  /// URI comes back as it is.
  UnicodeString getLocalPath() const;

  // ---- Streams ----

  /// getIStream(nullptr, nullptr).
  std::istream* getIStream() const;
  /// A new stream over the resource, which the caller deletes, or null; never throws. A
  /// caller's resolver is asked first, then the scheme decides: local file, "data:", "jar:"
  /// (an entry in a zip, zips nested with further "!/"), HTTP and HTTPS. `info` carries what
  /// the server said and how to ask it; `error` receives the reason of an HTTP failure.
  std::istream* getIStream(ContentInfo* info, UnicodeString* error) const;
  /// A new binary output stream on the local file, or null. Opened for output (plus trunc when
  /// asked), which on its own already starts the file anew.
  std::ofstream* getOStream(bool truncate) const;
  /// A new binary stream for reading and writing the local file, or null.
  std::fstream* getFStream() const;
  /// A new gzip-reading stream on the local file, or null.
  ZQGzipIStream* getGzipStream() const;
  /// Seeks `stream` to 0 and wraps it (not owned) in a new gzip-reading stream.
  static ZQGzipIStream* getGzipStream(std::istream& stream);
  /// True when the resource starts with the two gzip bytes 1F 8B.
  bool isGzip() const;
  /// Seeks `stream` to 0 and reads two bytes: true when they are 1F 8B. The stream is left
  /// where the reading left it.
  static bool isGzip(std::istream& stream);
  /// For HTTP and HTTPS: asks the server (once per process and URL) where the URI leads, and
  /// takes the final URL of its redirects. True when this URI's string changed.
  bool checkRedirection();
  /// The resource as the installed resolver produces it, in a new memory stream, or null.
  std::istream* getStreamFromResolver() const;

  // ---- Modifications ----

  /// Replaces the extension by `ext` as given (no dot added); returns the old extension, or
  /// the bogus string for a directory, which is left unchanged.
  UnicodeString setExtension(const UnicodeString& ext);
  /// As above; a null `ext` only removes the extension.
  UnicodeString setExtension(const UnicodeString* ext);
  /// Cuts the string at its first '#' and returns the cut part, without the '#' when asked.
  UnicodeString removeFragment(bool withoutSharp);
  /// Appends '/' unless the string ends in one; returns a copy.
  ZQUri toDirectory();

  // ---- Static helpers ----

  /// Appends `separator` to `s` unless it ends in it; returns a copy.
  static UnicodeString toDirectory(UnicodeString& s, char16_t separator);
  /// Replaces every '\' by '/'; true if anything changed.
  static bool backslash2slash(UnicodeString& s);
  /// Replaces every '/' by '\'; true if anything changed.
  static bool slash2backslash(UnicodeString& s);
  /// Two characters at least from `pos`, an ASCII letter and a ':'.
  static bool hasDriveLetter(const UnicodeString& s, int pos);
  /// Percent-decodes `s`, reading the bytes as UTF-8; a string without '%' comes back as it is.
  static UnicodeString unescape(const UnicodeString& s);
  /// The local path of a "file:" string; any other string comes back as it is.
  static UnicodeString getLocalPath(const UnicodeString& s);
  /// For a string with '#' that names an existing file: its "file:" URI with each '#' as "%23";
  /// otherwise the argument.
  static UnicodeString escapeSharpIfExist(const UnicodeString& s);
  /// The installation directory (from `envVar`, else the directory of the loaded `module`,
  /// else "./"), with `path` resolved against it when given.
  static ZQUri getModuleUri(const char* module, const char* path, const char* envVar);

  /// Loads the library at the local path ("x.dll" reads "x.so"); null on failure.
  ModuleHandle loadLibrary() const;
  /// Address of the symbol `name` in `module`, or null.
  static void* getProcAddress(ModuleHandle module, const char* name);
  /// Unloads `module`; a null handle does nothing.
  static void freeLibrary(ModuleHandle module);

  /// Stores a process-wide copy of the user agent.
  static void setUserAgent(const UnicodeString& userAgent);
  /// The stored user agent, or the empty string. Takes no lock: call it only while no other
  /// thread calls setUserAgent.
  static const UnicodeString& getUserAgent();
  /// The user agent sent when none is stored, naming the running system.
  static UnicodeString getDefaultUserAgent();

  /// Installs the caller's resolver and returns the previous one; no ownership passes.
  static ZQUriReferenceResolver2* setUriReferenceResolver2(ZQUriReferenceResolver2* resolver);
  /// The installed resolver, or null.
  static ZQUriReferenceResolver2* getUriReferenceResolver2();

  /// Connection timeout in milliseconds for HTTP; INT_MIN (the default) keeps the platform's.
  static void setInternetConnectTimeout(int milliseconds);
  static int getInternetConnectTimeout();
  /// Connection retries for HTTP; INT_MIN (the default) keeps the platform's.
  static void setInternetConnectRetries(int retries);
  static int getInternetConnectRetries();
  /// Wait between connection retries in milliseconds; INT_MIN (the default) keeps the platform's.
  static void setInternetConnectBackoff(int milliseconds);
  static int getInternetConnectBackoff();

  /// Frees the stored user agent; called at unload, when no other thread runs.
  static void cleanup();

 protected:
  /// Classification that drives normalisation and resolution (values 0 to 3).
  enum UriStringKind {
    KIND_REFERENCE = 0,    ///< escaped only if not valid as it stands
    KIND_LITERAL = 1,      ///< escaped always, '#' too
    KIND_PATH = 2,         ///< converted to a "file:" URI where rooted
    KIND_PATH_OR_URI = 3,  ///< a path unless it has a scheme, then a reference
    /// Added to KIND_PATH_OR_URI for a string that names an existing file: its '#' belongs to
    /// the name, so it is never a fragment and is written "%23" once the name is escaped.
    KIND_FLAG_EXISTING_FILE = 0x10
  };

  /// Catalog mapping, preparation, and normalisation or resolution against `base`.
  void construct(const ZQUri* base, const UnicodeString& str, URISTRTYPE type,
                 const ZQXmlCatalogs* catalogs);
  /// Cleans `str` in place (CSS unwrapping) and returns its kind.
  static int prepareUriString(UnicodeString& str, URISTRTYPE type);
  /// Normal form of `s` of the given kind when there is no base.
  static UnicodeString normalizeUriString(const UnicodeString& s, int kind);
  /// Normal form of `ref` of the given kind resolved against the normalised `base`.
  static UnicodeString resolveUriString(const UnicodeString& base, const UnicodeString& ref,
                                        int kind);

  UnicodeString uri;  ///< the normalised form
};

}  // namespace ZQCommonNS
