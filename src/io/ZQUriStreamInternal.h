// Pieces of the HTTP side of URI streams that tests reach directly.
#pragma once

#include "common/ZQExport.h"
#include "common/ZQUri.h"

namespace ZQCommonNS {

/// The parts of an HTTP URL as the library splits it, with no escaping or unescaping.
struct ZQHttpUrlParts {
  UnicodeString host;
  int port = 80;
  UnicodeString user;
  UnicodeString password;
  UnicodeString path;
  bool secure = false;
};

/// Splits `url`: the text behind "https://" (8 characters) or "http://" (7), the path from its
/// first '/' ("/" when none), user information before an '@' above index 0 (user and password
/// split at a ':' above index 0), and a port behind a ':' of the host, read with atoi.
ZQCOMMON_API ZQHttpUrlParts crackHttpUrl(const ZQUri& url);

/// Records that `url` redirects to `finalUrl` (empty: it doesn't), and that `finalUrl` itself
/// doesn't redirect. A URL already known keeps its entry.
ZQCOMMON_API void rememberRedirection(const UnicodeString& url, const UnicodeString& finalUrl);

/// The cached final URL of `url`: nothing when the URL was never asked about, an empty string
/// when it doesn't redirect.
ZQCOMMON_API bool lookupRedirection(const UnicodeString& url, UnicodeString& finalUrl);

/// Forgets every cached redirection (what unload does).
ZQCOMMON_API void clearRedirectionCache();

}  // namespace ZQCommonNS
