#include "core/platform/ZQPlatformOpen.h"

#include <sys/stat.h>

#include <string>

#include "core/platform/ZQPlatformFile.h"

namespace ZQCommonNS::platform {

bool pathIsDirectory(std::string_view toldPath) {
  const std::string path = nativePath(toldPath);
  if (path.empty() || path.find('\0') != std::string::npos) return false;
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

}  // namespace ZQCommonNS::platform
