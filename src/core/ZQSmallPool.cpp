// Per-thread free lists, one per 8-byte size class up to 256 bytes. A freed object goes to the
// list of the thread that frees it, whichever thread carved it; blocks are never given back,
// their objects are reused. Lists of an ending thread move to a shared depot, where threads
// that run dry look before they carve. Under AddressSanitizer every object goes to the global
// allocator, so that a use after free is still caught.
#include "core/ZQSmallPool.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <new>

#include "core/platform/ZQPlatform.h"

#if defined(__SANITIZE_ADDRESS__)
#define ZQ_NODE_POOL_OFF 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZQ_NODE_POOL_OFF 1
#endif
#endif

namespace ZQCommonNS::smallpool {

#ifdef ZQ_NODE_POOL_OFF

void* allocate(std::size_t size) { return ::operator new(size); }
void deallocate(void* p, std::size_t) noexcept { ::operator delete(p); }

#else

namespace {

constexpr std::size_t kGrain = 8;
constexpr std::size_t kLargest = 256;
constexpr std::size_t kClasses = kLargest / kGrain;
// A thread's first block is small, so that a tiny document does not pay much; each next one
// is twice as large, up to the size where carving is rare.
constexpr std::size_t kFirstBlockBytes = 64 * 1024;
constexpr std::size_t kLargestBlockBytes = 1024 * 1024;

struct FreeObject {
  FreeObject* next;
};

// Trivially destructible so that frees during thread or process exit can still reach it.
struct Cache {
  FreeObject* lists[kClasses];
  char* bump;
  char* bumpEnd;
  std::size_t nextBlockBytes;  // 0 before the first block
  bool registered;
  bool gone;  // the thread's exit has flushed the lists: frees now go to the depot
};

// The initial-exec model reads the cache at a fixed offset from the thread pointer, where the
// default model for a shared library calls __tls_get_addr on every allocation. It takes a few
// hundred bytes of the static TLS space that the C library keeps for such libraries.
__attribute__((tls_model("initial-exec"))) thread_local Cache t_cache;

struct Depot {
  std::mutex lock;
  FreeObject* lists[kClasses] = {};
  // One bit per size class that may have objects, read without the lock: a thread that runs
  // dry takes the lock only when the depot may have something for it.
  std::atomic<uint32_t> stocked{0};
};
static_assert(kClasses <= 32, "one bit of the stocked mask per size class");

// Never destroyed: objects may be freed by static destructors of any order.
Depot& depot() {
  static Depot* d = new Depot;
  return *d;
}

void pushDepot(std::size_t index, FreeObject* head, FreeObject* tail) {
  Depot& d = depot();
  std::lock_guard<std::mutex> guard(d.lock);
  tail->next = d.lists[index];
  d.lists[index] = head;
  d.stocked.fetch_or(1u << index, std::memory_order_relaxed);
}

void flushCache() {
  Cache& c = t_cache;
  Depot& d = depot();
  std::lock_guard<std::mutex> guard(d.lock);
  for (std::size_t i = 0; i < kClasses; ++i) {
    FreeObject* head = c.lists[i];
    if (!head) continue;
    FreeObject* tail = head;
    while (tail->next) tail = tail->next;
    tail->next = d.lists[i];
    d.lists[i] = head;
    d.stocked.fetch_or(1u << i, std::memory_order_relaxed);
    c.lists[i] = nullptr;
  }
  c.gone = true;
}

struct ExitFlush {
  ~ExitFlush() { flushCache(); }
};

void* refill(Cache& c, std::size_t index, std::size_t bytes) {
  if (!c.registered) {
    c.registered = true;
    thread_local ExitFlush flusher;
    (void)&flusher;
  }
  Depot& d = depot();
  // A stale bit costs one look under the lock; a bit set just now is seen at a later refill.
  if (d.stocked.load(std::memory_order_relaxed) & (1u << index)) {
    std::lock_guard<std::mutex> guard(d.lock);
    if (FreeObject* head = d.lists[index]) {
      // Take the whole list: the next allocations of this size are then local again.
      d.lists[index] = nullptr;
      d.stocked.fetch_and(~(1u << index), std::memory_order_relaxed);
      c.lists[index] = head->next;
      return head;
    }
  }
  if (static_cast<std::size_t>(c.bumpEnd - c.bump) < bytes) {
    // The rest of the old block is left: at most one object's worth of bytes.
    const std::size_t blockBytes = c.nextBlockBytes ? c.nextBlockBytes : kFirstBlockBytes;
    c.nextBlockBytes = blockBytes < kLargestBlockBytes ? blockBytes * 2 : kLargestBlockBytes;
    // Objects are carved one after the other until the block is full, so its pages are
    // made resident at once; the global allocator serves when the system has no such block.
    void* block = platform::mapFilledPages(blockBytes);
    c.bump = static_cast<char*>(block ? block : ::operator new(blockBytes));
    c.bumpEnd = c.bump + blockBytes;
  }
  void* p = c.bump;
  c.bump += bytes;
  return p;
}

}  // namespace

void* allocate(std::size_t size) {
  if (size == 0 || size > kLargest) return ::operator new(size);
  const std::size_t index = (size - 1) / kGrain;
  Cache& c = t_cache;
  if (FreeObject* head = c.lists[index]) {
    c.lists[index] = head->next;
    return head;
  }
  return refill(c, index, (index + 1) * kGrain);
}

void deallocate(void* p, std::size_t size) noexcept {
  if (!p) return;
  if (size == 0 || size > kLargest) {
    ::operator delete(p);
    return;
  }
  const std::size_t index = (size - 1) / kGrain;
  FreeObject* object = static_cast<FreeObject*>(p);
  Cache& c = t_cache;
  if (c.gone) {
    object->next = nullptr;
    pushDepot(index, object, object);
    return;
  }
  object->next = c.lists[index];
  c.lists[index] = object;
}

#endif

}  // namespace ZQCommonNS::smallpool
