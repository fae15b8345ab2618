// Tests `xdm rows` and a processor that run at the same time: however the processor ends, and whoever stops first.
#include <signal.h>

#include <cerrno>

#include "tool.h"

namespace {

class Process : public ToolTest {
 protected:
  /** The rows that a shell with `script` as its commands answers; it begins in a folder of its own. */
  Words rowsOf(const std::string& script) const {
    std::string command = "sh " + write("script", "cd " + file("") + "; " + script);
    return {"rows", model, document, "--column", title, "--processor-command", command};
  }

  ProcessResult run(const std::string& script) const { return xdm(rowsOf(script)); }

  /** Likewise, with the standard output that `redirection` makes. */
  ProcessResult runInto(const std::string& redirection, const std::string& script) const {
    Words command = {"bash", "-c", "exec \"$0\" \"$@\" " + redirection, XDM_TOOL};
    for (const std::string& word : rowsOf(script)) command.push_back(word);
    return runProcess(command);
  }

  void expectFailure(const ProcessResult& result, const std::string& error) const {
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.error, error);
  }

  /** The process whose number a script has written into the file "pid". */
  pid_t noted() const { return std::stoi(readFile(file("pid"))); }

  std::string failed(const std::string& how) const {
    return "xdm: error: the XQuery processor sh failed on " + document + " (" + how + ")\n";
  }
  std::string noTable(const std::string& why) const {
    return "xdm: error: the XQuery processor sh gave no table of the rows of " + document + "\n" + why + "\n";
  }

  /** `word` so many times, each behind a blank. */
  static std::string repeated(const std::string& word, int times) {
    std::string text;
    for (int i = 0; i < times; ++i) text += " " + word;
    return text;
  }

  const std::string answer = "echo '<table><row><title>x</title></row></table>'";
};

TEST_F(Process, AnswersThroughAPipe) {
  EXPECT_EQ(outputOf(rowsOf("test -p /dev/stdout && " + answer)), "title\r\nx\r\n");
}

TEST_F(Process, MayFillStandardErrorBeforeItAnswers) {
  EXPECT_EQ(outputOf(rowsOf("yes complaint | head -c 1000000 >&2; " + answer)), "title\r\nx\r\n");
}

TEST_F(Process, ThatFailsAfterHalfOfItsAnswerExplainsItself) {
  const std::string half = "printf '<table><row><title>x</title></row><row>'; ";
  expectFailure(run(half + "echo 'no more' >&2; exit 3"), failed("exit status 3") + "no more\n");
  expectFailure(run(half + "kill -9 $$"), failed("signal 9") + "line 1: no element found\n");
}

TEST_F(Process, ThatFailsAfterItsAnswerPrintsNothing) {
  expectFailure(run(answer + "; echo late >&2; exit 4"), failed("exit status 4") + "late\n");
}

TEST_F(Process, ThatFailsWithAMessageForAnAnswerFails) {
  expectFailure(run("echo no; echo memory; yes more | head -c 300000; exit 5"),
                failed("exit status 5") + "its answer is no XML; it begins: no memory" + repeated("more", 38) + "\n");
}

TEST_F(Process, ThatBreaksItsAnswerOffGivesNoTable) {
  expectFailure(run("printf '<table>\n<row><title>x'"), noTable("line 2: no element found"));
}

TEST_F(Process, MayCloseItsOutputAndGoOn) {
  const std::string closes = answer + "; exec >&-; sleep 0.3; ";
  EXPECT_EQ(outputOf(rowsOf(closes + "echo yes >done")), "title\r\nx\r\n");
  EXPECT_EQ(readFile(file("done")), "yes\n");
  expectFailure(run(closes + "exit 6"), failed("exit status 6"));
}

TEST_F(Process, ThatGivesSomethingElseWithoutEndIsKilled) {
  expectFailure(run("echo $$ >pid; exec yes"), noTable("its answer is no XML; it begins: y" + repeated("y", 99)));
  EXPECT_EQ(kill(noted(), 0), -1);
  EXPECT_EQ(errno, ESRCH);
}

TEST_F(Process, ThatIsInterruptedIsNotReadOnFromItsChildren) {
  expectFailure(run("sleep 60 & echo $! >pid; kill -TERM $PPID; wait"), "xdm: error: interrupted\n");
  EXPECT_EQ(kill(noted(), SIGKILL), 0) << "the child, which has the pipe too, has been waited for";
}

TEST_F(Process, IsNotInterruptedByWhatTheToolWasToldToIgnore) {
  Words command = {"env", "--ignore-signal=HUP", XDM_TOOL};
  for (const std::string& word : rowsOf("kill -HUP $PPID; " + answer)) command.push_back(word);
  EXPECT_EQ(runProcess(command).output, "title\r\nx\r\n");
}

TEST_F(Process, IsInterruptedWhileItAnswers) {
  expectFailure(run("printf '<table>'; kill -INT $PPID; while true; do echo '<row><title/></row>'; done"),
                "xdm: error: interrupted\n");
}

TEST_F(Process, ThatDoesNotListenToAnInterruptionLosesItsReader) {
  expectFailure(
      run("trap '' TERM; printf '<table>'; kill -TERM $PPID; while true; do echo '<row><title/></row>'; done"),
      "xdm: error: interrupted\n");
}

TEST_F(Process, IsNoSuccessWhenItsEndIsUnknown) {
  Words command = {"env", "--ignore-signal=CHLD", XDM_TOOL};
  for (const std::string& word : rowsOf(answer)) command.push_back(word);
  expectFailure(runProcess(command), "xdm: error: the system does not tell how a program ended\n");
}

TEST_F(Process, EndsBeforeAClosedOutputIsAFailure) {
  expectFailure(runInto(">&-", answer + "; sleep 0.3; echo yes >done"),
                "xdm: error: cannot write standard output: Bad file descriptor\n");
  EXPECT_EQ(readFile(file("done")), "yes\n");
}

TEST_F(Process, EndsBeforeAnOutputWithoutReaderIsAFailure) {
  expectFailure(runInto("> >(exec <&-; : >" + file("left") + ")",
                        "until test -e left; do sleep 0.01; done; " + answer + "; sleep 0.3; echo yes >done"),
                "xdm: error: cannot write standard output: Broken pipe\n");
  EXPECT_EQ(readFile(file("done")), "yes\n");
}

}  // namespace
