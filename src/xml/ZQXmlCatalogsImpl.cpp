// Reading of catalog files and the mapping of URIs through their entries.
#include "xml/ZQXmlCatalogsImpl.h"

#include <cstdint>

#include "common/ZQError.h"
#include "common/ZQString.h"
#include "common/ZQUri.h"
#include "common/ZQXmlUtil.h"
#include "core/ZQCommonError.h"

namespace ZQCommonNS {

namespace {

constexpr ZQNameEnum kCatalogNamespace = ZQN_urn_oasis_names_tc_entity_xmlns_xml_catalog;

// How each entry element is read: the attribute that gives the key, the one that gives the
// target, and whether the target is resolved against the base in force.
struct EntryRule {
  ZQNameEnum element;
  ZQNameEnum keyAttribute;
  ZQNameEnum targetAttribute;
  bool absolute;
};

constexpr EntryRule kEntryRules[] = {
    {ZQN_public, ZQN_publicId, ZQN_uri, true},
    {ZQN_system, ZQN_systemId, ZQN_uri, true},
    {ZQN_uri, ZQN_name, ZQN_uri, true},
    {ZQN_delegatePublic, ZQN_publicIdStartString, ZQN_catalog, true},
    {ZQN_delegateSystem, ZQN_systemIdStartString, ZQN_catalog, true},
    {ZQN_delegateURI, ZQN_uriStartString, ZQN_catalog, true},
    {ZQN_rewriteSystem, ZQN_systemIdStartString, ZQN_rewritePrefix, false},
    {ZQN_rewriteURI, ZQN_uriStartString, ZQN_rewritePrefix, false},
    {ZQN_systemSuffix, ZQN_systemIdSuffix, ZQN_uri, false},
    {ZQN_uriSuffix, ZQN_uriSuffix, ZQN_uri, false},
};

const EntryRule* findRule(ZQName element) {
  for (const EntryRule& rule : kEntryRules) {
    if (element == rule.element) return &rule;
  }
  return nullptr;
}

// An absent attribute reads as bogus; stored texts are plain strings.
UnicodeString plain(UnicodeString s) {
  if (s.isBogus()) s.remove();
  return s;
}

// `value`, or the top of `stack` when `value` is empty or absent.
UnicodeString valueOrTop(const UnicodeString& value, const std::vector<UnicodeString>& stack) {
  if (!value.isEmpty()) return value;
  return stack.empty() ? UnicodeString() : stack.back();
}

}  // namespace

ZQPtr<ZQXmlCatalogs> ZQXmlUtil::createXmlCatalogs() {
  return ZQPtr<ZQXmlCatalogs>(new ZQXmlCatalogsImpl());
}

ZQXmlCatalogsImpl::ZQXmlCatalogsImpl() : m_parser(ZQXmlUtil::createXmlParser()) {
  // A catalog file's DOCTYPE usually names the public DTD; reading it would only cost a fetch.
  m_parser->setFeature(ZQXmlParser::FEATURE_SKIP_EXTERNAL_DTD, true);
}

ZQXmlCatalogsImpl::~ZQXmlCatalogsImpl() = default;

void ZQXmlCatalogsImpl::setCallbackError(void (*fn)(const ZQError&, void*), void* data) {
  m_parser->setCallbackError(fn, data);
}

void ZQXmlCatalogsImpl::loadCatalog(const ZQUri& uri) {
  m_parser->setInput(uri.toString(), UnicodeString(), UnicodeString());
  try {
    readCatalog();
  } catch (...) {
    // Entries read before the failure stay; the file is let go at once.
    m_parser->closeStream();
    throw;
  }
}

void ZQXmlCatalogsImpl::readCatalog() {
  // `prefer` is tracked as the file nests it, though no look-up depends on it.
  std::vector<UnicodeString> prefers;
  std::vector<UnicodeString> bases;
  ZQXmlParser& parser = *m_parser;
  for (;;) {
    ZQXmlParser::EventType event = parser.next();
    if (event == ZQXmlParser::END_DOCUMENT) break;
    if (event == ZQXmlParser::END_TAG) {
      if (parser.getNamespace() == kCatalogNamespace && parser.getName() == ZQN_group) {
        // The root's level stays, so a stray end tag in a damaged file can't empty the stacks.
        if (prefers.size() > 1) prefers.pop_back();
        if (bases.size() > 1) bases.pop_back();
      }
      continue;
    }
    if (event != ZQXmlParser::START_TAG) continue;

    const int depth = parser.getDepth();
    const ZQName ns = parser.getNamespace();
    const ZQName name = parser.getName();
    if (depth == 1) {
      if (ns != kCatalogNamespace || name != ZQN_catalog) {
        throwCommonError(518, ZQSRC_XML_CATALOGS, parser.getInputUri(), ZQEmptyString::EMPTY_VALUE);
      }
      prefers.push_back(plain(parser.getAttributeValue(kCatalogNamespace, ZQN_prefer)));
      UnicodeString base = parser.getAttributeValue(ZQN_NS_XML, ZQN_base);
      bases.push_back(base.isEmpty() ? parser.getInputUri() : base);
      continue;
    }
    // Elements of other vocabularies are transparent: their children are read in turn.
    if (ns != kCatalogNamespace) continue;
    if (name == ZQN_group && depth == 2) {
      prefers.push_back(
          valueOrTop(parser.getAttributeValue(kCatalogNamespace, ZQN_prefer), prefers));
      bases.push_back(valueOrTop(parser.getAttributeValue(ZQN_NS_XML, ZQN_base), bases));
      continue;
    }
    // A `nextCatalog` is not followed, and a group below the top level is not entered.
    readEntry(name, bases.empty() ? parser.getInputUri() : bases.back());
    skipElement(depth);
  }
}

void ZQXmlCatalogsImpl::readEntry(ZQName kind, const UnicodeString& base) {
  const EntryRule* rule = findRule(kind);
  if (!rule) return;
  ZQXmlParser& parser = *m_parser;
  UnicodeString key = parser.getAttributeValue(kCatalogNamespace, rule->keyAttribute);
  if (key.isEmpty()) return;
  UnicodeString target = plain(parser.getAttributeValue(kCatalogNamespace, rule->targetAttribute));
  if (rule->absolute) {
    UnicodeString ownBase = parser.getAttributeValue(ZQN_NS_XML, ZQN_base);
    ZQUri baseUri(ownBase.isEmpty() ? base : ownBase);
    target = ZQUri(baseUri, target).toString();
  }
  m_entries.push_back(ZQXmlCatalogEntry{rule->element, key, target});
}

void ZQXmlCatalogsImpl::skipElement(int depth) {
  ZQXmlParser& parser = *m_parser;
  for (;;) {
    ZQXmlParser::EventType event = parser.next();
    if (event == ZQXmlParser::END_DOCUMENT) return;
    if (event == ZQXmlParser::END_TAG && parser.getDepth() == depth) return;
  }
}

UnicodeString ZQXmlCatalogsImpl::resolveURI(const UnicodeString& uri) const {
  for (const ZQXmlCatalogEntry& entry : m_entries) {
    if (entry.kind == ZQN_uri) {
      if (uri == entry.key) return entry.target;
    } else if (entry.kind == ZQN_rewriteURI) {
      if (uri.startsWith(entry.key)) {
        UnicodeString result(entry.target);
        result.append(uri, entry.key.length(), INT32_MAX);
        return result;
      }
    } else if (entry.kind == ZQN_uriSuffix) {
      if (uri.endsWith(entry.key)) return entry.target;
    }
  }
  return uri;
}

}  // namespace ZQCommonNS
