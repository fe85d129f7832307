// The steps of temporary naming, with the file system behind an interface so that the retry
// rules can be exercised without a misbehaving disk.
#pragma once

#include <string>

#include "common/ZQExport.h"

namespace ZQCommonNS::tempfile {

/// The file system as temporary naming sees it. Paths are in their told form, UTF-8.
class ZQCOMMON_API FileSystem {
 public:
  virtual ~FileSystem();
  /// Something exists at the path.
  virtual bool exists(const std::string& path) = 0;
  /// Creates a new file exclusively; 0 or the errno value.
  virtual int createNew(const std::string& path) = 0;
  /// removeTempFile: true when the file is gone; otherwise `error` gets the errno value.
  virtual bool removeTempFile(const std::string& path, int& error) = 0;
};

/// The real file system.
ZQCOMMON_API FileSystem& systemFileSystem();

/// What removal calls to wait between its tries, with the milliseconds asked for.
using WaitFunction = void (*)(unsigned milliseconds);
/// Replaces the wait between removal tries (nullptr restores the system's sleep), so that the
/// waiting can be observed without the time passing. Returns the one in use before.
ZQCOMMON_API WaitFunction setRemoveWait(WaitFunction wait);

/// How the unique part of a name is made.
enum UniqueForm {
  UNIQUE_UUID = 0,      ///< process id and the four words of a fresh UUID
  UNIQUE_SEQUENCE = 1,  ///< process id and the next sequence number
};

/// The naming loop, under the temporary-naming lock: `base` + `prefix` + unique part +
/// `suffix`, created unless `create` is false. Raises code 78 after 100 failed tries, or at
/// once when a name that couldn't be created can't be removed either.
ZQCOMMON_API std::string makeTempName(FileSystem& fs, const std::string& base,
                                      const std::string& prefix, const std::string& suffix,
                                      bool create, UniqueForm form);

/// The unique part for the UUID form: "%03x-%08x%08x%08x%08x".
ZQCOMMON_API std::string uuidUniquePart(int processId, const unsigned int words[4]);
/// The unique part for the sequence form: "%03x_%04x".
ZQCOMMON_API std::string sequenceUniquePart(int processId, unsigned int sequence);

/// The temporary directory cut from what the system says: behind its last '/' and at most
/// 259 characters; "./" when there is nothing to cut at.
ZQCOMMON_API std::string tempDirectoryFrom(const std::string& systemPath);

}  // namespace ZQCommonNS::tempfile
