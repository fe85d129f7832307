// The identity catalog: every URI maps to itself.
#include "common/ZQXmlCatalogs.h"

namespace ZQCommonNS {

ZQXmlCatalogs::~ZQXmlCatalogs() = default;

void ZQXmlCatalogs::setCallbackError(void (*)(const ZQError&, void*), void*) {}

void ZQXmlCatalogs::loadCatalog(const ZQUri&) {}

UnicodeString ZQXmlCatalogs::resolveURI(const UnicodeString& uri) const { return uri; }

}  // namespace ZQCommonNS
