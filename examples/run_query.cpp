// Takes rows out of a document: makes the query and has Saxon run it, as a process of its own and without a shell.
// The processor writes to our standard output. What comes out is compared with run_query.xml.
#include <kvxdm/kvxdm.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cstdio>
#include <string>
#include <vector>

extern char** environ;

namespace {

/** Runs `command` and waits for its end. Returns its exit status, or -1 when it did not run to an end. */
int run(std::vector<std::string> command) {
  std::vector<char*> arguments;
  for (std::string& word : command) arguments.push_back(&word[0]);
  arguments.push_back(nullptr);
  pid_t process = 0;
  if (posix_spawnp(&process, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0) return -1;
  int status = 0;
  if (waitpid(process, &status, 0) != process || !WIFEXITED(status)) return -1;
  return WEXITSTATUS(status);
}

int runSaxon(const KvbString& query, const std::string& document) {
  return run({"java", "-cp", "/usr/share/java/Saxon-HE.jar", "net.sf.saxon.Query", "-s:" + document,
              std::string("-qs:") + query.asCstr(), "!omit-xml-declaration=yes"});
}

KvbString makeQuery(const char* modelFile, KvbString* error) {
  XDMMainPtr model(kvxdmCreateMain(0));
  if (!model->loadFromFile(KvbString(modelFile, true), error)) return KvbString();
  XDMElement* shelf = model->getRootNode()->getChild();
  shelf->getNextAttribute(nullptr)->selectAsColumn(KvbString(), false);
  shelf->getChild()->getChild()->selectAsColumn(KvbString(), false);
  return model->genXQueryToColumns(true, false, true, false, error);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: run_query MODEL DOCUMENT\n");
    return 2;
  }
  KvbString error;
  const KvbString query = makeQuery(argv[1], &error);
  if (query.length() == 0) {
    std::fprintf(stderr, "run_query: %s\n", error.asCstr());
    return 1;
  }
  return runSaxon(query, argv[2]) == 0 ? 0 : 1;
}
