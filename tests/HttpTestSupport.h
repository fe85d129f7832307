// The loopback HTTP(S) server of the stream tests (tests/fixtures/http_server.py), run as a
// child process on 127.0.0.1 with a free port, and the body it generates.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "StreamTestSupport.h"

namespace httptest {

/// Byte `i` of every body the server generates (/large, /unsized).
class Pattern {
 public:
  static constexpr size_t PERIOD = 65521;
  Pattern() : m_bytes(PERIOD) {
    uint32_t x = 1;
    for (size_t j = 0; j < PERIOD; ++j) {
      x = x * 1103515245u + 12345u;
      m_bytes[j] = static_cast<unsigned char>(x >> 24);
    }
  }
  unsigned char at(uint64_t i) const { return m_bytes[i % PERIOD]; }
  /// The index of the first byte of `data` (starting at body offset `offset`) that differs
  /// from the pattern, or -1 when all agree.
  long long firstMismatch(const char* data, size_t size, uint64_t offset) const {
    for (size_t k = 0; k < size; ++k) {
      if (static_cast<unsigned char>(data[k]) != at(offset + k)) {
        return static_cast<long long>(offset + k);
      }
    }
    return -1;
  }

 private:
  std::vector<unsigned char> m_bytes;
};

/// The server process: started by the constructor, which returns once it listens; stopped by
/// the destructor. `dir` is served under /files/; with `cert` and `key` it speaks TLS.
class LoopbackServer {
 public:
  explicit LoopbackServer(const std::string& dir = "", const std::string& cert = "",
                          const std::string& key = "") {
    int in[2], out[2];
    if (pipe(in) != 0) return;
    if (pipe(out) != 0) {
      close(in[0]);
      close(in[1]);
      return;
    }
    const std::string script = std::string(ZQ_SOURCE_DIR) + "/tests/fixtures/http_server.py";
    // Everything the child needs is made before the fork.
    std::vector<std::string> args = {"python3", script};
    if (!dir.empty()) args.insert(args.end(), {"--dir", dir});
    if (!cert.empty()) args.insert(args.end(), {"--tls", cert, key});
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    m_pid = fork();
    if (m_pid == 0) {
      dup2(in[0], 0);
      dup2(out[1], 1);
      close(in[0]);
      close(in[1]);
      close(out[0]);
      close(out[1]);
      // The system's interpreter first: it starts fastest.
      execv("/usr/bin/python3", argv.data());
      execvp("python3", argv.data());
      _exit(127);
    }
    close(in[0]);
    close(out[1]);
    m_stdin = in[1];
    std::string line;
    char c;
    while (read(out[0], &c, 1) == 1 && c != '\n') line += c;
    close(out[0]);
    m_port = line.empty() ? 0 : std::stoi(line);
  }
  ~LoopbackServer() {
    if (m_stdin >= 0) close(m_stdin);
    if (m_pid > 0) {
      kill(m_pid, SIGTERM);
      int status = 0;
      waitpid(m_pid, &status, 0);
    }
  }
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;

  bool ok() const { return m_port > 0; }
  int port() const { return m_port; }
  /// "http://127.0.0.1:port" (or https) followed by `path`.
  std::string url(const std::string& path, bool secure = false) const {
    return std::string(secure ? "https" : "http") + "://127.0.0.1:" + std::to_string(m_port) + path;
  }

 private:
  pid_t m_pid = -1;
  int m_stdin = -1;
  int m_port = 0;
};

/// A self-signed certificate for 127.0.0.1 made by the openssl command, in `dir`.
inline bool makeSelfSignedCertificate(const std::string& dir, std::string& cert, std::string& key) {
  cert = dir + "/cert.pem";
  key = dir + "/key.pem";
  return streamtest::run(
      "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 "
      "-subj /CN=127.0.0.1 -addext subjectAltName=IP:127.0.0.1 -keyout " +
      streamtest::quote(key) + " -out " + streamtest::quote(cert) + " >/dev/null 2>&1");
}

/// A port on 127.0.0.1 that nothing listens on (bound once without listening, then released).
inline int closedPort() {
  int fd = socket(AF_INET, SOCK_STREAM, 0);
  if (fd < 0) return 0;
  sockaddr_in addr{};
  addr.sin_family = AF_INET;
  addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  addr.sin_port = 0;
  socklen_t len = sizeof addr;
  int port = 0;
  if (bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0 &&
      getsockname(fd, reinterpret_cast<sockaddr*>(&addr), &len) == 0) {
    port = ntohs(addr.sin_port);
  }
  close(fd);
  return port;
}

}  // namespace httptest
