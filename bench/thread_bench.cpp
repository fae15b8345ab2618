// Two threads at work, a main object each.
#include <memory>
#include <thread>

#include "case.h"
#include "model.h"
#include "temporary.h"
#include "workloads.h"

namespace {

void importAndGenerate(const std::string& map) {
  XDMMainPtr model = importMap(map);
  keep(toRowsQuery(*model).length() + fromRowsQuery(*model, false).length());
}

void onTwoThreads(const std::string& map) {
  std::thread other([&] { importAndGenerate(map); });
  importAndGenerate(map);
  other.join();
}

Case threadCase(long columns) {
  auto folder = std::make_shared<TemporaryFolder>();
  folder->write("map.xml", wideMap(columns, PathSyntax::plain));
  return {.items = columns,
          .work = [=] { onTwoThreads(folder->file("map.xml")); },
          .floor = [=] { importAndGenerate(folder->file("map.xml")); }};
}

}  // namespace

void addThreads(Workloads* workloads) {
  // Twice the work in 1.11 times the time is 1.8 times the throughput.
  workloads->push_back(
      {.name = "threads/two",
       .meaning = "import a map and write both queries, in two threads at once; the floor is one thread",
       .reach = 1.11,
       .sizes = {1'000, 10'000, 100'000},
       .at = threadCase,
       .clock = Clock::wall});
}
