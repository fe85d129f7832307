// Loaded modules, shared libraries, the environment and the name of the running system.
#pragma once

#include <optional>
#include <string>

namespace ZQCommonNS::platform {

/// Directory, ending in '/', of the loaded module named `name`: the executable or a shared
/// library, matched by file name without regard to case, where "x.dll" and "x" also find
/// "x.so", "libx.so" and their versioned forms. Empty when no such module is loaded.
std::string loadedModuleDirectory(const std::string& name);
/// Path of the running executable, or empty.
std::string executablePath();
/// Loads the shared library at a told path ("x.dll" reads "x.so"); null on failure.
void* libraryOpen(const std::string& toldPath);
/// Address of `name` in a loaded library, or null.
void* librarySymbol(void* handle, const char* name);
/// Unloads a library; null does nothing.
void libraryClose(void* handle);
/// Value of an environment variable, or nothing when it is unset. Callers serialise reads.
std::optional<std::string> environmentValue(const char* name);
/// Name and machine of the running system, as "Linux (x86_64)".
std::string systemDescription();

}  // namespace ZQCommonNS::platform
