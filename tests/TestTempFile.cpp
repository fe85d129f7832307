// Temporary files: naming forms, the retry rules, removal that waits for a file in use, the
// random directories, inflating into a file, and the two failure codes with their texts.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "StreamTestSupport.h"
#include "TestSupport.h"
#include "common/ZQError.h"
#include "common/ZQTempFile.h"
#include "common/ZQUtil.h"
#include "io/ZQTempFileInternal.h"

using namespace ZQCommonNS;
using streamtest::fileExists;
using streamtest::readFile;
using streamtest::ScratchDir;
using streamtest::writeFile;
using zqtest::s8;

namespace {

std::string pidHex() {
  char text[16];
  std::snprintf(text, sizeof text, "%03x", static_cast<unsigned>(getpid()));
  return text;
}

std::string regexEscape(const std::string& s) {
  static const std::regex special(R"([.^$|()\[\]{}*+?\\])");
  return std::regex_replace(s, special, R"(\$&)");
}

double secondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

std::string zlibData(const std::string& text) {
  std::ostringstream out;
  EXPECT_TRUE(ZQUtil::deflate(out, text.data(), static_cast<unsigned>(text.size())));
  return out.str();
}

/// A file system whose answers the test scripts.
class ScriptedFileSystem : public tempfile::FileSystem {
 public:
  std::vector<std::string> names;  // every name looked at
  int existsEvery = 0;             // every n-th look finds the name taken (0: never)
  int createFailures = 1000000;    // creations that fail before one succeeds
  int createError = EACCES;
  bool removeSucceeds = true;
  int removeError = EBUSY;
  int creates = 0, removes = 0;

  bool exists(const std::string& path) override {
    names.push_back(path);
    return existsEvery > 0 && names.size() % static_cast<size_t>(existsEvery) == 0;
  }
  int createNew(const std::string&) override {
    ++creates;
    return creates <= createFailures ? createError : 0;
  }
  bool removeTempFile(const std::string&, int& error) override {
    ++removes;
    if (!removeSucceeds) error = removeError;
    return removeSucceeds;
  }
};

/// Stands in for the wait between removal tries: records each wait instead of sleeping, and
/// can act at the n-th one, as another process would meanwhile.
struct RecordedWaits {
  static inline std::vector<unsigned> waits;
  static inline int actAt = 0;
  static inline std::function<void()> action;

  tempfile::WaitFunction previous;
  RecordedWaits() {
    waits.clear();
    actAt = 0;
    action = nullptr;
    previous = tempfile::setRemoveWait(&record);
  }
  ~RecordedWaits() { tempfile::setRemoveWait(previous); }
  static void record(unsigned milliseconds) {
    waits.push_back(milliseconds);
    if (action && static_cast<int>(waits.size()) == actAt) action();
  }
};

}  // namespace

// ---- Names ----

TEST(ZQTempFile, WithoutCreateNoFileAppearsAndTheNameHoldsPidAndUuid) {
  ScratchDir dir;
  ZQCStr name = ZQTempFile::getTempFileEx((dir.path + "/").c_str(), "pre", ".sfx", false);
  std::regex form(regexEscape(dir.path + "/pre" + pidHex()) + "-[0-9a-f]{32}" +
                  regexEscape(".sfx"));
  EXPECT_TRUE(std::regex_match(s8(name), form)) << s8(name);
  EXPECT_FALSE(fileExists(s8(name)));
}

TEST(ZQTempFile, NarrowNamesDifferEachTime) {
  ZQCStr a = ZQTempFile::getTempFileEx("/x/", "p", "", false);
  ZQCStr b = ZQTempFile::getTempFileEx("/x/", "p", "", false);
  EXPECT_NE(s8(a), s8(b));
}

TEST(ZQTempFile, StringFormUsesPidAndASequenceThatGoesUpByOne) {
  UnicodeString a = ZQTempFile::getTempFileEx(u"/x/", u"p", u".t", false);
  UnicodeString b = ZQTempFile::getTempFileEx(u"/x/", u"p", u".t", false);
  std::regex form("/x/p" + pidHex() + "_([0-9a-f]{4,})\\.t");
  std::smatch ma, mb;
  std::string sa = s8(a), sb = s8(b);
  ASSERT_TRUE(std::regex_match(sa, ma, form)) << sa;
  ASSERT_TRUE(std::regex_match(sb, mb, form)) << sb;
  EXPECT_EQ(std::stoul(mb[1].str(), nullptr, 16), std::stoul(ma[1].str(), nullptr, 16) + 1);
  EXPECT_FALSE(fileExists(sa));
}

TEST(ZQTempFile, ThreadsNamingAtOnceGetDistinctNames) {
  constexpr int kThreads = 4, kEach = 300;
  std::vector<std::vector<std::string>> names(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&names, t] {
      for (int i = 0; i < kEach; ++i) {
        names[t].push_back(s8(ZQTempFile::getTempFileEx(u"/x/", u"t", u"", false)));
        names[t].push_back(s8(ZQTempFile::getTempFileEx("/x/", "t", "", false)));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::set<std::string> all;
  for (const auto& list : names) all.insert(list.begin(), list.end());
  EXPECT_EQ(all.size(), static_cast<size_t>(kThreads * kEach * 2));
}

TEST(ZQTempFile, DirectoryIsAPlainPrefixWithoutSeparator) {
  ZQCStr narrowName = ZQTempFile::getTempFileEx("C:\\x", "y", "", false);
  EXPECT_EQ(s8(narrowName).rfind("C:\\xy" + pidHex() + "-", 0), 0u) << s8(narrowName);
  UnicodeString wideName = ZQTempFile::getTempFileEx(u"C:\\x", u"y", u"", false);
  EXPECT_EQ(s8(wideName).rfind("C:\\xy" + pidHex() + "_", 0), 0u) << s8(wideName);
}

TEST(ZQTempFile, EmptyDirectoryMeansTheTemporaryDirectory) {
  std::string temp = s8(ZQTempFile::getTempDirectory());
  EXPECT_EQ(s8(ZQTempFile::getTempFileEx("", "q", "", false)).rfind(temp + "q", 0), 0u);
  EXPECT_EQ(s8(ZQTempFile::getTempFileEx(nullptr, nullptr, nullptr, false)).rfind(temp, 0), 0u);
  EXPECT_EQ(s8(ZQTempFile::getTempFileEx(u"", u"q", u"", false)).rfind(temp + "q", 0), 0u);
}

TEST(ZQTempFile, TemporaryDirectoryIsTheSystemsEndingInSlash) {
  const char* env = std::getenv("TMPDIR");
  std::string expected = env && *env ? env : "/tmp";
  if (expected.back() != '/') expected += '/';
  if (expected.size() >= 260) expected = "./";
  EXPECT_EQ(s8(ZQTempFile::getTempDirectory()), expected);
}

TEST(ZQTempFile, TemporaryDirectoryIsCutBehindTheLastSeparator) {
  EXPECT_EQ(tempfile::tempDirectoryFrom("/tmp/"), "/tmp/");
  EXPECT_EQ(tempfile::tempDirectoryFrom("/var/tmp/x"), "/var/tmp/");
  EXPECT_EQ(tempfile::tempDirectoryFrom("relative"), "./");
  EXPECT_EQ(tempfile::tempDirectoryFrom(""), "./");
  std::string longest = "/" + std::string(257, 'd') + "/";  // 259 characters fit
  EXPECT_EQ(tempfile::tempDirectoryFrom(longest), longest);
  EXPECT_EQ(tempfile::tempDirectoryFrom(longest + "e/"), "./");
}

TEST(ZQTempFile, UniquePartsArePrintedAsTold) {
  const unsigned words[4] = {0x1, 0xABCDEF12u, 0x0, 0xFFFFFFFFu};
  EXPECT_EQ(tempfile::uuidUniquePart(0x2a, words), "02a-00000001abcdef1200000000ffffffff");
  EXPECT_EQ(tempfile::uuidUniquePart(0x12345, words).substr(0, 6), "12345-");
  EXPECT_EQ(tempfile::sequenceUniquePart(0x2a, 0x7), "02a_0007");
  EXPECT_EQ(tempfile::sequenceUniquePart(0x1, 0x12345), "001_12345");
}

// ---- Creation and its retries ----

TEST(ZQTempFile, CreatedFileIsNewEmptyAndOwnerOnly) {
  ScratchDir dir;
  ZQCStr name = ZQTempFile::getTempFile((dir.path + "/").c_str(), "c", ".tmp");
  struct stat info;
  ASSERT_EQ(stat(s8(name).c_str(), &info), 0);
  EXPECT_EQ(info.st_size, 0);
  EXPECT_EQ(info.st_mode & 0777, 0600u);
  UnicodeString wide = ZQTempFile::getTempFile(UnicodeString::fromUTF8(dir.path + "/"), u"w", u"");
  EXPECT_TRUE(fileExists(s8(wide)));
}

TEST(ZQTempFile, HundredFailedCreationsRaiseCode78WithTheCreateMarker) {
  ScriptedFileSystem fs;
  try {
    tempfile::makeTempName(fs, "/base/", "p", ".s", true, tempfile::UNIQUE_UUID);
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(fs.creates, 100);
    EXPECT_EQ(fs.removes, 100);
    EXPECT_EQ(e.getErrorCode(), 78);
    EXPECT_EQ(s8(e.getSource()), "ZQCommonNS::ZQTempFile");
    EXPECT_EQ(s8(e.getRawMessage()), "Cannot create temporary file: " + fs.names.back() +
                                         " (cannot create)\nPermission denied");
  }
}

TEST(ZQTempFile, NamesThatExistDoNotCountAsTries) {
  ScriptedFileSystem fs;
  fs.existsEvery = 2;
  EXPECT_THROW(tempfile::makeTempName(fs, "/b/", "", "", true, tempfile::UNIQUE_SEQUENCE), ZQError);
  EXPECT_EQ(fs.creates, 100);
  EXPECT_EQ(fs.names.size(), 199u);  // 99 taken names in between the 100 tries
}

TEST(ZQTempFile, CreationSucceedingOnTheHundredthTryIsAccepted) {
  ScriptedFileSystem fs;
  fs.createFailures = 99;
  std::string name = tempfile::makeTempName(fs, "/b/", "p", "", true, tempfile::UNIQUE_UUID);
  EXPECT_EQ(fs.creates, 100);
  EXPECT_EQ(name, fs.names.back());
}

TEST(ZQTempFile, NameThatCanNeitherBeCreatedNorRemovedRaises78WithTheRemoveMarker) {
  ScriptedFileSystem fs;
  fs.removeSucceeds = false;
  try {
    tempfile::makeTempName(fs, "/b/", "p", "", true, tempfile::UNIQUE_SEQUENCE);
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(fs.creates, 1);
    EXPECT_EQ(e.getErrorCode(), 78);
    EXPECT_EQ(s8(e.getSource()), "ZQCommonNS::ZQTempFile");
    EXPECT_EQ(s8(e.getRawMessage()), "Cannot create temporary file: " + fs.names.back() +
                                         " (cannot remove)\nDevice or resource busy");
  }
}

TEST(ZQTempFile, MissingDirectoryRaises78WithTheSystemText) {
  ScratchDir dir;
  std::string base = dir.path + "/missing/";
  for (int form = 0; form < 2; ++form) {
    try {
      if (form == 0) {
        ZQTempFile::getTempFile(base.c_str(), "m", ".x");
      } else {
        ZQTempFile t(UnicodeString::fromUTF8(base), u"m", u".x");
      }
      FAIL() << "no error";
    } catch (const ZQError& e) {
      EXPECT_EQ(e.getErrorCode(), 78);
      std::regex text("Cannot create temporary file: " + regexEscape(base + "m" + pidHex()) +
                      "[-_][0-9a-f]+\\.x \\(cannot create\\)\nNo such file or directory");
      EXPECT_TRUE(std::regex_match(s8(e.getRawMessage()), text)) << s8(e.getRawMessage());
      EXPECT_EQ(s8(e.getMessage()), s8(e.getRawMessage()));
    }
  }
}

// ---- The object ----

TEST(ZQTempFile, ConstructorsMakeTheFileAndDestructionRemovesIt) {
  ScratchDir dir;
  std::string base = dir.path + "/";
  std::string a, b;
  {
    ZQTempFile narrowFile(base.c_str(), "n", "");
    ZQTempFile wideFile(UnicodeString::fromUTF8(base), u"w", u"");
    a = s8(narrowFile.getFileName());
    b = s8(wideFile.getFileName());
    EXPECT_TRUE(narrowFile.isTempFile());
    EXPECT_TRUE(fileExists(a));
    EXPECT_TRUE(fileExists(b));
  }
  EXPECT_FALSE(fileExists(a));
  EXPECT_FALSE(fileExists(b));
}

TEST(ZQTempFile, ConstructorWithoutCreateHoldsOnlyAName) {
  ScratchDir dir;
  ZQTempFile t((dir.path + "/").c_str(), "n", "", false);
  EXPECT_TRUE(t.isTempFile());
  EXPECT_FALSE(fileExists(s8(t.getFileName())));
}

TEST(ZQTempFile, ReleasedFileStaysAfterDestruction) {
  ScratchDir dir;
  std::string name;
  {
    ZQTempFile t(UnicodeString::fromUTF8(dir.path + "/"), u"r", u"");
    std::string held = s8(t.getFileName());
    name = s8(t.releaseFileName());
    EXPECT_EQ(name, held);
    EXPECT_FALSE(t.isTempFile());
    EXPECT_EQ(s8(t.getFileName()), "");
  }
  EXPECT_TRUE(fileExists(name));
}

TEST(ZQTempFile, SetFileNameDeletesTheHeldFileFirst) {
  ScratchDir dir;
  ZQTempFile t((dir.path + "/").c_str(), "s", "");
  std::string first = s8(t.getFileName());
  std::string other = dir.file("given.txt");
  EXPECT_EQ(s8(t.setFileName(other.c_str())), other);
  EXPECT_FALSE(fileExists(first));
  EXPECT_FALSE(fileExists(other)) << "the given name isn't touched";
  writeFile(other, "now it exists");
  std::string second = s8(t.setFileName(UnicodeString::fromUTF8(dir.path + "/"), u"t", u""));
  EXPECT_FALSE(fileExists(other));
  EXPECT_TRUE(fileExists(second));
  std::string third = s8(t.setFileName((dir.path + "/").c_str(), "u", ""));
  EXPECT_FALSE(fileExists(second));
  EXPECT_TRUE(fileExists(third));
  writeFile(third, "x");
  t.setFileName(u"");
  EXPECT_FALSE(fileExists(third));
  EXPECT_FALSE(t.isTempFile());
}

TEST(ZQTempFile, RemoveTwiceDoesNotRaise) {
  ScratchDir dir;
  ZQTempFile t((dir.path + "/").c_str(), "d", "");
  EXPECT_NO_THROW(t.remove());
  EXPECT_FALSE(fileExists(s8(t.getFileName())));
  EXPECT_NO_THROW(t.remove());
  EXPECT_TRUE(t.isTempFile()) << "the name is kept";
}

TEST(ZQTempFile, RemoveTempFileOnAMissingFileIsTrueAtOnce) {
  ScratchDir dir;
  RecordedWaits recorded;
  EXPECT_TRUE(ZQTempFile::removeTempFile(dir.file("none").c_str()));
  EXPECT_TRUE(ZQTempFile::removeTempFile(UnicodeString::fromUTF8(dir.file("none"))));
  EXPECT_TRUE(RecordedWaits::waits.empty()) << "no waiting";
}

TEST(ZQTempFile, RemoveTempFileDeletesAFileNobodyHolds) {
  ScratchDir dir;
  std::string path = dir.file("free.txt");
  writeFile(path, "x");
  EXPECT_TRUE(ZQTempFile::removeTempFile(path.c_str()));
  EXPECT_FALSE(fileExists(path));
  writeFile(path, "y");
  std::string told = path;
  for (char& c : told) {
    if (c == '/') c = '\\';
  }
  EXPECT_TRUE(ZQTempFile::removeTempFile(UnicodeString::fromUTF8(told)));
  EXPECT_FALSE(fileExists(path));
}

TEST(ZQTempFile, FileInUseIsWaitedForUntilItIsReleased) {
  ScratchDir dir;
  std::string path = dir.file("busy.txt");
  writeFile(path, "in use");
  streamtest::LockHolder holder(path, 1500);
  ASSERT_TRUE(holder.locked());
  auto start = std::chrono::steady_clock::now();
  EXPECT_TRUE(ZQTempFile::removeTempFile(UnicodeString::fromUTF8(path)));
  double waited = secondsSince(start);
  EXPECT_GE(waited, 1.0) << "it waited for the holder";
  EXPECT_FALSE(fileExists(path));
  holder.wait();
}

TEST(ZQTempFile, FileHeldThroughTenTriesIsNotRemoved) {
  ScratchDir dir;
  std::string path = dir.file("held.txt");
  writeFile(path, "held");
  streamtest::LockHolder holder(path, 30000);
  ASSERT_TRUE(holder.locked());
  RecordedWaits recorded;
  EXPECT_FALSE(ZQTempFile::removeTempFile(path.c_str()));
  EXPECT_EQ(RecordedWaits::waits, std::vector<unsigned>(9, 1000u))
      << "nine waits of a second between ten tries";
  EXPECT_TRUE(fileExists(path));
}

TEST(ZQTempFile, FileReleasedDuringTheWaitsIsRemovedAtTheNextTry) {
  ScratchDir dir;
  std::string path = dir.file("released.txt");
  writeFile(path, "held for a while");
  streamtest::LockHolder holder(path, 30000);
  ASSERT_TRUE(holder.locked());
  RecordedWaits recorded;
  RecordedWaits::actAt = 3;
  RecordedWaits::action = [&holder] { holder.stop(); };
  EXPECT_TRUE(ZQTempFile::removeTempFile(UnicodeString::fromUTF8(path)));
  EXPECT_EQ(RecordedWaits::waits.size(), 3u);
  EXPECT_FALSE(fileExists(path));
}

TEST(ZQTempFile, FileDeletedByAnotherDuringTheWaitsCountsAsRemoved) {
  ScratchDir dir;
  std::string path = dir.file("taken.txt");
  writeFile(path, "held");
  streamtest::LockHolder holder(path, 30000);
  ASSERT_TRUE(holder.locked());
  RecordedWaits recorded;
  RecordedWaits::actAt = 2;
  RecordedWaits::action = [&path] { std::remove(path.c_str()); };
  EXPECT_TRUE(ZQTempFile::removeTempFile(path.c_str()));
  EXPECT_EQ(RecordedWaits::waits.size(), 2u) << "no wait after the file is gone";
}

TEST(ZQTempFile, RemoveOfAHeldFileRaisesCode77) {
  ScratchDir dir;
  std::string path = dir.file("kept.txt");
  writeFile(path, "held");
  streamtest::LockHolder holder(path, 30000);
  ASSERT_TRUE(holder.locked());
  RecordedWaits recorded;
  ZQTempFile t;
  t.setFileName(path.c_str());
  try {
    t.remove();
    FAIL() << "no error";
  } catch (const ZQError& e) {
    EXPECT_EQ(e.getErrorCode(), 77);
    EXPECT_EQ(s8(e.getSource()), "ZQCommonNS::ZQTempFile");
    EXPECT_EQ(s8(e.getRawMessage()),
              "Cannot remove temporary file: " + path + "\n" + std::strerror(EAGAIN));
  }
  EXPECT_EQ(RecordedWaits::waits.size(), 9u);
  EXPECT_TRUE(fileExists(path));
  holder.stop();
  EXPECT_NO_THROW(t.remove());
  EXPECT_FALSE(fileExists(path));
}

TEST(ZQTempFileDeathTest, DestructorEndsTheProcessWhenRemovalFails) {
  ScratchDir dir;
  std::string path = dir.file("stuck.txt");
  writeFile(path, "held");
  streamtest::LockHolder holder(path, 30000);
  ASSERT_TRUE(holder.locked());
  RecordedWaits recorded;
  EXPECT_DEATH(
      {
        ZQTempFile t;
        t.setFileName(path.c_str());
      },
      "terminate called");
  EXPECT_TRUE(fileExists(path));
}

// ---- Random directories ----

TEST(ZQTempFile, UuidDirectoryHoldsTheFileAndRemoveDeletesBoth) {
  ZQTempFile t;
  std::string name = s8(t.setFileNameInUUIDDirectory(u"doc.xml"));
  std::string temp = s8(ZQTempFile::getTempDirectory());
  std::regex form(regexEscape(temp) + "([0-9A-F]{32})/doc\\.xml");
  std::smatch m;
  ASSERT_TRUE(std::regex_match(name, m, form)) << name;
  std::string directory = temp + m[1].str();
  EXPECT_TRUE(fileExists(name));
  struct stat info;
  ASSERT_EQ(stat(directory.c_str(), &info), 0);
  EXPECT_TRUE(S_ISDIR(info.st_mode));
  t.remove();
  EXPECT_FALSE(fileExists(name));
  EXPECT_FALSE(fileExists(directory));
}

TEST(ZQTempFile, GetTempFileInUuidDirectoryReturnsThePathWithoutTakingIt) {
  ZQTempFile t;
  std::string path = s8(t.getTempFileInUUIDDirectory(u"f.bin"));
  EXPECT_FALSE(t.isTempFile());
  EXPECT_TRUE(fileExists(path));
  std::string directory = path.substr(0, path.size() - 6);
  // With no file held, remove() does nothing, not even to the directory it keeps.
  ASSERT_TRUE(ZQTempFile::removeTempFile(path.c_str()));
  t.remove();
  EXPECT_TRUE(fileExists(directory));
  // Once a file is held, its removal takes the kept directory along.
  std::string inside = directory + "/g.bin";
  writeFile(inside, "g");
  t.setFileName(inside.c_str());
  t.remove();
  EXPECT_FALSE(fileExists(inside));
  EXPECT_FALSE(fileExists(directory));
}

// ---- Inflating into the file ----

TEST(ZQTempFile, InflateWritesTheDataToTheFile) {
  ScratchDir dir;
  std::string text = streamtest::compressibleText(100000);
  std::string packed = zlibData(text);
  ZQTempFile t((dir.path + "/").c_str(), "i", "");
  EXPECT_TRUE(t.inflate(reinterpret_cast<const unsigned char*>(packed.data()),
                        static_cast<unsigned>(packed.size())));
  EXPECT_EQ(readFile(s8(t.getFileName())), text);
}

TEST(ZQTempFile, InflateCountsTheEndOfTheInputAsComplete) {
  ScratchDir dir;
  std::string text = streamtest::compressibleText(100000, 3);
  std::string packed = zlibData(text);
  ZQTempFile t((dir.path + "/").c_str(), "i", "");
  EXPECT_TRUE(t.inflate(reinterpret_cast<const unsigned char*>(packed.data()),
                        static_cast<unsigned>(packed.size() / 2)));
  std::string got = readFile(s8(t.getFileName()));
  EXPECT_LT(got.size(), text.size());
  EXPECT_EQ(got, text.substr(0, got.size()));
}

TEST(ZQTempFile, InflateOfBadDataIsFalseAndKeepsWhatWasWritten) {
  ScratchDir dir;
  std::string text = streamtest::compressibleText(100000, 5);
  std::string packed = zlibData(text);
  for (size_t i = packed.size() / 2; i < packed.size() / 2 + 50; ++i) packed[i] = '\xff';
  ZQTempFile t((dir.path + "/").c_str(), "i", "");
  EXPECT_FALSE(t.inflate(reinterpret_cast<const unsigned char*>(packed.data()),
                         static_cast<unsigned>(packed.size())));
  std::string got = readFile(s8(t.getFileName()));
  EXPECT_GT(got.size(), 0u);
  EXPECT_EQ(got, text.substr(0, got.size()));
  std::string raw = "not zlib at all";
  EXPECT_FALSE(t.inflate(reinterpret_cast<const unsigned char*>(raw.data()),
                         static_cast<unsigned>(raw.size())));
}

TEST(ZQTempFile, InflateWithoutAUsableFileIsFalse) {
  std::string packed = zlibData("x");
  ZQTempFile none;
  EXPECT_FALSE(none.inflate(reinterpret_cast<const unsigned char*>(packed.data()),
                            static_cast<unsigned>(packed.size())));
  ZQTempFile missingDir;
  missingDir.setFileName("/nonexistent-zq-dir/x/y.bin");
  EXPECT_FALSE(missingDir.inflate(reinterpret_cast<const unsigned char*>(packed.data()),
                                  static_cast<unsigned>(packed.size())));
}

// ---- Identifiers ----

TEST(ZQUUID, ToStringWithAndWithoutHyphens) {
  ZQUUID id;
  std::string plain = s8(id.toString(false));
  std::string hyphened = s8(id.toString(true));
  ASSERT_EQ(plain.size(), 32u);
  ASSERT_EQ(hyphened.size(), 36u);
  EXPECT_TRUE(
      std::regex_match(hyphened, std::regex("[0-9A-F]{8}-[0-9A-F]{4}-[0-9A-F]{4}-[0-9A-F]{4}-"
                                            "[0-9A-F]{12}")));
  std::string joined = hyphened;
  joined.erase(std::remove(joined.begin(), joined.end(), '-'), joined.end());
  EXPECT_EQ(joined, plain);
  // The bytes in order, not swapped into the textual UUID order.
  char pair[3];
  for (int i = 0; i < 16; ++i) {
    std::snprintf(pair, sizeof pair, "%02X", id.getBytes()[i]);
    EXPECT_EQ(plain.substr(2 * static_cast<size_t>(i), 2), pair);
  }
}

TEST(ZQUUID, ToUint32IsTheExclusiveOrOfTheFourWords) {
  ZQUUID id;
  unsigned words[4];
  std::memcpy(words, id.getBytes(), 16);
  EXPECT_EQ(id.toUint32(), words[0] ^ words[1] ^ words[2] ^ words[3]);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(id.getWord(i), words[i]);
}

TEST(ZQUUID, EachIsFresh) {
  ZQUUID a, b;
  EXPECT_NE(s8(a.toString(false)), s8(b.toString(false)));
}
