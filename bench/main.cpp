// Runs the workloads with Google Benchmark and prints a row of the table for each size.
//   kvxdm_bench              all; the options of Google Benchmark apply
//   kvxdm_bench --workloads  only lists the names with their meanings
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string_view>

#include "case.h"
#include "measure.h"

namespace {

constexpr long itemsOfSeveralRuns = 1'000'000;
constexpr long itemsForMemory = 10'000;  // fewer are lost among the pages

/** More runs for small sizes. What a main object leaves behind adds up, which limits the large ones. */
long runsOf(long size) { return std::clamp(itemsOfSeveralRuns / size, 3L, 100L); }

void measure(benchmark::State& state, const Workload& workload) {
  const Case made = workload.at(state.range(0));
  const bool measuresMemory = made.items >= itemsForMemory;
  if (measuresMemory) state.counters["peak"] = double(peakBytesOf(made.prepare, made.work)) / double(made.items);
  std::vector<double> work, floor;
  for ([[maybe_unused]] auto run : state) {
    floor.push_back(secondsOf(workload.clock, made.floor));
    made.prepare();
    work.push_back(secondsOf(workload.clock, made.work));
    state.SetIterationTime(work.back());
  }
  state.counters["items"] = double(made.items);
  state.counters["seconds"] = medianOf(work);
  state.counters["floor"] = medianOf(floor);
  state.counters["reach"] = workload.reach;
}

void registerAll(const Workloads& workloads) {
  for (const Workload& workload : workloads) {
    for (long size : workload.sizes) {
      benchmark::RegisterBenchmark(workload.name.c_str(), measure, workload)
          ->Arg(size)
          ->Iterations(runsOf(size))
          ->UseManualTime();
    }
  }
}

/** Prints the rows of a Markdown table. */
class Rows : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.error_occurred) {
        std::printf("| %s | failed: %s |\n", run.run_name.function_name.c_str(), run.error_message.c_str());
      } else {
        print(run);
      }
    }
    std::fflush(stdout);
  }

 private:
  static double counter(const Run& run, const char* name) { return run.counters.find(name)->second; }

  void print(const Run& run) {
    const double items = counter(run, "items");
    const double seconds = counter(run, "seconds");
    std::printf("| %s | %.0f | %.0f ns | ", run.run_name.function_name.c_str(), items, seconds / items * 1e9);
    printRatio(seconds / counter(run, "floor"), counter(run, "reach"));
    printGrowth(run.run_name.function_name, items, seconds);
    printPeak(run);
  }

  static void printRatio(double ratio, double reach) {
    if (reach > 0) {
      std::printf("%.2f | %g%s | ", ratio, reach, ratio > reach ? ", **not reached**" : "");
    } else {
      std::printf("%.2f | | ", ratio);
    }
  }

  /** The exponent from the size before to this one. */
  void printGrowth(const std::string& name, double items, double seconds) {
    if (name == previousName_) {
      std::printf("%.2f | ", std::log(seconds / previousSeconds_) / std::log(items / previousItems_));
    } else {
      std::printf("| ");
    }
    previousName_ = name;
    previousItems_ = items;
    previousSeconds_ = seconds;
  }

  static void printPeak(const Run& run) {
    if (run.counters.count("peak") > 0) {
      std::printf("%.0f B |\n", counter(run, "peak"));
    } else {
      std::printf("|\n");
    }
  }

  std::string previousName_;
  double previousItems_ = 0;
  double previousSeconds_ = 0;
};

void list(const Workloads& workloads) {
  for (const Workload& workload : workloads) {
    std::printf("%s\t%s\n", workload.name.c_str(), workload.meaning.c_str());
  }
}

}  // namespace

int main(int argc, char** argv) {
  const Workloads workloads = allWorkloads();
  if (argc == 2 && std::string_view(argv[1]) == "--workloads") {
    list(workloads);
    return 0;
  }
  registerAll(workloads);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  Rows rows;
  benchmark::RunSpecifiedBenchmarks(&rows);
  return 0;
}
