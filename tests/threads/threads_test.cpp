// Tests the library from many threads at once, each with a main object of its own. ThreadSanitizer watches when it is
// built in (scripts/check-threads).
#include <gtest/gtest.h>
#include <kvxbase/kvboptions.h>
#include <kvxbase/kvbuuid.h>
#include <kvxdm/kvxdm.h>
#include <kvxdom/kvdom.h>
#include <kvxlog/kvlogger.h>
#include <sys/wait.h>
#include <unistd.h>

#include <barrier>
#include <functional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "host_model.h"
#include "library_model.h"
#include "temporary.h"

namespace {

constexpr int threadCount = 8;

/** Runs `work` on all threads, which begin together; each gets its number. */
void onAllThreads(const std::function<void(int)>& work) {
  std::barrier start(threadCount);
  std::vector<std::thread> threads;
  for (int number = 0; number < threadCount; ++number) {
    threads.emplace_back([&start, &work, number] {
      start.arrive_and_wait();
      work(number);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

constexpr char map[] =
    "<ROWMAPS version='1.9'><TABLE name='t'><TABLE-PATH>/r/s</TABLE-PATH>"
    "<COLUMN name='a'><PATH>/r/s/@a</PATH><TYPE>numeric</TYPE></COLUMN>"
    "<COLUMN name='b'><PATH>/r/s/b</PATH><TYPE>numeric</TYPE></COLUMN></TABLE></ROWMAPS>";

/** One thread's work: operations of every kind on one main object after the other, counted. */
class Worker {
 public:
  Worker(const TemporaryFolder& folder, int number)
      : file_(kv(folder.file("model" + std::to_string(number) + ".xdm"))), map_(kv(folder.file("map.xml"))) {}

  void run(int operations) {
    while (done_ < operations) {
      useDocument();
      useMap();
    }
  }

  const std::set<std::string>& queries() const { return queries_; }

 private:
  void expect(bool succeeded) {
    ++done_;
    EXPECT_TRUE(succeeded) << str(error_);
  }

  void select(XDMMain* main, const char* xpath) { expect(nodeAt(main, xpath)->selectAsColumn(KvbString(), true)); }

  void generate(XDMMain* main) {
    for (const KvbString& query : {main->genXQueryToColumns(true, false, true, false, &error_),
                                   main->genXQueryFromColumns(true, true, &error_)}) {
      expect(query.length() != 0);
      queries_.insert(str(query));
    }
  }

  void useDocument() {
    KvbString xml;
    XDMMainPtr main(kvxdmCreateMain(0));
    expect(main->loadFromXML(document_, &error_));
    select(main.get(), "/library/@owner");
    select(main.get(), "/library/book/title");
    generate(main.get());
    expect(main->saveToXML(&xml, &error_));
    if (done_ % 100 < 10) useFile(main.get());
  }

  void useFile(XDMMain* main) {
    XDMMainPtr other(kvxdmCreateMain(0x80000000u));
    expect(main->saveToFile(file_, &error_));
    expect(other->loadFromFile(file_, &error_));
    expect(!other->loadFromXML(document_, &error_));
    error_.setNull();
  }

  void useMap() {
    XDMMainPtr main(kvxdmCreateMain(0));
    expect(main->createFromXMLMap(map_, KvbString(), KvbString(), 0, &error_));
    XDMColumn* column = main->getSelectedColumn(0);
    column->setFormat(document_);
    expect(column->addValidValue(map_, &error_));
    expect(column->setXPath(column->getNode()->getXPath(), &error_));
    generate(main.get());
  }

  const KvbString file_, map_;
  const KvbString document_ = kv(libraryModel);
  KvbString error_;
  std::set<std::string> queries_;
  int done_ = 0;
};

TEST(Threads, WorkOnMainObjectsOfTheirOwn) {
  constexpr int operations = 10'000;
  TemporaryFolder folder;
  folder.write("map.xml", map);
  std::set<std::string> queries[threadCount];
  onAllThreads([&](int number) {
    Worker worker(folder, number);
    worker.run(operations);
    queries[number] = worker.queries();
  });
  // Whatever the others do, each thread gets the same four queries.
  for (const auto& each : queries) {
    EXPECT_EQ(each.size(), 4u);
    EXPECT_EQ(each, queries[0]);
  }
}

TEST(Threads, ShareTextsWhoseCopiesGoTheirOwnWays) {
  const KvbString shared = kv("a text that all threads copy and change");
  onAllThreads([&](int number) {
    for (int i = 0; i < 10'000; ++i) {
      KvbString copy = shared;
      const KvbString again = copy;
      copy.append(std::to_string(number).c_str(), nullptr);
      EXPECT_EQ(copy.length(), shared.length() + 1);
      EXPECT_EQ(again.compare(shared, true), 0);
    }
  });
}

/** Runs `first` on all threads of a process in which nothing has been used yet. */
void expectFirstUse(const std::function<void(int)>& first) {
  const pid_t child = fork();
  if (child == 0) {
    onAllThreads(first);
    _exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

void ignoreEvent(const KvLogEvent&, void*) {}

TEST(FirstUse, OfEveryServiceMayComeFromAllThreadsAtOnce) {
  setenv("KVX_OPTIONS", "Bench", 1);
  struct {
    const char* service;
    std::function<void(int)> use;
  } const services[] = {
      {"main object", [](int) { EXPECT_EQ(XDMMainPtr(kvxdmCreateMain(0x80000000u))->getSelectedColumns(), 0); }},
      {"document", [](int) { EXPECT_TRUE(KvDom().loadXML(kv("<a/>"))); }},
      {"model",
       [](int) {
         KvbString xml, error;
         EXPECT_TRUE(loadModel(libraryModel)->saveToXML(&xml, &error));
       }},
      {"logger",
       [](int) {
         kvlogGetLogger("category")->logEvent(5, "unit", 1, "%s", "text");
         kvlogSetSink(ignoreEvent, nullptr, 0);
         kvlogGetLogger("category")->logEvent(5, "unit", 1, 1423, static_cast<const char*>(nullptr));
       }},
      {"messages", [](int) { EXPECT_NE(catalogue(29, "(XPath)"), ""); }},
      {"options",
       [](int number) {
         KvbString value;
         const KvbString name = kv("option" + std::to_string(number));
         kvbSetConfigOption(name, name);
         EXPECT_TRUE(kvbGetConfigOptions(KvbString())->lookup(name, &value, 0));
       }},
      {"identifiers", [](int) { EXPECT_EQ(kvbGetUUID().length(), 36); }},
  };
  for (const auto& [service, use] : services) {
    SCOPED_TRACE(service);
    for (int i = 0; i < 20; ++i) expectFirstUse(use);
  }
}

}  // namespace
