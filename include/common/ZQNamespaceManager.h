// The stack of open elements and their namespace bindings, shared by the parser and serializer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

#include "common/ZQExport.h"
#include "common/ZQName.h"
#include "common/ZQObject.h"

namespace ZQCommonNS {

/// The bindings of one context: prefix to namespace, ordered by the prefix's number as a
/// signed integer, so the default namespace (prefix 0) comes first.
class ZQCOMMON_API ZQNamespaceMap : public ZQRCObject {
  ZQ_DECLARE_TYPE(ZQNamespaceMap, ZQRCObject)

 public:
  /// One binding: prefix, then namespace.
  typedef std::pair<ZQName, ZQName> Binding;
  typedef std::vector<Binding>::const_iterator const_iterator;

  ZQNamespaceMap();
  ~ZQNamespaceMap() override;
  ZQNamespaceMap(const ZQNamespaceMap&) = delete;
  ZQNamespaceMap& operator=(const ZQNamespaceMap&) = delete;

  /// Number of bindings.
  int getCount() const { return static_cast<int>(m_bindings.size()); }
  /// Binds `prefix` to `ns`, replacing an earlier binding of the prefix.
  void set(ZQName prefix, ZQName ns);
  /// True when the map binds `prefix` (possibly to 0); the namespace goes to `ns`.
  bool find(ZQName prefix, ZQName& ns) const;
  /// True when the map binds `prefix`.
  bool contains(ZQName prefix) const;
  /// The namespace bound to `prefix`, or 0.
  ZQName get(ZQName prefix) const;
  /// Prefix at `pos` in order, or 0 outside the map.
  ZQName getPrefix(int pos) const;
  /// Namespace at `pos` in order, or 0 outside the map.
  ZQName getNamespace(int pos) const;

  /// The bindings in order.
  const_iterator begin() const { return m_bindings.begin(); }
  const_iterator end() const { return m_bindings.end(); }

 private:
  std::vector<Binding>::iterator lowerBound(ZQName prefix);
  std::vector<Binding>::const_iterator lowerBound(ZQName prefix) const;

  friend class ZQNamespaceManager;

  std::vector<Binding> m_bindings;
  // Changes with every set, unique across all maps: the manager tells by it whether an entry
  // it indexed earlier still holds the same bindings. 0 for a map that was never set.
  uint64_t m_stamp = 0;
};

/// A stack of contexts, one per open element, each with the element's names and the
/// declarations made on it. The base context binds `xml` and `xmlns` and is never popped.
class ZQCOMMON_API ZQNamespaceManager : public ZQRCObject {
  ZQ_DECLARE_TYPE(ZQNamespaceManager, ZQRCObject)

 public:
  /// One context: its declarations (null until it makes one) and the names of its element.
  struct Entry {
    ZQPtr<ZQNamespaceMap> map;
    ZQName prefix;
    ZQName localName;
    /// The element's namespace.
    ZQName namespaceUri;
  };

  /// A manager holding only the base context; takes a reference on the shared name table.
  ZQNamespaceManager();
  ~ZQNamespaceManager() override;
  ZQNamespaceManager(const ZQNamespaceManager&) = delete;
  ZQNamespaceManager& operator=(const ZQNamespaceManager&) = delete;

  /// Opens an empty context.
  void pushContext();
  /// Closes the top context; false, and nothing done, when only the base is left.
  bool popContext();
  /// Pops every context above the base.
  void popToBase();
  /// Binds `prefix` (0: the default namespace) to `ns` in the top context, unless that
  /// binding is already in force.
  void declare(ZQName prefix, ZQName ns);
  /// The namespace of `prefix` in the top context; 0 when it has none.
  ZQName lookup(ZQName prefix) const;
  /// The default namespace from declarations alone; the elements' own names are not asked.
  ZQName lookupDefault() const;
  /// A non-empty prefix bound to `ns`, nearest context first; 0 when there is none.
  ZQName lookupPrefix(ZQName ns) const;
  /// The map of the top context, or null.
  ZQNamespaceMap* topMap() const { return m_entries.back().map; }

  /// Number of contexts above the base.
  int getDepth() const { return static_cast<int>(m_entries.size()) - 1; }
  /// The top context, whose names its owner writes directly.
  Entry& top() { return m_entries.back(); }
  const Entry& top() const { return m_entries.back(); }
  /// The context at `depth` (0: the base); `depth` must be within 0..getDepth().
  const Entry& getEntry(int depth) const { return m_entries[static_cast<size_t>(depth)]; }
  /// Number of declarations made at `depth`; 0 without a map or outside the stack.
  int getNamespaceCount(int depth) const;

 private:
  // What one entry below the top answers for one key, found by the walk from the top down.
  struct IndexItem {
    int depth;
    ZQName value;
  };
  typedef std::vector<IndexItem> IndexStack;
  // What an entry looked like when it was indexed, and where its items start in the log.
  struct EntryIndex {
    bool indexed = false;
    ZQName prefix;
    ZQName namespaceUri;
    uint64_t stamp = 0;
    size_t logStart = 0;
  };

  void indexEntry(int depth);
  void unindexEntry(int depth);
  void addItem(IndexStack& stack, int depth, ZQName value);
  // The nearest item of `stack` below the top: true, with its value, when there is one.
  bool answerBelowTop(const IndexStack* stack, ZQName& value) const;
  const IndexStack* findStack(const std::unordered_map<ZQName, IndexStack>& stacks,
                              ZQName key) const;
  // Number of contexts below the top that are walked instead of indexed.
  int walkedBelowTop() const;

  std::vector<Entry> m_entries;
  // The top entry is always read directly, as its owner may still write it. The entries below
  // it, past the few near the base that are walked, are indexed by key, nearest last, so that
  // each look-up reads one item instead of walking a deep stack.
  std::vector<EntryIndex> m_entryIndex;
  std::unordered_map<ZQName, IndexStack> m_byPrefix;     // lookup
  std::unordered_map<ZQName, IndexStack> m_byNamespace;  // lookupPrefix
  IndexStack m_defaults;                                 // lookupDefault
  // Every item added, in order, so that an entry's items can be dropped from the stacks'
  // ends. Elements of an unordered_map keep their addresses, so the pointers stay valid.
  std::vector<IndexStack*> m_indexLog;
  ZQNameTable* m_nameTable;
};

}  // namespace ZQCommonNS
