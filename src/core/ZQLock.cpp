#include "common/ZQLock.h"

#include <atomic>
#include <cstring>

#include "core/ZQInit.h"
#include "core/platform/ZQPlatform.h"

namespace ZQCommonNS {

ZQLock::ZQLock() { platform::lockInit(m_storage); }

ZQLock::~ZQLock() { platform::lockDestroy(m_storage); }

ZQLock& ZQLock::operator=(const ZQLock& other) {
  if (this != &other) std::memcpy(m_storage, other.m_storage, sizeof m_storage);
  return *this;
}

void ZQLock::lock() { platform::lockAcquire(m_storage); }

void ZQLock::unlock() { platform::lockRelease(m_storage); }

namespace {
// Built before any other static initialiser of the library, destroyed after them all.
ZQLock s_libraryLock ZQ_INIT_PRIORITY_BASE;
}  // namespace

ZQLock& ZQLock::libraryLock() { return s_libraryLock; }

ZQMutex::ZQMutex() : m_lock(&ZQLock::libraryLock()) { lock(); }

int ZQMutex::interlockedIncrement(int& value) {
  return std::atomic_ref<int>(value).fetch_add(1, std::memory_order_seq_cst) + 1;
}

int ZQMutex::interlockedDecrement(int& value) {
  return std::atomic_ref<int>(value).fetch_sub(1, std::memory_order_seq_cst) - 1;
}

}  // namespace ZQCommonNS
