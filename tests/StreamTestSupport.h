// Helpers for the stream and temporary-file tests: scratch directories, files, shell
// commands and a child process that holds a lock on a file.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace streamtest {

/// A fresh directory, removed with everything in it at the end of the test.
struct ScratchDir {
  std::string path;
  ScratchDir() {
    const char* root = std::getenv("ZQ_TEST_TMP");
    std::string base = root && *root ? root : "/tmp";
    std::filesystem::create_directories(base);
    std::string pattern = base + "/zqstreams-XXXXXX";
    char* made = mkdtemp(pattern.data());
    path = made ? std::string(made) : base;
  }
  ~ScratchDir() {
    std::error_code ec;
    std::filesystem::remove_all(path, ec);
  }
  std::string file(const std::string& name) const { return path + "/" + name; }
};

inline void writeFile(const std::string& path, const std::string& data) {
  std::ofstream f(path, std::ios::binary | std::ios::trunc);
  f.write(data.data(), static_cast<std::streamsize>(data.size()));
}

inline std::string readFile(const std::string& path) {
  std::ifstream f(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>());
}

inline bool fileExists(const std::string& path) {
  std::error_code ec;
  return std::filesystem::exists(std::filesystem::symlink_status(path, ec));
}

/// Runs a shell command; true when it exits with 0.
inline bool run(const std::string& command) { return std::system(command.c_str()) == 0; }

inline std::string quote(const std::string& s) { return "'" + s + "'"; }

/// Text that compresses well but isn't trivially repetitive.
inline std::string compressibleText(size_t size, unsigned seed = 7) {
  static const char* const kWords[] = {"stream ", "buffer ", "gzip ",   "inflate ", "header ",
                                       "member ", "byte ",   "window ", "\n",       "data, ",
                                       "zlib ",   "flush ",  "end ",    "read ",    "write "};
  std::mt19937 rng(seed);
  std::string out;
  out.reserve(size + 16);
  while (out.size() < size) {
    out += kWords[rng() % (sizeof kWords / sizeof kWords[0])];
    if (rng() % 13 == 0) out += std::to_string(rng() % 100000);
  }
  out.resize(size);
  return out;
}

/// Random bytes of every value.
inline std::string randomBytes(size_t size, unsigned seed = 11) {
  std::mt19937 rng(seed);
  std::string out(size, '\0');
  for (char& c : out) c = static_cast<char>(rng() & 0xFF);
  return out;
}

/// A child process holding a write lock on a whole file until `holdMs` have passed or it is
/// stopped; the constructor returns once the lock is held.
class LockHolder {
 public:
  LockHolder(const std::string& path, unsigned holdMs) {
    int ready[2];
    if (pipe(ready) != 0) return;
    m_pid = fork();
    if (m_pid == 0) {
      close(ready[0]);
      int fd = open(path.c_str(), O_RDWR);
      struct flock lock {};
      lock.l_type = F_WRLCK;
      lock.l_whence = SEEK_SET;
      lock.l_start = 0;
      lock.l_len = 0;
      char ok = (fd >= 0 && fcntl(fd, F_SETLKW, &lock) == 0) ? '1' : '0';
      if (write(ready[1], &ok, 1) != 1) _exit(2);
      usleep(holdMs * 1000u);
      _exit(0);
    }
    close(ready[1]);
    char ok = '0';
    if (m_pid > 0 && read(ready[0], &ok, 1) == 1 && ok == '1') m_locked = true;
    close(ready[0]);
  }
  ~LockHolder() { stop(); }
  bool locked() const { return m_locked; }
  /// Ends the child at once (its lock goes with it).
  void stop() {
    if (m_pid > 0) {
      kill(m_pid, SIGKILL);
      waitpid(m_pid, nullptr, 0);
      m_pid = -1;
    }
  }
  /// Waits for the child to end by itself.
  void wait() {
    if (m_pid > 0) {
      waitpid(m_pid, nullptr, 0);
      m_pid = -1;
    }
  }

 private:
  pid_t m_pid = -1;
  bool m_locked = false;
};

}  // namespace streamtest
