// Temporary files and descriptors: the system's temporary directory, random bytes, exclusive
// creation, the in-use test and removal. Paths arrive in their told form and are made native
// here.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace ZQCommonNS::platform {

/// The system's directory for temporary files: $TMPDIR when set and not empty, else "/tmp";
/// always ending in '/'.
std::string tempPath();
/// Fills `out` with `size` random bytes from the kernel's generator.
void randomBytes(unsigned char* out, size_t size);
/// The id of this process.
int processId();
/// A value that differs from run to run, for seeding counters.
unsigned timeSeed();
/// Suspends the calling thread for `milliseconds`.
void sleepMilliseconds(unsigned milliseconds);

/// Creates a new file with owner-only read and write permission, failing if anything exists
/// at the path, and closes it. 0 on success, else the errno value.
int createNewFile(std::string_view toldPath);
/// Opens the file for reading and writing and tries a write lock on its first byte, without
/// waiting; unlocks and closes again. 0 when the lock was obtained (no other process holds
/// one), else the errno value.
int tryLockFile(std::string_view toldPath);
/// Deletes a file. 0 on success, else the errno value.
int unlinkFile(std::string_view toldPath);
/// Creates a directory only the owner may enter. 0 on success, else the errno value.
int makeDirectory(std::string_view toldPath);
/// Removes an empty directory. 0 on success, else the errno value.
int removeDirectory(std::string_view toldPath);

/// Opens a file read-only; the descriptor or -1 (errno is set).
int openForReading(std::string_view toldPath);
/// Closes a descriptor; a negative one is ignored.
void closeDescriptor(int fd);

/// The calling thread's errno value.
int lastErrorNumber();

}  // namespace ZQCommonNS::platform
