// Local paths and the file system. Paths arrive in the form the library tells them
// ("C:\dir\a.xml", "\\server\share", "\home\a.xml", "/home/a.xml"), in UTF-8; they are
// turned into native paths here and nowhere else.
#pragma once

#include <string>
#include <string_view>

namespace ZQCommonNS::platform {

/// The native form of a told local path: every '\' becomes '/'.
inline std::string nativePath(std::string_view toldPath) {
  std::string native(toldPath);
  for (char& c : native) {
    if (c == '\\') c = '/';
  }
  return native;
}
/// access() with `mode` on the native form of a told path; false for an empty path or one
/// holding a NUL.
bool pathAccess(std::string_view toldPath, int mode);
/// True when the file system that holds the told path, or its nearest existing ancestor, is a
/// network one.
bool pathIsRemote(std::string_view toldPath);
/// True for the statfs types of network file systems (NFS, SMB/CIFS, AFS, Coda, 9P, Ceph...)
/// and for FUSE when its subtype (as in "fuse.sshfs") names a network file system.
inline bool isNetworkFileSystem(unsigned long type, std::string_view fuseSubtype) {
  switch (type & 0xFFFFFFFFul) {
    case 0x6969ul:      // NFS
    case 0x517Bul:      // SMB
    case 0xFF534D42ul:  // CIFS
    case 0xFE534D42ul:  // SMB2
    case 0x73757245ul:  // Coda
    case 0x5346414Ful:  // AFS
    case 0x6B414653ul:  // kAFS
    case 0x564Cul:      // NCP
    case 0x01021997ul:  // 9P
    case 0x00C36400ul:  // Ceph
      return true;
    case 0x65735546ul: {  // FUSE: only its network file systems count
      static constexpr std::string_view kNetwork[] = {
          "sshfs",     "s3fs",      "rclone",   "gcsfuse",    "curlftpfs", "davfs",    "davfs2",
          "glusterfs", "ceph-fuse", "smbnetfs", "gvfsd-fuse", "goofys",    "blobfuse", "blobfuse2",
          "mfs",       "lizardfs",  "juicefs",  "afpfs",      "httpfs",    "nfs",      "cifs"};
      for (std::string_view name : kNetwork) {
        if (fuseSubtype == name) return true;
      }
      return false;
    }
    default:
      return false;
  }
}

}  // namespace ZQCommonNS::platform
