#include "BenchSupport.h"

#include <atomic>
#include <cstddef>

// The program interposes malloc, so every heap allocation of the process is counted: those of
// the library, of ICU (which allocates through malloc) and of operator new.
extern "C" {
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void* __libc_realloc(void*, size_t);
void* __libc_memalign(size_t, size_t);
}

namespace {
std::atomic<size_t> g_allocations{0};
}

namespace zqbench {
size_t allocationCount() { return g_allocations.load(std::memory_order_relaxed); }
}  // namespace zqbench

extern "C" {
void* malloc(size_t size) {
  g_allocations.fetch_add(1, std::memory_order_relaxed);
  return __libc_malloc(size);
}
void* calloc(size_t n, size_t size) {
  g_allocations.fetch_add(1, std::memory_order_relaxed);
  return __libc_calloc(n, size);
}
void* realloc(void* p, size_t size) {
  g_allocations.fetch_add(1, std::memory_order_relaxed);
  return __libc_realloc(p, size);
}
void* memalign(size_t align, size_t size) {
  g_allocations.fetch_add(1, std::memory_order_relaxed);
  return __libc_memalign(align, size);
}
}
