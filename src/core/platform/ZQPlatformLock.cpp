#include <pthread.h>

#include <cstdlib>

#include "core/platform/ZQPlatform.h"

namespace ZQCommonNS::platform {

static_assert(sizeof(pthread_mutex_t) <= kLockStorageSize, "ZQLock storage too small");
static_assert(alignof(pthread_mutex_t) <= 16, "ZQLock storage under-aligned");

void lockInit(void* storage) {
  pthread_mutexattr_t attr;
  pthread_mutexattr_init(&attr);
  pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE);
  if (pthread_mutex_init(static_cast<pthread_mutex_t*>(storage), &attr) != 0) std::abort();
  pthread_mutexattr_destroy(&attr);
}

void lockDestroy(void* storage) { pthread_mutex_destroy(static_cast<pthread_mutex_t*>(storage)); }

void lockAcquire(void* storage) { pthread_mutex_lock(static_cast<pthread_mutex_t*>(storage)); }

void lockRelease(void* storage) { pthread_mutex_unlock(static_cast<pthread_mutex_t*>(storage)); }

}  // namespace ZQCommonNS::platform
