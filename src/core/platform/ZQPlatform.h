// The one place where the library meets the operating system. Nothing outside this
// directory calls the OS directly.
#pragma once

#include <cstddef>
#include <string>

#include "common/ZQExport.h"

namespace ZQCommonNS::platform {

/// Size in bytes that a recursive mutex needs inside ZQLock's storage.
inline constexpr size_t kLockStorageSize = 64;

/// Initialises a recursive mutex in `storage`.
void lockInit(void* storage);
/// Destroys the mutex in `storage`.
void lockDestroy(void* storage);
void lockAcquire(void* storage);
void lockRelease(void* storage);

/// A block of `bytes` (a multiple of the page size) of zeroed memory, its pages already
/// resident; null when the system has none. The block is never given back.
ZQCOMMON_API void* mapFilledPages(size_t bytes);

/// Text of an errno value, or empty when the system has none for it.
std::string errnoText(unsigned long code);
/// Text of an HTTP client (libcurl) result code, or empty for an unknown code.
std::string httpClientErrorText(unsigned long code);

}  // namespace ZQCommonNS::platform
