#include "core/platform/ZQPlatformTemp.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <random>

#include "core/platform/ZQPlatformFile.h"

namespace ZQCommonNS::platform {

namespace {

/// The native path, or empty when the told path is empty or holds a NUL (no system call can
/// name it).
std::string usablePath(std::string_view toldPath) {
  if (toldPath.empty() || toldPath.find('\0') != std::string_view::npos) return {};
  return nativePath(toldPath);
}

}  // namespace

std::string tempPath() {
  const char* value = std::getenv("TMPDIR");
  std::string dir = value && *value ? std::string(value) : std::string("/tmp");
  if (dir.back() != '/') dir += '/';
  return dir;
}

void randomBytes(unsigned char* out, size_t size) {
  size_t done = 0;
  while (done < size) {
    ssize_t got = ::getrandom(out + done, size - done, 0);
    if (got > 0) {
      done += static_cast<size_t>(got);
    } else if (got < 0 && errno == EINTR) {
      continue;
    } else {
      break;
    }
  }
  if (done < size) {
    // No kernel generator: the library's fallback is the standard one.
    std::random_device device;
    for (; done < size; ++done) out[done] = static_cast<unsigned char>(device());
  }
}

int processId() { return static_cast<int>(::getpid()); }

unsigned timeSeed() {
  auto now = std::chrono::system_clock::now().time_since_epoch();
  return static_cast<unsigned>(std::chrono::duration_cast<std::chrono::seconds>(now).count());
}

void sleepMilliseconds(unsigned milliseconds) {
  struct timespec wait;
  wait.tv_sec = static_cast<time_t>(milliseconds / 1000);
  wait.tv_nsec = static_cast<long>(milliseconds % 1000) * 1000000L;
  while (::nanosleep(&wait, &wait) != 0 && errno == EINTR) {
  }
}

int createNewFile(std::string_view toldPath) {
  std::string path = usablePath(toldPath);
  if (path.empty()) return ENOENT;
  int fd = ::open(path.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0600);
  if (fd < 0) return errno;
  ::close(fd);
  return 0;
}

int tryLockFile(std::string_view toldPath) {
  std::string path = usablePath(toldPath);
  if (path.empty()) return ENOENT;
  int fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
  if (fd < 0) return errno;
  struct flock lock;
  std::memset(&lock, 0, sizeof lock);
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  lock.l_start = 0;
  lock.l_len = 1;
  int result = 0;
  if (::fcntl(fd, F_SETLK, &lock) == 0) {
    lock.l_type = F_UNLCK;
    ::fcntl(fd, F_SETLK, &lock);
  } else {
    result = errno;
  }
  ::close(fd);
  return result;
}

int unlinkFile(std::string_view toldPath) {
  std::string path = usablePath(toldPath);
  if (path.empty()) return ENOENT;
  return ::unlink(path.c_str()) == 0 ? 0 : errno;
}

int makeDirectory(std::string_view toldPath) {
  std::string path = usablePath(toldPath);
  if (path.empty()) return ENOENT;
  return ::mkdir(path.c_str(), 0700) == 0 ? 0 : errno;
}

int removeDirectory(std::string_view toldPath) {
  std::string path = usablePath(toldPath);
  if (path.empty()) return ENOENT;
  return ::rmdir(path.c_str()) == 0 ? 0 : errno;
}

int openForReading(std::string_view toldPath) {
  std::string path = usablePath(toldPath);
  if (path.empty()) {
    errno = ENOENT;
    return -1;
  }
  return ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
}

void closeDescriptor(int fd) {
  if (fd >= 0) ::close(fd);
}

int lastErrorNumber() { return errno; }

}  // namespace ZQCommonNS::platform
