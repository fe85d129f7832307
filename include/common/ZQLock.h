// Re-entrant lock and its scope guard.
#pragma once

#include "common/ZQExport.h"

namespace ZQCommonNS {

/// A re-entrant mutual-exclusion object: a thread that holds it may take it again.
class ZQCOMMON_API ZQLock {
 public:
  ZQLock();
  ~ZQLock();
  /// Copies the lock's bytes; exists for the interface only and must never touch a lock in use.
  ZQLock& operator=(const ZQLock& other);
  ZQLock(const ZQLock&) = delete;

  /// Takes the lock, waiting as needed; re-entrant.
  void lock();
  /// Leaves the lock once.
  void unlock();

  /// The library lock, taken by ZQMutex() and by ZQNameTable::cleanup.
  static ZQLock& libraryLock();

 private:
  alignas(16) unsigned char m_storage[64];  // the platform's recursive mutex
};

/// Scope guard that holds a ZQLock from construction to destruction; a null lock does nothing.
class ZQCOMMON_API ZQMutex {
 public:
  /// Takes the library lock.
  ZQMutex();
  explicit ZQMutex(ZQLock& lock) : m_lock(&lock) { this->lock(); }
  explicit ZQMutex(ZQLock* lock) : m_lock(lock) { this->lock(); }
  ~ZQMutex() { unlock(); }
  ZQMutex(const ZQMutex&) = delete;
  /// Copies the pointer and touches no lock.
  ZQMutex& operator=(const ZQMutex& other) {
    m_lock = other.m_lock;
    return *this;
  }

  /// Atomic, sequentially consistent +1 on any integer; returns the new value.
  static int interlockedIncrement(int& value);
  /// Atomic, sequentially consistent -1 on any integer; returns the new value.
  static int interlockedDecrement(int& value);

 private:
  void lock() {
    if (m_lock) m_lock->lock();
  }
  void unlock() {
    if (m_lock) m_lock->unlock();
  }
  ZQLock* m_lock;
};

}  // namespace ZQCommonNS
