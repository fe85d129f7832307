// Unique temporary files: naming, creation with retries, and removal that waits for a file
// still in use.
#pragma once

#include "common/ZQExport.h"
#include "common/ZQString.h"

namespace ZQCommonNS {

/// A fresh random 128-bit identifier.
class ZQCOMMON_API ZQUUID {
 public:
  /// Fills the 16 bytes from the system's random generator.
  ZQUUID();

  /// The 16 bytes in order as upper-case hexadecimal pairs; with `hyphens` a '-' goes before
  /// bytes 4, 6, 8 and 10 (36 characters, else 32).
  UnicodeString toString(bool hyphens) const;
  /// The exclusive-or of the four 32-bit words.
  unsigned int toUint32() const;
  /// The 32-bit word `index` (0 to 3), in the machine's byte order.
  unsigned int getWord(int index) const;
  /// The 16 bytes.
  const unsigned char* getBytes() const { return m_bytes; }

 private:
  unsigned char m_bytes[16];
};

/// A temporary file this object is responsible for: made with a unique name, removed by
/// `remove` or the destructor (a failure to remove there ends the process).
class ZQCOMMON_API ZQTempFile {
 public:
  /// Holds no file.
  ZQTempFile() = default;
  /// Takes a new temporary file named from `directory` (empty: the temporary directory),
  /// `prefix` and `suffix`, created on disk.
  ZQTempFile(const char* directory, const char* prefix, const char* suffix);
  ZQTempFile(const UnicodeString& directory, const UnicodeString& prefix,
             const UnicodeString& suffix);
  /// As above; with `create` false only the name is made.
  ZQTempFile(const char* directory, const char* prefix, const char* suffix, bool create);
  ZQTempFile(const UnicodeString& directory, const UnicodeString& prefix,
             const UnicodeString& suffix, bool create);
  /// Removes the file; ends the process if that fails.
  ~ZQTempFile();
  ZQTempFile(const ZQTempFile&) = delete;
  ZQTempFile& operator=(const ZQTempFile&) = delete;

  /// The temporary directory, ending in the separator; found once and kept.
  static ZQCStr getTempDirectory();
  /// getTempFileEx with `create` true.
  static ZQCStr getTempFile(const char* directory, const char* prefix, const char* suffix);
  static UnicodeString getTempFile(const UnicodeString& directory, const UnicodeString& prefix,
                                   const UnicodeString& suffix);
  /// A unique name: `directory` (no separator added; empty: the temporary directory), then
  /// `prefix`, the process id and a random part, then `suffix`. With `create` the file is
  /// made (up to 100 tries); a failure raises code 78.
  static ZQCStr getTempFileEx(const char* directory, const char* prefix, const char* suffix,
                              bool create);
  /// As above; the unique part is the process id and a sequence number.
  static UnicodeString getTempFileEx(const UnicodeString& directory, const UnicodeString& prefix,
                                     const UnicodeString& suffix, bool create);

  /// Makes a directory with a random name under the temporary directory (kept for removal)
  /// and the empty file `name` in it; returns the file's path.
  UnicodeString getTempFileInUUIDDirectory(const UnicodeString& name);

  /// The file this object is responsible for, empty if none.
  ZQCStr getFileName() const { return ZQCStr(m_fileName); }
  /// Removes the current file, then takes `name` without touching it. Returns it.
  ZQCStr setFileName(const char* name);
  ZQCStr setFileName(const UnicodeString& name);
  /// Removes the current file, then takes a new temporary file. Returns its name.
  ZQCStr setFileName(const char* directory, const char* prefix, const char* suffix);
  ZQCStr setFileName(const UnicodeString& directory, const UnicodeString& prefix,
                     const UnicodeString& suffix);
  /// Removes the current file, then takes a file `name` in a new random directory.
  ZQCStr setFileNameInUUIDDirectory(const UnicodeString& name);
  /// Gives the file up to the caller: returns its name and holds none.
  ZQCStr releaseFileName();
  /// The object holds a file.
  bool isTempFile() const { return !m_fileName.isEmpty(); }

  /// Writes the zlib-format `data` inflated to the file. False if the file can't be opened or
  /// the data is bad (what was written stays).
  bool inflate(const unsigned char* data, unsigned size);

  /// Removes the file (waiting while it is in use) and the random directory; raises code 77
  /// when the file can't be removed. The name is kept, so a second call succeeds.
  void remove() const;

  /// Deletes `path` once it isn't in use: up to 10 tries a second apart. True when it is gone
  /// or never existed.
  static bool removeTempFile(const char* path);
  static bool removeTempFile(const UnicodeString& path);

 private:
  UnicodeString m_fileName;
  UnicodeString m_directory;
};

}  // namespace ZQCommonNS
