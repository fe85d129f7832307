// Catalog files of any bytes, read from a data: URI: loading ends with entries or a ZQError,
// and look-ups keep the first-match rules over whatever was stored.
#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzTextLoop.h"
#include "common/ZQError.h"
#include "common/ZQUri.h"
#include "common/ZQXmlCatalogs.h"
#include "common/ZQXmlUtil.h"
#include "xml/ZQXmlCatalogsImpl.h"

using namespace ZQCommonNS;

namespace {

void check(bool ok) {
  if (!ok) __builtin_trap();
}

// Goes on after each error, but gives up after many so a scanner that reports at the same place
// again can't keep the run going.
void countErrors(const ZQError& error, void* data) {
  if (++*static_cast<int*>(data) > 200) throw error;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzzsupport::chooseTextLoop(size);
  if (size == 0 || size > 16384) return 0;
  static const char kHex[] = "0123456789ABCDEF";
  std::string text = "data:application/xml,";
  for (size_t i = 1; i < size; ++i) {
    text += '%';
    text += kHex[data[i] >> 4];
    text += kHex[data[i] & 15];
  }
  ZQPtr<ZQXmlCatalogs> catalogs = ZQXmlUtil::createXmlCatalogs();
  int errors = 0;
  if (data[0] & 1) catalogs->setCallbackError(countErrors, &errors);
  try {
    catalogs->loadCatalog(ZQUri(UnicodeString::fromUTF8(text)));
  } catch (const ZQError&) {
    // a damaged file keeps what was read before the failure
  }

  const auto& entries = static_cast<ZQXmlCatalogsImpl*>(catalogs.get())->getEntries();
  for (const ZQXmlCatalogEntry& entry : entries) {
    check(!entry.key.isEmpty());
    check(!entry.target.isBogus());
    UnicodeString result = catalogs->resolveURI(entry.key);
    // A key finds its own entry unless an earlier one matches first.
    if (&entry == &entries.front() && entry.kind == ZQN_uri) check(result == entry.target);
  }
  const UnicodeString probe(u"\uFFFF never a key \uFFFF");
  bool anySuffixOrRewrite = false;
  for (const ZQXmlCatalogEntry& entry : entries) {
    anySuffixOrRewrite |= entry.kind == ZQN_rewriteURI || entry.kind == ZQN_uriSuffix;
    anySuffixOrRewrite |= entry.kind == ZQN_uri && entry.key == probe;
  }
  if (!anySuffixOrRewrite) check(catalogs->resolveURI(probe) == probe);
  return 0;
}
