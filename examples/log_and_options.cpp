// Receives the library's log events in a sink of its own and sets an option for the process.
// What it prints is compared with log_and_options.txt.
#include <cstdio>

#include <kvxbase/kvboptions.h>
#include <kvxdm/kvxdm.h>
#include <kvxlog/kvlogger.h>

namespace {

/** A log of the application, which the library's events go to. It must live until the sink is taken back. */
class Log {
 public:
  explicit Log(KvLoggingLevel level) { kvlogSetSink(&receive, this, level); }
  ~Log() {
    kvlogSetSink(nullptr, nullptr, 0);
    std::printf("%d events\n", count_);
  }
  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;

 private:
  static void receive(const KvLogEvent& event, void* context) {
    ++static_cast<Log*>(context)->count_;
    std::printf("%s, level %d: %s\n", event.category, event.level, event.text);
  }

  int count_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  const unsigned int readCollection = 0x80000000;
  const Log log(2);

  // With this option the variable of the collection has the same name in every run.
  kvbSetConfigOption(KvbString("Bench", true), KvbString());
  XDMMainPtr model(kvxdmCreateMain(readCollection));
  std::printf("The collection is in $%s.\n", model->getCollectionVariableName().asCstr());

  std::printf("The model is %s.\n", model->getRootNode() ? "filled" : "empty");
  KvbString error;
  const KvbString map(argc > 1 ? argv[1] : "library-map.xml", true);
  if (!model->createFromXMLMap(map, KvbString(), KvbString(), 0, &error)) {
    std::fprintf(stderr, "log_and_options: %s\n", error.asCstr());
    return 1;
  }
  return 0;
}
