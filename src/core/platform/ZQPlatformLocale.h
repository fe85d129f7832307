// The run-time's locale, as far as the library touches it.
#pragma once

#include <unicode/locid.h>

namespace ZQCommonNS::platform {

/// Whether the numeric category of the C run-time's locale is "C".
bool numericLocaleIsC();
/// Sets the numeric category of the C run-time's locale to "C".
void setNumericLocaleC();

/// The user's locale as ICU reads it from the environment (LC_ALL, LC_MESSAGES, LANG) or as
/// the process set it through Locale::setDefault.
icu::Locale defaultLocale();

}  // namespace ZQCommonNS::platform
