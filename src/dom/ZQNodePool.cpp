// Per-thread free lists, one per 8-byte size class up to 256 bytes. A freed object goes to the
// list of the thread that frees it, whichever thread carved it; blocks are never given back,
// their objects are reused. Lists of an ending thread move to a shared depot, where threads
// that run dry look before they carve. Under AddressSanitizer every object goes to the global
// allocator, so that a use after free is still caught.
#include "dom/ZQNodePool.h"

#include <mutex>
#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define ZQ_NODE_POOL_OFF 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZQ_NODE_POOL_OFF 1
#endif
#endif

namespace ZQCommonNS::nodepool {

#ifdef ZQ_NODE_POOL_OFF

void* allocate(std::size_t size) { return ::operator new(size); }
void deallocate(void* p, std::size_t) noexcept { ::operator delete(p); }

#else

namespace {

constexpr std::size_t kGrain = 8;
constexpr std::size_t kLargest = 256;
constexpr std::size_t kClasses = kLargest / kGrain;
// Large enough that carving is rare, small enough that a tiny document does not pay much.
constexpr std::size_t kBlockBytes = 256 * 1024;

struct FreeObject {
  FreeObject* next;
};

// Trivially destructible so that frees during thread or process exit can still reach it.
struct Cache {
  FreeObject* lists[kClasses];
  char* bump;
  char* bumpEnd;
  bool registered;
  bool gone;  // the thread's exit has flushed the lists: frees now go to the depot
};

thread_local Cache t_cache;

struct Depot {
  std::mutex lock;
  FreeObject* lists[kClasses] = {};
};

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
    c.lists[i] = nullptr;
  }
  c.gone = true;
}

struct ExitFlush {
  ~ExitFlush() { flushCache(); }
};

void* refill(std::size_t index, std::size_t bytes) {
  Cache& c = t_cache;
  if (!c.registered) {
    c.registered = true;
    thread_local ExitFlush flusher;
    (void)&flusher;
  }
  {
    Depot& d = depot();
    std::lock_guard<std::mutex> guard(d.lock);
    if (FreeObject* head = d.lists[index]) {
      // Take the whole list: the next allocations of this size are then local again.
      d.lists[index] = nullptr;
      c.lists[index] = head->next;
      return head;
    }
  }
  if (static_cast<std::size_t>(c.bumpEnd - c.bump) < bytes) {
    // The rest of the old block is left: at most one object's worth of bytes.
    c.bump = static_cast<char*>(::operator new(kBlockBytes));
    c.bumpEnd = c.bump + kBlockBytes;
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
  return refill(index, (index + 1) * kGrain);
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

}  // namespace ZQCommonNS::nodepool
