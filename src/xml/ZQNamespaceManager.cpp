// Namespace contexts: bindings per element, looked up from the innermost context outwards.
#include "common/ZQNamespaceManager.h"

#include <algorithm>
#include <atomic>

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
  static std::atomic<uint64_t> nextStamp{0};
  m_stamp = nextStamp.fetch_add(1, std::memory_order_relaxed) + 1;
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
  m_entryIndex.reserve(16);
  m_entries.emplace_back();
  m_entryIndex.emplace_back();
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

namespace {

// Contexts this near the base are found by walking them: a walk over a few entries costs less
// than keeping their index up to date on every push and pop. Deeper ones are indexed.
constexpr int kWalkedDepth = 32;

// What one context answers for lookup(prefix): true, with `ns`, when the walk stops there.
bool answersPrefix(const ZQNamespaceManager::Entry& entry, ZQName prefix, ZQName& ns) {
  if (entry.prefix == prefix && !entry.namespaceUri.isEmpty()) {
    ns = entry.namespaceUri;
    return true;
  }
  ZQName bound;
  if (!entry.map || !entry.map->find(prefix, bound)) return false;
  // xmlns="" undeclares the default namespace here and below; a prefix bound to nothing is
  // passed over.
  if (bound.isEmpty() && !prefix.isEmpty()) return false;
  ns = bound;
  return true;
}

bool answersDefault(const ZQNamespaceManager::Entry& entry, ZQName& ns) {
  return entry.map && entry.map->find(ZQName(), ns);
}

bool answersNamespace(const ZQNamespaceManager::Entry& entry, ZQName ns, ZQName& prefix) {
  if (entry.namespaceUri == ns && !entry.prefix.isEmpty()) {
    prefix = entry.prefix;
    return true;
  }
  if (!entry.map) return false;
  for (const ZQNamespaceMap::Binding& binding : *entry.map) {
    if (binding.second == ns && !binding.first.isEmpty()) {
      prefix = binding.first;
      return true;
    }
  }
  return false;
}

}  // namespace

void ZQNamespaceManager::pushContext() {
  // The top stops being written once a context opens above it: from now on a deep one is
  // looked up through the index.
  const int depth = getDepth();
  if (depth >= kWalkedDepth) indexEntry(depth);
  m_entries.emplace_back();
  m_entryIndex.emplace_back();
}

bool ZQNamespaceManager::popContext() {
  if (m_entries.size() < 2) return false;
  unindexEntry(getDepth());
  m_entries.pop_back();
  m_entryIndex.pop_back();
  // The new top keeps its items: look-ups pass over them, and the next push keeps them if
  // the entry is unchanged by then.
  return true;
}

void ZQNamespaceManager::popToBase() {
  while (popContext()) {
  }
}

void ZQNamespaceManager::addItem(IndexStack& stack, int depth, ZQName value) {
  stack.push_back(IndexItem{depth, value});
  m_indexLog.push_back(&stack);
}

void ZQNamespaceManager::indexEntry(int depth) {
  const Entry& entry = m_entries[static_cast<size_t>(depth)];
  EntryIndex& index = m_entryIndex[static_cast<size_t>(depth)];
  uint64_t stamp = entry.map ? entry.map->m_stamp : 0;
  if (index.indexed) {
    if (index.prefix == entry.prefix && index.namespaceUri == entry.namespaceUri &&
        index.stamp == stamp)
      return;
    unindexEntry(depth);
  }
  index.indexed = true;
  index.prefix = entry.prefix;
  index.namespaceUri = entry.namespaceUri;
  index.stamp = stamp;
  index.logStart = m_indexLog.size();

  // Each stack gets at most one item for this depth: the one the walk would stop at.
  bool ownAnswers = !entry.namespaceUri.isEmpty();
  if (ownAnswers) addItem(m_byPrefix[entry.prefix], depth, entry.namespaceUri);
  if (!entry.prefix.isEmpty()) addItem(m_byNamespace[entry.namespaceUri], depth, entry.prefix);
  if (!entry.map) return;
  for (const ZQNamespaceMap::Binding& binding : *entry.map) {
    ZQName prefix = binding.first;
    ZQName ns = binding.second;
    if (!(ownAnswers && prefix == entry.prefix)) {
      // A prefix bound to 0 is passed over, but xmlns="" answers 0 for the default.
      if (!ns.isEmpty() || prefix.isEmpty()) addItem(m_byPrefix[prefix], depth, ns);
    }
    if (prefix.isEmpty()) {
      addItem(m_defaults, depth, ns);
    } else {
      IndexStack& stack = m_byNamespace[ns];
      // The element's name, then the map in order: the first one answers.
      if (stack.empty() || stack.back().depth != depth) addItem(stack, depth, prefix);
    }
  }
}

void ZQNamespaceManager::unindexEntry(int depth) {
  EntryIndex& index = m_entryIndex[static_cast<size_t>(depth)];
  if (!index.indexed) return;
  // Only entries up to the top are indexed, in depth order, so this entry's items are the
  // last ones of the log and of each stack they went to.
  while (m_indexLog.size() > index.logStart) {
    m_indexLog.back()->pop_back();
    m_indexLog.pop_back();
  }
  index.indexed = false;
}

bool ZQNamespaceManager::answerBelowTop(const IndexStack* stack, ZQName& value) const {
  if (!stack) return false;
  int top = getDepth();
  // The top's own items, if it still has some from an earlier push, are stale: skip them.
  for (auto it = stack->rbegin(); it != stack->rend(); ++it) {
    if (it->depth < top) {
      value = it->value;
      return true;
    }
  }
  return false;
}

const ZQNamespaceManager::IndexStack* ZQNamespaceManager::findStack(
    const std::unordered_map<ZQName, IndexStack>& stacks, ZQName key) const {
  // With nothing indexed, as in any document less deep than the walked contexts, the
  // index is not asked at all.
  if (m_indexLog.empty()) return nullptr;
  auto found = stacks.find(key);
  return found == stacks.end() ? nullptr : &found->second;
}

int ZQNamespaceManager::walkedBelowTop() const { return std::min(getDepth(), kWalkedDepth); }

void ZQNamespaceManager::declare(ZQName prefix, ZQName ns) {
  // A binding already in force is not recorded, so a context without real declarations
  // keeps no map and writes no xmlns attribute.
  if (lookup(prefix) == ns) return;
  Entry& entry = m_entries.back();
  if (!entry.map) entry.map = new ZQNamespaceMap();
  entry.map->set(prefix, ns);
}

// Each look-up asks the top, then the indexed contexts nearest first, then walks the
// contexts near the base: the order of the walk from the top down.
ZQName ZQNamespaceManager::lookup(ZQName prefix) const {
  ZQName ns;
  if (answersPrefix(m_entries.back(), prefix, ns)) return ns;
  if (answerBelowTop(findStack(m_byPrefix, prefix), ns)) return ns;
  for (int depth = walkedBelowTop() - 1; depth >= 0; --depth)
    if (answersPrefix(m_entries[static_cast<size_t>(depth)], prefix, ns)) return ns;
  return ZQName();
}

ZQName ZQNamespaceManager::lookupDefault() const {
  ZQName ns;
  if (answersDefault(m_entries.back(), ns)) return ns;
  if (!m_indexLog.empty() && answerBelowTop(&m_defaults, ns)) return ns;
  for (int depth = walkedBelowTop() - 1; depth >= 0; --depth)
    if (answersDefault(m_entries[static_cast<size_t>(depth)], ns)) return ns;
  return ZQName();
}

ZQName ZQNamespaceManager::lookupPrefix(ZQName ns) const {
  ZQName prefix;
  if (answersNamespace(m_entries.back(), ns, prefix)) return prefix;
  if (answerBelowTop(findStack(m_byNamespace, ns), prefix)) return prefix;
  for (int depth = walkedBelowTop() - 1; depth >= 0; --depth)
    if (answersNamespace(m_entries[static_cast<size_t>(depth)], ns, prefix)) return prefix;
  return ZQName();
}

int ZQNamespaceManager::getNamespaceCount(int depth) const {
  if (depth < 0 || depth > getDepth()) return 0;
  const Entry& entry = m_entries[static_cast<size_t>(depth)];
  return entry.map ? entry.map->getCount() : 0;
}

}  // namespace ZQCommonNS
