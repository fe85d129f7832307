// ZQUri's process-wide side: installation directory, libraries, user agent, HTTP connection
// settings and the caller's resolver.
#include <climits>
#include <optional>
#include <string>

#include "common/ZQLock.h"
#include "common/ZQString.h"
#include "common/ZQUri.h"
#include "core/ZQUnload.h"
#include "core/platform/ZQPlatformModule.h"

namespace ZQCommonNS {

namespace {

/// Guards the user agent and the reading of the environment. Never destroyed, so that a
/// static destructor of a caller may still use it.
ZQLock& uriLock() {
  static ZQLock* lock = new ZQLock();
  return *lock;
}

UnicodeString* s_userAgent = nullptr;
const bool s_unloadRegistered = (registerUnloadCleanup(&ZQUri::cleanup), true);
ZQUriReferenceResolver2* s_resolver2 = nullptr;
// INT_MIN marks "keep the platform's default".
int s_connectTimeout = INT_MIN;
int s_connectRetries = INT_MIN;
int s_connectBackoff = INT_MIN;

std::string toUtf8(const UnicodeString& s) {
  std::string out;
  s.toUTF8String(out);
  return out;
}

bool endsWith(const std::string& s, const char* tail) {
  size_t n = std::char_traits<char>::length(tail);
  return s.size() >= n && s.compare(s.size() - n, n, tail) == 0;
}

}  // namespace

ZQUri ZQUri::getModuleUri(const char* module, const char* path, const char* envVar) {
  UnicodeString directory;
  if (envVar && *envVar) {
    std::optional<std::string> value;
    {
      ZQMutex guard(uriLock());
      value = platform::environmentValue(envVar);
    }
    if (value) {
      UnicodeString text = UnicodeString::fromUTF8(*value);
      if (text.length() > 1024) text.truncate(1024);
      ZQUri fromEnv(text, URISTR_AUTO);
      if (fromEnv.isFile() && fromEnv.isFileExists()) directory = fromEnv.getLocalPath();
    }
  }
  if (directory.isEmpty() && module && *module) {
    directory = UnicodeString::fromUTF8(platform::loadedModuleDirectory(module));
  }
  const std::string pathText = path ? path : "";
  if (directory.isEmpty()) {
    // A library named by itself ("x.dll", here also "x.so") is the answer.
    if (endsWith(pathText, ".dll") || endsWith(pathText, ".so")) {
      return ZQUri(UnicodeString::fromUTF8(pathText), URISTR_AUTO);
    }
    directory = UnicodeString(u"./");
  }
  const int32_t n = directory.length();
  const bool endsInSeparator = directory[n - 1] == u'/' || directory[n - 1] == u'\\';
  if (pathText.empty()) {
    if (endsInSeparator) directory.truncate(n - 1);
    return ZQUri(directory, URISTR_AUTO);
  }
  if (!endsInSeparator) directory.append(u'/');
  return ZQUri(ZQUri(directory, URISTR_AUTO), UnicodeString::fromUTF8(pathText), URISTR_AUTO);
}

ZQUri::ModuleHandle ZQUri::loadLibrary() const {
  if (uri.isEmpty()) return nullptr;
  return platform::libraryOpen(toUtf8(getLocalPath()));
}

void* ZQUri::getProcAddress(ModuleHandle module, const char* name) {
  return platform::librarySymbol(module, name);
}

void ZQUri::freeLibrary(ModuleHandle module) { platform::libraryClose(module); }

void ZQUri::setUserAgent(const UnicodeString& userAgent) {
  ZQMutex guard(uriLock());
  if (s_userAgent) {
    *s_userAgent = userAgent;
  } else {
    s_userAgent = new UnicodeString(userAgent);
  }
}

const UnicodeString& ZQUri::getUserAgent() {
  return s_userAgent ? *s_userAgent : ZQEmptyString::getEmptyString();
}

UnicodeString ZQUri::getDefaultUserAgent() {
  UnicodeString agent(u"Keldmoor Common Library");
  agent += u" for ";
  agent += UnicodeString::fromUTF8(platform::systemDescription());
  agent += u" (";
  agent += u"2,0,0,0";
  agent += u")";
  return agent;
}

ZQUriReferenceResolver2* ZQUri::setUriReferenceResolver2(ZQUriReferenceResolver2* resolver) {
  ZQUriReferenceResolver2* previous = s_resolver2;
  s_resolver2 = resolver;
  return previous;
}

ZQUriReferenceResolver2* ZQUri::getUriReferenceResolver2() { return s_resolver2; }

void ZQUri::setInternetConnectTimeout(int milliseconds) { s_connectTimeout = milliseconds; }
int ZQUri::getInternetConnectTimeout() { return s_connectTimeout; }
void ZQUri::setInternetConnectRetries(int retries) { s_connectRetries = retries; }
int ZQUri::getInternetConnectRetries() { return s_connectRetries; }
void ZQUri::setInternetConnectBackoff(int milliseconds) { s_connectBackoff = milliseconds; }
int ZQUri::getInternetConnectBackoff() { return s_connectBackoff; }

void ZQUri::cleanup() {
  delete s_userAgent;
  s_userAgent = nullptr;
}

}  // namespace ZQCommonNS
