#include "core/platform/ZQPlatformLocale.h"

#include <clocale>
#include <cstring>

namespace ZQCommonNS::platform {

bool numericLocaleIsC() {
  const char* current = std::setlocale(LC_NUMERIC, nullptr);
  return current && std::strcmp(current, "C") == 0;
}

void setNumericLocaleC() { std::setlocale(LC_NUMERIC, "C"); }

icu::Locale defaultLocale() { return icu::Locale::getDefault(); }

}  // namespace ZQCommonNS::platform
