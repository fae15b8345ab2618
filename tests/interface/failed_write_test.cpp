// Tests what a host sees when a model cannot be written: message 463, the old file as it was and nothing beside it.
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <kvxdm/kvxdm.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <string>
#include <thread>
#include <vector>

#include "host_model.h"
#include "library_model.h"
#include "temporary.h"

namespace {

namespace fs = std::filesystem;

/** Makes system calls of this process fail as long as it lives. */
struct BrokenSystem {
  explicit BrokenSystem(const char* call, long bytesThatFit = 0) : call(call), room(bytesThatFit) { active = this; }
  ~BrokenSystem() { active = nullptr; }
  BrokenSystem(const BrokenSystem&) = delete;
  BrokenSystem& operator=(const BrokenSystem&) = delete;

  static bool fails(const char* call) { return active && std::string_view(active->call) == call; }

  const char* call;
  long room;
  static BrokenSystem* active;
};

BrokenSystem* BrokenSystem::active = nullptr;

template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

int failWith(int code) {
  errno = code;
  return -1;
}

}  // namespace

// What the library calls in the place of the C library's own.

#pragma GCC visibility push(default)
extern "C" {

ssize_t write(int descriptor, const void* bytes, size_t length) {
  static auto* const original = next<ssize_t(int, const void*, size_t)>("write");
  if (!BrokenSystem::fails("write")) return original(descriptor, bytes, length);
  if (BrokenSystem::active->room == 0) return failWith(ENOSPC);
  const ssize_t written =
      original(descriptor, bytes, std::min(length, static_cast<size_t>(BrokenSystem::active->room)));
  BrokenSystem::active->room -= written;
  return written;
}

int fsync(int descriptor) {
  static auto* const original = next<int(int)>("fsync");
  return BrokenSystem::fails("fsync") ? failWith(EIO) : original(descriptor);
}

int fchmod(int descriptor, mode_t mode) noexcept {
  static auto* const original = next<int(int, mode_t)>("fchmod");
  return BrokenSystem::fails("fchmod") ? failWith(EPERM) : original(descriptor, mode);
}

int rename(const char* from, const char* to) noexcept {
  static auto* const original = next<int(const char*, const char*)>("rename");
  return BrokenSystem::fails("rename") ? failWith(EACCES) : original(from, to);
}

/** The descriptor goes even so, as with the real call. */
int close(int descriptor) {
  static auto* const original = next<int(int)>("close");
  const int result = original(descriptor);
  return BrokenSystem::fails("close") ? failWith(EIO) : result;
}
}
#pragma GCC visibility pop

namespace {

/** A document that is longer than the buffer of a file and a pipe take together. */
std::string longDocument() {
  std::string elements;
  for (int i = 0; i < 4000; ++i) elements += "<element name='a-long-name-for-an-element-" + std::to_string(i) + "'/>";
  return "<xdm version='1.0'><element name='root'>" + elements + "</element></xdm>";
}

class FailedWrite : public testing::Test {
 protected:
  /** The texts of a refused saving; says so when it succeeds or leaves anything beside what was there. */
  static std::string save(XDMMain* main, const std::string& path) {
    KvbString error;
    EXPECT_FALSE(main->saveToFile(kv(path), &error));
    return str(error);
  }

  void expectOldFileAlone() const {
    EXPECT_EQ(readFile(path_), old_);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator()), 1);
  }

  void expectFailure() const {
    EXPECT_EQ(save(main_.get(), path_), catalogue(463, path_.c_str()));
    expectOldFileAlone();
  }

  TemporaryFolder folder_;
  const std::string old_ = std::string("old\0file", 8);
  const std::string path_ = folder_.write("model.xdm", old_);
  const XDMMainPtr main_ = loadModel(longDocument());
};

TEST_F(FailedWrite, OfAnyPartLeavesTheOldFile) {
  KvbString xml, error;
  ASSERT_TRUE(main_->saveToXML(&xml, &error));
  const long whole = xml.length();
  ASSERT_GT(whole, 3 * 65536);
  for (long room : {0L, 1L, 65535L, 65536L, 65537L, 131071L, 131072L, 131073L, whole - 1}) {
    BrokenSystem full("write", room);
    EXPECT_EQ(save(main_.get(), path_), catalogue(463, path_.c_str()));
    EXPECT_EQ(BrokenSystem::active->room, 0) << room;
  }
  expectOldFileAlone();
  BrokenSystem justEnough("write", whole);
  EXPECT_TRUE(main_->saveToFile(kv(path_), &error));
}

TEST_F(FailedWrite, OfASmallModelAtAnyByteLeavesTheOldFile) {
  const XDMMainPtr small = loadModel(libraryModel);
  for (long room = 0; room < static_cast<long>(sizeof libraryModel) - 1; ++room) {
    BrokenSystem full("write", room);
    EXPECT_EQ(save(small.get(), path_), catalogue(463, path_.c_str()));
  }
  expectOldFileAlone();
}

TEST_F(FailedWrite, AtEachLaterStepLeavesTheOldFile) {
  for (const char* call : {"fsync", "fchmod", "close", "rename"}) {
    BrokenSystem broken(call);
    EXPECT_EQ(save(main_.get(), path_), catalogue(463, path_.c_str())) << call;
  }
  expectOldFileAlone();
}

TEST_F(FailedWrite, OfAFileThatGetsTooBigLeavesTheOldFile) {
  rlimit before;
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  auto handler = signal(SIGXFSZ, SIG_IGN);
  for (rlim_t most : {0u, 65535u, 65536u, 65537u}) {
    const rlimit small = {most, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const std::string text = save(main_.get(), path_);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    EXPECT_EQ(text, catalogue(463, path_.c_str()));
  }
  signal(SIGXFSZ, handler);
  expectOldFileAlone();
}

TEST_F(FailedWrite, ToAFullDeviceIsReported) {
  EXPECT_EQ(save(main_.get(), "/dev/full"), catalogue(463, "/dev/full"));
  EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

TEST_F(FailedWrite, ToPathsThatNameNoFileIsReported) {
  const std::string name(256, 'n');  // one more than a name may have
  const std::string longPath = folder_.path().string() + std::string(5000, '/') + "f.xdm";
  for (const std::string& path : {folder_.path().string(), folder_.file("none/model.xdm"), folder_.file("none/"),
                                  folder_.file(name), longPath, path_ + "/model.xdm", std::string()}) {
    EXPECT_EQ(save(main_.get(), path), catalogue(463, path.c_str()));
  }
  expectOldFileAlone();
}

TEST_F(FailedWrite, ToAPipeWhoseReaderLeavesIsReportedAndNoEnd) {
  const std::string pipe = folder_.file("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::thread reader([&] { ::close(open(pipe.c_str(), O_RDONLY)); });
  EXPECT_EQ(save(main_.get(), pipe), catalogue(463, pipe.c_str()));
  reader.join();
}

/** Whether saving fails with message 463 in a process that is not the superuser's. Does not return. */
[[noreturn]] void saveAsAnyone(XDMMain* main, const std::string& path) {
  if (geteuid() == 0 && setuid(65534) != 0) _exit(2);
  KvbString error;
  const bool failed = !main->saveToFile(kv(path), &error);
  _exit(failed && str(error) == catalogue(463, path.c_str()) ? 0 : 1);
}

TEST_F(FailedWrite, WithoutPermissionForTheFileLeavesIt) {
  fs::permissions(folder_.path(), fs::perms::all);
  fs::permissions(path_, fs::perms(0444));
  EXPECT_EXIT(saveAsAnyone(main_.get(), path_), testing::ExitedWithCode(0), "");
  expectOldFileAlone();
}

TEST_F(FailedWrite, WithoutPermissionForTheFolderLeavesTheFile) {
  fs::permissions(path_, fs::perms(0666));
  fs::permissions(folder_.path(), fs::perms(0555));
  EXPECT_EXIT(saveAsAnyone(main_.get(), path_), testing::ExitedWithCode(0), "");
  expectOldFileAlone();
}

/** Whether this process has a file system of 64 KiB on `folder` to itself. */
bool mountSmallFileSystem(const std::string& folder) {
  const bool alone = unshare(CLONE_NEWNS) == 0 && mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
  return alone && mount("none", folder.c_str(), "tmpfs", 0, "size=64k") == 0;
}

/** Whether saving on a full file system fails with message 463 and leaves the old file alone. Does not return. */
[[noreturn]] void saveOnAFullFileSystem(XDMMain* main, const std::string& folder) {
  // Where no file system may be mounted, writes that find no space after as many bytes stand in for one.
  const bool mounted = mountSmallFileSystem(folder);
  const std::string path = folder + "/small.xdm";
  writeFile(path, "old");
  BrokenSystem standIn(mounted ? "" : "write", 65536 - 4096);
  KvbString error;
  const bool failed = !main->saveToFile(kv(path), &error) && str(error) == catalogue(463, path.c_str());
  const bool alone = std::distance(fs::directory_iterator(folder), fs::directory_iterator()) == 1;
  _exit(failed && alone && readFile(path) == "old" ? 0 : 1);
}

TEST_F(FailedWrite, OnAFullFileSystemLeavesTheOldFile) {
  const std::string place = folder_.file("place");
  fs::create_directory(place);
  EXPECT_EXIT(saveOnAFullFileSystem(main_.get(), place), testing::ExitedWithCode(0), "");
}

TEST_F(FailedWrite, LeavesTheModelReadyForAnotherAttempt) {
  {
    BrokenSystem full("write", 1000);
    expectFailure();
  }
  KvbString xml, error;
  EXPECT_TRUE(main_->saveToFile(kv(path_), &error)) << str(error);
  EXPECT_TRUE(main_->saveToXML(&xml, &error)) << str(error);
  EXPECT_EQ(readFile(path_), str(xml));
}

}  // namespace
