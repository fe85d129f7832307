// The C run-time's locale, as far as the library touches it.
#pragma once

namespace ZQCommonNS::platform {

/// Whether the numeric category of the C run-time's locale is "C".
bool numericLocaleIsC();
/// Sets the numeric category of the C run-time's locale to "C".
void setNumericLocaleC();

}  // namespace ZQCommonNS::platform
