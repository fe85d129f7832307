#include "core/platform/ZQPlatformFile.h"

#include <sys/statfs.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <fstream>
#include <memory>

namespace ZQCommonNS::platform {

bool pathAccess(std::string_view toldPath, int mode) {
  if (toldPath.empty() || toldPath.find('\0') != std::string_view::npos) return false;
  return ::access(nativePath(toldPath).c_str(), mode) == 0;
}

namespace {

/// Undoes the octal escapes (\040 for a space) of a mount table field.
std::string unescapeMountField(const std::string& field) {
  std::string out;
  for (size_t i = 0; i < field.size(); ++i) {
    if (field[i] == '\\' && i + 3 < field.size() && field[i + 1] >= '0' && field[i + 1] <= '7' &&
        field[i + 2] >= '0' && field[i + 2] <= '7' && field[i + 3] >= '0' && field[i + 3] <= '7') {
      out += static_cast<char>((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8 +
                               (field[i + 3] - '0'));
      i += 3;
    } else {
      out += field[i];
    }
  }
  return out;
}

/// The FUSE subtype ("sshfs") of the mount that holds the existing path `path`, or empty.
std::string fuseSubtypeOf(const std::string& path) {
  std::unique_ptr<char, void (*)(void*)> real(::realpath(path.c_str(), nullptr), std::free);
  if (!real) return {};
  std::string target(real.get());
  std::ifstream mounts("/proc/self/mountinfo");
  std::string line, best, bestType;
  while (std::getline(mounts, line)) {
    // id parent major:minor root mount-point options [optional...] - type source super-options
    size_t sep = line.find(" - ");
    if (sep == std::string::npos) continue;
    size_t pos = 0;
    std::string fields[5];
    for (int f = 0; f < 5 && pos < sep; ++f) {
      size_t end = line.find(' ', pos);
      if (end == std::string::npos || end > sep) end = sep;
      fields[f] = line.substr(pos, end - pos);
      pos = end + 1;
    }
    std::string mountPoint = unescapeMountField(fields[4]);
    size_t typeEnd = line.find(' ', sep + 3);
    std::string type =
        line.substr(sep + 3, typeEnd == std::string::npos ? std::string::npos : typeEnd - sep - 3);
    bool inside = target == mountPoint || mountPoint == "/" ||
                  (target.compare(0, mountPoint.size(), mountPoint) == 0 &&
                   target.size() > mountPoint.size() && target[mountPoint.size()] == '/');
    if (inside && mountPoint.size() >= best.size()) {
      best = mountPoint;
      bestType = type;
    }
  }
  if (bestType.compare(0, 5, "fuse.") == 0) return bestType.substr(5);
  return {};
}

}  // namespace

bool pathIsRemote(std::string_view toldPath) {
  if (toldPath.empty() || toldPath.find('\0') != std::string_view::npos) return false;
  std::string path = nativePath(toldPath);
  // The file itself may not exist yet: its nearest existing ancestor tells the file system.
  for (;;) {
    struct statfs info;
    if (::statfs(path.c_str(), &info) == 0) {
      unsigned long type = static_cast<unsigned long>(info.f_type);
      std::string subtype = (type & 0xFFFFFFFFul) == 0x65735546ul ? fuseSubtypeOf(path) : "";
      return isNetworkFileSystem(type, subtype);
    }
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    size_t slash = path.rfind('/');
    if (slash == std::string::npos) {
      if (path == ".") return false;
      path = ".";
    } else if (slash == 0) {
      if (path == "/") return false;
      path = "/";
    } else {
      path.resize(slash);
    }
  }
}

}  // namespace ZQCommonNS::platform
