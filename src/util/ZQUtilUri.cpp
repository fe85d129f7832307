// The URI inside a CSS url(...) form, through the URI class's own reading of that form.
#include "common/ZQUri.h"
#include "common/ZQUtil.h"

namespace ZQCommonNS {

UnicodeString ZQUtil::unquoteUri(const UnicodeString& text) {
  if (text.isBogus()) return UnicodeString();
  return ZQUri(text, ZQUri::URISTR_CSS_URI).toString();
}

}  // namespace ZQCommonNS
