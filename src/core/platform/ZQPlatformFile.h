// Local paths and the file system. Paths arrive in the form the library tells them
// ("C:\dir\a.xml", "\\server\share", "\home\a.xml", "/home/a.xml"), in UTF-8; they are
// turned into native paths here and nowhere else.
#pragma once

#include <string>
#include <string_view>

namespace ZQCommonNS::platform {

/// The native form of a told local path: every '\' becomes '/'.
std::string nativePath(std::string_view toldPath);
/// access() with `mode` on the native form of a told path; false for an empty path or one
/// holding a NUL.
bool pathAccess(std::string_view toldPath, int mode);
/// True when the file system that holds the told path, or its nearest existing ancestor, is a
/// network one.
bool pathIsRemote(std::string_view toldPath);
/// True for the statfs types of network file systems (NFS, SMB/CIFS, AFS, Coda, 9P, Ceph...)
/// and for FUSE when its subtype (as in "fuse.sshfs") names a network file system.
bool isNetworkFileSystem(unsigned long type, std::string_view fuseSubtype);

}  // namespace ZQCommonNS::platform
