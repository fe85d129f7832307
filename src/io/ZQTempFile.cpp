// Temporary files: unique names (process id plus a random or counted part), creation that
// retries, and removal that waits while another process still holds the file.
#include <zlib.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <random>

#include "common/ZQLock.h"
#include "common/ZQTempFile.h"
#include "core/ZQCommonError.h"
#include "core/platform/ZQPlatform.h"
#include "core/platform/ZQPlatformFile.h"
#include "core/platform/ZQPlatformTemp.h"
#include "io/ZQTempFileInternal.h"
#include "io/ZQZlibVersion.h"

namespace ZQCommonNS {

namespace {

constexpr int kCreateTries = 100;
constexpr int kRemoveTries = 10;
constexpr unsigned kRemoveWaitMs = 1000;
// The system's temporary path is asked for with room for this many characters.
constexpr int kTempPathRoom = 260;
constexpr size_t kInflateChunk = 4096;

/// Guards the temporary directory, the naming and the sequence counter. Never destroyed, so
/// temporary files can be made and removed during static destruction too.
ZQLock& tempLock() {
  static ZQLock* lock = new ZQLock();
  return *lock;
}

void systemWait(unsigned milliseconds) { platform::sleepMilliseconds(milliseconds); }

std::atomic<tempfile::WaitFunction> s_removeWait{&systemWait};

unsigned int s_sequence = 0;
bool s_sequenceStarted = false;

std::string utf8(const UnicodeString& s) {
  std::string out;
  s.toUTF8String(out);
  return out;
}

std::string narrow(const char* s) { return s ? std::string(s) : std::string(); }

/// The temporary directory in its told form, found once.
const std::string& tempDirectoryText() {
  ZQMutex guard(tempLock());
  static std::string directory = tempfile::tempDirectoryFrom(platform::tempPath());
  return directory;
}

UnicodeString systemErrorText(int error) {
  return UnicodeString::fromUTF8(platform::errnoText(static_cast<unsigned long>(error)));
}

[[noreturn]] void raiseCreateFailure(const std::string& path, const char* marker, int error) {
  UnicodeString arg = UnicodeString::fromUTF8(path);
  arg += UnicodeString(marker, -1, US_INV);
  arg += systemErrorText(error);
  throwCommonError(78, ZQSRC_TEMP_FILE, arg, ZQEmptyString::EMPTY_VALUE);
}

bool removeTempFileText(const std::string& path, int& error) {
  if (!platform::pathAccess(path, 0)) return true;
  for (int attempt = 0; attempt < kRemoveTries; ++attempt) {
    if (attempt > 0) s_removeWait.load()(kRemoveWaitMs);
    // Only a file nobody else holds is deleted.
    int result = platform::tryLockFile(path);
    if (result == 0) result = platform::unlinkFile(path);
    if (result == 0) return true;
    // Someone else removed it meanwhile: it is gone, which is what was wanted.
    if (result == ENOENT && !platform::pathAccess(path, 0)) return true;
    error = result;
  }
  return false;
}

class SystemFileSystem final : public tempfile::FileSystem {
 public:
  bool exists(const std::string& path) override { return platform::pathAccess(path, 0); }
  int createNew(const std::string& path) override { return platform::createNewFile(path); }
  bool removeTempFile(const std::string& path, int& error) override {
    return removeTempFileText(path, error);
  }
};

}  // namespace

namespace tempfile {

FileSystem::~FileSystem() = default;

WaitFunction setRemoveWait(WaitFunction wait) {
  return s_removeWait.exchange(wait ? wait : &systemWait);
}

FileSystem& systemFileSystem() {
  static SystemFileSystem* fs = new SystemFileSystem();
  return *fs;
}

std::string uuidUniquePart(int processId, const unsigned int words[4]) {
  char text[48];
  std::snprintf(text, sizeof text, "%03x-%08x%08x%08x%08x", static_cast<unsigned>(processId),
                words[0], words[1], words[2], words[3]);
  return text;
}

std::string sequenceUniquePart(int processId, unsigned int sequence) {
  char text[32];
  std::snprintf(text, sizeof text, "%03x_%04x", static_cast<unsigned>(processId), sequence);
  return text;
}

std::string tempDirectoryFrom(const std::string& systemPath) {
  std::string path = systemPath;
  // A path that doesn't fit the room asked for comes back as nothing.
  if (UnicodeString::fromUTF8(path).length() + 1 > kTempPathRoom) path.clear();
  size_t slash = path.rfind('/');
  if (slash == std::string::npos) return "./";
  return path.substr(0, slash + 1);
}

std::string makeTempName(FileSystem& fs, const std::string& base, const std::string& prefix,
                         const std::string& suffix, bool create, UniqueForm form) {
  ZQMutex guard(tempLock());
  const int pid = platform::processId();
  int tries = 0;
  for (;;) {
    std::string unique;
    if (form == UNIQUE_SEQUENCE) {
      if (!s_sequenceStarted) {
        std::minstd_rand seeded(platform::timeSeed());
        s_sequence = static_cast<unsigned>(seeded() % 32768u);
        s_sequenceStarted = true;
      }
      unique = sequenceUniquePart(pid, s_sequence++);
    } else {
      ZQUUID id;
      unsigned int words[4] = {id.getWord(0), id.getWord(1), id.getWord(2), id.getWord(3)};
      unique = uuidUniquePart(pid, words);
    }
    std::string name = base + prefix + unique + suffix;
    if (!create) return name;
    // A name that is taken costs no try.
    if (fs.exists(name)) continue;
    int error = fs.createNew(name);
    if (error == 0) return name;
    int removeError = error;
    if (!fs.removeTempFile(name, removeError)) {
      raiseCreateFailure(name, " (cannot remove)\n", removeError);
    }
    if (++tries >= kCreateTries) raiseCreateFailure(name, " (cannot create)\n", error);
  }
}

}  // namespace tempfile

// ---- ZQUUID ----

ZQUUID::ZQUUID() { platform::randomBytes(m_bytes, sizeof m_bytes); }

UnicodeString ZQUUID::toString(bool hyphens) const {
  static constexpr char kHex[] = "0123456789ABCDEF";
  UnicodeString text;
  for (int i = 0; i < 16; ++i) {
    if (hyphens && (i == 4 || i == 6 || i == 8 || i == 10)) text.append(u'-');
    text.append(static_cast<char16_t>(kHex[m_bytes[i] >> 4]));
    text.append(static_cast<char16_t>(kHex[m_bytes[i] & 15]));
  }
  return text;
}

unsigned int ZQUUID::getWord(int index) const {
  if (index < 0 || index > 3) return 0;
  unsigned int word;
  std::memcpy(&word, m_bytes + 4 * index, sizeof word);
  return word;
}

unsigned int ZQUUID::toUint32() const { return getWord(0) ^ getWord(1) ^ getWord(2) ^ getWord(3); }

// ---- ZQTempFile ----

ZQTempFile::ZQTempFile(const char* directory, const char* prefix, const char* suffix)
    : m_fileName(getTempFile(directory, prefix, suffix)) {}

ZQTempFile::ZQTempFile(const UnicodeString& directory, const UnicodeString& prefix,
                       const UnicodeString& suffix)
    : m_fileName(getTempFile(directory, prefix, suffix)) {}

ZQTempFile::ZQTempFile(const char* directory, const char* prefix, const char* suffix, bool create)
    : m_fileName(getTempFileEx(directory, prefix, suffix, create)) {}

ZQTempFile::ZQTempFile(const UnicodeString& directory, const UnicodeString& prefix,
                       const UnicodeString& suffix, bool create)
    : m_fileName(getTempFileEx(directory, prefix, suffix, create)) {}

ZQTempFile::~ZQTempFile() {
  try {
    remove();
  } catch (...) {
    // A destructor can't pass the failure on, and a file that can't be removed must not be
    // forgotten silently.
    std::terminate();
  }
}

ZQCStr ZQTempFile::getTempDirectory() {
  return ZQCStr(UnicodeString::fromUTF8(tempDirectoryText()));
}

ZQCStr ZQTempFile::getTempFile(const char* directory, const char* prefix, const char* suffix) {
  return getTempFileEx(directory, prefix, suffix, true);
}

UnicodeString ZQTempFile::getTempFile(const UnicodeString& directory, const UnicodeString& prefix,
                                      const UnicodeString& suffix) {
  return getTempFileEx(directory, prefix, suffix, true);
}

ZQCStr ZQTempFile::getTempFileEx(const char* directory, const char* prefix, const char* suffix,
                                 bool create) {
  std::string base = narrow(directory);
  if (base.empty()) base = tempDirectoryText();
  std::string name = tempfile::makeTempName(tempfile::systemFileSystem(), base, narrow(prefix),
                                            narrow(suffix), create, tempfile::UNIQUE_UUID);
  return ZQCStr(UnicodeString::fromUTF8(name));
}

UnicodeString ZQTempFile::getTempFileEx(const UnicodeString& directory, const UnicodeString& prefix,
                                        const UnicodeString& suffix, bool create) {
  std::string base = utf8(directory);
  if (base.empty()) base = tempDirectoryText();
  std::string name = tempfile::makeTempName(tempfile::systemFileSystem(), base, utf8(prefix),
                                            utf8(suffix), create, tempfile::UNIQUE_SEQUENCE);
  return UnicodeString::fromUTF8(name);
}

UnicodeString ZQTempFile::getTempFileInUUIDDirectory(const UnicodeString& name) {
  ZQMutex guard(tempLock());
  ZQUUID id;
  m_directory = UnicodeString::fromUTF8(tempDirectoryText());
  m_directory += id.toString(false);
  m_directory += u'/';
  platform::makeDirectory(utf8(m_directory));
  UnicodeString path = m_directory + name;
  platform::createNewFile(utf8(path));
  return path;
}

ZQCStr ZQTempFile::setFileName(const char* name) {
  remove();
  m_fileName = UnicodeString::fromUTF8(narrow(name));
  return ZQCStr(m_fileName);
}

ZQCStr ZQTempFile::setFileName(const UnicodeString& name) {
  remove();
  m_fileName = name;
  return ZQCStr(m_fileName);
}

ZQCStr ZQTempFile::setFileName(const char* directory, const char* prefix, const char* suffix) {
  remove();
  m_fileName = getTempFile(directory, prefix, suffix);
  return ZQCStr(m_fileName);
}

ZQCStr ZQTempFile::setFileName(const UnicodeString& directory, const UnicodeString& prefix,
                               const UnicodeString& suffix) {
  remove();
  m_fileName = getTempFile(directory, prefix, suffix);
  return ZQCStr(m_fileName);
}

ZQCStr ZQTempFile::setFileNameInUUIDDirectory(const UnicodeString& name) {
  remove();
  m_fileName = getTempFileInUUIDDirectory(name);
  return ZQCStr(m_fileName);
}

ZQCStr ZQTempFile::releaseFileName() {
  ZQCStr name(m_fileName);
  m_fileName.remove();
  return name;
}

bool ZQTempFile::inflate(const unsigned char* data, unsigned size) {
  if (m_fileName.isEmpty()) return false;
  std::ofstream out(platform::nativePath(utf8(m_fileName)),
                    std::ios::out | std::ios::binary | std::ios::trunc);
  if (!out) return false;
  z_stream zs{};
  zs.next_in = const_cast<Bytef*>(data);
  zs.avail_in = data ? size : 0;
  if (inflateInit_(&zs, kZlibInitVersion, sizeof(z_stream)) != Z_OK) return false;
  unsigned char buffer[kInflateChunk];
  bool complete = false;
  for (;;) {
    zs.next_out = buffer;
    zs.avail_out = static_cast<uInt>(kInflateChunk);
    int ret = ::inflate(&zs, Z_NO_FLUSH);
    if (ret != Z_OK && ret != Z_STREAM_END) break;
    out.write(reinterpret_cast<const char*>(buffer),
              static_cast<std::streamsize>(kInflateChunk - zs.avail_out));
    if (ret == Z_STREAM_END || zs.avail_in == 0) {
      complete = true;
      break;
    }
  }
  inflateEnd(&zs);
  return complete;
}

void ZQTempFile::remove() const {
  if (m_fileName.isEmpty()) return;
  int error = 0;
  if (!removeTempFileText(utf8(m_fileName), error)) {
    UnicodeString arg = m_fileName;
    arg += u'\n';
    arg += systemErrorText(error);
    throwCommonError(77, ZQSRC_TEMP_FILE, arg, ZQEmptyString::EMPTY_VALUE);
  }
  if (!m_directory.isEmpty()) platform::removeDirectory(utf8(m_directory));
}

bool ZQTempFile::removeTempFile(const char* path) {
  int error = 0;
  return removeTempFileText(narrow(path), error);
}

bool ZQTempFile::removeTempFile(const UnicodeString& path) {
  int error = 0;
  return removeTempFileText(utf8(path), error);
}

}  // namespace ZQCommonNS
