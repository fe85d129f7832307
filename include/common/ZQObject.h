// Root of the object tree, intrusive reference counting and the holder ZQPtr.
#pragma once

#include <atomic>
#include <cstddef>
#include <type_traits>

#include "common/ZQExport.h"
#include "common/ZQTypeId.h"

/// Declares the type family of a class of the tree: its fixed number, its name and an isA
/// that tests its own number first and then asks its direct base.
#define ZQ_DECLARE_TYPE(Class, Base)                                                \
 public:                                                                            \
  static unsigned int getStaticTypeID() { return ::ZQCommonNS::ZQTypeId::Class; }   \
  unsigned int getTypeID() const override { return ::ZQCommonNS::ZQTypeId::Class; } \
  bool isA(unsigned int id) const override {                                        \
    return id == ::ZQCommonNS::ZQTypeId::Class || Base::isA(id);                    \
  }                                                                                 \
  ::icu::UnicodeString getTypeName() const override {                               \
    return ::icu::UnicodeString(true, u"" #Class, sizeof(u"" #Class) / 2 - 1);      \
  }                                                                                 \
                                                                                    \
 private:

namespace ZQCommonNS {

/// Root of the class tree: a fixed 32-bit type number instead of language run-time types.
class ZQCOMMON_API ZQObjectBase {
 public:
  ZQObjectBase() = default;
  ZQObjectBase(const ZQObjectBase&) {}
  ZQObjectBase& operator=(const ZQObjectBase&) { return *this; }
  virtual ~ZQObjectBase();

  static unsigned int getStaticTypeID() { return ZQTypeId::ZQObjectBase; }
  /// Number of the object's most derived class.
  virtual unsigned int getTypeID() const = 0;
  /// True for the object's own number and the number of every ancestor.
  virtual bool isA(unsigned int id) const { return id == ZQTypeId::ZQObjectBase; }
  /// Name of the object's class, as callers print it.
  virtual UnicodeString getTypeName() const = 0;
};

/// An object with an intrusive, atomic reference count that starts at 0.
class ZQCOMMON_API ZQRCObject : public ZQObjectBase {
 public:
  static unsigned int getStaticTypeID() { return ZQTypeId::ZQRCObject; }
  bool isA(unsigned int id) const override {
    return id == ZQTypeId::ZQRCObject || ZQObjectBase::isA(id);
  }

  /// Adds one reference; returns the new count.
  int addRef() const { return m_refCount.fetch_add(1, std::memory_order_seq_cst) + 1; }
  /// Gives one reference back and destroys the object when the count was below 2.
  /// Returns the previous count minus 1 (0 or less once destroyed).
  int release() const;
  /// Gives one reference back without ever destroying; returns the new count.
  int removeRef() const { return m_refCount.fetch_sub(1, std::memory_order_seq_cst) - 1; }
  /// Plain read of the count; only a hint while other threads hold references.
  int getRefCount() const { return m_refCount.load(std::memory_order_relaxed); }

  /// Kept for callers compiled against them; the library keeps no instance registry.
  static void DebugPrintInstanceCount(const char*);
  static void DebugPrintInstanceId(const char*, int);

 protected:
  ZQRCObject() : m_refCount(0) {}
  ZQRCObject(const ZQRCObject& other) : ZQObjectBase(other), m_refCount(0) {}
  ZQRCObject& operator=(const ZQRCObject&) { return *this; }
  ~ZQRCObject() override;

  void clearRefCount() { m_refCount.store(0, std::memory_order_relaxed); }
  /// Non-atomic decrement for an object that only its owner can see.
  int decrementRefCount() {
    int n = m_refCount.load(std::memory_order_relaxed) - 1;
    m_refCount.store(n, std::memory_order_relaxed);
    return n;
  }

 private:
  mutable std::atomic<int> m_refCount;
};

/// Holder of one counted reference on a ZQRCObject; what every factory returns.
template <class T>
class ZQPtr {
 public:
  ZQPtr() noexcept : m_ptr(nullptr) {}
  ZQPtr(std::nullptr_t) noexcept : m_ptr(nullptr) {}
  ZQPtr(T* p) : m_ptr(p) {
    if (m_ptr) m_ptr->addRef();
  }
  ZQPtr(const ZQPtr& other) : ZQPtr(other.m_ptr) {}
  template <class U>
  ZQPtr(const ZQPtr<U>& other) : ZQPtr(other.get()) {}
  ZQPtr(ZQPtr&& other) noexcept : m_ptr(other.m_ptr) { other.m_ptr = nullptr; }
  /// Takes over the reference of a holder of a derived class, without a count up and down.
  template <class U>
  requires std::is_convertible_v<U*, T*> ZQPtr(ZQPtr<U>&& other)
  noexcept : m_ptr(other.m_ptr) { other.m_ptr = nullptr; }
  ~ZQPtr() {
    if (m_ptr) m_ptr->release();
  }

  /// Releases what is held, stores the new pointer, then adds a reference to it.
  ZQPtr& operator=(T* p) {
    if (p == m_ptr) return *this;  // releasing first could end the very object
    if (m_ptr) m_ptr->release();
    m_ptr = p;
    if (m_ptr) m_ptr->addRef();
    return *this;
  }
  ZQPtr& operator=(const ZQPtr& other) {
    if (this != &other) {
      T* p = other.m_ptr;
      if (p) p->addRef();  // keeps p alive should releasing m_ptr end it
      if (m_ptr) m_ptr->release();
      m_ptr = p;
    }
    return *this;
  }
  ZQPtr& operator=(ZQPtr&& other) noexcept {
    if (this != &other) {
      if (m_ptr) m_ptr->release();
      m_ptr = other.m_ptr;
      other.m_ptr = nullptr;
    }
    return *this;
  }

  T* get() const noexcept { return m_ptr; }
  T* operator->() const noexcept { return m_ptr; }
  T& operator*() const noexcept { return *m_ptr; }
  operator T*() const noexcept { return m_ptr; }
  bool operator==(std::nullptr_t) const noexcept { return m_ptr == nullptr; }
  bool operator!=(std::nullptr_t) const noexcept { return m_ptr != nullptr; }

 private:
  template <class>
  friend class ZQPtr;
  T* m_ptr;
};

}  // namespace ZQCommonNS
