// Tests `-o` of the tool where the file cannot be written: a failure, the old file as it was and nothing beside it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "process.h"
#include "temporary.h"

namespace {

namespace fs = std::filesystem;

using ::testing::StartsWith;

class FailedOutput : public testing::Test {
 protected:
  FailedOutput() { fs::create_directory(folder_.file("out")); }

  std::vector<std::string> saveTo(const std::string& path) const { return {XDM_TOOL, "save", model_, "-o", path}; }

  static void expectFailure(const ProcessResult& result) {
    EXPECT_EQ(result.status, 1) << result.error;
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.error, StartsWith("xdm: error: "));
  }

  void expectOldFileAlone() const {
    EXPECT_EQ(readFile(target_), "old");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_.file("out")), fs::directory_iterator()), 1);
  }

  /** Runs the tool in a shell that has run `preparation`. */
  ProcessResult runAfter(const std::string& preparation, const std::string& path) const {
    return runProcess({"sh", "-c", preparation + "; exec \"$0\" save \"$1\" -o \"$2\"", XDM_TOOL, model_, path});
  }

  /** Runs the tool without the right of the superuser to write where the permissions forbid it. */
  ProcessResult runAsAnyone(const std::string& path) const {
    std::vector<std::string> command = saveTo(path);
    if (geteuid() == 0) {
      const std::vector<std::string> plain = {"setpriv", "--bounding-set=-dac_override"};
      command.insert(command.begin(), plain.begin(), plain.end());
    }
    return runProcess(command);
  }

  static std::string longModel() {
    std::string elements;
    for (int i = 0; i < 3000; ++i) elements += "<element name='a-long-name-for-an-element-" + std::to_string(i) + "'/>";
    return "<xdm version='1.0'><element name='root'>" + elements + "</element></xdm>";
  }

  TemporaryFolder folder_;
  const std::string model_ = folder_.write("model.xdm", longModel());
  const std::string target_ = folder_.file("out/target.xdm");
};

TEST_F(FailedOutput, OfAFileThatGetsTooBigLeavesTheOldFile) {
  writeFile(target_, "old");
  // The limit is in blocks of 512 bytes: around the size of a buffer.
  for (const char* blocks : {"1", "127", "128", "129"}) {
    expectFailure(runAfter(std::string("trap '' XFSZ; ulimit -f ") + blocks, target_));
    expectOldFileAlone();
  }
}

TEST_F(FailedOutput, ToAFullDeviceIsAFailure) { expectFailure(runProcess(saveTo("/dev/full"))); }

TEST_F(FailedOutput, OnAFullStandardOutputIsAFailure) {
  const ProcessResult result = runProcess({"sh", "-c", "\"$0\" save \"$1\" >/dev/full", XDM_TOOL, model_});
  expectFailure(result);
}

TEST_F(FailedOutput, ToPathsThatNameNoFileIsAFailure) {
  writeFile(target_, "old");
  for (const std::string& path : {folder_.file("out"), folder_.file("out/none/f.xdm"), target_ + "/f.xdm",
                                  folder_.file("out/" + std::string(256, 'n'))}) {
    expectFailure(runProcess(saveTo(path)));
  }
  expectOldFileAlone();
}

TEST_F(FailedOutput, ToAPipeWhoseReaderLeavesIsAFailureAndNoEnd) {
  const ProcessResult result = runProcess(
      {"bash", "-c", "mkfifo \"$2\"; : <\"$2\" & \"$0\" save \"$1\" -o \"$2\"; status=$?; wait; exit $status", XDM_TOOL,
       model_, folder_.file("pipe")});
  expectFailure(result);
}

TEST_F(FailedOutput, WithoutPermissionForTheFileLeavesIt) {
  writeFile(target_, "old");
  fs::permissions(target_, fs::perms(0444));
  expectFailure(runAsAnyone(target_));
  expectOldFileAlone();
}

TEST_F(FailedOutput, WithoutPermissionForTheFolderLeavesTheFile) {
  writeFile(target_, "old");
  fs::permissions(folder_.file("out"), fs::perms(0555));
  expectFailure(runAsAnyone(target_));
  expectOldFileAlone();
}

TEST_F(FailedOutput, ThatNamesTheModelLeavesTheModel) {
  const std::string before = readFile(model_);
  expectFailure(runAfter("trap '' XFSZ; ulimit -f 10", model_));
  EXPECT_EQ(readFile(model_), before);
}

}  // namespace
