// Running the zqtool binary from tests: its output, errors and exit status.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

namespace zqtooltest {

/// What one zqtool run gave.
struct ToolRun {
  int status = -1;
  std::string out;
  std::string err;
};

inline std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

/// Runs `tool` with `args` (already quoted for the shell), capturing stdout and stderr. The
/// error text goes through a file named by this process, so parallel test runs do not meet.
inline ToolRun runTool(const char* tool, const std::string& args) {
  ToolRun run;
  const char* dir = std::getenv("ZQ_TEST_TMP");
  const std::string errPath = std::string(dir && *dir ? dir : "/tmp") + "/zqtool_stderr_" +
                              std::to_string(getpid()) + ".txt";
  const std::string command = std::string("'") + tool + "' " + args + " 2>'" + errPath + "'";
  FILE* pipe = popen(command.c_str(), "r");
  if (!pipe) return run;
  char buf[4096];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, pipe)) > 0) run.out.append(buf, n);
  const int raw = pclose(pipe);
  run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  run.err = readFile(errPath);
  std::remove(errPath.c_str());
  return run;
}

}  // namespace zqtooltest
