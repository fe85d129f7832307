// ZQUri and the system: files, remote file systems, installation directory, libraries, user
// agent, connection settings, the caller's resolver and the identity catalog.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/utsname.h>

#include <climits>
#include <filesystem>

#include "UriTestSupport.h"
#include "common/ZQString.h"
#include "common/ZQTypeId.h"
#include "common/ZQUri.h"
#include "common/ZQXmlCatalogs.h"
#include "core/platform/ZQPlatformFile.h"

using namespace ZQCommonNS;
using uritest::S;
using uritest::str;

namespace {

std::string libraryDirectory() {
  Dl_info info{};
  dladdr(reinterpret_cast<void*>(&ZQUri::cleanup), &info);
  std::string path = std::filesystem::canonical(info.dli_fname).string();
  return path.substr(0, path.rfind('/') + 1);
}

std::string libraryPath() {
  Dl_info info{};
  dladdr(reinterpret_cast<void*>(&ZQUri::cleanup), &info);
  return std::filesystem::canonical(info.dli_fname).string();
}

/// Sets an environment variable for the length of a test.
struct ScopedEnv {
  std::string name;
  ScopedEnv(const char* n, const std::string& value) : name(n) { setenv(n, value.c_str(), 1); }
  ~ScopedEnv() { unsetenv(name.c_str()); }
};

}  // namespace

// ---- Files ----

TEST(UriFiles, NativePathTurnsBackslashes) {
  EXPECT_EQ(platform::nativePath("\\home\\a.xml"), "/home/a.xml");
  EXPECT_EQ(platform::nativePath("/home/a.xml"), "/home/a.xml");
  EXPECT_EQ(platform::nativePath("\\\\srv\\share"), "//srv/share");
}

TEST(UriFiles, FileUriExistsThroughItsLocalPath) {
  uritest::TempDir dir;
  dir.touch("a b.xml");
  ZQUri u(S("file://" + dir.path + "/a%20b.xml"), ZQUri::URISTR_URI);
  EXPECT_EQ(str(u.getLocalPath()), str(S(uritest::told(dir.path) + "\\a b.xml")));
  EXPECT_TRUE(u.isFileExists());
  EXPECT_FALSE(ZQUri(S("file://" + dir.path + "/nope.xml"), ZQUri::URISTR_URI).isFileExists());
  EXPECT_FALSE(ZQUri().isFileExists());
}

TEST(UriFiles, PosixPathWorksAsAPath) {
  uritest::TempDir dir;
  std::string file = dir.touch("p.xml");
  ZQUri u(S(file), ZQUri::URISTR_AUTO);
  EXPECT_EQ(str(u), str(S(file)));
  EXPECT_TRUE(u.isFile());
  EXPECT_TRUE(u.isFileExists());
  ZQUri sibling(u, u"q.xml", ZQUri::URISTR_URI);
  EXPECT_EQ(str(sibling), str(S(dir.path + "/q.xml")));
}

TEST(UriFiles, StaticExistenceTests) {
  uritest::TempDir dir;
  std::string file = dir.touch("s.xml");
  EXPECT_TRUE(ZQUri::isFileExists(file.c_str()));
  EXPECT_TRUE(ZQUri::isFileExists(uritest::told(file).c_str()));
  EXPECT_FALSE(ZQUri::isFileExists((file + ".no").c_str()));
  EXPECT_FALSE(ZQUri::isFileExists(static_cast<const char*>(nullptr)));
  std::wstring wide(file.begin(), file.end());
  EXPECT_TRUE(ZQUri::isFileExists(wide.c_str()));
  EXPECT_FALSE(ZQUri::isFileExists(static_cast<const wchar_t*>(nullptr)));
  EXPECT_FALSE(ZQUri::isFileExists(""));
}

TEST(UriFiles, NonAsciiFileName) {
  uritest::TempDir dir;
  std::string file = dir.touch("caf\xC3\xA9.xml");
  ZQUri base(S("file://" + dir.path + "/x.xml"), ZQUri::URISTR_URI);
  ZQUri u(base, u"caf\u00E9.xml", ZQUri::URISTR_URI);
  EXPECT_TRUE(u.isFileExists());
  ZQUri escaped(base, u"caf%C3%A9.xml", ZQUri::URISTR_URI);
  EXPECT_TRUE(escaped.isFileExists());
}

TEST(UriFiles, EscapeSharpIfExist) {
  uritest::TempDir dir;
  dir.touch("a#b.xml");
  UnicodeString fileUri = S("file://" + dir.path + "/a#b.xml");
  EXPECT_EQ(str(ZQUri::escapeSharpIfExist(fileUri)), str(S("file://" + dir.path + "/a%23b.xml")));
  UnicodeString missing = S("file://" + dir.path + "/c#d.xml");
  EXPECT_EQ(str(ZQUri::escapeSharpIfExist(missing)), str(missing));
  UnicodeString plain = S("file://" + dir.path + "/ab.xml");
  EXPECT_EQ(str(ZQUri::escapeSharpIfExist(plain)), str(plain));
  // A POSIX path stays a path, not a file URI, so it comes back unchanged.
  UnicodeString path = S(dir.path + "/a#b.xml");
  EXPECT_EQ(str(ZQUri::escapeSharpIfExist(path)), str(path));
}

// ---- isRemote ----

TEST(UriRemote, OnlyFileUrisCanBeRemote) {
  EXPECT_FALSE(ZQUri().isRemote());
  EXPECT_FALSE(ZQUri(u"http://x/a", ZQUri::URISTR_URI).isRemote());
  EXPECT_FALSE(ZQUri(u"/tmp/a", ZQUri::URISTR_URI).isRemote());  // no scheme
}

TEST(UriRemote, LocalFilesAreNotRemote) {
  uritest::TempDir dir;
  dir.touch("r.xml");
  EXPECT_FALSE(ZQUri(S("file://" + dir.path + "/r.xml"), ZQUri::URISTR_URI).isRemote());
  EXPECT_FALSE(ZQUri(S("file://" + dir.path + "/not/yet.xml"), ZQUri::URISTR_URI).isRemote());
  EXPECT_FALSE(ZQUri(u"file:///C:/a.xml", ZQUri::URISTR_URI).isRemote());
  EXPECT_FALSE(ZQUri(u"file://server/share/a.xml", ZQUri::URISTR_URI).isRemote());
}

TEST(UriRemote, NetworkFileSystemTypes) {
  EXPECT_TRUE(platform::isNetworkFileSystem(0x6969, ""));            // NFS
  EXPECT_TRUE(platform::isNetworkFileSystem(0xFF534D42ul, ""));      // CIFS
  EXPECT_TRUE(platform::isNetworkFileSystem(0xFE534D42ul, ""));      // SMB2
  EXPECT_TRUE(platform::isNetworkFileSystem(0x517B, ""));            // SMB
  EXPECT_TRUE(platform::isNetworkFileSystem(0x65735546, "sshfs"));   // FUSE over the network
  EXPECT_FALSE(platform::isNetworkFileSystem(0x65735546, ""));       // local FUSE
  EXPECT_FALSE(platform::isNetworkFileSystem(0x65735546, "ntfs"));   // local FUSE
  EXPECT_FALSE(platform::isNetworkFileSystem(0xEF53, ""));           // ext4
  EXPECT_FALSE(platform::isNetworkFileSystem(0x01021994, ""));       // tmpfs
  EXPECT_FALSE(platform::isNetworkFileSystem(0x9123683E, "sshfs"));  // btrfs
}

// ---- getModuleUri ----

TEST(UriModule, EnvironmentDirectoryComesFirst) {
  uritest::TempDir dir;
  ScopedEnv env("ZQ_URI_TEST_HOME", dir.path);
  ZQUri u = ZQUri::getModuleUri("zqcommon", "fonts/a.xml", "ZQ_URI_TEST_HOME");
  EXPECT_EQ(str(u), str(S(dir.path + "/fonts/a.xml")));
  ZQUri d = ZQUri::getModuleUri("zqcommon", nullptr, "ZQ_URI_TEST_HOME");
  EXPECT_EQ(str(d), str(S(dir.path)));
}

TEST(UriModule, EnvironmentAsFileUri) {
  uritest::TempDir dir;
  ScopedEnv env("ZQ_URI_TEST_HOME", "file://" + dir.path + "/");
  ZQUri u = ZQUri::getModuleUri(nullptr, "a.xml", "ZQ_URI_TEST_HOME");
  EXPECT_EQ(str(u), str(S(dir.path + "/a.xml")));
}

TEST(UriModule, MissingEnvironmentDirectoryFallsBackToTheModule) {
  ScopedEnv env("ZQ_URI_TEST_HOME", "/no/such/dir/anywhere");
  ZQUri u = ZQUri::getModuleUri("zqcommon", "a.xml", "ZQ_URI_TEST_HOME");
  EXPECT_EQ(str(u), str(S(libraryDirectory() + "a.xml")));
}

TEST(UriModule, LoadedLibraryDirectory) {
  unsetenv("ZQ_URI_TEST_UNSET");
  std::string dir = libraryDirectory();
  EXPECT_EQ(str(ZQUri::getModuleUri("zqcommon", nullptr, "ZQ_URI_TEST_UNSET")),
            str(S(dir.substr(0, dir.size() - 1))));
  // A Windows module name reads as the shared library.
  EXPECT_EQ(str(ZQUri::getModuleUri("ZQCommon.dll", "x.xml", nullptr)), str(S(dir + "x.xml")));
  EXPECT_EQ(str(ZQUri::getModuleUri("libzqcommon.so", "x.xml", "")), str(S(dir + "x.xml")));
}

TEST(UriModule, ExecutableDirectory) {
  std::string exe = std::filesystem::canonical("/proc/self/exe").string();
  std::string name = exe.substr(exe.rfind('/') + 1);
  std::string dir = exe.substr(0, exe.rfind('/') + 1);
  EXPECT_EQ(str(ZQUri::getModuleUri(name.c_str(), "d/e.xml", nullptr)), str(S(dir + "d/e.xml")));
}

TEST(UriModule, NoDirectoryButALibraryPath) {
  EXPECT_EQ(str(ZQUri::getModuleUri("no-such-module", "plugin.dll", nullptr)), u"plugin.dll");
  EXPECT_EQ(str(ZQUri::getModuleUri(nullptr, "lib/x.so", nullptr)), u"lib/x.so");
}

TEST(UriModule, LibraryPathTestIsCaseSensitive) {
  // "x.dll" is the answer as it stands: normalised whole, so the fragment is escaped too.
  EXPECT_EQ(str(ZQUri::getModuleUri(nullptr, "a b#c d.dll", nullptr)), u"a%20b#c%20d.dll");
  // "X.DLL" is not: it is resolved against "./", which keeps its fragment as it came.
  EXPECT_EQ(str(ZQUri::getModuleUri(nullptr, "a b#c d.DLL", nullptr)), u"a%20b#c d.DLL");
}

TEST(UriModule, EnvironmentValueIsReadUpTo1024Characters) {
  uritest::TempDir dir;
  // Directories whose paths are 1024 and 1025 characters long, ending in long names, so that
  // no shorter prefix of either names a directory.
  std::string deep = dir.path;
  while (deep.size() + 1 + 200 + 1 + 100 <= 1024) deep += "/" + std::string(200, 'd');
  deep += "/" + std::string(1024 - deep.size() - 1, 'e');
  ASSERT_EQ(deep.size(), 1024u);
  ASSERT_GE(deep.size() - deep.rfind('/'), 50u);
  std::string deeper =
      deep.substr(0, deep.rfind('/') + 1) + std::string(deep.size() - deep.rfind('/'), 'f');
  ASSERT_EQ(deeper.size(), 1025u);
  std::filesystem::create_directories(deep);
  std::filesystem::create_directories(deeper);
  // What lies behind the 1024th character is not read.
  ScopedEnv env("ZQ_URI_TEST_HOME", deep + "/no-such-child");
  EXPECT_EQ(str(ZQUri::getModuleUri(nullptr, "a.xml", "ZQ_URI_TEST_HOME")),
            str(S(deep + "/a.xml")));
  // So a directory of 1025 characters is not found, and nothing else is.
  ScopedEnv longer("ZQ_URI_TEST_HOME2", deeper);
  EXPECT_EQ(str(ZQUri::getModuleUri(nullptr, "a.xml", "ZQ_URI_TEST_HOME2")), u"a.xml");
}

TEST(UriModule, NoDirectoryAtAll) {
  EXPECT_EQ(str(ZQUri::getModuleUri(nullptr, nullptr, nullptr)), u".");
  EXPECT_EQ(str(ZQUri::getModuleUri("no-such-module", "", "")), u".");
  EXPECT_EQ(str(ZQUri::getModuleUri(nullptr, "a/b.xml", nullptr)), u"a/b.xml");
}

// ---- Libraries ----

TEST(UriLibrary, LoadLookUpAndFree) {
  ZQUri lib(S(libraryPath()), ZQUri::URISTR_AUTO);
  ZQUri::ModuleHandle h = lib.loadLibrary();
  ASSERT_NE(h, nullptr);
  void* fn = ZQUri::getProcAddress(h, "_ZN10ZQCommonNS5ZQUri7cleanupEv");
  EXPECT_NE(fn, nullptr);
  EXPECT_EQ(fn, dlsym(RTLD_DEFAULT, "_ZN10ZQCommonNS5ZQUri7cleanupEv"));
  EXPECT_EQ(ZQUri::getProcAddress(h, "no_such_symbol_here"), nullptr);
  ZQUri::freeLibrary(h);
  ZQUri::freeLibrary(nullptr);  // does nothing
}

TEST(UriLibrary, DllNameReadsSo) {
  std::string dll = libraryDirectory() + "libzqcommon.dll";
  ZQUri lib(S("file://" + dll), ZQUri::URISTR_URI);
  ZQUri::ModuleHandle h = lib.loadLibrary();
  EXPECT_NE(h, nullptr);
  ZQUri::freeLibrary(h);
}

TEST(UriLibrary, MissingLibraryIsNull) {
  EXPECT_EQ(ZQUri(u"/no/such/lib.so", ZQUri::URISTR_PATH).loadLibrary(), nullptr);
  EXPECT_EQ(ZQUri().loadLibrary(), nullptr);
  EXPECT_EQ(ZQUri::getProcAddress(nullptr, "x"), nullptr);
}

// ---- User agent and settings ----

TEST(UriUserAgent, StoredCopyUntilCleanup) {
  ZQUri::cleanup();
  EXPECT_EQ(&ZQUri::getUserAgent(), &ZQEmptyString::getEmptyString());
  UnicodeString agent(u"Tester/1.0");
  ZQUri::setUserAgent(agent);
  agent = u"changed";
  EXPECT_EQ(str(ZQUri::getUserAgent()), u"Tester/1.0");
  ZQUri::setUserAgent(u"Tester/2.0");
  EXPECT_EQ(str(ZQUri::getUserAgent()), u"Tester/2.0");
  ZQUri::cleanup();
  EXPECT_TRUE(ZQUri::getUserAgent().isEmpty());
}

TEST(UriUserAgent, DefaultNamesTheRunningSystem) {
  struct utsname info;
  ASSERT_EQ(uname(&info), 0);
  std::string expected = std::string("Keldmoor Common Library for ") + info.sysname + " (" +
                         info.machine + ") (2,0,0,0)";
  EXPECT_EQ(str(ZQUri::getDefaultUserAgent()), str(S(expected)));
}

TEST(UriSettings, ConnectionSettingsStartAtTheMarker) {
  EXPECT_EQ(ZQUri::getInternetConnectTimeout(), INT_MIN);
  EXPECT_EQ(ZQUri::getInternetConnectRetries(), INT_MIN);
  EXPECT_EQ(ZQUri::getInternetConnectBackoff(), INT_MIN);
  EXPECT_EQ(static_cast<unsigned int>(INT_MIN), 0x80000000u);
}

TEST(UriSettings, ConnectionSettingsAreStored) {
  ZQUri::setInternetConnectTimeout(1500);
  ZQUri::setInternetConnectRetries(3);
  ZQUri::setInternetConnectBackoff(-1);
  EXPECT_EQ(ZQUri::getInternetConnectTimeout(), 1500);
  EXPECT_EQ(ZQUri::getInternetConnectRetries(), 3);
  EXPECT_EQ(ZQUri::getInternetConnectBackoff(), -1);
  ZQUri::setInternetConnectTimeout(INT_MIN);
  ZQUri::setInternetConnectRetries(INT_MIN);
  ZQUri::setInternetConnectBackoff(INT_MIN);
}

// ---- Resolver ----

namespace {
class EchoResolver : public ZQUriReferenceResolver2 {
 public:
  bool resolveUriReference(const char16_t* uri, WriteFunc write, void* data) override {
    seen = uri;
    write(3, "abc", data);
    return true;
  }
  std::u16string seen;
};
}  // namespace

TEST(UriResolver, SetterReturnsThePrevious) {
  EXPECT_EQ(ZQUri::getUriReferenceResolver2(), nullptr);
  EchoResolver a, b;
  EXPECT_EQ(ZQUri::setUriReferenceResolver2(&a), nullptr);
  EXPECT_EQ(ZQUri::getUriReferenceResolver2(), &a);
  EXPECT_EQ(ZQUri::setUriReferenceResolver2(&b), &a);
  EXPECT_EQ(ZQUri::setUriReferenceResolver2(nullptr), &b);
  EXPECT_EQ(ZQUri::getUriReferenceResolver2(), nullptr);
}

TEST(UriResolver, InterfaceHandsBytesToTheCallback) {
  EchoResolver r;
  std::string sink;
  ZQUriReferenceResolver2* base = &r;
  bool done = base->resolveUriReference(
      u"urn:x",
      [](size_t n, const void* bytes, void* data) {
        static_cast<std::string*>(data)->append(static_cast<const char*>(bytes), n);
      },
      &sink);
  EXPECT_TRUE(done);
  EXPECT_EQ(sink, "abc");
  EXPECT_EQ(r.seen, u"urn:x");
}

// ---- Identity catalog ----

TEST(UriCatalog, BaseClassIsTheIdentity) {
  ZQPtr<ZQXmlCatalogs> c(new ZQXmlCatalogs());
  EXPECT_EQ(c->getTypeID(), 0x026E56FEu);
  EXPECT_EQ(ZQXmlCatalogs::getStaticTypeID(), ZQTypeId::ZQXmlCatalogs);
  EXPECT_TRUE(c->isA(ZQTypeId::ZQRCObject));
  EXPECT_TRUE(c->isA(ZQTypeId::ZQObjectBase));
  EXPECT_FALSE(c->isA(ZQTypeId::ZQXmlCatalogsImpl));
  EXPECT_EQ(str(c->getTypeName()), u"ZQXmlCatalogs");
  EXPECT_EQ(str(c->resolveURI(u"http://x/a b")), u"http://x/a b");
  c->setCallbackError(nullptr, nullptr);
  c->loadCatalog(ZQUri(u"http://x/catalog.xml", ZQUri::URISTR_URI));
  EXPECT_EQ(str(c->resolveURI(u"urn:y")), u"urn:y");
}
