// What opening a resource by its local path needs to know beyond the standard streams.
#pragma once

#include <string_view>

namespace ZQCommonNS::platform {

/// True when the told path names a directory, which a file stream must not take for a file.
bool pathIsDirectory(std::string_view toldPath);

}  // namespace ZQCommonNS::platform
