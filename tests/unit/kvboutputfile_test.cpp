// Tests files that are written whole or not at all: kvboutputfile.cpp.
#include <kvxbase/kvboutputfile.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <thread>

#include "allocation_faults.h"
#include "temporary.h"

namespace {

namespace fs = std::filesystem;

bool open(KvbOutputFile* file, const std::string& path) { return file->open(KvbString(path.c_str(), true)); }

bool write(KvbOutputFile* file, std::string_view text) { return file->write(text.data(), text.size()); }

std::string errorOf(const KvbOutputFile& file) { return file.getErrorMessage().asCstr(); }

/** Writes `text` to `path`; gives the error message, empty on success. */
std::string replace(const std::string& path, std::string_view text) {
  KvbOutputFile file;
  bool done = open(&file, path) && write(&file, text) && file.commit();
  EXPECT_EQ(done, errorOf(file).empty());
  return errorOf(file);
}

mode_t modeOf(const std::string& path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

class OutputFile : public testing::Test {
 protected:
  /** The number of entries in the folder: a temporary file left behind would count. */
  long entries() const { return std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator()); }

  TemporaryFolder folder_;
  std::string path_ = folder_.file("out.xml");
};

TEST_F(OutputFile, ANewFileHoldsWhatWasWritten) {
  KvbOutputFile file;
  ASSERT_TRUE(open(&file, path_));
  EXPECT_TRUE(write(&file, "first "));
  EXPECT_TRUE(write(&file, ""));
  EXPECT_TRUE(write(&file, std::string_view("and \0 second", 12)));
  EXPECT_FALSE(fs::exists(path_));
  EXPECT_TRUE(file.commit());
  EXPECT_EQ(readFile(path_), std::string("first and \0 second", 18));
  EXPECT_EQ(errorOf(file), "");
  EXPECT_EQ(entries(), 1);
}

TEST_F(OutputFile, TextsAroundTheSizeOfTheBufferAreWhole) {
  for (std::size_t size : {65535u, 65536u, 65537u, 300000u}) {
    std::string text(size, 'x');
    KvbOutputFile file;
    EXPECT_TRUE(open(&file, path_) && write(&file, "a") && write(&file, text) && write(&file, "b") && file.commit());
    EXPECT_EQ(readFile(path_), "a" + text + "b");
  }
}

TEST_F(OutputFile, NothingWrittenGivesAnEmptyFile) {
  EXPECT_EQ(replace(path_, ""), "");
  EXPECT_EQ(readFile(path_), "");
}

TEST_F(OutputFile, TheOldFileStandsUntilTheCommit) {
  writeFile(path_, "old");
  KvbOutputFile file;
  ASSERT_TRUE(open(&file, path_) && write(&file, std::string(100000, 'x')));
  EXPECT_EQ(readFile(path_), "old");
  ASSERT_TRUE(file.commit());
  EXPECT_EQ(readFile(path_).size(), 100000u);
  EXPECT_EQ(entries(), 1);
}

TEST_F(OutputFile, WithoutACommitTheOldFileStays) {
  writeFile(path_, "old");
  {
    KvbOutputFile file;
    ASSERT_TRUE(open(&file, path_) && write(&file, std::string(100000, 'x')));
  }
  EXPECT_EQ(readFile(path_), "old");
  EXPECT_EQ(entries(), 1);
}

TEST_F(OutputFile, PermissionsOfTheReplacedFileAreKept) {
  for (mode_t mode : {0600, 0640, 0666, 0755}) {
    writeFile(path_, "old");
    chmod(path_.c_str(), mode);
    EXPECT_EQ(replace(path_, "new"), "");
    EXPECT_EQ(modeOf(path_), mode);
  }
}

TEST_F(OutputFile, ANewFileFollowsTheMaskOfTheProcess) {
  mode_t before = umask(027);
  EXPECT_EQ(replace(path_, "new"), "");
  umask(before);
  EXPECT_EQ(modeOf(path_), mode_t{0640});
}

TEST_F(OutputFile, AnUnfinishedReplacementIsClosedToOthers) {
  writeFile(path_, "old");
  chmod(path_.c_str(), 0600);
  KvbOutputFile file;
  ASSERT_TRUE(open(&file, path_));
  for (const auto& entry : fs::directory_iterator(folder_.path())) EXPECT_EQ(modeOf(entry.path()), mode_t{0600});
}

TEST_F(OutputFile, ASymbolicLinkIsFollowed) {
  fs::create_directory(folder_.file("inner"));
  std::string target = folder_.write("inner/target.xml", "old");
  fs::create_symlink("inner/target.xml", folder_.file("relative"));
  fs::create_symlink(folder_.file("relative"), folder_.file("absolute"));
  EXPECT_EQ(replace(folder_.file("absolute"), "new"), "");
  EXPECT_TRUE(fs::is_symlink(folder_.file("absolute")));
  EXPECT_TRUE(fs::is_symlink(folder_.file("relative")));
  EXPECT_EQ(readFile(target), "new");
}

TEST_F(OutputFile, ALinkToNothingGetsItsFile) {
  fs::create_symlink("target.xml", path_);
  EXPECT_EQ(replace(path_, "new"), "");
  EXPECT_TRUE(fs::is_symlink(path_));
  EXPECT_EQ(readFile(folder_.file("target.xml")), "new");
}

TEST_F(OutputFile, LinksInACircleAreRefused) {
  fs::create_symlink("other", path_);
  fs::create_symlink("out.xml", folder_.file("other"));
  EXPECT_EQ(replace(path_, "new"), "cannot open \"" + path_ + "\": Too many levels of symbolic links");
}

TEST_F(OutputFile, ARelativePathIsTheOneAtTheTimeOfOpening) {
  fs::path before = fs::current_path();
  KvbOutputFile file;
  fs::current_path(folder_.path());
  EXPECT_TRUE(open(&file, "out.xml") && write(&file, "new"));
  fs::current_path(before);
  EXPECT_TRUE(file.commit());
  EXPECT_EQ(readFile(path_), "new");
}

TEST_F(OutputFile, PathsThatNameNoFileAreRefused) {
  struct {
    std::string path;
    std::string reason;
  } cases[] = {{"", "cannot open \"\": Invalid argument"},
               {folder_.path(), "cannot open \"" + folder_.path().string() + "\": Is a directory"},
               {folder_.file("none/"), "cannot open \"" + folder_.file("none/") + "\": Is a directory"},
               {folder_.file("none/out.xml"),
                "cannot create a file beside \"" + folder_.file("none/out.xml") + "\": No such file or directory"}};
  for (const auto& each : cases) EXPECT_EQ(replace(each.path, "new"), each.reason);
  EXPECT_EQ(entries(), 0);
}

TEST_F(OutputFile, AWriteThatFailsLeavesTheOldFile) {
  writeFile(path_, "old");
  rlimit before;
  getrlimit(RLIMIT_FSIZE, &before);
  rlimit small = {1000, before.rlim_max};
  auto handler = signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &small);
  std::string error = replace(path_, std::string(2000, 'x'));
  setrlimit(RLIMIT_FSIZE, &before);
  signal(SIGXFSZ, handler);
  EXPECT_EQ(error, "cannot write \"" + path_ + "\": File too large");
  EXPECT_EQ(readFile(path_), "old");
  EXPECT_EQ(entries(), 1);
}

TEST_F(OutputFile, ARenameThatFailsLeavesNoTemporaryFile) {
  KvbOutputFile file;
  ASSERT_TRUE(open(&file, path_) && write(&file, "new"));
  fs::create_directory(path_);
  EXPECT_FALSE(file.commit());
  EXPECT_EQ(errorOf(file), "cannot replace \"" + path_ + "\": Is a directory");
  EXPECT_EQ(entries(), 1);
}

TEST_F(OutputFile, AfterAFailureEverythingFailsWithTheFirstReason) {
  KvbOutputFile file;
  EXPECT_FALSE(open(&file, folder_.file("none/out.xml")));
  std::string first = errorOf(file);
  EXPECT_FALSE(write(&file, "text"));
  EXPECT_FALSE(file.commit());
  EXPECT_EQ(errorOf(file), first);
}

TEST_F(OutputFile, NothingIsWrittenBeforeTheOpeningOrAfterTheCommit) {
  KvbOutputFile unopened, finished;
  EXPECT_FALSE(write(&unopened, "text"));
  ASSERT_TRUE(open(&finished, path_) && finished.commit());
  EXPECT_FALSE(write(&finished, "text"));
  EXPECT_FALSE(finished.commit());
  EXPECT_EQ(errorOf(finished), "cannot write \"" + path_ + "\": Bad file descriptor");
  EXPECT_EQ(readFile(path_), "");
}

TEST_F(OutputFile, ADeviceIsWrittenDirectly) {
  EXPECT_EQ(replace("/dev/null", std::string(100000, 'x')), "");
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(OutputFile, AFullDeviceIsAFailure) {
  EXPECT_EQ(replace("/dev/full", "text"), "cannot write \"/dev/full\": No space left on device");
}

TEST_F(OutputFile, APipeIsWrittenDirectly) {
  ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
  std::string received;
  std::thread reader([&] { received = readFile(path_); });
  EXPECT_EQ(replace(path_, "through the pipe"), "");
  reader.join();
  EXPECT_EQ(received, "through the pipe");
  EXPECT_TRUE(fs::is_fifo(path_));
}

TEST_F(OutputFile, APipeWhoseReaderLeavesIsAFailureAndNoEnd) {
  ASSERT_EQ(mkfifo(path_.c_str(), 0600), 0);
  int reader = ::open(path_.c_str(), O_RDONLY | O_NONBLOCK);
  KvbOutputFile file;
  ASSERT_TRUE(open(&file, path_) && write(&file, "text"));
  close(reader);
  EXPECT_FALSE(file.commit());
  EXPECT_EQ(errorOf(file), "cannot write \"" + path_ + "\": Broken pipe");
}

TEST_F(OutputFile, ASocketIsAFailure) {
  ASSERT_EQ(mknod(path_.c_str(), S_IFSOCK | 0600, 0), 0);
  EXPECT_EQ(replace(path_, "text"), "cannot open \"" + path_ + "\": No such device or address");
}

TEST_F(OutputFile, AFileThatMayNotBeWrittenIsNotReplaced) {
  writeFile(path_, "old");
  chmod(path_.c_str(), 0444);
  chmod(folder_.path().c_str(), 0777);
  auto replaceAsAnyone = [this] {
    if (geteuid() == 0 && setuid(65534) != 0) _exit(2);
    _exit(replace(path_, "new") == "cannot write \"" + path_ + "\": Permission denied" ? 0 : 1);
  };
  EXPECT_EXIT(replaceAsAnyone(), testing::ExitedWithCode(0), "");
  EXPECT_EQ(readFile(path_), "old");
}

/** One replacement of the old file with an allocation failing; whether one failed. */
bool replaceWithFaults(const KvbString& path, long nth, AllocationFaults::Extent extent) {
  writeFile(path.asCstr(), "old");
  bool done, met;
  {
    AllocationFaults faults(nth, extent);
    KvbOutputFile file;
    done = file.open(path) && file.write("new", 3) && file.commit();
    met = faults.met();
  }
  EXPECT_EQ(done, !met);
  EXPECT_EQ(readFile(path.asCstr()), done ? "new" : "old");
  return met;
}

TEST_F(OutputFile, ExhaustedMemoryIsAFailureThatLeavesTheOldFile) {
  KvbString path(path_.c_str(), true);
  long points = sweepAllocationFaults(
      [&](long nth, AllocationFaults::Extent extent) { return replaceWithFaults(path, nth, extent); });
  EXPECT_GE(points, 3);
  EXPECT_EQ(entries(), 1);
}

TEST_F(OutputFile, WithoutAnyMemoryThereIsAReason) {
  AllocationFaults faults(1, AllocationFaults::Extent::once);
  KvbOutputFile file;
  EXPECT_FALSE(file.open(KvbString()));
  EXPECT_STREQ(file.getErrorMessage().asCstr(), "cannot write: Cannot allocate memory");
}

}  // namespace
