// Namespace contexts: bindings per element, looked up from the innermost context outwards.
#include "common/ZQNamespaceManager.h"

#include <algorithm>

namespace ZQCommonNS {

namespace {

bool prefixBefore(const ZQNamespaceMap::Binding& binding, ZQName prefix) {
  return binding.first < prefix;
}

}  // namespace

ZQNamespaceMap::ZQNamespaceMap() = default;

ZQNamespaceMap::~ZQNamespaceMap() = default;

std::vector<ZQNamespaceMap::Binding>::iterator ZQNamespaceMap::lowerBound(ZQName prefix) {
  return std::lower_bound(m_bindings.begin(), m_bindings.end(), prefix, prefixBefore);
}

std::vector<ZQNamespaceMap::Binding>::const_iterator ZQNamespaceMap::lowerBound(
    ZQName prefix) const {
  return std::lower_bound(m_bindings.begin(), m_bindings.end(), prefix, prefixBefore);
}

void ZQNamespaceMap::set(ZQName prefix, ZQName ns) {
  auto it = lowerBound(prefix);
  if (it != m_bindings.end() && it->first == prefix) {
    it->second = ns;
    return;
  }
  m_bindings.insert(it, Binding(prefix, ns));
}

bool ZQNamespaceMap::find(ZQName prefix, ZQName& ns) const {
  auto it = lowerBound(prefix);
  if (it == m_bindings.end() || it->first != prefix) return false;
  ns = it->second;
  return true;
}

bool ZQNamespaceMap::contains(ZQName prefix) const {
  ZQName ns;
  return find(prefix, ns);
}

ZQName ZQNamespaceMap::get(ZQName prefix) const {
  ZQName ns;
  return find(prefix, ns) ? ns : ZQName();
}

ZQName ZQNamespaceMap::getPrefix(int pos) const {
  if (pos < 0 || pos >= getCount()) return ZQName();
  return m_bindings[static_cast<size_t>(pos)].first;
}

ZQName ZQNamespaceMap::getNamespace(int pos) const {
  if (pos < 0 || pos >= getCount()) return ZQName();
  return m_bindings[static_cast<size_t>(pos)].second;
}

ZQNamespaceManager::ZQNamespaceManager() : m_nameTable(ZQNameTable::addRefSharedNameTable()) {
  // Run-time names stay valid while a manager holds them, hence the table reference above.
  m_entries.reserve(16);
  m_entries.emplace_back();
  ZQNamespaceMap* base = new ZQNamespaceMap();
  m_entries.back().map = base;
  base->set(ZQN_xml, ZQN_NS_XML);
  base->set(ZQN_xmlns, ZQN_NS_XMLNS);
}

ZQNamespaceManager::~ZQNamespaceManager() {
  // The maps go first: nothing may outlive the names they hold.
  m_entries.clear();
  m_nameTable = nullptr;
  ZQNameTable::releaseSharedNameTable();
}

void ZQNamespaceManager::pushContext() { m_entries.emplace_back(); }

bool ZQNamespaceManager::popContext() {
  if (m_entries.size() < 2) return false;
  m_entries.pop_back();
  return true;
}

void ZQNamespaceManager::popToBase() {
  while (popContext()) {
  }
}

void ZQNamespaceManager::declare(ZQName prefix, ZQName ns) {
  // A binding already in force is not recorded, so a context without real declarations
  // keeps no map and writes no xmlns attribute.
  if (lookup(prefix) == ns) return;
  Entry& entry = m_entries.back();
  if (!entry.map) entry.map = new ZQNamespaceMap();
  entry.map->set(prefix, ns);
}

ZQName ZQNamespaceManager::lookup(ZQName prefix) const {
  for (auto it = m_entries.rbegin(); it != m_entries.rend(); ++it) {
    if (it->prefix == prefix && !it->namespaceUri.isEmpty()) return it->namespaceUri;
    ZQName ns;
    if (it->map && it->map->find(prefix, ns)) {
      if (!ns.isEmpty()) return ns;
      // xmlns="" undeclares the default namespace here and below; a prefix bound to
      // nothing is passed over.
      if (prefix.isEmpty()) return ZQName();
    }
  }
  return ZQName();
}

ZQName ZQNamespaceManager::lookupDefault() const {
  for (auto it = m_entries.rbegin(); it != m_entries.rend(); ++it) {
    ZQName ns;
    if (it->map && it->map->find(ZQName(), ns)) return ns;
  }
  return ZQName();
}

ZQName ZQNamespaceManager::lookupPrefix(ZQName ns) const {
  for (auto it = m_entries.rbegin(); it != m_entries.rend(); ++it) {
    if (it->namespaceUri == ns && !it->prefix.isEmpty()) return it->prefix;
    if (!it->map) continue;
    for (const ZQNamespaceMap::Binding& binding : *it->map) {
      if (binding.second == ns && !binding.first.isEmpty()) return binding.first;
    }
  }
  return ZQName();
}

int ZQNamespaceManager::getNamespaceCount(int depth) const {
  if (depth < 0 || depth > getDepth()) return 0;
  const Entry& entry = m_entries[static_cast<size_t>(depth)];
  return entry.map ? entry.map->getCount() : 0;
}

}  // namespace ZQCommonNS
