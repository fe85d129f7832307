#include <curl/curl.h>

#include <cstring>

#include "core/platform/ZQPlatform.h"

namespace ZQCommonNS::platform {

std::string errnoText(unsigned long code) {
  if (code > 0x7FFFFFFFul) return {};
  char buf[256];
  buf[0] = '\0';
  // GNU strerror_r may return a static string instead of filling the buffer.
  const char* text = strerror_r(static_cast<int>(code), buf, sizeof buf);
  if (!text || !*text) return {};
  if (std::strncmp(text, "Unknown error", 13) == 0) return {};
  return text;
}

std::string httpClientErrorText(unsigned long code) {
  if (code == 0 || code >= static_cast<unsigned long>(CURL_LAST)) return {};
  const char* text = curl_easy_strerror(static_cast<CURLcode>(code));
  if (!text || std::strncmp(text, "Unknown error", 13) == 0) return {};
  return text;
}

}  // namespace ZQCommonNS::platform
