#include "core/platform/ZQPlatformModule.h"

#include <dlfcn.h>
#include <link.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <vector>

#include "core/platform/ZQPlatformFile.h"

namespace ZQCommonNS::platform {

namespace {

char lowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

std::string lowerAscii(std::string s) {
  for (char& c : s) c = lowerAscii(c);
  return s;
}

bool endsWith(const std::string& s, const std::string& tail) {
  return s.size() >= tail.size() && s.compare(s.size() - tail.size(), tail.size(), tail) == 0;
}

/// True when the file name `file` is the module `name` asks for: the same name, or for a
/// name ending in ".dll" or without extension its ".so" form, with or without "lib" in front
/// and with or without a version behind.
bool moduleNameMatches(const std::string& name, const std::string& file) {
  std::string want = lowerAscii(name);
  std::string have = lowerAscii(file);
  if (want == have) return true;
  std::string stem = want;
  if (endsWith(stem, ".dll")) {
    stem.resize(stem.size() - 4);
  } else if (endsWith(stem, ".so")) {
    stem.resize(stem.size() - 3);
  } else if (stem.find('.') != std::string::npos) {
    return false;  // another extension: only the exact name matches
  }
  for (const std::string& candidate : {stem + ".so", "lib" + stem + ".so"}) {
    if (have == candidate) return true;
    if (have.size() > candidate.size() && have.compare(0, candidate.size(), candidate) == 0 &&
        have[candidate.size()] == '.') {
      return true;  // libx.so.1
    }
  }
  return false;
}

std::string directoryOf(const std::string& path) {
  size_t slash = path.rfind('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

std::string fileNameOf(const std::string& path) {
  size_t slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

}  // namespace

std::string executablePath() {
  std::vector<char> buf(4096);
  for (;;) {
    ssize_t n = ::readlink("/proc/self/exe", buf.data(), buf.size());
    if (n < 0) return {};
    if (static_cast<size_t>(n) < buf.size()) return std::string(buf.data(), static_cast<size_t>(n));
    if (buf.size() >= (1u << 20)) return {};
    buf.resize(buf.size() * 2);
  }
}

std::string loadedModuleDirectory(const std::string& name) {
  if (name.empty()) return {};
  std::string exe = executablePath();
  if (!exe.empty() && moduleNameMatches(name, fileNameOf(exe))) return directoryOf(exe);
  struct Search {
    const std::string* name;
    std::string found;
  } search{&name, {}};
  dl_iterate_phdr(
      [](struct dl_phdr_info* info, size_t, void* data) -> int {
        auto* s = static_cast<Search*>(data);
        if (!info->dlpi_name || !*info->dlpi_name) return 0;
        std::string path(info->dlpi_name);
        if (!moduleNameMatches(*s->name, fileNameOf(path))) return 0;
        s->found = path;
        return 1;
      },
      &search);
  if (search.found.empty()) return {};
  // A library found through the search path may be named relatively: make it absolute.
  std::unique_ptr<char, void (*)(void*)> real(::realpath(search.found.c_str(), nullptr), std::free);
  return directoryOf(real ? std::string(real.get()) : search.found);
}

void* libraryOpen(const std::string& toldPath) {
  std::string path = nativePath(toldPath);
  if (path.empty() || path.find('\0') != std::string::npos) return nullptr;
  if (endsWith(lowerAscii(path), ".dll")) path.replace(path.size() - 4, 4, ".so");
  return ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
}

void* librarySymbol(void* handle, const char* name) {
  if (!handle || !name) return nullptr;
  return ::dlsym(handle, name);
}

void libraryClose(void* handle) {
  if (handle) ::dlclose(handle);
}

std::optional<std::string> environmentValue(const char* name) {
  if (!name || !*name) return std::nullopt;
  const char* value = std::getenv(name);
  if (!value) return std::nullopt;
  return std::string(value);
}

std::string systemDescription() {
  struct utsname info;
  if (::uname(&info) != 0) return "Unknown";
  return std::string(info.sysname) + " (" + info.machine + ")";
}

}  // namespace ZQCommonNS::platform
