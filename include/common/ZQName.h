// Interned names: a 32-bit number per string, built in or made at run time.
#pragma once

#include <unordered_map>
#include <vector>

#include "common/ZQExport.h"
#include "common/ZQLock.h"
#include "common/ZQNameEnum.h"
#include "common/ZQObject.h"

namespace ZQCommonNS {

class ZQValue;

/// Hash of a string as the name maps use it: ICU's hashCode.
struct ZQString_hash {
  size_t operator()(const UnicodeString& s) const { return static_cast<size_t>(s.hashCode()); }
};

/// One interned name; compares as a number, and its order is not alphabetical.
class ZQCOMMON_API ZQName {
 public:
  constexpr ZQName() noexcept : m_name(ZQN_EMPTY) {}
  constexpr ZQName(ZQNameEnum name) noexcept : m_name(name) {}
  constexpr ZQName(const ZQName&) noexcept = default;
  /// Interns the string in the shared table; an empty or bogus string is the empty name.
  ZQName(const UnicodeString& text);
  /// A value of name type gives its number; any other value interns its text.
  ZQName(const ZQValue& value);
  constexpr ZQName& operator=(const ZQName&) noexcept = default;

  constexpr bool isEmpty() const { return m_name == ZQN_EMPTY; }
  /// True below 3008, the empty name included.
  constexpr bool isBuiltin() const {
    return static_cast<unsigned int>(m_name) < static_cast<unsigned int>(ZQ_BUILTIN_NAME_COUNT);
  }

  constexpr bool operator==(const ZQName& other) const { return m_name == other.m_name; }
  constexpr bool operator!=(const ZQName& other) const { return m_name != other.m_name; }
  constexpr bool operator==(ZQNameEnum other) const { return m_name == other; }
  constexpr bool operator!=(ZQNameEnum other) const { return m_name != other; }
  /// Numeric order, stable within one process only.
  constexpr bool operator<(const ZQName& other) const {
    return static_cast<int>(m_name) < static_cast<int>(other.m_name);
  }
  constexpr operator ZQNameEnum() const { return m_name; }

  /// The name's string, a reference into the name table.
  operator const UnicodeString&() const { return toString(); }
  const UnicodeString& toString() const;
  const UnicodeString& toZQString() const { return toString(); }

  /// A fresh name "-<prefix><number>" (prefix "N" when empty) for generated identifiers.
  static ZQName generateID(const UnicodeString& prefix);

 private:
  ZQNameEnum m_name;
};

/// Copies `left` and appends the name's string.
ZQCOMMON_API UnicodeString operator+(const UnicodeString& left, const ZQName& name);

/// The process-wide table of run-time names, and the built-in vocabulary behind it.
class ZQCOMMON_API ZQNameTable : public ZQRCObject {
  ZQ_DECLARE_TYPE(ZQNameTable, ZQRCObject)

 public:
  ZQNameTable();
  ~ZQNameTable() override;
  ZQNameTable(const ZQNameTable&) = delete;
  ZQNameTable& operator=(const ZQNameTable&) = delete;

  /// Number of a string, interned in the shared table when needed.
  static ZQNameEnum getSharedNameEnum(const UnicodeString& text);
  /// String of a number; the empty string for an unknown number.
  static const UnicodeString& getSharedNameString(ZQNameEnum name);
  /// The shared table, created when needed, without a reference.
  static ZQNameTable* getSharedNameTable();
  /// The shared table, created when needed, with one reference added.
  static ZQNameTable* addRefSharedNameTable();
  /// Gives one reference on the shared table back; destroys it below a count of 2.
  static void releaseSharedNameTable();
  /// Built-in number of a string, or 0.
  static ZQNameEnum getBuiltinNameEnum(const UnicodeString& text);
  /// Built-in string of a number, or the empty string.
  static const UnicodeString& getBuiltinNameString(ZQNameEnum name);
  /// Destroys the shared table whatever its count; run-time numbers restart at 3008.
  static void cleanup();

  /// Number of a string in this table, interned when needed.
  ZQNameEnum getNameEnum(const UnicodeString& text);
  /// String of a number in this table; takes no lock.
  const UnicodeString& getNameString(ZQNameEnum name) const;
  /// Number of a known string, or 0; never makes a name and takes no lock.
  ZQNameEnum lookupName(const UnicodeString& text) const;
  /// Highest number in use.
  ZQNameEnum getNameLast() const { return m_nameLast; }

 private:
  static ZQNameTable* setupSharedNameTable();
  ZQNameEnum getNonBuiltinNameEnumMutexed(const UnicodeString& text);

  std::unordered_map<UnicodeString, ZQNameEnum, ZQString_hash> m_map;
  std::vector<UnicodeString> m_strings;
  ZQNameEnum m_nameLast;
};

/// A non-owning view of an array of names.
class ZQCOMMON_API ZQNameList {
 public:
  ZQNameList() noexcept : m_array(nullptr), m_count(0) {}
  ZQNameList(const ZQNameEnum* array, int count) noexcept
      : m_array(array), m_count(array ? count : 0) {}
  /// A list ended by a 0 entry, which is not counted.
  explicit ZQNameList(const ZQNameEnum* array) noexcept;

  int getCount() const { return m_count; }
  /// The name at `index`, or the empty name at or past the count.
  ZQName getItem(int index) const { return index >= m_count ? ZQName() : ZQName(m_array[index]); }
  bool hasItem(ZQName name) const { return indexOf(name) >= 0; }
  /// First position of `name`, or -1.
  int indexOf(ZQName name) const;

 private:
  const ZQNameEnum* m_array;
  int m_count;
};

/// An owning list of names; assignment shares the array, so only one owner may be destroyed.
class ZQCOMMON_API ZQNameListInstance {
 public:
  /// Allocates `count` entries, filled later by setItem.
  explicit ZQNameListInstance(int count);
  ~ZQNameListInstance();
  ZQNameListInstance& operator=(const ZQNameListInstance&) = default;
  ZQNameListInstance(const ZQNameListInstance&) = delete;

  void setItem(ZQName name, int index) { m_array[index] = name; }
  int getCount() const { return m_list.getCount(); }
  bool hasItem(ZQName name) const { return m_list.hasItem(name); }
  /// The list as a view.
  const ZQNameList& getList() const { return m_list; }
  operator const ZQNameList&() const { return m_list; }

 private:
  ZQNameEnum* m_array;
  ZQNameList m_list;
};

}  // namespace ZQCommonNS

/// Names hash by their number, so that they can key standard unordered containers.
template <>
struct std::hash<ZQCommonNS::ZQName> {
  size_t operator()(const ZQCommonNS::ZQName& name) const noexcept {
    return static_cast<size_t>(static_cast<ZQCommonNS::ZQNameEnum>(name));
  }
};
